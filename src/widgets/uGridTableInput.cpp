// Mouse and keyboard of a table view's rows.

#include "uGridColumns.h"
#include "uGridHeader.h"
#include "uGridModel.h"
#include "uGridTableArea.h"
#include "uGridTableView.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>

int TGridTableArea::focusIndex() const
{
    if (!m_focusGroup.isEmpty())
        return model()->displayIndexOfGroup(model()->groupOfPath(m_focusGroup));
    return model()->displayIndexOfSourceRow(m_view->currentSourceRow());
}

TGridColumn* TGridTableArea::focusedColumn() const
{
    TGridColumn* column = m_view->columns()->at(m_focusColumn);
    return column && column->visible() ? column : nullptr;
}

void TGridTableArea::setFocusedColumn(TGridColumn* column)
{
    m_focusColumn = column ? column->id() : -1;
    viewport()->update();
}

void TGridTableArea::followCurrentRow()
{
    m_focusGroup.clear();
    const int index = model()->displayIndexOfSourceRow(m_view->currentSourceRow());
    if (index >= 0 && isVisible())
        scrollToIndex(index);
    viewport()->update();
}

int TGridTableArea::nextFocusable(int from, int step) const
{
    const int count = model()->displayRowCount();
    int index = std::clamp(from, 0, std::max(count - 1, 0));
    while (index >= 0 && index < count && model()->displayRow(index).Kind == TGridRowKind::GroupFooter)
        index += step;
    if (index < 0 || index >= count) {
        // Nothing that way: the nearest row the other way.
        index = std::clamp(from, 0, std::max(count - 1, 0));
        while (index >= 0 && index < count && model()->displayRow(index).Kind == TGridRowKind::GroupFooter)
            index -= step;
    }
    return index >= 0 && index < count ? index : -1;
}

void TGridTableArea::moveFocus(int displayIndex, Qt::KeyboardModifiers modifiers, bool mouse)
{
    const TGridModel* m = model();
    if (displayIndex < 0 || displayIndex >= m->displayRowCount())
        return;
    const TGridRow row = m->displayRow(displayIndex);
    if (row.Kind == TGridRowKind::GroupFooter)
        return;
    const bool shift = modifiers & Qt::ShiftModifier;
    const bool ctrl = modifiers & Qt::ControlModifier;
    if (row.Kind == TGridRowKind::Group) {
        m_focusGroup = m->groupPath(row.Group);
        if (!shift && !ctrl)
            m_view->clearSelection();
        scrollToIndex(displayIndex);
        viewport()->update();
        return;
    }
    if (shift && m_view->multiSelect()) {
        int anchor = m->displayIndexOfSourceRow(m_view->anchorRow());
        if (anchor < 0) {
            anchor = displayIndex;
            m_view->setAnchorRow(row.SourceRow);
        }
        QList<int> rows;
        for (int i = std::min(anchor, displayIndex); i <= std::max(anchor, displayIndex); ++i) {
            const TGridRow r = m->displayRow(i);
            if (r.Kind == TGridRowKind::Data)
                rows.append(r.SourceRow);
        }
        m_view->selectRows(rows, ctrl && mouse);
    } else if (ctrl) {
        if (mouse)
            m_view->toggleSelected(row.SourceRow);
    } else {
        m_view->selectOnly(row.SourceRow);
    }
    m_focusGroup.clear();
    m_view->setCurrentSourceRow(row.SourceRow);
    scrollToIndex(displayIndex);
    viewport()->update();
}

void TGridTableArea::mousePressEvent(QMouseEvent* event)
{
    setFocus(Qt::MouseFocusReason);
    const QPoint pos = event->position().toPoint();
    const TGridHitInfo hit = hitTestViewport(pos);
    m_pressIndex = -1;
    m_dragSelecting = false;
    if (event->button() != Qt::LeftButton && event->button() != Qt::RightButton)
        return;
    const bool left = event->button() == Qt::LeftButton;
    if (hit.Kind == TGridHitKind::GroupRow) {
        const TGridRow row = model()->displayRow(hit.DisplayRow);
        if (left && expandButtonRect(row, rowRect(hit.DisplayRow)).contains(pos)) {
            model()->setExpanded(row.Group, !row.Group->Expanded);
            return;
        }
        moveFocus(hit.DisplayRow, left ? event->modifiers() : Qt::NoModifier, true);
        return;
    }
    if (hit.Kind != TGridHitKind::RecordCell)
        return;
    if (hit.Column)
        m_focusColumn = hit.Column->id();
    if (!left && m_view->isSelected(hit.SourceRow)) {
        // A right click inside the selection keeps it for the menu.
        m_focusGroup.clear();
        m_view->setCurrentSourceRow(hit.SourceRow);
        viewport()->update();
        return;
    }
    moveFocus(hit.DisplayRow, left ? event->modifiers() : Qt::NoModifier, true);
    m_pressIndex = hit.DisplayRow;
    m_dragSelecting =
        left && m_view->multiSelect() && !(event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier));
}

void TGridTableArea::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_dragSelecting || !(event->buttons() & Qt::LeftButton))
        return;
    const int y = std::clamp(int(event->position().y()), 0, viewport()->height() - 1);
    const int index = displayIndexAt(y);
    if (index < 0 || index == m_pressIndex)
        return;
    const TGridModel* m = model();
    QList<int> rows;
    for (int i = std::min(index, m_pressIndex); i <= std::max(index, m_pressIndex); ++i) {
        const TGridRow r = m->displayRow(i);
        if (r.Kind == TGridRowKind::Data)
            rows.append(r.SourceRow);
    }
    m_view->selectRows(rows, false);
}

void TGridTableArea::mouseReleaseEvent(QMouseEvent*)
{
    m_dragSelecting = false;
    m_pressIndex = -1;
}

void TGridTableArea::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    const TGridHitInfo hit = hitTestViewport(pos);
    if (event->button() != Qt::LeftButton)
        return;
    if (hit.Kind == TGridHitKind::GroupRow) {
        const TGridRow row = model()->displayRow(hit.DisplayRow);
        if (!expandButtonRect(row, rowRect(hit.DisplayRow)).contains(pos))
            model()->setExpanded(row.Group, !row.Group->Expanded);
    }
    emit m_view->doubleClicked(hit);
}

void TGridTableArea::contextMenuEvent(QContextMenuEvent* event)
{
    const QPoint pos = viewport()->mapFrom(this, event->pos());
    TGridHitInfo hit = hitTestViewport(pos);
    if (event->reason() == QContextMenuEvent::Keyboard) {
        hit = {};
        const int focus = focusIndex();
        if (focus >= 0)
            hit = hitTestViewport(rowRect(focus).center());
    }
    emit m_view->contextMenuRequested(hit, event->globalPos());
}

void TGridTableArea::keyPressEvent(QKeyEvent* event)
{
    const TGridModel* m = model();
    const int count = m->displayRowCount();
    const Qt::KeyboardModifiers modifiers = event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier);
    if (event->matches(QKeySequence::SelectAll)) {
        m_view->selectAll();
        return;
    }
    if (count == 0) {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    const int focus = focusIndex();
    const TGridRow row = focus >= 0 ? m->displayRow(focus) : TGridRow();
    const QList<TGridColumn*> shown = m_view->columns()->visibleColumns();
    int target = -1;
    int key = event->key();
    if (isRightToLeft() && (key == Qt::Key_Left || key == Qt::Key_Right))
        key = key == Qt::Key_Left ? Qt::Key_Right : Qt::Key_Left;
    switch (key) {
    case Qt::Key_Up:
        target = focus < 0 ? nextFocusable(firstRow(), 1) : nextFocusable(focus - 1, -1);
        break;
    case Qt::Key_Down:
        target = focus < 0 ? nextFocusable(firstRow(), 1) : nextFocusable(focus + 1, 1);
        break;
    case Qt::Key_PageUp:
        target = nextFocusable(std::max(0, focus - rowsPerPage()), -1);
        break;
    case Qt::Key_PageDown:
        target = nextFocusable(std::min(count - 1, std::max(focus, 0) + rowsPerPage()), 1);
        break;
    case Qt::Key_Home:
        if (event->modifiers() & Qt::ControlModifier)
            target = nextFocusable(0, 1);
        else if (!shown.isEmpty())
            setFocusedColumn(shown.first());
        break;
    case Qt::Key_End:
        if (event->modifiers() & Qt::ControlModifier)
            target = nextFocusable(count - 1, -1);
        else if (!shown.isEmpty())
            setFocusedColumn(shown.last());
        break;
    case Qt::Key_Left:
        if (row.Kind == TGridRowKind::Group) {
            if (row.Group->Expanded)
                model()->setExpanded(row.Group, false);
            else if (row.Group->Parent && row.Group->Parent->Level >= 0)
                target = m->displayIndexOfGroup(row.Group->Parent);
        } else if (!shown.isEmpty()) {
            const int at = int(shown.indexOf(focusedColumn()));
            setFocusedColumn(shown[std::max(0, at < 0 ? 0 : at - 1)]);
        }
        break;
    case Qt::Key_Right:
        if (row.Kind == TGridRowKind::Group) {
            if (!row.Group->Expanded)
                model()->setExpanded(row.Group, true);
            else
                target = nextFocusable(focus + 1, 1);
        } else if (!shown.isEmpty()) {
            const int at = int(shown.indexOf(focusedColumn()));
            setFocusedColumn(shown[std::min(int(shown.size()) - 1, at < 0 ? 0 : at + 1)]);
        }
        break;
    case Qt::Key_Plus:
        if (row.Kind == TGridRowKind::Group)
            model()->setExpanded(row.Group, true);
        break;
    case Qt::Key_Minus:
        if (row.Kind == TGridRowKind::Group)
            model()->setExpanded(row.Group, false);
        break;
    case Qt::Key_Asterisk:
        m_view->expandAll();
        break;
    case Qt::Key_Space:
        if (row.Kind == TGridRowKind::Data) {
            if (event->modifiers() & Qt::ControlModifier)
                m_view->toggleSelected(row.SourceRow);
            else
                m_view->selectOnly(row.SourceRow);
        } else if (row.Kind == TGridRowKind::Group) {
            model()->setExpanded(row.Group, !row.Group->Expanded);
        }
        break;
    default:
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    if (target >= 0)
        moveFocus(target, modifiers, false);
    viewport()->update();
}

void TGridTableArea::wheelEvent(QWheelEvent* event)
{
    QAbstractScrollArea::wheelEvent(event);
}

void TGridTableArea::focusInEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void TGridTableArea::focusOutEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}
