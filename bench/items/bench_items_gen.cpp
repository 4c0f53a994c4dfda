// Writes a realistic collection of N items through the program's own item dataset.
//
// Usage: bench_items_gen <file.db> [items=100000] [--photos N]
//   --photos N   every N-th item gets front and back photographs (1024x768 JPEG)

#include "bench_items_common.h"
#include "dmInternalData.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QCoreApplication>
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
    int photoEvery = 0;
    const qsizetype photosAt = args.indexOf(u"--photos"_s);
    if (photosAt >= 0 && photosAt + 1 < args.size()) {
        photoEvery = args.at(photosAt + 1).toInt();
        args.remove(photosAt, 2);
    }
    if (args.isEmpty() || args.first().startsWith(u'-')) {
        out << "Usage: bench_items_gen <file.db> [items=100000] [--photos N]" << Qt::endl;
        return 2;
    }
    const QString path = args.at(0);
    const int count = args.size() > 1 ? args.at(1).toInt() : 100000;
    try {
        LoadBuiltInLanguage(u"ENGLISHLANG"_s, u"English"_s);
        TDM_InternalData dm;
        dm.CreateBlankDatabase(path);
        if (!dm.ConnectDatabase(path))
            return 1;
        const double seconds = GenerateItems(dm, count, 5000, photoEvery);
        out << u"%1 items in %2 s (%3 items/s), file %4 MiB, peak memory %5 MiB"_s.arg(count)
                   .arg(seconds, 0, 'f', 1)
                   .arg(double(count) / seconds, 0, 'f', 0)
                   .arg(double(GetFileSize(path)) / (1024.0 * 1024.0), 0, 'f', 1)
                   .arg(PeakMemoryMiB(), 0, 'f', 0)
            << Qt::endl;
    } catch (const std::exception& e) {
        out << u"Failed: "_s << QString::fromUtf8(e.what()) << Qt::endl;
        return 1;
    }
    return 0;
}
