#pragma once

#include "uZTCustomSettings.h"

#include <QString>

#include <array>
#include <memory>

// The application settings: plain process-wide variables, read once at start by LoadSettings()
// and written back by SaveSettings(). The rest of the program reads the variables, never the store.

// The branding record, read from reg.enc beside the executable.
struct TOEMInfo
{
    QString Name;
    QString Company;
    QString ShortCompanyName;
    QString Product;
    QString HomepageLink;
    QString SupportLink;
};

// The values a new item gets (DefaultValues.*).
struct TORVDefaultValues
{
    int Qty = 1;
    QString Condition = QStringLiteral("Brilliant uncirculated (BU)");
    QString Status = QStringLiteral("In collection");
    QString Packaging = QStringLiteral("Plastic capsule");
    QString Location = QStringLiteral("Vault");
    QString Owner = QStringLiteral("Me");
    QString Store = QStringLiteral("Local coin shop");
    double Rating = 5.0;
    QString Grade = QStringLiteral("Not graded");
    QString GradeService = QStringLiteral("Not graded");
};

// A suggestion list: one entry per line, every line ended by CR LF.
struct TDict
{
    QString Value;   // the current list
    QString Default; // the list the program is delivered with
};

// The ten simple dictionaries (Dict.*).
struct TORVDicts
{
    TDict Purities;
    TDict Edges;
    TDict Conditions;
    TDict Statuses;
    TDict Packagings;
    TDict Locations;
    TDict Owners;
    TDict Stores;
    TDict Grades;
    TDict GradeServices;
};

// One custom field definition (CustomField<n>.*); index n describes the column Custom<n+1>.
struct TORVCustomField
{
    QString DisplayName;
    int DataType = 0;
    bool Enabled = false;
};

inline constexpr int cCustomFieldCount = 10;
using TORVCustomFields = std::array<TORVCustomField, cCustomFieldCount>;

// ---- The settings variables ----------------------------------------------------------------------

extern TOEMInfo OEMInfo;

extern QString DBPath;                     // DBPath
extern bool ThemeNonClientDrawing;         // Theme.NonClientDrawing
extern int ThemeIndex;                     // Theme.ThemeIndex
extern int ThemeColorSchemeAccentIndex;    // Theme.ColorSchemeAccentIndex
extern int LargeWidth;                     // LargeWidth
extern int LargeHeight;                    // LargeHeight
extern QString InetProxyHost;              // Inet.ProxyHost
extern int InetProxyPort;                  // Inet.ProxyPort
extern QString InetProxyUsername;          // Inet.ProxyUsername
extern QString InetProxyPassword;          // Inet.ProxyPassword
extern int InetAccess;                     // Inet.InetAccess: 2 proxy, anything else direct
extern QString Currency;                   // Currency
extern int CurrentView;                    // CurrentView
extern int MainFormLeft;                   // MainForm.Left
extern int MainFormTop;                    // MainForm.Top
extern int MainFormWidth;                  // MainForm.Width
extern int MainFormHeight;                 // MainForm.Height
extern bool MainFormMaximized;             // MainForm.Maximized
extern int ThumbSize;                      // ThumbSize
extern int FrameWidth;                     // Frame.Width
extern bool FrameClosed;                   // Frame.Closed
extern int FrameThumbsHeight;              // Frame.Thumbs.Height
extern bool FrameThumbsClosed;             // Frame.Thumbs.Closed
extern int StatsCurrentView;               // Stats.CurrentView
extern int StatsGroupByFieldIndex;         // Stats.GroupByFieldIndex
extern TORVDefaultValues ORVDefaultValues; // DefaultValues.*
extern TORVDicts ORVDicts;                 // Dict.*
extern bool CustomFieldsEnabled;           // CustomFieldsEnabled
extern TORVCustomFields ORVCustomFields;   // CustomField0.* .. CustomField9.*

// Inet.InetAccess value for a connection through the proxy.
inline constexpr int cInetAccessProxy = 2;

// ---- Operations ----------------------------------------------------------------------------------

// The branding record of fileName (plain XML; root attributes Name, HomepageLink, SupportLink,
// Company, ShortCompanyName, Product). Company and Product fall back to "Brenmoor" and "Orvane"
// when the file is missing or unreadable or leaves them empty.
TOEMInfo ReadOEMInfo(const QString& fileName);
// "Software\<Company>\<Product>"
QString SettingsPathFor(const TOEMInfo& info);

// The settings root of this run ("Software\Brenmoor\Orvane") and its Layout sub-key.
QString SettingsRootPath();
QString LayoutSettingsPath();

// The store of this run. Created on first use over SettingsPathFor(OEMInfo) when none is set.
TZTCustomSettings& SettingsStore();
// Replaces the store (start-up with another path, tests); nullptr frees it.
void SetSettingsStore(std::unique_ptr<TZTCustomSettings> store);

// Start-up: OEMInfo from reg.enc beside the executable, the store over its path, LoadSettings().
void InitializeSettings();
// Shutdown: SaveSettings(), then the store is freed.
void FinalizeSettings();

// Reads every key of the table into its variable (a missing value, or one that the getter refuses
// for its stored form, gives its default) and loads the language named by Language, falling back
// to the built-in English.
void LoadSettings();
// Writes every key but the read-only ones: Language (the current language) first, DBPath second,
// then the table's order.
void SaveSettings();

// The read-only keys, read from the store at each call.
QString ReadDefaultDBFolder();
// The catalogue server's address; empty means the built-in address.
QString ReadCatalogueServer();

// The locale's ISO currency code, "USD" when the locale has none.
QString DefaultCurrency();
// The lists the dictionaries are delivered with (Value and Default both set to them).
TORVDicts DefaultDicts();
