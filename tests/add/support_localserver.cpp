#include "support_localserver.h"

#include <memory>

#include <QBuffer>
#include <QImage>
#include <QRegularExpression>

TLocalServer::TLocalServer(TMode mode) : m_mode(mode)
{
    m_server.listen(QHostAddress::LocalHost, 0);
    connect(&m_server, &QTcpServer::newConnection, this, &TLocalServer::Incoming);
    m_drip.setInterval(50);
    connect(&m_drip, &QTimer::timeout, this, [this] {
        for (const QPointer<QTcpSocket>& socket : std::as_const(m_open))
            if (socket && socket->state() == QAbstractSocket::ConnectedState)
                socket->write("x");
    });
}

TLocalServer::~TLocalServer()
{
    m_drip.stop();
    for (const QPointer<QTcpSocket>& socket : std::as_const(m_open))
        if (socket)
            socket->abort();
}

QString TLocalServer::BaseUrl() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort());
}

int TLocalServer::WidthFor(const QByteArray& path)
{
    static const QRegularExpression digits(QStringLiteral("(\\d+)\\.png$"));
    const QRegularExpressionMatch match = digits.match(QString::fromLatin1(path));
    return 10 + (match.hasMatch() ? match.captured(1).toInt() : 0);
}

QByteArray TLocalServer::PictureFor(const QByteArray& path)
{
    QImage image(WidthFor(path), 8, QImage::Format_RGB32);
    image.fill(Qt::darkYellow);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

void TLocalServer::Release()
{
    m_released = true;
    const auto held = std::exchange(m_held, {});
    for (const auto& [socket, path] : held)
        if (socket)
            Answer(socket, path);
}

void TLocalServer::Incoming()
{
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        socket->setParent(this);
        m_open << socket;
        // One request per connection: read up to the blank line, then act by mode.
        // Owned by the connection below, so it goes with the socket or the server, whichever first.
        auto request = std::make_shared<QByteArray>();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, request] {
            request->append(socket->readAll());
            if (!request->contains("\r\n\r\n") || socket->property("seen").toBool())
                return;
            socket->setProperty("seen", true);
            ++m_requests;
            const QByteArray path = request->split(' ').value(1);
            switch (m_mode) {
            case Silent:
                break;
            case Drip:
                socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n"
                              "Content-Length: 100000\r\n\r\n");
                m_drip.start();
                break;
            case Held:
                if (m_released)
                    Answer(socket, path);
                else
                    m_held << qMakePair(QPointer<QTcpSocket>(socket), path);
                break;
            }
        });
    }
}

void TLocalServer::Answer(QTcpSocket* socket, const QByteArray& path)
{
    const QByteArray body = PictureFor(path);
    socket->write("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nConnection: close\r\nContent-Length: " +
                  QByteArray::number(body.size()) + "\r\n\r\n" + body);
    socket->disconnectFromHost();
}
