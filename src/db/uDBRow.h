#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

// Packed storage of one fetched row: a table of 32-bit slots, one per field, followed by the
// values. A slot holds a type tag in its low 4 bits and, above it, either a small integer or the
// offset of the value from the start of the row. Integers and doubles take 8 bytes, texts their
// UTF-8 bytes behind a 32-bit length, NULLs and small integers nothing. One allocation per row.
using TDBRowData = std::unique_ptr<std::byte[]>;

namespace DBRow {

enum Tag : quint32
{
    TagNull = 0,
    TagSmallInt = 1,
    TagInt = 2,
    TagDouble = 3,
    TagText = 4,
    TagBlob = 5
};

inline quint32 slotOf(const std::byte* row, int slot)
{
    quint32 s;
    std::memcpy(&s, row + std::size_t(slot) * 4, 4);
    return s;
}

inline Tag tagOf(const std::byte* row, int slot)
{
    return row ? Tag(slotOf(row, slot) & 0xF) : TagNull;
}

inline bool isNull(const std::byte* row, int slot)
{
    return tagOf(row, slot) == TagNull;
}

// The value as SQLite held it: qlonglong, double, QString, QByteArray or null.
QVariant rawValue(const std::byte* row, int slot);
// The value as a number; false when it is NULL or a text that is no number.
bool numberValue(const std::byte* row, int slot, double* out);
// The value as text (numbers in the "C" format); empty for NULL.
QString textValue(const std::byte* row, int slot);

} // namespace DBRow

// Builds packed rows. Slots may be set in any order; unset slots are NULL.
class TDBRowBuilder
{
public:
    explicit TDBRowBuilder(int slotCount = 0);

    void reset(int slotCount);
    void clear();
    int slotCount() const { return int(m_slots.size()); }

    void setNull(int slot) { m_slots[std::size_t(slot)] = DBRow::TagNull; }
    void setInt(int slot, qint64 value);
    void setDouble(int slot, double value);
    void setText(int slot, const char* utf8, qsizetype length);
    void setBlob(int slot, const void* data, qsizetype length);
    // Packs a QVariant: numbers, bool (as 0/1), QDate/QDateTime (as ISO text), texts and bytes.
    void setVariant(int slot, const QVariant& value);
    // Copies slot `fromSlot` of another packed row into `slot`.
    void copySlot(int slot, const std::byte* row, int fromSlot);

    TDBRowData build() const;

private:
    void append(const void* data, std::size_t length);

    std::vector<quint32> m_slots;
    std::vector<std::byte> m_data;
};
