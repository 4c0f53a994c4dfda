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
// A NULL may keep 8 bytes of room behind it (TagNullRoom), so that a number computed later can be
// written into the row in place (setNumberInPlace); it reads as NULL everywhere.
using TDBRowData = std::unique_ptr<std::byte[]>;

namespace DBRow {

enum Tag : quint32
{
    TagNull = 0,
    TagSmallInt = 1,
    TagInt = 2,
    TagDouble = 3,
    TagText = 4,
    TagBlob = 5,
    TagNullRoom = 6 // NULL with 8 bytes kept for a number; tagOf() reports it as TagNull
};

inline quint32 slotOf(const std::byte* row, int slot)
{
    quint32 s;
    std::memcpy(&s, row + std::size_t(slot) * 4, 4);
    return s;
}

inline Tag tagOf(const std::byte* row, int slot)
{
    if (!row)
        return TagNull;
    const quint32 tag = slotOf(row, slot) & 0xF;
    return tag == TagNullRoom ? TagNull : Tag(tag);
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
// Writes a double, or NULL, into a slot that holds a double or a NULL with room, without moving
// anything else of the row. False (and nothing written) when the slot has no room for a number.
bool setNumberInPlace(std::byte* row, int slot, const double* value);

} // namespace DBRow

// Builds packed rows. Slots may be set in any order; unset slots are NULL. The row is built in
// place, in its final layout (slot table, then the values), so that it can be read as it grows and
// stored with one copy.
class TDBRowBuilder
{
public:
    explicit TDBRowBuilder(int slotCount = 0);
    TDBRowBuilder(const TDBRowBuilder&) = delete;
    TDBRowBuilder& operator=(const TDBRowBuilder&) = delete;

    void reset(int slotCount);
    void clear();
    int slotCount() const { return m_slotCount; }

    void setNull(int slot) { setSlot(slot, DBRow::TagNull); }
    // NULL, with 8 bytes of room for a number to be written in place later.
    void setNullRoom(int slot);
    // setNullRoom() when the slot is NULL without room; anything else stays.
    void reserveNumber(int slot)
    {
        if (slotAt(slot) == DBRow::TagNull)
            setNullRoom(slot);
    }
    bool isNull(int slot) const
    {
        const quint32 tag = slotAt(slot) & 0xF;
        return tag == DBRow::TagNull || tag == DBRow::TagNullRoom;
    }
    void setInt(int slot, qint64 value);
    void setDouble(int slot, double value);
    void setText(int slot, const char* utf8, qsizetype length);
    void setBlob(int slot, const void* data, qsizetype length);
    // Packs a QVariant: numbers, bool (as 0/1), QDate/QDateTime (as ISO text), texts and bytes.
    void setVariant(int slot, const QVariant& value);
    // Copies slot `fromSlot` of another packed row into `slot`.
    void copySlot(int slot, const std::byte* row, int fromSlot);

    // The row as it stands, stored in an allocation of its own.
    TDBRowData build() const;
    // The row as it stands, in the builder's own buffer: valid until the builder changes.
    const std::byte* rowSoFar() const { return m_buffer.get(); }

private:
    quint32 slotAt(int slot) const
    {
        quint32 s;
        std::memcpy(&s, m_buffer.get() + std::size_t(slot) * 4, 4);
        return s;
    }
    void setSlot(int slot, quint32 value) { std::memcpy(m_buffer.get() + std::size_t(slot) * 4, &value, 4); }
    // Appends bytes behind the row; returns their offset from the row's start.
    quint32 append(const void* data, std::size_t length);
    void reserve(std::size_t size);

    int m_slotCount = 0;
    std::unique_ptr<std::byte[]> m_buffer;
    std::size_t m_size = 0; // bytes of the row so far
    std::size_t m_capacity = 0;
};
