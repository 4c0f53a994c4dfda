#pragma once

#include <QEvent>
#include <QHash>
#include <QList>
#include <QString>

// The command table of the main window: every action with its text, shortcut and the rules that
// switch it on and off and check it, evaluated over the state the window reports.

// The five views of the collection; the value is the one stored in CurrentView.
enum class TGridView
{
    None = -1, // no view on show: the selection then counts as zero
    Thumbs = 0,
    Cards = 1,
    Table = 2,
    Shelve = 3,
    TableROI = 4
};

// The name of a view ("GridThumbsView" ...); empty for None.
QString GridViewName(TGridView view);
// A stored CurrentView value as a view; anything out of range gives the default, the cards view.
TGridView GridViewFromSetting(int value);
// GridTableView and GridTableViewROI.
bool IsTableView(TGridView view);

// What the update rule reads.
struct TMainState
{
    TGridView ActiveView = TGridView::Cards;
    int SelectedRecordCount = 0; // in ActiveView; taken as 0 when there is no view
    bool Connected = false;
    bool FindPanelVisible = false;
    bool ColumnAutoWidth = false;
};

enum class TEnableRule
{
    Always,
    Connected,             // a collection is open
    ConnectedAndSelection, // open, and at least one record selected
    Selection,             // at least one record selected
    ShelveView,            // the shelf view is on show
    NotShelveView,         // any view but the shelf
    TableView              // one of the two table views is on show
};

enum class TCheckRule
{
    None,          // not a check item
    User,          // a check item the user toggles; the rule leaves it alone
    ActiveView,    // checked while its view is on show (the radio group of the views)
    FindPanel,     // checked while the find panel is up
    TableAutoWidth // checked while a table view with columns auto-width is on show
};

// One command.
struct TMainCommandDef
{
    QString Name;        // actAdd ...
    QString TextKey;     // language key; empty for a text that stays the same in every language
    QString DefaultText; // the English text
    QString Shortcut;    // portable key sequence text ("Ctrl+Shift+Ins"), empty for none
    TEnableRule Enabled = TEnableRule::Always;
    TCheckRule Checked = TCheckRule::None;
    TGridView View = TGridView::None; // the view of a view command
    bool InitiallyChecked = false;    // for user check items
};

// Every command of the main window, in the order of the command table.
const QList<TMainCommandDef>& MainCommands();
// The command of that name, or nullptr.
const TMainCommandDef* FindMainCommand(const QString& name);

// The evaluated state of one command.
struct TCommandState
{
    bool Enabled = true;
    bool Checked = false;
    friend bool operator==(const TCommandState&, const TCommandState&) = default;
};

bool EvaluateEnabled(TEnableRule rule, const TMainState& state);
// The checked state by rule; a user check item keeps current.
bool EvaluateChecked(const TMainCommandDef& command, const TMainState& state, bool current);

// The deferred events the window posts to itself, by their fixed numbers. They are event types of
// the window's own queue.
enum class TMainEvent
{
    ReleaseSplash = 1025,
    ThemePreview = 1030,
    LanguageChanged = 1031,
    HideBackstage = 1033,
    GroupingChanged = 1034,
    PositionCustomizeButton = 1035
};

inline QEvent::Type MainEventType(TMainEvent event)
{
    return QEvent::Type(int(event));
}

// A ThemePreview carries the chosen theme and accent.
class TThemePreviewEvent : public QEvent
{
public:
    TThemePreviewEvent(int themeIndex, int accentIndex)
        : QEvent(MainEventType(TMainEvent::ThemePreview)), ThemeIndex(themeIndex), AccentIndex(accentIndex)
    {}
    const int ThemeIndex;
    const int AccentIndex;
};

// The thumb size list's items; the list shows Medium at every start, whatever ThumbSize holds.
inline constexpr int cThumbSizeListStartIndex = 1;
