// The short texts of an item: weight, metal, type and caption.

#include "support_datarow.h"
#include "support_store.h"
#include "uItemTexts.h"
#include "uZTTypes.h"

#include <QtTest>

#include <cmath>

class TestItemTexts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { InitStoreTestEnvironment(); }

    void weightToText_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<double>("grams");
        QTest::addColumn<QString>("text");
        const QLocale us(QLocale::English, QLocale::UnitedStates);
        const QLocale german(QLocale::German, QLocale::Germany);
        AddRow("0.2 g: whole ounces come first", us, 0.2, "0 oz");
        AddRow("1555.175 g", us, 1555.175, "50 oz");
        AddRow("1/2 within 0.01 g", us, TroyOunceGrams / 2 + 0.0099, "½ oz");
        AddRow("1/2 beyond 0.01 g", us, TroyOunceGrams / 2 + 0.02, "15.57 g");
        AddRow("1/40", us, TroyOunceGrams / 40, "1/40 oz");
        AddRow("3/4", us, TroyOunceGrams * 3 / 4, "¾ oz");
        AddRow("1 1/2", us, TroyOunceGrams * 1.5, "1½ oz");
        AddRow("2.5 oz is no fraction", us, TroyOunceGrams * 2.5, "77.76 g");
        AddRow("two decimals at most, no trailing zeros", us, 12.1001, "12.1 g");
        AddRow("kilograms rounded", us, 1234.567, "1.23 kg");
        AddRow("no group separator", us, 12345678.0, "12345.68 kg");
        AddRow("de grams", german, 2.5, "2,5 g");
        AddRow("de no group separator", german, 5000000.0, "5000 kg");
        AddRow("beyond 64 bits of ounces", us, 1e25,
               QString::number(std::nearbyint(1e25 / TroyOunceGrams), 'f', 0) + " oz");
        AddRow("far beyond, negative", us, -1e300,
               QString::number(std::nearbyint(-1e300 / TroyOunceGrams), 'f', 0) + " oz");
    }
    void weightToText()
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
        AddRow("4", 4, "Rhodium", "Divisible bar");
        AddRow("5", 5, "Copper", QString());
        AddRow("-1", -1, QString(), QString());
    }
    void codesToText()
    {
        QFETCH(int, code);
        QFETCH(QString, metal);
        QFETCH(QString, coinType);
        QCOMPARE(MetalToText(code), metal);
        QCOMPARE(CoinTypeToText(code), coinType);
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
