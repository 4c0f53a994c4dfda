// The catalogue server as the client sees it: a child process on a free loopback port, asked
// over plain HTTP and HTTPS, with replies deciphered by the program's cipher and by openssl.

#include "support_common.h"
#include "support_datarow.h"
#include "support_serverprocess.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QSslCertificate>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

namespace {

struct TQuickSearch
{
    const char* Name;
    const char* Metals;
    const char* Types;
    const char* Keywords;
    const char* Years;
    const char* Mint;
};

// Quick searches of the add dialog, one of each shape: keywords, years, mints (none, -1), types.
const TQuickSearch QuickSearches[] = {
    {"gold coins 1 Maple leafs", "0", "0,1,2", "\"Maple leaf\"", "", "1"},
    {"gold coins 4 2019 Canadian", "0", "0,1,2", "", "years_filter=[2019]", "1"},
    {"gold coins 12 Queen's Beasts", "0", "0,1,2", "Queen's Beasts", "", "4"},
    {"gold coins 22 Pre 1933", "0", "0", "", "years_range=[0,1933]", "32"},
    {"gold coins 27 Elephants", "0", "0", "Somalia Elephant", "", ""},
    {"gold bars 10 Rand refinery", "0", "3,4", "rand", "", "31"},
    {"silver coins 3 Silver dollars", "1", "0,1,2", "Silver dollar", "years_range=[0,1990]", "32"},
    {"silver coins 18 Dutch lions", "1", "0,1,2", "Dutch lion", "", ""},
    {"silver bars 1 9Fine", "1", "3,4", "", "", "5"},
    {"silver bars 12 Southern Cross", "1", "3,4", "", "", "-1"},
    {"others 4 platinum Britannias", "2", "0,1,2", "Platinum Britannias", "", "4"},
    {"others 25 palladium Valcambi", "3", "3,4", "", "", "33"},
};

// The query exactly as the add dialog forms a quick search: fixed text, nothing encoded.
QString QuickQuery(const TQuickSearch& row)
{
    QString query = QString("metals=[%1]&coin_types=[%2]").arg(row.Metals, row.Types);
    if (*row.Keywords)
        query += QString("&keywords=") + row.Keywords;
    if (*row.Years)
        query += QString("&") + row.Years;
    if (*row.Mint)
        query += QString("&mints=[%1]").arg(row.Mint);
    return query;
}

const QStringList AssetMembers{"weight",      "Name",      "Series",      "Metal",      "Year",
                               "WeightG",     "MintName",  "CoinType",    "FaceValue",  "FaceValueCurrency",
                               "Purity",      "Thickness", "Diameter",    "Mintage",    "Width",
                               "Height",      "Edge",      "MintMark",    "Country",    "ObverseDesc",
                               "ReverseDesc", "Artist",    "Description", "PhotoFront", "PhotoBack",
                               "PhotoSide",   "PhotoInBox"};

} // namespace

class TestCatalogueServer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(ServerExecutable()), qPrintable(ServerExecutable()));
        QVERIFY2(m_server.Start({"--http"}), qPrintable(m_server.Failure()));
    }
    void cleanupTestCase()
    {
        m_server.Stop();
        QCOMPARE(m_server.Process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_server.Process().exitCode(), 0);
    }

    void quickSearches_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<int>("metal");
        QTest::addColumn<QString>("types");
        QTest::addColumn<QString>("years");
        for (const TQuickSearch& row : QuickSearches)
            AddRow(row.Name, QuickQuery(row), QString(row.Metals).toInt(), QString(row.Types),
                   QString(row.Years));
    }
    void quickSearches()
    {
        QFETCH(QString, query);
        QFETCH(int, metal);
        QFETCH(QString, types);
        QFETCH(QString, years);
        const QJsonArray results = Search(query);
        QVERIFY2(!results.isEmpty(), qPrintable(query));
        QSet<int> allowedTypes;
        for (const QString& t : types.split(','))
            allowedTypes.insert(t.toInt());
        for (const QJsonValue& value : results) {
            QVERIFY2(value.isObject(), qPrintable(value.toString()));
            const QJsonObject item = value.toObject();
            const QString name = item["Name"].toString();
            QCOMPARE(item["Metal"].toInt(), metal);
            QVERIFY2(allowedTypes.contains(item["CoinType"].toInt()), qPrintable(name));
            if (years == "years_filter=[2019]")
                QCOMPARE(item["Year"].toInt(), 2019);
            if (years.startsWith("years_range=[0,")) {
                const int until = years.mid(15, 4).toInt();
                QVERIFY2(item["Year"].toInt() >= 1 && item["Year"].toInt() <= until, qPrintable(name));
            }
        }
    }
    void replyCarriesEveryMember()
    {
        const QJsonArray results = Search("keywords=Sovereign");
        QVERIFY(results.size() >= 4);
        for (const QJsonValue& value : results) {
            const QJsonObject item = value.toObject();
            for (const QString& member : AssetMembers)
                QVERIFY2(item.contains(member), qPrintable(member));
            QVERIFY(item["weight"].toInt() > 0);
            QCOMPARE(item["MintName"].toString(), QString("The Royal Mint"));
            QCOMPARE(item["Country"].toString(), QString("GB"));
            QVERIFY(item["WeightG"].toDouble() > 3.6 && item["WeightG"].toDouble() < 14.7);
            QCOMPARE(item["Purity"].toString(), QString(".9167"));
            QVERIFY(item["MintMark"].toInt() == 0 || item["MintMark"].toInt() == 1);
            for (const char* photo : {"PhotoFront", "PhotoBack", "PhotoSide", "PhotoInBox"})
                QVERIFY(item[photo].toString().endsWith(".jpg"));
        }
        // Most relevant first: a name hit outranks a hit in the descriptions only.
        const QJsonArray eagles = Search("keywords=eagle&metals=[1]");
        QVERIFY(!eagles.isEmpty());
        QVERIFY(eagles.first().toObject()["Name"].toString().contains("Eagle"));
        for (int i = 1; i < eagles.size(); ++i)
            QVERIFY(eagles[i - 1].toObject()["weight"].toInt() >= eagles[i].toObject()["weight"].toInt());
    }
    // Keywords (phrases, stems, folded diacritics) and weight and year ranges: every result fits,
    // and there are at least so many (none at all when 0).
    void searchResults_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("inName");
        QTest::addColumn<double>("minG");
        QTest::addColumn<double>("maxG"); // 0: no upper bound
        QTest::addColumn<int>("minYear");
        QTest::addColumn<int>("maxYear"); // 0: no upper bound
        QTest::addColumn<int>("atLeast");
        AddRow("phrase, encoded quotes", "keywords=%22Maple+leaf%22", "Maple Leaf", 0.0, 0.0, 0, 0, 10);
        AddRow("phrase out of order finds nothing", "keywords=%22leaf+maple%22", "", 0.0, 0.0, 0, 0, 0);
        AddRow("plural finds singular", "keywords=Krugerrands", "Krugerrand", 0.0, 0.0, 0, 0, 6);
        AddRow("phrase and word", "keywords=%22Year+of+the+Pig%22+silver", "Year of the Pig", 0.0, 0.0, 0, 0,
               2);
        AddRow("non-ASCII text", "keywords=Z%C3%BCrich+%E7%86%8A%E7%8C%AB", "", 0.0, 0.0, 0, 0, 0);
        AddRow("diacritics folded", "keywords=Kr%C3%BCgerrand", "Krugerrand", 0.0, 0.0, 0, 0, 6);
        AddRow("no criteria at all", "keywords=", "", 0.0, 0.0, 0, 0, 0);
        AddRow("1/10 oz", "keywords=&weight_oz_range=[0.10,0.10]", "", 3.0, 3.2, 0, 0, 8);
        AddRow("grams from 10, upper 0 means none", "keywords=&weight_g_range=[10.00,0.00]", "", 9.99, 0.0, 0,
               0, 150);
        AddRow("decimal comma", "keywords=bar&weight_g_range=[1000,00,1000,00]", "", 999.9, 1000.1, 0, 0, 5);
        AddRow("weights list (grams)", "keywords=&weights=[31.10,1000.00]&metals=[1]&coin_types=[3,4]", "",
               31.0, 1000.1, 0, 0, 5);
        AddRow("years from 2000", "keywords=&years_range=[2000,0]", "", 0.0, 0.0, 2000, 0, 100);
        AddRow("up to 1933, unknown years left out", "keywords=&years_range=[0,1933]", "", 0.0, 0.0, 1, 1933,
               8);
        AddRow("reversed range is empty", "keywords=&weight_g_range=[100.00,10.00]", "", 0.0, 0.0, 0, 0, 0);
    }
    void searchResults()
    {
        QFETCH(QString, query);
        QFETCH(QString, inName);
        QFETCH(double, minG);
        QFETCH(double, maxG);
        QFETCH(int, minYear);
        QFETCH(int, maxYear);
        QFETCH(int, atLeast);
        const QJsonArray results = Search(query);
        QVERIFY2(atLeast > 0 ? results.size() >= atLeast : results.isEmpty(),
                 qPrintable(QString::number(results.size())));
        for (const QJsonValue& value : results) {
            const QJsonObject item = value.toObject();
            const double grams = item["WeightG"].toDouble();
            const int year = item["Year"].toInt();
            const QByteArray what = item["Name"].toString().toUtf8() + " " + QByteArray::number(grams) +
                                    " g " + QByteArray::number(year);
            QVERIFY2(item["Name"].toString().contains(inName, Qt::CaseInsensitive), what);
            QVERIFY2(grams >= minG && (maxG == 0 || grams <= maxG), what);
            QVERIFY2(year >= minYear && (maxYear == 0 || year <= maxYear), what);
        }
    }
    void spotPrices_data()
    {
        QTest::addColumn<QString>("currency");
        QTest::addColumn<int>("count");
        AddRow("USD", "USD", 6);
        AddRow("ZWL, last of the list", "ZWL", 6);
        AddRow("unknown currency", "XYZ", 0);
        AddRow("lower case is unknown", "usd", 0);
        AddRow("injection attempt", "USD%27%20OR%201=1", 0);
    }
    void spotPrices()
    {
        QFETCH(QString, currency);
        QFETCH(int, count);
        const TReply reply = HttpGet(m_manager, Url("/orv/spot.php?currency=" + currency));
        QCOMPARE(reply.Status, 200);
        const QJsonArray prices = DecipherArray(reply.Body);
        QCOMPARE(prices.size(), count);
        if (count == 0) {
            QCOMPARE(Decipher(reply.Body), QByteArray("[]"));
            return;
        }
        QStringList codes;
        for (const QJsonValue& value : prices) {
            const QJsonObject price = value.toObject();
            codes << price["BaseCurrency"].toString();
            QVERIFY(price["Price"].isDouble() && price["Price"].toDouble() > 0);
            QVERIFY(price["ChangeAbs"].isDouble());
            QVERIFY(price["ChangePerc"].isString());
            QVERIFY(!price["DateC"].toString().isEmpty());
        }
        codes.sort();
        QCOMPARE(codes, QStringList({"XAG", "XAU", "XCU", "XPD", "XPT", "XRH"}));

        // The currency is applied: gold in Zimbabwe dollars is far above gold in US dollars.
        if (currency == "ZWL") {
            const QJsonArray usd = DecipherArray(HttpGet(m_manager, Url("/orv/spot.php?currency=USD")).Body);
            const auto gold = [](const QJsonArray& list) {
                for (const QJsonValue& v : list)
                    if (v.toObject()["BaseCurrency"] == "XAU")
                        return v.toObject()["Price"].toDouble();
                return 0.0;
            };
            QVERIFY(gold(prices) > 100 * gold(usd));
        }
    }
    // The same request twice: different IVs, the same text.
    void repliesDifferInTheirIV()
    {
        const TReply first = HttpGet(m_manager, Url("/orv/spot.php?currency=CHF"));
        const TReply second = HttpGet(m_manager, Url("/orv/spot.php?currency=CHF"));
        QVERIFY(first.Body.left(16) != second.Body.left(16));
        QCOMPARE(Decipher(first.Body), Decipher(second.Body));
    }
    void picturesAreServed()
    {
        const QJsonArray results = Search("keywords=Valcambi+CombiBar");
        QVERIFY(!results.isEmpty());
        const QJsonObject item = results.first().toObject();
        const TReply thumb = HttpGet(m_manager, Url("/orv/Images_Thumbs/" + item["PhotoFront"].toString()));
        QCOMPARE(thumb.Status, 200);
        QImage thumbnail;
        QVERIFY(thumbnail.loadFromData(thumb.Body, "JPEG"));
        QCOMPARE(thumbnail.height(), 200);
        for (const char* member : {"PhotoFront", "PhotoBack", "PhotoSide", "PhotoInBox"}) {
            const TReply large = HttpGet(m_manager, Url("/orv/Images_Large/" + item[member].toString()));
            QCOMPARE(large.Status, 200);
            QImage image;
            QVERIFY(image.loadFromData(large.Body, "JPEG"));
            QVERIFY(image.height() >= 200 || QByteArray(member) == "PhotoSide");
        }
        // A thumbnail name that is a large picture only is not found in the thumbnails.
        QCOMPARE(HttpGet(m_manager, Url("/orv/Images_Thumbs/" + item["PhotoBack"].toString())).Status, 404);
    }
    void pathTraversalIsRefused_data()
    {
        QTest::addColumn<QByteArray>("target");
        AddRow("dot-dot", QByteArray("/orv/Images_Thumbs/../catalogue.db"));
        AddRow("all encoded", QByteArray("/orv/Images_Thumbs/%2e%2e%2f%2e%2e%2fetc%2fpasswd"));
        AddRow("double encoded", QByteArray("/orv/Images_Thumbs/%252e%252e%252fcatalogue.db"));
        AddRow("backslash", QByteArray("/orv/Images_Thumbs/..\\catalogue.db"));
        AddRow("encoded backslash", QByteArray("/orv/Images_Thumbs/..%5ccatalogue.db"));
        AddRow("absolute", QByteArray("/orv/Images_Large//etc/passwd"));
        AddRow("NUL byte", QByteArray("/orv/Images_Large/a.jpg%00.txt"));
        AddRow("other folder", QByteArray("/orv/tls/server.key"));
        AddRow("catalogue file", QByteArray("/orv/catalogue.db"));
        AddRow("root", QByteArray("/"));
    }
    void pathTraversalIsRefused()
    {
        QFETCH(QByteArray, target);
        const QByteArray answer =
            RawExchange(m_server.Port(), "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        QVERIFY2(answer.startsWith("HTTP/1.1 404"), answer.left(60).constData());
        QVERIFY(!answer.contains("SQLite format"));
        QVERIFY(!answer.contains("root:"));
        // And a well-formed name is served on the same road.
        const QJsonArray results = Search("keywords=Britannia&metals=[2]");
        QVERIFY(!results.isEmpty());
        const QByteArray good =
            RawExchange(m_server.Port(), "GET /orv/Images_Large/" +
                                             results.first().toObject()["PhotoBack"].toString().toUtf8() +
                                             " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        QVERIFY(good.startsWith("HTTP/1.1 200"));
    }
    void malformedQueriesFindNothing_data()
    {
        QTest::addColumn<QString>("query");
        AddRow("unclosed bracket", "metals=[0&coin_types=[0]");
        AddRow("letters for a metal", "metals=[gold]");
        AddRow("metal out of range", "metals=[9]");
        AddRow("huge year", "years_range=[1,99999999999999999999]");
        AddRow("invalid UTF-8 keywords", "keywords=%FF%FE%FD");
        AddRow("very long keywords", "keywords=" + QString(5000, 'a'));
        AddRow("good and bad", "metals=[0]&coin_types=[x]&keywords=maple");
        AddRow("other action", "keywords=maple");
    }
    void malformedQueriesFindNothing()
    {
        QFETCH(QString, query);
        const QString path = QTest::currentDataTag() == QByteArray("other action")
                                 ? "/orv/search.php?action=delete-coins&" + query
                                 : "/orv/search.php?action=search-coins&" + query;
        const TReply reply = HttpGet(m_manager, Url(path));
        QCOMPARE(reply.Status, 200);
        QCOMPARE(Decipher(reply.Body), QByteArray("[]"));
        // The server is still there and answers a good query.
        QVERIFY(!Search("keywords=maple").isEmpty());
    }
    void concurrentRequests()
    {
        // 200 connections opened at once, each with one request, over raw sockets.
        constexpr int Count = 200;
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        std::vector<QByteArray> answers(Count);
        int done = 0;
        QEventLoop loop;
        const QStringList queries{"keywords=maple", "keywords=%22Gold+Eagle%22&metals=[0]",
                                  "metals=[1]&coin_types=[3,4]", "keywords=Panda&years_range=[2000,0]"};
        for (int i = 0; i < Count; ++i) {
            auto socket = std::make_unique<QTcpSocket>();
            QTcpSocket* raw = socket.get();
            QByteArray target = i % 5 == 4 ? QByteArray("/orv/spot.php?currency=EUR")
                                           : "/orv/search.php?action=search-coins&" + queries[i % 4].toUtf8();
            QObject::connect(raw, &QTcpSocket::connected, raw, [raw, target] {
                raw->write("GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nUser-Agent: load\r\n\r\n");
            });
            QObject::connect(raw, &QTcpSocket::readyRead, raw, [raw, i, &answers, &done, &loop] {
                answers[i] += raw->readAll();
                const qsizetype end = answers[i].indexOf("\r\n\r\n");
                static const QRegularExpression length("content-length:\\s*(\\d+)",
                                                       QRegularExpression::CaseInsensitiveOption);
                if (end < 0)
                    return;
                const auto match = length.match(QString::fromLatin1(answers[i].left(end)));
                if (match.hasMatch() && answers[i].size() == end + 4 + match.captured(1).toLongLong()) {
                    raw->disconnectFromHost();
                    if (++done == Count)
                        loop.quit();
                }
            });
            raw->connectToHost(QHostAddress::LocalHost, m_server.Port());
            sockets.push_back(std::move(socket));
        }
        QTimer::singleShot(120000, &loop, &QEventLoop::quit);
        loop.exec();
        QCOMPARE(done, Count);
        for (int i = 0; i < Count; ++i) {
            QVERIFY2(answers[i].startsWith("HTTP/1.1 200"), answers[i].left(40).constData());
            const QByteArray body = answers[i].mid(answers[i].indexOf("\r\n\r\n") + 4);
            QVERIFY(!DecipherArray(body).isEmpty());
        }
    }

    // What a client sends is capped ahead of the HTTP parser, and "Connection: close" is honoured.
    void requestLimits_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<bool>("closed");
        const QByteArray spot = "GET /orv/spot.php?currency=USD HTTP/1.1\r\nHost: 127.0.0.1\r\n";
        AddRow("header line of 1 MB", spot + "X-Big: " + QByteArray(1 << 20, 'a') + "\r\n\r\n",
               QByteArray("431"), true);
        AddRow("URL of 1 MB", "GET /orv/" + QByteArray(1 << 20, 'a') + " HTTP/1.1\r\n\r\n", QByteArray("414"),
               true);
        AddRow("body of 100 MB announced",
               "POST /orv/spot.php HTTP/1.1\r\nContent-Length: 104857600\r\n\r\n" + QByteArray(1 << 20, 'b'),
               QByteArray("413"), true);
        AddRow(
            "chunked body",
            QByteArray(
                "POST /orv/spot.php HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n0\r\n\r\n"),
            QByteArray("411"), true);
        AddRow("headers of 15 KB pass", spot + "X-Big: " + QByteArray(15000, 'a') + "\r\n\r\n",
               QByteArray("200"), false);
        AddRow("Connection: close", spot + "Connection: keep-alive, close\r\n\r\n", QByteArray("200"), true);
        AddRow("HTTP/1.0 closes", QByteArray("GET /orv/spot.php?currency=USD HTTP/1.0\r\n\r\n"),
               QByteArray("200"), true);
        AddRow("HTTP/1.0 with keep-alive",
               QByteArray("GET /orv/spot.php?currency=USD HTTP/1.0\r\nConnection: Keep-Alive\r\n\r\n"),
               QByteArray("200"), false);
    }
    void requestLimits()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, status);
        QFETCH(bool, closed);
        const TRawAnswer answer = RawUntilClosed(m_server.Port(), request, 3000);
        QVERIFY2(answer.Answer.startsWith("HTTP/1.1 " + status), answer.Answer.left(60).constData());
        QCOMPARE(answer.Closed, closed);
        QVERIFY(!Search("keywords=maple").isEmpty()); // the server goes on
    }
    void idleConnectionsAreClosed()
    {
        TServerProcess server;
        QVERIFY2(server.Start({"--http", "--idle-timeout", "1"}), qPrintable(server.Failure()));
        QElapsedTimer clock;
        clock.start();
        const TRawAnswer silent = RawUntilClosed(server.Port(), {}, 10000);
        QVERIFY(silent.Closed && silent.Answer.isEmpty());
        QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
        const TRawAnswer started = RawUntilClosed(server.Port(), "GET /orv/spot.php?curr", 10000);
        QVERIFY2(started.Closed && started.Answer.startsWith("HTTP/1.1 408"), started.Answer.constData());
        QTRY_VERIFY(server.Output().contains("\"- -\" 408 "));
    }

    void accessLogNamesEachRequest()
    {
        HttpGet(m_manager, Url("/orv/spot.php?currency=SEK"), "Orvane [SBB]v1.0.0.0 x64");
        HttpGet(m_manager, Url("/orv/nothing-here"), "log-check");
        QTRY_VERIFY(m_server.Output().contains("/orv/nothing-here"));
        const QList<QByteArray> lines = m_server.Output().split('\n');
        const auto lineWith = [&lines](const QByteArray& text) {
            for (const QByteArray& line : lines)
                if (line.contains(text))
                    return line;
            return QByteArray();
        };
        const QByteArray spot = lineWith("\"GET /orv/spot.php?currency=SEK\"");
        QVERIFY2(spot.contains(" 200 "), spot.constData());
        QVERIFY(spot.contains("\"Orvane [SBB]v1.0.0.0 x64\""));
        QVERIFY(QRegularExpression(" 200 \\d+ ").match(QString::fromUtf8(spot)).hasMatch());
        const QByteArray missing = lineWith("\"GET /orv/nothing-here\"");
        QVERIFY2(missing.contains(" 404 "), missing.constData());
        QVERIFY(missing.contains("\"log-check\""));
    }
    void httpsWithSelfSignedCertificate()
    {
        // A data folder of our own, so that the certificate made at the first start lands there.
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        for (const char* entry : {"catalogue.db", "spot_prices.json", "Images_Thumbs", "Images_Large"})
            QVERIFY(QFile::link(BuiltDataDir() + "/" + entry, dir.filePath(entry)));

        QByteArray firstPem;
        for (int start = 0; start < 2; ++start) {
            TServerProcess server;
            QVERIFY2(server.Start({"--data", dir.path()}), qPrintable(server.Failure()));
            QVERIFY(server.BaseUrl().startsWith("https://"));
            QVERIFY(QFile::exists(dir.filePath("tls/server.crt")));
            QVERIFY(QFile::exists(dir.filePath("tls/server.key")));
            QNetworkAccessManager manager;
            const TReply reply = HttpGet(
                manager, QUrl(server.BaseUrl() + "/orv/search.php?action=search-coins&keywords=Koala"));
            QCOMPARE(reply.Status, 200);
            QVERIFY(DecipherArray(reply.Body).size() >= 2);
            QVERIFY(!reply.PeerCertificatePem.isEmpty());
            if (start == 0)
                firstPem = reply.PeerCertificatePem;
            else
                QCOMPARE(reply.PeerCertificatePem, firstPem); // made once, then reused
            // Plain HTTP to the TLS port gets no answer of the catalogue.
            const QByteArray plain =
                RawExchange(server.Port(), "GET /orv/spot.php?currency=USD HTTP/1.1\r\n\r\n");
            QVERIFY(!plain.startsWith("HTTP/1.1 200"));
        }
        const QSslCertificate certificate(firstPem);
        QVERIFY(certificate.subjectInfo(QSslCertificate::CommonName).contains("localhost"));
        QVERIFY(certificate.expiryDate() > QDateTime::currentDateTime().addYears(5));
    }
    void httpsWithGivenCertificate()
    {
        if (!HaveProgram("openssl"))
            QSKIP("no openssl command line");
        QTemporaryDir dir;
        const QString cert = dir.filePath("given.crt");
        const QString key = dir.filePath("given.key");
        QVERIFY(RunProcess("openssl", {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", key,
                                       "-out", cert, "-days", "2", "-subj", "/CN=given.test"})
                    .Ok());

        TServerProcess server;
        QVERIFY2(server.Start({"--cert", cert, "--key", key}), qPrintable(server.Failure()));
        QNetworkAccessManager manager;
        const TReply reply = HttpGet(manager, QUrl(server.BaseUrl() + "/orv/spot.php?currency=AUD"));
        QCOMPARE(reply.Status, 200);
        QCOMPARE(DecipherArray(reply.Body).size(), 6);
        QCOMPARE(QSslCertificate(reply.PeerCertificatePem), QSslCertificate(ReadFile(cert)));
    }
    void brokenCatalogueGivesServerError()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QVERIFY(QFile::copy(BuiltDataDir() + "/catalogue.db", dir.filePath("catalogue.db")));
        QVERIFY(QFile::link(BuiltDataDir() + "/spot_prices.json", dir.filePath("spot_prices.json")));
        TServerProcess server;
        QVERIFY2(server.Start({"--http", "--data", dir.path()}), qPrintable(server.Failure()));
        QNetworkAccessManager manager;
        const QString search = server.BaseUrl() + "/orv/search.php?action=search-coins&keywords=maple";
        QCOMPARE(HttpGet(manager, QUrl(search)).Status, 200);

        // The file is damaged under the running server: the search fails with 500, the server lives on.
        QFile file(dir.filePath("catalogue.db"));
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.seek(0);
        file.write(QByteArray(4096, '\x5a'));
        file.close();
        QCOMPARE(HttpGet(manager, QUrl(search)).Status, 500);
        const TReply spot = HttpGet(manager, QUrl(server.BaseUrl() + "/orv/spot.php?currency=USD"));
        QCOMPARE(spot.Status, 200);
        QCOMPARE(DecipherArray(spot.Body).size(), 6);
    }
    void badStartsFail_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        AddRow("no data folder", QStringList{"--http", "--data", "/nonexistent/orvane"}, "catalogue");
        AddRow("port out of range", QStringList{"--http", "--port", "70000"}, "--port");
        AddRow("port taken", QStringList{"--http", "--port", "PORT"}, "Cannot listen");
        AddRow("not a certificate", QStringList{"--cert", ServerExecutable(), "--key", ServerExecutable()},
               "certificate cannot be read");
        AddRow("cert without key", QStringList{"--cert", "/tmp/x.crt"}, "--key");
        AddRow("missing certificate file",
               QStringList{"--cert", "/nonexistent/a.crt", "--key", "/nonexistent/a.key"}, "Cannot read");
    }
    void badStartsFail()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        arguments.replaceInStrings("PORT", QString::number(m_server.Port()));
        QProcess process;
        // A later --port wins over the helper's default.
        process.start(ServerExecutable(), QStringList{"--port", "0"} + arguments);
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 1);
        const QByteArray error = process.readAllStandardError();
        QVERIFY2(error.contains(message.toUtf8()), error.constData());
    }

private:
    QJsonArray Search(const QString& query)
    {
        const TReply reply = HttpGet(m_manager, Url("/orv/search.php?action=search-coins&" + query));
        if (reply.Status != 200)
            return QJsonArray{QString("status %1 %2").arg(reply.Status).arg(reply.Error)};
        return DecipherArray(reply.Body);
    }
    QUrl Url(const QString& pathAndQuery) const
    {
        // Tolerant parsing, as the client's URLs: raw blanks and quotes travel percent-encoded.
        return QUrl(m_server.BaseUrl() + pathAndQuery, QUrl::TolerantMode);
    }

    TServerProcess m_server;
    QNetworkAccessManager m_manager;
};

QTEST_MAIN(TestCatalogueServer)
#include "tst_catalogueserver.moc"
