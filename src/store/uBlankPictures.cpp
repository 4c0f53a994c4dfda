#include "uBlankPictures.h"

#include <QFile>

#include <array>
#include <stdexcept>

using namespace Qt::StringLiterals;

// The pictures are resources of a static library: register them before the first read.
static void registerBlankPictureResources()
{
    Q_INIT_RESOURCE(orv_blank_pictures);
}

namespace {

// Metal codes 0 to 5 as they appear in the picture names.
constexpr std::array<const char16_t*, 6> kMetalNames = {u"Gold",      u"Silver",  u"Platinum",
                                                        u"Palladium", u"Rhodium", u"Copper"};

} // namespace

QString BlankPictureName(int metal, int coinType, bool isObverse)
{
    const QString side = isObverse ? u"Obverse"_s : u"Reverse"_s;
    if (metal < 0 || metal >= int(kMetalNames.size()))
        return u"iBlankCoinGold"_s + side;
    const QString metalName = QString::fromUtf16(kMetalNames[std::size_t(metal)]);
    switch (coinType) {
    case 0: // coin
    case 1: // rectangular coin
    case 2: // round
        return u"iBlankCoin"_s + metalName + side;
    case 3: // bar
    case 4: // divisible bar
        return u"iBlankBar"_s + metalName;
    default:
        return u"iBlankCoinGold"_s + side;
    }
}

QByteArray BlankPicture(int metal, int coinType, bool isObverse)
{
    static const bool registered = (registerBlankPictureResources(), true);
    Q_UNUSED(registered);

    const QString name = BlankPictureName(metal, coinType, isObverse);
    QFile file(u":/blank/"_s + name);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("A built-in blank picture is missing: " + name.toStdString());
    return file.readAll();
}
