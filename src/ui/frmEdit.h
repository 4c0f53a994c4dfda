#pragma once

#include "frmRibbonDBEdit.h"

#include <QVariant>

#include <memory>

class QLabel;
class QSplitter;
class QTabWidget;
class TDM_InternalData;
class TDatasetTableModel;
class TFieldBinder;
class TPropertyGrid;
class TRecordEditItems;
class TEditorItem;

// The item editor: the current record of qDS_Items in a ribbon window. On the left the obverse and
// reverse pictures over each other, then the tabs lgTabs (general information, specification,
// purchase information, more photos, custom fields). The controls are bound to the fields of the
// record; saving is a post of the dataset, cancelling a cancel.
class TORVEditForm : public TAbstractRibbonDBEditForm
{
    Q_OBJECT

public:
    explicit TORVEditForm(TDM_InternalData& data, QWidget* owner = nullptr);
    ~TORVEditForm() override;

    // The document name := the Caption field; every control shows the record.
    void LoadRecord() override;
    // The custom-field rows and their tab.
    void SetupForm() override;
    void TranslateForm() override;
    void ApplyFormTheme() override;
    void PostEditorValues() override;

    TFieldBinder& Binder() const { return *m_binder; }
    QTabWidget* lgTabs() const { return m_tabs; }
    TPropertyGrid* vgCustomFields() const { return m_customFields; }
    QLabel* imgMint() const { return m_imgMint; }
    // The logo of a mint by its ID; cleared for null.
    void ShowMintLogo(const QVariant& mintId);

private:
    const TEditorItem* I(const QString& name) const;
    void CreateLayout();
    QWidget* CreateGeneralTab();
    QWidget* CreateSpecsTab();
    QWidget* CreatePurchasesTab();
    QWidget* CreateMorePicturesTab();
    QWidget* CreateCustomTab();
    void ReadRecordIntoCustomFields();

    TDM_InternalData& m_data;
    std::unique_ptr<TRecordEditItems> m_items;
    std::unique_ptr<TDatasetTableModel> m_itemsModel;
    std::unique_ptr<TDatasetTableModel> m_mintsModel;
    TFieldBinder* m_binder;
    QTabWidget* m_tabs = nullptr;
    QLabel* m_imgMint = nullptr;
    TPropertyGrid* m_customFields = nullptr;
};
