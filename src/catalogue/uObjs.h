#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

// One picture of a catalogue result. Empty until its download is done.
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

    bool IsEmpty() const { return Data.isEmpty(); }

    quint8 Kind = kThumbnail;
    QString URL;
    QByteArray Data; // the encoded picture as downloaded
};

// One result of a catalogue search.
class TMetalAsset
{
public:
    TMetalAsset() = default;
    TMetalAsset(const TMetalAsset&) = delete;
    TMetalAsset& operator=(const TMetalAsset&) = delete;

    // The first picture of that kind, or nullptr.
    TCoverPicture* PictureOfKind(quint8 kind) const;
    TCoverPicture& AddPicture(quint8 kind, const QString& url);

    qint32 Relevance = 0;
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
    double Thickness = 0.0;
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
};

// The single empty asset that stands for no asset at all.
const TMetalAsset& EmptyMetalAsset();
