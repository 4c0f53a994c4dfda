#include "uTemplate.h"

#include <QFile>

#include <stdexcept>

using namespace Qt::StringLiterals;

// The resource lives in a static library: register it before the first read. Q_INIT_RESOURCE has
// to be used outside any namespace.
static void registerTemplateResource()
{
    Q_INIT_RESOURCE(orv_template);
}

QByteArray NewBlankDatabaseBytes()
{
    static const bool registered = (registerTemplateResource(), true);
    Q_UNUSED(registered);

    QFile file(u":/NEW_BLANK_DB"_s);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("The built-in blank database NEW_BLANK_DB is missing");
    return file.readAll();
}
