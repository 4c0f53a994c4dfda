#pragma once

#include <QIcon>
#include <QPixmap>

// Drawn pictures for the gallery's ribbon and application menu, so it needs no image files.

// A glyph: a symbol (one or two characters) on a rounded square in the hue given (0..359).
QIcon GalleryGlyph(const QString& symbol, int hue);
// A 100 x 100 coin or bar with a caption's initials, in the hue given.
QPixmap GalleryPicture(const QString& caption, int hue, bool bar);
