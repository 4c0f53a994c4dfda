#include "uDatasetTableModel.h"

#include "uDBDataset.h"

using namespace Qt::StringLiterals;

TDatasetTableModel::TDatasetTableModel(TDBDataset* dataset, QObject* parent)
    : QAbstractTableModel(parent), m_dataset(dataset)
{
    if (!dataset)
        return;
    connect(dataset, &TDBDataset::beforeReset, this, &TDatasetTableModel::onBeforeReset);
    connect(dataset, &TDBDataset::afterReset, this, &TDatasetTableModel::onAfterReset);
    connect(dataset, &TDBDataset::beforeInsertRow, this,
            [this](int row) { beginInsertRows(QModelIndex(), row, row); });
    connect(dataset, &TDBDataset::afterInsertRow, this, [this](int) {
        ++m_rowCount;
        endInsertRows();
    });
    connect(dataset, &TDBDataset::beforeRemoveRow, this,
            [this](int row) { beginRemoveRows(QModelIndex(), row, row); });
    connect(dataset, &TDBDataset::afterRemoveRow, this, [this](int) {
        --m_rowCount;
        endRemoveRows();
    });
    connect(dataset, &TDBDataset::beforeMoveRow, this, [this](int from, int to) {
        // Qt counts the destination before the move.
        beginMoveRows(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
    });
    connect(dataset, &TDBDataset::afterMoveRow, this, [this](int, int) { endMoveRows(); });
    connect(dataset, &TDBDataset::rowChanged, this, [this](int row) {
        if (row >= 0 && row < m_rowCount && !m_columns.empty())
            emit dataChanged(index(row, 0), index(row, int(m_columns.size()) - 1));
    });
    connect(dataset, &QObject::destroyed, this, [this]() {
        beginResetModel();
        m_columns.clear();
        m_rowCount = 0;
        endResetModel();
    });
    rebuildColumns();
    m_rowCount = dataset->recordCount();
}

void TDatasetTableModel::setFieldNames(const QStringList& names)
{
    beginResetModel();
    m_fieldNames = names;
    rebuildColumns();
    endResetModel();
}

void TDatasetTableModel::rebuildColumns()
{
    m_columns.clear();
    if (!m_dataset)
        return;
    if (m_fieldNames.isEmpty()) {
        for (int i = 0; i < m_dataset->fieldCount(); ++i)
            if (m_dataset->field(i).visible())
                m_columns.push_back(i);
        return;
    }
    for (const QString& name : m_fieldNames)
        if (const TDBField* f = m_dataset->findField(name))
            m_columns.push_back(f->index());
}

void TDatasetTableModel::onBeforeReset()
{
    if (m_inReset)
        return;
    m_inReset = true;
    beginResetModel();
}

void TDatasetTableModel::onAfterReset()
{
    if (!m_inReset)
        beginResetModel();
    rebuildColumns();
    m_rowCount = m_dataset ? m_dataset->recordCount() : 0;
    m_inReset = false;
    endResetModel();
}

int TDatasetTableModel::fieldIndexOfColumn(int column) const
{
    return column >= 0 && std::size_t(column) < m_columns.size() ? m_columns[std::size_t(column)] : -1;
}

int TDatasetTableModel::columnOfField(const QString& fieldName) const
{
    if (!m_dataset)
        return -1;
    const TDBField* f = m_dataset->findField(fieldName);
    if (!f)
        return -1;
    for (std::size_t c = 0; c < m_columns.size(); ++c)
        if (m_columns[c] == f->index())
            return int(c);
    return -1;
}

int TDatasetTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rowCount;
}

int TDatasetTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_columns.size());
}

QVariant TDatasetTableModel::data(const QModelIndex& index, int role) const
{
    if (!m_dataset || !index.isValid() || index.row() >= m_rowCount || m_inReset)
        return QVariant();
    const int fieldIndex = fieldIndexOfColumn(index.column());
    if (fieldIndex < 0)
        return QVariant();
    const TDBField& f = m_dataset->field(fieldIndex);
    switch (role) {
    case Qt::DisplayRole:
        if (f.isBlob())
            return QVariant();
        return TDBField::valueText(m_dataset->valueAt(index.row(), fieldIndex), f.dataType());
    case Qt::EditRole:
    case ValueRole:
        return m_dataset->valueAt(index.row(), fieldIndex);
    case KeyRole:
        return m_dataset->keyAt(index.row());
    case Qt::TextAlignmentRole:
        if (f.isNumeric())
            return QVariant(int(Qt::AlignRight | Qt::AlignVCenter));
        return QVariant();
    default:
        return QVariant();
    }
}

QVariant TDatasetTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || !m_dataset || m_inReset)
        return QAbstractTableModel::headerData(section, orientation, role);
    const int fieldIndex = fieldIndexOfColumn(section);
    if (fieldIndex < 0)
        return QVariant();
    if (role == Qt::DisplayRole)
        return m_dataset->field(fieldIndex).displayLabel();
    if (role == FieldNameRole)
        return m_dataset->field(fieldIndex).fieldName();
    return QVariant();
}

Qt::ItemFlags TDatasetTableModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    const int fieldIndex = fieldIndexOfColumn(index.column());
    if (m_editable && m_dataset && fieldIndex >= 0 && m_dataset->canModify()) {
        const TDBField& f = m_dataset->field(fieldIndex);
        if (!f.readOnly() && f.kind() != TFieldKind::Computed && f.kind() != TFieldKind::Calculated)
            result |= Qt::ItemIsEditable;
    }
    return result;
}

bool TDatasetTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable))
        return false;
    if (m_dataset->recNo() != index.row() + 1)
        m_dataset->setRecNo(index.row() + 1);
    m_dataset->edit();
    m_dataset->field(fieldIndexOfColumn(index.column())).setValue(value);
    return true;
}
