#include "uDBRow.h"

#include "uDBError.h"
#include "uDBField.h"

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

void TDBRowBuilder::reset(int slotCount)
{
    m_slots.assign(std::size_t(slotCount), DBRow::TagNull);
    m_data.clear();
}

void TDBRowBuilder::clear()
{
    std::fill(m_slots.begin(), m_slots.end(), quint32(DBRow::TagNull));
    m_data.clear();
}

void TDBRowBuilder::append(const void* data, std::size_t length)
{
    const auto* bytes = static_cast<const std::byte*>(data);
    m_data.insert(m_data.end(), bytes, bytes + length);
}

void TDBRowBuilder::setInt(int slot, qint64 value)
{
    if (value >= kSmallMin && value <= kSmallMax) {
        m_slots[std::size_t(slot)] = (quint32(qint32(value)) << 4) | DBRow::TagSmallInt;
        return;
    }
    const std::size_t offset = m_data.size();
    append(&value, 8);
    m_slots[std::size_t(slot)] = quint32(offset << 4) | DBRow::TagInt;
}

void TDBRowBuilder::setDouble(int slot, double value)
{
    const std::size_t offset = m_data.size();
    append(&value, 8);
    m_slots[std::size_t(slot)] = quint32(offset << 4) | DBRow::TagDouble;
}

void TDBRowBuilder::setNullRoom(int slot)
{
    const std::size_t offset = m_data.size();
    const double zero = 0.0;
    append(&zero, 8);
    m_slots[std::size_t(slot)] = quint32(offset << 4) | DBRow::TagNullRoom;
}

void TDBRowBuilder::setText(int slot, const char* utf8, qsizetype length)
{
    const std::size_t offset = m_data.size();
    const quint32 n = quint32(length);
    append(&n, 4);
    append(utf8, std::size_t(length));
    m_slots[std::size_t(slot)] = quint32(offset << 4) | DBRow::TagText;
}

void TDBRowBuilder::setBlob(int slot, const void* data, qsizetype length)
{
    const std::size_t offset = m_data.size();
    const quint32 n = quint32(length);
    append(&n, 4);
    append(data, std::size_t(length));
    m_slots[std::size_t(slot)] = quint32(offset << 4) | DBRow::TagBlob;
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
        m_slots[std::size_t(slot)] = s;
        return;
    case DBRow::TagInt:
    case DBRow::TagDouble:
    case DBRow::TagNullRoom: {
        const std::size_t offset = m_data.size();
        append(row + (s >> 4), 8);
        m_slots[std::size_t(slot)] = quint32(offset << 4) | (s & 0xF);
        return;
    }
    default: {
        const std::byte* p = row + (s >> 4);
        const std::size_t offset = m_data.size();
        append(p, 4 + std::size_t(lengthAt(p)));
        m_slots[std::size_t(slot)] = quint32(offset << 4) | (s & 0xF);
        return;
    }
    }
}

std::size_t TDBRowBuilder::writeRow(std::byte* out) const
{
    const std::size_t head = m_slots.size() * 4;
    // Offsets in the slots are relative to the data part; shift them to the row start.
    for (std::size_t i = 0; i < m_slots.size(); ++i) {
        quint32 s = m_slots[i];
        const quint32 tag = s & 0xF;
        if (tag != DBRow::TagNull && tag != DBRow::TagSmallInt)
            s = (((s >> 4) + quint32(head)) << 4) | tag;
        std::memcpy(out + i * 4, &s, 4);
    }
    if (!m_data.empty())
        std::memcpy(out + head, m_data.data(), m_data.size());
    return head + m_data.size();
}

TDBRowData TDBRowBuilder::build() const
{
    const std::size_t total = m_slots.size() * 4 + m_data.size();
    if (total > kMaxOffset)
        throw EDatabaseError(u"Record too large to be held in memory (%1 bytes)"_s.arg(qulonglong(total)));
    TDBRowData row = std::make_unique_for_overwrite<std::byte[]>(total ? total : 1);
    writeRow(row.get());
    return row;
}

const std::byte* TDBRowBuilder::buildScratch()
{
    const std::size_t total = m_slots.size() * 4 + m_data.size();
    if (total > kMaxOffset)
        throw EDatabaseError(u"Record too large to be held in memory (%1 bytes)"_s.arg(qulonglong(total)));
    if (m_scratch.size() < total + 1)
        m_scratch.resize(total + 1);
    writeRow(m_scratch.data());
    return m_scratch.data();
}
