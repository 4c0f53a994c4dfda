#include "uRibbon.h"

#include "uBackstageView.h"
#include "uPaintHelpers.h"
#include "uRibbonGroup.h"
#include "uRibbonPage.h"
#include "uRibbonQuickAccessBar.h"
#include "uRibbonTabBar.h"
#include "uWidgetTexts.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLinearGradient>
#include <QPainter>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// The application button: the first tab of the tab row, filled with the accent colour.
class TRibbonApplicationButton : public QToolButton
{
public:
    explicit TRibbonApplicationButton(QWidget* parent) : QToolButton(parent)
    {
        setObjectName(u"btnApplicationMenu"_s);
        setFocusPolicy(Qt::TabFocus);
        setCursor(Qt::PointingHandCursor);
    }
    QSize sizeHint() const override
    {
        const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
        return {fontMetrics().horizontalAdvance(WithoutMnemonic(text())) + m.padding * 8, m.tabHeight};
    }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        Q_UNUSED(event);
        QPainter painter(this);
        const TRibbonColors colors = TRibbonColors::of(palette(), false);
        // On a row in the accent colour the button stands out darker.
        QColor fill = property("onColoredRow").toBool() ? RibbonBlend(colors.accent, QColor(Qt::black), 0.25)
                                                        : colors.accent;
        if (isDown())
            fill = RibbonBlend(fill, QColor(Qt::black), 0.2);
        else if (underMouse())
            fill = RibbonBlend(fill, colors.accentText, 0.15);
        painter.fillRect(rect().adjusted(0, 2, 0, 0), fill);
        painter.setPen(colors.accentText);
        painter.setFont(font());
        painter.drawText(rect().adjusted(0, 2, 0, 0), Qt::AlignCenter, WithoutMnemonic(text()));
        if (hasFocus()) {
            painter.setPen(QPen(colors.accentText, 1, Qt::DotLine));
            painter.drawRect(rect().adjusted(2, 4, -3, -3));
        }
    }
};

// The title row: the quick-access toolbar at its start and the title centred in the rest.
class TRibbonTitleRow : public QWidget
{
public:
    explicit TRibbonTitleRow(QWidget* parent) : QWidget(parent) {}
    QString title;
    QWidget* quickAccess = nullptr;
    bool colored = false;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        Q_UNUSED(event);
        if (title.isEmpty())
            return;
        QPainter painter(this);
        painter.setPen(TRibbonColors::of(palette(), colored).tabRowText);
        painter.setFont(font());
        // Centred in the whole row unless that runs into the toolbar.
        int reserved = 0;
        if (quickAccess != nullptr && quickAccess->isVisible()) {
            const QRect bar = quickAccess->geometry();
            reserved = (layoutDirection() == Qt::RightToLeft ? width() - bar.left() : bar.right() + 1) +
                       fontMetrics().height();
        }
        const int textWidth = fontMetrics().horizontalAdvance(title);
        QRect area = rect();
        if ((width() - textWidth) / 2 < reserved)
            area = QStyle::visualRect(layoutDirection(), rect(), rect().adjusted(reserved, 0, 0, 0));
        painter.drawText(area, Qt::AlignCenter,
                         fontMetrics().elidedText(title, Qt::ElideMiddle, area.width() - 8));
    }
};
} // namespace

TRibbon::TRibbon(QWidget* parent)
    : QWidget(parent), m_titleRow(new TRibbonTitleRow(this)),
      m_quickAccess(new TRibbonQuickAccessBar(m_titleRow)), m_tabRow(new QWidget(this)),
      m_applicationButton(new TRibbonApplicationButton(m_tabRow)), m_tabBar(new TRibbonTabBar(m_tabRow)),
      m_minimizeButton(new QToolButton(m_tabRow)), m_stack(new QStackedWidget(this))
{
    setObjectName(u"Ribbon"_s);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    static_cast<TRibbonTitleRow*>(m_titleRow)->quickAccess = m_quickAccess;
    m_quickAccess->setObjectName(u"BarQuickAccess"_s);

    auto* titleLayout = new QHBoxLayout(m_titleRow);
    titleLayout->setContentsMargins(4, 0, 4, 0);
    titleLayout->addWidget(m_quickAccess);
    titleLayout->addStretch(1);

    auto* tabLayout = new QHBoxLayout(m_tabRow);
    tabLayout->setContentsMargins(0, 0, 4, 0);
    tabLayout->setSpacing(4);
    tabLayout->addWidget(m_applicationButton);
    tabLayout->addWidget(m_tabBar, 1, Qt::AlignBottom);
    tabLayout->addWidget(m_minimizeButton, 0, Qt::AlignVCenter);

    m_minimizeButton->setObjectName(u"btnMinimizeRibbon"_s);
    m_minimizeButton->setAutoRaise(true);
    m_minimizeButton->setFocusPolicy(Qt::TabFocus);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 1);
    layout->setSpacing(0);
    layout->addWidget(m_titleRow);
    layout->addWidget(m_tabRow);
    layout->addWidget(m_stack);

    connect(m_tabBar, &QTabBar::currentChanged, this, [this](int index) {
        auto* page = m_tabBar->tabData(index).value<QWidget*>();
        if (page == nullptr)
            return;
        m_stack->setCurrentWidget(page);
        emit currentTabChanged(page->objectName());
    });
    connect(m_tabBar, &QTabBar::tabBarClicked, this, [this](int index) {
        // The press that a tab bar repeats after a double click is no click of its own.
        if (m_toggledByDoubleClick)
            return;
        if (m_minimized && index >= 0)
            setMinimized(false);
    });
    connect(m_tabBar, &QTabBar::tabBarDoubleClicked, this, [this](int index) {
        if (index < 0)
            return;
        setMinimized(!m_minimized);
        m_toggledByDoubleClick = true;
        QMetaObject::invokeMethod(
            this, [this]() { m_toggledByDoubleClick = false; }, Qt::QueuedConnection);
    });
    connect(m_applicationButton, &QAbstractButton::clicked, this, [this]() {
        emit applicationButtonClicked();
        if (m_backstage)
            m_backstage->showBackstage();
    });
    connect(m_minimizeButton, &QToolButton::clicked, this, [this]() { setMinimized(!m_minimized); });

    setApplicationButtonText(QString());
    setProperty("classicLook", false);
    updatePageHeight();
    updateMinimizeButton();
}

TRibbon::~TRibbon() = default;

// ---- tabs

TRibbonPage* TRibbon::addTab(const QString& name, const QString& caption)
{
    auto* page = new TRibbonPage(name, caption, m_stack);
    m_stack->addWidget(page);
    const int index = m_tabBar->addTab(caption);
    m_tabBar->setTabData(index, QVariant::fromValue<QWidget*>(page));
    connect(page, &TRibbonPage::captionChanged, this, [this, name](const QString& text) {
        const int at = tabIndex(name);
        if (at >= 0)
            m_tabBar->setTabText(at, text);
    });
    if (index == 0)
        m_stack->setCurrentWidget(page);
    return page;
}

int TRibbon::tabIndex(const QString& name) const
{
    for (int i = 0; i < m_tabBar->count(); ++i) {
        const auto* page = m_tabBar->tabData(i).value<QWidget*>();
        if (page != nullptr && page->objectName() == name)
            return i;
    }
    return -1;
}

TRibbonPage* TRibbon::tab(const QString& name) const
{
    const int index = tabIndex(name);
    return index < 0 ? nullptr : qobject_cast<TRibbonPage*>(m_tabBar->tabData(index).value<QWidget*>());
}

QList<TRibbonPage*> TRibbon::tabs() const
{
    QList<TRibbonPage*> pages;
    for (int i = 0; i < m_tabBar->count(); ++i)
        pages << qobject_cast<TRibbonPage*>(m_tabBar->tabData(i).value<QWidget*>());
    return pages;
}

void TRibbon::setTabCaption(const QString& name, const QString& caption)
{
    if (TRibbonPage* page = tab(name))
        page->setCaption(caption);
}

void TRibbon::setTabVisible(const QString& name, bool visible)
{
    const int index = tabIndex(name);
    if (index >= 0)
        m_tabBar->setTabVisible(index, visible);
}

bool TRibbon::isTabVisible(const QString& name) const
{
    const int index = tabIndex(name);
    return index >= 0 && m_tabBar->isTabVisible(index);
}

void TRibbon::setCurrentTab(const QString& name)
{
    const int index = tabIndex(name);
    if (index >= 0)
        m_tabBar->setCurrentIndex(index);
}

QString TRibbon::currentTab() const
{
    return m_stack->currentWidget() ? m_stack->currentWidget()->objectName() : QString();
}

TRibbonPage* TRibbon::currentPage() const
{
    return qobject_cast<TRibbonPage*>(m_stack->currentWidget());
}

// ---- application button and title

QAbstractButton* TRibbon::applicationButton() const
{
    return m_applicationButton;
}

QString TRibbon::applicationButtonText() const
{
    return m_applicationButton->text();
}

void TRibbon::setApplicationButtonText(const QString& text)
{
    m_applicationButton->setText(text.isEmpty() ? WidgetTexts().applicationButton : text);
    m_applicationButton->updateGeometry();
}

void TRibbon::setApplicationButtonVisible(bool visible)
{
    m_applicationButton->setVisible(visible);
}

void TRibbon::setBackstage(TBackstageView* backstage)
{
    m_backstage = backstage;
}

TBackstageView* TRibbon::backstage() const
{
    return m_backstage.data();
}

bool TRibbon::isTitleBarVisible() const
{
    return !m_titleRow->isHidden();
}

void TRibbon::setTitleBarVisible(bool visible)
{
    m_titleRow->setVisible(visible);
    updatePageHeight();
}

void TRibbon::setDocumentName(const QString& name)
{
    m_documentName = name;
    updateTitle();
}

void TRibbon::setApplicationName(const QString& name)
{
    m_applicationName = name;
    updateTitle();
}

QString TRibbon::title() const
{
    if (m_documentName.isEmpty())
        return m_applicationName;
    if (m_applicationName.isEmpty())
        return m_documentName;
    return m_documentName + u" - "_s + m_applicationName;
}

void TRibbon::setUpdatesWindowTitle(bool on)
{
    m_updatesWindowTitle = on;
    updateTitle();
}

void TRibbon::updateTitle()
{
    auto* row = static_cast<TRibbonTitleRow*>(m_titleRow);
    row->title = title();
    row->update();
    if (m_updatesWindowTitle && window() != this &&
        (!m_documentName.isEmpty() || !m_applicationName.isEmpty()))
        window()->setWindowTitle(title());
}

// ---- look

void TRibbon::setRibbonStyle(TRibbonStyle style)
{
    m_style = style;
    setProperty("classicLook", IsClassicRibbonStyle(style));
    m_tabBar->setRibbonStyle(style);
    applyStyleToGroups();
    update();
}

void TRibbon::setColoredTabRow(bool colored)
{
    m_coloredTabRow = colored;
    static_cast<TRibbonTitleRow*>(m_titleRow)->colored = colored;
    m_tabBar->setColoredRow(colored);
    m_applicationButton->setProperty("onColoredRow", colored);
    m_applicationButton->update();
    updateMinimizeButton();
    update();
}

void TRibbon::applyStyleToGroups()
{
    for (TRibbonPage* page : tabs())
        for (TRibbonGroup* group : page->groups())
            group->update();
}

void TRibbon::setMinimized(bool minimized)
{
    if (m_minimized == minimized)
        return;
    m_minimized = minimized;
    m_stack->setVisible(!minimized);
    updatePageHeight();
    updateMinimizeButton();
    emit minimizedChanged(minimized);
}

void TRibbon::updateMinimizeButton()
{
    m_minimizeButton->setArrowType(m_minimized ? Qt::DownArrow : Qt::UpArrow);
    m_minimizeButton->setToolTip(m_minimized ? WidgetTexts().expandRibbon : WidgetTexts().minimizeRibbon);
    QPalette palette = m_minimizeButton->palette();
    const TRibbonColors colors = TRibbonColors::of(this->palette(), m_coloredTabRow);
    palette.setColor(QPalette::ButtonText, colors.tabRowText);
    palette.setColor(QPalette::WindowText, colors.tabRowText);
    m_minimizeButton->setPalette(palette);
}

void TRibbon::updatePageHeight()
{
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    m_titleRow->setFixedHeight(m.titleHeight);
    m_tabRow->setFixedHeight(m.tabHeight);
    m_tabBar->setFixedHeight(m.tabHeight);
    m_stack->setFixedHeight(m.groupHeight + 4);
    const int fixed =
        (isTitleBarVisible() ? m.titleHeight : 0) + m.tabHeight + (m_minimized ? 0 : m.groupHeight + 4) + 1;
    setFixedHeight(fixed);
    updateGeometry();
}

QSize TRibbon::sizeHint() const
{
    int width = 0;
    for (const TRibbonPage* page : tabs())
        width = std::max(width, page->sizeHint().width());
    return {width, height()};
}

QSize TRibbon::minimumSizeHint() const
{
    return {fontMetrics().height() * 10, height()};
}

void TRibbon::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    const TRibbonColors colors = TRibbonColors::of(palette(), m_coloredTabRow);
    const int rowsBottom = m_tabRow->geometry().bottom() + 1;
    painter.fillRect(QRect(0, 0, width(), rowsBottom), colors.tabRow);
    if (!m_minimized) {
        const QRect page(0, rowsBottom, width(), height() - rowsBottom);
        if (IsClassicRibbonStyle(m_style)) {
            QLinearGradient shade(page.topLeft(), page.bottomLeft());
            shade.setColorAt(0, RibbonBlend(colors.page, palette().color(QPalette::Base), 0.5));
            shade.setColorAt(1, RibbonBlend(colors.page, colors.text, 0.04));
            painter.fillRect(page, shade);
        } else {
            painter.fillRect(page, colors.page);
        }
    }
    painter.setPen(colors.pageEdge);
    painter.drawLine(0, height() - 1, width(), height() - 1);
}

void TRibbon::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::FontChange:
        updatePageHeight();
        break;
    case QEvent::PaletteChange:
        updateMinimizeButton();
        break;
    case QEvent::ParentChange:
        updateTitle();
        break;
    default:
        break;
    }
}
