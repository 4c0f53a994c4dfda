#pragma once

#include "frmRibbonDBEdit.h"

#include <memory>

class QLineEdit;
class TDM_InternalData;
class TFieldBinder;
class TPictureEdit;
class TRecordEditItems;

// The record dialog of one mint, on the current row of tblMints: the logo (200 by 200; a double
// click shows it at full size), the name, the country, the homepage (opened by the desktop), the
// private flag and the description. The window's document name follows the name as it is typed.
class TEditMintForm : public TAbstractRibbonDBEditForm
{
    Q_OBJECT

public:
    explicit TEditMintForm(TDM_InternalData& data, QWidget* owner = nullptr);
    ~TEditMintForm() override;

    void LoadRecord() override;
    void TranslateForm() override;
    void PostEditorValues() override;

    TFieldBinder& Binder() const { return *m_binder; }
    TPictureEdit* imgLogo() const { return m_logo; }
    QLineEdit* edtMintName() const { return m_name; }
    // Opens the homepage of the record with the desktop's open verb; false without one.
    bool OpenHomepage() const;

private:
    TDM_InternalData& m_data;
    std::unique_ptr<TRecordEditItems> m_items;
    TFieldBinder* m_binder;
    TPictureEdit* m_logo = nullptr;
    QLineEdit* m_name = nullptr;
};
