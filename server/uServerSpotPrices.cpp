#include "uServerSpotPrices.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

double Round4(double value)
{
    return std::round(value * 10000.0) / 10000.0;
}

} // namespace

ESpotPricesError::ESpotPricesError(const QString& message) : std::runtime_error(message.toStdString()) {}

TServerSpotPrices::TServerSpotPrices(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw ESpotPricesError(u"Cannot read %1: %2"_s.arg(path, file.errorString()));
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &error);
    if (!doc.isObject())
        throw ESpotPricesError(u"%1 is no JSON object: %2"_s.arg(path, error.errorString()));
    const QJsonObject root = doc.object();
    m_dateC = root.value(u"DateC"_s).toString();
    for (const QJsonValue& value : root.value(u"Metals"_s).toArray()) {
        const QJsonObject metal = value.toObject();
        TMetalPrice price{metal.value(u"BaseCurrency"_s).toString(), metal.value(u"Price"_s).toDouble(),
                          metal.value(u"ChangeAbs"_s).toDouble(), metal.value(u"ChangePerc"_s).toString()};
        if (price.Code.isEmpty() || price.Price <= 0)
            throw ESpotPricesError(u"%1: a metal without code or price"_s.arg(path));
        m_metals.append(price);
    }
    const QJsonObject rates = root.value(u"Rates"_s).toObject();
    for (auto it = rates.begin(); it != rates.end(); ++it) {
        const double rate = it.value().toDouble();
        if (rate <= 0)
            throw ESpotPricesError(u"%1: no rate for %2"_s.arg(path, it.key()));
        m_rates.insert(it.key(), rate);
    }
    if (m_metals.isEmpty() || !m_rates.contains(u"USD"_s))
        throw ESpotPricesError(u"%1 holds no prices in US dollars"_s.arg(path));
}

QJsonArray TServerSpotPrices::ReplyFor(const QString& currency) const
{
    const auto rate = m_rates.constFind(currency);
    if (rate == m_rates.constEnd())
        return {};
    QJsonArray reply;
    for (const TMetalPrice& metal : m_metals)
        reply.append(QJsonObject{{u"BaseCurrency"_s, metal.Code},
                                 {u"Currency"_s, currency},
                                 {u"Price"_s, Round4(metal.Price * rate.value())},
                                 {u"DateC"_s, m_dateC},
                                 {u"ChangeAbs"_s, Round4(metal.ChangeAbs * rate.value())},
                                 {u"ChangePerc"_s, metal.ChangePerc}});
    return reply;
}
