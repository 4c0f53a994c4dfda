// Build-time generator of the blank item pictures: a coin obverse, a coin reverse and a bar for each
// of the six metals, drawn with QPainter on a transparent background in a flat style (shading in
// horizontal bands, only the outline smoothed) and written as small 8-bit palette PNG files. The
// coins are 200 x 200 and the bars 360 x 200 pixels: the size of a thumbnail, so that the thumbnail
// of a blank picture is the picture itself.
//
// Usage: mkpictures <output folder> <font folder> [--stats]
//   --stats  prints for each picture its size and how far the palette is from the drawing

#include "paletteQuantizer.h"

#include <QBuffer>
#include <QColor>
#include <QDir>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QTextStream>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

struct MetalLook
{
    QString name;   // as in the picture names: Gold, Silver, ...
    QString symbol; // chemical symbol struck on the piece
    QColor light;   // highlight
    QColor base;    // body colour
    QColor dark;    // shadow side
};

const MetalLook kMetals[] = {
    {u"Gold"_s, u"Au"_s, QColor(0xFF, 0xF2, 0xB0), QColor(0xD9, 0xAE, 0x3C), QColor(0x7A, 0x55, 0x0E)},
    {u"Silver"_s, u"Ag"_s, QColor(0xFF, 0xFF, 0xFF), QColor(0xC4, 0xC7, 0xCC), QColor(0x62, 0x66, 0x6C)},
    {u"Platinum"_s, u"Pt"_s, QColor(0xF4, 0xF7, 0xFA), QColor(0xA9, 0xB1, 0xBA), QColor(0x4E, 0x56, 0x60)},
    {u"Palladium"_s, u"Pd"_s, QColor(0xF2, 0xF0, 0xEA), QColor(0xA8, 0xA4, 0x9A), QColor(0x55, 0x51, 0x49)},
    {u"Rhodium"_s, u"Rh"_s, QColor(0xF6, 0xFA, 0xFF), QColor(0xBF, 0xCC, 0xDC), QColor(0x55, 0x63, 0x75)},
    {u"Copper"_s, u"Cu"_s, QColor(0xFF, 0xC8, 0x9E), QColor(0xC0, 0x6E, 0x38), QColor(0x5E, 0x2A, 0x0C)},
};

QString g_serifFamily;
QString g_sansFamily;

QColor mix(const QColor& a, const QColor& b, double t)
{
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * t),
                            float(a.greenF() + (b.greenF() - a.greenF()) * t),
                            float(a.blueF() + (b.blueF() - a.blueF()) * t));
}

// A text as an outline, centred on a point.
QPainterPath textPath(const QString& text, const QString& family, double pixelSize, QPointF centre)
{
    QFont font(family);
    font.setPixelSize(int(std::lround(pixelSize)));
    font.setWeight(QFont::Bold);
    QPainterPath path;
    path.addText(0, 0, font, text);
    const QRectF box = path.boundingRect();
    return path.translated(centre - box.center());
}

// Light from above: the colour runs down the picture in three stops. Shading that changes only from
// row to row becomes horizontal bands in the palette picture, which deflate packs into a few bytes.
QLinearGradient downward(double top, double bottom, const QColor& upper, const QColor& middle,
                         const QColor& lower)
{
    QLinearGradient g(QPointF(0, top), QPointF(0, bottom));
    g.setColorAt(0.0, upper);
    g.setColorAt(0.5, middle);
    g.setColorAt(1.0, lower);
    return g;
}

// A shape struck in relief: its shadow below and to the right, then its lit face.
void struck(QPainter& p, const QPainterPath& path, const MetalLook& m, double depth)
{
    p.fillPath(path.translated(depth, depth), mix(m.base, m.dark, 0.7));
    p.fillPath(path, mix(m.light, m.base, 0.25));
}

// A shape pressed into the metal: the light catches its lower right wall.
void pressed(QPainter& p, const QPainterPath& path, const MetalLook& m, double depth)
{
    p.fillPath(path.translated(depth, depth), mix(m.light, m.base, 0.2));
    p.fillPath(path, mix(m.base, m.dark, 0.55));
}

QPainterPath circlePath(QPointF c, double r)
{
    QPainterPath path;
    path.addEllipse(c, r, r);
    return path;
}

QPainterPath roundedRect(const QRectF& box, double radius)
{
    QPainterPath path;
    path.addRoundedRect(box, radius, radius);
    return path;
}

// Only the outline against the background is smoothed: inside, every edge lies between two metal
// tones, where a step hardly shows, and an unsmoothed edge costs the PNG far fewer bytes.
void smoothOutline(QPainter& p, const QPainterPath& outline, const QColor& colour)
{
    p.setRenderHint(QPainter::Antialiasing, true);
    p.fillPath(outline, colour);
    p.setRenderHint(QPainter::Antialiasing, false);
}

// Coins are drawn at the thumbnail height.
const int kCoinSize = 200;

// A coin: a dark edge, the rim lit from above, the field sunk below it and lit from below, as a
// recess is, and a text struck in relief in the middle.
QImage drawCoin(const MetalLook& m, const QString& text, const QString& family, double textSize)
{
    QImage img(kCoinSize, kCoinSize, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    const QPointF c(kCoinSize / 2.0, kCoinSize / 2.0);
    const double r = kCoinSize / 2.0 - 2.0;
    smoothOutline(p, circlePath(c, r), m.dark);
    p.fillPath(circlePath(c, r - 2.5),
               downward(c.y() - r, c.y() + r, m.light, m.base, mix(m.base, m.dark, 0.5)));
    const double field = r * 0.84;
    p.fillPath(circlePath(c, field), downward(c.y() - field, c.y() + field, mix(m.base, m.dark, 0.35), m.base,
                                              mix(m.light, m.base, 0.4)));
    struck(p, textPath(text, family, r * textSize, c), m, 2.0);
    return img;
}

// The obverse carries the metal's symbol, the reverse the fineness.
QImage drawCoinObverse(const MetalLook& m)
{
    return drawCoin(m, m.symbol, g_serifFamily, 0.70);
}

QImage drawCoinReverse(const MetalLook& m)
{
    return drawCoin(m, u"999.9"_s, g_sansFamily, 0.34);
}

// A cast bar seen from above: a flat top inside sloping walls, lit from above, with the symbol and
// the fineness stamped into it.
QImage drawBar(const MetalLook& m)
{
    const int w = 360;
    const int h = kCoinSize;
    QImage img(w, h, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    const QRectF outer(3.0, 3.0, w - 6.0, h - 6.0);
    smoothOutline(p, roundedRect(outer, 12.0), m.dark);
    const QRectF walls = outer.adjusted(2.5, 2.5, -2.5, -2.5);
    p.fillPath(roundedRect(walls, 10.0),
               downward(walls.top(), walls.bottom(), m.light, m.base, mix(m.base, m.dark, 0.6)));
    const QRectF top = outer.adjusted(24.0, 20.0, -24.0, -20.0);
    p.fillPath(roundedRect(top.translated(0, 2.0), 6.0), mix(m.base, m.dark, 0.5));
    p.fillPath(roundedRect(top, 6.0), downward(top.top(), top.bottom(), mix(m.light, m.base, 0.3), m.base,
                                               mix(m.base, m.dark, 0.25)));
    const QPointF mid = top.center();
    pressed(p, textPath(m.symbol, g_serifFamily, top.height() * 0.56, QPointF(mid.x(), mid.y() - 10.0)), m,
            2.0);
    pressed(p, textPath(u"999.9"_s, g_sansFamily, top.height() * 0.17, QPointF(mid.x(), top.bottom() - 20.0)),
            m, 1.0);
    return img;
}

// The most a blank picture may take as a thumbnail: it is stored with every item that has no photo,
// twice, so that such an item with its texts fits in one 4 KB page of the file and is read without
// overflow pages.
constexpr qint64 kThumbnailBudget = 1600;

// The bytes of a picture as a thumbnail: PNG with the encoder's defaults.
qint64 thumbnailSize(const QImage& img)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter(&buffer, "png").write(img);
    return bytes.size();
}

// The palette picture of a drawing with as many colours as fit the budget: the more colours, the
// finer the steps of the shading, and the more bytes. The size does not grow strictly with the
// colours, so every count is tried.
QImage paletted(const QImage& drawing)
{
    const PaletteQuantizer quantizer(drawing);
    for (int colours = 64; colours > 4; --colours) {
        QImage img = quantizer.quantize(colours);
        if (thumbnailSize(img) <= kThumbnailBudget)
            return img;
    }
    return quantizer.quantize(4);
}

bool save(const QImage& drawing, const QDir& dir, const QString& name, bool stats)
{
    const QString path = dir.filePath(name + u".png"_s);
    const QImage img = paletted(drawing);
    QImageWriter writer(path, "png");
    writer.setQuality(0); // the smallest file for the resources
    if (!writer.write(img)) {
        QTextStream(stderr) << "mkpictures: cannot write " << path << ": " << writer.errorString()
                            << Qt::endl;
        return false;
    }
    if (stats) {
        const PaletteQuantizer::Error error = PaletteQuantizer::compare(drawing, img);
        QTextStream(stdout) << name << ": " << img.width() << "x" << img.height() << ", " << img.colorCount()
                            << " colours, " << thumbnailSize(img) << " bytes as a thumbnail; error mean "
                            << QString::number(error.meanAbs, 'f', 2) << ", in smooth areas "
                            << QString::number(error.smoothMeanAbs, 'f', 2) << ", max " << error.maxAbs
                            << Qt::endl;
    }
    return true;
}

QString loadFont(const QString& folder, const QString& file, const QString& fallback)
{
    const int id = QFontDatabase::addApplicationFont(QDir(folder).filePath(file));
    if (id < 0 || QFontDatabase::applicationFontFamilies(id).isEmpty()) {
        QTextStream(stderr) << "mkpictures: font " << file << " not found in " << folder
                            << ", using the system's " << fallback << Qt::endl;
        return fallback;
    }
    return QFontDatabase::applicationFontFamilies(id).constFirst();
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 3) {
        QTextStream(stderr) << "usage: mkpictures <output folder> <font folder> [--stats]" << Qt::endl;
        return 2;
    }
    const bool stats = args.size() > 3 && args.at(3) == u"--stats"_s;
    if (args.size() > (stats ? 4 : 3)) {
        QTextStream(stderr) << "mkpictures: unknown option " << args.last() << Qt::endl;
        return 2;
    }
    const QDir out(args.at(1));
    if (!out.mkpath(u"."_s)) {
        QTextStream(stderr) << "mkpictures: cannot make " << args.at(1) << Qt::endl;
        return 1;
    }
    g_serifFamily = loadFont(args.at(2), u"DejaVuSerif-Bold.ttf"_s, u"serif"_s);
    g_sansFamily = loadFont(args.at(2), u"DejaVuSans-Bold.ttf"_s, u"sans"_s);

    bool ok = true;
    for (const MetalLook& m : kMetals) {
        ok = save(drawCoinObverse(m), out, u"iBlankCoin"_s + m.name + u"Obverse"_s, stats) && ok;
        ok = save(drawCoinReverse(m), out, u"iBlankCoin"_s + m.name + u"Reverse"_s, stats) && ok;
        ok = save(drawBar(m), out, u"iBlankBar"_s + m.name, stats) && ok;
    }
    return ok ? 0 : 1;
}
