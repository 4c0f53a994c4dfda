#pragma once

#include "uRibbonDBEditController.h"

#include <QDialog>
#include <QHash>

#include <memory>

class QAction;
class QLabel;
class QStatusBar;
class QVBoxLayout;
class TEditDataController;
class TRibbon;

// The record editor's window: a modal dialog with a small ribbon (tab rtGeneral with the groups
// BarActions and BarNextPrev, the quick-access bar BarMainMenu) that walks the records of the view
// that opened it and edits the one under the cursor. The commands, their enablement and the
// questions are TRibbonDBEditController's; this window presents them.
//
// Descendants put their controls into lgContainer() and override the virtual operations. The
// caller sets the data controller after creation and before showing. Prepare() runs SetupForm,
// ApplyFormTheme and TranslateForm once; it runs by itself before the first show.
class TAbstractRibbonDBEditForm : public QDialog, public TRibbonDBEditHost
{
    Q_OBJECT

public:
    explicit TAbstractRibbonDBEditForm(QWidget* owner = nullptr);
    ~TAbstractRibbonDBEditForm() override;

    TEditDataController* DataController() const;
    void SetDataController(TEditDataController* controller);
    TRibbonDBEditController& Controller() const { return *m_controller; }

    // The virtual operations of the record editor. IsDirty, SaveChanges and CancelChanges are the
    // controller's (a descendant with its own gives it to SetController).
    bool IsDirty() const { return m_controller->IsDirty(); }
    void SaveChanges() { m_controller->SaveChanges(); }
    void CancelChanges() { m_controller->CancelChanges(); }
    void LoadRecord() override {}
    virtual void SetupForm() {}
    virtual void TearDownForm() {}
    // Right-to-left from the language, the ribbon's and the commands' texts.
    virtual void TranslateForm();
    // The window's look: the theme's window colour and ribbon style.
    virtual void ApplyFormTheme();
    // Writes what an editor holds but has not yet given to its field (its entry still open): runs
    // before every command and the close query.
    virtual void PostEditorValues() {}

    // SetupForm, ApplyFormTheme, TranslateForm, once.
    void Prepare();

    QAction* Action(TEditCommand command) const;
    QAction* Action(const QString& name) const;
    TRibbon* Ribbon() const { return m_ribbon; }
    QWidget* lgContainer() const { return m_container; }
    QStatusBar* StatusBar() const { return m_statusBar; }
    // The free text panel of the status bar.
    QLabel* StatusText() const { return m_statusText; }

    // The enablement rule applied to the actions; runs whenever the event loop goes idle.
    void UpdateActions();

    // The window's document name in the ribbon's title (and the window title).
    void SetDocumentName(const QString& name);

    void CloseWithResult(TEditCloseResult result) override;
    // Escape and the window's close button: the close query.
    void reject() override;
    void setVisible(bool visible) override;

protected:
    // For descendants with a controller of their own; the old one goes.
    void SetController(std::unique_ptr<TRibbonDBEditController> controller);
    void showEvent(QShowEvent* event) override;
    bool event(QEvent* event) override;

private:
    void CreateActions();
    void CreateRibbon();
    void UpdateKeyboardState();

    std::unique_ptr<TRibbonDBEditController> m_controller;
    QHash<int, QAction*> m_actions;
    TRibbon* m_ribbon = nullptr;
    QWidget* m_container = nullptr;
    QStatusBar* m_statusBar = nullptr;
    QLabel* m_statusText = nullptr;
    QLabel* m_keyboardState = nullptr;
    bool m_prepared = false;
    bool m_closing = false;
};
