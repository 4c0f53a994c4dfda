// Keeping a view's rows in step with its source: resets, inserts, removes, moves and changes.

#include "uGridColumns.h"
#include "uGridKeyColumn.h"
#include "uGridModel.h"

#include <algorithm>

namespace {
int find(const std::vector<quint32>& rows, quint32 row)
{
    const auto it = std::find(rows.begin(), rows.end(), row);
    return it == rows.end() ? -1 : int(it - rows.begin());
}

QString keyText(const QVariant& key)
{
    return QString::number(key.metaType().id()) + QLatin1Char(':') + key.toString();
}
} // namespace

void TGridModel::notifySelectionChanged()
{
    // Keys of a moderate selection are kept so that a reset of the source (a refresh) can restore it.
    m_selectedKeys.clear();
    if (m_source && m_selection.count() > 0 && m_selection.count() <= SelectionKeyLimit) {
        for (const int row : m_selection.rows()) {
            const QVariant key = m_source->key(row);
            if (!key.isValid() || key.isNull()) {
                m_selectedKeys.clear();
                break;
            }
            m_selectedKeys.insert(keyText(key));
        }
    }
    emit selectionChanged();
}

void TGridModel::sourceAboutToBeReset()
{
    if (m_resetting)
        return;
    beginResetModel();
    m_resetting = true;
}

void TGridModel::sourceReset()
{
    if (!m_resetting)
        beginResetModel();
    m_resetting = false;
    m_removalRelayout = false;
    m_identityRemoval = false;
    m_identityInsert = false;
    m_shownTexts.clear();
    m_directSums.clear();
    m_sortValid = false;
    m_selection.clear();
    buildAll(Rebuild::Sort);
    bool restored = false;
    if (!m_selectedKeys.isEmpty() && m_source) {
        for (int row = 0; row < m_sourceRows; ++row)
            if (m_selectedKeys.contains(keyText(m_source->key(row))))
                restored = m_selection.set(row, true) || restored;
    }
    endResetModel();
    emit rowsChanged();
    if (restored)
        emit selectionChanged();
}

void TGridModel::renumberRows(quint32 from, qint64 delta)
{
    for (auto* rows : {&m_sorted, &m_rows})
        for (quint32& row : *rows)
            if (row >= from)
                row = quint32(qint64(row) + delta);
}

void TGridModel::shiftRanges(TGridGroupNode* node, const TGridGroupNode* onPath, int position, int delta)
{
    // Nodes holding the position grow or shrink; nodes after it move.
    std::vector<const TGridGroupNode*> path;
    for (const TGridGroupNode* n = onPath; n; n = n->Parent)
        path.push_back(n);
    const std::function<void(TGridGroupNode*)> moveAll = [&](TGridGroupNode* n) {
        n->Begin += delta;
        n->End += delta;
        for (auto& child : n->Children)
            moveAll(child.get());
    };
    const std::function<void(TGridGroupNode*)> visit = [&](TGridGroupNode* n) {
        if (std::find(path.begin(), path.end(), n) != path.end()) {
            n->End += delta;
            for (auto& child : n->Children)
                visit(child.get());
            return;
        }
        const bool after = delta > 0 ? n->Begin >= position : n->Begin > position;
        if (after)
            moveAll(n);
    };
    visit(node);
}

void TGridModel::insertOne(quint32 row)
{
    // Where the row goes, worked out before anything changes.
    const auto less = [this](quint32 a, quint32 b) { return rowLess(a, b); };
    const int sortedAt =
        m_sorting ? int(std::lower_bound(m_sorted.begin(), m_sorted.end(), row, less) - m_sorted.begin())
                  : -1;
    if (m_filtering && !m_matcher.matches(int(row))) {
        if (m_sorting)
            m_sorted.insert(m_sorted.begin() + sortedAt, row);
        return;
    }
    const int position = m_filtering
                             ? int(std::lower_bound(m_rows.begin(), m_rows.end(), row, less) - m_rows.begin())
                             : sortedAt;

    TGridGroupNode* node = m_root.get();
    int level = 0;
    std::size_t childAt = 0;
    bool newGroup = false;
    for (; level < groupDepth(); ++level) {
        const SortKey& key = m_sortKeys[std::size_t(level)];
        const quint32 rank = key.Keys->rank(int(row));
        const auto it = std::lower_bound(node->Children.begin(), node->Children.end(), rank,
                                         [&key](const std::unique_ptr<TGridGroupNode>& c, quint32 r) {
                                             return key.Descending ? c->KeyRank > r : c->KeyRank < r;
                                         });
        if (it != node->Children.end() && (*it)->KeyRank == rank) {
            node = it->get();
            continue;
        }
        childAt = std::size_t(it - node->Children.begin());
        newGroup = true;
        break;
    }

    const QModelIndex parentIndex = node->Level < 0 ? QModelIndex() : indexOfGroup(node);
    const int treeRow = newGroup ? int(childAt) : position - node->Begin;
    beginInsertRows(parentIndex, treeRow, treeRow);
    if (m_sorting)
        m_sorted.insert(m_sorted.begin() + sortedAt, row);
    if (m_filtering)
        m_rows.insert(m_rows.begin() + position, row);
    shiftRanges(m_root.get(), node, position, 1);
    TGridGroupNode* deepest = node;
    if (newGroup) {
        TGridGroupNode* parent = node;
        for (int l = level; l < groupDepth(); ++l) {
            auto child = std::make_unique<TGridGroupNode>();
            child->Parent = parent;
            child->Level = l;
            child->KeyRank = m_sortKeys[std::size_t(l)].Keys->rank(int(row));
            child->Key = m_sortKeys[std::size_t(l)].Keys->value(child->KeyRank);
            child->Begin = position;
            child->End = position + 1;
            TGridGroupNode* made = child.get();
            const std::size_t at = l == level ? childAt : 0;
            parent->Children.insert(parent->Children.begin() + std::ptrdiff_t(at), std::move(child));
            for (std::size_t i = at; i < parent->Children.size(); ++i)
                parent->Children[i]->Row = int(i);
            made->Expanded = m_expandExceptions.isEmpty()
                                 ? m_expandDefault
                                 : (m_expandDefault != m_expandExceptions.contains(pathOf(made)));
            parent = made;
        }
        deepest = parent;
        // New nodes bottom up, then their ancestors.
        for (TGridGroupNode* n = deepest; n != node; n = n->Parent)
            updateDisplay(n);
    }
    updateDisplayUp(newGroup ? node : deepest);
    endInsertRows();
}

void TGridModel::removeOne(quint32 row)
{
    const int sortedAt = m_sorting ? find(m_sorted, row) : -1;
    const int position = m_filtering ? find(m_rows, row) : sortedAt;
    if (position < 0) {
        if (sortedAt >= 0)
            m_sorted.erase(m_sorted.begin() + sortedAt);
        return;
    }
    TGridGroupNode* leaf = mutableNode(leafAt(position));
    TGridGroupNode* gone = nullptr;
    for (TGridGroupNode* n = leaf; n && n->Level >= 0 && n->rowCount() == 1; n = n->Parent)
        gone = n;
    TGridGroupNode* holder = gone ? gone->Parent : leaf;
    const QModelIndex parentIndex = holder->Level < 0 ? QModelIndex() : indexOfGroup(holder);
    const int treeRow = gone ? gone->Row : position - leaf->Begin;
    beginRemoveRows(parentIndex, treeRow, treeRow);
    if (sortedAt >= 0)
        m_sorted.erase(m_sorted.begin() + sortedAt);
    if (m_filtering)
        m_rows.erase(m_rows.begin() + position);
    if (gone) {
        holder->Children.erase(holder->Children.begin() + gone->Row);
        for (std::size_t i = 0; i < holder->Children.size(); ++i)
            holder->Children[i]->Row = int(i);
    }
    shiftRanges(m_root.get(), holder, position, -1);
    updateDisplayUp(holder);
    endRemoveRows();
}

bool TGridModel::inPlace(quint32 row) const
{
    const bool passes = !m_matcher.isActive() || m_matcher.matches(int(row));
    int position = -1;
    if (m_filtering) {
        position = find(m_rows, row);
        if ((position >= 0) != passes)
            return false;
    }
    if (m_sorting) {
        const int at = find(m_sorted, row);
        if (at < 0)
            return false;
        if (at > 0 && rowLess(row, m_sorted[std::size_t(at - 1)]))
            return false;
        if (std::size_t(at + 1) < m_sorted.size() && rowLess(m_sorted[std::size_t(at + 1)], row))
            return false;
        if (!m_filtering)
            position = at;
    }
    if (position >= 0 && groupDepth() > 0) {
        for (const TGridGroupNode* n = leafAt(position); n && n->Level >= 0; n = n->Parent)
            if (n->KeyRank != m_sortKeys[std::size_t(n->Level)].Keys->rank(int(row)))
                return false;
    }
    return true;
}

void TGridModel::refreshAfterPatch()
{
    computeSummaries();
    if (rowCount() > 0 && columnCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    emit rowsChanged();
}

void TGridModel::sourceRowsAboutToBeInserted(int first, int last)
{
    // Rows in source order are told before the source changes, so that readers of the old rows
    // still see them.
    if (m_resetting || !identity())
        return;
    beginInsertRows(QModelIndex(), first, last);
    m_identityInsert = true;
}

void TGridModel::sourceRowsInserted(int first, int last)
{
    if (m_resetting)
        return;
    const int count = last - first + 1;
    m_selection.insertRows(first, count);
    if (m_identityInsert) {
        m_identityInsert = false;
        m_sourceRows += count;
        m_root->End = m_sourceRows;
        updateDisplay(m_root.get());
        endInsertRows();
        computeSummaries();
        emit rowsChanged();
        return;
    }
    if (count > TGridSource::PatchLimit || keysStale()) {
        // Rebuilt in one pass; the rows the model held are numbered as before the insert.
        m_sortValid = false;
        beginRelayout();
        endRelayout(Rebuild::Sort, [first, count](int row) { return row >= first ? row + count : row; });
        return;
    }
    renumberRows(quint32(first), count);
    m_sourceRows += count;
    for (int row = first; row <= last; ++row)
        insertOne(quint32(row));
    refreshAfterPatch();
}

void TGridModel::sourceRowsAboutToBeRemoved(int first, int last)
{
    if (m_resetting)
        return;
    const int count = last - first + 1;
    if (count > TGridSource::PatchLimit) {
        beginRelayout();
        m_removalRelayout = true;
        return;
    }
    if (identity()) {
        beginRemoveRows(QModelIndex(), first, last);
        m_identityRemoval = true;
        return;
    }
    for (int row = last; row >= first; --row)
        removeOne(quint32(row));
}

void TGridModel::sourceRowsRemoved(int first, int last)
{
    if (m_resetting)
        return;
    const int count = last - first + 1;
    m_selection.removeRows(first, count);
    if (m_removalRelayout) {
        m_removalRelayout = false;
        m_sortValid = false;
        endRelayout(Rebuild::Sort, [first, last, count](int row) {
            return row < first ? row : (row > last ? row - count : -1);
        });
        return;
    }
    m_sourceRows -= count;
    if (m_identityRemoval) {
        m_identityRemoval = false;
        m_root->End = m_sourceRows;
        updateDisplay(m_root.get());
        endRemoveRows();
        computeSummaries();
        emit rowsChanged();
        return;
    }
    renumberRows(quint32(last + 1), -count);
    refreshAfterPatch();
}

void TGridModel::sourceRowsMoved(int first, int last, int to)
{
    if (m_resetting)
        return;
    m_selection.moveRows(first, last, to);
    const int count = last - first + 1;
    const auto translate = [first, last, to, count](int row) {
        if (row >= first && row <= last)
            return to + (row - first);
        if (to < first && row >= to && row < first)
            return row + count;
        if (to > first && row > last && row < to + count)
            return row - count;
        return row;
    };
    m_sortValid = false;
    relayout(Rebuild::Sort, translate);
}

void TGridModel::sourceDataChanged(int firstRow, int lastRow, int firstColumn, int lastColumn)
{
    if (m_resetting || !m_root)
        return;
    if (keysStale()) {
        relayout(Rebuild::Sort);
        emit contentChanged();
        return;
    }
    bool keyed = false;
    for (const auto& [column, generation] : m_keyGenerations)
        keyed = keyed || (column >= firstColumn && column <= lastColumn);
    bool summed = false;
    for (const auto* items : {&m_groupItems, &m_footerItems})
        for (const TGridSummaryItem& item : *items) {
            const int column = sourceColumnOf(m_columns ? m_columns->byName(item.ColumnName) : nullptr);
            summed = summed || (column >= firstColumn && column <= lastColumn);
        }
    const int count = lastRow - firstRow + 1;
    if (keyed && count > TGridSource::PatchLimit) {
        relayout(Rebuild::Sort);
        emit contentChanged();
        return;
    }
    if (keyed) {
        bool moved = false;
        for (int row = firstRow; row <= lastRow; ++row) {
            if (inPlace(quint32(row)))
                continue;
            removeOne(quint32(row));
            insertOne(quint32(row));
            moved = true;
        }
        if (moved)
            emit rowsChanged();
    }
    if (keyed || summed)
        computeSummaries();
    if (count <= TGridSource::PatchLimit) {
        for (int row = firstRow; row <= lastRow; ++row) {
            const QModelIndex first = indexOfSourceRow(row, 0);
            if (first.isValid())
                emit dataChanged(first, first.siblingAtColumn(columnCount() - 1));
        }
    } else if (rowCount() > 0 && columnCount() > 0) {
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    }
    emit contentChanged();
}
