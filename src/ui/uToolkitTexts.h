#pragma once

// Sets the texts of the presentation toolkit (grids, find panel, filter builder, column chooser,
// ribbon, editors' refusals) from the language, key by key; a key the language lacks keeps the
// toolkit's English text. The grids follow at once.
void TranslateToolkitTexts();
