// Start-up time to the main window on the screen, on the offscreen platform.
//
//   bench_startup [runs] [items]
//
// Each run is a child process of this program that goes through the program's own start (phases A
// to D) and ends at the first paint of the main window, then closes normally. Two figures per run:
// from main() entry in the child to the first paint, and from the parent's process spawn to the
// child's report (which adds process start, dynamic linking and Qt's platform start). Three set-ups:
// no collection, a blank collection, and a collection of `items` items (default 5000) with small
// thumbnails. Medians over `runs` runs (default 7). A third figure is the time from the first paint
// to the child's exit: closing the window and writing every setting.

#include "frmMain.h"
#include "uOrvaneApplication.h"
#include "uStartup.h"
#include "uTemplate.h"
#include "uZTMessages.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

const QString cRoot = u"Software\\Brenmoor\\Orvane"_s;

// Answers every box with its default button, and counts them.
class TSilentPresenter : public TMessagePresenter
{
public:
    int Count = 0;
    int Present(const TMessageBoxRequest&) override
    {
        ++Count;
        return mrOk;
    }
};

// Reports the first paint of the main window, then closes it.
class TFirstPaint : public QObject
{
public:
    TFirstPaint(QWidget* window, const QElapsedTimer& clock) : m_window(window), m_clock(clock) {}

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (!m_done && watched == m_window && event->type() == QEvent::Paint) {
            m_done = true;
            std::printf("shown %.3f\n", double(m_clock.nsecsElapsed()) / 1e6);
            std::fflush(stdout);
            QTimer::singleShot(0, m_window, [window = m_window] { window->close(); });
        }
        return false;
    }

private:
    QWidget* m_window;
    const QElapsedTimer& m_clock;
    bool m_done = false;
};

int RunChild(int argc, char* argv[], const QElapsedTimer& clock)
{
    TOrvaneApplication app(argc, argv);
    TSilentPresenter presenter;
    SetMessagePresenter(&presenter);
    StartupPhaseA();
    TOrvaneStartup startup(TStartupOptions{false});
    startup.CreateForms();
    TFirstPaint probe(startup.MainForm(), clock);
    startup.MainForm()->installEventFilter(&probe);
    const int result = startup.Exec();
    startup.Shutdown();
    SetMessagePresenter(nullptr);
    return presenter.Count == 0 ? result : 2;
}

bool Exec(sqlite3* db, const char* sql)
{
    char* error = nullptr;
    if (sqlite3_exec(db, sql, nullptr, nullptr, &error) != SQLITE_OK) {
        std::fprintf(stderr, "%s\n", error);
        sqlite3_free(error);
        return false;
    }
    return true;
}

QByteArray SmallThumb(int n)
{
    QImage image(64, 64, QImage::Format_RGB32);
    image.fill(QColor::fromHsv((n * 37) % 360, 160, 220));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", 80);
    return bytes;
}

bool MakeCollection(const QString& path, int items)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(NewBlankDatabaseBytes());
    file.close();
    if (items == 0)
        return true;
    sqlite3* db = nullptr;
    if (sqlite3_open(path.toUtf8().constData(), &db) != SQLITE_OK)
        return false;
    bool ok = Exec(db, "BEGIN");
    sqlite3_stmt* stmt = nullptr;
    ok = ok &&
         sqlite3_prepare_v2(db,
                            "INSERT INTO tblCoins (Name, Metal, WeightG, MintID, CoinType, Year, Qty, Price, "
                            "PurchaseDate, Country, Purity, ThumbFront, ThumbBack) "
                            "VALUES (?, ?, ?, ?, ?, ?, 1, ?, '2023-04-05', 'CA', '.9999', ?, ?)",
                            -1, &stmt, nullptr) == SQLITE_OK;
    for (int n = 0; ok && n < items; ++n) {
        const QByteArray name = u"Item %1 1 oz"_s.arg(n).toUtf8();
        const QByteArray thumb = SmallThumb(n);
        sqlite3_bind_text(stmt, 1, name.constData(), int(name.size()), SQLITE_TRANSIENT);
        sqlite3_bind_int(stmt, 2, n % 6);
        sqlite3_bind_double(stmt, 3, 31.1035);
        sqlite3_bind_int(stmt, 4, 1 + n % 67);
        sqlite3_bind_int(stmt, 5, n % 5);
        sqlite3_bind_int(stmt, 6, 1990 + n % 34);
        sqlite3_bind_double(stmt, 7, 1500.0 + n);
        sqlite3_bind_blob(stmt, 8, thumb.constData(), int(thumb.size()), SQLITE_TRANSIENT);
        sqlite3_bind_blob(stmt, 9, thumb.constData(), int(thumb.size()), SQLITE_TRANSIENT);
        ok = sqlite3_step(stmt) == SQLITE_DONE;
        sqlite3_reset(stmt);
    }
    sqlite3_finalize(stmt);
    ok = ok && Exec(db, "COMMIT");
    sqlite3_close(db);
    return ok;
}

double Median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    std::sort(values.begin(), values.end());
    const std::size_t mid = values.size() / 2;
    return values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2.0;
}

} // namespace

int main(int argc, char* argv[])
{
    QElapsedTimer clock;
    clock.start();
    if (argc > 1 && qstrcmp(argv[1], "--child") == 0)
        return RunChild(argc, argv, clock);

    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int runs = args.size() > 1 ? std::max(1, args.at(1).toInt()) : 7;
    const int items = args.size() > 2 ? std::max(1, args.at(2).toInt()) : 5000;

    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + u"/config"_s).toLocal8Bit());
    const QString runtime = home.filePath(u"runtime"_s);
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", runtime.toLocal8Bit());
    const QString blank = home.filePath(u"blank.db"_s);
    const QString full = home.filePath(u"items.db"_s);
    if (!MakeCollection(blank, 0) || !MakeCollection(full, items)) {
        std::fprintf(stderr, "could not make the collections\n");
        return 1;
    }

    struct TSetup
    {
        QString Name;
        QString DBPath;
    };
    const std::vector<TSetup> setups = {
        {u"no collection"_s, QString()}, {u"blank collection"_s, blank}, {u"%1 items"_s.arg(items), full}};

    QTextStream out(stdout);
    out << "runs per set-up: " << runs << Qt::endl;
    for (const TSetup& setup : setups) {
        std::vector<double> inProcess;
        std::vector<double> fromSpawn;
        std::vector<double> toExit;
        for (int run = 0; run < runs; ++run) {
            TZTRegistrySettings store(cHKEY_CURRENT_USER, cRoot);
            store.SetStringValue(u"DBPath"_s, QString(), setup.DBPath);
            QProcess child;
            child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
            QElapsedTimer spawn;
            spawn.start();
            child.start(QCoreApplication::applicationFilePath(), {u"--child"_s});
            double shownAt = -1;
            while (child.waitForReadyRead(30000)) {
                const QByteArray line = child.readLine().trimmed();
                if (line.startsWith("shown ")) {
                    shownAt = double(spawn.nsecsElapsed()) / 1e6;
                    inProcess.push_back(line.mid(6).toDouble());
                    break;
                }
            }
            child.waitForFinished(30000);
            if (shownAt < 0 || child.exitCode() != 0) {
                std::fprintf(stderr, "run failed (%s)\n", qPrintable(setup.Name));
                return 1;
            }
            fromSpawn.push_back(shownAt);
            toExit.push_back(double(spawn.nsecsElapsed()) / 1e6 - shownAt);
        }
        out << qSetFieldWidth(18) << Qt::left << setup.Name << qSetFieldWidth(0)
            << "  main() to first paint: " << QString::number(Median(inProcess), 'f', 1) << " ms"
            << "   spawn to first paint: " << QString::number(Median(fromSpawn), 'f', 1) << " ms"
            << "   first paint to exit (close, SaveSettings): " << QString::number(Median(toExit), 'f', 1)
            << " ms" << Qt::endl;
    }
    return 0;
}
