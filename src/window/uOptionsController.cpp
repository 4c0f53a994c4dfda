#include "uOptionsController.h"

#include "uMainCommands.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace {

const QString cBuiltInLanguage = u"English"_s;

bool InRange(int index, qsizetype count)
{
    return index >= 0 && index < count;
}

} // namespace

const QStringList& OptionsCurrencies()
{
    static const QStringList currencies = [] {
        QStringList list = {u"USD"_s, u"EUR"_s, u"GBP"_s, u"CAD"_s, u"AUD"_s, u"JPY"_s,
                            u"DKK"_s, u"SEK"_s, u"NZD"_s, u"PLN"_s, u"RUB"_s, QString()};
        const QString rest = u"AED AFN ALL AMD ANG AOA ARS AWG AZN BAM BBD BDT BGN BHD BIF BMD BND BOB BRL "
                             u"BSD BTN BWP BYN BZD "
                             u"CDF CHF CLF CLP CNH CNY COP CRC CUC CUP CVE CZK DJF DOP DZD EGP ERN ETB FJD "
                             u"FKP GEL GGP GHS GIP "
                             u"GMD GNF GTQ GYD HKD HNL HRK HTG HUF IDR ILS IMP INR IQD IRR ISK JEP JMD JOD "
                             u"KES KGS KHR KMF KPW "
                             u"KRW KWD KYD KZT LAK LBP LKR LRD LSL LYD MAD MDL MGA MKD MMK MNT MOP MRO MRU "
                             u"MUR MVR MWK MXN MYR "
                             u"MZN NAD NGN NIO NOK NPR OMR PAB PEN PGK PHP PKR PYG QAR RON RSD RWF SAR SBD "
                             u"SCR SDG SGD SHP SLL "
                             u"SOS SRD SSP STD STN SVC SYP SZL THB TJS TMT TND TOP TRY TTD TWD TZS UAH UGX "
                             u"UYU UZS VEF VES VND "
                             u"VUV WST YER ZAR ZMW ZWL"_s;
        list << rest.split(u' ');
        return list;
    }();
    return currencies;
}

bool RestoreLanguage(const QString& fileName)
{
    if (LoadLanguage(fileName)) {
        return true;
    }
    return fileName.compare(cBuiltInLanguage, Qt::CaseInsensitive) == 0 &&
           LoadBuiltInLanguage(u"ENGLISHLANG"_s, cBuiltInLanguage);
}

// ---- TOptionsController ----------------------------------------------------------------------------

TOptionsController::TOptionsController(QObject* mainWindow, QObject* parent)
    : QObject(parent), m_mainWindow(mainWindow)
{
    m_values.Language = CurrentLanguage();
    m_values.Currency = Currency;
    m_values.ThemeIndex = ThemeIndex;
    m_values.AccentIndex = ThemeColorSchemeAccentIndex;
    m_values.CustomFieldsEnabled = CustomFieldsEnabled;
    m_values.CustomFields = ORVCustomFields;
    m_values.DefaultValues = ORVDefaultValues;
    m_values.Proxy = InetAccess == cInetAccessProxy;
    m_values.ProxyHost = InetProxyHost;
    m_values.ProxyPort = InetProxyPort < 0 ? 0 : InetProxyPort;
    m_values.ProxyUsername = InetProxyUsername;
    m_values.ProxyPassword = InetProxyPassword;
    m_values.ProxyAuth = !InetProxyUsername.isEmpty();

    m_languages = ListLanguages();
    if (LanguageIndex(m_values.Language) < 0) {
        TLang current;
        current.FileName = m_values.Language;
        current.Name =
            XMLLanguage().DisplayName().isEmpty() ? m_values.Language : XMLLanguage().DisplayName();
        m_languages.prepend(current);
    }
}

TOptionsEnablement TOptionsController::Enablement() const
{
    return {m_values.Proxy, m_values.ProxyAuth, m_values.CustomFieldsEnabled};
}

int TOptionsController::LanguageIndex(const QString& fileName) const
{
    for (int i = 0; i < m_languages.size(); ++i) {
        if (m_languages.at(i).FileName.compare(fileName, Qt::CaseInsensitive) == 0) {
            return i;
        }
    }
    return -1;
}

int TOptionsController::CurrencyIndex(const QString& currency)
{
    return int(OptionsCurrencies().indexOf(currency));
}

bool TOptionsController::SetLanguage(const QString& fileName)
{
    if (fileName.compare(CurrentLanguage(), Qt::CaseInsensitive) == 0) {
        return true;
    }
    if (!RestoreLanguage(fileName)) {
        return false;
    }
    m_values.Language = CurrentLanguage();
    emit LanguageSwitched();
    if (m_mainWindow) {
        QCoreApplication::postEvent(m_mainWindow, new QEvent(MainEventType(TMainEvent::LanguageChanged)));
    }
    return true;
}

bool TOptionsController::SetCurrency(const QString& currency)
{
    if (CurrencyIndex(currency) < 0) {
        return false;
    }
    m_values.Currency = currency;
    return true;
}

void TOptionsController::SetThemeIndex(int index)
{
    if (index == m_values.ThemeIndex) {
        return;
    }
    m_values.ThemeIndex = index;
    PostThemePreview();
}

void TOptionsController::SetAccentIndex(int index)
{
    if (index == m_values.AccentIndex) {
        return;
    }
    m_values.AccentIndex = index;
    PostThemePreview();
}

void TOptionsController::PostThemePreview()
{
    if (!m_mainWindow || !InRange(m_values.ThemeIndex, Themes().size()) ||
        !InRange(m_values.AccentIndex, Accents().size())) {
        return;
    }
    QCoreApplication::postEvent(m_mainWindow,
                                new TThemePreviewEvent(m_values.ThemeIndex, m_values.AccentIndex));
}

void TOptionsController::SetCustomFieldsEnabled(bool enabled)
{
    const TOptionsEnablement before = Enablement();
    m_values.CustomFieldsEnabled = enabled;
    SetEnablementChanged(before);
}

void TOptionsController::SetCustomFieldEnabled(int n, bool enabled)
{
    if (InRange(n, cCustomFieldCount)) {
        m_values.CustomFields[std::size_t(n)].Enabled = enabled;
    }
}

void TOptionsController::SetCustomFieldDisplayName(int n, const QString& name)
{
    if (InRange(n, cCustomFieldCount)) {
        m_values.CustomFields[std::size_t(n)].DisplayName = name;
    }
}

void TOptionsController::SetCustomFieldDataType(int n, int dataType)
{
    if (InRange(n, cCustomFieldCount)) {
        m_values.CustomFields[std::size_t(n)].DataType = dataType;
    }
}

void TOptionsController::SetProxy(bool proxy)
{
    const TOptionsEnablement before = Enablement();
    m_values.Proxy = proxy;
    SetEnablementChanged(before);
}

void TOptionsController::SetProxyAuth(bool on)
{
    const TOptionsEnablement before = Enablement();
    m_values.ProxyAuth = on;
    SetEnablementChanged(before);
}

void TOptionsController::SetEnablementChanged(const TOptionsEnablement& before)
{
    const TOptionsEnablement now = Enablement();
    if (!(now == before)) {
        emit EnablementChanged(now);
    }
}

void TOptionsController::StoreAndSave()
{
    ThemeColorSchemeAccentIndex = m_values.AccentIndex;
    ThemeIndex = m_values.ThemeIndex;
    ORVDefaultValues = m_values.DefaultValues;
    InetAccess = m_values.Proxy ? cInetAccessProxy : 1;
    InetProxyHost = m_values.ProxyHost;
    InetProxyPort = m_values.ProxyPort;
    // The switch only enables the boxes: what they hold is stored as it stands.
    InetProxyUsername = m_values.ProxyUsername;
    InetProxyPassword = m_values.ProxyPassword;
    CustomFieldsEnabled = m_values.CustomFieldsEnabled;
    ORVCustomFields = m_values.CustomFields;
    Currency = m_values.Currency;
    SaveSettings();
}

// ---- The main window's part -----------------------------------------------------------------------

bool RunOptionsDialog(TOptionsWindowSteps& window, TOptionsPage page)
{
    const QString noted = CurrentLanguage();
    const bool ok = window.ExecuteOptionsDialog(page);
    if (!ok && noted.compare(CurrentLanguage(), Qt::CaseInsensitive) != 0) {
        RestoreLanguage(noted);
    }
    window.TranslateUI();
    window.ApplyNonClientDrawing(ThemeNonClientDrawing);
    window.UpdateActiveViewData();
    window.ApplyTheme(ThemeIndex, ThemeColorSchemeAccentIndex);
    window.ApplyCustomFields();
    return ok;
}
