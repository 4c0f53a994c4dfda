#pragma once

// Types and constants shared by the whole program.

// Grams in one troy ounce: the one conversion the program uses.
inline constexpr double TroyOunceGrams = 31.1035;

// Metal codes as stored in the collection file and used by the catalogue and the spot list.
enum TMetal : int {
    mtGold = 0,
    mtSilver = 1,
    mtPlatinum = 2,
    mtPalladium = 3,
    mtRhodium = 4,
    mtCopper = 5,
};
inline constexpr int MetalCount = 6;

// Item type codes, stored in the collection file.
enum TCoinType : int {
    ctCoin = 0,
    ctRectCoin = 1,
    ctRound = 2,
    ctBar = 3,
    ctDivBar = 4,
};
inline constexpr int CoinTypeCount = 5;
