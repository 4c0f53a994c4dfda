#pragma once

#include "uDownloader.h"
#include "uThreadRunner.h"

#include <QEvent>
#include <QMutex>
#include <QPointer>
#include <QVariant>

#include <atomic>
#include <memory>
#include <vector>

class TCustomDownloader;

// Numbers of the result messages, counted from the first user message (1024).
inline constexpr quint32 cFirstUserMessage = 1024;
inline constexpr quint32 cMsgSearchReply = 1026;  // wParam: QStringList; lParam: the tab's object
inline constexpr quint32 cMsgThumbnail = 1028;    // wParam: QImage; lParam: the thumbnail's object
inline constexpr quint32 cMsgLargePicture = 1029; // wParam: QImage; lParam: the picture's object
// The status bar panel that workers report to.
inline constexpr qint32 cDownloadStatusPanel = 2;

// Base of the objects that travel with a result message (its lParam). Whoever holds the message
// owns it; a receiver takes it over with TPostedMessage::TakeLParam().
class TMessageObj
{
public:
    virtual ~TMessageObj() = default;
};

// A result message: posted by a worker, delivered on the main thread to the receiver by
// QCoreApplication::sendEvent in the order of posting. The message owns its wParam and lParam;
// what the receiver does not take dies with the message, also when the receiver has gone.
class TPostedMessage : public QEvent
{
public:
    // The event type of message number msg (QEvent::User + msg).
    static QEvent::Type EventType(quint32 msg);

    TPostedMessage(quint32 msg, const QVariant& wParam, std::unique_ptr<TMessageObj> lParam);
    ~TPostedMessage() override;

    quint32 Msg() const { return m_msg; }
    const QVariant& WParam() const { return m_wParam; }
    QVariant TakeWParam() { return std::exchange(m_wParam, QVariant()); }
    TMessageObj* LParam() const { return m_lParam.get(); }
    std::unique_ptr<TMessageObj> TakeLParam() { return std::move(m_lParam); }

private:
    quint32 m_msg = 0;
    QVariant m_wParam;
    std::unique_ptr<TMessageObj> m_lParam;
};

// Posts a result message to receiver from any thread. A receiver that is null or has gone by the
// time of delivery gets nothing, and the message frees what it carries.
void PostResultMessage(const QPointer<QObject>& receiver, quint32 msg, const QVariant& wParam,
                       std::unique_ptr<TMessageObj> lParam);

// (sender, panel, text), called on the main thread.
using TDownloadStatusEvent =
    std::function<void(TCustomDownloader* sender, qint32 panel, const QString& text)>;

// A worker for one transfer: made not started on the main thread, frees itself when it has ended.
// It owns its cookie store and its downloader. Results leave it as posted messages, one per
// subscriber; status goes to the main thread by a blocking call.
class TCustomDownloader : public TThread
{
    Q_OBJECT

public:
    TCustomDownloader();
    ~TCustomDownloader() override;

    // Set on the main thread before the worker starts.
    TDownloadStatusEvent OnStatus;
    QPointer<QObject> Window; // where results are posted; none: nothing is posted
    quint32 Msg = 0;          // results are posted only when above 0
    qint32 Delay = 0;         // pause in ms after the work
    QString URL;
    QString PostData;

    // Appends a request served by this transfer; callable while the worker runs. Those that arrive
    // after the results were posted get nothing, and die with the worker.
    void AddSubscriber(std::unique_ptr<TMessageObj> subscriber);
    int SubscriberCount() const;
    // True once results were posted; the receivers then own the subscribers.
    bool Posted() const { return m_posted.load(); }
    // True while Execute runs.
    bool Working() const { return m_working.load(); }
    TDownloader* Downloader() const { return m_downloader.get(); }
    QNetworkCookieJar* CookieStore() const { return m_cookieStore.get(); }

protected:
    void Execute() override;
    // Aborts the transfer. An Abort that falls before the transfer has begun ends it as soon as it
    // begins, so a stop is never lost between a check and the transfer.
    void TerminatedSet() override;
    virtual void DoTheWork() = 0;

    // Posts a copy of result to Window for each subscriber, in order, when Window is set and Msg
    // is above 0.
    void Notify(const QVariant& result);
    // Calls OnStatus on the main thread and waits for it, unless a stop was requested.
    void PostNewStatus(qint32 panel, const QString& text);

private:
    std::unique_ptr<QNetworkCookieJar> m_cookieStore;
    std::unique_ptr<TDownloader> m_downloader; // after the store: it is freed before it
    mutable QMutex m_subscribersLock;
    std::vector<std::unique_ptr<TMessageObj>> m_subscribers;
    std::atomic<bool> m_posted = false;
    std::atomic<bool> m_working = false;
};
