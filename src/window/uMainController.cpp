#include "uMainController.h"

#include "dmInternalData.h"
#include "uObjs.h"
#include "uQuickSearches.h"
#include "uSpot.h"
#include "uValuation.h"
#include "uZTMessages.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QFileInfo>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

// Enables the dataset's controls again however the block between is left.
class TControlsDisabled
{
public:
    explicit TControlsDisabled(TDBDataset& dataset) : m_dataset(dataset) { m_dataset.disableControls(); }
    ~TControlsDisabled() { m_dataset.enableControls(); }
    TControlsDisabled(const TControlsDisabled&) = delete;
    TControlsDisabled& operator=(const TControlsDisabled&) = delete;

private:
    TDBDataset& m_dataset;
};

bool IsEditing(const TDBDataset& dataset)
{
    const TDatasetState state = dataset.state();
    return state == TDatasetState::Edit || state == TDatasetState::Insert;
}

} // namespace

// ---- File dialogs -----------------------------------------------------------------------------------

TFileDialogRequest DatabaseDialogRequest()
{
    TFileDialogRequest request;
    request.Filter = QString::fromUtf16(cDatabaseDialogFilter);
    request.DefaultExt = QString::fromUtf16(cDatabaseDefaultExt);
    request.InitialDir = ReadDefaultDBFolder();
    return request;
}

QString DialogFilterToQt(const QString& filter)
{
    const QStringList parts = filter.split(u'|');
    QStringList filters;
    for (qsizetype n = 0; n + 1 < parts.size(); n += 2) {
        const QString description = parts.at(n).trimmed();
        QStringList patterns = parts.at(n + 1).split(u';', Qt::SkipEmptyParts);
        for (QString& pattern : patterns) {
            pattern = pattern.trimmed();
        }
        const QString patternText = patterns.join(u' ');
        if (description.endsWith(u'(' + patternText + u')')) {
            filters << description;
        } else {
            filters << description + u" ("_s + patternText + u')';
        }
    }
    return filters.join(u";;"_s);
}

QString ApplyDefaultExt(const QString& fileName, const QString& ext)
{
    if (fileName.isEmpty() || ext.isEmpty()) {
        return fileName;
    }
    const QString name = QFileInfo(fileName).fileName();
    if (name.contains(u'.')) {
        return fileName;
    }
    return fileName + u'.' + ext;
}

// ---- Commands ---------------------------------------------------------------------------------------

bool MainCommandEnabled(TMainCommand command, bool connected)
{
    switch (command) {
    case TMainCommand::DBProperties:
        return connected;
    case TMainCommand::DBNew:
    case TMainCommand::DBOpen:
    case TMainCommand::DBSaveAs:
    case TMainCommand::Exit:
        return true;
    }
    return true;
}

// ---- Spot prices ------------------------------------------------------------------------------------

TSpotGlyph SpotGlyphFor(double changeAbs)
{
    return changeAbs < 0.0 ? TSpotGlyph::Fall : TSpotGlyph::Rise;
}

QString MetalDisplayName(int metal)
{
    const QString code = MetalIndexToCode(metal); // "XAU" -> key "cS_AU"
    if (code.size() < 2) {
        return {};
    }
    return GetText(u"cS_"_s + code.mid(1));
}

std::optional<TSpotButtonText> SpotButtonTextFor(const TSpotPrices& prices, int metal,
                                                 const QString& currency)
{
    const TSpotPrice* spot = prices.FindSpot(metal);
    if (!spot) {
        return std::nullopt;
    }
    TSpotButtonText text;
    text.Caption =
        FormatText(u"%s: %s"_s, {MetalDisplayName(metal), FormatUsersCurrency(spot->Price, currency)});
    text.Hint = FormatText(GetText(u"cSMainSpotPriceHintFmt"_s), {spot->DateC});
    text.Glyph = SpotGlyphFor(spot->ChangeAbs);
    return text;
}

// ---- The controller ---------------------------------------------------------------------------------

TMainController::TMainController(TDM_InternalData* data, TFileDialogSeam* dialogs, QObject* parent)
    : QObject(parent), m_data(data), m_dialogs(dialogs), m_activeView(GridViewFromSetting(CurrentView))
{
    for (const TMainCommandDef& command : MainCommands()) {
        m_states.insert(command.Name, TCommandState{true, command.InitiallyChecked});
    }
}

bool TMainController::Connected() const
{
    return m_data && m_data->Connected();
}

void TMainController::ShowDocumentName()
{
    const QString name =
        m_data->DatabasePath.isEmpty() ? QString() : QFileInfo(m_data->DatabasePath).fileName();
    if (name != m_documentName) {
        m_documentName = name;
        emit DocumentNameChanged(m_documentName);
    }
}

void TMainController::DBNew()
{
    const QString fileName = ApplyDefaultExt(m_dialogs->ExecuteSaveDialog(DatabaseDialogRequest()),
                                             QString::fromUtf16(cDatabaseDefaultExt));
    if (fileName.isEmpty()) {
        return;
    }
    m_data->CreateBlankDatabase(fileName);
    m_data->ConnectDatabase(fileName);
    ShowDocumentName();
    emit DatabaseChanged();
}

void TMainController::DBOpen()
{
    const QString fileName = ApplyDefaultExt(m_dialogs->ExecuteOpenDialog(DatabaseDialogRequest()),
                                             QString::fromUtf16(cDatabaseDefaultExt));
    if (fileName.isEmpty()) {
        return;
    }
    m_data->ConnectDatabase(fileName);
    ShowDocumentName();
    emit DatabaseChanged();
}

void TMainController::DBSaveAs()
{
    const QString fileName = ApplyDefaultExt(m_dialogs->ExecuteSaveDialog(DatabaseDialogRequest()),
                                             QString::fromUtf16(cDatabaseDefaultExt));
    if (fileName.isEmpty()) {
        return;
    }
    m_data->SaveDatabaseAs(fileName);
    m_data->ConnectDatabase(fileName);
    ShowDocumentName();
    emit DatabaseChanged();
}

bool TMainController::ConnectLastDatabase(TRowFetch items)
{
    if (DBPath.isEmpty() || !QFileInfo(DBPath).isFile()) {
        return false;
    }
    if (!m_data->ConnectDatabase(DBPath, items)) {
        return false;
    }
    const QString name = QFileInfo(DBPath).fileName();
    if (name != m_documentName) {
        m_documentName = name;
        emit DocumentNameChanged(m_documentName);
    }
    emit DatabaseChanged();
    return true;
}

bool TMainController::FetchPendingItems()
{
    if (!m_data->qDS_Items->rowsPending()) {
        return false;
    }
    m_data->FetchPendingItems();
    emit DatabaseChanged();
    return true;
}

void TMainController::StartFirstSpotRefresh()
{
    // Runs in the background; the list's OnLoaded handler updates the buttons and the values.
    SpotPrices().Refresh();
}

void TMainController::CloseQuery()
{
    m_data->PostPendingEdits({m_data->tblMints, m_data->qDS_Items});
}

bool TMainController::RefreshItemsForNewPrices()
{
    if (!Connected()) {
        return false;
    }
    TDBDataset& items = *m_data->qDS_Items;
    if (!items.active() || IsEditing(items) || items.rowsPending()) {
        return false;
    }
    const TControlsDisabled bracket(items);
    m_data->RevalueItems();
    return true;
}

bool TMainController::ItemsPending() const
{
    return Connected() && m_data->qDS_Items->rowsPending();
}

int TMainController::ItemCount() const
{
    if (!Connected() || !m_data->qDS_Items->active()) {
        return -1;
    }
    return m_data->qDS_Items->recordCount();
}

// ---- Command table and state --------------------------------------------------------------------------

void TMainController::PostDeferred(TMainEvent event)
{
    if (m_eventTarget) {
        QCoreApplication::postEvent(m_eventTarget, new QEvent(MainEventType(event)));
    }
}

TMainState TMainController::State() const
{
    TMainState state;
    state.ActiveView = m_activeView;
    state.SelectedRecordCount = m_selectedRecordCount;
    state.Connected = Connected();
    state.FindPanelVisible = m_findPanelVisible;
    state.ColumnAutoWidth = m_columnAutoWidth;
    return state;
}

TCommandState TMainController::CommandState(const QString& name) const
{
    return m_states.value(name);
}

void TMainController::SetUserChecked(const QString& name, bool checked)
{
    const TMainCommandDef* command = FindMainCommand(name);
    if (!command || command->Checked != TCheckRule::User) {
        return;
    }
    TCommandState& state = m_states[name];
    if (state.Checked != checked) {
        state.Checked = checked;
        emit CommandStateChanged(name, state);
    }
}

void TMainController::UpdateActions()
{
    const TMainState state = State();
    for (const TMainCommandDef& command : MainCommands()) {
        TCommandState& current = m_states[command.Name];
        const TCommandState next{EvaluateEnabled(command.Enabled, state),
                                 EvaluateChecked(command, state, current.Checked)};
        if (next != current) {
            current = next;
            emit CommandStateChanged(command.Name, current);
        }
    }
}

void TMainController::UpdateWhenIdle()
{
    if (m_idleHooked) {
        return;
    }
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance(thread())) {
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, &TMainController::UpdateActions);
        m_idleHooked = true;
    }
}

// ---- Commands -----------------------------------------------------------------------------------------

void TMainController::SetActiveView(TGridView view)
{
    if (view == TGridView::None) {
        return;
    }
    CurrentView = int(view);
    if (view != m_activeView) {
        m_activeView = view;
        emit ActiveViewChanged(view);
    }
    if (view == TGridView::Shelve) {
        emit ThumbSizeRequested(ThumbSize);
    }
}

void TMainController::ChooseThumbSize(int index)
{
    ThumbSize = index;
}

void TMainController::WindowResized(bool visible, bool maximized, int width, int height)
{
    if (!visible) {
        return;
    }
    MainFormMaximized = maximized;
    if (!maximized) {
        MainFormWidth = width;
        MainFormHeight = height;
    }
}

void TMainController::OpenAddDialog(quint8 mode, qint32 tag, const QString& searchText, bool autoSearch)
{
    if (!m_window) {
        return;
    }
    const std::vector<std::unique_ptr<TMetalAsset>> assets =
        m_window->ExecuteAddDialog(TAddDialogRequest{mode, tag, searchText, autoSearch});
    if (assets.empty() || !Connected()) {
        return;
    }
    {
        const TControlsDisabled bracket(*m_data->qDS_Items);
        for (const std::unique_ptr<TMetalAsset>& asset : assets) {
            if (asset) {
                m_data->AppendCatalogueItem(*asset);
            }
        }
    }
    emit DatabaseChanged();
}

void TMainController::AddManually()
{
    if (!m_window || !Connected()) {
        return;
    }
    TDBDataset& items = *m_data->qDS_Items;
    items.checkBrowseMode();
    items.append();
    m_window->ExecuteItemEditor();
    emit DatabaseChanged();
}

void TMainController::Edit()
{
    if (!m_window || !Connected() || m_data->qDS_Items->isEmpty()) {
        return;
    }
    m_window->ExecuteItemEditor();
    emit DatabaseChanged();
}

bool TMainController::RemoveSelected()
{
    if (!m_window || !Connected()) {
        return false;
    }
    const QList<QVariant> keys = m_window->SelectedKeys();
    if (keys.isEmpty()) {
        return false;
    }
    if (MessageDlgZT(GetText(u"cSConfirmDelete"_s), mtConfirmation, TMsgDlgButtons(mbYes) | mbNo, mbNo) !=
        mrYes) {
        return false;
    }
    TDBDataset& items = *m_data->qDS_Items;
    items.checkBrowseMode();
    {
        const TControlsDisabled bracket(items);
        for (const QVariant& key : keys) {
            if (items.locate(u"ID"_s, key)) {
                items.deleteRecord();
            }
        }
    }
    m_data->VacuumDatabase();
    emit DatabaseChanged();
    return true;
}

void TMainController::Refresh()
{
    SpotPrices().Refresh();
    if (!Connected()) {
        return;
    }
    for (TDBDataset* dataset : {m_data->tblMints, m_data->qDS_Items}) {
        if (!dataset || !dataset->active()) {
            continue;
        }
        const TControlsDisabled bracket(*dataset);
        dataset->checkBrowseMode();
        dataset->refresh();
    }
    emit DatabaseChanged();
}

void TMainController::CopyToClipboard()
{
    if (!m_window) {
        return;
    }
    switch (m_activeView) {
    case TGridView::Table:
    case TGridView::TableROI:
        if (const std::optional<QString> text = m_window->FocusedCellText()) {
            m_window->SetClipboardText(*text);
        }
        break;
    case TGridView::Thumbs:
    case TGridView::Cards:
    case TGridView::Shelve:
        m_window->SetClipboardText(m_window->SelectedRecordsText());
        break;
    case TGridView::None:
        break;
    }
}

void TMainController::OpenStatistics(int metal)
{
    if (m_window && Connected()) {
        m_window->ExecuteStatistics(metal);
    }
}

void TMainController::FlipACoin()
{
    std::swap(m_pictures.ThumbsFront, m_pictures.ThumbsBack);
    std::swap(m_pictures.CardsFront, m_pictures.CardsBack);
    m_pictures.ShelvePhoto = m_pictures.ShelvePhoto == u"ThumbBack"_s ? u"ThumbFront"_s : u"ThumbBack"_s;
    emit PictureBindingsChanged(m_pictures);
}

// ---- Application menu ---------------------------------------------------------------------------------

TBackstageState TMainController::BackstageOpened() const
{
    TBackstageState state;
    const bool connected = Connected();
    state.AddEnabled = connected;
    state.ExportEnabled = connected;
    state.StatsEnabled = connected;
    state.DatabaseEnabled = true;
    state.ActivePage = u"tsAdd"_s;
    return state;
}

void TMainController::BackstageGalleryClicked(int groupIndex, qint32 tag)
{
    if (tag < 1) {
        return;
    }
    const QList<TBackstageGalleryGroup>& groups = BackstageGalleryGroups();
    const quint8 mode =
        groupIndex >= 0 && groupIndex < groups.size() ? groups.at(groupIndex).Mode : quint8(smGoldCoins);
    PostDeferred(TMainEvent::HideBackstage);
    OpenAddDialog(mode, tag, QString(), true);
}

void TMainController::BackstageSearch(const QString& text)
{
    PostDeferred(TMainEvent::HideBackstage);
    OpenAddDialog(smText, -1, text, true);
}
