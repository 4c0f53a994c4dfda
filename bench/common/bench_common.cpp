#include "bench_common.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>

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
