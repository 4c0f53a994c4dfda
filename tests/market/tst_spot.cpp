#include "uSpot.h"

#include <QTest>

class TestSpot : public QObject
{
    Q_OBJECT

private slots:
    void codeToIndex_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<int>("index");
        QTest::newRow("gold") << "XAU" << 0;
        QTest::newRow("silver") << "XAG" << 1;
        QTest::newRow("platinum") << "XPT" << 2;
        QTest::newRow("palladium") << "XPD" << 3;
        QTest::newRow("rhodium") << "XRH" << 4;
        QTest::newRow("copper") << "XCU" << 5;
        QTest::newRow("lower case") << "xau" << -1;
        QTest::newRow("blank") << "" << -1;
        QTest::newRow("padded") << " XAU" << -1;
        QTest::newRow("unknown") << "XBT" << -1;
    }
    void codeToIndex()
    {
        QFETCH(QString, code);
        QFETCH(int, index);
        QCOMPARE(MetalCodeToIndex(code), index);
        if (index >= 0)
            QCOMPARE(MetalIndexToCode(index), code);
    }

    void emptyListReadsZero()
    {
        TSpotPrices list;
        for (int metal = -1; metal <= 6; ++metal) {
            QCOMPARE(list.SpotPriceOf(metal), 0.0);
            QVERIFY(!list.FindSpot(metal));
        }
    }

    void firstEntryWins()
    {
        TSpotPrices list;
        list.Add({0, 1900.5, "USD", "", 1, ""});
        list.Add({1, 24.0, "USD", "", -1, ""});
        list.Add({0, 2000.0, "USD", "", 1, ""});
        QCOMPARE(list.SpotPriceOf(0), 1900.5);
        QCOMPARE(list.SpotPriceOf(1), 24.0);
        QCOMPARE(list.SpotPriceOf(2), 0.0);
        list.Clear();
        QCOMPARE(list.SpotPriceOf(0), 0.0);
    }
};

QTEST_APPLESS_MAIN(TestSpot)
#include "tst_spot.moc"
