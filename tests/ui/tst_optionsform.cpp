// The options dialog on the screen (offscreen): its pages and their controls, what the controls hand
// to the settings at OK, and the main window after the dialog closes with Cancel or OK. With
// ORV_SCREENSHOT_DIR set it leaves pictures of every page in a light and a dark theme and right to
// left.

#include "dmImages.h"
#include "dmInternalData.h"
#include "dmStyles.h"
#include "frmMain.h"
#include "frmOptions.h"
#include "support_common.h"
#include "support_datarow.h"
#include "uOptionsController.h"
#include "uPropertyGrid.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTreeWidget>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

void Idle()
{
    QEventLoop loop;
    QTimer::singleShot(30, &loop, &QEventLoop::quit);
    loop.exec();
}

void Shoot(QWidget& widget, const QString& name)
{
    const QString dir = qEnvironmentVariable("ORV_SCREENSHOT_DIR");
    if (dir.isEmpty())
        return;
    Idle();
    widget.grab().save(dir + u'/' + name + ".png");
}

} // namespace

class TestOptionsForm : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    QTemporaryDir m_langDir;

    void ResetSettings()
    {
        LoadEnglish();
        ThemeIndex = 4;
        ThemeColorSchemeAccentIndex = 0;
        Currency = "USD";
        InetAccess = 0;
        InetProxyHost.clear();
        InetProxyPort = 0;
        InetProxyUsername.clear();
        InetProxyPassword.clear();
        CustomFieldsEnabled = false;
    }

private slots:
    void initTestCase()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        // The delivered languages and a right-to-left one made from the English file.
        const QString source = qEnvironmentVariable("ORV_SOURCE_DIR") + "/data/lang/";
        for (const char* name : {"English.xml", "German.xml"})
            QVERIFY(QFile::copy(source + name, m_langDir.filePath(QString::fromLatin1(name))));
        QByteArray mirror = ReadFile(source + "English.xml");
        mirror.replace("BiDiMode=\"LeftToRight\"", "BiDiMode=\"RightToLeft\"");
        mirror.replace("name=\"English\"", "name=\"Mirror\"");
        WriteFile(m_langDir.filePath("Mirror.xml"), mirror);
        XMLLanguage().SetLanguageFolder(m_langDir.path() + u'/');
        MainFormMaximized = false;
        MainFormWidth = 1000;
        MainFormHeight = 700;
    }
    void init() { ResetSettings(); }
    void cleanup() { TOptionsForm::SetExecHook({}); }
    void cleanupTestCase()
    {
        XMLLanguage().SetLanguageFolder(QString());
        TDM_Styles::ApplyTheme(4, 0, nullptr);
        m_home.reset();
    }

    // The pages in order with their controls filled from the settings.
    void pagesAndControls()
    {
        InetAccess = 2;
        InetProxyUsername = "bob";
        InetProxyPassword = "pw";
        InetProxyPort = 3128;
        ORVCustomFields[3] = {"Provenance", 4, true};
        TOptionsForm form(nullptr);
        QTabWidget* pages = form.pcOptions();
        QCOMPARE(pages->count(), 4);
        QStringList names, texts;
        for (int i = 0; i < pages->count(); ++i) {
            names << pages->widget(i)->objectName();
            texts << pages->tabText(i);
        }
        QCOMPARE(names, QStringList({"tsGeneral", "tsCustomFields", "tsDefaultValues", "tsProxySettings"}));
        QCOMPARE(texts, QStringList({"General", "Custom fields", "Default values", "Connection settings"}));
        QCOMPARE(pages->currentIndex(), 0);
        QCOMPARE(form.cbCurrency()->currentText(), "USD");
        QCOMPARE(form.cbTheme()->currentIndex(), 4);
        QCOMPARE(form.cbLang()->currentText(), "English");
        QVERIFY(!form.TLCustomFields()->header()->sectionsMovable());
        QVERIFY(!form.TLCustomFields()->isSortingEnabled());
        QCOMPARE(form.TLCustomFields()->topLevelItem(3)->text(0), "Provenance");
        QCOMPARE(form.TLCustomFields()->topLevelItem(3)->checkState(0), Qt::Checked);
        QCOMPARE(form.CustomFieldTypeBox(3)->currentData().toInt(), 4);
        QVERIFY(!form.TLCustomFields()->isEnabled());
        QCOMPARE(form.vgDefaultValues()->rowValue("vgDefaultValuesRowQty").toLongLong(), 1);
        QCOMPARE(form.vgDefaultValues()->rowCaption("vgDefaultValuesRowGradeService"),
                 GetText("cSF_GradeService"));
        QVERIFY(form.rbProxy()->isChecked());
        QVERIFY(form.lgProxy()->isEnabled());
        QVERIFY(form.cbProxyAuth()->isChecked());
        QCOMPARE(form.seProxyPort()->value(), 3128);
        QCOMPARE(form.edtProxyPassword()->echoMode(), QLineEdit::Password);
        QVERIFY(form.edtProxyUsername()->isEnabled());

        // The switches follow at once.
        form.cbProxyAuth()->setChecked(false);
        QVERIFY(!form.edtProxyUsername()->isEnabled());
        QVERIFY(!form.edtProxyPassword()->isEnabled());
        form.rbDirect()->setChecked(true);
        QVERIFY(!form.lgProxy()->isEnabled());
        form.cbEnableCustomFields()->setChecked(true);
        QVERIFY(form.TLCustomFields()->isEnabled());
    }

    // What the controls hold reaches the settings at OK, and is saved; with the form's own editors
    // and with those of the program's edit repository.
    void okStoresTheControls_data()
    {
        QTest::addColumn<bool>("repository");
        AddRow("own editors", false);
        AddRow("edit repository", true);
    }
    void okStoresTheControls()
    {
        QFETCH(bool, repository);
        std::unique_ptr<TDataModuleImages> images;
        if (repository)
            images = std::make_unique<TDataModuleImages>();
        TOptionsForm form(nullptr);
        QCOMPARE(form.vgDefaultValues()->rowEditor("vgDefaultValuesRowRating") ==
                     (images ? images->Item("RatingControl") : nullptr),
                 repository);
        form.SetActivePage(TOptionsPage::ConnectionSettings);
        QCOMPARE(form.pcOptions()->currentWidget()->objectName(), "tsProxySettings");
        form.rbProxy()->setChecked(true);
        form.edtProxyHost()->setText("proxy.example");
        form.seProxyPort()->setValue(8888);
        form.cbProxyAuth()->setChecked(true);
        form.edtProxyUsername()->setText("alice");
        form.edtProxyPassword()->setText("secret");
        form.cbProxyAuth()->setChecked(false);
        form.cbCurrency()->setCurrentIndex(form.cbCurrency()->findText(QString()));
        form.cbEnableCustomFields()->setChecked(true);
        form.TLCustomFields()->topLevelItem(0)->setText(0, "Pedigree");
        form.TLCustomFields()->topLevelItem(0)->setCheckState(0, Qt::Checked);
        form.CustomFieldTypeBox(0)->setCurrentIndex(form.CustomFieldTypeBox(0)->findData(2));
        QVERIFY(form.vgDefaultValues()->setRowValue("vgDefaultValuesRowOwner", "Estate"));
        QVERIFY(form.vgDefaultValues()->setRowValue("vgDefaultValuesRowQty", 4));
        QVERIFY(form.vgDefaultValues()->setRowValue("vgDefaultValuesRowRating", 3.5));
        form.btnOK()->click();
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QCOMPARE(InetAccess, 2);
        QCOMPARE(InetProxyHost, "proxy.example");
        QCOMPARE(InetProxyPort, 8888);
        QCOMPARE(InetProxyUsername, "alice");
        QCOMPARE(InetProxyPassword, "secret");
        QCOMPARE(Currency, QString());
        QVERIFY(CustomFieldsEnabled);
        QCOMPARE(ORVCustomFields[0].DisplayName, "Pedigree");
        QCOMPARE(ORVCustomFields[0].DataType, 2);
        QVERIFY(ORVCustomFields[0].Enabled);
        QCOMPARE(ORVDefaultValues.Owner, "Estate");
        QCOMPARE(ORVDefaultValues.Qty, 4);
        QCOMPARE(ORVDefaultValues.Rating, 3.5);
        QCOMPARE(ORVDefaultValues.Condition, TORVDefaultValues().Condition);
        QCOMPARE(UserStore().GetStringValue("Inet.ProxyHost", QString()), "proxy.example");
    }

    // The main window after the dialog: Cancel after theme, accent and language leaves it as before;
    // OK keeps them. The dialog follows the language at once.
    void mainWindowAfterTheDialog_data()
    {
        QTest::addColumn<bool>("ok");
        AddRow("Cancel", false);
        AddRow("OK", true);
    }
    void mainWindowAfterTheDialog()
    {
        QFETCH(bool, ok);
        TDM_InternalData data;
        TORVMainForm window(data);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QString optionsText = window.Action("actOptions")->text();
        const QPalette before = QApplication::palette();
        QString dialogTitle;
        int shownThemeDuringDialog = -1;
        TOptionsForm::SetExecHook([&](TOptionsForm& form) {
            form.cbTheme()->setCurrentIndex(0);
            form.cbColorSchemeAccent()->setCurrentIndex(3);
            form.cbLang()->setCurrentIndex(form.cbLang()->findData("German"));
            Idle();
            dialogTitle = form.windowTitle();
            shownThemeDuringDialog = TDM_Styles::Current().ThemeIndex;
            if (ok)
                form.accept();
            return ok ? int(QDialog::Accepted) : int(QDialog::Rejected);
        });
        window.Action("actOptions")->trigger();
        QCOMPARE(dialogTitle, "Optionen");
        QCOMPARE(shownThemeDuringDialog, 0); // the preview showed
        QCOMPARE(CurrentLanguage(), ok ? "German" : "English");
        QCOMPARE(window.Action("actOptions")->text(), ok ? "Optionen" : optionsText);
        QCOMPARE(TDM_Styles::Current().ThemeIndex, ok ? 0 : 4);
        QCOMPARE(TDM_Styles::Current().AccentIndex, ok ? 3 : 0);
        if (!ok)
            QCOMPARE(QApplication::palette().color(QPalette::Window), before.color(QPalette::Window));
        QCOMPARE(ThemeIndex, ok ? 0 : 4);
    }

    // The backstage button opens the same dialog.
    void backstageButtonOpensTheDialog()
    {
        TDM_InternalData data;
        TORVMainForm window(data);
        QList<TOptionsPage> opened;
        TOptionsForm::SetExecHook([&](TOptionsForm& form) {
            opened << form.ActivePage();
            return int(QDialog::Rejected);
        });
        QAction* button = window.findChild<QAction*>("btnBackstageOptions");
        QVERIFY(button);
        button->trigger();
        QVERIFY(!window.OptionsExecute(TOptionsPage::ConnectionSettings));
        QCOMPARE(opened, QList<TOptionsPage>({TOptionsPage::General, TOptionsPage::ConnectionSettings}));
    }

    // Pictures of every page: light, dark, right to left.
    void screenshots_data()
    {
        QTest::addColumn<int>("theme");
        QTest::addColumn<QString>("language");
        AddRow("light", 4, QString("English"));
        AddRow("dark", 0, QString("English"));
        AddRow("rtl", 8, QString("Mirror"));
    }
    void screenshots()
    {
        QFETCH(int, theme);
        QFETCH(QString, language);
        if (qEnvironmentVariableIsEmpty("ORV_SCREENSHOT_DIR"))
            QSKIP("ORV_SCREENSHOT_DIR is not set");
        QVERIFY(LoadLanguage(language));
        TDM_Styles::ApplyTheme(theme, 1, nullptr);
        const QString tag = QTest::currentDataTag();
        InetAccess = 2;
        InetProxyHost = "proxy.example";
        InetProxyPort = 3128;
        InetProxyUsername = "bob";
        InetProxyPassword = "secret";
        const TDataModuleImages images;
        TOptionsForm form(nullptr);
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        const QStringList pages{"general", "customfields", "defaultvalues", "connection"};
        for (int i = 0; i < pages.size(); ++i) {
            form.SetActivePage(TOptionsPage(i));
            Shoot(form, "options-" + pages.at(i) + "-" + tag);
        }
        form.hide();

        TDM_Styles::ApplyTheme(4, 0, nullptr);
        LoadEnglish();
    }
};

QTEST_MAIN(TestOptionsForm)
#include "tst_optionsform.moc"
