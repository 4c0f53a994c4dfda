#include "uZTSettings.h"

#include "uZTRegistrySettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QFile>
#include <QLocale>
#include <QStringList>
#include <QVariant>

#include <variant>
#include <vector>

using namespace Qt::StringLiterals;

TOEMInfo OEMInfo;

QString DBPath;
bool ThemeNonClientDrawing = true;
int ThemeIndex = 4;
int ThemeColorSchemeAccentIndex = 0;
int LargeWidth = 250;
int LargeHeight = 250;
QString InetProxyHost;
int InetProxyPort = 0;
QString InetProxyUsername;
QString InetProxyPassword;
int InetAccess = 0;
QString Currency;
int CurrentView = 1;
int MainFormLeft = 10;
int MainFormTop = 10;
int MainFormWidth = 1040;
int MainFormHeight = 830;
bool MainFormMaximized = true;
int ThumbSize = 1;
int FrameWidth = 350;
bool FrameClosed = false;
int FrameThumbsHeight = 200;
bool FrameThumbsClosed = false;
int StatsCurrentView = 0;
int StatsGroupByFieldIndex = 0;
TORVDefaultValues ORVDefaultValues;
TORVDicts ORVDicts = DefaultDicts();
bool CustomFieldsEnabled = false;
TORVCustomFields ORVCustomFields = [] {
    TORVCustomFields fields;
    for (int n = 0; n < cCustomFieldCount; ++n) {
        fields[static_cast<std::size_t>(n)].DisplayName = u"CustomField%1"_s.arg(n);
    }
    return fields;
}();

namespace {

const QString cDefaultCompany = u"Brenmoor"_s;
const QString cDefaultProduct = u"Orvane"_s;
const QString cDefaultLanguage = u"English"_s;
const QString cLanguageKey = u"Language"_s;
const QString cDBPathKey = u"DBPath"_s;

std::unique_ptr<TZTCustomSettings> g_store;
QString g_rootPath;
// The value of Language as read; the language object's name is what is saved.
QString g_languageName = cDefaultLanguage;

using TTarget = std::variant<QString*, int*, bool*, double*>;

struct TEntry
{
    QString name;
    TTarget target;
    QVariant defaultValue;
};

// Joins entries into a list with CR LF after each, the last one too.
QString DictText(const QStringList& entries)
{
    QString text;
    for (const QString& entry : entries) {
        text += entry + u"\r\n"_s;
    }
    return text;
}

TDict MakeDict(const QStringList& entries)
{
    const QString text = DictText(entries);
    return TDict{text, text};
}

// The key table in the order of reading.
std::vector<TEntry> SettingsTable()
{
    const TORVDicts dicts = DefaultDicts();
    const TORVDefaultValues values;
    std::vector<TEntry> table = {
        {cDBPathKey, &DBPath, QString()},
        {cLanguageKey, &g_languageName, cDefaultLanguage},
        {u"Theme.NonClientDrawing"_s, &ThemeNonClientDrawing, true},
        {u"Theme.ThemeIndex"_s, &ThemeIndex, 4},
        {u"Theme.ColorSchemeAccentIndex"_s, &ThemeColorSchemeAccentIndex, 0},
        {u"LargeWidth"_s, &LargeWidth, 250},
        {u"LargeHeight"_s, &LargeHeight, 250},
        {u"Inet.ProxyHost"_s, &InetProxyHost, QString()},
        {u"Inet.ProxyPort"_s, &InetProxyPort, 0},
        {u"Inet.ProxyUsername"_s, &InetProxyUsername, QString()},
        {u"Inet.ProxyPassword"_s, &InetProxyPassword, QString()},
        {u"Inet.InetAccess"_s, &InetAccess, 0},
        {u"Currency"_s, &Currency, DefaultCurrency()},
        {u"CurrentView"_s, &CurrentView, 1},
        {u"MainForm.Left"_s, &MainFormLeft, 10},
        {u"MainForm.Top"_s, &MainFormTop, 10},
        {u"MainForm.Width"_s, &MainFormWidth, 1040},
        {u"MainForm.Height"_s, &MainFormHeight, 830},
        {u"MainForm.Maximized"_s, &MainFormMaximized, true},
        {u"ThumbSize"_s, &ThumbSize, 1},
        {u"Frame.Width"_s, &FrameWidth, 350},
        {u"Frame.Closed"_s, &FrameClosed, false},
        {u"Frame.Thumbs.Height"_s, &FrameThumbsHeight, 200},
        {u"Frame.Thumbs.Closed"_s, &FrameThumbsClosed, false},
        {u"Stats.CurrentView"_s, &StatsCurrentView, 0},
        {u"Stats.GroupByFieldIndex"_s, &StatsGroupByFieldIndex, 0},
        {u"DefaultValues.Qty"_s, &ORVDefaultValues.Qty, values.Qty},
        {u"DefaultValues.Rating"_s, &ORVDefaultValues.Rating, values.Rating},
        {u"DefaultValues.Condition"_s, &ORVDefaultValues.Condition, values.Condition},
        {u"DefaultValues.Status"_s, &ORVDefaultValues.Status, values.Status},
        {u"DefaultValues.Packaging"_s, &ORVDefaultValues.Packaging, values.Packaging},
        {u"DefaultValues.Location"_s, &ORVDefaultValues.Location, values.Location},
        {u"DefaultValues.Owner"_s, &ORVDefaultValues.Owner, values.Owner},
        {u"DefaultValues.Store"_s, &ORVDefaultValues.Store, values.Store},
        {u"DefaultValues.Grade"_s, &ORVDefaultValues.Grade, values.Grade},
        {u"DefaultValues.GradeService"_s, &ORVDefaultValues.GradeService, values.GradeService},
        {u"Dict.Conditions"_s, &ORVDicts.Conditions.Value, dicts.Conditions.Default},
        {u"Dict.Purities"_s, &ORVDicts.Purities.Value, dicts.Purities.Default},
        {u"Dict.Edges"_s, &ORVDicts.Edges.Value, dicts.Edges.Default},
        {u"Dict.Statuses"_s, &ORVDicts.Statuses.Value, dicts.Statuses.Default},
        {u"Dict.Packagings"_s, &ORVDicts.Packagings.Value, dicts.Packagings.Default},
        {u"Dict.Locations"_s, &ORVDicts.Locations.Value, dicts.Locations.Default},
        {u"Dict.Owners"_s, &ORVDicts.Owners.Value, dicts.Owners.Default},
        {u"Dict.Stores"_s, &ORVDicts.Stores.Value, dicts.Stores.Default},
        {u"Dict.Grades"_s, &ORVDicts.Grades.Value, dicts.Grades.Default},
        {u"Dict.GradeServices"_s, &ORVDicts.GradeServices.Value, dicts.GradeServices.Default},
        {u"CustomFieldsEnabled"_s, &CustomFieldsEnabled, false},
    };
    for (int n = 0; n < cCustomFieldCount; ++n) {
        const QString base = u"CustomField%1"_s.arg(n);
        table.push_back(
            {base + u".DisplayName"_s, &ORVCustomFields[static_cast<std::size_t>(n)].DisplayName, base});
    }
    for (int n = 0; n < cCustomFieldCount; ++n) {
        table.push_back(
            {u"CustomField%1.DataType"_s.arg(n), &ORVCustomFields[static_cast<std::size_t>(n)].DataType, 0});
    }
    for (int n = 0; n < cCustomFieldCount; ++n) {
        table.push_back({u"CustomField%1.Enabled"_s.arg(n),
                         &ORVCustomFields[static_cast<std::size_t>(n)].Enabled, false});
    }
    return table;
}

void ReadEntry(TZTCustomSettings& store, const TEntry& entry)
{
    std::visit(
        [&](auto* target) {
            using T = std::remove_pointer_t<decltype(target)>;
            if constexpr (std::is_same_v<T, QString>) {
                *target = store.GetStringValue(entry.name, entry.defaultValue.toString());
            } else if constexpr (std::is_same_v<T, int>) {
                *target = store.GetIntValue(entry.name, entry.defaultValue.toInt());
            } else if constexpr (std::is_same_v<T, bool>) {
                *target = store.GetBoolValue(entry.name, entry.defaultValue.toBool());
            } else {
                *target = store.GetFloatValue(entry.name, entry.defaultValue.toDouble());
            }
        },
        entry.target);
}

// Puts the entry's default into its variable.
void ResetEntry(const TEntry& entry)
{
    std::visit(
        [&](auto* target) {
            using T = std::remove_pointer_t<decltype(target)>;
            if constexpr (std::is_same_v<T, QString>) {
                *target = entry.defaultValue.toString();
            } else if constexpr (std::is_same_v<T, int>) {
                *target = entry.defaultValue.toInt();
            } else if constexpr (std::is_same_v<T, bool>) {
                *target = entry.defaultValue.toBool();
            } else {
                *target = entry.defaultValue.toDouble();
            }
        },
        entry.target);
}

void WriteEntry(TZTCustomSettings& store, const TEntry& entry)
{
    std::visit(
        [&](auto* target) {
            using T = std::remove_pointer_t<decltype(target)>;
            if constexpr (std::is_same_v<T, QString>) {
                store.SetStringValue(entry.name, entry.defaultValue.toString(), *target);
            } else if constexpr (std::is_same_v<T, int>) {
                store.SetIntValue(entry.name, entry.defaultValue.toInt(), *target);
            } else if constexpr (std::is_same_v<T, bool>) {
                store.SetBoolValue(entry.name, entry.defaultValue.toBool(), *target);
            } else {
                store.SetFloatValue(entry.name, entry.defaultValue.toDouble(), *target);
            }
        },
        entry.target);
}

void LoadNamedLanguage(const QString& name)
{
    if (!LoadLanguage(name)) {
        LoadBuiltInLanguage(u"ENGLISHLANG"_s, cDefaultLanguage);
    }
}

} // namespace

TORVDicts DefaultDicts()
{
    QStringList grades{u"Not graded"_s};
    for (int grade = 70; grade >= 60; --grade) {
        grades << u"MS%1"_s.arg(grade);
    }
    for (int grade = 70; grade >= 60; --grade) {
        grades << u"PF%1"_s.arg(grade);
    }
    TORVDicts dicts;
    dicts.Conditions =
        MakeDict({u"Brilliant uncirculated (BU)"_s, u"Uncirculated (Unc)"_s, u"About Uncirculated (AU)"_s,
                  u"Poor (PO)"_s, u"Fair (Fr)"_s, u"Almost Good (AG)"_s, u"Good (G)"_s, u"Very Good (VG)"_s,
                  u"Fine (F)"_s, u"Very Fine (VF)"_s, u"Extremely Fine (EF)"_s, u"Circulated"_s});
    dicts.Purities = MakeDict(
        {u".999"_s, u".9999"_s, u".99999"_s, u".900"_s, u".986"_s, u".916"_s, u".9166"_s, u".9167"_s});
    dicts.Edges =
        MakeDict({u"Plain"_s, u"Grooved"_s, u"Reeded"_s, u"Milled"_s, u"Serrated"_s, u"Inscribed"_s});
    dicts.Statuses = MakeDict({u"In collection"_s, u"Wanted"_s, u"Waiting for delivery"_s});
    dicts.Packagings = MakeDict({u"No packaging"_s, u"Coin box"_s, u"Coin tube"_s, u"Assay card"_s,
                                 u"Plastic capsule"_s, u"Plastic sealed package"_s, u"Slabbed"_s});
    dicts.Locations = MakeDict({u"Vault"_s, u"Secret location #1"_s, u"Secret location #2"_s});
    dicts.Owners = MakeDict({u"Me"_s});
    dicts.Stores =
        MakeDict({u"Local coin shop"_s, u"Apmex"_s, u"SD Bullion"_s, u"JM Bullion"_s, u"GoldSilver"_s,
                  u"Coin Invest"_s, u"Bullion By Post"_s, u"Silver Gold Bull"_s, u"Provident Metals"_s});
    dicts.Grades = MakeDict(grades);
    dicts.GradeServices = MakeDict({u"Not graded"_s, u"PCGS"_s, u"NGC"_s, u"ICG"_s, u"ANACS"_s});
    return dicts;
}

QString DefaultCurrency()
{
    const QString code = QLocale::system().currencySymbol(QLocale::CurrencyIsoCode).trimmed();
    return code.isEmpty() ? u"USD"_s : code;
}

TOEMInfo ReadOEMInfo(const QString& fileName)
{
    TOEMInfo info;
    try {
        QFile file(fileName);
        if (file.open(QIODevice::ReadOnly)) {
            // The file may come enciphered with an installation key; a plain XML file is read as it
            // stands, which is the form this program is delivered with.
            const QByteArray bytes = file.readAll();
            if (const std::optional<QDomDocument> document = ParseXMLText(QString::fromUtf8(bytes))) {
                const QDomElement root = document->documentElement();
                info.Name = GetXMLAttribute(root, u"Name"_s);
                info.HomepageLink = GetXMLAttribute(root, u"HomepageLink"_s);
                info.SupportLink = GetXMLAttribute(root, u"SupportLink"_s);
                info.Company = GetXMLAttribute(root, u"Company"_s);
                info.ShortCompanyName = GetXMLAttribute(root, u"ShortCompanyName"_s);
                info.Product = GetXMLAttribute(root, u"Product"_s);
            }
        }
    } catch (const std::exception&) {
        // An unreadable branding file leaves the record as far as it got.
    }
    if (info.Company.trimmed().isEmpty()) {
        info.Company = cDefaultCompany;
    }
    if (info.Product.trimmed().isEmpty()) {
        info.Product = cDefaultProduct;
    }
    return info;
}

QString SettingsPathFor(const TOEMInfo& info)
{
    return u"Software\\"_s + info.Company + u'\\' + info.Product;
}

QString SettingsRootPath()
{
    if (g_rootPath.isEmpty()) {
        return SettingsPathFor(OEMInfo.Company.isEmpty() ? ReadOEMInfo({}) : OEMInfo);
    }
    return g_rootPath;
}

QString LayoutSettingsPath()
{
    return SettingsRootPath() + u"\\Layout"_s;
}

TZTCustomSettings& SettingsStore()
{
    if (!g_store) {
        g_rootPath = SettingsRootPath();
        g_store = std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, g_rootPath);
    }
    return *g_store;
}

void SetSettingsStore(std::unique_ptr<TZTCustomSettings> store)
{
    g_store = std::move(store);
    if (auto* registry = dynamic_cast<TZTRegistrySettings*>(g_store.get())) {
        g_rootPath = registry->Path();
    }
}

void InitializeSettings()
{
    OEMInfo = ReadOEMInfo(GetDataFolder() + u"reg.enc"_s);
    g_rootPath = SettingsPathFor(OEMInfo);
    g_store = std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, g_rootPath);
    LoadSettings();
}

void FinalizeSettings()
{
    if (g_store) {
        SaveSettings();
        g_store.reset();
    }
}

void LoadSettings()
{
    TZTCustomSettings& store = SettingsStore();
    const TORVDicts dicts = DefaultDicts();
    for (const TEntry& entry : SettingsTable()) {
        try {
            ReadEntry(store, entry);
        } catch (const std::exception&) {
            // A value stored in another form (a text where a number belongs, a number out of the
            // 32-bit range, a float for an integer) reads as its default, so that a hand-edited
            // store cannot stop the program from starting; the next save writes it soundly.
            ResetEntry(entry);
        }
        if (entry.name == cLanguageKey) {
            LoadNamedLanguage(g_languageName);
        }
    }
    ORVDicts.Conditions.Default = dicts.Conditions.Default;
    ORVDicts.Purities.Default = dicts.Purities.Default;
    ORVDicts.Edges.Default = dicts.Edges.Default;
    ORVDicts.Statuses.Default = dicts.Statuses.Default;
    ORVDicts.Packagings.Default = dicts.Packagings.Default;
    ORVDicts.Locations.Default = dicts.Locations.Default;
    ORVDicts.Owners.Default = dicts.Owners.Default;
    ORVDicts.Stores.Default = dicts.Stores.Default;
    ORVDicts.Grades.Default = dicts.Grades.Default;
    ORVDicts.GradeServices.Default = dicts.GradeServices.Default;
}

void SaveSettings()
{
    TZTCustomSettings& store = SettingsStore();
    g_languageName = CurrentLanguage();
    const std::vector<TEntry> table = SettingsTable();
    auto writeNamed = [&](const QString& name) {
        for (const TEntry& entry : table) {
            if (entry.name == name) {
                WriteEntry(store, entry);
            }
        }
    };
    writeNamed(cLanguageKey);
    writeNamed(cDBPathKey);
    for (const TEntry& entry : table) {
        if (entry.name != cLanguageKey && entry.name != cDBPathKey) {
            WriteEntry(store, entry);
        }
    }
}

QString ReadDefaultDBFolder()
{
    return SettingsStore().GetStringValue(u"DefaultDBFolder"_s, QString());
}

QString ReadCatalogueServer()
{
    return SettingsStore().GetStringValue(u"CatalogueServer"_s, QString());
}
