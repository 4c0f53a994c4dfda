#include "uCollectionPane.h"

#include "dmInternalData.h"
#include "frmPic.h"
#include "frmSorting.h"
#include "uCustomFields.h"
#include "uDatasetTableModel.h"
#include "uEditorItem.h"
#include "uGrid.h"
#include "uGridCardView.h"
#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridPictureCache.h"
#include "uGridTableView.h"
#include "uPropertyGrid.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QSplitter>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace {

// The window's deferred event that opens the groups after a change of grouping.
constexpr QEvent::Type cGroupingChangedEvent = QEvent::Type(1034);

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() || text == key ? fallback : text;
}

// Picture bytes by row key, read on the picture cache's workers through a read-only connection of
// each worker's own; the file is opened again when the collection changes.
TGridPictureLoader FileLoader(const QString& path)
{
    return [path](const QVariant& key, const QString& field) -> QByteArray {
        struct TWorkerConnection
        {
            QString Path;
            sqlite3* Db = nullptr;
            ~TWorkerConnection() { sqlite3_close(Db); }
        };
        thread_local TWorkerConnection connection;
        if (connection.Path != path) {
            sqlite3_close(connection.Db);
            connection.Db = nullptr;
            connection.Path = path;
            if (sqlite3_open_v2(path.toUtf8().constData(), &connection.Db, SQLITE_OPEN_READONLY, nullptr) !=
                SQLITE_OK) {
                sqlite3_close(connection.Db);
                connection.Db = nullptr;
            }
        }
        if (!connection.Db) {
            return {};
        }
        for (const QChar c : field) {
            if (!c.isLetterOrNumber() && c != u'_') {
                return {};
            }
        }
        const QByteArray sql = "SELECT \"" + field.toUtf8() + "\" FROM tblCoins WHERE ID = ?";
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(connection.Db, sql.constData(), -1, &statement, nullptr) != SQLITE_OK) {
            return {};
        }
        sqlite3_bind_int64(statement, 1, key.toLongLong());
        QByteArray bytes;
        if (sqlite3_step(statement) == SQLITE_ROW) {
            bytes = QByteArray(static_cast<const char*>(sqlite3_column_blob(statement, 0)),
                               sqlite3_column_bytes(statement, 0));
        }
        sqlite3_finalize(statement);
        return bytes;
    };
}

// The details rows of the custom fields, as the rule of the custom fields sees them.
class TDetailsCustomRows : public TCustomFieldRows
{
public:
    TDetailsCustomRows(TPropertyGrid& grid, const TViewEditorItems& items) : m_grid(grid), m_items(items) {}
    void BeginUpdate() override { m_grid.setUpdatesEnabled(false); }
    void EndUpdate() override { m_grid.setUpdatesEnabled(true); }
    bool HasRow(const QString& field) const override { return m_grid.hasRow(DetailsRowName(field)); }
    void SetRowVisible(const QString& field, bool visible) override
    {
        m_grid.setRowVisible(DetailsRowName(field), visible);
    }
    void SetRowCaption(const QString& field, const QString& caption) override
    {
        m_grid.setRowCaption(DetailsRowName(field), caption);
    }
    void SetRowEditor(const QString& field, const QString& editor) override
    {
        m_grid.setRowEditor(DetailsRowName(field), m_items.Item(editor));
    }
    void SetGroupVisible(bool visible) override
    {
        m_grid.setCategoryVisible(u"vgDetailsCategoryRowCustomFields"_s, visible);
    }

private:
    TPropertyGrid& m_grid;
    const TViewEditorItems& m_items;
};

// The custom columns of one view.
class TViewCustomColumns : public TCustomFieldColumns
{
public:
    TViewCustomColumns(TGridView& view, const TViewEditorItems& items) : m_view(view), m_items(items) {}
    void BeginUpdate() override { m_view.columns()->beginUpdate(); }
    void EndUpdate() override { m_view.columns()->endUpdate(); }
    bool HasColumn(const QString& field) const override { return m_view.columns()->byField(field); }
    void SetColumnCaption(const QString& field, const QString& caption) override
    {
        m_view.columns()->byField(field)->setCaption(caption);
    }
    void SetColumnOffered(const QString& field, bool offered) override
    {
        m_view.columns()->byField(field)->setHiddenFromChooser(!offered);
    }
    void SetColumnEditor(const QString& field, const QString& editor) override
    {
        m_view.setEditorItem(m_view.columns()->byField(field), m_items.Item(editor));
    }

private:
    TGridView& m_view;
    const TViewEditorItems& m_items;
};

TGridView* AsView(QWidget* widget)
{
    return static_cast<TGridView*>(widget);
}

} // namespace

TCollectionPane::TCollectionPane(TDM_InternalData& data, QWidget* parent) : QWidget(parent), m_data(data)
{
    setObjectName(u"pnlCollection"_s);
    m_model = new TDatasetTableModel(m_data.qDS_Items, this);
    m_model->setEditable(true);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_splDetails = new QSplitter(Qt::Horizontal, this);
    m_splDetails->setObjectName(u"splDetails"_s);
    m_splDetails->setChildrenCollapsible(true);
    layout->addWidget(m_splDetails);

    m_grid = new TGrid(m_splDetails);
    m_grid->setObjectName(u"Grid"_s);
    m_grid->setFieldNameRole(TDatasetTableModel::FieldNameRole);
    m_grid->setKeyRole(TDatasetTableModel::KeyRole);
    m_grid->setSourceModel(m_model);
    m_splDetails->addWidget(m_grid);
    CreateViews();
    CreateDetails();
    CreateCustomizeButton();
    m_splDetails->setStretchFactor(0, 1);
    m_splDetails->setStretchFactor(1, 0);

    connect(m_grid, &TGrid::currentRowChanged, this, [this](int row) {
        if (m_syncing || row < 0) {
            return;
        }
        m_syncing = true;
        try {
            m_data.qDS_Items->setRecNo(row + 1);
        } catch (...) {
            m_syncing = false;
            SyncCurrentRecord();
            throw;
        }
        m_syncing = false;
        CurrentRecordChanged(m_data.qDS_Items->recNo() - 1);
    });
    connect(m_data.qDS_Items, &TDBDataset::currentChanged, this, [this] {
        if (!m_syncing) {
            SyncCurrentRecord();
        }
    });
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] {
        SyncCurrentRecord();
        GroupingChanged();
    });
    connect(m_model, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& from, const QModelIndex& to) {
                if (m_thumbRow >= from.row() && m_thumbRow <= to.row()) {
                    UpdateThumbnails(m_thumbRow);
                }
            });

    SetActiveView(cvCards);
    Retranslate();
}

TCollectionPane::~TCollectionPane() = default;

QWidget* TCollectionPane::View(TCollectionView view) const
{
    return view >= 0 && view < cCollectionViewCount ? m_views[std::size_t(view)] : nullptr;
}

const TGridModel* TCollectionPane::ActiveModel() const
{
    const auto* view = qobject_cast<TGridView*>(View(m_active));
    return view ? view->model() : nullptr;
}

TGridTableView* TCollectionPane::TableView(TCollectionView view) const
{
    return qobject_cast<TGridTableView*>(View(view));
}

TGridCardView* TCollectionPane::CardView(TCollectionView view) const
{
    return qobject_cast<TGridCardView*>(View(view));
}

void TCollectionPane::CreateViews()
{
    for (const TViewDesign& design : CollectionViewDesigns()) {
        CreateView(design);
    }
}

void TCollectionPane::CreateView(const TViewDesign& design)
{
    TGridView* view = nullptr;
    TGridTableView* table = nullptr;
    TGridCardView* cards = nullptr;
    if (design.Kind == TViewKind::Table) {
        table = m_grid->addTableView(design.Name, design.Caption);
        view = table;
    } else {
        cards = m_grid->addCardView(design.Name, design.Caption);
        view = cards;
    }
    m_views[std::size_t(design.View)] = view;
    view->setMultiSelect(true);
    view->setCellHints(design.CellHints);

    view->columns()->beginUpdate();
    for (const TViewColumnDesign& c : design.Columns) {
        TGridColumn* column = view->addColumn(c.Name, c.Field);
        const bool weightText = design.WeightAsText && c.Field == u"WeightG"_s;
        view->setEditorItem(column, weightText ? m_items.WeightText() : m_items.Item(c.Editor));
        if (table) {
            column->setWidth(c.Width > 0 ? c.Width : 100);
        } else {
            column->setWidth(c.Width);
            column->setLines(c.Lines);
            column->setCardTitle(c.Title);
        }
    }
    // The custom columns wait for the custom fields to be switched on.
    for (int n = 0; n < cCustomFieldCount; ++n) {
        if (TGridColumn* column = view->columns()->byField(CustomFieldColumn(n))) {
            column->setHiddenFromChooser(true);
        }
    }
    view->columns()->endUpdate();
    ApplyViewDesign(*view->columns(), design);

    if (cards) {
        if (design.CardWidth > 0) {
            cards->setCardWidth(design.CardWidth);
        }
        cards->setCardIndent(design.CardIndent);
        cards->setFillWidth(design.FillWidth);
        cards->setSeparatorWidth(design.SeparatorWidth);
        cards->setEmptyRowsHidden(design.EmptyRowsHidden);
        cards->setRowsCustomizable(design.RowsCustomizable);
        cards->setPictureHeightLimitedToCardWidth(design.PictureHeightLimitedToCardWidth);
        cards->setSquareSidePictures(design.SquareSidePictures);
        if (design.View == cvThumbs) {
            cards->setWheelZoom(true, 0.9, 1.1, cThumbsZoomMinWidth);
        }
    }
    if (table) {
        table->setColumnAutoWidth(design.ColumnAutoWidth);
        table->setCellAutoHeight(design.CellAutoHeight);
        table->setFooterVisible(design.FooterVisible);
        table->setGroupFootersVisible(design.GroupFootersVisible);
        table->setGroupSummariesAligned(design.GroupSummariesAligned);
        if (design.View == cvTable) {
            table->model()->addGroupSummary({u"GridTableViewWeightGxQty"_s, TGridSummaryKind::Sum, 0,
                                             TGridSummaryPlace::GroupRow, GroupTotalWeightText});
        } else {
            for (const TROISummaryDesign& item : ROISummaryDesigns()) {
                const TEditorItem* editor =
                    m_items.Item(item.Text == TSummaryText::Money     ? u"edUsersCurrency"_s
                                 : item.Text == TSummaryText::Percent ? u"edPercent"_s
                                                                      : u"seWeightOz"_s);
                TGridFormatter format = [editor](const QVariant& value) {
                    return value.isNull() ? QString() : editor->displayText(value);
                };
                table->model()->addGroupSummary(
                    {item.ColumnName, item.Kind, item.Tag, TGridSummaryPlace::GroupFooter, format});
                table->model()->addFooterSummary(
                    {item.ColumnName, item.Kind, item.Tag, TGridSummaryPlace::GroupRow, format});
            }
            table->model()->setSummaryCallback(ComputeROIPercentSummary);
        }
        connect(table, &TGridTableView::groupingChanged, this, [this] {
            if (!m_groupingPosted) {
                m_groupingPosted = true;
                QCoreApplication::postEvent(this, new QEvent(cGroupingChangedEvent));
            }
        });
        connect(table, &TGridTableView::groupByPanelGeometryChanged, this,
                &TCollectionPane::PositionCustomizeButton);
    }

    connect(view, &TGridView::doubleClicked, this, [this](const TGridHitInfo& hit) {
        if (hit.SourceRow >= 0 && (hit.Kind == TGridHitKind::RecordCell || hit.Kind == TGridHitKind::Card ||
                                   hit.Kind == TGridHitKind::RowCaption)) {
            emit EditRequested();
        }
    });
    connect(view, &TGridView::contextMenuRequested, this, [this](const TGridHitInfo&, const QPoint& pos) {
        if (m_contextMenu) {
            m_contextMenu->popup(pos);
        }
    });
    connect(view, &TGridView::selectionChanged, this, [this, view] {
        if (view == View(m_active)) {
            emit SelectionChanged();
        }
    });
    connect(view, &TGridView::findPanelVisibilityChanged, this, [this, view] {
        if (view == View(m_active)) {
            PositionCustomizeButton();
            emit FindPanelVisibilityChanged();
        }
    });
}

void TCollectionPane::CreateDetails()
{
    m_extraInfo = new QWidget(m_splDetails);
    m_extraInfo->setObjectName(u"pnlExtraInfo"_s);
    auto* layout = new QVBoxLayout(m_extraInfo);
    layout->setContentsMargins(0, 0, 0, 0);
    m_splThumbs = new QSplitter(Qt::Vertical, m_extraInfo);
    m_splThumbs->setObjectName(u"splThumbs"_s);
    m_splThumbs->setChildrenCollapsible(true);
    layout->addWidget(m_splThumbs);

    m_thumbs = new QWidget(m_splThumbs);
    m_thumbs->setObjectName(u"pnlThumbs"_s);
    m_thumbs->installEventFilter(this);
    auto* thumbs = new QHBoxLayout(m_thumbs);
    thumbs->setContentsMargins(0, 0, 0, 0);
    thumbs->setSpacing(0);
    for (QLabel** image : {&m_imgFront, &m_imgBack}) {
        *image = new QLabel(m_thumbs);
        (*image)->setAlignment(Qt::AlignCenter);
        (*image)->setCursor(Qt::PointingHandCursor);
        (*image)->setMinimumSize(1, 1);
        (*image)->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
        (*image)->installEventFilter(this);
        (*image)->hide();
        thumbs->addWidget(*image);
    }
    thumbs->addStretch(0);
    m_imgFront->setObjectName(u"imgFront"_s);
    m_imgBack->setObjectName(u"imgBack"_s);
    m_splThumbs->addWidget(m_thumbs);

    m_details = new TPropertyGrid(m_splThumbs);
    m_details->setObjectName(u"vgDetails"_s);
    m_details->setCaptionWidth(180);
    m_details->setCategoryAutoHide(true);
    for (const TDetailsCategory& category : DetailsCategories()) {
        m_details->addCategory(category.Name, TextOr(category.TextKey, category.Name));
        for (const QString& field : category.Fields) {
            m_details->addRow(DetailsRowName(field), field, field, m_items.Item(FieldEditor(field)),
                              category.Name);
        }
    }
    m_details->setFieldNameRole(TDatasetTableModel::FieldNameRole);
    m_details->setValueRole(TDatasetTableModel::ValueRole);
    m_details->setSourceModel(m_model);
    m_splThumbs->addWidget(m_details);
    m_splThumbs->setStretchFactor(0, 0);
    m_splThumbs->setStretchFactor(1, 1);
    m_splDetails->addWidget(m_extraInfo);

    // The stored sizes; a closed splitter is closed again and its size kept for later.
    QTimer::singleShot(0, this, [this] {
        const int total = m_splDetails->width();
        m_splDetails->setSizes(
            {std::max(0, total - (FrameClosed ? 0 : FrameWidth)), FrameClosed ? 0 : FrameWidth});
        const int height = m_splThumbs->height();
        m_splThumbs->setSizes({FrameThumbsClosed ? 0 : FrameThumbsHeight,
                               std::max(0, height - (FrameThumbsClosed ? 0 : FrameThumbsHeight))});
        UpdateThumbWidths();
    });
    connect(m_splDetails, &QSplitter::splitterMoved, this, [this] {
        const int width = m_splDetails->sizes().value(1);
        SplitterMoved(width == 0, width, FrameClosed, FrameWidth);
    });
    connect(m_splThumbs, &QSplitter::splitterMoved, this, [this] {
        const int height = m_splThumbs->sizes().value(0);
        SplitterMoved(height == 0, height, FrameThumbsClosed, FrameThumbsHeight);
    });
}

void TCollectionPane::CreateCustomizeButton()
{
    m_btnCustomize = new QToolButton(this);
    m_btnCustomize->setObjectName(u"btnTableViewCustomize"_s);
    m_btnCustomize->setPopupMode(QToolButton::MenuButtonPopup);
    m_btnCustomize->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_btnCustomize->hide();
    connect(m_btnCustomize, &QToolButton::clicked, this, &TCollectionPane::ApplyBestFit);
    m_pmTableViewCustomize = new QMenu(this);
    m_pmTableViewCustomize->setObjectName(u"pmTableViewCustomize"_s);
    m_pmQuickStatsCustomize = new QMenu(this);
    m_pmQuickStatsCustomize->setObjectName(u"pmQuickStatsCustomize"_s);
    FillCustomizeMenus();
}

void TCollectionPane::SetHorScrollAction(QAction* action)
{
    m_horScroll = action;
    FillCustomizeMenus();
}

void TCollectionPane::FillCustomizeMenus()
{
    for (QMenu* menu : {m_pmTableViewCustomize, m_pmQuickStatsCustomize}) {
        const bool withConfigurations = menu == m_pmTableViewCustomize;
        menu->clear();
        auto item = [menu, this](const QString& name, const QString& key, const QString& text, auto slot) {
            QAction* action = menu->addAction(TextOr(key, text));
            action->setObjectName(name);
            connect(action, &QAction::triggered, this, slot);
        };
        item(u"btnApplyBestFit"_s, u"cSMainactApplyBestFit"_s, u"Apply best fit"_s,
             [this] { ApplyBestFit(); });
        menu->addSeparator();
        item(u"btnExpandAll"_s, u"cSMainactExpandAll"_s, u"Expand all"_s, [this] { ExpandAll(); });
        item(u"btnCollapseAll"_s, u"cSMainactCollapseAll"_s, u"Collapse all"_s, [this] { CollapseAll(); });
        menu->addSeparator();
        if (m_horScroll) {
            menu->addAction(m_horScroll);
        }
        if (withConfigurations) {
            menu->addSection(TextOr(u"cSMainsepConfiguration"_s, u"Configuration"_s))
                ->setObjectName(u"sepConfiguration"_s);
            for (TTableViewConfiguration conf :
                 {TTableViewConfiguration::General, TTableViewConfiguration::PurchaseData,
                  TTableViewConfiguration::Specification, TTableViewConfiguration::AllFields}) {
                item(TableViewConfigurationButton(conf), TableViewConfigurationTextKey(conf), QString(),
                     [this, conf] { ApplyConfiguration(conf); });
            }
        }
        menu->addSection(TextOr(u"cSMainsepCreateYourOwnConf"_s, u"Create your own configuration"_s))
            ->setObjectName(u"sepCreateYourOwnConf"_s);
        item(u"btnCustomizeColumns"_s, u"cSMainactCustomizeColumns"_s, u"Customize columns"_s,
             [this] { ShowColumnChooser(); });
    }
}

void TCollectionPane::SetActiveView(TCollectionView view)
{
    TGridView* target = AsView(View(view));
    if (!target) {
        return;
    }
    m_active = view;
    m_grid->setActiveView(target);
    if (view == cvShelve) {
        ApplyThumbSize(m_thumbSizeIndex);
    }
    target->makeCurrentVisible(false);
    PositionCustomizeButton();
    emit ActiveViewChanged();
    emit SelectionChanged();
    emit FindPanelVisibilityChanged();
}

QList<QVariant> TCollectionPane::SelectedKeys() const
{
    QList<QVariant> keys;
    TGridView* view = AsView(View(m_active));
    if (!view) {
        return keys;
    }
    for (int row : view->selectedSourceRows()) {
        keys << m_model->index(row, 0).data(TDatasetTableModel::KeyRole);
    }
    return keys;
}

int TCollectionPane::SelectedCount() const
{
    TGridView* view = AsView(View(m_active));
    return view ? view->selectedCount() : 0;
}

std::optional<QString> TCollectionPane::FocusedCellText() const
{
    TGridTableView* table = TableView(m_active);
    if (!table || table->currentSourceRow() < 0 || !table->focusedColumn()) {
        return std::nullopt;
    }
    return table->displayText(table->currentSourceRow(), table->focusedColumn());
}

QString TCollectionPane::SelectedRecordsText() const
{
    TGridView* view = AsView(View(m_active));
    if (!view) {
        return {};
    }
    const QList<TGridColumn*> columns = view->columns()->visibleColumns();
    QStringList lines;
    for (int row : view->selectedSourceRows()) {
        QStringList cells;
        for (const TGridColumn* column : columns) {
            if (!column->isPicture()) {
                cells << view->displayText(row, column);
            }
        }
        lines << cells.join(u'\t');
    }
    return lines.join(u'\n');
}

void TCollectionPane::SelectAll()
{
    if (TGridView* view = AsView(View(m_active))) {
        view->selectAll();
    }
}

void TCollectionPane::ClearSelection()
{
    if (TGridView* view = AsView(View(m_active))) {
        view->clearSelection();
    }
}

void TCollectionPane::ApplyBestFit()
{
    if (TGridTableView* table = TableView(m_active)) {
        table->applyBestFit();
    }
}

void TCollectionPane::ExpandAll()
{
    if (TGridTableView* table = TableView(m_active)) {
        table->expandAll();
    }
}

void TCollectionPane::CollapseAll()
{
    if (TGridTableView* table = TableView(m_active)) {
        table->collapseAll();
    }
}

void TCollectionPane::ShowColumnChooser()
{
    if (TGridView* view = AsView(View(m_active))) {
        view->showColumnChooser();
    }
}

void TCollectionPane::SetShowHorScroll(bool checked)
{
    if (TGridTableView* table = TableView(m_active)) {
        table->setColumnAutoWidth(ColumnAutoWidthFor(checked));
    }
}

bool TCollectionPane::ColumnAutoWidth() const
{
    TGridTableView* table = TableView(m_active);
    return table && table->columnAutoWidth();
}

void TCollectionPane::ToggleFindPanel()
{
    TGridView* view = AsView(View(m_active));
    if (!view) {
        return;
    }
    if (view->isFindPanelVisible()) {
        view->hideFindPanel();
    } else {
        view->showFindPanel();
    }
}

bool TCollectionPane::FindPanelVisible() const
{
    TGridView* view = AsView(View(m_active));
    return view && view->isFindPanelVisible();
}

void TCollectionPane::ShowFilterBuilder()
{
    if (TGridView* view = AsView(View(m_active))) {
        view->showFilterBuilder();
    }
}

void TCollectionPane::ApplyThumbSize(int index)
{
    index = std::clamp(index, 0, 2);
    m_thumbSizeIndex = index;
    const QString rowName = ThumbSizeRow(m_active);
    TGridView* view = AsView(View(m_active));
    if (rowName.isEmpty() || !view) {
        return;
    }
    if (TGridColumn* row = view->columns()->byName(rowName)) {
        row->setLines(ThumbSizeLines(index));
    }
    if (m_active == cvShelve) {
        TGridCardView* shelve = CardView(cvShelve);
        const QImage picture = ShelvePicture(index);
        shelve->setBackgroundPicture(picture);
        shelve->setCardBackgroundPicture(picture);
        shelve->setCardWidth(ShelveCardWidth(index));
    }
}

void TCollectionPane::ApplyConfiguration(TTableViewConfiguration configuration)
{
    TGridTableView* table = TableView(cvTable);
    ApplyTableViewCustomization(*table->columns(), TableViewConfiguration(configuration));
    // The columns fit their content once the new columns have been laid out.
    QTimer::singleShot(0, table, [table] { table->applyBestFit(); });
}

void TCollectionPane::ApplyCustomFields()
{
    TDetailsCustomRows rows(*m_details, m_items);
    std::vector<std::unique_ptr<TViewCustomColumns>> owned;
    QList<TCustomFieldColumns*> views;
    for (QWidget* widget : m_views) {
        TGridView* view = AsView(widget);
        owned.push_back(std::make_unique<TViewCustomColumns>(*view, m_items));
        views << owned.back().get();
    }
    ::ApplyCustomFields(rows, views);
}

void TCollectionPane::RestoreLayouts()
{
    TZTRegistrySettings store(cHKEY_CURRENT_USER, LayoutSettingsPath());
    for (QWidget* widget : m_views) {
        TGridView* view = AsView(widget);
        const QString layout = ReadViewLayout(store, view->name());
        if (!layout.isEmpty()) {
            view->restoreLayout(layout);
        }
    }
}

void TCollectionPane::SaveLayouts() const
{
    TZTRegistrySettings store(cHKEY_CURRENT_USER, LayoutSettingsPath());
    for (QWidget* widget : m_views) {
        const TGridView* view = AsView(widget);
        WriteViewLayout(store, view->name(), view->saveLayout());
    }
}

void TCollectionPane::Retranslate()
{
    m_items.Retranslate();
    const QString empty = TextOr(u"cSNoDataToDisplay"_s, u"< No data to display >"_s);
    const QString groupBy =
        TextOr(u"cSMainGroupByText"_s, u"Drag a column header here to group by that column"_s);
    for (QWidget* widget : m_views) {
        TGridView* view = AsView(widget);
        view->setEmptyText(empty);
        if (auto* table = qobject_cast<TGridTableView*>(view)) {
            table->setGroupByText(groupBy);
        }
        // Captions come from the dataset's field labels, set anew by the language.
        view->columns()->beginUpdate();
        for (TGridColumn* column : view->columns()->ordered()) {
            if (CustomFieldIndex(column->fieldName()) >= 0) {
                continue;
            }
            if (const TDBField* field = m_data.qDS_Items->findField(column->fieldName())) {
                column->setCaption(field->displayLabel());
            }
        }
        view->columns()->endUpdate();
    }
    for (const TDetailsCategory& category : DetailsCategories()) {
        m_details->setCategoryCaption(category.Name, TextOr(category.TextKey, category.Name));
        for (const QString& field : category.Fields) {
            if (CustomFieldIndex(field) >= 0) {
                continue;
            }
            if (const TDBField* f = m_data.qDS_Items->findField(field)) {
                m_details->setRowCaption(DetailsRowName(field), f->displayLabel());
            }
        }
    }
    const QString enlarge = TextOr(u"cSClickToEnlarge"_s, u"Click to enlarge"_s);
    m_imgFront->setToolTip(enlarge);
    m_imgBack->setToolTip(enlarge);
    m_btnCustomize->setText(TextOr(u"cSMainbtnCustomize"_s, u"Customize"_s));
    FillCustomizeMenus();
    ApplyCustomFields();
    PositionCustomizeButton();
}

void TCollectionPane::SyncCurrentRecord()
{
    const int row = m_data.qDS_Items->active() ? m_data.qDS_Items->recNo() - 1 : -1;
    m_syncing = true;
    m_grid->setCurrentRow(row);
    m_syncing = false;
    CurrentRecordChanged(row);
}

void TCollectionPane::DatabaseChanged()
{
    // Items were added, edited or the file changed: thumbnails read before are stale.
    m_grid->pictureCache()->setLoader(FileLoader(m_data.DatabasePath));
    m_grid->pictureCache()->clear();
}

void TCollectionPane::CurrentRecordChanged(int row)
{
    m_details->setCurrentRow(row);
    if (row >= 0) {
        const std::optional<bool> coinRows = DetailsShowCoinRows(FieldValue(row, u"CoinType"_s));
        if (coinRows) {
            m_details->setRowVisible(u"vgDetailsDiameter"_s, *coinRows);
            m_details->setRowVisible(u"vgDetailsEdge"_s, *coinRows);
            m_details->setRowVisible(u"vgDetailsWidth"_s, !*coinRows);
            m_details->setRowVisible(u"vgDetailsHeight"_s, !*coinRows);
        }
    }
    UpdateThumbnails(row);
}

int TCollectionPane::FieldColumn(const QString& field) const
{
    for (int column = 0; column < m_model->columnCount(); ++column) {
        if (m_model->headerData(column, Qt::Horizontal, TDatasetTableModel::FieldNameRole).toString() ==
            field) {
            return column;
        }
    }
    return -1;
}

QVariant TCollectionPane::FieldValue(int row, const QString& field) const
{
    const int column = FieldColumn(field);
    if (row < 0 || column < 0 || row >= m_model->rowCount()) {
        return {};
    }
    return m_model->index(row, column).data(TDatasetTableModel::ValueRole);
}

void TCollectionPane::UpdateThumbnails(int row)
{
    m_thumbRow = row;
    const std::pair<QLabel*, const char16_t*> images[] = {{m_imgFront, u"ThumbFront"},
                                                          {m_imgBack, u"ThumbBack"}};
    for (const auto& [label, field] : images) {
        const QVariant value = FieldValue(row, QString::fromUtf16(field));
        QImage picture;
        if (!value.isNull() && value.isValid()) {
            picture.loadFromData(value.toByteArray());
        }
        label->setProperty("picture", picture);
        label->setVisible(!picture.isNull());
    }
    UpdateThumbWidths();
}

void TCollectionPane::UpdateThumbWidths()
{
    const int width = DetailsThumbWidth(m_thumbs->width());
    const int height = m_thumbs->height();
    for (QLabel* label : {m_imgFront, m_imgBack}) {
        // A bound, not a fixed width: two halves plus one would widen the pane that they are
        // measured from, on every resize.
        label->setMaximumWidth(width);
        const QImage picture = label->property("picture").value<QImage>();
        if (picture.isNull() || height <= 0) {
            label->clear();
            continue;
        }
        const qreal ratio = label->devicePixelRatioF();
        QPixmap pixmap = QPixmap::fromImage(
            picture.scaled(QSize(width, height) * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation));
        pixmap.setDevicePixelRatio(ratio);
        label->setPixmap(pixmap);
    }
}

void TCollectionPane::OpenPicture(const QString& field)
{
    if (m_viewer) {
        m_viewer(field);
        return;
    }
    const QVariant value = FieldValue(m_data.qDS_Items->recNo() - 1, field);
    if (!value.isNull()) {
        TShowPictureForm::ShowPicture(value.toByteArray(), TPictureViewerSource::DetailsPane, window());
    }
}

void TCollectionPane::SortData()
{
    if (TGridTableView* table = TableView(m_active)) {
        TSortForm::Execute({table}, window());
    }
}

void TCollectionPane::ReloadPictures()
{
    m_grid->pictureCache()->clear();
}

void TCollectionPane::GroupingChanged()
{
    m_groupingPosted = false;
    for (TCollectionView view : {cvTable, cvTableROI}) {
        TableView(view)->expandAll();
    }
    PositionCustomizeButton();
}

void TCollectionPane::PositionCustomizeButton()
{
    const TCustomizeMenu menu = CustomizeMenuFor(m_active);
    TGridTableView* table = TableView(m_active);
    if (menu == TCustomizeMenu::None || !table || !table->groupByPanelVisible()) {
        m_btnCustomize->hide();
        return;
    }
    m_btnCustomize->setMenu(menu == TCustomizeMenu::TableViewCustomize ? m_pmTableViewCustomize
                                                                       : m_pmQuickStatsCustomize);
    const QRect button = CustomizeButtonGeometry(
        GroupByPanelRect(m_active), m_btnCustomize->sizeHint().width(), layoutDirection() == Qt::RightToLeft);
    if (button.isEmpty()) {
        m_btnCustomize->hide();
        return;
    }
    m_btnCustomize->setGeometry(button);
    m_btnCustomize->show();
    m_btnCustomize->raise();
}

bool TCollectionPane::event(QEvent* event)
{
    if (event->type() == cGroupingChangedEvent) {
        GroupingChanged();
        return true;
    }
    if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutDirectionChange) {
        QTimer::singleShot(0, this, &TCollectionPane::PositionCustomizeButton);
    }
    return QWidget::event(event);
}

bool TCollectionPane::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_thumbs && event->type() == QEvent::Resize) {
        UpdateThumbWidths();
    } else if ((watched == m_imgFront || watched == m_imgBack) &&
               event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton) {
            OpenPicture(watched == m_imgFront ? u"PhotoFront"_s : u"PhotoBack"_s);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void TCollectionPane::SetPictureFields(const QString& thumbsFront, const QString& thumbsBack,
                                       const QString& cardsFront, const QString& cardsBack,
                                       const QString& shelvePhoto)
{
    const std::tuple<TCollectionView, const char16_t*, QString> rows[] = {
        {cvThumbs, u"GridThumbsViewThumbFront", thumbsFront},
        {cvThumbs, u"GridThumbsViewThumbBack", thumbsBack},
        {cvCards, u"GridCardsViewThumbFront", cardsFront},
        {cvCards, u"GridCardsViewThumbBack", cardsBack},
        {cvShelve, u"GridShelveViewPhotoThumb", shelvePhoto}};
    for (const auto& [view, name, field] : rows) {
        if (TGridColumn* column = AsView(View(view))->columns()->byName(QString::fromUtf16(name))) {
            column->setFieldName(field);
        }
    }
}

void TCollectionPane::SetContextMenu(QMenu* menu)
{
    m_contextMenu = menu;
}

void TCollectionPane::FocusRecord(TCollectionView view, int sourceRow)
{
    if (TGridView* target = AsView(View(view))) {
        target->setCurrentSourceRow(sourceRow);
    }
}

int TCollectionPane::ShownRecordCount(TCollectionView view) const
{
    TGridView* target = AsView(View(view));
    return target ? target->model()->visibleRowCount() : 0;
}

QRect TCollectionPane::GroupByPanelRect(TCollectionView view) const
{
    TGridTableView* table = TableView(view);
    if (!table) {
        return {};
    }
    const QRect panel = table->groupByPanelGeometry();
    return QRect(table->mapTo(this, panel.topLeft()), panel.size());
}

bool TCollectionPane::ColumnVisible(TCollectionView view, const QString& field) const
{
    TGridView* target = AsView(View(view));
    const TGridColumn* column = target ? target->columns()->byField(field) : nullptr;
    return column && column->visible();
}

void TCollectionPane::SetColumnVisible(TCollectionView view, const QString& field, bool visible)
{
    TGridView* target = AsView(View(view));
    if (TGridColumn* column = target ? target->columns()->byField(field) : nullptr) {
        column->setVisible(visible);
    }
}

int TCollectionPane::GroupingDepth(TCollectionView view) const
{
    TGridView* target = AsView(View(view));
    return target ? int(target->columns()->groupColumns().size()) : 0;
}

void TCollectionPane::SetDialogRunner(std::function<int(QWidget* dialog)> runner)
{
    TGridView::setDialogRunner(std::move(runner));
}

void TCollectionPane::SetFindText(const QString& text)
{
    if (TGridView* view = AsView(View(m_active))) {
        view->setFindText(text);
    }
}

bool TCollectionPane::ReadFindTexts()
{
    TGridView* view = AsView(View(m_active));
    if (!view) {
        return false;
    }
    view->model()->prepareFind();
    return true;
}
