// Builds the catalogue server's data folder from the text sources of the demo catalogue:
// catalogue.db (SQLite, with a full-text index), spot_prices.json and the drawn pictures in
// Images_Thumbs and Images_Large.

#include "uCatalogueSource.h"
#include "uProductPictures.h"

#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QtConcurrent>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

const QString ConnectionName = u"catalogue-build"_s;

const char* const Schema[] = {
    "CREATE TABLE tblMints (ID INTEGER PRIMARY KEY, Name TEXT NOT NULL UNIQUE, Country TEXT,"
    " IsPrivate INTEGER NOT NULL DEFAULT 0)",
    // Which mint numbers of a query find which mint: each mint its own, and some more.
    "CREATE TABLE tblMintQueries (QueryID INTEGER NOT NULL, MintID INTEGER NOT NULL REFERENCES tblMints (ID),"
    " PRIMARY KEY (QueryID, MintID))",
    "CREATE TABLE tblProducts (ID INTEGER PRIMARY KEY, Name TEXT NOT NULL, Series TEXT, Metal INTEGER NOT "
    "NULL,"
    " Year INTEGER NOT NULL DEFAULT 0, WeightG REAL NOT NULL, MintID INTEGER REFERENCES tblMints (ID),"
    " MintName TEXT, CoinType INTEGER NOT NULL, FaceValue REAL, FaceValueCurrency TEXT, Purity TEXT,"
    " Thickness REAL, Diameter REAL, Mintage INTEGER, Width REAL, Height REAL, Edge TEXT, MintMark INTEGER,"
    " Country TEXT, ObverseDesc TEXT, ReverseDesc TEXT, Artist TEXT, Description TEXT, PhotoFront TEXT,"
    " PhotoBack TEXT, PhotoSide TEXT, PhotoInBox TEXT)",
    "CREATE INDEX idxProductsMetalType ON tblProducts (Metal, CoinType)",
    // Full text: the porter stemmer lets "Krugerrands" find "Krugerrand".
    "CREATE VIRTUAL TABLE ftsProducts USING fts5(Name, Series, Keywords, Details,"
    " tokenize = 'porter unicode61')",
    "CREATE TABLE tblInfo (Key TEXT PRIMARY KEY, Value TEXT)",
};

[[noreturn]] void Fail(const QString& message)
{
    throw ECatalogueSourceError(message);
}

void Exec(QSqlQuery& query)
{
    if (!query.exec())
        Fail(u"SQL failure: "_s + query.lastError().text());
}

void Exec(QSqlDatabase& db, const QString& sql)
{
    QSqlQuery query(db);
    if (!query.exec(sql))
        Fail(u"SQL failure: "_s + query.lastError().text() + u" in "_s + sql);
}

QVariant Nullable(double value)
{
    return value > 0 ? QVariant(value) : QVariant();
}

QString KeywordsOf(const TSourceProduct& p)
{
    QStringList words{MetalName(p.Metal), CoinTypeName(p.CoinType), p.MintName, CountryName(p.Country),
                      p.Purity};
    if (p.Year != 0)
        words << QString::number(p.Year);
    if (p.FaceValue > 0)
        words << QString::number(p.FaceValue, 'g', 6) + u' ' + p.FaceValueCurrency;
    return words.join(u' ');
}

void WriteDatabase(const QString& path, const QList<TSourceMint>& mints,
                   const QList<TSourceProduct>& products, const QList<TProductPictureNames>& pictures)
{
    QFile::remove(path);
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, ConnectionName);
        db.setDatabaseName(path);
        if (!db.open())
            Fail(u"Cannot create %1: %2"_s.arg(path, db.lastError().text()));
        for (const char* statement : Schema)
            Exec(db, QString::fromLatin1(statement));
        db.transaction();

        QSqlQuery mintInsert(db);
        mintInsert.prepare(u"INSERT INTO tblMints (ID, Name, Country, IsPrivate) VALUES (?, ?, ?, ?)"_s);
        QSqlQuery queryInsert(db);
        queryInsert.prepare(u"INSERT INTO tblMintQueries (QueryID, MintID) VALUES (?, ?)"_s);
        for (const TSourceMint& mint : mints) {
            mintInsert.addBindValue(mint.ID);
            mintInsert.addBindValue(mint.Name);
            mintInsert.addBindValue(mint.Country);
            mintInsert.addBindValue(mint.IsPrivate ? 1 : 0);
            Exec(mintInsert);
            QList<int> queryIds{mint.ID};
            queryIds += mint.AlsoFoundBy;
            for (int queryId : std::as_const(queryIds)) {
                queryInsert.addBindValue(queryId);
                queryInsert.addBindValue(mint.ID);
                Exec(queryInsert);
            }
        }

        QSqlQuery insert(db);
        insert.prepare(
            u"INSERT INTO tblProducts (ID, Name, Series, Metal, Year, WeightG, MintID, MintName,"
            " CoinType, FaceValue, FaceValueCurrency, Purity, Thickness, Diameter, Mintage, Width,"
            " Height, Edge, MintMark, Country, ObverseDesc, ReverseDesc, Artist, Description,"
            " PhotoFront, PhotoBack, PhotoSide, PhotoInBox) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?,"
            " ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"_s);
        QSqlQuery ftsInsert(db);
        ftsInsert.prepare(u"INSERT INTO ftsProducts (rowid, Name, Series, Keywords, Details)"
                          " VALUES (?, ?, ?, ?, ?)"_s);
        for (qsizetype i = 0; i < products.size(); ++i) {
            const TSourceProduct& p = products[i];
            const TProductPictureNames& pics = pictures[i];
            const QVariantList values{p.ID,
                                      p.Name,
                                      p.Series,
                                      p.Metal,
                                      p.Year,
                                      p.WeightG,
                                      p.MintID,
                                      p.MintName,
                                      p.CoinType,
                                      Nullable(p.FaceValue),
                                      p.FaceValueCurrency,
                                      p.Purity,
                                      Nullable(p.Thickness),
                                      Nullable(p.Diameter),
                                      p.Mintage > 0 ? QVariant(p.Mintage) : QVariant(),
                                      Nullable(p.Width),
                                      Nullable(p.Height),
                                      p.Edge,
                                      p.MintMark ? 1 : 0,
                                      p.Country,
                                      p.ObverseDesc,
                                      p.ReverseDesc,
                                      p.Artist,
                                      p.Description,
                                      pics.Front,
                                      pics.Back,
                                      pics.Side,
                                      pics.InBox};
            for (const QVariant& value : values)
                insert.addBindValue(value);
            Exec(insert);
            ftsInsert.addBindValue(p.ID);
            ftsInsert.addBindValue(p.Name);
            ftsInsert.addBindValue(p.Series);
            ftsInsert.addBindValue(KeywordsOf(p));
            ftsInsert.addBindValue(
                QStringList{p.ObverseDesc, p.ReverseDesc, p.Artist, p.Edge, p.Description}.join(u' '));
            Exec(ftsInsert);
        }
        QSqlQuery info(db);
        info.prepare(u"INSERT INTO tblInfo (Key, Value) VALUES (?, ?)"_s);
        info.addBindValue(u"Products"_s);
        info.addBindValue(QString::number(products.size()));
        Exec(info);
        if (!db.commit())
            Fail(u"Cannot commit the catalogue: "_s + db.lastError().text());
        db.close();
    }
    QSqlDatabase::removeDatabase(ConnectionName);
}

// Empties a picture folder of what an earlier build left, so that no stale picture is served.
void PreparePictureDir(const QString& path)
{
    QDir dir(path);
    if (!dir.mkpath(u"."_s))
        Fail(u"Cannot create %1"_s.arg(path));
    for (const QString& name : dir.entryList({u"*.jpg"_s}, QDir::Files))
        dir.remove(name);
}

int Run(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Builds the catalogue server's data folder from the demo catalogue."_s);
    parser.addHelpOption();
    const QCommandLineOption mintsOption(u"mints"_s, u"Mints table (TSV)."_s, u"file"_s);
    const QCommandLineOption productsOption(u"products"_s, u"Products table (TSV)."_s, u"file"_s);
    const QCommandLineOption spotOption(u"spot"_s, u"Spot prices (JSON)."_s, u"file"_s);
    const QCommandLineOption outOption(u"out"_s, u"Output data folder."_s, u"folder"_s);
    parser.addOptions({mintsOption, productsOption, spotOption, outOption});
    parser.process(arguments);
    for (const QCommandLineOption& option : {mintsOption, productsOption, spotOption, outOption})
        if (!parser.isSet(option))
            Fail(u"Missing --%1"_s.arg(option.names().constFirst()));

    QElapsedTimer timer;
    timer.start();
    const QList<TSourceMint> mints = ReadMints(parser.value(mintsOption));
    const QList<TSourceProduct> products = ReadProducts(parser.value(productsOption), mints);

    const QDir out(parser.value(outOption));
    if (!out.mkpath(u"."_s))
        Fail(u"Cannot create %1"_s.arg(out.path()));
    const QString thumbs = out.filePath(u"Images_Thumbs"_s);
    const QString large = out.filePath(u"Images_Large"_s);
    PreparePictureDir(thumbs);
    PreparePictureDir(large);

    const QList<TProductPictureNames> pictures = QtConcurrent::blockingMapped(
        products, [&](const TSourceProduct& p) { return SaveProductPictures(p, thumbs, large); });

    const QString dbPath = out.filePath(u"catalogue.db"_s);
    const QString tmpPath = dbPath + u".tmp"_s;
    WriteDatabase(tmpPath, mints, products, pictures);
    QFile::remove(dbPath);
    if (!QFile::rename(tmpPath, dbPath))
        Fail(u"Cannot move %1 into place"_s.arg(dbPath));

    const QString spotTarget = out.filePath(u"spot_prices.json"_s);
    QFile::remove(spotTarget);
    if (!QFile::copy(parser.value(spotOption), spotTarget))
        Fail(u"Cannot copy the spot prices to %1"_s.arg(spotTarget));

    std::printf("Demo catalogue: %d products, %d mints, %d pictures in %.1f s\n",
                static_cast<int>(products.size()), static_cast<int>(mints.size()),
                static_cast<int>(products.size() * 5), timer.elapsed() / 1000.0);
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    try {
        return Run(app.arguments());
    } catch (const std::exception& e) {
        std::fprintf(stderr, "gencatalogue: %s\n", e.what());
        return 1;
    }
}
