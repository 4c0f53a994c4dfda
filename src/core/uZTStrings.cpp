#include "uZTStrings.h"

namespace {
QString g_language;
}

QString GetText(const QString&)
{
    return {};
}

bool LoadLanguage(const QString&)
{
    return false;
}

bool LoadBuiltInLanguage(const QString&, const QString& name)
{
    g_language = name;
    return true;
}

QString CurrentLanguage()
{
    return g_language;
}
