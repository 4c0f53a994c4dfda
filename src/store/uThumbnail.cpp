#include "uThumbnail.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>

#include <algorithm>
#include <cmath>
#include <limits>

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

bool hasColourTable(QImage::Format format)
{
    return format == QImage::Format_Indexed8 || format == QImage::Format_Mono ||
           format == QImage::Format_MonoLSB;
}

// The picture at the thumbnail's size, smoothly scaled, in its own pixel format where that has a
// colour table: a palette picture is scaled in full colour and then mapped back onto its own colours
// (the nearest of each, without dithering), so that a palette PNG stays a small palette PNG.
QImage scaledToThumbnail(const QImage& image, QSize target)
{
    if (image.size() == target)
        return image;
    const QImage::Format format = image.format();
    if (!hasColourTable(format) || image.colorCount() == 0)
        return image.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QImage full = image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                                      : QImage::Format_RGB32);
    return full.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(format, image.colorTable(), Qt::ThresholdDither | Qt::AvoidDither);
}

// A picture so wide for its height that its thumbnail would not be one (a strip of 1,000,000 by 1
// pixels gives a thumbnail 200,000,000 pixels wide) is refused before anything is allocated.
void checkTargetWidth(QSize target)
{
    if (target.width() > MaxThumbnailWidth)
        raise(u"The picture is too wide for a thumbnail: %1 pixels at a height of %2"_s.arg(target.width())
                  .arg(ThumbnailHeight));
}

} // namespace

int ThumbnailWidth(int width, int height)
{
    if (height <= 0)
        return width;
    // The current rounding mode is to nearest with ties to even.
    const double exact = width / (height / double(ThumbnailHeight));
    return int(std::clamp(std::nearbyint(exact), 1.0, double(std::numeric_limits<int>::max())));
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
    // which is far faster than decoding it whole and shrinking it afterwards. A palette picture is
    // read as it is stored, with its colour table, and scaled below.
    QSize target;
    const QSize stored = reader.size();
    if (stored.isValid() && stored.height() > 0) {
        const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
        const QSize upright = turned ? stored.transposed() : stored;
        target = QSize(ThumbnailWidth(upright.width(), upright.height()), ThumbnailHeight);
        checkTargetWidth(target);
        if (upright != target && !hasColourTable(reader.imageFormat()))
            reader.setScaledSize(turned ? target.transposed() : target);
    }

    QImage image = reader.read();
    if (image.isNull())
        raise(u"The picture cannot be read: "_s + reader.errorString());
    if (!target.isValid()) {
        target = QSize(ThumbnailWidth(image.width(), image.height()), ThumbnailHeight);
        checkTargetWidth(target);
    }
    // A picture already at the thumbnail's size is encoded again as it was decoded.
    image = scaledToThumbnail(image, target);

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
