#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <vector>

struct sqlite3_stmt;

// Peak resident memory of this process so far, in MiB (getrusage).
double PeakMemoryMiB();
// Current resident memory of this process, in MiB (/proc/self/statm).
double CurrentMemoryMiB();

// A photograph-like JPEG of the given size: gradients, shapes and noise.
QByteArray MakePhotoJpeg(int width, int height, quint32 seed = 42);

// Runs work `runs` times and returns the median time in milliseconds.
double MedianMs(int runs, const std::function<void()>& work);

// Steps a prepared statement to its end, reading every column of every row the way a plain
// C loop would (numbers summed, texts and blobs touched and their sizes summed). Returns the
// number of rows; the sum goes to checksum so the reads cannot be optimised away.
qint64 StepAllColumns(sqlite3_stmt* stmt, double* checksum);

// Minimum, median and maximum of a set of timings.
struct TRunStats
{
    double Min = 0;
    double Median = 0;
    double Max = 0;
};
TRunStats StatsOf(std::vector<double> values);
// "min 1.2 / median 1.3 / max 1.9 ms" (or another unit).
QString StatsText(const TRunStats& stats, const QString& unit = QStringLiteral("ms"), int decimals = 1);
// Runs work `runs` times; the time of each run in milliseconds.
std::vector<double> TimeRuns(int runs, const std::function<void()>& work);

// The item statement as the item dataset runs it (blob columns of tblCoins read as NULL, the six
// expressions of the statement), stepped once through with every value touched, on a read-only
// connection of its own. Milliseconds; rows read into *rows.
double BareItemsLoop(const QString& path, qint64* rows = nullptr);
// The floor of reading a collection: a copy of the file with every blob NULL and the space given
// back, made once beside it (<file>.blobfree.db) and reused while it is newer than the file.
QString BlobFreeCopy(const QString& path);
// Resident memory of this process, in MiB, from /proc/self/status: the high-water mark (VmHWM),
// and the part that is private memory rather than mapped files (RssAnon).
double PeakResidentMiB();
double AnonymousResidentMiB();
