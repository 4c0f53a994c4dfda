// The simple dictionaries: the table, the delivered lists, line handling, the dialog's rules and
// EditDictionary against a real settings hive in a temporary home.

#include "support_common.h"
#include "support_datarow.h"
#include "uDictEditor.h"
#include "uDictionaries.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTUserHive.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

#include <csignal>
#include <functional>

namespace {

using TScript = std::function<int(TEditDictionaryController&)>;

// Stands in for the dialog: records what it was given, then plays a script on the controller.
class TScriptedRunner : public TEditDictionaryDialogRunner
{
public:
    TScript script;
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
TScript TypeAndOk(const QString& text)
{
    return [text](TEditDictionaryController& controller) {
        controller.SetMemoText(text);
        controller.Ok();
        return int(mrOk);
    };
}

QString StoredDict(const QString& key)
{
    return UserStore().GetStringValue(key, "<missing>");
}

} // namespace

class TestDictionaries : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    TRecordingPresenter m_presenter;
    TScriptedRunner m_runner;

    // Runs EditDictionary on the Locations list with the given script and combo items.
    bool EditLocations(const TScript& script, QStringList& combo)
    {
        m_runner.script = script;
        return EditDictionary(ORVDicts.Locations, "Locations", combo);
    }

private slots:
    void initTestCase() { LoadEnglish(); }

    void init()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        ORVDicts = DefaultDicts();
        ORVDefaultValues = TORVDefaultValues();
        m_presenter.Requests.clear();
        m_presenter.Answer = mrNo;
        SetMessagePresenter(&m_presenter);
        m_runner = TScriptedRunner();
        SetEditDictionaryDialogRunner(&m_runner);
    }

    void cleanup()
    {
        SetEditDictionaryDialogRunner(nullptr);
        SetMessagePresenter(nullptr);
        m_home.reset();
    }

    // Settings key, combo editor, edit action, name in the dialog, item field of each row.
    void table()
    {
        const QStringList rows{
            "Dict.Purities|cbPurity|actEditPurity|Purities|Purity",
            "Dict.Edges|cbEdge|actEditEdge|Edges|Edge",
            "Dict.Conditions|cbCondition|actEditCondition|Conditions|Condition",
            "Dict.Statuses|cbStatus|actEditStatus|Statuses|Status",
            "Dict.Packagings|cbPackaging|actEditPackaging|Packaging|Packaging",
            "Dict.Locations|cbLocation|actEditLocation|Locations|Location",
            "Dict.Owners|cbOwner|actEditOwner|Owners|Owner",
            "Dict.Stores|cbStore|actEditStore|Stores|Store",
            "Dict.Grades|cbGrade|actEditGrade|Grades|Grade",
            "Dict.GradeServices|cbGradeService|actEditGradeService|Grade services|GradeService"};
        QCOMPARE(DictTable().size(), std::size_t(rows.size()));
        for (std::size_t row = 0; row < DictTable().size(); ++row) {
            const TDictInfo& info = DictTable()[row];
            const QStringList names = rows[qsizetype(row)].split('|');
            QCOMPARE(QStringList({info.settingsKey(), info.comboEditor(), info.editAction(),
                                  info.dialogName(), info.itemField()}),
                     names);
            for (const QString& name : {names[0], names[1], names[2], names[4]})
                QCOMPARE(FindDict(name), &info);
            // Each row's list is saved under the row's settings key.
            DictOf(ORVDicts, info).Value = names[0] + "\r\n";
        }
        SaveSettings();
        for (const QString& row : rows)
            QCOMPARE(StoredDict(row.section('|', 0, 0)), row.section('|', 0, 0) + "\r\n");
        QCOMPARE(FindDict("cbpurity"), nullptr);
        QCOMPARE(FindDict(QString()), nullptr);
        QCOMPARE(FindDict("lcbMints"), nullptr);
    }

    // The delivered lists, entry by entry.
    void defaultLists_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("entries"); // joined by '|'
        QString grades = "Not graded";
        for (const char* kind : {"MS", "PF"})
            for (int g = 70; g >= 60; --g)
                grades += QString("|%1%2").arg(kind).arg(g);
        AddRow("Purities", 0, ".999|.9999|.99999|.900|.986|.916|.9166|.9167");
        AddRow("Edges", 1, "Plain|Grooved|Reeded|Milled|Serrated|Inscribed");
        AddRow("Conditions", 2,
               "Brilliant uncirculated (BU)|Uncirculated (Unc)|About Uncirculated (AU)|"
               "Poor (PO)|Fair (Fr)|Almost Good (AG)|Good (G)|Very Good (VG)|Fine (F)|"
               "Very Fine (VF)|Extremely Fine (EF)|Circulated");
        AddRow("Statuses", 3, "In collection|Wanted|Waiting for delivery");
        AddRow("Packagings", 4,
               "No packaging|Coin box|Coin tube|Assay card|Plastic capsule|"
               "Plastic sealed package|Slabbed");
        AddRow("Locations", 5, "Vault|Secret location #1|Secret location #2");
        AddRow("Owners", 6, "Me");
        AddRow("Stores", 7,
               "Local coin shop|Apmex|SD Bullion|JM Bullion|GoldSilver|Coin Invest|"
               "Bullion By Post|Silver Gold Bull|Provident Metals");
        AddRow("Grades", 8, grades);
        AddRow("GradeServices", 9, "Not graded|PCGS|NGC|ICG|ANACS");
    }
    void defaultLists()
    {
        QFETCH(int, row);
        QFETCH(QString, entries);
        const TORVDicts dicts = DefaultDicts();
        const TDict& dict = DictOf(dicts, DictTable()[static_cast<std::size_t>(row)]);
        QCOMPARE(DictLines(dict.Default), entries.split('|'));
        // The raw text: every entry followed by CR LF, the last one too, nothing else.
        QCOMPARE(dict.Default, entries.replace('|', "\r\n") + "\r\n");
        QCOMPARE(dict.Value, dict.Default);
    }

    void dictLines_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("lines");
        AddRow("empty", QString(), QStringList{});
        AddRow("one, no end", "a", QStringList{"a"});
        AddRow("mixed, last unended", "a\r\nb\nc\rd", QStringList{"a", "b", "c", "d"});
        AddRow("LF CR is two ends", "a\n\rb", QStringList{"a", "", "b"});
        AddRow("inner empty line", "a\r\n\r\nb\r\n", QStringList{"a", "", "b"});
        AddRow("one empty line", "\r\n", QStringList{""});
        AddRow("blanks, duplicates kept", " a b \r\n\t\r\n a b \r\n", QStringList{" a b ", "\t", " a b "});
    }
    void dictLines()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, lines);
        QCOMPARE(DictLines(text), lines);
        // Normalising: CR LF after every line and no other line end, and the lines survive.
        const QString normal = NormalizeDictText(text);
        QCOMPARE(DictLines(normal), lines);
        QCOMPARE(normal.count("\r\n"), lines.size());
        QCOMPARE(normal.count('\r') + normal.count('\n'), 2 * lines.size());
        QCOMPARE(NormalizeDictText(normal), normal);
    }

    // btnOK: blank lines go from last to first; the rest stays exactly as typed, with CR LF in the
    // store whatever the memo gave.
    void okDropsBlankLines_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("stored");
        AddRow("LF", "b\na\n", "b\r\na\r\n");
        AddRow("CR, last unended", "Vault\rBank", "Vault\r\nBank\r\n");
        AddRow("blank lines everywhere", "\n  \nVault\r\n\t\nSafe\n \n\n", "Vault\r\nSafe\r\n");
        AddRow("blanks inside and around kept", "  Bank  box \n", "  Bank  box \r\n");
        AddRow("duplicates kept, no sorting", "z\na\nz", "z\r\na\r\nz\r\n");
        AddRow("empty", "", "");
    }
    void okDropsBlankLines()
    {
        QFETCH(QString, typed);
        QFETCH(QString, stored);
        QStringList combo{"old"};
        QVERIFY(EditLocations(TypeAndOk(typed), combo));
        QCOMPARE(ORVDicts.Locations.Value, stored);
        QCOMPARE(combo, DictLines(stored));
        QCOMPARE(StoredDict("Dict.Locations"), stored);
        QCOMPARE(ORVDicts.Locations.Default, DefaultDicts().Locations.Default);
    }

    void onlyBlankLinesStoredAsEmptyText()
    {
        m_runner.script = TypeAndOk("   \r\n\r\n\t \r\n");
        QStringList combo = DictLines(ORVDicts.Owners.Value);
        QVERIFY(EditDictionary(ORVDicts.Owners, "Owners", combo));
        QVERIFY(ORVDicts.Owners.Value.isEmpty() && combo.isEmpty());
        QCOMPARE(StoredDict("Dict.Owners"), QString());
        // Read again at the next start, the empty list stays empty rather than falling back.
        ORVDicts.Owners.Value = "stale";
        LoadSettings();
        QVERIFY(ORVDicts.Owners.Value.isEmpty());
    }

    void cancelStoresNothing()
    {
        ORVDicts.Locations.Value = "One\r\nTwo\r\n";
        QStringList combo{"kept"};
        QVERIFY(!EditLocations(
            [](TEditDictionaryController& c) {
                c.SetMemoText("changed\n");
                c.Cancel();
                return int(mrCancel);
            },
            combo));
        QCOMPARE(m_runner.shownLines, QStringList({"One", "Two"}));
        QCOMPARE(m_runner.shownField, "Locations");
        QCOMPARE(ORVDicts.Locations.Value, "One\r\nTwo\r\n");
        QCOMPARE(combo, QStringList{"kept"});
        QVERIFY(!QFile::exists(TZTUserHive::FileName()));
        // Without a runner the dialog ends cancelled too.
        SetEditDictionaryDialogRunner(nullptr);
        QVERIFY(!EditDictionary(ORVDicts.Grades, "Grades", combo));
        QCOMPARE(combo, QStringList{"kept"});
    }

    void resetThenCancelKeepsOldList()
    {
        ORVDicts.Locations.Value = "Safe\r\n";
        m_presenter.Answer = mrYes;
        QStringList memoAfterReset;
        QStringList combo{"Safe"};
        QVERIFY(!EditLocations(
            [&memoAfterReset](TEditDictionaryController& c) {
                const bool reset = c.ResetToDefault();
                memoAfterReset = c.MemoLines();
                c.Cancel();
                return reset ? int(mrCancel) : int(mrAbort);
            },
            combo));
        QCOMPARE(memoAfterReset, DictLines(DefaultDicts().Locations.Default));
        QCOMPARE(ORVDicts.Locations.Value, "Safe\r\n");
        QCOMPARE(combo, QStringList{"Safe"});
        QVERIFY(!QFile::exists(TZTUserHive::FileName()));
    }

    void resetThenOkStoresDefault()
    {
        ORVDicts.Locations.Value = "Safe\r\n";
        m_presenter.Answer = mrYes;
        QStringList combo;
        QVERIFY(EditLocations(
            [](TEditDictionaryController& c) {
                c.ResetToDefault();
                c.Ok();
                return int(mrOk);
            },
            combo));
        QCOMPARE(ORVDicts.Locations.Value, DefaultDicts().Locations.Default);
        QCOMPARE(StoredDict("Dict.Locations"), DefaultDicts().Locations.Default);
    }

    // The question: a confirmation with Yes and No, No the default; No keeps the memo.
    void resetAsksConfirmation_data()
    {
        QTest::addColumn<int>("answer");
        AddRow("Yes", int(mrYes));
        AddRow("No", int(mrNo));
    }
    void resetAsksConfirmation()
    {
        QFETCH(int, answer);
        m_presenter.Answer = answer;
        TEditDictionaryController controller;
        controller.SetDictionary(TDict{"Mine\r\n", "D1\r\nD2\r\n"});
        controller.SetMemoText("typed\nlines");
        QCOMPARE(controller.ResetToDefault(), answer == mrYes);
        QCOMPARE(m_presenter.Requests.size(), 1);
        const TMessageBoxRequest& request = m_presenter.Requests.first();
        QCOMPARE(request.Text, "Are you sure you want to reset this dictionary to its default values?");
        QCOMPARE(request.Type, mtConfirmation);
        QCOMPARE(request.Buttons, TMsgDlgButtons(mbYes | mbNo));
        QCOMPARE(request.DefaultButton, mbNo);
        QCOMPARE(controller.MemoLines(),
                 answer == mrYes ? QStringList({"D1", "D2"}) : QStringList({"typed", "lines"}));
        QCOMPARE(controller.Result(), mrNone);
        QCOMPARE(TEditDictionaryController::CaptionText(), "Edit dictionary");
        QCOMPARE(TEditDictionaryController::ResetToDefaultsText(), "Reset to defaults");
    }

    // The dictionary only suggests: removing an entry touches no default value and no item.
    void removingVaultChangesNoItem()
    {
        QTemporaryDir dir;
        const QString dbPath = dir.filePath("items.sqlite");
        {
            QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "items");
            db.setDatabaseName(dbPath);
            QVERIFY(db.open());
            QVERIFY(QSqlQuery(db).exec("CREATE TABLE tblCoins (ID INTEGER PRIMARY KEY, Location TEXT)"));
            QVERIFY(QSqlQuery(db).exec(
                "INSERT INTO tblCoins (Location) VALUES ('Vault'), ('Vault'), ('Secret location #1')"));
            db.close();
        }
        QSqlDatabase::removeDatabase("items");
        const QByteArray before = ReadFile(dbPath);

        QStringList combo = DictLines(ORVDicts.Locations.Value);
        QVERIFY(EditLocations(TypeAndOk("Secret location #1\nSecret location #2\n"), combo));
        QCOMPARE(combo, QStringList({"Secret location #1", "Secret location #2"}));
        QCOMPARE(ORVDefaultValues.Location, "Vault");
        QCOMPARE(StoredDict("DefaultValues.Location"), "Vault");
        QVERIFY(QSqlDatabase::connectionNames().isEmpty()); // no connection was made
        QCOMPARE(ReadFile(dbPath), before);
    }

    void okResultWithoutButtonStillDropsBlankLines()
    {
        m_runner.script = [](TEditDictionaryController& c) {
            c.SetMemoText("a\n \nb");
            return int(mrOk);
        };
        QStringList combo;
        QVERIFY(EditDictionary(ORVDicts.Stores, "Stores", combo));
        QCOMPARE(ORVDicts.Stores.Value, "a\r\nb\r\n");
    }

    // After OK the list is in the store even if the process dies right after.
    void savedBeforeTheProcessDies()
    {
        QCOMPARE(RunSelf("ORV_DICTS_CHILD", "ok-and-die").Status, QProcess::CrashExit);
        QCOMPARE(StoredDict("Dict.Locations"), "Vault\r\nBank box 12\r\n");
        QCOMPARE(StoredDict("DefaultValues.Location"), "Vault");
        // The whole table went with it, so the next start reads every value.
        QCOMPARE(UserStore().GetIntValue("CurrentView", -1), 1);
    }
};

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (qgetenv("ORV_DICTS_CHILD") == "ok-and-die") {
        // OK in the dialog, then killed at once.
        QStandardPaths::setTestModeEnabled(true);
        SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, cSettingsRoot));
        TScriptedRunner runner;
        runner.script = TypeAndOk("\nVault\n  \nBank box 12\n");
        SetEditDictionaryDialogRunner(&runner);
        QStringList combo;
        if (EditDictionary(ORVDicts.Locations, "Locations", combo))
            std::raise(SIGKILL);
        return 3;
    }
    TestDictionaries test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_dictionaries.moc"
