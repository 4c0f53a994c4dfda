#include "uImageSlider.h"

#include "uWidgetTexts.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QWheelEvent>

TImageSlider::TImageSlider(QWidget* parent) : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

int TImageSlider::addImage(const QString& name, const QString& caption)
{
    m_images.push_back({name, caption, {}});
    update();
    return count() - 1;
}

int TImageSlider::indexOf(const QString& name) const
{
    for (int i = 0; i < count(); ++i)
        if (m_images[i].name == name)
            return i;
    return -1;
}

QString TImageSlider::name(int index) const
{
    return index >= 0 && index < count() ? m_images[index].name : QString();
}

void TImageSlider::setImage(int index, const QImage& image)
{
    if (index < 0 || index >= count())
        return;
    m_images[index].image = image;
    if (index == m_current)
        m_scaledFor = -1;
    if (m_current == index && m_skipEmpty && image.isNull()) {
        // The shown picture went away: move on to the nearest stop.
        int next = stepFrom(index, 1);
        if (next < 0)
            next = stepFrom(index, -1);
        show(next);
        return;
    }
    if (m_current < 0 && isStop(index)) {
        showFirst();
        return;
    }
    update();
}

void TImageSlider::setImageBytes(int index, const QByteArray& bytes)
{
    setImage(index, bytes.isEmpty() ? QImage() : QImage::fromData(bytes));
}

void TImageSlider::clearImage(int index)
{
    setImage(index, QImage());
}

void TImageSlider::clearImages()
{
    for (Image& image : m_images)
        image.image = QImage();
    m_scaledFor = -1;
    if (m_skipEmpty)
        show(-1);
    else
        update();
}

QImage TImageSlider::image(int index) const
{
    return index >= 0 && index < count() ? m_images[index].image : QImage();
}

bool TImageSlider::hasImage(int index) const
{
    return index >= 0 && index < count() && !m_images[index].image.isNull();
}

void TImageSlider::setCaption(int index, const QString& caption)
{
    if (index < 0 || index >= count())
        return;
    m_images[index].caption = caption;
    update();
}

QString TImageSlider::caption(int index) const
{
    return index >= 0 && index < count() ? m_images[index].caption : QString();
}

void TImageSlider::setSkipEmpty(bool on)
{
    m_skipEmpty = on;
    if (on && m_current >= 0 && !isStop(m_current))
        showFirst();
    update();
}

void TImageSlider::setCaptionVisible(bool on)
{
    m_captionVisible = on;
    m_scaledFor = -1;
    update();
}

bool TImageSlider::isStop(int index) const
{
    if (index < 0 || index >= count())
        return false;
    return !m_skipEmpty || hasImage(index);
}

int TImageSlider::stepFrom(int from, int direction) const
{
    if (count() == 0)
        return -1;
    if (m_skipEmpty) {
        for (int i = from + direction; i >= 0 && i < count(); i += direction)
            if (isStop(i))
                return i;
        return -1;
    }
    if (from < 0)
        return direction > 0 ? 0 : count() - 1;
    return (from + direction + count()) % count();
}

void TImageSlider::show(int index)
{
    if (index == m_current) {
        update();
        return;
    }
    m_current = index;
    m_scaledFor = -1;
    update();
    emit currentChanged(index);
}

bool TImageSlider::setCurrentIndex(int index)
{
    if (index < -1 || index >= count())
        return false;
    if (index >= 0 && !isStop(index))
        return false;
    show(index);
    return true;
}

void TImageSlider::showFirst()
{
    show(stepFrom(-1, 1));
}

bool TImageSlider::canGoNext() const
{
    const int next = stepFrom(m_current, 1);
    return next >= 0 && next != m_current;
}

bool TImageSlider::canGoPrevious() const
{
    if (m_skipEmpty && m_current < 0)
        return false;
    const int previous = stepFrom(m_current, -1);
    return previous >= 0 && previous != m_current;
}

bool TImageSlider::next()
{
    if (!canGoNext())
        return false;
    show(stepFrom(m_current, 1));
    return true;
}

bool TImageSlider::previous()
{
    if (!canGoPrevious())
        return false;
    show(stepFrom(m_current, -1));
    return true;
}

QImage TImageSlider::currentImage() const
{
    return image(m_current);
}

QString TImageSlider::currentCaption() const
{
    return caption(m_current);
}

QSize TImageSlider::sizeHint() const
{
    const int line = fontMetrics().height();
    return {line * 16, line * 14};
}

QSize TImageSlider::minimumSizeHint() const
{
    const int line = fontMetrics().height();
    return {line * 6, line * 5};
}

// ---- geometry

int TImageSlider::dotsHeight() const
{
    return fontMetrics().height();
}

int TImageSlider::captionHeight() const
{
    return m_captionVisible ? fontMetrics().height() + 4 : 0;
}

QRect TImageSlider::arrowRect(bool visualLeft) const
{
    const int size = fontMetrics().height() * 2;
    const int top = (height() - dotsHeight() - captionHeight() - size) / 2;
    return visualLeft ? QRect(4, top, size, size) : QRect(width() - 4 - size, top, size, size);
}

QRect TImageSlider::pictureRect() const
{
    const int side = fontMetrics().height() * 2 + 8;
    return QRect(side, 4, width() - 2 * side, height() - 8 - dotsHeight() - captionHeight());
}

// ---- painting

void TImageSlider::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& palette = this->palette();
    painter.fillRect(rect(), palette.color(QPalette::Base));

    const QRect area = pictureRect();
    const QImage shown = currentImage();
    if (!shown.isNull() && area.isValid()) {
        if (m_scaledFor != m_current || m_scaled.isNull()) {
            const qreal ratio = devicePixelRatioF();
            m_scaled = QPixmap::fromImage(
                shown.scaled(area.size() * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation));
            m_scaled.setDevicePixelRatio(ratio);
            m_scaledFor = m_current;
        }
        const QSize size = m_scaled.deviceIndependentSize().toSize();
        painter.drawPixmap(QStyle::alignedRect(layoutDirection(), Qt::AlignCenter, size, area), m_scaled);
    } else {
        QColor faint = palette.color(QPalette::Text);
        faint.setAlphaF(0.5f);
        painter.setPen(faint);
        painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, WidgetTexts().noImage);
    }

    if (m_captionVisible) {
        painter.setPen(palette.color(QPalette::Text));
        const QRect line(0, area.bottom() + 2, width(), captionHeight());
        painter.drawText(line, Qt::AlignCenter,
                         fontMetrics().elidedText(currentCaption(), Qt::ElideRight, width() - 8));
    }

    // The stops as dots, the shown one filled.
    QList<int> stops;
    for (int i = 0; i < count(); ++i)
        if (isStop(i))
            stops << i;
    const int dot = std::max(4, fontMetrics().height() / 3);
    const int pitch = dot * 2;
    const int dotsTop = height() - dotsHeight() + (dotsHeight() - dot) / 2 - 2;
    int x = (width() - int(stops.size()) * pitch + dot) / 2;
    const bool rtl = layoutDirection() == Qt::RightToLeft;
    for (int i = 0; i < int(stops.size()); ++i) {
        const int stop = rtl ? stops[stops.size() - 1 - i] : stops[i];
        const QRect box(x, dotsTop, dot, dot);
        painter.setPen(QPen(palette.color(QPalette::Text), 1));
        painter.setBrush(stop == m_current ? palette.color(QPalette::Highlight) : Qt::transparent);
        if (stop == m_current)
            painter.setPen(QPen(palette.color(QPalette::Highlight), 1));
        painter.drawEllipse(box);
        x += pitch;
    }

    // The arrows: "previous" on the start side, "next" on the end side.
    for (const bool visualLeft : {true, false}) {
        const bool forward = visualLeft == rtl;
        const bool enabled = forward ? canGoNext() : canGoPrevious();
        const QRect box = arrowRect(visualLeft);
        QColor fill = palette.color(QPalette::Button);
        fill.setAlphaF(m_hoverArrow == (visualLeft ? -1 : 1) && enabled ? 0.95f : 0.7f);
        painter.setPen(QPen(palette.color(QPalette::Mid), 1));
        painter.setBrush(fill);
        painter.drawEllipse(box.adjusted(1, 1, -1, -1));
        QColor glyph = palette.color(enabled ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText);
        painter.setPen(
            QPen(glyph, std::max(2.0, box.width() / 12.0), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        const QPointF centre = QRectF(box).center();
        const qreal arm = box.width() / 6.0;
        const qreal direction = visualLeft ? -1 : 1;
        QPainterPath chevron;
        chevron.moveTo(centre.x() - direction * arm * 0.6, centre.y() - arm * 1.2);
        chevron.lineTo(centre.x() + direction * arm * 0.6, centre.y());
        chevron.lineTo(centre.x() - direction * arm * 0.6, centre.y() + arm * 1.2);
        painter.drawPath(chevron);
    }

    if (hasFocus()) {
        painter.setPen(QPen(palette.color(QPalette::Highlight), 1, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

// ---- input

void TImageSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    const QPoint pos = event->position().toPoint();
    const bool rtl = layoutDirection() == Qt::RightToLeft;
    if (arrowRect(true).contains(pos))
        rtl ? next() : previous();
    else if (arrowRect(false).contains(pos))
        rtl ? previous() : next();
    else
        QWidget::mousePressEvent(event);
}

void TImageSlider::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    if (arrowRect(true).contains(pos) || arrowRect(false).contains(pos)) {
        // A quick second click on an arrow steps again.
        mousePressEvent(event);
        return;
    }
    if (event->button() == Qt::LeftButton && m_current >= 0)
        emit doubleClicked(m_current);
}

void TImageSlider::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    const int hover = arrowRect(true).contains(pos) ? -1 : arrowRect(false).contains(pos) ? 1 : 0;
    if (hover != m_hoverArrow) {
        m_hoverArrow = hover;
        setCursor(hover != 0 ? Qt::PointingHandCursor : Qt::ArrowCursor);
        update();
    }
    QWidget::mouseMoveEvent(event);
}

void TImageSlider::leaveEvent(QEvent* event)
{
    m_hoverArrow = 0;
    update();
    QWidget::leaveEvent(event);
}

void TImageSlider::keyPressEvent(QKeyEvent* event)
{
    const bool rtl = layoutDirection() == Qt::RightToLeft;
    switch (event->key()) {
    case Qt::Key_Right:
        rtl ? previous() : next();
        break;
    case Qt::Key_Left:
        rtl ? next() : previous();
        break;
    case Qt::Key_Home:
        showFirst();
        break;
    case Qt::Key_End:
        show(m_skipEmpty ? stepFrom(count(), -1) : count() - 1);
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
}

void TImageSlider::wheelEvent(QWheelEvent* event)
{
    const int delta = event->angleDelta().y();
    if (delta == 0)
        return QWidget::wheelEvent(event);
    delta < 0 ? next() : previous();
    event->accept();
}

void TImageSlider::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_scaledFor = -1;
}
