#include "uRibbonGroupLayout.h"

#include "uRibbonStyle.h"

#include <QStyle>
#include <QWidget>

TRibbonGroupLayout::TRibbonGroupLayout(QWidget* parent) : QLayout(parent)
{
    setContentsMargins(0, 0, 0, 0);
}

TRibbonGroupLayout::~TRibbonGroupLayout()
{
    for (Entry& entry : m_entries)
        delete entry.item;
}

void TRibbonGroupLayout::addItemWidget(QWidget* widget, TRibbonItemSize size)
{
    addChildWidget(widget);
    m_entries.push_back({new QWidgetItem(widget), size == TRibbonItemSize::Large ? Kind::Large : Kind::Row});
    invalidate();
}

void TRibbonGroupLayout::addSeparator()
{
    m_entries.push_back({nullptr, Kind::Separator});
    invalidate();
}

void TRibbonGroupLayout::addColumnBreak()
{
    m_entries.push_back({nullptr, Kind::Break});
    invalidate();
}

void TRibbonGroupLayout::setRowsPerColumn(int rows)
{
    m_rows = std::max(1, rows);
    invalidate();
}

void TRibbonGroupLayout::addItem(QLayoutItem* item)
{
    m_entries.push_back({item, Kind::Row});
    invalidate();
}

QLayoutItem* TRibbonGroupLayout::itemAt(int index) const
{
    // Separators and breaks hold no layout item; count and index walk the real items only.
    int seen = 0;
    for (const Entry& entry : m_entries) {
        if (entry.item == nullptr)
            continue;
        if (seen++ == index)
            return entry.item;
    }
    return nullptr;
}

QLayoutItem* TRibbonGroupLayout::takeAt(int index)
{
    int seen = 0;
    for (auto at = m_entries.begin(); at != m_entries.end(); ++at) {
        if (at->item == nullptr)
            continue;
        if (seen++ == index) {
            QLayoutItem* item = at->item;
            m_entries.erase(at);
            invalidate();
            return item;
        }
    }
    return nullptr;
}

int TRibbonGroupLayout::count() const
{
    return int(
        std::count_if(m_entries.begin(), m_entries.end(), [](const Entry& e) { return e.item != nullptr; }));
}

void TRibbonGroupLayout::invalidate()
{
    m_cachedHint = QSize();
    QLayout::invalidate();
}

int TRibbonGroupLayout::separatorWidth() const
{
    const QWidget* parent = parentWidget();
    return parent ? TRibbonMetrics::of(parent->fontMetrics()).padding * 2 + 1 : 9;
}

int TRibbonGroupLayout::spacingWidth() const
{
    const QWidget* parent = parentWidget();
    return parent ? std::max(2, TRibbonMetrics::of(parent->fontMetrics()).padding / 2) : 2;
}

std::vector<TRibbonGroupLayout::Column> TRibbonGroupLayout::columns() const
{
    std::vector<Column> result;
    Column rows;
    const auto closeRows = [&]() {
        if (!rows.entries.empty())
            result.push_back(rows);
        rows = Column();
    };
    for (int i = 0; i < int(m_entries.size()); ++i) {
        const Entry& entry = m_entries[i];
        switch (entry.kind) {
        case Kind::Large:
            if (entry.item->isEmpty())
                break;
            closeRows();
            result.push_back({{i}, entry.item->sizeHint().width(), false, true});
            break;
        case Kind::Row:
            if (entry.item->isEmpty())
                break;
            if (int(rows.entries.size()) >= m_rows)
                closeRows();
            rows.entries.push_back(i);
            rows.width = std::max(rows.width, entry.item->sizeHint().width());
            break;
        case Kind::Separator:
            closeRows();
            // No line at the start, and never two in a row.
            if (!result.empty() && !result.back().separator)
                result.push_back({{}, separatorWidth(), true, false});
            break;
        case Kind::Break:
            closeRows();
            break;
        }
    }
    closeRows();
    while (!result.empty() && result.back().separator)
        result.pop_back();
    return result;
}

QSize TRibbonGroupLayout::sizeHint() const
{
    if (m_cachedHint.isValid())
        return m_cachedHint;
    const std::vector<Column> all = columns();
    int width = 0;
    for (const Column& column : all)
        width += column.width;
    if (!all.empty())
        width += spacingWidth() * int(all.size() - 1);
    const QWidget* parent = parentWidget();
    const int height = parent ? TRibbonMetrics::of(parent->fontMetrics()).bodyHeight : 70;
    const QMargins margins = contentsMargins();
    m_cachedHint = QSize(width + margins.left() + margins.right(), height + margins.top() + margins.bottom());
    return m_cachedHint;
}

QSize TRibbonGroupLayout::minimumSize() const
{
    return sizeHint();
}

void TRibbonGroupLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    m_separatorLines.clear();
    const QRect area = contentsRect();
    const Qt::LayoutDirection direction =
        parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
    const int slot = area.height() / m_rows;
    int x = area.left();
    for (const Column& column : columns()) {
        if (column.separator) {
            const int line = x + column.width / 2;
            m_separatorLines << QStyle::visualRect(direction, area, QRect(line, 0, 1, 1)).left();
        } else if (column.large) {
            QLayoutItem* item = m_entries[column.entries.front()].item;
            item->setGeometry(
                QStyle::visualRect(direction, area, QRect(x, area.top(), column.width, area.height())));
        } else {
            // Fewer than three rows stand centred in the column's height.
            const int used = int(column.entries.size());
            const int top = area.top() + (m_rows - used) * slot / 2 + (area.height() - slot * m_rows) / 2;
            for (int row = 0; row < used; ++row) {
                QLayoutItem* item = m_entries[column.entries[row]].item;
                const QSize hint = item->sizeHint();
                const int width = item->expandingDirections().testFlag(Qt::Horizontal)
                                      ? column.width
                                      : std::min(hint.width(), column.width);
                const int height = std::min(hint.height(), slot);
                const QRect box(x, top + row * slot + (slot - height) / 2, width, height);
                item->setGeometry(QStyle::visualRect(direction, area, box));
            }
        }
        x += column.width + spacingWidth();
    }
}
