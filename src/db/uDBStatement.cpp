#include "uDBStatement.h"

#include "uDBError.h"

#include <QDate>
#include <QDateTime>
#include <QTime>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

TDBStatement::TDBStatement(sqlite3* db, const QByteArray& utf8Sql, int* tail) : m_db(db)
{
    const char* rest = nullptr;
    const int rc = sqlite3_prepare_v2(db, utf8Sql.constData(), int(utf8Sql.size()), &m_stmt, &rest);
    if (rc != SQLITE_OK) {
        m_stmt = nullptr;
        raise(db);
    }
    if (tail)
        *tail = rest ? int(rest - utf8Sql.constData()) : int(utf8Sql.size());
}

TDBStatement::TDBStatement(sqlite3* db, const QString& sql) : TDBStatement(db, sql.toUtf8()) {}

TDBStatement::~TDBStatement()
{
    finalize();
}

TDBStatement::TDBStatement(TDBStatement&& other) noexcept : m_db(other.m_db), m_stmt(other.m_stmt)
{
    other.m_stmt = nullptr;
}

TDBStatement& TDBStatement::operator=(TDBStatement&& other) noexcept
{
    if (this != &other) {
        finalize();
        m_db = other.m_db;
        m_stmt = other.m_stmt;
        other.m_stmt = nullptr;
    }
    return *this;
}

void TDBStatement::raise(sqlite3* db)
{
    const char* text = db ? sqlite3_errmsg(db) : "out of memory";
    throw EDatabaseError(QString::fromUtf8(text), db ? sqlite3_extended_errcode(db) : SQLITE_NOMEM);
}

int TDBStatement::parameterCount() const
{
    return m_stmt ? sqlite3_bind_parameter_count(m_stmt) : 0;
}

int TDBStatement::parameterIndex(const QString& name) const
{
    if (!m_stmt || name.isEmpty())
        return 0;
    const QByteArray key = name.toUtf8();
    if (key.startsWith(':') || key.startsWith('@') || key.startsWith('$'))
        return sqlite3_bind_parameter_index(m_stmt, key.constData());
    return sqlite3_bind_parameter_index(m_stmt, QByteArray(":" + key).constData());
}

void TDBStatement::bind(int index, const QVariant& value)
{
    if (!m_stmt)
        return;
    int rc = SQLITE_OK;
    if (value.isNull()) {
        rc = sqlite3_bind_null(m_stmt, index);
    } else {
        switch (value.metaType().id()) {
        case QMetaType::Bool:
            rc = sqlite3_bind_int64(m_stmt, index, value.toBool() ? 1 : 0);
            break;
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Char:
        case QMetaType::SChar:
        case QMetaType::UChar:
        case QMetaType::Long:
        case QMetaType::LongLong:
        case QMetaType::ULong:
        case QMetaType::ULongLong:
            rc = sqlite3_bind_int64(m_stmt, index, value.toLongLong());
            break;
        case QMetaType::Double:
        case QMetaType::Float:
            rc = sqlite3_bind_double(m_stmt, index, value.toDouble());
            break;
        case QMetaType::QByteArray: {
            const QByteArray bytes = value.toByteArray();
            rc = sqlite3_bind_blob64(m_stmt, index, bytes.constData(), sqlite3_uint64(bytes.size()),
                                     SQLITE_TRANSIENT);
            break;
        }
        case QMetaType::QDate: {
            const QByteArray text = value.toDate().toString(Qt::ISODate).toUtf8();
            rc = sqlite3_bind_text64(m_stmt, index, text.constData(), sqlite3_uint64(text.size()),
                                     SQLITE_TRANSIENT, SQLITE_UTF8);
            break;
        }
        case QMetaType::QDateTime: {
            const QDateTime dt = value.toDateTime();
            const QString format = dt.time().msec() ? u"yyyy-MM-dd hh:mm:ss.zzz"_s : u"yyyy-MM-dd hh:mm:ss"_s;
            const QByteArray text = dt.toString(format).toUtf8();
            rc = sqlite3_bind_text64(m_stmt, index, text.constData(), sqlite3_uint64(text.size()),
                                     SQLITE_TRANSIENT, SQLITE_UTF8);
            break;
        }
        default: {
            const QByteArray text = value.toString().toUtf8();
            rc = sqlite3_bind_text64(m_stmt, index, text.constData(), sqlite3_uint64(text.size()),
                                     SQLITE_TRANSIENT, SQLITE_UTF8);
            break;
        }
        }
    }
    if (rc != SQLITE_OK)
        raise(m_db);
}

bool TDBStatement::step()
{
    if (!m_stmt)
        return false;
    const int rc = sqlite3_step(m_stmt);
    if (rc == SQLITE_ROW)
        return true;
    if (rc == SQLITE_DONE)
        return false;
    // Keep the message before the reset can replace it.
    const QString message = QString::fromUtf8(sqlite3_errmsg(m_db));
    const int code = sqlite3_extended_errcode(m_db);
    sqlite3_reset(m_stmt);
    throw EDatabaseError(message, code);
}

void TDBStatement::reset()
{
    if (m_stmt)
        sqlite3_reset(m_stmt);
}

void TDBStatement::clearBindings()
{
    if (m_stmt)
        sqlite3_clear_bindings(m_stmt);
}

void TDBStatement::finalize()
{
    if (m_stmt) {
        sqlite3_finalize(m_stmt);
        m_stmt = nullptr;
    }
}

int TDBStatement::columnCount() const
{
    return m_stmt ? sqlite3_column_count(m_stmt) : 0;
}

QString TDBStatement::columnName(int column) const
{
    return QString::fromUtf8(sqlite3_column_name(m_stmt, column));
}

QString TDBStatement::columnDeclType(int column) const
{
    const char* decl = sqlite3_column_decltype(m_stmt, column);
    return decl ? QString::fromUtf8(decl) : QString();
}

QVariant TDBStatement::columnValue(int column) const
{
    switch (sqlite3_column_type(m_stmt, column)) {
    case SQLITE_INTEGER:
        return QVariant(qlonglong(sqlite3_column_int64(m_stmt, column)));
    case SQLITE_FLOAT:
        return QVariant(sqlite3_column_double(m_stmt, column));
    case SQLITE_TEXT: {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_stmt, column));
        return QVariant(QString::fromUtf8(text, sqlite3_column_bytes(m_stmt, column)));
    }
    case SQLITE_BLOB: {
        const auto* data = static_cast<const char*>(sqlite3_column_blob(m_stmt, column));
        return QVariant(QByteArray(data, sqlite3_column_bytes(m_stmt, column)));
    }
    default:
        return QVariant();
    }
}

void TDBBindings::setNamed(const QString& name, const QVariant& value)
{
    QString key = name;
    if (key.startsWith(u':'))
        key.remove(0, 1);
    for (auto& entry : named) {
        if (entry.first.compare(key, Qt::CaseInsensitive) == 0) {
            entry.second = value;
            return;
        }
    }
    named.append({key, value});
}

void TDBBindings::applyTo(TDBStatement& stmt, qsizetype* nextPositional) const
{
    const int count = stmt.parameterCount();
    if (count == 0)
        return;
    qsizetype local = 0;
    qsizetype& next = nextPositional ? *nextPositional : local;
    for (int i = 1; i <= count; ++i) {
        const char* name = sqlite3_bind_parameter_name(stmt.handle(), i);
        if (!name || name[0] == '?') {
            if (next < positional.size())
                stmt.bind(i, positional.at(next++));
            continue;
        }
        const QString key = QString::fromUtf8(name + 1);
        for (const auto& entry : named) {
            if (entry.first.compare(key, Qt::CaseInsensitive) == 0) {
                stmt.bind(i, entry.second);
                break;
            }
        }
    }
}
