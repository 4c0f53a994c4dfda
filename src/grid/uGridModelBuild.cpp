// Building a view's rows: keys, sort, filter and find, groups, summaries, expansion.

#include "uGridColumns.h"
#include "uGridKeyColumn.h"
#include "uGridModel.h"

#include <algorithm>
#include <bit>
#include <numeric>

using namespace Qt::StringLiterals;

namespace {
constexpr QChar PathSeparator = QChar(0x1f);

bool integralType(int type)
{
    switch (type) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
        return true;
    default:
        return false;
    }
}

// Order of two values for a minimum or maximum: numbers before texts, texts by collation.
bool valueLess(const QVariant& a, const QVariant& b)
{
    const bool ta = a.metaType().id() == QMetaType::QString;
    const bool tb = b.metaType().id() == QMetaType::QString;
    if (ta != tb)
        return tb;
    if (ta)
        return TGridKeyColumn::compareTexts(a.toString(), b.toString()) < 0;
    return QVariant::compare(a, b) == QPartialOrdering::Less;
}

// An aggregate under way: over ranks of a key column, or over values read from the source.
struct Accumulator
{
    double Sum = 0;
    qint64 Numbers = 0;
    qint64 Count = 0;
    quint32 MinRank = 0;
    quint32 MaxRank = 0;
    QVariant Min;
    QVariant Max;
    bool Integral = true;

    void add(const TGridKeyColumn* keys, quint32 rank)
    {
        if (rank == 0)
            return;
        ++Count;
        if (keys->isNumber(rank)) {
            Sum += keys->number(rank);
            ++Numbers;
        }
        if (MinRank == 0 || rank < MinRank)
            MinRank = rank;
        if (rank > MaxRank)
            MaxRank = rank;
    }
    void add(const QVariant& value)
    {
        if (!value.isValid() || value.isNull())
            return;
        const int type = value.metaType().id();
        if (type == QMetaType::QByteArray)
            return;
        ++Count;
        if (type == QMetaType::Double || type == QMetaType::Float || type == QMetaType::Bool ||
            integralType(type)) {
            Sum += value.toDouble();
            ++Numbers;
            Integral = Integral && (integralType(type) || type == QMetaType::Bool);
        }
        if (!Min.isValid() || valueLess(value, Min))
            Min = value;
        if (!Max.isValid() || valueLess(Max, value))
            Max = value;
    }
    void add(const Accumulator& other)
    {
        Sum += other.Sum;
        Numbers += other.Numbers;
        Count += other.Count;
        Integral = Integral && other.Integral;
        if (other.MinRank != 0 && (MinRank == 0 || other.MinRank < MinRank))
            MinRank = other.MinRank;
        MaxRank = std::max(MaxRank, other.MaxRank);
        if (other.Min.isValid() && (!Min.isValid() || valueLess(other.Min, Min)))
            Min = other.Min;
        if (other.Max.isValid() && (!Max.isValid() || valueLess(Max, other.Max)))
            Max = other.Max;
    }
};

// Where an item's values come from.
struct ItemValues
{
    const TGridKeyColumn* Keys = nullptr; // the key column, when the view keeps one
    int SourceColumn = -1;                // else read from the source
};

QVariant finish(TGridSummaryKind kind, const Accumulator& a, const ItemValues& from, qint64 rows)
{
    const bool bound = from.SourceColumn >= 0;
    switch (kind) {
    case TGridSummaryKind::None:
        return {};
    case TGridSummaryKind::Count:
        return bound ? a.Count : rows;
    case TGridSummaryKind::Sum:
        if (!bound || a.Numbers == 0)
            return {};
        if (from.Keys ? integralType(from.Keys->numberType()) : a.Integral)
            return qlonglong(a.Sum);
        return a.Sum;
    case TGridSummaryKind::Average:
        if (!bound || a.Numbers == 0)
            return {};
        return a.Sum / double(a.Numbers);
    case TGridSummaryKind::Min:
        if (from.Keys)
            return a.MinRank ? from.Keys->value(a.MinRank) : QVariant();
        return a.Min;
    case TGridSummaryKind::Max:
        if (from.Keys)
            return a.MaxRank ? from.Keys->value(a.MaxRank) : QVariant();
        return a.Max;
    }
    return {};
}
} // namespace

void TGridModel::resolveColumns()
{
    const int count = m_columns ? m_columns->count() : 0;
    m_sourceColumns.assign(std::size_t(count), -1);
    m_groupColumns.clear();
    if (!m_source)
        return;
    for (int id = 0; id < count; ++id) {
        const TGridColumn* column = m_columns->at(id);
        if (!column->fieldName().isEmpty())
            m_sourceColumns[std::size_t(id)] = m_source->columnOf(column->fieldName());
    }
    if (!m_groupingEnabled)
        return;
    for (const TGridColumn* column : m_columns->groupColumns())
        if (m_sourceColumns[std::size_t(column->id())] >= 0 && !column->isPicture())
            m_groupColumns.push_back(column->id());
}

void TGridModel::declareNeeds()
{
    if (!m_source)
        return;
    QSet<int> needed;
    const auto need = [&](const TGridColumn* column) {
        if (column && !column->isPicture() && sourceColumnOf(column) >= 0)
            needed.insert(sourceColumnOf(column));
    };
    for (const int id : m_groupColumns)
        need(m_columns->at(id));
    for (const TGridColumn* column : m_columns->sortColumns())
        need(column);
    for (const QString& field : m_filter.fieldNames()) {
        const TGridColumn* column = m_columns->byField(field);
        if (!(column && column->isPicture()) && m_source->columnOf(field) >= 0)
            needed.insert(m_source->columnOf(field));
    }
    if (!m_findWords.isEmpty() || m_findPrepared)
        for (const TGridColumn* column : m_columns->visibleColumns())
            need(column);
    m_keyedForRows = needed;
    // Summed columns keep keys while they are narrow (two bytes a row at most); wider ones are read
    // from the source when the sums are computed.
    for (const auto* items : {&m_groupItems, &m_footerItems})
        for (const TGridSummaryItem& item : *items) {
            const TGridColumn* column = m_columns->byName(item.ColumnName);
            if (column && !m_directSums.contains(sourceColumnOf(column)))
                need(column);
        }
    m_needed = needed;
    m_source->setNeededColumns(this, needed);
}

void TGridModel::prepareKeys()
{
    m_sortKeys.clear();
    QSet<int> used;
    for (const int id : m_groupColumns) {
        const TGridColumn* column = m_columns->at(id);
        SortKey key;
        key.SourceColumn = m_sourceColumns[std::size_t(id)];
        key.Descending = column->sortOrder() == TGridSortOrder::Descending;
        key.Keys = m_source->keys(key.SourceColumn);
        m_sortKeys.push_back(key);
        used.insert(key.SourceColumn);
    }
    for (const TGridColumn* column : m_columns->sortColumns()) {
        const int sourceColumn = sourceColumnOf(column);
        if (sourceColumn < 0 || column->isPicture() || used.contains(sourceColumn) ||
            (m_groupingEnabled && column->groupIndex() >= 0))
            continue;
        SortKey key;
        key.SourceColumn = sourceColumn;
        key.Descending = column->sortOrder() == TGridSortOrder::Descending;
        key.Keys = m_source->keys(sourceColumn);
        m_sortKeys.push_back(key);
        used.insert(sourceColumn);
    }
    m_sortKeys.erase(
        std::remove_if(m_sortKeys.begin(), m_sortKeys.end(), [](const SortKey& k) { return !k.Keys; }),
        m_sortKeys.end());
}

bool TGridModel::keysStale() const
{
    if (!m_source)
        return false;
    for (const auto& [column, generation] : m_keyGenerations) {
        if (!m_source->hasKeys(column))
            return true;
        if (const_cast<TGridSource*>(m_source.data())->keys(column)->generation() != generation)
            return true;
    }
    return false;
}

bool TGridModel::rowLess(quint32 a, quint32 b) const
{
    for (const SortKey& key : m_sortKeys) {
        const quint32 ra = key.Keys->rank(int(a));
        const quint32 rb = key.Keys->rank(int(b));
        if (ra != rb)
            return key.Descending ? ra > rb : ra < rb;
    }
    return a < b;
}

void TGridModel::sortRows()
{
    m_sorting = !m_sortKeys.empty();
    m_sortValid = true;
    if (!m_sorting) {
        std::vector<quint32>().swap(m_sorted);
        return;
    }
    const std::size_t n = std::size_t(m_sourceRows);
    m_sorted.resize(n);
    // When the ranks of all keys and the row number fit in 64 bits, one integer per row carries
    // the whole order and the sort compares integers only.
    int bits = n > 1 ? int(std::bit_width(quint64(n - 1))) : 1;
    std::vector<int> keyBits;
    for (const SortKey& key : m_sortKeys) {
        const int b = std::max(1, int(std::bit_width(quint64(key.Keys->rankCount() - 1))));
        keyBits.push_back(b);
        bits += b;
    }
    if (bits <= 64) {
        const int rowBits = n > 1 ? int(std::bit_width(quint64(n - 1))) : 1;
        std::vector<quint64> packed(n);
        for (std::size_t row = 0; row < n; ++row) {
            quint64 value = 0;
            for (std::size_t k = 0; k < m_sortKeys.size(); ++k) {
                const SortKey& key = m_sortKeys[k];
                quint32 rank = key.Keys->rank(int(row));
                if (key.Descending)
                    rank = key.Keys->rankCount() - 1 - rank;
                value = (value << keyBits[k]) | rank;
            }
            packed[row] = (value << rowBits) | row;
        }
        std::sort(packed.begin(), packed.end());
        const quint64 rowMask = rowBits >= 64 ? ~quint64(0) : ((quint64(1) << rowBits) - 1);
        for (std::size_t i = 0; i < n; ++i)
            m_sorted[i] = quint32(packed[i] & rowMask);
        return;
    }
    std::iota(m_sorted.begin(), m_sorted.end(), 0u);
    std::sort(m_sorted.begin(), m_sorted.end(), [this](quint32 a, quint32 b) { return rowLess(a, b); });
}

const std::vector<QString>& TGridModel::shownTexts(int sourceColumn, const TGridColumn* column)
{
    static const std::vector<QString> none;
    TGridKeyColumn* keys = m_source ? m_source->keys(sourceColumn) : nullptr;
    if (!keys)
        return none;
    const qint64 id = (qint64(sourceColumn) << 20) | qint64(column ? column->id() + 1 : 0);
    ShownTexts& entry = m_shownTexts[id];
    if (entry.Generation == keys->generation() && entry.Texts.size() == keys->rankCount())
        return entry.Texts;
    const quint32 count = keys->rankCount();
    entry.Texts.assign(count, QString());
    if (column && column->formatter()) {
        for (quint32 r = 1; r < count; ++r)
            entry.Texts[r] = column->formatter()(keys->value(r)).toCaseFolded();
    } else {
        // The source's own text, asked once per distinct value of one of its rows.
        std::vector<int> sample(count, -1);
        quint32 missing = count - 1;
        for (int row = 0; row < keys->rowCount() && missing > 0; ++row) {
            const quint32 r = keys->rank(row);
            if (r != 0 && sample[r] < 0) {
                sample[r] = row;
                --missing;
            }
        }
        for (quint32 r = 1; r < count; ++r)
            entry.Texts[r] =
                (sample[r] >= 0 ? m_source->text(sample[r], sourceColumn) : keys->value(r).toString())
                    .toCaseFolded();
    }
    entry.Generation = keys->generation();
    return entry.Texts;
}

bool TGridModel::prepareFindStep()
{
    if (!m_source || !m_columns)
        return true;
    if (!m_findPrepared) {
        m_findPrepared = true;
        declareNeeds();
    }
    for (const TGridColumn* column : m_columns->visibleColumns()) {
        const int sourceColumn = sourceColumnOf(column);
        if (sourceColumn < 0 || column->isPicture())
            continue;
        const qint64 id = (qint64(sourceColumn) << 20) | qint64(column->id() + 1);
        const auto it = m_shownTexts.find(id);
        const bool ready = it != m_shownTexts.end() && m_source->hasKeys(sourceColumn) &&
                           it->second.Generation == m_source->keys(sourceColumn)->generation();
        if (!ready) {
            // Keys a slice of rows per turn, then their texts.
            if (!m_source->hasKeys(sourceColumn))
                m_source->prepareKeys(sourceColumn, FindSliceRows);
            else
                shownTexts(sourceColumn, column);
            return false;
        }
    }
    return true;
}

void TGridModel::prepareFind()
{
    while (!prepareFindStep()) {
    }
}

void TGridModel::releaseFind()
{
    if (!m_findPrepared)
        return;
    m_findPrepared = false;
    if (m_findWords.isEmpty()) {
        m_shownTexts.clear();
        declareNeeds();
    }
}

void TGridModel::compileMatcher()
{
    m_matcher.clear();
    if (!m_source || (m_filter.isEmpty() && m_findWords.isEmpty()))
        return;
    // Every text table first: the pointers handed to the matcher stay valid from here on.
    const auto fieldColumn = [this](const QString& field) -> int {
        const TGridColumn* column = m_columns->byField(field);
        if (column && column->isPicture())
            return -1;
        return m_source->columnOf(field);
    };
    TGridMatcher::Context context;
    context.ColumnOf = fieldColumn;
    context.Keys = [this](int column) { return m_source->keys(column); };
    context.FieldTexts = [this, fieldColumn](const QString& field) -> const std::vector<QString>& {
        return shownTexts(fieldColumn(field), m_columns->byField(field));
    };
    if (!m_findWords.isEmpty()) {
        for (const TGridColumn* column : m_columns->visibleColumns()) {
            const int sourceColumn = sourceColumnOf(column);
            if (sourceColumn < 0 || column->isPicture())
                continue;
            const std::vector<QString>& texts = shownTexts(sourceColumn, column);
            context.FindColumns.emplace_back(m_source->keys(sourceColumn), &texts);
        }
    }
    m_matcher.compile(m_filter, m_findWords, context);
}

void TGridModel::filterRows()
{
    m_filtering = m_matcher.isActive();
    if (!m_filtering) {
        std::vector<quint32>().swap(m_rows);
        return;
    }
    m_rows.clear();
    for (int p = 0; p < m_sourceRows; ++p) {
        const quint32 row = m_sorting ? m_sorted[std::size_t(p)] : quint32(p);
        if (m_matcher.matches(int(row)))
            m_rows.push_back(row);
    }
    if (m_rows.capacity() > m_rows.size() * 2 + 1024)
        m_rows.shrink_to_fit();
}

void TGridModel::buildGroups()
{
    m_root = std::make_unique<TGridGroupNode>();
    m_root->Level = -1;
    m_root->Expanded = true;
    m_root->End = visibleRowCount();
    const int depth = groupDepth();
    if (depth == 0)
        return;
    std::vector<TGridGroupNode*> open(std::size_t(depth), nullptr);
    const int count = m_root->End;
    for (int p = 0; p < count; ++p) {
        const int row = sourceRowAt(p);
        bool changed = false;
        for (int level = 0; level < depth; ++level) {
            const quint32 rank = m_sortKeys[std::size_t(level)].Keys->rank(row);
            TGridGroupNode*& node = open[std::size_t(level)];
            if (!changed && node && node->KeyRank == rank)
                continue;
            changed = true;
            if (node)
                node->End = p;
            TGridGroupNode* parent = level == 0 ? m_root.get() : open[std::size_t(level - 1)];
            auto child = std::make_unique<TGridGroupNode>();
            child->Parent = parent;
            child->Level = level;
            child->Row = int(parent->Children.size());
            child->KeyRank = rank;
            child->Key = m_sortKeys[std::size_t(level)].Keys->value(rank);
            child->Begin = p;
            node = child.get();
            parent->Children.push_back(std::move(child));
        }
    }
    for (TGridGroupNode* node : open)
        if (node)
            node->End = count;
}

QString TGridModel::levelKeyText(const TGridGroupNode* group) const
{
    const QVariant key = groupKey(group);
    if (key.isNull())
        return u"\x01"_s;
    return QString::number(key.metaType().id()) + u':' + key.toString();
}

QString TGridModel::pathOf(const TGridGroupNode* group) const
{
    QStringList parts;
    for (const TGridGroupNode* node = group; node && node->Level >= 0; node = node->Parent)
        parts.prepend(levelKeyText(node));
    return parts.join(PathSeparator);
}

const TGridGroupNode* TGridModel::nodeOfPath(const QString& path) const
{
    if (!m_root || path.isEmpty())
        return nullptr;
    const QStringList parts = path.split(PathSeparator);
    const TGridGroupNode* node = m_root.get();
    for (const QString& part : parts) {
        const TGridGroupNode* next = nullptr;
        for (const auto& child : node->Children)
            if (levelKeyText(child.get()) == part) {
                next = child.get();
                break;
            }
        if (!next)
            return nullptr;
        node = next;
    }
    return node;
}

void TGridModel::applyExpansion(TGridGroupNode* node)
{
    for (auto& child : node->Children) {
        child->Expanded = m_expandExceptions.isEmpty()
                              ? m_expandDefault
                              : (m_expandDefault != m_expandExceptions.contains(pathOf(child.get())));
        applyExpansion(child.get());
    }
}

void TGridModel::updateDisplay(TGridGroupNode* node)
{
    for (auto& child : node->Children)
        updateDisplay(child.get());
    int inner = 0;
    if (isLeaf(node) || node->Children.empty()) {
        node->ChildOffsets.clear();
        inner = node->rowCount();
    } else {
        node->ChildOffsets.resize(node->Children.size());
        for (std::size_t i = 0; i < node->Children.size(); ++i) {
            node->ChildOffsets[i] = inner;
            inner += node->Children[i]->DisplayCount;
        }
    }
    if (node->Level >= 0 && m_groupFooters)
        ++inner;
    node->DisplayCount = node->Level < 0 ? inner : 1 + (node->Expanded ? inner : 0);
}

void TGridModel::updateDisplayUp(TGridGroupNode* node)
{
    for (; node; node = node->Parent) {
        int inner = 0;
        if (isLeaf(node) || node->Children.empty()) {
            inner = node->rowCount();
        } else {
            node->ChildOffsets.resize(node->Children.size());
            for (std::size_t i = 0; i < node->Children.size(); ++i) {
                node->ChildOffsets[i] = inner;
                inner += node->Children[i]->DisplayCount;
            }
        }
        if (node->Level >= 0 && m_groupFooters)
            ++inner;
        node->DisplayCount = node->Level < 0 ? inner : 1 + (node->Expanded ? inner : 0);
    }
}

void TGridModel::computeSummaries()
{
    if (!m_root || !m_source)
        return;
    // A column the view keeps keys of is summed through its ranks; a column that is only summed is
    // read from the source, so that it costs no memory per row.
    const auto valuesOf = [this](const TGridSummaryItem& item) -> ItemValues {
        const TGridColumn* column = m_columns ? m_columns->byName(item.ColumnName) : nullptr;
        const int sourceColumn = column && !column->isPicture() ? sourceColumnOf(column) : -1;
        if (sourceColumn < 0)
            return {};
        if (!m_needed.contains(sourceColumn))
            return {nullptr, sourceColumn};
        TGridKeyColumn* keys = m_source->keys(sourceColumn);
        if (keys && keys->rankCount() > 0x10000 && !m_keyedForRows.contains(sourceColumn)) {
            m_directSums.insert(sourceColumn);
            return {nullptr, sourceColumn};
        }
        return {keys, sourceColumn};
    };
    const auto addRow = [this](Accumulator& a, const ItemValues& from, int row) {
        if (from.Keys)
            a.add(from.Keys, from.Keys->rank(row));
        else
            a.add(m_source->value(row, from.SourceColumn));
    };
    const int count = visibleRowCount();

    // Footer: over every row shown.
    m_footerValues.assign(m_footerItems.size(), QVariant());
    for (std::size_t i = 0; i < m_footerItems.size(); ++i) {
        const TGridSummaryItem& item = m_footerItems[i];
        const ItemValues from = valuesOf(item);
        Accumulator a;
        if (from.SourceColumn >= 0 && item.Kind != TGridSummaryKind::None &&
            item.Kind != TGridSummaryKind::Count)
            for (int p = 0; p < count; ++p)
                addRow(a, from, sourceRowAt(p));
        else if (from.SourceColumn >= 0 && item.Kind == TGridSummaryKind::Count)
            for (int p = 0; p < count; ++p)
                addRow(a, from, sourceRowAt(p));
        m_footerValues[i] = finish(item.Kind, a, from, count);
    }

    // Groups: the deepest level from its rows, the others from their children.
    if (groupDepth() > 0) {
        const std::size_t itemCount = m_groupItems.size();
        std::vector<ItemValues> from(itemCount);
        for (std::size_t i = 0; i < itemCount; ++i)
            from[i] = valuesOf(m_groupItems[i]);
        const std::function<std::vector<Accumulator>(TGridGroupNode*)> visit = [&](TGridGroupNode* node) {
            std::vector<Accumulator> acc(itemCount);
            if (isLeaf(node)) {
                for (std::size_t i = 0; i < itemCount; ++i)
                    if (from[i].SourceColumn >= 0 && m_groupItems[i].Kind != TGridSummaryKind::None)
                        for (int p = node->Begin; p < node->End; ++p)
                            addRow(acc[i], from[i], sourceRowAt(p));
            } else {
                for (auto& child : node->Children) {
                    const std::vector<Accumulator> sub = visit(child.get());
                    for (std::size_t i = 0; i < itemCount; ++i)
                        acc[i].add(sub[i]);
                }
            }
            if (node->Level >= 0) {
                node->Summaries.resize(itemCount);
                for (std::size_t i = 0; i < itemCount; ++i)
                    node->Summaries[i] = finish(m_groupItems[i].Kind, acc[i], from[i], node->rowCount());
            }
            return acc;
        };
        visit(m_root.get());
    }

    // Columns found too wide to keep are let go.
    for (const int column : std::as_const(m_directSums))
        if (m_needed.contains(column)) {
            declareNeeds();
            break;
        }

    if (!m_summaryCallback)
        return;
    const std::function<void(TGridGroupNode*)> callGroups = [&](TGridGroupNode* node) {
        for (auto& child : node->Children) {
            TGridSummaryScope scope(m_groupItems, child->Summaries, child->Level);
            m_summaryCallback(scope);
            callGroups(child.get());
        }
    };
    if (!m_groupItems.empty())
        callGroups(m_root.get());
    if (!m_footerItems.empty()) {
        TGridSummaryScope scope(m_footerItems, m_footerValues, -1);
        m_summaryCallback(scope);
    }
}

void TGridModel::buildAll(Rebuild what)
{
    m_sourceRows = m_source && !m_resetting ? m_source->rowCount() : 0;
    resolveColumns();

    // Whether the sorted order still stands.
    std::vector<std::pair<int, bool>> sortKeys;
    for (const int id : m_groupColumns)
        sortKeys.emplace_back(m_sourceColumns[std::size_t(id)],
                          m_columns->at(id)->sortOrder() == TGridSortOrder::Descending);
    if (m_columns)
        for (const TGridColumn* column : m_columns->sortColumns())
            if (sourceColumnOf(column) >= 0 && !column->isPicture())
                sortKeys.emplace_back(sourceColumnOf(column), column->sortOrder() == TGridSortOrder::Descending);
    bool sortStands = what == Rebuild::Filter && m_sortValid && sortKeys == m_sortSpec &&
                      (!m_sorting || m_sorted.size() == std::size_t(m_sourceRows));
    if (sortStands && m_source)
        for (const auto& [column, descending] : m_sortSpec) {
            const auto it = std::find_if(m_keyGenerations.begin(), m_keyGenerations.end(),
                                         [column = column](const auto& g) { return g.first == column; });
            if (!m_source->hasKeys(column) || it == m_keyGenerations.end() ||
                m_source->keys(column)->generation() != it->second)
                sortStands = false;
        }
    m_sortSpec = sortKeys;

    if (m_source && !m_resetting) {
        declareNeeds();
        prepareKeys();
    } else {
        m_sortKeys.clear();
    }
    if (!sortStands)
        sortRows();
    compileMatcher();
    filterRows();
    buildGroups();
    applyExpansion(m_root.get());
    updateDisplay(m_root.get());
    computeSummaries();
    m_selection.resize(m_sourceRows);

    m_keyGenerations.clear();
    if (m_source && !m_resetting) {
        QSet<int> columns;
        for (const SortKey& key : m_sortKeys)
            columns.insert(key.SourceColumn);
        for (const QString& field : m_filter.fieldNames())
            if (m_source->columnOf(field) >= 0 && m_source->hasKeys(m_source->columnOf(field)))
                columns.insert(m_source->columnOf(field));
        if (!m_findWords.isEmpty())
            for (const TGridColumn* column : m_columns->visibleColumns())
                if (!column->isPicture() && sourceColumnOf(column) >= 0)
                    columns.insert(sourceColumnOf(column));
        for (const int column : std::as_const(columns))
            if (m_source->hasKeys(column))
                m_keyGenerations.emplace_back(column, m_source->keys(column)->generation());
    }
}

void TGridModel::beginRelayout()
{
    emit layoutAboutToBeChanged();
    m_savedFrom = persistentIndexList();
    m_saved.clear();
    m_saved.reserve(std::size_t(m_savedFrom.size()));
    m_savedGroups = m_groupColumns;
    for (const QModelIndex& index : std::as_const(m_savedFrom)) {
        const TGridRow row = rowOfIndex(index);
        SavedIndex s{row.Kind, -1, {}, index.column()};
        if (row.Kind == TGridRowKind::Data)
            s.SourceRow = row.SourceRow;
        else if (row.Group)
            s.Path = pathOf(row.Group);
        m_saved.push_back(s);
    }
}

void TGridModel::endRelayout(Rebuild what, const std::function<int(int)>& translateRow)
{
    buildAll(what);
    const bool sameGroups = m_savedGroups == m_groupColumns;
    QModelIndexList to;
    to.reserve(m_savedFrom.size());
    for (const SavedIndex& s : m_saved) {
        QModelIndex index;
        if (s.Kind == TGridRowKind::Data) {
            const int row = translateRow ? translateRow(s.SourceRow) : s.SourceRow;
            if (row >= 0)
                index = indexOfSourceRow(row, s.Column);
        } else if (sameGroups) {
            if (const TGridGroupNode* node = nodeOfPath(s.Path)) {
                if (s.Kind == TGridRowKind::Group)
                    index = indexOfGroup(node, s.Column);
                else if (m_groupFooters)
                    index = createIndex(treeRowCount(node) - 1, s.Column, mutableNode(node));
            }
        }
        to.append(index);
    }
    changePersistentIndexList(m_savedFrom, to);
    m_savedFrom.clear();
    m_saved.clear();
    emit layoutChanged();
    emit rowsChanged();
}

void TGridModel::relayout(Rebuild what, const std::function<int(int)>& translateRow)
{
    beginRelayout();
    endRelayout(what, translateRow);
}
