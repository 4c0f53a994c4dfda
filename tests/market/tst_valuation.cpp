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
    // The per-row values are checked through the item dataset (tst_dminternaldata); here the group
    // and footer percent from the sums, and the money display.
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
