// The simple dictionaries: the table, the delivered lists, line handling, the dialog's rules and
// EditDictionary against a real settings hive in a temporary home.

#include "uDictEditor.h"
#include "uDictionaries.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTUserHive.h"

#include <QCryptographicHash>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <functional>

namespace {

const QString cRoot = QStringLiteral("Software\\Brenmoor\\Orvane");

// Answers every box with a fixed result and keeps the requests.
class TFakePresenter : public TMessagePresenter
{
public:
    int answer = mrNo;
    QList<TMessageBoxRequest> requests;

    int Present(const TMessageBoxRequest& request) override
    {
        requests.append(request);
        return answer;
    }
};

// Stands in for the dialog: records what it was given, then plays a script on the controller.
class TScriptedRunner : public TEditDictionaryDialogRunner
{
public:
    std::function<int(TEditDictionaryController&)> script;
    int runs = 0;
    QStringList shownLines;
    QString shownField;

    int Run(TEditDictionaryController& controller) override
    {
        ++runs;
        shownLines = controller.MemoLines();
        shownField = controller.FieldName();
        return script ? script(controller) : int(mrCancel);
    }
};

// A script that types text into the memo and presses OK.
std::function<int(TEditDictionaryController&)> TypeAndOk(const QString& text)
{
    return [text](TEditDictionaryController& controller) {
        controller.SetMemoText(text);
        controller.Ok();
        return int(mrOk);
    };
}

QByteArray FileHash(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

QString StoredDict(const QString& key)
{
    TZTRegistrySettings store(cHKEY_CURRENT_USER, cRoot);
    return store.GetStringValue(key, QStringLiteral("<missing>"));
}

QStringList Grades()
{
    QStringList grades{QStringLiteral("Not graded")};
    for (int g = 70; g >= 60; --g) {
        grades << QStringLiteral("MS%1").arg(g);
    }
    for (int g = 70; g >= 60; --g) {
        grades << QStringLiteral("PF%1").arg(g);
    }
    return grades;
}

} // namespace

class TestDictionaries : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_home;
    TFakePresenter m_presenter;
    TScriptedRunner m_runner;

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English"));
    }

    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        qputenv("HOME", m_home->path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", (m_home->path() + QStringLiteral("/config")).toLocal8Bit());
        QVERIFY(TZTUserHive::FileName().startsWith(m_home->path()));
        SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, cRoot));
        ORVDicts = DefaultDicts();
        ORVDefaultValues = TORVDefaultValues();
        m_presenter.requests.clear();
        m_presenter.answer = mrNo;
        SetMessagePresenter(&m_presenter);
        m_runner = TScriptedRunner();
        SetEditDictionaryDialogRunner(&m_runner);
    }

    void cleanup()
    {
        SetEditDictionaryDialogRunner(nullptr);
        SetMessagePresenter(nullptr);
        SetSettingsStore(nullptr);
    }

    void table_data()
    {
        QTest::addColumn<int>("row");
        // Settings key, combo editor, edit action, name in the dialog, item field.
        QTest::addColumn<QStringList>("names");
        const QList<QStringList> rows = {
            {"Dict.Purities", "cbPurity", "actEditPurity", "Purities", "Purity"},
            {"Dict.Edges", "cbEdge", "actEditEdge", "Edges", "Edge"},
            {"Dict.Conditions", "cbCondition", "actEditCondition", "Conditions", "Condition"},
            {"Dict.Statuses", "cbStatus", "actEditStatus", "Statuses", "Status"},
            {"Dict.Packagings", "cbPackaging", "actEditPackaging", "Packaging", "Packaging"},
            {"Dict.Locations", "cbLocation", "actEditLocation", "Locations", "Location"},
            {"Dict.Owners", "cbOwner", "actEditOwner", "Owners", "Owner"},
            {"Dict.Stores", "cbStore", "actEditStore", "Stores", "Store"},
            {"Dict.Grades", "cbGrade", "actEditGrade", "Grades", "Grade"},
            {"Dict.GradeServices", "cbGradeService", "actEditGradeService", "Grade services", "GradeService"},
        };
        for (int row = 0; row < rows.size(); ++row) {
            QTest::newRow(qPrintable(rows[row][0])) << row << rows[row];
        }
    }

    void table()
    {
        QFETCH(int, row);
        QFETCH(QStringList, names);
        const TDictInfo& info = DictTable()[static_cast<std::size_t>(row)];
        QCOMPARE(QStringList({info.settingsKey(), info.comboEditor(), info.editAction(), info.dialogName(),
                              info.itemField()}),
                 names);
        for (const QString& name : {names[0], names[1], names[2], names[4]}) {
            QCOMPARE(FindDict(name), &info);
        }
        // The field pointer reaches the list of its own settings key, and no other.
        TORVDicts dicts;
        DictOf(dicts, info).Value = names[0];
        int hits = 0;
        for (const TDictInfo& other : DictTable()) {
            hits += DictOf(dicts, other).Value == names[0] ? 1 : 0;
        }
        QCOMPARE(hits, 1);
    }

    // Each row's field is saved under the row's settings key.
    void fieldsMatchSettingsKeys()
    {
        for (const TDictInfo& info : DictTable()) {
            DictOf(ORVDicts, info).Value = info.settingsKey() + QStringLiteral("\r\n");
        }
        SaveSettings();
        for (const TDictInfo& info : DictTable()) {
            QCOMPARE(StoredDict(info.settingsKey()), info.settingsKey() + QStringLiteral("\r\n"));
        }
    }

    void findDictUnknown()
    {
        QCOMPARE(FindDict(QStringLiteral("cbpurity")), nullptr);
        QCOMPARE(FindDict(QString()), nullptr);
        QCOMPARE(FindDict(QStringLiteral("lcbMints")), nullptr);
    }

    // The delivered lists, entry by entry.
    void defaultLists_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QStringList>("entries");
        QTest::newRow("Purities") << 0 << QStringList{".999", ".9999", ".99999", ".900",
                                                      ".986", ".916",  ".9166",  ".9167"};
        QTest::newRow("Edges") << 1 << QStringList{"Plain",  "Grooved",  "Reeded",
                                                   "Milled", "Serrated", "Inscribed"};
        QTest::newRow("Conditions") << 2
                                    << QStringList{"Brilliant uncirculated (BU)",
                                                   "Uncirculated (Unc)",
                                                   "About Uncirculated (AU)",
                                                   "Poor (PO)",
                                                   "Fair (Fr)",
                                                   "Almost Good (AG)",
                                                   "Good (G)",
                                                   "Very Good (VG)",
                                                   "Fine (F)",
                                                   "Very Fine (VF)",
                                                   "Extremely Fine (EF)",
                                                   "Circulated"};
        QTest::newRow("Statuses") << 3 << QStringList{"In collection", "Wanted", "Waiting for delivery"};
        QTest::newRow("Packagings") << 4 << QStringList{"No packaging",    "Coin box",
                                                        "Coin tube",       "Assay card",
                                                        "Plastic capsule", "Plastic sealed package",
                                                        "Slabbed"};
        QTest::newRow("Locations") << 5 << QStringList{"Vault", "Secret location #1", "Secret location #2"};
        QTest::newRow("Owners") << 6 << QStringList{"Me"};
        QTest::newRow("Stores") << 7 << QStringList{"Local coin shop", "Apmex",
                                                    "SD Bullion",      "JM Bullion",
                                                    "GoldSilver",      "Coin Invest",
                                                    "Bullion By Post", "Silver Gold Bull",
                                                    "Provident Metals"};
        QTest::newRow("Grades") << 8 << Grades();
        QTest::newRow("GradeServices") << 9 << QStringList{"Not graded", "PCGS", "NGC", "ICG", "ANACS"};
    }

    void defaultLists()
    {
        QFETCH(int, row);
        QFETCH(QStringList, entries);
        const TORVDicts dicts = DefaultDicts();
        const TDict& dict = DictOf(dicts, DictTable()[static_cast<std::size_t>(row)]);
        QCOMPARE(DictLines(dict.Default), entries);
        // The raw text: every entry followed by CR LF, the last one too, nothing else.
        QCOMPARE(dict.Default, entries.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n"));
        QCOMPARE(dict.Value, dict.Default);
    }

    void dictLines_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("empty") << QString() << QStringList{};
        QTest::newRow("one, no end") << "a" << QStringList{"a"};
        QTest::newRow("CR LF") << "a\r\nb\r\n" << QStringList{"a", "b"};
        QTest::newRow("LF") << "a\nb\n" << QStringList{"a", "b"};
        QTest::newRow("CR") << "a\rb\r" << QStringList{"a", "b"};
        QTest::newRow("mixed, last unended") << "a\r\nb\nc\rd" << QStringList{"a", "b", "c", "d"};
        QTest::newRow("LF CR is two ends") << "a\n\rb" << QStringList{"a", "", "b"};
        QTest::newRow("inner empty line") << "a\r\n\r\nb\r\n" << QStringList{"a", "", "b"};
        QTest::newRow("one empty line") << "\r\n" << QStringList{""};
        QTest::newRow("blanks kept") << "  a b \r\n\t\r\n" << QStringList{"  a b ", "\t"};
        QTest::newRow("no trimming, no sorting, duplicates") << "z\r\n a\r\nz\r\n"
                                                             << QStringList{"z", " a", "z"};
    }

    void dictLines()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, lines);
        QCOMPARE(DictLines(text), lines);
        // Normalising: CR LF after every line and no other line end, and the lines survive.
        const QString normal = NormalizeDictText(text);
        QCOMPARE(DictLines(normal), lines);
        QCOMPARE(normal.count(QStringLiteral("\r\n")), lines.size());
        QCOMPARE(normal.count(u'\r'), lines.size());
        QCOMPARE(normal.count(u'\n'), lines.size());
        QVERIFY(lines.isEmpty() ? normal.isEmpty() : normal.endsWith(QStringLiteral("\r\n")));
        QCOMPARE(NormalizeDictText(normal), normal);
    }

    // btnOK: blank lines go from last to first; the rest stays exactly as typed.
    void okDropsBlankLines_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("stored");
        QTest::newRow("nothing blank") << "b\na\n"
                                       << "b\r\na\r\n";
        QTest::newRow("blank lines everywhere") << "\n  \nVault\n\t\nSafe\n \n\n"
                                                << "Vault\r\nSafe\r\n";
        QTest::newRow("blanks inside and around kept") << "  Bank  box \n"
                                                       << "  Bank  box \r\n";
        QTest::newRow("duplicates kept, no sorting") << "z\na\nz"
                                                     << "z\r\na\r\nz\r\n";
        QTest::newRow("adjacent blank lines") << "a\n \n \n \nb"
                                              << "a\r\nb\r\n";
        QTest::newRow("only blank lines") << " \n\t\n\n   "
                                          << "";
        QTest::newRow("empty") << ""
                               << "";
    }

    void okDropsBlankLines()
    {
        QFETCH(QString, typed);
        QFETCH(QString, stored);
        m_runner.script = TypeAndOk(typed);
        QStringList combo{QStringLiteral("old")};
        QVERIFY(EditDictionary(ORVDicts.Locations, QStringLiteral("Locations"), combo));
        QCOMPARE(ORVDicts.Locations.Value, stored);
        QCOMPARE(combo, DictLines(stored));
        QCOMPARE(StoredDict(QStringLiteral("Dict.Locations")), stored);
        QCOMPARE(ORVDicts.Locations.Default, DefaultDicts().Locations.Default);
    }

    void onlyBlankLinesStoredAsEmptyText()
    {
        m_runner.script = TypeAndOk(QStringLiteral("   \r\n\r\n\t \r\n"));
        QStringList combo = DictLines(ORVDicts.Owners.Value);
        QVERIFY(EditDictionary(ORVDicts.Owners, QStringLiteral("Owners"), combo));
        QVERIFY(ORVDicts.Owners.Value.isEmpty());
        QVERIFY(combo.isEmpty());
        QCOMPARE(StoredDict(QStringLiteral("Dict.Owners")), QString());
        // Read again at the next start, the empty list stays empty rather than falling back.
        ORVDicts.Owners.Value = QStringLiteral("stale");
        LoadSettings();
        QVERIFY(ORVDicts.Owners.Value.isEmpty());
    }

    void dialogIsFilledFromTheDictionary()
    {
        ORVDicts.Stores.Value = QStringLiteral("One\r\nTwo\r\n");
        QStringList combo;
        QVERIFY(!EditDictionary(ORVDicts.Stores, QStringLiteral("Stores"), combo));
        QCOMPARE(m_runner.runs, 1);
        QCOMPARE(m_runner.shownLines, QStringList({"One", "Two"}));
        QCOMPARE(m_runner.shownField, QStringLiteral("Stores"));
    }

    void cancelStoresNothing()
    {
        const QString before = ORVDicts.Edges.Value;
        m_runner.script = [](TEditDictionaryController& c) {
            c.SetMemoText(QStringLiteral("changed\n"));
            c.Cancel();
            return int(mrCancel);
        };
        QStringList combo{QStringLiteral("kept")};
        QVERIFY(!EditDictionary(ORVDicts.Edges, QStringLiteral("Edges"), combo));
        QCOMPARE(ORVDicts.Edges.Value, before);
        QCOMPARE(combo, QStringList{QStringLiteral("kept")});
        QVERIFY(!QFile::exists(TZTUserHive::FileName()));
    }

    void resetThenCancelKeepsOldList()
    {
        ORVDicts.Locations.Value = QStringLiteral("Safe\r\n");
        m_presenter.answer = mrYes;
        QStringList memoAfterReset;
        m_runner.script = [&memoAfterReset](TEditDictionaryController& c) {
            const bool reset = c.ResetToDefault();
            memoAfterReset = c.MemoLines();
            c.Cancel();
            return reset ? int(mrCancel) : int(mrAbort);
        };
        QStringList combo{QStringLiteral("Safe")};
        QVERIFY(!EditDictionary(ORVDicts.Locations, QStringLiteral("Locations"), combo));
        QCOMPARE(memoAfterReset, DictLines(DefaultDicts().Locations.Default));
        QCOMPARE(ORVDicts.Locations.Value, QStringLiteral("Safe\r\n"));
        QCOMPARE(combo, QStringList{QStringLiteral("Safe")});
        QVERIFY(!QFile::exists(TZTUserHive::FileName()));
    }

    void resetThenOkStoresDefault()
    {
        ORVDicts.Locations.Value = QStringLiteral("Safe\r\n");
        m_presenter.answer = mrYes;
        m_runner.script = [](TEditDictionaryController& c) {
            c.ResetToDefault();
            c.Ok();
            return int(mrOk);
        };
        QStringList combo;
        QVERIFY(EditDictionary(ORVDicts.Locations, QStringLiteral("Locations"), combo));
        QCOMPARE(ORVDicts.Locations.Value, DefaultDicts().Locations.Default);
        QCOMPARE(StoredDict(QStringLiteral("Dict.Locations")), DefaultDicts().Locations.Default);
    }

    // The question: a confirmation with Yes and No, No the default; No keeps the memo.
    void resetAsksConfirmation_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("reset");
        QTest::newRow("Yes") << int(mrYes) << true;
        QTest::newRow("No") << int(mrNo) << false;
        QTest::newRow("box closed") << int(mrCancel) << false;
    }

    void resetAsksConfirmation()
    {
        QFETCH(int, answer);
        QFETCH(bool, reset);
        m_presenter.answer = answer;
        TEditDictionaryController controller;
        controller.SetDictionary(TDict{QStringLiteral("Mine\r\n"), QStringLiteral("D1\r\nD2\r\n")});
        controller.SetMemoText(QStringLiteral("typed\nlines"));
        QCOMPARE(controller.ResetToDefault(), reset);
        QCOMPARE(m_presenter.requests.size(), 1);
        const TMessageBoxRequest& request = m_presenter.requests.first();
        QCOMPARE(request.Text,
                 QStringLiteral("Are you sure you want to reset this dictionary to its default values?"));
        QCOMPARE(request.Type, mtConfirmation);
        QCOMPARE(request.Buttons, TMsgDlgButtons(mbYes | mbNo));
        QCOMPARE(request.DefaultButton, mbNo);
        QCOMPARE(controller.MemoLines(), reset ? QStringList({"D1", "D2"}) : QStringList({"typed", "lines"}));
        QCOMPARE(controller.Result(), mrNone);
    }

    void dialogTexts()
    {
        QCOMPARE(TEditDictionaryController::CaptionText(), QStringLiteral("Edit dictionary"));
        QCOMPARE(TEditDictionaryController::ResetToDefaultsText(), QStringLiteral("Reset to defaults"));
        QCOMPARE(TEditDictionaryController::DescText(),
                 QStringLiteral("In this dialog you can change what will appear in combo-box related to the "
                                "following field:"));
    }

    // Lines end with CR LF in the store, whatever the memo gave.
    void storedWithCrLf_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("LF") << "Vault\nBank\n";
        QTest::newRow("LF, last unended") << "Vault\nBank";
        QTest::newRow("CR") << "Vault\rBank\r";
        QTest::newRow("CR LF") << "Vault\r\nBank\r\n";
        QTest::newRow("paragraph ends mixed") << "Vault\r\nBank";
    }

    void storedWithCrLf()
    {
        QFETCH(QString, typed);
        m_runner.script = TypeAndOk(typed);
        QStringList combo;
        QVERIFY(EditDictionary(ORVDicts.Locations, QStringLiteral("Locations"), combo));
        QCOMPARE(StoredDict(QStringLiteral("Dict.Locations")), QStringLiteral("Vault\r\nBank\r\n"));
        QCOMPARE(combo, QStringList({"Vault", "Bank"}));
    }

    // The dictionary only suggests: removing an entry touches no default value and no item.
    void removingVaultChangesNoItem()
    {
        QTemporaryDir dir;
        const QString dbPath = dir.filePath(QStringLiteral("items.sqlite"));
        const QString connection = QStringLiteral("items");
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
            db.setDatabaseName(dbPath);
            QVERIFY(db.open());
            QSqlQuery q(db);
            QVERIFY(q.exec(QStringLiteral("CREATE TABLE tblCoins (ID INTEGER PRIMARY KEY, Location TEXT)")));
            QVERIFY(q.exec(QStringLiteral("INSERT INTO tblCoins (Location) VALUES ('Vault'), ('Vault'), "
                                          "('Secret location #1')")));
        }
        const QByteArray hashBefore = FileHash(dbPath);
        const QStringList connectionsBefore = QSqlDatabase::connectionNames();

        m_runner.script = TypeAndOk(QStringLiteral("Secret location #1\nSecret location #2\n"));
        QStringList combo = DictLines(ORVDicts.Locations.Value);
        QVERIFY(EditDictionary(ORVDicts.Locations, QStringLiteral("Locations"), combo));

        QCOMPARE(combo, QStringList({"Secret location #1", "Secret location #2"}));
        QCOMPARE(ORVDefaultValues.Location, QStringLiteral("Vault"));
        TZTRegistrySettings store(cHKEY_CURRENT_USER, cRoot);
        QCOMPARE(store.GetStringValue(QStringLiteral("DefaultValues.Location"), QString()),
                 QStringLiteral("Vault"));
        // No connection was made and the file is untouched.
        QCOMPARE(QSqlDatabase::connectionNames(), connectionsBefore);
        QCOMPARE(FileHash(dbPath), hashBefore);
        {
            QSqlDatabase db = QSqlDatabase::database(connection);
            QSqlQuery q(db);
            QVERIFY(q.exec(QStringLiteral("SELECT COUNT(*) FROM tblCoins WHERE Location = 'Vault'")));
            QVERIFY(q.next());
            QCOMPARE(q.value(0).toInt(), 2);
            QVERIFY(q.exec(QStringLiteral("SELECT total_changes()")));
            QVERIFY(q.next());
            QCOMPARE(q.value(0).toInt(), 3);
            db.close();
        }
        QSqlDatabase::removeDatabase(connection);
    }

    void noRunnerEndsCancelled()
    {
        SetEditDictionaryDialogRunner(nullptr);
        const QString before = ORVDicts.Grades.Value;
        QStringList combo{QStringLiteral("x")};
        QVERIFY(!EditDictionary(ORVDicts.Grades, QStringLiteral("Grades"), combo));
        QCOMPARE(ORVDicts.Grades.Value, before);
        QCOMPARE(combo, QStringList{QStringLiteral("x")});
    }

    void okResultWithoutButtonStillDropsBlankLines()
    {
        m_runner.script = [](TEditDictionaryController& c) {
            c.SetMemoText(QStringLiteral("a\n \nb"));
            return int(mrOk);
        };
        QStringList combo;
        QVERIFY(EditDictionary(ORVDicts.Stores, QStringLiteral("Stores"), combo));
        QCOMPARE(ORVDicts.Stores.Value, QStringLiteral("a\r\nb\r\n"));
    }

    // After OK the list is in the store even if the process dies right after.
    void savedBeforeTheProcessDies()
    {
        QProcess child;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("ORV_DICTS_CHILD"), QStringLiteral("ok-and-die"));
        env.insert(QStringLiteral("HOME"), m_home->path());
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home->path() + QStringLiteral("/config"));
        child.setProcessEnvironment(env);
        child.start(QCoreApplication::applicationFilePath(), {});
        QVERIFY(child.waitForFinished(60000));
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QCOMPARE(StoredDict(QStringLiteral("Dict.Locations")), QStringLiteral("Vault\r\nBank box 12\r\n"));
        QCOMPARE(StoredDict(QStringLiteral("DefaultValues.Location")), QStringLiteral("Vault"));
        // The whole table went with it, so the next start reads every value.
        TZTRegistrySettings store(cHKEY_CURRENT_USER, cRoot);
        QCOMPARE(store.GetIntValue(QStringLiteral("CurrentView"), -1), 1);
    }
};

// The child run by savedBeforeTheProcessDies: OK in the dialog, then killed at once.
static int RunChild(const QByteArray& mode)
{
    QStandardPaths::setTestModeEnabled(true);
    if (mode != "ok-and-die") {
        return 2;
    }
    SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, cRoot));
    TScriptedRunner runner;
    runner.script = TypeAndOk(QStringLiteral("\nVault\n  \nBank box 12\n"));
    SetEditDictionaryDialogRunner(&runner);
    QStringList combo;
    if (!EditDictionary(ORVDicts.Locations, QStringLiteral("Locations"), combo)) {
        return 3;
    }
    std::raise(SIGKILL);
    return 4;
}

int main(int argc, char* argv[])
{
    const QByteArray mode = qgetenv("ORV_DICTS_CHILD");
    if (!mode.isEmpty()) {
        QCoreApplication app(argc, argv);
        return RunChild(mode);
    }
    QCoreApplication app(argc, argv);
    TestDictionaries test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_dictionaries.moc"
