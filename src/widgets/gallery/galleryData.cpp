#include "galleryData.h"

#include <QBuffer>
#include <QColor>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>

#include <array>

using namespace Qt::StringLiterals;

namespace {
struct Column
{
    QString field;
    QString caption;
};

const std::array<Column, 19> kColumns{{
    {u"ID"_s, u"ID"_s},
    {u"ThumbFront"_s, u"Obverse thumb"_s},
    {u"Name"_s, u"Name"_s},
    {u"Metal"_s, u"Metal"_s},
    {u"CoinType"_s, u"Type"_s},
    {u"Year"_s, u"Year"_s},
    {u"WeightG"_s, u"Weight"_s},
    {u"Price"_s, u"Price"_s},
    {u"Qty"_s, u"Quantity"_s},
    {u"Country"_s, u"Country"_s},
    {u"Series"_s, u"Series"_s},
    {u"MintID"_s, u"Mint"_s},
    {u"Caption"_s, u"Caption"_s},
    {u"ThumbBack"_s, u"Reverse thumb"_s},
    {u"Purity"_s, u"Purity"_s},
    {u"WeightGxQty"_s, u"Total weight (g)"_s},
    {u"WeightOZxQty"_s, u"Total weight (oz)"_s},
    {u"TotalPrice"_s, u"Total price"_s},
    {u"LiquidationValuexQty"_s, u"Liquidation value"_s},
}};
const std::array<QString, 6> kPurities{u"999.9"_s, u"999"_s, u"999.5"_s, u"999.5"_s, u"999"_s, u"999"_s};
// Price of a troy ounce per metal, for the generated liquidation values.
const std::array<double, 6> kSpot{2300.0, 28.0, 980.0, 1000.0, 4700.0, 0.3};
constexpr double kTroyOunce = 31.1035;

const std::array<QString, 6> kMetals{u"Gold"_s,      u"Silver"_s,  u"Platinum"_s,
                                     u"Palladium"_s, u"Rhodium"_s, u"Copper"_s};
const std::array<QString, 5> kTypes{u"Coin"_s, u"Rectangular coin"_s, u"Round"_s, u"Bar"_s,
                                    u"Divisible bar"_s};
const std::array<QString, 8> kCountries{u"Australia"_s,      u"Austria"_s,      u"Canada"_s,
                                        u"China"_s,          u"Mexico"_s,       u"South Africa"_s,
                                        u"United Kingdom"_s, u"United States"_s};
const std::array<QString, 8> kNames{u"Maple Leaf"_s, u"Philharmonic"_s, u"Kangaroo"_s,  u"Panda"_s,
                                    u"Libertad"_s,   u"Krugerrand"_s,   u"Britannia"_s, u"Eagle"_s};
const std::array<double, 6> kWeights{3.11035, 7.7759, 15.5518, 31.1035, 100.0, 1000.0};
constexpr int kPictures = 12;
} // namespace

TGalleryData::TGalleryData(int rows, QObject* parent) : QAbstractTableModel(parent)
{
    QRandomGenerator random(20261123);
    m_rows.resize(rows);
    for (int i = 0; i < rows; ++i) {
        Row& row = m_rows[i];
        row.id = i + 1;
        const int name = int(random.bounded(int(kNames.size())));
        row.metal = int(random.bounded(100)) < 70 ? int(random.bounded(2)) : int(random.bounded(6));
        row.coinType = int(random.bounded(5));
        row.year = 1980 + int(random.bounded(46));
        row.weightG = kWeights[random.bounded(int(kWeights.size()))];
        row.priceNull = random.bounded(20) == 0;
        row.price = double(random.bounded(5000000)) / 100.0;
        row.qty = 1 + int(random.bounded(10));
        row.country = kCountries[random.bounded(int(kCountries.size()))];
        row.series = kNames[name] + u" series"_s;
        row.name = kNames[name] + u' ' + QString::number(row.year);
        row.mint = 1 + int(random.bounded(67));
        row.picture = int(random.bounded(kPictures));
    }
}

int TGalleryData::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int TGalleryData::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(kColumns.size());
}

int TGalleryData::columnOf(const QString& fieldName) const
{
    for (int c = 0; c < int(kColumns.size()); ++c)
        if (kColumns[c].field == fieldName)
            return c;
    return -1;
}

QVariant TGalleryData::value(const Row& row, int column) const
{
    switch (column) {
    case 0:
        return row.id;
    case 1:
        return pictureBytes(row.picture);
    case 2:
        return row.name;
    case 3:
        return row.metal;
    case 4:
        return row.coinType;
    case 5:
        return row.year;
    case 6:
        return row.weightG;
    case 7:
        return row.priceNull ? QVariant() : QVariant(row.price);
    case 8:
        return row.qty;
    case 9:
        return row.country;
    case 10:
        return row.series;
    case 11:
        return row.mint;
    case 12:
        return QString(QString::number(row.year) + u' ' + row.name.section(u' ', 0, -2) + u' ' +
                       QString::number(row.weightG / kTroyOunce, 'g', 3) + u" oz"_s);
    case 13:
        return pictureBytes(row.picture + 5);
    case 14:
        return kPurities[std::size_t(row.metal)];
    case 15:
        return row.weightG * row.qty;
    case 16:
        return row.weightG / kTroyOunce * row.qty;
    case 17:
        return row.priceNull ? QVariant() : QVariant(row.price * row.qty);
    case 18:
        return row.weightG / kTroyOunce * row.qty * kSpot[std::size_t(row.metal)] * 0.95;
    default:
        return {};
    }
}

QVariant TGalleryData::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_rows.size()))
        return {};
    const Row& row = m_rows[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case 1:
        case 13:
            return {};
        case 3:
            return kMetals[row.metal];
        case 4:
            return kTypes[row.coinType];
        case 6:
            return QString(QString::number(row.weightG, 'f', 2) + u" g"_s);
        case 7:
            return row.priceNull ? QString() : QString::number(row.price, 'f', 2);
        default:
            return value(row, index.column()).toString();
        }
    case Qt::EditRole:
    case ValueRole:
        return value(row, index.column());
    case KeyRole:
        return row.id;
    default:
        return {};
    }
}

QVariant TGalleryData::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= int(kColumns.size()))
        return QAbstractTableModel::headerData(section, orientation, role);
    if (role == Qt::DisplayRole)
        return kColumns[section].caption;
    if (role == FieldNameRole)
        return kColumns[section].field;
    return {};
}

Qt::ItemFlags TGalleryData::flags(const QModelIndex& index) const
{
    Qt::ItemFlags f = QAbstractTableModel::flags(index);
    if (index.isValid() && index.column() > 1 && index.column() <= 11)
        f |= Qt::ItemIsEditable;
    return f;
}

bool TGalleryData::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || index.column() <= 1)
        return false;
    Row& row = m_rows[index.row()];
    switch (index.column()) {
    case 2:
        row.name = value.toString();
        break;
    case 3:
        row.metal = qBound(0, value.toInt(), 5);
        break;
    case 4:
        row.coinType = qBound(0, value.toInt(), 4);
        break;
    case 5:
        row.year = value.toInt();
        break;
    case 6:
        row.weightG = value.toDouble();
        break;
    case 7:
        row.priceNull = value.isNull();
        row.price = value.toDouble();
        break;
    case 8:
        row.qty = value.toInt();
        break;
    case 9:
        row.country = value.toString();
        break;
    case 10:
        row.series = value.toString();
        break;
    case 11:
        row.mint = value.toInt();
        break;
    default:
        return false;
    }
    emit dataChanged(index, index);
    return true;
}

// A few drawn coins, made once and shared by every row that shows them.
QByteArray TGalleryData::pictureBytes(int picture)
{
    static std::array<QByteArray, kPictures> cache;
    QByteArray& bytes = cache[picture % kPictures];
    if (bytes.isEmpty()) {
        QImage image(200, 200, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor colour = QColor::fromHsv((picture * 360 / kPictures) % 360, 90, 220);
        painter.setBrush(colour);
        painter.setPen(QPen(colour.darker(160), 6));
        painter.drawEllipse(QRectF(8, 8, 184, 184));
        painter.setPen(QPen(colour.darker(200), 2));
        painter.drawEllipse(QRectF(28, 28, 144, 144));
        painter.setFont(QFont(u"DejaVu Sans"_s, 40, QFont::Bold));
        painter.drawText(image.rect(), Qt::AlignCenter, QString::number(picture + 1));
        painter.end();
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
    }
    return bytes;
}
