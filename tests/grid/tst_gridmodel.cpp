#include "support_grid.h"

#include "uGridColumns.h"
#include "uGridModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>
#include <numeric>

using namespace Qt::StringLiterals;

namespace {
const QStringList Fields{u"ID"_s, u"Metal"_s, u"Name"_s, u"Year"_s, u"Weight"_s, u"Price"_s, u"Country"_s};

// A source, one view's columns (one per field, named after it) and the view's model.
struct TView
{
    explicit TView(const QList<QVariantList>& rows) : table(Fields, rows)
    {
        source.setModel(&table);
        for (const QString& field : Fields)
            columns.add(field, field);
        model = std::make_unique<TGridModel>(&source, &columns);
    }
    TGridColumn* column(const QString& name) const { return columns.byName(name); }

    TTestTable table;
    TGridSource source;
    TGridColumns columns;
    std::unique_ptr<TGridModel> model;
};

// Configuration of a view: "group=Metal,Country:d sort=Year:d,Name filter=<text> find=<text> footers".
void configure(TView& view, const QString& config)
{
    view.columns.beginUpdate();
    for (const QString& part : config.split(u' ', Qt::SkipEmptyParts)) {
        const QString key = part.section(u'=', 0, 0);
        const QString value = part.section(u'=', 1).replace(u'_', u' ');
        if (key == u"group"_s || key == u"sort"_s) {
            int i = 0;
            for (const QString& item : value.split(u',')) {
                TGridColumn* c = view.column(item.section(u':', 0, 0));
                if (key == u"group"_s)
                    c->setGroupIndex(i++);
                else
                    c->setSortIndex(i++);
                c->setSortOrder(item.endsWith(u":d"_s) ? TGridSortOrder::Descending
                                                       : TGridSortOrder::Ascending);
            }
        }
    }
    view.columns.endUpdate();
    for (const QString& part : config.split(u' ', Qt::SkipEmptyParts)) {
        const QString key = part.section(u'=', 0, 0);
        const QString value = part.section(u'=', 1).replace(u'_', u' ');
        if (key == u"filter"_s)
            view.model->setFilter(TGridFilter::fromText(value));
        else if (key == u"find"_s)
            view.model->setFindText(value);
        else if (key == u"footers"_s)
            view.model->setGroupFootersVisible(true);
    }
}

// The order SQL would give: nulls first, numbers before texts, texts without regard to case.
int compareValues(const QVariant& a, const QVariant& b)
{
    if (a.isNull() || b.isNull())
        return int(!a.isNull()) - int(!b.isNull());
    const bool ta = a.metaType().id() == QMetaType::QString;
    const bool tb = b.metaType().id() == QMetaType::QString;
    if (ta != tb)
        return ta ? 1 : -1;
    if (ta) {
        const int c = QString::compare(a.toString(), b.toString(), Qt::CaseInsensitive);
        return c != 0 ? c : QString::compare(a.toString(), b.toString());
    }
    const double x = a.toDouble();
    const double y = b.toDouble();
    return x < y ? -1 : (x > y ? 1 : 0);
}

// What the view must show, worked out from the source alone: "G<level>:<key>" for a group row,
// "D<ID>" for a data row, "F<level>" for a group footer, every group expanded.
QStringList expectedRows(TView& view)
{
    const TTestTable& t = view.table;
    std::vector<std::pair<QString, bool>> keys;
    for (const TGridColumn* c : view.columns.groupColumns())
        keys.emplace_back(c->fieldName(), c->sortOrder() == TGridSortOrder::Descending);
    const int depth = int(keys.size());
    for (const TGridColumn* c : view.columns.sortColumns())
        if (c->groupIndex() < 0)
            keys.emplace_back(c->fieldName(), c->sortOrder() == TGridSortOrder::Descending);
    std::vector<int> rows(std::size_t(t.rowCount()));
    std::iota(rows.begin(), rows.end(), 0);
    std::stable_sort(rows.begin(), rows.end(), [&](int a, int b) {
        for (const auto& [field, desc] : keys) {
            const int c = compareValues(t.value(a, field), t.value(b, field));
            if (c != 0)
                return desc ? c > 0 : c < 0;
        }
        return false;
    });
    // The filter and find text are checked through the model's own matching of single rows,
    // which the filter tests cover; here the rows that pass are taken from positionOf().
    QStringList out;
    std::vector<QVariant> open(static_cast<std::size_t>(depth));
    bool first = true;
    const bool footers = view.model->groupFootersVisible();
    int openLevels = 0;
    for (const int row : rows) {
        if (view.model->positionOf(row) < 0)
            continue;
        int level = 0;
        if (!first)
            while (level < depth &&
                   compareValues(open[std::size_t(level)], t.value(row, keys[level].first)) == 0 &&
                   open[std::size_t(level)].isNull() == t.value(row, keys[level].first).isNull())
                ++level;
        for (int l = openLevels - 1; l >= level && footers; --l)
            out.append(u"F"_s + QString::number(l + 1));
        for (int l = level; l < depth; ++l) {
            open[std::size_t(l)] = t.value(row, keys[l].first);
            out.append(u"G%1:%2"_s.arg(l).arg(open[std::size_t(l)].toString()));
        }
        openLevels = depth;
        first = false;
        out.append(u"D"_s + t.value(row, u"ID"_s).toString());
    }
    for (int l = openLevels - 1; l >= 0 && footers; --l)
        out.append(u"F"_s + QString::number(l + 1));
    return out;
}

QString rowText(TView& view, const TGridRow& row)
{
    switch (row.Kind) {
    case TGridRowKind::Group:
        return u"G%1:%2"_s.arg(row.Level).arg(view.model->groupKey(row.Group).toString());
    case TGridRowKind::Data:
        return u"D"_s + view.table.value(row.SourceRow, u"ID"_s).toString();
    case TGridRowKind::GroupFooter:
        return u"F"_s + QString::number(row.Level);
    }
    return {};
}

QStringList walkedRows(TView& view)
{
    QStringList out;
    view.model->walk(true, [&](const TGridRow& row) {
        out.append(rowText(view, row));
        return true;
    });
    return out;
}

// The same rows read through the item-model interface.
void treeRows(TView& view, const QModelIndex& parent, QStringList& out)
{
    for (int r = 0; r < view.model->rowCount(parent); ++r) {
        const QModelIndex index = view.model->index(r, 0, parent);
        out.append(rowText(view, view.model->rowOfIndex(index)));
        treeRows(view, index, out);
    }
}

QStringList displayedRows(TView& view)
{
    QStringList out;
    for (int i = 0; i < view.model->displayRowCount(); ++i)
        out.append(rowText(view, view.model->displayRow(i)));
    return out;
}

void checkRows(TView& view)
{
    const QStringList expected = expectedRows(view);
    QCOMPARE(walkedRows(view), expected);
    QStringList tree;
    treeRows(view, QModelIndex(), tree);
    QCOMPARE(tree, expected);
    view.model->expandAll();
    QCOMPARE(displayedRows(view), expected);
    for (int i = 0; i < view.model->displayRowCount(); ++i) {
        const TGridRow row = view.model->displayRow(i);
        if (row.Kind == TGridRowKind::Data)
            QCOMPARE(view.model->displayIndexOfSourceRow(row.SourceRow), i);
        else if (row.Kind == TGridRowKind::Group)
            QCOMPARE(view.model->displayIndexOfGroup(row.Group), i);
    }
}
} // namespace

class TestGridModel : public QObject
{
    Q_OBJECT
private slots:
    void sortIsStable_data();
    void sortIsStable();
    void changesMatchRebuild_data();
    void changesMatchRebuild();
    void persistentIndexesFollowRows();
    void expansion();
    void summaries_data();
    void summaries();
    void summaryCallbackByTag();
    void find_data();
    void find();
    void selectionFollowsSource();
};

void TestGridModel::sortIsStable_data()
{
    QTest::addColumn<QList<QVariantList>>("rows");
    QTest::addColumn<QString>("config");
    QTest::addColumn<QList<int>>("ids");

    const QList<QVariantList> rows{
        {1, 1, u"b"_s, 2000, 1.0, 5.0, u"X"_s},        {2, 0, u"B"_s, QVariant(), 1.0, 5.0, u"X"_s},
        {3, 1, u"a"_s, 2000, 1.0, QVariant(), u"Y"_s}, {4, 0, u"c"_s, 1999, 1.0, 3.0, u"X"_s},
        {5, 1, u"A"_s, QVariant(), 1.0, 5.0, u"Y"_s},  {6, 0, u"b"_s, 2000, 1.0, 3.0, u"Y"_s}};
    QTest::newRow("unsorted keeps source order") << rows << u""_s << QList<int>{1, 2, 3, 4, 5, 6};
    QTest::newRow("equal keys keep source order") << rows << u"sort=Metal"_s << QList<int>{2, 4, 6, 1, 3, 5};
    QTest::newRow("descending keeps source order of equals")
        << rows << u"sort=Metal:d"_s << QList<int>{1, 3, 5, 2, 4, 6};
    QTest::newRow("nulls first ascending") << rows << u"sort=Year"_s << QList<int>{2, 5, 4, 1, 3, 6};
    QTest::newRow("nulls last descending") << rows << u"sort=Year:d"_s << QList<int>{1, 3, 6, 4, 2, 5};
    QTest::newRow("texts without regard to case") << rows << u"sort=Name"_s << QList<int>{5, 3, 2, 1, 6, 4};
    QTest::newRow("three keys") << rows << u"sort=Country:d,Price:d,ID"_s << QList<int>{5, 6, 3, 1, 2, 4};
    QTest::newRow("grouped column sorts first")
        << rows << u"group=Country sort=Year:d"_s << QList<int>{1, 4, 2, 3, 6, 5};
    const QList<QVariantList> mixed{{1, 1, u"x"_s, 3, 0, 0, u""_s},
                                    {2, 1, u"y"_s, u"text"_s, 0, 0, u""_s},
                                    {3, 1, u"z"_s, QVariant(), 0, 0, u""_s},
                                    {4, 1, u"w"_s, 2.5, 0, 0, u""_s}};
    QTest::newRow("null, numbers, then texts") << mixed << u"sort=Year"_s << QList<int>{3, 4, 1, 2};
}

void TestGridModel::sortIsStable()
{
    QFETCH(QList<QVariantList>, rows);
    QFETCH(QString, config);
    QFETCH(QList<int>, ids);
    TView view(rows);
    configure(view, config);
    QList<int> got;
    for (int p = 0; p < view.model->visibleRowCount(); ++p)
        got.append(view.table.value(view.model->sourceRowAt(p), u"ID"_s).toInt());
    QCOMPARE(got, ids);
}

void TestGridModel::changesMatchRebuild_data()
{
    QTest::addColumn<QString>("config");
    QTest::newRow("flat") << u""_s;
    QTest::newRow("sorted") << u"sort=Year:d,Name"_s;
    QTest::newRow("one level") << u"group=Metal"_s;
    QTest::newRow("two levels") << u"group=Metal,Country:d sort=Year"_s;
    QTest::newRow("filtered") << u"group=Metal filter=[Year]_>=_2000"_s;
    QTest::newRow("found") << u"sort=Name find=an"_s;
    QTest::newRow("footers") << u"group=Metal,Country footers"_s;
    QTest::newRow("filtered flat") << u"filter=[Price]_IS_NOT_BLANK"_s;
}

// Every kind of source change, patched in place or rebuilt, leaves the rows a rebuild from
// scratch gives, and the item-model interface stays consistent throughout.
void TestGridModel::changesMatchRebuild()
{
    QFETCH(QString, config);
    TView view(MakeItems(40));
    configure(view, config);
    QAbstractItemModelTester tester(view.model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    checkRows(view);

    const auto check = [&](const char* step) {
        checkRows(view);
        if (QTest::currentTestFailed())
            qWarning("after: %s", step);
    };
    view.table.appendRow({1001, 7, u"Lonely"_s, 2011, 31.1, 10.0, u"Peru"_s});
    check("append in a new group");
    view.table.insertRowAt(0, {1002, 1, u"Eagle"_s, 2001, 31.1, 20.0, u"USA"_s});
    check("insert in an existing group");
    view.table.removeRowsAt(3);
    check("remove");
    view.table.removeRowsAt(view.table.rowOfKey(41));
    check("remove the last row of a group");
    view.table.setValue(5, u"Metal"_s, 4);
    check("change of a group key");
    view.table.setValue(2, u"Name"_s, u"Zebra an"_s);
    check("change of a sort key and found text");
    view.table.setValue(7, u"Year"_s, QVariant());
    check("change to null");
    view.table.setValue(8, u"Year"_s, 2024);
    check("change to a value never seen");
    view.table.setValue(9, u"Weight"_s, 1.5);
    check("change of a column nobody sorts");
    view.table.moveRowTo(0, 4);
    check("move");
    view.table.moveRowTo(10, 2);
    check("move back");
    view.table.removeRowsAt(2, 20);
    check("remove many");
    for (int i = 0; i < 3; ++i)
        view.table.insertRowAt(1, {2000 + i, i, u"Panda"_s, 2000 + i, 15.0, QVariant(), u"China"_s});
    check("insert several");
    // Past the patch limit: one rebuild, persistent indexes kept.
    const QPersistentModelIndex kept = view.model->indexOfSourceRow(view.table.rowCount() - 1, 1);
    const int keptKey = view.table.key(view.table.rowCount() - 1);
    view.table.insertRows(3, MakeItems(70, 11));
    check("insert more than the patch limit at once");
    view.table.removeRowsAt(3, 70);
    check("remove more than the patch limit at once");
    if (kept.isValid())
        QCOMPARE(view.table.key(kept.data(TGridModel::SourceRowRole).toInt()), keptKey);
    view.table.resetRows(MakeItems(25, 3));
    check("reset");
    view.columns.byName(u"Country"_s)->setGroupIndex(0);
    check("regroup");
    view.columns.clearGrouping();
    view.columns.byName(u"Price"_s)->setSortOrder(TGridSortOrder::Descending);
    check("ungroup and sort");
    view.model->setFindText(u"e"_s);
    check("find");
    view.model->setFindText({});
    view.model->setFilter({});
    check("nothing");
}

void TestGridModel::persistentIndexesFollowRows()
{
    TView view(MakeItems(30));
    configure(view, u"group=Metal sort=Name"_s);
    QAbstractItemModelTester tester(view.model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    const int sourceRow = 12;
    const QPersistentModelIndex row = view.model->indexOfSourceRow(sourceRow, 2);
    const TGridGroupNode* group = view.model->groupOfSourceRow(sourceRow);
    const QVariant key = view.model->groupKey(group);
    const QPersistentModelIndex groupRow = view.model->indexOfGroup(group);
    QVERIFY(row.isValid() && groupRow.isValid());

    view.columns.byName(u"Name"_s)->setSortOrder(TGridSortOrder::Descending);
    view.model->setFindText(u"a"_s);
    view.table.insertRowAt(0,
                           {99, view.table.value(sourceRow, u"Metal"_s), u"aaa"_s, 2000, 1.0, 1.0, u"X"_s});
    view.table.moveRowTo(5, 1);

    QVERIFY(row.isValid());
    QCOMPARE(row.column(), 2);
    QCOMPARE(row.data(Qt::EditRole),
             view.table.value(row.data(TGridModel::SourceRowRole).toInt(), u"Name"_s));
    QVERIFY(groupRow.isValid());
    QCOMPARE(view.model->groupKey(view.model->rowOfIndex(groupRow).Group), key);

    // Regrouping by another column: group rows of the old grouping are gone, data rows are not.
    view.columns.byName(u"Country"_s)->setGroupIndex(0);
    QVERIFY(!groupRow.isValid());
    QVERIFY(row.isValid());
}

void TestGridModel::expansion()
{
    TView view(MakeItems(30));
    configure(view, u"group=Metal,Country"_s);
    QCOMPARE(view.model->displayRowCount(), int(view.model->rootGroup()->Children.size()));

    const TGridGroupNode* first = view.model->rootGroup()->Children.front().get();
    view.model->setExpanded(first, true);
    QCOMPARE(view.model->displayRowCount(),
             int(view.model->rootGroup()->Children.size() + first->Children.size()));
    QCOMPARE(view.model->displayRow(1).Kind, TGridRowKind::Group);
    QCOMPARE(view.model->displayRow(1).Level, 1);

    // A row in a collapsed group has no display index until its groups are opened.
    const int row = view.model->sourceRowAt(view.model->visibleRowCount() - 1);
    QCOMPARE(view.model->displayIndexOfSourceRow(row), -1);
    view.model->expandTo(row);
    const int index = view.model->displayIndexOfSourceRow(row);
    QVERIFY(index > 0);
    QCOMPARE(view.model->displayRow(index).SourceRow, row);

    // The state of each group outlives a new filter; groups default to the last expand/collapse all.
    view.model->setFilter(TGridFilter::fromText(u"[Price] IS NOT BLANK"_s));
    QVERIFY(view.model->rootGroup()->Children.front()->Expanded);
    view.model->expandAll();
    view.model->setFilter({});
    for (const auto& group : view.model->rootGroup()->Children)
        QVERIFY(group->Expanded);
    view.model->collapseAll();
    QCOMPARE(view.model->displayRowCount(), int(view.model->rootGroup()->Children.size()));
}

void TestGridModel::summaries_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("column");
    QTest::addColumn<QVariantList>("groupValues"); // metal 0, 1, 2
    QTest::addColumn<QVariant>("footer");

    using K = TGridSummaryKind;
    QTest::newRow("sum skips nulls, all nulls give null")
        << int(K::Sum) << u"Price"_s << QVariantList{4.5, QVariant(), 2.0} << QVariant(6.5);
    QTest::newRow("count counts values")
        << int(K::Count) << u"Price"_s << QVariantList{2, 0, 1} << QVariant(3);
    QTest::newRow("count of rows") << int(K::Count) << u""_s << QVariantList{3, 1, 1} << QVariant(5);
    QTest::newRow("average over values")
        << int(K::Average) << u"Price"_s << QVariantList{2.25, QVariant(), 2.0} << QVariant(6.5 / 3);
    QTest::newRow("min") << int(K::Min) << u"Price"_s << QVariantList{1.5, QVariant(), 2.0} << QVariant(1.5);
    QTest::newRow("max of texts") << int(K::Max) << u"Name"_s << QVariantList{u"c"_s, u"d"_s, u"e"_s}
                                  << QVariant(u"e"_s);
    QTest::newRow("sum of integers stays integral")
        << int(K::Sum) << u"Year"_s << QVariantList{qlonglong(4001), qlonglong(2000), QVariant()}
        << QVariant(qlonglong(6001));
}

void TestGridModel::summaries()
{
    QFETCH(int, kind);
    QFETCH(QString, column);
    QFETCH(QVariantList, groupValues);
    QFETCH(QVariant, footer);
    TView view({{1, 0, u"a"_s, 2000, 1.0, 1.5, u"X"_s},
                {2, 0, u"c"_s, QVariant(), 1.0, QVariant(), u"X"_s},
                {3, 0, u"b"_s, 2001, 1.0, 3.0, u"X"_s},
                {4, 1, u"d"_s, 2000, 1.0, QVariant(), u"X"_s},
                {5, 2, u"e"_s, QVariant(), 1.0, 2.0, u"X"_s}});
    configure(view, u"group=Metal"_s);
    view.model->addGroupSummary({column, TGridSummaryKind(kind), 0, TGridSummaryPlace::GroupRow, {}});
    view.model->addFooterSummary({column, TGridSummaryKind(kind), 0, TGridSummaryPlace::GroupRow, {}});
    const auto& groups = view.model->rootGroup()->Children;
    QCOMPARE(int(groups.size()), 3);
    for (int g = 0; g < 3; ++g) {
        const QVariant got = view.model->groupValue(groups[std::size_t(g)].get(), 0);
        QCOMPARE(got.isNull(), groupValues[g].isNull());
        if (!got.isNull()) {
            if (groupValues[g].metaType().id() == QMetaType::LongLong)
                QCOMPARE(got.metaType().id(), int(QMetaType::LongLong));
            QCOMPARE(got, groupValues[g]);
        }
        if (got.isNull())
            QCOMPARE(view.model->groupSummaryText(groups[std::size_t(g)].get(), 0), QString());
    }
    QCOMPARE(view.model->footerValue(0), footer);

    // A row's change reaches its group's value.
    view.table.setValue(3, u"Price"_s, 7.0);
    view.table.setValue(3, u"Name"_s, u"f"_s);
    view.table.setValue(3, u"Year"_s, 1);
    if (kind == int(TGridSummaryKind::Sum) && column == u"Price"_s)
        QCOMPARE(view.model->groupValue(view.model->rootGroup()->Children[1].get(), 0), QVariant(7.0));
    if (kind == int(TGridSummaryKind::Max) && column == u"Name"_s)
        QCOMPARE(view.model->footerValue(0), QVariant(u"f"_s));
}

// A "none" item filled by a callback from two sums found by tag, for groups and the footer: the
// rate of return of a group is taken from its two sums, empty when the group cost nothing.
void TestGridModel::summaryCallbackByTag()
{
    TView view({{1, 0, u"a"_s, 0, 150.0, 100.0, u"X"_s},
                {2, 0, u"b"_s, 0, 50.0, 100.0, u"X"_s},
                {3, 1, u"c"_s, 0, 30.0, 0.0, u"X"_s},
                {4, 2, u"d"_s, 0, 10.0, QVariant(), u"X"_s}});
    configure(view, u"group=Metal"_s);
    for (TGridSummaryPlace place : {TGridSummaryPlace::GroupFooter}) {
        view.model->addGroupSummary({u"Name"_s, TGridSummaryKind::None, 300, place, {}});
        view.model->addGroupSummary({u"Weight"_s, TGridSummaryKind::Sum, 100, place, {}});
        view.model->addGroupSummary({u"Price"_s, TGridSummaryKind::Sum, 200, place, {}});
    }
    view.model->addFooterSummary({u"Weight"_s, TGridSummaryKind::Sum, 100, {}, {}});
    view.model->addFooterSummary({u"Price"_s, TGridSummaryKind::Sum, 200, {}, {}});
    view.model->addFooterSummary({u"Name"_s, TGridSummaryKind::None, 300, {}, {}});
    int calls = 0;
    view.model->setSummaryCallback([&](TGridSummaryScope& scope) {
        ++calls;
        const int l = scope.indexOfTag(100);
        const int p = scope.indexOfTag(200);
        const int r = scope.indexOfTag(300);
        if (l < 0 || p < 0 || r < 0)
            return;
        const double lv = scope.value(l).toDouble();
        const double pv = scope.value(p).toDouble();
        scope.setValue(r, pv != 0.0 ? QVariant((lv - pv) / pv * 100.0) : QVariant());
    });
    QCOMPARE(calls, 4); // three groups and the footer
    const auto& groups = view.model->rootGroup()->Children;
    QCOMPARE(view.model->groupValue(groups[0].get(), 0), QVariant(0.0));
    QVERIFY(view.model->groupValue(groups[1].get(), 0).isNull());
    QVERIFY(view.model->groupValue(groups[2].get(), 0).isNull()); // cost only nulls
    QCOMPARE(view.model->footerValue(2), QVariant((240.0 - 200.0) / 200.0 * 100.0));
    QCOMPARE(view.model->groupSummaryText(groups[1].get(), 0), QString());

    // Recomputed after a change, the callback included.
    view.table.setValue(2, u"Price"_s, 10.0);
    QCOMPARE(view.model->groupValue(view.model->rootGroup()->Children[1].get(), 0), QVariant(200.0));
}

void TestGridModel::find_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("hidden");
    QTest::addColumn<QList<int>>("ids");
    QTest::newRow("one word in any column") << u"gold"_s << u""_s << QList<int>{1, 3};
    QTest::newRow("case does not matter") << u"MAPLE"_s << u""_s << QList<int>{1, 2};
    QTest::newRow("every word must match") << u"maple gold"_s << u""_s << QList<int>{1};
    QTest::newRow("words in different columns") << u"2019 canada"_s << u""_s << QList<int>{2};
    QTest::newRow("a quoted phrase") << u"\"leaf 2\""_s << u""_s << QList<int>{};
    QTest::newRow("phrase found") << u"\"maple leaf\""_s << u""_s << QList<int>{1, 2};
    QTest::newRow("hidden columns are not searched") << u"canada"_s << u"Country"_s << QList<int>{};
    QTest::newRow("nothing found") << u"xyz"_s << u""_s << QList<int>{};
    QTest::newRow("blank text finds all") << u"  "_s << u""_s << QList<int>{1, 2, 3, 4};
}

void TestGridModel::find()
{
    QFETCH(QString, text);
    QFETCH(QString, hidden);
    QFETCH(QList<int>, ids);
    TView view({{1, 0, u"Maple Leaf"_s, 2020, 31.1, 10.0, u"Canada"_s},
                {2, 1, u"Maple Leaf"_s, 2019, 31.1, 10.0, u"Canada"_s},
                {3, 0, u"Eagle"_s, 2019, 31.1, 10.0, u"USA"_s},
                {4, 5, u"Panda"_s, QVariant(), 31.1, QVariant(), u"China"_s}});
    // The metal shows as a word: finding reads the shown text, not the stored number.
    const QStringList metals{u"Gold"_s,      u"Silver"_s,  u"Platinum"_s,
                             u"Palladium"_s, u"Rhodium"_s, u"Copper"_s};
    view.column(u"Metal"_s)->setFormatter([metals](const QVariant& v) {
        return v.isNull() ? QString() : metals[v.toInt()];
    });
    if (!hidden.isEmpty())
        view.column(hidden)->setVisible(false);
    view.model->setFindText(text);
    QList<int> got;
    for (int p = 0; p < view.model->visibleRowCount(); ++p)
        got.append(view.table.value(view.model->sourceRowAt(p), u"ID"_s).toInt());
    QCOMPARE(got, ids);
}

void TestGridModel::selectionFollowsSource()
{
    TView view(MakeItems(10));
    configure(view, u"group=Metal"_s);
    TGridSelection& selection = view.model->selection();
    const int keyA = view.table.key(2);
    const int keyB = view.table.key(6);
    selection.set(2, true);
    selection.set(6, true);
    view.model->notifySelectionChanged();

    const auto selectedKeys = [&] {
        QList<int> keys;
        for (const int row : view.model->selection().rows())
            keys.append(view.table.key(row));
        std::sort(keys.begin(), keys.end());
        return keys;
    };
    view.table.insertRowAt(0, MakeItems(1, 99).front());
    view.table.removeRowsAt(1);
    view.table.moveRowTo(7, 0);
    QCOMPARE(selectedKeys(), (QList<int>{keyA, keyB}));
    QCOMPARE(selection.count(), 2);

    // A reset of the source keeps a selection by the rows' keys; rows that are gone drop out.
    QList<QVariantList> rows;
    QList<int> keys;
    for (int r = view.table.rowCount() - 1; r >= 0; --r)
        if (view.table.key(r) != keyA) {
            QVariantList values;
            for (const QString& field : Fields)
                values.append(view.table.value(r, field));
            rows.append(values);
            keys.append(view.table.key(r));
        }
    view.table.resetRows(rows, keys);
    QCOMPARE(selectedKeys(), QList<int>{keyB});
    QCOMPARE(selection.count(), 1);
}

QTEST_GUILESS_MAIN(TestGridModel)
#include "tst_gridmodel.moc"
