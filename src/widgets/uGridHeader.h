#pragma once

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QPointer>

class TGridColumn;
class TGridTableView;

// The header's own model: one section per column of the view and no rows, so that the header
// never follows the view's row changes.
class TGridHeaderModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit TGridHeaderModel(TGridTableView* view);
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    // Sections again from the view's columns.
    void reset();
    void captionsChanged();

private:
    TGridTableView* m_view;
    int m_count = 0;
};

// The column header of a table view: captions cut with an ellipsis, the sort order of every
// sorted column with its priority, clicks that sort, drags that move a column or, dragged up or
// down out of the header, carry it to the group-by panel; dropping a group box on it ungroups that
// column at the place of the drop.
class TGridHeader : public QHeaderView
{
    Q_OBJECT
public:
    explicit TGridHeader(TGridTableView* view, QWidget* parent);

    TGridColumn* columnAt(int x) const;
    int preferredHeight() const;
    // The place a drop at x would give a column among the shown ones (a position of the set).
    int dropPosition(int x) const;
    // Width the caption and the sort mark need.
    int captionWidth(int logicalIndex) const { return sectionSizeFromContents(logicalIndex).width(); }

protected:
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;
    QSize sectionSizeFromContents(int logicalIndex) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    TGridTableView* m_view;
    int m_pressed = -1;
    QPoint m_pressPos;
    bool m_dragged = false;
    int m_dropMarker = -1; // x of the marker while a group box hovers
};
