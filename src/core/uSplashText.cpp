#include "uSplashText.h"

namespace {
TSplashTextHandler& handler()
{
    static TSplashTextHandler instance;
    return instance;
}
} // namespace

void ShowSplashText(const QString& text)
{
    if (handler())
        handler()(text);
}

void SetSplashTextHandler(TSplashTextHandler newHandler)
{
    handler() = std::move(newHandler);
}
