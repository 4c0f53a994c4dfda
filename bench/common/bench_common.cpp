#include "bench_common.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QStringList>

#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

double PeakMemoryMiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
}

double CurrentMemoryMiB()
{
    QFile statm(u"/proc/self/statm"_s);
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> parts = statm.readAll().split(' ');
    if (parts.size() < 2)
        return 0;
    return double(parts.at(1).toLongLong()) * double(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

QByteArray MakePhotoJpeg(int width, int height, quint32 seed)
{
    QImage img(width, height, QImage::Format_RGB32);
    QPainter p(&img);
    QLinearGradient g(0, 0, width, height);
    g.setColorAt(0.0, QColor(40, 60, 90));
    g.setColorAt(0.5, QColor(210, 180, 90));
    g.setColorAt(1.0, QColor(30, 30, 30));
    p.fillRect(img.rect(), g);
    QRandomGenerator rng(seed);
    const int shapes = std::max(20, width * height / 30000);
    for (int i = 0; i < shapes; ++i) {
        p.setBrush(QColor::fromRgb(rng.generate()));
        p.setPen(Qt::NoPen);
        const int r = std::max(4, std::min(width, height) / 12);
        p.drawEllipse(QPoint(rng.bounded(width), rng.bounded(height)), rng.bounded(2, r), rng.bounded(2, r));
    }
    p.end();
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int n = int(rng.bounded(24)) - 12;
            const QRgb c = line[x];
            line[x] = qRgb(std::clamp(qRed(c) + n, 0, 255), std::clamp(qGreen(c) + n, 0, 255),
                           std::clamp(qBlue(c) + n, 0, 255));
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    img.save(&buffer, "JPEG");
    return bytes;
}

double MedianMs(int runs, const std::function<void()>& work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

qint64 StepAllColumns(sqlite3_stmt* stmt, double* checksum)
{
    const int columns = sqlite3_column_count(stmt);
    qint64 rows = 0;
    double sum = 0;
    while (sqlite3_step(stmt) == SQLITE_ROW) {
        for (int c = 0; c < columns; ++c) {
            switch (sqlite3_column_type(stmt, c)) {
            case SQLITE_INTEGER:
                sum += double(sqlite3_column_int64(stmt, c));
                break;
            case SQLITE_FLOAT:
                sum += sqlite3_column_double(stmt, c);
                break;
            case SQLITE_TEXT:
            case SQLITE_BLOB:
                sqlite3_column_blob(stmt, c);
                sum += sqlite3_column_bytes(stmt, c);
                break;
            default:
                break;
            }
        }
        ++rows;
    }
    *checksum = sum;
    return rows;
}

TRunStats StatsOf(std::vector<double> values)
{
    TRunStats stats;
    if (values.empty())
        return stats;
    std::sort(values.begin(), values.end());
    stats.Min = values.front();
    stats.Max = values.back();
    const std::size_t mid = values.size() / 2;
    stats.Median = values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2.0;
    return stats;
}

QString StatsText(const TRunStats& stats, const QString& unit, int decimals)
{
    return u"min %1 / median %2 / max %3 %4"_s.arg(stats.Min, 0, 'f', decimals)
        .arg(stats.Median, 0, 'f', decimals)
        .arg(stats.Max, 0, 'f', decimals)
        .arg(unit);
}

std::vector<double> TimeRuns(int runs, const std::function<void()>& work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    return times;
}

namespace {

QByteArray BareItemsStatement(sqlite3* db)
{
    QStringList columns;
    sqlite3_stmt* info = nullptr;
    sqlite3_prepare_v2(db, "SELECT name, type FROM pragma_table_info('tblCoins')", -1, &info, nullptr);
    while (sqlite3_step(info) == SQLITE_ROW) {
        const QString name = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(info, 0)));
        const QString type = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(info, 1)));
        const QString quoted = u'"' + name + u'"';
        columns.append(type.contains(u"BLOB"_s, Qt::CaseInsensitive) ? u"NULL AS "_s + quoted : quoted);
    }
    sqlite3_finalize(info);
    return (u"SELECT "_s + columns.join(u", "_s) +
            u", Price / (WeightG / 31.1035), WeightG * Qty, WeightG * Qty / 31.1035, Price * Qty, "
            "strftime('%Y', PurchaseDate), strftime('%Y-%m', PurchaseDate) FROM tblCoins C"_s)
        .toUtf8();
}

bool Exec(sqlite3* db, const char* sql)
{
    return sqlite3_exec(db, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

QString StatusLine(const QByteArray& key)
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(key))
            return QString::fromLatin1(line.mid(key.size())).trimmed();
    return {};
}

double StatusMiB(const QByteArray& key)
{
    return StatusLine(key).section(u' ', 0, 0).toDouble() / 1024.0; // kB
}

} // namespace

double BareItemsLoop(const QString& path, qint64* rows)
{
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        sqlite3_close(db);
        return -1;
    }
    QElapsedTimer timer;
    timer.start();
    const QByteArray sql = BareItemsStatement(db);
    sqlite3_stmt* stmt = nullptr;
    double checksum = 0;
    qint64 count = -1;
    if (sqlite3_prepare_v2(db, sql.constData(), -1, &stmt, nullptr) == SQLITE_OK)
        count = StepAllColumns(stmt, &checksum);
    sqlite3_finalize(stmt);
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    sqlite3_close(db);
    if (rows)
        *rows = count;
    return count < 0 ? -1 : ms;
}

QString BlobFreeCopy(const QString& path)
{
    const QString copy = path + u".blobfree.db"_s;
    const QFileInfo source(path);
    const QFileInfo made(copy);
    if (made.exists() && made.lastModified() >= source.lastModified())
        return copy;
    QFile::remove(copy);
    sqlite3* db = nullptr;
    bool ok = sqlite3_open(path.toUtf8().constData(), &db) == SQLITE_OK;
    const QByteArray into = "VACUUM INTO '" + copy.toUtf8().replace('\'', "''") + "'";
    ok = ok && Exec(db, into.constData());
    sqlite3_close(db);
    db = nullptr;
    ok = ok && sqlite3_open(copy.toUtf8().constData(), &db) == SQLITE_OK &&
         Exec(db, "UPDATE tblCoins SET ThumbFront = NULL, ThumbBack = NULL, PhotoFront = NULL, "
                  "PhotoBack = NULL, PhotoSide = NULL, PhotoInBox = NULL; UPDATE tblMints SET Logo = NULL") &&
         Exec(db, "VACUUM");
    sqlite3_close(db);
    if (!ok) {
        QFile::remove(copy);
        return {};
    }
    return copy;
}

double PeakResidentMiB()
{
    return StatusMiB("VmHWM:");
}

double AnonymousResidentMiB()
{
    return StatusMiB("RssAnon:");
}
