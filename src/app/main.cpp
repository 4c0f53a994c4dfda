#include "uOrvaneApplication.h"
#include "uStartup.h"

int main(int argc, char* argv[])
{
    TOrvaneApplication app(argc, argv);
    return RunOrvane();
}
