#pragma once

#include <QDate>
#include <QDateTime>
#include <QString>
#include <QVariant>

#include <functional>

class TDBField;

// Data types of fields. Values are held in QVariant as: String/Memo QString, Integer int,
// LargeInt/AutoInc qlonglong, Float double, Boolean bool, Date QDate, DateTime QDateTime,
// Blob QByteArray. In the file a Boolean is 0/1, a Date the text "yyyy-MM-dd".
enum class TFieldType
{
    Unknown,
    String,   // text with a width (VARCHAR (n))
    Memo,     // long text (TEXT)
    Integer,  // 32-bit integer
    LargeInt, // 64-bit integer
    AutoInc,  // key assigned by the database (INTEGER PRIMARY KEY)
    Float,    // double
    Boolean,
    Date,
    DateTime,
    Blob // bytes; read lazily when the dataset has an update table
};

// Where a field's value comes from.
enum class TFieldKind
{
    Stored,     // a column of the update table: read with the row, written by Post
    Computed,   // an expression of the query: read with the row, read-only, never written
    Calculated, // set by OnCalcFields when a row is fetched, posted or cancelled
    Internal    // held in the record buffer only: set by OnReadRecord, editable like a stored field
};

using TFieldNotifyEvent = std::function<void(TDBField&)>;

// What holds the values of a set of fields (a dataset or a query).
class TDBFieldOwner
{
public:
    virtual ~TDBFieldOwner() = default;
    virtual QVariant fieldValue(const TDBField& field) const = 0;
    virtual void setFieldValue(TDBField& field, const QVariant& value) = 0;
};

// One field of a dataset or query: its definition and typed access to the current record.
// The AsXxx readers treat NULL as 0, false, an empty text or an invalid date.
class TDBField
{
public:
    TDBField(TDBFieldOwner* owner, const QString& fieldName, TFieldType dataType, TFieldKind kind, int size);
    TDBField(const TDBField&) = delete;
    TDBField& operator=(const TDBField&) = delete;

    // Definition
    QString fieldName() const { return m_fieldName; }
    TFieldType dataType() const { return m_dataType; }
    TFieldKind kind() const { return m_kind; }
    int size() const { return m_size; }
    int index() const { return m_index; }
    bool required() const { return m_required; }
    bool readOnly() const { return m_readOnly; }
    bool visible() const { return m_visible; }
    int precision() const { return m_precision; }
    QString displayLabel() const { return m_displayLabel.isEmpty() ? m_fieldName : m_displayLabel; }
    bool isBlob() const { return m_dataType == TFieldType::Blob; }
    bool isNumeric() const;

    TDBField& setRequired(bool value);
    TDBField& setReadOnly(bool value);
    TDBField& setVisible(bool value);
    TDBField& setPrecision(int value);
    TDBField& setSize(int value);
    TDBField& setDisplayLabel(const QString& value);

    // Value of the current record
    QVariant value() const;
    void setValue(const QVariant& value);
    bool isNull() const { return value().isNull(); }
    void clear() { setValue(QVariant()); }

    double asFloat() const;
    int asInteger() const;
    qint64 asLargeInt() const;
    QString asString() const;
    bool asBoolean() const;
    QDate asDate() const;
    QDateTime asDateTime() const;
    QByteArray asBytes() const;
    void setAsFloat(double value) { setValue(QVariant(value)); }
    void setAsInteger(int value) { setValue(QVariant(value)); }
    void setAsLargeInt(qint64 value) { setValue(QVariant(qlonglong(value))); }
    void setAsString(const QString& value) { setValue(QVariant(value)); }
    void setAsBoolean(bool value) { setValue(QVariant(value)); }
    void setAsDate(const QDate& value) { setValue(QVariant(value)); }
    void setAsDateTime(const QDateTime& value) { setValue(QVariant(value)); }
    void setAsBytes(const QByteArray& value) { setValue(QVariant(value)); }

    // Fired after the value was set in edit or insert state. A handler may detach another field's
    // handler (setOnChange({})) while it works and attach it again afterwards.
    TFieldNotifyEvent onChange() const { return m_onChange; }
    void setOnChange(TFieldNotifyEvent handler) { m_onChange = std::move(handler); }

    // Converts a value to this field's type; throws EDatabaseError when it cannot be converted.
    QVariant convertForWrite(const QVariant& value) const;
    // Converts a value read from the file to this field's type; keeps it as it is when it doesn't fit.
    static QVariant convertForRead(const QVariant& value, TFieldType type);
    // The text of a value the way asString() gives it.
    static QString valueText(const QVariant& value, TFieldType type);

    // Used by the owner.
    void setIndex(int index) { m_index = index; }
    void setDataType(TFieldType type) { m_dataType = type; }
    void setKind(TFieldKind kind) { m_kind = kind; }
    void fireChange();

private:
    TDBFieldOwner* m_owner;
    QString m_fieldName;
    TFieldType m_dataType;
    TFieldKind m_kind;
    int m_size = 0;
    int m_index = -1;
    int m_precision = 0;
    bool m_required = false;
    bool m_readOnly = false;
    bool m_visible = true;
    QString m_displayLabel;
    TFieldNotifyEvent m_onChange;
};

// Name of a field type as used in messages and hints ("Float", "String", ...).
QString FieldTypeName(TFieldType type);
// The field type of a declared SQLite column type ("VARCHAR (500)", "DOUBLE", "BOOLEAN", ...) or
// of a type hint behind "::" in a column alias ("REAL", "VARCHAR", "BIGINT"). size receives the
// width in parentheses, if any. An empty or unknown declaration gives Unknown.
TFieldType FieldTypeFromDeclaration(const QString& declared, int* size = nullptr);
