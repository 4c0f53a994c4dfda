// Blobs are not read with the rows: listing a table of large photographs must not touch a blob
// column. A blob is read by key when its field is first read, kept in a bounded cache, and
// written at the post.

#include "support_dbtest.h"
#include "uDBDataset.h"
#include "uDatasetTableModel.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

const QStringList kBlobColumns{QStringLiteral("ThumbFront"), QStringLiteral("ThumbBack"),
                               QStringLiteral("PhotoFront"), QStringLiteral("PhotoBack"),
                               QStringLiteral("PhotoSide"),  QStringLiteral("PhotoInBox")};
const int kRows = 40;
const int kPhotoSize = 256 * 1024;

QStringList blobReads(const QStringList& columnReads)
{
    QStringList found;
    for (const QString& read : columnReads)
        for (const QString& blob : kBlobColumns)
            if (read.endsWith(QLatin1Char('.') + blob))
                found << read;
    return found;
}

} // namespace

class TestDBBlobs : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_path;

    std::unique_ptr<TDBDataset> makeItems(TDBConnection* conn, bool persistent)
    {
        auto ds = std::make_unique<TDBDataset>(conn);
        if (persistent)
            DBTest::declareItemFields(*ds);
        ds->setSQL(DBTest::itemsSQL());
        ds->setUpdateTableName(QStringLiteral("tblCoins"));
        ds->setIndexFieldNames(QStringLiteral("ID"));
        return ds;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_path = m_dir.filePath(QStringLiteral("photos.db"));
        auto conn = DBTest::createCollection(m_path);
        conn->startTransaction();
        for (int i = 0; i < kRows; ++i) {
            conn->execSQL(
                QStringLiteral(
                    "INSERT INTO tblCoins (Name, Metal, WeightG, Qty, Price, ThumbFront, PhotoFront, "
                    "PhotoBack) VALUES (?, 1, 31.1035, 1, 30, ?, ?, ?)"),
                QVariantList{QStringLiteral("Coin %1").arg(i), DBTest::bytes(2000, i),
                             DBTest::bytes(kPhotoSize, 1000 + i), DBTest::bytes(kPhotoSize, 2000 + i)});
        }
        conn->commit();
    }

    void listingReadsNoBlob_data()
    {
        QTest::addColumn<bool>("persistent");
        QTest::newRow("declared fields") << true;
        QTest::newRow("fields from the file") << false;
    }
    void listingReadsNoBlob()
    {
        QFETCH(bool, persistent);
        auto conn = DBTest::openConnection(m_path);
        DBTest::StatementLog log(conn->handle());
        auto ds = makeItems(conn.get(), persistent);
        ds->open();
        QCOMPARE(ds->recordCount(), kRows);
        // The statement read every column but the blobs...
        QVERIFY(log.columnReads.contains(QStringLiteral("tblCoins.Name")));
        QVERIFY(log.columnReads.contains(QStringLiteral("tblCoins.Custom10")));
        QCOMPARE(blobReads(log.columnReads), QStringList());
        // ...and the blob fields are there, in their place.
        QCOMPARE(ds->fieldByName(QStringLiteral("PhotoFront")).dataType(), TFieldType::Blob);
        QCOMPARE(ds->fieldByName(QStringLiteral("PhotoFront")).index(), 25);

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

        // The first read of a photo fetches that one value by key.
        ds->setRecNo(4);
        log.clear();
        QCOMPARE(ds->fieldByName(QStringLiteral("PhotoFront")).asBytes(), DBTest::bytes(kPhotoSize, 1003));
        QCOMPARE(log.statements,
                 QStringList{QStringLiteral("SELECT \"PhotoFront\" FROM \"tblCoins\" WHERE \"ID\" = ?")});
        QCOMPARE(blobReads(log.columnReads), QStringList{QStringLiteral("tblCoins.PhotoFront")});
        // The second read comes from the cache.
        log.clear();
        QCOMPARE(ds->fieldByName(QStringLiteral("PhotoFront")).asBytes(), DBTest::bytes(kPhotoSize, 1003));
        QVERIFY(ds->fieldByName(QStringLiteral("PhotoSide")).isNull());
        QVERIFY(ds->fieldByName(QStringLiteral("PhotoSide")).isNull());
        QCOMPARE(log.statements.size(), 1); // PhotoSide once
        // Through the model too.
        const int thumb = model.columnOfField(QStringLiteral("ThumbFront"));
        QVERIFY(thumb >= 0);
        QVERIFY(!model.data(model.index(0, thumb), Qt::DisplayRole).isValid());
        QCOMPARE(model.data(model.index(0, thumb), TDatasetTableModel::ValueRole).toByteArray(),
                 DBTest::bytes(2000, 0));
    }

    void cacheIsBounded()
    {
        auto conn = DBTest::openConnection(m_path);
        auto ds = makeItems(conn.get(), true);
        ds->setBlobCacheSize(3 * kPhotoSize);
        ds->open();
        DBTest::StatementLog log(conn->handle());
        for (int r = 1; r <= 10; ++r) {
            ds->setRecNo(r);
            QCOMPARE(ds->fieldByName(QStringLiteral("PhotoBack")).asBytes().size(), kPhotoSize);
        }
        QCOMPARE(log.statements.size(), 10);
        // The last three are held, the first was dropped.
        for (int r = 8; r <= 10; ++r) {
            ds->setRecNo(r);
            ds->fieldByName(QStringLiteral("PhotoBack")).asBytes();
        }
        QCOMPARE(log.statements.size(), 10);
        ds->setRecNo(1);
        QCOMPARE(ds->fieldByName(QStringLiteral("PhotoBack")).asBytes(), DBTest::bytes(kPhotoSize, 2000));
        QCOMPARE(log.statements.size(), 11);
    }

    void blobWrittenAtPost()
    {
        auto conn = DBTest::openConnection(m_path);
        auto ds = makeItems(conn.get(), true);
        ds->open();
        ds->setRecNo(2);
        const int id = ds->fieldByName(QStringLiteral("ID")).asInteger();
        QCOMPARE(ds->fieldByName(QStringLiteral("PhotoFront")).asBytes(),
                 DBTest::bytes(kPhotoSize, 1001)); // cached now
        const QByteArray photo = DBTest::bytes(5000, 77);
        DBTest::StatementLog log(conn->handle());
        ds->edit();
        ds->fieldByName(QStringLiteral("PhotoFront")).setAsBytes(photo);
        ds->fieldByName(QStringLiteral("PhotoSide")).setAsBytes(photo.left(10));
        QCOMPARE(ds->fieldByName(QStringLiteral("PhotoFront")).asBytes(), photo); // from the edit buffer
        QVERIFY(log.statements.isEmpty());                                        // nothing written yet
        ds->post();
        QCOMPARE(log.statements.filter(QStringLiteral("UPDATE")),
                 QStringList{QStringLiteral(
                     "UPDATE \"tblCoins\" SET \"PhotoFront\" = ?, \"PhotoSide\" = ? WHERE \"ID\" = ?")});
        // The re-read after the post leaves the blobs out as well.
        QCOMPARE(blobReads(log.columnReads), QStringList());
        // The cached old photo is gone: the new one is read.
        QCOMPARE(ds->fieldByName(QStringLiteral("PhotoFront")).asBytes(), photo);
        QCOMPARE(conn->selectValue(QStringLiteral("SELECT PhotoFront FROM tblCoins WHERE ID = ?"), {id})
                     .toByteArray(),
                 photo);
        QCOMPARE(
            conn->selectValue(QStringLiteral("SELECT length(PhotoSide) FROM tblCoins WHERE ID = ?"), {id})
                .toInt(),
            10);
        // Cleared to NULL.
        ds->edit();
        ds->fieldByName(QStringLiteral("PhotoSide")).clear();
        ds->post();
        QVERIFY(conn->selectValue(QStringLiteral("SELECT PhotoSide IS NULL FROM tblCoins WHERE ID = ?"), {id})
                    .toBool());
        QVERIFY(ds->fieldByName(QStringLiteral("PhotoSide")).isNull());

        // A new record with a photo.
        ds->append();
        ds->fieldByName(QStringLiteral("Name")).setAsString(QStringLiteral("With photo"));
        ds->fieldByName(QStringLiteral("Metal")).setAsInteger(0);
        ds->fieldByName(QStringLiteral("WeightG")).setAsFloat(1);
        ds->fieldByName(QStringLiteral("CoinType")).setAsInteger(0);
        QVERIFY(ds->fieldByName(QStringLiteral("PhotoBack")).isNull());
        ds->fieldByName(QStringLiteral("PhotoBack")).setAsBytes(photo);
        ds->post();
        const int newId = ds->fieldByName(QStringLiteral("ID")).asInteger();
        QCOMPARE(conn->selectValue(QStringLiteral("SELECT PhotoBack FROM tblCoins WHERE ID = ?"), {newId})
                     .toByteArray(),
                 photo);
        QCOMPARE(ds->fieldByName(QStringLiteral("PhotoBack")).asBytes(), photo);
        ds->deleteRecord();
    }

    void changeBehindTheBackSeenAfterRefresh()
    {
        auto conn = DBTest::openConnection(m_path);
        auto ds = makeItems(conn.get(), true);
        ds->open();
        ds->setRecNo(3);
        const QByteArray before = ds->fieldByName(QStringLiteral("ThumbFront")).asBytes();
        conn->execSQL(QStringLiteral("UPDATE tblCoins SET ThumbFront = x'0102' WHERE ID = ?"),
                      {ds->fieldByName(QStringLiteral("ID")).asInteger()});
        QCOMPARE(ds->fieldByName(QStringLiteral("ThumbFront")).asBytes(), before); // cached
        ds->refresh();
        QCOMPARE(ds->fieldByName(QStringLiteral("ThumbFront")).asBytes(), QByteArray("\x01\x02", 2));
    }

    void tableWithoutKeyReadsBlobsWithRows()
    {
        // Without a key to fetch by, blob columns come with the rows.
        auto conn = DBTest::openConnection(m_path);
        conn->execSQL(QStringLiteral("CREATE TABLE IF NOT EXISTS tblPlain (A TEXT, B BLOB)"));
        conn->execSQL(QStringLiteral("DELETE FROM tblPlain"));
        conn->execSQL(QStringLiteral("INSERT INTO tblPlain VALUES ('a', x'00ff')"));
        TDBDataset ds(conn.get());
        ds.setSQL(QStringLiteral("SELECT * FROM tblPlain"));
        ds.open();
        QCOMPARE(ds.fieldByName(QStringLiteral("B")).asBytes(), QByteArray("\x00\xff", 2));
    }
};

QTEST_GUILESS_MAIN(TestDBBlobs)
#include "tst_dbblobs.moc"
