// Mouse and keyboard of a card view.

#include "uGridCardLayout.h"
#include "uGridCardView.h"
#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridTexts.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

int TGridCardArea::focusPosition() const
{
    return m_view->model()->positionOf(m_view->currentSourceRow());
}

void TGridCardArea::moveFocus(int position, Qt::KeyboardModifiers modifiers, bool mouse)
{
    const TGridModel* model = m_view->model();
    const int count = model->visibleRowCount();
    if (position < 0 || position >= count)
        return;
    const int row = model->sourceRowAt(position);
    const bool shift = modifiers & Qt::ShiftModifier;
    const bool ctrl = modifiers & Qt::ControlModifier;
    if (shift && m_view->multiSelect()) {
        int anchor = model->positionOf(m_view->anchorRow());
        if (anchor < 0) {
            anchor = position;
            m_view->setAnchorRow(row);
        }
        QList<int> rows;
        for (int p = std::min(anchor, position); p <= std::max(anchor, position); ++p)
            rows.append(model->sourceRowAt(p));
        m_view->selectRows(rows, ctrl && mouse);
    } else if (ctrl) {
        if (mouse)
            m_view->toggleSelected(row);
    } else {
        m_view->selectOnly(row);
    }
    m_view->setCurrentSourceRow(row);
    scrollToPosition(position);
    viewport()->update();
}

void TGridCardArea::mousePressEvent(QMouseEvent* event)
{
    setFocus(Qt::MouseFocusReason);
    const QPoint pos = event->position().toPoint();
    const TGridHitInfo hit = hitTestViewport(pos);
    m_movingRow = nullptr;
    m_rowDragging = false;
    if (event->button() != Qt::LeftButton && event->button() != Qt::RightButton)
        return;
    if (hit.SourceRow < 0)
        return;
    const bool left = event->button() == Qt::LeftButton;
    if (left && hit.Kind == TGridHitKind::RowCaption && m_view->rowsCustomizable()) {
        m_movingRow = hit.Column;
        m_pressPos = pos;
    }
    if (!left && m_view->isSelected(hit.SourceRow)) {
        m_view->setCurrentSourceRow(hit.SourceRow);
        return;
    }
    moveFocus(m_view->model()->positionOf(hit.SourceRow), left ? event->modifiers() : Qt::NoModifier, true);
}

void TGridCardArea::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_movingRow || !(event->buttons() & Qt::LeftButton))
        return;
    const QPoint pos = event->position().toPoint();
    if (!m_rowDragging && (pos - m_pressPos).manhattanLength() < QApplication::startDragDistance())
        return;
    m_rowDragging = true;
    viewport()->setCursor(Qt::SizeVerCursor);
    // The row goes before the first row of the card under the pointer whose middle is below it.
    const int position = positionAt(pos);
    int drop = -1;
    if (position >= 0) {
        const QRect card = cardRect(position);
        const std::vector<TGridCardRowRect> rows = rowsOf(position);
        drop = int(rows.size());
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (pos.y() < card.top() + rows[i].Row.center().y()) {
                drop = int(i);
                break;
            }
    }
    if (drop != m_dropRow || position != m_dropPosition) {
        m_dropRow = drop;
        m_dropPosition = position;
        viewport()->update();
    }
}

void TGridCardArea::mouseReleaseEvent(QMouseEvent*)
{
    if (m_rowDragging && m_movingRow && m_dropRow >= 0) {
        const QList<TGridColumn*> shown = m_view->columns()->visibleColumns();
        int to = m_dropRow < shown.size() ? shown[m_dropRow]->position()
                                          : (shown.isEmpty() ? 0 : shown.last()->position() + 1);
        if (to > m_movingRow->position())
            --to;
        m_movingRow->setPosition(to);
    }
    if (m_rowDragging)
        viewport()->unsetCursor();
    m_movingRow = nullptr;
    m_rowDragging = false;
    m_dropRow = -1;
}

void TGridCardArea::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    emit m_view->doubleClicked(hitTestViewport(event->position().toPoint()));
}

void TGridCardArea::showRowMenu(TGridColumn* column, const QPoint& globalPos)
{
    const TGridTexts& texts = GridTexts();
    QMenu menu(this);
    menu.addAction(texts.MenuHideRow, this, [column] { column->setVisible(false); });
    menu.addAction(texts.MenuColumnChooser, this, [this] { m_view->showColumnChooser(); });
    menu.exec(globalPos);
}

void TGridCardArea::contextMenuEvent(QContextMenuEvent* event)
{
    TGridHitInfo hit = hitTestViewport(viewport()->mapFrom(this, event->pos()));
    if (event->reason() == QContextMenuEvent::Keyboard) {
        hit = {};
        const QRect card = cardRect(focusPosition());
        if (!card.isEmpty())
            hit = hitTestViewport(card.center());
    }
    if (hit.Kind == TGridHitKind::RowCaption && hit.Column && m_view->rowsCustomizable()) {
        showRowMenu(hit.Column, event->globalPos());
        return;
    }
    emit m_view->contextMenuRequested(hit, event->globalPos());
}

void TGridCardArea::keyPressEvent(QKeyEvent* event)
{
    const int count = m_view->model()->visibleRowCount();
    if (event->matches(QKeySequence::SelectAll)) {
        m_view->selectAll();
        return;
    }
    if (count == 0) {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    const int columns = columnCount();
    const int focus = focusPosition();
    const int pageCards =
        std::max(1, viewport()->height() / std::max(cardHeight() + m_view->cardIndent(), 1)) * columns;
    int key = event->key();
    if (isRightToLeft() && (key == Qt::Key_Left || key == Qt::Key_Right))
        key = key == Qt::Key_Left ? Qt::Key_Right : Qt::Key_Left;
    int target = -1;
    switch (key) {
    case Qt::Key_Left:
        target = focus < 0 ? 0 : std::max(focus - 1, 0);
        break;
    case Qt::Key_Right:
        target = focus < 0 ? 0 : std::min(focus + 1, count - 1);
        break;
    case Qt::Key_Up:
        target = focus < 0 ? 0 : (focus - columns >= 0 ? focus - columns : focus);
        break;
    case Qt::Key_Down:
        target = focus < 0 ? 0 : (focus + columns < count ? focus + columns : focus);
        break;
    case Qt::Key_PageUp:
        target = std::max(focus - pageCards, 0);
        break;
    case Qt::Key_PageDown:
        target = std::min(std::max(focus, 0) + pageCards, count - 1);
        break;
    case Qt::Key_Home:
        target = 0;
        break;
    case Qt::Key_End:
        target = count - 1;
        break;
    case Qt::Key_Space:
        if (focus >= 0) {
            const int row = m_view->model()->sourceRowAt(focus);
            if (event->modifiers() & Qt::ControlModifier)
                m_view->toggleSelected(row);
            else
                m_view->selectOnly(row);
        }
        return;
    default:
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    if (target >= 0)
        moveFocus(target, event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier), false);
}

void TGridCardArea::wheelEvent(QWheelEvent* event)
{
    // Exactly Ctrl: the card width.
    if (m_view->wheelZoom() && event->modifiers() == Qt::ControlModifier && event->angleDelta().y() != 0) {
        const double factor = event->angleDelta().y() < 0 ? m_view->m_zoomDown : m_view->m_zoomUp;
        m_view->setCardWidth(TGridCardLayout::zoomedWidth(m_view->cardWidth(), factor, m_view->m_zoomMin));
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void TGridCardArea::focusInEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void TGridCardArea::focusOutEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}
