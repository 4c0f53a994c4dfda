#pragma once

#include "uAddResults.h"
#include "uDownloadQueue.h"
#include "uObjs.h"
#include "uSearchQuery.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

// The add dialog without its widgets: the search tabs and their results, the commands with their
// enablement, the one download queue of the dialog, the right pane's content and the status bar's
// progress. The window (TAddForm) presents it and forwards the user's input; tests drive it
// without a screen.

// The message that the window posts to itself so that opening runs once it is visible.
inline constexpr quint32 cMsgAddFormShown = 1025;

enum class TAddCommand
{
    actSearch,
    actStop,
    actClear,
    actClearAllTabs,
    actSaveAndClose,
    actSaveAndContinue,
    actNewTab,
    actCloseTab,
    actCloseAllTabs,
    actSelectAll,
    actClearSelection,
    actRemoveSelection,
    actSortData,
    actClearSorting,
    actSortAsc,
    actSortDesc,
    actProxySettings,
    actTestConnection,
    actHelp,
};

// A row of the command table: name, text key (empty: the English text is the only one), English
// text and shortcut in portable text form.
struct TAddCommandInfo
{
    TAddCommand Command;
    QString Name;
    QString TextKey;
    QString DefaultText;
    QString Shortcut;
};
const std::vector<TAddCommandInfo>& AddCommands();
// The command's caption in the current language.
QString AddCommandText(const TAddCommandInfo& info);

// The subscriber of a thumbnail: the record index at the time of the request and the tab's results.
class T_WM_USER_METADATA_THUMB_PICTURE_Obj : public TMessageObj
{
public:
    T_WM_USER_METADATA_THUMB_PICTURE_Obj(qint32 recordIndex, TAddResultsModel* tab)
        : RecordIndex(recordIndex), Tab(tab)
    {}
    qint32 RecordIndex;
    QPointer<TAddResultsModel> Tab; // null once the tab was closed
};

// The subscriber of a search reply: the tab it fills.
class TSearchTabObj : public TMessageObj
{
public:
    explicit TSearchTabObj(TAddResultsModel* tab) : Tab(tab) {}
    QPointer<TAddResultsModel> Tab;
};

// One tab: a level of the grid, its caption and the state of its view.
struct TAddTab
{
    QString Caption;
    std::unique_ptr<TAddResultsModel> Results;
    QList<int> Selection; // records, in order of selection
    int Focused = -1;     // the focused record, -1 for none
};

// The rows of the property grid at the right, in order.
enum TAddPaneRow : int
{
    vgDataEditorRowCoinType = 0,
    vgDataEditorRowMetal,
    vgDataEditorRowName,
    vgDataEditorRowSeries,
    vgDataEditorRowYear,
    vgDataEditorRowWeight,
    vgDataEditorRowPurity,
    vgDataEditorRowCountry,
    vgDataEditorRowMint,
    vgDataEditorRowMintPic,
    vgDataEditorRowObverse,
    vgDataEditorRowReverse,
    vgDataEditorRowFaceValue,
    vgDataEditorRowThickness,
    vgDataEditorRowDiameter,
    vgDataEditorRowWidth,
    vgDataEditorRowHeight,
    vgDataEditorRowEdge,
    vgDataEditorRowMintMark,
    vgDataEditorRowMintage,
    vgDataEditorRowArtist,
    vgDataEditorRowDesc,
    cPaneRowCount
};

// Name and label key of a pane row.
struct TAddPaneRowInfo
{
    QString Name;
    QString LabelKey; // empty for the mint's picture
};
const std::array<TAddPaneRowInfo, cPaneRowCount>& AddPaneRows();

// What the right pane shows of one asset.
struct TAddPaneData
{
    QString Caption;                  // the category row
    std::array<QByteArray, 4> Images; // ImageObverse, ImageReverse, ImageSide, ImageInBox; empty: none
    std::array<QVariant, cPaneRowCount> Values{};
    std::array<bool, cPaneRowCount> Visible{};
    std::optional<int> MintID;       // the local mint of MintName; the mint row then shows it
    bool DescriptionVisible() const; // vgDataCategoryRowDesc
};

// The status bar while the queue runs.
struct TAddProgress
{
    bool Visible = false; // the progress bar of panel 1
    int Maximum = 0;
    int Position = 0;
    QString BarText;
    QString StatusText; // panel 2
};

// What the dialog needs from the rest of the program and from the screen.
class TAddFormSeam
{
public:
    virtual ~TAddFormSeam() = default;
    // The PNG bytes of the placeholder picture of a metal and type, front or back.
    virtual QByteArray PlaceholderPicture(int metal, int coinType, bool front) = 0;
    // MintIDByName of the collection: -1 when no local mint has that name.
    virtual int MintIDByName(const QString& name) = 0;
    // The picture of a local mint; empty for none.
    virtual QByteArray MintPicture(int mintID) = 0;
    // The sort dialog on the sort; true and the new sort on OK.
    virtual bool ExecuteSortDialog(TAddSort& sort) = 0;
    // The options dialog on its internet page, modal.
    virtual void ExecuteProxySettings() = 0;
    // TestInternetConnection.
    virtual bool TestConnection() = 0;
};

class TAddController : public QObject
{
    Q_OBJECT

public:
    explicit TAddController(TAddFormSeam& seam, QObject* parent = nullptr);
    // Stops the queue, waits for its workers while their messages are still delivered, and frees
    // the tabs with the assets that were not added.
    ~TAddController() override;

    // State of the dialog: its inputs, set before it opens.
    quint8 SearchMode = 0;
    qint32 SearchTag = -1;
    QString SearchText;
    bool AutoSearch = false;
    // The search box and the advanced options.
    TSearchFilters Filters;
    // What the user has added, in order; the caller takes them after the dialog has closed.
    std::vector<std::unique_ptr<TMetalAsset>> Assets;

    TDownloadQueue& Queue() { return *m_queue; }
    bool Idle() const { return m_queue->RunningThreads() == 0; }

    // Opening, once the window shows: the empty asset at the right, then the search when AutoSearch.
    // True when the search ran (the tab's view gets the focus), false for the search box.
    bool Opened();

    // Commands.
    bool Enabled(TAddCommand command) const;
    // Runs the command when it is enabled; false when it was not.
    bool Execute(TAddCommand command);
    // A gallery item: sets SearchMode and SearchTag and searches in the active tab. Tags below 1
    // are headings and do nothing.
    void QuickSearch(quint8 mode, qint32 tag);
    // Runs the search of SearchMode in the active tab.
    void RunSearch();
    // btnAdvClear: every advanced option to null (the keywords stay).
    void ClearAdvancedOptions();

    // Tabs.
    int TabCount() const { return int(m_tabs.size()); }
    TAddTab& Tab(int index) { return *m_tabs.at(std::size_t(index)); }
    int ActiveTab() const { return m_active; }
    TAddTab* Active() { return m_active >= 0 ? m_tabs[std::size_t(m_active)].get() : nullptr; }
    void SetActiveTab(int index);
    int TabOf(const TAddResultsModel* results) const;
    // Title of a new tab: "Tab #%d" with the level's index (the hidden template is level 0).
    QString NewTabTitle() const;

    // Selection and focus of the active tab, as the view reports them.
    void SetSelection(const QList<int>& records);
    // Focus moves to a card: its large pictures are asked for and it shows at the right.
    void FocusCard(int record);

    // Sorting of every view.
    const TAddSort& Sort() const { return m_sort; }
    void SetSort(const TAddSort& sort);

    const TAddPaneData& Pane() const { return m_pane; }
    // The asset of the focused card of the active tab, while its record owns it.
    TMetalAsset* FocusedAsset() const;
    const TAddProgress& Progress() const { return m_progress; }

    // Close query and close.
    void CloseQuery();
    void Close();
    // Waits for the workers still running, delivering what they post, so that Assets holds every
    // picture that arrived; the destructor does the same.
    void Finish();

    // The messages of the workers and of the window itself.
    bool event(QEvent* event) override;

signals:
    void TabAdded(int index);
    void TabRemoved(int index);
    void TabCaptionChanged(int index);
    void ActiveTabChanged(int index);
    // The controller moved the focus or the selection of a tab (the view follows).
    void FocusChanged(int tab, int record);
    void SelectionChanged(int tab);
    void SortChanged();
    void PaneChanged();
    // The slider goes back to its first image.
    void PaneReset();
    void ProgressChanged();
    // The dialog is to close (its last tab was closed).
    void CloseRequested();

private:
    void InitQueue();
    void AddTab();
    void RemoveTab(int index);
    void ClearTab(TAddTab& tab);
    void AddSelected(bool start, bool wait);
    void SearchReply(TPostedMessage& message);
    void ThumbnailArrived(TPostedMessage& message);
    void LargePictureArrived(TPostedMessage& message);
    void ShowAsset(const TMetalAsset* asset);
    void SetProgressStatus(const QString& text);

    TAddFormSeam& m_seam;
    std::unique_ptr<TDownloadQueue> m_queue;
    std::vector<std::unique_ptr<TAddTab>> m_tabs;
    int m_active = -1;
    TAddSort m_sort;
    TAddPaneData m_pane;
    TAddProgress m_progress;
};
