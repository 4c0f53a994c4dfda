#include "uRequestGuard.h"

#include <QTcpSocket>

#include <algorithm>

namespace {

// The socket buffers at most this much ahead of the HTTP server's parser.
constexpr qint64 cReadBufferSize = 1 << 20;
// How long a refused request's connection still reads before it closes.
constexpr int cLingerMs = 1000;

// Where the head in `head` ends (after its empty line), searching from `from`; -1 when not yet.
qsizetype EndOfHead(const QByteArray& head, qsizetype from)
{
    const qsizetype crlf = head.indexOf("\n\r\n", from);
    const qsizetype lf = head.indexOf("\n\n", from);
    if (crlf < 0 && lf < 0)
        return -1;
    if (lf < 0 || (crlf >= 0 && crlf < lf))
        return crlf + 3;
    return lf + 2;
}

} // namespace

void TRequestGuard::Attach(QTcpSocket* socket, const TRequestLimits& limits, const TGuardLog& log)
{
    if (socket)
        new TRequestGuard(socket, limits, log); // a child of the socket
}

TRequestGuard::TRequestGuard(QTcpSocket* socket, const TRequestLimits& limits, const TGuardLog& log)
    : QObject(socket), m_socket(socket), m_limits(limits), m_log(log)
{
    socket->setReadBufferSize(std::max<qint64>(cReadBufferSize, limits.MaxHeadBytes + limits.MaxBodyBytes));
    // Connected before the HTTP server connects its own handler, so it runs first.
    connect(socket, &QIODevice::readyRead, this, &TRequestGuard::OnReadyRead);
    // An answer that is still being taken keeps the connection alive.
    connect(socket, &QIODevice::bytesWritten, this, [this] {
        if (!m_refused)
            m_idle.start();
    });
    m_idle.setSingleShot(true);
    m_idle.setInterval(limits.IdleTimeoutMs);
    connect(&m_idle, &QTimer::timeout, this, &TRequestGuard::OnIdle);
    m_idle.start();
}

void TRequestGuard::OnReadyRead()
{
    // The HTTP server reads everything there is at each signal, so what is unread now is new.
    const qint64 available = m_socket->bytesAvailable();
    if (available > 0 && !m_refused)
        Feed(m_socket->peek(available));
}

void TRequestGuard::Feed(QByteArrayView data)
{
    while (!data.isEmpty() && !m_refused) {
        if (m_bodyLeft > 0) {
            const qint64 taken = std::min<qint64>(m_bodyLeft, data.size());
            m_bodyLeft -= taken;
            data = data.sliced(taken);
            if (m_bodyLeft == 0)
                RequestDone();
            continue;
        }
        if (m_head.isEmpty()) {
            // Line breaks between requests are no part of either.
            qsizetype blank = 0;
            while (blank < data.size() && (data[blank] == '\r' || data[blank] == '\n'))
                ++blank;
            data = data.sliced(blank);
            if (data.isEmpty())
                return;
        }
        const qsizetype before = m_head.size();
        const qsizetype taken = std::min<qsizetype>(m_limits.MaxHeadBytes + 4 - before, data.size());
        m_head.append(data.first(taken));
        const qsizetype end = EndOfHead(m_head, std::max<qsizetype>(0, before - 2));
        if (end < 0) {
            if (m_head.size() > m_limits.MaxHeadBytes) {
                if (m_head.contains('\n'))
                    Refuse(431, "Request Header Fields Too Large");
                else
                    Refuse(414, "URI Too Long");
                return;
            }
            data = data.sliced(taken);
            continue;
        }
        const QByteArray head = m_head.left(end);
        m_head.clear();
        data = data.sliced(end - before);
        if (!ReadHead(head))
            return;
    }
}

bool TRequestGuard::ReadHead(const QByteArray& head)
{
    const QList<QByteArray> lines = head.trimmed().split('\n');
    const bool http10 = lines.value(0).trimmed().endsWith("HTTP/1.0");
    bool close = false;
    bool keepAlive = false;
    bool chunked = false;
    bool badLength = false;
    qint64 length = -1;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray& line = lines.at(i);
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0)
            continue;
        const QByteArray name = line.left(colon).trimmed().toLower();
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (name == "connection") {
            for (const QByteArray& token : value.toLower().split(',')) {
                close = close || token.trimmed() == "close";
                keepAlive = keepAlive || token.trimmed() == "keep-alive";
            }
        } else if (name == "content-length") {
            bool ok = false;
            const qint64 given = value.toLongLong(&ok);
            badLength = badLength || !ok || given < 0 || (length >= 0 && given != length);
            length = given;
        } else if (name == "transfer-encoding") {
            chunked = true;
        }
    }
    if (chunked) {
        Refuse(411, "Length Required");
        return false;
    }
    if (badLength) {
        Refuse(400, "Bad Request");
        return false;
    }
    if (length > m_limits.MaxBodyBytes) {
        Refuse(413, "Content Too Large");
        return false;
    }
    m_closeAfterAnswer = close || (http10 && !keepAlive);
    m_bodyLeft = std::max<qint64>(length, 0);
    if (m_bodyLeft == 0)
        RequestDone();
    return true;
}

void TRequestGuard::RequestDone()
{
    m_idle.start();
    if (m_closeAfterAnswer) {
        // Whatever follows is not read: the HTTP server answers in its own handler of this same
        // signal, and the connection closes once that answer has gone out.
        m_refused = true;
        QMetaObject::invokeMethod(
            this, [this] { m_socket->disconnectFromHost(); }, Qt::QueuedConnection);
    }
}

void TRequestGuard::Refuse(int status, const QByteArray& reason)
{
    m_refused = true;
    // The HTTP server reads nothing more of this connection; what comes is dropped.
    QObject::disconnect(m_socket, &QIODevice::readyRead, nullptr, nullptr);
    if (m_socket->isTransactionStarted())
        m_socket->commitTransaction();
    m_socket->readAll();
    connect(m_socket, &QIODevice::readyRead, this, [this] { m_socket->readAll(); });

    const QByteArray body = reason + '\n';
    m_socket->write("HTTP/1.1 " + QByteArray::number(status) + ' ' + reason +
                    "\r\nContent-Type: text/plain\r\nContent-Length: " + QByteArray::number(body.size()) +
                    "\r\nConnection: close\r\n\r\n" + body);
    if (m_log)
        m_log(*m_socket, status, body.size());
    // The connection lingers a moment, dropping what still comes, before it is closed: closed at
    // once with data unread, it would be reset, and the reset can take the answer with it on the
    // client's side. A client that does not take the answer is cut off after the idle time.
    QTimer::singleShot(cLingerMs, m_socket, [socket = m_socket] { socket->disconnectFromHost(); });
    m_idle.disconnect();
    connect(&m_idle, &QTimer::timeout, m_socket, &QAbstractSocket::abort);
    m_idle.start(std::max(m_limits.IdleTimeoutMs, cLingerMs * 2));
}

void TRequestGuard::OnIdle()
{
    if (!m_head.isEmpty() || m_bodyLeft > 0) {
        Refuse(408, "Request Timeout");
    } else if (m_socket->bytesToWrite() > 0) {
        m_socket->abort(); // an answer that the client has stopped taking
    } else {
        m_refused = true;
        m_socket->disconnectFromHost();
    }
}

TGuardedTcpServer::TGuardedTcpServer(const TRequestLimits& limits, const TGuardLog& log, QObject* parent)
    : QTcpServer(parent), m_limits(limits), m_log(log)
{}

QTcpSocket* TGuardedTcpServer::nextPendingConnection()
{
    QTcpSocket* socket = QTcpServer::nextPendingConnection();
    TRequestGuard::Attach(socket, m_limits, m_log);
    return socket;
}

TGuardedSslServer::TGuardedSslServer(const TRequestLimits& limits, const TGuardLog& log, QObject* parent)
    : QSslServer(parent), m_limits(limits), m_log(log)
{}

QTcpSocket* TGuardedSslServer::nextPendingConnection()
{
    QTcpSocket* socket = QSslServer::nextPendingConnection();
    TRequestGuard::Attach(socket, m_limits, m_log);
    return socket;
}
