#include "uThumbRegenerator.h"

#include "uBlankPictures.h"
#include "uDBConnection.h"
#include "uDBDataset.h"
#include "uDBError.h"
#include "uDBField.h"
#include "uDBQuery.h"
#include "uThumbnail.h"

#include <QElapsedTimer>
#include <QThread>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

// Items per transaction: few enough that readers of the file never wait long.
constexpr int cBatchSize = 64;

QString IdList(const QList<TThumbJob>& jobs, qsizetype from, qsizetype count)
{
    QStringList ids;
    for (qsizetype i = from; i < from + count; ++i)
        ids << QString::number(jobs.at(i).ID);
    return ids.join(u", "_s);
}

} // namespace

QList<TThumbJob> ThumbJobsOf(const TDBDataset& items)
{
    QList<TThumbJob> jobs;
    const TDBField* metal = items.findField(u"Metal"_s);
    const TDBField* coinType = items.findField(u"CoinType"_s);
    const int count = items.recordCount();
    jobs.reserve(count);
    for (int row = 0; row < count; ++row) {
        const QVariant key = items.keyAt(row);
        if (key.isNull())
            continue; // a record not yet in the file
        TThumbJob job;
        job.ID = key.toLongLong();
        job.Metal = metal ? items.valueAt(row, metal->index()).toInt() : 0;
        job.CoinType = coinType ? items.valueAt(row, coinType->index()).toInt() : 0;
        jobs.append(job);
    }
    return jobs;
}

TThumbRegenerator::TThumbRegenerator(const QString& databasePath, QList<TThumbJob> jobs, QObject* parent)
    : QObject(parent), m_path(databasePath), m_jobs(std::move(jobs))
{}

TThumbRegenerator::~TThumbRegenerator()
{
    Cancel();
    Wait();
}

void TThumbRegenerator::Start()
{
    if (m_thread)
        return;
    m_thread = QThread::create([this] {
        QElapsedTimer sinceReport;
        sinceReport.start();
        const int total = Total();
        m_result = Run(m_path, m_jobs, m_cancel, [this, &sinceReport, total](int done) {
            if (sinceReport.elapsed() >= 100 || done == total) {
                sinceReport.restart();
                emit Progress(done, total);
            }
        });
    });
    m_thread->setParent(this);
    connect(m_thread, &QThread::finished, this, &TThumbRegenerator::Finished);
    m_thread->start(QThread::LowPriority);
}

bool TThumbRegenerator::IsRunning() const
{
    return m_thread && m_thread->isRunning();
}

bool TThumbRegenerator::Wait(int ms)
{
    if (!m_thread)
        return true;
    return ms < 0 ? m_thread->wait() : m_thread->wait(QDeadlineTimer(ms));
}

TThumbRunResult TThumbRegenerator::Run(const QString& databasePath, const QList<TThumbJob>& jobs,
                                       const std::atomic<bool>& cancel,
                                       const std::function<void(int)>& progress)
{
    TThumbRunResult result;
    QHash<QString, QByteArray> blanks; // the blank thumbnails by picture name
    auto blank = [&blanks](int metal, int coinType, bool obverse) {
        const QString name = BlankPictureName(metal, coinType, obverse);
        auto it = blanks.constFind(name);
        if (it == blanks.cend())
            it = blanks.insert(name, MakeThumbnail(BlankPicture(metal, coinType, obverse)));
        return *it;
    };

    TDBConnection connection;
    try {
        connection.setParam(u"Database"_s, databasePath);
        connection.setParam(u"OpenMode"_s, u"ReadWrite"_s);
        connection.setParam(u"StringFormat"_s, u"Unicode"_s);
        connection.setParam(u"LockingMode"_s, u"Normal"_s);
        connection.setParam(u"DriverID"_s, u"SQLite"_s);
        connection.setParam(u"BusyTimeout"_s, u"30000"_s);
        connection.open();

        for (qsizetype start = 0; start < jobs.size() && !cancel.load(); start += cBatchSize) {
            const qsizetype count = std::min<qsizetype>(cBatchSize, jobs.size() - start);
            // The photos of the batch, read outside the write transaction.
            QHash<qint64, std::pair<QByteArray, QByteArray>> photos;
            {
                TDBQuery query(&connection);
                query.setSQL(u"SELECT ID, PhotoFront, PhotoBack FROM tblCoins WHERE ID IN ("_s +
                             IdList(jobs, start, count) + u')');
                query.open();
                for (; !query.eof(); query.next()) {
                    photos.insert(query.fieldByName(u"ID"_s).asLargeInt(),
                                  {query.fieldByName(u"PhotoFront"_s).asBytes(),
                                   query.fieldByName(u"PhotoBack"_s).asBytes()});
                }
                query.close();
            }
            QList<std::tuple<qint64, QByteArray, QByteArray>> thumbs;
            for (qsizetype i = start; i < start + count && !cancel.load(); ++i) {
                const TThumbJob& job = jobs.at(i);
                const auto it = photos.constFind(job.ID);
                if (it == photos.cend())
                    continue; // deleted meanwhile
                try {
                    const QByteArray front =
                        it->first.isEmpty() ? blank(job.Metal, job.CoinType, true) : MakeThumbnail(it->first);
                    const QByteArray back = it->second.isEmpty() ? blank(job.Metal, job.CoinType, false)
                                                                 : MakeThumbnail(it->second);
                    thumbs.append({job.ID, front, back});
                } catch (const EThumbnailError& error) {
                    ++result.Failed;
                    if (result.FirstError.isEmpty())
                        result.FirstError = u"Item %1: %2"_s.arg(job.ID).arg(QString::fromUtf8(error.what()));
                }
            }
            connection.startTransaction();
            try {
                for (const auto& [id, front, back] : std::as_const(thumbs)) {
                    connection.execSQL(u"UPDATE tblCoins SET ThumbFront = ?, ThumbBack = ? WHERE ID = "_s +
                                           QString::number(id),
                                       QVariantList{front, back});
                }
                connection.commit();
            } catch (...) {
                connection.rollback();
                throw;
            }
            result.Done += int(thumbs.size());
            if (progress)
                progress(result.Done + result.Failed);
        }
        connection.close();
    } catch (const EDatabaseError& error) {
        result.FirstError = error.message();
    }
    result.Cancelled = cancel.load();
    return result;
}
