#pragma once

#include "uGridFilter.h"

#include <QStringList>

#include <functional>
#include <vector>

class TGridKeyColumn;

// A view's filter and find text compiled once into tables over the distinct values of the key
// columns they read: a row then matches through a few rank look-ups, never a QVariant.
class TGridMatcher
{
public:
    struct Context
    {
        // Source column of a field, -1 when the source has none (the condition is passed over).
        std::function<int(const QString& fieldName)> ColumnOf;
        std::function<TGridKeyColumn*(int sourceColumn)> Keys;
        // Shown texts by rank, case-folded, for a field's conditions.
        std::function<const std::vector<QString>&(const QString& fieldName)> FieldTexts;
        // The columns the find text searches: their key columns and shown texts by rank.
        std::vector<std::pair<TGridKeyColumn*, const std::vector<QString>*>> FindColumns;
    };

    bool isActive() const { return m_filterActive || m_findActive; }
    bool hasFilter() const { return m_filterActive; }
    bool hasFind() const { return m_findActive; }
    void clear();
    void compile(const TGridFilter& filter, const QStringList& findWords, const Context& context);
    bool matches(int row) const;

    // Splits a find text into the words that must all be found: blanks separate words, "double
    // quotes" keep a phrase. Case-folded.
    static QStringList findWords(const QString& text);

private:
    struct Condition
    {
        TGridKeyColumn* Keys = nullptr;
        std::vector<quint8> Match; // by rank
    };
    struct Node
    {
        bool Group = false;
        bool Or = false;
        bool Negate = false;
        int Condition = -1;
        std::vector<int> Children;
    };
    int compileNode(const TGridFilterNode& node, const Context& context);
    void compileCondition(const TGridFilterNode& node, TGridKeyColumn* keys,
                          const std::vector<QString>& texts, Condition& out) const;
    bool evaluate(int node, int row) const;

    std::vector<Condition> m_conditions;
    std::vector<Node> m_nodes;
    int m_root = -1;
    bool m_filterActive = false;

    struct FindColumn
    {
        TGridKeyColumn* Keys = nullptr;
        std::vector<quint32> WordMask; // by rank: one bit per word found in that value's text
    };
    std::vector<FindColumn> m_findColumns;
    quint32 m_allWords = 0;
    bool m_findActive = false;
};
