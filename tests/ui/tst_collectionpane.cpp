// The collection views in the main window (offscreen): each view focuses a record and the details
// pane follows, the coin and bar rows of the details, the quick filter and the totals buttons, the
// customise button over a table view, and the layouts kept at close. With ORV_SCREENSHOT_DIR set it
// also leaves pictures of every view there.

#include "dmInternalData.h"
#include "frmMain.h"
#include "support_common.h"
#include "support_datarow.h"
#include "uCollectionPane.h"
#include "uPropertyGrid.h"
#include "uTemplate.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"

#include <QBuffer>
#include <QLabel>
#include <QToolButton>
#include <QtTest>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace {

class TCannedDialogs : public TFileDialogSeam
{
public:
    QString Answer;
    QString ExecuteOpenDialog(const TFileDialogRequest&) override { return Answer; }
    QString ExecuteSaveDialog(const TFileDialogRequest&) override { return Answer; }
};

QByteArray Png(QColor colour)
{
    QImage image(120, 120, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

struct TItem
{
    const char* Name;
    int Metal;
    int CoinType;
    bool Photo;
};

void WriteCollection(const QString& path, const QList<TItem>& items)
{
    WriteFile(path, NewBlankDatabaseBytes());
    sqlite3* db = nullptr;
    QVERIFY(sqlite3_open(path.toUtf8().constData(), &db) == SQLITE_OK);
    const QByteArray front = Png(Qt::darkYellow);
    for (const TItem& item : items) {
        sqlite3_stmt* stmt = nullptr;
        sqlite3_prepare_v2(db,
                           "INSERT INTO tblCoins (Name, Metal, CoinType, WeightG, Qty, Price, ThumbFront) "
                           "VALUES (?, ?, ?, 31.1035, 1, 20, ?)",
                           -1, &stmt, nullptr);
        sqlite3_bind_text(stmt, 1, item.Name, -1, SQLITE_TRANSIENT);
        sqlite3_bind_int(stmt, 2, item.Metal);
        sqlite3_bind_int(stmt, 3, item.CoinType);
        if (item.Photo)
            sqlite3_bind_blob(stmt, 4, front.constData(), int(front.size()), SQLITE_TRANSIENT);
        else
            sqlite3_bind_null(stmt, 4);
        QCOMPARE(sqlite3_step(stmt), SQLITE_DONE);
        sqlite3_finalize(stmt);
    }
    sqlite3_close(db);
}

} // namespace

class TestCollectionPane : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDM_InternalData> m_data;
    std::unique_ptr<TORVMainForm> m_form;
    TCannedDialogs m_dialogs;

    TCollectionPane* Pane() const { return m_form->Views(); }
    void Idle(int ms = 30)
    {
        QEventLoop loop;
        QTimer::singleShot(ms, &loop, &QEventLoop::quit);
        loop.exec();
    }
    void MakeForm()
    {
        m_form = std::make_unique<TORVMainForm>(*m_data);
        m_form->SetFileDialogs(&m_dialogs);
        m_form->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_form.get()));
        Idle();
    }
    void OpenCollection(const QList<TItem>& items)
    {
        const QString path = m_dir->filePath(u"vault.db"_s);
        WriteCollection(path, items);
        m_dialogs.Answer = path;
        m_form->Action(u"actDBOpen"_s)->trigger();
        Idle();
        QVERIFY(m_data->Connected());
    }
    // The source row of the record with that name.
    int RowOf(const QString& name) const
    {
        TDBDataset& items = *m_data->qDS_Items;
        const int field = items.fieldByName(u"Name"_s).index();
        for (int row = 0; row < items.recordCount(); ++row)
            if (items.valueAt(row, field).toString() == name)
                return row;
        return -1;
    }
    void Show(TCollectionView view)
    {
        static const QStringList actions = {u"actViewThumbs"_s, u"actViewCards"_s, u"actViewTable"_s,
                                            u"actViewShelve"_s, u"actViewROI"_s};
        m_form->Action(actions.at(view))->trigger();
        Idle();
        QCOMPARE(Pane()->ActiveView(), view);
    }
    void Shoot(const QString& name)
    {
        const QString dir = qEnvironmentVariable("ORV_SCREENSHOT_DIR");
        if (dir.isEmpty())
            return;
        Idle(200);
        m_form->grab().save(dir + u'/' + name + u".png"_s);
    }

private slots:
    void initTestCase()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        LoadEnglish();
    }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        DBPath.clear();
        ThemeIndex = 4;
        MainFormMaximized = false;
        MainFormWidth = 1280;
        MainFormHeight = 800;
        CurrentView = 1;
        m_data = std::make_unique<TDM_InternalData>();
        MakeForm();
    }
    void cleanup()
    {
        m_form.reset();
        m_data.reset();
        m_dir.reset();
    }
    void cleanupTestCase() { m_home.reset(); }

    // In every view a record focused as the user does it moves the dataset's cursor, and the
    // details pane shows that record, with the coin or bar rows of its type.
    void focusedRecordReachesTheDetails_data()
    {
        QTest::addColumn<int>("view");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("coinRows");
        AddRow("thumbs", int(cvThumbs), QString("Krugerrand"), true);
        AddRow("cards", int(cvCards), QString("Kilobar"), false);
        AddRow("table", int(cvTable), QString("Britannia"), true);
        AddRow("shelves", int(cvShelve), QString("Kilobar"), false);
        AddRow("quick statistics", int(cvTableROI), QString("Krugerrand"), true);
    }
    void focusedRecordReachesTheDetails()
    {
        QFETCH(int, view);
        QFETCH(QString, name);
        QFETCH(bool, coinRows);
        OpenCollection({{"Krugerrand", 0, 0, true}, {"Kilobar", 0, 3, false}, {"Britannia", 1, 0, true}});
        Show(TCollectionView(view));
        const int row = RowOf(name);
        QVERIFY(row >= 0);
        Pane()->FocusRecord(TCollectionView(view), row);
        Idle();
        QCOMPARE(m_data->qDS_Items->fieldByName(u"Name"_s).asString(), name);
        TPropertyGrid* details = Pane()->vgDetails();
        QCOMPARE(details->currentRow(), row);
        QCOMPARE(details->rowText(u"vgDetailsName"_s), name);
        QCOMPARE(details->isRowVisible(u"vgDetailsDiameter"_s), coinRows);
        QCOMPARE(details->isRowVisible(u"vgDetailsWidth"_s), !coinRows);
        // The front thumbnail shows only when the record has one.
        QCOMPARE(Pane()->imgFront()->isVisibleTo(Pane()), name != u"Kilobar"_s);
        QVERIFY(!Pane()->imgBack()->isVisibleTo(Pane()));
        Shoot(u"view-%1"_s.arg(view));
    }

    // A divisible bar keeps the rows the record before it left.
    void divisibleBarKeepsTheRows_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<bool>("coinRows");
        AddRow("after a coin", QString("Maple"), true);
        AddRow("after a bar", QString("Kilobar"), false);
    }
    void divisibleBarKeepsTheRows()
    {
        QFETCH(QString, before);
        QFETCH(bool, coinRows);
        OpenCollection({{"Maple", 0, 0, false}, {"Kilobar", 0, 3, false}, {"Combibar", 0, 4, false}});
        m_data->qDS_Items->setRecNo(RowOf(before) + 1);
        m_data->qDS_Items->setRecNo(RowOf(u"Combibar"_s) + 1);
        Idle();
        TPropertyGrid* details = Pane()->vgDetails();
        QCOMPARE(details->rowText(u"vgDetailsName"_s), u"Combibar"_s);
        QCOMPARE(details->isRowVisible(u"vgDetailsEdge"_s), coinRows);
        QCOMPARE(details->isRowVisible(u"vgDetailsHeight"_s), !coinRows);
    }

    // Pictures of every view, light and dark, left to right and right to left, with the find panel
    // and the filter builder; only with ORV_SCREENSHOT_DIR set.
    void screenshots()
    {
        const QString dir = qEnvironmentVariable("ORV_SCREENSHOT_DIR");
        if (dir.isEmpty())
            QSKIP("ORV_SCREENSHOT_DIR is not set");
        QList<TItem> items;
        static const char* names[] = {"Krugerrand", "Maple Leaf", "Britannia", "Philharmonic", "Panda",
                                      "Kangaroo",   "Eagle",      "Buffalo",   "Libertad",     "Kookaburra"};
        for (int i = 0; i < 20; ++i)
            items.append({names[i % 10], i % 4, i % 5, i % 3 != 0});
        OpenCollection(items);
        for (const auto& [theme, rtl, tag] :
             {std::tuple{4, false, "light"}, std::tuple{2, false, "dark"}, std::tuple{2, true, "dark-rtl"}}) {
            m_form->ApplyTheme(theme, 0);
            m_form->setLayoutDirection(rtl ? Qt::RightToLeft : Qt::LeftToRight);
            for (int view = 0; view < cCollectionViewCount; ++view) {
                Show(TCollectionView(view));
                Pane()->FocusRecord(TCollectionView(view), 1);
                Shoot(u"%1-view%2"_s.arg(QString::fromLatin1(tag)).arg(view));
            }
            Show(cvCards);
            m_form->Action(u"actQuickSearch"_s)->trigger();
            Shoot(u"%1-findpanel"_s.arg(QString::fromLatin1(tag)));
            m_form->Action(u"actQuickSearch"_s)->trigger();
            TCollectionPane::SetDialogRunner([&](QWidget* dialog) {
                dialog->resize(640, 400);
                dialog->show();
                Idle(200);
                dialog->grab().save(dir + u"/%1-filterbuilder.png"_s.arg(QString::fromLatin1(tag)));
                return 0;
            });
            Show(cvTable);
            m_form->Action(u"actAdvSearch"_s)->trigger();
            TCollectionPane::SetDialogRunner({});
        }
        m_form->setLayoutDirection(Qt::LeftToRight);
    }

    // The quick filter reaches every view; the totals stay those of the whole collection.
    void quickFilterAndTotals()
    {
        OpenCollection({{"Krugerrand", 0, 0, false}, {"Kilobar", 0, 3, false}, {"Britannia", 1, 0, false}});
        QToolButton* gold = m_form->TotalButton(0);
        QToolButton* silver = m_form->TotalButton(1);
        QTRY_VERIFY(gold->isVisibleTo(m_form.get()));
        QCOMPARE(gold->text(), u"Gold total: 2.0 oz"_s);
        QCOMPARE(silver->text(), u"Silver total: 1.0 oz"_s);
        QVERIFY(!m_form->TotalButton(2)->isVisibleTo(m_form.get()));
        m_form->Action(u"actFilterGold"_s)->trigger(); // off
        Idle();
        QCOMPARE(m_data->qDS_Items->recordCount(), 1);
        for (int view = 0; view < cCollectionViewCount; ++view)
            QCOMPARE(Pane()->ShownRecordCount(TCollectionView(view)), 1);
        QCOMPARE(gold->text(), u"Gold total: 2.0 oz"_s);
        QVERIFY(gold->isVisibleTo(m_form.get()));
        m_form->Action(u"actFilterCoins"_s)->trigger();
        m_form->Action(u"actFilterBars"_s)->trigger();
        Idle();
        QCOMPARE(m_data->qDS_Items->recordCount(), 0);
        Show(cvCards);
        Shoot(u"empty-filter"_s);
    }

    // The customise button stands over the table views' group-by panel only.
    void customizeButton()
    {
        OpenCollection({{"Krugerrand", 0, 0, false}});
        QToolButton* button = Pane()->btnTableViewCustomize();
        Show(cvTable);
        QTRY_VERIFY(button->isVisible());
        QCOMPARE(button->menu(), Pane()->pmTableViewCustomize());
        const QRect inPane = Pane()->GroupByPanelRect(cvTable);
        QCOMPARE(button->geometry().right(), inPane.right() - 5);
        QCOMPARE(button->geometry().top(), inPane.top() + 5);
        Show(cvTableROI);
        QCOMPARE(button->menu(), Pane()->pmQuickStatsCustomize());
        Show(cvThumbs);
        QVERIFY(!button->isVisible());
    }

    // What the user changed in a view is there again at the next start.
    void layoutsKeptAtClose()
    {
        OpenCollection({{"Krugerrand", 0, 0, false}});
        Show(cvTable);
        Pane()->ApplyConfiguration(TTableViewConfiguration::Specification);
        Idle();
        Pane()->SetColumnVisible(cvTable, u"Edge"_s, false);
        m_form->close();
        m_form.reset();
        MakeForm();
        QVERIFY(Pane()->ColumnVisible(cvTable, u"Mintage"_s));
        QVERIFY(!Pane()->ColumnVisible(cvTable, u"Edge"_s));
        QVERIFY(Pane()->ColumnVisible(cvTable, u"Country"_s));
        QCOMPARE(Pane()->GroupingDepth(cvTable), 1);
    }
};

QTEST_MAIN(TestCollectionPane)
#include "tst_collectionpane.moc"
