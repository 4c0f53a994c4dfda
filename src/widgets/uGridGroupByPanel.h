#pragma once

#include <QWidget>

class TGridColumn;
class TGridTableView;

// The panel above a table view's header that holds its grouping: a box per grouped column, in a
// staircase by level, and the panel's text. A header dropped in groups by that column at the
// place of the drop; a box dragged along the panel changes its level, dragged out it ungroups; a
// click on a box turns its order.
class TGridGroupByPanel : public QWidget
{
    Q_OBJECT
public:
    explicit TGridGroupByPanel(TGridTableView* view);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    // The box of a grouping level, in this widget's coordinates.
    QRect boxRect(int level) const;
    int levelAt(const QPoint& pos) const;
    // The level a drop at pos would give.
    int dropLevel(const QPoint& pos) const;
    void refresh();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    int boxHeight() const;
    int boxWidth(const TGridColumn* column) const;
    QList<TGridColumn*> groups() const;

    TGridTableView* m_view;
    int m_pressed = -1;
    QPoint m_pressPos;
    int m_dropLevel = -1; // marker while a column hovers
};
