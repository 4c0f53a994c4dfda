#pragma once

#include "uMainController.h"

#include <QIcon>
#include <QPixmap>

class QStyle;

// The pictures the main window draws for itself: the commands' glyphs, the spot arrows and the
// 100 x 100 pictures of the application menu's gallery.

// The glyph of a command (or of a drop-down button by its name), drawn at 32 x 32.
QIcon CommandGlyph(const QString& name, const QStyle* style);
// A rise or fall arrow of a spot button.
QIcon SpotGlyph(TSpotGlyph glyph);
// The picture of a gallery item: the blank picture of its metal and kind with its caption engraved.
QPixmap GalleryPicture(quint8 mode, const QString& caption);
