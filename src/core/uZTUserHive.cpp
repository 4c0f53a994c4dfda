#include "uZTUserHive.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QLockFile>
#include <QStandardPaths>
#include <QThread>

#include <cmath>
#include <filesystem>
#include <system_error>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// Serialises writers of the hive across processes. On Unix an advisory lock on a lock file,
// which the system drops with the process, so a killed writer never leaves a stale lock and no
// sync to disk is needed to take it.
class THiveWriteLock
{
public:
    explicit THiveWriteLock(const QString& path)
#ifndef Q_OS_UNIX
        : m_lock(path)
#endif
    {
#ifdef Q_OS_UNIX
        m_fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
#endif
    }
    ~THiveWriteLock()
    {
#ifdef Q_OS_UNIX
        if (m_fd >= 0)
            ::close(m_fd); // releases the lock
#endif
    }
    THiveWriteLock(const THiveWriteLock&) = delete;
    THiveWriteLock& operator=(const THiveWriteLock&) = delete;

    bool Acquire(int timeoutMs)
    {
#ifdef Q_OS_UNIX
        if (m_fd < 0)
            return false;
        QElapsedTimer timer;
        timer.start();
        while (::flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
            if (errno != EWOULDBLOCK && errno != EINTR)
                return false;
            if (timer.elapsed() > timeoutMs)
                return false;
            QThread::msleep(2);
        }
        return true;
#else
        m_lock.setStaleLockTime(30000);
        return m_lock.tryLock(timeoutMs);
#endif
    }

private:
#ifdef Q_OS_UNIX
    int m_fd = -1;
#else
    QLockFile m_lock;
#endif
};

const QString cTypeKey = u"type"_s;
const QString cDataKey = u"data"_s;
const QString cRegDword = u"REG_DWORD"_s;
const QString cRegSz = u"REG_SZ"_s;
const QString cRegBinary = u"REG_BINARY"_s;

// The member of object whose name equals name without regard to case.
std::optional<QString> FindMember(const QJsonObject& object, const QString& name)
{
    if (object.contains(name)) {
        return name;
    }
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (it.key().compare(name, Qt::CaseInsensitive) == 0) {
            return it.key();
        }
    }
    return std::nullopt;
}

enum class TLoadResult
{
    Missing,
    Loaded,
    Damaged
};

TLoadResult LoadHive(const QString& fileName, QJsonObject& hive)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return TLoadResult::Missing;
    }
    const QByteArray bytes = file.readAll();
    file.close();
    if (bytes.trimmed().isEmpty()) {
        return TLoadResult::Missing;
    }
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        return TLoadResult::Damaged;
    }
    hive = document.object();
    return TLoadResult::Loaded;
}

TZTHiveValue DecodeValue(const QJsonValue& stored)
{
    TZTHiveValue value;
    if (!stored.isObject()) {
        return value;
    }
    const QJsonObject object = stored.toObject();
    const QString type = object.value(cTypeKey).toString();
    const QJsonValue data = object.value(cDataKey);
    if (type == cRegDword && data.isDouble()) {
        const double number = data.toDouble();
        // A DWORD is 32 bits wide; both its signed and its unsigned reading are accepted.
        if (std::floor(number) == number && number >= -2147483648.0 && number <= 4294967295.0) {
            value.Kind = TZTHiveValue::TKind::Dword;
            value.Dword = static_cast<qint32>(static_cast<quint32>(static_cast<qint64>(number)));
        }
    } else if (type == cRegSz && data.isString()) {
        value.Kind = TZTHiveValue::TKind::String;
        value.Text = data.toString();
    } else if (type == cRegBinary && data.isString()) {
        const QByteArray hex = data.toString().toLatin1();
        const QByteArray bytes = QByteArray::fromHex(hex);
        if (bytes.size() * 2 == hex.size()) {
            value.Kind = TZTHiveValue::TKind::Binary;
            value.Bytes = bytes;
        }
    }
    return value;
}

QJsonObject EncodeValue(const TZTHiveValue& value)
{
    QJsonObject object;
    switch (value.Kind) {
    case TZTHiveValue::TKind::Dword:
        object.insert(cTypeKey, cRegDword);
        object.insert(cDataKey, value.Dword);
        break;
    case TZTHiveValue::TKind::String:
        object.insert(cTypeKey, cRegSz);
        object.insert(cDataKey, value.Text);
        break;
    case TZTHiveValue::TKind::Binary:
    case TZTHiveValue::TKind::Unknown:
        object.insert(cTypeKey, cRegBinary);
        object.insert(cDataKey, QString::fromLatin1(value.Bytes.toHex()));
        break;
    }
    return object;
}

} // namespace

TZTHiveValue TZTHiveValue::FromDword(qint32 value)
{
    TZTHiveValue result;
    result.Kind = TKind::Dword;
    result.Dword = value;
    return result;
}

TZTHiveValue TZTHiveValue::FromString(const QString& value)
{
    TZTHiveValue result;
    result.Kind = TKind::String;
    result.Text = value;
    return result;
}

TZTHiveValue TZTHiveValue::FromBinary(const QByteArray& value)
{
    TZTHiveValue result;
    result.Kind = TKind::Binary;
    result.Bytes = value;
    return result;
}

QString TZTUserHive::FileName()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           u"/orvane/registry.json"_s;
}

QString TZTUserHive::NormalizeKeyPath(const QString& keyPath)
{
    QString path = keyPath;
    path.replace(u'/', u'\\');
    return path.split(u'\\', Qt::SkipEmptyParts).join(u'\\');
}

std::optional<TZTHiveValue> TZTUserHive::ReadValue(const QString& keyPath, const QString& valueName)
{
    QJsonObject hive;
    if (LoadHive(FileName(), hive) != TLoadResult::Loaded) {
        return std::nullopt;
    }
    const std::optional<QString> keyName = FindMember(hive, NormalizeKeyPath(keyPath));
    if (!keyName) {
        return std::nullopt;
    }
    const QJsonObject key = hive.value(*keyName).toObject();
    const std::optional<QString> memberName = FindMember(key, valueName);
    if (!memberName) {
        return std::nullopt;
    }
    return DecodeValue(key.value(*memberName));
}

bool TZTUserHive::WriteValue(const QString& keyPath, const QString& valueName, const TZTHiveValue& value)
{
    const QString fileName = FileName();
    const QString folder = QFileInfo(fileName).absolutePath();
    if (!QDir().mkpath(folder)) {
        return false;
    }

    THiveWriteLock lock(fileName + u".lock"_s);
    if (!lock.Acquire(10000)) {
        return false;
    }

    QJsonObject hive;
    if (LoadHive(fileName, hive) == TLoadResult::Damaged) {
        // Keep the unreadable file for inspection; the store starts again from empty.
        const QString damaged = fileName + u".damaged"_s;
        QFile::remove(damaged);
        QFile::copy(fileName, damaged);
    }

    const QString normalized = NormalizeKeyPath(keyPath);
    const QString keyName = FindMember(hive, normalized).value_or(normalized);
    QJsonObject key = hive.value(keyName).toObject();
    key.insert(FindMember(key, valueName).value_or(valueName), EncodeValue(value));
    hive.insert(keyName, key);

    // Write a sibling file and rename it over the hive: a reader or a killed process sees the old
    // file or the new one, never half of one. No sync to disk: a write must survive the process,
    // not a power cut, and a sync per value would make saving all settings take a second.
    const QString temporary = fileName + u".new"_s;
    // A writer killed before its rename leaves the sibling behind; it is removed rather than
    // opened, so that whatever is left there (a link included) is never written through.
    QFile::remove(temporary);
    QFile file(temporary);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        return false;
    }
    const QByteArray bytes = QJsonDocument(hive).toJson(QJsonDocument::Indented);
    const bool written = file.write(bytes) == bytes.size();
    file.close();
    if (!written || file.error() != QFileDevice::NoError) {
        QFile::remove(temporary);
        return false;
    }
    std::error_code error;
    std::filesystem::rename(QFile::encodeName(temporary).toStdString(),
                            QFile::encodeName(fileName).toStdString(), error);
    if (error) {
        QFile::remove(temporary);
        return false;
    }
    return true;
}
