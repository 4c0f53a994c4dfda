#pragma once

// The spot prices the server hands out: prices of one troy ounce in US dollars and the exchange
// rates of every currency the client offers, read from spot_prices.json in the data folder.

#include <QHash>
#include <QJsonArray>
#include <QList>
#include <QString>

#include <stdexcept>

class ESpotPricesError : public std::runtime_error
{
public:
    explicit ESpotPricesError(const QString& message);
};

class TServerSpotPrices
{
public:
    // Raises ESpotPricesError for a missing or malformed file.
    explicit TServerSpotPrices(const QString& path);

    // One object per metal in the currency, or an empty array for a currency not known.
    QJsonArray ReplyFor(const QString& currency) const;

    qsizetype CurrencyCount() const { return m_rates.size(); }

private:
    struct TMetalPrice
    {
        QString Code;
        double Price = 0;
        double ChangeAbs = 0;
        QString ChangePerc;
    };
    QString m_dateC;
    QList<TMetalPrice> m_metals;
    QHash<QString, double> m_rates;
};
