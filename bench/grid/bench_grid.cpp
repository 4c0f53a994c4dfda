// The grid over 100,000 rows of the collection's shape: grouping by two columns with a sum per
// group, a change of a three-column sort, find-panel keystrokes, a filter-builder filter, the memory
// the grid adds per row with the five views of the main window, and a scroll through every card
// with the longest stall of the main thread and what was decoded.
//
// Usage: bench_grid [--db FILE.db] [--rows N] [--no-scroll]
//   Without --db the rows are generated in memory (the gallery's model, with picture bytes).
//   With --db the program's item dataset is read from a collection file, which bench_items_gen
//   (beside this program's folder) writes first when it is missing.

#include "bench_common.h"
#include "dmInternalData.h"
#include "galleryData.h"
#include "uDatasetTableModel.h"
#include "uEditorItem.h"
#include "uGrid.h"
#include "uGridCardView.h"
#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridPictureCache.h"
#include "uGridSource.h"
#include "uZTStrings.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QScrollBar>
#include <QTextStream>
#include <QTimer>

#include <sqlite3.h>

#include <algorithm>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {
QTextStream out(stdout);

double timeMs(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

void report(const QString& what, double ms, double target)
{
    out << QStringLiteral("%1 %2 ms").arg(what, -58).arg(ms, 8, 'f', 1);
    if (target > 0)
        out << QStringLiteral("   (target %1 ms: %2)")
                   .arg(target, 0, 'f', 0)
                   .arg(ms <= target ? u"met"_s : u"MISSED"_s);
    out << Qt::endl;
}

// The columns of a view of the collection, bound by field name, hidden beyond the first few.
void addColumns(TGridColumns& columns, const QStringList& fields, int shown)
{
    columns.beginUpdate();
    for (int i = 0; i < fields.size(); ++i)
        columns.add(fields[i], fields[i])->setVisible(i < shown);
    columns.endUpdate();
}

const QStringList TableFields{u"Name"_s,     u"Series"_s,      u"Year"_s,    u"WeightG"_s,   u"Qty"_s,
                              u"CoinType"_s, u"Purity"_s,      u"Country"_s, u"Price"_s,     u"Metal"_s,
                              u"MintID"_s,   u"WeightGxQty"_s, u"Caption"_s, u"TotalPrice"_s};

struct TSource
{
    std::unique_ptr<TDM_InternalData> Module;
    std::unique_ptr<QAbstractItemModel> Model;
    QString Description;
};

TSource openSource(const QString& db, int rows)
{
    TSource source;
    if (db.isEmpty()) {
        source.Model = std::make_unique<TGalleryData>(rows);
        source.Description = u"generated rows (gallery model)"_s;
        return source;
    }
    if (!QFileInfo::exists(db)) {
        out << u"Writing %1 items to %2 with bench_items_gen ..."_s.arg(rows).arg(db) << Qt::endl;
        QProcess gen;
        gen.setProcessChannelMode(QProcess::ForwardedChannels);
        gen.start(QDir(QCoreApplication::applicationDirPath()).filePath(u"../items/bench_items_gen"_s),
                  {db, QString::number(rows)});
        if (!gen.waitForFinished(-1) || gen.exitCode() != 0)
            return source;
    }
    LoadBuiltInLanguage(u"ENGLISHLANG"_s, u"English"_s);
    source.Module = std::make_unique<TDM_InternalData>();
    source.Module->TranslateFieldLabels();
    if (!source.Module->ConnectDatabase(db))
        return source;
    source.Model = std::make_unique<TDatasetTableModel>(source.Module->qDS_Items);
    source.Description = u"the item dataset of %1"_s.arg(db);
    return source;
}

// Groups, sorts, finds and filters on one table view's rows, as the main window's table view does.
// Each step is measured on a fresh view over a fresh source (keys not yet read: "first") and again
// (keys read), three times; the median is reported.
void measureViewWork(QAbstractItemModel* sourceModel)
{
    const int rows = sourceModel->rowCount();
    out << Qt::endl << u"-- One table view, %1 rows (median of 3 runs)"_s.arg(rows) << Qt::endl;
    enum Step
    {
        GroupFirst,
        Regroup,
        SortFirst,
        SortChange,
        FindOpen,
        FindStepWorst,
        FindKeyWorst,
        FindClear,
        FilterFirst,
        FilterClear,
        FilterAgain,
        StepCount
    };
    std::vector<std::vector<double>> times(StepCount);
    int found = 0;
    int passed = 0;
    std::size_t groups = 0;
    for (int run = 0; run < 3; ++run) {
        TGridSource source;
        source.setModel(sourceModel);
        TGridColumns columns;
        addColumns(columns, TableFields, 9);
        TGridModel model(&source, &columns);
        model.addGroupSummary({u"WeightGxQty"_s, TGridSummaryKind::Sum, 0, TGridSummaryPlace::GroupRow, {}});
        const auto group = [&] {
            columns.beginUpdate();
            columns.byName(u"Metal"_s)->setGroupIndex(0);
            columns.byName(u"MintID"_s)->setGroupIndex(1);
            columns.endUpdate();
        };
        times[GroupFirst].push_back(timeMs(group));
        groups = model.rootGroup()->Children.size();
        columns.clearGrouping();
        times[Regroup].push_back(timeMs(group));

        const auto sort = [&](const QString& a, bool descending, const QString& b, const QString& c) {
            columns.beginUpdate();
            columns.clearSort();
            columns.byName(a)->setSortIndex(0);
            columns.byName(a)->setSortOrder(descending ? TGridSortOrder::Descending
                                                       : TGridSortOrder::Ascending);
            columns.byName(b)->setSortIndex(1);
            columns.byName(c)->setSortIndex(2);
            columns.endUpdate();
        };
        times[SortFirst].push_back(timeMs([&] { sort(u"Country"_s, false, u"Year"_s, u"Name"_s); }));
        sort(u"Price"_s, true, u"Qty"_s, u"Series"_s);
        double worst = 0;
        for (int i = 0; i < 2; ++i) {
            worst = std::max(worst, timeMs([&] { sort(u"Country"_s, false, u"Year"_s, u"Name"_s); }));
            worst = std::max(worst, timeMs([&] { sort(u"Price"_s, true, u"Qty"_s, u"Series"_s); }));
        }
        times[SortChange].push_back(worst);

        // The find panel reads the shown texts of the visible columns when it opens, a column per
        // turn of the event loop, so keystrokes only match.
        double open = 0;
        double step = 0;
        bool done = false;
        while (!done) {
            const double ms = timeMs([&] { done = model.prepareFindStep(); });
            open += ms;
            step = std::max(step, ms);
        }
        times[FindOpen].push_back(open);
        times[FindStepWorst].push_back(step);
        double worstKey = 0;
        QString typed;
        for (const QChar c : u"maple 201"_s) {
            typed += c;
            worstKey = std::max(worstKey, timeMs([&] { model.setFindText(typed); }));
        }
        found = model.visibleRowCount();
        times[FindKeyWorst].push_back(worstKey);
        times[FindClear].push_back(timeMs([&] { model.setFindText({}); }));

        const TGridFilter filter = TGridFilter::fromText(
            u"[Metal] IN (0, 1) AND ([Year] >= 2000 OR [Name] CONTAINS 'maple') AND [Price] IS NOT BLANK"_s);
        times[FilterFirst].push_back(timeMs([&] { model.setFilter(filter); }));
        passed = model.visibleRowCount();
        times[FilterClear].push_back(timeMs([&] { model.setFilter({}); }));
        times[FilterAgain].push_back(timeMs([&] { model.setFilter(filter); }));
    }
    const auto median = [&](Step step) {
        std::vector<double> v = times[step];
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    };
    report(u"Group by Metal, MintID with a sum per group, keys unread"_s, median(GroupFirst), 150);
    out << u"   %1 metal groups"_s.arg(groups) << Qt::endl;
    report(u"Group again (keys read)"_s, median(Regroup), 150);
    report(u"Sort by Country, Year, Name in the groups, keys unread"_s, median(SortFirst), 150);
    report(u"Change between two three-column sorts, worst of 4"_s, median(SortChange), 150);
    report(u"Find panel opened: shown texts of 9 columns read, in all"_s, median(FindOpen), 0);
    report(u"  the longest single turn of that reading (a slice)"_s, median(FindStepWorst), 50);
    report(u"Find keystroke, \"maple 201\" typed, worst keystroke"_s, median(FindKeyWorst), 50);
    out << u"   %1 rows found"_s.arg(found) << Qt::endl;
    report(u"Find text cleared"_s, median(FindClear), 50);
    report(u"Filter-builder filter (IN, >=, CONTAINS, IS NOT BLANK)"_s, median(FilterFirst), 100);
    out << u"   %1 rows pass"_s.arg(passed) << Qt::endl;
    report(u"Filter cleared"_s, median(FilterClear), 100);
    report(u"Same filter again"_s, median(FilterAgain), 100);
}

// Memory the grid adds over its source with the five views of the main window over one source.
void measureMemory(QAbstractItemModel* sourceModel)
{
    const int rows = sourceModel->rowCount();
    out << Qt::endl << u"-- Memory of five views over one source, %1 rows"_s.arg(rows) << Qt::endl;
    const double before = CurrentMemoryMiB();
    TGridSource source;
    source.setModel(sourceModel);
    std::vector<std::unique_ptr<TGridColumns>> columns;
    std::vector<std::unique_ptr<TGridModel>> models;
    const auto view = [&](const QStringList& groups, const QStringList& sorts, const QStringList& sums) {
        auto c = std::make_unique<TGridColumns>();
        addColumns(*c, TableFields, 9);
        c->beginUpdate();
        for (int i = 0; i < groups.size(); ++i)
            c->byName(groups[i])->setGroupIndex(i);
        for (int i = 0; i < sorts.size(); ++i)
            c->byName(sorts[i])->setSortIndex(i);
        c->endUpdate();
        auto m = std::make_unique<TGridModel>(&source, c.get());
        for (const QString& sum : sums) {
            m->addGroupSummary({sum, TGridSummaryKind::Sum, 0, TGridSummaryPlace::GroupFooter, {}});
            m->addFooterSummary({sum, TGridSummaryKind::Sum, 0, {}, {}});
        }
        m->setGroupingEnabled(!groups.isEmpty());
        columns.push_back(std::move(c));
        models.push_back(std::move(m));
    };
    view({u"Metal"_s, u"MintID"_s}, {}, {u"WeightGxQty"_s});                 // the table view
    view({u"Metal"_s}, {}, {u"TotalPrice"_s, u"WeightGxQty"_s, u"Price"_s}); // the quick statistics
    for (int i = 0; i < 3; ++i)
        view({}, {u"Metal"_s, u"CoinType"_s, u"MintID"_s}, {}); // thumbs, cards, shelves
    const double after = CurrentMemoryMiB();
    qint64 bytes = source.keyMemory();
    for (const auto& m : models)
        bytes += m->rowMemory();
    out << u"Held by the grid: key columns %1 KiB, row orders and groups %2 KiB"_s
               .arg(source.keyMemory() / 1024)
               .arg((bytes - source.keyMemory()) / 1024)
        << Qt::endl;
    out << u"Bytes per row held by the grid:     %1   (target 40)"_s.arg(double(bytes) / rows, 0, 'f', 1)
        << Qt::endl;
    out << u"Resident memory grown per row:      %1   (process RSS, includes allocator slack)"_s.arg(
               (after - before) * 1024 * 1024 / rows, 0, 'f', 1)
        << Qt::endl;
}

// Scrolls a card view page by page through every card, painting each page, while a watchdog timer
// measures the longest time the event loop was kept from it.
// Picture bytes by row key, read on the picture cache's workers through a connection of each
// worker's own, as the program reads them from its collection file.
TGridPictureLoader fileLoader(const QString& path)
{
    return [path](const QVariant& key, const QString& field) -> QByteArray {
        thread_local sqlite3* db = nullptr;
        if (!db &&
            sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK)
            return {};
        for (const QChar c : field)
            if (!c.isLetterOrNumber() && c != u'_')
                return {};
        const QByteArray sql = "SELECT \"" + field.toUtf8() + "\" FROM tblCoins WHERE ID = ?";
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db, sql.constData(), -1, &statement, nullptr) != SQLITE_OK)
            return {};
        sqlite3_bind_int64(statement, 1, key.toLongLong());
        QByteArray bytes;
        if (sqlite3_step(statement) == SQLITE_ROW)
            bytes = QByteArray(static_cast<const char*>(sqlite3_column_blob(statement, 0)),
                               sqlite3_column_bytes(statement, 0));
        sqlite3_finalize(statement);
        return bytes;
    };
}

void measureCardScroll(QAbstractItemModel* sourceModel, const QString& db)
{
    const int rows = sourceModel->rowCount();
    out << Qt::endl << u"-- Card view scrolled through %1 cards"_s.arg(rows) << Qt::endl;
    TGrid grid;
    grid.resize(1200, 800);
    grid.setSourceModel(sourceModel);
    if (!db.isEmpty()) {
        grid.pictureCache()->setLoader(fileLoader(db));
        out << u"Thumbnails read by the cache's workers from the file"_s << Qt::endl;
    }
    TGridCardView* view = grid.addCardView(u"Thumbs"_s);
    class : public TEditorItem
    {
    public:
        QString displayText(const QVariant&) const override { return {}; }
        bool isPicture() const override { return true; }
    } picture;
    view->columns()->beginUpdate();
    TGridColumn* thumb = view->addColumn(u"Thumb"_s, u"ThumbFront"_s);
    thumb->setWidth(0);
    thumb->setLines(9);
    view->setEditorItem(thumb, &picture);
    TGridColumn* caption = view->addColumn(u"Caption"_s, u"Caption"_s);
    caption->setWidth(0);
    caption->setCardTitle(true);
    caption->setLines(2);
    for (const QString& field :
         {u"Name"_s, u"Metal"_s, u"Year"_s, u"WeightG"_s, u"MintID"_s, u"Qty"_s, u"Country"_s, u"Price"_s})
        view->addColumn(field, field)->setWidth(0);
    view->columns()->byName(u"Metal"_s)->setSortIndex(0);
    view->columns()->byName(u"MintID"_s)->setSortIndex(1);
    view->columns()->endUpdate();
    view->setCardWidth(209);
    view->setPictureHeightLimitedToCardWidth(true);
    grid.show();
    QApplication::processEvents();

    auto* area = qobject_cast<QAbstractScrollArea*>(view->cardsViewport()->parentWidget());
    QScrollBar* bar = area->verticalScrollBar();
    TGridPictureCache* cache = grid.pictureCache();
    cache->waitForIdle();
    cache->resetStats();

    QElapsedTimer clock;
    clock.start();
    qint64 lastTick = 0;
    qint64 worstGap = 0;
    QTimer watchdog;
    watchdog.setInterval(5);
    QObject::connect(&watchdog, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        if (lastTick > 0)
            worstGap = std::max(worstGap, now - lastTick);
        lastTick = now;
    });
    int steps = 0;
    double worstPaint = 0;
    double paintTotal = 0;
    QTimer stepper;
    stepper.setInterval(0);
    QObject::connect(&stepper, &QTimer::timeout, [&] {
        if (bar->value() >= bar->maximum()) {
            stepper.stop();
            QTimer::singleShot(500, qApp, &QCoreApplication::quit);
            return;
        }
        bar->setValue(std::min(bar->maximum(), bar->value() + bar->pageStep()));
        const double ms = timeMs([&] { view->cardsViewport()->repaint(); });
        if (qEnvironmentVariableIsSet("ORV_BENCH_SLOW") && ms > 30)
            out << "   slow page " << steps << ": " << ms << " ms" << Qt::endl;
        worstPaint = std::max(worstPaint, ms);
        paintTotal += ms;
        ++steps;
    });
    watchdog.start();
    stepper.start();
    const double total = timeMs([] { QApplication::exec(); });
    watchdog.stop();
    cache->waitForIdle();
    const TGridPictureCache::Stats stats = cache->stats();
    out << u"%1 pages in %2 s; painting a page: mean %3 ms, worst %4 ms"_s.arg(steps)
               .arg(total / 1000, 0, 'f', 1)
               .arg(paintTotal / std::max(steps, 1), 0, 'f', 2)
               .arg(worstPaint, 0, 'f', 1)
        << Qt::endl;
    report(u"Longest stall of the main thread while scrolling"_s, double(worstGap) / 1e6, 50);
    out << u"Pictures: %1 asked for, %2 decoded, %3 dropped before decoding (scrolled by), %4 finished after "
           "leaving the screen, %5 failed, %6 rows without one"_s.arg(stats.Requested)
               .arg(stats.Decoded)
               .arg(stats.Dropped)
               .arg(stats.DecodedUnwanted)
               .arg(stats.Failed)
               .arg(stats.Missing)
        << Qt::endl;
    out << u"Picture cache: %1 pictures, %2 KiB of at most %3 KiB"_s.arg(cache->count())
               .arg(cache->bytes() / 1024)
               .arg(cache->maxBytes() / 1024)
        << Qt::endl;
}
} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setStyle(u"Fusion"_s);
    const QStringList args = app.arguments();
    QString db;
    int rows = 100000;
    bool scroll = true;
    for (int i = 1; i < args.size(); ++i) {
        if (args[i] == u"--db"_s && i + 1 < args.size())
            db = args[++i];
        else if (args[i] == u"--rows"_s && i + 1 < args.size())
            rows = args[++i].toInt();
        else if (args[i] == u"--no-scroll"_s)
            scroll = false;
    }
    TSource source = openSource(db, rows);
    if (!source.Model) {
        out << "Cannot open the source" << Qt::endl;
        return 1;
    }
    out << u"Source: %1, %2 rows"_s.arg(source.Description).arg(source.Model->rowCount()) << Qt::endl;
    measureViewWork(source.Model.get());
    measureMemory(source.Model.get());
    if (scroll)
        measureCardScroll(source.Model.get(), db);
    out << Qt::endl << u"Peak memory: %1 MiB"_s.arg(PeakMemoryMiB(), 0, 'f', 0) << Qt::endl;
    return 0;
}
