#include "dmStyles.h"

#include "uRibbon.h"
#include "uRibbonStyle.h"

#include <QApplication>
#include <QStyle>
#include <QStyleFactory>

using namespace Qt::StringLiterals;

namespace {

TThemeLook& CurrentLook()
{
    static TThemeLook look = ::ApplyTheme(cDefaultThemeIndex, cDefaultAccentIndex);
    return look;
}

QColor Mix(const QColor& a, const QColor& b, qreal share)
{
    return QColor::fromRgbF(float(a.redF() * (1 - share) + b.redF() * share),
                            float(a.greenF() * (1 - share) + b.greenF() * share),
                            float(a.blueF() * (1 - share) + b.blueF() * share));
}

} // namespace

QPalette TDM_Styles::PaletteOf(const TThemeLook& look)
{
    const TSchemeColours& c = look.Colours;
    QPalette palette;
    const QColor button = look.Dark ? Mix(c.Panel, c.Content, 0.6) : Mix(c.Panel, c.Content, 0.5);
    palette.setColor(QPalette::Window, c.Panel);
    palette.setColor(QPalette::WindowText, c.PanelText);
    palette.setColor(QPalette::Base, c.Content);
    palette.setColor(QPalette::AlternateBase,
                     look.Dark ? c.Content.lighter(115) : Darken20(c.Content).lighter(118));
    palette.setColor(QPalette::Text, c.Text);
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::ButtonText, c.PanelText);
    palette.setColor(QPalette::BrightText, look.Dark ? QColor(Qt::white) : QColor(Qt::black));
    palette.setColor(QPalette::ToolTipBase, c.Content);
    palette.setColor(QPalette::ToolTipText, c.Text);
    palette.setColor(QPalette::PlaceholderText, Mix(c.Text, c.Content, 0.45));
    palette.setColor(QPalette::Highlight, look.Accent.Colour);
    palette.setColor(QPalette::HighlightedText, look.Accent.TextColour);
    palette.setColor(QPalette::Link,
                     look.Dark ? look.Accent.Colour.lighter(150) : look.Accent.Colour.darker(120));
    palette.setColor(QPalette::LinkVisited, palette.color(QPalette::Link));
    palette.setColor(QPalette::Light, look.Dark ? button.lighter(140) : QColor(Qt::white));
    palette.setColor(QPalette::Midlight, Mix(button, palette.color(QPalette::Light), 0.5));
    palette.setColor(QPalette::Mid, Mix(c.Panel, c.PanelText, 0.35));
    palette.setColor(QPalette::Dark, Mix(c.Panel, c.PanelText, 0.55));
    palette.setColor(QPalette::Shadow, look.Dark ? QColor(Qt::black) : QColor(0x60, 0x60, 0x60));
    const QColor disabled = Mix(c.PanelText, c.Panel, 0.55);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, disabled);
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, Mix(look.Accent.Colour, c.Panel, 0.5));
    return palette;
}

TThemeLook TDM_Styles::ApplyTheme(int themeIndex, int accentIndex, TRibbon* ribbon)
{
    const TThemeLook look = ::ApplyTheme(themeIndex, accentIndex);
    if (auto* app = qobject_cast<QApplication*>(QCoreApplication::instance())) {
        if (QApplication::style()->name().compare(u"fusion"_s, Qt::CaseInsensitive) != 0) {
            QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
        }
        QApplication::setPalette(PaletteOf(look));
        Q_UNUSED(app);
    }
    if (ribbon) {
        ribbon->setRibbonStyle(RibbonStyleFromNumber(look.RibbonStyle));
    }
    CurrentLook() = look;
    return look;
}

const TThemeLook& TDM_Styles::Current()
{
    return CurrentLook();
}
