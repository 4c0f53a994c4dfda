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
        AddRow("copper", "XCU", 5);
        AddRow("lower case", "xau", -1);
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

    void firstEntryWins()
    {
        TSpotPrices list;
        for (int metal = -1; metal <= 6; ++metal)
            QVERIFY(list.SpotPriceOf(metal) == 0.0 && !list.FindSpot(metal));
        list.Add({0, 1900.5, "USD", "", 1, ""});
        list.Add({1, 24.0, "USD", "", -1, ""});
        list.Add({0, 2000.0, "USD", "", 1, ""});
        QCOMPARE(list.SpotPriceOf(0), 1900.5);
        QCOMPARE(list.SpotPriceOf(1), 24.0);
        QCOMPARE(list.SpotPriceOf(2), 0.0);
    }

    void reply_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("raises");
        QTest::addColumn<QList<int>>("metals");
        QTest::addColumn<QList<double>>("prices");
        const QString gold = "{\"BaseCurrency\":\"XAU\",\"Price\":2000.5,\"DateC\":\"2026-11-20 "
                             "10:00\",\"ChangeAbs\":-3.5,\"ChangePerc\":\"-0.17\"}";
        const QString silver =
            "{\"Price\":\" 24.25 "
            "\",\"BaseCurrency\":\"XAG\",\"DateC\":\"d\",\"ChangeAbs\":0,\"ChangePerc\":\"0\"}";
        const auto price = [](const QString& value) {
            return "[{\"BaseCurrency\":\"XAG\",\"Price\":24},{\"BaseCurrency\":\"XAU\",\"Price\":" + value +
                   "}]";
        };
        AddRow("gold and silver", "[" + gold + "," + silver + "]", false, QList<int>{0, 1},
               QList<double>{2000.5, 24.25});
        AddRow("unknown code skipped", "[{\"BaseCurrency\":\"EUR\",\"Price\":1}]", false, QList<int>{},
               QList<double>{});
        AddRow("root scalar", "42", false, QList<int>{}, QList<double>{});
        AddRow("empty text", "", false, QList<int>{}, QList<double>{});
        AddRow("missing and null prices read 0", price("null"), false, QList<int>{1, 0},
               QList<double>{24, 0});
        AddRow("price 0", price("0"), false, QList<int>{1, 0}, QList<double>{24, 0});
        AddRow("blanks and line breaks", " \r\n\t\n", true, QList<int>{}, QList<double>{});
        AddRow("not JSON", "<html>oops</html>", true, QList<int>{}, QList<double>{});
        AddRow("truncated", "[" + gold, true, QList<int>{}, QList<double>{});
        AddRow("two roots", "[],[]", true, QList<int>{}, QList<double>{});
        AddRow("price \"nan\"", price("\"nan\""), true, QList<int>{}, QList<double>{});
        AddRow("price \"inf\"", price("\"inf\""), true, QList<int>{}, QList<double>{});
        AddRow("price beyond a double", price("1e999"), true, QList<int>{}, QList<double>{});
        AddRow("negative price", price("-0.01"), true, QList<int>{}, QList<double>{});
        AddRow("change \"-inf\"", "[{\"BaseCurrency\":\"XAU\",\"Price\":1,\"ChangeAbs\":\"-inf\"}]", true,
               QList<int>{}, QList<double>{});
    }
    void reply()
    {
        QFETCH(QString, text);
        QFETCH(bool, raises);
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
        QCOMPARE(loadedCalls, raises ? 0 : 1);
        QCOMPARE(list.Count(), metals.size());
        for (int i = 0; i < list.Count(); ++i) {
            QCOMPARE(list.Item(i).Metal, metals.at(i));
            QCOMPARE(list.Item(i).Price, prices.at(i));
            QCOMPARE(list.Item(i).Currency, QString("EUR"));
        }
    }

    // DateC and ChangePerc are kept as the text received, also when they come as numbers.
    void textFieldsKeptAsReceived_data()
    {
        QTest::addColumn<QString>("dateC");
        QTest::addColumn<QString>("changePerc");
        AddRow("texts", "\"2026-11-20 10:00\"", "\"-0.17\"");
        AddRow("numbers", "20261120.100000", "0.53");
        AddRow("exponent and sign", "-1E+3", "-0.000");
        AddRow("booleans", "true", "false");
    }
    void textFieldsKeptAsReceived()
    {
        QFETCH(QString, dateC);
        QFETCH(QString, changePerc);
        TSpotPrices list;
        list.LoadFromText(
            QString("[{\"BaseCurrency\":\"XAU\",\"Price\":2000.5,\"DateC\":%1,\"ChangeAbs\":-3.5,"
                    "\"ChangePerc\":%2,\"Extra\":[1.25,{\"x\":\"\\\"3\\\"\"}]}]")
                .arg(dateC, changePerc),
            "USD");
        QCOMPARE(list.Count(), 1);
        QCOMPARE(list.Item(0).Price, 2000.5);
        QCOMPARE(list.Item(0).ChangeAbs, -3.5);
        QCOMPARE(list.Item(0).DateC, QString(dateC).remove('"'));
        QCOMPARE(list.Item(0).ChangePerc, QString(changePerc).remove('"'));
    }
};

QTEST_APPLESS_MAIN(TestSpot)
#include "tst_spot.moc"
