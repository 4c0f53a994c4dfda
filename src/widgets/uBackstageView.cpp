#include "uBackstageView.h"

#include "uBackstagePage.h"
#include "uPaintHelpers.h"
#include "uRibbonStyle.h"
#include "uWidgetTexts.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStackedWidget>
#include <QToolButton>

using namespace Qt::StringLiterals;

// An entry of the side bar: the back button, a page, or a command bound to an action. Paints on
// the accent colour.
class TBackstageEntry : public QToolButton
{
public:
    enum class Kind
    {
        Back,
        Page,
        Command,
    };
    TBackstageEntry(Kind kind, QWidget* parent) : QToolButton(parent), m_kind(kind)
    {
        setAutoRaise(true);
        setFocusPolicy(Qt::StrongFocus);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        setCheckable(kind == Kind::Page);
    }
    Kind kind() const { return m_kind; }

    QSize sizeHint() const override
    {
        const QFontMetrics metrics(font());
        const int line = metrics.height();
        if (m_kind == Kind::Back)
            return {line * 3, line * 3};
        return {metrics.horizontalAdvance(WithoutMnemonic(text())) + line * 3, line * 2 + line / 2};
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        Q_UNUSED(event);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const TRibbonColors colors = TRibbonColors::of(palette(), true);
        const bool enabled = isEnabled();
        const bool hover = enabled && underMouse();
        if (isChecked())
            painter.fillRect(rect(), RibbonBlend(colors.accent, QColor(Qt::black), 0.22));
        else if (hover || isDown())
            painter.fillRect(rect(), RibbonBlend(colors.accent, colors.accentText, isDown() ? 0.25 : 0.14));
        QColor ink = colors.accentText;
        if (!enabled)
            ink = RibbonBlend(colors.accent, colors.accentText, 0.45);
        const int line = fontMetrics().height();
        if (m_kind == Kind::Back) {
            // A circle with an arrow pointing to the start side.
            const QRectF circle(width() / 2.0 - line * 0.75, height() / 2.0 - line * 0.75, line * 1.5,
                                line * 1.5);
            painter.setPen(QPen(ink, 1.6));
            painter.drawEllipse(circle);
            const qreal direction = layoutDirection() == Qt::RightToLeft ? -1 : 1;
            const QPointF centre = circle.center();
            const qreal arm = line * 0.38;
            QPainterPath arrow;
            arrow.moveTo(centre.x() + direction * arm, centre.y());
            arrow.lineTo(centre.x() - direction * arm, centre.y());
            arrow.moveTo(centre.x() - direction * arm * 0.1, centre.y() - arm * 0.85);
            arrow.lineTo(centre.x() - direction * arm, centre.y());
            arrow.lineTo(centre.x() - direction * arm * 0.1, centre.y() + arm * 0.85);
            painter.drawPath(arrow);
        } else {
            painter.setPen(ink);
            painter.setFont(font());
            const QRect area = rect().adjusted(line, 0, -line / 2, 0);
            painter.drawText(area, int(VisualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter)),
                             fontMetrics().elidedText(WithoutMnemonic(text()), Qt::ElideRight, area.width()));
        }
        if (hasFocus()) {
            painter.setPen(QPen(colors.accentText, 1, Qt::DotLine));
            painter.drawRect(rect().adjusted(2, 2, -3, -3));
        }
    }

private:
    Kind m_kind;
};

TBackstageView::TBackstageView(QWidget* window)
    : QWidget(window), m_sideBar(new QWidget(this)), m_sideLayout(new QVBoxLayout(m_sideBar)),
      m_back(new TBackstageEntry(TBackstageEntry::Kind::Back, m_sideBar)),
      m_buttonsStart(new QWidget(m_sideBar)), m_pages(new QStackedWidget(this))
{
    setObjectName(u"RibbonBackstageView"_s);
    setAutoFillBackground(true);
    hide();
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_sideBar);
    layout->addWidget(m_pages, 1);
    m_sideLayout->setContentsMargins(0, 0, 0, fontMetrics().height());
    m_sideLayout->setSpacing(0);
    m_sideLayout->addWidget(m_back, 0, Qt::AlignLeft);
    m_sideLayout->addSpacing(fontMetrics().height() / 2);
    m_buttonsStart->setFixedHeight(fontMetrics().height());
    m_sideLayout->addWidget(m_buttonsStart);
    m_sideLayout->addStretch(1);
    m_back->setObjectName(u"btnBackstageBack"_s);
    m_back->setToolTip(WidgetTexts().backstageBack);
    connect(m_back, &QToolButton::clicked, this, &TBackstageView::hideBackstage);
    if (window != nullptr)
        window->installEventFilter(this);
    relayoutEntries();
}

TBackstageView::~TBackstageView() = default;

TBackstagePage* TBackstageView::addPage(const QString& name, const QString& title)
{
    auto* page = new TBackstagePage(name, title, m_pages);
    m_pages->addWidget(page);
    m_pageList << page;
    auto* entry = new TBackstageEntry(TBackstageEntry::Kind::Page, m_sideBar);
    entry->setObjectName(name + u"Entry");
    entry->setText(title);
    m_pageEntries << entry;
    // Pages stand before the gap that leads to the buttons.
    m_sideLayout->insertWidget(m_sideLayout->indexOf(m_buttonsStart), entry);
    connect(entry, &QToolButton::clicked, this, [this, name]() { setActivePage(name); });
    connect(page, &TBackstagePage::titleChanged, entry, &QToolButton::setText);
    if (m_pageList.size() == 1)
        setActivePage(name);
    relayoutEntries();
    return page;
}

TBackstagePage* TBackstageView::page(const QString& name) const
{
    for (TBackstagePage* page : m_pageList)
        if (page->objectName() == name)
            return page;
    return nullptr;
}

QStringList TBackstageView::pageNames() const
{
    QStringList names;
    for (TBackstagePage* page : m_pageList)
        names << page->objectName();
    return names;
}

TBackstageEntry* TBackstageView::entryOf(const QString& page) const
{
    for (int i = 0; i < m_pageList.size(); ++i)
        if (m_pageList[i]->objectName() == page)
            return m_pageEntries[i];
    return nullptr;
}

void TBackstageView::setPageTitle(const QString& name, const QString& title)
{
    if (TBackstagePage* found = page(name))
        found->setTitle(title);
    relayoutEntries();
}

void TBackstageView::setPageEnabled(const QString& name, bool enabled)
{
    TBackstagePage* found = page(name);
    if (found == nullptr)
        return;
    found->setEnabled(enabled);
    entryOf(name)->setEnabled(enabled);
}

bool TBackstageView::isPageEnabled(const QString& name) const
{
    const TBackstagePage* found = page(name);
    return found != nullptr && found->isEnabled();
}

void TBackstageView::setActivePage(const QString& name)
{
    TBackstagePage* found = page(name);
    if (found == nullptr)
        return;
    const bool changed = m_pages->currentWidget() != found;
    m_pages->setCurrentWidget(found);
    for (int i = 0; i < m_pageList.size(); ++i)
        m_pageEntries[i]->setChecked(m_pageList[i] == found);
    if (changed)
        emit activePageChanged(name);
}

QString TBackstageView::activePage() const
{
    return m_pages->currentWidget() ? m_pages->currentWidget()->objectName() : QString();
}

QAbstractButton* TBackstageView::addButton(QAction* action, bool hideFirst)
{
    auto* entry = new TBackstageEntry(TBackstageEntry::Kind::Command, m_sideBar);
    m_buttons << entry;
    m_sideLayout->insertWidget(m_sideLayout->count() - 1, entry);
    if (action != nullptr) {
        // The entry shows the action's state, but runs it itself so it can close the menu first.
        const auto sync = [entry, action]() {
            entry->setText(action->text());
            entry->setEnabled(action->isEnabled());
            entry->setVisible(action->isVisible());
            entry->setToolTip(action->toolTip());
        };
        sync();
        connect(action, &QAction::changed, entry, sync);
        if (!action->objectName().isEmpty())
            entry->setObjectName(u"btnBackstage"_s + action->objectName().mid(3));
        QPointer<QAction> guard(action);
        connect(entry, &QToolButton::clicked, this, [this, guard, hideFirst]() {
            if (!guard || !guard->isEnabled())
                return;
            if (hideFirst)
                hideBackstage();
            guard->trigger();
        });
    }
    relayoutEntries();
    return entry;
}

QAbstractButton* TBackstageView::button(const QString& objectName) const
{
    for (TBackstageEntry* entry : m_buttons)
        if (entry->objectName() == objectName)
            return entry;
    return nullptr;
}

QAbstractButton* TBackstageView::pageEntry(const QString& name) const
{
    return entryOf(name);
}

QAbstractButton* TBackstageView::backButton() const
{
    return m_back;
}

void TBackstageView::setBackToolTip(const QString& text)
{
    m_back->setToolTip(text);
}

QSize TBackstageView::sideBarSize() const
{
    return m_sideBar->size();
}

void TBackstageView::relayoutEntries()
{
    int width = fontMetrics().height() * 9;
    for (const TBackstageEntry* entry : m_pageEntries)
        width = std::max(width, entry->sizeHint().width());
    for (const TBackstageEntry* entry : m_buttons)
        width = std::max(width, entry->sizeHint().width());
    m_sideBar->setFixedWidth(width);
    m_back->setFixedSize(m_back->sizeHint());
}

void TBackstageView::showBackstage()
{
    emit aboutToShow();
    QWidget* window = parentWidget();
    if (window != nullptr)
        setGeometry(window->rect());
    m_previousFocus = QApplication::focusWidget();
    show();
    raise();
    // The focus starts in the active page when it takes it, else on the page's entry.
    QWidget* current = m_pages->currentWidget();
    QWidget* target = nullptr;
    if (current != nullptr && current->isEnabled()) {
        for (QWidget* child : current->findChildren<QWidget*>())
            if (child->isVisibleTo(current) && child->isEnabled() && (child->focusPolicy() & Qt::TabFocus)) {
                target = child;
                break;
            }
    }
    if (target == nullptr || !target->isEnabled())
        target = entryOf(activePage());
    for (TBackstageEntry* entry : m_pageEntries)
        if (target == nullptr || !target->isEnabled())
            target = entry;
    if (target == nullptr || !target->isEnabled())
        target = m_back;
    target->setFocus(Qt::OtherFocusReason);
    emit shown();
}

void TBackstageView::hideBackstage()
{
    if (!isVisible())
        return;
    hide();
    if (m_previousFocus && m_previousFocus->isVisible())
        m_previousFocus->setFocus(Qt::OtherFocusReason);
    emit hidden();
}

void TBackstageView::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    const TRibbonColors colors = TRibbonColors::of(palette(), false);
    painter.fillRect(rect(), colors.page);
    painter.fillRect(m_sideBar->geometry(), colors.accent);
    // A hairline between the buttons and the pages.
    if (!m_buttons.isEmpty()) {
        const QRect gap = m_buttonsStart->geometry().translated(m_sideBar->pos());
        painter.setPen(RibbonBlend(colors.accent, colors.accentText, 0.35));
        const int y = gap.center().y();
        painter.drawLine(gap.left() + fontMetrics().height(), y, gap.right() - fontMetrics().height(), y);
    }
}

bool TBackstageView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize && isVisible())
        setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
}

void TBackstageView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        hideBackstage();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

void TBackstageView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        relayoutEntries();
}
