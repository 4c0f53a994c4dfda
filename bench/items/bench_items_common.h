#pragma once

#include "bench_common.h"

#include <QByteArray>
#include <QString>

class TDM_InternalData;

// Writes `count` varied items into the collection connected in dm, through qDS_Items, in
// transactions of `batch` items. Every `photoEvery`-th item gets front and back photographs
// (0: none). Prints progress to stderr. Returns the seconds taken.
double GenerateItems(TDM_InternalData& dm, int count, int batch, int photoEvery);
