#include "uGridModel.h"

#include "uGridColumns.h"
#include "uGridKeyColumn.h"
#include "uGridTexts.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

TGridModel::TGridModel(TGridSource* source, TGridColumns* columns, QObject* parent)
    : QAbstractItemModel(parent), m_source(source), m_columns(columns)
{
    if (m_source)
        m_source->attach(this);
    if (m_columns)
        connect(m_columns, &TGridColumns::changed, this, &TGridModel::onColumnsChanged);
    buildAll(Rebuild::Sort);
}

TGridModel::~TGridModel()
{
    if (m_source)
        m_source->detach(this);
}

void TGridModel::setGroupingEnabled(bool enabled)
{
    if (m_groupingEnabled == enabled)
        return;
    m_groupingEnabled = enabled;
    relayout(Rebuild::Sort);
}

void TGridModel::setGroupFootersVisible(bool visible)
{
    if (m_groupFooters == visible)
        return;
    beginResetModel();
    m_groupFooters = visible;
    if (m_root)
        updateDisplay(m_root.get());
    endResetModel();
    emit rowsChanged();
}

void TGridModel::setFilter(const TGridFilter& filter)
{
    if (m_filter == filter)
        return;
    m_filter = filter;
    relayout(Rebuild::Filter);
    emit filterChanged();
}

void TGridModel::setFindText(const QString& text)
{
    if (m_findText == text)
        return;
    m_findText = text;
    const QStringList words = TGridMatcher::findWords(text);
    if (words != m_findWords) {
        m_findWords = words;
        relayout(Rebuild::Filter);
    }
    emit findTextChanged(text);
}

int TGridModel::addGroupSummary(const TGridSummaryItem& item)
{
    m_groupItems.push_back(item);
    buildAll(Rebuild::Filter);
    emit contentChanged();
    return int(m_groupItems.size()) - 1;
}

int TGridModel::addFooterSummary(const TGridSummaryItem& item)
{
    m_footerItems.push_back(item);
    buildAll(Rebuild::Filter);
    emit contentChanged();
    return int(m_footerItems.size()) - 1;
}

void TGridModel::clearSummaries()
{
    m_groupItems.clear();
    m_footerItems.clear();
    m_footerValues.clear();
    buildAll(Rebuild::Filter);
    emit contentChanged();
}

void TGridModel::setSummaryCallback(TGridSummaryCallback callback)
{
    m_summaryCallback = std::move(callback);
    computeSummaries();
    emit contentChanged();
}

QVariant TGridModel::footerValue(int item) const
{
    return item >= 0 && std::size_t(item) < m_footerValues.size() ? m_footerValues[std::size_t(item)]
                                                                  : QVariant();
}

QString TGridModel::footerText(int item) const
{
    if (item < 0 || std::size_t(item) >= m_footerItems.size())
        return {};
    return summaryText(m_footerItems[std::size_t(item)], footerValue(item));
}

QVariant TGridModel::groupValue(const TGridGroupNode* group, int item) const
{
    if (!group || item < 0 || std::size_t(item) >= group->Summaries.size())
        return {};
    return group->Summaries[std::size_t(item)];
}

QString TGridModel::groupSummaryText(const TGridGroupNode* group, int item) const
{
    if (item < 0 || std::size_t(item) >= m_groupItems.size())
        return {};
    return summaryText(m_groupItems[std::size_t(item)], groupValue(group, item));
}

QString TGridModel::summaryText(const TGridSummaryItem& item, const QVariant& value) const
{
    if (!value.isValid() || value.isNull())
        return {};
    if (item.Format)
        return item.Format(value);
    const TGridColumn* column = m_columns ? m_columns->byName(item.ColumnName) : nullptr;
    if (item.Kind != TGridSummaryKind::Count && column && column->formatter())
        return column->formatter()(value);
    const QLocale locale;
    switch (value.metaType().id()) {
    case QMetaType::Double:
    case QMetaType::Float: {
        const double d = value.toDouble();
        if (std::floor(d) == d && std::abs(d) < 1e15)
            return locale.toString(qlonglong(d));
        return locale.toString(d, 'f', 2);
    }
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return locale.toString(value.toLongLong());
    default:
        return value.toString();
    }
}

int TGridModel::visibleRowCount() const
{
    return m_filtering ? int(m_rows.size()) : m_sourceRows;
}

int TGridModel::sourceRowAt(int position) const
{
    if (position < 0 || position >= visibleRowCount())
        return -1;
    if (m_filtering)
        return int(m_rows[std::size_t(position)]);
    if (m_sorting)
        return int(m_sorted[std::size_t(position)]);
    return position;
}

int TGridModel::positionOf(int sourceRow) const
{
    if (sourceRow < 0 || sourceRow >= m_sourceRows)
        return -1;
    const auto find = [sourceRow](const std::vector<quint32>& v) {
        const auto it = std::find(v.begin(), v.end(), quint32(sourceRow));
        return it == v.end() ? -1 : int(it - v.begin());
    };
    if (m_filtering)
        return find(m_rows);
    if (m_sorting)
        return find(m_sorted);
    return sourceRow;
}

TGridColumn* TGridModel::groupColumn(int level) const
{
    if (!m_columns || level < 0 || level >= groupDepth())
        return nullptr;
    return m_columns->at(m_groupColumns[std::size_t(level)]);
}

QVariant TGridModel::groupKey(const TGridGroupNode* group) const
{
    return group && group->Level >= 0 ? group->Key : QVariant();
}

QString TGridModel::groupValueText(const TGridGroupNode* group) const
{
    const TGridColumn* column = group ? groupColumn(group->Level) : nullptr;
    if (!column)
        return {};
    const QVariant key = groupKey(group);
    QString text;
    if (!key.isNull())
        text = column->formatter() ? column->formatter()(key)
                                   : m_source->text(sourceRowAt(group->Begin), sourceColumnOf(column));
    return text.isEmpty() ? GridTexts().BlankGroupValue : text;
}

QString TGridModel::groupText(const TGridGroupNode* group) const
{
    const TGridColumn* column = group ? groupColumn(group->Level) : nullptr;
    if (!column)
        return {};
    return columnCaption(column) + u": "_s + groupValueText(group);
}

TGridRow TGridModel::displayRow(int index) const
{
    TGridRow result;
    if (!m_root || index < 0 || index >= m_root->DisplayCount)
        return result;
    const TGridGroupNode* node = m_root.get();
    int inner = index;
    while (true) {
        if (isLeaf(node) || node->Children.empty()) {
            if (inner < node->rowCount()) {
                result.Kind = TGridRowKind::Data;
                result.Group = node;
                result.Position = node->Begin + inner;
                result.SourceRow = sourceRowAt(result.Position);
                result.Level = groupDepth();
            } else {
                result.Kind = TGridRowKind::GroupFooter;
                result.Group = node;
                result.Level = node->Level + 1;
            }
            return result;
        }
        const auto it = std::upper_bound(node->ChildOffsets.begin(), node->ChildOffsets.end(), inner);
        const std::size_t k = std::size_t(it - node->ChildOffsets.begin()) - 1;
        const TGridGroupNode* child = node->Children[k].get();
        const int within = inner - node->ChildOffsets[k];
        if (within >= child->DisplayCount) {
            // Past the last child: this node's footer.
            result.Kind = TGridRowKind::GroupFooter;
            result.Group = node;
            result.Level = node->Level + 1;
            return result;
        }
        if (within == 0) {
            result.Kind = TGridRowKind::Group;
            result.Group = child;
            result.Level = child->Level;
            return result;
        }
        node = child;
        inner = within - 1;
    }
}

const TGridGroupNode* TGridModel::leafAt(int position) const
{
    if (!m_root || position < 0 || position >= visibleRowCount())
        return nullptr;
    const TGridGroupNode* node = m_root.get();
    while (!isLeaf(node) && !node->Children.empty()) {
        const auto it =
            std::upper_bound(node->Children.begin(), node->Children.end(), position,
                             [](int p, const std::unique_ptr<TGridGroupNode>& c) { return p < c->Begin; });
        node = (*(it - 1)).get();
    }
    return node;
}

const TGridGroupNode* TGridModel::groupOfSourceRow(int sourceRow) const
{
    return leafAt(positionOf(sourceRow));
}

int TGridModel::displayIndexOfGroup(const TGridGroupNode* group) const
{
    if (!group || group->Level < 0)
        return -1;
    int index = 0;
    const TGridGroupNode* node = group;
    while (node->Parent) {
        const TGridGroupNode* parent = node->Parent;
        index += parent->ChildOffsets[std::size_t(node->Row)];
        if (parent->Level >= 0) {
            if (!parent->Expanded)
                return -1;
            index += 1;
        }
        node = parent;
    }
    return index;
}

int TGridModel::displayIndexOfSourceRow(int sourceRow) const
{
    const int position = positionOf(sourceRow);
    const TGridGroupNode* leaf = leafAt(position);
    if (!leaf)
        return -1;
    if (leaf->Level < 0)
        return position;
    if (!leaf->Expanded)
        return -1;
    const int group = displayIndexOfGroup(leaf);
    return group < 0 ? -1 : group + 1 + (position - leaf->Begin);
}

void TGridModel::setExpanded(const TGridGroupNode* group, bool expanded)
{
    if (!group || group->Level < 0 || group->Expanded == expanded)
        return;
    TGridGroupNode* node = mutableNode(group);
    node->Expanded = expanded;
    const QString path = pathOf(node);
    if (expanded != m_expandDefault)
        m_expandExceptions.insert(path);
    else
        m_expandExceptions.remove(path);
    updateDisplayUp(node);
    emit rowsChanged();
}

void TGridModel::expandAll()
{
    m_expandDefault = true;
    m_expandExceptions.clear();
    if (m_root) {
        applyExpansion(m_root.get());
        updateDisplay(m_root.get());
    }
    emit rowsChanged();
}

void TGridModel::collapseAll()
{
    m_expandDefault = false;
    m_expandExceptions.clear();
    if (m_root) {
        applyExpansion(m_root.get());
        updateDisplay(m_root.get());
    }
    emit rowsChanged();
}

void TGridModel::expandTo(int sourceRow)
{
    const TGridGroupNode* leaf = groupOfSourceRow(sourceRow);
    bool changed = false;
    for (const TGridGroupNode* node = leaf; node && node->Level >= 0; node = node->Parent) {
        if (node->Expanded)
            continue;
        TGridGroupNode* n = mutableNode(node);
        n->Expanded = true;
        const QString path = pathOf(n);
        if (m_expandDefault)
            m_expandExceptions.remove(path);
        else
            m_expandExceptions.insert(path);
        updateDisplayUp(n);
        changed = true;
    }
    if (changed)
        emit rowsChanged();
}

void TGridModel::walk(bool expandAll, const std::function<bool(const TGridRow&)>& visitor) const
{
    if (!m_root)
        return;
    const std::function<bool(const TGridGroupNode*)> visit = [&](const TGridGroupNode* node) -> bool {
        if (isLeaf(node) || node->Children.empty()) {
            for (int p = node->Begin; p < node->End; ++p) {
                TGridRow row;
                row.Kind = TGridRowKind::Data;
                row.Group = node;
                row.Position = p;
                row.SourceRow = sourceRowAt(p);
                row.Level = groupDepth();
                if (!visitor(row))
                    return false;
            }
        } else {
            for (const auto& child : node->Children) {
                TGridRow row;
                row.Kind = TGridRowKind::Group;
                row.Group = child.get();
                row.Level = child->Level;
                if (!visitor(row))
                    return false;
                if ((expandAll || child->Expanded) && !visit(child.get()))
                    return false;
            }
        }
        if (node->Level >= 0 && m_groupFooters) {
            TGridRow row;
            row.Kind = TGridRowKind::GroupFooter;
            row.Group = node;
            row.Level = node->Level + 1;
            if (!visitor(row))
                return false;
        }
        return true;
    };
    visit(m_root.get());
}

int TGridModel::sourceColumnOf(const TGridColumn* column) const
{
    if (!column || column->id() < 0 || std::size_t(column->id()) >= m_sourceColumns.size())
        return -1;
    return m_sourceColumns[std::size_t(column->id())];
}

QString TGridModel::columnCaption(const TGridColumn* column) const
{
    if (!column)
        return {};
    if (!column->caption().isEmpty())
        return column->caption();
    const int sourceColumn = sourceColumnOf(column);
    if (m_source && sourceColumn >= 0) {
        const QString text = m_source->headerText(sourceColumn);
        if (!text.isEmpty())
            return text;
    }
    return column->fieldName().isEmpty() ? column->name() : column->fieldName();
}

QVariant TGridModel::value(int sourceRow, const TGridColumn* column) const
{
    const int sourceColumn = sourceColumnOf(column);
    if (!m_source || sourceColumn < 0 || sourceRow < 0 || sourceRow >= m_sourceRows)
        return {};
    return m_source->value(sourceRow, sourceColumn);
}

QString TGridModel::displayText(int sourceRow, const TGridColumn* column) const
{
    const int sourceColumn = sourceColumnOf(column);
    if (!m_source || sourceColumn < 0 || column->isPicture() || sourceRow < 0 || sourceRow >= m_sourceRows)
        return {};
    if (column->formatter())
        return column->formatter()(m_source->value(sourceRow, sourceColumn));
    return m_source->text(sourceRow, sourceColumn);
}

Qt::Alignment TGridModel::alignment(int sourceRow, const TGridColumn* column) const
{
    if (!column)
        return Qt::AlignLeft | Qt::AlignVCenter;
    if (column->alignment() != Qt::Alignment())
        return column->alignment();
    const int sourceColumn = sourceColumnOf(column);
    if (m_source && sourceColumn >= 0 && sourceRow >= 0 && sourceRow < m_sourceRows) {
        const QVariant a = m_source->data(sourceRow, sourceColumn, Qt::TextAlignmentRole);
        if (a.isValid())
            return Qt::Alignment(a.toInt());
    }
    return Qt::AlignLeft | Qt::AlignVCenter;
}

qint64 TGridModel::rowMemory() const
{
    qint64 bytes = qint64(m_sorted.capacity() + m_rows.capacity()) * qint64(sizeof(quint32));
    bytes += qint64(m_selection.count() >= 0 ? (m_sourceRows + 7) / 8 : 0);
    const std::function<void(const TGridGroupNode*)> visit = [&](const TGridGroupNode* node) {
        bytes += qint64(sizeof(TGridGroupNode)) + qint64(node->ChildOffsets.capacity() * sizeof(int)) +
                 qint64(node->Children.capacity() * sizeof(void*)) +
                 qint64(node->Summaries.capacity() * sizeof(QVariant));
        for (const auto& child : node->Children)
            visit(child.get());
    };
    if (m_root)
        visit(m_root.get());
    return bytes;
}

// ---- QAbstractItemModel ------------------------------------------------------------------------

int TGridModel::treeRowCount(const TGridGroupNode* node) const
{
    if (!node)
        return 0;
    const int children = isLeaf(node) ? node->rowCount() : int(node->Children.size());
    return children + (m_groupFooters && node->Level >= 0 ? 1 : 0);
}

const TGridGroupNode* TGridModel::nodeOfIndex(const QModelIndex& index) const
{
    if (!index.isValid())
        return m_root.get();
    const auto* parent = static_cast<const TGridGroupNode*>(index.internalPointer());
    if (!parent || isLeaf(parent) || index.row() >= int(parent->Children.size()))
        return nullptr;
    return parent->Children[std::size_t(index.row())].get();
}

TGridRow TGridModel::rowOfIndex(const QModelIndex& index) const
{
    TGridRow row;
    if (!index.isValid() || index.model() != this)
        return row;
    const auto* parent = static_cast<const TGridGroupNode*>(index.internalPointer());
    if (!parent)
        return row;
    if (!isLeaf(parent)) {
        if (index.row() < int(parent->Children.size())) {
            row.Kind = TGridRowKind::Group;
            row.Group = parent->Children[std::size_t(index.row())].get();
            row.Level = row.Group->Level;
        } else {
            row.Kind = TGridRowKind::GroupFooter;
            row.Group = parent;
            row.Level = parent->Level + 1;
        }
        return row;
    }
    if (index.row() < parent->rowCount()) {
        row.Kind = TGridRowKind::Data;
        row.Group = parent;
        row.Position = parent->Begin + index.row();
        row.SourceRow = sourceRowAt(row.Position);
        row.Level = groupDepth();
    } else {
        row.Kind = TGridRowKind::GroupFooter;
        row.Group = parent;
        row.Level = parent->Level + 1;
    }
    return row;
}

QModelIndex TGridModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0 || column >= columnCount() || (parent.isValid() && parent.column() != 0))
        return {};
    const TGridGroupNode* node = nodeOfIndex(parent);
    if (!node || row >= treeRowCount(node))
        return {};
    return createIndex(row, column, mutableNode(node));
}

QModelIndex TGridModel::parent(const QModelIndex& child) const
{
    if (!child.isValid())
        return {};
    const auto* parent = static_cast<const TGridGroupNode*>(child.internalPointer());
    if (!parent || parent->Level < 0)
        return {};
    return createIndex(parent->Row, 0, parent->Parent);
}

int TGridModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() && parent.column() != 0)
        return 0;
    return treeRowCount(nodeOfIndex(parent));
}

int TGridModel::columnCount(const QModelIndex&) const
{
    return m_columns ? m_columns->count() : 0;
}

bool TGridModel::hasChildren(const QModelIndex& parent) const
{
    return rowCount(parent) > 0;
}

QModelIndex TGridModel::indexOfSourceRow(int sourceRow, int column) const
{
    const int position = positionOf(sourceRow);
    const TGridGroupNode* leaf = leafAt(position);
    if (!leaf)
        return {};
    return createIndex(position - leaf->Begin, column, mutableNode(leaf));
}

QModelIndex TGridModel::indexOfGroup(const TGridGroupNode* group, int column) const
{
    if (!group || group->Level < 0)
        return {};
    return createIndex(group->Row, column, mutableNode(group->Parent));
}

QVariant TGridModel::data(const QModelIndex& index, int role) const
{
    const TGridRow row = rowOfIndex(index);
    if (!row.isValid())
        return {};
    const TGridColumn* column = m_columns ? m_columns->at(index.column()) : nullptr;
    switch (role) {
    case RowKindRole:
        return int(row.Kind);
    case SourceRowRole:
        return row.Kind == TGridRowKind::Data ? QVariant(row.SourceRow) : QVariant();
    case GroupLevelRole:
        return row.Kind == TGridRowKind::Data ? QVariant() : QVariant(row.Level);
    default:
        break;
    }
    if (row.Kind == TGridRowKind::Data) {
        switch (role) {
        case Qt::DisplayRole:
            return displayText(row.SourceRow, column);
        case Qt::EditRole:
            return value(row.SourceRow, column);
        case Qt::TextAlignmentRole:
            return int(alignment(row.SourceRow, column));
        default:
            if (!column || column->isPicture() || !m_source)
                return {};
            return m_source->data(row.SourceRow, sourceColumnOf(column), role);
        }
    }
    if (role != Qt::DisplayRole)
        return {};
    // Group rows carry their text in the first column and their summaries under their columns;
    // footers carry the footer summaries.
    const TGridSummaryPlace place =
        row.Kind == TGridRowKind::Group ? TGridSummaryPlace::GroupRow : TGridSummaryPlace::GroupFooter;
    QStringList parts;
    if (row.Kind == TGridRowKind::Group && index.column() == 0)
        parts.append(groupText(row.Group));
    for (std::size_t i = 0; i < m_groupItems.size(); ++i)
        if (m_groupItems[i].Place == place && column && m_groupItems[i].ColumnName == column->name()) {
            const QString text = groupSummaryText(row.Group, int(i));
            if (!text.isEmpty())
                parts.append(text);
        }
    return parts.join(u"; "_s);
}

QVariant TGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || !m_columns || section < 0 || section >= m_columns->count())
        return {};
    if (role == Qt::DisplayRole)
        return columnCaption(m_columns->at(section));
    return {};
}

Qt::ItemFlags TGridModel::flags(const QModelIndex& index) const
{
    const TGridRow row = rowOfIndex(index);
    if (!row.isValid())
        return Qt::NoItemFlags;
    switch (row.Kind) {
    case TGridRowKind::Data:
        return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    case TGridRowKind::Group:
        return Qt::ItemIsEnabled;
    case TGridRowKind::GroupFooter:
        return Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    }
    return Qt::NoItemFlags;
}

// ---- columns --------------------------------------------------------------------------------------

void TGridModel::onColumnsChanged(TGridColumnChanges changes)
{
    if (changes & TGridColumnChange::Structure) {
        m_shownTexts.clear();
        beginResetModel();
        buildAll(Rebuild::Sort);
        endResetModel();
        emit rowsChanged();
        return;
    }
    if (changes & (TGridColumnChange::Format | TGridColumnChange::Binding))
        m_shownTexts.clear();
    if (changes & TGridColumnChange::Grouping)
        m_expandExceptions.clear();
    if (changes & (TGridColumnChange::Grouping | TGridColumnChange::Sorting | TGridColumnChange::Binding)) {
        relayout(Rebuild::Sort);
    } else if ((changes & (TGridColumnChange::Visibility | TGridColumnChange::Format)) &&
               (!m_findWords.isEmpty() || !m_filter.isEmpty())) {
        relayout(Rebuild::Filter);
    } else if (changes & TGridColumnChange::Format) {
        computeSummaries();
    }
    if (changes & (TGridColumnChange::Caption | TGridColumnChange::Binding) && columnCount() > 0)
        emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
    if (changes & (TGridColumnChange::Format | TGridColumnChange::Binding | TGridColumnChange::Caption))
        emit contentChanged();
}
