#pragma once

#include <QString>

#include <functional>

class QWidget;

// The toolkit's own user-visible texts, English by default. A program that translates its
// interface sets them before it builds its windows and again on a change of language; widgets read
// them when they show a text, so open windows follow on their next repaint.
struct TWidgetTexts
{
    QString applicationButton = QStringLiteral("File");
    QString backstageBack = QStringLiteral("Back");
    QString minimizeRibbon = QStringLiteral("Collapse the ribbon");
    QString expandRibbon = QStringLiteral("Expand the ribbon");
    QString scrollLeft = QStringLiteral("Scroll left");
    QString scrollRight = QStringLiteral("Scroll right");
    QString previousImage = QStringLiteral("Previous");
    QString nextImage = QStringLiteral("Next");
    QString noImage = QStringLiteral("No picture");
    QString clearSearch = QStringLiteral("Clear");
    QString editButton = QStringLiteral("Edit list");
    QString emptySelection = QStringLiteral("Any");
    // %1 is the text as the user typed it.
    QString invalidNumber = QStringLiteral("'%1' is not a valid number.");
    QString invalidWholeNumber = QStringLiteral("'%1' is not a valid whole number.");
    QString invalidDate = QStringLiteral("'%1' is not a valid date.");
    QString notInList = QStringLiteral("'%1' is not in the list.");
    QString valueRefused = QStringLiteral("The value was not accepted.");
    // The picture control's menu and dialogs.
    QString pictureCut = QStringLiteral("Cu&t");
    QString pictureCopy = QStringLiteral("&Copy");
    QString picturePaste = QStringLiteral("&Paste");
    QString pictureDelete = QStringLiteral("&Delete");
    QString pictureLoad = QStringLiteral("&Load...");
    QString pictureSave = QStringLiteral("&Save As...");
    QString pictureFiles = QStringLiteral("Pictures");
    QString allFiles = QStringLiteral("All files");
    QString pictureNotReadable = QStringLiteral("The file '%1' cannot be read.");
    QString pictureNotWritten = QStringLiteral("The file '%1' cannot be written.");
    QString clipboardNoPicture = QStringLiteral("The clipboard holds no picture.");
};

TWidgetTexts& WidgetTexts();

// Where editors report an entry they refused (a bad number, a name not in the list). The default
// shows a warning box over the editor's window; a program routes it to its own message box, tests
// record it.
using TEditorErrorHandler = std::function<void(QWidget* editor, const QString& message)>;
// Installs handler; an empty one puts the default back. Returns the previous one.
TEditorErrorHandler SetEditorErrorHandler(TEditorErrorHandler handler);
void ReportEditorError(QWidget* editor, const QString& message);
// The same from the event loop's next turn: for refusals found while focus moves, where a box
// opened at once would fight the focus change.
void ReportEditorErrorLater(QWidget* editor, const QString& message);
