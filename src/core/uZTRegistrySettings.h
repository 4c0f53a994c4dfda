#pragma once

#include "uZTCustomSettings.h"
#include "uZTUserHive.h"

#include <QtGlobal>

#include <optional>

// The root hive of a settings key, an integer handle. Only the current user's hive is used.
using TZTRootKey = quintptr;
inline constexpr TZTRootKey cHKEY_CURRENT_USER = 0x80000001;

// The settings store over the registry key <root>\<path>. On Windows this is the registry itself
// (DWORD, REG_SZ and an 8-byte REG_BINARY for floats); elsewhere the per-user hive file of
// TZTUserHive, which keeps the same key paths, value names and stored forms.
class TZTRegistrySettings : public TZTCustomSettings
{
public:
    TZTRegistrySettings(TZTRootKey rootKey, const QString& path);

    TZTRootKey RootKey() const { return m_rootKey; }
    QString Path() const { return m_path; }

    int GetIntValue(const QString& name, int defaultValue) override;
    QString GetStringValue(const QString& name, const QString& defaultValue) override;
    bool GetBoolValue(const QString& name, bool defaultValue) override;
    double GetFloatValue(const QString& name, double defaultValue) override;

    void SetIntValue(const QString& name, int defaultValue, int value) override;
    void SetStringValue(const QString& name, const QString& defaultValue, const QString& value) override;
    void SetBoolValue(const QString& name, bool defaultValue, bool value) override;
    void SetFloatValue(const QString& name, double defaultValue, double value) override;

private:
    // One read with read access only; nothing when the key or the value is missing.
    std::optional<TZTHiveValue> ReadValue(const QString& name) const;
    // One write with full access, creating the key path; failures are swallowed.
    void WriteValue(const QString& name, const TZTHiveValue& value) const;

    TZTRootKey m_rootKey;
    QString m_path;
};
