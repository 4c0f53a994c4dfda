// Start-up of the real program with a collection, the spot server up, on the offscreen platform.
//
//   bench_startup [file.db] [runs=3]
//
// Each run starts bin/orvane as a new process, in a settings home of its own whose DBPath names the
// collection and whose CatalogueServer is a local server answering the spot request. A probe loaded
// into the program (LD_PRELOAD, see startup_probe.cpp) reports the first paint of the main window,
// the first paint that lists the items, and the first paint of a spot price, after which the values
// have followed the prices; then it closes the window and the program ends normally. Times are from
// the start of the process (before exec). Two set-ups: no collection, and the file. In each run, bare
// sqlite3 loops over the file and over its blob-free copy give the scale of reading it.

#include "bench_common.h"
#include "support_httpserver.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uZTRegistrySettings.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <map>

using namespace Qt::StringLiterals;

namespace {

const QString cRoot = u"Software\\Brenmoor\\Orvane"_s;

qint64 MonotonicNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000000LL + now.tv_nsec;
}

qint64 ItemCount(const QString& path)
{
    sqlite3* db = nullptr;
    qint64 count = -1;
    if (sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_stmt* stmt = nullptr;
        if (sqlite3_prepare_v2(db, "SELECT COUNT(*) FROM tblCoins", -1, &stmt, nullptr) == SQLITE_OK &&
            sqlite3_step(stmt) == SQLITE_ROW)
            count = sqlite3_column_int64(stmt, 0);
        sqlite3_finalize(stmt);
    }
    sqlite3_close(db);
    return count;
}

QByteArray SpotReply()
{
    const QByteArray clear =
        R"([{"BaseCurrency":"XAU","Price":2350.5,"DateC":"2026-11-20 10:00","ChangeAbs":1,"ChangePerc":"0.1"},)"
        R"({"BaseCurrency":"XAG","Price":29.1,"DateC":"2026-11-20 10:00","ChangeAbs":-1,"ChangePerc":"-0.1"}])";
    return EncryptBytes(clear, PayloadKeyA, PayloadKeyB);
}

// One start of the program: the milestones in milliseconds from the spawn ("paint", "listed",
// "priced", "exit"); empty when the run failed.
std::map<QString, double> RunProgram(const QString& dbPath, qint64 items, const QString& server)
{
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + u"/config"_s).toLocal8Bit());
    {
        TZTRegistrySettings store(cHKEY_CURRENT_USER, cRoot);
        store.SetStringValue(u"DBPath"_s, QString(), dbPath);
        store.SetStringValue(u"CatalogueServer"_s, QString(), server);
    }
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    env.insert(u"LD_PRELOAD"_s, QStringLiteral(ORV_STARTUP_PROBE));
    env.insert(u"ORV_PROBE_ITEMS"_s, QString::number(items));
    const QString runtime = home.filePath(u"runtime"_s);
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    env.insert(u"XDG_RUNTIME_DIR"_s, runtime);

    QProcess child;
    child.setProcessEnvironment(env);
    child.setProcessChannelMode(QProcess::SeparateChannels); // its warnings are shown only if it fails
    const qint64 spawn = MonotonicNs();
    child.start(QStringLiteral(ORV_PROGRAM), {});
    std::map<QString, double> at;
    while (at.size() < 3 && child.waitForReadyRead(60000)) {
        while (child.canReadLine()) {
            const QList<QByteArray> parts = child.readLine().trimmed().split(' ');
            if (parts.size() == 2)
                at[QString::fromLatin1(parts[0])] = double(parts[1].toLongLong() - spawn) / 1e6;
        }
    }
    if (!child.waitForFinished(60000)) {
        child.kill();
        child.waitForFinished();
        return {};
    }
    at[u"exit"_s] = double(MonotonicNs() - spawn) / 1e6;
    if (child.exitCode() != 0 || at.size() < 4) {
        std::fprintf(stderr, "%s\n", child.readAllStandardError().constData());
        return {};
    }
    return at;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    const QString file = args.value(0);
    const int runs = std::max(3, args.value(1, u"3"_s).toInt());
    if (!file.isEmpty() && !QFileInfo::exists(file)) {
        std::fprintf(stderr, "usage: bench_startup [file.db] [runs=3]\n");
        return 2;
    }

    TTestHttpServer server;
    if (!server.IsListening()) {
        std::fprintf(stderr, "the local server did not start\n");
        return 1;
    }
    server.SetReply("/orv/spot.php", {200, SpotReply(), {}});
    const QString floor = file.isEmpty() ? QString() : BlobFreeCopy(file);
    const qint64 items = file.isEmpty() ? 0 : ItemCount(file);

    struct TSetup
    {
        QString Name;
        QString Path;
        qint64 Items;
    };
    std::vector<TSetup> setups = {{u"no collection"_s, QString(), 0}};
    if (!file.isEmpty())
        setups.push_back({u"%1 items"_s.arg(items), file, items});

    std::printf("program %s, %d runs per set-up, spot server %s\n", ORV_PROGRAM, runs,
                qPrintable(server.BaseURL()));
    for (const TSetup& setup : setups) {
        std::map<QString, std::vector<double>> times;
        std::vector<double> bareFile, bareFloor, listedRatio;
        RunProgram(setup.Path, setup.Items, server.BaseURL()); // warms the caches
        for (int run = 0; run < runs; ++run) {
            if (!setup.Path.isEmpty()) {
                bareFile.push_back(BareItemsLoop(setup.Path));
                bareFloor.push_back(BareItemsLoop(floor));
            }
            const std::map<QString, double> at = RunProgram(setup.Path, setup.Items, server.BaseURL());
            if (at.empty()) {
                std::fprintf(stderr, "run failed (%s)\n", qPrintable(setup.Name));
                return 1;
            }
            for (const auto& [what, ms] : at)
                times[what].push_back(ms);
            if (!setup.Path.isEmpty())
                listedRatio.push_back(at.at(u"listed"_s) / bareFloor.back());
        }
        std::printf("%s\n", qPrintable(setup.Name));
        std::printf("  start to first paint:             %s\n",
                    qPrintable(StatsText(StatsOf(times[u"paint"_s]))));
        std::printf("  start to items listed:            %s\n",
                    qPrintable(StatsText(StatsOf(times[u"listed"_s]))));
        std::printf("  start to spot values shown:       %s\n",
                    qPrintable(StatsText(StatsOf(times[u"priced"_s]))));
        std::printf("  start to exit (close, settings):  %s\n",
                    qPrintable(StatsText(StatsOf(times[u"exit"_s]))));
        if (!setup.Path.isEmpty()) {
            std::printf("  bare loop over the file:          %s\n", qPrintable(StatsText(StatsOf(bareFile))));
            std::printf("  bare loop over the blob-free copy: %s\n",
                        qPrintable(StatsText(StatsOf(bareFloor))));
            std::printf("  items listed / floor, per run:    %s\n",
                        qPrintable(StatsText(StatsOf(listedRatio), u"x"_s, 2)));
        }
    }
    return 0;
}
