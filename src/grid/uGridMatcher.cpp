#include "uGridMatcher.h"

#include "uGridKeyColumn.h"

#include <QLocale>

#include <optional>

using namespace Qt::StringLiterals;

namespace {
using Op = TGridFilterOperator;

bool needsValues(Op op)
{
    switch (op) {
    case Op::Equal:
    case Op::NotEqual:
    case Op::IsBlank:
    case Op::IsNotBlank:
    case Op::InList:
    case Op::NotInList:
        return false;
    default:
        return true;
    }
}

// Order of a column's value (by rank) against an operand: <0, 0, >0, or nothing when the two
// cannot be compared (a number against a text that is no number).
std::optional<int> compareToOperand(const TGridKeyColumn& keys, quint32 rank, const QVariant& operand)
{
    if (keys.isNumber(rank)) {
        double other = 0;
        bool ok = keys.toNumber(operand, &other);
        if (!ok && operand.metaType().id() == QMetaType::QString) {
            const QString text = operand.toString().trimmed();
            other = text.toDouble(&ok);
            if (!ok)
                other = QLocale().toDouble(text, &ok);
        }
        if (!ok)
            return std::nullopt;
        const double value = keys.number(rank);
        return value < other ? -1 : (value > other ? 1 : 0);
    }
    QString other;
    if (operand.metaType().id() == QMetaType::Double)
        other = QString::number(operand.toDouble(), 'g', QLocale::FloatingPointShortest);
    else
        other = operand.toString();
    return TGridKeyColumn::collate(keys.text(rank), other);
}
} // namespace

QStringList TGridMatcher::findWords(const QString& text)
{
    QStringList words;
    QString current;
    bool quoted = false;
    const auto flush = [&] {
        if (!current.trimmed().isEmpty())
            words.append(current.trimmed().toCaseFolded());
        current.clear();
    };
    for (const QChar c : text) {
        if (c == u'"') {
            flush();
            quoted = !quoted;
        } else if (c.isSpace() && !quoted) {
            flush();
        } else {
            current += c;
        }
    }
    flush();
    words.removeDuplicates();
    return words;
}

void TGridMatcher::clear()
{
    m_conditions.clear();
    m_nodes.clear();
    m_root = -1;
    m_filterActive = false;
    m_findColumns.clear();
    m_allWords = 0;
    m_findActive = false;
}

void TGridMatcher::compile(const TGridFilter& filter, const QStringList& findWords, const Context& context)
{
    clear();
    m_root = compileNode(filter.root(), context);
    m_filterActive = m_root >= 0;

    const int wordCount = std::min<int>(int(findWords.size()), 32);
    if (wordCount > 0) {
        m_allWords = wordCount == 32 ? 0xffffffffu : ((1u << wordCount) - 1u);
        for (const auto& [keys, texts] : context.FindColumns) {
            FindColumn column;
            column.Keys = keys;
            column.WordMask.assign(keys->rankCount(), 0u);
            for (quint32 r = 1; r < keys->rankCount() && r < texts->size(); ++r) {
                const QString& text = (*texts)[r];
                quint32 mask = 0;
                for (int w = 0; w < wordCount; ++w)
                    if (text.contains(findWords[w]))
                        mask |= 1u << w;
                column.WordMask[r] = mask;
            }
            m_findColumns.push_back(std::move(column));
        }
        // Words with no column to search in match nothing.
        m_findActive = true;
    }
}

int TGridMatcher::compileNode(const TGridFilterNode& node, const Context& context)
{
    if (node.IsGroup) {
        Node group;
        group.Group = true;
        group.Or = node.GroupOperator == TGridFilterGroupOperator::Or ||
                   node.GroupOperator == TGridFilterGroupOperator::NotOr;
        group.Negate = node.GroupOperator == TGridFilterGroupOperator::NotAnd ||
                       node.GroupOperator == TGridFilterGroupOperator::NotOr;
        for (const TGridFilterNode& child : node.Children) {
            const int compiled = compileNode(child, context);
            if (compiled >= 0)
                group.Children.push_back(compiled);
        }
        if (group.Children.empty())
            return -1;
        m_nodes.push_back(std::move(group));
        return int(m_nodes.size()) - 1;
    }

    const int column = context.ColumnOf ? context.ColumnOf(node.FieldName) : -1;
    if (column < 0)
        return -1; // a field the source no longer has: passed over
    const int needed = TGridFilterNode::valueCount(node.Operator);
    if (needed > 0 && node.Values.size() < needed)
        return -1;
    if (needed != 0 && needsValues(node.Operator)) {
        for (const QVariant& v : node.Values)
            if (v.isNull() || (v.metaType().id() == QMetaType::QString && v.toString().isEmpty()))
                return -1; // a condition still waiting for its value
    }
    if (needed < 0 && node.Values.isEmpty())
        return -1;
    TGridKeyColumn* keys = context.Keys(column);
    if (!keys)
        return -1;
    static const std::vector<QString> none;
    const bool textual = node.Operator == Op::Contains || node.Operator == Op::NotContains ||
                         node.Operator == Op::BeginsWith || node.Operator == Op::EndsWith;
    const std::vector<QString>& texts =
        textual && context.FieldTexts ? context.FieldTexts(node.FieldName) : none;
    Condition condition;
    compileCondition(node, keys, texts, condition);
    m_conditions.push_back(std::move(condition));
    Node leaf;
    leaf.Condition = int(m_conditions.size()) - 1;
    m_nodes.push_back(std::move(leaf));
    return int(m_nodes.size()) - 1;
}

void TGridMatcher::compileCondition(const TGridFilterNode& node, TGridKeyColumn* keys,
                                    const std::vector<QString>& texts, Condition& out) const
{
    out.Keys = keys;
    const quint32 count = keys->rankCount();
    out.Match.assign(count, 0);
    const QVariant first = node.Values.value(0);
    QVariant low = first;
    QVariant high = node.Values.value(1);
    if (node.Operator == Op::Between || node.Operator == Op::NotBetween) {
        // Either end may come first.
        const bool texts2 =
            low.metaType().id() == QMetaType::QString && high.metaType().id() == QMetaType::QString;
        const bool swap = texts2 ? TGridKeyColumn::collate(low.toString(), high.toString()) > 0
                                 : QVariant::compare(low, high) == QPartialOrdering::Greater;
        if (swap)
            std::swap(low, high);
    }
    const QString needle = first.toString().toCaseFolded();

    for (quint32 r = 1; r < count; ++r) {
        bool match = false;
        switch (node.Operator) {
        case Op::IsBlank:
            match = keys->isText(r) && keys->text(r).trimmed().isEmpty();
            break;
        case Op::IsNotBlank:
            match = !(keys->isText(r) && keys->text(r).trimmed().isEmpty());
            break;
        case Op::Contains:
            match = r < texts.size() && texts[r].contains(needle);
            break;
        case Op::NotContains:
            match = r < texts.size() && !texts[r].contains(needle);
            break;
        case Op::BeginsWith:
            match = r < texts.size() && texts[r].startsWith(needle);
            break;
        case Op::EndsWith:
            match = r < texts.size() && texts[r].endsWith(needle);
            break;
        case Op::Equal:
        case Op::NotEqual: {
            if (first.isNull()) {
                const bool blank = keys->isText(r) && keys->text(r).trimmed().isEmpty();
                match = node.Operator == Op::Equal ? blank : !blank;
                break;
            }
            const auto c = compareToOperand(*keys, r, first);
            match = node.Operator == Op::Equal ? (c && *c == 0) : (!c || *c != 0);
            break;
        }
        case Op::Less:
        case Op::LessOrEqual:
        case Op::Greater:
        case Op::GreaterOrEqual: {
            const auto c = compareToOperand(*keys, r, first);
            if (!c)
                break;
            match = node.Operator == Op::Less          ? *c < 0
                    : node.Operator == Op::LessOrEqual ? *c <= 0
                    : node.Operator == Op::Greater     ? *c > 0
                                                       : *c >= 0;
            break;
        }
        case Op::Between:
        case Op::NotBetween: {
            const auto a = compareToOperand(*keys, r, low);
            const auto b = compareToOperand(*keys, r, high);
            if (!a || !b)
                break;
            const bool inside = *a >= 0 && *b <= 0;
            match = node.Operator == Op::Between ? inside : !inside;
            break;
        }
        case Op::InList:
        case Op::NotInList: {
            bool found = false;
            for (const QVariant& v : node.Values) {
                if (v.isNull())
                    continue;
                const auto c = compareToOperand(*keys, r, v);
                if (c && *c == 0) {
                    found = true;
                    break;
                }
            }
            match = node.Operator == Op::InList ? found : !found;
            break;
        }
        }
        out.Match[r] = match ? 1 : 0;
    }
    // Null matches nothing but "is blank" (and "equals" with no value).
    out.Match[0] = node.Operator == Op::IsBlank || (node.Operator == Op::Equal && first.isNull()) ? 1 : 0;
    if (node.Operator == Op::InList)
        for (const QVariant& v : node.Values)
            if (v.isNull())
                out.Match[0] = 1;
}

bool TGridMatcher::evaluate(int index, int row) const
{
    const Node& node = m_nodes[std::size_t(index)];
    if (!node.Group) {
        const Condition& c = m_conditions[std::size_t(node.Condition)];
        return c.Match[c.Keys->rank(row)] != 0;
    }
    bool result = !node.Or;
    for (const int child : node.Children) {
        const bool value = evaluate(child, row);
        if (node.Or && value) {
            result = true;
            break;
        }
        if (!node.Or && !value) {
            result = false;
            break;
        }
    }
    return node.Negate ? !result : result;
}

bool TGridMatcher::matches(int row) const
{
    if (m_filterActive && !evaluate(m_root, row))
        return false;
    if (!m_findActive)
        return true;
    quint32 mask = 0;
    for (const FindColumn& column : m_findColumns) {
        mask |= column.WordMask[column.Keys->rank(row)];
        if (mask == m_allWords)
            return true;
    }
    return false;
}
