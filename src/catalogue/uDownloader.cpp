#include "uDownloader.h"

#include "uDownloader_SBB.h"
#include "uZTSettings.h"
#include "uZTTypes.h"

#include <QFile>
#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace {

// A well-known public page, fetched over plain http by the connection test. It has nothing to do
// with the catalogue server: it only proves that the internet can be reached.
const auto cConnectionTestURL = u"http://www.example.com/"_s;

std::unique_ptr<TDownloader> CreateSBBDownloader(QNetworkCookieJar* cookieStore)
{
    return std::make_unique<TSBB_Downloader>(cookieStore, CurrentProxySettings());
}

std::unique_ptr<QNetworkCookieJar> CreateSBBCookieManager()
{
    return std::make_unique<TElCookieManagerWrapper>();
}

} // namespace

EDownloadError::EDownloadError(const QString& message, int clientError)
    : std::runtime_error(message.toStdString()), m_message(message), m_clientError(clientError)
{}

TDownloaderClass DownloaderClass()
{
    return {&CreateSBBDownloader};
}

TCookieManagerClass CookieManagerClass()
{
    return {&CreateSBBCookieManager};
}

TProxySettings CurrentProxySettings()
{
    static_assert(cInetAccessUseProxy == cInetAccessProxy);
    return {InetAccess, InetProxyHost, InetProxyPort, InetProxyUsername, InetProxyPassword};
}

QString ConnectionTestURL()
{
    return cConnectionTestURL;
}

bool TestInternetConnection()
{
    return TestInternetConnection(cConnectionTestURL);
}

bool TestInternetConnection(const QString& url)
{
    // 8 hexadecimal digits of a fresh GUID and ".tmp" in the temporary folder; nothing is made yet.
    const QString fileName = GetTempFileName(u".tmp"_s);
    bool result = false;
    {
        const std::unique_ptr<TDownloader> downloader = DownloaderClass().Create(nullptr);
        downloader->SetURL(url);
        downloader->SetFileName(fileName);
        try {
            result = downloader->DownloadToFile(false) && QFile::exists(fileName);
        } catch (...) {
            QFile::remove(fileName);
            throw;
        }
    }
    QFile::remove(fileName);
    return result;
}

QStringList TextToLines(const QString& text)
{
    QStringList lines;
    qsizetype start = 0;
    const qsizetype length = text.size();
    for (qsizetype i = 0; i < length; ++i) {
        const QChar c = text.at(i);
        if (c != u'\n' && c != u'\r')
            continue;
        lines.append(text.mid(start, i - start));
        if (c == u'\r' && i + 1 < length && text.at(i + 1) == u'\n')
            ++i;
        start = i + 1;
    }
    if (start < length)
        lines.append(text.mid(start));
    return lines;
}

QString DecodeCodePage(const QByteArray& bytes, qint32 codePage)
{
    std::optional<QStringConverter::Encoding> encoding;
    switch (codePage) {
    case cCodePageSystem:
        encoding = QStringConverter::System;
        break;
    case cCodePageUTF16LE:
        encoding = QStringConverter::Utf16LE;
        break;
    case cCodePageUTF16BE:
        encoding = QStringConverter::Utf16BE;
        break;
    case cCodePageLatin1:
        encoding = QStringConverter::Latin1;
        break;
    case cCodePageUTF8:
        encoding = QStringConverter::Utf8;
        break;
    default:
        break;
    }
    if (encoding) {
        QStringDecoder decoder(*encoding);
        return decoder.decode(bytes);
    }
    // Other code pages by name, as far as the platform's converters know them.
    const QByteArray name =
        (codePage >= 1250 && codePage <= 1258 ? "windows-" : "cp") + QByteArray::number(codePage);
    QStringDecoder decoder(name.constData());
    if (!decoder.isValid())
        decoder = QStringDecoder(QStringConverter::Latin1);
    return decoder.decode(bytes);
}
