#pragma once

#include <QLocale>
#include <QString>
#include <QVariant>

#include <array>

// A display format for numbers written as a format mask:
//   - up to three sections "positive;negative;zero"; a negative value shown through its own
//     section loses its sign ("(,0.##)" shows -5 as "(5)"); without one it is shown through the
//     first section with a leading minus;
//   - '0' a digit that is always shown, '#' a digit shown only when significant, '.' the decimal
//     separator, ',' anywhere before it turns on thousands grouping;
//   - text in single or double quotes and every other character stand as they are ("0.## g",
//     ",0.00%", "'EUR' ,0.00"); '%' is such a character, the value is not multiplied.
// Separators are those of the locale. An empty mask gives the shortest exact text.
class TNumberFormat
{
public:
    TNumberFormat() = default;
    explicit TNumberFormat(const QString& mask);

    QString mask() const { return m_mask; }
    bool isEmpty() const { return m_count == 0; }
    QString format(double value, const QLocale& locale = QLocale()) const;
    // The most decimals the format shows for a positive value; -1 for an empty mask.
    int maxDecimals() const;

private:
    struct Section
    {
        QString prefix;
        QString suffix;
        int minInteger = 0;
        int minDecimals = 0;
        int maxDecimals = 0;
        bool grouping = false;
        bool hasDigits = false;
    };
    static Section parseSection(const QString& text);
    static bool isBlank(const Section& section);
    static QString formatSection(const Section& section, double absValue, const QLocale& locale);

    QString m_mask;
    std::array<Section, 3> m_sections;
    int m_count = 0;
};

// The shortest text of a number in the locale, without grouping: what an editor shows for typing.
QString PlainNumberText(double value, const QLocale& locale = QLocale());

// The number-entry rule of the numeric editors: of a typed text only the digits and the locale's
// decimal separator are kept (and a minus sign in front of the first digit when allowNegative),
// and the rest is read as a number. "31.1 g" reads 31.1 and "12 mm" 12. A blank text reads as
// null. A text with nothing readable left ("mm", "1.2.3") sets *ok to false.
QVariant ParseNumberEntry(const QString& text, const QLocale& locale, bool allowNegative, bool* ok);
