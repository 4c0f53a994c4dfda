#pragma once

#include "uCustomDownloader.h"

#include <QByteArray>
#include <QImage>
#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <vector>

// The records of the catalogue search: a result (TMetalAsset) and its pictures (TCoverPicture),
// read from the server's deciphered reply, and the queuing of their large pictures.

class TDownloadQueue;

// Picture stores of the catalogue server, appended to its base URL.
inline constexpr QStringView cThumbnailStorePath = u"/orv/Images_Thumbs/";
inline constexpr QStringView cLargePictureStorePath = u"/orv/Images_Large/";

// One picture of a catalogue result. Empty (no graphic) until its download is done.
class TCoverPicture
{
public:
    enum TKind : quint8
    {
        kThumbnail = 0,
        kObverse = 1,
        kReverse = 2,
        kSide = 3,
        kInABox = 4,
        kOther = 5,
    };

    TCoverPicture() = default;
    TCoverPicture(quint8 kind, const QString& url) : Kind(kind), URL(url) {}

    // True while the picture has no graphic.
    bool IsEmpty() const { return Data.isEmpty(); }
    // Takes a downloaded picture: the bytes the image was decoded from are kept as they stand.
    // Without bytes the image is encoded as PNG. A null image empties the picture.
    void Assign(const QImage& image, const QByteArray& encoded = {});
    // Takes the result of a picture download (TDownloadedImage, or a plain QImage). False, and the
    // picture unchanged, when the value holds no image.
    bool Assign(const QVariant& result);
    // The graphic, decoded from Data at each call (pictures are held encoded, and decoded only to
    // be shown); null when empty.
    QImage Image() const;
    void Clear() { Data.clear(); }

    quint8 Kind = kThumbnail;
    QString URL;
    quint32 Reserved = 0; // stays 0
    QByteArray Data;      // the encoded picture, stored as it stands when the asset is added
};

// The language text of a picture kind ("Thumbnail" ... "Other"); empty for an unknown kind.
QString PictureKindText(quint8 kind);

// One result of a catalogue search.
class TMetalAsset
{
public:
    TMetalAsset();
    ~TMetalAsset();
    TMetalAsset(const TMetalAsset&) = delete;
    TMetalAsset& operator=(const TMetalAsset&) = delete;

    // Reads one element of a reply: the members by name, in the order of the fields, absent ones and
    // those of another JSON type as 0 or empty; then the pictures in the order thumbnail, obverse,
    // reverse, side, in a box, with URLs on the picture stores under base.
    static std::unique_ptr<TMetalAsset> FromJSON(const QJsonObject& element, const QString& base);

    // The first picture of that kind, or nullptr.
    TCoverPicture* PictureOfKind(quint8 kind) const;
    TCoverPicture& AddPicture(quint8 kind, const QString& url);

    // "Name weight [year ]metal type"; empty for the empty asset.
    QString Caption() const;
    // True for the single empty asset that stands for no asset at all.
    bool IsEmptyAsset() const;

    qint32 Relevance = 0; // "weight" of the reply: a relevance score, no mass
    QString Name;
    QString Series;
    qint32 Metal = 0;
    qint32 Year = 0; // 0 when unknown
    double WeightG = 0.0;
    QString MintName;
    qint32 CoinType = 0;
    double FaceValue = 0.0;
    QString FaceValueCurrency;
    QString Purity;
    double Thickness = 0.0; // millimetres, as Diameter, Width and Height
    double Diameter = 0.0;
    qint32 Mintage = 0;
    double Width = 0.0;
    double Height = 0.0;
    QString Edge;
    bool MintMark = false;
    QString Country;
    QString ObverseDesc;
    QString ReverseDesc;
    QString Artist;
    QStringList Description;
    std::vector<std::unique_ptr<TCoverPicture>> Pictures;

private:
    friend class TMetalCovertMsgObj;
    // Expires with the asset, so that a picture arriving later can tell that its asset has gone.
    std::shared_ptr<const char> m_life;
};

// The single empty asset that stands for no asset at all.
const TMetalAsset& EmptyMetalAsset();

using TMetalAssets = std::vector<std::unique_ptr<TMetalAsset>>;

// The results of a deciphered reply (UTF-8 JSON), one asset per element that is an object, in the
// reply's order. A reply whose root is not an array, or that is no JSON at all, gives no results.
// Picture URLs are made on base, by default CatalogueServerURL().
TMetalAssets ReadSearchReply(const QByteArray& json, const QString& base);
TMetalAssets ReadSearchReply(const QByteArray& json);
// The same for the lines that a text worker posts (joined with line breaks).
TMetalAssets ReadSearchReply(const QStringList& lines, const QString& base);
TMetalAssets ReadSearchReply(const QStringList& lines);

// The subscriber of a large-picture download: the asset and the picture to fill, neither owned.
// Both read nullptr once the asset has been freed.
class TMetalCovertMsgObj : public TMessageObj
{
public:
    TMetalCovertMsgObj(TMetalAsset& asset, TCoverPicture& picture);

    TMetalAsset* Asset() const;
    TCoverPicture* Picture() const;
    // Assigns a downloaded image to the picture while the asset lives; true when it did.
    bool Deliver(const QVariant& image) const;

private:
    TMetalAsset* m_asset;
    TCoverPicture* m_picture;
    std::weak_ptr<const char> m_life;
};

// Handles a large-picture message (cMsgLargePicture): the image goes to the picture of its
// TMetalCovertMsgObj, and the message's image and object are freed. Returns the asset whose
// picture was filled, or nullptr when the asset has gone or the message held no image.
TMetalAsset* DeliverLargePicture(TPostedMessage& message);

// The picture kinds that the program asks for when a card is looked at or added: 1 to 5.
QSet<quint8> LargePictureKinds();

// Queues a TPictureDownloader for each picture of the asset, in order, whose kind is in kinds, that
// is still empty and has a URL; its subscriber is a TMetalCovertMsgObj, its result goes to window
// as message. Starts the queue when start is set. Returns the number of requests queued.
int RequestPictures(TMetalAsset& asset, TDownloadQueue& queue, const QSet<quint8>& kinds, QObject* window,
                    quint32 message, bool start);
