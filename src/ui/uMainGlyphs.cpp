#include "uMainGlyphs.h"

#include "uQuickSearches.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyle>

using namespace Qt::StringLiterals;

namespace {

constexpr int cGlyph = 32;

QPixmap Canvas(int size = cGlyph)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

// A coin seen from above in the metal's colours.
void PaintCoin(QPainter& p, const QRectF& r, const QColor& light, const QColor& dark)
{
    QRadialGradient g(r.center() - QPointF(r.width() / 5, r.height() / 5), r.width() * 0.7);
    g.setColorAt(0, light);
    g.setColorAt(1, dark);
    p.setBrush(g);
    p.setPen(QPen(dark.darker(130), 1.2));
    p.drawEllipse(r);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(dark.darker(115), 1));
    p.drawEllipse(r.adjusted(r.width() / 7, r.height() / 7, -r.width() / 7, -r.height() / 7));
}

const QColor cGoldLight(0xFF, 0xE0, 0x8A);
const QColor cGoldDark(0xC8, 0x8A, 0x1E);
const QColor cSilverLight(0xF4, 0xF6, 0xF8);
const QColor cSilverDark(0x8E, 0x98, 0xA3);

// A small sign in the lower right corner of a glyph.
void PaintBadge(QPainter& p, const QColor& colour, const QString& sign)
{
    const QRectF badge(cGlyph - 15, cGlyph - 15, 14, 14);
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawEllipse(badge);
    p.setPen(QPen(Qt::white, 2.2, Qt::SolidLine, Qt::RoundCap));
    const QPointF c = badge.center();
    if (sign == u"+"_s) {
        p.drawLine(c + QPointF(-4, 0), c + QPointF(4, 0));
        p.drawLine(c + QPointF(0, -4), c + QPointF(0, 4));
    } else if (sign == u"-"_s) {
        p.drawLine(c + QPointF(-4, 0), c + QPointF(4, 0));
    } else if (sign == u"x"_s) {
        p.drawLine(c + QPointF(-3, -3), c + QPointF(3, 3));
        p.drawLine(c + QPointF(-3, 3), c + QPointF(3, -3));
    } else {
        QFont f = p.font();
        f.setPixelSize(10);
        f.setBold(true);
        p.setFont(f);
        p.drawText(badge, Qt::AlignCenter, sign);
    }
}

QIcon CoinGlyph(const QString& badge, const QColor& badgeColour)
{
    QPixmap pixmap = Canvas();
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    PaintCoin(p, QRectF(2, 2, 24, 24), cGoldLight, cGoldDark);
    if (!badge.isEmpty())
        PaintBadge(p, badgeColour, badge);
    p.end();
    return QIcon(pixmap);
}

// Rows of a list or a table, or a grid of cards.
QIcon ViewGlyph(int kind)
{
    QPixmap pixmap = Canvas();
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor frame(0x4A, 0x6F, 0x9C);
    p.setPen(QPen(frame, 1.2));
    switch (kind) {
    case 0: // thumbs: four coins
        for (int n = 0; n < 4; ++n)
            PaintCoin(p, QRectF(3 + (n % 2) * 14, 3 + (n / 2) * 14, 12, 12), cSilverLight, cSilverDark);
        break;
    case 1: // cards
        for (int n = 0; n < 2; ++n) {
            p.setBrush(QColor(0xEE, 0xF3, 0xFA));
            p.drawRoundedRect(QRectF(3 + n * 14, 4, 12, 24), 2, 2);
            PaintCoin(p, QRectF(4.5 + n * 14, 6, 9, 9), cGoldLight, cGoldDark);
        }
        break;
    case 2: // table
    case 4: // quick stats
        p.setBrush(QColor(0xFA, 0xFB, 0xFD));
        p.drawRect(QRectF(3, 5, 26, 22));
        for (int y = 11; y < 27; y += 5)
            p.drawLine(QPointF(3, y), QPointF(29, y));
        p.drawLine(QPointF(12, 5), QPointF(12, 27));
        if (kind == 4) {
            p.setPen(Qt::NoPen);
            p.setBrush(QColor(0x2E, 0x9E, 0x44));
            p.drawRect(QRectF(15, 19, 3, 8));
            p.drawRect(QRectF(20, 15, 3, 12));
            p.drawRect(QRectF(25, 12, 3, 15));
        }
        break;
    case 3: // shelf
        p.setBrush(QColor(0x9C, 0x6B, 0x3A));
        p.drawRect(QRectF(2, 24, 28, 4));
        for (int n = 0; n < 3; ++n)
            PaintCoin(p, QRectF(3 + n * 9, 15, 9, 9), n == 1 ? cSilverLight : cGoldLight,
                      n == 1 ? cSilverDark : cGoldDark);
        break;
    default:
        break;
    }
    p.end();
    return QIcon(pixmap);
}

// A page with a title and lines: the exports, with a coloured tag.
QIcon DocumentGlyph(const QColor& colour, const QString& label)
{
    QPixmap pixmap = Canvas();
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(0x70, 0x70, 0x70), 1));
    p.setBrush(Qt::white);
    QPainterPath page;
    page.moveTo(6, 2);
    page.lineTo(21, 2);
    page.lineTo(27, 8);
    page.lineTo(27, 30);
    page.lineTo(6, 30);
    page.closeSubpath();
    p.drawPath(page);
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawRoundedRect(QRectF(1, 14, 24, 12), 2, 2);
    QFont f = p.font();
    f.setPixelSize(label.size() > 3 ? 7 : 8);
    f.setBold(true);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(QRectF(1, 14, 24, 12), Qt::AlignCenter, label);
    p.end();
    return QIcon(pixmap);
}

QIcon Standard(const QStyle* style, QStyle::StandardPixmap pixmap)
{
    return style ? style->standardIcon(pixmap) : QIcon();
}

} // namespace

QIcon CommandGlyph(const QString& name, const QStyle* style)
{
    const QColor green(0x2E, 0x9E, 0x44), red(0xD2, 0x3A, 0x2E), blue(0x2B, 0x57, 0x9A),
        orange(0xD2, 0x77, 0x26);
    if (name == u"actAdd"_s || name == u"btnAddDropDown"_s)
        return CoinGlyph(u"+"_s, green);
    if (name == u"actAddManually"_s)
        return CoinGlyph(u"+"_s, blue);
    if (name == u"actRemoveSelected"_s)
        return CoinGlyph(u"x"_s, red);
    if (name == u"actEdit"_s || name == u"btnEditDropDown"_s || name == u"actMultiEdit"_s)
        return CoinGlyph(u"\u270E"_s, orange);
    if (name == u"actRefresh"_s || name == u"actRefreshSpot"_s)
        return Standard(style, QStyle::SP_BrowserReload);
    if (name == u"actStats"_s)
        return ViewGlyph(4);
    if (name == u"actViewThumbs"_s)
        return ViewGlyph(0);
    if (name == u"actViewCards"_s)
        return ViewGlyph(1);
    if (name == u"actViewTable"_s)
        return ViewGlyph(2);
    if (name == u"actViewShelve"_s || name == u"actThumbSize"_s)
        return ViewGlyph(3);
    if (name == u"actViewROI"_s)
        return ViewGlyph(4);
    if (name == u"actFlipACoin"_s)
        return CoinGlyph(u"\u21BB"_s, blue);
    if (name == u"actEditMints"_s)
        return CoinGlyph(u"M"_s, blue);
    if (name == u"actQuickSearch"_s || name == u"actAdvSearch"_s || name == u"btnFilterQuick"_s)
        return Standard(style, QStyle::SP_FileDialogContentsView);
    if (name == u"actCustomizeColumns"_s)
        return Standard(style, QStyle::SP_FileDialogDetailedView);
    if (name == u"actSortAsc"_s)
        return Standard(style, QStyle::SP_ArrowUp);
    if (name == u"actSortDesc"_s)
        return Standard(style, QStyle::SP_ArrowDown);
    if (name == u"actSortData"_s)
        return Standard(style, QStyle::SP_FileDialogListView);
    if (name == u"actDBNew"_s)
        return Standard(style, QStyle::SP_FileIcon);
    if (name == u"actDBOpen"_s)
        return Standard(style, QStyle::SP_DialogOpenButton);
    if (name == u"actDBSaveAs"_s)
        return Standard(style, QStyle::SP_DialogSaveButton);
    if (name == u"actDBProperties"_s)
        return Standard(style, QStyle::SP_FileDialogInfoView);
    if (name == u"actRegenerateThumbs"_s)
        return ViewGlyph(0);
    if (name == u"actSplitMerge"_s)
        return Standard(style, QStyle::SP_ArrowRight);
    if (name == u"actFindDuplicates"_s)
        return CoinGlyph(u"2"_s, orange);
    if (name == u"actPrint"_s || name == u"actPrintQuick"_s || name == u"actPrintPreview"_s)
        return DocumentGlyph(QColor(0x55, 0x55, 0x55),
                             name == u"actPrintPreview"_s ? u"\u2315"_s : u"\u2399"_s);
    if (name == u"actExportHTML"_s)
        return DocumentGlyph(orange, u"HTML"_s);
    if (name == u"actExportCSV"_s)
        return DocumentGlyph(green, u"CSV"_s);
    if (name == u"actExportExcel"_s)
        return DocumentGlyph(QColor(0x20, 0x72, 0x45), u"XLS"_s);
    if (name == u"actExportPDF"_s)
        return DocumentGlyph(red, u"PDF"_s);
    if (name == u"actExportTxt"_s)
        return DocumentGlyph(QColor(0x60, 0x60, 0x60), u"TXT"_s);
    if (name == u"actExportXML"_s)
        return DocumentGlyph(blue, u"XML"_s);
    if (name == u"actOptions"_s)
        return Standard(style, QStyle::SP_FileDialogDetailedView);
    if (name == u"actAbout"_s)
        return Standard(style, QStyle::SP_MessageBoxInformation);
    if (name == u"actExit"_s)
        return Standard(style, QStyle::SP_DialogCloseButton);
    return {};
}

QIcon SpotGlyph(TSpotGlyph glyph)
{
    QPixmap pixmap = Canvas(16);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath arrow;
    if (glyph == TSpotGlyph::Rise) {
        arrow.moveTo(8, 2);
        arrow.lineTo(14, 9);
        arrow.lineTo(10.5, 9);
        arrow.lineTo(10.5, 14);
        arrow.lineTo(5.5, 14);
        arrow.lineTo(5.5, 9);
        arrow.lineTo(2, 9);
        painter.setBrush(QColor(0x2E, 0x9E, 0x44));
        painter.setPen(QPen(QColor(0x1B, 0x6B, 0x2C), 1));
    } else {
        arrow.moveTo(8, 14);
        arrow.lineTo(14, 7);
        arrow.lineTo(10.5, 7);
        arrow.lineTo(10.5, 2);
        arrow.lineTo(5.5, 2);
        arrow.lineTo(5.5, 7);
        arrow.lineTo(2, 7);
        painter.setBrush(QColor(0xD2, 0x3A, 0x2E));
        painter.setPen(QPen(QColor(0x8E, 0x22, 0x1A), 1));
    }
    arrow.closeSubpath();
    painter.drawPath(arrow);
    painter.end();
    return QIcon(pixmap);
}

QPixmap GalleryPicture(quint8 mode, const QString& caption)
{
    const bool gold = mode == smGoldCoins || mode == smGoldBars;
    const bool bar = mode == smGoldBars || mode == smSilverBars;
    constexpr int size = 100;
    QPixmap pixmap = Canvas(size);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor light = gold ? cGoldLight : cSilverLight;
    const QColor dark = gold ? cGoldDark : cSilverDark;
    if (bar) {
        // A cast bar seen from above: a bevelled outline around a flat top.
        const QRectF outer(10, 22, 80, 56);
        QLinearGradient g(outer.topLeft(), outer.bottomRight());
        g.setColorAt(0, light);
        g.setColorAt(1, dark);
        p.setBrush(g);
        p.setPen(QPen(dark.darker(130), 1.5));
        p.drawRoundedRect(outer, 8, 8);
        QLinearGradient top(outer.bottomRight(), outer.topLeft());
        top.setColorAt(0, light);
        top.setColorAt(1, dark.lighter(115));
        p.setBrush(top);
        p.setPen(QPen(dark, 1));
        p.drawRoundedRect(outer.adjusted(9, 8, -9, -8), 5, 5);
    } else {
        PaintCoin(p, QRectF(6, 6, 88, 88), light, dark);
    }
    // The initials of the caption, stamped in the middle.
    QString initials;
    for (const QString& word : caption.split(u' ', Qt::SkipEmptyParts)) {
        if (initials.size() < 3 && (word.at(0).isLetterOrNumber()))
            initials += word.at(0).toUpper();
    }
    QFont f = p.font();
    f.setPixelSize(initials.size() > 2 ? 22 : 26);
    f.setBold(true);
    p.setFont(f);
    const QColor ink = gold ? QColor(0x7A, 0x4E, 0x08) : QColor(0x4B, 0x55, 0x60);
    p.setPen(QColor(255, 255, 255, 150));
    p.drawText(QRectF(1, 1, size, size), Qt::AlignCenter, initials);
    p.setPen(ink);
    p.drawText(QRectF(0, 0, size, size), Qt::AlignCenter, initials);
    p.end();
    return pixmap;
}
