#include "uRibbonButton.h"

#include "uPaintHelpers.h"
#include "uRibbonStyle.h"

#include <QActionEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionButton>

using namespace Qt::StringLiterals;

TRibbonButton::TRibbonButton(QAction* action, TRibbonItemSize size, QWidget* parent)
    : QToolButton(parent), m_size(size)
{
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    if (action != nullptr) {
        setDefaultAction(action);
        if (!action->isVisible())
            setVisible(false);
        if (action->menu() != nullptr)
            setPopupMode(QToolButton::MenuButtonPopup);
        if (!action->objectName().isEmpty() && objectName().isEmpty())
            setObjectName(u"btn"_s +
                          action->objectName().mid(action->objectName().startsWith(u"act"_s) ? 3 : 0));
    }
}

void TRibbonButton::setItemSize(TRibbonItemSize size)
{
    m_size = size;
    invalidateSize();
}

void TRibbonButton::setKind(Kind kind)
{
    m_kind = kind;
    invalidateSize();
}

void TRibbonButton::setDropDownMenu(QMenu* menu, bool split)
{
    setMenu(menu);
    setPopupMode(split ? QToolButton::MenuButtonPopup : QToolButton::InstantPopup);
    invalidateSize();
}

void TRibbonButton::setShowsArrow(bool on)
{
    m_showsArrow = on;
    invalidateSize();
}

bool TRibbonButton::hasDropDown() const
{
    return m_showsArrow || menu() != nullptr ||
           (defaultAction() != nullptr && defaultAction()->menu() != nullptr);
}

bool TRibbonButton::isSplit() const
{
    return hasDropDown() && !m_showsArrow && popupMode() == QToolButton::MenuButtonPopup;
}

void TRibbonButton::invalidateSize()
{
    m_sizeHint = QSize();
    updateGeometry();
    update();
}

QString TRibbonButton::shownText() const
{
    return WithoutMnemonic(text());
}

QStringList TRibbonButton::splitText(const QString& text, const QFontMetrics& metrics, int arrowWidth)
{
    const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    if (words.size() <= 1)
        return {text, QString()};
    int best = -1;
    int bestWidth = 0;
    for (int i = 1; i < words.size(); ++i) {
        const int first = metrics.horizontalAdvance(words.mid(0, i).join(u' '));
        const int second = metrics.horizontalAdvance(words.mid(i).join(u' ')) + arrowWidth;
        const int width = std::max(first, second);
        if (best < 0 || width < bestWidth) {
            best = i;
            bestWidth = width;
        }
    }
    return {words.mid(0, best).join(u' '), words.mid(best).join(u' ')};
}

QSize TRibbonButton::sizeHint() const
{
    if (m_sizeHint.isValid())
        return m_sizeHint;
    const QFontMetrics metrics = fontMetrics();
    const TRibbonMetrics m = TRibbonMetrics::of(metrics);
    const QString text = shownText();
    const int arrow = hasDropDown() ? m.arrowSize + m.padding : 0;
    switch (m_kind == Kind::Button ? m_size : TRibbonItemSize::Medium) {
    case TRibbonItemSize::Large: {
        const QStringList lines = splitText(text, metrics, arrow);
        int width =
            std::max(metrics.horizontalAdvance(lines[0]), metrics.horizontalAdvance(lines[1]) + arrow);
        width = std::max(width, m.largeIcon);
        m_sizeHint = QSize(std::max(width + m.padding * 3, m.largeIcon + m.padding * 2), m.bodyHeight);
        break;
    }
    case TRibbonItemSize::Medium: {
        int lead = m.smallIcon;
        if (m_kind != Kind::Button)
            lead = style()->pixelMetric(m_kind == Kind::Check ? QStyle::PM_IndicatorWidth
                                                              : QStyle::PM_ExclusiveIndicatorWidth,
                                        nullptr, this);
        else if (icon().isNull())
            lead = -m.padding;
        const int width = m.padding + lead + m.padding + metrics.horizontalAdvance(text) + m.padding +
                          (arrow > 0 ? arrow + (isSplit() ? m.padding : 0) : 0);
        m_sizeHint = QSize(width, m.rowHeight);
        break;
    }
    case TRibbonItemSize::Small:
        m_sizeHint = QSize(
            m.smallIcon + m.padding * 2 + (arrow > 0 ? arrow + (isSplit() ? m.padding : 0) : 0), m.rowHeight);
        break;
    }
    return m_sizeHint;
}

QSize TRibbonButton::minimumSizeHint() const
{
    return sizeHint();
}

QRect TRibbonButton::menuPart() const
{
    if (!isSplit())
        return {};
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    if (m_size == TRibbonItemSize::Large && m_kind == Kind::Button) {
        const int top = m.padding + m.largeIcon + m.padding / 2;
        return QRect(0, top, width(), height() - top);
    }
    const int part = m.arrowSize + m.padding * 2;
    return QStyle::visualRect(layoutDirection(), rect(), QRect(width() - part, 0, part, height()));
}

void TRibbonButton::paintArrow(QPainter* painter, const QRect& rect, const QColor& color, int size)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    const QPointF centre = QRectF(rect).center();
    const qreal half = size / 2.0;
    QPainterPath path;
    path.moveTo(centre.x() - half, centre.y() - half / 2);
    path.lineTo(centre.x() + half, centre.y() - half / 2);
    path.lineTo(centre.x(), centre.y() + half / 2 + 0.5);
    path.closeSubpath();
    painter->drawPath(path);
    painter->restore();
}

void TRibbonButton::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    const TRibbonColors colors = TRibbonColors::of(palette(), false);
    const Qt::LayoutDirection direction = layoutDirection();
    const bool enabled = isEnabled();
    const bool hover = enabled && underMouse();
    const bool down = isDown() || m_menuOpen;
    const bool checked = isChecked() && m_kind == Kind::Button;
    const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const QRect split = menuPart();

    // The background: checked, hovered and pressed states, the pressed part of a split item
    // stronger.
    if (checked || hover || down) {
        QColor fill = down ? colors.pressed : checked ? colors.checked : colors.hover;
        if (checked && hover && !down)
            fill = RibbonBlend(colors.checked, colors.pressed, 0.5);
        painter.setPen(QPen(checked ? colors.checkedEdge : colors.hoverEdge, 1));
        painter.setBrush(fill);
        painter.drawRoundedRect(frame, 2, 2);
        if (split.isValid() && (hover || down)) {
            const bool menuActive = m_menuOpen || m_hoverMenuPart;
            const QRect other = menuActive ? split : QRegion(rect()).subtracted(split).boundingRect();
            if (!down || m_menuOpen)
                painter.fillRect(other.adjusted(1, 1, -1, -1), RibbonBlend(fill, colors.hoverEdge, 0.25));
            painter.setPen(QPen(colors.hoverEdge, 1));
            if (m_size == TRibbonItemSize::Large && m_kind == Kind::Button)
                painter.drawLine(QPointF(frame.left(), split.top() + 0.5),
                                 QPointF(frame.right(), split.top() + 0.5));
            else {
                const qreal x = (direction == Qt::RightToLeft ? split.right() + 1 : split.left()) + 0.5;
                painter.drawLine(QPointF(x, frame.top()), QPointF(x, frame.bottom()));
            }
        }
    }

    const QColor textColor =
        palette().color(enabled ? QPalette::Active : QPalette::Disabled, QPalette::WindowText);
    const QIcon::Mode iconMode = !enabled ? QIcon::Disabled : (hover ? QIcon::Active : QIcon::Normal);
    const QIcon::State iconState = isChecked() ? QIcon::On : QIcon::Off;
    const QString text = shownText();
    const int arrow = hasDropDown() ? m.arrowSize + m.padding : 0;
    painter.setPen(textColor);
    painter.setFont(font());

    if (m_size == TRibbonItemSize::Large && m_kind == Kind::Button) {
        const QRect iconRect((width() - m.largeIcon) / 2, m.padding, m.largeIcon, m.largeIcon);
        const QFontMetrics metrics = fontMetrics();
        const QStringList lines = splitText(text, metrics, arrow);
        int top = m.padding + m.largeIcon + m.padding / 2;
        if (icon().isNull())
            top = (height() - metrics.height() * 2) / 2;
        else
            icon().paint(&painter, iconRect, Qt::AlignCenter, iconMode, iconState);
        painter.drawText(QRect(0, top, width(), metrics.height()), Qt::AlignHCenter | Qt::AlignVCenter,
                         lines[0]);
        const int secondWidth = metrics.horizontalAdvance(lines[1]) + arrow;
        const QRect second((width() - secondWidth) / 2, top + metrics.height(), secondWidth,
                           metrics.height());
        const QRect secondVisual = QStyle::visualRect(direction, rect(), second);
        painter.drawText(secondVisual, int(VisualAlignment(direction, Qt::AlignLeft | Qt::AlignVCenter)),
                         lines[1]);
        if (arrow > 0) {
            const QRect arrowRect(second.right() - m.arrowSize + 1, second.top(), m.arrowSize,
                                  second.height());
            paintArrow(&painter, QStyle::visualRect(direction, rect(), arrowRect), textColor, m.arrowSize);
        }
    } else {
        int x = m.padding;
        if (m_kind != Kind::Button) {
            QStyleOptionButton indicator;
            indicator.initFrom(this);
            const bool radio = m_kind == Kind::Radio;
            const int size = style()->pixelMetric(
                radio ? QStyle::PM_ExclusiveIndicatorWidth : QStyle::PM_IndicatorWidth, nullptr, this);
            const int heightOf = style()->pixelMetric(
                radio ? QStyle::PM_ExclusiveIndicatorHeight : QStyle::PM_IndicatorHeight, nullptr, this);
            indicator.rect =
                QStyle::visualRect(direction, rect(), QRect(x, (height() - heightOf) / 2, size, heightOf));
            indicator.state = (enabled ? QStyle::State_Enabled : QStyle::State_None) |
                              (isChecked() ? QStyle::State_On : QStyle::State_Off);
            if (hover)
                indicator.state |= QStyle::State_MouseOver;
            style()->drawPrimitive(radio ? QStyle::PE_IndicatorRadioButton : QStyle::PE_IndicatorCheckBox,
                                   &indicator, &painter, this);
            x += size + m.padding;
        } else if (!icon().isNull()) {
            const QRect iconRect(x, (height() - m.smallIcon) / 2, m.smallIcon, m.smallIcon);
            icon().paint(&painter, QStyle::visualRect(direction, rect(), iconRect), Qt::AlignCenter, iconMode,
                         iconState);
            x += m.smallIcon + m.padding;
        }
        const int textRight = width() - (arrow > 0 ? arrow + (isSplit() ? m.padding : 0) : 0) - m.padding / 2;
        if (m_size != TRibbonItemSize::Small || m_kind != Kind::Button) {
            const QRect textRect(x, 0, std::max(0, textRight - x), height());
            painter.drawText(QStyle::visualRect(direction, rect(), textRect),
                             int(VisualAlignment(direction, Qt::AlignLeft | Qt::AlignVCenter)),
                             fontMetrics().elidedText(text, Qt::ElideRight, textRect.width()));
        }
        if (arrow > 0) {
            const int part = m.arrowSize + m.padding * (isSplit() ? 2 : 1);
            const QRect arrowRect(width() - part, 0, part - (isSplit() ? 0 : m.padding / 2), height());
            paintArrow(&painter, QStyle::visualRect(direction, rect(), arrowRect), textColor, m.arrowSize);
        }
    }

    if (hasFocus()) {
        painter.setPen(QPen(colors.accent, 1, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(1, 1, -2, -2));
    }
}

void TRibbonButton::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && isSplit()) {
        if (menuPart().contains(event->position().toPoint())) {
            m_menuOpen = true;
            update();
            showMenu();
            m_menuOpen = false;
            m_hoverMenuPart = false;
            update();
            return;
        }
        // The action part: a plain button press, not the tool button's own split handling.
        QAbstractButton::mousePressEvent(event);
        return;
    }
    if (event->button() == Qt::LeftButton && hasDropDown() && !m_showsArrow &&
        popupMode() == QToolButton::InstantPopup) {
        m_menuOpen = true;
        update();
        showMenu();
        m_menuOpen = false;
        update();
        return;
    }
    QToolButton::mousePressEvent(event);
}

void TRibbonButton::mouseMoveEvent(QMouseEvent* event)
{
    const bool onMenu = isSplit() && menuPart().contains(event->position().toPoint());
    if (onMenu != m_hoverMenuPart) {
        m_hoverMenuPart = onMenu;
        update();
    }
    QToolButton::mouseMoveEvent(event);
}

void TRibbonButton::actionEvent(QActionEvent* event)
{
    QToolButton::actionEvent(event);
    if (event->type() == QEvent::ActionChanged) {
        if (event->action() == defaultAction() && parentWidget() != nullptr &&
            isVisibleTo(parentWidget()) != defaultAction()->isVisible())
            setVisible(defaultAction()->isVisible());
        invalidateSize();
    }
}

void TRibbonButton::changeEvent(QEvent* event)
{
    QToolButton::changeEvent(event);
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::LayoutDirectionChange:
        invalidateSize();
        break;
    default:
        break;
    }
}

void TRibbonButton::enterEvent(QEnterEvent* event)
{
    QToolButton::enterEvent(event);
    update();
}

void TRibbonButton::leaveEvent(QEvent* event)
{
    QToolButton::leaveEvent(event);
    m_hoverMenuPart = false;
    update();
}
