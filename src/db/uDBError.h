#pragma once

#include <QString>

#include <stdexcept>

// The one error type of the data-access layer. For failures reported by SQLite the message is
// SQLite's own text (for example "file is not a database") and nativeCode() its result code; for
// failures of the layer itself (a missing field, a bad filter) nativeCode() is 0.
class EDatabaseError : public std::runtime_error
{
public:
    explicit EDatabaseError(const QString& message, int nativeCode = 0);

    QString message() const { return m_message; }
    int nativeCode() const { return m_nativeCode; }

private:
    QString m_message;
    int m_nativeCode = 0;
};
