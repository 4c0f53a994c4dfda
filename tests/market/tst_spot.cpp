#include "support_datarow.h"
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
        AddRow("gold", "XAU", 0);
        AddRow("silver", "XAG", 1);
        AddRow("platinum", "XPT", 2);
        AddRow("palladium", "XPD", 3);
        AddRow("rhodium", "XRH", 4);
        AddRow("copper", "XCU", 5);
        AddRow("lower case", "xau", -1);
        AddRow("blank", "", -1);
        AddRow("padded", " XAU", -1);
        AddRow("unknown", "XBT", -1);
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

    void reply_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("raises");
        QTest::addColumn<bool>("loaded");
        QTest::addColumn<QList<int>>("metals");
        QTest::addColumn<QList<double>>("prices");
        const QString gold =
            R"({"BaseCurrency":"XAU","Price":2000.5,"DateC":"2026-11-20 10:00","ChangeAbs":-3.5,"ChangePerc":"-0.17"})";
        const QString silver =
            R"({"Price":"24.25","BaseCurrency":"XAG","DateC":"d","ChangeAbs":0,"ChangePerc":"0"})";
        AddRow("gold and silver", "[" + gold + "," + silver + "]", false, true, QList<int>{0, 1},
               QList<double>{2000.5, 24.25});
        AddRow("unknown code skipped", R"([{"BaseCurrency":"EUR","Price":1}])", false, true, QList<int>{},
               QList<double>{});
        AddRow("root scalar", "42", false, true, QList<int>{}, QList<double>{});
        AddRow("empty text", "", false, true, QList<int>{}, QList<double>{});
        AddRow("empty array", "[]", false, true, QList<int>{}, QList<double>{});
        AddRow("not JSON", "<html>oops</html>", true, false, QList<int>{}, QList<double>{});
        AddRow("truncated", "[" + gold, true, false, QList<int>{}, QList<double>{});
        AddRow("two roots", "[],[]", true, false, QList<int>{}, QList<double>{});
    }
    void reply()
    {
        QFETCH(QString, text);
        QFETCH(bool, raises);
        QFETCH(bool, loaded);
        QFETCH(QList<int>, metals);
        QFETCH(QList<double>, prices);

        TSpotPrices list;
        list.Add({3, 1000, "USD", "", 1, ""}); // an earlier reply: always cleared first
        int loadedCalls = 0;
        list.OnLoaded = [&](TSpotPrices* sender) {
            QCOMPARE(sender, &list);
            ++loadedCalls;
        };
        bool raised = false;
        try {
            list.LoadFromText(text, "EUR");
        } catch (const std::exception&) {
            raised = true;
        }
        QCOMPARE(raised, raises);
        QCOMPARE(loadedCalls, loaded ? 1 : 0);
        QCOMPARE(list.Count(), metals.size());
        for (int i = 0; i < list.Count(); ++i) {
            QCOMPARE(list.Item(i).Metal, metals.at(i));
            QCOMPARE(list.Item(i).Price, prices.at(i));
            QCOMPARE(list.Item(i).Currency, QString("EUR"));
        }
        QCOMPARE(list.SpotPriceOf(3), 0.0);
    }

    void replyFieldsKeptAsText()
    {
        TSpotPrices list;
        list.LoadFromText(
            R"([{"BaseCurrency":"XAU","Price":2000.5,"DateC":"2026-11-20 10:00","ChangeAbs":-3.5,"ChangePerc":"-0.17","Extra":1}])",
            "USD");
        QCOMPARE(list.Count(), 1);
        QCOMPARE(list.Item(0).DateC, QString("2026-11-20 10:00"));
        QCOMPARE(list.Item(0).ChangeAbs, -3.5);
        QCOMPARE(list.Item(0).ChangePerc, QString("-0.17"));
    }
};

QTEST_APPLESS_MAIN(TestSpot)
#include "tst_spot.moc"
