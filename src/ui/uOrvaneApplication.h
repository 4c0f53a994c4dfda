#pragma once

#include <QApplication>

#include <exception>

// The application object. Its event dispatch is the program's one top-level error handler: a
// failure that leaves an event handler (a database error, any std::exception) is shown in a modal
// box with its text and an OK button, and the event loop goes on.
class TOrvaneApplication : public QApplication
{
    Q_OBJECT

public:
    TOrvaneApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;

    // Shows the error box for a caught failure: the database layer's message for a database error,
    // the exception's own text otherwise.
    static void ShowException(const std::exception& error);
    // The text the box shows for a failure.
    static QString ExceptionText(const std::exception& error);

    // How many failures reached the box in this run.
    int HandledExceptionCount() const { return m_handledExceptions; }

private:
    int m_handledExceptions = 0;
};
