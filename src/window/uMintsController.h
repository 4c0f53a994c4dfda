#pragma once

#include <QList>
#include <QVariant>

class TDBDataset;

// What the mints window's logic needs of its window: the grid's selection and the record dialog.
class TMintsWindowSeam
{
public:
    virtual ~TMintsWindowSeam() = default;
    // The IDs of the selected rows of the grid.
    virtual QList<QVariant> SelectedMintKeys() = 0;
    // Shows the mint's record dialog modally on the current row of tblMints.
    virtual void ExecuteMintEditor() = 0;
};

// The logic of the mints window over tblMints: add (append, then the record dialog), edit, and
// remove of the selected rows after a question. Items are never touched: they keep their MintID,
// and a removed mint's number is never given again (the table counts on).
class TMintsController
{
public:
    TMintsController(TDBDataset& mints, TMintsWindowSeam* window) : m_mints(mints), m_window(window) {}

    TDBDataset& Mints() const { return m_mints; }

    static bool AddEnabled() { return true; }
    static bool EditEnabled() { return true; }
    static bool RemoveEnabled(int selectedCount) { return selectedCount > 0; }

    // actAdd: posts a pending edit, appends a row and runs Edit.
    void Add();
    // actEdit: the record dialog on the current row. A row the dialog left in edit or insert state
    // (it should not) is cancelled.
    void Edit();
    // actRemove: asks cSConfirmDelete (Yes, No; default No); on Yes deletes the selected rows. The
    // number of rows deleted.
    int Remove();

private:
    TDBDataset& m_mints;
    TMintsWindowSeam* m_window;
};
