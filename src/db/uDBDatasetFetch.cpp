// The dataset's reading of rows: open, close, refresh and deferred fetches, the record handlers of
// each record read, the recalculation of stored rows, and the typed record they work on. The rest
// of TDBDataset is in uDBDataset.cpp.

#include "uDBDataset.h"

#include "uDBError.h"
#include "uDBFilter.h"

#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

// Reads the pages of a large file through a memory map for the length of a fetch of all rows: no
// copy of each page out of the system's cache, and no call into the system per page. The map is
// given up afterwards, so that it does not stay in the process beyond the fetch. Small files read as
// they always do.
class TMappedReads
{
public:
    static constexpr qint64 kMinimumFileSize = 8 * 1024 * 1024;
    static constexpr qint64 kMaximumMapSize = 0x7fff0000; // SQLite's own upper bound

    TMappedReads(sqlite3* db, const QString& path) : m_db(db)
    {
        const qint64 size = path.isEmpty() ? 0 : QFileInfo(path).size();
        if (size < kMinimumFileSize)
            return;
        m_mapped = pragma(std::min(size + 1024 * 1024, kMaximumMapSize));
    }
    ~TMappedReads()
    {
        if (m_mapped)
            pragma(0);
    }
    TMappedReads(const TMappedReads&) = delete;
    TMappedReads& operator=(const TMappedReads&) = delete;

private:
    bool pragma(qint64 size)
    {
        const QByteArray sql = "PRAGMA main.mmap_size = " + QByteArray::number(size);
        return sqlite3_exec(m_db, sql.constData(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }

    sqlite3* m_db;
    bool m_mapped = false;
};

} // namespace

void TDBDataset::RecordBuffer::reset(std::size_t count)
{
    if (values.size() != count) {
        values.assign(count, QVariant());
        assigned.assign(count, 0);
        touched.clear();
        return;
    }
    for (int i : touched) {
        values[std::size_t(i)] = QVariant();
        assigned[std::size_t(i)] = 0;
    }
    touched.clear();
}

void TDBDataset::RecordBuffer::set(std::size_t field, QVariant value)
{
    values[field] = std::move(value);
    if (!assigned[field]) {
        assigned[field] = 1;
        touched.push_back(int(field));
    }
}

// Makes `row` the record that field reads and writes go to while OnReadRecord / OnCalcFields run.
class TDBDataset::FetchScope
{
public:
    FetchScope(TDBDataset& ds, const std::byte* row, RecordBuffer& buffer)
        : m_ds(ds), m_prevRow(ds.m_fetchRow), m_prevBuffer(ds.m_fetchBuffer)
    {
        buffer.reset(ds.m_fields.size());
        ds.m_fetchRow = row;
        ds.m_fetchBuffer = &buffer;
    }
    ~FetchScope()
    {
        m_ds.m_fetchRow = m_prevRow;
        m_ds.m_fetchBuffer = m_prevBuffer;
    }
    FetchScope(const FetchScope&) = delete;
    FetchScope& operator=(const FetchScope&) = delete;

private:
    TDBDataset& m_ds;
    const std::byte* m_prevRow;
    RecordBuffer* m_prevBuffer;
};

// --- Recalculation record -----------------------------------------------------------------------

namespace {

// A field's value as its reader would convert it, for the number tags; false when the slow path
// (through TDBField) has to decide.
bool wholeOfSlot(const std::byte* row, const TDBField& field, qint64* out)
{
    const quint32 slot = DBRow::slotOf(row, field.index());
    double d = 0.0;
    switch (slot & 0xF) {
    case DBRow::TagNull:
    case DBRow::TagNullRoom:
        *out = 0;
        return true;
    case DBRow::TagSmallInt:
        *out = qint32(slot) >> 4;
        break;
    case DBRow::TagInt:
        std::memcpy(out, row + (slot >> 4), 8);
        break;
    case DBRow::TagDouble:
        std::memcpy(&d, row + (slot >> 4), 8);
        *out = std::isfinite(d) ? qRound64(d) : 0;
        break;
    default:
        return false;
    }
    if (field.dataType() == TFieldType::Integer)
        *out = int(*out);
    return true;
}

} // namespace

bool TDBRecalcRecord::isNull(const TDBField& field) const
{
    const int i = field.index();
    if (m_ds.m_fetchBuffer->assigned[std::size_t(i)] || m_ds.m_lazyBlob[std::size_t(i)])
        return field.isNull();
    for (const auto& [pendingField, value] : m_pending)
        if (pendingField == i)
            return !value.has_value();
    return DBRow::isNull(m_row, i);
}

double TDBRecalcRecord::asFloat(const TDBField& field) const
{
    const int i = field.index();
    if (m_ds.m_fetchBuffer->assigned[std::size_t(i)])
        return field.asFloat();
    for (const auto& [pendingField, value] : m_pending)
        if (pendingField == i)
            return value.value_or(0.0);
    const quint32 slot = DBRow::slotOf(m_row, i);
    const quint32 tag = slot & 0xF;
    if (tag == DBRow::TagNull || tag == DBRow::TagNullRoom)
        return 0.0;
    switch (field.dataType()) {
    case TFieldType::Float:
        if (tag == DBRow::TagDouble) {
            double d;
            std::memcpy(&d, m_row + (slot >> 4), 8);
            return d;
        }
        if (tag == DBRow::TagSmallInt)
            return double(qint32(slot) >> 4);
        if (tag == DBRow::TagInt) {
            qint64 n;
            std::memcpy(&n, m_row + (slot >> 4), 8);
            return double(n);
        }
        break;
    case TFieldType::Integer:
    case TFieldType::LargeInt:
    case TFieldType::AutoInc: {
        if (tag == DBRow::TagDouble) {
            double d;
            std::memcpy(&d, m_row + (slot >> 4), 8);
            if (!std::isfinite(d))
                return d; // kept as it is by the reader
        }
        qint64 n = 0;
        if (wholeOfSlot(m_row, field, &n))
            return double(n);
        break;
    }
    default:
        break;
    }
    return field.asFloat();
}

qint64 TDBRecalcRecord::asLargeInt(const TDBField& field) const
{
    const int i = field.index();
    if (m_ds.m_fetchBuffer->assigned[std::size_t(i)])
        return field.asLargeInt();
    for (const auto& [pendingField, value] : m_pending) {
        if (pendingField == i) {
            const double d = value.value_or(0.0);
            return std::isfinite(d) ? qRound64(d) : 0;
        }
    }
    switch (field.dataType()) {
    case TFieldType::Float:
    case TFieldType::Integer:
    case TFieldType::LargeInt:
    case TFieldType::AutoInc: {
        qint64 n = 0;
        if (wholeOfSlot(m_row, field, &n))
            return n;
        break;
    }
    default:
        break;
    }
    return field.asLargeInt();
}

void TDBRecalcRecord::setFloat(const TDBField& field, std::optional<double> value)
{
    if (field.kind() != TFieldKind::Calculated || field.dataType() != TFieldType::Float)
        throw EDatabaseError(u"Field '%1' cannot be modified"_s.arg(field.fieldName()));
    const int i = field.index();
    if (!m_inPlace) {
        m_ds.m_fetchBuffer->set(std::size_t(i), value ? QVariant(*value) : QVariant());
        return;
    }
    for (auto& [pendingField, pendingValue] : m_pending) {
        if (pendingField == i) {
            pendingValue = value;
            return;
        }
    }
    if (!DBRow::setNumberInPlace(m_row, i, value ? &*value : nullptr))
        m_pending.emplace_back(i, value);
}
// --- Open / close -----------------------------------------------------------------------------

void TDBDataset::setActive(bool value)
{
    if (value)
        open();
    else
        close();
}

QString TDBDataset::keyColumnName() const
{
    if (!m_keyFields.isEmpty()) {
        if (m_keyFields.contains(u';'))
            throw EDatabaseError(u"Only one key field is supported: '%1'"_s.arg(m_keyFields));
        return m_keyFields;
    }
    QString key;
    int count = 0;
    for (const TDBColumnInfo& c : m_tableColumns) {
        if (c.pk > 0) {
            key = c.name;
            ++count;
        }
    }
    return count == 1 ? key : QString();
}

QString TDBDataset::effectiveSQL(QSet<QString>* lazyColumns) const
{
    QString sql = TDBSqlText::quoteTypeHints(m_sql).trimmed();
    while (sql.endsWith(u';'))
        sql.chop(1);
    lazyColumns->clear();
    if (m_updateTableName.isEmpty() || keyColumnName().isEmpty())
        return sql;
    for (const TDBColumnInfo& c : m_tableColumns) {
        bool blob = FieldTypeFromDeclaration(c.declType) == TFieldType::Blob;
        if (!m_dynamicFields) {
            const TDBField* declared = findField(c.name);
            if (declared)
                blob = declared->isBlob() && declared->kind() == TFieldKind::Stored;
        }
        if (blob)
            lazyColumns->insert(c.name.toLower());
    }
    return TDBSqlText::excludeColumns(sql, m_updateTableName, m_tableColumns, *lazyColumns);
}

void TDBDataset::prepareFields(TDBStatement& stmt, const QSet<QString>& lazyColumns, bool createFields)
{
    const int columns = stmt.columnCount();
    m_columnField.assign(std::size_t(columns), -1);
    auto tableColumn = [&](const QString& name) -> const TDBColumnInfo* {
        for (const TDBColumnInfo& c : m_tableColumns)
            if (c.name.compare(name, Qt::CaseInsensitive) == 0)
                return &c;
        return nullptr;
    };
    int pkCount = 0;
    for (const TDBColumnInfo& c : m_tableColumns)
        pkCount += c.pk > 0 ? 1 : 0;

    if (createFields) {
        m_fields.clear();
        QSet<QString> used;
        for (int c = 0; c < columns; ++c) {
            QString name;
            QString hint;
            TDBSqlText::splitTypeHint(stmt.columnName(c), &name, &hint);
            QString unique = name;
            for (int n = 1; used.contains(unique.toLower()); ++n)
                unique = name + u"_"_s + QString::number(n);
            used.insert(unique.toLower());
            const QString decl = stmt.columnDeclType(c);
            const TDBColumnInfo* info = m_updateTableName.isEmpty() ? nullptr : tableColumn(name);
            const bool lazy = info && unique == name && lazyColumns.contains(name.toLower());
            int size = 0;
            TFieldType type = FieldTypeFromDeclaration(hint, &size);
            if (type == TFieldType::Unknown)
                type = FieldTypeFromDeclaration(lazy ? info->declType : decl, &size);
            if (lazy)
                type = TFieldType::Blob;
            TFieldKind kind = TFieldKind::Stored;
            if (!m_updateTableName.isEmpty() && !(info && (lazy || !decl.isEmpty()) && unique == name))
                kind = TFieldKind::Computed;
            auto field = std::make_unique<TDBField>(this, unique, type, kind, size);
            if (info && kind == TFieldKind::Stored) {
                if (info->pk > 0 && pkCount == 1 &&
                    info->declType.trimmed().compare(u"INTEGER"_s, Qt::CaseInsensitive) == 0) {
                    field->setDataType(TFieldType::AutoInc);
                    field->setReadOnly(true);
                } else {
                    field->setRequired(info->notNull && !info->hasDefault && info->pk == 0);
                }
            }
            field->setIndex(int(m_fields.size()));
            m_columnField[std::size_t(c)] = lazy ? -1 : field->index();
            m_fields.push_back(std::move(field));
        }
        rebuildFieldIndex();
    } else {
        QHash<QString, int> columnByName;
        for (int c = 0; c < columns; ++c) {
            QString name;
            TDBSqlText::splitTypeHint(stmt.columnName(c), &name, nullptr);
            if (!columnByName.contains(name.toLower()))
                columnByName.insert(name.toLower(), c);
        }
        for (const auto& field : m_fields) {
            if (field->kind() == TFieldKind::Calculated || field->kind() == TFieldKind::Internal)
                continue;
            const QString lower = field->fieldName().toLower();
            if (field->isBlob() && lazyColumns.contains(lower))
                continue; // read by key, from the update table
            const int c = columnByName.value(lower, -1);
            if (c < 0)
                throw EDatabaseError(u"Field '%1' not found"_s.arg(field->fieldName()));
            m_columnField[std::size_t(c)] = field->index();
        }
    }

    m_lazyBlob.assign(m_fields.size(), 0);
    m_numberRoomFields.clear();
    for (const auto& field : m_fields) {
        if (field->isBlob() && field->kind() == TFieldKind::Stored &&
            lazyColumns.contains(field->fieldName().toLower()))
            m_lazyBlob[std::size_t(field->index())] = 1;
        if (field->kind() == TFieldKind::Calculated && field->dataType() == TFieldType::Float)
            m_numberRoomFields.push_back(field->index());
    }

    m_keyField = -1;
    const QString key = m_updateTableName.isEmpty() ? m_keyFields : keyColumnName();
    if (!key.isEmpty()) {
        const TDBField* keyField = findField(key);
        if (!keyField)
            throw EDatabaseError(u"Field '%1' not found"_s.arg(key));
        m_keyField = keyField->index();
    }
    m_rowBuilder.reset(int(m_fields.size()));
    m_blobStatements.clear();
    m_blobStatements.resize(m_fields.size());
}

void TDBDataset::readStatementRow(sqlite3_stmt* h)
{
    m_rowBuilder.clear();
    const int columns = int(m_columnField.size());
    for (int c = 0; c < columns; ++c) {
        const int f = m_columnField[std::size_t(c)];
        if (f < 0)
            continue;
        switch (sqlite3_column_type(h, c)) {
        case SQLITE_INTEGER:
            m_rowBuilder.setInt(f, sqlite3_column_int64(h, c));
            break;
        case SQLITE_FLOAT:
            m_rowBuilder.setDouble(f, sqlite3_column_double(h, c));
            break;
        case SQLITE_TEXT:
            m_rowBuilder.setText(f, reinterpret_cast<const char*>(sqlite3_column_text(h, c)),
                                 sqlite3_column_bytes(h, c));
            break;
        case SQLITE_BLOB:
            m_rowBuilder.setBlob(f, sqlite3_column_blob(h, c), sqlite3_column_bytes(h, c));
            break;
        default:
            break;
        }
    }
}

void TDBDataset::keepNumberRoom(TDBRowBuilder& builder) const
{
    for (int f : m_numberRoomFields)
        builder.reserveNumber(f);
}

TDBRowData TDBDataset::finishRow(TDBRowBuilder& builder)
{
    if (!m_events[EvReadRecord] && !m_events[EvCalcFields]) {
        keepNumberRoom(builder);
        return builder.build();
    }
    // The handlers read the record as the builder holds it; what they set is added behind it, and the
    // row is then stored with one copy.
    const std::byte* scratch = builder.rowSoFar();
    RecordBuffer local;
    RecordBuffer& buffer = m_fetchBuffer ? local : m_readBuffer;
    {
        FetchScope scope(*this, scratch, buffer);
        fire(EvReadRecord);
        fire(EvCalcFields);
    }
    for (int i : buffer.touched)
        builder.setVariant(i, buffer.values[std::size_t(i)]);
    keepNumberRoom(builder);
    return builder.build();
}

void TDBDataset::fillBuilder(TDBRowBuilder& builder, const std::byte* base, const RecordBuffer& buffer) const
{
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        if (m_lazyBlob[i])
            continue;
        if (buffer.assigned.size() > i && buffer.assigned[i])
            builder.setVariant(int(i), buffer.values[i]);
        else
            builder.copySlot(int(i), base, int(i));
    }
}

void TDBDataset::fetchRows(TDBStatement& stmt)
{
    const TMappedReads mapped(db(), m_connection->databasePath());
    std::vector<TDBRowData> rows;
    rows.reserve(std::max<std::size_t>(m_rows.size(), 64));
    sqlite3_stmt* h = stmt.handle();
    {
        TDBStatementResetter resetter(stmt);
        while (stmt.step()) {
            readStatementRow(h);
            rows.push_back(finishRow(m_rowBuilder));
        }
    }
    m_rows.swap(rows);
    m_rowsPending = false;
}

void TDBDataset::resolveUnknownTypes()
{
    for (auto& field : m_fields) {
        if (field->dataType() != TFieldType::Unknown)
            continue;
        TFieldType type = TFieldType::String;
        for (const TDBRowData& row : m_rows) {
            const DBRow::Tag tag = DBRow::tagOf(row.get(), field->index());
            if (tag == DBRow::TagNull)
                continue;
            if (tag == DBRow::TagSmallInt || tag == DBRow::TagInt)
                type = TFieldType::LargeInt;
            else if (tag == DBRow::TagDouble)
                type = TFieldType::Float;
            else if (tag == DBRow::TagBlob)
                type = TFieldType::Blob;
            break;
        }
        field->setDataType(type);
    }
}

void TDBDataset::open(TRowFetch fetch)
{
    if (active())
        return;
    if (!m_connection)
        throw EDatabaseError(u"Dataset has no connection"_s);
    fire(EvBeforeOpen);
    const bool tell = beginNotify();
    if (tell)
        emit beforeReset();
    try {
        sqlite3* h = db();
        m_tableColumns =
            m_updateTableName.isEmpty() ? QList<TDBColumnInfo>() : m_connection->tableInfo(m_updateTableName);
        if (!m_updateTableName.isEmpty() && m_tableColumns.isEmpty())
            throw EDatabaseError(u"no such table: %1"_s.arg(m_updateTableName));
        const bool createFields = m_fields.empty() || m_dynamicFields;
        m_dynamicFields = createFields;
        QSet<QString> lazy;
        m_effectiveSQL = effectiveSQL(&lazy);
        TDBStatement stmt(h, m_effectiveSQL);
        if (stmt.isNull() || stmt.columnCount() == 0)
            throw EDatabaseError(u"The statement returns no rows: %1"_s.arg(m_sql));
        m_bindings.applyTo(stmt);
        prepareFields(stmt, lazy, createFields);
        parseIndexFieldNames();
        if (m_filter)
            bindFilter();
        m_state = TDatasetState::Browse; // handlers of the first fetch see an open dataset
        if (fetch == TRowFetch::Now) {
            fetchRows(stmt);
            resolveUnknownTypes();
        } else {
            m_rows.clear();
            m_rowsPending = true;
        }
        rebuildView(false);
    } catch (...) {
        closeInternal();
        if (tell)
            emit afterReset();
        throw;
    }
    m_cursor = m_view.empty() ? -1 : 0;
    m_bof = true;
    m_eof = m_view.empty();
    if (tell)
        emit afterReset();
    notifyState();
    fire(EvAfterOpen);
    notifyScroll();
    fire(EvAfterScroll);
}

void TDBDataset::closeInternal()
{
    m_state = TDatasetState::Inactive;
    m_rows.clear();
    m_rowsPending = false;
    m_view.clear();
    m_cursor = -1;
    m_eof = true;
    m_bof = true;
    m_buffer.reset(0);
    m_modified = false;
    m_blobCache.clear();
    m_blobStatements.clear();
    m_rereadStatement.reset();
    m_columnField.clear();
    m_lazyBlob.clear();
    m_keyField = -1;
    m_effectiveSQL.clear();
    m_tableColumns.clear();
    m_changedRows.clear();
    if (m_dynamicFields) {
        m_fields.clear();
        m_dynamicFields = false;
        rebuildFieldIndex();
    }
}

void TDBDataset::close()
{
    if (!active())
        return;
    fire(EvBeforeClose);
    const bool tell = beginNotify();
    if (tell)
        emit beforeReset();
    closeInternal();
    if (tell)
        emit afterReset();
    notifyState();
    fire(EvAfterClose);
}

void TDBDataset::connectionClosing()
{
    try {
        close();
    } catch (...) {
        // The connection goes away whatever a close handler says: release every statement.
        const bool tell = beginNotify();
        if (tell)
            emit beforeReset();
        closeInternal();
        if (tell)
            emit afterReset();
    }
}

void TDBDataset::connectionDestroyed()
{
    connectionClosing();
    m_connection = nullptr;
}

void TDBDataset::refresh()
{
    requireActive();
    checkBrowseMode();
    fire(EvBeforeRefresh);
    const QVariant key = m_cursor >= 0 ? keyOfRow(currentRow()) : QVariant();
    const int oldCursor = m_cursor;
    const bool tell = beginNotify();
    if (tell)
        emit beforeReset();
    try {
        TDBStatement stmt(db(), m_effectiveSQL);
        if (std::size_t(stmt.columnCount()) != m_columnField.size())
            throw EDatabaseError(
                u"The columns of the statement have changed; close and open the dataset again"_s);
        m_bindings.applyTo(stmt);
        fetchRows(stmt);
        m_blobCache.clear();
        rebuildView(false);
    } catch (...) {
        rebuildView(false);
        if (tell)
            emit afterReset();
        throw;
    }
    int row = key.isNull() ? -1 : rowOfKey(key);
    if (row < 0 && !m_view.empty())
        row = std::clamp(oldCursor, 0, int(m_view.size()) - 1);
    m_cursor = row;
    m_bof = m_cursor <= 0;
    m_eof = m_view.empty();
    if (tell)
        emit afterReset();
    notifyScroll();
    fire(EvAfterRefresh);
}

void TDBDataset::fetchPendingRows()
{
    if (!active() || !m_rowsPending)
        return;
    const bool inserting = m_state == TDatasetState::Insert;
    const std::byte* current = inserting ? nullptr : currentRow();
    const QVariant key = current ? keyOfRow(current) : QVariant();
    const int oldCursor = m_cursor;
    const bool tell = beginNotify();
    if (tell)
        emit beforeReset();
    try {
        TDBStatement stmt(db(), m_effectiveSQL);
        m_bindings.applyTo(stmt);
        // Rows posted in the meantime are in the file: the fetch gives them with the others.
        fetchRows(stmt);
        resolveUnknownTypes();
    } catch (...) {
        m_rowsPending = false;
        if (tell)
            emit afterReset();
        throw;
    }
    rebuildView(false);
    int row = key.isNull() ? -1 : rowOfKey(key);
    if (inserting) {
        // The new record stays the current one, at the end.
        m_view.push_back(kPendingRow);
        row = int(m_view.size()) - 1;
    }
    if (row < 0 && !m_view.empty())
        row = 0;
    m_cursor = row;
    m_bof = m_cursor <= 0;
    m_eof = m_view.empty();
    if (tell)
        emit afterReset();
    notifyScroll();
    if (m_cursor != oldCursor || !key.isNull())
        fire(EvAfterScroll);
}

void TDBDataset::recalcRows(const std::function<void(TDBRecalcRecord&)>& calc)
{
    requireActive();
    const bool tell = beginNotify();
    if (tell)
        emit beforeReset();
    TDBRecalcRecord record(*this, true);
    RecordBuffer buffer;
    try {
        for (TDBRowData& stored : m_rows) {
            if (!stored)
                continue;
            record.m_row = stored.get();
            record.m_pending.clear();
            {
                FetchScope scope(*this, stored.get(), buffer);
                calc(record);
            }
            // Values set through field objects, or that found no room: the row is built anew.
            if (!buffer.any() && record.m_pending.empty())
                continue;
            bool inPlace = record.m_pending.empty();
            for (int f : buffer.touched) {
                const QVariant& v = buffer.values[std::size_t(f)];
                const double number = v.toDouble();
                if (!(v.isNull() || v.metaType().id() == QMetaType::Double) ||
                    !DBRow::setNumberInPlace(stored.get(), f, v.isNull() ? nullptr : &number))
                    inPlace = false;
            }
            if (inPlace)
                continue;
            TDBRowBuilder builder(int(m_fields.size()));
            fillBuilder(builder, stored.get(), buffer);
            for (const auto& [field, value] : record.m_pending) {
                if (value)
                    builder.setDouble(field, *value);
                else
                    builder.setNull(field);
            }
            keepNumberRoom(builder);
            stored = builder.build();
        }
    } catch (...) {
        if (tell)
            emit afterReset();
        throw;
    }
    if (m_filtered || !m_sortKeys.empty())
        rebuildView(true);
    if (tell)
        emit afterReset();
    notifyScroll();
}

TDBRecalcRecord TDBDataset::recordBeingRead()
{
    if (!m_fetchBuffer || !m_fetchRow)
        throw EDatabaseError(u"No record is being read"_s);
    TDBRecalcRecord record(*this, false);
    record.m_row = const_cast<std::byte*>(m_fetchRow); // read only: writes go to the buffer
    return record;
}

void TDBDataset::calcCurrentRow()
{
    if (!m_events[EvCalcFields])
        return;
    const std::byte* original = currentRow();
    RecordBuffer buffer;
    {
        FetchScope scope(*this, original, buffer);
        fire(EvCalcFields);
    }
    if (buffer.any()) {
        TDBRowBuilder builder(int(m_fields.size()));
        fillBuilder(builder, original, buffer);
        keepNumberRoom(builder);
        m_rows[m_view[std::size_t(m_cursor)]] = builder.build();
    }
}
