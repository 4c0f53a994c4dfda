#pragma once

#include "uGridView.h"

#include <functional>

class QDrag;
class QMimeData;
class QHeaderView;
class TGridGroupByPanel;
class TGridTableArea;

// A table view: a header over rows in display order, with a group-by panel above (drag a header
// into it to group, a group box out of it to ungroup), group rows that show their summaries, group
// footers, a footer, multi-select, column auto-width, best fit, cell auto-height and cell hints.
// Rows are painted from the view's model by arithmetic: nothing is kept per row.
class TGridTableView : public TGridView
{
    Q_OBJECT
public:
    TGridTableView(TGrid* grid, const QString& name, QAbstractItemModel* ownModel = nullptr,
                   QWidget* parent = nullptr);
    ~TGridTableView() override;

    // Options.
    void setGroupByPanelVisible(bool visible);
    bool groupByPanelVisible() const;
    // The panel's text; empty takes the grid's text.
    void setGroupByText(const QString& text);
    QString groupByText() const;
    // Columns share the view's width (no horizontal scroll bar); off, each keeps its width.
    void setColumnAutoWidth(bool on);
    bool columnAutoWidth() const { return m_autoWidth; }
    // Rows grow to show wrapped texts (up to three lines).
    void setCellAutoHeight(bool on);
    bool cellAutoHeight() const { return m_autoHeight; }
    void setFooterVisible(bool visible);
    bool footerVisible() const { return m_footerVisible; }
    // Alignment of the footer's texts in their cells (left at first).
    void setFooterAlignment(Qt::Alignment alignment);
    Qt::Alignment footerAlignment() const { return m_footerAlignment; }
    void setGroupFootersVisible(bool visible);
    bool groupFootersVisible() const;
    // Group-row summaries under their columns rather than after the group's text.
    void setGroupSummariesAligned(bool on);
    bool groupSummariesAligned() const { return m_summariesAligned; }
    // Columns dragged into the group-by panel are hidden, and shown again when dragged out.
    void setHideGroupedColumns(bool on) { m_hideGrouped = on; }
    bool hideGroupedColumns() const { return m_hideGrouped; }
    // The header's own menu (sorting, grouping, hiding, best fit, chooser).
    void setHeaderMenuEnabled(bool on) { m_headerMenu = on; }
    bool headerMenuEnabled() const { return m_headerMenu; }

    // Commands.
    // Sizes a column (all visible columns for nullptr) to its content: the header and the rows on
    // screen plus a sample of the others.
    void applyBestFit(TGridColumn* column = nullptr);
    void expandAll();
    void collapseAll();
    TGridColumn* focusedColumn() const;
    void setFocusedColumn(TGridColumn* column);
    void makeCurrentVisible(bool openGroups = true) override;
    void scrollToSourceRow(int sourceRow);

    // Grouping as the user does it (the group-by panel, the header, its menu).
    void groupByColumn(TGridColumn* column, int level);
    void ungroupColumn(TGridColumn* column, int position = -1);
    // Sorting as a header click does it: alone, or added (shift), or removed (ctrl).
    void sortByColumn(TGridColumn* column, Qt::KeyboardModifiers modifiers);

    // Parts, for a program placing its own widgets and for tests.
    QWidget* groupByPanel() const;
    QRect groupByPanelGeometry() const;
    QHeaderView* header() const;
    QWidget* rowsViewport() const;
    // In this widget's coordinates; empty when not on screen.
    QRect rowRect(int sourceRow) const;
    QRect groupRowRect(const TGridGroupNode* group) const;
    QRect cellRect(int sourceRow, const TGridColumn* column) const;
    QRect headerRect(const TGridColumn* column) const;
    TGridHitInfo hitTest(const QPoint& pos) const override;

    // Runs QDrag::exec() for the column drags of the header and the group-by panel; tests put a
    // runner here that delivers the drop.
    static void setDragRunner(std::function<Qt::DropAction(QDrag*)> runner);
    static Qt::DropAction runDrag(QDrag* drag);
    static QString columnMimeType();
    // The drag data of a column, and the column of this view a drag carries (nullptr if none).
    static QMimeData* columnMime(const TGridColumn* column, const QString& origin);
    static TGridColumn* columnFromMime(const QMimeData* mime, const TGridColumns* columns);

signals:
    // The grouping changed, by the user or the program.
    void groupingChanged();
    // The group-by panel moved or changed size (the find panel came or went, the view resized).
    void groupByPanelGeometryChanged();

protected:
    void currentRowMoved(int sourceRow) override;
    void saveSettings(QMap<QString, QString>& settings) const override;
    void restoreSettings(const QMap<QString, QString>& settings) override;
    void retranslate() override;
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    friend class TGridTableArea;
    friend class TGridGroupByPanel;
    friend class TGridHeader;
    void onColumnsChanged(TGridColumnChanges changes);

    TGridGroupByPanel* m_panel;
    TGridTableArea* m_area;
    QString m_groupByText;
    bool m_autoWidth = true;
    bool m_autoHeight = false;
    bool m_footerVisible = false;
    bool m_summariesAligned = false;
    bool m_hideGrouped = true;
    bool m_headerMenu = true;
    Qt::Alignment m_footerAlignment = Qt::AlignLeft | Qt::AlignVCenter;
};
