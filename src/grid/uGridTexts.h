#pragma once

#include "uGridTypes.h"

#include <QObject>
#include <QString>

enum class TGridFilterOperator;
enum class TGridFilterGroupOperator;

// Every text the grid shows of its own, with English defaults. A program that translates sets its
// own with SetGridTexts(); the widgets follow at once. Texts a view may override (the group-by
// panel text, the empty-view text) are also settable per view.
struct TGridTexts
{
    // Views
    QString GroupByText = QStringLiteral("Drag a column header here to group by that column");
    QString EmptyText = QStringLiteral("< No data to display >");
    QString BlankGroupValue = QStringLiteral("(Blanks)");

    // Find panel
    QString FindButton = QStringLiteral("Find");
    QString FindClear = QStringLiteral("Clear");
    QString FindPlaceholder = QStringLiteral("Enter text to search...");
    QString FindClose = QStringLiteral("Close the find panel");

    // Filter bar and filter builder
    QString FilterBuilderCaption = QStringLiteral("Filter builder");
    QString FilterRoot = QStringLiteral("Filter");
    QString FilterAddCondition = QStringLiteral("Add condition");
    QString FilterAddGroup = QStringLiteral("Add group");
    QString FilterRemove = QStringLiteral("Remove");
    QString FilterValuePlaceholder = QStringLiteral("<enter a value>");
    QString FilterEmpty = QStringLiteral("<empty>");
    QString FilterCustomize = QStringLiteral("Customize...");
    QString FilterClear = QStringLiteral("Clear filter");
    QString FilterOk = QStringLiteral("OK");
    QString FilterCancel = QStringLiteral("Cancel");
    QString FilterApply = QStringLiteral("Apply");
    QString FilterBadValue = QStringLiteral("\"%1\" is not a valid value for %2.");
    QString GroupAnd = QStringLiteral("and");
    QString GroupOr = QStringLiteral("or");
    QString GroupNotAnd = QStringLiteral("not and");
    QString GroupNotOr = QStringLiteral("not or");
    QString GroupAndTitle = QStringLiteral("AND");
    QString GroupOrTitle = QStringLiteral("OR");
    QString GroupNotAndTitle = QStringLiteral("NOT AND");
    QString GroupNotOrTitle = QStringLiteral("NOT OR");
    QString Not = QStringLiteral("not");
    QString OpEqual = QStringLiteral("equals");
    QString OpNotEqual = QStringLiteral("does not equal");
    QString OpLess = QStringLiteral("is less than");
    QString OpLessOrEqual = QStringLiteral("is less than or equal to");
    QString OpGreater = QStringLiteral("is greater than");
    QString OpGreaterOrEqual = QStringLiteral("is greater than or equal to");
    QString OpBetween = QStringLiteral("is between");
    QString OpNotBetween = QStringLiteral("is not between");
    QString OpContains = QStringLiteral("contains");
    QString OpNotContains = QStringLiteral("does not contain");
    QString OpBeginsWith = QStringLiteral("begins with");
    QString OpEndsWith = QStringLiteral("ends with");
    QString OpIsBlank = QStringLiteral("is blank");
    QString OpIsNotBlank = QStringLiteral("is not blank");
    QString OpInList = QStringLiteral("is any of");
    QString OpNotInList = QStringLiteral("is none of");

    // Column chooser and menus
    QString ChooserCaption = QStringLiteral("Customize");
    QString ChooserColumns = QStringLiteral("Columns");
    QString ChooserRows = QStringLiteral("Rows");
    QString ChooserMoveUp = QStringLiteral("Move up");
    QString ChooserMoveDown = QStringLiteral("Move down");
    QString MenuSortAscending = QStringLiteral("Sort ascending");
    QString MenuSortDescending = QStringLiteral("Sort descending");
    QString MenuClearSorting = QStringLiteral("Clear sorting");
    QString MenuGroupByColumn = QStringLiteral("Group by this column");
    QString MenuUngroup = QStringLiteral("Remove from grouping");
    QString MenuClearGrouping = QStringLiteral("Clear grouping");
    QString MenuHideColumn = QStringLiteral("Hide this column");
    QString MenuHideRow = QStringLiteral("Hide this row");
    QString MenuBestFit = QStringLiteral("Best fit");
    QString MenuBestFitAll = QStringLiteral("Best fit (all columns)");
    QString MenuColumnChooser = QStringLiteral("Column chooser");
    QString MenuExpandAll = QStringLiteral("Expand all");
    QString MenuCollapseAll = QStringLiteral("Collapse all");
    QString MenuFindPanel = QStringLiteral("Find panel");
    QString MenuFilterBuilder = QStringLiteral("Filter builder...");

    QString operatorName(TGridFilterOperator op) const;
    QString groupOperatorName(TGridFilterGroupOperator op) const;  // "and", within a sentence
    QString groupOperatorTitle(TGridFilterGroupOperator op) const; // "AND", on a group's button
};

// The texts in use.
const TGridTexts& GridTexts();
// Replaces the texts in use and tells every widget of the grid (TGridTextsNotifier::changed).
void SetGridTexts(const TGridTexts& texts);

class TGridTextsNotifier : public QObject
{
    Q_OBJECT
public:
    static TGridTextsNotifier* instance();
signals:
    void changed();
};
