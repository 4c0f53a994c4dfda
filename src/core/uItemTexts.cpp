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

namespace {

// The weight text; the locale is asked for only when a number has decimals to show.
template <typename LocaleOf> QString WeightText(double grams, LocaleOf localeOf)
{
    const double oz = GramsToOunces(grams);
    // Rounding to nearest with ties to even, the current rounding mode.
    const double wholeOz = std::nearbyint(oz);
    if (Near(wholeOz, oz, 0.01)) {
        // Whole numbers beyond 64 bits are written from the double as they stand.
        if (std::fabs(wholeOz) < 9.0e18)
            return QString::number(qint64(wholeOz)) + u" oz"_s;
        return QString::number(wholeOz, 'f', 0) + u" oz"_s;
    }

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
        return FormatUpToTwoDecimals(grams / 1000, localeOf()) + u" kg"_s;
    return FormatUpToTwoDecimals(grams, localeOf()) + u" g"_s;
}

} // namespace

QString WeightToText(double grams, const QLocale& locale)
{
    return WeightText(grams, [&locale]() -> const QLocale& { return locale; });
}

QString WeightToText(double grams)
{
    return WeightText(grams, [] { return QLocale(); });
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
    return ItemCaption(name, weightG, year, MetalToText(metal), CoinTypeToText(coinType));
}

QString ItemCaption(const QString& name, double weightG, int year, const QString& metalText,
                    const QString& coinTypeText)
{
    const QString weight = WeightToText(weightG);
    if (year != 0)
        return name + u' ' + weight + u' ' + QString::number(year) + u' ' + metalText + u' ' + coinTypeText;
    return name + u' ' + weight + u' ' + metalText + u' ' + coinTypeText;
}
