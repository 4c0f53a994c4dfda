#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <stdexcept>

class QIODevice;
class QNetworkCookieJar;
class TDownloader;

// The transport of every transfer of the program: a synchronous HTTP(S) download that does one
// transfer at a time on the thread that calls it. The rest of the program makes downloaders and
// cookie stores only through DownloaderClass() and CookieManagerClass(), and so names neither
// the implementation nor the HTTP client.

// Value of Inet.InetAccess that routes transfers through the proxy; any other value is direct.
inline constexpr int cInetAccessUseProxy = 2;
// The kind that OnError always reports.
inline constexpr qint32 cDownloadErrorKind = 2;
// Code pages understood by DownloadToStrings.
inline constexpr qint32 cCodePageSystem = 0;
inline constexpr qint32 cCodePageUTF16LE = 1200;
inline constexpr qint32 cCodePageUTF16BE = 1201;
inline constexpr qint32 cCodePageWindows1252 = 1252;
inline constexpr qint32 cCodePageLatin1 = 28591;
inline constexpr qint32 cCodePageUTF8 = 65001;

// The proxy part of the settings, taken as a value when a downloader is made, so that a change
// of the options takes effect with the next downloader.
struct TProxySettings
{
    int InetAccess = 0; // Inet.InetAccess
    QString Host;       // Inet.ProxyHost
    int Port = 0;       // Inet.ProxyPort; outside 1..65535 the client's default port is used
    QString Username;   // Inet.ProxyUsername; credentials are sent only when it is not empty
    QString Password;   // Inet.ProxyPassword

    bool UsesProxy() const { return InetAccess == cInetAccessUseProxy; }
    bool operator==(const TProxySettings&) const = default;
};

// A failure of the HTTP client itself: no connection, time-out, TLS failure, name resolution,
// a connection lost in the middle of a body.
class EDownloadError : public std::runtime_error
{
public:
    EDownloadError(const QString& message, int clientError);
    QString Message() const { return m_message; }
    // The client's own error code (QNetworkReply::NetworkError).
    int ClientError() const { return m_clientError; }

private:
    QString m_message;
    int m_clientError = 0;
};

// Called after a transfer whose final status is not 200. kind is always cDownloadErrorKind; text
// is the received body for DownloadToStrings and empty otherwise.
using TDownloadErrorEvent =
    std::function<void(TDownloader* sender, qint32 kind, qint32 status, const QString& text)>;
// Called after a transfer with status 200.
using TDownloadDoneEvent =
    std::function<void(TDownloader* sender, const QString& contentType, qint32 size, QIODevice* stream)>;

// The interface of a downloader. All transfers return true exactly when the HTTP status of the
// final response is 200; errors of the client are raised as EDownloadError. An instance belongs to
// the thread that runs its transfers; IsBusy and Abort may be called from any thread.
class TDownloader
{
public:
    TDownloader(const TDownloader&) = delete;
    TDownloader& operator=(const TDownloader&) = delete;
    virtual ~TDownloader() = default;

    TDownloadErrorEvent OnError;
    // When not empty the transfer is a POST of this text (UTF-8), else a GET.
    QString PostData;
    // Content type of the POST; when empty "application/x-www-form-urlencoded" is sent.
    QString ContentType;

    virtual QString GetURL() const = 0;
    virtual void SetURL(const QString& url) = 0;
    virtual QString GetFileName() const = 0;
    virtual void SetFileName(const QString& fileName) = 0;
    virtual TDownloadDoneEvent GetOnDone() const = 0;
    virtual void SetOnDone(const TDownloadDoneEvent& onDone) = 0;
    virtual bool IsBusy() const = 0;

    // Ends the running transfer at once; the transfer then returns false. Callable from any thread.
    // An Abort that arrives while no transfer runs ends the next transfer before it connects.
    virtual void Abort() = 0;
    // Creates FileName anew (the argument is ignored) and writes the body into it.
    virtual bool DownloadToFile(bool append = false) = 0;
    // Makes list from the body decoded with codePage; the body is kept also on failure.
    virtual bool DownloadToStrings(QStringList& list, qint32 codePage = cCodePageUTF8) = 0;
    // Writes the body at the stream's current position.
    virtual bool DownloadToStream(QIODevice* stream) = 0;
    // A multipart web-form POST of one file field; list receives the reply as UTF-8 lines.
    virtual bool PostForm(const QString& name, const QString& fileName, const QByteArray& fileData,
                          QStringList& list) = 0;

protected:
    TDownloader() = default;
};

// What DownloaderClass() hands out: the constructor of the downloader class in use. The cookie
// store may be null; it must outlive the downloader.
struct TDownloaderClass
{
    std::unique_ptr<TDownloader> (*Create)(QNetworkCookieJar* cookieStore) = nullptr;
};
// The constructor of the cookie store class in use. A store is never persisted and never shared.
struct TCookieManagerClass
{
    std::unique_ptr<QNetworkCookieJar> (*Create)() = nullptr;
};

TDownloaderClass DownloaderClass();
TCookieManagerClass CookieManagerClass();

// The proxy settings of this moment, as every downloader made by DownloaderClass() takes them.
TProxySettings CurrentProxySettings();

// The public page that the connection test fetches over plain http.
QString ConnectionTestURL();
// True when the public page could be fetched into a temporary file (which is deleted again).
// Blocks the calling thread for at most the time-out; client errors are raised.
bool TestInternetConnection();
// The same test against another page.
bool TestInternetConnection(const QString& url);

// Splits text into lines at CR LF, LF or CR; a line break at the end makes no empty last line.
QStringList TextToLines(const QString& text);
// Decodes bytes in a code page (cCodePage*); a UTF-8 or UTF-16 byte order mark is dropped.
QString DecodeCodePage(const QByteArray& bytes, qint32 codePage);
