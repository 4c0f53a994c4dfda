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

// The tab a search reply is meant for.
class TTabObj : public TMessageObj
{
};

// One row of every quick-search table, as a test row name.
QByteArray RowName(const TQuickSearch& row)
{
    static const char* const modes[] = {"",      "", "gold coins", "gold bars", "silver coins", "silver bars",
                                        "others"};
    return QByteArray(modes[row.Mode]) + ' ' + QByteArray::number(row.Tag) + ' ' + row.Gallery.toUtf8();
}

TSearchFilters Typed(const QString& keywords)
{
    TSearchFilters filters;
    filters.Keywords = keywords;
    return filters;
}

// Limits that every result of a search must keep; a limit of -1 (or 0 for a range) is none.
struct TExpect
{
    int MinCount = 1;
    int MaxCount = -1;
    int Metal = -1;
    QList<int> CoinTypes;
    double GramsLow = 0, GramsHigh = 0;
    int YearLow = 0, YearHigh = 0;
    QString NameHas; // in Name or Series, without regard to case
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
                          cMsgSearchReply, &window, std::make_unique<TTabObj>());
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

    static void CheckResults(const TMetalAssets& assets, const TExpect& expect)
    {
        QVERIFY2(int(assets.size()) >= expect.MinCount, qPrintable(QString::number(assets.size())));
        if (expect.MaxCount >= 0)
            QVERIFY2(int(assets.size()) <= expect.MaxCount, qPrintable(QString::number(assets.size())));
        for (const auto& asset : assets) {
            const QByteArray name = asset->Name.toUtf8();
            if (expect.Metal >= 0)
                QVERIFY2(asset->Metal == expect.Metal, name);
            if (!expect.CoinTypes.isEmpty())
                QVERIFY2(expect.CoinTypes.contains(asset->CoinType), name);
            if (expect.GramsLow > 0)
                QVERIFY2(asset->WeightG >= expect.GramsLow, name);
            if (expect.GramsHigh > 0)
                QVERIFY2(asset->WeightG <= expect.GramsHigh, name);
            if (expect.YearLow > 0)
                QVERIFY2(asset->Year >= expect.YearLow, name);
            if (expect.YearHigh > 0)
                QVERIFY2(asset->Year <= expect.YearHigh, name);
            if (!expect.NameHas.isEmpty())
                QVERIFY2(asset->Name.contains(expect.NameHas, Qt::CaseInsensitive) ||
                             asset->Series.contains(expect.NameHas, Qt::CaseInsensitive),
                         name);
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

    void everyQuickSearchFindsItsMetalAndType_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("tag");
        for (const TQuickSearch& row : AllQuickSearches())
            AddRow(RowName(row).constData(), int(row.Mode), int(row.Tag));
    }
    void everyQuickSearchFindsItsMetalAndType()
    {
        QFETCH(int, mode);
        QFETCH(int, tag);
        const TQuickSearch& row = *FindQuickSearch(quint8(mode), tag);
        const QString query = SearchQuery(quint8(mode), tag, QString(), TSearchFilters());
        QString target;
        const auto assets = Search(SearchURL(query), &target);
        QVERIFY2(assets, qPrintable(query));

        // The server read the query as it was formed: raw blanks and quotes travelled
        // percent-encoded, and decode to the same text.
        QVERIFY2(!target.contains(' ') && !target.contains('"'), qPrintable(target));
        QCOMPARE(QUrl::fromPercentEncoding(target.toUtf8()), "/orv/search.php?action=search-coins&" + query);

        TExpect expect;
        expect.Metal = row.Metals.toInt();
        for (const QString& type : row.CoinTypes.toString().split(','))
            expect.CoinTypes << type.toInt();
        if (row.Years == u"years_filter=[2019]")
            expect.YearLow = expect.YearHigh = 2019;
        if (row.Years.startsWith(u"years_range=[0,")) {
            expect.YearLow = 1;
            expect.YearHigh = row.Years.mid(15, 4).toInt();
        }
        CheckResults(*assets, expect);
        // Every result has its thumbnail on the server's thumbnail store.
        for (const auto& asset : *assets) {
            const TCoverPicture* thumbnail = asset->PictureOfKind(TCoverPicture::kThumbnail);
            QVERIFY2(thumbnail, qPrintable(asset->Name));
            QVERIFY(thumbnail->URL.startsWith(m_server.BaseUrl() + "/orv/Images_Thumbs/"));
        }
    }

    void typedAndTextSearches_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("searchText");
        QTest::addColumn<TSearchFilters>("filters");
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<TExpect>("expect");
        const QLocale c = QLocale::c();
        TSearchFilters f;
        TExpect e;

        e = {};
        e.NameHas = "Maple Leaf";
        AddRow("phrase", 0, QString(), Typed("\"Maple leaf\""), c, e);
        e = {};
        e.MinCount = 0;
        e.MaxCount = 0;
        AddRow("phrase out of order finds nothing", 0, QString(), Typed("\"leaf maple\""), c, e);
        e = {};
        e.NameHas = "1/10 oz";
        AddRow("slash in the keywords", 0, QString(), Typed("1/10 oz maple"), c, e);
        e = {};
        e.NameHas = "Krugerrand";
        AddRow("non-ASCII letter", 0, QString(), Typed(QString::fromUtf8("Krügerrand")), c, e);
        AddRow("text from outside", 1, QString("Krugerrands"), Typed("ignored words"), c, e);

        f = Typed("");
        f.Metals = "010000";
        f.CoinTypes = "00011";
        f.WeightFrom = 1000;
        f.WeightUnit = cWeightUnitGrams;
        e = {};
        e.Metal = 1;
        e.CoinTypes = {3, 4};
        e.GramsLow = 999.99;
        AddRow("silver bars from 1000 g, upper bound 0", 0, QString(), f, c, e);

        f = Typed("");
        f.WeightFrom = f.WeightTo = 0.1;
        e = {};
        e.GramsLow = 0.095 * TroyOunceGrams;
        e.GramsHigh = 0.105 * TroyOunceGrams;
        AddRow("1/10 oz range", 0, QString(), f, c, e);

        f = Typed("bar");
        f.WeightFrom = f.WeightTo = 1000;
        f.WeightUnit = cWeightUnitGrams;
        e = {};
        e.GramsLow = 999.99;
        e.GramsHigh = 1000.01;
        AddRow("German decimal comma in grams", 0, QString(), f, QLocale(QLocale::German, QLocale::Germany),
               e);
        AddRow("Arabic decimal separator in grams", 0, QString(), f, QLocale(QLocale::Arabic, QLocale::Egypt),
               e);

        f = Typed("");
        f.Metals = "100000";
        f.YearFrom = 2000;
        e = {};
        e.Metal = 0;
        e.YearLow = 2000;
        AddRow("gold from 2000, upper bound 0", 0, QString(), f, c, e);

        f = Typed("");
        f.YearTo = 1933;
        e = {};
        e.YearLow = 1;
        e.YearHigh = 1933;
        AddRow("up to 1933", 0, QString(), f, c, e);

        f = Typed("Eagle");
        f.Metals = "000100";
        f.CoinTypes = "10000";
        f.MintID = 32;
        e = {};
        e.Metal = 3;
        e.CoinTypes = {0};
        e.NameHas = "Eagle";
        AddRow("palladium Eagle of the US Mint", 0, QString(), f, c, e);
    }
    void typedAndTextSearches()
    {
        QFETCH(int, mode);
        QFETCH(QString, searchText);
        QFETCH(TSearchFilters, filters);
        QFETCH(QLocale, locale);
        QFETCH(TExpect, expect);
        const QLocale saved;
        QLocale::setDefault(locale);
        const QString query = SearchQuery(quint8(mode), -1, searchText, filters);
        QLocale::setDefault(saved);
        QString target;
        const auto assets = Search(SearchURL(query), &target);
        QVERIFY2(assets, qPrintable(query));
        QCOMPARE(QUrl::fromPercentEncoding(target.toUtf8()),
                 QUrl::fromPercentEncoding(("/orv/search.php?action=search-coins&" + query).toUtf8()));
        CheckResults(*assets, expect);
    }

    void unknownTagSendsTheBareRequest()
    {
        const QString query = SearchQuery(smOtherMetals, 16, QString(), TSearchFilters());
        QVERIFY(query.isEmpty());
        QString target;
        const auto assets = Search(SearchURL(query), &target);
        // A reply arrives, and it holds nothing: no failure.
        QVERIFY(assets);
        QVERIFY(assets->empty());
        QCOMPARE(target, QString("/orv/search.php?action=search-coins&"));
    }

    void largePicturesComeAsServed()
    {
        auto assets = Search(SearchURL(SearchQuery(smGoldCoins, 1, QString(), TSearchFilters())));
        QVERIFY(assets && assets->size() >= 2);
        TMetalAsset& first = *assets->at(0);
        TMetalAsset& second = *assets->at(1);
        int large = 0;
        for (const auto& picture : first.Pictures)
            large += picture->Kind != TCoverPicture::kThumbnail ? 1 : 0;
        QVERIFY(large >= 2);
        // A picture the store does not have stays empty and is asked for again.
        TCoverPicture* reverse = second.PictureOfKind(TCoverPicture::kReverse);
        QVERIFY(reverse);
        reverse->URL = m_server.BaseUrl() + "/orv/Images_Large/no-such-picture.jpg";

        TSearchWindow window;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        QCOMPARE(RequestPictures(first, queue, LargePictureKinds(), &window, cMsgLargePicture, false), large);
        const int secondCount =
            RequestPictures(second, queue, LargePictureKinds(), &window, cMsgLargePicture, true);
        queue.WaitFor();
        QCoreApplication::sendPostedEvents();
        QCOMPARE(window.Filled.size(), large + secondCount - 1);
        QCOMPARE(window.Filled.count(&first), large);

        for (const auto& picture : first.Pictures) {
            if (picture->Kind == TCoverPicture::kThumbnail) {
                QVERIFY(picture->IsEmpty()); // not asked for
                continue;
            }
            QVERIFY2(!picture->IsEmpty(), qPrintable(picture->URL));
            // The bytes are those the store serves, and they show what was decoded.
            const TReply served = HttpGet(m_manager, QUrl(picture->URL));
            QCOMPARE(served.Status, 200);
            QCOMPARE(picture->Data, served.Body);
            QCOMPARE(picture->Image(), QImage::fromData(served.Body));
        }
        QVERIFY(reverse->IsEmpty());

        // Looking again asks only for what is still missing.
        QCOMPARE(RequestPictures(first, queue, LargePictureKinds(), &window, cMsgLargePicture, false), 0);
        QCOMPARE(RequestPictures(second, queue, LargePictureKinds(), &window, cMsgLargePicture, false), 1);
        QVERIFY(!window.Filled.contains(nullptr));
    }

    void thumbnailsComeFromTheirStore()
    {
        auto assets = Search(SearchURL(SearchQuery(smSilverBars, 2, QString(), TSearchFilters())));
        QVERIFY(assets && !assets->empty());
        TSearchWindow window;
        TDownloadQueue queue;
        queue.MaxThreads = 5;
        int queued = 0;
        for (const auto& asset : *assets)
            queued +=
                RequestPictures(*asset, queue, {TCoverPicture::kThumbnail}, &window, cMsgLargePicture, false);
        QCOMPARE(queued, int(assets->size()));
        queue.Start();
        queue.WaitFor();
        QCoreApplication::sendPostedEvents();
        for (const auto& asset : *assets) {
            const TCoverPicture* thumbnail = asset->PictureOfKind(TCoverPicture::kThumbnail);
            const TCoverPicture* obverse = asset->PictureOfKind(TCoverPicture::kObverse);
            QVERIFY(!thumbnail->IsEmpty());
            QVERIFY(!thumbnail->Image().isNull());
            QVERIFY(obverse->IsEmpty()); // the same name on the large store was not asked for
        }
    }
};

QTEST_MAIN(TestSearchServer)
#include "tst_searchserver.moc"
