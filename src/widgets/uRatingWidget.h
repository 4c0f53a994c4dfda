#pragma once

#include <QVariant>
#include <QWidget>

class QPainter;

// Stars for a rating from 0 to starCount in steps of `step` (0.5: half stars). Null shows no
// star. A click picks the star (its left half a half star), Left/Right and the wheel step,
// Home empties. Paints from the palette: filled stars in the highlight colour.
class TRatingWidget : public QWidget
{
    Q_OBJECT
public:
    explicit TRatingWidget(QWidget* parent = nullptr);

    int starCount() const { return m_stars; }
    void setStarCount(int count);
    double step() const { return m_step; }
    void setStep(double step) { m_step = step > 0 ? step : 1.0; }
    QVariant value() const { return m_value; }
    void setValue(const QVariant& value);

    QSize sizeHint() const override;

    // Draws `count` stars of `size` from the start edge of rect, filled up to value.
    static void paintStars(QPainter* painter, const QRect& rect, Qt::LayoutDirection direction, int count,
                           int size, double value, const QColor& fill, const QColor& outline);
    // The value a point at x picks in stars drawn as paintStars does (0 .. count, by step).
    static double valueAt(const QRect& rect, Qt::LayoutDirection direction, int count, int size, int x,
                          double step);
    // The star size for a line of text in font metrics.
    static int starSize(const QFontMetrics& metrics);

signals:
    void valueChanged(const QVariant& value);
    // The user picked a value (click, key, wheel).
    void valueChosen();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    QRect starsRect() const;
    void choose(const QVariant& value);

    int m_stars = 5;
    double m_step = 0.5;
    QVariant m_value;
    double m_hover = -1;
};
