#include "frmMints.h"

#include "dmImages.h"
#include "dmInternalData.h"
#include "dmStyles.h"
#include "frmEditMint.h"
#include "uDatasetTableModel.h"
#include "uEditDataController.h"
#include "uGrid.h"
#include "uGridColumn.h"
#include "uGridColumns.h"
#include "uGridTableView.h"
#include "uPictureEditorItem.h"
#include "uPropertyGrid.h"
#include "uRecordEditItems.h"
#include "uRibbon.h"
#include "uRibbonButton.h"
#include "uRibbonGroup.h"
#include "uRibbonPage.h"
#include "uRibbonStyle.h"
#include "uThemes.h"
#include "uZTStrings.h"

#include <QAction>
#include <QSplitter>
#include <QStyle>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

// The logo in the record panel: drawn, edited in the mint's dialog.
TPictureEditorItem& LogoItem()
{
    static TPictureEditorItem item;
    return item;
}

} // namespace

TMintsForm::TMintsForm(TDM_InternalData& data, QWidget* owner)
    : QDialog(owner), m_data(data), m_controller(*data.tblMints, this),
      m_items(std::make_unique<TRecordEditItems>()),
      m_model(std::make_unique<TDatasetTableModel>(data.tblMints)), m_actAdd(new QAction(this)),
      m_actEdit(new QAction(this)), m_actRemove(new QAction(this))
{
    setObjectName(u"MintsForm"_s);
    setModal(true);
    setSizeGripEnabled(true);
    m_model->setEditable(true);

    m_actAdd->setObjectName(u"actAdd"_s);
    m_actEdit->setObjectName(u"actEdit"_s);
    m_actRemove->setObjectName(u"actRemove"_s);
    m_actAdd->setIcon(style()->standardIcon(QStyle::SP_FileIcon));
    m_actEdit->setIcon(style()->standardIcon(QStyle::SP_FileDialogDetailedView));
    m_actRemove->setIcon(style()->standardIcon(QStyle::SP_TrashIcon));
    connect(m_actAdd, &QAction::triggered, this, [this] {
        m_controller.Add();
        ShowCurrentRow();
    });
    connect(m_actEdit, &QAction::triggered, this, [this] {
        m_controller.Edit();
        ShowCurrentRow();
    });
    connect(m_actRemove, &QAction::triggered, this, [this] {
        m_controller.Remove();
        ShowCurrentRow();
        UpdateActions();
    });

    CreateRibbon();
    CreateGrid();
    CreateRecordPanel();

    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setObjectName(u"Splitter"_s);
    splitter->addWidget(m_grid);
    splitter->addWidget(m_vg);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    splitter->setChildrenCollapsible(false);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_ribbon);
    layout->addWidget(splitter, 1);

    const TThemeLook& look = TDM_Styles::Current();
    m_ribbon->setRibbonStyle(RibbonStyleFromNumber(look.RibbonStyle));
    m_ribbon->setColoredTabRow(look.Row.Scheme == TColorScheme::Colorful);
    TranslateForm();
    ShowCurrentRow();
    UpdateActions();
    resize(980, 600);
}

TMintsForm::~TMintsForm() = default;

void TMintsForm::CreateRibbon()
{
    m_ribbon = new TRibbon(this);
    m_ribbon->setObjectName(u"Ribbon"_s);
    m_ribbon->setApplicationButtonVisible(false);
    TRibbonPage* general = m_ribbon->addTab(u"rtGeneral"_s, u"General"_s);
    TRibbonGroup* actions = general->addGroup(u"BarActions"_s, u"Actions"_s);
    actions->addButton(m_actAdd)->setObjectName(u"btnAdd"_s);
    actions->addButton(m_actEdit)->setObjectName(u"btnEdit"_s);
    actions->addButton(m_actRemove)->setObjectName(u"btnRemove"_s);
    m_ribbon->setCurrentTab(u"rtGeneral"_s);
}

void TMintsForm::CreateGrid()
{
    m_grid = new TGrid(this);
    m_grid->setObjectName(u"GridMints"_s);
    m_grid->setFieldNameRole(TDatasetTableModel::FieldNameRole);
    m_grid->setKeyRole(TDatasetTableModel::KeyRole);
    m_grid->setSourceModel(m_model.get());
    m_view = m_grid->addTableView(u"GridDBTableViewMints"_s);
    TGridColumn* name = m_view->addColumn(u"GridDBTableViewMintsName"_s, u"Name"_s);
    TGridColumn* country = m_view->addColumn(u"GridDBTableViewMintsCountry"_s, u"Country"_s);
    m_view->setEditorItem(country, m_items->Item(u"ImageComboBoxItemCountries"_s));
    m_view->addColumn(u"GridDBTableViewMintsURL"_s, u"URL"_s);
    TGridColumn* isPrivate = m_view->addColumn(u"GridDBTableViewMintsIsPrivate"_s, u"IsPrivate"_s);
    m_view->setEditorItem(isPrivate, m_items->Item(u"cbNotNull"_s));
    name->setSortOrder(TGridSortOrder::Ascending);
    m_view->setMultiSelect(true);
    m_grid->setActiveView(m_view);

    connect(m_grid, &TGrid::currentRowChanged, this, [this](int row) {
        TDBDataset& mints = *m_data.tblMints;
        if (row >= 0 && row != mints.recNo() - 1) {
            mints.setRecNo(row + 1);
        }
        m_vg->setCurrentRow(mints.isEmpty() ? -1 : mints.recNo() - 1);
    });
    connect(m_view, &TGridView::selectionChanged, this, &TMintsForm::UpdateActions);
    connect(m_view, &TGridView::doubleClicked, this, [this](const TGridHitInfo& hit) {
        if (hit.Kind == TGridHitKind::RecordCell && m_actEdit->isEnabled()) {
            m_actEdit->trigger();
        }
    });
}

void TMintsForm::CreateRecordPanel()
{
    m_vg = new TPropertyGrid(this);
    m_vg->setObjectName(u"VG"_s);
    m_vg->setFieldNameRole(TDatasetTableModel::FieldNameRole);
    m_vg->setValueRole(TDatasetTableModel::ValueRole);
    m_vg->addCategory(u"VGCategoryRowMint"_s, u"Mint"_s);
    m_vg->addRow(u"VGLogo"_s, u"Logo"_s, u"Logo"_s, &LogoItem(), u"VGCategoryRowMint"_s);
    m_vg->setRowLines(u"VGLogo"_s, 6);
    m_vg->setRowReadOnly(u"VGLogo"_s, true);
    m_vg->addRow(u"VGName"_s, u"Name"_s, u"Name"_s, m_items->Item(u"edText"_s), u"VGCategoryRowMint"_s);
    m_vg->addRow(u"VGCountry"_s, u"Country"_s, u"Country"_s, m_items->Item(u"ImageComboBoxItemCountries"_s),
                 u"VGCategoryRowMint"_s);
    m_vg->addRow(u"VGURL"_s, u"URL"_s, u"URL"_s, m_items->Item(u"HyperLink"_s), u"VGCategoryRowMint"_s);
    m_vg->addRow(u"VGIsPrivate"_s, u"IsPrivate"_s, u"IsPrivate"_s, m_items->Item(u"cbNotNull"_s),
                 u"VGCategoryRowMint"_s);
    m_vg->addCategory(u"VGCategoryRowDescription"_s, u"Description"_s);
    m_vg->addRow(u"VGDescription"_s, u"Description"_s, u"Description"_s, m_items->Item(u"Memo"_s),
                 u"VGCategoryRowDescription"_s);
    m_vg->setRowLines(u"VGDescription"_s, 6);
    m_vg->setCaptionWidth(110);
    m_vg->setSourceModel(m_model.get());
    // A change in the panel is written to the file at once.
    connect(m_vg, &TPropertyGrid::rowValueChanged, this, [this] {
        TDBDataset& mints = *m_data.tblMints;
        if (mints.state() == TDatasetState::Edit || mints.state() == TDatasetState::Insert) {
            mints.post();
        }
    });
}

void TMintsForm::ShowCurrentRow()
{
    const TDBDataset& mints = *m_data.tblMints;
    const int row = mints.active() && !mints.isEmpty() ? mints.recNo() - 1 : -1;
    m_grid->setCurrentRow(row);
    if (row >= 0) {
        m_view->scrollToSourceRow(row);
    }
    m_vg->setCurrentRow(row);
}

QAction* TMintsForm::Action(const QString& name) const
{
    for (QAction* action : {m_actAdd, m_actEdit, m_actRemove}) {
        if (action->objectName() == name) {
            return action;
        }
    }
    return nullptr;
}

QList<QVariant> TMintsForm::SelectedMintKeys()
{
    QList<QVariant> keys;
    const TDBDataset& mints = *m_data.tblMints;
    for (int row : m_view->selectedSourceRows()) {
        if (row >= 0 && row < mints.recordCount()) {
            keys << mints.keyAt(row);
        }
    }
    return keys;
}

void TMintsForm::ExecuteMintEditor()
{
    m_vg->finishEditing();
    TGridRowList rows(*m_view->model());
    TDatasetDataController controller(*m_data.tblMints, &rows);
    controller.SetOnRecordFocused([this](int record) { m_grid->setCurrentRow(record); });
    TEditMintForm editor(m_data, this);
    editor.SetDataController(&controller);
    editor.exec();
}

void TMintsForm::UpdateActions()
{
    m_actAdd->setEnabled(TMintsController::AddEnabled() && m_data.tblMints->active());
    m_actEdit->setEnabled(TMintsController::EditEnabled() && m_data.tblMints->active() &&
                          !m_data.tblMints->isEmpty());
    m_actRemove->setEnabled(TMintsController::RemoveEnabled(m_view->selectedCount()));
}

void TMintsForm::TranslateForm()
{
    setLayoutDirection(LanguageIsRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    setWindowTitle(TextOr(u"cSMainactEditMints"_s, u"Edit Mints"_s));
    m_ribbon->setApplicationName(windowTitle());
    m_ribbon->setTabCaption(u"rtGeneral"_s, TextOr(u"cSMainTSGeneral"_s, u"General"_s));
    if (TRibbonGroup* group = m_ribbon->tab(u"rtGeneral"_s)->group(u"BarActions"_s)) {
        group->setCaption(TextOr(u"cSRibbonEditDlgBarActions"_s, u"Actions"_s));
    }
    m_actAdd->setText(TextOr(u"cSMultiEditDlgAdd"_s, u"Add"_s));
    m_actEdit->setText(TextOr(u"cSRibbonEditDlgCaption"_s, u"Edit"_s));
    m_actRemove->setText(TextOr(u"cSMultiEditDlgRemove"_s, u"Remove"_s));
    m_view->setEmptyText(TextOr(u"cSNoDataToDisplay"_s, u"<No data to display>"_s));
    m_view->setGroupByText(
        TextOr(u"cSMainGroupByText"_s, u"Drag a column header here to group by that column"_s));
    const TDBDataset& mints = *m_data.tblMints;
    const auto label = [&mints](const QString& field) {
        const TDBField* f = mints.findField(field);
        return f ? f->displayLabel() : field;
    };
    for (TGridColumn* column : m_view->columns()->ordered()) {
        column->setCaption(label(column->fieldName()));
    }
    m_vg->setCategoryCaption(u"VGCategoryRowMint"_s, TextOr(u"cSF_Mint"_s, u"Mint"_s));
    m_vg->setCategoryCaption(u"VGCategoryRowDescription"_s, TextOr(u"cSF_Description"_s, u"Description"_s));
    for (const QString& row : m_vg->rowNames()) {
        m_vg->setRowCaption(row, label(row.mid(2)));
    }
}

void ShowMintsDialog(TDM_InternalData& data, QWidget* owner)
{
    if (!data.Connected()) {
        return;
    }
    data.PostPendingEdits({data.tblMints});
    {
        TMintsForm form(data, owner);
        form.exec();
    }
    // Items show their mint by ID: a renamed or removed mint shows so at once. Opened from the item
    // editor (a record being edited), the editor's own lookup follows and nothing is read.
    const TDatasetState state = data.qDS_Items->state();
    if (state == TDatasetState::Browse) {
        data.RefreshItems();
    }
}
