#pragma once

#include "uDownloadQueue.h"

#include <QStringList>

// The text worker of the two JSON services of the catalogue server. Their replies are enciphered
// (uPayloadCipher); this worker deciphers the body on its own thread, so that subscribers and
// OnText only ever see the clear text, as UTF-8 lines.
//
// A reply that cannot be deciphered (fewer than 16 bytes, no cipher text, not a multiple of the
// block size, a wrong padding) ends the worker like any other error: nothing is posted, OnText is
// not called, and only OnTerminate fires.
class TEncryptedTextDownloader : public TTextDownloader
{
    Q_OBJECT

public:
    TEncryptedTextDownloader() = default;

protected:
    void DoTheWork() override;

private:
    // Hands list to OnText on the main thread and waits for it. An error that the handler raises
    // is caught on the main thread, so that it never unwinds through the event loop, and it ends
    // the worker.
    void CallOnTextGuarded(const QStringList& list);
};
