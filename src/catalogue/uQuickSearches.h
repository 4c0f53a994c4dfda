#pragma once

#include <QList>
#include <QString>
#include <QStringView>

#include <optional>
#include <span>

// The fixed quick searches of the catalogue, in one place: what each one asks the server, the text
// of its item in the add dialog's galleries and the text of the tab that shows its results, and the
// two galleries that offer them (the add dialog's ribbon and the main window's application menu).

// The selector of a search (SearchMode of the add dialog).
enum TSearchMode : quint8
{
    smTyped = 0,     // keywords and filters typed in the dialog
    smText = 1,      // keywords from outside
    smGoldCoins = 2, // quick searches from here on
    smGoldBars = 3,
    smSilverCoins = 4,
    smSilverBars = 5,
    smOtherMetals = 6,
};
inline constexpr quint8 cFirstQuickSearchMode = smGoldCoins;
inline constexpr quint8 cLastQuickSearchMode = smOtherMetals;

// One quick search: a row of the table of its mode. The texts of a query are sent as they stand,
// blanks and quotation marks included.
struct TQuickSearch
{
    quint8 Mode;
    qint32 Tag;
    QStringView Gallery;   // the item's text in the add dialog's gallery
    QStringView Tab;       // the tab's text; empty for the other metals
    QStringView Metals;    // "0", the list inside metals=[...]
    QStringView CoinTypes; // "0,1,2", the list inside coin_types=[...]
    QStringView Keywords;  // raw text, empty for none
    QStringView Years;     // a whole year key such as "years_filter=[2019]", empty for none
    std::optional<qint32> Mint;
};

// The rows of one mode in tag order; empty for a mode that is no quick search.
std::span<const TQuickSearch> QuickSearches(quint8 mode);
// Every row of every mode.
std::span<const TQuickSearch> AllQuickSearches();
// The row of mode and tag, or nullptr.
const TQuickSearch* FindQuickSearch(quint8 mode, qint32 tag);

// "metals=[m]&coin_types=[t]", then "&keywords=" and the keywords, "&" and the year key,
// "&mints=[id]", each when the row has it. Nothing is encoded.
QString QuickSearchQuery(const TQuickSearch& row);

// A heading of a gallery with its items' tags in order of display.
struct TGalleryGroup
{
    QString Heading;
    QList<qint32> Tags;
};

// One gallery of the add dialog's quick-search bar. Item texts are the rows' Gallery texts.
struct TQuickSearchGallery
{
    QString Name;        // btnSelectGoldCoins ...
    QString TextKey;     // language key of its caption
    QString DefaultText; // English caption
    quint8 Mode;
    QList<TGalleryGroup> Groups;
};

// The five galleries of the add dialog: gold coins, gold bars, silver coins, silver bars, other
// metals.
const QList<TQuickSearchGallery>& AddDialogGalleries();

// An item of the application menu's gallery: its own fixed caption, and the tag that reaches the
// add dialog.
struct TBackstageGalleryItem
{
    qint32 Tag;
    QString Caption;
};

// A group of the application menu's gallery BackstageGalleryAdd; its mode goes to the add dialog.
struct TBackstageGalleryGroup
{
    QString Name;        // gGoldCoins ...
    QString TextKey;     // language key of the group's caption
    QString DefaultText; // English caption
    quint8 Mode;
    QList<TBackstageGalleryItem> Items;
};

// The four groups of the application menu's gallery, in order of display: gold coins, silver coins,
// gold bars, silver bars.
const QList<TBackstageGalleryGroup>& BackstageGalleryGroups();
