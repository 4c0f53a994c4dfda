#include "uCatalogueSearch.h"

#include <QAtomicInt>
#include <QJsonObject>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr double TroyOunceGrams = 31.1035;
// The client sends weights with two decimals: a bound matches what rounds to it.
constexpr double OzTolerance = 0.005;
constexpr double GramTolerance = 0.005;

QAtomicInt ConnectionCounter;

QString Literal(double value)
{
    return QString::number(value, 'f', 6);
}

QString IdList(const QList<int>& ids)
{
    QStringList parts;
    for (int id : ids)
        parts.append(QString::number(id));
    return parts.join(u", "_s);
}

// Lower and upper bound in grams of a range; an upper bound of 0 means none.
QString WeightCondition(double low, double high, double factor, double tolerance)
{
    QString condition = u"p.WeightG >= "_s + Literal((low - tolerance) * factor);
    if (high > 0)
        condition += u" AND p.WeightG <= "_s + Literal((high + tolerance) * factor);
    return condition;
}

} // namespace

ECatalogueDatabaseError::ECatalogueDatabaseError(const QString& message)
    : std::runtime_error(message.toStdString())
{}

TCatalogueSearch::TCatalogueSearch(const QString& databasePath)
    : m_connectionName(u"catalogue-%1"_s.arg(ConnectionCounter.fetchAndAddRelaxed(1)))
{
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connectionName);
    db.setDatabaseName(databasePath);
    db.setConnectOptions(u"QSQLITE_OPEN_READONLY"_s);
    if (!db.open())
        throw ECatalogueDatabaseError(
            u"Cannot open the catalogue %1: %2"_s.arg(databasePath, db.lastError().text()));
    QSqlQuery count(db);
    if (!count.exec(u"SELECT COUNT(*) FROM tblProducts"_s) || !count.next())
        throw ECatalogueDatabaseError(
            u"%1 is no catalogue: %2"_s.arg(databasePath, count.lastError().text()));
    m_productCount = count.value(0).toInt();
}

TCatalogueSearch::~TCatalogueSearch()
{
    {
        QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_connectionName);
}

QString TCatalogueSearch::MatchExpression(const QString& keywords)
{
    QStringList parts;
    for (QString term : KeywordTerms(keywords)) {
        term.replace(u'"', u"\"\""_s);
        parts.append(u'"' + term + u'"');
    }
    return parts.join(u" AND "_s);
}

QString TCatalogueSearch::SqlOf(const TCatalogueQuery& query)
{
    const bool byText = !KeywordTerms(query.Keywords).isEmpty();
    QString sql = u"SELECT p.*, "_s;
    sql += byText ? u"bm25(ftsProducts, 10.0, 5.0, 2.0, 1.0)"_s : u"0.0"_s;
    sql += u" AS Score FROM tblProducts p"_s;
    QStringList where;
    if (byText) {
        sql += u" JOIN ftsProducts ON ftsProducts.rowid = p.ID"_s;
        where.append(u"ftsProducts MATCH ?"_s);
    }
    if (query.Metals)
        where.append(u"p.Metal IN ("_s + IdList(*query.Metals) + u")"_s);
    if (query.CoinTypes)
        where.append(u"p.CoinType IN ("_s + IdList(*query.CoinTypes) + u")"_s);
    if (query.Mints)
        where.append(u"p.MintID IN (SELECT MintID FROM tblMintQueries WHERE QueryID IN ("_s +
                     IdList(*query.Mints) + u"))"_s);
    if (query.Weights) {
        QStringList any;
        for (double grams : *query.Weights) {
            const double tolerance = std::max(0.01, grams * 0.002);
            any.append(u"ABS(p.WeightG - "_s + Literal(grams) + u") <= "_s + Literal(tolerance));
        }
        where.append(any.isEmpty() ? u"0"_s : u"("_s + any.join(u" OR "_s) + u")"_s);
    }
    if (query.WeightOzRange)
        where.append(WeightCondition(query.WeightOzRange->first, query.WeightOzRange->second, TroyOunceGrams,
                                     OzTolerance));
    if (query.WeightGRange)
        where.append(
            WeightCondition(query.WeightGRange->first, query.WeightGRange->second, 1.0, GramTolerance));
    if (query.YearsRange) {
        // A product of unknown year (0) is in no range.
        where.append(u"p.Year >= "_s + QString::number(std::max(1, query.YearsRange->first)));
        if (query.YearsRange->second > 0)
            where.append(u"p.Year <= "_s + QString::number(query.YearsRange->second));
    }
    if (query.YearsFilter)
        where.append(u"p.Year IN ("_s +
                     (query.YearsFilter->isEmpty() ? u"-1"_s : IdList(*query.YearsFilter)) + u")"_s);
    if (query.Metals && query.Metals->isEmpty())
        where.append(u"0"_s);
    if (query.CoinTypes && query.CoinTypes->isEmpty())
        where.append(u"0"_s);
    if (query.Mints && query.Mints->isEmpty())
        where.append(u"0"_s);
    if (!where.isEmpty())
        sql += u" WHERE "_s + where.join(u" AND "_s);
    sql += u" ORDER BY Score, p.Name, p.Year DESC"_s;
    return sql;
}

QJsonArray TCatalogueSearch::Search(const TCatalogueQuery& query) const
{
    if (query.Action != u"search-coins"_s || !query.HasCriteria())
        return {};
    // Empty lists give "IN ()", which SQLite reads as false; SqlOf guards them anyway.
    const QString sql = SqlOf(query);
    QSqlQuery q(QSqlDatabase::database(m_connectionName, false));
    q.setForwardOnly(true);
    if (!q.prepare(sql))
        throw ECatalogueDatabaseError(u"Cannot prepare the search: "_s + q.lastError().text());
    if (!KeywordTerms(query.Keywords).isEmpty())
        q.addBindValue(MatchExpression(query.Keywords));
    if (!q.exec())
        throw ECatalogueDatabaseError(u"Search failed: "_s + q.lastError().text());

    const QSqlRecord record = q.record();
    const auto col = [&record](const char16_t* name) { return record.indexOf(QString::fromUtf16(name)); };
    const int cName = col(u"Name"), cSeries = col(u"Series"), cMetal = col(u"Metal"), cYear = col(u"Year"),
              cWeightG = col(u"WeightG"), cMintName = col(u"MintName"), cCoinType = col(u"CoinType"),
              cFaceValue = col(u"FaceValue"), cFaceCurrency = col(u"FaceValueCurrency"),
              cPurity = col(u"Purity"), cThickness = col(u"Thickness"), cDiameter = col(u"Diameter"),
              cMintage = col(u"Mintage"), cWidth = col(u"Width"), cHeight = col(u"Height"),
              cEdge = col(u"Edge"), cMintMark = col(u"MintMark"), cCountry = col(u"Country"),
              cObverse = col(u"ObverseDesc"), cReverse = col(u"ReverseDesc"), cArtist = col(u"Artist"),
              cDescription = col(u"Description"), cFront = col(u"PhotoFront"), cBack = col(u"PhotoBack"),
              cSide = col(u"PhotoSide"), cInBox = col(u"PhotoInBox"), cScore = col(u"Score"),
              cId = col(u"ID");

    QJsonArray results;
    while (q.next()) {
        const auto text = [&q](int c) { return q.value(c).toString(); };
        const auto number = [&q](int c) { return q.value(c).toDouble(); };
        const auto integer = [&q](int c) { return q.value(c).toInt(); };
        const auto picture = [&q](int c) {
            const QString name = q.value(c).toString();
            return name.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(name);
        };
        // bm25 is negative, lower is better; the reply carries a positive whole number.
        const int relevance = static_cast<int>(std::lround(-number(cScore) * 100.0));
        QJsonObject item{
            {u"ID"_s, integer(cId)},
            {u"weight"_s, relevance},
            {u"Name"_s, text(cName)},
            {u"Series"_s, text(cSeries)},
            {u"Metal"_s, integer(cMetal)},
            {u"Year"_s, integer(cYear)},
            {u"WeightG"_s, number(cWeightG)},
            {u"MintName"_s, text(cMintName)},
            {u"CoinType"_s, integer(cCoinType)},
            {u"FaceValue"_s, number(cFaceValue)},
            {u"FaceValueCurrency"_s, text(cFaceCurrency)},
            {u"Purity"_s, text(cPurity)},
            {u"Thickness"_s, number(cThickness)},
            {u"Diameter"_s, number(cDiameter)},
            {u"Mintage"_s, integer(cMintage)},
            {u"Width"_s, number(cWidth)},
            {u"Height"_s, number(cHeight)},
            {u"Edge"_s, text(cEdge)},
            {u"MintMark"_s, integer(cMintMark)},
            {u"Country"_s, text(cCountry)},
            {u"ObverseDesc"_s, text(cObverse)},
            {u"ReverseDesc"_s, text(cReverse)},
            {u"Artist"_s, text(cArtist)},
            {u"Description"_s, text(cDescription)},
            {u"PhotoFront"_s, picture(cFront)},
            {u"PhotoBack"_s, picture(cBack)},
            {u"PhotoSide"_s, picture(cSide)},
            {u"PhotoInBox"_s, picture(cInBox)},
        };
        results.append(item);
    }
    return results;
}
