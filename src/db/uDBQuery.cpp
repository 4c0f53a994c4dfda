#include "uDBQuery.h"

#include "uDBError.h"
#include "uDBSqlText.h"

#include <sqlite3.h>

using namespace Qt::StringLiterals;

TDBQuery::TDBQuery(TDBConnection* connection, QObject* parent) : QObject(parent)
{
    setConnection(connection);
}

TDBQuery::~TDBQuery()
{
    close();
    RebindConnectionClient(this, m_connection, nullptr);
}

void TDBQuery::setConnection(TDBConnection* connection)
{
    if (connection == m_connection)
        return;
    close();
    RebindConnectionClient(this, m_connection, connection);
}

void TDBQuery::setSQL(const QString& sql)
{
    close();
    m_sql = sql;
}

void TDBQuery::bindValue(const QString& name, const QVariant& value)
{
    m_bindings.setNamed(name, value);
}

void TDBQuery::addBindValue(const QVariant& value)
{
    m_bindings.positional.append(value);
}

void TDBQuery::clearBindings()
{
    m_bindings.clear();
}

int TDBQuery::execSQL()
{
    close();
    if (!m_connection)
        throw EDatabaseError(u"Query has no connection"_s);
    m_rowsAffected = m_connection->execSQL(m_sql, m_bindings);
    return m_rowsAffected;
}

qint64 TDBQuery::lastInsertId() const
{
    return m_connection ? m_connection->lastInsertRowId() : 0;
}

void TDBQuery::open()
{
    close();
    if (!m_connection)
        throw EDatabaseError(u"Query has no connection"_s);
    TDBStatement stmt(m_connection->handle(), TDBSqlText::quoteTypeHints(m_sql));
    if (stmt.isNull() || stmt.columnCount() == 0)
        throw EDatabaseError(u"The statement returns no rows: %1"_s.arg(m_sql));
    m_bindings.applyTo(stmt);
    const int columns = stmt.columnCount();
    for (int c = 0; c < columns; ++c) {
        QString name;
        QString hint;
        TDBSqlText::splitTypeHint(stmt.columnName(c), &name, &hint);
        int size = 0;
        TFieldType type = FieldTypeFromDeclaration(hint, &size);
        if (type == TFieldType::Unknown)
            type = FieldTypeFromDeclaration(stmt.columnDeclType(c), &size);
        auto field = std::make_unique<TDBField>(this, name, type, TFieldKind::Stored, size);
        field->setIndex(c);
        field->setReadOnly(true);
        m_fields.push_back(std::move(field));
    }
    m_builder.reset(columns);
    m_stmt = std::move(stmt);
    try {
        m_eof = !m_stmt.step();
    } catch (...) {
        close();
        throw;
    }
    if (m_eof) {
        m_stmt.reset();
        m_row.reset();
    } else {
        readRow();
    }
    // Expressions without a declared type take the type of their first value.
    for (auto& field : m_fields) {
        if (field->dataType() != TFieldType::Unknown)
            continue;
        switch (DBRow::tagOf(m_row.get(), field->index())) {
        case DBRow::TagSmallInt:
        case DBRow::TagInt:
            field->setDataType(TFieldType::LargeInt);
            break;
        case DBRow::TagDouble:
            field->setDataType(TFieldType::Float);
            break;
        case DBRow::TagBlob:
            field->setDataType(TFieldType::Blob);
            break;
        default:
            field->setDataType(TFieldType::String);
            break;
        }
    }
}

void TDBQuery::readRow()
{
    sqlite3_stmt* h = m_stmt.handle();
    m_builder.clear();
    const int columns = m_builder.slotCount();
    for (int c = 0; c < columns; ++c) {
        switch (sqlite3_column_type(h, c)) {
        case SQLITE_INTEGER:
            m_builder.setInt(c, sqlite3_column_int64(h, c));
            break;
        case SQLITE_FLOAT:
            m_builder.setDouble(c, sqlite3_column_double(h, c));
            break;
        case SQLITE_TEXT:
            m_builder.setText(c, reinterpret_cast<const char*>(sqlite3_column_text(h, c)),
                              sqlite3_column_bytes(h, c));
            break;
        case SQLITE_BLOB:
            m_builder.setBlob(c, sqlite3_column_blob(h, c), sqlite3_column_bytes(h, c));
            break;
        default:
            break;
        }
    }
    m_row = m_builder.build();
}

void TDBQuery::next()
{
    if (m_eof || m_stmt.isNull())
        return;
    if (m_stmt.step()) {
        readRow();
    } else {
        m_eof = true;
        m_row.reset();
        // Done: release the read so that writers on other connections are not held up.
        m_stmt.reset();
    }
}

void TDBQuery::close()
{
    m_stmt.finalize();
    m_fields.clear();
    m_row.reset();
    m_eof = true;
}

TDBField* TDBQuery::findField(const QString& name) const
{
    for (const auto& field : m_fields)
        if (field->fieldName().compare(name, Qt::CaseInsensitive) == 0)
            return field.get();
    return nullptr;
}

TDBField& TDBQuery::fieldByName(const QString& name) const
{
    TDBField* field = findField(name);
    if (!field)
        throw EDatabaseError(u"Field '%1' not found"_s.arg(name));
    return *field;
}

QVariant TDBQuery::fieldValue(const TDBField& field) const
{
    if (!m_row)
        return QVariant();
    return TDBField::convertForRead(DBRow::rawValue(m_row.get(), field.index()), field.dataType());
}

void TDBQuery::setFieldValue(TDBField& field, const QVariant&)
{
    throw EDatabaseError(u"Field '%1' cannot be modified"_s.arg(field.fieldName()));
}

void TDBQuery::connectionClosing()
{
    close();
}

void TDBQuery::connectionDestroyed()
{
    close();
    m_connection = nullptr;
}
