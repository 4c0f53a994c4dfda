#include "galleryGlyphs.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

using namespace Qt::StringLiterals;

namespace {
QPixmap glyphPixmap(const QString& symbol, int hue, int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor colour = QColor::fromHsv(hue % 360, 150, 200);
    QLinearGradient shade(0, 0, 0, size);
    shade.setColorAt(0, colour.lighter(125));
    shade.setColorAt(1, colour.darker(115));
    painter.setPen(QPen(colour.darker(150), std::max(1.0, size / 32.0)));
    painter.setBrush(shade);
    const qreal inset = size * 0.08;
    painter.drawRoundedRect(QRectF(inset, inset, size - 2 * inset, size - 2 * inset), size * 0.18,
                            size * 0.18);
    QFont font(u"DejaVu Sans"_s);
    font.setPixelSize(int(size * (symbol.size() > 1 ? 0.42 : 0.58)));
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRectF(0, 0, size, size), Qt::AlignCenter, symbol);
    return pixmap;
}
} // namespace

QIcon GalleryGlyph(const QString& symbol, int hue)
{
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64})
        icon.addPixmap(glyphPixmap(symbol, hue, size));
    return icon;
}

QPixmap GalleryPicture(const QString& caption, int hue, bool bar)
{
    QPixmap pixmap(200, 200);
    pixmap.setDevicePixelRatio(2.0);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor colour = QColor::fromHsv(hue % 360, 110, 225);
    QString initials;
    for (const QString& word : caption.split(u' ', Qt::SkipEmptyParts))
        if (initials.size() < 2 && word[0].isLetterOrNumber())
            initials += word[0].toUpper();
    if (bar) {
        QLinearGradient shade(0, 20, 0, 80);
        shade.setColorAt(0, colour.lighter(130));
        shade.setColorAt(1, colour.darker(120));
        QPainterPath ingot;
        ingot.moveTo(14, 74);
        ingot.lineTo(86, 74);
        ingot.lineTo(76, 30);
        ingot.lineTo(24, 30);
        ingot.closeSubpath();
        painter.setPen(QPen(colour.darker(170), 2));
        painter.setBrush(shade);
        painter.drawPath(ingot);
    } else {
        QRadialGradient shade(38, 36, 60);
        shade.setColorAt(0, colour.lighter(135));
        shade.setColorAt(1, colour.darker(125));
        painter.setPen(QPen(colour.darker(170), 3));
        painter.setBrush(shade);
        painter.drawEllipse(QRectF(8, 8, 84, 84));
        painter.setPen(QPen(colour.darker(150), 1.2));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(QRectF(17, 17, 66, 66));
    }
    QFont font(u"DejaVu Serif"_s);
    font.setPixelSize(bar ? 22 : 28);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(colour.darker(220));
    painter.drawText(QRectF(0, bar ? 28 : 0, 100, bar ? 46 : 100), Qt::AlignCenter, initials);
    return pixmap;
}
