#pragma once

#include <QByteArray>
#include <QHash>
#include <QImage>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

// The language texts: every user-visible text is looked up by key at run time from one
// loaded language. A language is an XML file in the Lang folder beside the executable;
// English is also compiled in under the resource name "ENGLISHLANG".

// The base64 text of the built-in 16 by 11 pixel flag that a language without one shows.
QByteArray DefaultFlagImage();

// Describes a language file without loading it.
struct TLang
{
    QString FileName; // file name without folder and extension; the value of the Language setting
    QString Name;     // the root's name attribute, or the file name
    qint32 Charset = 1;
    qint32 CodePage = 1252;
    qint32 LocaleID = 1033;
    QByteArray FlagImage = DefaultFlagImage(); // base64 of a PNG

    // The decoded flag; the built-in picture when FlagImage does not decode.
    QImage FlagPicture() const;
};

using TLanguagesListEx2 = QList<TLang>;

// The language object: the string table of the loaded language and what its root says.
class TXMLLanguage : public QObject
{
    Q_OBJECT

public:
    explicit TXMLLanguage(QObject* parent = nullptr);

    // Loads <folder><name>.xml, the folder being LanguageFolder when set, else GetLanguageFolder().
    // A missing or malformed file gives false, and the current language stays.
    bool LoadLanguage(const QString& name);
    // Loads a compiled-in language ("ENGLISHLANG") or any ":/..." resource path.
    bool LoadBuiltInLanguage(const QString& resource, const QString& name);
    // Loads a language from the bytes of an XML document; the table is replaced only on success.
    bool LoadFromData(const QByteArray& data, const QString& name);

    // The text of a key in any letter case; empty when the key is not held.
    QString GetText(const QString& key) const;
    bool HasText(const QString& key) const;
    // The keys held, upper-cased.
    QStringList Keys() const;
    int Count() const { return static_cast<int>(m_strings.size()); }

    // An override folder for language files; empty in normal use.
    QString LanguageFolder() const { return m_languageFolder; }
    void SetLanguageFolder(const QString& folder) { m_languageFolder = folder; }
    // The folder that language files are loaded and listed from.
    QString EffectiveFolder() const;
    // The file a language of this name is loaded from.
    QString LanguageFilePath(const QString& name) const;

    // The name under which the current language was loaded.
    QString Language() const { return m_language; }
    QString DisplayName() const { return m_displayName; }
    qint32 Charset() const { return m_charset; }
    qint32 CodePage() const { return m_codePage; }
    qint32 LocaleId() const { return m_localeId; }
    bool RightToLeft() const { return m_rightToLeft; }

private:
    QString m_languageFolder;
    QString m_language;
    QString m_displayName;
    qint32 m_charset = 1;
    qint32 m_codePage = 1252;
    qint32 m_localeId = 1033;
    bool m_rightToLeft = false;
    // Upper-cased key to text.
    QHash<QString, QString> m_strings;
};

// The process-wide language object, created with nothing loaded on first use.
TXMLLanguage& XMLLanguage();

QString GetText(const QString& key);
bool LoadLanguage(const QString& name);
bool LoadBuiltInLanguage(const QString& resource, const QString& name);
QString CurrentLanguage();
int LanguageLocaleId();
int LanguageCharset();
bool LanguageIsRightToLeft();

// File names without extension of all entries of folder (the language folder when empty).
QStringList ListLanguageNames(const QString& folder = {});
// The well-formed language files of folder (the language folder when empty), sorted by Name
// without regard to case. The built-in English is listed only if the folder holds a file for it.
TLanguagesListEx2 ListLanguages(const QString& folder = {});
// The executable's folder, then "Lang", with a path delimiter at the end.
QString GetLanguageFolder();
