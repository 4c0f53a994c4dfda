// 200 thumbnails of about 20 KB each from a server on 127.0.0.1 through a TDownloadQueue of 5
// workers. Reports the wall time and the longest gap between ticks of a 1 ms timer on the main
// thread, that is the main thread's longest stall while the queue runs.

#include "support_httpserver.h"
#include "uDownloadQueue.h"
#include "uDownloader_SBB.h"

#include <QBuffer>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {

class TThumbReceiver : public QObject
{
public:
    int Images = 0;
    qint64 Pixels = 0;
    qint64 Bytes = 0;

    bool event(QEvent* e) override
    {
        if (auto* message = dynamic_cast<TPostedMessage*>(e)) {
            const QImage image = message->TakeWParam().value<QImage>();
            const auto subscriber = message->TakeLParam();
            ++Images;
            Bytes += image.sizeInBytes();
            Pixels += static_cast<qint64>(image.width()) * image.height();
            return true;
        }
        return QObject::event(e);
    }
};

struct TRun
{
    qint64 WallMs = 0;
    qint64 LongestStallUs = 0;
    int Images = 0;
};

TRun RunOnce(TTestHttpServer& server, int count, int threads)
{
    TThumbReceiver receiver;
    TDownloadQueue queue;
    queue.MaxThreads = threads;
    bool done = false;
    queue.OnDone = [&done](TThreadRunner*) { done = true; };
    for (int i = 0; i < count; ++i) {
        // Distinct URLs (the query makes each one a transfer of its own), the same 20 KB picture.
        queue.AddDownload(TDownloadQueue::WorkerClass<TPictureDownloader>(),
                          server.URL(QStringLiteral("/image/20000?n=%1").arg(i)), {}, cMsgThumbnail,
                          &receiver, std::make_unique<TMessageObj>());
    }

    QElapsedTimer tickClock;
    qint64 lastTick = 0;
    qint64 longest = 0;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = tickClock.nsecsElapsed() / 1000;
        longest = std::max(longest, now - lastTick);
        lastTick = now;
    });

    QElapsedTimer wall;
    wall.start();
    tickClock.start();
    ticker.start(1);
    queue.Start();
    while (!done || receiver.Images < count) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (wall.elapsed() > 120000)
            break;
    }
    ticker.stop();
    return {wall.elapsed(), longest, receiver.Images};
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int count = 200;
    const int threads = 5;
    TTestHttpServer server;
    if (!server.IsListening()) {
        std::fprintf(stderr, "the local server did not start\n");
        return 1;
    }
    RunOnce(server, 10, threads); // warm-up: image cache of the server, plugins
    QBuffer sample;
    sample.open(QIODevice::ReadWrite);
    TSBB_Downloader probe;
    probe.SetURL(server.URL(QStringLiteral("/image/20000")));
    probe.DownloadToStream(&sample);
    std::printf("%d thumbnails of %lld bytes (PNG), %d workers, server on 127.0.0.1\n", count,
                static_cast<long long>(sample.size()), threads);
    for (int round = 1; round <= 3; ++round) {
        const TRun run = RunOnce(server, count, threads);
        std::printf("round %d: wall %lld ms, %d images, longest main-thread stall %.2f ms\n", round,
                    static_cast<long long>(run.WallMs), run.Images,
                    static_cast<double>(run.LongestStallUs) / 1000.0);
    }
    return 0;
}
