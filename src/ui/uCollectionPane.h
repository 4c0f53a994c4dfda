#pragma once

#include "uCollectionViews.h"
#include "uTableViewCustomizations.h"
#include "uViewEditorItems.h"

#include <QPointer>
#include <QWidget>

#include <array>
#include <functional>
#include <optional>

class QLabel;
class QMenu;
class QSplitter;
class QToolButton;
class TDM_InternalData;
class TDatasetTableModel;
class TGrid;
class TGridModel;
class TGridCardView;
class TGridTableView;
class TPropertyGrid;

// The middle of the main window: the five collection views over one data source on qDS_Items
// (one focused record, a selection per view) and, at their side, the details pane pnlExtraInfo
// with the two thumbnails of the focused record and vgDetails, which edits it in place. The views
// are read-only; every command goes through the main window, which asks this pane for the active
// view's selection, focused cell and texts. Views are numbered as CurrentView stores them.
// (The grid's view class is not named here: the command table has an enumeration of that name.)
class TCollectionPane : public QWidget
{
    Q_OBJECT

public:
    TCollectionPane(TDM_InternalData& data, QWidget* parent = nullptr);
    ~TCollectionPane() override;

    TGrid* Grid() const { return m_grid; }
    // The view widget (a TGridTableView or a TGridCardView), nullptr for none.
    QWidget* View(TCollectionView view) const;
    TGridTableView* TableView(TCollectionView view) const;
    TGridCardView* CardView(TCollectionView view) const;
    TCollectionView ActiveView() const { return m_active; }
    // The rows the active view shows (group rows included), for walks that follow the view.
    const TGridModel* ActiveModel() const;
    TPropertyGrid* vgDetails() const { return m_details; }
    QLabel* imgFront() const { return m_imgFront; }
    QLabel* imgBack() const { return m_imgBack; }
    QWidget* pnlExtraInfo() const { return m_extraInfo; }
    QWidget* pnlThumbs() const { return m_thumbs; }
    QSplitter* splDetails() const { return m_splDetails; }
    QSplitter* splThumbs() const { return m_splThumbs; }
    QToolButton* btnTableViewCustomize() const { return m_btnCustomize; }
    QMenu* pmTableViewCustomize() const { return m_pmTableViewCustomize; }
    QMenu* pmQuickStatsCustomize() const { return m_pmQuickStatsCustomize; }
    const TViewEditorItems& EditorItems() const { return m_items; }

    // Moves the focused record in a view as a user's click does (the dataset follows).
    void FocusRecord(TCollectionView view, int sourceRow);
    // The records a view shows after the dataset's filter and its own.
    int ShownRecordCount(TCollectionView view) const;
    // The group-by panel of a table view in this widget's coordinates; empty for a card view.
    QRect GroupByPanelRect(TCollectionView view) const;
    // The columns (card rows) of a view bound to a field.
    bool ColumnVisible(TCollectionView view, const QString& field) const;
    void SetColumnVisible(TCollectionView view, const QString& field, bool visible);
    int GroupingDepth(TCollectionView view) const;

    // Brings a view to the front; a table view that was grouped anew opens all its groups.
    void SetActiveView(TCollectionView view);

    // The main window's seams, answered by the active view.
    QList<QVariant> SelectedKeys() const;
    int SelectedCount() const;
    std::optional<QString> FocusedCellText() const;
    QString SelectedRecordsText() const;

    // Commands on the active view.
    void SelectAll();
    void ClearSelection();
    void ApplyBestFit();
    void ExpandAll();
    void CollapseAll();
    void ShowColumnChooser();
    // actTableViewShowHorScroll on both table views.
    void SetShowHorScroll(bool checked);
    bool ColumnAutoWidth() const;
    // actQuickSearch: the find panel of the active view comes or goes.
    void ToggleFindPanel();
    bool FindPanelVisible() const;
    // The active view's find text as typed into its panel; ReadFindTexts reads the shown texts
    // ahead as opening the panel does, all at once (true when there was a view to read).
    void SetFindText(const QString& text);
    bool ReadFindTexts();
    // Replaces QDialog::exec() of the views' dialogs (filter builder, column chooser) for tests.
    static void SetDialogRunner(std::function<int(QWidget* dialog)> runner);
    // actAdvSearch: the filter builder of the active view.
    void ShowFilterBuilder();
    // actThumbSize for the view on show; the shelf view takes the last index each time it comes up.
    void ApplyThumbSize(int index);
    // One of the four configurations, on GridTableView.
    void ApplyConfiguration(TTableViewConfiguration configuration);
    // The captions, chooser offers and editors of the custom fields, and their details rows.
    void ApplyCustomFields();
    // actSortData: the sort dialog over the active view, when it is a table view.
    void SortData();
    // Drops the decoded pictures, so that the views read the thumbnails again (after they changed
    // in the file).
    void ReloadPictures();
    // Layouts under <root>\Layout\<view name>.
    void RestoreLayouts();
    void SaveLayouts() const;
    // Texts from the language: captions, summaries, the empty text, the group-by text, the menus.
    void Retranslate();
    // The views and the details follow the dataset's cursor; after a new collection or a read.
    void SyncCurrentRecord();
    // The database file changed: the picture workers read the new file.
    void DatabaseChanged();
    // Expands every group of both table views and places the customise button.
    void GroupingChanged();
    void PositionCustomizeButton();
    // actTableViewShowHorScroll, shown in both customise menus.
    void SetHorScrollAction(QAction* action);
    // The menu of the views' records.
    void SetContextMenu(QMenu* menu);
    // Opens the full-size picture of a field of the focused record (PhotoFront, PhotoBack); the
    // default shows the picture in a window of its own.
    void SetPictureViewer(std::function<void(const QString& field)> viewer) { m_viewer = std::move(viewer); }
    void OpenPicture(const QString& field);
    // The fields of the picture rows (turned over by actFlipACoin).
    void SetPictureFields(const QString& thumbsFront, const QString& thumbsBack, const QString& cardsFront,
                          const QString& cardsBack, const QString& shelvePhoto);

signals:
    // The user double-clicked a record: the item editor is wanted.
    void EditRequested();
    void SelectionChanged();
    void FindPanelVisibilityChanged();
    void ActiveViewChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;

private:
    void CreateViews();
    void CreateView(const TViewDesign& design);
    void CreateDetails();
    void CreateCustomizeButton();
    void FillCustomizeMenus();
    void CurrentRecordChanged(int row);
    void UpdateThumbnails(int row);
    void UpdateThumbWidths();
    QVariant FieldValue(int row, const QString& field) const;
    int FieldColumn(const QString& field) const;

    TDM_InternalData& m_data;
    TDatasetTableModel* m_model = nullptr;
    TViewEditorItems m_items;
    TGrid* m_grid = nullptr;
    std::array<QWidget*, cCollectionViewCount> m_views{};
    TCollectionView m_active = cvCards;
    QSplitter* m_splDetails = nullptr;
    QSplitter* m_splThumbs = nullptr;
    QWidget* m_extraInfo = nullptr;
    QWidget* m_thumbs = nullptr;
    QLabel* m_imgFront = nullptr;
    QLabel* m_imgBack = nullptr;
    TPropertyGrid* m_details = nullptr;
    QToolButton* m_btnCustomize = nullptr;
    QMenu* m_pmTableViewCustomize = nullptr;
    QMenu* m_pmQuickStatsCustomize = nullptr;
    QPointer<QAction> m_horScroll;
    QPointer<QMenu> m_contextMenu;
    std::function<void(const QString&)> m_viewer;
    bool m_syncing = false;
    bool m_groupingPosted = false;
    int m_thumbRow = -1;
    // The thumb size list's index: Medium at every start, then the user's pick.
    int m_thumbSizeIndex = 1;
};
