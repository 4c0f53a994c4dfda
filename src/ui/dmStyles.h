#pragma once

#include "uThemes.h"

#include <QPalette>

class QApplication;
class TRibbon;

// The look of the program: ApplyTheme's colours turned into the Fusion style with a palette per
// colour scheme and the accent on selections. One per process.
class TDM_Styles
{
public:
    // The palette of a look: window and panels from the scheme's panel colour, bases from its
    // content colour, highlight from the accent.
    static QPalette PaletteOf(const TThemeLook& look);

    // Applies a theme to the application (style, palette) and, when given, to a ribbon (style
    // number). Returns the look applied.
    static TThemeLook ApplyTheme(int themeIndex, int accentIndex, TRibbon* ribbon = nullptr);

    // The look last applied.
    static const TThemeLook& Current();
};
