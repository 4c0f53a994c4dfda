// The main window on the screen (offscreen): its ribbon clicked through with and without a collection
// open, the application menu's pages on opening, a gallery click reaching the add dialog's seam, and
// themes applied. With ORV_SCREENSHOT_DIR set it also leaves pictures of the window there.

#include "dmInternalData.h"
#include "frmAbout.h"
#include "frmMain.h"
#include "support_common.h"
#include "support_datarow.h"
#include "uBackstageView.h"
#include "uGalleryView.h"
#include "uObjs.h"
#include "uRibbon.h"
#include "uRibbonButton.h"
#include "uRibbonPage.h"
#include "uTemplate.h"
#include "uThemes.h"
#include "uZTSettings.h"

#include <QApplication>
#include <QLabel>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

class TCannedDialogs : public TFileDialogSeam
{
public:
    QString Answer;
    QString ExecuteOpenDialog(const TFileDialogRequest&) override { return Answer; }
    QString ExecuteSaveDialog(const TFileDialogRequest&) override { return Answer; }
};

class TRecordingSeam : public TMainWindowSeam
{
public:
    QList<TAddDialogRequest> Requests;
    std::vector<std::unique_ptr<TMetalAsset>> ExecuteAddDialog(const TAddDialogRequest& request) override
    {
        Requests << request;
        return {};
    }
    void ExecuteItemEditor() override {}
    QList<QVariant> SelectedKeys() override { return {}; }
    std::optional<QString> FocusedCellText() override { return std::nullopt; }
    QString SelectedRecordsText() override { return {}; }
    void SetClipboardText(const QString&) override {}
};

} // namespace

class TestMainForm : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDM_InternalData> m_data;
    std::unique_ptr<TORVMainForm> m_form;
    TCannedDialogs m_dialogs;

    TRibbonButton* Button(const QString& name) const
    {
        auto* button = m_form->Ribbon()->findChild<TRibbonButton*>(name);
        if (!button)
            qWarning("no ribbon button %s", qPrintable(name));
        return button;
    }
    void Idle()
    {
        QEventLoop loop;
        QTimer::singleShot(30, &loop, &QEventLoop::quit);
        loop.exec();
    }
    void OpenCollection()
    {
        const QString path = m_dir->filePath("vault.db");
        WriteFile(path, NewBlankDatabaseBytes());
        m_dialogs.Answer = path;
        m_form->Ribbon()->setCurrentTab("rtDBMgmt");
        Idle();
        QTest::mouseClick(Button("btnDBOpen"), Qt::LeftButton);
        Idle();
        QVERIFY(m_data->Connected());
    }
    void Shoot(const QString& name)
    {
        const QString dir = qEnvironmentVariable("ORV_SCREENSHOT_DIR");
        if (dir.isEmpty())
            return;
        Idle();
        m_form->grab().save(dir + u'/' + name + ".png");
    }

private slots:
    void initTestCase()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        LoadEnglish();
    }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        DBPath.clear();
        ThemeIndex = 4;
        ThemeColorSchemeAccentIndex = 0;
        MainFormMaximized = false;
        MainFormWidth = 1100;
        MainFormHeight = 760;
        m_data = std::make_unique<TDM_InternalData>();
        m_form = std::make_unique<TORVMainForm>(*m_data);
        m_form->SetFileDialogs(&m_dialogs);
        m_form->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_form.get()));
        Idle();
    }
    void cleanup()
    {
        m_form.reset();
        m_data.reset();
        m_dir.reset();
    }
    void cleanupTestCase() { m_home.reset(); }

    void ribbonEnablement_data()
    {
        QTest::addColumn<QString>("tab");
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("closed");
        QTest::addColumn<bool>("open");
        AddRow("add", QString("rtGeneral"), QString("btnAddDropDown"), false, true);
        AddRow("edit drop-down: no selection", QString("rtGeneral"), QString("btnEditDropDown"), false,
               false);
        AddRow("remove: no selection", QString("rtGeneral"), QString("btnRemove"), false, false);
        AddRow("refresh", QString("rtGeneral"), QString("btnRefresh"), false, true);
        AddRow("statistics", QString("rtGeneral"), QString("btnStats"), false, true);
        AddRow("cards view", QString("rtGeneral"), QString("btnViewCards"), true, true);
        AddRow("customize columns", QString("rtGeneral"), QString("btnCustomizeColumns"), true, true);
        AddRow("sort", QString("rtGeneral"), QString("btnSort"), true, true);
        AddRow("thumb size off outside the shelf", QString("rtView"), QString("btnThumbSize"), false, false);
        AddRow("open", QString("rtDBMgmt"), QString("btnDBOpen"), true, true);
        AddRow("properties", QString("rtDBMgmt"), QString("btnDBProperties"), false, true);
        AddRow("regenerate thumbs", QString("rtDBMgmt"), QString("btnRegenerateThumbs"), false, true);
        AddRow("duplicates", QString("rtDBMgmt"), QString("btnFindDuplicates"), true, true);
        AddRow("export PDF", QString("rtPrint"), QString("btnExportPDF"), true, true);
        AddRow("print", QString("rtPrint"), QString("btnPrint"), true, true);
    }
    void ribbonEnablement()
    {
        QFETCH(QString, tab);
        QFETCH(QString, button);
        QFETCH(bool, closed);
        QFETCH(bool, open);
        m_form->Ribbon()->setCurrentTab(tab);
        Idle();
        TRibbonButton* item = Button(button);
        QVERIFY(item);
        QCOMPARE(item->isEnabled(), closed);
        OpenCollection();
        m_form->Ribbon()->setCurrentTab(tab);
        Idle();
        QCOMPARE(item->isEnabled(), open);
    }

    // Clicking the view buttons switches the radio group, and the shelf view alone allows the thumb size.
    void viewButtons()
    {
        QTest::mouseClick(Button("btnViewShelve"), Qt::LeftButton);
        Idle();
        QCOMPARE(CurrentView, 3);
        QVERIFY(m_form->Action("actViewShelve")->isChecked());
        QVERIFY(!m_form->Action("actViewCards")->isChecked());
        QVERIFY(m_form->Action("actThumbSize")->isEnabled());
        QVERIFY(!m_form->Action("actCustomizeColumns")->isEnabled());
        QTest::mouseClick(Button("btnViewTable"), Qt::LeftButton);
        Idle();
        QCOMPARE(CurrentView, 2);
        QVERIFY(m_form->Action("actExpandAll")->isEnabled());
        QVERIFY(!m_form->Action("actThumbSize")->isEnabled());
    }

    void backstageOnOpening_data()
    {
        QTest::addColumn<bool>("connected");
        AddRow("nothing open", false);
        AddRow("a collection open", true);
    }
    void backstageOnOpening()
    {
        QFETCH(bool, connected);
        if (connected)
            OpenCollection();
        m_form->ShowBackstage();
        Idle();
        TBackstageView* backstage = m_form->Backstage();
        QVERIFY(backstage->isBackstageVisible());
        QCOMPARE(backstage->activePage(), "tsAdd");
        QCOMPARE(backstage->isPageEnabled("tsAdd"), connected);
        QCOMPARE(backstage->isPageEnabled("tsExportAndPrinting"), connected);
        QVERIFY(backstage->isPageEnabled("tsDatabaseManagement"));
        Shoot(connected ? "backstage-open" : "backstage-closed");
        backstage->hideBackstage();
    }

    void galleryClickReachesTheAddDialog()
    {
        TRecordingSeam seam;
        m_form->SetWindowSeam(&seam);
        OpenCollection();
        m_form->ShowBackstage();
        Idle();
        TGalleryView* gallery = m_form->BackstageGalleryAdd();
        QCOMPARE(gallery->itemNames().size(), 22 + 21 + 14 + 14);
        QVERIFY(gallery->clickItem("gSilverBars_4"));
        Idle();
        QCOMPARE(seam.Requests.size(), 1);
        QCOMPARE(int(seam.Requests[0].Mode), 5);
        QCOMPARE(seam.Requests[0].Tag, 4);
        QVERIFY(seam.Requests[0].AutoSearch);
        QVERIFY(!m_form->Backstage()->isBackstageVisible()); // HideBackstage was posted and ran
        m_form->SetWindowSeam(nullptr);
    }

    void themes_data()
    {
        QTest::addColumn<int>("theme");
        QTest::addColumn<int>("accent");
        QTest::addColumn<bool>("connected");
        AddRow("light, closed", 4, 0, false);
        AddRow("light, open", 3, 1, true);
        AddRow("dark, closed", 0, 2, false);
        AddRow("dark, open", 2, 4, true);
    }
    void themes()
    {
        QFETCH(int, theme);
        QFETCH(int, accent);
        QFETCH(bool, connected);
        if (connected)
            OpenCollection();
        m_form->Ribbon()->setCurrentTab("rtGeneral");
        QCoreApplication::postEvent(m_form.get(), new TThemePreviewEvent(theme, accent));
        Idle();
        const TThemeLook look = ::ApplyTheme(theme, accent);
        QCOMPARE(QApplication::palette().color(QPalette::Highlight), look.Accent.Colour);
        QCOMPARE(QApplication::palette().color(QPalette::Base), look.Colours.Content);
        QCOMPARE(QApplication::palette().color(QPalette::Text), look.Colours.Text);
        Shoot(QStringLiteral("main-%1-%2")
                  .arg(look.Dark ? u"dark"_s : u"light"_s, connected ? u"open"_s : u"closed"_s));
        if (look.Dark && !qEnvironmentVariableIsEmpty("ORV_SCREENSHOT_DIR")) {
            TAboutForm about(m_form.get(), 0.5);
            about.show();
            Idle();
            about.grab().save(qEnvironmentVariable("ORV_SCREENSHOT_DIR") + "/about-dark.png");
        }
    }

    void aboutShowsBrandingAndQuotation_data()
    {
        QTest::addColumn<double>("random");
        QTest::addColumn<int>("quotation");
        AddRow("first", 0.1, 0);
        AddRow("middle", 0.4, 1);
        AddRow("last", 0.9, 3);
    }
    void aboutShowsBrandingAndQuotation()
    {
        QFETCH(double, random);
        QFETCH(int, quotation);
        TAboutForm about(m_form.get(), random);
        QCOMPARE(about.windowTitle(), "About this program");
        QCOMPARE(about.QuotationShown(), quotation);
        QVERIFY(about.lVisitHomepage()->text().contains("Visit our homepage"));
        QVERIFY(about.lTechSupport()->text().contains("Technical support"));
        QVERIFY(about.findChild<QLabel*>("lVersion")->text().startsWith("v "));
    }
};

QTEST_MAIN(TestMainForm)
#include "tst_mainform.moc"
