#include "uGalleryView.h"

#include "uPaintHelpers.h"
#include "uRibbonStyle.h"

#include <QAction>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTextLayout>
#include <QToolTip>

TGalleryView::TGalleryView(QWidget* parent) : QAbstractScrollArea(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setFrameShape(QFrame::NoFrame);
    viewport()->setMouseTracking(true);
    viewport()->setBackgroundRole(QPalette::Base);
}

void TGalleryView::addGroup(const QString& name, const QString& caption)
{
    m_groups.push_back({name, caption, true, {}});
    relayout();
}

void TGalleryView::setGroupCaption(const QString& name, const QString& caption)
{
    for (Group& group : m_groups)
        if (group.name == name)
            group.caption = caption;
    viewport()->update();
}

void TGalleryView::setGroupVisible(const QString& name, bool visible)
{
    for (Group& group : m_groups)
        if (group.name == name)
            group.visible = visible;
    relayout();
}

QStringList TGalleryView::groupNames() const
{
    QStringList names;
    for (const Group& group : m_groups)
        names << group.name;
    return names;
}

bool TGalleryView::addItem(const QString& group, const QString& name, const QString& caption,
                           const QPixmap& picture, int tag)
{
    if (find(name) != nullptr ||
        std::none_of(m_groups.begin(), m_groups.end(), [&](const Group& g) { return g.name == group; }))
        return false;
    Item item;
    item.name = name;
    item.group = group;
    item.caption = caption;
    item.picture = picture;
    item.tag = tag;
    // Items of a group stay together, in the order they were added.
    auto at = m_items.end();
    for (auto it = m_items.begin(); it != m_items.end(); ++it)
        if (it->group == group)
            at = it + 1;
    if (at == m_items.end()) {
        // The first item of its group: before the items of later groups.
        int groupIndex = 0;
        for (int g = 0; g < int(m_groups.size()); ++g)
            if (m_groups[g].name == group)
                groupIndex = g;
        at = std::find_if(m_items.begin(), m_items.end(), [&](const Item& other) {
            for (int g = groupIndex + 1; g < int(m_groups.size()); ++g)
                if (m_groups[g].name == other.group)
                    return true;
            return false;
        });
    }
    m_items.insert(at, item);
    relayout();
    return true;
}

bool TGalleryView::addActionItem(const QString& group, QAction* action, int tag, const QString& name)
{
    if (action == nullptr)
        return false;
    const QString itemName = name.isEmpty() ? action->objectName() : name;
    if (!addItem(group, itemName, QString(), QPixmap(), tag))
        return false;
    find(itemName)->action = action;
    connect(action, &QAction::changed, viewport(), qOverload<>(&QWidget::update));
    viewport()->update();
    return true;
}

void TGalleryView::setItemCaption(const QString& name, const QString& caption)
{
    if (Item* item = find(name))
        item->caption = caption;
    viewport()->update();
}

void TGalleryView::setItemPicture(const QString& name, const QPixmap& picture)
{
    if (Item* item = find(name))
        item->picture = picture;
    viewport()->update();
}

void TGalleryView::setItemEnabled(const QString& name, bool enabled)
{
    if (Item* item = find(name))
        item->enabled = enabled;
    viewport()->update();
}

bool TGalleryView::isItemEnabled(const QString& name) const
{
    const Item* item = find(name);
    if (item == nullptr)
        return false;
    return item->action ? item->action->isEnabled() : item->enabled;
}

int TGalleryView::itemTag(const QString& name) const
{
    const Item* item = find(name);
    return item ? item->tag : 0;
}

QString TGalleryView::itemGroup(const QString& name) const
{
    const Item* item = find(name);
    return item ? item->group : QString();
}

QString TGalleryView::itemCaption(const QString& name) const
{
    const Item* item = find(name);
    return item ? captionOf(*item) : QString();
}

QStringList TGalleryView::itemNames() const
{
    QStringList names;
    for (const Item& item : m_items)
        names << item.name;
    return names;
}

void TGalleryView::clear()
{
    m_items.clear();
    m_groups.clear();
    m_hover = m_pressed = m_focus = -1;
    relayout();
}

void TGalleryView::setPictureSize(const QSize& size)
{
    m_pictureSize = size;
    relayout();
}

void TGalleryView::setCaptionLines(int lines)
{
    m_captionLines = std::max(1, lines);
    relayout();
}

void TGalleryView::setColumnsHint(int columns)
{
    m_columnsHint = std::max(1, columns);
    updateGeometry();
}

TGalleryView::Item* TGalleryView::find(const QString& name)
{
    for (Item& item : m_items)
        if (item.name == name)
            return &item;
    return nullptr;
}

const TGalleryView::Item* TGalleryView::find(const QString& name) const
{
    return const_cast<TGalleryView*>(this)->find(name);
}

QString TGalleryView::captionOf(const Item& item) const
{
    if (item.action && item.caption.isEmpty())
        return WithoutMnemonic(item.action->text());
    return item.caption;
}

QPixmap TGalleryView::pictureOf(const Item& item) const
{
    if (!item.picture.isNull() || !item.action)
        return item.picture;
    return item.action->icon().pixmap(m_pictureSize, devicePixelRatioF());
}

bool TGalleryView::enabledAt(int index) const
{
    if (index < 0 || index >= int(m_items.size()))
        return false;
    const Item& item = m_items[index];
    return isEnabled() && (item.action ? item.action->isEnabled() : item.enabled);
}

// ---- layout

QSize TGalleryView::cellSize() const
{
    const QFontMetrics metrics = fontMetrics();
    const int pad = std::max(4, metrics.height() / 3);
    const int width = std::max(m_pictureSize.width(), metrics.averageCharWidth() * 12) + pad * 2;
    const int height = pad + m_pictureSize.height() + pad / 2 + metrics.lineSpacing() * m_captionLines + pad;
    return {width, height};
}

int TGalleryView::headerHeight() const
{
    return fontMetrics().height() + 12;
}

void TGalleryView::relayout()
{
    const QSize cell = cellSize();
    const int width = std::max(viewport()->width(), cell.width());
    const int gap = std::max(2, fontMetrics().height() / 4);
    int y = 0;
    for (Group& group : m_groups) {
        group.header = QRect();
        const bool any = group.visible && std::any_of(m_items.begin(), m_items.end(), [&](const Item& item) {
                             return item.group == group.name;
                         });
        if (!any) {
            for (Item& item : m_items)
                if (item.group == group.name)
                    item.rect = QRect();
            continue;
        }
        group.header = QRect(0, y, width, headerHeight());
        y += headerHeight() + gap;
        int x = gap;
        for (Item& item : m_items) {
            if (item.group != group.name)
                continue;
            if (x + cell.width() > width && x > gap) {
                x = gap;
                y += cell.height() + gap;
            }
            item.rect = QStyle::visualRect(layoutDirection(), QRect(0, 0, width, 1),
                                           QRect(x, y, cell.width(), cell.height()));
            item.rect.moveTop(y);
            x += cell.width() + gap;
        }
        y += cell.height() + gap * 2;
    }
    m_contentHeight = y;
    verticalScrollBar()->setRange(0, std::max(0, m_contentHeight - viewport()->height()));
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(cell.height() / 4);
    viewport()->update();
    updateGeometry();
}

QSize TGalleryView::sizeHint() const
{
    const QSize cell = cellSize();
    const int gap = std::max(2, fontMetrics().height() / 4);
    const int width = m_columnsHint * (cell.width() + gap) + gap + verticalScrollBar()->sizeHint().width();
    return {width, std::min(m_contentHeight, cell.height() * 4 + headerHeight() * 2) + 2 * frameWidth()};
}

QSize TGalleryView::minimumSizeHint() const
{
    const QSize cell = cellSize();
    return {cell.width() + verticalScrollBar()->sizeHint().width(), cell.height() + headerHeight()};
}

int TGalleryView::indexAt(const QPoint& viewportPos) const
{
    const QPoint pos = viewportPos + QPoint(0, verticalScrollBar()->value());
    for (int i = 0; i < int(m_items.size()); ++i)
        if (m_items[i].rect.contains(pos))
            return i;
    return -1;
}

QString TGalleryView::itemAt(const QPoint& pos) const
{
    const int index = indexAt(pos);
    return index >= 0 ? m_items[index].name : QString();
}

QRect TGalleryView::itemRect(const QString& name) const
{
    const Item* item = find(name);
    if (item == nullptr || item->rect.isNull())
        return {};
    return item->rect.translated(0, -verticalScrollBar()->value());
}

// ---- painting

void TGalleryView::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& palette = this->palette();
    const TRibbonColors colors = TRibbonColors::of(palette, false);
    const int offset = verticalScrollBar()->value();
    const Qt::LayoutDirection direction = layoutDirection();
    const QFontMetrics metrics = fontMetrics();
    painter.translate(0, -offset);
    const QRect visible = viewport()->rect().translated(0, offset);

    for (const Group& group : m_groups) {
        if (group.header.isNull() || !group.header.intersects(visible))
            continue;
        QFont bold = font();
        bold.setBold(true);
        painter.setFont(bold);
        painter.setPen(palette.color(QPalette::Text));
        const QRect text = group.header.adjusted(6, 0, -6, 0);
        painter.drawText(text, int(VisualAlignment(direction, Qt::AlignLeft | Qt::AlignVCenter)),
                         group.caption);
        painter.setPen(colors.separator);
        painter.drawLine(QPointF(group.header.left() + 4, group.header.bottom() + 0.5),
                         QPointF(group.header.right() - 4, group.header.bottom() + 0.5));
    }
    painter.setFont(font());

    const int pad = std::max(4, metrics.height() / 3);
    for (int i = 0; i < int(m_items.size()); ++i) {
        const Item& item = m_items[i];
        if (item.rect.isNull() || !item.rect.intersects(visible))
            continue;
        const bool enabled = enabledAt(i);
        const QRectF cell = QRectF(item.rect).adjusted(0.5, 0.5, -0.5, -0.5);
        if (enabled && (i == m_hover || i == m_pressed)) {
            painter.setPen(QPen(colors.hoverEdge, 1));
            painter.setBrush(i == m_pressed ? colors.pressed : colors.hover);
            painter.drawRoundedRect(cell, 3, 3);
        }
        if (i == m_focus && hasFocus()) {
            painter.setPen(QPen(colors.accent, 1, Qt::DotLine));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(cell.adjusted(1, 1, -1, -1), 3, 3);
        }
        const QRect pictureArea(item.rect.left() + (item.rect.width() - m_pictureSize.width()) / 2,
                                item.rect.top() + pad, m_pictureSize.width(), m_pictureSize.height());
        const QPixmap picture = pictureOf(item);
        if (!picture.isNull()) {
            const QSize shown =
                picture.deviceIndependentSize().toSize().scaled(m_pictureSize, Qt::KeepAspectRatio);
            const QRect target = QStyle::alignedRect(direction, Qt::AlignCenter, shown, pictureArea);
            if (enabled)
                painter.drawPixmap(target, picture);
            else
                QIcon(picture).paint(&painter, target, Qt::AlignCenter, QIcon::Disabled);
        }
        // The caption: wrapped into captionLines lines, the last one elided.
        painter.setPen(palette.color(enabled ? QPalette::Active : QPalette::Disabled, QPalette::Text));
        const QRect captionArea(item.rect.left() + pad / 2, pictureArea.bottom() + pad / 2,
                                item.rect.width() - pad, metrics.lineSpacing() * m_captionLines);
        const QString caption = captionOf(item);
        QTextLayout layout(caption, font());
        QTextOption option(Qt::AlignHCenter);
        option.setWrapMode(QTextOption::WordWrap);
        option.setTextDirection(direction);
        layout.setTextOption(option);
        layout.beginLayout();
        int lineTop = captionArea.top();
        for (int n = 0; n < m_captionLines; ++n) {
            QTextLine line = layout.createLine();
            if (!line.isValid())
                break;
            line.setLineWidth(captionArea.width());
            const bool more = line.textStart() + line.textLength() < caption.size();
            // The last line takes the rest, elided; a word longer than the line is elided too.
            const QString text = n == m_captionLines - 1 && more
                                     ? caption.mid(line.textStart())
                                     : caption.mid(line.textStart(), line.textLength());
            painter.drawText(QRect(captionArea.left(), lineTop, captionArea.width(), metrics.lineSpacing()),
                             Qt::AlignHCenter | Qt::AlignTop,
                             metrics.elidedText(text.trimmed(), Qt::ElideRight, captionArea.width()));
            lineTop += metrics.lineSpacing();
        }
        layout.endLayout();
    }
}

bool TGalleryView::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const int index = indexAt(help->pos());
        if (index >= 0)
            QToolTip::showText(help->globalPos(), captionOf(m_items[index]), viewport(),
                               m_items[index].rect.translated(0, -verticalScrollBar()->value()));
        else
            QToolTip::hideText();
        return true;
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void TGalleryView::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    relayout();
}

void TGalleryView::scrollContentsBy(int dx, int dy)
{
    Q_UNUSED(dx);
    Q_UNUSED(dy);
    viewport()->update();
}

void TGalleryView::changeEvent(QEvent* event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::LayoutDirectionChange)
        relayout();
}

// ---- input

void TGalleryView::mouseMoveEvent(QMouseEvent* event)
{
    const int index = indexAt(event->position().toPoint());
    if (index != m_hover) {
        m_hover = index;
        viewport()->setCursor(enabledAt(index) ? Qt::PointingHandCursor : Qt::ArrowCursor);
        viewport()->update();
    }
}

void TGalleryView::leaveEvent(QEvent* event)
{
    QAbstractScrollArea::leaveEvent(event);
    m_hover = -1;
    viewport()->update();
}

void TGalleryView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const int index = indexAt(event->position().toPoint());
    if (enabledAt(index)) {
        m_pressed = index;
        m_focus = index;
        viewport()->update();
    }
}

void TGalleryView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const int pressed = m_pressed;
    m_pressed = -1;
    viewport()->update();
    if (pressed >= 0 && indexAt(event->position().toPoint()) == pressed)
        activate(pressed);
}

void TGalleryView::activate(int index)
{
    if (!enabledAt(index))
        return;
    // Copy first: a handler may change or clear the gallery.
    const QString group = m_items[index].group;
    const QString name = m_items[index].name;
    const int tag = m_items[index].tag;
    const QPointer<QAction> action = m_items[index].action;
    if (action)
        action->trigger();
    emit itemClicked(group, name, tag);
}

bool TGalleryView::clickItem(const QString& name)
{
    for (int i = 0; i < int(m_items.size()); ++i)
        if (m_items[i].name == name && enabledAt(i)) {
            activate(i);
            return true;
        }
    return false;
}

void TGalleryView::keyPressEvent(QKeyEvent* event)
{
    std::vector<int> shown;
    for (int i = 0; i < int(m_items.size()); ++i)
        if (!m_items[i].rect.isNull())
            shown.push_back(i);
    if (shown.empty())
        return QAbstractScrollArea::keyPressEvent(event);
    const auto position = std::find(shown.begin(), shown.end(), m_focus);
    int at = position == shown.end() ? -1 : int(position - shown.begin());
    const bool rtl = layoutDirection() == Qt::RightToLeft;
    const auto nearestVertical = [&](int direction) {
        if (at < 0)
            return 0;
        const QRect from = m_items[shown[at]].rect;
        int best = at;
        int bestDistance = INT_MAX;
        for (int i = 0; i < int(shown.size()); ++i) {
            const QRect to = m_items[shown[i]].rect;
            if ((direction > 0 && to.top() <= from.top()) || (direction < 0 && to.top() >= from.top()))
                continue;
            const int distance =
                std::abs(to.top() - from.top()) * 4 + std::abs(to.center().x() - from.center().x());
            if (distance < bestDistance) {
                best = i;
                bestDistance = distance;
            }
        }
        return best;
    };
    switch (event->key()) {
    case Qt::Key_Right:
        at = std::clamp(at + (rtl ? -1 : 1), 0, int(shown.size()) - 1);
        break;
    case Qt::Key_Left:
        at = std::clamp(at + (rtl ? 1 : -1), 0, int(shown.size()) - 1);
        break;
    case Qt::Key_Down:
        at = nearestVertical(1);
        break;
    case Qt::Key_Up:
        at = nearestVertical(-1);
        break;
    case Qt::Key_Home:
        at = 0;
        break;
    case Qt::Key_End:
        at = int(shown.size()) - 1;
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (m_focus >= 0)
            activate(m_focus);
        return;
    default:
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    m_focus = shown[std::max(at, 0)];
    const QRect rect = m_items[m_focus].rect;
    QScrollBar* bar = verticalScrollBar();
    if (rect.top() < bar->value())
        bar->setValue(rect.top() - headerHeight());
    else if (rect.bottom() > bar->value() + viewport()->height())
        bar->setValue(rect.bottom() - viewport()->height() + 4);
    viewport()->update();
}
