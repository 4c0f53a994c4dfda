#include "uCatalogueServer.h"

using namespace Qt::StringLiterals;

const QString CatalogueServerDefault = u"https://catalogue.brenmoor.com"_s;

namespace {

// The value of the read-only key CatalogueServer; the program never writes it.
QString ConfiguredCatalogueServer()
{
    return {};
}

} // namespace

QString CatalogueServerURL()
{
    return CatalogueServerURLFor(ConfiguredCatalogueServer());
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
