#pragma once

#include <QByteArray>

#include <functional>

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
