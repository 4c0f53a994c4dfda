// The spot price refresh against a real HTTP server on 127.0.0.1 that serves enciphered replies.
// The server's address reaches the program through the read-only settings key CatalogueServer of a
// settings store in a temporary folder.

#include "support_httpserver.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uSpot.h"
#include "uZTLog.h"
#include "uZTMessages.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

const QByteArray cSpotPath = "/orv/spot.php";

QByteArray CommandLineBody(const QByteArray& clear)
{
    QProcess dgst;
    dgst.start("openssl", {"dgst", "-sha256", "-binary"});
    dgst.waitForStarted(10000);
    dgst.write((PayloadKeyB + PayloadKeyA).toUtf8());
    dgst.closeWriteChannel();
    dgst.waitForFinished(20000);
    const QString keyHex = QString::fromLatin1(dgst.readAllStandardOutput().toHex());
    const QByteArray iv = QByteArray::fromHex("00112233445566778899aabbccddeeff");
    QProcess enc;
    enc.start("openssl", {"enc", "-aes-256-cbc", "-K", keyHex, "-iv", QString::fromLatin1(iv.toHex())});
    enc.waitForStarted(10000);
    enc.write(clear);
    enc.closeWriteChannel();
    enc.waitForFinished(20000);
    const QByteArray cipher = enc.readAllStandardOutput();
    return enc.exitCode() == 0 && !cipher.isEmpty() ? iv + cipher : QByteArray();
}

QByteArray ProgramBody(const QByteArray& clear)
{
    return EncryptBytes(clear, PayloadKeyA, PayloadKeyB);
}

QByteArray Element(const char* code, double price, const char* date = "2026-11-20 10:00", double change = 1.5)
{
    return QStringLiteral(
               R"({"BaseCurrency":"%1","Price":%2,"DateC":"%3","ChangeAbs":%4,"ChangePerc":"0.1"})")
        .arg(QString::fromLatin1(code))
        .arg(price, 0, 'g', 17)
        .arg(QString::fromLatin1(date))
        .arg(change, 0, 'g', 17)
        .toUtf8();
}

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

class TCountingPresenter : public TMessagePresenter
{
public:
    int Boxes = 0;
    int Present(const TMessageBoxRequest&) override
    {
        ++Boxes;
        return mrOk;
    }
};

// An earlier good reply: one palladium entry.
void FillEarlier(TSpotPrices& list)
{
    list.Add({3, 1000.0, "USD", "earlier", 1.0, "0"});
}

} // namespace

class TestSpotRefresh : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<TTestHttpServer> m_http;
    TLogCapture m_log;
    TCountingPresenter m_presenter;
    int m_batch = 0;

    QByteArray HoldId() const { return "spot-" + QByteArray::number(m_batch); }

    static bool WaitIdle(const TSpotPrices& list)
    {
        return QTest::qWaitFor([&list] { return !list.Busy; }, 20000);
    }

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable("openssl").isEmpty())
            QSKIP("the openssl command line is not installed");
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(LoadBuiltInLanguage("ENGLISHLANG", "English"));
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        qputenv("HOME", m_home->path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", (m_home->path() + "/config").toLocal8Bit());
        m_http = std::make_unique<TTestHttpServer>();
        QVERIFY(m_http->IsListening());
        SetSettingsStore(
            std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, "Software\\Brenmoor\\Orvane"));
        // A trailing '/' as a user might write it: the program drops it.
        SettingsStore().SetStringValue("CatalogueServer", QString(), m_http->BaseURL() + "/");
        QCOMPARE(ReadCatalogueServer(), m_http->BaseURL() + "/");
        SetMessagePresenter(&m_presenter);
        SetLogSink(&m_log);
        DebugMode = true;
    }

    void init()
    {
        ++m_batch;
        m_http->ClearRequests();
        m_http->ClearReplies();
        Currency = "USD";
        m_presenter.Boxes = 0;
    }

    void cleanup()
    {
        m_http->Release(HoldId());
        // A refresh never says anything of its own: no box, and no log line but the worker's.
        QCOMPARE(m_presenter.Boxes, 0);
        const QStringList lines = m_log.Lines();
        for (const QString& line : lines)
            QVERIFY2(line.contains("] Downloading " + m_http->BaseURL() + "/orv/spot.php?currency=") ||
                         line.endsWith("] TCustomDownloader.Terminate()"),
                     qPrintable(line));
    }

    void cleanupTestCase()
    {
        DebugMode = false;
        RemoveLogSink(&m_log);
        SetMessagePresenter(nullptr);
        SetSettingsStore(nullptr);
        m_http.reset();
    }

    void reply_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QList<int>>("metals");
        QTest::addColumn<QList<double>>("prices");
        QTest::addColumn<int>("loaded");

        const QByteArray gold = Element("XAU", 2000.5);
        const QByteArray silver = Element("XAG", 24.25, "d", -0.5);
        QTest::newRow("only gold and silver, command line")
            << 200 << CommandLineBody("[" + gold + "," + silver + "]") << QList<int>{0, 1}
            << QList<double>{2000.5, 24.25} << 1;
        QTest::newRow("only gold and silver, program")
            << 200 << ProgramBody("[" + silver + ",\n" + gold + "]\n") << QList<int>{1, 0}
            << QList<double>{24.25, 2000.5} << 1;
        QTest::newRow("gold twice") << 200 << ProgramBody("[" + gold + "," + Element("XAU", 1.0) + "]")
                                    << QList<int>{0, 0} << QList<double>{2000.5, 1.0} << 1;
        QTest::newRow("lower-case code skipped")
            << 200 << CommandLineBody("[" + Element("xau", 5.0) + "," + Element("XPT", 950.0) + "]")
            << QList<int>{2} << QList<double>{950.0} << 1;
        QTest::newRow("root object") << 200 << ProgramBody(gold) << QList<int>{} << QList<double>{} << 1;
        QTest::newRow("empty text") << 200 << ProgramBody("") << QList<int>{} << QList<double>{} << 1;
        // Failures in the transfer or the cipher: the earlier entry stays.
        QTest::newRow("empty body") << 200 << QByteArray() << QList<int>{3} << QList<double>{1000.0} << 0;
        QTest::newRow("17 bytes") << 200 << ProgramBody("[]").left(17) << QList<int>{3}
                                  << QList<double>{1000.0} << 0;
        QTest::newRow("clear JSON, not enciphered")
            << 200 << QByteArray("[" + gold + "]") << QList<int>{3} << QList<double>{1000.0} << 0;
        QTest::newRow("status 500") << 500 << ProgramBody("[" + gold + "]") << QList<int>{3}
                                    << QList<double>{1000.0} << 0;
        // Deciphers, but is no JSON: the list was cleared before the parse.
        QTest::newRow("not JSON") << 200 << ProgramBody("<html>maintenance</html>") << QList<int>{}
                                  << QList<double>{} << 0;
        QTest::newRow("truncated JSON")
            << 200 << CommandLineBody("[" + gold) << QList<int>{} << QList<double>{} << 0;
    }
    void reply()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QList<int>, metals);
        QFETCH(QList<double>, prices);
        QFETCH(int, loaded);
        m_http->SetReply(cSpotPath, {status, body, {}});

        TSpotPrices list;
        FillEarlier(list);
        int loadedCalls = 0;
        list.OnLoaded = [&](TSpotPrices* sender) {
            QCOMPARE(sender, &list);
            ++loadedCalls;
        };
        list.Refresh();
        QVERIFY(list.Busy);
        QVERIFY(WaitIdle(list));

        QCOMPARE(m_http->CountFor(cSpotPath), 1);
        QCOMPARE(loadedCalls, loaded);
        QCOMPARE(list.Count(), metals.size());
        for (int i = 0; i < list.Count(); ++i) {
            QCOMPARE(list.Item(i).Metal, metals.at(i));
            QCOMPARE(list.Item(i).Price, prices.at(i));
        }
        for (int metal = 0; metal < 6; ++metal) {
            const qsizetype at = metals.indexOf(metal);
            QCOMPARE(list.SpotPriceOf(metal), at < 0 ? 0.0 : prices.at(at));
        }
    }

    void fieldsOfAReply()
    {
        m_http->SetReply(
            cSpotPath,
            {200, CommandLineBody("[" + Element("XAG", 24.25, "2026-11-20 10:00:05", -0.5) + "]"), {}});
        TSpotPrices list;
        list.Refresh();
        QVERIFY(WaitIdle(list));
        QCOMPARE(list.Count(), 1);
        const TSpotPrice& silver = list.Item(0);
        QCOMPARE(silver.Metal, 1);
        QCOMPARE(silver.Price, 24.25);
        QCOMPARE(silver.Currency, QString("USD"));
        QCOMPARE(silver.DateC, QString("2026-11-20 10:00:05"));
        QCOMPARE(silver.ChangeAbs, -0.5);
        QCOMPARE(silver.ChangePerc, QString("0.1"));
    }

    // The entries carry the currency of the moment the reply is parsed; the request carried the one
    // of the moment it left.
    void currencyTakenWhenTheReplyArrives()
    {
        m_http->SetReply(cSpotPath, {200, ProgramBody("[" + Element("XAU", 1800.0) + "]"), HoldId()});
        TSpotPrices list;
        Currency = "EUR";
        list.Refresh();
        QVERIFY(m_http->WaitForRequests(cSpotPath, 1, 10000));
        Currency = "GBP";
        m_http->Release(HoldId());
        QVERIFY(WaitIdle(list));
        QCOMPARE(m_http->RequestsFor(cSpotPath).first().Path, QByteArray("/orv/spot.php?currency=EUR"));
        QCOMPARE(list.Count(), 1);
        QCOMPARE(list.Item(0).Currency, QString("GBP"));
    }

    // Refresh pressed again and again during a slow request: one request, one parse.
    void repeatedRefreshStartsOneRequest()
    {
        m_http->SetReply(cSpotPath, {200, ProgramBody("[" + Element("XAU", 1800.0) + "]"), HoldId()});
        TSpotPrices list;
        int loadedCalls = 0;
        list.OnLoaded = [&loadedCalls](TSpotPrices*) { ++loadedCalls; };
        list.Refresh();
        list.Refresh();
        QVERIFY(m_http->WaitForRequests(cSpotPath, 1, 10000));
        for (int i = 0; i < 5; ++i) {
            list.Refresh();
            QVERIFY(list.Busy);
            QTest::qWait(20);
        }
        m_http->Release(HoldId());
        QVERIFY(WaitIdle(list));
        QCOMPARE(m_http->CountFor(cSpotPath), 1);
        QCOMPARE(loadedCalls, 1);
        QCOMPARE(list.Count(), 1);

        // Once idle, the next press goes out again.
        list.Refresh();
        QVERIFY(WaitIdle(list));
        QCOMPARE(m_http->CountFor(cSpotPath), 2);
        QCOMPARE(loadedCalls, 2);
    }

    // The currency goes into the query as it stands, with nothing encoded by the program.
    void currencyAppendedRaw_data()
    {
        QTest::addColumn<QString>("currency");
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("plain") << "CHF" << QByteArray("/orv/spot.php?currency=CHF");
        QTest::newRow("empty") << "" << QByteArray("/orv/spot.php?currency=");
        // URL encoding would give %26, %3D, %2B and %2F.
        QTest::newRow("reserved characters")
            << "EUR&x=1+2/3" << QByteArray("/orv/spot.php?currency=EUR&x=1+2/3");
        // Encoding would double the '%' (%252F). The client itself keeps an escaped reserved character.
        QTest::newRow("percent escape") << "EUR%2F" << QByteArray("/orv/spot.php?currency=EUR%2F");
    }
    void currencyAppendedRaw()
    {
        QFETCH(QString, currency);
        QFETCH(QByteArray, path);
        m_http->SetReply(cSpotPath, {200, ProgramBody("[]"), {}});
        TSpotPrices list;
        Currency = currency;
        list.Refresh();
        QVERIFY(WaitIdle(list));
        const QList<TSeenRequest> seen = m_http->RequestsFor(cSpotPath);
        QCOMPARE(seen.size(), 1);
        QCOMPARE(seen.first().Method, QByteArray("GET"));
        QCOMPARE(seen.first().Target, path);
        QCOMPARE(seen.first().Body, QByteArray());
    }

    // A list that goes away while its refresh runs is not touched by the worker's late events.
    void listGoneBeforeTheReply()
    {
        m_http->SetReply(cSpotPath, {200, ProgramBody("[" + Element("XAU", 1800.0) + "]"), HoldId()});
        int loadedCalls = 0;
        {
            auto list = std::make_unique<TSpotPrices>();
            list->OnLoaded = [&loadedCalls](TSpotPrices*) { ++loadedCalls; };
            list->Refresh();
            QVERIFY(m_http->WaitForRequests(cSpotPath, 1, 10000));
        }
        // A second list refreshes beside the orphaned worker; both replies are let go.
        TSpotPrices other;
        other.Refresh();
        QVERIFY(m_http->WaitForRequests(cSpotPath, 2, 10000));
        m_http->Release(HoldId());
        QVERIFY(WaitIdle(other));
        QTest::qWait(200); // the orphaned worker ends about now; its events find nobody
        QCOMPARE(loadedCalls, 0);
        QCOMPARE(other.Count(), 1);
    }

    // The application-wide list refreshes like any other.
    void applicationList()
    {
        m_http->SetReply(cSpotPath, {200, CommandLineBody("[" + Element("XPD", 1100.0) + "]"), {}});
        SpotPrices().Refresh();
        QVERIFY(WaitIdle(SpotPrices()));
        QCOMPARE(SpotPrices().SpotPriceOf(3), 1100.0);
        SpotPrices().Clear();
    }
};

QTEST_GUILESS_MAIN(TestSpotRefresh)
#include "tst_spotrefresh.moc"
