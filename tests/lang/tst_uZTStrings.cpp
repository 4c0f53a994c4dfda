// The language texts: the built-in English file and the German one against the keys the program
// asks for, and the loader's rules for other files (letter case, attributes, right-to-left,
// malformed, hostile, missing).

#include "support_datarow.h"
#include "uZTStrings.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QString sourceDir()
{
    return qEnvironmentVariable("ORV_SOURCE_DIR");
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Every language key that the program's sources name as a literal.
QSet<QString> keysInSources()
{
    static const QRegularExpression literal("\"(cS\\w+)\"");
    QSet<QString> keys;
    for (QDirIterator it(sourceDir() + "/src", {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
         it.hasNext();) {
        const QString text = QString::fromUtf8(readAll(it.next()));
        for (auto match = literal.globalMatch(text); match.hasNext();)
            keys.insert(match.next().captured(1));
    }
    return keys;
}

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

QByteArray nested(int depth)
{
    return "<Language><String name=\"k\">" + QByteArray("<b>").repeated(depth) + "deep" +
           QByteArray("</b>").repeated(depth) + "</String></Language>";
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

    // English holds every key the program asks for (but the button texts a language file may add),
    // none empty; German holds the same keys, translated, with the same placeholders and accelerators.
    void builtInAndGerman()
    {
        QCOMPARE(CurrentLanguage(), "English");
        QCOMPARE(LanguageLocaleId(), 1033);
        QCOMPARE(XMLLanguage().CodePage(), 1252);
        QVERIFY(!LanguageIsRightToLeft());
        QCOMPARE(XMLLanguage().Count(), 440);
        const QByteArray data = readAll(":/lang/ENGLISHLANG");
        QVERIFY(data.startsWith("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>"));
        QCOMPARE(data, readAll(sourceDir() + "/data/lang/English.xml"));
        static const QSet<QString> optional{"cSbtnYes",     "cSbtnNo",       "cSbtnAbort",
                                            "cSbtnRetry",   "cSbtnIgnore",   "cSbtnAll",
                                            "cSbtnNoToAll", "cSbtnYesToAll", "cSbtnHelp",
                                            "cSbtnClose",   "cS_",           "cSSplashProgramLoading"};
        const QSet<QString> used = keysInSources();
        QVERIFY(used.size() > 100);
        for (const QString& key : used)
            QVERIFY2(optional.contains(key) || !GetText(key).trimmed().isEmpty(), qPrintable(key));
        QCOMPARE(GetText("CSNODATATODISPLAY"), "< No data to display >"); // lookup ignores letter case

        QHash<QString, QString> english;
        for (const QString& key : XMLLanguage().Keys()) {
            QVERIFY2(!GetText(key).trimmed().isEmpty(), qPrintable(key));
            english.insert(key, GetText(key));
        }
        XMLLanguage().SetLanguageFolder(sourceDir() + "/data/lang");
        QVERIFY(LoadLanguage("German"));
        QCOMPARE(XMLLanguage().DisplayName(), "Deutsch");
        QCOMPARE(LanguageLocaleId(), 1031);
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
        QVERIFY(!LoadBuiltInLanguage("NOSUCHLANG", "Other"));
    }

    void languagesCopiedBesideExecutable()
    {
        const QString folder = qEnvironmentVariable("ORV_BUILD_DIR") + "/bin/Lang/";
        QCOMPARE(readAll(folder + "German.xml"), readAll(sourceDir() + "/data/lang/German.xml"));
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
        AddRow(
            "text of child elements and CDATA is part of the text",
            QByteArray("<Language><String name=\"k\">a<b>b<i>c</i></b><![CDATA[<&>]]></String></Language>"),
            "Custom", "k", true, "abc<&>");
        AddRow("31 nested elements in a string", nested(31), "Custom", "k", true, "deep");
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

    // Root attributes: right-to-left by BiDiMode in any case; numbers that are no numbers leave the
    // field as it was; absent ones take the loader's defaults.
    void rootAttributes_data()
    {
        QTest::addColumn<QByteArray>("root");
        QTest::addColumn<bool>("rightToLeft");
        QTest::addColumn<int>("codePage");
        QTest::addColumn<int>("locale");
        QTest::addColumn<int>("charset");
        AddRow("RightToLeft", QByteArray("<Language BiDiMode=\"RightToLeft\"/>"), true, 0, 0, 1);
        AddRow("RIGHTTOLEFT, attribute in capitals", QByteArray("<Language BIDIMODE=\"RIGHTTOLEFT\"/>"), true,
               0, 0, 1);
        AddRow("other value", QByteArray("<Language BiDiMode=\"RightToLeftNoAlign\"/>"), false, 0, 0, 1);
        AddRow("numbers", QByteArray("<Language CodePage=\"1251\" localeid=\"1049\" CHARSET=\"204\"/>"),
               false, 1251, 1049, 204);
        AddRow("no numbers keep the values",
               QByteArray("<Language codepage=\"abc\" localeid=\"12x\" CHARSET=\"\"/>"), false, 7, 8, 9);
    }
    void rootAttributes()
    {
        QFETCH(QByteArray, root);
        QFETCH(bool, rightToLeft);
        QFETCH(int, codePage);
        QFETCH(int, locale);
        QFETCH(int, charset);
        // Start from the opposite state so that a load that does not set a field shows.
        QVERIFY(XMLLanguage().LoadFromData(rightToLeft
                                               ? "<L BiDiMode=\"LeftToRight\" CodePage=\"7\" LocaleID=\"8\" "
                                                 "Charset=\"9\"/>"
                                               : "<L BiDiMode=\"RightToLeft\" CodePage=\"7\" LocaleID=\"8\" "
                                                 "Charset=\"9\"/>",
                                           "Start"));
        QVERIFY(loadFile("Root", root));
        QCOMPARE(LanguageIsRightToLeft(), rightToLeft);
        QCOMPARE(XMLLanguage().CodePage(), codePage);
        QCOMPARE(LanguageLocaleId(), locale);
        QCOMPARE(LanguageCharset(), charset);
        QCOMPARE(XMLLanguage().DisplayName(), "Root");
    }

    void malformedKeepsCurrent_data()
    {
        QTest::addColumn<QByteArray>("data");
        AddRow("empty file", QByteArray());
        AddRow("text only", QByteArray("not xml at all"));
        AddRow("unclosed root", QByteArray("<Language name=\"X\"><String name=\"cSOK\">Ja</String>"));
        AddRow("unescaped ampersand", QByteArray("<Language><String name=\"cSOK\">&OK</String></Language>"));
        AddRow("binary", QByteArray("\x89PNG\r\n\x1a\n\0\0\0", 11));
        AddRow("truncated German", readAll(sourceDir() + "/data/lang/German.xml").left(5000));
        AddRow("32 nested elements in a string", nested(32));
        AddRow("100,000 nested elements in a string", nested(100000));
    }
    void malformedKeepsCurrent()
    {
        QFETCH(QByteArray, data);
        const int count = XMLLanguage().Count();
        QVERIFY(!loadFile("Bad", data));
        QCOMPARE(CurrentLanguage(), "English");
        QCOMPARE(XMLLanguage().Count(), count);
        QCOMPARE(GetText("cSbtnOK"), "&OK");
        QCOMPARE(LanguageLocaleId(), 1033);
        // A malformed file is also left out of the list.
        QVERIFY(ListLanguages(m_dir.path()).isEmpty());
        QCOMPARE(ListLanguageNames(m_dir.path()), QStringList{"Bad"});
    }

    // A missing file keeps the current language; a language has no English under it.
    void missingFilesAndNoMerging()
    {
        XMLLanguage().SetLanguageFolder(m_dir.path());
        QVERIFY(ListLanguages().isEmpty());
        QVERIFY(ListLanguages(m_dir.path() + "/missing").isEmpty());
        QVERIFY(!LoadLanguage("Klingon"));
        QVERIFY(!LoadLanguage(QString()));
        QVERIFY(QDir(m_dir.path()).mkdir("Dir.xml")); // a folder of the language's name is no file
        QVERIFY(!LoadLanguage("Dir"));
        QCOMPARE(CurrentLanguage(), "English");
        QVERIFY(loadFile("Tiny",
                         "<Language name=\"Tiny\"><String name=\"cSbtnOK\">&amp;Ok!</String></Language>"));
        QCOMPARE(XMLLanguage().Count(), 1);
        QCOMPARE(GetText("cSbtnCancel"), QString());
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
        QVERIFY(loadFile("Gamma",
                         "<Language name=\"Gamma\" CodePage=\"x\" LocaleID=\"\" FlagImage=\"no picture\"/>"));
        QVERIFY(!loadFile("broken", "<Language name=\"Broken\">"));
        QVERIFY(QFile(m_dir.filePath("notes.txt")).open(QIODevice::WriteOnly));
        QVERIFY(QDir(m_dir.path()).mkdir("sub"));
        QStringList names = ListLanguageNames(m_dir.path() + '/');
        names.sort();
        QCOMPARE(names, QStringList({"Gamma", "Zulu", "beta", "broken", "notes", "sub"}));

        const TLanguagesListEx2 languages = ListLanguages(m_dir.path());
        QCOMPARE(languages.size(), 3);
        // Sorted by Name without regard to case; the file name stands for a missing name; absent
        // numbers and numbers that are no numbers give the defaults.
        QCOMPARE(languages[0].Name, "alpha");
        QCOMPARE(languages[0].FileName, "Zulu");
        QCOMPARE(languages[0].CodePage, 1251);
        QCOMPARE(languages[0].LocaleID, 1049);
        QCOMPARE(languages[0].Charset, 204);
        QCOMPARE(languages[0].FlagPicture().size(), QSize(1, 1));
        QCOMPARE(languages[1].Name, "beta");
        QCOMPARE(languages[1].CodePage, 1252);
        QCOMPARE(languages[1].LocaleID, 1033);
        QCOMPARE(languages[1].FlagImage, DefaultFlagImage());
        QCOMPARE(languages[2].Name, "Gamma");
        QCOMPARE(languages[2].CodePage, 1252);
        QCOMPARE(languages[2].FlagPicture().size(), QSize(16, 11)); // a flag that is no picture
        QVERIFY(LoadLanguage(languages[0].FileName));
        QCOMPARE(XMLLanguage().DisplayName(), "alpha");
    }

    void languageFolderOverride()
    {
        QVERIFY(QDir(m_dir.path()).mkdir("langs"));
        QFile file(m_dir.filePath("langs/Pirate.xml"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<Language name=\"Pirate\"><String name=\"cSbtnOK\">&amp;Aye</String></Language>");
        file.close();
        QVERIFY(!LoadLanguage("Pirate"));
        for (const QString& folder : {m_dir.filePath("langs"), m_dir.filePath("langs") + '/'}) {
            XMLLanguage().SetLanguageFolder(folder);
            QCOMPARE(XMLLanguage().LanguageFolder(), folder);
            QVERIFY(LoadLanguage("Pirate"));
            QCOMPARE(GetText("cSbtnOK"), "&Aye");
            QCOMPARE(ListLanguageNames(), QStringList{"Pirate"});
        }
        XMLLanguage().SetLanguageFolder(QString());
        QVERIFY(!LoadLanguage("Pirate"));
        QCOMPARE(CurrentLanguage(), "Pirate");
    }
};

QTEST_GUILESS_MAIN(TestLanguageStrings)
#include "tst_uZTStrings.moc"
