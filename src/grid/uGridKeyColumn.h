#pragma once

#include <QString>
#include <QVariant>

#include <cstring>
#include <memory>
#include <vector>

class QAbstractItemModel;

// The values of one source column, read once and kept as ranks: every row holds the rank of its
// value among the column's distinct values (0 for null, then numbers ascending, then texts in the
// collation order of the locale without regard to case). Sorting, grouping, filtering and finding
// compare ranks instead of QVariants, and summaries read a row's number through its rank.
// Numbers keep their original type (integer, double, boolean, date, date-time) for value().
// Image bytes and other binary values count as null.
class TGridKeyColumn
{
public:
    TGridKeyColumn(const QAbstractItemModel* model, int column, int role);
    ~TGridKeyColumn();

    int column() const { return m_column; }
    int rowCount() const { return m_rows; }
    // Ranks are kept in one, two or four bytes a row, as few as the column's distinct values allow.
    quint32 rank(int row) const
    {
        const quint8* at = m_store.data() + std::size_t(row) * std::size_t(m_width);
        switch (m_width) {
        case 1:
            return *at;
        case 2: {
            quint16 value;
            std::memcpy(&value, at, sizeof value);
            return value;
        }
        default: {
            quint32 value;
            std::memcpy(&value, at, sizeof value);
            return value;
        }
        }
    }
    int bytesPerRow() const { return m_width; }

    // Ranks run from 0 (null) to rankCount() - 1.
    quint32 rankCount() const { return quint32(1 + m_numbers.size() + m_texts.size()); }
    bool isNumber(quint32 rank) const { return rank >= 1 && rank <= m_numbers.size(); }
    bool isText(quint32 rank) const { return rank > m_numbers.size() && rank < rankCount(); }
    double number(quint32 rank) const { return m_numbers[rank - 1]; }
    const QString& text(quint32 rank) const { return m_texts[rank - 1 - m_numbers.size()]; }
    // The value of a rank in the column's own type; null for rank 0.
    QVariant value(quint32 rank) const;
    // The type value() gives numbers: QMetaType::Int, LongLong, Double, Bool, QDate, QDateTime...;
    // Double when a column mixes them. QMetaType::UnknownType while the column holds no number.
    int numberType() const { return m_numberType; }
    bool hasTexts() const { return !m_texts.empty(); }

    // Changes whenever ranks are built or renumbered; what was derived from ranks (compiled
    // filters, texts by rank, groups) is stale once it differs.
    quint64 generation() const { return m_generation; }

    // Reads every row.
    void build();
    // The same a slice at a time: buildSome() reads up to `rows` more rows and is true once the
    // column is complete; until then its ranks are not to be read.
    void beginBuild();
    bool buildSome(int rows);
    bool isBuilding() const { return m_build != nullptr; }
    // Keep in step with the source model (rows as the model numbers them after the change).
    void insertRows(int first, int last);
    void removeRows(int first, int last);
    // Rows first..last moved so that they now start at `to` (the row numbers after the move).
    void moveRows(int first, int last, int to);
    void updateRows(int first, int last);

    // Converts a value to a number the way this column keeps numbers (dates as julian days,
    // date-times as milliseconds); false when it is no number.
    bool toNumber(const QVariant& value, double* number) const;
    // Order of two texts: the collation of the locale without regard to case, ties broken by code
    // points so that different texts never compare equal.
    static int compareTexts(const QString& a, const QString& b);
    // The collation alone: texts that differ only in case compare equal.
    static int collate(const QString& a, const QString& b);

private:
    enum class ValueKind
    {
        Null,
        Number,
        Text
    };
    ValueKind classify(const QVariant& value, double* number, QString* text);
    quint32 rankFor(const QVariant& value);
    void renumberFrom(quint32 rank);
    void setRank(int row, quint32 rank);
    // Wide enough for ranks up to maxRank.
    void fit(quint32 maxRank);

    struct BuildState;
    std::unique_ptr<BuildState> m_build;
    const QAbstractItemModel* m_model;
    int m_column;
    int m_role;
    std::vector<quint8> m_store;
    int m_width = 1;
    int m_rows = 0;
    std::vector<double> m_numbers;
    std::vector<QString> m_texts;
    int m_numberType = 0;
    quint64 m_generation = 0;
};
