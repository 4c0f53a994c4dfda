#include "uSpot.h"

#include <array>

using namespace Qt::StringLiterals;

namespace {
const std::array<QString, 6> kMetalCodes = {u"XAU"_s, u"XAG"_s, u"XPT"_s, u"XPD"_s, u"XRH"_s, u"XCU"_s};
}

void TSpotPrices::Add(const TSpotPrice& price)
{
    m_items.push_back(std::make_unique<TSpotPrice>(price));
}

void TSpotPrices::Clear()
{
    m_items.clear();
}

const TSpotPrice* TSpotPrices::FindSpot(int metal) const
{
    for (const auto& item : m_items) {
        if (item->Metal == metal)
            return item.get();
    }
    return nullptr;
}

double TSpotPrices::SpotPriceOf(int metal) const
{
    const TSpotPrice* spot = FindSpot(metal);
    return spot ? spot->Price : 0.0;
}

int MetalCodeToIndex(const QString& code)
{
    for (size_t i = 0; i < kMetalCodes.size(); ++i) {
        if (kMetalCodes[i] == code)
            return static_cast<int>(i);
    }
    return -1;
}

QString MetalIndexToCode(int metal)
{
    if (metal < 0 || metal >= static_cast<int>(kMetalCodes.size()))
        return {};
    return kMetalCodes[static_cast<size_t>(metal)];
}

TSpotPrices& SpotPrices()
{
    static TSpotPrices instance;
    return instance;
}
