#include "support_grid.h"

#include "uGridCardLayout.h"
#include "uGridColumns.h"
#include "uGridKeyColumn.h"
#include "uGridModel.h"
#include "uGridPictureCache.h"

#include <QBuffer>
#include <QImage>
#include <QMutex>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {
const QStringList Fields{u"ID"_s, u"Metal"_s, u"Name"_s, u"Year"_s, u"Weight"_s, u"Price"_s, u"Country"_s};

QByteArray png(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

struct TView
{
    explicit TView(const QList<QVariantList>& rows) : table(Fields, rows)
    {
        source.setModel(&table);
        for (const QString& field : Fields)
            columns.add(field, field);
        model = std::make_unique<TGridModel>(&source, &columns);
    }
    QList<int> ids() const
    {
        QList<int> out;
        for (int p = 0; p < model->visibleRowCount(); ++p)
            out.append(table.value(model->sourceRowAt(p), u"ID"_s).toInt());
        return out;
    }
    TTestTable table;
    TGridSource source;
    TGridColumns columns;
    std::unique_ptr<TGridModel> model;
};
} // namespace

class TestGridParts : public QObject
{
    Q_OBJECT
private slots:
    void cardLayout_data();
    void cardLayout();
    void cardFlow_data();
    void cardFlow();
    void picturesDecodedAndBounded();
    void loaderOffTheMainThread();
    void binding();
    void newValuesUnderFilterAndFind();
    void findReadAheadAndRelease();
    void footersAndWalk();
};

void TestGridParts::cardLayout_data()
{
    QTest::addColumn<QList<TGridCardRowSpec>>("rows");
    QTest::addColumn<QList<int>>("empty");   // columns left out
    QTest::addColumn<QList<QRect>>("rects"); // value rects in order of the rows shown
    QTest::addColumn<int>("height");
    const int p = TGridCardLayout::Padding;
    const int s = TGridCardLayout::Spacing;
    const int g = TGridCardLayout::CaptionGap;
    const TGridCardRowSpec picture{0, true, false, false, 60, 0};
    const TGridCardRowSpec title{1, false, true, false, 30, 0};
    const TGridCardRowSpec text{2, false, false, true, 16, 0};
    const TGridCardRowSpec text2{3, false, false, true, 16, 0};
    const TGridCardRowSpec side{4, true, false, false, 50, 50};
    // Card 200 wide, captions 40.
    QTest::newRow("stacked") << QList<TGridCardRowSpec>{picture, title, text} << QList<int>{}
                             << QList<QRect>{QRect(p, p, 200 - 2 * p, 60),
                                             QRect(p, p + 60 + s, 200 - 2 * p, 30),
                                             QRect(p + 40 + g, p + 60 + s + 30 + s, 200 - 2 * p - 40 - g, 16)}
                             << p + 60 + s + 30 + s + 16 + p;
    QTest::newRow("empty row left out, the card keeps its height")
        << QList<TGridCardRowSpec>{text, text2} << QList<int>{2}
        << QList<QRect>{QRect(p + 40 + g, p, 200 - 2 * p - 40 - g, 16)} << p + 16 + s + 16 + p;
    QTest::newRow("picture at the side")
        << QList<TGridCardRowSpec>{side, text} << QList<int>{}
        << QList<QRect>{QRect(p, p, 50, 50),
                        QRect(p + 50 + p + 40 + g, p, 200 - (p + 50 + p) - p - 40 - g, 16)}
        << p + 50 + p;
}

void TestGridParts::cardLayout()
{
    QFETCH(QList<TGridCardRowSpec>, rows);
    QFETCH(QList<int>, empty);
    QFETCH(QList<QRect>, rects);
    QFETCH(int, height);
    TGridCardLayout layout;
    layout.setRows(std::vector<TGridCardRowSpec>(rows.begin(), rows.end()));
    layout.setCardWidth(200);
    layout.setCaptionWidth(40);
    QCOMPARE(layout.cardHeight(), height);
    const std::vector<TGridCardRowRect> got =
        layout.layout([&](int column) { return empty.contains(column); });
    QCOMPARE(int(got.size()), rects.size());
    for (int i = 0; i < rects.size(); ++i)
        QCOMPARE(got[std::size_t(i)].Value, rects[i]);
}

void TestGridParts::cardFlow_data()
{
    QTest::addColumn<int>("viewport");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("filled");
    QTest::newRow("three fit") << 7 + 3 * (209 + 7) << 3 << 209;
    QTest::newRow("one pixel short of three") << 7 + 3 * (209 + 7) - 1 << 2 << 316;
    QTest::newRow("narrower than a card") << 100 << 1 << 209;
}

void TestGridParts::cardFlow()
{
    QFETCH(int, viewport);
    QFETCH(int, columns);
    QFETCH(int, filled);
    QCOMPARE(TGridCardLayout::columnsFor(viewport, 209, 7), columns);
    QCOMPARE(TGridCardLayout::filledWidth(viewport, 209, 7, columns), filled);
    // Zoom: to the nearest, a tie to the even number, never below the least.
    QCOMPARE(TGridCardLayout::zoomedWidth(209, 0.9, 40), 188);
    QCOMPARE(TGridCardLayout::zoomedWidth(45, 0.9, 40), 40); // 40.5
    QCOMPARE(TGridCardLayout::zoomedWidth(55, 0.9, 40), 50); // 49.5
    QCOMPARE(TGridCardLayout::zoomedWidth(300, 0.95, 40), 285);
    QCOMPARE(TGridCardLayout::zoomedWidth(41, 0.9, 40), 40);
}

// Pictures come back scaled to fit, the cache holds no more bytes than it may, queued work for keys
// that left the screen is dropped, and bytes that are no picture fail quietly.
void TestGridParts::picturesDecodedAndBounded()
{
    TGridPictureCache cache;
    QSignalSpy ready(&cache, &TGridPictureCache::pictureReady);
    const QByteArray wide = png(400, 200);
    cache.request(u"a"_s, wide, QSize(100, 100));
    QVERIFY(cache.isPending(u"a"_s));
    cache.request(u"a"_s, wide, QSize(100, 100)); // asked twice, queued once
    cache.waitForIdle();
    QCOMPARE(ready.size(), 1);
    QCOMPARE(cache.find(u"a"_s).size(), QSize(100, 50));
    QVERIFY(!cache.isPending(u"a"_s));

    cache.request(u"bad"_s, QByteArray("not a picture"), QSize(50, 50));
    cache.waitForIdle();
    QVERIFY(cache.find(u"bad"_s).isNull());
    QCOMPARE(cache.stats().Failed, 1);

    // Bounded: 100 pictures of 40 KiB in a cache of 1 MiB.
    cache.setMaxBytes(1024 * 1024);
    const QByteArray square = png(100, 100);
    for (int i = 0; i < 100; ++i)
        cache.request(u"p%1"_s.arg(i), square, QSize(100, 100));
    cache.waitForIdle();
    QVERIFY(cache.bytes() <= cache.maxBytes());
    QVERIFY(cache.count() < 100);
    QVERIFY(!cache.find(u"p99"_s).isNull()); // the latest stay

    // Work for keys no longer on screen is dropped before decoding.
    cache.resetStats();
    cache.setWanted({u"keep"_s});
    cache.request(u"gone"_s, square, QSize(10, 10));
    cache.request(u"keep"_s, square, QSize(10, 10));
    cache.setWanted({u"keep"_s});
    cache.waitForIdle();
    QVERIFY(cache.find(u"gone"_s).isNull());
    QVERIFY(!cache.find(u"keep"_s).isNull());
    QCOMPARE(cache.stats().Dropped, 1);
    cache.removeMatching(u"ke"_s);
    QVERIFY(cache.find(u"keep"_s).isNull());

    // Bytes that change while their old picture is decoded: the old one is not kept, and the
    // new bytes are asked for again.
    cache.setWanted({u"cell"_s});
    cache.request(u"cell"_s, png(10, 10), QSize(100, 100));
    cache.removeMatching(u"cell"_s);
    cache.waitForIdle();
    QVERIFY(cache.find(u"cell"_s).isNull());
    cache.request(u"cell"_s, png(30, 30), QSize(100, 100));
    cache.waitForIdle();
    QCOMPARE(cache.find(u"cell"_s).size(), QSize(30, 30));
}

// A loader reads picture bytes on the cache's workers; a row without a picture is remembered.
void TestGridParts::loaderOffTheMainThread()
{
    TGridPictureCache cache;
    QSet<QThread*> threads;
    QMutex lock;
    const QByteArray bytes = png(30, 30);
    cache.setLoader([&](const QVariant& key, const QString& field) {
        QMutexLocker locker(&lock);
        threads.insert(QThread::currentThread());
        return key.toInt() == 2 && field == u"Thumb"_s ? QByteArray() : bytes;
    });
    QVERIFY(cache.hasLoader());
    cache.requestLoad(u"one"_s, 1, u"Thumb"_s, QSize(20, 20));
    cache.requestLoad(u"two"_s, 2, u"Thumb"_s, QSize(20, 20));
    cache.waitForIdle();
    QCOMPARE(cache.find(u"one"_s).size(), QSize(20, 20));
    QVERIFY(cache.find(u"two"_s).isNull());
    QVERIFY(cache.isMissing(u"two"_s));
    QCOMPARE(cache.stats().Missing, 1);
    QVERIFY(!threads.isEmpty());
    QVERIFY(!threads.contains(QThread::currentThread()));
    // Known missing: not asked again.
    cache.requestLoad(u"two"_s, 2, u"Thumb"_s, QSize(20, 20));
    cache.waitForIdle();
    QCOMPARE(cache.stats().Requested, 2);
}

// Columns follow their field: another field name role, a field the source lacks, a column bound
// to another field.
void TestGridParts::binding()
{
    TView view(MakeItems(5));
    TGridColumn* name = view.columns.byName(u"Name"_s);
    QCOMPARE(view.model->displayText(0, name), view.table.value(0, u"Name"_s).toString());
    QCOMPARE(view.model->columnCaption(name), u"Name caption"_s);
    TGridColumn* lost = view.columns.add(u"Lost"_s, u"NoSuchField"_s);
    QCOMPARE(view.model->sourceColumnOf(lost), -1);
    QCOMPARE(view.model->displayText(0, lost), QString());
    QCOMPARE(view.model->columnCaption(lost), u"NoSuchField"_s);

    // The column now shows the country, and sorts by it.
    name->setSortOrder(TGridSortOrder::Ascending);
    name->setFieldName(u"Country"_s);
    QCOMPARE(view.model->displayText(2, name), view.table.value(2, u"Country"_s).toString());
    for (int p = 1; p < view.model->visibleRowCount(); ++p)
        QVERIFY(QString::compare(view.model->displayText(view.model->sourceRowAt(p - 1), name),
                                 view.model->displayText(view.model->sourceRowAt(p), name),
                                 Qt::CaseInsensitive) <= 0);

    // A header without field names: captions name the fields.
    view.source.setFieldNameRole(Qt::UserRole + 77);
    QCOMPARE(view.source.columnOf(u"Name caption"_s), 2);
    QCOMPARE(view.model->sourceColumnOf(view.columns.byName(u"Year"_s)), -1);
    view.source.setFieldNameRole(TTestTable::FieldNameRole);
    QCOMPARE(view.model->sourceColumnOf(view.columns.byName(u"Year"_s)), 3);
}

// A value never seen before renumbers a column's ranks: a filter, a find text and groups built on
// the old numbers must follow.
void TestGridParts::newValuesUnderFilterAndFind()
{
    TView view({{1, 0, u"Alpha"_s, 2000, 1.0, 1.0, u"X"_s},
                {2, 1, u"Beta"_s, 2001, 1.0, 2.0, u"Y"_s},
                {3, 0, u"Gamma"_s, 2002, 1.0, 3.0, u"Y"_s}});
    view.columns.byName(u"Country"_s)->setGroupIndex(0);
    view.model->setFilter(TGridFilter::fromText(u"[Name] >= 'Beta'"_s));
    QCOMPARE(view.ids(), (QList<int>{2, 3}));
    view.table.setValue(0, u"Name"_s, u"Delta"_s); // new, between Beta and Gamma
    QCOMPARE(view.ids(), (QList<int>{1, 2, 3}));
    view.table.appendRow({4, 0, u"Aaron"_s, 1999, 1.0, 1.0, u"W"_s});
    view.table.appendRow({5, 0, u"Zed"_s, 1999, 1.0, 1.0, u"W"_s});
    QCOMPARE(view.ids(), (QList<int>{5, 1, 2, 3}));
    QCOMPARE(view.model->groupValueText(view.model->rootGroup()->Children.front().get()), u"W"_s);

    view.model->setFilter({});
    view.model->setFindText(u"ta"_s);
    QCOMPARE(view.ids(), (QList<int>{1, 2})); // Delta, Beta
    view.table.setValue(2, u"Name"_s, u"Theta"_s);
    view.table.appendRow({6, 0, u"Ostara"_s, 1999, 1.0, 1.0, u"A"_s});
    QCOMPARE(view.ids(), (QList<int>{6, 1, 2, 3}));
}

void TestGridParts::findReadAheadAndRelease()
{
    TView view(MakeItems(50));
    view.columns.byName(u"Weight"_s)->setVisible(false);
    int steps = 0;
    while (!view.model->prepareFindStep())
        QVERIFY(++steps < 100);
    QVERIFY(steps >= 6); // a key column and its texts per visible column
    // Visible columns are held while the panel is open, the hidden one is not.
    QVERIFY(view.source.hasKeys(2));
    QVERIFY(!view.source.hasKeys(4));
    view.model->setFindText(u"maple"_s);
    QVERIFY(view.model->visibleRowCount() > 0);
    view.model->setFindText({});
    view.model->releaseFind();
    QVERIFY(!view.source.hasKeys(2));
}

// Group footers come after a group's rows; a walk shows collapsed groups' rows only when asked; the
// item model gives a group row its text and its summaries by column.
void TestGridParts::footersAndWalk()
{
    TView view({{1, 0, u"a"_s, 2000, 1.0, 5.0, u"X"_s},
                {2, 0, u"b"_s, 2000, 1.0, 7.0, u"X"_s},
                {3, 1, u"c"_s, 2000, 1.0, 1.0, u"X"_s}});
    view.columns.byName(u"Metal"_s)->setGroupIndex(0);
    view.model->setGroupFootersVisible(true);
    view.model->addGroupSummary({u"Price"_s, TGridSummaryKind::Sum, 0, TGridSummaryPlace::GroupFooter, {}});
    view.model->addGroupSummary({u"Price"_s, TGridSummaryKind::Max, 0, TGridSummaryPlace::GroupRow, {}});
    const auto walked = [&](bool all) {
        QStringList out;
        view.model->walk(all, [&](const TGridRow& row) {
            out.append(row.Kind == TGridRowKind::Group  ? u"G"_s
                       : row.Kind == TGridRowKind::Data ? u"D"_s
                                                        : u"F"_s);
            return true;
        });
        return out.join(QString());
    };
    QCOMPARE(walked(false), u"GG"_s);
    QCOMPARE(walked(true), u"GDDFGDF"_s);
    view.model->setExpanded(view.model->rootGroup()->Children.front().get(), true);
    QCOMPARE(walked(false), u"GDDFG"_s);
    QCOMPARE(view.model->displayRowCount(), 5);
    QCOMPARE(view.model->displayRow(3).Kind, TGridRowKind::GroupFooter);

    const QModelIndex group = view.model->index(0, 0);
    QCOMPARE(view.model->rowCount(group), 3); // two rows and the footer
    QCOMPARE(view.model->data(group).toString(), u"Metal caption: 0"_s);
    QCOMPARE(view.model->data(group.siblingAtColumn(view.columns.byName(u"Price"_s)->id())).toString(),
             u"7"_s);
    const QModelIndex footerPrice = view.model->index(2, view.columns.byName(u"Price"_s)->id(), group);
    QCOMPARE(view.model->data(footerPrice).toString(), u"12"_s);
    QCOMPARE(view.model->flags(footerPrice) & Qt::ItemIsSelectable, Qt::ItemFlags());
    // A walk can stop.
    int seen = 0;
    view.model->walk(true, [&](const TGridRow&) { return ++seen < 2; });
    QCOMPARE(seen, 2);
}

QTEST_GUILESS_MAIN(TestGridParts)
#include "tst_gridparts.moc"
