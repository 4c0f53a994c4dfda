// The main window's part of the options dialog: the dialog on a page and the steps after it.

#include "frmMain.h"
#include "frmOptions.h"
#include "uCollectionPane.h"
#include "uOptionsController.h"
#include "uZTSettings.h"

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
        // Currency and formats may have changed: the active view paints its values again.
        if (TCollectionPane* views = m_window.Views()) {
            if (QWidget* view = views->View(views->ActiveView())) {
                view->update();
            }
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
    // The views show a custom column only while custom fields are on and its own switch is on.
    if (m_views) {
        m_views->ApplyCustomFields();
    }
}
