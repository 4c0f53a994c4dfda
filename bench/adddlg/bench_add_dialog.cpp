// The add dialog at speed, offscreen, against a server on 127.0.0.1 that answers a search with 100
// results of the demo catalogue (enciphered as the catalogue server sends them) and serves a JPEG
// for every thumbnail and large picture:
//   1. from pressing Search to the first cards painted,
//   2. the longest stall of the main thread while the 100 thumbnails arrive,
//   3. adding 50 picked items with their pictures into a collection of 100,000 items, from the
//      moment the pictures are in.

#include "bench_common.h"
#include "bench_items_common.h"
#include "dmInternalData.h"
#include "frmAdd.h"
#include "support_common.h"
#include "support_httpserver.h"
#include "uCatalogueQuery.h"
#include "uCatalogueSearch.h"
#include "uMainController.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uSearchBox.h"
#include "uTemplate.h"
#include "uZTSettings.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

namespace {

QByteArray ClearReply(int count)
{
    TCatalogueSearch search(QStringLiteral(ORV_SERVER_DATA "/catalogue.db"));
    const QJsonArray all =
        search.Search(ParseCatalogueQuery("action=search-coins&metals=[0,1,2,3,4,5]&coin_types=[0,1,2,3,4]"));
    QJsonArray reply;
    for (int i = 0; i < count && !all.isEmpty(); ++i) {
        QJsonObject item = all.at(i % all.size()).toObject();
        // Every result its own pictures, so that each thumbnail is a transfer of its own.
        item[QStringLiteral("Name")] =
            item[QStringLiteral("Name")].toString() + QStringLiteral(" #%1").arg(i);
        item[QStringLiteral("PhotoFront")] = QStringLiteral("f%1.jpg").arg(i);
        item[QStringLiteral("PhotoBack")] = QStringLiteral("b%1.jpg").arg(i);
        reply.append(item);
    }
    return QJsonDocument(reply).toJson(QJsonDocument::Compact);
}

// The longest time between two turns of the event loop while it runs.
class TStallWatch : public QObject
{
public:
    TStallWatch()
    {
        m_timer.setInterval(0);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            const qint64 now = m_clock.nsecsElapsed();
            Longest = std::max(Longest, now - m_last);
            if (now - m_last > 50'000'000)
                ++Over50;
            m_last = now;
        });
    }
    void Start()
    {
        Longest = 0;
        Over50 = 0;
        m_clock.start();
        m_last = 0;
        m_timer.start();
    }
    void Stop() { m_timer.stop(); }
    qint64 Longest = 0;
    int Over50 = 0;

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
};

class TAssetsSeam : public TMainWindowSeam
{
public:
    std::vector<std::unique_ptr<TMetalAsset>> Assets;
    std::vector<std::unique_ptr<TMetalAsset>> ExecuteAddDialog(const TAddDialogRequest&) override
    {
        return std::move(Assets);
    }
    void ExecuteItemEditor() override {}
    QList<QVariant> SelectedKeys() override { return {}; }
    std::optional<QString> FocusedCellText() override { return std::nullopt; }
    QString SelectedRecordsText() override { return {}; }
    void SetClipboardText(const QString&) override {}
};

class TNoDialogs : public TFileDialogSeam
{
public:
    QString ExecuteOpenDialog(const TFileDialogRequest&) override { return {}; }
    QString ExecuteSaveDialog(const TFileDialogRequest&) override { return {}; }
};

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int collection = argc > 1 ? std::max(0, QByteArray(argv[1]).toInt()) : 100000;
    TTempSettingsHome home;
    LoadEnglish();

    TTestHttpServer server;
    if (!server.IsListening()) {
        std::fprintf(stderr, "the local server did not start\n");
        return 1;
    }
    const QByteArray body = EncryptBytes(ClearReply(100), PayloadKeyA, PayloadKeyB);
    server.SetReply("/orv/search.php", {200, body, {}});
    server.SetReply("/orv/Images_Thumbs/", {200, MakePhotoJpeg(150, 150), {}});
    server.SetReply("/orv/Images_Large/", {200, MakePhotoJpeg(800, 800), {}});
    SettingsStore().SetStringValue("CatalogueServer", QString(), server.BaseURL());

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("vault.db"));
    WriteFile(path, NewBlankDatabaseBytes());
    TDM_InternalData data;
    data.ConnectDatabase(path);
    if (collection > 0) {
        std::fprintf(stderr, "writing %d items ...\n", collection);
        GenerateItems(data, collection, 5000, 0);
        data.ConnectDatabase(path);
    }

    for (int round = 1; round <= 3; ++round) {
        TAddForm form(&data);
        form.resize(1180, 760);
        form.show();
        QCoreApplication::processEvents();
        form.SearchBox()->setText(QStringLiteral("gold"));
        TStallWatch watch;

        // 1. Search to the first cards painted.
        QElapsedTimer clock;
        clock.start();
        form.Action(QStringLiteral("actSearch"))->trigger();
        const TAddResultsModel& results = *form.Controller().Tab(0).Results;
        while (results.Count() == 0 && clock.elapsed() < 30000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        watch.Start();
        form.repaint();
        const double firstCards = double(clock.nsecsElapsed()) / 1e6;

        // 2. The thumbnails arrive.
        while (!form.Controller().Idle() && clock.elapsed() < 60000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        QCoreApplication::sendPostedEvents();
        watch.Stop();
        const double thumbnails = double(clock.nsecsElapsed()) / 1e6 - firstCards;

        const int cards = results.Count();

        // 3. 50 items picked and added with their pictures, then inserted into the collection.
        QList<int> picked;
        for (int row = 0; row < 50; ++row)
            picked << row;
        form.Controller().SetSelection(picked);
        form.UpdateActions();
        QElapsedTimer pictures;
        pictures.start();
        form.Action(QStringLiteral("actSaveAndClose"))->trigger();
        const double pictureWait = double(pictures.nsecsElapsed()) / 1e6;
        TAssetsSeam seam;
        seam.Assets = std::move(form.Controller().Assets);
        const std::size_t added = seam.Assets.size();
        TNoDialogs dialogs;
        TMainController controller(&data, &dialogs);
        controller.SetWindowSeam(&seam);
        QElapsedTimer insert;
        insert.start();
        controller.OpenAddDialog(0, -1, QString(), false);
        const double inserted = double(insert.nsecsElapsed()) / 1e6;

        std::printf(
            "round %d: %d cards; Search -> first cards painted %.1f ms; thumbnails in %.0f ms, longest "
            "main-thread stall %.1f ms (%d over 50 ms); 50 picked: pictures in %.0f ms; inserting %zu "
            "items into %d: %.0f ms\n",
            round, cards, firstCards, thumbnails, double(watch.Longest) / 1e6, watch.Over50, pictureWait,
            added, data.qDS_Items->recordCount() - int(added), inserted);
        std::fflush(stdout);
    }
    return 0;
}
