#include "uRibbonDBEditController.h"

#include "uEditDataController.h"
#include "uZTMessages.h"
#include "uZTStrings.h"

using namespace Qt::StringLiterals;

namespace {

const std::array<TEditCommandInfo, cEditCommandCount> cEditCommands = {{
    {TEditCommand::SaveAndClose, u"actSaveAndClose", u"cSRibbonEditDlgactSaveAndClose", u"Save and close",
     u"Ctrl+S"},
    {TEditCommand::Cancel, u"actCancel", u"cSRibbonEditDlgactCancel", u"Cancel", u""},
    {TEditCommand::CancelQuiet, u"actCancelQuiet", nullptr, u"", u""},
    {TEditCommand::New, u"actNew", u"cSRibbonEditDlgactNew", u"New", u"Ctrl+N"},
    {TEditCommand::Del, u"actDel", u"cSRibbonEditDlgactDel", u"Delete", u"Ctrl+D"},
    {TEditCommand::Prev, u"actPrev", u"cSRibbonEditDlgactPrior", u"Prior", u"Ctrl+Alt+P"},
    {TEditCommand::Next, u"actNext", u"cSRibbonEditDlgactNext", u"Next", u"Ctrl+Alt+N"},
    {TEditCommand::First, u"actFirst", u"cSRibbonEditDlgactFirst", u"First", u""},
    {TEditCommand::Last, u"actLast", u"cSRibbonEditDlgactLast", u"Last", u""},
}};

bool Confirm(const char16_t* key)
{
    return MessageDlgZT(GetText(QString::fromUtf16(key)), mtConfirmation, TMsgDlgButtons(mbYes) | mbNo,
                        mbNo) == mrYes;
}

} // namespace

const std::array<TEditCommandInfo, cEditCommandCount>& EditCommands()
{
    return cEditCommands;
}

const TEditCommandInfo& EditCommandInfo(TEditCommand command)
{
    return cEditCommands[size_t(command)];
}

QKeySequence EditCommandShortcut(TEditCommand command)
{
    return QKeySequence(QString::fromUtf16(EditCommandInfo(command).Shortcut), QKeySequence::PortableText);
}

// ---- Virtual operations ------------------------------------------------------------------------------

bool TRibbonDBEditController::IsDirty() const
{
    return m_dataController && m_dataController->IsEditing();
}

void TRibbonDBEditController::SaveChanges()
{
    if (m_dataController) {
        m_dataController->Post();
    }
}

void TRibbonDBEditController::CancelChanges()
{
    if (m_dataController) {
        m_dataController->Cancel();
    }
}

// ---- Commands --------------------------------------------------------------------------------------

bool TRibbonDBEditController::OnFirstRow() const
{
    return m_dataController->FocusedRowIndex() <= 0;
}

bool TRibbonDBEditController::OnLastRow() const
{
    const int focused = m_dataController->FocusedRowIndex();
    return focused < 0 || focused >= m_dataController->RowCount() - 1;
}

std::optional<bool> TRibbonDBEditController::CommandEnabled(TEditCommand command) const
{
    switch (command) {
    case TEditCommand::SaveAndClose:
    case TEditCommand::Cancel:
        return IsDirty();
    case TEditCommand::CancelQuiet:
    case TEditCommand::New:
    case TEditCommand::Del:
        return true;
    case TEditCommand::Prev:
    case TEditCommand::First:
        if (!m_dataController) {
            return std::nullopt;
        }
        return !OnFirstRow();
    case TEditCommand::Next:
    case TEditCommand::Last:
        if (!m_dataController) {
            return std::nullopt;
        }
        return !OnLastRow();
    }
    return false;
}

bool TRibbonDBEditController::Execute(TEditCommand command)
{
    if (!m_dataController || !CommandEnabled(command).value_or(false)) {
        return false;
    }
    switch (command) {
    case TEditCommand::SaveAndClose:
        SaveAndClose();
        break;
    case TEditCommand::Cancel:
        if (Confirm(u"cSRibbonEditDlgConfirmCancelChanges")) {
            CancelQuiet();
        }
        break;
    case TEditCommand::CancelQuiet:
        CancelQuiet();
        break;
    case TEditCommand::New:
        if (AskToSave()) {
            m_dataController->Append();
            Load();
        }
        break;
    case TEditCommand::Del:
        if (Confirm(u"cSRibbonEditDlgConfirmDeleteItem")) {
            m_dataController->DeleteFocusedRecord();
            Close(TEditCloseResult::Ok);
        }
        break;
    case TEditCommand::Prev:
    case TEditCommand::Next:
        if (AskToSave()) {
            MoveToRecord(command == TEditCommand::Next);
            Load();
        }
        break;
    case TEditCommand::First:
    case TEditCommand::Last: {
        // No question here: a pending change goes as the dataset treats it on a move.
        const int row = command == TEditCommand::First ? m_dataController->FirstRecordRow()
                                                       : m_dataController->LastRecordRow();
        m_dataController->SetFocusedRowIndex(row);
        Load();
        break;
    }
    }
    return true;
}

void TRibbonDBEditController::SaveAndClose()
{
    if (IsDirty()) {
        SaveChanges();
    }
    Close(TEditCloseResult::Ok);
}

void TRibbonDBEditController::CancelQuiet()
{
    CancelChanges();
    Close(TEditCloseResult::Cancel);
}

void TRibbonDBEditController::Load()
{
    if (m_host) {
        m_host->LoadRecord();
    }
}

void TRibbonDBEditController::Close(TEditCloseResult result)
{
    if (m_host) {
        m_host->CloseWithResult(result);
    }
}

// ---- Questions and the walk -------------------------------------------------------------------------

bool TRibbonDBEditController::AskToSave()
{
    if (!IsDirty()) {
        return true;
    }
    const int answer = MessageDlgZT(GetText(u"cSRibbonEditDlgConfirmSaveChanges"_s), mtConfirmation,
                                    TMsgDlgButtons(mbYes) | mbNo | mbCancel, mbYes);
    if (answer == mrYes) {
        SaveChanges();
        return true;
    }
    if (answer == mrNo) {
        CancelChanges();
        return true;
    }
    return false;
}

std::optional<TEditCloseResult> TRibbonDBEditController::CloseQuery()
{
    if (!IsDirty()) {
        return TEditCloseResult::Cancel;
    }
    const int answer = MessageDlgZT(GetText(u"cSRibbonEditDlgConfirmSaveChanges"_s), mtConfirmation,
                                    TMsgDlgButtons(mbYes) | mbNo | mbCancel, mbYes);
    if (answer == mrYes) {
        // A refused post raises here: the window stays open with the record in edit.
        SaveChanges();
        return TEditCloseResult::Ok;
    }
    if (answer == mrNo) {
        CancelChanges();
        return TEditCloseResult::Cancel;
    }
    return std::nullopt;
}

bool TRibbonDBEditController::MoveToRecord(bool forward)
{
    if (!m_dataController) {
        return false;
    }
    TEditDataController& data = *m_dataController;
    const int startRow = data.FocusedRowIndex();
    const int record = data.FocusedRecordIndex();
    const int step = forward ? 1 : -1;
    int row = startRow;
    for (;;) {
        if (forward ? row >= data.RowCount() - 1 : row <= 0) {
            break;
        }
        row += step;
        data.SetFocusedRowIndex(row);
        if (data.FocusedRecordIndex() != record) {
            return true;
        }
    }
    // Nothing but rows without a record on this side: the focus goes back to the record.
    if (startRow >= 0 && data.FocusedRowIndex() != startRow) {
        data.SetFocusedRowIndex(startRow);
    }
    return false;
}
