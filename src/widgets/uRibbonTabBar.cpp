#include "uRibbonTabBar.h"

#include "uPaintHelpers.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

TRibbonTabBar::TRibbonTabBar(QWidget* parent) : QTabBar(parent)
{
    setDrawBase(false);
    setExpanding(false);
    setDocumentMode(true);
    setUsesScrollButtons(true);
    setElideMode(Qt::ElideNone);
    setMouseTracking(true);
    setFocusPolicy(Qt::TabFocus);
    setAutoFillBackground(false);
}

void TRibbonTabBar::setRibbonStyle(TRibbonStyle style)
{
    m_style = style;
    update();
}

void TRibbonTabBar::setColoredRow(bool colored)
{
    m_colored = colored;
    update();
}

QSize TRibbonTabBar::tabSizeHint(int index) const
{
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    return {fontMetrics().horizontalAdvance(WithoutMnemonic(tabText(index))) + m.padding * 6, m.tabHeight};
}

QSize TRibbonTabBar::minimumTabSizeHint(int index) const
{
    return tabSizeHint(index);
}

void TRibbonTabBar::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const TRibbonColors colors = TRibbonColors::of(palette(), m_colored);
    const int current = currentIndex();
    const bool classic = IsClassicRibbonStyle(m_style);
    const bool underline = m_style == TRibbonStyle::Office2019;

    // The line between the tab row and the page, open under the active tab.
    const QRect active = current >= 0 && isTabVisible(current) ? tabRect(current) : QRect();
    painter.setPen(colors.pageEdge);
    const qreal base = height() - 0.5;
    if (active.isValid() && !underline) {
        painter.drawLine(QPointF(0, base), QPointF(active.left(), base));
        painter.drawLine(QPointF(active.right() + 1, base), QPointF(width(), base));
    }

    for (int i = 0; i < count(); ++i) {
        if (!isTabVisible(i))
            continue;
        const QRect box = tabRect(i);
        const bool isCurrent = i == current;
        const bool enabled = isTabEnabled(i) && isEnabled();
        QColor textColor = colors.tabRowText;
        if (isCurrent && !underline) {
            const QRectF shape = QRectF(box).adjusted(0.5, 2.5, -0.5, 0.5);
            QPainterPath path;
            const qreal radius = classic ? 3 : 0;
            path.moveTo(shape.bottomLeft());
            path.lineTo(shape.left(), shape.top() + radius);
            path.quadTo(shape.topLeft(), QPointF(shape.left() + radius, shape.top()));
            path.lineTo(shape.right() - radius, shape.top());
            path.quadTo(shape.topRight(), QPointF(shape.right(), shape.top() + radius));
            path.lineTo(shape.bottomRight());
            painter.fillPath(path, colors.page);
            painter.setPen(colors.pageEdge);
            painter.drawPath(path);
            textColor = colors.text;
        } else if (i == m_hover && enabled) {
            painter.fillRect(box.adjusted(1, 3, -1, 0), RibbonBlend(colors.tabRow, colors.tabRowText, 0.1));
        }
        if (!enabled)
            textColor = RibbonBlend(colors.tabRow, textColor, 0.45);
        painter.setPen(textColor);
        painter.setFont(font());
        painter.drawText(box.adjusted(0, 2, 0, 0), Qt::AlignCenter, WithoutMnemonic(tabText(i)));
        if (isCurrent && underline) {
            const int textWidth = fontMetrics().horizontalAdvance(WithoutMnemonic(tabText(i)));
            const QRect bar(box.center().x() - textWidth / 2, box.bottom() - 2, textWidth, 3);
            painter.fillRect(bar, m_colored ? colors.accentText : colors.accent);
        }
        if (hasFocus() && isCurrent) {
            painter.setPen(QPen(m_colored && underline ? colors.accentText : colors.accent, 1, Qt::DotLine));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(box.adjusted(3, 5, -4, -3));
        }
    }
}

void TRibbonTabBar::mouseMoveEvent(QMouseEvent* event)
{
    const int hover = tabAt(event->position().toPoint());
    if (hover != m_hover) {
        m_hover = hover;
        update();
    }
    QTabBar::mouseMoveEvent(event);
}

void TRibbonTabBar::leaveEvent(QEvent* event)
{
    m_hover = -1;
    update();
    QTabBar::leaveEvent(event);
}
