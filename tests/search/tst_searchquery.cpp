// Forming the catalogue search request for every search mode, the quick-search tables that the
// add dialog's galleries and the application menu share, and the tabs' titles. No network.

#include "support_common.h"
#include "support_datarow.h"
#include "uQuickSearches.h"
#include "uSearchQuery.h"

#include <QLocale>
#include <QtTest>

#include <algorithm>

Q_DECLARE_METATYPE(TSearchFilters)

namespace {

TSearchFilters Filters(const QString& keywords, const QString& metals = {}, const QString& types = {},
                       std::optional<qint32> mint = std::nullopt, double from = 0, double to = 0,
                       qint32 unit = cWeightUnitOunces, qint32 yearFrom = 0, qint32 yearTo = 0)
{
    return TSearchFilters{keywords, metals, types, mint, from, to, unit, yearFrom, yearTo};
}

QList<qint32> Range(qint32 first, qint32 last)
{
    QList<qint32> tags;
    for (qint32 tag = first; tag <= last; ++tag)
        tags << tag;
    return tags;
}

} // namespace

class TestSearchQuery : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { LoadEnglish(); }

    void typedSearch_data()
    {
        QTest::addColumn<TSearchFilters>("filters");
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("query");
        const QLocale c = QLocale::c();
        const auto g = cWeightUnitGrams;
        AddRow("defaults send only the keywords", Filters(""), c, QString("keywords="));
        AddRow("slash and blanks", Filters("1/10 oz maple"), c, QString("keywords=1%2F10+oz+maple"));
        AddRow("non-ASCII as UTF-8 bytes", Filters(QString::fromUtf8("Zürich 熊猫")), c,
               QString("keywords=Z%C3%BCrich+%E7%86%8A%E7%8C%AB"));
        AddRow("quotes, ampersand, plus", Filters("\"a&b\" +c"), c, QString("keywords=%22a%26b%22+%2Bc"));
        AddRow("only \"1\" of six places checks", Filters("x", "2x1 10", "00011"), c,
               QString("keywords=x&metals=[2,4]&coin_types=[3,4]"));
        AddRow("wrong number of places", Filters("x", "01000", "000110"), c, QString("keywords=x"));
        AddRow("mint 0 is a mint", Filters("x", "", "", 0), c, QString("keywords=x&mints=[0]"));
        AddRow("grams from 10 to 0", Filters("x", "", "", {}, 10, 0, g), c,
               QString("keywords=x&weight_g_range=[10.00,0.00]"));
        AddRow("two decimals, no group separator", Filters("x", "", "", {}, 1234.567, 0.5, g), c,
               QString("keywords=x&weight_g_range=[1234.57,0.50]"));
        AddRow("German comma", Filters("x", "", "", 12345, 1234.5, 0, g, 12000), QLocale(QLocale::German),
               QString("keywords=x&mints=[12345]&weight_g_range=[1234,50,0,00]&years_range=[12000,0]"));
        AddRow("Arabic separator, ASCII digits", Filters("x", "", "", {}, 0, 0.5, g),
               QLocale(QLocale::Arabic, QLocale::Egypt),
               QString::fromUtf8("keywords=x&weight_g_range=[0٫00,0٫50]"));
        AddRow("no unit chosen", Filters("x", "", "", {}, 1, 2, -1), c, QString("keywords=x"));
        AddRow("years from 2000", Filters("x", "", "", {}, 0, 0, 0, 2000, 0), c,
               QString("keywords=x&years_range=[2000,0]"));
        AddRow("everything in order, never weights=",
               Filters("gold bar", "111111", "11111", 6, 1, 10, cWeightUnitOunces, 1990, 2020), c,
               QString("keywords=gold+bar&metals=[0,1,2,3,4,5]&coin_types=[0,1,2,3,4]&mints=[6]"
                       "&weight_oz_range=[1.00,10.00]&years_range=[1990,2020]"));
    }
    void typedSearch()
    {
        QFETCH(TSearchFilters, filters);
        QFETCH(QLocale, locale);
        QFETCH(QString, query);
        const QLocale saved;
        QLocale::setDefault(locale);
        const QString formed = SearchQuery(smTyped, 7, "ignored", filters);
        QLocale::setDefault(saved);
        QCOMPARE(formed, query);
    }

    void otherModes_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("tag");
        QTest::addColumn<QString>("query");
        AddRow("text from outside, filters ignored", 1, -1, QString("keywords=%22Maple+leaf%22+2019"));
        AddRow("Maple leafs keep quotes and blank", 2, 1,
               QString("metals=[0]&coin_types=[0,1,2]&keywords=\"Maple leaf\"&mints=[1]"));
        AddRow("no mint", 2, 27, QString("metals=[0]&coin_types=[0]&keywords=Somalia Elephant"));
        AddRow("Rand refinery says rand", 3, 10,
               QString("metals=[0]&coin_types=[3,4]&keywords=rand&mints=[31]"));
        AddRow(
            "keywords before years", 4, 3,
            QString("metals=[1]&coin_types=[0,1,2]&keywords=Silver dollar&years_range=[0,1990]&mints=[32]"));
        AddRow("Southern Cross as -1", 5, 12, QString("metals=[1]&coin_types=[3,4]&mints=[-1]"));
        AddRow("other metals have no tag 16", 6, 16, QString());
        AddRow("tag 0", 2, 0, QString());
        AddRow("mode beyond the quick searches", 7, 1, QString());
    }
    void otherModes()
    {
        QFETCH(int, mode);
        QFETCH(int, tag);
        QFETCH(QString, query);
        QCOMPARE(SearchQuery(quint8(mode), tag, "\"Maple leaf\" 2019", Filters("typed", "111111")), query);
        // A tag without a row ends the request at "search-coins&".
        QCOMPARE(SearchURL("https://h:1", query), "https://h:1/orv/search.php?action=search-coins&" + query);
    }

    void tablesCoverEveryGalleryItem_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QList<qint32>>("tags");
        AddRow("gold coins", 2, Range(1, 27));
        AddRow("gold bars", 3, Range(1, 14));
        AddRow("silver coins", 4, Range(1, 21));
        AddRow("silver bars", 5, Range(1, 14));
        AddRow("other metals", 6, Range(1, 15) + Range(17, 25));
    }
    void tablesCoverEveryGalleryItem()
    {
        QFETCH(int, mode);
        QFETCH(QList<qint32>, tags);
        QList<qint32> tableTags;
        for (const TQuickSearch& row : QuickSearches(quint8(mode))) {
            tableTags << row.Tag;
            QVERIFY(!row.Gallery.isEmpty());
            QCOMPARE(row.Tab.isEmpty(), mode == smOtherMetals); // only there the tab has no item text
        }
        QCOMPARE(tableTags, tags);

        // The add dialog's gallery shows every tag once; the application menu names only rows.
        QList<qint32> shown;
        for (const TQuickSearchGallery& gallery : AddDialogGalleries())
            for (const TGalleryGroup& group : gallery.Groups)
                shown += gallery.Mode == mode ? group.Tags : QList<qint32>();
        std::sort(shown.begin(), shown.end());
        QCOMPARE(shown, tags);
        for (const TBackstageGalleryGroup& group : BackstageGalleryGroups())
            for (const TBackstageGalleryItem& item : group.Items)
                QVERIFY2(group.Mode != mode || tags.contains(item.Tag), qPrintable(item.Caption));
    }

    void tabTitles_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("tag");
        QTest::addColumn<QString>("title");
        AddRow("typed", 0, -1, QString("Keyword search: typed words"));
        AddRow("from outside", 1, -1, QString("Keyword search: outside words"));
        AddRow("gold coins", 2, 6, QString("Gold coins: Kangaroo / Nugget"));
        AddRow("gold bars", 3, 7, QString("Gold bars: Geiger Edelmetalle"));
        AddRow("silver bars", 5, 10, QString("Silver bars: Royal Canadian Mint (RCM)"));
        AddRow("other metals alone", 6, 3, QString("Other metals"));
    }
    void tabTitles()
    {
        QFETCH(int, mode);
        QFETCH(int, tag);
        QFETCH(QString, title);
        QCOMPARE(SearchTabTitle(quint8(mode), tag, "outside words", Filters("typed words")), title);
    }
};

QTEST_GUILESS_MAIN(TestSearchQuery)
#include "tst_searchquery.moc"
