#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QProcess>
#include <QSet>
#include <QString>
#include <QTemporaryDir>
#include <QThread>
#include <QWaitCondition>

// A request as the test server saw it.
struct TSeenRequest
{
    QByteArray Method;
    QByteArray Target;                    // as on the request line (absolute form when sent to a proxy)
    QByteArray Path;                      // path and query
    QMap<QByteArray, QByteArray> Headers; // names in lower case
    QByteArray Body;
    bool Secure = false;
};

class TServerCore;

// A reply set by the test for every request whose path starts with a prefix.
struct TCannedReply
{
    int Status = 200;
    QByteArray Body;
    QByteArray HoldId; // when set, the answer waits for Release(HoldId) (or 30 s)
};

// An HTTP or HTTPS server on 127.0.0.1 running on a thread of its own. Routes:
//   /ok                 200 "hello"
//   /lines              200, three lines of UTF-8 text
//   /redirect/<n>       301 to /redirect/<n-1>; /redirect/0 answers 200 "arrived"
//   /to?url=<u>         301 to <u>
//   /missing            404 with a body of two lines
//   /gzip               200, the body gzip-encoded when the client accepts gzip
//   /gzip/damaged, /gzip/junk, /gzip/bomb   200 with bodies that claim gzip and cannot be decoded
//   /endless            200 with a body that never ends
//   /slow               200 with a 2000-byte body sent 1 byte per 50 ms (about 100 s at most)
//   /stall              200 headers, then nothing for 10 s
//   /hold/<id>          held until Release(id) (or 30 s), then 200 "<id>"
//   /image/<n>          200, a PNG image of n bytes at least (padded text chunk)
//   /echo               200, "method\ncontent-type\nbody"
//   /cookie/set         200 with Set-Cookie: session=abc
//   /cookie/get         200, the Cookie header
// Paths that none of these match get the canned reply of the longest prefix set with SetReply, and
// 404 when there is none.
// With RequireProxyAuth set, the server acts as a proxy that answers 407 to any request without
// Proxy-Authorization.
class TTestHttpServer
{
public:
    // certificateDir: where cert.pem and key.pem are (HTTPS); empty for plain HTTP.
    explicit TTestHttpServer(const QString& certificateDir = {});
    ~TTestHttpServer();

    bool IsListening() const { return m_port != 0; }
    quint16 Port() const { return m_port; }
    QString BaseURL() const;
    QString URL(const QString& path) const { return BaseURL() + path; }

    QList<TSeenRequest> Requests() const;
    // Requests whose path starts with prefix.
    QList<TSeenRequest> RequestsFor(const QByteArray& prefix) const;
    int CountFor(const QByteArray& prefix) const { return static_cast<int>(RequestsFor(prefix).size()); }
    void ClearRequests();
    // Blocks until count requests for prefix arrived or timeoutMs passed.
    bool WaitForRequests(const QByteArray& prefix, int count, int timeoutMs);

    // Answers requests whose path starts with prefix (and no fixed route matched) with reply.
    void SetReply(const QByteArray& prefix, const TCannedReply& reply);
    void ClearReplies();

    void Release(const QByteArray& id);
    void ReleaseAll();
    void SetRequireProxyAuth(bool on);
    // Number of /slow responses whose connection the client closed before the end.
    int AbortedSlowTransfers() const;

private:
    friend class TServerCore;
    friend class TServerConnection;
    bool RequireProxyAuth() const;
    void Record(const TSeenRequest& request);
    bool IsReleased(const QByteArray& id) const;
    bool CannedReplyFor(const QByteArray& path, TCannedReply& reply) const;

    QThread m_thread;
    TServerCore* m_core = nullptr;
    quint16 m_port = 0;
    bool m_secure = false;
    mutable QMutex m_lock;
    QWaitCondition m_arrived;
    QList<TSeenRequest> m_requests;
    QSet<QByteArray> m_released;
    QMap<QByteArray, TCannedReply> m_canned;
    bool m_releaseAll = false;
    bool m_requireProxyAuth = false;
    int m_abortedSlow = 0;
};

// Makes a self-signed certificate and key (cert.pem, key.pem) in dir with the openssl command line.
bool MakeSelfSignedCertificate(const QString& dir);

// A free TCP port on 127.0.0.1 at this moment.
quint16 FreeLocalPort();

// tinyproxy run in the foreground with its own configuration in a temporary folder.
class TTinyProxy
{
public:
    // True when the tinyproxy program is installed.
    static bool Available();
    static QString Program();

    TTinyProxy() = default;
    ~TTinyProxy();
    // Starts on a free port; with a user name the proxy demands basic credentials.
    bool Start(const QString& user = {}, const QString& password = {});
    void Stop();
    quint16 Port() const { return m_port; }
    QString Log() const;

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
};
