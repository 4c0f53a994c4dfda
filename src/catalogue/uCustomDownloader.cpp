#include "uCustomDownloader.h"

#include "uZTLog.h"

#include <QCoreApplication>
#include <QNetworkCookieJar>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace {

// Hands result messages to their receivers on the main thread. Every worker posts here, so the
// messages keep the order of posting, and a receiver is looked at only on its own thread.
class TMessageRelay : public QObject
{
public:
    bool event(QEvent* e) override
    {
        HandOverAcquire(e);
        if (auto* message = dynamic_cast<TRelayedMessage*>(e)) {
            if (QObject* receiver = message->Receiver.data())
                QCoreApplication::sendEvent(receiver, message->Message.get());
            return true;
        }
        return QObject::event(e);
    }

    class TRelayedMessage : public QEvent
    {
    public:
        TRelayedMessage(const QPointer<QObject>& receiver, std::unique_ptr<TPostedMessage> message)
            : QEvent(message->type()), Receiver(receiver), Message(std::move(message))
        {}
        QPointer<QObject> Receiver;
        std::unique_ptr<TPostedMessage> Message;
    };
};

TMessageRelay* Relay()
{
    // Made on first use and handed to the main thread at once; lives as long as the process.
    static TMessageRelay* const relay = [] {
        auto* object = new TMessageRelay;
        if (QCoreApplication::instance())
            object->moveToThread(QCoreApplication::instance()->thread());
        return object;
    }();
    return relay;
}

} // namespace

// ---- Messages --------------------------------------------------------------------------------------

QEvent::Type TPostedMessage::EventType(quint32 msg)
{
    return static_cast<QEvent::Type>(QEvent::User + static_cast<int>(msg));
}

TPostedMessage::TPostedMessage(quint32 msg, const QVariant& wParam, std::unique_ptr<TMessageObj> lParam)
    : QEvent(EventType(msg)), m_msg(msg), m_wParam(wParam), m_lParam(std::move(lParam))
{}

TPostedMessage::~TPostedMessage() = default;

void PostResultMessage(const QPointer<QObject>& receiver, quint32 msg, const QVariant& wParam,
                       std::unique_ptr<TMessageObj> lParam)
{
    auto message = std::make_unique<TPostedMessage>(msg, wParam, std::move(lParam));
    auto* event = new TMessageRelay::TRelayedMessage(receiver, std::move(message));
    HandOverRelease(event);
    QCoreApplication::postEvent(Relay(), event);
}

// ---- TCustomDownloader -----------------------------------------------------------------------------

TCustomDownloader::TCustomDownloader()
    : m_cookieStore(CookieManagerClass().Create()),
      m_downloader(DownloaderClass().Create(m_cookieStore.get()))
{
    Relay();
    FreeOnTerminate = true;
}

TCustomDownloader::~TCustomDownloader()
{
    // Only an owner other than the worker itself meets it still running.
    if (isRunning()) {
        Terminate();
        WaitForEnd();
    }
    // Subscribers that were not posted die with the worker (m_subscribers owns them).
}

void TCustomDownloader::AddSubscriber(std::unique_ptr<TMessageObj> subscriber)
{
    QMutexLocker lock(&m_subscribersLock);
    m_subscribers.push_back(std::move(subscriber));
}

int TCustomDownloader::SubscriberCount() const
{
    QMutexLocker lock(&m_subscribersLock);
    return static_cast<int>(m_subscribers.size());
}

void TCustomDownloader::Execute()
{
    m_working = true;
    auto idle = qScopeGuard([this] { m_working = false; });
    DoTheWork();
    if (Delay > 0)
        QThread::msleep(static_cast<unsigned long>(Delay));
}

void TCustomDownloader::TerminatedSet()
{
    LogText(u"TCustomDownloader.Terminate()"_s);
    if (m_downloader)
        m_downloader->Abort();
}

void TCustomDownloader::Notify(const QVariant& result)
{
    const QPointer<QObject> window = Window;
    if (window.isNull() || Msg == 0)
        return;
    std::vector<std::unique_ptr<TMessageObj>> subscribers;
    {
        QMutexLocker lock(&m_subscribersLock);
        subscribers.swap(m_subscribers);
    }
    m_posted = true;
    for (std::unique_ptr<TMessageObj>& subscriber : subscribers)
        PostResultMessage(window, Msg, result, std::move(subscriber));
}

void TCustomDownloader::PostNewStatus(qint32 panel, const QString& text)
{
    if (!OnStatus || Terminated())
        return;
    Synchronize([this, panel, &text] { OnStatus(this, panel, text); });
}
