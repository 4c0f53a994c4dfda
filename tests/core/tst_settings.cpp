// The settings store and the application settings over a real hive file in a temporary home.

#include "support_common.h"
#include "support_datarow.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTUserHive.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <bit>
#include <csignal>
#include <limits>

namespace {

QJsonObject ReadHive()
{
    return QJsonDocument::fromJson(ReadFile(TZTUserHive::FileName())).object();
}

QJsonObject StoredValue(const QString& name)
{
    return ReadHive().value(cSettingsRoot).toObject().value(name).toObject();
}

void WriteHive(const QJsonObject& hive)
{
    QVERIFY(QDir().mkpath(QFileInfo(TZTUserHive::FileName()).absolutePath()));
    WriteFile(TZTUserHive::FileName(), QJsonDocument(hive).toJson());
}

QString DoubleHex(double value)
{
    const quint64 bits = qToLittleEndian(std::bit_cast<quint64>(value));
    return QByteArray(reinterpret_cast<const char*>(&bits), sizeof(bits)).toHex();
}

// Records the calls a SaveSettings makes, in order, as "name:kind".
class TRecordingSettings : public TZTCustomSettings
{
public:
    QStringList writes;
    int GetIntValue(const QString&, int d) override { return d; }
    QString GetStringValue(const QString&, const QString& d) override { return d; }
    bool GetBoolValue(const QString&, bool d) override { return d; }
    double GetFloatValue(const QString&, double d) override { return d; }
    void SetIntValue(const QString& n, int, int) override { writes << n + ":i"; }
    void SetStringValue(const QString& n, const QString&, const QString&) override { writes << n + ":s"; }
    void SetBoolValue(const QString& n, bool, bool) override { writes << n + ":b"; }
    void SetFloatValue(const QString& n, double, double) override { writes << n + ":f"; }
};

// The key table that SaveSettings writes, in its order, as "name:kind" (s text, i integer,
// b boolean, f float).
QStringList ExpectedKeys()
{
    QStringList keys = QString("Language:s DBPath:s Theme.NonClientDrawing:b Theme.ThemeIndex:i "
                               "Theme.ColorSchemeAccentIndex:i LargeWidth:i LargeHeight:i Inet.ProxyHost:s "
                               "Inet.ProxyPort:i Inet.ProxyUsername:s Inet.ProxyPassword:s Inet.InetAccess:i "
                               "Currency:s CurrentView:i MainForm.Left:i MainForm.Top:i MainForm.Width:i "
                               "MainForm.Height:i MainForm.Maximized:b ThumbSize:i Frame.Width:i "
                               "Frame.Closed:b Frame.Thumbs.Height:i Frame.Thumbs.Closed:b "
                               "Stats.CurrentView:i Stats.GroupByFieldIndex:i DefaultValues.Qty:i "
                               "DefaultValues.Rating:f DefaultValues.Condition:s DefaultValues.Status:s "
                               "DefaultValues.Packaging:s DefaultValues.Location:s DefaultValues.Owner:s "
                               "DefaultValues.Store:s DefaultValues.Grade:s DefaultValues.GradeService:s "
                               "Dict.Conditions:s Dict.Purities:s Dict.Edges:s Dict.Statuses:s "
                               "Dict.Packagings:s Dict.Locations:s Dict.Owners:s Dict.Stores:s Dict.Grades:s "
                               "Dict.GradeServices:s CustomFieldsEnabled:b")
                           .split(' ');
    for (const char* part : {"DisplayName:s", "DataType:i", "Enabled:b"})
        for (int n = 0; n < 10; ++n)
            keys << QString("CustomField%1.%2").arg(n).arg(part);
    return keys;
}

} // namespace

class TestSettings : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;

private slots:
    void init() { m_home = std::make_unique<TTempSettingsHome>(); }
    void cleanup() { m_home.reset(); }

    void emptyStoreGivesDefaults()
    {
        DBPath = "stale";
        CurrentView = 3;
        ORVDicts.Locations.Value.clear();
        ORVDefaultValues.Rating = 1.0;
        ORVCustomFields[9].DisplayName = "x";
        LoadSettings();

        QCOMPARE(DBPath, QString());
        QCOMPARE(CurrentLanguage(), "English");
        QCOMPARE(ThemeNonClientDrawing, true);
        QCOMPARE(ThemeIndex, 4);
        QCOMPARE(LargeWidth, 250);
        QCOMPARE(InetAccess, 0);
        QCOMPARE(Currency, DefaultCurrency());
        QCOMPARE(CurrentView, 1);
        QCOMPARE(MainFormLeft, 10);
        QCOMPARE(MainFormWidth, 1040);
        QCOMPARE(MainFormHeight, 830);
        QCOMPARE(MainFormMaximized, true);
        QCOMPARE(FrameWidth, 350);
        QCOMPARE(FrameThumbsHeight, 200);
        QCOMPARE(ORVDefaultValues.Qty, 1);
        QCOMPARE(ORVDefaultValues.Rating, 5.0);
        QCOMPARE(ORVDefaultValues.Condition, "Brilliant uncirculated (BU)");
        QCOMPARE(ORVDefaultValues.GradeService, "Not graded");
        QCOMPARE(ORVDicts.Locations.Value, "Vault\r\nSecret location #1\r\nSecret location #2\r\n");
        QCOMPARE(ORVDicts.Locations.Default, ORVDicts.Locations.Value);
        QCOMPARE(CustomFieldsEnabled, false);
        QCOMPARE(ORVCustomFields[0].DisplayName, "CustomField0");
        QCOMPARE(ORVCustomFields[9].DisplayName, "CustomField9");
        QCOMPARE(ORVCustomFields[9].Enabled, false);
        QCOMPARE(ReadDefaultDBFolder(), QString());
        QCOMPARE(ReadCatalogueServer(), QString());
        QVERIFY(!QFile::exists(TZTUserHive::FileName())); // reading never creates the store
    }

    void saveWritesEveryKeyInItsStoredForm()
    {
        LoadSettings();
        SaveSettings();
        const QJsonObject hive = ReadHive();
        QCOMPARE(hive.keys(), QStringList{cSettingsRoot});
        const QJsonObject key = hive.value(cSettingsRoot).toObject();
        const QStringList expected = ExpectedKeys();
        QCOMPARE(key.size(), expected.size());
        QVERIFY(!key.contains("DefaultDBFolder") && !key.contains("CatalogueServer"));
        for (const QString& entry : expected) {
            const QString name = entry.section(':', 0, 0);
            const QString kind = entry.section(':', 1);
            const QJsonObject value = key.value(name).toObject();
            const QString type = value.value("type").toString();
            const QJsonValue data = value.value("data");
            if (kind == "s")
                QVERIFY2(type == "REG_SZ" && data.isString(), qPrintable(name));
            else if (kind == "f")
                QVERIFY2(type == "REG_BINARY" && data.toString().size() == 16, qPrintable(name));
            else
                QVERIFY2(type == "REG_DWORD" && data.isDouble() && (kind == "i" || data.toInt() <= 1),
                         qPrintable(name));
        }
        QCOMPARE(key.value("MainForm.Maximized").toObject().value("data").toInt(), 1);
        QCOMPARE(key.value("DefaultValues.Rating").toObject().value("data").toString(), DoubleHex(5.0));
        QCOMPARE(key.value("Language").toObject().value("data").toString(), "English");
        QCOMPARE(key.value("Dict.Owners").toObject().value("data").toString(), "Me\r\n");
    }

    void saveOrderAndSetters()
    {
        auto recorder = std::make_unique<TRecordingSettings>();
        TRecordingSettings* record = recorder.get();
        SetSettingsStore(std::move(recorder));
        SaveSettings();
        QCOMPARE(record->writes, ExpectedKeys());
    }

    void setterIgnoresItsDefault()
    {
        UserStore().SetIntValue("CurrentView", 1, 1);
        QCOMPARE(StoredValue("CurrentView"), QJsonObject({{"type", "REG_DWORD"}, {"data", 1}}));
        QCOMPARE(UserStore().GetIntValue("CurrentView", 3), 1);
    }

    void stringRoundTrip_data()
    {
        QTest::addColumn<QString>("value");
        AddRow("crlf", "Vault\r\nSafe\r\n");
        AddRow("empty", QString());
        AddRow("unicode", "Münze €, 金貨 \U0001F4B0");
        AddRow("nul inside", QString("a") + QChar(u'\0') + "b");
    }
    void stringRoundTrip()
    {
        QFETCH(QString, value);
        UserStore().SetStringValue("Dict.Locations", QString(), value);
        QCOMPARE(UserStore().GetStringValue("Dict.Locations", "x"), value);
        QCOMPARE(StoredValue("Dict.Locations").value("data").toString(), value);
    }

    void intRoundTrip_data()
    {
        QTest::addColumn<int>("value");
        AddRow("min", std::numeric_limits<int>::min());
        AddRow("max", std::numeric_limits<int>::max());
        AddRow("LargeWidth 300", 300);
    }
    void intRoundTrip()
    {
        QFETCH(int, value);
        UserStore().SetIntValue("LargeWidth", 250, value);
        QCOMPARE(UserStore().GetIntValue("LargeWidth", 250), value);
        QCOMPARE(UserStore().GetStringValue("LargeWidth", QString()), QString::number(value));
    }

    void floatRoundTripIsBitExact_data()
    {
        QTest::addColumn<double>("value");
        AddRow("0.1", 0.1);
        AddRow("negative zero", -0.0);
        AddRow("denormal", std::numeric_limits<double>::denorm_min());
        AddRow("nan", std::numeric_limits<double>::quiet_NaN());
    }
    void floatRoundTripIsBitExact()
    {
        QFETCH(double, value);
        UserStore().SetFloatValue("DefaultValues.Rating", 5.0, value);
        const double back = UserStore().GetFloatValue("DefaultValues.Rating", 1.0);
        QCOMPARE(std::bit_cast<quint64>(back), std::bit_cast<quint64>(value));
        QCOMPARE(StoredValue("DefaultValues.Rating"),
                 QJsonObject({{"type", "REG_BINARY"}, {"data", DoubleHex(value)}}));
    }

    void boolStoredAsInteger()
    {
        UserStore().SetBoolValue("Frame.Closed", false, true);
        QCOMPARE(StoredValue("Frame.Closed").value("data").toInt(), 1);
        QCOMPARE(UserStore().GetIntValue("Frame.Closed", 7), 1);
        UserStore().SetIntValue("Frame.Closed", 0, 2); // any integer but zero reads as true
        QCOMPARE(UserStore().GetBoolValue("Frame.Closed", false), true);
        UserStore().SetBoolValue("Frame.Closed", false, false);
        QCOMPARE(UserStore().GetBoolValue("Frame.Closed", true), false);
    }

    void wrongStoredTypeRaises_data()
    {
        QTest::addColumn<QJsonObject>("stored");
        QTest::addColumn<QString>("getter");
        const QJsonObject text{{"type", "REG_SZ"}, {"data", "1"}};
        const QJsonObject dword{{"type", "REG_DWORD"}, {"data", 1}};
        AddRow("text read as int", text, "int");
        AddRow("text read as float", text, "float");
        AddRow("int read as float", dword, "float");
        AddRow("float read as bool", QJsonObject{{"type", "REG_BINARY"}, {"data", DoubleHex(1)}}, "bool");
        AddRow("4 bytes read as float", QJsonObject{{"type", "REG_BINARY"}, {"data", "00000000"}}, "float");
        AddRow("unknown form read as text", QJsonObject{{"type", "REG_MULTI_SZ"}, {"data", "00000000"}},
               "text");
    }
    void wrongStoredTypeRaises()
    {
        QFETCH(QJsonObject, stored);
        QFETCH(QString, getter);
        WriteHive(QJsonObject{{cSettingsRoot, QJsonObject{{"Value", stored}}}});
        TZTRegistrySettings store = UserStore();
        if (getter == "int")
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetIntValue("Value", 0));
        else if (getter == "bool")
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetBoolValue("Value", false));
        else if (getter == "float")
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetFloatValue("Value", 0.0));
        else
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetStringValue("Value", QString()));
    }

    void stringGetterConvertsBytes()
    {
        WriteHive({{cSettingsRoot,
                    QJsonObject{{"DBPath", QJsonObject{{"type", "REG_BINARY"}, {"data", "433a2f6462"}}}}}});
        QCOMPARE(UserStore().GetStringValue("DBPath", QString()), "C:/db");
    }

    void namesCompareWithoutCase()
    {
        UserStore().SetIntValue("currentview", 1, 2);
        UserStore().SetIntValue("CurrentView", 1, 3);
        TZTRegistrySettings other(cHKEY_CURRENT_USER, "software/BRENMOOR/orvane");
        QCOMPARE(other.GetIntValue("CURRENTVIEW", 0), 3);
        const QJsonObject hive = ReadHive();
        QCOMPARE(hive.size(), 1);
        QCOMPARE(hive.value(cSettingsRoot).toObject().size(), 1);
    }

    void layoutIsASubKey()
    {
        SaveSettings();
        QCOMPARE(LayoutSettingsPath(), cSettingsRoot + "\\Layout");
        TZTRegistrySettings(cHKEY_CURRENT_USER, LayoutSettingsPath()).SetStringValue("DBPath", {}, "grid");
        QCOMPARE(ReadHive().value(cSettingsRoot + "\\Layout").toObject().size(), 1);
        QCOMPARE(UserStore().GetStringValue("DBPath", "x"), QString());
    }

    void handEditedValuesSurviveARun()
    {
        UserStore().SetIntValue("LargeWidth", 250, 300);
        UserStore().SetIntValue("MainForm.Left", 10, 77);
        UserStore().SetStringValue("Language", QString(), "NoSuchLanguage");
        UserStore().SetStringValue("DefaultDBFolder", QString(), "/srv/coins");
        LoadSettings();
        QCOMPARE(LargeWidth, 300);
        QCOMPARE(CurrentLanguage(), "English");
        SaveSettings();
        QCOMPARE(UserStore().GetIntValue("LargeWidth", 0), 300);
        QCOMPARE(UserStore().GetIntValue("MainForm.Left", 0), 77);
        QCOMPARE(UserStore().GetStringValue("Language", QString()), "English");
        QCOMPARE(UserStore().GetStringValue("DefaultDBFolder", QString()), "/srv/coins");
    }

    void variablesRoundTripThroughTheStore()
    {
        LoadSettings();
        DBPath = "/home/me/coins.orv";
        InetProxyPort = 3128;
        InetAccess = cInetAccessProxy;
        Currency = "CHF";
        ORVDefaultValues.Rating = 4.5;
        ORVDicts.Owners.Value = "Me\r\nYou\r\n";
        CustomFieldsEnabled = true;
        ORVCustomFields[3] = TORVCustomField{"Serial", 1, true};
        SaveSettings();

        DBPath.clear();
        InetProxyPort = 0;
        InetAccess = 0;
        Currency.clear();
        ORVDefaultValues.Rating = 0;
        ORVDicts.Owners.Value.clear();
        CustomFieldsEnabled = false;
        ORVCustomFields[3] = TORVCustomField{};
        LoadSettings();

        QCOMPARE(DBPath, "/home/me/coins.orv");
        QCOMPARE(InetProxyPort, 3128);
        QCOMPARE(InetAccess, 2);
        QCOMPARE(Currency, "CHF");
        QCOMPARE(ORVDefaultValues.Rating, 4.5);
        QCOMPARE(ORVDicts.Owners.Value, "Me\r\nYou\r\n");
        QCOMPARE(ORVDicts.Owners.Default, "Me\r\n");
        QCOMPARE(CustomFieldsEnabled, true);
        QCOMPARE(ORVCustomFields[3].DisplayName, "Serial");
        QCOMPARE(ORVCustomFields[3].DataType, 1);
        QCOMPARE(ORVCustomFields[3].Enabled, true);
    }

    // Read-only keys are read at each call, and nothing is cached between store objects.
    void everyReadGoesToTheFile()
    {
        TZTRegistrySettings reader = UserStore();
        QCOMPARE(ReadDefaultDBFolder(), QString());
        UserStore().SetStringValue("DefaultDBFolder", QString(), "/a");
        UserStore().SetStringValue("CatalogueServer", QString(), "https://c.example");
        QCOMPARE(ReadDefaultDBFolder(), "/a");
        QCOMPARE(ReadCatalogueServer(), "https://c.example");
        QCOMPARE(reader.GetIntValue("ThumbSize", 1), 1);
        UserStore().SetIntValue("ThumbSize", 1, 2);
        QCOMPARE(reader.GetIntValue("ThumbSize", 1), 2);
        // A change made by someone else, straight in the file, is seen at the next read.
        QJsonObject hive = ReadHive();
        QJsonObject key = hive.value(cSettingsRoot).toObject();
        key.insert("ThumbSize", QJsonObject{{"type", "REG_DWORD"}, {"data", 0}});
        hive.insert(cSettingsRoot, key);
        WriteHive(hive);
        QCOMPARE(reader.GetIntValue("ThumbSize", 1), 0);
    }

    void writeSurvivesAKilledProcess()
    {
        QCOMPARE(RunSelf("ORV_SETTINGS_CHILD", "write-and-die").Status, QProcess::CrashExit);
        QCOMPARE(UserStore().GetStringValue("Dict.Owners", QString()), "Me\r\nHeir\r\n");
        QCOMPARE(UserStore().GetIntValue("CurrentView", 1), 2);
    }

    void damagedFileReadsAsEmptyAndIsReplaced()
    {
        QVERIFY(QDir().mkpath(QFileInfo(TZTUserHive::FileName()).absolutePath()));
        WriteFile(TZTUserHive::FileName(), R"({"Software\\Brenmoor\\Orvane": {"CurrentView": {"type":)");
        QCOMPARE(UserStore().GetIntValue("CurrentView", 1), 1);
        UserStore().SetIntValue("CurrentView", 1, 4);
        QCOMPARE(UserStore().GetIntValue("CurrentView", 1), 4);
        QVERIFY(QFile::exists(TZTUserHive::FileName() + ".damaged"));
    }

    void unwritableStoreIsSkipped()
    {
        WriteFile(m_home->Path() + "/.qttest", "a file where the folder should be");
        UserStore().SetIntValue("CurrentView", 1, 4);
        SaveSettings();
        QCOMPARE(UserStore().GetIntValue("CurrentView", 1), 1);
    }

    void oemInfo_data()
    {
        QTest::addColumn<QByteArray>("content"); // empty: no file
        QTest::addColumn<QString>("company");
        QTest::addColumn<QString>("product");
        QTest::addColumn<QString>("homepage");
        AddRow("missing", QByteArray(), "Brenmoor", "Orvane", "");
        AddRow("plain xml",
               QByteArray("<?xml version=\"1.0\"?><oem Name=\"Orvane Gold\" "
                          "HomepageLink=\"https://acme.example\" Company=\"Acme\" "
                          "ShortCompanyName=\"AC\" Product=\"Vault\"/>"),
               "Acme", "Vault", "https://acme.example");
        AddRow("names in other case",
               QByteArray("<oem company=\"Acme\" PRODUCT=\"Vault\" homepagelink=\"h\"/>"), "Acme", "Vault",
               "h");
        AddRow("no company", QByteArray("<oem Product=\"Vault\"/>"), "Brenmoor", "Vault", "");
        AddRow("garbage", QByteArray("\x8f\x02\xffnot xml at all<<"), "Brenmoor", "Orvane", "");
        AddRow("truncated", QByteArray("<oem Company=\"Acme\" Product=\"Va"), "Brenmoor", "Orvane", "");
    }
    void oemInfo()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, company);
        QFETCH(QString, product);
        QFETCH(QString, homepage);
        const QString fileName = m_home->Path() + "/reg.enc";
        if (!content.isEmpty())
            WriteFile(fileName, content);
        const TOEMInfo info = ReadOEMInfo(fileName);
        QCOMPARE(info.Company, company);
        QCOMPARE(info.Product, product);
        QCOMPARE(info.HomepageLink, homepage);
        QCOMPARE(SettingsPathFor(info), QString("Software\\%1\\%2").arg(company, product));
    }

    void currencyFromLocale_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("currency");
        AddRow("C", "C", "USD");
        AddRow("German", "de_DE.UTF-8", "EUR");
        AddRow("Japanese", "ja_JP.UTF-8", "JPY");
    }
    void currencyFromLocale()
    {
        QFETCH(QString, locale);
        QFETCH(QString, currency);
        const TProcessResult child =
            RunSelf("ORV_SETTINGS_CHILD", "currency", {"LC_ALL=" + locale, "LANG=" + locale});
        QCOMPARE(QString::fromUtf8(child.Out).trimmed(), currency);
    }
};

int main(int argc, char* argv[])
{
    // Child modes run by the tests above in a fresh process.
    const QByteArray mode = qgetenv("ORV_SETTINGS_CHILD");
    if (mode == "write-and-die") {
        QStandardPaths::setTestModeEnabled(true);
        UserStore().SetStringValue("Dict.Owners", QString(), "Me\r\nHeir\r\n");
        UserStore().SetIntValue("CurrentView", 1, 2);
        std::raise(SIGKILL);
    }
    if (mode == "currency") {
        QTextStream(stdout) << DefaultCurrency() << Qt::endl;
        return 0;
    }
    QCoreApplication app(argc, argv);
    TestSettings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settings.moc"
