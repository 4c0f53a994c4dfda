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

template <typename F> QString errorOf(F&& run)
{
    try {
        run();
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
        const QString name = conn->connectionName();
        QVERIFY(conn->connected() && QSqlDatabase::contains(name));
        QCOMPARE(conn->databasePath(), path);
        QCOMPARE(conn->selectValue("PRAGMA foreign_keys").toInt(), 1);
        conn->close();
        QVERIFY(!conn->connected() && !QSqlDatabase::contains(name) && conn->databasePath().isEmpty());
        // Open again, under a new name, with a changed parameter.
        conn->setParam("ForeignKeys", "Off");
        conn->open();
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
        QCOMPARE(errorOf([&] { conn->execSQL("SELECT * FROM tblNothing"); }), "no such table: tblNothing");
        QCOMPARE(errorOf([&] { conn->execSQL("INSERT INTO tblCoins (Name, WeightG) VALUES ('x', 1)"); }),
                 "NOT NULL constraint failed: tblCoins.Metal");
    }

    // A bad parameter, a file that is not a database or a folder: the open fails with the layer's or
    // the driver's message, and leaves the file as it was.
    void openFails_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("content"); // "folder": the path is a folder
        QTest::addColumn<QString>("message");
        AddRow("unknown", "Pasword", "x", QByteArray(), "Unknown connection parameter 'Pasword'");
        AddRow("driver", "DriverID", "MSSQL", QByteArray(),
               "Invalid value 'MSSQL' of connection parameter 'DriverID'");
        AddRow("read-write needs the file", "OpenMode", "ReadWrite", QByteArray(),
               "unable to open database file");
        AddRow("text", "OpenMode", "CreateUTF8", QByteArray("Plain text, not a database.\n").repeated(100),
               "file is not a database");
        AddRow("0xff", "OpenMode", "CreateUTF8", QByteArray(8192, '\xff'), "file is not a database");
        AddRow("folder", "OpenMode", "CreateUTF8", QByteArray("folder"), "unable to open database file");
    }
    void openFails()
    {
        QFETCH(QString, name);
        QFETCH(QString, value);
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        const QString path = content == "folder" ? m_dir.path() : m_dir.filePath("bad.db");
        if (!content.isEmpty() && content != "folder") {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(content);
        }
        TDBConnection conn;
        conn.setParam("Database", path);
        conn.setParam(name, value);
        QCOMPARE(errorOf([&] { conn.open(); }), message);
        QVERIFY(!conn.connected() && conn.connectionName().isEmpty());
        if (content != "folder") {
            QFile f(path);
            QCOMPARE(f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray(), content);
            QFile::remove(path);
        }
    }

    void twoConnectionsAndTransactions()
    {
        const QString path = m_dir.filePath("two.db");
        auto left = DBTest::createCollection(path);
        auto right = DBTest::openConnection(path);
        TDBDataset leftItems(left.get());
        leftItems.setSQL(DBTest::itemsSQL());
        leftItems.setUpdateTableName("tblCoins");
        leftItems.open();
        DBTest::insertCoin(*right, "From the right", 1, 31.1035);
        QCOMPARE(leftItems.recordCount(), 0); // fetched before the insert
        leftItems.refresh();
        QCOMPARE(leftItems.fieldByName("Name").asString(), "From the right");

        // A write transaction on one side keeps the other from writing; a rollback undoes posts.
        right->close();
        right->setParam("BusyTimeout", "0");
        right->open();
        left->startTransaction();
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, left->startTransaction()); // no nesting
        leftItems.append();
        leftItems.fieldByName("Name").setAsString("Rolled back");
        leftItems.fieldByName("Metal").setAsInteger(1);
        leftItems.fieldByName("WeightG").setAsFloat(10);
        leftItems.post();
        leftItems.first();
        leftItems.edit();
        leftItems.fieldByName("Name").setAsString("Renamed");
        leftItems.post();
        QCOMPARE(errorOf([&] { DBTest::insertCoin(*right, "Blocked", 0, 1.0); }), "database is locked");
        left->rollback();
        QVERIFY(!left->inTransaction());
        leftItems.refresh();
        QCOMPARE(leftItems.recordCount(), 1);
        QCOMPARE(leftItems.fieldByName("Name").asString(), "From the right");
        bool haveCli = false;
        const QString cli = DBTest::sqliteCli(path, "SELECT group_concat(Name) FROM tblCoins", &haveCli);
        if (haveCli)
            QCOMPARE(cli, "From the right");
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
        // They open again on the reopened connection; a connection destroyed first leaves them closed.
        conn->open();
        items.open();
        QCOMPARE(items.recordCount(), 1);
        conn.reset();
        QVERIFY(!items.active() && items.connection() == nullptr);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, items.open());
    }
};

QTEST_GUILESS_MAIN(TestDBConnection)
#include "tst_dbconnection.moc"
