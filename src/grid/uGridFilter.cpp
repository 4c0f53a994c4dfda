#include "uGridFilter.h"

#include "uGridTexts.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>

#include <limits>
#include <stdexcept>

using namespace Qt::StringLiterals;

TGridFilterNode TGridFilterNode::group(TGridFilterGroupOperator op, std::vector<TGridFilterNode> children)
{
    TGridFilterNode node;
    node.IsGroup = true;
    node.GroupOperator = op;
    node.Children = std::move(children);
    return node;
}

TGridFilterNode TGridFilterNode::condition(const QString& fieldName, TGridFilterOperator op,
                                           QVariantList values)
{
    TGridFilterNode node;
    node.FieldName = fieldName;
    node.Operator = op;
    node.Values = std::move(values);
    return node;
}

bool TGridFilterNode::operator==(const TGridFilterNode& other) const
{
    if (IsGroup != other.IsGroup)
        return false;
    if (IsGroup)
        return GroupOperator == other.GroupOperator && Children == other.Children;
    if (FieldName != other.FieldName || Operator != other.Operator || Values.size() != other.Values.size())
        return false;
    for (qsizetype i = 0; i < Values.size(); ++i) {
        const QVariant& a = Values[i];
        const QVariant& b = other.Values[i];
        if (a.isNull() != b.isNull() || (!a.isNull() && a != b))
            return false;
    }
    return true;
}

int TGridFilterNode::valueCount(TGridFilterOperator op)
{
    switch (op) {
    case TGridFilterOperator::IsBlank:
    case TGridFilterOperator::IsNotBlank:
        return 0;
    case TGridFilterOperator::Between:
    case TGridFilterOperator::NotBetween:
        return 2;
    case TGridFilterOperator::InList:
    case TGridFilterOperator::NotInList:
        return -1;
    default:
        return 1;
    }
}

TGridFilter::TGridFilter() : m_root(TGridFilterNode::group(TGridFilterGroupOperator::And)) {}

TGridFilter::TGridFilter(TGridFilterNode root) : m_root(std::move(root))
{
    if (!m_root.IsGroup)
        m_root = TGridFilterNode::group(TGridFilterGroupOperator::And, {m_root});
}

namespace {
bool hasCondition(const TGridFilterNode& node)
{
    if (!node.IsGroup)
        return true;
    for (const TGridFilterNode& child : node.Children)
        if (hasCondition(child))
            return true;
    return false;
}

void collectFields(const TGridFilterNode& node, QStringList& out)
{
    if (!node.IsGroup) {
        if (!out.contains(node.FieldName))
            out.append(node.FieldName);
        return;
    }
    for (const TGridFilterNode& child : node.Children)
        collectFields(child, out);
}

bool negated(TGridFilterGroupOperator op)
{
    return op == TGridFilterGroupOperator::NotAnd || op == TGridFilterGroupOperator::NotOr;
}

bool isOr(TGridFilterGroupOperator op)
{
    return op == TGridFilterGroupOperator::Or || op == TGridFilterGroupOperator::NotOr;
}

// ---- text form ------------------------------------------------------------------------------

QString literal(const QVariant& value)
{
    if (!value.isValid() || value.isNull())
        return u"NULL"_s;
    switch (value.metaType().id()) {
    case QMetaType::Bool:
        return value.toBool() ? u"TRUE"_s : u"FALSE"_s;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
        return value.toString();
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::QDate:
        return u'#' + value.toDate().toString(Qt::ISODate) + u'#';
    case QMetaType::QDateTime:
        return u'#' + value.toDateTime().toString(u"yyyy-MM-ddTHH:mm:ss.zzz"_s) + u'#';
    default:
        break;
    }
    QString text = value.toString();
    text.replace(u'\'', u"''"_s);
    return u'\'' + text + u'\'';
}

QString fieldText(const QString& name)
{
    QString escaped = name;
    escaped.replace(u']', u"]]"_s);
    return u'[' + escaped + u']';
}

QString conditionText(const TGridFilterNode& node)
{
    const QString field = fieldText(node.FieldName);
    const auto value = [&](qsizetype i) {
        return literal(i < node.Values.size() ? node.Values[i] : QVariant());
    };
    switch (node.Operator) {
    case TGridFilterOperator::Equal:
        return field + u" = "_s + value(0);
    case TGridFilterOperator::NotEqual:
        return field + u" <> "_s + value(0);
    case TGridFilterOperator::Less:
        return field + u" < "_s + value(0);
    case TGridFilterOperator::LessOrEqual:
        return field + u" <= "_s + value(0);
    case TGridFilterOperator::Greater:
        return field + u" > "_s + value(0);
    case TGridFilterOperator::GreaterOrEqual:
        return field + u" >= "_s + value(0);
    case TGridFilterOperator::Between:
        return field + u" BETWEEN "_s + value(0) + u" AND "_s + value(1);
    case TGridFilterOperator::NotBetween:
        return field + u" NOT BETWEEN "_s + value(0) + u" AND "_s + value(1);
    case TGridFilterOperator::Contains:
        return field + u" CONTAINS "_s + value(0);
    case TGridFilterOperator::NotContains:
        return field + u" NOT CONTAINS "_s + value(0);
    case TGridFilterOperator::BeginsWith:
        return field + u" BEGINS WITH "_s + value(0);
    case TGridFilterOperator::EndsWith:
        return field + u" ENDS WITH "_s + value(0);
    case TGridFilterOperator::IsBlank:
        return field + u" IS BLANK"_s;
    case TGridFilterOperator::IsNotBlank:
        return field + u" IS NOT BLANK"_s;
    case TGridFilterOperator::InList:
    case TGridFilterOperator::NotInList: {
        QStringList items;
        for (const QVariant& v : node.Values)
            items.append(literal(v));
        return field + (node.Operator == TGridFilterOperator::InList ? u" IN ("_s : u" NOT IN ("_s) +
               items.join(u", "_s) + u')';
    }
    }
    return {};
}

QString nodeText(const TGridFilterNode& node, bool root)
{
    if (!node.IsGroup)
        return conditionText(node);
    QStringList parts;
    for (const TGridFilterNode& child : node.Children)
        if (hasCondition(child))
            parts.append(nodeText(child, false));
    if (parts.isEmpty())
        return {};
    const QString joined = parts.join(isOr(node.GroupOperator) ? u" OR "_s : u" AND "_s);
    if (negated(node.GroupOperator))
        return u"NOT ("_s + joined + u')';
    return root ? joined : u'(' + joined + u')';
}

// ---- parser ---------------------------------------------------------------------------------

class TParser
{
public:
    explicit TParser(const QString& text) : m_text(text) {}

    TGridFilterNode parse()
    {
        skipBlanks();
        if (atEnd())
            return TGridFilterNode::group(TGridFilterGroupOperator::And);
        TGridFilterNode node = parseOr();
        skipBlanks();
        if (!atEnd())
            fail(u"unexpected text"_s);
        if (!node.IsGroup)
            node = TGridFilterNode::group(TGridFilterGroupOperator::And, {node});
        return node;
    }

private:
    [[noreturn]] void fail(const QString& what)
    {
        throw std::runtime_error(QStringLiteral("%1 at position %2").arg(what).arg(m_pos + 1).toStdString());
    }
    bool atEnd() const { return m_pos >= m_text.size(); }
    void skipBlanks()
    {
        while (!atEnd() && m_text[m_pos].isSpace())
            ++m_pos;
    }
    // A keyword, as a whole word, without regard to case.
    bool keyword(QStringView word)
    {
        skipBlanks();
        const qsizetype end = m_pos + word.size();
        if (end > m_text.size())
            return false;
        if (QStringView(m_text).mid(m_pos, word.size()).compare(word, Qt::CaseInsensitive) != 0)
            return false;
        if (end < m_text.size() && (m_text[end].isLetterOrNumber() || m_text[end] == u'_'))
            return false;
        m_pos = end;
        return true;
    }
    bool symbol(QStringView s)
    {
        skipBlanks();
        if (QStringView(m_text).mid(m_pos).startsWith(s)) {
            m_pos += s.size();
            return true;
        }
        return false;
    }
    void expect(QStringView s)
    {
        if (!symbol(s))
            fail(u"expected "_s + s.toString());
    }
    void expectKeyword(QStringView s)
    {
        if (!keyword(s))
            fail(u"expected "_s + s.toString());
    }

    TGridFilterNode parseOr()
    {
        std::vector<TGridFilterNode> items;
        items.push_back(parseAnd());
        while (keyword(u"OR"))
            items.push_back(parseAnd());
        if (items.size() == 1)
            return std::move(items.front());
        return TGridFilterNode::group(TGridFilterGroupOperator::Or, std::move(items));
    }

    TGridFilterNode parseAnd()
    {
        std::vector<TGridFilterNode> items;
        items.push_back(parseUnary());
        while (keyword(u"AND"))
            items.push_back(parseUnary());
        if (items.size() == 1)
            return std::move(items.front());
        return TGridFilterNode::group(TGridFilterGroupOperator::And, std::move(items));
    }

    TGridFilterNode parseGroupBody()
    {
        TGridFilterNode inner = parseOr();
        expect(u")");
        if (!inner.IsGroup || negated(inner.GroupOperator)) {
            // A parenthesised condition or NOT group stays a group of its own.
            return TGridFilterNode::group(TGridFilterGroupOperator::And, {std::move(inner)});
        }
        return inner;
    }

    TGridFilterNode parseUnary()
    {
        skipBlanks();
        const qsizetype saved = m_pos;
        if (keyword(u"NOT")) {
            if (symbol(u"(")) {
                TGridFilterNode group = parseGroupBody();
                group.GroupOperator = isOr(group.GroupOperator) ? TGridFilterGroupOperator::NotOr
                                                                : TGridFilterGroupOperator::NotAnd;
                return group;
            }
            m_pos = saved;
            fail(u"expected ( after NOT"_s);
        }
        if (symbol(u"("))
            return parseGroupBody();
        return parseCondition();
    }

    QString parseField()
    {
        skipBlanks();
        if (!symbol(u"["))
            fail(u"expected a field in brackets"_s);
        return readDelimited(u']', u"unterminated field name"_s);
    }

    // Reads up to the closing character; the closing character written twice stands for itself.
    QString readDelimited(QChar close, const QString& unterminated)
    {
        QString text;
        while (true) {
            if (atEnd())
                fail(unterminated);
            const QChar c = m_text[m_pos++];
            if (c == close) {
                if (!atEnd() && m_text[m_pos] == close) {
                    text += close;
                    ++m_pos;
                    continue;
                }
                break;
            }
            text += c;
        }
        return text;
    }

    QVariant parseValue()
    {
        skipBlanks();
        if (atEnd())
            fail(u"expected a value"_s);
        const QChar c = m_text[m_pos];
        if (c == u'\'') {
            ++m_pos;
            return readDelimited(u'\'', u"unterminated text"_s);
        }
        if (c == u'#') {
            const qsizetype end = m_text.indexOf(u'#', m_pos + 1);
            if (end < 0)
                fail(u"unterminated date"_s);
            const QString body = m_text.mid(m_pos + 1, end - m_pos - 1);
            m_pos = end + 1;
            if (body.contains(u'T')) {
                QDateTime dt = QDateTime::fromString(body, u"yyyy-MM-ddTHH:mm:ss.zzz"_s);
                if (!dt.isValid())
                    dt = QDateTime::fromString(body, Qt::ISODate);
                if (!dt.isValid())
                    fail(u"bad date-time"_s);
                return dt;
            }
            const QDate d = QDate::fromString(body, Qt::ISODate);
            if (!d.isValid())
                fail(u"bad date"_s);
            return d;
        }
        if (keyword(u"TRUE"))
            return true;
        if (keyword(u"FALSE"))
            return false;
        if (keyword(u"NULL"))
            return QVariant();
        qsizetype end = m_pos;
        if (end < m_text.size() && (m_text[end] == u'-' || m_text[end] == u'+'))
            ++end;
        bool real = false;
        while (end < m_text.size()) {
            const QChar ch = m_text[end];
            if (ch.isDigit()) {
                ++end;
            } else if (ch == u'.' || ch == u'e' || ch == u'E') {
                real = true;
                ++end;
                if ((ch == u'e' || ch == u'E') && end < m_text.size() &&
                    (m_text[end] == u'-' || m_text[end] == u'+'))
                    ++end;
            } else {
                break;
            }
        }
        const QString number = m_text.mid(m_pos, end - m_pos);
        bool ok = false;
        if (!real) {
            const qlonglong n = number.toLongLong(&ok);
            if (ok) {
                m_pos = end;
                if (n >= std::numeric_limits<int>::min() && n <= std::numeric_limits<int>::max())
                    return int(n);
                return n;
            }
        }
        const double d = number.toDouble(&ok);
        if (!ok)
            fail(u"expected a value"_s);
        m_pos = end;
        return d;
    }

    TGridFilterNode parseCondition()
    {
        const QString field = parseField();
        using Op = TGridFilterOperator;
        if (symbol(u"<>"))
            return TGridFilterNode::condition(field, Op::NotEqual, {parseValue()});
        if (symbol(u"<="))
            return TGridFilterNode::condition(field, Op::LessOrEqual, {parseValue()});
        if (symbol(u">="))
            return TGridFilterNode::condition(field, Op::GreaterOrEqual, {parseValue()});
        if (symbol(u"<"))
            return TGridFilterNode::condition(field, Op::Less, {parseValue()});
        if (symbol(u">"))
            return TGridFilterNode::condition(field, Op::Greater, {parseValue()});
        if (symbol(u"="))
            return TGridFilterNode::condition(field, Op::Equal, {parseValue()});
        if (keyword(u"IS")) {
            const bool no = keyword(u"NOT");
            expectKeyword(u"BLANK");
            return TGridFilterNode::condition(field, no ? Op::IsNotBlank : Op::IsBlank);
        }
        const bool no = keyword(u"NOT");
        if (keyword(u"BETWEEN")) {
            const QVariant a = parseValue();
            expectKeyword(u"AND");
            const QVariant b = parseValue();
            return TGridFilterNode::condition(field, no ? Op::NotBetween : Op::Between, {a, b});
        }
        if (keyword(u"CONTAINS"))
            return TGridFilterNode::condition(field, no ? Op::NotContains : Op::Contains, {parseValue()});
        if (keyword(u"IN")) {
            expect(u"(");
            QVariantList values;
            if (!symbol(u")")) {
                values.append(parseValue());
                while (symbol(u","))
                    values.append(parseValue());
                expect(u")");
            }
            return TGridFilterNode::condition(field, no ? Op::NotInList : Op::InList, values);
        }
        if (!no && keyword(u"BEGINS")) {
            expectKeyword(u"WITH");
            return TGridFilterNode::condition(field, Op::BeginsWith, {parseValue()});
        }
        if (!no && keyword(u"ENDS")) {
            expectKeyword(u"WITH");
            return TGridFilterNode::condition(field, Op::EndsWith, {parseValue()});
        }
        fail(u"expected an operator"_s);
    }

    const QString& m_text;
    qsizetype m_pos = 0;
};
} // namespace

bool TGridFilter::isEmpty() const
{
    return !hasCondition(m_root);
}

void TGridFilter::clear()
{
    m_root = TGridFilterNode::group(TGridFilterGroupOperator::And);
}

QStringList TGridFilter::fieldNames() const
{
    QStringList names;
    collectFields(m_root, names);
    return names;
}

QString TGridFilter::toText() const
{
    return nodeText(m_root, true);
}

TGridFilter TGridFilter::fromText(const QString& text, QString* error)
{
    if (error)
        error->clear();
    try {
        TParser parser(text);
        return TGridFilter(parser.parse());
    } catch (const std::runtime_error& e) {
        if (error)
            *error = QString::fromUtf8(e.what());
        return TGridFilter();
    }
}

namespace {
QString readableNode(const TGridFilterNode& node, bool root,
                     const std::function<QString(const QString&)>& caption,
                     const std::function<QString(const QString&, const QVariant&)>& valueText)
{
    const TGridTexts& texts = GridTexts();
    if (!node.IsGroup) {
        const auto value = [&](qsizetype i) {
            const QVariant v = i < node.Values.size() ? node.Values[i] : QVariant();
            QString shown = valueText ? valueText(node.FieldName, v) : v.toString();
            switch (node.Operator) {
            case TGridFilterOperator::Contains:
            case TGridFilterOperator::NotContains:
            case TGridFilterOperator::BeginsWith:
            case TGridFilterOperator::EndsWith:
                return QString(u'"' + v.toString() + u'"');
            default:
                break;
            }
            if (shown.isEmpty())
                shown = texts.FilterEmpty;
            return shown;
        };
        QString result =
            (caption ? caption(node.FieldName) : node.FieldName) + u' ' + texts.operatorName(node.Operator);
        switch (TGridFilterNode::valueCount(node.Operator)) {
        case 0:
            break;
        case 1:
            result += u' ' + value(0);
            break;
        case 2:
            result += u' ' + value(0) + u' ' + texts.GroupAnd + u' ' + value(1);
            break;
        default: {
            QStringList items;
            for (qsizetype i = 0; i < node.Values.size(); ++i)
                items.append(value(i));
            result += u" ("_s + items.join(u", "_s) + u')';
            break;
        }
        }
        return result;
    }
    QStringList parts;
    for (const TGridFilterNode& child : node.Children)
        if (hasCondition(child))
            parts.append(readableNode(child, false, caption, valueText));
    if (parts.isEmpty())
        return {};
    const QString joiner = u' ' + (isOr(node.GroupOperator) ? texts.GroupOr : texts.GroupAnd) + u' ';
    const QString joined = parts.join(joiner);
    if (negated(node.GroupOperator))
        return texts.Not + u" ("_s + joined + u')';
    return root || parts.size() == 1 ? joined : u'(' + joined + u')';
}
} // namespace

QString
TGridFilter::displayText(const std::function<QString(const QString&)>& caption,
                         const std::function<QString(const QString&, const QVariant&)>& valueText) const
{
    return readableNode(m_root, true, caption, valueText);
}
