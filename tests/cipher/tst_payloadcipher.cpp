// Enciphered payloads, checked against the openssl command line as an independent party.

#include "support_common.h"
#include "support_datarow.h"
#include "uPayloadCipher.h"
#include "uPayloadKeys.h"

#include <QBuffer>
#include <QtTest>

namespace {

QByteArray Encrypt(const QByteArray& clear)
{
    return EncryptBytes(clear, PayloadKeyA, PayloadKeyB);
}

// The message of the EPayloadCipherError that deciphering body raises; empty when it raises none.
QString DecryptError(const QByteArray& body)
{
    try {
        DecryptBytes(body, PayloadKeyA, PayloadKeyB);
    } catch (const EPayloadCipherError& e) {
        return QString::fromUtf8(e.what());
    }
    return {};
}

} // namespace

class TestPayloadCipher : public QObject
{
    Q_OBJECT

private:
    QByteArray m_key; // as the command line computes it

private slots:
    void initTestCase()
    {
        if (!HaveProgram("openssl"))
            QSKIP("the openssl command line is not installed");
        m_key = OpenSslKey(PayloadKeyA, PayloadKeyB);
        QCOMPARE(m_key.size(), 32);
        const TPayloadKeyMaterial material = MakeKeyMaterial(PayloadKeyA, PayloadKeyB);
        QCOMPARE(material.Key, m_key);
        QCOMPARE(material.IV.size(), 16);
    }

    // Both ways: a reply enciphered by the command line deciphers to the same text, and text
    // enciphered by the program (as bytes and as base64) deciphers with the command line.
    void interopWithTheCommandLine_data()
    {
        QTest::addColumn<QString>("text");
        AddRow("empty array", "[]");
        AddRow("one block exactly", "0123456789abcdef");
        AddRow("spot reply", R"([{"BaseCurrency":"XAU","Price":2331.5,"DateC":"2024-05-14"}])");
        AddRow("non-ASCII", "Zürich, Kraków, 熊猫, Ø 38.6 mm");
        AddRow("long", QString(5000, 'x'));
    }
    void interopWithTheCommandLine()
    {
        QFETCH(QString, text);
        const QByteArray iv = QByteArray::fromHex("000102030405060708090a0b0c0d0e0f");
        const QByteArray body = OpenSslEnc(false, m_key, iv, text.toUtf8());
        QVERIFY(!body.isEmpty() && body.size() % 16 == 0);
        QBuffer source;
        source.setData(iv + body);
        source.open(QIODevice::ReadOnly);
        QByteArray clear;
        QBuffer target(&clear);
        target.open(QIODevice::WriteOnly);
        DecryptStream(source, target, PayloadKeyA, PayloadKeyB);
        QCOMPARE(QString::fromUtf8(clear), text);

        QBuffer plain;
        plain.setData(text.toUtf8());
        plain.open(QIODevice::ReadOnly);
        QByteArray wire;
        QBuffer wireTarget(&wire);
        wireTarget.open(QIODevice::WriteOnly);
        EncryptStream(plain, wireTarget, PayloadKeyA, PayloadKeyB);
        QVERIFY(wire.size() >= 32 && wire.size() % 16 == 0);
        QCOMPARE(QString::fromUtf8(OpenSslEnc(true, m_key, wire.left(16), wire.mid(16))), text);
        const QByteArray raw =
            QByteArray::fromBase64(EncryptText(text, PayloadKeyA, PayloadKeyB, false).toLatin1());
        QCOMPARE(OpenSslEnc(true, m_key, raw.left(16), raw.mid(16)), text.toUtf8());
    }

    void twoEncryptionsDifferInTheirIV()
    {
        const QByteArray clear = R"([{"Name":"Maple Leaf"}])";
        const QByteArray first = Encrypt(clear);
        const QByteArray second = Encrypt(clear);
        QVERIFY(first.left(16) != second.left(16));
        QVERIFY(first.mid(16) != second.mid(16));
        QCOMPARE(DecryptBytes(first, PayloadKeyA, PayloadKeyB), clear);
        QCOMPARE(DecryptBytes(second, PayloadKeyA, PayloadKeyB), clear);
    }

    void swappedConstantsFail()
    {
        // With a one-block body a wrong key still could give a valid padding by chance (about 1 in
        // 256); over several bodies at least one fails, and none deciphers to the clear text.
        int failures = 0;
        for (int i = 0; i < 8; ++i) {
            const QByteArray clear = "catalogue reply number " + QByteArray::number(i);
            try {
                QVERIFY(DecryptBytes(Encrypt(clear), PayloadKeyB, PayloadKeyA) != clear);
            } catch (const EPayloadCipherError&) {
                ++failures;
            }
        }
        QVERIFY(failures > 0);
    }

    void brokenBodiesRaise_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("expected");
        AddRow("0 bytes", QByteArray(), "fewer than its 16-byte");
        AddRow("16 bytes: IV only", QByteArray(16, 'Z'), "no cipher text");
        AddRow("17 bytes", QByteArray(17, 'Z'), "not a multiple of 16");
        // Blocks enciphered without padding whose last clear bytes are no valid padding.
        const QByteArray iv(16, '\x11');
        for (const QByteArray& last : {QByteArray(16, '\0'), QByteArray(15, 'a') + char(17),
                                       QByteArray(13, 'a') + QByteArray("\x01\x03\x03", 3)})
            QTest::addRow("wrong padding %d", int(last.back()))
                << iv + OpenSslEnc(false, OpenSslKey(PayloadKeyA, PayloadKeyB), iv,
                                   QByteArray(32, 'p') + last, true)
                << "wrong padding";
    }
    void brokenBodiesRaise()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, expected);
        const QString error = DecryptError(body);
        QVERIFY2(error.contains(expected), qPrintable(error));
    }

    void streamsStartAtTheirPosition()
    {
        QBuffer source;
        source.setData("HEADER" + Encrypt("positioned"));
        source.open(QIODevice::ReadOnly);
        source.seek(6);
        QByteArray clear("kept:");
        QBuffer target(&clear);
        target.open(QIODevice::WriteOnly | QIODevice::Append);
        DecryptStream(source, target, PayloadKeyA, PayloadKeyB);
        QCOMPARE(clear, "kept:positioned");
    }

    void largeBodyCrossesChunks()
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

    void encryptTextWraps_data()
    {
        QTest::addColumn<int>("length");
        AddRow("short", 5);
        AddRow("several lines", 400); // 16 + 416 bytes -> 576 characters, 9 lines
    }
    void encryptTextWraps()
    {
        QFETCH(int, length);
        const QString text(length, 'w');
        QVERIFY(!EncryptText(text, PayloadKeyA, PayloadKeyB, false).contains('\n'));
        const QStringList lines = EncryptText(text, PayloadKeyA, PayloadKeyB, true).split('\n');
        for (int i = 0; i + 1 < lines.size(); ++i)
            QCOMPARE(lines[i].size(), 64);
        QVERIFY(lines.last().size() > 0 && lines.last().size() <= 64);
        const QString joined = lines.join(QString());
        QCOMPARE(joined.size(), (16 + (length / 16 + 1) * 16 + 2) / 3 * 4);
        QCOMPARE(DecryptBytes(QByteArray::fromBase64(joined.toLatin1()), PayloadKeyA, PayloadKeyB),
                 text.toUtf8());
    }

    void emptyTextAndGivenIv()
    {
        QVERIFY(EncryptText(QString(), PayloadKeyA, PayloadKeyB, true).isEmpty());
        QVERIFY(EncryptText("", PayloadKeyA, PayloadKeyB, false).isEmpty());
        // An empty stream still gets an IV and one block of padding.
        QCOMPARE(Encrypt(QByteArray()).size(), 32);
        QCOMPARE(DecryptBytes(Encrypt(QByteArray()), PayloadKeyA, PayloadKeyB), QByteArray());
        const QByteArray iv = QByteArray::fromHex("ffeeddccbbaa99887766554433221100");
        QCOMPARE(MakeKeyMaterial(PayloadKeyA, PayloadKeyB, iv).IV, iv);
        QVERIFY(MakeKeyMaterial(PayloadKeyA, PayloadKeyB).IV != MakeKeyMaterial(PayloadKeyA, PayloadKeyB).IV);
        QVERIFY_THROWS_EXCEPTION(EPayloadCipherError, MakeKeyMaterial(PayloadKeyA, PayloadKeyB, iv.left(8)));
    }
};

QTEST_GUILESS_MAIN(TestPayloadCipher)
#include "tst_payloadcipher.moc"
