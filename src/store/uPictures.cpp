#include "uPictures.h"

#include "uZTTypes.h"

#include <QBuffer>
#include <QImageReader>

#include <array>

using namespace Qt::StringLiterals;

namespace {

bool startsWith(const QByteArray& bytes, std::initializer_list<unsigned char> magic, int offset = 0)
{
    if (bytes.size() < offset + int(magic.size()))
        return false;
    int i = offset;
    for (const unsigned char c : magic) {
        if (static_cast<unsigned char>(bytes.at(i++)) != c)
            return false;
    }
    return true;
}

// Whether a JPEG carries an APP1 "Exif" block among its first segments.
bool hasExifBlock(const QByteArray& bytes)
{
    int pos = 2;
    while (pos + 4 <= bytes.size() && static_cast<unsigned char>(bytes.at(pos)) == 0xFF) {
        const auto marker = static_cast<unsigned char>(bytes.at(pos + 1));
        if (marker == 0xDA || marker == 0xD9)
            return false; // image data or the end: no more header segments
        const int length = (static_cast<unsigned char>(bytes.at(pos + 2)) << 8) |
                           static_cast<unsigned char>(bytes.at(pos + 3));
        if (marker == 0xE1 && bytes.mid(pos + 4, 6) == QByteArray("Exif\0\0", 6))
            return true;
        if (length < 2)
            return false;
        pos += 2 + length;
    }
    return false;
}

QImageReader* openReader(QBuffer& buffer, QImageReader& reader, const QByteArray& bytes)
{
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    reader.setDevice(&buffer);
    reader.setAutoTransform(true);
    return &reader;
}

} // namespace

TPictureFormat PictureFormatOf(const QByteArray& bytes)
{
    if (startsWith(bytes, {'B', 'M'}) && bytes.size() >= 26)
        return pfBitmap;
    if (startsWith(bytes, {0xFF, 0xD8, 0xFF}))
        return hasExifBlock(bytes) ? pfEXIF : pfJPEG;
    if (startsWith(bytes, {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A}))
        return pfPNG;
    if (startsWith(bytes, {'I', 'I', 42, 0}) || startsWith(bytes, {'M', 'M', 0, 42}))
        return pfTIFF;
    if (startsWith(bytes, {'G', 'I', 'F', '8'}))
        return pfGIF;
    if (startsWith(bytes, {0x01, 0x00, 0x00, 0x00}) && startsWith(bytes, {' ', 'E', 'M', 'F'}, 40))
        return pfEMF;
    if (startsWith(bytes, {0x00, 0x00, 0x01, 0x00}) && bytes.size() >= 6 && bytes.at(4) != 0)
        return pfIcon;
    if (startsWith(bytes, {0xD7, 0xCD, 0xC6, 0x9A}))
        return pfWMF;
    return pfUnknown;
}

QString PictureFormatName(int format)
{
    static const std::array<QString, 11> names = {u"Unknown"_s, u"Bitmap"_s, u"JPEG"_s, u"PNG"_s,
                                                  u"TIFF"_s,    u"GIF"_s,    u"EMF"_s,  u"EXIF"_s,
                                                  u"Icon"_s,    u"BMP"_s,    u"WMF"_s};
    return format >= 0 && format < int(names.size()) ? names[std::size_t(format)] : names[0];
}

bool IsAcceptedPicture(const QByteArray& bytes)
{
    switch (PictureFormatOf(bytes)) {
    case pfUnknown:
    case pfEMF:
    case pfWMF:
        return false;
    default:
        break;
    }
    // The header may be right and the rest damaged: the picture must decode.
    QBuffer buffer;
    QImageReader reader;
    openReader(buffer, reader, bytes);
    return reader.canRead() && reader.size().isValid() && !reader.read().isNull();
}

void CheckAcceptedPicture(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        throw EPictureError(u"The file is empty: it holds no picture."_s);
    if (!IsAcceptedPicture(bytes)) {
        const TPictureFormat format = PictureFormatOf(bytes);
        if (format == pfUnknown)
            throw EPictureError(u"This is not a picture in a format the collection takes. "
                                u"Take a JPEG, PNG, BMP, GIF, TIFF or icon file."_s);
        throw EPictureError(u"The %1 picture cannot be read: it is damaged, or of a kind the collection "
                            u"does not take. Take a JPEG, PNG, BMP, GIF, TIFF or icon file."_s.arg(
                                PictureFormatName(format)));
    }
}

QString AcceptedPicturePatterns()
{
    QStringList patterns{u"*.jpg"_s, u"*.jpeg"_s, u"*.png"_s, u"*.bmp"_s, u"*.gif"_s};
    const QList<QByteArray> readable = QImageReader::supportedImageFormats();
    if (readable.contains("tiff"))
        patterns << u"*.tif"_s << u"*.tiff"_s;
    if (readable.contains("ico"))
        patterns << u"*.ico"_s;
    return patterns.join(u' ');
}

QImage DecodeUpright(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return {};
    QBuffer buffer;
    QImageReader reader;
    openReader(buffer, reader, bytes);
    return reader.read();
}

QSize UprightPictureSize(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return {};
    QBuffer buffer;
    QImageReader reader;
    openReader(buffer, reader, bytes);
    const QSize stored = reader.size();
    if (!stored.isValid())
        return DecodeUpright(bytes).size();
    return reader.transformation().testFlag(QImageIOHandler::TransformationRotate90) ? stored.transposed()
                                                                                     : stored;
}

QString PictureStatusText(const QByteArray& bytes)
{
    const QSize size = UprightPictureSize(bytes);
    return u"%1: %2px x %3px. %4"_s.arg(PictureFormatName(PictureFormatOf(bytes)))
        .arg(size.isValid() ? size.width() : 0)
        .arg(size.isValid() ? size.height() : 0)
        .arg(FormatSize(bytes.size()));
}
