#pragma once

#include "uCustomDownloader.h"
#include "uThreadRunner.h"

#include <QImage>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>

class TTextDownloader;
class TDownloadQueue;

// (sender, list): the list belongs to the worker and dies right after the call.
using TTextEvent = std::function<void(TTextDownloader* sender, const QStringList& list)>;
// (sender, done, running, left)
using TProgressEvent = std::function<void(TDownloadQueue* sender, qint32 done, qint32 running, qint32 left)>;

// Fetches URL as UTF-8 text; posts a QStringList per subscriber and calls OnText.
class TTextDownloader : public TCustomDownloader
{
    Q_OBJECT

public:
    TTextDownloader() = default;

    // Called on the main thread (a blocking call) after the results were posted.
    TTextEvent OnText;

protected:
    void DoTheWork() override;
    // Fetches url; result is the text, empty on failure or after a stop.
    void DownloadText(QString& result, const QString& url);
    // Hands list to OnText on the main thread and waits for it.
    void CallOnText(const QStringList& list);
};

// The result of a picture download: the image, decoded on the worker, and the bytes it was decoded
// from, so that a receiver can keep the picture exactly as the server sent it. A QVariant holding
// one also converts to its QImage (value<QImage>()).
struct TDownloadedImage
{
    QImage Image;
    QByteArray Encoded;
};

// Fetches URL as an image; posts a TDownloadedImage per subscriber.
class TPictureDownloader : public TCustomDownloader
{
    Q_OBJECT

public:
    TPictureDownloader();

protected:
    void DoTheWork() override;
    // The decoded image (format from the data), or a null image on failure or after a stop.
    QImage DownloadImage(const QString& url);
};

// The scheduler of the add dialog: at most MaxThreads workers at a time, in the order of adding,
// and one transfer for all requests of one URL.
class TDownloadQueue : public TThreadRunner
{
public:
    using TWorkerClass = std::function<std::unique_ptr<TCustomDownloader>()>;
    template <class T> static TWorkerClass WorkerClass()
    {
        return [] { return std::make_unique<T>(); };
    }

    TDownloadQueue();
    ~TDownloadQueue() override;

    QPointer<QObject> Window;
    TDownloadStatusEvent OnStatus; // handed to every worker
    TProgressEvent OnProgress;     // after each worker that ends without a stop

    // The first worker, waiting or running, whose URL equals url (case-sensitive).
    TCustomDownloader* Find(const QString& url);
    // Adds subscriber to the worker for url when there is one (its other arguments are then
    // dropped); else makes a worker of workerClass for it and adds it. Nothing starts before Start.
    // Returns the worker that serves the request.
    TCustomDownloader* AddDownload(const TWorkerClass& workerClass, const QString& url,
                                   const QString& postData, quint32 msg, QObject* window,
                                   std::unique_ptr<TMessageObj> subscriber);

private:
    void WorkerEnded(TThread* worker);
};
