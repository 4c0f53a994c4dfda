// The main window's part of the options dialog: the dialog on a page and the steps after it.

#include "frmMain.h"
#include "frmOptions.h"
#include "uCustomFields.h"
#include "uDatasetTableModel.h"
#include "uOptionsController.h"
#include "uZTSettings.h"

#include <QHeaderView>
#include <QTableView>

namespace {

// The window's steps around the dialog.
class TMainOptionsSteps : public TOptionsWindowSteps
{
public:
    explicit TMainOptionsSteps(TORVMainForm& window) : m_window(window) {}

    bool ExecuteOptionsDialog(TOptionsPage page) override { return TOptionsForm::Execute(&m_window, page); }
    void TranslateUI() override { m_window.TranslateUI(); }
    // The window keeps the platform's frame around the ribbon, whatever the setting says.
    void ApplyNonClientDrawing(bool) override {}
    void UpdateActiveViewData() override
    {
        if (QTableView* grid = m_window.GridView()) {
            grid->horizontalHeader()->viewport()->update();
            grid->viewport()->update();
        }
    }
    void ApplyTheme(int themeIndex, int accentIndex) override
    {
        m_window.ApplyTheme(themeIndex, accentIndex);
    }
    void ApplyCustomFields() override { m_window.ApplyCustomFields(); }

private:
    TORVMainForm& m_window;
};

} // namespace

bool TORVMainForm::OptionsExecute(TOptionsPage page)
{
    TMainOptionsSteps steps(*this);
    return RunOptionsDialog(steps, page);
}

void TORVMainForm::ApplyCustomFields()
{
    // The table shows a custom column only while custom fields are on and its own switch is on.
    if (!m_grid || !m_grid->model()) {
        return;
    }
    QAbstractItemModel* model = m_grid->model();
    for (int c = 0; c < model->columnCount(); ++c) {
        const QString field =
            model->headerData(c, Qt::Horizontal, TDatasetTableModel::FieldNameRole).toString();
        const int n = CustomFieldIndex(field);
        if (n >= 0) {
            m_grid->setColumnHidden(c, !(CustomFieldsEnabled && ORVCustomFields[std::size_t(n)].Enabled));
        }
    }
}
