// The country list: English names from an iso-codes file, sorted by name, flags where the system
// has them, and nothing that breaks on a damaged file.

#include "support_common.h"
#include "uCountries.h"

using namespace Qt::StringLiterals;

#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

class TstCountries : public QObject
{
    Q_OBJECT

private slots:
    void readsSortsAndFindsFlags_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QStringList>("flags");    // flag files present
        QTest::addColumn<QStringList>("expected"); // "CODE=Name=flag?" in order

        const QByteArray three = R"({"3166-1": [
            {"alpha_2": "AL", "name": "Albania"},
            {"alpha_2": "AX", "name": "Åland Islands"},
            {"alpha_2": "AF", "name": "Afghanistan"}]})";
        QTest::newRow("accents sort as letters")
            << three << QStringList{u"af"_s}
            << QStringList{u"AF=Afghanistan=1"_s, u"AX=Åland Islands=0"_s, u"AL=Albania=0"_s};
        QTest::newRow("common name wins, code upper-cased")
            << QByteArray(R"({"3166-1": [{"alpha_2": "bo", "name": "Bolivia, Plurinational State of",
                           "common_name": "Bolivia"}, {"alpha_2": "BE", "name": "belgium"}]})")
            << QStringList{u"bo"_s} << QStringList{u"BE=belgium=0"_s, u"BO=Bolivia=1"_s};
        QTest::newRow("entries without a two-letter code or a name are passed over")
            << QByteArray(R"({"3166-1": [{"alpha_2": "DEU", "name": "x"}, {"name": "No code"},
                           {"alpha_2": "1A", "name": "Digits"}, {"alpha_2": "FR"}, {"alpha_2": "FR", "name": "France"}]})")
            << QStringList{} << QStringList{u"FR=France=0"_s};
        QTest::newRow("not JSON") << QByteArray("<html>") << QStringList{} << QStringList{};
        QTest::newRow("wrong shape") << QByteArray(R"({"3166-1": {"alpha_2": "FR"}})") << QStringList{}
                                     << QStringList{};
    }

    void readsSortsAndFindsFlags()
    {
        QFETCH(QByteArray, json);
        QFETCH(QStringList, flags);
        QFETCH(QStringList, expected);
        QTemporaryDir dir;
        WriteFile(dir.filePath(u"c.json"_s), json);
        for (const QString& flag : flags) {
            WriteFile(dir.filePath(flag + u".png"_s), "png");
        }
        QStringList got;
        for (const TCountry& country : LoadCountries(dir.filePath(u"c.json"_s), dir.path())) {
            got << country.Code + u'=' + country.Name + u'=' + (country.FlagPath.isEmpty() ? u'0' : u'1');
        }
        QCOMPARE(got, expected);
    }

    void missingFileGivesAnEmptyList()
    {
        QVERIFY(LoadCountries(u"/nonexistent/iso.json"_s, u"/nonexistent"_s).isEmpty());
    }

    // The installed packages: the usual list, every name once, sorted, flags for nearly all.
    void systemList()
    {
        const QList<TCountry>& countries = Countries();
        QVERIFY2(countries.size() > 240, "iso-codes is not installed (scripts/deps.sh)");
        QCOMPARE(CountryName(u"de"_s), u"Germany"_s);
        QCOMPARE(CountryName(u"XX"_s), QString());
        int withFlag = 0;
        QStringList names;
        for (const TCountry& country : countries) {
            names << country.Name;
            withFlag += country.FlagPath.isEmpty() ? 0 : 1;
        }
        QCOMPARE(names.first(), u"Afghanistan"_s);
        QCOMPARE(names.indexOf(u"Åland Islands"_s), 1);
        QCOMPARE(names.last(), u"Zimbabwe"_s);
        QCOMPARE(QSet<QString>(names.begin(), names.end()).size(), names.size());
        QVERIFY2(withFlag > 230, "famfamfam-flag-png is not installed (scripts/deps.sh)");
    }
};

QTEST_GUILESS_MAIN(TstCountries)
#include "tst_countries.moc"
