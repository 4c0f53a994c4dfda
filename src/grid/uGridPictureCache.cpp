#include "uGridPictureCache.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImageReader>
#include <QMutexLocker>
#include <QThread>

TGridPictureCache::TGridPictureCache(QObject* parent) : QObject(parent)
{
    m_pool.setMaxThreadCount(std::max(1, std::min(2, QThread::idealThreadCount())));
    m_cache.setMaxCost(qsizetype(m_maxBytes / 1024));
}

TGridPictureCache::~TGridPictureCache()
{
    {
        QMutexLocker lock(&m_mutex);
        m_queue.clear();
    }
    m_pool.waitForDone();
}

void TGridPictureCache::setMaxBytes(qint64 bytes)
{
    m_maxBytes = std::max<qint64>(bytes, 1024);
    m_cache.setMaxCost(qsizetype(m_maxBytes / 1024));
}

qint64 TGridPictureCache::bytes() const
{
    return qint64(m_cache.totalCost()) * 1024;
}

QImage TGridPictureCache::find(const QString& key) const
{
    const QImage* image = m_cache.object(key);
    return image ? *image : QImage();
}

void TGridPictureCache::request(const QString& key, const QByteArray& bytes, const QSize& size)
{
    if (bytes.isEmpty() || m_cache.contains(key) || m_pending.contains(key))
        return;
    Job job;
    job.Key = key;
    job.Bytes = bytes;
    job.Size = size;
    enqueue(std::move(job));
}

void TGridPictureCache::request(const QString& key, const QImage& image, const QSize& size)
{
    if (image.isNull() || m_cache.contains(key) || m_pending.contains(key))
        return;
    Job job;
    job.Key = key;
    job.Image = image;
    job.Size = size;
    enqueue(std::move(job));
}

void TGridPictureCache::setLoader(TGridPictureLoader loader)
{
    // Set before pictures are asked for; workers copy it under the lock.
    QMutexLocker lock(&m_mutex);
    m_loader = std::move(loader);
    m_hasLoader = bool(m_loader);
}

void TGridPictureCache::requestLoad(const QString& key, const QVariant& rowKey, const QString& fieldName,
                                    const QSize& size)
{
    if (m_cache.contains(key) || m_pending.contains(key) || m_missing.contains(key))
        return;
    Job job;
    job.Key = key;
    job.Size = size;
    job.RowKey = rowKey;
    job.FieldName = fieldName;
    enqueue(std::move(job));
}

void TGridPictureCache::enqueue(Job job)
{
    m_pending.insert(job.Key);
    {
        QMutexLocker lock(&m_mutex);
        ++m_stats.Requested;
        m_queue.push_back(std::move(job));
    }
    m_pool.start([this] { runOne(); });
}

void TGridPictureCache::runOne()
{
    Job job;
    TGridPictureLoader loader;
    {
        QMutexLocker lock(&m_mutex);
        loader = m_loader;
        while (!m_queue.empty()) {
            Job next = std::move(m_queue.front());
            m_queue.pop_front();
            if (!m_wantedSet || m_wanted.contains(next.Key)) {
                job = std::move(next);
                break;
            }
            ++m_stats.Dropped;
            const QString key = next.Key;
            QMetaObject::invokeMethod(
                this,
                [this, key] {
                    m_pending.remove(key);
                    m_stale.remove(key);
                },
                Qt::QueuedConnection);
        }
        if (job.Key.isEmpty())
            return;
        ++m_running;
    }
    QImage image;
    bool missing = false;
    if (job.Bytes.isEmpty() && job.Image.isNull() && loader) {
        job.Bytes = loader(job.RowKey, job.FieldName);
        missing = job.Bytes.isEmpty();
    }
    if (missing) {
        // No picture: nothing to decode.
    } else if (!job.Image.isNull())
        image = job.Image.scaled(job.Size, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                    .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    else
        image = decode(job.Bytes, job.Size);
    {
        QMutexLocker lock(&m_mutex);
        if (missing)
            ++m_stats.Missing;
        else if (image.isNull())
            ++m_stats.Failed;
        else
            ++m_stats.Decoded;
        if (m_wantedSet && !m_wanted.contains(job.Key))
            ++m_stats.DecodedUnwanted;
    }
    const QString key = job.Key;
    QMetaObject::invokeMethod(
        this, [this, key, image, missing] { finished(key, image, missing); }, Qt::QueuedConnection);
    --m_running;
}

QImage TGridPictureCache::decode(const QByteArray& bytes, const QSize& size)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize full = reader.size();
    if (full.isValid() && size.isValid() && (full.width() > size.width() || full.height() > size.height()))
        reader.setScaledSize(full.scaled(size, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    QImage image = reader.read();
    if (image.isNull())
        return image;
    if (size.isValid() && (image.width() > size.width() || image.height() > size.height()))
        image = image.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

void TGridPictureCache::finished(const QString& key, const QImage& image, bool missing)
{
    m_pending.remove(key);
    if (m_stale.remove(key)) {
        // Its bytes changed while it was decoded: the view asks again with the new ones.
        emit pictureReady(key);
        return;
    }
    if (missing) {
        m_missing.insert(key);
        emit pictureReady(key);
        return;
    }
    if (image.isNull())
        return;
    const qsizetype cost = std::max<qsizetype>(1, qsizetype(image.sizeInBytes() / 1024));
    m_cache.insert(key, new QImage(image), cost);
    emit pictureReady(key);
}

void TGridPictureCache::setWanted(const QSet<QString>& keys)
{
    QMutexLocker lock(&m_mutex);
    m_wanted = keys;
    m_wantedSet = true;
    for (auto it = m_queue.begin(); it != m_queue.end();) {
        if (keys.contains(it->Key)) {
            ++it;
            continue;
        }
        ++m_stats.Dropped;
        m_pending.remove(it->Key);
        m_stale.remove(it->Key);
        it = m_queue.erase(it);
    }
}

void TGridPictureCache::clear()
{
    {
        QMutexLocker lock(&m_mutex);
        m_queue.clear();
    }
    m_pool.waitForDone();
    QCoreApplication::sendPostedEvents(this);
    m_pending.clear();
    m_stale.clear();
    m_missing.clear();
    m_cache.clear();
}

void TGridPictureCache::removeMatching(const QString& prefix)
{
    for (const QString& key : std::as_const(m_pending))
        if (key.startsWith(prefix))
            m_stale.insert(key);
    for (auto it = m_missing.begin(); it != m_missing.end();)
        it = it->startsWith(prefix) ? m_missing.erase(it) : std::next(it);
    const QList<QString> keys = m_cache.keys();
    for (const QString& key : keys)
        if (key.startsWith(prefix))
            m_cache.remove(key);
}

TGridPictureCache::Stats TGridPictureCache::stats() const
{
    QMutexLocker lock(&m_mutex);
    return m_stats;
}

void TGridPictureCache::resetStats()
{
    QMutexLocker lock(&m_mutex);
    m_stats = {};
}

void TGridPictureCache::waitForIdle()
{
    m_pool.waitForDone();
    QCoreApplication::sendPostedEvents(this);
}
