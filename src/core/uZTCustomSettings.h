#pragma once

#include <QString>

#include <stdexcept>

// The error of the settings store: a value whose stored type does not fit the getter.
class ERegistryException : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// The typed interface over the per-user settings store. Every call opens the key, does its one
// access and closes it again: nothing is cached, so a value written is in the store at once.
class TZTCustomSettings
{
public:
    virtual ~TZTCustomSettings() = default;

    // Return the stored value, or defaultValue when the value or its key does not exist.
    // GetStringValue converts a stored integer to its decimal text and stored bytes to text; the
    // other getters raise ERegistryException for a value of another stored type.
    virtual int GetIntValue(const QString& name, int defaultValue) = 0;
    virtual QString GetStringValue(const QString& name, const QString& defaultValue) = 0;
    virtual bool GetBoolValue(const QString& name, bool defaultValue) = 0;
    virtual double GetFloatValue(const QString& name, double defaultValue) = 0;

    // Store value, creating the key when needed. defaultValue is accepted for symmetry with the
    // getters and ignored: the value is always written. A key that cannot be written is skipped
    // without a message.
    virtual void SetIntValue(const QString& name, int defaultValue, int value) = 0;
    virtual void SetStringValue(const QString& name, const QString& defaultValue, const QString& value) = 0;
    virtual void SetBoolValue(const QString& name, bool defaultValue, bool value) = 0;
    virtual void SetFloatValue(const QString& name, double defaultValue, double value) = 0;
};
