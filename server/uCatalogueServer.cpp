#include "uCatalogueServer.h"

#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uSelfSignedCertificate.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QHttpServerResponse>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QSslKey>
#include <QTcpSocket>
#include <QUrl>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

const QString ThumbsFolder = u"Images_Thumbs"_s;
const QString LargeFolder = u"Images_Large"_s;

QByteArray EncodedQuery(const QHttpServerRequest& request)
{
    return request.url().query(QUrl::FullyEncoded).toUtf8();
}

// A picture name is a plain file name: no folder, no dot-dot, nothing outside a safe set.
bool IsPlainFileName(const QString& name)
{
    static const QRegularExpression form(u"^[A-Za-z0-9][A-Za-z0-9._-]{0,200}$"_s);
    return form.match(name).hasMatch() && !name.contains(u".."_s);
}

} // namespace

TCatalogueServer::TCatalogueServer(const TCatalogueServerOptions& options, QObject* parent)
    : QObject(parent), m_options(options)
{
    const QDir data(m_options.DataDir);
    m_search = std::make_unique<TCatalogueSearch>(data.filePath(u"catalogue.db"_s));
    m_spotPrices = std::make_unique<TServerSpotPrices>(data.filePath(u"spot_prices.json"_s));

    using Method = QHttpServerRequest::Method;
    m_server.route(u"/orv/spot.php"_s, Method::Get, [this](const QHttpServerRequest& request) {
        return Guarded(request, [&] { return Spot(request); });
    });
    m_server.route(u"/orv/search.php"_s, Method::Get, [this](const QHttpServerRequest& request) {
        return Guarded(request, [&] { return Search(request); });
    });
    m_server.route(u"/orv/Images_Thumbs/<arg>"_s, Method::Get,
                   [this](const QString& name, const QHttpServerRequest& request) {
                       return Guarded(request, [&] { return Picture(ThumbsFolder, name, request); });
                   });
    m_server.route(u"/orv/Images_Large/<arg>"_s, Method::Get,
                   [this](const QString& name, const QHttpServerRequest& request) {
                       return Guarded(request, [&] { return Picture(LargeFolder, name, request); });
                   });
    m_server.setMissingHandler([](const QHttpServerRequest& request, QHttpServerResponder&& responder) {
        static const QByteArray body("Not found\n");
        Log(request, 404, body.size());
        responder.write(body, "text/plain", QHttpServerResponder::StatusCode::NotFound);
    });
}

TCatalogueServer::~TCatalogueServer() = default;

// The one place where a failure while answering ends: the client gets a 500, the server goes on.
QHttpServerResponse TCatalogueServer::Guarded(const QHttpServerRequest& request,
                                              const std::function<QHttpServerResponse()>& handler)
{
    try {
        return handler();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "Request failed: %s\n", e.what());
        const QByteArray body("Server failure\n");
        Log(request, 500, body.size());
        return QHttpServerResponse("text/plain", body, QHttpServerResponse::StatusCode::InternalServerError);
    }
}

QSslConfiguration TCatalogueServer::TlsConfiguration() const
{
    TCertificatePem pem;
    if (m_options.CertificateFile.isEmpty()) {
        const QDir tls(QDir(m_options.DataDir).filePath(u"tls"_s));
        pem = LoadOrMakeCertificate(tls.filePath(u"server.crt"_s), tls.filePath(u"server.key"_s));
    } else {
        pem = LoadCertificate(m_options.CertificateFile, m_options.KeyFile);
    }
    const QSslCertificate certificate(pem.Certificate, QSsl::Pem);
    if (certificate.isNull())
        throw ECertificateError(u"The server certificate cannot be read"_s);
    QSslKey key(pem.PrivateKey, QSsl::Ec, QSsl::Pem);
    if (key.isNull())
        key = QSslKey(pem.PrivateKey, QSsl::Rsa, QSsl::Pem);
    if (key.isNull())
        throw ECertificateError(u"The server key cannot be read (RSA or EC in PEM form, not enciphered)"_s);
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(certificate);
    configuration.setPrivateKey(key);
    configuration.setProtocol(QSsl::SecureProtocols);
    return configuration;
}

quint16 TCatalogueServer::Listen()
{
    // Requests the server answers itself (over a limit, idle) go to the access log as "- -".
    const TGuardLog log = [](const QTcpSocket& socket, int status, qint64 bytes) {
        const QByteArray line = QDateTime::currentDateTimeUtc().toString(Qt::ISODate).toUtf8() + ' ' +
                                socket.peerAddress().toString().toUtf8() + " \"- -\" " +
                                QByteArray::number(status) + ' ' + QByteArray::number(bytes) + " \"\"\n";
        std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stdout);
        std::fflush(stdout);
    };
    std::unique_ptr<QTcpServer> listener;
    if (m_options.PlainHttp) {
        listener = std::make_unique<TGuardedTcpServer>(m_options.Limits, log);
    } else {
        auto secure = std::make_unique<TGuardedSslServer>(m_options.Limits, log);
        secure->setSslConfiguration(TlsConfiguration());
        listener = std::move(secure);
    }
    if (!listener->listen(m_options.Address, m_options.Port))
        throw std::runtime_error(u"Cannot listen on %1 port %2: %3"_s.arg(m_options.Address.toString())
                                     .arg(m_options.Port)
                                     .arg(listener->errorString())
                                     .toStdString());
    const quint16 port = listener->serverPort();
    m_server.bind(listener.release()); // the HTTP server owns it from here
    return port;
}

void TCatalogueServer::Log(const QHttpServerRequest& request, int status, qint64 bytes)
{
    static const QMap<QHttpServerRequest::Method, const char*> methods{
        {QHttpServerRequest::Method::Get, "GET"},     {QHttpServerRequest::Method::Post, "POST"},
        {QHttpServerRequest::Method::Put, "PUT"},     {QHttpServerRequest::Method::Delete, "DELETE"},
        {QHttpServerRequest::Method::Head, "HEAD"},   {QHttpServerRequest::Method::Options, "OPTIONS"},
        {QHttpServerRequest::Method::Patch, "PATCH"}, {QHttpServerRequest::Method::Connect, "CONNECT"},
        {QHttpServerRequest::Method::Trace, "TRACE"}};
    const QByteArray target =
        request.url().toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::RemoveFragment);
    QByteArray agent = request.value("User-Agent");
    agent.replace('"', "'");
    const QByteArray line = QDateTime::currentDateTimeUtc().toString(Qt::ISODate).toUtf8() + ' ' +
                            request.remoteAddress().toString().toUtf8() + " \"" +
                            methods.value(request.method(), "?") + ' ' + target + "\" " +
                            QByteArray::number(status) + ' ' + QByteArray::number(bytes) + " \"" + agent +
                            "\"\n";
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stdout);
    std::fflush(stdout);
}

QHttpServerResponse TCatalogueServer::Enciphered(const QJsonArray& reply) const
{
    const QByteArray clear = QJsonDocument(reply).toJson(QJsonDocument::Compact);
    return QHttpServerResponse("application/octet-stream", EncryptBytes(clear, PayloadKeyA, PayloadKeyB));
}

QHttpServerResponse TCatalogueServer::NotFound() const
{
    return QHttpServerResponse("text/plain", QByteArray("Not found\n"),
                               QHttpServerResponse::StatusCode::NotFound);
}

QHttpServerResponse TCatalogueServer::Spot(const QHttpServerRequest& request)
{
    // The client appends its currency setting as it stands.
    QString currency;
    for (const QByteArray& piece : EncodedQuery(request).split('&'))
        if (piece.startsWith("currency=")) {
            currency = QString::fromUtf8(QByteArray::fromPercentEncoding(piece.mid(9)));
            break;
        }
    QHttpServerResponse response = Enciphered(m_spotPrices->ReplyFor(currency));
    Log(request, 200, response.data().size());
    return response;
}

QHttpServerResponse TCatalogueServer::Search(const QHttpServerRequest& request)
{
    QJsonArray results;
    try {
        results = m_search->Search(ParseCatalogueQuery(EncodedQuery(request)));
    } catch (const ECatalogueQueryError& e) {
        // A query the server cannot read finds nothing.
        std::fprintf(stderr, "Malformed query: %s\n", e.what());
    }
    QHttpServerResponse response = Enciphered(results);
    Log(request, 200, response.data().size());
    return response;
}

QHttpServerResponse TCatalogueServer::Picture(const QString& folder, const QString& name,
                                              const QHttpServerRequest& request)
{
    // The raw path must not try to leave the folder in any spelling.
    const QByteArray rawPath = request.url().path(QUrl::FullyEncoded).toUtf8();
    const QString decoded = QUrl::fromPercentEncoding(name.toUtf8());
    const QString root = QDir(m_options.DataDir).filePath(folder);
    const QFileInfo file(QDir(root).filePath(decoded));
    const bool inside = file.absolutePath() == QFileInfo(root).absoluteFilePath();
    if (rawPath.contains('\\') || rawPath.contains("%5C") || rawPath.contains("%5c") ||
        !IsPlainFileName(decoded) || !inside || !file.isFile()) {
        QHttpServerResponse response = NotFound();
        Log(request, 404, response.data().size());
        return response;
    }
    QFile picture(file.absoluteFilePath());
    if (!picture.open(QIODevice::ReadOnly)) {
        QHttpServerResponse response = NotFound();
        Log(request, 404, response.data().size());
        return response;
    }
    const QByteArray mime = decoded.endsWith(u".png"_s, Qt::CaseInsensitive) ? "image/png" : "image/jpeg";
    QHttpServerResponse response(mime, picture.readAll());
    Log(request, 200, response.data().size());
    return response;
}
