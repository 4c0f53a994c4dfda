#pragma once

#include "frmAbstractLayoutForm.h"
#include "uDictEditor.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;

// The dictionary dialog: a memo with one entry per line, the field it belongs to, and a reset to
// the delivered list. All rules are those of TEditDictionaryController; the form only shows its
// state and hands the typed text back.
class TEditSimpleDictionaryForm : public TAbstractLayoutForm
{
    Q_OBJECT

public:
    explicit TEditSimpleDictionaryForm(QWidget* owner = nullptr);

    // Memo := dict.Value; dict.Default is kept for btnResetToDefault.
    void SetDictionary(const TDict& dict);
    // liField := name.
    void SetFieldName(const QString& name);

    // Takes over the state of a filled controller, and gives back the state after the dialog.
    void SetController(const TEditDictionaryController& controller);
    TEditDictionaryController Controller() const;

    QPlainTextEdit* Memo() const { return m_memo; }
    QPushButton* btnResetToDefault() const { return m_btnResetToDefault; }
    QLabel* liDesc() const { return m_liDesc; }
    QLabel* liField() const { return m_liField; }

    void ApplyTexts() override;

    // btnOK: blank lines go, then the dialog ends with OK.
    void accept() override;
    void reject() override;

private:
    void ResetToDefaultClicked();
    // The controller's lines into the memo, and the memo's text into the controller.
    void ShowLines();
    void TakeMemo();

    TEditDictionaryController m_controller;
    QLabel* m_liDesc;
    QLabel* m_liField;
    QPlainTextEdit* m_memo;
    QPushButton* m_btnResetToDefault;
};

// Runs TEditSimpleDictionaryForm modally, owned by the active window (the window whose combo's
// button was pressed). TDataModuleImages installs one at start.
class TWidgetEditDictionaryDialogRunner : public TEditDictionaryDialogRunner
{
public:
    int Run(TEditDictionaryController& controller) override;
};
