#include "uEditDataController.h"

#include "uDBDataset.h"
#include "uGridColumns.h"
#include "uGridModel.h"

// ---- Row lists --------------------------------------------------------------------------------------

int TDatasetRowList::RowCount() const
{
    return m_dataset.active() ? m_dataset.recordCount() : 0;
}

int TDatasetRowList::RecordOfRow(int row) const
{
    return row >= 0 && row < RowCount() ? row : -1;
}

int TDatasetRowList::RowOfRecord(int record) const
{
    return RecordOfRow(record);
}

int TGridRowList::RowCount() const
{
    return m_model.displayRowCount();
}

int TGridRowList::RecordOfRow(int row) const
{
    if (row < 0 || row >= RowCount()) {
        return -1;
    }
    const TGridRow shown = m_model.displayRow(row);
    return shown.Kind == TGridRowKind::Data ? shown.SourceRow : -1;
}

int TGridRowList::RowOfRecord(int record) const
{
    return record < 0 ? -1 : m_model.displayIndexOfSourceRow(record);
}

// ---- The dataset's controller ---------------------------------------------------------------------

TDatasetDataController::TDatasetDataController(TDBDataset& dataset, const TEditRowList* rows)
    : m_dataset(dataset), m_rows(rows), m_ownRows(dataset)
{}

bool TDatasetDataController::IsEditing() const
{
    const TDatasetState state = m_dataset.state();
    return state == TDatasetState::Edit || state == TDatasetState::Insert;
}

void TDatasetDataController::Post()
{
    if (IsEditing()) {
        m_dataset.post();
    }
}

void TDatasetDataController::Cancel()
{
    if (IsEditing()) {
        m_dataset.cancel();
    }
}

void TDatasetDataController::Append()
{
    m_otherRow = -1;
    m_dataset.append();
}

void TDatasetDataController::DeleteFocusedRecord()
{
    m_otherRow = -1;
    if (m_dataset.state() == TDatasetState::Insert) {
        // A record never posted is not in the file: dropping it is its deletion.
        m_dataset.cancel();
        return;
    }
    if (!m_dataset.isEmpty()) {
        m_dataset.deleteRecord();
    }
}

int TDatasetDataController::CurrentRecord() const
{
    return m_dataset.active() && !m_dataset.isEmpty() ? m_dataset.recNo() - 1 : -1;
}

int TDatasetDataController::RowCount() const
{
    return Rows().RowCount();
}

int TDatasetDataController::FocusedRowIndex() const
{
    const int record = CurrentRecord();
    if (m_otherRow >= 0 && m_otherRow < RowCount() && m_otherRowRecord == record &&
        Rows().RecordOfRow(m_otherRow) < 0) {
        return m_otherRow;
    }
    return Rows().RowOfRecord(record);
}

void TDatasetDataController::SetFocusedRowIndex(int row)
{
    if (row < 0 || row >= RowCount()) {
        return;
    }
    const int record = Rows().RecordOfRow(row);
    if (record < 0) {
        m_otherRow = row;
        m_otherRowRecord = CurrentRecord();
        return;
    }
    m_otherRow = -1;
    if (record != CurrentRecord()) {
        m_dataset.setRecNo(record + 1);
    }
    if (m_onRecordFocused) {
        m_onRecordFocused(record);
    }
}

int TDatasetDataController::FocusedRecordIndex() const
{
    return CurrentRecord();
}

int TDatasetDataController::FirstRecordRow() const
{
    const int count = RowCount();
    for (int row = 0; row < count; ++row) {
        if (Rows().RecordOfRow(row) >= 0) {
            return row;
        }
    }
    return -1;
}

int TDatasetDataController::LastRecordRow() const
{
    for (int row = RowCount() - 1; row >= 0; --row) {
        if (Rows().RecordOfRow(row) >= 0) {
            return row;
        }
    }
    return -1;
}
