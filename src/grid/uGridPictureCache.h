#pragma once

#include <QByteArray>
#include <QCache>
#include <QImage>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QSize>
#include <QThreadPool>
#include <QVariant>

#include <atomic>
#include <deque>
#include <functional>

// Reads the bytes of a picture by its row's key and field, on a worker thread of the picture cache
// (two may run at once, so it keeps what it needs per thread, such as a database connection of its
// own). Empty bytes: the row has no picture.
using TGridPictureLoader = std::function<QByteArray(const QVariant& rowKey, const QString& fieldName)>;

// Pictures of the cells on screen, decoded from their bytes off the main thread and kept in a
// cache bounded in bytes (least recently used go first). A view asks find() while it paints; on a
// miss it hands the bytes to request() and draws a placeholder until pictureReady() arrives. Each
// paint tells setWanted() which keys are on screen: queued work for the others is dropped before
// it is decoded, so scrolling never decodes what has gone by.
class TGridPictureCache : public QObject
{
    Q_OBJECT
public:
    explicit TGridPictureCache(QObject* parent = nullptr);
    ~TGridPictureCache() override;

    void setMaxBytes(qint64 bytes);
    qint64 maxBytes() const { return m_maxBytes; }
    qint64 bytes() const;
    int count() const { return int(m_cache.count()); }

    // The decoded picture for a key, or a null image.
    QImage find(const QString& key) const;
    bool contains(const QString& key) const { return m_cache.contains(key); }
    bool isPending(const QString& key) const { return m_pending.contains(key); }
    // Queues a decode of image bytes (any format Qt reads), scaled to fit size.
    void request(const QString& key, const QByteArray& bytes, const QSize& size);
    // Queues the scaling of a picture that is already decoded.
    void request(const QString& key, const QImage& image, const QSize& size);

    // With a loader the views never read picture bytes on the main thread: requestLoad() has the
    // worker read them through the loader, then decode them.
    void setLoader(TGridPictureLoader loader);
    bool hasLoader() const { return m_hasLoader; }
    void requestLoad(const QString& key, const QVariant& rowKey, const QString& fieldName, const QSize& size);
    // The loader found no picture for the key.
    bool isMissing(const QString& key) const { return m_missing.contains(key); }
    // The keys on screen; queued work for any other key is dropped.
    void setWanted(const QSet<QString>& keys);
    void clear();
    // Drops the decoded pictures whose keys start with prefix (all for an empty prefix).
    void removeMatching(const QString& prefix);

    struct Stats
    {
        qint64 Requested = 0;
        qint64 Decoded = 0;
        qint64 Dropped = 0;         // dropped from the queue before decoding
        qint64 DecodedUnwanted = 0; // finished after its key had left the screen
        qint64 Failed = 0;          // bytes that are no picture
        qint64 Missing = 0;         // the loader found none
    };
    Stats stats() const;
    void resetStats();
    // Waits until nothing is queued or decoding, and delivers the results (tests, measurements).
    void waitForIdle();

    // Decodes bytes scaled to fit size, keeping the aspect ratio (used by the workers).
    static QImage decode(const QByteArray& bytes, const QSize& size);

signals:
    void pictureReady(const QString& key);

private:
    struct Job
    {
        QString Key;
        QByteArray Bytes;
        QImage Image;
        QSize Size;
        QVariant RowKey;
        QString FieldName;
    };
    void enqueue(Job job);
    void runOne();
    void finished(const QString& key, const QImage& image, bool missing);

    QCache<QString, QImage> m_cache;
    qint64 m_maxBytes = 64 * 1024 * 1024;
    QSet<QString> m_pending; // main thread
    QSet<QString> m_stale;   // pending decodes of bytes that have changed since: not kept
    QSet<QString> m_missing; // main thread
    TGridPictureLoader m_loader;
    bool m_hasLoader = false;
    mutable QMutex m_mutex; // guards the queue, the wanted keys and the counters below
    std::deque<Job> m_queue;
    QSet<QString> m_wanted;
    bool m_wantedSet = false;
    Stats m_stats;
    std::atomic<int> m_running{0};
    QThreadPool m_pool;
};
