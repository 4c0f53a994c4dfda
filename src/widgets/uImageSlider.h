#pragma once

#include <QImage>
#include <QPixmap>
#include <QWidget>

// Images in a fixed order (obverse, reverse, side, in a box ...), one shown at a time, with
// arrows to step, dots for the stops, and an optional caption under the picture.
//
// With skipEmpty on, stepping passes over every image that has no picture and stops at the ends
// of the list: a set with only an obverse and a reverse has two stops. With it off every image is
// a stop (an empty one shows the "no picture" text) and stepping wraps around at the ends.
//
// The program fills the images (setImage with a decoded picture, or setImageBytes), calls
// showFirst() to start at the first stop, and hears currentChanged (-1 when nothing is shown) and
// doubleClicked. Left/Right, Home/End and the wheel step too; arrows and keys follow right-to-left.
class TImageSlider : public QWidget
{
    Q_OBJECT
public:
    explicit TImageSlider(QWidget* parent = nullptr);

    // Appends an empty image; returns its index.
    int addImage(const QString& name, const QString& caption = {});
    int count() const { return int(m_images.size()); }
    int indexOf(const QString& name) const;
    QString name(int index) const;

    void setImage(int index, const QImage& image);
    // Decodes encoded bytes (PNG, JPEG ...); bytes that are no picture leave the image empty.
    void setImageBytes(int index, const QByteArray& bytes);
    void clearImage(int index);
    // Empties every image; nothing is shown until a picture arrives or showFirst().
    void clearImages();
    QImage image(int index) const;
    bool hasImage(int index) const;
    void setCaption(int index, const QString& caption);
    QString caption(int index) const;

    bool skipEmpty() const { return m_skipEmpty; }
    void setSkipEmpty(bool on);
    bool captionVisible() const { return m_captionVisible; }
    void setCaptionVisible(bool on);

    // -1 when nothing is shown.
    int currentIndex() const { return m_current; }
    // Shows index (nothing for -1). With skipEmpty an empty image is not shown: false then.
    bool setCurrentIndex(int index);
    // Goes to the first stop (the first image with a picture under skipEmpty).
    void showFirst();
    bool next();
    bool previous();
    bool canGoNext() const;
    bool canGoPrevious() const;
    QImage currentImage() const;
    QString currentCaption() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void currentChanged(int index);
    void doubleClicked(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Image
    {
        QString name;
        QString caption;
        QImage image;
    };
    bool isStop(int index) const;
    int stepFrom(int from, int direction) const;
    void show(int index);
    // The arrow areas on the visual left and right.
    QRect arrowRect(bool visualLeft) const;
    QRect pictureRect() const;
    int dotsHeight() const;
    int captionHeight() const;

    std::vector<Image> m_images;
    int m_current = -1;
    bool m_skipEmpty = false;
    bool m_captionVisible = true;
    int m_hoverArrow = 0; // -1 visual left, 1 visual right
    QPixmap m_scaled;
    int m_scaledFor = -1;
};
