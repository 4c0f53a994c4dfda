#pragma once

#include "uGridView.h"

#include <QAbstractScrollArea>
#include <QHash>

class TGridHeader;
class TGridTableView;
class TGridModel;
struct TGridRow;

// The part of a table view under its group-by panel: the header, the rows, the footer. Rows are
// found by arithmetic over the model's display rows: the vertical scroll bar counts rows, and only
// the rows on screen are measured and painted. Painting and geometry live in uGridTableArea.cpp,
// mouse and keyboard in uGridTableInput.cpp.
class TGridTableArea : public QAbstractScrollArea
{
    Q_OBJECT
public:
    explicit TGridTableArea(TGridTableView* view);

    TGridHeader* header() const { return m_header; }
    TGridModel* model() const;

    // Geometry, in viewport coordinates.
    int indentWidth() const;
    int gutterWidth() const;
    int lineHeight() const;
    int rowHeight(int displayIndex) const;
    int firstRow() const;
    QRect rowRect(int displayIndex) const;
    int displayIndexAt(int y) const;
    // A column's cell in a row's rectangle (empty for a column not shown).
    QRect cellRect(const QRect& row, const TGridColumn* column) const;
    int headerLeft() const;
    TGridHitInfo hitTestViewport(const QPoint& pos) const;

    // Focus: the current data row, or a group row.
    int focusIndex() const;
    void moveFocus(int displayIndex, Qt::KeyboardModifiers modifiers, bool mouse);
    void followCurrentRow();
    TGridColumn* focusedColumn() const;
    void setFocusedColumn(TGridColumn* column);

    void relayout();
    void syncHeader();
    void updateGeometries();
    void scrollToIndex(int displayIndex);
    void bestFit(TGridColumn* column);
    QString focusGroupPath() const { return m_focusGroup; }

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
    friend class TGridFooterBar;
    void paintRow(QPainter& painter, int displayIndex, const TGridRow& row, const QRect& rect);
    void paintDataRow(QPainter& painter, const TGridRow& row, const QRect& rect, bool focused);
    void paintGroupRow(QPainter& painter, const TGridRow& row, const QRect& rect, bool focused);
    void paintGroupFooter(QPainter& painter, const TGridRow& row, const QRect& rect);
    void paintGutter(QPainter& painter, const QRect& rect, int levels);
    QRect expandButtonRect(const TGridRow& row, const QRect& rect) const;
    // Sizes of the shown sections: their widths, or shares of the view's width.
    void fitColumns();
    void onSectionResized(int logical, int oldSize, int newSize);
    void onSectionMoved(int logical, int oldVisual, int newVisual);
    int nextFocusable(int from, int step) const;
    int rowsPerPage() const;
    QString cellText(const TGridRow& row, const TGridColumn* column) const;

    TGridTableView* m_view;
    TGridHeader* m_header;
    QWidget* m_corner;
    QWidget* m_footer;
    mutable QHash<int, int> m_heights;
    bool m_syncing = false;
    QString m_focusGroup; // path of the focused group row, empty when a data row has the focus
    int m_focusColumn = -1;
    int m_pressIndex = -1;
    bool m_dragSelecting = false;
};

// The view's footer, under the rows: the footer summaries of each column under it.
class TGridFooterBar : public QWidget
{
    Q_OBJECT
public:
    TGridFooterBar(TGridTableView* view, TGridTableArea* area);
    int preferredHeight() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    bool event(QEvent* event) override;

private:
    QStringList textsOf(const TGridColumn* column) const;

    TGridTableView* m_view;
    TGridTableArea* m_area;
};
