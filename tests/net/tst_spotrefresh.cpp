// The spot price refresh against a real HTTP server on 127.0.0.1 that serves enciphered replies.
// The server's address reaches the program through the read-only settings key CatalogueServer of a
// settings store in a temporary folder.

#include "support_common.h"
#include "support_datarow.h"
#include "support_httpserver.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uSpot.h"
#include "uZTSettings.h"

#include <QtTest>

#include <memory>

namespace {

const QByteArray cSpotPath = "/orv/spot.php";

QByteArray CommandLineBody(const QByteArray& clear)
{
    const QByteArray iv = QByteArray::fromHex("00112233445566778899aabbccddeeff");
    const QByteArray cipher = OpenSslEnc(false, OpenSslKey(PayloadKeyA, PayloadKeyB), iv, clear);
    return cipher.isEmpty() ? QByteArray() : iv + cipher;
}

QByteArray ProgramBody(const QByteArray& clear)
{
    return EncryptBytes(clear, PayloadKeyA, PayloadKeyB);
}

QByteArray Element(const char* code, double price, const char* date = "2026-11-20 10:00", double change = 1.5)
{
    return QString(R"({"BaseCurrency":"%1","Price":%2,"DateC":"%3","ChangeAbs":%4,"ChangePerc":"0.1"})")
        .arg(code)
        .arg(price, 0, 'g', 17)
        .arg(date)
        .arg(change, 0, 'g', 17)
        .toUtf8();
}

bool WaitIdle(const TSpotPrices& list)
{
    return QTest::qWaitFor([&list] { return !list.Busy; }, 20000);
}

} // namespace

class TestSpotRefresh : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<TTestHttpServer> m_http;
    TLogCapture m_log;
    TRecordingPresenter m_presenter;
    int m_batch = 0;

    QByteArray HoldId() const { return "spot-" + QByteArray::number(m_batch); }
    void Serve(const QByteArray& body, const QByteArray& hold = {})
    {
        m_http->SetReply(cSpotPath, {200, body, hold});
    }

private slots:
    void initTestCase()
    {
        if (!HaveProgram("openssl"))
            QSKIP("the openssl command line is not installed");
        LoadEnglish();
        m_home = std::make_unique<TTempSettingsHome>();
        m_http = std::make_unique<TTestHttpServer>();
        QVERIFY(m_http->IsListening());
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
    }
    void cleanup()
    {
        m_http->Release(HoldId());
        // A refresh never says anything of its own: no box, and no log line but the worker's.
        QCOMPARE(m_presenter.Requests.size(), 0);
        for (const QString& line : m_log.Lines())
            QVERIFY2(line.contains("] Downloading " + m_http->BaseURL() + "/orv/spot.php?currency=") ||
                         line.endsWith("] TCustomDownloader.Terminate()"),
                     qPrintable(line));
    }
    void cleanupTestCase()
    {
        DebugMode = false;
        RemoveLogSink(&m_log);
        SetMessagePresenter(nullptr);
        m_http.reset();
        m_home.reset();
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
        AddRow("only gold and silver, command line", 200, CommandLineBody("[" + gold + "," + silver + "]"),
               QList<int>{0, 1}, QList<double>{2000.5, 24.25}, 1);
        AddRow("root object", 200, ProgramBody(gold), QList<int>{}, QList<double>{}, 1);
        // Failures in the transfer or the cipher: the earlier entry stays.
        AddRow("empty body", 200, QByteArray(), QList<int>{3}, QList<double>{1000.0}, 0);
        AddRow("status 500", 500, ProgramBody("[" + gold + "]"), QList<int>{3}, QList<double>{1000.0}, 0);
        // Deciphers, but is no JSON: the list was cleared before the parse.
        AddRow("not JSON", 200, ProgramBody("<html>maintenance</html>"), QList<int>{}, QList<double>{}, 0);
        AddRow("blanks and line breaks", 200, ProgramBody(" \r\n \n"), QList<int>{}, QList<double>{}, 0);
        AddRow("empty text", 200, ProgramBody(""), QList<int>{}, QList<double>{}, 1);
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
        list.Add({3, 1000.0, "USD", "earlier", 1.0, "0"}); // an earlier good reply
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
        for (int metal = 0; metal < 6; ++metal)
            QCOMPARE(list.SpotPriceOf(metal),
                     metals.contains(metal) ? prices.at(metals.indexOf(metal)) : 0.0);
    }

    // The fields of an entry; the currency is that of the moment the reply is parsed, while the
    // request carried the one of the moment it left.
    void fieldsAndCurrencyOfAReply()
    {
        Serve(CommandLineBody("[" + Element("XAG", 24.25, "2026-11-20 10:00:05", -0.5) + "]"), HoldId());
        TSpotPrices list;
        Currency = "EUR";
        list.Refresh();
        QVERIFY(m_http->WaitForRequests(cSpotPath, 1, 10000));
        Currency = "GBP";
        m_http->Release(HoldId());
        QVERIFY(WaitIdle(list));
        QCOMPARE(m_http->RequestsFor(cSpotPath).first().Path, "/orv/spot.php?currency=EUR");
        QCOMPARE(list.Count(), 1);
        const TSpotPrice& silver = list.Item(0);
        QCOMPARE(silver.Metal, 1);
        QCOMPARE(silver.Price, 24.25);
        QCOMPARE(silver.Currency, "GBP");
        QCOMPARE(silver.DateC, "2026-11-20 10:00:05");
        QCOMPARE(silver.ChangeAbs, -0.5);
        QCOMPARE(silver.ChangePerc, "0.1");

        // The application-wide list refreshes like any other.
        Serve(CommandLineBody("[" + Element("XPD", 1100.0) + "]"));
        SpotPrices().Refresh();
        QVERIFY(WaitIdle(SpotPrices()));
        QCOMPARE(SpotPrices().SpotPriceOf(3), 1100.0);
        SpotPrices().Clear();
    }

    // Refresh pressed again and again during a slow request: one request, one parse.
    void repeatedRefreshStartsOneRequest()
    {
        Serve(ProgramBody("[" + Element("XAU", 1800.0) + "]"), HoldId());
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
        AddRow("plain", QString("CHF"));
        AddRow("empty", QString());
        // URL encoding would give %26, %3D, %2B and %2F.
        AddRow("reserved characters", QString("EUR&x=1+2/3"));
        // Encoding would double the '%' (%252F). The client itself keeps an escaped reserved character.
        AddRow("percent escape", QString("EUR%2F"));
    }
    void currencyAppendedRaw()
    {
        QFETCH(QString, currency);
        Serve(ProgramBody("[]"));
        TSpotPrices list;
        Currency = currency;
        list.Refresh();
        QVERIFY(WaitIdle(list));
        const QList<TSeenRequest> seen = m_http->RequestsFor(cSpotPath);
        QCOMPARE(seen.size(), 1);
        QCOMPARE(seen.first().Method, "GET");
        QCOMPARE(seen.first().Target, "/orv/spot.php?currency=" + currency.toUtf8());
        QCOMPARE(seen.first().Body, QByteArray());
    }

    // A list that goes away while its refresh runs is not touched by the worker's late events.
    void listGoneBeforeTheReply()
    {
        Serve(ProgramBody("[" + Element("XAU", 1800.0) + "]"), HoldId());
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
};

QTEST_GUILESS_MAIN(TestSpotRefresh)
#include "tst_spotrefresh.moc"
