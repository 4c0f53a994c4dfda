#include "uPictureEditorItem.h"

#include <QCache>
#include <QPainter>
#include <QStyleOptionViewItem>

namespace {
struct TPictureCache
{
    // Costs are in KB.
    QCache<QString, QImage> decoded{32 * 1024};
    QCache<QString, QPixmap> scaled{32 * 1024};
};

TPictureCache& cache()
{
    static TPictureCache instance;
    return instance;
}

QString keyOf(const QByteArray& bytes)
{
    return QString::number(qHash(bytes), 16) + u'-' + QString::number(bytes.size());
}

int costOf(const QSize& size)
{
    return std::max(1, int(qint64(size.width()) * size.height() * 4 / 1024));
}
} // namespace

QString TPictureEditorItem::displayText(const QVariant& value) const
{
    Q_UNUSED(value);
    return {};
}

QImage TPictureEditorItem::decode(const QVariant& value)
{
    if (value.isNull() || !value.isValid())
        return {};
    if (value.typeId() == QMetaType::QImage)
        return value.value<QImage>();
    if (value.typeId() == QMetaType::QPixmap)
        return value.value<QPixmap>().toImage();
    const QByteArray bytes = value.toByteArray();
    if (bytes.isEmpty())
        return {};
    const QString key = keyOf(bytes);
    if (QImage* hit = cache().decoded.object(key))
        return *hit;
    QImage image = QImage::fromData(bytes);
    if (!image.isNull())
        cache().decoded.insert(key, new QImage(image), costOf(image.size()));
    return image;
}

QPixmap TPictureEditorItem::scaled(const QVariant& value, const QSize& size, bool stretchSmall,
                                   qreal devicePixelRatio)
{
    if (size.isEmpty())
        return {};
    QString key;
    if (value.typeId() != QMetaType::QImage && value.typeId() != QMetaType::QPixmap) {
        const QByteArray bytes = value.toByteArray();
        if (bytes.isEmpty())
            return {};
        key = keyOf(bytes) + u'@' + QString::number(size.width()) + u'x' + QString::number(size.height()) +
              u'@' + QString::number(devicePixelRatio) + (stretchSmall ? u's' : u'k');
        if (QPixmap* hit = cache().scaled.object(key))
            return *hit;
    }
    const QImage image = decode(value);
    if (image.isNull())
        return {};
    const QSize device = size * devicePixelRatio;
    QSize target = image.size();
    if (stretchSmall || target.width() > device.width() || target.height() > device.height())
        target = target.scaled(device, Qt::KeepAspectRatio);
    QPixmap pixmap = QPixmap::fromImage(image.scaled(target, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(devicePixelRatio);
    if (!key.isEmpty())
        cache().scaled.insert(key, new QPixmap(pixmap), costOf(target));
    return pixmap;
}

void TPictureEditorItem::setCacheLimit(qint64 bytes)
{
    const int kb = int(std::max<qint64>(bytes / 1024, 1));
    cache().decoded.clear();
    cache().scaled.clear();
    cache().decoded.setMaxCost(kb);
    cache().scaled.setMaxCost(kb);
}

bool TPictureEditorItem::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QVariant& value) const
{
    const QRect area = option.rect.adjusted(2, 2, -2, -2);
    const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
    const QPixmap pixmap = scaled(value, area.size(), m_stretchSmall, ratio);
    if (pixmap.isNull())
        return true;
    const QSize shown = pixmap.deviceIndependentSize().toSize();
    painter->drawPixmap(QStyle::alignedRect(option.direction, Qt::AlignCenter, shown, area), pixmap);
    return true;
}

QSize TPictureEditorItem::sizeHint(const QStyleOptionViewItem& option, const QVariant& value) const
{
    Q_UNUSED(value);
    const int height = option.fontMetrics.lineSpacing() * m_lines;
    return {height, height};
}

QWidget* TPictureEditorItem::makeEditor(QWidget* parent) const
{
    Q_UNUSED(parent);
    return nullptr;
}
