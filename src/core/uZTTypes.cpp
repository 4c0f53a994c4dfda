#include "uZTTypes.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSet>
#include <QStringDecoder>
#include <QUrl>
#include <QUuid>
#include <QXmlStreamReader>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

bool EndsWithDelimiter(const QString& path)
{
#ifdef Q_OS_WIN
    return path.endsWith(u'/') || path.endsWith(u'\\');
#else
    return path.endsWith(u'/');
#endif
}

QLocale PlainLocale()
{
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale;
}

[[noreturn]] void RaiseFormatError(const QString& format)
{
    throw std::invalid_argument(
        u"Format '%1' invalid or incompatible with argument"_s.arg(format).toStdString());
}

bool IsIntegerVariant(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Bool:
        return true;
    default:
        return false;
    }
}

bool IsNumberVariant(const QVariant& value)
{
    const int type = value.typeId();
    return IsIntegerVariant(value) || type == QMetaType::Double || type == QMetaType::Float;
}

} // namespace

QString GetExeFolder()
{
    return WithTrailingDelimiter(QCoreApplication::applicationDirPath());
}

QString GetDataFolder()
{
    const QString exeFolder = GetExeFolder();
    if (QFileInfo(exeFolder + u"Lang"_s).isDir()) {
        return exeFolder;
    }
    const QString installed = QDir::cleanPath(exeFolder + u"../share/orvane"_s);
    return WithTrailingDelimiter(QFileInfo(installed).isDir() ? installed : exeFolder);
}

QString WithTrailingDelimiter(const QString& path)
{
    return EndsWithDelimiter(path) ? path : path + u'/';
}

QString EnsureFolder(const QString& path)
{
    if (!path.isEmpty() && !QFileInfo(path).isDir()) {
        QDir().mkpath(path);
    }
    return WithTrailingDelimiter(path);
}

bool DeleteFileIfExists(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink()) {
        return false;
    }
    return QFile::remove(path);
}

bool CopyFileOver(const QString& source, const QString& target)
{
    const QFileInfo sourceInfo(source);
    if (!sourceInfo.isFile()) {
        return QFileInfo::exists(target);
    }
    const QFileInfo targetInfo(target);
    if (targetInfo.exists() && sourceInfo.canonicalFilePath() == targetInfo.canonicalFilePath()) {
        // Copying a file onto itself: it is already in place.
        return true;
    }
    // Copy beside the target first, so a failed copy leaves the old target as it was.
    const QString partial = target + u".copying"_s;
    QFile::remove(partial);
    if (!QFile::copy(source, partial)) {
        return QFileInfo::exists(target);
    }
    if (targetInfo.exists() && !QFile::remove(target)) {
        QFile::remove(partial);
        return true;
    }
    if (!QFile::rename(partial, target)) {
        QFile::remove(partial);
    }
    return QFileInfo::exists(target);
}

qint64 GetFileSize(const QString& path)
{
    const QFileInfo info(path);
    return info.isFile() ? info.size() : 0;
}

QString FileNameNoExt(const QString& path)
{
    QString name = path;
#ifdef Q_OS_WIN
    name.replace(u'\\', u'/');
#endif
    name = name.mid(name.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot < 0 ? name : name.left(dot);
}

QStringList ListFolder(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                                  QDir::Name);
}

QString LoadTextFile(const QString& path, std::optional<QStringConverter::Encoding> encoding)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray bytes = file.readAll();
    QStringConverter::Encoding chosen = QStringConverter::Utf8;
    if (encoding) {
        chosen = *encoding;
    } else if (const auto fromBom = QStringConverter::encodingForData(bytes)) {
        chosen = *fromBom;
    }
    QStringDecoder decoder(chosen, QStringConverter::Flag::Default);
    return decoder.decode(bytes);
}

QString GetTempFolder()
{
    const QString temp = QDir::tempPath();
    if (temp.isEmpty()) {
        return {};
    }
    const QString canonical = QFileInfo(temp).canonicalFilePath();
    return WithTrailingDelimiter(canonical.isEmpty() ? temp : canonical);
}

QString GetTempFileName(const QString& extension, const QString& folder)
{
    const QString base = EnsureFolder(folder.isEmpty() ? GetTempFolder() : folder);
    QString name;
    do {
        name = base + QUuid::createUuid().toString(QUuid::WithBraces).mid(1, 8) + extension;
    } while (QFileInfo::exists(name) || QFileInfo(name).isSymLink());
    return name;
}

void OpenInBrowser(const QString& url)
{
    QUrl target;
    if (QFileInfo::exists(url)) {
        target = QUrl::fromLocalFile(QFileInfo(url).absoluteFilePath());
    } else {
        target = QUrl::fromUserInput(url);
    }
    if (target.isValid()) {
        QDesktopServices::openUrl(target);
    }
}

QString GetFileVersionText(const QString&)
{
    return QString::asprintf("%d.%d.%d.%d", ORV_VERSION_MAJOR, ORV_VERSION_MINOR, ORV_VERSION_PATCH,
                             ORV_VERSION_TWEAK);
}

QString FormatSize(qint64 bytes)
{
    struct TUnit
    {
        qint64 size;
        const char16_t* suffix;
    };
    static constexpr TUnit units[] = {
        {1099511627776LL, u" Tb"}, {1073741824LL, u" Gb"}, {1048576LL, u" Mb"}, {1024LL, u" Kb"}};
    for (const TUnit& unit : units) {
        if (bytes >= unit.size) {
            return PlainLocale().toString(static_cast<double>(bytes) / static_cast<double>(unit.size), 'f',
                                          1) +
                   QString::fromUtf16(unit.suffix);
        }
    }
    return QString::number(bytes) + u" bytes"_s;
}

QString URLEncode(const QString& text)
{
    static constexpr char16_t hexDigits[] = u"0123456789ABCDEF";
    const QByteArray utf8 = text.toUtf8();
    QString result;
    result.reserve(utf8.size() * 3);
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
            byte == '!' || byte == '$' || byte == '\'' || byte == '(' || byte == ')' || byte == '*' ||
            byte == '-' || byte == '.' || byte == '_' || byte == '@') {
            result += QLatin1Char(static_cast<char>(byte));
        } else if (byte == ' ') {
            result += u'+';
        } else {
            result += u'%';
            result += QChar(hexDigits[byte >> 4]);
            result += QChar(hexDigits[byte & 0x0F]);
        }
    }
    return result;
}

QByteArray Base64Decode(const QString& text)
{
    if (text.size() % 4 != 0) {
        return {};
    }
    auto sextet = [](QChar c) -> int {
        const char16_t u = c.unicode();
        if (u >= u'A' && u <= u'Z') {
            return u - u'A';
        }
        if (u >= u'a' && u <= u'z') {
            return u - u'a' + 26;
        }
        if (u >= u'0' && u <= u'9') {
            return u - u'0' + 52;
        }
        if (u == u'+') {
            return 62;
        }
        if (u == u'/') {
            return 63;
        }
        return -1;
    };
    QByteArray result;
    result.reserve(text.size() / 4 * 3);
    for (qsizetype group = 0; group < text.size(); group += 4) {
        quint32 bits = 0;
        int outside = 0;
        for (int i = 0; i < 4; ++i) {
            const int value = sextet(text.at(group + i));
            if (value < 0) {
                ++outside;
            }
            bits = (bits << 6) | static_cast<quint32>(value < 0 ? 0 : value);
        }
        const int count = 3 - outside;
        for (int i = 0; i < count; ++i) {
            result.append(static_cast<char>((bits >> (16 - 8 * i)) & 0xFF));
        }
    }
    return result;
}

QString FormatText(const QString& format, const QVariantList& args)
{
    QString result;
    result.reserve(format.size() + 16);
    qsizetype argIndex = 0;
    qsizetype i = 0;
    const qsizetype length = format.size();
    while (i < length) {
        const QChar c = format.at(i);
        if (c != u'%') {
            result += c;
            ++i;
            continue;
        }
        const qsizetype start = i++;
        if (i < length && format.at(i) == u'%') {
            result += u'%';
            ++i;
            continue;
        }
        auto readNumber = [&]() -> int {
            int value = -1;
            while (i < length && format.at(i).isDigit()) {
                value = (value < 0 ? 0 : value * 10) + format.at(i).digitValue();
                ++i;
            }
            return value;
        };
        int number = readNumber();
        if (number >= 0 && i < length && format.at(i) == u':') {
            argIndex = number;
            ++i;
            number = -1;
        }
        bool leftAlign = false;
        if (number < 0 && i < length && format.at(i) == u'-') {
            leftAlign = true;
            ++i;
        }
        const int width = number >= 0 ? number : readNumber();
        int precision = -1;
        if (i < length && format.at(i) == u'.') {
            ++i;
            precision = qMax(0, readNumber());
        }
        if (i >= length) {
            RaiseFormatError(format);
        }
        const char16_t type = format.at(i).toLower().unicode();
        ++i;
        if (argIndex >= args.size()) {
            RaiseFormatError(format.mid(start, i - start));
        }
        const QVariant& arg = args.at(argIndex++);
        const QLocale locale = PlainLocale();
        QString piece;
        switch (type) {
        case u's':
            piece = arg.toString();
            if (precision >= 0) {
                piece.truncate(precision);
            }
            break;
        case u'd':
        case u'u':
        case u'x': {
            if (!IsIntegerVariant(arg)) {
                RaiseFormatError(format.mid(start, i - start));
            }
            const qint64 value = arg.toLongLong();
            const bool negative = type == u'd' && value < 0;
            if (type == u'x') {
                piece = QString::number(static_cast<quint64>(value) &
                                            (arg.typeId() == QMetaType::Int ? 0xFFFFFFFFULL : ~0ULL),
                                        16)
                            .toUpper();
            } else if (type == u'u') {
                piece = QString::number(static_cast<quint64>(value) &
                                        (arg.typeId() == QMetaType::Int ? 0xFFFFFFFFULL : ~0ULL));
            } else {
                piece =
                    QString::number(negative ? -static_cast<quint64>(value) : static_cast<quint64>(value));
            }
            if (precision > piece.size()) {
                piece = QString(precision - piece.size(), u'0') + piece;
            }
            if (negative) {
                piece.prepend(u'-');
            }
            break;
        }
        case u'f':
        case u'e':
        case u'g':
        case u'n': {
            if (!IsNumberVariant(arg)) {
                RaiseFormatError(format.mid(start, i - start));
            }
            const double value = arg.toDouble();
            if (type == u'n') {
                piece = QLocale().toString(value, 'f', precision < 0 ? 2 : precision);
            } else if (type == u'f') {
                piece = locale.toString(value, 'f', precision < 0 ? 2 : precision);
            } else if (type == u'e') {
                piece = locale.toString(value, 'e', precision < 0 ? 15 : precision);
            } else {
                piece = locale.toString(value, 'g', precision < 0 ? 15 : precision);
            }
            break;
        }
        default:
            RaiseFormatError(format.mid(start, i - start));
        }
        if (width > piece.size()) {
            const QString pad(width - piece.size(), u' ');
            piece = leftAlign ? piece + pad : pad + piece;
        }
        result += piece;
    }
    return result;
}

QString GetXMLAttribute(const QDomNode& node, const QString& name, const QString& defaultValue)
{
    const QDomNamedNodeMap attributes = node.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        const QDomNode attribute = attributes.item(i);
        if (attribute.nodeName().compare(name, Qt::CaseInsensitive) == 0) {
            const QString value = attribute.nodeValue();
            return value.isEmpty() ? defaultValue : value;
        }
    }
    return defaultValue;
}

namespace {

// The element that follows element in document order, or a null element at the end.
QDomElement NextInDocumentOrder(const QDomElement& element)
{
    const QDomElement child = element.firstChildElement();
    if (!child.isNull()) {
        return child;
    }
    for (QDomNode node = element; !node.isNull(); node = node.parentNode()) {
        const QDomElement sibling = node.nextSiblingElement();
        if (!sibling.isNull()) {
            return sibling;
        }
    }
    return {};
}

// The parser's node type keeps attributes in no order, so a name that a document gives twice in
// different letter cases would be found by chance. Of each such group only the attribute that
// comes first in the text is kept, read again in order with a stream reader.
void KeepFirstOfRepeatedAttributes(QDomDocument& document, const QString& text)
{
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    QDomElement element = document.documentElement();
    while (!reader.atEnd() && !element.isNull()) {
        if (reader.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const QXmlStreamAttributes attributes = reader.attributes();
        if (attributes.size() > 1) {
            QSet<QString> seen;
            for (const QXmlStreamAttribute& attribute : attributes) {
                const QString name = attribute.qualifiedName().toString();
                if (seen.contains(name.toCaseFolded())) {
                    element.removeAttribute(name);
                }
                seen.insert(name.toCaseFolded());
            }
        }
        element = NextInDocumentOrder(element);
    }
}

} // namespace

std::optional<QDomDocument> ParseXMLText(const QString& text)
{
    QDomDocument document;
    if (!document.setContent(text) || document.documentElement().isNull()) {
        return std::nullopt;
    }
    KeepFirstOfRepeatedAttributes(document, text);
    return document;
}
