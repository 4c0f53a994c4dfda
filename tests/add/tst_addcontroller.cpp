// The add dialog's logic against the real catalogue server (a child process on a free port, demo
// catalogue, HTTPS), and against a local server that misbehaves: searching, tabs, thumbnails by
// record index, large pictures, adding, stopping and closing.

#include "support_common.h"
#include "support_localserver.h"
#include "support_serverprocess.h"
#include "uAddController.h"
#include "uCatalogueServer.h"
#include "uItemTexts.h"
#include "uZTSettings.h"

#include <QImage>
#include <QSignalSpy>
#include <QtTest>

Q_DECLARE_METATYPE(TAddSortKey)

namespace {

quint16 FreeLocalPort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

class TStubSeam : public TAddFormSeam
{
public:
    bool SortAnswer = false;
    TAddSort SortResult;
    bool Connection = true;
    int ProxyCalls = 0;
    QMap<QString, int> Mints;

    QByteArray PlaceholderPicture(int metal, int coinType, bool front) override
    {
        return QByteArray("blank ") + QByteArray::number(metal) + ' ' + QByteArray::number(coinType) +
               (front ? " front" : " back");
    }
    int MintIDByName(const QString& name) override { return Mints.value(name, -1); }
    QByteArray MintPicture(int mintID) override { return "mint " + QByteArray::number(mintID); }
    bool ExecuteSortDialog(TAddSort& sort) override
    {
        if (SortAnswer)
            sort = SortResult;
        return SortAnswer;
    }
    void ExecuteProxySettings() override { ++ProxyCalls; }
    bool TestConnection() override { return Connection; }
};

// The reply lines of a search as the text worker posts them: one JSON array.
QStringList ReplyLines(const QStringList& photoFronts)
{
    QStringList elements;
    int relevance = 100;
    for (const QString& photo : photoFronts)
        elements << QStringLiteral(
                        R"({"weight":%1,"Name":"Coin %2","Metal":0,"CoinType":0,"WeightG":31.1035,)"
                        R"("Year":2020,"PhotoFront":"%2"})")
                        .arg(relevance--)
                        .arg(photo);
    return {u'[' + elements.join(u',') + u']'};
}

bool AllThumbsLanded(const TAddResultsModel& results)
{
    for (int row = 0; row < results.Count(); ++row)
        if (results.Cell(row, acThumb).toByteArray().startsWith("blank"))
            return false;
    return results.Count() > 0;
}

} // namespace

class TestAddController : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    TServerProcess m_server;
    TRecordingPresenter m_messages;
    TStubSeam m_seam;

    void UseServer(const QString& base)
    {
        SettingsStore().SetStringValue("CatalogueServer", QString(), base);
    }
    static void WaitIdle(TAddController& form)
    {
        QTRY_VERIFY_WITH_TIMEOUT(form.Idle(), 20000);
        QCoreApplication::sendPostedEvents();
    }
    // A typed search in the active tab, waited for with its thumbnails.
    static void Search(TAddController& form, const QString& keywords)
    {
        form.Filters.Keywords = keywords;
        QVERIFY(form.Execute(TAddCommand::actSearch));
        WaitIdle(form);
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(ServerExecutable()), qPrintable(ServerExecutable()));
        LoadEnglish();
        m_home = std::make_unique<TTempSettingsHome>();
        QVERIFY2(m_server.Start({}), qPrintable(m_server.Failure()));
        SetMessagePresenter(&m_messages);
    }
    void init() { UseServer(m_server.BaseUrl()); }
    void cleanupTestCase()
    {
        SetMessagePresenter(nullptr);
        m_server.Stop();
        m_home.reset();
    }

    void creationLeavesOneTab()
    {
        TAddController form(m_seam);
        QCOMPARE(form.TabCount(), 1);
        QCOMPARE(form.ActiveTab(), 0);
        QCOMPARE(form.Tab(0).Caption, QStringLiteral("Tab #1"));
        QCOMPARE(form.Queue().MaxThreads, 5);
        QCOMPARE(form.Sort(), InitialAddSort());
        QVERIFY(!form.Opened()); // no auto-search: the search box gets the focus
        QVERIFY(form.Pane().Caption.isEmpty());
        QCOMPARE(form.Pane().Images[0], m_seam.PlaceholderPicture(0, 0, true));
        QVERIFY(form.Pane().Images[2].isEmpty());
    }

    void keywordSearch_data()
    {
        QTest::addColumn<QString>("keywords");
        QTest::addColumn<bool>("found");
        QTest::newRow("maple leaf") << "maple" << true;
        QTest::newRow("eagle") << "eagle" << true;
        QTest::newRow("nothing matches") << "zzqqxxnothing" << false;
    }
    void keywordSearch()
    {
        QFETCH(QString, keywords);
        QFETCH(bool, found);
        TAddController form(m_seam);
        Search(form, keywords);
        const TAddTab& tab = form.Tab(0);
        QCOMPARE(tab.Caption, "Keyword search: " + keywords);
        QCOMPARE(form.SearchMode, quint8(0));
        QCOMPARE(form.Progress().Visible, false);
        const int count = tab.Results->Count();
        QCOMPARE(form.Progress().StatusText,
                 QStringLiteral(" Download complete. Found %1 item(s)").arg(count));
        if (!found) {
            QCOMPARE(count, 0);
            QCOMPARE(tab.Focused, -1);
            return;
        }
        QVERIFY(count > 0);
        // By relevance, then newest year, then heaviest; the first of that order is focused.
        const QList<int> order = tab.Results->SortedRows(form.Sort());
        for (qsizetype n = 1; n < order.size(); ++n) {
            const TMetalAsset* before = tab.Results->Asset(order[n - 1]);
            const TMetalAsset* after = tab.Results->Asset(order[n]);
            QVERIFY(before->Relevance > after->Relevance ||
                    (before->Relevance == after->Relevance && before->Year >= after->Year));
        }
        QCOMPARE(tab.Focused, order.first());
        QVERIFY(AllThumbsLanded(*tab.Results));
        // Each thumbnail also went to its asset's thumbnail picture.
        for (int row = 0; row < count; ++row)
            QCOMPARE(tab.Results->Asset(row)->PictureOfKind(TCoverPicture::kThumbnail)->Data,
                     tab.Results->Cell(row, acThumb).toByteArray());
        // The focused card's large pictures came without a click, and show at the right.
        const TMetalAsset* focused = form.FocusedAsset();
        const TCoverPicture* obverse = focused->PictureOfKind(TCoverPicture::kObverse);
        QVERIFY(obverse && !obverse->IsEmpty());
        QCOMPARE(form.Pane().Images[0], obverse->Data);
        QCOMPARE(form.Pane().Caption, focused->Caption());
        // Other cards were not looked at: nothing large was fetched for them.
        for (int row = 0; row < count; ++row)
            if (row != tab.Focused)
                QVERIFY(tab.Results->Asset(row)->PictureOfKind(TCoverPicture::kObverse)->IsEmpty());
    }

    void quickSearchFromEachGallery_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("tag");
        QTest::addColumn<QString>("prefix");
        for (const TQuickSearchGallery& gallery : AddDialogGalleries()) {
            const qint32 tag = gallery.Groups.first().Tags.first();
            const QString prefix = SearchTabTitle(gallery.Mode, tag, QString(), TSearchFilters());
            QTest::newRow(qPrintable(gallery.Name)) << int(gallery.Mode) << int(tag) << prefix;
        }
    }
    void quickSearchFromEachGallery()
    {
        QFETCH(int, mode);
        QFETCH(int, tag);
        QFETCH(QString, prefix);
        TAddController form(m_seam);
        form.QuickSearch(quint8(mode), 0); // a heading: nothing happens
        QVERIFY(form.Idle());
        QCOMPARE(form.Tab(0).Caption, QStringLiteral("Tab #1"));
        form.QuickSearch(quint8(mode), tag);
        QCOMPARE(form.SearchMode, quint8(0));
        WaitIdle(form);
        QCOMPARE(form.Tab(0).Caption, prefix);
        QVERIFY(form.Tab(0).Results->Count() > 0);
        for (int row = 0; row < form.Tab(0).Results->Count(); ++row)
            QCOMPARE(form.Tab(0).Results->Asset(row)->Metal, mode <= 3 ? 0 : (mode <= 5 ? 1 : 2));
    }

    void autoSearchOfTextFromOutside()
    {
        TAddController form(m_seam);
        form.SearchMode = smText;
        form.SearchText = QStringLiteral("Krugerrand");
        form.AutoSearch = true;
        QVERIFY(form.Opened());
        WaitIdle(form);
        QCOMPARE(form.Tab(0).Caption, QStringLiteral("Keyword search: Krugerrand"));
        QVERIFY(form.Tab(0).Results->Count() > 0);
    }

    void addSelected_data()
    {
        QTest::addColumn<bool>("andClose");
        QTest::addColumn<int>("tabs");
        QTest::newRow("add selected") << false << 1;
        QTest::newRow("add and close the only tab") << true << 1;
        QTest::newRow("add and close one of two tabs") << true << 2;
    }
    void addSelected()
    {
        QFETCH(bool, andClose);
        QFETCH(int, tabs);
        TAddController form(m_seam);
        QSignalSpy closing(&form, &TAddController::CloseRequested);
        for (int n = 1; n < tabs; ++n)
            QVERIFY(form.Execute(TAddCommand::actNewTab));
        Search(form, QStringLiteral("maple"));
        TAddTab& tab = *form.Active();
        const int count = tab.Results->Count();
        QVERIFY(count >= 3);
        QVERIFY(!form.Enabled(TAddCommand::actSaveAndContinue)); // nothing selected
        TMetalAsset* first = tab.Results->Asset(2);
        TMetalAsset* second = tab.Results->Asset(0);
        form.SetSelection({2, 0});
        QVERIFY(form.Enabled(TAddCommand::actSaveAndContinue));
        QVERIFY(form.Execute(andClose ? TAddCommand::actSaveAndClose : TAddCommand::actSaveAndContinue));
        QCOMPARE(form.Assets.size(), std::size_t(2));
        QCOMPARE(form.Assets[0].get(), first); // in order of selection
        QCOMPARE(form.Assets[1].get(), second);
        if (andClose) {
            // The pictures are in before the tab goes.
            QCOMPARE(closing.size(), tabs == 1 ? 1 : 0);
            QCOMPARE(form.TabCount(), tabs - 1);
        } else {
            QCOMPARE(tab.Results->Count(), count - 2);
            QCOMPARE(tab.Results->RowOf(first), -1);
            QVERIFY(tab.Selection.isEmpty());
            WaitIdle(form);
        }
        for (const auto& asset : form.Assets)
            for (const auto& picture : asset->Pictures)
                QVERIFY2(!picture->IsEmpty(), qPrintable(picture->URL));
    }

    void stopKeepsAddedAsset()
    {
        TLocalServer held(TLocalServer::Held);
        TAddController form(m_seam);
        UseServer(held.BaseUrl());
        TAddResultsModel* results = form.Tab(0).Results.get();
        PostResultMessage(&form, cMsgSearchReply, ReplyLines({"a1.png", "b2.png"}),
                          std::make_unique<TSearchTabObj>(results));
        QTRY_COMPARE(results->Count(), 2);
        held.Release(); // thumbnails and the focused card's pictures come
        WaitIdle(form);
        TLocalServer silent(TLocalServer::Silent);
        UseServer(silent.BaseUrl());
        // The second card's obverse now points at a server that never answers.
        const int other = results->SortedRows(form.Sort()).last();
        TMetalAsset* asset = results->Asset(other);
        asset->PictureOfKind(TCoverPicture::kObverse)->URL = silent.BaseUrl() + "/orv/Images_Large/b2.png";
        asset->PictureOfKind(TCoverPicture::kObverse)->Clear();
        const QByteArray thumbnail = asset->PictureOfKind(TCoverPicture::kThumbnail)->Data;
        form.SetSelection({other});
        QVERIFY(form.Execute(TAddCommand::actSaveAndContinue));
        QTRY_VERIFY(silent.Requests() > 0);
        QVERIFY(!form.Enabled(TAddCommand::actSaveAndContinue));
        QVERIFY(form.Execute(TAddCommand::actStop));
        WaitIdle(form);
        QCOMPARE(form.Assets.size(), std::size_t(1));
        QCOMPARE(form.Assets[0].get(), asset);
        QCOMPARE(asset->PictureOfKind(TCoverPicture::kThumbnail)->Data, thumbnail);
        QVERIFY(asset->PictureOfKind(TCoverPicture::kObverse)->IsEmpty());
    }

    void thumbnailLandsByRecordIndex()
    {
        TLocalServer held(TLocalServer::Held);
        UseServer(held.BaseUrl());
        TAddController form(m_seam);
        form.Filters.Keywords = QStringLiteral("anything");
        TAddResultsModel* results = form.Tab(0).Results.get();
        PostResultMessage(&form, cMsgSearchReply, ReplyLines({"a1.png", "b2.png", "c3.png"}),
                          std::make_unique<TSearchTabObj>(results));
        QTRY_COMPARE(results->Count(), 3);
        // Thumbnails of an earlier search still load: no new search, no clearing, no adding.
        QVERIFY(!form.Idle());
        for (TAddCommand command : {TAddCommand::actSearch, TAddCommand::actClear, TAddCommand::actNewTab})
            QVERIFY(!form.Enabled(command));
        QVERIFY(form.Enabled(TAddCommand::actStop));
        const int focused = form.Tab(0).Focused;
        QCOMPARE(focused, 0); // highest relevance
        // The first record goes while its thumbnail loads.
        form.SetSelection({0});
        QVERIFY(form.Execute(TAddCommand::actRemoveSelection));
        QCOMPARE(results->Count(), 2);
        QCOMPARE(form.Tab(0).Focused, -1);
        held.Release();
        WaitIdle(form);
        QVERIFY(form.Enabled(TAddCommand::actSearch));
        // Each arrived thumbnail went to the record that has its index now; the last one had none.
        QCOMPARE(QImage::fromData(results->Cell(0, acThumb).toByteArray()).width(), 11);
        QCOMPARE(QImage::fromData(results->Cell(1, acThumb).toByteArray()).width(), 12);
        QCOMPARE(results->Asset(0)->Name, QStringLiteral("Coin b2.png"));
        QCOMPARE(QImage::fromData(results->Asset(0)->PictureOfKind(0)->Data).width(), 11);
    }

    void badNetwork_data()
    {
        QTest::addColumn<int>("mode"); // TLocalServer mode, -1: nothing listens
        QTest::newRow("never answers") << int(TLocalServer::Silent);
        QTest::newRow("drips") << int(TLocalServer::Drip);
        QTest::newRow("refused") << -1;
    }
    void badNetwork()
    {
        QFETCH(int, mode);
        std::unique_ptr<TLocalServer> server;
        if (mode >= 0) {
            server = std::make_unique<TLocalServer>(TLocalServer::TMode(mode));
            UseServer(server->BaseUrl());
        } else {
            UseServer(QStringLiteral("http://127.0.0.1:%1").arg(FreeLocalPort()));
        }
        TAddController form(m_seam);
        form.Filters.Keywords = QStringLiteral("maple");
        QVERIFY(form.Execute(TAddCommand::actSearch));
        // The main thread keeps turning while the transfer hangs.
        int ticks = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, [&ticks] { ++ticks; });
        ticker.start(10);
        if (server)
            QTRY_VERIFY(server->Requests() > 0);
        QTest::qWait(300);
        QVERIFY(ticks >= 3);
        if (!form.Idle())
            QVERIFY(form.Execute(TAddCommand::actStop));
        // Stop ends the worker at once: within a turn or two of the event loop, not a time-out.
        QTRY_VERIFY(form.Idle());
        QCoreApplication::sendPostedEvents();
        QCOMPARE(form.Tab(0).Caption, QStringLiteral("Keyword search: maple"));
        QCOMPARE(form.Tab(0).Results->Count(), 0);
        QCOMPARE(form.Progress().StatusText, QStringLiteral(" Download complete. Found 0 item(s)"));
        QVERIFY(form.Assets.empty());
        QVERIFY(form.Enabled(TAddCommand::actSearch));
    }

    void destroyedWhileDownloading()
    {
        TLocalServer silent(TLocalServer::Silent);
        UseServer(silent.BaseUrl());
        auto form = std::make_unique<TAddController>(m_seam);
        form->Filters.Keywords = QStringLiteral("maple");
        QVERIFY(form->Execute(TAddCommand::actSearch));
        QTRY_VERIFY(silent.Requests() > 0);
        form->CloseQuery(); // not idle: clears nothing
        form->Close();      // stops
        form.reset();       // waits for the worker
    }

    void tabsAndClosing()
    {
        TAddController form(m_seam);
        QSignalSpy closing(&form, &TAddController::CloseRequested);
        QSignalSpy removed(&form, &TAddController::TabRemoved);
        QVERIFY(form.Execute(TAddCommand::actNewTab));
        QVERIFY(form.Execute(TAddCommand::actNewTab));
        QCOMPARE(form.TabCount(), 3);
        QCOMPARE(form.ActiveTab(), 2);
        QCOMPARE(form.Tab(2).Caption, QStringLiteral("Tab #3"));
        form.SetActiveTab(0);
        QVERIFY(form.Execute(TAddCommand::actCloseTab));
        QCOMPARE(form.TabCount(), 2);
        QCOMPARE(form.ActiveTab(), 0);
        QCOMPARE(form.Tab(0).Caption, QStringLiteral("Tab #2"));
        QVERIFY(form.Execute(TAddCommand::actCloseAllTabs));
        QCOMPARE(form.TabCount(), 1);
        QCOMPARE(form.Tab(0).Caption, QStringLiteral("Tab #1"));
        QCOMPARE(closing.size(), 0);
        QVERIFY(form.Execute(TAddCommand::actCloseTab));
        QCOMPARE(form.TabCount(), 0);
        QCOMPARE(closing.size(), 1);
        QCOMPARE(removed.size(), 4);
    }

    void sorting_data()
    {
        QTest::addColumn<int>("command");
        QTest::addColumn<bool>("dialogOk");
        QTest::addColumn<TAddSort>("expected");
        TAddSort ascending, descending;
        for (int column = acCaption; column <= acRelevance; ++column) {
            ascending << TAddSortKey{column, Qt::AscendingOrder};
            descending << TAddSortKey{column, Qt::DescendingOrder};
        }
        const TAddSort byName{{acName, Qt::AscendingOrder}};
        QTest::newRow("clear") << int(TAddCommand::actClearSorting) << false << TAddSort();
        QTest::newRow("ascending") << int(TAddCommand::actSortAsc) << false << ascending;
        QTest::newRow("descending") << int(TAddCommand::actSortDesc) << false << descending;
        QTest::newRow("dialog OK") << int(TAddCommand::actSortData) << true << byName;
        QTest::newRow("dialog cancelled") << int(TAddCommand::actSortData) << false << InitialAddSort();
    }
    void sorting()
    {
        QFETCH(int, command);
        QFETCH(bool, dialogOk);
        QFETCH(TAddSort, expected);
        m_seam.SortAnswer = dialogOk;
        m_seam.SortResult = {{acName, Qt::AscendingOrder}};
        TAddController form(m_seam);
        QVERIFY(form.Execute(TAddCommand(command)));
        QCOMPARE(form.Sort(), expected);
    }

    void connectionTest_data()
    {
        QTest::addColumn<bool>("online");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("type");
        QTest::newRow("ok") << true << "Internet connection OK" << int(mtInformation);
        QTest::newRow("fail") << false << "Internet connection FAIL" << int(mtWarning);
    }
    void connectionTest()
    {
        QFETCH(bool, online);
        QFETCH(QString, text);
        QFETCH(int, type);
        m_seam.Connection = online;
        m_messages.Requests.clear();
        TAddController form(m_seam);
        QVERIFY(form.Execute(TAddCommand::actTestConnection));
        QCOMPARE(m_messages.Requests.size(), 1);
        QCOMPARE(m_messages.Requests[0].Text, text);
        QCOMPARE(int(m_messages.Requests[0].Type), type);
        QCOMPARE(m_messages.Requests[0].Buttons, TMsgDlgButtons(mbOK));
        QVERIFY(form.Execute(TAddCommand::actProxySettings));
        QVERIFY(!form.Execute(TAddCommand::actHelp));
    }

    void paneRules_data()
    {
        QTest::addColumn<int>("coinType");
        QTest::addColumn<QString>("mint");
        QTest::addColumn<QList<int>>("shown");
        const QList<int> common{vgDataEditorRowCoinType, vgDataEditorRowMetal, vgDataEditorRowName,
                                vgDataEditorRowWeight};
        QTest::newRow("coin, unknown mint")
            << 0 << "Elsewhere"
            << (common + QList<int>{vgDataEditorRowMint, vgDataEditorRowDiameter, vgDataEditorRowEdge});
        QTest::newRow("bar, local mint")
            << 3 << "Local"
            << (common + QList<int>{vgDataEditorRowMint, vgDataEditorRowMintPic, vgDataEditorRowWidth,
                                    vgDataEditorRowHeight});
        QTest::newRow("divisible bar counts as no bar")
            << 4 << "" << (common + QList<int>{vgDataEditorRowDiameter, vgDataEditorRowEdge});
    }
    void paneRules()
    {
        QFETCH(int, coinType);
        QFETCH(QString, mint);
        QFETCH(QList<int>, shown);
        m_seam.Mints = {{QStringLiteral("Local"), 7}};
        TAddController form(m_seam);
        auto asset = std::make_unique<TMetalAsset>();
        asset->Name = QStringLiteral("Test");
        asset->CoinType = coinType;
        asset->WeightG = 31.1035;
        asset->MintName = mint;
        asset->Diameter = 30;
        asset->Width = 20;
        asset->Height = 40;
        asset->Edge = QStringLiteral("Reeded");
        form.Tab(0).Results->Append(std::move(asset), "blank");
        form.FocusCard(0);
        const TAddPaneData& pane = form.Pane();
        for (int row = 0; row < cPaneRowCount; ++row)
            QVERIFY2(pane.Visible[std::size_t(row)] == shown.contains(row),
                     qPrintable(AddPaneRows()[std::size_t(row)].Name));
        QCOMPARE(pane.MintID.has_value(), mint == u"Local");
        if (mint == u"Local") {
            QCOMPARE(pane.Values[vgDataEditorRowMint].toInt(), 7);
            QCOMPARE(pane.Values[vgDataEditorRowMintPic].toByteArray(), QByteArray("mint 7"));
        }
        QCOMPARE(pane.Values[vgDataEditorRowWeight].toString(), WeightToText(31.1035));
        QVERIFY(pane.DescriptionVisible());
    }
};

QTEST_MAIN(TestAddController)
#include "tst_addcontroller.moc"
