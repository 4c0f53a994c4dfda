#pragma once

#include <QByteArray>

// The blank collection file NEW_BLANK_DB, as built into the program: an empty tblCoins, tblVer with
// its one row, the 67 mints with their logos, and the start values of the row numbers.
// CreateBlankDatabase writes these bytes to disk unchanged.
QByteArray NewBlankDatabaseBytes();
