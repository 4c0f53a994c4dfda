// The theme table and ApplyTheme's colours: the rows, the accents on a light and a dark scheme, the
// darkening of the card caption row, and indexes out of range; the about dialog's quotation pick.

#include "support_datarow.h"
#include "uAbout.h"
#include "uThemes.h"

#include <QtTest>

class TestThemes : public QObject
{
    Q_OBJECT

private slots:
    void table_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("skin");
        QTest::addColumn<int>("ribbonStyle");
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<bool>("modern");
        AddRow("first", 0, QString("Office 2019 - Black"), QString("Office2019Black"), 5, QString("Black"),
               true);
        AddRow("default", 4, QString("Office 2016 - Colorful"), QString("Office2016Colorful"), 3,
               QString("Colorful"), true);
        AddRow("light gray on a dark skin", 6, QString("Office 2016 - Light gray"), QString("Office2016Dark"),
               3, QString("LightGray"), true);
        AddRow("white on the colourful skin", 8, QString("Office 2016 - White"),
               QString("Office2016Colorful"), 3, QString("White"), true);
        AddRow("2013", 9, QString("Office 2013 - Dark gray"), QString("Office2013DarkGray"), 2,
               QString("DarkGray"), true);
        AddRow("2010", 12, QString("Office 2010 - Blue"), QString("Office2010Blue"), 1, QString("Blue"),
               false);
        AddRow("2007", 16, QString("Office 2007 - Silver"), QString("Office2007Silver"), 0, QString("Silver"),
               false);
        AddRow("last", 17, QString("Office 2007 - Black"), QString("Office2007Black"), 0, QString("Black"),
               false);
        AddRow("past the end", 18, QString("Office 2016 - Colorful"), QString("Office2016Colorful"), 3,
               QString("Colorful"), true);
        AddRow("negative", -1, QString("Office 2016 - Colorful"), QString("Office2016Colorful"), 3,
               QString("Colorful"), true);
    }
    void table()
    {
        QFETCH(int, index);
        QFETCH(QString, text);
        QFETCH(QString, skin);
        QFETCH(int, ribbonStyle);
        QFETCH(QString, scheme);
        QFETCH(bool, modern);
        QCOMPARE(Themes().size(), 18);
        const TThemeLook look = ApplyTheme(index, 0);
        QCOMPARE(look.Row.Text, text);
        QCOMPARE(look.Row.Skin, skin);
        QCOMPARE(look.RibbonStyle, ribbonStyle);
        QCOMPARE(RibbonStyleOf(index), ribbonStyle);
        QCOMPARE(ColorSchemeName(look.Row.Scheme), scheme);
        QCOMPARE(look.ModernRibbon, modern);
    }

    void darken_data()
    {
        QTest::addColumn<QColor>("colour");
        QTest::addColumn<QColor>("darker");
        AddRow("white", QColor(255, 255, 255), QColor(204, 204, 204));
        AddRow("black stays", QColor(0, 0, 0), QColor(0, 0, 0));
        AddRow("rounds each channel", QColor(0xEA, 0xA5, 0x3E), QColor(187, 132, 50));
        AddRow("small values", QColor(2, 3, 7), QColor(2, 2, 6));
        AddRow("dark gray", QColor(0x26, 0x26, 0x26), QColor(30, 30, 30));
    }
    void darken()
    {
        QFETCH(QColor, colour);
        QFETCH(QColor, darker);
        QCOMPARE(Darken20(colour), darker);
    }

    // Every accent on a light and on a dark theme: selections in the accent with white text, the
    // rest from the scheme's four colours.
    void colours_data()
    {
        QTest::addColumn<int>("theme");
        QTest::addColumn<int>("accent");
        QTest::addColumn<QColor>("accentColour");
        QTest::addColumn<bool>("dark");
        const QList<QColor> accents = {QColor(0xEA, 0xA5, 0x3E), QColor(0x2B, 0x57, 0x9A),
                                       QColor(0x20, 0x72, 0x45), QColor(0xD2, 0x47, 0x26),
                                       QColor(0x80, 0x38, 0x7B)};
        const QStringList names = {"Yellow", "Blue", "Green", "Orange", "Purple"};
        for (int accent = 0; accent < 5; ++accent) {
            QTest::addRow("light, %s", qPrintable(names[accent])) << 4 << accent << accents[accent] << false;
            QTest::addRow("dark, %s", qPrintable(names[accent])) << 0 << accent << accents[accent] << true;
        }
        QTest::addRow("accent out of range") << 4 << 7 << accents[0] << false;
    }
    void colours()
    {
        QFETCH(int, theme);
        QFETCH(int, accent);
        QFETCH(QColor, accentColour);
        QFETCH(bool, dark);
        const TThemeLook look = ApplyTheme(theme, accent);
        const TSchemeColours& c = look.Colours;
        const TThemeStyles& s = look.Styles;
        QCOMPARE(look.Dark, dark);
        QCOMPARE(s.tvSelection.Background, accentColour);
        QCOMPARE(s.tvSelection.Text, QColor(Qt::white));
        QVERIFY(s.StyleCardSelection == s.tvSelection);
        QVERIFY((s.tvBackground == TStyleColours{c.Content, c.Text}));
        QVERIFY((s.tvContent == TStyleColours{c.Content, c.Text}));
        for (const TStyleColours* panel : {&s.tvFilterBox, &s.tvFindPanel, &s.tvGroupByBox})
            QVERIFY((*panel == TStyleColours{c.Panel, c.PanelText}));
        QCOMPARE(s.StyleCardCaptionRow.Background, Darken20(c.Content));
        QCOMPARE(s.StyleCardCaptionRow.Text, c.Text);
        QCOMPARE(s.StyleCardViewBorder.Background, QColor(0x80, 0x80, 0x80));
        QVERIFY(!s.StyleCardViewBorder.Text.isValid());
        QVERIFY((s.StyleRibbonBackground == TStyleColours{c.Panel, c.Text}));
        QCOMPARE(look.WindowBackground, c.Panel);
        // Readable: text and ground far apart in lightness, dark schemes dark.
        QVERIFY(std::abs(c.Content.lightness() - c.Text.lightness()) > 150);
        QVERIFY(std::abs(c.Panel.lightness() - c.PanelText.lightness()) > 120);
        QCOMPARE(c.Content.lightness() < 128, dark);
    }

    // round(random * 3): the ends get half the share of the middle two.
    void quotationIndex_data()
    {
        QTest::addColumn<double>("random");
        QTest::addColumn<int>("index");
        AddRow("zero", 0.0, 0);
        AddRow("just below a sixth", 0.16, 0);
        AddRow("just above a sixth", 0.17, 1);
        AddRow("a half", 0.5, 2);
        AddRow("just below five sixths", 0.83, 2);
        AddRow("just above five sixths", 0.84, 3);
        AddRow("almost one", 0.9999, 3);
    }
    void quotationIndex()
    {
        QFETCH(double, random);
        QFETCH(int, index);
        QCOMPARE(QuotationIndex(random), index);
        QCOMPARE(AboutQuotations().size(), 4);
        QCOMPARE(AboutQuotations().at(0).Words, "Gold is money. Everything else is credit.");
        QVERIFY(AboutVersionText().startsWith("v "));
    }
};

QTEST_GUILESS_MAIN(TestThemes)
#include "tst_themes.moc"
