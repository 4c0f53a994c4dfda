#include "uDownloadQueue.h"

#include "uZTLog.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QBuffer>

#include <stdexcept>

using namespace Qt::StringLiterals;

// ---- TTextDownloader -------------------------------------------------------------------------------

void TTextDownloader::DoTheWork()
{
    QString result;
    DownloadText(result, URL);
}

void TTextDownloader::DownloadText(QString& result, const QString& url)
{
    result.clear();
    TDownloader* downloader = Downloader();
    downloader->SetURL(url);
    downloader->PostData = PostData;
    LogFormat(u"Downloading %s ..."_s, {url});
    PostNewStatus(cDownloadStatusPanel, GetText(u"cSDownloadingData"_s));

    QBuffer stream;
    stream.open(QIODevice::ReadWrite);
    if (!downloader->DownloadToStream(&stream) || Terminated())
        return;
    const QStringList list = TextToLines(DecodeCodePage(stream.data(), cCodePageUTF8));
    if (Terminated())
        return;
    result = list.isEmpty() ? QString() : list.join(u'\n') + u'\n';
    Notify(QVariant(list));
    CallOnText(list);
}

void TTextDownloader::CallOnText(const QStringList& list)
{
    if (OnText)
        Synchronize([this, &list] { OnText(this, list); });
}

// ---- TPictureDownloader ----------------------------------------------------------------------------

namespace {

// Receivers that ask a picture result for a QImage get the image part.
const bool DownloadedImageConverter = QMetaType::registerConverter<TDownloadedImage, QImage>(
    [](const TDownloadedImage& result) { return result.Image; });

} // namespace

TPictureDownloader::TPictureDownloader()
{
    Q_UNUSED(DownloadedImageConverter);
}

void TPictureDownloader::DoTheWork()
{
    DownloadImage(URL);
}

QImage TPictureDownloader::DownloadImage(const QString& url)
{
    QString status = GetText(u"cSDownloadImageFmt"_s);
    try {
        status = FormatText(status, {url});
    } catch (const std::invalid_argument&) {
        // A language text with other placeholders is shown as it stands.
    }
    PostNewStatus(cDownloadStatusPanel, status);
    LogText(u"TPictureDownloader.DownloadImage()"_s);
    TDownloader* downloader = Downloader();
    downloader->SetURL(url);
    downloader->PostData = PostData;
    LogFormat(u"Downloading image %s ..."_s, {url});

    QBuffer stream;
    stream.open(QIODevice::ReadWrite);
    if (!downloader->DownloadToStream(&stream) || Terminated())
        return {};
    QImage image;
    if (!image.loadFromData(stream.data()))
        return {};
    Notify(QVariant::fromValue(TDownloadedImage{image, stream.data()}));
    return image;
}

// ---- TDownloadQueue --------------------------------------------------------------------------------

TDownloadQueue::TDownloadQueue() = default;

TDownloadQueue::~TDownloadQueue()
{
    // Stop here, while the handlers that the workers call are still whole.
    if (RunningThreads() > 0) {
        TerminateAll();
        WaitFor();
    }
}

TCustomDownloader* TDownloadQueue::Find(const QString& url)
{
    TCustomDownloader* found = nullptr;
    QList<TThread*>& list = m_threads.LockList();
    for (TThread* thread : std::as_const(list)) {
        auto* worker = qobject_cast<TCustomDownloader*>(thread);
        if (worker && worker->URL == url) {
            found = worker;
            break;
        }
    }
    m_threads.UnlockList();
    return found;
}

TCustomDownloader* TDownloadQueue::AddDownload(const TWorkerClass& workerClass, const QString& url,
                                               const QString& postData, quint32 msg, QObject* window,
                                               std::unique_ptr<TMessageObj> subscriber)
{
    if (TCustomDownloader* worker = Find(url)) {
        worker->AddSubscriber(std::move(subscriber));
        return worker;
    }
    std::unique_ptr<TCustomDownloader> worker = workerClass();
    worker->Msg = msg;
    worker->Window = window;
    worker->URL = url;
    worker->PostData = postData;
    worker->OnStatus = OnStatus;
    worker->OnTerminate = [this](TThread* sender) { WorkerEnded(sender); };
    worker->AddSubscriber(std::move(subscriber));
    TCustomDownloader* added = worker.release(); // frees itself once ended, or with the runner
    Add(added);
    return added;
}

void TDownloadQueue::WorkerEnded(TThread* worker)
{
    if (worker->Terminated() || !OnProgress)
        return;
    const qint32 left = Count();
    const qint32 running = RunningThreads();
    OnProgress(this, left - running, running, left);
}
