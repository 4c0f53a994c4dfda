#include "uItemTexts.h"

#include "uZTStrings.h"
#include "uZTTypes.h"

#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

bool Near(double a, double b, double epsilon)
{
    return std::fabs(a - b) <= epsilon;
}

// The float format "0.##": at most two decimals, no trailing zeros, no group separators.
QString FormatUpToTwoDecimals(double value, const QLocale& locale)
{
    QLocale plain = locale;
    plain.setNumberOptions(QLocale::OmitGroupSeparator);
    QString text = plain.toString(value, 'f', 2);
    const QString point = plain.decimalPoint();
    const qsizetype at = text.lastIndexOf(point);
    if (at >= 0) {
        qsizetype end = text.size();
        while (end > at + point.size() && text.at(end - 1) == plain.zeroDigit().front())
            --end;
        if (end == at + point.size())
            end = at;
        text.truncate(end);
    }
    // "-0" after rounding a tiny negative value
    if (text == plain.negativeSign() + plain.zeroDigit())
        text = plain.zeroDigit();
    return text;
}

struct TFraction
{
    double grams;
    const char16_t* text;
};

} // namespace

double GramsToOunces(double grams)
{
    return grams / TroyOunceGrams;
}

QString WeightToText(double grams, const QLocale& locale)
{
    const double oz = GramsToOunces(grams);
    // Rounding to nearest with ties to even, the current rounding mode.
    const double wholeOz = std::nearbyint(oz);
    if (Near(wholeOz, oz, 0.01))
        return QString::number(qint64(wholeOz)) + u" oz"_s;

    static const std::array<TFraction, 10> fractions = {{
        {TroyOunceGrams / 2, u"½ oz"},
        {TroyOunceGrams / 4, u"¼ oz"},
        {TroyOunceGrams / 5, u"1/5 oz"},
        {TroyOunceGrams / 10, u"1/10 oz"},
        {TroyOunceGrams / 20, u"1/20 oz"},
        {TroyOunceGrams / 25, u"1/25 oz"},
        {TroyOunceGrams / 40, u"1/40 oz"},
        {TroyOunceGrams * 3 / 4, u"¾ oz"},
        {TroyOunceGrams * 1.25, u"1¼ oz"},
        {TroyOunceGrams * 1.5, u"1½ oz"},
    }};
    for (const TFraction& fraction : fractions)
        if (Near(grams, fraction.grams, 0.01))
            return QString::fromUtf16(fraction.text);

    if (grams >= 1000)
        return FormatUpToTwoDecimals(grams / 1000, locale) + u" kg"_s;
    return FormatUpToTwoDecimals(grams, locale) + u" g"_s;
}

QString WeightToText(double grams)
{
    return WeightToText(grams, QLocale());
}

QString MetalToText(int code)
{
    static const std::array<QString, MetalCount> keys = {u"cS_AU"_s, u"cS_AG"_s, u"cS_PT"_s,
                                                         u"cS_PD"_s, u"cS_RH"_s, u"cS_CU"_s};
    if (code < 0 || code >= MetalCount)
        return QString();
    return GetText(keys[std::size_t(code)]);
}

QString CoinTypeToText(int code)
{
    static const std::array<QString, CoinTypeCount> keys = {u"cS_Coin"_s, u"cS_RectCoin"_s, u"cS_Round"_s,
                                                            u"cS_Bar"_s, u"cS_DivBar"_s};
    if (code < 0 || code >= CoinTypeCount)
        return QString();
    return GetText(keys[std::size_t(code)]);
}

QString ItemCaption(const QString& name, double weightG, int year, int metal, int coinType)
{
    QString caption = name + u' ' + WeightToText(weightG) + u' ';
    if (year != 0)
        caption += QString::number(year) + u' ';
    caption += MetalToText(metal) + u' ' + CoinTypeToText(coinType);
    return caption;
}
