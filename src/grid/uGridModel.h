#pragma once

#include "uGridFilter.h"
#include "uGridGroupNode.h"
#include "uGridMatcher.h"
#include "uGridSelection.h"
#include "uGridSource.h"
#include "uGridSummaries.h"
#include "uGridTypes.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QPointer>
#include <QSet>

#include <memory>
#include <unordered_map>
#include <vector>

class TGridColumn;
class TGridColumns;
class TGridKeyColumn;

// One row of a view in display order.
struct TGridRow
{
    TGridRowKind Kind = TGridRowKind::Data;
    // The group of a group row or group footer; for a data row the deepest group holding it.
    const TGridGroupNode* Group = nullptr;
    int SourceRow = -1; // data rows
    int Position = -1;  // data rows: index in the view's row order
    int Level = 0;      // indentation: a group's level, or the number of group levels above a row
    bool isValid() const { return Group != nullptr; }
};

// The rows of one view over a shared source (TGridSource): the view's filter and find text, its
// multi-column sort (stable: equal keys keep the source order), its grouping into nested groups
// with summaries, the footer summaries, the groups' expanded state and the view's selection.
//
// As a QAbstractItemModel it is a tree: group rows hold their sub-groups or, at the deepest level,
// the data rows, followed by a footer row when group footers are on. Columns are the view's
// columns by id. Views read it through the direct calls below (display rows, texts), which never
// make a QModelIndex per row.
//
// Keys are read once into the shared key columns; the row order is a vector of source rows and a
// group is a range of it, so memory grows with the number of groups, not with rows. Source inserts,
// removes and changes of a few rows are patched in place with row-level notifications; anything
// larger rebuilds in one pass.
class TGridModel : public QAbstractItemModel, private TGridSourceClient
{
    Q_OBJECT
public:
    enum Role
    {
        RowKindRole = Qt::UserRole + 100, // int(TGridRowKind)
        SourceRowRole,                    // data rows
        GroupLevelRole                    // group rows and footers
    };

    TGridModel(TGridSource* source, TGridColumns* columns, QObject* parent = nullptr);
    ~TGridModel() override;

    TGridSource* source() const { return m_source; }
    TGridColumns* columns() const { return m_columns; }

    // Off: the columns' group indexes are ignored (card views).
    void setGroupingEnabled(bool enabled);
    bool groupingEnabled() const { return m_groupingEnabled; }
    // A footer row closes every group (in the tree, and in the display rows while expanded).
    void setGroupFootersVisible(bool visible);
    bool groupFootersVisible() const { return m_groupFooters; }

    // The view's own filter, on top of whatever the source shows.
    const TGridFilter& filter() const { return m_filter; }
    void setFilter(const TGridFilter& filter);
    // Rows whose shown texts in the visible columns hold every word (see TGridMatcher::findWords).
    QString findText() const { return m_findText; }
    QStringList findWords() const { return m_findWords; }
    void setFindText(const QString& text);
    // The find panel opened: the shown texts of the visible columns are read ahead, one column per
    // call of prepareFindStep() (true when all are read) or all at once, so that keystrokes only
    // match. releaseFind() lets them go again.
    bool prepareFindStep();
    static constexpr int FindSliceRows = 20000;
    void prepareFind();
    void releaseFind();

    // Summaries. Group items are computed for every group, footer items over all rows shown.
    int addGroupSummary(const TGridSummaryItem& item);
    int addFooterSummary(const TGridSummaryItem& item);
    void clearSummaries();
    const std::vector<TGridSummaryItem>& groupSummaries() const { return m_groupItems; }
    const std::vector<TGridSummaryItem>& footerSummaries() const { return m_footerItems; }
    // Runs after the grid's own aggregates, for each group and then the footer.
    void setSummaryCallback(TGridSummaryCallback callback);
    QVariant footerValue(int item) const;
    QString footerText(int item) const;
    QVariant groupValue(const TGridGroupNode* group, int item) const;
    QString groupSummaryText(const TGridGroupNode* group, int item) const;

    // Data rows that pass the filter and the find text, in order.
    int visibleRowCount() const;
    int sourceRowAt(int position) const;
    // -1 when the row is filtered out.
    int positionOf(int sourceRow) const;

    // Groups.
    const TGridGroupNode* rootGroup() const { return m_root.get(); }
    int groupDepth() const { return int(m_groupColumns.size()); }
    // The column grouped at a level.
    TGridColumn* groupColumn(int level) const;
    // "Caption: value" of a group row, without its summaries.
    QString groupText(const TGridGroupNode* group) const;
    // The shown text of a group's key.
    QString groupValueText(const TGridGroupNode* group) const;
    QVariant groupKey(const TGridGroupNode* group) const;
    // A group by the keys of its levels, as text that outlives rebuilds, and back.
    QString groupPath(const TGridGroupNode* group) const { return pathOf(group); }
    const TGridGroupNode* groupOfPath(const QString& path) const { return nodeOfPath(path); }

    // Rows as a view shows them, with collapsed groups folded.
    int displayRowCount() const { return m_root ? m_root->DisplayCount : 0; }
    TGridRow displayRow(int index) const;
    // -1 when the row is filtered out or inside a collapsed group.
    int displayIndexOfSourceRow(int sourceRow) const;
    int displayIndexOfGroup(const TGridGroupNode* group) const;
    // The deepest group holding a data row, nullptr when it is not shown.
    const TGridGroupNode* groupOfSourceRow(int sourceRow) const;
    bool isExpanded(const TGridGroupNode* group) const { return group && group->Expanded; }
    void setExpanded(const TGridGroupNode* group, bool expanded);
    // New groups start expanded after expandAll() and collapsed after collapseAll().
    void expandAll();
    void collapseAll();
    // Expands the groups that hold a row.
    void expandTo(int sourceRow);
    // Every row in display order; expandAll shows collapsed groups' rows too. The visitor returns
    // false to stop.
    void walk(bool expandAll, const std::function<bool(const TGridRow&)>& visitor) const;

    // Cells.
    int sourceColumnOf(const TGridColumn* column) const;
    QString columnCaption(const TGridColumn* column) const;
    QVariant value(int sourceRow, const TGridColumn* column) const;
    QString displayText(int sourceRow, const TGridColumn* column) const;
    Qt::Alignment alignment(int sourceRow, const TGridColumn* column) const;

    TGridSelection& selection() { return m_selection; }
    const TGridSelection& selection() const { return m_selection; }

    // Work of the last rebuild, for measurements: milliseconds spent, and bytes held by the view's
    // row order and groups.
    qint64 rowMemory() const;

    // QAbstractItemModel
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // The model's row for a data row of the source, or of a group.
    QModelIndex indexOfSourceRow(int sourceRow, int column = 0) const;
    QModelIndex indexOfGroup(const TGridGroupNode* group, int column = 0) const;
    TGridRow rowOfIndex(const QModelIndex& index) const;

signals:
    // The rows shown changed: rebuilt, patched, expanded or collapsed. Views lay out again.
    void rowsChanged();
    // Values shown changed without a change of rows (texts, summaries).
    void contentChanged();
    void findTextChanged(const QString& text);
    void filterChanged();
    // The selection changed (through the selection calls of a view).
    void selectionChanged();

public:
    // Tells the model that a view changed the selection.
    void notifySelectionChanged();
    // A selection of up to this many rows survives a reset of the source through the rows' keys.
    static constexpr int SelectionKeyLimit = 5000;

private:
    // TGridSourceClient
    void sourceAboutToBeReset() override;
    void sourceReset() override;
    void sourceRowsAboutToBeInserted(int first, int last) override;
    void sourceRowsInserted(int first, int last) override;
    void sourceRowsAboutToBeRemoved(int first, int last) override;
    void sourceRowsRemoved(int first, int last) override;
    void sourceRowsMoved(int first, int last, int to) override;
    void sourceDataChanged(int firstRow, int lastRow, int firstColumn, int lastColumn) override;

    void onColumnsChanged(TGridColumnChanges changes);

    // Building (uGridModelBuild.cpp).
    struct SortKey
    {
        int SourceColumn = -1;
        bool Descending = false;
        TGridKeyColumn* Keys = nullptr;
    };
    enum class Rebuild
    {
        Filter, // filter or find changed: the sorted order stands
        Sort    // everything
    };
    void resolveColumns();
    void declareNeeds();
    void prepareKeys();
    bool keysStale() const;
    void compileMatcher();
    void sortRows();
    void filterRows();
    void buildGroups();
    void computeSummaries();
    void applyExpansion(TGridGroupNode* node);
    void updateDisplay(TGridGroupNode* node);
    void updateDisplayUp(TGridGroupNode* node);
    void buildAll(Rebuild what);
    // A rebuild inside layoutAboutToBeChanged/layoutChanged, persistent indexes kept.
    void relayout(Rebuild what, const std::function<int(int)>& translateRow = {});
    // The same in two halves, for changes told before and after they happen.
    void beginRelayout();
    void endRelayout(Rebuild what, const std::function<int(int)>& translateRow);
    bool rowLess(quint32 a, quint32 b) const;
    const std::vector<QString>& shownTexts(int sourceColumn, const TGridColumn* column);
    QString pathOf(const TGridGroupNode* group) const;
    QString levelKeyText(const TGridGroupNode* group) const;
    const TGridGroupNode* nodeOfPath(const QString& path) const;
    bool isLeaf(const TGridGroupNode* node) const { return node->Level + 1 == groupDepth(); }
    const TGridGroupNode* leafAt(int position) const;

    // Patching (uGridModelChanges.cpp).
    bool identity() const { return !m_sorting && !m_filtering; }
    void insertOne(quint32 row);
    void removeOne(quint32 row);
    bool inPlace(quint32 row) const;
    void shiftRanges(TGridGroupNode* node, const TGridGroupNode* onPath, int position, int delta);
    void renumberRows(quint32 from, qint64 delta);
    void refreshAfterPatch();

    // Tree helpers.
    TGridGroupNode* mutableNode(const TGridGroupNode* node) const
    {
        return const_cast<TGridGroupNode*>(node);
    }
    const TGridGroupNode* nodeOfIndex(const QModelIndex& index) const;
    int treeRowCount(const TGridGroupNode* node) const;
    QString summaryText(const TGridSummaryItem& item, const QVariant& value) const;

    QPointer<TGridSource> m_source;
    QPointer<TGridColumns> m_columns;
    bool m_groupingEnabled = true;
    bool m_groupFooters = false;

    TGridFilter m_filter;
    QString m_findText;
    QStringList m_findWords;
    TGridMatcher m_matcher;

    std::vector<TGridSummaryItem> m_groupItems;
    std::vector<TGridSummaryItem> m_footerItems;
    std::vector<QVariant> m_footerValues;
    TGridSummaryCallback m_summaryCallback;

    // Columns by id: the source column each is bound to (-1 none).
    std::vector<int> m_sourceColumns;
    std::vector<int> m_groupColumns; // column ids by level
    std::vector<SortKey> m_sortKeys; // group levels first, then the sort
    std::vector<std::pair<int, quint64>> m_keyGenerations;

    bool m_sorting = false;   // m_sorted holds the order
    bool m_filtering = false; // m_rows holds the rows shown
    std::vector<quint32> m_sorted;
    std::vector<quint32> m_rows;
    std::unique_ptr<TGridGroupNode> m_root;
    int m_sourceRows = 0;

    bool m_expandDefault = false;
    QSet<QString> m_expandExceptions; // paths whose state differs from the default

    struct ShownTexts
    {
        quint64 Generation = 0;
        std::vector<QString> Texts;
    };
    // By source column and column id; entries keep their place when others are added.
    std::unordered_map<qint64, ShownTexts> m_shownTexts;
    bool m_sortValid = false;
    bool m_findPrepared = false;
    QSet<int> m_needed;                           // source columns whose keys this view keeps
    QSet<int> m_keyedForRows;                     // of those, the ones that order, group, filter or find
    QSet<int> m_directSums;                       // summed columns too wide to keep keys of
    std::vector<std::pair<int, bool>> m_sortSpec; // source column, descending

    TGridSelection m_selection;
    struct SavedIndex
    {
        TGridRowKind Kind;
        int SourceRow;
        QString Path;
        int Column;
    };
    QModelIndexList m_savedFrom;
    std::vector<SavedIndex> m_saved;
    std::vector<int> m_savedGroups;
    QSet<QString> m_selectedKeys;
    bool m_resetting = false;
    bool m_removalRelayout = false;
    bool m_identityRemoval = false;
    bool m_identityInsert = false;
};
