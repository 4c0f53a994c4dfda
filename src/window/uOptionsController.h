#pragma once

#include "uThemes.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

// The logic of the options dialog: the values its controls hold, the states that depend on them, the
// live preview of theme, accent and language, and the store of every value at OK. It owns no
// widgets; the dialog shows what it holds and hands it every change.

// The pages of the dialog, in order.
enum class TOptionsPage
{
    General,
    CustomFields,
    DefaultValues,
    ConnectionSettings
};

// The currency codes of cbCurrency, in order: the common ones, an empty entry as a divider, then the
// rest alphabetically.
const QStringList& OptionsCurrencies();

// What the controls of the dialog hold.
struct TOptionsValues
{
    QString Language; // cbLang: the file name of the language
    QString Currency; // cbCurrency
    int ThemeIndex = cDefaultThemeIndex;
    int AccentIndex = cDefaultAccentIndex;
    bool CustomFieldsEnabled = false; // cbEnableCustomFields
    TORVCustomFields CustomFields;    // TLCustomFields
    TORVDefaultValues DefaultValues;  // vgDefaultValues
    bool Proxy = false;               // rbProxy; rbDirect otherwise
    QString ProxyHost;
    int ProxyPort = 8080;
    bool ProxyAuth = false; // cbProxyAuth
    QString ProxyUsername;
    QString ProxyPassword;
};

// The controls that are enabled by others.
struct TOptionsEnablement
{
    bool ProxySettings = false;    // lgProxy, with rbProxy
    bool ProxyCredentials = false; // liProxyUsername and liProxyPassword, with cbProxyAuth
    bool CustomFieldList = false;  // TLCustomFields, with cbEnableCustomFields
    friend bool operator==(const TOptionsEnablement&, const TOptionsEnablement&) = default;
};

class TOptionsController : public QObject
{
    Q_OBJECT

public:
    // Opening: every value from its setting. The previews go to mainWindow (may be null: then
    // nothing is posted).
    explicit TOptionsController(QObject* mainWindow, QObject* parent = nullptr);

    const TOptionsValues& Values() const { return m_values; }
    TOptionsEnablement Enablement() const;

    // The languages cbLang offers: those of the language folder, and the current one first when the
    // folder lacks it.
    const TLanguagesListEx2& Languages() const { return m_languages; }
    // The index of a language, a currency, in their lists; -1 when not listed.
    int LanguageIndex(const QString& fileName) const;
    static int CurrencyIndex(const QString& currency);

    // cbLang: a language other than the current one is switched to at once; the dialog is then to
    // retranslate (LanguageSwitched) and LanguageChanged goes to the main window. False when that
    // language did not load: the current one stays.
    bool SetLanguage(const QString& fileName);
    // cbCurrency: only an entry of the list (the empty divider included) is taken.
    bool SetCurrency(const QString& currency);
    // cbTheme and cbColorSchemeAccent; with both in their lists ThemePreview goes to the main window.
    void SetThemeIndex(int index);
    void SetAccentIndex(int index);

    void SetCustomFieldsEnabled(bool enabled);
    // One row of TLCustomFields; n outside 0..9 is passed over.
    void SetCustomFieldEnabled(int n, bool enabled);
    void SetCustomFieldDisplayName(int n, const QString& name);
    void SetCustomFieldDataType(int n, int dataType);

    void SetDefaultValues(const TORVDefaultValues& values) { m_values.DefaultValues = values; }

    // rbDirect / rbProxy.
    void SetProxy(bool proxy);
    void SetProxyHost(const QString& host) { m_values.ProxyHost = host; }
    // At least 0.
    void SetProxyPort(int port) { m_values.ProxyPort = port < 0 ? 0 : port; }
    void SetProxyAuth(bool on);
    void SetProxyUsername(const QString& name) { m_values.ProxyUsername = name; }
    void SetProxyPassword(const QString& password) { m_values.ProxyPassword = password; }

    // OK: every value into its setting, then all settings saved. The language is not stored here: it
    // was switched when it was picked.
    void StoreAndSave();

signals:
    // The language changed: the dialog is to set its texts anew.
    void LanguageSwitched();
    // A switch changed what is enabled.
    void EnablementChanged(const TOptionsEnablement& enablement);

private:
    void PostThemePreview();
    void SetEnablementChanged(const TOptionsEnablement& before);

    QPointer<QObject> m_mainWindow;
    TOptionsValues m_values;
    TLanguagesListEx2 m_languages;
};

// What the main window does around the dialog. The window implements it; tests answer it.
class TOptionsWindowSteps
{
public:
    virtual ~TOptionsWindowSteps() = default;
    // Shows the dialog modally on a page; true when it ended with OK.
    virtual bool ExecuteOptionsDialog(TOptionsPage page) = 0;
    virtual void TranslateUI() = 0;
    // Theme.NonClientDrawing to the ribbon.
    virtual void ApplyNonClientDrawing(bool on) = 0;
    // The active view's data shown anew (a changed currency or label).
    virtual void UpdateActiveViewData() = 0;
    virtual void ApplyTheme(int themeIndex, int accentIndex) = 0;
    virtual void ApplyCustomFields() = 0;
};

// actOptions: notes the language, shows the dialog, restores the noted language unless it ended with
// OK, then the window's five steps after it, after OK and after Cancel alike. True after OK.
bool RunOptionsDialog(TOptionsWindowSteps& window, TOptionsPage page = TOptionsPage::General);

// Loads a language by its file name, the built-in English for the default language whose file is
// missing. False when it did not load.
bool RestoreLanguage(const QString& fileName);
