// Enciphered payloads, checked against the openssl command line as an independent party.

#include "uPayloadCipher.h"
#include "uPayloadKeys.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QByteArray KeyOf(const QString& keyA, const QString& keyB)
{
    return QCryptographicHash::hash((keyB + keyA).toUtf8(), QCryptographicHash::Sha256);
}

// Runs `openssl enc -aes-256-cbc` over input; returns its output, or fails the test.
QByteArray OpenSslEnc(bool decrypt, const QByteArray& key, const QByteArray& iv, const QByteArray& input,
                      bool noPad = false)
{
    QStringList args{"enc", "-aes-256-cbc",
                     "-K",  QString::fromLatin1(key.toHex()),
                     "-iv", QString::fromLatin1(iv.toHex())};
    if (decrypt)
        args << "-d";
    if (noPad)
        args << "-nopad";
    QProcess process;
    process.start("openssl", args);
    if (!process.waitForStarted())
        return QByteArray("openssl did not start");
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(30000);
    if (process.exitCode() != 0)
        return QByteArray("openssl failed: ") + process.readAllStandardError();
    return process.readAllStandardOutput();
}

QByteArray Encrypt(const QByteArray& clear)
{
    return EncryptBytes(clear, PayloadKeyA, PayloadKeyB);
}

} // namespace

class TestPayloadCipher : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void keyConstantsHaveTheirForm();
    void keyMaterialMatchesOpenSslDigest();
    void commandLineReplyDeciphers_data();
    void commandLineReplyDeciphers();
    void programTextDecipheresWithCommandLine_data();
    void programTextDecipheresWithCommandLine();
    void twoEncryptionsDifferInTheirIV();
    void swappedConstantsFail();
    void brokenBodiesRaise_data();
    void brokenBodiesRaise();
    void wrongPaddingRaises_data();
    void wrongPaddingRaises();
    void streamsStartAtTheirPosition();
    void largeBodyCrossesChunks();
    void encryptTextWraps_data();
    void encryptTextWraps();
    void emptyTextStaysEmpty();
    void givenIvIsKeptAndBadIvRefused();
};

void TestPayloadCipher::initTestCase()
{
    if (QStandardPaths::findExecutable("openssl").isEmpty())
        QSKIP("the openssl command line is not installed");
}

void TestPayloadCipher::keyConstantsHaveTheirForm()
{
    static const QRegularExpression guid(
        "^\\{[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\}$");
    QCOMPARE(PayloadKeyA.size(), 38);
    QCOMPARE(PayloadKeyB.size(), 38);
    QVERIFY(guid.match(PayloadKeyA).hasMatch());
    QVERIFY(guid.match(PayloadKeyB).hasMatch());
    QVERIFY(PayloadKeyA != PayloadKeyB);
}

void TestPayloadCipher::keyMaterialMatchesOpenSslDigest()
{
    QProcess process;
    process.start("openssl", {"dgst", "-sha256", "-binary"});
    QVERIFY(process.waitForStarted());
    process.write((PayloadKeyB + PayloadKeyA).toUtf8());
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished());
    const QByteArray digest = process.readAllStandardOutput();
    QCOMPARE(digest.size(), 32);

    const TPayloadKeyMaterial material = MakeKeyMaterial(PayloadKeyA, PayloadKeyB);
    QCOMPARE(material.Key, digest);
    QCOMPARE(material.IV.size(), 16);
}

void TestPayloadCipher::commandLineReplyDeciphers_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty array") << "[]";
    QTest::newRow("one block exactly") << "0123456789abcdef";
    QTest::newRow("spot reply") << R"([{"BaseCurrency":"XAU","Price":2331.5,"DateC":"2024-05-14"}])";
    QTest::newRow("non-ASCII") << QString::fromUtf8("Zürich, Kraków, 熊猫, Ø 38.6 mm");
    QTest::newRow("long") << QString(5000, QChar('x'));
}

void TestPayloadCipher::commandLineReplyDeciphers()
{
    QFETCH(QString, text);
    const QByteArray iv = QByteArray::fromHex("000102030405060708090a0b0c0d0e0f");
    const QByteArray body = OpenSslEnc(false, KeyOf(PayloadKeyA, PayloadKeyB), iv, text.toUtf8());
    QVERIFY2(!body.startsWith("openssl"), body.constData());
    QCOMPARE(body.size() % 16, 0);

    QBuffer source;
    source.setData(iv + body);
    source.open(QIODevice::ReadOnly);
    QByteArray clear;
    QBuffer target(&clear);
    target.open(QIODevice::WriteOnly);
    DecryptStream(source, target, PayloadKeyA, PayloadKeyB);
    QCOMPARE(QString::fromUtf8(clear), text);
}

void TestPayloadCipher::programTextDecipheresWithCommandLine_data()
{
    commandLineReplyDeciphers_data();
}

void TestPayloadCipher::programTextDecipheresWithCommandLine()
{
    QFETCH(QString, text);
    QBuffer source;
    source.setData(text.toUtf8());
    source.open(QIODevice::ReadOnly);
    QByteArray wire;
    QBuffer target(&wire);
    target.open(QIODevice::WriteOnly);
    EncryptStream(source, target, PayloadKeyA, PayloadKeyB);

    QVERIFY(wire.size() >= 32);
    QCOMPARE(wire.size() % 16, 0);
    const QByteArray clear = OpenSslEnc(true, KeyOf(PayloadKeyA, PayloadKeyB), wire.left(16), wire.mid(16));
    QCOMPARE(QString::fromUtf8(clear), text);

    // The base64 form carries the same layout.
    const QString b64 = EncryptText(text, PayloadKeyA, PayloadKeyB, false);
    const QByteArray raw = QByteArray::fromBase64(b64.toLatin1());
    QCOMPARE(OpenSslEnc(true, KeyOf(PayloadKeyA, PayloadKeyB), raw.left(16), raw.mid(16)), text.toUtf8());
}

void TestPayloadCipher::twoEncryptionsDifferInTheirIV()
{
    const QByteArray clear = R"([{"Name":"Maple Leaf"}])";
    const QByteArray first = Encrypt(clear);
    const QByteArray second = Encrypt(clear);
    QVERIFY(first.left(16) != second.left(16));
    QVERIFY(first.mid(16) != second.mid(16));
    QCOMPARE(DecryptBytes(first, PayloadKeyA, PayloadKeyB), clear);
    QCOMPARE(DecryptBytes(second, PayloadKeyA, PayloadKeyB), clear);
}

void TestPayloadCipher::swappedConstantsFail()
{
    QVERIFY(KeyOf(PayloadKeyA, PayloadKeyB) != KeyOf(PayloadKeyB, PayloadKeyA));
    // With a one-block body a wrong key still could give a valid padding by chance (about 1 in
    // 256); over several bodies at least one fails, and none deciphers to the clear text.
    int failures = 0;
    for (int i = 0; i < 8; ++i) {
        const QByteArray clear = QByteArray("catalogue reply number ") + QByteArray::number(i);
        try {
            const QByteArray result = DecryptBytes(Encrypt(clear), PayloadKeyB, PayloadKeyA);
            QVERIFY(result != clear);
        } catch (const EPayloadCipherError&) {
            ++failures;
        }
    }
    QVERIFY(failures > 0);
}

void TestPayloadCipher::brokenBodiesRaise_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("expected");
    QTest::newRow("0 bytes") << 0 << "fewer than its 16-byte";
    QTest::newRow("15 bytes") << 15 << "fewer than its 16-byte";
    QTest::newRow("16 bytes: IV only") << 16 << "no cipher text";
    QTest::newRow("17 bytes") << 17 << "not a multiple of 16";
    QTest::newRow("40 bytes") << 40 << "not a multiple of 16";
}

void TestPayloadCipher::brokenBodiesRaise()
{
    QFETCH(int, size);
    QFETCH(QString, expected);
    const QByteArray body(size, '\x5a');
    try {
        DecryptBytes(body, PayloadKeyA, PayloadKeyB);
        QFAIL("no exception");
    } catch (const EPayloadCipherError& e) {
        QVERIFY2(QString::fromUtf8(e.what()).contains(expected), e.what());
    }
}

void TestPayloadCipher::wrongPaddingRaises_data()
{
    QTest::addColumn<QByteArray>("lastBlock");
    QTest::newRow("pad byte 0") << QByteArray(16, '\0');
    QTest::newRow("pad byte 17") << QByteArray(15, 'a') + char(17);
    QTest::newRow("inconsistent pad bytes") << QByteArray(13, 'a') + QByteArray("\x01\x03\x03", 3);
}

void TestPayloadCipher::wrongPaddingRaises()
{
    QFETCH(QByteArray, lastBlock);
    const QByteArray iv(16, '\x11');
    const QByteArray body =
        OpenSslEnc(false, KeyOf(PayloadKeyA, PayloadKeyB), iv, QByteArray(32, 'p') + lastBlock, true);
    QCOMPARE(body.size(), 48);
    try {
        DecryptBytes(iv + body, PayloadKeyA, PayloadKeyB);
        QFAIL("no exception");
    } catch (const EPayloadCipherError& e) {
        QVERIFY2(QString::fromUtf8(e.what()).contains("wrong padding"), e.what());
    }
}

void TestPayloadCipher::streamsStartAtTheirPosition()
{
    const QByteArray wire = Encrypt("positioned");
    QBuffer source;
    source.setData(QByteArray("HEADER") + wire);
    source.open(QIODevice::ReadOnly);
    source.seek(6);
    QByteArray clear("kept:");
    QBuffer target(&clear);
    target.open(QIODevice::WriteOnly | QIODevice::Append);
    DecryptStream(source, target, PayloadKeyA, PayloadKeyB);
    QCOMPARE(clear, QByteArray("kept:positioned"));
}

void TestPayloadCipher::largeBodyCrossesChunks()
{
    QByteArray clear(300 * 1024 + 7, Qt::Uninitialized);
    for (int i = 0; i < clear.size(); ++i)
        clear[i] = char(i * 31 + 7);
    QTemporaryDir dir;
    QFile file(dir.filePath("body.bin"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QBuffer source(&clear);
    source.open(QIODevice::ReadOnly);
    EncryptStream(source, file, PayloadKeyA, PayloadKeyB);
    file.close();
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.size(), (clear.size() / 16 + 1) * 16 + 16);
    QByteArray back;
    QBuffer target(&back);
    target.open(QIODevice::WriteOnly);
    DecryptStream(file, target, PayloadKeyA, PayloadKeyB);
    QCOMPARE(back, clear);
}

void TestPayloadCipher::encryptTextWraps_data()
{
    QTest::addColumn<int>("length");
    QTest::newRow("short") << 5;
    QTest::newRow("one full line") << 15;  // 16 + 16 bytes -> 44 base64 characters
    QTest::newRow("several lines") << 400; // 16 + 416 bytes -> 576 characters, 9 lines
    QTest::newRow("odd") << 1000;
}

void TestPayloadCipher::encryptTextWraps()
{
    QFETCH(int, length);
    const QString text(length, QChar('w'));
    const QString flat = EncryptText(text, PayloadKeyA, PayloadKeyB, false);
    QVERIFY(!flat.contains('\n'));
    const QString wrapped = EncryptText(text, PayloadKeyA, PayloadKeyB, true);
    const QStringList lines = wrapped.split('\n');
    for (int i = 0; i < lines.size(); ++i) {
        if (i + 1 < lines.size())
            QCOMPARE(lines[i].size(), 64);
        else
            QVERIFY(lines[i].size() > 0 && lines[i].size() <= 64);
    }
    const int expectedBytes = 16 + (length / 16 + 1) * 16;
    QCOMPARE(lines.join(QString()).size(), (expectedBytes + 2) / 3 * 4);
    const QByteArray raw = QByteArray::fromBase64(lines.join(QString()).toLatin1());
    QCOMPARE(DecryptBytes(raw, PayloadKeyA, PayloadKeyB), text.toUtf8());
}

void TestPayloadCipher::emptyTextStaysEmpty()
{
    QVERIFY(EncryptText(QString(), PayloadKeyA, PayloadKeyB, true).isEmpty());
    QVERIFY(EncryptText(QString(""), PayloadKeyA, PayloadKeyB, false).isEmpty());
    // An empty stream still gets an IV and one block of padding.
    QCOMPARE(Encrypt(QByteArray()).size(), 32);
    QCOMPARE(DecryptBytes(Encrypt(QByteArray()), PayloadKeyA, PayloadKeyB), QByteArray());
}

void TestPayloadCipher::givenIvIsKeptAndBadIvRefused()
{
    const QByteArray iv = QByteArray::fromHex("ffeeddccbbaa99887766554433221100");
    QCOMPARE(MakeKeyMaterial(PayloadKeyA, PayloadKeyB, iv).IV, iv);
    QVERIFY(MakeKeyMaterial(PayloadKeyA, PayloadKeyB).IV != MakeKeyMaterial(PayloadKeyA, PayloadKeyB).IV);
    QVERIFY_THROWS_EXCEPTION(EPayloadCipherError, MakeKeyMaterial(PayloadKeyA, PayloadKeyB, iv.left(8)));
}

QTEST_GUILESS_MAIN(TestPayloadCipher)
#include "tst_payloadcipher.moc"
