#include "uSearchBox.h"

#include <QAction>
#include <QEvent>
#include <QPainter>

TSearchBox::TSearchBox(QWidget* parent) : QLineEdit(parent), m_glyph(new QAction(this))
{
    setClearButtonEnabled(true);
    addAction(m_glyph, QLineEdit::LeadingPosition);
    updateGlyph();
    connect(this, &QLineEdit::returnPressed, this, [this]() { emit searchRequested(text()); });
}

void TSearchBox::updateGlyph()
{
    const int size = fontMetrics().height();
    QPixmap pixmap(size * 2, size * 2);
    pixmap.setDevicePixelRatio(2.0);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor color = palette().color(QPalette::Text);
    color.setAlphaF(0.6f);
    painter.setPen(QPen(color, std::max(1.5, size / 9.0), Qt::SolidLine, Qt::RoundCap));
    const qreal s = size;
    painter.drawEllipse(QRectF(s * 0.18, s * 0.18, s * 0.46, s * 0.46));
    painter.drawLine(QPointF(s * 0.58, s * 0.58), QPointF(s * 0.82, s * 0.82));
    painter.end();
    m_glyph->setIcon(QIcon(pixmap));
}

void TSearchBox::changeEvent(QEvent* event)
{
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        updateGlyph();
}
