#include "uDebugLog.h"

#include "frmDebug.h"

#include <QWidget>

TDebugLogSink::TDebugLogSink(QWidget* mainWindow) : QObject(mainWindow), m_mainWindow(mainWindow)
{
    SetLogSink(this);
}

TDebugLogSink::~TDebugLogSink()
{
    RemoveLogSink(this);
}

void TDebugLogSink::LogLine(const QString& line)
{
    QMetaObject::invokeMethod(
        this, [this, line] { AppendLine(line); }, Qt::QueuedConnection);
}

TDebugForm* TDebugLogSink::ShowForm()
{
    if (m_form.isNull()) {
        m_form = new TDebugForm(m_mainWindow);
    }
    m_form->show();
    return m_form;
}

void TDebugLogSink::AppendLine(const QString& line)
{
    ShowForm()->AppendLine(line);
}
