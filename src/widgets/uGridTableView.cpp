#include "uGridTableView.h"

#include "uGridColumns.h"
#include "uGridGroupByPanel.h"
#include "uGridHeader.h"
#include "uGridModel.h"
#include "uGridTableArea.h"
#include "uGridTexts.h"

#include <QDrag>
#include <QEvent>
#include <QMimeData>
#include <QVBoxLayout>

namespace {
std::function<Qt::DropAction(QDrag*)>& dragRunner()
{
    static std::function<Qt::DropAction(QDrag*)> runner;
    return runner;
}
} // namespace

TGridTableView::TGridTableView(TGrid* grid, const QString& name, QAbstractItemModel* ownModel,
                               QWidget* parent)
    : TGridView(grid, name, ownModel, parent), m_panel(new TGridGroupByPanel(this)),
      m_area(new TGridTableArea(this))
{
    contentLayout()->addWidget(m_panel);
    contentLayout()->addWidget(m_area, 1);
    setFocusProxy(m_area);

    connect(model(), &TGridModel::rowsChanged, m_area, &TGridTableArea::relayout);
    connect(model(), &TGridModel::contentChanged, this, [this] {
        m_area->syncHeader();
        m_area->viewport()->update();
    });
    connect(model(), &QAbstractItemModel::dataChanged, m_area->viewport(), qOverload<>(&QWidget::update));
    connect(model(), &TGridModel::selectionChanged, m_area->viewport(), qOverload<>(&QWidget::update));
    connect(columns(), &TGridColumns::changed, this, &TGridTableView::onColumnsChanged);
    connect(this, &TGridView::findPanelVisibilityChanged, this, &TGridTableView::groupByPanelGeometryChanged);
    m_area->syncHeader();
    m_area->relayout();
}

TGridTableView::~TGridTableView() = default;

void TGridTableView::onColumnsChanged(TGridColumnChanges changes)
{
    m_area->syncHeader();
    if (changes & (TGridColumnChange::Grouping | TGridColumnChange::Caption | TGridColumnChange::Structure |
                   TGridColumnChange::Sorting))
        m_panel->refresh();
    if (changes & TGridColumnChange::Grouping) {
        m_area->relayout();
        emit groupingChanged();
        emit groupByPanelGeometryChanged();
    }
}

void TGridTableView::setGroupByPanelVisible(bool visible)
{
    m_panel->setVisible(visible);
    emit groupByPanelGeometryChanged();
}

bool TGridTableView::groupByPanelVisible() const
{
    return !m_panel->isHidden();
}

void TGridTableView::setGroupByText(const QString& text)
{
    m_groupByText = text;
    m_panel->update();
}

QString TGridTableView::groupByText() const
{
    return m_groupByText.isEmpty() ? GridTexts().GroupByText : m_groupByText;
}

void TGridTableView::setColumnAutoWidth(bool on)
{
    if (m_autoWidth == on)
        return;
    m_autoWidth = on;
    m_area->syncHeader();
    m_area->relayout();
}

void TGridTableView::setCellAutoHeight(bool on)
{
    m_autoHeight = on;
    m_area->relayout();
}

void TGridTableView::setFooterVisible(bool visible)
{
    m_footerVisible = visible;
    m_area->updateGeometries();
    m_area->relayout();
}

void TGridTableView::setFooterAlignment(Qt::Alignment alignment)
{
    m_footerAlignment = alignment;
    m_area->update();
}

void TGridTableView::setGroupFootersVisible(bool visible)
{
    model()->setGroupFootersVisible(visible);
}

bool TGridTableView::groupFootersVisible() const
{
    return model()->groupFootersVisible();
}

void TGridTableView::setGroupSummariesAligned(bool on)
{
    m_summariesAligned = on;
    m_area->viewport()->update();
}

void TGridTableView::applyBestFit(TGridColumn* column)
{
    m_area->bestFit(column);
}

void TGridTableView::expandAll()
{
    model()->expandAll();
}

void TGridTableView::collapseAll()
{
    model()->collapseAll();
}

TGridColumn* TGridTableView::focusedColumn() const
{
    return m_area->focusedColumn();
}

void TGridTableView::setFocusedColumn(TGridColumn* column)
{
    m_area->setFocusedColumn(column);
}

void TGridTableView::makeCurrentVisible(bool openGroups)
{
    const int row = currentSourceRow();
    if (row < 0)
        return;
    if (openGroups)
        model()->expandTo(row);
    m_area->scrollToIndex(model()->displayIndexOfSourceRow(row));
}

void TGridTableView::scrollToSourceRow(int sourceRow)
{
    m_area->scrollToIndex(model()->displayIndexOfSourceRow(sourceRow));
}

void TGridTableView::groupByColumn(TGridColumn* column, int level)
{
    if (!column || column->isPicture())
        return;
    columns()->beginUpdate();
    column->setGroupIndex(std::max(level, 0));
    if (m_hideGrouped)
        column->setVisible(false);
    columns()->endUpdate();
}

void TGridTableView::ungroupColumn(TGridColumn* column, int position)
{
    if (!column)
        return;
    columns()->beginUpdate();
    column->setGroupIndex(-1);
    if (m_hideGrouped || position >= 0)
        column->setVisible(true);
    if (position >= 0)
        column->setPosition(position > column->position() ? position - 1 : position);
    columns()->endUpdate();
}

void TGridTableView::sortByColumn(TGridColumn* column, Qt::KeyboardModifiers modifiers)
{
    if (!column || column->isPicture())
        return;
    const auto flip = [](TGridSortOrder order) {
        return order == TGridSortOrder::Ascending ? TGridSortOrder::Descending : TGridSortOrder::Ascending;
    };
    if (column->groupIndex() >= 0) {
        column->setSortOrder(flip(column->sortOrder()));
        return;
    }
    if (modifiers & Qt::ControlModifier) {
        column->setSortOrder(TGridSortOrder::None);
        return;
    }
    if (modifiers & Qt::ShiftModifier) {
        column->setSortOrder(column->sortIndex() >= 0 ? flip(column->sortOrder())
                                                      : TGridSortOrder::Ascending);
        return;
    }
    const QList<TGridColumn*> sorted = columns()->sortColumns();
    if (sorted.size() == 1 && sorted.first() == column) {
        column->setSortOrder(flip(column->sortOrder()));
        return;
    }
    columns()->beginUpdate();
    columns()->clearSort();
    column->setSortOrder(TGridSortOrder::Ascending);
    columns()->endUpdate();
}

QWidget* TGridTableView::groupByPanel() const
{
    return m_panel;
}

QRect TGridTableView::groupByPanelGeometry() const
{
    return m_panel->isVisibleTo(const_cast<TGridTableView*>(this)) ? m_panel->geometry() : QRect();
}

QHeaderView* TGridTableView::header() const
{
    return m_area->header();
}

QWidget* TGridTableView::rowsViewport() const
{
    return m_area->viewport();
}

QRect TGridTableView::rowRect(int sourceRow) const
{
    const QRect rect = m_area->rowRect(model()->displayIndexOfSourceRow(sourceRow));
    return rect.isEmpty() ? QRect() : rect.translated(m_area->viewport()->mapTo(this, QPoint(0, 0)));
}

QRect TGridTableView::groupRowRect(const TGridGroupNode* group) const
{
    const QRect rect = m_area->rowRect(model()->displayIndexOfGroup(group));
    return rect.isEmpty() ? QRect() : rect.translated(m_area->viewport()->mapTo(this, QPoint(0, 0)));
}

QRect TGridTableView::cellRect(int sourceRow, const TGridColumn* column) const
{
    const QRect cell = m_area->cellRect(m_area->rowRect(model()->displayIndexOfSourceRow(sourceRow)), column);
    return cell.isEmpty() ? QRect() : cell.translated(m_area->viewport()->mapTo(this, QPoint(0, 0)));
}

QRect TGridTableView::headerRect(const TGridColumn* column) const
{
    const QHeaderView* h = m_area->header();
    if (!column || h->isSectionHidden(column->id()))
        return {};
    const QRect rect(h->sectionViewportPosition(column->id()), 0, h->sectionSize(column->id()), h->height());
    return rect.translated(h->viewport()->mapTo(this, QPoint(0, 0)));
}

TGridHitInfo TGridTableView::hitTest(const QPoint& pos) const
{
    TGridHitInfo hit;
    const QWidget* child = childAt(pos);
    if (!child)
        return hit;
    if (child == m_panel || m_panel->isAncestorOf(child)) {
        hit.Kind = TGridHitKind::GroupByPanel;
        const int level = m_panel->levelAt(m_panel->mapFrom(this, pos));
        hit.Column = level >= 0 ? columns()->groupColumns().value(level) : nullptr;
        return hit;
    }
    const QHeaderView* h = m_area->header();
    if (child == h || h->isAncestorOf(child)) {
        hit.Kind = TGridHitKind::Header;
        const int logical = h->logicalIndexAt(h->viewport()->mapFrom(this, pos));
        hit.Column = logical >= 0 ? columns()->at(logical) : nullptr;
        return hit;
    }
    if (child == m_area->viewport())
        return m_area->hitTestViewport(m_area->viewport()->mapFrom(this, pos));
    if (child->objectName() == QStringLiteral("footer"))
        hit.Kind = TGridHitKind::Footer;
    return hit;
}

void TGridTableView::currentRowMoved(int)
{
    m_area->followCurrentRow();
}

void TGridTableView::saveSettings(QMap<QString, QString>&) const {}

void TGridTableView::restoreSettings(const QMap<QString, QString>&) {}

void TGridTableView::retranslate()
{
    TGridView::retranslate();
    m_panel->update();
    m_area->viewport()->update();
}

bool TGridTableView::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::LayoutDirectionChange:
    case QEvent::StyleChange:
        m_area->syncHeader();
        m_area->relayout();
        m_panel->refresh();
        break;
    default:
        break;
    }
    return TGridView::event(event);
}

void TGridTableView::resizeEvent(QResizeEvent* event)
{
    TGridView::resizeEvent(event);
    emit groupByPanelGeometryChanged();
}

void TGridTableView::setDragRunner(std::function<Qt::DropAction(QDrag*)> runner)
{
    dragRunner() = std::move(runner);
}

Qt::DropAction TGridTableView::runDrag(QDrag* drag)
{
    if (dragRunner())
        return dragRunner()(drag);
    return drag->exec(Qt::MoveAction);
}

QString TGridTableView::columnMimeType()
{
    return QStringLiteral("application/x-orvane-grid-column");
}

QMimeData* TGridTableView::columnMime(const TGridColumn* column, const QString& origin)
{
    auto* mime = new QMimeData;
    mime->setData(columnMimeType(),
                  QByteArray::number(quintptr(column->columns())) + ':' + QByteArray::number(column->id()));
    mime->setData(columnMimeType() + QStringLiteral("-origin"), origin.toUtf8());
    return mime;
}

TGridColumn* TGridTableView::columnFromMime(const QMimeData* mime, const TGridColumns* columns)
{
    if (!mime || !mime->hasFormat(columnMimeType()))
        return nullptr;
    const QList<QByteArray> parts = mime->data(columnMimeType()).split(':');
    if (parts.size() != 2 || parts[0].toULongLong() != quintptr(columns))
        return nullptr;
    return columns->at(parts[1].toInt());
}
