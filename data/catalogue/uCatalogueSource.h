#pragma once

// The demo catalogue's text sources: mints.tsv and products.tsv.

#include <QList>
#include <QString>

#include <stdexcept>

class ECatalogueSourceError : public std::runtime_error
{
public:
    explicit ECatalogueSourceError(const QString& message);
};

struct TSourceMint
{
    int ID = 0;
    QString Name;
    QString Country;
    bool IsPrivate = false;
    QList<int> AlsoFoundBy; // further query numbers that find this mint
};

struct TSourceProduct
{
    int ID = 0; // 1-based row number among the products
    QString Name;
    QString Series;
    int Metal = 0;
    int Year = 0;
    double WeightG = 0;
    int MintID = 0;
    QString MintName;
    int CoinType = 0;
    double FaceValue = 0;
    QString FaceValueCurrency;
    QString Purity;
    double Thickness = 0;
    double Diameter = 0;
    double Width = 0;
    double Height = 0;
    QString Edge;
    bool MintMark = false;
    QString Country;
    int Mintage = 0;
    QString Artist;
    QString ObverseDesc;
    QString ReverseDesc;
    QString Description;

    // Base of the picture file names, e.g. "0042-british-gold-sovereign-2019".
    QString PictureBase() const;
};

QList<TSourceMint> ReadMints(const QString& path);
QList<TSourceProduct> ReadProducts(const QString& path, const QList<TSourceMint>& mints);

QString MetalName(int metal);
QString CoinTypeName(int coinType);
QString CountryName(const QString& isoCode);
