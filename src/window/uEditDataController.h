#pragma once

#include <functional>

class TDBDataset;
class TGridModel;

// The rows of the view that opened a record editor, as that view shows them: data rows and the
// rows in between (group rows, group footers). Row numbers are the view's, records are the
// dataset's (0-based, as recNo() - 1).
class TEditRowList
{
public:
    virtual ~TEditRowList() = default;
    virtual int RowCount() const = 0;
    // The record shown by a row, or -1 for a row that shows no record (a group row).
    virtual int RecordOfRow(int row) const = 0;
    // The row that shows a record, or -1 when the view does not show it.
    virtual int RowOfRecord(int record) const = 0;
};

// The rows of a dataset in its own order: one row per record, no group rows.
class TDatasetRowList : public TEditRowList
{
public:
    explicit TDatasetRowList(const TDBDataset& dataset) : m_dataset(dataset) {}
    int RowCount() const override;
    int RecordOfRow(int row) const override;
    int RowOfRecord(int record) const override;

private:
    const TDBDataset& m_dataset;
};

// The rows of a grid view (group rows, data rows and group footers of expanded groups), over a
// model whose source rows are the dataset's records.
class TGridRowList : public TEditRowList
{
public:
    explicit TGridRowList(const TGridModel& model) : m_model(model) {}
    int RowCount() const override;
    int RecordOfRow(int row) const override;
    int RowOfRecord(int record) const override;

private:
    const TGridModel& m_model;
};

// What a record editor does to the data through the view that opened it: the edit state of the
// dataset, post, cancel, append and delete, and the focus over the view's rows.
class TEditDataController
{
public:
    virtual ~TEditDataController() = default;

    // Edit or insert state.
    virtual bool IsEditing() const = 0;
    virtual void Post() = 0;
    virtual void Cancel() = 0;
    virtual void Append() = 0;
    virtual void DeleteFocusedRecord() = 0;

    // The view's rows, group rows included.
    virtual int RowCount() const = 0;
    // The focused row, -1 when nothing is focused.
    virtual int FocusedRowIndex() const = 0;
    // Moves the focus to a row; a row that shows a record makes that record current.
    virtual void SetFocusedRowIndex(int row) = 0;
    // The record of the focus: a group row keeps the record focused before it.
    virtual int FocusedRecordIndex() const = 0;
    // The first and the last row that show a record; -1 when there is none.
    virtual int FirstRecordRow() const = 0;
    virtual int LastRecordRow() const = 0;
};

// The data controller of a dataset seen through a row list (by default the dataset's own order).
// The focus may rest on a row without a record; the record then stays the one focused before.
class TDatasetDataController : public TEditDataController
{
public:
    // rows may be nullptr: the dataset's own order. Neither is owned; both must outlive this.
    explicit TDatasetDataController(TDBDataset& dataset, const TEditRowList* rows = nullptr);

    TDBDataset& Dataset() const { return m_dataset; }
    // After the cursor moved to a record, so that a view can follow (the grid's current row).
    void SetOnRecordFocused(std::function<void(int record)> handler)
    {
        m_onRecordFocused = std::move(handler);
    }

    bool IsEditing() const override;
    void Post() override;
    void Cancel() override;
    void Append() override;
    void DeleteFocusedRecord() override;

    int RowCount() const override;
    int FocusedRowIndex() const override;
    void SetFocusedRowIndex(int row) override;
    int FocusedRecordIndex() const override;
    int FirstRecordRow() const override;
    int LastRecordRow() const override;

private:
    const TEditRowList& Rows() const { return m_rows ? *m_rows : m_ownRows; }
    int CurrentRecord() const;

    TDBDataset& m_dataset;
    const TEditRowList* m_rows;
    TDatasetRowList m_ownRows;
    // A focused row that shows no record, with the record that was current when it took the focus.
    int m_otherRow = -1;
    int m_otherRowRecord = -1;
    std::function<void(int)> m_onRecordFocused;
};
