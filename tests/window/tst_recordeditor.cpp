// The record editor's logic without a screen: its commands and questions over a real collection
// file, walking a view's rows (with group rows) given as a list.

#include "dmInternalData.h"
#include "support_common.h"
#include "support_datarow.h"
#include "uEditDataController.h"
#include "uRibbonDBEditController.h"
#include "uTemplate.h"
#include "uZTSettings.h"

#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// A view's rows: each entry a record index, or -1 for a group row.
class TFakeRows : public TEditRowList
{
public:
    QList<int> Rows;
    int RowCount() const override { return int(Rows.size()); }
    int RecordOfRow(int row) const override { return row >= 0 && row < Rows.size() ? Rows[row] : -1; }
    int RowOfRecord(int record) const override { return record < 0 ? -1 : int(Rows.indexOf(record)); }
};

class TRecordingHost : public TRibbonDBEditHost
{
public:
    int Loads = 0;
    QList<TEditCloseResult> Closes;
    void LoadRecord() override { ++Loads; }
    void CloseWithResult(TEditCloseResult result) override { Closes << result; }
};

using Rows = QList<int>;

// Five items in a grouped view: groups of two, two and one, group rows first.
const Rows cGrouped = {-1, 0, 1, -1, 2, 3, -1, 4};

} // namespace

Q_DECLARE_METATYPE(TEditCommand)
Q_DECLARE_METATYPE(TEditCloseResult)

class TestRecordEditor : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDM_InternalData> m_data;
    TRecordingPresenter m_presenter;
    TFakeRows m_rows;
    TRecordingHost m_host;
    std::unique_ptr<TDatasetDataController> m_dc;
    std::unique_ptr<TRibbonDBEditController> m_editor;

    TDBDataset& Items() { return *m_data->qDS_Items; }
    QString FilePath() const { return m_dir->filePath(u"c.db"_s); }
    // The name of the current record.
    QString Name() { return Items().fieldByName(u"Name"_s).asString(); }
    int Record() { return Items().recNo() - 1; }
    void GoTo(int record) { Items().setRecNo(record + 1); }
    void EditName(const QString& name)
    {
        Items().edit();
        Items().fieldByName(u"Name"_s).setAsString(name);
    }
    QVariant NameInFile(const QString& like)
    {
        TDBQuery q(m_data->ADConnection);
        q.setSQL(u"SELECT COUNT(*) FROM tblCoins WHERE Name = :N"_s);
        q.bindValue(u":N"_s, like);
        q.open();
        return q.fieldByName(u"COUNT(*)"_s).value();
    }
    int RowsInFile() { return m_data->ADConnection->selectValue(u"SELECT COUNT(*) FROM tblCoins"_s).toInt(); }

private slots:
    void initTestCase()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        LoadEnglish();
        SetMessagePresenter(&m_presenter);
    }
    void cleanupTestCase()
    {
        SetMessagePresenter(nullptr);
        m_home.reset();
    }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        WriteFile(FilePath(), NewBlankDatabaseBytes());
        m_data = std::make_unique<TDM_InternalData>();
        QVERIFY(m_data->ConnectDatabase(FilePath()));
        for (int i = 0; i < 5; ++i) {
            Items().append();
            Items().fieldByName(u"Name"_s).setAsString(u"Item %1"_s.arg(i));
            Items().fieldByName(u"Metal"_s).setAsInteger(i % 2);
            Items().post();
        }
        QCOMPARE(Items().recordCount(), 5);
        m_rows.Rows = cGrouped;
        m_dc = std::make_unique<TDatasetDataController>(Items(), &m_rows);
        m_editor = std::make_unique<TRibbonDBEditController>(&m_host);
        m_editor->SetDataController(m_dc.get());
        m_presenter = TRecordingPresenter();
        m_host = TRecordingHost();
    }
    void cleanup()
    {
        m_editor.reset();
        m_dc.reset();
        m_data.reset();
        m_dir.reset();
    }

    void askToSave_data()
    {
        QTest::addColumn<bool>("dirty");
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("goesOn");
        QTest::addColumn<int>("savedRows"); // rows named "Changed" in the file afterwards
        QTest::addColumn<bool>("stillDirty");
        QTest::addColumn<QString>("name"); // of the current record afterwards
        AddRow("clean, no question", false, int(mrCancel), true, 0, false, u"Item 2"_s);
        AddRow("dirty, yes saves", true, int(mrYes), true, 1, false, u"Changed"_s);
        AddRow("dirty, no drops", true, int(mrNo), true, 0, false, u"Item 2"_s);
        AddRow("dirty, cancel stops", true, int(mrCancel), false, 0, true, u"Changed"_s);
    }
    void askToSave()
    {
        QFETCH(bool, dirty);
        QFETCH(int, answer);
        GoTo(2);
        if (dirty) {
            EditName(u"Changed"_s);
        }
        m_presenter.Answer = answer;
        QTEST(m_editor->AskToSave(), "goesOn");
        QTEST(NameInFile(u"Changed"_s).toInt(), "savedRows");
        QTEST(m_editor->IsDirty(), "stillDirty");
        QTEST(Name(), "name");
        QCOMPARE(m_presenter.Requests.size(), dirty ? 1 : 0);
        if (dirty) {
            const TMessageBoxRequest& asked = m_presenter.Requests.constFirst();
            QCOMPARE(asked.Text, u"Do you want to save changes?"_s);
            QCOMPARE(asked.Buttons, TMsgDlgButtons(mbYes) | mbNo | mbCancel);
            QCOMPARE(asked.DefaultButton, mbYes);
        }
    }

    // The enablement rule over the grouped rows: first and last are judged on the rows, group rows
    // included.
    void enablement_data()
    {
        QTest::addColumn<Rows>("rows");
        QTest::addColumn<int>("record");
        QTest::addColumn<bool>("dirty");
        QTest::addColumn<QList<bool>>("expected"); // Save, Cancel, New, Del, Prev, Next, First, Last
        const Rows plain = {0, 1, 2, 3, 4};
        AddRow("plain, first, clean", plain, 0, false,
               QList<bool>{false, false, true, true, false, true, false, true});
        AddRow("plain, last, dirty", plain, 4, true,
               QList<bool>{true, true, true, true, true, false, true, false});
        AddRow("plain, middle", plain, 2, false,
               QList<bool>{false, false, true, true, true, true, true, true});
        AddRow("grouped, first record", cGrouped, 0, false,
               QList<bool>{false, false, true, true, true, true, true, true});
        AddRow("grouped, last record", cGrouped, 4, false,
               QList<bool>{false, false, true, true, true, false, true, false});
        AddRow("grouped, last row a group row", Rows{-1, 0, 1, -1}, 1, false,
               QList<bool>{false, false, true, true, true, true, true, true});
        AddRow("record not shown", Rows{-1, 1}, 3, false,
               QList<bool>{false, false, true, true, false, false, false, false});
    }
    void enablement()
    {
        QFETCH(Rows, rows);
        QFETCH(int, record);
        QFETCH(QList<bool>, expected);
        m_rows.Rows = rows;
        GoTo(record);
        if (QTest::currentDataTag() == QByteArray("plain, last, dirty")) {
            EditName(u"Changed"_s);
        }
        const TEditCommand order[] = {TEditCommand::SaveAndClose, TEditCommand::Cancel, TEditCommand::New,
                                      TEditCommand::Del,          TEditCommand::Prev,   TEditCommand::Next,
                                      TEditCommand::First,        TEditCommand::Last};
        QList<bool> actual;
        for (TEditCommand command : order) {
            actual << m_editor->CommandEnabled(command).value_or(false);
        }
        QCOMPARE(actual, expected);
    }

    // Prior and next pass group rows; at the ends nothing changes and the focus stays on the record.
    void walk_data()
    {
        QTest::addColumn<Rows>("rows");
        QTest::addColumn<int>("start");
        QTest::addColumn<bool>("forward");
        QTest::addColumn<int>("record");   // afterwards
        QTest::addColumn<int>("focusRow"); // afterwards
        AddRow("next within a group", cGrouped, 0, true, 1, 2);
        AddRow("next over a group row", cGrouped, 1, true, 2, 4);
        AddRow("prior over a group row", cGrouped, 4, false, 3, 5);
        AddRow("prior on the first record does nothing", cGrouped, 0, false, 0, 1);
        AddRow("next on the last record does nothing", cGrouped, 4, true, 4, 7);
        AddRow("next before trailing group rows", Rows({-1, 3, -1, -1}), 3, true, 3, 1);
        AddRow("view order, not the dataset's", Rows({-1, 3, 0, -1, 4, 1, 2}), 0, true, 4, 4);
        AddRow("view order backwards", Rows({-1, 3, 0, -1, 4, 1, 2}), 4, false, 0, 2);
    }
    void walk()
    {
        QFETCH(Rows, rows);
        QFETCH(int, start);
        QFETCH(bool, forward);
        m_rows.Rows = rows;
        GoTo(start);
        const bool wasEnabled =
            m_editor->CommandEnabled(forward ? TEditCommand::Next : TEditCommand::Prev).value();
        if (wasEnabled) {
            QVERIFY(m_editor->Execute(forward ? TEditCommand::Next : TEditCommand::Prev));
            QCOMPARE(m_host.Loads, 1);
        } else {
            m_editor->MoveToRecord(forward);
        }
        QTEST(Record(), "record");
        QTEST(m_dc->FocusedRowIndex(), "focusRow");
        QVERIFY(m_presenter.Requests.isEmpty());
    }

    // A prior or next with changes asks first; First and Last never ask, and the move posts.
    void moveWithChanges_data()
    {
        QTest::addColumn<TEditCommand>("command");
        QTest::addColumn<int>("answer");
        QTest::addColumn<int>("questions");
        QTest::addColumn<int>("record");
        QTest::addColumn<int>("saved");
        AddRow("next, yes", TEditCommand::Next, int(mrYes), 1, 3, 1);
        AddRow("next, no", TEditCommand::Next, int(mrNo), 1, 3, 0);
        AddRow("next, cancel stays", TEditCommand::Next, int(mrCancel), 1, 2, 0);
        AddRow("prior, cancel stays", TEditCommand::Prev, int(mrCancel), 1, 2, 0);
        AddRow("first asks nothing", TEditCommand::First, int(mrNo), 0, 0, 1);
        AddRow("last asks nothing", TEditCommand::Last, int(mrNo), 0, 4, 1);
    }
    void moveWithChanges()
    {
        QFETCH(TEditCommand, command);
        QFETCH(int, answer);
        GoTo(2);
        EditName(u"Changed"_s);
        m_presenter.Answer = answer;
        QVERIFY(m_editor->Execute(command));
        QTEST(int(m_presenter.Requests.size()), "questions");
        QTEST(Record(), "record");
        QTEST(NameInFile(u"Changed"_s).toInt(), "saved");
    }

    void newRecord_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<int>("records");
        QTest::addColumn<bool>("inserting");
        QTest::addColumn<QString>("name");
        AddRow("cancel keeps the changes", int(mrCancel), 5, false, u"Changed"_s);
        AddRow("yes saves and appends", int(mrYes), 6, true, QString());
        AddRow("no drops and appends", int(mrNo), 6, true, QString());
    }
    void newRecord()
    {
        QFETCH(int, answer);
        GoTo(1);
        EditName(u"Changed"_s);
        m_presenter.Answer = answer;
        QVERIFY(m_editor->Execute(TEditCommand::New));
        QTEST(Items().recordCount(), "records");
        QTEST(Items().state() == TDatasetState::Insert, "inserting");
        QTEST(Name(), "name");
        QCOMPARE(m_host.Loads, answer == mrCancel ? 0 : 1);
        QVERIFY(m_host.Closes.isEmpty());
        QCOMPARE(NameInFile(u"Changed"_s).toInt(), answer == mrYes ? 1 : 0);
    }

    // Delete asks (default No); Yes deletes the focused record and closes, even with more records.
    void deleteRecord_data()
    {
        QTest::addColumn<bool>("appended");
        QTest::addColumn<int>("answer");
        QTest::addColumn<int>("rowsInFile");
        QTest::addColumn<bool>("closed");
        AddRow("yes deletes and closes", false, int(mrYes), 4, true);
        AddRow("no keeps it open", false, int(mrNo), 5, false);
        AddRow("a new record goes, nothing else", true, int(mrYes), 5, true);
    }
    void deleteRecord()
    {
        QFETCH(bool, appended);
        QFETCH(int, answer);
        GoTo(2);
        if (appended) {
            m_dc->Append();
            Items().fieldByName(u"Name"_s).setAsString(u"New"_s);
        }
        m_presenter.Answer = answer;
        QVERIFY(m_editor->Execute(TEditCommand::Del));
        QCOMPARE(m_presenter.Requests.size(), 1);
        QCOMPARE(m_presenter.Requests.constFirst().DefaultButton, mbNo);
        QTEST(RowsInFile(), "rowsInFile");
        QTEST(!m_host.Closes.isEmpty(), "closed");
        if (answer == mrYes) {
            QCOMPARE(m_host.Closes, QList<TEditCloseResult>{TEditCloseResult::Ok});
            QCOMPARE(NameInFile(appended ? u"New"_s : u"Item 2"_s).toInt(), 0);
            QVERIFY(!m_editor->IsDirty());
        }
    }

    // Save and close, cancel and the close query: what is written and how the window closes.
    void closing_data()
    {
        QTest::addColumn<bool>("dirty");
        QTest::addColumn<QString>("how"); // save, cancel, query
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("ran");
        QTest::addColumn<QList<TEditCloseResult>>("closes");
        QTest::addColumn<int>("saved");
        using R = QList<TEditCloseResult>;
        AddRow("save and close", true, u"save"_s, int(mrYes), true, R{TEditCloseResult::Ok}, 1);
        AddRow("save and close, clean, disabled", false, u"save"_s, int(mrYes), false, R{}, 0);
        AddRow("cancel, yes", true, u"cancel"_s, int(mrYes), true, R{TEditCloseResult::Cancel}, 0);
        AddRow("cancel, no stays", true, u"cancel"_s, int(mrNo), true, R{}, 0);
        AddRow("query, clean", false, u"query"_s, int(mrCancel), true, R{TEditCloseResult::Cancel}, 0);
        AddRow("query, yes", true, u"query"_s, int(mrYes), true, R{TEditCloseResult::Ok}, 1);
        AddRow("query, no", true, u"query"_s, int(mrNo), true, R{TEditCloseResult::Cancel}, 0);
        AddRow("query, cancel refuses", true, u"query"_s, int(mrCancel), false, R{}, 0);
    }
    void closing()
    {
        QFETCH(bool, dirty);
        QFETCH(QString, how);
        QFETCH(int, answer);
        GoTo(0);
        if (dirty) {
            EditName(u"Changed"_s);
        }
        m_presenter.Answer = answer;
        if (how == u"query"_s) {
            const std::optional<TEditCloseResult> result = m_editor->CloseQuery();
            QTEST(result.has_value(), "ran");
            if (result) {
                m_host.Closes << *result;
            }
        } else {
            QTEST(m_editor->Execute(how == u"save"_s ? TEditCommand::SaveAndClose : TEditCommand::Cancel),
                  "ran");
        }
        QTEST(m_host.Closes, "closes");
        QTEST(NameInFile(u"Changed"_s).toInt(), "saved");
        if (how == u"cancel"_s) {
            QCOMPARE(m_presenter.Requests.constFirst().DefaultButton, mbNo);
        }
    }

    // A refused post (no name) raises with the window open and the record still in edit.
    void refusedPostKeepsTheEdit()
    {
        GoTo(1);
        EditName(QString());
        QVERIFY_THROWS_EXCEPTION(std::exception, m_editor->Execute(TEditCommand::SaveAndClose));
        QVERIFY(m_host.Closes.isEmpty());
        QVERIFY(m_editor->IsDirty());
        m_presenter.Answer = mrYes;
        QVERIFY_THROWS_EXCEPTION(std::exception, m_editor->CloseQuery());
        QVERIFY(m_editor->IsDirty());
    }

    // Without a data controller every command does nothing and the moves keep their state.
    void withoutDataController()
    {
        TRibbonDBEditController editor(&m_host);
        GoTo(2);
        EditName(u"Changed"_s);
        QVERIFY(!editor.IsDirty());
        for (const TEditCommandInfo& info : EditCommands()) {
            QVERIFY2(!editor.Execute(info.Command), qPrintable(QString::fromUtf16(info.Name)));
        }
        for (TEditCommand move :
             {TEditCommand::Prev, TEditCommand::Next, TEditCommand::First, TEditCommand::Last}) {
            QVERIFY(!editor.CommandEnabled(move).has_value());
        }
        QVERIFY(!editor.MoveToRecord(true));
        QCOMPARE(editor.CloseQuery(), std::optional<TEditCloseResult>(TEditCloseResult::Cancel));
        QVERIFY(m_presenter.Requests.isEmpty());
        QCOMPARE(m_host.Loads, 0);
        QVERIFY(m_host.Closes.isEmpty());
        QVERIFY(m_editor->IsDirty());
    }
};

QTEST_GUILESS_MAIN(TestRecordEditor)
#include "tst_recordeditor.moc"
