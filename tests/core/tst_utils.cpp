// File, text and XML helpers.

#include "uZTTypes.h"

#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

namespace {

void WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

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
        QTest::newRow("zero") << qint64(0) << "C"
                              << "0 bytes";
        QTest::newRow("1023") << qint64(1023) << "C"
                              << "1023 bytes";
        QTest::newRow("1024") << qint64(1024) << "C"
                              << "1.0 Kb";
        QTest::newRow("1536") << qint64(1536) << "C"
                              << "1.5 Kb";
        QTest::newRow("just under 1 Mb") << qint64(1048575) << "C"
                                         << "1024.0 Kb";
        QTest::newRow("1048576") << qint64(1048576) << "C"
                                 << "1.0 Mb";
        QTest::newRow("1 Gb") << qint64(1073741824) << "C"
                              << "1.0 Gb";
        QTest::newRow("1 Tb") << qint64(1099511627776) << "C"
                              << "1.0 Tb";
        QTest::newRow("2000 Tb has no group separator") << qint64(1099511627776) * 2000 << "en_US"
                                                        << "2000.0 Tb";
        QTest::newRow("German comma") << qint64(1536) << "de_DE"
                                      << "1,5 Kb";
        QTest::newRow("negative") << qint64(-5) << "C"
                                  << "-5 bytes";
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
        QTest::newRow("blank") << " "
                               << "+";
        QTest::newRow("umlaut") << QStringLiteral("ä") << "%C3%A4";
        QTest::newRow("maple") << "1/10 oz maple"
                               << "1%2F10+oz+maple";
        QTest::newRow("kept") << "Az09!$'()*-._@"
                              << "Az09!$'()*-._@";
        QTest::newRow("reserved") << "a&b=c+d%e#f?g~h"
                                  << "a%26b%3Dc%2Bd%25e%23f%3Fg%7Eh";
        QTest::newRow("four-byte") << QStringLiteral("\U0001F4B0") << "%F0%9F%92%B0";
        QTest::newRow("empty") << ""
                               << "";
        QTest::newRow("crlf") << "\r\n"
                              << "%0D%0A";
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
        QTest::newRow("empty") << "" << QByteArray();
        QTest::newRow("full group") << "TWFu" << QByteArray("Man");
        QTest::newRow("one pad") << "TWE=" << QByteArray("Ma");
        QTest::newRow("two pads") << "TQ==" << QByteArray("M");
        QTest::newRow("two groups") << "TWFuTQ==" << QByteArray("ManM");
        QTest::newRow("length 3") << "TWF" << QByteArray();
        QTest::newRow("length 5") << "TWFuT" << QByteArray();
        QTest::newRow("unpadded tail") << "TWFuTQ" << QByteArray();
        QTest::newRow("binary") << "AP8A/w==" << QByteArray("\x00\xff\x00\xff", 4);
        QTest::newRow("plus and slash") << "+/+/" << QByteArray("\xfb\xff\xbf", 3);
        QTest::newRow("four outside") << "====" << QByteArray();
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
        QTest::newRow("log line") << "MessageDlgZT(\"%s\", \"%s\")" << QVariantList{"a%sb", ""}
                                  << "MessageDlgZT(\"a%sb\", \"\")";
        QTest::newRow("weight") << "%.1f g" << QVariantList{31.1035} << "31.1 g";
        QTest::newRow("quantity") << "Qty: %d" << QVariantList{-3} << "Qty: -3";
        QTest::newRow("zero padded") << "%.3d" << QVariantList{7} << "007";
        QTest::newRow("width") << "[%5s|%-3d]" << QVariantList{"ab", 1} << "[   ab|1  ]";
        QTest::newRow("index") << "%1:s %0:s" << QVariantList{"a", "b"} << "b a";
        QTest::newRow("percent") << "100%%" << QVariantList{} << "100%";
        QTest::newRow("hex") << "%x" << QVariantList{255} << "FF";
        QTest::newRow("negative hex") << "%x" << QVariantList{-1} << "FFFFFFFF";
        QTest::newRow("grouped") << "%.2n" << QVariantList{1234567.891} << "1,234,567.89";
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
        QTest::newRow("missing") << "%s %s" << QVariantList{"a"};
        QTest::newRow("text for %d") << "%d" << QVariantList{"a"};
        QTest::newRow("float for %d") << "%d" << QVariantList{1.5};
        QTest::newRow("unknown type") << "%q" << QVariantList{1};
        QTest::newRow("dangling") << "abc %" << QVariantList{1};
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
        const QString folder = dir.filePath(QStringLiteral("not/yet"));
        const QRegularExpression shape(QStringLiteral("^[0-9a-f]{8}\\.tmp$"));
        QSet<QString> seen;
        for (int i = 0; i < 200; ++i) {
            const QString name = GetTempFileName(QStringLiteral(".tmp"), folder);
            QVERIFY(QFileInfo(folder).isDir());
            QCOMPARE(QFileInfo(name).absolutePath(), QFileInfo(folder).absoluteFilePath());
            QVERIFY2(shape.match(QFileInfo(name).fileName()).hasMatch(), qPrintable(name));
            QVERIFY(!QFileInfo::exists(name));
            // Occupy it so that a later call must find another name.
            WriteFile(name, "x");
            QVERIFY(!seen.contains(name));
            seen.insert(name);
        }
        QVERIFY(GetTempFileName(QStringLiteral(".jpg")).startsWith(GetTempFolder()));
        QVERIFY(GetTempFolder().endsWith(QLatin1Char('/')));
    }

    void fileHelpers()
    {
        QTemporaryDir dir;
        const QString a = dir.filePath(QStringLiteral("a.txt"));
        const QString b = dir.filePath(QStringLiteral("b.txt"));
        WriteFile(a, "alpha");

        QCOMPARE(GetFileSize(a), qint64(5));
        QCOMPARE(GetFileSize(b), qint64(0));
        QCOMPARE(GetFileSize(dir.path()), qint64(0));

        QVERIFY(CopyFileOver(a, b));
        QCOMPARE(ReadFile(b), QByteArray("alpha"));
        WriteFile(a, "beta");
        QVERIFY(CopyFileOver(a, b));
        QCOMPARE(ReadFile(b), QByteArray("beta"));
        // A missing source leaves the target, and copying a file onto itself keeps its content.
        QVERIFY(CopyFileOver(dir.filePath(QStringLiteral("missing")), b));
        QCOMPARE(ReadFile(b), QByteArray("beta"));
        QVERIFY(CopyFileOver(b, b));
        QCOMPARE(ReadFile(b), QByteArray("beta"));
        QVERIFY(!CopyFileOver(dir.filePath(QStringLiteral("missing")), dir.filePath(QStringLiteral("c"))));

        QVERIFY(DeleteFileIfExists(b));
        QVERIFY(!DeleteFileIfExists(b));
        QVERIFY(!QFile::exists(b));

        const QString nested = EnsureFolder(dir.filePath(QStringLiteral("x/y/z")));
        QVERIFY(nested.endsWith(QStringLiteral("x/y/z/")));
        QVERIFY(QFileInfo(nested).isDir());
        QCOMPARE(EnsureFolder(nested), nested);
        QCOMPARE(WithTrailingDelimiter(QStringLiteral("/tmp")), QStringLiteral("/tmp/"));
        QCOMPARE(WithTrailingDelimiter(QStringLiteral("/tmp/")), QStringLiteral("/tmp/"));

        WriteFile(dir.filePath(QStringLiteral(".hidden")), "");
        QCOMPARE(ListFolder(WithTrailingDelimiter(dir.path())), QStringList({".hidden", "a.txt", "x"}));
        QCOMPARE(ListFolder(dir.filePath(QStringLiteral("none/"))), QStringList());
    }

    void fileNameNoExt_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << "/a/b/coins.orv"
                               << "coins";
        QTest::newRow("two dots") << "/a/b/coins.backup.orv"
                                  << "coins.backup";
        QTest::newRow("none") << "/a/b/coins"
                              << "coins";
        QTest::newRow("dot in folder") << "/a.b/coins"
                                       << "coins";
        QTest::newRow("name only") << "English.xml"
                                   << "English";
    }

    void fileNameNoExt()
    {
        QFETCH(QString, path);
        QFETCH(QString, expected);
        QCOMPARE(FileNameNoExt(path), expected);
    }

    void loadTextFile_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("encoding"); // -1: none given
        QTest::addColumn<QString>("expected");
        QTest::newRow("utf-8") << QByteArray("M\xc3\xbcnze\r\n") << -1 << QStringLiteral("Münze\r\n");
        QTest::newRow("utf-8 bom") << QByteArray("\xef\xbb\xbfM\xc3\xbcnze") << -1 << QStringLiteral("Münze");
        QTest::newRow("utf-16 bom") << QByteArray("\xff\xfeM\x00\xfc\x00", 6) << -1 << QStringLiteral("Mü");
        QTest::newRow("latin-1 given")
            << QByteArray("M\xfcnze") << int(QStringConverter::Latin1) << QStringLiteral("Münze");
    }

    void loadTextFile()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, encoding);
        QFETCH(QString, expected);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("t.txt"));
        WriteFile(path, bytes);
        const auto chosen =
            encoding < 0 ? std::nullopt : std::optional(static_cast<QStringConverter::Encoding>(encoding));
        QCOMPARE(LoadTextFile(path, chosen), expected);
        QCOMPARE(LoadTextFile(dir.filePath(QStringLiteral("missing.txt"))), QString());
    }

    void xmlHelpers()
    {
        QVERIFY(!ParseXMLText(QStringLiteral("")));
        QVERIFY(!ParseXMLText(QStringLiteral("<a><b></a>")));
        QVERIFY(!ParseXMLText(QStringLiteral("<?xml version=\"1.0\"?>")));
        const auto doc =
            ParseXMLText(QStringLiteral("<Language Name=\"Deutsch\" empty=\"\" BIDIMODE=\"RightToLeft\"/>"));
        QVERIFY(doc);
        const QDomElement root = doc->documentElement();
        QCOMPARE(GetXMLAttribute(root, QStringLiteral("name")), QStringLiteral("Deutsch"));
        QCOMPARE(GetXMLAttribute(root, QStringLiteral("BiDiMode"), QStringLiteral("LeftToRight")),
                 QStringLiteral("RightToLeft"));
        QCOMPARE(GetXMLAttribute(root, QStringLiteral("Empty"), QStringLiteral("dflt")),
                 QStringLiteral("dflt"));
        QCOMPARE(GetXMLAttribute(root, QStringLiteral("missing"), QStringLiteral("dflt")),
                 QStringLiteral("dflt"));
        QCOMPARE(GetXMLAttribute(QDomNode(), QStringLiteral("name"), QStringLiteral("d")),
                 QStringLiteral("d"));
    }

    void fileVersionText()
    {
        QVERIFY(QRegularExpression(QStringLiteral("^\\d+\\.\\d+\\.\\d+\\.\\d+$"))
                    .match(GetFileVersionText(QCoreApplication::applicationFilePath()))
                    .hasMatch());
    }
};

QTEST_GUILESS_MAIN(TestUtils)
#include "tst_utils.moc"
