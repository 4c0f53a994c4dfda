// What the add dialog returns, inserted by the main window's flow into a real collection file:
// rows with their photographs, thumbnails made from them and the local mint found by name.

#include "dmInternalData.h"
#include "frmAdd.h"
#include "support_common.h"
#include "support_serverprocess.h"
#include "uMainController.h"
#include "uSearchBox.h"
#include "uTemplate.h"
#include "uZTSettings.h"

#include <QAction>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

// Hands the assets of one add dialog to the main window's flow.
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

class TestAddInsert : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    TServerProcess m_server;

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(ServerExecutable()), qPrintable(ServerExecutable()));
        m_home = std::make_unique<TTempSettingsHome>();
        LoadEnglish();
        QVERIFY2(m_server.Start({}), qPrintable(m_server.Failure()));
        SettingsStore().SetStringValue("CatalogueServer", QString(), m_server.BaseUrl());
    }
    void cleanupTestCase()
    {
        m_server.Stop();
        m_home.reset();
    }

    void insertsRowsWithPhotosThumbnailsAndMint_data()
    {
        QTest::addColumn<QString>("keywords");
        QTest::addColumn<QList<int>>("picked");
        QTest::newRow("two maple leafs") << u"maple"_s << QList<int>{0, 1};
        QTest::newRow("one eagle") << u"eagle"_s << QList<int>{2};
    }
    void insertsRowsWithPhotosThumbnailsAndMint()
    {
        QFETCH(QString, keywords);
        QFETCH(QList<int>, picked);
        QTemporaryDir dir;
        const QString path = dir.filePath("vault.db");
        WriteFile(path, NewBlankDatabaseBytes());
        TDM_InternalData data;
        QVERIFY(data.ConnectDatabase(path));

        TAssetsSeam seam;
        {
            TAddForm form(&data);
            form.show();
            form.SearchBox()->setText(keywords);
            form.Action("actSearch")->trigger();
            QTRY_VERIFY_WITH_TIMEOUT(form.Controller().Idle(), 20000);
            QCoreApplication::sendPostedEvents();
            QVERIFY(form.Controller().Tab(0).Results->Count() > picked.last());
            form.Controller().SetSelection(picked);
            form.UpdateActions();
            QVERIFY(form.Action("actSaveAndClose")->isEnabled());
            form.Action("actSaveAndClose")->trigger(); // waits for the pictures, closes the only tab
            QVERIFY(!form.isVisible());
            seam.Assets = std::move(form.Controller().Assets);
        }
        QCOMPARE(seam.Assets.size(), std::size_t(picked.size()));
        QList<int> mints;
        QList<QString> names;
        for (const auto& asset : seam.Assets) {
            QVERIFY(!asset->PictureOfKind(TCoverPicture::kObverse)->IsEmpty());
            mints << data.MintIDByName(asset->MintName);
            names << asset->Name;
        }
        QVERIFY2(mints.first() != -1, "the demo catalogue's mints are in the blank collection");

        TNoDialogs dialogs;
        TMainController controller(&data, &dialogs);
        controller.SetWindowSeam(&seam);
        const int before = data.qDS_Items->recordCount();
        controller.OpenAddDialog(0, -1, QString(), false);
        TDBDataset& items = *data.qDS_Items;
        QCOMPARE(items.recordCount(), before + int(picked.size()));
        items.last();
        for (qsizetype n = picked.size() - 1; n >= 0; --n) {
            QCOMPARE(items.fieldByName(u"Name"_s).asString(), names[n]);
            QVERIFY(!items.fieldByName(u"PhotoFront"_s).isNull());
            QVERIFY(!items.fieldByName(u"ThumbFront"_s).isNull());
            QCOMPARE(items.fieldByName(u"MintID"_s).value().toInt(), mints[n]);
            items.prior();
        }
    }
};

QTEST_MAIN(TestAddInsert)
#include "tst_addinsert.moc"
