#pragma once

#include <QPointer>
#include <QWidget>

class QAbstractButton;
class QAction;
class QStackedWidget;
class QVBoxLayout;
class TBackstagePage;
class TBackstageEntry;

// The application menu ("backstage"): it covers the whole window it is made for, with a side bar
// in the accent colour on the start side (a back button, the pages, then the buttons) and the
// active page beside it.
//
//   auto* backstage = new TBackstageView(window);
//   TBackstagePage* add = backstage->addPage(u"tsAdd"_s, u"Add"_s);
//   add->contentLayout()->addWidget(searchBox);
//   backstage->addButton(actOptions);
//   connect(backstage, &TBackstageView::aboutToShow, ...);   // set page states, the active page
//   ribbon->setBackstage(backstage);
//
// Pages may be disabled: their entry cannot be chosen, and their content shows disabled when the
// page is active. Buttons follow their actions (text, enabled, visible) and trigger them, by
// default after closing the menu. Escape, the back button or hideBackstage() close it; the focus
// goes back to where it was.
class TBackstageView : public QWidget
{
    Q_OBJECT
public:
    explicit TBackstageView(QWidget* window);
    ~TBackstageView() override;

    TBackstagePage* addPage(const QString& name, const QString& title);
    TBackstagePage* page(const QString& name) const;
    QStringList pageNames() const;
    void setPageTitle(const QString& name, const QString& title);
    void setPageEnabled(const QString& name, bool enabled);
    bool isPageEnabled(const QString& name) const;
    // Any page, also a disabled one.
    void setActivePage(const QString& name);
    QString activePage() const;

    // A button below the pages, bound to action. With hideFirst the menu closes before the action
    // runs (commands that open a dialog or quit).
    QAbstractButton* addButton(QAction* action, bool hideFirst = true);
    QAbstractButton* button(const QString& objectName) const;
    // The entry of a page in the side bar.
    QAbstractButton* pageEntry(const QString& name) const;
    QAbstractButton* backButton() const;
    void setBackToolTip(const QString& text);

    void showBackstage();
    void hideBackstage();
    bool isBackstageVisible() const { return isVisible(); }

    QSize sideBarSize() const;

signals:
    // Emitted before the menu shows: the moment to set enabled pages and the active page.
    void aboutToShow();
    void shown();
    void hidden();
    void activePageChanged(const QString& name);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void relayoutEntries();
    TBackstageEntry* entryOf(const QString& page) const;

    QWidget* m_sideBar;
    QVBoxLayout* m_sideLayout;
    TBackstageEntry* m_back;
    QWidget* m_buttonsStart;
    QStackedWidget* m_pages;
    QList<TBackstagePage*> m_pageList;
    QList<TBackstageEntry*> m_pageEntries;
    QList<TBackstageEntry*> m_buttons;
    QPointer<QWidget> m_previousFocus;
};
