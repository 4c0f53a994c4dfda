#include "uGridSource.h"

#include "uGridKeyColumn.h"

#include <QAbstractItemModel>

#include <algorithm>
#include <limits>

TGridSource::TGridSource(QObject* parent) : QObject(parent) {}

TGridSource::~TGridSource()
{
    for (const QMetaObject::Connection& c : std::as_const(m_connections))
        disconnect(c);
}

void TGridSource::setModel(QAbstractItemModel* model)
{
    if (m_model == model)
        return;
    onAboutToBeReset();
    for (const QMetaObject::Connection& c : std::as_const(m_connections))
        disconnect(c);
    m_connections.clear();
    m_model = model;
    connectModel();
    onReset();
}

void TGridSource::connectModel()
{
    if (!m_model)
        return;
    QAbstractItemModel* m = m_model;
    m_connections = {
        connect(m, &QAbstractItemModel::modelAboutToBeReset, this, &TGridSource::onAboutToBeReset),
        connect(m, &QAbstractItemModel::modelReset, this, &TGridSource::onReset),
        connect(m, &QAbstractItemModel::layoutAboutToBeChanged, this, &TGridSource::onAboutToBeReset),
        connect(m, &QAbstractItemModel::layoutChanged, this, &TGridSource::onReset),
        connect(m, &QAbstractItemModel::rowsAboutToBeInserted, this, &TGridSource::onRowsAboutToBeInserted),
        connect(m, &QAbstractItemModel::rowsInserted, this, &TGridSource::onRowsInserted),
        connect(m, &QAbstractItemModel::rowsAboutToBeRemoved, this, &TGridSource::onRowsAboutToBeRemoved),
        connect(m, &QAbstractItemModel::rowsRemoved, this, &TGridSource::onRowsRemoved),
        connect(m, &QAbstractItemModel::rowsMoved, this, &TGridSource::onRowsMoved),
        connect(m, &QAbstractItemModel::dataChanged, this, &TGridSource::onDataChanged),
        connect(m, &QAbstractItemModel::headerDataChanged, this,
                [this](Qt::Orientation o, int, int) {
                    if (o == Qt::Horizontal)
                        onColumnsChanged();
                }),
        connect(m, &QAbstractItemModel::columnsInserted, this, &TGridSource::onColumnsChanged),
        connect(m, &QAbstractItemModel::columnsRemoved, this, &TGridSource::onColumnsChanged),
        connect(m, &QAbstractItemModel::columnsMoved, this, &TGridSource::onColumnsChanged),
        connect(m, &QObject::destroyed, this,
                [this]() {
                    onAboutToBeReset();
                    m_connections.clear();
                    onReset();
                }),
    };
}

void TGridSource::setFieldNameRole(int role)
{
    if (m_fieldNameRole == role)
        return;
    m_fieldNameRole = role;
    onColumnsChanged();
}

void TGridSource::setValueRole(int role)
{
    if (m_valueRole == role)
        return;
    onAboutToBeReset();
    m_valueRole = role;
    onReset();
}

void TGridSource::rebind()
{
    m_fields.clear();
    if (!m_model)
        return;
    const int columns = m_model->columnCount();
    for (int c = 0; c < columns; ++c) {
        QString name = m_model->headerData(c, Qt::Horizontal, m_fieldNameRole).toString();
        if (name.isEmpty())
            name = m_model->headerData(c, Qt::Horizontal, Qt::DisplayRole).toString();
        if (!name.isEmpty() && !m_fields.contains(name))
            m_fields.insert(name, c);
    }
}

int TGridSource::rowCount() const
{
    return m_model && !m_resetting ? m_model->rowCount() : 0;
}

int TGridSource::columnOf(const QString& fieldName) const
{
    return m_fields.value(fieldName, -1);
}

QStringList TGridSource::fieldNames() const
{
    QList<std::pair<int, QString>> byColumn;
    for (auto it = m_fields.constBegin(); it != m_fields.constEnd(); ++it)
        byColumn.append({it.value(), it.key()});
    std::sort(byColumn.begin(), byColumn.end());
    QStringList result;
    for (const auto& entry : std::as_const(byColumn))
        result.append(entry.second);
    return result;
}

QString TGridSource::headerText(int column) const
{
    return m_model && column >= 0 ? m_model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString()
                                  : QString();
}

QVariant TGridSource::data(int row, int column, int role) const
{
    if (!m_model || column < 0 || row < 0)
        return {};
    return m_model->data(m_model->index(row, column), role);
}

QVariant TGridSource::value(int row, int column) const
{
    return data(row, column, m_valueRole);
}

QString TGridSource::text(int row, int column) const
{
    return data(row, column, Qt::DisplayRole).toString();
}

QVariant TGridSource::key(int row) const
{
    if (!m_model || row < 0)
        return {};
    return m_model->data(m_model->index(row, 0), m_keyRole);
}

TGridKeyColumn* TGridSource::keys(int column)
{
    if (!m_model || column < 0 || column >= m_model->columnCount())
        return nullptr;
    auto it = m_keys.find(column);
    if (it != m_keys.end())
        return it->second.get();
    std::unique_ptr<TGridKeyColumn> keys;
    const auto building = m_building.find(column);
    if (building != m_building.end()) {
        keys = std::move(building->second);
        m_building.erase(building);
        keys->buildSome(std::numeric_limits<int>::max());
    } else {
        keys = std::make_unique<TGridKeyColumn>(m_model, column, m_valueRole);
        keys->build();
    }
    TGridKeyColumn* result = keys.get();
    m_keys.emplace(column, std::move(keys));
    return result;
}

bool TGridSource::hasKeys(int column) const
{
    return m_keys.find(column) != m_keys.end();
}

bool TGridSource::prepareKeys(int column, int rows)
{
    if (hasKeys(column))
        return true;
    if (!m_model || column < 0 || column >= m_model->columnCount())
        return true;
    auto it = m_building.find(column);
    if (it == m_building.end()) {
        auto keys = std::make_unique<TGridKeyColumn>(m_model, column, m_valueRole);
        keys->beginBuild();
        it = m_building.emplace(column, std::move(keys)).first;
    }
    if (!it->second->buildSome(rows))
        return false;
    m_keys.emplace(column, std::move(it->second));
    m_building.erase(it);
    return true;
}

void TGridSource::setNeededColumns(const TGridSourceClient* client, const QSet<int>& columns)
{
    if (columns.isEmpty())
        m_needed.remove(client);
    else
        m_needed.insert(client, columns);
    evict();
}

void TGridSource::evict()
{
    for (auto it = m_building.begin(); it != m_building.end();) {
        bool needed = false;
        for (auto n = m_needed.constBegin(); n != m_needed.constEnd() && !needed; ++n)
            needed = n.value().contains(it->first);
        it = needed ? std::next(it) : m_building.erase(it);
    }
    for (auto it = m_keys.begin(); it != m_keys.end();) {
        bool needed = false;
        for (auto n = m_needed.constBegin(); n != m_needed.constEnd() && !needed; ++n)
            needed = n.value().contains(it->first);
        if (needed)
            ++it;
        else
            it = m_keys.erase(it);
    }
}

qint64 TGridSource::keyMemory() const
{
    qint64 bytes = 0;
    for (const auto& [column, keys] : m_keys) {
        bytes += qint64(keys->rowCount()) * keys->bytesPerRow();
        for (quint32 r = 1; r < keys->rankCount(); ++r)
            bytes += keys->isNumber(r) ? qint64(sizeof(double))
                                       : qint64(sizeof(QString)) + keys->text(r).size() * 2 + 24;
    }
    return bytes;
}

void TGridSource::attach(TGridSourceClient* client)
{
    if (std::find(m_clients.begin(), m_clients.end(), client) == m_clients.end())
        m_clients.push_back(client);
}

void TGridSource::detach(TGridSourceClient* client)
{
    m_clients.erase(std::remove(m_clients.begin(), m_clients.end(), client), m_clients.end());
    m_needed.remove(client);
    evict();
}

void TGridSource::dropKeys()
{
    m_keys.clear();
    m_building.clear();
}

void TGridSource::onAboutToBeReset()
{
    if (m_resetting)
        return;
    const auto clients = m_clients;
    for (TGridSourceClient* client : clients)
        client->sourceAboutToBeReset();
    m_resetting = true;
}

void TGridSource::onReset()
{
    if (!m_resetting)
        onAboutToBeReset();
    m_resetting = false;
    dropKeys();
    rebind();
    const auto clients = m_clients;
    for (TGridSourceClient* client : clients)
        client->sourceReset();
}

void TGridSource::onColumnsChanged()
{
    onAboutToBeReset();
    onReset();
    emit bindingChanged();
}

void TGridSource::onRowsAboutToBeInserted(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid())
        return;
    const auto clients = m_clients;
    for (TGridSourceClient* client : clients)
        client->sourceRowsAboutToBeInserted(first, last);
}

void TGridSource::onRowsInserted(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid())
        return;
    m_building.clear();
    if (last - first + 1 > PatchLimit)
        dropKeys();
    for (auto& [column, keys] : m_keys)
        keys->insertRows(first, last);
    const auto clients = m_clients;
    for (TGridSourceClient* client : clients)
        client->sourceRowsInserted(first, last);
}

void TGridSource::onRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid())
        return;
    const auto clients = m_clients;
    for (TGridSourceClient* client : clients)
        client->sourceRowsAboutToBeRemoved(first, last);
}

void TGridSource::onRowsRemoved(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid())
        return;
    m_building.clear();
    for (auto& [column, keys] : m_keys)
        keys->removeRows(first, last);
    const auto clients = m_clients;
    for (TGridSourceClient* client : clients)
        client->sourceRowsRemoved(first, last);
}

void TGridSource::onRowsMoved(const QModelIndex& parent, int first, int last, const QModelIndex& destination,
                              int row)
{
    if (parent.isValid() || destination.isValid())
        return;
    m_building.clear();
    const int count = last - first + 1;
    const int to = row > last ? row - count : row;
    for (auto& [column, keys] : m_keys)
        keys->moveRows(first, last, to);
    const auto clients = m_clients;
    for (TGridSourceClient* client : clients)
        client->sourceRowsMoved(first, last, to);
}

void TGridSource::onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                const QList<int>& roles)
{
    if (!topLeft.isValid() || topLeft.parent().isValid())
        return;
    m_building.clear();
    const int firstRow = topLeft.row();
    const int lastRow = bottomRight.row();
    const int firstColumn = topLeft.column();
    const int lastColumn = bottomRight.column();
    if (roles.isEmpty() || roles.contains(m_valueRole)) {
        if (lastRow - firstRow + 1 > PatchLimit) {
            for (auto it = m_keys.begin(); it != m_keys.end();)
                it = it->first >= firstColumn && it->first <= lastColumn ? m_keys.erase(it) : std::next(it);
        } else {
            for (auto& [column, keys] : m_keys)
                if (column >= firstColumn && column <= lastColumn)
                    keys->updateRows(firstRow, lastRow);
        }
    }
    const auto clients = m_clients;
    for (TGridSourceClient* client : clients)
        client->sourceDataChanged(firstRow, lastRow, firstColumn, lastColumn);
}
