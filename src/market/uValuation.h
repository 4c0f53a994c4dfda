#pragma once

#include <QLocale>
#include <QString>

#include <optional>

// The money figures of one item row. Inputs are taken as the data layer reads
// them: a NULL number counts as 0.
struct TItemValuationInput
{
    double Spot = 0.0;       // SpotPriceOf(Metal)
    double WeightG = 0.0;    // metal weight of one item, grams
    double Qty = 0.0;        // pieces the row stands for
    double Price = 0.0;      // price paid per item
    double TotalPrice = 0.0; // Price * Qty as the query delivered it
    double ExpectedPremium = 0.0;
};

struct TItemValuation
{
    double SpotValue = 0.0;
    double LiquidationValue = 0.0;
    std::optional<double> ROI;
    double SpotValuexQty = 0.0;
    double LiquidationValuexQty = 0.0;
    std::optional<double> ROIxQty;
    std::optional<double> ROIPercent;
};

// The per-row arithmetic: one rule for the item record and for every view.
TItemValuation ValueItem(const TItemValuationInput& input);

// ROI percent of a group or of the whole collection, worked out from the sums
// of LiquidationValuexQty and TotalPrice; no value when the price sum is 0.
std::optional<double> ROIPercentOfSums(double sumLiquidationValuexQty, double sumTotalPrice);

// Money as the views show it: the locale's currency format with the symbol of
// the user's currency (the locale's own symbol when it is the locale's currency,
// else the ISO code itself).
QString FormatUsersCurrency(double value, const QString& currency, const QLocale& locale = QLocale());
