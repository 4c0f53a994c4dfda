#pragma once

#include "uMintsController.h"

#include <QDialog>

#include <memory>

class QAction;
class TDM_InternalData;
class TDatasetTableModel;
class TGrid;
class TGridTableView;
class TPropertyGrid;
class TRecordEditItems;
class TRibbon;

// The mints of the collection: a ribbon with add, edit and remove, the read-only grid
// GridDBTableViewMints sorted by name with multi-row selection, and behind a splitter the record
// panel VG on the current row, whose changes are posted at once. Everything works on tblMints.
class TMintsForm : public QDialog, public TMintsWindowSeam
{
    Q_OBJECT

public:
    explicit TMintsForm(TDM_InternalData& data, QWidget* owner = nullptr);
    ~TMintsForm() override;

    TMintsController& Controller() { return m_controller; }
    QAction* Action(const QString& name) const;
    TGridTableView* GridDBTableViewMints() const { return m_view; }
    TPropertyGrid* VG() const { return m_vg; }
    TRibbon* Ribbon() const { return m_ribbon; }

    QList<QVariant> SelectedMintKeys() override;
    void ExecuteMintEditor() override;
    // The enablement rule.
    void UpdateActions();
    void TranslateForm();

private:
    void CreateRibbon();
    void CreateGrid();
    void CreateRecordPanel();
    void ShowCurrentRow();

    TDM_InternalData& m_data;
    TMintsController m_controller;
    std::unique_ptr<TRecordEditItems> m_items;
    std::unique_ptr<TDatasetTableModel> m_model;
    TRibbon* m_ribbon = nullptr;
    TGrid* m_grid = nullptr;
    TGridTableView* m_view = nullptr;
    TPropertyGrid* m_vg = nullptr;
    QAction* m_actAdd;
    QAction* m_actEdit;
    QAction* m_actRemove;
};

// Shows the mints window modally, then reads the items again so that their mint names follow.
void ShowMintsDialog(TDM_InternalData& data, QWidget* owner);
