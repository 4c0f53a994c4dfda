// Connection: parameters, open and close, errors with SQLite's own text, several connections,
// transactions, and the datasets that a closing connection takes along.

#include "support_datarow.h"
#include "support_dbtest.h"
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

// The message of the EDatabaseError that open() raises; empty when it opens.
QString openError(TDBConnection& conn)
{
    try {
        conn.open();
    } catch (const EDatabaseError& e) {
        return e.message();
    }
    return {};
}

} // namespace

class TestDBConnection : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

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
            QVERIFY2(!w.contains("still in use") && !w.contains("Error closing"), qPrintable(w));
    }

    void openCloseAndParameters()
    {
        const QString path = m_dir.filePath("a.db");
        auto conn = DBTest::createCollection(path);
        QVERIFY(conn->connected());
        const QString name = conn->connectionName();
        QVERIFY(QSqlDatabase::contains(name));
        QCOMPARE(conn->databasePath(), path);
        QCOMPARE(conn->selectValue("PRAGMA foreign_keys").toInt(), 1);
        QCOMPARE(conn->param("lockingmode"), "Normal");
        conn->close();
        QVERIFY(!conn->connected());
        QVERIFY(!QSqlDatabase::contains(name));
        QVERIFY(conn->databasePath().isEmpty());
        // Open again, under a new name, with a changed parameter.
        conn->setParam("ForeignKeys", "Off");
        conn->open();
        QVERIFY(conn->connected());
        QVERIFY(conn->connectionName() != name);
        QCOMPARE(conn->selectValue("PRAGMA foreign_keys").toInt(), 0);
        // Several at once, each under a name of its own, gone with its object.
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

    void badParameters_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("message");
        AddRow("unknown", "Pasword", "x", "Unknown connection parameter 'Pasword'");
        AddRow("driver", "DriverID", "MSSQL", "Invalid value 'MSSQL' of connection parameter 'DriverID'");
        AddRow("locking", "LockingMode", "Shared",
               "Invalid value 'Shared' of connection parameter 'LockingMode'");
        AddRow("read-write needs the file", "OpenMode", "ReadWrite", "unable to open database file");
    }
    void badParameters()
    {
        QFETCH(QString, name);
        QFETCH(QString, value);
        QFETCH(QString, message);
        TDBConnection conn;
        conn.setParam("Database", m_dir.filePath("bad.db"));
        conn.setParam(name, value);
        QCOMPARE(openError(conn), message);
        QVERIFY(!conn.connected());
        QVERIFY(!QFile::exists(m_dir.filePath("bad.db")));
    }

    // A file that is not a database, or a folder: the driver's message reaches the caller.
    void notADatabase_data()
    {
        QTest::addColumn<QByteArray>("content"); // empty: the path is a folder
        QTest::addColumn<QString>("message");
        AddRow("text", QByteArray("A plain text file, not a database at all.\n").repeated(100),
               "file is not a database");
        AddRow("0xff", QByteArray(8192, '\xff'), "file is not a database");
        AddRow("folder", QByteArray(), "unable to open database file");
    }
    void notADatabase()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        const QString path = content.isEmpty() ? m_dir.path() : m_dir.filePath("text.db");
        if (!content.isEmpty()) {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(content);
        }
        TDBConnection conn;
        conn.setParam("Database", path);
        conn.setParam("OpenMode", "CreateUTF8");
        QCOMPARE(openError(conn), message);
        QVERIFY(!conn.connected());
        QVERIFY(conn.connectionName().isEmpty());
        if (!content.isEmpty()) {
            QFile f(path); // left as it was
            QVERIFY(f.open(QIODevice::ReadOnly));
            QCOMPARE(f.readAll(), content);
        }
    }

    void sqlErrorCarriesSqliteText()
    {
        auto conn = DBTest::createCollection(m_dir.filePath("e.db"));
        const auto errorOf = [&conn](const QString& sql) {
            try {
                conn->execSQL(sql);
            } catch (const EDatabaseError& e) {
                return e.message();
            }
            return QString();
        };
        QCOMPARE(errorOf("SELECT * FROM tblNothing"), "no such table: tblNothing");
        QCOMPARE(errorOf("INSERT INTO tblCoins (Name, WeightG) VALUES ('x', 1)"),
                 "NOT NULL constraint failed: tblCoins.Metal");
    }

    void twoConnectionsOnOneFile()
    {
        const QString path = m_dir.filePath("two.db");
        auto left = DBTest::createCollection(path);
        auto right = DBTest::openConnection(path);
        QVERIFY(left->connectionName() != right->connectionName());

        TDBDataset leftItems(left.get());
        leftItems.setTableName("tblCoins");
        leftItems.open();
        DBTest::insertCoin(*right, "From the right", 1, 31.1035);
        QCOMPARE(leftItems.recordCount(), 0); // fetched before the insert
        leftItems.refresh();
        QCOMPARE(leftItems.recordCount(), 1);
        QCOMPARE(leftItems.fieldByName("Name").asString(), "From the right");

        // A write transaction on one side keeps the other from writing.
        right->close();
        right->setParam("BusyTimeout", "0");
        right->open();
        left->startTransaction();
        DBTest::insertCoin(*left, "Pending", 0, 1.0);
        try {
            DBTest::insertCoin(*right, "Blocked", 0, 1.0);
            QFAIL("a second writer got in");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), "database is locked");
        }
        left->commit();
        QCOMPARE(right->selectValue("SELECT count(*) FROM tblCoins").toInt(), 2);
    }

    void transactionRolledBack()
    {
        const QString path = m_dir.filePath("tx.db");
        auto conn = DBTest::createCollection(path);
        DBTest::insertCoin(*conn, "Kept", 0, 31.1035);
        TDBDataset items(conn.get());
        items.setSQL(DBTest::itemsSQL());
        items.setUpdateTableName("tblCoins");
        items.open();

        QVERIFY(!conn->inTransaction());
        conn->startTransaction();
        QVERIFY(conn->inTransaction());
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, conn->startTransaction()); // no nesting
        items.append();
        items.fieldByName("Name").setAsString("Rolled back");
        items.fieldByName("Metal").setAsInteger(1);
        items.fieldByName("WeightG").setAsFloat(10);
        items.post();
        items.first();
        items.edit();
        items.fieldByName("Name").setAsString("Renamed");
        items.post();
        QCOMPARE(items.recordCount(), 2);
        conn->rollback();
        QVERIFY(!conn->inTransaction());
        items.refresh();
        QCOMPARE(items.recordCount(), 1);
        QCOMPARE(items.fieldByName("Name").asString(), "Kept");
        bool haveCli = false;
        const QString cli = DBTest::sqliteCli(path, "SELECT group_concat(Name) FROM tblCoins", &haveCli);
        if (haveCli)
            QCOMPARE(cli, "Kept");
    }

    void closingConnectionClosesDatasets()
    {
        auto conn = DBTest::createCollection(m_dir.filePath("c.db"));
        DBTest::insertCoin(*conn, "A", 0, 1.0);
        TDBDataset mints(conn.get());
        mints.setTableName("tblMints");
        TDBDataset items(conn.get());
        items.setSQL(DBTest::itemsSQL());
        items.setUpdateTableName("tblCoins");
        TDBQuery query(conn.get());
        query.setSQL("SELECT Name FROM tblCoins");
        mints.open();
        items.open();
        query.open();
        QVERIFY(items.fieldByName("PhotoFront").isNull()); // a blob statement is prepared and cached too
        QStringList order;
        QObject context; // goes before `order` does
        items.setOnBeforeClose([&](TDBDataset&) { order << "items closing"; });
        connect(conn.get(), &TDBConnection::afterDisconnect, &context, [&]() { order << "disconnected"; });
        conn->close();
        QVERIFY(!mints.active() && !items.active() && !query.active());
        QCOMPARE(order, QStringList({"items closing", "disconnected"}));
        // They open again on the reopened connection.
        conn->open();
        items.open();
        QCOMPARE(items.recordCount(), 1);
    }

    void connectionDestroyedFirst()
    {
        auto conn = DBTest::createCollection(m_dir.filePath("d.db"));
        TDBDataset items(conn.get());
        items.setTableName("tblCoins");
        items.open();
        conn.reset();
        QVERIFY(!items.active());
        QVERIFY(items.connection() == nullptr);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, items.open());
    }
};

QTEST_GUILESS_MAIN(TestDBConnection)
#include "tst_dbconnection.moc"
