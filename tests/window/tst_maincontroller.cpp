// The main window's logic without a screen: the database commands on real collection files with
// canned dialog answers, the document name, the enablement rule, the spot button rules, the
// values after new prices (also from a real refresh against a local server) and the close query.

#include "dmInternalData.h"
#include "support_common.h"
#include "support_datarow.h"
#include "support_httpserver.h"
#include "uDBError.h"
#include "uMainController.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uSpot.h"
#include "uTemplate.h"
#include "uValuation.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QDir>
#include <QSignalSpy>
#include <QtTest>

#include <sqlite3.h>

#include <memory>

namespace {

// Answers the file dialogs from a list and remembers what they were asked.
class TCannedDialogs : public TFileDialogSeam
{
public:
    QStringList Answers;
    QList<TFileDialogRequest> Requests;
    QString ExecuteOpenDialog(const TFileDialogRequest& request) override { return Next(request); }
    QString ExecuteSaveDialog(const TFileDialogRequest& request) override { return Next(request); }

private:
    QString Next(const TFileDialogRequest& request)
    {
        Requests << request;
        return Answers.isEmpty() ? QString() : Answers.takeFirst();
    }
};

// Runs one statement on a file with SQLite directly; the first column of the first row, or -1.
int SqlOnFile(const QString& path, const char* sql, const QByteArray& text = {})
{
    sqlite3* db = nullptr;
    int value = -1;
    if (sqlite3_open(path.toUtf8().constData(), &db) == SQLITE_OK) {
        sqlite3_stmt* stmt = nullptr;
        if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) == SQLITE_OK) {
            sqlite3_bind_text(stmt, 1, text.constData(), int(text.size()), SQLITE_TRANSIENT);
            if (sqlite3_step(stmt) == SQLITE_ROW)
                value = sqlite3_column_int(stmt, 0);
        }
        sqlite3_finalize(stmt);
    }
    sqlite3_close(db);
    return value;
}

int CoinRowsInFile(const QString& path)
{
    return SqlOnFile(path, "SELECT COUNT(*) FROM tblCoins");
}

void InsertCoinBehindTheBack(const QString& path, const QString& name)
{
    SqlOnFile(path, "INSERT INTO tblCoins (Name, Metal, WeightG) VALUES (?, 1, 31.1035)", name.toUtf8());
}

TSpotPrice Spot(int metal, double price, double changeAbs, const QString& date = "2024-05-06 10:15")
{
    return {metal, price, "USD", date, changeAbs, "0"};
}

// The spot value of the current item: what new prices must reach.
double SpotValue(TDBDataset& items)
{
    return items.fieldByName("SpotValue").asFloat();
}

} // namespace

class TestMainController : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDM_InternalData> m_data;
    TCannedDialogs m_dialogs;
    std::unique_ptr<TMainController> m_controller;

    QString Path(const QString& name) const { return m_dir->filePath(name); }

    // A fresh blank collection file, with items of the given names.
    QString MakeCollection(const QString& name, const QStringList& items = {})
    {
        WriteFile(Path(name), NewBlankDatabaseBytes());
        for (const QString& item : items)
            InsertCoinBehindTheBack(Path(name), item);
        return Path(name);
    }
    // Runs a command with the given dialog answer.
    void Run(void (TMainController::*command)(), const QString& answer = {})
    {
        m_dialogs.Answers << answer;
        (m_controller.get()->*command)();
    }
    TDBDataset& Items() { return *m_data->qDS_Items; }

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
        SettingsStore().SetStringValue("DefaultDBFolder", QString(), m_dir->path());
        m_data = std::make_unique<TDM_InternalData>();
        m_dialogs = TCannedDialogs();
        m_controller = std::make_unique<TMainController>(m_data.get(), &m_dialogs);
    }
    void cleanup()
    {
        m_controller.reset();
        m_data.reset();
        m_dir.reset();
        SpotPrices().Clear();
    }
    void cleanupTestCase() { m_home.reset(); }

    // New writes the template (over any file of that name, the open collection too, without asking)
    // and opens it; its dialog is asked with the database filter, "db" and DefaultDBFolder.
    void newMakesTheTemplateAndOpensIt_data()
    {
        QTest::addColumn<QString>("existing");
        AddRow("no file yet", "");
        AddRow("over a file that is no database", "text");
        AddRow("over the open collection", "open");
    }
    void newMakesTheTemplateAndOpensIt()
    {
        QFETCH(QString, existing);
        const QString file = Path("Vault.db");
        if (existing == "open")
            Run(&TMainController::DBOpen, MakeCollection("Vault.db", {"Maple Leaf"}));
        else if (existing == "text")
            WriteFile(file, "not a database at all");
        m_dialogs.Requests.clear();
        QSignalSpy names(m_controller.get(), &TMainController::DocumentNameChanged);
        Run(&TMainController::DBNew, Path("Vault")); // no extension typed
        QCOMPARE(ReadFile(file), NewBlankDatabaseBytes());
        QVERIFY(m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), "Vault.db");
        QCOMPARE(names.count(), existing == "open" ? 0 : 1);
        QCOMPARE(QFileInfo(DBPath), QFileInfo(file));
        QCOMPARE(m_controller->ItemCount(), 0);
        QCOMPARE(m_dialogs.Requests.size(), 1);
        QCOMPARE(m_dialogs.Requests[0].Filter, "Database File (*.db)|*.db|All files (*.*)|*.*");
        QCOMPARE(m_dialogs.Requests[0].DefaultExt, "db");
        QCOMPARE(m_dialogs.Requests[0].InitialDir, m_dir->path());
    }

    void initialFolderIsReadAtEachUse()
    {
        const QString other = Path("elsewhere");
        QVERIFY(QDir().mkpath(other));
        Run(&TMainController::DBOpen); // cancelled
        SettingsStore().SetStringValue("DefaultDBFolder", QString(), other);
        Run(&TMainController::DBSaveAs); // cancelled
        QCOMPARE(m_dialogs.Requests.size(), 2);
        QCOMPARE(m_dialogs.Requests[0].InitialDir, m_dir->path());
        QCOMPARE(m_dialogs.Requests[1].InitialDir, other);
    }

    void cancelledDialogChangesNothing_data()
    {
        QTest::addColumn<int>("command");
        AddRow("new", 0);
        AddRow("open", 1);
        AddRow("save as", 2);
    }
    void cancelledDialogChangesNothing()
    {
        QFETCH(int, command);
        Run(&TMainController::DBOpen, MakeCollection("kept.db"));
        QSignalSpy changed(m_controller.get(), &TMainController::DatabaseChanged);
        const QStringList before = QDir(m_dir->path()).entryList(QDir::Files);
        Run(QList{&TMainController::DBNew, &TMainController::DBOpen, &TMainController::DBSaveAs}[command]);
        QVERIFY(m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), "kept.db");
        QCOMPARE(changed.count(), 0);
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), before);
    }

    void openShowsTheNameAndListsTheItems()
    {
        const QString file = MakeCollection("Coins 2024.db", {"Krugerrand", "Britannia"});
        Run(&TMainController::DBOpen, Path("Coins 2024")); // without extension: the default one
        QVERIFY(m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), "Coins 2024.db");
        QCOMPARE(m_controller->ItemCount(), 2);
        QCOMPARE(QFileInfo(m_data->DatabasePath), QFileInfo(file));

        // A file that does not exist: silently nothing, the name stays.
        QSignalSpy names(m_controller.get(), &TMainController::DocumentNameChanged);
        Run(&TMainController::DBOpen, Path("gone.db"));
        QVERIFY(m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), "Coins 2024.db");
        QCOMPARE(names.count(), 0);
        QCOMPARE(QFileInfo(DBPath), QFileInfo(file));
    }

    void openOfADamagedFileRaisesAndDisconnects()
    {
        const QString sound = MakeCollection("sound.db");
        WriteFile(Path("damaged.db"), QByteArray(8192, 'x'));
        Run(&TMainController::DBOpen, sound);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, Run(&TMainController::DBOpen, Path("damaged.db")));
        // The old connection is already gone; the names still point at the old file.
        QVERIFY(!m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), "sound.db");
        QCOMPARE(QFileInfo(DBPath), QFileInfo(sound));
        QVERIFY(!m_controller->CommandEnabled(TMainCommand::DBProperties));
        Run(&TMainController::DBOpen, sound); // a sound file can be reached again
        QVERIFY(m_controller->Connected());
    }

    void saveAsCopiesAndOpensTheCopy()
    {
        const QString source = MakeCollection("source.db", {"Philharmonic"});
        Run(&TMainController::DBOpen, source);
        const QByteArray sourceBytes = ReadFile(source);
        const QString copy = Path("copy.db");
        Run(&TMainController::DBSaveAs, copy);
        QCOMPARE(ReadFile(copy), sourceBytes);
        QCOMPARE(m_controller->DocumentName(), "copy.db");
        QCOMPARE(QFileInfo(DBPath), QFileInfo(copy));
        QCOMPARE(m_controller->ItemCount(), 1);

        // Work now goes to the copy, the source stays as it was.
        Items().append();
        Items().fieldByName("Name").setAsString("Libertad");
        Items().fieldByName("Metal").setAsInteger(1);
        Items().fieldByName("WeightG").setAsFloat(31.1035);
        Items().post();
        QCOMPARE(CoinRowsInFile(copy), 2);
        QCOMPARE(CoinRowsInFile(source), 1);
    }

    void saveAsWhileNotConnectedOnlyOpens_data()
    {
        QTest::addColumn<bool>("targetExists");
        AddRow("existing target is opened", true);
        AddRow("missing target stays missing", false);
    }
    void saveAsWhileNotConnectedOnlyOpens()
    {
        QFETCH(bool, targetExists);
        const QString target = Path("target.db");
        if (targetExists)
            MakeCollection("target.db", {"Panda"});
        const QByteArray bytes = ReadFile(target);
        Run(&TMainController::DBSaveAs, target);
        QCOMPARE(QFileInfo::exists(target), targetExists);
        QCOMPARE(m_controller->Connected(), targetExists);
        QCOMPARE(m_controller->DocumentName(), targetExists ? "target.db" : "");
        QCOMPARE(ReadFile(target), bytes);
        QCOMPARE(m_controller->ItemCount(), targetExists ? 1 : -1);
    }

    void enablementRule()
    {
        for (TMainCommand command : {TMainCommand::DBNew, TMainCommand::DBOpen, TMainCommand::DBSaveAs,
                                     TMainCommand::DBProperties, TMainCommand::Exit}) {
            QVERIFY(MainCommandEnabled(command, true));
            QCOMPARE(MainCommandEnabled(command, false), command != TMainCommand::DBProperties);
        }
        QVERIFY(!m_controller->CommandEnabled(TMainCommand::DBProperties));
        Run(&TMainController::DBNew, Path("p.db"));
        QVERIFY(m_controller->CommandEnabled(TMainCommand::DBProperties));
        m_data->ADConnection->close();
        QVERIFY(!m_controller->CommandEnabled(TMainCommand::DBProperties));
    }

    void spotGlyph_data()
    {
        QTest::addColumn<double>("changeAbs");
        QTest::addColumn<bool>("fall");
        AddRow("rise", 12.5, false);
        AddRow("no change shows a rise", 0.0, false);
        AddRow("negative zero shows a rise", -0.0, false);
        AddRow("small fall", -0.0001, true);
    }
    void spotGlyph()
    {
        QFETCH(double, changeAbs);
        QFETCH(bool, fall);
        QCOMPARE(SpotGlyphFor(changeAbs) == TSpotGlyph::Fall, fall);
        TSpotPrices prices;
        prices.Add(Spot(mtPalladium, 900, changeAbs));
        const std::optional<TSpotButtonText> text = SpotButtonTextFor(prices, mtPalladium, "USD");
        QVERIFY(text);
        QCOMPARE(text->Glyph == TSpotGlyph::Fall, fall);
    }

    void spotCaptionAndHint_data()
    {
        QTest::addColumn<int>("metal");
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("price");
        QTest::addColumn<QString>("currency");
        AddRow("gold in dollars", int(mtGold), "Gold", 2345.67, "USD");
        AddRow("silver in euros", int(mtSilver), "Silver", 27.5, "EUR");
        AddRow("rhodium at zero", int(mtRhodium), "Rhodium", 0.0, "USD");
    }
    void spotCaptionAndHint()
    {
        QFETCH(int, metal);
        QFETCH(QString, name);
        QFETCH(double, price);
        QFETCH(QString, currency);
        TSpotPrices prices;
        prices.Add(Spot(metal, price, 1.0, "2024-05-06 10:15:00"));
        const std::optional<TSpotButtonText> text = SpotButtonTextFor(prices, metal, currency);
        QVERIFY(text);
        QCOMPARE(text->Caption, name + ": " + FormatUsersCurrency(price, currency));
        QCOMPARE(text->Hint, "Last updated: 2024-05-06 10:15:00");
    }

    // A metal without an entry leaves its button; of two entries for one metal the first counts.
    void spotEntriesOfAReply()
    {
        TSpotPrices prices;
        prices.Add(Spot(mtGold, 2000, -5, "first"));
        prices.Add(Spot(mtSilver, 25, -1));
        prices.Add(Spot(mtGold, 3000, 5, "second"));
        for (int metal = mtPlatinum; metal <= mtCopper; ++metal)
            QVERIFY(!SpotButtonTextFor(prices, metal, "USD"));
        QVERIFY(!SpotButtonTextFor(TSpotPrices(), mtGold, "USD"));
        QVERIFY(!SpotButtonTextFor(prices, -1, "USD"));
        QVERIFY(!SpotButtonTextFor(prices, MetalCount, "USD"));
        const std::optional<TSpotButtonText> text = SpotButtonTextFor(prices, mtGold, "USD");
        QVERIFY(text);
        QCOMPARE(text->Hint, "Last updated: first");
        QCOMPARE(text->Glyph, TSpotGlyph::Fall);
    }

    void metalNamesFollowTheLanguage()
    {
        XMLLanguage().SetLanguageFolder(qEnvironmentVariable("ORV_SOURCE_DIR") + "/data/lang/");
        QVERIFY(LoadLanguage("German"));
        QCOMPARE(MetalDisplayName(mtSilver), "Silber");
        QCOMPARE(MetalDisplayName(mtCopper), "Kupfer");
        TSpotPrices prices;
        prices.Add(Spot(mtSilver, 25, 0, "heute"));
        QCOMPARE(SpotButtonTextFor(prices, mtSilver, "EUR")->Hint, "Zuletzt aktualisiert: heute");
        XMLLanguage().SetLanguageFolder(QString());
        LoadEnglish();
        QCOMPARE(MetalDisplayName(mtSilver), "Silver");
        QCOMPARE(MetalDisplayName(7), QString());
    }

    // New prices reach every item without reading the file: a row added behind the back stays
    // unseen until the next read, and the views hear of it once.
    void newPricesValueTheItemsInMemory()
    {
        QVERIFY(!m_controller->RefreshItemsForNewPrices()); // nothing open
        const QString file = MakeCollection("prices.db", {"Kangaroo"});
        Run(&TMainController::DBOpen, file);
        QCOMPARE(SpotValue(Items()), 0.0);
        InsertCoinBehindTheBack(file, "Behind the back");
        SpotPrices().Add(Spot(mtSilver, 30, 0));
        QSignalSpy resets(m_data->qDS_Items, &TDBDataset::afterReset);
        QVERIFY(m_controller->RefreshItemsForNewPrices());
        QCOMPARE(m_controller->ItemCount(), 1);
        QCOMPARE(resets.count(), 1);
        QCOMPARE(SpotValue(Items()), 30.0);
        QVERIFY(!Items().controlsDisabled());

        // Items still to be read are valued as they arrive.
        QVERIFY(m_controller->ConnectLastDatabase(TRowFetch::Deferred));
        QVERIFY(!m_controller->RefreshItemsForNewPrices());
        QVERIFY(m_controller->FetchPendingItems());
        QVERIFY(!m_controller->FetchPendingItems());
        QCOMPARE(m_controller->ItemCount(), 2);
        for (Items().first(); !Items().eof(); Items().next())
            QCOMPARE(SpotValue(Items()), 30.0);
    }

    // A refresh against a real server whose reply is held while the collection opens: the items end
    // with the new prices, whether the reply comes after the rows or before them.
    void collectionOpenedWhileAReplyIsInFlight_data()
    {
        QTest::addColumn<bool>("deferred");
        AddRow("reply after the rows", false);
        AddRow("reply before the rows", true);
    }
    void collectionOpenedWhileAReplyIsInFlight()
    {
        QFETCH(bool, deferred);
        TTestHttpServer server;
        QVERIFY(server.IsListening());
        SettingsStore().SetStringValue("CatalogueServer", QString(), server.BaseURL());
        Currency = "USD";
        const QByteArray reply =
            R"([{"BaseCurrency":"XAG","Price":32.5,"DateC":"now","ChangeAbs":1,"ChangePerc":"1"}])";
        server.SetReply("/orv/spot.php", {200, EncryptBytes(reply, PayloadKeyA, PayloadKeyB), "held"});
        SpotPrices().OnLoaded = [this](TSpotPrices*) { m_controller->RefreshItemsForNewPrices(); };
        SpotPrices().Refresh();
        QVERIFY(server.WaitForRequests("/orv/spot.php", 1, 10000));

        DBPath = MakeCollection("flight.db", {"Maple", "Eagle"});
        QVERIFY(m_controller->ConnectLastDatabase(deferred ? TRowFetch::Deferred : TRowFetch::Now));
        server.Release("held");
        QVERIFY(QTest::qWaitFor([] { return !SpotPrices().Busy; }, 20000));
        SpotPrices().OnLoaded = nullptr;
        QCOMPARE(SpotPrices().SpotPriceOf(mtSilver), 32.5);
        QCOMPARE(m_controller->FetchPendingItems(), deferred);
        QCOMPARE(m_controller->ItemCount(), 2);
        for (Items().first(); !Items().eof(); Items().next())
            QCOMPARE(SpotValue(Items()), 32.5);
        SettingsStore().SetStringValue("CatalogueServer", QString(), QString());
    }

    void newPricesSkipAnEditedRow_data()
    {
        QTest::addColumn<bool>("insert");
        AddRow("edit", false);
        AddRow("insert", true);
    }
    void newPricesSkipAnEditedRow()
    {
        QFETCH(bool, insert);
        const QString file = MakeCollection("editing.db", {"Lunar"});
        Run(&TMainController::DBOpen, file);
        insert ? Items().append() : Items().edit();
        Items().fieldByName("Name").setAsString("Being typed");
        SpotPrices().Add(Spot(mtSilver, 30, 0));
        QVERIFY(!m_controller->RefreshItemsForNewPrices());
        QCOMPARE(Items().state(), insert ? TDatasetState::Insert : TDatasetState::Edit);
        QCOMPARE(Items().fieldByName("SpotValue").asFloat(), 0.0); // the old price until the next read
        QCOMPARE(Items().fieldByName("Name").asString(), "Being typed");
        QVERIFY(!Items().controlsDisabled());
    }

    // The close query posts a pending edit; one that cannot be posted raises and stays.
    void closeQueryPostsPendingEdits()
    {
        m_controller->CloseQuery(); // nothing open: nothing to do
        const QString file = MakeCollection("close.db");
        Run(&TMainController::DBOpen, file);
        Items().append();
        Items().fieldByName("Metal").setAsInteger(0);
        Items().fieldByName("WeightG").setAsFloat(7.32);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, m_controller->CloseQuery()); // no Name: a required field
        QCOMPARE(Items().state(), TDatasetState::Insert);
        QCOMPARE(CoinRowsInFile(file), 0);
        Items().fieldByName("Name").setAsString("Unposted Sovereign");
        m_controller->CloseQuery();
        QCOMPARE(Items().state(), TDatasetState::Browse);
        QCOMPARE(CoinRowsInFile(file), 1);
    }

    void dialogHelpers()
    {
        QCOMPARE(DialogFilterToQt("Database File (*.db)|*.db|All files (*.*)|*.*"),
                 "Database File (*.db);;All files (*.*)");
        QCOMPARE(DialogFilterToQt("Pictures|*.png;*.jpg"), "Pictures (*.png *.jpg)");
        QCOMPARE(DialogFilterToQt("Text|*.txt|Orphan"), "Text (*.txt)"); // a dangling description is ignored
        QCOMPARE(DialogFilterToQt(""), "");
        QCOMPARE(ApplyDefaultExt("/tmp/coins", "db"), "/tmp/coins.db");
        QCOMPARE(ApplyDefaultExt("/tmp/coins.sqlite", "db"), "/tmp/coins.sqlite");
        QCOMPARE(ApplyDefaultExt("/tmp/v1.2/coins", "db"), "/tmp/v1.2/coins.db");
        QCOMPARE(ApplyDefaultExt("", "db"), "");
    }
};

QTEST_GUILESS_MAIN(TestMainController)
#include "tst_maincontroller.moc"
