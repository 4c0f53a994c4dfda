#pragma once

#include "uGridFilter.h"
#include "uGridTypes.h"

#include <QHash>
#include <QPointer>
#include <QWidget>

#include <functional>

class QVBoxLayout;
class QAbstractItemModel;
class TEditorItem;
class TGrid;
class TGridColumn;
class TGridColumns;
class TGridFilterBar;
class TGridFindPanel;
class TGridModel;
class TGridSource;
struct TGridGroupNode;

// What lies under a point of a view.
struct TGridHitInfo
{
    TGridHitKind Kind = TGridHitKind::None;
    int SourceRow = -1;                    // a record's row in the source model
    TGridColumn* Column = nullptr;         // the column (card row) under the point
    const TGridGroupNode* Group = nullptr; // group rows and footers
    int DisplayRow = -1;                   // table views: the row in display order
};
Q_DECLARE_METATYPE(TGridHitInfo)

// A view of a grid (TGrid): a table or a card view over the grid's source, with its own columns,
// filter, find panel, sort, grouping, summaries and selection, and the grid's current row. Views
// are read-only in place: a program edits records through its own commands.
class TGridView : public QWidget
{
    Q_OBJECT
public:
    ~TGridView() override;

    TGrid* grid() const { return m_grid; }
    QString name() const { return objectName(); }
    // The level caption (shown on the grid's level tabs).
    QString caption() const { return m_caption; }
    void setCaption(const QString& caption);

    TGridColumns* columns() const { return m_columns; }
    TGridModel* model() const { return m_model; }
    TGridSource* source() const { return m_source; }

    // A column (in a card view a row) bound to a field of the source.
    TGridColumn* addColumn(const QString& name, const QString& fieldName, const QString& caption = {});
    // The presentation of a column's values: its text (the column's formatter), its painting, and
    // whether it is a picture. The item belongs to the program and must outlive the view.
    void setEditorItem(TGridColumn* column, const TEditorItem* item);
    const TEditorItem* editorItem(const TGridColumn* column) const;

    // Options.
    void setMultiSelect(bool on);
    bool multiSelect() const { return m_multiSelect; }
    // Hints with the full text of a cut cell.
    void setCellHints(bool on) { m_cellHints = on; }
    bool cellHints() const { return m_cellHints; }
    // Shown when the view has no rows; empty takes the grid's text.
    void setEmptyText(const QString& text);
    QString emptyText() const;

    // Selection: rows of the source, kept while the view is out of sight.
    int selectedCount() const;
    // In display order.
    QList<int> selectedSourceRows() const;
    bool isSelected(int sourceRow) const;
    void selectAll();
    void clearSelection();
    void setSelectedSourceRows(const QList<int>& rows);

    // The grid's current row (the view's own when it has a source of its own), -1 for none.
    int currentSourceRow() const;
    // Moves the current row as the user would: the grid tells the program.
    void setCurrentSourceRow(int sourceRow);
    // Scrolls the current row into sight; with openGroups the groups that hold it are opened.
    virtual void makeCurrentVisible(bool openGroups = true) = 0;

    // Find panel: shown on command, incremental.
    TGridFindPanel* findPanel();
    void showFindPanel();
    void hideFindPanel();
    bool isFindPanelVisible() const;
    QString findText() const;
    void setFindText(const QString& text);

    // The view's own filter, on top of the source's.
    TGridFilter filter() const;
    void setFilter(const TGridFilter& filter);
    // The filter as users read it.
    QString filterDisplayText() const;
    // Opens the filter builder on this view's filter; true when it was applied.
    bool showFilterBuilder();

    // Columns (card rows) a user may show, hide and move.
    void showColumnChooser();

    // The layout as text (see TGridLayout); restoring passes over what it does not know.
    QString saveLayout() const;
    bool restoreLayout(const QString& text);

    // What lies under a point of this widget.
    virtual TGridHitInfo hitTest(const QPoint& pos) const = 0;
    // The shown text of a cell (the column's formatter or the source's text).
    QString displayText(int sourceRow, const TGridColumn* column) const;

    // Replaces QDialog::exec() of the dialogs the view opens (filter builder, column chooser), so
    // that tests can answer them.
    static void setDialogRunner(std::function<int(QWidget* dialog)> runner);
    static int runDialog(QWidget* dialog);

signals:
    void doubleClicked(const TGridHitInfo& hit);
    void contextMenuRequested(const TGridHitInfo& hit, const QPoint& globalPos);
    void selectionChanged();
    void findPanelVisibilityChanged(bool visible);
    void filterChanged();

protected:
    TGridView(TGrid* grid, const QString& name, QAbstractItemModel* ownModel, QWidget* parent);

    // Where a view puts its widgets: between the find panel and the filter bar.
    QVBoxLayout* contentLayout() const { return m_content; }
    // Layout settings of the view itself, kept with its columns.
    virtual void saveSettings(QMap<QString, QString>& settings) const;
    virtual void restoreSettings(const QMap<QString, QString>& settings);
    // The grid's current row moved (by the program or another view).
    virtual void currentRowMoved(int sourceRow) = 0;
    // Texts of the grid changed.
    virtual void retranslate();

    // Selection as the user changes it; each tells the view once.
    void selectOnly(int sourceRow);
    void toggleSelected(int sourceRow);
    // Data rows between two display rows of the given list, both ends included.
    void selectRows(const QList<int>& sourceRows, bool add);
    void selectionTouched();
    // The row a shift-selection starts from.
    int anchorRow() const { return m_anchor; }
    void setAnchorRow(int sourceRow) { m_anchor = sourceRow; }

    // The find panel's words, case-folded, for highlighting.
    QStringList highlightWords() const;
    bool ownSource() const { return m_ownSource; }

private:
    friend class TGrid;
    void updateFilterBar();

    TGrid* m_grid;
    QString m_caption;
    TGridSource* m_source = nullptr;
    bool m_ownSource = false;
    int m_ownCurrent = -1;
    TGridColumns* m_columns = nullptr;
    TGridModel* m_model = nullptr;
    QHash<int, const TEditorItem*> m_items;
    bool m_multiSelect = true;
    bool m_cellHints = true;
    QString m_emptyText;
    int m_anchor = -1;
    QVBoxLayout* m_layout = nullptr;
    QVBoxLayout* m_content = nullptr;
    TGridFindPanel* m_findPanel = nullptr;
    TGridFilterBar* m_filterBar = nullptr;
};
