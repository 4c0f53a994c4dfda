#include "uProductPictures.h"

#include <QDir>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr double TroyOunce = 31.1035;
constexpr int JpegQuality = 85;

QColor MetalColour(int metal)
{
    switch (metal) {
    case 0:
        return {212, 175, 55};
    case 1:
        return {192, 194, 198};
    case 2:
        return {214, 218, 226};
    case 3:
        return {190, 192, 180};
    case 4:
        return {222, 226, 234};
    case 5:
        return {184, 115, 51};
    default:
        return Qt::gray;
    }
}

bool IsRound(const TSourceProduct& p)
{
    return p.CoinType == 0 || p.CoinType == 2;
}

QString WeightLabel(double grams)
{
    const double oz = grams / TroyOunce;
    static const struct
    {
        double Oz;
        const char16_t* Text;
    } fractions[] = {{1, u"1 oz"},       {2, u"2 oz"},      {5, u"5 oz"},      {10, u"10 oz"},
                     {100, u"100 oz"},   {0.5, u"1/2 oz"},  {0.25, u"1/4 oz"}, {0.1, u"1/10 oz"},
                     {0.05, u"1/20 oz"}, {0.04, u"1/25 oz"}};
    for (const auto& f : fractions)
        if (std::abs(oz - f.Oz) < 0.0005)
            return QString::fromUtf16(f.Text);
    if (grams >= 1000 && std::fmod(grams, 1000) < 0.01)
        return u"%1 kg"_s.arg(grams / 1000);
    return u"%1 g"_s.arg(QString::number(grams, 'f', grams < 10 ? 2 : 1));
}

// Rectangle of a bar's face in a picture of the given height, after its real proportions.
QSize BarSize(const TSourceProduct& p, int height)
{
    double ratio = (p.Width > 0 && p.Height > 0) ? p.Width / p.Height : 0.6;
    ratio = std::clamp(ratio, 0.4, 1.6);
    return {static_cast<int>(std::lround(height * ratio)), height};
}

QImage Canvas(QSize size, QColor background = Qt::white)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(background);
    return image;
}

void DrawTextBlock(QPainter& painter, const QRectF& area, const QString& text, double pixelSize,
                   QColor colour, bool bold = true)
{
    QFont font(u"DejaVu Sans"_s);
    font.setPixelSize(std::max(8, static_cast<int>(pixelSize)));
    font.setBold(bold);
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, text);
}

void DrawDisc(QPainter& painter, const QRectF& box, QColor colour)
{
    QRadialGradient gradient(box.center() - QPointF(box.width() * 0.18, box.height() * 0.2),
                             box.width() * 0.75);
    gradient.setColorAt(0, colour.lighter(150));
    gradient.setColorAt(0.55, colour);
    gradient.setColorAt(1, colour.darker(150));
    painter.setPen(QPen(colour.darker(180), box.width() * 0.012));
    painter.setBrush(gradient);
    painter.drawEllipse(box);
    // Raised rim and the denticles inside it.
    const QRectF inner =
        box.adjusted(box.width() * 0.06, box.height() * 0.06, -box.width() * 0.06, -box.height() * 0.06);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour.darker(140), box.width() * 0.008));
    painter.drawEllipse(inner);
    painter.setPen(QPen(colour.darker(125), box.width() * 0.006, Qt::DotLine));
    painter.drawEllipse(inner.adjusted(8, 8, -8, -8));
}

void DrawSlab(QPainter& painter, const QRectF& box, QColor colour)
{
    QLinearGradient gradient(box.topLeft(), box.bottomRight());
    gradient.setColorAt(0, colour.lighter(145));
    gradient.setColorAt(0.5, colour);
    gradient.setColorAt(1, colour.darker(140));
    painter.setPen(QPen(colour.darker(180), 4));
    painter.setBrush(gradient);
    const double radius = std::min(box.width(), box.height()) * 0.06;
    painter.drawRoundedRect(box, radius, radius);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour.darker(130), 3));
    painter.drawRoundedRect(box.adjusted(14, 14, -14, -14), radius * 0.6, radius * 0.6);
}

QString FaceValueText(const TSourceProduct& p)
{
    if (p.FaceValue <= 0)
        return {};
    return u"%1 %2"_s.arg(QString::number(p.FaceValue, 'g', 6), p.FaceValueCurrency);
}

} // namespace

QImage DrawObverse(const TSourceProduct& p)
{
    const QColor colour = MetalColour(p.Metal);
    const QColor ink = colour.darker(260);
    if (IsRound(p)) {
        QImage image = Canvas({LargeSize, LargeSize});
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF disc(20, 20, LargeSize - 40, LargeSize - 40);
        DrawDisc(painter, disc, colour);
        DrawTextBlock(painter, QRectF(130, 150, LargeSize - 260, 230), p.Name, 34, ink);
        if (p.Year != 0)
            DrawTextBlock(painter, QRectF(150, 400, LargeSize - 300, 60), QString::number(p.Year), 40, ink);
        return image;
    }
    const QSize size = BarSize(p, LargeSize);
    QImage image = Canvas(size);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF face(10, 10, size.width() - 20, size.height() - 20);
    DrawSlab(painter, face, colour);
    const double w = face.width();
    DrawTextBlock(painter, QRectF(30, 40, w - 40, 120), p.MintName, std::min(34.0, w / 9), ink);
    DrawTextBlock(painter, QRectF(30, 170, w - 40, 110), WeightLabel(p.WeightG), std::min(64.0, w / 5), ink);
    DrawTextBlock(painter, QRectF(30, 290, w - 40, 150),
                  MetalName(p.Metal).toUpper() + u"\nFINE "_s + p.Purity, std::min(36.0, w / 9), ink);
    DrawTextBlock(painter, QRectF(30, 460, w - 40, 100), p.Name, std::min(24.0, w / 14), ink, false);
    return image;
}

QImage DrawReverse(const TSourceProduct& p)
{
    const QColor colour = MetalColour(p.Metal);
    const QColor ink = colour.darker(260);
    if (IsRound(p)) {
        QImage image = Canvas({LargeSize, LargeSize});
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        DrawDisc(painter, QRectF(20, 20, LargeSize - 40, LargeSize - 40), colour);
        // A simple emblem: a star of lines in the field.
        painter.setPen(QPen(colour.darker(150), 5));
        const QPointF centre(LargeSize / 2.0, LargeSize / 2.0 - 30);
        for (int i = 0; i < 12; ++i) {
            const double angle = i * M_PI / 6;
            painter.drawLine(centre + QPointF(std::cos(angle) * 30, std::sin(angle) * 30),
                             centre + QPointF(std::cos(angle) * 90, std::sin(angle) * 90));
        }
        QString text = WeightLabel(p.WeightG) + u" "_s + MetalName(p.Metal).toUpper();
        if (!p.Purity.isEmpty())
            text += u"\n"_s + p.Purity;
        DrawTextBlock(painter, QRectF(120, 360, LargeSize - 240, 110), text, 30, ink);
        const QString value = FaceValueText(p);
        if (!value.isEmpty())
            DrawTextBlock(painter, QRectF(160, 110, LargeSize - 320, 50), value, 28, ink);
        return image;
    }
    const QSize size = BarSize(p, LargeSize);
    QImage image = Canvas(size);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF face(10, 10, size.width() - 20, size.height() - 20);
    DrawSlab(painter, face, colour);
    painter.setPen(QPen(colour.darker(135), 3));
    if (p.CoinType == 4) {
        // Score lines of a divisible bar.
        for (double x = face.left() + 30; x < face.right() - 20; x += 40)
            painter.drawLine(QPointF(x, face.top() + 20), QPointF(x, face.bottom() - 20));
        for (double y = face.top() + 30; y < face.bottom() - 20; y += 40)
            painter.drawLine(QPointF(face.left() + 20, y), QPointF(face.right() - 20, y));
    } else {
        // A repeating pattern of small diamonds.
        for (double y = face.top() + 40; y < face.bottom() - 30; y += 50)
            for (double x = face.left() + 40; x < face.right() - 30; x += 50) {
                QPainterPath diamond;
                diamond.moveTo(x, y - 12);
                diamond.lineTo(x + 12, y);
                diamond.lineTo(x, y + 12);
                diamond.lineTo(x - 12, y);
                diamond.closeSubpath();
                painter.drawPath(diamond);
            }
    }
    return image;
}

QImage DrawSide(const TSourceProduct& p)
{
    const QColor colour = MetalColour(p.Metal);
    QImage image = Canvas({LargeSize, LargeSize / 3});
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const double length = LargeSize - 60;
    const double across = IsRound(p) ? p.Diameter : std::max(p.Width, p.Height);
    const double thickness = p.Thickness > 0 ? p.Thickness : 2.5;
    const double height = std::clamp(length * thickness / (across > 0 ? across : 30.0), 12.0, 150.0);
    const QRectF edge(30, (image.height() - height) / 2, length, height);
    QLinearGradient gradient(edge.topLeft(), edge.bottomLeft());
    gradient.setColorAt(0, colour.lighter(140));
    gradient.setColorAt(0.5, colour);
    gradient.setColorAt(1, colour.darker(150));
    painter.setPen(QPen(colour.darker(180), 2));
    painter.setBrush(gradient);
    painter.drawRoundedRect(edge, 4, 4);
    if (p.Edge.startsWith(u"Reeded"_s)) {
        painter.setPen(QPen(colour.darker(160), 1.5));
        for (double x = edge.left() + 4; x < edge.right() - 2; x += 5)
            painter.drawLine(QPointF(x, edge.top() + 2), QPointF(x, edge.bottom() - 2));
    } else if (p.Edge.startsWith(u"Edge-lettered"_s) && height > 20) {
        DrawTextBlock(painter, edge, p.Edge.mid(14), height * 0.5, colour.darker(260));
    }
    return image;
}

QImage DrawInBox(const TSourceProduct& p, const QImage& obverse)
{
    Q_UNUSED(p);
    QImage image = Canvas({LargeSize, LargeSize}, QColor(238, 236, 232));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRectF box(40, 40, LargeSize - 80, LargeSize - 80);
    painter.setPen(QPen(QColor(20, 20, 30), 6));
    painter.setBrush(QColor(28, 32, 58));
    painter.drawRoundedRect(box, 18, 18);
    painter.setBrush(QColor(12, 14, 26));
    painter.setPen(Qt::NoPen);
    const QRectF well = box.adjusted(50, 50, -50, -50);
    painter.drawRoundedRect(well, 10, 10);
    const QImage content =
        obverse.scaled(well.size().toSize() - QSize(40, 40), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    painter.drawImage(
        QPointF(well.center().x() - content.width() / 2.0, well.center().y() - content.height() / 2.0),
        content);
    // The clear capsule or blister over the piece.
    painter.setPen(QPen(QColor(255, 255, 255, 90), 4));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(well.adjusted(12, 12, -12, -12), 8, 8);
    return image;
}

TProductPictureNames SaveProductPictures(const TSourceProduct& p, const QString& thumbsDir,
                                         const QString& largeDir)
{
    const QString base = p.PictureBase();
    TProductPictureNames names{base + u"-obverse.jpg"_s, base + u"-reverse.jpg"_s, base + u"-side.jpg"_s,
                               base + u"-box.jpg"_s};
    const auto save = [](const QImage& image, const QString& path) {
        if (!image.save(path, "JPEG", JpegQuality))
            throw ECatalogueSourceError(u"Cannot write %1"_s.arg(path));
    };
    const QImage obverse = DrawObverse(p);
    save(obverse, QDir(largeDir).filePath(names.Front));
    save(obverse.scaledToHeight(ThumbnailHeight, Qt::SmoothTransformation),
         QDir(thumbsDir).filePath(names.Front));
    save(DrawReverse(p), QDir(largeDir).filePath(names.Back));
    save(DrawSide(p), QDir(largeDir).filePath(names.Side));
    save(DrawInBox(p, obverse), QDir(largeDir).filePath(names.InBox));
    return names;
}
