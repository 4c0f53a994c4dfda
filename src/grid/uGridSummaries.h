#pragma once

#include "uGridTypes.h"

#include <QString>
#include <QVariant>

#include <functional>
#include <vector>

// One summary of a view: an aggregate of a column's values over a group or over all rows.
struct TGridSummaryItem
{
    // The column whose field is aggregated and under which the value is shown; empty counts rows.
    QString ColumnName;
    TGridSummaryKind Kind = TGridSummaryKind::Sum;
    // Lets a callback find the item (see TGridSummaryScope::indexOfTag()).
    int Tag = 0;
    // Group items only: in the group row or in the group's footer.
    TGridSummaryPlace Place = TGridSummaryPlace::GroupRow;
    // Text of the value; unset uses the column's formatter (a count: the plain number). A null
    // value gives "".
    TGridFormatter Format;
};

// The summary values of one group, or of the footer, as the summary callback sees them after the
// grid has computed them. Items are addressed by index or found by tag.
class TGridSummaryScope
{
public:
    TGridSummaryScope(const std::vector<TGridSummaryItem>& items, std::vector<QVariant>& values, int level)
        : m_items(items), m_values(values), m_level(level)
    {}

    bool isFooter() const { return m_level < 0; }
    // Level of the group, -1 for the footer.
    int level() const { return m_level; }
    int count() const { return int(m_items.size()); }
    // The first item with this tag, -1 when there is none.
    int indexOfTag(int tag) const
    {
        for (std::size_t i = 0; i < m_items.size(); ++i)
            if (m_items[i].Tag == tag)
                return int(i);
        return -1;
    }
    const TGridSummaryItem& item(int index) const { return m_items[std::size_t(index)]; }
    QVariant value(int index) const { return m_values[std::size_t(index)]; }
    void setValue(int index, const QVariant& value) { m_values[std::size_t(index)] = value; }

private:
    const std::vector<TGridSummaryItem>& m_items;
    std::vector<QVariant>& m_values;
    int m_level;
};

// Called for every group (top down) and then for the footer, after the grid's own aggregates.
using TGridSummaryCallback = std::function<void(TGridSummaryScope&)>;
