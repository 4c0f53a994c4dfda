// Blobs are not read with the rows: listing a table of large photographs must not touch a blob
// column. A blob is read by key when its field is first read, kept in a bounded cache, and
// written at the post.

#include "support_datarow.h"
#include "support_dbtest.h"
#include "uDBDataset.h"
#include "uDatasetTableModel.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

const int kRows = 40;
const int kPhotoSize = 256 * 1024;

QStringList blobReads(const QStringList& columnReads)
{
    static const QRegularExpression blob("\\.(Thumb|Photo)\\w+$");
    return columnReads.filter(blob);
}

} // namespace

class TestDBBlobs : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_path;
    std::unique_ptr<TDBConnection> m_conn;

    std::unique_ptr<TDBDataset> makeItems(bool persistent = true)
    {
        auto ds = std::make_unique<TDBDataset>(m_conn.get());
        if (persistent)
            DBTest::declareItemFields(*ds);
        ds->setSQL(DBTest::itemsSQL());
        ds->setUpdateTableName("tblCoins");
        ds->setIndexFieldNames("ID");
        ds->open();
        return ds;
    }
    QByteArray photoOf(qint64 id, const char* column)
    {
        return m_conn->selectValue(QString("SELECT %1 FROM tblCoins WHERE ID = ?").arg(column), {id})
            .toByteArray();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_path = m_dir.filePath("photos.db");
        auto conn = DBTest::createCollection(m_path);
        conn->startTransaction();
        for (int i = 0; i < kRows; ++i) {
            conn->execSQL("INSERT INTO tblCoins (Name, Metal, WeightG, Qty, Price, ThumbFront, PhotoFront, "
                          "PhotoBack) VALUES (?, 1, 31.1035, 1, 30, ?, ?, ?)",
                          QVariantList{QString("Coin %1").arg(i), DBTest::bytes(2000, i),
                                       DBTest::bytes(kPhotoSize, 1000 + i),
                                       DBTest::bytes(kPhotoSize, 2000 + i)});
        }
        conn->commit();
    }
    void init() { m_conn = DBTest::openConnection(m_path); }
    void cleanup() { m_conn.reset(); }

    void listingReadsNoBlob_data()
    {
        QTest::addColumn<bool>("persistent");
        AddRow("declared fields", true);
        AddRow("fields from the file", false);
    }
    void listingReadsNoBlob()
    {
        QFETCH(bool, persistent);
        DBTest::StatementLog log(m_conn->handle());
        auto ds = makeItems(persistent);
        QCOMPARE(ds->recordCount(), kRows);
        // The statement read every column but the blobs...
        QVERIFY(log.columnReads.contains("tblCoins.Name") && log.columnReads.contains("tblCoins.Custom10"));
        QCOMPARE(blobReads(log.columnReads), QStringList());
        // ...and the blob fields are there, in their place.
        QCOMPARE(ds->fieldByName("PhotoFront").dataType(), TFieldType::Blob);
        QCOMPARE(ds->fieldByName("PhotoFront").index(), 25);

        // Walking every row and every non-blob field, also through a model, reads no blob either.
        const qsizetype afterOpen = log.statements.size();
        TDatasetTableModel model(ds.get());
        for (ds->first(); !ds->eof(); ds->next())
            for (TDBField* field : ds->fields())
                if (!field->isBlob())
                    field->asString();
        for (int r = 0; r < model.rowCount(); ++r)
            for (int c = 0; c < model.columnCount(); ++c)
                model.data(model.index(r, c), Qt::DisplayRole);
        QCOMPARE(blobReads(log.columnReads), QStringList());
        QCOMPARE(log.statements.size(), afterOpen);

        // The first read of a photo fetches that one value by key; the second comes from the cache.
        ds->setRecNo(4);
        log.clear();
        QCOMPARE(ds->fieldByName("PhotoFront").asBytes(), DBTest::bytes(kPhotoSize, 1003));
        QCOMPARE(log.statements, QStringList{"SELECT \"PhotoFront\" FROM \"tblCoins\" WHERE \"ID\" = ?"});
        QCOMPARE(blobReads(log.columnReads), QStringList{"tblCoins.PhotoFront"});
        log.clear();
        QCOMPARE(ds->fieldByName("PhotoFront").asBytes(), DBTest::bytes(kPhotoSize, 1003));
        QVERIFY(ds->fieldByName("PhotoSide").isNull());
        QVERIFY(ds->fieldByName("PhotoSide").isNull());
        QCOMPARE(log.statements.size(), 1); // PhotoSide once
        // Through the model too.
        const int thumb = model.columnOfField("ThumbFront");
        QVERIFY(thumb >= 0);
        QVERIFY(!model.data(model.index(0, thumb), Qt::DisplayRole).isValid());
        QCOMPARE(model.data(model.index(0, thumb), TDatasetTableModel::ValueRole).toByteArray(),
                 DBTest::bytes(2000, 0));
    }

    void cacheIsBounded()
    {
        auto ds = makeItems();
        ds->setBlobCacheSize(3 * kPhotoSize);
        DBTest::StatementLog log(m_conn->handle());
        for (int r : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 8, 9, 10}) {
            ds->setRecNo(r);
            QCOMPARE(ds->fieldByName("PhotoBack").asBytes().size(), kPhotoSize);
        }
        QCOMPARE(log.statements.size(), 10); // the last three are held
        ds->setRecNo(1);
        QCOMPARE(ds->fieldByName("PhotoBack").asBytes(), DBTest::bytes(kPhotoSize, 2000));
        QCOMPARE(log.statements.size(), 11); // the first was dropped
    }

    void blobWrittenAtPost()
    {
        auto ds = makeItems();
        ds->setRecNo(2);
        const int id = ds->fieldByName("ID").asInteger();
        QCOMPARE(ds->fieldByName("PhotoFront").asBytes(), DBTest::bytes(kPhotoSize, 1001)); // cached now
        const QByteArray photo = DBTest::bytes(5000, 77);
        DBTest::StatementLog log(m_conn->handle());
        ds->edit();
        ds->fieldByName("PhotoFront").setAsBytes(photo);
        ds->fieldByName("PhotoSide").setAsBytes(photo.left(10));
        QCOMPARE(ds->fieldByName("PhotoFront").asBytes(), photo); // from the edit buffer
        QVERIFY(log.statements.isEmpty());                        // nothing written yet
        ds->post();
        QCOMPARE(
            log.statements.filter("UPDATE"),
            QStringList{"UPDATE \"tblCoins\" SET \"PhotoFront\" = ?, \"PhotoSide\" = ? WHERE \"ID\" = ?"});
        QCOMPARE(blobReads(log.columnReads), QStringList());      // the re-read leaves the blobs out as well
        QCOMPARE(ds->fieldByName("PhotoFront").asBytes(), photo); // the cached old photo is gone
        QCOMPARE(photoOf(id, "PhotoFront"), photo);
        QCOMPARE(photoOf(id, "PhotoSide"), photo.left(10));
        // Cleared to NULL.
        ds->edit();
        ds->fieldByName("PhotoSide").clear();
        ds->post();
        QVERIFY(m_conn->selectValue("SELECT PhotoSide IS NULL FROM tblCoins WHERE ID = ?", {id}).toBool());
        QVERIFY(ds->fieldByName("PhotoSide").isNull());

        // A new record with a photo.
        ds->append();
        ds->fieldByName("Name").setAsString("With photo");
        ds->fieldByName("Metal").setAsInteger(0);
        ds->fieldByName("WeightG").setAsFloat(1);
        ds->fieldByName("CoinType").setAsInteger(0);
        QVERIFY(ds->fieldByName("PhotoBack").isNull());
        ds->fieldByName("PhotoBack").setAsBytes(photo);
        ds->post();
        QCOMPARE(photoOf(ds->fieldByName("ID").asInteger(), "PhotoBack"), photo);
        QCOMPARE(ds->fieldByName("PhotoBack").asBytes(), photo);
        ds->deleteRecord();
    }

    void appendOnlyTableObject()
    {
        // A dataset that selects no rows serves to append to a table: fields keep the table's column
        // order (blobs in their place), and each post gives the new key.
        TDBDataset target(m_conn.get());
        target.setSQL("SELECT * FROM tblCoins WHERE 0");
        target.setUpdateTableName("tblCoins");
        target.open();
        QCOMPARE(target.recordCount(), 0);
        QCOMPARE(target.field(25).fieldName(), "PhotoFront");
        const QByteArray photo = DBTest::bytes(3000, 5);
        target.append();
        target.field(1).setAsString("Copied");
        target.field(2).setAsInteger(3);
        target.field(7).setAsFloat(2.5);
        target.field(25).setAsBytes(photo);
        target.post();
        const qint64 id = target.fieldByName("ID").asLargeInt();
        QCOMPARE(id, m_conn->lastInsertRowId());
        QCOMPARE(target.fieldByName("Name").asString(), "Copied");
        QCOMPARE(target.fieldByName("PhotoFront").asBytes(), photo);
        QCOMPARE(photoOf(id, "PhotoFront"), photo);
        m_conn->execSQL("DELETE FROM tblCoins WHERE ID = ?", {id});
    }

    void changeBehindTheBackSeenAfterRefresh()
    {
        auto ds = makeItems();
        ds->setRecNo(3);
        const QByteArray before = ds->fieldByName("ThumbFront").asBytes();
        m_conn->execSQL("UPDATE tblCoins SET ThumbFront = x'0102' WHERE ID = ?",
                        {ds->fieldByName("ID").asInteger()});
        QCOMPARE(ds->fieldByName("ThumbFront").asBytes(), before); // cached
        ds->refresh();
        QCOMPARE(ds->fieldByName("ThumbFront").asBytes(), QByteArray("\x01\x02", 2));
    }

    void tableWithoutKeyReadsBlobsWithRows()
    {
        m_conn->execSQL("CREATE TABLE IF NOT EXISTS tblPlain (A TEXT, B BLOB)");
        m_conn->execSQL("DELETE FROM tblPlain");
        m_conn->execSQL("INSERT INTO tblPlain VALUES ('a', x'00ff')");
        TDBDataset ds(m_conn.get());
        ds.setSQL("SELECT * FROM tblPlain");
        ds.open();
        QCOMPARE(ds.fieldByName("B").asBytes(), QByteArray("\x00\xff", 2));
    }
};

QTEST_GUILESS_MAIN(TestDBBlobs)
#include "tst_dbblobs.moc"
