#pragma once

#include <QLocale>
#include <QString>

// Short texts of an item: its weight, metal and type, and its caption.

// Grams divided by TroyOunceGrams.
double GramsToOunces(double grams);

// The short weight text: whole ounces ("1 oz"), the usual fractions ("½ oz", "1/10 oz", "1¼ oz"),
// kilograms from 1000 g on ("1.5 kg"), else grams ("2.5 g"). Numbers in the locale's format.
QString WeightToText(double grams, const QLocale& locale);
QString WeightToText(double grams);

// The language text of a metal code (cS_AU ... cS_CU); empty for a code out of range.
QString MetalToText(int code);
// The language text of a type code (cS_Coin ... cS_DivBar); empty for a code out of range.
QString CoinTypeToText(int code);

// "Name weight [year ]metal type", e.g. "Eagle 1 oz 2012 Gold Coin"; a year of 0 is left out.
QString ItemCaption(const QString& name, double weightG, int year, int metal, int coinType);
// The same with the metal's and the type's texts given.
QString ItemCaption(const QString& name, double weightG, int year, const QString& metalText,
                    const QString& coinTypeText);
