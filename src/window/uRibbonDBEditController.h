#pragma once

#include <QKeySequence>
#include <QString>

#include <optional>

#include <array>

class TEditDataController;

// The commands of a record editor, in the order of its ribbon.
enum class TEditCommand
{
    SaveAndClose,
    Cancel,
    CancelQuiet, // no button: what Cancel and the close query run
    New,
    Del,
    Prev,
    Next,
    First,
    Last
};

struct TEditCommandInfo
{
    TEditCommand Command;
    const char16_t* Name;     // the action's object name
    const char16_t* TextKey;  // language key of its text; nullptr for none
    const char16_t* English;  // the text before a language is applied
    const char16_t* Shortcut; // portable text; empty for none
};

inline constexpr int cEditCommandCount = 9;
// Every command with its name, text and shortcut.
const std::array<TEditCommandInfo, cEditCommandCount>& EditCommands();
const TEditCommandInfo& EditCommandInfo(TEditCommand command);
QKeySequence EditCommandShortcut(TEditCommand command);

// How a record editor closes.
enum class TEditCloseResult
{
    Ok,
    Cancel
};

// What the editor's logic needs of its window.
class TRibbonDBEditHost
{
public:
    virtual ~TRibbonDBEditHost() = default;
    // Shows the current record (the descendant's LoadRecord).
    virtual void LoadRecord() = 0;
    // Closes the window with a result; the close query is not asked again.
    virtual void CloseWithResult(TEditCloseResult result) = 0;
};

// The logic of the record editor: the commands with their enablement, the questions about unsaved
// changes and the walk over the view's rows. It holds no record of its own: everything goes through
// the data controller of the view that opened the editor, and without one every command does
// nothing. Questions go through MessageDlgZT.
class TRibbonDBEditController
{
public:
    explicit TRibbonDBEditController(TRibbonDBEditHost* host = nullptr) : m_host(host) {}
    virtual ~TRibbonDBEditController() = default;

    void SetHost(TRibbonDBEditHost* host) { m_host = host; }
    TEditDataController* DataController() const { return m_dataController; }
    // Set by the caller after creation and before showing; not owned.
    void SetDataController(TEditDataController* controller) { m_dataController = controller; }

    // The record is being edited or inserted; false without a data controller.
    virtual bool IsDirty() const;
    // Post and cancel through the data controller, if there is one.
    virtual void SaveChanges();
    virtual void CancelChanges();

    // The enablement rule of a command; no side effect.
    // Without a data controller the four moves keep their state (nullopt).
    std::optional<bool> CommandEnabled(TEditCommand command) const;
    // Runs a command as its button does: a disabled one does nothing. True when it ran.
    bool Execute(TEditCommand command);

    // No pending change: true at once. Otherwise asks "Do you want to save changes?" (Yes, No,
    // Cancel; default Yes): Yes saves, No cancels, and both go on (true); Cancel stops (false).
    bool AskToSave();
    // When the window is closed by other means: the result it closes with, nullopt when it may not
    // close. A clean record closes with Cancel. A dirty one asks as AskToSave does: Yes saves and
    // closes with Ok (as SaveAndClose), No cancels and closes with Cancel (as CancelQuiet), Cancel
    // refuses. A refused post raises, and the window stays open.
    std::optional<TEditCloseResult> CloseQuery();
    // Walks the view's rows from the focused one, passing rows without a record, until the focused
    // record changes or the rows end. A walk that finds no other record leaves the focus where it
    // was. True when the record changed.
    bool MoveToRecord(bool forward);

private:
    bool OnFirstRow() const;
    bool OnLastRow() const;
    void Load();
    void Close(TEditCloseResult result);
    void SaveAndClose();
    void CancelQuiet();

    TRibbonDBEditHost* m_host;
    TEditDataController* m_dataController = nullptr;
};
