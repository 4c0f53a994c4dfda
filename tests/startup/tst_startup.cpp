// The whole start and shutdown on the offscreen platform: phases A to D with the settings store in
// a private home folder, the event loop, the error box answered through the message seam, the main
// window's commands, its texts and languages, its spot buttons and the properties dialog.

#include "dmInternalData.h"
#include "frmDBProperties.h"
#include "frmDebug.h"
#include "frmMain.h"
#include "frmSplash.h"
#include "support_common.h"
#include "support_datarow.h"
#include "uDBError.h"
#include "uOrvaneApplication.h"
#include "uSplashText.h"
#include "uSpot.h"
#include "uStartup.h"
#include "uTemplate.h"
#include "uZTLog.h"
#include "uZTMessages.h"
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
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

#include <sqlite3.h>

#include <functional>
#include <memory>

namespace {

// Calls a function whenever the watched object gets an event of one type.
class TEventProbe : public QObject
{
public:
    TEventProbe(QObject* watched, QEvent::Type type, std::function<void()> seen)
        : m_type(type), m_seen(std::move(seen))
    {
        watched->installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == m_type)
            m_seen();
        return false;
    }

private:
    QEvent::Type m_type;
    std::function<void()> m_seen;
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

// Runs statements on a file with SQLite directly; the first column of the last row they give.
QString ExecSql(const QString& path, const char* sql)
{
    sqlite3* db = nullptr;
    QString last;
    const auto keep = [](void* out, int, char** values, char**) {
        *static_cast<QString*>(out) = QString::fromUtf8(values[0] ? values[0] : "");
        return 0;
    };
    if (sqlite3_open(path.toUtf8().constData(), &db) == SQLITE_OK)
        sqlite3_exec(db, sql, keep, &last, nullptr);
    sqlite3_close(db);
    return last;
}

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
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
    void RunProgram(const std::function<void(TOrvaneStartup&)>& during,
                    const std::function<void(TOrvaneStartup&)>& created = {})
    {
        const qsizetype boxesBefore = m_presenter.Requests.size();
        StartupPhaseA();
        TOrvaneStartup startup(TStartupOptions{false});
        startup.CreateForms();
        if (created)
            created(startup);
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
    void init()
    {
        // The store of a run is made by phase A; UserStore() serves the test's own reads and writes.
        m_home = std::make_unique<TTempSettingsHome>(false);
        m_files = std::make_unique<QTemporaryDir>();
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

    void startWithDBPath_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("connected");
        QTest::addColumn<int>("boxes");
        AddRow("first start, DBPath empty", "empty", false, 0);
        AddRow("file deleted since the last run", "missing", false, 0);
        AddRow("sound file", "sound", true, 0);
        AddRow("damaged file", "damaged", false, 1);
    }

    void startWithDBPath()
    {
        QFETCH(QString, kind);
        QFETCH(bool, connected);
        QFETCH(int, boxes);
        QString dbPath;
        if (kind == QString("missing"))
            dbPath = Path("deleted.db");
        else if (kind == QString("sound"))
            dbPath = MakeCollection("sound.db");
        else if (kind == QString("damaged")) {
            dbPath = Path("damaged.db");
            WriteFile(dbPath, QByteArray(16384, 'Z'));
        }
        UserStore().SetStringValue("DBPath", QString(), dbPath);
        const QString sound = MakeCollection("reachable.db");

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
                QCOMPARE(form->windowTitle(), "sound.db - Orvane");
            } else {
                QCOMPARE(form->windowTitle(), "Orvane");
                QCOMPARE(form->lItems()->text(), "< No data to display >");
            }
            // The window is usable: open reaches a sound file.
            m_dialogs.Answers << sound;
            form->actDBOpen()->trigger();
            QVERIFY(form->Controller()->Connected());
            QCOMPARE(form->windowTitle(), "reachable.db - Orvane");
            QCoreApplication::processEvents();
            QVERIFY(form->actDBProperties()->isEnabled());
            // Back to the start's collection so that DBPath is what the test began with.
            form->Data().ADConnection->close();
            DBPath = dbPath;
        });
        QCOMPARE(UserStore().GetStringValue("DBPath", "?"), dbPath);
        QVERIFY(!DM_InternalData());
    }

    // The window paints with the collection open but its items not read; they come right after, and
    // before the splash goes.
    void firstPaintComesBeforeTheItems()
    {
        const QString file = MakeCollection("many.db");
        ExecSql(file, "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 50) "
                      "INSERT INTO tblCoins (Name, Metal, WeightG) SELECT 'Item ' || i, 1, 31.1035 FROM n");
        UserStore().SetStringValue("DBPath", QString(), file);
        struct TAtFirstPaint
        {
            bool Seen = false;
            bool RowsPending = false;
            int Rows = -1;
            QString Title;
            QString Count;
            bool Splash = false;
        } atPaint;
        std::unique_ptr<QObject> probe;
        RunProgram(
            [&](TOrvaneStartup& startup) {
                QVERIFY(atPaint.Seen);
                QVERIFY(atPaint.RowsPending);
                QCOMPARE(atPaint.Rows, 0);
                QCOMPARE(atPaint.Title, "many.db - Orvane");
                QCOMPARE(atPaint.Count, "Loading data...");
                QVERIFY(atPaint.Splash);
                QCOMPARE(startup.MainForm()->Controller()->ItemCount(), 50);
                QCOMPARE(startup.MainForm()->lItems()->text(), "50");
            },
            [&](TOrvaneStartup& startup) {
                TORVMainForm* form = startup.MainForm();
                probe.reset(new TEventProbe(form, QEvent::Paint, [&atPaint, &startup, form] {
                    if (atPaint.Seen)
                        return;
                    atPaint = {true,
                               form->Data().qDS_Items->rowsPending(),
                               form->Data().qDS_Items->recordCount(),
                               form->windowTitle(),
                               form->lItems()->text(),
                               startup.SplashForm() != nullptr};
                }));
            });
    }

    void geometryFromTheStore()
    {
        TZTRegistrySettings store = UserStore();
        store.SetIntValue("MainForm.Left", 10, 123);
        store.SetIntValue("MainForm.Top", 10, 77);
        store.SetIntValue("MainForm.Width", 1040, 700);
        store.SetIntValue("MainForm.Height", 830, 500);
        store.SetBoolValue("MainForm.Maximized", true, false);
        store.SetIntValue("CurrentView", 1, 7);

        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QVERIFY(!form->isMaximized());
            QCOMPARE(form->size(), QSize(700, 500));
            form->resize(810, 620);
            QCoreApplication::processEvents();
        });
        QCOMPARE(store.GetIntValue("MainForm.Left", 0), 123);
        QCOMPARE(store.GetIntValue("MainForm.Top", 0), 77);
        QCOMPARE(store.GetIntValue("MainForm.Width", 0), 810);
        QCOMPARE(store.GetIntValue("MainForm.Height", 0), 620);
        QCOMPARE(store.GetBoolValue("MainForm.Maximized", true), false);
        // A view number without a view: left alone, and written back as it was.
        QCOMPARE(store.GetIntValue("CurrentView", 0), 7);
    }

    // An empty store, or one naming a language file that is not there: the defaults, English texts,
    // and "English" saved at the end.
    void emptyStoreStartsWithDefaults_data()
    {
        QTest::addColumn<QString>("language");
        AddRow("empty store", "");
        AddRow("missing language file", "Klingon");
    }
    void emptyStoreStartsWithDefaults()
    {
        QFETCH(QString, language);
        if (!language.isEmpty())
            UserStore().SetStringValue("Language", QString(), language);
        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QVERIFY(form->RememberedMaximized());
            QVERIFY(form->isMaximized());
            QVERIFY(!form->Controller()->Connected());
            QCOMPARE(form->actDBNew()->text(), "New database");
            QCOMPARE(form->actExit()->text(), "Quit application");
            QCOMPARE(form->SpotButton(mtGold)->text(), "Gold");
        });
        TZTRegistrySettings store = UserStore();
        QCOMPARE(store.GetIntValue("MainForm.Width", 0), 1040);
        QCOMPARE(store.GetIntValue("MainForm.Height", 0), 830);
        QCOMPARE(store.GetIntValue("MainForm.Left", 0), 10);
        QCOMPARE(store.GetBoolValue("MainForm.Maximized", false), true);
        QCOMPARE(store.GetStringValue("Language", QString()), "English");
        QCOMPARE(store.GetStringValue("DBPath", "?"), QString());
    }

    void newCollectionOpensOnTheNextStart()
    {
        const QString file = Path("My coins.db");
        RunProgram([&](TOrvaneStartup& startup) {
            m_dialogs.Answers << Path("My coins");
            startup.MainForm()->actDBNew()->trigger();
            QVERIFY(startup.MainForm()->Controller()->Connected());
        });
        QVERIFY(QFileInfo::exists(file));
        QCOMPARE(QFileInfo(UserStore().GetStringValue("DBPath", QString())), QFileInfo(file));

        ExecSql(file, "INSERT INTO tblCoins (Name, Metal, WeightG) VALUES ('Maple Leaf', 0, 31.1035)");
        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QVERIFY(form->Controller()->Connected());
            QCOMPARE(form->windowTitle(), "My coins.db - Orvane");
            QCOMPARE(form->Controller()->ItemCount(), 1);
            QCOMPARE(form->lItems()->text(), "1");
            QVERIFY(form->actDBProperties()->isEnabled());
        });
        QCOMPARE(m_presenter.Requests.size(), 0);
    }

    void closeWithAFailingPostKeepsTheWindow()
    {
        UserStore().SetStringValue("DBPath", QString(), MakeCollection("edit.db"));
        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            TDBDataset& items = *form->Data().qDS_Items;
            QVERIFY(items.active());
            items.append();
            items.fieldByName("Metal").setAsInteger(1); // Name missing
            QVERIFY(!form->close());
            QVERIFY(form->isVisible());
            QCOMPARE(m_presenter.Requests.size(), qsizetype(1));
            QVERIFY(!m_presenter.Requests[0].Text.isEmpty());
            // Once the row is complete, closing posts it.
            items.fieldByName("Name").setAsString("Finished at close");
            items.fieldByName("WeightG").setAsFloat(31.1035);
        });
        QCOMPARE(ExecSql(Path("edit.db"), "SELECT Name FROM tblCoins"), "Finished at close");
    }

    void errorInAnEventHandlerIsShownAndTheLoopGoesOn()
    {
        RunProgram([&](TOrvaneStartup& startup) {
            auto* app = qobject_cast<TOrvaneApplication*>(QCoreApplication::instance());
            QVERIFY(app);
            const int before = app->HandledExceptionCount();
            QTimer::singleShot(0, startup.MainForm(), [] { throw EDatabaseError("disk I/O error"); });
            QTimer::singleShot(0, startup.MainForm(), [] { throw std::runtime_error("plain failure"); });
            QTRY_COMPARE(app->HandledExceptionCount(), before + 2);
            QCOMPARE(m_presenter.Requests.size(), qsizetype(2));
            QCOMPARE(m_presenter.Requests[0].Text, "disk I/O error");
            QCOMPARE(m_presenter.Requests[1].Text, "plain failure");
        });
    }

    void languageMenuSwitchesTheWindow()
    {
        XMLLanguage().SetLanguageFolder(qEnvironmentVariable("ORV_SOURCE_DIR") + "/data/lang/");
        UserStore().SetStringValue("Language", QString(), "German");
        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QCOMPARE(form->actDBNew()->text(), "Neue Datenbank");
            QCOMPARE(form->lItems()->text(), "< Keine Daten vorhanden >");
            QCOMPARE(form->mnuLanguage()->title(), "Sprache");

            form->FillLanguageMenu();
            QAction* english = nullptr;
            QStringList names;
            for (QAction* action : form->mnuLanguage()->actions()) {
                names << action->data().toString();
                if (action->data().toString() == QString("English"))
                    english = action;
                if (action->data().toString() == QString("German"))
                    QVERIFY(action->isChecked());
            }
            QVERIFY2(english, qPrintable(names.join(u',')));
            english->trigger();
            QCOMPARE(CurrentLanguage(), "English");
            QCOMPARE(form->actDBNew()->text(), "New database");
            QCOMPARE(form->actDBProperties()->text(), "Database properties");
            QCOMPARE(form->SpotButton(mtSilver)->text(), "Silver");
            QCOMPARE(form->lItems()->text(), "< No data to display >");
        });
        QCOMPARE(UserStore().GetStringValue("Language", QString()), "English");
    }

    void rightToLeftLanguageTurnsTheWindow()
    {
        QTemporaryDir lang;
        QFile english(qEnvironmentVariable("ORV_SOURCE_DIR") + "/data/lang/English.xml");
        QVERIFY(english.open(QIODevice::ReadOnly));
        QByteArray xml = english.readAll();
        xml.replace("BiDiMode=\"LeftToRight\"", "BiDiMode=\"RIGHTTOLEFT\"");
        xml.replace("name=\"English\"", "name=\"Mirror\"");
        WriteFile(lang.filePath("Mirror.xml"), xml);
        XMLLanguage().SetLanguageFolder(lang.path() + u'/');

        RunProgram([&](TOrvaneStartup& startup) {
            TORVMainForm* form = startup.MainForm();
            QCOMPARE(form->layoutDirection(), Qt::LeftToRight);
            QVERIFY(form->SwitchLanguage("Mirror"));
            QCOMPARE(form->layoutDirection(), Qt::RightToLeft);
            TDBPropertiesForm properties(form->Data(), form);
            QCOMPARE(properties.layoutDirection(), Qt::RightToLeft);
            QVERIFY(!form->SwitchLanguage("Absent")); // stays as it is
            QCOMPARE(form->layoutDirection(), Qt::RightToLeft);
            QVERIFY(LoadBuiltInLanguage("ENGLISHLANG", "English"));
            form->TranslateUI();
            QCOMPARE(form->layoutDirection(), Qt::LeftToRight);
        });
    }

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

    void spotButtonsFollowTheList()
    {
        StartupPhaseA();
        Currency = "USD";
        TDM_InternalData data;
        TORVMainForm form(data);
        const QString file = MakeCollection("spot.db");
        ExecSql(file, "INSERT INTO tblCoins (Name, Metal, WeightG) VALUES ('Eagle', 0, 31.1035)");
        QVERIFY(!form.actDBProperties()->isEnabled());
        QVERIFY(data.ConnectDatabase(file));
        // The rule follows the connection at once, not only when the loop next falls idle.
        QVERIFY(form.actDBProperties()->isEnabled());
        QCOMPARE(form.SpotButton(mtPlatinum)->text(), "Platinum");

        SpotPrices().LoadFromText(
            R"([{"BaseCurrency":"XAU","Price":2345.5,"DateC":"2024-05-06 10:00","ChangeAbs":0,"ChangePerc":"0"},
                              {"BaseCurrency":"XAG","Price":27.25,"DateC":"2024-05-06 10:01","ChangeAbs":-0.3,"ChangePerc":"-1.1"}])",
            Currency);
        QVERIFY(form.SpotButton(mtGold)->text().startsWith("Gold: "));
        QCOMPARE(form.SpotButton(mtGold)->toolTip(), "Last updated: 2024-05-06 10:00");
        QCOMPARE(form.SpotButton(mtGold)->icon().cacheKey(), form.SpotGlyphIcon(TSpotGlyph::Rise).cacheKey());
        QCOMPARE(form.SpotButton(mtSilver)->icon().cacheKey(),
                 form.SpotGlyphIcon(TSpotGlyph::Fall).cacheKey());
        QCOMPARE(form.SpotButton(mtPlatinum)->text(), "Platinum");
        QVERIFY(form.SpotButton(mtPlatinum)->icon().isNull());
        // The items follow the new prices.
        QCOMPARE(data.qDS_Items->fieldByName("SpotValue").asFloat(), 2345.5);
        QCOMPARE(form.lItems()->text(), "1");

        // A reply without silver leaves its button as the last reply left it.
        SpotPrices().LoadFromText(R"([{"BaseCurrency":"XAU","Price":1,"DateC":"later","ChangeAbs":-1}])",
                                  Currency);
        QCOMPARE(form.SpotButton(mtGold)->toolTip(), "Last updated: later");
        QCOMPARE(form.SpotButton(mtSilver)->toolTip(), "Last updated: 2024-05-06 10:01");
        data.ADConnection->close();
        QVERIFY(!form.actDBProperties()->isEnabled());
        QCOMPARE(form.lItems()->text(), "< No data to display >");
        FinalizeSettings();
    }

    void propertiesDialogShowsAndVacuums()
    {
        StartupPhaseA();
        TDM_InternalData data;
        TORVMainForm form(data);
        const QString file = MakeCollection("props.db");
        // Photographs added and deleted leave free pages that only a vacuum gives back.
        ExecSql(file, "INSERT INTO tblCoins (Name, Metal, WeightG, PhotoFront) "
                      "VALUES ('Big', 0, 1, randomblob(3000000)); DELETE FROM tblCoins;");
        QVERIFY(data.ConnectDatabase(file));
        const qint64 before = GetFileSize(file);

        TDBPropertiesForm dialog(data, &form);
        dialog.show();
        QVERIFY(!dialog.btnCancel()->isVisible());
        QCOMPARE(dialog.windowTitle(), "Database properties");
        QCOMPARE(dialog.lDBFile()->text(), "File: " + data.DatabasePath);
        QCOMPARE(dialog.lDBFileSize()->text(), "File size: " + FormatSize(before));
        QCOMPARE(dialog.btnVacuum()->text(), "Vacuum database (database file size will be reduced)");

        QTest::mouseClick(dialog.btnVacuum(), Qt::LeftButton);
        const qint64 after = GetFileSize(file);
        QVERIFY2(after < before - 2000000, qPrintable(QString("%1 -> %2").arg(before).arg(after)));
        QCOMPARE(dialog.lDBFileSize()->text(), "File size: " + FormatSize(after));
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
        QCOMPARE(splash.lVersion()->text(), "v " + GetFileVersionText());
        QVERIFY(splash.lVersion()->text().contains(QRegularExpression("^v \\d+\\.\\d+\\.\\d+\\.\\d+$")));
        QCOMPARE(splash.lText()->text(), "Program is loading...");
        QVERIFY(!splash.SplashImage()->pixmap().isNull());

        ShowSplashText("hidden: ignored");
        QCOMPARE(splash.lText()->text(), "Program is loading...");
        splash.show();
        ShowSplashText("Loading data...");
        QCOMPARE(splash.lText()->text(), "Loading data...");
        {
            TSplashForm gone;
            gone.show();
        }
        ShowSplashText("after the splash"); // must not touch a freed window
        FinalizeSettings();
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
