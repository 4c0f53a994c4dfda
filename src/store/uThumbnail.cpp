#include "uThumbnail.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void raise(const QString& message)
{
    throw EThumbnailError(message.toStdString());
}

// The format to write a thumbnail in: the picture's own, or PNG where the codec can only read
// (GIF, for instance).
QByteArray writableFormat(const QByteArray& format)
{
    static const QList<QByteArray> writable = QImageWriter::supportedImageFormats();
    return writable.contains(format) ? format : QByteArray("png");
}

} // namespace

int ThumbnailWidth(int width, int height)
{
    if (height <= 0)
        return width;
    // The current rounding mode is to nearest with ties to even.
    const double exact = width / (height / double(ThumbnailHeight));
    return std::max(1, int(std::nearbyint(exact)));
}

QByteArray MakeThumbnail(const QByteArray& picture)
{
    if (picture.isNull())
        return {};

    QBuffer source;
    source.setData(picture);
    source.open(QIODevice::ReadOnly);
    QImageReader reader(&source);
    // Photographs from cameras carry their orientation: the thumbnail shows them upright.
    reader.setAutoTransform(true);
    const QByteArray format = reader.format();
    if (format.isEmpty())
        raise(u"The picture cannot be read: "_s + reader.errorString());

    // Let the decoder do the scaling where it can: a JPEG is then decoded at a fraction of its size,
    // which is far faster than decoding it whole and shrinking it afterwards.
    QSize target;
    const QSize stored = reader.size();
    if (stored.isValid() && stored.height() > 0) {
        const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
        const QSize upright = turned ? stored.transposed() : stored;
        target = QSize(ThumbnailWidth(upright.width(), upright.height()), ThumbnailHeight);
        reader.setScaledSize(turned ? target.transposed() : target);
    }

    QImage image = reader.read();
    if (image.isNull())
        raise(u"The picture cannot be read: "_s + reader.errorString());
    if (!target.isValid())
        target = QSize(ThumbnailWidth(image.width(), image.height()), ThumbnailHeight);
    if (image.size() != target)
        image = image.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);

    QByteArray result;
    QBuffer output(&result);
    output.open(QIODevice::WriteOnly);
    QImageWriter writer(&output, writableFormat(format));
    if (!writer.write(image))
        raise(u"The thumbnail cannot be written: "_s + writer.errorString());
    return result;
}

QVariant MakeThumbnail(const QVariant& picture)
{
    if (!picture.isValid() || picture.isNull())
        return {};
    const QByteArray bytes = picture.toByteArray();
    if (bytes.isNull())
        return {};
    return MakeThumbnail(bytes);
}
