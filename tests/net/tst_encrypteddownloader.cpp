// The enciphered text worker against a real HTTP server on 127.0.0.1, with the openssl command line
// as the independent party on the other end of the cipher.

#include "support_common.h"
#include "support_datarow.h"
#include "support_httpserver.h"
#include "uEncryptedDownloader.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"

#include <QPointer>
#include <QtTest>

#include <memory>

namespace {

// An enciphered body made by the command line: the IV in clear, then the cipher text.
QByteArray CommandLineBody(const QByteArray& clear, const QByteArray& iv, const QByteArray& key,
                           bool pad = true)
{
    const QByteArray cipher = OpenSslEnc(false, key, iv, clear, !pad);
    return cipher.isEmpty() ? QByteArray() : iv + cipher;
}

QByteArray ProgramBody(const QByteArray& clear)
{
    return EncryptBytes(clear, PayloadKeyA, PayloadKeyB);
}

// Stands for a window that results are posted to.
class TReceiver : public QObject
{
public:
    QList<QStringList> Received;
    bool event(QEvent* e) override
    {
        auto* message = dynamic_cast<TPostedMessage*>(e);
        if (!message)
            return QObject::event(e);
        Received.append(message->TakeWParam().toStringList());
        message->TakeLParam();
        return true;
    }
};

struct TOutcome
{
    bool Ended = false;
    int TextCalls = 0;
    bool TextOnMainThread = false;
    QStringList Lines;
    QList<QStringList> Posted;
    QStringList Statuses;
};

} // namespace

class TestEncryptedDownloader : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTestHttpServer> m_http;
    QByteArray m_key;
    int m_batch = 0;

    QByteArray Path() const { return "/svc/b" + QByteArray::number(m_batch); }
    QString Url() const { return m_http->URL(Path()); }

    // Runs one worker over url to its end; postData goes out enciphered.
    TOutcome Run(const QString& url, const QString& postData = {},
                 const std::function<void(TEncryptedTextDownloader*)>& whileRunning = {})
    {
        TOutcome outcome;
        TReceiver receiver;
        auto worker = std::make_unique<TEncryptedTextDownloader>();
        worker->URL = url;
        worker->PostData = postData;
        worker->Window = &receiver;
        worker->Msg = cMsgSearchReply;
        worker->AddSubscriber(std::make_unique<TMessageObj>());
        worker->OnStatus = [&outcome](TCustomDownloader*, qint32 panel, const QString& text) {
            outcome.Statuses.append(QString::number(panel) + ':' + text);
        };
        worker->OnText = [&outcome](TTextDownloader*, const QStringList& list) {
            ++outcome.TextCalls;
            outcome.TextOnMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
            outcome.Lines = list;
        };
        worker->OnTerminate = [&outcome](TThread*) { outcome.Ended = true; };
        QPointer<TEncryptedTextDownloader> running = worker.release(); // frees itself at its end
        running->Start();
        if (whileRunning)
            whileRunning(running);
        outcome.Ended = QTest::qWaitFor([&outcome] { return outcome.Ended; }, 20000);
        QCoreApplication::processEvents();
        outcome.Posted = receiver.Received;
        return outcome;
    }

private slots:
    void initTestCase()
    {
        if (!HaveProgram("openssl"))
            QSKIP("the openssl command line is not installed");
        LoadEnglish();
        m_key = OpenSslKey(PayloadKeyA, PayloadKeyB);
        QCOMPARE(m_key.size(), 32);
        m_http = std::make_unique<TTestHttpServer>();
        QVERIFY(m_http->IsListening());
    }
    void init()
    {
        ++m_batch;
        m_http->ClearRequests();
    }
    void cleanupTestCase() { m_http.reset(); }

    // A reply enciphered by the program or by the command line reaches OnText and the subscriber as
    // the same lines, on the main thread, after one GET without a body.
    void replyDeciphers_data()
    {
        QTest::addColumn<bool>("commandLine");
        QTest::addColumn<QByteArray>("clear");
        QTest::addColumn<QStringList>("lines");
        const QByteArray json = R"([{"BaseCurrency":"XAU","Price":2000.5}])";
        const QByteArray text = "first\r\nzweite Zeile \xc3\xa4\xc3\xb6\xc3\xbc\nthird\n";
        const QByteArray large = QByteArray("line of a longer reply\n").repeated(3000);
        AddRow("json, program", false, json, QStringList{json});
        AddRow("utf-8 lines, command line", true, text, QStringList{"first", "zweite Zeile äöü", "third"});
        // 16 bytes of clear text: a whole block of padding follows.
        AddRow("one block, command line", true, QByteArray("0123456789abcdef"),
               QStringList{"0123456789abcdef"});
        AddRow("empty text, program", false, QByteArray(), QStringList{});
        AddRow("large, command line", true, large,
               QString("line of a longer reply\n").repeated(3000).split('\n', Qt::SkipEmptyParts));
    }
    void replyDeciphers()
    {
        QFETCH(bool, commandLine);
        QFETCH(QByteArray, clear);
        QFETCH(QStringList, lines);
        const QByteArray body =
            commandLine
                ? CommandLineBody(clear, QByteArray::fromHex("000102030405060708090a0b0c0d0e0f"), m_key)
                : ProgramBody(clear);
        QVERIFY(body.size() >= 32);
        m_http->SetReply(Path(), {200, body, {}});

        const TOutcome outcome = Run(Url());
        QVERIFY(outcome.Ended);
        QCOMPARE(outcome.TextCalls, 1);
        QVERIFY(outcome.TextOnMainThread);
        QCOMPARE(outcome.Lines, lines);
        QCOMPARE(outcome.Posted, QList<QStringList>{lines});
        QCOMPARE(outcome.Statuses, QStringList{"2:Downloading data..."});
        const QList<TSeenRequest> seen = m_http->RequestsFor(Path());
        QCOMPARE(seen.size(), 1);
        QCOMPARE(seen.first().Method, "GET");
        QCOMPARE(seen.first().Body, QByteArray());
    }

    // Post data leaves the worker enciphered, as wrapped base64, and the command line deciphers it.
    void postDataDeciphersWithCommandLine_data()
    {
        QTest::addColumn<QString>("postData");
        QTest::addColumn<int>("lines");
        AddRow("short", QString("action=search&q=Krügerrand"), 1);
        AddRow("several base64 lines", "q=" + QString("abc").repeated(60), 5);
    }
    void postDataDeciphersWithCommandLine()
    {
        QFETCH(QString, postData);
        QFETCH(int, lines);
        m_http->SetReply(Path(), {200, ProgramBody("[]"), {}});

        const TOutcome outcome = Run(Url(), postData);
        QVERIFY(outcome.Ended);
        QCOMPARE(outcome.Lines, QStringList{"[]"});
        const QList<TSeenRequest> seen = m_http->RequestsFor(Path());
        QCOMPARE(seen.size(), 1);
        QCOMPARE(seen.first().Method, "POST");
        const QList<QByteArray> sentLines = seen.first().Body.trimmed().split('\n');
        QCOMPARE(sentLines.size(), lines);
        for (qsizetype i = 0; i + 1 < sentLines.size(); ++i)
            QCOMPARE(sentLines.at(i).trimmed().size(), 64);
        const QByteArray body = QByteArray::fromBase64(seen.first().Body);
        QVERIFY(body.size() >= 32);
        QCOMPARE(QString::fromUtf8(OpenSslEnc(true, m_key, body.left(16), body.mid(16))), postData);
    }

    // A body that cannot be deciphered, a status other than 200, or a connection that cannot be made
    // end the worker with no text and no posted result.
    void badRepliesEndWithoutResult_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        const QByteArray iv = QByteArray::fromHex("f0e1d2c3b4a5968778695a4b3c2d1e0f");
        const QByteArray good = CommandLineBody("[]", iv, m_key);
        AddRow("0 bytes", 200, QByteArray());
        AddRow("17 bytes", 200, good.left(17));
        // Cipher text of a clear block that ends in 'A' (65): no valid padding.
        AddRow("wrong padding", 200, CommandLineBody(QByteArray(32, 'A'), iv, m_key, false));
        AddRow("plain text reply", 200, QByteArray("<html>maintenance</html>"));
        AddRow("404 with a good body", 404, good);
        AddRow("refused connection", 0, QByteArray());
    }
    void badRepliesEndWithoutResult()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        m_http->SetReply(Path(), {status, body, {}});
        const TOutcome outcome =
            Run(status ? Url() : QString("http://127.0.0.1:%1/svc").arg(FreeLocalPort()));
        QVERIFY(outcome.Ended);
        QCOMPARE(outcome.TextCalls, 0);
        QCOMPARE(outcome.Posted.size(), 0);
        QCOMPARE(m_http->CountFor(Path()), status ? 1 : 0);
    }

    // A stop during the transfer ends the worker at once, without a result.
    void stopDuringTransfer()
    {
        const QByteArray hold = "held-" + QByteArray::number(m_batch);
        m_http->SetReply(Path(), {200, ProgramBody("[]"), hold});
        const TOutcome outcome = Run(Url(), {}, [this](TEncryptedTextDownloader* worker) {
            QVERIFY(m_http->WaitForRequests(Path(), 1, 10000));
            worker->Terminate();
        });
        m_http->Release(hold);
        QVERIFY(outcome.Ended);
        QCOMPARE(outcome.TextCalls, 0);
        QCOMPARE(outcome.Posted.size(), 0);
    }

    // An error that OnText raises on the main thread ends the worker instead of the event loop; with
    // the debug switch on, the worker logs the URL that it fetches.
    void errorInOnTextEndsTheWorker()
    {
        m_http->SetReply(Path(), {200, ProgramBody("[]"), {}});
        TLogCapture capture;
        SetLogSink(&capture);
        DebugMode = true;
        bool ended = false;
        int calls = 0;
        auto worker = std::make_unique<TEncryptedTextDownloader>();
        worker->URL = Url();
        worker->OnText = [&calls](TTextDownloader*, const QStringList&) {
            ++calls;
            throw std::runtime_error("handler failed");
        };
        worker->OnTerminate = [&ended](TThread*) { ended = true; };
        worker.release()->Start(); // frees itself at its end
        QVERIFY(QTest::qWaitFor([&ended] { return ended; }, 20000));
        DebugMode = false;
        RemoveLogSink(&capture);
        QCOMPARE(calls, 1);
        QCOMPARE(capture.Lines().size(), 1);
        QVERIFY2(capture.Lines().first().endsWith("] Downloading " + Url() + " ..."),
                 qPrintable(capture.Lines().first()));
    }
};

QTEST_GUILESS_MAIN(TestEncryptedDownloader)
#include "tst_encrypteddownloader.moc"
