#include "uRibbonPage.h"

#include "uRibbonButton.h"
#include "uRibbonGroup.h"
#include "uRibbonStyle.h"
#include "uWidgetTexts.h"

#include <QAction>
#include <QApplication>
#include <QFrame>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace {
// The frame that shows a collapsed group under its button.
class TRibbonGroupPopup : public QFrame
{
public:
    explicit TRibbonGroupPopup(QWidget* parent) : QFrame(parent, Qt::Popup)
    {
        setFrameShape(QFrame::StyledPanel);
        setAttribute(Qt::WA_DeleteOnClose);
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(2, 2, 2, 2);
        setAutoFillBackground(true);
        QPalette shade = palette();
        shade.setColor(QPalette::Window, TRibbonColors::of(palette(), false).page);
        setPalette(shade);
    }
    std::function<void()> onHide;

protected:
    void hideEvent(QHideEvent* event) override
    {
        QFrame::hideEvent(event);
        if (onHide) {
            auto call = std::move(onHide);
            onHide = nullptr;
            call();
        }
    }
};
} // namespace

TRibbonPage::TRibbonPage(const QString& name, const QString& caption, QWidget* parent)
    : QWidget(parent), m_caption(caption), m_scrollStart(new QToolButton(this)),
      m_scrollEnd(new QToolButton(this))
{
    setObjectName(name);
    for (QToolButton* button : {m_scrollStart, m_scrollEnd}) {
        button->setAutoRepeat(true);
        button->setAutoRaise(false);
        button->setFocusPolicy(Qt::NoFocus);
        button->hide();
    }
    connect(m_scrollStart, &QToolButton::clicked, this, [this]() { scrollBy(-fontMetrics().height() * 4); });
    connect(m_scrollEnd, &QToolButton::clicked, this, [this]() { scrollBy(fontMetrics().height() * 4); });
}

void TRibbonPage::setCaption(const QString& caption)
{
    m_caption = caption;
    emit captionChanged(caption);
}

TRibbonGroup* TRibbonPage::addGroup(const QString& name, const QString& caption)
{
    auto* group = new TRibbonGroup(name, caption, this);
    group->installEventFilter(this);
    m_slots.push_back({group});
    group->show();
    m_scrollStart->raise();
    m_scrollEnd->raise();
    relayout();
    return group;
}

TRibbonGroup* TRibbonPage::group(const QString& name) const
{
    for (const Slot& slot : m_slots)
        if (slot.group->objectName() == name)
            return slot.group;
    return nullptr;
}

QList<TRibbonGroup*> TRibbonPage::groups() const
{
    QList<TRibbonGroup*> result;
    for (const Slot& slot : m_slots)
        result << slot.group;
    return result;
}

void TRibbonPage::setGroupVisible(const QString& name, bool visible)
{
    for (Slot& slot : m_slots)
        if (slot.group->objectName() == name) {
            slot.hidden = !visible;
            if (!visible && slot.popup)
                slot.popup->close();
        }
    relayout();
}

bool TRibbonPage::isGroupVisible(const QString& name) const
{
    for (const Slot& slot : m_slots)
        if (slot.group->objectName() == name)
            return !slot.hidden;
    return false;
}

TRibbonPage::Slot* TRibbonPage::slotOf(const TRibbonGroup* group)
{
    for (Slot& slot : m_slots)
        if (slot.group == group)
            return &slot;
    return nullptr;
}

const TRibbonPage::Slot* TRibbonPage::slotOf(const TRibbonGroup* group) const
{
    return const_cast<TRibbonPage*>(this)->slotOf(group);
}

bool TRibbonPage::isCollapsed(const TRibbonGroup* group) const
{
    const Slot* slot = slotOf(group);
    return slot != nullptr && slot->collapsed;
}

TRibbonButton* TRibbonPage::collapsedButton(const TRibbonGroup* group) const
{
    const Slot* slot = slotOf(group);
    return slot ? slot->collapsedButton : nullptr;
}

TRibbonButton* TRibbonPage::ensureCollapsedButton(Slot& slot)
{
    if (slot.collapsedButton == nullptr) {
        slot.collapsedAction = new QAction(this);
        slot.collapsedButton = new TRibbonButton(slot.collapsedAction, TRibbonItemSize::Large, this);
        slot.collapsedButton->setObjectName(slot.group->objectName() + u"Collapsed");
        TRibbonGroup* group = slot.group;
        connect(slot.collapsedAction, &QAction::triggered, this, [this, group]() { showGroupPopup(group); });
        // An arrow without a menu: the button shows the popup itself.
        slot.collapsedButton->setShowsArrow(true);
    }
    // Only real changes: every change of the action asks the page for another layout.
    if (slot.collapsedAction->text() != slot.group->caption())
        slot.collapsedAction->setText(slot.group->caption());
    const QIcon icon = slot.group->icon();
    if (slot.collapsedAction->icon().cacheKey() != icon.cacheKey())
        slot.collapsedAction->setIcon(icon);
    return slot.collapsedButton;
}

void TRibbonPage::showGroupPopup(TRibbonGroup* group)
{
    Slot* slot = slotOf(group);
    if (slot == nullptr || !slot->collapsed || slot->popup != nullptr)
        return;
    auto* popup = new TRibbonGroupPopup(this);
    popup->setLayoutDirection(layoutDirection());
    popup->layout()->addWidget(group);
    group->show();
    slot->popup = popup;
    popup->onHide = [this, group]() {
        if (Slot* owner = slotOf(group))
            returnFromPopup(*owner);
    };
    const QSize size = popup->sizeHint();
    QPoint at = slot->collapsedButton->mapToGlobal(QPoint(0, slot->collapsedButton->height()));
    if (layoutDirection() == Qt::RightToLeft)
        at.rx() += slot->collapsedButton->width() - size.width();
    if (const QScreen* screen = slot->collapsedButton->screen()) {
        const QRect available = screen->availableGeometry();
        at.setX(std::clamp(at.x(), available.left(),
                           std::max(available.left(), available.right() - size.width())));
    }
    popup->move(at);
    popup->show();
}

void TRibbonPage::returnFromPopup(Slot& slot)
{
    if (slot.popup == nullptr)
        return;
    slot.group->hide();
    slot.group->setParent(this);
    slot.popup = nullptr;
    relayout();
}

void TRibbonPage::scrollBy(int pixels)
{
    const int next = std::clamp(m_offset + pixels, 0, m_scrollMax);
    if (next == m_offset)
        return;
    m_offset = next;
    relayout();
}

QSize TRibbonPage::sizeHint() const
{
    int width = 0;
    int height = TRibbonMetrics::of(fontMetrics()).groupHeight;
    for (const Slot& slot : m_slots)
        if (!slot.hidden)
            width += slot.group->sizeHint().width();
    return {width, height};
}

QSize TRibbonPage::minimumSizeHint() const
{
    return {fontMetrics().height() * 4, TRibbonMetrics::of(fontMetrics()).groupHeight};
}

void TRibbonPage::relayout()
{
    if (m_relayouting)
        return;
    m_relayouting = true;
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    const Qt::LayoutDirection direction = layoutDirection();
    const int available = width();
    const int gap = 0;

    // Groups the program hid stay out; a group in its popup still counts as collapsed.
    std::vector<Slot*> shown;
    for (Slot& slot : m_slots) {
        const bool wanted = slot.popup != nullptr || !slot.hidden;
        if (wanted)
            shown.push_back(&slot);
        else {
            slot.group->hide();
            if (slot.collapsedButton)
                slot.collapsedButton->hide();
        }
    }
    std::vector<int> full(shown.size());
    std::vector<int> narrow(shown.size());
    int total = 0;
    for (size_t i = 0; i < shown.size(); ++i) {
        full[i] = shown[i]->group->sizeHint().width();
        narrow[i] = ensureCollapsedButton(*shown[i])->sizeHint().width() + m.padding * 2;
        total += full[i] + gap;
        shown[i]->collapsed = false;
    }
    for (int i = int(shown.size()) - 1; i >= 0 && total > available; --i) {
        shown[i]->collapsed = true;
        total += narrow[i] - full[i];
    }
    m_scrollMax = std::max(0, total - available);
    m_offset = std::clamp(m_offset, 0, m_scrollMax);

    int x = -m_offset;
    const int height = m.groupHeight;
    for (size_t i = 0; i < shown.size(); ++i) {
        Slot& slot = *shown[i];
        if (slot.popup != nullptr && !slot.collapsed)
            slot.popup->close();
        if (slot.collapsed) {
            const QRect box(x, 0, narrow[i], height);
            if (slot.popup == nullptr)
                slot.group->hide();
            slot.collapsedButton->setGeometry(
                QStyle::visualRect(direction, rect(), box).adjusted(m.padding, 2, -m.padding, -2));
            slot.collapsedButton->show();
            x += narrow[i] + gap;
        } else {
            if (slot.collapsedButton)
                slot.collapsedButton->hide();
            slot.group->setGeometry(QStyle::visualRect(direction, rect(), QRect(x, 0, full[i], height)));
            slot.group->show();
            x += full[i] + gap;
        }
    }

    // The scroll arrows stand over the page's edges while there is more to see that way.
    const int arrowWidth = m.arrowSize + m.padding * 2;
    const bool rtl = direction == Qt::RightToLeft;
    m_scrollStart->setArrowType(rtl ? Qt::RightArrow : Qt::LeftArrow);
    m_scrollEnd->setArrowType(rtl ? Qt::LeftArrow : Qt::RightArrow);
    m_scrollStart->setToolTip(rtl ? WidgetTexts().scrollRight : WidgetTexts().scrollLeft);
    m_scrollEnd->setToolTip(rtl ? WidgetTexts().scrollLeft : WidgetTexts().scrollRight);
    m_scrollStart->setGeometry(QStyle::visualRect(direction, rect(), QRect(0, 0, arrowWidth, height)));
    m_scrollEnd->setGeometry(
        QStyle::visualRect(direction, rect(), QRect(available - arrowWidth, 0, arrowWidth, height)));
    m_scrollStart->setVisible(m_offset > 0);
    m_scrollEnd->setVisible(m_offset < m_scrollMax);
    m_scrollStart->raise();
    m_scrollEnd->raise();
    update();
    m_relayouting = false;
}

void TRibbonPage::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    // Collapsed groups get the line a group draws at its end edge.
    QPainter painter(this);
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    painter.setPen(TRibbonColors::of(palette(), false).separator);
    const bool rtl = layoutDirection() == Qt::RightToLeft;
    for (const Slot& slot : m_slots) {
        if (!slot.collapsed || slot.collapsedButton == nullptr || !slot.collapsedButton->isVisible())
            continue;
        const QRect box = slot.collapsedButton->geometry().adjusted(-m.padding, 0, m.padding, 0);
        const int x = rtl ? box.left() : box.right();
        painter.drawLine(x, m.padding, x, m.groupHeight - m.padding);
    }
}

void TRibbonPage::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    relayout();
}

void TRibbonPage::wheelEvent(QWheelEvent* event)
{
    if (m_scrollMax <= 0)
        return QWidget::wheelEvent(event);
    const int delta = event->angleDelta().y() != 0 ? event->angleDelta().y() : event->angleDelta().x();
    scrollBy(delta > 0 ? -fontMetrics().height() * 3 : fontMetrics().height() * 3);
    event->accept();
}

bool TRibbonPage::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::LayoutRequest:
    case QEvent::FontChange:
    case QEvent::LayoutDirectionChange:
        relayout();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

bool TRibbonPage::eventFilter(QObject* watched, QEvent* event)
{
    // A group whose items changed asks for another size: lay the page out again.
    if (event->type() == QEvent::LayoutRequest && qobject_cast<TRibbonGroup*>(watched))
        QMetaObject::invokeMethod(this, &TRibbonPage::relayout, Qt::QueuedConnection);
    return QWidget::eventFilter(watched, event);
}
