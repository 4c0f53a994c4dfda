#pragma once

#include "frmAbstractLayoutForm.h"
#include "uSortController.h"

#include <QHash>
#include <QList>

#include <functional>

class QAction;
class QToolButton;
class QTreeWidget;
class TGridView;

// The sort dialog: the levels of a view's sort order in the list TLSort, each a column picked by its
// caption and a direction, with commands to add, delete and move levels. Its rules live in
// TSortController.
class TSortForm : public TAbstractLayoutForm
{
    Q_OBJECT

public:
    explicit TSortForm(QWidget* owner = nullptr);

    // The one way in: the levels from the first of views, the dialog modally, and after OK the levels
    // to each view. A view that is no table-like view is passed over. True after OK.
    static bool Execute(const QList<TGridView*>& views, QWidget* owner = nullptr);
    // Replaces exec() in Execute, so that tests can answer the dialog; an empty function restores it.
    static void SetExecHook(std::function<int(TSortForm&)> hook);

    TSortController& Controller() { return m_controller; }
    // Reads a view through its shown captions and its editors' picture flags.
    void LoadFromView(TGridView* view);
    void ApplySort(TGridView* view) const;

    QTreeWidget* TLSort() const { return m_TLSort; }
    QAction* Action(const QString& name) const { return m_actions.value(name); }

    void ApplyTexts() override;
    void accept() override;

private:
    // The list from the controller's levels, focus and selection.
    void ShowLevels();
    void UpdateActions();
    void Run(void (TSortController::*command)());

    TSortController m_controller;
    QTreeWidget* m_TLSort;
    QHash<QString, QAction*> m_actions;
    QList<QToolButton*> m_buttons;
    bool m_showing = false;
};
