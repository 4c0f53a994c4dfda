// Query: statements composed as text, bound text values, forward reading, type hints; and the
// lexical rewrites of statement texts (hints, "*" without blob columns).

#include "support_dbtest.h"
#include "uDBError.h"
#include "uDBQuery.h"
#include "uDBSqlText.h"

#include <QTemporaryDir>
#include <QtTest>

class TestDBQuery : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_conn = DBTest::createCollection(m_dir.filePath(QStringLiteral("q.db")));
        DBTest::insertCoin(*m_conn, QStringLiteral("Maple"), 1, 31.1035, 10, 30.0);
        DBTest::insertCoin(*m_conn, QStringLiteral("Eagle"), 0, 31.1035, 2, 2000.0);
        DBTest::insertCoin(*m_conn, QStringLiteral("Kangaroo"), 1, 31.1035, 5, QVariant());
        DBTest::insertCoin(*m_conn, QStringLiteral("O'Brien's \"bar\""), 1, 1000.0, 1, 900.0, 3);
    }

    void forwardReadingWithHints()
    {
        TDBQuery q(m_conn.get());
        q.setSQL(
            QStringLiteral("SELECT Metal, SUM(WeightG * Qty) AS TotalWeightG::REAL, "
                           "SUM(Price * Qty) AS TotalPaid::REAL, COUNT(*) AS N::BIGINT, "
                           "MAX(Name) AS LastName::VARCHAR FROM tblCoins GROUP BY Metal ORDER BY Metal"));
        q.open();
        QVERIFY(q.active());
        QCOMPARE(q.fieldCount(), 5);
        QCOMPARE(q.field(1).fieldName(), QStringLiteral("TotalWeightG"));
        QCOMPARE(q.fieldByName(QStringLiteral("TotalWeightG")).dataType(), TFieldType::Float);
        QCOMPARE(q.fieldByName(QStringLiteral("N")).dataType(), TFieldType::LargeInt);
        QCOMPARE(q.fieldByName(QStringLiteral("LastName")).dataType(), TFieldType::String);
        QCOMPARE(q.fieldByName(QStringLiteral("Metal")).dataType(), TFieldType::Integer);

        QVERIFY(!q.eof());
        QCOMPARE(q.fieldByName(QStringLiteral("Metal")).asInteger(), 0);
        QCOMPARE(q.fieldByName(QStringLiteral("TotalWeightG")).asFloat(), 62.207);
        QCOMPARE(q.fieldByName(QStringLiteral("TotalPaid")).value(), QVariant(4000.0));
        q.next();
        QVERIFY(!q.eof());
        QCOMPARE(q.fieldByName(QStringLiteral("Metal")).asInteger(), 1);
        QCOMPARE(q.fieldByName(QStringLiteral("N")).asLargeInt(), qint64(3));
        // SUM skips NULL: 30*10 + 900*1.
        QCOMPARE(q.fieldByName(QStringLiteral("TotalPaid")).asFloat(), 1200.0);
        q.next();
        QVERIFY(q.eof());
        QVERIFY(q.fieldByName(QStringLiteral("Metal")).isNull());
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, q.fieldByName(QStringLiteral("Nope")));
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, q.fieldByName(QStringLiteral("Metal")).setAsInteger(3));
    }

    void quotedHintAlias()
    {
        TDBQuery q(m_conn.get());
        q.setSQL(QStringLiteral(
            "SELECT SUM(WeightG) AS \"TotalWeightG::REAL\", 7 AS [Seven::VARCHAR] FROM tblCoins"));
        q.open();
        QCOMPARE(q.fieldByName(QStringLiteral("TotalWeightG")).dataType(), TFieldType::Float);
        QCOMPARE(q.fieldByName(QStringLiteral("Seven")).value(), QVariant(QStringLiteral("7")));
    }

    void boundTextValues_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("count");
        QTest::newRow("plain") << "Maple" << 1;
        QTest::newRow("quotes") << "O'Brien's \"bar\"" << 1;
        QTest::newRow("injection") << "x' OR '1'='1" << 0;
        QTest::newRow("hint-like text") << "Name::REAL" << 0;
    }
    void boundTextValues()
    {
        QFETCH(QString, name);
        QFETCH(int, count);
        TDBQuery q(m_conn.get());
        q.setSQL(QStringLiteral("SELECT COUNT(*) AS N FROM tblCoins WHERE Name = :Name"));
        q.bindValue(QStringLiteral(":Name"), name);
        q.open();
        QCOMPARE(q.field(0).asInteger(), count);
        q.close();
        q.setSQL(QStringLiteral("SELECT COUNT(*) AS N FROM tblCoins WHERE Name = ?"));
        q.clearBindings();
        q.addBindValue(name);
        q.open();
        QCOMPARE(q.field(0).asInteger(), count);
    }

    void execSQLChangesAndMultipleStatements()
    {
        TDBQuery q(m_conn.get());
        q.setSQL(QStringLiteral("CREATE TABLE tmpT (A INTEGER, B TEXT); INSERT INTO tmpT VALUES (1, ?); "
                                "INSERT INTO tmpT VALUES (2, ?);"));
        q.addBindValue(QStringLiteral("one"));
        q.addBindValue(QStringLiteral("two"));
        q.execSQL();
        q.setSQL(QStringLiteral("UPDATE tmpT SET B = B || '!' WHERE A IN (1, 2)"));
        q.clearBindings();
        QCOMPARE(q.execSQL(), 2);
        QCOMPARE(m_conn->selectValue(QStringLiteral("SELECT group_concat(B, ',') FROM tmpT")).toString(),
                 QStringLiteral("one!,two!"));
        q.setSQL(QStringLiteral("DROP TABLE tmpT"));
        q.execSQL();
    }

    void openOnNonSelectFails()
    {
        TDBQuery q(m_conn.get());
        q.setSQL(QStringLiteral("SELEC Name FROM tblCoins"));
        try {
            q.open();
            QFAIL("no error");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("near \"SELEC\": syntax error"));
        }
        QVERIFY(!q.active());
    }

    void finishedQueryHoldsNoLock()
    {
        // A query read to its end must not keep a writer on another connection waiting.
        auto other = DBTest::openConnection(m_dir.filePath(QStringLiteral("q.db")));
        TDBQuery q(m_conn.get());
        q.setSQL(QStringLiteral("SELECT Name FROM tblCoins"));
        q.open();
        while (!q.eof())
            q.next();
        other->close();
        other->setParam(QStringLiteral("BusyTimeout"), QStringLiteral("0"));
        other->open();
        other->execSQL(QStringLiteral("UPDATE tblCoins SET Qty = Qty WHERE ID = 1"));
    }

    // --- Statement text rewriting ------------------------------------------------------------

    void typeHintQuoting_data()
    {
        QTest::addColumn<QString>("in");
        QTest::addColumn<QString>("out");
        QTest::newRow("alias") << "SELECT Price * Qty AS TotalPrice::REAL FROM t"
                               << "SELECT Price * Qty AS \"TotalPrice::REAL\" FROM t";
        QTest::newRow("in string untouched") << "SELECT 'a::b' AS X::VARCHAR"
                                             << "SELECT 'a::b' AS \"X::VARCHAR\"";
        QTest::newRow("already quoted") << "SELECT 1 AS \"X::REAL\""
                                        << "SELECT 1 AS \"X::REAL\"";
        QTest::newRow("named parameter kept") << "SELECT :p AS V::BIGINT"
                                              << "SELECT :p AS \"V::BIGINT\"";
    }
    void typeHintQuoting()
    {
        QFETCH(QString, in);
        QFETCH(QString, out);
        QCOMPARE(TDBSqlText::quoteTypeHints(in), out);
    }

    void blobColumnsLeftOut_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("expected");
        QTest::newRow("star") << "SELECT * FROM tblMints"
                              << "SELECT \"ID\", \"Name\", NULL AS \"Logo\", \"Country\" FROM tblMints";
        QTest::newRow("star and expression, alias")
            << "SELECT *, ID * 2 AS Twice FROM tblMints M WHERE ID > 1"
            << "SELECT \"ID\", \"Name\", NULL AS \"Logo\", \"Country\", ID * 2 AS Twice FROM tblMints M "
               "WHERE ID > 1";
        QTest::newRow("qualified star in a join") << "SELECT R.* FROM tblMints R JOIN (SELECT Name FROM "
                                                     "tblMints GROUP BY Name) R2 ON R.Name = R2.Name"
                                                  << "SELECT R.\"ID\", R.\"Name\", NULL AS \"Logo\", "
                                                     "R.\"Country\" FROM tblMints R JOIN (SELECT Name FROM "
                                                     "tblMints GROUP BY Name) R2 ON R.Name = R2.Name";
        QTest::newRow("bare star over a join stays") << "SELECT * FROM tblMints A, tblOther B"
                                                     << "SELECT * FROM tblMints A, tblOther B";
        QTest::newRow("named blob column") << "SELECT ID, Logo FROM tblMints"
                                           << "SELECT ID, NULL AS \"Logo\" FROM tblMints";
        QTest::newRow("star of another table stays")
            << "SELECT X.* FROM tblOther X JOIN tblMints M ON M.ID = X.ID"
            << "SELECT X.* FROM tblOther X JOIN tblMints M ON M.ID = X.ID";
        QTest::newRow("not a select") << "UPDATE tblMints SET Logo = NULL"
                                      << "UPDATE tblMints SET Logo = NULL";
    }
    void blobColumnsLeftOut()
    {
        QFETCH(QString, sql);
        QFETCH(QString, expected);
        QList<TDBColumnInfo> columns;
        for (const char* name : {"ID", "Name", "Logo", "Country"}) {
            TDBColumnInfo c;
            c.name = QString::fromLatin1(name);
            columns.append(c);
        }
        QCOMPARE(
            TDBSqlText::excludeColumns(sql, QStringLiteral("tblMints"), columns, {QStringLiteral("logo")}),
            expected);
    }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<TDBConnection> m_conn;
};

QTEST_GUILESS_MAIN(TestDBQuery)
#include "tst_dbquery.moc"
