#include "uOrvaneApplication.h"

#include "uDBError.h"
#include "uZTMessages.h"

using namespace Qt::StringLiterals;

TOrvaneApplication::TOrvaneApplication(int& argc, char** argv) : QApplication(argc, argv) {}

bool TOrvaneApplication::notify(QObject* receiver, QEvent* event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& error) {
        ++m_handledExceptions;
        try {
            ShowException(error);
        } catch (const std::exception&) {
            // The box itself failed: nothing is left to tell the user with.
        }
    }
    return false;
}

QString TOrvaneApplication::ExceptionText(const std::exception& error)
{
    if (const auto* databaseError = dynamic_cast<const EDatabaseError*>(&error)) {
        return databaseError->message();
    }
    return QString::fromUtf8(error.what());
}

void TOrvaneApplication::ShowException(const std::exception& error)
{
    MessageDlgZT(ExceptionText(error), mtError, mbOK, mbOK);
}
