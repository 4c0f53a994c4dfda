#pragma once

#include <QList>
#include <QString>
#include <QVariant>

#include <utility>

struct sqlite3;
struct sqlite3_stmt;

// A prepared SQLite statement owned by the data-access layer: prepare, bind, step, reset and
// finalize, with every failure turned into EDatabaseError carrying SQLite's own message.
// Statements must be finalized before their connection closes; TDBConnection takes care of
// that by closing every dataset and query bound to it first.
class TDBStatement
{
public:
    TDBStatement() = default;
    // Prepares the first statement of sql; *tail (if given) receives the byte offset where the
    // next statement of a multi-statement text begins. An empty text gives a null statement.
    TDBStatement(sqlite3* db, const QByteArray& utf8Sql, int* tail = nullptr);
    TDBStatement(sqlite3* db, const QString& sql);
    ~TDBStatement();

    TDBStatement(TDBStatement&& other) noexcept;
    TDBStatement& operator=(TDBStatement&& other) noexcept;
    TDBStatement(const TDBStatement&) = delete;
    TDBStatement& operator=(const TDBStatement&) = delete;

    bool isNull() const { return m_stmt == nullptr; }
    sqlite3_stmt* handle() const { return m_stmt; }
    sqlite3* db() const { return m_db; }

    int parameterCount() const;
    // Index (1-based) of a named parameter, written with or without its leading ':'; 0 if absent.
    int parameterIndex(const QString& name) const;
    void bind(int index, const QVariant& value);

    // Steps once: true when a row is available, false when the statement is done.
    bool step();
    // Resets the statement so that it holds no lock; bindings are kept.
    void reset();
    void clearBindings();
    void finalize();

    int columnCount() const;
    QString columnName(int column) const;
    QString columnDeclType(int column) const;
    // The column's value as SQLite holds it: qlonglong, double, QString, QByteArray or null.
    QVariant columnValue(int column) const;

    // Throws EDatabaseError with the connection's last message.
    [[noreturn]] static void raise(sqlite3* db);

private:
    sqlite3* m_db = nullptr;
    sqlite3_stmt* m_stmt = nullptr;
};

// Resets a statement when the scope ends, so that a failure in between leaves no open read.
class TDBStatementResetter
{
public:
    explicit TDBStatementResetter(TDBStatement& stmt) : m_stmt(stmt) {}
    ~TDBStatementResetter() { m_stmt.reset(); }
    TDBStatementResetter(const TDBStatementResetter&) = delete;
    TDBStatementResetter& operator=(const TDBStatementResetter&) = delete;

private:
    TDBStatement& m_stmt;
};

// Values bound to a statement text: named ones (":Name") and, in order, the positional ones ("?").
struct TDBBindings
{
    QList<std::pair<QString, QVariant>> named;
    QVariantList positional;

    bool isEmpty() const { return named.isEmpty() && positional.isEmpty(); }
    void clear()
    {
        named.clear();
        positional.clear();
    }
    void setNamed(const QString& name, const QVariant& value);
    // Binds what the statement asks for. Positional values are taken from *nextPositional on,
    // which is advanced, so that one list can feed several statements of a text.
    void applyTo(TDBStatement& stmt, qsizetype* nextPositional = nullptr) const;
};
