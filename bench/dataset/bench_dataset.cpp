// Opens a dataset over 100,000 items of the collection's ~60 columns and compares it, round by
// round, with a bare sqlite3 loop stepping the same SELECT and reading every column. Prints the
// min/median/max of each, of their ratios, and the memory.
//
//   bench_dataset [--rows N] [--repeat N] [--file path]

#include "bench_common.h"
#include "uDBConnection.h"
#include "uDBDataset.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <sqlite3.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

const QString kItemsSQL =
    u"SELECT *, Price / (WeightG / 31.1035) AS AvgPricePerOz::REAL, WeightG * Qty AS WeightGxQty::REAL, "
    u"WeightG * Qty / 31.1035 AS WeightOZxQty::REAL, Price * Qty AS TotalPrice::REAL, "
    u"strftime('%Y', PurchaseDate) AS PurchaseYear::VARCHAR, strftime('%Y-%m', PurchaseDate) AS "
    u"PurchaseYearMonth::VARCHAR FROM tblCoins C"_s;

// The same statement as SQLite takes it, without the type hints.
const char* const kBareSQL =
    "SELECT *, Price / (WeightG / 31.1035) AS AvgPricePerOz, WeightG * Qty AS WeightGxQty, "
    "WeightG * Qty / 31.1035 AS WeightOZxQty, Price * Qty AS TotalPrice, "
    "strftime('%Y', PurchaseDate) AS PurchaseYear, strftime('%Y-%m', PurchaseDate) AS PurchaseYearMonth "
    "FROM tblCoins C";

const char* const kCoinsDDL =
    "CREATE TABLE tblCoins (ID INTEGER PRIMARY KEY AUTOINCREMENT UNIQUE, "
    "Name VARCHAR (500) NOT NULL, Metal INTEGER NOT NULL, ObverseDesc VARCHAR (1000), "
    "ReverseDesc VARCHAR (1000), Series VARCHAR (300), Year INTEGER, WeightG DOUBLE NOT NULL, "
    "MintID INTEGER, CoinType INTEGER NOT NULL DEFAULT (0), FaceValue DOUBLE, "
    "FaceValueCurrency VARCHAR (3), Purity VARCHAR (30), Thickness DOUBLE, Diameter DOUBLE, "
    "Width DOUBLE, Height DOUBLE, Edge VARCHAR (100), MintMark BOOLEAN DEFAULT (0), "
    "Country VARCHAR (2), Mintage INTEGER, Artist VARCHAR (1000), Description TEXT, "
    "ThumbFront BLOB, ThumbBack BLOB, PhotoFront BLOB, PhotoBack BLOB, PhotoSide BLOB, "
    "PhotoInBox BLOB, ExpectedPremium DOUBLE, Rating DOUBLE, Rare BOOLEAN, "
    "Condition VARCHAR (500), Status VARCHAR (500), Owner VARCHAR (500), "
    "Packaging VARCHAR (500), Location VARCHAR (500), Grade VARCHAR (500), "
    "GradeService VARCHAR (500), SerialNumbers TEXT, Qty INTEGER, Price DOUBLE, "
    "PurchaseDate DATE, Store VARCHAR (500), Custom1 NONE NULL, Custom2 NONE NULL, "
    "Custom3 NONE NULL, Custom4 NONE NULL, Custom5 NONE NULL, Custom6 NONE NULL, "
    "Custom7 NONE NULL, Custom8 NONE NULL, Custom9 NONE NULL, Custom10 NONE NULL)";

void check(int rc, sqlite3* db, const char* what)
{
    if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) {
        std::fprintf(stderr, "%s: %s\n", what, sqlite3_errmsg(db));
        std::exit(2);
    }
}

void createFile(const QByteArray& path, int rows)
{
    sqlite3* db = nullptr;
    check(sqlite3_open(path.constData(), &db), db, "open");
    check(sqlite3_exec(db, kCoinsDDL, nullptr, nullptr, nullptr), db, "create");
    check(sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr), db, "begin");
    sqlite3_stmt* ins = nullptr;
    check(sqlite3_prepare_v2(
              db,
              "INSERT INTO tblCoins (Name, Metal, ObverseDesc, ReverseDesc, Series, Year, WeightG, "
              "MintID, CoinType, FaceValue, FaceValueCurrency, Purity, Thickness, Diameter, Edge, "
              "MintMark, Country, Mintage, Artist, Description, ExpectedPremium, Rating, Rare, "
              "Condition, Status, Owner, Packaging, Location, Grade, GradeService, Qty, Price, "
              "PurchaseDate, Store, Custom1, Custom2) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,"
              "?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)",
              -1, &ins, nullptr),
          db, "prepare");
    static const double weights[] = {31.1035, 15.55, 7.78, 3.11, 62.207, 311.035, 1000.0, 1.0};
    static const char* const names[] = {"American Eagle", "Maple Leaf",      "Krugerrand", "Britannia",
                                        "Philharmonic",   "Kangaroo",        "Panda",      "Libertad",
                                        "Valcambi bar",   "PAMP Fortuna bar"};
    for (int i = 0; i < rows; ++i) {
        const QByteArray name = QByteArray(names[i % 10]) + ' ' + QByteArray::number(i);
        const QByteArray date = QByteArrayLiteral("20") + QByteArray::number(10 + i % 14) + '-' +
                                QByteArray::number(1 + i % 12).rightJustified(2, '0') + '-' +
                                QByteArray::number(1 + i % 28).rightJustified(2, '0');
        int p = 1;
        auto text = [&](const QByteArray& t) {
            sqlite3_bind_text(ins, p++, t.constData(), int(t.size()), SQLITE_TRANSIENT);
        };
        text(name);
        sqlite3_bind_int(ins, p++, i % 6);
        text("Portrait of a figure with the legend around the rim, the year below and the mint mark at the "
             "left");
        text("Heraldic design with the denomination, the weight and the fineness in two lines of small "
             "letters");
        text("Series " + QByteArray::number(i % 40));
        sqlite3_bind_int(ins, p++, 1986 + i % 38);
        sqlite3_bind_double(ins, p++, weights[i % 8]);
        sqlite3_bind_int(ins, p++, 1 + i % 67);
        sqlite3_bind_int(ins, p++, i % 5);
        sqlite3_bind_double(ins, p++, 1 + i % 50);
        text("USD");
        text(".9999");
        sqlite3_bind_double(ins, p++, 2.87);
        sqlite3_bind_double(ins, p++, 40.6);
        text("Reeded");
        sqlite3_bind_int(ins, p++, i % 2);
        text("US");
        sqlite3_bind_int(ins, p++, 100000 + i);
        text("A. Designer");
        text("Bought at a coin show; original capsule and certificate of authenticity, no spots, light "
             "toning on the "
             "reverse rim.");
        sqlite3_bind_double(ins, p++, 2.5 + i % 7);
        sqlite3_bind_double(ins, p++, (i % 11) * 0.5);
        sqlite3_bind_int(ins, p++, i % 3 == 0);
        text("BU");
        text("In collection");
        text("Me");
        text("Capsule");
        text("Safe");
        text("MS69");
        text("PCGS");
        sqlite3_bind_int(ins, p++, 1 + i % 20);
        sqlite3_bind_double(ins, p++, 20.0 + (i % 1000) * 1.75);
        text(date);
        text("Local dealer");
        if (i % 4 == 0)
            text("Custom text " + QByteArray::number(i));
        else
            sqlite3_bind_null(ins, p++);
        sqlite3_bind_int(ins, p++, i);
        check(sqlite3_step(ins), db, "insert");
        sqlite3_reset(ins);
    }
    sqlite3_finalize(ins);
    check(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db, "commit");
    sqlite3_close(db);
}

// Steps the statement and reads every column, as a program reading rows would.
double bareLoop(const QByteArray& path, qint64* rowsOut, double* checksum)
{
    sqlite3* db = nullptr;
    check(sqlite3_open_v2(path.constData(), &db, SQLITE_OPEN_READONLY, nullptr), db, "open");
    QElapsedTimer timer;
    timer.start();
    sqlite3_stmt* stmt = nullptr;
    check(sqlite3_prepare_v2(db, kBareSQL, -1, &stmt, nullptr), db, "prepare");
    const qint64 rows = StepAllColumns(stmt, checksum);
    sqlite3_finalize(stmt);
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    sqlite3_close(db);
    *rowsOut = rows;
    return ms;
}

void declareFields(TDBDataset& ds)
{
    struct Def
    {
        const char* name;
        TFieldType type;
        int size;
    };
    static const Def defs[] = {
        {"ID", TFieldType::AutoInc, 0},
        {"Name", TFieldType::String, 500},
        {"Metal", TFieldType::Integer, 0},
        {"ObverseDesc", TFieldType::String, 1000},
        {"ReverseDesc", TFieldType::String, 1000},
        {"Series", TFieldType::String, 300},
        {"Year", TFieldType::Integer, 0},
        {"WeightG", TFieldType::Float, 0},
        {"MintID", TFieldType::Integer, 0},
        {"CoinType", TFieldType::Integer, 0},
        {"FaceValue", TFieldType::Float, 0},
        {"FaceValueCurrency", TFieldType::String, 3},
        {"Purity", TFieldType::String, 30},
        {"Thickness", TFieldType::Float, 0},
        {"Diameter", TFieldType::Float, 0},
        {"Width", TFieldType::Float, 0},
        {"Height", TFieldType::Float, 0},
        {"Edge", TFieldType::String, 100},
        {"MintMark", TFieldType::Boolean, 0},
        {"Country", TFieldType::String, 2},
        {"Mintage", TFieldType::Integer, 0},
        {"Artist", TFieldType::String, 1000},
        {"Description", TFieldType::Memo, 0},
        {"ThumbFront", TFieldType::Blob, 0},
        {"ThumbBack", TFieldType::Blob, 0},
        {"PhotoFront", TFieldType::Blob, 0},
        {"PhotoBack", TFieldType::Blob, 0},
        {"PhotoSide", TFieldType::Blob, 0},
        {"PhotoInBox", TFieldType::Blob, 0},
        {"ExpectedPremium", TFieldType::Float, 0},
        {"Rating", TFieldType::Float, 0},
        {"Rare", TFieldType::Boolean, 0},
        {"Condition", TFieldType::String, 500},
        {"Status", TFieldType::String, 500},
        {"Owner", TFieldType::String, 500},
        {"Packaging", TFieldType::String, 500},
        {"Location", TFieldType::String, 500},
        {"Grade", TFieldType::String, 500},
        {"GradeService", TFieldType::String, 500},
        {"SerialNumbers", TFieldType::Memo, 0},
        {"Qty", TFieldType::Integer, 0},
        {"Price", TFieldType::Float, 0},
        {"PurchaseDate", TFieldType::Date, 0},
        {"Store", TFieldType::String, 500},
    };
    for (const Def& d : defs)
        ds.addField(QString::fromLatin1(d.name), d.type, TFieldKind::Stored, d.size);
    for (int i = 1; i <= 10; ++i)
        ds.addField(u"Custom%1"_s.arg(i), TFieldType::String, TFieldKind::Stored, 32767);
    for (const char* name : {"AvgPricePerOz", "WeightGxQty", "WeightOZxQty", "TotalPrice"})
        ds.addField(QString::fromLatin1(name), TFieldType::Float, TFieldKind::Computed);
    ds.addField(u"PurchaseYear"_s, TFieldType::String, TFieldKind::Computed, 4);
    ds.addField(u"PurchaseYearMonth"_s, TFieldType::String, TFieldKind::Computed, 7);
}

struct DatasetRun
{
    double ms = 0;
    int records = 0;
};

// Opens the dataset; with `handlers`, also the per-record work of the item dataset (internal
// weights and a few calculated fields).
DatasetRun datasetOpen(const QString& path, bool handlers)
{
    TDBConnection conn;
    conn.setParamsText(u"Database=%1\nOpenMode=ReadWrite\nDriverID=SQLite\nForeignKeys=On"_s.arg(path));
    conn.open();
    TDBDataset ds(&conn);
    declareFields(ds);
    if (handlers) {
        ds.addField(u"Caption"_s, TFieldType::String, TFieldKind::Calculated, 200);
        ds.addField(u"WeightOz"_s, TFieldType::Float, TFieldKind::Internal);
        ds.addField(u"WeightGram"_s, TFieldType::Float, TFieldKind::Internal);
        ds.addField(u"SpotValue"_s, TFieldType::Float, TFieldKind::Calculated);
        ds.addField(u"SpotValuexQty"_s, TFieldType::Float, TFieldKind::Calculated);
        TDBField& weightG = ds.fieldByName(u"WeightG"_s);
        TDBField& weightOz = ds.fieldByName(u"WeightOz"_s);
        TDBField& weightGram = ds.fieldByName(u"WeightGram"_s);
        TDBField& name = ds.fieldByName(u"Name"_s);
        TDBField& qty = ds.fieldByName(u"Qty"_s);
        TDBField& caption = ds.fieldByName(u"Caption"_s);
        TDBField& spotValue = ds.fieldByName(u"SpotValue"_s);
        TDBField& spotValueQty = ds.fieldByName(u"SpotValuexQty"_s);
        ds.setOnReadRecord([&](TDBDataset&) {
            const double g = weightG.asFloat();
            weightOz.setAsFloat(g / 31.1035);
            weightGram.setAsFloat(g);
        });
        ds.setOnCalcFields([&](TDBDataset&) {
            caption.setAsString(name.asString() + u' ' + QString::number(weightG.asFloat(), 'f', 2) +
                                u" g"_s);
            const double spot = 30.0 * weightG.asFloat() / 31.1035;
            spotValue.setAsFloat(spot);
            spotValueQty.setAsFloat(spot * qty.asInteger());
        });
    }
    ds.setSQL(kItemsSQL);
    ds.setUpdateTableName(u"tblCoins"_s);
    ds.setKeyFields(u"ID"_s);
    ds.setIndexFieldNames(u"ID"_s);
    ds.setAutoCalcFields(false);
    QElapsedTimer timer;
    timer.start();
    ds.open();
    DatasetRun run;
    run.ms = double(timer.nsecsElapsed()) / 1e6;
    run.records = ds.recordCount();
    return run;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    int rows = 100000;
    int repeat = 5;
    QString file;
    const QStringList args = app.arguments();
    for (qsizetype i = 1; i < args.size(); ++i) {
        if (args.at(i) == u"--rows"_s && i + 1 < args.size())
            rows = args.at(++i).toInt();
        else if (args.at(i) == u"--repeat"_s && i + 1 < args.size())
            repeat = std::max(3, args.at(++i).toInt());
        else if (args.at(i) == u"--file"_s && i + 1 < args.size())
            file = args.at(++i);
        else {
            std::printf("bench_dataset [--rows N] [--repeat N] [--file path]\n"
                        "Opens the item dataset over N rows and compares it with a bare sqlite3 loop.\n");
            return args.at(i) == u"--help"_s ? 0 : 1;
        }
    }
    QTemporaryDir dir;
    if (file.isEmpty())
        file = dir.filePath(u"bench.db"_s);
    const QByteArray path = QFile::encodeName(file);
    if (!QFile::exists(file)) {
        QElapsedTimer t;
        t.start();
        createFile(path, rows);
        std::printf("created %s with %d rows in %.0f ms\n", path.constData(), rows, double(t.elapsed()));
    }
    std::printf("sqlite %s, statement of %s\n", sqlite3_libversion(),
                "SELECT * + 6 expressions (60 columns)");

    qint64 bareRows = 0;
    double checksum = 0;
    bareLoop(path, &bareRows, &checksum); // warms the file cache
    // Rounds interleave the three, so that each ratio compares runs taken side by side.
    std::vector<double> bare, dataset, withHandlers, ratio, ratioHandlers;
    int records = 0;
    for (int i = 0; i < repeat; ++i) {
        bare.push_back(bareLoop(path, &bareRows, &checksum));
        const DatasetRun run = datasetOpen(file, false);
        dataset.push_back(run.ms);
        records = run.records;
        withHandlers.push_back(datasetOpen(file, true).ms);
        ratio.push_back(dataset.back() / bare.back());
        ratioHandlers.push_back(withHandlers.back() / bare.back());
    }
    std::printf("rows                      %lld (dataset records %d), %d rounds\n",
                static_cast<long long>(bareRows), records, repeat);
    std::printf("bare sqlite3 loop         %s\n", qPrintable(StatsText(StatsOf(bare))));
    std::printf("dataset open              %s\n", qPrintable(StatsText(StatsOf(dataset))));
    std::printf("  ratio to the bare loop  %s\n", qPrintable(StatsText(StatsOf(ratio), u"x"_s, 2)));
    std::printf("dataset open + handlers   %s\n", qPrintable(StatsText(StatsOf(withHandlers))));
    std::printf("  ratio to the bare loop  %s  (internal + calculated fields per record)\n",
                qPrintable(StatsText(StatsOf(ratioHandlers), u"x"_s, 2)));
    std::printf("peak resident memory      %.0f MiB (VmHWM), private now %.0f MiB\n", PeakResidentMiB(),
                AnonymousResidentMiB());
    return 0;
}
