#include "uCatalogueSource.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

const QStringList MetalNames{u"Gold"_s,      u"Silver"_s,  u"Platinum"_s,
                             u"Palladium"_s, u"Rhodium"_s, u"Copper"_s};
const QStringList CoinTypeCodes{u"Coin"_s, u"RectCoin"_s, u"Round"_s, u"Bar"_s, u"DivBar"_s};
const QStringList CoinTypeNames{u"Coin"_s, u"Rectangular coin"_s, u"Round"_s, u"Bar"_s, u"Divisible bar"_s};

// A tab-separated table with a header row; lines starting with # are comments.
class TTable
{
public:
    TTable(const QString& path) : m_path(path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            throw ECatalogueSourceError(u"Cannot read %1: %2"_s.arg(path, file.errorString()));
        int lineNo = 0;
        while (!file.atEnd()) {
            ++lineNo;
            QString line = QString::fromUtf8(file.readLine());
            while (line.endsWith(u'\n') || line.endsWith(u'\r'))
                line.chop(1);
            if (line.isEmpty() || line.startsWith(u'#'))
                continue;
            const QStringList cells = line.split(u'\t');
            if (m_header.isEmpty()) {
                m_header = cells;
                continue;
            }
            if (cells.size() != m_header.size())
                throw ECatalogueSourceError(u"%1:%2: %3 cells instead of %4"_s.arg(path)
                                                .arg(lineNo)
                                                .arg(cells.size())
                                                .arg(m_header.size()));
            m_rows.append(cells);
            m_lineNumbers.append(lineNo);
        }
    }

    qsizetype Count() const { return m_rows.size(); }

    QString Text(qsizetype row, const QString& column) const
    {
        const qsizetype index = m_header.indexOf(column);
        if (index < 0)
            throw ECatalogueSourceError(u"%1: no column %2"_s.arg(m_path, column));
        return m_rows[row][index].trimmed();
    }

    QString Required(qsizetype row, const QString& column) const
    {
        const QString value = Text(row, column);
        if (value.isEmpty())
            Fail(row, u"%1 is empty"_s.arg(column));
        return value;
    }

    double Number(qsizetype row, const QString& column) const
    {
        const QString value = Text(row, column);
        if (value.isEmpty())
            return 0;
        bool ok = false;
        const double number = value.toDouble(&ok);
        if (!ok || number < 0)
            Fail(row, u"%1 is no number: %2"_s.arg(column, value));
        return number;
    }

    int Integer(qsizetype row, const QString& column) const
    {
        const QString value = Text(row, column);
        if (value.isEmpty())
            return 0;
        bool ok = false;
        const int number = value.toInt(&ok);
        if (!ok)
            Fail(row, u"%1 is no whole number: %2"_s.arg(column, value));
        return number;
    }

    [[noreturn]] void Fail(qsizetype row, const QString& message) const
    {
        throw ECatalogueSourceError(u"%1:%2: %3"_s.arg(m_path).arg(m_lineNumbers[row]).arg(message));
    }

private:
    QString m_path;
    QStringList m_header;
    QList<QStringList> m_rows;
    QList<int> m_lineNumbers;
};

} // namespace

ECatalogueSourceError::ECatalogueSourceError(const QString& message)
    : std::runtime_error(message.toStdString())
{}

QString TSourceProduct::PictureBase() const
{
    QString slug = Name.toLower();
    if (Year != 0)
        slug += u' ' + QString::number(Year);
    static const QRegularExpression notWordy(u"[^a-z0-9]+"_s);
    slug.replace(notWordy, u"-"_s);
    while (slug.endsWith(u'-'))
        slug.chop(1);
    while (slug.startsWith(u'-'))
        slug.remove(0, 1);
    return u"%1-%2"_s.arg(ID, 4, 10, QChar(u'0')).arg(slug.left(80));
}

QList<TSourceMint> ReadMints(const QString& path)
{
    const TTable table(path);
    QList<TSourceMint> mints;
    for (qsizetype row = 0; row < table.Count(); ++row) {
        TSourceMint mint;
        mint.ID = table.Integer(row, u"ID"_s);
        mint.Name = table.Required(row, u"Name"_s);
        mint.Country = table.Text(row, u"Country"_s);
        mint.IsPrivate = table.Integer(row, u"Private"_s) != 0;
        const QString also = table.Text(row, u"AlsoFoundBy"_s);
        for (const QString& number : also.split(u',', Qt::SkipEmptyParts)) {
            bool ok = false;
            mint.AlsoFoundBy.append(number.trimmed().toInt(&ok));
            if (!ok)
                table.Fail(row, u"AlsoFoundBy is no list of numbers"_s);
        }
        for (const TSourceMint& other : std::as_const(mints))
            if (other.ID == mint.ID || other.Name == mint.Name)
                table.Fail(row, u"mint %1 is listed twice"_s.arg(mint.Name));
        mints.append(mint);
    }
    return mints;
}

QList<TSourceProduct> ReadProducts(const QString& path, const QList<TSourceMint>& mints)
{
    QHash<QString, int> mintIds;
    for (const TSourceMint& mint : mints)
        mintIds.insert(mint.Name, mint.ID);

    const TTable table(path);
    QList<TSourceProduct> products;
    for (qsizetype row = 0; row < table.Count(); ++row) {
        TSourceProduct p;
        p.ID = static_cast<int>(row) + 1;
        p.Name = table.Required(row, u"Name"_s);
        p.Series = table.Text(row, u"Series"_s);
        p.Metal = static_cast<int>(MetalNames.indexOf(table.Required(row, u"Metal"_s)));
        if (p.Metal < 0)
            table.Fail(row, u"unknown metal %1"_s.arg(table.Text(row, u"Metal"_s)));
        p.Year = table.Integer(row, u"Year"_s);
        p.WeightG = table.Number(row, u"WeightG"_s);
        if (p.WeightG <= 0)
            table.Fail(row, u"no weight"_s);
        p.MintName = table.Required(row, u"Mint"_s);
        p.MintID = mintIds.value(p.MintName, 0);
        if (p.MintID == 0)
            table.Fail(row, u"unknown mint %1"_s.arg(p.MintName));
        p.CoinType = static_cast<int>(CoinTypeCodes.indexOf(table.Required(row, u"Type"_s)));
        if (p.CoinType < 0)
            table.Fail(row, u"unknown type %1"_s.arg(table.Text(row, u"Type"_s)));
        p.FaceValue = table.Number(row, u"FaceValue"_s);
        p.FaceValueCurrency = table.Text(row, u"FaceCurrency"_s);
        p.Purity = table.Text(row, u"Purity"_s);
        p.Thickness = table.Number(row, u"Thickness"_s);
        p.Diameter = table.Number(row, u"Diameter"_s);
        p.Width = table.Number(row, u"Width"_s);
        p.Height = table.Number(row, u"Height"_s);
        p.Edge = table.Text(row, u"Edge"_s);
        p.MintMark = table.Integer(row, u"MintMark"_s) == 1;
        p.Country = table.Text(row, u"Country"_s);
        p.Mintage = table.Integer(row, u"Mintage"_s);
        p.Artist = table.Text(row, u"Artist"_s);
        p.ObverseDesc = table.Text(row, u"Obverse"_s);
        p.ReverseDesc = table.Text(row, u"Reverse"_s);
        p.Description = table.Text(row, u"Description"_s);
        products.append(p);
    }
    return products;
}

QString MetalName(int metal)
{
    return MetalNames.value(metal);
}

QString CoinTypeName(int coinType)
{
    return CoinTypeNames.value(coinType);
}

QString CountryName(const QString& isoCode)
{
    static const QHash<QString, QString> names{
        {u"AT"_s, u"Austria"_s},     {u"AU"_s, u"Australia"_s},      {u"CA"_s, u"Canada"_s},
        {u"CH"_s, u"Switzerland"_s}, {u"CN"_s, u"China"_s},          {u"CZ"_s, u"Czech Republic"_s},
        {u"DE"_s, u"Germany"_s},     {u"GB"_s, u"United Kingdom"_s}, {u"IM"_s, u"Isle of Man"_s},
        {u"MX"_s, u"Mexico"_s},      {u"NL"_s, u"Netherlands"_s},    {u"NU"_s, u"Niue"_s},
        {u"NZ"_s, u"New Zealand"_s}, {u"PL"_s, u"Poland"_s},         {u"SG"_s, u"Singapore"_s},
        {u"SO"_s, u"Somalia"_s},     {u"US"_s, u"United States"_s},  {u"ZA"_s, u"South Africa"_s},
    };
    return names.value(isoCode);
}
