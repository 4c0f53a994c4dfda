#pragma once

#include <QString>

// The language texts: every user-visible text is looked up by key.
// The full language object lives in uZTStrings.cpp.

QString GetText(const QString& key);
bool LoadLanguage(const QString& name);
bool LoadBuiltInLanguage(const QString& resource, const QString& name);
QString CurrentLanguage();
