#include "support_grid.h"

#include <QRandomGenerator>

TTestTable::TTestTable(const QStringList& fields, const QList<QVariantList>& rows, QObject* parent)
    : QAbstractTableModel(parent), m_fields(fields), m_rows(rows)
{
    for (qsizetype i = 0; i < m_rows.size(); ++i)
        m_keys.append(m_nextKey++);
}

int TTestTable::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int TTestTable::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_fields.size());
}

QVariant TTestTable::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const QVariant& v = m_rows[index.row()][index.column()];
    switch (role) {
    case Qt::DisplayRole:
        return v.isNull() ? QString() : v.toString();
    case Qt::EditRole:
        return v;
    case KeyRole:
        return m_keys[index.row()];
    default:
        return {};
    }
}

QVariant TTestTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= m_fields.size())
        return {};
    if (role == FieldNameRole)
        return m_fields[section];
    if (role == Qt::DisplayRole)
        return QString(m_fields[section] + QStringLiteral(" caption"));
    return {};
}

void TTestTable::insertRowAt(int row, const QVariantList& values)
{
    beginInsertRows(QModelIndex(), row, row);
    m_rows.insert(row, values);
    m_keys.insert(row, m_nextKey++);
    endInsertRows();
}

void TTestTable::insertRows(int row, const QList<QVariantList>& rows)
{
    beginInsertRows(QModelIndex(), row, row + int(rows.size()) - 1);
    for (int i = 0; i < rows.size(); ++i) {
        m_rows.insert(row + i, rows[i]);
        m_keys.insert(row + i, m_nextKey++);
    }
    endInsertRows();
}

void TTestTable::removeRowsAt(int first, int count)
{
    beginRemoveRows(QModelIndex(), first, first + count - 1);
    m_rows.remove(first, count);
    m_keys.remove(first, count);
    endRemoveRows();
}

void TTestTable::moveRowTo(int from, int to)
{
    if (from == to)
        return;
    beginMoveRows(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
    m_rows.move(from, to);
    m_keys.move(from, to);
    endMoveRows();
}

void TTestTable::setValue(int row, const QString& field, const QVariant& value)
{
    m_rows[row][column(field)] = value;
    emit dataChanged(index(row, column(field)), index(row, column(field)));
}

void TTestTable::resetRows(const QList<QVariantList>& rows, const QList<int>& keys)
{
    beginResetModel();
    m_rows = rows;
    m_keys = keys;
    while (m_keys.size() < m_rows.size())
        m_keys.append(m_nextKey++);
    endResetModel();
}

QList<QVariantList> MakeItems(int count, quint32 seed)
{
    static const QStringList names{QStringLiteral("Maple Leaf"), QStringLiteral("Eagle"),
                                   QStringLiteral("panda"),      QStringLiteral("Britannia"),
                                   QStringLiteral("Krugerrand"), QStringLiteral("Libertad")};
    static const QStringList countries{QStringLiteral("Canada"), QStringLiteral("USA"),
                                       QStringLiteral("China"), QStringLiteral("UK")};
    QRandomGenerator random(seed);
    QList<QVariantList> rows;
    for (int i = 0; i < count; ++i) {
        const int metal = int(random.bounded(6));
        const QVariant year = random.bounded(5) == 0 ? QVariant() : QVariant(1990 + int(random.bounded(30)));
        const QVariant price =
            random.bounded(4) == 0 ? QVariant() : QVariant(double(random.bounded(100000)) / 100.0);
        rows.append({i + 1, metal, names[random.bounded(int(names.size()))], year,
                     double(1 + random.bounded(4)) * 7.775, price,
                     countries[random.bounded(int(countries.size()))]});
    }
    return rows;
}
