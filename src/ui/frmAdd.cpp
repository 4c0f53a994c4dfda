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

std::function<bool(QWidget*, TAddSort&)> TAddForm::SortDialogRunner = [](QWidget*, TAddSort&) {
    return false;
};
std::function<void(QWidget*)> TAddForm::ProxySettingsRunner = [](QWidget*) {};
std::function<void(QWidget*, const QImage&)> TAddForm::PictureViewer = [](QWidget* parent,
                                                                          const QImage& image) {
    QDialog viewer(parent);
    viewer.setObjectName(u"frmPic"_s);
    auto* layout = new QVBoxLayout(&viewer);
    auto* scroll = new QScrollArea(&viewer);
    auto* label = new QLabel(scroll);
    label->setPixmap(QPixmap::fromImage(image));
    scroll->setWidget(label);
    scroll->setAlignment(Qt::AlignCenter);
    layout->addWidget(scroll);
    const QSize available =
        parent && parent->screen() ? parent->screen()->availableSize() * 0.9 : QSize(1024, 768);
    viewer.resize(image.size().boundedTo(available).expandedTo(QSize(200, 200)) + QSize(40, 40));
    viewer.exec();
};

// ---- Life -------------------------------------------------------------------------------------------

TAddForm::TAddForm(TDM_InternalData* data, QWidget* parent) : QDialog(parent), m_data(data)
{
    setObjectName(u"frmAdd"_s);
    setSizeGripEnabled(true);
    m_controller = std::make_unique<TAddController>(static_cast<TAddFormSeam&>(*this), this);

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

    CreateActions();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    CreateRibbon();
    layout->addWidget(m_ribbon);

    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setObjectName(u"Splitter"_s);
    auto* left = new QWidget(splitter);
    auto* leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(6, 6, 0, 0);
    CreateSearchRow(left);
    CreateGrid(left);
    auto* right = new QWidget(splitter);
    CreateRightPane(right);
    splitter->addWidget(left);
    splitter->addWidget(right);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    layout->addWidget(splitter, 1);

    auto* statusBar = new QStatusBar(this);
    statusBar->setObjectName(u"StatusBar"_s);
    m_progress = new QProgressBar(statusBar);
    m_progress->setObjectName(u"StatusBarProgress"_s);
    m_progress->setTextVisible(true);
    m_progress->setMinimumWidth(fontMetrics().horizontalAdvance(u"Left: 9999 downloads"_s) + 40);
    m_progress->hide();
    m_status = new QLabel(statusBar);
    m_status->setObjectName(u"StatusBarText"_s);
    statusBar->addWidget(m_progress);
    statusBar->addWidget(m_status, 1);
    layout->addWidget(statusBar);

    CreateAdvancedOptions();
    ConnectController();
    TranslateForm();
    // The one tab that creation made.
    for (int n = 0; n < m_controller->TabCount(); ++n)
        TabAdded(n);
    m_tabControl->setCurrentIndex(m_controller->ActiveTab());
    m_grid->setActiveView(TabView(m_controller->ActiveTab()));
    ApplySort();
    ShowPane();

    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            &TAddForm::UpdateActions);
    UpdateActions();
    resize(1180, 760);
}

TAddForm::~TAddForm()
{
    // The controller's last words (the stopped queue's events) find no window to show them.
    m_controller->disconnect(this);
    disconnect(QAbstractEventDispatcher::instance(), nullptr, this, nullptr);
    m_controller->Finish();
    // The views let go of the tabs' results before the controller frees them.
    for (TGridCardView* view : std::as_const(m_tabViews))
        m_grid->removeView(view);
    m_tabViews.clear();
    m_controller.reset();
}

std::vector<std::unique_ptr<TMetalAsset>> TAddForm::Execute(quint8 mode, qint32 tag,
                                                            const QString& searchText, bool autoSearch,
                                                            TDM_InternalData* data, QWidget* parent)
{
    TAddForm form(data, parent);
    TAddController& controller = form.Controller();
    controller.SearchMode = mode;
    controller.SearchTag = tag;
    controller.SearchText = searchText;
    controller.AutoSearch = autoSearch;
    form.exec();
    // Pictures of added assets that are still on their way land before the assets are handed on.
    controller.Finish();
    return std::move(controller.Assets);
}

TGridCardView* TAddForm::TabView(int tab) const
{
    return tab >= 0 && tab < m_tabViews.size() ? m_tabViews[tab] : nullptr;
}

int TAddForm::ThumbHeightFor(int cardWidth)
{
    return int(std::lround(cardWidth * 0.4));
}

// ---- Building --------------------------------------------------------------------------------------

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

void TAddForm::ConnectController()
{
    TAddController& c = *m_controller;
    connect(&c, &TAddController::TabAdded, this, &TAddForm::TabAdded);
    connect(&c, &TAddController::TabRemoved, this, &TAddForm::TabRemoved);
    connect(&c, &TAddController::TabCaptionChanged, this, [this](int index) {
        const QString caption = m_controller->Tab(index).Caption;
        m_tabControl->setTabText(index, caption);
        if (TGridCardView* view = TabView(index))
            view->setCaption(caption);
    });
    connect(&c, &TAddController::ActiveTabChanged, this, [this](int index) {
        m_syncing = true;
        if (index >= 0 && index < m_tabControl->count())
            m_tabControl->setCurrentIndex(index);
        if (TGridCardView* view = TabView(index))
            m_grid->setActiveView(view);
        m_syncing = false;
    });
    connect(&c, &TAddController::FocusChanged, this, [this](int tab, int record) {
        if (TGridCardView* view = TabView(tab)) {
            m_syncing = true;
            view->setCurrentSourceRow(record);
            view->makeCurrentVisible();
            m_syncing = false;
        }
    });
    connect(&c, &TAddController::SelectionChanged, this, [this](int tab) {
        if (TGridCardView* view = TabView(tab)) {
            m_syncing = true;
            view->setSelectedSourceRows(m_controller->Tab(tab).Selection);
            m_syncing = false;
        }
    });
    connect(&c, &TAddController::SortChanged, this, &TAddForm::ApplySort);
    connect(&c, &TAddController::PaneChanged, this, &TAddForm::ShowPane);
    connect(&c, &TAddController::PaneReset, this, [this] { m_slider->showFirst(); });
    connect(&c, &TAddController::ProgressChanged, this, &TAddForm::ShowProgress);
    connect(&c, &TAddController::CloseRequested, this, [this] { done(QDialog::Accepted); });
}

// ---- Tabs ------------------------------------------------------------------------------------------

void TAddForm::TabAdded(int index)
{
    TAddTab& tab = m_controller->Tab(index);
    TGridCardView* view = m_grid->addCardViewLike(m_template, u"SearchGridCardView%1"_s.arg(index + 1),
                                                  tab.Caption, tab.Results.get());
    view->setEmptyText(m_template->emptyText());
    view->setContextMenuPolicy(Qt::PreventContextMenu);
    m_tabViews.insert(index, view);
    m_syncing = true;
    m_tabControl->insertTab(index, tab.Caption);
    m_syncing = false;
    connect(view, &TGridView::selectionChanged, this, [this, view] { ViewSelectionChanged(view); });
    connect(view, &TGridView::contextMenuRequested, this,
            [this](const TGridHitInfo&, const QPoint& pos) { m_pmCard->popup(pos); });
    connect(view, &TGridCardView::cardWidthChanged, this,
            [this, view](int width) { SetThumbHeight(view, ThumbHeightFor(width)); });
    ApplySort();
}

void TAddForm::TabRemoved(int index)
{
    TGridCardView* view = TabView(index);
    if (!view)
        return;
    m_tabViews.removeAt(index);
    m_grid->removeView(view);
    m_syncing = true;
    m_tabControl->removeTab(index);
    m_syncing = false;
}

void TAddForm::ViewSelectionChanged(TGridCardView* view)
{
    if (m_syncing)
        return;
    const int index = int(m_tabViews.indexOf(view));
    if (index != m_controller->ActiveTab())
        return;
    m_controller->SetSelection(view->selectedSourceRows());
    const int current = view->currentSourceRow();
    if (current != m_controller->Tab(index).Focused)
        m_controller->FocusCard(current);
    UpdateActions();
}

void TAddForm::SetThumbHeight(TGridCardView* view, int height)
{
    const int lineHeight = std::max(1, view->fontMetrics().lineSpacing());
    if (TGridColumn* thumb = view->columns()->byField(AddColumnField(acThumb)))
        thumb->setLines(std::max(2, int(std::lround(double(height) / lineHeight))));
}

void TAddForm::ApplySort()
{
    const TAddSort& sort = m_controller->Sort();
    QList<TGridView*> views{m_template};
    for (TGridCardView* view : std::as_const(m_tabViews))
        views << view;
    for (TGridView* view : views) {
        TGridColumns* columns = view->columns();
        columns->beginUpdate();
        columns->clearSort();
        for (qsizetype n = 0; n < sort.size(); ++n)
            if (TGridColumn* column = columns->byField(AddColumnField(sort[n].Column))) {
                column->setSortIndex(int(n));
                column->setSortOrder(sort[n].Order == Qt::AscendingOrder ? TGridSortOrder::Ascending
                                                                         : TGridSortOrder::Descending);
            }
        columns->endUpdate();
    }
}

// ---- The right pane and the status bar --------------------------------------------------------------

void TAddForm::ShowPane()
{
    const TAddPaneData& pane = m_controller->Pane();
    const int shown = m_slider->currentIndex();
    for (int n = 0; n < 4; ++n) {
        if (pane.Images[std::size_t(n)].isEmpty())
            m_slider->clearImage(n);
        else
            m_slider->setImageBytes(n, pane.Images[std::size_t(n)]);
    }
    if (shown < 0 || !m_slider->hasImage(shown))
        m_slider->showFirst();
    else
        m_slider->setCurrentIndex(shown);
    m_lPicType->setText(m_slider->currentIndex() < 0 ? QString()
                                                     : PictureKindText(quint8(m_slider->currentIndex() + 1)));
    const auto& rows = AddPaneRows();
    const QString description = GetText(u"cSF_Description"_s);
    m_vgData->setCategoryCaption(
        u"vgDataCategoryRowDesc"_s,
        pane.Caption.isEmpty() ? (description.isEmpty() ? u"Description"_s : description) : pane.Caption);
    for (int n = 0; n < cPaneRowCount; ++n) {
        const QString& name = rows[std::size_t(n)].Name;
        QVariant value = pane.Values[std::size_t(n)];
        if (n == vgDataEditorRowMint && pane.MintID)
            value = m_controller->FocusedAsset() ? m_controller->FocusedAsset()->MintName : value;
        m_vgData->setRowValue(name, value);
        m_vgData->setRowVisible(name, pane.Visible[std::size_t(n)]);
    }
    m_vgData->setCategoryVisible(u"vgDataCategoryRowDesc"_s, pane.DescriptionVisible());
}

void TAddForm::ShowProgress()
{
    const TAddProgress& progress = m_controller->Progress();
    m_progress->setVisible(progress.Visible);
    m_progress->setMaximum(std::max(progress.Maximum, 1));
    m_progress->setValue(progress.Maximum > 0 ? progress.Position : 0);
    m_progress->setFormat(progress.BarText);
    m_status->setText(progress.StatusText);
}

// ---- Advanced options --------------------------------------------------------------------------------

void TAddForm::ShowAdvancedOptions()
{
    ReadFilters();
    const QPoint below = m_edtSearch->mapToGlobal(QPoint(0, m_edtSearch->height()));
    m_advanced->adjustSize();
    m_advanced->move(layoutDirection() == Qt::RightToLeft
                         ? below + QPoint(m_edtSearch->width() - m_advanced->width(), 0)
                         : below);
    m_advanced->show();
}

void TAddForm::ReadFilters()
{
    TSearchFilters& f = m_controller->Filters;
    f.Keywords = m_edtSearch->text();
    auto flags = [](const QList<bool>& states) {
        QString text;
        for (bool on : states)
            text += on ? u'1' : u'0';
        return text;
    };
    f.Metals = flags(m_cbMetals->checkedStates());
    f.CoinTypes = flags(m_cbTypes->checkedStates());
    const QVariant mint = m_cbMint->currentData();
    f.MintID = mint.isNull() ? std::nullopt : std::optional<qint32>(mint.toInt());
    f.WeightFrom = m_seWeightFrom->value().toDouble();
    f.WeightTo = m_seWeightTo->value().toDouble();
    f.WeightUnit = m_cbWeightUnit->currentIndex() == cWeightUnitGrams ? cWeightUnitGrams : cWeightUnitOunces;
    f.YearFrom = m_seYearFrom->value().toInt();
    f.YearTo = m_seYearTo->value().toInt();
}

void TAddForm::WeightUnitChanged(int unit)
{
    // Only the display changes: the numbers stay as typed.
    const TNumberFormat format(unit == cWeightUnitGrams ? u"0.## g"_s : u"0.## oz"_s);
    for (TNumberEdit* edit : {m_seWeightFrom, m_seWeightTo}) {
        const QVariant value = edit->value();
        edit->setDisplayFormat(format);
        edit->setValue(value);
    }
}

void TAddForm::ClearAdvanced()
{
    for (TNumberEdit* edit : {m_seYearFrom, m_seYearTo, m_seWeightFrom, m_seWeightTo})
        edit->setValue(QVariant());
    m_cbMetals->setCheckedStates(QList<bool>(cMetalFlagPlaces, false));
    m_cbTypes->setCheckedStates(QList<bool>(cCoinTypeFlagPlaces, false));
    m_cbMint->setCurrentIndex(0);
    m_controller->ClearAdvancedOptions();
}

// ---- Enablement, opening and closing ------------------------------------------------------------------

void TAddForm::UpdateActions()
{
    if (!m_controller)
        return;
    for (const TAddCommandInfo& info : AddCommands())
        if (QAction* action = Action(info.Name))
            action->setEnabled(m_controller->Enabled(info.Command) || info.Command == TAddCommand::actHelp);
    m_btnSearch->setEnabled(Action(u"actSearch"_s)->isEnabled());
}

void TAddForm::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous())
        QCoreApplication::postEvent(this, new TPostedMessage(cMsgAddFormShown, QVariant(), nullptr));
}

bool TAddForm::event(QEvent* event)
{
    if (auto* message = dynamic_cast<TPostedMessage*>(event); message && message->Msg() == cMsgAddFormShown) {
        if (m_controller->Opened()) {
            if (TGridCardView* view = TabView(m_controller->ActiveTab()))
                view->setFocus();
        } else {
            m_edtSearch->setFocus();
        }
        return true;
    }
    return QDialog::event(event);
}

void TAddForm::closeEvent(QCloseEvent* event)
{
    m_controller->CloseQuery();
    m_controller->Close();
    QDialog::closeEvent(event);
}

void TAddForm::reject()
{
    m_controller->CloseQuery();
    m_controller->Close();
    QDialog::reject();
}

// ---- What the controller asks of the program ----------------------------------------------------------

QByteArray TAddForm::PlaceholderPicture(int metal, int coinType, bool front)
{
    return BlankPicture(metal, coinType, front);
}

int TAddForm::MintIDByName(const QString& name)
{
    return m_data ? m_data->MintIDByName(name) : -1;
}

QByteArray TAddForm::MintPicture(int mintID)
{
    return m_data ? m_data->MintLogoByID(mintID).toByteArray() : QByteArray();
}

bool TAddForm::ExecuteSortDialog(TAddSort& sort)
{
    return SortDialogRunner && SortDialogRunner(this, sort);
}

void TAddForm::ExecuteProxySettings()
{
    if (ProxySettingsRunner)
        ProxySettingsRunner(this);
}

bool TAddForm::TestConnection()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool online = TestInternetConnection();
    QApplication::restoreOverrideCursor();
    return online;
}
