// Thumbnail regeneration over a real collection file: the thumbnails of the items as the dataset
// shows them are made again from their photos (blanks where there is none), every other column and
// table stays exactly as it was, a photo that does not decode leaves its item alone, and a
// cancelled run keeps what it wrote.

#include "dmInternalData.h"
#include "support_store.h"
#include "uBlankPictures.h"
#include "uDBConnection.h"
#include "uDBDataset.h"
#include "uDBField.h"
#include "uDBQuery.h"
#include "uThumbRegenerator.h"
#include "uThumbnail.h"
#include "uZTSettings.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

// Every value of every table of the file, blob columns as their bytes; thumbnails left out when
// asked, so that a run can be checked to change nothing else.
QList<QVariantList> Snapshot(const QString& path, bool withThumbs)
{
    TDBConnection connection;
    connection.setParam(u"Database"_s, path);
    connection.setParam(u"OpenMode"_s, u"ReadOnly"_s);
    connection.open();
    QList<QVariantList> rows;
    for (const QString& table : {u"tblCoins"_s, u"tblMints"_s, u"tblVer"_s}) {
        TDBQuery query(&connection);
        query.setSQL(u"SELECT * FROM "_s + table + u" ORDER BY rowid"_s);
        query.open();
        for (; !query.eof(); query.next()) {
            QVariantList row{table};
            for (int i = 0; i < query.fieldCount(); ++i) {
                const QString name = query.field(i).fieldName();
                if (!withThumbs && name.startsWith(u"Thumb"_s))
                    continue;
                row << name << query.field(i).value();
            }
            rows << row;
        }
        query.close();
    }
    connection.close();
    return rows;
}

QVariant Thumb(const QString& path, qint64 id, const char* column)
{
    return SelectOnFile(path,
                        u"SELECT %1 FROM tblCoins WHERE ID = %2"_s.arg(QLatin1StringView(column)).arg(id));
}

} // namespace

class TstThumbRegenerator : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<TDM_InternalData> m_dm;
    QString m_path;
    QList<qint64> m_ids; // gold coin with both photos, silver bar without, platinum round with a front

    void AddItem(const QString& name, int metal, int coinType, const QByteArray& front,
                 const QByteArray& back)
    {
        TDBDataset& items = *m_dm->qDS_Items;
        items.append();
        items.fieldByName(u"Name"_s).setAsString(name);
        items.fieldByName(u"Metal"_s).setAsInteger(metal);
        items.fieldByName(u"CoinType"_s).setAsInteger(coinType);
        items.fieldByName(u"WeightGram"_s).setAsFloat(31.1035);
        if (!front.isEmpty())
            items.fieldByName(u"PhotoFront"_s).setAsBytes(front);
        if (!back.isEmpty())
            items.fieldByName(u"PhotoBack"_s).setAsBytes(back);
        items.fieldByName(u"PhotoSide"_s).setAsBytes(TestPicture(30, 30));
        items.post();
        m_ids << items.keyField()->asLargeInt();
    }

    // Spoils every thumbnail in the file, so that a rebuilt one shows.
    void SpoilThumbs() { ExecOnFile(m_path, u"UPDATE tblCoins SET ThumbFront = x'00', ThumbBack = NULL"_s); }

private slots:
    void initTestCase()
    {
        InitStoreTestEnvironment();
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }

    void init()
    {
        DBPath.clear();
        m_dm = std::make_unique<TDM_InternalData>();
        m_path = m_dir.filePath(u"c%1.orv"_s.arg(QDateTime::currentMSecsSinceEpoch()));
        m_dm->CreateBlankDatabase(m_path);
        QVERIFY(m_dm->ConnectDatabase(m_path));
        m_ids.clear();
        AddItem(u"Eagle"_s, 0, 0, TestPicture(400, 200, "JPEG"), TestPicture(100, 300));
        AddItem(u"Bar"_s, 1, 3, {}, {});
        AddItem(u"Round"_s, 2, 2, TestPicture(64, 64), {});
    }

    void cleanup() { m_dm.reset(); }

    void rebuildsWhatTheDatasetShows_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QList<int>>("rebuilt"); // indexes into m_ids
        QTest::newRow("all") << QString() << QList<int>{0, 1, 2};
        QTest::newRow("silver only") << u"Metal = 1"_s << QList<int>{1};
        QTest::newRow("filter hides all") << u"Metal = 5"_s << QList<int>{};
    }

    void rebuildsWhatTheDatasetShows()
    {
        QFETCH(QString, filter);
        QFETCH(QList<int>, rebuilt);
        if (!filter.isEmpty()) {
            m_dm->qDS_Items->setFilter(filter);
            m_dm->qDS_Items->setFiltered(true);
        }
        SpoilThumbs();
        const QList<QVariantList> before = Snapshot(m_path, false);
        const QList<QVariantList> beforeAll = Snapshot(m_path, true);

        const QList<TThumbJob> jobs = ThumbJobsOf(*m_dm->qDS_Items);
        QCOMPARE(jobs.size(), rebuilt.size());
        std::atomic<bool> cancel{false};
        QList<int> reported;
        const TThumbRunResult result =
            TThumbRegenerator::Run(m_path, jobs, cancel, [&reported](int done) { reported << done; });
        QCOMPARE(result.Done, rebuilt.size());
        QCOMPARE(result.Failed, 0);
        QVERIFY(!result.Cancelled);
        QVERIFY2(result.FirstError.isEmpty(), qPrintable(result.FirstError));
        QCOMPARE(Snapshot(m_path, false), before);
        if (rebuilt.isEmpty()) {
            QCOMPARE(Snapshot(m_path, true), beforeAll);
            return;
        }
        QCOMPARE(reported.last(), rebuilt.size());

        for (int i = 0; i < m_ids.size(); ++i) {
            const qint64 id = m_ids.at(i);
            const QVariant front = Thumb(m_path, id, "ThumbFront");
            const QVariant back = Thumb(m_path, id, "ThumbBack");
            if (!rebuilt.contains(i)) {
                QCOMPARE(front.toByteArray(), QByteArray(1, '\0'));
                QVERIFY(back.isNull());
                continue;
            }
            const QByteArray photoFront =
                SelectOnFile(m_path, u"SELECT PhotoFront FROM tblCoins WHERE ID = %1"_s.arg(id))
                    .toByteArray();
            const QByteArray photoBack =
                SelectOnFile(m_path, u"SELECT PhotoBack FROM tblCoins WHERE ID = %1"_s.arg(id)).toByteArray();
            const int metal =
                SelectOnFile(m_path, u"SELECT Metal FROM tblCoins WHERE ID = %1"_s.arg(id)).toInt();
            const int type =
                SelectOnFile(m_path, u"SELECT CoinType FROM tblCoins WHERE ID = %1"_s.arg(id)).toInt();
            QCOMPARE(front.toByteArray(), photoFront.isEmpty()
                                              ? MakeThumbnail(BlankPicture(metal, type, true))
                                              : MakeThumbnail(photoFront));
            QCOMPARE(back.toByteArray(), photoBack.isEmpty() ? MakeThumbnail(BlankPicture(metal, type, false))
                                                             : MakeThumbnail(photoBack));
        }
        // The rows as the dataset rules post them: a blank bar in silver on both sides.
        QCOMPARE(Thumb(m_path, m_ids.at(1), "ThumbFront"), Thumb(m_path, m_ids.at(1), "ThumbBack"));
    }

    // A photo that does not decode: that item stays as it was, the others are done, the error names it.
    void damagedPhotoLeavesItsItemAlone()
    {
        ExecOnFile(m_path, u"UPDATE tblCoins SET PhotoBack = x'89504E470D0A1A0A0000' WHERE ID = %1"_s.arg(
                               m_ids.at(0)));
        SpoilThumbs();
        const QList<QVariantList> before = Snapshot(m_path, false);
        std::atomic<bool> cancel{false};
        const TThumbRunResult result = TThumbRegenerator::Run(m_path, ThumbJobsOf(*m_dm->qDS_Items), cancel);
        QCOMPARE(result.Done, 2);
        QCOMPARE(result.Failed, 1);
        QVERIFY2(result.FirstError.startsWith(u"Item %1: "_s.arg(m_ids.at(0))),
                 qPrintable(result.FirstError));
        QCOMPARE(Thumb(m_path, m_ids.at(0), "ThumbFront").toByteArray(), QByteArray(1, '\0'));
        QVERIFY(!Thumb(m_path, m_ids.at(1), "ThumbBack").isNull());
        QCOMPARE(Snapshot(m_path, false), before);
    }

    void cancelledBeforeStartWritesNothing()
    {
        SpoilThumbs();
        const QList<QVariantList> before = Snapshot(m_path, true);
        std::atomic<bool> cancel{true};
        const TThumbRunResult result = TThumbRegenerator::Run(m_path, ThumbJobsOf(*m_dm->qDS_Items), cancel);
        QVERIFY(result.Cancelled);
        QCOMPARE(result.Done, 0);
        QCOMPARE(Snapshot(m_path, true), before);
    }

    void missingFileIsAnError()
    {
        std::atomic<bool> cancel{false};
        const TThumbRunResult result =
            TThumbRegenerator::Run(m_dir.filePath(u"none.orv"_s), {{1, 0, 0}}, cancel);
        QCOMPARE(result.Done, 0);
        QVERIFY(!result.FirstError.isEmpty());
    }

    // On its thread, while the main connection stays open: progress arrives on this thread and the
    // items read again show the new thumbnails.
    void onAWorkerThread()
    {
        SpoilThumbs();
        TThumbRegenerator regenerator(m_path, ThumbJobsOf(*m_dm->qDS_Items));
        QSignalSpy finished(&regenerator, &TThumbRegenerator::Finished);
        QSignalSpy progress(&regenerator, &TThumbRegenerator::Progress);
        regenerator.Start();
        QVERIFY(finished.wait(20000));
        QCOMPARE(regenerator.Result().Done, 3);
        QVERIFY(!progress.isEmpty());
        QCOMPARE(progress.last().at(0).toInt(), 3);
        QCOMPARE(progress.last().at(1).toInt(), 3);
        m_dm->qDS_Items->refresh();
        QVERIFY(m_dm->qDS_Items->locate(u"ID"_s, m_ids.at(2)));
        QCOMPARE(m_dm->qDS_Items->fieldByName(u"ThumbFront"_s).asBytes(), MakeThumbnail(TestPicture(64, 64)));
    }
};

QTEST_GUILESS_MAIN(TstThumbRegenerator)
#include "tst_thumbregenerator.moc"
