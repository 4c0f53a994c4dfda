#include "uThreadRunner.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QPointer>

// ---- TThread ---------------------------------------------------------------------------------------

TThread::TThread(QObject* parent) : QThread(parent)
{
    SyncTarget();
    // finished is emitted on the thread itself; the end is handled on the main thread, in the order
    // of the thread's earlier posts.
    connect(
        this, &QThread::finished, QCoreApplication::instance(),
        [self = QPointer<TThread>(this)] {
            if (self)
                self->HandleEnd();
        },
        Qt::QueuedConnection);
}

TThread::~TThread()
{
    if (isRunning()) {
        Terminate();
        WaitForEnd();
    }
}

void TThread::Start()
{
    m_started = true;
    start();
}

void TThread::Terminate()
{
    m_terminated = true;
    requestInterruption();
    TerminatedSet();
}

void TThread::WaitForEnd()
{
    while (!wait(QDeadlineTimer(5)))
        CheckSynchronize();
    HandOverAcquire(this);
}

void TThread::run()
{
    if (!Terminated()) {
        try {
            Execute();
        } catch (...) {
            // An error ends the thread; the worker reports nothing.
        }
    }
    HandOverRelease(this);
}

void TThread::HandleEnd()
{
    wait();
    HandOverAcquire(this);
    m_ended = true;
    if (OnTerminate) {
        const TThreadEvent handler = OnTerminate;
        handler(this);
    }
    if (FreeOnTerminate)
        delete this;
}

QObject* TThread::SyncTarget()
{
    // Made on first use, from whatever thread, and handed to the main thread at once. It lives as
    // long as the process.
    static QObject* const target = [] {
        auto* object = new QObject;
        if (QCoreApplication::instance())
            object->moveToThread(QCoreApplication::instance()->thread());
        return object;
    }();
    return target;
}

void TThread::Synchronize(const std::function<void()>& fn)
{
    QObject* target = SyncTarget();
    if (QThread::currentThread() == target->thread()) {
        fn();
        return;
    }
    const char token = 0;
    HandOverRelease(&token);
    QMetaObject::invokeMethod(
        target,
        [&fn, &token] {
            HandOverAcquire(&token);
            fn();
            HandOverRelease(&token);
        },
        Qt::BlockingQueuedConnection);
    HandOverAcquire(&token);
}

void TThread::CheckSynchronize()
{
    QCoreApplication::sendPostedEvents(SyncTarget(), QEvent::MetaCall);
}

// ---- TThreadList -----------------------------------------------------------------------------------

QList<TThread*>& TThreadList::LockList()
{
    m_lock.lock();
    return m_list;
}

void TThreadList::UnlockList()
{
    m_lock.unlock();
}

void TThreadList::Add(TThread* thread)
{
    QMutexLocker lock(&m_lock);
    m_list.append(thread);
}

void TThreadList::Remove(TThread* thread)
{
    QMutexLocker lock(&m_lock);
    m_list.removeOne(thread);
}

qsizetype TThreadList::Count()
{
    QMutexLocker lock(&m_lock);
    return m_list.size();
}

// ---- TThreadRunner ---------------------------------------------------------------------------------

TThreadRunner::TThreadRunner() = default;

TThreadRunner::~TThreadRunner()
{
    if (m_runningThreads > 0) {
        TerminateAll();
        WaitFor();
    }
    // What was never started is still ours.
    QList<TThread*> rest;
    {
        QList<TThread*>& list = m_threads.LockList();
        rest.swap(list);
        m_threads.UnlockList();
    }
    for (TThread* thread : std::as_const(rest)) {
        if (thread->isRunning())
            continue; // cannot happen: every started thread was waited for
        thread->OnTerminate = nullptr;
        delete thread;
    }
}

void TThreadRunner::Add(TThread* thread)
{
    m_savedEvents[thread] = thread->OnTerminate;
    thread->OnTerminate = [this](TThread* sender) { ThreadTerminated(sender); };
    m_threads.Add(thread);
}

void TThreadRunner::Start()
{
    if (m_runningThreads != 0)
        return;
    m_finished = false;
    if (OnStart)
        OnStart(this);
    Run();
}

void TThreadRunner::Run()
{
    bool empty = false;
    {
        QList<TThread*>& list = m_threads.LockList();
        for (TThread* thread : std::as_const(list)) {
            if (m_runningThreads >= MaxThreads)
                break;
            if (!thread->Started() && !thread->Ended()) {
                thread->Start();
                ++m_runningThreads;
            }
        }
        empty = list.isEmpty();
        m_threads.UnlockList();
    }
    if (empty) {
        m_finished = true;
        if (OnDone)
            OnDone(this);
    }
}

int TThreadRunner::Count()
{
    return static_cast<int>(m_threads.Count());
}

void TThreadRunner::TerminateAll()
{
    QList<TThread*>& list = m_threads.LockList();
    for (TThread* thread : std::as_const(list))
        thread->Terminate();
    m_threads.UnlockList();
}

void TThreadRunner::WaitFor()
{
    while (!m_finished && m_runningThreads > 0) {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        if (!m_finished && m_runningThreads > 0)
            QThread::msleep(1);
    }
}

void TThreadRunner::ThreadTerminated(TThread* thread)
{
    TThreadEvent saved;
    if (auto it = m_savedEvents.find(thread); it != m_savedEvents.end()) {
        saved = it->second;
        m_savedEvents.erase(it);
    }
    if (saved)
        saved(thread);
    m_threads.Remove(thread);
    if (m_runningThreads > 0)
        --m_runningThreads;
    Run();
}
