#include "uSpot.h"

#include "uCatalogueServer.h"
#include "uEncryptedDownloader.h"
#include "uZTSettings.h"

#include <QLocale>
#include <QScopeGuard>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string_view>

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

[[noreturn]] void invalidReply(const QString& why)
{
    throw std::runtime_error("Invalid spot reply: " + why.toStdString());
}

// The value of a member read as a float: a number, or a text that holds one. Nothing for anything
// else. A number beyond the range of a double reads as an infinity.
std::optional<double> jsonNumber(const QJsonValue& value)
{
    if (value.isDouble())
        return value.toDouble();
    if (!value.isString())
        return std::nullopt;
    const QString text = value.toString().trimmed();
    bool ok = false;
    const double number = QLocale::c().toDouble(text, &ok);
    if (ok)
        return number;
    // The locale refuses an overflow; the C library gives it as an infinity.
    const QByteArray latin = text.toLatin1();
    char* end = nullptr;
    const double wide = std::strtod(latin.constData(), &end);
    if (!latin.isEmpty() && end == latin.constData() + latin.size() && std::isinf(wide))
        return wide;
    return std::nullopt;
}

QString jsonText(const QJsonValue& value)
{
    if (value.isDouble())
        return QString::number(value.toDouble(), 'g', 17);
    if (value.isBool())
        return value.toBool() ? u"true"_s : u"false"_s;
    return value.toString();
}

// Parses any JSON value as root, scalars included; an empty text is "{}".
QJsonValue parseRoot(const QByteArray& text)
{
    const QByteArray source = '[' + (text.isEmpty() ? QByteArray("{}") : text) + ']';
    QJsonParseError error{};
    const QJsonDocument doc = QJsonDocument::fromJson(source, &error);
    if (error.error != QJsonParseError::NoError || doc.array().size() != 1)
        invalidReply(u"not JSON: "_s + error.errorString());
    return doc.array().first();
}

// The JSON text with every number outside a string written as a string of its own text, so that
// the parser keeps a number exactly as it was received ("0.53" stays "0.53"). Only for text that
// is valid JSON: there a number is a run of the characters below that starts with '-' or a digit.
QByteArray numbersAsStrings(const QByteArray& json)
{
    static constexpr std::string_view numberChars = "0123456789+-.eE";
    QByteArray out;
    out.reserve(json.size() + json.size() / 4);
    bool inString = false;
    for (qsizetype i = 0; i < json.size(); ++i) {
        const char c = json.at(i);
        if (inString) {
            out += c;
            if (c == '\\' && i + 1 < json.size())
                out += json.at(++i);
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
            out += c;
        } else if (c == '-' || (c >= '0' && c <= '9')) {
            qsizetype end = i;
            while (end < json.size() && numberChars.find(json.at(end)) != std::string_view::npos)
                ++end;
            out += '"' + json.mid(i, end - i) + '"';
            i = end - 1;
        } else {
            out += c;
        }
    }
    return out;
}

} // namespace

void TSpotPrices::LoadFromText(const QString& text, const QString& currency)
{
    Clear();
    const QByteArray json = text.toUtf8();
    QJsonValue root = parseRoot(json); // raises for text that is not JSON
    if (root.isArray())
        root = parseRoot(numbersAsStrings(json));
    // A refused element leaves the list as empty as a reply that is not JSON.
    auto emptyOnFailure = qScopeGuard([this] { Clear(); });
    if (root.isArray()) {
        const QJsonArray elements = root.toArray();
        for (const QJsonValue& element : elements) {
            const QJsonObject object = element.toObject();
            const QString code = object.value(u"BaseCurrency").toString();
            const int metal = MetalCodeToIndex(code);
            if (metal < 0)
                continue;
            TSpotPrice price;
            price.Metal = metal;
            price.Currency = currency;
            const std::optional<double> value = jsonNumber(object.value(u"Price"));
            if (value && (!std::isfinite(*value) || *value < 0))
                invalidReply(u"the price of %1 is %2"_s.arg(code, jsonText(object.value(u"Price"))));
            price.Price = value.value_or(0.0);
            price.DateC = jsonText(object.value(u"DateC"));
            const std::optional<double> change = jsonNumber(object.value(u"ChangeAbs"));
            if (change && !std::isfinite(*change))
                invalidReply(u"the change of %1 is %2"_s.arg(code, jsonText(object.value(u"ChangeAbs"))));
            price.ChangeAbs = change.value_or(0.0);
            price.ChangePerc = jsonText(object.value(u"ChangePerc"));
            Add(price);
        }
    }
    emptyOnFailure.dismiss();
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
