#pragma once

#include <QFlags>
#include <QString>
#include <QVariant>

#include <functional>

// Small shared types of the grid's logic.

// Sort direction of a column. The numbers are those a program stores (1 ascending, 2 descending).
enum class TGridSortOrder
{
    None = 0,
    Ascending = 1,
    Descending = 2
};

// Aggregates of a summary item. Nulls are skipped the way SQL aggregates skip them: a sum, minimum,
// maximum or average over nothing but nulls is null; a count counts the values that are not null.
// None computes nothing: a callback fills the value afterwards.
enum class TGridSummaryKind
{
    None,
    Sum,
    Count,
    Min,
    Max,
    Average
};

// Where a group summary item is shown.
enum class TGridSummaryPlace
{
    GroupRow,   // in the group row itself
    GroupFooter // in the footer row under the group's rows
};

// Kinds of rows a grid shows, in display order.
enum class TGridRowKind
{
    Group,      // a group row: key and summaries of a group
    Data,       // a row of the source model
    GroupFooter // the footer of a group, after its rows
};

// What lies under a point of a view. A window hooks double-clicks by these kinds.
enum class TGridHitKind
{
    None,
    RecordCell,   // a data cell of a table row, or a row's value in a card
    Card,         // a card outside its rows
    RowCaption,   // the caption of a card row
    GroupRow,     // a group row (also its expand button)
    GroupFooter,  // a group footer row
    Header,       // a column header
    Footer,       // the view's footer
    GroupByPanel, // the group-by panel
    EmptyArea     // the view's background
};

// Changes of a column set, in one flag set so that a batch of changes is told once.
enum class TGridColumnChange
{
    Structure = 0x0001,  // columns added
    Visibility = 0x0002, // shown or hidden
    Position = 0x0004,   // moved
    Width = 0x0008,
    Caption = 0x0010,
    Grouping = 0x0020,   // group index
    Sorting = 0x0040,    // sort index or order
    Binding = 0x0080,    // bound field
    Format = 0x0100,     // formatter, alignment, picture flag
    CardLayout = 0x0200, // lines, side width, title, caption shown
    Chooser = 0x0400     // offered to the column chooser or not
};
Q_DECLARE_FLAGS(TGridColumnChanges, TGridColumnChange)
Q_DECLARE_OPERATORS_FOR_FLAGS(TGridColumnChanges)

// Turns a value into the text a cell shows. A null value must give "".
using TGridFormatter = std::function<QString(const QVariant&)>;
