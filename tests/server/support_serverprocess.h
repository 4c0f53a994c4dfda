#pragma once

// Test helpers: the built catalogue server as a child process, and plain requests to it.

#include <QByteArray>
#include <QJsonArray>
#include <QNetworkAccessManager>
#include <QProcess>
#include <QString>
#include <QUrl>

#include <memory>

QString ServerExecutable();
QString BuiltDataDir();

class TServerProcess
{
public:
    TServerProcess() = default;
    ~TServerProcess();

    // Starts the server on a free port and waits for its "listening" line.
    bool Start(const QStringList& arguments);
    void Stop();

    quint16 Port() const { return m_port; }
    QString BaseUrl() const { return m_baseUrl; }
    QProcess& Process() { return *m_process; }
    // Everything the server wrote to stdout so far.
    QByteArray Output();
    QString Failure() const { return m_failure; }

private:
    std::unique_ptr<QProcess> m_process;
    QByteArray m_output;
    quint16 m_port = 0;
    QString m_baseUrl;
    QString m_failure;
};

struct TReply
{
    int Status = 0;
    QByteArray Body;
    QString Error;
    QByteArray PeerCertificatePem;
};

// A GET through QNetworkAccessManager; SSL errors of the self-signed certificate are ignored.
TReply HttpGet(QNetworkAccessManager& manager, const QUrl& url, const QByteArray& userAgent = "Orvane tests");

// Sends the bytes as they stand over a plain TCP connection and returns what comes back.
QByteArray RawExchange(quint16 port, const QByteArray& request);

// Sends the bytes, as far as the server takes them, and reads until the server closes the
// connection or waitMs pass.
struct TRawAnswer
{
    QByteArray Answer;
    bool Closed = false;
};
TRawAnswer RawUntilClosed(quint16 port, const QByteArray& request, int waitMs);

QByteArray Decipher(const QByteArray& body);
// The deciphered reply as a JSON array; a reply that is no array gives a one-element array
// holding the text "not an array".
QJsonArray DecipherArray(const QByteArray& body);
