#include "../grid/support_grid.h"

#include "uGrid.h"
#include "uGridColumns.h"
#include "uGridFilterBuilder.h"
#include "uGridFindPanel.h"
#include "uGridModel.h"
#include "uGridTableView.h"
#include "uGridTexts.h"

#include <QApplication>
#include <QComboBox>
#include <QDrag>
#include <QHeaderView>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {
const QStringList Fields{u"ID"_s, u"Metal"_s, u"Name"_s, u"Year"_s, u"Weight"_s, u"Price"_s, u"Country"_s};

// A grid with one table view over generated rows, at a fixed size.
struct TTable
{
    explicit TTable(int rows = 40) : table(Fields, MakeItems(rows))
    {
        grid.resize(900, 600);
        grid.setSourceModel(&table);
        view = grid.addTableView(u"View"_s, u"Table"_s);
        for (const QString& field : Fields)
            view->addColumn(field, field);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
    }
    TGridColumn* column(const QString& name) const { return view->columns()->byName(name); }
    QPoint center(const QRect& rect) const { return rect.center(); }

    TTestTable table;
    TGrid grid;
    TGridTableView* view = nullptr;
};

// Delivers a drag to the widget under a point of the view, as the window system would.
Qt::DropAction deliver(QDrag* drag, QWidget* target, const QPoint& at)
{
    QMimeData* mime = drag->mimeData();
    QDragEnterEvent enter(at, Qt::MoveAction, mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    if (!enter.isAccepted())
        return Qt::IgnoreAction;
    QDragMoveEvent move(at, Qt::MoveAction, mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &move);
    QDropEvent drop(at, Qt::MoveAction, mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);
    return drop.isAccepted() ? drop.dropAction() : Qt::IgnoreAction;
}

void mouse(QWidget* widget, QEvent::Type type, const QPoint& pos, Qt::MouseButtons buttons,
           Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, pos, widget->mapToGlobal(pos), button, buttons, modifiers);
    QApplication::sendEvent(widget, &event);
}
} // namespace

class TestGridTableView : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void dragHeaderIntoGroupByPanel_data();
    void dragHeaderIntoGroupByPanel();
    void dragGroupBoxOut();
    void headerClicksSort_data();
    void headerClicksSort();
    void selectionAndCurrentRow();
    void keyboard();
    void doubleClickByHitKind();
    void findPanelTyping();
    void widthsAndBestFit();
    void filterBuilder();
    void layoutAndTexts();
    void translatedTexts();
    void autoWidthResize();
    void modelSwappedAndDestroyed();
    void filterBuilderNested();
};

void TestGridTableView::cleanup()
{
    TGridTableView::setDragRunner({});
    TGridView::setDialogRunner({});
}

void TestGridTableView::dragHeaderIntoGroupByPanel_data()
{
    QTest::addColumn<QString>("grouped"); // already grouped before the drag
    QTest::addColumn<bool>("dropLeft");   // drop at the left edge of the panel
    QTest::addColumn<QStringList>("levels");
    QTest::newRow("first group") << u""_s << true << QStringList{u"Country"_s};
    QTest::newRow("before a group") << u"Metal"_s << true << QStringList{u"Country"_s, u"Metal"_s};
    QTest::newRow("after a group") << u"Metal"_s << false << QStringList{u"Metal"_s, u"Country"_s};
}

// Pressing a header and dragging it up out of the header carries the column into the group-by
// panel: the view groups by it there, hides it, and says the grouping changed.
void TestGridTableView::dragHeaderIntoGroupByPanel()
{
    QFETCH(QString, grouped);
    QFETCH(bool, dropLeft);
    QFETCH(QStringList, levels);
    TTable t;
    if (!grouped.isEmpty())
        t.view->groupByColumn(t.column(grouped), 0);
    QSignalSpy grouping(t.view, &TGridTableView::groupingChanged);
    QWidget* panel = t.view->groupByPanel();
    const QPoint dropAt(dropLeft ? 2 : panel->width() - 10, panel->height() / 2);
    bool ran = false;
    TGridTableView::setDragRunner([&](QDrag* drag) {
        ran = true;
        return deliver(drag, panel, dropAt);
    });

    QHeaderView* header = t.view->header();
    const QRect section = t.view->headerRect(t.column(u"Country"_s));
    const QPoint press = header->viewport()->mapFrom(t.view, section.center());
    mouse(header->viewport(), QEvent::MouseButtonPress, press, Qt::LeftButton);
    mouse(header->viewport(), QEvent::MouseMove, press + QPoint(0, -header->height()), Qt::LeftButton);
    QVERIFY(ran);
    mouse(header->viewport(), QEvent::MouseButtonRelease, press + QPoint(0, -header->height()), Qt::NoButton);

    QStringList got;
    for (const TGridColumn* c : t.view->columns()->groupColumns())
        got.append(c->name());
    QCOMPARE(got, levels);
    QVERIFY(!t.column(u"Country"_s)->visible());
    QCOMPARE(t.view->model()->groupDepth(), levels.size());
    QCOMPARE(grouping.size(), 1);
    // A drag is no click: the header did not sort.
    QVERIFY(t.view->columns()->sortColumns().isEmpty());
}

// A group box dragged out of the panel ungroups its column: onto the header it comes back where it
// is dropped; anywhere else it comes back where it was.
void TestGridTableView::dragGroupBoxOut()
{
    TTable t;
    t.view->groupByColumn(t.column(u"Metal"_s), 0);
    t.view->groupByColumn(t.column(u"Country"_s), 1);
    QWidget* panel = t.view->groupByPanel();
    QHeaderView* header = t.view->header();

    // Onto the header, before the Name column.
    const QPoint nameAt =
        header->viewport()->mapFrom(t.view, t.view->headerRect(t.column(u"Name"_s)).topLeft()) + QPoint(2, 5);
    TGridTableView::setDragRunner([&](QDrag* drag) { return deliver(drag, header->viewport(), nameAt); });
    // The first box stands at the panel's top left.
    const QPoint boxAt(12, 12);
    mouse(panel, QEvent::MouseButtonPress, boxAt, Qt::LeftButton);
    mouse(panel, QEvent::MouseMove, boxAt + QPoint(0, 40), Qt::LeftButton);
    QCOMPARE(t.view->columns()->groupColumns(), QList<TGridColumn*>{t.column(u"Country"_s)});
    QVERIFY(t.column(u"Metal"_s)->visible());
    QCOMPARE(t.column(u"Metal"_s)->position() + 1, t.column(u"Name"_s)->position());

    // Past the last column: it comes back last.
    const QPoint end(header->viewport()->width() - 2, 5);
    TGridTableView::setDragRunner([&](QDrag* drag) { return deliver(drag, header->viewport(), end); });
    t.view->setColumnAutoWidth(false);
    for (TGridColumn* c : t.view->columns()->visibleColumns())
        c->setWidth(40);
    t.column(u"Country"_s)->setPosition(0);
    mouse(panel, QEvent::MouseButtonPress, boxAt, Qt::LeftButton);
    mouse(panel, QEvent::MouseMove, boxAt + QPoint(0, 40), Qt::LeftButton);
    QCOMPARE(t.column(u"Country"_s)->position(), t.view->columns()->count() - 1);
    t.view->groupByColumn(t.column(u"Country"_s), 0);

    // Nowhere: out of the grouping, shown again.
    TGridTableView::setDragRunner([](QDrag*) { return Qt::IgnoreAction; });
    mouse(panel, QEvent::MouseButtonPress, boxAt, Qt::LeftButton);
    mouse(panel, QEvent::MouseMove, boxAt + QPoint(0, 40), Qt::LeftButton);
    QVERIFY(t.view->columns()->groupColumns().isEmpty());
    QVERIFY(t.column(u"Country"_s)->visible());
    QCOMPARE(t.view->model()->groupDepth(), 0);
}

void TestGridTableView::headerClicksSort_data()
{
    QTest::addColumn<QStringList>("clicks"); // column, with "+" for shift and "-" for ctrl
    QTest::addColumn<QString>("sort");       // name:order ...
    QTest::newRow("one click") << QStringList{u"Name"_s} << u"Name:1"_s;
    QTest::newRow("again turns") << QStringList{u"Name"_s, u"Name"_s} << u"Name:2"_s;
    QTest::newRow("another replaces") << QStringList{u"Name"_s, u"Year"_s} << u"Year:1"_s;
    QTest::newRow("shift adds") << QStringList{u"Name"_s, u"+Year"_s} << u"Name:1 Year:1"_s;
    QTest::newRow("shift turns its own")
        << QStringList{u"Name"_s, u"+Year"_s, u"+Year"_s} << u"Name:1 Year:2"_s;
    QTest::newRow("ctrl takes out") << QStringList{u"Name"_s, u"+Year"_s, u"-Name"_s} << u"Year:1"_s;
}

void TestGridTableView::headerClicksSort()
{
    QFETCH(QStringList, clicks);
    QFETCH(QString, sort);
    TTable t;
    QHeaderView* header = t.view->header();
    for (QString click : clicks) {
        Qt::KeyboardModifiers modifiers;
        if (click.startsWith(u'+'))
            modifiers = Qt::ShiftModifier;
        else if (click.startsWith(u'-'))
            modifiers = Qt::ControlModifier;
        click.remove(u'+').remove(u'-');
        const QPoint at = header->viewport()->mapFrom(t.view, t.view->headerRect(t.column(click)).center());
        QTest::mouseClick(header->viewport(), Qt::LeftButton, modifiers, at);
    }
    QStringList got;
    for (const TGridColumn* c : t.view->columns()->sortColumns())
        got.append(u"%1:%2"_s.arg(c->name()).arg(int(c->sortOrder())));
    QCOMPARE(got.join(u' '), sort);
    // The rows follow the first key.
    const TGridColumn* first = t.view->columns()->sortColumns().first();
    const TGridModel* m = t.view->model();
    for (int p = 1; p < m->visibleRowCount(); ++p) {
        const QString a = m->displayText(m->sourceRowAt(p - 1), first);
        const QString b = m->displayText(m->sourceRowAt(p), first);
        if (first->fieldName() == u"Name"_s)
            QVERIFY(first->sortOrder() == TGridSortOrder::Ascending
                        ? QString::compare(a, b, Qt::CaseInsensitive) <= 0
                        : QString::compare(a, b, Qt::CaseInsensitive) >= 0);
    }
}

void TestGridTableView::selectionAndCurrentRow()
{
    TTable t;
    QSignalSpy moved(&t.grid, &TGrid::currentRowChanged);
    QSignalSpy selection(t.view, &TGridView::selectionChanged);
    QWidget* rows = t.view->rowsViewport();
    const TGridColumn* name = t.column(u"Name"_s);
    const auto click = [&](int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::mouseClick(rows, Qt::LeftButton, modifiers,
                          rows->mapFrom(t.view, t.view->cellRect(row, name).center()));
    };
    click(2);
    QCOMPARE(t.grid.currentRow(), 2);
    QCOMPARE(moved.size(), 1);
    QCOMPARE(moved.last().first().toInt(), 2);
    click(5, Qt::ControlModifier);
    QCOMPARE(t.view->selectedSourceRows(), (QList<int>{2, 5}));
    click(8, Qt::ShiftModifier);
    QCOMPARE(t.view->selectedSourceRows(), (QList<int>{5, 6, 7, 8}));
    click(6, Qt::ControlModifier);
    QCOMPARE(t.view->selectedCount(), 3);
    QVERIFY(selection.size() >= 4);

    // The program moves the current row: nothing is told back, and the selection stands.
    moved.clear();
    t.grid.setCurrentRow(10);
    QCOMPARE(moved.size(), 0);
    QCOMPARE(t.view->currentSourceRow(), 10);
    QCOMPARE(t.view->selectedCount(), 3);

    // A second view keeps its own selection and shares the current row.
    TGridTableView* other = t.grid.addTableView(u"Other"_s);
    other->addColumn(u"Name"_s, u"Name"_s);
    QCOMPARE(other->currentSourceRow(), 10);
    QCOMPARE(other->selectedCount(), 0);
    other->selectAll();
    QCOMPARE(other->selectedCount(), t.table.rowCount());
    QCOMPARE(t.view->selectedCount(), 3);

    // Grouping keeps the selection; a row inserted before shifts it.
    t.view->groupByColumn(t.column(u"Metal"_s), 0);
    QCOMPARE(t.view->selectedCount(), 3);
    t.table.insertRowAt(0, MakeItems(1, 5).first());
    QVERIFY(t.view->isSelected(6) && t.view->isSelected(8) && t.view->isSelected(9));
    QCOMPARE(t.grid.currentRow(), 11);
}

void TestGridTableView::keyboard()
{
    TTable t(12);
    t.view->groupByColumn(t.column(u"Metal"_s), 0);
    QWidget* area = t.view->rowsViewport()->parentWidget();
    area->setFocus();
    const TGridModel* m = t.view->model();
    // Collapsed groups: down walks the group rows; right opens one, down enters it.
    QCOMPARE(m->displayRowCount(), int(m->rootGroup()->Children.size()));
    t.grid.setCurrentRow(-1);
    QTest::keyClick(area, Qt::Key_Down);
    QTest::keyClick(area, Qt::Key_Right);
    QVERIFY(m->rootGroup()->Children.front()->Expanded);
    QTest::keyClick(area, Qt::Key_Down);
    const int first = m->displayRow(1).SourceRow;
    QCOMPARE(t.grid.currentRow(), first);
    QCOMPARE(t.view->selectedSourceRows(), QList<int>{first});
    QTest::keyClick(area, Qt::Key_Up);
    QCOMPARE(t.view->selectedCount(), 0); // a group row has the focus
    QTest::keyClick(area, Qt::Key_Left);
    QVERIFY(!m->rootGroup()->Children.front()->Expanded);
    QTest::keyClick(area, Qt::Key_Asterisk);
    QCOMPARE(m->displayRowCount(), int(m->rootGroup()->Children.size()) + t.table.rowCount());
    QTest::keyClick(area, Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(t.view->selectedCount(), t.table.rowCount());
}

// A window hooks double-clicks by what lies under the pointer.
void TestGridTableView::doubleClickByHitKind()
{
    TTable t(6);
    t.view->setFooterVisible(true);
    t.view->model()->addFooterSummary({u"Price"_s, TGridSummaryKind::Sum, 0, {}, {}});
    t.view->groupByColumn(t.column(u"Country"_s), 0);
    t.view->expandAll();
    QSignalSpy clicked(t.view, &TGridView::doubleClicked);
    const TGridGroupNode* group = t.view->model()->rootGroup()->Children.front().get();
    const int row = t.view->model()->sourceRowAt(0);

    struct Case
    {
        QPoint At;
        TGridHitKind Kind;
    };
    const std::vector<Case> cases{
        {t.view->cellRect(row, t.column(u"Name"_s)).center(), TGridHitKind::RecordCell},
        {t.view->groupRowRect(group).center(), TGridHitKind::GroupRow},
        {t.view->headerRect(t.column(u"Year"_s)).center(), TGridHitKind::Header},
        {QPoint(t.view->width() / 2, t.view->height() - 60), TGridHitKind::EmptyArea},
    };
    for (const Case& c : cases) {
        QCOMPARE(t.view->hitTest(c.At).Kind, c.Kind);
        QWidget* target = t.view->childAt(c.At);
        QVERIFY(target);
        QTest::mouseDClick(target, Qt::LeftButton, Qt::NoModifier, target->mapFrom(t.view, c.At));
        QCOMPARE(clicked.last().first().value<TGridHitInfo>().Kind, c.Kind);
    }
    QCOMPARE(clicked.size(), int(cases.size()));
    QCOMPARE(clicked.first().first().value<TGridHitInfo>().SourceRow, row);
    QCOMPARE(clicked.first().first().value<TGridHitInfo>().Column, t.column(u"Name"_s));
    // The double-click on the group row also closed it.
    QVERIFY(!group->Expanded);
}

void TestGridTableView::findPanelTyping()
{
    TTable t;
    QSignalSpy shown(t.view, &TGridView::findPanelVisibilityChanged);
    t.view->showFindPanel();
    QCOMPARE(shown.size(), 1);
    QVERIFY(t.view->isFindPanelVisible());
    QLineEdit* edit = t.view->findPanel()->editor();
    QTRY_VERIFY(edit->hasFocus());
    int expected = 0;
    for (int r = 0; r < t.table.rowCount(); ++r)
        expected += t.table.value(r, u"Name"_s).toString().contains(u"maple"_s, Qt::CaseInsensitive) &&
                    t.table.value(r, u"Country"_s).toString() == u"Canada"_s;
    QTest::keyClicks(edit, u"MAPLE can"_s);
    QTRY_COMPARE(t.view->model()->visibleRowCount(), expected);
    QCOMPARE(t.view->findText(), u"MAPLE can"_s);
    QTest::keyClick(edit, Qt::Key_Escape);
    QTRY_COMPARE(t.view->model()->visibleRowCount(), t.table.rowCount());
    QVERIFY(t.view->isFindPanelVisible());
    QTest::keyClick(edit, Qt::Key_Escape);
    QVERIFY(!t.view->isFindPanelVisible());
    QCOMPARE(shown.size(), 2);
}

void TestGridTableView::widthsAndBestFit()
{
    TTable t;
    t.view->groupByColumn(t.column(u"Metal"_s), 0);
    QHeaderView* header = t.view->header();
    const auto shownWidth = [&] {
        int sum = 0;
        for (const TGridColumn* c : t.view->columns()->visibleColumns())
            sum += header->sectionSize(c->id());
        return sum;
    };
    // Auto width: the shown columns share the room beside the group indent.
    QCOMPARE(shownWidth(), header->width());
    t.view->setColumnAutoWidth(false);
    t.column(u"Name"_s)->setWidth(333);
    QCOMPARE(header->sectionSize(t.column(u"Name"_s)->id()), 333);

    // Best fit: as wide as the widest text of the rows on screen and a sample of the others.
    t.column(u"Country"_s)->setWidth(20);
    t.view->applyBestFit(t.column(u"Country"_s));
    const QFontMetrics metrics = t.view->fontMetrics();
    int widest = 0;
    for (int r = 0; r < t.table.rowCount(); ++r)
        widest = std::max(widest, metrics.horizontalAdvance(t.table.value(r, u"Country"_s).toString()));
    QVERIFY(t.column(u"Country"_s)->width() >= widest);
    // The caption counts too, with room for the sort mark.
    const int caption = metrics.horizontalAdvance(t.view->model()->columnCaption(t.column(u"Country"_s)));
    QVERIFY(t.column(u"Country"_s)->width() < std::max(widest, caption) + 50);

    // A cut cell shows its text as a hint.
    t.view->expandAll();
    t.column(u"Name"_s)->setWidth(30);
    const QPoint at = t.view->rowsViewport()->mapFrom(
        t.view, t.view->cellRect(t.view->model()->sourceRowAt(0), t.column(u"Name"_s)).center());
    QHelpEvent help(QEvent::ToolTip, at, t.view->rowsViewport()->mapToGlobal(at));
    QApplication::sendEvent(t.view->rowsViewport(), &help);
    QTRY_COMPARE(QToolTip::text(), t.table.value(t.view->model()->sourceRowAt(0), u"Name"_s).toString());
}

// The filter builder edits the view's filter through its own rows; a bad value keeps it open.
void TestGridTableView::filterBuilder()
{
    TTable t;
    QString problem;
    TGridView::setDialogRunner([&](QWidget* dialog) {
        auto* builder = qobject_cast<TGridFilterBuilder*>(dialog);
        QTreeWidgetItem* item = builder->addCondition(nullptr, u"Year"_s);
        QWidget* row = builder->tree()->itemWidget(item, 0);
        auto* op = row->findChild<QComboBox*>(u"operator"_s);
        op->setCurrentIndex(op->findData(int(TGridFilterOperator::GreaterOrEqual)));
        auto* value = row->findChild<QComboBox*>(u"value"_s);
        value->setEditText(u"not a year"_s);
        builder->accept();
        problem = builder->problem();
        if (builder->result() == QDialog::Accepted)
            return int(QDialog::Accepted);
        value->setEditText(u"2010"_s);
        builder->accept();
        return builder->result();
    });
    QVERIFY(t.view->showFilterBuilder());
    QVERIFY(problem.contains(u"not a year"_s));
    QCOMPARE(t.view->filter().toText(), u"[Year] >= 2010"_s);
    int expected = 0;
    for (int r = 0; r < t.table.rowCount(); ++r)
        expected += !t.table.value(r, u"Year"_s).isNull() && t.table.value(r, u"Year"_s).toInt() >= 2010;
    QCOMPARE(t.view->model()->visibleRowCount(), expected);
    QVERIFY(t.view->findChild<QWidget*>(u"filterBar"_s)->isVisible());
    QVERIFY(t.view->filterDisplayText().contains(u"Year caption is greater than or equal to 2010"_s));

    // Cancel changes nothing; the bar's button clears the filter.
    TGridView::setDialogRunner([](QWidget*) { return int(QDialog::Rejected); });
    QVERIFY(!t.view->showFilterBuilder());
    QCOMPARE(t.view->model()->visibleRowCount(), expected);
    QTest::mouseClick(t.view->findChild<QWidget*>(u"filterClear"_s), Qt::LeftButton);
    QVERIFY(t.view->filter().isEmpty());
    QCOMPARE(t.view->model()->visibleRowCount(), t.table.rowCount());
}

void TestGridTableView::layoutAndTexts()
{
    TTable t;
    t.column(u"Year"_s)->setPosition(0);
    t.column(u"Price"_s)->setVisible(false);
    t.view->groupByColumn(t.column(u"Country"_s), 0);
    t.column(u"Name"_s)->setSortOrder(TGridSortOrder::Descending);
    const QString layout = t.view->saveLayout();

    TTable other;
    QVERIFY(other.view->restoreLayout(layout));
    QCOMPARE(other.view->saveLayout(), layout);
    QCOMPARE(other.view->model()->groupDepth(), 1);
    QVERIFY(!other.view->restoreLayout(u"not a layout"_s));

    // Texts of the view: its own, or the grid's.
    QVERIFY(!t.view->groupByText().isEmpty());
    t.view->setGroupByText(u"Hier ziehen"_s);
    QCOMPARE(t.view->groupByText(), u"Hier ziehen"_s);
    t.view->setEmptyText(u"Nichts"_s);
    t.view->setFilter(TGridFilter::fromText(u"[ID] < 0"_s));
    QCOMPARE(t.view->model()->displayRowCount(), 0);
    QCOMPARE(t.view->hitTest(t.view->rowsViewport()->geometry().center()).Kind, TGridHitKind::EmptyArea);
    QCOMPARE(t.view->emptyText(), u"Nichts"_s);

    // Right to left: the first column stands at the right.
    t.view->setFilter({});
    t.view->setLayoutDirection(Qt::RightToLeft);
    QTest::qWait(10);
    const QRect first = t.view->headerRect(t.column(u"Year"_s));
    const QRect second = t.view->headerRect(t.column(u"ID"_s));
    QVERIFY(first.left() > second.left());
    QCOMPARE(t.view->hitTest(first.center()).Column, t.column(u"Year"_s));
}

// The program's texts reach the widgets at once; a view's own text wins over the grid's.
void TestGridTableView::translatedTexts()
{
    TTable t;
    t.view->showFindPanel();
    const TGridTexts saved = GridTexts();
    TGridTexts texts = saved;
    texts.FindButton = u"Suchen"_s;
    texts.GroupByText = u"Spalte hierher ziehen"_s;
    texts.EmptyText = u"Keine Daten"_s;
    SetGridTexts(texts);
    auto* find = t.view->findPanel()->findChild<QPushButton*>(u"findButton"_s);
    QCOMPARE(find->text(), u"Suchen"_s);
    QCOMPARE(t.view->groupByText(), u"Spalte hierher ziehen"_s);
    QCOMPARE(t.view->emptyText(), u"Keine Daten"_s);
    t.view->setEmptyText(u"Leer"_s);
    QCOMPARE(t.view->emptyText(), u"Leer"_s);
    SetGridTexts(saved);
    QCOMPARE(find->text(), saved.FindButton);
    QCOMPARE(t.view->emptyText(), u"Leer"_s);
}

// With auto width a column the user widens takes its room from the columns after it.
void TestGridTableView::autoWidthResize()
{
    TTable t;
    QHeaderView* header = t.view->header();
    const auto size = [&](const QString& name) { return header->sectionSize(t.column(name)->id()); };
    const int total = header->width();
    const int id = size(u"ID"_s);
    const int name = size(u"Name"_s);
    header->resizeSection(t.column(u"Name"_s)->id(), name + 60);
    int sum = 0;
    for (const TGridColumn* c : t.view->columns()->visibleColumns())
        sum += size(c->name());
    QVERIFY(std::abs(sum - total) <= int(t.view->columns()->visibleColumns().size()));
    QCOMPARE(size(u"ID"_s), id);
    QVERIFY(std::abs(size(u"Name"_s) - (name + 60)) <= 1);
    QVERIFY(size(u"Country"_s) < total / 7);
    // Off: each column keeps the width it is given, and the view scrolls.
    t.view->setColumnAutoWidth(false);
    header->resizeSection(t.column(u"Year"_s)->id(), 500);
    QCOMPARE(t.column(u"Year"_s)->width(), 500);
    QVERIFY(header->length() > header->width());
}

// Another model with the same fields in another order: the columns find their fields again. A model
// that goes away leaves an empty view, not a crash.
void TestGridTableView::modelSwappedAndDestroyed()
{
    TTable t;
    t.view->groupByColumn(t.column(u"Metal"_s), 0);
    t.grid.setCurrentRow(3);
    QStringList reversed = Fields;
    std::reverse(reversed.begin(), reversed.end());
    QList<QVariantList> rows;
    for (QVariantList row : MakeItems(10, 42)) {
        std::reverse(row.begin(), row.end());
        rows.append(row);
    }
    auto* other = new TTestTable(reversed, rows);
    t.grid.setSourceModel(other);
    QCOMPARE(t.grid.currentRow(), -1);
    QCOMPARE(t.view->model()->visibleRowCount(), 10);
    QCOMPARE(t.view->displayText(4, t.column(u"Name"_s)), other->value(4, u"Name"_s).toString());
    QCOMPARE(t.view->model()->groupDepth(), 1);
    t.view->expandAll();
    t.view->rowsViewport()->repaint();
    delete other;
    QCOMPARE(t.view->model()->visibleRowCount(), 0);
    t.view->rowsViewport()->repaint();
    QCOMPARE(t.view->hitTest(t.view->rowsViewport()->geometry().center()).Kind, TGridHitKind::EmptyArea);
    t.grid.setSourceModel(&t.table);
    QCOMPARE(t.view->model()->visibleRowCount(), t.table.rowCount());
}

// Groups and lists through the builder's own widgets.
void TestGridTableView::filterBuilderNested()
{
    TTable t;
    TGridView::setDialogRunner([&](QWidget* dialog) {
        auto* builder = qobject_cast<TGridFilterBuilder*>(dialog);
        QTreeWidgetItem* group = builder->addGroup();
        auto* op = builder->tree()->itemWidget(group, 0)->findChild<QComboBox*>(u"groupOperator"_s);
        op->setCurrentIndex(op->findData(int(TGridFilterGroupOperator::Or)));
        const auto condition = [&](QTreeWidgetItem* parent, const QString& field, TGridFilterOperator kind,
                                   const QString& value) {
            QWidget* row = builder->tree()->itemWidget(builder->addCondition(parent, field), 0);
            auto* box = row->findChild<QComboBox*>(u"operator"_s);
            box->setCurrentIndex(box->findData(int(kind)));
            row->findChild<QComboBox*>(u"value"_s)->setEditText(value);
        };
        condition(group, u"Metal"_s, TGridFilterOperator::InList, u"1; 2"_s);
        condition(group, u"Name"_s, TGridFilterOperator::BeginsWith, u"Pan"_s);
        condition(nullptr, u"Price"_s, TGridFilterOperator::IsNotBlank, {});
        // A condition removed again by its button.
        QTreeWidgetItem* extra = builder->addCondition(nullptr, u"Year"_s);
        QTest::mouseClick(builder->tree()->itemWidget(extra, 0)->findChild<QWidget*>(u"remove"_s),
                          Qt::LeftButton);
        builder->accept();
        return builder->result();
    });
    QVERIFY(t.view->showFilterBuilder());
    QCOMPARE(t.view->filter().toText(),
             u"([Metal] IN (1, 2) OR [Name] BEGINS WITH 'Pan') AND [Price] IS NOT BLANK"_s);
    for (int p = 0; p < t.view->model()->visibleRowCount(); ++p) {
        const int row = t.view->model()->sourceRowAt(p);
        const int metal = t.table.value(row, u"Metal"_s).toInt();
        QVERIFY((metal == 1 || metal == 2 ||
                 t.table.value(row, u"Name"_s).toString().startsWith(u"Pan"_s, Qt::CaseInsensitive)) &&
                !t.table.value(row, u"Price"_s).isNull());
    }
}

QTEST_MAIN(TestGridTableView)
#include "tst_gridtableview.moc"
