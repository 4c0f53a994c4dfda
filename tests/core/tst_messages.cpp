// MessageDlgZT through the presenter seam, and the debug log's switch and sink.

#include "support_common.h"
#include "support_datarow.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QThread>
#include <QtTest>

class TestMessages : public QObject
{
    Q_OBJECT

private:
    TRecordingPresenter m_presenter;
    QString m_langFile;

private slots:
    void init()
    {
        m_presenter.Requests.clear();
        SetMessagePresenter(&m_presenter);
    }

    void cleanup()
    {
        SetMessagePresenter(nullptr);
        DebugMode = false;
        SetLogSink(nullptr);
        LoadEnglish();
    }

    void cleanupTestCase() { QFile::remove(m_langFile); }

    void resultComesFromThePresenter_data()
    {
        QTest::addColumn<int>("answer");
        AddRow("yes", int(mrYes));
        AddRow("cancel", int(mrCancel));
    }
    void resultComesFromThePresenter()
    {
        QFETCH(int, answer);
        m_presenter.Answer = answer;
        QCOMPARE(MessageDlgZT("Delete?", mtConfirmation, mbYes | mbNo, mbNo), answer);
        QCOMPARE(m_presenter.Requests.size(), 1);
        const TMessageBoxRequest& r = m_presenter.Requests.first();
        QCOMPARE(r.Text, "Delete?");
        QCOMPARE(r.Type, mtConfirmation);
        QCOMPARE(r.Buttons, TMsgDlgButtons(mbYes | mbNo));
        QCOMPARE(r.DefaultButton, mbNo);
    }

    void resultNumbers()
    {
        QCOMPARE(int(ModalResultOf(mbYes)), 6);
        QCOMPARE(int(ModalResultOf(mbNo)), 7);
        QCOMPARE(int(ModalResultOf(mbCancel)), 2);
        QCOMPARE(ModalResultOf(mbOK), mrOk);
        QCOMPARE(ModalResultOf(mbYesToAll), mrYesToAll);
        QSet<int> results; // each button has its own result
        for (const TMsgDlgButtonInfo& info : MsgDlgButtonInfo)
            results.insert(info.Result);
        QCOMPARE(results.size(), 12);
    }

    void withoutPresenterTheDefaultAnswers()
    {
        SetMessagePresenter(nullptr);
        QCOMPARE(MessageDlgZT("Save?", mtConfirmation, mbYes | mbNo | mbCancel, mbCancel), int(mrCancel));
        QCOMPARE(MessageDlgZT("Done", "x", mtInformation, mbOK, mbOK), int(mrOk));
    }

    void captionRules_data()
    {
        QTest::addColumn<QString>("caption");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("expected");
        AddRow("given", "Orvane", int(mtWarning), "Orvane");
        AddRow("custom keeps the box's own", "Orvane", int(mtCustom), "");
    }
    void captionRules()
    {
        QFETCH(QString, caption);
        QFETCH(int, type);
        QFETCH(QString, expected);
        MessageDlgZT("t", caption, TMsgDlgType(type), mbOK, mbOK);
        QCOMPARE(m_presenter.Requests.last().Caption, expected);
    }

    void languageWithoutButtonTexts()
    {
        // The built-in language has no cSbtnYes or cSbtnNo: the platform's words stay.
        LoadEnglish();
        MessageDlgZT("t", mtConfirmation, mbYes | mbNo, mbNo);
        const TMessageBoxRequest& r = m_presenter.Requests.last();
        for (const auto& [button, text] : r.ButtonTexts)
            QVERIFY(button != mbYes && button != mbNo && !text.isEmpty());
        QCOMPARE(r.Caption, GetText("SMsgDlgConfirm"));
    }

    void languageLackingYes()
    {
        // A language file that names No and the confirmation caption but not Yes.
        m_langFile = EnsureFolder(GetExeFolder() + "Lang") + "ZTMessagesTest.xml";
        WriteFile(m_langFile, "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                              "<Language name=\"ZTMessagesTest\" BiDiMode=\"LeftToRight\">\n"
                              "  <String name=\"cSbtnNo\">&amp;Nein</String>\n"
                              "  <String name=\"cSbtnCancel\">Abbrechen</String>\n"
                              "  <String name=\"SMsgDlgConfirm\">Frage</String>\n"
                              "</Language>\n");
        QVERIFY(LoadLanguage("ZTMessagesTest"));
        MessageDlgZT("t", mtConfirmation, mbYes | mbNo | mbCancel, mbNo);
        const TMessageBoxRequest& r = m_presenter.Requests.last();
        QCOMPARE(r.Caption, "Frage");
        QCOMPARE(r.ButtonTexts.size(), 2);
        QCOMPARE(r.ButtonTexts.at(0), qMakePair(mbNo, QString("&Nein")));
        QCOMPARE(r.ButtonTexts.at(1).first, mbCancel);
    }

    void callIsLogged()
    {
        TLogCapture sink;
        SetLogSink(&sink);
        MessageDlgZT("off", mtInformation, mbOK, mbOK);
        QVERIFY(sink.Lines().isEmpty());
        DebugMode = true;
        MessageDlgZT("100% \"sure\"", "Cap", mtInformation, mbOK, mbOK);
        QCOMPARE(sink.Lines().size(), 1);
        const QString line = sink.Lines().first();
        QVERIFY2(line.startsWith('[') && line.endsWith("] MessageDlgZT(\"100% \"sure\"\", \"Cap\")"),
                 qPrintable(line));
    }

    void logFromWorkers()
    {
        TLogCapture sink;
        SetLogSink(&sink);
        DebugMode = true;
        std::vector<std::unique_ptr<QThread>> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back(QThread::create([t] {
                for (int i = 0; i < 250; ++i)
                    LogFormat("worker %d line %d", {t, i});
            }));
            threads.back()->start();
        }
        for (const auto& thread : threads)
            QVERIFY(thread->wait(30000));
        QCOMPARE(sink.Lines().size(), 1000);
        SetLogSink(nullptr);
        LogText("nowhere");
        QCOMPARE(sink.Lines().size(), 1000);
    }
};

QTEST_GUILESS_MAIN(TestMessages)
#include "tst_messages.moc"
