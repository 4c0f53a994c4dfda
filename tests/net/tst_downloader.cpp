// The download transport against real servers on 127.0.0.1: an HTTP and an HTTPS server of the
// test, and tinyproxy as a forward proxy.

#include "support_httpserver.h"
#include "uCatalogueServer.h"
#include "uDownloader.h"
#include "uDownloader_SBB.h"
#include "uZTCustomSettings.h"
#include "uZTSettings.h"

#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QTemporaryDir>
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

void WatchErrors(TDownloader& downloader, TErrorCall& calls)
{
    downloader.OnError = [&calls](TDownloader*, qint32 kind, qint32 status, const QString& text) {
        ++calls.Calls;
        calls.Kind = kind;
        calls.Status = status;
        calls.Text = text;
    };
}

// A settings store in memory, holding what the test puts in.
class TMemorySettings : public TZTCustomSettings
{
public:
    QHash<QString, QVariant> Values;
    int GetIntValue(const QString& name, int defaultValue) override
    {
        return Values.value(name, defaultValue).toInt();
    }
    QString GetStringValue(const QString& name, const QString& defaultValue) override
    {
        return Values.value(name, defaultValue).toString();
    }
    bool GetBoolValue(const QString& name, bool defaultValue) override
    {
        return Values.value(name, defaultValue).toBool();
    }
    double GetFloatValue(const QString& name, double defaultValue) override
    {
        return Values.value(name, defaultValue).toDouble();
    }
    void SetIntValue(const QString& name, int, int value) override { Values.insert(name, value); }
    void SetStringValue(const QString& name, const QString&, const QString& value) override
    {
        Values.insert(name, value);
    }
    void SetBoolValue(const QString& name, bool, bool value) override { Values.insert(name, value); }
    void SetFloatValue(const QString& name, double, double value) override { Values.insert(name, value); }
};

// Sets the Inet.* variables for one test and puts the old values back.
class TProxyVariables
{
public:
    TProxyVariables(int access, const QString& host, int port, const QString& user, const QString& password)
        : m_saved{InetAccess, InetProxyHost, InetProxyPort, InetProxyUsername, InetProxyPassword}
    {
        InetAccess = access;
        InetProxyHost = host;
        InetProxyPort = port;
        InetProxyUsername = user;
        InetProxyPassword = password;
    }
    ~TProxyVariables()
    {
        InetAccess = m_saved.InetAccess;
        InetProxyHost = m_saved.Host;
        InetProxyPort = m_saved.Port;
        InetProxyUsername = m_saved.Username;
        InetProxyPassword = m_saved.Password;
    }

private:
    TProxySettings m_saved;
};

QStringList TempFilesNow()
{
    return QDir(QDir::tempPath()).entryList({QStringLiteral("????????.tmp")}, QDir::Files, QDir::Name);
}

} // namespace

class TestDownloader : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_certDir;
    std::unique_ptr<TTestHttpServer> m_http;
    std::unique_ptr<TTestHttpServer> m_https;

    QString Url(const QString& scheme, const QString& path) const
    {
        return (scheme == QLatin1String("https") ? m_https : m_http)->URL(path);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_certDir.isValid());
        QVERIFY2(MakeSelfSignedCertificate(m_certDir.path()), "openssl could not make a certificate");
        m_http = std::make_unique<TTestHttpServer>();
        m_https = std::make_unique<TTestHttpServer>(m_certDir.path());
        QVERIFY(m_http->IsListening());
        QVERIFY(m_https->IsListening());
    }

    void cleanupTestCase()
    {
        m_http.reset();
        m_https.reset();
    }

    // ---- Status, redirections, TLS, gzip ---------------------------------------------------------

    void transferResult_data()
    {
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("result");
        QTest::addColumn<int>("errorStatus"); // 0: OnError not called
        QTest::addColumn<QStringList>("lines");

        const QStringList hello{QStringLiteral("hello")};
        const QStringList arrived{QStringLiteral("arrived")};
        QTest::newRow("200 over http") << "http"
                                       << "/ok" << true << 0 << hello;
        QTest::newRow("200 over https with a self-signed certificate") << "https"
                                                                       << "/ok" << true << 0 << hello;
        QTest::newRow("one 301 to a 200 page") << "http"
                                               << "/redirect/1" << true << 0 << arrived;
        QTest::newRow("ten redirections are followed") << "http"
                                                       << "/redirect/10" << true << 0 << arrived;
        QTest::newRow("ten redirections over https") << "https"
                                                     << "/redirect/10" << true << 0 << arrived;
        QTest::newRow("404 keeps its body")
            << "http"
            << "/missing" << false << 404
            << QStringList{QStringLiteral("no such page"), QStringLiteral("second line")};
        QTest::newRow("gzip body decoded")
            << "http"
            << "/gzip" << true << 0 << QStringList{QStringLiteral("compressed body ").repeated(200)};
        QTest::newRow("UTF-8 lines, mixed line breaks")
            << "http"
            << "/lines" << true << 0
            << QStringList{QStringLiteral("first line"), QStringLiteral("zweite Zeile äöü"),
                           QStringLiteral("third")};
    }

    void transferResult()
    {
        QFETCH(QString, scheme);
        QFETCH(QString, path);
        QFETCH(bool, result);
        QFETCH(int, errorStatus);
        QFETCH(QStringList, lines);

        TElCookieManagerWrapper cookies;
        TSBB_Downloader downloader(&cookies);
        TErrorCall errors;
        WatchErrors(downloader, errors);
        int doneCalls = 0;
        downloader.SetOnDone([&doneCalls](TDownloader*, const QString&, qint32, QIODevice*) { ++doneCalls; });
        downloader.SetURL(Url(scheme, path));
        QStringList list{QStringLiteral("stale")};
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

    void eleventhRedirectionFails()
    {
        m_http->ClearRequests();
        TSBB_Downloader downloader;
        downloader.SetURL(m_http->URL(QStringLiteral("/redirect/11")));
        QStringList list;
        bool result = true;
        try {
            result = downloader.DownloadToStrings(list);
        } catch (const EDownloadError&) {
            result = false;
        }
        QVERIFY(!result);
        QVERIFY(!downloader.IsBusy());
        // The first request and ten redirections, and no eleventh one.
        QCOMPARE(m_http->CountFor("/redirect/"), 11);
        QCOMPARE(m_http->CountFor("/redirect/0"), 0);
    }

    void httpsRedirectsToHttp()
    {
        const QString target = m_http->URL(QStringLiteral("/ok"));
        TSBB_Downloader downloader;
        downloader.SetURL(m_https->URL(QStringLiteral("/to?url=")) +
                          QString::fromLatin1(QUrl::toPercentEncoding(target)));
        QStringList list;
        QVERIFY(downloader.DownloadToStrings(list));
        QCOMPARE(list, QStringList{QStringLiteral("hello")});
    }

    void requestHeaders()
    {
        m_http->ClearRequests();
        TSBB_Downloader downloader;
        downloader.SetURL(m_http->URL(QStringLiteral("/ok")));
        QStringList list;
        QVERIFY(downloader.DownloadToStrings(list));
        const QList<TSeenRequest> seen = m_http->RequestsFor("/ok");
        QCOMPARE(seen.size(), 1);
        QCOMPARE(seen.first().Method, QByteArray("GET"));
        QCOMPARE(seen.first().Headers.value("user-agent"), QByteArray("Orvane [SBB]v1.0.0.0 x64"));
        QVERIFY(seen.first().Headers.value("accept-encoding").contains("gzip"));
        QVERIFY(!seen.first().Headers.contains("via"));
    }

    // ---- POST ------------------------------------------------------------------------------------

    void post_data()
    {
        QTest::addColumn<QString>("contentType");
        QTest::addColumn<QByteArray>("sentType");
        QTest::newRow("empty ContentType") << QString() << QByteArray("application/x-www-form-urlencoded");
        QTest::newRow("given ContentType")
            << QStringLiteral("application/json") << QByteArray("application/json");
    }

    void post()
    {
        QFETCH(QString, contentType);
        QFETCH(QByteArray, sentType);
        m_http->ClearRequests();
        TSBB_Downloader downloader;
        downloader.SetURL(m_http->URL(QStringLiteral("/echo")));
        downloader.PostData = QStringLiteral("a=1&b=%C3%A4");
        downloader.ContentType = contentType;
        QStringList list;
        QVERIFY(downloader.DownloadToStrings(list));
        const QList<TSeenRequest> seen = m_http->RequestsFor("/echo");
        QCOMPARE(seen.size(), 1);
        QCOMPARE(seen.first().Method, QByteArray("POST"));
        QCOMPARE(seen.first().Headers.value("content-type"), sentType);
        QCOMPARE(seen.first().Body, QByteArray("a=1&b=%C3%A4"));
        QCOMPARE(list, (QStringList{QStringLiteral("POST"), QString::fromLatin1(sentType),
                                    QStringLiteral("a=1&b=%C3%A4")}));
    }

    void postForm()
    {
        m_http->ClearRequests();
        TSBB_Downloader downloader;
        downloader.SetURL(m_http->URL(QStringLiteral("/echo")));
        QStringList list;
        QVERIFY(downloader.PostForm(QStringLiteral("upload"), QStringLiteral("photo.jpg"),
                                    QByteArray("JPEGDATA"), list));
        const TSeenRequest seen = m_http->RequestsFor("/echo").value(0);
        QVERIFY(seen.Headers.value("content-type").startsWith("multipart/form-data; boundary="));
        QVERIFY(seen.Body.contains("name=\"upload\"; filename=\"photo.jpg\""));
        QVERIFY(seen.Body.contains("JPEGDATA"));
    }

    // ---- Targets -----------------------------------------------------------------------------------

    void downloadToFileReplacesTheFile()
    {
        QTemporaryDir dir;
        const QString fileName = dir.filePath(QStringLiteral("page.txt"));
        {
            QFile old(fileName);
            QVERIFY(old.open(QIODevice::WriteOnly));
            old.write(QByteArray(4096, 'z'));
        }
        TSBB_Downloader downloader;
        downloader.SetURL(m_http->URL(QStringLiteral("/ok")));
        downloader.SetFileName(fileName);
        QVERIFY(downloader.DownloadToFile(true));
        QFile file(fileName);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("hello"));
    }

    void downloadToStreamWritesAtThePosition()
    {
        QBuffer buffer;
        buffer.open(QIODevice::ReadWrite);
        buffer.write("prefix:");
        int doneSize = -1;
        TSBB_Downloader downloader;
        downloader.SetOnDone(
            [&doneSize](TDownloader*, const QString&, qint32 size, QIODevice*) { doneSize = size; });
        downloader.SetURL(m_http->URL(QStringLiteral("/ok")));
        QVERIFY(downloader.DownloadToStream(&buffer));
        QCOMPARE(buffer.data(), QByteArray("prefix:hello"));
        QCOMPARE(doneSize, 5);
    }

    void cookiesStayWithTheirStore()
    {
        TElCookieManagerWrapper store;
        TSBB_Downloader first(&store);
        first.SetURL(m_http->URL(QStringLiteral("/cookie/set")));
        QStringList list;
        QVERIFY(first.DownloadToStrings(list));
        first.SetURL(m_http->URL(QStringLiteral("/cookie/get")));
        QVERIFY(first.DownloadToStrings(list));
        QCOMPARE(list, QStringList{QStringLiteral("session=abc")});
        QCOMPARE(store.Cookies().size(), 1);

        TElCookieManagerWrapper otherStore;
        TSBB_Downloader second(&otherStore);
        second.SetURL(m_http->URL(QStringLiteral("/cookie/get")));
        QVERIFY(second.DownloadToStrings(list));
        QCOMPARE(list, QStringList());
        QCOMPARE(otherStore.Cookies().size(), 0);
    }

    // ---- Client errors -------------------------------------------------------------------------

    void clientErrorsRaise_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<int>("timeout");
        QTest::newRow("connection refused")
            << QStringLiteral("http://127.0.0.1:%1/ok").arg(FreeLocalPort()) << 20000;
        QTest::newRow("inactivity time-out") << QStringLiteral("stall") << 400;
        QTest::newRow("TLS to a plain server") << QStringLiteral("tls-to-plain") << 20000;
        QTest::newRow("unknown host") << QStringLiteral("http://no-such-host.invalid/") << 20000;
    }

    void clientErrorsRaise()
    {
        QFETCH(QString, url);
        QFETCH(int, timeout);
        if (url == QLatin1String("stall"))
            url = m_http->URL(QStringLiteral("/stall"));
        else if (url == QLatin1String("tls-to-plain"))
            url = QStringLiteral("https://127.0.0.1:%1/ok").arg(m_http->Port());
        TSBB_Downloader downloader;
        downloader.SetTransferTimeout(timeout);
        TErrorCall errors;
        WatchErrors(downloader, errors);
        downloader.SetURL(url);
        QStringList list;
        QVERIFY_THROWS_EXCEPTION(EDownloadError, downloader.DownloadToStrings(list));
        QVERIFY(!downloader.IsBusy());
        QCOMPARE(errors.Calls, 0);
    }

    void fileIsClosedAfterAnError()
    {
        QTemporaryDir dir;
        const QString fileName = dir.filePath(QStringLiteral("x.bin"));
        TSBB_Downloader downloader;
        downloader.SetURL(QStringLiteral("http://127.0.0.1:%1/").arg(FreeLocalPort()));
        downloader.SetFileName(fileName);
        QVERIFY_THROWS_EXCEPTION(EDownloadError, downloader.DownloadToFile());
        QVERIFY(QFile::remove(fileName)); // not held open
    }

    void abortFromAnotherThread()
    {
        const int abortedBefore = m_http->AbortedSlowTransfers();
        TSBB_Downloader downloader;
        downloader.SetURL(m_http->URL(QStringLiteral("/slow")));
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
        QVERIFY(aborted);
        QVERIFY(!result);
        QVERIFY(!downloader.IsBusy());
        // The body takes 100 s; the transfer ended with the abort.
        QVERIFY2(elapsed < 20000, qPrintable(QString::number(elapsed)));
        QVERIFY(buffer.size() < 2000);
        QTRY_COMPARE(m_http->AbortedSlowTransfers(), abortedBefore + 1);

        // The downloader works again afterwards.
        downloader.SetURL(m_http->URL(QStringLiteral("/ok")));
        QStringList list;
        QVERIFY(downloader.DownloadToStrings(list));
    }

    void abortWhileIdleEndsTheNextTransfer()
    {
        m_http->ClearRequests();
        TSBB_Downloader downloader;
        downloader.SetURL(m_http->URL(QStringLiteral("/ok")));
        downloader.Abort();
        QStringList list;
        QVERIFY(!downloader.DownloadToStrings(list));
        QVERIFY(downloader.DownloadToStrings(list));
        QCOMPARE(list, QStringList{QStringLiteral("hello")});
    }

    // ---- Proxy -----------------------------------------------------------------------------------

    void proxyOfTheSettings_data()
    {
        QTest::addColumn<int>("access");
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("expectedPort");
        QTest::addColumn<QString>("expectedUser");
        QTest::addColumn<QString>("expectedPassword");
        const int http = QNetworkProxy::HttpProxy;
        const int none = QNetworkProxy::NoProxy;
        const QString empty;
        QTest::newRow("0 is direct") << 0 << 8080 << "u"
                                     << "p" << none << 0 << empty << empty;
        QTest::newRow("1 is direct") << 1 << 8080 << "u"
                                     << "p" << none << 0 << empty << empty;
        QTest::newRow("3 is direct") << 3 << 8080 << "u"
                                     << "p" << none << 0 << empty << empty;
        QTest::newRow("2 with credentials") << 2 << 8080 << "u"
                                            << "p" << http << 8080 << "u"
                                            << "p";
        QTest::newRow("2, no user: no password") << 2 << 1 << ""
                                                 << "p" << http << 1 << empty << empty;
        QTest::newRow("port 65535") << 2 << 65535 << ""
                                    << "" << http << 65535 << empty << empty;
        QTest::newRow("port 0 leaves the default") << 2 << 0 << ""
                                                   << "" << http << 3128 << empty << empty;
        QTest::newRow("port 65536 leaves the default") << 2 << 65536 << ""
                                                       << "" << http << 3128 << empty << empty;
        QTest::newRow("port -1 leaves the default") << 2 << -1 << ""
                                                    << "" << http << 3128 << empty << empty;
    }

    void proxyOfTheSettings()
    {
        QFETCH(int, access);
        QFETCH(int, port);
        QFETCH(QString, user);
        QFETCH(QString, password);
        QFETCH(int, type);
        QFETCH(int, expectedPort);
        QFETCH(QString, expectedUser);
        QFETCH(QString, expectedPassword);
        const QNetworkProxy proxy =
            TSBB_Downloader::MakeProxy({access, QStringLiteral("proxy.example"), port, user, password});
        QCOMPARE(static_cast<int>(proxy.type()), type);
        if (type == QNetworkProxy::HttpProxy) {
            QCOMPARE(proxy.hostName(), QStringLiteral("proxy.example"));
            QCOMPARE(static_cast<int>(proxy.port()), expectedPort);
            QCOMPARE(proxy.user(), expectedUser);
            QCOMPARE(proxy.password(), expectedPassword);
        }
    }

    void throughTinyproxy_data()
    {
        QTest::addColumn<int>("access");
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<bool>("viaProxy");
        QTest::newRow("InetAccess 0: direct") << 0 << "http" << false;
        QTest::newRow("InetAccess 1: direct") << 1 << "http" << false;
        QTest::newRow("InetAccess 2: proxy") << 2 << "http" << true;
        QTest::newRow("InetAccess 2: https through CONNECT") << 2 << "https" << true;
    }

    void throughTinyproxy()
    {
        QFETCH(int, access);
        QFETCH(QString, scheme);
        QFETCH(bool, viaProxy);
        if (!TTinyProxy::Available())
            QSKIP("tinyproxy is not installed (scripts/deps.sh installs it)");
        TTinyProxy proxy;
        QVERIFY2(proxy.Start(), "tinyproxy did not start");
        TTestHttpServer& server = scheme == QLatin1String("https") ? *m_https : *m_http;
        server.ClearRequests();
        // The way every worker makes its transport: the factory over the settings variables.
        const TProxyVariables settings(access, QStringLiteral("127.0.0.1"), proxy.Port(), QString(),
                                       QStringLiteral("pw"));
        const std::unique_ptr<TDownloader> downloader = DownloaderClass().Create(nullptr);
        downloader->SetURL(server.URL(QStringLiteral("/ok")));
        QStringList list;
        QVERIFY(downloader->DownloadToStrings(list));
        QCOMPARE(list, QStringList{QStringLiteral("hello")});
        const TSeenRequest seen = server.RequestsFor("/ok").value(0);
        if (scheme == QLatin1String("http"))
            QCOMPARE(seen.Headers.contains("via"), viaProxy); // tinyproxy names itself in Via
        const QString log = proxy.Log();
        QCOMPARE(log.contains(QStringLiteral("127.0.0.1:%1").arg(server.Port())), viaProxy);
    }

    void tinyproxyCredentials_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::addColumn<bool>("reachesServer");
        QTest::newRow("no user name, password set: no credentials") << ""
                                                                    << "secret" << false;
        QTest::newRow("wrong password") << "bob"
                                        << "wrong" << false;
        QTest::newRow("user and password") << "bob"
                                           << "secret" << true;
    }

    void tinyproxyCredentials()
    {
        QFETCH(QString, user);
        QFETCH(QString, password);
        QFETCH(bool, reachesServer);
        if (!TTinyProxy::Available())
            QSKIP("tinyproxy is not installed (scripts/deps.sh installs it)");
        TTinyProxy proxy;
        QVERIFY2(proxy.Start(QStringLiteral("bob"), QStringLiteral("secret")), "tinyproxy did not start");
        m_http->ClearRequests();
        TSBB_Downloader downloader(nullptr, {2, QStringLiteral("127.0.0.1"), proxy.Port(), user, password});
        downloader.SetURL(m_http->URL(QStringLiteral("/ok")));
        QStringList list;
        bool result = false;
        try {
            result = downloader.DownloadToStrings(list);
        } catch (const EDownloadError&) {
            result = false;
        }
        QCOMPARE(result, reachesServer);
        QCOMPARE(m_http->CountFor("/ok"), reachesServer ? 1 : 0);
        if (reachesServer) {
            // The proxy's credentials end at the proxy.
            QVERIFY(!m_http->RequestsFor("/ok").value(0).Headers.contains("proxy-authorization"));
        }
    }

    void credentialsReachingTheProxy_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QByteArray>("authorization"); // empty: none sent
        QTest::newRow("no user name") << ""
                                      << "pw" << QByteArray();
        QTest::newRow("user name") << "bob"
                                   << "pw" << QByteArray("Basic " + QByteArray("bob:pw").toBase64());
    }

    // The test server stands as the proxy here and shows exactly what a proxy receives.
    void credentialsReachingTheProxy()
    {
        QFETCH(QString, user);
        QFETCH(QString, password);
        QFETCH(QByteArray, authorization);
        TTestHttpServer proxy;
        proxy.SetRequireProxyAuth(true);
        TSBB_Downloader downloader(nullptr, {2, QStringLiteral("127.0.0.1"), proxy.Port(), user, password});
        downloader.SetURL(QStringLiteral("http://orvane.test/ok"));
        QStringList list;
        bool result = false;
        try {
            result = downloader.DownloadToStrings(list);
        } catch (const EDownloadError&) {
            result = false;
        }
        QCOMPARE(result, !authorization.isEmpty());
        const QList<TSeenRequest> seen = proxy.Requests();
        QVERIFY(!seen.isEmpty());
        QCOMPARE(seen.first().Target, QByteArray("http://orvane.test/ok"));
        QByteArray sent;
        for (const TSeenRequest& request : seen)
            if (request.Headers.contains("proxy-authorization"))
                sent = request.Headers.value("proxy-authorization");
        QCOMPARE(sent, authorization);
    }

    // ---- Helpers ---------------------------------------------------------------------------------

    void connectionTest()
    {
        QVERIFY(ConnectionTestURL().startsWith(QLatin1String("http://")));
        const QStringList before = TempFilesNow();
        QVERIFY(TestInternetConnection(m_http->URL(QStringLiteral("/ok"))));
        QVERIFY(!TestInternetConnection(m_http->URL(QStringLiteral("/missing"))));
        QVERIFY_THROWS_EXCEPTION(
            EDownloadError,
            TestInternetConnection(QStringLiteral("http://127.0.0.1:%1/").arg(FreeLocalPort())));
        QCOMPARE(TempFilesNow(), before);
    }

    void textToLines_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("empty") << QString() << QStringList();
        QTest::newRow("one line") << "a" << QStringList{"a"};
        QTest::newRow("trailing break") << "a\r\n" << QStringList{"a"};
        QTest::newRow("mixed breaks") << "a\r\nb\nc\rd" << QStringList{"a", "b", "c", "d"};
        QTest::newRow("empty lines kept") << "a\n\nb\n\n" << QStringList{"a", "", "b", ""};
    }

    void textToLines()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, lines);
        QCOMPARE(TextToLines(text), lines);
    }

    void decodeCodePage_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("codePage");
        QTest::addColumn<QString>("text");
        QTest::newRow("UTF-8") << QByteArray("\xc3\xa4") << int(cCodePageUTF8) << QStringLiteral("ä");
        QTest::newRow("UTF-8 with BOM")
            << QByteArray("\xef\xbb\xbfx") << int(cCodePageUTF8) << QStringLiteral("x");
        QTest::newRow("Latin-1") << QByteArray("\xe4") << int(cCodePageLatin1) << QStringLiteral("ä");
        QTest::newRow("Windows-1252 euro")
            << QByteArray("\x80") << int(cCodePageWindows1252) << QStringLiteral("€");
        QTest::newRow("UTF-16LE") << QByteArray("a\0b\0", 4) << int(cCodePageUTF16LE) << QStringLiteral("ab");
    }

    void decodeCodePage()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, codePage);
        QFETCH(QString, text);
        QCOMPARE(DecodeCodePage(bytes, codePage), text);
    }

    void catalogueServer_data()
    {
        QTest::addColumn<QString>("configured");
        QTest::addColumn<QString>("url");
        QTest::newRow("not set") << QString() << CatalogueServerDefault;
        QTest::newRow("blank") << QStringLiteral("  ") << CatalogueServerDefault;
        QTest::newRow("set") << QStringLiteral("https://127.0.0.1:8443")
                             << QStringLiteral("https://127.0.0.1:8443");
        QTest::newRow("trailing slash dropped") << QStringLiteral("http://h/") << QStringLiteral("http://h");
    }

    void catalogueServer()
    {
        QFETCH(QString, configured);
        QFETCH(QString, url);
        QCOMPARE(CatalogueServerURLFor(configured), url);
        QVERIFY(CatalogueServerDefault.startsWith(QLatin1String("https://")));

        // CatalogueServerURL() reads the key of the store at each call, and never writes it.
        auto store = std::make_unique<TMemorySettings>();
        TMemorySettings* values = store.get();
        if (!configured.isNull())
            values->Values.insert(QStringLiteral("CatalogueServer"), configured);
        const auto before = values->Values;
        SetSettingsStore(std::move(store));
        QCOMPARE(CatalogueServerURL(), url);
        QCOMPARE(values->Values, before);
        SetSettingsStore(nullptr);
    }

    void factoryMakesTheImplementation()
    {
        const std::unique_ptr<QNetworkCookieJar> store = CookieManagerClass().Create();
        QVERIFY(qobject_cast<TElCookieManagerWrapper*>(store.get()));
        const std::unique_ptr<TDownloader> downloader = DownloaderClass().Create(store.get());
        auto* sbb = dynamic_cast<TSBB_Downloader*>(downloader.get());
        QVERIFY(sbb);
        QCOMPARE(sbb->Proxy(), CurrentProxySettings());
        {
            const TProxyVariables settings(2, QStringLiteral("proxy.example"), 8080, QStringLiteral("u"),
                                           QStringLiteral("p"));
            const std::unique_ptr<TDownloader> withProxy = DownloaderClass().Create(nullptr);
            QCOMPARE(dynamic_cast<TSBB_Downloader*>(withProxy.get())->Proxy(),
                     (TProxySettings{2, QStringLiteral("proxy.example"), 8080, QStringLiteral("u"),
                                     QStringLiteral("p")}));
        }
        QCOMPARE(sbb->TransferTimeout(), 20000);
        downloader->SetURL(m_http->URL(QStringLiteral("/ok")));
        QStringList list;
        QVERIFY(downloader->DownloadToStrings(list));
    }
};

QTEST_GUILESS_MAIN(TestDownloader)
#include "tst_downloader.moc"
