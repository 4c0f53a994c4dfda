#include "uRatingWidget.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>

#include <cmath>

namespace {
QPainterPath starPath(const QRectF& box)
{
    QPainterPath path;
    const QPointF centre = box.center();
    const double outer = box.width() / 2.0;
    const double inner = outer * 0.45;
    for (int i = 0; i < 10; ++i) {
        const double radius = i % 2 == 0 ? outer : inner;
        const double angle = -M_PI / 2 + i * M_PI / 5;
        const QPointF point(centre.x() + radius * std::cos(angle),
                            centre.y() + radius * std::sin(angle) + outer * 0.06);
        if (i == 0)
            path.moveTo(point);
        else
            path.lineTo(point);
    }
    path.closeSubpath();
    return path;
}
} // namespace

TRatingWidget::TRatingWidget(QWidget* parent) : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
}

void TRatingWidget::setStarCount(int count)
{
    m_stars = std::max(1, count);
    updateGeometry();
    update();
}

void TRatingWidget::setValue(const QVariant& value)
{
    QVariant next;
    if (value.isValid() && !value.isNull())
        next = std::clamp(value.toDouble(), 0.0, double(m_stars));
    if (next == m_value && next.isNull() == m_value.isNull())
        return;
    m_value = next;
    update();
    emit valueChanged(m_value);
}

int TRatingWidget::starSize(const QFontMetrics& metrics)
{
    return metrics.height() + 2;
}

QSize TRatingWidget::sizeHint() const
{
    const int size = starSize(fontMetrics());
    return {m_stars * (size + 2) + 8, size + 6};
}

QRect TRatingWidget::starsRect() const
{
    return rect().adjusted(4, 0, -4, 0);
}

void TRatingWidget::paintStars(QPainter* painter, const QRect& rect, Qt::LayoutDirection direction, int count,
                               int size, double value, const QColor& fill, const QColor& outline)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const int top = rect.top() + (rect.height() - size) / 2;
    for (int i = 0; i < count; ++i) {
        const int offset = i * (size + 2);
        const int x = direction == Qt::RightToLeft ? rect.right() - offset - size + 1 : rect.left() + offset;
        const QRectF box(x, top, size, size);
        const QPainterPath path = starPath(box);
        const double part = std::clamp(value - i, 0.0, 1.0);
        if (part > 0) {
            painter->save();
            QRectF clip = box;
            clip.setWidth(box.width() * part);
            if (direction == Qt::RightToLeft)
                clip.moveRight(box.right());
            painter->setClipRect(clip);
            painter->fillPath(path, fill);
            painter->restore();
        }
        painter->setPen(QPen(part > 0 ? fill.darker(130) : outline, 1.0));
        painter->setBrush(Qt::NoBrush);
        painter->drawPath(path);
    }
    painter->restore();
}

double TRatingWidget::valueAt(const QRect& rect, Qt::LayoutDirection direction, int count, int size, int x,
                              double step)
{
    double position = direction == Qt::RightToLeft ? rect.right() + 1 - x : x - rect.left();
    const double pitch = size + 2;
    double stars = position / pitch;
    const int whole = int(stars);
    const double within = std::min((position - whole * pitch) / size, 1.0);
    stars = whole + within;
    // Round up to the step: a click on the left half of a star gives a half star.
    double value = std::ceil(stars / step - 1e-9) * step;
    return std::clamp(value, step, double(count));
}

void TRatingWidget::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    const double shown = m_hover >= 0 ? m_hover : m_value.toDouble();
    QColor outline = palette().color(QPalette::Text);
    outline.setAlphaF(0.45f);
    paintStars(&painter, starsRect(), layoutDirection(), m_stars, starSize(fontMetrics()), shown,
               palette().color(QPalette::Highlight), outline);
    if (hasFocus()) {
        QColor focus = palette().color(QPalette::Highlight);
        painter.setPen(QPen(focus, 1, Qt::DotLine));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void TRatingWidget::mouseMoveEvent(QMouseEvent* event)
{
    m_hover = valueAt(starsRect(), layoutDirection(), m_stars, starSize(fontMetrics()),
                      event->position().toPoint().x(), m_step);
    update();
}

void TRatingWidget::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    m_hover = -1;
    update();
}

void TRatingWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    choose(valueAt(starsRect(), layoutDirection(), m_stars, starSize(fontMetrics()),
                   event->position().toPoint().x(), m_step));
}

void TRatingWidget::choose(const QVariant& value)
{
    setValue(value);
    emit valueChosen();
}

void TRatingWidget::keyPressEvent(QKeyEvent* event)
{
    const bool rtl = layoutDirection() == Qt::RightToLeft;
    int direction = 0;
    switch (event->key()) {
    case Qt::Key_Right:
        direction = rtl ? -1 : 1;
        break;
    case Qt::Key_Left:
        direction = rtl ? 1 : -1;
        break;
    case Qt::Key_Plus:
        direction = 1;
        break;
    case Qt::Key_Minus:
        direction = -1;
        break;
    case Qt::Key_Home:
        choose(QVariant());
        return;
    case Qt::Key_End:
        choose(double(m_stars));
        return;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    choose(std::clamp(m_value.toDouble() + direction * m_step, 0.0, double(m_stars)));
}

void TRatingWidget::wheelEvent(QWheelEvent* event)
{
    const int delta = event->angleDelta().y();
    if (delta == 0)
        return QWidget::wheelEvent(event);
    const double current = m_value.toDouble();
    choose(std::clamp(current + (delta > 0 ? m_step : -m_step), 0.0, double(m_stars)));
    event->accept();
}
