#pragma once

#include "uRibbonStyle.h"

#include <QPointer>
#include <QWidget>

class QAbstractButton;
class QStackedWidget;
class QToolButton;
class TBackstageView;
class TRibbonPage;
class TRibbonQuickAccessBar;
class TRibbonTabBar;

// A ribbon: a title row with the quick-access toolbar and the window's title, a tab row that
// starts with the application button, and the page of the current tab with its groups.
//
//   auto* ribbon = new TRibbon(window);                 // e.g. QMainWindow::setMenuWidget
//   TRibbonPage* general = ribbon->addTab(u"rtGeneral"_s, u"General"_s);
//   TRibbonGroup* actions = general->addGroup(u"BarActions"_s, u"Actions"_s);
//   actions->addDropDownButton(actAdd, pmAdd, TRibbonItemSize::Large, true);
//   actions->addButton(actRemoveSelected);
//   ribbon->quickAccessBar()->addAction(actOptions);
//   ribbon->setBackstage(backstage);                    // the application button opens it
//
// Items follow their actions, so the program's enablement rule is the only thing that switches
// them. All texts are the program's (captions, the application button's text). Sizes follow the
// font; narrow windows collapse groups and then scroll (TRibbonPage). Double-clicking a tab
// collapses the ribbon to its tab row; clicking a tab opens it again.
class TRibbon : public QWidget
{
    Q_OBJECT
public:
    explicit TRibbon(QWidget* parent = nullptr);
    ~TRibbon() override;

    TRibbonPage* addTab(const QString& name, const QString& caption);
    TRibbonPage* tab(const QString& name) const;
    QList<TRibbonPage*> tabs() const;
    void setTabCaption(const QString& name, const QString& caption);
    void setTabVisible(const QString& name, bool visible);
    bool isTabVisible(const QString& name) const;
    void setCurrentTab(const QString& name);
    QString currentTab() const;
    TRibbonPage* currentPage() const;
    TRibbonTabBar* tabBar() const { return m_tabBar; }

    TRibbonQuickAccessBar* quickAccessBar() const { return m_quickAccess; }

    QAbstractButton* applicationButton() const;
    QString applicationButtonText() const;
    // Empty puts the toolkit's text back (WidgetTexts().applicationButton).
    void setApplicationButtonText(const QString& text);
    void setApplicationButtonVisible(bool visible);
    // The application menu the application button opens (not owned).
    void setBackstage(TBackstageView* backstage);
    TBackstageView* backstage() const;

    bool isTitleBarVisible() const;
    void setTitleBarVisible(bool visible);
    QString documentName() const { return m_documentName; }
    void setDocumentName(const QString& name);
    QString applicationName() const { return m_applicationName; }
    void setApplicationName(const QString& name);
    // "document - application", or whichever of the two is set.
    QString title() const;
    // Whether the window's title follows title() (on by default).
    void setUpdatesWindowTitle(bool on);

    TRibbonStyle ribbonStyle() const { return m_style; }
    void setRibbonStyle(TRibbonStyle style);
    bool coloredTabRow() const { return m_coloredTabRow; }
    // The title and tab rows in the accent colour (the "colorful" schemes).
    void setColoredTabRow(bool colored);

    bool isMinimized() const { return m_minimized; }
    void setMinimized(bool minimized);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void currentTabChanged(const QString& name);
    void applicationButtonClicked();
    void minimizedChanged(bool minimized);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    int tabIndex(const QString& name) const;
    void updateTitle();
    void updatePageHeight();
    void applyStyleToGroups();
    void updateMinimizeButton();

    QWidget* m_titleRow;
    TRibbonQuickAccessBar* m_quickAccess;
    QWidget* m_tabRow;
    QAbstractButton* m_applicationButton;
    TRibbonTabBar* m_tabBar;
    QToolButton* m_minimizeButton;
    QStackedWidget* m_stack;
    QPointer<TBackstageView> m_backstage;
    QString m_documentName;
    QString m_applicationName;
    bool m_updatesWindowTitle = true;
    TRibbonStyle m_style = TRibbonStyle::Office2016;
    bool m_coloredTabRow = false;
    bool m_minimized = false;
    bool m_toggledByDoubleClick = false;
};
