#include "galleryData.h"
#include "galleryPages.h"
#include "galleryShared.h"

#include "uGrid.h"
#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridTableView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
constexpr double TroyOunce = 31.1035;

TGridColumn* add(TGridTableView* view, const QString& field, bool visible, const TEditorItem* item = nullptr)
{
    TGridColumn* column = view->addColumn(view->name() + field, field);
    column->setWidth(100);
    column->setVisible(visible);
    if (item)
        view->setEditorItem(column, item);
    return column;
}

const TEditorItem* ouncesItem()
{
    static const Gallery::TextItem item(Gallery::ouncesText);
    return &item;
}

// The collection's table: grouped by metal and mint, the total weight in every group row.
void setUpTable(TGridTableView* view)
{
    view->columns()->beginUpdate();
    for (const QString& field : {u"Name"_s, u"Series"_s, u"Year"_s})
        add(view, field, true);
    add(view, u"WeightG"_s, true, Gallery::weightItem());
    add(view, u"Qty"_s, true);
    add(view, u"CoinType"_s, true, Gallery::coinTypeItem());
    add(view, u"Purity"_s, true);
    add(view, u"Country"_s, true);
    add(view, u"Price"_s, true, Gallery::moneyItem());
    TGridColumn* metal = add(view, u"Metal"_s, false, Gallery::metalItem());
    TGridColumn* mint = add(view, u"MintID"_s, false, Gallery::mintItem());
    add(view, u"Caption"_s, false);
    add(view, u"WeightGxQty"_s, false, Gallery::weightItem());
    add(view, u"TotalPrice"_s, false, Gallery::moneyItem());
    add(view, u"ID"_s, false)->setHiddenFromChooser(true);
    metal->setGroupIndex(0);
    mint->setGroupIndex(1);
    view->columns()->endUpdate();
    view->model()->addGroupSummary({view->name() + u"WeightGxQty"_s, TGridSummaryKind::Sum, 0,
                                    TGridSummaryPlace::GroupRow, [](const QVariant& v) {
                                        return v.isNull() ? QString()
                                                          : QString::asprintf("Total weight: %.1f oz",
                                                                              v.toDouble() / TroyOunce);
                                    }});
    view->setColumnAutoWidth(true);
    view->setCellAutoHeight(true);
    view->expandAll();
}

// The quick statistics: grouped by metal, sums in the group footers and the footer, and the rate of
// return of each group worked out from two of its sums by their tags.
void setUpQuickStats(TGridTableView* view)
{
    view->columns()->beginUpdate();
    add(view, u"Caption"_s, true)->setWidth(220);
    add(view, u"TotalPrice"_s, true, Gallery::moneyItem());
    add(view, u"Qty"_s, true);
    add(view, u"WeightOZxQty"_s, true, ouncesItem());
    add(view, u"LiquidationValuexQty"_s, true, Gallery::moneyItem());
    add(view, u"ROIPercent"_s, true)->setCaption(u"ROI %"_s);
    add(view, u"Metal"_s, false, Gallery::metalItem())->setGroupIndex(0);
    view->columns()->endUpdate();
    const QString n = view->name();
    const auto money = [](const QVariant& v) { return Gallery::moneyText(v); };
    const auto percent = [](const QVariant& v) { return Gallery::percentText(v); };
    TGridModel* model = view->model();
    for (const auto place : {TGridSummaryPlace::GroupFooter}) {
        model->addGroupSummary({n + u"LiquidationValuexQty"_s, TGridSummaryKind::Sum, 100, place, money});
        model->addGroupSummary({n + u"TotalPrice"_s, TGridSummaryKind::Sum, 200, place, money});
        model->addGroupSummary({n + u"ROIPercent"_s, TGridSummaryKind::None, 300, place, percent});
        model->addGroupSummary({n + u"WeightOZxQty"_s, TGridSummaryKind::Sum, 0, place, Gallery::ouncesText});
    }
    model->addFooterSummary({n + u"LiquidationValuexQty"_s, TGridSummaryKind::Sum, 100, {}, money});
    model->addFooterSummary({n + u"TotalPrice"_s, TGridSummaryKind::Sum, 200, {}, money});
    model->addFooterSummary({n + u"TotalPrice"_s, TGridSummaryKind::Average, 0, {}, [](const QVariant& v) {
                                 return u"avg "_s + Gallery::moneyText(v);
                             }});
    model->addFooterSummary({n + u"ROIPercent"_s, TGridSummaryKind::None, 300, {}, percent});
    model->addFooterSummary({n + u"WeightOZxQty"_s, TGridSummaryKind::Sum, 0, {}, Gallery::ouncesText});
    model->addFooterSummary({n + u"Caption"_s, TGridSummaryKind::Count, 0, {}, [](const QVariant& v) {
                                 return v.toString() + u" items"_s;
                             }});
    model->setSummaryCallback([](TGridSummaryScope& scope) {
        const int l = scope.indexOfTag(100);
        const int p = scope.indexOfTag(200);
        const int r = scope.indexOfTag(300);
        if (l < 0 || p < 0 || r < 0)
            return;
        const double lv = scope.value(l).toDouble();
        const double pv = scope.value(p).toDouble();
        scope.setValue(r, pv != 0.0 ? QVariant((lv - pv) / pv * 100.0) : QVariant());
    });
    view->setFooterVisible(true);
    view->setGroupFootersVisible(true);
    view->setGroupSummariesAligned(true);
    view->expandAll();
}
} // namespace

QWidget* makeGridPage(QWidget* parent)
{
    auto* page = new QWidget(parent);
    page->setObjectName(u"gridPage"_s);
    auto* layout = new QVBoxLayout(page);
    auto* bar = new QWidget(page);
    auto* barLayout = new QHBoxLayout(bar);
    barLayout->setContentsMargins(0, 0, 0, 0);

    auto* grid = new TGrid(page);
    grid->setObjectName(u"grid"_s);
    auto* data = new TGalleryData(100000, page);
    grid->setSourceModel(data);
    TGridTableView* table = grid->addTableView(u"GridTableView"_s, u"Table view"_s);
    setUpTable(table);
    TGridTableView* stats = grid->addTableView(u"GridTableViewROI"_s, u"Quick stats"_s);
    setUpQuickStats(stats);
    grid->setLevelTabsVisible(true);
    grid->setCurrentRow(0);

    auto* rows = new QComboBox(bar);
    rows->setObjectName(u"rows"_s);
    rows->addItem(u"100,000 rows"_s, 100000);
    rows->addItem(u"20 rows"_s, 20);
    rows->addItem(u"No rows"_s, 0);
    barLayout->addWidget(rows);
    const auto button = [&](const QString& text, const QString& name, auto slot) {
        auto* b = new QPushButton(text, bar);
        b->setObjectName(name);
        barLayout->addWidget(b);
        QObject::connect(b, &QPushButton::clicked, page, slot);
    };
    const auto active = [grid] { return static_cast<TGridTableView*>(grid->activeView()); };
    button(u"Find"_s, u"find"_s, [active] { active()->showFindPanel(); });
    button(u"Filter..."_s, u"filter"_s, [active] { active()->showFilterBuilder(); });
    button(u"Columns..."_s, u"chooser"_s, [active] { active()->showColumnChooser(); });
    button(u"Best fit"_s, u"bestFit"_s, [active] { active()->applyBestFit(); });
    button(u"Expand all"_s, u"expand"_s, [active] { active()->expandAll(); });
    button(u"Collapse all"_s, u"collapse"_s, [active] { active()->collapseAll(); });
    auto* autoWidth = new QCheckBox(u"Auto width"_s, bar);
    autoWidth->setChecked(true);
    barLayout->addWidget(autoWidth);
    Gallery::addLookSwitches(bar, page);
    barLayout->addStretch(1);
    auto* status = new QLabel(bar);
    status->setObjectName(u"status"_s);
    barLayout->addWidget(status);
    layout->addWidget(bar);
    layout->addWidget(grid, 1);

    QObject::connect(autoWidth, &QCheckBox::toggled, page,
                     [active](bool on) { active()->setColumnAutoWidth(on); });
    QObject::connect(rows, &QComboBox::currentIndexChanged, page, [grid, rows, page, table, stats] {
        QAbstractItemModel* old = grid->sourceModel();
        grid->setSourceModel(new TGalleryData(rows->currentData().toInt(), page));
        delete old;
        table->expandAll();
        stats->expandAll();
    });
    const auto showStatus = [grid, status] {
        TGridView* view = grid->activeView();
        status->setText(
            u"Row %1, %2 selected"_s.arg(grid->currentRow()).arg(view ? view->selectedCount() : 0));
    };
    QObject::connect(grid, &TGrid::currentRowChanged, page, showStatus);
    QObject::connect(table, &TGridView::selectionChanged, page, showStatus);
    QObject::connect(stats, &TGridView::selectionChanged, page, showStatus);
    QObject::connect(grid, &TGrid::activeViewChanged, page, showStatus);
    // A new grouping starts fully open.
    QObject::connect(table, &TGridTableView::groupingChanged, table, [table] { table->expandAll(); });
    return page;
}
