// Query: statements composed as text, bound text values, forward reading, type hints; and the
// lexical rewrites of statement texts (hints, "*" without blob columns).

#include "support_datarow.h"
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
        m_conn = DBTest::createCollection(m_dir.filePath("q.db"));
        DBTest::insertCoin(*m_conn, "Maple", 1, 31.1035, 10, 30.0);
        DBTest::insertCoin(*m_conn, "Eagle", 0, 31.1035, 2, 2000.0);
        DBTest::insertCoin(*m_conn, "Kangaroo", 1, 31.1035, 5, QVariant());
        DBTest::insertCoin(*m_conn, "O'Brien's \"bar\"", 1, 1000.0, 1, 900.0, 3);
    }

    void forwardReadingWithHints()
    {
        TDBQuery q(m_conn.get());
        q.setSQL("SELECT Metal, SUM(WeightG * Qty) AS TotalWeightG::REAL, "
                 "SUM(Price * Qty) AS TotalPaid::REAL, COUNT(*) AS N::BIGINT, "
                 "MAX(Name) AS LastName::VARCHAR FROM tblCoins GROUP BY Metal ORDER BY Metal");
        q.open();
        QVERIFY(q.active());
        QCOMPARE(q.fieldCount(), 5);
        QCOMPARE(q.field(1).fieldName(), "TotalWeightG");
        QCOMPARE(q.fieldByName("TotalWeightG").dataType(), TFieldType::Float);
        QCOMPARE(q.fieldByName("N").dataType(), TFieldType::LargeInt);
        QCOMPARE(q.fieldByName("LastName").dataType(), TFieldType::String);
        QCOMPARE(q.fieldByName("Metal").dataType(), TFieldType::Integer);

        QVERIFY(!q.eof());
        QCOMPARE(q.fieldByName("Metal").asInteger(), 0);
        QCOMPARE(q.fieldByName("TotalWeightG").asFloat(), 62.207);
        QCOMPARE(q.fieldByName("TotalPaid").value(), QVariant(4000.0));
        q.next();
        QVERIFY(!q.eof());
        QCOMPARE(q.fieldByName("Metal").asInteger(), 1);
        QCOMPARE(q.fieldByName("N").asLargeInt(), qint64(3));
        // SUM skips NULL: 30*10 + 900*1.
        QCOMPARE(q.fieldByName("TotalPaid").asFloat(), 1200.0);
        q.next();
        QVERIFY(q.eof());
        QVERIFY(q.fieldByName("Metal").isNull());
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, q.fieldByName("Nope"));
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, q.fieldByName("Metal").setAsInteger(3));
    }

    void quotedHintAlias()
    {
        TDBQuery q(m_conn.get());
        q.setSQL("SELECT SUM(WeightG) AS \"TotalWeightG::REAL\", 7 AS [Seven::VARCHAR] FROM tblCoins");
        q.open();
        QCOMPARE(q.fieldByName("TotalWeightG").dataType(), TFieldType::Float);
        QCOMPARE(q.fieldByName("Seven").value(), QVariant("7"));
    }

    void boundTextValues_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("count");
        AddRow("plain", "Maple", 1);
        AddRow("quotes", "O'Brien's \"bar\"", 1);
        AddRow("injection", "x' OR '1'='1", 0);
        AddRow("hint-like text", "Name::REAL", 0);
    }
    void boundTextValues()
    {
        QFETCH(QString, name);
        QFETCH(int, count);
        TDBQuery q(m_conn.get());
        q.setSQL("SELECT COUNT(*) AS N FROM tblCoins WHERE Name = :Name");
        q.bindValue(":Name", name);
        q.open();
        QCOMPARE(q.field(0).asInteger(), count);
        q.close();
        q.setSQL("SELECT COUNT(*) AS N FROM tblCoins WHERE Name = ?");
        q.clearBindings();
        q.addBindValue(name);
        q.open();
        QCOMPARE(q.field(0).asInteger(), count);
    }

    void execSQLChangesAndMultipleStatements()
    {
        TDBQuery q(m_conn.get());
        q.setSQL("CREATE TABLE tmpT (A INTEGER, B TEXT); INSERT INTO tmpT VALUES (1, ?); "
                 "INSERT INTO tmpT VALUES (2, ?);");
        q.addBindValue("one");
        q.addBindValue("two");
        q.execSQL();
        q.setSQL("UPDATE tmpT SET B = B || '!' WHERE A IN (1, 2)");
        q.clearBindings();
        QCOMPARE(q.execSQL(), 2);
        QCOMPARE(m_conn->selectValue("SELECT group_concat(B, ',') FROM tmpT").toString(), "one!,two!");
        q.setSQL("DROP TABLE tmpT");
        q.execSQL();
    }

    void openOnNonSelectFails()
    {
        TDBQuery q(m_conn.get());
        q.setSQL("SELEC Name FROM tblCoins");
        try {
            q.open();
            QFAIL("no error");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), "near \"SELEC\": syntax error");
        }
        QVERIFY(!q.active());
    }

    void finishedQueryHoldsNoLock()
    {
        // A query read to its end must not keep a writer on another connection waiting.
        auto other = DBTest::openConnection(m_dir.filePath("q.db"));
        TDBQuery q(m_conn.get());
        q.setSQL("SELECT Name FROM tblCoins");
        q.open();
        while (!q.eof())
            q.next();
        other->close();
        other->setParam("BusyTimeout", "0");
        other->open();
        other->execSQL("UPDATE tblCoins SET Qty = Qty WHERE ID = 1");
    }

    // --- Statement text rewriting ------------------------------------------------------------

    void typeHintQuoting_data()
    {
        QTest::addColumn<QString>("in");
        QTest::addColumn<QString>("out");
        AddRow("alias", "SELECT Price * Qty AS TotalPrice::REAL FROM t",
               "SELECT Price * Qty AS \"TotalPrice::REAL\" FROM t");
        AddRow("in string untouched", "SELECT 'a::b' AS X::VARCHAR", "SELECT 'a::b' AS \"X::VARCHAR\"");
        AddRow("already quoted", "SELECT 1 AS \"X::REAL\"", "SELECT 1 AS \"X::REAL\"");
        AddRow("named parameter kept", "SELECT :p AS V::BIGINT", "SELECT :p AS \"V::BIGINT\"");
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
        AddRow("star", "SELECT * FROM tblMints",
               "SELECT \"ID\", \"Name\", NULL AS \"Logo\", \"Country\" FROM tblMints");
        AddRow("qualified star in a join",
               "SELECT R.* FROM tblMints R JOIN (SELECT Name FROM "
               "tblMints GROUP BY Name) R2 ON R.Name = R2.Name",
               "SELECT R.\"ID\", R.\"Name\", NULL AS \"Logo\", "
               "R.\"Country\" FROM tblMints R JOIN (SELECT Name FROM "
               "tblMints GROUP BY Name) R2 ON R.Name = R2.Name");
        AddRow("bare star over a join stays", "SELECT * FROM tblMints A, tblOther B",
               "SELECT * FROM tblMints A, tblOther B");
        AddRow("named blob column", "SELECT ID, Logo FROM tblMints",
               "SELECT ID, NULL AS \"Logo\" FROM tblMints");
        AddRow("star of another table stays", "SELECT X.* FROM tblOther X JOIN tblMints M ON M.ID = X.ID",
               "SELECT X.* FROM tblOther X JOIN tblMints M ON M.ID = X.ID");
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
        QCOMPARE(TDBSqlText::excludeColumns(sql, "tblMints", columns, {"logo"}), expected);
    }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<TDBConnection> m_conn;
};

QTEST_GUILESS_MAIN(TestDBQuery)
#include "tst_dbquery.moc"
