#include "uCatalogueQuery.h"

#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MaxKeywordLength = 500;
constexpr qsizetype MaxListLength = 100;
constexpr int MaxYear = 9999;
constexpr double MaxWeight = 1.0e7; // grams or ounces: far above any product
constexpr QChar ArabicDecimalSeparator = u'\u066B';

[[noreturn]] void Fail(const QString& message)
{
    throw ECatalogueQueryError(message);
}

// "[a,b,c]" -> {"a", "b", "c"}; "[]" -> {}.
QStringList ListItems(const QString& key, const QString& value)
{
    if (!value.startsWith(u'[') || !value.endsWith(u']') || value.size() < 2)
        Fail(u"%1: no list in brackets"_s.arg(key));
    const QString inner = value.mid(1, value.size() - 2);
    if (inner.contains(u'[') || inner.contains(u']'))
        Fail(u"%1: unbalanced brackets"_s.arg(key));
    if (inner.trimmed().isEmpty())
        return {};
    const QStringList items = inner.split(u',');
    if (items.size() > MaxListLength)
        Fail(u"%1: too many values"_s.arg(key));
    return items;
}

int ToInt(const QString& key, const QString& text, int min, int max)
{
    static const QRegularExpression form(u"^-?[0-9]{1,9}$"_s);
    const QString trimmed = text.trimmed();
    if (!form.match(trimmed).hasMatch())
        Fail(u"%1: %2 is no whole number"_s.arg(key, trimmed.left(40)));
    const int value = trimmed.toInt();
    if (value < min || value > max)
        Fail(u"%1: %2 is out of range"_s.arg(key, trimmed));
    return value;
}

double ToDouble(const QString& key, const QString& text)
{
    static const QRegularExpression form(u"^[0-9]{1,9}([.][0-9]{1,6})?$"_s);
    // The client writes the decimal separator of its locale: '.', ',' (see WeightRange) or the
    // Arabic decimal separator.
    const QString trimmed = text.trimmed().replace(ArabicDecimalSeparator, u'.');
    if (!form.match(trimmed).hasMatch())
        Fail(u"%1: %2 is no weight"_s.arg(key, trimmed.left(40)));
    const double value = trimmed.toDouble();
    if (value > MaxWeight)
        Fail(u"%1: %2 is out of range"_s.arg(key, trimmed));
    return value;
}

QList<int> IntList(const QString& key, const QString& value, int min, int max)
{
    QList<int> result;
    for (const QString& item : ListItems(key, value))
        result.append(ToInt(key, item, min, max));
    return result;
}

// A two-number weight range. The client formats the numbers with two decimals in its own number
// format, so a decimal comma gives four items: "[10,00,0,00]" is 10.00 to 0.00.
std::pair<double, double> WeightRange(const QString& key, const QString& value)
{
    QStringList items = ListItems(key, value);
    static const QRegularExpression decimals(u"^[0-9]{1,6}$"_s);
    if (items.size() == 4 && decimals.match(items[1]).hasMatch() && decimals.match(items[3]).hasMatch())
        items = QStringList{items[0] + u'.' + items[1], items[2] + u'.' + items[3]};
    if (items.size() != 2)
        Fail(u"%1: a range needs two values"_s.arg(key));
    return {ToDouble(key, items[0]), ToDouble(key, items[1])};
}

QString DecodeComponent(const QByteArray& raw, bool plusIsBlank)
{
    QByteArray bytes = raw;
    if (plusIsBlank)
        bytes.replace('+', ' ');
    const QByteArray decoded = QByteArray::fromPercentEncoding(bytes);
    const QString text = QString::fromUtf8(decoded);
    if (text.contains(QChar::ReplacementCharacter) || text.contains(QChar(0)))
        Fail(u"a value is no valid UTF-8 text"_s);
    return text;
}

} // namespace

ECatalogueQueryError::ECatalogueQueryError(const QString& message) : std::runtime_error(message.toStdString())
{}

bool TCatalogueQuery::HasCriteria() const
{
    return !KeywordTerms(Keywords).isEmpty() || Metals || CoinTypes || Mints || Weights || WeightOzRange ||
           WeightGRange || YearsRange || YearsFilter;
}

QStringList KeywordTerms(const QString& keywords)
{
    QStringList terms;
    const auto keep = [&terms](const QString& part) {
        const QString trimmed = part.simplified();
        for (const QChar c : trimmed)
            if (c.isLetterOrNumber()) {
                terms.append(trimmed);
                return;
            }
    };
    QString current;
    bool inPhrase = false;
    for (const QChar c : keywords) {
        if (c == u'"') {
            keep(current);
            current.clear();
            inPhrase = !inPhrase;
        } else if (!inPhrase && c.isSpace()) {
            keep(current);
            current.clear();
        } else {
            current += c;
        }
    }
    keep(current);
    return terms;
}

TCatalogueQuery ParseCatalogueQuery(const QByteArray& encodedQuery)
{
    TCatalogueQuery query;
    for (const QByteArray& piece : encodedQuery.split('&')) {
        if (piece.isEmpty())
            continue;
        const qsizetype eq = piece.indexOf('=');
        const QString key = DecodeComponent(eq < 0 ? piece : piece.left(eq), false).trimmed();
        const QByteArray rawValue = eq < 0 ? QByteArray() : piece.mid(eq + 1);
        if (key == u"keywords"_s) {
            query.Keywords = DecodeComponent(rawValue, true);
            if (query.Keywords.size() > MaxKeywordLength)
                Fail(u"keywords: too long"_s);
            continue;
        }
        const QString value = DecodeComponent(rawValue, false).trimmed();
        if (key == u"action"_s)
            query.Action = value;
        else if (key == u"metals"_s)
            query.Metals = IntList(key, value, 0, 5);
        else if (key == u"coin_types"_s)
            query.CoinTypes = IntList(key, value, 0, 4);
        else if (key == u"mints"_s)
            query.Mints = IntList(key, value, -1000000, 1000000);
        else if (key == u"years_filter"_s)
            query.YearsFilter = IntList(key, value, 0, MaxYear);
        else if (key == u"weights"_s) {
            QList<double> weights;
            for (const QString& item : ListItems(key, value))
                weights.append(ToDouble(key, item));
            query.Weights = weights;
        } else if (key == u"weight_oz_range"_s)
            query.WeightOzRange = WeightRange(key, value);
        else if (key == u"weight_g_range"_s)
            query.WeightGRange = WeightRange(key, value);
        else if (key == u"years_range"_s) {
            const QList<int> years = IntList(key, value, 0, MaxYear);
            if (years.size() != 2)
                Fail(u"%1: a range needs two values"_s.arg(key));
            query.YearsRange = std::pair{years[0], years[1]};
        }
        // Other keys are ignored, as a web form's extra fields would be.
    }
    return query;
}
