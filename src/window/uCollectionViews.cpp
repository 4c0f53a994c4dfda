#include "uCollectionViews.h"

#include "dmInternalData.h"
#include "uCustomFields.h"
#include "uDBDataset.h"
#include "uGridCardLayout.h"
#include "uGridColumns.h"
#include "uValuation.h"
#include "uZTCustomSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>

using namespace Qt::StringLiterals;

namespace {

constexpr double cTroyOunceGrams = 31.1035;

// Every view carries these, hidden until the user shows them.
const QStringList& CommonFields()
{
    static const QStringList fields = {u"Name"_s,
                                       u"Metal"_s,
                                       u"ObverseDesc"_s,
                                       u"ReverseDesc"_s,
                                       u"Series"_s,
                                       u"Year"_s,
                                       u"WeightG"_s,
                                       u"MintID"_s,
                                       u"CoinType"_s,
                                       u"FaceValue"_s,
                                       u"FaceValueCurrency"_s,
                                       u"Purity"_s,
                                       u"Thickness"_s,
                                       u"Diameter"_s,
                                       u"Width"_s,
                                       u"Height"_s,
                                       u"Edge"_s,
                                       u"MintMark"_s,
                                       u"Country"_s,
                                       u"Mintage"_s,
                                       u"Artist"_s,
                                       u"Description"_s,
                                       u"ExpectedPremium"_s,
                                       u"Rating"_s,
                                       u"Rare"_s,
                                       u"Condition"_s,
                                       u"Status"_s,
                                       u"Owner"_s,
                                       u"Packaging"_s,
                                       u"Location"_s,
                                       u"Grade"_s,
                                       u"GradeService"_s,
                                       u"SerialNumbers"_s,
                                       u"Qty"_s,
                                       u"Price"_s,
                                       u"PurchaseDate"_s,
                                       u"Store"_s,
                                       u"AvgPricePerOz"_s,
                                       u"WeightGxQty"_s,
                                       u"WeightOZxQty"_s,
                                       u"TotalPrice"_s,
                                       u"PurchaseYear"_s,
                                       u"PurchaseYearMonth"_s,
                                       u"WeightOz"_s,
                                       u"WeightGram"_s,
                                       u"SpotValue"_s,
                                       u"LiquidationValue"_s,
                                       u"ROI"_s,
                                       u"SpotValuexQty"_s,
                                       u"LiquidationValuexQty"_s,
                                       u"ROIxQty"_s,
                                       u"ROIPercent"_s,
                                       u"Custom1"_s,
                                       u"Custom2"_s,
                                       u"Custom3"_s,
                                       u"Custom4"_s,
                                       u"Custom5"_s,
                                       u"Custom6"_s,
                                       u"Custom7"_s,
                                       u"Custom8"_s,
                                       u"Custom9"_s,
                                       u"Custom10"_s};
    return fields;
}

// A shown column of a design.
struct TShown
{
    TShown(const QString& field, const QString& name = {}, int lines = 0, bool title = false, int width = -1)
        : Field(field), Name(name), Lines(lines), Title(title), Width(width)
    {}
    QString Field;
    QString Name; // empty: <view><field>
    int Lines = 0;
    bool Title = false;
    int Width = -1; // -1: the view kind's own (100 in a table, no side row in a card)
};

TViewDesign MakeDesign(TCollectionView view, const QString& caption, TViewKind kind,
                       const QList<TShown>& shown, const QStringList& extras)
{
    TViewDesign design;
    design.View = view;
    design.Name = CollectionViewName(view);
    design.Caption = caption;
    design.Kind = kind;
    QStringList present;
    auto add = [&](const QString& field, const QString& name, bool visible, int lines, bool title,
                   int width) {
        TViewColumnDesign column;
        column.Field = field;
        column.Name = name.isEmpty() ? QString(design.Name + field) : name;
        // The shelf's title row has the name of the item's Name column in the other views.
        if (name.isEmpty() && column.Name == u"GridShelveViewName"_s) {
            column.Name = u"GridShelveViewItemName"_s;
        }
        column.Visible = visible;
        column.Lines = lines;
        column.Title = title;
        column.Width = width;
        column.Editor = FieldEditor(field);
        design.Columns << column;
        present << field;
    };
    const int defaultWidth = kind == TViewKind::Table ? 100 : 0;
    for (const TShown& s : shown) {
        add(s.Field, s.Name, true, s.Lines, s.Title, s.Width < 0 ? defaultWidth : s.Width);
    }
    for (const QStringList* list : {&CommonFields(), &extras}) {
        for (const QString& field : *list) {
            if (!present.contains(field)) {
                add(field, {}, false, 0, false, defaultWidth);
            }
        }
    }
    return design;
}

QList<TViewDesign> MakeDesigns()
{
    const QList<QPair<QString, TGridSortOrder>> cardSort = {{u"Metal"_s, TGridSortOrder::Ascending},
                                                            {u"CoinType"_s, TGridSortOrder::Ascending},
                                                            {u"MintID"_s, TGridSortOrder::Ascending}};
    const QStringList pictureExtras = {u"ThumbBack"_s, u"PhotoSide"_s, u"PhotoInBox"_s};

    TViewDesign thumbs = MakeDesign(cvThumbs, u"Thumbs view"_s, TViewKind::Cards,
                                    {{u"ThumbFront"_s, {}, 9, false, 0},
                                     {u"Caption"_s, {}, 2, true, 0},
                                     {u"Name"_s},
                                     {u"Metal"_s},
                                     {u"Year"_s},
                                     {u"WeightG"_s},
                                     {u"MintID"_s},
                                     {u"Qty"_s},
                                     {u"Country"_s},
                                     {u"Price"_s}},
                                    pictureExtras);
    thumbs.CardWidth = 209;
    thumbs.CardIndent = 7;
    thumbs.FillWidth = true;
    thumbs.RowsCustomizable = true;
    thumbs.PictureHeightLimitedToCardWidth = true;
    thumbs.WeightAsText = true;
    thumbs.Sort = cardSort;

    TViewDesign cards = MakeDesign(cvCards, u"Cards view"_s, TViewKind::Cards,
                                   {{u"ThumbFront"_s, {}, 0, false, 150},
                                    {u"Caption"_s, {}, 0, true, 0},
                                    {u"Name"_s},
                                    {u"Metal"_s},
                                    {u"Series"_s},
                                    {u"Year"_s},
                                    {u"WeightG"_s},
                                    {u"MintID"_s},
                                    {u"Qty"_s}},
                                   pictureExtras);
    cards.CardWidth = 313;
    cards.CardIndent = 7;
    cards.FillWidth = true;
    cards.EmptyRowsHidden = true;
    cards.RowsCustomizable = true;
    cards.SquareSidePictures = true;
    cards.WeightAsText = true;
    cards.Sort = cardSort;

    TViewDesign table = MakeDesign(cvTable, u"Table view"_s, TViewKind::Table,
                                   {{u"Name"_s},
                                    {u"Series"_s},
                                    {u"Year"_s},
                                    {u"WeightG"_s},
                                    {u"Qty"_s},
                                    {u"CoinType"_s},
                                    {u"Purity"_s},
                                    {u"Country"_s},
                                    {u"Price"_s}},
                                   {u"Caption"_s});
    table.WeightAsText = true;
    table.Grouping = {u"Metal"_s, u"MintID"_s};

    TViewDesign shelve =
        MakeDesign(cvShelve, u"Shelves view"_s, TViewKind::Cards,
                   {{u"Caption"_s, u"GridShelveViewName"_s, 2, true, 0},
                    {u"ThumbFront"_s, u"GridShelveViewPhotoThumb"_s, 5, false, 0}},
                   {u"ThumbBack"_s, u"PhotoFront"_s, u"PhotoBack"_s, u"PhotoSide"_s, u"PhotoInBox"_s});
    shelve.CardIndent = 35;
    shelve.SeparatorWidth = 0;
    shelve.Sort = cardSort;

    TViewDesign roi = MakeDesign(cvTableROI, QString(), TViewKind::Table,
                                 {{u"Caption"_s},
                                  {u"TotalPrice"_s, u"GridTableViewROIPurchasePricexQty"_s},
                                  {u"ExpectedPremium"_s},
                                  {u"Qty"_s},
                                  {u"WeightOZxQty"_s},
                                  {u"LiquidationValuexQty"_s},
                                  {u"ROIxQty"_s},
                                  {u"ROIPercent"_s}},
                                 {});
    roi.FooterVisible = true;
    roi.GroupFootersVisible = true;
    roi.GroupSummariesAligned = true;
    roi.Grouping = {u"Metal"_s};

    // In the order of the views' numbers.
    return {thumbs, cards, table, shelve, roi};
}

} // namespace

const QList<TViewDesign>& CollectionViewDesigns()
{
    static const QList<TViewDesign> designs = MakeDesigns();
    return designs;
}

const TViewDesign& CollectionViewDesign(TCollectionView view)
{
    const int index = int(view);
    const QList<TViewDesign>& designs = CollectionViewDesigns();
    return designs.at(index >= 0 && index < designs.size() ? index : int(cvCards));
}

QString FieldEditor(const QString& field)
{
    static const QHash<QString, QString> editors = {
        {u"ObverseDesc"_s, u"repMemo"_s},
        {u"ReverseDesc"_s, u"repMemo"_s},
        {u"Description"_s, u"repMemo"_s},
        {u"SerialNumbers"_s, u"repMemo"_s},
        {u"Metal"_s, u"cbMetalTypes"_s},
        {u"CoinType"_s, u"cbCoinTypes"_s},
        {u"MintID"_s, u"lcbMints"_s},
        {u"Year"_s, u"seYear"_s},
        {u"PurchaseYear"_s, u"seYear"_s},
        {u"WeightG"_s, u"seWeightG"_s},
        {u"WeightGram"_s, u"seWeightG"_s},
        {u"WeightGxQty"_s, u"seWeightG"_s},
        {u"WeightOz"_s, u"seWeightOz"_s},
        {u"WeightOZxQty"_s, u"seWeightOz"_s},
        {u"Thickness"_s, u"seMM"_s},
        {u"Diameter"_s, u"seMM"_s},
        {u"Width"_s, u"seMM"_s},
        {u"Height"_s, u"seMM"_s},
        {u"Mintage"_s, u"seMintage"_s},
        {u"Qty"_s, u"seQty"_s},
        {u"FaceValue"_s, u"edCurrency"_s},
        {u"Purity"_s, u"cbPurity"_s},
        {u"Edge"_s, u"cbEdge"_s},
        {u"Condition"_s, u"cbCondition"_s},
        {u"Status"_s, u"cbStatus"_s},
        {u"Owner"_s, u"cbOwner"_s},
        {u"Packaging"_s, u"cbPackaging"_s},
        {u"Location"_s, u"cbLocation"_s},
        {u"Grade"_s, u"cbGrade"_s},
        {u"GradeService"_s, u"cbGradeService"_s},
        {u"Store"_s, u"cbStore"_s},
        {u"MintMark"_s, u"cbNotNull"_s},
        {u"Rare"_s, u"cbNotNull"_s},
        {u"Country"_s, u"ImageComboBoxItemCountries"_s},
        {u"Rating"_s, u"RatingControl"_s},
        {u"PurchaseDate"_s, u"deDate"_s},
        {u"ExpectedPremium"_s, u"edUsersCurrency"_s},
        {u"Price"_s, u"edUsersCurrency"_s},
        {u"AvgPricePerOz"_s, u"edUsersCurrency"_s},
        {u"TotalPrice"_s, u"edUsersCurrency"_s},
        {u"SpotValue"_s, u"edUsersCurrency"_s},
        {u"LiquidationValue"_s, u"edUsersCurrency"_s},
        {u"ROI"_s, u"edUsersCurrency"_s},
        {u"SpotValuexQty"_s, u"edUsersCurrency"_s},
        {u"LiquidationValuexQty"_s, u"edUsersCurrency"_s},
        {u"ROIxQty"_s, u"edUsersCurrency"_s},
        {u"ROIPercent"_s, u"edPercent"_s},
        {u"ThumbFront"_s, u"ImageItemThumb"_s},
        {u"ThumbBack"_s, u"ImageItemThumb"_s},
        {u"PhotoFront"_s, u"ImageItemThumb"_s},
        {u"PhotoBack"_s, u"ImageItemThumb"_s},
        {u"PhotoSide"_s, u"ImageItemThumb"_s},
        {u"PhotoInBox"_s, u"ImageItemThumb"_s},
    };
    const int custom = CustomFieldIndex(field);
    if (custom >= 0) {
        return CustomFieldEditor(ORVCustomFields[std::size_t(custom)].DataType);
    }
    return editors.value(field);
}

void ApplyViewDesign(TGridColumns& columns, const TViewDesign& design)
{
    columns.beginUpdate();
    columns.clearGrouping();
    columns.clearSort();
    int position = 0;
    for (const TViewColumnDesign& column : design.Columns) {
        TGridColumn* c = columns.byName(column.Name);
        if (!c) {
            continue;
        }
        c->setVisible(column.Visible);
        c->setPosition(position++);
    }
    for (int i = 0; i < design.Grouping.size(); ++i) {
        if (TGridColumn* c = columns.byField(design.Grouping.at(i))) {
            c->setGroupIndex(i);
            c->setSortOrder(TGridSortOrder::Ascending);
        }
    }
    for (int i = 0; i < design.Sort.size(); ++i) {
        if (TGridColumn* c = columns.byField(design.Sort.at(i).first)) {
            c->setSortIndex(i);
            c->setSortOrder(design.Sort.at(i).second);
        }
    }
    columns.endUpdate();
}

// ---- Quick filter ----

const QStringList& QuickFilterActions()
{
    static const QStringList names = {u"actFilterGold"_s,      u"actFilterSilver"_s,  u"actFilterPlatinum"_s,
                                      u"actFilterPalladium"_s, u"actFilterRhodium"_s, u"actFilterCopper"_s,
                                      u"actFilterCoins"_s,     u"actFilterBars"_s};
    return names;
}

QString BuildQuickFilter(const TQuickFilterChecks& checks)
{
    QString text = u"(Metal IN (-1"_s;
    for (std::size_t metal = 0; metal < checks.Metals.size(); ++metal) {
        if (checks.Metals[metal]) {
            text += u", "_s + QString::number(metal);
        }
    }
    text += u")) AND (CoinType IN (-1"_s;
    if (checks.Coins) {
        text += u", 0, 1, 2"_s;
    }
    if (checks.Bars) {
        text += u", 3, 4"_s;
    }
    text += u"))"_s;
    return text;
}

TQuickFilterChecks QuickFilterChecks(const std::function<bool(const QString& action)>& isChecked)
{
    TQuickFilterChecks checks;
    const QStringList& names = QuickFilterActions();
    for (std::size_t metal = 0; metal < checks.Metals.size(); ++metal) {
        checks.Metals[metal] = isChecked(names.at(qsizetype(metal)));
    }
    checks.Coins = isChecked(names.at(6));
    checks.Bars = isChecked(names.at(7));
    return checks;
}

void ApplyQuickFilter(TDBDataset& items, const QString& filter)
{
    TDisableControlsScope guard(items);
    items.setFilter(filter);
    items.setFiltered(true);
}

// ---- Summaries ----

QString GroupTotalWeightText(const QVariant& sumWeightGxQty)
{
    if (sumWeightGxQty.isNull() || !sumWeightGxQty.isValid()) {
        return {};
    }
    return FormatText(GetText(u"cSMainTableViewTotalWeightFmt"_s),
                      {sumWeightGxQty.toDouble() / cTroyOunceGrams});
}

const QList<TROISummaryDesign>& ROISummaryDesigns()
{
    static const QList<TROISummaryDesign> items = {
        {u"LiquidationValuexQty"_s, u"GridTableViewROILiquidationValuexQty"_s, TGridSummaryKind::Sum,
         cROITagLiquidation, TSummaryText::Money},
        {u"TotalPrice"_s, u"GridTableViewROIPurchasePricexQty"_s, TGridSummaryKind::Sum, cROITagPurchase,
         TSummaryText::Money},
        {u"ROIPercent"_s, u"GridTableViewROIROIPercent"_s, TGridSummaryKind::None, cROITagPercent,
         TSummaryText::Percent},
        {u"SpotValuexQty"_s, u"GridTableViewROISpotValuexQty"_s, TGridSummaryKind::Sum, 0,
         TSummaryText::Money},
        {u"ROIxQty"_s, u"GridTableViewROIROIxQty"_s, TGridSummaryKind::Sum, 0, TSummaryText::Money},
        {u"WeightOZxQty"_s, u"GridTableViewROIWeightOZxQty"_s, TGridSummaryKind::Sum, 0,
         TSummaryText::Weight},
    };
    return items;
}

void ComputeROIPercentSummary(TGridSummaryScope& scope)
{
    const int liquidation = scope.indexOfTag(cROITagLiquidation);
    const int purchase = scope.indexOfTag(cROITagPurchase);
    const int percent = scope.indexOfTag(cROITagPercent);
    if (liquidation < 0 || purchase < 0 || percent < 0) {
        return;
    }
    double l = 0.0;
    double p = 0.0;
    if (scope.isFooter()) {
        // The footer counts a null sum as nothing spent or worth nothing.
        const QVariant lv = scope.value(liquidation);
        const QVariant pv = scope.value(purchase);
        l = lv.isNull() ? 0.0 : lv.toDouble();
        p = pv.isNull() ? 0.0 : pv.toDouble();
    } else {
        l = scope.value(liquidation).toDouble();
        p = scope.value(purchase).toDouble();
    }
    const std::optional<double> roi = ROIPercentOfSums(l, p);
    scope.setValue(percent, roi ? QVariant(*roi) : QVariant());
}

// ---- Status-bar totals ----

QString StatusBarTotalButton(int metal)
{
    static const QStringList names = {u"btnTotalOzGold"_s, u"btnTotalOzSilver"_s, u"btnTotalOzPlatinum"_s};
    return metal >= 0 && metal < names.size() ? names.at(metal) : QString();
}

TStatusBarTotals ReadStatusBarTotals(TDBDataset& basicStats)
{
    static const QStringList keys = {u"cSMainStatusBarTotalGoldFmt"_s, u"cSMainStatusBarTotalSilverFmt"_s,
                                     u"cSMainStatusBarTotalPlatinumFmt"_s};
    TStatusBarTotals totals;
    basicStats.open();
    try {
        const int metalField = basicStats.fieldByName(u"Metal"_s).index();
        const int weightField = basicStats.fieldByName(u"TotalWeightOZ"_s).index();
        const int rows = basicStats.recordCount();
        for (int row = 0; row < rows; ++row) {
            const QVariant metal = basicStats.valueAt(row, metalField);
            if (metal.isNull()) {
                continue;
            }
            const int code = metal.toInt();
            if (code < 0 || code > 2) {
                continue;
            }
            totals[std::size_t(code)] =
                FormatText(GetText(keys.at(code)), {basicStats.valueAt(row, weightField).toDouble()});
        }
    } catch (...) {
        basicStats.close();
        throw;
    }
    basicStats.close();
    return totals;
}

std::optional<TStatusBarTotals> UpdateStatusBarTotals(TDM_InternalData& data)
{
    if (!data.ADConnection->connected()) {
        return std::nullopt;
    }
    return ReadStatusBarTotals(*data.qBasicStats);
}

// ---- Thumb sizes, shelves, zoom ----

int ThumbSizeLines(int index)
{
    static constexpr int lines[] = {4, 9, 14};
    return lines[std::clamp(index, 0, 2)];
}

QString ThumbSizeRow(TCollectionView view)
{
    if (view == cvThumbs) {
        return u"GridThumbsViewThumbFront"_s;
    }
    if (view == cvShelve) {
        return u"GridShelveViewPhotoThumb"_s;
    }
    return {};
}

QString ShelvePictureName(int index)
{
    static const QStringList names = {u"ImageShelveSmall"_s, u"ImageShelveMedium"_s, u"ImageShelveLarge"_s};
    return names.at(std::clamp(index, 0, 2));
}

QImage ShelvePicture(int index)
{
    static constexpr int heights[] = {178, 264, 348};
    constexpr int width = 777;
    const int height = heights[std::clamp(index, 0, 2)];
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);

    // A wooden board at the bottom: the top face in light, the front edge darker, a soft shadow
    // above the board where the items stand, and a back wall that fades in.
    const int board = std::max(18, height / 12);
    const int front = std::max(8, board / 2);
    const int boardTop = height - board - front;

    QLinearGradient wall(0, 0, 0, boardTop);
    wall.setColorAt(0.0, QColor(232, 222, 204, 0));
    wall.setColorAt(1.0, QColor(214, 198, 170, 90));
    painter.fillRect(QRect(0, 0, width, boardTop), wall);

    QLinearGradient top(0, boardTop, 0, boardTop + board);
    top.setColorAt(0.0, QColor(196, 150, 98));
    top.setColorAt(1.0, QColor(168, 118, 70));
    QPainterPath topFace;
    topFace.moveTo(10, boardTop);
    topFace.lineTo(width - 10, boardTop);
    topFace.lineTo(width, boardTop + board);
    topFace.lineTo(0, boardTop + board);
    topFace.closeSubpath();
    painter.fillPath(topFace, top);

    // Grain: thin darker strokes along the board.
    painter.setPen(QPen(QColor(140, 96, 54, 70), 1));
    for (int i = 1; i < 4; ++i) {
        const int y = boardTop + board * i / 4;
        painter.drawLine(QPointF(20 + i * 37, y), QPointF(width - 30 - i * 53, y));
    }

    QLinearGradient edge(0, boardTop + board, 0, height);
    edge.setColorAt(0.0, QColor(128, 84, 44));
    edge.setColorAt(1.0, QColor(96, 60, 30));
    painter.fillRect(QRect(0, boardTop + board, width, front), edge);
    painter.setPen(QPen(QColor(230, 190, 140, 160), 1));
    painter.drawLine(QPointF(0, boardTop + board + 0.5), QPointF(width, boardTop + board + 0.5));

    QLinearGradient shadow(0, boardTop - 10, 0, boardTop);
    shadow.setColorAt(0.0, QColor(0, 0, 0, 0));
    shadow.setColorAt(1.0, QColor(0, 0, 0, 40));
    painter.fillRect(QRect(10, boardTop - 10, width - 20, 10), shadow);
    painter.end();
    return image;
}

int ShelveCardWidth(int index)
{
    Q_UNUSED(index);
    return 777 + 7;
}

bool WheelZooms(Qt::KeyboardModifiers modifiers)
{
    return (modifiers & ~Qt::KeypadModifier) == Qt::ControlModifier;
}

int ZoomedCardWidth(int width, bool up)
{
    return TGridCardLayout::zoomedWidth(width, up ? 1.1 : 0.9, cThumbsZoomMinWidth);
}

// ---- Customise button ----

TCustomizeMenu CustomizeMenuFor(TCollectionView view)
{
    if (view == cvTable) {
        return TCustomizeMenu::TableViewCustomize;
    }
    if (view == cvTableROI) {
        return TCustomizeMenu::QuickStatsCustomize;
    }
    return TCustomizeMenu::None;
}

QRect CustomizeButtonGeometry(const QRect& panel, int buttonWidth, bool rightToLeft)
{
    constexpr int inset = 5;
    if (panel.isEmpty() || panel.height() <= 2 * inset) {
        return {};
    }
    const int height = panel.height() - 2 * inset;
    const int width = std::min(buttonWidth, std::max(0, panel.width() - 2 * inset));
    const int left = rightToLeft ? panel.left() + inset : panel.right() - inset - width + 1;
    return QRect(left, panel.top() + inset, width, height);
}

// ---- Details pane ----

const QList<TDetailsCategory>& DetailsCategories()
{
    static const QList<TDetailsCategory> categories = {
        {u"vgDetailsCategoryRowGeneralInfo"_s,
         u"cSEditCoinDlgTSGeneral"_s,
         {u"Metal"_s, u"CoinType"_s, u"Name"_s, u"Year"_s, u"WeightGram"_s, u"WeightOz"_s, u"Purity"_s,
          u"Series"_s, u"MintID"_s, u"Country"_s}},
        {u"vgDetailsCategoryRowPurchaseData"_s,
         u"cSEditCoinDlgTSPurchase"_s,
         {u"Qty"_s, u"Price"_s, u"ExpectedPremium"_s, u"Store"_s, u"Condition"_s, u"Status"_s, u"Owner"_s,
          u"Packaging"_s, u"Location"_s, u"Grade"_s, u"GradeService"_s, u"Rare"_s, u"Rating"_s,
          u"SerialNumbers"_s}},
        {u"vgDetailsCategoryRowSpec"_s,
         u"cSEditCoinDlgTSSpec"_s,
         {u"ObverseDesc"_s, u"ReverseDesc"_s, u"FaceValue"_s, u"FaceValueCurrency"_s, u"Thickness"_s,
          u"Diameter"_s, u"Width"_s, u"Height"_s, u"Edge"_s, u"MintMark"_s, u"Mintage"_s, u"Artist"_s,
          u"Description"_s}},
        {u"vgDetailsCategoryRowCustomFields"_s,
         u"cSEditCoinDlgTSCustom"_s,
         {u"Custom1"_s, u"Custom2"_s, u"Custom3"_s, u"Custom4"_s, u"Custom5"_s, u"Custom6"_s, u"Custom7"_s,
          u"Custom8"_s, u"Custom9"_s, u"Custom10"_s}},
    };
    return categories;
}

QString DetailsRowName(const QString& field)
{
    return u"vgDetails"_s + field;
}

std::optional<bool> DetailsShowCoinRows(const QVariant& coinType)
{
    if (coinType.isNull() || !coinType.isValid()) {
        return std::nullopt;
    }
    bool ok = false;
    const int code = coinType.toInt(&ok);
    if (!ok || code < 0) {
        return std::nullopt;
    }
    if (code < 3) {
        return true;
    }
    if (code == 3) {
        return false;
    }
    return std::nullopt;
}

void SplitterMoved(bool closed, int size, bool& closedSetting, int& sizeSetting)
{
    closedSetting = closed;
    if (!closed) {
        sizeSetting = size;
    }
}

// ---- Layouts ----

QString ReadViewLayout(TZTCustomSettings& layoutStore, const QString& viewName)
{
    return layoutStore.GetStringValue(viewName, QString());
}

void WriteViewLayout(TZTCustomSettings& layoutStore, const QString& viewName, const QString& layout)
{
    layoutStore.SetStringValue(viewName, QString(), layout);
}

QString CollectionViewName(TCollectionView view)
{
    static const QStringList names = {u"GridThumbsView"_s, u"GridCardsView"_s, u"GridTableView"_s,
                                      u"GridShelveView"_s, u"GridTableViewROI"_s};
    return view >= 0 && view < names.size() ? names.at(view) : QString();
}
