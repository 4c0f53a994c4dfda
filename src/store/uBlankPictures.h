#pragma once

#include <QByteArray>
#include <QString>

// The blank pictures shown for an item without a photograph: a coin obverse and reverse for each
// metal, and one bar picture per metal that serves both sides.

// Name of the picture for an item: iBlankCoin<Metal>Obverse, iBlankCoin<Metal>Reverse or
// iBlankBar<Metal>. CoinType 0, 1, 2 take the coin pair of the metal, 3 and 4 the bar; any other
// metal or type code takes the gold coin of the requested side.
QString BlankPictureName(int metal, int coinType, bool isObverse);

// The PNG bytes of that picture.
QByteArray BlankPicture(int metal, int coinType, bool isObverse);
