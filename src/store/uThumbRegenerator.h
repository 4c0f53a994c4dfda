#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <atomic>
#include <memory>

class QThread;
class TDBDataset;

// One item whose thumbnails are made again: its key, and what chooses its blank picture.
struct TThumbJob
{
    qint64 ID = 0;
    int Metal = 0;
    int CoinType = 0;
};

// The items of a dataset as it stands (filter and order applied), read without moving its cursor.
QList<TThumbJob> ThumbJobsOf(const TDBDataset& items);

// What one run did.
struct TThumbRunResult
{
    int Done = 0;   // items whose thumbnails were written
    int Failed = 0; // items left as they were because a photo did not decode
    bool Cancelled = false;
    QString FirstError; // "Item 12: ...", or a database error that stopped the run
};

// Makes ThumbFront and ThumbBack again for a list of items, on a thread of its own with a
// connection of its own to the collection file: for each item the photos are read by key, their
// thumbnails made by MakeThumbnail (decoding at reduced scale), a missing photo gets the blank
// thumbnail of its metal, type and side, and only the two thumbnail columns are written, in short
// transactions. Nothing else of the file changes. The items' photos never pass through the main
// thread; progress reaches it by queued signals. Cancel stops after the item under way; what was
// written stays.
class TThumbRegenerator : public QObject
{
    Q_OBJECT
public:
    TThumbRegenerator(const QString& databasePath, QList<TThumbJob> jobs, QObject* parent = nullptr);
    ~TThumbRegenerator() override; // cancels and waits

    void Start();
    void Cancel() { m_cancel.store(true); }
    bool IsRunning() const;
    // Waits for the end (ms < 0: as long as it takes).
    bool Wait(int ms = -1);
    int Total() const { return int(m_jobs.size()); }
    TThumbRunResult Result() const { return m_result; }

    // The whole run on the calling thread (the worker's body; a benchmark calls it as well).
    // progress, if set, is called after each transaction with the items done so far.
    static TThumbRunResult Run(const QString& databasePath, const QList<TThumbJob>& jobs,
                               const std::atomic<bool>& cancel,
                               const std::function<void(int)>& progress = {});

signals:
    // Items done so far; at most every 100 ms and after the last.
    void Progress(int done, int total);
    void Finished();

private:
    QString m_path;
    QList<TThumbJob> m_jobs;
    std::atomic<bool> m_cancel{false};
    TThumbRunResult m_result;
    QThread* m_thread = nullptr;
};
