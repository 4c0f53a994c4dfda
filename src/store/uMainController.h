#pragma once

#include "uDBDataset.h"

#include <QObject>
#include <QString>

#include <optional>

class TDM_InternalData;
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

signals:
    void DocumentNameChanged(const QString& name);
    // A command changed the connection or the collection.
    void DatabaseChanged();

private:
    TDM_InternalData* m_data;
    TFileDialogSeam* m_dialogs;
    QString m_documentName;
};
