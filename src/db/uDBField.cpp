#include "uDBField.h"

#include "uDBError.h"

#include <QRegularExpression>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

QDate dateFromText(const QString& text)
{
    // "yyyy-MM-dd", possibly followed by a time.
    return QDate::fromString(text.left(10), Qt::ISODate);
}

QDateTime dateTimeFromText(const QString& text)
{
    QString t = text.trimmed();
    if (t.size() == 10)
        return QDateTime(QDate::fromString(t, Qt::ISODate), QTime(0, 0));
    t.replace(u' ', u'T');
    QDateTime dt = QDateTime::fromString(t, Qt::ISODateWithMs);
    if (!dt.isValid())
        dt = QDateTime::fromString(t, Qt::ISODate);
    return dt;
}

bool isNumberType(const QVariant& v)
{
    switch (v.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Bool:
        return true;
    default:
        return false;
    }
}

bool isFloatType(const QVariant& v)
{
    return v.metaType().id() == QMetaType::Double || v.metaType().id() == QMetaType::Float;
}

// Whole number of a value: floats are rounded; texts must be numbers.
bool toWhole(const QVariant& v, qlonglong* out)
{
    if (isFloatType(v)) {
        const double d = v.toDouble();
        if (!std::isfinite(d))
            return false;
        *out = qRound64(d);
        return true;
    }
    if (isNumberType(v)) {
        *out = v.toLongLong();
        return true;
    }
    if (v.metaType().id() == QMetaType::QString || v.metaType().id() == QMetaType::QByteArray) {
        const QString text = v.toString().trimmed();
        bool ok = false;
        *out = text.toLongLong(&ok);
        if (ok)
            return true;
        const double d = text.toDouble(&ok);
        if (ok && std::isfinite(d)) {
            *out = qRound64(d);
            return true;
        }
    }
    return false;
}

bool toReal(const QVariant& v, double* out)
{
    if (isNumberType(v)) {
        *out = v.toDouble();
        return true;
    }
    if (v.metaType().id() == QMetaType::QString || v.metaType().id() == QMetaType::QByteArray) {
        bool ok = false;
        *out = v.toString().trimmed().toDouble(&ok);
        return ok;
    }
    return false;
}

bool toBool(const QVariant& v, bool* out)
{
    if (isNumberType(v)) {
        *out = v.toDouble() != 0.0;
        return true;
    }
    const QString text = v.toString().trimmed();
    if (text.compare(u"true"_s, Qt::CaseInsensitive) == 0 || text == u"1"_s) {
        *out = true;
        return true;
    }
    if (text.compare(u"false"_s, Qt::CaseInsensitive) == 0 || text == u"0"_s) {
        *out = false;
        return true;
    }
    return false;
}

} // namespace

TDBField::TDBField(TDBFieldOwner* owner, const QString& fieldName, TFieldType dataType, TFieldKind kind,
                   int size)
    : m_owner(owner), m_fieldName(fieldName), m_dataType(dataType), m_kind(kind), m_size(size)
{
    if (kind == TFieldKind::Computed)
        m_readOnly = true;
}

bool TDBField::isNumeric() const
{
    switch (m_dataType) {
    case TFieldType::Integer:
    case TFieldType::LargeInt:
    case TFieldType::AutoInc:
    case TFieldType::Float:
        return true;
    default:
        return false;
    }
}

TDBField& TDBField::setRequired(bool value)
{
    m_required = value;
    return *this;
}

TDBField& TDBField::setReadOnly(bool value)
{
    m_readOnly = value;
    return *this;
}

TDBField& TDBField::setVisible(bool value)
{
    m_visible = value;
    return *this;
}

TDBField& TDBField::setPrecision(int value)
{
    m_precision = value;
    return *this;
}

TDBField& TDBField::setSize(int value)
{
    m_size = value;
    return *this;
}

TDBField& TDBField::setDisplayLabel(const QString& value)
{
    m_displayLabel = value;
    return *this;
}

QVariant TDBField::value() const
{
    return m_owner ? m_owner->fieldValue(*this) : QVariant();
}

void TDBField::setValue(const QVariant& value)
{
    if (!m_owner)
        throw EDatabaseError(u"Field '%1' has no dataset"_s.arg(m_fieldName));
    m_owner->setFieldValue(*this, value);
}

void TDBField::fireChange()
{
    if (m_onChange) {
        // A copy, so that the handler may replace itself.
        const TFieldNotifyEvent handler = m_onChange;
        handler(*this);
    }
}

double TDBField::asFloat() const
{
    double d = 0.0;
    const QVariant v = value();
    if (v.isNull() || !toReal(v, &d))
        return 0.0;
    return d;
}

int TDBField::asInteger() const
{
    return int(asLargeInt());
}

qint64 TDBField::asLargeInt() const
{
    qlonglong n = 0;
    const QVariant v = value();
    if (v.isNull() || !toWhole(v, &n))
        return 0;
    return n;
}

QString TDBField::asString() const
{
    return valueText(value(), m_dataType);
}

bool TDBField::asBoolean() const
{
    bool b = false;
    const QVariant v = value();
    if (v.isNull() || !toBool(v, &b))
        return false;
    return b;
}

QDate TDBField::asDate() const
{
    const QVariant v = value();
    if (v.metaType().id() == QMetaType::QDate)
        return v.toDate();
    if (v.metaType().id() == QMetaType::QDateTime)
        return v.toDateTime().date();
    return v.isNull() ? QDate() : dateFromText(v.toString());
}

QDateTime TDBField::asDateTime() const
{
    const QVariant v = value();
    if (v.metaType().id() == QMetaType::QDateTime)
        return v.toDateTime();
    if (v.metaType().id() == QMetaType::QDate)
        return QDateTime(v.toDate(), QTime(0, 0));
    return v.isNull() ? QDateTime() : dateTimeFromText(v.toString());
}

QByteArray TDBField::asBytes() const
{
    const QVariant v = value();
    if (v.isNull())
        return QByteArray();
    if (v.metaType().id() == QMetaType::QByteArray)
        return v.toByteArray();
    return valueText(v, m_dataType).toUtf8();
}

QString TDBField::valueText(const QVariant& v, TFieldType type)
{
    if (v.isNull())
        return QString();
    switch (v.metaType().id()) {
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(v.toDouble(), 'g', 15);
    case QMetaType::Bool:
        return v.toBool() ? u"True"_s : u"False"_s;
    case QMetaType::QDate:
        return v.toDate().toString(Qt::ISODate);
    case QMetaType::QDateTime: {
        const QDateTime dt = v.toDateTime();
        return dt.toString(dt.time().msec() ? u"yyyy-MM-dd hh:mm:ss.zzz"_s : u"yyyy-MM-dd hh:mm:ss"_s);
    }
    case QMetaType::QByteArray:
        return QString::fromUtf8(v.toByteArray());
    default:
        break;
    }
    if (type == TFieldType::Boolean) {
        bool b = false;
        if (toBool(v, &b))
            return b ? u"True"_s : u"False"_s;
    }
    return v.toString();
}

QVariant TDBField::convertForRead(const QVariant& v, TFieldType type)
{
    if (v.isNull())
        return v;
    switch (type) {
    case TFieldType::String:
    case TFieldType::Memo:
        if (v.metaType().id() == QMetaType::QString)
            return v;
        return QVariant(valueText(v, type));
    case TFieldType::Integer: {
        qlonglong n = 0;
        return toWhole(v, &n) ? QVariant(int(n)) : v;
    }
    case TFieldType::LargeInt:
    case TFieldType::AutoInc: {
        qlonglong n = 0;
        return toWhole(v, &n) ? QVariant(n) : v;
    }
    case TFieldType::Float: {
        double d = 0.0;
        return toReal(v, &d) ? QVariant(d) : v;
    }
    case TFieldType::Boolean: {
        bool b = false;
        return toBool(v, &b) ? QVariant(b) : v;
    }
    case TFieldType::Date: {
        if (v.metaType().id() == QMetaType::QDate)
            return v;
        const QDate d = dateFromText(v.toString());
        return d.isValid() ? QVariant(d) : v;
    }
    case TFieldType::DateTime: {
        if (v.metaType().id() == QMetaType::QDateTime)
            return v;
        const QDateTime d = dateTimeFromText(v.toString());
        return d.isValid() ? QVariant(d) : v;
    }
    case TFieldType::Blob:
        if (v.metaType().id() == QMetaType::QByteArray)
            return v;
        return QVariant(v.toString().toUtf8());
    case TFieldType::Unknown:
        break;
    }
    return v;
}

QVariant TDBField::convertForWrite(const QVariant& v) const
{
    if (v.isNull())
        return QVariant();
    auto fail = [&](const QString& what) -> QVariant {
        throw EDatabaseError(
            u"'%1' is not a valid %2 value for field '%3'"_s.arg(v.toString(), what, m_fieldName));
    };
    switch (m_dataType) {
    case TFieldType::String:
    case TFieldType::Memo:
    case TFieldType::Unknown:
        if (v.metaType().id() == QMetaType::QString)
            return v;
        return QVariant(valueText(v, m_dataType));
    case TFieldType::Integer: {
        qlonglong n = 0;
        if (!toWhole(v, &n))
            return fail(u"integer"_s);
        return QVariant(int(n));
    }
    case TFieldType::LargeInt:
    case TFieldType::AutoInc: {
        qlonglong n = 0;
        if (!toWhole(v, &n))
            return fail(u"integer"_s);
        return QVariant(n);
    }
    case TFieldType::Float: {
        double d = 0.0;
        if (!toReal(v, &d))
            return fail(u"floating point"_s);
        return QVariant(d);
    }
    case TFieldType::Boolean: {
        bool b = false;
        if (!toBool(v, &b))
            return fail(u"boolean"_s);
        return QVariant(b);
    }
    case TFieldType::Date: {
        if (v.metaType().id() == QMetaType::QDate)
            return v;
        if (v.metaType().id() == QMetaType::QDateTime)
            return QVariant(v.toDateTime().date());
        const QDate d = dateFromText(v.toString());
        if (!d.isValid())
            return fail(u"date"_s);
        return QVariant(d);
    }
    case TFieldType::DateTime: {
        if (v.metaType().id() == QMetaType::QDateTime)
            return v;
        if (v.metaType().id() == QMetaType::QDate)
            return QVariant(QDateTime(v.toDate(), QTime(0, 0)));
        const QDateTime d = dateTimeFromText(v.toString());
        if (!d.isValid())
            return fail(u"date and time"_s);
        return QVariant(d);
    }
    case TFieldType::Blob:
        if (v.metaType().id() == QMetaType::QByteArray)
            return v;
        return QVariant(v.toString().toUtf8());
    }
    return v;
}

QString FieldTypeName(TFieldType type)
{
    switch (type) {
    case TFieldType::Unknown:
        return u"Unknown"_s;
    case TFieldType::String:
        return u"String"_s;
    case TFieldType::Memo:
        return u"Memo"_s;
    case TFieldType::Integer:
        return u"Integer"_s;
    case TFieldType::LargeInt:
        return u"LargeInt"_s;
    case TFieldType::AutoInc:
        return u"AutoInc"_s;
    case TFieldType::Float:
        return u"Float"_s;
    case TFieldType::Boolean:
        return u"Boolean"_s;
    case TFieldType::Date:
        return u"Date"_s;
    case TFieldType::DateTime:
        return u"DateTime"_s;
    case TFieldType::Blob:
        return u"Blob"_s;
    }
    return QString();
}

TFieldType FieldTypeFromDeclaration(const QString& declared, int* size)
{
    const QString d = declared.trimmed().toUpper();
    if (size) {
        static const QRegularExpression widthRe(u"\\(\\s*(\\d+)"_s);
        const QRegularExpressionMatch m = widthRe.match(d);
        *size = m.hasMatch() ? m.captured(1).toInt() : 0;
    }
    if (d.isEmpty())
        return TFieldType::Unknown;
    if (d.startsWith(u"AUTOINC"_s) || d == u"COUNTER"_s)
        return TFieldType::AutoInc;
    if (d.contains(u"BIGINT"_s) || d.contains(u"INT64"_s) || d.contains(u"LARGEINT"_s))
        return TFieldType::LargeInt;
    if (d.contains(u"INT"_s))
        return TFieldType::Integer;
    if (d.contains(u"BOOL"_s) || d == u"BIT"_s)
        return TFieldType::Boolean;
    if (d.contains(u"DATETIME"_s) || d.contains(u"TIMESTAMP"_s))
        return TFieldType::DateTime;
    if (d.contains(u"DATE"_s))
        return TFieldType::Date;
    if (d.contains(u"CHAR"_s) || d.contains(u"STRING"_s))
        return TFieldType::String;
    if (d.contains(u"TEXT"_s) || d.contains(u"CLOB"_s) || d.contains(u"MEMO"_s))
        return TFieldType::Memo;
    if (d.contains(u"REAL"_s) || d.contains(u"FLOA"_s) || d.contains(u"DOUB"_s) || d.contains(u"NUMERIC"_s) ||
        d.contains(u"DECIMAL"_s) || d.contains(u"MONEY"_s) || d.contains(u"CURRENCY"_s))
        return TFieldType::Float;
    if (d.contains(u"BLOB"_s) || d.contains(u"BINARY"_s) || d.contains(u"IMAGE"_s) ||
        d.contains(u"GRAPHIC"_s))
        return TFieldType::Blob;
    if (d.startsWith(u"NONE"_s)) {
        // Untyped columns hold whatever is put there; they are offered as wide text.
        if (size)
            *size = 32767;
        return TFieldType::String;
    }
    return TFieldType::Unknown;
}
