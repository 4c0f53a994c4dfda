#include "uCatalogueServer.h"

#include "uZTSettings.h"

using namespace Qt::StringLiterals;

const QString CatalogueServerDefault = u"https://catalogue.brenmoor.com"_s;

QString CatalogueServerURL()
{
    // The read-only key CatalogueServer, read at each call; the program never writes it.
    return CatalogueServerURLFor(ReadCatalogueServer());
}

QString CatalogueServerURLFor(const QString& configured)
{
    QString url = configured.trimmed();
    if (url.isEmpty())
        url = CatalogueServerDefault;
    while (url.endsWith(u'/'))
        url.chop(1);
    return url;
}
