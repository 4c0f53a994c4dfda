// Build-time generator of the blank item pictures: a coin obverse, a coin reverse and a bar for each
// of the six metals, drawn with QPainter on a transparent background and written as 8-bit palette
// PNG files. The coins are 200 x 200 and the bars 360 x 200 pixels: the size of a thumbnail, so that
// the thumbnail of a blank picture is the picture itself.
//
// Usage: mkpictures <output folder> <font folder> [--stats]
//   --stats  prints for each picture its size and how far the palette is from the drawing

#include "paletteQuantizer.h"

#include <QBuffer>
#include <QColor>
#include <QConicalGradient>
#include <QDir>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QTextStream>
#include <QTransform>

#include <cmath>
#include <numbers>

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

QColor withAlpha(QColor c, int alpha)
{
    c.setAlpha(alpha);
    return c;
}

// A text as an outline, centred on a point.
QPainterPath textPath(const QString& text, const QString& family, double pixelSize, QPointF centre,
                      int weight = QFont::Bold)
{
    QFont font(family);
    font.setPixelSize(int(std::lround(pixelSize)));
    font.setWeight(QFont::Weight(weight));
    QPainterPath path;
    path.addText(0, 0, font, text);
    const QRectF box = path.boundingRect();
    return path.translated(centre - box.center());
}

// Metal surface lit from the upper left.
QLinearGradient litGradient(const QRectF& box, const MetalLook& m, double from = 0.0, double to = 1.0)
{
    QLinearGradient g(box.topLeft(), box.bottomRight());
    g.setColorAt(from, m.light);
    g.setColorAt(from + (to - from) * 0.45, m.base);
    g.setColorAt(to, m.dark);
    return g;
}

// A shape standing out of the surface: shadow to the lower right, light to the upper left.
void raised(QPainter& p, const QPainterPath& path, const MetalLook& m, double depth = 1.2)
{
    p.fillPath(path.translated(depth, depth), withAlpha(m.dark, 200));
    p.fillPath(path.translated(-depth * 0.8, -depth * 0.8), withAlpha(m.light, 230));
    const QRectF box = path.boundingRect();
    QLinearGradient g(box.topLeft(), box.bottomRight());
    g.setColorAt(0.0, mix(m.light, m.base, 0.35));
    g.setColorAt(1.0, mix(m.base, m.dark, 0.25));
    p.fillPath(path, g);
}

// A shape pressed into the surface: the light falls on its lower right wall.
void sunken(QPainter& p, const QPainterPath& path, const MetalLook& m, double depth = 1.2)
{
    p.fillPath(path.translated(depth, depth), withAlpha(m.light, 235));
    p.fillPath(path.translated(-depth * 0.7, -depth * 0.7), withAlpha(m.dark, 210));
    const QRectF box = path.boundingRect();
    QLinearGradient g(box.topLeft(), box.bottomRight());
    g.setColorAt(0.0, mix(m.base, m.dark, 0.30));
    g.setColorAt(1.0, mix(m.base, m.light, 0.10));
    p.fillPath(path, g);
}

QPainterPath circlePath(QPointF c, double r)
{
    QPainterPath path;
    path.addEllipse(c, r, r);
    return path;
}

QPainterPath ringPath(QPointF c, double outer, double inner)
{
    return circlePath(c, outer).subtracted(circlePath(c, inner));
}

QPainterPath starPath(QPointF c, double outer, double inner, int points, double rotationDeg = -90.0)
{
    QPainterPath path;
    for (int i = 0; i < points * 2; ++i) {
        const double r = (i % 2 == 0) ? outer : inner;
        const double a = (rotationDeg + i * 180.0 / points) * std::numbers::pi / 180.0;
        const QPointF pt(c.x() + r * std::cos(a), c.y() + r * std::sin(a));
        if (i == 0)
            path.moveTo(pt);
        else
            path.lineTo(pt);
    }
    path.closeSubpath();
    return path;
}

// A leaf: a pointed ellipse along the x axis from 0 to len, then rotated and moved.
QPainterPath leafPath(double len, double width)
{
    QPainterPath leaf;
    leaf.moveTo(0, 0);
    leaf.cubicTo(len * 0.30, -width, len * 0.70, -width, len, 0);
    leaf.cubicTo(len * 0.70, width, len * 0.30, width, 0, 0);
    return leaf;
}

// One branch of a laurel wreath, following a circle from the bottom up one side.
QPainterPath branchPath(QPointF c, double radius, bool leftSide)
{
    QPainterPath branch;
    const double startDeg = 100.0; // just beside the bottom
    const double endDeg = 235.0;   // up to the shoulder
    const int leaves = 9;
    const double sign = leftSide ? 1.0 : -1.0;

    // The stem.
    QPainterPath stem;
    for (int i = 0; i <= 40; ++i) {
        const double deg = startDeg + (endDeg - startDeg) * i / 40.0;
        const double a = (leftSide ? deg : 180.0 - deg) * std::numbers::pi / 180.0;
        const QPointF pt(c.x() + radius * std::cos(a), c.y() + radius * std::sin(a));
        if (i == 0)
            stem.moveTo(pt);
        else
            stem.lineTo(pt);
    }
    QPainterPathStroker stroker;
    stroker.setWidth(radius * 0.035);
    stroker.setCapStyle(Qt::RoundCap);
    branch = stroker.createStroke(stem);

    for (int i = 0; i < leaves; ++i) {
        const double t = (i + 0.5) / leaves;
        const double deg = startDeg + (endDeg - startDeg) * t;
        const double a = (leftSide ? deg : 180.0 - deg) * std::numbers::pi / 180.0;
        const QPointF at(c.x() + radius * std::cos(a), c.y() + radius * std::sin(a));
        // Direction of growth along the circle, then tilted outwards and inwards.
        const double tangentDeg = (leftSide ? deg + 90.0 : 180.0 - deg - 90.0);
        const double size = radius * (0.30 - 0.08 * t);
        for (int side = -1; side <= 1; side += 2) {
            QTransform tr;
            tr.translate(at.x(), at.y());
            tr.rotate(tangentDeg + sign * side * 38.0);
            branch = branch.united(tr.map(leafPath(size, size * 0.28)));
        }
    }
    // A berry at the tip.
    const double a = (leftSide ? endDeg + 6.0 : 180.0 - endDeg - 6.0) * std::numbers::pi / 180.0;
    branch = branch.united(
        circlePath(QPointF(c.x() + radius * std::cos(a), c.y() + radius * std::sin(a)), radius * 0.045));
    return branch;
}

// The common parts of both faces: rim, field, bead circle.
void drawCoinBody(QPainter& p, const MetalLook& m, QPointF c, double r)
{
    const double px = r / 126.0; // relief depths are given for a piece of radius 126
    // Edge of the piece, dark so that it stands off any background.
    p.setPen(Qt::NoPen);
    p.setBrush(m.dark);
    p.drawEllipse(c, r, r);

    // The raised rim, lit from the upper left.
    const QRectF box(c.x() - r, c.y() - r, 2 * r, 2 * r);
    p.fillPath(circlePath(c, r - 1.5 * px), litGradient(box, m));
    // Turned metal catches the light in bands around the rim.
    QConicalGradient turned(c, 45.0);
    for (int i = 0; i <= 8; ++i)
        turned.setColorAt(i / 8.0, (i % 2 == 0) ? QColor(255, 255, 255, 70) : QColor(0, 0, 0, 30));
    p.fillPath(circlePath(c, r - 1.5 * px), turned);

    // Inner wall of the rim: the step down to the field, lit the other way.
    const double rimInner = r * 0.885;
    QLinearGradient wall(box.topLeft(), box.bottomRight());
    wall.setColorAt(0.0, m.dark);
    wall.setColorAt(0.5, m.base);
    wall.setColorAt(1.0, m.light);
    p.fillPath(circlePath(c, rimInner), wall);

    // The field: polished, brightest towards the upper left. The light falls along one diagonal, so
    // that the shading is the same along the other: straight, even steps in the palette picture.
    const double fieldR = rimInner - r * 0.025;
    const QRectF fieldBox(c.x() - fieldR, c.y() - fieldR, 2 * fieldR, 2 * fieldR);
    QLinearGradient field(fieldBox.topLeft(), fieldBox.bottomRight());
    field.setColorAt(0.0, mix(m.light, m.base, 0.15));
    field.setColorAt(0.5, m.base);
    field.setColorAt(1.0, mix(m.base, m.dark, 0.45));
    p.fillPath(circlePath(c, fieldR), field);

    // A soft diagonal sheen over the field.
    QLinearGradient sheen(QPointF(c.x() - fieldR, c.y() - fieldR), QPointF(c.x() + fieldR, c.y() + fieldR));
    sheen.setColorAt(0.00, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.30, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.40, QColor(255, 255, 255, 60));
    sheen.setColorAt(0.48, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.58, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.63, QColor(255, 255, 255, 35));
    sheen.setColorAt(0.70, QColor(255, 255, 255, 0));
    p.fillPath(circlePath(c, fieldR), sheen);

    // The rim throws a soft shadow onto the field at the upper left.
    QRadialGradient rimShadow(QPointF(c.x() + r * 0.04, c.y() + r * 0.04), fieldR);
    rimShadow.setColorAt(0.90, QColor(0, 0, 0, 0));
    rimShadow.setColorAt(1.00, withAlpha(m.dark, 110));
    p.fillPath(circlePath(c, fieldR), rimShadow);

    // Bead circle just inside the rim.
    const double beadRing = fieldR * 0.93;
    const int beads = 72;
    QPainterPath beadsPath;
    for (int i = 0; i < beads; ++i) {
        const double a = 2.0 * std::numbers::pi * i / beads;
        beadsPath.addEllipse(QPointF(c.x() + beadRing * std::cos(a), c.y() + beadRing * std::sin(a)),
                             r * 0.018, r * 0.018);
    }
    raised(p, beadsPath, m, 0.8 * px);
}

// Coins are drawn at the thumbnail height.
const int kCoinSize = 200;

QImage drawCoinObverse(const MetalLook& m)
{
    const int size = kCoinSize;
    QImage img(size, size, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    const QPointF c(size / 2.0, size / 2.0);
    const double r = size / 2.0 - 2.0;
    const double px = r / 126.0;
    drawCoinBody(p, m, c, r);

    // Laurel wreath around the symbol, open at the top.
    const double wreathR = r * 0.62;
    QPainterPath wreath = branchPath(c, wreathR, true).united(branchPath(c, wreathR, false));
    raised(p, wreath, m, 1.0 * px);

    // Star in the opening of the wreath.
    raised(p, starPath(QPointF(c.x(), c.y() - wreathR * 1.02), r * 0.075, r * 0.03, 5), m, 0.9 * px);

    // The metal's symbol, struck large in the middle.
    raised(p, textPath(m.symbol, g_serifFamily, r * 0.62, QPointF(c.x(), c.y() - r * 0.02)), m, 2.0 * px);

    // Three small stars below the symbol.
    for (int i = -1; i <= 1; ++i)
        raised(p, starPath(QPointF(c.x() + i * r * 0.12, c.y() + r * 0.40), r * 0.035, r * 0.015, 5), m,
               0.7 * px);
    return img;
}

QImage drawCoinReverse(const MetalLook& m)
{
    const int size = kCoinSize;
    QImage img(size, size, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    const QPointF c(size / 2.0, size / 2.0);
    const double r = size / 2.0 - 2.0;
    const double px = r / 126.0;
    drawCoinBody(p, m, c, r);

    // Sunburst: long and short rays in turn.
    QPainterPath rays;
    const int count = 32;
    for (int i = 0; i < count; ++i) {
        const double a = 2.0 * std::numbers::pi * i / count - std::numbers::pi / 2.0;
        const double inner = r * 0.30;
        const double outer = (i % 2 == 0) ? r * 0.72 : r * 0.58;
        const double half = std::numbers::pi / count * 0.42;
        QPainterPath ray;
        ray.moveTo(c.x() + inner * std::cos(a - half), c.y() + inner * std::sin(a - half));
        ray.lineTo(c.x() + outer * std::cos(a), c.y() + outer * std::sin(a));
        ray.lineTo(c.x() + inner * std::cos(a + half), c.y() + inner * std::sin(a + half));
        ray.closeSubpath();
        rays.addPath(ray);
    }
    raised(p, rays.simplified(), m, 0.8 * px);

    // A ring and a compass star in the centre.
    raised(p, ringPath(c, r * 0.31, r * 0.265), m, 0.9 * px);
    raised(p, starPath(c, r * 0.25, r * 0.085, 8, -90.0), m, 1.2 * px);
    raised(p, circlePath(c, r * 0.05), m, 0.8 * px);
    return img;
}

// A cast bar seen from above: a flat top inside four sloping walls, with a stamped panel.
QImage drawBar(const MetalLook& m)
{
    const int w = 360;
    const int h = 200;
    QImage img(w, h, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);

    const QRectF outer(3.0, 3.0, w - 6.0, h - 6.0);
    const QRectF top = outer.adjusted(26.0, 20.0, -26.0, -20.0);
    const double round = 12.0;

    // Base outline.
    QPainterPath outerPath;
    outerPath.addRoundedRect(outer, round, round);
    p.fillPath(outerPath, m.dark);

    // The four walls, each lit according to where it faces.
    auto wall = [&](QPointF a, QPointF b, QPointF cc, QPointF d, const QColor& from, const QColor& to,
                    QPointF g0, QPointF g1) {
        QPainterPath path;
        path.moveTo(a);
        path.lineTo(b);
        path.lineTo(cc);
        path.lineTo(d);
        path.closeSubpath();
        QLinearGradient g(g0, g1);
        g.setColorAt(0.0, from);
        g.setColorAt(1.0, to);
        p.fillPath(path.intersected(outerPath.translated(0, 0)), g);
    };
    const QRectF o = outer.adjusted(1.5, 1.5, -1.5, -1.5);
    // Top wall faces the light.
    wall(o.topLeft(), o.topRight(), top.topRight(), top.topLeft(), m.light, mix(m.light, m.base, 0.4),
         QPointF(0, o.top()), QPointF(0, top.top()));
    // Left wall: lit too, a little less.
    wall(o.topLeft(), top.topLeft(), top.bottomLeft(), o.bottomLeft(), mix(m.light, m.base, 0.3), m.base,
         QPointF(o.left(), 0), QPointF(top.left(), 0));
    // Right wall: in shade.
    wall(o.topRight(), o.bottomRight(), top.bottomRight(), top.topRight(), mix(m.base, m.dark, 0.75),
         mix(m.base, m.dark, 0.35), QPointF(o.right(), 0), QPointF(top.right(), 0));
    // Bottom wall: deepest shade.
    wall(o.bottomLeft(), top.bottomLeft(), top.bottomRight(), o.bottomRight(), mix(m.base, m.dark, 0.85),
         mix(m.base, m.dark, 0.45), QPointF(0, o.bottom()), QPointF(0, top.bottom()));

    // Edges of the walls where they meet the top face.
    QPainterPath topPath;
    topPath.addRoundedRect(top, 5.0, 5.0);
    p.fillPath(topPath.translated(1.2, 1.2), withAlpha(m.dark, 180));
    p.fillPath(topPath.translated(-1.0, -1.0), withAlpha(m.light, 220));

    // The top face, polished with a diagonal sheen.
    QLinearGradient face(top.topLeft(), top.bottomRight());
    face.setColorAt(0.0, mix(m.light, m.base, 0.25));
    face.setColorAt(0.5, m.base);
    face.setColorAt(1.0, mix(m.base, m.dark, 0.35));
    p.fillPath(topPath, face);
    QLinearGradient sheen(top.topLeft(), top.bottomRight());
    sheen.setColorAt(0.00, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.28, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.36, QColor(255, 255, 255, 70));
    sheen.setColorAt(0.44, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.52, QColor(255, 255, 255, 0));
    sheen.setColorAt(0.56, QColor(255, 255, 255, 40));
    sheen.setColorAt(0.62, QColor(255, 255, 255, 0));
    p.fillPath(topPath, sheen);

    // Stamped panel: a pressed frame with the symbol and the fineness.
    const QRectF panel = top.adjusted(16.0, 12.0, -16.0, -12.0);
    QPainterPath frameOuter;
    frameOuter.addRoundedRect(panel, 8.0, 8.0);
    QPainterPath frameInner;
    frameInner.addRoundedRect(panel.adjusted(3.0, 3.0, -3.0, -3.0), 6.0, 6.0);
    sunken(p, frameOuter.subtracted(frameInner), m, 1.0);

    const QPointF mid = panel.center();
    sunken(p, textPath(m.symbol, g_serifFamily, panel.height() * 0.50, QPointF(mid.x(), mid.y() - 10.0)), m,
           1.4);
    sunken(p,
           textPath(u"999.9"_s, g_sansFamily, panel.height() * 0.16, QPointF(mid.x(), panel.bottom() - 19.0)),
           m, 0.9);
    for (int side = -1; side <= 1; side += 2) {
        sunken(p, starPath(QPointF(mid.x() + side * panel.width() * 0.36, mid.y() - 10.0), 9.0, 3.6, 5), m,
               0.8);
    }
    return img;
}

// The most a blank picture may take as a thumbnail: it is stored with every item that has no photo.
// The thumbnail of a blank picture is the picture itself, encoded with the encoder's defaults.
// 11,000 bytes stay clear of 12 KB with other builds of the encoder and zlib.
constexpr qint64 kThumbnailBudget = 11000;

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
// finer the steps of the gradients, and the more bytes.
QImage paletted(const QImage& drawing)
{
    const PaletteQuantizer quantizer(drawing);
    QImage best = quantizer.quantize(256);
    if (thumbnailSize(best) <= kThumbnailBudget)
        return best;
    best = QImage();
    int low = 16;
    int high = 255;
    while (low <= high) {
        const int colours = (low + high) / 2;
        QImage img = quantizer.quantize(colours);
        if (thumbnailSize(img) <= kThumbnailBudget) {
            best = img;
            low = colours + 1;
        } else {
            high = colours - 1;
        }
    }
    return best.isNull() ? quantizer.quantize(16) : best;
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
