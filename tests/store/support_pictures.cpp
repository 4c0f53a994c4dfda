#include "support_pictures.h"

#include <QBuffer>
#include <QImageWriter>
#include <QPainter>

QByteArray EncodedPicture(int width, int height, const char* format)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::blue);
    QPainter painter(&image);
    painter.fillRect(0, 0, width / 2, height, Qt::red);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.write(image);
    return bytes;
}

QByteArray JpegWithOrientation(int width, int height, int orientation)
{
    const QByteArray jpeg = EncodedPicture(width, height, "JPEG");
    // APP1: "Exif\0\0", a big-endian TIFF header, one IFD with the orientation tag (0x0112, SHORT).
    QByteArray tiff("MM\0*\0\0\0\x08", 8);
    tiff += QByteArray("\0\x01", 2);                   // one entry
    tiff += QByteArray("\x01\x12\0\x03\0\0\0\x01", 8); // tag, type SHORT, count 1
    tiff += char(0);
    tiff += char(orientation);
    tiff += QByteArray("\0\0", 2);     // value padding
    tiff += QByteArray("\0\0\0\0", 4); // no next IFD
    const QByteArray payload = QByteArray("Exif\0\0", 6) + tiff;
    const int length = payload.size() + 2;
    QByteArray app1("\xFF\xE1", 2);
    app1 += char((length >> 8) & 0xFF);
    app1 += char(length & 0xFF);
    app1 += payload;
    return jpeg.left(2) + app1 + jpeg.mid(2);
}
