#pragma once

#include <QString>

#include <functional>

// The progress line of the start-up splash. Any part of the program may call ShowSplashText;
// it does something only while the splash window has installed its handler.
using TSplashTextHandler = std::function<void(const QString& text)>;

void ShowSplashText(const QString& text);
// The splash installs its handler while it is up and removes it (empty handler) when it goes.
void SetSplashTextHandler(TSplashTextHandler handler);
