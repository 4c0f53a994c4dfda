// Photographs on entry: the format from the bytes alone, the formats taken and the clear refusal of
// the rest, the upright size and the viewer's status line.

#include "support_pictures.h"
#include "uPictures.h"
#include "uThumbnail.h"

#include <QImageReader>
#include <QtTest>

using namespace Qt::StringLiterals;

class TstPictures : public QObject
{
    Q_OBJECT

private slots:
    void formatAndAcceptance_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("format");
        QTest::addColumn<bool>("accepted");

        QTest::newRow("png") << EncodedPicture(40, 20, "PNG") << int(pfPNG) << true;
        QTest::newRow("jpeg") << EncodedPicture(40, 20, "JPEG") << int(pfJPEG) << true;
        QTest::newRow("jpeg with exif") << JpegWithOrientation(40, 20, 6) << int(pfEXIF) << true;
        QTest::newRow("bmp") << EncodedPicture(40, 20, "BMP") << int(pfBitmap) << true;
        QTest::newRow("icon") << EncodedPicture(32, 32, "ICO") << int(pfIcon) << true;
        if (QImageReader::supportedImageFormats().contains("tiff"))
            QTest::newRow("tiff") << EncodedPicture(40, 20, "TIFF") << int(pfTIFF) << true;
        // GIF is read, never written, by the image library: a one-pixel GIF by hand.
        QTest::newRow("gif") << QByteArray::fromBase64(
                                    "R0lGODlhAQABAIAAAP///wAAACH5BAEAAAAALAAAAAABAAEAAAICRAEAOw==")
                             << int(pfGIF) << true;
        QTest::newRow("text") << QByteArray("this is no picture\n") << int(pfUnknown) << false;
        QTest::newRow("empty") << QByteArray() << int(pfUnknown) << false;
        QTest::newRow("png header, damaged rest")
            << EncodedPicture(40, 20, "PNG").left(40) << int(pfPNG) << false;
        QTest::newRow("jpeg cut after the header")
            << QByteArray("\xFF\xD8\xFF\xE0", 4) << int(pfJPEG) << false;
        QByteArray emf(44, '\0');
        emf[0] = 1;
        emf.replace(40, 4, " EMF");
        QTest::newRow("emf is not decoded") << emf << int(pfEMF) << false;
        QTest::newRow("wmf is not decoded")
            << QByteArray("\xD7\xCD\xC6\x9A\0\0\0\0", 8) << int(pfWMF) << false;
        // A name says nothing: the bytes of a PNG behind a BMP signature are refused.
        QTest::newRow("bmp signature, png inside")
            << QByteArray("BM") + EncodedPicture(40, 20, "PNG") << int(pfBitmap) << false;
    }

    void formatAndAcceptance()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, format);
        QFETCH(bool, accepted);
        QCOMPARE(int(PictureFormatOf(bytes)), format);
        QCOMPARE(IsAcceptedPicture(bytes), accepted);
        if (accepted) {
            CheckAcceptedPicture(bytes);
        } else {
            try {
                CheckAcceptedPicture(bytes);
                QFAIL("refused bytes were taken");
            } catch (const EPictureError& error) {
                QVERIFY(error.text().contains(u"JPEG, PNG"_s) || error.text().contains(u"empty"_s));
            }
        }
    }

    void formatNames_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<QString>("name");
        const QStringList names{u"Unknown"_s, u"Bitmap"_s, u"JPEG"_s, u"PNG"_s, u"TIFF"_s, u"GIF"_s,
                                u"EMF"_s,     u"EXIF"_s,   u"Icon"_s, u"BMP"_s, u"WMF"_s};
        for (int i = 0; i < names.size(); ++i)
            QTest::addRow("%d", i) << i << names.at(i);
        QTest::newRow("11") << 11 << u"Unknown"_s;
        QTest::newRow("-1") << -1 << u"Unknown"_s;
    }

    void formatNames()
    {
        QFETCH(int, format);
        QFETCH(QString, name);
        QCOMPARE(PictureFormatName(format), name);
    }

    // The viewer and the thumbnail show a turned photograph the same way up.
    void orientationAsTheThumbnail_data()
    {
        QTest::addColumn<int>("orientation");
        QTest::addColumn<QSize>("upright");
        QTest::newRow("1 as stored") << 1 << QSize(300, 100);
        QTest::newRow("3 half turn") << 3 << QSize(300, 100);
        QTest::newRow("6 quarter turn") << 6 << QSize(100, 300);
        QTest::newRow("8 quarter turn back") << 8 << QSize(100, 300);
    }

    void orientationAsTheThumbnail()
    {
        QFETCH(int, orientation);
        QFETCH(QSize, upright);
        const QByteArray jpeg = JpegWithOrientation(300, 100, orientation);
        QCOMPARE(UprightPictureSize(jpeg), upright);
        QCOMPARE(DecodeUpright(jpeg).size(), upright);
        const QImage thumb = QImage::fromData(MakeThumbnail(jpeg));
        QCOMPARE(thumb.width() > thumb.height(), upright.width() > upright.height());
        // The red half is where the upright picture has it.
        const QImage shown = DecodeUpright(jpeg);
        const QColor shownCorner = shown.pixelColor(2, 2);
        const QColor thumbCorner = thumb.pixelColor(2, 2);
        QCOMPARE(shownCorner.red() > shownCorner.blue(), thumbCorner.red() > thumbCorner.blue());
    }

    void statusText()
    {
        const QByteArray png = EncodedPicture(120, 45, "PNG");
        const QString text = PictureStatusText(png);
        QVERIFY2(text.startsWith(u"PNG: 120px x 45px. "_s), qPrintable(text));
        QVERIFY2(text.endsWith(u"bytes"_s) || text.endsWith(u"Kb"_s), qPrintable(text));
        QVERIFY(PictureStatusText(JpegWithOrientation(300, 100, 6)).startsWith(u"EXIF: 100px x 300px. "_s));
        QCOMPARE(PictureStatusText(QByteArray("junk")), u"Unknown: 0px x 0px. 4 bytes"_s);
    }
};

QTEST_GUILESS_MAIN(TstPictures)
#include "tst_pictures.moc"
