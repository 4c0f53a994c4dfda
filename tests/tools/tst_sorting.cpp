// The sort dialog's logic without a screen: the column list and levels read from a view, the
// commands and their enablement, moving levels, the duplicate check at OK, and the sort written to
// one view or several, on a recording view and on the toolkit's real column set.

#include "support_common.h"
#include "support_datarow.h"
#include "uGridColumns.h"
#include "uSortController.h"
#include "uZTStrings.h"

#include <QtTest>

namespace {

// A view described by a text: "Name, Metal:picture, Year:hidden, Price" ... with the sort given as
// "Year:d, Name" (priority order, ":d" descending). Records what the dialog writes.
class TRecordingView : public TSortableView
{
public:
    struct TCol
    {
        TSortViewColumn Def;
        int SortIndex = -1;
        bool Descending = false;
    };
    QList<TCol> Cols;
    QStringList Calls;

    TRecordingView(const QString& columns, const QString& sort)
    {
        for (const QString& entry : columns.split(',', Qt::SkipEmptyParts)) {
            const QStringList parts = entry.trimmed().split(':');
            TCol col;
            col.Def.Caption = parts.value(0);
            col.Def.Visible = parts.value(1) != "hidden";
            col.Def.Picture = parts.value(1) == "picture";
            Cols.append(col);
        }
        int index = 0;
        for (const QString& entry : sort.split(',', Qt::SkipEmptyParts)) {
            const QStringList parts = entry.trimmed().split(':');
            for (TCol& col : Cols) {
                if (col.Def.Caption == parts.value(0)) {
                    col.SortIndex = index++;
                    col.Descending = parts.value(1) == "d";
                    break;
                }
            }
        }
    }

    int ColumnCount() const override { return int(Cols.size()); }
    TSortViewColumn Column(int column) const override { return Cols.value(column).Def; }
    QList<TSortedColumn> SortedColumns() const override
    {
        QMap<int, TSortedColumn> byIndex;
        for (int i = 0; i < Cols.size(); ++i)
            if (Cols.at(i).SortIndex >= 0)
                byIndex.insert(Cols.at(i).SortIndex, {i, Cols.at(i).Descending});
        return byIndex.values();
    }
    void BeginSortUpdate() override { Calls << "begin"; }
    void EndSortUpdate() override { Calls << "end"; }
    void ClearSort() override
    {
        Calls << "clear";
        for (TCol& col : Cols)
            col.SortIndex = -1;
    }
    void SetColumnSort(int column, int sortIndex, bool descending) override
    {
        Cols[column].SortIndex = sortIndex;
        Cols[column].Descending = descending;
    }
    // "Caption@index:a|d" of each sorted column in column order.
    QString SortText() const
    {
        QStringList out;
        for (int i = 0; i < Cols.size(); ++i)
            if (Cols.at(i).SortIndex >= 0)
                out << QString("%1#%2@%3:%4")
                           .arg(Cols.at(i).Def.Caption)
                           .arg(i)
                           .arg(Cols.at(i).SortIndex)
                           .arg(Cols.at(i).Descending ? "d" : "a");
        return out.join(", ");
    }
};

// Levels as text: "Name:a, Year:d".
QList<TSortLevel> Levels(const QString& text)
{
    QList<TSortLevel> levels;
    for (const QString& entry : text.split(',', Qt::SkipEmptyParts)) {
        const QStringList parts = entry.trimmed().split(':');
        const QString order = parts.value(1);
        levels.append({parts.value(0), order == "a" ? "Ascending" : order == "d" ? "Descending" : order});
    }
    return levels;
}

// A controller holding these levels, as if the user had built them.
void SetLevels(TSortController& controller, const QList<TSortLevel>& levels)
{
    while (!controller.Levels().isEmpty()) {
        controller.SetSelected({0});
        controller.DeleteLevels();
    }
    for (int i = 0; i < levels.size(); ++i) {
        controller.AddLevel();
        controller.SetLevelColumn(i, levels.at(i).Column);
        controller.SetLevelOrder(i, levels.at(i).Order);
    }
}

QString LevelsText(const TSortController& controller)
{
    QStringList out;
    for (const TSortLevel& level : controller.Levels())
        out << level.Column + ":" + level.Order;
    return out.join(", ");
}

} // namespace

class TestSorting : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    TRecordingPresenter m_presenter;
    TMessagePresenter* m_previous = nullptr;

private slots:
    void initTestCase()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        LoadEnglish();
        m_previous = SetMessagePresenter(&m_presenter);
    }
    void init() { m_presenter.Requests.clear(); }
    void cleanupTestCase()
    {
        SetMessagePresenter(m_previous);
        m_home.reset();
    }

    // Pictures and hidden columns stay out of the list; a hidden sorted column still gives a level.
    void loadFromView_data()
    {
        QTest::addColumn<QString>("columns");
        QTest::addColumn<QString>("sort");
        QTest::addColumn<QStringList>("list");
        QTest::addColumn<QString>("levels");
        AddRow("no sort gives no levels", QString("Name, Year"), QString(), QStringList({"Name", "Year"}),
               QString());
        AddRow("levels in sort priority", QString("Name, Year, Price"), QString("Price:d, Name"),
               QStringList({"Name", "Year", "Price"}), QString("Price:Descending, Name:Ascending"));
        AddRow("picture and hidden left out", QString("Photo:picture, Name, Notes:hidden, Year"), QString(),
               QStringList({"Name", "Year"}), QString());
        AddRow("hidden sorted column gives a level", QString("Name, Notes:hidden"), QString("Notes:d"),
               QStringList({"Name"}), QString("Notes:Descending"));
        AddRow("same caption twice listed twice", QString("Name, Name"), QString(),
               QStringList({"Name", "Name"}), QString());
    }
    void loadFromView()
    {
        QFETCH(QString, columns);
        QFETCH(QString, sort);
        QFETCH(QStringList, list);
        QFETCH(QString, levels);
        const TRecordingView view(columns, sort);
        TSortController controller;
        controller.LoadFromView(view);
        QCOMPARE(controller.ColumnList(), list);
        QCOMPARE(LevelsText(controller), levels);
        QCOMPARE(controller.OrderList(), QStringList({"Ascending", "Descending"}));
    }

    // ApplySort: a cleared sort, each level's first column of its caption at the level's position,
    // missing captions skipped with their position kept, any text but "Ascending" descending.
    void applySort_data()
    {
        QTest::addColumn<QString>("columns");
        QTest::addColumn<QString>("sort");
        QTest::addColumn<QString>("levels");
        QTest::addColumn<QString>("result");
        AddRow("no levels clear the sort", QString("Name, Year"), QString("Year:d, Name"), QString(),
               QString());
        AddRow("two levels", QString("Name, Year, Price"), QString("Name"), QString("Price:d, Year:a"),
               QString("Year#1@1:a, Price#2@0:d"));
        AddRow("same caption twice goes to the first", QString("Name, Year, Name"), QString(),
               QString("Name:d"), QString("Name#0@0:d"));
        AddRow("missing column skipped, gap kept", QString("Name, Year"), QString(),
               QString("Mint:a, Year:a"), QString("Year#1@1:a"));
        AddRow("empty order sorts descending", QString("Name"), QString(), QString("Name:"),
               QString("Name#0@0:d"));
        AddRow("unknown order sorts descending", QString("Name"), QString(), QString("Name:up"),
               QString("Name#0@0:d"));
        AddRow("caption compared exactly", QString("Name, Year"), QString(), QString("name:a"), QString());
        AddRow("hidden column sorted", QString("Name, Notes:hidden"), QString(), QString("Notes:a"),
               QString("Notes#1@0:a"));
    }
    void applySort()
    {
        QFETCH(QString, columns);
        QFETCH(QString, sort);
        QFETCH(QString, levels);
        QFETCH(QString, result);
        TRecordingView view(columns, sort);
        TSortController controller;
        controller.LoadFromView(view);
        SetLevels(controller, Levels(levels));
        QVERIFY(controller.CheckLevels());
        controller.ApplySort(view);
        QCOMPARE(view.SortText(), result);
        QCOMPARE(view.Calls, QStringList({"begin", "clear", "end"}));
    }

    // The add dialog's case: one set of levels to several views, each skipping what it lacks.
    void applyToSeveralViews()
    {
        TRecordingView first("Name, Year, Price", "");
        TRecordingView second("Price, Name", "Name");
        TSortController controller;
        controller.LoadFromView(first);
        SetLevels(controller, Levels("Year:d, Price:a, Name:d"));
        controller.ApplySort(first);
        controller.ApplySort(second);
        QCOMPARE(first.SortText(), "Name#0@2:d, Year#1@0:d, Price#2@1:a");
        QCOMPARE(second.SortText(), "Price#0@1:a, Name#1@2:d");
    }

    // The duplicate check at OK: exact text, case counted, empty texts equal; the levels stay.
    void checkAtOk_data()
    {
        QTest::addColumn<QString>("levels");
        QTest::addColumn<bool>("passes");
        AddRow("no levels pass", QString(), true);
        AddRow("distinct columns pass", QString("Name:a, Year:d"), true);
        AddRow("same column twice refused", QString("Name:a, Year:a, Name:d"), false);
        AddRow("letter case differs passes", QString("Name:a, name:a"), true);
        AddRow("two empty columns refused", QString(":a, :d"), false);
    }
    void checkAtOk()
    {
        QFETCH(QString, levels);
        QFETCH(bool, passes);
        TRecordingView view("Name, Year", "");
        TSortController controller;
        controller.LoadFromView(view);
        SetLevels(controller, Levels(levels));
        const QList<TSortLevel> before = controller.Levels();
        QCOMPARE(controller.CheckLevels(), passes);
        QCOMPARE(controller.Levels(), before);
        QCOMPARE(m_presenter.Requests.size(), passes ? 0 : 1);
        if (!passes) {
            QCOMPARE(m_presenter.Requests.first().Text, GetText("cSSortDlgDuplicateColumns"));
            QCOMPARE(m_presenter.Requests.first().Type, mtWarning);
        }
    }

    // Two levels added in a row both name the first column and ascending, and are refused at OK.
    void twoAddedLevelsRefused()
    {
        TRecordingView view("Photo:picture, Name, Year", "");
        TSortController controller;
        controller.LoadFromView(view);
        controller.AddLevel();
        controller.AddLevel();
        QCOMPARE(LevelsText(controller), "Name:Ascending, Name:Ascending");
        QVERIFY(!controller.CheckLevels());
        // A view without a listable column: the level has an empty column.
        TRecordingView pictures("Photo:picture", "");
        controller.LoadFromView(pictures);
        controller.AddLevel();
        QCOMPARE(LevelsText(controller), ":Ascending");
    }

    // Enablement of the commands by the focused and selected levels.
    void enablement_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("focused");
        QTest::addColumn<QList<int>>("selected");
        QTest::addColumn<bool>("del");
        QTest::addColumn<bool>("up");
        QTest::addColumn<bool>("down");
        AddRow("empty list", 0, -1, QList<int>(), false, false, false);
        AddRow("only level", 1, 0, QList<int>({0}), true, false, false);
        AddRow("first of three", 3, 0, QList<int>({0}), true, false, true);
        AddRow("middle of three", 3, 1, QList<int>({1}), true, true, true);
        AddRow("last of three", 3, 2, QList<int>({2}), true, true, false);
        AddRow("focus without selection", 3, 1, QList<int>(), false, true, true);
    }
    void enablement()
    {
        QFETCH(int, count);
        QFETCH(int, focused);
        QFETCH(QList<int>, selected);
        QFETCH(bool, del);
        QFETCH(bool, up);
        QFETCH(bool, down);
        TRecordingView view("Name, Year, Price", "");
        TSortController controller;
        controller.LoadFromView(view);
        for (int i = 0; i < count; ++i)
            controller.AddLevel();
        controller.SetFocused(focused);
        controller.SetSelected(selected);
        QCOMPARE(controller.CommandEnabled("actAddLevel"), true);
        QCOMPARE(controller.CommandEnabled("actDeleteLevel"), del);
        QCOMPARE(controller.CommandEnabled("actUp"), up);
        QCOMPARE(controller.CommandEnabled("actDown"), down);
    }

    // Moving keeps the focus on the moved level; deleting removes the selected ones.
    void moveAndDelete_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("focused");
        QTest::addColumn<QList<int>>("selected");
        QTest::addColumn<QString>("levels");
        QTest::addColumn<int>("focusAfter");
        AddRow("up", QString("up"), 2, QList<int>({2}), QString("Name:a, Price:a, Year:d"), 1);
        AddRow("down", QString("down"), 0, QList<int>({0}), QString("Year:d, Name:a, Price:a"), 1);
        AddRow("up on first does nothing", QString("up"), 0, QList<int>({0}),
               QString("Name:a, Year:d, Price:a"), 0);
        AddRow("down on last does nothing", QString("down"), 2, QList<int>({2}),
               QString("Name:a, Year:d, Price:a"), 2);
        AddRow("delete two", QString("delete"), 0, QList<int>({0, 2}), QString("Year:d"), 0);
        AddRow("delete the focused middle", QString("delete"), 1, QList<int>({1}), QString("Name:a, Price:a"),
               1);
        AddRow("delete the last", QString("delete"), 2, QList<int>({2}), QString("Name:a, Year:d"), 1);
        AddRow("delete all", QString("delete"), 1, QList<int>({0, 1, 2}), QString(), -1);
    }
    void moveAndDelete()
    {
        QFETCH(QString, command);
        QFETCH(int, focused);
        QFETCH(QList<int>, selected);
        QFETCH(QString, levels);
        QFETCH(int, focusAfter);
        TRecordingView view("Name, Year, Price", "");
        TSortController controller;
        controller.LoadFromView(view);
        SetLevels(controller, Levels("Name:a, Year:d, Price:a"));
        controller.SetFocused(focused);
        controller.SetSelected(selected);
        if (command == "up")
            controller.MoveUp();
        else if (command == "down")
            controller.MoveDown();
        else
            controller.DeleteLevels();
        QCOMPARE(controller.Levels(), Levels(levels));
        QCOMPARE(controller.Focused(), focusAfter);
    }

    // The commands' table: names, texts and keys.
    void commands()
    {
        QStringList names, keys;
        for (const TSortCommandDef& def : SortCommands()) {
            names << def.Name;
            keys << def.Shortcut;
            QVERIFY(!GetText(def.TextKey).isEmpty());
        }
        QCOMPARE(names, QStringList({"actAddLevel", "actDeleteLevel", "actUp", "actDown"}));
        QCOMPARE(keys, QStringList({"Ins", "Del", "Ctrl+Up", "Ctrl+Down"}));
    }

    // On the toolkit's column set: what is read and written, hidden and picture columns, and the
    // order of priorities when a level is skipped.
    void onGridColumns()
    {
        TGridColumns columns;
        columns.add("colName", "Name", "Name");
        columns.add("colPhoto", "Photo", "Photo")->setPicture(true);
        columns.add("colYear", "Year", "Year");
        columns.add("colNotes", "Notes", "Notes")->setVisible(false);
        columns.add("colPrice", "Price", "Price");
        columns.byName("colNotes")->setSortIndex(0);
        columns.byName("colNotes")->setSortOrder(TGridSortOrder::Descending);
        columns.byName("colYear")->setSortIndex(1);
        int changes = 0;
        connect(&columns, &TGridColumns::changed, this, [&changes] { ++changes; });

        TGridColumnsSortView view(columns);
        TSortController controller;
        controller.LoadFromView(view);
        QCOMPARE(controller.ColumnList(), QStringList({"Name", "Year", "Price"}));
        QCOMPARE(LevelsText(controller), "Notes:Descending, Year:Ascending");

        SetLevels(controller, Levels("Price:d, Mint:a, Name:a"));
        controller.ApplySort(view);
        QCOMPARE(changes, 1); // told once
        const QList<TGridColumn*> sorted = columns.sortColumns();
        QCOMPARE(sorted.size(), 2);
        QCOMPARE(sorted.at(0)->name(), "colPrice");
        QCOMPARE(sorted.at(0)->sortOrder(), TGridSortOrder::Descending);
        QCOMPARE(sorted.at(1)->name(), "colName");
        QCOMPARE(sorted.at(1)->sortOrder(), TGridSortOrder::Ascending);
        QCOMPARE(columns.byName("colNotes")->sortIndex(), -1);
        QCOMPARE(columns.byName("colYear")->sortOrder(), TGridSortOrder::None);

        // A caption function (the view's shown caption) is what levels match.
        TGridColumnsSortView shown(columns, [](const TGridColumn* c) { return c->caption().toUpper(); });
        controller.LoadFromView(shown);
        QCOMPARE(LevelsText(controller), "PRICE:Descending, NAME:Ascending");
    }
};

QTEST_GUILESS_MAIN(TestSorting)
#include "tst_sorting.moc"
