#pragma once

#include "uGridTypes.h"
#include "uZTSettings.h"

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

class TGridColumns;

// One column configuration of the table view: which columns show in which order, how the rows are
// grouped and how they are sorted. Made for one use.
struct TTableViewCustomizationConf
{
    QStringList VisibleList; // field names, in display order
    QStringList GroupList;   // field names, outermost group first
    QList<QPair<QString, TGridSortOrder>> SortList;
};

// The four configurations of the table view's customise menu.
enum class TTableViewConfiguration
{
    General,
    PurchaseData,
    Specification,
    AllFields
};

// The button of a configuration (btnTableViewCustomizationGeneral ...) and its text key.
QString TableViewConfigurationButton(TTableViewConfiguration configuration);
QString TableViewConfigurationTextKey(TTableViewConfiguration configuration);

// The configuration as it stands now: "All Fields" names Custom1 .. Custom10 after its fixed list
// for each enabled custom field while the custom fields are on.
TTableViewCustomizationConf TableViewConfiguration(TTableViewConfiguration configuration);
TTableViewCustomizationConf TableViewConfiguration(TTableViewConfiguration configuration,
                                                   bool customFieldsEnabled,
                                                   const TORVCustomFields& customFields);

// Applies a configuration to the columns of a view as one change: every column loses its group,
// sort and visibility; then the group list, the visible list (each column placed at its index) and
// the sort list are set in that order. Columns are found by their exact field name; a name without
// a column is passed over. A grouped column shows only when the visible list names it. Sizing the
// columns to their content afterwards is the view's part.
void ApplyTableViewCustomization(TGridColumns& columns, const TTableViewCustomizationConf& conf);
