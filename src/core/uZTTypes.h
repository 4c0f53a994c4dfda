#pragma once

#include <QByteArray>
#include <QDomDocument>
#include <QDomNode>
#include <QString>
#include <QStringConverter>
#include <QStringList>
#include <QVariantList>

#include <optional>

// Grams in one troy ounce: the one conversion the program uses.
inline constexpr double TroyOunceGrams = 31.1035;

// Metal codes as stored in the collection file and used by the catalogue and the spot list.
enum TMetal : int
{
    mtGold = 0,
    mtSilver = 1,
    mtPlatinum = 2,
    mtPalladium = 3,
    mtRhodium = 4,
    mtCopper = 5,
};
inline constexpr int MetalCount = 6;

// Item type codes, stored in the collection file.
enum TCoinType : int
{
    ctCoin = 0,
    ctRectCoin = 1,
    ctRound = 2,
    ctBar = 3,
    ctDivBar = 4,
};
inline constexpr int CoinTypeCount = 5;

// Small shared helpers: files and folders, size and version texts, URL and base64 coding, XML.
// Paths use '/' as delimiter on every platform ('\' is accepted as one on Windows).

// Folder of the executable, with a delimiter at the end.
QString GetExeFolder();
// The folder of the program's data (language files, branding file): the executable's own folder
// when it holds them (a build tree), else <prefix>/share/orvane/ of an installed program.
QString GetDataFolder();
// Adds a delimiter when the path does not end in one.
QString WithTrailingDelimiter(const QString& path);
// Creates the folder with its parents when missing; returns it with a delimiter.
QString EnsureFolder(const QString& path);
// True only when the file existed and was deleted.
bool DeleteFileIfExists(const QString& path);
// Copies source over target; true when the target exists afterwards.
bool CopyFileOver(const QString& source, const QString& target);
// Size in bytes; 0 for a missing file.
qint64 GetFileSize(const QString& path);
// "C:/a/b.tar.gz" -> "b.tar"
QString FileNameNoExt(const QString& path);
// Names of all entries of the folder but "." and "..", sorted by name.
QStringList ListFolder(const QString& folder);
// The text of the file, empty when it does not exist. Without an encoding a byte order mark
// decides, and UTF-8 is taken when there is none.
QString LoadTextFile(const QString& path, std::optional<QStringConverter::Encoding> encoding = std::nullopt);
// The system's temporary folder with a delimiter at the end; empty on failure.
QString GetTempFolder();
// A name in folder (default: the temporary folder, created when missing) made from 8 characters
// of a new GUID and extension (with its dot, e.g. ".jpg"); never the name of an existing file.
QString GetTempFileName(const QString& extension, const QString& folder = {});
// Hands a URL or a local path to the platform's "open" verb.
void OpenInBrowser(const QString& url);
// The program's file version as "%d.%d.%d.%d".
QString GetFileVersionText(const QString& path = {});

// "1023 bytes", "1.0 Kb", "1.5 Mb", "2.0 Gb", "1.0 Tb" in the current locale's decimal separator.
QString FormatSize(qint64 bytes);
// UTF-8, then letters, digits and ! $ ' ( ) * - . _ @ kept, a blank as '+', the rest as %XX.
QString URLEncode(const QString& text);
// Plain base64 in groups of four; a length that is not a multiple of four gives nothing, and
// each character of a group outside the alphabet (such as '=') takes one byte off that group.
QByteArray Base64Decode(const QString& text);

// Fills the placeholders of a format text as the language texts use them: %s, %d, %u, %x (upper-case
// hex), %f, %e, %g, %n (with group separators) and %%, each with an optional index ("%1:s"), '-'
// flag, width and precision ("%.1f", "%5d"). Floats use the current locale's decimal separator.
// A placeholder without an argument of a fitting kind raises std::invalid_argument.
QString FormatText(const QString& format, const QVariantList& args);

// The value of the node's first attribute whose name matches without regard to case, or
// defaultValue when there is none or its value is empty. In a document from ParseXMLText that is
// the first such attribute in document order.
QString GetXMLAttribute(const QDomNode& node, const QString& name, const QString& defaultValue = {});
// The parsed document; nothing when the text is not well-formed or has no root element. Of
// attributes of one element whose names differ only in letter case, the first one is kept.
std::optional<QDomDocument> ParseXMLText(const QString& text);
