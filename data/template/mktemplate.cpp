// Build-time generator of the blank collection file.
//
// It creates the tables from schema.sql, fills tblVer and tblMints from mints.tsv, draws a badge
// for each mint listed in logos.tsv, sets the start values of the item and mint numbers, and
// compacts the file. The result is embedded into the program as the resource NEW_BLANK_DB.
//
// Usage: mktemplate <schema.sql> <mints.tsv> <logos.tsv> <font folder> <output file>

#include <QBuffer>
#include <QColor>
#include <QDir>
#include <QFile>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHash>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QTextStream>

#include <sqlite3.h>

#include <cmath>
#include <numbers>
#include <stdexcept>
#include <string>

using namespace Qt::StringLiterals;

namespace {

// Schema generation marker of the template.
constexpr auto kSchemaVersion = "101";
// Start values of the row numbers: the first item gets 265, the first new mint 68.
constexpr int kCoinsSequence = 264;
constexpr int kLogoSize = 200;

QString g_sansFamily;

[[noreturn]] void fail(const QString& message)
{
    throw std::runtime_error(message.toStdString());
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(u"cannot read "_s + path);
    return file.readAll();
}

// Rows of a tab-separated file with a header line, as maps of column name to text.
QList<QHash<QString, QString>> readTsv(const QString& path)
{
    const QStringList lines = QString::fromUtf8(readFile(path)).split(u'\n', Qt::SkipEmptyParts);
    if (lines.isEmpty())
        fail(path + u" is empty"_s);
    const QStringList header = lines.constFirst().split(u'\t');
    QList<QHash<QString, QString>> rows;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        QString line = lines.at(i);
        if (line.endsWith(u'\r'))
            line.chop(1);
        const QStringList cells = line.split(u'\t');
        if (cells.size() != header.size())
            fail(u"%1 line %2: %3 cells, expected %4"_s.arg(path)
                     .arg(i + 1)
                     .arg(cells.size())
                     .arg(header.size()));
        QHash<QString, QString> row;
        for (qsizetype c = 0; c < header.size(); ++c)
            row.insert(header.at(c), cells.at(c));
        rows.append(row);
    }
    return rows;
}

// --- Badges ---------------------------------------------------------------------------------------

// A text outline scaled to fit a box and centred in it.
QPainterPath fittedText(const QString& text, const QRectF& box)
{
    QFont font(g_sansFamily);
    font.setPixelSize(100);
    font.setWeight(QFont::Bold);
    QPainterPath path;
    path.addText(0, 0, font, text);
    const QRectF bounds = path.boundingRect();
    const double scale = std::min(box.width() / bounds.width(), box.height() / bounds.height());
    QTransform tr;
    tr.translate(box.center().x(), box.center().y());
    tr.scale(scale, scale);
    tr.translate(-bounds.center().x(), -bounds.center().y());
    return tr.map(path);
}

QPainterPath starPath(QPointF c, double outer, double inner)
{
    QPainterPath path;
    for (int i = 0; i < 10; ++i) {
        const double r = (i % 2 == 0) ? outer : inner;
        const double a = (-90.0 + i * 36.0) * std::numbers::pi / 180.0;
        const QPointF pt(c.x() + r * std::cos(a), c.y() + r * std::sin(a));
        if (i == 0)
            path.moveTo(pt);
        else
            path.lineTo(pt);
    }
    path.closeSubpath();
    return path;
}

// White lettering with a soft drop shadow.
void letter(QPainter& p, const QPainterPath& path, const QColor& shadow)
{
    p.fillPath(path.translated(1.5, 2.0), shadow);
    p.fillPath(path, QColor(0xFF, 0xFF, 0xFF));
}

QImage roundBadge(const QColor& colour, const QString& initials, const QString& country)
{
    QImage img(kLogoSize, kLogoSize, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    const QPointF c(kLogoSize / 2.0, kLogoSize / 2.0);
    const double r = kLogoSize / 2.0 - 3.0;
    const QColor shadow(0, 0, 0, 90);

    p.setBrush(colour.darker(170));
    p.drawEllipse(c, r, r);
    QLinearGradient ring(c.x() - r, c.y() - r, c.x() + r, c.y() + r);
    ring.setColorAt(0.0, colour.lighter(135));
    ring.setColorAt(1.0, colour.darker(140));
    p.setBrush(ring);
    p.drawEllipse(c, r - 3.0, r - 3.0);

    const double inner = r * 0.72;
    QRadialGradient disc(c, inner, QPointF(c.x() - inner * 0.4, c.y() - inner * 0.45));
    disc.setColorAt(0.0, colour.lighter(125));
    disc.setColorAt(1.0, colour.darker(115));
    p.setBrush(colour.darker(160));
    p.drawEllipse(c, inner + 2.0, inner + 2.0);
    p.setBrush(disc);
    p.drawEllipse(c, inner, inner);

    // Fine white rings on both sides of the band.
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(255, 255, 255, 210), 1.6));
    p.drawEllipse(c, r - 8.0, r - 8.0);
    p.drawEllipse(c, inner - 5.0, inner - 5.0);
    p.setPen(Qt::NoPen);

    // In the band: a star at the top and on each side, the country code at the bottom.
    const double band = (r - 8.0 + inner + 2.0) / 2.0;
    letter(p, starPath(QPointF(c.x(), c.y() - band), 9.0, 3.8), shadow);
    letter(p, starPath(QPointF(c.x() - band, c.y()), 6.0, 2.5), shadow);
    letter(p, starPath(QPointF(c.x() + band, c.y()), 6.0, 2.5), shadow);
    letter(p, fittedText(country, QRectF(c.x() - 16.0, c.y() + band - 7.5, 32.0, 15.0)), shadow);

    const double textW = inner * (initials.size() > 2 ? 1.45 : 1.20);
    letter(p, fittedText(initials, QRectF(c.x() - textW / 2.0, c.y() - inner * 0.36, textW, inner * 0.72)),
           shadow);
    return img;
}

QPainterPath shieldPath(double inset)
{
    const double left = 22.0 + inset;
    const double right = kLogoSize - 22.0 - inset;
    const double top = 6.0 + inset;
    const double mid = kLogoSize / 2.0;
    const double shoulder = 104.0;
    const double tip = kLogoSize - 4.0 - inset * 1.5;
    QPainterPath path;
    path.moveTo(left, top);
    path.quadTo(mid, top + 10.0, right, top);
    path.lineTo(right, shoulder);
    path.cubicTo(right, shoulder + 52.0, mid + 28.0, tip - 14.0, mid, tip);
    path.cubicTo(mid - 28.0, tip - 14.0, left, shoulder + 52.0, left, shoulder);
    path.closeSubpath();
    return path;
}

QImage shieldBadge(const QColor& colour, const QString& initials, const QString& country)
{
    QImage img(kLogoSize, kLogoSize, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor shadow(0, 0, 0, 90);

    p.fillPath(shieldPath(0.0), colour.darker(170));
    QLinearGradient body(0, 0, kLogoSize, kLogoSize);
    body.setColorAt(0.0, colour.lighter(130));
    body.setColorAt(1.0, colour.darker(130));
    const QPainterPath face = shieldPath(4.0);
    p.fillPath(face, body);

    // The chief: a darker band across the top with the country code.
    QPainterPath chiefBox;
    chiefBox.addRect(0, 0, kLogoSize, 52.0);
    const QPainterPath chief = face.intersected(chiefBox);
    p.fillPath(chief, QColor(0, 0, 0, 60));
    p.setPen(QPen(QColor(255, 255, 255, 210), 1.6));
    p.drawLine(QPointF(30.0, 52.0), QPointF(kLogoSize - 30.0, 52.0));
    p.setBrush(Qt::NoBrush);
    p.drawPath(shieldPath(10.0));
    p.setPen(Qt::NoPen);

    const double mid = kLogoSize / 2.0;
    letter(p, fittedText(country, QRectF(mid - 17.0, 23.0, 34.0, 16.0)), shadow);
    letter(p, starPath(QPointF(mid - 40.0, 31.0), 7.0, 2.9), shadow);
    letter(p, starPath(QPointF(mid + 40.0, 31.0), 7.0, 2.9), shadow);

    const double textW = initials.size() > 2 ? 110.0 : 92.0;
    letter(p, fittedText(initials, QRectF(mid - textW / 2.0, 74.0, textW, 48.0)), shadow);
    // A small chevron under the initials.
    QPainterPath chevron;
    chevron.moveTo(mid - 22.0, 138.0);
    chevron.lineTo(mid, 150.0);
    chevron.lineTo(mid + 22.0, 138.0);
    QPainterPathStroker stroker;
    stroker.setWidth(4.0);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    letter(p, stroker.createStroke(chevron), shadow);
    return img;
}

QByteArray logoPng(const QHash<QString, QString>& logo, const QString& country)
{
    const QColor colour = QColor::fromString(logo.value(u"Colour"_s));
    if (!colour.isValid())
        fail(u"bad logo colour for mint "_s + logo.value(u"ID"_s));
    const QString shape = logo.value(u"Shape"_s);
    const QString initials = logo.value(u"Initials"_s);
    QImage img;
    if (shape == u"round"_s)
        img = roundBadge(colour, initials, country);
    else if (shape == u"shield"_s)
        img = shieldBadge(colour, initials, country);
    else
        fail(u"unknown logo shape "_s + shape);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    // Highest compression: the badges are part of every new collection file.
    if (!img.save(&buffer, "PNG", 0))
        fail(u"cannot encode a logo"_s);
    return bytes;
}

// --- The database ---------------------------------------------------------------------------------

class Database
{
public:
    explicit Database(const QString& path)
    {
        if (sqlite3_open_v2(QFile::encodeName(path).constData(), &m_db,
                            SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK)
            fail(u"cannot create "_s + path);
    }
    ~Database() { sqlite3_close(m_db); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void exec(const QByteArray& sql)
    {
        char* error = nullptr;
        if (sqlite3_exec(m_db, sql.constData(), nullptr, nullptr, &error) != SQLITE_OK) {
            const QString message = QString::fromUtf8(error);
            sqlite3_free(error);
            fail(message);
        }
    }

    void insertMint(const QHash<QString, QString>& mint, const QByteArray& logo)
    {
        sqlite3_stmt* st = nullptr;
        const char* sql = "INSERT INTO tblMints (ID, Name, Logo, Country, URL, IsPrivate, Description) "
                          "VALUES (?, ?, ?, ?, ?, ?, ?)";
        if (sqlite3_prepare_v2(m_db, sql, -1, &st, nullptr) != SQLITE_OK)
            fail(QString::fromUtf8(sqlite3_errmsg(m_db)));
        bool okId = false;
        const int id = mint.value(u"ID"_s).toInt(&okId);
        if (!okId)
            fail(u"bad mint number "_s + mint.value(u"ID"_s));
        const QByteArray name = mint.value(u"Name"_s).toUtf8();
        const QByteArray country = mint.value(u"Country"_s).toUtf8();
        const QByteArray url = mint.value(u"URL"_s).toUtf8();
        const QByteArray description = mint.value(u"Description"_s).toUtf8();
        sqlite3_bind_int(st, 1, id);
        sqlite3_bind_text(st, 2, name.constData(), int(name.size()), SQLITE_STATIC);
        if (logo.isEmpty())
            sqlite3_bind_null(st, 3);
        else
            sqlite3_bind_blob(st, 3, logo.constData(), int(logo.size()), SQLITE_STATIC);
        bindTextOrNull(st, 4, country);
        bindTextOrNull(st, 5, url);
        // Private mints carry 1; the others are left NULL, not 0.
        if (mint.value(u"IsPrivate"_s) == u"1"_s)
            sqlite3_bind_int(st, 6, 1);
        else
            sqlite3_bind_null(st, 6);
        bindTextOrNull(st, 7, description);
        const int rc = sqlite3_step(st);
        sqlite3_finalize(st);
        if (rc != SQLITE_DONE)
            fail(QString::fromUtf8(sqlite3_errmsg(m_db)));
    }

private:
    static void bindTextOrNull(sqlite3_stmt* st, int index, const QByteArray& text)
    {
        if (text.isEmpty())
            sqlite3_bind_null(st, index);
        else
            sqlite3_bind_text(st, index, text.constData(), int(text.size()), SQLITE_STATIC);
    }

    sqlite3* m_db = nullptr;
};

void build(const QStringList& args)
{
    const QByteArray schema = readFile(args.at(1));
    const QList<QHash<QString, QString>> mints = readTsv(args.at(2));
    QHash<QString, QHash<QString, QString>> logos;
    for (const QHash<QString, QString>& logo : readTsv(args.at(3)))
        logos.insert(logo.value(u"ID"_s), logo);
    const QString output = args.at(5);
    const QString partial = output + u".part"_s;
    QFile::remove(partial);

    {
        Database db(partial);
        // File-level settings first: they must be in place before the first table exists.
        db.exec("PRAGMA page_size = 4096; PRAGMA auto_vacuum = NONE; PRAGMA encoding = 'UTF-8';"
                "PRAGMA journal_mode = DELETE; PRAGMA user_version = 0; PRAGMA application_id = 0;");
        db.exec(schema);
        db.exec("BEGIN");
        db.exec(QByteArray("INSERT INTO tblVer (Version) VALUES ('") + kSchemaVersion + "')");
        int expectedId = 1;
        for (const QHash<QString, QString>& mint : mints) {
            if (mint.value(u"ID"_s).toInt() != expectedId++)
                fail(u"mints.tsv must list the mints in order, from 1, without gaps"_s);
            const auto logo = logos.constFind(mint.value(u"ID"_s));
            db.insertMint(mint,
                          logo == logos.constEnd() ? QByteArray() : logoPng(*logo, mint.value(u"Country"_s)));
        }
        db.exec("INSERT INTO sqlite_sequence (name, seq) VALUES ('tblCoins', " +
                QByteArray::number(kCoinsSequence) + ")");
        db.exec("COMMIT");
        db.exec("VACUUM");
    }

    QFile::remove(output);
    if (!QFile::rename(partial, output))
        fail(u"cannot write "_s + output);
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 6) {
        QTextStream(stderr) << "usage: mktemplate <schema.sql> <mints.tsv> <logos.tsv> <font folder> <output>"
                            << Qt::endl;
        return 2;
    }
    const int fontId = QFontDatabase::addApplicationFont(QDir(args.at(4)).filePath(u"DejaVuSans-Bold.ttf"_s));
    if (fontId >= 0 && !QFontDatabase::applicationFontFamilies(fontId).isEmpty()) {
        g_sansFamily = QFontDatabase::applicationFontFamilies(fontId).constFirst();
    } else {
        QTextStream(stderr) << "mktemplate: DejaVu Sans Bold not found in " << args.at(4)
                            << ", using the system's sans font" << Qt::endl;
        g_sansFamily = u"sans"_s;
    }
    try {
        build(args);
    } catch (const std::exception& e) {
        QTextStream(stderr) << "mktemplate: " << QString::fromUtf8(e.what()) << Qt::endl;
        return 1;
    }
    return 0;
}
