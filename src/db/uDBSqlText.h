#pragma once

#include <QList>
#include <QSet>
#include <QString>

// A column of a table as PRAGMA table_info tells it.
struct TDBColumnInfo
{
    QString name;
    QString declType;
    bool notNull = false;
    bool hasDefault = false;
    int pk = 0; // position in the primary key, 0 when not part of it
};

// Lexical work on SQL texts, done without executing them: type hints in column aliases, the
// expansion of "*" into an explicit column list, and quoting of identifiers.
class TDBSqlText
{
public:
    // Turns each unquoted alias with a type hint, Name::REAL, into the quoted identifier
    // "Name::REAL", so that SQLite accepts it and the hint reaches the column name.
    static QString quoteTypeHints(const QString& sql);

    // Splits a result column name "Name::REAL" into the field name and the hint ("REAL").
    // Returns false when the name carries no hint.
    static bool splitTypeHint(const QString& columnName, QString* fieldName, QString* hint);

    // Rewrites the outer select list of a SELECT over `table` so that no column of `lazyColumns`
    // is read: "*" (when the FROM clause names only that table) and "alias.*" become the table's
    // columns, and each lazy column, also one named on its own, becomes NULL AS "column". Texts that
    // are no plain SELECT are returned unchanged.
    static QString excludeColumns(const QString& sql, const QString& table,
                                  const QList<TDBColumnInfo>& columns, const QSet<QString>& lazyColumns);

    // "name" with embedded quotes doubled.
    static QString quoteIdentifier(const QString& name);
};
