#include "support_serverprocess.h"

#include "uPayloadCipher.h"
#include "uPayloadKeys.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTimer>

QString ServerExecutable()
{
    return qEnvironmentVariable("ORV_BUILD_DIR") + "/server/orvane-catalogue";
}

QString BuiltDataDir()
{
    return qEnvironmentVariable("ORV_BUILD_DIR") + "/server/data";
}

TServerProcess::~TServerProcess()
{
    Stop();
}

bool TServerProcess::Start(const QStringList& arguments)
{
    m_process = std::make_unique<QProcess>();
    m_process->setProcessChannelMode(QProcess::SeparateChannels);
    m_process->start(ServerExecutable(), QStringList{"--port", "0"} + arguments);
    if (!m_process->waitForStarted(10000)) {
        m_failure = "cannot start " + ServerExecutable() + ": " + m_process->errorString();
        return false;
    }
    static const QRegularExpression listening("listening on (https?)://127\\.0\\.0\\.1:(\\d+)/");
    const QDeadlineTimer deadline(30000);
    while (!deadline.hasExpired()) {
        m_process->waitForReadyRead(200);
        m_output += m_process->readAllStandardOutput();
        const auto match = listening.match(QString::fromUtf8(m_output));
        if (match.hasMatch()) {
            m_port = static_cast<quint16>(match.captured(2).toUInt());
            m_baseUrl = match.captured(1) + "://127.0.0.1:" + match.captured(2);
            return true;
        }
        if (m_process->state() == QProcess::NotRunning)
            break;
    }
    m_failure =
        "the server did not start: " + QString::fromUtf8(m_output + m_process->readAllStandardError());
    return false;
}

void TServerProcess::Stop()
{
    if (!m_process || m_process->state() == QProcess::NotRunning)
        return;
    m_process->terminate();
    if (!m_process->waitForFinished(10000)) {
        m_process->kill();
        m_process->waitForFinished(5000);
    }
}

QByteArray TServerProcess::Output()
{
    if (m_process)
        m_output += m_process->readAllStandardOutput();
    return m_output;
}

TReply HttpGet(QNetworkAccessManager& manager, const QUrl& url, const QByteArray& userAgent)
{
    QNetworkRequest request(url);
    request.setRawHeader("User-Agent", userAgent);
    request.setTransferTimeout(30000);
    std::unique_ptr<QNetworkReply> reply(manager.get(request));
    QObject::connect(reply.get(), &QNetworkReply::sslErrors, reply.get(),
                     [r = reply.get()](const QList<QSslError>&) { r->ignoreSslErrors(); });
    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    if (!reply->isFinished())
        loop.exec();
    TReply result;
    result.Status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    result.Body = reply->readAll();
    if (reply->error() != QNetworkReply::NoError)
        result.Error = reply->errorString();
    const auto chain = reply->sslConfiguration().peerCertificateChain();
    if (!chain.isEmpty())
        result.PeerCertificatePem = chain.first().toPem();
    return result;
}

QByteArray RawExchange(quint16 port, const QByteArray& request)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    if (!socket.waitForConnected(10000))
        return {};
    socket.write(request);
    // Reads one response: up to the end of its body by Content-Length, or until the server closes.
    QByteArray answer;
    const QDeadlineTimer deadline(20000);
    static const QRegularExpression contentLength("\\r\\ncontent-length:\\s*(\\d+)",
                                                  QRegularExpression::CaseInsensitiveOption);
    while (!deadline.hasExpired() && socket.state() == QAbstractSocket::ConnectedState) {
        if (socket.waitForReadyRead(500))
            answer += socket.readAll();
        const qsizetype headerEnd = answer.indexOf("\r\n\r\n");
        if (headerEnd >= 0) {
            const auto match = contentLength.match(QString::fromLatin1(answer.left(headerEnd + 2)));
            if (match.hasMatch() && answer.size() >= headerEnd + 4 + match.captured(1).toLongLong())
                return answer;
        }
    }
    answer += socket.readAll();
    return answer;
}

TRawAnswer RawUntilClosed(quint16 port, const QByteArray& request, int waitMs)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    TRawAnswer result;
    if (!socket.waitForConnected(10000))
        return result;
    socket.write(request);
    const QDeadlineTimer deadline(waitMs);
    while (!deadline.hasExpired() && socket.state() == QAbstractSocket::ConnectedState) {
        if (socket.bytesToWrite() > 0)
            socket.waitForBytesWritten(50);
        if (socket.waitForReadyRead(50))
            result.Answer += socket.readAll();
    }
    result.Answer += socket.readAll();
    result.Closed = socket.state() != QAbstractSocket::ConnectedState;
    return result;
}

QByteArray Decipher(const QByteArray& body)
{
    return DecryptBytes(body, PayloadKeyA, PayloadKeyB);
}

QJsonArray DecipherArray(const QByteArray& body)
{
    const QJsonDocument doc = QJsonDocument::fromJson(Decipher(body));
    if (!doc.isArray())
        return QJsonArray{"not an array"};
    return doc.array();
}
