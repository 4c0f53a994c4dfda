// The language texts: the built-in English file with every listed key, the German file, and the
// loader's rules for other files (letter case, attributes, right-to-left, malformed, missing).

#include "support_datarow.h"
#include "uZTStrings.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Every key of the built-in language, by group as the language file groups them.
const char* const c_builtInKeys = R"(
Layout dialog: cSbtnOK cSbtnCancel
Sort dialog: cSSortDlgCaption cSSortDlgColumn cSSortDlgOrder cSSortDlgAddLevel cSSortDlgDeleteLevel
    cSSortDlgAsc cSSortDlgDesc cSSortDlgMoveUp cSSortDlgMoveDown cSSortDlgDuplicateColumns
Edit dictionary dialog: cSEditDictDlgCaption cSEditDictDlgResetToDefaults cSEditDictDlgResetToDefaultsConf
    cSEditDictDlgDesc
Multi-edit form: cSMultiEditDlgCaption cSMultiEditDlgField cSMultiEditDlgValue cSMultiEditDlgAdd
    cSMultiEditDlgRemove cSMultiEditDlgDesc
Record edit dialog: cSRibbonEditDlgCaption cSRibbonEditDlgTabGeneral cSRibbonEditDlgBarActions
    cSRibbonEditDlgBarNav cSRibbonEditDlgactSaveAndClose cSRibbonEditDlgactCancel cSRibbonEditDlgactNew
    cSRibbonEditDlgactDel cSRibbonEditDlgactFirst cSRibbonEditDlgactPrior cSRibbonEditDlgactNext
    cSRibbonEditDlgactLast cSRibbonEditDlgConfirmCancelChanges cSRibbonEditDlgConfirmDeleteItem
    cSRibbonEditDlgConfirmSaveChanges
Common: cSOK cSCancel cSAdd cSRemove cSNew cSDel cSEdit cSUp cSDown cSAsc cSDesc cSNext cSPrev cSClear
    cSLoadFromFile cSSaveToFile cSPicture cSSaveAndClose cSConfirmDelete cSNoDataToDisplay
    cSDlgTypeInformation cSDlgTypeConfirmation cSDlgTypeWarning cSDlgTypeError
Downloader related: cSDownloadComplete cSDownloadCompleteExFmt cSDownloadingData cSDownloadImageFmt
    cSPreparingToDownload cSLeftDownloadsFmt cSInternetOK cSInternetFail cS_AU cS_AG cS_PT cS_PD cS_RH
    cS_CU cS_Coin cS_RectCoin cS_Round cS_Bar cS_DivBar cSThumbnail cSObverse cSReverse cSSide cSInABox
    cSOther
Add dialog: cSAddDlgCaption cSAddDlgTabSearch cSAddDlgTabOptions cSAddDlgBarActions cSAddDlgBarQuickSearch
    cSAddDlgBarSorting cSAddDlgAddAndClose cSAddDlgAddSelected cSAddDlgNewTab cSAddDlgClearResults
    cSAddDlgClearAllTabs cSAddDlgClearSep cSAddDlgStop cSAddDlgQSGoldCoins cSAddDlgQSSilverCoins
    cSAddDlgQSGoldBars cSAddDlgQSSilverBars cSAddDlgQSOtherMetals cSAddDlgSortData cSAddDlgClearSorting
    cSAddDlgactSearch cSAddDlgactCloseTab cSAddDlgactCloseAllTabs cSAddDlgProxySettings
    cSAddDlgTestConnection cSAddDlgSelectAll cSAddDlgClearSelection cSAddDlgRemoveSelection cSAddDlgHelp
    cSAddDlgedtSearchNULL cSAddDlgcSTabFmt cSAddDlgGoldCoins cSAddDlgGoldBars cSAddDlgSilverCoins
    cSAddDlgSilverBars cSAddDlgKeywordSearch cSAddDlgDblClickToEnlarge cSAddDlgSearchOptions
    cSAddDlgSearchOptionsHint cSAddDlgFilter cSAddDlgWeightRange cSAddDlgYearRange
Edit coin dlg: cSEditCoinDlgTSGeneral cSEditCoinDlgTSSpec cSEditCoinDlgTSPurchase
    cSEditCoinDlgTSMorePhotos cSEditCoinDlgTSCustom cSEditCoinDlggPurchaseInfo cSEditCoinDlggItemInfo
    cSEditCoinDlgAllFields
Data fields: cSF_Name cSF_Metal cSF_Obverse cSF_Reverse cSF_Series cSF_Year cSF_Weight cSF_Mint cSF_Type
    cSF_Denomination cSF_DenominationCurrency cSF_Purity cSF_Thickness cSF_Diameter cSF_Width cSF_Height
    cSF_Edge cSF_MintMark cSF_Country cSF_Mintage cSF_Artist cSF_Description cSF_ExpectedPremium
    cSF_Rating cSF_Rare cSF_Condition cSF_Status cSF_Owner cSF_Packaging cSF_Location cSF_Grade
    cSF_GradeService cSF_SerialNumbers cSF_Qty cSF_Price cSF_PurchaseDate cSF_Store cSF_AvgPricePerOz
    cSF_AvgPricePerG cSF_MinPricePerOz cSF_MaxPricePerOz cSF_WeightGxQty cSF_WeightOZxQty cSF_TotalPrice
    cSF_PurchaseYear cSF_PurchaseYearMonth cSF_Caption cSF_WeightOz cSF_WeightGram cSF_SpotValue
    cSF_LiquidationValue cSF_ROI cSF_SpotValuexQty cSF_LiquidationValuexQty cSF_ROIxQty cSF_ROIPercent
    cSF_ThumbFront cSF_ThumbBack cSF_PhotoFront cSF_PhotoBack cSF_PhotoSide cSF_PhotoInBox cSF_URL
    cSF_Logo cSF_IsPrivateMint
Repositories: cSFmtMintage cSFmtMM cSFmtQty cSFmtWeightG cSFmtWeightOZ cSImgEditCaption
    cSImgEditShowFullSize cSAny cSNA cSNotSet cSFrom cSTo cSUnit
Main dialog: cSMainTSGeneral cSMainTSView cSMainTSDBMGMT cSMainTSExport cSMainBarActions
    cSMainBarCurrentView cSMainBarFilter cSMainBarView cSMainBarDictionaries cSMainBarPrint
    cSMainBarExport cSMainactCopyToClipboard cSMainactEdit cSMainactColumnsAutoWidth
    cSMainactCustomizeColumns cSMainactViewThumbs cSMainactViewROI cSMainactViewTable cSMainactViewShelve
    cSMainactViewCards cSMainactMultiEdit cSMainactQuickSearch cSMainactOptions cSMainactAdvSearch
    cSMainactRemoveSelected cSMainactAddManually cSMainactAdd cSMainactStats cSMainactPrintPreview
    cSMainactPrintQuick cSMainactPrint cSMainactExit cSMainactRegenerateThumbs cSMainactApplyBestFit
    cSMainactExpandAll cSMainactCollapseAll cSMainactExportHTML cSMainactExportExcel cSMainactExportPDF
    cSMainactExportTxt cSMainactExportXML cSMainactExportCSV cSMainactRefresh cSMainactFilterCoins
    cSMainactFilterBars cSMainactEditMints cSMainactDBNew cSMainactDBOpen cSMainactDBSaveAs
    cSMainactDBProperties cSMainactFlipACoin cSMainQuickFilter cSMainsepFilterByMetal
    cSMainsepFilterByType cSMainTableViewTotalWeightFmt cSMainbtnCustomize cSMainsepConfiguration
    cSMainsepCreateYourOwnConf cSMainGroupByText cSMainBackstageBottomLabel cSMainlSpotPrices
    cSMainStatusBarStatsHint cSMainStatusBarTotalGoldFmt cSMainStatusBarTotalSilverFmt
    cSMainStatusBarTotalPlatinumFmt cSMainSpotPriceHintFmt cSMainactThumbSize cSMainactThumbSizeSmall
    cSMainactThumbSizeMedium cSMainactThumbSizeLarge
Statistics dialog: cSStatsDlgSelectGrpCategory cSStatsDlgChartColumn cSStatsDlgChartPie
    cSStatsDlgChartLine cSStatsDlgChartBar cSStatsDlgChartArea cSStatsDlgTableView cSStatsDlgPivotGridView
Splash: cSSplashLoadingSettings cSSplashLoadingTexts cSSplashLoadingImages cSSplashLoadingData
    cSSplashConnecting
About dlg: cSAbout cSVisitHomepage cSTechSupport
DB Properties dlg: cSDBPropertiesCaption cSDBPropertiesVacuumDBBtn cSDBPropertiesFile
    cSDBPropertiesFileSize
Options dlg: cSOptionsTSGeneral cSOptionsTSCustomFields cSOptionsTSDefaultValues
    cSOptionsTSConnectionSettings cSOptionsLanguage cSOptionsCurrency cSOptionsTheme cSOptionsThemeColor
    cSOptionsEnableCustom cSOptionsDisplayName cSOptionsDataType cSOptionsDefaultValuesDesc
    cSOptionsProxyDirect cSOptionsProxyProxy cSOptionsProxySettings cSOptionsProxyHost cSOptionsProxyPort
    cSOptionsProxyAuth cSOptionsProxyUsername cSOptionsProxyPassword
Find duplicates dlg: cSDuplicatesDlgCaption cSDuplicatesDlgApplyChanges cSDuplicatesDlgCancelChanges
    cSDuplicatesDlgliSelectFields cSDuplicatesDlgbtnFindDuplicates cSDuplicatesDlgNoDataToDisplay
    cSDuplicatesDlgDelete cSDuplicatesDlgUndo cSDuplicatesDlgDeleteConfirmation
Split / Merge / Copy / Move dialog: cSSMCMDlgCaption cSSMCMDlgbtnClose cSSMCMDlgactCopy cSSMCMDlgactMove
    cSSMCMDlglDatabase cSSMCMDlglDatabaseFmt cSSMCMDlgConnect cSSMCMDlgDisconnect
)";

QStringList builtInKeys()
{
    QStringList keys;
    static const QRegularExpression key("\\bcS\\w+");
    for (auto it = key.globalMatch(QString::fromLatin1(c_builtInKeys)); it.hasNext();)
        keys << it.next().captured();
    return keys;
}

QString sourceLang()
{
    return qEnvironmentVariable("ORV_SOURCE_DIR") + "/data/lang";
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The printf-style placeholders of a text, in order.
QStringList placeholders(const QString& text)
{
    static const QRegularExpression re("%[-+ #0]*\\d*(?:\\.\\d+)?[sdfuxg]");
    QStringList found;
    for (auto it = re.globalMatch(text); it.hasNext();)
        found << it.next().captured();
    return found;
}

// Accelerator marks: "&" before a letter ("&&" is a literal ampersand).
int accelerators(QString text)
{
    return int(text.remove("&&").count(QRegularExpression("&\\p{L}")));
}

} // namespace

class TestLanguageStrings : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    // Writes a language file into the temporary folder and loads it from there.
    bool loadFile(const QString& name, const QByteArray& xml)
    {
        QFile file(m_dir.filePath(name + ".xml"));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(xml) != xml.size())
            return false;
        file.close();
        XMLLanguage().SetLanguageFolder(m_dir.path());
        return LoadLanguage(name);
    }
    void loadGerman()
    {
        XMLLanguage().SetLanguageFolder(sourceLang());
        QVERIFY(LoadLanguage("German"));
    }

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        XMLLanguage().SetLanguageFolder(QString());
        QVERIFY(LoadBuiltInLanguage("ENGLISHLANG", "English"));
    }
    void cleanup()
    {
        XMLLanguage().SetLanguageFolder(QString());
        QDir dir(m_dir.path());
        for (const QFileInfo& info :
             dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden))
            info.isDir() ? void(QDir(info.filePath()).removeRecursively())
                         : void(dir.remove(info.fileName()));
    }

    void builtInHoldsKey_data()
    {
        QTest::addColumn<QString>("key");
        for (const QString& key : builtInKeys())
            QTest::newRow(qPrintable(key)) << key;
    }
    void builtInHoldsKey()
    {
        QFETCH(QString, key);
        QVERIFY2(XMLLanguage().HasText(key), qPrintable(key));
        QVERIFY2(!GetText(key).trimmed().isEmpty(), qPrintable(key));
        QCOMPARE(GetText(key.toUpper()), GetText(key)); // lookup ignores letter case
        QCOMPARE(GetText(key.toLower()), GetText(key));
    }

    // Nothing but the listed keys, none of them empty, in the file of the source tree.
    void builtInHoldsNoStrayOrEmptyKeys()
    {
        QSet<QString> listed;
        for (const QString& key : builtInKeys())
            listed.insert(key.toUpper());
        QCOMPARE(listed.size(), builtInKeys().size());
        for (const QString& key : XMLLanguage().Keys()) {
            QVERIFY2(listed.contains(key), qPrintable("unlisted key " + key));
            QVERIFY2(!GetText(key).trimmed().isEmpty(), qPrintable(key));
        }
        QCOMPARE(XMLLanguage().Count(), listed.size());
        const QByteArray data = readAll(":/lang/ENGLISHLANG");
        QVERIFY(data.startsWith("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>"));
        QCOMPARE(data, readAll(sourceLang() + "/English.xml"));
    }

    void builtInRoot()
    {
        QCOMPARE(CurrentLanguage(), "English");
        QCOMPARE(XMLLanguage().DisplayName(), "English");
        QCOMPARE(LanguageLocaleId(), 1033);
        QCOMPARE(XMLLanguage().CodePage(), 1252);
        QCOMPARE(LanguageCharset(), 1);
        QVERIFY(!LanguageIsRightToLeft());
        QVERIFY(!LoadBuiltInLanguage("NOSUCHLANG", "Other"));
        QCOMPARE(CurrentLanguage(), "English");
    }

    void englishTexts_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("text");
        AddRow("cSbtnOK", "cSbtnOK", "&OK");
        AddRow("cSNoDataToDisplay", "cSNoDataToDisplay", "< No data to display >");
        AddRow("cSDownloadCompleteExFmt", "cSDownloadCompleteExFmt", "Download complete. Found %d item(s)");
        AddRow("cSMainTableViewTotalWeightFmt", "cSMainTableViewTotalWeightFmt", "Total weight: %.1f oz");
        AddRow("cSAddDlgKeywordSearch", "cSAddDlgKeywordSearch", "Keyword search: ");
        AddRow("cSAddDlgSearchOptions", "cSAddDlgSearchOptions", "  Search options \u25BC  ");
        AddRow("cSFmtWeightG", "cSFmtWeightG", "0.## g");
        AddRow("cSFmtMintage", "cSFmtMintage", ",0");
        AddRow("cSSMCMDlgCaption", "cSSMCMDlgCaption", "Copy / move data between databases");
        AddRow("cS_RH", "cS_RH", "Rhodium");
    }
    void englishTexts()
    {
        QFETCH(QString, key);
        QFETCH(QString, text);
        QCOMPARE(GetText(key), text);
    }

    // German: every English key, translated, with the same placeholders and accelerators.
    void german()
    {
        QHash<QString, QString> english;
        for (const QString& key : XMLLanguage().Keys())
            english.insert(key, GetText(key));
        loadGerman();
        QCOMPARE(CurrentLanguage(), "German");
        QCOMPARE(XMLLanguage().DisplayName(), "Deutsch");
        QCOMPARE(LanguageLocaleId(), 1031);
        QVERIFY(!LanguageIsRightToLeft());
        QCOMPARE(GetText("cSbtnCancel"), "&Abbrechen");
        QCOMPARE(GetText("cSF_Mint"), "Prägestätte");
        const QStringList keys = XMLLanguage().Keys();
        QCOMPARE(QSet<QString>(keys.cbegin(), keys.cend()),
                 QSet<QString>(english.keyBegin(), english.keyEnd()));
        int same = 0;
        for (const QString& key : keys) {
            const QString german = GetText(key);
            QVERIFY2(!german.trimmed().isEmpty(), qPrintable(key));
            QVERIFY2(placeholders(german) == placeholders(english[key]), qPrintable(key));
            QVERIFY2(accelerators(german) == accelerators(english[key]), qPrintable(key));
            same += german == english[key] ? 1 : 0;
        }
        QVERIFY2(same < english.size() / 5, qPrintable(QString::number(same))); // a translation, not a copy
    }

    void languagesCopiedBesideExecutable()
    {
        const QString folder = qEnvironmentVariable("ORV_BUILD_DIR") + "/bin/Lang/";
        QCOMPARE(readAll(folder + "German.xml"), readAll(sourceLang() + "/German.xml"));
        QStringList names;
        for (const TLang& lang : ListLanguages(folder)) {
            names << lang.Name;
            QCOMPARE(lang.FlagPicture().size(), QSize(16, 11));
            QVERIFY(lang.FlagImage != DefaultFlagImage());
        }
        QVERIFY(names.contains("Deutsch") && names.contains("English"));
        QCOMPARE(GetLanguageFolder(), QCoreApplication::applicationDirPath() + "/Lang/");
        QCOMPARE(XMLLanguage().LanguageFilePath("German"), GetLanguageFolder() + "German.xml");
    }

    void loadVariants_data()
    {
        QTest::addColumn<QByteArray>("xml");
        QTest::addColumn<QString>("displayName");
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("held");
        QTest::addColumn<QString>("text");
        AddRow("lower-case element, upper-case attribute",
               QByteArray("<language name=\"X\"><string NAME=\"cSOK\">Ja</string></language>"), "X", "cSOK",
               true, "Ja");
        AddRow("no name attribute: loaded name",
               QByteArray("<Language LocaleID=\"1036\"><String name=\"cSOK\">D'accord</String></Language>"),
               "Custom", "csok", true, "D'accord");
        AddRow("first attribute of a matching name wins",
               QByteArray("<Language name=\"first\" NAME=\"second\"><String name=\"cSOK\" "
                          "NAME=\"cSCancel\">A</String></Language>"),
               "first", "cSOK", true, "A");
        AddRow("string without name attribute is the empty key",
               QByteArray("<Language><String>orphan</String></Language>"), "Custom", "", true, "orphan");
        AddRow("escaped markup, whitespace kept",
               QByteArray("<Language><String name=\"cSbtnOK\"> &amp;OK &lt;1&gt; </String></Language>"),
               "Custom", "cSbtnOK", true, " &OK <1> ");
        AddRow("nested strings are not children of the root",
               QByteArray("<Language><Group><String name=\"cSOK\">no</String></Group></Language>"), "Custom",
               "cSOK", false, "");
        AddRow("text of child elements and CDATA is part of the text",
               QByteArray("<Language><String name=\"k\">a<b>b</b><![CDATA[<&>]]></String></Language>"),
               "Custom", "k", true, "ab<&>");
        AddRow(
            "key given twice keeps the later text",
            QByteArray("<Language><String name=\"k\">one</String><string NAME=\"K\">two</string></Language>"),
            "Custom", "k", true, "two");
        AddRow(
            "BOM, comments and declaration, any root name",
            QByteArray(
                "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?><!-- c --><Strings name=\"\xC3\x9C\">"
                "<!-- group --><String name=\"k\">\xC3\xA4\xE2\x82\xAC</String></Strings>"),
            QString::fromUtf8("\xC3\x9C"), "k", true, QString::fromUtf8("\xC3\xA4\xE2\x82\xAC"));
    }
    void loadVariants()
    {
        QFETCH(QByteArray, xml);
        QFETCH(QString, displayName);
        QFETCH(QString, key);
        QFETCH(bool, held);
        QFETCH(QString, text);
        QVERIFY(loadFile("Custom", xml));
        QCOMPARE(CurrentLanguage(), "Custom");
        QCOMPARE(XMLLanguage().DisplayName(), displayName);
        QCOMPARE(XMLLanguage().HasText(key), held);
        QCOMPARE(GetText(key), text);
    }

    void rightToLeft_data()
    {
        QTest::addColumn<QByteArray>("root");
        QTest::addColumn<bool>("rightToLeft");
        AddRow("RightToLeft", QByteArray("<Language BiDiMode=\"RightToLeft\"/>"), true);
        AddRow("RIGHTTOLEFT", QByteArray("<Language BiDiMode=\"RIGHTTOLEFT\"/>"), true);
        AddRow("attribute in capitals", QByteArray("<Language BIDIMODE=\"rightToLeft\"/>"), true);
        AddRow("absent", QByteArray("<Language/>"), false);
        AddRow("other value", QByteArray("<Language BiDiMode=\"RightToLeftNoAlign\"/>"), false);
    }
    void rightToLeft()
    {
        QFETCH(QByteArray, root);
        QFETCH(bool, rightToLeft);
        // Start from the opposite state so that a load that does not set the field shows.
        QVERIFY(XMLLanguage().LoadFromData(
            rightToLeft ? "<L BiDiMode=\"LeftToRight\"/>" : "<L BiDiMode=\"RightToLeft\"/>", "Start"));
        QCOMPARE(LanguageIsRightToLeft(), !rightToLeft);
        QVERIFY(loadFile("Bidi", root));
        QCOMPARE(LanguageIsRightToLeft(), rightToLeft);
        QCOMPARE(XMLLanguage().Count(), 0);
    }

    void numbersThatAreNotNumbersKeepTheirValue()
    {
        QVERIFY(loadFile("Numbers", "<Language CodePage=\"1251\" LocaleID=\"1049\" Charset=\"204\"/>"));
        QVERIFY(loadFile("Words", "<Language codepage=\"abc\" localeid=\"12x\" CHARSET=\"\"/>"));
        QCOMPARE(XMLLanguage().CodePage(), 1251);
        QCOMPARE(LanguageLocaleId(), 1049);
        QCOMPARE(LanguageCharset(), 204);
        // Absent attributes take the loader's defaults: code page and locale 0, character set 1.
        QVERIFY(loadFile("Bare", "<Language/>"));
        QCOMPARE(XMLLanguage().CodePage(), 0);
        QCOMPARE(LanguageLocaleId(), 0);
        QCOMPARE(LanguageCharset(), 1);
        QCOMPARE(XMLLanguage().DisplayName(), "Bare");
    }

    void malformedKeepsCurrent_data()
    {
        QTest::addColumn<QByteArray>("data");
        AddRow("empty file", QByteArray());
        AddRow("text only", QByteArray("not xml at all"));
        AddRow("unclosed root", QByteArray("<Language name=\"X\"><String name=\"cSOK\">Ja</String>"));
        AddRow("unescaped ampersand", QByteArray("<Language><String name=\"cSOK\">&OK</String></Language>"));
        AddRow("binary", QByteArray("\x89PNG\r\n\x1a\n\0\0\0", 11));
        AddRow("truncated German", readAll(sourceLang() + "/German.xml").left(5000));
    }
    void malformedKeepsCurrent()
    {
        QFETCH(QByteArray, data);
        const int count = XMLLanguage().Count();
        QVERIFY(!loadFile("Bad", data));
        QCOMPARE(CurrentLanguage(), "English");
        QCOMPARE(XMLLanguage().DisplayName(), "English");
        QCOMPARE(XMLLanguage().Count(), count);
        QCOMPARE(GetText("cSbtnOK"), "&OK");
        QCOMPARE(LanguageLocaleId(), 1033);
        // A malformed file is also left out of the list.
        QVERIFY(ListLanguages(m_dir.path()).isEmpty());
        QCOMPARE(ListLanguageNames(m_dir.path()), QStringList{"Bad"});
    }

    void missingFileKeepsCurrent()
    {
        XMLLanguage().SetLanguageFolder(m_dir.path());
        QVERIFY(!LoadLanguage("Klingon"));
        QVERIFY(!LoadLanguage(QString()));
        QVERIFY(QDir(m_dir.path()).mkdir("Dir.xml")); // a folder of the language's name is no file
        QVERIFY(!LoadLanguage("Dir"));
        QCOMPARE(CurrentLanguage(), "English");
        QCOMPARE(GetText("cSbtnCancel"), "&Cancel");
    }

    void noMergingWithEnglish()
    {
        QVERIFY(loadFile("Tiny",
                         "<Language name=\"Tiny\"><String name=\"cSbtnOK\">&amp;Ok!</String></Language>"));
        QCOMPARE(XMLLanguage().Count(), 1);
        QCOMPARE(GetText("cSbtnOK"), "&Ok!");
        QCOMPARE(GetText("cSbtnCancel"), QString());
    }

    void emptyLangFolder()
    {
        QCOMPARE(ListLanguageNames(m_dir.path()), QStringList());
        QVERIFY(ListLanguages(m_dir.path()).isEmpty());
        QVERIFY(ListLanguages(m_dir.path() + "/missing").isEmpty());
        // The start-up road: the named language is missing, so the built-in one is loaded.
        XMLLanguage().SetLanguageFolder(m_dir.path());
        QVERIFY(ListLanguages().isEmpty());
        QVERIFY(XMLLanguage().LoadFromData("<Language name=\"Other\"/>", "Other"));
        QVERIFY(!LoadLanguage("English"));
        QCOMPARE(CurrentLanguage(), "Other");
        QVERIFY(LoadBuiltInLanguage("ENGLISHLANG", "English"));
        QCOMPARE(GetText("cSMainactExit"), "Quit application");
    }

    void listLanguages()
    {
        const QByteArray flag =
            "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAIAAACQd1PeAAAADElEQVR42mP4z8AAAAMBAQD3A0FDAAAAAElFTkSuQmCC";
        QVERIFY(loadFile("beta", "<Language><String name=\"k\">v</String></Language>"));
        QVERIFY(
            loadFile("Zulu", "<language NAME=\"alpha\" CODEPAGE=\"1251\" localeid=\"1049\" charset=\"204\" "
                             "FlagImage=\"" +
                                 flag + "\"/>"));
        QVERIFY(loadFile("Gamma", "<Language name=\"Gamma\" CodePage=\"x\" LocaleID=\"\"/>"));
        QVERIFY(!loadFile("broken", "<Language name=\"Broken\">"));
        QVERIFY(QFile(m_dir.filePath("notes.txt")).open(QIODevice::WriteOnly));
        QVERIFY(QDir(m_dir.path()).mkdir("sub"));
        QStringList names = ListLanguageNames(m_dir.path() + '/');
        names.sort();
        QCOMPARE(names, QStringList({"Gamma", "Zulu", "beta", "broken", "notes", "sub"}));

        const TLanguagesListEx2 languages = ListLanguages(m_dir.path());
        QCOMPARE(languages.size(), 3);
        // Sorted by Name without regard to case.
        QCOMPARE(languages[0].Name, "alpha");
        QCOMPARE(languages[1].Name, "beta");
        QCOMPARE(languages[2].Name, "Gamma");
        QCOMPARE(languages[0].FileName, "Zulu");
        QCOMPARE(languages[0].CodePage, 1251);
        QCOMPARE(languages[0].LocaleID, 1049);
        QCOMPARE(languages[0].Charset, 204);
        QCOMPARE(languages[0].FlagImage, flag);
        QCOMPARE(languages[0].FlagPicture().size(), QSize(1, 1));
        // Without a name attribute the file name stands for it; absent numbers keep the defaults, and
        // so do values that are not numbers.
        QCOMPARE(languages[1].FileName, "beta");
        QCOMPARE(languages[1].CodePage, 1252);
        QCOMPARE(languages[1].LocaleID, 1033);
        QCOMPARE(languages[1].Charset, 1);
        QCOMPARE(languages[1].FlagImage, DefaultFlagImage());
        QCOMPARE(languages[2].CodePage, 1252);
        QCOMPARE(languages[2].LocaleID, 1033);
        // A listed language loads by its FileName; the override folder is what an empty folder lists.
        QVERIFY(LoadLanguage(languages[0].FileName));
        QCOMPARE(XMLLanguage().DisplayName(), "alpha");
        QCOMPARE(ListLanguages().size(), 3);
    }

    void languageFolderOverride_data()
    {
        QTest::addColumn<QString>("delimiter");
        AddRow("without delimiter", "");
        AddRow("with delimiter", "/");
    }
    void languageFolderOverride()
    {
        QFETCH(QString, delimiter);
        QVERIFY(QDir(m_dir.path()).mkdir("langs"));
        const QString folder = m_dir.filePath("langs") + delimiter;
        QFile file(m_dir.filePath("langs/Pirate.xml"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<Language name=\"Pirate\"><String name=\"cSbtnOK\">&amp;Aye</String></Language>");
        file.close();

        QVERIFY(!LoadLanguage("Pirate"));
        XMLLanguage().SetLanguageFolder(folder);
        QCOMPARE(XMLLanguage().LanguageFolder(), folder);
        QVERIFY(LoadLanguage("Pirate"));
        QCOMPARE(GetText("cSbtnOK"), "&Aye");
        QCOMPARE(ListLanguageNames(), QStringList{"Pirate"});
        XMLLanguage().SetLanguageFolder(QString());
        QVERIFY(!LoadLanguage("Pirate"));
        QCOMPARE(CurrentLanguage(), "Pirate");
    }

    // A flag that is no picture gives the default one.
    void brokenFlagGivesTheDefault()
    {
        TLang lang;
        lang.FlagImage = "not base64 of a picture";
        QCOMPARE(lang.FlagPicture().size(), QSize(16, 11));
    }
};

QTEST_GUILESS_MAIN(TestLanguageStrings)
#include "tst_uZTStrings.moc"
