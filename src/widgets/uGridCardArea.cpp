// Geometry and painting of a card view.

#include "uEditorItem.h"
#include "uGrid.h"
#include "uGridCardView.h"
#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridPaint.h"
#include "uGridPictureCache.h"
#include "uGridSource.h"

#include <QHelpEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QStyleOptionFocusRect>
#include <QStyleOptionViewItem>
#include <QToolTip>

namespace {
constexpr int TextPadding = 2;
} // namespace

TGridCardArea::TGridCardArea(TGridCardView* view) : QAbstractScrollArea(view), m_view(view)
{
    setObjectName(QStringLiteral("cardArea"));
    viewport()->setObjectName(QStringLiteral("cards"));
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    TGridPictureCache* cache = view->grid()->pictureCache();
    connect(cache, &TGridPictureCache::pictureReady, viewport(), qOverload<>(&QWidget::update));
    // A changed row shows its pictures again; pictures known by row number go with any change of rows.
    connect(view->model(), &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& from, const QModelIndex& to) {
                if (to.row() - from.row() > 64) {
                    ++m_pictureGeneration;
                    m_view->grid()->pictureCache()->removeMatching(QString());
                } else
                    for (int r = from.row(); r <= to.row(); ++r) {
                        const QVariant row = from.siblingAtRow(r).data(TGridModel::SourceRowRole);
                        if (row.isValid())
                            m_view->grid()->pictureCache()->removeMatching(
                                pictureKey(row.toInt(), nullptr, {}));
                    }
                viewport()->update();
            });
    connect(view->model(), &QAbstractItemModel::modelReset, this, [this] { ++m_pictureGeneration; });
    // Pictures known by row number (a source without keys) go with any change of the rows.
    connect(view->model(), &TGridModel::rowsChanged, this, [this] { ++m_pictureGeneration; });
}

int TGridCardArea::columnCount() const
{
    return TGridCardLayout::columnsFor(viewport()->width(), m_view->m_cardWidth, m_view->m_indent);
}

int TGridCardArea::cardWidthShown() const
{
    if (!m_view->m_fill)
        return m_view->m_cardWidth;
    return TGridCardLayout::filledWidth(viewport()->width(), m_view->m_cardWidth, m_view->m_indent,
                                        columnCount());
}

void TGridCardArea::relayout()
{
    const QFontMetrics metrics = fontMetrics();
    m_lineHeight = metrics.height();
    QFont bold = font();
    bold.setBold(true);
    const int titleLine = QFontMetrics(bold).height();
    const int width = cardWidthShown();
    const TGridModel* model = m_view->model();

    std::vector<TGridCardRowSpec> cardRows;
    int captionWidth = 0;
    for (const TGridColumn* column : m_view->columns()->visibleColumns()) {
        TGridCardRowSpec cardRow;
        cardRow.Column = column->id();
        cardRow.Picture = column->isPicture();
        cardRow.Title = column->isCardTitle();
        cardRow.Caption = column->captionVisible() && !cardRow.Title && !cardRow.Picture;
        cardRow.SideWidth = std::max(column->width(), 0);
        const int lines = column->lines();
        if (cardRow.Picture) {
            cardRow.Height = (lines > 0 ? lines : m_view->m_pictureLines) * m_lineHeight;
            if (cardRow.SideWidth > 0 && m_view->m_squareSide)
                cardRow.Height = cardRow.SideWidth;
            if (cardRow.SideWidth == 0 && m_view->m_limitPictures)
                cardRow.Height = std::min(cardRow.Height, width);
        } else if (cardRow.Title) {
            cardRow.Height = std::max(lines, 1) * titleLine + 2;
        } else {
            cardRow.Height = std::max(lines, 1) * m_lineHeight + 2;
        }
        if (cardRow.Caption)
            captionWidth = std::max(captionWidth, metrics.horizontalAdvance(model->columnCaption(column)));
        cardRows.push_back(cardRow);
    }
    m_layout.setRows(std::move(cardRows));
    m_layout.setCardWidth(width);
    m_layout.setCaptionWidth(captionWidth + 4);

    const int count = model->visibleRowCount();
    const int columns = columnCount();
    const int lines = (count + columns - 1) / columns;
    const int step = cardHeight() + m_view->m_indent;
    const int total = m_view->m_indent + lines * step;
    verticalScrollBar()->setRange(0, std::max(0, total - viewport()->height()));
    verticalScrollBar()->setPageStep(std::max(viewport()->height(), 1));
    verticalScrollBar()->setSingleStep(std::max(20, step / 4));
    viewport()->update();
}

QRect TGridCardArea::cardRect(int position) const
{
    if (position < 0 || position >= m_view->model()->visibleRowCount())
        return {};
    const int columns = columnCount();
    const int width = cardWidthShown();
    const int height = cardHeight();
    const int indent = m_view->m_indent;
    const int x = indent + (position % columns) * (width + indent);
    const int y = indent + (position / columns) * (height + indent) - verticalScrollBar()->value();
    QRect rect(x, y, width, height);
    return QStyle::visualRect(layoutDirection(), viewport()->rect(), rect);
}

int TGridCardArea::positionAt(const QPoint& pos) const
{
    const int indent = m_view->m_indent;
    const int width = cardWidthShown();
    const int height = cardHeight();
    const int y = pos.y() + verticalScrollBar()->value() - indent;
    const int x = (isRightToLeft() ? viewport()->width() - 1 - pos.x() : pos.x()) - indent;
    if (x < 0 || y < 0)
        return -1;
    if (x % (width + indent) >= width || y % (height + indent) >= height)
        return -1;
    const int column = x / (width + indent);
    if (column >= columnCount())
        return -1;
    const int position = (y / (height + indent)) * columnCount() + column;
    return position < m_view->model()->visibleRowCount() ? position : -1;
}

bool TGridCardArea::isEmptyValue(int sourceRow, const TGridColumn* column) const
{
    if (!column)
        return true;
    if (column->isPicture()) {
        // With a loader the bytes stay off the main thread: a picture row counts as filled.
        if (m_view->grid()->pictureCache()->hasLoader())
            return false;
        const QVariant value = m_view->model()->value(sourceRow, column);
        return value.isNull() ||
               (value.metaType().id() == QMetaType::QByteArray && value.toByteArray().isEmpty());
    }
    return m_view->model()->displayText(sourceRow, column).isEmpty();
}

std::vector<TGridCardRowRect> TGridCardArea::rowsOf(int position) const
{
    const int sourceRow = m_view->model()->sourceRowAt(position);
    std::vector<TGridCardRowRect> rows;
    if (m_view->m_hideEmpty)
        rows = m_layout.layout(
            [&](int column) { return isEmptyValue(sourceRow, m_view->columns()->at(column)); });
    else
        rows = m_layout.layout();
    if (isRightToLeft()) {
        const QRect card(0, 0, m_layout.cardWidth(), cardHeight());
        for (TGridCardRowRect& row : rows) {
            row.Row = QStyle::visualRect(Qt::RightToLeft, card, row.Row);
            row.Value = QStyle::visualRect(Qt::RightToLeft, card, row.Value);
            if (!row.Caption.isEmpty())
                row.Caption = QStyle::visualRect(Qt::RightToLeft, card, row.Caption);
        }
    }
    return rows;
}

TGridHitInfo TGridCardArea::hitTestViewport(const QPoint& pos) const
{
    TGridHitInfo hit;
    const int position = positionAt(pos);
    if (position < 0) {
        hit.Kind = TGridHitKind::EmptyArea;
        return hit;
    }
    hit.Kind = TGridHitKind::Card;
    hit.SourceRow = m_view->model()->sourceRowAt(position);
    const QPoint local = pos - cardRect(position).topLeft();
    for (const TGridCardRowRect& row : rowsOf(position)) {
        if (!row.Caption.isEmpty() && row.Caption.contains(local)) {
            hit.Kind = TGridHitKind::RowCaption;
            hit.Column = m_view->columns()->at(row.Column);
            break;
        }
        if (row.Value.contains(local)) {
            hit.Kind = TGridHitKind::RecordCell;
            hit.Column = m_view->columns()->at(row.Column);
            break;
        }
    }
    return hit;
}

void TGridCardArea::scrollToPosition(int position)
{
    const QRect card = cardRect(position);
    if (card.isEmpty())
        return;
    const int indent = m_view->m_indent;
    if (card.top() < 0)
        verticalScrollBar()->setValue(verticalScrollBar()->value() + card.top() - indent);
    else if (card.bottom() >= viewport()->height())
        verticalScrollBar()->setValue(verticalScrollBar()->value() + card.bottom() - viewport()->height() +
                                      1 + indent);
}

void TGridCardArea::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    relayout();
}

void TGridCardArea::scrollContentsBy(int, int)
{
    viewport()->update();
}

QString TGridCardArea::pictureKey(int sourceRow, const TGridColumn* column, const QSize& size) const
{
    // By the row's key where the source has keys, else by row number and this view's generation.
    const QVariant key = m_view->source()->key(sourceRow);
    QString text =
        key.isValid() && !key.isNull()
            ? QStringLiteral("k%1@%2|").arg(key.toString()).arg(quintptr(m_view->source()->model()))
            : QStringLiteral("r%1@%2#%3|").arg(sourceRow).arg(quintptr(m_view)).arg(m_pictureGeneration);
    if (column)
        text += column->fieldName() + QStringLiteral("|%1x%2").arg(size.width()).arg(size.height());
    return text;
}

void TGridCardArea::paintPicture(QPainter& painter, int sourceRow, const TGridColumn* column,
                                 const QRect& rect, QSet<QString>& wanted)
{
    TGridPictureCache* cache = m_view->grid()->pictureCache();
    const qreal ratio = devicePixelRatioF();
    const QSize target(int(rect.width() * ratio), int(rect.height() * ratio));
    if (target.isEmpty())
        return;
    const QString key = pictureKey(sourceRow, column, target);
    const QImage image = cache->find(key);
    if (!image.isNull()) {
        QSizeF shown = QSizeF(image.size()) / ratio;
        const QRectF place(rect.left() + (rect.width() - shown.width()) / 2,
                           rect.top() + (rect.height() - shown.height()) / 2, shown.width(), shown.height());
        painter.drawImage(place, image);
        return;
    }
    if (cache->isMissing(key))
        return;
    wanted.insert(key);
    const QVariant rowKey = m_view->source()->key(sourceRow);
    if (cache->hasLoader() && rowKey.isValid() && !rowKey.isNull()) {
        // The bytes are read by the cache's loader on a worker, never here.
        cache->requestLoad(key, rowKey, column->fieldName(), target);
    } else if (!cache->isPending(key)) {
        // The bytes are read only now, for a card on screen.
        const QVariant value = m_view->model()->value(sourceRow, column);
        switch (value.metaType().id()) {
        case QMetaType::QByteArray:
            cache->request(key, value.toByteArray(), target);
            break;
        case QMetaType::QImage:
            cache->request(key, value.value<QImage>(), target);
            break;
        case QMetaType::QPixmap:
            cache->request(key, value.value<QPixmap>().toImage(), target);
            break;
        default:
            break;
        }
        if (value.isNull()) {
            wanted.remove(key);
            return;
        }
    }
    // Until it arrives: a quiet placeholder.
    const QPalette& pal = palette();
    const int side = std::min(rect.width(), rect.height()) * 3 / 4;
    const QRect box(rect.center().x() - side / 2, rect.center().y() - side / 2, side, side);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(GridPaint::lineColor(pal), 1));
    painter.setBrush(GridPaint::panelColor(pal));
    painter.drawEllipse(box);
    painter.restore();
}

void TGridCardArea::paintCard(QPainter& painter, int position, const QRect& rect, QSet<QString>& wanted)
{
    const TGridModel* model = m_view->model();
    const int sourceRow = model->sourceRowAt(position);
    const bool selected = m_view->isSelected(sourceRow);
    const bool focused = sourceRow == m_view->currentSourceRow();
    const QPalette& pal = palette();
    const QPalette::ColorGroup group = hasFocus() ? QPalette::Active : QPalette::Inactive;
    const QColor highlight = pal.color(group, QPalette::Highlight);
    const bool shelf = !m_view->m_cardBackground.isNull();

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5);
    if (shelf) {
        painter.drawImage(rect, m_view->m_cardBackground);
        if (selected) {
            QColor tint = highlight;
            tint.setAlphaF(0.25f);
            painter.fillRect(rect, tint);
        }
        if (selected || focused) {
            painter.setPen(QPen(highlight, selected ? 2 : 1));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(frame, 4, 4);
        }
    } else {
        painter.setBrush(selected ? GridPaint::blend(pal.color(QPalette::Base), highlight, 0.22)
                                  : pal.color(QPalette::Base));
        painter.setPen(
            QPen(selected ? highlight
                          : GridPaint::blend(pal.color(QPalette::Base), pal.color(QPalette::Text), 0.22),
                 selected ? 2 : 1));
        painter.drawRoundedRect(frame, 4, 4);
    }
    painter.restore();

    const QStringList words = m_view->highlightWords();
    const QColor match = GridPaint::matchColor(pal);
    QFont bold = font();
    bold.setBold(true);
    painter.save();
    painter.setClipRect(rect.adjusted(1, 1, -1, -1));
    for (const TGridCardRowRect& row : rowsOf(position)) {
        const TGridColumn* column = m_view->columns()->at(row.Column);
        if (!column)
            continue;
        const QRect value = row.Value.translated(rect.topLeft());
        if (column->isPicture()) {
            paintPicture(painter, sourceRow, column, value.adjusted(1, 1, -1, -1), wanted);
            continue;
        }
        const QRect whole = row.Row.translated(rect.topLeft());
        if (shelf) {
            // Texts over a picture stand on a pale band.
            QColor band = pal.color(QPalette::Base);
            band.setAlphaF(0.78f);
            painter.save();
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(Qt::NoPen);
            painter.setBrush(band);
            painter.drawRoundedRect(QRectF(whole).adjusted(-1, 0, 1, 0), 3, 3);
            painter.restore();
        }
        if (!row.Caption.isEmpty()) {
            painter.setPen(GridPaint::blend(pal.color(QPalette::Text), pal.color(QPalette::Base), 0.45));
            GridPaint::drawText(&painter,
                                row.Caption.translated(rect.topLeft()).adjusted(TextPadding, 0, 0, 0),
                                model->columnCaption(column), Qt::AlignLeft | Qt::AlignVCenter, {}, {});
        }
        if (const TEditorItem* item = m_view->editorItem(column)) {
            QStyleOptionViewItem option;
            option.initFrom(viewport());
            option.rect = value;
            option.palette = pal;
            option.font = font();
            if (selected)
                option.state |= QStyle::State_Selected;
            if (item->paint(&painter, option, model->value(sourceRow, column)))
                continue;
        }
        painter.setPen(pal.color(QPalette::Text));
        const QString text = model->displayText(sourceRow, column);
        if (column->isCardTitle()) {
            painter.setFont(bold);
            GridPaint::drawWrappedText(&painter, value.adjusted(TextPadding, 0, -TextPadding, 0), text,
                                       Qt::AlignHCenter | Qt::AlignVCenter, std::max(column->lines(), 1));
            painter.setFont(font());
        } else {
            GridPaint::drawText(&painter, value.adjusted(TextPadding, 0, -TextPadding, 0), text,
                                Qt::AlignLeft | Qt::AlignVCenter, words, match);
        }
    }
    painter.restore();
    if (focused && hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(viewport());
        option.rect = rect.adjusted(3, 3, -3, -3);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
    if (m_rowDragging && m_dropRow >= 0 && position == m_dropPosition) {
        // Where a dragged row would go.
        const std::vector<TGridCardRowRect> rows = rowsOf(position);
        int y = rect.top() + TGridCardLayout::Padding;
        if (!rows.empty())
            y = m_dropRow < int(rows.size()) ? rect.top() + rows[std::size_t(m_dropRow)].Row.top() - 1
                                             : rect.top() + rows.back().Row.bottom() + 1;
        painter.fillRect(QRect(rect.left() + 2, y - 1, rect.width() - 4, 3), pal.color(QPalette::Highlight));
    }
}

void TGridCardArea::paintEvent(QPaintEvent*)
{
    QPainter painter(viewport());
    painter.setLayoutDirection(layoutDirection());
    const QPalette& pal = palette();
    painter.fillRect(viewport()->rect(), pal.color(QPalette::Base));
    if (!m_view->m_background.isNull()) {
        // One picture per line of cards, stretched to the view's width: each line's picture ends
        // where its cards end, so the shelves behind the cards run on with theirs.
        const int pitch = std::max(cardHeight() + m_view->m_indent, 1);
        const QRect tile(0, 0, viewport()->width(), pitch);
        if (m_backgroundTile.size() != tile.size() || m_backgroundSource != m_view->m_background.cacheKey()) {
            m_backgroundTile = QPixmap::fromImage(
                m_view->m_background.scaled(tile.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
            m_backgroundSource = m_view->m_background.cacheKey();
        }
        const int offset = verticalScrollBar()->value() % pitch;
        for (int y = -offset; y < viewport()->height(); y += pitch)
            painter.drawPixmap(0, y, m_backgroundTile);
    }
    const TGridModel* model = m_view->model();
    const int count = model->visibleRowCount();
    QSet<QString> wanted;
    if (count == 0) {
        painter.setPen(pal.color(QPalette::PlaceholderText));
        painter.drawText(QRect(0, 12, viewport()->width(), fontMetrics().height() * 2),
                         Qt::AlignHCenter | Qt::AlignTop, m_view->emptyText());
        m_view->grid()->pictureCache()->setWanted(wanted);
        return;
    }
    const int columns = columnCount();
    const int step = cardHeight() + m_view->m_indent;
    const int scroll = verticalScrollBar()->value();
    const int firstLine = std::max(0, (scroll - m_view->m_indent) / std::max(step, 1));
    const int lastLine = (scroll + viewport()->height()) / std::max(step, 1);
    for (int position = firstLine * columns; position < std::min(count, (lastLine + 1) * columns);
         ++position) {
        const QRect rect = cardRect(position);
        if (rect.bottom() < 0 || rect.top() >= viewport()->height())
            continue;
        paintCard(painter, position, rect, wanted);
    }
    if (m_view->m_separator > 0 && columns > 1) {
        painter.setPen(QPen(GridPaint::lineColor(pal), m_view->m_separator));
        const int width = cardWidthShown();
        for (int c = 1; c < columns; ++c) {
            int x = m_view->m_indent + c * (width + m_view->m_indent) - m_view->m_indent / 2 - 1;
            if (isRightToLeft())
                x = viewport()->width() - 1 - x;
            painter.drawLine(x, 0, x, viewport()->height());
        }
    }
    m_view->grid()->pictureCache()->setWanted(wanted);
}

bool TGridCardArea::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const TGridHitInfo hit = hitTestViewport(help->pos());
        QString tip;
        if (m_view->cellHints() && hit.Column && !hit.Column->isPicture()) {
            const int position = m_view->model()->positionOf(hit.SourceRow);
            const QRect card = cardRect(position);
            for (const TGridCardRowRect& row : rowsOf(position)) {
                if (row.Column != hit.Column->id())
                    continue;
                const bool caption = hit.Kind == TGridHitKind::RowCaption;
                const QString text = caption ? m_view->model()->columnCaption(hit.Column)
                                             : m_view->model()->displayText(hit.SourceRow, hit.Column);
                const QRect rect = (caption ? row.Caption : row.Value).translated(card.topLeft());
                const int lines = hit.Column->isCardTitle() ? std::max(hit.Column->lines(), 1) : 1;
                if (fontMetrics().horizontalAdvance(text) > (rect.width() - 2 * TextPadding) * lines)
                    tip = text;
            }
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
