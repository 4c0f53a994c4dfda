#include "uNumberFormat.h"

#include <cmath>

using namespace Qt::StringLiterals;

TNumberFormat::TNumberFormat(const QString& mask) : m_mask(mask)
{
    if (mask.isEmpty())
        return;
    // Split at ';' outside quotes.
    QStringList parts;
    QString current;
    QChar quote;
    for (const QChar ch : mask) {
        if (!quote.isNull()) {
            if (ch == quote)
                quote = QChar();
            current += ch;
        } else if (ch == u'\'' || ch == u'"') {
            quote = ch;
            current += ch;
        } else if (ch == u';') {
            parts << current;
            current.clear();
        } else {
            current += ch;
        }
    }
    parts << current;
    m_count = int(std::min<qsizetype>(parts.size(), 3));
    for (int i = 0; i < m_count; ++i)
        m_sections[i] = parseSection(parts[i]);
}

TNumberFormat::Section TNumberFormat::parseSection(const QString& text)
{
    Section section;
    bool afterPoint = false;
    QChar quote;
    for (const QChar ch : text) {
        QString* literal = section.hasDigits ? &section.suffix : &section.prefix;
        if (!quote.isNull()) {
            if (ch == quote)
                quote = QChar();
            else
                *literal += ch;
            continue;
        }
        if (ch == u'\'' || ch == u'"') {
            quote = ch;
        } else if ((ch == u'0' || ch == u'#') && section.suffix.isEmpty()) {
            section.hasDigits = true;
            if (afterPoint) {
                ++section.maxDecimals;
                if (ch == u'0')
                    section.minDecimals = section.maxDecimals;
            } else if (ch == u'0') {
                ++section.minInteger;
            }
        } else if (ch == u'.' && !afterPoint && section.suffix.isEmpty()) {
            afterPoint = true;
            section.hasDigits = true;
        } else if (ch == u',' && !afterPoint && section.suffix.isEmpty()) {
            section.grouping = true;
        } else {
            *literal += ch;
        }
    }
    return section;
}

int TNumberFormat::maxDecimals() const
{
    return m_count == 0 ? -1 : m_sections[0].maxDecimals;
}

namespace {
// Rounds half away from zero to `decimals` places.
double roundTo(double value, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    const double scaled = value * scale;
    if (!std::isfinite(scaled))
        return value;
    return std::round(scaled) / scale;
}
} // namespace

bool TNumberFormat::isBlank(const Section& section)
{
    return !section.hasDigits && section.prefix.isEmpty() && section.suffix.isEmpty();
}

QString TNumberFormat::formatSection(const Section& section, double absValue, const QLocale& locale)
{
    if (!section.hasDigits)
        return section.prefix + section.suffix;
    const QString digits = QString::number(roundTo(absValue, section.maxDecimals), 'f', section.maxDecimals);
    const qsizetype point = digits.indexOf(u'.');
    QString integer = point < 0 ? digits : digits.left(point);
    QString fraction = point < 0 ? QString() : digits.mid(point + 1);
    while (fraction.size() > section.minDecimals && fraction.endsWith(u'0'))
        fraction.chop(1);
    if (integer == u"0"_s && section.minInteger == 0)
        integer.clear();
    while (integer.size() < section.minInteger)
        integer.prepend(u'0');
    if (section.grouping && integer.size() > 3) {
        const QString separator = locale.groupSeparator();
        for (qsizetype at = integer.size() - 3; at > 0; at -= 3)
            integer.insert(at, separator);
    }
    QString text = section.prefix + integer;
    if (!fraction.isEmpty())
        text += locale.decimalPoint() + fraction;
    return text + section.suffix;
}

QString TNumberFormat::format(double value, const QLocale& locale) const
{
    if (m_count == 0)
        return PlainNumberText(value, locale);
    if (std::isnan(value))
        return {};
    const Section& positive = m_sections[0];
    const bool roundsToZero = roundTo(std::fabs(value), positive.maxDecimals) == 0.0;
    if (roundsToZero) {
        if (m_count >= 3 && !isBlank(m_sections[2]))
            return formatSection(m_sections[2], 0.0, locale);
        return formatSection(positive, 0.0, locale);
    }
    if (value < 0) {
        const Section& negative = m_sections[1];
        if (m_count >= 2 && !isBlank(negative))
            return formatSection(negative, -value, locale);
        return locale.negativeSign() + formatSection(positive, -value, locale);
    }
    return formatSection(positive, value, locale);
}

QString PlainNumberText(double value, const QLocale& locale)
{
    QLocale plain = locale;
    plain.setNumberOptions(QLocale::OmitGroupSeparator);
    if (std::isnan(value))
        return {};
    if (value == std::trunc(value) && std::fabs(value) < 1e15)
        return plain.toString(qlonglong(value));
    return plain.toString(value, 'f', QLocale::FloatingPointShortest);
}

QVariant ParseNumberEntry(const QString& text, const QLocale& locale, bool allowNegative, bool* ok)
{
    *ok = true;
    if (text.trimmed().isEmpty())
        return {};
    const QString point = locale.decimalPoint();
    const QString minus = locale.negativeSign();
    QString kept;
    bool negative = false;
    bool seenDigit = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar ch = text[i];
        if (ch.isDigit()) {
            kept += QChar(u'0' + ch.digitValue());
            seenDigit = true;
        } else if (text.mid(i, point.size()) == point) {
            kept += u'.';
            i += point.size() - 1;
        } else if (allowNegative && !seenDigit && kept.isEmpty() &&
                   (ch == u'-' || text.mid(i, minus.size()) == minus)) {
            negative = true;
        }
    }
    if (!seenDigit) {
        *ok = false;
        return {};
    }
    bool read = false;
    const double value = QLocale::c().toDouble(kept, &read);
    if (!read) {
        *ok = false;
        return {};
    }
    return negative ? -value : value;
}
