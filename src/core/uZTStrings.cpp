#include "uZTStrings.h"

#include "uZTTypes.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QXmlStreamReader>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

// Registers the compiled-in languages of this library; the resource object of a static
// library is only linked in when something refers to it.
static void initLanguageResources()
{
    static const bool done = [] {
        Q_INIT_RESOURCE(uZTStrings);
        return true;
    }();
    Q_UNUSED(done);
}

namespace {

// A 16 by 11 grey flag with a darker border.
constexpr char c_defaultFlag[] =
    "iVBORw0KGgoAAAANSUhEUgAAABAAAAALCAIAAAD5gJpuAAAAGElEQVR42mNoIBEwAPEDosGohkGlgSQAAE"
    "DAldBXTS2wAAAAAElFTkSuQmCC";

// Where compiled-in languages live in the resource tree.
const QString c_resourcePrefix = u":/lang/"_s;

// What a language document holds: the root's attributes and, when asked for, the string table.
struct TParsedLanguage
{
    QXmlStreamAttributes rootAttributes;
    QHash<QString, QString> strings;
};

// The value of the first attribute whose name matches in any letter case.
QString attributeValue(const QXmlStreamAttributes& attributes, QStringView name, const QString& fallback)
{
    for (const QXmlStreamAttribute& attribute : attributes) {
        if (attribute.name().compare(name, Qt::CaseInsensitive) == 0) {
            return attribute.value().toString();
        }
    }
    return fallback;
}

std::optional<qint32> toInteger(const QString& text)
{
    bool ok = false;
    const qint32 value = text.trimmed().toInt(&ok);
    if (!ok) {
        return std::nullopt;
    }
    return value;
}

// Elements may nest this deep inside a <string>; deeper nesting makes the file malformed.
constexpr int c_maxStringNesting = 32;

// The text of the current element and of all elements inside it, read without recursion. An
// element nested deeper than c_maxStringNesting raises an error on the reader.
QString readStringText(QXmlStreamReader& xml)
{
    QString text;
    int depth = 1;
    while (depth > 0 && !xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::Characters:
        case QXmlStreamReader::EntityReference:
            text += xml.text();
            break;
        case QXmlStreamReader::StartElement:
            if (++depth > c_maxStringNesting) {
                xml.raiseError(u"Elements nested too deep in a string"_s);
                return {};
            }
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        default:
            break;
        }
    }
    return text;
}

// Parses a whole language document. Any well-formedness error, or a document without a
// root element, gives nothing. Children of the root named "string" in any letter case
// become table entries under their upper-cased "name" attribute; other children are skipped.
std::optional<TParsedLanguage> parseLanguage(const QByteArray& data, bool withStrings)
{
    TParsedLanguage parsed;
    QXmlStreamReader xml(data);
    bool haveRoot = false;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        if (!haveRoot) {
            haveRoot = true;
            parsed.rootAttributes = xml.attributes();
            continue;
        }
        // Each child of the root is consumed whole, so every start element met here is a
        // direct child of the root.
        if (xml.name().compare(u"string", Qt::CaseInsensitive) == 0) {
            const QString key = attributeValue(xml.attributes(), u"name", QString()).toUpper();
            const QString text = readStringText(xml);
            // A key given twice keeps the later text.
            if (withStrings) {
                parsed.strings.insert(key, text);
            }
        } else {
            xml.skipCurrentElement();
        }
    }
    if (xml.hasError() || !haveRoot) {
        return std::nullopt;
    }
    return parsed;
}

std::optional<QByteArray> readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.readAll();
}

} // namespace

QByteArray DefaultFlagImage()
{
    return QByteArray(c_defaultFlag);
}

QImage TLang::FlagPicture() const
{
    QImage picture;
    if (picture.loadFromData(QByteArray::fromBase64(FlagImage), "PNG")) {
        return picture;
    }
    picture.loadFromData(QByteArray::fromBase64(DefaultFlagImage()), "PNG");
    return picture;
}

TXMLLanguage::TXMLLanguage(QObject* parent) : QObject(parent) {}

QString TXMLLanguage::EffectiveFolder() const
{
    return m_languageFolder.isEmpty() ? GetLanguageFolder() : m_languageFolder;
}

QString TXMLLanguage::LanguageFilePath(const QString& name) const
{
    return QDir(EffectiveFolder()).filePath(name + u".xml"_s);
}

bool TXMLLanguage::LoadLanguage(const QString& name)
{
    const QString path = LanguageFilePath(name);
    if (!QFileInfo(path).isFile()) {
        return false;
    }
    const std::optional<QByteArray> data = readFile(path);
    return data && LoadFromData(*data, name);
}

bool TXMLLanguage::LoadBuiltInLanguage(const QString& resource, const QString& name)
{
    initLanguageResources();
    const QString path = resource.startsWith(u':') ? resource : c_resourcePrefix + resource;
    const std::optional<QByteArray> data = readFile(path);
    return data && LoadFromData(*data, name);
}

bool TXMLLanguage::LoadFromData(const QByteArray& data, const QString& name)
{
    std::optional<TParsedLanguage> parsed = parseLanguage(data, true);
    if (!parsed) {
        return false;
    }
    const QXmlStreamAttributes& root = parsed->rootAttributes;

    m_strings = std::move(parsed->strings);
    m_displayName = attributeValue(root, u"name", name);
    if (m_displayName.isEmpty()) {
        m_displayName = name;
    }
    // A value that is not a number leaves the field as it was.
    if (const auto codePage = toInteger(attributeValue(root, u"CodePage", u"0"_s))) {
        m_codePage = *codePage;
    }
    if (const auto localeId = toInteger(attributeValue(root, u"LocaleID", u"0"_s))) {
        m_localeId = *localeId;
    }
    m_rightToLeft = attributeValue(root, u"BiDiMode", u"LeftToRight"_s).toLower() == u"righttoleft";
    if (const auto charset = toInteger(attributeValue(root, u"Charset", u"1"_s))) {
        m_charset = *charset;
    }
    m_language = name;
    return true;
}

QString TXMLLanguage::GetText(const QString& key) const
{
    return m_strings.value(key.toUpper());
}

bool TXMLLanguage::HasText(const QString& key) const
{
    return m_strings.contains(key.toUpper());
}

QStringList TXMLLanguage::Keys() const
{
    return m_strings.keys();
}

TXMLLanguage& XMLLanguage()
{
    static TXMLLanguage language;
    return language;
}

QString GetText(const QString& key)
{
    return XMLLanguage().GetText(key);
}

bool LoadLanguage(const QString& name)
{
    return XMLLanguage().LoadLanguage(name);
}

bool LoadBuiltInLanguage(const QString& resource, const QString& name)
{
    return XMLLanguage().LoadBuiltInLanguage(resource, name);
}

QString CurrentLanguage()
{
    return XMLLanguage().Language();
}

int LanguageLocaleId()
{
    return XMLLanguage().LocaleId();
}

int LanguageCharset()
{
    return XMLLanguage().Charset();
}

bool LanguageIsRightToLeft()
{
    return XMLLanguage().RightToLeft();
}

QStringList ListLanguageNames(const QString& folder)
{
    const QDir dir(folder.isEmpty() ? XMLLanguage().EffectiveFolder() : folder);
    QStringList names;
    if (!dir.exists()) {
        return names;
    }
    const QFileInfoList entries =
        dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Name);
    for (const QFileInfo& entry : entries) {
        names.append(entry.completeBaseName());
    }
    return names;
}

TLanguagesListEx2 ListLanguages(const QString& folder)
{
    const QDir dir(folder.isEmpty() ? XMLLanguage().EffectiveFolder() : folder);
    TLanguagesListEx2 languages;
    QSet<QString> seen;
    const QStringList names = ListLanguageNames(dir.path());
    for (const QString& name : names) {
        // "German.xml" and "German.txt" give the same name twice; list the language once.
        if (seen.contains(name)) {
            continue;
        }
        seen.insert(name);
        const QString path = dir.filePath(name + u".xml"_s);
        if (!QFileInfo(path).isFile()) {
            continue;
        }
        const std::optional<QByteArray> data = readFile(path);
        if (!data) {
            continue;
        }
        const std::optional<TParsedLanguage> parsed = parseLanguage(*data, false);
        if (!parsed) {
            continue;
        }
        const QXmlStreamAttributes& root = parsed->rootAttributes;
        TLang lang;
        lang.FileName = name;
        lang.Name = attributeValue(root, u"name", QString());
        if (lang.Name.isEmpty()) {
            lang.Name = name;
        }
        lang.Charset = toInteger(attributeValue(root, u"Charset", QString())).value_or(lang.Charset);
        lang.CodePage = toInteger(attributeValue(root, u"CodePage", QString())).value_or(lang.CodePage);
        lang.LocaleID = toInteger(attributeValue(root, u"LocaleID", QString())).value_or(lang.LocaleID);
        const QString flag = attributeValue(root, u"FlagImage", QString()).trimmed();
        if (!flag.isEmpty()) {
            lang.FlagImage = flag.toLatin1();
        }
        languages.append(lang);
    }
    std::stable_sort(languages.begin(), languages.end(), [](const TLang& a, const TLang& b) {
        return a.Name.compare(b.Name, Qt::CaseInsensitive) < 0;
    });
    return languages;
}

QString GetLanguageFolder()
{
    return GetDataFolder() + u"Lang/"_s;
}
