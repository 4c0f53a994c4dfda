#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>

#include <functional>
#include <vector>

// Operators of a filter condition. Comparisons work on the typed values of the field; the text
// operators (contains, begins with, ends with) work on the text a cell shows, without regard to
// case. A null value matches nothing but "is blank", as in SQL.
enum class TGridFilterOperator
{
    Equal,
    NotEqual,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Between,    // two values, both ends included
    NotBetween, // two values
    Contains,
    NotContains,
    BeginsWith,
    EndsWith,
    IsBlank, // null, or a text of nothing but blanks
    IsNotBlank,
    InList, // any number of values
    NotInList
};

enum class TGridFilterGroupOperator
{
    And,
    Or,
    NotAnd,
    NotOr
};

// One node of a filter: a group of nodes joined by one operator, or a condition on a field.
struct TGridFilterNode
{
    bool IsGroup = false;
    TGridFilterGroupOperator GroupOperator = TGridFilterGroupOperator::And;
    std::vector<TGridFilterNode> Children;

    QString FieldName;
    TGridFilterOperator Operator = TGridFilterOperator::Equal;
    QVariantList Values;

    static TGridFilterNode group(TGridFilterGroupOperator op, std::vector<TGridFilterNode> children = {});
    static TGridFilterNode condition(const QString& fieldName, TGridFilterOperator op,
                                     QVariantList values = {});

    bool operator==(const TGridFilterNode& other) const;
    // How many values the operator takes: 0, 1, 2, or -1 for a list.
    static int valueCount(TGridFilterOperator op);
};

// The criteria of a view's filter: a tree of AND/OR groups of field / operator / value conditions.
// The tree is plain data, kept apart from the dialog that edits it; toText() and fromText() give a
// stable text form, displayText() the sentence a user reads.
class TGridFilter
{
public:
    TGridFilter();
    explicit TGridFilter(TGridFilterNode root);

    const TGridFilterNode& root() const { return m_root; }
    TGridFilterNode& root() { return m_root; }
    // True when no condition is left anywhere in the tree.
    bool isEmpty() const;
    void clear();
    bool operator==(const TGridFilter& other) const { return m_root == other.m_root; }
    bool operator!=(const TGridFilter& other) const { return !(*this == other); }

    // The text form: [Field] operators and literals, groups in parentheses, such as
    //   [Metal] = 0 AND ([Year] >= 2000 OR [Name] CONTAINS 'eagle') AND NOT ([Price] IS BLANK)
    // Literals: numbers in the "C" locale, 'texts' with '' for a quote, #yyyy-MM-dd# dates,
    // #yyyy-MM-ddTHH:mm:ss# date-times, TRUE, FALSE.
    QString toText() const;
    // Reads a text form; on a syntax error returns an empty filter and sets *error.
    static TGridFilter fromText(const QString& text, QString* error = nullptr);

    // The sentence shown to users, with captions, shown values and the operator names of
    // GridTexts(): Metal equals Gold and (Year is greater than 2000 or Name contains "eagle").
    // caption(fieldName) and valueText(fieldName, value) come from the view.
    QString displayText(const std::function<QString(const QString&)>& caption,
                        const std::function<QString(const QString&, const QVariant&)>& valueText) const;

    // Every field named by a condition, each once, in order of appearance.
    QStringList fieldNames() const;

private:
    TGridFilterNode m_root;
};
