#pragma once

#include <QByteArray>
#include <QString>

class TDM_InternalData;

// Peak resident memory of this process so far, in MiB (getrusage).
double PeakMemoryMiB();
// Current resident memory of this process, in MiB (/proc/self/statm).
double CurrentMemoryMiB();

// A photograph-like JPEG of the given size: gradients, shapes and noise.
QByteArray MakePhotoJpeg(int width, int height, quint32 seed = 42);

// Writes `count` varied items into the collection connected in dm, through qDS_Items, in
// transactions of `batch` items. Every `photoEvery`-th item gets front and back photographs
// (0: none). Prints progress to stderr. Returns the seconds taken.
double GenerateItems(TDM_InternalData& dm, int count, int batch, int photoEvery);
