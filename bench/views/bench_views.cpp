// The collection views of the main window over a generated collection: switching views, a
// quick-filter click, find-panel keystrokes, a column configuration, the status-bar totals, a
// scroll through every card of the thumbs and cards views with the longest stall of the main
// thread, and the memory of the running window.
//
//   QT_QPA_PLATFORM=offscreen bench_views [file.db] [items=100000]

#include "bench_common.h"
#include "bench_items_common.h"
#include "dmImages.h"
#include "dmInternalData.h"
#include "frmMain.h"
#include "uCollectionPane.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

QTextStream out(stdout);

// Runs the event loop until nothing is left to do, painting what is due.
void Settle(QWidget* window)
{
    QCoreApplication::processEvents();
    window->repaint();
    QCoreApplication::processEvents();
}

double TimeMs(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

void Report(const QString& what, const std::vector<double>& values, double target)
{
    const TRunStats stats = StatsOf(values);
    out << what.leftJustified(46) << StatsText(stats) << u"   (target <= %1 ms)"_s.arg(target) << Qt::endl;
}

// Scrolls a card view from top to bottom a page at a time and measures the longest gap between
// two turns of the event loop (a watchdog timer), in milliseconds.
double ScrollThrough(TCollectionPane* pane, TCollectionView view, QWidget* window, int* pages)
{
    pane->SetActiveView(view);
    Settle(window);
    auto* area = pane->View(view)->findChild<QAbstractScrollArea*>();
    QScrollBar* bar = area->verticalScrollBar();
    bar->setValue(0);
    QElapsedTimer gap;
    double longest = 0;
    QTimer watchdog;
    watchdog.setInterval(0);
    gap.start();
    QObject::connect(&watchdog, &QTimer::timeout, [&] {
        longest = std::max(longest, double(gap.nsecsElapsed()) / 1e6);
        gap.restart();
    });
    watchdog.start();
    *pages = 0;
    while (bar->value() < bar->maximum()) {
        bar->setValue(bar->value() + bar->pageStep());
        window->repaint();
        QCoreApplication::processEvents();
        ++*pages;
    }
    watchdog.stop();
    return longest;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    SetSettingsStore(
        std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, u"Software\\Brenmoor\\Orvane"_s));
    LoadBuiltInLanguage(u"ENGLISHLANG"_s, u"English"_s);
    const int count = args.size() > 1 ? args.at(1).toInt() : 100000;
    const QString path = !args.isEmpty() ? args.at(0) : home.filePath(u"bench.db"_s);

    try {
        TDataModuleImages images;
        TDM_InternalData data;
        if (!QFileInfo::exists(path)) {
            out << u"Writing %1 items to %2 ..."_s.arg(count).arg(path) << Qt::endl;
            data.CreateBlankDatabase(path);
            data.ConnectDatabase(path);
            GenerateItems(data, count, 1000, 0);
        }
        const double before = CurrentMemoryMiB();
        MainFormMaximized = false;
        MainFormWidth = 1400;
        MainFormHeight = 900;
        TORVMainForm form(data);
        form.show();
        Settle(&form);
        const double open = TimeMs([&] {
            data.ConnectDatabase(path);
            Settle(&form);
        });
        TCollectionPane* pane = form.Views();
        out << u"Collection: %1 items; opened and shown in %2 ms"_s.arg(data.qDS_Items->recordCount())
                   .arg(open, 0, 'f', 0)
            << Qt::endl;

        const QStringList actions = {u"actViewThumbs"_s, u"actViewCards"_s, u"actViewTable"_s,
                                     u"actViewShelve"_s, u"actViewROI"_s};
        for (const QString& action : actions) { // every view once, so that each has built its rows
            form.Action(action)->trigger();
            Settle(&form);
        }
        std::vector<double> switches;
        for (int round = 0; round < 2; ++round) {
            for (const QString& from : actions) {
                for (const QString& to : actions) {
                    if (from == to)
                        continue;
                    form.Action(from)->trigger();
                    Settle(&form);
                    switches.push_back(TimeMs([&] {
                        form.Action(to)->trigger();
                        Settle(&form);
                    }));
                }
            }
        }
        Report(u"Switching between two views"_s, switches, 150);

        form.Action(u"actViewTable"_s)->trigger();
        Settle(&form);
        std::vector<double> filters;
        for (int i = 0; i < 6; ++i) {
            filters.push_back(TimeMs([&] {
                form.Action(u"actFilterSilver"_s)->trigger();
                Settle(&form);
            }));
        }
        Report(u"Quick-filter click (table view)"_s, filters, 150);

        form.Action(u"actViewCards"_s)->trigger();
        Settle(&form);
        form.Action(u"actQuickSearch"_s)->trigger();
        Settle(&form);
        const double reading = TimeMs([&] { pane->ReadFindTexts(); });
        out << u"Find panel: shown texts of 100,000 records read ahead in %1 ms (in slices when opened)"_s
                   .arg(reading, 0, 'f', 0)
            << Qt::endl;
        std::vector<double> keys;
        const QString typed = u"eagle 20"_s;
        for (int round = 0; round < 3; ++round) {
            for (qsizetype n = 1; n <= typed.size(); ++n) {
                keys.push_back(TimeMs([&] {
                    pane->SetFindText(typed.left(n));
                    Settle(&form);
                }));
            }
            pane->SetFindText(QString());
            Settle(&form);
        }
        Report(u"Find-panel keystroke (cards view)"_s, keys, 50);
        form.Action(u"actQuickSearch"_s)->trigger();

        form.Action(u"actViewTable"_s)->trigger();
        Settle(&form);
        std::vector<double> configurations;
        for (TTableViewConfiguration conf :
             {TTableViewConfiguration::General, TTableViewConfiguration::PurchaseData,
              TTableViewConfiguration::Specification, TTableViewConfiguration::AllFields}) {
            configurations.push_back(TimeMs([&] {
                pane->ApplyConfiguration(conf);
                Settle(&form);
                QCoreApplication::processEvents();
                Settle(&form);
            }));
        }
        Report(u"Applying a column configuration"_s, configurations, 300);

        std::vector<double> totals;
        for (int i = 0; i < 10; ++i)
            totals.push_back(TimeMs([&] { form.UpdateStatusBarTotals(); }));
        Report(u"Status-bar totals"_s, totals, 50);

        for (TCollectionView view : {cvThumbs, cvCards}) {
            int pages = 0;
            QElapsedTimer whole;
            whole.start();
            const double stall = ScrollThrough(pane, view, &form, &pages);
            out << u"Scroll through the %1 view: %2 pages in %3 s, longest stall %4 ms (target <= 50)"_s
                       .arg(view == cvThumbs ? u"thumbs"_s : u"cards"_s)
                       .arg(pages)
                       .arg(double(whole.elapsed()) / 1000, 0, 'f', 1)
                       .arg(stall, 0, 'f', 1)
                << Qt::endl;
        }
        out << u"Memory: %1 MiB resident now, %2 MiB before the window, peak %3 MiB (target <= 400)"_s
                   .arg(CurrentMemoryMiB(), 0, 'f', 0)
                   .arg(before, 0, 'f', 0)
                   .arg(PeakResidentMiB(), 0, 'f', 0)
            << Qt::endl;
        form.close();
    } catch (const std::exception& error) {
        out << "Failed: " << error.what() << Qt::endl;
        return 1;
    }
    return 0;
}
