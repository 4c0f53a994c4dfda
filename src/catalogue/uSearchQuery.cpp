#include "uSearchQuery.h"

#include "uCatalogueServer.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QLocale>

#include <array>

using namespace Qt::StringLiterals;

namespace {

// A weight as "%f" writes it: two decimals, the process's decimal separator, no group separators.
// The digits stay ASCII in every locale, as in any number of a URL.
QString WeightText(double value)
{
    QString text = QString::number(value, 'f', 2);
    text.replace(u'.', QLocale().decimalPoint());
    return text;
}

QString WeightRange(const QString& key, double from, double to)
{
    return u'&' + key + u"=["_s + WeightText(from) + u',' + WeightText(to) + u']';
}

} // namespace

QString CheckedPlaces(const QString& flags, qsizetype places)
{
    if (flags.size() != places)
        return QString();
    QString list;
    for (qsizetype i = 0; i < places; ++i) {
        if (flags.at(i) != u'1')
            continue;
        if (!list.isEmpty())
            list += u',';
        list += QString::number(i);
    }
    return list;
}

QString StandardWeightsList(const QString& flags)
{
    static constexpr std::array<double, cWeightFlagPlaces> parts = {1, 2, 4, 10, 20};
    if (flags.size() != cWeightFlagPlaces)
        return QString();
    QStringList grams;
    for (qsizetype i = 0; i < cWeightFlagPlaces; ++i)
        if (flags.at(i) == u'1')
            grams.append(QString::number(TroyOunceGrams / parts[std::size_t(i)], 'f', 4));
    return grams.join(u',');
}

QString TypedSearchQuery(const TSearchFilters& filters)
{
    QString query = u"keywords="_s + URLEncode(filters.Keywords);

    // The standard weights have no control in the dialog: nothing supplies their flag text.
    if (const QString weights = StandardWeightsList(QString()); !weights.isEmpty())
        query += u"&weights=["_s + weights + u']';

    if (const QString metals = CheckedPlaces(filters.Metals, cMetalFlagPlaces); !metals.isEmpty())
        query += u"&metals=["_s + metals + u']';
    if (const QString types = CheckedPlaces(filters.CoinTypes, cCoinTypeFlagPlaces); !types.isEmpty())
        query += u"&coin_types=["_s + types + u']';
    if (filters.MintID)
        query += FormatText(u"&mints=[%d]"_s, {*filters.MintID});

    if (filters.WeightFrom > 0 || filters.WeightTo > 0) {
        // Both values as they stand, so an upper bound of 0 goes out as 0.00.
        if (filters.WeightUnit == cWeightUnitOunces)
            query += WeightRange(u"weight_oz_range"_s, filters.WeightFrom, filters.WeightTo);
        else if (filters.WeightUnit == cWeightUnitGrams)
            query += WeightRange(u"weight_g_range"_s, filters.WeightFrom, filters.WeightTo);
    }
    if (filters.YearFrom != 0 || filters.YearTo != 0)
        query += FormatText(u"&years_range=[%d,%d]"_s, {filters.YearFrom, filters.YearTo});
    return query;
}

QString TextSearchQuery(const QString& text)
{
    return u"keywords="_s + URLEncode(text);
}

QString QuickSearchQuery(quint8 mode, qint32 tag)
{
    const TQuickSearch* row = FindQuickSearch(mode, tag);
    return row ? QuickSearchQuery(*row) : QString();
}

QString SearchQuery(quint8 mode, qint32 tag, const QString& searchText, const TSearchFilters& filters)
{
    switch (mode) {
    case smTyped:
        return TypedSearchQuery(filters);
    case smText:
        return TextSearchQuery(searchText);
    default:
        return QuickSearchQuery(mode, tag);
    }
}

QString SearchURL(const QString& query)
{
    return SearchURL(CatalogueServerURL(), query);
}

QString SearchURL(const QString& base, const QString& query)
{
    return base + cSearchPath + query;
}

QString SearchTabTitle(quint8 mode, qint32 tag, const QString& searchText, const TSearchFilters& filters)
{
    const auto tabText = [mode, tag] {
        const TQuickSearch* row = FindQuickSearch(mode, tag);
        return row ? row->Tab.toString() : QString();
    };
    switch (mode) {
    case smTyped:
        return GetText(u"cSAddDlgKeywordSearch"_s) + filters.Keywords;
    case smText:
        return GetText(u"cSAddDlgKeywordSearch"_s) + searchText;
    case smGoldCoins:
        return GetText(u"cSAddDlgGoldCoins"_s) + tabText();
    case smGoldBars:
        return GetText(u"cSAddDlgGoldBars"_s) + tabText();
    case smSilverCoins:
        return GetText(u"cSAddDlgSilverCoins"_s) + tabText();
    case smSilverBars:
        return GetText(u"cSAddDlgSilverBars"_s) + tabText();
    case smOtherMetals:
        return GetText(u"cSAddDlgQSOtherMetals"_s);
    default:
        return QString();
    }
}
