#include "uGridPaint.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QTextLayout>

namespace GridPaint {
QColor blend(const QColor& a, const QColor& b, qreal t)
{
    return QColor::fromRgbF(
        float(a.redF() + (b.redF() - a.redF()) * t), float(a.greenF() + (b.greenF() - a.greenF()) * t),
        float(a.blueF() + (b.blueF() - a.blueF()) * t), float(a.alphaF() + (b.alphaF() - a.alphaF()) * t));
}

QColor panelColor(const QPalette& palette)
{
    return blend(palette.color(QPalette::Base), palette.color(QPalette::Window), 0.7);
}

QColor lineColor(const QPalette& palette)
{
    return blend(palette.color(QPalette::Base), palette.color(QPalette::Text), 0.12);
}

QColor matchColor(const QPalette& palette)
{
    QColor c = palette.color(QPalette::Highlight);
    c.setAlphaF(0.35f);
    return c;
}

bool isCut(const QFontMetrics& metrics, const QString& text, int width)
{
    return metrics.horizontalAdvance(text) > width;
}

bool drawText(QPainter* painter, const QRect& rect, const QString& text, Qt::Alignment alignment,
              const QStringList& words, const QColor& matchBackground)
{
    if (text.isEmpty() || rect.width() <= 0)
        return false;
    const QFontMetrics metrics = painter->fontMetrics();
    // A text that fits exactly is drawn whole (elidedText may cut it at the very edge).
    const bool fits = metrics.horizontalAdvance(text) <= rect.width() && !text.contains(QLatin1Char('\n'));
    const QString shown = fits ? text : metrics.elidedText(text, Qt::ElideRight, rect.width());
    const bool cut = shown != text;
    const Qt::Alignment vertical =
        (alignment & Qt::AlignVertical_Mask) ? (alignment & Qt::AlignVertical_Mask) : Qt::AlignVCenter;
    // Left and right follow the reading direction.
    const Qt::Alignment flags =
        QStyle::visualAlignment(painter->layoutDirection(), alignment & Qt::AlignHorizontal_Mask) | vertical;
    if (!words.isEmpty() && shown.size() > 0) {
        // Match boxes along the shown text, whose start follows its alignment.
        const int textWidth = metrics.horizontalAdvance(shown);
        const Qt::Alignment horizontal = flags & Qt::AlignHorizontal_Mask;
        int x = rect.left();
        if (horizontal & Qt::AlignRight)
            x = rect.right() + 1 - textWidth;
        else if (horizontal & Qt::AlignHCenter)
            x = rect.left() + (rect.width() - textWidth) / 2;
        const QString folded = shown.toCaseFolded();
        const int top = rect.top() + (rect.height() - metrics.height()) / 2;
        for (const QString& word : words) {
            if (word.isEmpty() || folded.size() != shown.size())
                continue;
            for (qsizetype at = folded.indexOf(word); at >= 0; at = folded.indexOf(word, at + word.size())) {
                const int from = metrics.horizontalAdvance(shown.left(at));
                const int width = metrics.horizontalAdvance(shown.mid(at, word.size()));
                painter->fillRect(QRect(x + from, top, width, metrics.height()), matchBackground);
            }
        }
    }
    // The text itself reads in its own direction ("1 oz" stays "1 oz" in a right-to-left view).
    const Qt::LayoutDirection direction = painter->layoutDirection();
    painter->setLayoutDirection(Qt::LayoutDirectionAuto);
    painter->drawText(rect, int(flags | Qt::AlignAbsolute) | Qt::TextSingleLine, shown);
    painter->setLayoutDirection(direction);
    return cut;
}

int wrappedLines(const QFontMetrics& metrics, const QString& text, int width, int maxLines)
{
    if (text.isEmpty() || width <= 0)
        return 1;
    if (metrics.horizontalAdvance(text) <= width && !text.contains(QLatin1Char('\n')))
        return 1;
    const QRect bounds = metrics.boundingRect(QRect(0, 0, width, 1 << 20), Qt::TextWordWrap, text);
    return std::clamp((bounds.height() + metrics.height() - 1) / std::max(metrics.height(), 1), 1, maxLines);
}

bool drawWrappedText(QPainter* painter, const QRect& rect, const QString& text, Qt::Alignment alignment,
                     int maxLines)
{
    if (text.isEmpty() || rect.width() <= 0)
        return false;
    const QFontMetrics metrics = painter->fontMetrics();
    const int lines = std::max(1, std::min(maxLines, rect.height() / std::max(metrics.height(), 1)));
    if (lines <= 1)
        return drawText(painter, rect, text, alignment, {}, {});
    QTextLayout layout(text, painter->font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setAlignment(
        QStyle::visualAlignment(painter->layoutDirection(), alignment & Qt::AlignHorizontal_Mask));
    option.setTextDirection(Qt::LayoutDirectionAuto);
    layout.setTextOption(option);
    layout.beginLayout();
    int y = 0;
    int made = 0;
    bool cut = false;
    QList<QTextLine> kept;
    while (true) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(rect.width());
        if (made == lines - 1) {
            // The last line takes the rest, cut with an ellipsis.
            cut = line.textStart() + line.textLength() < text.size();
            line.setPosition(QPointF(0, y));
            kept.append(line);
            ++made;
            break;
        }
        line.setPosition(QPointF(0, y));
        y += metrics.height();
        kept.append(line);
        ++made;
    }
    layout.endLayout();
    const int total = made * metrics.height();
    int top = rect.top();
    if (alignment & Qt::AlignVCenter)
        top += (rect.height() - total) / 2;
    else if (alignment & Qt::AlignBottom)
        top += rect.height() - total;
    for (int i = 0; i < kept.size(); ++i) {
        const QTextLine& line = kept[i];
        if (i == kept.size() - 1 && cut) {
            const QString rest = text.mid(line.textStart());
            QRect last(rect.left(), top + int(line.y()), rect.width(), metrics.height());
            painter->drawText(last,
                              int(QStyle::visualAlignment(painter->layoutDirection(),
                                                          alignment & Qt::AlignHorizontal_Mask)) |
                                  Qt::AlignVCenter | Qt::TextSingleLine,
                              metrics.elidedText(rest.simplified(), Qt::ElideRight, rect.width()));
        } else {
            line.draw(painter, QPointF(rect.left(), top));
        }
    }
    return cut;
}

void drawExpandButton(QPainter* painter, const QRect& rect, bool expanded, bool rightToLeft,
                      const QPalette& palette)
{
    const int size = std::min(rect.width(), rect.height()) / 2;
    if (size <= 1)
        return;
    const QPointF c = QRectF(rect).center();
    const qreal h = size / 2.0;
    QPainterPath path;
    if (expanded) {
        path.moveTo(c.x() - h, c.y() - h / 2);
        path.lineTo(c.x() + h, c.y() - h / 2);
        path.lineTo(c.x(), c.y() + h / 1.2);
    } else {
        const qreal d = rightToLeft ? -1 : 1;
        path.moveTo(c.x() - d * h / 2, c.y() - h);
        path.lineTo(c.x() + d * h / 1.2, c.y());
        path.lineTo(c.x() - d * h / 2, c.y() + h);
    }
    path.closeSubpath();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(blend(palette.color(QPalette::Text), palette.color(QPalette::Base), 0.25));
    painter->drawPath(path);
    painter->restore();
}

void drawSortMark(QPainter* painter, const QRect& rect, TGridSortOrder order, int priority,
                  const QPalette& palette, const QColor& color)
{
    Q_UNUSED(palette);
    if (order == TGridSortOrder::None)
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const int size = std::min(8, rect.height() / 2);
    const QPointF c(rect.left() + size / 2.0 + 1, QRectF(rect).center().y());
    QPainterPath path;
    if (order == TGridSortOrder::Ascending) {
        path.moveTo(c.x() - size / 2.0, c.y() + size / 4.0);
        path.lineTo(c.x() + size / 2.0, c.y() + size / 4.0);
        path.lineTo(c.x(), c.y() - size / 3.0);
    } else {
        path.moveTo(c.x() - size / 2.0, c.y() - size / 4.0);
        path.lineTo(c.x() + size / 2.0, c.y() - size / 4.0);
        path.lineTo(c.x(), c.y() + size / 3.0);
    }
    path.closeSubpath();
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    painter->drawPath(path);
    if (priority > 0) {
        QFont small = painter->font();
        small.setPointSizeF(std::max(6.0, small.pointSizeF() * 0.7));
        painter->setFont(small);
        painter->setPen(color);
        painter->drawText(QRect(int(c.x() + size / 2.0 + 1), rect.top(), rect.width(), rect.height()),
                          Qt::AlignLeft | Qt::AlignVCenter, QString::number(priority));
    }
    painter->restore();
}
} // namespace GridPaint
