// The table model over a dataset, checked by QAbstractItemModelTester through inserts, posts that
// move a record, deletes, refreshes, filters, sorting, batch work and close.

#include "support_dbtest.h"
#include "uDBDataset.h"
#include "uDatasetTableModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

class TestDBModel : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<TDBConnection> m_conn;
    std::unique_ptr<TDBDataset> m_ds;

    QStringList column(const TDatasetTableModel& model, const QString& field) const
    {
        QStringList values;
        const int c = model.columnOfField(field);
        for (int r = 0; r < model.rowCount(); ++r)
            values << model.data(model.index(r, c)).toString();
        return values;
    }

    void add(const QString& name, int metal)
    {
        m_ds->append();
        m_ds->fieldByName("Name").setAsString(name);
        m_ds->fieldByName("Metal").setAsInteger(metal);
        m_ds->fieldByName("WeightG").setAsFloat(31.1035);
        m_ds->fieldByName("CoinType").setAsInteger(0);
        m_ds->post();
    }

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_conn =
            DBTest::createCollection(m_dir.filePath(QString("model%1.db").arg(QTest::currentTestFunction())));
        for (const char* name : {"Delta", "Alpha", "Charlie"})
            DBTest::insertCoin(*m_conn, QString::fromLatin1(name), name[0] == 'A' ? 0 : 1, 31.1035, 2, 10.0);
        m_ds = std::make_unique<TDBDataset>(m_conn.get());
        DBTest::declareItemFields(*m_ds);
        m_ds->setSQL(DBTest::itemsSQL());
        m_ds->setUpdateTableName("tblCoins");
        m_ds->fieldByName("ID").setVisible(false);
        m_ds->fieldByName("Name").setDisplayLabel("Item");
    }
    void cleanup()
    {
        m_ds.reset();
        m_conn.reset();
    }

    void followsEveryChange()
    {
        TDatasetTableModel model(m_ds.get());
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(model.rowCount(), 0);
        m_ds->setIndexFieldNames("Name");
        m_ds->open();
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.columnCount(), m_ds->fieldCount() - 1); // ID hidden
        QCOMPARE(model.headerData(model.columnOfField("Name"), Qt::Horizontal).toString(), "Item");
        QCOMPARE(column(model, "Name"), (QStringList{"Alpha", "Charlie", "Delta"}));

        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);

        // Insert shows a row at once; the post moves it to its sorted place.
        add("Bravo", 0);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(moved.count(), 1);
        QVERIFY(changed.count() >= 4);
        QCOMPARE(column(model, "Name"), (QStringList{"Alpha", "Bravo", "Charlie", "Delta"}));
        QCOMPARE(model.data(model.index(1, model.columnOfField("TotalPrice")), Qt::EditRole), QVariant());
        QCOMPARE(model.data(model.index(1, 0), TDatasetTableModel::KeyRole).toInt(), 4);

        // A cancelled insert goes away again.
        m_ds->append();
        QCOMPARE(model.rowCount(), 5);
        m_ds->cancel();
        QCOMPARE(model.rowCount(), 4);
        QCOMPARE(removed.count(), 1);

        // A post that moves a record up.
        QVERIFY(m_ds->locate("Name", "Delta"));
        m_ds->edit();
        m_ds->fieldByName("Name").setAsString("Aaron");
        m_ds->post();
        QCOMPARE(moved.count(), 2);
        QCOMPARE(column(model, "Name").first(), "Aaron");

        // Delete.
        m_ds->first();
        m_ds->deleteRecord();
        QCOMPARE(removed.count(), 2);
        QCOMPARE(model.rowCount(), 3);

        // Refresh, filter, sort: resets.
        DBTest::insertCoin(*m_conn, "Echo", 0, 1.0);
        m_ds->refresh();
        QCOMPARE(model.rowCount(), 4);
        m_ds->setFilter("Metal IN (0)");
        m_ds->setFiltered(true);
        QCOMPARE(column(model, "Name"), (QStringList{"Alpha", "Bravo", "Echo"}));
        m_ds->setFilter("Metal IN (-1)");
        QCOMPARE(model.rowCount(), 0);
        m_ds->setFiltered(false);
        m_ds->setIndexFieldNames("Name:D");
        QCOMPARE(column(model, "Name").first(), "Echo");
        QVERIFY(reset.count() >= 5);

        // Batch work arrives as one reset.
        const qsizetype resetsBefore = reset.count();
        const qsizetype insertsBefore = inserted.count();
        m_ds->disableControls();
        add("Foxtrot", 2);
        add("Golf", 2);
        m_ds->first();
        m_ds->deleteRecord();
        m_ds->enableControls();
        QCOMPARE(reset.count(), resetsBefore + 1);
        QCOMPARE(inserted.count(), insertsBefore);
        QCOMPARE(model.rowCount(), m_ds->recordCount());

        m_ds->close();
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), m_ds->fieldCount() - 1); // persistent fields stay
    }

    void editableModel()
    {
        m_ds->open();
        TDatasetTableModel model(m_ds.get());
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setFieldNames({"Name", "Qty", "TotalPrice"});
        QCOMPARE(model.columnCount(), 3);
        QVERIFY(!(model.flags(model.index(0, 0)) & Qt::ItemIsEditable));
        model.setEditable(true);
        QVERIFY(model.flags(model.index(0, 1)) & Qt::ItemIsEditable);
        QVERIFY(!(model.flags(model.index(0, 2)) & Qt::ItemIsEditable)); // computed
        QVERIFY(model.setData(model.index(2, 1), 5));
        QCOMPARE(m_ds->state(), TDatasetState::Edit);
        QCOMPARE(m_ds->recNo(), 3);
        QCOMPARE(model.data(model.index(2, 1)).toString(), "5");
        QCOMPARE(model.data(model.index(2, 2)).toString(),
                 "20");                                       // not recomputed before the post
        QVERIFY(model.setData(model.index(0, 0), "Delta 2")); // moving posts the pending edit
        m_ds->post();
        QCOMPARE(model.data(model.index(2, 2)).toString(), "50");
        QCOMPARE(model.data(model.index(0, 0)).toString(), "Delta 2");
    }

    void datasetDestroyedBeforeModel()
    {
        m_ds->open();
        TDatasetTableModel model(m_ds.get());
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(model.rowCount(), 3);
        m_ds.reset();
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), 0);
    }
};

QTEST_GUILESS_MAIN(TestDBModel)
#include "tst_dbmodel.moc"
