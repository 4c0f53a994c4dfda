// orvane-client-config: writes one of the program's read-only deployment keys into the current
// user's settings store, e.g. the address of the catalogue server the program should use:
//
//   orvane-client-config CatalogueServer https://127.0.0.1:47443
//   orvane-client-config --clear CatalogueServer
//
// The program itself reads these keys and never writes them.

#include "uZTRegistrySettings.h"
#include "uZTSettings.h"
#include "uZTTypes.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTextStream>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    QTextStream err(stderr);
    const bool clear = !args.isEmpty() && args.first() == u"--clear"_s;
    if (clear)
        args.removeFirst();
    static const QStringList allowed = {u"CatalogueServer"_s, u"DefaultDBFolder"_s};
    if (args.size() != (clear ? 1 : 2) || !allowed.contains(args.first())) {
        err << "usage: orvane-client-config (CatalogueServer|DefaultDBFolder) VALUE\n"
               "       orvane-client-config --clear (CatalogueServer|DefaultDBFolder)\n";
        return 2;
    }
    // The same root as the program's when no branding file is installed beside it.
    TZTRegistrySettings store(cHKEY_CURRENT_USER, SettingsPathFor(ReadOEMInfo(GetExeFolder() + u"reg.enc"_s)));
    store.SetStringValue(args.at(0), QString(), clear ? QString() : args.at(1));
    return 0;
}
