#pragma once

#include "uQuickSearches.h"

#include <QString>

#include <optional>

// The catalogue search request: "/orv/search.php?action=search-coins&" and the query that a
// search mode forms, and the title of the tab that shows its results.

inline constexpr QStringView cSearchPath = u"/orv/search.php?action=search-coins&";

// Items of cbWeightUnit.
inline constexpr qint32 cWeightUnitOunces = 0;
inline constexpr qint32 cWeightUnitGrams = 1;
// Places of the flag texts of cbMetals and cbTypes.
inline constexpr qsizetype cMetalFlagPlaces = 6;
inline constexpr qsizetype cCoinTypeFlagPlaces = 5;
inline constexpr qsizetype cWeightFlagPlaces = 5;

// The search box and the advanced options of the add dialog, as a typed search reads them. A null
// editor reads as 0, a null mint as none.
struct TSearchFilters
{
    QString Keywords{};             // text of edtSearch
    QString Metals{};               // state text of cbMetals: six places, "1" for checked
    QString CoinTypes{};            // state text of cbTypes: five places
    std::optional<qint32> MintID{}; // cbMint
    double WeightFrom = 0.0;        // seWeightFrom, in the unit of cbWeightUnit
    double WeightTo = 0.0;          // seWeightTo
    qint32 WeightUnit = cWeightUnitOunces;
    qint32 YearFrom = 0; // seYearFrom
    qint32 YearTo = 0;   // seYearTo
};

// Indices of the places holding "1", joined by ','; empty unless the text has exactly `places`
// places and at least one of them is "1".
QString CheckedPlaces(const QString& flags, qsizetype places);

// The standard weights (1, 1/2, 1/4, 1/10 and 1/20 oz) of a five-place flag text, in grams joined
// by ','. The dialog has no control for them, so a typed search hands an empty text and never
// sends the key.
QString StandardWeightsList(const QString& flags);

// Mode 0: "keywords=" + URLEncode(keywords), then metals, types, mint, weight range (two
// decimals in the process's number format) and year range, each when set.
QString TypedSearchQuery(const TSearchFilters& filters);
// Mode 1: "keywords=" + URLEncode(text), nothing else.
QString TextSearchQuery(const QString& text);
// Modes 2 to 6: the row's query as it stands; empty when the tag has no row.
QString QuickSearchQuery(quint8 mode, qint32 tag);
// The query of any mode (SearchMode, SearchTag, SearchText and the dialog's filters); empty for a
// mode that is none of 0 to 6.
QString SearchQuery(quint8 mode, qint32 tag, const QString& searchText, const TSearchFilters& filters);

// base + cSearchPath + query, appended as it stands. base defaults to CatalogueServerURL().
QString SearchURL(const QString& query);
QString SearchURL(const QString& base, const QString& query);

// The title of a search's tab: "Keyword search: " and the text for modes 0 and 1, the gallery's
// prefix and the row's tab text for modes 2 to 5, "Other metals" alone for mode 6.
QString SearchTabTitle(quint8 mode, qint32 tag, const QString& searchText, const TSearchFilters& filters);
