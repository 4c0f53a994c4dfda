#include "uOrvaneApplication.h"
#include "uStartup.h"

#include <QIcon>

int main(int argc, char* argv[])
{
    TOrvaneApplication app(argc, argv);
    // The menu entry names the program by this id; window managers match windows to it.
    TOrvaneApplication::setDesktopFileName(QStringLiteral("com.brenmoor.Orvane"));
    TOrvaneApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/orvane.svg")));
    return RunOrvane();
}
