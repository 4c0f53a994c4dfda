#pragma once

// Helpers shared by the test areas (library orv_testsupport).

#include "uZTLog.h"
#include "uZTMessages.h"
#include "uZTRegistrySettings.h"

#include <QByteArray>
#include <QMutex>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

extern const QString cSettingsRoot; // Software\Brenmoor\Orvane

// The per-user settings store in a temporary home: QStandardPaths test mode, HOME and
// XDG_CONFIG_HOME pointing into a fresh folder, and a TZTRegistrySettings installed on it (removed
// again by the destructor). Never the user's own store.
class TTempSettingsHome
{
public:
    explicit TTempSettingsHome(bool installStore = true);
    ~TTempSettingsHome();
    QString Path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
};

// The store under cSettingsRoot, opened for one access at a time as the program does.
TZTRegistrySettings UserStore();

// The built-in English texts.
void LoadEnglish();

void WriteFile(const QString& path, const QByteArray& bytes);
QByteArray ReadFile(const QString& path); // empty when unreadable

struct TProcessResult
{
    bool Finished = false;
    QProcess::ExitStatus Status = QProcess::CrashExit;
    int ExitCode = -1;
    QByteArray Out;
    QByteArray Err;
    bool Ok() const { return Finished && Status == QProcess::NormalExit && ExitCode == 0; }
};

// Runs a program to its end, feeding it input.
TProcessResult RunProcess(const QString& program, const QStringList& arguments, const QByteArray& input = {},
                          const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
// Runs this test binary again with `variable` set to `mode` (and the given extra variables); its
// main() sees the variable and plays the child's part.
TProcessResult RunSelf(const char* variable, const QString& mode, const QStringList& extra = {});
bool HaveProgram(const QString& name);

// The payload key as the openssl command line computes it: SHA-256 of keyB followed by keyA.
QByteArray OpenSslKey(const QString& keyA, const QString& keyB);
// `openssl enc -aes-256-cbc` with the key and IV given in hex; empty on failure.
QByteArray OpenSslEnc(bool decrypt, const QByteArray& key, const QByteArray& iv, const QByteArray& input,
                      bool noPad = false);

// Answers every message box with `Answer` and keeps the requests.
class TRecordingPresenter : public TMessagePresenter
{
public:
    int Answer = mrOk;
    QList<TMessageBoxRequest> Requests;
    int Present(const TMessageBoxRequest& request) override
    {
        Requests.append(request);
        return Answer;
    }
};

// Keeps the log lines, from any thread.
class TLogCapture : public TZTLogSink
{
public:
    void LogLine(const QString& line) override
    {
        QMutexLocker lock(&m_lock);
        m_lines.append(line);
    }
    QStringList Lines()
    {
        QMutexLocker lock(&m_lock);
        return m_lines;
    }

private:
    QMutex m_lock;
    QStringList m_lines;
};
