#pragma once

// Pictures made for tests: encoded in a format, and JPEGs carrying an Exif orientation.

#include <QByteArray>
#include <QColor>
#include <QImage>

// A w x h picture, left half red and right half blue, encoded in format ("PNG", "JPEG", ...).
QByteArray EncodedPicture(int width, int height, const char* format);
// A JPEG of w x h whose Exif block says orientation (1 .. 8); 6 means "turn 90 degrees clockwise
// to show", so the upright picture is h x w.
QByteArray JpegWithOrientation(int width, int height, int orientation);
