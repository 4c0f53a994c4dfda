#pragma once

#include "uDBConnection.h"
#include "uDBField.h"
#include "uDBRow.h"
#include "uDBSqlText.h"
#include "uDBStatement.h"

#include <QCache>
#include <QFlags>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QVariant>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class TDBFilter;

enum class TDatasetState
{
    Inactive,
    Browse,
    Edit,
    Insert,
    CalcFields // while OnReadRecord / OnCalcFields run for a record being read
};

enum class TLocateOption
{
    CaseInsensitive = 1,
    PartialKey = 2
};
Q_DECLARE_FLAGS(TLocateOptions, TLocateOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(TLocateOptions)

// When open() reads the rows: at once, or later through fetchPendingRows().
enum class TRowFetch
{
    Now,
    Deferred
};

class TDBDataset;
using TDatasetNotifyEvent = std::function<void(TDBDataset&)>;

// The record being read (OnReadRecord, OnCalcFields) or recalculated (recalcRows): typed reads of
// its fields that give what TDBField's readers give, without going through QVariant, and writes of
// its Calculated Float fields (in recalcRows straight into the stored row). Field objects work too
// (state CalcFields).
class TDBRecalcRecord
{
public:
    // As TDBField::isNull() / asFloat() / asLargeInt() / asInteger() on this record.
    bool isNull(const TDBField& field) const;
    double asFloat(const TDBField& field) const;
    qint64 asLargeInt(const TDBField& field) const;
    int asInteger(const TDBField& field) const { return int(asLargeInt(field)); }
    // Sets a Calculated Float field; no value makes it NULL.
    void setFloat(const TDBField& field, std::optional<double> value);

private:
    friend class TDBDataset;
    TDBRecalcRecord(TDBDataset& dataset, bool inPlace) : m_ds(dataset), m_inPlace(inPlace) {}

    TDBDataset& m_ds;
    bool m_inPlace; // writes go into m_row (recalcRows), or to the record buffer (a read)
    std::byte* m_row = nullptr;
    // Values that did not fit in place: the row is built anew with them.
    std::vector<std::pair<int, std::optional<double>>> m_pending;
};

// An in-memory, cursor-based view of a SELECT on a connection, with editing written back to one
// table (the update table), in the manner of a client dataset:
//
// - open() runs the statement and fetches every row (blob columns of the update table excepted:
//   "*" is expanded and each blob column is read later by key, when the field is first read, and
//   kept in a bounded LRU cache). Rows are held packed; see uDBRow.h.
// - Fields are either declared before open() (persistent: a declared Stored or Computed field
//   missing from the result makes open() fail with "Field 'X' not found") or made from the result
//   columns at open() (dynamic, dropped at close()).
// - A cursor walks the rows that pass the filter, in the order of IndexFieldNames.
// - append()/insert()/edit() put the current record in an edit buffer; post() checks required
//   fields, writes the stored fields (INSERT or UPDATE with bound values), reads the new key back
//   and re-reads the row so that the query's expressions are current; cancel() drops the buffer.
// - Observers (the table model) are told through the signals below; disableControls() /
//   enableControls() fold everything that happens in between into one reset.
// All failures raise EDatabaseError. Main thread only.
class TDBDataset : public QObject, public TDBFieldOwner, public TDBConnectionClient
{
    Q_OBJECT
public:
    explicit TDBDataset(TDBConnection* connection = nullptr, QObject* parent = nullptr);
    ~TDBDataset() override;

    // --- Setup (while inactive) -------------------------------------------------------------
    void setConnection(TDBConnection* connection);
    TDBConnection* connection() const { return m_connection; }
    void setSQL(const QString& sql);
    QString sql() const { return m_sql; }
    // SELECT * FROM table, written back to that table.
    void setTableName(const QString& table);
    // The table that post() and deleteRecord() write; empty makes the dataset read-only.
    void setUpdateTableName(const QString& table);
    QString updateTableName() const { return m_updateTableName; }
    // Key field of the update table ("ID"); empty means the table's primary key.
    void setKeyFields(const QString& fields);
    QString keyFields() const { return m_keyFields; }
    void bindValue(const QString& name, const QVariant& value);
    void addBindValue(const QVariant& value);
    void clearBindings();
    // False: calculated fields are computed when a record is read, posted or cancelled only.
    // True: also after every field change in edit or insert state.
    void setAutoCalcFields(bool value) { m_autoCalcFields = value; }
    bool autoCalcFields() const { return m_autoCalcFields; }
    // Upper bound, in bytes, of the blob values kept in memory (default 32 MB).
    void setBlobCacheSize(qsizetype bytes);
    qsizetype blobCacheSize() const { return m_blobCache.maxCost(); }

    // --- Local order and filter (any time) ------------------------------------------------
    // Field names separated by ';', each optionally followed by ":D" (descending) or ":N"
    // (text without regard to case), e.g. "ID" or "Metal;Name:D". Empty: fetch order.
    void setIndexFieldNames(const QString& names);
    QString indexFieldNames() const { return m_indexFieldNames; }
    // Filter text (see TDBFilter); a bad text throws and leaves the previous filter in place.
    void setFilter(const QString& text);
    QString filter() const { return m_filterText; }
    void setFiltered(bool value);
    bool filtered() const { return m_filtered; }

    // --- Fields ---------------------------------------------------------------------------
    // Declares a persistent field (while inactive). Stored and Computed fields must be columns of
    // the result, Calculated and Internal ones live in the record buffer only. AutoInc fields are
    // read-only, Computed ones too.
    TDBField& addField(const QString& name, TFieldType type, TFieldKind kind = TFieldKind::Stored,
                       int size = 0);
    void clearFields();
    int fieldCount() const { return int(m_fields.size()); }
    TDBField& field(int index) const { return *m_fields.at(std::size_t(index)); }
    QList<TDBField*> fields() const;
    TDBField* findField(const QString& name) const;
    // Throws EDatabaseError "Field 'X' not found".
    TDBField& fieldByName(const QString& name) const;
    TDBField* keyField() const { return m_keyField >= 0 ? m_fields[std::size_t(m_keyField)].get() : nullptr; }

    // --- Open, close, refresh -------------------------------------------------------------
    // TRowFetch::Deferred opens the dataset (statement and fields checked, events fired) with no
    // rows: they are read by fetchPendingRows(), refresh() or a new open(). Records may be added,
    // edited and posted meanwhile; they are in the file and come with the others.
    void open(TRowFetch fetch = TRowFetch::Now);
    // True from a deferred open until its rows have been read.
    bool rowsPending() const { return m_rowsPending; }
    // Reads the rows of a deferred open (per record ReadRecord, CalcFields), and tells observers
    // with one reset. A record in edit or insert state stays as it is; the cursor stays on the
    // record it was on, or goes to the first. Nothing happens when no rows are pending.
    void fetchPendingRows();
    // Runs calc for every fetched record (state CalcFields, as OnCalcFields when a record is read)
    // and keeps the Calculated values it sets, without reading the file; then tells observers
    // with one reset. The edit buffer of a record in edit or insert state is not touched.
    void recalcRows(const std::function<void(TDBRecalcRecord&)>& calc);
    // The record being read, for typed access from an OnReadRecord or OnCalcFields handler while a
    // record is read from the file. Throws outside such a handler.
    TDBRecalcRecord recordBeingRead();
    void close();
    bool active() const { return m_state != TDatasetState::Inactive; }
    void setActive(bool value);
    // Posts a pending edit, fetches all rows again and stays on the same record (by key) if it
    // is still there.
    void refresh();
    // Runs the SQL text as statement(s) (for a dataset used as a plain command); returns rows changed.
    int execSQL();

    // --- Cursor ---------------------------------------------------------------------------
    // Moving posts a pending edit first.
    void first();
    void last();
    void next();
    void prior();
    int moveBy(int distance);
    bool eof() const { return m_eof; }
    bool bof() const { return m_bof; }
    bool isEmpty() const { return m_view.empty(); }
    int recordCount() const { return int(m_view.size()); }
    // 1-based position of the current record, 0 when there is none.
    int recNo() const { return m_view.empty() ? 0 : m_cursor + 1; }
    void setRecNo(int recNo);
    // Finds the first record whose fields (names separated by ';') equal the values (one value
    // or a QVariantList); moves there and returns true, or returns false and stays.
    bool locate(const QString& keyFields, const QVariant& keyValues, TLocateOptions options = {});

    // --- Editing --------------------------------------------------------------------------
    TDatasetState state() const;
    bool canModify() const { return !m_updateTableName.isEmpty() && !m_readOnly; }
    void setReadOnly(bool value) { m_readOnly = value; }
    bool readOnly() const { return m_readOnly; }
    // Adds a new record at the end (append) or before the current one (insert).
    void append();
    void insert();
    // Edit on an empty dataset appends, as a client dataset does.
    void edit();
    void post();
    void cancel();
    void deleteRecord();
    // Posts when in edit or insert state.
    void checkBrowseMode();
    bool modified() const { return m_modified; }

    // --- Observers ------------------------------------------------------------------------
    void disableControls();
    void enableControls();
    bool controlsDisabled() const { return m_disableCount > 0; }

    // --- Events ---------------------------------------------------------------------------
    // Order: append: BeforeInsert, NewRecord, AfterInsert. edit: BeforeEdit, AfterEdit.
    // post: BeforePost, required check, write, re-read (ReadRecord, CalcFields), AfterPost.
    // cancel: BeforeCancel, (edit: CalcFields), AfterCancel. delete: BeforeDelete, AfterDelete.
    // open: BeforeOpen, per record ReadRecord then CalcFields, AfterOpen, AfterScroll.
    // A handler that throws stops the operation.
    void setOnBeforeOpen(TDatasetNotifyEvent handler) { m_events[EvBeforeOpen] = std::move(handler); }
    void setOnAfterOpen(TDatasetNotifyEvent handler) { m_events[EvAfterOpen] = std::move(handler); }
    void setOnBeforeClose(TDatasetNotifyEvent handler) { m_events[EvBeforeClose] = std::move(handler); }
    void setOnAfterClose(TDatasetNotifyEvent handler) { m_events[EvAfterClose] = std::move(handler); }
    void setOnBeforeInsert(TDatasetNotifyEvent handler) { m_events[EvBeforeInsert] = std::move(handler); }
    void setOnNewRecord(TDatasetNotifyEvent handler) { m_events[EvNewRecord] = std::move(handler); }
    void setOnAfterInsert(TDatasetNotifyEvent handler) { m_events[EvAfterInsert] = std::move(handler); }
    void setOnBeforeEdit(TDatasetNotifyEvent handler) { m_events[EvBeforeEdit] = std::move(handler); }
    void setOnAfterEdit(TDatasetNotifyEvent handler) { m_events[EvAfterEdit] = std::move(handler); }
    void setOnBeforePost(TDatasetNotifyEvent handler) { m_events[EvBeforePost] = std::move(handler); }
    void setOnAfterPost(TDatasetNotifyEvent handler) { m_events[EvAfterPost] = std::move(handler); }
    void setOnBeforeCancel(TDatasetNotifyEvent handler) { m_events[EvBeforeCancel] = std::move(handler); }
    void setOnAfterCancel(TDatasetNotifyEvent handler) { m_events[EvAfterCancel] = std::move(handler); }
    void setOnBeforeDelete(TDatasetNotifyEvent handler) { m_events[EvBeforeDelete] = std::move(handler); }
    void setOnAfterDelete(TDatasetNotifyEvent handler) { m_events[EvAfterDelete] = std::move(handler); }
    void setOnBeforeRefresh(TDatasetNotifyEvent handler) { m_events[EvBeforeRefresh] = std::move(handler); }
    void setOnAfterRefresh(TDatasetNotifyEvent handler) { m_events[EvAfterRefresh] = std::move(handler); }
    void setOnAfterScroll(TDatasetNotifyEvent handler) { m_events[EvAfterScroll] = std::move(handler); }
    // Sets the Calculated fields of the record being read, posted or cancelled.
    void setOnCalcFields(TDatasetNotifyEvent handler) { m_events[EvCalcFields] = std::move(handler); }
    // Sets the start values of Internal fields for each record read from the file (before CalcFields).
    void setOnReadRecord(TDatasetNotifyEvent handler) { m_events[EvReadRecord] = std::move(handler); }

    // --- Access by row, without moving the cursor (for views) --------------------------------
    // row is 0-based in the current order; the current row in edit or insert state gives the
    // edit buffer's values.
    QVariant valueAt(int row, int fieldIndex) const;
    QVariant keyAt(int row) const;
    // Row (0-based) of the record with this key value, -1 when not shown.
    int rowOfKey(const QVariant& key) const;

    // TDBFieldOwner
    QVariant fieldValue(const TDBField& field) const override;
    void setFieldValue(TDBField& field, const QVariant& value) override;
    // TDBConnectionClient
    void connectionClosing() override;
    void connectionDestroyed() override;

signals:
    // Observers: each before/after pair brackets one change of the row list. While controls are
    // disabled only beforeReset (at the first change) and afterReset (at the last enableControls)
    // are sent.
    void beforeReset();
    void afterReset();
    void beforeInsertRow(int row);
    void afterInsertRow(int row);
    void beforeRemoveRow(int row);
    void afterRemoveRow(int row);
    // `to` is the row's index once it has moved.
    void beforeMoveRow(int from, int to);
    void afterMoveRow(int from, int to);
    void rowChanged(int row);
    void currentChanged(int row);
    void stateChanged(TDatasetState state);

private:
    enum Event
    {
        EvBeforeOpen,
        EvAfterOpen,
        EvBeforeClose,
        EvAfterClose,
        EvBeforeInsert,
        EvNewRecord,
        EvAfterInsert,
        EvBeforeEdit,
        EvAfterEdit,
        EvBeforePost,
        EvAfterPost,
        EvBeforeCancel,
        EvAfterCancel,
        EvBeforeDelete,
        EvAfterDelete,
        EvBeforeRefresh,
        EvAfterRefresh,
        EvAfterScroll,
        EvCalcFields,
        EvReadRecord,
        EvCount
    };
    struct SortKey
    {
        int field;
        bool descending;
        bool caseInsensitive;
    };
    // Values set on a record, by field; only the assigned ones are cleared by a reset.
    struct RecordBuffer
    {
        std::vector<QVariant> values;
        std::vector<char> assigned;
        std::vector<int> touched; // fields assigned since the last reset
        void reset(std::size_t count);
        void set(std::size_t field, QVariant value);
        bool any() const { return !touched.empty(); }
    };
    class FetchScope;
    friend class FetchScope;
    friend class TDBRecalcRecord;
    class RowRecord;

    static constexpr quint32 kPendingRow = 0xFFFFFFFFu;

    void fire(Event event);
    void requireActive() const;
    void requireCanModify() const;
    sqlite3* db() const;

    // open / refresh
    QString keyColumnName() const;
    void prepareFields(TDBStatement& stmt, const QSet<QString>& lazyColumns, bool createFields);
    void fetchRows(TDBStatement& stmt);
    void resolveUnknownTypes();
    // Sets the columns of the statement's current row in m_rowBuilder.
    void readStatementRow(sqlite3_stmt* stmt);
    // The stored row of a record whose values are in builder: ReadRecord and CalcFields run on it
    // and what they set is added.
    TDBRowData finishRow(TDBRowBuilder& builder);
    // Room for a number behind each NULL Calculated Float field, so that recalcRows() writes in place.
    void keepNumberRoom(TDBRowBuilder& builder) const;
    QString effectiveSQL(QSet<QString>* lazyColumns) const;
    void closeInternal();
    void rebuildFieldIndex();
    TDBStatement& blobStatement(int field) const;

    // records
    const std::byte* currentRow() const;
    const std::byte* viewRow(int row) const;
    QVariant decode(const std::byte* row, const TDBField& field) const;
    QVariant blobValue(const std::byte* row, const TDBField& field) const;
    QVariant keyOfRow(const std::byte* row) const;
    QString blobCacheKey(int field, const QVariant& key) const;
    void invalidateBlobs(const QVariant& key);
    // The values of base with those assigned in buffer over them.
    void fillBuilder(TDBRowBuilder& builder, const std::byte* base, const RecordBuffer& buffer) const;
    void runCalcFields(bool readRecord);
    // CalcFields for the current stored record (after a cancelled edit).
    void calcCurrentRow();

    // view
    void rebuildView(bool keepPosition);
    void sortView();
    bool rowPasses(const std::byte* row) const;
    int sortedPosition(int row) const;
    int compareRows(const std::byte* a, const std::byte* b) const;
    void parseIndexFieldNames();
    void bindFilter();
    void setCursor(int row, bool notify);

    // editing
    void startInsert(int position);
    void checkRequiredFields() const;
    QVariant writeRecord();
    TDBRowData rereadRow(const QVariant& key);
    void setState(TDatasetState state);

    // observers
    bool beginNotify();
    void notifyRowChanged(int row);
    // stateChanged now, or at the last enableControls while controls are disabled.
    void notifyState();
    void notifyScroll();

    TDBConnection* m_connection = nullptr;
    QString m_sql;
    QString m_updateTableName;
    QString m_keyFields;
    TDBBindings m_bindings;
    bool m_autoCalcFields = true;
    bool m_readOnly = false;

    std::vector<std::unique_ptr<TDBField>> m_fields;
    bool m_dynamicFields = false;
    std::vector<int> m_columnField;      // result column -> field index, -1 when not kept
    std::vector<char> m_lazyBlob;        // per field: read by key when first needed
    std::vector<int> m_numberRoomFields; // Calculated Float fields
    int m_keyField = -1;
    QHash<QString, int> m_fieldIndex; // exact name -> field index
    TDBRowBuilder m_rowBuilder;
    RecordBuffer m_readBuffer;
    QString m_effectiveSQL;
    QList<TDBColumnInfo> m_tableColumns;

    std::vector<TDBRowData> m_rows; // fetched records, in fetch order; null when deleted
    bool m_rowsPending = false;
    std::vector<quint32> m_view; // rows shown, in order: indexes into m_rows or kPendingRow
    int m_cursor = -1;
    int m_cursorBeforeInsert = -1;
    bool m_eof = true;
    bool m_bof = true;

    TDatasetState m_state = TDatasetState::Inactive;
    RecordBuffer m_buffer; // edit / insert
    bool m_modified = false;

    // Record being read (OnReadRecord / OnCalcFields)
    const std::byte* m_fetchRow = nullptr;
    RecordBuffer* m_fetchBuffer = nullptr;
    bool m_calculating = false;

    QString m_indexFieldNames;
    std::vector<SortKey> m_sortKeys;
    QString m_filterText;
    bool m_filtered = false;
    std::unique_ptr<TDBFilter> m_filter;

    mutable QCache<QString, QVariant> m_blobCache;
    mutable std::vector<std::unique_ptr<TDBStatement>> m_blobStatements; // per field
    std::unique_ptr<TDBStatement> m_rereadStatement;

    int m_disableCount = 0;
    bool m_resetPending = false;
    bool m_scrollPending = false;
    bool m_statePending = false;
    std::vector<int> m_changedRows;

    std::array<TDatasetNotifyEvent, EvCount> m_events;
};

// Disables a dataset's controls for the length of a scope, also when an exception leaves it.
class TDisableControlsScope
{
public:
    explicit TDisableControlsScope(TDBDataset& dataset) : m_dataset(dataset) { m_dataset.disableControls(); }
    ~TDisableControlsScope() { m_dataset.enableControls(); }
    TDisableControlsScope(const TDisableControlsScope&) = delete;
    TDisableControlsScope& operator=(const TDisableControlsScope&) = delete;

private:
    TDBDataset& m_dataset;
};
