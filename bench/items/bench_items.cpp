// The item collection at scale: how the file is laid out, opening qDS_Items (with its per-record
// rules, as ConnectDatabase opens it), new spot prices reaching every value, the full re-read kept
// for the refresh command, and memory. Every timing is taken `runs` times, interleaved with two
// bare sqlite3 loops over the same statement: one over the file itself and one over a blob-free copy
// of it (the floor of reading a collection). Ratios are taken round by round, within one run.
//
// Usage: bench_items [file.db] [runs=5]
//   A missing file is first written by bench_items_gen (beside this program) with 100,000 items.

#include "bench_items_common.h"
#include "dmInternalData.h"
#include "uMainController.h"
#include "uSpot.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTextStream>

#include <sqlite3.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// First column of the first row of a statement on the file, or an empty text.
QString SelectText(const QString& path, const char* sql)
{
    sqlite3* db = nullptr;
    QString value;
    if (sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_stmt* stmt = nullptr;
        if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW)
            value = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)));
        sqlite3_finalize(stmt);
    }
    sqlite3_close(db);
    return value;
}

void SetPrices(const double (&prices)[MetalCount], double factor)
{
    SpotPrices().Clear();
    for (int m = 0; m < MetalCount; ++m)
        SpotPrices().Add({m, prices[m] * factor, u"USD"_s, QString(), 1, QString()});
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const QStringList args = app.arguments().mid(1);
    const QString path = args.value(0, QDir::temp().filePath(u"orv_bench_items.db"_s));
    const int runs = std::max(3, args.value(1, u"5"_s).toInt());

    if (!QFileInfo::exists(path)) {
        out << u"Writing 100000 items to %1 ..."_s.arg(path) << Qt::endl;
        QProcess gen;
        gen.setProcessChannelMode(QProcess::ForwardedChannels);
        gen.start(QDir(app.applicationDirPath()).filePath(u"bench_items_gen"_s), {path});
        if (!gen.waitForFinished(-1) || gen.exitCode() != 0) {
            out << "bench_items_gen failed" << Qt::endl;
            return 1;
        }
    }

    try {
        LoadBuiltInLanguage(u"ENGLISHLANG"_s, u"English"_s);
        const QString floor = BlobFreeCopy(path);
        if (floor.isEmpty()) {
            out << "Cannot make the blob-free copy of " << path << Qt::endl;
            return 1;
        }
        const qint64 items = SelectText(path, "SELECT COUNT(*) FROM tblCoins").toLongLong();
        const qint64 withoutPhotos =
            SelectText(path, "SELECT COUNT(*) FROM tblCoins WHERE PhotoFront IS NULL AND PhotoBack IS NULL")
                .toLongLong();
        out << u"File: %1, %2 MiB, %3 items (%4 without photos), %5 bytes of file per item"_s.arg(path)
                   .arg(double(GetFileSize(path)) / (1024.0 * 1024.0), 0, 'f', 1)
                   .arg(items)
                   .arg(withoutPhotos)
                   .arg(items ? GetFileSize(path) / items : 0)
            << Qt::endl;
        const QString pages = SelectText(path, "SELECT COUNT(*) || ' leaf, ' || "
                                               "(SELECT COUNT(*) FROM dbstat WHERE name = 'tblCoins' AND "
                                               "pagetype = 'overflow') || ' overflow' FROM dbstat "
                                               "WHERE name = 'tblCoins' AND pagetype = 'leaf'");
        out << u"Pages of tblCoins: %1; page size %2; blob-free floor copy %3 MiB"_s
                   .arg(pages.isEmpty() ? u"(no dbstat)"_s : pages, SelectText(path, "PRAGMA page_size"))
                   .arg(double(GetFileSize(floor)) / (1024.0 * 1024.0), 0, 'f', 1)
            << Qt::endl;

        BareItemsLoop(path); // warm the file cache
        BareItemsLoop(floor);

        const double anonymousBefore = AnonymousResidentMiB();
        TDM_InternalData dm;
        dm.TranslateFieldLabels();
        TMainController controller(&dm, nullptr);
        QElapsedTimer timer;
        timer.start();
        if (!dm.ConnectDatabase(path)) {
            out << "Cannot open " << path << Qt::endl;
            return 1;
        }
        const double firstConnect = double(timer.nsecsElapsed()) / 1e6;
        const double anonymousOpen = AnonymousResidentMiB();

        const double prices[MetalCount] = {2350.5, 29.1, 1010, 980, 4700, 0.29};
        TDBDataset& ds = *dm.qDS_Items;
        const int valueIndex = ds.fieldByName(u"LiquidationValuexQty"_s).index();
        const int captionIndex = ds.fieldByName(u"Caption"_s).index();
        std::vector<double> bareFile, bareFloor, open, openRatio, openFileRatio, revalue, refresh, walk;
        double total = 0;
        for (int round = 0; round < runs; ++round) {
            bareFile.push_back(BareItemsLoop(path));
            bareFloor.push_back(BareItemsLoop(floor));
            open.push_back(TimeRuns(1, [&] {
                               ds.close();
                               ds.open();
                           }).front());
            openRatio.push_back(open.back() / bareFloor.back());
            openFileRatio.push_back(open.back() / bareFile.back());
            // New prices each round, so that every value changes.
            SetPrices(prices, 1.0 + 0.01 * (round + 1));
            revalue.push_back(TimeRuns(1, [&] { controller.RefreshItemsForNewPrices(); }).front());
            refresh.push_back(TimeRuns(1, [&] { dm.RefreshItems(); }).front());
            walk.push_back(TimeRuns(1, [&] {
                               total = 0;
                               qint64 chars = 0;
                               for (int r = 0; r < ds.recordCount(); ++r) {
                                   total += ds.valueAt(r, valueIndex).toDouble();
                                   chars += ds.valueAt(r, captionIndex).toString().size();
                               }
                               Q_UNUSED(chars);
                           }).front());
        }
        const auto line = [&out](const QString& what, const std::vector<double>& times) {
            out << qSetFieldWidth(44) << Qt::left << what << qSetFieldWidth(0) << StatsText(StatsOf(times))
                << Qt::endl;
        };
        out << u"%1 rounds; first ConnectDatabase %2 ms"_s.arg(runs).arg(firstConnect, 0, 'f', 1) << Qt::endl;
        line(u"Bare loop over the file"_s, bareFile);
        line(u"Bare loop over the blob-free copy (floor)"_s, bareFloor);
        line(u"qDS_Items open, per-record rules"_s, open);
        out << qSetFieldWidth(44) << Qt::left << u"  ratio to the floor (same round)"_s << qSetFieldWidth(0)
            << StatsText(StatsOf(openRatio), u"x"_s, 2) << Qt::endl;
        out << qSetFieldWidth(44) << Qt::left << u"  ratio to the bare loop over the file"_s
            << qSetFieldWidth(0) << StatsText(StatsOf(openFileRatio), u"x"_s, 2) << Qt::endl;
        line(u"New spot prices to all values current"_s, revalue);
        line(u"Full re-read (RefreshItems)"_s, refresh);
        line(u"Reading 2 fields of every row"_s, walk);
        out << u"Total liquidation value %1"_s.arg(total, 0, 'f', 0) << Qt::endl;
        out << u"Memory: private %1 MiB before the open, %2 MiB after it; peak resident %3 MiB (VmHWM, "
               "mapped file pages included)"_s.arg(anonymousBefore, 0, 'f', 0)
                   .arg(anonymousOpen, 0, 'f', 0)
                   .arg(PeakResidentMiB(), 0, 'f', 0)
            << Qt::endl;
    } catch (const std::exception& e) {
        out << u"Failed: "_s << QString::fromUtf8(e.what()) << Qt::endl;
        return 1;
    }
    return 0;
}
