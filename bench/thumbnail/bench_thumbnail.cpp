// Times MakeThumbnail on a 4000x3000 JPEG, as a camera delivers it, and a full decode for
// comparison; then the thumbnail of every blank picture, as stored for each item without a photo,
// with its size and time. Prints the median of several runs.
//
// Usage: bench_thumbnail [runs]

#include "bench_common.h"
#include "uBlankPictures.h"
#include "uThumbnail.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTextStream>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, QString::fromLocal8Bit(argv[1]).toInt()) : 11;
    QTextStream out(stdout);

    const QByteArray photo = MakePhotoJpeg(4000, 3000);
    out << u"Source: 4000x3000 JPEG, %1 KiB; %2 runs"_s.arg(photo.size() / 1024).arg(runs) << Qt::endl;

    QByteArray thumb;
    const double thumbMs = MedianMs(runs, [&] { thumb = MakeThumbnail(photo); });
    const QImage result = QImage::fromData(thumb);
    out << u"MakeThumbnail: median %1 ms -> %2x%3, %4 bytes"_s.arg(thumbMs, 0, 'f', 1)
               .arg(result.width())
               .arg(result.height())
               .arg(thumb.size())
        << Qt::endl;

    const double decodeMs = MedianMs(runs, [&] { (void)QImage::fromData(photo); });
    out << u"Full decode for comparison: median %1 ms"_s.arg(decodeMs, 0, 'f', 1) << Qt::endl;

    // The blank pictures: coin obverse, coin reverse and bar of each metal.
    out << Qt::endl << u"Blank pictures (source -> thumbnail):"_s << Qt::endl;
    qint64 sourceTotal = 0;
    qint64 thumbTotal = 0;
    for (int metal = 0; metal < 6; ++metal) {
        for (const auto& [coinType, obverse] :
             {std::pair{0, true}, std::pair{0, false}, std::pair{3, true}}) {
            const QByteArray source = BlankPicture(metal, coinType, obverse);
            QByteArray blank;
            const double ms = MedianMs(runs, [&] { blank = MakeThumbnail(source); });
            const QImage in = QImage::fromData(source);
            const QImage img = QImage::fromData(blank);
            sourceTotal += source.size();
            thumbTotal += blank.size();
            out << u"  %1 %2x%3 %4, %5 bytes -> %6x%7 %8, %9 bytes, median %10 ms"_s
                       .arg(BlankPictureName(metal, coinType, obverse), -28)
                       .arg(in.width())
                       .arg(in.height())
                       .arg(in.colorCount() > 0 ? u"%1 colours"_s.arg(in.colorCount()) : u"ARGB"_s, -10)
                       .arg(source.size(), 6)
                       .arg(img.width())
                       .arg(img.height())
                       .arg(img.format() == QImage::Format_Indexed8 ? u"indexed"_s : u"ARGB"_s)
                       .arg(blank.size(), 6)
                       .arg(ms, 0, 'f', 2)
                << Qt::endl;
        }
    }
    out << u"  total: sources %1 bytes, thumbnails %2 bytes (mean %3 per thumbnail)"_s.arg(sourceTotal)
               .arg(thumbTotal)
               .arg(thumbTotal / 18)
        << Qt::endl;
    return 0;
}
