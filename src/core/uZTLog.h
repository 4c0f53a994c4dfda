#pragma once

#include <QString>
#include <QVariantList>

#include <atomic>

// The debug log. Off unless the debug switch is set; then each call forms one line "[%s] %s" from
// the current date and time and the text and hands it to the installed sink (the debug window).
// Safe to call from any thread.

// The process-wide debug switch. Off; no code of the delivered program sets it.
extern std::atomic<bool> DebugMode;

// Where the lines go. LogLine may be called from any thread; an implementation that shows the
// line in a window must post it to the window's thread.
class TZTLogSink
{
public:
    virtual ~TZTLogSink() = default;
    virtual void LogLine(const QString& line) = 0;
};

// Installs the sink (not owned); nullptr removes it. Returns the one it replaces. A sink that
// removes itself in its destructor is never called afterwards.
TZTLogSink* SetLogSink(TZTLogSink* sink);
// Removes the sink if it is the installed one; after the return it is no longer called.
void RemoveLogSink(TZTLogSink* sink);

// "[<date and time in the system's short format>] <text>"
QString FormatLogLine(const QString& text);

void LogText(const QString& text);
// LogText(FormatText(format, args)).
void LogFormat(const QString& format, const QVariantList& args);
