#include "uGridKeyColumn.h"

#include <QAbstractItemModel>
#include <QCollator>
#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <QTime>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <unordered_map>

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

// A hash of a text's code units (FNV-1a): for the short texts of a column much cheaper than
// QHash's, which matters when every row of 100,000 is looked up.
struct TextHash
{
    std::size_t operator()(const QString& text) const noexcept
    {
        std::size_t h = 1469598103934665603ull;
        const char16_t* p = reinterpret_cast<const char16_t*>(text.constData());
        for (qsizetype i = 0; i < text.size(); ++i) {
            h ^= p[i];
            h *= 1099511628211ull;
        }
        return h;
    }
};

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

// What a build that goes a slice of rows at a time has gathered so far.
struct TGridKeyColumn::BuildState
{
    int Rows = 0;
    int Next = 0;
    // Numbers are gathered with their rows and sorted; texts get an id per distinct text (the top
    // bit set), which becomes a rank once the distinct texts are in order.
    std::vector<quint32> Ranks;
    std::vector<std::pair<double, quint32>> NumberRows;
    std::unordered_map<double, quint32> NumberIds;
    std::vector<double> Numbers;
    bool ManyNumbers = false;
    std::unordered_map<QString, quint32, TextHash> TextIds;
    std::vector<QString> Texts;
};

TGridKeyColumn::~TGridKeyColumn() = default;

void TGridKeyColumn::build()
{
    beginBuild();
    buildSome(std::numeric_limits<int>::max());
}

void TGridKeyColumn::beginBuild()
{
    m_build = std::make_unique<BuildState>();
    m_build->Rows = m_model ? m_model->rowCount() : 0;
    m_build->Ranks.assign(std::size_t(m_build->Rows), 0);
    m_numberType = QMetaType::UnknownType;
}

bool TGridKeyColumn::buildSome(int rows)
{
    if (!m_build)
        return true;
    constexpr quint32 textBit = 0x80000000u;
    // Few distinct numbers are found by a hash; past this many the rows are sorted instead.
    constexpr std::size_t hashedNumbers = 4096;
    BuildState& b = *m_build;
    double number = 0;
    QString textValue;
    const int end = b.Rows - b.Next > rows ? b.Next + rows : b.Rows;
    for (int row = b.Next; row < end; ++row) {
        const QVariant v = m_model->data(m_model->index(row, m_column), m_role);
        switch (classify(v, &number, &textValue)) {
        case ValueKind::Null:
            break;
        case ValueKind::Number: {
            if (number == 0.0)
                number = 0.0;
            b.NumberRows.emplace_back(number, quint32(row));
            if (b.ManyNumbers)
                break;
            const auto [it, added] = b.NumberIds.try_emplace(number, quint32(b.Numbers.size()));
            if (added)
                b.Numbers.push_back(number);
            b.Ranks[std::size_t(row)] = it->second + 1;
            b.ManyNumbers = b.Numbers.size() > hashedNumbers;
            break;
        }
        case ValueKind::Text: {
            const auto [it, added] = b.TextIds.try_emplace(textValue, quint32(b.Texts.size()));
            if (added)
                b.Texts.push_back(textValue);
            b.Ranks[std::size_t(row)] = it->second | textBit;
            break;
        }
        }
    }
    b.Next = end;
    if (b.Next < b.Rows)
        return false;

    // Every row read: the ranks in order.
    const std::unique_ptr<BuildState> done = std::move(m_build);
    const int count = done->Rows;
    std::vector<quint32>& ranks = done->Ranks;
    std::vector<std::pair<double, quint32>>& numberRows = done->NumberRows;
    const std::vector<double>& numbers = done->Numbers;
    const bool manyNumbers = done->ManyNumbers;
    std::vector<QString>& texts = done->Texts;
    m_generation = nextGeneration();
    m_numbers.clear();
    m_texts.clear();
    m_rows = count;
    m_width = 1;
    m_store.assign(std::size_t(count), 0);
    if (count == 0)
        return true;
    const int rowsTotal = count;

    // Numbers in order: equal ones share a rank.
    if (manyNumbers) {
        std::sort(numberRows.begin(), numberRows.end());
        for (std::size_t i = 0; i < numberRows.size(); ++i) {
            if (i == 0 || numberRows[i].first != numberRows[i - 1].first)
                m_numbers.push_back(numberRows[i].first);
            ranks[numberRows[i].second] = quint32(m_numbers.size());
        }
    } else {
        std::vector<quint32> order(numbers.size());
        std::iota(order.begin(), order.end(), 0u);
        std::sort(order.begin(), order.end(), [&](quint32 a, quint32 b) { return numbers[a] < numbers[b]; });
        std::vector<quint32> rankOfId(numbers.size());
        for (std::size_t i = 0; i < order.size(); ++i) {
            rankOfId[order[i]] = quint32(i + 1);
            m_numbers.push_back(numbers[order[i]]);
        }
        for (const auto& [value, row] : numberRows)
            ranks[row] = rankOfId[ranks[row] - 1];
    }
    std::vector<std::pair<double, quint32>>().swap(numberRows);

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

    fit(rankCount() - 1);
    for (int row = 0; row < rowsTotal; ++row) {
        const quint32 r = ranks[std::size_t(row)];
        if (r != 0)
            setRank(row, (r & textBit) ? textRank[r & ~textBit] : r);
    }
    return true;
}

void TGridKeyColumn::setRank(int row, quint32 rank)
{
    quint8* at = m_store.data() + std::size_t(row) * std::size_t(m_width);
    switch (m_width) {
    case 1:
        *at = quint8(rank);
        break;
    case 2: {
        const quint16 value = quint16(rank);
        std::memcpy(at, &value, sizeof value);
        break;
    }
    default:
        std::memcpy(at, &rank, sizeof rank);
        break;
    }
}

void TGridKeyColumn::fit(quint32 maxRank)
{
    const int width = maxRank <= 0xff ? 1 : (maxRank <= 0xffff ? 2 : 4);
    if (width <= m_width)
        return;
    std::vector<quint32> ranks(static_cast<std::size_t>(m_rows));
    for (int row = 0; row < m_rows; ++row)
        ranks[std::size_t(row)] = rank(row);
    m_width = width;
    m_store.assign(std::size_t(m_rows) * std::size_t(width), 0);
    for (int row = 0; row < m_rows; ++row)
        setRank(row, ranks[std::size_t(row)]);
}

void TGridKeyColumn::renumberFrom(quint32 rank)
{
    fit(rankCount() - 1);
    for (int row = 0; row < m_rows; ++row) {
        const quint32 r = this->rank(row);
        if (r >= rank)
            setRank(row, r + 1);
    }
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
    m_store.insert(m_store.begin() + std::ptrdiff_t(first) * m_width,
                   std::size_t(count) * std::size_t(m_width), 0);
    m_rows += count;
    for (int row = first; row <= last; ++row) {
        const quint32 r = rankFor(m_model->data(m_model->index(row, m_column), m_role));
        setRank(row, r);
    }
}

void TGridKeyColumn::removeRows(int first, int last)
{
    first = std::clamp(first, 0, rowCount());
    last = std::clamp(last, first - 1, rowCount() - 1);
    if (last < first)
        return;
    m_store.erase(m_store.begin() + std::ptrdiff_t(first) * m_width,
                  m_store.begin() + std::ptrdiff_t(last + 1) * m_width);
    m_rows -= last - first + 1;
}

void TGridKeyColumn::moveRows(int first, int last, int to)
{
    // The block first..last (numbers before the move) now starts at `to`.
    const int count = last - first + 1;
    if (count <= 0 || first == to || first < 0 || last >= rowCount() || to < 0 || to + count > rowCount())
        return;
    const auto at = [this](int row) { return m_store.begin() + std::ptrdiff_t(row) * m_width; };
    if (to < first)
        std::rotate(at(to), at(first), at(last + 1));
    else
        std::rotate(at(first), at(last + 1), at(to + count));
}

void TGridKeyColumn::updateRows(int first, int last)
{
    first = std::max(first, 0);
    last = std::min(last, rowCount() - 1);
    for (int row = first; row <= last; ++row) {
        const quint32 r = rankFor(m_model->data(m_model->index(row, m_column), m_role));
        setRank(row, r);
    }
}
