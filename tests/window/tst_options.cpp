// The options dialog's logic without a screen: opening from the settings, the dependent enablement,
// the previews posted to the main window, the store at OK (read back from the saved store), the
// main window's steps after OK and after Cancel, and a proxy picked in the dialog that carries the
// next spot refresh through a real tinyproxy.

#include "support_common.h"
#include "support_datarow.h"
#include "support_httpserver.h"
#include "uMainCommands.h"
#include "uOptionsController.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uSpot.h"
#include "uThemes.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QSignalSpy>
#include <QtTest>

#include <functional>

namespace {

// Stands for the main window: keeps the events posted to it and applies previews as the window does.
class TFakeMainWindow : public QObject, public TOptionsWindowSteps
{
public:
    QStringList Steps;
    QList<QPair<int, int>> Previews;
    int LanguageEvents = 0;
    int ShownTheme = -1;
    int ShownAccent = -1;
    QString TranslatedTo;
    std::function<bool(TOptionsController&)> Dialog; // what the user does; true for OK

    bool event(QEvent* e) override
    {
        if (int(e->type()) == int(TMainEvent::ThemePreview)) {
            const auto* preview = static_cast<TThemePreviewEvent*>(e);
            Previews.append({preview->ThemeIndex, preview->AccentIndex});
            ShownTheme = preview->ThemeIndex;
            ShownAccent = preview->AccentIndex;
            return true;
        }
        if (int(e->type()) == int(TMainEvent::LanguageChanged)) {
            ++LanguageEvents;
            TranslatedTo = CurrentLanguage();
            return true;
        }
        return QObject::event(e);
    }

    bool ExecuteOptionsDialog(TOptionsPage) override
    {
        Steps << "show";
        TOptionsController controller(this);
        const bool ok = Dialog ? Dialog(controller) : false;
        if (ok)
            controller.StoreAndSave();
        QCoreApplication::sendPostedEvents(this);
        return ok;
    }
    void TranslateUI() override
    {
        Steps << "translate";
        TranslatedTo = CurrentLanguage();
    }
    void ApplyNonClientDrawing(bool) override { Steps << "nonclient"; }
    void UpdateActiveViewData() override { Steps << "viewdata"; }
    void ApplyTheme(int themeIndex, int accentIndex) override
    {
        Steps << "theme";
        ShownTheme = themeIndex;
        ShownAccent = accentIndex;
    }
    void ApplyCustomFields() override { Steps << "customfields"; }
};

// Sets every variable the dialog edits to a known state.
void ResetVariables()
{
    ThemeIndex = 4;
    ThemeColorSchemeAccentIndex = 0;
    Currency = "USD";
    CustomFieldsEnabled = false;
    for (int n = 0; n < cCustomFieldCount; ++n)
        ORVCustomFields[std::size_t(n)] = {QString("CustomField%1").arg(n), 0, false};
    ORVDefaultValues = TORVDefaultValues();
    InetAccess = 0;
    InetProxyHost.clear();
    InetProxyPort = 0;
    InetProxyUsername.clear();
    InetProxyPassword.clear();
}

// Sets the variables to something else and reads the saved store back into them.
void ReloadFromStore()
{
    ThemeIndex = -7;
    Currency = "none";
    InetAccess = -7;
    InetProxyUsername = "none";
    CustomFieldsEnabled = !CustomFieldsEnabled;
    ORVCustomFields = {};
    ORVDefaultValues.Qty = -7;
    LoadSettings();
}

} // namespace

class TestOptions : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    const QString m_langFolder = qEnvironmentVariable("ORV_SOURCE_DIR") + "/data/lang/";

private slots:
    void initTestCase()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        XMLLanguage().SetLanguageFolder(m_langFolder);
    }
    void init()
    {
        LoadEnglish();
        ResetVariables();
    }
    void cleanupTestCase()
    {
        XMLLanguage().SetLanguageFolder(QString());
        m_home.reset();
    }

    void currencyList()
    {
        const QStringList& list = OptionsCurrencies();
        QCOMPARE(list.mid(0, 12), QStringList({"USD", "EUR", "GBP", "CAD", "AUD", "JPY", "DKK", "SEK", "NZD",
                                               "PLN", "RUB", ""}));
        QCOMPARE(list.at(12), "AED");
        QCOMPARE(list.last(), "ZWL");
        QCOMPARE(list.size(), 12 + 150);
        const QStringList rest = list.mid(12);
        QStringList sorted = rest;
        sorted.sort();
        QCOMPARE(rest, sorted);
        QCOMPARE(list.count(QString()), 1);
    }

    // Opening: rbProxy exactly for 2, cbProxyAuth exactly with a user name, the port at least 0.
    void opening_data()
    {
        QTest::addColumn<int>("access");
        QTest::addColumn<QString>("user");
        QTest::addColumn<int>("port");
        QTest::addColumn<bool>("proxy");
        QTest::addColumn<bool>("auth");
        QTest::addColumn<int>("shownPort");
        AddRow("first run: 0 shows direct", 0, QString(), 0, false, false, 0);
        AddRow("1 direct, a user name stored", 1, QString("bob"), 3128, false, true, 3128);
        AddRow("2 proxy without user", 2, QString(), 8080, true, false, 8080);
        AddRow("2 proxy with user", 2, QString("bob"), 81, true, true, 81);
        AddRow("unknown access shows direct", 5, QString(), -3, false, false, 0);
    }
    void opening()
    {
        QFETCH(int, access);
        QFETCH(QString, user);
        QFETCH(int, port);
        QFETCH(bool, proxy);
        QFETCH(bool, auth);
        QFETCH(int, shownPort);
        InetAccess = access;
        InetProxyUsername = user;
        InetProxyPassword = "pw";
        InetProxyHost = "proxy.example";
        InetProxyPort = port;
        CustomFieldsEnabled = true;
        TOptionsController controller(nullptr);
        const TOptionsValues& v = controller.Values();
        QCOMPARE(v.Proxy, proxy);
        QCOMPARE(v.ProxyAuth, auth);
        QCOMPARE(v.ProxyPort, shownPort);
        QCOMPARE(v.ProxyUsername, user);
        QCOMPARE(v.ProxyPassword, "pw");
        QCOMPARE(v.ProxyHost, "proxy.example");
        QCOMPARE(controller.Enablement(), (TOptionsEnablement{proxy, auth, true}));
        QCOMPARE(v.Language, "English");
        QVERIFY(controller.LanguageIndex("English") >= 0);
        QVERIFY(controller.LanguageIndex("German") >= 0);
    }

    // Each switch enables its own controls only, and tells it once.
    void enablement_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<bool>("proxy");
        QTest::addColumn<bool>("credentials");
        QTest::addColumn<bool>("customFields");
        AddRow("rbProxy", QString("proxy"), true, false, false);
        AddRow("cbProxyAuth", QString("auth"), false, true, false);
        AddRow("cbEnableCustomFields", QString("custom"), false, false, true);
    }
    void enablement()
    {
        QFETCH(QString, control);
        QFETCH(bool, proxy);
        QFETCH(bool, credentials);
        QFETCH(bool, customFields);
        TOptionsController controller(nullptr);
        QCOMPARE(controller.Enablement(), TOptionsEnablement());
        QSignalSpy spy(&controller, &TOptionsController::EnablementChanged);
        const auto set = [&](bool on) {
            if (control == "proxy")
                controller.SetProxy(on);
            else if (control == "auth")
                controller.SetProxyAuth(on);
            else
                controller.SetCustomFieldsEnabled(on);
        };
        set(true);
        set(true);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(controller.Enablement(), (TOptionsEnablement{proxy, credentials, customFields}));
        set(false);
        QCOMPARE(spy.count(), 2);
        QCOMPARE(controller.Enablement(), TOptionsEnablement());
    }

    // ThemePreview goes out with both indexes, only while both are in their lists; settings untouched.
    void themePreview_data()
    {
        QTest::addColumn<int>("theme");
        QTest::addColumn<int>("accent");
        QTest::addColumn<bool>("posted");
        AddRow("first theme, last accent", 0, 4, true);
        AddRow("same theme again", 4, 1, false);
        AddRow("last theme", 17, 2, true);
        AddRow("theme past the list", 18, 2, false);
        AddRow("accent without selection", 3, -1, false);
    }
    void themePreview()
    {
        QFETCH(int, theme);
        QFETCH(int, accent);
        QFETCH(bool, posted);
        TFakeMainWindow window;
        TOptionsController controller(&window);
        controller.SetAccentIndex(accent);
        QCoreApplication::sendPostedEvents(&window);
        window.Previews.clear();
        controller.SetThemeIndex(theme);
        QCoreApplication::sendPostedEvents(&window);
        QCOMPARE(window.Previews.isEmpty(), !posted);
        if (posted)
            QCOMPARE(window.Previews.last(), qMakePair(theme, accent));
        QCOMPARE(ThemeIndex, 4);
        QCOMPARE(ThemeColorSchemeAccentIndex, 0);
    }

    // A new language is switched at once, the dialog retranslates and the window hears of it; the
    // current one, or one that fails to load, does nothing.
    void languageSwitch_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<bool>("switched");
        QTest::addColumn<QString>("current");
        AddRow("another language", QString("German"), true, QString("German"));
        AddRow("the current one", QString("English"), false, QString("English"));
        AddRow("a missing file", QString("Klingon"), false, QString("English"));
    }
    void languageSwitch()
    {
        QFETCH(QString, language);
        QFETCH(bool, switched);
        QFETCH(QString, current);
        TFakeMainWindow window;
        TOptionsController controller(&window);
        QSignalSpy spy(&controller, &TOptionsController::LanguageSwitched);
        QCOMPARE(controller.SetLanguage(language), language != "Klingon");
        QCoreApplication::sendPostedEvents(&window);
        QCOMPARE(spy.count(), switched ? 1 : 0);
        QCOMPARE(window.LanguageEvents, switched ? 1 : 0);
        QCOMPARE(CurrentLanguage(), current);
        QCOMPARE(controller.Values().Language, current);
        if (switched)
            QCOMPARE(window.TranslatedTo, current);
    }

    // OK stores every value and saves the store: what comes back from it is what the dialog held.
    void okStoresAndSaves_data()
    {
        QTest::addColumn<QString>("currency");
        QTest::addColumn<bool>("proxy");
        QTest::addColumn<bool>("auth");
        QTest::addColumn<int>("access");
        AddRow("proxy with credentials", QString("CHF"), true, true, 2);
        AddRow("direct keeps the proxy values", QString("EUR"), false, true, 1);
        AddRow("auth off keeps user and password", QString("ZWL"), true, false, 2);
        AddRow("empty currency entry", QString(), true, false, 2);
    }
    void okStoresAndSaves()
    {
        QFETCH(QString, currency);
        QFETCH(bool, proxy);
        QFETCH(bool, auth);
        QFETCH(int, access);
        TOptionsController controller(nullptr);
        QVERIFY(controller.SetCurrency(currency));
        controller.SetThemeIndex(9);
        controller.SetAccentIndex(3);
        controller.SetProxy(proxy);
        controller.SetProxyHost("proxy.example");
        controller.SetProxyPort(3128);
        controller.SetProxyAuth(true);
        controller.SetProxyUsername("bob");
        controller.SetProxyPassword("s3cret");
        controller.SetProxyAuth(auth);
        controller.SetCustomFieldsEnabled(true);
        controller.SetCustomFieldDisplayName(2, "Provenance");
        controller.SetCustomFieldDataType(2, 4);
        controller.SetCustomFieldEnabled(2, true);
        TORVDefaultValues defaults;
        defaults.Qty = 3;
        defaults.Rating = 2.5;
        defaults.GradeService = "NGC";
        controller.SetDefaultValues(defaults);
        controller.StoreAndSave();

        ReloadFromStore();
        QCOMPARE(Currency, currency);
        QCOMPARE(ThemeIndex, 9);
        QCOMPARE(ThemeColorSchemeAccentIndex, 3);
        QCOMPARE(InetAccess, access);
        QCOMPARE(InetProxyHost, "proxy.example");
        QCOMPARE(InetProxyPort, 3128);
        QCOMPARE(InetProxyUsername, "bob");
        QCOMPARE(InetProxyPassword, "s3cret");
        QCOMPARE(CustomFieldsEnabled, true);
        QCOMPARE(ORVCustomFields[2].DisplayName, "Provenance");
        QCOMPARE(ORVCustomFields[2].DataType, 4);
        QCOMPARE(ORVCustomFields[2].Enabled, true);
        QCOMPARE(ORVDefaultValues.Qty, 3);
        QCOMPARE(ORVDefaultValues.Rating, 2.5);
        QCOMPARE(ORVDefaultValues.GradeService, "NGC");
        QCOMPARE(ORVDefaultValues.Condition, TORVDefaultValues().Condition);
        // Reopened, the switch is on again since a user name is stored.
        QVERIFY(TOptionsController(nullptr).Values().ProxyAuth);
    }

    // The refusals and limits of the controls.
    void controlLimits()
    {
        TOptionsController controller(nullptr);
        QVERIFY(!controller.SetCurrency("XYZ"));
        QVERIFY(!controller.SetCurrency("usd"));
        QCOMPARE(controller.Values().Currency, "USD");
        controller.SetProxyPort(-1);
        QCOMPARE(controller.Values().ProxyPort, 0);
        controller.SetCustomFieldDisplayName(10, "out");
        controller.SetCustomFieldEnabled(-1, true);
        for (const TORVCustomField& field : controller.Values().CustomFields)
            QVERIFY(field.DisplayName != "out" && !field.Enabled);
    }

    // A stored currency the list lacks is kept as it stands.
    void unlistedCurrencyKept()
    {
        Currency = "XBT";
        TOptionsController controller(nullptr);
        QCOMPARE(TOptionsController::CurrencyIndex(controller.Values().Currency), -1);
        controller.StoreAndSave();
        ReloadFromStore();
        QCOMPARE(Currency, "XBT");
    }

    // Custom fields switched off, singly or all together, keep their names and types.
    void customFieldsKeptWhenOff_data()
    {
        QTest::addColumn<bool>("masterOff");
        QTest::addColumn<int>("fieldOff");
        AddRow("one field's check off", false, 4);
        AddRow("master switch cleared", true, -1);
    }
    void customFieldsKeptWhenOff()
    {
        QFETCH(bool, masterOff);
        QFETCH(int, fieldOff);
        CustomFieldsEnabled = true;
        for (int n = 0; n < cCustomFieldCount; ++n)
            ORVCustomFields[std::size_t(n)] = {QString("Field %1").arg(n), n % 5, true};
        const TORVCustomFields before = ORVCustomFields;
        TOptionsController controller(nullptr);
        if (masterOff)
            controller.SetCustomFieldsEnabled(false);
        if (fieldOff >= 0)
            controller.SetCustomFieldEnabled(fieldOff, false);
        controller.StoreAndSave();
        ReloadFromStore();
        QCOMPARE(CustomFieldsEnabled, !masterOff);
        for (int n = 0; n < cCustomFieldCount; ++n) {
            const TORVCustomField& field = ORVCustomFields[std::size_t(n)];
            QCOMPARE(field.DisplayName, before[std::size_t(n)].DisplayName);
            QCOMPARE(field.DataType, before[std::size_t(n)].DataType);
            QCOMPARE(field.Enabled, n != fieldOff);
        }
    }

    // The main window's steps: the same six after OK and Cancel; Cancel restores the noted language
    // and the settings' theme over any preview; OK keeps the picked language and stores the rest.
    void windowSteps_data()
    {
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("language");
        QTest::addColumn<int>("theme");
        QTest::addColumn<int>("accent");
        AddRow("Cancel after theme, accent and language", false, QString("English"), 4, 0);
        AddRow("OK after theme, accent and language", true, QString("German"), 0, 2);
    }
    void windowSteps()
    {
        QFETCH(bool, ok);
        QFETCH(QString, language);
        QFETCH(int, theme);
        QFETCH(int, accent);
        UserStore().SetStringValue("Language", QString(), QString());
        TFakeMainWindow window;
        window.Dialog = [&](TOptionsController& controller) {
            controller.SetThemeIndex(0);
            controller.SetAccentIndex(2);
            controller.SetCurrency("EUR");
            [&] { QVERIFY(controller.SetLanguage("German")); }();
            QCoreApplication::sendPostedEvents(&window);
            [&] { QCOMPARE(window.ShownTheme, 0); }(); // the preview shows at once
            return ok;
        };
        QCOMPARE(RunOptionsDialog(window), ok);
        QCOMPARE(window.Steps,
                 QStringList({"show", "translate", "nonclient", "viewdata", "theme", "customfields"}));
        QCOMPARE(CurrentLanguage(), language);
        QCOMPARE(window.TranslatedTo, language);
        QCOMPARE(window.ShownTheme, theme);
        QCOMPARE(window.ShownAccent, accent);
        QCOMPARE(ThemeIndex, theme);
        QCOMPARE(Currency, ok ? "EUR" : "USD");
        // The language is saved as the current one by OK's save, and only then.
        QCOMPARE(UserStore().GetStringValue("Language", QString()), ok ? "German" : QString());
        UserStore().SetStringValue("Language", QString(), QString());
    }

    // A proxy set in the dialog is what the next spot refresh goes through.
    void proxyTakesEffectOnTheNextRefresh()
    {
        if (!TTinyProxy::Available())
            QSKIP("tinyproxy is not installed (scripts/deps.sh installs it)");
        TTestHttpServer server;
        QVERIFY(server.IsListening());
        TTinyProxy proxy;
        QVERIFY2(proxy.Start(), "tinyproxy did not start");
        SettingsStore().SetStringValue("CatalogueServer", QString(), server.BaseURL());
        const QByteArray reply =
            R"([{"BaseCurrency":"XAU","Price":2400.5,"DateC":"now","ChangeAbs":1,"ChangePerc":"1"}])";
        server.SetReply("/orv/spot.php", {200, EncryptBytes(reply, PayloadKeyA, PayloadKeyB), {}});

        TOptionsController controller(nullptr);
        controller.SetProxy(true);
        controller.SetProxyHost("127.0.0.1");
        controller.SetProxyPort(proxy.Port());
        controller.StoreAndSave();

        SpotPrices().Clear();
        SpotPrices().Refresh();
        QVERIFY(QTest::qWaitFor([] { return !SpotPrices().Busy; }, 20000));
        QCOMPARE(SpotPrices().SpotPriceOf(mtGold), 2400.5);
        const QList<TSeenRequest> seen = server.RequestsFor("/orv/spot.php");
        QCOMPARE(seen.size(), 1);
        QVERIFY(seen.first().Headers.contains("via")); // tinyproxy names itself
        QVERIFY(proxy.Log().contains(QString("127.0.0.1:%1").arg(server.Port())));

        // Back to direct: the next refresh goes straight to the server.
        TOptionsController direct(nullptr);
        direct.SetProxy(false);
        direct.StoreAndSave();
        SpotPrices().Refresh();
        QVERIFY(QTest::qWaitFor([] { return !SpotPrices().Busy; }, 20000));
        QCOMPARE(server.RequestsFor("/orv/spot.php").size(), 2);
        QVERIFY(!server.RequestsFor("/orv/spot.php").last().Headers.contains("via"));
        SpotPrices().Clear();
        SettingsStore().SetStringValue("CatalogueServer", QString(), QString());
    }
};

QTEST_GUILESS_MAIN(TestOptions)
#include "tst_options.moc"
