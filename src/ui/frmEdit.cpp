#include "frmEdit.h"

#include "dmImages.h"
#include "dmInternalData.h"
#include "uChoiceEditorItems.h"
#include "uCustomFields.h"
#include "uDatasetTableModel.h"
#include "uFieldBinder.h"
#include "uItemTexts.h"
#include "uNumberEdit.h"
#include "uNumberEditorItems.h"
#include "uPictureEdit.h"
#include "uPropertyGrid.h"
#include "uRecordEditItems.h"
#include "uTextEditorItems.h"
#include "uValuation.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QAction>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>

#include <map>

using namespace Qt::StringLiterals;

namespace {

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

// The prompt of an empty expected premium: fixed, not a language text.
const QString cExpectedPremiumPrompt = u"Best guess (can be negative amount)"_s;

// The rows of the custom-field grid, for the custom-field rule.
class TEditorCustomRows : public TCustomFieldRows
{
public:
    TEditorCustomRows(TPropertyGrid& grid, QTabWidget& tabs, QWidget& tab,
                      std::function<const TEditorItem*(const QString&)> items)
        : m_grid(grid), m_tabs(tabs), m_tab(tab), m_items(std::move(items))
    {}
    static QString RowName(const QString& fieldName) { return u"vgCustomFieldsCustom"_s + fieldName.mid(6); }
    bool HasRow(const QString& fieldName) const override { return m_grid.hasRow(RowName(fieldName)); }
    void SetRowVisible(const QString& fieldName, bool visible) override
    {
        m_grid.setRowVisible(RowName(fieldName), visible);
    }
    void SetRowCaption(const QString& fieldName, const QString& caption) override
    {
        m_grid.setRowCaption(RowName(fieldName), caption);
    }
    void SetRowEditor(const QString& fieldName, const QString& editor) override
    {
        m_grid.setRowEditor(RowName(fieldName), m_items(editor));
    }
    void SetGroupVisible(bool visible) override { m_tabs.setTabVisible(m_tabs.indexOf(&m_tab), visible); }

private:
    TPropertyGrid& m_grid;
    QTabWidget& m_tabs;
    QWidget& m_tab;
    std::function<const TEditorItem*(const QString&)> m_items;
};

} // namespace

TORVEditForm::TORVEditForm(TDM_InternalData& data, QWidget* owner)
    : TAbstractRibbonDBEditForm(owner), m_data(data), m_items(std::make_unique<TRecordEditItems>()),
      m_binder(new TFieldBinder(*data.qDS_Items, this))
{
    setObjectName(u"ORVEditForm"_s);
    m_mintsModel = std::make_unique<TDatasetTableModel>(data.tblMints);
    m_mintsModel->setFieldNames({u"ID"_s, u"Name"_s});
    m_items->SetMintsModel(m_mintsModel.get(), 0, 1);
    CreateLayout();
    connect(m_binder, &TFieldBinder::FieldEdited, this, [this](const QString& field, const QVariant& value) {
        if (field == u"MintID"_s) {
            ShowMintLogo(value);
        }
    });
}

TORVEditForm::~TORVEditForm()
{
    TearDownForm();
}

const TEditorItem* TORVEditForm::I(const QString& name) const
{
    return m_items->Item(name);
}

// ---- Layout ------------------------------------------------------------------------------------------

namespace {

// A grid of labelled rows: label in column 0 (or 2 for the second column), editor beside it.
class TRows
{
public:
    TRows(QWidget* page, TFieldBinder& binder) : m_page(page), m_binder(binder), m_grid(new QGridLayout)
    {
        m_grid->setColumnStretch(1, 1);
        m_grid->setColumnStretch(3, 1);
        m_grid->setHorizontalSpacing(8);
    }
    QGridLayout* Grid() const { return m_grid; }
    // A row for field at (row, column pair); the editor spans span column pairs.
    QWidget* Add(const QString& editorName, const TEditorItem* item, const QString& field, int row,
                 int pair = 0, int span = 1)
    {
        auto* label = new QLabel(field, m_page);
        label->setObjectName(u"lbl"_s + field);
        QWidget* editor = m_binder.Bind(item, field, m_page, label);
        editor->setObjectName(editorName);
        const bool tall = editor->inherits("QAbstractScrollArea");
        m_grid->addWidget(label, row, pair * 2, Qt::AlignLeading | (tall ? Qt::AlignTop : Qt::AlignVCenter));
        m_grid->addWidget(editor, row, pair * 2 + 1, 1, span * 2 - 1);
        return editor;
    }

private:
    QWidget* m_page;
    TFieldBinder& m_binder;
    QGridLayout* m_grid;
};

QSplitter* PictureSplitter(Qt::Orientation orientation, QWidget* first, QWidget* second, const QString& name)
{
    auto* splitter = new QSplitter(orientation);
    splitter->setObjectName(name);
    splitter->addWidget(first);
    splitter->addWidget(second);
    splitter->setChildrenCollapsible(false);
    return splitter;
}

} // namespace

void TORVEditForm::CreateLayout()
{
    auto* pictures = new QWidget;
    pictures->setObjectName(u"lgPictures"_s);
    QWidget* front = m_binder->Bind(I(u"ImageCoinEdit"_s), u"PhotoFront"_s, pictures);
    QWidget* back = m_binder->Bind(I(u"ImageCoinEdit"_s), u"PhotoBack"_s, pictures);
    front->setObjectName(u"imgObverse"_s);
    back->setObjectName(u"imgReverse"_s);
    auto* picturesLayout = new QVBoxLayout(pictures);
    picturesLayout->setContentsMargins(0, 0, 0, 0);
    picturesLayout->addWidget(PictureSplitter(Qt::Vertical, front, back, u"splPictures"_s));

    m_tabs = new QTabWidget;
    m_tabs->setObjectName(u"lgTabs"_s);
    m_tabs->addTab(CreateGeneralTab(), u"General information"_s);
    m_tabs->addTab(CreateSpecsTab(), u"Specification"_s);
    m_tabs->addTab(CreatePurchasesTab(), u"Purchase information"_s);
    m_tabs->addTab(CreateMorePicturesTab(), u"More photos"_s);
    m_tabs->addTab(CreateCustomTab(), u"Custom"_s);

    auto* splitter = PictureSplitter(Qt::Horizontal, pictures, m_tabs, u"splMain"_s);
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 5);
    splitter->setSizes({220, 560});
    auto* layout = new QVBoxLayout(lgContainer());
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(splitter);
    resize(960, 640);
}

QWidget* TORVEditForm::CreateGeneralTab()
{
    auto* page = new QWidget;
    page->setObjectName(u"tsGeneralInfo"_s);
    TRows rows(page, *m_binder);
    rows.Add(u"edtName"_s, I(u"edText"_s), u"Name"_s, 0);
    rows.Add(u"cbMint"_s, I(u"lcbMints"_s), u"MintID"_s, 1);
    rows.Add(u"cbMetal"_s, I(u"cbMetalTypes"_s), u"Metal"_s, 2);
    rows.Add(u"cxDBImageComboBox1"_s, I(u"cbCoinTypes"_s), u"CoinType"_s, 3);
    rows.Add(u"cbCountry"_s, I(u"ImageComboBoxItemCountries"_s), u"Country"_s, 4);
    rows.Add(u"edtYear"_s, I(u"seYear"_s), u"Year"_s, 5);
    // The mint's logo stands beside the first five rows.
    m_imgMint = new QLabel(page);
    m_imgMint->setObjectName(u"imgMint"_s);
    m_imgMint->setAlignment(Qt::AlignCenter);
    m_imgMint->setMinimumSize(120, 120);
    rows.Grid()->addWidget(m_imgMint, 0, 2, 5, 2);
    rows.Add(u"seWeight"_s, I(u"seWeightOz"_s), u"WeightOz"_s, 6);
    rows.Add(u"seWeightG"_s, I(u"seWeightG"_s), u"WeightGram"_s, 6, 1);
    rows.Add(u"cxDBComboBox2"_s, I(u"cbPurity"_s), u"Purity"_s, 7);
    rows.Add(u"cxDBTextEdit1"_s, I(u"edText"_s), u"Series"_s, 8, 0, 2);
    rows.Add(u"cxDBMemo1"_s, I(u"Memo"_s), u"Description"_s, 9, 0, 2);
    rows.Grid()->setRowStretch(9, 1);
    page->setLayout(rows.Grid());
    return page;
}

QWidget* TORVEditForm::CreateSpecsTab()
{
    auto* page = new QWidget;
    page->setObjectName(u"tsSpecs"_s);
    TRows rows(page, *m_binder);
    rows.Add(u"edMintage"_s, I(u"seMintage"_s), u"Mintage"_s, 0);
    rows.Add(u"edFaceValue"_s, I(u"edCurrency"_s), u"FaceValue"_s, 1);
    rows.Add(u"edFaceValueCurrency"_s, I(u"edText"_s), u"FaceValueCurrency"_s, 2);
    rows.Add(u"seDiameter"_s, I(u"seMM"_s), u"Diameter"_s, 3);
    rows.Add(u"seThickness"_s, I(u"seMM"_s), u"Thickness"_s, 4);
    rows.Add(u"cbEdge"_s, I(u"cbEdge"_s), u"Edge"_s, 1, 1);
    rows.Add(u"edArtist"_s, I(u"edText"_s), u"Artist"_s, 2, 1);
    rows.Add(u"seWidth"_s, I(u"seMM"_s), u"Width"_s, 3, 1);
    rows.Add(u"seHeight"_s, I(u"seMM"_s), u"Height"_s, 4, 1);
    rows.Add(u"memObverseDesc"_s, I(u"Memo"_s), u"ObverseDesc"_s, 5, 0, 2);
    rows.Add(u"memReverseDesc"_s, I(u"Memo"_s), u"ReverseDesc"_s, 6, 0, 2);
    rows.Add(u"cbMintMark"_s, I(u"cbNotNull"_s), u"MintMark"_s, 7);
    rows.Add(u"cbRare"_s, I(u"cbNotNull"_s), u"Rare"_s, 7, 1);
    rows.Grid()->setRowStretch(5, 1);
    rows.Grid()->setRowStretch(6, 1);
    page->setLayout(rows.Grid());
    return page;
}

QWidget* TORVEditForm::CreatePurchasesTab()
{
    auto* page = new QWidget;
    page->setObjectName(u"tsPurchases"_s);
    auto* purchase = new QGroupBox(page);
    purchase->setObjectName(u"lgPurchaseInfo"_s);
    TRows purchaseRows(purchase, *m_binder);
    purchaseRows.Add(u"edtPurchasedPrice"_s, I(u"edUsersCurrency"_s), u"Price"_s, 0);
    purchaseRows.Add(u"edtDatePurchased"_s, I(u"deDate"_s), u"PurchaseDate"_s, 1);
    purchaseRows.Add(u"seQty"_s, I(u"seQty"_s), u"Qty"_s, 2);
    purchaseRows.Add(u"cbStore"_s, I(u"cbStore"_s), u"Store"_s, 2, 1);
    purchase->setLayout(purchaseRows.Grid());

    auto* item = new QGroupBox(page);
    item->setObjectName(u"lgItemInfo"_s);
    TRows itemRows(item, *m_binder);
    QWidget* premium =
        itemRows.Add(u"edtExpectedPremium"_s, I(u"edUsersCurrency"_s), u"ExpectedPremium"_s, 0);
    if (auto* edit = qobject_cast<TNumberEdit*>(premium)) {
        edit->lineEdit()->setPlaceholderText(cExpectedPremiumPrompt);
        edit->setToolTip(cExpectedPremiumPrompt);
    }
    itemRows.Add(u"cbCondition"_s, I(u"cbCondition"_s), u"Condition"_s, 1);
    itemRows.Add(u"cbOwner"_s, I(u"cbOwner"_s), u"Owner"_s, 2);
    itemRows.Add(u"cbGrade"_s, I(u"cbGrade"_s), u"Grade"_s, 3);
    itemRows.Add(u"cbStatus"_s, I(u"cbStatus"_s), u"Status"_s, 0, 1);
    itemRows.Add(u"cbPackaging"_s, I(u"cbPackaging"_s), u"Packaging"_s, 1, 1);
    itemRows.Add(u"cbLocation"_s, I(u"cbLocation"_s), u"Location"_s, 2, 1);
    itemRows.Add(u"cbGradeService"_s, I(u"cbGradeService"_s), u"GradeService"_s, 3, 1);
    itemRows.Add(u"memSerialNumbers"_s, I(u"Memo"_s), u"SerialNumbers"_s, 4, 0, 2);
    itemRows.Grid()->setRowStretch(4, 1);
    // The left column's prompt is long: it gets the larger share.
    itemRows.Grid()->setColumnStretch(1, 3);
    itemRows.Grid()->setColumnStretch(3, 2);
    item->setLayout(itemRows.Grid());

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(purchase);
    layout->addWidget(item, 1);
    return page;
}

QWidget* TORVEditForm::CreateMorePicturesTab()
{
    auto* page = new QWidget;
    page->setObjectName(u"tsMorePics"_s);
    QWidget* side = m_binder->Bind(I(u"ImageCoinEdit"_s), u"PhotoSide"_s, page);
    QWidget* box = m_binder->Bind(I(u"ImageCoinEdit"_s), u"PhotoInBox"_s, page);
    side->setObjectName(u"imgSide"_s);
    box->setObjectName(u"imgInABox"_s);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(PictureSplitter(Qt::Horizontal, side, box, u"splMorePics"_s));
    return page;
}

QWidget* TORVEditForm::CreateCustomTab()
{
    auto* page = new QWidget;
    page->setObjectName(u"tsCustomFields"_s);
    m_customFields = new TPropertyGrid(page);
    m_customFields->setObjectName(u"vgCustomFields"_s);
    for (int n = 0; n < 10; ++n) {
        const QString field = CustomFieldColumn(n);
        m_customFields->addRow(TEditorCustomRows::RowName(field), field, QString(),
                               I(u"repCustomTextEdit"_s));
    }
    // Values go through the stored text form of their data type, never the editor's own.
    connect(m_customFields, &TPropertyGrid::rowValueChanged, this,
            [this](const QString& row, const QVariant& value) {
                const int n = row.mid(20).toInt() - 1;
                TDBDataset& items = *m_data.qDS_Items;
                if (n < 0 || n >= 10 || !items.active() || items.isEmpty()) {
                    return;
                }
                const QString text = CustomValueToText(value, ORVCustomFields[n].DataType);
                TDBField& field = items.fieldByName(CustomFieldColumn(n));
                if (field.isNull() ? text.isNull() : field.asString() == text) {
                    return;
                }
                if (items.state() == TDatasetState::Browse) {
                    items.edit();
                }
                if (text.isNull()) {
                    field.clear();
                } else {
                    field.setAsString(text);
                }
            });
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(m_customFields);
    return page;
}

// ---- Virtual operations ---------------------------------------------------------------------------

void TORVEditForm::SetupForm()
{
    TEditorCustomRows rows(*m_customFields, *m_tabs, *m_tabs->widget(4),
                           [this](const QString& name) { return I(name); });
    ApplyCustomFieldsToEditor(rows);
}

void TORVEditForm::ReadRecordIntoCustomFields()
{
    TDBDataset& items = *m_data.qDS_Items;
    const bool hasRecord = items.active() && !items.isEmpty();
    for (int n = 0; n < 10; ++n) {
        const QString field = CustomFieldColumn(n);
        QVariant value;
        if (hasRecord) {
            const TDBField& f = items.fieldByName(field);
            value = f.isNull() ? QVariant() : CustomValueFromText(f.asString(), ORVCustomFields[n].DataType);
        }
        // Unbound rows keep their value: setting it here writes nothing to the record.
        const QSignalBlocker quiet(m_customFields);
        m_customFields->setRowValue(TEditorCustomRows::RowName(field), value);
    }
}

void TORVEditForm::LoadRecord()
{
    TDBDataset& items = *m_data.qDS_Items;
    const bool hasRecord = items.active() && !items.isEmpty();
    SetDocumentName(hasRecord ? items.fieldByName(u"Caption"_s).asString() : QString());
    m_binder->Load();
    ReadRecordIntoCustomFields();
    ShowMintLogo(hasRecord ? items.fieldByName(u"MintID"_s).value() : QVariant());
}

void TORVEditForm::PostEditorValues()
{
    m_binder->CommitAll();
    m_customFields->finishEditing();
}

void TORVEditForm::ShowMintLogo(const QVariant& mintId)
{
    QPixmap logo;
    if (!mintId.isNull() && mintId.isValid()) {
        const QVariant bytes = m_data.MintLogoByID(mintId.toInt());
        if (!bytes.isNull()) {
            logo.loadFromData(bytes.toByteArray());
        }
    }
    if (logo.isNull()) {
        m_imgMint->clear();
        return;
    }
    const QSize room = m_imgMint->minimumSize();
    m_imgMint->setPixmap(logo.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

void TORVEditForm::TranslateForm()
{
    TAbstractRibbonDBEditForm::TranslateForm();
    m_binder->TranslateLabels();
    m_tabs->setTabText(0, TextOr(u"cSEditCoinDlgTSGeneral"_s, u"General information"_s));
    m_tabs->setTabText(1, TextOr(u"cSEditCoinDlgTSSpec"_s, u"Specification"_s));
    m_tabs->setTabText(2, TextOr(u"cSEditCoinDlgTSPurchase"_s, u"Purchase information"_s));
    m_tabs->setTabText(3, TextOr(u"cSEditCoinDlgTSMorePhotos"_s, u"More photos"_s));
    m_tabs->setTabText(4, TextOr(u"cSEditCoinDlgTSCustom"_s, u"Custom"_s));
    if (auto* group = findChild<QGroupBox*>(u"lgPurchaseInfo"_s)) {
        group->setTitle(TextOr(u"cSEditCoinDlggPurchaseInfo"_s, u"Purchase information"_s));
    }
    if (auto* group = findChild<QGroupBox*>(u"lgItemInfo"_s)) {
        group->setTitle(TextOr(u"cSEditCoinDlggItemInfo"_s, u"Item information"_s));
    }
}

void TORVEditForm::ApplyFormTheme()
{
    TAbstractRibbonDBEditForm::ApplyFormTheme();
}
