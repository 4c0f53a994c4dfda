// The filter language on hostile input: long chains and deep nesting parse without exhausting the
// stack, too deep nesting is refused with a clear error, and three-valued logic holds in chains.

#include "support_datarow.h"
#include "uDBError.h"
#include "uDBFilter.h"

#include <QtTest>

namespace {

// Field 0 is A, field 1 is B (NULL when the row says so).
class TRow : public TDBFilterRecord
{
public:
    TRow(QVariant a, QVariant b) : m_a(std::move(a)), m_b(std::move(b)) {}
    QVariant filterValue(int field) const override { return field == 0 ? m_a : m_b; }

private:
    QVariant m_a;
    QVariant m_b;
};

QString Repeat(const QString& piece, int count, const QString& tail = {})
{
    return piece.repeated(count) + tail;
}

} // namespace

class TestDBFilter : public QObject
{
    Q_OBJECT

private slots:
    void hostileShapes_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("error"); // empty: parses; else a part of the message
        QTest::addColumn<bool>("matchesA1");
        const QString nested200 = Repeat("(", 200) + "A = 1" + Repeat(")", 200);
        AddRow("200 levels of parentheses", nested200, QString(), true);
        AddRow("201 levels refused", "(" + nested200 + ")",
               QString("position 201: parentheses nested deeper "
                       "than 200 levels"),
               false);
        AddRow("20,000 levels refused", Repeat("(", 20000, "A = 1") + Repeat(")", 20000),
               QString("nested deeper than 200"), false);
        AddRow("100,000 NOTs (even)", Repeat("NOT ", 100000, "A = 1"), QString(), true);
        AddRow("99,999 NOTs (odd)", Repeat("NOT ", 99999, "A = 1"), QString(), false);
        AddRow("100,000 ANDs", Repeat("A = 1 AND ", 100000, "B IS NULL"), QString(), true);
        AddRow("100,000 ORs, true at the end", Repeat("A = 2 OR ", 100000, "A = 1"), QString(), true);
        AddRow("AND chain of NOT groups", Repeat("NOT (A = 2) AND ", 50000, "A = 1"), QString(), true);
        AddRow("long text in an error is cut", Repeat("A = 1 AND ", 100000), QString("...\""), false);
    }
    void hostileShapes()
    {
        QFETCH(QString, filter);
        QFETCH(QString, error);
        QFETCH(bool, matchesA1);
        std::unique_ptr<TDBFilter> parsed;
        try {
            parsed = std::make_unique<TDBFilter>(filter);
        } catch (const EDatabaseError& e) {
            QVERIFY2(!error.isEmpty(), qPrintable(e.message().left(200)));
            QVERIFY2(e.message().contains(error), qPrintable(e.message().left(300)));
            QVERIFY(e.message().size() < 400);
            return;
        }
        QVERIFY2(error.isEmpty(), "the filter was accepted");
        QCOMPARE(parsed->fieldNames(), QStringList({"A", "B"}).mid(0, filter.contains('B') ? 2 : 1));
        parsed->bind([](const QString& name) { return name == "A" ? 0 : 1; });
        QCOMPARE(parsed->matches(TRow(1, QVariant())), matchesA1);
    }

    // Chains of three or more keep SQL's rules: false (AND) or true (OR) wins over unknown.
    void threeValuedChains_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<bool>("passes");
        AddRow("AND: unknown, true, true", "B = 1 AND A = 1 AND A > 0", false);
        AddRow("NOT of an AND with unknown and false", "NOT (B = 1 AND A = 1 AND A = 2)", true);
        AddRow("NOT of an AND with unknown and true", "NOT (B = 1 AND A = 1 AND A > 0)", false);
        AddRow("OR: unknown, false, true", "B = 1 OR A = 2 OR A = 1", true);
        AddRow("NOT of an OR with unknown and false", "NOT (B = 1 OR A = 2 OR A = 3)", false);
        AddRow("double NOT takes the truth of a number", "NOT NOT A", true);
    }
    void threeValuedChains()
    {
        QFETCH(QString, filter);
        QFETCH(bool, passes);
        TDBFilter parsed(filter);
        parsed.bind([](const QString& name) { return name == "A" ? 0 : 1; });
        QCOMPARE(parsed.matches(TRow(1, QVariant())), passes);
    }
};

QTEST_GUILESS_MAIN(TestDBFilter)
#include "tst_dbfilter.moc"
