// Workers, the thread runner and the download queue, against a real HTTP server on 127.0.0.1.

#include "support_httpserver.h"
#include "uDownloadQueue.h"
#include "uZTStrings.h"

#include <QElapsedTimer>
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

struct TReceived
{
    quint32 Msg = 0;
    QVariant WParam;
    int SubscriberId = -1;
    bool OnMainThread = false;
    bool TypeMatches = false;
};

// Stands for a window that results are posted to.
class TReceiver : public QObject
{
public:
    QList<TReceived> Received;

    bool event(QEvent* e) override
    {
        auto* message = dynamic_cast<TPostedMessage*>(e);
        if (!message)
            return QObject::event(e);
        TReceived received;
        received.Msg = message->Msg();
        received.OnMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        received.TypeMatches = e->type() == TPostedMessage::EventType(message->Msg());
        received.WParam = message->TakeWParam();
        const std::unique_ptr<TMessageObj> subscriber = message->TakeLParam();
        if (auto* test = dynamic_cast<TTestSubscriber*>(subscriber.get()))
            received.SubscriberId = test->Id;
        Received.append(received);
        return true;
    }

    QList<int> SubscriberIds() const
    {
        QList<int> ids;
        for (const TReceived& r : Received)
            ids.append(r.SubscriberId);
        return ids;
    }
};

struct TProgress
{
    int Done, Running, Left;
};

// Records the queue's events.
struct TQueueLog
{
    int Starts = 0;
    int Dones = 0;
    QStringList Order;
    QList<TProgress> Progress;

    void Watch(TDownloadQueue& queue)
    {
        queue.OnStart = [this](TThreadRunner*) {
            ++Starts;
            Order.append(QStringLiteral("start"));
        };
        queue.OnDone = [this](TThreadRunner*) {
            ++Dones;
            Order.append(QStringLiteral("done"));
        };
        queue.OnProgress = [this](TDownloadQueue*, qint32 done, qint32 running, qint32 left) {
            Progress.append({done, running, left});
        };
    }
};

const QStringList cLines{QStringLiteral("first line"), QStringLiteral("zweite Zeile äöü"),
                         QStringLiteral("third")};

} // namespace

class TestDownloadQueue : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTestHttpServer> m_http;
    int m_batch = 0;

    // Hold URLs unique to one test: /hold/<batch>-<i>.
    QString HoldPath(int i) const { return QStringLiteral("/hold/b%1-%2").arg(m_batch).arg(i); }
    QByteArray HoldId(int i) const { return QStringLiteral("b%1-%2").arg(m_batch).arg(i).toLatin1(); }
    QByteArray HoldPrefix() const { return QStringLiteral("/hold/b%1-").arg(m_batch).toLatin1(); }

private slots:
    void initTestCase()
    {
        QVERIFY(LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English")));
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
        const QString url = m_http->URL(QStringLiteral("/lines"));
        TCustomDownloader* first = queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(), url, {},
                                                     cMsgSearchReply, &receiver, Subscriber(1));
        TCustomDownloader* second = queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(), url, {},
                                                      7, nullptr, Subscriber(2));
        QCOMPARE(second, first);
        QCOMPARE(queue.Count(), 1);
        QCOMPARE(queue.Find(url), first);
        QCOMPARE(queue.Find(url.toUpper()), nullptr);
        queue.Start();
        queue.WaitFor();
        QTRY_COMPARE(receiver.Received.size(), 2);
        QCOMPARE(m_http->CountFor("/lines"), 1);
        QCOMPARE(receiver.SubscriberIds(), (QList<int>{1, 2}));
        for (const TReceived& r : std::as_const(receiver.Received)) {
            QCOMPARE(r.Msg, cMsgSearchReply);
            QVERIFY(r.OnMainThread);
            QVERIFY(r.TypeMatches);
            QCOMPARE(r.WParam.toStringList(), cLines);
        }
    }

    void messagesKeepTheOrderOfPosting()
    {
        TReceiver receiver;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        for (int id = 1; id <= 6; ++id)
            queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(),
                              m_http->URL(QStringLiteral("/lines")), {}, cMsgSearchReply, &receiver,
                              Subscriber(id));
        queue.Start();
        queue.WaitFor();
        QTRY_COMPARE(receiver.Received.size(), 6);
        QCOMPARE(receiver.SubscriberIds(), (QList<int>{1, 2, 3, 4, 5, 6}));
    }

    void sevenUrlsWithFiveThreads()
    {
        TReceiver receiver;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        TQueueLog log;
        log.Watch(queue);
        QList<QPointer<TCustomDownloader>> workers;
        for (int i = 0; i < 7; ++i)
            workers.append(queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(),
                                             m_http->URL(HoldPath(i)), {}, cMsgSearchReply, &receiver,
                                             Subscriber(i)));
        QCOMPARE(queue.Count(), 7);
        queue.Start();
        QCOMPARE(log.Starts, 1);
        QCOMPARE(queue.RunningThreads(), 5);
        for (int i = 0; i < 7; ++i)
            QCOMPARE(workers.at(i)->Started(), i < 5);
        QVERIFY(m_http->WaitForRequests(HoldPrefix(), 5, 10000));

        queue.Start(); // threads are running: no new batch
        QCOMPARE(log.Starts, 1);

        // Each end starts the next one, in the order of adding.
        for (int i = 0; i < 7; ++i) {
            m_http->Release(HoldId(i));
            QTRY_COMPARE_WITH_TIMEOUT(log.Progress.size(), i + 1, 10000);
            if (i + 5 < 7) {
                QVERIFY(m_http->WaitForRequests(HoldPrefix(), 6 + i, 10000));
                QCOMPARE(m_http->Requests().constLast().Path, HoldPath(i + 5).toLatin1());
            }
        }
        queue.WaitFor();
        QCOMPARE(log.Dones, 1);
        QVERIFY(queue.Finished());
        QList<int> lefts;
        for (const TProgress& p : std::as_const(log.Progress)) {
            lefts.append(p.Left);
            QCOMPARE(p.Done, p.Left - p.Running);
        }
        QCOMPARE(lefts, (QList<int>{7, 6, 5, 4, 3, 2, 1}));
        QTRY_COMPARE(receiver.Received.size(), 7);
        QCOMPARE(receiver.SubscriberIds(), (QList<int>{0, 1, 2, 3, 4, 5, 6}));
        // The workers freed themselves.
        for (const QPointer<TCustomDownloader>& worker : std::as_const(workers))
            QVERIFY(worker.isNull());
    }

    void startOnAnEmptyQueue()
    {
        TDownloadQueue queue;
        TQueueLog log;
        log.Watch(queue);
        QVERIFY(!queue.Finished());
        queue.Start();
        QCOMPARE(log.Order, (QStringList{QStringLiteral("start"), QStringLiteral("done")}));
        QVERIFY(queue.Finished());
        queue.WaitFor(); // returns at once
    }

    void stopDuringABatch()
    {
        TReceiver receiver;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        TQueueLog log;
        log.Watch(queue);
        for (int i = 0; i < 7; ++i)
            queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(), m_http->URL(HoldPath(i)), {},
                              cMsgSearchReply, &receiver, Subscriber(i));
        queue.Start();
        QVERIFY(m_http->WaitForRequests(HoldPrefix(), 5, 10000));
        QCOMPARE(TTestSubscriber::Alive.load(), 7);

        queue.TerminateAll();
        queue.WaitFor(); // the held transfers are aborted: nothing is released here
        QCOMPARE(log.Dones, 1);
        QCOMPARE(queue.Count(), 0);
        QVERIFY(queue.Finished());
        QTest::qWait(50);
        QCOMPARE(log.Progress.size(), 0);
        QCOMPARE(receiver.Received.size(), 0);
        // The two that never ran never connected, and every subscriber died with its worker.
        QCOMPARE(m_http->CountFor(HoldPrefix()), 5);
        QCOMPARE(TTestSubscriber::Alive.load(), 0);
        m_http->ReleaseAll();
    }

    void workerWithoutReceiverStillRaisesOnText()
    {
        auto* worker = new TTextDownloader; // frees itself when it has ended
        QPointer<TTextDownloader> guard(worker);
        worker->URL = m_http->URL(QStringLiteral("/lines"));
        worker->Msg = cMsgSearchReply; // but no window
        worker->AddSubscriber(Subscriber(1));
        QList<QStringList> texts;
        bool onMainThread = false;
        worker->OnText = [&texts, &onMainThread](TTextDownloader*, const QStringList& list) {
            texts.append(list);
            onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
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
        queue.MaxThreads = 5;
        const QString url = m_http->URL(QStringLiteral("/image/20000"));
        queue.AddDownload(TDownloadQueue::WorkerClass<TPictureDownloader>(), url, {}, cMsgThumbnail,
                          &receiver, Subscriber(1));
        queue.AddDownload(TDownloadQueue::WorkerClass<TPictureDownloader>(), url, {}, cMsgThumbnail,
                          &receiver, Subscriber(2));
        queue.Start();
        queue.WaitFor();
        QTRY_COMPARE(receiver.Received.size(), 2);
        QImage first = receiver.Received.at(0).WParam.value<QImage>();
        const QImage second = receiver.Received.at(1).WParam.value<QImage>();
        QVERIFY(!first.isNull());
        QCOMPARE(first.size(), QSize(82, 82));
        QCOMPARE(second, first);
        first.setPixel(0, 0, qRgb(1, 2, 3)); // each subscriber's copy is its own
        QVERIFY(second != first);
    }

    void failedTransfersPostNothing_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("picture");
        QTest::newRow("text 404") << QStringLiteral("/missing") << false;
        QTest::newRow("picture 404") << QStringLiteral("/missing") << true;
        QTest::newRow("picture that does not decode") << QStringLiteral("/ok") << true;
        QTest::newRow("connection refused") << QStringLiteral("refused") << false;
    }

    void failedTransfersPostNothing()
    {
        QFETCH(QString, url);
        QFETCH(bool, picture);
        url = url == QLatin1String("refused") ? QStringLiteral("http://127.0.0.1:%1/").arg(FreeLocalPort())
                                              : m_http->URL(url);
        TReceiver receiver;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        TQueueLog log;
        log.Watch(queue);
        auto workerClass = picture ? TDownloadQueue::WorkerClass<TPictureDownloader>()
                                   : TDownloadQueue::WorkerClass<TTextDownloader>();
        queue.AddDownload(workerClass, url, {}, cMsgLargePicture, &receiver, Subscriber(1));
        queue.Start();
        queue.WaitFor();
        QTest::qWait(20);
        QCOMPARE(receiver.Received.size(), 0);
        QCOMPARE(log.Progress.size(), 1);
        QCOMPARE(log.Dones, 1);
        QCOMPARE(TTestSubscriber::Alive.load(), 0);
    }

    void receiverGoneBeforeDelivery()
    {
        auto receiver = std::make_unique<TReceiver>();
        TDownloadQueue queue;
        queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(),
                          m_http->URL(QStringLiteral("/lines")), {}, cMsgSearchReply, receiver.get(),
                          Subscriber(1));
        queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(),
                          m_http->URL(QStringLiteral("/lines")), {}, cMsgSearchReply, receiver.get(),
                          Subscriber(2));
        auto* worker = qobject_cast<TTextDownloader*>(queue.Find(m_http->URL(QStringLiteral("/lines"))));
        QVERIFY(worker);
        // OnText comes after the results were posted, and before they are delivered.
        worker->OnText = [&receiver](TTextDownloader*, const QStringList&) { receiver.reset(); };
        queue.Start();
        queue.WaitFor();
        QTRY_COMPARE(TTestSubscriber::Alive.load(), 0);
        QVERIFY(!receiver);
    }

    void postingFromAnotherThreadToAGoneReceiver()
    {
        auto receiver = std::make_unique<TReceiver>();
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

    void statusIsReportedOnTheMainThread()
    {
        TDownloadQueue queue;
        QStringList texts;
        QList<int> panels;
        bool allOnMain = true;
        queue.OnStatus = [&](TCustomDownloader*, qint32 panel, const QString& text) {
            panels.append(panel);
            texts.append(text);
            allOnMain = allOnMain && QThread::currentThread() == QCoreApplication::instance()->thread();
        };
        const QString imageUrl = m_http->URL(QStringLiteral("/image/100"));
        queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(),
                          m_http->URL(QStringLiteral("/lines")), {}, cMsgSearchReply, nullptr, nullptr);
        queue.AddDownload(TDownloadQueue::WorkerClass<TPictureDownloader>(), imageUrl, {}, cMsgThumbnail,
                          nullptr, nullptr);
        queue.Start();
        queue.WaitFor();
        QCOMPARE(panels, (QList<int>{2, 2}));
        QCOMPARE(texts, (QStringList{QStringLiteral("Downloading data..."),
                                     QStringLiteral("Downloading image: ") + imageUrl}));
        QVERIFY(allOnMain);
    }

    void stopAbortsARunningTransfer()
    {
        const int abortedBefore = m_http->AbortedSlowTransfers();
        TReceiver receiver;
        TDownloadQueue queue;
        TQueueLog log;
        log.Watch(queue);
        queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(),
                          m_http->URL(QStringLiteral("/slow")), {}, cMsgSearchReply, &receiver,
                          Subscriber(1));
        queue.Start();
        QVERIFY(m_http->WaitForRequests("/slow", 1, 10000));
        QTest::qWait(100);
        QElapsedTimer clock;
        clock.start();
        queue.TerminateAll();
        queue.WaitFor();
        // The body takes 100 s; the stop ended it.
        QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
        QTRY_COMPARE(m_http->AbortedSlowTransfers(), abortedBefore + 1);
        QCOMPARE(log.Dones, 1);
        QCOMPARE(log.Progress.size(), 0);
        QCOMPARE(receiver.Received.size(), 0);
    }

    void destroyingAQueueStopsItsWorkers()
    {
        TReceiver receiver;
        auto queue = std::make_unique<TDownloadQueue>();
        queue->MaxThreads = 2;
        for (int i = 0; i < 4; ++i)
            queue->AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(), m_http->URL(HoldPath(i)), {},
                               cMsgSearchReply, &receiver, Subscriber(i));
        queue->Start();
        QVERIFY(m_http->WaitForRequests(HoldPrefix(), 2, 10000));
        queue.reset();
        QCOMPARE(TTestSubscriber::Alive.load(), 0);
        QTest::qWait(20);
        QCOMPARE(receiver.Received.size(), 0);
        m_http->ReleaseAll();
    }

    void queueNeverStartedFreesItsWorkers()
    {
        {
            TDownloadQueue queue;
            for (int i = 0; i < 3; ++i)
                queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(), m_http->URL(HoldPath(i)),
                                  {}, cMsgSearchReply, nullptr, Subscriber(i));
            QCOMPARE(TTestSubscriber::Alive.load(), 3);
        }
        QCOMPARE(TTestSubscriber::Alive.load(), 0);
        QCOMPARE(m_http->CountFor(HoldPrefix()), 0);
    }

    void eachWorkerHasItsOwnCookieStore()
    {
        TDownloadQueue queue;
        TCustomDownloader* a =
            queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(),
                              m_http->URL(QStringLiteral("/cookie/set")), {}, 0, nullptr, nullptr);
        TCustomDownloader* b =
            queue.AddDownload(TDownloadQueue::WorkerClass<TTextDownloader>(),
                              m_http->URL(QStringLiteral("/cookie/get")), {}, 0, nullptr, nullptr);
        QVERIFY(a->CookieStore() && b->CookieStore());
        QVERIFY(a->CookieStore() != b->CookieStore());
        QVERIFY(a->Downloader() != b->Downloader());
        queue.MaxThreads = 1;
        queue.Start();
        queue.WaitFor();
        QCOMPARE(m_http->RequestsFor("/cookie/get").value(0).Headers.value("cookie"), QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestDownloadQueue)
#include "tst_downloadqueue.moc"
