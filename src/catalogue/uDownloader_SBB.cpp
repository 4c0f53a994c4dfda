#include "uDownloader_SBB.h"

#include "uZTTypes.h"

#include <QBuffer>
#include <QEventLoop>
#include <QFile>
#include <QHttpMultiPart>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QScopeGuard>
#include <QSslConfiguration>
#include <QSslError>
#include <QTimer>

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;

namespace {

const auto cDefaultPostContentType = "application/x-www-form-urlencoded"_ba;

// Errors after which the reply still carries a final HTTP status that is the transfer's result.
bool IsHttpOutcome(QNetworkReply::NetworkError error, int status)
{
    switch (error) {
    case QNetworkReply::NoError:
    case QNetworkReply::TooManyRedirectsError:
    case QNetworkReply::InsecureRedirectError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
        return true;
    default:
        // Content (201-299) and server (401-499) errors stand for an error status of the server.
        // With any other status they are the client's own: a body that cannot be decompressed
        // comes as UnknownContentError on a 200.
        return status >= 400 &&
               ((error >= QNetworkReply::ContentAccessDenied &&
                 error <= QNetworkReply::UnknownContentError) ||
                (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError));
    }
}

bool IsRedirect(const QNetworkReply* reply)
{
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    return (status == 301 || status == 302 || status == 303 || status == 307 || status == 308) &&
           reply->attribute(QNetworkRequest::RedirectionTargetAttribute).isValid();
}

} // namespace

TElCookieManagerWrapper::TElCookieManagerWrapper(QObject* parent) : QNetworkCookieJar(parent) {}

TSBB_Downloader::TSBB_Downloader(QNetworkCookieJar* cookieStore, const TProxySettings& proxy)
    : m_proxySettings(proxy), m_cookieStore(cookieStore)
{}

TSBB_Downloader::~TSBB_Downloader()
{
    Abort();
}

QString TSBB_Downloader::UserAgent()
{
    return u"Orvane [SBB]v"_s + GetFileVersionText() + u" x64"_s;
}

QNetworkProxy TSBB_Downloader::MakeProxy(const TProxySettings& settings)
{
    if (!settings.UsesProxy())
        return QNetworkProxy(QNetworkProxy::NoProxy);
    QNetworkProxy proxy(QNetworkProxy::HttpProxy, settings.Host);
    proxy.setPort(settings.Port >= 1 && settings.Port <= 65535 ? static_cast<quint16>(settings.Port)
                                                               : cDefaultProxyPort);
    if (!settings.Username.isEmpty()) {
        proxy.setUser(settings.Username);
        proxy.setPassword(settings.Password);
    }
    return proxy;
}

void TSBB_Downloader::Abort()
{
    QMutexLocker lock(&m_abortLock);
    m_abortRequested = true;
    if (m_activeReply)
        QMetaObject::invokeMethod(m_activeReply, &QNetworkReply::abort, Qt::QueuedConnection);
}

QNetworkRequest TSBB_Downloader::MakeRequest(const QUrl& url) const
{
    QNetworkRequest request(url);
    QSslConfiguration ssl = QSslConfiguration::defaultConfiguration();
    ssl.setPeerVerifyMode(QSslSocket::VerifyNone);
    request.setSslConfiguration(ssl);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // Redirections are followed here, so that https may lead to http as well.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(m_transferTimeout);
    request.setHeader(QNetworkRequest::UserAgentHeader, UserAgent());
    return request;
}

bool TSBB_Downloader::RunReply(QNetworkReply* reply, QIODevice& sink, bool followRedirect, qint64& size,
                               const QDeadlineTimer& deadline)
{
    bool writeFailed = false;
    bool tooLarge = false;
    qint64 received = 0;
    QObject::connect(reply, &QNetworkReply::sslErrors, reply,
                     [reply](const QList<QSslError>&) { reply->ignoreSslErrors(); });
    auto drain = [&, reply, followRedirect] {
        const QByteArray chunk = reply->readAll();
        if (chunk.isEmpty() || writeFailed || tooLarge)
            return;
        received += chunk.size();
        if (received > m_maxReplySize) {
            tooLarge = true;
            reply->abort();
            return;
        }
        // The body of a redirection that is followed is not part of the result.
        if (followRedirect && IsRedirect(reply))
            return;
        if (sink.write(chunk) != chunk.size()) {
            writeFailed = true;
            reply->abort();
            return;
        }
        size += chunk.size();
    };
    QObject::connect(reply, &QNetworkReply::readyRead, reply, drain);

    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    // The deadline of the whole transfer; the inactivity time-out of the request works beside it.
    bool late = false;
    QTimer clock;
    clock.setSingleShot(true);
    QObject::connect(&clock, &QTimer::timeout, reply, [&late, reply] {
        late = true;
        reply->abort();
    });
    bool abortNow = false;
    {
        QMutexLocker lock(&m_abortLock);
        abortNow = m_abortRequested;
        m_activeReply = reply;
    }
    // The reply must be out of Abort's reach before it is freed.
    auto unpublish = qScopeGuard([this] {
        QMutexLocker lock(&m_abortLock);
        m_activeReply = nullptr;
    });
    if (abortNow)
        reply->abort();
    if (!reply->isFinished()) {
        clock.start(std::chrono::milliseconds(std::max<qint64>(0, deadline.remainingTime())));
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        clock.stop();
    }
    if (reply->isOpen())
        drain();
    if (writeFailed)
        throw EDownloadError(sink.errorString(), QNetworkReply::UnknownContentError);
    if (tooLarge)
        throw EDownloadError(u"The reply is larger than %1 bytes"_s.arg(m_maxReplySize),
                             QNetworkReply::UnknownContentError);
    if (late)
        throw EDownloadError(u"The transfer took longer than %1 ms"_s.arg(m_transferDeadline),
                             QNetworkReply::TimeoutError);
    QMutexLocker lock(&m_abortLock);
    return m_abortRequested && reply->error() == QNetworkReply::OperationCanceledError;
}

TSBB_Downloader::TResult TSBB_Downloader::Perform(QIODevice& sink, const TSend& send, bool forcePost)
{
    m_busy = true;
    // Busy and a pending abort end with the transfer, on every path.
    auto idle = qScopeGuard([this] {
        QMutexLocker lock(&m_abortLock);
        m_abortRequested = false;
        m_busy = false;
    });

    QNetworkAccessManager manager;
    manager.setAutoDeleteReplies(false);
    manager.setProxy(MakeProxy(m_proxySettings));
    if (m_cookieStore)
        manager.setCookieJar(m_cookieStore);
    // The store belongs to the downloader's owner, not to this transfer's manager.
    auto keepStore = qScopeGuard([this, &manager] {
        if (m_cookieStore && m_cookieStore->parent() == &manager)
            m_cookieStore->setParent(nullptr);
    });

    const QDeadlineTimer deadline(m_transferDeadline);
    QUrl url(m_url);
    bool post = forcePost || !PostData.isEmpty();
    qint64 size = 0;
    for (int redirects = 0;; ++redirects) {
        QNetworkRequest request = MakeRequest(url);
        QNetworkReply* sent = nullptr;
        if (send && post) {
            sent = send(manager, request);
        } else if (post) {
            request.setHeader(QNetworkRequest::ContentTypeHeader,
                              ContentType.isEmpty() ? cDefaultPostContentType : ContentType.toUtf8());
            sent = manager.post(request, PostData.toUtf8());
        } else {
            sent = manager.get(request);
        }
        const std::unique_ptr<QNetworkReply> reply(sent);
        const bool followRedirect = redirects < cMaxRedirects;
        if (RunReply(reply.get(), sink, followRedirect, size, deadline))
            return {};

        const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        if (!status.isValid() || !IsHttpOutcome(reply->error(), status.toInt()))
            throw EDownloadError(reply->errorString(), reply->error());
        if (followRedirect && IsRedirect(reply.get())) {
            url =
                reply->url().resolved(reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl());
            // 301, 302 and 303 go on with a GET; 307 and 308 repeat the request.
            const int code = status.toInt();
            if (code != 307 && code != 308)
                post = false;
            continue;
        }
        return {status.toInt(), reply->header(QNetworkRequest::ContentTypeHeader).toString(), size};
    }
}

bool TSBB_Downloader::Report(const TResult& result, QIODevice* stream, const QString& errorText)
{
    if (result.Status == 200) {
        if (m_onDone)
            m_onDone(this, result.ContentType, static_cast<qint32>(result.Size), stream);
        return true;
    }
    if (result.Status != 0 && OnError)
        OnError(this, cDownloadErrorKind, result.Status, errorText);
    return false;
}

bool TSBB_Downloader::DownloadToFile(bool)
{
    QFile file(m_fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw EDownloadError(file.errorString(), QNetworkReply::UnknownContentError);
    const TResult result = Perform(file);
    file.flush();
    return Report(result, &file, {});
}

bool TSBB_Downloader::DownloadToStrings(QStringList& list, qint32 codePage)
{
    list.clear();
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    const TResult result = Perform(buffer);
    buffer.seek(0);
    const QString text = DecodeCodePage(buffer.data(), codePage);
    list = TextToLines(text);
    return Report(result, &buffer, text);
}

bool TSBB_Downloader::DownloadToStream(QIODevice* stream)
{
    Q_ASSERT(stream);
    return Report(Perform(*stream), stream, {});
}

bool TSBB_Downloader::PostForm(const QString& name, const QString& fileName, const QByteArray& fileData,
                               QStringList& list)
{
    list.clear();
    QHttpMultiPart form(QHttpMultiPart::FormDataType);
    QHttpPart part;
    QString quotedName = name;
    QString quotedFile = fileName;
    quotedName.replace(u'"', u"%22"_s);
    quotedFile.replace(u'"', u"%22"_s);
    part.setHeader(QNetworkRequest::ContentDispositionHeader,
                   QString(u"form-data; name=\""_s + quotedName + u"\"; filename=\""_s + quotedFile + u'"'));
    part.setHeader(QNetworkRequest::ContentTypeHeader, "application/octet-stream"_ba);
    part.setBody(fileData);
    form.append(part);

    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    const TResult result = Perform(
        buffer,
        [&form](QNetworkAccessManager& manager, QNetworkRequest& request) {
            return manager.post(request, &form);
        },
        true);
    const QString text = QString::fromUtf8(buffer.data());
    list = TextToLines(text);
    return Report(result, &buffer, text);
}
