#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// One value of the per-user hive, in one of the registry's stored forms.
struct TZTHiveValue
{
    enum class TKind
    {
        Dword,  // 32-bit integer; booleans are kept as 0 or 1
        String, // text, line ends kept as they are
        Binary, // raw bytes; a float is its 8-byte IEEE double
        Unknown // a form this program does not write
    };

    TKind Kind = TKind::Unknown;
    qint32 Dword = 0;
    QString Text;
    QByteArray Bytes;

    static TZTHiveValue FromDword(qint32 value);
    static TZTHiveValue FromString(const QString& value);
    static TZTHiveValue FromBinary(const QByteArray& value);
};

// The per-user hive on systems without a registry: one JSON file under the user's configuration
// folder holding keys by their full path ("Software\Brenmoor\Orvane", "...\Layout") and in each
// key its values with their stored form. Key paths and value names compare without regard to
// case, as in the registry. Every call reads or rewrites the file: nothing is kept in memory.
// A rewrite goes through a lock file and an atomic replace, so a killed process never leaves a
// half-written file.
class TZTUserHive
{
public:
    // <generic configuration folder>/orvane/registry.json
    static QString FileName();

    // The value, or nothing when the file, the key or the value does not exist.
    static std::optional<TZTHiveValue> ReadValue(const QString& keyPath, const QString& valueName);

    // Writes the value, creating the key. False when the file cannot be written.
    static bool WriteValue(const QString& keyPath, const QString& valueName, const TZTHiveValue& value);

    // "Software/A//B\" -> "Software\A\B"
    static QString NormalizeKeyPath(const QString& keyPath);
};
