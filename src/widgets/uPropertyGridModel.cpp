#include "uPropertyGridModel.h"

#include "uEditorItem.h"
#include "uWidgetTexts.h"

#include <exception>

TPropertyGridModel::TPropertyGridModel(QObject* parent) : QAbstractItemModel(parent) {}

TPropertyGridModel::~TPropertyGridModel() = default;

TPropertyGridModel::Node* TPropertyGridModel::addCategory(const QString& name, const QString& caption)
{
    if (name.isEmpty() || m_byName.contains(name))
        return nullptr;
    auto node = std::make_unique<Node>();
    node->category = true;
    node->name = name;
    node->caption = caption;
    beginInsertRows(QModelIndex(), int(m_top.size()), int(m_top.size()));
    m_top.push_back(node.get());
    m_byName.insert(name, node.get());
    m_nodes.push_back(std::move(node));
    endInsertRows();
    emit shapeChanged();
    return m_top.back();
}

TPropertyGridModel::Node* TPropertyGridModel::addRow(const QString& name, const QString& caption,
                                                     const QString& fieldName, const TEditorItem* item,
                                                     const QString& category)
{
    if (name.isEmpty() || m_byName.contains(name))
        return nullptr;
    Node* parentNode = nullptr;
    if (!category.isEmpty()) {
        parentNode = m_byName.value(category);
        if (parentNode == nullptr || !parentNode->category)
            return nullptr;
    }
    auto node = std::make_unique<Node>();
    node->name = name;
    node->caption = caption;
    node->fieldName = fieldName;
    node->item = item;
    node->parent = parentNode;
    Node* raw = node.get();
    std::vector<Node*>& siblings = parentNode ? parentNode->children : m_top;
    beginInsertRows(parentNode ? indexOf(parentNode) : QModelIndex(), int(siblings.size()),
                    int(siblings.size()));
    siblings.push_back(raw);
    m_byName.insert(name, raw);
    m_nodes.push_back(std::move(node));
    endInsertRows();
    emit shapeChanged();
    return raw;
}

void TPropertyGridModel::clearNodes()
{
    beginResetModel();
    m_top.clear();
    m_byName.clear();
    m_nodes.clear();
    endResetModel();
    emit shapeChanged();
}

TPropertyGridModel::Node* TPropertyGridModel::node(const QString& name) const
{
    return m_byName.value(name);
}

const TPropertyGridModel::Node* TPropertyGridModel::nodeOf(const QModelIndex& index) const
{
    if (!index.isValid() || index.model() != this)
        return nullptr;
    return static_cast<const Node*>(index.internalPointer());
}

QModelIndex TPropertyGridModel::indexOf(const Node* node, int column) const
{
    if (node == nullptr)
        return {};
    const std::vector<Node*>& siblings = node->parent ? node->parent->children : m_top;
    const auto at = std::find(siblings.begin(), siblings.end(), node);
    if (at == siblings.end())
        return {};
    return createIndex(int(at - siblings.begin()), column, const_cast<Node*>(node));
}

std::vector<TPropertyGridModel::Node*> TPropertyGridModel::rows() const
{
    std::vector<Node*> result;
    for (const auto& node : m_nodes)
        if (!node->category)
            result.push_back(node.get());
    return result;
}

bool TPropertyGridModel::isShown(const Node* node) const
{
    if (!node->visible)
        return false;
    if (!node->category || !m_autoHide)
        return true;
    return std::any_of(node->children.begin(), node->children.end(),
                       [](const Node* child) { return child->visible; });
}

void TPropertyGridModel::nodeChanged(const Node* node)
{
    const QModelIndex first = indexOf(node, 0);
    if (first.isValid())
        emit dataChanged(first, indexOf(node, 1));
    emit shapeChanged();
}

// ---- source

void TPropertyGridModel::setSourceModel(QAbstractItemModel* model)
{
    for (const QMetaObject::Connection& connection : m_sourceConnections)
        disconnect(connection);
    m_sourceConnections.clear();
    m_source = model;
    m_current = QPersistentModelIndex();
    if (model != nullptr) {
        m_sourceConnections
            << connect(model, &QAbstractItemModel::dataChanged, this, &TPropertyGridModel::sourceDataChanged)
            << connect(model, &QAbstractItemModel::headerDataChanged, this,
                       &TPropertyGridModel::rebuildFieldMap)
            << connect(model, &QAbstractItemModel::columnsInserted, this,
                       &TPropertyGridModel::rebuildFieldMap)
            << connect(model, &QAbstractItemModel::columnsRemoved, this, &TPropertyGridModel::rebuildFieldMap)
            << connect(model, &QAbstractItemModel::columnsMoved, this, &TPropertyGridModel::rebuildFieldMap)
            << connect(model, &QAbstractItemModel::modelReset, this,
                       [this]() {
                           rebuildFieldMap();
                           emit currentRowChanged(-1);
                       })
            << connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, this,
                       [this](const QModelIndex& parent, int first, int last) {
                           m_losingCurrent = m_current.isValid() && !parent.isValid() &&
                                             m_current.row() >= first && m_current.row() <= last;
                       })
            << connect(model, &QAbstractItemModel::rowsRemoved, this, [this]() {
                   // The current row went away with them: the grid shows nothing.
                   if (m_losingCurrent) {
                       m_losingCurrent = false;
                       valuesChanged();
                       emit currentRowChanged(-1);
                   }
               });
    }
    rebuildFieldMap();
    emit currentRowChanged(-1);
}

void TPropertyGridModel::setFieldNameRole(int role)
{
    m_fieldNameRole = role;
    rebuildFieldMap();
}

void TPropertyGridModel::setValueRole(int role)
{
    m_valueRole = role;
    valuesChanged();
}

void TPropertyGridModel::rebuildFieldMap()
{
    m_fieldColumns.clear();
    if (m_source) {
        for (int column = m_source->columnCount() - 1; column >= 0; --column) {
            const QString name = m_source->headerData(column, Qt::Horizontal, m_fieldNameRole).toString();
            if (!name.isEmpty())
                m_fieldColumns.insert(name, column);
        }
    }
    valuesChanged();
}

int TPropertyGridModel::columnOf(const QString& fieldName) const
{
    return m_fieldColumns.value(fieldName, -1);
}

void TPropertyGridModel::setCurrentRow(int row)
{
    QPersistentModelIndex next;
    if (m_source && row >= 0 && row < m_source->rowCount())
        next = QPersistentModelIndex(m_source->index(row, 0));
    if (next == m_current)
        return;
    m_current = next;
    valuesChanged();
    emit currentRowChanged(currentRow());
}

int TPropertyGridModel::currentRow() const
{
    return m_current.isValid() ? m_current.row() : -1;
}

void TPropertyGridModel::valuesChanged()
{
    for (Node* top : m_top) {
        if (top->category) {
            if (!top->children.empty())
                emit dataChanged(index(0, 1, indexOf(top)),
                                 index(int(top->children.size()) - 1, 1, indexOf(top)));
        } else {
            const QModelIndex at = indexOf(top, 1);
            emit dataChanged(at, at);
        }
    }
}

void TPropertyGridModel::sourceDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight)
{
    if (!m_current.isValid() || topLeft.parent().isValid())
        return;
    if (m_current.row() < topLeft.row() || m_current.row() > bottomRight.row())
        return;
    valuesChanged();
}

void TPropertyGridModel::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
    valuesChanged();
}

bool TPropertyGridModel::isEditable(const Node* node) const
{
    if (node == nullptr || node->category || node->readOnly || m_readOnly || node->item == nullptr)
        return false;
    if (node->fieldName.isEmpty())
        return true;
    return m_current.isValid() && columnOf(node->fieldName) >= 0;
}

QVariant TPropertyGridModel::valueOf(const Node* node) const
{
    if (node == nullptr || node->category)
        return {};
    if (node->fieldName.isEmpty())
        return node->value;
    const int column = columnOf(node->fieldName);
    if (!m_current.isValid() || column < 0)
        return {};
    const QModelIndex at = m_source->index(m_current.row(), column);
    QVariant value = at.data(m_valueRole);
    if (!value.isValid())
        value = at.data(Qt::EditRole);
    return value;
}

bool TPropertyGridModel::writeValue(Node* node, const QVariant& value, QString* error)
{
    if (node == nullptr || node->category)
        return false;
    if (node->fieldName.isEmpty()) {
        node->value = value;
        const QModelIndex at = indexOf(node, 1);
        emit dataChanged(at, at);
        emit valueWritten(node->name, value);
        return true;
    }
    const int column = columnOf(node->fieldName);
    if (!m_current.isValid() || column < 0) {
        if (error)
            *error = WidgetTexts().valueRefused;
        return false;
    }
    bool written = false;
    try {
        written = m_source->setData(m_source->index(m_current.row(), column), value, Qt::EditRole);
    } catch (const std::exception& failure) {
        if (error)
            *error = QString::fromUtf8(failure.what());
        return false;
    }
    if (!written) {
        if (error)
            *error = WidgetTexts().valueRefused;
        return false;
    }
    // The source announces its change; a source that does not still shows the new value.
    const QModelIndex at = indexOf(node, 1);
    emit dataChanged(at, at);
    emit valueWritten(node->name, value);
    return true;
}

// ---- QAbstractItemModel

QModelIndex TPropertyGridModel::index(int row, int column, const QModelIndex& parent) const
{
    if (column < 0 || column > 1 || row < 0)
        return {};
    const Node* parentNode = nodeOf(parent);
    const std::vector<Node*>& siblings = parentNode ? parentNode->children : m_top;
    if (row >= int(siblings.size()))
        return {};
    return createIndex(row, column, siblings[row]);
}

QModelIndex TPropertyGridModel::parent(const QModelIndex& child) const
{
    const Node* node = nodeOf(child);
    if (node == nullptr || node->parent == nullptr)
        return {};
    return indexOf(node->parent, 0);
}

int TPropertyGridModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return int(m_top.size());
    if (parent.column() != 0)
        return 0;
    const Node* node = nodeOf(parent);
    return node ? int(node->children.size()) : 0;
}

int TPropertyGridModel::columnCount(const QModelIndex& parent) const
{
    Q_UNUSED(parent);
    return 2;
}

QVariant TPropertyGridModel::data(const QModelIndex& index, int role) const
{
    const Node* node = nodeOf(index);
    if (node == nullptr)
        return {};
    if (index.column() == 0 || node->category) {
        if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
            return index.column() == 0 ? node->caption : QString();
        return {};
    }
    switch (role) {
    case Qt::DisplayRole: {
        const QVariant value = valueOf(node);
        return node->item ? node->item->displayText(value) : value.toString();
    }
    case Qt::EditRole:
    case ValueRole:
        return valueOf(node);
    default:
        return {};
    }
}

bool TPropertyGridModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || index.column() != 1)
        return false;
    Node* node = const_cast<Node*>(nodeOf(index));
    if (!isEditable(node))
        return false;
    QString error;
    if (writeValue(node, value, &error))
        return true;
    emit writeFailed(node->name, error);
    return false;
}

Qt::ItemFlags TPropertyGridModel::flags(const QModelIndex& index) const
{
    const Node* node = nodeOf(index);
    if (node == nullptr)
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == 1 && isEditable(node))
        result |= Qt::ItemIsEditable;
    if (!node->category)
        result |= Qt::ItemNeverHasChildren;
    return result;
}
