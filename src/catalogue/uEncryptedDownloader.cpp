#include "uEncryptedDownloader.h"

#include "uPayloadCipher.h"
#include "uPayloadKeys.h"
#include "uZTLog.h"
#include "uZTStrings.h"

#include <QBuffer>

#include <exception>

using namespace Qt::StringLiterals;

void TEncryptedTextDownloader::DoTheWork()
{
    TDownloader* downloader = Downloader();
    downloader->SetURL(URL);
    // The services take their parameters from the query; an empty body stays empty, and the
    // request goes out as a GET.
    downloader->PostData = EncryptText(PostData, PayloadKeyA, PayloadKeyB, true);
    LogFormat(u"Downloading %s ..."_s, {URL});
    PostNewStatus(cDownloadStatusPanel, GetText(u"cSDownloadingData"_s));

    QBuffer received;
    received.open(QIODevice::ReadWrite);
    if (!downloader->DownloadToStream(&received) || Terminated())
        return;

    QBuffer clear;
    clear.open(QIODevice::ReadWrite);
    received.seek(0);
    DecryptStream(received, clear, PayloadKeyA, PayloadKeyB); // raises on a bad body
    const QStringList list = TextToLines(DecodeCodePage(clear.data(), cCodePageUTF8));
    if (Terminated())
        return;

    Notify(QVariant(list));
    CallOnTextGuarded(list);
}

void TEncryptedTextDownloader::CallOnTextGuarded(const QStringList& list)
{
    if (!OnText)
        return;
    std::exception_ptr failure;
    Synchronize([this, &list, &failure] {
        try {
            OnText(this, list);
        } catch (...) {
            failure = std::current_exception();
        }
    });
    if (failure)
        std::rethrow_exception(failure);
}
