// The mints window's logic on a real blank collection: adding through the record dialog's logic,
// cancelling, removing mints that items use, the required name.

#include "dmInternalData.h"
#include "support_common.h"
#include "support_datarow.h"
#include "uDBError.h"
#include "uEditDataController.h"
#include "uMintsController.h"
#include "uRibbonDBEditController.h"
#include "uTemplate.h"

#include <QtTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

class TFakeMintsWindow : public TMintsWindowSeam
{
public:
    QList<QVariant> Selected;
    std::function<void()> Dialog;
    int Dialogs = 0;
    QList<QVariant> SelectedMintKeys() override { return Selected; }
    void ExecuteMintEditor() override
    {
        ++Dialogs;
        if (Dialog) {
            Dialog();
        }
    }
};

class TClosingHost : public TRibbonDBEditHost
{
public:
    QList<TEditCloseResult> Closes;
    void LoadRecord() override {}
    void CloseWithResult(TEditCloseResult result) override { Closes << result; }
};

} // namespace

class TestMints : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDM_InternalData> m_data;
    TRecordingPresenter m_presenter;
    TFakeMintsWindow m_window;

    TDBDataset& Mints() { return *m_data->tblMints; }
    int Count(const QString& sql) { return m_data->ADConnection->selectValue(sql).toInt(); }
    int MintsInFile() { return Count(u"SELECT COUNT(*) FROM tblMints"_s); }

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
        const QString path = m_dir->filePath(u"c.db"_s);
        WriteFile(path, NewBlankDatabaseBytes());
        m_data = std::make_unique<TDM_InternalData>();
        QVERIFY(m_data->ConnectDatabase(path));
        m_presenter = TRecordingPresenter();
        m_window = TFakeMintsWindow();
    }
    void cleanup()
    {
        m_data.reset();
        m_dir.reset();
    }

    // Adding runs the record dialog on a new row; how the dialog ends decides what stays.
    void addThroughTheDialog_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("ending"); // save, cancel, query
        QTest::addColumn<int>("answer");
        QTest::addColumn<int>("mints");
        QTest::addColumn<int>("newId"); // 0 for none
        AddRow("save and close", u"Royal Test Mint"_s, u"save"_s, int(mrYes), 68, 68);
        AddRow("cancel after adding", u"Royal Test Mint"_s, u"cancel"_s, int(mrYes), 67, 0);
        AddRow("closed, yes saves", u"Royal Test Mint"_s, u"query"_s, int(mrYes), 68, 68);
        AddRow("closed, no drops", u"Royal Test Mint"_s, u"query"_s, int(mrNo), 67, 0);
        AddRow("closed, cancel, then left", u"Royal Test Mint"_s, u"query"_s, int(mrCancel), 67, 0);
    }
    void addThroughTheDialog()
    {
        QFETCH(QString, name);
        QFETCH(QString, ending);
        QFETCH(int, answer);
        QCOMPARE(MintsInFile(), 67);
        TDatasetDataController data(Mints());
        TClosingHost host;
        TRibbonDBEditController dialog(&host);
        dialog.SetDataController(&data);
        m_window.Dialog = [&] {
            QCOMPARE(Mints().state(), TDatasetState::Insert);
            Mints().fieldByName(u"Name"_s).setAsString(name);
            m_presenter.Answer = answer;
            if (ending == u"save"_s) {
                QVERIFY(dialog.Execute(TEditCommand::SaveAndClose));
            } else if (ending == u"cancel"_s) {
                QVERIFY(dialog.Execute(TEditCommand::Cancel));
            } else {
                dialog.CloseQuery();
            }
        };
        TMintsController controller(Mints(), &m_window);
        controller.Add();
        QCOMPARE(m_window.Dialogs, 1);
        QTEST(MintsInFile(), "mints");
        QTEST(Mints().recordCount(), "mints");
        QCOMPARE(Mints().state(), TDatasetState::Browse);
        QFETCH(int, newId);
        if (newId) {
            QCOMPARE(Count(u"SELECT ID FROM tblMints WHERE Name = 'Royal Test Mint'"_s), newId);
            QCOMPARE(Mints().fieldByName(u"ID"_s).asInteger(), newId);
        }
    }

    // A mint without a name is refused by the post; the dialog stays on it in insert state.
    void nameRequired()
    {
        TDatasetDataController data(Mints());
        TClosingHost host;
        TRibbonDBEditController dialog(&host);
        dialog.SetDataController(&data);
        m_window.Dialog = [&] {
            QVERIFY_THROWS_EXCEPTION(EDatabaseError, dialog.Execute(TEditCommand::SaveAndClose));
            QVERIFY(host.Closes.isEmpty());
            QCOMPARE(Mints().state(), TDatasetState::Insert);
            QVERIFY(dialog.Execute(TEditCommand::CancelQuiet));
        };
        TMintsController(Mints(), &m_window).Add();
        QCOMPARE(MintsInFile(), 67);
        QCOMPARE(host.Closes, QList<TEditCloseResult>{TEditCloseResult::Cancel});
    }

    // Removing asks first; items keep their MintID, which then finds no mint.
    void remove_data()
    {
        QTest::addColumn<QList<QVariant>>("selected");
        QTest::addColumn<int>("answer");
        QTest::addColumn<int>("mints");
        QTest::addColumn<int>("questions");
        AddRow("nothing selected", QList<QVariant>{}, int(mrYes), 67, 0);
        AddRow("no keeps them", QList<QVariant>{5, 7}, int(mrNo), 67, 1);
        AddRow("yes removes all selected", QList<QVariant>{5, 7, 60}, int(mrYes), 64, 1);
        AddRow("a key no longer there", QList<QVariant>{5, 999}, int(mrYes), 66, 1);
    }
    void remove()
    {
        QFETCH(QList<QVariant>, selected);
        QFETCH(int, answer);
        m_data->ADConnection->execSQL(
            u"INSERT INTO tblCoins (Name, Metal, WeightG, MintID) VALUES ('A', 0, 31.1, 5), ('B', 1, 10, 7)"_s);
        m_data->RefreshItems();
        m_window.Selected = selected;
        m_presenter.Answer = answer;
        TMintsController controller(Mints(), &m_window);
        QCOMPARE(TMintsController::RemoveEnabled(int(selected.size())), !selected.isEmpty());
        controller.Remove();
        QTEST(MintsInFile(), "mints");
        QTEST(Mints().recordCount(), "mints");
        QTEST(int(m_presenter.Requests.size()), "questions");
        if (!m_presenter.Requests.isEmpty()) {
            QCOMPARE(m_presenter.Requests.constFirst().Text, u"Do you want to delete selected item(s)?"_s);
            QCOMPARE(m_presenter.Requests.constFirst().DefaultButton, mbNo);
        }
        // Items are never touched.
        QCOMPARE(Count(u"SELECT COUNT(*) FROM tblCoins WHERE MintID = 5"_s), 1);
        QCOMPARE(Count(u"SELECT COUNT(*) FROM tblCoins WHERE MintID = 7"_s), 1);
        if (answer == mrYes && selected.contains(5)) {
            QCOMPARE(m_data->MintLogoByID(5), QVariant());
            QCOMPARE(Count(u"SELECT COUNT(*) FROM tblMints WHERE ID = 5"_s), 0);
        }
    }

    // A removed mint's number is never given again.
    void numbersNotReused()
    {
        m_window.Selected = {67};
        m_presenter.Answer = mrYes;
        TMintsController controller(Mints(), &m_window);
        QCOMPARE(controller.Remove(), 1);
        m_window.Dialog = [&] {
            Mints().fieldByName(u"Name"_s).setAsString(u"Next"_s);
            Mints().post();
        };
        controller.Add();
        QCOMPARE(Count(u"SELECT ID FROM tblMints WHERE Name = 'Next'"_s), 68);
    }
};

QTEST_GUILESS_MAIN(TestMints)
#include "tst_mints.moc"
