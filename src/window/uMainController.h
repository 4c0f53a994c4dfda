#pragma once

#include "uDBDataset.h"
#include "uMainCommands.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>
#include <vector>

class TDM_InternalData;
class TMetalAsset;
class TSpotPrices;

// ---- File dialogs ---------------------------------------------------------------------------------

// What a database file dialog is opened with.
struct TFileDialogRequest
{
    QString Filter;     // "Description|patterns|Description|patterns..."
    QString DefaultExt; // without the dot; added to a chosen name that has no extension
    QString InitialDir; // the folder the dialog starts in; empty leaves it to the platform
};

// The file dialogs of the database commands. The main window implements it with the platform's
// dialogs; tests answer with canned names.
class TFileDialogSeam
{
public:
    virtual ~TFileDialogSeam() = default;
    // The chosen existing file, or an empty text when the user cancelled.
    virtual QString ExecuteOpenDialog(const TFileDialogRequest& request) = 0;
    // The chosen target file, or an empty text when the user cancelled. An existing file is
    // accepted without a question.
    virtual QString ExecuteSaveDialog(const TFileDialogRequest& request) = 0;
};

// The filter of every database dialog.
inline constexpr char16_t cDatabaseDialogFilter[] = u"Database File (*.db)|*.db|All files (*.*)|*.*";
inline constexpr char16_t cDatabaseDefaultExt[] = u"db";

// The request of a database dialog; the initial folder is DefaultDBFolder read at this moment.
TFileDialogRequest DatabaseDialogRequest();

// "Text|*.a;*.b|Other|*.*" -> "Text (*.a *.b);;Other (*.*)". A description that already ends in
// its patterns in parentheses is kept as it is.
QString DialogFilterToQt(const QString& filter);

// The name with ".<ext>" added when its file-name part has no extension; empty stays empty.
QString ApplyDefaultExt(const QString& fileName, const QString& ext);

// ---- The window's seams --------------------------------------------------------------------------

// The four inputs of the add dialog.
struct TAddDialogRequest
{
    quint8 Mode = 0;    // 0 plain, 1 text search, 2 to 5 a quick search; passed as it stands
    qint32 Tag = -1;    // the gallery item's tag, or -1
    QString SearchText; // for mode 1
    bool AutoSearch = false;
};

// What the controller needs of the dialogs, the views and the clipboard. The main window
// implements it; tests answer it.
class TMainWindowSeam
{
public:
    virtual ~TMainWindowSeam() = default;
    // Shows the add dialog modally; the assets the user picked, in order.
    virtual std::vector<std::unique_ptr<TMetalAsset>> ExecuteAddDialog(const TAddDialogRequest& request) = 0;
    // Shows the item editor modally on the current record of qDS_Items (appended or not).
    virtual void ExecuteItemEditor() = 0;
    // The keys (ID) of the records selected in the active view.
    virtual QList<QVariant> SelectedKeys() = 0;
    // Table views: the display text of the focused cell; nothing without a focused record or column.
    virtual std::optional<QString> FocusedCellText() = 0;
    // Card views: the selected records as the view copies them.
    virtual QString SelectedRecordsText() = 0;
    virtual void SetClipboardText(const QString& text) = 0;
    // Shows the statistics preset to a metal (0 gold, 1 silver, 2 platinum); nothing until the
    // statistics exist.
    virtual void ExecuteStatistics(int metal) { Q_UNUSED(metal); }
};

// The field names bound to the picture rows of the three picture views.
struct TPictureBindings
{
    QString ThumbsFront = QStringLiteral("ThumbFront"); // GridThumbsViewThumbFront
    QString ThumbsBack = QStringLiteral("ThumbBack");   // GridThumbsViewThumbBack
    QString CardsFront = QStringLiteral("ThumbFront");  // GridCardsViewThumbFront
    QString CardsBack = QStringLiteral("ThumbBack");    // GridCardsViewThumbBack
    QString ShelvePhoto = QStringLiteral("ThumbFront"); // GridShelveViewPhotoThumb
    friend bool operator==(const TPictureBindings&, const TPictureBindings&) = default;
};

// What the application menu shows each time it opens.
struct TBackstageState
{
    bool AddEnabled = false;     // tsAdd
    bool DatabaseEnabled = true; // tsDatabaseManagement
    bool ExportEnabled = false;  // tsExportAndPrinting
    bool StatsEnabled = false;   // btnBackstageStats
    QString ActivePage;          // always tsAdd
};

// ---- Commands and their enablement -----------------------------------------------------------------

enum class TMainCommand
{
    DBNew,
    DBOpen,
    DBSaveAs,
    DBProperties,
    Exit
};

// The update rule: DBProperties needs a connection, the others are always on.
bool MainCommandEnabled(TMainCommand command, bool connected);

// ---- Spot prices on the toolbar ------------------------------------------------------------------

// The two glyphs of a spot button: a rise (also for no change) and a fall.
enum class TSpotGlyph
{
    Rise,
    Fall
};

TSpotGlyph SpotGlyphFor(double changeAbs);

// The translated name of a metal code (keys cS_AU .. cS_CU); empty for an unknown code.
QString MetalDisplayName(int metal);

// What one spot button shows for its metal.
struct TSpotButtonText
{
    QString Caption; // "<metal>: <price in the user's currency>"
    QString Hint;    // cSMainSpotPriceHintFmt with DateC
    TSpotGlyph Glyph = TSpotGlyph::Rise;
};

// The button of metal after a reply; nothing when the list holds no entry for it, and the button
// then stays as it was.
std::optional<TSpotButtonText> SpotButtonTextFor(const TSpotPrices& prices, int metal,
                                                 const QString& currency);

// ---- The controller ---------------------------------------------------------------------------------

// The logic of the main window: the database commands and their rules, the document name, the
// connection to the last collection, the close query and the work after new spot prices. It owns no
// widgets; the window shows what it tells.
class TMainController : public QObject
{
    Q_OBJECT

public:
    TMainController(TDM_InternalData* data, TFileDialogSeam* dialogs, QObject* parent = nullptr);

    TDM_InternalData* Data() const { return m_data; }
    TFileDialogSeam* FileDialogs() const { return m_dialogs; }
    void SetFileDialogs(TFileDialogSeam* dialogs) { m_dialogs = dialogs; }

    // actDBNew: save dialog; CreateBlankDatabase, ConnectDatabase, then the document name.
    void DBNew();
    // actDBOpen: open dialog; ConnectDatabase, then the document name.
    void DBOpen();
    // actDBSaveAs: save dialog; SaveDatabaseAs, ConnectDatabase on the copy, then the document name.
    void DBSaveAs();

    bool Connected() const;
    bool CommandEnabled(TMainCommand command) const { return MainCommandEnabled(command, Connected()); }

    // The file-name part (with extension) of the open collection's path; empty before any.
    QString DocumentName() const { return m_documentName; }
    // Sets the document name from the current path of the data module.
    void ShowDocumentName();

    // When the main window is first shown: connects to the collection named by DBPath if that file
    // exists and shows its name. A missing file changes nothing; a damaged one raises the database
    // layer's error. True when connected. With TRowFetch::Deferred the items are read by
    // FetchPendingItems(), so that the window can paint first.
    bool ConnectLastDatabase(TRowFetch items = TRowFetch::Now);
    // Reads the items of a deferred connect (valued at the prices held by then). True when rows
    // were pending.
    bool FetchPendingItems();

    // Asks for the first spot prices of this run.
    void StartFirstSpotRefresh();

    // The close query: posts pending edits of tblMints, then of qDS_Items. A failing post raises,
    // and the window is then not to close.
    void CloseQuery();

    // After new spot prices: the money fields of every item are worked out again in memory (the
    // file is not read) and the views told once. Nothing while a record is being edited or inserted
    // (the shown values keep the old prices until the next read), while nothing is connected, or
    // while the items are still to be read (they are valued as they arrive). True when it did.
    bool RefreshItemsForNewPrices();

    // Records in qDS_Items, or -1 when nothing is open.
    int ItemCount() const;
    // The collection is open and its items are still to be read (a deferred connect).
    bool ItemsPending() const;

    // ---- Command table and state ----

    void SetWindowSeam(TMainWindowSeam* seam) { m_window = seam; }
    // Where deferred events go (the window); nothing is posted without one.
    void SetEventTarget(QObject* target) { m_eventTarget = target; }
    // Posts a deferred event to the target; it runs after the event in hand.
    void PostDeferred(TMainEvent event);

    // The state the update rule reads; Connected comes from the data module.
    TMainState State() const;
    TGridView ActiveView() const { return m_activeView; }
    void SetSelectedRecordCount(int count) { m_selectedRecordCount = count; }
    void SetFindPanelVisible(bool visible) { m_findPanelVisible = visible; }
    void SetColumnAutoWidth(bool on) { m_columnAutoWidth = on; }

    // The last evaluated state of a command (all enabled before the first update).
    TCommandState CommandState(const QString& name) const;
    // A user check item (the filters) toggled.
    void SetUserChecked(const QString& name, bool checked);
    // The update rule: evaluates every command over State() and reports those that changed. No
    // other side effect.
    void UpdateActions();
    // Runs UpdateActions whenever this thread's event loop is about to wait.
    void UpdateWhenIdle();

    // ---- Commands ----

    // A view command: makes it active and stores it in CurrentView; the shelf view then asks for
    // the thumb size to be applied.
    void SetActiveView(TGridView view);
    // actThumbSize: writes the chosen index to ThumbSize (never read back by the window).
    void ChooseThumbSize(int index);
    // What the thumb size list shows at creation: always Medium.
    static int ThumbSizeListIndex() { return cThumbSizeListStartIndex; }
    // After a resize: MainForm.Width/Height while visible and not maximised, MainForm.Maximized while
    // visible. MainForm.Left/Top are never taken from the window.
    static void WindowResized(bool visible, bool maximized, int width, int height);

    // actAdd.
    void Add() { OpenAddDialog(0, -1, QString(), false); }
    // The one way into the add dialog: each picked asset appended as an item, in order.
    void OpenAddDialog(quint8 mode, qint32 tag, const QString& searchText, bool autoSearch);
    // actAddManually: posts an open edit, appends a record, shows the editor on it.
    void AddManually();
    // actEdit: the editor on the focused record.
    void Edit();
    // actRemoveSelected: confirms, deletes the selected records, compacts the file. True when it
    // deleted.
    bool RemoveSelected();
    // actRefresh: fresh spot prices, then tblMints and qDS_Items read again.
    void Refresh();
    // actCopyToClipboard.
    void CopyToClipboard();
    // A total button of the status bar: the statistics preset to its metal.
    void OpenStatistics(int metal);
    // actFlipACoin: turns every coin over in the picture views.
    void FlipACoin();
    const TPictureBindings& PictureBindings() const { return m_pictures; }

    // ---- Application menu ----

    // Each time it opens.
    TBackstageState BackstageOpened() const;
    // A click on an item of BackstageGalleryAdd: group index into BackstageGalleryGroups() (-1 for
    // none, which keeps mode 2) and the item's tag. Tags below 1 do nothing.
    void BackstageGalleryClicked(int groupIndex, qint32 tag);
    // btnBackstageSearch.
    void BackstageSearch(const QString& text);
    // After an item of the database page ran its action.
    void BackstageDatabaseItemDone() { PostDeferred(TMainEvent::HideBackstage); }

signals:
    void DocumentNameChanged(const QString& name);
    // A command changed the connection or the collection.
    void DatabaseChanged();
    // The update rule changed a command's enabled or checked state.
    void CommandStateChanged(const QString& name, const TCommandState& state);
    void ActiveViewChanged(TGridView view);
    // The shelf view became active: the thumb size is to be applied so that its picture fits.
    void ThumbSizeRequested(int index);
    void PictureBindingsChanged(const TPictureBindings& bindings);

private:
    TDM_InternalData* m_data;
    TFileDialogSeam* m_dialogs;
    TMainWindowSeam* m_window = nullptr;
    QPointer<QObject> m_eventTarget;
    QString m_documentName;

    TGridView m_activeView = TGridView::Cards;
    int m_selectedRecordCount = 0;
    bool m_findPanelVisible = false;
    bool m_columnAutoWidth = false;
    QHash<QString, TCommandState> m_states;
    TPictureBindings m_pictures;
    bool m_idleHooked = false;
};
