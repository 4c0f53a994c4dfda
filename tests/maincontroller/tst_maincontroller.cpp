// The main window's logic without a screen: the database commands on real collection files with
// canned dialog answers, the document name, the enablement rule, the spot button rules, the
// re-read after new prices and the close query.

#include "dmInternalData.h"
#include "uDBError.h"
#include "uMainController.h"
#include "uSpot.h"
#include "uTemplate.h"
#include "uValuation.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

#include <memory>

namespace {

const QString cRoot = QStringLiteral("Software\\Brenmoor\\Orvane");

// Answers the file dialogs from lists and remembers what they were asked.
class TCannedDialogs : public TFileDialogSeam
{
public:
    QStringList OpenAnswers;
    QStringList SaveAnswers;
    QList<TFileDialogRequest> Requests;

    QString ExecuteOpenDialog(const TFileDialogRequest& request) override
    {
        Requests << request;
        return OpenAnswers.isEmpty() ? QString() : OpenAnswers.takeFirst();
    }
    QString ExecuteSaveDialog(const TFileDialogRequest& request) override
    {
        Requests << request;
        return SaveAnswers.isEmpty() ? QString() : SaveAnswers.takeFirst();
    }
};

QByteArray FileHash(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

// Row count of tblCoins read by SQLite directly, -1 when the file can't be read.
int CoinRowsInFile(const QString& path)
{
    sqlite3* db = nullptr;
    int rows = -1;
    if (sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_stmt* stmt = nullptr;
        if (sqlite3_prepare_v2(db, "SELECT COUNT(*) FROM tblCoins", -1, &stmt, nullptr) == SQLITE_OK &&
            sqlite3_step(stmt) == SQLITE_ROW)
            rows = sqlite3_column_int(stmt, 0);
        sqlite3_finalize(stmt);
    }
    sqlite3_close(db);
    return rows;
}

void InsertCoinBehindTheBack(const QString& path, const QString& name)
{
    sqlite3* db = nullptr;
    QCOMPARE(sqlite3_open(path.toUtf8().constData(), &db), SQLITE_OK);
    sqlite3_stmt* stmt = nullptr;
    QCOMPARE(sqlite3_prepare_v2(db, "INSERT INTO tblCoins (Name, Metal, WeightG) VALUES (?, 1, 31.1035)", -1,
                                &stmt, nullptr),
             SQLITE_OK);
    const QByteArray utf8 = name.toUtf8();
    sqlite3_bind_text(stmt, 1, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
    QCOMPARE(sqlite3_step(stmt), SQLITE_DONE);
    sqlite3_finalize(stmt);
    sqlite3_close(db);
}

void WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

TSpotPrice Spot(int metal, double price, double changeAbs,
                const QString& date = QStringLiteral("2024-05-06 10:15"))
{
    TSpotPrice spot;
    spot.Metal = metal;
    spot.Price = price;
    spot.Currency = QStringLiteral("USD");
    spot.DateC = date;
    spot.ChangeAbs = changeAbs;
    return spot;
}

} // namespace

class TestMainController : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDM_InternalData> m_data;
    TCannedDialogs m_dialogs;
    std::unique_ptr<TMainController> m_controller;

    QString Path(const QString& name) const { return m_dir->filePath(name); }

    // A fresh blank collection file.
    QString MakeCollection(const QString& name)
    {
        const QString path = Path(name);
        WriteFile(path, NewBlankDatabaseBytes());
        return path;
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        qputenv("HOME", m_home->path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", (m_home->path() + QStringLiteral("/config")).toLocal8Bit());
        SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, cRoot));
        QVERIFY(LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English")));
    }

    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        DBPath.clear();
        SettingsStore().SetStringValue(QStringLiteral("DefaultDBFolder"), QString(), m_dir->path());
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

    // ---- actDBNew ----------------------------------------------------------------------------------

    void newMakesTheTemplateAndOpensIt()
    {
        QSignalSpy names(m_controller.get(), &TMainController::DocumentNameChanged);
        m_dialogs.SaveAnswers << Path(QStringLiteral("Vault")); // no extension typed
        m_controller->DBNew();

        const QString file = Path(QStringLiteral("Vault.db"));
        QVERIFY(QFileInfo::exists(file));
        QCOMPARE(FileHash(file),
                 QCryptographicHash::hash(NewBlankDatabaseBytes(), QCryptographicHash::Sha256));
        QVERIFY(m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), QStringLiteral("Vault.db"));
        QCOMPARE(names.count(), 1);
        QCOMPARE(QFileInfo(DBPath), QFileInfo(file));
        QCOMPARE(m_controller->ItemCount(), 0);

        // The dialog was asked with the database filter, "db" and the folder of DefaultDBFolder.
        QCOMPARE(m_dialogs.Requests.size(), 1);
        QCOMPARE(m_dialogs.Requests[0].Filter,
                 QStringLiteral("Database File (*.db)|*.db|All files (*.*)|*.*"));
        QCOMPARE(m_dialogs.Requests[0].DefaultExt, QStringLiteral("db"));
        QCOMPARE(m_dialogs.Requests[0].InitialDir, m_dir->path());
    }

    void newReplacesAnExistingFileWithoutAsking()
    {
        const QString file = Path(QStringLiteral("old.db"));
        WriteFile(file, QByteArray("not a database at all"));
        m_dialogs.SaveAnswers << file;
        m_controller->DBNew();
        QVERIFY(m_controller->Connected());
        QCOMPARE(QFileInfo(file).size(), qint64(NewBlankDatabaseBytes().size()));
        QCOMPARE(CoinRowsInFile(file), 0);
    }

    void newOverTheOpenFileGivesABlankCollection()
    {
        const QString file = MakeCollection(QStringLiteral("open.db"));
        InsertCoinBehindTheBack(file, QStringLiteral("Maple Leaf"));
        m_dialogs.OpenAnswers << file;
        m_controller->DBOpen();
        QCOMPARE(m_controller->ItemCount(), 1);

        m_dialogs.SaveAnswers << file;
        m_controller->DBNew();
        QVERIFY(m_controller->Connected());
        QCOMPARE(m_controller->ItemCount(), 0);
        QCOMPARE(CoinRowsInFile(file), 0);
    }

    void initialFolderIsReadAtEachUse()
    {
        const QString other = m_dir->filePath(QStringLiteral("elsewhere"));
        QVERIFY(QDir().mkpath(other));
        m_controller->DBOpen(); // cancelled
        SettingsStore().SetStringValue(QStringLiteral("DefaultDBFolder"), QString(), other);
        m_controller->DBSaveAs(); // cancelled
        QCOMPARE(m_dialogs.Requests.size(), 2);
        QCOMPARE(m_dialogs.Requests[0].InitialDir, m_dir->path());
        QCOMPARE(m_dialogs.Requests[1].InitialDir, other);
    }

    void cancelledDialogChangesNothing_data()
    {
        QTest::addColumn<int>("command");
        QTest::newRow("new") << 0;
        QTest::newRow("open") << 1;
        QTest::newRow("save as") << 2;
    }

    void cancelledDialogChangesNothing()
    {
        QFETCH(int, command);
        const QString file = MakeCollection(QStringLiteral("kept.db"));
        m_dialogs.OpenAnswers << file;
        m_controller->DBOpen();
        QSignalSpy changed(m_controller.get(), &TMainController::DatabaseChanged);
        const QStringList before = QDir(m_dir->path()).entryList(QDir::Files);

        switch (command) {
        case 0:
            m_controller->DBNew();
            break;
        case 1:
            m_controller->DBOpen();
            break;
        default:
            m_controller->DBSaveAs();
            break;
        }
        QVERIFY(m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), QStringLiteral("kept.db"));
        QCOMPARE(changed.count(), 0);
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), before);
    }

    // ---- actDBOpen ---------------------------------------------------------------------------------

    void openShowsTheNameAndListsTheItems()
    {
        const QString file = MakeCollection(QStringLiteral("Coins 2024.db"));
        InsertCoinBehindTheBack(file, QStringLiteral("Krugerrand"));
        InsertCoinBehindTheBack(file, QStringLiteral("Britannia"));
        m_dialogs.OpenAnswers << file;
        m_controller->DBOpen();
        QVERIFY(m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), QStringLiteral("Coins 2024.db"));
        QCOMPARE(m_controller->ItemCount(), 2);
        QCOMPARE(QFileInfo(m_data->DatabasePath), QFileInfo(file));
    }

    void failedOpenShowsThePreviousName()
    {
        const QString first = MakeCollection(QStringLiteral("first.db"));
        m_dialogs.OpenAnswers << first << Path(QStringLiteral("gone.db"));
        m_controller->DBOpen();
        QSignalSpy names(m_controller.get(), &TMainController::DocumentNameChanged);
        m_controller->DBOpen(); // the file does not exist: silently false

        QVERIFY(m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), QStringLiteral("first.db"));
        QCOMPARE(names.count(), 0);
        QCOMPARE(QFileInfo(DBPath), QFileInfo(first));
    }

    void openWithoutExtensionTakesTheDefault()
    {
        MakeCollection(QStringLiteral("typed.db"));
        m_dialogs.OpenAnswers << Path(QStringLiteral("typed"));
        m_controller->DBOpen();
        QVERIFY(m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), QStringLiteral("typed.db"));
    }

    void openOfADamagedFileRaisesAndDisconnects()
    {
        const QString sound = MakeCollection(QStringLiteral("sound.db"));
        const QString damaged = Path(QStringLiteral("damaged.db"));
        WriteFile(damaged, QByteArray(8192, 'x'));
        m_dialogs.OpenAnswers << sound << damaged;
        m_controller->DBOpen();
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, m_controller->DBOpen());
        // The old connection is already gone; the names still point at the old file.
        QVERIFY(!m_controller->Connected());
        QCOMPARE(m_controller->DocumentName(), QStringLiteral("sound.db"));
        QCOMPARE(QFileInfo(DBPath), QFileInfo(sound));
        QVERIFY(!m_controller->CommandEnabled(TMainCommand::DBProperties));

        // A sound file can be reached again.
        m_dialogs.OpenAnswers << sound;
        m_controller->DBOpen();
        QVERIFY(m_controller->Connected());
    }

    // ---- actDBSaveAs -------------------------------------------------------------------------------

    void saveAsCopiesAndOpensTheCopy()
    {
        const QString source = MakeCollection(QStringLiteral("source.db"));
        InsertCoinBehindTheBack(source, QStringLiteral("Philharmonic"));
        m_dialogs.OpenAnswers << source;
        m_controller->DBOpen();
        const QByteArray sourceHash = FileHash(source);

        const QString copy = Path(QStringLiteral("copy.db"));
        m_dialogs.SaveAnswers << copy;
        m_controller->DBSaveAs();
        QCOMPARE(FileHash(copy), sourceHash);
        QCOMPARE(m_controller->DocumentName(), QStringLiteral("copy.db"));
        QCOMPARE(QFileInfo(DBPath), QFileInfo(copy));
        QCOMPARE(m_controller->ItemCount(), 1);

        // Work now goes to the copy, the source stays as it was.
        TDBDataset& items = *m_data->qDS_Items;
        items.append();
        items.fieldByName(QStringLiteral("Name")).setAsString(QStringLiteral("Libertad"));
        items.fieldByName(QStringLiteral("Metal")).setAsInteger(1);
        items.fieldByName(QStringLiteral("WeightG")).setAsFloat(31.1035);
        items.post();
        QCOMPARE(CoinRowsInFile(copy), 2);
        QCOMPARE(CoinRowsInFile(source), 1);
    }

    void saveAsOntoTheOpenFileChangesNothing()
    {
        const QString file = MakeCollection(QStringLiteral("same.db"));
        InsertCoinBehindTheBack(file, QStringLiteral("Eagle"));
        m_dialogs.OpenAnswers << file;
        m_controller->DBOpen();
        const QByteArray hash = FileHash(file);
        m_dialogs.SaveAnswers << file;
        m_controller->DBSaveAs();
        QVERIFY(m_controller->Connected());
        QCOMPARE(FileHash(file), hash);
        QCOMPARE(m_controller->DocumentName(), QStringLiteral("same.db"));
        QCOMPARE(m_controller->ItemCount(), 1);
    }

    void saveAsWhileNotConnectedOnlyOpens_data()
    {
        QTest::addColumn<bool>("targetExists");
        QTest::newRow("existing target is opened") << true;
        QTest::newRow("missing target stays missing") << false;
    }

    void saveAsWhileNotConnectedOnlyOpens()
    {
        QFETCH(bool, targetExists);
        const QString target = Path(QStringLiteral("target.db"));
        if (targetExists) {
            MakeCollection(QStringLiteral("target.db"));
            InsertCoinBehindTheBack(target, QStringLiteral("Panda"));
        }
        const QByteArray hash = FileHash(target);
        m_dialogs.SaveAnswers << target;
        m_controller->DBSaveAs();
        QCOMPARE(QFileInfo::exists(target), targetExists);
        QCOMPARE(m_controller->Connected(), targetExists);
        QCOMPARE(m_controller->DocumentName(), targetExists ? QStringLiteral("target.db") : QString());
        if (targetExists) {
            QCOMPARE(FileHash(target), hash);
            QCOMPARE(m_controller->ItemCount(), 1);
        }
    }

    // ---- Enablement ---------------------------------------------------------------------------------

    void enablementRule_data()
    {
        QTest::addColumn<int>("command");
        QTest::addColumn<bool>("connected");
        QTest::addColumn<bool>("enabled");
        const struct
        {
            const char* name;
            TMainCommand command;
            bool whenClosed;
        } rows[] = {{"new", TMainCommand::DBNew, true},
                    {"open", TMainCommand::DBOpen, true},
                    {"save as", TMainCommand::DBSaveAs, true},
                    {"properties", TMainCommand::DBProperties, false},
                    {"exit", TMainCommand::Exit, true}};
        for (const auto& row : rows) {
            QTest::addRow("%s, closed", row.name) << int(row.command) << false << row.whenClosed;
            QTest::addRow("%s, open", row.name) << int(row.command) << true << true;
        }
    }

    void enablementRule()
    {
        QFETCH(int, command);
        QFETCH(bool, connected);
        QFETCH(bool, enabled);
        QCOMPARE(MainCommandEnabled(TMainCommand(command), connected), enabled);
    }

    void propertiesFollowTheConnection()
    {
        QVERIFY(!m_controller->CommandEnabled(TMainCommand::DBProperties));
        QVERIFY(m_controller->CommandEnabled(TMainCommand::DBSaveAs));
        m_dialogs.SaveAnswers << Path(QStringLiteral("p.db"));
        m_controller->DBNew();
        QVERIFY(m_controller->CommandEnabled(TMainCommand::DBProperties));
        m_data->ADConnection->close();
        QVERIFY(!m_controller->CommandEnabled(TMainCommand::DBProperties));
    }

    // ---- The last collection at start ----------------------------------------------------------------

    void connectLastDatabase_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("connected");
        QTest::newRow("empty DBPath") << "empty" << false;
        QTest::newRow("deleted file") << "missing" << false;
        QTest::newRow("sound file") << "sound" << true;
    }

    void connectLastDatabase()
    {
        QFETCH(QString, kind);
        QFETCH(bool, connected);
        if (kind == QLatin1String("missing"))
            DBPath = Path(QStringLiteral("deleted.db"));
        else if (kind == QLatin1String("sound"))
            DBPath = MakeCollection(QStringLiteral("last.db"));
        const QString before = DBPath;
        QCOMPARE(m_controller->ConnectLastDatabase(), connected);
        QCOMPARE(m_controller->Connected(), connected);
        QCOMPARE(m_controller->DocumentName(), connected ? QStringLiteral("last.db") : QString());
        QCOMPARE(QFileInfo(DBPath).absoluteFilePath(), QFileInfo(before).absoluteFilePath());
        QCOMPARE(DBPath.isEmpty(), before.isEmpty());
    }

    void connectLastDamagedDatabaseRaises()
    {
        DBPath = Path(QStringLiteral("broken.db"));
        WriteFile(DBPath, QByteArray(4096, '\x7f'));
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, m_controller->ConnectLastDatabase());
        QVERIFY(!m_controller->Connected());
        QCOMPARE(DBPath, Path(QStringLiteral("broken.db")));
    }

    // ---- Spot buttons -------------------------------------------------------------------------------

    void spotGlyph_data()
    {
        QTest::addColumn<double>("changeAbs");
        QTest::addColumn<bool>("fall");
        QTest::newRow("rise") << 12.5 << false;
        QTest::newRow("no change shows a rise") << 0.0 << false;
        QTest::newRow("negative zero shows a rise") << -0.0 << false;
        QTest::newRow("small fall") << -0.0001 << true;
        QTest::newRow("fall") << -30.0 << true;
    }

    void spotGlyph()
    {
        QFETCH(double, changeAbs);
        QFETCH(bool, fall);
        QCOMPARE(SpotGlyphFor(changeAbs) == TSpotGlyph::Fall, fall);
        TSpotPrices prices;
        prices.Add(Spot(mtPalladium, 900, changeAbs));
        const std::optional<TSpotButtonText> text =
            SpotButtonTextFor(prices, mtPalladium, QStringLiteral("USD"));
        QVERIFY(text);
        QCOMPARE(text->Glyph == TSpotGlyph::Fall, fall);
    }

    void spotCaptionAndHint_data()
    {
        QTest::addColumn<int>("metal");
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("price");
        QTest::addColumn<QString>("currency");
        QTest::newRow("gold in dollars") << int(mtGold) << "Gold" << 2345.67 << "USD";
        QTest::newRow("silver in euros") << int(mtSilver) << "Silver" << 27.5 << "EUR";
        QTest::newRow("copper") << int(mtCopper) << "Copper" << 0.29 << "GBP";
        QTest::newRow("rhodium at zero") << int(mtRhodium) << "Rhodium" << 0.0 << "USD";
    }

    void spotCaptionAndHint()
    {
        QFETCH(int, metal);
        QFETCH(QString, name);
        QFETCH(double, price);
        QFETCH(QString, currency);
        TSpotPrices prices;
        prices.Add(Spot(metal, price, 1.0, QStringLiteral("2024-05-06 10:15:00")));
        const std::optional<TSpotButtonText> text = SpotButtonTextFor(prices, metal, currency);
        QVERIFY(text);
        QCOMPARE(text->Caption, name + QStringLiteral(": ") + FormatUsersCurrency(price, currency));
        QCOMPARE(text->Hint, QStringLiteral("Last updated: 2024-05-06 10:15:00"));
    }

    void spotWithoutEntryLeavesTheButton()
    {
        TSpotPrices prices;
        prices.Add(Spot(mtGold, 2000, 1));
        prices.Add(Spot(mtSilver, 25, -1));
        for (int metal = mtPlatinum; metal <= mtCopper; ++metal)
            QVERIFY(!SpotButtonTextFor(prices, metal, QStringLiteral("USD")));
        QVERIFY(SpotButtonTextFor(prices, mtGold, QStringLiteral("USD")));
        QVERIFY(!SpotButtonTextFor(TSpotPrices(), mtGold, QStringLiteral("USD")));
        QVERIFY(!SpotButtonTextFor(prices, -1, QStringLiteral("USD")));
        QVERIFY(!SpotButtonTextFor(prices, MetalCount, QStringLiteral("USD")));
    }

    void spotTwiceTakesTheFirst()
    {
        TSpotPrices prices;
        prices.Add(Spot(mtGold, 2000, -5, QStringLiteral("first")));
        prices.Add(Spot(mtGold, 3000, 5, QStringLiteral("second")));
        const std::optional<TSpotButtonText> text = SpotButtonTextFor(prices, mtGold, QStringLiteral("USD"));
        QVERIFY(text);
        QCOMPARE(text->Hint, QStringLiteral("Last updated: first"));
        QCOMPARE(text->Glyph, TSpotGlyph::Fall);
    }

    void metalNamesFollowTheLanguage()
    {
        XMLLanguage().SetLanguageFolder(qEnvironmentVariable("ORV_SOURCE_DIR") +
                                        QStringLiteral("/data/lang/"));
        QVERIFY(LoadLanguage(QStringLiteral("German")));
        QCOMPARE(MetalDisplayName(mtSilver), QStringLiteral("Silber"));
        QCOMPARE(MetalDisplayName(mtCopper), QStringLiteral("Kupfer"));
        TSpotPrices prices;
        prices.Add(Spot(mtSilver, 25, 0, QStringLiteral("heute")));
        QCOMPARE(SpotButtonTextFor(prices, mtSilver, QStringLiteral("EUR"))->Hint,
                 QStringLiteral("Zuletzt aktualisiert: heute"));
        XMLLanguage().SetLanguageFolder(QString());
        QVERIFY(LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English")));
        QCOMPARE(MetalDisplayName(mtSilver), QStringLiteral("Silver"));
        QCOMPARE(MetalDisplayName(7), QString());
    }

    // ---- After new prices ----------------------------------------------------------------------------

    void newPricesReReadTheItems()
    {
        QVERIFY(!m_controller->RefreshItemsForNewPrices()); // nothing open
        const QString file = MakeCollection(QStringLiteral("prices.db"));
        m_dialogs.OpenAnswers << file;
        m_controller->DBOpen();
        QCOMPARE(m_controller->ItemCount(), 0);

        InsertCoinBehindTheBack(file, QStringLiteral("Kangaroo"));
        QSignalSpy resets(m_data->qDS_Items, &TDBDataset::afterReset);
        QVERIFY(m_controller->RefreshItemsForNewPrices());
        QCOMPARE(m_controller->ItemCount(), 1);
        QCOMPARE(resets.count(), 1); // one reset for the whole re-read
        QVERIFY(!m_data->qDS_Items->controlsDisabled());
    }

    void newPricesSkipAnEditedRow_data()
    {
        QTest::addColumn<bool>("insert");
        QTest::newRow("edit") << false;
        QTest::newRow("insert") << true;
    }

    void newPricesSkipAnEditedRow()
    {
        QFETCH(bool, insert);
        const QString file = MakeCollection(QStringLiteral("editing.db"));
        InsertCoinBehindTheBack(file, QStringLiteral("Lunar"));
        m_dialogs.OpenAnswers << file;
        m_controller->DBOpen();
        TDBDataset& items = *m_data->qDS_Items;
        if (insert) {
            items.append();
        } else {
            items.first();
            items.edit();
        }
        items.fieldByName(QStringLiteral("Name")).setAsString(QStringLiteral("Being typed"));
        InsertCoinBehindTheBack(file, QStringLiteral("Behind the back"));

        QVERIFY(!m_controller->RefreshItemsForNewPrices());
        QCOMPARE(items.state(), insert ? TDatasetState::Insert : TDatasetState::Edit);
        QCOMPARE(items.fieldByName(QStringLiteral("Name")).asString(), QStringLiteral("Being typed"));
        QVERIFY(!items.controlsDisabled());
    }

    // ---- Close query ---------------------------------------------------------------------------------

    void closeQueryPostsPendingEdits()
    {
        const QString file = MakeCollection(QStringLiteral("close.db"));
        m_dialogs.OpenAnswers << file;
        m_controller->DBOpen();
        TDBDataset& items = *m_data->qDS_Items;
        items.append();
        items.fieldByName(QStringLiteral("Name")).setAsString(QStringLiteral("Unposted Sovereign"));
        items.fieldByName(QStringLiteral("Metal")).setAsInteger(0);
        items.fieldByName(QStringLiteral("WeightG")).setAsFloat(7.32);
        QCOMPARE(CoinRowsInFile(file), 0);
        m_controller->CloseQuery();
        QCOMPARE(items.state(), TDatasetState::Browse);
        QCOMPARE(CoinRowsInFile(file), 1);
    }

    void closeQueryWithAFailingPostRaises()
    {
        const QString file = MakeCollection(QStringLiteral("fail.db"));
        m_dialogs.OpenAnswers << file;
        m_controller->DBOpen();
        TDBDataset& items = *m_data->qDS_Items;
        items.append();
        items.fieldByName(QStringLiteral("Metal")).setAsInteger(0); // no Name: a required field
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, m_controller->CloseQuery());
        QCOMPARE(items.state(), TDatasetState::Insert);
        QCOMPARE(CoinRowsInFile(file), 0);
    }

    void closeQueryWhenNothingIsOpen() { m_controller->CloseQuery(); }

    // ---- Dialog helpers ------------------------------------------------------------------------------

    void filterToQt_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("qt");
        QTest::newRow("database") << "Database File (*.db)|*.db|All files (*.*)|*.*"
                                  << "Database File (*.db);;All files (*.*)";
        QTest::newRow("patterns added") << "Pictures|*.png;*.jpg"
                                        << "Pictures (*.png *.jpg)";
        QTest::newRow("dangling description ignored") << "Text|*.txt|Orphan"
                                                      << "Text (*.txt)";
        QTest::newRow("empty") << ""
                               << "";
    }

    void filterToQt()
    {
        QFETCH(QString, filter);
        QFETCH(QString, qt);
        QCOMPARE(DialogFilterToQt(filter), qt);
    }

    void defaultExt_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("result");
        QTest::newRow("added") << "/tmp/coins"
                               << "/tmp/coins.db";
        QTest::newRow("kept") << "/tmp/coins.sqlite"
                              << "/tmp/coins.sqlite";
        QTest::newRow("dot in the folder only") << "/tmp/v1.2/coins"
                                                << "/tmp/v1.2/coins.db";
        QTest::newRow("cancelled") << ""
                                   << "";
    }

    void defaultExt()
    {
        QFETCH(QString, name);
        QFETCH(QString, result);
        QCOMPARE(ApplyDefaultExt(name, QStringLiteral("db")), result);
    }
};

QTEST_GUILESS_MAIN(TestMainController)
#include "tst_maincontroller.moc"
