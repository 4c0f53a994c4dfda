#include "uDBError.h"

EDatabaseError::EDatabaseError(const QString& message, int nativeCode)
    : std::runtime_error(message.toStdString()), m_message(message), m_nativeCode(nativeCode)
{}
