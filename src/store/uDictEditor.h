#pragma once

#include "uZTMessages.h"
#include "uZTSettings.h"

#include <QString>
#include <QStringList>

// Editing one simple dictionary: the state and rules of the dictionary dialog, without a screen.
// The dialog (TEditSimpleDictionaryForm) is a thin widget over TEditDictionaryController: it
// shows MemoLines() in its memo, hands the typed text back with SetMemoText() and calls
// ResetToDefault(), Ok() or Cancel() from its buttons.
class TEditDictionaryController
{
public:
    // The memo gets dict.Value; dict.Default is kept for a reset.
    void SetDictionary(const TDict& dict);
    // The field the list belongs to, shown under the description.
    void SetFieldName(const QString& name);

    QString FieldName() const { return m_fieldName; }
    QString Default() const { return m_default; }

    // The memo as lines. A line end at the very end of a text opens no further line.
    QStringList MemoLines() const { return m_lines; }
    void SetMemoLines(const QStringList& lines) { m_lines = lines; }
    // Takes the memo's text with any line ends.
    void SetMemoText(const QString& text);
    // The memo's text: every line followed by CR LF, the last one too.
    QString MemoText() const;

    // Asks cSEditDictDlgResetToDefaultsConf (confirmation, Yes and No, No the default). On Yes the
    // memo gets Default and true is returned. Nothing is stored here.
    bool ResetToDefault();

    // Deletes, from the last line to the first, every line that is empty after trimming blanks;
    // the others stay exactly as typed, in their order. The result becomes mrOk.
    void Ok();
    // The result becomes mrCancel; the memo is left as it is.
    void Cancel();

    TModalResult Result() const { return m_result; }

    // The dialog's texts from the language.
    static QString CaptionText();
    static QString ResetToDefaultsText();
    static QString DescText();
    static QString ResetToDefaultsConfText();

private:
    QStringList m_lines;
    QString m_default;
    QString m_fieldName;
    TModalResult m_result = mrNone;
};

// Runs the dictionary dialog modally over a filled controller and returns its result (mrOk or
// mrCancel). The user interface installs the one that shows TEditSimpleDictionaryForm; tests
// install one that types into the controller and presses a button.
class TEditDictionaryDialogRunner
{
public:
    virtual ~TEditDictionaryDialogRunner() = default;
    virtual int Run(TEditDictionaryController& controller) = 0;
};

// Installs the runner (not owned); nullptr removes it. Returns the one it replaces. Without a
// runner EditDictionary ends as cancelled.
TEditDictionaryDialogRunner* SetEditDictionaryDialogRunner(TEditDictionaryDialogRunner* runner);
TEditDictionaryDialogRunner* EditDictionaryDialogRunner();

// Runs the dialog for one dictionary. On OK the memo's text becomes dict.Value, its lines become
// comboItems, and SaveSettings() runs at once. Returns whether it ended with OK. Nothing else is
// touched: no item, no default value, no database.
bool EditDictionary(TDict& dict, const QString& fieldName, QStringList& comboItems);
