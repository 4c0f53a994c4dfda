#include "uRibbonGroup.h"

#include "uGalleryView.h"
#include "uPaintHelpers.h"
#include "uRibbonComboItem.h"
#include "uRibbonGroupLayout.h"
#include "uRibbonStyle.h"

#include <QAction>
#include <QActionGroup>
#include <QEvent>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QWidgetAction>

namespace {
// The caption button's glyph: a small box with an arrow out of its corner.
QIcon captionGlyph(const QColor& color, int size)
{
    QPixmap pixmap(size * 2, size * 2);
    pixmap.setDevicePixelRatio(2.0);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.0));
    const qreal s = size;
    painter.drawLine(QPointF(s * 0.2, s * 0.2), QPointF(s * 0.55, s * 0.2));
    painter.drawLine(QPointF(s * 0.2, s * 0.2), QPointF(s * 0.2, s * 0.55));
    painter.drawLine(QPointF(s * 0.35, s * 0.35), QPointF(s * 0.8, s * 0.8));
    QPainterPath head;
    head.moveTo(s * 0.82, s * 0.82);
    head.lineTo(s * 0.82, s * 0.5);
    head.lineTo(s * 0.5, s * 0.82);
    head.closeSubpath();
    painter.fillPath(head, color);
    return QIcon(pixmap);
}
} // namespace

TRibbonGroup::TRibbonGroup(const QString& name, const QString& caption, QWidget* parent)
    : QWidget(parent), m_caption(caption), m_layout(new TRibbonGroupLayout(this))
{
    setObjectName(name);
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    m_layout->setContentsMargins(m.padding, 2, m.padding, m.captionHeight + 2);
}

void TRibbonGroup::setCaption(const QString& caption)
{
    m_caption = caption;
    updateGeometry();
    update();
}

QIcon TRibbonGroup::icon() const
{
    if (!m_icon.isNull())
        return m_icon;
    for (QWidget* widget : m_items)
        if (auto* button = qobject_cast<QToolButton*>(widget); button && !button->icon().isNull())
            return button->icon();
    return {};
}

void TRibbonGroup::setIcon(const QIcon& icon)
{
    m_icon = icon;
}

void TRibbonGroup::adopt(QWidget* widget, TRibbonItemSize size)
{
    m_items << widget;
    m_layout->addItemWidget(widget, size);
    updateGeometry();
}

TRibbonButton* TRibbonGroup::addButton(QAction* action, TRibbonItemSize size)
{
    auto* button = new TRibbonButton(action, size, this);
    adopt(button, size);
    return button;
}

TRibbonButton* TRibbonGroup::addDropDownButton(QAction* action, QMenu* menu, TRibbonItemSize size, bool split)
{
    auto* button = new TRibbonButton(action, size, this);
    button->setDropDownMenu(menu, split);
    adopt(button, size);
    return button;
}

TRibbonButton* TRibbonGroup::addCheckItem(QAction* action)
{
    auto* button = new TRibbonButton(action, TRibbonItemSize::Medium, this);
    button->setKind(TRibbonButton::Kind::Check);
    adopt(button, TRibbonItemSize::Medium);
    return button;
}

QList<TRibbonButton*> TRibbonGroup::addRadioGroup(QActionGroup* group, TRibbonItemSize size, bool indicators)
{
    QList<TRibbonButton*> buttons;
    if (group == nullptr)
        return buttons;
    for (QAction* action : group->actions()) {
        action->setCheckable(true);
        auto* button = new TRibbonButton(action, indicators ? TRibbonItemSize::Medium : size, this);
        if (indicators)
            button->setKind(TRibbonButton::Kind::Radio);
        adopt(button, indicators ? TRibbonItemSize::Medium : size);
        buttons << button;
    }
    return buttons;
}

TRibbonComboItem* TRibbonGroup::addComboItem(QAction* action, const QStringList& items)
{
    auto* combo = new TRibbonComboItem(action, this);
    combo->setItems(items);
    adopt(combo, TRibbonItemSize::Medium);
    return combo;
}

TRibbonButton* TRibbonGroup::addGalleryButton(QAction* action, TGalleryView* gallery, TRibbonItemSize size)
{
    auto* menu = new QMenu(this);
    auto* holder = new QWidgetAction(menu);
    gallery->setParent(menu);
    holder->setDefaultWidget(gallery);
    menu->addAction(holder);
    connect(gallery, &TGalleryView::itemClicked, menu, &QMenu::close);
    // A pick in the gallery is the button's answer; the action itself is for text, icon and state.
    auto* button = new TRibbonButton(action, size, this);
    button->setDropDownMenu(menu, false);
    adopt(button, size);
    return button;
}

void TRibbonGroup::addWidget(QWidget* widget, TRibbonItemSize size)
{
    widget->setParent(this);
    adopt(widget, size);
}

void TRibbonGroup::addSeparator()
{
    m_layout->addSeparator();
    updateGeometry();
}

void TRibbonGroup::addColumnBreak()
{
    m_layout->addColumnBreak();
    updateGeometry();
}

void TRibbonGroup::setCaptionAction(QAction* action)
{
    if (m_captionAction)
        m_captionAction->disconnect(this);
    m_captionAction = action;
    if (m_captionButton == nullptr) {
        m_captionButton = new QToolButton(this);
        m_captionButton->setObjectName(objectName() + u"CaptionButton");
        m_captionButton->setAutoRaise(true);
        m_captionButton->setFocusPolicy(Qt::TabFocus);
        connect(m_captionButton, &QToolButton::clicked, this, [this]() {
            if (m_captionAction && m_captionAction->isEnabled())
                m_captionAction->trigger();
        });
    }
    // The button keeps the launcher glyph whatever the action's icon; text and state follow it.
    const int size = TRibbonMetrics::of(fontMetrics()).captionHeight - 4;
    m_captionButton->setIcon(captionGlyph(palette().color(QPalette::WindowText), size));
    m_captionButton->setIconSize(QSize(size - 4, size - 4));
    const auto sync = [this]() {
        if (!m_captionAction)
            return;
        m_captionButton->setEnabled(m_captionAction->isEnabled());
        m_captionButton->setToolTip(WithoutMnemonic(m_captionAction->text()));
    };
    if (action != nullptr)
        connect(action, &QAction::changed, this, sync);
    sync();
    m_captionButton->setVisible(action != nullptr);
    placeCaptionButton();
    updateGeometry();
}

QWidget* TRibbonGroup::item(const QString& objectName) const
{
    for (QWidget* widget : m_items)
        if (widget->objectName() == objectName)
            return widget;
    return nullptr;
}

QSize TRibbonGroup::sizeHint() const
{
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    const QSize items = m_layout->sizeHint();
    int captionWidth = fontMetrics().horizontalAdvance(m_caption) + m.padding * 4;
    if (m_captionButton != nullptr && m_captionButton->isVisibleTo(this))
        captionWidth += m.captionHeight;
    return {std::max(items.width(), captionWidth), m.groupHeight};
}

QSize TRibbonGroup::minimumSizeHint() const
{
    return sizeHint();
}

void TRibbonGroup::placeCaptionButton()
{
    if (m_captionButton == nullptr)
        return;
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    const int size = m.captionHeight - 2;
    const QRect box(width() - size - 3, height() - size - 2, size, size);
    m_captionButton->setGeometry(QStyle::visualRect(layoutDirection(), rect(), box));
}

void TRibbonGroup::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeCaptionButton();
}

void TRibbonGroup::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
        m_layout->setContentsMargins(m.padding, 2, m.padding, m.captionHeight + 2);
        if (m_captionAction)
            setCaptionAction(m_captionAction);
    }
    if (event->type() == QEvent::LayoutDirectionChange)
        placeCaptionButton();
    if (event->type() == QEvent::PaletteChange && m_captionAction)
        setCaptionAction(m_captionAction);
}

void TRibbonGroup::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    const TRibbonColors colors = TRibbonColors::of(palette(), false);
    const Qt::LayoutDirection direction = layoutDirection();
    // The look is the ribbon's: the nearest ancestor that says (a popup's parent is the page).
    bool classic = false;
    for (const QWidget* ancestor = parentWidget(); ancestor != nullptr; ancestor = ancestor->parentWidget())
        if (const QVariant look = ancestor->property("classicLook"); look.isValid()) {
            classic = look.toBool();
            break;
        }
    if (classic) {
        // Framed group with a shaded caption band.
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF frame = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
        painter.setPen(QPen(colors.separator, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(frame, 3, 3);
        QRectF band = frame;
        band.setTop(height() - m.captionHeight - 2);
        QPainterPath clip;
        clip.addRoundedRect(frame, 3, 3);
        painter.setClipPath(clip);
        painter.fillRect(band, RibbonBlend(colors.page, colors.text, 0.07));
        painter.setClipping(false);
    } else {
        // A line at the group's end edge.
        painter.setPen(colors.separator);
        const int x = direction == Qt::RightToLeft ? 0 : width() - 1;
        painter.drawLine(x, m.padding, x, height() - m.padding);
    }
    painter.setPen(colors.captionText);
    painter.setFont(font());
    int captionWidth = width() - m.padding * 2;
    if (m_captionButton != nullptr && m_captionButton->isVisibleTo(this))
        captionWidth -= m.captionHeight;
    const QRect caption(m.padding, height() - m.captionHeight - 2, captionWidth, m.captionHeight);
    painter.drawText(QStyle::visualRect(direction, rect(), caption), Qt::AlignCenter,
                     fontMetrics().elidedText(m_caption, Qt::ElideRight, caption.width()));
    painter.setPen(colors.separator);
    for (const int x : m_layout->separatorLines())
        painter.drawLine(x, m.padding + 2, x, height() - m.captionHeight - m.padding);
}
