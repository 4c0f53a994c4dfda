#include "uAddResults.h"

#include <algorithm>
#include <iterator>
#include <numeric>

using namespace Qt::StringLiterals;

QString AddColumnField(int column)
{
    static const std::array<QString, acColumnCount> fields = {
        u"Thumb"_s,    u"Caption"_s, u"Name"_s,    u"WeightG"_s,   u"Year"_s,        u"Purity"_s,
        u"MintName"_s, u"Series"_s,  u"Country"_s, u"Relevance"_s, u"DataPointer"_s, u"Fetched"_s};
    return column >= 0 && column < acColumnCount ? fields[std::size_t(column)] : QString();
}

TAddSort InitialAddSort()
{
    return {
        {acRelevance, Qt::DescendingOrder}, {acYear, Qt::DescendingOrder}, {acWeight, Qt::DescendingOrder}};
}

namespace {

QVariant TextOrNull(const QString& text)
{
    return text.trimmed().isEmpty() ? QVariant() : QVariant(text);
}

template <class T> QVariant NumberOrNull(T number)
{
    return number == T(0) ? QVariant() : QVariant(number);
}

QVariant AssetPointer(const TMetalAsset* asset)
{
    return asset ? QVariant::fromValue(quintptr(asset)) : QVariant();
}

// Null first; numbers by value, texts without regard to case.
int CompareCells(const QVariant& a, const QVariant& b)
{
    if (a.isNull() || b.isNull())
        return a.isNull() == b.isNull() ? 0 : (a.isNull() ? -1 : 1);
    if (a.typeId() == QMetaType::QString || b.typeId() == QMetaType::QString)
        return a.toString().compare(b.toString(), Qt::CaseInsensitive);
    const double x = a.toDouble();
    const double y = b.toDouble();
    return x < y ? -1 : (x > y ? 1 : 0);
}

} // namespace

TAddResultsModel::TAddResultsModel(QObject* parent) : QAbstractTableModel(parent) {}

TAddResultsModel::~TAddResultsModel() = default;

int TAddResultsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_records.size());
}

int TAddResultsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : acColumnCount;
}

QVariant TAddResultsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_records.size()))
        return {};
    if (role == KeyRole)
        return QVariant::fromValue(m_records[std::size_t(index.row())].Key);
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return {};
    return Cell(index.row(), index.column());
}

QVariant TAddResultsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || (role != FieldNameRole && role != Qt::DisplayRole))
        return {};
    return AddColumnField(section);
}

TAddResultsModel::TRecord* TAddResultsModel::Record(int row)
{
    if (row < 0)
        return nullptr;
    if (std::size_t(row) < m_records.size())
        return &m_records[std::size_t(row)];
    const std::size_t pending = std::size_t(row) - m_records.size();
    return pending < m_pending.size() ? &m_pending[pending] : nullptr;
}

const TAddResultsModel::TRecord* TAddResultsModel::Record(int row) const
{
    return const_cast<TAddResultsModel*>(this)->Record(row);
}

QVariant TAddResultsModel::Cell(int row, int column) const
{
    const TRecord* record = Record(row);
    if (!record || column < 0 || column >= acColumnCount)
        return {};
    if (column == acDataPointer)
        return AssetPointer(record->Asset.get());
    return record->Cells[std::size_t(column)];
}

void TAddResultsModel::BeginUpdate()
{
    ++m_updates;
}

void TAddResultsModel::EndUpdate()
{
    if (m_updates == 0 || --m_updates > 0 || m_pending.empty())
        return;
    const int first = int(m_records.size());
    beginInsertRows({}, first, first + int(m_pending.size()) - 1);
    std::move(m_pending.begin(), m_pending.end(), std::back_inserter(m_records));
    m_pending.clear();
    endInsertRows();
}

int TAddResultsModel::Append(std::unique_ptr<TMetalAsset> asset, const QByteArray& placeholder)
{
    TRecord record;
    record.Key = m_nextKey++;
    const TMetalAsset& a = *asset;
    record.Cells = {QVariant(placeholder),
                    QVariant(a.Caption()),
                    TextOrNull(a.Name),
                    NumberOrNull(a.WeightG),
                    NumberOrNull(a.Year),
                    TextOrNull(a.Purity),
                    TextOrNull(a.MintName),
                    TextOrNull(a.Series),
                    TextOrNull(a.Country),
                    QVariant(a.Relevance),
                    QVariant(),
                    QVariant(false)};
    record.Asset = std::move(asset);
    const int row = Count();
    if (m_updates > 0) {
        m_pending.push_back(std::move(record));
    } else {
        beginInsertRows({}, row, row);
        m_records.push_back(std::move(record));
        endInsertRows();
    }
    return row;
}

void TAddResultsModel::SetThumb(int row, const QByteArray& picture)
{
    TRecord* record = Record(row);
    if (!record)
        return;
    record->Cells[acThumb] = picture;
    if (row < int(m_records.size())) {
        const QModelIndex cell = index(row, acThumb);
        emit dataChanged(cell, cell);
    }
}

TMetalAsset* TAddResultsModel::Asset(int row) const
{
    const TRecord* record = Record(row);
    return record ? record->Asset.get() : nullptr;
}

std::unique_ptr<TMetalAsset> TAddResultsModel::TakeAsset(int row)
{
    TRecord* record = Record(row);
    if (!record || !record->Asset)
        return nullptr;
    std::unique_ptr<TMetalAsset> asset = std::move(record->Asset);
    if (row < int(m_records.size())) {
        const QModelIndex cell = index(row, acDataPointer);
        emit dataChanged(cell, cell);
    }
    return asset;
}

int TAddResultsModel::RowOf(const TMetalAsset* asset) const
{
    if (!asset)
        return -1;
    for (int row = 0; row < Count(); ++row)
        if (Record(row)->Asset.get() == asset)
            return row;
    return -1;
}

void TAddResultsModel::RemoveRows(QList<int> rows)
{
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    // From the last to the first, a run of neighbouring rows at a time.
    for (qsizetype n = rows.size() - 1; n >= 0;) {
        const int last = rows[n];
        int first = last;
        while (n > 0 && rows[n - 1] == first - 1)
            first = rows[--n];
        --n;
        if (first < 0 || last >= int(m_records.size()))
            continue;
        beginRemoveRows({}, first, last);
        m_records.erase(m_records.begin() + first, m_records.begin() + last + 1);
        endRemoveRows();
    }
}

void TAddResultsModel::Clear()
{
    m_pending.clear();
    if (m_records.empty())
        return;
    beginResetModel();
    m_records.clear();
    endResetModel();
}

QList<int> TAddResultsModel::SortedRows(const TAddSort& sort) const
{
    QList<int> rows(Count());
    std::iota(rows.begin(), rows.end(), 0);
    std::stable_sort(rows.begin(), rows.end(), [this, &sort](int a, int b) {
        for (const TAddSortKey& key : sort) {
            const QVariant& x = Record(a)->Cells[std::size_t(key.Column)];
            const QVariant& y = Record(b)->Cells[std::size_t(key.Column)];
            const int order = CompareCells(x, y);
            if (order != 0)
                return key.Order == Qt::AscendingOrder ? order < 0 : order > 0;
        }
        return false;
    });
    return rows;
}
