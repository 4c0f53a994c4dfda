#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <QVariantList>

// A small source model in the shape of the program's dataset model: typed values under EditRole,
// their text under DisplayRole, a key per row, and field names in the header.
class TTestTable : public QAbstractTableModel
{
public:
    static constexpr int KeyRole = Qt::UserRole + 2;
    static constexpr int FieldNameRole = Qt::UserRole + 3;

    explicit TTestTable(const QStringList& fields, const QList<QVariantList>& rows = {},
                        QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    int column(const QString& field) const { return int(m_fields.indexOf(field)); }
    QVariant value(int row, const QString& field) const { return m_rows[row][column(field)]; }
    int key(int row) const { return m_keys[row]; }
    int rowOfKey(int key) const { return int(m_keys.indexOf(key)); }

    void insertRowAt(int row, const QVariantList& values);
    void appendRow(const QVariantList& values) { insertRowAt(rowCount(), values); }
    // Rows inserted at once (one notification).
    void insertRows(int row, const QList<QVariantList>& rows);
    void removeRowsAt(int first, int count = 1);
    // Moves one row so that it ends up at `to`.
    void moveRowTo(int from, int to);
    void setValue(int row, const QString& field, const QVariant& value);
    // New rows; with keys given the rows keep them (a refresh), else they get new ones.
    void resetRows(const QList<QVariantList>& rows, const QList<int>& keys = {});

private:
    QStringList m_fields;
    QList<QVariantList> m_rows;
    QList<int> m_keys;
    int m_nextKey = 1;
};

// A table of n rows with the fields ID, Metal (0..5), Name, Year (null on some), Weight,
// Price (null on some) and Country, drawn from a fixed seed.
QList<QVariantList> MakeItems(int count, quint32 seed = 7);
