#pragma once

#include "uDBSqlText.h"
#include "uDBStatement.h"

#include <QList>
#include <QObject>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <vector>

struct sqlite3;

// Something that holds statements on a connection (a dataset or a query). The connection tells
// it to close before the database handle goes away.
class TDBConnectionClient
{
public:
    virtual ~TDBConnectionClient() = default;
    virtual void connectionClosing() = 0;
    virtual void connectionDestroyed() = 0;
};

// A connection to one SQLite file, opened through Qt's QSQLITE driver under a connection name of
// its own. Parameters are set by name before open():
//   Database     path of the file (":memory:" for a private in-memory database)
//   OpenMode     CreateUTF8 (default; creates a missing file), CreateUTF16, ReadWrite (file must
//                exist), ReadOnly
//   StringFormat Unicode (default) or ANSI; texts are always stored as UTF-8
//   LockingMode  Normal (default) or Exclusive
//   ForeignKeys  On or Off (default: SQLite's own, off)
//   DriverID     SQLite
//   BusyTimeout  milliseconds to wait for a lock held by another connection (default 5000)
// Failures raise EDatabaseError with SQLite's message. Closing closes every dataset and query
// bound to the connection first.
class TDBConnection : public QObject
{
    Q_OBJECT
public:
    explicit TDBConnection(QObject* parent = nullptr);
    ~TDBConnection() override;

    // Parameters
    void setParam(const QString& name, const QString& value);
    QString param(const QString& name) const;
    QStringList paramNames() const;
    void clearParams();
    // Replaces all parameters by "Name=Value" lines (CR LF or LF separated).
    void setParamsText(const QString& text);

    // Open and close
    void open();
    void close();
    bool connected() const { return m_handle != nullptr; }
    void setConnected(bool value);
    // Qt connection name while open, empty otherwise.
    QString connectionName() const { return m_connectionName; }
    // The file that is open (the Database parameter as given), empty when closed.
    QString databasePath() const { return connected() ? m_openPath : QString(); }

    // Transactions
    void startTransaction();
    void commit();
    void rollback();
    bool inTransaction() const;

    // Runs the statements of a text (one or more, separated by ';') and returns the number of
    // rows changed by the last one. Values are bound to ":Name" and "?" parameters.
    int execSQL(const QString& sql, const TDBBindings& bindings = {});
    int execSQL(const QString& sql, const QVariantList& positional);
    // The first column of the first row of a SELECT, or null when there is no row.
    QVariant selectValue(const QString& sql, const QVariantList& positional = {});
    qint64 lastInsertRowId() const;
    // Columns of a table or view (PRAGMA table_info); empty when there is no such table.
    QList<TDBColumnInfo> tableInfo(const QString& table);

    // The SQLite handle of the open connection; throws when not connected.
    sqlite3* handle() const;

    // Bound datasets and queries.
    void attachClient(TDBConnectionClient* client);
    void detachClient(TDBConnectionClient* client);

signals:
    void afterConnect();
    void beforeDisconnect();
    void afterDisconnect();

private:
    void releaseQtConnection();

    QList<std::pair<QString, QString>> m_params;
    QString m_connectionName;
    QString m_openPath;
    QSqlDatabase m_database;
    sqlite3* m_handle = nullptr;
    std::vector<TDBConnectionClient*> m_clients;
};

// Moves a client from the connection it is bound to (current) to next; either may be null.
void RebindConnectionClient(TDBConnectionClient* client, TDBConnection*& current, TDBConnection* next);
