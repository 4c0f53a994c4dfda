#pragma once

#include "uDBConnection.h"
#include "uDBDataset.h"

#include <QStringList>

#include <memory>

struct sqlite3;

// Shared helpers of the data-access tests: a collection-shaped file and its item statement.
namespace DBTest {

// The CREATE TABLE statements of a collection file, from data/template/schema.sql.
QString coinsDDL();
QString mintsDDL();
// The item statement: all columns of tblCoins and six expressions, with type hints.
QString itemsSQL();

// Opens (creating) a file; createCollection also makes the collection's tables.
std::unique_ptr<TDBConnection> openConnection(const QString& path);
std::unique_ptr<TDBConnection> createCollection(const QString& path);

// Inserts one item through plain SQL and returns its ID.
qint64 insertCoin(TDBConnection& conn, const QString& name, int metal, double weightG, int qty = 1,
                  const QVariant& price = QVariant(), int coinType = 0, const QVariant& year = QVariant());

// Declares the item fields on a dataset: the stored columns of coinsDDL() with their types, sizes
// and required flags, the query's six expressions, and some internal and calculated fields.
void declareItemFields(TDBDataset& ds);

// Deterministic pseudo-random bytes.
QByteArray bytes(int size, int seed);

// Runs the sqlite3 command line on a file and returns its output (trimmed); empty if the tool is
// missing. Used as an independent reader of what the layer wrote.
QString sqliteCli(const QString& path, const QString& sql, bool* available = nullptr);

// Records every statement a connection runs and every column its statements are prepared to read.
class StatementLog
{
public:
    explicit StatementLog(sqlite3* db);
    ~StatementLog();
    StatementLog(const StatementLog&) = delete;
    StatementLog& operator=(const StatementLog&) = delete;

    QStringList statements;  // text of each statement as it starts running
    QStringList columnReads; // "table.column" for each column read, at prepare time
    void clear()
    {
        statements.clear();
        columnReads.clear();
    }

private:
    sqlite3* m_db;
};

} // namespace DBTest
