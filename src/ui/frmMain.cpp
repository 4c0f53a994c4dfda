#include "frmMain.h"

#include "dmImages.h"
#include "dmInternalData.h"
#include "dmStyles.h"
#include "frmAbout.h"
#include "frmAdd.h"
#include "frmDBProperties.h"
#include "frmDebug.h"
#include "frmMainEditors.h"
#include "frmMainThumbs.h"
#include "uBackstagePage.h"
#include "uBackstageView.h"
#include "uCollectionPane.h"
#include "uDatasetTableModel.h"
#include "uDebugLog.h"
#include "uEditDataController.h"
#include "uGalleryView.h"
#include "uMainGlyphs.h"
#include "uObjs.h"
#include "uOptionsController.h"
#include "uQuickSearches.h"
#include "uRibbon.h"
#include "uRibbonButton.h"
#include "uRibbonGroup.h"
#include "uRibbonPage.h"
#include "uRibbonQuickAccessBar.h"
#include "uSplashText.h"
#include "uSpot.h"
#include "uZTLog.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QStatusBar>
#include <QStyle>
#include <QTableView>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

const std::array<const char16_t*, MetalCount> cSpotButtonNames = {
    u"btnSpotGold",      u"btnSpotSilver",  u"btnSpotPlatinum",
    u"btnSpotPalladium", u"btnSpotRhodium", u"btnSpotCopper",
};

// The platform's file dialogs for the database commands.
class TWidgetFileDialogs : public TFileDialogSeam
{
public:
    explicit TWidgetFileDialogs(QWidget* owner) : m_owner(owner) {}

    QString ExecuteOpenDialog(const TFileDialogRequest& request) override
    {
        return Execute(request, QFileDialog::AcceptOpen);
    }
    QString ExecuteSaveDialog(const TFileDialogRequest& request) override
    {
        return Execute(request, QFileDialog::AcceptSave);
    }

private:
    QString Execute(const TFileDialogRequest& request, QFileDialog::AcceptMode mode)
    {
        QFileDialog dialog(m_owner);
        dialog.setAcceptMode(mode);
        dialog.setFileMode(mode == QFileDialog::AcceptOpen ? QFileDialog::ExistingFile
                                                           : QFileDialog::AnyFile);
        dialog.setOption(QFileDialog::DontConfirmOverwrite, true);
        dialog.setNameFilters(DialogFilterToQt(request.Filter).split(u";;"_s));
        dialog.setDefaultSuffix(request.DefaultExt);
        if (!request.InitialDir.isEmpty()) {
            dialog.setDirectory(request.InitialDir);
        }
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
            return {};
        }
        return dialog.selectedFiles().constFirst();
    }

    QWidget* m_owner;
};

// The window's side of the controller: the add dialog, the item editor, the central view's
// selection and the clipboard.
class TWidgetWindowSeam : public TMainWindowSeam
{
public:
    TWidgetWindowSeam(TDM_InternalData& data, TCollectionPane*& views) : m_data(data), m_views(views) {}

    std::vector<std::unique_ptr<TMetalAsset>> ExecuteAddDialog(const TAddDialogRequest& request) override
    {
        return TAddForm::Execute(request.Mode, request.Tag, request.SearchText, request.AutoSearch, &m_data,
                                 QApplication::activeWindow());
    }
    void ExecuteItemEditor() override
    {
        if (!m_views || !m_views->ActiveModel()) {
            ShowItemEditor(m_data, m_views ? m_views->window() : nullptr);
            return;
        }
        // The editor walks the records in the order the active view shows them, and the view
        // follows the record the editor is on.
        const TCollectionView view = m_views->ActiveView();
        const TGridRowList rows(*m_views->ActiveModel());
        ShowItemEditor(m_data, m_views->window(), &rows,
                       [this, view](int record) { m_views->FocusRecord(view, record); });
    }
    QList<QVariant> SelectedKeys() override { return m_views ? m_views->SelectedKeys() : QList<QVariant>(); }
    std::optional<QString> FocusedCellText() override
    {
        return m_views ? m_views->FocusedCellText() : std::nullopt;
    }
    QString SelectedRecordsText() override { return m_views ? m_views->SelectedRecordsText() : QString(); }
    void SetClipboardText(const QString& text) override { QGuiApplication::clipboard()->setText(text); }

private:
    TDM_InternalData& m_data;
    TCollectionPane*& m_views;
};

QString Text(const QString& key, const QString& fallback)
{
    if (key.isEmpty()) {
        return fallback;
    }
    const QString text = GetText(key);
    return text.isEmpty() || text == key ? fallback : text;
}

} // namespace

TORVMainForm::TORVMainForm(TDM_InternalData& data, QWidget* parent)
    : QMainWindow(parent), m_data(data), m_platformDialogs(std::make_unique<TWidgetFileDialogs>(this)),
      m_controller(new TMainController(&data, m_platformDialogs.get(), this)),
      m_riseIcon(SpotGlyph(TSpotGlyph::Rise)), m_fallIcon(SpotGlyph(TSpotGlyph::Fall))
{
    setObjectName(u"ORVMainForm"_s);
    m_ownSeam = std::make_unique<TWidgetWindowSeam>(m_data, m_views);
    m_controller->SetWindowSeam(m_ownSeam.get());
    // The add dialog's connection settings are the options dialog's internet page.
    TAddForm::ProxySettingsRunner = [this](QWidget*) { OptionsExecute(TOptionsPage::ConnectionSettings); };
    m_controller->SetEventTarget(this);

    CreateActions();
    CreateMenus();
    CreateRibbon();
    CreateBackstage();
    CreateCentre();
    CreateStatusBar();
    ConnectActions();
    ConnectViews();

    // Theme first, then the general tab, then settings and layout, then the texts.
    ApplyTheme(ThemeIndex, ThemeColorSchemeAccentIndex);
    m_ribbon->setCurrentTab(u"rtGeneral"_s);
    ShowSplashText(GetText(u"cSSplashLoadingSettings"_s));
    move(MainFormLeft, MainFormTop);
    resize(MainFormWidth, MainFormHeight);
    m_maximized = MainFormMaximized;

    TranslateUI();

    SpotPrices().OnLoaded = [this](TSpotPrices*) { SpotPricesLoaded(); };

    connect(m_controller, &TMainController::DocumentNameChanged, this, &TORVMainForm::ShowDocumentName);
    connect(m_controller, &TMainController::DatabaseChanged, this, [this] {
        UpdateItemCount();
        UpdateActions();
    });
    connect(m_controller, &TMainController::CommandStateChanged, this,
            [this](const QString& name, const TCommandState& state) {
                if (QAction* action = m_actions.value(name)) {
                    action->setEnabled(state.Enabled);
                    if (action->isCheckable()) {
                        action->setChecked(state.Checked);
                    }
                }
            });
    connect(m_data.ADConnection, &TDBConnection::afterConnect, this, &TORVMainForm::UpdateActions);
    connect(m_data.ADConnection, &TDBConnection::afterDisconnect, this, [this] {
        UpdateActions();
        UpdateItemCount();
    });
    connect(m_data.qDS_Items, &TDBDataset::stateChanged, this, [this] {
        UpdateActions();
        UpdateItemCount();
    });
    connect(m_data.qDS_Items, &TDBDataset::afterReset, this, &TORVMainForm::UpdateItemCount);
    connect(m_data.qDS_Items, &TDBDataset::afterInsertRow, this, &TORVMainForm::UpdateItemCount);
    connect(m_data.qDS_Items, &TDBDataset::afterRemoveRow, this, &TORVMainForm::UpdateItemCount);
    m_controller->UpdateWhenIdle();
    UpdateActions();
    UpdateItemCount();
}

TORVMainForm::~TORVMainForm()
{
    SpotPrices().OnLoaded = nullptr;
    TAddForm::ProxySettingsRunner = nullptr;
}

void TORVMainForm::SetFileDialogs(TFileDialogSeam* dialogs)
{
    m_controller->SetFileDialogs(dialogs ? dialogs : m_platformDialogs.get());
}

void TORVMainForm::SetWindowSeam(TMainWindowSeam* seam)
{
    m_controller->SetWindowSeam(seam ? seam : m_ownSeam.get());
}

QToolButton* TORVMainForm::SpotButton(int metal) const
{
    if (metal < 0 || metal >= MetalCount) {
        return nullptr;
    }
    return m_spotButtons[static_cast<std::size_t>(metal)];
}

QIcon TORVMainForm::SpotGlyphIcon(TSpotGlyph glyph) const
{
    return glyph == TSpotGlyph::Fall ? m_fallIcon : m_riseIcon;
}

QAction* TORVMainForm::MakeAction(const QString& name)
{
    auto* action = new QAction(this);
    action->setObjectName(name);
    action->setIcon(CommandGlyph(name, style()));
    return action;
}

void TORVMainForm::CreateActions()
{
    m_viewGroup = new QActionGroup(this);
    m_viewGroup->setExclusive(true);
    for (const TMainCommandDef& def : MainCommands()) {
        QAction* action = MakeAction(def.Name);
        action->setText(def.DefaultText);
        if (!def.Shortcut.isEmpty()) {
            action->setShortcut(QKeySequence(def.Shortcut, QKeySequence::PortableText));
            action->setShortcutContext(Qt::WindowShortcut);
        }
        if (def.Checked != TCheckRule::None) {
            action->setCheckable(true);
            action->setChecked(def.Checked == TCheckRule::User ? def.InitiallyChecked : false);
        }
        if (def.Checked == TCheckRule::ActiveView) {
            m_viewGroup->addAction(action);
        }
        addAction(action);
        m_actions.insert(def.Name, action);
    }
    m_btnAddDropDown = MakeAction(u"btnAddDropDown"_s);
    m_btnEditDropDown = MakeAction(u"btnEditDropDown"_s);
    m_btnFilterQuick = MakeAction(u"btnFilterQuick"_s);
    m_btnLanguage = MakeAction(u"btnLanguage"_s);
    m_btnLanguage->setIcon(QIcon());
    m_btnBackstageStats = MakeAction(u"btnBackstageStats"_s);
    m_btnBackstageStats->setIcon(CommandGlyph(u"actStats"_s, style()));
    m_btnBackstageOptions = MakeAction(u"btnBackstageOptions"_s);
    m_btnBackstageOptions->setIcon(CommandGlyph(u"actOptions"_s, style()));
    m_btnBackstageQuit = MakeAction(u"btnBackstageQuit"_s);
    m_btnBackstageQuit->setIcon(CommandGlyph(u"actExit"_s, style()));
}

void TORVMainForm::ConnectActions()
{
    auto on = [this](const char16_t* name, auto&& slot) {
        connect(Action(QString::fromUtf16(name)), &QAction::triggered, this, slot);
    };
    on(u"actDBNew", [this] { m_controller->DBNew(); });
    on(u"actDBOpen", [this] { m_controller->DBOpen(); });
    on(u"actDBSaveAs", [this] { m_controller->DBSaveAs(); });
    on(u"actDBProperties", [this] { DBPropertiesExecute(); });
    on(u"actExit", [this] { close(); });
    on(u"actAbout", [this] { AboutExecute(); });
    on(u"actOptions", [this] { OptionsExecute(TOptionsPage::General); });
    on(u"actAdd", [this] { m_controller->Add(); });
    on(u"actAddManually", [this] { m_controller->AddManually(); });
    on(u"actEdit", [this] { m_controller->Edit(); });
    ConnectMintsCommands(m_data, this, Action(u"actEditMints"_s));
    on(u"actRemoveSelected", [this] { m_controller->RemoveSelected(); });
    on(u"actRefresh", [this] { m_controller->Refresh(); });
    on(u"actRefreshSpot", [] { SpotPrices().Refresh(); });
    on(u"actRegenerateThumbs",
       [this] { RegenerateThumbs(m_data, this, [this] { m_views->ReloadPictures(); }); });
    if (DataModuleImages()) { // the mint lookup's button runs the window's command
        connect(DataModuleImages()->actEditMints(), &QAction::triggered, Action(u"actEditMints"_s),
                &QAction::trigger);
    }
    on(u"actCopyToClipboard", [this] { m_controller->CopyToClipboard(); });
    on(u"actFlipACoin", [this] { m_controller->FlipACoin(); });
    on(u"actSelectAll", [this] { m_views->SelectAll(); });
    on(u"actClearSelection", [this] { m_views->ClearSelection(); });
    on(u"actApplyBestFit", [this] { m_views->ApplyBestFit(); });
    on(u"actTableViewShowHorScroll", [this](bool checked) {
        m_views->SetShowHorScroll(checked);
        m_controller->SetColumnAutoWidth(m_views->ColumnAutoWidth());
    });
    for (const TMainCommandDef& def : MainCommands()) {
        if (def.Checked == TCheckRule::ActiveView) {
            const TGridView view = def.View;
            connect(m_actions.value(def.Name), &QAction::triggered, this,
                    [this, view] { m_controller->SetActiveView(view); });
        } else if (def.Checked == TCheckRule::User) {
            const QString name = def.Name;
            connect(m_actions.value(def.Name), &QAction::toggled, this,
                    [this, name](bool checked) { m_controller->SetUserChecked(name, checked); });
        }
    }
    connect(m_btnAddDropDown, &QAction::triggered, Action(u"actAdd"_s), &QAction::trigger);
    connect(m_btnEditDropDown, &QAction::triggered, Action(u"actEdit"_s), &QAction::trigger);
    connect(m_btnBackstageStats, &QAction::triggered, Action(u"actStats"_s), &QAction::trigger);
    connect(m_btnBackstageOptions, &QAction::triggered, Action(u"actOptions"_s), &QAction::trigger);
    connect(m_btnBackstageQuit, &QAction::triggered, Action(u"actExit"_s), &QAction::trigger);
    // The drop-down buttons follow what they run.
    connect(Action(u"actAdd"_s), &QAction::enabledChanged, m_btnAddDropDown, &QAction::setEnabled);
    connect(Action(u"actEdit"_s), &QAction::enabledChanged, m_btnEditDropDown, &QAction::setEnabled);
    connect(Action(u"actStats"_s), &QAction::enabledChanged, m_btnBackstageStats, &QAction::setEnabled);
}

void TORVMainForm::CreateMenus()
{
    m_pmAdd = new QMenu(this);
    m_pmAdd->setObjectName(u"pmAdd"_s);
    m_pmAdd->addAction(Action(u"actAdd"_s));
    m_pmAdd->addAction(Action(u"actAddManually"_s));

    m_pmEditSelected = new QMenu(this);
    m_pmEditSelected->setObjectName(u"pmEditSelected"_s);
    m_pmEditSelected->addSeparator()->setObjectName(u"sepEdit"_s);
    m_pmEditSelected->addAction(Action(u"actEdit"_s));
    m_pmEditSelected->addSeparator()->setObjectName(u"sepMultiEdit"_s);
    m_pmEditSelected->addAction(Action(u"actMultiEdit"_s));

    m_pmFilterQuick = new QMenu(this);
    m_pmFilterQuick->setObjectName(u"pmFilterQuick"_s);
    m_sepFilterByMetal = m_pmFilterQuick->addSection(QString());
    m_sepFilterByMetal->setObjectName(u"sepFilterByMetal"_s);
    for (const char16_t* name : {u"actFilterGold", u"actFilterSilver", u"actFilterPlatinum",
                                 u"actFilterPalladium", u"actFilterRhodium", u"actFilterCopper"}) {
        m_pmFilterQuick->addAction(Action(QString::fromUtf16(name)));
    }
    m_sepFilterByType = m_pmFilterQuick->addSection(QString());
    m_sepFilterByType->setObjectName(u"sepFilterByType"_s);
    m_pmFilterQuick->addAction(Action(u"actFilterCoins"_s));
    m_pmFilterQuick->addAction(Action(u"actFilterBars"_s));

    // The thumb size list: shows Medium at every start; a choice is written to ThumbSize.
    m_pmThumbSize = new QMenu(this);
    m_pmThumbSize->setObjectName(u"pmThumbSize"_s);
    m_thumbSizeGroup = new QActionGroup(this);
    for (int index = 0; index < 3; ++index) {
        QAction* item = m_pmThumbSize->addAction(QString());
        item->setCheckable(true);
        item->setChecked(index == TMainController::ThumbSizeListIndex());
        m_thumbSizeGroup->addAction(item);
        connect(item, &QAction::triggered, this, [this, index] { m_controller->ChooseThumbSize(index); });
        m_thumbSizeItems << item;
    }

    m_pmGrid = new QMenu(this);
    m_pmGrid->setObjectName(u"pmGrid"_s);
    m_pmGrid->addAction(Action(u"actCopyToClipboard"_s));
    m_pmGrid->addSeparator();
    QAction* add = m_pmGrid->addMenu(m_pmAdd);
    add->setIcon(m_btnAddDropDown->icon());
    connect(m_btnAddDropDown, &QAction::changed, add, [this, add] {
        add->setText(m_btnAddDropDown->text());
        add->setEnabled(m_btnAddDropDown->isEnabled());
    });
    QAction* edit = m_pmGrid->addMenu(m_pmEditSelected);
    edit->setIcon(m_btnEditDropDown->icon());
    connect(m_btnEditDropDown, &QAction::changed, edit, [this, edit] {
        edit->setText(m_btnEditDropDown->text());
        edit->setEnabled(m_btnEditDropDown->isEnabled());
    });
    m_pmGrid->addAction(Action(u"actRemoveSelected"_s));
    m_pmGrid->addSeparator();
    m_pmGrid->addAction(Action(u"actSelectAll"_s));
    m_pmGrid->addAction(Action(u"actClearSelection"_s));
    m_pmGrid->addSeparator();
    m_pmGrid->addAction(Action(u"actExpandAll"_s));
    m_pmGrid->addAction(Action(u"actCollapseAll"_s));
    m_pmGrid->addSeparator();
    m_pmGrid->addAction(Action(u"actSortData"_s));
    m_pmGrid->addAction(Action(u"actCustomizeColumns"_s));

    m_mnuLanguage = new QMenu(this);
    m_mnuLanguage->setObjectName(u"mnuLanguage"_s);
    m_languageGroup = new QActionGroup(this);
    m_languageGroup->setExclusive(true);
    connect(m_mnuLanguage, &QMenu::aboutToShow, this, &TORVMainForm::FillLanguageMenu);
}

void TORVMainForm::CreateRibbon()
{
    m_ribbon = new TRibbon(this);
    m_ribbon->setObjectName(u"Ribbon"_s);
    m_ribbon->setUpdatesWindowTitle(true);
    setMenuWidget(m_ribbon);
    using S = TRibbonItemSize;

    TRibbonPage* general = m_ribbon->addTab(u"rtGeneral"_s, u"General"_s);
    TRibbonGroup* actions = general->addGroup(u"BarActions"_s, QString());
    actions->addDropDownButton(m_btnAddDropDown, m_pmAdd, S::Large, true)->setObjectName(u"btnAddDropDown"_s);
    actions->addButton(Action(u"actRemoveSelected"_s))->setObjectName(u"btnRemove"_s);
    actions->addDropDownButton(m_btnEditDropDown, m_pmEditSelected, S::Large, true)
        ->setObjectName(u"btnEditDropDown"_s);
    actions->addButton(Action(u"actRefresh"_s))->setObjectName(u"btnRefresh"_s);
    actions->addButton(Action(u"actStats"_s))->setObjectName(u"btnStats"_s);
    TRibbonGroup* views = general->addGroup(u"BarCurrentView"_s, QString());
    views->addButton(Action(u"actViewCards"_s))->setObjectName(u"btnViewCards"_s);
    views->addButton(Action(u"actViewThumbs"_s))->setObjectName(u"btnViewThumbs"_s);
    views->addButton(Action(u"actViewTable"_s))->setObjectName(u"btnViewTable"_s);
    views->addButton(Action(u"actViewShelve"_s))->setObjectName(u"btnViewShelve"_s);
    views->addButton(Action(u"actViewROI"_s))->setObjectName(u"btnViewQuickStats"_s);
    TRibbonGroup* filter = general->addGroup(u"BarFilterBy"_s, QString());
    filter->setCaptionAction(Action(u"actAdvSearch"_s));
    filter->addDropDownButton(m_btnFilterQuick, m_pmFilterQuick, S::Medium)
        ->setObjectName(u"btnFilterQuick"_s);
    filter->addButton(Action(u"actQuickSearch"_s), S::Medium)->setObjectName(u"btnQuickSearch"_s);
    filter->addButton(Action(u"actAdvSearch"_s), S::Medium)->setObjectName(u"btnAdvancedSearch"_s);
    filter->addButton(Action(u"actCustomizeColumns"_s), S::Large)->setObjectName(u"btnCustomizeColumns"_s);
    TRibbonGroup* sorting = general->addGroup(u"BarSorting"_s, QString());
    sorting->setCaptionAction(Action(u"actSortData"_s));
    sorting->addButton(Action(u"actSortAsc"_s), S::Medium)->setObjectName(u"btnSortAsc"_s);
    sorting->addButton(Action(u"actSortDesc"_s), S::Medium)->setObjectName(u"btnSortDesc"_s);
    sorting->addButton(Action(u"actSortData"_s), S::Large)->setObjectName(u"btnSort"_s);

    TRibbonPage* view = m_ribbon->addTab(u"rtView"_s, u"View"_s);
    TRibbonGroup* barView = view->addGroup(u"BarView"_s, QString());
    barView->addButton(Action(u"actFlipACoin"_s));
    barView->addDropDownButton(Action(u"actThumbSize"_s), m_pmThumbSize, S::Large)
        ->setObjectName(u"btnThumbSize"_s);
    barView->addDropDownButton(m_btnLanguage, m_mnuLanguage, S::Large)->setObjectName(u"btnLanguage"_s);
    TRibbonGroup* dictionaries = view->addGroup(u"BarDictionary"_s, QString());
    dictionaries->addButton(Action(u"actEditMints"_s));

    TRibbonPage* db = m_ribbon->addTab(u"rtDBMgmt"_s, QString());
    TRibbonGroup* barDB = db->addGroup(u"BarDBMgmt"_s, QString());
    const std::pair<const char16_t*, const char16_t*> dbButtons[] = {
        {u"actDBNew", u"btnDBNew"},
        {u"actDBOpen", u"btnDBOpen"},
        {u"actDBSaveAs", u"btnDBSaveAs"},
        {u"actRegenerateThumbs", u"btnRegenerateThumbs"},
        {u"actSplitMerge", u"btnSplitMerge"},
        {u"actFindDuplicates", u"btnFindDuplicates"},
        {u"actDBProperties", u"btnDBProperties"},
    };
    for (const auto& [action, button] : dbButtons) {
        barDB->addButton(Action(QString::fromUtf16(action)))->setObjectName(QString::fromUtf16(button));
    }

    TRibbonPage* print = m_ribbon->addTab(u"rtPrint"_s, QString());
    TRibbonGroup* barPrint = print->addGroup(u"BarPrint"_s, QString());
    barPrint->addButton(Action(u"actPrintPreview"_s))->setObjectName(u"btnPrintPreview"_s);
    barPrint->addButton(Action(u"actPrint"_s))->setObjectName(u"btnPrint"_s);
    barPrint->addButton(Action(u"actPrintQuick"_s))->setObjectName(u"btnPrintQuick"_s);
    TRibbonGroup* barExport = print->addGroup(u"BarExport"_s, QString());
    const std::pair<const char16_t*, const char16_t*> exports[] = {
        {u"actExportHTML", u"btnExportHTML"},   {u"actExportCSV", u"btnExportCSV"},
        {u"actExportExcel", u"btnExportExcel"}, {u"actExportPDF", u"btnExportPDF"},
        {u"actExportTxt", u"btnExportText"},    {u"actExportXML", u"btnExportXML"},
    };
    for (const auto& [action, button] : exports) {
        barExport->addButton(Action(QString::fromUtf16(action)))->setObjectName(QString::fromUtf16(button));
    }

    TRibbonQuickAccessBar* quick = m_ribbon->quickAccessBar();
    quick->setObjectName(u"BarQuickAccess"_s);
    quick->addAction(Action(u"actOptions"_s))->setObjectName(u"btnOptions"_s);
    quick->addAction(Action(u"actStats"_s));
    quick->addAction(Action(u"actAbout"_s));
}

void TORVMainForm::CreateBackstage()
{
    m_backstage = new TBackstageView(this);
    m_backstage->setObjectName(u"RibbonBackstageView"_s);

    // The add page: a search and the gallery of popular coins and bars.
    TBackstagePage* add = m_backstage->addPage(u"tsAdd"_s, QString());
    m_lBackstageSearchTop = new QLabel(add);
    m_lBackstageSearchTop->setObjectName(u"lBackstageSearchTop"_s);
    add->contentLayout()->addWidget(m_lBackstageSearchTop);
    auto* searchRow = new QHBoxLayout();
    m_edtBackstageSearch = new QLineEdit(add);
    m_edtBackstageSearch->setObjectName(u"edtBackstageSearch"_s);
    m_edtBackstageSearch->setClearButtonEnabled(true);
    m_edtBackstageSearch->setMinimumWidth(360);
    m_btnBackstageSearch = new QPushButton(add);
    m_btnBackstageSearch->setObjectName(u"btnBackstageSearch"_s);
    searchRow->addWidget(m_edtBackstageSearch, 1);
    searchRow->addWidget(m_btnBackstageSearch);
    add->contentLayout()->addLayout(searchRow);
    m_lBackstageSearchBottom = new QLabel(add);
    m_lBackstageSearchBottom->setObjectName(u"lBackstageSearchBottom"_s);
    add->contentLayout()->addWidget(m_lBackstageSearchBottom);
    m_galleryAdd = new TGalleryView(add);
    m_galleryAdd->setObjectName(u"BackstageGalleryAdd"_s);
    m_galleryAdd->setPictureSize(QSize(100, 100));
    const QList<TBackstageGalleryGroup>& groups = BackstageGalleryGroups();
    for (const TBackstageGalleryGroup& group : groups) {
        m_galleryAdd->addGroup(group.Name, group.DefaultText);
        for (const TBackstageGalleryItem& item : group.Items) {
            m_galleryAdd->addItem(group.Name, group.Name + u'_' + QString::number(item.Tag), item.Caption,
                                  GalleryPicture(group.Mode, item.Caption), item.Tag);
        }
    }
    add->contentLayout()->addWidget(m_galleryAdd, 1);
    connect(m_galleryAdd, &TGalleryView::itemClicked, this,
            [this](const QString& group, const QString&, int tag) {
                const QList<TBackstageGalleryGroup>& all = BackstageGalleryGroups();
                int index = -1;
                for (qsizetype n = 0; n < all.size(); ++n) {
                    if (all.at(n).Name == group) {
                        index = int(n);
                    }
                }
                m_controller->BackstageGalleryClicked(index, tag);
            });
    auto search = [this] { m_controller->BackstageSearch(m_edtBackstageSearch->text()); };
    connect(m_btnBackstageSearch, &QPushButton::clicked, this, search);
    connect(m_edtBackstageSearch, &QLineEdit::returnPressed, this, search);

    // The database page: its items run the same-named actions and close the menu.
    TBackstagePage* dbPage = m_backstage->addPage(u"tsDatabaseManagement"_s, QString());
    m_galleryDB = new TGalleryView(dbPage);
    m_galleryDB->setObjectName(u"rgDBMgmt"_s);
    m_galleryDB->setPictureSize(QSize(32, 32));
    m_galleryDB->addGroup(u"rgDBMgmt"_s, QString());
    const std::pair<const char16_t*, const char16_t*> dbItems[] = {
        {u"rgDBMgmtItemNewDB", u"actDBNew"},           {u"rgDBMgmtItemOpenDB", u"actDBOpen"},
        {u"rgDBMgmtItemSaveAs", u"actDBSaveAs"},       {u"rgDBMgmtItemDBProperties", u"actDBProperties"},
        {u"rgDBMgmtItemSplitMerge", u"actSplitMerge"}, {u"rgDBMgmtItemFindDuplicates", u"actFindDuplicates"},
    };
    for (const auto& [item, action] : dbItems) {
        m_galleryDB->addActionItem(u"rgDBMgmt"_s, Action(QString::fromUtf16(action)), 0,
                                   QString::fromUtf16(item));
    }
    connect(m_galleryDB, &TGalleryView::itemClicked, this,
            [this](const QString&, const QString&, int) { m_controller->BackstageDatabaseItemDone(); });
    dbPage->contentLayout()->addWidget(m_galleryDB, 1);

    // The export page: its items leave the menu open.
    TBackstagePage* exportPage = m_backstage->addPage(u"tsExportAndPrinting"_s, QString());
    m_galleryExport = new TGalleryView(exportPage);
    m_galleryExport->setObjectName(u"rgExportAndPrint"_s);
    m_galleryExport->setPictureSize(QSize(32, 32));
    m_galleryExport->addGroup(u"rgExport"_s, QString());
    m_galleryExport->addGroup(u"rgPrint"_s, QString());
    const std::tuple<const char16_t*, const char16_t*, const char16_t*> exportItems[] = {
        {u"rgExport", u"rgExportItemPDF", u"actExportPDF"},
        {u"rgExport", u"rgExportItemXLS", u"actExportExcel"},
        {u"rgExport", u"rgExportItemHTML", u"actExportHTML"},
        {u"rgExport", u"rgExportItemCSV", u"actExportCSV"},
        {u"rgExport", u"rgExportItemTXT", u"actExportTxt"},
        {u"rgExport", u"rgExportItemXML", u"actExportXML"},
        {u"rgPrint", u"rgPrintItemPreview", u"actPrintPreview"},
        {u"rgPrint", u"rgPrintItemPrint", u"actPrint"},
        {u"rgPrint", u"rgPrintItemQuickPrint", u"actPrintQuick"},
    };
    for (const auto& [group, item, action] : exportItems) {
        m_galleryExport->addActionItem(QString::fromUtf16(group), Action(QString::fromUtf16(action)), 0,
                                       QString::fromUtf16(item));
    }
    exportPage->contentLayout()->addWidget(m_galleryExport, 1);

    m_backstage->addButton(m_btnBackstageStats);
    m_backstage->addButton(m_btnBackstageOptions);
    m_backstage->addButton(m_btnBackstageQuit);
    connect(m_backstage, &TBackstageView::aboutToShow, this, &TORVMainForm::BackstageAboutToShow);
    m_ribbon->setBackstage(m_backstage);
}

void TORVMainForm::BackstageAboutToShow()
{
    const TBackstageState state = m_controller->BackstageOpened();
    m_backstage->setPageEnabled(u"tsAdd"_s, state.AddEnabled);
    m_backstage->setPageEnabled(u"tsDatabaseManagement"_s, state.DatabaseEnabled);
    m_backstage->setPageEnabled(u"tsExportAndPrinting"_s, state.ExportEnabled);
    m_btnBackstageStats->setEnabled(state.StatsEnabled);
    m_backstage->setActivePage(state.ActivePage);
}

void TORVMainForm::ShowBackstage()
{
    m_backstage->showBackstage();
}

void TORVMainForm::CreateCentre()
{
    CreateViews();
}

void TORVMainForm::UpdateSelection()
{
    m_controller->SetSelectedRecordCount(m_views->SelectedCount());
}

void TORVMainForm::CreateStatusBar()
{
    m_barSpot = new QToolBar(this);
    m_barSpot->setObjectName(u"BarSpot"_s);
    m_barSpot->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_barSpot->setIconSize(QSize(16, 16));
    m_lSpotPrices = new QLabel(m_barSpot);
    m_lSpotPrices->setObjectName(u"lSpotPrices"_s);
    m_barSpot->addWidget(m_lSpotPrices);
    for (int metal = 0; metal < MetalCount; ++metal) {
        auto* button = new QToolButton(m_barSpot);
        button->setObjectName(QString::fromUtf16(cSpotButtonNames[static_cast<std::size_t>(metal)]));
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setAutoRaise(true);
        connect(button, &QToolButton::clicked, Action(u"actRefreshSpot"_s), &QAction::trigger);
        m_barSpot->addWidget(button);
        m_spotButtons[static_cast<std::size_t>(metal)] = button;
    }
    statusBar()->addWidget(m_barSpot);
    auto* spacer = new QWidget(this);
    spacer->setObjectName(u"StatusBarSpacer"_s);
    spacer->setMinimumWidth(100);
    statusBar()->addWidget(spacer, 1);

    m_barViews = new QToolBar(this);
    m_barViews->setObjectName(u"BarCurrentViewStatusBar"_s);
    m_barViews->setIconSize(QSize(16, 16));
    for (const char16_t* name :
         {u"actViewCards", u"actViewThumbs", u"actViewTable", u"actViewShelve", u"actViewROI"}) {
        m_barViews->addAction(Action(QString::fromUtf16(name)));
    }
    statusBar()->addPermanentWidget(m_barViews);

    m_lItems = new QLabel(this);
    m_lItems->setObjectName(u"lItems"_s);
    m_lItems->setAlignment(Qt::AlignCenter);
    m_lItems->setFrameShape(QFrame::Panel);
    m_lItems->setFrameShadow(QFrame::Raised);
    m_lItems->setMinimumWidth(355);
    m_lItems->setProperty("panel", u"BarTotalOz"_s);
    statusBar()->addPermanentWidget(m_lItems);
}

void TORVMainForm::ApplyTheme(int themeIndex, int accentIndex)
{
    const TThemeLook look = TDM_Styles::ApplyTheme(themeIndex, accentIndex, m_ribbon);
    m_ribbon->setColoredTabRow(look.Row.Scheme == TColorScheme::Colorful);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, look.WindowBackground);
    setPalette(palette);
}

void TORVMainForm::TranslateUI()
{
    ShowSplashText(GetText(u"cSSplashLoadingTexts"_s));
    setUpdatesEnabled(false);

    const Qt::LayoutDirection direction = LanguageIsRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
    QGuiApplication::setLayoutDirection(direction);
    setLayoutDirection(direction);

    m_data.TranslateFieldLabels();
    if (DataModuleImages()) {
        DataModuleImages()->TranslateRepository();
    }

    for (const TMainCommandDef& def : MainCommands()) {
        QAction* action = m_actions.value(def.Name);
        action->setText(Text(def.TextKey, def.DefaultText));
        action->setToolTip(action->text().remove(u'&'));
    }
    m_btnAddDropDown->setText(Text(u"cSMainactAdd"_s, u"Add"_s));
    m_btnEditDropDown->setText(Text(u"cSMainactEdit"_s, u"Edit focused item"_s));
    m_btnFilterQuick->setText(Text(u"cSMainQuickFilter"_s, u"Quick filter"_s));
    m_btnLanguage->setText(Text(u"cSOptionsLanguage"_s, u"Language"_s));
    m_mnuLanguage->setTitle(m_btnLanguage->text());
    m_sepFilterByMetal->setText(Text(u"cSMainsepFilterByMetal"_s, u"Filter by metal"_s));
    m_sepFilterByType->setText(Text(u"cSMainsepFilterByType"_s, u"Filter by type"_s));
    const QStringList sizes = {Text(u"cSMainactThumbSizeSmall"_s, u"Small"_s),
                               Text(u"cSMainactThumbSizeMedium"_s, u"Medium"_s),
                               Text(u"cSMainactThumbSizeLarge"_s, u"Large"_s)};
    for (qsizetype n = 0; n < m_thumbSizeItems.size(); ++n) {
        m_thumbSizeItems.at(n)->setText(sizes.at(n));
    }

    m_ribbon->setTabCaption(u"rtGeneral"_s, Text(u"cSMainTSGeneral"_s, u"General"_s));
    m_ribbon->setTabCaption(u"rtView"_s, Text(u"cSMainTSView"_s, u"View"_s));
    m_ribbon->setTabCaption(u"rtDBMgmt"_s, Text(u"cSMainTSDBMGMT"_s, u"Database management"_s));
    m_ribbon->setTabCaption(u"rtPrint"_s, Text(u"cSMainTSExport"_s, u"Export and printing"_s));
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, const char16_t*> groups[] = {
        {u"rtGeneral", u"BarActions", u"cSMainBarActions", u"Actions"},
        {u"rtGeneral", u"BarCurrentView", u"cSMainBarCurrentView", u"Current view"},
        {u"rtGeneral", u"BarFilterBy", u"cSMainBarFilter", u"Filter"},
        {u"rtGeneral", u"BarSorting", u"cSAddDlgBarSorting", u"Sorting"},
        {u"rtView", u"BarView", u"cSMainBarView", u"View"},
        {u"rtView", u"BarDictionary", u"cSMainBarDictionaries", u"Dictionaries"},
        {u"rtDBMgmt", u"BarDBMgmt", u"cSMainTSDBMGMT", u"Database management"},
        {u"rtPrint", u"BarPrint", u"cSMainBarPrint", u"Print"},
        {u"rtPrint", u"BarExport", u"cSMainBarExport", u"Export"},
    };
    for (const auto& [tab, group, key, text] : groups) {
        if (TRibbonPage* page = m_ribbon->tab(QString::fromUtf16(tab))) {
            if (auto* g = page->findChild<TRibbonGroup*>(QString::fromUtf16(group))) {
                g->setCaption(Text(QString::fromUtf16(key), QString::fromUtf16(text)));
            }
        }
    }

    m_backstage->setPageTitle(u"tsAdd"_s, Text(u"cSMainactAdd"_s, u"Add"_s));
    m_backstage->setPageTitle(u"tsDatabaseManagement"_s, Text(u"cSMainTSDBMGMT"_s, u"Database management"_s));
    m_backstage->setPageTitle(u"tsExportAndPrinting"_s, Text(u"cSMainTSExport"_s, u"Export and printing"_s));
    m_btnBackstageStats->setText(Text(u"cSMainactStats"_s, u"Statistics"_s));
    m_btnBackstageOptions->setText(Text(u"cSMainactOptions"_s, u"Options"_s));
    m_btnBackstageQuit->setText(Text(u"cSMainactExit"_s, u"Quit application"_s));
    m_lBackstageSearchTop->setText(Text(u"cSAddDlgactSearch"_s, u"Search"_s));
    m_btnBackstageSearch->setText(Text(u"cSAddDlgactSearch"_s, u"Search"_s));
    m_edtBackstageSearch->setPlaceholderText(
        Text(u"cSAddDlgedtSearchNULL"_s, u"Search keywords (e.g. Maple Leaf 2019 1/10 oz)"_s));
    m_lBackstageSearchBottom->setText(
        Text(u"cSMainBackstageBottomLabel"_s, u"or select one of most popular coins or bars below"_s));
    for (const TBackstageGalleryGroup& group : BackstageGalleryGroups()) {
        m_galleryAdd->setGroupCaption(group.Name, Text(group.TextKey, group.DefaultText));
    }
    m_galleryExport->setGroupCaption(u"rgExport"_s, Text(u"cSMainBarExport"_s, u"Export"_s));
    m_galleryExport->setGroupCaption(u"rgPrint"_s, Text(u"cSMainBarPrint"_s, u"Print"_s));
    m_galleryDB->setGroupCaption(u"rgDBMgmt"_s, Text(u"cSMainTSDBMGMT"_s, u"Database management"_s));

    m_barViews->setWindowTitle(Text(u"cSMainBarCurrentView"_s, u"Current view"_s));
    m_lSpotPrices->setText(Text(u"cSMainlSpotPrices"_s, u"Spot prices"_s) + u' ');
    // Buttons that have shown no price yet keep the metal's name; the others follow the list.
    for (int metal = 0; metal < MetalCount; ++metal) {
        if (!m_spotShown[static_cast<std::size_t>(metal)]) {
            m_spotButtons[static_cast<std::size_t>(metal)]->setText(MetalDisplayName(metal));
        }
    }
    ApplySpotButtons();
    FillLanguageMenu();
    TranslateViews();
    UpdateItemCount();
    ShowDocumentName(m_controller->DocumentName());

    setUpdatesEnabled(true);
}

void TORVMainForm::FillLanguageMenu()
{
    m_mnuLanguage->clear();
    const QList<QAction*> old = m_languageGroup->actions();
    for (QAction* action : old) {
        m_languageGroup->removeAction(action);
        action->deleteLater();
    }
    const QString current = CurrentLanguage();
    for (const TLang& language : ListLanguages()) {
        auto* action = new QAction(language.Name, m_languageGroup);
        action->setData(language.FileName);
        action->setCheckable(true);
        action->setChecked(language.FileName.compare(current, Qt::CaseInsensitive) == 0);
        action->setIcon(QIcon(QPixmap::fromImage(language.FlagPicture())));
        const QString fileName = language.FileName;
        connect(action, &QAction::triggered, this, [this, fileName] { SwitchLanguage(fileName); });
        m_mnuLanguage->addAction(action);
    }
}

bool TORVMainForm::SwitchLanguage(const QString& fileName)
{
    if (!LoadLanguage(fileName)) {
        return false;
    }
    TranslateUI();
    return true;
}

void TORVMainForm::UpdateActions()
{
    m_controller->UpdateActions();
}

void TORVMainForm::SpotPricesLoaded()
{
    ApplySpotButtons();
    m_controller->RefreshItemsForNewPrices();
}

void TORVMainForm::ApplySpotButtons()
{
    m_barSpot->setUpdatesEnabled(false);
    for (int metal = 0; metal < MetalCount; ++metal) {
        const std::optional<TSpotButtonText> text = SpotButtonTextFor(SpotPrices(), metal, Currency);
        if (!text) {
            continue;
        }
        QToolButton* button = m_spotButtons[static_cast<std::size_t>(metal)];
        button->setText(text->Caption);
        button->setToolTip(text->Hint);
        button->setIcon(SpotGlyphIcon(text->Glyph));
        m_spotShown[static_cast<std::size_t>(metal)] = true;
    }
    m_barSpot->setUpdatesEnabled(true);
}

void TORVMainForm::ShowDocumentName(const QString& name)
{
    const QString product = OEMInfo.Product;
    m_ribbon->setApplicationName(product);
    m_ribbon->setDocumentName(name);
    if (name.isEmpty()) {
        setWindowTitle(product);
    } else if (product.isEmpty()) {
        setWindowTitle(name);
    } else {
        setWindowTitle(name + u" - "_s + product);
    }
}

void TORVMainForm::UpdateItemCount()
{
    // While the rows of the collection are still to come, say so rather than that there are none.
    if (m_controller->ItemsPending()) {
        m_lItems->setText(GetText(u"cSSplashLoadingData"_s));
        return;
    }
    const int count = m_controller->ItemCount();
    m_lItems->setText(count > 0 ? QLocale().toString(count) : GetText(u"cSNoDataToDisplay"_s));
}

void TORVMainForm::DBPropertiesExecute()
{
    TDBPropertiesForm form(m_data, this);
    form.exec();
}

void TORVMainForm::AboutExecute()
{
    TAboutForm form(this);
    form.exec();
}

void TORVMainForm::FormShow()
{
    if (DebugMode.load()) {
        auto* sink = new TDebugLogSink(this);
        sink->ShowForm();
    }
    setWindowState(m_maximized ? (windowState() | Qt::WindowMaximized)
                               : (windowState() & ~Qt::WindowMaximized));
    m_controller->StartFirstSpotRefresh();
    // The file is opened and checked now (a damaged one fails here, as it would with its rows); the
    // rows are read once the window has painted. Should no paint come (a window that is never
    // exposed), they are read a moment later all the same.
    m_controller->ConnectLastDatabase(TRowFetch::Deferred);
    m_finishPending = true;
    if (m_painted) {
        QueueFinishFormShow();
    } else {
        QTimer::singleShot(cFirstPaintWaitMs, this, [this] {
            if (m_finishPending) {
                m_finishPending = false;
                FinishFormShow();
            }
        });
    }
}

void TORVMainForm::QueueFinishFormShow()
{
    // Queued: the paint reaches the screen first, and the rows come in order before the splash goes.
    m_finishPending = false;
    QMetaObject::invokeMethod(this, &TORVMainForm::FinishFormShow, Qt::QueuedConnection);
}

void TORVMainForm::FinishFormShow()
{
    // A spot reply that came in before this point found no rows to value; the rows are valued now,
    // at the prices held.
    m_controller->FetchPendingItems();
    QCoreApplication::postEvent(this, new QEvent(cWMReleaseSplash));
}

bool TORVMainForm::event(QEvent* event)
{
    const int type = int(event->type());
    if (type == int(TMainEvent::ReleaseSplash)) {
        emit SplashReleaseRequested();
        return true;
    }
    if (type == int(TMainEvent::HideBackstage)) {
        m_backstage->hideBackstage();
        return true;
    }
    if (type == int(TMainEvent::LanguageChanged)) {
        TranslateUI();
        return true;
    }
    if (type == int(TMainEvent::ThemePreview)) {
        const auto* preview = static_cast<TThemePreviewEvent*>(event);
        ApplyTheme(preview->ThemeIndex, preview->AccentIndex);
        return true;
    }
    const bool result = QMainWindow::event(event);
    if (event->type() == QEvent::Paint && !m_painted && isVisible()) {
        m_painted = true;
        if (m_finishPending) {
            QueueFinishFormShow();
        }
    }
    return result;
}

void TORVMainForm::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (!m_shown && !event->spontaneous()) {
        m_shown = true;
        FormShow();
    }
}

void TORVMainForm::closeEvent(QCloseEvent* event)
{
    // Until the pending edits are posted the window stays; a failing post leaves it open and its
    // error reaches the application's error box.
    event->ignore();
    m_controller->CloseQuery();
    m_views->SaveLayouts();
    event->accept();
    emit Closed();
}

void TORVMainForm::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    if (!m_shown || isMinimized() || isFullScreen()) {
        return;
    }
    TMainController::WindowResized(isVisible(), isMaximized(), width(), height());
}

void TORVMainForm::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && isVisible() && m_shown && !isMinimized()) {
        MainFormMaximized = isMaximized();
    }
}
