#include "uWidgetTexts.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPointer>
#include <QWidget>

TWidgetTexts& WidgetTexts()
{
    static TWidgetTexts texts;
    return texts;
}

namespace {
TEditorErrorHandler& handlerSlot()
{
    static TEditorErrorHandler handler;
    return handler;
}
} // namespace

TEditorErrorHandler SetEditorErrorHandler(TEditorErrorHandler handler)
{
    TEditorErrorHandler previous = std::move(handlerSlot());
    handlerSlot() = std::move(handler);
    return previous;
}

void ReportEditorError(QWidget* editor, const QString& message)
{
    if (const TEditorErrorHandler& handler = handlerSlot()) {
        handler(editor, message);
        return;
    }
    QMessageBox::warning(editor ? editor->window() : nullptr, QString(), message);
}

void ReportEditorErrorLater(QWidget* editor, const QString& message)
{
    QPointer<QWidget> guard(editor);
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [guard, message]() { ReportEditorError(guard.data(), message); },
        Qt::QueuedConnection);
}
