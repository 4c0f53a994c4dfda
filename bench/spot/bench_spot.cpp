// The spot price refresh. First the work of one reply without the network: deciphering a reply of
// the six metals, and parsing it into the list. Then whole refreshes, one after the other, against
// a server on 127.0.0.1 (a worker thread, the transfer, the deciphering, the blocking hand-over and
// the parse), with the longest gap between ticks of a 1 ms timer on the main thread meanwhile.

#include "support_httpserver.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uSpot.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {

QByteArray SixMetals()
{
    const char* codes[] = {"XAU", "XAG", "XPT", "XPD", "XRH", "XCU"};
    QByteArray json = "[";
    for (int i = 0; i < 6; ++i) {
        if (i > 0)
            json += ',';
        json += QStringLiteral(R"({"BaseCurrency":"%1","Price":%2,"DateC":"2026-11-20 10:00:00",)"
                               R"("ChangeAbs":-1.25,"ChangePerc":"-0.06","Unit":"oz"})")
                    .arg(QString::fromLatin1(codes[i]))
                    .arg(1000.0 + i * 123.45)
                    .toUtf8();
    }
    return json + ']';
}

void OfflineWork(const QByteArray& clear)
{
    const QByteArray body = EncryptBytes(clear, PayloadKeyA, PayloadKeyB);
    const int rounds = 20000;
    QElapsedTimer clock;
    clock.start();
    qint64 bytes = 0;
    for (int i = 0; i < rounds; ++i)
        bytes += DecryptBytes(body, PayloadKeyA, PayloadKeyB).size();
    const qint64 decipherNs = clock.nsecsElapsed();

    TSpotPrices list;
    const QString text = QString::fromUtf8(clear);
    clock.restart();
    for (int i = 0; i < rounds; ++i)
        list.LoadFromText(text, QStringLiteral("USD"));
    const qint64 parseNs = clock.nsecsElapsed();
    std::printf("reply of %lld bytes clear, %lld enciphered; %d rounds (%lld bytes out)\n",
                static_cast<long long>(clear.size()), static_cast<long long>(body.size()), rounds,
                static_cast<long long>(bytes));
    std::printf("  decipher (key derivation included): %.2f us per reply\n",
                static_cast<double>(decipherNs) / rounds / 1000.0);
    std::printf("  parse into the list:                 %.2f us per reply (%d entries)\n",
                static_cast<double>(parseNs) / rounds / 1000.0, list.Count());
}

void Refreshes(int count)
{
    TSpotPrices list;
    int loaded = 0;
    list.OnLoaded = [&loaded](TSpotPrices*) { ++loaded; };

    QElapsedTimer tickClock;
    qint64 lastTick = 0;
    qint64 longest = 0;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = tickClock.nsecsElapsed() / 1000;
        longest = std::max(longest, now - lastTick);
        lastTick = now;
    });

    QElapsedTimer wall;
    QList<qint64> each;
    wall.start();
    tickClock.start();
    ticker.start(1);
    for (int i = 0; i < count; ++i) {
        QElapsedTimer one;
        one.start();
        list.Refresh();
        while (list.Busy && wall.elapsed() < 120000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        each.append(one.nsecsElapsed() / 1000);
    }
    ticker.stop();
    std::sort(each.begin(), each.end());
    std::printf("%d refreshes in a row: wall %lld ms, %d parsed; per refresh median %.2f ms, "
                "worst %.2f ms; longest main-thread stall %.2f ms\n",
                count, static_cast<long long>(wall.elapsed()), loaded,
                static_cast<double>(each.at(each.size() / 2)) / 1000.0,
                static_cast<double>(each.last()) / 1000.0, static_cast<double>(longest) / 1000.0);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    // The catalogue server's address goes through the settings key, in a store of our own.
    QStandardPaths::setTestModeEnabled(true);
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/config")).toLocal8Bit());
    SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER,
                                                           QStringLiteral("Software\\Brenmoor\\Orvane")));
    Currency = QStringLiteral("USD");

    const QByteArray clear = SixMetals();
    OfflineWork(clear);

    TTestHttpServer server;
    if (!server.IsListening()) {
        std::fprintf(stderr, "the local server did not start\n");
        return 1;
    }
    SettingsStore().SetStringValue(QStringLiteral("CatalogueServer"), QString(), server.BaseURL());
    server.SetReply("/orv/spot.php", {200, EncryptBytes(clear, PayloadKeyA, PayloadKeyB), {}});
    Refreshes(5); // warm-up
    for (int round = 1; round <= 3; ++round)
        Refreshes(100);
    SetSettingsStore(nullptr);
    return 0;
}
