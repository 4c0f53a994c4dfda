// The short texts of an item: weight, metal, type and caption.

#include "support_store.h"
#include "uItemTexts.h"
#include "uZTTypes.h"

#include <QtTest>

class TestItemTexts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { InitStoreTestEnvironment(); }

    void weightToText_data();
    void weightToText();
    void weightToTextInLocale_data();
    void weightToTextInLocale();
    void codesToText_data();
    void codesToText();
    void gramsToOunces();
    void caption_data();
    void caption();
};

void TestItemTexts::weightToText_data()
{
    QTest::addColumn<double>("grams");
    QTest::addColumn<QString>("text");

    QTest::newRow("15.55 g") << 15.55 << QString("½ oz");
    QTest::newRow("7.78 g") << 7.78 << QString("¼ oz");
    QTest::newRow("3.11 g") << 3.11 << QString("1/10 oz");
    QTest::newRow("31.1 g") << 31.1 << QString("1 oz");
    QTest::newRow("1000 g") << 1000.0 << QString("1 kg");
    QTest::newRow("2.5 g") << 2.5 << QString("2.5 g");
    QTest::newRow("0.2 g: whole ounces come first") << 0.2 << QString("0 oz");
    QTest::newRow("0.311035 g is still 0 oz") << 0.311035 << QString("0 oz");
    QTest::newRow("1555.175 g") << 1555.175 << QString("50 oz");
    QTest::newRow("one troy ounce") << TroyOunceGrams << QString("1 oz");
    QTest::newRow("10 oz") << TroyOunceGrams * 10 << QString("10 oz");
    QTest::newRow("1/2") << TroyOunceGrams / 2 << QString("½ oz");
    QTest::newRow("1/4") << TroyOunceGrams / 4 << QString("¼ oz");
    QTest::newRow("1/5") << TroyOunceGrams / 5 << QString("1/5 oz");
    QTest::newRow("1/10") << TroyOunceGrams / 10 << QString("1/10 oz");
    QTest::newRow("1/20") << TroyOunceGrams / 20 << QString("1/20 oz");
    QTest::newRow("1/25") << TroyOunceGrams / 25 << QString("1/25 oz");
    QTest::newRow("1/40") << TroyOunceGrams / 40 << QString("1/40 oz");
    QTest::newRow("3/4") << TroyOunceGrams * 3 / 4 << QString("¾ oz");
    QTest::newRow("1 1/4") << TroyOunceGrams * 1.25 << QString("1¼ oz");
    QTest::newRow("1 1/2") << TroyOunceGrams * 1.5 << QString("1½ oz");
    QTest::newRow("1/2 within 0.01 g") << TroyOunceGrams / 2 + 0.0099 << QString("½ oz");
    QTest::newRow("1/2 beyond 0.01 g") << TroyOunceGrams / 2 + 0.02 << QString("15.57 g");
    QTest::newRow("two decimals at most") << 12.3456 << QString("12.35 g");
    QTest::newRow("no trailing zeros") << 12.1 << QString("12.1 g");
    QTest::newRow("whole grams") << 20.0 << QString("20 g");
    QTest::newRow("kilograms") << 1500.0 << QString("1.5 kg");
    QTest::newRow("kilograms rounded") << 1234.567 << QString("1.23 kg");
    QTest::newRow("no group separator") << 12345678.0 << QString("12345.68 kg");
    QTest::newRow("just under a kilogram") << 999.5 << QString("999.5 g");
    QTest::newRow("2.5 oz is no fraction") << TroyOunceGrams * 2.5 << QString("77.76 g");
}

void TestItemTexts::weightToText()
{
    QFETCH(double, grams);
    QFETCH(QString, text);
    QCOMPARE(WeightToText(grams, QLocale(QLocale::English, QLocale::UnitedStates)), text);
}

void TestItemTexts::weightToTextInLocale_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<double>("grams");
    QTest::addColumn<QString>("text");

    const QLocale german(QLocale::German, QLocale::Germany);
    QTest::newRow("de grams") << german << 2.5 << QString("2,5 g");
    QTest::newRow("de kilograms") << german << 1234.5 << QString("1,23 kg");
    QTest::newRow("de ounces unchanged") << german << 1555.175 << QString("50 oz");
    QTest::newRow("de no group separator") << german << 5000000.0 << QString("5000 kg");
    const QLocale french(QLocale::French, QLocale::France);
    QTest::newRow("fr grams") << french << 0.75 << QString("0,75 g");
}

void TestItemTexts::weightToTextInLocale()
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

void TestItemTexts::codesToText_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("metal");
    QTest::addColumn<QString>("coinType");

    QTest::newRow("0") << 0 << QString("Gold") << QString("Coin");
    QTest::newRow("1") << 1 << QString("Silver") << QString("Rectangular coin");
    QTest::newRow("2") << 2 << QString("Platinum") << QString("Round");
    QTest::newRow("3") << 3 << QString("Palladium") << QString("Bar");
    QTest::newRow("4") << 4 << QString("Rhodium") << QString("Divisible bar");
    QTest::newRow("5") << 5 << QString("Copper") << QString();
    QTest::newRow("6") << 6 << QString() << QString();
    QTest::newRow("-1") << -1 << QString() << QString();
    QTest::newRow("large") << 1000000 << QString() << QString();
}

void TestItemTexts::codesToText()
{
    QFETCH(int, code);
    QFETCH(QString, metal);
    QFETCH(QString, coinType);
    QCOMPARE(MetalToText(code), metal);
    QCOMPARE(CoinTypeToText(code), coinType);
}

void TestItemTexts::gramsToOunces()
{
    QCOMPARE(GramsToOunces(TroyOunceGrams), 1.0);
    QCOMPARE(GramsToOunces(0), 0.0);
    QVERIFY(qFuzzyCompare(GramsToOunces(1000), 1000 / 31.1035));
}

void TestItemTexts::caption_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("grams");
    QTest::addColumn<int>("year");
    QTest::addColumn<int>("metal");
    QTest::addColumn<int>("coinType");
    QTest::addColumn<QString>("caption");

    QTest::newRow("with year") << "Eagle" << TroyOunceGrams << 2012 << 0 << 0 << "Eagle 1 oz 2012 Gold Coin";
    QTest::newRow("without year") << "Maple" << TroyOunceGrams << 0 << 1 << 0 << "Maple 1 oz Silver Coin";
    QTest::newRow("bar in grams") << "Valcambi" << 100.0 << 0 << 2 << 3 << "Valcambi 100 g Platinum Bar";
    QTest::newRow("unknown codes leave blanks") << "X" << 1000.0 << 0 << 9 << 9 << "X 1 kg  ";
}

void TestItemTexts::caption()
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

QTEST_GUILESS_MAIN(TestItemTexts)
#include "tst_itemtexts.moc"
