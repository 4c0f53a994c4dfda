// Forming the catalogue search request for every search mode, the quick-search tables that the
// add dialog's galleries and the application menu share, and the tabs' titles. No network.

#include "support_common.h"
#include "support_datarow.h"
#include "uQuickSearches.h"
#include "uSearchQuery.h"

#include <QLocale>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <optional>

Q_DECLARE_METATYPE(TSearchFilters)

namespace {

TSearchFilters Filters(const QString& keywords, const QString& metals = {}, const QString& types = {},
                       std::optional<qint32> mint = std::nullopt, double from = 0, double to = 0,
                       qint32 unit = cWeightUnitOunces, qint32 yearFrom = 0, qint32 yearTo = 0)
{
    return TSearchFilters{keywords, metals, types, mint, from, to, unit, yearFrom, yearTo};
}

// Restores the process's default locale when a test ends, also on a failed comparison.
class TDefaultLocale
{
public:
    explicit TDefaultLocale(const QLocale& locale) { QLocale::setDefault(locale); }
    ~TDefaultLocale() { QLocale::setDefault(m_saved); }

private:
    QLocale m_saved = QLocale();
};

} // namespace

class TestSearchQuery : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        LoadEnglish();
        QLocale::setDefault(QLocale::c());
    }

    void typedSearch_data()
    {
        QTest::addColumn<TSearchFilters>("filters");
        QTest::addColumn<QString>("query");
        AddRow("defaults send only the keywords", Filters("maple"), QString("keywords=maple"));
        AddRow("empty box", Filters(""), QString("keywords="));
        AddRow("slash and blanks", Filters("1/10 oz maple"), QString("keywords=1%2F10+oz+maple"));
        AddRow("non-ASCII as UTF-8 bytes", Filters(QString::fromUtf8("Zürich 熊猫")),
               QString("keywords=Z%C3%BCrich+%E7%86%8A%E7%8C%AB"));
        AddRow("quotes, ampersand, plus", Filters("\"a&b\" +c"), QString("keywords=%22a%26b%22+%2Bc"));
        AddRow("metals checked", Filters("x", "010001"), QString("keywords=x&metals=[1,5]"));
        AddRow("no metal checked", Filters("x", "000000"), QString("keywords=x"));
        AddRow("metal text too short", Filters("x", "01000"), QString("keywords=x"));
        AddRow("metal text too long", Filters("x", "0100000"), QString("keywords=x"));
        AddRow("only \"1\" counts as checked", Filters("x", "2x1 10"), QString("keywords=x&metals=[2,4]"));
        AddRow("types checked", Filters("x", "", "00011"), QString("keywords=x&coin_types=[3,4]"));
        AddRow("types of six places", Filters("x", "", "000110"), QString("keywords=x"));
        AddRow("mint", Filters("x", "", "", 32), QString("keywords=x&mints=[32]"));
        AddRow("mint 0 is a mint", Filters("x", "", "", 0), QString("keywords=x&mints=[0]"));
        AddRow("grams from 10 to 0", Filters("x", "", "", {}, 10, 0, cWeightUnitGrams),
               QString("keywords=x&weight_g_range=[10.00,0.00]"));
        AddRow("ounces to 1/2", Filters("x", "", "", {}, 0, 0.5, cWeightUnitOunces),
               QString("keywords=x&weight_oz_range=[0.00,0.50]"));
        AddRow("two decimals, no group separator", Filters("x", "", "", {}, 1234.567, 2000, cWeightUnitGrams),
               QString("keywords=x&weight_g_range=[1234.57,2000.00]"));
        AddRow("weights of 0 send nothing", Filters("x", "", "", {}, 0, 0, cWeightUnitGrams),
               QString("keywords=x"));
        AddRow("negative weights send nothing", Filters("x", "", "", {}, -1, -2, cWeightUnitGrams),
               QString("keywords=x"));
        AddRow("no unit chosen", Filters("x", "", "", {}, 1, 2, -1), QString("keywords=x"));
        AddRow("years from 2000", Filters("x", "", "", {}, 0, 0, 0, 2000, 0),
               QString("keywords=x&years_range=[2000,0]"));
        AddRow("years up to 1933", Filters("x", "", "", {}, 0, 0, 0, 0, 1933),
               QString("keywords=x&years_range=[0,1933]"));
        AddRow("negative year counts", Filters("x", "", "", {}, 0, 0, 0, -5, 0),
               QString("keywords=x&years_range=[-5,0]"));
        AddRow("everything, in order",
               Filters("gold bar", "100000", "00010", 6, 1, 10, cWeightUnitOunces, 1990, 2020),
               QString("keywords=gold+bar&metals=[0]&coin_types=[3]&mints=[6]&weight_oz_range=[1.00,10.00]"
                       "&years_range=[1990,2020]"));
    }
    void typedSearch()
    {
        QFETCH(TSearchFilters, filters);
        QFETCH(QString, query);
        QCOMPARE(TypedSearchQuery(filters), query);
        QCOMPARE(SearchQuery(smTyped, 7, "ignored", filters), query);
    }

    void weightRangeInProcessNumberFormat_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("range");
        AddRow("German", QLocale(QLocale::German, QLocale::Germany), QString("[1000,00,0,50]"));
        AddRow("French", QLocale(QLocale::French, QLocale::France), QString("[1000,00,0,50]"));
        AddRow("U.S. English", QLocale(QLocale::English, QLocale::UnitedStates), QString("[1000.00,0.50]"));
        // Its own separator, but the digits stay ASCII.
        AddRow("Arabic", QLocale(QLocale::Arabic, QLocale::SaudiArabia), QString::fromUtf8("[1000٫00,0٫50]"));
        AddRow("Persian", QLocale(QLocale::Persian, QLocale::Iran), QString::fromUtf8("[1000٫00,0٫50]"));
    }
    void weightRangeInProcessNumberFormat()
    {
        QFETCH(QLocale, locale);
        QFETCH(QString, range);
        const TDefaultLocale scope(locale);
        QCOMPARE(TypedSearchQuery(Filters("", "", "", {}, 1000, 0.5, cWeightUnitGrams)),
                 "keywords=&weight_g_range=" + range);
        // Whole numbers are never written with separators.
        QCOMPARE(TypedSearchQuery(Filters("", "", "", 12345, 0, 0, 0, 12000, 0)),
                 QString("keywords=&mints=[12345]&years_range=[12000,0]"));
    }

    void standardWeightsAreNeverSent()
    {
        QCOMPARE(StandardWeightsList("10001"), QString("31.1035,1.5552"));
        QCOMPARE(StandardWeightsList("00000"), QString());
        QCOMPARE(StandardWeightsList("1000"), QString());
        // The dialog has nothing that fills the flag text: no filter combination sends the key.
        QVERIFY(!TypedSearchQuery(Filters("a", "111111", "11111", 1, 1, 1, 1, 1, 1)).contains("weights="));
    }

    void textSearch_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("query");
        AddRow("words", QString("Maple leaf 2019"), QString("keywords=Maple+leaf+2019"));
        AddRow("phrase", QString("\"Maple leaf\""), QString("keywords=%22Maple+leaf%22"));
        AddRow("empty", QString(), QString("keywords="));
    }
    void textSearch()
    {
        QFETCH(QString, text);
        QFETCH(QString, query);
        // The dialog's filters play no part in a search from outside.
        const TSearchFilters filters = Filters("other", "111111", "11111", 3, 1, 2, 0, 2000, 2001);
        QCOMPARE(SearchQuery(smText, -1, text, filters), query);
    }

    void quickSearch_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("tag");
        QTest::addColumn<QString>("query");
        AddRow("Maple leafs keep their quotes and blank", 2, 1,
               QString("metals=[0]&coin_types=[0,1,2]&keywords=\"Maple leaf\"&mints=[1]"));
        AddRow("apostrophe raw", 2, 5,
               QString("metals=[0]&coin_types=[0,1,2]&keywords=Canada's Flowers&mints=[1]"));
        AddRow("year filter as it stands", 2, 4,
               QString("metals=[0]&coin_types=[0,1,2]&years_filter=[2019]&mints=[1]"));
        AddRow("pre 1933", 2, 22, QString("metals=[0]&coin_types=[0]&years_range=[0,1933]&mints=[32]"));
        AddRow("no mint", 2, 27, QString("metals=[0]&coin_types=[0]&keywords=Somalia Elephant"));
        AddRow("gold bars say bar", 3, 1, QString("metals=[0]&coin_types=[3,4]&keywords=bar&mints=[6]"));
        AddRow("Rand refinery says rand", 3, 10,
               QString("metals=[0]&coin_types=[3,4]&keywords=rand&mints=[31]"));
        AddRow(
            "keywords before years", 4, 3,
            QString("metals=[1]&coin_types=[0,1,2]&keywords=Silver dollar&years_range=[0,1990]&mints=[32]"));
        AddRow("silver bars have no keywords", 5, 1, QString("metals=[1]&coin_types=[3,4]&mints=[5]"));
        AddRow("Southern Cross as -1", 5, 12, QString("metals=[1]&coin_types=[3,4]&mints=[-1]"));
        AddRow("platinum bar", 6, 10, QString("metals=[2]&coin_types=[3,4]&mints=[6]"));
        AddRow("palladium Maple leafs", 6, 19,
               QString("metals=[3]&coin_types=[0,1,2]&keywords=Maple leaf&mints=[1]"));
        AddRow("other metals have no tag 16", 6, 16, QString());
        AddRow("tag 0", 2, 0, QString());
        AddRow("tag after the last", 3, 15, QString());
        AddRow("tag -1", 4, -1, QString());
        AddRow("mode beyond the quick searches", 7, 1, QString());
    }
    void quickSearch()
    {
        QFETCH(int, mode);
        QFETCH(int, tag);
        QFETCH(QString, query);
        QCOMPARE(SearchQuery(quint8(mode), tag, "ignored", Filters("ignored", "111111")), query);
        // A tag without a row ends the request at "search-coins&".
        QCOMPARE(SearchURL("https://host:1", query),
                 "https://host:1/orv/search.php?action=search-coins&" + query);
    }

    void tablesCoverEveryGalleryItem_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QList<qint32>>("tags");
        QTest::addColumn<QString>("metals");
        AddRow("gold coins", 2, Range(1, 27), QString("0"));
        AddRow("gold bars", 3, Range(1, 14), QString("0"));
        AddRow("silver coins", 4, Range(1, 21), QString("1"));
        AddRow("silver bars", 5, Range(1, 14), QString("1"));
        AddRow("other metals", 6, Range(1, 15) + Range(17, 25), QString("2,3"));
    }
    void tablesCoverEveryGalleryItem()
    {
        QFETCH(int, mode);
        QFETCH(QList<qint32>, tags);
        QFETCH(QString, metals);
        QList<qint32> tableTags;
        for (const TQuickSearch& row : QuickSearches(quint8(mode))) {
            QCOMPARE(int(row.Mode), mode);
            tableTags << row.Tag;
            QVERIFY(metals.split(',').contains(row.Metals.toString()));
            QVERIFY2(row.CoinTypes == u"0,1,2" || row.CoinTypes == u"0" || row.CoinTypes == u"3,4",
                     qPrintable(row.CoinTypes.toString()));
            QVERIFY(!row.Gallery.isEmpty());
            // Only the other metals' tab shows no item text.
            QCOMPARE(row.Tab.isEmpty(), mode == smOtherMetals);
        }
        QCOMPARE(tableTags, tags);

        // The add dialog's gallery of the mode shows every tag once.
        QList<qint32> galleryTags;
        for (const TQuickSearchGallery& gallery : AddDialogGalleries())
            if (gallery.Mode == mode)
                for (const TGalleryGroup& group : gallery.Groups)
                    galleryTags += group.Tags;
        std::sort(galleryTags.begin(), galleryTags.end());
        QCOMPARE(galleryTags, tags);

        // The application menu's items all name a row of their group's mode, once each.
        QSet<qint32> seen;
        for (const TBackstageGalleryGroup& group : BackstageGalleryGroups()) {
            if (group.Mode != mode)
                continue;
            for (const TBackstageGalleryItem& item : group.Items) {
                QVERIFY2(FindQuickSearch(group.Mode, item.Tag), qPrintable(item.Caption));
                QVERIFY2(!seen.contains(item.Tag), qPrintable(item.Caption));
                seen.insert(item.Tag);
            }
        }
    }

    void galleriesInOrderOfDisplay()
    {
        QStringList addDialog;
        for (const TQuickSearchGallery& gallery : AddDialogGalleries())
            addDialog << QString("%1 %2 %3").arg(gallery.Name, gallery.TextKey).arg(int(gallery.Mode));
        QCOMPARE(addDialog, QStringList({"btnSelectGoldCoins cSAddDlgQSGoldCoins 2",
                                         "btnSelectGoldBars cSAddDlgQSGoldBars 3",
                                         "btnSelectSilverCoins cSAddDlgQSSilverCoins 4",
                                         "btnSelectSilverBars cSAddDlgQSSilverBars 5",
                                         "btnSelectOtherMetals cSAddDlgQSOtherMetals 6"}));
        const TQuickSearchGallery& goldCoins = AddDialogGalleries().at(0);
        QCOMPARE(goldCoins.Groups.at(0).Heading, QString("United States Mint"));
        QCOMPARE(goldCoins.Groups.at(0).Tags, QList<qint32>({19, 20, 22, 23, 21}));
        QCOMPARE(AddDialogGalleries().at(1).Groups.at(0).Tags,
                 QList<qint32>({3, 4, 5, 6, 7, 1, 2}) + Range(8, 14));

        QStringList menu;
        for (const TBackstageGalleryGroup& group : BackstageGalleryGroups())
            menu << QString("%1 %2 %3 %4")
                        .arg(group.Name, group.TextKey)
                        .arg(int(group.Mode))
                        .arg(group.Items.size());
        QCOMPARE(menu, QStringList(
                           {"gGoldCoins cSAddDlgQSGoldCoins 2 22", "gSilverCoins cSAddDlgQSSilverCoins 4 21",
                            "gGoldBars cSAddDlgQSGoldBars 3 14", "gSilverBars cSAddDlgQSSilverBars 5 14"}));
        // The menu's captions are its own; the tab still reads the row's text.
        const TBackstageGalleryItem& first = BackstageGalleryGroups().at(0).Items.at(2);
        QCOMPARE(first.Tag, 22);
        QCOMPARE(first.Caption, QString("US Pre 1933"));
        QCOMPARE(FindQuickSearch(smGoldCoins, 22)->Gallery.toString(), QString("Pre 1933"));
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
        AddRow("silver coins", 4, 13, QString("Silver coins: Queen's beasts"));
        AddRow("silver bars", 5, 10, QString("Silver bars: Royal Canadian Mint (RCM)"));
        AddRow("other metals alone", 6, 3, QString("Other metals"));
        AddRow("tag without a row", 2, 99, QString("Gold coins: "));
    }
    void tabTitles()
    {
        QFETCH(int, mode);
        QFETCH(int, tag);
        QFETCH(QString, title);
        QCOMPARE(SearchTabTitle(quint8(mode), tag, "outside words", Filters("typed words")), title);
    }

private:
    static QList<qint32> Range(qint32 first, qint32 last)
    {
        QList<qint32> tags;
        for (qint32 tag = first; tag <= last; ++tag)
            tags << tag;
        return tags;
    }
};

QTEST_GUILESS_MAIN(TestSearchQuery)
#include "tst_searchquery.moc"
