// The download transport against real servers on 127.0.0.1: an HTTP and an HTTPS server of the
// test, and tinyproxy as a forward proxy.

#include "support_common.h"
#include "support_datarow.h"
#include "support_httpserver.h"
#include "uCatalogueServer.h"
#include "uDownloader.h"
#include "uDownloader_SBB.h"
#include "uZTSettings.h"
#include "uZTUserHive.h"

#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <thread>

namespace {

struct TErrorCall
{
    int Calls = 0;
    qint32 Kind = 0;
    qint32 Status = 0;
    QString Text;
};

// Sets the Inet.* variables for one test and puts the old values back.
class TProxyVariables
{
public:
    explicit TProxyVariables(const TProxySettings& settings) : m_saved(CurrentProxySettings())
    {
        Set(settings);
    }
    ~TProxyVariables() { Set(m_saved); }

private:
    static void Set(const TProxySettings& s)
    {
        InetAccess = s.InetAccess;
        InetProxyHost = s.Host;
        InetProxyPort = s.Port;
        InetProxyUsername = s.Username;
        InetProxyPassword = s.Password;
    }
    TProxySettings m_saved;
};

// A transfer to strings that counts a client error (EDownloadError) as a failed transfer.
bool Fetch(TDownloader& downloader, const QString& url, QStringList* lines = nullptr)
{
    QStringList list;
    downloader.SetURL(url);
    try {
        const bool result = downloader.DownloadToStrings(list);
        if (lines)
            *lines = list;
        return result;
    } catch (const EDownloadError&) {
        return false;
    }
}

} // namespace

class TestDownloader : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_certDir;
    std::unique_ptr<TTestHttpServer> m_http;
    std::unique_ptr<TTestHttpServer> m_https;

private slots:
    void initTestCase()
    {
        QVERIFY2(MakeSelfSignedCertificate(m_certDir.path()), "openssl could not make a certificate");
        m_http = std::make_unique<TTestHttpServer>();
        m_https = std::make_unique<TTestHttpServer>(m_certDir.path());
        QVERIFY(m_http->IsListening() && m_https->IsListening());
    }
    void init() { m_http->ClearRequests(); }
    void cleanupTestCase()
    {
        m_http.reset();
        m_https.reset();
    }

    void transferResult_data()
    {
        QTest::addColumn<bool>("secure");
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("result");
        QTest::addColumn<int>("errorStatus"); // 0: OnError not called
        QTest::addColumn<QStringList>("lines");
        const QStringList hello{"hello"};
        AddRow("200 over http", false, "/ok", true, 0, hello);
        AddRow("200 over https with a self-signed certificate", true, "/ok", true, 0, hello);
        AddRow("one 301 to a 200 page", false, "/redirect/1", true, 0, QStringList{"arrived"});
        AddRow("ten redirections over https", true, "/redirect/10", true, 0, QStringList{"arrived"});
        AddRow("404 keeps its body", false, "/missing", false, 404,
               QStringList{"no such page", "second line"});
        AddRow("gzip body decoded", false, "/gzip", true, 0,
               QStringList{QString("compressed body ").repeated(200)});
        AddRow("UTF-8 lines, mixed line breaks", false, "/lines", true, 0,
               QStringList{"first line", "zweite Zeile äöü", "third"});
    }
    void transferResult()
    {
        QFETCH(bool, secure);
        QFETCH(QString, path);
        QFETCH(bool, result);
        QFETCH(int, errorStatus);
        QFETCH(QStringList, lines);
        TElCookieManagerWrapper cookies;
        TSBB_Downloader downloader(&cookies);
        TErrorCall errors;
        downloader.OnError = [&errors](TDownloader*, qint32 kind, qint32 status, const QString& text) {
            errors = {errors.Calls + 1, kind, status, text};
        };
        int doneCalls = 0;
        downloader.SetOnDone([&doneCalls](TDownloader*, const QString&, qint32, QIODevice*) { ++doneCalls; });
        downloader.SetURL((secure ? m_https : m_http)->URL(path));
        QStringList list{"stale"};
        QCOMPARE(downloader.DownloadToStrings(list), result);
        QCOMPARE(list, lines);
        QCOMPARE(downloader.IsBusy(), false);
        QCOMPARE(doneCalls, result ? 1 : 0);
        QCOMPARE(errors.Calls, errorStatus ? 1 : 0);
        if (errorStatus) {
            QCOMPARE(errors.Kind, cDownloadErrorKind);
            QCOMPARE(errors.Status, errorStatus);
            QCOMPARE(TextToLines(errors.Text), lines);
        }
    }

    void eleventhRedirectionFailsAndRequestHeaders()
    {
        TSBB_Downloader downloader;
        QVERIFY(!Fetch(downloader, m_http->URL("/redirect/11")));
        QVERIFY(!downloader.IsBusy());
        // The first request and ten redirections, and no eleventh one.
        QCOMPARE(m_http->CountFor("/redirect/"), 11);
        QCOMPARE(m_http->CountFor("/redirect/0"), 0);
        const TSeenRequest seen = m_http->RequestsFor("/redirect/").value(0);
        QCOMPARE(seen.Method, "GET");
        QCOMPARE(seen.Headers.value("user-agent"), "Orvane [SBB]v1.0.0.0 x64");
        QVERIFY(seen.Headers.value("accept-encoding").contains("gzip"));
        QVERIFY(!seen.Headers.contains("via"));
        // From HTTPS to HTTP is followed.
        QStringList lines;
        QVERIFY(Fetch(downloader, m_https->URL("/to?url=") + QUrl::toPercentEncoding(m_http->URL("/ok")),
                      &lines));
        QCOMPARE(lines, QStringList{"hello"});
    }

    void post_data()
    {
        QTest::addColumn<QString>("contentType");
        QTest::addColumn<QByteArray>("sentType");
        AddRow("empty ContentType", QString(), QByteArray("application/x-www-form-urlencoded"));
        AddRow("given ContentType", QString("application/json"), QByteArray("application/json"));
    }
    void post()
    {
        QFETCH(QString, contentType);
        QFETCH(QByteArray, sentType);
        TSBB_Downloader downloader;
        downloader.PostData = "a=1&b=%C3%A4";
        downloader.ContentType = contentType;
        QStringList lines;
        QVERIFY(Fetch(downloader, m_http->URL("/echo"), &lines));
        const QList<TSeenRequest> seen = m_http->RequestsFor("/echo");
        QCOMPARE(seen.size(), 1);
        QCOMPARE(seen.first().Method, "POST");
        QCOMPARE(seen.first().Headers.value("content-type"), sentType);
        QCOMPARE(seen.first().Body, "a=1&b=%C3%A4");
        QCOMPARE(lines, QStringList({"POST", sentType, "a=1&b=%C3%A4"}));

        m_http->ClearRequests();
        downloader.SetURL(m_http->URL("/echo"));
        QVERIFY(downloader.PostForm("upload", "photo.jpg", "JPEGDATA", lines));
        const TSeenRequest form = m_http->RequestsFor("/echo").value(0);
        QVERIFY(form.Headers.value("content-type").startsWith("multipart/form-data; boundary="));
        QVERIFY(form.Body.contains("name=\"upload\"; filename=\"photo.jpg\"") &&
                form.Body.contains("JPEGDATA"));
    }

    void fileAndStreamTargets()
    {
        QTemporaryDir dir;
        const QString fileName = dir.filePath("page.txt");
        WriteFile(fileName, QByteArray(4096, 'z'));
        TSBB_Downloader downloader;
        downloader.SetURL(m_http->URL("/ok"));
        downloader.SetFileName(fileName);
        QVERIFY(downloader.DownloadToFile(true));
        QCOMPARE(ReadFile(fileName), "hello"); // replaced, not appended to

        QBuffer buffer;
        buffer.open(QIODevice::ReadWrite);
        buffer.write("prefix:");
        int doneSize = -1;
        downloader.SetOnDone(
            [&doneSize](TDownloader*, const QString&, qint32 size, QIODevice*) { doneSize = size; });
        QVERIFY(downloader.DownloadToStream(&buffer));
        QCOMPARE(buffer.data(), "prefix:hello");
        QCOMPARE(doneSize, 5);

        // After an error the file is not held open.
        downloader.SetURL(QString("http://127.0.0.1:%1/").arg(FreeLocalPort()));
        downloader.SetFileName(dir.filePath("x.bin"));
        QVERIFY_THROWS_EXCEPTION(EDownloadError, downloader.DownloadToFile());
        QVERIFY(QFile::remove(dir.filePath("x.bin")));
    }

    void cookiesStayWithTheirStore()
    {
        TElCookieManagerWrapper store;
        TSBB_Downloader first(&store);
        QStringList lines;
        QVERIFY(Fetch(first, m_http->URL("/cookie/set")));
        QVERIFY(Fetch(first, m_http->URL("/cookie/get"), &lines));
        QCOMPARE(lines, QStringList{"session=abc"});
        QCOMPARE(store.Cookies().size(), 1);

        TElCookieManagerWrapper otherStore;
        TSBB_Downloader second(&otherStore);
        QVERIFY(Fetch(second, m_http->URL("/cookie/get"), &lines));
        QCOMPARE(lines, QStringList());
        QCOMPARE(otherStore.Cookies().size(), 0);
    }

    // Failures of the client raise, and so do replies that cannot be decoded or do not end.
    void clientErrorsRaise_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<int>("timeout");
        QTest::addColumn<int>("deadline");
        QTest::addColumn<qint64>("maxSize");
        const qint64 cap = TSBB_Downloader::cDefaultMaxReplySize;
        AddRow("connection refused", QString("http://127.0.0.1:%1/ok").arg(FreeLocalPort()), 20000, 60000,
               cap);
        AddRow("inactivity time-out", QString("/stall"), 400, 60000, cap);
        AddRow("TLS to a plain server", QString("tls-to-plain"), 20000, 60000, cap);
        AddRow("unknown host", QString("http://no-such-host.invalid/"), 20000, 60000, cap);
        AddRow("damaged gzip", QString("/gzip/damaged"), 20000, 60000, cap);
        AddRow("junk said to be gzip", QString("/gzip/junk"), 20000, 60000, cap);
        AddRow("gzip bomb", QString("/gzip/bomb"), 20000, 60000, cap);
        AddRow("endless body cut at the cap", QString("/endless"), 20000, 60000, qint64(1) << 20);
        AddRow("dripping body ends at the deadline", QString("/slow"), 20000, 700, cap);
    }
    void clientErrorsRaise()
    {
        QFETCH(QString, url);
        QFETCH(int, timeout);
        QFETCH(int, deadline);
        QFETCH(qint64, maxSize);
        if (url == "tls-to-plain")
            url = QString("https://127.0.0.1:%1/ok").arg(m_http->Port());
        else if (url.startsWith('/'))
            url = m_http->URL(url);
        TSBB_Downloader downloader;
        downloader.SetTransferTimeout(timeout);
        downloader.SetTransferDeadline(deadline);
        downloader.SetMaxReplySize(maxSize);
        int calls = 0;
        downloader.OnError = [&calls](TDownloader*, qint32, qint32, const QString&) { ++calls; };
        downloader.SetOnDone([&calls](TDownloader*, const QString&, qint32, QIODevice*) { ++calls; });
        downloader.SetURL(url);
        QBuffer body;
        body.open(QIODevice::ReadWrite);
        const int slowCut = m_http->AbortedSlowTransfers();
        QVERIFY_THROWS_EXCEPTION(EDownloadError, downloader.DownloadToStream(&body));
        QVERIFY(!downloader.IsBusy());
        QCOMPARE(calls, 0);
        QVERIFY(body.size() <= maxSize);
        if (url.endsWith("/slow")) // the connection was cut, not left to drip
            QTRY_COMPARE(m_http->AbortedSlowTransfers(), slowCut + 1);
    }

    void abortFromAnotherThread()
    {
        const int abortedBefore = m_http->AbortedSlowTransfers();
        TSBB_Downloader downloader;
        downloader.SetURL(m_http->URL("/slow"));
        std::atomic<bool> aborted = false;
        std::thread stopper([&downloader, &aborted] {
            while (!downloader.IsBusy())
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            downloader.Abort();
            aborted = true;
        });
        QBuffer buffer;
        buffer.open(QIODevice::ReadWrite);
        QElapsedTimer clock;
        clock.start();
        const bool result = downloader.DownloadToStream(&buffer);
        const qint64 elapsed = clock.elapsed();
        stopper.join();
        QVERIFY(aborted && !result && !downloader.IsBusy());
        // The body takes 100 s; the transfer ended with the abort.
        QVERIFY2(elapsed < 20000, qPrintable(QString::number(elapsed)));
        QVERIFY(buffer.size() < 2000);
        QTRY_COMPARE(m_http->AbortedSlowTransfers(), abortedBefore + 1);
        QVERIFY(Fetch(downloader, m_http->URL("/ok"))); // works again afterwards

        // An abort while idle ends the next transfer only.
        downloader.Abort();
        QVERIFY(!Fetch(downloader, m_http->URL("/ok")));
        QVERIFY(Fetch(downloader, m_http->URL("/ok")));
    }

    void proxyOfTheSettings_data()
    {
        QTest::addColumn<int>("access");
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("user");
        QTest::addColumn<int>("expectedPort"); // 0: no proxy
        QTest::addColumn<QString>("expectedUser");
        QTest::addColumn<QString>("expectedPassword");
        AddRow("0 is direct", 0, 8080, QString("u"), 0, QString(), QString());
        AddRow("2 with credentials", 2, 8080, QString("u"), 8080, QString("u"), QString("p"));
        AddRow("2, no user: no password", 2, 1, QString(), 1, QString(), QString());
        AddRow("port 0 leaves the default", 2, 0, QString(), 3128, QString(), QString());
        AddRow("port 65536 leaves the default", 2, 65536, QString(), 3128, QString(), QString());
    }
    void proxyOfTheSettings()
    {
        QFETCH(int, access);
        QFETCH(int, port);
        QFETCH(QString, user);
        QFETCH(int, expectedPort);
        QFETCH(QString, expectedUser);
        QFETCH(QString, expectedPassword);
        const QNetworkProxy proxy = TSBB_Downloader::MakeProxy({access, "proxy.example", port, user, "p"});
        QCOMPARE(proxy.type(), expectedPort ? QNetworkProxy::HttpProxy : QNetworkProxy::NoProxy);
        if (expectedPort) {
            QCOMPARE(proxy.hostName(), "proxy.example");
            QCOMPARE(int(proxy.port()), expectedPort);
            QCOMPARE(proxy.user(), expectedUser);
            QCOMPARE(proxy.password(), expectedPassword);
        }
    }

    // Through tinyproxy: the settings' factory uses it exactly for InetAccess 2, also for https
    // (CONNECT); credentials go to the proxy only with a user name, and end there.
    void throughTinyproxy_data()
    {
        QTest::addColumn<int>("access");
        QTest::addColumn<bool>("secure");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::addColumn<bool>("reaches");
        AddRow("InetAccess 1: direct", 1, false, QString(), QString(), true);
        AddRow("InetAccess 2: proxy", 2, false, QString(), QString(), true);
        AddRow("InetAccess 2: https through CONNECT", 2, true, QString(), QString(), true);
        AddRow("proxy asks, no user name, password set", 2, false, QString(), QString("secret"), false);
        AddRow("proxy asks, wrong password", 2, false, QString("bob"), QString("wrong"), false);
        AddRow("proxy asks, user and password", 2, false, QString("bob"), QString("secret"), true);
    }
    void throughTinyproxy()
    {
        QFETCH(int, access);
        QFETCH(bool, secure);
        QFETCH(QString, user);
        QFETCH(QString, password);
        QFETCH(bool, reaches);
        if (!TTinyProxy::Available())
            QSKIP("tinyproxy is not installed (scripts/deps.sh installs it)");
        const bool asks = QByteArray(QTest::currentDataTag()).startsWith("proxy asks");
        TTinyProxy proxy;
        QVERIFY2(asks ? proxy.Start("bob", "secret") : proxy.Start(), "tinyproxy did not start");
        TTestHttpServer& server = secure ? *m_https : *m_http;
        server.ClearRequests();
        // The way every worker makes its transport: the factory over the settings variables.
        const TProxyVariables settings({access, "127.0.0.1", proxy.Port(), user, password});
        const std::unique_ptr<TDownloader> downloader = DownloaderClass().Create(nullptr);
        QCOMPARE(Fetch(*downloader, server.URL("/ok")), reaches);
        QCOMPARE(server.CountFor("/ok"), reaches ? 1 : 0);
        if (!reaches)
            return;
        const TSeenRequest seen = server.RequestsFor("/ok").value(0);
        QVERIFY(!seen.Headers.contains("proxy-authorization"));
        if (!secure) // tinyproxy names itself in Via
            QCOMPARE(seen.Headers.contains("via"), access == 2);
        QCOMPARE(proxy.Log().contains(QString("127.0.0.1:%1").arg(server.Port())), access == 2);
    }

    // The test server stands as the proxy here and shows exactly what a proxy receives.
    void credentialsReachingTheProxy_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QByteArray>("authorization"); // empty: none sent
        AddRow("no user name", QString(), QByteArray());
        AddRow("user name", QString("bob"), "Basic " + QByteArray("bob:pw").toBase64());
    }
    void credentialsReachingTheProxy()
    {
        QFETCH(QString, user);
        QFETCH(QByteArray, authorization);
        TTestHttpServer proxy;
        proxy.SetRequireProxyAuth(true);
        TSBB_Downloader downloader(nullptr, {2, "127.0.0.1", proxy.Port(), user, "pw"});
        QCOMPARE(Fetch(downloader, "http://orvane.test/ok"), !authorization.isEmpty());
        const QList<TSeenRequest> seen = proxy.Requests();
        QVERIFY(!seen.isEmpty());
        QCOMPARE(seen.first().Target, "http://orvane.test/ok");
        QByteArray sent;
        for (const TSeenRequest& request : seen)
            sent = request.Headers.value("proxy-authorization", sent);
        QCOMPARE(sent, authorization);
    }

    void connectionTest()
    {
        QVERIFY(ConnectionTestURL().startsWith("http://"));
        const QStringList before = QDir::temp().entryList({"????????.tmp"}, QDir::Files);
        QVERIFY(TestInternetConnection(m_http->URL("/ok")));
        QVERIFY(!TestInternetConnection(m_http->URL("/missing")));
        QVERIFY_THROWS_EXCEPTION(
            EDownloadError, TestInternetConnection(QString("http://127.0.0.1:%1/").arg(FreeLocalPort())));
        QCOMPARE(QDir::temp().entryList({"????????.tmp"}, QDir::Files), before);
    }

    void textHelpers()
    {
        QCOMPARE(TextToLines(QString()), QStringList());
        QCOMPARE(TextToLines("a\r\n"), QStringList{"a"});
        QCOMPARE(TextToLines("a\r\nb\nc\rd"), QStringList({"a", "b", "c", "d"}));
        QCOMPARE(TextToLines("a\n\nb\n\n"), QStringList({"a", "", "b", ""}));
        QCOMPARE(DecodeCodePage("\xc3\xa4", cCodePageUTF8), "ä");
        QCOMPARE(DecodeCodePage("\xef\xbb\xbfx", cCodePageUTF8), "x");
        QCOMPARE(DecodeCodePage("\xe4", cCodePageLatin1), "ä");
        QCOMPARE(DecodeCodePage("\x80", cCodePageWindows1252), "€");
        QCOMPARE(DecodeCodePage(QByteArray("a\0b\0", 4), cCodePageUTF16LE), "ab");
    }

    // The server's address: the read-only key CatalogueServer, read at each call and never written.
    void catalogueServer()
    {
        QVERIFY(CatalogueServerDefault.startsWith("https://"));
        QCOMPARE(CatalogueServerURLFor("  "), CatalogueServerDefault);
        QCOMPARE(CatalogueServerURLFor("http://h/"), "http://h");
        const TTempSettingsHome home;
        QCOMPARE(CatalogueServerURL(), CatalogueServerDefault);
        UserStore().SetStringValue("CatalogueServer", QString(), "https://127.0.0.1:8443");
        const QByteArray hive = ReadFile(TZTUserHive::FileName());
        QCOMPARE(CatalogueServerURL(), "https://127.0.0.1:8443");
        QCOMPARE(ReadFile(TZTUserHive::FileName()), hive);
    }

    void factoryMakesTheImplementation()
    {
        const std::unique_ptr<QNetworkCookieJar> store = CookieManagerClass().Create();
        QVERIFY(qobject_cast<TElCookieManagerWrapper*>(store.get()));
        const std::unique_ptr<TDownloader> downloader = DownloaderClass().Create(store.get());
        auto* sbb = dynamic_cast<TSBB_Downloader*>(downloader.get());
        QVERIFY(sbb);
        QCOMPARE(sbb->Proxy(), CurrentProxySettings());
        QCOMPARE(sbb->TransferTimeout(), 20000);
        const TProxySettings proxy{2, "proxy.example", 8080, "u", "p"};
        const TProxyVariables settings(proxy);
        QCOMPARE(dynamic_cast<TSBB_Downloader*>(DownloaderClass().Create(nullptr).get())->Proxy(), proxy);
        QVERIFY(Fetch(*downloader, m_http->URL("/ok")));
    }
};

QTEST_GUILESS_MAIN(TestDownloader)
#include "tst_downloader.moc"
