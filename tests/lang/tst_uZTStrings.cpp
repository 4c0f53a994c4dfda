#include "uZTStrings.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Every key of the built-in language, by group as the language file groups them.
const char* const c_builtInKeys[] = {
    // Layout dialog
    "cSbtnOK",
    "cSbtnCancel",
    // Sort dialog
    "cSSortDlgCaption",
    "cSSortDlgColumn",
    "cSSortDlgOrder",
    "cSSortDlgAddLevel",
    "cSSortDlgDeleteLevel",
    "cSSortDlgAsc",
    "cSSortDlgDesc",
    "cSSortDlgMoveUp",
    "cSSortDlgMoveDown",
    "cSSortDlgDuplicateColumns",
    // Edit dictionary dialog
    "cSEditDictDlgCaption",
    "cSEditDictDlgResetToDefaults",
    "cSEditDictDlgResetToDefaultsConf",
    "cSEditDictDlgDesc",
    // Multi-edit form
    "cSMultiEditDlgCaption",
    "cSMultiEditDlgField",
    "cSMultiEditDlgValue",
    "cSMultiEditDlgAdd",
    "cSMultiEditDlgRemove",
    "cSMultiEditDlgDesc",
    // Record edit dialog
    "cSRibbonEditDlgCaption",
    "cSRibbonEditDlgTabGeneral",
    "cSRibbonEditDlgBarActions",
    "cSRibbonEditDlgBarNav",
    "cSRibbonEditDlgactSaveAndClose",
    "cSRibbonEditDlgactCancel",
    "cSRibbonEditDlgactNew",
    "cSRibbonEditDlgactDel",
    "cSRibbonEditDlgactFirst",
    "cSRibbonEditDlgactPrior",
    "cSRibbonEditDlgactNext",
    "cSRibbonEditDlgactLast",
    "cSRibbonEditDlgConfirmCancelChanges",
    "cSRibbonEditDlgConfirmDeleteItem",
    "cSRibbonEditDlgConfirmSaveChanges",
    // Common
    "cSOK",
    "cSCancel",
    "cSAdd",
    "cSRemove",
    "cSNew",
    "cSDel",
    "cSEdit",
    "cSUp",
    "cSDown",
    "cSAsc",
    "cSDesc",
    "cSNext",
    "cSPrev",
    "cSClear",
    "cSLoadFromFile",
    "cSSaveToFile",
    "cSPicture",
    "cSSaveAndClose",
    "cSConfirmDelete",
    "cSNoDataToDisplay",
    "cSDlgTypeInformation",
    "cSDlgTypeConfirmation",
    "cSDlgTypeWarning",
    "cSDlgTypeError",
    // Downloader related
    "cSDownloadComplete",
    "cSDownloadCompleteExFmt",
    "cSDownloadingData",
    "cSDownloadImageFmt",
    "cSPreparingToDownload",
    "cSLeftDownloadsFmt",
    "cSInternetOK",
    "cSInternetFail",
    "cS_AU",
    "cS_AG",
    "cS_PT",
    "cS_PD",
    "cS_RH",
    "cS_CU",
    "cS_Coin",
    "cS_RectCoin",
    "cS_Round",
    "cS_Bar",
    "cS_DivBar",
    "cSThumbnail",
    "cSObverse",
    "cSReverse",
    "cSSide",
    "cSInABox",
    "cSOther",
    // Add dialog
    "cSAddDlgCaption",
    "cSAddDlgTabSearch",
    "cSAddDlgTabOptions",
    "cSAddDlgBarActions",
    "cSAddDlgBarQuickSearch",
    "cSAddDlgBarSorting",
    "cSAddDlgAddAndClose",
    "cSAddDlgAddSelected",
    "cSAddDlgNewTab",
    "cSAddDlgClearResults",
    "cSAddDlgClearAllTabs",
    "cSAddDlgClearSep",
    "cSAddDlgStop",
    "cSAddDlgQSGoldCoins",
    "cSAddDlgQSSilverCoins",
    "cSAddDlgQSGoldBars",
    "cSAddDlgQSSilverBars",
    "cSAddDlgQSOtherMetals",
    "cSAddDlgSortData",
    "cSAddDlgClearSorting",
    "cSAddDlgactSearch",
    "cSAddDlgactCloseTab",
    "cSAddDlgactCloseAllTabs",
    "cSAddDlgProxySettings",
    "cSAddDlgTestConnection",
    "cSAddDlgSelectAll",
    "cSAddDlgClearSelection",
    "cSAddDlgRemoveSelection",
    "cSAddDlgHelp",
    "cSAddDlgedtSearchNULL",
    "cSAddDlgcSTabFmt",
    "cSAddDlgGoldCoins",
    "cSAddDlgGoldBars",
    "cSAddDlgSilverCoins",
    "cSAddDlgSilverBars",
    "cSAddDlgKeywordSearch",
    "cSAddDlgDblClickToEnlarge",
    "cSAddDlgSearchOptions",
    "cSAddDlgSearchOptionsHint",
    "cSAddDlgFilter",
    "cSAddDlgWeightRange",
    "cSAddDlgYearRange",
    // Edit coin dlg
    "cSEditCoinDlgTSGeneral",
    "cSEditCoinDlgTSSpec",
    "cSEditCoinDlgTSPurchase",
    "cSEditCoinDlgTSMorePhotos",
    "cSEditCoinDlgTSCustom",
    "cSEditCoinDlggPurchaseInfo",
    "cSEditCoinDlggItemInfo",
    "cSEditCoinDlgAllFields",
    // Data fields
    "cSF_Name",
    "cSF_Metal",
    "cSF_Obverse",
    "cSF_Reverse",
    "cSF_Series",
    "cSF_Year",
    "cSF_Weight",
    "cSF_Mint",
    "cSF_Type",
    "cSF_Denomination",
    "cSF_DenominationCurrency",
    "cSF_Purity",
    "cSF_Thickness",
    "cSF_Diameter",
    "cSF_Width",
    "cSF_Height",
    "cSF_Edge",
    "cSF_MintMark",
    "cSF_Country",
    "cSF_Mintage",
    "cSF_Artist",
    "cSF_Description",
    "cSF_ExpectedPremium",
    "cSF_Rating",
    "cSF_Rare",
    "cSF_Condition",
    "cSF_Status",
    "cSF_Owner",
    "cSF_Packaging",
    "cSF_Location",
    "cSF_Grade",
    "cSF_GradeService",
    "cSF_SerialNumbers",
    "cSF_Qty",
    "cSF_Price",
    "cSF_PurchaseDate",
    "cSF_Store",
    "cSF_AvgPricePerOz",
    "cSF_AvgPricePerG",
    "cSF_MinPricePerOz",
    "cSF_MaxPricePerOz",
    "cSF_WeightGxQty",
    "cSF_WeightOZxQty",
    "cSF_TotalPrice",
    "cSF_PurchaseYear",
    "cSF_PurchaseYearMonth",
    "cSF_Caption",
    "cSF_WeightOz",
    "cSF_WeightGram",
    "cSF_SpotValue",
    "cSF_LiquidationValue",
    "cSF_ROI",
    "cSF_SpotValuexQty",
    "cSF_LiquidationValuexQty",
    "cSF_ROIxQty",
    "cSF_ROIPercent",
    "cSF_ThumbFront",
    "cSF_ThumbBack",
    "cSF_PhotoFront",
    "cSF_PhotoBack",
    "cSF_PhotoSide",
    "cSF_PhotoInBox",
    "cSF_URL",
    "cSF_Logo",
    "cSF_IsPrivateMint",
    // Repositories
    "cSFmtMintage",
    "cSFmtMM",
    "cSFmtQty",
    "cSFmtWeightG",
    "cSFmtWeightOZ",
    "cSImgEditCaption",
    "cSImgEditShowFullSize",
    "cSAny",
    "cSNA",
    "cSNotSet",
    "cSFrom",
    "cSTo",
    "cSUnit",
    // Main dialog
    "cSMainTSGeneral",
    "cSMainTSView",
    "cSMainTSDBMGMT",
    "cSMainTSExport",
    "cSMainBarActions",
    "cSMainBarCurrentView",
    "cSMainBarFilter",
    "cSMainBarView",
    "cSMainBarDictionaries",
    "cSMainBarPrint",
    "cSMainBarExport",
    "cSMainactCopyToClipboard",
    "cSMainactEdit",
    "cSMainactColumnsAutoWidth",
    "cSMainactCustomizeColumns",
    "cSMainactViewThumbs",
    "cSMainactViewROI",
    "cSMainactViewTable",
    "cSMainactViewShelve",
    "cSMainactViewCards",
    "cSMainactMultiEdit",
    "cSMainactQuickSearch",
    "cSMainactOptions",
    "cSMainactAdvSearch",
    "cSMainactRemoveSelected",
    "cSMainactAddManually",
    "cSMainactAdd",
    "cSMainactStats",
    "cSMainactPrintPreview",
    "cSMainactPrintQuick",
    "cSMainactPrint",
    "cSMainactExit",
    "cSMainactRegenerateThumbs",
    "cSMainactApplyBestFit",
    "cSMainactExpandAll",
    "cSMainactCollapseAll",
    "cSMainactExportHTML",
    "cSMainactExportExcel",
    "cSMainactExportPDF",
    "cSMainactExportTxt",
    "cSMainactExportXML",
    "cSMainactExportCSV",
    "cSMainactRefresh",
    "cSMainactFilterCoins",
    "cSMainactFilterBars",
    "cSMainactEditMints",
    "cSMainactDBNew",
    "cSMainactDBOpen",
    "cSMainactDBSaveAs",
    "cSMainactDBProperties",
    "cSMainactFlipACoin",
    "cSMainQuickFilter",
    "cSMainsepFilterByMetal",
    "cSMainsepFilterByType",
    "cSMainTableViewTotalWeightFmt",
    "cSMainbtnCustomize",
    "cSMainsepConfiguration",
    "cSMainsepCreateYourOwnConf",
    "cSMainGroupByText",
    "cSMainBackstageBottomLabel",
    "cSMainlSpotPrices",
    "cSMainStatusBarStatsHint",
    "cSMainStatusBarTotalGoldFmt",
    "cSMainStatusBarTotalSilverFmt",
    "cSMainStatusBarTotalPlatinumFmt",
    "cSMainSpotPriceHintFmt",
    "cSMainactThumbSize",
    "cSMainactThumbSizeSmall",
    "cSMainactThumbSizeMedium",
    "cSMainactThumbSizeLarge",
    // Statistics dialog
    "cSStatsDlgSelectGrpCategory",
    "cSStatsDlgChartColumn",
    "cSStatsDlgChartPie",
    "cSStatsDlgChartLine",
    "cSStatsDlgChartBar",
    "cSStatsDlgChartArea",
    "cSStatsDlgTableView",
    "cSStatsDlgPivotGridView",
    // Splash
    "cSSplashLoadingSettings",
    "cSSplashLoadingTexts",
    "cSSplashLoadingImages",
    "cSSplashLoadingData",
    "cSSplashConnecting",
    // About dlg
    "cSAbout",
    "cSVisitHomepage",
    "cSTechSupport",
    // DB Properties dlg
    "cSDBPropertiesCaption",
    "cSDBPropertiesVacuumDBBtn",
    "cSDBPropertiesFile",
    "cSDBPropertiesFileSize",
    // Options dlg
    "cSOptionsTSGeneral",
    "cSOptionsTSCustomFields",
    "cSOptionsTSDefaultValues",
    "cSOptionsTSConnectionSettings",
    "cSOptionsLanguage",
    "cSOptionsCurrency",
    "cSOptionsTheme",
    "cSOptionsThemeColor",
    "cSOptionsEnableCustom",
    "cSOptionsDisplayName",
    "cSOptionsDataType",
    "cSOptionsDefaultValuesDesc",
    "cSOptionsProxyDirect",
    "cSOptionsProxyProxy",
    "cSOptionsProxySettings",
    "cSOptionsProxyHost",
    "cSOptionsProxyPort",
    "cSOptionsProxyAuth",
    "cSOptionsProxyUsername",
    "cSOptionsProxyPassword",
    // Find duplicates dlg
    "cSDuplicatesDlgCaption",
    "cSDuplicatesDlgApplyChanges",
    "cSDuplicatesDlgCancelChanges",
    "cSDuplicatesDlgliSelectFields",
    "cSDuplicatesDlgbtnFindDuplicates",
    "cSDuplicatesDlgNoDataToDisplay",
    "cSDuplicatesDlgDelete",
    "cSDuplicatesDlgUndo",
    "cSDuplicatesDlgDeleteConfirmation",
    // Split / Merge / Copy / Move dialog
    "cSSMCMDlgCaption",
    "cSSMCMDlgbtnClose",
    "cSSMCMDlgactCopy",
    "cSSMCMDlgactMove",
    "cSSMCMDlglDatabase",
    "cSSMCMDlglDatabaseFmt",
    "cSSMCMDlgConnect",
    "cSSMCMDlgDisconnect",
};

QString sourceDir()
{
    return qEnvironmentVariable("ORV_SOURCE_DIR");
}

QString buildDir()
{
    return qEnvironmentVariable("ORV_BUILD_DIR");
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return file.readAll();
}

void writeFile(const QString& path, const QByteArray& data)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    QCOMPARE(file.write(data), data.size());
}

// The printf-style placeholders of a text, in order.
QStringList placeholders(const QString& text)
{
    static const QRegularExpression re(QStringLiteral("%[-+ #0]*\\d*(?:\\.\\d+)?[sdfuxg]"));
    QStringList found;
    auto it = re.globalMatch(text);
    while (it.hasNext()) {
        found << it.next().captured();
    }
    return found;
}

// Accelerator marks: "&" before a letter ("&&" is a literal ampersand).
int accelerators(const QString& text)
{
    int count = 0;
    for (qsizetype i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == QLatin1Char('&')) {
            if (text[i + 1] == QLatin1Char('&')) {
                ++i;
            } else if (text[i + 1].isLetter()) {
                ++count;
            }
        }
    }
    return count;
}

QHash<QString, QString> tableOf(TXMLLanguage& language)
{
    QHash<QString, QString> table;
    const QStringList keys = language.Keys();
    for (const QString& key : keys) {
        table.insert(key, language.GetText(key));
    }
    return table;
}

} // namespace

class TestLanguageStrings : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void builtInHoldsKey_data();
    void builtInHoldsKey();
    void builtInHoldsNoStrayKeys();
    void builtInKeysNotEmpty();
    void builtInFileShape();
    void builtInRoot();
    void englishTexts_data();
    void englishTexts();

    void germanKey_data();
    void germanKey();
    void germanKeySetMatchesEnglish();
    void germanRoot();
    void germanCopiedBesideExecutable();

    void loadVariants_data();
    void loadVariants();
    void rightToLeft_data();
    void rightToLeft();
    void numbersThatAreNotNumbersKeepTheirValue();
    void malformedKeepsCurrent_data();
    void malformedKeepsCurrent();
    void missingFileKeepsCurrent();
    void noMergingWithEnglish();

    void emptyLangFolder();
    void listLanguages();
    void listLanguageNamesAllEntries();
    void languageFolderOverride_data();
    void languageFolderOverride();
    void languageFolderDefault();
    void tlangDefaults();

private:
    QTemporaryDir m_dir;
};

void TestLanguageStrings::init()
{
    QVERIFY(m_dir.isValid());
    XMLLanguage().SetLanguageFolder(QString());
    QVERIFY(LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English")));
}

void TestLanguageStrings::cleanup()
{
    XMLLanguage().SetLanguageFolder(QString());
    QDir dir(m_dir.path());
    const QStringList entries = dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    for (const QString& entry : entries) {
        QFileInfo info(dir.filePath(entry));
        if (info.isDir()) {
            QDir(info.filePath()).removeRecursively();
        } else {
            dir.remove(entry);
        }
    }
}

void TestLanguageStrings::builtInHoldsKey_data()
{
    QTest::addColumn<QString>("key");
    for (const char* key : c_builtInKeys) {
        QTest::newRow(key) << QString::fromLatin1(key);
    }
}

void TestLanguageStrings::builtInHoldsKey()
{
    QFETCH(QString, key);
    QVERIFY2(XMLLanguage().HasText(key), qPrintable(key));
    QVERIFY2(!GetText(key).isEmpty(), qPrintable(key));
    // Lookup ignores letter case.
    QCOMPARE(GetText(key.toUpper()), GetText(key));
    QCOMPARE(GetText(key.toLower()), GetText(key));
}

void TestLanguageStrings::builtInHoldsNoStrayKeys()
{
    QSet<QString> listed;
    for (const char* key : c_builtInKeys) {
        listed.insert(QString::fromLatin1(key).toUpper());
    }
    QCOMPARE(listed.size(), int(std::size(c_builtInKeys)));
    const QStringList keys = XMLLanguage().Keys();
    for (const QString& key : keys) {
        QVERIFY2(listed.contains(key), qPrintable(QStringLiteral("unlisted key ") + key));
    }
    QCOMPARE(XMLLanguage().Count(), listed.size());
}

void TestLanguageStrings::builtInKeysNotEmpty()
{
    const QStringList keys = XMLLanguage().Keys();
    QVERIFY(!keys.isEmpty());
    for (const QString& key : keys) {
        QVERIFY2(key.startsWith(QStringLiteral("CS")), qPrintable(key));
        QVERIFY2(!GetText(key).trimmed().isEmpty(), qPrintable(key));
    }
}

void TestLanguageStrings::builtInFileShape()
{
    const QByteArray data = readAll(QStringLiteral(":/lang/ENGLISHLANG"));
    QVERIFY(data.startsWith("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>"));
    // The resource is the file of the source tree.
    QCOMPARE(data, readAll(sourceDir() + QStringLiteral("/data/lang/English.xml")));
}

void TestLanguageStrings::builtInRoot()
{
    QCOMPARE(CurrentLanguage(), QStringLiteral("English"));
    QCOMPARE(XMLLanguage().DisplayName(), QStringLiteral("English"));
    QCOMPARE(LanguageLocaleId(), 1033);
    QCOMPARE(XMLLanguage().CodePage(), 1252);
    QCOMPARE(LanguageCharset(), 1);
    QVERIFY(!LanguageIsRightToLeft());
    QVERIFY(!LoadBuiltInLanguage(QStringLiteral("NOSUCHLANG"), QStringLiteral("Other")));
    QCOMPARE(CurrentLanguage(), QStringLiteral("English"));
}

void TestLanguageStrings::englishTexts_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* key, const QString& text) {
        QTest::newRow(key) << QString::fromLatin1(key) << text;
    };
    row("cSbtnOK", QStringLiteral("&OK"));
    row("cSNoDataToDisplay", QStringLiteral("< No data to display >"));
    row("cSNotSet", QStringLiteral("< Not set >"));
    row("cSDownloadCompleteExFmt", QStringLiteral("Download complete. Found %d item(s)"));
    row("cSMainTableViewTotalWeightFmt", QStringLiteral("Total weight: %.1f oz"));
    row("cSAddDlgKeywordSearch", QStringLiteral("Keyword search: "));
    row("cSAddDlgSearchOptions", QStringLiteral("  Search options \u25BC  "));
    row("cSFmtWeightG", QStringLiteral("0.## g"));
    row("cSFmtMintage", QStringLiteral(",0"));
    row("cSDuplicatesDlgbtnFindDuplicates", QStringLiteral("&Find duplicates"));
    row("cSSMCMDlgCaption", QStringLiteral("Copy / move data between databases"));
    row("cSSplashConnecting", QStringLiteral("Connecting to database..."));
    row("cS_RH", QStringLiteral("Rhodium"));
    row("cSSortDlgAsc", QStringLiteral("Ascending"));
}

void TestLanguageStrings::englishTexts()
{
    QFETCH(QString, key);
    QFETCH(QString, text);
    QCOMPARE(GetText(key), text);
}

void TestLanguageStrings::germanKey_data()
{
    builtInHoldsKey_data();
}

void TestLanguageStrings::germanKey()
{
    QFETCH(QString, key);
    const QString english = GetText(key);
    XMLLanguage().SetLanguageFolder(sourceDir() + QStringLiteral("/data/lang"));
    QVERIFY(LoadLanguage(QStringLiteral("German")));
    const QString german = GetText(key);
    QVERIFY2(!german.trimmed().isEmpty(), qPrintable(key));
    QCOMPARE(placeholders(german), placeholders(english));
    QCOMPARE(accelerators(german), accelerators(english));
}

void TestLanguageStrings::germanKeySetMatchesEnglish()
{
    const QHash<QString, QString> english = tableOf(XMLLanguage());
    XMLLanguage().SetLanguageFolder(sourceDir() + QStringLiteral("/data/lang"));
    QVERIFY(LoadLanguage(QStringLiteral("German")));
    const QHash<QString, QString> german = tableOf(XMLLanguage());
    QCOMPARE(QSet<QString>(german.keyBegin(), german.keyEnd()),
             QSet<QString>(english.keyBegin(), english.keyEnd()));
    // A translation, not a copy: most texts differ.
    int same = 0;
    for (auto it = english.cbegin(); it != english.cend(); ++it) {
        same += german.value(it.key()) == it.value() ? 1 : 0;
    }
    QVERIFY2(same < english.size() / 5, qPrintable(QString::number(same)));
}

void TestLanguageStrings::germanRoot()
{
    XMLLanguage().SetLanguageFolder(sourceDir() + QStringLiteral("/data/lang"));
    QVERIFY(LoadLanguage(QStringLiteral("German")));
    QCOMPARE(CurrentLanguage(), QStringLiteral("German"));
    QCOMPARE(XMLLanguage().DisplayName(), QStringLiteral("Deutsch"));
    QCOMPARE(LanguageLocaleId(), 1031);
    QCOMPARE(XMLLanguage().CodePage(), 1252);
    QVERIFY(!LanguageIsRightToLeft());
    QCOMPARE(GetText(QStringLiteral("cSbtnCancel")), QStringLiteral("&Abbrechen"));
    QCOMPARE(GetText(QStringLiteral("cSF_Mint")), QStringLiteral("Prägestätte"));
}

void TestLanguageStrings::germanCopiedBesideExecutable()
{
    const QString copy = buildDir() + QStringLiteral("/bin/Lang/German.xml");
    QVERIFY2(QFileInfo::exists(copy), qPrintable(copy));
    QCOMPARE(readAll(copy), readAll(sourceDir() + QStringLiteral("/data/lang/German.xml")));

    const TLanguagesListEx2 languages = ListLanguages(buildDir() + QStringLiteral("/bin/Lang/"));
    QStringList names;
    for (const TLang& lang : languages) {
        names << lang.Name;
        const QImage flag = lang.FlagPicture();
        QCOMPARE(flag.size(), QSize(16, 11));
        QVERIFY(lang.FlagImage != DefaultFlagImage());
    }
    QVERIFY(names.contains(QStringLiteral("Deutsch")));
    QVERIFY(names.contains(QStringLiteral("English")));
}

void TestLanguageStrings::loadVariants_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("displayName");
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("held");
    QTest::addColumn<QString>("text");

    QTest::newRow("lower-case element, upper-case attribute")
        << QByteArray("<language name=\"X\"><string NAME=\"cSOK\">Ja</string></language>") << "X"
        << "cSOK" << true << "Ja";
    QTest::newRow("mixed-case everything")
        << QByteArray("<LANGUAGE NaMe=\"Y\"><StRiNg nAmE=\"cSCancel\">Nein</StRiNg></LANGUAGE>") << "Y"
        << "CSCANCEL" << true << "Nein";
    QTest::newRow("no name attribute: loaded name")
        << QByteArray("<Language LocaleID=\"1036\"><String name=\"cSOK\">D'accord</String></Language>")
        << "Custom"
        << "csok" << true << "D'accord";
    QTest::newRow("first attribute of a matching name wins")
        << QByteArray(
               "<Language name=\"first\" NAME=\"second\"><String name=\"cSOK\" NAME=\"cSCancel\">A</String>"
               "</Language>")
        << "first"
        << "cSOK" << true << "A";
    QTest::newRow("later attribute of a matching name is ignored")
        << QByteArray("<Language><String name=\"cSOK\" NAME=\"cSCancel\">A</String></Language>") << "Custom"
        << "cSCancel" << false << "";
    QTest::newRow("empty string element")
        << QByteArray("<Language><String name=\"cSOK\"/></Language>") << "Custom"
        << "cSOK" << true << "";
    QTest::newRow("string without name attribute is the empty key")
        << QByteArray("<Language><String>orphan</String></Language>") << "Custom"
        << "" << true << "orphan";
    QTest::newRow("escaped markup and accelerator")
        << QByteArray("<Language><String name=\"cSbtnOK\">&amp;OK &lt;1&gt;</String></Language>") << "Custom"
        << "cSbtnOK" << true << "&OK <1>";
    QTest::newRow("whitespace kept") << QByteArray("<Language><String name=\"k\">  two  </String></Language>")
                                     << "Custom"
                                     << "k" << true << "  two  ";
    QTest::newRow("other children ignored")
        << QByteArray("<Language><Text name=\"cSOK\">no</Text><String name=\"cSAdd\">yes</String></Language>")
        << "Custom"
        << "cSOK" << false << "";
    QTest::newRow("nested strings are not children of the root")
        << QByteArray("<Language><Group><String name=\"cSOK\">no</String></Group></Language>") << "Custom"
        << "cSOK" << false << "";
    QTest::newRow("text of child elements is part of the text")
        << QByteArray("<Language><String name=\"k\">a<b>b</b>c</String></Language>") << "Custom"
        << "k" << true << "abc";
    QTest::newRow("CDATA") << QByteArray("<Language><String name=\"k\"><![CDATA[<&>]]></String></Language>")
                           << "Custom"
                           << "k" << true << "<&>";
    QTest::newRow("key given twice keeps the later text")
        << QByteArray("<Language><String name=\"k\">one</String><string NAME=\"K\">two</string></Language>")
        << "Custom"
        << "k" << true << "two";
    QTest::newRow("comments and declaration")
        << QByteArray(
               "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?><!-- c --><Language name=\"\xC3\x9C\">"
               "<!-- group --><String name=\"k\">\xC3\xA4\xE2\x82\xAC</String></Language>")
        << QString::fromUtf8("\xC3\x9C") << "k" << true << QString::fromUtf8("\xC3\xA4\xE2\x82\xAC");
    QTest::newRow("any root name") << QByteArray(
                                          "<Strings name=\"Z\"><String name=\"k\">v</String></Strings>")
                                   << "Z"
                                   << "k" << true << "v";
}

void TestLanguageStrings::loadVariants()
{
    QFETCH(QByteArray, xml);
    QFETCH(QString, displayName);
    QFETCH(QString, key);
    QFETCH(bool, held);
    QFETCH(QString, text);

    writeFile(m_dir.filePath(QStringLiteral("Custom.xml")), xml);
    XMLLanguage().SetLanguageFolder(m_dir.path());
    QVERIFY(LoadLanguage(QStringLiteral("Custom")));
    QCOMPARE(CurrentLanguage(), QStringLiteral("Custom"));
    QCOMPARE(XMLLanguage().DisplayName(), displayName);
    QCOMPARE(XMLLanguage().HasText(key), held);
    QCOMPARE(GetText(key), text);
}

void TestLanguageStrings::rightToLeft_data()
{
    QTest::addColumn<QByteArray>("root");
    QTest::addColumn<bool>("rightToLeft");
    QTest::newRow("RightToLeft") << QByteArray("<Language BiDiMode=\"RightToLeft\"/>") << true;
    QTest::newRow("RIGHTTOLEFT") << QByteArray("<Language BiDiMode=\"RIGHTTOLEFT\"/>") << true;
    QTest::newRow("righttoleft") << QByteArray("<Language BiDiMode=\"righttoleft\"/>") << true;
    QTest::newRow("attribute in capitals") << QByteArray("<Language BIDIMODE=\"rightToLeft\"/>") << true;
    QTest::newRow("LeftToRight") << QByteArray("<Language BiDiMode=\"LeftToRight\"/>") << false;
    QTest::newRow("absent") << QByteArray("<Language/>") << false;
    QTest::newRow("padded") << QByteArray("<Language BiDiMode=\" RightToLeft\"/>") << false;
    QTest::newRow("other value") << QByteArray("<Language BiDiMode=\"RightToLeftNoAlign\"/>") << false;
}

void TestLanguageStrings::rightToLeft()
{
    QFETCH(QByteArray, root);
    QFETCH(bool, rightToLeft);
    // Start from the opposite state so that a load that does not set the field shows.
    QVERIFY(XMLLanguage().LoadFromData(rightToLeft ? QByteArray("<L BiDiMode=\"LeftToRight\"/>")
                                                   : QByteArray("<L BiDiMode=\"RightToLeft\"/>"),
                                       QStringLiteral("Start")));
    QCOMPARE(LanguageIsRightToLeft(), !rightToLeft);
    writeFile(m_dir.filePath(QStringLiteral("Bidi.xml")), root);
    XMLLanguage().SetLanguageFolder(m_dir.path());
    QVERIFY(LoadLanguage(QStringLiteral("Bidi")));
    QCOMPARE(LanguageIsRightToLeft(), rightToLeft);
    QCOMPARE(XMLLanguage().Count(), 0);
}

void TestLanguageStrings::numbersThatAreNotNumbersKeepTheirValue()
{
    XMLLanguage().SetLanguageFolder(m_dir.path());
    writeFile(m_dir.filePath(QStringLiteral("Numbers.xml")),
              "<Language CodePage=\"1251\" LocaleID=\"1049\" Charset=\"204\"/>");
    QVERIFY(LoadLanguage(QStringLiteral("Numbers")));
    QCOMPARE(XMLLanguage().CodePage(), 1251);
    QCOMPARE(LanguageLocaleId(), 1049);
    QCOMPARE(LanguageCharset(), 204);

    writeFile(m_dir.filePath(QStringLiteral("Words.xml")),
              "<Language codepage=\"abc\" localeid=\"12x\" CHARSET=\"\"/>");
    QVERIFY(LoadLanguage(QStringLiteral("Words")));
    QCOMPARE(XMLLanguage().CodePage(), 1251);
    QCOMPARE(LanguageLocaleId(), 1049);
    QCOMPARE(LanguageCharset(), 204);

    // Absent attributes take the loader's defaults: code page and locale 0, character set 1.
    writeFile(m_dir.filePath(QStringLiteral("Bare.xml")), "<Language/>");
    QVERIFY(LoadLanguage(QStringLiteral("Bare")));
    QCOMPARE(XMLLanguage().CodePage(), 0);
    QCOMPARE(LanguageLocaleId(), 0);
    QCOMPARE(LanguageCharset(), 1);
    QCOMPARE(XMLLanguage().DisplayName(), QStringLiteral("Bare"));
}

void TestLanguageStrings::malformedKeepsCurrent_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("whitespace only") << QByteArray("   \n");
    QTest::newRow("text only") << QByteArray("not xml at all");
    QTest::newRow("unclosed root") << QByteArray("<Language name=\"X\"><String name=\"cSOK\">Ja</String>");
    QTest::newRow("mismatched tags") << QByteArray("<Language><String name=\"cSOK\">Ja</Strin></Language>");
    QTest::newRow("two roots") << QByteArray("<Language/><Language/>");
    QTest::newRow("unescaped ampersand")
        << QByteArray("<Language><String name=\"cSOK\">&OK</String></Language>");
    QTest::newRow("duplicate attribute") << QByteArray("<Language name=\"a\" name=\"b\"/>");
    QTest::newRow("bad after good part")
        << QByteArray("<Language><String name=\"cSOK\">Ja</String><String name=\"x\">< </String></Language>");
    QTest::newRow("binary") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0", 11);
    QTest::newRow("declaration only") << QByteArray("<?xml version=\"1.0\" encoding=\"utf-8\"?>");
    QTest::newRow("truncated built-in")
        << readAll(sourceDir() + QStringLiteral("/data/lang/German.xml")).left(5000);
}

void TestLanguageStrings::malformedKeepsCurrent()
{
    QFETCH(QByteArray, data);
    const int count = XMLLanguage().Count();
    writeFile(m_dir.filePath(QStringLiteral("Bad.xml")), data);
    XMLLanguage().SetLanguageFolder(m_dir.path());
    QVERIFY(!LoadLanguage(QStringLiteral("Bad")));
    QCOMPARE(CurrentLanguage(), QStringLiteral("English"));
    QCOMPARE(XMLLanguage().DisplayName(), QStringLiteral("English"));
    QCOMPARE(XMLLanguage().Count(), count);
    QCOMPARE(GetText(QStringLiteral("cSbtnOK")), QStringLiteral("&OK"));
    QCOMPARE(LanguageLocaleId(), 1033);

    // A malformed file is also left out of the list.
    QVERIFY(ListLanguages(m_dir.path()).isEmpty());
    QCOMPARE(ListLanguageNames(m_dir.path()), QStringList{QStringLiteral("Bad")});
}

void TestLanguageStrings::missingFileKeepsCurrent()
{
    XMLLanguage().SetLanguageFolder(m_dir.path());
    QVERIFY(!LoadLanguage(QStringLiteral("Klingon")));
    QVERIFY(!LoadLanguage(QString()));
    // A folder of the language's name is no language file.
    QVERIFY(QDir(m_dir.path()).mkdir(QStringLiteral("Dir.xml")));
    QVERIFY(!LoadLanguage(QStringLiteral("Dir")));
    QCOMPARE(CurrentLanguage(), QStringLiteral("English"));
    QCOMPARE(GetText(QStringLiteral("cSbtnCancel")), QStringLiteral("&Cancel"));
}

void TestLanguageStrings::noMergingWithEnglish()
{
    writeFile(m_dir.filePath(QStringLiteral("Tiny.xml")),
              "<Language name=\"Tiny\"><String name=\"cSbtnOK\">&amp;Ok!</String></Language>");
    XMLLanguage().SetLanguageFolder(m_dir.path());
    QVERIFY(LoadLanguage(QStringLiteral("Tiny")));
    QCOMPARE(XMLLanguage().Count(), 1);
    QCOMPARE(GetText(QStringLiteral("cSbtnOK")), QStringLiteral("&Ok!"));
    QCOMPARE(GetText(QStringLiteral("cSbtnCancel")), QString());
    QCOMPARE(GetText(QStringLiteral("cSNoSuchKey")), QString());
}

void TestLanguageStrings::emptyLangFolder()
{
    QCOMPARE(ListLanguageNames(m_dir.path()), QStringList());
    QVERIFY(ListLanguages(m_dir.path()).isEmpty());
    QVERIFY(ListLanguages(m_dir.path() + QStringLiteral("/missing")).isEmpty());

    // The start-up road: the named language is missing, so the built-in one is loaded.
    XMLLanguage().SetLanguageFolder(m_dir.path());
    QVERIFY(ListLanguages().isEmpty());
    QVERIFY(XMLLanguage().LoadFromData("<Language name=\"Other\"/>", QStringLiteral("Other")));
    QVERIFY(!LoadLanguage(QStringLiteral("English")));
    QCOMPARE(CurrentLanguage(), QStringLiteral("Other"));
    QVERIFY(LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English")));
    QCOMPARE(CurrentLanguage(), QStringLiteral("English"));
    QCOMPARE(GetText(QStringLiteral("cSMainactExit")), QStringLiteral("Quit application"));
}

void TestLanguageStrings::listLanguages()
{
    const QByteArray flag =
        "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAIAAACQd1PeAAAADElEQVR42mP4z8AAAAMBAQD3A0FDAAAAAElFTkSuQmCC";
    writeFile(m_dir.filePath(QStringLiteral("beta.xml")),
              "<Language><String name=\"k\">v</String></Language>");
    writeFile(m_dir.filePath(QStringLiteral("Zulu.xml")),
              "<language NAME=\"alpha\" CODEPAGE=\"1251\" localeid=\"1049\" charset=\"204\" FlagImage=\"" +
                  flag + "\"/>");
    writeFile(m_dir.filePath(QStringLiteral("Gamma.xml")),
              "<Language name=\"Gamma\" CodePage=\"x\" LocaleID=\"\"/>");
    writeFile(m_dir.filePath(QStringLiteral("broken.xml")), "<Language name=\"Broken\">");
    writeFile(m_dir.filePath(QStringLiteral("notes.txt")), "not a language");
    writeFile(m_dir.filePath(QStringLiteral("Gamma.txt")), "same name as a language");

    const TLanguagesListEx2 languages = ListLanguages(m_dir.path());
    QCOMPARE(languages.size(), 3);
    // Sorted by Name without regard to case.
    QCOMPARE(languages[0].Name, QStringLiteral("alpha"));
    QCOMPARE(languages[1].Name, QStringLiteral("beta"));
    QCOMPARE(languages[2].Name, QStringLiteral("Gamma"));

    QCOMPARE(languages[0].FileName, QStringLiteral("Zulu"));
    QCOMPARE(languages[0].CodePage, 1251);
    QCOMPARE(languages[0].LocaleID, 1049);
    QCOMPARE(languages[0].Charset, 204);
    QCOMPARE(languages[0].FlagImage, flag);
    QCOMPARE(languages[0].FlagPicture().size(), QSize(1, 1));

    // Without a name attribute the file name stands for it; absent numbers keep the defaults.
    QCOMPARE(languages[1].FileName, QStringLiteral("beta"));
    QCOMPARE(languages[1].CodePage, 1252);
    QCOMPARE(languages[1].LocaleID, 1033);
    QCOMPARE(languages[1].Charset, 1);
    QCOMPARE(languages[1].FlagImage, DefaultFlagImage());

    // Values that are not numbers keep the defaults too.
    QCOMPARE(languages[2].CodePage, 1252);
    QCOMPARE(languages[2].LocaleID, 1033);

    // A listed language loads by its FileName.
    XMLLanguage().SetLanguageFolder(m_dir.path());
    QVERIFY(LoadLanguage(languages[0].FileName));
    QCOMPARE(XMLLanguage().DisplayName(), QStringLiteral("alpha"));
    QVERIFY(LoadLanguage(languages[1].FileName));
    QCOMPARE(GetText(QStringLiteral("K")), QStringLiteral("v"));

    // The override folder is what an empty folder argument lists.
    QCOMPARE(ListLanguages().size(), 3);
}

void TestLanguageStrings::listLanguageNamesAllEntries()
{
    writeFile(m_dir.filePath(QStringLiteral("English.xml")), "<Language/>");
    writeFile(m_dir.filePath(QStringLiteral("read.me.txt")), "x");
    QVERIFY(QDir(m_dir.path()).mkdir(QStringLiteral("sub")));
    QStringList names = ListLanguageNames(m_dir.path() + QLatin1Char('/'));
    names.sort();
    QCOMPARE(names,
             (QStringList{QStringLiteral("English"), QStringLiteral("read.me"), QStringLiteral("sub")}));
}

void TestLanguageStrings::languageFolderOverride_data()
{
    QTest::addColumn<bool>("trailingDelimiter");
    QTest::newRow("without delimiter") << false;
    QTest::newRow("with delimiter") << true;
}

void TestLanguageStrings::languageFolderOverride()
{
    QFETCH(bool, trailingDelimiter);
    QVERIFY(QDir(m_dir.path()).mkdir(QStringLiteral("langs")));
    const QString folder =
        m_dir.filePath(QStringLiteral("langs")) + (trailingDelimiter ? QStringLiteral("/") : QString());
    writeFile(m_dir.filePath(QStringLiteral("langs/Pirate.xml")),
              "<Language name=\"Pirate\"><String name=\"cSbtnOK\">&amp;Aye</String></Language>");

    QVERIFY(!LoadLanguage(QStringLiteral("Pirate")));
    XMLLanguage().SetLanguageFolder(folder);
    QCOMPARE(XMLLanguage().LanguageFolder(), folder);
    QVERIFY(LoadLanguage(QStringLiteral("Pirate")));
    QCOMPARE(GetText(QStringLiteral("cSbtnOK")), QStringLiteral("&Aye"));
    QCOMPARE(ListLanguageNames(), QStringList{QStringLiteral("Pirate")});

    XMLLanguage().SetLanguageFolder(QString());
    QVERIFY(!LoadLanguage(QStringLiteral("Pirate")));
    QCOMPARE(CurrentLanguage(), QStringLiteral("Pirate"));
}

void TestLanguageStrings::languageFolderDefault()
{
    const QString folder = GetLanguageFolder();
    QCOMPARE(folder, QCoreApplication::applicationDirPath() + QStringLiteral("/Lang/"));
    QCOMPARE(XMLLanguage().LanguageFilePath(QStringLiteral("German")), folder + QStringLiteral("German.xml"));
}

void TestLanguageStrings::tlangDefaults()
{
    const TLang lang;
    QVERIFY(lang.FileName.isEmpty());
    QVERIFY(lang.Name.isEmpty());
    QCOMPARE(lang.Charset, 1);
    QCOMPARE(lang.CodePage, 1252);
    QCOMPARE(lang.LocaleID, 1033);
    QCOMPARE(lang.FlagImage, DefaultFlagImage());
    QCOMPARE(lang.FlagPicture().size(), QSize(16, 11));

    TLang broken;
    broken.FlagImage = "not base64 of a picture";
    QCOMPARE(broken.FlagPicture().size(), QSize(16, 11));
}

QTEST_GUILESS_MAIN(TestLanguageStrings)
#include "tst_uZTStrings.moc"
