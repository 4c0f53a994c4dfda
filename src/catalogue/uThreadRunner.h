#pragma once

#include <QList>
#include <QMutex>
#include <QThread>

#include <atomic>
#include <functional>
#include <unordered_map>

class TThread;
class TThreadRunner;

// Happens-before marks for ThreadSanitizer at hand-overs between threads that go through Qt's own
// locks (posted events, blocking calls, the end of a thread), which the sanitizer does not see.
#if defined(__SANITIZE_THREAD__)
extern "C" void __tsan_acquire(void* addr);
extern "C" void __tsan_release(void* addr);
inline void HandOverRelease(const void* token)
{
    __tsan_release(const_cast<void*>(token));
}
inline void HandOverAcquire(const void* token)
{
    __tsan_acquire(const_cast<void*>(token));
}
#else
inline void HandOverRelease(const void*) {}
inline void HandOverAcquire(const void*) {}
#endif

// Called on the main thread once a thread has ended, whatever the ending.
using TThreadEvent = std::function<void(TThread* sender)>;
using TNotifyEvent = std::function<void(TThreadRunner* sender)>;

// The thread class of the workers. Made not started on the main thread; Start() runs Execute on
// a thread of its own. Terminate() asks it to stop: a thread asked before it was started never
// enters Execute, but still ends. After the end, on the main thread, OnTerminate is called, and a
// thread with FreeOnTerminate deletes itself.
class TThread : public QThread
{
    Q_OBJECT

public:
    explicit TThread(QObject* parent = nullptr);
    // A thread still running is asked to stop and waited for; blocking calls of it into the main
    // thread are served meanwhile.
    ~TThread() override;

    TThreadEvent OnTerminate;
    bool FreeOnTerminate = false;

    void Start();
    // Asks the thread to stop; callable from any thread, also before Start.
    void Terminate();
    bool Terminated() const { return m_terminated.load(); }
    // Start() was called (main thread).
    bool Started() const { return m_started; }
    // The thread has run out and OnTerminate is due or done (main thread).
    bool Ended() const { return m_ended; }
    // Waits on the main thread for the end of run(), serving the thread's blocking calls.
    void WaitForEnd();

    // Runs fn on the main thread and waits for it. From the main thread it simply runs fn.
    static void Synchronize(const std::function<void()>& fn);
    // The object that the blocking calls of all threads are queued to.
    static QObject* SyncTarget();
    // Runs the blocking calls that workers are waiting for (main thread).
    static void CheckSynchronize();

protected:
    virtual void Execute() = 0;
    // Notification that a stop was requested; runs on the thread that called Terminate().
    virtual void TerminatedSet() {}

private:
    void run() final;
    void HandleEnd();

    std::atomic<bool> m_terminated = false;
    bool m_started = false;
    bool m_ended = false;
};

// A thread-safe list of threads in the order of adding.
class TThreadList
{
public:
    QList<TThread*>& LockList();
    void UnlockList();
    void Add(TThread* thread);
    void Remove(TThread* thread);
    qsizetype Count();

private:
    QMutex m_lock;
    QList<TThread*> m_list;
};

// Runs the added threads, at most MaxThreads at a time, in the order of adding. All operations
// but Count, TerminateAll and what derived classes lock run on the main thread.
class TThreadRunner
{
public:
    TThreadRunner();
    TThreadRunner(const TThreadRunner&) = delete;
    TThreadRunner& operator=(const TThreadRunner&) = delete;
    // Stops and waits for running threads, and frees the threads never started.
    virtual ~TThreadRunner();

    int MaxThreads = 1;
    TNotifyEvent OnDone;  // all threads gone
    TNotifyEvent OnStart; // a batch begins

    bool Finished() const { return m_finished; }
    int RunningThreads() const { return m_runningThreads; }

    // Takes over the thread (it should free itself on termination); its OnTerminate is kept and
    // called first when it ends.
    void Add(TThread* thread);
    // Begins a batch when no thread is running; otherwise new entries are picked up as running
    // threads end.
    void Start();
    virtual void Run();
    int Count();
    // Asks every listed thread to stop, also those not yet started.
    void TerminateAll();
    // Dispatches events until the batch is finished.
    void WaitFor();

protected:
    TThreadList m_threads;

private:
    void ThreadTerminated(TThread* thread);

    bool m_finished = false;
    int m_runningThreads = 0;
    std::unordered_map<TThread*, TThreadEvent> m_savedEvents;
};
