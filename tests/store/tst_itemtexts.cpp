// The short texts of an item: weight, metal, type and caption.

#include "support_datarow.h"
#include "support_store.h"
#include "uItemTexts.h"
#include "uZTTypes.h"

#include <QtTest>

class TestItemTexts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { InitStoreTestEnvironment(); }

    void weightToText_data()
    {
        QTest::addColumn<double>("grams");
        QTest::addColumn<QString>("text");
        AddRow("15.55 g", 15.55, "½ oz");
        AddRow("7.78 g", 7.78, "¼ oz");
        AddRow("3.11 g", 3.11, "1/10 oz");
        AddRow("31.1 g", 31.1, "1 oz");
        AddRow("1000 g", 1000.0, "1 kg");
        AddRow("2.5 g", 2.5, "2.5 g");
        AddRow("0.2 g: whole ounces come first", 0.2, "0 oz");
        AddRow("1555.175 g", 1555.175, "50 oz");
        AddRow("10 oz", TroyOunceGrams * 10, "10 oz");
        AddRow("1/5", TroyOunceGrams / 5, "1/5 oz");
        AddRow("1/10", TroyOunceGrams / 10, "1/10 oz");
        AddRow("1/20", TroyOunceGrams / 20, "1/20 oz");
        AddRow("1/25", TroyOunceGrams / 25, "1/25 oz");
        AddRow("1/40", TroyOunceGrams / 40, "1/40 oz");
        AddRow("3/4", TroyOunceGrams * 3 / 4, "¾ oz");
        AddRow("1 1/2", TroyOunceGrams * 1.5, "1½ oz");
        AddRow("1/2 within 0.01 g", TroyOunceGrams / 2 + 0.0099, "½ oz");
        AddRow("1/2 beyond 0.01 g", TroyOunceGrams / 2 + 0.02, "15.57 g");
        AddRow("two decimals at most", 12.3456, "12.35 g");
        AddRow("no trailing zeros", 12.1, "12.1 g");
        AddRow("kilograms", 1500.0, "1.5 kg");
        AddRow("kilograms rounded", 1234.567, "1.23 kg");
        AddRow("no group separator", 12345678.0, "12345.68 kg");
        AddRow("2.5 oz is no fraction", TroyOunceGrams * 2.5, "77.76 g");
    }
    void weightToText()
    {
        QFETCH(double, grams);
        QFETCH(QString, text);
        QCOMPARE(WeightToText(grams, QLocale(QLocale::English, QLocale::UnitedStates)), text);
    }
    void weightToTextInLocale_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<double>("grams");
        QTest::addColumn<QString>("text");
        const QLocale german(QLocale::German, QLocale::Germany);
        AddRow("de grams", german, 2.5, "2,5 g");
        AddRow("de kilograms", german, 1234.5, "1,23 kg");
        AddRow("de ounces unchanged", german, 1555.175, "50 oz");
        AddRow("de no group separator", german, 5000000.0, "5000 kg");
        const QLocale french(QLocale::French, QLocale::France);
        AddRow("fr grams", french, 0.75, "0,75 g");
    }
    void weightToTextInLocale()
    {
        QFETCH(QLocale, locale);
        QFETCH(double, grams);
        QFETCH(QString, text);
        QCOMPARE(WeightToText(grams, locale), text);

        // The one-argument form follows the default locale.
        const QLocale previous;
        QLocale::setDefault(locale);
        const QString viaDefault = WeightToText(grams);
        QLocale::setDefault(previous);
        QCOMPARE(viaDefault, text);
    }
    void codesToText_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("metal");
        QTest::addColumn<QString>("coinType");
        AddRow("0", 0, "Gold", "Coin");
        AddRow("1", 1, "Silver", "Rectangular coin");
        AddRow("2", 2, "Platinum", "Round");
        AddRow("3", 3, "Palladium", "Bar");
        AddRow("4", 4, "Rhodium", "Divisible bar");
        AddRow("5", 5, "Copper", QString());
        AddRow("6", 6, QString(), QString());
        AddRow("-1", -1, QString(), QString());
        AddRow("large", 1000000, QString(), QString());
    }
    void codesToText()
    {
        QFETCH(int, code);
        QFETCH(QString, metal);
        QFETCH(QString, coinType);
        QCOMPARE(MetalToText(code), metal);
        QCOMPARE(CoinTypeToText(code), coinType);
    }
    void gramsToOunces()
    {
        QCOMPARE(GramsToOunces(TroyOunceGrams), 1.0);
        QCOMPARE(GramsToOunces(0), 0.0);
        QVERIFY(qFuzzyCompare(GramsToOunces(1000), 1000 / 31.1035));
    }
    void caption_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("grams");
        QTest::addColumn<int>("year");
        QTest::addColumn<int>("metal");
        QTest::addColumn<int>("coinType");
        QTest::addColumn<QString>("caption");
        AddRow("with year", "Eagle", TroyOunceGrams, 2012, 0, 0, "Eagle 1 oz 2012 Gold Coin");
        AddRow("without year", "Maple", TroyOunceGrams, 0, 1, 0, "Maple 1 oz Silver Coin");
        AddRow("bar in grams", "Valcambi", 100.0, 0, 2, 3, "Valcambi 100 g Platinum Bar");
        AddRow("unknown codes leave blanks", "X", 1000.0, 0, 9, 9, "X 1 kg  ");
    }
    void caption()
    {
        QFETCH(QString, name);
        QFETCH(double, grams);
        QFETCH(int, year);
        QFETCH(int, metal);
        QFETCH(int, coinType);
        QFETCH(QString, caption);
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QCOMPARE(ItemCaption(name, grams, year, metal, coinType), caption);
    }
};

QTEST_GUILESS_MAIN(TestItemTexts)
#include "tst_itemtexts.moc"
