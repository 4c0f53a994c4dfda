#include "uGridGroupByPanel.h"

#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridPaint.h"
#include "uGridTableView.h"
#include "uGridTexts.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>

namespace {
constexpr int Margin = 6;
constexpr int Gap = 10;
constexpr int SortMark = 14;
} // namespace

TGridGroupByPanel::TGridGroupByPanel(TGridTableView* view) : QWidget(view), m_view(view)
{
    setObjectName(QStringLiteral("groupByPanel"));
    setAcceptDrops(true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QList<TGridColumn*> TGridGroupByPanel::groups() const
{
    return m_view->columns()->groupColumns();
}

int TGridGroupByPanel::boxHeight() const
{
    return fontMetrics().height() + 8;
}

int TGridGroupByPanel::boxWidth(const TGridColumn* column) const
{
    return fontMetrics().horizontalAdvance(m_view->model()->columnCaption(column)) + 2 * 8 + SortMark;
}

QSize TGridGroupByPanel::sizeHint() const
{
    const int levels = int(groups().size());
    const int h = boxHeight();
    const int height = levels == 0 ? std::max(h + 2 * Margin, fontMetrics().height() * 2 + 8)
                                   : 2 * Margin + h + (levels - 1) * (h / 2);
    return QSize(200, std::max(height, fontMetrics().height() * 2 + 8));
}

QSize TGridGroupByPanel::minimumSizeHint() const
{
    return sizeHint();
}

QRect TGridGroupByPanel::boxRect(int level) const
{
    const QList<TGridColumn*> list = groups();
    if (level < 0 || level >= list.size())
        return {};
    int x = Margin;
    for (int i = 0; i < level; ++i)
        x += boxWidth(list[i]) + Gap;
    const int h = boxHeight();
    QRect rect(x, Margin + level * (h / 2), boxWidth(list[level]), h);
    return QStyle::visualRect(layoutDirection(), this->rect(), rect);
}

int TGridGroupByPanel::levelAt(const QPoint& pos) const
{
    for (int level = 0; level < groups().size(); ++level)
        if (boxRect(level).contains(pos))
            return level;
    return -1;
}

int TGridGroupByPanel::dropLevel(const QPoint& pos) const
{
    const int levels = int(groups().size());
    for (int level = 0; level < levels; ++level) {
        const QRect box = boxRect(level);
        const bool before = isRightToLeft() ? pos.x() > box.center().x() : pos.x() < box.center().x();
        if (before)
            return level;
    }
    return levels;
}

void TGridGroupByPanel::refresh()
{
    updateGeometry();
    update();
}

void TGridGroupByPanel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setLayoutDirection(layoutDirection());
    const QPalette& pal = palette();
    painter.fillRect(rect(), GridPaint::panelColor(pal));
    painter.setPen(GridPaint::lineColor(pal));
    painter.drawLine(rect().bottomLeft(), rect().bottomRight());

    const QList<TGridColumn*> list = groups();
    // Lines from each box down to the next one.
    painter.setPen(
        QPen(GridPaint::blend(pal.color(QPalette::Window), pal.color(QPalette::WindowText), 0.45), 1));
    for (int level = 0; level + 1 < list.size(); ++level) {
        const QRect a = boxRect(level);
        const QRect b = boxRect(level + 1);
        const int x = isRightToLeft() ? a.right() - 8 : a.left() + 8;
        const int endX = isRightToLeft() ? b.right() : b.left();
        painter.drawLine(x, a.bottom(), x, b.center().y());
        painter.drawLine(x, b.center().y(), endX, b.center().y());
    }
    for (int level = 0; level < list.size(); ++level) {
        const QRect box = boxRect(level);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath path;
        path.addRoundedRect(QRectF(box).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
        painter.fillPath(path, pal.color(QPalette::Button));
        painter.setPen(GridPaint::blend(pal.color(QPalette::Button), pal.color(QPalette::ButtonText), 0.35));
        painter.drawPath(path);
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(pal.color(QPalette::ButtonText));
        QRect text = box.adjusted(8, 0, -8 - SortMark, 0);
        QRect mark(box.right() - 8 - SortMark + 4, box.top(), SortMark, box.height());
        if (isRightToLeft()) {
            text = box.adjusted(8 + SortMark, 0, -8, 0);
            mark = QRect(box.left() + 6, box.top(), SortMark, box.height());
        }
        GridPaint::drawText(&painter, text, m_view->model()->columnCaption(list[level]),
                            Qt::AlignLeft | Qt::AlignVCenter, {}, {});
        GridPaint::drawSortMark(&painter, mark, list[level]->sortOrder(), 0, pal,
                                pal.color(QPalette::ButtonText));
    }

    // The text: left while nothing is grouped, centred in the room after the boxes otherwise.
    QRect textRect = rect().adjusted(Margin + 2, 0, -Margin, 0);
    Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter;
    if (!list.isEmpty()) {
        const QRect last = boxRect(int(list.size()) - 1);
        if (isRightToLeft())
            textRect.setRight(last.left() - Gap);
        else
            textRect.setLeft(last.right() + Gap);
        alignment = Qt::AlignCenter;
    }
    painter.setPen(GridPaint::blend(pal.color(QPalette::Window), pal.color(QPalette::WindowText), 0.6));
    if (textRect.width() > 20)
        GridPaint::drawText(&painter, textRect, m_view->groupByText(), alignment, {}, {});

    if (m_dropLevel >= 0) {
        // Where a dropped column would go.
        int x = Margin;
        if (m_dropLevel < list.size())
            x = boxRect(m_dropLevel).left() - Gap / 2;
        else if (!list.isEmpty())
            x = boxRect(int(list.size()) - 1).right() + Gap / 2;
        if (isRightToLeft() && !list.isEmpty())
            x = m_dropLevel < list.size() ? boxRect(m_dropLevel).right() + Gap / 2
                                          : boxRect(int(list.size()) - 1).left() - Gap / 2;
        painter.fillRect(QRect(x - 1, Margin / 2, 3, height() - Margin), pal.color(QPalette::Highlight));
    }
}

void TGridGroupByPanel::mousePressEvent(QMouseEvent* event)
{
    m_pressed = event->button() == Qt::LeftButton ? levelAt(event->position().toPoint()) : -1;
    m_pressPos = event->position().toPoint();
}

void TGridGroupByPanel::mouseMoveEvent(QMouseEvent* event)
{
    if (m_pressed < 0 || !(event->buttons() & Qt::LeftButton) ||
        (event->position().toPoint() - m_pressPos).manhattanLength() < QApplication::startDragDistance())
        return;
    TGridColumn* column = groups().value(m_pressed);
    m_pressed = -1;
    if (!column)
        return;
    auto* drag = new QDrag(this);
    drag->setMimeData(TGridTableView::columnMime(column, QStringLiteral("panel")));
    const QRect box = boxRect(column->groupIndex());
    drag->setPixmap(grab(box));
    drag->setHotSpot(m_pressPos - box.topLeft());
    const Qt::DropAction action = TGridTableView::runDrag(drag);
    // Dropped where nothing takes it: out of the grouping.
    if (action == Qt::IgnoreAction && column->groupIndex() >= 0)
        m_view->ungroupColumn(column);
}

void TGridGroupByPanel::mouseReleaseEvent(QMouseEvent* event)
{
    const int level = levelAt(event->position().toPoint());
    if (m_pressed >= 0 && level == m_pressed) {
        TGridColumn* column = groups().value(level);
        column->setSortOrder(column->sortOrder() == TGridSortOrder::Descending ? TGridSortOrder::Ascending
                                                                               : TGridSortOrder::Descending);
    }
    m_pressed = -1;
}

void TGridGroupByPanel::mouseDoubleClickEvent(QMouseEvent* event)
{
    TGridHitInfo hit;
    hit.Kind = TGridHitKind::GroupByPanel;
    hit.Column = groups().value(levelAt(event->position().toPoint()));
    emit m_view->doubleClicked(hit);
}

void TGridGroupByPanel::contextMenuEvent(QContextMenuEvent* event)
{
    TGridHitInfo hit;
    hit.Kind = TGridHitKind::GroupByPanel;
    hit.Column = groups().value(levelAt(event->pos()));
    emit m_view->contextMenuRequested(hit, event->globalPos());
    if (!m_view->headerMenuEnabled())
        return;
    const TGridTexts& texts = GridTexts();
    QMenu menu(this);
    if (TGridColumn* column = hit.Column)
        menu.addAction(texts.MenuUngroup, this, [this, column] { m_view->ungroupColumn(column); });
    if (!groups().isEmpty()) {
        menu.addAction(texts.MenuClearGrouping, this, [this] {
            m_view->columns()->beginUpdate();
            for (TGridColumn* column : groups())
                m_view->ungroupColumn(column);
            m_view->columns()->endUpdate();
        });
        menu.addSeparator();
        menu.addAction(texts.MenuExpandAll, this, [this] { m_view->expandAll(); });
        menu.addAction(texts.MenuCollapseAll, this, [this] { m_view->collapseAll(); });
    }
    if (!menu.isEmpty())
        menu.exec(event->globalPos());
}

void TGridGroupByPanel::dragEnterEvent(QDragEnterEvent* event)
{
    if (TGridTableView::columnFromMime(event->mimeData(), m_view->columns()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void TGridGroupByPanel::dragMoveEvent(QDragMoveEvent* event)
{
    if (!TGridTableView::columnFromMime(event->mimeData(), m_view->columns())) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    const int level = dropLevel(event->position().toPoint());
    if (level != m_dropLevel) {
        m_dropLevel = level;
        update();
    }
}

void TGridGroupByPanel::dragLeaveEvent(QDragLeaveEvent*)
{
    m_dropLevel = -1;
    update();
}

void TGridGroupByPanel::dropEvent(QDropEvent* event)
{
    m_dropLevel = -1;
    update();
    TGridColumn* column = TGridTableView::columnFromMime(event->mimeData(), m_view->columns());
    if (!column) {
        event->ignore();
        return;
    }
    int level = dropLevel(event->position().toPoint());
    // A box moved to a later level counts the place it leaves.
    if (column->groupIndex() >= 0 && level > column->groupIndex())
        --level;
    m_view->groupByColumn(column, level);
    event->setDropAction(Qt::MoveAction);
    event->accept();
}
