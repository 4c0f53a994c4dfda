#include "support_datarow.h"
#include "uValuation.h"

#include <QTest>

#include <cmath>

Q_DECLARE_METATYPE(std::optional<double>)

namespace {
const double kNull = std::nan("");

std::optional<double> opt(double v)
{
    return std::isnan(v) ? std::nullopt : std::optional<double>(v);
}

bool near(double a, double b)
{
    return std::fabs(a - b) <= 1e-9 * std::max(1.0, std::fabs(b));
}

bool sameOpt(const std::optional<double>& a, const std::optional<double>& b)
{
    if (a.has_value() != b.has_value())
        return false;
    return !a || near(*a, *b);
}
} // namespace

class TestValuation : public QObject
{
    Q_OBJECT

private slots:
    void row_data()
    {
        QTest::addColumn<double>("spot");
        QTest::addColumn<double>("weightG");
        QTest::addColumn<double>("qty");
        QTest::addColumn<double>("price");
        QTest::addColumn<double>("premium");
        QTest::addColumn<double>("spotValue");
        QTest::addColumn<double>("liquidation");
        QTest::addColumn<double>("roi");
        QTest::addColumn<double>("spotxQty");
        QTest::addColumn<double>("liquidationxQty");
        QTest::addColumn<double>("roixQty");
        QTest::addColumn<double>("roiPercent");

        // TotalPrice is Price * Qty, as the query delivers it.
        AddRow("one ounce at 1000 with premium 50", 1000.0, 31.1035, 1.0, 900.0, 50.0, 1000.0, 1050.0, 150.0,
               1000.0, 1050.0, 150.0, (150.0 / 900.0 * 100));
        AddRow("two pieces", 1000.0, 31.1035, 2.0, 900.0, 50.0, 1000.0, 1050.0, 150.0, 2000.0, 2100.0, 300.0,
               (300.0 / 1800.0 * 100));
        AddRow("no spot price", 0.0, 31.1035, 1.0, 900.0, 50.0, 0.0, 50.0, kNull, 0.0, 50.0, kNull, kNull);
        AddRow("gift: price 0", 1000.0, 31.1035, 1.0, 0.0, 0.0, 1000.0, 1000.0, kNull, 1000.0, 1000.0, kNull,
               kNull);
        AddRow("qty 0", 1000.0, 31.1035, 0.0, 900.0, 0.0, 1000.0, 1000.0, kNull, 0.0, 0.0, kNull, kNull);
        AddRow("premium null counts as 0", 1000.0, 15.55175, 1.0, 400.0, 0.0, 500.0, 500.0, 100.0, 500.0,
               500.0, 100.0, 25.0);
        AddRow("loss", 1000.0, 31.1035, 1.0, 1250.0, 0.0, 1000.0, 1000.0, -250.0, 1000.0, 1000.0, -250.0,
               -20.0);
    }
    void row()
    {
        QFETCH(double, spot);
        QFETCH(double, weightG);
        QFETCH(double, qty);
        QFETCH(double, price);
        QFETCH(double, premium);
        TItemValuationInput in;
        in.Spot = spot;
        in.WeightG = weightG;
        in.Qty = qty;
        in.Price = price;
        in.TotalPrice = price * qty;
        in.ExpectedPremium = premium;
        const TItemValuation v = ValueItem(in);

        QFETCH(double, spotValue);
        QFETCH(double, liquidation);
        QFETCH(double, roi);
        QFETCH(double, spotxQty);
        QFETCH(double, liquidationxQty);
        QFETCH(double, roixQty);
        QFETCH(double, roiPercent);
        QVERIFY(near(v.SpotValue, spotValue));
        QVERIFY(near(v.LiquidationValue, liquidation));
        QVERIFY(sameOpt(v.ROI, opt(roi)));
        QVERIFY(near(v.SpotValuexQty, spotxQty));
        QVERIFY(near(v.LiquidationValuexQty, liquidationxQty));
        QVERIFY(sameOpt(v.ROIxQty, opt(roixQty)));
        QVERIFY(sameOpt(v.ROIPercent, opt(roiPercent)));
    }

    void sums_data()
    {
        QTest::addColumn<double>("liquidation");
        QTest::addColumn<double>("paid");
        QTest::addColumn<double>("percent");
        AddRow("gain", 1500.0, 1000.0, 50.0);
        AddRow("loss", 500.0, 1000.0, -50.0);
        AddRow("nothing paid", 500.0, 0.0, kNull);
        AddRow("empty group", 0.0, 0.0, kNull);
    }
    void sums()
    {
        QFETCH(double, liquidation);
        QFETCH(double, paid);
        QFETCH(double, percent);
        QVERIFY(sameOpt(ROIPercentOfSums(liquidation, paid), opt(percent)));
    }

    // The group percent is worked out from the sums, not averaged from the rows.
    void groupPercentIsNotAnAverage()
    {
        const TItemValuation a = ValueItem({1000, 31.1035, 1, 500, 500, 0});   // +100 %
        const TItemValuation b = ValueItem({1000, 31.1035, 1, 2000, 2000, 0}); // -50 %
        const auto group = ROIPercentOfSums(a.LiquidationValuexQty + b.LiquidationValuexQty, 2500);
        QVERIFY(group);
        QVERIFY(near(*group, -20.0));
    }

    void currencyDisplay()
    {
        const QLocale us(QLocale::English, QLocale::UnitedStates);
        QCOMPARE(FormatUsersCurrency(1234.5, "USD", us), QString("$1,234.50"));
        QVERIFY(FormatUsersCurrency(1234.5, "EUR", us).contains("EUR"));
        QVERIFY(FormatUsersCurrency(1234.5, "EUR", us).contains("1,234.50"));
        // A code never runs into the digits.
        const QString c = FormatUsersCurrency(2331.5, "USD", QLocale::c());
        QVERIFY2(!c.contains("0USD") && !c.contains("USD2"), qPrintable(c));
        QVERIFY(c.contains("USD"));
        const QLocale de(QLocale::German, QLocale::Germany);
        QVERIFY(FormatUsersCurrency(1234.5, "EUR", de).contains(QString::fromUtf8("€")));
        QVERIFY(FormatUsersCurrency(1234.5, "EUR", de).contains("1.234,50"));
    }
};

QTEST_APPLESS_MAIN(TestValuation)
#include "tst_valuation.moc"
