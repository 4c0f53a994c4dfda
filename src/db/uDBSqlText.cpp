#include "uDBSqlText.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

struct Token
{
    enum Kind
    {
        Space,
        Comment,
        String,
        QuotedIdent,
        Ident,
        Number,
        Param,
        Punct
    };
    Kind kind;
    qsizetype pos;
    qsizetype len;
};

bool isIdentStart(QChar c)
{
    return c.isLetter() || c == u'_' || c.unicode() >= 0x80;
}

bool isIdentChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_' || c == u'$' || c.unicode() >= 0x80;
}

QList<Token> tokenize(const QString& sql)
{
    QList<Token> tokens;
    const qsizetype n = sql.size();
    qsizetype i = 0;
    while (i < n) {
        const QChar c = sql.at(i);
        const qsizetype start = i;
        Token::Kind kind = Token::Punct;
        if (c.isSpace()) {
            while (i < n && sql.at(i).isSpace())
                ++i;
            kind = Token::Space;
        } else if (c == u'-' && i + 1 < n && sql.at(i + 1) == u'-') {
            while (i < n && sql.at(i) != u'\n')
                ++i;
            kind = Token::Comment;
        } else if (c == u'/' && i + 1 < n && sql.at(i + 1) == u'*') {
            const qsizetype end = sql.indexOf(u"*/"_s, i + 2);
            i = end < 0 ? n : end + 2;
            kind = Token::Comment;
        } else if (c == u'\'' || c == u'"' || c == u'`' || c == u'[') {
            const QChar close = c == u'[' ? u']' : c;
            ++i;
            while (i < n) {
                if (sql.at(i) == close) {
                    if (close != u']' && i + 1 < n && sql.at(i + 1) == close) {
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                ++i;
            }
            kind = c == u'\'' ? Token::String : Token::QuotedIdent;
        } else if (c.isDigit() || (c == u'.' && i + 1 < n && sql.at(i + 1).isDigit())) {
            while (i < n && (sql.at(i).isLetterOrNumber() || sql.at(i) == u'.' ||
                             ((sql.at(i) == u'+' || sql.at(i) == u'-') &&
                              (sql.at(i - 1) == u'e' || sql.at(i - 1) == u'E'))))
                ++i;
            kind = Token::Number;
        } else if (isIdentStart(c)) {
            while (i < n && isIdentChar(sql.at(i)))
                ++i;
            kind = Token::Ident;
        } else if (c == u':' && i + 1 < n && sql.at(i + 1) == u':') {
            i += 2;
        } else if ((c == u':' || c == u'@' || c == u'$') && i + 1 < n && isIdentStart(sql.at(i + 1))) {
            ++i;
            while (i < n && isIdentChar(sql.at(i)))
                ++i;
            kind = Token::Param;
        } else if (c == u'?') {
            ++i;
            while (i < n && sql.at(i).isDigit())
                ++i;
            kind = Token::Param;
        } else {
            ++i;
        }
        tokens.append(Token{kind, start, i - start});
    }
    return tokens;
}

QString tokenText(const QString& sql, const Token& t)
{
    return sql.mid(t.pos, t.len);
}

// The identifier a token names, without its quotes.
QString identName(const QString& sql, const Token& t)
{
    const QString text = tokenText(sql, t);
    if (t.kind != Token::QuotedIdent || text.size() < 2)
        return text;
    const QChar open = text.front();
    QString inner = text.mid(1, text.size() - 2);
    if (open == u'"')
        inner.replace(u"\"\""_s, u"\""_s);
    else if (open == u'`')
        inner.replace(u"``"_s, u"`"_s);
    return inner;
}

bool isWord(const QString& sql, const Token& t, QLatin1StringView word)
{
    return t.kind == Token::Ident &&
           QStringView(sql).mid(t.pos, t.len).compare(word, Qt::CaseInsensitive) == 0;
}

bool isPunct(const QString& sql, const Token& t, QChar c)
{
    return t.kind == Token::Punct && t.len == 1 && sql.at(t.pos) == c;
}

bool isName(const Token& t)
{
    return t.kind == Token::Ident || t.kind == Token::QuotedIdent;
}

bool isClauseKeyword(const QString& sql, const Token& t)
{
    static const char* const words[] = {"WHERE", "GROUP",   "ORDER",     "LIMIT",   "HAVING",    "WINDOW",
                                        "UNION", "EXCEPT",  "INTERSECT", "JOIN",    "INNER",     "LEFT",
                                        "RIGHT", "FULL",    "CROSS",     "NATURAL", "OUTER",     "ON",
                                        "USING", "INDEXED", "NOT",       "AS",      "RETURNING", "VALUES"};
    for (const char* w : words)
        if (isWord(sql, t, QLatin1StringView(w)))
            return true;
    return false;
}

} // namespace

QString TDBSqlText::quoteIdentifier(const QString& name)
{
    QString inner = name;
    inner.replace(u"\""_s, u"\"\""_s);
    return u"\""_s + inner + u"\""_s;
}

QString TDBSqlText::quoteTypeHints(const QString& sql)
{
    if (!sql.contains(u"::"_s))
        return sql;
    const QList<Token> tokens = tokenize(sql);
    QString out;
    out.reserve(sql.size() + 16);
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        const Token& t = tokens.at(i);
        if (isName(t) && i + 2 < tokens.size() && tokens.at(i + 1).kind == Token::Punct &&
            tokens.at(i + 1).len == 2 && tokens.at(i + 2).kind == Token::Ident) {
            out += quoteIdentifier(identName(sql, t) + u"::"_s + tokenText(sql, tokens.at(i + 2)));
            i += 2;
            continue;
        }
        out += tokenText(sql, t);
    }
    return out;
}

bool TDBSqlText::splitTypeHint(const QString& columnName, QString* fieldName, QString* hint)
{
    const qsizetype at = columnName.indexOf(u"::"_s);
    if (at <= 0) {
        if (fieldName)
            *fieldName = columnName;
        if (hint)
            hint->clear();
        return false;
    }
    if (fieldName)
        *fieldName = columnName.left(at).trimmed();
    if (hint)
        *hint = columnName.mid(at + 2).trimmed();
    return true;
}

QString TDBSqlText::excludeColumns(const QString& sql, const QString& table,
                                   const QList<TDBColumnInfo>& columns, const QSet<QString>& lazyColumns)
{
    if (table.isEmpty() || columns.isEmpty() || lazyColumns.isEmpty())
        return sql;
    const QList<Token> all = tokenize(sql);
    // Significant tokens only, with their index into `all`.
    QList<qsizetype> sig;
    for (qsizetype i = 0; i < all.size(); ++i)
        if (all.at(i).kind != Token::Space && all.at(i).kind != Token::Comment)
            sig.append(i);
    if (sig.isEmpty() || !isWord(sql, all.at(sig.front()), "SELECT"_L1))
        return sql;

    // The select list: from after SELECT [DISTINCT|ALL] to FROM at depth 0.
    qsizetype s = 1;
    if (s < sig.size() &&
        (isWord(sql, all.at(sig.at(s)), "DISTINCT"_L1) || isWord(sql, all.at(sig.at(s)), "ALL"_L1)))
        ++s;
    const qsizetype listStart = s;
    qsizetype fromAt = -1;
    int depth = 0;
    QList<std::pair<qsizetype, qsizetype>> items; // ranges in `sig`, end exclusive
    qsizetype itemStart = listStart;
    for (; s < sig.size(); ++s) {
        const Token& t = all.at(sig.at(s));
        if (isPunct(sql, t, u'('))
            ++depth;
        else if (isPunct(sql, t, u')'))
            --depth;
        else if (depth == 0 && isPunct(sql, t, u',')) {
            items.append({itemStart, s});
            itemStart = s + 1;
        } else if (depth == 0 && isWord(sql, t, "FROM"_L1)) {
            fromAt = s;
            break;
        }
    }
    if (fromAt < 0)
        return sql;
    items.append({itemStart, fromAt});

    // The FROM clause: is it one table, and under which names is our table known?
    bool singleTable = true;
    QSet<QString> qualifiers;
    depth = 0;
    for (qsizetype f = fromAt + 1; f < sig.size(); ++f) {
        const Token& t = all.at(sig.at(f));
        if (isPunct(sql, t, u'('))
            ++depth;
        else if (isPunct(sql, t, u')'))
            --depth;
        if (depth != 0)
            continue;
        if (isWord(sql, t, "WHERE"_L1) || isWord(sql, t, "GROUP"_L1) || isWord(sql, t, "ORDER"_L1) ||
            isWord(sql, t, "LIMIT"_L1) || isWord(sql, t, "HAVING"_L1) || isWord(sql, t, "WINDOW"_L1) ||
            isWord(sql, t, "UNION"_L1) || isWord(sql, t, "EXCEPT"_L1) || isWord(sql, t, "INTERSECT"_L1))
            break;
        if (isPunct(sql, t, u',') || isWord(sql, t, "JOIN"_L1))
            singleTable = false;
        if (isName(t) && identName(sql, t).compare(table, Qt::CaseInsensitive) == 0 &&
            !(f > 0 && isPunct(sql, all.at(sig.at(f - 1)), u'.')) &&
            !(f + 1 < sig.size() && isPunct(sql, all.at(sig.at(f + 1)), u'.'))) {
            qualifiers.insert(table.toLower());
            qsizetype a = f + 1;
            if (a < sig.size() && isWord(sql, all.at(sig.at(a)), "AS"_L1))
                ++a;
            if (a < sig.size() && isName(all.at(sig.at(a))) && !isClauseKeyword(sql, all.at(sig.at(a))))
                qualifiers.insert(identName(sql, all.at(sig.at(a))).toLower());
        }
    }
    if (qualifiers.isEmpty())
        return sql;

    QSet<QString> lazyLower;
    for (const QString& c : lazyColumns)
        lazyLower.insert(c.toLower());
    auto columnList = [&](const QString& prefix) {
        QStringList parts;
        for (const TDBColumnInfo& c : columns) {
            if (lazyLower.contains(c.name.toLower()))
                parts.append(u"NULL AS "_s + quoteIdentifier(c.name));
            else
                parts.append(prefix + quoteIdentifier(c.name));
        }
        return parts.join(u", "_s);
    };

    // Replacements as (first token, last token, text) over `all`.
    struct Replacement
    {
        qsizetype first;
        qsizetype last;
        QString text;
    };
    QList<Replacement> replacements;
    for (const auto& [a, b] : items) {
        const qsizetype count = b - a;
        const Token& t0 = all.at(sig.at(a));
        if (count == 1 && isPunct(sql, t0, u'*')) {
            if (singleTable)
                replacements.append({sig.at(a), sig.at(a), columnList(QString())});
        } else if (count == 3 && isName(t0) && isPunct(sql, all.at(sig.at(a + 1)), u'.') &&
                   isPunct(sql, all.at(sig.at(a + 2)), u'*')) {
            if (qualifiers.contains(identName(sql, t0).toLower()))
                replacements.append({sig.at(a), sig.at(a + 2), columnList(tokenText(sql, t0) + u"."_s)});
        } else if (count == 1 && isName(t0) && lazyLower.contains(identName(sql, t0).toLower())) {
            replacements.append({sig.at(a), sig.at(a), u"NULL AS "_s + quoteIdentifier(identName(sql, t0))});
        } else if (count == 3 && isName(t0) && isPunct(sql, all.at(sig.at(a + 1)), u'.') &&
                   isName(all.at(sig.at(a + 2))) && qualifiers.contains(identName(sql, t0).toLower()) &&
                   lazyLower.contains(identName(sql, all.at(sig.at(a + 2))).toLower())) {
            replacements.append({sig.at(a), sig.at(a + 2),
                                 u"NULL AS "_s + quoteIdentifier(identName(sql, all.at(sig.at(a + 2))))});
        }
    }
    if (replacements.isEmpty())
        return sql;

    QString out;
    out.reserve(sql.size() + 1024);
    qsizetype r = 0;
    for (qsizetype i = 0; i < all.size(); ++i) {
        if (r < replacements.size() && replacements.at(r).first == i) {
            out += replacements.at(r).text;
            i = replacements.at(r).last;
            ++r;
            continue;
        }
        out += tokenText(sql, all.at(i));
    }
    return out;
}
