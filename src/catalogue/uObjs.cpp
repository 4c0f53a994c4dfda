#include "uObjs.h"

#include "uCatalogueServer.h"
#include "uDownloadQueue.h"
#include "uDownloader.h"
#include "uItemTexts.h"
#include "uZTStrings.h"

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <QLocale>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

// ---- TCoverPicture --------------------------------------------------------------------------------

void TCoverPicture::Assign(const QImage& image, const QByteArray& encoded)
{
    Data.clear();
    if (image.isNull())
        return;
    if (!encoded.isEmpty()) {
        Data = encoded;
        return;
    }
    QBuffer buffer(&Data);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
}

bool TCoverPicture::Assign(const QVariant& result)
{
    if (result.metaType() == QMetaType::fromType<TDownloadedImage>()) {
        const auto downloaded = result.value<TDownloadedImage>();
        if (downloaded.Image.isNull())
            return false;
        Assign(downloaded.Image, downloaded.Encoded);
        return true;
    }
    if (result.metaType() == QMetaType::fromType<QImage>()) {
        const auto image = result.value<QImage>();
        if (image.isNull())
            return false;
        Assign(image);
        return true;
    }
    return false;
}

QImage TCoverPicture::Image() const
{
    return Data.isEmpty() ? QImage() : QImage::fromData(Data);
}

QString PictureKindText(quint8 kind)
{
    static const std::array<QString, 6> keys = {u"cSThumbnail"_s, u"cSObverse"_s, u"cSReverse"_s,
                                                u"cSSide"_s,      u"cSInABox"_s,  u"cSOther"_s};
    return kind < keys.size() ? GetText(keys[kind]) : QString();
}

// ---- Reading a reply -------------------------------------------------------------------------------

namespace {

// A member as text: a string as it stands, a number in its shortest form; anything else is empty.
QString ReadText(const QJsonValue& value)
{
    if (value.isString())
        return value.toString();
    if (value.isDouble())
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    return QString();
}

// A member as a number: a number, a string holding one in the "C" format, or a boolean as 1 or 0;
// anything else is 0.
double ReadFloat(const QJsonValue& value)
{
    if (value.isDouble())
        return value.toDouble();
    if (value.isBool())
        return value.toBool() ? 1.0 : 0.0;
    if (value.isString()) {
        bool ok = false;
        const double number = QLocale::c().toDouble(value.toString().trimmed(), &ok);
        return ok && std::isfinite(number) ? number : 0.0;
    }
    return 0.0;
}

// A member as a whole number: as ReadFloat, cut towards zero and held within 32 bits.
qint32 ReadInteger(const QJsonValue& value)
{
    const double number = std::trunc(ReadFloat(value));
    constexpr double low = std::numeric_limits<qint32>::min();
    constexpr double high = std::numeric_limits<qint32>::max();
    return static_cast<qint32>(std::clamp(number, low, high));
}

struct TPictureMember
{
    QStringView Key;
    quint8 Kind;
    QStringView Store;
};

// One member may give two pictures: "PhotoFront" is the thumbnail and the obverse.
constexpr std::array<TPictureMember, 5> PictureMembers = {{
    {u"PhotoFront", TCoverPicture::kThumbnail, cThumbnailStorePath},
    {u"PhotoFront", TCoverPicture::kObverse, cLargePictureStorePath},
    {u"PhotoBack", TCoverPicture::kReverse, cLargePictureStorePath},
    {u"PhotoSide", TCoverPicture::kSide, cLargePictureStorePath},
    {u"PhotoInBox", TCoverPicture::kInABox, cLargePictureStorePath},
}};

TMetalAssets ReadAssets(const QJsonDocument& document, const QString& base)
{
    TMetalAssets assets;
    if (!document.isArray())
        return assets;
    const QJsonArray elements = document.array();
    assets.reserve(std::size_t(elements.size()));
    for (const QJsonValue& element : elements)
        if (element.isObject())
            assets.push_back(TMetalAsset::FromJSON(element.toObject(), base));
    return assets;
}

} // namespace

// ---- TMetalAsset -----------------------------------------------------------------------------------

TMetalAsset::TMetalAsset() : m_life(std::make_shared<char>('\0')) {}

TMetalAsset::~TMetalAsset() = default;

std::unique_ptr<TMetalAsset> TMetalAsset::FromJSON(const QJsonObject& element, const QString& base)
{
    auto asset = std::make_unique<TMetalAsset>();
    const auto member = [&element](QStringView key) { return element.value(key); };
    asset->Relevance = ReadInteger(member(u"weight"));
    asset->Name = ReadText(member(u"Name"));
    asset->Series = ReadText(member(u"Series"));
    asset->Metal = ReadInteger(member(u"Metal"));
    asset->Year = ReadInteger(member(u"Year"));
    asset->WeightG = ReadFloat(member(u"WeightG"));
    asset->MintName = ReadText(member(u"MintName"));
    asset->CoinType = ReadInteger(member(u"CoinType"));
    asset->FaceValue = ReadFloat(member(u"FaceValue"));
    asset->FaceValueCurrency = ReadText(member(u"FaceValueCurrency"));
    asset->Purity = ReadText(member(u"Purity"));
    asset->Thickness = ReadFloat(member(u"Thickness"));
    asset->Diameter = ReadFloat(member(u"Diameter"));
    asset->Mintage = ReadInteger(member(u"Mintage"));
    asset->Width = ReadFloat(member(u"Width"));
    asset->Height = ReadFloat(member(u"Height"));
    asset->Edge = ReadText(member(u"Edge"));
    asset->MintMark = ReadInteger(member(u"MintMark")) == 1;
    asset->Country = ReadText(member(u"Country"));
    asset->ObverseDesc = ReadText(member(u"ObverseDesc"));
    asset->ReverseDesc = ReadText(member(u"ReverseDesc"));
    asset->Artist = ReadText(member(u"Artist"));
    // The text set as the list's whole text: one entry per line.
    asset->Description = TextToLines(ReadText(member(u"Description")));

    for (const TPictureMember& picture : PictureMembers) {
        // Present, not null, and naming a file: an empty name would point at the store itself.
        const QString name = ReadText(member(picture.Key));
        if (!name.isEmpty())
            asset->AddPicture(picture.Kind, base + picture.Store + name);
    }
    return asset;
}

TCoverPicture* TMetalAsset::PictureOfKind(quint8 kind) const
{
    for (const auto& picture : Pictures) {
        if (picture->Kind == kind)
            return picture.get();
    }
    return nullptr;
}

TCoverPicture& TMetalAsset::AddPicture(quint8 kind, const QString& url)
{
    Pictures.push_back(std::make_unique<TCoverPicture>(kind, url));
    return *Pictures.back();
}

QString TMetalAsset::Caption() const
{
    if (IsEmptyAsset())
        return QString();
    return ItemCaption(Name, WeightG, Year, Metal, CoinType);
}

bool TMetalAsset::IsEmptyAsset() const
{
    return this == &EmptyMetalAsset();
}

const TMetalAsset& EmptyMetalAsset()
{
    static const TMetalAsset empty;
    return empty;
}

TMetalAssets ReadSearchReply(const QByteArray& json, const QString& base)
{
    return ReadAssets(QJsonDocument::fromJson(json), base);
}

TMetalAssets ReadSearchReply(const QByteArray& json)
{
    return ReadSearchReply(json, CatalogueServerURL());
}

TMetalAssets ReadSearchReply(const QStringList& lines, const QString& base)
{
    return ReadSearchReply(lines.join(u'\n').toUtf8(), base);
}

TMetalAssets ReadSearchReply(const QStringList& lines)
{
    return ReadSearchReply(lines, CatalogueServerURL());
}

// ---- Large pictures ---------------------------------------------------------------------------------

TMetalCovertMsgObj::TMetalCovertMsgObj(TMetalAsset& asset, TCoverPicture& picture)
    : m_asset(&asset), m_picture(&picture), m_life(asset.m_life)
{}

TMetalAsset* TMetalCovertMsgObj::Asset() const
{
    return m_life.expired() ? nullptr : m_asset;
}

TCoverPicture* TMetalCovertMsgObj::Picture() const
{
    // A picture lives as long as its asset.
    return m_life.expired() ? nullptr : m_picture;
}

bool TMetalCovertMsgObj::Deliver(const QVariant& image) const
{
    TCoverPicture* picture = Picture();
    return picture && picture->Assign(image);
}

TMetalAsset* DeliverLargePicture(TPostedMessage& message)
{
    const QVariant image = message.TakeWParam();
    const std::unique_ptr<TMessageObj> object = message.TakeLParam();
    const auto* target = dynamic_cast<const TMetalCovertMsgObj*>(object.get());
    if (!target || !target->Deliver(image))
        return nullptr;
    return target->Asset();
}

QSet<quint8> LargePictureKinds()
{
    return {TCoverPicture::kObverse, TCoverPicture::kReverse, TCoverPicture::kSide, TCoverPicture::kInABox,
            TCoverPicture::kOther};
}

int RequestPictures(TMetalAsset& asset, TDownloadQueue& queue, const QSet<quint8>& kinds, QObject* window,
                    quint32 message, bool start)
{
    int queued = 0;
    for (const auto& picture : asset.Pictures) {
        if (!kinds.contains(picture->Kind) || !picture->IsEmpty() || picture->URL.isEmpty())
            continue;
        queue.AddDownload(TDownloadQueue::WorkerClass<TPictureDownloader>(), picture->URL, QString(), message,
                          window, std::make_unique<TMetalCovertMsgObj>(asset, *picture));
        ++queued;
    }
    if (start)
        queue.Start();
    return queued;
}
