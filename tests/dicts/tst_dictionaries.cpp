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

    // Each row's list is saved under the row's key and found by its names; every delivered list
    // ends each entry with CR LF.
    void tableAndDeliveredLists()
    {
        QCOMPARE(DictTable().size(), std::size_t(10));
        const TORVDicts dicts = DefaultDicts();
        for (const TDictInfo& info : DictTable()) {
            for (const QString& name :
                 {info.settingsKey(), info.comboEditor(), info.editAction(), info.itemField()})
                QCOMPARE(FindDict(name), &info);
            const TDict& delivered = DictOf(dicts, info);
            QVERIFY(delivered.Default.endsWith("\r\n") && delivered.Value == delivered.Default);
            QCOMPARE(NormalizeDictText(delivered.Default), delivered.Default);
            DictOf(ORVDicts, info).Value = info.settingsKey() + "\r\n";
        }
        SaveSettings();
        for (const TDictInfo& info : DictTable())
            QCOMPARE(StoredDict(info.settingsKey()), info.settingsKey() + "\r\n");
        QCOMPARE(FindDict("cbpurity"), nullptr);
        QCOMPARE(FindDict("lcbMints"), nullptr);
        QCOMPARE(DictLines(dicts.Grades.Default).size(), 23);
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

    // btnOK (or an OK result without it): blank lines go; the rest stays exactly as typed, with
    // CR LF in the store whatever the memo gave. An empty list stays empty at the next start.
    void okDropsBlankLines_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("button");
        QTest::addColumn<QString>("stored");
        AddRow("LF", "b\na\n", true, "b\r\na\r\n");
        AddRow("CR, last unended", "Vault\rBank", true, "Vault\r\nBank\r\n");
        AddRow("blank lines everywhere", "\n  \nVault\r\n\t\nSafe\n \n\n", true, "Vault\r\nSafe\r\n");
        AddRow("blanks inside and around kept", "  Bank  box \n", true, "  Bank  box \r\n");
        AddRow("duplicates kept, no sorting", "z\na\nz", true, "z\r\na\r\nz\r\n");
        AddRow("only blank lines", "   \r\n\r\n\t \r\n", true, "");
        AddRow("OK result without the button", "a\n \nb", false, "a\r\nb\r\n");
    }
    void okDropsBlankLines()
    {
        QFETCH(QString, typed);
        QFETCH(bool, button);
        QFETCH(QString, stored);
        QStringList combo{"old"};
        QVERIFY(EditLocations(
            [&](TEditDictionaryController& controller) {
                controller.SetMemoText(typed);
                if (button)
                    controller.Ok();
                return int(mrOk);
            },
            combo));
        QCOMPARE(ORVDicts.Locations.Value, stored);
        QCOMPARE(combo, DictLines(stored));
        QCOMPARE(StoredDict("Dict.Locations"), stored);
        QCOMPARE(ORVDicts.Locations.Default, DefaultDicts().Locations.Default);
        ORVDicts.Locations.Value = "stale";
        LoadSettings();
        QCOMPARE(ORVDicts.Locations.Value, stored);
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

    // Reset puts the delivered list in the memo; only OK stores it.
    void resetThenOkOrCancel_data()
    {
        QTest::addColumn<bool>("ok");
        AddRow("OK", true);
        AddRow("Cancel", false);
    }
    void resetThenOkOrCancel()
    {
        QFETCH(bool, ok);
        ORVDicts.Locations.Value = "Safe\r\n";
        m_presenter.Answer = mrYes;
        QStringList memoAfterReset;
        QStringList combo{"Safe"};
        QCOMPARE(EditLocations(
                     [&](TEditDictionaryController& c) -> int {
                         if (!c.ResetToDefault())
                             return int(mrAbort);
                         memoAfterReset = c.MemoLines();
                         ok ? c.Ok() : c.Cancel();
                         return ok ? int(mrOk) : int(mrCancel);
                     },
                     combo),
                 ok);
        const QString expected = ok ? DefaultDicts().Locations.Default : "Safe\r\n";
        QCOMPARE(memoAfterReset, DictLines(DefaultDicts().Locations.Default));
        QCOMPARE(ORVDicts.Locations.Value, expected);
        QCOMPARE(combo, DictLines(expected));
        QCOMPARE(QFile::exists(TZTUserHive::FileName()), ok);
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
    }

    // The dictionary only suggests: removing an entry touches no default value and no item.
    void removingVaultChangesNoItem()
    {
        QStringList combo = DictLines(ORVDicts.Locations.Value);
        QVERIFY(EditLocations(TypeAndOk("Secret location #1\nSecret location #2\n"), combo));
        QCOMPARE(combo, QStringList({"Secret location #1", "Secret location #2"}));
        QCOMPARE(ORVDefaultValues.Location, "Vault");
        QCOMPARE(StoredDict("DefaultValues.Location"), "Vault");
        QVERIFY(QSqlDatabase::connectionNames().isEmpty()); // no collection was touched
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
