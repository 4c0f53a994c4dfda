#include "uRibbonStyle.h"

TRibbonStyle RibbonStyleFromNumber(int number)
{
    switch (number) {
    case 0:
        return TRibbonStyle::Office2007;
    case 1:
        return TRibbonStyle::Office2010;
    case 2:
        return TRibbonStyle::Office2013;
    case 5:
        return TRibbonStyle::Office2019;
    default:
        return TRibbonStyle::Office2016;
    }
}

bool IsClassicRibbonStyle(TRibbonStyle style)
{
    return style == TRibbonStyle::Office2007 || style == TRibbonStyle::Office2010;
}

TRibbonMetrics TRibbonMetrics::of(const QFontMetrics& metrics)
{
    TRibbonMetrics m;
    const int line = metrics.height();
    m.smallIcon = std::max(16, (line + 1) / 2 * 2);
    m.padding = std::max(3, line / 4);
    m.rowHeight = m.smallIcon + m.padding * 2 - 2;
    m.largeIcon = m.smallIcon * 2;
    // Three rows of small items, or a large item with two lines of text, whichever is taller.
    m.bodyHeight = std::max(m.rowHeight * 3 + 4, m.padding * 2 + m.largeIcon + m.padding / 2 + line * 2);
    m.captionHeight = line + 4;
    m.groupHeight = m.bodyHeight + m.captionHeight + 4;
    m.tabHeight = line + m.padding * 2 + 2;
    m.titleHeight = std::max(line + m.padding * 2, m.smallIcon + 6);
    m.arrowSize = std::max(5, line / 3) | 1;
    return m;
}

QColor RibbonBlend(const QColor& a, const QColor& b, qreal share)
{
    return QColor::fromRgbF(a.redF() * (1 - share) + b.redF() * share,
                            a.greenF() * (1 - share) + b.greenF() * share,
                            a.blueF() * (1 - share) + b.blueF() * share);
}

TRibbonColors TRibbonColors::of(const QPalette& palette, bool coloredTabRow)
{
    TRibbonColors c;
    const QColor window = palette.color(QPalette::Window);
    const QColor base = palette.color(QPalette::Base);
    const QColor text = palette.color(QPalette::WindowText);
    c.accent = palette.color(QPalette::Highlight);
    c.accentText = palette.color(QPalette::HighlightedText);
    c.page = RibbonBlend(window, base, 0.55);
    c.tabRow = coloredTabRow ? c.accent : window;
    c.tabRowText = coloredTabRow ? c.accentText : text;
    c.pageEdge = RibbonBlend(c.page, text, 0.2);
    c.text = text;
    c.captionText = RibbonBlend(c.page, text, 0.68);
    c.separator = RibbonBlend(c.page, text, 0.16);
    c.hover = RibbonBlend(c.page, c.accent, 0.2);
    c.hoverEdge = RibbonBlend(c.page, c.accent, 0.55);
    c.pressed = RibbonBlend(c.page, c.accent, 0.42);
    c.checked = RibbonBlend(c.page, c.accent, 0.3);
    c.checkedEdge = RibbonBlend(c.page, c.accent, 0.7);
    return c;
}
