#include "uTableViewCustomizations.h"

#include "uCustomFields.h"
#include "uGridColumns.h"

using namespace Qt::StringLiterals;

namespace {

constexpr auto Asc = TGridSortOrder::Ascending;
constexpr auto Desc = TGridSortOrder::Descending;

} // namespace

QString TableViewConfigurationButton(TTableViewConfiguration configuration)
{
    switch (configuration) {
    case TTableViewConfiguration::General:
        return u"btnTableViewCustomizationGeneral"_s;
    case TTableViewConfiguration::PurchaseData:
        return u"btnTableViewCustomizationPurchaseData"_s;
    case TTableViewConfiguration::Specification:
        return u"btnTableViewCustomizationSpecification"_s;
    case TTableViewConfiguration::AllFields:
        return u"btnTableViewCustomizationAllFields"_s;
    }
    return {};
}

QString TableViewConfigurationTextKey(TTableViewConfiguration configuration)
{
    switch (configuration) {
    case TTableViewConfiguration::General:
        return u"cSEditCoinDlgTSGeneral"_s;
    case TTableViewConfiguration::PurchaseData:
        return u"cSEditCoinDlgTSPurchase"_s;
    case TTableViewConfiguration::Specification:
        return u"cSEditCoinDlgTSSpec"_s;
    case TTableViewConfiguration::AllFields:
        return u"cSEditCoinDlgAllFields"_s;
    }
    return {};
}

TTableViewCustomizationConf TableViewConfiguration(TTableViewConfiguration configuration)
{
    return TableViewConfiguration(configuration, CustomFieldsEnabled, ORVCustomFields);
}

TTableViewCustomizationConf TableViewConfiguration(TTableViewConfiguration configuration,
                                                   bool customFieldsEnabled,
                                                   const TORVCustomFields& customFields)
{
    TTableViewCustomizationConf conf;
    switch (configuration) {
    case TTableViewConfiguration::General:
        conf.VisibleList = {u"Name"_s,   u"Year"_s,         u"WeightG"_s,   u"Purity"_s,       u"Series"_s,
                            u"MintID"_s, u"Country"_s,      u"Price"_s,     u"PurchaseDate"_s, u"Store"_s,
                            u"Qty"_s,    u"WeightOZxQty"_s, u"TotalPrice"_s};
        conf.GroupList = {u"Metal"_s, u"CoinType"_s};
        conf.SortList = {{u"Metal"_s, Asc}, {u"CoinType"_s, Asc}, {u"Year"_s, Desc}};
        break;
    case TTableViewConfiguration::PurchaseData:
        conf.VisibleList = {u"Name"_s,
                            u"Year"_s,
                            u"WeightG"_s,
                            u"MintID"_s,
                            u"Country"_s,
                            u"Price"_s,
                            u"Qty"_s,
                            u"TotalPrice"_s,
                            u"WeightOZxQty"_s,
                            u"ExpectedPremium"_s,
                            u"Condition"_s,
                            u"Status"_s,
                            u"Packaging"_s,
                            u"Location"_s,
                            u"Grade"_s,
                            u"GradeService"_s,
                            u"LiquidationValuexQty"_s,
                            u"ROIxQty"_s};
        conf.GroupList = {u"Metal"_s, u"CoinType"_s};
        conf.SortList = {{u"Metal"_s, Asc}, {u"CoinType"_s, Asc}, {u"Name"_s, Asc}};
        break;
    case TTableViewConfiguration::Specification:
        conf.VisibleList = {
            u"CoinType"_s,  u"Name"_s,     u"Year"_s,    u"WeightG"_s, u"Purity"_s,    u"Series"_s,
            u"Qty"_s,       u"MintID"_s,   u"Country"_s, u"Edge"_s,    u"FaceValue"_s, u"FaceValueCurrency"_s,
            u"Thickness"_s, u"Diameter"_s, u"Mintage"_s, u"Artist"_s,  u"MintMark"_s};
        conf.GroupList = {u"Metal"_s};
        conf.SortList = {{u"Metal"_s, Asc}, {u"CoinType"_s, Asc}, {u"Name"_s, Asc}};
        break;
    case TTableViewConfiguration::AllFields:
        conf.VisibleList = {u"Name"_s,
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
                            u"ThumbFront"_s,
                            u"ThumbBack"_s,
                            u"PhotoFront"_s,
                            u"PhotoBack"_s,
                            u"PhotoSide"_s,
                            u"PhotoInBox"_s,
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
                            u"Store"_s};
        if (customFieldsEnabled) {
            for (int n = 0; n < cCustomFieldCount; ++n) {
                if (customFields[std::size_t(n)].Enabled) {
                    conf.VisibleList << CustomFieldColumn(n);
                }
            }
        }
        conf.GroupList = {u"Metal"_s};
        conf.SortList = {{u"Metal"_s, Asc}, {u"CoinType"_s, Asc}, {u"Name"_s, Asc}};
        break;
    }
    return conf;
}

void ApplyTableViewCustomization(TGridColumns& columns, const TTableViewCustomizationConf& conf)
{
    // The update is ended also when a step throws, so the view is never left frozen.
    struct TUpdate
    {
        TGridColumns& Columns;
        explicit TUpdate(TGridColumns& c) : Columns(c) { Columns.beginUpdate(); }
        ~TUpdate() { Columns.endUpdate(); }
    } update(columns);

    for (TGridColumn* column : columns.ordered()) {
        column->setGroupIndex(-1);
        column->setSortIndex(-1);
        column->setSortOrder(TGridSortOrder::None);
        column->setVisible(false);
    }
    for (int i = 0; i < conf.GroupList.size(); ++i) {
        if (TGridColumn* column = columns.byField(conf.GroupList.at(i))) {
            column->setGroupIndex(i);
        }
    }
    // Positions count among the columns found, so a skipped name leaves no gap.
    int position = 0;
    for (const QString& field : conf.VisibleList) {
        if (TGridColumn* column = columns.byField(field)) {
            column->setVisible(true);
            column->setPosition(position++);
        }
    }
    int sortIndex = 0;
    for (const auto& [field, order] : conf.SortList) {
        if (TGridColumn* column = columns.byField(field)) {
            column->setSortIndex(sortIndex++);
            column->setSortOrder(order);
        }
    }
}
