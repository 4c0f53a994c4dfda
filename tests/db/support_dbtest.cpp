#include "support_dbtest.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <sqlite3.h>

namespace DBTest {

namespace {

QString schemaStatement(int index)
{
    QFile file(qEnvironmentVariable("ORV_SOURCE_DIR") + "/data/template/schema.sql");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString text = QString::fromUtf8(file.readAll()).remove(QRegularExpression("--[^\n]*\n"));
    return text.split(';').value(index).trimmed();
}

} // namespace

QString coinsDDL()
{
    return schemaStatement(0);
}

QString mintsDDL()
{
    return schemaStatement(1);
}

QString itemsSQL()
{
    return "SELECT *, Price / (WeightG / 31.1035) AS AvgPricePerOz::REAL, "
           "WeightG * Qty AS WeightGxQty::REAL, WeightG * Qty / 31.1035 AS WeightOZxQty::REAL, "
           "Price * Qty AS TotalPrice::REAL, strftime('%Y', PurchaseDate) AS PurchaseYear::VARCHAR, "
           "strftime('%Y-%m', PurchaseDate) AS PurchaseYearMonth::VARCHAR FROM tblCoins C";
}

std::unique_ptr<TDBConnection> openConnection(const QString& path)
{
    auto conn = std::make_unique<TDBConnection>();
    conn->setParamsText(QString("Database=%1\r\nStringFormat=Unicode\r\nOpenMode=CreateUTF8\r\n"
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
    conn.execSQL("INSERT INTO tblCoins (Name, Metal, WeightG, Qty, Price, CoinType, Year, PurchaseDate) "
                 "VALUES (?, ?, ?, ?, ?, ?, ?, '2021-03-04')",
                 QVariantList{name, metal, weightG, qty, price, coinType, year});
    return conn.lastInsertRowId();
}

void declareItemFields(TDBDataset& ds)
{
    // One column a line of the DDL: "Name VARCHAR (500) NOT NULL,".
    static const QRegularExpression column("^\\s*(\\w+) (\\w+)(?: \\((\\d+)\\))?( NOT NULL)?");
    const QHash<QString, TFieldType> types{{"INTEGER", TFieldType::Integer}, {"VARCHAR", TFieldType::String},
                                           {"DOUBLE", TFieldType::Float},    {"BOOLEAN", TFieldType::Boolean},
                                           {"TEXT", TFieldType::Memo},       {"BLOB", TFieldType::Blob},
                                           {"DATE", TFieldType::Date},       {"NONE", TFieldType::String}};
    for (const QString& line : coinsDDL().split('\n').mid(1)) {
        const QRegularExpressionMatch m = column.match(line);
        if (!m.hasMatch())
            continue;
        const bool key = m.captured(1) == "ID";
        const TFieldType type = key ? TFieldType::AutoInc : types.value(m.captured(2));
        const int size = m.captured(2) == "NONE" ? 32767 : m.captured(3).toInt();
        ds.addField(m.captured(1), type, TFieldKind::Stored, size).setRequired(!key && m.hasCaptured(4));
    }
    for (const char* name : {"AvgPricePerOz", "WeightGxQty", "WeightOZxQty", "TotalPrice"})
        ds.addField(name, TFieldType::Float, TFieldKind::Computed);
    ds.addField("PurchaseYear", TFieldType::String, TFieldKind::Computed, 4);
    ds.addField("PurchaseYearMonth", TFieldType::String, TFieldKind::Computed, 7);
    ds.addField("Caption", TFieldType::String, TFieldKind::Calculated, 200);
    ds.addField("WeightOz", TFieldType::Float, TFieldKind::Internal).setPrecision(4);
    ds.addField("WeightGram", TFieldType::Float, TFieldKind::Internal);
    ds.addField("SpotValue", TFieldType::Float, TFieldKind::Calculated);
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
    const QString exe = QStandardPaths::findExecutable("sqlite3");
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
        const char* sql = sqlite3_sql(static_cast<sqlite3_stmt*>(p));
        static_cast<StatementLog*>(context)->statements.append(QString::fromUtf8(sql ? sql : ""));
    }
    return 0;
}

int authorizer(void* context, int action, const char* a, const char* b, const char*, const char*)
{
    if (action == SQLITE_READ && a && b)
        static_cast<StatementLog*>(context)->columnReads.append(QString::fromUtf8(a) + '.' +
                                                                QString::fromUtf8(b));
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
