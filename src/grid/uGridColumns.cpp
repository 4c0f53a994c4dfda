#include "uGridColumns.h"

#include <algorithm>

using namespace Qt::StringLiterals;

TGridColumns::TGridColumns(QObject* parent) : QObject(parent) {}

TGridColumns::~TGridColumns() = default;

TGridColumn* TGridColumns::add(const QString& name, const QString& fieldName, const QString& caption)
{
    QString unique = name.isEmpty() ? fieldName : name;
    if (unique.isEmpty())
        unique = u"Column"_s;
    if (byName(unique)) {
        int n = 2;
        while (byName(unique + QString::number(n)))
            ++n;
        unique += QString::number(n);
    }
    auto column = std::unique_ptr<TGridColumn>(new TGridColumn(this, count(), unique, fieldName, caption));
    TGridColumn* result = column.get();
    m_columns.push_back(std::move(column));
    m_order.push_back(result);
    columnChanged(TGridColumnChange::Structure);
    return result;
}

TGridColumn* TGridColumns::at(int id) const
{
    return id >= 0 && id < count() ? m_columns[std::size_t(id)].get() : nullptr;
}

TGridColumn* TGridColumns::byName(const QString& name) const
{
    for (const auto& column : m_columns)
        if (column->name() == name)
            return column.get();
    return nullptr;
}

TGridColumn* TGridColumns::byField(const QString& fieldName) const
{
    for (TGridColumn* column : m_order)
        if (column->fieldName() == fieldName)
            return column;
    return nullptr;
}

TGridColumn* TGridColumns::byCaption(const QString& caption) const
{
    for (TGridColumn* column : m_order)
        if (column->caption() == caption)
            return column;
    return nullptr;
}

QList<TGridColumn*> TGridColumns::ordered() const
{
    return QList<TGridColumn*>(m_order.begin(), m_order.end());
}

QList<TGridColumn*> TGridColumns::visibleColumns() const
{
    QList<TGridColumn*> result;
    for (TGridColumn* column : m_order)
        if (column->visible())
            result.append(column);
    return result;
}

QList<TGridColumn*> TGridColumns::groupColumns() const
{
    return QList<TGridColumn*>(m_groups.begin(), m_groups.end());
}

QList<TGridColumn*> TGridColumns::sortColumns() const
{
    return QList<TGridColumn*>(m_sorts.begin(), m_sorts.end());
}

void TGridColumns::clearSort()
{
    if (m_sorts.empty())
        return;
    for (TGridColumn* column : m_sorts) {
        column->m_sortIndex = -1;
        if (column->m_groupIndex < 0)
            column->m_sortOrder = TGridSortOrder::None;
    }
    m_sorts.clear();
    columnChanged(TGridColumnChange::Sorting);
}

void TGridColumns::clearGrouping()
{
    if (m_groups.empty())
        return;
    for (TGridColumn* column : m_groups) {
        column->m_groupIndex = -1;
        if (column->m_sortIndex < 0)
            column->m_sortOrder = TGridSortOrder::None;
    }
    m_groups.clear();
    columnChanged(TGridColumnChange::Grouping);
}

void TGridColumns::beginUpdate()
{
    ++m_updating;
}

void TGridColumns::endUpdate()
{
    if (m_updating == 0)
        return;
    if (--m_updating > 0 || !m_pending)
        return;
    const TGridColumnChanges changes = m_pending;
    m_pending = {};
    emit changed(changes);
}

void TGridColumns::columnChanged(TGridColumnChange change)
{
    if (m_updating > 0) {
        m_pending |= change;
        return;
    }
    emit changed(change);
}

int TGridColumns::positionOf(const TGridColumn* column) const
{
    const auto it = std::find(m_order.begin(), m_order.end(), column);
    return it == m_order.end() ? -1 : int(it - m_order.begin());
}

void TGridColumns::moveTo(TGridColumn* column, int position)
{
    const int from = positionOf(column);
    position = std::clamp(position, 0, count() - 1);
    if (from < 0 || from == position)
        return;
    m_order.erase(m_order.begin() + from);
    m_order.insert(m_order.begin() + position, column);
    columnChanged(TGridColumnChange::Position);
}

void TGridColumns::placeInList(std::vector<TGridColumn*>& list, TGridColumn* column, int index, bool grouping)
{
    const auto it = std::find(list.begin(), list.end(), column);
    const int from = it == list.end() ? -1 : int(it - list.begin());
    if (index < 0 && from < 0)
        return;
    if (from >= 0 && index >= 0 && std::min(index, int(list.size()) - 1) == from)
        return;
    if (from >= 0)
        list.erase(it);
    if (index >= 0)
        list.insert(list.begin() + std::min<std::size_t>(std::size_t(index), list.size()), column);
    for (std::size_t i = 0; i < list.size(); ++i)
        (grouping ? list[i]->m_groupIndex : list[i]->m_sortIndex) = int(i);
    if (index < 0) {
        (grouping ? column->m_groupIndex : column->m_sortIndex) = -1;
        // Out of both the grouping and the sort: no order left.
        if (column->m_groupIndex < 0 && column->m_sortIndex < 0)
            column->m_sortOrder = TGridSortOrder::None;
    } else if (column->m_sortOrder == TGridSortOrder::None) {
        column->m_sortOrder = TGridSortOrder::Ascending;
    }
    columnChanged(grouping ? TGridColumnChange::Grouping : TGridColumnChange::Sorting);
}

void TGridColumns::assign(const TGridColumns& other)
{
    beginUpdate();
    clearGrouping();
    clearSort();
    for (const TGridColumn* source : other.ordered()) {
        TGridColumn* column = byName(source->name());
        if (!column)
            column = add(source->name(), source->fieldName(), source->caption());
        column->setFieldName(source->fieldName());
        column->setCaption(source->caption());
        column->setVisible(source->visible());
        column->setPosition(source->position());
        column->setWidth(source->width());
        column->setHiddenFromChooser(source->hiddenFromChooser());
        column->setPicture(source->isPicture());
        column->setFormatter(source->formatter());
        column->setAlignment(source->alignment());
        column->setLines(source->lines());
        column->setCardTitle(source->isCardTitle());
        column->setCaptionVisible(source->captionVisible());
    }
    for (const TGridColumn* source : other.groupColumns()) {
        TGridColumn* column = byName(source->name());
        column->setGroupIndex(source->groupIndex());
        column->m_sortOrder = source->sortOrder();
    }
    for (const TGridColumn* source : other.sortColumns()) {
        TGridColumn* column = byName(source->name());
        column->setSortIndex(source->sortIndex());
        column->m_sortOrder = source->sortOrder();
    }
    endUpdate();
}
