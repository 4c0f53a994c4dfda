#pragma once

#include <QAbstractItemModel>
#include <QHash>
#include <QPersistentModelIndex>
#include <QPointer>

#include <memory>
#include <vector>

class TEditorItem;

// The rows of a TPropertyGrid as a two-level model: categories at the top with their rows below
// them, and rows without a category at the top as well, in the order they were added. Column 0
// is the caption, column 1 the value. A row bound to a field reads and writes that field of the
// source model's current row; an unbound row keeps a value of its own.
class TPropertyGridModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Role
    {
        // The row's value as the source holds it (column 1).
        ValueRole = Qt::UserRole + 200,
    };

    struct Node
    {
        bool category = false;
        QString name;
        QString caption;
        QString fieldName;
        const TEditorItem* item = nullptr;
        bool visible = true;
        bool readOnly = false;
        bool expanded = true;
        int lines = 0;
        QVariant value;
        Node* parent = nullptr;
        std::vector<Node*> children;
    };

    explicit TPropertyGridModel(QObject* parent = nullptr);
    ~TPropertyGridModel() override;

    // Structure. Names are unique over categories and rows; adding a name again fails (nullptr).
    Node* addCategory(const QString& name, const QString& caption);
    Node* addRow(const QString& name, const QString& caption, const QString& fieldName,
                 const TEditorItem* item, const QString& category);
    void clearNodes();
    Node* node(const QString& name) const;
    const Node* nodeOf(const QModelIndex& index) const;
    QModelIndex indexOf(const Node* node, int column = 0) const;
    std::vector<Node*> rows() const;
    // A category shows when it is visible itself and, with autoHide, when one of its rows shows.
    bool isShown(const Node* node) const;
    bool categoryAutoHide() const { return m_autoHide; }
    void setCategoryAutoHide(bool on) { m_autoHide = on; }
    // Tells the views that captions, visibility or editors of a node changed.
    void nodeChanged(const Node* node);

    // The source.
    void setSourceModel(QAbstractItemModel* model);
    QAbstractItemModel* sourceModel() const { return m_source.data(); }
    void setFieldNameRole(int role);
    int fieldNameRole() const { return m_fieldNameRole; }
    void setValueRole(int role);
    int valueRole() const { return m_valueRole; }
    void setCurrentRow(int row);
    int currentRow() const;
    // The source column of a field, or -1.
    int columnOf(const QString& fieldName) const;

    bool readOnly() const { return m_readOnly; }
    void setReadOnly(bool readOnly);
    bool isEditable(const Node* node) const;

    QVariant valueOf(const Node* node) const;
    // Writes a value: to the source's current row for a bound row, into the row for an unbound
    // one. A refusal or a failure of the source sets *error and returns false.
    bool writeValue(Node* node, const QVariant& value, QString* error);

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

signals:
    // A value was written through writeValue.
    void valueWritten(const QString& name, const QVariant& value);
    // writeValue failed with message (setData only; writeValue callers get the text).
    void writeFailed(const QString& name, const QString& message);
    // Visibility or captions changed: views show and hide rows again.
    void shapeChanged();
    void currentRowChanged(int row);

private:
    void rebuildFieldMap();
    void valuesChanged();
    void sourceDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight);

    std::vector<std::unique_ptr<Node>> m_nodes;
    std::vector<Node*> m_top;
    QHash<QString, Node*> m_byName;
    QPointer<QAbstractItemModel> m_source;
    QPersistentModelIndex m_current;
    QHash<QString, int> m_fieldColumns;
    int m_fieldNameRole = Qt::UserRole + 3;
    int m_valueRole = Qt::UserRole + 1;
    bool m_readOnly = false;
    bool m_autoHide = true;
    bool m_losingCurrent = false;
    QList<QMetaObject::Connection> m_sourceConnections;
};
