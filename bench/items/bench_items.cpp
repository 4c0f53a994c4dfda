// Opening a large collection: qDS_Items with its calculated fields against a bare SQLite loop
// over the same statement, a re-read after new spot prices, and the thumbnail of a camera photo.
//
// Usage: bench_items [file.db] [items=100000]
//   A missing file is first written by bench_items_gen (beside this program), in its own process.

#include "bench_items_common.h"
#include "dmInternalData.h"
#include "uSpot.h"
#include "uThumbnail.h"
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

// The item statement over the non-blob columns of tblCoins, as the dataset runs it.
QByteArray BareStatement(sqlite3* db)
{
    QStringList columns;
    sqlite3_stmt* info = nullptr;
    sqlite3_prepare_v2(db, "SELECT name, type FROM pragma_table_info('tblCoins')", -1, &info, nullptr);
    while (sqlite3_step(info) == SQLITE_ROW) {
        const QString type = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(info, 1)));
        if (!type.contains(u"BLOB"_s, Qt::CaseInsensitive))
            columns.append(u"\""_s +
                           QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(info, 0))) +
                           u"\""_s);
    }
    sqlite3_finalize(info);
    return (u"SELECT "_s + columns.join(u", "_s) +
            u", Price / (WeightG / 31.1035), WeightG * Qty, WeightG * Qty / 31.1035, Price * Qty, "
            "strftime('%Y', PurchaseDate), strftime('%Y-%m', PurchaseDate) FROM tblCoins C"_s)
        .toUtf8();
}

// Steps the statement once through, touching every value as a reader would. Returns the rows.
qint64 BareLoop(const QString& path, double* checksum)
{
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr);
    const QByteArray sql = BareStatement(db);
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db, sql.constData(), -1, &stmt, nullptr) != SQLITE_OK) {
        sqlite3_close(db);
        return -1;
    }
    const qint64 rows = StepAllColumns(stmt, checksum);
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    return rows;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const QStringList args = app.arguments().mid(1);
    const QString path = args.value(0, QDir::temp().filePath(u"orv_bench_items.db"_s));
    const int count = args.size() > 1 ? args.at(1).toInt() : 100000;

    if (!QFileInfo::exists(path)) {
        out << u"Writing %1 items to %2 ..."_s.arg(count).arg(path) << Qt::endl;
        QProcess gen;
        gen.setProcessChannelMode(QProcess::ForwardedChannels);
        gen.start(QDir(app.applicationDirPath()).filePath(u"bench_items_gen"_s),
                  {path, QString::number(count)});
        if (!gen.waitForFinished(-1) || gen.exitCode() != 0) {
            out << "bench_items_gen failed" << Qt::endl;
            return 1;
        }
    }

    try {
        LoadBuiltInLanguage(u"ENGLISHLANG"_s, u"English"_s);
        out << u"File: %1, %2 MiB"_s.arg(path).arg(double(GetFileSize(path)) / (1024.0 * 1024.0), 0, 'f', 1)
            << Qt::endl;

        // Warm the file cache, then time the bare loop.
        double checksum = 0;
        qint64 rows = BareLoop(path, &checksum);
        const double bare = 1e-3 * MedianMs(5, [&] { rows = BareLoop(path, &checksum); });
        out << u"Bare sqlite3 loop:            %1 rows in %2 ms"_s.arg(rows).arg(bare * 1000, 0, 'f', 1)
            << Qt::endl;

        const double before = CurrentMemoryMiB();
        TDM_InternalData dm;
        dm.TranslateFieldLabels();
        QElapsedTimer timer;
        timer.start();
        if (!dm.ConnectDatabase(path)) {
            out << "Cannot open " << path << Qt::endl;
            return 1;
        }
        const double connect = double(timer.nsecsElapsed()) / 1e9;
        const double open = 1e-3 * MedianMs(3, [&] {
            dm.qDS_Items->close();
            dm.qDS_Items->open();
        });
        const double afterOpen = CurrentMemoryMiB();
        // The same without the record rules, to show what the calculated fields cost.
        dm.qDS_Items->setOnCalcFields({});
        dm.qDS_Items->setOnReadRecord({});
        const double openPlain = 1e-3 * MedianMs(3, [&] {
            dm.qDS_Items->close();
            dm.qDS_Items->open();
        });
        dm.qDS_Items->setOnCalcFields([&dm](TDBDataset& ds) { dm.qDS_ItemsCalcFields(ds); });
        dm.qDS_Items->setOnReadRecord([&dm](TDBDataset& ds) { dm.qDS_ItemsReadRecord(ds); });
        dm.qDS_Items->close();
        dm.qDS_Items->open();
        out << u"ConnectDatabase (mints + items): %1 ms"_s.arg(connect * 1000, 0, 'f', 1) << Qt::endl;
        out << u"qDS_Items open, calc fields:  %1 rows in %2 ms = %3 x the bare loop"_s
                   .arg(dm.qDS_Items->recordCount())
                   .arg(open * 1000, 0, 'f', 1)
                   .arg(open / bare, 0, 'f', 2)
            << Qt::endl;
        out << u"  of which calculated fields: %1 ms (open without them %2 ms = %3 x)"_s
                   .arg((open - openPlain) * 1000, 0, 'f', 1)
                   .arg(openPlain * 1000, 0, 'f', 1)
                   .arg(openPlain / bare, 0, 'f', 2)
            << Qt::endl;

        // New spot prices, then the re-read that makes the calculated fields follow them.
        const double prices[MetalCount] = {2350.5, 29.1, 1010, 980, 4700, 0.29};
        for (int m = 0; m < MetalCount; ++m)
            SpotPrices().Add({m, prices[m], u"USD"_s, QString(), 1, QString()});
        const double refresh = 1e-3 * MedianMs(3, [&] { dm.RefreshItems(); });
        out << u"RefreshItems after new spot:  %1 ms"_s.arg(refresh * 1000, 0, 'f', 1) << Qt::endl;

        // Walking the records as a view would, reading what the list shows.
        double total = 0;
        qint64 captionChars = 0;
        timer.restart();
        TDBField& value = dm.qDS_Items->fieldByName(u"LiquidationValuexQty"_s);
        TDBField& caption = dm.qDS_Items->fieldByName(u"Caption"_s);
        const int valueIndex = value.index();
        const int captionIndex = caption.index();
        for (int r = 0; r < dm.qDS_Items->recordCount(); ++r) {
            total += dm.qDS_Items->valueAt(r, valueIndex).toDouble();
            captionChars += dm.qDS_Items->valueAt(r, captionIndex).toString().size();
        }
        out << u"Reading 2 fields of all rows: %1 ms (total liquidation value %2)"_s
                   .arg(double(timer.nsecsElapsed()) / 1e6, 0, 'f', 1)
                   .arg(total, 0, 'f', 0)
            << Qt::endl;
        out << u"Memory: %1 MiB before, %2 MiB after open, peak %3 MiB"_s.arg(before, 0, 'f', 0)
                   .arg(afterOpen, 0, 'f', 0)
                   .arg(PeakMemoryMiB(), 0, 'f', 0)
            << Qt::endl;

        const QByteArray photo = MakePhotoJpeg(4000, 3000);
        QByteArray thumb;
        const double thumbnail = 1e-3 * MedianMs(5, [&] { thumb = MakeThumbnail(photo); });
        out << u"MakeThumbnail 4000x3000 JPEG (%1 KiB): %2 ms -> %3 KiB"_s.arg(photo.size() / 1024)
                   .arg(thumbnail * 1000, 0, 'f', 1)
                   .arg(thumb.size() / 1024)
            << Qt::endl;
        out << u"Peak memory: %1 MiB"_s.arg(PeakMemoryMiB(), 0, 'f', 0) << Qt::endl;
        Q_UNUSED(captionChars);
    } catch (const std::exception& e) {
        out << u"Failed: "_s << QString::fromUtf8(e.what()) << Qt::endl;
        return 1;
    }
    return 0;
}
