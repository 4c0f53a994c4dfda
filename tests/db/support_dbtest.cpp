#include "support_dbtest.h"

#include <QProcess>
#include <QStandardPaths>

#include <sqlite3.h>

namespace DBTest {

QString coinsDDL()
{
    QString custom;
    for (int i = 1; i <= 10; ++i)
        custom += QStringLiteral(",\n  Custom%1 NONE NULL").arg(i);
    return QStringLiteral("CREATE TABLE tblCoins (\n"
                          "  ID INTEGER PRIMARY KEY AUTOINCREMENT UNIQUE,\n"
                          "  Name VARCHAR (500) NOT NULL,\n"
                          "  Metal INTEGER NOT NULL,\n"
                          "  ObverseDesc VARCHAR (1000),\n"
                          "  ReverseDesc VARCHAR (1000),\n"
                          "  Series VARCHAR (300),\n"
                          "  Year INTEGER,\n"
                          "  WeightG DOUBLE NOT NULL,\n"
                          "  MintID INTEGER,\n"
                          "  CoinType INTEGER NOT NULL DEFAULT (0),\n"
                          "  FaceValue DOUBLE,\n"
                          "  FaceValueCurrency VARCHAR (3),\n"
                          "  Purity VARCHAR (30),\n"
                          "  Thickness DOUBLE,\n"
                          "  Diameter DOUBLE,\n"
                          "  Width DOUBLE,\n"
                          "  Height DOUBLE,\n"
                          "  Edge VARCHAR (100),\n"
                          "  MintMark BOOLEAN DEFAULT (0),\n"
                          "  Country VARCHAR (2),\n"
                          "  Mintage INTEGER,\n"
                          "  Artist VARCHAR (1000),\n"
                          "  Description TEXT,\n"
                          "  ThumbFront BLOB,\n"
                          "  ThumbBack BLOB,\n"
                          "  PhotoFront BLOB,\n"
                          "  PhotoBack BLOB,\n"
                          "  PhotoSide BLOB,\n"
                          "  PhotoInBox BLOB,\n"
                          "  ExpectedPremium DOUBLE,\n"
                          "  Rating DOUBLE,\n"
                          "  Rare BOOLEAN,\n"
                          "  Condition VARCHAR (500),\n"
                          "  Status VARCHAR (500),\n"
                          "  Owner VARCHAR (500),\n"
                          "  Packaging VARCHAR (500),\n"
                          "  Location VARCHAR (500),\n"
                          "  Grade VARCHAR (500),\n"
                          "  GradeService VARCHAR (500),\n"
                          "  SerialNumbers TEXT,\n"
                          "  Qty INTEGER,\n"
                          "  Price DOUBLE,\n"
                          "  PurchaseDate DATE,\n"
                          "  Store VARCHAR (500)") +
           custom + QStringLiteral("\n)");
}

QString mintsDDL()
{
    return QStringLiteral(
        "CREATE TABLE tblMints (ID INTEGER PRIMARY KEY AUTOINCREMENT, Name VARCHAR (300) NOT NULL, "
        "Logo BLOB, Country VARCHAR (2), URL VARCHAR (5000), IsPrivate BOOLEAN, Description TEXT)");
}

QString itemsSQL()
{
    return QStringLiteral(
        "SELECT *, Price / (WeightG / 31.1035) AS AvgPricePerOz::REAL, "
        "WeightG * Qty AS WeightGxQty::REAL, WeightG * Qty / 31.1035 AS WeightOZxQty::REAL, "
        "Price * Qty AS TotalPrice::REAL, strftime('%Y', PurchaseDate) AS PurchaseYear::VARCHAR, "
        "strftime('%Y-%m', PurchaseDate) AS PurchaseYearMonth::VARCHAR FROM tblCoins C");
}

std::unique_ptr<TDBConnection> openConnection(const QString& path)
{
    auto conn = std::make_unique<TDBConnection>();
    conn->setParamsText(QStringLiteral("Database=%1\r\nStringFormat=Unicode\r\nOpenMode=CreateUTF8\r\n"
                                       "LockingMode=Normal\r\nDriverID=SQLite\r\nForeignKeys=On\r\n")
                            .arg(path));
    conn->open();
    return conn;
}

std::unique_ptr<TDBConnection> createCollection(const QString& path)
{
    auto conn = openConnection(path);
    conn->startTransaction();
    conn->execSQL(coinsDDL());
    conn->execSQL(mintsDDL());
    conn->commit();
    return conn;
}

qint64 insertCoin(TDBConnection& conn, const QString& name, int metal, double weightG, int qty,
                  const QVariant& price, int coinType, const QVariant& year)
{
    conn.execSQL(QStringLiteral("INSERT INTO tblCoins (Name, Metal, WeightG, Qty, Price, CoinType, Year, "
                                "PurchaseDate) VALUES (?, ?, ?, ?, ?, ?, ?, '2021-03-04')"),
                 QVariantList{name, metal, weightG, qty, price, coinType, year});
    return conn.lastInsertRowId();
}

void declareItemFields(TDBDataset& ds)
{
    struct Def
    {
        const char* name;
        TFieldType type;
        int size;
        bool required;
    };
    static const Def stored[] = {
        {"ID", TFieldType::AutoInc, 0, false},
        {"Name", TFieldType::String, 500, true},
        {"Metal", TFieldType::Integer, 0, true},
        {"ObverseDesc", TFieldType::String, 1000, false},
        {"ReverseDesc", TFieldType::String, 1000, false},
        {"Series", TFieldType::String, 300, false},
        {"Year", TFieldType::Integer, 0, false},
        {"WeightG", TFieldType::Float, 0, true},
        {"MintID", TFieldType::Integer, 0, false},
        {"CoinType", TFieldType::Integer, 0, true},
        {"FaceValue", TFieldType::Float, 0, false},
        {"FaceValueCurrency", TFieldType::String, 3, false},
        {"Purity", TFieldType::String, 30, false},
        {"Thickness", TFieldType::Float, 0, false},
        {"Diameter", TFieldType::Float, 0, false},
        {"Width", TFieldType::Float, 0, false},
        {"Height", TFieldType::Float, 0, false},
        {"Edge", TFieldType::String, 100, false},
        {"MintMark", TFieldType::Boolean, 0, false},
        {"Country", TFieldType::String, 2, false},
        {"Mintage", TFieldType::Integer, 0, false},
        {"Artist", TFieldType::String, 1000, false},
        {"Description", TFieldType::Memo, 0, false},
        {"ThumbFront", TFieldType::Blob, 0, false},
        {"ThumbBack", TFieldType::Blob, 0, false},
        {"PhotoFront", TFieldType::Blob, 0, false},
        {"PhotoBack", TFieldType::Blob, 0, false},
        {"PhotoSide", TFieldType::Blob, 0, false},
        {"PhotoInBox", TFieldType::Blob, 0, false},
        {"ExpectedPremium", TFieldType::Float, 0, false},
        {"Rating", TFieldType::Float, 0, false},
        {"Rare", TFieldType::Boolean, 0, false},
        {"Condition", TFieldType::String, 500, false},
        {"Status", TFieldType::String, 500, false},
        {"Owner", TFieldType::String, 500, false},
        {"Packaging", TFieldType::String, 500, false},
        {"Location", TFieldType::String, 500, false},
        {"Grade", TFieldType::String, 500, false},
        {"GradeService", TFieldType::String, 500, false},
        {"SerialNumbers", TFieldType::Memo, 0, false},
        {"Qty", TFieldType::Integer, 0, false},
        {"Price", TFieldType::Float, 0, false},
        {"PurchaseDate", TFieldType::Date, 0, false},
        {"Store", TFieldType::String, 500, false},
    };
    for (const Def& d : stored)
        ds.addField(QString::fromLatin1(d.name), d.type, TFieldKind::Stored, d.size).setRequired(d.required);
    ds.fieldByName(QStringLiteral("Name")).setDisplayLabel(QStringLiteral("Name"));
    for (int i = 1; i <= 10; ++i)
        ds.addField(QStringLiteral("Custom%1").arg(i), TFieldType::String, TFieldKind::Stored, 32767);
    for (const char* name : {"AvgPricePerOz", "WeightGxQty", "WeightOZxQty", "TotalPrice"})
        ds.addField(QString::fromLatin1(name), TFieldType::Float, TFieldKind::Computed);
    ds.addField(QStringLiteral("PurchaseYear"), TFieldType::String, TFieldKind::Computed, 4);
    ds.addField(QStringLiteral("PurchaseYearMonth"), TFieldType::String, TFieldKind::Computed, 7);
    ds.addField(QStringLiteral("Caption"), TFieldType::String, TFieldKind::Calculated, 200);
    ds.addField(QStringLiteral("WeightOz"), TFieldType::Float, TFieldKind::Internal).setPrecision(4);
    ds.addField(QStringLiteral("WeightGram"), TFieldType::Float, TFieldKind::Internal);
    ds.addField(QStringLiteral("SpotValue"), TFieldType::Float, TFieldKind::Calculated);
}

QByteArray bytes(int size, int seed)
{
    QByteArray data(size, Qt::Uninitialized);
    quint32 x = quint32(seed) * 2654435761u + 1u;
    for (int i = 0; i < size; ++i) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        data[i] = char(x & 0xFF);
    }
    return data;
}

QString sqliteCli(const QString& path, const QString& sql, bool* available)
{
    const QString exe = QStandardPaths::findExecutable(QStringLiteral("sqlite3"));
    if (available)
        *available = !exe.isEmpty();
    if (exe.isEmpty())
        return QString();
    QProcess p;
    p.start(exe, {path, sql});
    p.waitForFinished(30000);
    return QString::fromUtf8(p.readAllStandardOutput() + p.readAllStandardError()).trimmed();
}

namespace {

int traceCallback(unsigned type, void* context, void* p, void*)
{
    if (type == SQLITE_TRACE_STMT) {
        auto* log = static_cast<StatementLog*>(context);
        const char* sql = sqlite3_sql(static_cast<sqlite3_stmt*>(p));
        log->statements.append(QString::fromUtf8(sql ? sql : ""));
    }
    return 0;
}

int authorizer(void* context, int action, const char* a, const char* b, const char*, const char*)
{
    if (action == SQLITE_READ && a && b) {
        auto* log = static_cast<StatementLog*>(context);
        log->columnReads.append(QString::fromUtf8(a) + QLatin1Char('.') + QString::fromUtf8(b));
    }
    return SQLITE_OK;
}

} // namespace

StatementLog::StatementLog(sqlite3* db) : m_db(db)
{
    sqlite3_trace_v2(db, SQLITE_TRACE_STMT, traceCallback, this);
    sqlite3_set_authorizer(db, authorizer, this);
}

StatementLog::~StatementLog()
{
    sqlite3_trace_v2(m_db, 0, nullptr, nullptr);
    sqlite3_set_authorizer(m_db, nullptr, nullptr);
}

} // namespace DBTest
