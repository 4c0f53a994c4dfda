#include "uQuickSearches.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::nullopt_t NoMint = std::nullopt;

// Gold coins: metals=[0].
constexpr std::array GoldCoins = std::to_array<TQuickSearch>({
    {smGoldCoins, 1, u"Maple leafs", u"Maple leafs", u"0", u"0,1,2", u"\"Maple leaf\"", u"", 1},
    {smGoldCoins, 2, u"Call of the Wild series", u"Call of the Wild series", u"0", u"0,1,2",
     u"Call of the Wild", u"", 1},
    {smGoldCoins, 3, u".99999 coins", u".99999 Canadian", u"0", u"0,1,2", u".99999", u"", 1},
    {smGoldCoins, 4, u"2019 coins", u"2019 Canadian", u"0", u"0,1,2", u"", u"years_filter=[2019]", 1},
    {smGoldCoins, 5, u"Canada's Flowers", u"Canada's Flowers series", u"0", u"0,1,2", u"Canada's Flowers",
     u"", 1},
    {smGoldCoins, 6, u"Kangaroos", u"Kangaroo / Nugget", u"0", u"0,1,2", u"Kangaroo", u"", 2},
    {smGoldCoins, 7, u"Lunar series", u"Lunar series", u"0", u"0,1,2", u"Gold Lunar", u"", 2},
    {smGoldCoins, 8, u"Swans series", u"Swan series", u"0", u"0,1,2", u"Gold Swan", u"", 2},
    {smGoldCoins, 9, u"Bird of Paradise", u"Bird of Paradise series", u"0", u"0,1,2", u"Bird of Paradise",
     u"", 2},
    {smGoldCoins, 10, u"2019 coins", u"2019 Australian", u"0", u"0,1,2", u"", u"years_filter=[2019]", 2},
    {smGoldCoins, 11, u"Britannias", u"Britannias", u"0", u"0,1,2", u"Britannia", u"", 4},
    {smGoldCoins, 12, u"Queen's beasts series", u"Queen's Beasts series", u"0", u"0,1,2", u"Queen's Beasts",
     u"", 4},
    {smGoldCoins, 13, u"Sovereigns", u"Sovereigns", u"0", u"0,1,2", u"Gold Sovereign", u"", 4},
    {smGoldCoins, 14, u"Lunar UK", u"Lunar UK series", u"0", u"0,1,2", u"Gold Lunar", u"", 4},
    {smGoldCoins, 15, u"2019 coins", u"2019 British coins", u"0", u"0,1,2", u"", u"years_filter=[2019]", 4},
    {smGoldCoins, 16, u"Libertads", u"Libertads", u"0", u"0", u"Mexican Libertads", u"", 19},
    {smGoldCoins, 17, u"Pesos", u"Pesos", u"0", u"0", u"Pesos", u"", 19},
    {smGoldCoins, 18, u"2019 coins", u"2019 Mexican Gold coins", u"0", u"0", u"", u"years_filter=[2019]", 19},
    {smGoldCoins, 19, u"American Eagles", u"US Gold Eagle", u"0", u"0", u"Gold Eagle", u"", 32},
    {smGoldCoins, 20, u"Buffalos", u"US Gold Buffalo", u"0", u"0", u"Gold Buffalo", u"", 32},
    {smGoldCoins, 21, u"2019 coins", u"2019 US Gold coins", u"0", u"0", u"", u"years_filter=[2019]", 32},
    {smGoldCoins, 22, u"Pre 1933", u"US Pre-1933 gold coins", u"0", u"0", u"", u"years_range=[0,1933]", 32},
    {smGoldCoins, 23, u"First spouses", u"US First spouses", u"0", u"0", u"First Spouse Coins", u"", 32},
    {smGoldCoins, 24, u"Kruggerands", u"Krugerrands", u"0", u"0", u"Krugerrands", u"", 31},
    {smGoldCoins, 25, u"Philharmonics", u"Philharmonics", u"0", u"0", u"Philharmonics", u"", 3},
    {smGoldCoins, 26, u"Chinese pandas", u"Chinese Pandas", u"0", u"0", u"Panda", u"", 8},
    {smGoldCoins, 27, u"Elephants", u"Somalia Elephants", u"0", u"0", u"Somalia Elephant", u"", NoMint},
});

// Gold bars: metals=[0]&coin_types=[3,4], keywords "bar" ("rand" for the Rand refinery).
constexpr std::array GoldBars = std::to_array<TQuickSearch>({
    {smGoldBars, 1, u"Heraeus", u"Argor-Heraeus", u"0", u"3,4", u"bar", u"", 6},
    {smGoldBars, 2, u"Johnson Matthey", u"Johnson Matthey", u"0", u"3,4", u"bar", u"", 17},
    {smGoldBars, 3, u"Austrian mint", u"Austrian mint", u"0", u"3,4", u"bar", u"", 3},
    {smGoldBars, 4, u"APMEX", u"APMEX", u"0", u"3,4", u"bar", u"", 69},
    {smGoldBars, 5, u"Credit Suisse", u"Credit Suisse", u"0", u"3,4", u"bar", u"", 9},
    {smGoldBars, 6, u"Engelhard", u"Engelhard", u"0", u"3,4", u"bar", u"", 11},
    {smGoldBars, 7, u"Geiger", u"Geiger Edelmetalle", u"0", u"3,4", u"bar", u"", 12},
    {smGoldBars, 8, u"PAMP Suisse", u"PAMP Suisse", u"0", u"3,4", u"bar", u"", 22},
    {smGoldBars, 9, u"Perth Mint", u"Perth Mint", u"0", u"3,4", u"bar", u"", 2},
    {smGoldBars, 10, u"Rand refinery", u"Rand refinery", u"0", u"3,4", u"rand", u"", 31},
    {smGoldBars, 11, u"Rotal Canadian Mint (RCM)", u"Royal Canadian mint", u"0", u"3,4", u"bar", u"", 1},
    {smGoldBars, 12, u"Scottsdale mint", u"Scottsdale", u"0", u"3,4", u"bar", u"", 27},
    {smGoldBars, 13, u"Sunshine minting (SMI)", u"Sunshine minting", u"0", u"3,4", u"bar", u"", 29},
    {smGoldBars, 14, u"Valcambi", u"Valcambi", u"0", u"3,4", u"bar", u"", 33},
});

// Silver coins: metals=[1]&coin_types=[0,1,2].
constexpr std::array SilverCoins = std::to_array<TQuickSearch>({
    {smSilverCoins, 1, u"American Eagles", u"American Eagles", u"1", u"0,1,2", u"Eagle", u"", 32},
    {smSilverCoins, 2, u"America the beautiful", u"America the beautiful", u"1", u"0,1,2",
     u"America The beautiful", u"", 32},
    {smSilverCoins, 3, u"Silver dollars", u"Silver dollars", u"1", u"0,1,2", u"Silver dollar",
     u"years_range=[0,1990]", 32},
    {smSilverCoins, 4, u"Maple leafs", u"Maple leafs", u"1", u"0,1,2", u"Maple leaf", u"", 1},
    {smSilverCoins, 5, u"Predator series", u"Predator series", u"1", u"0,1,2", u"Predator", u"", 1},
    {smSilverCoins, 6, u"Birds of prey series", u"Birds of prey series", u"1", u"0,1,2", u"Birds of prey",
     u"", 1},
    {smSilverCoins, 7, u"Kangaroos", u"Kangaroos", u"1", u"0,1,2", u"Kangaroo", u"", 2},
    {smSilverCoins, 8, u"Lunar", u"Lunar", u"1", u"0,1,2", u"Lunar", u"", 2},
    {smSilverCoins, 9, u"Swans", u"Swans", u"1", u"0,1,2", u"Swan", u"", 2},
    {smSilverCoins, 10, u"Kookaburras", u"Kookaburras", u"1", u"0,1,2", u"Kookaburra", u"", 2},
    {smSilverCoins, 11, u"Koalas", u"Koalas", u"1", u"0,1,2", u"Koala", u"", 2},
    {smSilverCoins, 12, u"Britannias", u"Britannias", u"1", u"0,1,2", u"Britannia", u"", 4},
    {smSilverCoins, 13, u"Queen's beasts", u"Queen's beasts", u"1", u"0,1,2", u"Queen's Beasts", u"", 4},
    {smSilverCoins, 14, u"Lunar UK", u"Lunar UK", u"1", u"0,1,2", u"Lunar", u"", 4},
    {smSilverCoins, 15, u"Libertads", u"Libertads", u"1", u"0,1,2", u"Libertad", u"", 19},
    {smSilverCoins, 16, u"Aztecs", u"Aztecs", u"1", u"0,1,2", u"Aztec", u"", 19},
    {smSilverCoins, 17, u"Philharmonics", u"Philharmonics", u"1", u"0,1,2", u"Philharmonics", u"", 3},
    {smSilverCoins, 18, u"Dutch lions", u"Dutch lions", u"1", u"0,1,2", u"Dutch lion", u"", NoMint},
    {smSilverCoins, 19, u"Czech lions", u"Czech lions", u"1", u"0,1,2", u"Czech lion", u"", NoMint},
    {smSilverCoins, 20, u"Kruggerands", u"Kruggerands", u"1", u"0,1,2", u"Krugerrands", u"", 31},
    {smSilverCoins, 21, u"Elephants", u"Elephants", u"1", u"0,1,2", u"Somalia Elephant", u"", NoMint},
});

// Silver bars: metals=[1]&coin_types=[3,4], no keywords. Southern Cross goes out as mint -1.
constexpr std::array SilverBars = std::to_array<TQuickSearch>({
    {smSilverBars, 1, u"9Fine mint", u"9Fine mint", u"1", u"3,4", u"", u"", 5},
    {smSilverBars, 2, u"APMEX", u"APMEX", u"1", u"3,4", u"", u"", 69},
    {smSilverBars, 3, u"Argor Heraeus", u"Argor-Heraeus", u"1", u"3,4", u"", u"", 6},
    {smSilverBars, 4, u"Asahi refining", u"Asahi refining", u"1", u"3,4", u"", u"", 47},
    {smSilverBars, 5, u"Engelhard", u"Engelhard", u"1", u"3,4", u"", u"", 11},
    {smSilverBars, 6, u"Geiger", u"Geiger", u"1", u"3,4", u"", u"", 12},
    {smSilverBars, 7, u"Johnson Matthey", u"Johnson Matthey", u"1", u"3,4", u"", u"", 17},
    {smSilverBars, 8, u"PAMP Suisse", u"PAMP Suisse", u"1", u"3,4", u"", u"", 22},
    {smSilverBars, 9, u"Perth mint", u"Perth mint", u"1", u"3,4", u"", u"", 2},
    {smSilverBars, 10, u"Royal Canadian Mint (RCM)", u"Royal Canadian Mint (RCM)", u"1", u"3,4", u"", u"", 1},
    {smSilverBars, 11, u"Scottsdale mint", u"Scottsdale mint", u"1", u"3,4", u"", u"", 27},
    {smSilverBars, 12, u"Southern Cross", u"Southern Cross", u"1", u"3,4", u"", u"", -1},
    {smSilverBars, 13, u"Sunshine minting", u"Sunshine minting", u"1", u"3,4", u"", u"", 29},
    {smSilverBars, 14, u"Valcambi", u"Valcambi", u"1", u"3,4", u"", u"", 33},
});

// Other metals: platinum (2) and palladium (3); their tab shows no item text. There is no tag 16.
constexpr std::array OtherMetals = std::to_array<TQuickSearch>({
    {smOtherMetals, 1, u"American Eagles", u"", u"2", u"0,1,2", u"Eagle", u"", 32},
    {smOtherMetals, 2, u"Maple leafs", u"", u"2", u"0,1,2", u"Maple leaf", u"", 1},
    {smOtherMetals, 3, u"Kangaroos", u"", u"2", u"0,1,2", u"Kangaroo", u"", 2},
    {smOtherMetals, 4, u"Britannias", u"", u"2", u"0,1,2", u"Platinum Britannias", u"", 4},
    {smOtherMetals, 5, u"Queen's beasts", u"", u"2", u"0,1,2", u"Queen's Beasts", u"", 4},
    {smOtherMetals, 6, u"Elephants", u"", u"2", u"0,1,2", u"Somalia Elephant", u"", NoMint},
    {smOtherMetals, 7, u"Kruggerands", u"", u"2", u"0,1,2", u"Krugerrands", u"", 31},
    {smOtherMetals, 8, u"Pandas", u"", u"2", u"0,1,2", u"Panda", u"", 8},
    {smOtherMetals, 9, u"Philharmonics", u"", u"2", u"0,1,2", u"Philharmonics", u"", 3},
    {smOtherMetals, 10, u"Argor Heraeus", u"", u"2", u"3,4", u"", u"", 6},
    {smOtherMetals, 11, u"Credit Suisse", u"", u"2", u"3,4", u"", u"", 9},
    {smOtherMetals, 12, u"APMEX", u"", u"2", u"3,4", u"", u"", 69},
    {smOtherMetals, 13, u"Engelhard", u"", u"2", u"3,4", u"", u"", 11},
    {smOtherMetals, 14, u"Johnson Matthey", u"", u"2", u"3,4", u"", u"", 17},
    {smOtherMetals, 15, u"PAMP Suisse", u"", u"2", u"3,4", u"", u"", 22},
    {smOtherMetals, 17, u"Valcambi", u"", u"2", u"3,4", u"", u"", 33},
    {smOtherMetals, 18, u"American Eagles", u"", u"3", u"0,1,2", u"Eagle", u"", 32},
    {smOtherMetals, 19, u"Maple leafs", u"", u"3", u"0,1,2", u"Maple leaf", u"", 1},
    {smOtherMetals, 20, u"APMEX", u"", u"3", u"3,4", u"", u"", 69},
    {smOtherMetals, 21, u"Credit Suisse", u"", u"3", u"3,4", u"", u"", 9},
    {smOtherMetals, 22, u"Argor Heraeus", u"", u"3", u"3,4", u"", u"", 6},
    {smOtherMetals, 23, u"Johnson Matthey", u"", u"3", u"3,4", u"", u"", 17},
    {smOtherMetals, 24, u"PAMP Suisse", u"", u"3", u"3,4", u"", u"", 22},
    {smOtherMetals, 25, u"Valcambi", u"", u"3", u"3,4", u"", u"", 33},
});

// All rows, mode by mode, for lookups that walk every table.
constexpr std::size_t RowCount =
    GoldCoins.size() + GoldBars.size() + SilverCoins.size() + SilverBars.size() + OtherMetals.size();
const std::array<TQuickSearch, RowCount> AllRows = [] {
    std::array<TQuickSearch, RowCount> all{};
    auto at = all.begin();
    at = std::copy(GoldCoins.begin(), GoldCoins.end(), at);
    at = std::copy(GoldBars.begin(), GoldBars.end(), at);
    at = std::copy(SilverCoins.begin(), SilverCoins.end(), at);
    at = std::copy(SilverBars.begin(), SilverBars.end(), at);
    std::copy(OtherMetals.begin(), OtherMetals.end(), at);
    return all;
}();

QList<qint32> TagRange(qint32 first, qint32 last)
{
    QList<qint32> tags;
    for (qint32 tag = first; tag <= last; ++tag)
        tags.append(tag);
    return tags;
}

} // namespace

std::span<const TQuickSearch> QuickSearches(quint8 mode)
{
    switch (mode) {
    case smGoldCoins:
        return GoldCoins;
    case smGoldBars:
        return GoldBars;
    case smSilverCoins:
        return SilverCoins;
    case smSilverBars:
        return SilverBars;
    case smOtherMetals:
        return OtherMetals;
    default:
        return {};
    }
}

std::span<const TQuickSearch> AllQuickSearches()
{
    return AllRows;
}

const TQuickSearch* FindQuickSearch(quint8 mode, qint32 tag)
{
    const std::span<const TQuickSearch> rows = QuickSearches(mode);
    const auto found =
        std::find_if(rows.begin(), rows.end(), [tag](const TQuickSearch& row) { return row.Tag == tag; });
    return found == rows.end() ? nullptr : &*found;
}

QString QuickSearchQuery(const TQuickSearch& row)
{
    QString query = u"metals=["_s + row.Metals + u"]&coin_types=["_s + row.CoinTypes + u']';
    if (!row.Keywords.isEmpty())
        query += u"&keywords="_s + row.Keywords;
    if (!row.Years.isEmpty())
        query += u'&' + row.Years;
    if (row.Mint)
        query += u"&mints=["_s + QString::number(*row.Mint) + u']';
    return query;
}

const QList<TQuickSearchGallery>& AddDialogGalleries()
{
    static const QList<TQuickSearchGallery> galleries{
        {u"btnSelectGoldCoins"_s,
         u"cSAddDlgQSGoldCoins"_s,
         u"Gold coins"_s,
         smGoldCoins,
         {{u"United States Mint"_s, {19, 20, 22, 23, 21}},
          {u"Royal Canadian Mint"_s, {1, 2, 3, 5, 4}},
          {u"Perth Mint"_s, TagRange(6, 10)},
          {u"The Royal Mint"_s, TagRange(11, 15)},
          {u"Mexican Mint"_s, TagRange(16, 18)},
          {u"Other"_s, TagRange(24, 27)}}},
        {u"btnSelectGoldBars"_s,
         u"cSAddDlgQSGoldBars"_s,
         u"Gold bars"_s,
         smGoldBars,
         {{u"Gold bars by mint"_s, QList<qint32>{3, 4, 5, 6, 7, 1, 2} + TagRange(8, 14)}}},
        {u"btnSelectSilverCoins"_s,
         u"cSAddDlgQSSilverCoins"_s,
         u"Silver coins"_s,
         smSilverCoins,
         {{u"United States mint"_s, TagRange(1, 3)},
          {u"Royal Canadian Mint (RCM)"_s, TagRange(4, 6)},
          {u"Perth Mint"_s, TagRange(7, 11)},
          {u"The Royal Mint"_s, TagRange(12, 14)},
          {u"Mexican Mint"_s, {15, 16}},
          {u"European"_s, TagRange(17, 19)},
          {u"African"_s, {20, 21}}}},
        {u"btnSelectSilverBars"_s,
         u"cSAddDlgQSSilverBars"_s,
         u"Silver bars"_s,
         smSilverBars,
         {{u"Filver bars by mint"_s, TagRange(1, 14)}}},
        {u"btnSelectOtherMetals"_s,
         u"cSAddDlgQSOtherMetals"_s,
         u"Other metals"_s,
         smOtherMetals,
         {{u"Platinum coins"_s, TagRange(1, 9)},
          {u"Platinum bars"_s, TagRange(10, 15) + QList<qint32>{17}},
          {u"Palladium coins"_s, {18, 19}},
          {u"Palladium bars"_s, TagRange(20, 25)}}},
    };
    return galleries;
}

const QList<TBackstageGalleryGroup>& BackstageGalleryGroups()
{
    static const QList<TBackstageGalleryGroup> groups{
        {u"gGoldCoins"_s,
         u"cSAddDlgQSGoldCoins"_s,
         u"Gold coins"_s,
         smGoldCoins,
         {{19, u"American Eagles"_s},
          {20, u"Buffalos"_s},
          {22, u"US Pre 1933"_s},
          {23, u"US First spouses"_s},
          {1, u"Maple leafs"_s},
          {2, u"Call of the Wild series"_s},
          {3, u"Canadian .99999"_s},
          {4, u"Canada's flowers"_s},
          {6, u"Kangaroos"_s},
          {7, u"Lunar series"_s},
          {8, u"Swans"_s},
          {9, u"Bird of Paradise"_s},
          {11, u"Britannias"_s},
          {12, u"Queen's beasts"_s},
          {14, u"Lunar UK series"_s},
          {13, u"UK Sovereigns"_s},
          {16, u"Libertads"_s},
          {17, u"Pesos"_s},
          {25, u"Philharmonics"_s},
          {24, u"Kruggerands"_s},
          {26, u"Pandas"_s},
          {27, u"Somalia Elephants"_s}}},
        {u"gSilverCoins"_s,
         u"cSAddDlgQSSilverCoins"_s,
         u"Silver coins"_s,
         smSilverCoins,
         {{1, u"American Eagles"_s},    {2, u"American The Beautiful"_s},
          {3, u"US Silver dollars"_s},  {4, u"Maple Leafs"_s},
          {5, u"Predator series"_s},    {6, u"Birds of prey series"_s},
          {7, u"Kangaroos"_s},          {8, u"Lunar series"_s},
          {10, u"Kookaburras"_s},       {11, u"Koalas"_s},
          {9, u"Swans series"_s},       {12, u"Britannias"_s},
          {13, u"Queen's beasts"_s},    {14, u"Lunar UK series"_s},
          {15, u"Libertads"_s},         {16, u"Aztecs"_s},
          {17, u"Philharmonics"_s},     {20, u"Kruggerands"_s},
          {21, u"Somalia Elephants"_s}, {18, u"Dutch lions"_s},
          {19, u"Czech lions"_s}}},
        {u"gGoldBars"_s,
         u"cSAddDlgQSGoldBars"_s,
         u"Gold bars"_s,
         smGoldBars,
         {{3, u"Austrian mint"_s},
          {4, u"APMEX"_s},
          {5, u"Credit Suisse"_s},
          {6, u"Engelhard"_s},
          {7, u"Geiger"_s},
          {1, u"Argor Heraeus"_s},
          {2, u"Johnson Matthey"_s},
          {8, u"PAMP Suisse"_s},
          {9, u"Perth Mint"_s},
          {10, u"Rand refinery"_s},
          {11, u"Royal Canadian Mint"_s},
          {12, u"Scottsdale mint"_s},
          {13, u"Sunshine minting"_s},
          {14, u"Valcambi"_s}}},
        {u"gSilverBars"_s,
         u"cSAddDlgQSSilverBars"_s,
         u"Silver bars"_s,
         smSilverBars,
         {{1, u"9Fine"_s},
          {2, u"APMEX"_s},
          {3, u"Argor Heraeus"_s},
          {4, u"Asahi"_s},
          {5, u"Engelhard"_s},
          {6, u"Geiger"_s},
          {7, u"Johnson Matthey"_s},
          {8, u"PAMP Suisse"_s},
          {9, u"Perth Mint"_s},
          {10, u"Royal Canadian Mint"_s},
          {11, u"Scottsdale mint"_s},
          {12, u"Southern cross"_s},
          {13, u"Sunshine minting"_s},
          {14, u"Valcambi"_s}}},
    };
    return groups;
}
