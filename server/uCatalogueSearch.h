#pragma once

// Runs catalogue queries on the server's SQLite catalogue (built from the demo catalogue).

#include "uCatalogueQuery.h"

#include <QJsonArray>
#include <QString>

#include <stdexcept>

class ECatalogueDatabaseError : public std::runtime_error
{
public:
    explicit ECatalogueDatabaseError(const QString& message);
};

class TCatalogueSearch
{
public:
    // Opens the catalogue read-only; raises ECatalogueDatabaseError.
    explicit TCatalogueSearch(const QString& databasePath);
    ~TCatalogueSearch();
    TCatalogueSearch(const TCatalogueSearch&) = delete;
    TCatalogueSearch& operator=(const TCatalogueSearch&) = delete;

    int ProductCount() const { return m_productCount; }

    // One object per product found, with the members of a catalogue result and a relevance in
    // "weight". A query without criteria or with another action finds nothing.
    QJsonArray Search(const TCatalogueQuery& query) const;

    // The SQL text of a query, without its bound keyword expression (for tests and logs).
    static QString SqlOf(const TCatalogueQuery& query);

    // The full-text expression for the keywords: every word or phrase must occur.
    static QString MatchExpression(const QString& keywords);

private:
    QString m_connectionName;
    int m_productCount = 0;
};
