#pragma once

// Limits on what a client may send to the catalogue server, enforced ahead of the HTTP server's
// own parser: Qt HttpServer keeps a request in memory whole, however large, and keeps a
// connection open as long as the client likes.

#include <QByteArray>
#include <QObject>
#include <QSslServer>
#include <QTcpServer>
#include <QTimer>

#include <functional>

class QTcpSocket;

struct TRequestLimits
{
    // Request line and headers together, in bytes; a longer head gets 431 (414 when the request
    // line alone is longer).
    qsizetype MaxHeadBytes = 16 * 1024;
    // Body of one request, in bytes (the server's routes take none); a longer one gets 413, and a
    // body without a length (chunked) gets 411.
    qint64 MaxBodyBytes = 64 * 1024;
    // A connection that completes no request for this long is closed (408 when a request was
    // under way).
    int IdleTimeoutMs = 30000;
};

// Called for each request the guard answers itself: the connection, the status and the bytes sent.
using TGuardLog = std::function<void(const QTcpSocket& socket, int status, qint64 bytes)>;

// Watches one connection: it sees each piece of data before the HTTP server reads it, follows where
// each request ends, answers a request over a limit itself and closes the connection, closes idle
// connections, and closes the connection after the answer to a request that asks for it
// ("Connection: close", or HTTP/1.0 without keep-alive).
class TRequestGuard : public QObject
{
public:
    // Attaches a guard to a socket that nobody reads yet; it lives as the socket's child.
    static void Attach(QTcpSocket* socket, const TRequestLimits& limits, const TGuardLog& log);

private:
    TRequestGuard(QTcpSocket* socket, const TRequestLimits& limits, const TGuardLog& log);
    void OnReadyRead();
    void Feed(QByteArrayView data);
    // Reads a complete head; false when the request was refused.
    bool ReadHead(const QByteArray& head);
    void RequestDone();
    void Refuse(int status, const QByteArray& reason);
    void OnIdle();

    QTcpSocket* m_socket;
    TRequestLimits m_limits;
    TGuardLog m_log;
    QTimer m_idle;
    QByteArray m_head;     // the head read so far of the request under way
    qint64 m_bodyLeft = 0; // bytes of its body still to come
    bool m_closeAfterAnswer = false;
    bool m_refused = false;
};

// Servers whose connections each get a guard when the HTTP server takes them.
class TGuardedTcpServer : public QTcpServer
{
public:
    TGuardedTcpServer(const TRequestLimits& limits, const TGuardLog& log, QObject* parent = nullptr);
    QTcpSocket* nextPendingConnection() override;

private:
    TRequestLimits m_limits;
    TGuardLog m_log;
};

class TGuardedSslServer : public QSslServer
{
public:
    TGuardedSslServer(const TRequestLimits& limits, const TGuardLog& log, QObject* parent = nullptr);
    QTcpSocket* nextPendingConnection() override;

private:
    TRequestLimits m_limits;
    TGuardLog m_log;
};
