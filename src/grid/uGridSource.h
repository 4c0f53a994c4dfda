#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QVariant>

#include <memory>
#include <unordered_map>
#include <vector>

class QAbstractItemModel;
class TGridKeyColumn;

// What a grid model hears of its source, after the shared key columns have been brought in step.
class TGridSourceClient
{
public:
    virtual ~TGridSourceClient() = default;
    virtual void sourceAboutToBeReset() = 0;
    virtual void sourceReset() = 0;
    virtual void sourceRowsAboutToBeInserted(int first, int last) = 0;
    virtual void sourceRowsInserted(int first, int last) = 0;
    virtual void sourceRowsAboutToBeRemoved(int first, int last) = 0;
    virtual void sourceRowsRemoved(int first, int last) = 0;
    // Rows first..last (numbers before the move) now start at row `to`.
    virtual void sourceRowsMoved(int first, int last, int to) = 0;
    virtual void sourceDataChanged(int firstRow, int lastRow, int firstColumn, int lastColumn) = 0;
};

// A flat source model as the views of one grid share it: columns found by field name under a
// settable header role, and the key columns (TGridKeyColumn) read once and shared by every view,
// kept in step with the model's inserts, removes, moves and changes, and dropped when no view
// needs them any more. Only the first level of the model is used.
class TGridSource : public QObject
{
    Q_OBJECT
public:
    // The roles of the program's dataset model.
    static constexpr int DefaultValueRole = Qt::EditRole;
    static constexpr int DefaultKeyRole = Qt::UserRole + 2;
    static constexpr int DefaultFieldNameRole = Qt::UserRole + 3;

    explicit TGridSource(QObject* parent = nullptr);
    ~TGridSource() override;

    QAbstractItemModel* model() const { return m_model; }
    void setModel(QAbstractItemModel* model);

    // Header role (horizontal) that gives a column's field name; DisplayRole is used as the field
    // name of a model that gives none.
    int fieldNameRole() const { return m_fieldNameRole; }
    void setFieldNameRole(int role);
    // Role of a row's key (stable across resets); pictures are cached by it.
    int keyRole() const { return m_keyRole; }
    void setKeyRole(int role) { m_keyRole = role; }
    // Role of the typed value (sorting, grouping, filtering, summaries, formatters).
    int valueRole() const { return m_valueRole; }
    void setValueRole(int role);

    int rowCount() const;
    // The source column of a field, -1 when the model has none.
    int columnOf(const QString& fieldName) const;
    QStringList fieldNames() const;
    QString headerText(int column) const;

    QVariant value(int row, int column) const;
    QString text(int row, int column) const;
    QVariant key(int row) const;
    QVariant data(int row, int column, int role) const;

    // The key column of a source column, read now if it is not held.
    TGridKeyColumn* keys(int column);
    bool hasKeys(int column) const;
    // Reads a column's keys a slice of rows per call (so that the event loop runs in between);
    // true once they are held. A change of the source starts the reading again.
    bool prepareKeys(int column, int rows);
    // What a client needs; key columns nobody needs are dropped.
    void setNeededColumns(const TGridSourceClient* client, const QSet<int>& columns);
    // Bytes held by the key columns (for measurements).
    qint64 keyMemory() const;

    void attach(TGridSourceClient* client);
    void detach(TGridSourceClient* client);

    // Above this many rows in one insert or change the key columns are read again on demand
    // rather than patched row by row.
    static constexpr int PatchLimit = 64;

signals:
    // Field names of the model's columns changed (the clients have been reset).
    void bindingChanged();

private:
    void connectModel();
    void rebind();
    void dropKeys();
    void evict();

    void onAboutToBeReset();
    void onReset();
    void onRowsAboutToBeInserted(const QModelIndex& parent, int first, int last);
    void onRowsInserted(const QModelIndex& parent, int first, int last);
    void onRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last);
    void onRowsRemoved(const QModelIndex& parent, int first, int last);
    void onRowsMoved(const QModelIndex& parent, int first, int last, const QModelIndex& destination, int row);
    void onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>& roles);
    void onColumnsChanged();

    QPointer<QAbstractItemModel> m_model;
    QList<QMetaObject::Connection> m_connections;
    int m_fieldNameRole = DefaultFieldNameRole;
    int m_keyRole = DefaultKeyRole;
    int m_valueRole = DefaultValueRole;
    QHash<QString, int> m_fields;
    std::unordered_map<int, std::unique_ptr<TGridKeyColumn>> m_keys;
    std::unordered_map<int, std::unique_ptr<TGridKeyColumn>> m_building;
    std::vector<TGridSourceClient*> m_clients;
    QHash<const TGridSourceClient*, QSet<int>> m_needed;
    bool m_resetting = false;
};
