#include "support_grid.h"

#include "uGridColumns.h"
#include "uGridKeyColumn.h"
#include "uGridLayout.h"

#include <QDate>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// "name:visible:width:group:sort:order:lines" for every column in position order.
QString state(const TGridColumns& columns)
{
    QStringList parts;
    for (const TGridColumn* c : columns.ordered())
        parts.append(u"%1:%2:%3:%4:%5:%6:%7"_s.arg(c->name())
                         .arg(c->visible())
                         .arg(c->width())
                         .arg(c->groupIndex())
                         .arg(c->sortIndex())
                         .arg(int(c->sortOrder()))
                         .arg(c->lines()));
    return parts.join(u' ');
}

void addColumns(TGridColumns& columns, const QStringList& names)
{
    for (const QString& name : names)
        columns.add(name, name);
}
} // namespace

class TestGridLayout : public QObject
{
    Q_OBJECT
private slots:
    void roundTrip();
    void repair_data();
    void repair();
    void columnRules();
    void ranks_data();
    void ranks();
    void ranksFollowChanges();
};

void TestGridLayout::roundTrip()
{
    TGridColumns columns;
    addColumns(columns, {u"Name"_s, u"Metal"_s, u"Year"_s, u"Odd name"_s, u"Price"_s});
    columns.byName(u"Year"_s)->setPosition(0);
    columns.byName(u"Metal"_s)->setVisible(false);
    columns.byName(u"Metal"_s)->setGroupIndex(0);
    columns.byName(u"Metal"_s)->setSortOrder(TGridSortOrder::Descending);
    columns.byName(u"Price"_s)->setSortOrder(TGridSortOrder::Descending);
    columns.byName(u"Name"_s)->setSortIndex(0);
    columns.byName(u"Odd name"_s)->setWidth(321);
    columns.byName(u"Odd name"_s)->setLines(9);
    const QString text = TGridLayout::save(columns, {{u"cardWidth"_s, u"209"_s}});

    TGridColumns other;
    addColumns(other, {u"Price"_s, u"Odd name"_s, u"Name"_s, u"Year"_s, u"Metal"_s, u"New"_s});
    bool ok = false;
    const QMap<QString, QString> settings = TGridLayout::restore(other, text, &ok);
    QVERIFY(ok);
    QCOMPARE(settings.value(u"cardWidth"_s), u"209"_s);
    // The column the layout does not know goes after the others.
    QCOMPARE(state(other), state(columns) + u" New:1:100:-1:-1:0:0"_s);
}

void TestGridLayout::repair_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const QString untouched = u"A:1:100:-1:-1:0:0 B:1:100:-1:-1:0:0 C:1:100:-1:-1:0:0"_s;
    QTest::newRow("not a layout") << u"garbage\ncol A v=0"_s << untouched;
    QTest::newRow("empty") << u""_s << untouched;
    QTest::newRow("newer unknown keys and lines")
        << u"orvgrid 3\nfuture x=1\ncol B v=0 p=0 zz=5"_s
        << u"B:0:100:-1:-1:0:0 A:1:100:-1:-1:0:0 C:1:100:-1:-1:0:0"_s;
    QTest::newRow("unknown columns passed over") << u"orvgrid 1\ncol Gone v=0 p=0\ncol C p=1 w=50"_s
                                                 << u"C:1:50:-1:-1:0:0 A:1:100:-1:-1:0:0 B:1:100:-1:-1:0:0"_s;
    QTest::newRow("widths clamped, zero kept out")
        << u"orvgrid 1\ncol A w=0 v=0\ncol B w=99999\ncol C w=3"_s
        << u"A:0:100:-1:-1:0:0 B:1:4000:-1:-1:0:0 C:1:16:-1:-1:0:0"_s;
    QTest::newRow("gaps in levels closed") << u"orvgrid 1\ncol A g=5 o=2\ncol B g=2\ncol C s=7 o=2"_s
                                           << u"A:1:100:1:-1:2:0 B:1:100:0:-1:1:0 C:1:100:-1:0:2:0"_s;
    QTest::newRow("bad numbers ignored") << u"orvgrid 1\ncol A v=x w=abc g=?"_s << untouched;
}

void TestGridLayout::repair()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    TGridColumns columns;
    addColumns(columns, {u"A"_s, u"B"_s, u"C"_s});
    TGridLayout::restore(columns, text);
    QCOMPARE(state(columns), expected);
}

// Levels and priorities: setting an index inserts there and closes up; an order alone sorts; a
// batch is told once.
void TestGridLayout::columnRules()
{
    TGridColumns columns;
    addColumns(columns, {u"A"_s, u"B"_s, u"C"_s, u"D"_s});
    QSignalSpy changed(&columns, &TGridColumns::changed);
    TGridColumn* a = columns.byName(u"A"_s);
    TGridColumn* b = columns.byName(u"B"_s);
    TGridColumn* c = columns.byName(u"C"_s);
    TGridColumn* d = columns.byName(u"D"_s);

    columns.beginUpdate();
    a->setGroupIndex(0);
    b->setGroupIndex(0);
    c->setGroupIndex(7);
    columns.endUpdate();
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.first().first().value<TGridColumnChanges>(),
             TGridColumnChanges(TGridColumnChange::Grouping));
    QCOMPARE(columns.groupColumns(), (QList<TGridColumn*>{b, a, c}));
    QCOMPARE(a->sortOrder(), TGridSortOrder::Ascending);
    a->setGroupIndex(-1);
    QCOMPARE(columns.groupColumns(), (QList<TGridColumn*>{b, c}));
    QCOMPARE(c->groupIndex(), 1);
    QCOMPARE(a->sortOrder(), TGridSortOrder::None);

    d->setSortOrder(TGridSortOrder::Descending);
    a->setSortIndex(0);
    QCOMPARE(columns.sortColumns(), (QList<TGridColumn*>{a, d}));
    QCOMPARE(d->sortIndex(), 1);
    d->setSortOrder(TGridSortOrder::None);
    QCOMPARE(columns.sortColumns(), QList<TGridColumn*>{a});
    // The order of a grouped column orders its groups and does not put it in the sort.
    b->setSortOrder(TGridSortOrder::Descending);
    QCOMPARE(b->sortIndex(), -1);
    columns.clearSort();
    QCOMPARE(a->sortOrder(), TGridSortOrder::None);
    QCOMPARE(b->sortOrder(), TGridSortOrder::Descending);

    // Positions: setting 0, 1, 2 over a list puts the columns in that order.
    d->setPosition(0);
    b->setPosition(1);
    QCOMPARE(columns.ordered(), (QList<TGridColumn*>{d, b, a, c}));
    QCOMPARE(columns.byField(u"C"_s), c);
    QCOMPARE(columns.add(u"A"_s, u"X"_s)->name(), u"A2"_s);
}

void TestGridLayout::ranks_data()
{
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QList<int>>("ranks");
    QTest::addColumn<QVariantList>("back"); // value() of each rank from 1

    QTest::newRow("nulls first, numbers ascending")
        << QVariantList{3, QVariant(), -1, 3, 0} << QList<int>{3, 0, 1, 3, 2} << QVariantList{-1, 0, 3};
    QTest::newRow("mixed integers and doubles become doubles")
        << QVariantList{1, 2.5, qlonglong(1)} << QList<int>{1, 2, 1} << QVariantList{1.0, 2.5};
    QTest::newRow("texts without case, distinct kept apart")
        << QVariantList{u"b"_s, u"A"_s, u"a"_s, u"B"_s} << QList<int>{4, 1, 2, 3}
        << QVariantList{u"A"_s, u"a"_s, u"B"_s, u"b"_s};
    QTest::newRow("numbers before texts")
        << QVariantList{u"x"_s, 5, QVariant()} << QList<int>{2, 1, 0} << QVariantList{5, u"x"_s};
    QTest::newRow("dates keep their type")
        << QVariantList{QDate(2020, 1, 2), QDate(2019, 5, 5)} << QList<int>{2, 1}
        << QVariantList{QDate(2019, 5, 5), QDate(2020, 1, 2)};
    QTest::newRow("image bytes are null")
        << QVariantList{QByteArray("\x89PNG"), 1} << QList<int>{0, 1} << QVariantList{1};
    QTest::newRow("booleans") << QVariantList{true, false} << QList<int>{2, 1} << QVariantList{false, true};
}

void TestGridLayout::ranks()
{
    QFETCH(QVariantList, values);
    QFETCH(QList<int>, ranks);
    QFETCH(QVariantList, back);
    QList<QVariantList> rows;
    for (const QVariant& v : values)
        rows.append({v});
    TTestTable table({u"V"_s}, rows);
    TGridKeyColumn keys(&table, 0, Qt::EditRole);
    keys.build();
    QList<int> got;
    for (int r = 0; r < keys.rowCount(); ++r)
        got.append(int(keys.rank(r)));
    QCOMPARE(got, ranks);
    QCOMPARE(int(keys.rankCount()), back.size() + 1);
    for (int r = 0; r < back.size(); ++r) {
        QCOMPARE(keys.value(quint32(r + 1)).metaType(), back[r].metaType());
        QCOMPARE(keys.value(quint32(r + 1)), back[r]);
    }
}

// Ranks patched row by row equal ranks read from scratch, and a renumbering is told by the
// generation.
void TestGridLayout::ranksFollowChanges()
{
    TTestTable table({u"V"_s}, {{5}, {u"m"_s}, {QVariant()}, {2}});
    TGridKeyColumn keys(&table, 0, Qt::EditRole);
    keys.build();
    const auto compareWithFresh = [&] {
        TGridKeyColumn fresh(&table, 0, Qt::EditRole);
        fresh.build();
        QCOMPARE(keys.rowCount(), fresh.rowCount());
        for (int r = 0; r < keys.rowCount(); ++r)
            QCOMPARE(keys.value(keys.rank(r)), fresh.value(fresh.rank(r)));
        for (int r = 1; r < keys.rowCount(); ++r)
            QCOMPARE(keys.rank(r - 1) < keys.rank(r), fresh.rank(r - 1) < fresh.rank(r));
    };
    quint64 generation = keys.generation();
    table.insertRowAt(1, {3});
    keys.insertRows(1, 1);
    compareWithFresh();
    QVERIFY(keys.generation() != generation);
    generation = keys.generation();
    table.insertRowAt(0, {5});
    keys.insertRows(0, 0);
    compareWithFresh();
    QCOMPARE(keys.generation(), generation); // a value it had already
    table.setValue(2, u"V"_s, u"a"_s);
    keys.updateRows(2, 2);
    compareWithFresh();
    table.moveRowTo(0, 3);
    keys.moveRows(0, 0, 3);
    compareWithFresh();
    table.removeRowsAt(1, 2);
    keys.removeRows(1, 2);
    compareWithFresh();

    // Past 255 distinct values a rank takes two bytes; the ranks stay the same.
    for (int i = 0; i < 300; ++i) {
        table.appendRow({1000 - i});
        keys.insertRows(table.rowCount() - 1, table.rowCount() - 1);
    }
    QCOMPARE(keys.bytesPerRow(), 2);
    compareWithFresh();
}

QTEST_GUILESS_MAIN(TestGridLayout)
#include "tst_gridlayout.moc"
