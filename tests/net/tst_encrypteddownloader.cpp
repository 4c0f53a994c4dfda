// The enciphered text worker against a real HTTP server on 127.0.0.1, with the openssl command line
// as the independent party on the other end of the cipher.

#include "support_httpserver.h"
#include "uEncryptedDownloader.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uZTLog.h"
#include "uZTStrings.h"

#include <QPointer>
#include <QStandardPaths>
#include <QtTest>

#include <memory>

namespace {

// Runs `openssl <args>` over input; the output, or an empty array with the failure in error.
QByteArray RunOpenSsl(const QStringList& args, const QByteArray& input, QString* error = nullptr)
{
    QProcess process;
    process.start("openssl", args);
    if (!process.waitForStarted(10000)) {
        if (error)
            *error = "openssl did not start";
        return {};
    }
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(20000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        if (error)
            *error = "openssl failed: " + QString::fromLocal8Bit(process.readAllStandardError());
        return {};
    }
    return process.readAllStandardOutput();
}

// The payload key as the command line computes it: SHA-256 of keyB followed by keyA, in hex.
QString CommandLineKeyHex(const QString& keyA, const QString& keyB)
{
    return QString::fromLatin1(RunOpenSsl({"dgst", "-sha256", "-binary"}, (keyB + keyA).toUtf8()).toHex());
}

// An enciphered body made by the command line: the IV in clear, then the cipher text.
QByteArray CommandLineBody(const QByteArray& clear, const QByteArray& iv, const QString& keyHex,
                           bool pad = true)
{
    QStringList args{"enc", "-aes-256-cbc", "-K", keyHex, "-iv", QString::fromLatin1(iv.toHex())};
    if (!pad)
        args << "-nopad";
    const QByteArray cipher = RunOpenSsl(args, clear);
    return cipher.isEmpty() ? QByteArray() : iv + cipher;
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

class TLogCapture : public TZTLogSink
{
public:
    void LogLine(const QString& line) override
    {
        QMutexLocker lock(&m_lock);
        m_lines.append(line);
    }
    QStringList Lines()
    {
        QMutexLocker lock(&m_lock);
        return m_lines;
    }

private:
    QMutex m_lock;
    QStringList m_lines;
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
    QString m_keyHex;
    int m_batch = 0;

    QByteArray Path() const { return "/svc/b" + QByteArray::number(m_batch); }
    QString Url() const { return m_http->URL(QString::fromLatin1(Path())); }

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
        if (QStandardPaths::findExecutable("openssl").isEmpty())
            QSKIP("the openssl command line is not installed");
        QVERIFY(LoadBuiltInLanguage("ENGLISHLANG", "English"));
        m_keyHex = CommandLineKeyHex(PayloadKeyA, PayloadKeyB);
        QCOMPARE(m_keyHex.size(), 64);
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
        const QStringList textLines{"first", QString::fromUtf8("zweite Zeile \xc3\xa4\xc3\xb6\xc3\xbc"),
                                    "third"};
        // 16 bytes of clear text: a whole block of padding follows.
        const QByteArray block = "0123456789abcdef";
        const QByteArray large = QByteArray("line of a longer reply\n").repeated(3000);
        QStringList largeLines;
        for (int i = 0; i < 3000; ++i)
            largeLines << "line of a longer reply";
        for (bool commandLine : {false, true}) {
            const char* by = commandLine ? "command line" : "program";
            QTest::addRow("json, %s", by) << commandLine << json << QStringList{QString::fromUtf8(json)};
            QTest::addRow("utf-8 lines, %s", by) << commandLine << text << textLines;
            QTest::addRow("one block, %s", by) << commandLine << block << QStringList{"0123456789abcdef"};
            QTest::addRow("empty text, %s", by) << commandLine << QByteArray() << QStringList{};
            QTest::addRow("large, %s", by) << commandLine << large << largeLines;
        }
    }
    void replyDeciphers()
    {
        QFETCH(bool, commandLine);
        QFETCH(QByteArray, clear);
        QFETCH(QStringList, lines);
        const QByteArray body =
            commandLine
                ? CommandLineBody(clear, QByteArray::fromHex("000102030405060708090a0b0c0d0e0f"), m_keyHex)
                : EncryptBytes(clear, PayloadKeyA, PayloadKeyB);
        QVERIFY(body.size() >= 32);
        m_http->SetReply(Path(), {200, body, {}});

        const TOutcome outcome = Run(Url());
        QVERIFY(outcome.Ended);
        QCOMPARE(outcome.TextCalls, 1);
        QVERIFY(outcome.TextOnMainThread);
        QCOMPARE(outcome.Lines, lines);
        QCOMPARE(outcome.Posted.size(), 1);
        QCOMPARE(outcome.Posted.first(), lines);
        QCOMPARE(outcome.Statuses, QStringList{"2:Downloading data..."});
        const QList<TSeenRequest> seen = m_http->RequestsFor(Path());
        QCOMPARE(seen.size(), 1);
        QCOMPARE(seen.first().Method, QByteArray("GET"));
        QCOMPARE(seen.first().Body, QByteArray());
    }

    // Post data leaves the worker enciphered, as wrapped base64, and the command line deciphers it.
    void postDataDeciphersWithCommandLine_data()
    {
        QTest::addColumn<QString>("postData");
        QTest::addColumn<int>("lines");
        QTest::newRow("short") << QString::fromUtf8("action=search&q=Kr\xc3\xbcgerrand") << 1;
        QTest::newRow("several base64 lines") << QString("q=").append(QString("abc").repeated(60)) << 5;
    }
    void postDataDeciphersWithCommandLine()
    {
        QFETCH(QString, postData);
        QFETCH(int, lines);
        m_http->SetReply(Path(), {200, EncryptBytes("[]", PayloadKeyA, PayloadKeyB), {}});

        const TOutcome outcome = Run(Url(), postData);
        QVERIFY(outcome.Ended);
        QCOMPARE(outcome.Lines, QStringList{"[]"});
        const QList<TSeenRequest> seen = m_http->RequestsFor(Path());
        QCOMPARE(seen.size(), 1);
        QCOMPARE(seen.first().Method, QByteArray("POST"));
        const QByteArray sent = seen.first().Body;
        const QList<QByteArray> sentLines = sent.trimmed().split('\n');
        QCOMPARE(sentLines.size(), lines);
        for (qsizetype i = 0; i + 1 < sentLines.size(); ++i)
            QCOMPARE(sentLines.at(i).trimmed().size(), 64);

        const QByteArray body = QByteArray::fromBase64(QByteArray(sent).replace("\r", "").replace("\n", ""));
        QVERIFY(body.size() >= 32);
        QString error;
        const QByteArray clear = RunOpenSsl(
            {"enc", "-d", "-aes-256-cbc", "-K", m_keyHex, "-iv", QString::fromLatin1(body.left(16).toHex())},
            body.mid(16), &error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QCOMPARE(QString::fromUtf8(clear), postData);
    }

    // A body that cannot be deciphered, or a status other than 200, ends the worker with no text and
    // no posted result; its end is still reported.
    void badRepliesEndWithoutResult_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        const QByteArray iv = QByteArray::fromHex("f0e1d2c3b4a5968778695a4b3c2d1e0f");
        const QByteArray good = CommandLineBody("[]", iv, m_keyHex);
        QTest::newRow("0 bytes") << 200 << QByteArray();
        QTest::newRow("15 bytes") << 200 << good.left(15);
        QTest::newRow("16 bytes: IV only") << 200 << good.left(16);
        QTest::newRow("17 bytes") << 200 << good.left(17);
        QTest::newRow("not a multiple of the block") << 200 << good + "x";
        // Cipher text of a clear block that ends in 'A' (65): no valid padding.
        QTest::newRow("wrong padding") << 200 << CommandLineBody(QByteArray(32, 'A'), iv, m_keyHex, false);
        QTest::newRow("swapped constants")
            << 200 << CommandLineBody("[]", iv, CommandLineKeyHex(PayloadKeyB, PayloadKeyA));
        QTest::newRow("plain text reply") << 200 << QByteArray("<html>maintenance</html>");
        QTest::newRow("404 with a good body") << 404 << good;
        QTest::newRow("500 with a good body") << 500 << good;
    }
    void badRepliesEndWithoutResult()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        m_http->SetReply(Path(), {status, body, {}});

        const TOutcome outcome = Run(Url());
        QVERIFY(outcome.Ended);
        QCOMPARE(outcome.TextCalls, 0);
        QCOMPARE(outcome.Posted.size(), 0);
        QCOMPARE(m_http->CountFor(Path()), 1);
    }

    // A connection that cannot be made raises on the worker, which ends in silence.
    void refusedConnectionEndsWithoutResult()
    {
        const TOutcome outcome = Run(QString("http://127.0.0.1:%1/svc").arg(FreeLocalPort()));
        QVERIFY(outcome.Ended);
        QCOMPARE(outcome.TextCalls, 0);
        QCOMPARE(outcome.Posted.size(), 0);
    }

    // A stop during the transfer ends the worker at once, without a result.
    void stopDuringTransfer()
    {
        const QByteArray hold = "held-" + QByteArray::number(m_batch);
        m_http->SetReply(Path(), {200, EncryptBytes("[]", PayloadKeyA, PayloadKeyB), hold});
        const TOutcome outcome = Run(Url(), {}, [this](TEncryptedTextDownloader* worker) {
            QVERIFY(m_http->WaitForRequests(Path(), 1, 10000));
            worker->Terminate();
        });
        m_http->Release(hold);
        QVERIFY(outcome.Ended);
        QCOMPARE(outcome.TextCalls, 0);
        QCOMPARE(outcome.Posted.size(), 0);
    }

    // An error that OnText raises on the main thread ends the worker instead of the event loop.
    void errorInOnTextEndsTheWorker()
    {
        m_http->SetReply(Path(), {200, EncryptBytes("[]", PayloadKeyA, PayloadKeyB), {}});
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
        QCOMPARE(calls, 1);
    }

    // With the debug switch on, the worker logs the URL that it fetches.
    void logsTheDownload()
    {
        m_http->SetReply(Path(), {200, EncryptBytes("[]", PayloadKeyA, PayloadKeyB), {}});
        TLogCapture capture;
        SetLogSink(&capture);
        DebugMode = true;
        const TOutcome outcome = Run(Url());
        DebugMode = false;
        RemoveLogSink(&capture);
        QVERIFY(outcome.Ended);
        const QStringList lines = capture.Lines();
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().endsWith("] Downloading " + Url() + " ..."), qPrintable(lines.first()));
    }
};

QTEST_GUILESS_MAIN(TestEncryptedDownloader)
#include "tst_encrypteddownloader.moc"
