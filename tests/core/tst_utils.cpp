// File, text and XML helpers.

#include "support_common.h"
#include "support_datarow.h"
#include "uZTTypes.h"

#include <QLocale>
#include <QRegularExpression>
#include <QtTest>

class TestUtils : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void formatSize_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("expected");
        AddRow("1023", qint64(1023), "C", "1023 bytes");
        AddRow("1024", qint64(1024), "C", "1.0 Kb");
        AddRow("1048576", qint64(1048576), "C", "1.0 Mb");
        AddRow("2000 Tb has no group separator", qint64(1099511627776) * 2000, "en_US", "2000.0 Tb");
        AddRow("German comma", qint64(1536), "de_DE", "1,5 Kb");
        AddRow("negative", qint64(-5), "C", "-5 bytes");
    }
    void formatSize()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, locale);
        QFETCH(QString, expected);
        QLocale::setDefault(QLocale(locale));
        QCOMPARE(FormatSize(bytes), expected);
    }

    void urlEncode_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        AddRow("blank", " ", "+");
        AddRow("umlaut", "ä", "%C3%A4");
        AddRow("kept", "Az09!$'()*-._@", "Az09!$'()*-._@");
        AddRow("reserved", "a&b=c+d%e#f?g~h", "a%26b%3Dc%2Bd%25e%23f%3Fg%7Eh");
        AddRow("four-byte", "\U0001F4B0", "%F0%9F%92%B0");
    }
    void urlEncode()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(URLEncode(text), expected);
    }

    void base64Decode_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("expected");
        AddRow("empty", "", QByteArray());
        AddRow("one pad", "TWE=", QByteArray("Ma"));
        AddRow("length 5", "TWFuT", QByteArray());
        AddRow("binary, plus and slash", "AP8A/w+/", QByteArray("\x00\xff\x00\xff\x0f\xbf", 6));
        AddRow("four outside", "====", QByteArray());
    }
    void base64Decode()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, expected);
        QCOMPARE(Base64Decode(text), expected);
    }

    void base64MatchesQtOnValidInput()
    {
        QByteArray bytes;
        for (int i = 0; i < 1000; ++i) {
            bytes.append(static_cast<char>((i * 37 + 11) & 0xFF));
            QCOMPARE(Base64Decode(QString::fromLatin1(bytes.toBase64())), bytes);
        }
    }

    void formatText_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<QString>("expected");
        AddRow("log line", "MessageDlgZT(\"%s\", \"%s\")", QVariantList{"a%sb", ""},
               "MessageDlgZT(\"a%sb\", \"\")");
        AddRow("weight", "%.1f g", QVariantList{31.1035}, "31.1 g");
        AddRow("width", "[%5s|%-3d]", QVariantList{"ab", 1}, "[   ab|1  ]");
        AddRow("index", "%1:s %0:s", QVariantList{"a", "b"}, "b a");
        AddRow("negative hex", "%x", QVariantList{-1}, "FFFFFFFF");
        AddRow("grouped", "%.2n", QVariantList{1234567.891}, "1,234,567.89");
    }
    void formatText()
    {
        QFETCH(QString, format);
        QFETCH(QVariantList, args);
        QFETCH(QString, expected);
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QCOMPARE(FormatText(format, args), expected);
    }

    void formatTextRejectsMissingOrWrongArgument_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QVariantList>("args");
        AddRow("missing", "%s %s", QVariantList{"a"});
        AddRow("text for %d", "%d", QVariantList{"a"});
        AddRow("unknown type", "%q", QVariantList{1});
        AddRow("dangling", "abc %", QVariantList{1});
    }
    void formatTextRejectsMissingOrWrongArgument()
    {
        QFETCH(QString, format);
        QFETCH(QVariantList, args);
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument, FormatText(format, args));
    }

    void tempFileNames()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath("not/yet");
        const QRegularExpression shape("^[0-9a-f]{8}\\.tmp$");
        QSet<QString> seen;
        for (int i = 0; i < 200; ++i) {
            const QString name = GetTempFileName(".tmp", folder);
            QCOMPARE(QFileInfo(name).absolutePath(), QFileInfo(folder).absoluteFilePath());
            QVERIFY2(shape.match(QFileInfo(name).fileName()).hasMatch(), qPrintable(name));
            QVERIFY(!QFileInfo::exists(name) && !seen.contains(name));
            WriteFile(name, "x"); // occupied: a later call must find another name
            seen.insert(name);
        }
        QVERIFY(GetTempFileName(".jpg").startsWith(GetTempFolder()));
        QVERIFY(GetTempFolder().endsWith('/'));
    }

    void fileHelpers()
    {
        QTemporaryDir dir;
        const QString a = dir.filePath("a.txt");
        const QString b = dir.filePath("b.txt");
        WriteFile(a, "alpha");
        QCOMPARE(GetFileSize(a), qint64(5));
        QCOMPARE(GetFileSize(b), qint64(0));
        QCOMPARE(GetFileSize(dir.path()), qint64(0));

        QVERIFY(CopyFileOver(a, b));
        WriteFile(a, "beta");
        QVERIFY(CopyFileOver(a, b));
        QCOMPARE(ReadFile(b), "beta");
        // A missing source leaves the target, and copying a file onto itself keeps its content.
        QVERIFY(CopyFileOver(dir.filePath("missing"), b));
        QVERIFY(CopyFileOver(b, b));
        QCOMPARE(ReadFile(b), "beta");
        QVERIFY(!CopyFileOver(dir.filePath("missing"), dir.filePath("c")));

        QVERIFY(DeleteFileIfExists(b));
        QVERIFY(!DeleteFileIfExists(b));
        QVERIFY(!QFile::exists(b));

        const QString nested = EnsureFolder(dir.filePath("x/y/z"));
        QVERIFY(nested.endsWith("x/y/z/") && QFileInfo(nested).isDir());
        QCOMPARE(EnsureFolder(nested), nested);
        QCOMPARE(WithTrailingDelimiter("/tmp"), "/tmp/");
        QCOMPARE(WithTrailingDelimiter("/tmp/"), "/tmp/");

        WriteFile(dir.filePath(".hidden"), "");
        QCOMPARE(ListFolder(WithTrailingDelimiter(dir.path())), QStringList({".hidden", "a.txt", "x"}));
        QCOMPARE(ListFolder(dir.filePath("none/")), QStringList());

        QCOMPARE(FileNameNoExt("/a/b/coins.backup.orv"), "coins.backup");
        QCOMPARE(FileNameNoExt("/a.b/coins"), "coins");
        QCOMPARE(FileNameNoExt("English.xml"), "English");
    }

    void loadTextFile_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("encoding"); // -1: none given
        QTest::addColumn<QString>("expected");
        AddRow("utf-8", QByteArray("M\xc3\xbcnze\r\n"), -1, "Münze\r\n");
        AddRow("utf-8 bom", QByteArray("\xef\xbb\xbfM\xc3\xbcnze"), -1, "Münze");
        AddRow("utf-16 bom", QByteArray("\xff\xfeM\x00\xfc\x00", 6), -1, "Mü");
        AddRow("latin-1 given", QByteArray("M\xfcnze"), int(QStringConverter::Latin1), "Münze");
    }
    void loadTextFile()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, encoding);
        QFETCH(QString, expected);
        QTemporaryDir dir;
        WriteFile(dir.filePath("t.txt"), bytes);
        const auto chosen =
            encoding < 0 ? std::nullopt : std::optional(static_cast<QStringConverter::Encoding>(encoding));
        QCOMPARE(LoadTextFile(dir.filePath("t.txt"), chosen), expected);
        QCOMPARE(LoadTextFile(dir.filePath("missing.txt")), QString());
    }

    void xmlHelpers()
    {
        QVERIFY(!ParseXMLText(""));
        QVERIFY(!ParseXMLText("<a><b></a>"));
        QVERIFY(!ParseXMLText("<?xml version=\"1.0\"?>"));
        const auto doc = ParseXMLText("<Language Name=\"Deutsch\" empty=\"\" BIDIMODE=\"RightToLeft\"/>");
        QVERIFY(doc);
        const QDomElement root = doc->documentElement();
        QCOMPARE(GetXMLAttribute(root, "name"), "Deutsch");
        QCOMPARE(GetXMLAttribute(root, "BiDiMode", "LeftToRight"), "RightToLeft");
        QCOMPARE(GetXMLAttribute(root, "Empty", "dflt"), "dflt");
        QCOMPARE(GetXMLAttribute(root, "missing", "dflt"), "dflt");
        QCOMPARE(GetXMLAttribute(QDomNode(), "name", "d"), "d");
        // Of names that differ only in case, the first in the document counts, at any depth.
        const auto nested =
            ParseXMLText("<r z='0'><a X='1' x='2'/><!-- c --><b><c y='3' Y='4' yY='5'/></b><d Y='6'/></r>");
        QVERIFY(nested);
        const QDomElement c = nested->documentElement().firstChildElement("b").firstChildElement("c");
        QCOMPARE(GetXMLAttribute(nested->documentElement().firstChildElement("a"), "x"), "1");
        QCOMPARE(GetXMLAttribute(c, "Y"), "3");
        QCOMPARE(GetXMLAttribute(c, "yy"), "5");
        QCOMPARE(GetXMLAttribute(nested->documentElement().lastChildElement("d"), "y"), "6");
        QVERIFY(QRegularExpression("^\\d+\\.\\d+\\.\\d+\\.\\d+$")
                    .match(GetFileVersionText(QCoreApplication::applicationFilePath()))
                    .hasMatch());
    }
};

QTEST_GUILESS_MAIN(TestUtils)
#include "tst_utils.moc"
