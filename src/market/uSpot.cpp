#include "uSpot.h"

#include <QLocale>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <stdexcept>

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

namespace {
double jsonFloat(const QJsonValue& value)
{
    if (value.isString()) {
        bool ok = false;
        const double number = QLocale::c().toDouble(value.toString().trimmed(), &ok);
        return ok ? number : 0.0;
    }
    return value.toDouble();
}

QString jsonText(const QJsonValue& value)
{
    if (value.isDouble())
        return QString::number(value.toDouble(), 'g', 17);
    if (value.isBool())
        return value.toBool() ? u"true"_s : u"false"_s;
    return value.toString();
}

// Parses any JSON value as root, scalars included.
QJsonValue parseRoot(const QString& text)
{
    const QByteArray source = '[' + (text.trimmed().isEmpty() ? QByteArray("{}") : text.toUtf8()) + ']';
    QJsonParseError error{};
    const QJsonDocument doc = QJsonDocument::fromJson(source, &error);
    if (error.error != QJsonParseError::NoError || doc.array().size() != 1)
        throw std::runtime_error("Invalid JSON reply: " + error.errorString().toStdString());
    return doc.array().first();
}
} // namespace

void TSpotPrices::LoadFromText(const QString& text, const QString& currency)
{
    Clear();
    const QJsonValue root = parseRoot(text);
    if (root.isArray()) {
        const QJsonArray elements = root.toArray();
        for (const QJsonValue& element : elements) {
            const QJsonObject object = element.toObject();
            const int metal = MetalCodeToIndex(object.value(u"BaseCurrency").toString());
            if (metal < 0)
                continue;
            TSpotPrice price;
            price.Metal = metal;
            price.Currency = currency;
            price.Price = jsonFloat(object.value(u"Price"));
            price.DateC = jsonText(object.value(u"DateC"));
            price.ChangeAbs = jsonFloat(object.value(u"ChangeAbs"));
            price.ChangePerc = jsonText(object.value(u"ChangePerc"));
            Add(price);
        }
    }
    if (OnLoaded)
        OnLoaded(this);
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
