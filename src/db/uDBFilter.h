#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>

// Gives the filter the values of the record being tested.
class TDBFilterRecord
{
public:
    virtual ~TDBFilterRecord() = default;
    virtual QVariant filterValue(int field) const = 0;
};

// A record filter given as text, evaluated on fetched records:
//   (Metal IN (-1, 0, 1)) AND (CoinType IN (-1, 3, 4))
//   Name = 'Maple' OR NOT (Year >= 2000)
//   Price IS NOT NULL AND Name LIKE 'Eagle%'
// Operators: OR, AND, NOT, parentheses, = <> != < > <= >=, [NOT] IN (list), IS [NOT] NULL,
// [NOT] LIKE with % and _ (case-insensitive). Operands: field names (plain, "quoted" or
// [bracketed]), numbers, 'texts' ('' for a quote), NULL, TRUE, FALSE. Keywords are case-insensitive.
// Comparisons with NULL are unknown, and only records for which the filter is true pass.
class TDBFilter
{
public:
    // Parses the text; throws EDatabaseError naming the position of the first error.
    explicit TDBFilter(const QString& text);
    ~TDBFilter();
    TDBFilter(const TDBFilter&) = delete;
    TDBFilter& operator=(const TDBFilter&) = delete;

    QString text() const { return m_text; }
    // Field names used by the filter, in order of appearance.
    QStringList fieldNames() const;
    // Resolves the field names to indexes; resolve returns -1 for an unknown name, which throws
    // EDatabaseError "Field 'X' not found".
    void bind(const std::function<int(const QString&)>& resolve);
    bool matches(const TDBFilterRecord& record) const;

    struct Node;

private:
    QString m_text;
    std::unique_ptr<Node> m_root;
};
