#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

// Shared set-up of the collection tests: a language with real labels, settings kept away from
// the user's store, and small pictures.

// The settings store in a temporary home for the whole run, and the built-in English.
void InitStoreTestEnvironment();

// A PNG (or JPEG) of the given size with some detail in it; `noisy` makes it compress badly.
QByteArray TestPicture(int width, int height, const char* format = "PNG", bool noisy = false);

// Runs a statement on the file through a connection of its own (for set-up and checks).
void ExecOnFile(const QString& path, const QString& sql);
QVariant SelectOnFile(const QString& path, const QString& sql);
