#include "uMintsController.h"

#include "uDBDataset.h"
#include "uZTMessages.h"
#include "uZTStrings.h"

using namespace Qt::StringLiterals;

void TMintsController::Add()
{
    if (!m_mints.active()) {
        return;
    }
    m_mints.checkBrowseMode();
    m_mints.append();
    Edit();
}

void TMintsController::Edit()
{
    if (!m_mints.active() || !m_window) {
        return;
    }
    if (m_mints.isEmpty() && m_mints.state() != TDatasetState::Insert) {
        return;
    }
    m_window->ExecuteMintEditor();
    if (m_mints.state() == TDatasetState::Edit || m_mints.state() == TDatasetState::Insert) {
        m_mints.cancel();
    }
}

int TMintsController::Remove()
{
    if (!m_window || !m_mints.active()) {
        return 0;
    }
    const QList<QVariant> keys = m_window->SelectedMintKeys();
    if (keys.isEmpty()) {
        return 0;
    }
    if (MessageDlgZT(GetText(u"cSConfirmDelete"_s), mtConfirmation, TMsgDlgButtons(mbYes) | mbNo, mbNo) !=
        mrYes) {
        return 0;
    }
    m_mints.checkBrowseMode();
    int deleted = 0;
    const TDisableControlsScope quiet(m_mints);
    for (const QVariant& key : keys) {
        if (m_mints.locate(u"ID"_s, key)) {
            m_mints.deleteRecord();
            ++deleted;
        }
    }
    return deleted;
}
