#include "support_grid.h"

#include "uGridColumns.h"
#include "uGridFilter.h"
#include "uGridModel.h"
#include "uGridTexts.h"

#include <QDate>
#include <QTest>

using namespace Qt::StringLiterals;
using Op = TGridFilterOperator;
using GroupOp = TGridFilterGroupOperator;

namespace {
TGridFilterNode cond(const QString& field, Op op, QVariantList values = {})
{
    return TGridFilterNode::condition(field, op, std::move(values));
}

TGridFilterNode group(GroupOp op, std::vector<TGridFilterNode> children)
{
    return TGridFilterNode::group(op, std::move(children));
}

const QStringList Fields{u"ID"_s, u"Metal"_s, u"Name"_s, u"Year"_s, u"Price"_s, u"Bought"_s};

QList<QVariantList> rows()
{
    return {
        {1, 0, u"Maple Leaf"_s, 2019, 1800.0, QDate(2020, 1, 5)},
        {2, 1, u"maple leaf"_s, 2020, 30.0, QDate(2021, 3, 1)},
        {3, 0, u"Eagle"_s, QVariant(), 1900.5, QVariant()},
        {4, 2, u""_s, 2001, QVariant(), QDate(2019, 12, 31)},
        {5, 1, u"Panda"_s, 2015, 25.0, QDate(2022, 6, 30)},
        {6, 5, QVariant(), 1990, 0.0, QDate(2020, 1, 5)},
    };
}
} // namespace

class TestGridFilter : public QObject
{
    Q_OBJECT
private slots:
    void matching_data();
    void matching();
    void textForm_data();
    void textForm();
    void badText_data();
    void badText();
    void sentence();
};

void TestGridFilter::matching_data()
{
    QTest::addColumn<TGridFilter>("filter");
    QTest::addColumn<QList<int>>("ids");

    const auto f = [](TGridFilterNode root) { return TGridFilter(std::move(root)); };
    QTest::newRow("empty filter shows all") << TGridFilter() << QList<int>{1, 2, 3, 4, 5, 6};
    QTest::newRow("equal number") << f(cond(u"Metal"_s, Op::Equal, {0})) << QList<int>{1, 3};
    QTest::newRow("equal text without case")
        << f(cond(u"Name"_s, Op::Equal, {u"MAPLE LEAF"_s})) << QList<int>{1, 2};
    QTest::newRow("not equal skips nulls")
        << f(cond(u"Year"_s, Op::NotEqual, {2019})) << QList<int>{2, 4, 5, 6};
    QTest::newRow("less than") << f(cond(u"Price"_s, Op::Less, {30.0})) << QList<int>{5, 6};
    QTest::newRow("greater or equal, number as text")
        << f(cond(u"Price"_s, Op::GreaterOrEqual, {u"1800"_s})) << QList<int>{1, 3};
    QTest::newRow("between, ends either way")
        << f(cond(u"Year"_s, Op::Between, {2019, 2001})) << QList<int>{1, 4, 5};
    QTest::newRow("not between skips nulls")
        << f(cond(u"Year"_s, Op::NotBetween, {2001, 2019})) << QList<int>{2, 6};
    QTest::newRow("dates") << f(cond(u"Bought"_s, Op::Less, {QDate(2020, 1, 5)})) << QList<int>{4};
    QTest::newRow("contains the shown text")
        << f(cond(u"Name"_s, Op::Contains, {u"LEAF"_s})) << QList<int>{1, 2};
    QTest::newRow("does not contain skips nulls")
        << f(cond(u"Name"_s, Op::NotContains, {u"leaf"_s})) << QList<int>{3, 4, 5};
    QTest::newRow("begins with") << f(cond(u"Name"_s, Op::BeginsWith, {u"pan"_s})) << QList<int>{5};
    QTest::newRow("ends with") << f(cond(u"Name"_s, Op::EndsWith, {u"GLE"_s})) << QList<int>{3};
    QTest::newRow("blank: null or empty") << f(cond(u"Name"_s, Op::IsBlank)) << QList<int>{4, 6};
    QTest::newRow("not blank") << f(cond(u"Price"_s, Op::IsNotBlank)) << QList<int>{1, 2, 3, 5, 6};
    QTest::newRow("any of") << f(cond(u"Metal"_s, Op::InList, {1, 5})) << QList<int>{2, 5, 6};
    QTest::newRow("none of skips nulls")
        << f(cond(u"Year"_s, Op::NotInList, {2019, 2020})) << QList<int>{4, 5, 6};
    QTest::newRow("a comparison with null is never true")
        << f(cond(u"Price"_s, Op::LessOrEqual, {100000.0})) << QList<int>{1, 2, 3, 5, 6};

    QTest::newRow("and") << f(group(GroupOp::And,
                                    {cond(u"Metal"_s, Op::Equal, {0}), cond(u"Year"_s, Op::IsNotBlank)}))
                         << QList<int>{1};
    QTest::newRow("or") << f(group(GroupOp::Or, {cond(u"Metal"_s, Op::Equal, {5}),
                                                 cond(u"Name"_s, Op::Contains, {u"pan"_s})}))
                        << QList<int>{5, 6};
    QTest::newRow("and of or") << f(group(GroupOp::And,
                                          {group(GroupOp::Or, {cond(u"Metal"_s, Op::Equal, {0}),
                                                               cond(u"Metal"_s, Op::Equal, {1})}),
                                           cond(u"Price"_s, Op::Greater, {100.0})}))
                               << QList<int>{1, 3};
    QTest::newRow("or of and") << f(group(GroupOp::Or,
                                          {group(GroupOp::And, {cond(u"Metal"_s, Op::Equal, {1}),
                                                                cond(u"Year"_s, Op::Less, {2016})}),
                                           cond(u"ID"_s, Op::Equal, {3})}))
                               << QList<int>{3, 5};
    QTest::newRow("not and") << f(group(GroupOp::NotAnd, {cond(u"Metal"_s, Op::Equal, {0}),
                                                          cond(u"Year"_s, Op::Equal, {2019})}))
                             << QList<int>{2, 3, 4, 5, 6};
    QTest::newRow("not or") << f(group(GroupOp::NotOr,
                                       {cond(u"Metal"_s, Op::Equal, {0}), cond(u"Metal"_s, Op::Equal, {1})}))
                            << QList<int>{4, 6};

    // A condition on a field the source no longer has is passed over wherever it stands.
    QTest::newRow("unknown field alone")
        << f(cond(u"Gone"_s, Op::Equal, {1})) << QList<int>{1, 2, 3, 4, 5, 6};
    QTest::newRow("unknown field in and")
        << f(group(GroupOp::And, {cond(u"Gone"_s, Op::Equal, {1}), cond(u"Metal"_s, Op::Equal, {1})}))
        << QList<int>{2, 5};
    QTest::newRow("unknown field in or")
        << f(group(GroupOp::Or, {cond(u"Gone"_s, Op::Equal, {1}), cond(u"Metal"_s, Op::Equal, {2})}))
        << QList<int>{4};
    QTest::newRow("condition still without its value")
        << f(group(GroupOp::And,
                   {cond(u"Year"_s, Op::Greater, {QVariant()}), cond(u"Metal"_s, Op::Equal, {5})}))
        << QList<int>{6};
    QTest::newRow("equal to nothing means blank")
        << f(cond(u"Year"_s, Op::Equal, {QVariant()})) << QList<int>{3};
}

void TestGridFilter::matching()
{
    QFETCH(TGridFilter, filter);
    QFETCH(QList<int>, ids);
    TTestTable table(Fields, rows());
    TGridSource source;
    source.setModel(&table);
    TGridColumns columns;
    for (const QString& field : Fields)
        columns.add(field, field);
    TGridModel model(&source, &columns);
    model.setFilter(filter);
    QList<int> got;
    for (int p = 0; p < model.visibleRowCount(); ++p)
        got.append(table.value(model.sourceRowAt(p), u"ID"_s).toInt());
    QCOMPARE(got, ids);

    // The filter follows the rows: a changed row is judged again.
    if (!filter.isEmpty() && !ids.isEmpty()) {
        const int row = table.rowOfKey(ids.first());
        table.removeRowsAt(row);
        QCOMPARE(model.visibleRowCount(), ids.size() - 1);
    }
}

void TestGridFilter::textForm_data()
{
    QTest::addColumn<TGridFilter>("filter");
    QTest::addColumn<QString>("text");

    const auto f = [](TGridFilterNode root) { return TGridFilter(std::move(root)); };
    QTest::newRow("empty") << TGridFilter() << u""_s;
    QTest::newRow("one condition") << f(cond(u"Metal"_s, Op::Equal, {0})) << u"[Metal] = 0"_s;
    QTest::newRow("quotes and brackets")
        << f(cond(u"Odd]Name"_s, Op::Contains, {u"it's"_s})) << u"[Odd]]Name] CONTAINS 'it''s'"_s;
    QTest::newRow("every operator")
        << f(group(GroupOp::And,
                   {cond(u"A"_s, Op::NotEqual, {1.5}), cond(u"A"_s, Op::Less, {-2}),
                    cond(u"A"_s, Op::LessOrEqual, {3}), cond(u"A"_s, Op::Greater, {4}),
                    cond(u"A"_s, Op::GreaterOrEqual, {1e20}), cond(u"B"_s, Op::Between, {1, 2}),
                    cond(u"B"_s, Op::NotBetween, {QDate(2020, 2, 29), QDate(2021, 1, 1)}),
                    cond(u"C"_s, Op::NotContains, {u"x"_s}), cond(u"C"_s, Op::BeginsWith, {u"y"_s}),
                    cond(u"C"_s, Op::EndsWith, {u"z"_s}), cond(u"C"_s, Op::IsBlank),
                    cond(u"C"_s, Op::IsNotBlank), cond(u"D"_s, Op::InList, {1, u"two"_s, true}),
                    cond(u"D"_s, Op::NotInList, {false})}))
        << u"[A] <> 1.5 AND [A] < -2 AND [A] <= 3 AND [A] > 4 AND [A] >= 1e+20 AND "
           "[B] BETWEEN 1 AND 2 AND [B] NOT BETWEEN #2020-02-29# AND #2021-01-01# AND "
           "[C] NOT CONTAINS 'x' AND [C] BEGINS WITH 'y' AND [C] ENDS WITH 'z' AND "
           "[C] IS BLANK AND [C] IS NOT BLANK AND [D] IN (1, 'two', TRUE) AND "
           "[D] NOT IN (FALSE)"_s;
    QTest::newRow("nesting")
        << f(group(GroupOp::Or,
                   {group(GroupOp::And, {cond(u"A"_s, Op::Equal, {1}), cond(u"B"_s, Op::Equal, {2})}),
                    group(GroupOp::NotOr, {cond(u"C"_s, Op::Equal, {3}), cond(u"D"_s, Op::Equal, {4})}),
                    group(GroupOp::And, {cond(u"E"_s, Op::Equal, {5})})}))
        << u"([A] = 1 AND [B] = 2) OR NOT ([C] = 3 OR [D] = 4) OR ([E] = 5)"_s;
    QTest::newRow("negated root") << f(group(GroupOp::NotAnd,
                                             {cond(u"A"_s, Op::Equal, {1}), cond(u"B"_s, Op::Equal, {2})}))
                                  << u"NOT ([A] = 1 AND [B] = 2)"_s;
}

// The text form reads back to the same tree.
void TestGridFilter::textForm()
{
    QFETCH(TGridFilter, filter);
    QFETCH(QString, text);
    QCOMPARE(filter.toText(), text);
    QString error;
    const TGridFilter back = TGridFilter::fromText(text, &error);
    QCOMPARE(error, QString());
    QCOMPARE(back.toText(), text);
    QVERIFY(back == filter);
}

void TestGridFilter::badText_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("no operator") << u"[A] 1"_s;
    QTest::newRow("open bracket") << u"[A = 1"_s;
    QTest::newRow("open text") << u"[A] = 'x"_s;
    QTest::newRow("open group") << u"([A] = 1"_s;
    QTest::newRow("bad date") << u"[A] = #2020-13-01#"_s;
    QTest::newRow("field without brackets") << u"A = 1"_s;
    QTest::newRow("trailing text") << u"[A] = 1 garbage"_s;
    QTest::newRow("not without group") << u"NOT [A] = 1"_s;
}

void TestGridFilter::badText()
{
    QFETCH(QString, text);
    QString error;
    const TGridFilter filter = TGridFilter::fromText(text, &error);
    QVERIFY(filter.isEmpty());
    QVERIFY2(error.contains(u"position"_s), qPrintable(error));
}

// The sentence users read: captions, shown values, operator names of the texts in use.
void TestGridFilter::sentence()
{
    const TGridFilter filter(
        group(GroupOp::And, {cond(u"Metal"_s, Op::Equal, {0}),
                             group(GroupOp::Or, {cond(u"Year"_s, Op::Between, {2000, 2010}),
                                                 cond(u"Name"_s, Op::Contains, {u"leaf"_s})}),
                             group(GroupOp::NotAnd, {cond(u"Price"_s, Op::IsBlank)})}));
    const auto caption = [](const QString& field) { return field == u"Metal"_s ? u"Metal type"_s : field; };
    const auto value = [](const QString& field, const QVariant& v) {
        return field == u"Metal"_s ? (v.toInt() == 0 ? u"Gold"_s : u"?"_s) : v.toString();
    };
    QCOMPARE(filter.displayText(caption, value),
             u"Metal type equals Gold and (Year is between 2000 and 2010 or Name contains \"leaf\") and "
             "not (Price is blank)"_s);

    TGridTexts texts = GridTexts();
    const TGridTexts saved = texts;
    texts.OpEqual = u"ist gleich"_s;
    texts.GroupAnd = u"und"_s;
    SetGridTexts(texts);
    QCOMPARE(TGridFilter(group(GroupOp::And, {cond(u"A"_s, Op::Equal, {1}), cond(u"B"_s, Op::Equal, {2})}))
                 .displayText({}, {}),
             u"A ist gleich 1 und B ist gleich 2"_s);
    SetGridTexts(saved);
}

QTEST_GUILESS_MAIN(TestGridFilter)
#include "tst_gridfilter.moc"
