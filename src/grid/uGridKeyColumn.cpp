#include "uGridKeyColumn.h"

#include <QAbstractItemModel>
#include <QCollator>
#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QLocale>
#include <QTime>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

namespace {
quint64 nextGeneration()
{
    static quint64 counter = 0;
    return ++counter;
}

const QCollator& collator()
{
    static const QCollator instance = [] {
        QCollator c;
        c.setCaseSensitivity(Qt::CaseInsensitive);
        return c;
    }();
    return instance;
}

bool isIntegral(int type)
{
    switch (type) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return true;
    default:
        return false;
    }
}

// The type kept for a column whose numbers came with the types a and b.
int commonType(int a, int b)
{
    if (a == QMetaType::UnknownType)
        return b;
    if (a == b)
        return a;
    if (isIntegral(a) && isIntegral(b))
        return QMetaType::LongLong;
    return QMetaType::Double;
}

quint64 numberBits(double d)
{
    if (d == 0.0)
        d = 0.0; // one zero for +0 and -0
    quint64 bits = 0;
    std::memcpy(&bits, &d, sizeof bits);
    return bits;
}
} // namespace

TGridKeyColumn::TGridKeyColumn(const QAbstractItemModel* model, int column, int role)
    : m_model(model), m_column(column), m_role(role)
{}

namespace {
// Qt's collator of the "C" locale orders sort keys by code points whatever its case setting, so
// there the grid folds case itself.
bool plainCollation()
{
    static const bool plain = collator().locale().language() == QLocale::C;
    return plain;
}
} // namespace

int TGridKeyColumn::compareTexts(const QString& a, const QString& b)
{
    const int c = collate(a, b);
    return c != 0 ? c : QString::compare(a, b, Qt::CaseSensitive);
}

int TGridKeyColumn::collate(const QString& a, const QString& b)
{
    if (plainCollation())
        return QString::compare(a, b, Qt::CaseInsensitive);
    return collator().compare(a, b);
}

bool TGridKeyColumn::toNumber(const QVariant& value, double* number) const
{
    const int type = value.metaType().id();
    if (!value.isValid() || value.isNull())
        return false;
    if (type == QMetaType::QDate) {
        if (m_numberType == QMetaType::QDateTime)
            *number = double(value.toDate().startOfDay().toMSecsSinceEpoch());
        else
            *number = double(value.toDate().toJulianDay());
        return true;
    }
    if (type == QMetaType::QDateTime) {
        if (m_numberType == QMetaType::QDate)
            *number = double(value.toDateTime().date().toJulianDay());
        else
            *number = double(value.toDateTime().toMSecsSinceEpoch());
        return true;
    }
    if (type == QMetaType::QTime) {
        *number = double(value.toTime().msecsSinceStartOfDay());
        return true;
    }
    if (type == QMetaType::Bool || type == QMetaType::Double || type == QMetaType::Float ||
        isIntegral(type)) {
        bool ok = false;
        *number = value.toDouble(&ok);
        return ok && !std::isnan(*number);
    }
    return false;
}

TGridKeyColumn::ValueKind TGridKeyColumn::classify(const QVariant& value, double* number, QString* text)
{
    if (!value.isValid() || value.isNull())
        return ValueKind::Null;
    const int type = value.metaType().id();
    switch (type) {
    case QMetaType::QByteArray:
    case QMetaType::QImage:
    case QMetaType::QPixmap:
    case QMetaType::QIcon:
        return ValueKind::Null;
    case QMetaType::QString:
        *text = value.toString();
        return ValueKind::Text;
    default:
        break;
    }
    // The column's type decides how dates are kept, so it is settled before the conversion.
    const int wanted = commonType(m_numberType, type);
    if (type == QMetaType::QDate || type == QMetaType::QDateTime || type == QMetaType::QTime ||
        type == QMetaType::Bool || type == QMetaType::Double || type == QMetaType::Float ||
        isIntegral(type)) {
        const int saved = m_numberType;
        m_numberType = type;
        const bool ok = toNumber(value, number);
        m_numberType = saved;
        if (!ok)
            return ValueKind::Null;
        m_numberType = wanted;
        return ValueKind::Number;
    }
    *text = value.toString();
    return ValueKind::Text;
}

QVariant TGridKeyColumn::value(quint32 rank) const
{
    if (rank == 0 || rank >= rankCount())
        return {};
    if (isText(rank))
        return text(rank);
    const double d = number(rank);
    switch (m_numberType) {
    case QMetaType::Bool:
        return d != 0.0;
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
        return int(d);
    case QMetaType::UInt:
    case QMetaType::UShort:
    case QMetaType::UChar:
        return uint(d);
    case QMetaType::LongLong:
    case QMetaType::Long:
        return qlonglong(d);
    case QMetaType::ULongLong:
    case QMetaType::ULong:
        return qulonglong(d);
    case QMetaType::QDate:
        return QDate::fromJulianDay(qint64(d));
    case QMetaType::QDateTime:
        return QDateTime::fromMSecsSinceEpoch(qint64(d));
    case QMetaType::QTime:
        return QTime::fromMSecsSinceStartOfDay(int(d));
    default:
        return d;
    }
}

void TGridKeyColumn::build()
{
    m_generation = nextGeneration();
    m_numbers.clear();
    m_texts.clear();
    m_numberType = QMetaType::UnknownType;
    const int rows = m_model ? m_model->rowCount() : 0;
    m_ranks.assign(std::size_t(rows), 0);
    if (rows == 0)
        return;

    // Distinct values first, each with an id; the ids become ranks once the distinct values are
    // in order. Texts get ids with the top bit set.
    constexpr quint32 textBit = 0x80000000u;
    QHash<quint64, quint32> numberIds;
    QHash<QString, quint32> textIds;
    std::vector<double> numbers;
    std::vector<QString> texts;
    double number = 0;
    QString textValue;
    for (int row = 0; row < rows; ++row) {
        const QVariant v = m_model->data(m_model->index(row, m_column), m_role);
        switch (classify(v, &number, &textValue)) {
        case ValueKind::Null:
            break;
        case ValueKind::Number: {
            const auto it = numberIds.constFind(numberBits(number));
            if (it != numberIds.constEnd()) {
                m_ranks[std::size_t(row)] = it.value() + 1;
            } else {
                const quint32 id = quint32(numbers.size());
                numbers.push_back(number == 0.0 ? 0.0 : number);
                numberIds.insert(numberBits(number), id);
                m_ranks[std::size_t(row)] = id + 1;
            }
            break;
        }
        case ValueKind::Text: {
            const auto it = textIds.constFind(textValue);
            if (it != textIds.constEnd()) {
                m_ranks[std::size_t(row)] = it.value() | textBit;
            } else {
                const quint32 id = quint32(texts.size());
                texts.push_back(textValue);
                textIds.insert(textValue, id);
                m_ranks[std::size_t(row)] = id | textBit;
            }
            break;
        }
        }
    }

    // Numbers in order.
    std::vector<quint32> numberOrder(numbers.size());
    std::iota(numberOrder.begin(), numberOrder.end(), 0u);
    std::sort(numberOrder.begin(), numberOrder.end(),
              [&](quint32 a, quint32 b) { return numbers[a] < numbers[b]; });
    std::vector<quint32> numberRank(numbers.size());
    m_numbers.resize(numbers.size());
    for (std::size_t i = 0; i < numberOrder.size(); ++i) {
        numberRank[numberOrder[i]] = quint32(i + 1);
        m_numbers[i] = numbers[numberOrder[i]];
    }

    // Texts in collation order, through sort keys made once per distinct text.
    std::vector<quint32> textOrder(texts.size());
    std::iota(textOrder.begin(), textOrder.end(), 0u);
    if (texts.size() > 1 && plainCollation()) {
        std::vector<QString> folded;
        folded.reserve(texts.size());
        for (const QString& t : texts)
            folded.push_back(t.toCaseFolded());
        std::sort(textOrder.begin(), textOrder.end(), [&](quint32 a, quint32 b) {
            const int c = QString::compare(folded[a], folded[b], Qt::CaseSensitive);
            return c != 0 ? c < 0 : QString::compare(texts[a], texts[b], Qt::CaseSensitive) < 0;
        });
    } else if (texts.size() > 1) {
        std::vector<QCollatorSortKey> keys;
        keys.reserve(texts.size());
        for (const QString& t : texts)
            keys.push_back(collator().sortKey(t));
        std::sort(textOrder.begin(), textOrder.end(), [&](quint32 a, quint32 b) {
            const int c = keys[a].compare(keys[b]);
            return c != 0 ? c < 0 : QString::compare(texts[a], texts[b], Qt::CaseSensitive) < 0;
        });
    }
    const quint32 textBase = quint32(1 + m_numbers.size());
    std::vector<quint32> textRank(texts.size());
    m_texts.resize(texts.size());
    for (std::size_t i = 0; i < textOrder.size(); ++i) {
        textRank[textOrder[i]] = textBase + quint32(i);
        m_texts[i] = std::move(texts[textOrder[i]]);
    }

    for (quint32& r : m_ranks) {
        if (r == 0)
            continue;
        r = (r & textBit) ? textRank[r & ~textBit] : numberRank[r - 1];
    }
}

void TGridKeyColumn::renumberFrom(quint32 rank)
{
    for (quint32& r : m_ranks)
        if (r >= rank)
            ++r;
    m_generation = nextGeneration();
}

quint32 TGridKeyColumn::rankFor(const QVariant& value)
{
    double number = 0;
    QString textValue;
    switch (classify(value, &number, &textValue)) {
    case ValueKind::Null:
        return 0;
    case ValueKind::Number: {
        if (number == 0.0)
            number = 0.0;
        const auto it = std::lower_bound(m_numbers.begin(), m_numbers.end(), number);
        const quint32 rank = quint32(1 + (it - m_numbers.begin()));
        if (it != m_numbers.end() && *it == number)
            return rank;
        m_numbers.insert(it, number);
        renumberFrom(rank);
        return rank;
    }
    case ValueKind::Text: {
        const auto it =
            std::lower_bound(m_texts.begin(), m_texts.end(), textValue,
                             [](const QString& a, const QString& b) { return compareTexts(a, b) < 0; });
        const quint32 rank = quint32(1 + m_numbers.size() + std::size_t(it - m_texts.begin()));
        if (it != m_texts.end() && *it == textValue)
            return rank;
        m_texts.insert(it, textValue);
        renumberFrom(rank);
        return rank;
    }
    }
    return 0;
}

void TGridKeyColumn::insertRows(int first, int last)
{
    first = std::clamp(first, 0, rowCount());
    const int count = last - first + 1;
    if (count <= 0)
        return;
    m_ranks.insert(m_ranks.begin() + first, std::size_t(count), 0u);
    for (int row = first; row <= last; ++row) {
        const quint32 r = rankFor(m_model->data(m_model->index(row, m_column), m_role));
        m_ranks[std::size_t(row)] = r;
    }
}

void TGridKeyColumn::removeRows(int first, int last)
{
    first = std::clamp(first, 0, rowCount());
    last = std::clamp(last, first - 1, rowCount() - 1);
    if (last < first)
        return;
    m_ranks.erase(m_ranks.begin() + first, m_ranks.begin() + last + 1);
}

void TGridKeyColumn::moveRows(int first, int last, int to)
{
    // The block first..last (numbers before the move) now starts at `to`.
    const int count = last - first + 1;
    if (count <= 0 || first == to || first < 0 || last >= rowCount() || to < 0 || to + count > rowCount())
        return;
    if (to < first)
        std::rotate(m_ranks.begin() + to, m_ranks.begin() + first, m_ranks.begin() + last + 1);
    else
        std::rotate(m_ranks.begin() + first, m_ranks.begin() + last + 1, m_ranks.begin() + to + count);
}

void TGridKeyColumn::updateRows(int first, int last)
{
    first = std::max(first, 0);
    last = std::min(last, rowCount() - 1);
    for (int row = first; row <= last; ++row) {
        const quint32 r = rankFor(m_model->data(m_model->index(row, m_column), m_role));
        m_ranks[std::size_t(row)] = r;
    }
}
