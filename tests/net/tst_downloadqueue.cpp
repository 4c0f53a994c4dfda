// Workers, the thread runner and the download queue, against a real HTTP server on 127.0.0.1.

#include "support_common.h"
#include "support_datarow.h"
#include "support_httpserver.h"
#include "uDownloadQueue.h"

#include <QImage>
#include <QPointer>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

namespace {

// A request's object that counts the living instances, so that a lost or leaked one shows.
class TTestSubscriber : public TMessageObj
{
public:
    explicit TTestSubscriber(int id) : Id(id) { ++Alive; }
    ~TTestSubscriber() override { --Alive; }
    const int Id;
    static inline std::atomic<int> Alive = 0;
};

std::unique_ptr<TMessageObj> Subscriber(int id)
{
    return std::make_unique<TTestSubscriber>(id);
}

bool OnMainThread()
{
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

// Stands for a window that results are posted to: keeps each message's number, result and
// subscriber id, and whether it arrived on the main thread as the event type of its number.
class TReceiver : public QObject
{
public:
    QList<quint32> Msgs;
    QList<QVariant> Results;
    QList<int> SubscriberIds;
    bool AllOnMainThread = true;

    bool event(QEvent* e) override
    {
        auto* message = dynamic_cast<TPostedMessage*>(e);
        if (!message)
            return QObject::event(e);
        Msgs << message->Msg();
        AllOnMainThread =
            AllOnMainThread && OnMainThread() && e->type() == TPostedMessage::EventType(message->Msg());
        Results << message->TakeWParam();
        const std::unique_ptr<TMessageObj> subscriber = message->TakeLParam();
        const auto* test = dynamic_cast<TTestSubscriber*>(subscriber.get());
        SubscriberIds << (test ? test->Id : -1);
        return true;
    }
};

// Records the queue's events.
struct TQueueLog
{
    QStringList Order; // "start" and "done"
    QList<int> Lefts;  // `left` of each progress report

    explicit TQueueLog(TDownloadQueue& queue)
    {
        queue.OnStart = [this](TThreadRunner*) { Order << "start"; };
        queue.OnDone = [this](TThreadRunner*) { Order << "done"; };
        queue.OnProgress = [this](TDownloadQueue*, qint32 done, qint32 running, qint32 left) {
            QCOMPARE(done, left - running);
            Lefts << left;
        };
    }
    int Dones() const { return int(Order.count("done")); }
};

const QStringList cLines{"first line", "zweite Zeile äöü", "third"};

} // namespace

class TestDownloadQueue : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTestHttpServer> m_http;
    int m_batch = 0;

    // Hold URLs unique to one test: /hold/b<batch>-<i>.
    QByteArray HoldId(int i) const { return "b" + QByteArray::number(m_batch) + '-' + QByteArray::number(i); }
    QString HoldPath(int i) const { return "/hold/" + HoldId(i); }
    QByteArray HoldPrefix() const { return "/hold/b" + QByteArray::number(m_batch) + '-'; }

    // A text (or picture) request for the server's path, posted as msg to receiver.
    TCustomDownloader* Add(TDownloadQueue& queue, const QString& path, QObject* receiver, int id,
                           bool picture = false, quint32 msg = cMsgSearchReply)
    {
        const QString url = path.startsWith("http") ? path : m_http->URL(path);
        return queue.AddDownload(picture ? TDownloadQueue::WorkerClass<TPictureDownloader>()
                                         : TDownloadQueue::WorkerClass<TTextDownloader>(),
                                 url, {}, msg, receiver, id < 0 ? nullptr : Subscriber(id));
    }

private slots:
    void initTestCase()
    {
        LoadEnglish();
        m_http = std::make_unique<TTestHttpServer>();
        QVERIFY(m_http->IsListening());
    }
    void init()
    {
        ++m_batch;
        m_http->ClearRequests();
        TTestSubscriber::Alive = 0;
    }
    void cleanup() { QCOMPARE(TTestSubscriber::Alive.load(), 0); }
    void cleanupTestCase() { m_http.reset(); }

    void sameUrlTwiceRunsOneTransfer()
    {
        TReceiver receiver;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        TCustomDownloader* first = Add(queue, "/lines", &receiver, 1);
        QCOMPARE(Add(queue, "/lines", nullptr, 2, false, 7), first);
        QCOMPARE(queue.Count(), 1);
        QCOMPARE(queue.Find(m_http->URL("/lines")), first);
        QCOMPARE(queue.Find(m_http->URL("/lines").toUpper()), nullptr);
        queue.Start();
        queue.WaitFor();
        QTRY_COMPARE(receiver.SubscriberIds, QList<int>({1, 2}));
        QCOMPARE(m_http->CountFor("/lines"), 1);
        QCOMPARE(receiver.Msgs, QList<quint32>({cMsgSearchReply, cMsgSearchReply}));
        QVERIFY(receiver.AllOnMainThread);
        QCOMPARE(receiver.Results, QList<QVariant>({cLines, cLines}));
    }

    void sevenUrlsWithFiveThreads()
    {
        TReceiver receiver;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        TQueueLog log(queue);
        QList<QPointer<TCustomDownloader>> workers;
        for (int i = 0; i < 7; ++i)
            workers << Add(queue, HoldPath(i), &receiver, i);
        QCOMPARE(queue.Count(), 7);
        queue.Start();
        QCOMPARE(log.Order, QStringList{"start"});
        QCOMPARE(queue.RunningThreads(), 5);
        for (int i = 0; i < 7; ++i)
            QCOMPARE(workers.at(i)->Started(), i < 5);
        QVERIFY(m_http->WaitForRequests(HoldPrefix(), 5, 10000));
        queue.Start(); // threads are running: no new batch
        QCOMPARE(log.Order, QStringList{"start"});

        // Each end starts the next one, in the order of adding.
        for (int i = 0; i < 7; ++i) {
            m_http->Release(HoldId(i));
            QTRY_COMPARE_WITH_TIMEOUT(log.Lefts.size(), i + 1, 10000);
            if (i + 5 < 7) {
                QVERIFY(m_http->WaitForRequests(HoldPrefix(), 6 + i, 10000));
                QCOMPARE(m_http->Requests().constLast().Path, HoldPath(i + 5).toLatin1());
            }
        }
        queue.WaitFor();
        QCOMPARE(log.Order, QStringList({"start", "done"}));
        QVERIFY(queue.Finished());
        QCOMPARE(log.Lefts, QList<int>({7, 6, 5, 4, 3, 2, 1}));
        QTRY_COMPARE(receiver.SubscriberIds, QList<int>({0, 1, 2, 3, 4, 5, 6}));
        for (const QPointer<TCustomDownloader>& worker : std::as_const(workers))
            QVERIFY(worker.isNull()); // the workers freed themselves

        // Start on an empty queue: start and done at once.
        TDownloadQueue empty;
        TQueueLog emptyLog(empty);
        QVERIFY(!empty.Finished());
        empty.Start();
        QCOMPARE(emptyLog.Order, QStringList({"start", "done"}));
        QVERIFY(empty.Finished());
        empty.WaitFor(); // returns at once
    }

    void stopDuringABatch()
    {
        TReceiver receiver;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        TQueueLog log(queue);
        for (int i = 0; i < 7; ++i)
            Add(queue, HoldPath(i), &receiver, i);
        queue.Start();
        QVERIFY(m_http->WaitForRequests(HoldPrefix(), 5, 10000));
        QCOMPARE(TTestSubscriber::Alive.load(), 7);

        queue.TerminateAll();
        queue.WaitFor(); // the held transfers are aborted: nothing is released here
        QCOMPARE(log.Dones(), 1);
        QCOMPARE(queue.Count(), 0);
        QVERIFY(queue.Finished());
        QTest::qWait(50);
        QCOMPARE(log.Lefts.size(), 0);
        QCOMPARE(receiver.Msgs.size(), 0);
        // The two that never ran never connected, and every subscriber died with its worker.
        QCOMPARE(m_http->CountFor(HoldPrefix()), 5);
        QCOMPARE(TTestSubscriber::Alive.load(), 0);
        m_http->ReleaseAll();
    }

    void workerWithoutReceiverStillRaisesOnText()
    {
        auto* worker = new TTextDownloader; // frees itself when it has ended
        QPointer<TTextDownloader> guard(worker);
        worker->URL = m_http->URL("/lines");
        worker->Msg = cMsgSearchReply; // but no window
        worker->AddSubscriber(Subscriber(1));
        QList<QStringList> texts;
        bool onMainThread = false;
        worker->OnText = [&texts, &onMainThread](TTextDownloader*, const QStringList& list) {
            texts.append(list);
            onMainThread = OnMainThread();
        };
        worker->Start();
        QTRY_VERIFY_WITH_TIMEOUT(guard.isNull(), 10000);
        QCOMPARE(texts, QList<QStringList>{cLines});
        QVERIFY(onMainThread);
        QCOMPARE(TTestSubscriber::Alive.load(), 0); // not posted: freed with the worker
    }

    void picturesArriveAsCopies()
    {
        TReceiver receiver;
        TDownloadQueue queue;
        Add(queue, "/image/20000", &receiver, 1, true, cMsgThumbnail);
        Add(queue, "/image/20000", &receiver, 2, true, cMsgThumbnail);
        queue.Start();
        queue.WaitFor();
        QTRY_COMPARE(receiver.Results.size(), 2);
        QImage first = receiver.Results.at(0).value<QImage>();
        const QImage second = receiver.Results.at(1).value<QImage>();
        QCOMPARE(first.size(), QSize(82, 82));
        QCOMPARE(second, first);
        first.setPixel(0, 0, qRgb(1, 2, 3)); // each subscriber's copy is its own
        QVERIFY(second != first);
    }

    void failedTransfersPostNothing_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("picture");
        AddRow("text 404", QString("/missing"), false);
        AddRow("picture that does not decode", QString("/ok"), true);
        AddRow("connection refused", QString("http://127.0.0.1:%1/").arg(FreeLocalPort()), false);
    }
    void failedTransfersPostNothing()
    {
        QFETCH(QString, url);
        QFETCH(bool, picture);
        TReceiver receiver;
        TDownloadQueue queue;
        TQueueLog log(queue);
        Add(queue, url, &receiver, 1, picture, cMsgLargePicture);
        queue.Start();
        queue.WaitFor();
        QTest::qWait(20);
        QCOMPARE(receiver.Msgs.size(), 0);
        QCOMPARE(log.Lefts.size(), 1);
        QCOMPARE(log.Dones(), 1);
    }

    void receiverGoneBeforeDelivery()
    {
        auto receiver = std::make_unique<TReceiver>();
        TDownloadQueue queue;
        Add(queue, "/lines", receiver.get(), 1);
        auto* worker = qobject_cast<TTextDownloader*>(Add(queue, "/lines", receiver.get(), 2));
        QVERIFY(worker);
        // OnText comes after the results were posted, and before they are delivered.
        worker->OnText = [&receiver](TTextDownloader*, const QStringList&) { receiver.reset(); };
        queue.Start();
        queue.WaitFor();
        QTRY_COMPARE(TTestSubscriber::Alive.load(), 0);
        QVERIFY(!receiver);

        // Posted from another thread to a receiver that goes before delivery.
        receiver = std::make_unique<TReceiver>();
        QPointer<QObject> target(receiver.get());
        std::thread poster([target] {
            for (int i = 0; i < 100; ++i)
                PostResultMessage(target, cMsgThumbnail,
                                  QVariant::fromValue(QImage(4, 4, QImage::Format_RGB32)), Subscriber(i));
        });
        poster.join();
        receiver.reset();
        QCoreApplication::processEvents();
        QCOMPARE(TTestSubscriber::Alive.load(), 0);
    }

    // Status comes on the main thread; each worker has a cookie store and a transport of its own.
    void statusAndCookieStores()
    {
        TDownloadQueue queue;
        QStringList texts;
        bool allOnMain = true;
        queue.OnStatus = [&](TCustomDownloader*, qint32 panel, const QString& text) {
            texts << QString::number(panel) + ':' + text;
            allOnMain = allOnMain && OnMainThread();
        };
        TCustomDownloader* a = Add(queue, "/cookie/set", nullptr, -1, false, 0);
        TCustomDownloader* b = Add(queue, "/cookie/get", nullptr, -1, false, 0);
        Add(queue, "/image/100", nullptr, -1, true, cMsgThumbnail);
        QVERIFY(a->CookieStore() && b->CookieStore() && a->CookieStore() != b->CookieStore());
        QVERIFY(a->Downloader() != b->Downloader());
        queue.MaxThreads = 1;
        queue.Start();
        queue.WaitFor();
        QCOMPARE(texts, QStringList({"2:Downloading data...", "2:Downloading data...",
                                     "2:Downloading image: " + m_http->URL("/image/100")}));
        QVERIFY(allOnMain);
        QCOMPARE(m_http->RequestsFor("/cookie/get").value(0).Headers.value("cookie"), QByteArray());
    }

    void destroyingAQueueStopsItsWorkers()
    {
        TReceiver receiver;
        auto queue = std::make_unique<TDownloadQueue>();
        queue->MaxThreads = 2;
        for (int i = 0; i < 4; ++i)
            Add(*queue, HoldPath(i), &receiver, i);
        queue->Start();
        QVERIFY(m_http->WaitForRequests(HoldPrefix(), 2, 10000));
        queue.reset();
        QCOMPARE(TTestSubscriber::Alive.load(), 0);
        QTest::qWait(20);
        QCOMPARE(receiver.Msgs.size(), 0);
        m_http->ReleaseAll();

        // A queue never started frees its workers too, and nothing connects.
        queue = std::make_unique<TDownloadQueue>();
        for (int i = 4; i < 7; ++i)
            Add(*queue, HoldPath(i), nullptr, i);
        QCOMPARE(TTestSubscriber::Alive.load(), 3);
        queue.reset();
        QCOMPARE(TTestSubscriber::Alive.load(), 0);
        QCOMPARE(m_http->CountFor(HoldPrefix()), 2);
    }
};

QTEST_GUILESS_MAIN(TestDownloadQueue)
#include "tst_downloadqueue.moc"
