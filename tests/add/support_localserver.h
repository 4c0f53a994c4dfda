#pragma once

// A plain HTTP server on 127.0.0.1 on the main thread for the network cases the add dialog must
// survive: a server that never answers, one that drips its body a byte at a time, and one that
// holds its pictures until the test lets them go.

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

class TLocalServer : public QObject
{
public:
    enum TMode
    {
        Silent, // reads the request and never answers
        Drip,   // answers 200 with a long body, one byte per 50 ms
        Held,   // answers each request once Release() is called: a PNG whose width tells its path
    };

    explicit TLocalServer(TMode mode);
    ~TLocalServer() override;

    QString BaseUrl() const;
    int Requests() const { return m_requests; }
    // Answers every held request, and from now on answers at once.
    void Release();

    // The PNG served for a path: a picture 10 + (the digits of its file name) pixels wide.
    static QByteArray PictureFor(const QByteArray& path);
    static int WidthFor(const QByteArray& path);

private:
    void Incoming();
    void Answer(QTcpSocket* socket, const QByteArray& path);

    TMode m_mode;
    QTcpServer m_server;
    QTimer m_drip;
    QList<QPointer<QTcpSocket>> m_open;
    QList<QPair<QPointer<QTcpSocket>, QByteArray>> m_held;
    bool m_released = false;
    int m_requests = 0;
};
