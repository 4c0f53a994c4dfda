#pragma once

#include "uDownloader.h"

#include <QDeadlineTimer>
#include <QMutex>
#include <QNetworkCookie>
#include <QNetworkCookieJar>
#include <QNetworkProxy>

#include <atomic>
#include <functional>
#include <memory>

class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;
class QUrl;

// A cookie store for one downloader: kept in memory only, never shared, never persisted.
class TElCookieManagerWrapper : public QNetworkCookieJar
{
    Q_OBJECT

public:
    explicit TElCookieManagerWrapper(QObject* parent = nullptr);
    // Every cookie held.
    QList<QNetworkCookie> Cookies() const { return allCookies(); }
};

// The downloader over Qt Network. Everything of the client is fixed at construction: TLS with
// certificates not validated, gzip, at most 10 redirections, HTTP/1.1, the user agent, the
// inactivity time-out, the size cap and deadline of a transfer, and the proxy. Each transfer makes
// its own network access manager on the thread that runs it; a local event loop drives it.
//
// Limits: a reply body (after decoding gzip, redirections' bodies counted too) of more than
// MaxReplySize() bytes, a transfer that is not over after TransferDeadline() ms in all, and a reply
// that cannot be decoded (damaged gzip, a gzip bomb) end the transfer with EDownloadError.
class TSBB_Downloader : public TDownloader
{
public:
    // cookieStore may be null (the client then keeps its own, private store); it is not owned and
    // must outlive the downloader.
    explicit TSBB_Downloader(QNetworkCookieJar* cookieStore = nullptr, const TProxySettings& proxy = {});
    ~TSBB_Downloader() override;

    QString GetURL() const override { return m_url; }
    void SetURL(const QString& url) override { m_url = url; }
    QString GetFileName() const override { return m_fileName; }
    void SetFileName(const QString& fileName) override { m_fileName = fileName; }
    TDownloadDoneEvent GetOnDone() const override { return m_onDone; }
    void SetOnDone(const TDownloadDoneEvent& onDone) override { m_onDone = onDone; }
    bool IsBusy() const override { return m_busy.load(); }

    void Abort() override;
    bool DownloadToFile(bool append = false) override;
    bool DownloadToStrings(QStringList& list, qint32 codePage = cCodePageUTF8) override;
    bool DownloadToStream(QIODevice* stream) override;
    bool PostForm(const QString& name, const QString& fileName, const QByteArray& fileData,
                  QStringList& list) override;

    // Inactivity time-out of a transfer in ms; 20000 unless changed (tests shorten it).
    int TransferTimeout() const { return m_transferTimeout; }
    void SetTransferTimeout(int ms) { m_transferTimeout = ms; }
    // Time in ms that a whole transfer, redirections included, may take.
    int TransferDeadline() const { return m_transferDeadline; }
    void SetTransferDeadline(int ms) { m_transferDeadline = ms; }
    // Bytes a reply body may have.
    qint64 MaxReplySize() const { return m_maxReplySize; }
    void SetMaxReplySize(qint64 bytes) { m_maxReplySize = bytes; }
    TProxySettings Proxy() const { return m_proxySettings; }

    // "Orvane [SBB]v<file version> x64"
    static QString UserAgent();
    // The client's proxy for these settings: no proxy unless InetAccess is 2; the port only when
    // in 1..65535 (else cDefaultProxyPort); user and password only with a user name.
    static QNetworkProxy MakeProxy(const TProxySettings& settings);
    static constexpr quint16 cDefaultProxyPort = 3128;
    static constexpr int cDefaultTransferTimeout = 20000;
    // A catalogue reply is some kilobytes, a large picture some megabytes.
    static constexpr int cDefaultTransferDeadline = 60000;
    static constexpr qint64 cDefaultMaxReplySize = 64 * 1024 * 1024;
    static constexpr int cMaxRedirects = 10;

private:
    struct TResult
    {
        int Status = 0; // 0 when the transfer was aborted
        QString ContentType;
        qint64 Size = 0;
    };
    using TSend = std::function<QNetworkReply*(QNetworkAccessManager& manager, QNetworkRequest& request)>;
    // One transfer into sink, following up to cMaxRedirects redirections; raises EDownloadError on
    // failures of the client. It is a POST by send when forcePost is set, a POST of PostData when
    // that is not empty, else a GET.
    TResult Perform(QIODevice& sink, const TSend& send = {}, bool forcePost = false);
    // Runs one reply to its end, writing its body to sink unless it is a redirection to follow.
    // True when it was aborted; raises when the reply outgrows the size cap or the deadline passes.
    bool RunReply(QNetworkReply* reply, QIODevice& sink, bool followRedirect, qint64& size,
                  const QDeadlineTimer& deadline);
    QNetworkRequest MakeRequest(const QUrl& url) const;
    // Calls OnDone or OnError for a finished transfer.
    bool Report(const TResult& result, QIODevice* stream, const QString& errorText);

    QString m_url;
    QString m_fileName;
    TDownloadDoneEvent m_onDone;
    TProxySettings m_proxySettings;
    int m_transferTimeout = cDefaultTransferTimeout;
    int m_transferDeadline = cDefaultTransferDeadline;
    qint64 m_maxReplySize = cDefaultMaxReplySize;
    QNetworkCookieJar* m_cookieStore = nullptr;

    std::atomic<bool> m_busy = false;
    // Guards the hand-over of a running reply to Abort.
    mutable QMutex m_abortLock;
    bool m_abortRequested = false;
    QNetworkReply* m_activeReply = nullptr;
};
