// Dataset: states, editing round-trips, required fields, events and their order, calculated and
// internal fields, change handlers, observers, filters, local order, locate, persistent fields.

#include "support_datarow.h"
#include "support_dbtest.h"
#include "uDBDataset.h"
#include "uDBError.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

namespace {

const double kTroyOunce = 31.1035;

// The names of the rows in their order, joined by '|'.
QString namesOf(const TDBDataset& ds)
{
    QStringList names;
    const int name = ds.fieldByName("Name").index();
    for (int r = 0; r < ds.recordCount(); ++r)
        names << ds.valueAt(r, name).toString();
    return names.join('|');
}

bool sameWeight(double a, double b)
{
    return std::abs(a - b) <= std::max(1e-12, 1e-12 * std::min(std::abs(a), std::abs(b)));
}

// The message of the EDatabaseError that `action` raises; empty when it raises none.
template <typename F> QString errorOf(F action)
{
    try {
        action();
    } catch (const EDatabaseError& e) {
        return e.message();
    }
    return {};
}

} // namespace

class TestDBDataset : public QObject
{
    Q_OBJECT

private:
    QString m_path;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDBConnection> m_conn;

    TDBField& f(TDBDataset& ds, const char* name) { return ds.fieldByName(name); }
    int count(const QString& where = "1")
    {
        return m_conn->selectValue("SELECT count(*) FROM tblCoins WHERE " + where).toInt();
    }

    // The item dataset as the collection uses it.
    std::unique_ptr<TDBDataset> makeItems(bool open = true)
    {
        auto ds = std::make_unique<TDBDataset>(m_conn.get());
        DBTest::declareItemFields(*ds);
        ds->setSQL(DBTest::itemsSQL());
        ds->setUpdateTableName("tblCoins");
        ds->setKeyFields("ID");
        ds->setIndexFieldNames("ID");
        ds->setAutoCalcFields(false);
        ds->fieldByName("Name").setDisplayLabel("Item name");
        if (open)
            ds->open();
        return ds;
    }

    // Appends a complete record with the given name and posts it.
    void appendItem(TDBDataset& ds, const QString& name)
    {
        ds.append();
        f(ds, "Name").setAsString(name);
        f(ds, "Metal").setAsInteger(0);
        f(ds, "WeightG").setAsFloat(1);
        f(ds, "CoinType").setAsInteger(0);
        ds.post();
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        m_path = m_dir->filePath("items.db");
        m_conn = DBTest::createCollection(m_path);
        using DBTest::insertCoin;
        m_conn->startTransaction();
        insertCoin(*m_conn, "Maple", 1, kTroyOunce, 10, 30.0, 0, 2012);
        insertCoin(*m_conn, "Eagle", 0, kTroyOunce, 2, 2000.0, 0, 2012);
        insertCoin(*m_conn, "Kangaroo", 1, kTroyOunce, 5, QVariant(), 0, QVariant());
        insertCoin(*m_conn, "PAMP bar", 0, kTroyOunce, 1, 1800.0, 3, QVariant());
        insertCoin(*m_conn, "Silver bar", 1, 1000.0, 1, 900.0, 4, 2020);
        insertCoin(*m_conn, "Platinum Eagle", 2, kTroyOunce, 1, 1000.0, 0, 2019);
        insertCoin(*m_conn, "O'Brien", 1, 15.55, 3, 25.0, 2, 0);
        m_conn->commit();
    }
    void cleanup()
    {
        m_conn.reset();
        m_dir.reset();
    }

    void stateTransitions()
    {
        auto ds = makeItems(false);
        QCOMPARE(ds->state(), TDatasetState::Inactive);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->append());
        QVERIFY(f(*ds, "Name").isNull());
        ds->open();
        QCOMPARE(ds->state(), TDatasetState::Browse);
        QCOMPARE(ds->recordCount(), 7);
        QVERIFY(ds->bof() && !ds->eof());
        QCOMPARE(errorOf([&] { f(*ds, "Name").setAsString("x"); }), "Dataset not in edit or insert mode");
        ds->edit();
        QCOMPARE(ds->state(), TDatasetState::Edit);
        QCOMPARE(errorOf([&] { f(*ds, "TotalPrice").setAsFloat(1); }),
                 "Field 'TotalPrice' cannot be modified");
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, f(*ds, "ID").setAsInteger(5));
        QCOMPARE(errorOf([&] { f(*ds, "Qty").setAsString("many"); }),
                 "'many' is not a valid integer value for field 'Qty'");
        f(*ds, "Qty").setAsString("42");
        QCOMPARE(f(*ds, "Qty").value(), QVariant(42));
        f(*ds, "PurchaseDate").setAsString("2023-12-31");
        QCOMPARE(f(*ds, "PurchaseDate").asDate(), QDate(2023, 12, 31));
        ds->cancel();
        QCOMPARE(ds->state(), TDatasetState::Browse);
        ds->append();
        QCOMPARE(ds->state(), TDatasetState::Insert);
        QCOMPARE(ds->recordCount(), 8);
        ds->cancel();
        QCOMPARE(ds->recordCount(), 7);
        ds->close();
        QCOMPARE(ds->state(), TDatasetState::Inactive);
        QCOMPARE(ds->recordCount(), 0);
        QCOMPARE(f(*ds, "Caption").kind(), TFieldKind::Calculated); // persistent fields survive the close
    }

    void appendPostReadsKeyAndExpressions()
    {
        // As in the blank template: the next item gets ID 265.
        m_conn->execSQL("UPDATE sqlite_sequence SET seq = 264 WHERE name = 'tblCoins'");
        auto ds = makeItems();
        ds->append();
        f(*ds, "Name").setAsString("Britannia");
        f(*ds, "Metal").setAsInteger(1);
        f(*ds, "WeightG").setAsFloat(kTroyOunce);
        f(*ds, "Qty").setAsInteger(4);
        f(*ds, "Price").setAsFloat(28.5);
        f(*ds, "PurchaseDate").setAsDate(QDate(2024, 5, 6));
        f(*ds, "MintMark").setAsBoolean(true);
        f(*ds, "CoinType").setAsInteger(0);
        f(*ds, "Custom3").setAsString("ünïcode ✓");
        QVERIFY(f(*ds, "TotalPrice").isNull()); // computed by the query, not yet
        ds->post();
        QCOMPARE(ds->state(), TDatasetState::Browse);
        QCOMPARE(f(*ds, "ID").asInteger(), 265);
        QCOMPARE(f(*ds, "TotalPrice").asFloat(), 114.0);
        QCOMPARE(f(*ds, "WeightGxQty").asFloat(), 4 * kTroyOunce);
        QCOMPARE(f(*ds, "PurchaseYearMonth").asString(), "2024-05");
        QCOMPARE(f(*ds, "PurchaseDate").value(), QVariant(QDate(2024, 5, 6)));
        QCOMPARE(f(*ds, "MintMark").value(), QVariant(true));
        QCOMPARE(ds->recNo(), 8);

        bool haveCli = false;
        const QString row = DBTest::sqliteCli(
            m_path,
            "SELECT Name, Metal, Qty, Price, PurchaseDate, MintMark, Custom3 FROM tblCoins WHERE ID = 265",
            &haveCli);
        if (haveCli)
            QCOMPARE(row, "Britannia|1|4|28.5|2024-05-06|1|ünïcode ✓");

        // An edit writes only what changed, and the expressions follow.
        DBTest::StatementLog log(m_conn->handle());
        ds->edit();
        f(*ds, "Price").setAsFloat(30);
        f(*ds, "Name").setAsString("Britannia"); // same value: not written
        ds->post();
        QCOMPARE(f(*ds, "TotalPrice").asFloat(), 120.0);
        QCOMPARE(log.statements.filter("UPDATE"),
                 QStringList{"UPDATE \"tblCoins\" SET \"Price\" = ? WHERE \"ID\" = ?"});
    }

    void requiredFields_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("message");
        AddRow("empty name", "Name", QVariant(QString()), "Field 'Item name' must have a value");
        AddRow("null weight", "WeightG", QVariant(), "Field 'WeightG' must have a value");
        AddRow("null type", "CoinType", QVariant(), "Field 'CoinType' must have a value");
    }
    void requiredFields()
    {
        QFETCH(QString, field);
        QFETCH(QVariant, value);
        QFETCH(QString, message);
        auto ds = makeItems();
        for (bool inserting : {true, false}) {
            if (inserting) {
                ds->append();
                f(*ds, "Name").setAsString("New");
                f(*ds, "Metal").setAsInteger(0);
                f(*ds, "WeightG").setAsFloat(1);
                f(*ds, "CoinType").setAsInteger(0);
            } else {
                ds->first();
                ds->edit();
            }
            ds->fieldByName(field).setValue(value);
            QCOMPARE(errorOf([&] { ds->post(); }), message);
            QCOMPARE(ds->state(), inserting ? TDatasetState::Insert : TDatasetState::Edit);
            // The record is still there to be fixed.
            ds->fieldByName(field).setValue(field == "Name" ? QVariant("Fixed") : QVariant(1));
            ds->post();
            QCOMPARE(ds->state(), TDatasetState::Browse);
        }
        QCOMPARE(count(), 8);
    }

    void databaseRefusalKeepsEditState()
    {
        TDBDataset ds(m_conn.get());
        ds.setTableName("tblCoins"); // dynamic fields: the file's NOT NULL rules only
        ds.open();
        ds.append();
        f(ds, "Metal").setAsInteger(1);
        f(ds, "WeightG").setAsFloat(1);
        f(ds, "Name").setValue(QVariant());
        // Name is NOT NULL without default: the dataset asks for it...
        QVERIFY(f(ds, "Name").required());
        QVERIFY(!f(ds, "CoinType").required()); // has a default
        f(ds, "Name").setRequired(false);
        // ...and the file refuses it with SQLite's words.
        QCOMPARE(errorOf([&] { ds.post(); }), "NOT NULL constraint failed: tblCoins.Name");
        QCOMPARE(ds.state(), TDatasetState::Insert);
        ds.cancel();
        QCOMPARE(ds.recordCount(), 7);
    }

    void cancelRestores()
    {
        auto ds = makeItems();
        ds->setRecNo(3);
        ds->edit();
        f(*ds, "Name").setAsString("Changed");
        QCOMPARE(ds->valueAt(2, f(*ds, "Name").index()).toString(), "Changed");
        QVERIFY(ds->modified());
        ds->cancel();
        QCOMPARE(f(*ds, "Name").asString(), "Kangaroo");
        QVERIFY(!ds->modified());

        ds->append();
        f(*ds, "Name").setAsString("Never");
        ds->cancel();
        QCOMPARE(ds->recordCount(), 7);
        QCOMPARE(ds->recNo(), 3); // back where it was
        QCOMPARE(count(), 7);
    }

    void refreshSeesOutsideChangesAndKeepsPosition()
    {
        auto ds = makeItems();
        QVERIFY(ds->locate("Name", "Silver bar"));
        const int id = f(*ds, "ID").asInteger();
        m_conn->execSQL(QString("UPDATE tblCoins SET Price = 950 WHERE ID = %1").arg(id));
        m_conn->execSQL("DELETE FROM tblCoins WHERE Name = 'Maple'");
        DBTest::insertCoin(*m_conn, "Late", 0, 1.0);
        QCOMPARE(f(*ds, "Price").asFloat(), 900.0);
        ds->refresh();
        QCOMPARE(ds->recordCount(), 7);
        QCOMPARE(f(*ds, "ID").asInteger(), id);
        QCOMPARE(f(*ds, "Price").asFloat(), 950.0);
        QCOMPARE(f(*ds, "TotalPrice").asFloat(), 950.0);
        QVERIFY(namesOf(*ds).endsWith("|Late"));
    }

    void pendingEditPostedByMoves()
    {
        auto ds = makeItems();
        ds->first();
        ds->edit();
        f(*ds, "Qty").setAsInteger(11);
        ds->next(); // posts
        QCOMPARE(ds->state(), TDatasetState::Browse);
        QCOMPARE(count("Name = 'Maple' AND Qty = 11"), 1);
        ds->edit();
        f(*ds, "Qty").setAsInteger(12);
        ds->refresh(); // posts too
        QCOMPARE(count("Name = 'Eagle' AND Qty = 12"), 1);
    }

    void navigationAndDelete()
    {
        auto ds = makeItems();
        int seen = 0;
        for (ds->first(); !ds->eof(); ds->next())
            ++seen;
        QCOMPARE(seen, 7);
        QCOMPARE(ds->recNo(), 7);
        for (ds->last(); !ds->bof(); ds->prior())
            --seen;
        QCOMPARE(seen, 0);
        QCOMPARE(ds->moveBy(3), 3);
        QCOMPARE(ds->recNo(), 4);
        QCOMPARE(ds->moveBy(10), 3);
        QVERIFY(ds->eof());

        ds->setRecNo(2);
        QSignalSpy removed(ds.get(), &TDBDataset::afterRemoveRow);
        ds->deleteRecord();
        QCOMPARE(removed.count(), 1);
        QCOMPARE(ds->recordCount(), 6);
        QCOMPARE(f(*ds, "Name").asString(), "Kangaroo");
        QCOMPARE(count("Name = 'Eagle'"), 0);
        ds->last();
        ds->deleteRecord();
        QVERIFY(ds->eof());
        QCOMPARE(f(*ds, "Name").asString(), "Platinum Eagle");
        while (!ds->isEmpty())
            ds->deleteRecord();
        QCOMPARE(ds->recNo(), 0);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->deleteRecord());
        ds->edit(); // edit on an empty dataset appends
        QCOMPARE(ds->state(), TDatasetState::Insert);
        ds->cancel();
    }

    void eventOrder()
    {
        auto ds = makeItems(false);
        QStringList log;
        auto note = [&log](const char* what) { return [&log, what](TDBDataset&) { log << what; }; };
        ds->setOnBeforeOpen(note("BeforeOpen"));
        ds->setOnAfterOpen(note("AfterOpen"));
        ds->setOnReadRecord(note("ReadRecord"));
        ds->setOnCalcFields(note("CalcFields"));
        ds->setOnAfterScroll(note("AfterScroll"));
        ds->setOnBeforeInsert(note("BeforeInsert"));
        ds->setOnNewRecord(note("NewRecord"));
        ds->setOnAfterInsert(note("AfterInsert"));
        ds->setOnBeforeEdit(note("BeforeEdit"));
        ds->setOnAfterEdit(note("AfterEdit"));
        ds->setOnBeforePost(note("BeforePost"));
        ds->setOnAfterPost(note("AfterPost"));
        ds->setOnBeforeCancel(note("BeforeCancel"));
        ds->setOnAfterCancel(note("AfterCancel"));
        ds->setOnBeforeDelete(note("BeforeDelete"));
        ds->setOnAfterDelete(note("AfterDelete"));
        ds->setOnBeforeClose(note("BeforeClose"));
        ds->setOnAfterClose(note("AfterClose"));
        f(*ds, "Name").setOnChange([&log](TDBField&) { log << "NameChange"; });

        ds->open();
        QCOMPARE(log.join(' '),
                 "BeforeOpen" + QString(" ReadRecord CalcFields").repeated(7) + " AfterOpen AfterScroll");
        log.clear();
        appendItem(*ds, "N");
        QCOMPARE(log.join(' '),
                 "BeforeInsert NewRecord AfterInsert NameChange BeforePost ReadRecord CalcFields AfterPost");
        log.clear();
        ds->edit();
        f(*ds, "Name").clear();
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->post());
        ds->cancel();
        QCOMPARE(log.join(' '),
                 "BeforeEdit AfterEdit NameChange BeforePost BeforeCancel CalcFields AfterCancel");
        log.clear();
        ds->deleteRecord();
        ds->close();
        QCOMPARE(log.join(' '), "BeforeDelete AfterDelete BeforeClose AfterClose");

        // A deferred open: the dataset is open at once, its records come with fetchPendingRows.
        log.clear();
        ds->open(TRowFetch::Deferred);
        QVERIFY(ds->active() && ds->rowsPending() && ds->isEmpty());
        QCOMPARE(log.join(' '), "BeforeOpen AfterOpen AfterScroll");
        log.clear();
        ds->fetchPendingRows();
        ds->fetchPendingRows(); // nothing pending any more
        QCOMPARE(log.join(' '), QString("ReadRecord CalcFields ").repeated(7) + "AfterScroll");
        QCOMPARE(ds->recNo(), 1);
    }

    void beforePostHandlerCanVeto()
    {
        auto ds = makeItems();
        ds->setOnBeforePost([](TDBDataset&) { throw EDatabaseError("not now"); });
        ds->edit();
        f(*ds, "Qty").setAsInteger(99);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->post());
        QCOMPARE(ds->state(), TDatasetState::Edit);
        ds->cancel();
        QCOMPARE(count("Name = 'Maple' AND Qty = 10"), 1);
    }

    void calcFieldsOnlyOnFetchPostCancel_data()
    {
        QTest::addColumn<bool>("autoCalc");
        AddRow("AutoCalcFields false", false);
        AddRow("AutoCalcFields true", true);
    }
    void calcFieldsOnlyOnFetchPostCancel()
    {
        QFETCH(bool, autoCalc);
        auto ds = makeItems(false);
        ds->setAutoCalcFields(autoCalc);
        int calls = 0;
        double spot = 20.0;
        ds->setOnCalcFields([&](TDBDataset& d) {
            ++calls;
            const int year = f(d, "Year").asInteger();
            f(d, "Caption")
                .setAsString(f(d, "Name").asString() + (year ? QString(" %1").arg(year) : QString()));
            f(d, "SpotValue").setAsFloat(spot * f(d, "WeightG").asFloat() / kTroyOunce);
        });
        ds->open();
        QCOMPARE(calls, 7);
        QCOMPARE(f(*ds, "Caption").asString(), "Maple 2012");
        QCOMPARE(f(*ds, "SpotValue").asFloat(), 20.0);
        // Reading and moving don't recompute.
        for (ds->first(); !ds->eof(); ds->next())
            f(*ds, "Caption").asString();
        QCOMPARE(calls, 7);

        ds->first();
        ds->edit();
        f(*ds, "Name").setAsString("Leaf");
        f(*ds, "WeightG").setAsFloat(2 * kTroyOunce);
        QCOMPARE(calls, autoCalc ? 9 : 7);
        QCOMPARE(f(*ds, "Caption").asString(), autoCalc ? "Leaf 2012" : "Maple 2012");
        ds->cancel();
        QCOMPARE(calls, autoCalc ? 10 : 8);
        QCOMPARE(f(*ds, "Caption").asString(), "Maple 2012");

        // A new price reaches the rows through a post or a refresh only.
        spot = 40.0;
        QCOMPARE(f(*ds, "SpotValue").asFloat(), 20.0);
        const int before = calls;
        ds->edit();
        f(*ds, "Name").setAsString("Leaf");
        ds->post();
        QCOMPARE(calls, before + (autoCalc ? 2 : 1));
        QCOMPARE(f(*ds, "Caption").asString(), "Leaf 2012");
        QCOMPARE(f(*ds, "SpotValue").asFloat(), 40.0);
        ds->refresh();
        QCOMPARE(calls, before + (autoCalc ? 2 : 1) + 7);
        ds->last();
        QCOMPARE(f(*ds, "Caption").asString(), "O'Brien");
    }

    // recalcRows keeps what its handler sets, written in place through the record or through field
    // objects (the row then built anew); the order follows a calculated sort key, the cursor its
    // record, and observers get one reset. Only calculated numbers can be set through the record.
    void recalcRowsKeepsWhatItSets_data()
    {
        QTest::addColumn<bool>("byFields");
        AddRow("through the record", false);
        AddRow("through field objects", true);
    }
    void recalcRowsKeepsWhatItSets()
    {
        QFETCH(bool, byFields);
        auto ds = makeItems(false);
        double spot = 20.0;
        ds->setOnCalcFields([&](TDBDataset& d) {
            if (f(d, "Year").asInteger())
                f(d, "SpotValue").setAsFloat(spot * f(d, "WeightG").asFloat() / kTroyOunce);
        });
        ds->open();
        ds->setIndexFieldNames("SpotValue:D;ID");
        QVERIFY(ds->locate("Name", "Maple"));
        spot = 40.0;
        QSignalSpy resets(ds.get(), &TDBDataset::afterReset);
        ds->recalcRows([&](TDBRecalcRecord& r) {
            // Every row gets a value now, also those that had none.
            const double value =
                spot * r.asFloat(f(*ds, "WeightG")) / kTroyOunce + r.asInteger(f(*ds, "Qty"));
            if (byFields) {
                f(*ds, "SpotValue").setAsFloat(value);
                f(*ds, "Caption").setAsString(f(*ds, "Name").asString() + "!");
            } else {
                r.setFloat(f(*ds, "SpotValue"), value);
            }
        });
        QCOMPARE(resets.count(), 1);
        QCOMPARE(f(*ds, "Name").asString(), "Maple");
        QStringList order;
        for (ds->first(); !ds->eof(); ds->next())
            order << QString("%1=%2%3")
                         .arg(f(*ds, "Name").asString())
                         .arg(f(*ds, "SpotValue").asFloat())
                         .arg(byFields ? f(*ds, "Caption").asString().right(1) : QString());
        const QString mark = byFields ? "!" : "";
        QCOMPARE(order, QStringList({"Silver bar=1287.03" + mark, "Maple=50" + mark, "Kangaroo=45" + mark,
                                     "Eagle=42" + mark, "PAMP bar=41" + mark, "Platinum Eagle=41" + mark,
                                     "O'Brien=22.9977" + mark}));
        QVERIFY_THROWS_EXCEPTION(
            EDatabaseError, ds->recalcRows([&](TDBRecalcRecord& r) { r.setFloat(f(*ds, "Price"), 1.0); }));
    }

    // Internal fields are set when a row is read, edited freely, and read again after a post or a
    // cancel; a change handler detached while another one works stays silent.
    void internalFields()
    {
        auto ds = makeItems(false);
        TDBField& weightG = f(*ds, "WeightG");
        TDBField& weightGram = f(*ds, "WeightGram");
        ds->setOnReadRecord([&](TDBDataset&) { weightGram.setAsFloat(weightG.asFloat()); });
        int gramEvents = 0;
        weightGram.setOnChange([&](TDBField& field) {
            ++gramEvents;
            if (!sameWeight(weightG.asFloat(), field.asFloat()))
                weightG.setAsFloat(field.asFloat());
        });
        ds->open();
        QVERIFY(ds->locate("Name", "Silver bar"));
        QCOMPARE(weightGram.asFloat(), 1000.0);
        QCOMPARE(gramEvents, 0); // reading a row is no change

        ds->edit();
        const TFieldNotifyEvent saved = weightGram.onChange();
        weightGram.setOnChange({});
        weightGram.setAsFloat(5);
        weightGram.setOnChange(saved);
        QCOMPARE(gramEvents, 0);
        QCOMPARE(weightG.asFloat(), 1000.0);
        weightGram.setAsFloat(15.55);
        QCOMPARE(gramEvents, 1);
        ds->post();
        QCOMPARE(m_conn->selectValue("SELECT WeightG FROM tblCoins WHERE Name = 'Silver bar'").toDouble(),
                 15.55);
        QCOMPARE(weightGram.asFloat(), 15.55);

        ds->edit();
        weightGram.setAsFloat(100);
        ds->cancel();
        QCOMPARE(weightGram.asFloat(), 15.55);
        QCOMPARE(weightG.asFloat(), 15.55);
    }

    void disableControlsNotifiesOnce()
    {
        auto ds = makeItems();
        QSignalSpy beforeReset(ds.get(), &TDBDataset::beforeReset);
        QSignalSpy afterReset(ds.get(), &TDBDataset::afterReset);
        QSignalSpy changed(ds.get(), &TDBDataset::rowChanged);
        QSignalSpy inserted(ds.get(), &TDBDataset::afterInsertRow);
        QSignalSpy current(ds.get(), &TDBDataset::currentChanged);

        ds->disableControls();
        ds->disableControls();
        for (ds->first(); !ds->eof(); ds->next()) {
            ds->edit();
            f(*ds, "Qty").setAsInteger(f(*ds, "Qty").asInteger() + 1);
            ds->post();
        }
        appendItem(*ds, "Batch");
        ds->refresh();
        ds->enableControls();
        QCOMPARE(afterReset.count() + current.count(), 0);
        ds->enableControls();
        QCOMPARE(beforeReset.count(), 1);
        QCOMPARE(afterReset.count(), 1);
        QCOMPARE(changed.count() + inserted.count(), 0);
        QCOMPARE(current.count(), 1);
        ds->enableControls(); // unbalanced: ignored
        QCOMPARE(afterReset.count(), 1);

        // Value changes alone come out as row changes, once per row.
        ds->disableControls();
        ds->first();
        ds->edit();
        f(*ds, "Qty").setAsInteger(1);
        f(*ds, "Price").setAsFloat(1);
        ds->post();
        ds->enableControls();
        QCOMPARE(afterReset.count(), 1);
        QCOMPARE(changed.count(), 1);

        // A failure inside the batch still enables the controls.
        try {
            TDisableControlsScope scope(*ds);
            ds->last();
            ds->deleteRecord();
            ds->edit();
            f(*ds, "Name").clear();
            ds->post();
            QFAIL("posted without a name");
        } catch (const EDatabaseError&) {
        }
        QVERIFY(!ds->controlsDisabled());
        QCOMPARE(afterReset.count(), 2);
        ds->cancel();
    }

    void filters_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("names");
        AddRow("quick filter: bars of gold and silver", "(Metal IN (-1, 0, 1)) AND (CoinType IN (-1, 3, 4))",
               "PAMP bar|Silver bar");
        AddRow("quick filter: nothing checked", "(Metal IN (-1)) AND (CoinType IN (-1, 0, 1, 2, 3, 4))", "");
        AddRow("quick filter: everything",
               "(Metal IN (-1, 0, 1, 2, 3, 4, 5)) AND (CoinType IN (-1, 0, 1, 2, 3, 4))",
               "Maple|Eagle|Kangaroo|PAMP bar|Silver bar|Platinum Eagle|O'Brien");
        AddRow("or", "Metal = 2 OR Price > 1500", "Eagle|PAMP bar|Platinum Eagle");
        AddRow("not", "NOT (Metal = 1)", "Eagle|PAMP bar|Platinum Eagle");
        AddRow("is null", "Year IS NULL", "Kangaroo|PAMP bar");
        AddRow("null never equal", "Year <> 2012", "Silver bar|Platinum Eagle|O'Brien");
        AddRow("like", "Name LIKE '%eagle'", "Eagle|Platinum Eagle");
        AddRow("quoted text", "Name = 'O''Brien'", "O'Brien");
        AddRow("query-computed field", "TotalPrice >= 1000", "Eagle|PAMP bar|Platinum Eagle");
        AddRow("lower case, brackets, float", "[metal] in (1) and weightg < 20.5", "O'Brien");
        AddRow("date as text", "PurchaseDate = '2021-03-04' AND Metal = 2", "Platinum Eagle");
    }
    void filters()
    {
        QFETCH(QString, filter);
        QFETCH(QString, names);
        auto ds = makeItems();
        ds->setFilter(filter);
        QCOMPARE(ds->recordCount(), 7); // not yet filtered
        ds->setFiltered(true);
        QCOMPARE(namesOf(*ds), names);
        QCOMPARE(ds->isEmpty(), names.isEmpty());
        QCOMPARE(ds->eof(), names.isEmpty());
        // The filter stays over a refresh and goes with filtered off.
        ds->refresh();
        QCOMPARE(namesOf(*ds), names);
        ds->setFiltered(false);
        QCOMPARE(ds->recordCount(), 7);
    }

    void malformedFilters_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("message");
        AddRow("unclosed list", "(Metal IN (-1, 0",
               "Filter expression error at position 17: ',' or ')' expected, "
               "found 'end of text' in \"(Metal IN (-1, 0\"");
        AddRow("empty list", "Metal IN ()",
               "Filter expression error at position 11: empty IN list in \"Metal IN ()\"");
        AddRow("dangling and", "Metal IN (1) AND",
               "Filter expression error at position 17: value expected, found 'end "
               "of text' in \"Metal IN (1) AND\"");
        AddRow("open text", "Name = 'abc",
               "Filter expression error at position 8: unterminated text in \"Name = 'abc\"");
        AddRow("two terms", "Metal = 1 Metal = 2",
               "Filter expression error at position 11: unexpected 'Metal' in \"Metal = 1 Metal = 2\"");
        AddRow("bad character", "Metal # 1",
               "Filter expression error at position 7: unexpected character '#' in \"Metal # 1\"");
        AddRow("unknown field", "Nope = 1", "Field 'Nope' not found");
    }
    void malformedFilters()
    {
        QFETCH(QString, filter);
        QFETCH(QString, message);
        auto ds = makeItems();
        ds->setFilter("Metal = 0");
        ds->setFiltered(true);
        QCOMPARE(ds->recordCount(), 2);
        QCOMPARE(errorOf([&] { ds->setFilter(filter); }), message);
        // The previous filter is still in force.
        QCOMPARE(ds->filter(), "Metal = 0");
        QCOMPARE(ds->recordCount(), 2);
    }

    void localSort_data()
    {
        QTest::addColumn<QString>("index");
        QTest::addColumn<QString>("names");
        AddRow("two fields", "Metal;Name", "Eagle|PAMP bar|Kangaroo|Maple|O'Brien|Silver bar|Platinum Eagle");
        AddRow("descending", "Name:D", "Silver bar|Platinum Eagle|PAMP bar|O'Brien|Maple|Kangaroo|Eagle");
        AddRow("nulls first", "Price", "Kangaroo|O'Brien|Maple|Silver bar|Platinum Eagle|PAMP bar|Eagle");
        AddRow("descending year, then name", "Year:D;Name",
               "Silver bar|Platinum Eagle|Eagle|Maple|O'Brien|Kangaroo|PAMP bar");
        AddRow("computed, ties in fetch order", "WeightGxQty",
               "PAMP bar|Platinum Eagle|O'Brien|Eagle|Kangaroo|Maple|Silver bar");
    }
    void localSort()
    {
        QFETCH(QString, index);
        QFETCH(QString, names);
        auto ds = makeItems();
        ds->setIndexFieldNames(index);
        QCOMPARE(namesOf(*ds), names);
        // The order is kept across a refresh and a reopen.
        ds->refresh();
        QCOMPARE(namesOf(*ds), names);
        ds->close();
        ds->open();
        QCOMPARE(namesOf(*ds), names);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->setIndexFieldNames("Name;Nope"));
        QCOMPARE(ds->indexFieldNames(), index);
    }

    void postKeepsOrderAndCursor()
    {
        auto ds = makeItems();
        ds->setIndexFieldNames("Name");
        QSignalSpy moved(ds.get(), &TDBDataset::afterMoveRow);
        QVERIFY(ds->locate("Name", "Eagle"));
        QCOMPARE(ds->recNo(), 1);
        ds->edit();
        f(*ds, "Name").setAsString("Zebra");
        ds->post();
        QCOMPARE(moved.count(), 1);
        QCOMPARE(moved.first(), QVariantList({0, 6}));
        QCOMPARE(ds->recNo(), 7);
        QCOMPARE(f(*ds, "Name").asString(), "Zebra");
        appendItem(*ds, "Aardvark");
        QCOMPARE(ds->recNo(), 1);
        QVERIFY(namesOf(*ds).startsWith("Aardvark|") && namesOf(*ds).endsWith("|Zebra"));
    }

    void locate()
    {
        auto ds = makeItems();
        QVERIFY(ds->locate("ID", 6));
        QCOMPARE(f(*ds, "Name").asString(), "Platinum Eagle");
        QVERIFY(!ds->locate("ID", 999));
        QCOMPARE(f(*ds, "Name").asString(), "Platinum Eagle"); // stayed
        QVERIFY(!ds->locate("Name", "maple"));
        QVERIFY(ds->locate("Name", "maple", TLocateOption::CaseInsensitive));
        QCOMPARE(ds->recNo(), 1);
        QVERIFY(ds->locate("Name", "Plat", TLocateOption::PartialKey));
        QCOMPARE(ds->recNo(), 6);
        QVERIFY(ds->locate("Metal;CoinType", QVariantList{1, 4}));
        QCOMPARE(f(*ds, "Name").asString(), "Silver bar");
        QVERIFY(ds->locate("Year", QVariant()));
        QCOMPARE(f(*ds, "Name").asString(), "Kangaroo");
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->locate("Metal;CoinType", 1));
        ds->setFilter("Metal = 0");
        ds->setFiltered(true);
        QVERIFY(!ds->locate("ID", 6)); // a filtered-out record is not found
    }

    // A file whose tblCoins lacks a column the item fields bind to does not open; a missing blob
    // column is found missing too, although blobs are not selected.
    void persistentFieldMissingFromFile_data()
    {
        QTest::addColumn<QString>("column");
        AddRow("Custom5", "Custom5");
        AddRow("PhotoSide", "PhotoSide");
    }
    void persistentFieldMissingFromFile()
    {
        QFETCH(QString, column);
        QString ddl = DBTest::coinsDDL();
        QVERIFY(ddl.contains(column));
        ddl.remove(QRegularExpression("\\n\\s*" + column + " [^\\n]*"));
        auto other = DBTest::openConnection(m_dir->filePath(column + ".db"));
        other->execSQL(ddl);
        TDBDataset ds(other.get());
        DBTest::declareItemFields(ds);
        ds.setSQL(DBTest::itemsSQL());
        ds.setUpdateTableName("tblCoins");
        QSignalSpy resets(&ds, &TDBDataset::afterReset);
        QCOMPARE(errorOf([&] { ds.open(); }), QString("Field '%1' not found").arg(column));
        QVERIFY(!ds.active());
        QCOMPARE(resets.count(), 1); // observers saw the attempt end
        QVERIFY(ds.findField(column) != nullptr);
    }

    void dynamicFieldsFromTheFile()
    {
        TDBDataset mints(m_conn.get());
        mints.setTableName("tblMints");
        mints.open();
        QCOMPARE(mints.fieldCount(), 7);
        QCOMPARE(mints.field(0).fieldName(), "ID");
        QCOMPARE(mints.field(0).dataType(), TFieldType::AutoInc);
        QVERIFY(mints.field(0).readOnly());
        QCOMPARE(f(mints, "Name").dataType(), TFieldType::String);
        QCOMPARE(f(mints, "Name").size(), 300);
        QVERIFY(f(mints, "Name").required());
        QCOMPARE(f(mints, "Logo").dataType(), TFieldType::Blob);
        QCOMPARE(f(mints, "IsPrivate").dataType(), TFieldType::Boolean);
        QCOMPARE(f(mints, "Description").dataType(), TFieldType::Memo);
        // A new mint and its key.
        m_conn->execSQL("INSERT INTO sqlite_sequence (name, seq) VALUES ('tblMints', 67)");
        mints.append();
        f(mints, "Name").setAsString("Perth Mint");
        f(mints, "IsPrivate").setAsBoolean(false);
        mints.post();
        QCOMPARE(f(mints, "ID").asInteger(), 68);
        QCOMPARE(f(mints, "IsPrivate").value(), QVariant(false));
        mints.close();
        QCOMPARE(mints.fieldCount(), 0); // dynamic fields go with the close

        // A query without an update table is read-only; its expression types come from the values.
        TDBDataset stats(m_conn.get());
        stats.setSQL("SELECT Metal, SUM(WeightG * Qty) AS TotalWeightG::REAL, COUNT(*) AS N "
                     "FROM tblCoins GROUP BY Metal ORDER BY Metal");
        stats.open();
        QCOMPARE(stats.recordCount(), 3);
        QCOMPARE(f(stats, "TotalWeightG").dataType(), TFieldType::Float);
        QCOMPARE(f(stats, "N").dataType(), TFieldType::LargeInt);
        QVERIFY(!stats.canModify());
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, stats.edit());
    }
};

QTEST_GUILESS_MAIN(TestDBDataset)
#include "tst_dbdataset.moc"
