#include "uDBConnection.h"

#include "uDBError.h"

#include <QAtomicInteger>
#include <QFileInfo>
#include <QSqlDriver>
#include <QSqlError>

#include <sqlite3.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QAtomicInteger<quint64> g_connectionCounter;

const QStringList& knownParams()
{
    static const QStringList names = {u"Database"_s,    u"OpenMode"_s, u"StringFormat"_s, u"LockingMode"_s,
                                      u"ForeignKeys"_s, u"DriverID"_s, u"BusyTimeout"_s};
    return names;
}

bool oneOf(const QString& value, std::initializer_list<QLatin1StringView> allowed)
{
    return std::any_of(allowed.begin(), allowed.end(),
                       [&](QLatin1StringView a) { return value.compare(a, Qt::CaseInsensitive) == 0; });
}

[[noreturn]] void badParam(const QString& name, const QString& value)
{
    throw EDatabaseError(u"Invalid value '%1' of connection parameter '%2'"_s.arg(value, name));
}

} // namespace

TDBConnection::TDBConnection(QObject* parent) : QObject(parent) {}

TDBConnection::~TDBConnection()
{
    try {
        close();
    } catch (...) {
        // A destructor must not throw; the handle is released below in any case.
    }
    releaseQtConnection();
    const std::vector<TDBConnectionClient*> clients = m_clients;
    m_clients.clear();
    for (TDBConnectionClient* client : clients)
        client->connectionDestroyed();
}

void TDBConnection::setParam(const QString& name, const QString& value)
{
    for (auto& entry : m_params) {
        if (entry.first.compare(name, Qt::CaseInsensitive) == 0) {
            entry.second = value;
            return;
        }
    }
    m_params.append({name, value});
}

QString TDBConnection::param(const QString& name) const
{
    for (const auto& entry : m_params)
        if (entry.first.compare(name, Qt::CaseInsensitive) == 0)
            return entry.second;
    return QString();
}

QStringList TDBConnection::paramNames() const
{
    QStringList names;
    for (const auto& entry : m_params)
        names.append(entry.first);
    return names;
}

void TDBConnection::clearParams()
{
    m_params.clear();
}

void TDBConnection::setParamsText(const QString& text)
{
    m_params.clear();
    const QStringList lines = text.split(u'\n');
    for (QString line : lines) {
        line = line.trimmed();
        if (line.isEmpty())
            continue;
        const qsizetype eq = line.indexOf(u'=');
        if (eq <= 0)
            throw EDatabaseError(u"Invalid connection parameter line '%1'"_s.arg(line));
        setParam(line.left(eq).trimmed(), line.mid(eq + 1).trimmed());
    }
}

void TDBConnection::setConnected(bool value)
{
    if (value)
        open();
    else
        close();
}

void TDBConnection::open()
{
    if (connected())
        return;
    for (const auto& entry : m_params)
        if (!knownParams().contains(entry.first, Qt::CaseInsensitive))
            throw EDatabaseError(u"Unknown connection parameter '%1'"_s.arg(entry.first));

    const QString driverId = param(u"DriverID"_s);
    if (!driverId.isEmpty() && driverId.compare(u"SQLite"_s, Qt::CaseInsensitive) != 0)
        badParam(u"DriverID"_s, driverId);
    QString openMode = param(u"OpenMode"_s);
    if (openMode.isEmpty())
        openMode = u"CreateUTF8"_s;
    if (!oneOf(openMode, {"CreateUTF8"_L1, "CreateUTF16"_L1, "ReadWrite"_L1, "ReadOnly"_L1}))
        badParam(u"OpenMode"_s, openMode);
    const QString stringFormat = param(u"StringFormat"_s);
    if (!stringFormat.isEmpty() && !oneOf(stringFormat, {"Unicode"_L1, "ANSI"_L1}))
        badParam(u"StringFormat"_s, stringFormat);
    const QString lockingMode = param(u"LockingMode"_s);
    if (!lockingMode.isEmpty() && !oneOf(lockingMode, {"Normal"_L1, "Exclusive"_L1}))
        badParam(u"LockingMode"_s, lockingMode);
    const QString foreignKeys = param(u"ForeignKeys"_s);
    if (!foreignKeys.isEmpty() && !oneOf(foreignKeys, {"On"_L1, "Off"_L1, "True"_L1, "False"_L1}))
        badParam(u"ForeignKeys"_s, foreignKeys);
    int busyTimeout = 5000;
    if (!param(u"BusyTimeout"_s).isEmpty()) {
        bool ok = false;
        busyTimeout = param(u"BusyTimeout"_s).toInt(&ok);
        if (!ok || busyTimeout < 0)
            badParam(u"BusyTimeout"_s, param(u"BusyTimeout"_s));
    }

    const QString path = param(u"Database"_s);
    const bool inMemory = path.isEmpty() || path == u":memory:"_s;
    const bool existed = !inMemory && QFileInfo::exists(path);
    if (!inMemory && !existed && (oneOf(openMode, {"ReadWrite"_L1, "ReadOnly"_L1})))
        throw EDatabaseError(u"unable to open database file"_s, SQLITE_CANTOPEN);

    m_connectionName = u"orv_db_%1"_s.arg(++g_connectionCounter);
    m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connectionName);
    if (!m_database.isValid()) {
        releaseQtConnection();
        throw EDatabaseError(u"The QSQLITE database driver is not available"_s);
    }
    m_database.setDatabaseName(inMemory ? u":memory:"_s : path);
    QStringList options{u"QSQLITE_BUSY_TIMEOUT=%1"_s.arg(busyTimeout)};
    if (oneOf(openMode, {"ReadOnly"_L1}))
        options.append(u"QSQLITE_OPEN_READONLY"_s);
    m_database.setConnectOptions(options.join(u';'));
    if (!m_database.open()) {
        const QSqlError error = m_database.lastError();
        const QString text = error.databaseText().isEmpty() ? error.driverText() : error.databaseText();
        const int code = error.nativeErrorCode().toInt();
        releaseQtConnection();
        throw EDatabaseError(text, code);
    }
    const QVariant h = m_database.driver()->handle();
    if (!h.isValid() || qstrcmp(h.typeName(), "sqlite3*") != 0) {
        releaseQtConnection();
        throw EDatabaseError(u"The QSQLITE driver gives no SQLite handle"_s);
    }
    m_handle = *static_cast<sqlite3* const*>(h.constData());
    if (!m_handle) {
        releaseQtConnection();
        throw EDatabaseError(u"unable to open database file"_s, SQLITE_CANTOPEN);
    }
    m_openPath = path;
    try {
        if (!existed && !inMemory && oneOf(openMode, {"CreateUTF16"_L1}))
            execSQL(u"PRAGMA encoding = \"UTF-16\""_s);
        // SQLite opens files lazily: reading the schema is what finds out whether this is a database.
        selectValue(u"SELECT count(*) FROM sqlite_master"_s);
        if (oneOf(lockingMode, {"Exclusive"_L1}))
            execSQL(u"PRAGMA locking_mode = EXCLUSIVE"_s);
        if (oneOf(foreignKeys, {"On"_L1, "True"_L1}))
            execSQL(u"PRAGMA foreign_keys = ON"_s);
        else if (oneOf(foreignKeys, {"Off"_L1, "False"_L1}))
            execSQL(u"PRAGMA foreign_keys = OFF"_s);
    } catch (...) {
        m_handle = nullptr;
        releaseQtConnection();
        throw;
    }
    emit afterConnect();
}

void TDBConnection::close()
{
    if (!connected())
        return;
    emit beforeDisconnect();
    // Copy: a client may detach itself while closing.
    const std::vector<TDBConnectionClient*> clients = m_clients;
    for (TDBConnectionClient* client : clients)
        if (std::find(m_clients.begin(), m_clients.end(), client) != m_clients.end())
            client->connectionClosing();
    m_handle = nullptr;
    releaseQtConnection();
    emit afterDisconnect();
}

void TDBConnection::releaseQtConnection()
{
    if (m_connectionName.isEmpty())
        return;
    if (m_database.isOpen())
        m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connectionName);
    m_connectionName.clear();
    m_openPath.clear();
}

sqlite3* TDBConnection::handle() const
{
    if (!m_handle)
        throw EDatabaseError(u"Connection is not open"_s);
    return m_handle;
}

void TDBConnection::startTransaction()
{
    execSQL(u"BEGIN"_s);
}

void TDBConnection::commit()
{
    execSQL(u"COMMIT"_s);
}

void TDBConnection::rollback()
{
    execSQL(u"ROLLBACK"_s);
}

bool TDBConnection::inTransaction() const
{
    return m_handle && sqlite3_get_autocommit(m_handle) == 0;
}

int TDBConnection::execSQL(const QString& sql, const TDBBindings& bindings)
{
    sqlite3* db = handle();
    const QByteArray text = TDBSqlText::quoteTypeHints(sql).toUtf8();
    int offset = 0;
    int changes = 0;
    qsizetype nextPositional = 0;
    while (offset < text.size()) {
        int tail = 0;
        TDBStatement stmt(db, text.mid(offset), &tail);
        offset += tail > 0 ? tail : int(text.size());
        if (stmt.isNull())
            continue;
        bindings.applyTo(stmt, &nextPositional);
        while (stmt.step()) {
        }
        changes = sqlite3_changes(db);
    }
    return changes;
}

int TDBConnection::execSQL(const QString& sql, const QVariantList& positional)
{
    TDBBindings bindings;
    bindings.positional = positional;
    return execSQL(sql, bindings);
}

QVariant TDBConnection::selectValue(const QString& sql, const QVariantList& positional)
{
    TDBStatement stmt(handle(), TDBSqlText::quoteTypeHints(sql));
    TDBBindings bindings;
    bindings.positional = positional;
    bindings.applyTo(stmt);
    TDBStatementResetter resetter(stmt);
    if (!stmt.step() || stmt.columnCount() == 0)
        return QVariant();
    return stmt.columnValue(0);
}

qint64 TDBConnection::lastInsertRowId() const
{
    return m_handle ? sqlite3_last_insert_rowid(m_handle) : 0;
}

QList<TDBColumnInfo> TDBConnection::tableInfo(const QString& table)
{
    QList<TDBColumnInfo> columns;
    TDBStatement stmt(handle(),
                      u"SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info(?)"_s);
    stmt.bind(1, QVariant(table));
    TDBStatementResetter resetter(stmt);
    while (stmt.step()) {
        TDBColumnInfo c;
        c.name = stmt.columnValue(0).toString();
        c.declType = stmt.columnValue(1).toString();
        c.notNull = stmt.columnValue(2).toInt() != 0;
        c.hasDefault = !stmt.columnValue(3).isNull();
        c.pk = stmt.columnValue(4).toInt();
        columns.append(c);
    }
    return columns;
}

void TDBConnection::attachClient(TDBConnectionClient* client)
{
    if (std::find(m_clients.begin(), m_clients.end(), client) == m_clients.end())
        m_clients.push_back(client);
}

void TDBConnection::detachClient(TDBConnectionClient* client)
{
    m_clients.erase(std::remove(m_clients.begin(), m_clients.end(), client), m_clients.end());
}

void RebindConnectionClient(TDBConnectionClient* client, TDBConnection*& current, TDBConnection* next)
{
    if (current)
        current->detachClient(client);
    current = next;
    if (current)
        current->attachClient(client);
}
