#include "uValuation.h"

#include "uZTTypes.h"

TItemValuation ValueItem(const TItemValuationInput& input)
{
    TItemValuation result;
    const bool valued = input.Spot > 0 && input.TotalPrice > 0;
    result.SpotValue = input.Spot * input.WeightG / TroyOunceGrams;
    result.LiquidationValue = input.ExpectedPremium + input.Spot * input.WeightG / TroyOunceGrams;
    if (valued)
        result.ROI = result.LiquidationValue - input.Price;
    result.SpotValuexQty = input.Qty * result.SpotValue;
    result.LiquidationValuexQty = input.Qty * result.LiquidationValue;
    if (valued) {
        result.ROIxQty = result.LiquidationValuexQty - input.TotalPrice;
        result.ROIPercent = (result.LiquidationValuexQty - input.TotalPrice) / input.TotalPrice * 100;
    }
    return result;
}

std::optional<double> ROIPercentOfSums(double sumLiquidationValuexQty, double sumTotalPrice)
{
    if (sumTotalPrice == 0)
        return std::nullopt;
    return (sumLiquidationValuexQty - sumTotalPrice) / sumTotalPrice * 100;
}

QString FormatUsersCurrency(double value, const QString& currency, const QLocale& locale)
{
    const QString code = currency.trimmed();
    QString symbol = code;
    if (code.isEmpty() || code.compare(locale.currencySymbol(QLocale::CurrencyIsoCode), Qt::CaseInsensitive) == 0)
        symbol = locale.currencySymbol(QLocale::CurrencySymbol);
    QString text = locale.toCurrencyString(value, symbol, 2);
    // A currency code stands apart from the number: "2,331.50 USD", not "2,331.50USD".
    if (symbol == code && !code.isEmpty()) {
        const qsizetype at = text.indexOf(code);
        if (at > 0 && text.at(at - 1).isDigit())
            text.insert(at, u'\u00A0');
        else if (at >= 0 && at + code.size() < text.size() && text.at(at + code.size()).isDigit())
            text.insert(at + code.size(), u'\u00A0');
    }
    return text;
}
