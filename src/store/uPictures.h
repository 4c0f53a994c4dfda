#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

#include <stdexcept>

// The photographs of an item as the collection holds them: encoded bytes, their format found from
// the bytes alone, never from a file name.

// A picture refused on entry: bytes that are no picture, or a format the collection does not take.
class EPictureError : public std::runtime_error
{
public:
    explicit EPictureError(const QString& text) : std::runtime_error(text.toStdString()), m_text(text) {}
    QString text() const { return m_text; }

private:
    QString m_text;
};

// The format numbers of the viewer.
enum TPictureFormat : int
{
    pfUnknown = 0,
    pfBitmap = 1,
    pfJPEG = 2,
    pfPNG = 3,
    pfTIFF = 4,
    pfGIF = 5,
    pfEMF = 6,
    pfEXIF = 7,
    pfIcon = 8,
    pfBMP = 9,
    pfWMF = 10
};

// The format of encoded bytes, from their first bytes: BMP gives pfBitmap, JPEG pfJPEG (pfEXIF
// when it carries an Exif block), PNG, TIFF, GIF, Icon, and the metafiles EMF and WMF; pfUnknown
// for anything else.
TPictureFormat PictureFormatOf(const QByteArray& bytes);
// "Bitmap", "JPEG", "PNG", "TIFF", "GIF", "EMF", "EXIF", "Icon", "BMP", "WMF"; "Unknown" otherwise.
QString PictureFormatName(int format);

// Whether the collection takes bytes as a photograph: one of the formats above that the image
// library also decodes (the metafiles are not decoded, so they are refused).
bool IsAcceptedPicture(const QByteArray& bytes);
// Throws EPictureError with a clear text when IsAcceptedPicture is false.
void CheckAcceptedPicture(const QByteArray& bytes);
// The file patterns of the accepted formats, for a file dialog ("*.bmp *.jpg ...").
QString AcceptedPicturePatterns();

// Decodes bytes turned upright as their orientation tag says (as thumbnails are made); a null
// image when they do not decode.
QImage DecodeUpright(const QByteArray& bytes);
// The size of the upright picture without decoding its pixels; invalid when unreadable.
QSize UprightPictureSize(const QByteArray& bytes);

// The viewer's status text "%s: %dpx x %dpx. %s": format name, width and height of the upright
// picture, and the size of the bytes as a size text.
QString PictureStatusText(const QByteArray& bytes);
