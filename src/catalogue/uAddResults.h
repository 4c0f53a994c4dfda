#pragma once

#include "uObjs.h"

#include <QAbstractTableModel>
#include <QByteArray>
#include <QList>
#include <QVariant>

#include <array>
#include <memory>
#include <vector>

// The results of one tab of the add dialog: a record per catalogue result, with the cells that its
// card shows and the asset it owns until the user adds it.

// The rows of a card, in order; each is a column of the model.
enum TAddColumn : int
{
    acThumb = 0, // picture bytes: the placeholder, then the thumbnail
    acCaption,   // the asset's caption
    acName,      // null when blank, as the text columns below
    acWeight,    // grams, null when 0
    acYear,      // null when 0
    acPurity,
    acMint,
    acSeries,
    acCountry,
    acRelevance,   // hidden, sorts the results
    acDataPointer, // hidden: the asset while the record owns it, null once added
    acFetched,     // hidden, always false
    acColumnCount
};

// The field name of a column, as the model's header gives it under TAddResultsModel::FieldNameRole.
QString AddColumnField(int column);

// One direction of the sort of the result views.
struct TAddSortKey
{
    int Column = acRelevance;
    Qt::SortOrder Order = Qt::DescendingOrder;
    friend bool operator==(const TAddSortKey&, const TAddSortKey&) = default;
};
using TAddSort = QList<TAddSortKey>;

// Relevance, then newest year, then heaviest: the order of a fresh result list.
TAddSort InitialAddSort();

class TAddResultsModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int KeyRole = Qt::UserRole + 2;       // a record's stable key
    static constexpr int FieldNameRole = Qt::UserRole + 3; // in the header: the column's field

    explicit TAddResultsModel(QObject* parent = nullptr);
    ~TAddResultsModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Records, those appended inside an open update bracket included.
    int Count() const { return int(m_records.size() + m_pending.size()); }
    QVariant Cell(int row, int column) const;

    // Appends are gathered between BeginUpdate and EndUpdate and told as one insert.
    void BeginUpdate();
    void EndUpdate();
    // Appends a record for the asset, with its thumbnail cell set to placeholder; returns its index.
    int Append(std::unique_ptr<TMetalAsset> asset, const QByteArray& placeholder);
    void SetThumb(int row, const QByteArray& picture);

    // The record's asset while the record owns it; nullptr once it was added or for a wrong row.
    TMetalAsset* Asset(int row) const;
    // Hands the asset over to the caller; the record then holds a null pointer.
    std::unique_ptr<TMetalAsset> TakeAsset(int row);
    // The row whose record holds asset, or -1.
    int RowOf(const TMetalAsset* asset) const;

    // Deletes the records (their assets with them); rows out of range are passed over.
    void RemoveRows(QList<int> rows);
    void Clear();

    // The rows in the order of the sort: stable, nulls first when ascending and last when descending.
    QList<int> SortedRows(const TAddSort& sort) const;

private:
    struct TRecord
    {
        quint64 Key = 0;
        std::array<QVariant, acColumnCount> Cells;
        std::unique_ptr<TMetalAsset> Asset;
    };

    TRecord* Record(int row);
    const TRecord* Record(int row) const;

    std::vector<TRecord> m_records;
    std::vector<TRecord> m_pending; // appended inside the open update bracket, not yet told
    quint64 m_nextKey = 1;
    int m_updates = 0;
};
