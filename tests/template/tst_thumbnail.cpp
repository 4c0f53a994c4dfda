// Thumbnails of photographs and the blank pictures used where an item has none.

#include "uBlankPictures.h"
#include "uThumbnail.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QtTest>

namespace {

// A picture with some content, encoded in the given format with the codec's defaults.
QByteArray makePicture(int w, int h, const char* format)
{
    QImage img(w, h, QImage::Format_RGB32);
    QPainter p(&img);
    QLinearGradient g(0, 0, w, h);
    g.setColorAt(0, Qt::darkBlue);
    g.setColorAt(1, Qt::yellow);
    p.fillRect(img.rect(), g);
    p.setPen(QPen(Qt::red, std::max(1, w / 50)));
    p.drawEllipse(QRect(w / 4, h / 4, w / 2, h / 2));
    p.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    img.save(&buffer, format);
    return bytes;
}

QByteArray formatOf(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return QImageReader(&buffer).format();
}

QSize sizeOf(const QByteArray& bytes)
{
    return QImage::fromData(bytes).size();
}

// A palette picture: a transparent margin around a ramp of 63 colours from deep blue to pale yellow,
// half opaque in its lower left quarter; colours 0 and 1 only if two colours are asked for.
QImage makePalettePicture(int w, int h, int colours)
{
    QList<QRgb> table = {qRgba(0, 0, 0, 0)};
    for (int i = 1; i < colours; ++i) {
        const int t = colours > 2 ? (i - 1) * 255 / (colours - 2) : 255;
        table.append(qRgba(20 + t * 215 / 255, 30 + t * 200 / 255, 140 - t * 40 / 255, 255));
    }
    if (colours > 2) {
        for (int i = 1; i < colours; i += 2)
            table.append(qRgba(qRed(table.at(i)), qGreen(table.at(i)), qBlue(table.at(i)), 128));
    }
    QImage img(w, h, QImage::Format_Indexed8);
    img.setColorTable(table);
    const int margin = std::max(1, std::min(w, h) / 10);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            int index = 0;
            if (x >= margin && y >= margin && x < w - margin && y < h - margin) {
                index = 1 + (x + y) * (colours - 1) / (w + h);
                if (colours > 2 && x < w / 2 && y > h / 2)
                    index = colours + (index - 1) / 2;
            }
            img.setPixel(x, y, uint(std::min(index, int(table.size()) - 1)));
        }
    }
    return img;
}

QByteArray pngOf(const QImage& img)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    img.save(&buffer, "PNG");
    return bytes;
}

// Mean absolute difference per channel of two pictures of one size, premultiplied, in 8-bit steps.
double meanDifference(const QImage& a, const QImage& b)
{
    const QImage pa = a.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage pb = b.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (pa.size() != pb.size())
        return 255;
    double total = 0;
    for (int y = 0; y < pa.height(); ++y) {
        for (int x = 0; x < pa.width(); ++x) {
            const QRgb p = pa.pixel(x, y);
            const QRgb q = pb.pixel(x, y);
            total += std::abs(qAlpha(p) - qAlpha(q)) + std::abs(qRed(p) - qRed(q)) +
                     std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    }
    return total / (4.0 * pa.width() * pa.height());
}

} // namespace

class TestThumbnail : public QObject
{
    Q_OBJECT

private slots:
    void width_data();
    void width();
    void thumbnail_data();
    void thumbnail();
    void uprightByOrientation();
    void thumbnailOfVariant();
    void nullGivesNull();
    void unreadableRaises_data();
    void unreadableRaises();
    void blankChoice_data();
    void blankChoice();
    void blankThumbnail_data();
    void blankThumbnail();
    void paletteThumbnail_data();
    void paletteThumbnail();
};

void TestThumbnail::width_data()
{
    QTest::addColumn<int>("w");
    QTest::addColumn<int>("h");
    QTest::addColumn<int>("expected");
    QTest::newRow("wide, scaled up") << 100 << 50 << 400;
    QTest::newRow("tall") << 1000 << 3000 << 67;
    QTest::newRow("4:3 photo") << 4000 << 3000 << 267;
    QTest::newRow("already 200 high") << 321 << 200 << 321;
    QTest::newRow("tie rounds down to even") << 5 << 400 << 2;
    QTest::newRow("tie rounds up to even") << 7 << 400 << 4;
    QTest::newRow("tie at 0.5 gives at least one pixel") << 1 << 400 << 1;
    QTest::newRow("very thin") << 1 << 5000 << 1;
}

void TestThumbnail::width()
{
    QFETCH(int, w);
    QFETCH(int, h);
    QFETCH(int, expected);
    QCOMPARE(ThumbnailWidth(w, h), expected);
}

void TestThumbnail::thumbnail_data()
{
    QTest::addColumn<int>("w");
    QTest::addColumn<int>("h");
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("png 100x50") << 100 << 50 << QByteArray("png") << QSize(400, 200);
    QTest::newRow("png 1000x3000") << 1000 << 3000 << QByteArray("png") << QSize(67, 200);
    QTest::newRow("jpeg 100x50") << 100 << 50 << QByteArray("jpeg") << QSize(400, 200);
    QTest::newRow("jpeg 1000x3000") << 1000 << 3000 << QByteArray("jpeg") << QSize(67, 200);
    QTest::newRow("jpeg 4000x3000") << 4000 << 3000 << QByteArray("jpeg") << QSize(267, 200);
    QTest::newRow("jpeg 1001x777") << 1001 << 777 << QByteArray("jpeg") << QSize(258, 200);
    QTest::newRow("bmp 640x480") << 640 << 480 << QByteArray("bmp") << QSize(267, 200);
}

void TestThumbnail::thumbnail()
{
    QFETCH(int, w);
    QFETCH(int, h);
    QFETCH(QByteArray, format);
    QFETCH(QSize, expected);
    const QByteArray source = makePicture(w, h, format.constData());
    QCOMPARE(formatOf(source), format);
    const QByteArray thumb = MakeThumbnail(source);
    QCOMPARE(formatOf(thumb), format);
    QCOMPARE(sizeOf(thumb), expected);

    // The picture is scaled, not cropped: the middle of the thumbnail shows the middle of the source.
    const QImage a =
        QImage::fromData(source).scaled(expected, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QImage b = QImage::fromData(thumb);
    const QPoint mid(expected.width() / 2, expected.height() / 2);
    QVERIFY(std::abs(qGray(a.pixel(mid)) - qGray(b.pixel(mid))) < 40);
    const QPoint corner(2, 2);
    QVERIFY(std::abs(qGray(a.pixel(corner)) - qGray(b.pixel(corner))) < 40);
}

// A camera stores the pixels as the sensor saw them and the orientation in the EXIF block: a
// 400x100 picture marked "rotate 90" is shown as 100x400, and so is its thumbnail.
void TestThumbnail::uprightByOrientation()
{
    QByteArray jpeg = makePicture(400, 100, "jpeg");
    const QByteArray exif = QByteArray::fromHex("FFE10022") + QByteArray("Exif\0\0", 6) +
                            QByteArray::fromHex("4D4D002A00000008"
                                                "0001"
                                                "011200030000000100060000"
                                                "00000000");
    jpeg.insert(2, exif); // right after the start-of-image marker
    const QByteArray thumb = MakeThumbnail(jpeg);
    QCOMPARE(formatOf(thumb), QByteArray("jpeg"));
    QCOMPARE(sizeOf(thumb), QSize(50, 200));
}

void TestThumbnail::thumbnailOfVariant()
{
    const QVariant thumb = MakeThumbnail(QVariant(makePicture(300, 600, "png")));
    QVERIFY(thumb.isValid());
    QCOMPARE(thumb.typeId(), QMetaType::QByteArray);
    QCOMPARE(sizeOf(thumb.toByteArray()), QSize(100, 200));
}

void TestThumbnail::nullGivesNull()
{
    QVERIFY(MakeThumbnail(QByteArray()).isNull());
    QVERIFY(!MakeThumbnail(QVariant()).isValid());
    // A NULL blob as the database layer hands it over: typed, but null.
    QVERIFY(MakeThumbnail(QVariant(QMetaType::fromType<QByteArray>())).isNull());
}

void TestThumbnail::unreadableRaises_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("garbage") << QByteArray("this is not a picture at all, just some text");
    QTest::newRow("empty") << QByteArray("");
    QByteArray png = makePicture(400, 300, "png");
    QTest::newRow("truncated png") << png.left(60);
    QByteArray jpeg = makePicture(400, 300, "jpeg");
    QTest::newRow("jpeg header only") << jpeg.left(20);
}

void TestThumbnail::unreadableRaises()
{
    QFETCH(QByteArray, bytes);
    try {
        MakeThumbnail(bytes);
        QFAIL("no exception for an unreadable picture");
    } catch (const EThumbnailError& e) {
        QVERIFY(QByteArray(e.what()).startsWith("The picture cannot be read"));
    }
    // Through the field-value overload too.
    QVERIFY_THROWS_EXCEPTION(EThumbnailError, MakeThumbnail(QVariant(bytes)));
}

void TestThumbnail::blankChoice_data()
{
    QTest::addColumn<int>("metal");
    QTest::addColumn<int>("coinType");
    QTest::addColumn<bool>("obverse");
    QTest::addColumn<QString>("expected");
    QTest::newRow("gold coin obverse") << 0 << 0 << true << "iBlankCoinGoldObverse";
    QTest::newRow("gold coin reverse") << 0 << 0 << false << "iBlankCoinGoldReverse";
    QTest::newRow("silver rect coin") << 1 << 1 << true << "iBlankCoinSilverObverse";
    QTest::newRow("platinum round reverse") << 2 << 2 << false << "iBlankCoinPlatinumReverse";
    QTest::newRow("palladium coin") << 3 << 0 << true << "iBlankCoinPalladiumObverse";
    QTest::newRow("rhodium coin reverse") << 4 << 0 << false << "iBlankCoinRhodiumReverse";
    QTest::newRow("copper round") << 5 << 2 << true << "iBlankCoinCopperObverse";
    QTest::newRow("gold bar obverse") << 0 << 3 << true << "iBlankBarGold";
    QTest::newRow("gold bar reverse") << 0 << 3 << false << "iBlankBarGold";
    QTest::newRow("silver divisible bar") << 1 << 4 << false << "iBlankBarSilver";
    QTest::newRow("copper bar") << 5 << 3 << true << "iBlankBarCopper";
    QTest::newRow("metal 9") << 9 << 0 << true << "iBlankCoinGoldObverse";
    QTest::newRow("metal 9 bar reverse") << 9 << 3 << false << "iBlankCoinGoldReverse";
    QTest::newRow("metal -1") << -1 << 0 << false << "iBlankCoinGoldReverse";
    QTest::newRow("type 7") << 1 << 7 << true << "iBlankCoinGoldObverse";
    QTest::newRow("type 7 reverse") << 5 << 7 << false << "iBlankCoinGoldReverse";
    QTest::newRow("type -1") << 2 << -1 << true << "iBlankCoinGoldObverse";
}

void TestThumbnail::blankChoice()
{
    QFETCH(int, metal);
    QFETCH(int, coinType);
    QFETCH(bool, obverse);
    QFETCH(QString, expected);
    QCOMPARE(BlankPictureName(metal, coinType, obverse), expected);
    const QByteArray bytes = BlankPicture(metal, coinType, obverse);
    // The bytes are those of the named resource (registered by the first call above).
    QFile named(":/blank/" + expected);
    QVERIFY(named.open(QIODevice::ReadOnly));
    QCOMPARE(bytes, named.readAll());
}

// What an item without a photo stores: the thumbnail of its blank picture. It is kept twice with every
// such item, so two of them and the item's texts have to fit one 4 KB page of the file; the pictures
// are drawn at the thumbnail's height, so the thumbnail shows the picture's own pixels.
void TestThumbnail::blankThumbnail_data()
{
    QTest::addColumn<int>("metal");
    QTest::addColumn<int>("coinType");
    QTest::addColumn<bool>("obverse");
    for (int metal = 0; metal < 6; ++metal) {
        QTest::addRow("metal %d obverse", metal) << metal << 0 << true;
        QTest::addRow("metal %d reverse", metal) << metal << 0 << false;
        QTest::addRow("metal %d bar", metal) << metal << 3 << true;
    }
}

void TestThumbnail::blankThumbnail()
{
    QFETCH(int, metal);
    QFETCH(int, coinType);
    QFETCH(bool, obverse);
    const QByteArray picture = BlankPicture(metal, coinType, obverse);
    QCOMPARE(formatOf(picture), QByteArray("png"));
    QVERIFY(picture != BlankPicture(metal, coinType, !obverse) || coinType == 3); // a bar serves both sides
    const QByteArray thumb = MakeThumbnail(picture);
    QVERIFY2(thumb.size() <= 1700, QByteArray::number(thumb.size()).constData());
    QCOMPARE(formatOf(thumb), QByteArray("png"));
    const QImage source = QImage::fromData(picture, "PNG");
    const QImage img = QImage::fromData(thumb, "PNG");
    QCOMPARE(img.height(), ThumbnailHeight);
    QCOMPARE(img.size(), source.size());
    QCOMPARE(img.size(), coinType == 3 ? QSize(360, 200) : QSize(200, 200));
    QCOMPARE(img.format(), QImage::Format_Indexed8);
    QVERIFY(meanDifference(source, img) < 0.5);
    QCOMPARE(qAlpha(img.pixel(0, 0)), 0);
    QCOMPARE(qAlpha(img.pixel(img.width() / 2, img.height() / 2)), 255);
}

// A palette PNG gives a palette PNG thumbnail over the source's own colours, close to the picture
// smoothly scaled in full colour.
void TestThumbnail::paletteThumbnail_data()
{
    QTest::addColumn<int>("w");
    QTest::addColumn<int>("h");
    QTest::addColumn<int>("colours");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("shrunk") << 400 << 300 << 64 << QSize(267, 200);
    QTest::newRow("enlarged") << 100 << 50 << 64 << QSize(400, 200);
    QTest::newRow("tall") << 150 << 900 << 64 << QSize(33, 200);
    QTest::newRow("already 200 high") << 321 << 200 << 64 << QSize(321, 200);
    QTest::newRow("two colours") << 300 << 150 << 2 << QSize(400, 200);
}

void TestThumbnail::paletteThumbnail()
{
    QFETCH(int, w);
    QFETCH(int, h);
    QFETCH(int, colours);
    QFETCH(QSize, expected);
    const QByteArray picture = pngOf(makePalettePicture(w, h, colours));
    const QImage source = QImage::fromData(picture, "PNG");
    QVERIFY(source.colorCount() > 0);

    const QByteArray thumb = MakeThumbnail(picture);
    QCOMPARE(formatOf(thumb), QByteArray("png"));
    const QImage img = QImage::fromData(thumb, "PNG");
    QCOMPARE(img.size(), expected);
    QCOMPARE(img.format(), source.format());
    for (const QRgb colour : img.colorTable())
        QVERIFY(source.colorTable().contains(colour));

    if (source.size() == expected) {
        QCOMPARE(img.convertToFormat(QImage::Format_ARGB32), source.convertToFormat(QImage::Format_ARGB32));
    } else {
        const QImage reference = source.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                                     .scaled(expected, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        const double difference = meanDifference(reference, img);
        QVERIFY2(difference < (colours > 2 ? 3.0 : 12.0), QByteArray::number(difference).constData());
    }
}

QTEST_GUILESS_MAIN(TestThumbnail)
#include "tst_thumbnail.moc"
