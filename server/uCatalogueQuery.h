#pragma once

// The query string of /orv/search.php as the client forms it: keys in any order, lists in
// brackets, keyword text URL-encoded (blank as plus) or raw.

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <stdexcept>
#include <utility>

// A query the server cannot read: unbalanced brackets, letters where numbers go, values out of range.
class ECatalogueQueryError : public std::runtime_error
{
public:
    explicit ECatalogueQueryError(const QString& message);
};

struct TCatalogueQuery
{
    QString Action;
    QString Keywords;
    std::optional<QList<int>> Metals;
    std::optional<QList<int>> CoinTypes;
    std::optional<QList<int>> Mints;
    std::optional<QList<double>> Weights;                   // fixed weights in grams
    std::optional<std::pair<double, double>> WeightOzRange; // upper bound 0: none
    std::optional<std::pair<double, double>> WeightGRange;  // upper bound 0: none
    std::optional<std::pair<int, int>> YearsRange;          // upper bound 0: none
    std::optional<QList<int>> YearsFilter;

    // True when the query asks for anything at all: keywords or at least one filter.
    bool HasCriteria() const;
};

// The words and phrases of a keyword text: a text in double quotes is one phrase; an unbalanced
// quote runs to the end. Parts without a letter or digit are dropped.
QStringList KeywordTerms(const QString& keywords);

// Parses the encoded query (the part after "?"). Raises ECatalogueQueryError.
TCatalogueQuery ParseCatalogueQuery(const QByteArray& encodedQuery);
