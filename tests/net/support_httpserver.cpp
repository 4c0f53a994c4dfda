#include "support_httpserver.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QRandomGenerator>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <zlib.h>

#include <algorithm>
#include <future>

namespace {

QByteArray Gzip(const QByteArray& data)
{
    z_stream zs{};
    deflateInit2(&zs, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    QByteArray out(static_cast<int>(deflateBound(&zs, static_cast<uLong>(data.size()))), '\0');
    zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.constData()));
    zs.avail_in = static_cast<uInt>(data.size());
    zs.next_out = reinterpret_cast<Bytef*>(out.data());
    zs.avail_out = static_cast<uInt>(out.size());
    deflate(&zs, Z_FINISH);
    out.resize(static_cast<int>(zs.total_out));
    deflateEnd(&zs);
    return out;
}

// A gzip stream of `bytes` zero bytes, made without holding them.
QByteArray GzipZeros(qint64 bytes)
{
    z_stream zs{};
    deflateInit2(&zs, Z_BEST_COMPRESSION, Z_DEFLATED, 15 + 16, 9, Z_DEFAULT_STRATEGY);
    const QByteArray zeros(1 << 20, '\0');
    QByteArray out;
    char buffer[1 << 16];
    for (qint64 left = bytes; left >= 0; left -= zeros.size()) {
        zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(zeros.constData()));
        zs.avail_in = static_cast<uInt>(std::min<qint64>(left, zeros.size()));
        const int flush = left <= zeros.size() ? Z_FINISH : Z_NO_FLUSH;
        do {
            zs.next_out = reinterpret_cast<Bytef*>(buffer);
            zs.avail_out = sizeof(buffer);
            deflate(&zs, flush);
            out.append(buffer, static_cast<qsizetype>(sizeof(buffer) - zs.avail_out));
        } while (zs.avail_out == 0);
        if (flush == Z_FINISH)
            break;
    }
    deflateEnd(&zs);
    return out;
}

QByteArray NoisePng(int bytes)
{
    int side = 8;
    while (side * side * 3 < bytes)
        ++side;
    QImage image(side, side, QImage::Format_RGB888);
    QRandomGenerator random(static_cast<quint32>(bytes));
    for (int y = 0; y < side; ++y) {
        uchar* line = image.scanLine(y);
        for (int x = 0; x < side * 3; ++x)
            line[x] = static_cast<uchar>(random.bounded(256));
    }
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

} // namespace

// One client connection: reads one request, answers it, closes.
class TServerConnection : public QObject
{
public:
    TServerConnection(QObject* parent, TTestHttpServer* owner, QTcpSocket* socket, bool secure)
        : QObject(parent), m_owner(owner), m_socket(socket), m_secure(secure)
    {
        socket->setParent(this);
        connect(socket, &QTcpSocket::readyRead, this, [this] { OnReadyRead(); });
        connect(socket, &QTcpSocket::disconnected, this, [this] { OnDisconnected(); });
    }

private:
    void OnReadyRead()
    {
        if (m_answered)
            return;
        m_buffer += m_socket->readAll();
        if (m_buffer.startsWith('\x16')) {
            // A TLS handshake on the plain server: answer in plain text, as a web server does.
            m_answered = true;
            m_socket->write("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
            m_socket->disconnectFromHost();
            return;
        }
        const qsizetype headerEnd = m_buffer.indexOf("\r\n\r\n");
        if (headerEnd < 0)
            return;
        TSeenRequest request;
        const QList<QByteArray> lines = m_buffer.left(headerEnd).split('\n');
        const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
        request.Method = requestLine.value(0);
        request.Target = requestLine.value(1);
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const QByteArray line = lines.at(i).trimmed();
            const qsizetype colon = line.indexOf(':');
            if (colon > 0)
                request.Headers.insert(line.left(colon).trimmed().toLower(), line.mid(colon + 1).trimmed());
        }
        const qsizetype length = request.Headers.value("content-length").toLongLong();
        if (m_buffer.size() < headerEnd + 4 + length)
            return;
        request.Body = m_buffer.mid(headerEnd + 4, length);
        request.Secure = m_secure;
        if (request.Target.startsWith("http://") || request.Target.startsWith("https://")) {
            const QUrl url(QString::fromLatin1(request.Target));
            request.Path = url.path(QUrl::FullyEncoded).toLatin1();
            if (url.hasQuery())
                request.Path += '?' + url.query(QUrl::FullyEncoded).toLatin1();
        } else {
            request.Path = request.Target;
        }
        m_answered = true;
        m_owner->Record(request);
        Answer(request);
    }

    void OnDisconnected()
    {
        if (m_slowTimer && m_slowSent < cSlowSize) {
            QMutexLocker lock(&m_owner->m_lock);
            ++m_owner->m_abortedSlow;
        }
        deleteLater();
    }

    void Send(int status, const QByteArray& reason, const QByteArray& body,
              const QByteArray& extraHeaders = {}, bool close = true)
    {
        QByteArray out = "HTTP/1.1 " + QByteArray::number(status) + ' ' + reason + "\r\n";
        out += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
        out += extraHeaders;
        out += "Connection: close\r\n\r\n";
        out += body;
        m_socket->write(out);
        if (close)
            m_socket->disconnectFromHost();
    }

    void Answer(const TSeenRequest& request)
    {
        const QByteArray path = request.Path;
        if (m_owner->RequireProxyAuth() && !request.Headers.contains("proxy-authorization")) {
            Send(407, "Proxy Authentication Required", "credentials needed",
                 "Proxy-Authenticate: Basic realm=\"test\"\r\n");
            return;
        }
        if (path == "/ok") {
            Send(200, "OK", "hello", "Content-Type: text/plain\r\n");
        } else if (path == "/lines") {
            Send(200, "OK", "first line\r\nzweite Zeile \xc3\xa4\xc3\xb6\xc3\xbc\nthird\n",
                 "Content-Type: text/plain; charset=utf-8\r\n");
        } else if (path.startsWith("/redirect/")) {
            const int n = path.mid(10).toInt();
            if (n <= 0)
                Send(200, "OK", "arrived");
            else
                Send(301, "Moved Permanently", "moved",
                     "Location: /redirect/" + QByteArray::number(n - 1) + "\r\n");
        } else if (path.startsWith("/to?url=")) {
            const QByteArray target = QByteArray::fromPercentEncoding(path.mid(8));
            Send(301, "Moved Permanently", "moved", "Location: " + target + "\r\n");
        } else if (path == "/missing") {
            Send(404, "Not Found", "no such page\r\nsecond line", "Content-Type: text/plain\r\n");
        } else if (path == "/gzip") {
            const QByteArray plain = QByteArray("compressed body ").repeated(200);
            if (request.Headers.value("accept-encoding").contains("gzip"))
                Send(200, "OK", Gzip(plain), "Content-Encoding: gzip\r\n");
            else
                Send(200, "OK", plain);
        } else if (path.startsWith("/gzip/")) {
            // Bodies that claim gzip and cannot be decoded: cut in the middle, no gzip at all, or a
            // bomb of 256 MB of zeros.
            QByteArray body;
            if (path == "/gzip/damaged")
                body = Gzip(QByteArray("compressed body ").repeated(2000)).left(200) + QByteArray(64, '\x5a');
            else if (path == "/gzip/junk")
                body = QByteArray("this is not gzip at all").repeated(20);
            else
                body = CachedBomb();
            Send(200, "OK", body, "Content-Encoding: gzip\r\n");
        } else if (path == "/endless") {
            StartEndless();
        } else if (path == "/slow") {
            StartSlow();
        } else if (path == "/stall") {
            m_socket->write("HTTP/1.1 200 OK\r\nContent-Length: 10\r\nConnection: close\r\n\r\n");
            QTimer::singleShot(10000, this, [this] { m_socket->abort(); });
        } else if (path.startsWith("/hold/")) {
            StartCanned({200, path.mid(6), path.mid(6)});
        } else if (path.startsWith("/image/")) {
            Send(200, "OK", CachedPng(path.mid(7).split('?').value(0).toInt()),
                 "Content-Type: image/png\r\n");
        } else if (path == "/echo") {
            Send(200, "OK",
                 request.Method + '\n' + request.Headers.value("content-type") + '\n' + request.Body);
        } else if (path == "/cookie/set") {
            Send(200, "OK", "set", "Set-Cookie: session=abc; Path=/\r\n");
        } else if (path == "/cookie/get") {
            Send(200, "OK", request.Headers.value("cookie"));
        } else if (TCannedReply canned; m_owner->CannedReplyFor(path, canned)) {
            StartCanned(canned);
        } else {
            Send(404, "Not Found", "unknown");
        }
    }

    void StartCanned(const TCannedReply& canned)
    {
        const QByteArray reason = canned.Status == 200 ? QByteArray("OK") : QByteArray("Canned");
        if (canned.HoldId.isEmpty()) {
            Send(canned.Status, reason, canned.Body);
            return;
        }
        m_holdClock.start();
        auto* timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [this, timer, canned, reason] {
            if (m_owner->IsReleased(canned.HoldId) || m_holdClock.hasExpired(30000)) {
                timer->stop();
                Send(canned.Status, reason, canned.Body);
            }
        });
        timer->start(10);
    }

    static QByteArray CachedPng(int bytes)
    {
        static QMutex lock;
        static QMap<int, QByteArray> cache;
        QMutexLocker locker(&lock);
        if (!cache.contains(bytes))
            cache.insert(bytes, NoisePng(bytes));
        return cache.value(bytes);
    }

    static QByteArray CachedBomb()
    {
        static const QByteArray bomb = GzipZeros(qint64(256) << 20);
        return bomb;
    }

    // A body without a length that goes on until the client hangs up.
    void StartEndless()
    {
        m_socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: close\r\n\r\n");
        auto more = [this] {
            if (m_socket->bytesToWrite() < (1 << 18))
                m_socket->write(QByteArray(1 << 16, 'e'));
        };
        connect(m_socket, &QTcpSocket::bytesWritten, this, more);
        more();
    }

    void StartSlow()
    {
        m_socket->write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(cSlowSize) +
                        "\r\nConnection: close\r\n\r\n");
        m_slowTimer = new QTimer(this);
        connect(m_slowTimer, &QTimer::timeout, this, [this] {
            if (m_slowSent >= cSlowSize) {
                m_slowTimer->stop();
                m_socket->disconnectFromHost();
                return;
            }
            m_socket->write("x");
            ++m_slowSent;
        });
        m_slowTimer->start(50);
    }

    static constexpr int cSlowSize = 2000;
    TTestHttpServer* m_owner;
    QTcpSocket* m_socket;
    bool m_secure;
    bool m_answered = false;
    QByteArray m_buffer;
    QTimer* m_slowTimer = nullptr;
    int m_slowSent = 0;
    QElapsedTimer m_holdClock;
};

class TServerCore : public QTcpServer
{
public:
    TServerCore(TTestHttpServer* owner, const QString& certificateDir) : m_owner(owner)
    {
        if (!certificateDir.isEmpty()) {
            QFile cert(certificateDir + "/cert.pem");
            QFile key(certificateDir + "/key.pem");
            if (cert.open(QIODevice::ReadOnly) && key.open(QIODevice::ReadOnly)) {
                m_certificate = QSslCertificate(cert.readAll(), QSsl::Pem);
                m_key = QSslKey(key.readAll(), QSsl::Rsa, QSsl::Pem);
            }
            m_secure = true;
        }
    }

protected:
    void incomingConnection(qintptr handle) override
    {
        if (m_secure) {
            auto* socket = new QSslSocket;
            if (!socket->setSocketDescriptor(handle)) {
                delete socket;
                return;
            }
            socket->setLocalCertificate(m_certificate);
            socket->setPrivateKey(m_key);
            socket->setPeerVerifyMode(QSslSocket::VerifyNone);
            new TServerConnection(this, m_owner, socket, true);
            socket->startServerEncryption();
        } else {
            auto* socket = new QTcpSocket;
            if (!socket->setSocketDescriptor(handle)) {
                delete socket;
                return;
            }
            new TServerConnection(this, m_owner, socket, false);
        }
    }

private:
    TTestHttpServer* m_owner;
    bool m_secure = false;
    QSslCertificate m_certificate;
    QSslKey m_key;
};

TTestHttpServer::TTestHttpServer(const QString& certificateDir) : m_secure(!certificateDir.isEmpty())
{
    m_thread.setObjectName("test-http-server");
    m_thread.start();
    m_core = new TServerCore(this, certificateDir);
    m_core->moveToThread(&m_thread);
    // std::promise rather than a blocking call, so that a thread sanitizer sees the hand-over.
    std::promise<quint16> port;
    QMetaObject::invokeMethod(m_core, [this, &port] {
        port.set_value(m_core->listen(QHostAddress::LocalHost, 0) ? m_core->serverPort() : 0);
    });
    m_port = port.get_future().get();
}

TTestHttpServer::~TTestHttpServer()
{
    ReleaseAll();
    // The core and its connections go with the server's thread.
    std::promise<void> closed;
    QMetaObject::invokeMethod(m_core, [this, &closed] {
        m_core->close();
        delete m_core;
        closed.set_value();
    });
    closed.get_future().get();
    m_core = nullptr;
    m_thread.quit();
    m_thread.wait();
}

QString TTestHttpServer::BaseURL() const
{
    return QString("%1://127.0.0.1:%2").arg(m_secure ? "https" : "http").arg(m_port);
}

void TTestHttpServer::Record(const TSeenRequest& request)
{
    QMutexLocker lock(&m_lock);
    m_requests.append(request);
    m_arrived.wakeAll();
}

QList<TSeenRequest> TTestHttpServer::Requests() const
{
    QMutexLocker lock(&m_lock);
    return m_requests;
}

QList<TSeenRequest> TTestHttpServer::RequestsFor(const QByteArray& prefix) const
{
    QMutexLocker lock(&m_lock);
    QList<TSeenRequest> found;
    for (const TSeenRequest& request : m_requests)
        if (request.Path.startsWith(prefix))
            found.append(request);
    return found;
}

void TTestHttpServer::ClearRequests()
{
    QMutexLocker lock(&m_lock);
    m_requests.clear();
}

bool TTestHttpServer::WaitForRequests(const QByteArray& prefix, int count, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (CountFor(prefix) < count) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(2);
    }
    return true;
}

void TTestHttpServer::SetReply(const QByteArray& prefix, const TCannedReply& reply)
{
    QMutexLocker lock(&m_lock);
    m_canned.insert(prefix, reply);
}

void TTestHttpServer::ClearReplies()
{
    QMutexLocker lock(&m_lock);
    m_canned.clear();
}

bool TTestHttpServer::CannedReplyFor(const QByteArray& path, TCannedReply& reply) const
{
    QMutexLocker lock(&m_lock);
    qsizetype longest = -1;
    for (auto it = m_canned.cbegin(); it != m_canned.cend(); ++it) {
        if (path.startsWith(it.key()) && it.key().size() > longest) {
            longest = it.key().size();
            reply = it.value();
        }
    }
    return longest >= 0;
}

void TTestHttpServer::Release(const QByteArray& id)
{
    QMutexLocker lock(&m_lock);
    m_released.insert(id);
}

void TTestHttpServer::ReleaseAll()
{
    QMutexLocker lock(&m_lock);
    m_releaseAll = true;
}

bool TTestHttpServer::IsReleased(const QByteArray& id) const
{
    QMutexLocker lock(&m_lock);
    return m_releaseAll || m_released.contains(id);
}

void TTestHttpServer::SetRequireProxyAuth(bool on)
{
    QMutexLocker lock(&m_lock);
    m_requireProxyAuth = on;
}

bool TTestHttpServer::RequireProxyAuth() const
{
    QMutexLocker lock(&m_lock);
    return m_requireProxyAuth;
}

int TTestHttpServer::AbortedSlowTransfers() const
{
    QMutexLocker lock(&m_lock);
    return m_abortedSlow;
}

bool MakeSelfSignedCertificate(const QString& dir)
{
    QProcess openssl;
    openssl.start("openssl", {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", dir + "/key.pem",
                              "-out", dir + "/cert.pem", "-days", "2", "-subj", "/CN=orvane-test"});
    return openssl.waitForFinished(60000) && openssl.exitStatus() == QProcess::NormalExit &&
           openssl.exitCode() == 0 && QFile::exists(dir + "/cert.pem");
}

quint16 FreeLocalPort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}

// ---- TTinyProxy ------------------------------------------------------------------------------------

QString TTinyProxy::Program()
{
    QString found = QStandardPaths::findExecutable("tinyproxy");
    if (found.isEmpty())
        found = QStandardPaths::findExecutable("tinyproxy", {"/usr/bin", "/usr/sbin"});
    return found;
}

bool TTinyProxy::Available()
{
    return !Program().isEmpty();
}

TTinyProxy::~TTinyProxy()
{
    Stop();
}

bool TTinyProxy::Start(const QString& user, const QString& password)
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        m_port = FreeLocalPort();
        QByteArray conf = "Port " + QByteArray::number(m_port) +
                          "\n"
                          "Listen 127.0.0.1\n"
                          "Timeout 30\n"
                          "LogLevel Info\n"
                          "MaxClients 50\n"
                          "Allow 127.0.0.1\n";
        if (!user.isEmpty())
            conf += "BasicAuth " + user.toUtf8() + ' ' + password.toUtf8() + '\n';
        const QString confPath = m_dir.filePath("tinyproxy.conf");
        QFile file(confPath);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return false;
        file.write(conf);
        file.close();
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(Program(), {"-d", "-c", confPath});
        if (!m_process.waitForStarted(5000))
            return false;
        QDeadlineTimer deadline(5000);
        while (!deadline.hasExpired() && m_process.state() == QProcess::Running) {
            QTcpSocket probe;
            probe.connectToHost(QHostAddress::LocalHost, m_port);
            if (probe.waitForConnected(200)) {
                probe.abort();
                return true;
            }
            QThread::msleep(20);
        }
        Stop();
    }
    return false;
}

void TTinyProxy::Stop()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.terminate();
        if (!m_process.waitForFinished(5000)) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }
}

QString TTinyProxy::Log() const
{
    return QString::fromLocal8Bit(const_cast<QProcess&>(m_process).readAll());
}

#if defined(__SANITIZE_THREAD__)
// Qt is not built with ThreadSanitizer: its own locks (futexes) and the memory it hands between its
// threads are invisible to the sanitizer. Accesses made inside the uninstrumented Qt libraries are
// therefore not checked; every access of the program's and the tests' own code still is, and the
// hand-overs that go through Qt are marked in the code (HandOverRelease / HandOverAcquire). The
// tests start openssl and tinyproxy (fork and exec) while threads run.
extern "C" const char* __tsan_default_options()
{
    return "ignore_noninstrumented_modules=1:history_size=4:die_after_fork=0";
}
#endif
