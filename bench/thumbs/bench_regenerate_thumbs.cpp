// Times actRegenerateThumbs' work over a whole collection: the worker's run (photos read by key,
// thumbnails made at reduced scale, two columns written in short transactions), and its peak memory.
//
// Usage: bench_regenerate_thumbs <file.db> [items=100000] [--photos N]

#include "bench_items_common.h"
#include "dmInternalData.h"
#include "uDBDataset.h"
#include "uThumbRegenerator.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QStringList>
#include <QTextStream>

#include <exception>

using namespace Qt::StringLiterals;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    QTextStream out(stdout);
    int photoEvery = 10;
    const qsizetype photosAt = args.indexOf(u"--photos"_s);
    if (photosAt >= 0 && photosAt + 1 < args.size()) {
        photoEvery = args.at(photosAt + 1).toInt();
        args.remove(photosAt, 2);
    }
    if (args.isEmpty() || args.first().startsWith(u'-')) {
        out << "Usage: bench_regenerate_thumbs <file.db> [items=100000] [--photos N]" << Qt::endl;
        return 2;
    }
    const QString path = args.at(0);
    const int count = args.size() > 1 ? args.at(1).toInt() : 100000;
    try {
        LoadBuiltInLanguage(u"ENGLISHLANG"_s, u"English"_s);
        TDM_InternalData dm;
        if (!QFileInfo::exists(path)) {
            dm.CreateBlankDatabase(path);
            if (!dm.ConnectDatabase(path))
                return 1;
            const double seconds = GenerateItems(dm, count, 5000, photoEvery);
            out << u"generated %1 items (every %2th with two photos) in %3 s"_s.arg(count)
                       .arg(photoEvery)
                       .arg(seconds, 0, 'f', 1)
                << Qt::endl;
        } else if (!dm.ConnectDatabase(path)) {
            return 1;
        }
        const double before = PeakMemoryMiB();
        const QList<TThumbJob> jobs = ThumbJobsOf(*dm.qDS_Items);
        const qint64 photos =
            dm.ADConnection->selectValue(u"SELECT COUNT(*) FROM tblCoins WHERE PhotoFront IS NOT NULL"_s)
                .toLongLong();
        dm.ADConnection->close(); // the worker's connection is the only one, as with a modal progress

        QElapsedTimer timer;
        timer.start();
        std::atomic<bool> cancel{false};
        int reports = 0;
        const TThumbRunResult result =
            TThumbRegenerator::Run(path, jobs, cancel, [&reports](int) { ++reports; });
        const double seconds = double(timer.elapsed()) / 1000.0;
        out << u"%1 items (%2 with photos): %3 s, %4 items/s, %5 done, %6 failed, peak memory %7 MiB "
               u"(%8 MiB before the run), file %9 MiB"_s.arg(jobs.size())
                   .arg(photos)
                   .arg(seconds, 0, 'f', 1)
                   .arg(double(jobs.size()) / seconds, 0, 'f', 0)
                   .arg(result.Done)
                   .arg(result.Failed)
                   .arg(PeakMemoryMiB(), 0, 'f', 0)
                   .arg(before, 0, 'f', 0)
                   .arg(double(GetFileSize(path)) / (1024.0 * 1024.0), 0, 'f', 1)
            << Qt::endl;
        if (!result.FirstError.isEmpty())
            out << u"first error: "_s << result.FirstError << Qt::endl;
    } catch (const std::exception& e) {
        out << u"Failed: "_s << QString::fromUtf8(e.what()) << Qt::endl;
        return 1;
    }
    return 0;
}
