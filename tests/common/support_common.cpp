#include "support_common.h"

#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTUserHive.h"

#include <QStandardPaths>
#include <QtTest>

const QString cSettingsRoot = "Software\\Brenmoor\\Orvane";

TTempSettingsHome::TTempSettingsHome(bool installStore)
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    qputenv("HOME", m_dir.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (m_dir.path() + "/config").toLocal8Bit());
    QVERIFY2(TZTUserHive::FileName().startsWith(m_dir.path()), qPrintable(TZTUserHive::FileName()));
    if (installStore)
        SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, cSettingsRoot));
}

TTempSettingsHome::~TTempSettingsHome()
{
    SetSettingsStore(nullptr);
}

TZTRegistrySettings UserStore()
{
    return TZTRegistrySettings(cHKEY_CURRENT_USER, cSettingsRoot);
}

void LoadEnglish()
{
    QVERIFY(LoadBuiltInLanguage("ENGLISHLANG", "English"));
}

void WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TProcessResult RunProcess(const QString& program, const QStringList& arguments, const QByteArray& input,
                          const QProcessEnvironment& environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    TProcessResult result;
    if (!process.waitForStarted(10000))
        return result;
    process.write(input);
    process.closeWriteChannel();
    result.Finished = process.waitForFinished(60000);
    result.Status = process.exitStatus();
    result.ExitCode = process.exitCode();
    result.Out = process.readAllStandardOutput();
    result.Err = process.readAllStandardError();
    return result;
}

TProcessResult RunSelf(const char* variable, const QString& mode, const QStringList& extra)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(variable), mode);
    for (const QString& assignment : extra)
        environment.insert(assignment.section('=', 0, 0), assignment.section('=', 1));
    return RunProcess(QCoreApplication::applicationFilePath(), {}, {}, environment);
}

bool HaveProgram(const QString& name)
{
    return !QStandardPaths::findExecutable(name).isEmpty();
}

QByteArray OpenSslKey(const QString& keyA, const QString& keyB)
{
    return RunProcess("openssl", {"dgst", "-sha256", "-binary"}, (keyB + keyA).toUtf8()).Out;
}

QByteArray OpenSslEnc(bool decrypt, const QByteArray& key, const QByteArray& iv, const QByteArray& input,
                      bool noPad)
{
    QStringList args{"enc", "-aes-256-cbc", "-K", key.toHex(), "-iv", iv.toHex()};
    if (decrypt)
        args << "-d";
    if (noPad)
        args << "-nopad";
    const TProcessResult result = RunProcess("openssl", args, input);
    return result.Ok() ? result.Out : QByteArray();
}
