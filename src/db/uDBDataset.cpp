#include "uDBDataset.h"

#include "uDBError.h"
#include "uDBFilter.h"

#include <sqlite3.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kDefaultBlobCache = 32 * 1024 * 1024;

bool isNumericType(TFieldType type)
{
    switch (type) {
    case TFieldType::Integer:
    case TFieldType::LargeInt:
    case TFieldType::AutoInc:
    case TFieldType::Float:
    case TFieldType::Boolean:
        return true;
    default:
        return false;
    }
}

bool isTextType(TFieldType type)
{
    return type == TFieldType::String || type == TFieldType::Memo || type == TFieldType::Unknown;
}

// A sort key of one field of one record.
struct KeyValue
{
    bool isNull = true;
    bool isNumber = false;
    double number = 0.0;
    QString text;
};

int compareKeyValues(const KeyValue& a, const KeyValue& b, bool caseInsensitive)
{
    if (a.isNull || b.isNull)
        return a.isNull == b.isNull ? 0 : (a.isNull ? -1 : 1);
    if (a.isNumber != b.isNumber)
        return a.isNumber ? -1 : 1; // numbers before texts, as in SQLite
    if (a.isNumber)
        return a.number < b.number ? -1 : (a.number > b.number ? 1 : 0);
    const int c = a.text.compare(b.text, caseInsensitive ? Qt::CaseInsensitive : Qt::CaseSensitive);
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

} // namespace

// One packed record as the filter sees it.
class TDBDataset::RowRecord : public TDBFilterRecord
{
public:
    RowRecord(const TDBDataset& ds, const std::byte* row) : m_ds(ds), m_row(row) {}
    QVariant filterValue(int field) const override
    {
        return m_ds.decode(m_row, *m_ds.m_fields[std::size_t(field)]);
    }

private:
    const TDBDataset& m_ds;
    const std::byte* m_row;
};

TDBDataset::TDBDataset(TDBConnection* connection, QObject* parent) : QObject(parent)
{
    m_blobCache.setMaxCost(kDefaultBlobCache);
    setConnection(connection);
}

TDBDataset::~TDBDataset()
{
    // No events here: their handlers may belong to objects already gone.
    closeInternal();
    RebindConnectionClient(this, m_connection, nullptr);
}

// --- Setup ------------------------------------------------------------------------------------

void TDBDataset::setConnection(TDBConnection* connection)
{
    if (connection == m_connection)
        return;
    close();
    RebindConnectionClient(this, m_connection, connection);
}

void TDBDataset::setSQL(const QString& sql)
{
    if (active())
        close();
    m_sql = sql;
}

void TDBDataset::setTableName(const QString& table)
{
    setSQL(u"SELECT * FROM "_s + TDBSqlText::quoteIdentifier(table));
    m_updateTableName = table;
}

void TDBDataset::setUpdateTableName(const QString& table)
{
    if (active())
        close();
    m_updateTableName = table;
}

void TDBDataset::setKeyFields(const QString& fields)
{
    if (active())
        close();
    m_keyFields = fields.trimmed();
}

void TDBDataset::bindValue(const QString& name, const QVariant& value)
{
    m_bindings.setNamed(name, value);
}

void TDBDataset::addBindValue(const QVariant& value)
{
    m_bindings.positional.append(value);
}

void TDBDataset::clearBindings()
{
    m_bindings.clear();
}

void TDBDataset::setBlobCacheSize(qsizetype bytes)
{
    m_blobCache.setMaxCost(std::max<qsizetype>(bytes, 0));
}

void TDBDataset::fire(Event event)
{
    if (m_events[event]) {
        // A copy, so that a handler may replace itself.
        const TDatasetNotifyEvent handler = m_events[event];
        handler(*this);
    }
}

sqlite3* TDBDataset::db() const
{
    if (!m_connection)
        throw EDatabaseError(u"Dataset has no connection"_s);
    return m_connection->handle();
}

void TDBDataset::requireActive() const
{
    if (!active())
        throw EDatabaseError(u"Cannot perform this operation on a closed dataset"_s);
}

void TDBDataset::requireCanModify() const
{
    if (!canModify())
        throw EDatabaseError(u"Cannot modify a read-only dataset"_s);
}

TDatasetState TDBDataset::state() const
{
    return m_fetchBuffer ? TDatasetState::CalcFields : m_state;
}

void TDBDataset::setState(TDatasetState state)
{
    if (m_state == state)
        return;
    m_state = state;
    notifyState();
}

void TDBDataset::notifyState()
{
    if (m_disableCount > 0)
        m_statePending = true;
    else
        emit stateChanged(m_state);
}

// --- Fields -----------------------------------------------------------------------------------

TDBField& TDBDataset::addField(const QString& name, TFieldType type, TFieldKind kind, int size)
{
    if (active())
        throw EDatabaseError(u"Cannot add field '%1' to an open dataset"_s.arg(name));
    if (m_dynamicFields)
        m_fields.clear();
    m_dynamicFields = false;
    if (findField(name))
        throw EDatabaseError(u"Duplicate field name '%1'"_s.arg(name));
    auto field = std::make_unique<TDBField>(this, name, type, kind, size);
    field->setIndex(int(m_fields.size()));
    if (type == TFieldType::AutoInc)
        field->setReadOnly(true);
    m_fields.push_back(std::move(field));
    rebuildFieldIndex();
    return *m_fields.back();
}

void TDBDataset::clearFields()
{
    if (active())
        throw EDatabaseError(u"Cannot remove the fields of an open dataset"_s);
    m_fields.clear();
    m_dynamicFields = false;
    rebuildFieldIndex();
}

void TDBDataset::rebuildFieldIndex()
{
    m_fieldIndex.clear();
    for (const auto& field : m_fields)
        m_fieldIndex.insert(field->fieldName(), field->index());
}

QList<TDBField*> TDBDataset::fields() const
{
    QList<TDBField*> list;
    list.reserve(qsizetype(m_fields.size()));
    for (const auto& field : m_fields)
        list.append(field.get());
    return list;
}

TDBField* TDBDataset::findField(const QString& name) const
{
    const auto it = m_fieldIndex.constFind(name);
    if (it != m_fieldIndex.constEnd())
        return m_fields[std::size_t(*it)].get();
    for (const auto& field : m_fields)
        if (field->fieldName().compare(name, Qt::CaseInsensitive) == 0)
            return field.get();
    return nullptr;
}

TDBField& TDBDataset::fieldByName(const QString& name) const
{
    TDBField* field = findField(name);
    if (!field)
        throw EDatabaseError(u"Field '%1' not found"_s.arg(name));
    return *field;
}

int TDBDataset::execSQL()
{
    if (!m_connection)
        throw EDatabaseError(u"Dataset has no connection"_s);
    return m_connection->execSQL(m_sql, m_bindings);
}

// --- Records ----------------------------------------------------------------------------------

const std::byte* TDBDataset::viewRow(int row) const
{
    if (row < 0 || std::size_t(row) >= m_view.size())
        return nullptr;
    const quint32 index = m_view[std::size_t(row)];
    return index == kPendingRow ? nullptr : m_rows[index].get();
}

const std::byte* TDBDataset::currentRow() const
{
    return viewRow(m_cursor);
}

QVariant TDBDataset::decode(const std::byte* row, const TDBField& field) const
{
    return TDBField::convertForRead(DBRow::rawValue(row, field.index()), field.dataType());
}

QVariant TDBDataset::keyOfRow(const std::byte* row) const
{
    if (m_keyField < 0 || !row)
        return QVariant();
    return decode(row, *m_fields[std::size_t(m_keyField)]);
}

QString TDBDataset::blobCacheKey(int field, const QVariant& key) const
{
    return QString::number(field) + u'|' + key.toString();
}

TDBStatement& TDBDataset::blobStatement(int field) const
{
    auto& slot = m_blobStatements[std::size_t(field)];
    if (!slot) {
        const QString sql =
            u"SELECT "_s + TDBSqlText::quoteIdentifier(m_fields[std::size_t(field)]->fieldName()) +
            u" FROM "_s + TDBSqlText::quoteIdentifier(m_updateTableName) + u" WHERE "_s +
            TDBSqlText::quoteIdentifier(m_fields[std::size_t(m_keyField)]->fieldName()) + u" = ?"_s;
        slot = std::make_unique<TDBStatement>(db(), sql);
    }
    return *slot;
}

QVariant TDBDataset::blobValue(const std::byte* row, const TDBField& field) const
{
    const QVariant key = keyOfRow(row);
    if (key.isNull())
        return QVariant();
    const QString cacheKey = blobCacheKey(field.index(), key);
    if (const QVariant* cached = m_blobCache.object(cacheKey))
        return *cached;
    TDBStatement& stmt = blobStatement(field.index());
    stmt.bind(1, key);
    QVariant value;
    {
        TDBStatementResetter resetter(stmt);
        if (stmt.step())
            value = TDBField::convertForRead(stmt.columnValue(0), TFieldType::Blob);
    }
    const qsizetype cost = std::max<qsizetype>(1, value.toByteArray().size());
    // The cache owns what it holds; a value above its size is not kept.
    m_blobCache.insert(cacheKey, new QVariant(value), cost);
    return value;
}

void TDBDataset::invalidateBlobs(const QVariant& key)
{
    if (key.isNull())
        return;
    for (std::size_t i = 0; i < m_lazyBlob.size(); ++i)
        if (m_lazyBlob[i])
            m_blobCache.remove(blobCacheKey(int(i), key));
}

QVariant TDBDataset::fieldValue(const TDBField& field) const
{
    const std::size_t i = std::size_t(field.index());
    const std::byte* row = nullptr;
    if (m_fetchBuffer) {
        if (m_fetchBuffer->assigned[i])
            return m_fetchBuffer->values[i];
        row = m_fetchRow;
    } else if (m_state == TDatasetState::Edit || m_state == TDatasetState::Insert) {
        if (m_buffer.assigned[i])
            return m_buffer.values[i];
        row = m_state == TDatasetState::Edit ? currentRow() : nullptr;
    } else if (m_state == TDatasetState::Browse) {
        row = currentRow();
    } else {
        return QVariant();
    }
    if (!row)
        return QVariant();
    if (m_lazyBlob[i])
        return blobValue(row, field);
    return decode(row, field);
}

void TDBDataset::setFieldValue(TDBField& field, const QVariant& value)
{
    const std::size_t i = std::size_t(field.index());
    if (m_fetchBuffer) {
        if (field.kind() != TFieldKind::Calculated && field.kind() != TFieldKind::Internal)
            throw EDatabaseError(u"Field '%1' cannot be modified"_s.arg(field.fieldName()));
        m_fetchBuffer->set(i, field.convertForWrite(value));
        return;
    }
    if (m_state != TDatasetState::Edit && m_state != TDatasetState::Insert)
        throw EDatabaseError(u"Dataset not in edit or insert mode"_s);
    if (m_calculating && field.kind() == TFieldKind::Calculated) {
        m_buffer.set(i, field.convertForWrite(value));
        return;
    }
    if (field.kind() == TFieldKind::Computed || field.readOnly())
        throw EDatabaseError(u"Field '%1' cannot be modified"_s.arg(field.fieldName()));
    m_buffer.set(i, field.convertForWrite(value));
    m_modified = true;
    notifyRowChanged(m_cursor);
    field.fireChange();
    if (m_autoCalcFields && field.kind() != TFieldKind::Calculated && !m_calculating)
        runCalcFields(false);
}

void TDBDataset::runCalcFields(bool readRecord)
{
    if (!m_events[EvCalcFields] && !(readRecord && m_events[EvReadRecord]))
        return;
    const bool was = m_calculating;
    m_calculating = true;
    try {
        if (readRecord)
            fire(EvReadRecord);
        fire(EvCalcFields);
    } catch (...) {
        m_calculating = was;
        throw;
    }
    m_calculating = was;
}

QVariant TDBDataset::valueAt(int row, int fieldIndex) const
{
    if (row < 0 || std::size_t(row) >= m_view.size() || fieldIndex < 0 ||
        std::size_t(fieldIndex) >= m_fields.size())
        return QVariant();
    const TDBField& f = *m_fields[std::size_t(fieldIndex)];
    if (row == m_cursor && (m_state == TDatasetState::Edit || m_state == TDatasetState::Insert) &&
        !m_fetchBuffer)
        return fieldValue(f);
    const std::byte* r = viewRow(row);
    if (!r)
        return QVariant();
    return m_lazyBlob[std::size_t(fieldIndex)] ? blobValue(r, f) : decode(r, f);
}

QVariant TDBDataset::keyAt(int row) const
{
    return m_keyField < 0 ? QVariant() : valueAt(row, m_keyField);
}

int TDBDataset::rowOfKey(const QVariant& key) const
{
    if (m_keyField < 0 || key.isNull())
        return -1;
    const TDBField& f = *m_fields[std::size_t(m_keyField)];
    bool numeric = false;
    const double wanted = key.toDouble(&numeric);
    for (std::size_t r = 0; r < m_view.size(); ++r) {
        const std::byte* row = viewRow(int(r));
        if (!row)
            continue;
        if (numeric && isNumericType(f.dataType())) {
            double v = 0.0;
            if (DBRow::numberValue(row, m_keyField, &v) && v == wanted)
                return int(r);
        } else if (decode(row, f) == key) {
            return int(r);
        }
    }
    return -1;
}

// --- View: filter and order -------------------------------------------------------------------

bool TDBDataset::rowPasses(const std::byte* row) const
{
    if (!m_filtered || !m_filter)
        return true;
    return m_filter->matches(RowRecord(*this, row));
}

void TDBDataset::bindFilter()
{
    m_filter->bind([this](const QString& name) {
        const TDBField* f = findField(name);
        return f ? f->index() : -1;
    });
}

void TDBDataset::parseIndexFieldNames()
{
    std::vector<SortKey> keys;
    const QStringList parts = m_indexFieldNames.split(u';', Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        QString name = part.trimmed();
        bool descending = false;
        bool caseInsensitive = false;
        const qsizetype colon = name.indexOf(u':');
        if (colon > 0) {
            const QString options = name.mid(colon + 1).toUpper();
            name = name.left(colon).trimmed();
            descending = options.contains(u'D');
            caseInsensitive = options.contains(u'N');
        }
        if (name.isEmpty())
            continue;
        keys.push_back({fieldByName(name).index(), descending, caseInsensitive});
    }
    m_sortKeys = std::move(keys);
}

int TDBDataset::compareRows(const std::byte* a, const std::byte* b) const
{
    for (const SortKey& key : m_sortKeys) {
        const TDBField& f = *m_fields[std::size_t(key.field)];
        KeyValue ka;
        KeyValue kb;
        auto fill = [&](const std::byte* row, KeyValue& k) {
            k.isNull = DBRow::isNull(row, key.field);
            if (k.isNull)
                return;
            if (isNumericType(f.dataType()) && DBRow::numberValue(row, key.field, &k.number)) {
                k.isNumber = true;
                return;
            }
            const DBRow::Tag tag = DBRow::tagOf(row, key.field);
            if (tag != DBRow::TagText && tag != DBRow::TagBlob &&
                DBRow::numberValue(row, key.field, &k.number)) {
                k.isNumber = true;
                return;
            }
            k.text = DBRow::textValue(row, key.field);
        };
        fill(a, ka);
        fill(b, kb);
        const int c = compareKeyValues(ka, kb, key.caseInsensitive);
        if (c != 0)
            return key.descending ? -c : c;
    }
    return 0;
}

void TDBDataset::sortView()
{
    if (m_sortKeys.empty()) {
        std::sort(m_view.begin(), m_view.end());
        return;
    }
    auto less = [this](quint32 x, quint32 y) {
        const int c = compareRows(m_rows[x].get(), m_rows[y].get());
        return c != 0 ? c < 0 : x < y;
    };
    if (std::is_sorted(m_view.begin(), m_view.end(), less))
        return;
    // Keys are taken out once per record, then sorted with the fetch order as the last key.
    const std::size_t n = m_view.size();
    std::vector<std::vector<KeyValue>> keys(m_sortKeys.size(), std::vector<KeyValue>(n));
    for (std::size_t k = 0; k < m_sortKeys.size(); ++k) {
        const SortKey& key = m_sortKeys[k];
        const TDBField& f = *m_fields[std::size_t(key.field)];
        for (std::size_t r = 0; r < n; ++r) {
            const std::byte* row = m_rows[m_view[r]].get();
            KeyValue& kv = keys[k][r];
            kv.isNull = DBRow::isNull(row, key.field);
            if (kv.isNull)
                continue;
            const DBRow::Tag tag = DBRow::tagOf(row, key.field);
            if ((isNumericType(f.dataType()) || (tag != DBRow::TagText && tag != DBRow::TagBlob)) &&
                DBRow::numberValue(row, key.field, &kv.number))
                kv.isNumber = true;
            else
                kv.text = DBRow::textValue(row, key.field);
        }
    }
    std::vector<std::size_t> order(n);
    for (std::size_t r = 0; r < n; ++r)
        order[r] = r;
    std::sort(order.begin(), order.end(), [&](std::size_t x, std::size_t y) {
        for (std::size_t k = 0; k < m_sortKeys.size(); ++k) {
            int c = compareKeyValues(keys[k][x], keys[k][y], m_sortKeys[k].caseInsensitive);
            if (c != 0)
                return m_sortKeys[k].descending ? c > 0 : c < 0;
        }
        return m_view[x] < m_view[y];
    });
    std::vector<quint32> sorted(n);
    for (std::size_t r = 0; r < n; ++r)
        sorted[r] = m_view[order[r]];
    m_view.swap(sorted);
}

void TDBDataset::rebuildView(bool keepPosition)
{
    const quint32 current = keepPosition && m_cursor >= 0 && std::size_t(m_cursor) < m_view.size()
                                ? m_view[std::size_t(m_cursor)]
                                : kPendingRow;
    m_view.clear();
    m_view.reserve(m_rows.size());
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        if (m_rows[i] && rowPasses(m_rows[i].get()))
            m_view.push_back(quint32(i));
    sortView();
    if (!keepPosition)
        return;
    const auto it = current == kPendingRow ? m_view.end() : std::find(m_view.begin(), m_view.end(), current);
    if (it != m_view.end()) {
        m_cursor = int(it - m_view.begin());
        m_bof = m_eof = false;
    } else {
        m_cursor = m_view.empty() ? -1 : 0;
        m_bof = true;
        m_eof = m_view.empty();
    }
}

int TDBDataset::sortedPosition(int row) const
{
    // Binary search among the other rows, which are in order; equal keys keep the fetch order.
    const quint32 self = m_view[std::size_t(row)];
    const std::byte* target = m_rows[self].get();
    const int n = int(m_view.size()) - 1;
    auto at = [&](int k) { return m_view[std::size_t(k < row ? k : k + 1)]; };
    int lo = 0;
    int hi = n;
    while (lo < hi) {
        const int mid = (lo + hi) / 2;
        const quint32 other = at(mid);
        int c = compareRows(m_rows[other].get(), target);
        if (c == 0)
            c = other < self ? -1 : 1;
        if (c < 0)
            lo = mid + 1;
        else
            hi = mid;
    }
    return lo;
}

void TDBDataset::setIndexFieldNames(const QString& names)
{
    if (!active()) {
        m_indexFieldNames = names;
        return;
    }
    checkBrowseMode();
    const QString previous = m_indexFieldNames;
    m_indexFieldNames = names;
    try {
        parseIndexFieldNames();
    } catch (...) {
        m_indexFieldNames = previous;
        parseIndexFieldNames();
        throw;
    }
    const bool tell = beginNotify();
    if (tell)
        emit beforeReset();
    rebuildView(true);
    if (tell)
        emit afterReset();
    notifyScroll();
}

void TDBDataset::setFilter(const QString& text)
{
    std::unique_ptr<TDBFilter> filter;
    if (!text.trimmed().isEmpty())
        filter = std::make_unique<TDBFilter>(text);
    if (active() && filter) {
        filter->bind([this](const QString& name) {
            const TDBField* f = findField(name);
            return f ? f->index() : -1;
        });
    }
    if (active() && m_filtered)
        checkBrowseMode();
    m_filter = std::move(filter);
    m_filterText = text;
    if (active() && m_filtered) {
        const bool tell = beginNotify();
        if (tell)
            emit beforeReset();
        rebuildView(true);
        if (tell)
            emit afterReset();
        notifyScroll();
    }
}

void TDBDataset::setFiltered(bool value)
{
    if (value == m_filtered)
        return;
    if (active())
        checkBrowseMode();
    m_filtered = value;
    if (active()) {
        const bool tell = beginNotify();
        if (tell)
            emit beforeReset();
        rebuildView(true);
        if (tell)
            emit afterReset();
        notifyScroll();
    }
}

// --- Cursor -----------------------------------------------------------------------------------

void TDBDataset::setCursor(int row, bool notify)
{
    if (row == m_cursor)
        return;
    m_cursor = row;
    if (notify) {
        notifyScroll();
        fire(EvAfterScroll);
    }
}

void TDBDataset::first()
{
    requireActive();
    checkBrowseMode();
    setCursor(m_view.empty() ? -1 : 0, true);
    m_bof = true;
    m_eof = m_view.empty();
}

void TDBDataset::last()
{
    requireActive();
    checkBrowseMode();
    setCursor(int(m_view.size()) - 1, true);
    m_eof = true;
    m_bof = m_view.empty();
}

void TDBDataset::next()
{
    requireActive();
    checkBrowseMode();
    if (m_cursor + 1 < int(m_view.size())) {
        setCursor(m_cursor + 1, true);
        m_bof = false;
        m_eof = false;
    } else {
        m_eof = true;
    }
}

void TDBDataset::prior()
{
    requireActive();
    checkBrowseMode();
    if (m_cursor > 0) {
        setCursor(m_cursor - 1, true);
        m_bof = false;
        m_eof = false;
    } else {
        m_bof = true;
    }
}

int TDBDataset::moveBy(int distance)
{
    requireActive();
    checkBrowseMode();
    if (m_view.empty())
        return 0;
    const int target = std::clamp(m_cursor + distance, 0, int(m_view.size()) - 1);
    const int moved = target - m_cursor;
    setCursor(target, true);
    m_bof = distance < 0 && moved != distance;
    m_eof = distance > 0 && moved != distance;
    return moved;
}

void TDBDataset::setRecNo(int recNo)
{
    requireActive();
    checkBrowseMode();
    if (m_view.empty())
        return;
    setCursor(std::clamp(recNo, 1, int(m_view.size())) - 1, true);
    m_bof = false;
    m_eof = false;
}

bool TDBDataset::locate(const QString& keyFields, const QVariant& keyValues, TLocateOptions options)
{
    requireActive();
    checkBrowseMode();
    QList<const TDBField*> fields;
    for (const QString& name : keyFields.split(u';', Qt::SkipEmptyParts))
        fields.append(&fieldByName(name.trimmed()));
    QVariantList values;
    if (keyValues.metaType().id() == QMetaType::QVariantList)
        values = keyValues.toList();
    else
        values.append(keyValues);
    if (fields.isEmpty() || fields.size() != values.size())
        throw EDatabaseError(u"Locate needs one value per field of '%1'"_s.arg(keyFields));

    const Qt::CaseSensitivity cs =
        options.testFlag(TLocateOption::CaseInsensitive) ? Qt::CaseInsensitive : Qt::CaseSensitive;
    auto matches = [&](const std::byte* row, const TDBField& f, const QVariant& wanted) {
        const bool lazy = m_lazyBlob[std::size_t(f.index())] != 0;
        if (wanted.isNull())
            return lazy ? blobValue(row, f).isNull() : DBRow::isNull(row, f.index());
        if (isNumericType(f.dataType()) && !lazy) {
            bool ok = false;
            const double w = wanted.toDouble(&ok);
            double v = 0.0;
            if (ok)
                return DBRow::numberValue(row, f.index(), &v) && v == w;
        }
        const QVariant have = lazy ? blobValue(row, f) : decode(row, f);
        if (have.isNull())
            return false;
        const QString a = TDBField::valueText(have, f.dataType());
        const QString b = TDBField::valueText(TDBField::convertForRead(wanted, f.dataType()), f.dataType());
        if (options.testFlag(TLocateOption::PartialKey) && isTextType(f.dataType()))
            return a.startsWith(b, cs);
        return a.compare(b, cs) == 0;
    };
    for (std::size_t r = 0; r < m_view.size(); ++r) {
        const std::byte* row = viewRow(int(r));
        if (!row)
            continue;
        bool all = true;
        for (qsizetype k = 0; k < fields.size() && all; ++k)
            all = matches(row, *fields.at(k), values.at(k));
        if (all) {
            setCursor(int(r), true);
            m_bof = false;
            m_eof = false;
            return true;
        }
    }
    return false;
}

// --- Editing ----------------------------------------------------------------------------------

void TDBDataset::checkBrowseMode()
{
    if (m_state == TDatasetState::Edit || m_state == TDatasetState::Insert)
        post();
}

void TDBDataset::append()
{
    requireActive();
    requireCanModify();
    checkBrowseMode();
    startInsert(int(m_view.size()));
}

void TDBDataset::insert()
{
    requireActive();
    requireCanModify();
    checkBrowseMode();
    startInsert(m_cursor < 0 ? 0 : m_cursor);
}

void TDBDataset::startInsert(int position)
{
    fire(EvBeforeInsert);
    m_cursorBeforeInsert = m_cursor;
    const bool tell = beginNotify();
    if (tell)
        emit beforeInsertRow(position);
    m_view.insert(m_view.begin() + position, kPendingRow);
    m_cursor = position;
    m_bof = false;
    m_eof = false;
    m_buffer.reset(m_fields.size());
    m_modified = false;
    m_state = TDatasetState::Insert;
    if (tell)
        emit afterInsertRow(position);
    notifyState();
    notifyScroll();
    fire(EvNewRecord);
    fire(EvAfterInsert);
}

void TDBDataset::edit()
{
    requireActive();
    if (m_state == TDatasetState::Edit || m_state == TDatasetState::Insert)
        return;
    requireCanModify();
    if (m_view.empty()) {
        append();
        return;
    }
    fire(EvBeforeEdit);
    m_buffer.reset(m_fields.size());
    m_modified = false;
    setState(TDatasetState::Edit);
    fire(EvAfterEdit);
}

void TDBDataset::checkRequiredFields() const
{
    for (const auto& field : m_fields) {
        if (!field->required() || field->kind() != TFieldKind::Stored ||
            field->dataType() == TFieldType::AutoInc)
            continue;
        const QVariant v = fieldValue(*field);
        const bool missing = v.isNull() || (isTextType(field->dataType()) && v.toString().isEmpty());
        if (missing)
            throw EDatabaseError(u"Field '%1' must have a value"_s.arg(field->displayLabel()));
    }
}

QVariant TDBDataset::writeRecord()
{
    sqlite3* h = db();
    if (m_keyField < 0)
        throw EDatabaseError(
            u"Table '%1' has no key field; its records cannot be written"_s.arg(m_updateTableName));
    const TDBField& key = *m_fields[std::size_t(m_keyField)];
    const QString table = TDBSqlText::quoteIdentifier(m_updateTableName);
    QStringList columns;
    QVariantList values;

    if (m_state == TDatasetState::Edit) {
        const std::byte* original = currentRow();
        const QVariant keyValue = keyOfRow(original);
        for (const auto& field : m_fields) {
            const std::size_t i = std::size_t(field->index());
            if (field->kind() != TFieldKind::Stored || !m_buffer.assigned[i])
                continue;
            if (!m_lazyBlob[i]) {
                const QVariant old = decode(original, *field);
                if (old.isNull() == m_buffer.values[i].isNull() && old == m_buffer.values[i])
                    continue;
            }
            columns.append(TDBSqlText::quoteIdentifier(field->fieldName()) + u" = ?"_s);
            values.append(m_buffer.values[i]);
        }
        if (!columns.isEmpty()) {
            TDBStatement stmt(h, u"UPDATE "_s + table + u" SET "_s + columns.join(u", "_s) + u" WHERE "_s +
                                     TDBSqlText::quoteIdentifier(key.fieldName()) + u" = ?"_s);
            int p = 1;
            for (const QVariant& v : values)
                stmt.bind(p++, v);
            stmt.bind(p, keyValue);
            stmt.step();
            if (sqlite3_changes(h) == 0)
                throw EDatabaseError(u"The record with %1 = %2 is no longer in table '%3'"_s.arg(
                    key.fieldName(), keyValue.toString(), m_updateTableName));
        }
        return m_buffer.assigned[std::size_t(m_keyField)] ? m_buffer.values[std::size_t(m_keyField)]
                                                          : keyValue;
    }

    QStringList marks;
    for (const auto& field : m_fields) {
        const std::size_t i = std::size_t(field->index());
        if (field->kind() != TFieldKind::Stored || !m_buffer.assigned[i])
            continue;
        columns.append(TDBSqlText::quoteIdentifier(field->fieldName()));
        marks.append(u"?"_s);
        values.append(m_buffer.values[i]);
    }
    const QString sql = columns.isEmpty()
                            ? QString(u"INSERT INTO "_s + table + u" DEFAULT VALUES"_s)
                            : QString(u"INSERT INTO "_s + table + u" ("_s + columns.join(u", "_s) +
                                      u") VALUES ("_s + marks.join(u", "_s) + u")"_s);
    TDBStatement stmt(h, sql);
    int p = 1;
    for (const QVariant& v : values)
        stmt.bind(p++, v);
    stmt.step();
    if (m_buffer.assigned[std::size_t(m_keyField)] && !m_buffer.values[std::size_t(m_keyField)].isNull())
        return m_buffer.values[std::size_t(m_keyField)];
    return TDBField::convertForRead(QVariant(qlonglong(sqlite3_last_insert_rowid(h))), key.dataType());
}

TDBRowData TDBDataset::rereadRow(const QVariant& key)
{
    if (!m_rereadStatement) {
        const QString sql = u"SELECT * FROM (\n"_s + m_effectiveSQL + u"\n) WHERE "_s +
                            TDBSqlText::quoteIdentifier(m_fields[std::size_t(m_keyField)]->fieldName()) +
                            u" = ?"_s;
        m_rereadStatement = std::make_unique<TDBStatement>(db(), sql);
    }
    TDBStatement& stmt = *m_rereadStatement;
    m_bindings.applyTo(stmt);
    stmt.bind(stmt.parameterCount(), key);
    {
        TDBStatementResetter resetter(stmt);
        if (!stmt.step())
            return TDBRowData();
        readStatementRow(stmt.handle());
    }
    return finishRow(m_rowBuilder);
}

void TDBDataset::post()
{
    requireActive();
    if (m_state != TDatasetState::Edit && m_state != TDatasetState::Insert)
        return;
    requireCanModify();
    fire(EvBeforePost);
    checkRequiredFields();
    const QVariant key = writeRecord();
    invalidateBlobs(key);
    const bool inserting = m_state == TDatasetState::Insert;
    TDBRowData row = rereadRow(key);
    if (!row) {
        // The statement does not select the record (a WHERE of its own): keep what was written,
        // with the key the file gave it.
        m_buffer.set(std::size_t(m_keyField), key);
        TDBRowBuilder builder(int(m_fields.size()));
        fillBuilder(builder, inserting ? nullptr : currentRow(), m_buffer);
        row = finishRow(builder);
    }
    if (inserting) {
        m_rows.push_back(std::move(row));
        m_view[std::size_t(m_cursor)] = quint32(m_rows.size() - 1);
    } else {
        m_rows[m_view[std::size_t(m_cursor)]] = std::move(row);
    }
    m_buffer.reset(m_fields.size());
    m_modified = false;
    setState(TDatasetState::Browse);
    notifyRowChanged(m_cursor);
    if (!m_sortKeys.empty()) {
        const int from = m_cursor;
        const int to = sortedPosition(from);
        if (to != from) {
            const bool tell = beginNotify();
            if (tell)
                emit beforeMoveRow(from, to);
            const quint32 index = m_view[std::size_t(from)];
            m_view.erase(m_view.begin() + from);
            m_view.insert(m_view.begin() + to, index);
            m_cursor = to;
            if (tell)
                emit afterMoveRow(from, to);
            notifyScroll();
        }
    }
    fire(EvAfterPost);
}

void TDBDataset::cancel()
{
    if (m_state != TDatasetState::Edit && m_state != TDatasetState::Insert)
        return;
    fire(EvBeforeCancel);
    if (m_state == TDatasetState::Insert) {
        const int row = m_cursor;
        const bool tell = beginNotify();
        if (tell)
            emit beforeRemoveRow(row);
        m_view.erase(m_view.begin() + row);
        m_buffer.reset(m_fields.size());
        m_modified = false;
        m_state = TDatasetState::Browse;
        if (m_view.empty())
            m_cursor = -1;
        else
            m_cursor = std::clamp(m_cursorBeforeInsert, 0, int(m_view.size()) - 1);
        m_eof = m_view.empty();
        m_bof = m_view.empty();
        if (tell)
            emit afterRemoveRow(row);
        notifyState();
        notifyScroll();
    } else {
        m_buffer.reset(m_fields.size());
        m_modified = false;
        setState(TDatasetState::Browse);
        calcCurrentRow();
        notifyRowChanged(m_cursor);
    }
    fire(EvAfterCancel);
}

void TDBDataset::deleteRecord()
{
    requireActive();
    if (m_state == TDatasetState::Insert) {
        cancel();
        return;
    }
    if (m_view.empty())
        throw EDatabaseError(u"Cannot perform this operation on an empty dataset"_s);
    requireCanModify();
    fire(EvBeforeDelete);
    const QVariant key = keyOfRow(currentRow());
    if (key.isNull())
        throw EDatabaseError(
            u"Table '%1' has no key field; its records cannot be deleted"_s.arg(m_updateTableName));
    {
        TDBStatement stmt(db(),
                          u"DELETE FROM "_s + TDBSqlText::quoteIdentifier(m_updateTableName) + u" WHERE "_s +
                              TDBSqlText::quoteIdentifier(m_fields[std::size_t(m_keyField)]->fieldName()) +
                              u" = ?"_s);
        stmt.bind(1, key);
        stmt.step();
    }
    invalidateBlobs(key);
    if (m_state == TDatasetState::Edit) {
        m_buffer.reset(m_fields.size());
        m_modified = false;
        setState(TDatasetState::Browse);
    }
    const int row = m_cursor;
    const bool tell = beginNotify();
    if (tell)
        emit beforeRemoveRow(row);
    m_rows[m_view[std::size_t(row)]].reset();
    m_view.erase(m_view.begin() + row);
    if (m_view.empty()) {
        m_cursor = -1;
        m_eof = m_bof = true;
    } else if (row >= int(m_view.size())) {
        m_cursor = int(m_view.size()) - 1;
        m_eof = true;
        m_bof = false;
    } else {
        m_cursor = row;
        m_eof = m_bof = false;
    }
    if (tell)
        emit afterRemoveRow(row);
    notifyScroll();
    fire(EvAfterDelete);
}

// --- Observers --------------------------------------------------------------------------------

void TDBDataset::disableControls()
{
    ++m_disableCount;
}

void TDBDataset::enableControls()
{
    if (m_disableCount == 0 || --m_disableCount > 0)
        return;
    const bool reset = m_resetPending;
    const bool scroll = m_scrollPending;
    const bool state = m_statePending;
    m_resetPending = m_scrollPending = m_statePending = false;
    std::vector<int> changed;
    changed.swap(m_changedRows);
    if (reset) {
        emit afterReset();
    } else {
        std::sort(changed.begin(), changed.end());
        changed.erase(std::unique(changed.begin(), changed.end()), changed.end());
        for (int row : changed)
            if (row >= 0 && std::size_t(row) < m_view.size())
                emit rowChanged(row);
    }
    if (state)
        emit stateChanged(m_state);
    if (reset || scroll)
        emit currentChanged(m_cursor);
}

bool TDBDataset::beginNotify()
{
    if (m_disableCount == 0)
        return true;
    if (!m_resetPending) {
        m_resetPending = true;
        m_changedRows.clear();
        emit beforeReset();
    }
    return false;
}

void TDBDataset::notifyRowChanged(int row)
{
    if (row < 0)
        return;
    if (m_disableCount == 0)
        emit rowChanged(row);
    else if (!m_resetPending)
        m_changedRows.push_back(row);
}

void TDBDataset::notifyScroll()
{
    if (m_disableCount > 0)
        m_scrollPending = true;
    else
        emit currentChanged(m_cursor);
}
