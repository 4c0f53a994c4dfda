// Times MakeThumbnail on a 4000x3000 JPEG, as a camera delivers it, and a full decode for
// comparison; then the thumbnail of every blank picture, as stored for each item without a photo,
// with its size and time. Prints the median of several runs.
//
// Usage: bench_thumbnail [runs]

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

// A photograph-like picture: gradients, shapes and noise, so the JPEG has realistic entropy.
QByteArray makePhoto(int w, int h)
{
    QImage img(w, h, QImage::Format_RGB32);
    QPainter p(&img);
    QLinearGradient g(0, 0, w, h);
    g.setColorAt(0.0, QColor(40, 60, 90));
    g.setColorAt(0.5, QColor(210, 180, 90));
    g.setColorAt(1.0, QColor(30, 30, 30));
    p.fillRect(img.rect(), g);
    QRandomGenerator rng(42);
    for (int i = 0; i < 400; ++i) {
        p.setBrush(QColor::fromRgb(rng.generate()));
        p.setPen(Qt::NoPen);
        p.drawEllipse(QPoint(rng.bounded(w), rng.bounded(h)), rng.bounded(20, 300), rng.bounded(20, 300));
    }
    p.end();
    for (int y = 0; y < h; ++y) {
        auto* line = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < w; ++x) {
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

double medianMs(int runs, const std::function<void()>& work)
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

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, QString::fromLocal8Bit(argv[1]).toInt()) : 11;
    QTextStream out(stdout);

    const QByteArray photo = makePhoto(4000, 3000);
    out << u"Source: 4000x3000 JPEG, %1 KiB; %2 runs"_s.arg(photo.size() / 1024).arg(runs) << Qt::endl;

    QByteArray thumb;
    const double thumbMs = medianMs(runs, [&] { thumb = MakeThumbnail(photo); });
    const QImage result = QImage::fromData(thumb);
    out << u"MakeThumbnail: median %1 ms -> %2x%3, %4 bytes"_s.arg(thumbMs, 0, 'f', 1)
               .arg(result.width())
               .arg(result.height())
               .arg(thumb.size())
        << Qt::endl;

    const double decodeMs = medianMs(runs, [&] { (void)QImage::fromData(photo); });
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
            const double ms = medianMs(runs, [&] { blank = MakeThumbnail(source); });
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
