// New spot prices on a large collection: refreshes against a server on 127.0.0.1 (a worker thread,
// the transfer, the deciphering, the blocking hand-over to the main thread and the parse), each with
// new prices, while the collection's items are open as the main window opens them. Per refresh:
// from the reply's arrival on the main thread until every value of every item is current, and from
// the request until then; meanwhile the longest gap between ticks of a 1 ms timer on the main thread.
// In each round, bare sqlite3 loops over the file and over its blob-free copy give the scale.
//
//   bench_spot [file.db] [runs=5]      (the file as bench_items_gen writes it; default: no collection)

#include "bench_common.h"
#include "dmInternalData.h"
#include "support_httpserver.h"
#include "uMainController.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uSpot.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

QByteArray SixMetals(double factor)
{
    const char* codes[] = {"XAU", "XAG", "XPT", "XPD", "XRH", "XCU"};
    const double prices[] = {2350.5, 29.1, 1010, 980, 4700, 0.29};
    QByteArray json = "[";
    for (int i = 0; i < 6; ++i) {
        if (i > 0)
            json += ',';
        json += QStringLiteral(R"({"BaseCurrency":"%1","Price":%2,"DateC":"2026-11-20 10:00:00",)"
                               R"("ChangeAbs":-1.25,"ChangePerc":"-0.06","Unit":"oz"})")
                    .arg(QString::fromLatin1(codes[i]))
                    .arg(prices[i] * factor, 0, 'f', 4)
                    .toUtf8();
    }
    return json + ']';
}

// Deciphering and parsing one reply, without the network: microseconds per reply.
void OfflineWork(const QByteArray& clear, int runs)
{
    const QByteArray body = EncryptBytes(clear, PayloadKeyA, PayloadKeyB);
    const int rounds = 2000;
    TSpotPrices list;
    const QString text = QString::fromUtf8(clear);
    const std::vector<double> decipher = TimeRuns(runs, [&] {
        for (int i = 0; i < rounds; ++i)
            DecryptBytes(body, PayloadKeyA, PayloadKeyB);
    });
    const std::vector<double> parse = TimeRuns(runs, [&] {
        for (int i = 0; i < rounds; ++i)
            list.LoadFromText(text, u"USD"_s);
    });
    const auto perReply = [rounds](std::vector<double> times) {
        for (double& t : times)
            t = t * 1000.0 / rounds;
        return StatsOf(times);
    };
    std::printf("reply of %lld bytes clear, %lld enciphered\n", static_cast<long long>(clear.size()),
                static_cast<long long>(body.size()));
    std::printf("  decipher (key derivation included): %s\n",
                qPrintable(StatsText(perReply(decipher), u"us"_s, 2)));
    std::printf("  parse into the list:                 %s\n",
                qPrintable(StatsText(perReply(parse), u"us"_s, 2)));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    const QString path = args.value(0);
    const int runs = std::max(3, args.value(1, u"5"_s).toInt());
    // The catalogue server's address goes through the settings key, in a store of our own.
    QStandardPaths::setTestModeEnabled(true);
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/config")).toLocal8Bit());
    SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER,
                                                           QStringLiteral("Software\\Brenmoor\\Orvane")));
    Currency = QStringLiteral("USD");
    LoadBuiltInLanguage(u"ENGLISHLANG"_s, u"English"_s);

    OfflineWork(SixMetals(1.0), runs);

    TTestHttpServer server;
    if (!server.IsListening()) {
        std::fprintf(stderr, "the local server did not start\n");
        return 1;
    }
    SettingsStore().SetStringValue(QStringLiteral("CatalogueServer"), QString(), server.BaseURL());

    TDM_InternalData dm;
    TMainController controller(&dm, nullptr);
    QString floor;
    if (!path.isEmpty()) {
        floor = BlobFreeCopy(path);
        if (floor.isEmpty() || !dm.ConnectDatabase(path)) {
            std::fprintf(stderr, "cannot open %s\n", qPrintable(path));
            return 1;
        }
    }
    std::printf("collection: %s, %d items\n", path.isEmpty() ? "none" : qPrintable(path),
                dm.Connected() ? dm.qDS_Items->recordCount() : 0);

    // As the main window's handler: buttons aside, the values follow the prices.
    QElapsedTimer clock;
    qint64 arrivedNs = 0;
    qint64 currentNs = 0;
    SpotPrices().OnLoaded = [&](TSpotPrices*) {
        arrivedNs = clock.nsecsElapsed();
        controller.RefreshItemsForNewPrices();
        currentNs = clock.nsecsElapsed();
    };

    qint64 lastTick = 0;
    qint64 longest = 0;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        longest = std::max(longest, now - lastTick);
        lastTick = now;
    });

    std::vector<double> arrivalToCurrent, requestToCurrent, stalls, bareFile, bareFloor, ratio;
    TDBField* total = dm.Connected() ? &dm.qDS_Items->fieldByName(u"LiquidationValuexQty"_s) : nullptr;
    for (int round = 0; round <= runs; ++round) { // round 0 warms up
        if (!path.isEmpty()) {
            bareFile.push_back(BareItemsLoop(path));
            bareFloor.push_back(BareItemsLoop(floor));
        }
        server.SetReply("/orv/spot.php",
                        {200, EncryptBytes(SixMetals(1.0 + 0.01 * round), PayloadKeyA, PayloadKeyB), {}});
        const double before = total ? total->asFloat() : 0.0;
        clock.start();
        lastTick = 0;
        longest = 0;
        arrivedNs = currentNs = 0;
        ticker.start(1);
        SpotPrices().Refresh();
        while (SpotPrices().Busy && clock.elapsed() < 60000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        ticker.stop();
        if (currentNs == 0 || (total && total->asFloat() == before)) {
            std::fprintf(stderr, "round %d: the values did not follow the prices\n", round);
            return 1;
        }
        if (round == 0)
            continue;
        arrivalToCurrent.push_back(double(currentNs - arrivedNs) / 1e6);
        requestToCurrent.push_back(double(currentNs) / 1e6);
        stalls.push_back(double(longest) / 1e6);
        if (!path.isEmpty())
            ratio.push_back(arrivalToCurrent.back() / bareFloor.back());
    }
    std::printf("%d refreshes, each with new prices\n", runs);
    std::printf("  reply's arrival to all values current: %s\n",
                qPrintable(StatsText(StatsOf(arrivalToCurrent))));
    std::printf("  request to all values current:         %s\n",
                qPrintable(StatsText(StatsOf(requestToCurrent))));
    std::printf("  longest main-thread stall:             %s\n", qPrintable(StatsText(StatsOf(stalls))));
    if (!path.isEmpty()) {
        std::printf("  bare loop over the file:               %s\n",
                    qPrintable(StatsText(StatsOf(bareFile))));
        std::printf("  bare loop over the blob-free copy:     %s\n",
                    qPrintable(StatsText(StatsOf(bareFloor))));
        std::printf("  arrival to current / floor, per round: %s\n",
                    qPrintable(StatsText(StatsOf(ratio), u"x"_s, 3)));
    }
    SpotPrices().OnLoaded = nullptr;
    SetSettingsStore(nullptr);
    return 0;
}
