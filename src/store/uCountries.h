#pragma once

#include <QList>
#include <QString>

// The countries an item can come from: ISO 3166 two-letter codes with their English names and
// flag pictures, read from the system's iso-codes and flag packages.

struct TCountry
{
    QString Code;     // two capital letters ("DE")
    QString Name;     // English name, the short common one where there is one ("Bolivia")
    QString FlagPath; // the flag picture file; empty when the system has none for the code
};

// Where the system keeps the country list and the small flag pictures.
inline constexpr const char* cCountriesFile = "/usr/share/iso-codes/json/iso_3166-1.json";
inline constexpr const char* cCountryFlagsDir = "/usr/share/flags/countries/16x11";

// Reads the list from an iso-codes JSON file ({"3166-1": [{"alpha_2", "name", "common_name"}]})
// and looks for "<code in lower case>.png" in flagsDir. Sorted by name in English collation
// without regard to case or accents. A missing or unreadable file gives an empty list; entries
// without a two-letter code or a name are passed over.
QList<TCountry> LoadCountries(const QString& jsonPath, const QString& flagsDir);

// The system's list, read once.
const QList<TCountry>& Countries();

// The English name of a code (any case), or an empty text.
QString CountryName(const QString& code);
