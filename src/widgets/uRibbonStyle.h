#pragma once

#include <QColor>
#include <QFontMetrics>
#include <QPalette>

// The looks of the ribbon, numbered as the program's themes number them: 0 the 2007 look, 1 the
// 2010 look (both with shaded pages and framed groups), 2 the 2013 look, 3 the 2016 look (flat),
// 5 the 2019 look (flat, the active tab underlined). Any other number reads as 3.
enum class TRibbonStyle
{
    Office2007 = 0,
    Office2010 = 1,
    Office2013 = 2,
    Office2016 = 3,
    Office2019 = 5,
};

TRibbonStyle RibbonStyleFromNumber(int number);
bool IsClassicRibbonStyle(TRibbonStyle style);

// Sizes of the ribbon's parts, all from the font, so they follow the screen's resolution and the
// user's font.
struct TRibbonMetrics
{
    int smallIcon = 16;
    int largeIcon = 32;
    // One row of small items; a group's body holds three.
    int rowHeight = 22;
    int bodyHeight = 70;
    int captionHeight = 16;
    int groupHeight = 92;
    int tabHeight = 24;
    int titleHeight = 24;
    int padding = 4;
    int arrowSize = 7;

    static TRibbonMetrics of(const QFontMetrics& metrics);
};

// The ribbon's colours, all taken from a palette so light and dark palettes both read well; the
// highlight colour is the program's accent.
struct TRibbonColors
{
    QColor tabRow;
    QColor tabRowText;
    QColor page;
    QColor pageEdge;
    QColor text;
    QColor captionText;
    QColor separator;
    QColor hover;
    QColor hoverEdge;
    QColor pressed;
    QColor checked;
    QColor checkedEdge;
    QColor accent;
    QColor accentText;

    static TRibbonColors of(const QPalette& palette, bool coloredTabRow);
};

QColor RibbonBlend(const QColor& a, const QColor& b, qreal share);
