// The command table of the main window without a screen: the update rule over the state, the
// flows of add, edit, remove, copy and flip through answered seams, the application menu's rules,
// the deferred events and the settings the window keeps.

#include "dmInternalData.h"
#include "support_common.h"
#include "support_datarow.h"
#include "uMainController.h"
#include "uObjs.h"
#include "uQuickSearches.h"
#include "uTemplate.h"
#include "uZTMessages.h"
#include "uZTSettings.h"

#include <QSignalSpy>
#include <QtTest>

#include <sqlite3.h>

#include <memory>

namespace {

// Answers the window's seams and remembers what it was asked.
class TCannedWindow : public TMainWindowSeam
{
public:
    QList<TAddDialogRequest> AddRequests;
    QStringList AssetsToPick; // names of the assets the add dialog returns
    int EditorRuns = 0;
    QString EditorSawState;
    TDM_InternalData* Data = nullptr;
    QList<QVariant> Keys;
    std::optional<QString> FocusedCell;
    QString RecordsText;
    QStringList Clipboard;

    std::vector<std::unique_ptr<TMetalAsset>> ExecuteAddDialog(const TAddDialogRequest& request) override
    {
        AddRequests << request;
        std::vector<std::unique_ptr<TMetalAsset>> assets;
        for (const QString& name : AssetsToPick) {
            auto asset = std::make_unique<TMetalAsset>();
            asset->Name = name;
            asset->Metal = 1;
            asset->WeightG = 31.1035;
            assets.push_back(std::move(asset));
        }
        return assets;
    }
    void ExecuteItemEditor() override
    {
        ++EditorRuns;
        const TDatasetState state = Data->qDS_Items->state();
        EditorSawState = state == TDatasetState::Insert ? "insert"
                         : state == TDatasetState::Edit ? "edit"
                                                        : "browse";
        if (state == TDatasetState::Insert) {
            Data->qDS_Items->fieldByName("Name").setAsString("Typed by hand");
            Data->qDS_Items->post();
        }
    }
    QList<QVariant> SelectedKeys() override { return Keys; }
    std::optional<QString> FocusedCellText() override { return FocusedCell; }
    QString SelectedRecordsText() override { return RecordsText; }
    void SetClipboardText(const QString& text) override { Clipboard << text; }
};

// Answers every message box with one result and keeps the requests.
class TCannedAnswer : public TMessagePresenter
{
public:
    explicit TCannedAnswer(int answer) : m_answer(answer) { m_previous = SetMessagePresenter(this); }
    ~TCannedAnswer() override { SetMessagePresenter(m_previous); }
    int Present(const TMessageBoxRequest& request) override
    {
        Requests << request;
        return m_answer;
    }
    QList<TMessageBoxRequest> Requests;

private:
    int m_answer;
    TMessagePresenter* m_previous = nullptr;
};

// Collects the deferred events posted to it.
class TEventSink : public QObject
{
public:
    QList<int> Events;
    bool event(QEvent* event) override
    {
        if (event->type() >= QEvent::User) {
            Events << int(event->type());
            return true;
        }
        return QObject::event(event);
    }
};

int SqlInt(const QString& path, const char* sql)
{
    sqlite3* db = nullptr;
    int value = -1;
    if (sqlite3_open(path.toUtf8().constData(), &db) == SQLITE_OK) {
        sqlite3_stmt* stmt = nullptr;
        if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW)
            value = sqlite3_column_int(stmt, 0);
        sqlite3_finalize(stmt);
    }
    sqlite3_close(db);
    return value;
}

void SqlExec(const QString& path, const char* sql)
{
    sqlite3* db = nullptr;
    if (sqlite3_open(path.toUtf8().constData(), &db) == SQLITE_OK)
        sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    sqlite3_close(db);
}

} // namespace

Q_DECLARE_METATYPE(TGridView)

class TestMainCommands : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDM_InternalData> m_data;
    TCannedWindow m_window;
    TEventSink m_sink;
    std::unique_ptr<TMainController> m_controller;

    // A collection of count items with long descriptions, 40 of them removed behind the back so that the
    // file has free pages a VACUUM would give back; open in the controller.
    QString OpenCollection(int count)
    {
        const QString path = m_dir->filePath("vault.db");
        WriteFile(path, NewBlankDatabaseBytes());
        SqlExec(path,
                QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                               "INSERT INTO tblCoins (Name, Metal, WeightG, Description) "
                               "SELECT 'Coin ' || i, 1, 31.1035, hex(randomblob(1500)) FROM n")
                    .arg(count + 40)
                    .toUtf8()
                    .constData());
        SqlExec(path, "DELETE FROM tblCoins WHERE ID <= (SELECT MIN(ID) FROM tblCoins) + 39");
        if (!m_data->ConnectDatabase(path))
            qFatal("collection did not open");
        return path;
    }
    TDBDataset& Items() { return *m_data->qDS_Items; }

private slots:
    void initTestCase()
    {
        qRegisterMetaType<TCommandState>();
        m_home = std::make_unique<TTempSettingsHome>();
        LoadEnglish();
    }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        DBPath.clear();
        CurrentView = 1;
        m_data = std::make_unique<TDM_InternalData>();
        m_window = TCannedWindow();
        m_window.Data = m_data.get();
        m_sink.Events.clear();
        m_controller = std::make_unique<TMainController>(m_data.get(), nullptr);
        m_controller->SetWindowSeam(&m_window);
        m_controller->SetEventTarget(&m_sink);
    }
    void cleanup()
    {
        m_controller.reset();
        m_data.reset();
        m_dir.reset();
    }
    void cleanupTestCase() { m_home.reset(); }

    // ---- The update rule ----

    void enablement_data()
    {
        QTest::addColumn<int>("view");
        QTest::addColumn<int>("selected");
        QTest::addColumn<bool>("connected");
        QTest::addColumn<bool>("findPanel");
        QTest::addColumn<bool>("autoWidth");
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<bool>("checked");
        // Nothing open: what needs data is off, what works on an empty dataset is on.
        AddRow("closed: add off", 1, 0, false, false, false, QString("actAdd"), false, false);
        AddRow("closed: add manually off", 1, 0, false, false, false, QString("actAddManually"), false,
               false);
        AddRow("closed: edit off", 1, 0, false, false, false, QString("actEdit"), false, false);
        AddRow("closed: stats off", 1, 0, false, false, false, QString("actStats"), false, false);
        AddRow("closed: refresh off", 1, 0, false, false, false, QString("actRefresh"), false, false);
        AddRow("closed: mints off", 1, 0, false, false, false, QString("actEditMints"), false, false);
        AddRow("closed: properties off", 1, 0, false, false, false, QString("actDBProperties"), false, false);
        AddRow("closed: regenerate off", 1, 0, false, false, false, QString("actRegenerateThumbs"), false,
               false);
        AddRow("closed: spot refresh on", 1, 0, false, false, false, QString("actRefreshSpot"), true, false);
        AddRow("closed: gold filter on, checked", 1, 0, false, false, false, QString("actFilterGold"), true,
               true);
        AddRow("closed: bars filter on, checked", 1, 0, false, false, false, QString("actFilterBars"), true,
               true);
        AddRow("closed: export on", 1, 0, false, false, false, QString("actExportPDF"), true, false);
        AddRow("closed: flip on", 1, 0, false, false, false, QString("actFlipACoin"), true, false);
        AddRow("closed: open on", 1, 0, false, false, false, QString("actDBOpen"), true, false);
        AddRow("closed: about on", 1, 0, false, false, false, QString("actAbout"), true, false);
        // Selection.
        AddRow("open, none selected: edit off", 1, 0, true, false, false, QString("actEdit"), false, false);
        AddRow("open, none selected: multi-edit off", 1, 0, true, false, false, QString("actMultiEdit"),
               false, false);
        AddRow("open, none selected: remove off", 1, 0, true, false, false, QString("actRemoveSelected"),
               false, false);
        AddRow("open, one selected: edit on", 1, 1, true, false, false, QString("actEdit"), true, false);
        AddRow("open, three selected: multi-edit on", 2, 3, true, false, false, QString("actMultiEdit"), true,
               false);
        AddRow("open, one selected: remove on", 0, 1, true, false, false, QString("actRemoveSelected"), true,
               false);
        AddRow("selection but closed: edit off", 1, 2, false, false, false, QString("actEdit"), false, false);
        AddRow("selection but closed: remove on", 1, 2, false, false, false, QString("actRemoveSelected"),
               true, false);
        AddRow("no view: selection counts as zero", -1, 5, true, false, false, QString("actRemoveSelected"),
               false, false);
        AddRow("no view: edit off", -1, 5, true, false, false, QString("actEdit"), false, false);
        // Shelf view against the others.
        AddRow("shelf: customize columns off", 3, 0, true, false, false, QString("actCustomizeColumns"),
               false, false);
        AddRow("shelf: thumb size on", 3, 0, true, false, false, QString("actThumbSize"), true, false);
        AddRow("thumbs: customize columns on", 0, 0, true, false, false, QString("actCustomizeColumns"), true,
               false);
        AddRow("thumbs: thumb size off", 0, 0, true, false, false, QString("actThumbSize"), false, false);
        AddRow("table: thumb size off", 2, 0, true, false, false, QString("actThumbSize"), false, false);
        AddRow("cards: customize columns on", 1, 0, false, false, false, QString("actCustomizeColumns"), true,
               false);
        // Table views.
        AddRow("table: expand on", 2, 0, true, false, false, QString("actExpandAll"), true, false);
        AddRow("quick stats: collapse on", 4, 0, true, false, false, QString("actCollapseAll"), true, false);
        AddRow("cards: expand off", 1, 0, true, false, false, QString("actExpandAll"), false, false);
        AddRow("shelf: collapse off", 3, 0, true, false, false, QString("actCollapseAll"), false, false);
        AddRow("table, auto width: checked", 2, 0, true, false, true, QString("actTableViewShowHorScroll"),
               true, true);
        AddRow("quick stats, auto width: checked", 4, 0, false, false, true,
               QString("actTableViewShowHorScroll"), true, true);
        AddRow("table, no auto width: unchecked", 2, 0, true, false, false,
               QString("actTableViewShowHorScroll"), true, false);
        AddRow("cards, auto width: unchecked", 1, 0, true, false, true, QString("actTableViewShowHorScroll"),
               true, false);
        // Find panel and the radio group of the views.
        AddRow("find panel up: quick search checked", 1, 0, true, true, false, QString("actQuickSearch"),
               true, true);
        AddRow("find panel down: quick search unchecked", 1, 0, true, false, false, QString("actQuickSearch"),
               true, false);
        AddRow("shelf: its view command checked", 3, 0, true, false, false, QString("actViewShelve"), true,
               true);
        AddRow("shelf: cards unchecked", 3, 0, true, false, false, QString("actViewCards"), true, false);
        AddRow("quick stats: its command checked", 4, 0, false, false, false, QString("actViewROI"), true,
               true);
    }
    void enablement()
    {
        QFETCH(int, view);
        QFETCH(int, selected);
        QFETCH(bool, connected);
        QFETCH(bool, findPanel);
        QFETCH(bool, autoWidth);
        QFETCH(QString, command);
        QFETCH(bool, enabled);
        QFETCH(bool, checked);
        TMainState state;
        state.ActiveView = TGridView(view);
        state.SelectedRecordCount = selected;
        state.Connected = connected;
        state.FindPanelVisible = findPanel;
        state.ColumnAutoWidth = autoWidth;
        const TMainCommandDef* def = FindMainCommand(command);
        QVERIFY(def);
        QCOMPARE(EvaluateEnabled(def->Enabled, state), enabled);
        QCOMPARE(EvaluateChecked(*def, state, def->InitiallyChecked), checked);
    }

    void tableIsComplete()
    {
        QSet<QString> names;
        for (const TMainCommandDef& def : MainCommands()) {
            QVERIFY2(!names.contains(def.Name), qPrintable(def.Name));
            names.insert(def.Name);
            QVERIFY2(!def.DefaultText.isEmpty(), qPrintable(def.Name));
            QVERIFY2(!def.TextKey.isEmpty() || def.Name == "actAbout", qPrintable(def.Name));
            if (!def.Shortcut.isEmpty())
                QVERIFY2(!QKeySequence(def.Shortcut).isEmpty(), qPrintable(def.Shortcut));
        }
        QCOMPARE(names.size(), 56);
        QVERIFY(!FindMainCommand("actDBSetPassword"));
        QCOMPARE(FindMainCommand("actAddManually")->Shortcut, "Ctrl+Shift+Ins");
        QCOMPARE(FindMainCommand("actExpandAll")->Shortcut, "Ctrl+Alt+Right");
    }

    // The controller reports only what changed, and an open collection switches the data commands
    // on at the next idle moment of the event loop.
    void updateRuleRunsWhenIdle()
    {
        QSignalSpy changes(m_controller.get(), &TMainController::CommandStateChanged);
        m_controller->UpdateActions();
        QVERIFY(!m_controller->CommandState("actAdd").Enabled);
        QVERIFY(m_controller->CommandState("actFilterGold").Checked);
        const qsizetype first = changes.count();
        QVERIFY(first > 0);
        m_controller->UpdateActions();
        QCOMPARE(changes.count(), first); // nothing changed: nothing reported

        m_controller->UpdateWhenIdle();
        OpenCollection(3);
        m_controller->SetSelectedRecordCount(2);
        QVERIFY(!m_controller->CommandState("actAdd").Enabled);
        QEventLoop loop; // waits, and so goes idle
        QTimer::singleShot(50, &loop, &QEventLoop::quit);
        loop.exec();
        QVERIFY(m_controller->CommandState("actAdd").Enabled);
        QVERIFY(m_controller->CommandState("actMultiEdit").Enabled);

        m_controller->SetUserChecked("actFilterGold", false);
        m_controller->UpdateActions();
        QVERIFY(!m_controller->CommandState("actFilterGold").Checked); // the rule leaves it alone
    }

    // ---- Views and the settings the window keeps ----

    void viewCommandsStoreTheView_data()
    {
        QTest::addColumn<int>("view");
        QTest::addColumn<bool>("asksThumbSize");
        AddRow("thumbs", 0, false);
        AddRow("table", 2, false);
        AddRow("shelf", 3, true);
        AddRow("quick stats", 4, false);
    }
    void viewCommandsStoreTheView()
    {
        QFETCH(int, view);
        QFETCH(bool, asksThumbSize);
        QSignalSpy thumb(m_controller.get(), &TMainController::ThumbSizeRequested);
        m_controller->SetActiveView(TGridView(view));
        QCOMPARE(CurrentView, view);
        QCOMPARE(int(m_controller->ActiveView()), view);
        QCOMPARE(thumb.count(), asksThumbSize ? 1 : 0);
    }

    void currentViewTakenAtCreation_data()
    {
        QTest::addColumn<int>("stored");
        QTest::addColumn<int>("view");
        AddRow("table", 2, 2);
        AddRow("quick stats", 4, 4);
        AddRow("out of range", 9, 1);
        AddRow("negative", -3, 1);
    }
    void currentViewTakenAtCreation()
    {
        QFETCH(int, stored);
        QFETCH(int, view);
        CurrentView = stored;
        TMainController controller(m_data.get(), nullptr);
        QCOMPARE(int(controller.ActiveView()), view);
    }

    void thumbSizeWrittenButMediumAfterRestart()
    {
        m_controller->ChooseThumbSize(2);
        QCOMPARE(ThumbSize, 2);
        SaveSettings();
        ThumbSize = 0;
        LoadSettings();
        QCOMPARE(ThumbSize, 2); // written to the store
        TMainController restarted(m_data.get(), nullptr);
        QCOMPARE(restarted.ThumbSizeListIndex(), 1); // and yet the list shows "Medium"
    }

    void windowGeometry_data()
    {
        QTest::addColumn<bool>("visible");
        QTest::addColumn<bool>("maximized");
        QTest::addColumn<int>("width");
        QTest::addColumn<bool>("maxAfter");
        AddRow("hidden: nothing", false, false, 1040, true);
        AddRow("visible, normal: size taken", true, false, 900, false);
        AddRow("visible, maximised: flag only", true, true, 1040, true);
    }
    void windowGeometry()
    {
        QFETCH(bool, visible);
        QFETCH(bool, maximized);
        QFETCH(int, width);
        QFETCH(bool, maxAfter);
        MainFormLeft = 10;
        MainFormTop = 10;
        MainFormWidth = 1040;
        MainFormMaximized = true;
        TMainController::WindowResized(visible, maximized, 900, 700);
        QCOMPARE(MainFormWidth, width);
        QCOMPARE(MainFormMaximized, maxAfter);
        QCOMPARE(MainFormLeft, 10); // never from the window
        QCOMPARE(MainFormTop, 10);
    }

    // ---- Flows ----

    void removeWithNoChangesNothing()
    {
        const QString path = OpenCollection(30);
        const qint64 size = QFileInfo(path).size();
        const int freePages = SqlInt(path, "PRAGMA freelist_count");
        QVERIFY(freePages > 0);
        m_window.Keys = {Items().keyAt(0), Items().keyAt(1)};
        TCannedAnswer answer(mrNo);
        QVERIFY(!m_controller->RemoveSelected());
        QCOMPARE(answer.Requests.size(), 1);
        QCOMPARE(answer.Requests[0].Text, "Do you want to delete selected item(s)?");
        QCOMPARE(answer.Requests[0].Type, mtConfirmation);
        QCOMPARE(answer.Requests[0].DefaultButton, mbNo);
        QCOMPARE(Items().recordCount(), 30);
        QCOMPARE(SqlInt(path, "SELECT COUNT(*) FROM tblCoins"), 30);
        QCOMPARE(SqlInt(path, "PRAGMA freelist_count"), freePages); // no VACUUM ran
        QCOMPARE(QFileInfo(path).size(), size);
    }

    void removeWithYesDeletesAndShrinks()
    {
        const QString path = OpenCollection(30);
        const qint64 size = QFileInfo(path).size();
        const QVariant kept = Items().keyAt(2);
        m_window.Keys = {Items().keyAt(0), Items().keyAt(1), Items().keyAt(5)};
        TCannedAnswer answer(mrYes);
        QVERIFY(m_controller->RemoveSelected());
        QCOMPARE(Items().recordCount(), 27);
        QCOMPARE(SqlInt(path, "SELECT COUNT(*) FROM tblCoins"), 27);
        QVERIFY(Items().rowOfKey(kept) >= 0);
        QVERIFY(Items().rowOfKey(m_window.Keys[0]) < 0);
        QCOMPARE(SqlInt(path, "PRAGMA freelist_count"), 0);
        QVERIFY2(QFileInfo(path).size() < size, "the file did not shrink");
    }

    void removeWithNothingSelectedAsksNothing()
    {
        OpenCollection(3);
        TCannedAnswer answer(mrYes);
        QVERIFY(!m_controller->RemoveSelected());
        QVERIFY(answer.Requests.isEmpty());
        QCOMPARE(Items().recordCount(), 3);
    }

    void addAppendsPickedAssetsInOrder()
    {
        OpenCollection(2);
        m_window.AssetsToPick = {"Britannia 2024", "Kangaroo 2023"};
        m_controller->Add();
        QCOMPARE(m_window.AddRequests.size(), 1);
        QCOMPARE(m_window.AddRequests[0].Mode, quint8(0));
        QCOMPARE(m_window.AddRequests[0].Tag, -1);
        QVERIFY(!m_window.AddRequests[0].AutoSearch);
        QCOMPARE(Items().recordCount(), 4);
        QCOMPARE(SqlInt(m_data->DatabasePath,
                        "SELECT COUNT(*) FROM tblCoins WHERE Name IN ('Britannia 2024', "
                        "'Kangaroo 2023')"),
                 2);
        QVERIFY(!Items().controlsDisabled());
    }

    void addManuallyAppendsAndOpensTheEditor()
    {
        OpenCollection(2);
        m_controller->AddManually();
        QCOMPARE(m_window.EditorRuns, 1);
        QCOMPARE(m_window.EditorSawState, "insert");
        QCOMPARE(SqlInt(m_data->DatabasePath, "SELECT COUNT(*) FROM tblCoins WHERE Name = 'Typed by hand'"),
                 1);
        m_controller->Edit();
        QCOMPARE(m_window.EditorRuns, 2);
        QCOMPARE(m_window.EditorSawState, "browse");
    }

    void copyToClipboard_data()
    {
        QTest::addColumn<int>("view");
        QTest::addColumn<bool>("focused");
        QTest::addColumn<QStringList>("clipboard");
        AddRow("table with a focused cell", 2, true, QStringList{"31.10"});
        AddRow("table without a focused cell", 2, false, QStringList{});
        AddRow("quick stats with a focused cell", 4, true, QStringList{"31.10"});
        AddRow("cards", 1, true, QStringList{"Coin 1\nCoin 2"});
        AddRow("thumbs", 0, false, QStringList{"Coin 1\nCoin 2"});
    }
    void copyToClipboard()
    {
        QFETCH(int, view);
        QFETCH(bool, focused);
        QFETCH(QStringList, clipboard);
        m_controller->SetActiveView(TGridView(view));
        if (focused)
            m_window.FocusedCell = "31.10";
        m_window.RecordsText = "Coin 1\nCoin 2";
        m_controller->CopyToClipboard();
        QCOMPARE(m_window.Clipboard, clipboard);
    }

    void flipTwiceRestores_data()
    {
        QTest::addColumn<QString>("shelfStart");
        QTest::addColumn<QString>("shelfFlipped");
        AddRow("obverse up", QString("ThumbFront"), QString("ThumbBack"));
        AddRow("reverse up", QString("ThumbBack"), QString("ThumbFront"));
    }
    void flipTwiceRestores()
    {
        QFETCH(QString, shelfStart);
        QFETCH(QString, shelfFlipped);
        if (shelfStart == "ThumbBack")
            m_controller->FlipACoin();
        const TPictureBindings start = m_controller->PictureBindings();
        QCOMPARE(start.ShelvePhoto, shelfStart);
        QSignalSpy changed(m_controller.get(), &TMainController::PictureBindingsChanged);
        m_controller->FlipACoin();
        const TPictureBindings once = m_controller->PictureBindings();
        QCOMPARE(once.ThumbsFront, start.ThumbsBack);
        QCOMPARE(once.ThumbsBack, start.ThumbsFront);
        QCOMPARE(once.CardsFront, start.CardsBack);
        QCOMPARE(once.CardsBack, start.CardsFront);
        QCOMPARE(once.ShelvePhoto, shelfFlipped);
        m_controller->FlipACoin();
        QVERIFY(m_controller->PictureBindings() == start);
        QCOMPARE(changed.count(), 2);
        QCOMPARE(CurrentView, 1); // no setting changed
    }

    // ---- Application menu ----

    void backstageOnOpening_data()
    {
        QTest::addColumn<bool>("connected");
        AddRow("nothing open", false);
        AddRow("a collection open", true);
    }
    void backstageOnOpening()
    {
        QFETCH(bool, connected);
        if (connected)
            OpenCollection(1);
        const TBackstageState state = m_controller->BackstageOpened();
        QCOMPARE(state.AddEnabled, connected);
        QCOMPARE(state.ExportEnabled, connected);
        QCOMPARE(state.StatsEnabled, connected);
        QVERIFY(state.DatabaseEnabled);
        QCOMPARE(state.ActivePage, "tsAdd");
    }

    void galleryItemsReachTheAddDialog_data()
    {
        QTest::addColumn<int>("group");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("firstTag");
        QTest::addColumn<int>("items");
        AddRow("gold coins", 0, QString("gGoldCoins"), 2, 19, 22);
        AddRow("silver coins", 1, QString("gSilverCoins"), 4, 1, 21);
        AddRow("gold bars", 2, QString("gGoldBars"), 3, 3, 14);
        AddRow("silver bars", 3, QString("gSilverBars"), 5, 1, 14);
    }
    void galleryItemsReachTheAddDialog()
    {
        QFETCH(int, group);
        QFETCH(QString, name);
        QFETCH(int, mode);
        QFETCH(int, firstTag);
        QFETCH(int, items);
        const TBackstageGalleryGroup& g = BackstageGalleryGroups().at(group);
        QCOMPARE(g.Name, name);
        QCOMPARE(g.Items.size(), items);
        QCOMPARE(g.Items.first().Tag, firstTag);
        for (const TBackstageGalleryItem& item : g.Items)
            m_controller->BackstageGalleryClicked(group, item.Tag);
        QCOMPARE(m_window.AddRequests.size(), items);
        for (qsizetype n = 0; n < g.Items.size(); ++n) {
            const TAddDialogRequest& request = m_window.AddRequests.at(n);
            QCOMPARE(int(request.Mode), mode);
            QCOMPARE(request.Tag, g.Items.at(n).Tag);
            QVERIFY(request.SearchText.isEmpty());
            QVERIFY(request.AutoSearch);
        }
        QVERIFY(m_sink.Events.isEmpty()); // posted, not sent
        QCoreApplication::processEvents();
        QCOMPARE(m_sink.Events, QList<int>(items, 1033));
    }

    void galleryTagsBelowOneDoNothing_data()
    {
        QTest::addColumn<int>("group");
        QTest::addColumn<int>("tag");
        QTest::addColumn<int>("requests");
        QTest::addColumn<int>("mode");
        AddRow("tag 0", 1, 0, 0, 0);
        AddRow("tag -1", 2, -1, 0, 0);
        AddRow("item in no group keeps mode 2", -1, 7, 1, 2);
    }
    void galleryTagsBelowOneDoNothing()
    {
        QFETCH(int, group);
        QFETCH(int, tag);
        QFETCH(int, requests);
        QFETCH(int, mode);
        m_controller->BackstageGalleryClicked(group, tag);
        QCoreApplication::processEvents();
        QCOMPARE(m_window.AddRequests.size(), requests);
        QCOMPARE(m_sink.Events.size(), requests);
        if (requests)
            QCOMPARE(int(m_window.AddRequests[0].Mode), mode);
    }

    void backstageSearch()
    {
        m_controller->BackstageSearch("Maple Leaf 2019");
        QCOMPARE(m_window.AddRequests.size(), 1);
        QCOMPARE(int(m_window.AddRequests[0].Mode), 1);
        QCOMPARE(m_window.AddRequests[0].Tag, -1);
        QCOMPARE(m_window.AddRequests[0].SearchText, "Maple Leaf 2019");
        QVERIFY(m_window.AddRequests[0].AutoSearch);
        QCoreApplication::processEvents();
        QCOMPARE(m_sink.Events, QList<int>{1033});
    }

    void deferredEventNumbers_data()
    {
        QTest::addColumn<int>("event");
        QTest::addColumn<int>("number");
        AddRow("release splash", int(TMainEvent::ReleaseSplash), 1025);
        AddRow("theme preview", int(TMainEvent::ThemePreview), 1030);
        AddRow("language changed", int(TMainEvent::LanguageChanged), 1031);
        AddRow("hide backstage", int(TMainEvent::HideBackstage), 1033);
        AddRow("grouping changed", int(TMainEvent::GroupingChanged), 1034);
        AddRow("position customize button", int(TMainEvent::PositionCustomizeButton), 1035);
    }
    void deferredEventNumbers()
    {
        QFETCH(int, event);
        QFETCH(int, number);
        QCOMPARE(int(MainEventType(TMainEvent(event))), number);
        m_controller->PostDeferred(TMainEvent(event));
        QCoreApplication::processEvents();
        QCOMPARE(m_sink.Events, QList<int>{number});
    }
};

QTEST_GUILESS_MAIN(TestMainCommands)
#include "tst_maincommands.moc"
