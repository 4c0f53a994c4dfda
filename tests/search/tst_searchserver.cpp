// The catalogue search end to end: the client forms the request, a TEncryptedTextDownloader of a
// download queue fetches it over HTTPS from the real orvane-catalogue (a child process on a free
// port, demo catalogue) and deciphers it, and the reply becomes assets whose pictures then come
// from the server's picture stores.

#include "support_common.h"
#include "support_datarow.h"
#include "support_serverprocess.h"
#include "uCatalogueServer.h"
#include "uDownloadQueue.h"
#include "uEncryptedDownloader.h"
#include "uObjs.h"
#include "uSearchQuery.h"
#include "uZTSettings.h"
#include "uZTTypes.h"

#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QtTest>

#include <optional>
#include <tuple>

Q_DECLARE_METATYPE(TSearchFilters)

namespace {

// Stands for the add dialog: keeps each search reply and fills large pictures.
class TSearchWindow : public QObject
{
public:
    QList<QStringList> Replies;
    QList<TMetalAsset*> Filled; // the asset of each large picture that arrived, or nullptr

    bool event(QEvent* e) override
    {
        auto* message = dynamic_cast<TPostedMessage*>(e);
        if (!message)
            return QObject::event(e);
        if (message->Msg() == cMsgSearchReply) {
            Replies << message->TakeWParam().toStringList();
            message->TakeLParam();
        } else if (message->Msg() == cMsgLargePicture) {
            Filled << DeliverLargePicture(*message);
        }
        return true;
    }
};

// One row of every quick-search table, as a test row name.
QByteArray RowName(const TQuickSearch& row)
{
    static const char* const modes[] = {"",      "", "gold coins", "gold bars", "silver coins", "silver bars",
                                        "others"};
    return QByteArray(modes[row.Mode]) + ' ' + QByteArray::number(row.Tag) + ' ' + row.Gallery.toUtf8();
}

// Limits that every result of a search must keep; a limit of -1 (or 0 for a range) is none.
struct TExpect
{
    int MinCount = 1;
    int MaxCount = -1;
    int Metal = -1;
    QList<int> CoinTypes{};
    double GramsLow = 0, GramsHigh = 0;
    int YearLow = 0, YearHigh = 0;
    QString NameHas{}; // in Name or Series, without regard to case
};

} // namespace

Q_DECLARE_METATYPE(TExpect)

class TestSearchServer : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    TServerProcess m_server;
    QNetworkAccessManager m_manager;

    // The targets of the search requests in the server's access log, in order.
    QStringList LoggedSearches()
    {
        // A line reads: time client "GET target" status bytes "agent".
        static const QRegularExpression line("\"GET (/orv/search\\.php[^\"]*)\"");
        QStringList targets;
        auto it = line.globalMatch(QString::fromUtf8(m_server.Output()));
        while (it.hasNext())
            targets << it.next().captured(1);
        return targets;
    }

    // Runs one search as the add dialog does and reads its reply. Nothing when no reply arrived.
    std::optional<TMetalAssets> Search(const QString& url, QString* target = nullptr)
    {
        const qsizetype before = LoggedSearches().size();
        TSearchWindow window;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        queue.Window = &window;
        queue.AddDownload(TDownloadQueue::WorkerClass<TEncryptedTextDownloader>(), url, QString(),
                          cMsgSearchReply, &window, std::make_unique<TMessageObj>());
        queue.Start();
        queue.WaitFor();
        QCoreApplication::sendPostedEvents();
        if (target) {
            // The server writes its log line as it answers; it reaches this process a moment later.
            (void)QTest::qWaitFor([&] { return LoggedSearches().size() > before; }, 5000);
            const QStringList logged = LoggedSearches();
            *target = logged.size() > before ? logged.last() : QString();
        }
        if (window.Replies.size() != 1)
            return std::nullopt;
        return ReadSearchReply(window.Replies.first());
    }

    static void CheckResults(const TMetalAssets& assets, const TExpect& e)
    {
        QVERIFY2(int(assets.size()) >= e.MinCount && (e.MaxCount < 0 || int(assets.size()) <= e.MaxCount),
                 qPrintable(QString::number(assets.size())));
        for (const auto& a : assets) {
            const bool fits =
                (e.Metal < 0 || a->Metal == e.Metal) &&
                (e.CoinTypes.isEmpty() || e.CoinTypes.contains(a->CoinType)) &&
                (e.GramsLow <= 0 || a->WeightG >= e.GramsLow) &&
                (e.GramsHigh <= 0 || a->WeightG <= e.GramsHigh) && (e.YearLow <= 0 || a->Year >= e.YearLow) &&
                (e.YearHigh <= 0 || a->Year <= e.YearHigh) &&
                (e.NameHas.isEmpty() || (a->Name + a->Series).contains(e.NameHas, Qt::CaseInsensitive));
            QVERIFY2(fits, qPrintable(a->Caption()));
        }
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(ServerExecutable()), qPrintable(ServerExecutable()));
        LoadEnglish();
        m_home = std::make_unique<TTempSettingsHome>();
        // HTTPS with the server's self-signed certificate, as the program meets it.
        QVERIFY2(m_server.Start({}), qPrintable(m_server.Failure()));
        QVERIFY(m_server.BaseUrl().startsWith("https://"));
        SettingsStore().SetStringValue("CatalogueServer", QString(), m_server.BaseUrl());
        QCOMPARE(CatalogueServerURL(), m_server.BaseUrl());
    }
    void cleanupTestCase()
    {
        m_server.Stop();
        m_home.reset();
    }

    void searches_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("tag");
        QTest::addColumn<QString>("text"); // mode 1: SearchText; mode 0: the search box
        QTest::addColumn<TSearchFilters>("filters");
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<TExpect>("expect");
        const QLocale c = QLocale::c();
        // Every quick search finds results of its metal, its types and its years.
        for (const TQuickSearch& row : AllQuickSearches()) {
            TExpect e{.Metal = row.Metals.toInt()};
            for (const QString& type : row.CoinTypes.toString().split(','))
                e.CoinTypes << type.toInt();
            if (row.Years == u"years_filter=[2019]")
                e.YearLow = e.YearHigh = 2019;
            else if (row.Years.startsWith(u"years_range=[0,"))
                std::tie(e.YearLow, e.YearHigh) = std::pair(1, row.Years.mid(15, 4).toInt());
            AddRow(RowName(row).constData(), int(row.Mode), int(row.Tag), QString(), TSearchFilters(), c, e);
        }
        const TExpect none{.MinCount = 0, .MaxCount = 0};
        AddRow("unknown tag: bare request, empty reply", 6, 16, QString(), TSearchFilters(), c, none);
        const auto typed = [](const QString& keywords) { return TSearchFilters{.Keywords = keywords}; };
        AddRow("phrase", 0, -1, QString(), typed("\"Maple leaf\""), c, TExpect{.NameHas = "Maple Leaf"});
        AddRow("phrase out of order finds nothing", 0, -1, QString(), typed("\"leaf maple\""), c, none);
        AddRow("slash in the keywords", 0, -1, QString(), typed("1/10 oz maple"), c,
               TExpect{.NameHas = "1/10 oz"});
        AddRow("non-ASCII letter", 0, -1, QString(), typed(QString::fromUtf8("Krügerrand")), c,
               TExpect{.NameHas = "Krugerrand"});
        AddRow("text from outside", 1, -1, QString("Krugerrands"), typed("ignored"), c,
               TExpect{.NameHas = "Krugerrand"});
        const TSearchFilters silverBars{
            .Metals = "010000", .CoinTypes = "00011", .WeightFrom = 1000, .WeightUnit = cWeightUnitGrams};
        AddRow("silver bars from 1000 g, upper bound 0", 0, -1, QString(), silverBars, c,
               TExpect{.Metal = 1, .CoinTypes = {3, 4}, .GramsLow = 999.99});
        AddRow("1/10 oz range", 0, -1, QString(), TSearchFilters{.WeightFrom = 0.1, .WeightTo = 0.1}, c,
               TExpect{.GramsLow = 0.095 * TroyOunceGrams, .GramsHigh = 0.105 * TroyOunceGrams});
        const TSearchFilters kilo{
            .Keywords = "bar", .WeightFrom = 1000, .WeightTo = 1000, .WeightUnit = cWeightUnitGrams};
        const TExpect oneKilo{.GramsLow = 999.99, .GramsHigh = 1000.01};
        AddRow("German decimal comma", 0, -1, QString(), kilo, QLocale(QLocale::German), oneKilo);
        AddRow("Arabic decimal separator", 0, -1, QString(), kilo, QLocale(QLocale::Arabic, QLocale::Egypt),
               oneKilo);
        AddRow("gold from 2000, upper bound 0", 0, -1, QString(),
               TSearchFilters{.Metals = "100000", .YearFrom = 2000}, c, TExpect{.Metal = 0, .YearLow = 2000});
        AddRow("up to 1933", 0, -1, QString(), TSearchFilters{.YearTo = 1933}, c,
               TExpect{.YearLow = 1, .YearHigh = 1933});
        AddRow("palladium Eagle of the US Mint", 0, -1, QString(),
               TSearchFilters{.Keywords = "Eagle", .Metals = "000100", .CoinTypes = "10000", .MintID = 32}, c,
               TExpect{.Metal = 3, .CoinTypes = {0}, .NameHas = "Eagle"});
    }
    void searches()
    {
        QFETCH(int, mode);
        QFETCH(int, tag);
        QFETCH(QString, text);
        QFETCH(TSearchFilters, filters);
        QFETCH(QLocale, locale);
        QFETCH(TExpect, expect);
        const QLocale saved;
        QLocale::setDefault(locale);
        const QString query = SearchQuery(quint8(mode), tag, text, filters);
        QLocale::setDefault(saved);
        QString target;
        const auto assets = Search(SearchURL(query), &target);
        QVERIFY2(assets, qPrintable(query)); // a reply arrived, also when it holds nothing

        // The server read the query as it was formed: raw blanks and quotes travelled
        // percent-encoded and decode to the same text.
        QVERIFY2(!target.contains(' ') && !target.contains('"'), qPrintable(target));
        QCOMPARE(QUrl::fromPercentEncoding(target.toUtf8()),
                 QUrl::fromPercentEncoding(("/orv/search.php?action=search-coins&" + query).toUtf8()));
        CheckResults(*assets, expect);
        for (const auto& asset : *assets) {
            const TCoverPicture* thumbnail = asset->PictureOfKind(TCoverPicture::kThumbnail);
            QVERIFY2(thumbnail && thumbnail->URL.startsWith(m_server.BaseUrl() + "/orv/Images_Thumbs/"),
                     qPrintable(asset->Name));
        }
    }

    void picturesComeAsServed()
    {
        auto assets = Search(SearchURL(SearchQuery(smGoldCoins, 1, QString(), TSearchFilters())));
        QVERIFY(assets && assets->size() >= 2);
        TMetalAsset& first = *assets->at(0);
        TMetalAsset& second = *assets->at(1);
        const int pictures = int(first.Pictures.size());
        QVERIFY(pictures >= 3);
        // A picture the store does not have stays empty, and is asked for again; one without a URL
        // is never asked for.
        TCoverPicture* reverse = second.PictureOfKind(TCoverPicture::kReverse);
        QVERIFY(reverse);
        reverse->URL = m_server.BaseUrl() + "/orv/Images_Large/no-such-picture.jpg";
        second.AddPicture(TCoverPicture::kOther, QString());
        // A card showing the same picture as another shares its transfer.
        TMetalAsset twin;
        twin.AddPicture(TCoverPicture::kObverse, first.PictureOfKind(TCoverPicture::kObverse)->URL);

        TSearchWindow window;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        QSet<quint8> everyKind = LargePictureKinds();
        everyKind.insert(TCoverPicture::kThumbnail);
        QCOMPARE(RequestPictures(first, queue, everyKind, &window, cMsgLargePicture, false), pictures);
        QCOMPARE(RequestPictures(twin, queue, everyKind, &window, cMsgLargePicture, false), 1);
        const int secondCount =
            RequestPictures(second, queue, LargePictureKinds(), &window, cMsgLargePicture, false);
        QCOMPARE(secondCount,
                 int(second.Pictures.size()) - 2); // neither the thumbnail nor the one without URL
        QCOMPARE(queue.Count(), pictures + secondCount);
        QCOMPARE(queue.RunningThreads(), 0);
        queue.Start();
        queue.WaitFor();
        QCoreApplication::sendPostedEvents();
        QCOMPARE(window.Filled.count(&first), pictures);
        QCOMPARE(window.Filled.count(&second), secondCount - 1);
        QCOMPARE(twin.PictureOfKind(TCoverPicture::kObverse)->Data,
                 first.PictureOfKind(TCoverPicture::kObverse)->Data);
        QVERIFY(reverse->IsEmpty());
        QVERIFY(second.PictureOfKind(TCoverPicture::kThumbnail)->IsEmpty()); // not asked for

        // The bytes are those the store serves, thumbnail and large pictures alike.
        for (const auto& picture : first.Pictures) {
            const TReply served = HttpGet(m_manager, QUrl(picture->URL));
            QCOMPARE(served.Status, 200);
            QCOMPARE(picture->Data, served.Body);
            QVERIFY(!picture->Image().isNull());
        }
        // Looking again asks only for what is still missing.
        QCOMPARE(RequestPictures(first, queue, everyKind, &window, cMsgLargePicture, false), 0);
        QCOMPARE(RequestPictures(second, queue, LargePictureKinds(), &window, cMsgLargePicture, false), 1);
    }
};

QTEST_MAIN(TestSearchServer)
#include "tst_searchserver.moc"
