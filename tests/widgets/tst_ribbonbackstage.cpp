// The application menu (backstage) that covers the window, its galleries of pictured items and
// its search box.

#include "uBackstagePage.h"
#include "uBackstageView.h"
#include "uGalleryView.h"
#include "uRibbon.h"
#include "uSearchBox.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
struct TBackstageFixture
{
    QWidget window;
    QLineEdit* focused = new QLineEdit(&window);
    TRibbon* ribbon = new TRibbon(&window);
    TBackstageView* backstage = new TBackstageView(&window);
    TBackstagePage* add = backstage->addPage(u"tsAdd"_s, u"Add"_s);
    TBackstagePage* database = backstage->addPage(u"tsDatabaseManagement"_s, u"Database management"_s);
    TBackstagePage* exports = backstage->addPage(u"tsExportAndPrinting"_s, u"Export and printing"_s);
    TSearchBox* search = new TSearchBox(add);

    TBackstageFixture()
    {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(ribbon);
        layout->addWidget(focused);
        add->contentLayout()->addWidget(search);
        ribbon->setUpdatesWindowTitle(false);
        ribbon->setBackstage(backstage);
        window.resize(800, 600);
        window.show();
        QApplication::setActiveWindow(&window);
        focused->setFocus();
    }
};

QPixmap picture()
{
    QPixmap pixmap(100, 100);
    pixmap.fill(Qt::darkYellow);
    return pixmap;
}
} // namespace

class TestRibbonBackstage : public QObject
{
    Q_OBJECT

private slots:
    void opensOverTheWindowAndCloses_data();
    void opensOverTheWindowAndCloses();
    void pagesMayBeDisabled();
    void buttonsFollowTheirActions_data();
    void buttonsFollowTheirActions();
    void galleryClicks_data();
    void galleryClicks();
    void galleryFlowsAndKeys_data();
    void galleryFlowsAndKeys();
    void searchBox();
};

void TestRibbonBackstage::opensOverTheWindowAndCloses_data()
{
    QTest::addColumn<QString>("closeBy");
    QTest::newRow("escape") << u"escape"_s;
    QTest::newRow("back button") << u"back"_s;
    QTest::newRow("command") << u"command"_s;
}

void TestRibbonBackstage::opensOverTheWindowAndCloses()
{
    QFETCH(QString, closeBy);
    TBackstageFixture f;
    QStringList order;
    QObject::connect(f.backstage, &TBackstageView::aboutToShow, f.backstage, [&]() {
        order << u"aboutToShow"_s;
        // The moment to choose the page: a disabled one may be the active one.
        f.backstage->setPageEnabled(u"tsAdd"_s, false);
        f.backstage->setActivePage(u"tsAdd"_s);
    });
    QObject::connect(f.backstage, &TBackstageView::shown, f.backstage, [&]() { order << u"shown"_s; });
    QObject::connect(f.backstage, &TBackstageView::hidden, f.backstage, [&]() { order << u"hidden"_s; });
    f.backstage->setActivePage(u"tsExportAndPrinting"_s);

    QTest::mouseClick(f.ribbon->applicationButton(), Qt::LeftButton);
    QVERIFY(f.backstage->isBackstageVisible());
    QCOMPARE(f.backstage->geometry(), f.window.rect());
    QCOMPARE(f.backstage->activePage(), u"tsAdd"_s);
    QVERIFY(!f.add->isEnabled());
    // It keeps covering the window when the window changes size.
    f.window.resize(640, 480);
    QCoreApplication::processEvents();
    QCOMPARE(f.backstage->geometry(), f.window.rect());

    if (closeBy == u"escape"_s)
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : f.backstage,
                        Qt::Key_Escape);
    else if (closeBy == u"back"_s)
        QTest::mouseClick(f.backstage->backButton(), Qt::LeftButton);
    else
        f.backstage->hideBackstage();
    QVERIFY(!f.backstage->isBackstageVisible());
    QCOMPARE(order, (QStringList{u"aboutToShow"_s, u"shown"_s, u"hidden"_s}));
    QCOMPARE(QApplication::focusWidget(), f.focused);
    // Closing twice says so once.
    f.backstage->hideBackstage();
    QCOMPARE(order.count(u"hidden"_s), 1);
}

void TestRibbonBackstage::pagesMayBeDisabled()
{
    TBackstageFixture f;
    QSignalSpy changed(f.backstage, &TBackstageView::activePageChanged);
    f.backstage->showBackstage();
    f.backstage->setPageEnabled(u"tsExportAndPrinting"_s, false);
    QTest::mouseClick(f.backstage->pageEntry(u"tsExportAndPrinting"_s), Qt::LeftButton);
    QCOMPARE(f.backstage->activePage(), u"tsAdd"_s);
    QCOMPARE(changed.count(), 0);
    QTest::mouseClick(f.backstage->pageEntry(u"tsDatabaseManagement"_s), Qt::LeftButton);
    QCOMPARE(f.backstage->activePage(), u"tsDatabaseManagement"_s);
    QCOMPARE(changed.count(), 1);
    QVERIFY(f.backstage->pageEntry(u"tsDatabaseManagement"_s)->isChecked());
    QVERIFY(!f.backstage->pageEntry(u"tsAdd"_s)->isChecked());
    f.backstage->setPageTitle(u"tsAdd"_s, u"Hinzufügen"_s);
    QCOMPARE(f.backstage->pageEntry(u"tsAdd"_s)->text(), u"Hinzufügen"_s);
    QCOMPARE(f.add->title(), u"Hinzufügen"_s);
    QCOMPARE(f.backstage->pageNames(),
             (QStringList{u"tsAdd"_s, u"tsDatabaseManagement"_s, u"tsExportAndPrinting"_s}));
}

void TestRibbonBackstage::buttonsFollowTheirActions_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("hideFirst");
    QTest::addColumn<int>("triggers");
    QTest::addColumn<bool>("openWhileRunning");
    QTest::newRow("closes, then runs") << true << true << 1 << false;
    QTest::newRow("runs with the menu open") << true << false << 1 << true;
    QTest::newRow("disabled does nothing") << false << true << 0 << true;
}

void TestRibbonBackstage::buttonsFollowTheirActions()
{
    QFETCH(bool, enabled);
    QFETCH(bool, hideFirst);
    QFETCH(int, triggers);
    QFETCH(bool, openWhileRunning);
    TBackstageFixture f;
    QAction stats(u"Statistics"_s);
    stats.setObjectName(u"actStats"_s);
    QAbstractButton* button = f.backstage->addButton(&stats, hideFirst);
    QCOMPARE(button->objectName(), u"btnBackstageStats"_s);
    QCOMPARE(f.backstage->button(u"btnBackstageStats"_s), button);
    bool openAtRun = false;
    int runs = 0;
    QObject::connect(&stats, &QAction::triggered, &stats, [&]() {
        ++runs;
        openAtRun = f.backstage->isBackstageVisible();
    });
    stats.setEnabled(enabled);
    f.backstage->showBackstage();
    QCOMPARE(button->isEnabled(), enabled);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(runs, triggers);
    if (triggers > 0)
        QCOMPARE(openAtRun, openWhileRunning);
    QCOMPARE(f.backstage->isBackstageVisible(), openWhileRunning);
    stats.setText(u"Statistik"_s);
    QCOMPARE(button->text(), u"Statistik"_s);
    stats.setVisible(false);
    QVERIFY(button->isHidden());
}

void TestRibbonBackstage::galleryClicks_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<int>("clicks");
    QTest::addColumn<int>("actionRuns");
    QTest::newRow("pictured item") << u"gGoldCoins19"_s << false << 1 << 0;
    QTest::newRow("pictured item by key") << u"gGoldCoins19"_s << true << 1 << 0;
    QTest::newRow("disabled item") << u"gSilverBars1"_s << false << 0 << 0;
    QTest::newRow("action item") << u"rgDBMgmtItemNewDB"_s << false << 1 << 1;
    QTest::newRow("disabled action item") << u"rgDBMgmtItemDBProperties"_s << false << 0 << 0;
}

void TestRibbonBackstage::galleryClicks()
{
    QFETCH(QString, item);
    QFETCH(bool, byKey);
    QFETCH(int, clicks);
    QFETCH(int, actionRuns);
    TBackstageFixture f;
    auto* gallery = new TGalleryView(f.add);
    f.add->contentLayout()->addWidget(gallery, 1);
    gallery->addGroup(u"gGoldCoins"_s, u"Gold coins"_s);
    gallery->addGroup(u"gSilverBars"_s, u"Silver bars"_s);
    gallery->addGroup(u"rgDBMgmt"_s, u"Database management"_s);
    QVERIFY(gallery->addItem(u"gGoldCoins"_s, u"gGoldCoins19"_s, u"American Eagles"_s, picture(), 19));
    QVERIFY(gallery->addItem(u"gSilverBars"_s, u"gSilverBars1"_s, u"9Fine"_s, picture(), 1));
    gallery->setItemEnabled(u"gSilverBars1"_s, false);
    QAction newDb(u"New database"_s);
    newDb.setObjectName(u"actDBNew"_s);
    QAction properties(u"Database properties"_s);
    properties.setEnabled(false);
    QVERIFY(gallery->addActionItem(u"rgDBMgmt"_s, &newDb, 0, u"rgDBMgmtItemNewDB"_s));
    QVERIFY(gallery->addActionItem(u"rgDBMgmt"_s, &properties, 0, u"rgDBMgmtItemDBProperties"_s));
    QVERIFY(!gallery->addItem(u"nowhere"_s, u"x"_s, u"x"_s, picture()));
    QVERIFY(!gallery->addItem(u"gGoldCoins"_s, u"gGoldCoins19"_s, u"again"_s, picture()));
    QCOMPARE(gallery->itemCaption(u"rgDBMgmtItemNewDB"_s), u"New database"_s);
    f.backstage->showBackstage();
    QCoreApplication::processEvents();

    QSignalSpy clicked(gallery, &TGalleryView::itemClicked);
    QSignalSpy ran(gallery->itemGroup(item) == u"rgDBMgmt"_s && item.endsWith(u"NewDB"_s) ? &newDb
                                                                                          : &properties,
                   &QAction::triggered);
    const QRect box = gallery->itemRect(item);
    QVERIFY(!box.isEmpty());
    if (byKey) {
        // Home goes to the first item shown, Enter clicks it.
        gallery->setFocus();
        QTest::keyClick(gallery, Qt::Key_Home);
        QTest::keyClick(gallery, Qt::Key_Return);
    } else {
        QTest::mouseClick(gallery->viewport(), Qt::LeftButton, {}, box.center());
    }
    QCOMPARE(clicked.count(), clicks);
    if (clicks > 0) {
        QCOMPARE(clicked.first().at(0).toString(), gallery->itemGroup(item));
        QCOMPARE(clicked.first().at(1).toString(), item);
        QCOMPARE(clicked.first().at(2).toInt(), gallery->itemTag(item));
    }
    QCOMPARE(ran.count(), actionRuns);
}

void TestRibbonBackstage::galleryFlowsAndKeys_data()
{
    QTest::addColumn<bool>("rightToLeft");
    QTest::newRow("left to right") << false;
    QTest::newRow("right to left") << true;
}

void TestRibbonBackstage::galleryFlowsAndKeys()
{
    QFETCH(bool, rightToLeft);
    TGalleryView gallery;
    gallery.setLayoutDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    gallery.addGroup(u"a"_s, u"First"_s);
    gallery.addGroup(u"empty"_s, u"Nothing in it"_s);
    gallery.addGroup(u"b"_s, u"Second"_s);
    for (int i = 0; i < 7; ++i)
        gallery.addItem(i < 5 ? u"a"_s : u"b"_s, u"item%1"_s.arg(i), u"Item %1"_s.arg(i), picture(), i);
    // A later group's item added before an earlier group's still shows after it.
    gallery.addItem(u"a"_s, u"late"_s, u"Late"_s, picture(), 9);
    gallery.resize(gallery.sizeHint().width() / 5 * 3 + 10, 500);
    gallery.show();
    QCoreApplication::processEvents();
    QStringList order;
    for (const QString& name : gallery.itemNames())
        order << name;
    QCOMPARE(order.indexOf(u"late"_s), 5);
    const QRect first = gallery.itemRect(u"item0"_s);
    const QRect second = gallery.itemRect(u"item1"_s);
    QCOMPARE(first.top(), second.top());
    QVERIFY(rightToLeft ? second.left() < first.left() : second.left() > first.left());
    // Items wrap inside the width; the empty group takes no room.
    for (const QString& name : gallery.itemNames()) {
        const QRect box = gallery.itemRect(name);
        QVERIFY2(gallery.viewport()->rect().left() <= box.left() &&
                     box.right() <= gallery.viewport()->rect().right(),
                 qPrintable(name));
    }
    QVERIFY(gallery.itemRect(u"item5"_s).top() > gallery.itemRect(u"late"_s).bottom());
    // The arrow toward the end of the row moves to the next item in either direction.
    QSignalSpy clicked(&gallery, &TGalleryView::itemClicked);
    gallery.setFocus();
    QTest::keyClick(&gallery, Qt::Key_Home);
    QTest::keyClick(&gallery, rightToLeft ? Qt::Key_Left : Qt::Key_Right);
    QTest::keyClick(&gallery, Qt::Key_Down);
    QTest::keyClick(&gallery, Qt::Key_Space);
    QCOMPARE(clicked.count(), 1);
    const QString reached = clicked.first().at(1).toString();
    QVERIFY(gallery.itemRect(reached).top() > second.top());
    QVERIFY(std::abs(gallery.itemRect(reached).center().x() - second.center().x()) < second.width());
    QCOMPARE(gallery.itemAt(gallery.itemRect(u"item3"_s).center()), u"item3"_s);
}

void TestRibbonBackstage::searchBox()
{
    TSearchBox box;
    box.setEmptyText(u"Search keywords (e.g. Maple Leaf 2019 1/10 oz)"_s);
    QCOMPARE(box.placeholderText(), box.emptyText());
    QVERIFY(box.isClearButtonEnabled());
    QSignalSpy searched(&box, &TSearchBox::searchRequested);
    box.show();
    box.setFocus();
    QTest::keyClicks(&box, u"Maple 2019"_s);
    QTest::keyClick(&box, Qt::Key_Return);
    QCOMPARE(searched.count(), 1);
    QCOMPARE(searched.first().at(0).toString(), u"Maple 2019"_s);
    // Its own small button clears it.
    QToolButton* clear = nullptr;
    for (QToolButton* button : box.findChildren<QToolButton*>())
        if (button->defaultAction() && button->defaultAction()->objectName() == u"_q_qlineeditclearaction"_s)
            clear = button;
    QVERIFY(clear);
    clear->click();
    QCOMPARE(box.text(), QString());
}

QTEST_MAIN(TestRibbonBackstage)
#include "tst_ribbonbackstage.moc"
