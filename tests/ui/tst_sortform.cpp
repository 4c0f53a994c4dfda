// The sort dialog on the screen (offscreen) over the toolkit's table views: levels read from the
// first view and written to each, the commands through their actions, the refusal at OK. With
// ORV_SCREENSHOT_DIR set it leaves pictures of the dialog in a light and a dark theme and right to
// left.

#include "dmStyles.h"
#include "frmSorting.h"
#include "support_common.h"
#include "support_datarow.h"
#include "uGrid.h"
#include "uGridColumns.h"
#include "uGridTableView.h"
#include "uZTStrings.h"

#include <QAction>
#include <QStandardItemModel>
#include <QTreeWidget>
#include <QtTest>

namespace {

void Idle()
{
    QEventLoop loop;
    QTimer::singleShot(30, &loop, &QEventLoop::quit);
    loop.exec();
}

// A model of items for the grid: Name, Year, Photo, Price.
std::unique_ptr<QStandardItemModel> ItemsModel()
{
    auto model = std::make_unique<QStandardItemModel>(3, 4);
    const QStringList fields{"Name", "Year", "Photo", "Price"};
    for (int c = 0; c < fields.size(); ++c) {
        model->setHeaderData(c, Qt::Horizontal, fields.at(c));
        model->setHeaderData(c, Qt::Horizontal, fields.at(c), Qt::UserRole + 3);
    }
    return model;
}

} // namespace

class TestSortForm : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    QTemporaryDir m_langDir;

private slots:
    void initTestCase()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        const QString source = qEnvironmentVariable("ORV_SOURCE_DIR") + "/data/lang/";
        QByteArray mirror = ReadFile(source + "English.xml");
        mirror.replace("BiDiMode=\"LeftToRight\"", "BiDiMode=\"RightToLeft\"");
        WriteFile(m_langDir.filePath("Mirror.xml"), mirror);
        XMLLanguage().SetLanguageFolder(m_langDir.path() + u'/');
        LoadEnglish();
    }
    void cleanup() { TSortForm::SetExecHook({}); }
    void cleanupTestCase()
    {
        XMLLanguage().SetLanguageFolder(QString());
        m_home.reset();
    }

    // The sort dialog over table views: levels read from the first, written to each; card views and
    // pictures left out.
    void sortDialogOverViews()
    {
        const auto model = ItemsModel();
        TGrid grid;
        grid.setSourceModel(model.get());
        TGridTableView* first = grid.addTableView("first");
        TGridTableView* second = grid.addTableView("second");
        for (TGridTableView* view : {first, second}) {
            view->addColumn(view->name() + "Name", "Name", "Name");
            view->addColumn(view->name() + "Photo", "Photo", "Photo")->setPicture(true);
            view->addColumn(view->name() + "Year", "Year", "Year");
        }
        second->columns()->byName("secondYear")->setCaption("Minted");
        first->columns()->byName("firstYear")->setSortIndex(0);
        first->columns()->byName("firstYear")->setSortOrder(TGridSortOrder::Descending);

        QStringList shownList;
        TSortForm::SetExecHook([&](TSortForm& form) {
            shownList = form.Controller().ColumnList();
            [&] { QCOMPARE(form.TLSort()->topLevelItemCount(), 1); }();
            [&] { QCOMPARE(form.TLSort()->topLevelItem(0)->text(1), "Descending"); }();
            [&] { QVERIFY(!form.Action("actUp")->isEnabled()); }();
            form.Action("actAddLevel")->trigger();
            [&] { QVERIFY(form.Action("actUp")->isEnabled()); }();
            [&] { QVERIFY(!form.Action("actDown")->isEnabled()); }();
            form.TLSort()->topLevelItem(1)->setText(1, "Descending"); // Name, descending
            form.Action("actUp")->trigger();
            form.accept();
            return form.result();
        });
        QVERIFY(TSortForm::Execute({first, second}));
        TSortForm::SetExecHook({});
        QCOMPARE(shownList, QStringList({"Name", "Year"}));
        const QList<TGridColumn*> firstSort = first->columns()->sortColumns();
        QCOMPARE(firstSort.size(), 2);
        QCOMPARE(firstSort.at(0)->name(), "firstName");
        QCOMPARE(firstSort.at(0)->sortOrder(), TGridSortOrder::Descending);
        QCOMPARE(firstSort.at(1)->name(), "firstYear");
        const QList<TGridColumn*> secondSort = second->columns()->sortColumns();
        QCOMPARE(secondSort.size(), 1); // "Year" is called "Minted" there
        QCOMPARE(secondSort.at(0)->name(), "secondName");
    }

    // Two levels on one column: refused with the warning, the dialog stays with its levels.
    void sortDialogRefusesDuplicates()
    {
        TRecordingPresenter presenter;
        TMessagePresenter* previous = SetMessagePresenter(&presenter);
        TSortForm form;
        TRecordingPresenter* seen = &presenter;
        form.Controller().AddLevel();
        form.Controller().AddLevel();
        form.show();
        form.accept();
        QCOMPARE(seen->Requests.size(), 1);
        QCOMPARE(seen->Requests.first().Type, mtWarning);
        QVERIFY(form.isVisible());
        QCOMPARE(form.Controller().Levels().size(), 2);
        SetMessagePresenter(previous);
    }

    // Pictures of the dialog: light, dark, right to left.
    void screenshots_data()
    {
        QTest::addColumn<int>("theme");
        QTest::addColumn<bool>("rtl");
        AddRow("light", 4, false);
        AddRow("dark", 0, false);
        AddRow("rtl", 8, true);
    }
    void screenshots()
    {
        QFETCH(int, theme);
        QFETCH(bool, rtl);
        const QString dir = qEnvironmentVariable("ORV_SCREENSHOT_DIR");
        if (dir.isEmpty())
            QSKIP("ORV_SCREENSHOT_DIR is not set");
        if (rtl)
            QVERIFY(LoadLanguage("Mirror"));
        TDM_Styles::ApplyTheme(theme, 1, nullptr);
        const auto model = ItemsModel();
        TGrid grid;
        grid.setSourceModel(model.get());
        TGridTableView* view = grid.addTableView("view");
        view->addColumn("Name", "Name", "Name");
        view->addColumn("Year", "Year", "Year")->setSortIndex(0);
        view->addColumn("Price", "Price", "Price")->setSortIndex(1);
        view->columns()->byName("Price")->setSortOrder(TGridSortOrder::Descending);
        TSortForm sort;
        sort.LoadFromView(view);
        sort.show();
        QVERIFY(QTest::qWaitForWindowExposed(&sort));
        Idle();
        sort.grab().save(dir + "/sort-" + QTest::currentDataTag() + ".png");
        TDM_Styles::ApplyTheme(4, 0, nullptr);
        LoadEnglish();
    }
};

QTEST_MAIN(TestSortForm)
#include "tst_sortform.moc"
