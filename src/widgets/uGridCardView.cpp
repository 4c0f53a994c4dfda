#include "uGridCardView.h"

#include "uGrid.h"
#include "uGridColumns.h"
#include "uGridModel.h"

#include <QEvent>
#include <QScrollBar>
#include <QVBoxLayout>

TGridCardView::TGridCardView(TGrid* grid, const QString& name, QAbstractItemModel* ownModel, QWidget* parent)
    : TGridView(grid, name, ownModel, parent), m_area(new TGridCardArea(this))
{
    // Cards are not grouped.
    model()->setGroupingEnabled(false);
    contentLayout()->addWidget(m_area, 1);
    setFocusProxy(m_area);
    connect(model(), &TGridModel::rowsChanged, m_area, &TGridCardArea::relayout);
    connect(model(), &TGridModel::contentChanged, m_area->viewport(), qOverload<>(&QWidget::update));
    connect(model(), &TGridModel::selectionChanged, m_area->viewport(), qOverload<>(&QWidget::update));
    connect(columns(), &TGridColumns::changed, m_area, &TGridCardArea::relayout);
    m_area->relayout();
}

TGridCardView::~TGridCardView() = default;

void TGridCardView::setCardWidth(int width)
{
    width = std::max(width, 16);
    if (m_cardWidth == width)
        return;
    m_cardWidth = width;
    m_area->relayout();
    emit cardWidthChanged(width);
}

void TGridCardView::setCardIndent(int indent)
{
    m_indent = std::max(indent, 0);
    m_area->relayout();
}

void TGridCardView::setFillWidth(bool on)
{
    m_fill = on;
    m_area->relayout();
}

void TGridCardView::setSeparatorWidth(int width)
{
    m_separator = std::max(width, 0);
    m_area->viewport()->update();
}

void TGridCardView::setEmptyRowsHidden(bool on)
{
    m_hideEmpty = on;
    m_area->viewport()->update();
}

void TGridCardView::setBackgroundPicture(const QImage& picture)
{
    m_background = picture;
    m_area->viewport()->update();
}

void TGridCardView::setCardBackgroundPicture(const QImage& picture)
{
    m_cardBackground = picture;
    m_area->viewport()->update();
}

void TGridCardView::setPictureHeightLimitedToCardWidth(bool on)
{
    m_limitPictures = on;
    m_area->relayout();
}

void TGridCardView::setSquareSidePictures(bool on)
{
    m_squareSide = on;
    m_area->relayout();
}

void TGridCardView::setDefaultPictureLines(int lines)
{
    m_pictureLines = std::max(lines, 1);
    m_area->relayout();
}

void TGridCardView::setWheelZoom(bool on, double downFactor, double upFactor, int minWidth)
{
    m_zoom = on;
    m_zoomDown = downFactor;
    m_zoomUp = upFactor;
    m_zoomMin = minWidth;
}

void TGridCardView::copySettingsFrom(const TGridCardView& other)
{
    columns()->assign(*other.columns());
    for (TGridColumn* column : columns()->ordered())
        if (const TGridColumn* original = other.columns()->byName(column->name()))
            if (const TEditorItem* item = other.editorItem(original))
                setEditorItem(column, item);
    m_cardWidth = other.m_cardWidth;
    m_indent = other.m_indent;
    m_fill = other.m_fill;
    m_separator = other.m_separator;
    m_hideEmpty = other.m_hideEmpty;
    m_customizable = other.m_customizable;
    m_background = other.m_background;
    m_cardBackground = other.m_cardBackground;
    m_limitPictures = other.m_limitPictures;
    m_squareSide = other.m_squareSide;
    m_pictureLines = other.m_pictureLines;
    m_zoom = other.m_zoom;
    m_zoomDown = other.m_zoomDown;
    m_zoomUp = other.m_zoomUp;
    m_zoomMin = other.m_zoomMin;
    setMultiSelect(other.multiSelect());
    setCellHints(other.cellHints());
    setEmptyText(other.emptyText());
    m_area->relayout();
}

int TGridCardView::cardHeight() const
{
    return m_area->cardHeight();
}

QRect TGridCardView::cardRect(int sourceRow) const
{
    const QRect rect = m_area->cardRect(model()->positionOf(sourceRow));
    if (rect.isEmpty() || !m_area->viewport()->rect().intersects(rect))
        return {};
    return rect.translated(m_area->viewport()->mapTo(this, QPoint(0, 0)));
}

QRect TGridCardView::rowRect(int sourceRow, const TGridColumn* column) const
{
    const int position = model()->positionOf(sourceRow);
    const QRect card = m_area->cardRect(position);
    if (card.isEmpty() || !column)
        return {};
    for (const TGridCardRowRect& row : m_area->rowsOf(position))
        if (row.Column == column->id())
            return row.Value.translated(card.topLeft())
                .translated(m_area->viewport()->mapTo(this, QPoint(0, 0)));
    return {};
}

QRect TGridCardView::captionRect(int sourceRow, const TGridColumn* column) const
{
    const int position = model()->positionOf(sourceRow);
    const QRect card = m_area->cardRect(position);
    if (card.isEmpty() || !column)
        return {};
    for (const TGridCardRowRect& row : m_area->rowsOf(position))
        if (row.Column == column->id() && !row.Caption.isEmpty())
            return row.Caption.translated(card.topLeft())
                .translated(m_area->viewport()->mapTo(this, QPoint(0, 0)));
    return {};
}

TGridHitInfo TGridCardView::hitTest(const QPoint& pos) const
{
    const QPoint local = m_area->viewport()->mapFrom(this, pos);
    if (!m_area->viewport()->rect().contains(local))
        return {};
    return m_area->hitTestViewport(local);
}

QWidget* TGridCardView::cardsViewport() const
{
    return m_area->viewport();
}

void TGridCardView::makeCurrentVisible(bool)
{
    m_area->scrollToPosition(model()->positionOf(currentSourceRow()));
}

void TGridCardView::scrollToSourceRow(int sourceRow)
{
    m_area->scrollToPosition(model()->positionOf(sourceRow));
}

void TGridCardView::currentRowMoved(int sourceRow)
{
    if (isVisible())
        m_area->scrollToPosition(model()->positionOf(sourceRow));
    m_area->viewport()->update();
}

void TGridCardView::saveSettings(QMap<QString, QString>& settings) const
{
    settings.insert(QStringLiteral("cardWidth"), QString::number(m_cardWidth));
}

void TGridCardView::restoreSettings(const QMap<QString, QString>& settings)
{
    bool ok = false;
    const int width = settings.value(QStringLiteral("cardWidth")).toInt(&ok);
    if (ok && width >= 16 && width <= 4000)
        setCardWidth(width);
}

void TGridCardView::retranslate()
{
    TGridView::retranslate();
    m_area->relayout();
}

bool TGridCardView::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::LayoutDirectionChange:
    case QEvent::StyleChange:
        m_area->relayout();
        break;
    default:
        break;
    }
    return TGridView::event(event);
}
