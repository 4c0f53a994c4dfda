// Geometry and painting of a table view's rows, header and footer.

#include "uGridTableArea.h"

#include "uEditorItem.h"
#include "uGridColumns.h"
#include "uGridHeader.h"
#include "uGridModel.h"
#include "uGridPaint.h"
#include "uGridTableView.h"
#include "uGridTexts.h"

#include <QHelpEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionHeader>
#include <QStyleOptionViewItem>
#include <QToolTip>

namespace {
constexpr int CellPadding = 4;
constexpr int RowPadding = 4;
constexpr int MaxWrappedLines = 3;

// The empty header part over the group indents.
class TGridHeaderCorner : public QWidget
{
public:
    explicit TGridHeaderCorner(QWidget* parent) : QWidget(parent) {}

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setLayoutDirection(layoutDirection());
        QStyleOptionHeader option;
        option.initFrom(this);
        option.rect = rect();
        option.state |= QStyle::State_Raised;
        style()->drawControl(QStyle::CE_HeaderSection, &option, &painter, this);
    }
};
} // namespace

TGridTableArea::TGridTableArea(TGridTableView* view)
    : QAbstractScrollArea(view), m_view(view), m_header(new TGridHeader(view, this)),
      m_corner(new TGridHeaderCorner(this)), m_footer(nullptr)
{
    setObjectName(QStringLiteral("tableArea"));
    viewport()->setObjectName(QStringLiteral("rows"));
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setMouseTracking(false);
    setFrameShape(QFrame::NoFrame);
    m_footer = new TGridFooterBar(view, this);
    m_footer->hide();
    verticalScrollBar()->setSingleStep(1);
    connect(m_header, &QHeaderView::sectionResized, this, &TGridTableArea::onSectionResized);
    connect(m_header, &QHeaderView::sectionMoved, this, &TGridTableArea::onSectionMoved);
    connect(m_header, &QHeaderView::sectionHandleDoubleClicked, this,
            [this](int logical) { bestFit(m_view->columns()->at(logical)); });
}

TGridModel* TGridTableArea::model() const
{
    return m_view->model();
}

int TGridTableArea::lineHeight() const
{
    return fontMetrics().height();
}

int TGridTableArea::indentWidth() const
{
    return lineHeight() + 6;
}

int TGridTableArea::gutterWidth() const
{
    return model()->groupDepth() * indentWidth();
}

int TGridTableArea::headerLeft() const
{
    return isRightToLeft() ? 0 : gutterWidth();
}

int TGridTableArea::firstRow() const
{
    return verticalScrollBar()->value();
}

QString TGridTableArea::cellText(const TGridRow& row, const TGridColumn* column) const
{
    return model()->displayText(row.SourceRow, column);
}

int TGridTableArea::rowHeight(int displayIndex) const
{
    const auto cached = m_heights.constFind(displayIndex);
    if (cached != m_heights.constEnd())
        return cached.value();
    const int base = lineHeight() + 2 * RowPadding;
    const TGridRow row = model()->displayRow(displayIndex);
    int height = base;
    if (row.Kind == TGridRowKind::Group) {
        height = base + 4;
    } else if (row.Kind == TGridRowKind::Data && m_view->cellAutoHeight()) {
        int lines = 1;
        const QFontMetrics metrics = fontMetrics();
        for (const TGridColumn* column : m_view->columns()->visibleColumns()) {
            if (column->isPicture() || m_header->isSectionHidden(column->id()))
                continue;
            const int width = m_header->sectionSize(column->id()) - 2 * CellPadding;
            lines = std::max(lines,
                             GridPaint::wrappedLines(metrics, cellText(row, column), width, MaxWrappedLines));
            if (lines == MaxWrappedLines)
                break;
        }
        height = lines * lineHeight() + 2 * RowPadding;
    }
    m_heights.insert(displayIndex, height);
    return height;
}

QRect TGridTableArea::rowRect(int displayIndex) const
{
    const int first = firstRow();
    if (displayIndex < first || displayIndex >= model()->displayRowCount())
        return {};
    int y = 0;
    const int bottom = viewport()->height();
    for (int i = first; i < displayIndex; ++i) {
        y += rowHeight(i);
        if (y >= bottom)
            return {};
    }
    return QRect(0, y, viewport()->width(), rowHeight(displayIndex));
}

int TGridTableArea::displayIndexAt(int y) const
{
    if (y < 0)
        return -1;
    const int count = model()->displayRowCount();
    int top = 0;
    for (int i = firstRow(); i < count; ++i) {
        const int h = rowHeight(i);
        if (y < top + h)
            return i;
        top += h;
        if (top > viewport()->height())
            break;
    }
    return -1;
}

QRect TGridTableArea::cellRect(const QRect& row, const TGridColumn* column) const
{
    if (!column || !column->visible() || m_header->isSectionHidden(column->id()) || row.isEmpty())
        return {};
    const int x = headerLeft() + m_header->sectionViewportPosition(column->id());
    return QRect(x, row.top(), m_header->sectionSize(column->id()), row.height());
}

QRect TGridTableArea::expandButtonRect(const TGridRow& row, const QRect& rect) const
{
    const int indent = indentWidth();
    const QRect button(row.Level * indent, rect.top(), indent, rect.height());
    return QStyle::visualRect(layoutDirection(), viewport()->rect(), button);
}

TGridHitInfo TGridTableArea::hitTestViewport(const QPoint& pos) const
{
    TGridHitInfo hit;
    const int index = displayIndexAt(pos.y());
    if (index < 0) {
        hit.Kind = TGridHitKind::EmptyArea;
        return hit;
    }
    const TGridRow row = model()->displayRow(index);
    hit.DisplayRow = index;
    hit.Group = row.Group;
    switch (row.Kind) {
    case TGridRowKind::Group:
        hit.Kind = TGridHitKind::GroupRow;
        break;
    case TGridRowKind::GroupFooter:
        hit.Kind = TGridHitKind::GroupFooter;
        break;
    case TGridRowKind::Data: {
        hit.Kind = TGridHitKind::RecordCell;
        hit.SourceRow = row.SourceRow;
        const int logical = m_header->logicalIndexAt(pos.x() - headerLeft());
        const bool inGutter =
            isRightToLeft() ? pos.x() >= viewport()->width() - gutterWidth() : pos.x() < gutterWidth();
        if (logical >= 0 && !inGutter)
            hit.Column = m_view->columns()->at(logical);
        break;
    }
    }
    if (hit.Column == nullptr && row.Kind != TGridRowKind::Data) {
        const int logical = m_header->logicalIndexAt(pos.x() - headerLeft());
        if (logical >= 0)
            hit.Column = m_view->columns()->at(logical);
    }
    return hit;
}

// ---- columns ---------------------------------------------------------------------------------------

void TGridTableArea::syncHeader()
{
    m_syncing = true;
    static_cast<TGridHeaderModel*>(m_header->model())->reset();
    static_cast<TGridHeaderModel*>(m_header->model())->captionsChanged();
    const QList<TGridColumn*> ordered = m_view->columns()->ordered();
    for (const TGridColumn* column : ordered)
        m_header->setSectionHidden(column->id(), !column->visible());
    for (int position = 0; position < ordered.size(); ++position) {
        const int visual = m_header->visualIndex(ordered[position]->id());
        if (visual != position && visual >= 0)
            m_header->moveSection(visual, position);
    }
    m_syncing = false;
    fitColumns();
    m_heights.clear();
    updateGeometries();
    viewport()->update();
    m_footer->update();
}

void TGridTableArea::fitColumns()
{
    m_syncing = true;
    const QList<TGridColumn*> shown = m_view->columns()->visibleColumns();
    if (m_view->columnAutoWidth()) {
        const int available = std::max(viewport()->width() - gutterWidth(), 1);
        qint64 total = 0;
        for (const TGridColumn* column : shown)
            total += std::max(column->width(), 1);
        int used = 0;
        for (int i = 0; i < shown.size(); ++i) {
            const TGridColumn* column = shown[i];
            int size = total > 0 ? int(qint64(std::max(column->width(), 1)) * available / total) : 0;
            if (i == shown.size() - 1)
                size = available - used;
            size = std::max(size, m_header->minimumSectionSize());
            m_header->resizeSection(column->id(), size);
            used += size;
        }
    } else {
        for (const TGridColumn* column : shown)
            m_header->resizeSection(column->id(), std::max(column->width(), m_header->minimumSectionSize()));
    }
    m_syncing = false;
}

void TGridTableArea::onSectionResized(int logical, int, int newSize)
{
    if (m_syncing)
        return;
    TGridColumn* resized = m_view->columns()->at(logical);
    if (!resized)
        return;
    m_heights.clear();
    if (!m_view->columnAutoWidth()) {
        m_syncing = true;
        resized->setWidth(newSize);
        m_syncing = false;
        updateGeometries();
        viewport()->update();
        return;
    }
    // Sharing the width: the columns after the one resized give or take the difference.
    const QList<TGridColumn*> shown = m_view->columns()->visibleColumns();
    const int at = int(shown.indexOf(resized));
    const int available = std::max(viewport()->width() - gutterWidth(), 1);
    int before = 0;
    for (int i = 0; i < at; ++i)
        before += m_header->sectionSize(shown[i]->id());
    int after = 0;
    for (int i = at + 1; i < shown.size(); ++i)
        after += m_header->sectionSize(shown[i]->id());
    const int rest = available - before - newSize;
    m_view->columns()->beginUpdate();
    for (int i = 0; i < at; ++i)
        shown[i]->setWidth(m_header->sectionSize(shown[i]->id()));
    if (at + 1 >= shown.size() || rest <= 0 || after <= 0) {
        resized->setWidth(std::max(newSize, 16));
    } else {
        resized->setWidth(newSize);
        for (int i = at + 1; i < shown.size(); ++i)
            shown[i]->setWidth(
                std::max(16, int(qint64(m_header->sectionSize(shown[i]->id())) * rest / after)));
    }
    m_view->columns()->endUpdate();
}

void TGridTableArea::onSectionMoved(int logical, int, int newVisual)
{
    if (m_syncing)
        return;
    if (TGridColumn* column = m_view->columns()->at(logical))
        column->setPosition(newVisual);
}

void TGridTableArea::bestFit(TGridColumn* only)
{
    const QFontMetrics metrics = fontMetrics();
    const QList<TGridColumn*> targets =
        only ? QList<TGridColumn*>{only} : m_view->columns()->visibleColumns();
    const TGridModel* m = model();
    // The rows on screen and a sample spread over the others.
    std::vector<int> rows;
    const int first = firstRow();
    for (int i = first; i < std::min(m->displayRowCount(), first + rowsPerPage() + 1); ++i) {
        const TGridRow row = m->displayRow(i);
        if (row.Kind == TGridRowKind::Data)
            rows.push_back(row.SourceRow);
    }
    const int count = m->visibleRowCount();
    const int sample = std::min(count, 300);
    for (int k = 0; k < sample; ++k)
        rows.push_back(m->sourceRowAt(int(qint64(k) * count / std::max(sample, 1))));

    m_view->columns()->beginUpdate();
    for (TGridColumn* column : targets) {
        if (column->isPicture())
            continue;
        int width = m_header->captionWidth(column->id());
        for (const int row : rows)
            width =
                std::max(width, metrics.horizontalAdvance(m->displayText(row, column)) + 2 * CellPadding + 4);
        for (int i = 0; i < int(m->footerSummaries().size()); ++i)
            if (m->footerSummaries()[std::size_t(i)].ColumnName == column->name())
                width = std::max(width, metrics.horizontalAdvance(m->footerText(i)) + 2 * CellPadding + 4);
        column->setWidth(std::clamp(width, 24, 1000));
    }
    m_view->columns()->endUpdate();
}

// ---- layout --------------------------------------------------------------------------------------------

int TGridTableArea::rowsPerPage() const
{
    int rows = 0;
    int y = 0;
    const int count = model()->displayRowCount();
    for (int i = firstRow(); i < count && y < viewport()->height(); ++i) {
        y += rowHeight(i);
        if (y <= viewport()->height())
            ++rows;
    }
    return std::max(rows, 1);
}

void TGridTableArea::relayout()
{
    m_heights.clear();
    const int count = model()->displayRowCount();
    const int height = viewport()->height();
    int fit = 0;
    int used = 0;
    for (int i = count - 1; i >= 0; --i) {
        used += rowHeight(i);
        if (used > height)
            break;
        ++fit;
    }
    verticalScrollBar()->setRange(0, std::max(0, count - std::max(fit, 1)));
    verticalScrollBar()->setPageStep(std::max(1, fit));
    updateGeometries();
    viewport()->update();
    m_footer->update();
}

void TGridTableArea::updateGeometries()
{
    const int top = m_header->preferredHeight();
    const bool footer = m_view->footerVisible();
    const int bottom = footer ? static_cast<TGridFooterBar*>(m_footer)->preferredHeight() : 0;
    setViewportMargins(0, top, 0, bottom);
    setHorizontalScrollBarPolicy(m_view->columnAutoWidth() ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    const QRect vp = viewport()->geometry();
    const int gutter = gutterWidth();
    m_header->setGeometry(vp.left() + headerLeft(), vp.top() - top, std::max(vp.width() - gutter, 0), top);
    m_corner->setGeometry(isRightToLeft() ? vp.right() - gutter + 1 : vp.left(), vp.top() - top, gutter, top);
    m_corner->setVisible(gutter > 0);
    m_footer->setGeometry(vp.left(), vp.bottom() + 1, vp.width(), bottom);
    m_footer->setVisible(footer);
    if (m_view->columnAutoWidth()) {
        horizontalScrollBar()->setRange(0, 0);
        m_header->setOffset(0);
    } else {
        const int room = std::max(vp.width() - gutter, 0);
        horizontalScrollBar()->setRange(0, std::max(0, m_header->length() - room));
        horizontalScrollBar()->setPageStep(std::max(room, 1));
        horizontalScrollBar()->setSingleStep(20);
        m_header->setOffset(horizontalScrollBar()->value());
    }
}

void TGridTableArea::scrollToIndex(int displayIndex)
{
    if (displayIndex < 0)
        return;
    if (displayIndex < firstRow()) {
        verticalScrollBar()->setValue(displayIndex);
        return;
    }
    const QRect rect = rowRect(displayIndex);
    if (!rect.isEmpty() && rect.bottom() < viewport()->height())
        return;
    // The row becomes the last one fully on screen.
    int first = displayIndex;
    int used = rowHeight(displayIndex);
    while (first > 0 && used + rowHeight(first - 1) <= viewport()->height())
        used += rowHeight(--first);
    verticalScrollBar()->setValue(first);
}

void TGridTableArea::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    fitColumns();
    relayout();
}

void TGridTableArea::scrollContentsBy(int dx, int)
{
    if (dx != 0)
        m_header->setOffset(horizontalScrollBar()->value());
    viewport()->update();
    m_footer->update();
}

// ---- painting
// ----------------------------------------------------------------------------------------------

void TGridTableArea::paintEvent(QPaintEvent*)
{
    QPainter painter(viewport());
    painter.setLayoutDirection(layoutDirection());
    const QPalette& pal = palette();
    painter.fillRect(viewport()->rect(), pal.color(QPalette::Base));
    const int count = model()->displayRowCount();
    if (count == 0) {
        painter.setPen(pal.color(QPalette::PlaceholderText));
        painter.drawText(QRect(0, 12, viewport()->width(), lineHeight() * 2), Qt::AlignHCenter | Qt::AlignTop,
                         m_view->emptyText());
        return;
    }
    const int focus = focusIndex();
    int y = 0;
    for (int i = firstRow(); i < count && y < viewport()->height(); ++i) {
        const int h = rowHeight(i);
        const TGridRow row = model()->displayRow(i);
        const QRect rect(0, y, viewport()->width(), h);
        switch (row.Kind) {
        case TGridRowKind::Data:
            paintDataRow(painter, row, rect, i == focus);
            break;
        case TGridRowKind::Group:
            paintGroupRow(painter, row, rect, i == focus);
            break;
        case TGridRowKind::GroupFooter:
            paintGroupFooter(painter, row, rect);
            break;
        }
        y += h;
    }
    if (model()->groupDepth() > 0 && y < viewport()->height())
        paintGutter(painter, QRect(0, y, viewport()->width(), viewport()->height() - y), 0);
}

void TGridTableArea::paintGutter(QPainter& painter, const QRect& rect, int levels)
{
    // The indents of the levels above a row, each a band of the group colour with a line.
    const int indent = indentWidth();
    const QPalette& pal = palette();
    for (int level = 0; level < levels; ++level) {
        const QRect band = QStyle::visualRect(layoutDirection(), viewport()->rect(),
                                              QRect(level * indent, rect.top(), indent, rect.height()));
        painter.fillRect(band, GridPaint::panelColor(pal));
    }
}

void TGridTableArea::paintDataRow(QPainter& painter, const TGridRow& row, const QRect& rect, bool focused)
{
    const QPalette& pal = palette();
    const bool active = hasFocus();
    const QPalette::ColorGroup group = active ? QPalette::Active : QPalette::Inactive;
    const bool selected = m_view->isSelected(row.SourceRow);
    paintGutter(painter, rect, model()->groupDepth());
    const int gutter = gutterWidth();
    QRect cells = rect;
    if (isRightToLeft())
        cells.setRight(rect.right() - gutter);
    else
        cells.setLeft(rect.left() + gutter);
    painter.fillRect(cells, selected ? pal.color(group, QPalette::Highlight) : pal.color(QPalette::Base));
    painter.setPen(GridPaint::lineColor(pal));
    painter.drawLine(cells.bottomLeft(), cells.bottomRight());

    const QColor textColor =
        selected ? pal.color(group, QPalette::HighlightedText) : pal.color(QPalette::Text);
    const QStringList words = m_view->highlightWords();
    const QColor match = GridPaint::matchColor(pal);
    const TGridColumn* focusColumn = focusedColumn();
    painter.save();
    painter.setClipRect(cells);
    for (const TGridColumn* column : m_view->columns()->visibleColumns()) {
        const QRect cell = cellRect(rect, column);
        if (cell.isEmpty() || cell.right() < cells.left() || cell.left() > cells.right())
            continue;
        painter.setPen(GridPaint::lineColor(pal));
        const int lineX = isRightToLeft() ? cell.left() : cell.right();
        painter.drawLine(lineX, cell.top(), lineX, cell.bottom());
        if (column->isPicture())
            continue;
        const QRect content = cell.adjusted(CellPadding, 0, -CellPadding, 0);
        bool painted = false;
        if (const TEditorItem* item = m_view->editorItem(column)) {
            QStyleOptionViewItem option;
            option.initFrom(viewport());
            option.rect = content;
            option.palette = pal;
            option.font = font();
            if (selected)
                option.state |= QStyle::State_Selected;
            painted = item->paint(&painter, option, model()->value(row.SourceRow, column));
        }
        if (!painted) {
            painter.setPen(textColor);
            const QString text = cellText(row, column);
            const Qt::Alignment alignment = model()->alignment(row.SourceRow, column);
            if (m_view->cellAutoHeight() && rect.height() > lineHeight() + 2 * RowPadding)
                GridPaint::drawWrappedText(&painter, content.adjusted(0, RowPadding, 0, -RowPadding), text,
                                           alignment, MaxWrappedLines);
            else
                GridPaint::drawText(&painter, content, text, alignment, words, match);
        }
        if (focused && hasFocus() && column == focusColumn) {
            QStyleOptionFocusRect option;
            option.initFrom(viewport());
            option.rect = cell.adjusted(1, 1, -1, -1);
            option.backgroundColor =
                selected ? pal.color(group, QPalette::Highlight) : pal.color(QPalette::Base);
            style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
        }
    }
    painter.restore();
    if (focused && hasFocus() && !focusColumn) {
        QStyleOptionFocusRect option;
        option.initFrom(viewport());
        option.rect = cells.adjusted(1, 1, -1, -1);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

void TGridTableArea::paintGroupRow(QPainter& painter, const TGridRow& row, const QRect& rect, bool focused)
{
    const QPalette& pal = palette();
    const QPalette::ColorGroup group = hasFocus() ? QPalette::Active : QPalette::Inactive;
    paintGutter(painter, rect, row.Level);
    const int indent = indentWidth();
    const QRect body = QStyle::visualRect(
        layoutDirection(), viewport()->rect(),
        QRect(row.Level * indent, rect.top(), rect.width() - row.Level * indent, rect.height()));
    const QColor background = focused ? pal.color(group, QPalette::Highlight) : GridPaint::panelColor(pal);
    const QColor foreground =
        focused ? pal.color(group, QPalette::HighlightedText) : pal.color(QPalette::Text);
    painter.fillRect(body, background);
    painter.setPen(GridPaint::lineColor(pal));
    painter.drawLine(body.bottomLeft(), body.bottomRight());
    GridPaint::drawExpandButton(&painter, expandButtonRect(row, rect), row.Group->Expanded, isRightToLeft(),
                                focused ? QPalette(foreground, background) : pal);

    const TGridModel* m = model();
    QRect textRect =
        QStyle::visualRect(layoutDirection(), viewport()->rect(),
                           QRect((row.Level + 1) * indent, rect.top(),
                                 rect.width() - (row.Level + 1) * indent - CellPadding, rect.height()));
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    painter.setPen(foreground);
    const QString caption = m->groupText(row.Group);
    const int captionWidth = QFontMetrics(bold).horizontalAdvance(caption);
    GridPaint::drawText(&painter, textRect, caption, Qt::AlignLeft | Qt::AlignVCenter, {}, {});
    painter.setFont(font());

    QStringList texts;
    for (int i = 0; i < int(m->groupSummaries().size()); ++i) {
        const TGridSummaryItem& item = m->groupSummaries()[std::size_t(i)];
        if (item.Place != TGridSummaryPlace::GroupRow)
            continue;
        const QString text = m->groupSummaryText(row.Group, i);
        if (text.isEmpty())
            continue;
        if (m_view->groupSummariesAligned()) {
            // Under its column, when the group's text leaves the column free.
            const QRect cell = cellRect(rect, m_view->columns()->byName(item.ColumnName));
            const int textEnd =
                isRightToLeft() ? textRect.right() - captionWidth : textRect.left() + captionWidth;
            const bool free = isRightToLeft() ? cell.right() < textEnd - 8 : cell.left() > textEnd + 8;
            if (!cell.isEmpty() && free) {
                painter.setPen(foreground);
                GridPaint::drawText(&painter, cell.adjusted(CellPadding, 0, -CellPadding, 0), text,
                                    Qt::AlignRight | Qt::AlignVCenter, {}, {});
            }
        } else {
            texts.append(text);
        }
    }
    if (!texts.isEmpty()) {
        QRect rest = textRect;
        if (isRightToLeft())
            rest.setRight(textRect.right() - captionWidth - 12);
        else
            rest.setLeft(textRect.left() + captionWidth + 12);
        painter.setPen(focused ? foreground : GridPaint::blend(pal.color(QPalette::Text), background, 0.25));
        GridPaint::drawText(&painter, rest, u'(' + texts.join(QStringLiteral("; ")) + u')',
                            Qt::AlignLeft | Qt::AlignVCenter, {}, {});
    }
    if (focused && hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(viewport());
        option.rect = body.adjusted(1, 1, -1, -1);
        option.backgroundColor = background;
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

void TGridTableArea::paintGroupFooter(QPainter& painter, const TGridRow& row, const QRect& rect)
{
    const QPalette& pal = palette();
    paintGutter(painter, rect, row.Level);
    const int indent = indentWidth();
    const QRect body = QStyle::visualRect(
        layoutDirection(), viewport()->rect(),
        QRect(row.Level * indent, rect.top(), rect.width() - row.Level * indent, rect.height()));
    const QColor background = GridPaint::blend(pal.color(QPalette::Base), GridPaint::panelColor(pal), 0.6);
    painter.fillRect(body, background);
    painter.setPen(GridPaint::lineColor(pal));
    painter.drawLine(body.topLeft(), body.topRight());
    painter.drawLine(body.bottomLeft(), body.bottomRight());
    const TGridModel* m = model();
    QHash<QString, QStringList> texts;
    for (int i = 0; i < int(m->groupSummaries().size()); ++i) {
        const TGridSummaryItem& item = m->groupSummaries()[std::size_t(i)];
        if (item.Place != TGridSummaryPlace::GroupFooter)
            continue;
        const QString text = m->groupSummaryText(row.Group, i);
        if (!text.isEmpty())
            texts[item.ColumnName].append(text);
    }
    painter.save();
    painter.setClipRect(body);
    painter.setPen(pal.color(QPalette::Text));
    const int sample = m->sourceRowAt(row.Group->Begin);
    for (auto it = texts.constBegin(); it != texts.constEnd(); ++it) {
        const TGridColumn* column = m_view->columns()->byName(it.key());
        const QRect cell = cellRect(rect, column);
        if (cell.isEmpty())
            continue;
        GridPaint::drawText(&painter, cell.adjusted(CellPadding, 0, -CellPadding, 0),
                            it.value().join(QStringLiteral("; ")), m->alignment(sample, column), {}, {});
    }
    painter.restore();
}

bool TGridTableArea::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const TGridHitInfo hit = hitTestViewport(help->pos());
        QString tip;
        if (m_view->cellHints() && hit.Kind == TGridHitKind::RecordCell && hit.Column &&
            !hit.Column->isPicture()) {
            const QRect cell = cellRect(rowRect(hit.DisplayRow), hit.Column);
            const QString text = model()->displayText(hit.SourceRow, hit.Column);
            const int width = cell.width() - 2 * CellPadding;
            const int lines = std::max(1, (cell.height() - 2 * RowPadding) / std::max(lineHeight(), 1));
            if (GridPaint::wrappedLines(fontMetrics(), text, width, 99) > lines ||
                GridPaint::isCut(fontMetrics(), text, width * lines))
                tip = text;
        } else if (m_view->cellHints() && hit.Kind == TGridHitKind::GroupRow && hit.Group) {
            const QString text = model()->groupText(hit.Group);
            QFont bold = font();
            bold.setBold(true);
            if (QFontMetrics(bold).horizontalAdvance(text) >
                viewport()->width() - (hit.Group->Level + 1) * indentWidth() - CellPadding)
                tip = text;
        }
        if (tip.isEmpty()) {
            QToolTip::hideText();
            event->ignore();
        } else {
            QToolTip::showText(help->globalPos(), tip, viewport());
        }
        return true;
    }
    return QAbstractScrollArea::viewportEvent(event);
}

// ---- footer
// --------------------------------------------------------------------------------------------------

TGridFooterBar::TGridFooterBar(TGridTableView* view, TGridTableArea* area)
    : QWidget(area), m_view(view), m_area(area)
{
    setObjectName(QStringLiteral("footer"));
}

QStringList TGridFooterBar::textsOf(const TGridColumn* column) const
{
    QStringList texts;
    const TGridModel* m = m_view->model();
    for (int i = 0; i < int(m->footerSummaries().size()); ++i)
        if (m->footerSummaries()[std::size_t(i)].ColumnName == column->name()) {
            const QString text = m->footerText(i);
            if (!text.isEmpty())
                texts.append(text);
        }
    return texts;
}

int TGridFooterBar::preferredHeight() const
{
    int lines = 1;
    const TGridModel* m = m_view->model();
    QHash<QString, int> perColumn;
    for (const TGridSummaryItem& item : m->footerSummaries())
        lines = std::max(lines, ++perColumn[item.ColumnName]);
    return lines * fontMetrics().height() + 2 * RowPadding + 2;
}

void TGridFooterBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setLayoutDirection(layoutDirection());
    const QPalette& pal = palette();
    painter.fillRect(rect(), GridPaint::panelColor(pal));
    painter.setPen(GridPaint::lineColor(pal));
    painter.drawLine(rect().topLeft(), rect().topRight());
    const QRect row(0, 0, width(), height());
    for (const TGridColumn* column : m_view->columns()->visibleColumns()) {
        const QRect cell = m_area->cellRect(row, column);
        if (cell.isEmpty())
            continue;
        const QStringList texts = textsOf(column);
        const int line = fontMetrics().height();
        int y = RowPadding + 1;
        painter.setPen(pal.color(QPalette::Text));
        for (const QString& text : texts) {
            GridPaint::drawText(&painter,
                                QRect(cell.left() + CellPadding, y, cell.width() - 2 * CellPadding, line),
                                text, m_view->footerAlignment(), {}, {});
            y += line;
        }
    }
}

void TGridFooterBar::mouseDoubleClickEvent(QMouseEvent* event)
{
    TGridHitInfo hit;
    hit.Kind = TGridHitKind::Footer;
    const int logical = m_area->header()->logicalIndexAt(int(event->position().x()) - m_area->headerLeft());
    hit.Column = logical >= 0 ? m_view->columns()->at(logical) : nullptr;
    emit m_view->doubleClicked(hit);
}

bool TGridFooterBar::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const int logical = m_area->header()->logicalIndexAt(help->pos().x() - m_area->headerLeft());
        const TGridColumn* column = logical >= 0 ? m_view->columns()->at(logical) : nullptr;
        if (column) {
            const QStringList texts = textsOf(column);
            const int room = m_area->header()->sectionSize(logical) - 2 * CellPadding;
            for (const QString& text : texts)
                if (fontMetrics().horizontalAdvance(text) > room) {
                    QToolTip::showText(help->globalPos(), texts.join(u'\n'), this);
                    return true;
                }
        }
        QToolTip::hideText();
        return true;
    }
    return QWidget::event(event);
}
