#pragma once

#include <QColor>
#include <QList>
#include <QString>

// The theme table and the colours ApplyTheme gives the styles of the views and the window.

enum class TColorScheme
{
    Black,
    Colorful,
    DarkGray,
    White,
    LightGray,
    MediumGray,
    Blue,
    Silver
};

QString ColorSchemeName(TColorScheme scheme);
// Black and DarkGray: light text on dark ground.
bool IsDarkScheme(TColorScheme scheme);

// One row of the theme table (Theme.ThemeIndex).
struct TThemeRow
{
    QString Text;    // the entry of cbTheme
    QString Skin;    // the skin of the window
    int RibbonStyle; // 0 for the 2007 look, 1 for 2010, 2 for 2013, 3 for 2016, 5 for 2019
    TColorScheme Scheme;
};

// The 18 themes in index order.
const QList<TThemeRow>& Themes();
// The row of an index; an index out of range gives the default row (4).
const TThemeRow& ThemeRowOf(int themeIndex);
// The ribbon style of an index; 3 for an index out of range.
int RibbonStyleOf(int themeIndex);

inline constexpr int cDefaultThemeIndex = 4;
inline constexpr int cDefaultAccentIndex = 0;

// One accent (Theme.ColorSchemeAccentIndex).
struct TAccent
{
    QString Text; // the entry of cbColorSchemeAccent
    QColor Colour;
    QColor TextColour;
};

// The 5 accents in index order.
const QList<TAccent>& Accents();
// The accent of an index; out of range gives accent 0.
const TAccent& AccentOf(int accentIndex);

// The four colours of a scheme the styles are made from.
struct TSchemeColours
{
    QColor Content;   // A: content background
    QColor Text;      // T: text on the content
    QColor Panel;     // B: panel background
    QColor PanelText; // U: text on panels
};

TSchemeColours SchemeColoursOf(TColorScheme scheme);

// Takes from each of red, green and blue 20 percent of itself, rounded.
QColor Darken20(const QColor& colour);

// A style's colours; an invalid colour keeps the style's default.
struct TStyleColours
{
    QColor Background;
    QColor Text;
    friend bool operator==(const TStyleColours&, const TStyleColours&) = default;
};

// The styles the view styles module takes from a theme.
struct TThemeStyles
{
    TStyleColours tvBackground;
    TStyleColours tvContent;
    TStyleColours tvFilterBox;
    TStyleColours tvFindPanel;
    TStyleColours tvGroupByBox;
    TStyleColours tvSelection;
    TStyleColours StyleCardSelection;
    TStyleColours StyleCardCaptionRow;
    TStyleColours StyleCardViewBorder;
    TStyleColours StyleRibbonBackground;
};

// Everything ApplyTheme works out of the two settings.
struct TThemeLook
{
    int ThemeIndex = cDefaultThemeIndex;
    int AccentIndex = cDefaultAccentIndex;
    TThemeRow Row;
    int RibbonStyle = 3;
    bool ModernRibbon = false; // the flag passed to the window: ribbon styles 2, 3 and 5
    bool Dark = false;
    TAccent Accent;
    TSchemeColours Colours;
    TThemeStyles Styles;
    QColor WindowBackground; // the background of StyleRibbonBackground
};

// The look of a theme and an accent index.
TThemeLook ApplyTheme(int themeIndex, int accentIndex);
