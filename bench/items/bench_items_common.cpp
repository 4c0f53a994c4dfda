#include "bench_items_common.h"

#include "dmInternalData.h"
#include "uZTTypes.h"

#include <QDate>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTextStream>

#include <algorithm>
#include <array>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct TProduct
{
    const char16_t* name;
    int metal;
    int coinType;
    const char16_t* series;
    const char16_t* country;
    double faceValue;
    const char16_t* currency;
};

// Typical bullion products; weights are drawn per item.
const TProduct kProducts[] = {
    {u"American Eagle", mtGold, ctCoin, u"Eagle", u"US", 50, u"USD"},
    {u"American Silver Eagle", mtSilver, ctCoin, u"Eagle", u"US", 1, u"USD"},
    {u"Maple Leaf", mtGold, ctCoin, u"Maple Leaf", u"CA", 50, u"CAD"},
    {u"Silver Maple Leaf", mtSilver, ctCoin, u"Maple Leaf", u"CA", 5, u"CAD"},
    {u"Krugerrand", mtGold, ctCoin, u"Krugerrand", u"ZA", 0, u""},
    {u"Britannia", mtSilver, ctCoin, u"Britannia", u"GB", 2, u"GBP"},
    {u"Philharmonic", mtGold, ctCoin, u"Philharmonic", u"AT", 100, u"EUR"},
    {u"Kangaroo", mtSilver, ctCoin, u"Kangaroo", u"AU", 1, u"AUD"},
    {u"Panda", mtSilver, ctCoin, u"Panda", u"CN", 10, u"CNY"},
    {u"Libertad", mtSilver, ctCoin, u"Libertad", u"MX", 0, u""},
    {u"Buffalo", mtGold, ctCoin, u"Buffalo", u"US", 50, u"USD"},
    {u"Lunar Series Dragon", mtSilver, ctCoin, u"Lunar III", u"AU", 1, u"AUD"},
    {u"Platinum Eagle", mtPlatinum, ctCoin, u"Eagle", u"US", 100, u"USD"},
    {u"Palladium Maple Leaf", mtPalladium, ctCoin, u"Maple Leaf", u"CA", 50, u"CAD"},
    {u"PAMP Fortuna bar", mtGold, ctBar, u"Fortuna", u"CH", 0, u""},
    {u"Valcambi CombiBar", mtGold, ctDivBar, u"CombiBar", u"CH", 0, u""},
    {u"Engelhard bar", mtSilver, ctBar, u"", u"US", 0, u""},
    {u"Buffalo round", mtSilver, ctRound, u"", u"US", 0, u""},
    {u"Rhodium bar", mtRhodium, ctBar, u"", u"GB", 0, u""},
    {u"Copper round", mtCopper, ctRound, u"", u"US", 0, u""},
    {u"Prospector's nugget", mtGold, ctRound, u"", u"US", 0, u""},
    {u"Gold Rectangular \"Dragon\"", mtGold, ctRectCoin, u"Dragon", u"GB", 10, u"GBP"},
};

const double kOunces[] = {1,    1, 1, 1,  0.5,      0.25,     0.1,
                          0.05, 2, 5, 10, 1.0 / 20, 1.0 / 25, 100.0 / 31.1035 * 10};
const double kSpot[] = {2000, 25, 950, 1000, 4500, 0.3};
const char16_t* kPurities[] = {u".999", u".9999", u".99999", u".900", u".916", u".9167"};
const char16_t* kConditions[] = {u"Brilliant uncirculated (BU)", u"Uncirculated (Unc)", u"Fine (F)",
                                 u"Circulated"};
const char16_t* kStatuses[] = {u"In collection", u"In collection", u"In collection", u"Wanted",
                               u"Waiting for delivery"};
const char16_t* kStores[] = {u"Local coin shop", u"Apmex", u"SD Bullion", u"JM Bullion", u"Coin Invest"};
const char16_t* kLocations[] = {u"Vault", u"Secret location #1", u"Secret location #2"};

template <typename T, std::size_t N> const T& Pick(QRandomGenerator& rng, const T (&items)[N])
{
    return items[rng.bounded(quint32(N))];
}

} // namespace

double GenerateItems(TDM_InternalData& dm, int count, int batch, int photoEvery)
{
    QTextStream err(stderr);
    QRandomGenerator rng(20240501);
    std::vector<QByteArray> photos;
    if (photoEvery > 0)
        for (quint32 i = 0; i < 8; ++i)
            photos.push_back(MakePhotoJpeg(1024, 768, 100 + i));

    TDBDataset& ds = *dm.qDS_Items;
    auto f = [&ds](const QString& name) -> TDBField& { return ds.fieldByName(name); };
    QElapsedTimer timer;
    timer.start();
    ds.disableControls();
    dm.ADConnection->startTransaction();
    for (int i = 0; i < count; ++i) {
        const TProduct& product = Pick(rng, kProducts);
        const double ounces = product.coinType == ctBar || product.coinType == ctDivBar
                                  ? Pick(rng, kOunces) * 10
                                  : Pick(rng, kOunces);
        const double grams = ounces * TroyOunceGrams;
        const int qty = 1 + int(rng.bounded(20u)) * (rng.bounded(4u) == 0 ? 5 : 1);
        const double price = kSpot[product.metal] * ounces * (1.02 + rng.generateDouble() * 0.2);

        ds.append();
        f(u"Name"_s).setAsString(QString::fromUtf16(product.name));
        f(u"Metal"_s).setAsInteger(product.metal);
        f(u"CoinType"_s).setAsInteger(product.coinType);
        f(u"WeightGram"_s).setAsFloat(grams);
        f(u"Series"_s).setAsString(QString::fromUtf16(product.series));
        if (rng.bounded(5u) != 0)
            f(u"Year"_s).setAsInteger(1986 + int(rng.bounded(39u)));
        f(u"MintID"_s).setAsInteger(1 + int(rng.bounded(67u)));
        if (product.faceValue > 0) {
            f(u"FaceValue"_s).setAsFloat(product.faceValue);
            f(u"FaceValueCurrency"_s).setAsString(QString::fromUtf16(product.currency));
        }
        f(u"Purity"_s).setAsString(QString::fromUtf16(Pick(rng, kPurities)));
        f(u"Diameter"_s).setAsFloat(20 + rng.bounded(25u) + 0.5);
        f(u"Thickness"_s).setAsFloat(1.5 + rng.generateDouble() * 2);
        f(u"Country"_s).setAsString(QString::fromUtf16(product.country));
        if (rng.bounded(3u) == 0)
            f(u"Mintage"_s).setAsInteger(1000 * int(1 + rng.bounded(1000u)));
        f(u"Qty"_s).setAsInteger(qty);
        f(u"Price"_s).setAsFloat(std::round(price * 100) / 100);
        f(u"ExpectedPremium"_s).setAsFloat(std::round(price * 0.03 * 100) / 100);
        f(u"PurchaseDate"_s).setAsDate(QDate(2005, 1, 1).addDays(rng.bounded(7300u)));
        f(u"Condition"_s).setAsString(QString::fromUtf16(Pick(rng, kConditions)));
        f(u"Status"_s).setAsString(QString::fromUtf16(Pick(rng, kStatuses)));
        f(u"Store"_s).setAsString(QString::fromUtf16(Pick(rng, kStores)));
        f(u"Location"_s).setAsString(QString::fromUtf16(Pick(rng, kLocations)));
        f(u"Rating"_s).setAsFloat(0.5 * rng.bounded(11u));
        if (rng.bounded(10u) == 0)
            f(u"SerialNumbers"_s).setAsString(u"SN%1-%2"_s.arg(i).arg(rng.bounded(100000u)));
        if (rng.bounded(20u) == 0)
            f(u"Description"_s).setAsString(u"Bought together with lot %1.\r\nOriginal box."_s.arg(i / 7));
        if (photoEvery > 0 && i % photoEvery == 0) {
            f(u"PhotoFront"_s).setAsBytes(photos[std::size_t(i) % photos.size()]);
            f(u"PhotoBack"_s).setAsBytes(photos[std::size_t(i + 3) % photos.size()]);
        }
        ds.post();
        if ((i + 1) % batch == 0) {
            dm.ADConnection->commit();
            dm.ADConnection->startTransaction();
            err << u"\r%1 items, %2 s"_s.arg(i + 1).arg(double(timer.elapsed()) / 1000.0, 0, 'f', 1);
            err.flush();
        }
    }
    dm.ADConnection->commit();
    ds.enableControls();
    err << Qt::endl;
    return double(timer.elapsed()) / 1000.0;
}
