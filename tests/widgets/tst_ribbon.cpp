// The ribbon: items follow their actions (a disabled action's item does nothing), radio groups,
// split buttons, the group layout, collapsing and scrolling of narrow pages, tabs.

#include "uRibbon.h"
#include "uRibbonButton.h"
#include "uRibbonComboItem.h"
#include "uRibbonGroup.h"
#include "uRibbonGroupLayout.h"
#include "uRibbonPage.h"
#include "uRibbonQuickAccessBar.h"
#include "uRibbonTabBar.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QComboBox>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace Qt::StringLiterals;

namespace {
// A window with a ribbon of one tab and one group.
struct TRibbonFixture
{
    QWidget window;
    TRibbon* ribbon = new TRibbon(&window);
    TRibbonPage* page = ribbon->addTab(u"rtGeneral"_s, u"General"_s);
    TRibbonGroup* group = page->addGroup(u"BarActions"_s, u"Actions"_s);

    TRibbonFixture()
    {
        ribbon->setUpdatesWindowTitle(false);
        window.resize(900, 300);
        ribbon->setGeometry(0, 0, 900, ribbon->height());
        window.show();
    }
    QAction* action(const QString& text, bool checkable = false)
    {
        auto* made = new QAction(text, &window);
        made->setCheckable(checkable);
        return made;
    }
};

void settle(QWidget* widget)
{
    QApplication::processEvents();
    if (widget->layout())
        widget->layout()->activate();
    QApplication::processEvents();
}

int countClosingPopups()
{
    int closed = 0;
    while (QWidget* popup = QApplication::activePopupWidget()) {
        popup->close();
        ++closed;
    }
    return closed;
}
} // namespace

class TestRibbon : public QObject
{
    Q_OBJECT

private slots:
    void disabledActionItemDoesNothing_data();
    void disabledActionItemDoesNothing();
    void radioGroupChecksOne_data();
    void radioGroupChecksOne();
    void itemFollowsAction_data();
    void itemFollowsAction();
    void splitButtonParts_data();
    void splitButtonParts();
    void comboItemTriggersAction();
    void groupLayoutColumns_data();
    void groupLayoutColumns();
    void pageCollapsesFromTheEnd_data();
    void pageCollapsesFromTheEnd();
    void collapsedGroupOpensInPopup();
    void idleNarrowPageStaysStill();
    void tabsAndMinimizing();
    void titleFollowsDocument();
};

void TestRibbon::disabledActionItemDoesNothing_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("large button") << u"large"_s;
    QTest::newRow("medium button") << u"medium"_s;
    QTest::newRow("small button") << u"small"_s;
    QTest::newRow("check item") << u"check"_s;
    QTest::newRow("radio item") << u"radio"_s;
    QTest::newRow("split button, action part") << u"split"_s;
    QTest::newRow("quick-access button") << u"quick"_s;
    QTest::newRow("caption button") << u"caption"_s;
}

void TestRibbon::disabledActionItemDoesNothing()
{
    QFETCH(QString, kind);
    TRibbonFixture f;
    QAction* action = f.action(u"Remove selected"_s, kind == u"check"_s || kind == u"radio"_s);
    QMenu menu;
    menu.addAction(u"Other"_s);
    QWidget* target = nullptr;
    if (kind == u"large"_s)
        target = f.group->addButton(action, TRibbonItemSize::Large);
    else if (kind == u"medium"_s)
        target = f.group->addButton(action, TRibbonItemSize::Medium);
    else if (kind == u"small"_s)
        target = f.group->addButton(action, TRibbonItemSize::Small);
    else if (kind == u"check"_s)
        target = f.group->addCheckItem(action);
    else if (kind == u"radio"_s) {
        auto* actions = new QActionGroup(&f.window);
        actions->addAction(action);
        target = f.group->addRadioGroup(actions, TRibbonItemSize::Large, true).first();
    } else if (kind == u"split"_s)
        target = f.group->addDropDownButton(action, &menu, TRibbonItemSize::Large, true);
    else if (kind == u"quick"_s)
        target = f.ribbon->quickAccessBar()->addAction(action);
    else {
        f.group->addButton(f.action(u"Filler"_s));
        f.group->setCaptionAction(action);
        target = f.group->captionButton();
    }
    settle(&f.window);
    QVERIFY(target->isVisible());
    QSignalSpy triggered(action, &QAction::triggered);
    // The action part of a large split button is its upper half.
    const QPoint at = kind == u"split"_s ? QPoint(target->width() / 2, 8) : target->rect().center();

    action->setEnabled(false);
    QVERIFY(!target->isEnabled());
    QTest::mouseClick(target, Qt::LeftButton, {}, at);
    QCOMPARE(triggered.count(), 0);
    QCOMPARE(action->isChecked(), false);
    QCOMPARE(countClosingPopups(), 0);

    action->setEnabled(true);
    QVERIFY(target->isEnabled());
    QTest::mouseClick(target, Qt::LeftButton, {}, at);
    QCOMPARE(triggered.count(), 1);
    QCOMPARE(action->isChecked(), action->isCheckable());
}

void TestRibbon::radioGroupChecksOne_data()
{
    QTest::addColumn<bool>("indicators");
    QTest::newRow("toggle buttons") << false;
    QTest::newRow("radio indicators") << true;
}

void TestRibbon::radioGroupChecksOne()
{
    QFETCH(bool, indicators);
    TRibbonFixture f;
    auto* views = new QActionGroup(&f.window);
    for (const QString& text : {u"Cards view"_s, u"Thumbs view"_s, u"Table view"_s})
        views->addAction(f.action(text));
    views->actions().first()->setCheckable(true);
    views->actions().first()->setChecked(true);
    const QList<TRibbonButton*> buttons = f.group->addRadioGroup(views, TRibbonItemSize::Large, indicators);
    QCOMPARE(buttons.size(), 3);
    settle(&f.window);
    for (TRibbonButton* button : buttons)
        QCOMPARE(button->kind(), indicators ? TRibbonButton::Kind::Radio : TRibbonButton::Kind::Button);
    // The buttons' states, each "b" or "-", then the actions' likewise.
    const auto checked = [&]() {
        QString states;
        for (TRibbonButton* button : buttons)
            states += button->isChecked() ? u'b' : u'-';
        states += u' ';
        for (QAction* action : views->actions())
            states += action->isChecked() ? u'b' : u'-';
        return states;
    };
    QCOMPARE(checked(), u"b-- b--"_s);
    QTest::mouseClick(buttons[1], Qt::LeftButton);
    QCOMPARE(checked(), u"-b- -b-"_s);
    // Clicking the checked one keeps it checked: one of the group is always on.
    QTest::mouseClick(buttons[1], Qt::LeftButton);
    QCOMPARE(checked(), u"-b- -b-"_s);
    // The program checks another through its action.
    views->actions()[2]->setChecked(true);
    QCOMPARE(checked(), u"--b --b"_s);
}

void TestRibbon::itemFollowsAction_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("large") << int(TRibbonItemSize::Large);
    QTest::newRow("medium") << int(TRibbonItemSize::Medium);
}

void TestRibbon::itemFollowsAction()
{
    QFETCH(int, size);
    TRibbonFixture f;
    QAction* action = f.action(u"Sort"_s, true);
    TRibbonButton* button = f.group->addButton(action, TRibbonItemSize(size));
    f.group->addButton(f.action(u"Other"_s), TRibbonItemSize(size));
    settle(&f.window);
    const int narrow = button->sizeHint().width();
    const int groupWidth = f.group->itemLayout()->sizeHint().width();

    action->setText(u"Sort the whole collection now"_s);
    QCOMPARE(button->text(), u"Sort the whole collection now"_s);
    QVERIFY2(button->sizeHint().width() > narrow, "the kept size hint was not renewed");
    const int wide = f.group->itemLayout()->sizeHint().width();
    QVERIFY(wide > groupWidth);

    action->setChecked(true);
    QVERIFY(button->isChecked());
    action->setVisible(false);
    settle(&f.window);
    QVERIFY(button->isHidden());
    QVERIFY(f.group->itemLayout()->sizeHint().width() < wide);
    action->setVisible(true);
    settle(&f.window);
    QVERIFY(button->isVisible());
}

void TestRibbon::splitButtonParts_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("large") << int(TRibbonItemSize::Large);
    QTest::newRow("medium") << int(TRibbonItemSize::Medium);
    QTest::newRow("small") << int(TRibbonItemSize::Small);
}

void TestRibbon::splitButtonParts()
{
    QFETCH(int, size);
    TRibbonFixture f;
    QAction* action = f.action(u"Add"_s);
    QMenu menu;
    QAction* manually = menu.addAction(u"Add manually"_s);
    TRibbonButton* button = f.group->addDropDownButton(action, &menu, TRibbonItemSize(size), true);
    settle(&f.window);
    QVERIFY(button->isSplit());
    QSignalSpy triggered(action, &QAction::triggered);
    const bool large = TRibbonItemSize(size) == TRibbonItemSize::Large;
    const QPoint actionPart = large ? QPoint(button->width() / 2, 6) : QPoint(4, button->height() / 2);
    const QPoint menuPart = large ? QPoint(button->width() / 2, button->height() - 6)
                                  : QPoint(button->width() - 3, button->height() / 2);

    QTest::mouseClick(button, Qt::LeftButton, {}, actionPart);
    QCOMPARE(triggered.count(), 1);
    QCOMPARE(countClosingPopups(), 0);

    // The arrow part opens the menu and runs nothing.
    QWidget* shown = nullptr;
    QTimer::singleShot(0, [&shown]() {
        shown = QApplication::activePopupWidget();
        countClosingPopups();
    });
    QTest::mousePress(button, Qt::LeftButton, {}, menuPart);
    QCOMPARE(shown, &menu);
    QCOMPARE(triggered.count(), 1);
    QVERIFY(manually->isEnabled());

    // Without split the whole button opens the menu.
    TRibbonButton* plain =
        f.group->addDropDownButton(f.action(u"Filter"_s), &menu, TRibbonItemSize(size), false);
    settle(&f.window);
    shown = nullptr;
    QTimer::singleShot(0, [&shown]() {
        shown = QApplication::activePopupWidget();
        countClosingPopups();
    });
    QTest::mousePress(plain, Qt::LeftButton, {}, plain->rect().center());
    QCOMPARE(shown, &menu);
}

void TestRibbon::comboItemTriggersAction()
{
    TRibbonFixture f;
    QAction* action = f.action(u"Thumb size"_s);
    TRibbonComboItem* item = f.group->addComboItem(action, {u"Small"_s, u"Medium"_s, u"Large"_s});
    item->setCurrentIndex(1);
    settle(&f.window);
    QSignalSpy triggered(action, &QAction::triggered);
    QSignalSpy activated(item, &TRibbonComboItem::activated);
    QCOMPARE(item->currentIndex(), 1);
    QCOMPARE(triggered.count(), 0);

    emit item->comboBox()->activated(2);
    QCOMPARE(triggered.count(), 1);
    QCOMPARE(action->data().toInt(), 2);
    QCOMPARE(activated.count(), 1);

    action->setEnabled(false);
    QVERIFY(!item->isEnabled());
    QVERIFY(!item->comboBox()->isEnabled());
    action->setText(u"Size of pictures"_s);
    QVERIFY(item->findChild<QWidget*>() != nullptr);
    action->setVisible(false);
    QVERIFY(item->isHidden());
}

void TestRibbon::groupLayoutColumns_data()
{
    // L a large item, M a medium one, | a separator, / a column break.
    QTest::addColumn<QString>("items");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("lines");
    QTest::addColumn<bool>("rightToLeft");
    QTest::newRow("larges") << u"LLL"_s << 3 << 0 << false;
    QTest::newRow("three mediums stack") << u"MMM"_s << 1 << 0 << false;
    QTest::newRow("fourth medium starts a column") << u"MMMM"_s << 2 << 0 << false;
    QTest::newRow("large between") << u"MLM"_s << 3 << 0 << false;
    QTest::newRow("break") << u"MM/MM"_s << 2 << 0 << false;
    QTest::newRow("separator") << u"L|MM"_s << 2 << 1 << false;
    QTest::newRow("separators at the ends and twice are dropped") << u"|L||L|"_s << 2 << 1 << false;
    QTest::newRow("right-to-left") << u"LMMMM"_s << 3 << 0 << true;
}

void TestRibbon::groupLayoutColumns()
{
    QFETCH(QString, items);
    QFETCH(int, columns);
    QFETCH(int, lines);
    QFETCH(bool, rightToLeft);
    TRibbonFixture f;
    f.window.setLayoutDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    QList<TRibbonButton*> added;
    for (const QChar code : items) {
        if (code == u'|')
            f.group->addSeparator();
        else if (code == u'/')
            f.group->addColumnBreak();
        else
            added << f.group->addButton(f.action(u"Item %1"_s.arg(added.size())),
                                        code == u'L' ? TRibbonItemSize::Large : TRibbonItemSize::Medium);
    }
    settle(&f.window);
    QSet<int> lefts;
    const int body = f.group->itemLayout()->contentsRect().height();
    int previousX = rightToLeft ? INT_MAX : INT_MIN;
    int index = 0;
    for (const QChar code : items) {
        if (code == u'|' || code == u'/')
            continue;
        const QRect box = added[index++]->geometry();
        lefts.insert(box.left());
        if (code == u'L')
            QCOMPARE(box.height(), body);
        else
            QVERIFY(box.height() <= body / 3);
        // Items go from the start edge to the end edge (never back).
        QVERIFY(rightToLeft ? box.left() <= previousX : box.left() >= previousX);
        previousX = box.left();
        QVERIFY(f.group->rect().contains(box));
    }
    QCOMPARE(int(lefts.size()), columns);
    QCOMPARE(int(f.group->itemLayout()->separatorLines().size()), lines);
}

void TestRibbon::pageCollapsesFromTheEnd_data()
{
    QTest::addColumn<int>("slack"); // the page's width minus what all groups want
    QTest::addColumn<QList<bool>>("collapsed");
    QTest::addColumn<bool>("scrolls");
    QTest::newRow("room to spare") << 40 << QList<bool>{false, false, false} << false;
    QTest::newRow("just enough") << 0 << QList<bool>{false, false, false} << false;
    QTest::newRow("a little short") << -5 << QList<bool>{false, false, true} << false;
    QTest::newRow("all collapse") << -100000 << QList<bool>{true, true, true} << true;
}

void TestRibbon::pageCollapsesFromTheEnd()
{
    QFETCH(int, slack);
    QFETCH(QList<bool>, collapsed);
    QFETCH(bool, scrolls);
    TRibbonFixture f;
    QList<TRibbonGroup*> groups{f.group, f.page->addGroup(u"BarView"_s, u"View"_s),
                                f.page->addGroup(u"BarSorting"_s, u"Sorting"_s)};
    for (TRibbonGroup* group : groups)
        for (int i = 0; i < 4; ++i)
            group->addButton(f.action(u"Command number %1"_s.arg(i)));
    settle(&f.window);
    int wanted = 0;
    for (TRibbonGroup* group : groups)
        wanted += group->sizeHint().width();
    f.page->resize(std::max(40, wanted + slack), f.page->height());
    settle(&f.window);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(f.page->isCollapsed(groups[i]), collapsed[i]);
        QCOMPARE(groups[i]->isVisible(), !collapsed[i]);
        if (collapsed[i])
            QVERIFY(f.page->collapsedButton(groups[i])->isVisible());
    }
    QCOMPARE(f.page->isScrollable(), scrolls);
    if (scrolls) {
        f.page->scrollBy(30);
        QCOMPARE(f.page->scrollOffset(), 30);
        f.page->scrollBy(-1000);
        QCOMPARE(f.page->scrollOffset(), 0);
    }
    // Widening again brings every group back.
    f.page->resize(wanted + 100, f.page->height());
    settle(&f.window);
    for (TRibbonGroup* group : groups)
        QVERIFY(!f.page->isCollapsed(group) && group->isVisible());
}

void TestRibbon::collapsedGroupOpensInPopup()
{
    TRibbonFixture f;
    QAction* action = f.action(u"Ascending"_s);
    f.group->addButton(action, TRibbonItemSize::Medium);
    f.page->resize(20, f.page->height());
    settle(&f.window);
    QVERIFY(f.page->isCollapsed(f.group));
    TRibbonButton* stand = f.page->collapsedButton(f.group);
    QCOMPARE(stand->text(), u"Actions"_s);
    QVERIFY(stand->hasDropDown());

    QTest::mouseClick(stand, Qt::LeftButton);
    QWidget* popup = QApplication::activePopupWidget();
    QVERIFY(popup);
    QVERIFY(f.group->isVisible());
    QCOMPARE(f.group->window(), popup);
    // The group works from its popup.
    QSignalSpy triggered(action, &QAction::triggered);
    QTest::mouseClick(f.group->items().first(), Qt::LeftButton);
    QCOMPARE(triggered.count(), 1);
    popup->close();
    QApplication::processEvents();
    QCOMPARE(f.group->parentWidget(), f.page);
    QVERIFY(!f.group->isVisible());
    // Hidden groups take no room and no button.
    f.page->setGroupVisible(u"BarActions"_s, false);
    settle(&f.window);
    QVERIFY(!stand->isVisible());
    QVERIFY(!f.page->isGroupVisible(u"BarActions"_s));
}

// A page with collapsed groups that nobody touches must not lay itself out again and again.
void TestRibbon::idleNarrowPageStaysStill()
{
    TRibbonFixture f;
    QIcon icon(QPixmap(16, 16));
    for (const QString& name : {u"BarView"_s, u"BarSorting"_s})
        f.page->addGroup(name, name)->addButton(f.action(name))->setIcon(icon);
    f.group->addButton(f.action(u"Add"_s))->setIcon(icon);
    f.page->resize(60, f.page->height());
    settle(&f.window);
    QTest::qWait(20);
    struct TCounter : QObject
    {
        int requests = 0;
        bool eventFilter(QObject*, QEvent* event) override
        {
            if (event->type() == QEvent::LayoutRequest)
                ++requests;
            return false;
        }
    } counter;
    f.page->installEventFilter(&counter);
    for (TRibbonGroup* group : f.page->groups())
        group->installEventFilter(&counter);
    QTest::qWait(100);
    QVERIFY(f.page->isCollapsed(f.group));
    QCOMPARE(counter.requests, 0);
}

void TestRibbon::tabsAndMinimizing()
{
    TRibbonFixture f;
    TRibbonPage* view = f.ribbon->addTab(u"rtView"_s, u"View"_s);
    QSignalSpy changed(f.ribbon, &TRibbon::currentTabChanged);
    QCOMPARE(f.ribbon->currentTab(), u"rtGeneral"_s);
    f.ribbon->setCurrentTab(u"rtView"_s);
    QCOMPARE(f.ribbon->currentPage(), view);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.first().at(0).toString(), u"rtView"_s);
    f.ribbon->setCurrentTab(u"nowhere"_s);
    QCOMPARE(f.ribbon->currentTab(), u"rtView"_s);

    f.ribbon->setTabCaption(u"rtView"_s, u"Ansicht"_s);
    QCOMPARE(f.ribbon->tabBar()->tabText(1), u"Ansicht"_s);
    f.ribbon->setTabVisible(u"rtView"_s, false);
    QVERIFY(!f.ribbon->isTabVisible(u"rtView"_s));
    f.ribbon->setTabVisible(u"rtView"_s, true);

    const int full = f.ribbon->height();
    const QPoint tab = f.ribbon->tabBar()->tabRect(0).center();
    QTest::mouseDClick(f.ribbon->tabBar(), Qt::LeftButton, {}, tab);
    QVERIFY(f.ribbon->isMinimized());
    QVERIFY(f.ribbon->height() < full);
    QCoreApplication::processEvents();
    QTest::mouseClick(f.ribbon->tabBar(), Qt::LeftButton, {}, tab);
    QVERIFY(!f.ribbon->isMinimized());
    QCOMPARE(f.ribbon->height(), full);
}

void TestRibbon::titleFollowsDocument()
{
    QWidget window;
    auto* ribbon = new TRibbon(&window);
    ribbon->setApplicationName(u"Orvane"_s);
    QCOMPARE(window.windowTitle(), u"Orvane"_s);
    ribbon->setDocumentName(u"coins.db"_s);
    QCOMPARE(ribbon->title(), u"coins.db - Orvane"_s);
    QCOMPARE(window.windowTitle(), u"coins.db - Orvane"_s);
    ribbon->setUpdatesWindowTitle(false);
    ribbon->setDocumentName(u"other.db"_s);
    QCOMPARE(window.windowTitle(), u"coins.db - Orvane"_s);
    QCOMPARE(ribbon->applicationButtonText(), u"File"_s);
    ribbon->setApplicationButtonText(u"Datei"_s);
    QCOMPARE(ribbon->applicationButtonText(), u"Datei"_s);
}

QTEST_MAIN(TestRibbon)
#include "tst_ribbon.moc"
