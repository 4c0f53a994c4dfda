// A catalogue search reply of 500 results (by default), from the bytes that arrive to ready
// TMetalAsset records. The reply is the catalogue server's own answer on the demo catalogue,
// repeated with changed names up to the count, compact JSON enciphered as the server sends it.
//
// First the stages on their own, as the program runs them: deciphering and splitting into lines
// on the worker, then reading the lines into records on the main thread. Then whole searches
// through a download queue against a server on 127.0.0.1 that serves the same bytes, with the time
// the main thread spends on the reply.

#include "bench_common.h"
#include "support_httpserver.h"
#include "uCatalogueQuery.h"
#include "uCatalogueSearch.h"
#include "uDownloadQueue.h"
#include "uDownloader.h"
#include "uEncryptedDownloader.h"
#include "uObjs.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uSearchQuery.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {

const QString cBase = QStringLiteral("https://catalogue.example");

QByteArray ClearReply(int count)
{
    TCatalogueSearch search(QStringLiteral(ORV_SERVER_DATA "/catalogue.db"));
    const QJsonArray all =
        search.Search(ParseCatalogueQuery("action=search-coins&metals=[0,1,2,3,4,5]&coin_types=[0,1,2,3,4]"));
    QJsonArray reply;
    for (int i = 0; i < count && !all.isEmpty(); ++i) {
        QJsonObject item = all.at(i % all.size()).toObject();
        if (i >= all.size())
            item[QStringLiteral("Name")] =
                item[QStringLiteral("Name")].toString() + QStringLiteral(" #%1").arg(i);
        reply.append(item);
    }
    return QJsonDocument(reply).toJson(QJsonDocument::Compact);
}

// The worker's part: decipher the body and split the UTF-8 text into lines.
QStringList WorkerPart(const QByteArray& body)
{
    QBuffer received;
    received.setData(body);
    received.open(QIODevice::ReadOnly);
    QBuffer clear;
    clear.open(QIODevice::ReadWrite);
    DecryptStream(received, clear, PayloadKeyA, PayloadKeyB);
    return TextToLines(DecodeCodePage(clear.data(), cCodePageUTF8));
}

// Stands for the add dialog: reads each search reply into records, timing that part.
class TReplyReader : public QObject
{
public:
    std::size_t Records = 0;
    qint64 MainThreadNs = 0;
    int Replies = 0;

    bool event(QEvent* e) override
    {
        auto* message = dynamic_cast<TPostedMessage*>(e);
        if (!message)
            return QObject::event(e);
        QElapsedTimer clock;
        clock.start();
        const QStringList lines = message->TakeWParam().toStringList();
        const TMetalAssets assets = ReadSearchReply(lines, cBase);
        MainThreadNs += clock.nsecsElapsed();
        Records += assets.size();
        ++Replies;
        message->TakeLParam();
        return true;
    }
};

void Stages(const QByteArray& clearJson, const QByteArray& body)
{
    const int runs = 41;
    QStringList lines;
    std::size_t records = 0;
    const double worker = MedianMs(runs, [&] { lines = WorkerPart(body); });
    const double main = MedianMs(runs, [&] { records = ReadSearchReply(lines, cBase).size(); });
    const double whole = MedianMs(runs, [&] { records = ReadSearchReply(WorkerPart(body), cBase).size(); });
    std::printf("reply: %zu results, %lld bytes of JSON, %lld bytes enciphered\n", records,
                static_cast<long long>(clearJson.size()), static_cast<long long>(body.size()));
    std::printf("  worker: decipher + UTF-8 lines        %7.2f ms (median of %d)\n", worker, runs);
    std::printf("  main thread: lines -> TMetalAsset     %7.2f ms\n", main);
    std::printf("  bytes -> ready records, both stages   %7.2f ms\n", whole);
}

void Searches(TTestHttpServer& server, int count)
{
    TReplyReader reader;
    TDownloadQueue queue;
    queue.MaxThreads = 5;
    const QString url = SearchURL(server.BaseURL(), SearchQuery(smGoldCoins, 1, QString(), TSearchFilters()));
    QList<double> each;
    for (int i = 0; i < count; ++i) {
        QElapsedTimer one;
        one.start();
        queue.AddDownload(TDownloadQueue::WorkerClass<TEncryptedTextDownloader>(), url, QString(),
                          cMsgSearchReply, &reader, std::make_unique<TMessageObj>());
        queue.Start();
        queue.WaitFor();
        QCoreApplication::sendPostedEvents();
        each.append(static_cast<double>(one.nsecsElapsed()) / 1e6);
    }
    std::sort(each.begin(), each.end());
    std::printf("%d searches through the queue: %zu records in %d replies; per search median %.2f ms, worst "
                "%.2f ms; main thread on the reply %.2f ms per search\n",
                count, reader.Records, reader.Replies, each.at(each.size() / 2), each.last(),
                static_cast<double>(reader.MainThreadNs) / 1e6 / std::max(1, reader.Replies));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 500;
    QStandardPaths::setTestModeEnabled(true);
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/config")).toLocal8Bit());
    SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER,
                                                           QStringLiteral("Software\\Brenmoor\\Orvane")));

    const QByteArray clear = ClearReply(count);
    const QByteArray body = EncryptBytes(clear, PayloadKeyA, PayloadKeyB);
    Stages(clear, body);

    TTestHttpServer server;
    if (!server.IsListening()) {
        std::fprintf(stderr, "the local server did not start\n");
        return 1;
    }
    server.SetReply("/orv/search.php", {200, body, {}});
    Searches(server, 3); // warm-up
    for (int round = 1; round <= 3; ++round)
        Searches(server, 20);
    SetSettingsStore(nullptr);
    return 0;
}
