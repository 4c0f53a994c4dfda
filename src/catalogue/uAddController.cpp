#include "uAddController.h"

#include "uEncryptedDownloader.h"
#include "uItemTexts.h"
#include "uZTLog.h"
#include "uZTMessages.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>

#include <stdexcept>

using namespace Qt::StringLiterals;

// ---- Tables -----------------------------------------------------------------------------------------

const std::vector<TAddCommandInfo>& AddCommands()
{
    using C = TAddCommand;
    static const std::vector<TAddCommandInfo> commands = {
        {C::actSearch, u"actSearch"_s, u"cSAddDlgactSearch"_s, u"Search"_s, QString()},
        {C::actStop, u"actStop"_s, u"cSAddDlgStop"_s, u"Stop"_s, QString()},
        {C::actClear, u"actClear"_s, u"cSAddDlgClearResults"_s, u"Clear results"_s, QString()},
        {C::actClearAllTabs, u"actClearAllTabs"_s, u"cSAddDlgClearAllTabs"_s, u"Clear all tabs"_s, QString()},
        {C::actSaveAndClose, u"actSaveAndClose"_s, u"cSAddDlgAddAndClose"_s, u"Add and close tab"_s,
         u"Ctrl+Alt+S"_s},
        {C::actSaveAndContinue, u"actSaveAndContinue"_s, u"cSAddDlgAddSelected"_s, u"Add selected"_s,
         u"Ctrl+S"_s},
        {C::actNewTab, u"actNewTab"_s, u"cSAddDlgNewTab"_s, u"New tab"_s, QString()},
        {C::actCloseTab, u"actCloseTab"_s, u"cSAddDlgactCloseTab"_s, u"Close tab"_s, QString()},
        {C::actCloseAllTabs, u"actCloseAllTabs"_s, u"cSAddDlgactCloseAllTabs"_s, u"Close all tabs"_s,
         QString()},
        {C::actSelectAll, u"actSelectAll"_s, u"cSAddDlgSelectAll"_s, u"Select all"_s, u"Ctrl+A"_s},
        {C::actClearSelection, u"actClearSelection"_s, u"cSAddDlgClearSelection"_s, u"Clear selection"_s,
         QString()},
        {C::actRemoveSelection, u"actRemoveSelection"_s, u"cSAddDlgRemoveSelection"_s,
         u"Remove selected item(s)"_s, u"Ctrl+Del"_s},
        {C::actSortData, u"actSortData"_s, u"cSAddDlgSortData"_s, u"Sort data"_s, QString()},
        {C::actClearSorting, u"actClearSorting"_s, u"cSAddDlgClearSorting"_s, u"Clear sorting"_s, QString()},
        {C::actSortAsc, u"actSortAsc"_s, QString(), u"Sort ascending"_s, QString()},
        {C::actSortDesc, u"actSortDesc"_s, QString(), u"Sort descending"_s, QString()},
        {C::actProxySettings, u"actProxySettings"_s, u"cSAddDlgProxySettings"_s, u"Proxy settings"_s,
         QString()},
        {C::actTestConnection, u"actTestConnection"_s, u"cSAddDlgTestConnection"_s, u"Test connection"_s,
         QString()},
        {C::actHelp, u"actHelp"_s, u"cSAddDlgHelp"_s, u"Help"_s, u"F1"_s},
    };
    return commands;
}

QString AddCommandText(const TAddCommandInfo& info)
{
    if (info.TextKey.isEmpty())
        return info.DefaultText;
    const QString text = GetText(info.TextKey);
    return text.isEmpty() ? info.DefaultText : text;
}

const std::array<TAddPaneRowInfo, cPaneRowCount>& AddPaneRows()
{
    static const std::array<TAddPaneRowInfo, cPaneRowCount> rows = {{
        {u"vgDataEditorRowCoinType"_s, u"cSF_Type"_s},
        {u"vgDataEditorRowMetal"_s, u"cSF_Metal"_s},
        {u"vgDataEditorRowName"_s, u"cSF_Name"_s},
        {u"vgDataEditorRowSeries"_s, u"cSF_Series"_s},
        {u"vgDataEditorRowYear"_s, u"cSF_Year"_s},
        {u"vgDataEditorRowWeight"_s, u"cSF_Weight"_s},
        {u"vgDataEditorRowPurity"_s, u"cSF_Purity"_s},
        {u"vgDataEditorRowCountry"_s, u"cSF_Country"_s},
        {u"vgDataEditorRowMint"_s, u"cSF_Mint"_s},
        {u"vgDataEditorRowMintPic"_s, QString()},
        {u"vgDataEditorRowObverse"_s, u"cSF_Obverse"_s},
        {u"vgDataEditorRowReverse"_s, u"cSF_Reverse"_s},
        {u"vgDataEditorRowFaceValue"_s, u"cSF_Denomination"_s},
        {u"vgDataEditorRowThickness"_s, u"cSF_Thickness"_s},
        {u"vgDataEditorRowDiameter"_s, u"cSF_Diameter"_s},
        {u"vgDataEditorRowWidth"_s, u"cSF_Width"_s},
        {u"vgDataEditorRowHeight"_s, u"cSF_Height"_s},
        {u"vgDataEditorRowEdge"_s, u"cSF_Edge"_s},
        {u"vgDataEditorRowMintMark"_s, u"cSF_MintMark"_s},
        {u"vgDataEditorRowMintage"_s, u"cSF_Mintage"_s},
        {u"vgDataEditorRowArtist"_s, u"cSF_Artist"_s},
        {u"vgDataEditorRowDesc"_s, u"cSF_Description"_s},
    }};
    return rows;
}

bool TAddPaneData::DescriptionVisible() const
{
    return std::any_of(Visible.begin(), Visible.end(), [](bool visible) { return visible; });
}

namespace {

QString FormatOrText(const QString& key, const QVariantList& args)
{
    const QString format = GetText(key);
    try {
        return FormatText(format, args);
    } catch (const std::invalid_argument&) {
        return format; // a language text with other placeholders is shown as it stands
    }
}

} // namespace

// ---- Life --------------------------------------------------------------------------------------------

TAddController::TAddController(TAddFormSeam& seam, QObject* parent)
    : QObject(parent), m_seam(seam), m_queue(std::make_unique<TDownloadQueue>()), m_sort(InitialAddSort())
{
    InitQueue();
    Execute(TAddCommand::actClearAllTabs);
    ClearAdvancedOptions();
}

TAddController::~TAddController()
{
    Finish();
    m_queue.reset();
    m_tabs.clear();
}

void TAddController::Finish()
{
    // Workers still running are stopped and waited for; what they posted is delivered while this
    // object is still whole, so that pictures of added assets land.
    if (m_queue->RunningThreads() > 0) {
        m_queue->TerminateAll();
        m_queue->WaitFor();
    }
    QCoreApplication::sendPostedEvents(this);
}

void TAddController::InitQueue()
{
    TDownloadQueue& queue = *m_queue;
    queue.MaxThreads = 5;
    queue.Window = this;
    queue.OnStart = [this](TThreadRunner*) {
        m_progress.Visible = true;
        m_progress.Maximum = 0;
        m_progress.Position = 0;
        m_progress.BarText = GetText(u"cSPreparingToDownload"_s);
        emit ProgressChanged();
    };
    queue.OnStatus = [this](TCustomDownloader*, qint32 panel, const QString& text) {
        if (panel == cDownloadStatusPanel)
            SetProgressStatus(u" "_s + text);
    };
    queue.OnProgress = [this](TDownloadQueue*, qint32, qint32, qint32 left) {
        if (left <= 0)
            return;
        m_progress.Maximum = std::max(m_progress.Maximum, int(left));
        m_progress.Position = m_progress.Maximum - left;
        m_progress.BarText = FormatOrText(u"cSLeftDownloadsFmt"_s, {left});
        emit ProgressChanged();
    };
    queue.OnDone = [this](TThreadRunner*) {
        const int found = Active() ? Active()->Results->Count() : 0;
        m_progress.Visible = false;
        m_progress.StatusText = u" "_s + FormatOrText(u"cSDownloadCompleteExFmt"_s, {found});
        emit ProgressChanged();
    };
}

void TAddController::SetProgressStatus(const QString& text)
{
    m_progress.StatusText = text;
    emit ProgressChanged();
}

bool TAddController::Opened()
{
    ShowAsset(nullptr);
    if (!AutoSearch)
        return false;
    RunSearch();
    return true;
}

void TAddController::CloseQuery()
{
    Execute(TAddCommand::actClear);
}

void TAddController::Close()
{
    Execute(TAddCommand::actStop);
}

// ---- Commands ----------------------------------------------------------------------------------------

bool TAddController::Enabled(TAddCommand command) const
{
    const bool idle = Idle();
    const bool selected = m_active >= 0 && !m_tabs[std::size_t(m_active)]->Selection.isEmpty();
    switch (command) {
    case TAddCommand::actSearch:
        return idle && !Filters.Keywords.trimmed().isEmpty();
    case TAddCommand::actStop:
        return !idle;
    case TAddCommand::actClear:
    case TAddCommand::actNewTab:
        return idle;
    case TAddCommand::actSaveAndClose:
    case TAddCommand::actSaveAndContinue:
        return idle && selected;
    case TAddCommand::actHelp:
        return false;
    default:
        return true;
    }
}

bool TAddController::Execute(TAddCommand command)
{
    if (!Enabled(command))
        return false;
    switch (command) {
    case TAddCommand::actSearch:
        SearchMode = smTyped;
        RunSearch();
        break;
    case TAddCommand::actStop:
        m_queue->TerminateAll();
        break;
    case TAddCommand::actClear:
        if (TAddTab* tab = Active())
            ClearTab(*tab);
        ShowAsset(nullptr);
        break;
    case TAddCommand::actClearAllTabs:
        for (const auto& tab : m_tabs)
            ClearTab(*tab);
        Execute(TAddCommand::actCloseAllTabs);
        ShowAsset(nullptr);
        break;
    case TAddCommand::actSaveAndClose:
        AddSelected(true, true);
        Execute(TAddCommand::actCloseTab);
        break;
    case TAddCommand::actSaveAndContinue: {
        AddSelected(true, false);
        Execute(TAddCommand::actRemoveSelection);
        break;
    }
    case TAddCommand::actNewTab:
        AddTab();
        break;
    case TAddCommand::actCloseTab:
        if (m_active >= 0)
            RemoveTab(m_active);
        if (m_tabs.empty())
            emit CloseRequested();
        break;
    case TAddCommand::actCloseAllTabs:
        while (!m_tabs.empty())
            RemoveTab(int(m_tabs.size()) - 1);
        // A dialog without any tab is of no use: a new one comes also while downloads run.
        AddTab();
        break;
    case TAddCommand::actSelectAll:
        if (TAddTab* tab = Active()) {
            tab->Selection.clear();
            for (int row : tab->Results->SortedRows(m_sort))
                tab->Selection << row;
            emit SelectionChanged(m_active);
        }
        break;
    case TAddCommand::actClearSelection:
        if (TAddTab* tab = Active()) {
            tab->Selection.clear();
            emit SelectionChanged(m_active);
        }
        break;
    case TAddCommand::actRemoveSelection:
        if (TAddTab* tab = Active()) {
            const QList<int> rows = std::exchange(tab->Selection, {});
            if (rows.contains(tab->Focused))
                tab->Focused = -1;
            else if (tab->Focused >= 0)
                tab->Focused -= int(
                    std::count_if(rows.begin(), rows.end(), [tab](int row) { return row < tab->Focused; }));
            tab->Results->RemoveRows(rows);
            emit SelectionChanged(m_active);
            if (tab->Focused < 0)
                ShowAsset(nullptr);
        }
        break;
    case TAddCommand::actSortData: {
        TAddSort sort = m_sort;
        if (m_seam.ExecuteSortDialog(sort))
            SetSort(sort);
        break;
    }
    case TAddCommand::actClearSorting:
        SetSort({});
        break;
    case TAddCommand::actSortAsc:
    case TAddCommand::actSortDesc: {
        const Qt::SortOrder order =
            command == TAddCommand::actSortAsc ? Qt::AscendingOrder : Qt::DescendingOrder;
        // Every row that holds a sortable value, in the order of the card.
        TAddSort sort;
        for (int column = acCaption; column <= acRelevance; ++column)
            sort << TAddSortKey{column, order};
        SetSort(sort);
        break;
    }
    case TAddCommand::actProxySettings:
        m_seam.ExecuteProxySettings();
        break;
    case TAddCommand::actTestConnection:
        if (m_seam.TestConnection())
            MessageDlgZT(GetText(u"cSInternetOK"_s), mtInformation, mbOK, mbOK);
        else
            MessageDlgZT(GetText(u"cSInternetFail"_s), mtWarning, mbOK, mbOK);
        break;
    case TAddCommand::actHelp:
        break;
    }
    return true;
}

void TAddController::SetSort(const TAddSort& sort)
{
    if (sort == m_sort)
        return;
    m_sort = sort;
    emit SortChanged();
}

void TAddController::ClearAdvancedOptions()
{
    const QString keywords = Filters.Keywords;
    const qint32 unit = Filters.WeightUnit;
    Filters = TSearchFilters{};
    Filters.Keywords = keywords;
    Filters.WeightUnit = unit;
}

// ---- Tabs --------------------------------------------------------------------------------------------

QString TAddController::NewTabTitle() const
{
    return FormatOrText(u"cSAddDlgcSTabFmt"_s, {int(m_tabs.size()) + 1});
}

void TAddController::AddTab()
{
    auto tab = std::make_unique<TAddTab>();
    tab->Caption = NewTabTitle();
    tab->Results = std::make_unique<TAddResultsModel>();
    m_tabs.push_back(std::move(tab));
    const int index = int(m_tabs.size()) - 1;
    emit TabAdded(index);
    SetActiveTab(index);
}

void TAddController::RemoveTab(int index)
{
    if (index < 0 || index >= TabCount())
        return;
    // The view lets go of the results before they are freed.
    const TAddTab* before = Active();
    emit TabRemoved(index);
    m_tabs.erase(m_tabs.begin() + index);
    if (m_tabs.empty()) {
        m_active = -1;
        ShowAsset(nullptr);
        emit ActiveTabChanged(-1);
        return;
    }
    if (m_active > index || m_active >= TabCount())
        --m_active;
    m_active = std::clamp(m_active, 0, TabCount() - 1);
    emit ActiveTabChanged(m_active);
    if (Active() != before) {
        const TAddTab& tab = *m_tabs[std::size_t(m_active)];
        ShowAsset(tab.Results->Asset(tab.Focused));
    }
}

void TAddController::SetActiveTab(int index)
{
    if (index < 0 || index >= TabCount() || index == m_active)
        return;
    m_active = index;
    emit ActiveTabChanged(index);
    const TAddTab& tab = *m_tabs[std::size_t(index)];
    ShowAsset(tab.Results->Asset(tab.Focused));
}

int TAddController::TabOf(const TAddResultsModel* results) const
{
    for (std::size_t n = 0; n < m_tabs.size(); ++n)
        if (m_tabs[n]->Results.get() == results)
            return int(n);
    return -1;
}

void TAddController::ClearTab(TAddTab& tab)
{
    tab.Selection.clear();
    tab.Focused = -1;
    tab.Results->Clear();
    const int index = TabOf(tab.Results.get());
    emit SelectionChanged(index);
}

// ---- Selection, focus, the right pane -----------------------------------------------------------------

void TAddController::SetSelection(const QList<int>& records)
{
    if (TAddTab* tab = Active())
        tab->Selection = records;
}

TMetalAsset* TAddController::FocusedAsset() const
{
    if (m_active < 0)
        return nullptr;
    const TAddTab& tab = *m_tabs[std::size_t(m_active)];
    return tab.Results->Asset(tab.Focused);
}

void TAddController::FocusCard(int record)
{
    TAddTab* tab = Active();
    if (!tab)
        return;
    tab->Focused = record >= 0 && record < tab->Results->Count() ? record : -1;
    LogText(u"SearchGridCardViewFocusedRecordChanged()"_s);
    TMetalAsset* asset = tab->Results->Asset(tab->Focused);
    if (asset)
        RequestPictures(*asset, *m_queue, LargePictureKinds(), this, cMsgLargePicture, true);
    emit PaneReset();
    ShowAsset(asset);
}

void TAddController::ShowAsset(const TMetalAsset* asset)
{
    LogText(u"UpdateRightPaneData()"_s);
    const TMetalAsset& a = asset ? *asset : EmptyMetalAsset();
    TAddPaneData pane;
    pane.Caption = a.Caption();
    pane.Images[0] = m_seam.PlaceholderPicture(a.Metal, a.CoinType, true);
    pane.Images[1] = m_seam.PlaceholderPicture(a.Metal, a.CoinType, false);
    for (const auto& picture : a.Pictures)
        if (picture->Kind >= TCoverPicture::kObverse && picture->Kind <= TCoverPicture::kInABox &&
            !picture->IsEmpty())
            pane.Images[std::size_t(picture->Kind - 1)] = picture->Data;

    const bool bar = a.CoinType == 3;
    auto set = [&pane](int row, const QVariant& value, bool visible) {
        pane.Values[std::size_t(row)] = value;
        pane.Visible[std::size_t(row)] = visible;
    };
    set(vgDataEditorRowCoinType, a.CoinType, a.CoinType != -1);
    set(vgDataEditorRowMetal, a.Metal, a.Metal != -1);
    set(vgDataEditorRowName, a.Name, !a.Name.isEmpty());
    set(vgDataEditorRowSeries, a.Series, !a.Series.isEmpty());
    set(vgDataEditorRowYear, a.Year, a.Year != 0);
    set(vgDataEditorRowWeight, WeightToText(a.WeightG), a.WeightG != 0.0);
    set(vgDataEditorRowPurity, a.Purity, !a.Purity.isEmpty());
    set(vgDataEditorRowCountry, a.Country, !a.Country.isEmpty());
    const int mintID = a.MintName.isEmpty() ? -1 : m_seam.MintIDByName(a.MintName);
    if (mintID != -1) {
        pane.MintID = mintID;
        set(vgDataEditorRowMint, mintID, true);
        const QByteArray mintPicture = m_seam.MintPicture(mintID);
        set(vgDataEditorRowMintPic, mintPicture.isEmpty() ? QVariant() : QVariant(mintPicture),
            !mintPicture.isEmpty());
    } else {
        set(vgDataEditorRowMint, a.MintName, !a.MintName.isEmpty());
        set(vgDataEditorRowMintPic, QVariant(), false);
    }
    set(vgDataEditorRowObverse, a.ObverseDesc, !a.ObverseDesc.isEmpty());
    set(vgDataEditorRowReverse, a.ReverseDesc, !a.ReverseDesc.isEmpty());
    set(vgDataEditorRowFaceValue,
        QString(QLocale().toString(a.FaceValue, 'g', 12) + u' ' + a.FaceValueCurrency), a.FaceValue != 0.0);
    set(vgDataEditorRowThickness, a.Thickness, a.Thickness != 0.0);
    set(vgDataEditorRowDiameter, a.Diameter, !bar && a.Diameter != 0.0);
    set(vgDataEditorRowWidth, a.Width, bar && a.Width != 0.0);
    set(vgDataEditorRowHeight, a.Height, bar && a.Height != 0.0);
    set(vgDataEditorRowEdge, a.Edge, !bar && !a.Edge.isEmpty());
    set(vgDataEditorRowMintMark, a.MintMark, a.MintMark);
    set(vgDataEditorRowMintage, a.Mintage, a.Mintage != 0);
    set(vgDataEditorRowArtist, a.Artist, !a.Artist.isEmpty());
    const QString description = a.Description.join(u'\n');
    set(vgDataEditorRowDesc, description, !description.isEmpty());
    m_pane = std::move(pane);
    emit PaneChanged();
}

// ---- Searching and adding ------------------------------------------------------------------------------

void TAddController::QuickSearch(quint8 mode, qint32 tag)
{
    if (tag < 1)
        return;
    SearchMode = mode;
    SearchTag = tag;
    RunSearch();
}

void TAddController::RunSearch()
{
    Execute(TAddCommand::actClear);
    TAddTab* tab = Active();
    if (!tab)
        return;
    tab->Caption = SearchTabTitle(SearchMode, SearchTag, SearchText, Filters);
    emit TabCaptionChanged(m_active);
    const QString query = SearchQuery(SearchMode, SearchTag, SearchText, Filters);
    SearchMode = smTyped;
    if (query.isEmpty())
        return;
    m_queue->AddDownload(TDownloadQueue::WorkerClass<TEncryptedTextDownloader>(), SearchURL(query), QString(),
                         cMsgSearchReply, this, std::make_unique<TSearchTabObj>(tab->Results.get()));
    m_queue->Start();
}

void TAddController::AddSelected(bool start, bool wait)
{
    TAddTab* tab = Active();
    if (!tab)
        return;
    for (int row : std::as_const(tab->Selection)) {
        TMetalAsset* asset = tab->Results->Asset(row);
        if (!asset)
            continue;
        RequestPictures(*asset, *m_queue, LargePictureKinds(), this, cMsgLargePicture, false);
        Assets.push_back(tab->Results->TakeAsset(row));
    }
    if (start) {
        m_queue->Start();
        if (wait)
            m_queue->WaitFor();
    }
}

bool TAddController::event(QEvent* event)
{
    auto* message = dynamic_cast<TPostedMessage*>(event);
    if (!message)
        return QObject::event(event);
    switch (message->Msg()) {
    case cMsgSearchReply:
        SearchReply(*message);
        break;
    case cMsgThumbnail:
        ThumbnailArrived(*message);
        break;
    case cMsgLargePicture:
        LargePictureArrived(*message);
        break;
    default:
        break;
    }
    return true;
}

void TAddController::SearchReply(TPostedMessage& message)
{
    const QStringList lines = message.TakeWParam().toStringList();
    const std::unique_ptr<TMessageObj> object = message.TakeLParam();
    const auto* subscriber = dynamic_cast<const TSearchTabObj*>(object.get());
    TAddResultsModel* results = subscriber ? subscriber->Tab.data() : nullptr;
    if (!results)
        return; // the tab was closed meanwhile
    TMetalAssets assets = ReadSearchReply(lines);
    results->BeginUpdate();
    for (auto& asset : assets) {
        const QByteArray placeholder = m_seam.PlaceholderPicture(asset->Metal, asset->CoinType, true);
        TMetalAsset& added = *asset;
        const int row = results->Append(std::move(asset), placeholder);
        for (const auto& picture : added.Pictures)
            if (picture->Kind == TCoverPicture::kThumbnail && !picture->URL.isEmpty())
                m_queue->AddDownload(TDownloadQueue::WorkerClass<TPictureDownloader>(), picture->URL,
                                     QString(), cMsgThumbnail, this,
                                     std::make_unique<T_WM_USER_METADATA_THUMB_PICTURE_Obj>(row, results));
    }
    results->EndUpdate();
    m_queue->Start();
    const int index = TabOf(results);
    if (results->Count() == 0 || index < 0)
        return;
    const int first = results->SortedRows(m_sort).constFirst();
    if (index == m_active) {
        FocusCard(first);
    } else {
        m_tabs[std::size_t(index)]->Focused = first;
    }
    emit FocusChanged(index, first);
}

void TAddController::ThumbnailArrived(TPostedMessage& message)
{
    const QVariant image = message.TakeWParam();
    const std::unique_ptr<TMessageObj> object = message.TakeLParam();
    const auto* target = dynamic_cast<const T_WM_USER_METADATA_THUMB_PICTURE_Obj*>(object.get());
    TAddResultsModel* results = target ? target->Tab.data() : nullptr;
    if (!results || target->RecordIndex < 0 || target->RecordIndex >= results->Count())
        return;
    TCoverPicture picture;
    if (!picture.Assign(image))
        return;
    results->SetThumb(target->RecordIndex, picture.Data);
    if (TMetalAsset* asset = results->Asset(target->RecordIndex))
        if (TCoverPicture* thumbnail = asset->PictureOfKind(TCoverPicture::kThumbnail))
            thumbnail->Data = picture.Data;
}

void TAddController::LargePictureArrived(TPostedMessage& message)
{
    const TMetalAsset* asset = DeliverLargePicture(message);
    if (asset && asset == FocusedAsset())
        ShowAsset(asset);
}
