#pragma once

#include <QString>

// The catalogue server: spot prices, catalogue search and the picture stores.

// The built-in address of the catalogue server (scheme and host, no trailing '/').
extern const QString CatalogueServerDefault;

// The base URL that the service paths ("/orv/...") are appended to: the read-only settings key
// CatalogueServer when it is not empty, else CatalogueServerDefault. A trailing '/' is dropped.
QString CatalogueServerURL();

// The base URL for a given value of the key (the rule of CatalogueServerURL()).
QString CatalogueServerURLFor(const QString& configured);
