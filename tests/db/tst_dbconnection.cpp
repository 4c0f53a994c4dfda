// Connection: parameters, open and close, errors with SQLite's own text, several connections,
// transactions, and the datasets that a closing connection takes along.

#include "support_dbtest.h"
#include "uDBConnection.h"
#include "uDBDataset.h"
#include "uDBError.h"
#include "uDBQuery.h"

#include <QFile>
#include <QSqlDatabase>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QStringList g_warnings;
QtMessageHandler g_previous = nullptr;

void collectWarnings(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type == QtWarningMsg || type == QtCriticalMsg)
        g_warnings.append(message);
    if (g_previous)
        g_previous(type, context, message);
}

} // namespace

class TestDBConnection : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        g_warnings.clear();
        g_previous = qInstallMessageHandler(collectWarnings);
    }
    void cleanup()
    {
        qInstallMessageHandler(g_previous);
        // Qt warns about connections removed while in use, or databases left open.
        for (const QString& w : std::as_const(g_warnings))
            QVERIFY2(!w.contains(QStringLiteral("still in use")) &&
                         !w.contains(QStringLiteral("Error closing")),
                     qPrintable(w));
    }

    void openCloseRemovesQtConnection()
    {
        const QString path = m_dir.filePath(QStringLiteral("a.db"));
        auto conn = DBTest::createCollection(path);
        QVERIFY(conn->connected());
        const QString name = conn->connectionName();
        QVERIFY(QSqlDatabase::contains(name));
        QCOMPARE(conn->databasePath(), path);
        conn->close();
        QVERIFY(!conn->connected());
        QVERIFY(!QSqlDatabase::contains(name));
        QVERIFY(conn->databasePath().isEmpty());
        // Open again, under a new name.
        conn->open();
        QVERIFY(conn->connected());
        QVERIFY(conn->connectionName() != name);
    }

    void parametersApplied()
    {
        const QString path = m_dir.filePath(QStringLiteral("p.db"));
        auto conn = DBTest::createCollection(path);
        QCOMPARE(conn->selectValue(QStringLiteral("PRAGMA foreign_keys")).toInt(), 1);
        QCOMPARE(conn->param(QStringLiteral("lockingmode")), QStringLiteral("Normal"));
        conn->close();
        conn->setParam(QStringLiteral("ForeignKeys"), QStringLiteral("Off"));
        conn->open();
        QCOMPARE(conn->selectValue(QStringLiteral("PRAGMA foreign_keys")).toInt(), 0);
    }

    void badParameters_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("message");
        QTest::newRow("unknown") << "Pasword"
                                 << "x"
                                 << "Unknown connection parameter 'Pasword'";
        QTest::newRow("driver") << "DriverID"
                                << "MSSQL"
                                << "Invalid value 'MSSQL' of connection parameter 'DriverID'";
        QTest::newRow("open mode") << "OpenMode"
                                   << "Sometimes"
                                   << "Invalid value 'Sometimes' of connection parameter 'OpenMode'";
        QTest::newRow("locking") << "LockingMode"
                                 << "Shared"
                                 << "Invalid value 'Shared' of connection parameter 'LockingMode'";
    }
    void badParameters()
    {
        QFETCH(QString, name);
        QFETCH(QString, value);
        QFETCH(QString, message);
        TDBConnection conn;
        conn.setParam(QStringLiteral("Database"), m_dir.filePath(QStringLiteral("bad.db")));
        conn.setParam(name, value);
        try {
            conn.open();
            QFAIL("open() accepted a bad parameter");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), message);
        }
        QVERIFY(!conn.connected());
        QVERIFY(!QFile::exists(m_dir.filePath(QStringLiteral("bad.db"))));
    }

    void notADatabase_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("text")
            << QByteArray("This is a plain text file, not a database at all.\n").repeated(100);
        QTest::newRow("zeros") << QByteArray(8192, '\xff');
    }
    void notADatabase()
    {
        QFETCH(QByteArray, content);
        const QString path = m_dir.filePath(QStringLiteral("text.db"));
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(content);
        f.close();
        TDBConnection conn;
        conn.setParam(QStringLiteral("Database"), path);
        conn.setParam(QStringLiteral("OpenMode"), QStringLiteral("CreateUTF8"));
        try {
            conn.open();
            QFAIL("a text file opened as a database");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("file is not a database"));
            QCOMPARE(e.nativeCode() & 0xFF, 26); // SQLITE_NOTADB
        }
        QVERIFY(!conn.connected());
        QVERIFY(conn.connectionName().isEmpty());
        // The file is left as it was.
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), content);
    }

    void readWriteModeNeedsExistingFile()
    {
        TDBConnection conn;
        const QString path = m_dir.filePath(QStringLiteral("missing.db"));
        conn.setParamsText(QStringLiteral("Database=%1\r\nOpenMode=ReadWrite\r\nDriverID=SQLite").arg(path));
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, conn.open());
        QVERIFY(!QFile::exists(path));
    }

    void sqlErrorCarriesSqliteText()
    {
        auto conn = DBTest::createCollection(m_dir.filePath(QStringLiteral("e.db")));
        try {
            conn->execSQL(QStringLiteral("SELECT * FROM tblNothing"));
            QFAIL("no error");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("no such table: tblNothing"));
        }
        try {
            conn->execSQL(QStringLiteral("INSERT INTO tblCoins (Name, WeightG) VALUES ('x', 1)"));
            QFAIL("no error");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("NOT NULL constraint failed: tblCoins.Metal"));
        }
    }

    void twoConnectionsOnOneFile()
    {
        const QString path = m_dir.filePath(QStringLiteral("two.db"));
        auto left = DBTest::createCollection(path);
        auto right = DBTest::openConnection(path);
        QVERIFY(left->connectionName() != right->connectionName());

        TDBDataset leftItems(left.get());
        leftItems.setTableName(QStringLiteral("tblCoins"));
        leftItems.open();
        DBTest::insertCoin(*right, QStringLiteral("From the right"), 1, 31.1035);
        QCOMPARE(leftItems.recordCount(), 0); // fetched before the insert
        leftItems.refresh();
        QCOMPARE(leftItems.recordCount(), 1);
        QCOMPARE(leftItems.fieldByName(QStringLiteral("Name")).asString(), QStringLiteral("From the right"));

        // A write transaction on one side keeps the other from writing.
        right->close();
        right->setParam(QStringLiteral("BusyTimeout"), QStringLiteral("0"));
        right->open();
        left->startTransaction();
        DBTest::insertCoin(*left, QStringLiteral("Pending"), 0, 1.0);
        try {
            DBTest::insertCoin(*right, QStringLiteral("Blocked"), 0, 1.0);
            QFAIL("a second writer got in");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("database is locked"));
        }
        left->commit();
        QCOMPARE(right->selectValue(QStringLiteral("SELECT count(*) FROM tblCoins")).toInt(), 2);
        left->close();
        right->close();
    }

    void transactionRolledBack()
    {
        const QString path = m_dir.filePath(QStringLiteral("tx.db"));
        auto conn = DBTest::createCollection(path);
        DBTest::insertCoin(*conn, QStringLiteral("Kept"), 0, 31.1035);
        TDBDataset items(conn.get());
        items.setSQL(DBTest::itemsSQL());
        items.setUpdateTableName(QStringLiteral("tblCoins"));
        items.open();

        QVERIFY(!conn->inTransaction());
        conn->startTransaction();
        QVERIFY(conn->inTransaction());
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, conn->startTransaction()); // no nesting
        items.append();
        items.fieldByName(QStringLiteral("Name")).setAsString(QStringLiteral("Rolled back"));
        items.fieldByName(QStringLiteral("Metal")).setAsInteger(1);
        items.fieldByName(QStringLiteral("WeightG")).setAsFloat(10);
        items.post();
        items.first();
        items.edit();
        items.fieldByName(QStringLiteral("Name")).setAsString(QStringLiteral("Renamed"));
        items.post();
        QCOMPARE(items.recordCount(), 2);
        conn->rollback();
        QVERIFY(!conn->inTransaction());
        items.refresh();
        QCOMPARE(items.recordCount(), 1);
        QCOMPARE(items.fieldByName(QStringLiteral("Name")).asString(), QStringLiteral("Kept"));
        bool haveCli = false;
        const QString cli =
            DBTest::sqliteCli(path, QStringLiteral("SELECT group_concat(Name) FROM tblCoins"), &haveCli);
        if (haveCli)
            QCOMPARE(cli, QStringLiteral("Kept"));
    }

    void closingConnectionClosesDatasets()
    {
        auto conn = DBTest::createCollection(m_dir.filePath(QStringLiteral("c.db")));
        DBTest::insertCoin(*conn, QStringLiteral("A"), 0, 1.0);
        TDBDataset mints(conn.get());
        mints.setTableName(QStringLiteral("tblMints"));
        TDBDataset items(conn.get());
        items.setSQL(DBTest::itemsSQL());
        items.setUpdateTableName(QStringLiteral("tblCoins"));
        TDBQuery query(conn.get());
        query.setSQL(QStringLiteral("SELECT Name FROM tblCoins"));
        mints.open();
        items.open();
        query.open();
        // A blob statement is prepared and cached too.
        QVERIFY(items.fieldByName(QStringLiteral("PhotoFront")).isNull());
        QStringList order;
        QObject context; // goes before `order` does
        items.setOnBeforeClose([&](TDBDataset&) { order << QStringLiteral("items closing"); });
        connect(conn.get(), &TDBConnection::afterDisconnect, &context,
                [&]() { order << QStringLiteral("disconnected"); });
        conn->close();
        QVERIFY(!mints.active());
        QVERIFY(!items.active());
        QVERIFY(!query.active());
        QCOMPARE(order, (QStringList{QStringLiteral("items closing"), QStringLiteral("disconnected")}));
        // And they open again on the reopened connection.
        conn->open();
        items.open();
        QCOMPARE(items.recordCount(), 1);
    }

    void connectionDestroyedFirst()
    {
        auto conn = DBTest::createCollection(m_dir.filePath(QStringLiteral("d.db")));
        TDBDataset items(conn.get());
        items.setTableName(QStringLiteral("tblCoins"));
        items.open();
        conn.reset();
        QVERIFY(!items.active());
        QVERIFY(items.connection() == nullptr);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, items.open());
    }

    void manyConnectionsAtOnce()
    {
        const QString path = m_dir.filePath(QStringLiteral("many.db"));
        DBTest::createCollection(path);
        std::vector<std::unique_ptr<TDBConnection>> all;
        QSet<QString> names;
        for (int i = 0; i < 8; ++i) {
            all.push_back(DBTest::openConnection(path));
            names.insert(all.back()->connectionName());
        }
        QCOMPARE(names.size(), 8);
        all.clear();
        for (const QString& n : std::as_const(names))
            QVERIFY(!QSqlDatabase::contains(n));
    }

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestDBConnection)
#include "tst_dbconnection.moc"
