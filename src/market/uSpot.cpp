#include "uSpot.h"

#include "uCatalogueServer.h"
#include "uEncryptedDownloader.h"
#include "uZTSettings.h"

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

TSpotPrices::TSpotPrices() : m_self(std::make_shared<TSpotPrices*>(this)) {}

TSpotPrices::~TSpotPrices() = default;

void TSpotPrices::Refresh()
{
    if (Busy)
        return;
    auto worker = std::make_unique<TEncryptedTextDownloader>(); // not started, frees itself at its end
    worker->URL = CatalogueServerURL() + u"/orv/spot.php?currency="_s + Currency;
    // No window and no message number: the worker posts nothing and reports through its events.
    const std::weak_ptr<TSpotPrices*> self = m_self;
    worker->OnText = [self](TTextDownloader*, const QStringList& lines) {
        if (const std::shared_ptr<TSpotPrices*> alive = self.lock())
            (*alive)->ReceiveText(lines);
    };
    worker->OnTerminate = [self](TThread*) {
        if (const std::shared_ptr<TSpotPrices*> alive = self.lock())
            (*alive)->Busy = false;
    };
    worker.release()->Start();
    Busy = true;
}

void TSpotPrices::ReceiveText(const QStringList& lines)
{
    const QString text = lines.isEmpty() ? QString() : lines.join(u'\n') + u'\n';
    try {
        LoadFromText(text, Currency);
    } catch (const std::exception&) {
        // Not JSON: the list stays cleared and OnLoaded is not called; the user is not told.
    }
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
