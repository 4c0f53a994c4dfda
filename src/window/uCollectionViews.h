#pragma once

#include "uGridSummaries.h"
#include "uGridTypes.h"

#include <QImage>
#include <QList>
#include <QPair>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <array>
#include <functional>
#include <optional>

class TDBDataset;
class TDM_InternalData;
class TGridColumns;
class TZTCustomSettings;

// The logic of the five collection views and the details pane: what each view shows at first, the
// quick filter, the summaries, the status-bar totals, thumb sizes and shelf pictures, zoom, the
// customise button and the details rules. No widgets: the window applies what these say.

// ---- The views at design ---------------------------------------------------------------------------

// The five views by the number CurrentView stores (the main window's command table counts them
// the same way). Kept apart from the command table so that the views' widgets, whose toolkit has a
// class of the command table's name, can use these rules.
enum TCollectionView : int
{
    cvNone = -1,
    cvThumbs = 0,
    cvCards = 1,
    cvTable = 2,
    cvShelve = 3,
    cvTableROI = 4
};
inline constexpr int cCollectionViewCount = 5;

// GridThumbsView, GridCardsView, GridTableView, GridShelveView, GridTableViewROI; empty for others.
QString CollectionViewName(TCollectionView view);

enum class TViewKind
{
    Cards,
    Table
};

// One column of a view (a row of a card view).
struct TViewColumnDesign
{
    QString Name;  // GridThumbsViewName ...
    QString Field; // the field of qDS_Items
    bool Visible = false;
    int Width = 100;    // table columns; in a card view the width of a side row (0: none)
    int Lines = 0;      // card rows: height in lines (pictures too), 0 for one line
    bool Title = false; // the card's title
    QString Editor;     // the edit repository item it is shown with (see FieldEditor)
};

// One of the five views as the program designs it.
struct TViewDesign
{
    TCollectionView View = cvNone;
    QString Name;    // GridThumbsView ...
    QString Caption; // the level caption; empty for none
    TViewKind Kind = TViewKind::Cards;
    // Card views.
    int CardWidth = 0; // 0: set at run time
    int CardIndent = 7;
    bool FillWidth = false;
    int SeparatorWidth = 1;
    bool EmptyRowsHidden = false;
    bool RowsCustomizable = false;
    bool PictureHeightLimitedToCardWidth = false; // the thumbs view's cell-height rule
    bool SquareSidePictures = false;              // the cards view's cell-height rule
    bool CellHints = true;
    // Table views.
    bool ColumnAutoWidth = true;
    bool CellAutoHeight = true;
    bool FooterVisible = false;
    bool GroupFootersVisible = false;
    bool GroupSummariesAligned = false;
    // WeightToText in the WeightG cells.
    bool WeightAsText = false;
    QList<TViewColumnDesign> Columns; // in design order: shown first, then the hidden ones
    QList<QPair<QString, TGridSortOrder>> Sort;
    QStringList Grouping; // field names, outermost first
};

// The five views, in the order GridThumbsView, GridCardsView, GridTableView, GridShelveView,
// GridTableViewROI (their TCollectionView values).
const QList<TViewDesign>& CollectionViewDesigns();
const TViewDesign& CollectionViewDesign(TCollectionView view);
// The edit repository item a field of qDS_Items is shown with: seYear, seWeightG, seWeightOz, seMM,
// seMintage, seQty, edCurrency, edUsersCurrency, edPercent, cbMetalTypes, cbCoinTypes, lcbMints,
// cbNotNull, ImageComboBoxItemCountries, RatingControl, deDate, repMemo, ImageItemThumb (pictures),
// the dictionary combos (cbPurity ...), a custom field's item by its data type; empty for plain text.
QString FieldEditor(const QString& field);
// Applies the design's columns, grouping and sort to the columns of a view, as one change.
void ApplyViewDesign(TGridColumns& columns, const TViewDesign& design);

// ---- Quick filter ----------------------------------------------------------------------------------

// The eight check items, in order: the six metals by code, then coins and bars.
const QStringList& QuickFilterActions();

struct TQuickFilterChecks
{
    std::array<bool, 6> Metals{true, true, true, true, true, true};
    bool Coins = true;
    bool Bars = true;
};

// The filter text of the check items: "(Metal IN (-1, 0, ...)) AND (CoinType IN (-1, ...))".
QString BuildQuickFilter(const TQuickFilterChecks& checks);
// The checks as the window's items stand.
TQuickFilterChecks QuickFilterChecks(const std::function<bool(const QString& action)>& isChecked);
// Sets the text as the dataset's filter with its observers held back, and switches it on.
void ApplyQuickFilter(TDBDataset& items, const QString& filter);

// ---- Summaries -------------------------------------------------------------------------------------

// The group row of GridTableView: the sum of WeightGxQty in ounces; empty for a null sum.
QString GroupTotalWeightText(const QVariant& sumWeightGxQty);

// What a ROI summary's value is shown as.
enum class TSummaryText
{
    Money,
    Percent,
    Weight
};

struct TROISummaryDesign
{
    QString Field;
    QString ColumnName;
    TGridSummaryKind Kind = TGridSummaryKind::Sum;
    int Tag = 0;
    TSummaryText Text = TSummaryText::Money;
};

inline constexpr int cROITagLiquidation = 100;
inline constexpr int cROITagPurchase = 200;
inline constexpr int cROITagPercent = 300;

// The six items of GridTableViewROI, shown both in the group footers and in the view's footer.
const QList<TROISummaryDesign>& ROISummaryDesigns();

// The summary callback of GridTableViewROI: the item tagged 300 from the items tagged 100 and 200,
// for every group and for the footer (where a null sum counts as 0). Nothing when a tag is missing.
void ComputeROIPercentSummary(TGridSummaryScope& scope);

// ---- Status-bar totals -----------------------------------------------------------------------------

// btnTotalOzGold, btnTotalOzSilver, btnTotalOzPlatinum: a caption for a shown button, nothing for a
// hidden one.
using TStatusBarTotals = std::array<std::optional<QString>, 3>;

QString StatusBarTotalButton(int metal);
// Opens qBasicStats, reads a caption for each of the first three metals that has a row, closes it.
TStatusBarTotals ReadStatusBarTotals(TDBDataset& basicStats);
// The totals of the open collection; nothing when no collection is open (the buttons stay as they
// are).
std::optional<TStatusBarTotals> UpdateStatusBarTotals(TDM_InternalData& data);

// ---- Thumb sizes, shelves, zoom ---------------------------------------------------------------------

// The height in lines of the picture row for a thumb size index 0, 1, 2 (4, 9, 14).
int ThumbSizeLines(int index);
// The row sized by actThumbSize in a view; empty for views it does not touch.
QString ThumbSizeRow(TCollectionView view);
// ImageShelveSmall, ImageShelveMedium, ImageShelveLarge.
QString ShelvePictureName(int index);
// The shelf picture behind the shelf view's cards: 777 pixels wide and 178, 264 or 348 high.
QImage ShelvePicture(int index);
// The shelf view's card width for a thumb size: the picture's width plus 7.
int ShelveCardWidth(int index);

inline constexpr int cThumbsZoomMinWidth = 40;
// The wheel zooms only with exactly Ctrl held.
bool WheelZooms(Qt::KeyboardModifiers modifiers);
// The card width after one wheel step: times 0.9 down or 1.1 up, rounded half to even, not below 40.
int ZoomedCardWidth(int width, bool up);

// ---- Table views: grouping and the customise button --------------------------------------------------

enum class TCustomizeMenu
{
    None,                // a card view: the button is hidden
    TableViewCustomize,  // pmTableViewCustomize
    QuickStatsCustomize, // pmQuickStatsCustomize
};

TCustomizeMenu CustomizeMenuFor(TCollectionView view);
// The customise button inside the group-by panel: 5 pixels in from its right, top and bottom edges
// (its left edge in a right-to-left layout); an empty rectangle for an empty panel.
QRect CustomizeButtonGeometry(const QRect& panel, int buttonWidth, bool rightToLeft = false);

// actTableViewShowHorScroll: checked is column auto-width with the vertical bar only; unchecked
// both bars and fixed widths.
inline bool ColumnAutoWidthFor(bool showHorScrollChecked)
{
    return showHorScrollChecked;
}

// ---- Details pane -----------------------------------------------------------------------------------

struct TDetailsCategory
{
    QString Name;    // vgDetailsCategoryRowGeneralInfo ...
    QString TextKey; // cSEditCoinDlgTSGeneral ...
    QStringList Fields;
};

// The four category rows of vgDetails with their fields in order.
const QList<TDetailsCategory>& DetailsCategories();
// The row name of a field in vgDetails (vgDetailsCustom1 for Custom1, vgDetails<Field> else).
QString DetailsRowName(const QString& field);

// Which of the coin rows (Diameter, Edge) and bar rows (Width, Height) show for a record's CoinType:
// true for the coin rows, false for the bar rows, nothing to leave them as they are (null, a
// divisible bar, or an unknown code).
std::optional<bool> DetailsShowCoinRows(const QVariant& coinType);
// Each of imgFront and imgBack: half the panel's width plus one.
inline int DetailsThumbWidth(int panelWidth)
{
    return panelWidth / 2 + 1;
}

// After a splitter moved: its closed flag, and the pane's size when it is open.
void SplitterMoved(bool closed, int size, bool& closedSetting, int& sizeSetting);

// ---- Layouts ----------------------------------------------------------------------------------------

// The stored layout of a view under <root>\Layout\<view name>; empty when none.
QString ReadViewLayout(TZTCustomSettings& layoutStore, const QString& viewName);
void WriteViewLayout(TZTCustomSettings& layoutStore, const QString& viewName, const QString& layout);
