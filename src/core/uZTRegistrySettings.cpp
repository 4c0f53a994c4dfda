#include "uZTRegistrySettings.h"

#include <QtEndian>

#include <bit>
#include <cstring>

#ifdef Q_OS_WIN
#include <qt_windows.h>

#include <string>
#endif

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void RaiseInvalidType(const QString& name)
{
    throw ERegistryException(u"Invalid data type for '%1'"_s.arg(name).toStdString());
}

QByteArray DoubleToBytes(double value)
{
    const quint64 bits = qToLittleEndian(std::bit_cast<quint64>(value));
    QByteArray bytes(sizeof(bits), '\0');
    std::memcpy(bytes.data(), &bits, sizeof(bits));
    return bytes;
}

double BytesToDouble(const QByteArray& bytes)
{
    quint64 bits = 0;
    std::memcpy(&bits, bytes.constData(), sizeof(bits));
    return std::bit_cast<double>(qFromLittleEndian(bits));
}

#ifdef Q_OS_WIN
HKEY NativeRoot(TZTRootKey rootKey)
{
    return rootKey == cHKEY_CURRENT_USER ? HKEY_CURRENT_USER : nullptr;
}

std::wstring NativePath(const QString& path)
{
    return TZTUserHive::NormalizeKeyPath(path).toStdWString();
}
#endif

} // namespace

TZTRegistrySettings::TZTRegistrySettings(TZTRootKey rootKey, const QString& path)
    : m_rootKey(rootKey), m_path(TZTUserHive::NormalizeKeyPath(path))
{}

#ifdef Q_OS_WIN

std::optional<TZTHiveValue> TZTRegistrySettings::ReadValue(const QString& name) const
{
    const HKEY root = NativeRoot(m_rootKey);
    if (root == nullptr) {
        return std::nullopt;
    }
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, NativePath(m_path).c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    const std::wstring valueName = name.toStdWString();
    DWORD type = 0;
    DWORD size = 0;
    LONG rc = RegQueryValueExW(key, valueName.c_str(), nullptr, &type, nullptr, &size);
    QByteArray data;
    if (rc == ERROR_SUCCESS) {
        data.resize(static_cast<qsizetype>(size));
        rc = RegQueryValueExW(key, valueName.c_str(), nullptr, &type, reinterpret_cast<LPBYTE>(data.data()),
                              &size);
        data.truncate(static_cast<qsizetype>(size));
    }
    RegCloseKey(key);
    if (rc != ERROR_SUCCESS) {
        return std::nullopt;
    }
    switch (type) {
    case REG_DWORD:
        if (data.size() == 4) {
            qint32 number = 0;
            std::memcpy(&number, data.constData(), sizeof(number));
            return TZTHiveValue::FromDword(number);
        }
        break;
    case REG_SZ:
    case REG_EXPAND_SZ: {
        QString text = QString::fromWCharArray(reinterpret_cast<const wchar_t*>(data.constData()),
                                               data.size() / static_cast<qsizetype>(sizeof(wchar_t)));
        while (text.endsWith(QChar(u'\0'))) {
            text.chop(1);
        }
        return TZTHiveValue::FromString(text);
    }
    case REG_BINARY:
        return TZTHiveValue::FromBinary(data);
    default:
        break;
    }
    return TZTHiveValue{};
}

void TZTRegistrySettings::WriteValue(const QString& name, const TZTHiveValue& value) const
{
    const HKEY root = NativeRoot(m_rootKey);
    if (root == nullptr) {
        return;
    }
    HKEY key = nullptr;
    if (RegCreateKeyExW(root, NativePath(m_path).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                        nullptr, &key, nullptr) != ERROR_SUCCESS) {
        return;
    }
    const std::wstring valueName = name.toStdWString();
    switch (value.Kind) {
    case TZTHiveValue::TKind::Dword: {
        const DWORD number = static_cast<DWORD>(value.Dword);
        RegSetValueExW(key, valueName.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                       sizeof(number));
        break;
    }
    case TZTHiveValue::TKind::String: {
        const std::wstring text = value.Text.toStdWString();
        RegSetValueExW(key, valueName.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                       static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
        break;
    }
    case TZTHiveValue::TKind::Binary:
    case TZTHiveValue::TKind::Unknown:
        RegSetValueExW(key, valueName.c_str(), 0, REG_BINARY,
                       reinterpret_cast<const BYTE*>(value.Bytes.constData()),
                       static_cast<DWORD>(value.Bytes.size()));
        break;
    }
    RegCloseKey(key);
}

#else

std::optional<TZTHiveValue> TZTRegistrySettings::ReadValue(const QString& name) const
{
    if (m_rootKey != cHKEY_CURRENT_USER) {
        return std::nullopt;
    }
    return TZTUserHive::ReadValue(m_path, name);
}

void TZTRegistrySettings::WriteValue(const QString& name, const TZTHiveValue& value) const
{
    if (m_rootKey != cHKEY_CURRENT_USER) {
        return;
    }
    try {
        TZTUserHive::WriteValue(m_path, name, value);
    } catch (const std::exception&) {
        // A write that fails is skipped without a message.
    }
}

#endif

int TZTRegistrySettings::GetIntValue(const QString& name, int defaultValue)
{
    const std::optional<TZTHiveValue> value = ReadValue(name);
    if (!value) {
        return defaultValue;
    }
    if (value->Kind != TZTHiveValue::TKind::Dword) {
        RaiseInvalidType(name);
    }
    return value->Dword;
}

QString TZTRegistrySettings::GetStringValue(const QString& name, const QString& defaultValue)
{
    const std::optional<TZTHiveValue> value = ReadValue(name);
    if (!value) {
        return defaultValue;
    }
    switch (value->Kind) {
    case TZTHiveValue::TKind::String:
        return value->Text;
    case TZTHiveValue::TKind::Dword:
        return QString::number(value->Dword);
    case TZTHiveValue::TKind::Binary:
        return QString::fromLocal8Bit(value->Bytes);
    case TZTHiveValue::TKind::Unknown:
        break;
    }
    RaiseInvalidType(name);
}

bool TZTRegistrySettings::GetBoolValue(const QString& name, bool defaultValue)
{
    const std::optional<TZTHiveValue> value = ReadValue(name);
    if (!value) {
        return defaultValue;
    }
    if (value->Kind != TZTHiveValue::TKind::Dword) {
        RaiseInvalidType(name);
    }
    return value->Dword != 0;
}

double TZTRegistrySettings::GetFloatValue(const QString& name, double defaultValue)
{
    const std::optional<TZTHiveValue> value = ReadValue(name);
    if (!value) {
        return defaultValue;
    }
    if (value->Kind != TZTHiveValue::TKind::Binary ||
        value->Bytes.size() != static_cast<qsizetype>(sizeof(double))) {
        RaiseInvalidType(name);
    }
    return BytesToDouble(value->Bytes);
}

void TZTRegistrySettings::SetIntValue(const QString& name, int, int value)
{
    WriteValue(name, TZTHiveValue::FromDword(value));
}

void TZTRegistrySettings::SetStringValue(const QString& name, const QString&, const QString& value)
{
    WriteValue(name, TZTHiveValue::FromString(value));
}

void TZTRegistrySettings::SetBoolValue(const QString& name, bool, bool value)
{
    WriteValue(name, TZTHiveValue::FromDword(value ? 1 : 0));
}

void TZTRegistrySettings::SetFloatValue(const QString& name, double, double value)
{
    WriteValue(name, TZTHiveValue::FromBinary(DoubleToBytes(value)));
}
