#include "galleryShared.h"

#include <QApplication>
#include <QCheckBox>
#include <QLayout>
#include <QLinearGradient>
#include <QLocale>
#include <QPainter>
#include <QStyle>
#include <QWidget>

#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace Gallery {
QString metalName(const QVariant& value)
{
    static const std::array<QString, 6> names{u"Gold"_s,      u"Silver"_s,  u"Platinum"_s,
                                              u"Palladium"_s, u"Rhodium"_s, u"Copper"_s};
    const int i = value.toInt();
    return i >= 0 && i < 6 ? names[std::size_t(i)] : QString();
}

QString coinTypeName(const QVariant& value)
{
    static const std::array<QString, 5> names{u"Coin"_s, u"Rectangular coin"_s, u"Round"_s, u"Bar"_s,
                                              u"Divisible bar"_s};
    const int i = value.toInt();
    return i >= 0 && i < 5 ? names[std::size_t(i)] : QString();
}

QString weightText(const QVariant& grams)
{
    if (grams.isNull())
        return {};
    const double g = grams.toDouble();
    if (g >= 1000.0)
        return QLocale().toString(g / 1000.0, 'g', 4) + u" kg"_s;
    const double oz = g / 31.1035;
    if (std::abs(oz - std::round(oz)) < 0.01 || oz >= 1.0)
        return QLocale().toString(oz, 'g', 3) + u" oz"_s;
    return QLocale().toString(g, 'f', 2) + u" g"_s;
}

QString ouncesText(const QVariant& ounces)
{
    return ounces.isNull() ? QString() : QLocale().toString(ounces.toDouble(), 'f', 2) + u" oz"_s;
}

QString moneyText(const QVariant& value)
{
    static const QLocale english(QLocale::English, QLocale::UnitedStates);
    return value.isNull() ? QString() : english.toCurrencyString(value.toDouble(), u"$"_s);
}

QString percentText(const QVariant& value)
{
    return value.isNull() ? QString() : QLocale().toString(value.toDouble(), 'f', 2) + u'%';
}

const TEditorItem* metalItem()
{
    static const TextItem item(metalName);
    return &item;
}

const TEditorItem* coinTypeItem()
{
    static const TextItem item(coinTypeName);
    return &item;
}

const TEditorItem* weightItem()
{
    static const TextItem item(weightText);
    return &item;
}

const TEditorItem* moneyItem()
{
    static const TextItem item(moneyText);
    return &item;
}

const TEditorItem* mintItem()
{
    static const TextItem item([](const QVariant& v) { return u"Mint #"_s + v.toString(); });
    return &item;
}

const TEditorItem* pictureItem()
{
    static const PictureItem item;
    return &item;
}

QPalette darkPalette()
{
    QPalette p;
    const QColor window(0x2b, 0x2d, 0x30);
    const QColor base(0x1e, 0x1f, 0x22);
    const QColor text(0xdf, 0xe1, 0xe5);
    const QColor accent(0x3d, 0x8b, 0xd9);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, QColor(0x26, 0x28, 0x2b));
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x3a, 0x3d, 0x41));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::Highlight, accent);
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::PlaceholderText, QColor(0x8c, 0x8f, 0x94));
    p.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3d, 0x41));
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::Light, QColor(0x4a, 0x4d, 0x52));
    p.setColor(QPalette::Midlight, QColor(0x40, 0x43, 0x47));
    p.setColor(QPalette::Mid, QColor(0x30, 0x32, 0x35));
    p.setColor(QPalette::Dark, QColor(0x18, 0x19, 0x1b));
    p.setColor(QPalette::Shadow, Qt::black);
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::Link, accent.lighter(130));
    p.setColor(QPalette::Disabled, QPalette::Text, QColor(0x70, 0x73, 0x78));
    p.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x70, 0x73, 0x78));
    p.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x70, 0x73, 0x78));
    p.setColor(QPalette::Inactive, QPalette::Highlight, accent.darker(140));
    p.setColor(QPalette::Inactive, QPalette::HighlightedText, text);
    return p;
}

QImage shelfPicture(int height)
{
    QImage image(777, height, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    // The back wall, then a board at the bottom with its front edge.
    QLinearGradient wall(0, 0, 0, height);
    wall.setColorAt(0, QColor(0x5a, 0x3b, 0x24));
    wall.setColorAt(1, QColor(0x3e, 0x27, 0x16));
    painter.fillRect(image.rect(), wall);
    painter.setPen(QColor(0, 0, 0, 40));
    for (int x = 13; x < 777; x += 37)
        painter.drawLine(x, 0, x + (x % 11) - 5, height - 30);
    const QRect board(0, height - 30, 777, 16);
    QLinearGradient top(0, board.top(), 0, board.bottom());
    top.setColorAt(0, QColor(0xb8, 0x83, 0x4f));
    top.setColorAt(1, QColor(0x93, 0x63, 0x38));
    painter.fillRect(board, top);
    painter.fillRect(QRect(0, height - 14, 777, 14), QColor(0x6b, 0x45, 0x25));
    painter.fillRect(QRect(0, height - 14, 777, 2), QColor(0xd1, 0x9c, 0x66));
    return image;
}

void addLookSwitches(QWidget* bar, QWidget* page)
{
    auto* dark = new QCheckBox(u"Dark palette"_s, bar);
    dark->setObjectName(u"dark"_s);
    auto* rtl = new QCheckBox(u"Right to left"_s, bar);
    rtl->setObjectName(u"rtl"_s);
    bar->layout()->addWidget(dark);
    bar->layout()->addWidget(rtl);
    QObject::connect(dark, &QCheckBox::toggled, page, [page](bool on) {
        page->setPalette(on ? darkPalette() : QApplication::style()->standardPalette());
        page->setAutoFillBackground(true);
    });
    QObject::connect(rtl, &QCheckBox::toggled, page,
                     [page](bool on) { page->setLayoutDirection(on ? Qt::RightToLeft : Qt::LeftToRight); });
}
} // namespace Gallery
