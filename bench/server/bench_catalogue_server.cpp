// Search replies per second for a keyword search on the demo catalogue: in process (search,
// JSON and enciphering), and end to end over loopback HTTP and HTTPS with a few requests in flight.

#include "uCatalogueQuery.h"
#include "uCatalogueSearch.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QRegularExpression>
#include <QTimer>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QByteArray Query = "action=search-coins&keywords=gold+maple+leaf";

void InProcess(int rounds)
{
    const TCatalogueSearch search(QStringLiteral(ORV_SERVER_DATA) + u"/catalogue.db"_s);
    QElapsedTimer timer;
    timer.start();
    qsizetype bytes = 0;
    for (int i = 0; i < rounds; ++i) {
        const QJsonArray results = search.Search(ParseCatalogueQuery(Query));
        bytes += EncryptBytes(QJsonDocument(results).toJson(QJsonDocument::Compact), PayloadKeyA, PayloadKeyB)
                     .size();
    }
    const double seconds = timer.nsecsElapsed() / 1e9;
    std::printf("in process:  %6d searches in %.2f s = %8.0f replies/s (%lld bytes each)\n", rounds, seconds,
                rounds / seconds, static_cast<long long>(bytes / rounds));
}

bool OverNetwork(bool tls, int requests, int inFlight)
{
    QProcess server;
    QStringList args{u"--port"_s, u"0"_s, u"--data"_s, QStringLiteral(ORV_SERVER_DATA)};
    if (!tls)
        args << u"--http"_s;
    server.start(QStringLiteral(ORV_SERVER_EXE), args);
    server.setStandardOutputFile(
        QProcess::nullDevice()); // after the first line: the access log is not wanted
    QByteArray output;
    QString base;
    static const QRegularExpression listening(u"listening on (https?://127\\.0\\.0\\.1:\\d+)/"_s);
    const QDeadlineTimer deadline(30000);
    server.waitForStarted();
    while (base.isEmpty() && !deadline.hasExpired() && server.state() == QProcess::Running) {
        server.waitForReadyRead(200);
        output += server.readAllStandardOutput();
        const auto match = listening.match(QString::fromUtf8(output));
        if (match.hasMatch())
            base = match.captured(1);
    }
    if (base.isEmpty()) {
        std::fprintf(stderr, "the server did not start: %s\n", output.constData());
        return false;
    }
    // Keep draining the access log so that the server never blocks on a full pipe.
    QObject::connect(&server, &QProcess::readyReadStandardOutput, &server,
                     [&server] { server.readAllStandardOutput(); });

    QNetworkAccessManager manager;
    const QUrl url(base + u"/orv/search.php?"_s + QString::fromLatin1(Query));
    int started = 0;
    int finished = 0;
    int failed = 0;
    QEventLoop loop;
    QElapsedTimer timer;
    std::function<void()> next = [&] {
        if (started >= requests)
            return;
        ++started;
        QNetworkReply* reply = manager.get(QNetworkRequest(url));
        QObject::connect(reply, &QNetworkReply::sslErrors, reply, [reply] { reply->ignoreSslErrors(); });
        QObject::connect(reply, &QNetworkReply::finished, &loop, [&, reply] {
            std::unique_ptr<QNetworkReply> owner(reply);
            try {
                if (reply->error() != QNetworkReply::NoError ||
                    !QJsonDocument::fromJson(DecryptBytes(reply->readAll(), PayloadKeyA, PayloadKeyB))
                         .isArray())
                    ++failed;
            } catch (const std::exception&) {
                ++failed;
            }
            if (++finished == requests)
                loop.quit();
            else
                next();
        });
    };
    timer.start();
    for (int i = 0; i < inFlight; ++i)
        next();
    QTimer::singleShot(300000, &loop, &QEventLoop::quit);
    loop.exec();
    const double seconds = timer.nsecsElapsed() / 1e9;
    std::printf("%-6s %d in flight: %6d replies in %.2f s = %8.0f replies/s, %d failed\n",
                tls ? "HTTPS," : "HTTP,", inFlight, finished, seconds, finished / seconds, failed);
    server.terminate();
    server.waitForFinished(10000);
    return failed == 0 && finished == requests;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int requests = argc > 1 ? std::max(10, QByteArray(argv[1]).toInt()) : 2000;
    std::printf("Keyword search \"%s\" on the demo catalogue\n", Query.constData());
    InProcess(requests);
    bool ok = OverNetwork(false, requests, 1);
    ok = OverNetwork(false, requests, 6) && ok;
    ok = OverNetwork(true, requests, 6) && ok;
    return ok ? 0 : 1;
}
