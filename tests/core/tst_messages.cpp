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

    // The presenter's answer is the result; without one the default button answers. Yes is 6,
    // No 7, Cancel 2; a given caption is used but for a custom box; the built-in language has no
    // cSbtnYes or cSbtnNo, so the platform's words stay.
    void resultsAndCaptions()
    {
        m_presenter.Answer = mrCancel;
        QCOMPARE(MessageDlgZT("Delete?", mtConfirmation, mbYes | mbNo, mbNo), int(mrCancel));
        const TMessageBoxRequest r = m_presenter.Requests.first();
        QCOMPARE(r.Text, "Delete?");
        QCOMPARE(r.Type, mtConfirmation);
        QCOMPARE(r.Buttons, TMsgDlgButtons(mbYes | mbNo));
        QCOMPARE(r.DefaultButton, mbNo);
        QCOMPARE(r.Caption, GetText("SMsgDlgConfirm"));
        for (const auto& [button, text] : r.ButtonTexts)
            QVERIFY(button != mbYes && button != mbNo && !text.isEmpty());
        QCOMPARE(int(ModalResultOf(mbYes)), 6);
        QCOMPARE(int(ModalResultOf(mbNo)), 7);
        QCOMPARE(int(ModalResultOf(mbCancel)), 2);
        QSet<int> results; // each button has its own result
        for (const TMsgDlgButtonInfo& info : MsgDlgButtonInfo)
            results.insert(info.Result);
        QCOMPARE(results.size(), 12);
        MessageDlgZT("t", "Orvane", mtWarning, mbOK, mbOK);
        QCOMPARE(m_presenter.Requests.last().Caption, "Orvane");
        MessageDlgZT("t", "Orvane", mtCustom, mbOK, mbOK);
        QCOMPARE(m_presenter.Requests.last().Caption, QString());

        SetMessagePresenter(nullptr);
        QCOMPARE(MessageDlgZT("Save?", mtConfirmation, mbYes | mbNo | mbCancel, mbCancel), int(mrCancel));
        QCOMPARE(MessageDlgZT("Done", "x", mtInformation, mbOK, mbOK), int(mrOk));
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
