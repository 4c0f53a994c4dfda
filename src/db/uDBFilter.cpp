#include "uDBFilter.h"

#include "uDBError.h"
#include "uDBField.h"

#include <QRegularExpression>
#include <QSet>

#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

struct TDBFilter::Node
{
    enum Kind
    {
        Const,
        Field,
        Not,
        And,
        Or,
        Compare,
        In,
        IsNull,
        Like
    };
    enum Op
    {
        Eq,
        Ne,
        Lt,
        Gt,
        Le,
        Ge
    };
    Kind kind = Const;
    Op op = Eq;
    bool negated = false;
    QVariant value;             // Const
    QString fieldName;          // Field
    int field = -1;             // Field, after bind
    QRegularExpression pattern; // Like with a constant pattern
    std::vector<std::unique_ptr<Node>> children;
};

namespace {

using Node = TDBFilter::Node;

struct Tok
{
    enum Kind
    {
        End,
        Name,
        Number,
        String,
        LParen,
        RParen,
        Comma,
        Op
    };
    Kind kind = End;
    QString text;
    qsizetype pos = 0;
};

// Parentheses may nest this deep. The parser, the evaluation and the tree's destruction recurse once
// per level, so the bound keeps them far from the end of any thread's stack; chains of AND, OR and
// NOT are read without recursion and have no bound.
constexpr int cMaxNesting = 200;
// A filter quoted in an error message is cut to this many characters.
constexpr qsizetype cMaxQuotedFilter = 200;

[[noreturn]] void syntaxError(const QString& filter, qsizetype pos, const QString& what)
{
    const QString quoted =
        filter.size() > cMaxQuotedFilter ? filter.left(cMaxQuotedFilter) + u"..."_s : filter;
    throw EDatabaseError(u"Filter expression error at position %1: %2 in \"%3\""_s.arg(
        QString::number(pos + 1), what, quoted));
}

std::vector<Tok> lex(const QString& s)
{
    std::vector<Tok> out;
    qsizetype i = 0;
    const qsizetype n = s.size();
    while (i < n) {
        const QChar c = s.at(i);
        if (c.isSpace()) {
            ++i;
            continue;
        }
        Tok t;
        t.pos = i;
        if (c == u'(') {
            t.kind = Tok::LParen;
            ++i;
        } else if (c == u')') {
            t.kind = Tok::RParen;
            ++i;
        } else if (c == u',') {
            t.kind = Tok::Comma;
            ++i;
        } else if (c == u'\'') {
            ++i;
            QString text;
            bool closed = false;
            while (i < n) {
                if (s.at(i) == u'\'') {
                    if (i + 1 < n && s.at(i + 1) == u'\'') {
                        text += u'\'';
                        i += 2;
                        continue;
                    }
                    ++i;
                    closed = true;
                    break;
                }
                text += s.at(i++);
            }
            if (!closed)
                syntaxError(s, t.pos, u"unterminated text"_s);
            t.kind = Tok::String;
            t.text = text;
        } else if (c == u'"' || c == u'[') {
            const QChar close = c == u'[' ? u']' : u'"';
            const qsizetype end = s.indexOf(close, i + 1);
            if (end < 0)
                syntaxError(s, t.pos, u"unterminated field name"_s);
            t.kind = Tok::Name;
            t.text = s.mid(i + 1, end - i - 1);
            i = end + 1;
        } else if (c.isDigit() || (c == u'.' && i + 1 < n && s.at(i + 1).isDigit())) {
            while (i < n &&
                   (s.at(i).isDigit() || s.at(i) == u'.' || s.at(i) == u'e' || s.at(i) == u'E' ||
                    ((s.at(i) == u'+' || s.at(i) == u'-') && (s.at(i - 1) == u'e' || s.at(i - 1) == u'E'))))
                ++i;
            t.kind = Tok::Number;
            t.text = s.mid(t.pos, i - t.pos);
        } else if (c.isLetter() || c == u'_') {
            while (i < n && (s.at(i).isLetterOrNumber() || s.at(i) == u'_'))
                ++i;
            t.kind = Tok::Name;
            t.text = s.mid(t.pos, i - t.pos);
        } else if (c == u'<' || c == u'>' || c == u'=' || c == u'!' || c == u'-') {
            t.kind = Tok::Op;
            if (i + 1 < n && (s.mid(i, 2) == u"<>"_s || s.mid(i, 2) == u"<="_s || s.mid(i, 2) == u">="_s ||
                              s.mid(i, 2) == u"!="_s)) {
                t.text = s.mid(i, 2);
                i += 2;
            } else if (c == u'!') {
                syntaxError(s, i, u"unexpected '!'"_s);
            } else {
                t.text = QString(c);
                ++i;
            }
        } else {
            syntaxError(s, i, u"unexpected character '%1'"_s.arg(c));
        }
        out.push_back(t);
    }
    Tok end;
    end.pos = n;
    out.push_back(end);
    return out;
}

class Parser
{
public:
    Parser(const QString& text) : m_text(text), m_toks(lex(text)) {}

    std::unique_ptr<Node> parseAll()
    {
        if (peek().kind == Tok::End)
            syntaxError(m_text, 0, u"empty expression"_s);
        auto root = parseOr();
        if (peek().kind != Tok::End)
            syntaxError(m_text, peek().pos, u"unexpected '%1'"_s.arg(describe(peek())));
        return root;
    }

private:
    const Tok& peek() const { return m_toks[m_at]; }
    const Tok& take() { return m_toks[m_at++]; }

    bool isWord(const Tok& t, QLatin1StringView word) const
    {
        return t.kind == Tok::Name && t.text.compare(word, Qt::CaseInsensitive) == 0 &&
               m_text.at(t.pos) != u'"' && m_text.at(t.pos) != u'[';
    }
    bool acceptWord(QLatin1StringView word)
    {
        if (isWord(peek(), word)) {
            ++m_at;
            return true;
        }
        return false;
    }
    static QString describe(const Tok& t)
    {
        switch (t.kind) {
        case Tok::End:
            return u"end of text"_s;
        case Tok::LParen:
            return u"("_s;
        case Tok::RParen:
            return u")"_s;
        case Tok::Comma:
            return u","_s;
        default:
            return t.text;
        }
    }
    void expect(Tok::Kind kind, const QString& what)
    {
        if (peek().kind != kind)
            syntaxError(m_text, peek().pos, u"%1 expected, found '%2'"_s.arg(what, describe(peek())));
        ++m_at;
    }

    static std::unique_ptr<Node> binary(Node::Kind kind, std::unique_ptr<Node> a, std::unique_ptr<Node> b)
    {
        auto n = std::make_unique<Node>();
        n->kind = kind;
        n->children.push_back(std::move(a));
        n->children.push_back(std::move(b));
        return n;
    }

    // A chain "a OR b OR c" is one node with a child per operand, so a long chain costs no depth.
    std::unique_ptr<Node> parseOr()
    {
        auto first = parseAnd();
        if (!isWord(peek(), "OR"_L1))
            return first;
        auto n = std::make_unique<Node>();
        n->kind = Node::Or;
        n->children.push_back(std::move(first));
        while (acceptWord("OR"_L1))
            n->children.push_back(parseAnd());
        return n;
    }

    std::unique_ptr<Node> parseAnd()
    {
        auto first = parseNot();
        if (!isWord(peek(), "AND"_L1))
            return first;
        auto n = std::make_unique<Node>();
        n->kind = Node::And;
        n->children.push_back(std::move(first));
        while (acceptWord("AND"_L1))
            n->children.push_back(parseNot());
        return n;
    }

    // Any run of NOTs is one node: an odd run negates, an even one only takes the truth value.
    std::unique_ptr<Node> parseNot()
    {
        int count = 0;
        while (acceptWord("NOT"_L1))
            ++count;
        if (count == 0)
            return parsePredicate();
        auto n = std::make_unique<Node>();
        n->kind = Node::Not;
        n->negated = count % 2 == 1;
        n->children.push_back(parsePredicate());
        return n;
    }

    std::unique_ptr<Node> parsePredicate()
    {
        auto left = parsePrimary();
        const Tok& t = peek();
        if (t.kind == Tok::Op && t.text != u"-"_s) {
            take();
            auto n = std::make_unique<Node>();
            n->kind = Node::Compare;
            if (t.text == u"="_s)
                n->op = Node::Eq;
            else if (t.text == u"<>"_s || t.text == u"!="_s)
                n->op = Node::Ne;
            else if (t.text == u"<"_s)
                n->op = Node::Lt;
            else if (t.text == u">"_s)
                n->op = Node::Gt;
            else if (t.text == u"<="_s)
                n->op = Node::Le;
            else
                n->op = Node::Ge;
            n->children.push_back(std::move(left));
            n->children.push_back(parsePrimary());
            return n;
        }
        bool negated = false;
        if (isWord(t, "NOT"_L1) &&
            (isWord(m_toks[m_at + 1], "IN"_L1) || isWord(m_toks[m_at + 1], "LIKE"_L1))) {
            take();
            negated = true;
        }
        if (acceptWord("IN"_L1)) {
            auto n = std::make_unique<Node>();
            n->kind = Node::In;
            n->negated = negated;
            n->children.push_back(std::move(left));
            expect(Tok::LParen, u"'('"_s);
            if (peek().kind == Tok::RParen)
                syntaxError(m_text, peek().pos, u"empty IN list"_s);
            n->children.push_back(parseValue());
            while (peek().kind == Tok::Comma) {
                take();
                n->children.push_back(parseValue());
            }
            expect(Tok::RParen, u"',' or ')'"_s);
            return n;
        }
        if (acceptWord("LIKE"_L1)) {
            auto n = std::make_unique<Node>();
            n->kind = Node::Like;
            n->negated = negated;
            n->children.push_back(std::move(left));
            const Tok& p = peek();
            if (p.kind != Tok::String)
                syntaxError(m_text, p.pos, u"text expected after LIKE"_s);
            take();
            QString re;
            for (const QChar c : p.text) {
                if (c == u'%')
                    re += u".*"_s;
                else if (c == u'_')
                    re += u'.';
                else
                    re += QRegularExpression::escape(QString(c));
            }
            n->pattern = QRegularExpression(QRegularExpression::anchoredPattern(re),
                                            QRegularExpression::CaseInsensitiveOption |
                                                QRegularExpression::DotMatchesEverythingOption);
            return n;
        }
        if (acceptWord("IS"_L1)) {
            auto n = std::make_unique<Node>();
            n->kind = Node::IsNull;
            n->negated = acceptWord("NOT"_L1);
            if (!acceptWord("NULL"_L1))
                syntaxError(m_text, peek().pos, u"NULL expected after IS"_s);
            n->children.push_back(std::move(left));
            return n;
        }
        return left;
    }

    std::unique_ptr<Node> parsePrimary()
    {
        if (peek().kind == Tok::LParen) {
            if (m_depth >= cMaxNesting)
                syntaxError(m_text, peek().pos,
                            u"parentheses nested deeper than %1 levels"_s.arg(cMaxNesting));
            take();
            ++m_depth;
            auto inner = parseOr();
            expect(Tok::RParen, u"')'"_s);
            --m_depth;
            return inner;
        }
        return parseValue();
    }

    std::unique_ptr<Node> parseValue()
    {
        const Tok t = take();
        auto n = std::make_unique<Node>();
        n->kind = Node::Const;
        switch (t.kind) {
        case Tok::Number:
            n->value = numberValue(t, false);
            return n;
        case Tok::String:
            n->value = QVariant(t.text);
            return n;
        case Tok::Op:
            if (t.text == u"-"_s && peek().kind == Tok::Number) {
                n->value = numberValue(take(), true);
                return n;
            }
            break;
        case Tok::Name:
            if (isWord(t, "NULL"_L1)) {
                n->value = QVariant();
                return n;
            }
            if (isWord(t, "TRUE"_L1) || isWord(t, "FALSE"_L1)) {
                n->value = QVariant(isWord(t, "TRUE"_L1));
                return n;
            }
            if (isWord(t, "AND"_L1) || isWord(t, "OR"_L1) || isWord(t, "NOT"_L1) || isWord(t, "IN"_L1) ||
                isWord(t, "IS"_L1) || isWord(t, "LIKE"_L1))
                break;
            n->kind = Node::Field;
            n->fieldName = t.text;
            return n;
        default:
            break;
        }
        syntaxError(m_text, t.pos, u"value expected, found '%1'"_s.arg(describe(t)));
    }

    QVariant numberValue(const Tok& t, bool negative)
    {
        bool ok = false;
        const qlonglong whole = t.text.toLongLong(&ok);
        if (ok)
            return QVariant(negative ? -whole : whole);
        const double d = t.text.toDouble(&ok);
        if (!ok)
            syntaxError(m_text, t.pos, u"bad number '%1'"_s.arg(t.text));
        return QVariant(negative ? -d : d);
    }

    QString m_text;
    std::vector<Tok> m_toks;
    std::size_t m_at = 0;
    int m_depth = 0;
};

bool isNumber(const QVariant& v)
{
    switch (v.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Bool:
        return true;
    default:
        return false;
    }
}

// -1, 0, 1, or nothing when either side is NULL.
std::optional<int> compareValues(const QVariant& a, const QVariant& b)
{
    if (a.isNull() || b.isNull())
        return std::nullopt;
    const bool na = isNumber(a);
    const bool nb = isNumber(b);
    if (na || nb) {
        bool okA = true;
        bool okB = true;
        const double x = na ? a.toDouble() : a.toString().trimmed().toDouble(&okA);
        const double y = nb ? b.toDouble() : b.toString().trimmed().toDouble(&okB);
        if (okA && okB)
            return x < y ? -1 : (x > y ? 1 : 0);
    }
    const int c =
        TDBField::valueText(a, TFieldType::Unknown).compare(TDBField::valueText(b, TFieldType::Unknown));
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

enum class Tri
{
    False,
    True,
    Unknown
};

Tri truth(const QVariant& v)
{
    if (v.isNull())
        return Tri::Unknown;
    if (isNumber(v))
        return v.toDouble() != 0.0 ? Tri::True : Tri::False;
    bool ok = false;
    const double d = v.toString().trimmed().toDouble(&ok);
    return ok && d != 0.0 ? Tri::True : Tri::False;
}

QVariant fromTri(Tri t)
{
    return t == Tri::Unknown ? QVariant() : QVariant(t == Tri::True);
}

QVariant evaluate(const Node& n, const TDBFilterRecord& rec)
{
    switch (n.kind) {
    case Node::Const:
        return n.value;
    case Node::Field:
        return rec.filterValue(n.field);
    case Node::Not: {
        const Tri t = truth(evaluate(*n.children[0], rec));
        if (!n.negated || t == Tri::Unknown)
            return fromTri(t);
        return fromTri(t == Tri::True ? Tri::False : Tri::True);
    }
    case Node::And: {
        // False wins, then unknown.
        bool unknown = false;
        for (const auto& child : n.children) {
            const Tri t = truth(evaluate(*child, rec));
            if (t == Tri::False)
                return fromTri(Tri::False);
            unknown = unknown || t == Tri::Unknown;
        }
        return fromTri(unknown ? Tri::Unknown : Tri::True);
    }
    case Node::Or: {
        // True wins, then unknown.
        bool unknown = false;
        for (const auto& child : n.children) {
            const Tri t = truth(evaluate(*child, rec));
            if (t == Tri::True)
                return fromTri(Tri::True);
            unknown = unknown || t == Tri::Unknown;
        }
        return fromTri(unknown ? Tri::Unknown : Tri::False);
    }
    case Node::Compare: {
        const std::optional<int> c =
            compareValues(evaluate(*n.children[0], rec), evaluate(*n.children[1], rec));
        if (!c)
            return QVariant();
        switch (n.op) {
        case Node::Eq:
            return QVariant(*c == 0);
        case Node::Ne:
            return QVariant(*c != 0);
        case Node::Lt:
            return QVariant(*c < 0);
        case Node::Gt:
            return QVariant(*c > 0);
        case Node::Le:
            return QVariant(*c <= 0);
        case Node::Ge:
            return QVariant(*c >= 0);
        }
        return QVariant();
    }
    case Node::In: {
        const QVariant left = evaluate(*n.children[0], rec);
        if (left.isNull())
            return QVariant();
        bool sawNull = false;
        for (std::size_t i = 1; i < n.children.size(); ++i) {
            const std::optional<int> c = compareValues(left, evaluate(*n.children[i], rec));
            if (!c)
                sawNull = true;
            else if (*c == 0)
                return QVariant(!n.negated);
        }
        return sawNull ? QVariant() : QVariant(n.negated);
    }
    case Node::IsNull:
        return QVariant(evaluate(*n.children[0], rec).isNull() != n.negated);
    case Node::Like: {
        const QVariant left = evaluate(*n.children[0], rec);
        if (left.isNull())
            return QVariant();
        return QVariant(n.pattern.match(TDBField::valueText(left, TFieldType::Unknown)).hasMatch() !=
                        n.negated);
    }
    }
    return QVariant();
}

void collectFields(const Node& n, QStringList* out, QSet<QString>* seen)
{
    if (n.kind == Node::Field && !seen->contains(n.fieldName.toCaseFolded())) {
        seen->insert(n.fieldName.toCaseFolded());
        out->append(n.fieldName);
    }
    for (const auto& c : n.children)
        collectFields(*c, out, seen);
}

void bindFields(Node& n, const std::function<int(const QString&)>& resolve)
{
    if (n.kind == Node::Field) {
        n.field = resolve(n.fieldName);
        if (n.field < 0)
            throw EDatabaseError(u"Field '%1' not found"_s.arg(n.fieldName));
    }
    for (auto& c : n.children)
        bindFields(*c, resolve);
}

} // namespace

TDBFilter::TDBFilter(const QString& text) : m_text(text)
{
    Parser parser(text);
    m_root = parser.parseAll();
}

TDBFilter::~TDBFilter() = default;

QStringList TDBFilter::fieldNames() const
{
    QStringList names;
    QSet<QString> seen;
    collectFields(*m_root, &names, &seen);
    return names;
}

void TDBFilter::bind(const std::function<int(const QString&)>& resolve)
{
    bindFields(*m_root, resolve);
}

bool TDBFilter::matches(const TDBFilterRecord& record) const
{
    return truth(evaluate(*m_root, record)) == Tri::True;
}
