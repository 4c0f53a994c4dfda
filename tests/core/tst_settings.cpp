// The settings store and the application settings over a real hive file in a temporary home.

#include "support_common.h"
#include "support_datarow.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTUserHive.h"

#include <QJsonArray>
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

void WriteHive(const QJsonObject& values)
{
    QVERIFY(QDir().mkpath(QFileInfo(TZTUserHive::FileName()).absolutePath()));
    WriteFile(TZTUserHive::FileName(), QJsonDocument(QJsonObject{{cSettingsRoot, values}}).toJson());
}

QJsonObject Stored(const QString& type, const QJsonValue& data)
{
    return {{"type", type}, {"data", data}};
}

QString DoubleHex(double value)
{
    const quint64 bits = qToLittleEndian(std::bit_cast<quint64>(value));
    return QByteArray(reinterpret_cast<const char*>(&bits), sizeof(bits)).toHex();
}

// Records the names that a SaveSettings writes, in order.
class TRecordingSettings : public TZTCustomSettings
{
public:
    QStringList writes;
    int GetIntValue(const QString&, int d) override { return d; }
    QString GetStringValue(const QString&, const QString& d) override { return d; }
    bool GetBoolValue(const QString&, bool d) override { return d; }
    double GetFloatValue(const QString&, double d) override { return d; }
    void SetIntValue(const QString& n, int, int) override { writes << n; }
    void SetStringValue(const QString& n, const QString&, const QString&) override { writes << n; }
    void SetBoolValue(const QString& n, bool, bool) override { writes << n; }
    void SetFloatValue(const QString& n, double, double) override { writes << n; }
};

} // namespace

class TestSettings : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;

private slots:
    void init() { m_home = std::make_unique<TTempSettingsHome>(); }
    void cleanup() { m_home.reset(); }

    void emptyStoreGivesDefaultsAndSaveWritesEveryKey()
    {
        DBPath = "stale";
        CurrentView = 3;
        ORVDefaultValues.Rating = 1.0;
        ORVCustomFields[9].DisplayName = "x";
        LoadSettings();
        QVERIFY(!QFile::exists(TZTUserHive::FileName())); // reading never creates the store
        QCOMPARE(DBPath, QString());
        QCOMPARE(CurrentLanguage(), "English");
        QCOMPARE(CurrentView, 1);
        QCOMPARE(MainFormMaximized, true);
        QCOMPARE(Currency, DefaultCurrency());
        QCOMPARE(ORVDefaultValues.Rating, 5.0);
        QCOMPARE(ORVDicts.Locations.Value, "Vault\r\nSecret location #1\r\nSecret location #2\r\n");
        QCOMPARE(ORVCustomFields[9].DisplayName, "CustomField9");

        SaveSettings();
        const QJsonObject key = ReadHive().value(cSettingsRoot).toObject();
        QCOMPARE(key.size(), 77); // every key of the table but the read-only ones
        QVERIFY(!key.contains("DefaultDBFolder") && !key.contains("CatalogueServer"));
        QCOMPARE(key.value("Language"), Stored("REG_SZ", "English"));
        QCOMPARE(key.value("MainForm.Maximized"), Stored("REG_DWORD", 1));
        QCOMPARE(key.value("DefaultValues.Rating"), Stored("REG_BINARY", DoubleHex(5.0)));
        QCOMPARE(key.value("CustomField9.DataType"), Stored("REG_DWORD", 0));

        auto recorder = std::make_unique<TRecordingSettings>();
        TRecordingSettings* record = recorder.get();
        SetSettingsStore(std::move(recorder));
        SaveSettings();
        QCOMPARE(record->writes.mid(0, 3), QStringList({"Language", "DBPath", "Theme.NonClientDrawing"}));
        QCOMPARE(record->writes.size(), 77);
    }

    // Each stored form keeps its value bit for bit; the setter's default changes nothing.
    void storedForms_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QJsonObject>("stored");
        AddRow("text with CR LF", QVariant("Vault\r\nSafe\r\n"), Stored("REG_SZ", "Vault\r\nSafe\r\n"));
        AddRow("text, unicode", QVariant("Münze €, 金貨 \U0001F4B0"),
               Stored("REG_SZ", "Münze €, 金貨 \U0001F4B0"));
        AddRow("text with NUL", QVariant(QString("a") + QChar(u'\0') + "b"),
               Stored("REG_SZ", QString("a") + QChar(u'\0') + "b"));
        AddRow("int min", QVariant(std::numeric_limits<int>::min()), Stored("REG_DWORD", -2147483648.0));
        AddRow("int max", QVariant(std::numeric_limits<int>::max()), Stored("REG_DWORD", 2147483647));
        AddRow("bool", QVariant(true), Stored("REG_DWORD", 1));
        AddRow("float 0.1", QVariant(0.1), Stored("REG_BINARY", DoubleHex(0.1)));
        AddRow("float -0", QVariant(-0.0), Stored("REG_BINARY", DoubleHex(-0.0)));
        AddRow("float denormal", QVariant(std::numeric_limits<double>::denorm_min()),
               Stored("REG_BINARY", DoubleHex(std::numeric_limits<double>::denorm_min())));
        AddRow("float nan", QVariant(std::numeric_limits<double>::quiet_NaN()),
               Stored("REG_BINARY", DoubleHex(std::numeric_limits<double>::quiet_NaN())));
    }
    void storedForms()
    {
        QFETCH(QVariant, value);
        QFETCH(QJsonObject, stored);
        TZTRegistrySettings store = UserStore();
        switch (value.metaType().id()) {
        case QMetaType::QString:
            store.SetStringValue("V", "default", value.toString());
            QCOMPARE(store.GetStringValue("V", "x"), value.toString());
            break;
        case QMetaType::Int:
            store.SetIntValue("V", 1, value.toInt());
            QCOMPARE(store.GetIntValue("V", 1), value.toInt());
            QCOMPARE(store.GetStringValue("V", "x"), QString::number(value.toInt()));
            break;
        case QMetaType::Bool:
            store.SetBoolValue("V", true, value.toBool());
            QCOMPARE(store.GetBoolValue("V", false), value.toBool());
            store.SetIntValue("V", 0, 2); // any integer but zero reads as true
            QVERIFY(store.GetBoolValue("V", false));
            store.SetBoolValue("V", true, value.toBool());
            break;
        default:
            store.SetFloatValue("V", 5.0, value.toDouble());
            QCOMPARE(std::bit_cast<quint64>(store.GetFloatValue("V", 1.0)),
                     std::bit_cast<quint64>(value.toDouble()));
        }
        QCOMPARE(StoredValue("V"), stored);
    }

    // The getters raise for a value of another form; a start-up reads it as the default instead,
    // and its save at the end writes a sound value.
    void wrongStoredForm_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QJsonObject>("stored");
        QTest::addColumn<QJsonObject>("repaired");
        AddRow("text for an int", QString("CurrentView"), Stored("REG_SZ", "3"), Stored("REG_DWORD", 1));
        AddRow("DWORD out of range", QString("MainForm.Width"), Stored("REG_DWORD", 1e10),
               Stored("REG_DWORD", 1040));
        AddRow("fraction for an int", QString("ThumbSize"), Stored("REG_DWORD", 1.5), Stored("REG_DWORD", 1));
        AddRow("int for a float", QString("DefaultValues.Rating"), Stored("REG_DWORD", 1),
               Stored("REG_BINARY", DoubleHex(5.0)));
        AddRow("4 bytes for a float", QString("DefaultValues.Rating"), Stored("REG_BINARY", "00000000"),
               Stored("REG_BINARY", DoubleHex(5.0)));
        AddRow("float for a bool", QString("MainForm.Maximized"), Stored("REG_BINARY", DoubleHex(1)),
               Stored("REG_DWORD", 1));
        AddRow("unknown form for a text", QString("Language"), Stored("REG_MULTI_SZ", "x"),
               Stored("REG_SZ", "English"));
        AddRow("a list for a text", QString("DBPath"), Stored("REG_SZ", QJsonArray{1}), Stored("REG_SZ", ""));
    }
    void wrongStoredForm()
    {
        QFETCH(QString, name);
        QFETCH(QJsonObject, stored);
        QFETCH(QJsonObject, repaired);
        WriteHive({{name, stored}, {"LargeWidth", Stored("REG_DWORD", 300)}});
        const TProcessResult child = RunSelf("ORV_SETTINGS_CHILD", "start-up");
        QVERIFY2(child.Ok(), child.Err.constData());
        QCOMPARE(StoredValue(name), repaired);
        QCOMPARE(StoredValue("LargeWidth"), Stored("REG_DWORD", 300)); // the others are kept

        WriteHive({{name, stored}});
        TZTRegistrySettings store = UserStore();
        if (repaired.value("type") == "REG_SZ")
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetStringValue(name, QString()));
        else if (repaired.value("type") == "REG_BINARY")
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetFloatValue(name, 0.0));
        else
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetIntValue(name, 0));
    }

    void namesKeysAndConversions()
    {
        WriteHive({{"DBPath", Stored("REG_BINARY", "433a2f6462")}});
        QCOMPARE(UserStore().GetStringValue("DBPath", QString()), "C:/db"); // bytes read as text

        UserStore().SetIntValue("currentview", 1, 2);
        UserStore().SetIntValue("CurrentView", 1, 3);
        QCOMPARE(
            TZTRegistrySettings(cHKEY_CURRENT_USER, "software/BRENMOOR/orvane").GetIntValue("CURRENTVIEW", 0),
            3);
        QCOMPARE(ReadHive().value(cSettingsRoot).toObject().size(), 2);

        QCOMPARE(LayoutSettingsPath(), cSettingsRoot + "\\Layout");
        TZTRegistrySettings(cHKEY_CURRENT_USER, LayoutSettingsPath())
            .SetStringValue("CurrentView", {}, "grid");
        QCOMPARE(ReadHive().value(cSettingsRoot + "\\Layout").toObject().size(), 1);
        QCOMPARE(UserStore().GetIntValue("CurrentView", 1), 3);
    }

    void valuesSurviveARun()
    {
        UserStore().SetIntValue("LargeWidth", 250, 300);
        UserStore().SetIntValue("MainForm.Left", 10, 77);
        UserStore().SetStringValue("Language", QString(), "NoSuchLanguage");
        UserStore().SetStringValue("DefaultDBFolder", QString(), "/srv/coins");
        LoadSettings();
        QCOMPARE(LargeWidth, 300);
        QCOMPARE(CurrentLanguage(), "English");
        DBPath = "/home/me/coins.orv";
        ORVDefaultValues.Rating = 4.5;
        ORVDicts.Owners.Value = "Me\r\nYou\r\n";
        ORVCustomFields[3] = TORVCustomField{"Serial", 1, true};
        SaveSettings();

        DBPath.clear();
        ORVDicts.Owners.Value.clear();
        ORVCustomFields[3] = TORVCustomField{};
        LoadSettings();
        QCOMPARE(DBPath, "/home/me/coins.orv");
        QCOMPARE(ORVDefaultValues.Rating, 4.5);
        QCOMPARE(ORVDicts.Owners.Value, "Me\r\nYou\r\n");
        QCOMPARE(ORVDicts.Owners.Default, "Me\r\n");
        QCOMPARE(ORVCustomFields[3].DisplayName, "Serial");
        QCOMPARE(ORVCustomFields[3].Enabled, true);
        QCOMPARE(UserStore().GetIntValue("MainForm.Left", 0), 77);
        QCOMPARE(UserStore().GetStringValue("Language", QString()), "English");
        QCOMPARE(ReadDefaultDBFolder(), "/srv/coins"); // read-only: never written, read at each call
        WriteHive({{"DefaultDBFolder", Stored("REG_SZ", "/a")},
                   {"CatalogueServer", Stored("REG_SZ", "https://c")}});
        QCOMPARE(ReadDefaultDBFolder(), "/a");
        QCOMPARE(ReadCatalogueServer(), "https://c");
    }

    void writesSurviveKillsAndDamage()
    {
        QCOMPARE(RunSelf("ORV_SETTINGS_CHILD", "write-and-die").Status, QProcess::CrashExit);
        QCOMPARE(UserStore().GetStringValue("Dict.Owners", QString()), "Me\r\nHeir\r\n");
        QCOMPARE(UserStore().GetIntValue("CurrentView", 1), 2);

        // What a writer killed before its rename leaves: the next write removes it, and does not
        // write through it.
        const QString leftover = TZTUserHive::FileName() + ".new";
        const QString elsewhere = m_home->Path() + "/elsewhere";
        WriteFile(elsewhere, "keep");
        QVERIFY(QFile::link(elsewhere, leftover));
        UserStore().SetIntValue("CurrentView", 1, 3);
        QVERIFY(!QFileInfo::exists(leftover) && !QFileInfo(TZTUserHive::FileName()).isSymLink());
        QCOMPARE(ReadFile(elsewhere), "keep");
        QCOMPARE(UserStore().GetIntValue("CurrentView", 1), 3);

        WriteFile(TZTUserHive::FileName(), R"({"Software\\Brenmoor\\Orvane": {"CurrentView": {"type":)");
        QCOMPARE(UserStore().GetIntValue("CurrentView", 1), 1);
        UserStore().SetIntValue("CurrentView", 1, 4);
        QCOMPARE(UserStore().GetIntValue("CurrentView", 1), 4);
        QVERIFY(QFile::exists(TZTUserHive::FileName() + ".damaged"));

        // A store that cannot be written is skipped without a word.
        QVERIFY(QDir(m_home->Path() + "/.qttest").removeRecursively());
        WriteFile(m_home->Path() + "/.qttest", "a file where the folder should be");
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
               QByteArray(
                   "<?xml version=\"1.0\"?><oem Name=\"Orvane Gold\" HomepageLink=\"https://acme.example\" "
                   "Company=\"Acme\" ShortCompanyName=\"AC\" Product=\"Vault\"/>"),
               "Acme", "Vault", "https://acme.example");
        AddRow("names in other case",
               QByteArray("<oem company=\"Acme\" PRODUCT=\"Vault\" homepagelink=\"h\"/>"), "Acme", "Vault",
               "h");
        AddRow("a name twice: the first in the document counts",
               QByteArray("<oem COMPANY=\"First\" Product=\"P\" company=\"Second\" Company=\"Third\"/>"),
               "First", "P", "");
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
    if (mode == "start-up") {
        // The settings part of the program's start and end.
        QStandardPaths::setTestModeEnabled(true);
        InitializeSettings();
        FinalizeSettings();
        return 0;
    }
    TestSettings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settings.moc"
