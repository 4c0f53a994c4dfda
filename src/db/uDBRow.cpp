#include "uDBRow.h"

#include "uDBError.h"
#include "uDBField.h"

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 kMaxOffset = (1u << 28) - 1;
constexpr qint64 kSmallMin = -(qint64(1) << 27);
constexpr qint64 kSmallMax = (qint64(1) << 27) - 1;

const std::byte* payload(const std::byte* row, quint32 s)
{
    return row + (s >> 4);
}

quint32 lengthAt(const std::byte* p)
{
    quint32 n;
    std::memcpy(&n, p, 4);
    return n;
}

} // namespace

namespace DBRow {

QVariant rawValue(const std::byte* row, int slot)
{
    if (!row)
        return QVariant();
    const quint32 s = slotOf(row, slot);
    switch (s & 0xF) {
    case TagSmallInt:
        return QVariant(qlonglong(qint32(s) >> 4));
    case TagInt: {
        qint64 v;
        std::memcpy(&v, payload(row, s), 8);
        return QVariant(qlonglong(v));
    }
    case TagDouble: {
        double v;
        std::memcpy(&v, payload(row, s), 8);
        return QVariant(v);
    }
    case TagText: {
        const std::byte* p = payload(row, s);
        return QVariant(QString::fromUtf8(reinterpret_cast<const char*>(p + 4), qsizetype(lengthAt(p))));
    }
    case TagBlob: {
        const std::byte* p = payload(row, s);
        return QVariant(QByteArray(reinterpret_cast<const char*>(p + 4), qsizetype(lengthAt(p))));
    }
    default:
        return QVariant();
    }
}

bool numberValue(const std::byte* row, int slot, double* out)
{
    if (!row)
        return false;
    const quint32 s = slotOf(row, slot);
    switch (s & 0xF) {
    case TagSmallInt:
        *out = double(qint32(s) >> 4);
        return true;
    case TagInt: {
        qint64 v;
        std::memcpy(&v, payload(row, s), 8);
        *out = double(v);
        return true;
    }
    case TagDouble:
        std::memcpy(out, payload(row, s), 8);
        return true;
    case TagText: {
        const std::byte* p = payload(row, s);
        bool ok = false;
        *out = QByteArray::fromRawData(reinterpret_cast<const char*>(p + 4), qsizetype(lengthAt(p)))
                   .trimmed()
                   .toDouble(&ok);
        return ok;
    }
    default:
        return false;
    }
}

QString textValue(const std::byte* row, int slot)
{
    const QVariant v = rawValue(row, slot);
    if (v.metaType().id() == QMetaType::Double)
        return QString::number(v.toDouble(), 'g', 15);
    if (v.metaType().id() == QMetaType::QByteArray)
        return QString::fromUtf8(v.toByteArray());
    return v.toString();
}

bool setNumberInPlace(std::byte* row, int slot, const double* value)
{
    const quint32 s = slotOf(row, slot);
    const quint32 tag = s & 0xF;
    if (tag != TagDouble && tag != TagNullRoom)
        return !value && tag == TagNull;
    quint32 updated = (s & ~quint32(0xF)) | (value ? quint32(TagDouble) : quint32(TagNullRoom));
    if (value)
        std::memcpy(row + (s >> 4), value, 8);
    std::memcpy(row + std::size_t(slot) * 4, &updated, 4);
    return true;
}

} // namespace DBRow

TDBRowBuilder::TDBRowBuilder(int slotCount)
{
    reset(slotCount);
}

void TDBRowBuilder::reserve(std::size_t size)
{
    if (size <= m_capacity)
        return;
    if (size > kMaxOffset)
        throw EDatabaseError(u"Record too large to be held in memory (%1 bytes)"_s.arg(qulonglong(size)));
    const std::size_t capacity = std::max<std::size_t>({size, m_capacity * 2, 1024});
    auto grown = std::make_unique_for_overwrite<std::byte[]>(capacity);
    if (m_size)
        std::memcpy(grown.get(), m_buffer.get(), m_size);
    m_buffer = std::move(grown);
    m_capacity = capacity;
}

void TDBRowBuilder::reset(int slotCount)
{
    m_slotCount = slotCount;
    m_size = 0;
    reserve(std::size_t(slotCount) * 4);
    clear();
}

void TDBRowBuilder::clear()
{
    // Every slot NULL (tag 0), no values.
    m_size = std::size_t(m_slotCount) * 4;
    if (m_size)
        std::memset(m_buffer.get(), 0, m_size);
}

quint32 TDBRowBuilder::append(const void* data, std::size_t length)
{
    const std::size_t offset = m_size;
    reserve(offset + length);
    if (length)
        std::memcpy(m_buffer.get() + offset, data, length);
    m_size = offset + length;
    return quint32(offset);
}

void TDBRowBuilder::setNullRoom(int slot)
{
    const double zero = 0.0;
    setSlot(slot, (append(&zero, 8) << 4) | DBRow::TagNullRoom);
}

void TDBRowBuilder::setInt(int slot, qint64 value)
{
    if (value >= kSmallMin && value <= kSmallMax) {
        setSlot(slot, (quint32(qint32(value)) << 4) | DBRow::TagSmallInt);
        return;
    }
    setSlot(slot, (append(&value, 8) << 4) | DBRow::TagInt);
}

void TDBRowBuilder::setDouble(int slot, double value)
{
    setSlot(slot, (append(&value, 8) << 4) | DBRow::TagDouble);
}

void TDBRowBuilder::setText(int slot, const char* utf8, qsizetype length)
{
    const quint32 n = quint32(length);
    const quint32 offset = append(&n, 4);
    append(utf8, std::size_t(length));
    setSlot(slot, (offset << 4) | DBRow::TagText);
}

void TDBRowBuilder::setBlob(int slot, const void* data, qsizetype length)
{
    const quint32 n = quint32(length);
    const quint32 offset = append(&n, 4);
    append(data, std::size_t(length));
    setSlot(slot, (offset << 4) | DBRow::TagBlob);
}

void TDBRowBuilder::setVariant(int slot, const QVariant& value)
{
    if (value.isNull()) {
        setNull(slot);
        return;
    }
    switch (value.metaType().id()) {
    case QMetaType::Bool:
        setInt(slot, value.toBool() ? 1 : 0);
        return;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
        setInt(slot, value.toLongLong());
        return;
    case QMetaType::Double:
    case QMetaType::Float:
        setDouble(slot, value.toDouble());
        return;
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        setBlob(slot, bytes.constData(), bytes.size());
        return;
    }
    case QMetaType::QString: {
        const QByteArray text = value.toString().toUtf8();
        setText(slot, text.constData(), text.size());
        return;
    }
    default: {
        const QByteArray text = TDBField::valueText(value, TFieldType::Unknown).toUtf8();
        setText(slot, text.constData(), text.size());
        return;
    }
    }
}

void TDBRowBuilder::copySlot(int slot, const std::byte* row, int fromSlot)
{
    if (!row) {
        setNull(slot);
        return;
    }
    const quint32 s = DBRow::slotOf(row, fromSlot);
    switch (s & 0xF) {
    case DBRow::TagNull:
    case DBRow::TagSmallInt:
        setSlot(slot, s);
        return;
    case DBRow::TagInt:
    case DBRow::TagDouble:
    case DBRow::TagNullRoom:
        setSlot(slot, (append(row + (s >> 4), 8) << 4) | (s & 0xF));
        return;
    default: {
        const std::byte* p = row + (s >> 4);
        setSlot(slot, (append(p, 4 + std::size_t(lengthAt(p))) << 4) | (s & 0xF));
        return;
    }
    }
}

TDBRowData TDBRowBuilder::build() const
{
    TDBRowData row = std::make_unique_for_overwrite<std::byte[]>(m_size ? m_size : 1);
    if (m_size)
        std::memcpy(row.get(), m_buffer.get(), m_size);
    return row;
}
