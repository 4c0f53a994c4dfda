// The image slider: fixed order, skipping images without a picture and stopping at the ends, or
// visiting every image and wrapping around.

#include "uImageSlider.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
QImage picture()
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::blue);
    return image;
}

// Four images; `present` says which have a picture, e.g. "1010".
void fill(TImageSlider& slider, const QString& present)
{
    for (int i = 0; i < int(present.size()); ++i) {
        if (slider.count() <= i)
            slider.addImage(u"image%1"_s.arg(i), u"Caption %1"_s.arg(i));
        slider.setImage(i, present[i] == u'1' ? picture() : QImage());
    }
}

// Steps forward (or back) until the slider stops; returns the indexes shown on the way.
QList<int> walk(TImageSlider& slider, bool forward, int limit = 10)
{
    QList<int> shown{slider.currentIndex()};
    for (int i = 0; i < limit && (forward ? slider.next() : slider.previous()); ++i)
        shown << slider.currentIndex();
    return shown;
}
} // namespace

class TestImageSlider : public QObject
{
    Q_OBJECT

private slots:
    void skipsEmptiesAndStopsAtEnds_data();
    void skipsEmptiesAndStopsAtEnds();
    void withoutSkipVisitsAllAndWraps();
    void picturesArrivingAndLeaving();
    void keysFollowDirection_data();
    void keysFollowDirection();
    void doubleClickAndCaption();
};

void TestImageSlider::skipsEmptiesAndStopsAtEnds_data()
{
    QTest::addColumn<QString>("present");
    QTest::addColumn<QList<int>>("forward");  // from showFirst
    QTest::addColumn<QList<int>>("backward"); // from the last stop
    QTest::newRow("all four") << u"1111"_s << QList<int>{0, 1, 2, 3} << QList<int>{3, 2, 1, 0};
    QTest::newRow("obverse and reverse: two stops") << u"1100"_s << QList<int>{0, 1} << QList<int>{1, 0};
    QTest::newRow("gaps between") << u"1010"_s << QList<int>{0, 2} << QList<int>{2, 0};
    QTest::newRow("first missing") << u"0101"_s << QList<int>{1, 3} << QList<int>{3, 1};
    QTest::newRow("only one") << u"0010"_s << QList<int>{2} << QList<int>{2};
    QTest::newRow("none") << u"0000"_s << QList<int>{-1} << QList<int>{-1};
}

void TestImageSlider::skipsEmptiesAndStopsAtEnds()
{
    QFETCH(QString, present);
    QFETCH(QList<int>, forward);
    QFETCH(QList<int>, backward);
    TImageSlider slider;
    slider.setSkipEmpty(true);
    fill(slider, present);
    slider.showFirst();
    QCOMPARE(walk(slider, true), forward);
    // Stopped at the end: no wrap to the start.
    QVERIFY(!slider.canGoNext());
    QVERIFY(!slider.next());
    QCOMPARE(slider.currentIndex(), forward.last());
    QCOMPARE(walk(slider, false), backward);
    QVERIFY(!slider.canGoPrevious());
    // An empty image cannot be shown directly either.
    const int empty = present.indexOf(u'0');
    if (empty >= 0)
        QVERIFY(!slider.setCurrentIndex(empty));
}

void TestImageSlider::withoutSkipVisitsAllAndWraps()
{
    TImageSlider slider;
    fill(slider, u"1010"_s);
    slider.showFirst();
    QCOMPARE(slider.currentIndex(), 0);
    QCOMPARE(walk(slider, true, 5), (QList<int>{0, 1, 2, 3, 0, 1}));
    QVERIFY(slider.currentImage().isNull());
    QVERIFY(slider.setCurrentIndex(3));
    QVERIFY(slider.previous());
    QCOMPARE(slider.currentIndex(), 2);
    // Switching skipping on while an empty one shows moves to the first picture.
    QVERIFY(slider.setCurrentIndex(1));
    slider.setSkipEmpty(true);
    QCOMPARE(slider.currentIndex(), 0);
}

void TestImageSlider::picturesArrivingAndLeaving()
{
    TImageSlider slider;
    slider.setSkipEmpty(true);
    fill(slider, u"0000"_s);
    slider.showFirst();
    QSignalSpy changes(&slider, &TImageSlider::currentChanged);
    QCOMPARE(slider.currentIndex(), -1);
    // Nothing shown: the first picture to arrive shows.
    slider.setImage(2, picture());
    QCOMPARE(slider.currentIndex(), 2);
    // An earlier one arriving later does not move the slider.
    slider.setImage(0, picture());
    QCOMPARE(slider.currentIndex(), 2);
    // The shown picture going away moves to the next stop, or back when there is none after.
    slider.setImage(3, picture());
    slider.clearImage(2);
    QCOMPARE(slider.currentIndex(), 3);
    slider.clearImage(3);
    QCOMPARE(slider.currentIndex(), 0);
    slider.clearImages();
    QCOMPARE(slider.currentIndex(), -1);
    QCOMPARE(changes.count(), 4);
    QCOMPARE(changes.last().at(0).toInt(), -1);
    // Bytes that are no picture leave the image empty.
    slider.setImageBytes(1, QByteArray("not a picture"));
    QVERIFY(!slider.hasImage(1));
}

void TestImageSlider::keysFollowDirection_data()
{
    QTest::addColumn<bool>("rightToLeft");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("expected");
    // Starting on image 1 of "1111".
    QTest::newRow("right goes on") << false << int(Qt::Key_Right) << 2;
    QTest::newRow("left goes back") << false << int(Qt::Key_Left) << 0;
    QTest::newRow("right-to-left: right goes back") << true << int(Qt::Key_Right) << 0;
    QTest::newRow("right-to-left: left goes on") << true << int(Qt::Key_Left) << 2;
    QTest::newRow("home") << false << int(Qt::Key_Home) << 0;
    QTest::newRow("end") << false << int(Qt::Key_End) << 3;
}

void TestImageSlider::keysFollowDirection()
{
    QFETCH(bool, rightToLeft);
    QFETCH(int, key);
    QFETCH(int, expected);
    TImageSlider slider;
    slider.setLayoutDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    slider.setSkipEmpty(true);
    fill(slider, u"1111"_s);
    QVERIFY(slider.setCurrentIndex(1));
    QTest::keyClick(&slider, Qt::Key(key));
    QCOMPARE(slider.currentIndex(), expected);
}

void TestImageSlider::doubleClickAndCaption()
{
    TImageSlider slider;
    slider.setSkipEmpty(true);
    fill(slider, u"0110"_s);
    slider.resize(300, 200);
    slider.showFirst();
    QCOMPARE(slider.currentCaption(), u"Caption 1"_s);
    QSignalSpy doubleClicks(&slider, &TImageSlider::doubleClicked);
    QTest::mouseDClick(&slider, Qt::LeftButton, {}, QPoint(150, 80));
    QCOMPARE(doubleClicks.count(), 1);
    QCOMPARE(doubleClicks.first().at(0).toInt(), 1);
    // A click on the arrow at the end edge steps on.
    QTest::mouseClick(&slider, Qt::LeftButton, {}, QPoint(300 - 12, 80));
    QCOMPARE(slider.currentIndex(), 2);
    QCOMPARE(slider.indexOf(u"image2"_s), 2);
    QCOMPARE(slider.name(3), u"image3"_s);
}

QTEST_MAIN(TestImageSlider)
#include "tst_imageslider.moc"
