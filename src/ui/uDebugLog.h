#pragma once

#include "uZTLog.h"

#include <QObject>
#include <QPointer>

class TDebugForm;

// Connects the debug log to its window. Made by the main window (its parent) when the debug switch
// is on: lines logged from any thread are posted to the main thread, which creates the debug
// window under the main window on the first line and appends each line to it.
class TDebugLogSink : public QObject, public TZTLogSink
{
    Q_OBJECT

public:
    explicit TDebugLogSink(QWidget* mainWindow);
    ~TDebugLogSink() override;

    void LogLine(const QString& line) override;

    // Creates the window if needed and shows it (the main window does this when it is shown).
    TDebugForm* ShowForm();
    TDebugForm* Form() const { return m_form; }

private:
    void AppendLine(const QString& line);

    QWidget* m_mainWindow;
    QPointer<TDebugForm> m_form;
};
