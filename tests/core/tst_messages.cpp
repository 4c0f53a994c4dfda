// MessageDlgZT through the presenter seam, and the debug log's switch and sink.

#include "uZTLog.h"
#include "uZTMessages.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QDir>
#include <QFile>
#include <QMutex>
#include <QThread>
#include <QtTest>

namespace {

// Answers every box with a fixed result and keeps the requests.
class TFakePresenter : public TMessagePresenter
{
public:
    int answer = mrNone;
    QList<TMessageBoxRequest> requests;

    int Present(const TMessageBoxRequest& request) override
    {
        requests.append(request);
        return answer;
    }
};

class TFakeSink : public TZTLogSink
{
public:
    QMutex mutex;
    QStringList lines;

    void LogLine(const QString& line) override
    {
        QMutexLocker locker(&mutex);
        lines.append(line);
    }
};

} // namespace

class TestMessages : public QObject
{
    Q_OBJECT

private:
    TFakePresenter m_presenter;
    QString m_langFile;

private slots:
    void init()
    {
        m_presenter.requests.clear();
        SetMessagePresenter(&m_presenter);
    }

    void cleanup()
    {
        SetMessagePresenter(nullptr);
        DebugMode = false;
        SetLogSink(nullptr);
    }

    void cleanupTestCase()
    {
        if (!m_langFile.isEmpty()) {
            QFile::remove(m_langFile);
        }
    }

    void resultComesFromThePresenter_data()
    {
        QTest::addColumn<int>("answer");
        QTest::newRow("yes") << int(mrYes);
        QTest::newRow("no") << int(mrNo);
        QTest::newRow("cancel") << int(mrCancel);
    }

    void resultComesFromThePresenter()
    {
        QFETCH(int, answer);
        m_presenter.answer = answer;
        QCOMPARE(MessageDlgZT(QStringLiteral("Delete?"), mtConfirmation, mbYes | mbNo, mbNo), answer);
        QCOMPARE(m_presenter.requests.size(), 1);
        const TMessageBoxRequest& r = m_presenter.requests.first();
        QCOMPARE(r.Text, QStringLiteral("Delete?"));
        QCOMPARE(r.Type, mtConfirmation);
        QCOMPARE(r.Buttons, TMsgDlgButtons(mbYes | mbNo));
        QCOMPARE(r.DefaultButton, mbNo);
    }

    void resultNumbers()
    {
        QCOMPARE(int(mrYes), 6);
        QCOMPARE(int(mrNo), 7);
        QCOMPARE(int(mrCancel), 2);
        QCOMPARE(ModalResultOf(mbYes), mrYes);
        QCOMPARE(ModalResultOf(mbNo), mrNo);
        QCOMPARE(ModalResultOf(mbCancel), mrCancel);
        QCOMPARE(ModalResultOf(mbOK), mrOk);
        QCOMPARE(ModalResultOf(mbYesToAll), mrYesToAll);
        // Each button has its own result.
        QSet<int> results;
        for (const TMsgDlgButtonInfo& info : MsgDlgButtonInfo) {
            results.insert(info.Result);
        }
        QCOMPARE(results.size(), 12);
    }

    void withoutPresenterTheDefaultAnswers()
    {
        SetMessagePresenter(nullptr);
        QCOMPARE(MessageDlgZT(QStringLiteral("Save?"), mtConfirmation, mbYes | mbNo | mbCancel, mbCancel),
                 int(mrCancel));
        QCOMPARE(MessageDlgZT(QStringLiteral("Done"), QStringLiteral("x"), mtInformation, mbOK, mbOK),
                 int(mrOk));
    }

    void captionRules_data()
    {
        QTest::addColumn<QString>("caption");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("expected");
        QTest::newRow("given") << "Orvane" << int(mtWarning) << "Orvane";
        QTest::newRow("custom keeps the box's own") << "Orvane" << int(mtCustom) << "";
        QTest::newRow("empty") << "" << int(mtError) << "";
    }

    void captionRules()
    {
        QFETCH(QString, caption);
        QFETCH(int, type);
        QFETCH(QString, expected);
        MessageDlgZT(QStringLiteral("t"), caption, TMsgDlgType(type), mbOK, mbOK);
        QCOMPARE(m_presenter.requests.last().Caption, expected);
    }

    void languageWithoutButtonTexts()
    {
        // The built-in language has no cSbtnYes or cSbtnNo: the platform's words stay.
        LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English"));
        MessageDlgZT(QStringLiteral("t"), mtConfirmation, mbYes | mbNo, mbNo);
        const TMessageBoxRequest& r = m_presenter.requests.last();
        for (const auto& [button, text] : r.ButtonTexts) {
            QVERIFY(button != mbYes && button != mbNo);
            QVERIFY(!text.isEmpty());
        }
        QCOMPARE(r.Caption, GetText(QStringLiteral("SMsgDlgConfirm")));
    }

    void languageLackingYes()
    {
        // A language file that names No and the confirmation caption but not Yes.
        const QString folder = EnsureFolder(GetExeFolder() + QStringLiteral("Lang"));
        m_langFile = folder + QStringLiteral("ZTMessagesTest.xml");
        QFile file(m_langFile);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                   "<Language name=\"ZTMessagesTest\" BiDiMode=\"LeftToRight\">\n"
                   "  <String name=\"cSbtnNo\">&amp;Nein</String>\n"
                   "  <String name=\"cSbtnCancel\">Abbrechen</String>\n"
                   "  <String name=\"SMsgDlgConfirm\">Frage</String>\n"
                   "</Language>\n");
        file.close();
        if (!LoadLanguage(QStringLiteral("ZTMessagesTest"))) {
            LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English"));
            QSKIP("language files cannot be loaded in this build");
        }
        MessageDlgZT(QStringLiteral("t"), mtConfirmation, mbYes | mbNo | mbCancel, mbNo);
        LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English"));
        const TMessageBoxRequest& r = m_presenter.requests.last();
        QCOMPARE(r.Caption, QStringLiteral("Frage"));
        QCOMPARE(r.ButtonTexts.size(), 2);
        QCOMPARE(r.ButtonTexts.at(0).first, mbNo);
        QCOMPARE(r.ButtonTexts.at(0).second, QStringLiteral("&Nein"));
        QCOMPARE(r.ButtonTexts.at(1).first, mbCancel);
    }

    void callIsLogged()
    {
        TFakeSink sink;
        SetLogSink(&sink);
        MessageDlgZT(QStringLiteral("off"), mtInformation, mbOK, mbOK);
        QVERIFY(sink.lines.isEmpty());
        DebugMode = true;
        MessageDlgZT(QStringLiteral("100% \"sure\""), QStringLiteral("Cap"), mtInformation, mbOK, mbOK);
        QCOMPARE(sink.lines.size(), 1);
        QVERIFY2(sink.lines.first().startsWith(QLatin1Char('[')), qPrintable(sink.lines.first()));
        QVERIFY2(sink.lines.first().endsWith(QStringLiteral("] MessageDlgZT(\"100% \"sure\"\", \"Cap\")")),
                 qPrintable(sink.lines.first()));
    }

    void logFromWorkers()
    {
        TFakeSink sink;
        SetLogSink(&sink);
        DebugMode = true;
        std::vector<std::unique_ptr<QThread>> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back(QThread::create([t] {
                for (int i = 0; i < 250; ++i) {
                    LogFormat(QStringLiteral("worker %d line %d"), {t, i});
                }
            }));
            threads.back()->start();
        }
        for (const auto& thread : threads) {
            QVERIFY(thread->wait(30000));
        }
        QCOMPARE(sink.lines.size(), 1000);
        SetLogSink(nullptr);
        LogText(QStringLiteral("nowhere"));
        QCOMPARE(sink.lines.size(), 1000);
    }
};

QTEST_GUILESS_MAIN(TestMessages)
#include "tst_messages.moc"
