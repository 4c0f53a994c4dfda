#include "uGridHeader.h"

#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridPaint.h"
#include "uGridTableView.h"
#include "uGridTexts.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QHelpEvent>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QStyleOptionHeader>
#include <QToolTip>

namespace {
constexpr int SortMarkWidth = 16;
constexpr int TextPadding = 4;
} // namespace

// ---- header model ------------------------------------------------------------------------------

TGridHeaderModel::TGridHeaderModel(TGridTableView* view) : QAbstractTableModel(view), m_view(view)
{
    m_count = view->columns()->count();
}

int TGridHeaderModel::rowCount(const QModelIndex&) const
{
    return 0;
}

int TGridHeaderModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_count;
}

QVariant TGridHeaderModel::data(const QModelIndex&, int) const
{
    return {};
}

QVariant TGridHeaderModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return m_view->model()->columnCaption(m_view->columns()->at(section));
}

void TGridHeaderModel::reset()
{
    const int count = m_view->columns()->count();
    if (count > m_count) {
        beginInsertColumns(QModelIndex(), m_count, count - 1);
        m_count = count;
        endInsertColumns();
    } else if (count < m_count) {
        beginRemoveColumns(QModelIndex(), count, m_count - 1);
        m_count = count;
        endRemoveColumns();
    }
}

void TGridHeaderModel::captionsChanged()
{
    if (m_count > 0)
        emit headerDataChanged(Qt::Horizontal, 0, m_count - 1);
}

// ---- header ---------------------------------------------------------------------------------------

TGridHeader::TGridHeader(TGridTableView* view, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent), m_view(view)
{
    setObjectName(QStringLiteral("header"));
    setSectionsMovable(true);
    setSectionsClickable(true);
    setHighlightSections(false);
    setStretchLastSection(false);
    setSortIndicatorShown(false);
    setMinimumSectionSize(16);
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setTextElideMode(Qt::ElideRight);
    setAcceptDrops(true);
    setModel(new TGridHeaderModel(view));
}

int TGridHeader::preferredHeight() const
{
    return fontMetrics().height() + 10;
}

TGridColumn* TGridHeader::columnAt(int x) const
{
    const int logical = logicalIndexAt(x);
    return logical >= 0 ? m_view->columns()->at(logical) : nullptr;
}

int TGridHeader::dropPosition(int x) const
{
    // Before the shown column under x when x is in its first half, else after it.
    const int logical = logicalIndexAt(x);
    if (logical < 0) {
        // Past the last column: after every column.
        return x < 0 ? 0 : m_view->columns()->count();
    }
    const int left = sectionViewportPosition(logical);
    const int size = sectionSize(logical);
    const bool firstHalf = isRightToLeft() ? x > left + size / 2 : x < left + size / 2;
    const int position = m_view->columns()->at(logical)->position();
    return firstHalf ? position : position + 1;
}

QSize TGridHeader::sectionSizeFromContents(int logicalIndex) const
{
    const TGridColumn* column = m_view->columns()->at(logicalIndex);
    const QString caption = column ? m_view->model()->columnCaption(column) : QString();
    return QSize(fontMetrics().horizontalAdvance(caption) + 2 * TextPadding + SortMarkWidth + 8,
                 preferredHeight());
}

void TGridHeader::paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const
{
    const TGridColumn* column = m_view->columns()->at(logicalIndex);
    if (!column || !rect.isValid())
        return;
    QStyleOptionHeader option;
    initStyleOption(&option);
    option.rect = rect;
    option.section = logicalIndex;
    option.state |= QStyle::State_Raised;
    if (isEnabled())
        option.state |= QStyle::State_Enabled;
    if (window()->isActiveWindow())
        option.state |= QStyle::State_Active;
    option.text.clear();
    option.sortIndicator = QStyleOptionHeader::None;
    style()->drawControl(QStyle::CE_HeaderSection, &option, painter, this);

    const bool sorted = column->sortOrder() != TGridSortOrder::None &&
                        (column->sortIndex() >= 0 || column->groupIndex() >= 0);
    const int sortCount = int(m_view->columns()->sortColumns().size());
    QRect text = rect.adjusted(TextPadding, 0, -TextPadding, 0);
    QRect mark;
    if (sorted) {
        if (isRightToLeft()) {
            mark = QRect(text.left(), rect.top(), SortMarkWidth, rect.height());
            text.setLeft(text.left() + SortMarkWidth);
        } else {
            mark = QRect(text.right() - SortMarkWidth + 1, rect.top(), SortMarkWidth, rect.height());
            text.setRight(text.right() - SortMarkWidth);
        }
    }
    painter->save();
    painter->setLayoutDirection(layoutDirection());
    painter->setPen(palette().color(QPalette::ButtonText));
    GridPaint::drawText(painter, text, m_view->model()->columnCaption(column),
                        column->alignment() & Qt::AlignRight ? Qt::AlignRight | Qt::AlignVCenter
                                                             : Qt::AlignLeft | Qt::AlignVCenter,
                        {}, {});
    if (sorted)
        GridPaint::drawSortMark(painter, mark, column->sortOrder(),
                                sortCount > 1 && column->sortIndex() >= 0 ? column->sortIndex() + 1 : 0,
                                palette(), palette().color(QPalette::ButtonText));
    painter->restore();
}

void TGridHeader::paintEvent(QPaintEvent* event)
{
    QHeaderView::paintEvent(event);
    if (m_dropMarker < 0)
        return;
    QPainter painter(viewport());
    painter.setLayoutDirection(layoutDirection());
    painter.fillRect(QRect(m_dropMarker - 1, 0, 3, height()), palette().color(QPalette::Highlight));
}

void TGridHeader::mousePressEvent(QMouseEvent* event)
{
    m_dragged = false;
    m_pressed = -1;
    if (event->button() == Qt::LeftButton) {
        const int logical = logicalIndexAt(event->position().toPoint());
        // Not on the handle between two sections (that resizes).
        const int x = int(event->position().x());
        const int left = logical >= 0 ? sectionViewportPosition(logical) : 0;
        const int right = logical >= 0 ? left + sectionSize(logical) : 0;
        if (logical >= 0 && x > left + 4 && x < right - 4) {
            m_pressed = logical;
            m_pressPos = event->position().toPoint();
        }
    }
    QHeaderView::mousePressEvent(event);
}

void TGridHeader::mouseMoveEvent(QMouseEvent* event)
{
    if (m_pressed >= 0 && !m_dragged && (event->buttons() & Qt::LeftButton)) {
        const QPoint pos = event->position().toPoint();
        const int distance = QApplication::startDragDistance();
        // Up or down out of the header: the column travels to the group-by panel.
        if ((pos.y() < -distance || pos.y() > height() + distance) &&
            std::abs(pos.x() - m_pressPos.x()) < width()) {
            m_dragged = true;
            TGridColumn* column = m_view->columns()->at(m_pressed);
            // End the header's own press, which would otherwise move or click the section.
            QMouseEvent release(QEvent::MouseButtonRelease, m_pressPos, mapToGlobal(m_pressPos),
                                Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
            QHeaderView::mouseReleaseEvent(&release);
            auto* drag = new QDrag(this);
            drag->setMimeData(TGridTableView::columnMime(column, QStringLiteral("header")));
            const QRect section(sectionViewportPosition(m_pressed), 0, sectionSize(m_pressed), height());
            drag->setPixmap(viewport()->grab(section));
            drag->setHotSpot(m_pressPos - section.topLeft());
            TGridTableView::runDrag(drag);
            m_pressed = -1;
            return;
        }
    }
    if (!m_dragged)
        QHeaderView::mouseMoveEvent(event);
}

void TGridHeader::mouseReleaseEvent(QMouseEvent* event)
{
    const bool click =
        m_pressed >= 0 && !m_dragged &&
        (event->position().toPoint() - m_pressPos).manhattanLength() < QApplication::startDragDistance() &&
        logicalIndexAt(event->position().toPoint()) == m_pressed;
    const int pressed = m_pressed;
    m_pressed = -1;
    if (m_dragged) {
        m_dragged = false;
        return;
    }
    QHeaderView::mouseReleaseEvent(event);
    if (click)
        m_view->sortByColumn(m_view->columns()->at(pressed), event->modifiers());
}

void TGridHeader::mouseDoubleClickEvent(QMouseEvent* event)
{
    QHeaderView::mouseDoubleClickEvent(event);
    TGridColumn* column = columnAt(int(event->position().x()));
    if (!column)
        return;
    const int left = sectionViewportPosition(column->id());
    const int x = int(event->position().x());
    if (x <= left + 4 || x >= left + sectionSize(column->id()) - 4)
        return; // the handle: the header's best fit
    TGridHitInfo hit;
    hit.Kind = TGridHitKind::Header;
    hit.Column = column;
    emit m_view->doubleClicked(hit);
}

void TGridHeader::contextMenuEvent(QContextMenuEvent* event)
{
    TGridColumn* column = columnAt(event->pos().x());
    TGridHitInfo hit;
    hit.Kind = TGridHitKind::Header;
    hit.Column = column;
    emit m_view->contextMenuRequested(hit, event->globalPos());
    if (!m_view->headerMenuEnabled())
        return;
    const TGridTexts& texts = GridTexts();
    QMenu menu(this);
    if (column) {
        menu.addAction(texts.MenuSortAscending, this, [this, column] {
            m_view->columns()->beginUpdate();
            if (column->groupIndex() < 0 && column->sortIndex() < 0)
                m_view->columns()->clearSort();
            column->setSortOrder(TGridSortOrder::Ascending);
            m_view->columns()->endUpdate();
        });
        menu.addAction(texts.MenuSortDescending, this, [this, column] {
            m_view->columns()->beginUpdate();
            if (column->groupIndex() < 0 && column->sortIndex() < 0)
                m_view->columns()->clearSort();
            column->setSortOrder(TGridSortOrder::Descending);
            m_view->columns()->endUpdate();
        });
        menu.addAction(texts.MenuClearSorting, this, [this] { m_view->columns()->clearSort(); });
        menu.addSeparator();
        if (column->groupIndex() < 0)
            menu.addAction(texts.MenuGroupByColumn, this, [this, column] {
                m_view->groupByColumn(column, int(m_view->columns()->groupColumns().size()));
            });
        menu.addAction(texts.MenuHideColumn, this, [column] { column->setVisible(false); });
        menu.addSeparator();
        menu.addAction(texts.MenuBestFit, this, [this, column] { m_view->applyBestFit(column); });
    }
    menu.addAction(texts.MenuBestFitAll, this, [this] { m_view->applyBestFit(); });
    menu.addAction(texts.MenuColumnChooser, this, [this] { m_view->showColumnChooser(); });
    menu.exec(event->globalPos());
}

void TGridHeader::dragEnterEvent(QDragEnterEvent* event)
{
    if (TGridTableView::columnFromMime(event->mimeData(), m_view->columns()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void TGridHeader::dragMoveEvent(QDragMoveEvent* event)
{
    if (!TGridTableView::columnFromMime(event->mimeData(), m_view->columns())) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    const int x = int(event->position().x());
    const int logical = logicalIndexAt(x);
    if (logical < 0)
        m_dropMarker = length() - offset();
    else {
        const int left = sectionViewportPosition(logical);
        const int size = sectionSize(logical);
        const bool before = isRightToLeft() ? x > left + size / 2 : x < left + size / 2;
        m_dropMarker = (before != isRightToLeft()) ? left : left + size;
    }
    viewport()->update();
}

void TGridHeader::dragLeaveEvent(QDragLeaveEvent*)
{
    m_dropMarker = -1;
    viewport()->update();
}

void TGridHeader::dropEvent(QDropEvent* event)
{
    m_dropMarker = -1;
    viewport()->update();
    TGridColumn* column = TGridTableView::columnFromMime(event->mimeData(), m_view->columns());
    if (!column) {
        event->ignore();
        return;
    }
    const int position = dropPosition(int(event->position().x()));
    if (column->groupIndex() >= 0) {
        m_view->ungroupColumn(column, position);
    } else {
        column->setVisible(true);
        column->setPosition(position > column->position() ? position - 1 : position);
    }
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

bool TGridHeader::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const TGridColumn* column = columnAt(help->pos().x());
        if (column) {
            const QString caption = m_view->model()->columnCaption(column);
            const int room = sectionSize(column->id()) - 2 * TextPadding - SortMarkWidth;
            if (fontMetrics().horizontalAdvance(caption) > room) {
                QToolTip::showText(help->globalPos(), caption, this);
                return true;
            }
        }
        QToolTip::hideText();
        event->ignore();
        return true;
    }
    return QHeaderView::viewportEvent(event);
}
