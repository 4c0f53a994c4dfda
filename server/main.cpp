// orvane-catalogue: the reference catalogue server.

#include "uCatalogueServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

int SignalFds[2] = {-1, -1};

void OnSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(SignalFds[0], &byte, 1);
}

// SIGINT and SIGTERM end the event loop, so the server shuts down in order.
void QuitOnSignals(QCoreApplication& app)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, SignalFds) != 0)
        return;
    auto* notifier = new QSocketNotifier(SignalFds[1], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [] { QCoreApplication::quit(); });
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

int Run(QCoreApplication& app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(u"The Orvane reference catalogue server: enciphered spot prices and "
                                     u"catalogue search, and the picture "
                                     "stores, over HTTPS."_s);
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption portOption(u"port"_s, u"Port to listen on; 0 picks a free one (default 0)."_s,
                                        u"port"_s, u"0"_s);
    const QCommandLineOption listenOption(u"listen"_s, u"Address to listen on (default 127.0.0.1)."_s,
                                          u"address"_s, u"127.0.0.1"_s);
    const QCommandLineOption dataOption(
        u"data"_s,
        u"Data folder: catalogue.db, spot_prices.json, Images_Thumbs, Images_Large (default: data "
        "beside the executable)."_s,
        u"folder"_s);
    const QCommandLineOption certOption(u"cert"_s,
                                        u"TLS certificate (PEM). Default: a self-signed one made in "
                                        "<data>/tls at the first start."_s,
                                        u"file"_s);
    const QCommandLineOption keyOption(u"key"_s, u"Private key of --cert (PEM, not enciphered)."_s,
                                       u"file"_s);
    const QCommandLineOption httpOption(u"http"_s, u"Plain HTTP instead of HTTPS (for tests)."_s);
    const QCommandLineOption idleOption(
        u"idle-timeout"_s,
        u"Seconds after which a connection without a complete request is closed (default 30)."_s,
        u"seconds"_s, u"30"_s);
    parser.addOptions({portOption, listenOption, dataOption, certOption, keyOption, httpOption, idleOption});
    parser.process(app);

    TCatalogueServerOptions options;
    options.DataDir = parser.isSet(dataOption)
                          ? parser.value(dataOption)
                          : QDir(QCoreApplication::applicationDirPath()).filePath(u"data"_s);
    bool ok = false;
    const uint port = parser.value(portOption).toUInt(&ok);
    if (!ok || port > 65535)
        throw std::runtime_error("--port needs a number from 0 to 65535");
    options.Port = static_cast<quint16>(port);
    options.Address = QHostAddress(parser.value(listenOption));
    if (options.Address.isNull())
        throw std::runtime_error("--listen needs an IP address");
    options.PlainHttp = parser.isSet(httpOption);
    const uint idleSeconds = parser.value(idleOption).toUInt(&ok);
    if (!ok || idleSeconds < 1 || idleSeconds > 3600)
        throw std::runtime_error("--idle-timeout needs a number of seconds from 1 to 3600");
    options.Limits.IdleTimeoutMs = static_cast<int>(idleSeconds * 1000);
    options.CertificateFile = parser.value(certOption);
    options.KeyFile = parser.value(keyOption);
    if (options.CertificateFile.isEmpty() != options.KeyFile.isEmpty())
        throw std::runtime_error("--cert and --key go together");

    TCatalogueServer server(options);
    const quint16 actualPort = server.Listen();
    const QString scheme = options.PlainHttp ? u"http"_s : u"https"_s;
    const QString host = options.Address.protocol() == QAbstractSocket::IPv6Protocol
                             ? u"["_s + options.Address.toString() + u"]"_s
                             : options.Address.toString();
    std::printf("orvane-catalogue listening on %s://%s:%u/ with %d products from %s\n", qPrintable(scheme),
                qPrintable(host), static_cast<unsigned>(actualPort), server.ProductCount(),
                qPrintable(QDir(options.DataDir).absolutePath()));
    std::fflush(stdout);
    QuitOnSignals(app);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(u"orvane-catalogue"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(ORV_VERSION_TEXT));
    try {
        return Run(app);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "orvane-catalogue: %s\n", e.what());
        return 1;
    }
}
