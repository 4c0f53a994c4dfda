#pragma once

#include "uGridCardLayout.h"
#include "uGridView.h"

#include <QAbstractScrollArea>
#include <QImage>
#include <QPixmap>
#include <QSet>

class TGridCardArea;

// A card view: a card per row, every card of one size, flowing left to right and down the view
// (scrolled vertically), optionally stretched to fill the width. A card shows its rows (the view's
// columns): pictures, a title, captioned texts, and rows standing at its side. Rows may be hidden
// and moved by the user (the chooser, the row caption's menu, dragging a caption); empty rows may
// be left out. Pictures are decoded off the main thread, only for cards on screen.
class TGridCardView : public TGridView
{
    Q_OBJECT
public:
    TGridCardView(TGrid* grid, const QString& name, QAbstractItemModel* ownModel = nullptr,
                  QWidget* parent = nullptr);
    ~TGridCardView() override;

    void setCardWidth(int width);
    int cardWidth() const { return m_cardWidth; }
    // Space around and between cards.
    void setCardIndent(int indent);
    int cardIndent() const { return m_indent; }
    // Cards widen to share the view's width.
    void setFillWidth(bool on);
    bool fillWidth() const { return m_fill; }
    // Lines between columns of cards, 0 for none.
    void setSeparatorWidth(int width);
    int separatorWidth() const { return m_separator; }
    // Rows with nothing to show are left out of a card.
    void setEmptyRowsHidden(bool on);
    bool emptyRowsHidden() const { return m_hideEmpty; }
    // The user may hide and move rows.
    void setRowsCustomizable(bool on) { m_customizable = on; }
    bool rowsCustomizable() const { return m_customizable; }
    // Behind the cards (tiled, scrolling with them), and behind each card's content (stretched).
    void setBackgroundPicture(const QImage& picture);
    void setCardBackgroundPicture(const QImage& picture);
    QImage backgroundPicture() const { return m_background; }
    QImage cardBackgroundPicture() const { return m_cardBackground; }
    // Picture rows no taller than the card is wide.
    void setPictureHeightLimitedToCardWidth(bool on);
    // Pictures at the card's side as tall as they are wide.
    void setSquareSidePictures(bool on);
    // Height in lines of a picture row that sets none.
    void setDefaultPictureLines(int lines);
    // Ctrl and the wheel set the card width: down times downFactor, up times upFactor, rounded to
    // the nearest (a tie to the even number), never below minWidth.
    void setWheelZoom(bool on, double downFactor = 0.9, double upFactor = 1.1, int minWidth = 40);
    bool wheelZoom() const { return m_zoom; }

    // The settings, columns and presentation of another card view (a view made from a template).
    void copySettingsFrom(const TGridCardView& other);

    // Geometry, in this widget's coordinates; empty when not on screen.
    int cardHeight() const;
    QRect cardRect(int sourceRow) const;
    QRect rowRect(int sourceRow, const TGridColumn* column) const;
    QRect captionRect(int sourceRow, const TGridColumn* column) const;
    TGridHitInfo hitTest(const QPoint& pos) const override;
    QWidget* cardsViewport() const;
    void makeCurrentVisible(bool openGroups = true) override;
    void scrollToSourceRow(int sourceRow);

signals:
    void cardWidthChanged(int width);

protected:
    void currentRowMoved(int sourceRow) override;
    void saveSettings(QMap<QString, QString>& settings) const override;
    void restoreSettings(const QMap<QString, QString>& settings) override;
    void retranslate() override;
    bool event(QEvent* event) override;

private:
    friend class TGridCardArea;

    TGridCardArea* m_area;
    int m_cardWidth = 200;
    int m_indent = 7;
    bool m_fill = true;
    int m_separator = 1;
    bool m_hideEmpty = false;
    bool m_customizable = true;
    QImage m_background;
    QImage m_cardBackground;
    bool m_limitPictures = false;
    bool m_squareSide = false;
    int m_pictureLines = 5;
    bool m_zoom = false;
    double m_zoomDown = 0.9;
    double m_zoomUp = 1.1;
    int m_zoomMin = 40;
};

// The scrolled area of a card view. Geometry and painting in uGridCardArea.cpp, mouse and keyboard
// in uGridCardInput.cpp.
class TGridCardArea : public QAbstractScrollArea
{
    Q_OBJECT
public:
    explicit TGridCardArea(TGridCardView* view);

    void relayout();
    // Card size and flow.
    int cardWidthShown() const;
    int cardHeight() const { return m_layout.cardHeight(); }
    int columnCount() const;
    // A card by its place in the view's row order, in viewport coordinates.
    QRect cardRect(int position) const;
    int positionAt(const QPoint& pos) const;
    std::vector<TGridCardRowRect> rowsOf(int position) const;
    TGridHitInfo hitTestViewport(const QPoint& pos) const;
    void scrollToPosition(int position);
    void moveFocus(int position, Qt::KeyboardModifiers modifiers, bool mouse);
    int focusPosition() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void paintCard(QPainter& painter, int position, const QRect& rect, QSet<QString>& wanted);
    void paintPicture(QPainter& painter, int sourceRow, const TGridColumn* column, const QRect& rect,
                      QSet<QString>& wanted);
    QString pictureKey(int sourceRow, const TGridColumn* column, const QSize& size) const;
    bool isEmptyValue(int sourceRow, const TGridColumn* column) const;
    void showRowMenu(TGridColumn* column, const QPoint& globalPos);

    TGridCardView* m_view;
    TGridCardLayout m_layout;
    int m_lineHeight = 0;
    quint64 m_pictureGeneration = 0;
    QPixmap m_backgroundTile;
    qint64 m_backgroundSource = 0;
    // Dragging a row caption to move the row.
    TGridColumn* m_movingRow = nullptr;
    QPoint m_pressPos;
    int m_dropRow = -1;      // index among the card's rows before which the row goes
    int m_dropPosition = -1; // the card under the pointer
    bool m_rowDragging = false;
};
