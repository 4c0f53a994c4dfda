// The whole start and shutdown on the offscreen platform: phases A to D with the settings store in
// a private home folder, the event loop, the error box answered through the message seam, the main
// window's commands, its texts and languages, its spot buttons and the properties dialog.

#include "dmInternalData.h"
#include "frmDBProperties.h"
#include "frmDebug.h"
#include "frmMain.h"
#include "frmSplash.h"
#include "uDBError.h"
#include "uOrvaneApplication.h"
#include "uSplashText.h"
#include "uSpot.h"
#include "uStartup.h"
#include "uTemplate.h"
#include "uZTLog.h"
#include "uZTMessages.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QAction>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

#include <sqlite3.h>

#include <functional>
#include <memory>

namespace {

const QString cRoot = QStringLiteral("Software\\Brenmoor\\Orvane");

// Answers every box with OK and keeps what it was asked.
class TRecordingPresenter : public TMessagePresenter
{
public:
    QList<TMessageBoxRequest> Requests;
    int Present(const TMessageBoxRequest& request) override
    {
        Requests << request;
        return mrOk;
    }
};

class TCannedDialogs : public TFileDialogSeam
{
public:
    QStringList Answers;
    QString ExecuteOpenDialog(const TFileDialogRequest&) override { return Next(); }
    QString ExecuteSaveDialog(const TFileDialogRequest&) override { return Next(); }

private:
    QString Next() { return Answers.isEmpty() ? QString() : Answers.takeFirst(); }
};

TZTRegistrySettings Store()
{
    return TZTRegistrySettings(cHKEY_CURRENT_USER, cRoot);
}

void WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

void ExecSql(const QString& path, const char* sql)
{
    sqlite3* db = nullptr;
    QCOMPARE(sqlite3_open(path.toUtf8().constData(), &db), SQLITE_OK);
    char* error = nullptr;
    const int rc = sqlite3_exec(db, sql, nullptr, nullptr, &error);
    const QString message = QString::fromUtf8(error ? error : "");
    sqlite3_free(error);
    sqlite3_close(db);
    QVERIFY2(rc == SQLITE_OK, qPrintable(message));
}

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QTemporaryDir> m_files;
    TRecordingPresenter m_presenter;
    TCannedDialogs m_dialogs;

    QString Path(const QString& name) const { return m_files->filePath(name); }

    QString MakeCollection(const QString& name)
    {
        const QString path = Path(name);
        WriteFile(path, NewBlankDatabaseBytes());
        return path;
    }

    // Phases A to D, the loop and the shutdown, as the program runs them. `during` runs inside the
    // loop once the first show is through: the splash released, or an error box shown. The runner
    // then closes the main window, which ends the loop.
    void RunProgram(const std::function<void(TOrvaneStartup&)>& during)
    {
        const qsizetype boxesBefore = m_presenter.Requests.size();
        StartupPhaseA();
        TOrvaneStartup startup(TStartupOptions{false});
        startup.CreateForms();
        QVERIFY(startup.SplashForm());
        QVERIFY(startup.SplashForm()->isVisible());
        startup.MainForm()->SetFileDialogs(&m_dialogs);

        bool settled = false;
        QElapsedTimer clock;
        clock.start();
        QTimer guard;
        guard.setSingleShot(true);
        connect(&guard, &QTimer::timeout, this, [] { QCoreApplication::exit(2); });
        QTimer poll;
        poll.setInterval(5);
        connect(&poll, &QTimer::timeout, this, [&] {
            TORVMainForm* form = startup.MainForm();
            settled = form->isVisible() &&
                      (startup.SplashForm() == nullptr || m_presenter.Requests.size() > boxesBefore);
            if (!settled && clock.elapsed() < 20000)
                return;
            poll.stop();
            if (settled)
                during(startup);
            if (form->isVisible() && !form->close())
                QCoreApplication::exit(1); // the test left the window unclosable: end anyway
            // A window that closed without ending the loop fails the run instead of hanging it.
            guard.start(20000);
        });
        poll.start();
        const int result = startup.Exec();
        startup.Shutdown();
        QVERIFY2(settled, "the main window never finished its first show");
        QCOMPARE(result, 0);
    }

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        m_files = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid() && m_files->isValid());
        qputenv("HOME", m_home->path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", (m_home->path() + QStringLiteral("/config")).toLocal8Bit());
        // The store of a run is made by phase A; this one serves the test's own reads and writes.
        SetSettingsStore(nullptr);
        XMLLanguage().SetLanguageFolder(QString());
        SetMessagePresenter(&m_presenter);
        m_presenter.Requests.clear();
        m_dialogs.Answers.clear();
        DebugMode = false;
    }

    void cleanup()
    {
        SetMessagePresenter(nullptr);
        SpotPrices().Clear();
    }

    // ---- DBPath at start ------------------------------------------------------------------------------

    void startWithDBPath_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("connected");
        QTest::addColumn<int>("boxes");
        QTest::newRow("first start, DBPath empty") << "empty" << false << 0;
        QTest::newRow("file deleted since the last run") << "missing" << false << 0;
        QTest::newRow("sound file") << "sound" << true << 0;
        QTest::newRow("damaged file") << "damaged" << false << 1;
    }

    void startWithDBPath()
    {
        QFETCH(QString, kind);
        QFETCH(bool, connected);
        QFETCH(int, boxes);
        QString dbPath;
        if (kind == QLatin1String("missing"))
            dbPath = Path(QStringLiteral("deleted.db"));
        else if (kind == QLatin1String("sound"))
            dbPath = MakeCollection(QStringLiteral("sound.db"));
        else if (kind == QLatin1String("damaged")) {
            dbPath = Path(QStringLiteral("damaged.db"));
            WriteFile(dbPath, QByteArray(16384, 'Z'));
        }
        Store().SetStringValue(QStringLiteral("DBPath"), QString(), dbPath);
        const QString sound = MakeCollection(QStringLiteral("reachable.db"));

        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QCOMPARE(m_presenter.Requests.size(), qsizetype(boxes));
            QCOMPARE(form->Controller()->Connected(), connected);
            QCOMPARE(form->actDBNew()->isEnabled(), true);
            QCOMPARE(form->actDBOpen()->isEnabled(), true);
            QCOMPARE(form->actDBSaveAs()->isEnabled(), true);
            QCOMPARE(form->actDBProperties()->isEnabled(), connected);
            if (boxes > 0) {
                // The database layer's message, an OK button, and the splash left on the screen.
                const TMessageBoxRequest& box = m_presenter.Requests.constFirst();
                QVERIFY(!box.Text.isEmpty());
                QCOMPARE(box.Buttons, TMsgDlgButtons(mbOK));
                QCOMPARE(box.Type, mtError);
                QVERIFY(startup.SplashForm());
            } else {
                QVERIFY(!startup.SplashForm());
            }
            if (connected) {
                QCOMPARE(form->windowTitle(), QStringLiteral("sound.db - Orvane"));
            } else {
                QCOMPARE(form->windowTitle(), QStringLiteral("Orvane"));
                QCOMPARE(form->lItems()->text(), QStringLiteral("< No data to display >"));
            }
            // The window is usable: open reaches a sound file.
            m_dialogs.Answers << sound;
            form->actDBOpen()->trigger();
            QVERIFY(form->Controller()->Connected());
            QCOMPARE(form->windowTitle(), QStringLiteral("reachable.db - Orvane"));
            QCoreApplication::processEvents();
            QVERIFY(form->actDBProperties()->isEnabled());
            // Back to the start's collection so that DBPath is what the test began with.
            form->Data().ADConnection->close();
            DBPath = dbPath;
        });
        QCOMPARE(Store().GetStringValue(QStringLiteral("DBPath"), QStringLiteral("?")), dbPath);
        QVERIFY(!DM_InternalData());
    }

    // ---- Settings the window keeps --------------------------------------------------------------------

    void geometryFromTheStore()
    {
        TZTRegistrySettings store = Store();
        store.SetIntValue(QStringLiteral("MainForm.Left"), 10, 123);
        store.SetIntValue(QStringLiteral("MainForm.Top"), 10, 77);
        store.SetIntValue(QStringLiteral("MainForm.Width"), 1040, 700);
        store.SetIntValue(QStringLiteral("MainForm.Height"), 830, 500);
        store.SetBoolValue(QStringLiteral("MainForm.Maximized"), true, false);
        store.SetIntValue(QStringLiteral("CurrentView"), 1, 7);

        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QVERIFY(!form->isMaximized());
            QCOMPARE(form->size(), QSize(700, 500));
            form->resize(810, 620);
            QCoreApplication::processEvents();
        });
        QCOMPARE(store.GetIntValue(QStringLiteral("MainForm.Left"), 0), 123);
        QCOMPARE(store.GetIntValue(QStringLiteral("MainForm.Top"), 0), 77);
        QCOMPARE(store.GetIntValue(QStringLiteral("MainForm.Width"), 0), 810);
        QCOMPARE(store.GetIntValue(QStringLiteral("MainForm.Height"), 0), 620);
        QCOMPARE(store.GetBoolValue(QStringLiteral("MainForm.Maximized"), true), false);
        // A view number without a view: left alone, and written back as it was.
        QCOMPARE(store.GetIntValue(QStringLiteral("CurrentView"), 0), 7);
    }

    void emptyStoreStartsMaximisedWithDefaults()
    {
        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QVERIFY(form->RememberedMaximized());
            QVERIFY(form->isMaximized());
            QVERIFY(!form->Controller()->Connected());
        });
        TZTRegistrySettings store = Store();
        QCOMPARE(store.GetIntValue(QStringLiteral("MainForm.Width"), 0), 1040);
        QCOMPARE(store.GetIntValue(QStringLiteral("MainForm.Height"), 0), 830);
        QCOMPARE(store.GetIntValue(QStringLiteral("MainForm.Left"), 0), 10);
        QCOMPARE(store.GetBoolValue(QStringLiteral("MainForm.Maximized"), false), true);
        QCOMPARE(store.GetStringValue(QStringLiteral("Language"), QString()), QStringLiteral("English"));
        QCOMPARE(store.GetStringValue(QStringLiteral("DBPath"), QStringLiteral("?")), QString());
    }

    // ---- A collection made on one run opens by itself on the next --------------------------------------

    void newCollectionOpensOnTheNextStart()
    {
        const QString file = Path(QStringLiteral("My coins.db"));
        RunProgram([&](TOrvaneStartup& startup) {
            m_dialogs.Answers << Path(QStringLiteral("My coins"));
            startup.MainForm()->actDBNew()->trigger();
            QVERIFY(startup.MainForm()->Controller()->Connected());
        });
        QVERIFY(QFileInfo::exists(file));
        QCOMPARE(QFileInfo(Store().GetStringValue(QStringLiteral("DBPath"), QString())), QFileInfo(file));

        ExecSql(file, "INSERT INTO tblCoins (Name, Metal, WeightG) VALUES ('Maple Leaf', 0, 31.1035)");
        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QVERIFY(form->Controller()->Connected());
            QCOMPARE(form->windowTitle(), QStringLiteral("My coins.db - Orvane"));
            QCOMPARE(form->Controller()->ItemCount(), 1);
            QCOMPARE(form->lItems()->text(), QStringLiteral("1"));
            QVERIFY(form->actDBProperties()->isEnabled());
        });
        QCOMPARE(m_presenter.Requests.size(), 0);
    }

    // ---- Shutdown -------------------------------------------------------------------------------------

    void closeWithAFailingPostKeepsTheWindow()
    {
        Store().SetStringValue(QStringLiteral("DBPath"), QString(),
                               MakeCollection(QStringLiteral("edit.db")));
        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            TDBDataset& items = *form->Data().qDS_Items;
            QVERIFY(items.active());
            items.append();
            items.fieldByName(QStringLiteral("Metal")).setAsInteger(1); // Name missing
            QVERIFY(!form->close());
            QVERIFY(form->isVisible());
            QCOMPARE(m_presenter.Requests.size(), qsizetype(1));
            QVERIFY(!m_presenter.Requests[0].Text.isEmpty());
            // Once the row is complete, closing posts it.
            items.fieldByName(QStringLiteral("Name")).setAsString(QStringLiteral("Finished at close"));
            items.fieldByName(QStringLiteral("WeightG")).setAsFloat(31.1035);
        });
        sqlite3* db = nullptr;
        QCOMPARE(sqlite3_open(Path(QStringLiteral("edit.db")).toUtf8().constData(), &db), SQLITE_OK);
        sqlite3_stmt* stmt = nullptr;
        QCOMPARE(sqlite3_prepare_v2(db, "SELECT Name FROM tblCoins", -1, &stmt, nullptr), SQLITE_OK);
        QCOMPARE(sqlite3_step(stmt), SQLITE_ROW);
        QCOMPARE(QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0))),
                 QStringLiteral("Finished at close"));
        sqlite3_finalize(stmt);
        sqlite3_close(db);
    }

    void errorInAnEventHandlerIsShownAndTheLoopGoesOn()
    {
        RunProgram([&](TOrvaneStartup& startup) {
            auto* app = qobject_cast<TOrvaneApplication*>(QCoreApplication::instance());
            QVERIFY(app);
            const int before = app->HandledExceptionCount();
            QTimer::singleShot(0, startup.MainForm(),
                               [] { throw EDatabaseError(QStringLiteral("disk I/O error")); });
            QTimer::singleShot(0, startup.MainForm(), [] { throw std::runtime_error("plain failure"); });
            QTRY_COMPARE(app->HandledExceptionCount(), before + 2);
            QCOMPARE(m_presenter.Requests.size(), qsizetype(2));
            QCOMPARE(m_presenter.Requests[0].Text, QStringLiteral("disk I/O error"));
            QCOMPARE(m_presenter.Requests[1].Text, QStringLiteral("plain failure"));
        });
    }

    // ---- Languages ------------------------------------------------------------------------------------

    void missingLanguageFileGivesEnglish()
    {
        Store().SetStringValue(QStringLiteral("Language"), QString(), QStringLiteral("Klingon"));
        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QCOMPARE(form->actDBNew()->text(), QStringLiteral("New database"));
            QCOMPARE(form->actExit()->text(), QStringLiteral("Quit application"));
            QCOMPARE(form->SpotButton(mtGold)->text(), QStringLiteral("Gold"));
        });
        QCOMPARE(Store().GetStringValue(QStringLiteral("Language"), QString()), QStringLiteral("English"));
    }

    void languageMenuSwitchesTheWindow()
    {
        XMLLanguage().SetLanguageFolder(qEnvironmentVariable("ORV_SOURCE_DIR") +
                                        QStringLiteral("/data/lang/"));
        Store().SetStringValue(QStringLiteral("Language"), QString(), QStringLiteral("German"));
        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QCOMPARE(form->actDBNew()->text(), QStringLiteral("Neue Datenbank"));
            QCOMPARE(form->lItems()->text(), QStringLiteral("< Keine Daten vorhanden >"));
            QCOMPARE(form->mnuLanguage()->title(), QStringLiteral("Sprache"));

            form->FillLanguageMenu();
            QAction* english = nullptr;
            QStringList names;
            for (QAction* action : form->mnuLanguage()->actions()) {
                names << action->data().toString();
                if (action->data().toString() == QLatin1String("English"))
                    english = action;
                if (action->data().toString() == QLatin1String("German"))
                    QVERIFY(action->isChecked());
            }
            QVERIFY2(english, qPrintable(names.join(u',')));
            english->trigger();
            QCOMPARE(CurrentLanguage(), QStringLiteral("English"));
            QCOMPARE(form->actDBNew()->text(), QStringLiteral("New database"));
            QCOMPARE(form->actDBProperties()->text(), QStringLiteral("Database properties"));
            QCOMPARE(form->SpotButton(mtSilver)->text(), QStringLiteral("Silver"));
            QCOMPARE(form->lItems()->text(), QStringLiteral("< No data to display >"));
        });
        QCOMPARE(Store().GetStringValue(QStringLiteral("Language"), QString()), QStringLiteral("English"));
    }

    void rightToLeftLanguageTurnsTheWindow()
    {
        QTemporaryDir lang;
        QFile english(qEnvironmentVariable("ORV_SOURCE_DIR") + QStringLiteral("/data/lang/English.xml"));
        QVERIFY(english.open(QIODevice::ReadOnly));
        QByteArray xml = english.readAll();
        xml.replace("BiDiMode=\"LeftToRight\"", "BiDiMode=\"RIGHTTOLEFT\"");
        xml.replace("name=\"English\"", "name=\"Mirror\"");
        WriteFile(lang.filePath(QStringLiteral("Mirror.xml")), xml);
        XMLLanguage().SetLanguageFolder(lang.path() + u'/');

        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QCOMPARE(form->layoutDirection(), Qt::LeftToRight);
            QVERIFY(form->SwitchLanguage(QStringLiteral("Mirror")));
            QCOMPARE(form->layoutDirection(), Qt::RightToLeft);
            TDBPropertiesForm properties(form->Data(), form);
            QCOMPARE(properties.layoutDirection(), Qt::RightToLeft);
            QVERIFY(!form->SwitchLanguage(QStringLiteral("Absent"))); // stays as it is
            QCOMPARE(form->layoutDirection(), Qt::RightToLeft);
            QVERIFY(LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English")));
            form->TranslateUI();
            QCOMPARE(form->layoutDirection(), Qt::LeftToRight);
        });
    }

    // ---- Debug window ---------------------------------------------------------------------------------

    void debugSwitchShowsTheDebugWindow()
    {
        DebugMode = true;
        RunProgram([&](TOrvaneStartup& startup) {
            const QList<TDebugForm*> forms = startup.MainForm()->findChildren<TDebugForm*>();
            QCOMPARE(forms.size(), qsizetype(1));
            QVERIFY(forms[0]->isVisible());
        });
        DebugMode = false;
    }

    // ---- Window parts without the loop ----------------------------------------------------------------

    void spotButtonsFollowTheList()
    {
        StartupPhaseA();
        Currency = QStringLiteral("USD");
        TDM_InternalData data;
        TORVMainForm form(data);
        const QString file = MakeCollection(QStringLiteral("spot.db"));
        QVERIFY(!form.actDBProperties()->isEnabled());
        QVERIFY(data.ConnectDatabase(file));
        // The rule follows the connection at once, not only when the loop next falls idle.
        QVERIFY(form.actDBProperties()->isEnabled());
        QCOMPARE(form.SpotButton(mtPlatinum)->text(), QStringLiteral("Platinum"));

        ExecSql(file, "INSERT INTO tblCoins (Name, Metal, WeightG) VALUES ('Eagle', 0, 31.1035)");
        SpotPrices().LoadFromText(
            QStringLiteral(
                R"([{"BaseCurrency":"XAU","Price":2345.5,"DateC":"2024-05-06 10:00","ChangeAbs":0,"ChangePerc":"0"},
                              {"BaseCurrency":"XAG","Price":27.25,"DateC":"2024-05-06 10:01","ChangeAbs":-0.3,"ChangePerc":"-1.1"}])"),
            Currency);
        QVERIFY(form.SpotButton(mtGold)->text().startsWith(QStringLiteral("Gold: ")));
        QCOMPARE(form.SpotButton(mtGold)->toolTip(), QStringLiteral("Last updated: 2024-05-06 10:00"));
        QCOMPARE(form.SpotButton(mtGold)->icon().cacheKey(), form.SpotGlyphIcon(TSpotGlyph::Rise).cacheKey());
        QCOMPARE(form.SpotButton(mtSilver)->icon().cacheKey(),
                 form.SpotGlyphIcon(TSpotGlyph::Fall).cacheKey());
        QCOMPARE(form.SpotButton(mtPlatinum)->text(), QStringLiteral("Platinum"));
        QVERIFY(form.SpotButton(mtPlatinum)->icon().isNull());
        // The item dataset was read again for the new prices.
        QCOMPARE(data.qDS_Items->recordCount(), 1);
        QCOMPARE(form.lItems()->text(), QStringLiteral("1"));

        // A reply without silver leaves its button as the last reply left it.
        SpotPrices().LoadFromText(
            QStringLiteral(R"([{"BaseCurrency":"XAU","Price":1,"DateC":"later","ChangeAbs":-1}])"), Currency);
        QCOMPARE(form.SpotButton(mtGold)->toolTip(), QStringLiteral("Last updated: later"));
        QCOMPARE(form.SpotButton(mtSilver)->toolTip(), QStringLiteral("Last updated: 2024-05-06 10:01"));
        data.ADConnection->close();
        QVERIFY(!form.actDBProperties()->isEnabled());
        QCOMPARE(form.lItems()->text(), QStringLiteral("< No data to display >"));
        FinalizeSettings();
    }

    void propertiesDialogShowsAndVacuums()
    {
        StartupPhaseA();
        TDM_InternalData data;
        TORVMainForm form(data);
        const QString file = MakeCollection(QStringLiteral("props.db"));
        // Photographs added and deleted leave free pages that only a vacuum gives back.
        ExecSql(file, "INSERT INTO tblCoins (Name, Metal, WeightG, PhotoFront) "
                      "VALUES ('Big', 0, 1, randomblob(3000000)); DELETE FROM tblCoins;");
        QVERIFY(data.ConnectDatabase(file));
        const qint64 before = GetFileSize(file);

        TDBPropertiesForm dialog(data, &form);
        dialog.show();
        QVERIFY(!dialog.btnCancel()->isVisible());
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Database properties"));
        QCOMPARE(dialog.lDBFile()->text(), QStringLiteral("File: ") + data.DatabasePath);
        QCOMPARE(dialog.lDBFileSize()->text(), QStringLiteral("File size: ") + FormatSize(before));
        QCOMPARE(dialog.btnVacuum()->text(),
                 QStringLiteral("Vacuum database (database file size will be reduced)"));

        QTest::mouseClick(dialog.btnVacuum(), Qt::LeftButton);
        const qint64 after = GetFileSize(file);
        QVERIFY2(after < before - 2000000, qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(after)));
        QCOMPARE(dialog.lDBFileSize()->text(), QStringLiteral("File size: ") + FormatSize(after));
        QVERIFY(dialog.isVisible());
        FinalizeSettings();
    }

    void splashShowsBrandingAndProgress()
    {
        StartupPhaseA();
        TSplashForm splash;
        QCOMPARE(splash.size(), QSize(450, 250));
        QVERIFY(splash.windowFlags().testFlag(Qt::FramelessWindowHint));
        QCOMPARE(splash.lProd()->text(), OEMInfo.Product);
        QCOMPARE(splash.lCompany()->text(), OEMInfo.Company);
        QCOMPARE(splash.lVersion()->text(), QStringLiteral("v ") + GetFileVersionText());
        QVERIFY(splash.lVersion()->text().contains(
            QRegularExpression(QStringLiteral("^v \\d+\\.\\d+\\.\\d+\\.\\d+$"))));
        QCOMPARE(splash.lText()->text(), QStringLiteral("Program is loading..."));
        QVERIFY(!splash.SplashImage()->pixmap().isNull());

        ShowSplashText(QStringLiteral("hidden: ignored"));
        QCOMPARE(splash.lText()->text(), QStringLiteral("Program is loading..."));
        splash.show();
        ShowSplashText(QStringLiteral("Loading data..."));
        QCOMPARE(splash.lText()->text(), QStringLiteral("Loading data..."));
        FinalizeSettings();
    }

    void splashTextDoesNothingOnceTheSplashIsGone()
    {
        {
            TSplashForm splash;
            splash.show();
        }
        ShowSplashText(QStringLiteral("after the splash")); // must not touch a freed window
    }
};

int main(int argc, char* argv[])
{
    TOrvaneApplication app(argc, argv);
    TestStartup test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_startup.moc"
