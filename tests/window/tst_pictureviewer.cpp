// The viewer's rules: the window size from the details pane (limited to the screen) and from the
// item editor (not limited), fit and wheel zoom within their bounds.

#include "uPictureViewer.h"

#include <QtTest>

class TstPictureViewer : public QObject
{
    Q_OBJECT

private slots:
    void windowSize_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<QSize>("screen");
        QTest::addColumn<QSize>("expected");
        const int pane = int(TPictureViewerSource::DetailsPane);
        const int editor = int(TPictureViewerSource::ItemEditor);
        QTest::newRow("pane, small") << pane << QSize(400, 300) << QSize(1920, 1080) << QSize(425, 355);
        QTest::newRow("pane, too wide") << pane << QSize(4000, 300) << QSize(1920, 1080) << QSize(1870, 355);
        QTest::newRow("pane, too high") << pane << QSize(400, 3000) << QSize(1920, 1080) << QSize(425, 1030);
        QTest::newRow("editor, not limited") << editor << QSize(4000, 3000) << QSize(1920, 1080) << QSize(4025, 3055);
        QTest::newRow("tiny picture keeps the minimum") << editor << QSize(1, 1) << QSize(1920, 1080) << QSize(50, 56);
        QTest::newRow("pane, unknown screen") << pane << QSize(4000, 300) << QSize() << QSize(4025, 355);
    }

    void windowSize()
    {
        QFETCH(int, source);
        QFETCH(QSize, picture);
        QFETCH(QSize, screen);
        QFETCH(QSize, expected);
        QCOMPARE(PictureViewerWindowSize(TPictureViewerSource(source), picture, 20, screen), expected);
    }

    void zoom_data()
    {
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<QSize>("area");
        QTest::addColumn<double>("fit");
        QTest::newRow("larger picture shrinks") << QSize(2000, 1000) << QSize(500, 500) << 0.25;
        QTest::newRow("small picture stays at 100%") << QSize(100, 50) << QSize(500, 500) << 1.0;
        QTest::newRow("tall") << QSize(1000, 4000) << QSize(800, 400) << 0.1;
        QTest::newRow("extreme strip clamps") << QSize(100000, 1) << QSize(100, 100) << MinPictureZoom;
        QTest::newRow("empty picture") << QSize() << QSize(100, 100) << 1.0;
    }

    void zoom()
    {
        QFETCH(QSize, picture);
        QFETCH(QSize, area);
        QFETCH(double, fit);
        QCOMPARE(FitPictureZoom(picture, area), fit);
    }

    void wheelAndSlider()
    {
        QCOMPARE(WheelPictureZoom(1.0, 1), 1.25);
        QCOMPARE(WheelPictureZoom(1.25, -1), 1.0);
        QCOMPARE(WheelPictureZoom(1.0, 100), MaxPictureZoom);
        QCOMPARE(WheelPictureZoom(1.0, -100), MinPictureZoom);
        QCOMPARE(ZoomToPercent(1.0), 100);
        QCOMPARE(ZoomToPercent(0.0), 5);
        QCOMPARE(PercentToZoom(250), 2.5);
        QCOMPARE(PercentToZoom(0), MinPictureZoom);
    }
};

QTEST_GUILESS_MAIN(TstPictureViewer)
#include "tst_pictureviewer.moc"
