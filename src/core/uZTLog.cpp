#include "uZTLog.h"

#include "uZTTypes.h"

#include <QDateTime>
#include <QLocale>
#include <QMutex>
#include <QMutexLocker>

using namespace Qt::StringLiterals;

std::atomic<bool> DebugMode{false};

namespace {

QMutex g_sinkMutex;
TZTLogSink* g_sink = nullptr;

} // namespace

TZTLogSink* SetLogSink(TZTLogSink* sink)
{
    QMutexLocker locker(&g_sinkMutex);
    TZTLogSink* previous = g_sink;
    g_sink = sink;
    return previous;
}

void RemoveLogSink(TZTLogSink* sink)
{
    QMutexLocker locker(&g_sinkMutex);
    if (g_sink == sink) {
        g_sink = nullptr;
    }
}

QString FormatLogLine(const QString& text)
{
    const QString stamp = QLocale::system().toString(QDateTime::currentDateTime(), QLocale::ShortFormat);
    return u"[%1] %2"_s.arg(stamp, text);
}

void LogText(const QString& text)
{
    if (!DebugMode.load(std::memory_order_relaxed)) {
        return;
    }
    const QString line = FormatLogLine(text);
    QMutexLocker locker(&g_sinkMutex);
    if (g_sink != nullptr) {
        g_sink->LogLine(line);
    }
}

void LogFormat(const QString& format, const QVariantList& args)
{
    if (!DebugMode.load(std::memory_order_relaxed)) {
        return;
    }
    LogText(FormatText(format, args));
}
