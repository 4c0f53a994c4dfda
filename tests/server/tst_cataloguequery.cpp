// Reading the search query string and turning it into SQL, without a server.

#include "support_datarow.h"
#include "uCatalogueQuery.h"
#include "uCatalogueSearch.h"
#include "uServerSpotPrices.h"

#include <QTemporaryDir>
#include <QtTest>

class TestCatalogueQuery : public QObject
{
    Q_OBJECT

private slots:
    void keywordTerms_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("terms");
        AddRow("words", "gold  maple\tleaf", QStringList{"gold", "maple", "leaf"});
        AddRow("phrase", "\"Maple leaf\" 2019", QStringList{"Maple leaf", "2019"});
        AddRow("unbalanced quote", "silver \"year of the", QStringList{"silver", "year of the"});
        AddRow("punctuation only dropped", "!! & maple --", QStringList{"maple"});
        AddRow("empty phrase dropped", "\"\" a", QStringList{"a"});
        AddRow("empty", "", QStringList{});
    }
    void keywordTerms()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, terms);
        QCOMPARE(KeywordTerms(text), terms);
    }
    void keysInAnyOrder()
    {
        const TCatalogueQuery a = ParseCatalogueQuery(
            "action=search-coins&keywords=1%2F10+oz+maple&metals=[0,1]&mints=[69]&coin_types=[3]");
        const TCatalogueQuery b = ParseCatalogueQuery(
            "coin_types=%5B3%5D&mints=[69]&metals=[0,1]&keywords=1/10%20oz%20maple&action=search-coins");
        QCOMPARE(a.Keywords, QString("1/10 oz maple"));
        QCOMPARE(b.Keywords, a.Keywords);
        QCOMPARE(a.Metals, b.Metals);
        QCOMPARE(*a.Metals, QList<int>({0, 1}));
        QCOMPARE(*b.CoinTypes, QList<int>({3}));
        QCOMPARE(*b.Mints, QList<int>({69}));
        QCOMPARE(a.Action, QString("search-coins"));
        QVERIFY(!a.YearsRange && !a.WeightGRange && !a.WeightOzRange && !a.YearsFilter && !a.Weights);
        QVERIFY(a.HasCriteria());
        QVERIFY(!ParseCatalogueQuery("action=search-coins&keywords=").HasCriteria());
        QVERIFY(!ParseCatalogueQuery("action=search-coins&").HasCriteria());
        // An encoded plus is a plus, a raw plus a blank.
        QCOMPARE(ParseCatalogueQuery("keywords=a%2Bb+c").Keywords, QString("a+b c"));
        // Unknown keys are ignored; a later key wins.
        QCOMPARE(*ParseCatalogueQuery("foo=bar&metals=[1]&metals=[2]").Metals, QList<int>({2}));
    }
    void rangesAndDecimalComma_data()
    {
        QTest::addColumn<QByteArray>("query");
        QTest::addColumn<double>("low");
        QTest::addColumn<double>("high");
        AddRow("grams", QByteArray("weight_g_range=[10.00,0.00]"), 10.0, 0.0);
        AddRow("ounces", QByteArray("weight_oz_range=[0.25,1.50]"), 0.25, 1.5);
        AddRow("decimal comma", QByteArray("weight_oz_range=[0,25,1,50]"), 0.25, 1.5);
        AddRow("encoded brackets", QByteArray("weight_g_range=%5B1.00%2C2.00%5D"), 1.0, 2.0);
    }
    void rangesAndDecimalComma()
    {
        QFETCH(QByteArray, query);
        QFETCH(double, low);
        QFETCH(double, high);
        const TCatalogueQuery q = ParseCatalogueQuery(query);
        const auto range = q.WeightGRange ? q.WeightGRange : q.WeightOzRange;
        QVERIFY(range);
        QCOMPARE(range->first, low);
        QCOMPARE(range->second, high);
    }
    void malformedRaises_data()
    {
        QTest::addColumn<QByteArray>("query");
        AddRow("unclosed", QByteArray("metals=[0"));
        AddRow("letters", QByteArray("years_range=[a,b]"));
        AddRow("overflow", QByteArray("mints=[99999999999999999999]"));
        AddRow("five values", QByteArray("weight_oz_range=[1,00,2,00,3]"));
        AddRow("blank inside number", QByteArray("metals=[1 2]"));
        AddRow("invalid UTF-8", QByteArray("keywords=%C3%28"));
        AddRow("too long", QByteArray("keywords=") + QByteArray(600, 'x'));
    }
    void malformedRaises()
    {
        QFETCH(QByteArray, query);
        QVERIFY_THROWS_EXCEPTION(ECatalogueQueryError, ParseCatalogueQuery(query));
    }
    void matchExpressionQuotesEveryTerm()
    {
        QCOMPARE(TCatalogueSearch::MatchExpression("\"Maple leaf\" gold"),
                 QString("\"Maple leaf\" AND \"gold\""));
        // FTS syntax in the text stays text.
        QCOMPARE(TCatalogueSearch::MatchExpression("a OR b* NEAR(c)"),
                 QString("\"a\" AND \"OR\" AND \"b*\" AND \"NEAR(c)\""));
        QCOMPARE(TCatalogueSearch::MatchExpression("\"x\"\"y"), QString("\"x\" AND \"y\""));
    }
    void sqlHasNoKeywordText()
    {
        TCatalogueQuery q =
            ParseCatalogueQuery("action=search-coins&keywords=Robert%27);DROP+TABLE+tblProducts;-"
                                "-&metals=[0]&weight_oz_range=[0,10,0,00]");
        const QString sql = TCatalogueSearch::SqlOf(q);
        QVERIFY(!sql.contains("Robert"));
        QVERIFY(sql.contains("MATCH ?"));
        QVERIFY(sql.contains("p.Metal IN (0)"));
        QVERIFY2(sql.contains("p.WeightG >= 2.954833"), qPrintable(sql)); // (0.10 - 0.005) oz in grams
        QVERIFY(!sql.contains("p.WeightG <="));
    }
    void searchOnASmallCatalogue()
    {
        // The server's search against the demo catalogue built with the project.
        const QString path = qEnvironmentVariable("ORV_BUILD_DIR") + "/server/data/catalogue.db";
        if (!QFile::exists(path))
            QSKIP("the demo catalogue is not built");
        const TCatalogueSearch search(path);
        QVERIFY(search.ProductCount() >= 150);
        const QJsonArray some =
            search.Search(ParseCatalogueQuery("action=search-coins&keywords=Robert%27);DROP+TABLE"));
        QCOMPARE(some.size(), 0);
        QCOMPARE(TCatalogueSearch(path).ProductCount(), search.ProductCount());
        const QJsonArray bars =
            search.Search(ParseCatalogueQuery("action=search-coins&metals=[1]&coin_types=[4]"));
        QVERIFY(!bars.isEmpty());
        for (const QJsonValue& v : bars)
            QCOMPARE(v.toObject()["CoinType"].toInt(), 4);
        QVERIFY_THROWS_EXCEPTION(ECatalogueDatabaseError, TCatalogueSearch("/nonexistent/catalogue.db"));
    }
    void spotPricesFile()
    {
        QTemporaryDir dir;
        QFile file(dir.filePath("spot.json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(
            R"({"DateC":"d","Metals":[{"BaseCurrency":"XAU","Price":2000,"ChangeAbs":-1,"ChangePerc":"-0.05"}],
                      "Rates":{"USD":1,"EUR":0.5}})");
        file.close();
        const TServerSpotPrices prices(file.fileName());
        const QJsonArray eur = prices.ReplyFor("EUR");
        QCOMPARE(eur.size(), 1);
        QCOMPARE(eur[0].toObject()["Price"].toDouble(), 1000.0);
        QCOMPARE(eur[0].toObject()["ChangeAbs"].toDouble(), -0.5);
        QCOMPARE(eur[0].toObject()["ChangePerc"].toString(), QString("-0.05"));
        QVERIFY(prices.ReplyFor("GBP").isEmpty());

        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("{\"Metals\": [");
        file.close();
        QVERIFY_THROWS_EXCEPTION(ESpotPricesError, TServerSpotPrices(file.fileName()));
        // The shipped file names every currency of the client's list.
        const TServerSpotPrices shipped(qEnvironmentVariable("ORV_SOURCE_DIR") +
                                        "/data/catalogue/spot_prices.json");
        QCOMPARE(shipped.CurrencyCount(), 161);
    }
};

QTEST_GUILESS_MAIN(TestCatalogueQuery)
#include "tst_cataloguequery.moc"
