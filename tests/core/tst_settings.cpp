// The settings store and the application settings over a real hive file in a temporary home.

#include "uZTRegistrySettings.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTUserHive.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <bit>
#include <csignal>
#include <limits>

namespace {

const QString cRoot = QStringLiteral("Software\\Brenmoor\\Orvane");

QJsonObject ReadHiveFile()
{
    QFile file(TZTUserHive::FileName());
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QJsonDocument::fromJson(file.readAll()).object();
}

QJsonObject StoredValue(const QString& key, const QString& name)
{
    return ReadHiveFile().value(key).toObject().value(name).toObject();
}

void WriteHiveFile(const QJsonObject& hive)
{
    QFile file(TZTUserHive::FileName());
    QVERIFY(QDir().mkpath(QFileInfo(file).absolutePath()));
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(QJsonDocument(hive).toJson());
}

QString DoubleHex(double value)
{
    const quint64 bits = qToLittleEndian(std::bit_cast<quint64>(value));
    return QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(&bits), sizeof(bits)).toHex());
}

// Records the calls a SaveSettings makes, in order.
class TRecordingSettings : public TZTCustomSettings
{
public:
    QStringList writes;
    QStringList kinds;

    int GetIntValue(const QString&, int d) override { return d; }
    QString GetStringValue(const QString&, const QString& d) override { return d; }
    bool GetBoolValue(const QString&, bool d) override { return d; }
    double GetFloatValue(const QString&, double d) override { return d; }
    void SetIntValue(const QString& n, int, int) override { Record(n, QStringLiteral("int")); }
    void SetStringValue(const QString& n, const QString&, const QString&) override
    {
        Record(n, QStringLiteral("text"));
    }
    void SetBoolValue(const QString& n, bool, bool) override { Record(n, QStringLiteral("bool")); }
    void SetFloatValue(const QString& n, double, double) override { Record(n, QStringLiteral("float")); }

private:
    void Record(const QString& name, const QString& kind)
    {
        writes << name;
        kinds << kind;
    }
};

// The keys SaveSettings writes, with their type, in table order after Language and DBPath.
QList<QPair<QString, QString>> ExpectedKeys()
{
    QList<QPair<QString, QString>> keys = {
        {"Language", "text"},
        {"DBPath", "text"},
        {"Theme.NonClientDrawing", "bool"},
        {"Theme.ThemeIndex", "int"},
        {"Theme.ColorSchemeAccentIndex", "int"},
        {"LargeWidth", "int"},
        {"LargeHeight", "int"},
        {"Inet.ProxyHost", "text"},
        {"Inet.ProxyPort", "int"},
        {"Inet.ProxyUsername", "text"},
        {"Inet.ProxyPassword", "text"},
        {"Inet.InetAccess", "int"},
        {"Currency", "text"},
        {"CurrentView", "int"},
        {"MainForm.Left", "int"},
        {"MainForm.Top", "int"},
        {"MainForm.Width", "int"},
        {"MainForm.Height", "int"},
        {"MainForm.Maximized", "bool"},
        {"ThumbSize", "int"},
        {"Frame.Width", "int"},
        {"Frame.Closed", "bool"},
        {"Frame.Thumbs.Height", "int"},
        {"Frame.Thumbs.Closed", "bool"},
        {"Stats.CurrentView", "int"},
        {"Stats.GroupByFieldIndex", "int"},
        {"DefaultValues.Qty", "int"},
        {"DefaultValues.Rating", "float"},
        {"DefaultValues.Condition", "text"},
        {"DefaultValues.Status", "text"},
        {"DefaultValues.Packaging", "text"},
        {"DefaultValues.Location", "text"},
        {"DefaultValues.Owner", "text"},
        {"DefaultValues.Store", "text"},
        {"DefaultValues.Grade", "text"},
        {"DefaultValues.GradeService", "text"},
        {"Dict.Conditions", "text"},
        {"Dict.Purities", "text"},
        {"Dict.Edges", "text"},
        {"Dict.Statuses", "text"},
        {"Dict.Packagings", "text"},
        {"Dict.Locations", "text"},
        {"Dict.Owners", "text"},
        {"Dict.Stores", "text"},
        {"Dict.Grades", "text"},
        {"Dict.GradeServices", "text"},
        {"CustomFieldsEnabled", "bool"},
    };
    for (int n = 0; n < 10; ++n) {
        keys.append({QStringLiteral("CustomField%1.DisplayName").arg(n), "text"});
    }
    for (int n = 0; n < 10; ++n) {
        keys.append({QStringLiteral("CustomField%1.DataType").arg(n), "int"});
    }
    for (int n = 0; n < 10; ++n) {
        keys.append({QStringLiteral("CustomField%1.Enabled").arg(n), "bool"});
    }
    return keys;
}

} // namespace

class TestSettings : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_home;

    TZTRegistrySettings Store() const { return TZTRegistrySettings(cHKEY_CURRENT_USER, cRoot); }

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        qputenv("HOME", m_home->path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", (m_home->path() + QStringLiteral("/config")).toLocal8Bit());
        QVERIFY(TZTUserHive::FileName().startsWith(m_home->path()));
        SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, cRoot));
    }

    void cleanup() { SetSettingsStore(nullptr); }

    void emptyStoreGivesDefaults()
    {
        DBPath = QStringLiteral("stale");
        CurrentView = 3;
        ORVDicts.Locations.Value.clear();
        ORVDefaultValues.Rating = 1.0;
        ORVCustomFields[9].DisplayName = QStringLiteral("x");
        LoadSettings();

        QCOMPARE(DBPath, QString());
        QCOMPARE(CurrentLanguage(), QStringLiteral("English"));
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
        QCOMPARE(ORVDefaultValues.Condition, QStringLiteral("Brilliant uncirculated (BU)"));
        QCOMPARE(ORVDefaultValues.GradeService, QStringLiteral("Not graded"));
        QCOMPARE(ORVDicts.Locations.Value,
                 QStringLiteral("Vault\r\nSecret location #1\r\nSecret location #2\r\n"));
        QCOMPARE(ORVDicts.Locations.Default, ORVDicts.Locations.Value);
        QCOMPARE(CustomFieldsEnabled, false);
        QCOMPARE(ORVCustomFields[0].DisplayName, QStringLiteral("CustomField0"));
        QCOMPARE(ORVCustomFields[9].DisplayName, QStringLiteral("CustomField9"));
        QCOMPARE(ORVCustomFields[9].Enabled, false);
        QCOMPARE(ReadDefaultDBFolder(), QString());
        QCOMPARE(ReadCatalogueServer(), QString());
        // Reading never creates the store.
        QVERIFY(!QFile::exists(TZTUserHive::FileName()));
    }

    void defaultDictionaries_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("last");
        const TORVDicts d = DefaultDicts();
        QTest::newRow("Conditions") << d.Conditions.Default << 12 << "Brilliant uncirculated (BU)"
                                    << "Circulated";
        QTest::newRow("Purities") << d.Purities.Default << 8 << ".999"
                                  << ".9167";
        QTest::newRow("Edges") << d.Edges.Default << 6 << "Plain"
                               << "Inscribed";
        QTest::newRow("Statuses") << d.Statuses.Default << 3 << "In collection"
                                  << "Waiting for delivery";
        QTest::newRow("Packagings") << d.Packagings.Default << 7 << "No packaging"
                                    << "Slabbed";
        QTest::newRow("Locations") << d.Locations.Default << 3 << "Vault"
                                   << "Secret location #2";
        QTest::newRow("Owners") << d.Owners.Default << 1 << "Me"
                                << "Me";
        QTest::newRow("Stores") << d.Stores.Default << 9 << "Local coin shop"
                                << "Provident Metals";
        QTest::newRow("Grades") << d.Grades.Default << 23 << "Not graded"
                                << "PF60";
        QTest::newRow("GradeServices") << d.GradeServices.Default << 5 << "Not graded"
                                       << "ANACS";
    }

    void defaultDictionaries()
    {
        QFETCH(QString, list);
        QFETCH(int, count);
        QFETCH(QString, first);
        QFETCH(QString, last);
        QVERIFY(list.endsWith(QStringLiteral("\r\n")));
        // No bare LF: every line end is CR LF.
        QCOMPARE(list.count(QLatin1Char('\n')), list.count(QStringLiteral("\r\n")));
        QStringList entries = list.split(QStringLiteral("\r\n"));
        QCOMPARE(entries.takeLast(), QString());
        QCOMPARE(entries.size(), count);
        QCOMPARE(entries.first(), first);
        QCOMPARE(entries.last(), last);
    }

    void gradesRunDownInSteps()
    {
        const QStringList grades = DefaultDicts().Grades.Default.split(QStringLiteral("\r\n"));
        QCOMPARE(grades.mid(1, 3), QStringList({"MS70", "MS69", "MS68"}));
        QCOMPARE(grades.at(11), QStringLiteral("MS60"));
        QCOMPARE(grades.at(12), QStringLiteral("PF70"));
    }

    void saveWritesEveryKeyInItsStoredForm()
    {
        LoadSettings();
        SaveSettings();
        const QJsonObject hive = ReadHiveFile();
        QCOMPARE(hive.keys(), QStringList{cRoot});
        const QJsonObject key = hive.value(cRoot).toObject();
        const auto expected = ExpectedKeys();
        QCOMPARE(key.size(), expected.size());
        QVERIFY(!key.contains(QStringLiteral("DefaultDBFolder")));
        QVERIFY(!key.contains(QStringLiteral("CatalogueServer")));
        for (const auto& [name, kind] : expected) {
            const QJsonObject value = key.value(name).toObject();
            QVERIFY2(!value.isEmpty(), qPrintable(name));
            const QString type = value.value(QStringLiteral("type")).toString();
            const QJsonValue data = value.value(QStringLiteral("data"));
            if (kind == QStringLiteral("text")) {
                QVERIFY2(type == QStringLiteral("REG_SZ") && data.isString(), qPrintable(name));
            } else if (kind == QStringLiteral("float")) {
                QVERIFY2(type == QStringLiteral("REG_BINARY") && data.toString().size() == 16,
                         qPrintable(name));
            } else {
                QVERIFY2(type == QStringLiteral("REG_DWORD") && data.isDouble(), qPrintable(name));
                if (kind == QStringLiteral("bool")) {
                    QVERIFY2(data.toInt() == 0 || data.toInt() == 1, qPrintable(name));
                }
            }
        }
        QCOMPARE(key.value("MainForm.Maximized").toObject().value("data").toInt(), 1);
        QCOMPARE(key.value("DefaultValues.Rating").toObject().value("data").toString(), DoubleHex(5.0));
        QCOMPARE(key.value("Language").toObject().value("data").toString(), QStringLiteral("English"));
        QCOMPARE(key.value("Dict.Owners").toObject().value("data").toString(), QStringLiteral("Me\r\n"));
    }

    void saveOrderAndSetters()
    {
        auto recorder = std::make_unique<TRecordingSettings>();
        TRecordingSettings* record = recorder.get();
        SetSettingsStore(std::move(recorder));
        SaveSettings();
        const auto expected = ExpectedKeys();
        QCOMPARE(record->writes.size(), expected.size());
        for (qsizetype i = 0; i < expected.size(); ++i) {
            QCOMPARE(record->writes.at(i), expected.at(i).first);
            QCOMPARE(record->kinds.at(i), expected.at(i).second);
        }
    }

    void setterIgnoresItsDefault()
    {
        TZTRegistrySettings store = Store();
        store.SetIntValue(QStringLiteral("CurrentView"), 1, 1);
        const QJsonObject value = StoredValue(cRoot, QStringLiteral("CurrentView"));
        QCOMPARE(value.value("type").toString(), QStringLiteral("REG_DWORD"));
        QCOMPARE(value.value("data").toInt(), 1);
        QCOMPARE(store.GetIntValue(QStringLiteral("CurrentView"), 3), 1);
    }

    void stringRoundTrip_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("crlf") << QStringLiteral("Vault\r\nSafe\r\n");
        QTest::newRow("lone cr and lf") << QStringLiteral("a\rb\nc");
        QTest::newRow("empty") << QString();
        QTest::newRow("unicode") << QStringLiteral("Münze €, 金貨 \U0001F4B0");
        QTest::newRow("quotes and backslash") << QStringLiteral("C:\\data\\\"coins\".db");
        QTest::newRow("nul inside") << QString(QStringLiteral("a") + QChar(u'\0') + QStringLiteral("b"));
    }

    void stringRoundTrip()
    {
        QFETCH(QString, value);
        Store().SetStringValue(QStringLiteral("Dict.Locations"), QString(), value);
        QCOMPARE(Store().GetStringValue(QStringLiteral("Dict.Locations"), QStringLiteral("x")), value);
        QCOMPARE(StoredValue(cRoot, QStringLiteral("Dict.Locations")).value("data").toString(), value);
    }

    void intRoundTrip_data()
    {
        QTest::addColumn<int>("value");
        QTest::newRow("zero") << 0;
        QTest::newRow("minus one") << -1;
        QTest::newRow("min") << std::numeric_limits<int>::min();
        QTest::newRow("max") << std::numeric_limits<int>::max();
        QTest::newRow("LargeWidth 300") << 300;
    }

    void intRoundTrip()
    {
        QFETCH(int, value);
        Store().SetIntValue(QStringLiteral("LargeWidth"), 250, value);
        QCOMPARE(Store().GetIntValue(QStringLiteral("LargeWidth"), 250), value);
        QCOMPARE(Store().GetStringValue(QStringLiteral("LargeWidth"), QString()), QString::number(value));
    }

    void floatRoundTripIsBitExact_data()
    {
        QTest::addColumn<double>("value");
        QTest::newRow("5.0") << 5.0;
        QTest::newRow("0.1") << 0.1;
        QTest::newRow("1/3") << 1.0 / 3.0;
        QTest::newRow("negative zero") << -0.0;
        QTest::newRow("denormal") << std::numeric_limits<double>::denorm_min();
        QTest::newRow("max") << std::numeric_limits<double>::max();
        QTest::newRow("infinity") << std::numeric_limits<double>::infinity();
        QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN();
    }

    void floatRoundTripIsBitExact()
    {
        QFETCH(double, value);
        Store().SetFloatValue(QStringLiteral("DefaultValues.Rating"), 5.0, value);
        const double back = Store().GetFloatValue(QStringLiteral("DefaultValues.Rating"), 1.0);
        QCOMPARE(std::bit_cast<quint64>(back), std::bit_cast<quint64>(value));
        const QJsonObject stored = StoredValue(cRoot, QStringLiteral("DefaultValues.Rating"));
        QCOMPARE(stored.value("type").toString(), QStringLiteral("REG_BINARY"));
        QCOMPARE(stored.value("data").toString(), DoubleHex(value));
    }

    void boolStoredAsInteger()
    {
        Store().SetBoolValue(QStringLiteral("Frame.Closed"), false, true);
        QCOMPARE(StoredValue(cRoot, QStringLiteral("Frame.Closed")).value("data").toInt(), 1);
        QCOMPARE(Store().GetIntValue(QStringLiteral("Frame.Closed"), 7), 1);
        // Any integer but zero reads as true.
        Store().SetIntValue(QStringLiteral("Frame.Closed"), 0, 2);
        QCOMPARE(Store().GetBoolValue(QStringLiteral("Frame.Closed"), false), true);
        Store().SetBoolValue(QStringLiteral("Frame.Closed"), false, false);
        QCOMPARE(Store().GetBoolValue(QStringLiteral("Frame.Closed"), true), false);
    }

    void wrongStoredTypeRaises_data()
    {
        QTest::addColumn<QString>("stored"); // "text", "int", "short binary"
        QTest::addColumn<QString>("getter");
        QTest::newRow("text read as int") << "text"
                                          << "int";
        QTest::newRow("text read as bool") << "text"
                                           << "bool";
        QTest::newRow("text read as float") << "text"
                                            << "float";
        QTest::newRow("int read as float") << "int"
                                           << "float";
        QTest::newRow("float read as int") << "float"
                                           << "int";
        QTest::newRow("float read as bool") << "float"
                                            << "bool";
        QTest::newRow("4 bytes read as float") << "short binary"
                                               << "float";
        QTest::newRow("unknown form read as text") << "unknown"
                                                   << "text";
    }

    void wrongStoredTypeRaises()
    {
        QFETCH(QString, stored);
        QFETCH(QString, getter);
        const QString name = QStringLiteral("Value");
        TZTRegistrySettings store = Store();
        if (stored == "text") {
            store.SetStringValue(name, QString(), QStringLiteral("1"));
        } else if (stored == "int") {
            store.SetIntValue(name, 0, 1);
        } else if (stored == "float") {
            store.SetFloatValue(name, 0, 1.0);
        } else if (stored == "short binary" || stored == "unknown") {
            QJsonObject value{{"type", stored == "unknown" ? "REG_MULTI_SZ" : "REG_BINARY"},
                              {"data", "00000000"}};
            WriteHiveFile(QJsonObject{{cRoot, QJsonObject{{name, value}}}});
        }
        if (getter == "int") {
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetIntValue(name, 0));
        } else if (getter == "bool") {
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetBoolValue(name, false));
        } else if (getter == "float") {
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetFloatValue(name, 0.0));
        } else {
            QVERIFY_THROWS_EXCEPTION(ERegistryException, store.GetStringValue(name, QString()));
        }
    }

    void stringGetterConvertsBytes()
    {
        const QJsonObject value{{"type", "REG_BINARY"},
                                {"data", QString::fromLatin1(QByteArray("C:/db").toHex())}};
        WriteHiveFile(QJsonObject{{cRoot, QJsonObject{{"DBPath", value}}}});
        QCOMPARE(Store().GetStringValue(QStringLiteral("DBPath"), QString()), QStringLiteral("C:/db"));
    }

    void namesCompareWithoutCase()
    {
        Store().SetIntValue(QStringLiteral("currentview"), 1, 2);
        Store().SetIntValue(QStringLiteral("CurrentView"), 1, 3);
        TZTRegistrySettings other(cHKEY_CURRENT_USER, QStringLiteral("software/BRENMOOR/orvane"));
        QCOMPARE(other.GetIntValue(QStringLiteral("CURRENTVIEW"), 0), 3);
        const QJsonObject hive = ReadHiveFile();
        QCOMPARE(hive.size(), 1);
        QCOMPARE(hive.value(cRoot).toObject().size(), 1);
    }

    void layoutIsASubKey()
    {
        SaveSettings();
        TZTRegistrySettings layout(cHKEY_CURRENT_USER, LayoutSettingsPath());
        layout.SetStringValue(QStringLiteral("DBPath"), QString(), QStringLiteral("grid layout"));
        QCOMPARE(LayoutSettingsPath(), cRoot + QStringLiteral("\\Layout"));
        const QJsonObject hive = ReadHiveFile();
        QCOMPARE(hive.value(cRoot + QStringLiteral("\\Layout")).toObject().size(), 1);
        QCOMPARE(Store().GetStringValue(QStringLiteral("DBPath"), QStringLiteral("x")), QString());
    }

    void handEditedValuesSurviveARun()
    {
        Store().SetIntValue(QStringLiteral("LargeWidth"), 250, 300);
        Store().SetIntValue(QStringLiteral("MainForm.Left"), 10, 77);
        Store().SetStringValue(QStringLiteral("Language"), QString(), QStringLiteral("NoSuchLanguage"));
        Store().SetStringValue(QStringLiteral("DefaultDBFolder"), QString(), QStringLiteral("/srv/coins"));
        LoadSettings();
        QCOMPARE(LargeWidth, 300);
        QCOMPARE(CurrentLanguage(), QStringLiteral("English"));
        SaveSettings();
        QCOMPARE(Store().GetIntValue(QStringLiteral("LargeWidth"), 0), 300);
        QCOMPARE(Store().GetIntValue(QStringLiteral("MainForm.Left"), 0), 77);
        QCOMPARE(Store().GetStringValue(QStringLiteral("Language"), QString()), QStringLiteral("English"));
        QCOMPARE(Store().GetStringValue(QStringLiteral("DefaultDBFolder"), QString()),
                 QStringLiteral("/srv/coins"));
    }

    void variablesRoundTripThroughTheStore()
    {
        LoadSettings();
        DBPath = QStringLiteral("/home/me/coins.orv");
        InetProxyHost = QStringLiteral("proxy.local");
        InetProxyPort = 3128;
        InetAccess = cInetAccessProxy;
        Currency = QStringLiteral("CHF");
        ORVDefaultValues.Rating = 4.5;
        ORVDicts.Owners.Value = QStringLiteral("Me\r\nYou\r\n");
        CustomFieldsEnabled = true;
        ORVCustomFields[3] = TORVCustomField{QStringLiteral("Serial"), 1, true};
        SaveSettings();

        DBPath.clear();
        InetProxyHost.clear();
        InetProxyPort = 0;
        InetAccess = 0;
        Currency.clear();
        ORVDefaultValues.Rating = 0;
        ORVDicts.Owners.Value.clear();
        CustomFieldsEnabled = false;
        ORVCustomFields[3] = TORVCustomField{};
        SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, cRoot));
        LoadSettings();

        QCOMPARE(DBPath, QStringLiteral("/home/me/coins.orv"));
        QCOMPARE(InetProxyHost, QStringLiteral("proxy.local"));
        QCOMPARE(InetProxyPort, 3128);
        QCOMPARE(InetAccess, 2);
        QCOMPARE(Currency, QStringLiteral("CHF"));
        QCOMPARE(ORVDefaultValues.Rating, 4.5);
        QCOMPARE(ORVDicts.Owners.Value, QStringLiteral("Me\r\nYou\r\n"));
        QCOMPARE(ORVDicts.Owners.Default, QStringLiteral("Me\r\n"));
        QCOMPARE(CustomFieldsEnabled, true);
        QCOMPARE(ORVCustomFields[3].DisplayName, QStringLiteral("Serial"));
        QCOMPARE(ORVCustomFields[3].DataType, 1);
        QCOMPARE(ORVCustomFields[3].Enabled, true);
    }

    void readOnlyKeysAreReadAtEachCall()
    {
        QCOMPARE(ReadDefaultDBFolder(), QString());
        Store().SetStringValue(QStringLiteral("DefaultDBFolder"), QString(), QStringLiteral("/a"));
        Store().SetStringValue(QStringLiteral("CatalogueServer"), QString(),
                               QStringLiteral("https://c.example"));
        QCOMPARE(ReadDefaultDBFolder(), QStringLiteral("/a"));
        QCOMPARE(ReadCatalogueServer(), QStringLiteral("https://c.example"));
    }

    void noCachingBetweenObjects()
    {
        TZTRegistrySettings reader = Store();
        QCOMPARE(reader.GetIntValue(QStringLiteral("ThumbSize"), 1), 1);
        Store().SetIntValue(QStringLiteral("ThumbSize"), 1, 2);
        QCOMPARE(reader.GetIntValue(QStringLiteral("ThumbSize"), 1), 2);
        // A change made by someone else, straight in the file, is seen at the next read.
        QJsonObject hive = ReadHiveFile();
        QJsonObject key = hive.value(cRoot).toObject();
        key.insert("ThumbSize", QJsonObject{{"type", "REG_DWORD"}, {"data", 0}});
        hive.insert(cRoot, key);
        WriteHiveFile(hive);
        QCOMPARE(reader.GetIntValue(QStringLiteral("ThumbSize"), 1), 0);
    }

    void writeSurvivesAKilledProcess()
    {
        QProcess child;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("ORV_SETTINGS_CHILD"), QStringLiteral("write-and-die"));
        child.setProcessEnvironment(env);
        child.start(QCoreApplication::applicationFilePath(), {});
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QCOMPARE(Store().GetStringValue(QStringLiteral("Dict.Owners"), QString()),
                 QStringLiteral("Me\r\nHeir\r\n"));
        QCOMPARE(Store().GetIntValue(QStringLiteral("CurrentView"), 1), 2);
    }

    void damagedFileReadsAsEmptyAndIsReplaced()
    {
        QFile file(TZTUserHive::FileName());
        QVERIFY(QDir().mkpath(QFileInfo(file).absolutePath()));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\"Software\\\\Brenmoor\\\\Orvane\": {\"CurrentView\": {\"type\":");
        file.close();
        QCOMPARE(Store().GetIntValue(QStringLiteral("CurrentView"), 1), 1);
        Store().SetIntValue(QStringLiteral("CurrentView"), 1, 4);
        QCOMPARE(Store().GetIntValue(QStringLiteral("CurrentView"), 1), 4);
        QVERIFY(QFile::exists(TZTUserHive::FileName() + QStringLiteral(".damaged")));
    }

    void unwritableStoreIsSkipped()
    {
        // The configuration folder is a file: nothing can be created below it.
        QFile blocker(m_home->path() + QStringLiteral("/.qttest"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        Store().SetIntValue(QStringLiteral("CurrentView"), 1, 4);
        SaveSettings();
        QCOMPARE(Store().GetIntValue(QStringLiteral("CurrentView"), 1), 1);
    }

    void oemInfo_data()
    {
        QTest::addColumn<QByteArray>("content"); // empty: no file
        QTest::addColumn<QString>("company");
        QTest::addColumn<QString>("product");
        QTest::addColumn<QString>("homepage");
        QTest::newRow("missing") << QByteArray() << "Brenmoor"
                                 << "Orvane"
                                 << "";
        QTest::newRow("plain xml")
            << QByteArray(
                   "<?xml version=\"1.0\"?><oem Name=\"Orvane Gold\" HomepageLink=\"https://acme.example\" "
                   "SupportLink=\"https://acme.example/help\" Company=\"Acme\" ShortCompanyName=\"AC\" "
                   "Product=\"Vault\"/>")
            << "Acme"
            << "Vault"
            << "https://acme.example";
        QTest::newRow("names in other case")
            << QByteArray("<oem company=\"Acme\" PRODUCT=\"Vault\" homepagelink=\"h\"/>") << "Acme"
            << "Vault"
            << "h";
        QTest::newRow("no company") << QByteArray("<oem Product=\"Vault\"/>") << "Brenmoor"
                                    << "Vault"
                                    << "";
        QTest::newRow("garbage") << QByteArray("\x8f\x02\xffnot xml at all<<") << "Brenmoor"
                                 << "Orvane"
                                 << "";
        QTest::newRow("truncated") << QByteArray("<oem Company=\"Acme\" Product=\"Va") << "Brenmoor"
                                   << "Orvane"
                                   << "";
    }

    void oemInfo()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, company);
        QFETCH(QString, product);
        QFETCH(QString, homepage);
        const QString fileName = m_home->filePath(QStringLiteral("reg.enc"));
        if (!content.isEmpty()) {
            QFile file(fileName);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
        }
        const TOEMInfo info = ReadOEMInfo(fileName);
        QCOMPARE(info.Company, company);
        QCOMPARE(info.Product, product);
        QCOMPARE(info.HomepageLink, homepage);
        QCOMPARE(SettingsPathFor(info), QStringLiteral("Software\\%1\\%2").arg(company, product));
    }

    void currencyFromLocale_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("currency");
        QTest::newRow("C") << "C"
                           << "USD";
        QTest::newRow("German") << "de_DE.UTF-8"
                                << "EUR";
        QTest::newRow("British") << "en_GB.UTF-8"
                                 << "GBP";
        QTest::newRow("Japanese") << "ja_JP.UTF-8"
                                  << "JPY";
    }

    void currencyFromLocale()
    {
        QFETCH(QString, locale);
        QFETCH(QString, currency);
        QProcess child;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("ORV_SETTINGS_CHILD"), QStringLiteral("currency"));
        env.insert(QStringLiteral("LC_ALL"), locale);
        env.insert(QStringLiteral("LANG"), locale);
        child.setProcessEnvironment(env);
        child.start(QCoreApplication::applicationFilePath(), {});
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(QString::fromUtf8(child.readAllStandardOutput()).trimmed(), currency);
    }
};

// Child modes run by the tests above in a fresh process.
static int RunChild(const QByteArray& mode)
{
    QStandardPaths::setTestModeEnabled(true);
    if (mode == "write-and-die") {
        TZTRegistrySettings store(cHKEY_CURRENT_USER, cRoot);
        store.SetStringValue(QStringLiteral("Dict.Owners"), QString(), QStringLiteral("Me\r\nHeir\r\n"));
        store.SetIntValue(QStringLiteral("CurrentView"), 1, 2);
        std::raise(SIGKILL);
    }
    if (mode == "currency") {
        QTextStream(stdout) << DefaultCurrency() << Qt::endl;
        return 0;
    }
    return 2;
}

int main(int argc, char* argv[])
{
    const QByteArray mode = qgetenv("ORV_SETTINGS_CHILD");
    if (!mode.isEmpty()) {
        return RunChild(mode);
    }
    QCoreApplication app(argc, argv);
    TestSettings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settings.moc"
