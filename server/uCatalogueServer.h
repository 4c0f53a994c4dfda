#pragma once

// The reference catalogue server: spot prices and catalogue search, enciphered, and the picture
// stores, over HTTPS (or plain HTTP for tests) on Qt HttpServer.

#include "uCatalogueSearch.h"
#include "uRequestGuard.h"
#include "uServerSpotPrices.h"

#include <QHostAddress>
#include <QHttpServer>
#include <QObject>
#include <QSslConfiguration>

#include <functional>
#include <memory>

struct TCatalogueServerOptions
{
    QString DataDir;
    QHostAddress Address = QHostAddress::LocalHost;
    quint16 Port = 0; // 0: any free port
    bool PlainHttp = false;
    QString CertificateFile; // empty: the self-signed one of the data folder
    QString KeyFile;
    TRequestLimits Limits;
};

class TCatalogueServer : public QObject
{
    Q_OBJECT

public:
    // Loads the catalogue and the prices; raises on a missing or broken data folder.
    explicit TCatalogueServer(const TCatalogueServerOptions& options, QObject* parent = nullptr);
    ~TCatalogueServer() override;

    // Sets up TLS when asked and starts listening; returns the port. Raises on failure.
    quint16 Listen();

    int ProductCount() const { return m_search->ProductCount(); }

private:
    QHttpServerResponse Spot(const QHttpServerRequest& request);
    QHttpServerResponse Search(const QHttpServerRequest& request);
    QHttpServerResponse Picture(const QString& folder, const QString& name,
                                const QHttpServerRequest& request);
    QHttpServerResponse Enciphered(const QJsonArray& reply) const;
    QHttpServerResponse NotFound() const;
    QSslConfiguration TlsConfiguration() const;
    static QHttpServerResponse Guarded(const QHttpServerRequest& request,
                                       const std::function<QHttpServerResponse()>& handler);
    static void Log(const QHttpServerRequest& request, int status, qint64 bytes);

    TCatalogueServerOptions m_options;
    std::unique_ptr<TCatalogueSearch> m_search;
    std::unique_ptr<TServerSpotPrices> m_spotPrices;
    QHttpServer m_server;
};
