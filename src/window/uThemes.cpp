#include "uThemes.h"

#include <cmath>

using namespace Qt::StringLiterals;

QString ColorSchemeName(TColorScheme scheme)
{
    switch (scheme) {
    case TColorScheme::Black:
        return u"Black"_s;
    case TColorScheme::Colorful:
        return u"Colorful"_s;
    case TColorScheme::DarkGray:
        return u"DarkGray"_s;
    case TColorScheme::White:
        return u"White"_s;
    case TColorScheme::LightGray:
        return u"LightGray"_s;
    case TColorScheme::MediumGray:
        return u"MediumGray"_s;
    case TColorScheme::Blue:
        return u"Blue"_s;
    case TColorScheme::Silver:
        return u"Silver"_s;
    }
    return {};
}

bool IsDarkScheme(TColorScheme scheme)
{
    return scheme == TColorScheme::Black || scheme == TColorScheme::DarkGray;
}

const QList<TThemeRow>& Themes()
{
    using S = TColorScheme;
    static const QList<TThemeRow> rows = {
        {u"Office 2019 - Black"_s, u"Office2019Black"_s, 5, S::Black},
        {u"Office 2019 - Colorful"_s, u"Office2019Colorful"_s, 5, S::Colorful},
        {u"Office 2019 - Dark gray"_s, u"Office2019DarkGray"_s, 5, S::DarkGray},
        {u"Office 2019 - White"_s, u"Office2019White"_s, 5, S::White},
        {u"Office 2016 - Colorful"_s, u"Office2016Colorful"_s, 3, S::Colorful},
        {u"Office 2016 - Dark gray"_s, u"Office2016Dark"_s, 3, S::DarkGray},
        {u"Office 2016 - Light gray"_s, u"Office2016Dark"_s, 3, S::LightGray},
        {u"Office 2016 - Medium gray"_s, u"Office2016Dark"_s, 3, S::MediumGray},
        {u"Office 2016 - White"_s, u"Office2016Colorful"_s, 3, S::White},
        {u"Office 2013 - Dark gray"_s, u"Office2013DarkGray"_s, 2, S::DarkGray},
        {u"Office 2013 - Light gray"_s, u"Office2013LightGray"_s, 2, S::LightGray},
        {u"Office 2013 - White"_s, u"Office2013White"_s, 2, S::White},
        {u"Office 2010 - Blue"_s, u"Office2010Blue"_s, 1, S::Blue},
        {u"Office 2010 - Black"_s, u"Office2010Black"_s, 1, S::Black},
        {u"Office 2010 - Silver"_s, u"Office2010Silver"_s, 1, S::Silver},
        {u"Office 2007 - Blue"_s, u"Office2007Blue"_s, 0, S::Blue},
        {u"Office 2007 - Silver"_s, u"Office2007Silver"_s, 0, S::Silver},
        {u"Office 2007 - Black"_s, u"Office2007Black"_s, 0, S::Black},
    };
    return rows;
}

const TThemeRow& ThemeRowOf(int themeIndex)
{
    const QList<TThemeRow>& rows = Themes();
    return themeIndex >= 0 && themeIndex < rows.size() ? rows.at(themeIndex) : rows.at(cDefaultThemeIndex);
}

int RibbonStyleOf(int themeIndex)
{
    const QList<TThemeRow>& rows = Themes();
    return themeIndex >= 0 && themeIndex < rows.size() ? rows.at(themeIndex).RibbonStyle : 3;
}

const QList<TAccent>& Accents()
{
    static const QList<TAccent> accents = {
        {u"Yellow"_s, QColor(0xEA, 0xA5, 0x3E), QColor(Qt::white)},
        {u"Blue"_s, QColor(0x2B, 0x57, 0x9A), QColor(Qt::white)},
        {u"Green"_s, QColor(0x20, 0x72, 0x45), QColor(Qt::white)},
        {u"Orange"_s, QColor(0xD2, 0x47, 0x26), QColor(Qt::white)},
        {u"Purple"_s, QColor(0x80, 0x38, 0x7B), QColor(Qt::white)},
    };
    return accents;
}

const TAccent& AccentOf(int accentIndex)
{
    const QList<TAccent>& accents = Accents();
    return accentIndex >= 0 && accentIndex < accents.size() ? accents.at(accentIndex) : accents.at(0);
}

TSchemeColours SchemeColoursOf(TColorScheme scheme)
{
    switch (scheme) {
    case TColorScheme::Black:
        return {QColor(0x26, 0x26, 0x26), QColor(0xF0, 0xF0, 0xF0), QColor(0x12, 0x12, 0x12),
                QColor(0xDC, 0xDC, 0xDC)};
    case TColorScheme::DarkGray:
        return {QColor(0x44, 0x44, 0x44), QColor(0xF0, 0xF0, 0xF0), QColor(0x2E, 0x2E, 0x2E),
                QColor(0xE6, 0xE6, 0xE6)};
    case TColorScheme::MediumGray:
        return {QColor(0xF0, 0xF0, 0xF0), QColor(0x26, 0x26, 0x26), QColor(0xB9, 0xB9, 0xB9),
                QColor(0x1E, 0x1E, 0x1E)};
    case TColorScheme::LightGray:
        return {QColor(0xFF, 0xFF, 0xFF), QColor(0x26, 0x26, 0x26), QColor(0xDC, 0xDC, 0xDC),
                QColor(0x33, 0x33, 0x33)};
    case TColorScheme::Blue:
        return {QColor(0xFF, 0xFF, 0xFF), QColor(0x1E, 0x39, 0x5B), QColor(0xCF, 0xDD, 0xEE),
                QColor(0x15, 0x42, 0x8B)};
    case TColorScheme::Silver:
        return {QColor(0xFF, 0xFF, 0xFF), QColor(0x1E, 0x1E, 0x1E), QColor(0xE1, 0xE6, 0xEC),
                QColor(0x3B, 0x3B, 0x3B)};
    case TColorScheme::White:
        return {QColor(0xFF, 0xFF, 0xFF), QColor(0x26, 0x26, 0x26), QColor(0xF5, 0xF5, 0xF5),
                QColor(0x44, 0x44, 0x44)};
    case TColorScheme::Colorful:
        break;
    }
    return {QColor(0xFF, 0xFF, 0xFF), QColor(0x26, 0x26, 0x26), QColor(0xE6, 0xE6, 0xE6),
            QColor(0x33, 0x33, 0x33)};
}

QColor Darken20(const QColor& colour)
{
    const auto less = [](int value) { return value - int(std::lround(value * 0.2)); };
    return QColor(less(colour.red()), less(colour.green()), less(colour.blue()), colour.alpha());
}

TThemeLook ApplyTheme(int themeIndex, int accentIndex)
{
    TThemeLook look;
    look.ThemeIndex = themeIndex;
    look.AccentIndex = accentIndex;
    look.Row = ThemeRowOf(themeIndex);
    look.RibbonStyle = RibbonStyleOf(themeIndex);
    look.ModernRibbon = look.RibbonStyle == 2 || look.RibbonStyle == 3 || look.RibbonStyle == 5;
    look.Dark = IsDarkScheme(look.Row.Scheme);
    look.Accent = AccentOf(accentIndex);
    look.Colours = SchemeColoursOf(look.Row.Scheme);

    const TSchemeColours& c = look.Colours;
    TThemeStyles& s = look.Styles;
    s.tvBackground = {c.Content, c.Text};
    s.tvContent = {c.Content, c.Text};
    s.tvFilterBox = {c.Panel, c.PanelText};
    s.tvFindPanel = {c.Panel, c.PanelText};
    s.tvGroupByBox = {c.Panel, c.PanelText};
    s.tvSelection = {look.Accent.Colour, look.Accent.TextColour};
    s.StyleCardSelection = {look.Accent.Colour, look.Accent.TextColour};
    s.StyleCardCaptionRow = {Darken20(c.Content), c.Text};
    s.StyleCardViewBorder = {QColor(0x80, 0x80, 0x80), QColor()};
    s.StyleRibbonBackground = {c.Panel, c.Text};
    look.WindowBackground = s.StyleRibbonBackground.Background;
    return look;
}
