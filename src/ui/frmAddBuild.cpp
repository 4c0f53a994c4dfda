// The add dialog's widgets, made once: editor items, commands, ribbon, search row, advanced
// options, grid and right pane, and their texts.

#include "frmAdd.h"

#include "dmInternalData.h"
#include "uBlankPictures.h"
#include "uCheckComboBox.h"
#include "uChoiceEditorItems.h"
#include "uDownloader.h"
#include "uGalleryView.h"
#include "uGrid.h"
#include "uGridCardView.h"
#include "uGridColumn.h"
#include "uGridColumns.h"
#include "uImageSlider.h"
#include "uItemTexts.h"
#include "uNumberEdit.h"
#include "uNumberEditorItems.h"
#include "uPictureEditorItem.h"
#include "uPropertyGrid.h"
#include "uQuickSearches.h"
#include "uRibbon.h"
#include "uRibbonGroup.h"
#include "uRibbonPage.h"
#include "uRibbonQuickAccessBar.h"
#include "uSearchBox.h"
#include "uTextEditorItems.h"
#include "uZTStrings.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QTabBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

using namespace Qt::StringLiterals;

// The main window's pictures (uMainGlyphs), declared here: its header brings the main window's
// command types, whose view enumeration shares its name with the grid's view class.
QIcon CommandGlyph(const QString& name, const QStyle* style);
QPixmap GalleryPicture(quint8 mode, const QString& caption);

namespace {

constexpr int cCardWidth = 325;
constexpr int cCardIndent = 7;
constexpr int cInitialThumbHeight = 150;

const QString cTemplateName = u"SearchGridCardView"_s;

struct TCardRow
{
    int Column;
    const char16_t* Name;
    const char16_t* CaptionKey; // empty: no caption
};

// The rows of a card, in order.
constexpr TCardRow CardRows[] = {
    {acThumb, u"SearchGridCardViewRowThumb", u""},
    {acCaption, u"SearchGridCardViewRowCaption", u""},
    {acName, u"SearchGridCardViewRowName", u"cSF_Name"},
    {acWeight, u"SearchGridCardViewRowWeight", u"cSF_Weight"},
    {acYear, u"SearchGridCardViewRowYear", u"cSF_Year"},
    {acPurity, u"SearchGridCardViewRowPurity", u"cSF_Purity"},
    {acMint, u"SearchGridCardViewRowMint", u"cSF_Mint"},
    {acSeries, u"SearchGridCardViewRowSeries", u"cSF_Series"},
    {acCountry, u"SearchGridCardViewRowCountry", u"cSF_Country"},
    {acRelevance, u"SearchGridCardViewRowRelevance", u""},
    {acDataPointer, u"SearchGridCardViewRowDataPointer", u""},
    {acFetched, u"SearchGridCardViewRowFetched", u""},
};

QString Text(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

QIcon AddGlyph(const QString& name, const QStyle* style)
{
    static const QHash<QString, QString> main = {
        {u"actSaveAndClose"_s, u"actAdd"_s},     {u"actSaveAndContinue"_s, u"actAdd"_s},
        {u"actClear"_s, u"actRemoveSelected"_s}, {u"actRemoveSelection"_s, u"actRemoveSelected"_s},
        {u"actSortAsc"_s, u"actSortAsc"_s},      {u"actSortDesc"_s, u"actSortDesc"_s},
        {u"actSortData"_s, u"actSortData"_s},    {u"actSearch"_s, u"actQuickSearch"_s},
    };
    if (main.contains(name))
        return CommandGlyph(main.value(name), style);
    static const QHash<QString, QStyle::StandardPixmap> standard = {
        {u"actStop"_s, QStyle::SP_BrowserStop},
        {u"actNewTab"_s, QStyle::SP_FileDialogNewFolder},
        {u"actCloseTab"_s, QStyle::SP_DialogCloseButton},
        {u"actClearSorting"_s, QStyle::SP_DialogResetButton},
        {u"actProxySettings"_s, QStyle::SP_DriveNetIcon},
        {u"actTestConnection"_s, QStyle::SP_DialogApplyButton},
        {u"actHelp"_s, QStyle::SP_DialogHelpButton},
    };
    return standard.contains(name) ? style->standardIcon(standard.value(name)) : QIcon();
}

QPixmap Placeholder(int metal, int coinType)
{
    QPixmap pixmap;
    pixmap.loadFromData(BlankPicture(metal, coinType, true));
    return pixmap;
}

} // namespace

// ---- Building --------------------------------------------------------------------------------------

void TAddForm::CreateEditorItems()
{
    m_pictureItem = std::make_unique<TPictureEditorItem>();
    m_weightItem = std::make_unique<TFloatEditorItem>();
    m_weightItem->setDisplayFunction([](double grams) { return WeightToText(grams); });
    m_textItem = std::make_unique<TTextEditorItem>();
    m_metalItem = std::make_unique<TListEditorItem>();
    m_typeItem = std::make_unique<TListEditorItem>();
    QList<TListEntry> metals, types;
    for (int code = 0; code < 6; ++code)
        metals << TListEntry{code, MetalToText(code), QIcon(Placeholder(code, 0))};
    for (int code = 0; code < 5; ++code)
        types << TListEntry{code, CoinTypeToText(code), QIcon(Placeholder(0, code))};
    m_metalItem->setEntries(metals);
    m_typeItem->setEntries(types);
    m_checkItem = std::make_unique<TCheckEditorItem>();
    m_checkItem->setValues(true, false);
    m_memoItem = std::make_unique<TMemoEditorItem>();
    m_mintPictureItem = std::make_unique<TPictureEditorItem>();
    m_mintPictureItem->setLines(4);
    for (TBasicEditorItem* item :
         std::initializer_list<TBasicEditorItem*>{m_weightItem.get(), m_textItem.get(), m_metalItem.get(),
                                                  m_typeItem.get(), m_checkItem.get(), m_memoItem.get()})
        item->setReadOnly(true);
}

void TAddForm::CreateActions()
{
    for (const TAddCommandInfo& info : AddCommands()) {
        auto* action = new QAction(this);
        action->setObjectName(info.Name);
        action->setIcon(AddGlyph(info.Name, style()));
        if (!info.Shortcut.isEmpty()) {
            action->setShortcut(QKeySequence(info.Shortcut));
            action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        }
        const TAddCommand command = info.Command;
        connect(action, &QAction::triggered, this, [this, command] {
            if (command == TAddCommand::actSearch) {
                ReadFilters();
                if (m_advanced->isVisible())
                    m_advanced->hide();
            }
            m_controller->Execute(command);
            UpdateActions();
        });
        addAction(action);
        m_actions.insert(info.Name, action);
    }
}

void TAddForm::CreateRibbon()
{
    m_ribbon = new TRibbon(this);
    m_ribbon->setObjectName(u"Ribbon"_s);
    m_ribbon->setApplicationButtonVisible(false);
    m_ribbon->setTitleBarVisible(false);
    m_ribbon->setUpdatesWindowTitle(false);

    TRibbonPage* search = m_ribbon->addTab(u"rtSearchOnline"_s, QString());
    TRibbonGroup* actions = search->addGroup(u"BarActions"_s, QString());
    actions->addButton(Action(u"actSaveAndClose"_s));
    actions->addButton(Action(u"actSaveAndContinue"_s));
    actions->addSeparator();
    actions->addButton(Action(u"actNewTab"_s), TRibbonItemSize::Medium);
    m_pmClear = new QMenu(this);
    m_pmClear->setObjectName(u"pmClear"_s);
    m_pmClear->addAction(Action(u"actClear"_s));
    m_pmClear->addSeparator();
    m_pmClear->addAction(Action(u"actClearAllTabs"_s));
    actions->addDropDownButton(Action(u"actClear"_s), m_pmClear, TRibbonItemSize::Medium, true)
        ->setObjectName(u"btnClear"_s);
    actions->addSeparator();
    actions->addButton(Action(u"actStop"_s));

    TRibbonGroup* quick = search->addGroup(u"BarQuickSearch"_s, QString());
    for (const TQuickSearchGallery& gallery : AddDialogGalleries()) {
        auto* action = new QAction(this);
        action->setObjectName(gallery.Name);
        action->setIcon(
            QIcon(Placeholder(gallery.Mode <= smGoldBars ? 0 : (gallery.Mode <= smSilverBars ? 1 : 2),
                              gallery.Mode % 2 == 1 ? 3 : 0)));
        m_actions.insert(gallery.Name, action);
        auto* view = new TGalleryView(this);
        view->setObjectName(gallery.Name + u"Gallery"_s);
        view->setColumnsHint(5);
        for (qsizetype g = 0; g < gallery.Groups.size(); ++g) {
            const TGalleryGroup& group = gallery.Groups[g];
            const QString groupName = gallery.Name + u"Group"_s + QString::number(g);
            view->addGroup(groupName, group.Heading);
            for (qint32 tag : group.Tags) {
                const TQuickSearch* row = FindQuickSearch(gallery.Mode, tag);
                const QString caption = row ? row->Gallery.toString() : QString::number(tag);
                view->addItem(groupName, gallery.Name + u"Item"_s + QString::number(tag), caption,
                              GalleryPicture(gallery.Mode, caption), tag);
            }
        }
        const quint8 mode = gallery.Mode;
        connect(
            view, &TGalleryView::itemClicked, this,
            [this, mode](const QString&, const QString&, int tag) { m_controller->QuickSearch(mode, tag); });
        quick->addGalleryButton(action, view);
    }

    TRibbonGroup* sorting = search->addGroup(u"BarSorting"_s, QString());
    sorting->addButton(Action(u"actSortData"_s));
    sorting->addButton(Action(u"actSortAsc"_s), TRibbonItemSize::Medium);
    sorting->addButton(Action(u"actSortDesc"_s), TRibbonItemSize::Medium);
    sorting->addButton(Action(u"actClearSorting"_s), TRibbonItemSize::Medium);

    TRibbonPage* options = m_ribbon->addTab(u"rtOptions"_s, QString());
    TRibbonGroup* bar = options->addGroup(u"BarOptions"_s, QString());
    bar->addButton(Action(u"actProxySettings"_s));
    bar->addButton(Action(u"actTestConnection"_s));
    m_ribbon->quickAccessBar()->setObjectName(u"BarMainMenu"_s);
    m_ribbon->quickAccessBar()->addAction(Action(u"actSaveAndContinue"_s));
    m_ribbon->setCurrentTab(u"rtSearchOnline"_s);
}

void TAddForm::CreateSearchRow(QWidget* parent)
{
    auto* row = new QHBoxLayout;
    m_edtSearch = new TSearchBox(parent);
    m_edtSearch->setObjectName(u"edtSearch"_s);
    m_btnSearchOptions = new QToolButton(parent);
    m_btnSearchOptions->setObjectName(u"btnSearchOptions"_s);
    m_btnSearchOptions->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_btnSearch = new QPushButton(parent);
    m_btnSearch->setObjectName(u"btnSearch"_s);
    m_btnSearch->setIcon(Action(u"actSearch"_s)->icon());
    row->addWidget(m_edtSearch, 1);
    row->addWidget(m_btnSearchOptions);
    row->addWidget(m_btnSearch);
    static_cast<QVBoxLayout*>(parent->layout())->addLayout(row);

    connect(m_edtSearch, &QLineEdit::textChanged, this, [this] {
        m_controller->Filters.Keywords = m_edtSearch->text();
        UpdateActions();
    });
    connect(m_edtSearch, &TSearchBox::searchRequested, Action(u"actSearch"_s), &QAction::trigger);
    connect(m_btnSearch, &QPushButton::clicked, Action(u"actSearch"_s), &QAction::trigger);
    connect(m_btnSearchOptions, &QToolButton::clicked, this, &TAddForm::ShowAdvancedOptions);
}

void TAddForm::CreateAdvancedOptions()
{
    m_advanced = new QFrame(this, Qt::Popup);
    m_advanced->setObjectName(u"edtSearchDropDown"_s);
    static_cast<QFrame*>(m_advanced)->setFrameShape(QFrame::StyledPanel);
    m_advanced->setMinimumSize(587, 164);
    auto* layout = new QVBoxLayout(m_advanced);
    auto* groups = new QHBoxLayout;
    layout->addLayout(groups, 1);

    auto makeGroup = [this, groups](const QString& name) {
        auto* box = new QGroupBox(m_advanced);
        box->setObjectName(name);
        auto* grid = new QGridLayout(box);
        groups->addWidget(box);
        return std::pair(box, grid);
    };
    auto label = [](QWidget* parent, const QString& name) {
        auto* l = new QLabel(parent);
        l->setObjectName(name);
        return l;
    };

    auto [filter, filterGrid] = makeGroup(u"gbFilter"_s);
    m_cbMetals = new TCheckComboBox(filter);
    m_cbMetals->setObjectName(u"cbMetals"_s);
    m_cbTypes = new TCheckComboBox(filter);
    m_cbTypes->setObjectName(u"cbTypes"_s);
    m_cbMint = new QComboBox(filter);
    m_cbMint->setObjectName(u"cbMint"_s);
    filterGrid->addWidget(label(filter, u"lblMetals"_s), 0, 0);
    filterGrid->addWidget(m_cbMetals, 0, 1);
    filterGrid->addWidget(label(filter, u"lblTypes"_s), 1, 0);
    filterGrid->addWidget(m_cbTypes, 1, 1);
    filterGrid->addWidget(label(filter, u"lblMint"_s), 2, 0);
    filterGrid->addWidget(m_cbMint, 2, 1);

    auto [weight, weightGrid] = makeGroup(u"gbWeightRange"_s);
    m_seWeightFrom = new TNumberEdit(weight);
    m_seWeightFrom->setObjectName(u"seWeightFrom"_s);
    m_seWeightTo = new TNumberEdit(weight);
    m_seWeightTo->setObjectName(u"seWeightTo"_s);
    for (TNumberEdit* edit : {m_seWeightFrom, m_seWeightTo}) {
        edit->setRange(0, 1e6);
        edit->setStep(0.1);
    }
    m_cbWeightUnit = new QComboBox(weight);
    m_cbWeightUnit->setObjectName(u"cbWeightUnit"_s);
    m_cbWeightUnit->addItems({u"Troy oz"_s, u"Gram"_s});
    weightGrid->addWidget(label(weight, u"lblWeightFrom"_s), 0, 0);
    weightGrid->addWidget(m_seWeightFrom, 0, 1);
    weightGrid->addWidget(label(weight, u"lblWeightTo"_s), 1, 0);
    weightGrid->addWidget(m_seWeightTo, 1, 1);
    weightGrid->addWidget(label(weight, u"lblWeightUnit"_s), 2, 0);
    weightGrid->addWidget(m_cbWeightUnit, 2, 1);
    connect(m_cbWeightUnit, &QComboBox::currentIndexChanged, this, &TAddForm::WeightUnitChanged);
    WeightUnitChanged(cWeightUnitOunces);

    auto [years, yearGrid] = makeGroup(u"gbYearRange"_s);
    m_seYearFrom = new TNumberEdit(years);
    m_seYearFrom->setObjectName(u"seYearFrom"_s);
    m_seYearTo = new TNumberEdit(years);
    m_seYearTo->setObjectName(u"seYearTo"_s);
    for (TNumberEdit* edit : {m_seYearFrom, m_seYearTo}) {
        edit->setWholeNumbers(true);
        edit->setRange(0, 9999);
        edit->setDisplayFormat(TNumberFormat(u"0"_s));
        edit->setNullText(u"N/A"_s);
    }
    yearGrid->addWidget(label(years, u"lblYearFrom"_s), 0, 0);
    yearGrid->addWidget(m_seYearFrom, 0, 1);
    yearGrid->addWidget(label(years, u"lblYearTo"_s), 1, 0);
    yearGrid->addWidget(m_seYearTo, 1, 1);
    yearGrid->setRowStretch(2, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    auto* clear = new QPushButton(m_advanced);
    clear->setObjectName(u"btnAdvClear"_s);
    auto* search = new QPushButton(m_advanced);
    search->setObjectName(u"btnAdvSearch"_s);
    search->setDefault(true);
    buttons->addWidget(clear);
    buttons->addWidget(search);
    layout->addLayout(buttons);
    connect(clear, &QPushButton::clicked, this, &TAddForm::ClearAdvanced);
    connect(search, &QPushButton::clicked, Action(u"actSearch"_s), &QAction::trigger);
    ClearAdvanced();
}

void TAddForm::CreateGrid(QWidget* parent)
{
    auto* layout = static_cast<QVBoxLayout*>(parent->layout());
    m_tabControl = new QTabBar(parent);
    m_tabControl->setObjectName(u"TabControl"_s);
    m_tabControl->setExpanding(false);
    m_tabControl->setDocumentMode(true);
    m_tabControl->setElideMode(Qt::ElideRight);
    m_tabControl->setContextMenuPolicy(Qt::CustomContextMenu);
    layout->addWidget(m_tabControl);
    m_grid = new TGrid(parent);
    m_grid->setObjectName(u"SearchGrid"_s);
    m_grid->setFieldNameRole(TAddResultsModel::FieldNameRole);
    m_grid->setKeyRole(TAddResultsModel::KeyRole);
    m_grid->setLevelTabsVisible(false);
    layout->addWidget(m_grid, 1);

    // The template of every tab; never shown.
    m_templateModel = std::make_unique<TAddResultsModel>();
    m_template = m_grid->addCardView(cTemplateName, QString(), m_templateModel.get());
    m_template->setCardWidth(cCardWidth);
    m_template->setCardIndent(cCardIndent);
    m_template->setMultiSelect(true);
    m_template->setWheelZoom(true, 0.95, 1.05, 80);
    m_template->setEmptyRowsHidden(false);
    m_template->setFillWidth(false);
    for (const TCardRow& row : CardRows) {
        TGridColumn* column = m_template->addColumn(QString::fromUtf16(row.Name), AddColumnField(row.Column));
        column->setWidth(0); // every row across the card, none at its side
        switch (row.Column) {
        case acThumb:
            m_template->setEditorItem(column, m_pictureItem.get());
            column->setCaptionVisible(false);
            break;
        case acCaption:
            column->setCaptionVisible(false);
            column->setCardTitle(true);
            break;
        case acWeight:
            m_template->setEditorItem(column, m_weightItem.get());
            break;
        case acRelevance:
        case acDataPointer:
        case acFetched:
            column->setVisible(false);
            column->setHiddenFromChooser(true);
            break;
        default:
            break;
        }
    }
    SetThumbHeight(m_template, cInitialThumbHeight);

    connect(m_tabControl, &QTabBar::currentChanged, this, [this](int index) {
        if (!m_syncing)
            m_controller->SetActiveTab(index);
    });
    m_pmTabs = new QMenu(this);
    m_pmTabs->setObjectName(u"pmTabs"_s);
    m_pmTabs->addAction(Action(u"actNewTab"_s));
    m_pmTabs->addSeparator();
    m_pmTabs->addAction(Action(u"actCloseAllTabs"_s));
    m_pmTabs->addAction(Action(u"actCloseTab"_s));
    connect(m_tabControl, &QWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
        const int index = m_tabControl->tabAt(pos);
        if (index >= 0)
            m_controller->SetActiveTab(index);
        m_pmTabs->popup(m_tabControl->mapToGlobal(pos));
    });

    m_pmCard = new QMenu(this);
    m_pmCard->setObjectName(u"pmCard"_s);
    m_pmCard->addAction(Action(u"actSaveAndContinue"_s));
    m_pmCard->addAction(Action(u"actRemoveSelection"_s));
    m_pmCard->addSection(QString())->setObjectName(u"sepSelection"_s);
    m_pmCard->addAction(Action(u"actSelectAll"_s));
    m_pmCard->addAction(Action(u"actClearSelection"_s));
    m_pmCard->addSection(QString())->setObjectName(u"cSAddDlgClearSep"_s);
    m_pmCard->addAction(Action(u"actClear"_s));
}

void TAddForm::CreateRightPane(QWidget* parent)
{
    auto* layout = new QVBoxLayout(parent);
    layout->setContentsMargins(0, 6, 6, 0);
    m_lPicType = new QLabel(parent);
    m_lPicType->setObjectName(u"lPicType"_s);
    m_lPicType->setAlignment(Qt::AlignCenter);
    QFont bold = m_lPicType->font();
    bold.setBold(true);
    m_lPicType->setFont(bold);
    m_slider = new TImageSlider(parent);
    m_slider->setObjectName(u"ImageSlider"_s);
    m_slider->addImage(u"ImageObverse"_s);
    m_slider->addImage(u"ImageReverse"_s);
    m_slider->addImage(u"ImageSide"_s);
    m_slider->addImage(u"ImageInBox"_s);
    m_slider->setSkipEmpty(true);
    m_slider->setMinimumHeight(220);
    connect(m_slider, &TImageSlider::currentChanged, this, [this](int index) {
        m_lPicType->setText(index < 0 ? QString() : PictureKindText(quint8(index + 1)));
    });
    connect(m_slider, &TImageSlider::doubleClicked, this, [this](int) {
        const QImage image = m_slider->currentImage();
        if (!image.isNull())
            PictureViewer(this, image);
    });
    m_vgData = new TPropertyGrid(parent);
    m_vgData->setObjectName(u"vgData"_s);
    m_vgData->setCaptionWidth(fontMetrics().horizontalAdvance(u"Denomination"_s) + 24);
    m_vgData->addCategory(u"vgDataCategoryRowDesc"_s, QString());
    const auto& rows = AddPaneRows();
    for (int n = 0; n < cPaneRowCount; ++n) {
        const TEditorItem* item = m_textItem.get();
        switch (n) {
        case vgDataEditorRowCoinType:
            item = m_typeItem.get();
            break;
        case vgDataEditorRowMetal:
            item = m_metalItem.get();
            break;
        case vgDataEditorRowMintPic:
            item = m_mintPictureItem.get();
            break;
        case vgDataEditorRowMintMark:
            item = m_checkItem.get();
            break;
        case vgDataEditorRowDesc:
            item = m_memoItem.get();
            break;
        default:
            break;
        }
        m_vgData->addRow(rows[std::size_t(n)].Name, QString(), QString(), item, u"vgDataCategoryRowDesc"_s);
        m_vgData->setRowReadOnly(rows[std::size_t(n)].Name, true);
    }
    m_vgData->setRowLines(rows[vgDataEditorRowDesc].Name, 5);
    layout->addWidget(m_lPicType);
    layout->addWidget(m_slider, 2);
    layout->addWidget(m_vgData, 3);
}

void TAddForm::TranslateForm()
{
    setWindowTitle(Text(u"cSAddDlgCaption"_s, u"Add items from the online catalogue"_s));
    for (const TAddCommandInfo& info : AddCommands())
        if (QAction* action = Action(info.Name))
            action->setText(AddCommandText(info));
    m_ribbon->setTabCaption(u"rtSearchOnline"_s, Text(u"cSAddDlgTabSearch"_s, u"Search"_s));
    m_ribbon->setTabCaption(u"rtOptions"_s, Text(u"cSAddDlgTabOptions"_s, u"Options"_s));
    TRibbonPage* search = m_ribbon->tab(u"rtSearchOnline"_s);
    search->group(u"BarActions"_s)->setCaption(Text(u"cSAddDlgBarActions"_s, u"Actions"_s));
    search->group(u"BarQuickSearch"_s)->setCaption(Text(u"cSAddDlgBarQuickSearch"_s, u"Quick search"_s));
    search->group(u"BarSorting"_s)->setCaption(Text(u"cSAddDlgBarSorting"_s, u"Sorting"_s));
    m_ribbon->tab(u"rtOptions"_s)
        ->group(u"BarOptions"_s)
        ->setCaption(Text(u"cSAddDlgTabOptions"_s, u"Options"_s));
    for (const TQuickSearchGallery& gallery : AddDialogGalleries())
        Action(gallery.Name)->setText(Text(gallery.TextKey, gallery.DefaultText));

    m_edtSearch->setEmptyText(GetText(u"cSAddDlgedtSearchNULL"_s));
    m_btnSearchOptions->setText(Text(u"cSAddDlgSearchOptions"_s, u"  Search options \u25BC  "_s));
    m_btnSearchOptions->setToolTip(GetText(u"cSAddDlgSearchOptionsHint"_s));
    m_btnSearch->setText(Action(u"actSearch"_s)->text());
    m_advanced->findChild<QGroupBox*>(u"gbFilter"_s)->setTitle(Text(u"cSAddDlgFilter"_s, u"Filter"_s));
    m_advanced->findChild<QGroupBox*>(u"gbWeightRange"_s)
        ->setTitle(Text(u"cSAddDlgWeightRange"_s, u"Weight range"_s));
    m_advanced->findChild<QGroupBox*>(u"gbYearRange"_s)
        ->setTitle(Text(u"cSAddDlgYearRange"_s, u"Year range"_s));
    const QList<std::pair<QString, QString>> labels = {
        {u"lblMetals"_s, u"cSF_Metal"_s},  {u"lblTypes"_s, u"cSF_Type"_s}, {u"lblMint"_s, u"cSF_Mint"_s},
        {u"lblWeightFrom"_s, u"cSFrom"_s}, {u"lblWeightTo"_s, u"cSTo"_s},  {u"lblWeightUnit"_s, u"cSUnit"_s},
        {u"lblYearFrom"_s, u"cSFrom"_s},   {u"lblYearTo"_s, u"cSTo"_s}};
    for (const auto& [name, key] : labels)
        m_advanced->findChild<QLabel*>(name)->setText(GetText(key));
    m_advanced->findChild<QPushButton*>(u"btnAdvClear"_s)->setText(Text(u"cSClear"_s, u"Clear"_s));
    m_advanced->findChild<QPushButton*>(u"btnAdvSearch"_s)->setText(Action(u"actSearch"_s)->text());
    QStringList metals, types;
    for (int code = 0; code < 6; ++code)
        metals << MetalToText(code);
    m_cbMetals->setItems(metals);
    m_cbMetals->setEmptyText(u"Any"_s);
    m_cbTypes->setItems({u"Coins"_s, u"Rectangular coins"_s, u"Rounds"_s, u"Bars"_s, u"Divisible bars"_s});
    m_cbTypes->setEmptyText(u"Any"_s);
    m_cbMint->clear();
    m_cbMint->addItem(u"Any"_s, QVariant());
    if (m_data && m_data->ADConnection && m_data->ADConnection->connected()) {
        // ID and name of each mint, joined by the unit separator, records by the record separator.
        const QString mints =
            m_data->ADConnection
                ->selectValue(u"SELECT group_concat(ID || char(31) || Name, char(30)) FROM "
                              "(SELECT ID, Name FROM tblMints ORDER BY Name COLLATE NOCASE)"_s)
                .toString();
        for (const QString& mint : mints.split(QChar(30), Qt::SkipEmptyParts)) {
            const qsizetype cut = mint.indexOf(QChar(31));
            if (cut > 0)
                m_cbMint->addItem(mint.mid(cut + 1), mint.left(cut).toInt());
        }
    }

    m_template->setEmptyText(GetText(u"cSNoDataToDisplay"_s));
    for (const TCardRow& row : CardRows) {
        const QString key = QString::fromUtf16(row.CaptionKey);
        if (!key.isEmpty())
            m_template->columns()->byField(AddColumnField(row.Column))->setCaption(GetText(key));
    }
    const auto& rows = AddPaneRows();
    for (const TAddPaneRowInfo& row : rows)
        m_vgData->setRowCaption(row.Name, row.LabelKey.isEmpty() ? QString() : GetText(row.LabelKey));
    m_slider->setToolTip(GetText(u"cSAddDlgDblClickToEnlarge"_s));
    m_status->setText(QString());
}
