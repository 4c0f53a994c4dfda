// Dataset: states, editing round-trips, required fields, events and their order, calculated and
// internal fields, change handlers, observers, filters, local order, locate, persistent fields.

#include "support_dbtest.h"
#include "uDBDataset.h"
#include "uDBError.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

namespace {

const double kTroyOunce = 31.1035;

QStringList namesOf(const TDBDataset& ds)
{
    QStringList names;
    const int name = ds.fieldByName(QStringLiteral("Name")).index();
    for (int r = 0; r < ds.recordCount(); ++r)
        names << ds.valueAt(r, name).toString();
    return names;
}

bool sameWeight(double a, double b)
{
    return std::abs(a - b) <= std::max(1e-12, 1e-12 * std::min(std::abs(a), std::abs(b)));
}

} // namespace

class TestDBDataset : public QObject
{
    Q_OBJECT

private:
    QString m_path;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDBConnection> m_conn;

    TDBField& f(TDBDataset& ds, const char* name) { return ds.fieldByName(QString::fromLatin1(name)); }

    // The item dataset as the collection uses it.
    std::unique_ptr<TDBDataset> makeItems(bool open = true)
    {
        auto ds = std::make_unique<TDBDataset>(m_conn.get());
        DBTest::declareItemFields(*ds);
        ds->setSQL(DBTest::itemsSQL());
        ds->setUpdateTableName(QStringLiteral("tblCoins"));
        ds->setKeyFields(QStringLiteral("ID"));
        ds->setIndexFieldNames(QStringLiteral("ID"));
        ds->setAutoCalcFields(false);
        ds->fieldByName(QStringLiteral("Name")).setDisplayLabel(QStringLiteral("Item name"));
        if (open)
            ds->open();
        return ds;
    }

    void fillSeven()
    {
        using DBTest::insertCoin;
        m_conn->startTransaction();
        insertCoin(*m_conn, QStringLiteral("Maple"), 1, kTroyOunce, 10, 30.0, 0, 2012);
        insertCoin(*m_conn, QStringLiteral("Eagle"), 0, kTroyOunce, 2, 2000.0, 0, 2012);
        insertCoin(*m_conn, QStringLiteral("Kangaroo"), 1, kTroyOunce, 5, QVariant(), 0, QVariant());
        insertCoin(*m_conn, QStringLiteral("PAMP bar"), 0, kTroyOunce, 1, 1800.0, 3, QVariant());
        insertCoin(*m_conn, QStringLiteral("Silver bar"), 1, 1000.0, 1, 900.0, 4, 2020);
        insertCoin(*m_conn, QStringLiteral("Platinum Eagle"), 2, kTroyOunce, 1, 1000.0, 0, 2019);
        insertCoin(*m_conn, QStringLiteral("O'Brien"), 1, 15.55, 3, 25.0, 2, 0);
        m_conn->commit();
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        m_path = m_dir->filePath(QStringLiteral("items.db"));
        m_conn = DBTest::createCollection(m_path);
        fillSeven();
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
        QVERIFY(ds->bof());
        QVERIFY(!ds->eof());
        try {
            f(*ds, "Name").setAsString(QStringLiteral("x"));
            QFAIL("set in browse state");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("Dataset not in edit or insert mode"));
        }
        ds->edit();
        QCOMPARE(ds->state(), TDatasetState::Edit);
        try {
            f(*ds, "TotalPrice").setAsFloat(1);
            QFAIL("set a query-computed field");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("Field 'TotalPrice' cannot be modified"));
        }
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, f(*ds, "ID").setAsInteger(5));
        ds->cancel();
        QCOMPARE(ds->state(), TDatasetState::Browse);
        ds->append();
        QCOMPARE(ds->state(), TDatasetState::Insert);
        QCOMPARE(ds->recordCount(), 8);
        ds->cancel();
        QCOMPARE(ds->state(), TDatasetState::Browse);
        QCOMPARE(ds->recordCount(), 7);
        ds->close();
        QCOMPARE(ds->state(), TDatasetState::Inactive);
        QCOMPARE(ds->recordCount(), 0);
        // Persistent fields survive the close.
        QCOMPARE(f(*ds, "Caption").kind(), TFieldKind::Calculated);
    }

    void appendPostReadsKeyAndExpressions()
    {
        // As in the blank template: the next item gets ID 265.
        m_conn->execSQL(QStringLiteral("UPDATE sqlite_sequence SET seq = 264 WHERE name = 'tblCoins'"));
        auto ds = makeItems();
        ds->append();
        f(*ds, "Name").setAsString(QStringLiteral("Britannia"));
        f(*ds, "Metal").setAsInteger(1);
        f(*ds, "WeightG").setAsFloat(kTroyOunce);
        f(*ds, "Qty").setAsInteger(4);
        f(*ds, "Price").setAsFloat(28.5);
        f(*ds, "PurchaseDate").setAsDate(QDate(2024, 5, 6));
        f(*ds, "MintMark").setAsBoolean(true);
        f(*ds, "CoinType").setAsInteger(0);
        f(*ds, "Custom3").setAsString(QStringLiteral("ünïcode ✓"));
        QVERIFY(f(*ds, "TotalPrice").isNull()); // computed by the query, not yet
        ds->post();
        QCOMPARE(ds->state(), TDatasetState::Browse);
        QCOMPARE(f(*ds, "ID").asInteger(), 265);
        QCOMPARE(f(*ds, "TotalPrice").asFloat(), 114.0);
        QCOMPARE(f(*ds, "WeightGxQty").asFloat(), 4 * kTroyOunce);
        QCOMPARE(f(*ds, "PurchaseYearMonth").asString(), QStringLiteral("2024-05"));
        QCOMPARE(f(*ds, "PurchaseDate").value(), QVariant(QDate(2024, 5, 6)));
        QCOMPARE(f(*ds, "MintMark").value(), QVariant(true));
        QCOMPARE(ds->recNo(), 8);

        bool haveCli = false;
        const QString row =
            DBTest::sqliteCli(m_path,
                              QStringLiteral("SELECT Name, Metal, Qty, Price, PurchaseDate, MintMark, "
                                             "Custom3 FROM tblCoins WHERE ID = 265"),
                              &haveCli);
        if (haveCli)
            QCOMPARE(row, QStringLiteral("Britannia|1|4|28.5|2024-05-06|1|ünïcode ✓"));

        // An edit writes only what changed, and the expressions follow.
        DBTest::StatementLog log(m_conn->handle());
        ds->edit();
        f(*ds, "Price").setAsFloat(30);
        f(*ds, "Name").setAsString(QStringLiteral("Britannia")); // same value: not written
        ds->post();
        QCOMPARE(f(*ds, "TotalPrice").asFloat(), 120.0);
        const QStringList updates = log.statements.filter(QStringLiteral("UPDATE"));
        QCOMPARE(updates.size(), 1);
        QCOMPARE(updates.first(), QStringLiteral("UPDATE \"tblCoins\" SET \"Price\" = ? WHERE \"ID\" = ?"));
    }

    void requiredFields_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("message");
        QTest::newRow("empty name") << "Name" << QVariant(QString()) << "Field 'Item name' must have a value";
        QTest::newRow("null name") << "Name" << QVariant() << "Field 'Item name' must have a value";
        QTest::newRow("null metal") << "Metal" << QVariant() << "Field 'Metal' must have a value";
        QTest::newRow("null weight") << "WeightG" << QVariant() << "Field 'WeightG' must have a value";
        QTest::newRow("null type") << "CoinType" << QVariant() << "Field 'CoinType' must have a value";
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
                f(*ds, "Name").setAsString(QStringLiteral("New"));
                f(*ds, "Metal").setAsInteger(0);
                f(*ds, "WeightG").setAsFloat(1);
                f(*ds, "CoinType").setAsInteger(0);
            } else {
                ds->first();
                ds->edit();
            }
            ds->fieldByName(field).setValue(value);
            try {
                ds->post();
                QFAIL("posted without a required value");
            } catch (const EDatabaseError& e) {
                QCOMPARE(e.message(), message);
            }
            QCOMPARE(ds->state(), inserting ? TDatasetState::Insert : TDatasetState::Edit);
            // The record is still there to be fixed.
            ds->fieldByName(field).setValue(
                field == QStringLiteral("Name") ? QVariant(QStringLiteral("Fixed")) : QVariant(1));
            ds->post();
            QCOMPARE(ds->state(), TDatasetState::Browse);
        }
        QCOMPARE(m_conn->selectValue(QStringLiteral("SELECT count(*) FROM tblCoins")).toInt(), 8);
    }

    void databaseRefusalKeepsEditState()
    {
        TDBDataset ds(m_conn.get());
        ds.setTableName(QStringLiteral("tblCoins")); // dynamic fields: the file's NOT NULL rules only
        ds.open();
        ds.append();
        ds.fieldByName(QStringLiteral("Metal")).setAsInteger(1);
        ds.fieldByName(QStringLiteral("WeightG")).setAsFloat(1);
        ds.fieldByName(QStringLiteral("Name")).setValue(QVariant());
        // Name is NOT NULL without default: the dataset asks for it...
        QVERIFY(ds.fieldByName(QStringLiteral("Name")).required());
        QVERIFY(!ds.fieldByName(QStringLiteral("CoinType")).required()); // has a default
        ds.fieldByName(QStringLiteral("Name")).setRequired(false);
        // ...and the file refuses it with SQLite's words.
        try {
            ds.post();
            QFAIL("posted a NULL into a NOT NULL column");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("NOT NULL constraint failed: tblCoins.Name"));
        }
        QCOMPARE(ds.state(), TDatasetState::Insert);
        ds.cancel();
        QCOMPARE(ds.recordCount(), 7);
    }

    void cancelRestores()
    {
        auto ds = makeItems();
        ds->setRecNo(3);
        ds->edit();
        f(*ds, "Name").setAsString(QStringLiteral("Changed"));
        QCOMPARE(ds->valueAt(2, f(*ds, "Name").index()).toString(), QStringLiteral("Changed"));
        QVERIFY(ds->modified());
        ds->cancel();
        QCOMPARE(f(*ds, "Name").asString(), QStringLiteral("Kangaroo"));
        QVERIFY(!ds->modified());

        ds->append();
        f(*ds, "Name").setAsString(QStringLiteral("Never"));
        ds->cancel();
        QCOMPARE(ds->recordCount(), 7);
        QCOMPARE(ds->recNo(), 3); // back where it was
        QCOMPARE(m_conn->selectValue(QStringLiteral("SELECT count(*) FROM tblCoins")).toInt(), 7);
    }

    void refreshSeesOutsideChangesAndKeepsPosition()
    {
        auto ds = makeItems();
        QVERIFY(ds->locate(QStringLiteral("Name"), QStringLiteral("Silver bar")));
        const int id = f(*ds, "ID").asInteger();
        m_conn->execSQL(QStringLiteral("UPDATE tblCoins SET Price = 950 WHERE ID = %1").arg(id));
        m_conn->execSQL(QStringLiteral("DELETE FROM tblCoins WHERE Name = 'Maple'"));
        DBTest::insertCoin(*m_conn, QStringLiteral("Late"), 0, 1.0);
        QCOMPARE(f(*ds, "Price").asFloat(), 900.0);
        ds->refresh();
        QCOMPARE(ds->recordCount(), 7);
        QCOMPARE(f(*ds, "ID").asInteger(), id);
        QCOMPARE(f(*ds, "Price").asFloat(), 950.0);
        QCOMPARE(f(*ds, "TotalPrice").asFloat(), 950.0);
        QCOMPARE(namesOf(*ds).last(), QStringLiteral("Late"));
    }

    void pendingEditPostedByMoves()
    {
        auto ds = makeItems();
        ds->first();
        ds->edit();
        f(*ds, "Qty").setAsInteger(11);
        ds->next(); // posts
        QCOMPARE(ds->state(), TDatasetState::Browse);
        QCOMPARE(m_conn->selectValue(QStringLiteral("SELECT Qty FROM tblCoins WHERE Name = 'Maple'")).toInt(),
                 11);
        ds->edit();
        f(*ds, "Qty").setAsInteger(12);
        ds->refresh(); // posts too
        QCOMPARE(m_conn->selectValue(QStringLiteral("SELECT Qty FROM tblCoins WHERE Name = 'Eagle'")).toInt(),
                 12);
    }

    void navigation()
    {
        auto ds = makeItems();
        int seen = 0;
        for (ds->first(); !ds->eof(); ds->next())
            ++seen;
        QCOMPARE(seen, 7);
        QCOMPARE(ds->recNo(), 7);
        ds->next();
        QVERIFY(ds->eof());
        QCOMPARE(ds->recNo(), 7);
        seen = 0;
        for (ds->last(); !ds->bof(); ds->prior())
            ++seen;
        QCOMPARE(seen, 7);
        QCOMPARE(ds->moveBy(3), 3);
        QCOMPARE(ds->recNo(), 4);
        QCOMPARE(ds->moveBy(10), 3);
        QVERIFY(ds->eof());
        ds->setRecNo(2);
        QCOMPARE(f(*ds, "Name").asString(), QStringLiteral("Eagle"));
    }

    void deleteRecord()
    {
        auto ds = makeItems();
        ds->setRecNo(2);
        QSignalSpy removed(ds.get(), &TDBDataset::afterRemoveRow);
        ds->deleteRecord();
        QCOMPARE(removed.count(), 1);
        QCOMPARE(ds->recordCount(), 6);
        QCOMPARE(f(*ds, "Name").asString(), QStringLiteral("Kangaroo"));
        QCOMPARE(
            m_conn->selectValue(QStringLiteral("SELECT count(*) FROM tblCoins WHERE Name = 'Eagle'")).toInt(),
            0);
        ds->last();
        ds->deleteRecord();
        QVERIFY(ds->eof());
        QCOMPARE(f(*ds, "Name").asString(), QStringLiteral("Platinum Eagle"));
        while (!ds->isEmpty())
            ds->deleteRecord();
        QCOMPARE(ds->recNo(), 0);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->deleteRecord());
        // Edit on an empty dataset appends.
        ds->edit();
        QCOMPARE(ds->state(), TDatasetState::Insert);
        ds->cancel();
    }

    void eventOrder()
    {
        auto ds = makeItems(false);
        QStringList log;
        auto note = [&log](const char* what) {
            return [&log, what](TDBDataset&) { log << QString::fromLatin1(what); };
        };
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
        f(*ds, "Name").setOnChange([&log](TDBField&) { log << QStringLiteral("NameChange"); });

        ds->open();
        QStringList expected{QStringLiteral("BeforeOpen")};
        for (int i = 0; i < 7; ++i)
            expected << QStringLiteral("ReadRecord") << QStringLiteral("CalcFields");
        expected << QStringLiteral("AfterOpen") << QStringLiteral("AfterScroll");
        QCOMPARE(log, expected);

        log.clear();
        ds->append();
        f(*ds, "Name").setAsString(QStringLiteral("N"));
        f(*ds, "Metal").setAsInteger(0);
        f(*ds, "WeightG").setAsFloat(1);
        f(*ds, "CoinType").setAsInteger(0);
        ds->post();
        QCOMPARE(log, (QStringList{QStringLiteral("BeforeInsert"), QStringLiteral("NewRecord"),
                                   QStringLiteral("AfterInsert"), QStringLiteral("NameChange"),
                                   QStringLiteral("BeforePost"), QStringLiteral("ReadRecord"),
                                   QStringLiteral("CalcFields"), QStringLiteral("AfterPost")}));

        log.clear();
        ds->edit();
        f(*ds, "Name").clear();
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->post());
        ds->cancel();
        QCOMPARE(log, (QStringList{QStringLiteral("BeforeEdit"), QStringLiteral("AfterEdit"),
                                   QStringLiteral("NameChange"), QStringLiteral("BeforePost"),
                                   QStringLiteral("BeforeCancel"), QStringLiteral("CalcFields"),
                                   QStringLiteral("AfterCancel")}));

        log.clear();
        ds->deleteRecord();
        ds->close();
        QCOMPARE(log, (QStringList{QStringLiteral("BeforeDelete"), QStringLiteral("AfterDelete"),
                                   QStringLiteral("BeforeClose"), QStringLiteral("AfterClose")}));
    }

    void beforePostHandlerCanVeto()
    {
        auto ds = makeItems();
        ds->setOnBeforePost([](TDBDataset&) { throw EDatabaseError(QStringLiteral("not now")); });
        ds->edit();
        f(*ds, "Qty").setAsInteger(99);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->post());
        QCOMPARE(ds->state(), TDatasetState::Edit);
        ds->cancel();
        QCOMPARE(m_conn->selectValue(QStringLiteral("SELECT Qty FROM tblCoins WHERE Name = 'Maple'")).toInt(),
                 10);
    }

    void calcFieldsOnlyOnFetchPostCancel_data()
    {
        QTest::addColumn<bool>("autoCalc");
        QTest::newRow("AutoCalcFields false") << false;
        QTest::newRow("AutoCalcFields true") << true;
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
            const QString year = d.fieldByName(QStringLiteral("Year")).isNull() ||
                                         d.fieldByName(QStringLiteral("Year")).asInteger() == 0
                                     ? QString()
                                     : d.fieldByName(QStringLiteral("Year")).asString() + QLatin1Char(' ');
            d.fieldByName(QStringLiteral("Caption"))
                .setAsString(d.fieldByName(QStringLiteral("Name")).asString() + QLatin1Char(' ') + year);
            d.fieldByName(QStringLiteral("SpotValue"))
                .setAsFloat(spot * d.fieldByName(QStringLiteral("WeightG")).asFloat() / kTroyOunce);
        });
        ds->open();
        QCOMPARE(calls, 7);
        QCOMPARE(f(*ds, "Caption").asString(), QStringLiteral("Maple 2012 "));
        QCOMPARE(f(*ds, "SpotValue").asFloat(), 20.0);
        // Reading, moving and filtering don't recompute.
        for (ds->first(); !ds->eof(); ds->next())
            f(*ds, "Caption").asString();
        QCOMPARE(calls, 7);

        ds->first();
        ds->edit();
        f(*ds, "Name").setAsString(QStringLiteral("Leaf"));
        f(*ds, "WeightG").setAsFloat(2 * kTroyOunce);
        QCOMPARE(calls, autoCalc ? 9 : 7);
        QCOMPARE(f(*ds, "Caption").asString(),
                 autoCalc ? QStringLiteral("Leaf 2012 ") : QStringLiteral("Maple 2012 "));
        ds->cancel();
        QCOMPARE(calls, autoCalc ? 10 : 8);
        QCOMPARE(f(*ds, "Caption").asString(), QStringLiteral("Maple 2012 "));

        // A new price reaches the rows through a refresh only.
        spot = 40.0;
        QCOMPARE(f(*ds, "SpotValue").asFloat(), 20.0);
        const int before = calls;
        ds->edit();
        f(*ds, "Name").setAsString(QStringLiteral("Leaf"));
        ds->post();
        QCOMPARE(calls, before + (autoCalc ? 2 : 1));
        QCOMPARE(f(*ds, "Caption").asString(), QStringLiteral("Leaf 2012 "));
        QCOMPARE(f(*ds, "SpotValue").asFloat(), 40.0);
        ds->refresh();
        QCOMPARE(calls, before + (autoCalc ? 2 : 1) + 7);
        ds->last();
        QCOMPARE(f(*ds, "Caption").asString(), QStringLiteral("O'Brien "));
    }

    void internalFieldsAndMutingHandlers()
    {
        auto ds = makeItems(false);
        TDBField& weightG = f(*ds, "WeightG");
        TDBField& weightOz = f(*ds, "WeightOz");
        TDBField& weightGram = f(*ds, "WeightGram");
        ds->setOnReadRecord([&](TDBDataset&) {
            weightOz.setAsFloat(weightG.asFloat() / kTroyOunce);
            weightGram.setAsFloat(weightG.asFloat());
        });
        int gramEvents = 0;
        int ozEvents = 0;
        weightGram.setOnChange([&](TDBField& field) {
            ++gramEvents;
            if (sameWeight(weightG.asFloat(), field.asFloat()))
                return;
            const TFieldNotifyEvent saved = weightOz.onChange();
            weightOz.setOnChange({});
            weightG.setAsFloat(field.asFloat());
            weightOz.setAsFloat(field.asFloat() / kTroyOunce);
            weightOz.setOnChange(saved);
        });
        weightOz.setOnChange([&](TDBField& field) {
            ++ozEvents;
            const double g = field.asFloat() * kTroyOunce;
            if (sameWeight(weightG.asFloat(), g))
                return;
            const TFieldNotifyEvent saved = weightGram.onChange();
            weightGram.setOnChange({});
            weightG.setAsFloat(g);
            weightGram.setAsFloat(g);
            weightGram.setOnChange(saved);
        });
        ds->open();
        QVERIFY(ds->locate(QStringLiteral("Name"), QStringLiteral("Silver bar")));
        QCOMPARE(weightGram.asFloat(), 1000.0);
        QCOMPARE(weightOz.asFloat(), 1000.0 / kTroyOunce);

        ds->edit();
        weightOz.setAsFloat(1);
        QCOMPARE(ozEvents, 1);
        QCOMPARE(gramEvents, 0); // muted while the ounce handler worked
        QCOMPARE(weightG.asFloat(), kTroyOunce);
        QCOMPARE(weightGram.asFloat(), kTroyOunce);
        QVERIFY(weightOz.onChange() && weightGram.onChange()); // attached again

        weightGram.setAsFloat(15.55);
        QCOMPARE(gramEvents, 1);
        QCOMPARE(ozEvents, 1);
        QCOMPARE(weightOz.asFloat(), 15.55 / kTroyOunce);
        ds->post();
        QCOMPARE(m_conn->selectValue(QStringLiteral("SELECT WeightG FROM tblCoins WHERE Name = 'Silver bar'"))
                     .toDouble(),
                 15.55);
        // After the post the internal fields start again from the stored weight.
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
        ds->append();
        f(*ds, "Name").setAsString(QStringLiteral("Batch"));
        f(*ds, "Metal").setAsInteger(0);
        f(*ds, "WeightG").setAsFloat(1);
        f(*ds, "CoinType").setAsInteger(0);
        ds->post();
        ds->refresh();
        ds->enableControls();
        QCOMPARE(afterReset.count(), 0);
        QCOMPARE(current.count(), 0);
        ds->enableControls();
        QCOMPARE(beforeReset.count(), 1);
        QCOMPARE(afterReset.count(), 1);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(inserted.count(), 0);
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
    }

    void filters_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QStringList>("names");
        const QStringList all{QStringLiteral("Maple"),      QStringLiteral("Eagle"),
                              QStringLiteral("Kangaroo"),   QStringLiteral("PAMP bar"),
                              QStringLiteral("Silver bar"), QStringLiteral("Platinum Eagle"),
                              QStringLiteral("O'Brien")};
        QTest::newRow("quick filter: bars of gold and silver")
            << "(Metal IN (-1, 0, 1)) AND (CoinType IN (-1, 3, 4))"
            << QStringList{QStringLiteral("PAMP bar"), QStringLiteral("Silver bar")};
        QTest::newRow("quick filter: nothing checked")
            << "(Metal IN (-1)) AND (CoinType IN (-1, 0, 1, 2, 3, 4))" << QStringList{};
        QTest::newRow("quick filter: everything")
            << "(Metal IN (-1, 0, 1, 2, 3, 4, 5)) AND (CoinType IN (-1, 0, 1, 2, 3, 4))" << all;
        QTest::newRow("or") << "Metal = 2 OR Price > 1500"
                            << QStringList{QStringLiteral("Eagle"), QStringLiteral("PAMP bar"),
                                           QStringLiteral("Platinum Eagle")};
        QTest::newRow("not") << "NOT (Metal = 1)"
                             << QStringList{QStringLiteral("Eagle"), QStringLiteral("PAMP bar"),
                                            QStringLiteral("Platinum Eagle")};
        QTest::newRow("is null") << "Year IS NULL"
                                 << QStringList{QStringLiteral("Kangaroo"), QStringLiteral("PAMP bar")};
        QTest::newRow("null never equal")
            << "Year <> 2012"
            << QStringList{QStringLiteral("Silver bar"), QStringLiteral("Platinum Eagle"),
                           QStringLiteral("O'Brien")};
        QTest::newRow("and with is not null")
            << "Price IS NOT NULL AND Price < 100"
            << QStringList{QStringLiteral("Maple"), QStringLiteral("O'Brien")};
        QTest::newRow("like") << "Name LIKE '%eagle'"
                              << QStringList{QStringLiteral("Eagle"), QStringLiteral("Platinum Eagle")};
        QTest::newRow("quoted text") << "Name = 'O''Brien'" << QStringList{QStringLiteral("O'Brien")};
        QTest::newRow("not in") << "Metal NOT IN (0, 1)" << QStringList{QStringLiteral("Platinum Eagle")};
        QTest::newRow("query-computed field")
            << "TotalPrice >= 1000"
            << QStringList{QStringLiteral("Eagle"), QStringLiteral("PAMP bar"),
                           QStringLiteral("Platinum Eagle")};
        QTest::newRow("lower case, brackets, float")
            << "[metal] in (1) and weightg < 20.5" << QStringList{QStringLiteral("O'Brien")};
        QTest::newRow("date as text")
            << "PurchaseDate = '2021-03-04' AND Metal = 2" << QStringList{QStringLiteral("Platinum Eagle")};
    }
    void filters()
    {
        QFETCH(QString, filter);
        QFETCH(QStringList, names);
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
        QTest::newRow("unclosed list") << "(Metal IN (-1, 0"
                                       << "Filter expression error at position 17: ',' or ')' expected, "
                                          "found 'end of text' in \"(Metal IN (-1, 0\"";
        QTest::newRow("empty list")
            << "Metal IN ()"
            << "Filter expression error at position 11: empty IN list in \"Metal IN ()\"";
        QTest::newRow("missing operand")
            << "Metal = "
            << "Filter expression error at position 9: value expected, found 'end of text' in \"Metal = \"";
        QTest::newRow("open text")
            << "Name = 'abc"
            << "Filter expression error at position 8: unterminated text in \"Name = 'abc\"";
        QTest::newRow("dangling and") << "Metal IN (1) AND"
                                      << "Filter expression error at position 17: value expected, found 'end "
                                         "of text' in \"Metal IN (1) AND\"";
        QTest::newRow("two terms")
            << "Metal = 1 Metal = 2"
            << "Filter expression error at position 11: unexpected 'Metal' in \"Metal = 1 Metal = 2\"";
        QTest::newRow("bad character")
            << "Metal # 1"
            << "Filter expression error at position 7: unexpected character '#' in \"Metal # 1\"";
        QTest::newRow("unknown field") << "Nope = 1"
                                       << "Field 'Nope' not found";
    }
    void malformedFilters()
    {
        QFETCH(QString, filter);
        QFETCH(QString, message);
        auto ds = makeItems();
        ds->setFilter(QStringLiteral("Metal = 0"));
        ds->setFiltered(true);
        QCOMPARE(ds->recordCount(), 2);
        try {
            ds->setFilter(filter);
            QFAIL("a bad filter was accepted");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), message);
        }
        // The previous filter is still in force.
        QCOMPARE(ds->filter(), QStringLiteral("Metal = 0"));
        QCOMPARE(ds->recordCount(), 2);
    }

    void localSort_data()
    {
        QTest::addColumn<QString>("index");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("ID") << "ID"
                            << QStringList{QStringLiteral("Maple"),      QStringLiteral("Eagle"),
                                           QStringLiteral("Kangaroo"),   QStringLiteral("PAMP bar"),
                                           QStringLiteral("Silver bar"), QStringLiteral("Platinum Eagle"),
                                           QStringLiteral("O'Brien")};
        QTest::newRow("two fields") << "Metal;Name"
                                    << QStringList{
                                           QStringLiteral("Eagle"),         QStringLiteral("PAMP bar"),
                                           QStringLiteral("Kangaroo"),      QStringLiteral("Maple"),
                                           QStringLiteral("O'Brien"),       QStringLiteral("Silver bar"),
                                           QStringLiteral("Platinum Eagle")};
        QTest::newRow("descending") << "Name:D"
                                    << QStringList{
                                           QStringLiteral("Silver bar"), QStringLiteral("Platinum Eagle"),
                                           QStringLiteral("PAMP bar"),   QStringLiteral("O'Brien"),
                                           QStringLiteral("Maple"),      QStringLiteral("Kangaroo"),
                                           QStringLiteral("Eagle")};
        QTest::newRow("nulls first") << "Price"
                                     << QStringList{
                                            QStringLiteral("Kangaroo"),       QStringLiteral("O'Brien"),
                                            QStringLiteral("Maple"),          QStringLiteral("Silver bar"),
                                            QStringLiteral("Platinum Eagle"), QStringLiteral("PAMP bar"),
                                            QStringLiteral("Eagle")};
        QTest::newRow("descending year, then name")
            << "Year:D;Name" << QStringList{QStringLiteral("Silver bar"), QStringLiteral("Platinum Eagle"),
                                            QStringLiteral("Eagle"),      QStringLiteral("Maple"),
                                            QStringLiteral("O'Brien"),    QStringLiteral("Kangaroo"),
                                            QStringLiteral("PAMP bar")};
        QTest::newRow("computed, ties in fetch order")
            << "WeightGxQty" << QStringList{QStringLiteral("PAMP bar"),  QStringLiteral("Platinum Eagle"),
                                            QStringLiteral("O'Brien"),   QStringLiteral("Eagle"),
                                            QStringLiteral("Kangaroo"),  QStringLiteral("Maple"),
                                            QStringLiteral("Silver bar")};
    }
    void localSort()
    {
        QFETCH(QString, index);
        QFETCH(QStringList, names);
        auto ds = makeItems();
        ds->setIndexFieldNames(index);
        QCOMPARE(namesOf(*ds), names);
        // The order is kept across a refresh and a reopen.
        ds->refresh();
        QCOMPARE(namesOf(*ds), names);
        ds->close();
        ds->open();
        QCOMPARE(namesOf(*ds), names);
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->setIndexFieldNames(QStringLiteral("Name;Nope")));
        QCOMPARE(ds->indexFieldNames(), index);
    }

    void postKeepsOrderAndCursor()
    {
        auto ds = makeItems();
        ds->setIndexFieldNames(QStringLiteral("Name"));
        QSignalSpy moved(ds.get(), &TDBDataset::afterMoveRow);
        QVERIFY(ds->locate(QStringLiteral("Name"), QStringLiteral("Eagle")));
        QCOMPARE(ds->recNo(), 1);
        ds->edit();
        f(*ds, "Name").setAsString(QStringLiteral("Zebra"));
        ds->post();
        QCOMPARE(moved.count(), 1);
        QCOMPARE(moved.first().at(0).toInt(), 0);
        QCOMPARE(moved.first().at(1).toInt(), 6);
        QCOMPARE(ds->recNo(), 7);
        QCOMPARE(f(*ds, "Name").asString(), QStringLiteral("Zebra"));
        ds->append();
        f(*ds, "Name").setAsString(QStringLiteral("Aardvark"));
        f(*ds, "Metal").setAsInteger(0);
        f(*ds, "WeightG").setAsFloat(1);
        f(*ds, "CoinType").setAsInteger(0);
        ds->post();
        QCOMPARE(ds->recNo(), 1);
        QCOMPARE(namesOf(*ds).first(), QStringLiteral("Aardvark"));
        QCOMPARE(namesOf(*ds).last(), QStringLiteral("Zebra"));
    }

    void locate()
    {
        auto ds = makeItems();
        QVERIFY(ds->locate(QStringLiteral("ID"), 6));
        QCOMPARE(f(*ds, "Name").asString(), QStringLiteral("Platinum Eagle"));
        QVERIFY(!ds->locate(QStringLiteral("ID"), 999));
        QCOMPARE(f(*ds, "Name").asString(), QStringLiteral("Platinum Eagle")); // stayed
        QVERIFY(!ds->locate(QStringLiteral("Name"), QStringLiteral("maple")));
        QVERIFY(ds->locate(QStringLiteral("Name"), QStringLiteral("maple"), TLocateOption::CaseInsensitive));
        QCOMPARE(ds->recNo(), 1);
        QVERIFY(ds->locate(QStringLiteral("Name"), QStringLiteral("Plat"), TLocateOption::PartialKey));
        QCOMPARE(ds->recNo(), 6);
        QVERIFY(ds->locate(QStringLiteral("Metal;CoinType"), QVariantList{1, 4}));
        QCOMPARE(f(*ds, "Name").asString(), QStringLiteral("Silver bar"));
        QVERIFY(ds->locate(QStringLiteral("Year"), QVariant()));
        QCOMPARE(f(*ds, "Name").asString(), QStringLiteral("Kangaroo"));
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, ds->locate(QStringLiteral("Metal;CoinType"), 1));
        // A filtered-out record is not found.
        ds->setFilter(QStringLiteral("Metal = 0"));
        ds->setFiltered(true);
        QVERIFY(!ds->locate(QStringLiteral("ID"), 6));
    }

    void persistentFieldMissingFromFile()
    {
        // A file whose tblCoins lacks a column the item fields bind to does not open.
        QString ddl = DBTest::coinsDDL();
        ddl.replace(QStringLiteral(",\n  Custom5 NONE NULL"), QString());
        QVERIFY(!ddl.contains(QStringLiteral("Custom5")));
        auto other = DBTest::openConnection(m_dir->filePath(QStringLiteral("old.db")));
        other->execSQL(ddl);
        TDBDataset ds(other.get());
        DBTest::declareItemFields(ds);
        ds.setSQL(DBTest::itemsSQL());
        ds.setUpdateTableName(QStringLiteral("tblCoins"));
        QSignalSpy resets(&ds, &TDBDataset::afterReset);
        try {
            ds.open();
            QFAIL("opened without Custom5");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("Field 'Custom5' not found"));
        }
        QVERIFY(!ds.active());
        QCOMPARE(resets.count(), 1); // observers saw the attempt end
        QVERIFY(ds.findField(QStringLiteral("Custom5")) != nullptr);

        // A missing blob column is found missing too, although blobs are not selected.
        QString noPhoto = DBTest::coinsDDL();
        noPhoto.replace(QStringLiteral("  PhotoSide BLOB,\n"), QString());
        auto third = DBTest::openConnection(m_dir->filePath(QStringLiteral("nophoto.db")));
        third->execSQL(noPhoto);
        TDBDataset ds2(third.get());
        DBTest::declareItemFields(ds2);
        ds2.setSQL(DBTest::itemsSQL());
        ds2.setUpdateTableName(QStringLiteral("tblCoins"));
        try {
            ds2.open();
            QFAIL("opened without PhotoSide");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("Field 'PhotoSide' not found"));
        }
    }

    void dynamicFieldsFromTheFile()
    {
        TDBDataset mints(m_conn.get());
        mints.setTableName(QStringLiteral("tblMints"));
        mints.open();
        QCOMPARE(mints.fieldCount(), 7);
        QCOMPARE(mints.field(0).fieldName(), QStringLiteral("ID"));
        QCOMPARE(mints.field(0).dataType(), TFieldType::AutoInc);
        QVERIFY(mints.field(0).readOnly());
        QCOMPARE(mints.fieldByName(QStringLiteral("Name")).dataType(), TFieldType::String);
        QCOMPARE(mints.fieldByName(QStringLiteral("Name")).size(), 300);
        QVERIFY(mints.fieldByName(QStringLiteral("Name")).required());
        QCOMPARE(mints.fieldByName(QStringLiteral("Logo")).dataType(), TFieldType::Blob);
        QCOMPARE(mints.fieldByName(QStringLiteral("IsPrivate")).dataType(), TFieldType::Boolean);
        QCOMPARE(mints.fieldByName(QStringLiteral("Description")).dataType(), TFieldType::Memo);
        // A new mint and its key.
        m_conn->execSQL(QStringLiteral("INSERT INTO sqlite_sequence (name, seq) VALUES ('tblMints', 67)"));
        mints.append();
        mints.fieldByName(QStringLiteral("Name")).setAsString(QStringLiteral("Perth Mint"));
        mints.fieldByName(QStringLiteral("IsPrivate")).setAsBoolean(false);
        mints.post();
        QCOMPARE(mints.fieldByName(QStringLiteral("ID")).asInteger(), 68);
        QCOMPARE(mints.fieldByName(QStringLiteral("IsPrivate")).value(), QVariant(false));
        mints.close();
        QCOMPARE(mints.fieldCount(), 0); // dynamic fields go with the close

        // A query without an update table is read-only; its expression types come from the values.
        TDBDataset stats(m_conn.get());
        stats.setSQL(QStringLiteral("SELECT Metal, SUM(WeightG * Qty) AS TotalWeightG::REAL, COUNT(*) AS N "
                                    "FROM tblCoins GROUP BY Metal ORDER BY Metal"));
        stats.open();
        QCOMPARE(stats.recordCount(), 3);
        QCOMPARE(stats.fieldByName(QStringLiteral("TotalWeightG")).dataType(), TFieldType::Float);
        QCOMPARE(stats.fieldByName(QStringLiteral("N")).dataType(), TFieldType::LargeInt);
        QVERIFY(!stats.canModify());
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, stats.edit());
    }

    void badValueForField()
    {
        auto ds = makeItems();
        ds->edit();
        try {
            f(*ds, "Qty").setAsString(QStringLiteral("many"));
            QFAIL("accepted a text in an integer field");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QStringLiteral("'many' is not a valid integer value for field 'Qty'"));
        }
        f(*ds, "Qty").setAsString(QStringLiteral("42"));
        QCOMPARE(f(*ds, "Qty").value(), QVariant(42));
        f(*ds, "PurchaseDate").setAsString(QStringLiteral("2023-12-31"));
        QCOMPARE(f(*ds, "PurchaseDate").asDate(), QDate(2023, 12, 31));
        ds->cancel();
    }
};

QTEST_GUILESS_MAIN(TestDBDataset)
#include "tst_dbdataset.moc"
