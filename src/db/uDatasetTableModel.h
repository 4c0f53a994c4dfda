#pragma once

#include <QAbstractTableModel>
#include <QPointer>
#include <QStringList>

#include <vector>

class TDBDataset;

// A table model over a dataset: one row per record in the dataset's order (filter applied), one
// column per shown field. It follows the dataset's observer signals, so views stay in step with
// append, post, delete, refresh, filter and sort; batch work between disableControls() and
// enableControls() arrives as one reset.
// Roles: DisplayRole the field's text (nothing for blobs), EditRole and ValueRole the typed value
// (blobs are read by key on demand), KeyRole the record's key, FieldNameRole on the header.
class TDatasetTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Role
    {
        ValueRole = Qt::UserRole + 1,
        KeyRole,
        FieldNameRole
    };

    explicit TDatasetTableModel(TDBDataset* dataset, QObject* parent = nullptr);

    TDBDataset* dataset() const { return m_dataset; }
    // Fields shown as columns, in order; empty shows every visible field.
    void setFieldNames(const QStringList& names);
    QStringList fieldNames() const { return m_fieldNames; }
    // When editable, setData() moves the cursor to the row, puts the dataset in edit state and
    // sets the field; the edit is posted when the cursor moves or by an explicit post().
    void setEditable(bool value) { m_editable = value; }
    bool editable() const { return m_editable; }

    int fieldIndexOfColumn(int column) const;
    int columnOfField(const QString& fieldName) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

private:
    void rebuildColumns();
    void onBeforeReset();
    void onAfterReset();

    QPointer<TDBDataset> m_dataset;
    QStringList m_fieldNames;
    std::vector<int> m_columns; // field index per column
    int m_rowCount = 0;
    bool m_inReset = false;
    bool m_editable = false;
};
