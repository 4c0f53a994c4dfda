#include "../grid/support_grid.h"

#include "uEditorItem.h"
#include "uGrid.h"
#include "uGridCardView.h"
#include "uGridColumnChooser.h"
#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridPictureCache.h"
#include "uGridTableView.h"

#include <QAbstractScrollArea>
#include <QBuffer>
#include <QImage>
#include <QListWidget>
#include <QMutex>
#include <QScrollBar>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const QStringList Fields{u"ID"_s,     u"Metal"_s, u"Name"_s,    u"Year"_s,
                         u"Weight"_s, u"Price"_s, u"Country"_s, u"Thumb"_s};

QByteArray png(int seed)
{
    QImage image(64, 64, QImage::Format_RGB32);
    image.fill(QColor::fromHsv(seed * 37 % 360, 120, 220));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// Rows with a picture each; remembers for which rows the picture bytes were read.
class TPictureTable : public TTestTable
{
public:
    explicit TPictureTable(int count) : TTestTable(Fields, rows(count)) {}
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (index.column() == 7 && role == Qt::EditRole)
            read.insert(index.row());
        return TTestTable::data(index, role);
    }
    mutable QSet<int> read;

private:
    static QList<QVariantList> rows(int count)
    {
        QList<QVariantList> out = MakeItems(count);
        const QByteArray pictures[3] = {png(1), png(2), png(3)};
        for (int i = 0; i < out.size(); ++i)
            out[i].append(pictures[i % 3]);
        return out;
    }
};

class TPicture : public TEditorItem
{
public:
    QString displayText(const QVariant&) const override { return {}; }
    bool isPicture() const override { return true; }
};

struct TCards
{
    explicit TCards(int rows = 30) : table(rows)
    {
        grid.resize(800, 600);
        grid.setSourceModel(&table);
        view = grid.addCardView(u"Cards"_s, u"Cards"_s);
        static const TPicture picture;
        view->columns()->beginUpdate();
        TGridColumn* thumb = view->addColumn(u"Thumb"_s, u"Thumb"_s);
        thumb->setWidth(0);
        thumb->setLines(4);
        view->setEditorItem(thumb, &picture);
        TGridColumn* title = view->addColumn(u"Title"_s, u"Name"_s);
        title->setWidth(0);
        title->setCardTitle(true);
        for (const QString& field : {u"Metal"_s, u"Year"_s, u"Price"_s, u"Country"_s})
            view->addColumn(field, field)->setWidth(0);
        view->columns()->endUpdate();
        view->setCardWidth(200);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
    }
    TGridColumn* column(const QString& name) const { return view->columns()->byName(name); }
    QWidget* cards() const { return view->cardsViewport(); }
    QPoint at(const QRect& rect) const { return cards()->mapFrom(view, rect.center()); }

    TPictureTable table;
    TGrid grid;
    TGridCardView* view = nullptr;
};
} // namespace

class TestGridCardView : public QObject
{
    Q_OBJECT
private slots:
    void hideRowThroughChooser();
    void moveRowByItsCaption();
    void emptyRowsHidden();
    void ctrlWheelSetsWidth_data();
    void ctrlWheelSetsWidth();
    void hitKinds();
    void picturesOnlyOnScreen();
    void picturesThroughLoader();
    void currentRowAcrossViews();
    void keyboardAndTemplate();
};

// Unchecking a row in the chooser hides it in every card; the cards get shorter.
void TestGridCardView::hideRowThroughChooser()
{
    TCards c;
    const int height = c.view->cardHeight();
    QVERIFY(!c.view->rowRect(0, c.column(u"Year"_s)).isEmpty());
    c.view->showColumnChooser();
    auto* chooser = c.view->findChild<TGridColumnChooser*>();
    QVERIFY(chooser && chooser->isVisible());
    QListWidget* list = chooser->list();
    const QList<QListWidgetItem*> items = list->findItems(u"Year caption"_s, Qt::MatchExactly);
    QCOMPARE(items.size(), 1);
    QCOMPARE(items.first()->checkState(), Qt::Checked);
    items.first()->setCheckState(Qt::Unchecked);
    QVERIFY(!c.column(u"Year"_s)->visible());
    QVERIFY(c.view->rowRect(0, c.column(u"Year"_s)).isEmpty());
    QVERIFY(c.view->cardHeight() < height);
    // The layout keeps it hidden.
    const QString layout = c.view->saveLayout();
    c.column(u"Year"_s)->setVisible(true);
    c.view->restoreLayout(layout);
    QVERIFY(!c.column(u"Year"_s)->visible());
    // Shown again from the chooser, and moved up a place.
    list->findItems(u"Year caption"_s, Qt::MatchExactly).first()->setCheckState(Qt::Checked);
    list->setCurrentItem(list->findItems(u"Year caption"_s, Qt::MatchExactly).first());
    const int position = c.column(u"Year"_s)->position();
    QTest::mouseClick(chooser->findChild<QWidget*>(u"chooserUp"_s), Qt::LeftButton);
    QCOMPARE(c.column(u"Year"_s)->position(), position - 1);
}

// A row dragged by its caption goes where it is dropped, in every card.
void TestGridCardView::moveRowByItsCaption()
{
    TCards c;
    const QRect caption = c.view->captionRect(0, c.column(u"Country"_s));
    const QRect target = c.view->rowRect(0, c.column(u"Metal"_s));
    QVERIFY(!caption.isEmpty() && !target.isEmpty());
    QTest::mousePress(c.cards(), Qt::LeftButton, Qt::NoModifier, c.at(caption));
    const QPoint drop = c.cards()->mapFrom(c.view, QPoint(target.center().x(), target.top() + 2));
    QMouseEvent move(QEvent::MouseMove, drop, c.cards()->mapToGlobal(drop), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(c.cards(), &move);
    QTest::mouseRelease(c.cards(), Qt::LeftButton, Qt::NoModifier, drop);
    QCOMPARE(c.column(u"Country"_s)->position() + 1, c.column(u"Metal"_s)->position());
    QVERIFY(c.view->rowRect(0, c.column(u"Country"_s)).top() <
            c.view->rowRect(0, c.column(u"Metal"_s)).top());
}

// Rows with nothing to show are left out and the rows below move up.
void TestGridCardView::emptyRowsHidden()
{
    TCards c;
    int blank = -1;
    for (int r = 0; r < c.table.rowCount() && blank < 0; ++r)
        if (c.table.value(r, u"Year"_s).isNull())
            blank = r;
    QVERIFY(blank >= 0);
    c.view->scrollToSourceRow(blank);
    QVERIFY(!c.view->rowRect(blank, c.column(u"Year"_s)).isEmpty());
    const int priceTop = c.view->rowRect(blank, c.column(u"Price"_s)).top();
    c.view->setEmptyRowsHidden(true);
    QVERIFY(c.view->rowRect(blank, c.column(u"Year"_s)).isEmpty());
    QVERIFY(c.view->rowRect(blank, c.column(u"Price"_s)).top() < priceTop);
}

void TestGridCardView::ctrlWheelSetsWidth_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("steps"); // + up, - down
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<int>("width");
    QTest::newRow("down once") << 209 << -1 << int(Qt::ControlModifier) << 188;
    QTest::newRow("up once") << 209 << 1 << int(Qt::ControlModifier) << 230;
    QTest::newRow("a tie goes to even") << 45 << -1 << int(Qt::ControlModifier) << 40;
    QTest::newRow("thirty times down stops at 40") << 209 << -30 << int(Qt::ControlModifier) << 40;
    QTest::newRow("no ctrl scrolls") << 209 << -1 << int(Qt::NoModifier) << 209;
    QTest::newRow("ctrl and shift scrolls")
        << 209 << -1 << int(Qt::ControlModifier | Qt::ShiftModifier) << 209;
}

void TestGridCardView::ctrlWheelSetsWidth()
{
    QFETCH(int, start);
    QFETCH(int, steps);
    QFETCH(int, modifiers);
    QFETCH(int, width);
    TCards c(200);
    c.view->setWheelZoom(true, 0.9, 1.1, 40);
    c.view->setCardWidth(start);
    QSignalSpy changed(c.view, &TGridCardView::cardWidthChanged);
    auto* bar = qobject_cast<QAbstractScrollArea*>(c.cards()->parentWidget())->verticalScrollBar();
    const int scroll = bar ? bar->value() : 0;
    for (int i = 0; i < std::abs(steps); ++i) {
        const QPoint pos = c.cards()->rect().center();
        QWheelEvent wheel(pos, c.cards()->mapToGlobal(pos), QPoint(), QPoint(0, steps < 0 ? -120 : 120),
                          Qt::NoButton, Qt::KeyboardModifiers(modifiers), Qt::NoScrollPhase, false);
        QApplication::sendEvent(c.cards(), &wheel);
    }
    QCOMPARE(c.view->cardWidth(), width);
    QCOMPARE(changed.isEmpty(), width == start);
    if (modifiers != int(Qt::ControlModifier) && bar)
        QVERIFY(bar->value() != scroll);
}

void TestGridCardView::hitKinds()
{
    TCards c;
    QSignalSpy clicked(c.view, &TGridView::doubleClicked);
    const QRect card = c.view->cardRect(0);
    struct Case
    {
        QPoint At;
        TGridHitKind Kind;
        QString Column;
    };
    const std::vector<Case> cases{
        {c.view->captionRect(0, c.column(u"Year"_s)).center(), TGridHitKind::RowCaption, u"Year"_s},
        {c.view->rowRect(0, c.column(u"Year"_s)).center(), TGridHitKind::RecordCell, u"Year"_s},
        {c.view->rowRect(0, c.column(u"Thumb"_s)).center(), TGridHitKind::RecordCell, u"Thumb"_s},
        {QPoint(card.left() + 2, card.bottom() - 1), TGridHitKind::Card, u""_s},
        {QPoint(card.right() + 3, card.center().y()), TGridHitKind::EmptyArea, u""_s},
    };
    for (const Case& k : cases) {
        const TGridHitInfo hit = c.view->hitTest(k.At);
        QCOMPARE(hit.Kind, k.Kind);
        QCOMPARE(hit.Column ? hit.Column->name() : QString(), k.Column);
        QTest::mouseDClick(c.cards(), Qt::LeftButton, Qt::NoModifier, c.cards()->mapFrom(c.view, k.At));
        QCOMPARE(clicked.last().first().value<TGridHitInfo>().Kind, k.Kind);
    }
    QCOMPARE(clicked.first().first().value<TGridHitInfo>().SourceRow, c.view->model()->sourceRowAt(0));
}

// Picture bytes are read for cards on screen only, decoded off the main thread into the cache,
// and cards scrolled by before their turn are never decoded.
void TestGridCardView::picturesOnlyOnScreen()
{
    TCards c(3000);
    TGridPictureCache* cache = c.grid.pictureCache();
    // Work asked for by the first paints is done before counting starts.
    cache->waitForIdle();
    cache->resetStats();
    const auto onScreen = [&] {
        QSet<int> rows;
        for (int p = 0; p < c.view->model()->visibleRowCount(); ++p) {
            const int row = c.view->model()->sourceRowAt(p);
            if (!c.view->cardRect(row).isEmpty())
                rows.insert(row);
            else if (!rows.isEmpty())
                break;
        }
        return rows;
    };
    QSet<int> seen;
    auto* bar = qobject_cast<QAbstractScrollArea*>(c.cards()->parentWidget())->verticalScrollBar();
    QVERIFY(bar);
    for (int step = 0; step < 40; ++step) {
        bar->setValue(bar->maximum() * step / 39);
        c.cards()->repaint();
        seen.unite(onScreen());
    }
    cache->waitForIdle();
    c.cards()->repaint();
    cache->waitForIdle();
    QVERIFY(c.table.read.size() > 0);
    QVERIFY2(seen.contains(c.table.read), "bytes read for a card that was never on screen");
    const TGridPictureCache::Stats stats = cache->stats();
    // Each screen asked for its own cards; those scrolled by were dropped, not decoded.
    QCOMPARE(stats.Decoded + stats.Dropped + stats.Failed, stats.Requested);
    QVERIFY(stats.Dropped > 0);
    // Only decodes already under way when their card left may finish unwanted.
    QVERIFY(stats.DecodedUnwanted <= stats.Decoded);
    QCOMPARE(stats.Failed, 0);
    // The last screen is decoded and drawn from the cache.
    QTRY_VERIFY(cache->count() >= onScreen().size());
    QVERIFY(cache->bytes() <= cache->maxBytes());
}

// With a loader the cards never read picture bytes from the model on the main thread.
void TestGridCardView::picturesThroughLoader()
{
    TCards c(60);
    TGridPictureCache* cache = c.grid.pictureCache();
    cache->waitForIdle();
    cache->clear();
    c.table.read.clear();
    const QByteArray bytes = png(7);
    QSet<int> asked;
    QMutex lock;
    cache->setLoader([&](const QVariant& key, const QString& field) {
        QMutexLocker locker(&lock);
        asked.insert(key.toInt());
        return field == u"Thumb"_s ? bytes : QByteArray();
    });
    c.cards()->repaint();
    cache->waitForIdle();
    c.cards()->repaint();
    QVERIFY(c.table.read.isEmpty());
    QVERIFY(!asked.isEmpty());
    const int row = c.view->model()->sourceRowAt(0);
    QMutexLocker locker(&lock);
    QVERIFY(asked.contains(c.table.key(row)));
    QVERIFY(cache->count() >= asked.size());
}

// A card and a table view share the current row; each keeps its own selection. Right to left, the
// first card stands at the right.
void TestGridCardView::currentRowAcrossViews()
{
    TCards c;
    TGridTableView* table = c.grid.addTableView(u"Table"_s);
    table->addColumn(u"Name"_s, u"Name"_s);
    QSignalSpy moved(&c.grid, &TGrid::currentRowChanged);
    const int row = c.view->model()->sourceRowAt(2);
    QTest::mouseClick(c.cards(), Qt::LeftButton, Qt::NoModifier, c.at(c.view->cardRect(row)));
    QCOMPARE(moved.size(), 1);
    QCOMPARE(table->currentSourceRow(), row);
    QCOMPARE(c.view->selectedSourceRows(), QList<int>{row});
    QCOMPARE(table->selectedCount(), 0);
    c.grid.setCurrentRow(7);
    QCOMPARE(moved.size(), 1);
    QCOMPARE(c.view->currentSourceRow(), 7);

    const QRect first = c.view->cardRect(c.view->model()->sourceRowAt(0));
    c.view->setLayoutDirection(Qt::RightToLeft);
    const QRect mirrored = c.view->cardRect(c.view->model()->sourceRowAt(0));
    QVERIFY(mirrored.left() > first.left());
    QCOMPARE(c.view->hitTest(mirrored.center()).SourceRow, c.view->model()->sourceRowAt(0));
}

void TestGridCardView::keyboardAndTemplate()
{
    TCards c;
    c.view->setFocus();
    c.grid.setCurrentRow(c.view->model()->sourceRowAt(0));
    QWidget* area = c.cards()->parentWidget();
    const int columns = std::max(1, (c.cards()->width() - c.view->cardIndent()) /
                                        (c.view->cardWidth() + c.view->cardIndent()));
    QTest::keyClick(area, Qt::Key_Right);
    QCOMPARE(c.grid.currentRow(), c.view->model()->sourceRowAt(1));
    QTest::keyClick(area, Qt::Key_Down);
    QCOMPARE(c.grid.currentRow(), c.view->model()->sourceRowAt(1 + columns));
    QTest::keyClick(area, Qt::Key_End, Qt::ShiftModifier);
    QCOMPARE(c.view->selectedCount(), c.table.rowCount() - 1 - columns);

    // A view made from this one has its rows and options, and a selection of its own.
    c.view->setEmptyRowsHidden(true);
    c.column(u"Price"_s)->setVisible(false);
    TGridCardView* copy = c.grid.addCardViewLike(c.view, u"Copy"_s);
    QCOMPARE(copy->columns()->count(), c.view->columns()->count());
    QVERIFY(!copy->columns()->byName(u"Price"_s)->visible());
    QVERIFY(copy->columns()->byName(u"Thumb"_s)->isPicture());
    QVERIFY(copy->emptyRowsHidden());
    QCOMPARE(copy->cardWidth(), c.view->cardWidth());
    QCOMPARE(copy->selectedCount(), 0);
}

QTEST_MAIN(TestGridCardView)
#include "tst_gridcardview.moc"
