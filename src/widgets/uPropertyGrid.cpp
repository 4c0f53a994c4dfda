#include "uPropertyGrid.h"

#include "uChoiceEditorItems.h"
#include "uEditorItem.h"
#include "uPaintHelpers.h"
#include "uPropertyGridModel.h"
#include "uWidgetTexts.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QStyledItemDelegate>

using Node = TPropertyGridModel::Node;

namespace {
QColor blend(const QColor& a, const QColor& b, qreal share)
{
    return QColor::fromRgbF(a.redF() * (1 - share) + b.redF() * share,
                            a.greenF() * (1 - share) + b.greenF() * share,
                            a.blueF() * (1 - share) + b.blueF() * share);
}

QColor gridLineColor(const QPalette& palette)
{
    return blend(palette.color(QPalette::Base), palette.color(QPalette::Text), 0.14);
}

QColor categoryColor(const QPalette& palette)
{
    return blend(palette.color(QPalette::Base), palette.color(QPalette::Text), 0.07);
}

bool sameValue(const QVariant& a, const QVariant& b)
{
    const bool aNull = a.isNull() || !a.isValid();
    const bool bNull = b.isNull() || !b.isValid();
    if (aNull || bNull)
        return aNull == bNull;
    return TListEditorItem::valueKey(a) == TListEditorItem::valueKey(b);
}

constexpr int cTextPadding = 4;
constexpr int cDividerGrip = 3;
} // namespace

// Paints captions and values, and makes the editors of the rows' items.
class TPropertyGridDelegate : public QStyledItemDelegate
{
public:
    explicit TPropertyGridDelegate(TPropertyGrid* grid) : QStyledItemDelegate(grid), m_grid(grid) {}

    bool lastCommitFailed = false;
    bool clickChanged = false;

    const Node* nodeOf(const QModelIndex& index) const { return m_grid->m_model->nodeOf(index); }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const Node* node = nodeOf(index);
        if (node == nullptr)
            return;
        painter->save();
        const QPalette& palette = option.palette;
        const QPalette::ColorGroup group = !option.state.testFlag(QStyle::State_Enabled) ? QPalette::Disabled
                                           : option.state.testFlag(QStyle::State_Active) ? QPalette::Active
                                                                                         : QPalette::Inactive;
        const QModelIndex current = m_grid->currentIndex();
        const bool isCurrent =
            current.isValid() && current.row() == index.row() && current.parent() == index.parent();
        const QRect cell = option.rect;
        if (index.column() == 0) {
            painter->fillRect(cell, palette.color(group, isCurrent ? QPalette::Highlight : QPalette::Base));
            painter->setPen(palette.color(group, isCurrent ? QPalette::HighlightedText : QPalette::Text));
            painter->setFont(option.font);
            const QRect text = cell.adjusted(cTextPadding, 0, -cTextPadding, 0);
            painter->drawText(text, int(VisualAlignment(option.direction, Qt::AlignLeft | Qt::AlignVCenter)),
                              option.fontMetrics.elidedText(node->caption, Qt::ElideRight, text.width()));
        } else {
            painter->fillRect(cell, palette.color(group, QPalette::Base));
            QStyleOptionViewItem valueOption = option;
            valueOption.state &= ~QStyle::State_Selected;
            valueOption.state &= ~QStyle::State_HasFocus;
            const QVariant value = m_grid->m_model->valueOf(node);
            if (node->item == nullptr || !node->item->paint(painter, valueOption, value)) {
                const QString shown = node->item ? node->item->displayText(value) : value.toString();
                const Qt::Alignment alignment =
                    node->item ? node->item->alignment() : Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter);
                painter->setPen(palette.color(group, QPalette::Text));
                painter->setFont(option.font);
                const QRect text = cell.adjusted(cTextPadding, 0, -cTextPadding, 0);
                painter->drawText(text, int(VisualAlignment(option.direction, alignment)),
                                  option.fontMetrics.elidedText(shown, Qt::ElideRight, text.width()));
            }
        }
        painter->setPen(gridLineColor(palette));
        painter->drawLine(cell.bottomLeft(), cell.bottomRight());
        if (index.column() == 0) {
            const int x = option.direction == Qt::RightToLeft ? cell.left() : cell.right();
            painter->drawLine(QPoint(x, cell.top()), QPoint(x, cell.bottom()));
        }
        painter->restore();
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const Node* node = nodeOf(index);
        int height = option.fontMetrics.height() + 8;
        if (node != nullptr && !node->category) {
            if (node->lines > 0)
                height = std::max(height, node->lines * option.fontMetrics.lineSpacing() + 6);
            else if (node->item != nullptr) {
                const QSize wanted = node->item->sizeHint(option, m_grid->m_model->valueOf(node));
                if (wanted.isValid())
                    height = std::max(height, wanted.height());
            }
        } else if (node != nullptr) {
            height = option.fontMetrics.height() + 10;
        }
        return {option.fontMetrics.averageCharWidth() * 12, height};
    }

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override
    {
        Q_UNUSED(option);
        const Node* node = nodeOf(index);
        if (node == nullptr || node->item == nullptr || !m_grid->m_model->isEditable(node))
            return nullptr;
        QWidget* editor = node->item->createEditor(parent);
        if (editor == nullptr)
            return nullptr;
        editor->setAutoFillBackground(true);
        if (editor->metaObject()->indexOfProperty("frame") >= 0)
            editor->setProperty("frame", false);
        QPointer<QWidget> guard(editor);
        auto* self = const_cast<TPropertyGridDelegate*>(this);
        node->item->onValueChosen(editor, [self, guard]() {
            if (guard)
                emit self->commitData(guard.data());
        });
        return editor;
    }

    void setEditorData(QWidget* editor, const QModelIndex& index) const override
    {
        const Node* node = nodeOf(index);
        if (node != nullptr && node->item != nullptr)
            node->item->setEditorValue(editor, m_grid->m_model->valueOf(node));
    }

    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override
    {
        Node* node = const_cast<Node*>(nodeOf(index));
        if (node == nullptr || node->item == nullptr)
            return;
        auto* self = const_cast<TPropertyGridDelegate*>(this);
        QVariant value;
        try {
            value = node->item->editorValue(editor);
        } catch (const TEditorError& error) {
            self->lastCommitFailed = true;
            m_grid->reportFailure(node->name, error.text());
            return;
        }
        // An editor left as it was writes nothing, so looking at a value never changes a record.
        if (sameValue(value, m_grid->m_model->valueOf(node)))
            return;
        if (!model->setData(index, value, Qt::EditRole))
            self->lastCommitFailed = true;
    }

    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override
    {
        Q_UNUSED(index);
        QRect area = option.rect.adjusted(0, 0, 0, -1);
        area.setHeight(std::max(area.height(), editor->minimumHeight()));
        const int bottom = m_grid->viewport()->height() - 1;
        if (area.bottom() > bottom)
            area.moveBottom(std::max(bottom, area.height() - 1));
        editor->setGeometry(area);
    }

    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override
    {
        if (event->type() != QEvent::MouseButtonPress || index.column() != 1)
            return false;
        auto* mouse = static_cast<QMouseEvent*>(event);
        const Node* node = nodeOf(index);
        if (mouse->button() != Qt::LeftButton || node == nullptr || node->item == nullptr ||
            !m_grid->m_model->isEditable(node))
            return false;
        QVariant result;
        if (!node->item->valueFromClick(option, mouse->position().toPoint(), m_grid->m_model->valueOf(node),
                                        &result))
            return false;
        clickChanged = true;
        model->setData(index, result, Qt::EditRole);
        return true;
    }

private:
    TPropertyGrid* m_grid;
};

TPropertyGrid::TPropertyGrid(QWidget* parent)
    : QTreeView(parent), m_model(new TPropertyGridModel(this)), m_delegate(new TPropertyGridDelegate(this))
{
    setModel(m_model);
    setItemDelegate(m_delegate);
    header()->hide();
    header()->setStretchLastSection(true);
    header()->setSectionResizeMode(0, QHeaderView::Interactive);
    header()->setMinimumSectionSize(16);
    setUniformRowHeights(false);
    setRootIsDecorated(false);
    setItemsExpandable(true);
    setExpandsOnDoubleClick(false);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectItems);
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setIndentation(fontMetrics().height());
    setMouseTracking(true);
    setFrameShape(QFrame::StyledPanel);

    connect(m_model, &TPropertyGridModel::shapeChanged, this, &TPropertyGrid::applyVisibility);
    connect(m_model, &TPropertyGridModel::valueWritten, this, &TPropertyGrid::rowValueChanged);
    connect(m_model, &TPropertyGridModel::writeFailed, this, &TPropertyGrid::reportFailure);
    connect(m_model, &TPropertyGridModel::currentRowChanged, this, [this](int row) {
        viewport()->update();
        emit currentRowChanged(row);
    });
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex& index) {
        if (auto* node = const_cast<Node*>(m_model->nodeOf(index)))
            node->expanded = true;
    });
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
        if (auto* node = const_cast<Node*>(m_model->nodeOf(index)))
            node->expanded = false;
    });
    applyCaptionWidth();
}

TPropertyGrid::~TPropertyGrid() = default;

// ---- structure

bool TPropertyGrid::addCategory(const QString& name, const QString& caption)
{
    return m_model->addCategory(name, caption) != nullptr;
}

bool TPropertyGrid::addRow(const QString& name, const QString& caption, const QString& fieldName,
                           const TEditorItem* item, const QString& category)
{
    return m_model->addRow(name, caption, fieldName, item, category) != nullptr;
}

void TPropertyGrid::clearRows()
{
    m_model->clearNodes();
}

QStringList TPropertyGrid::rowNames() const
{
    QStringList names;
    for (const Node* node : m_model->rows())
        names << node->name;
    return names;
}

bool TPropertyGrid::hasRow(const QString& name) const
{
    const Node* node = m_model->node(name);
    return node != nullptr && !node->category;
}

void TPropertyGrid::setRowVisible(const QString& name, bool visible)
{
    Node* node = m_model->node(name);
    if (node == nullptr || node->category || node->visible == visible)
        return;
    if (!visible && currentIndex().isValid() && m_model->nodeOf(currentIndex()) == node)
        finishEditing();
    node->visible = visible;
    m_model->nodeChanged(node);
}

bool TPropertyGrid::isRowVisible(const QString& name) const
{
    const Node* node = m_model->node(name);
    return node != nullptr && !node->category && node->visible;
}

void TPropertyGrid::setRowCaption(const QString& name, const QString& caption)
{
    if (Node* node = m_model->node(name); node != nullptr && !node->category) {
        node->caption = caption;
        m_model->nodeChanged(node);
    }
}

QString TPropertyGrid::rowCaption(const QString& name) const
{
    const Node* node = m_model->node(name);
    return node ? node->caption : QString();
}

void TPropertyGrid::setRowEditor(const QString& name, const TEditorItem* item)
{
    Node* node = m_model->node(name);
    if (node == nullptr || node->category || node->item == item)
        return;
    if (currentIndex().isValid() && m_model->nodeOf(currentIndex()) == node)
        finishEditing();
    node->item = item;
    m_model->nodeChanged(node);
    // Rows may ask for another height now.
    scheduleDelayedItemsLayout();
}

const TEditorItem* TPropertyGrid::rowEditor(const QString& name) const
{
    const Node* node = m_model->node(name);
    return node ? node->item : nullptr;
}

void TPropertyGrid::setRowReadOnly(const QString& name, bool readOnly)
{
    if (Node* node = m_model->node(name); node != nullptr && !node->category) {
        node->readOnly = readOnly;
        m_model->nodeChanged(node);
    }
}

bool TPropertyGrid::isRowReadOnly(const QString& name) const
{
    const Node* node = m_model->node(name);
    return node != nullptr && node->readOnly;
}

void TPropertyGrid::setRowField(const QString& name, const QString& fieldName)
{
    if (Node* node = m_model->node(name); node != nullptr && !node->category) {
        node->fieldName = fieldName;
        m_model->nodeChanged(node);
    }
}

void TPropertyGrid::setRowLines(const QString& name, int lines)
{
    if (Node* node = m_model->node(name); node != nullptr && !node->category) {
        node->lines = std::max(0, lines);
        m_model->nodeChanged(node);
        scheduleDelayedItemsLayout();
    }
}

QVariant TPropertyGrid::rowValue(const QString& name) const
{
    return m_model->valueOf(m_model->node(name));
}

bool TPropertyGrid::setRowValue(const QString& name, const QVariant& value)
{
    Node* node = m_model->node(name);
    if (node == nullptr || node->category)
        return false;
    return m_model->writeValue(node, value, nullptr);
}

QString TPropertyGrid::rowText(const QString& name) const
{
    const Node* node = m_model->node(name);
    if (node == nullptr || node->category)
        return {};
    return m_model->indexOf(node, 1).data(Qt::DisplayRole).toString();
}

void TPropertyGrid::setCategoryCaption(const QString& name, const QString& caption)
{
    if (Node* node = m_model->node(name); node != nullptr && node->category) {
        node->caption = caption;
        m_model->nodeChanged(node);
    }
}

void TPropertyGrid::setCategoryVisible(const QString& name, bool visible)
{
    if (Node* node = m_model->node(name); node != nullptr && node->category) {
        node->visible = visible;
        m_model->nodeChanged(node);
    }
}

bool TPropertyGrid::isCategoryShown(const QString& name) const
{
    const Node* node = m_model->node(name);
    return node != nullptr && node->category && m_model->isShown(node);
}

void TPropertyGrid::setCategoryExpanded(const QString& name, bool expanded)
{
    if (Node* node = m_model->node(name); node != nullptr && node->category) {
        node->expanded = expanded;
        setExpanded(m_model->indexOf(node), expanded);
    }
}

bool TPropertyGrid::categoryAutoHide() const
{
    return m_model->categoryAutoHide();
}

void TPropertyGrid::setCategoryAutoHide(bool on)
{
    m_model->setCategoryAutoHide(on);
    applyVisibility();
}

void TPropertyGrid::applyVisibility()
{
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QModelIndex index = m_model->index(row, 0);
        const Node* node = m_model->nodeOf(index);
        setRowHidden(row, QModelIndex(), !m_model->isShown(node));
        if (!node->category)
            continue;
        for (int child = 0; child < int(node->children.size()); ++child)
            setRowHidden(child, index, !node->children[child]->visible);
        setExpanded(index, node->expanded);
    }
}

// ---- source

void TPropertyGrid::setSourceModel(QAbstractItemModel* model)
{
    finishEditing();
    m_model->setSourceModel(model);
}

QAbstractItemModel* TPropertyGrid::sourceModel() const
{
    return m_model->sourceModel();
}

void TPropertyGrid::setFieldNameRole(int role)
{
    m_model->setFieldNameRole(role);
}

void TPropertyGrid::setValueRole(int role)
{
    m_model->setValueRole(role);
}

void TPropertyGrid::setCurrentRow(int row)
{
    finishEditing();
    m_model->setCurrentRow(row);
    // Heights may follow the values (pictures).
    scheduleDelayedItemsLayout();
}

int TPropertyGrid::currentRow() const
{
    return m_model->currentRow();
}

bool TPropertyGrid::isReadOnly() const
{
    return m_model->readOnly();
}

void TPropertyGrid::setReadOnly(bool readOnly)
{
    if (readOnly)
        finishEditing();
    m_model->setReadOnly(readOnly);
}

// ---- look

void TPropertyGrid::setCaptionWidth(int width)
{
    m_captionWidth = std::max(16, width);
    applyCaptionWidth();
}

void TPropertyGrid::applyCaptionWidth()
{
    const int room = viewport()->width() - fontMetrics().averageCharWidth() * 6;
    header()->resizeSection(0, std::max(16, room > 16 ? std::min(m_captionWidth, room) : m_captionWidth));
}

int TPropertyGrid::dividerX() const
{
    const int start = columnViewportPosition(0);
    return layoutDirection() == Qt::RightToLeft ? start : start + columnWidth(0);
}

void TPropertyGrid::resizeEvent(QResizeEvent* event)
{
    QTreeView::resizeEvent(event);
    applyCaptionWidth();
}

void TPropertyGrid::changeEvent(QEvent* event)
{
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        setIndentation(fontMetrics().height());
        scheduleDelayedItemsLayout();
    }
}

void TPropertyGrid::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const
{
    const Node* node = m_model->nodeOf(index);
    if (node == nullptr || !node->category) {
        QTreeView::drawRow(painter, option, index);
        return;
    }
    painter->save();
    const QRect row(0, option.rect.y(), viewport()->width(), option.rect.height());
    painter->fillRect(row, categoryColor(palette()));
    const Qt::LayoutDirection direction = layoutDirection();
    QStyleOption arrow;
    arrow.initFrom(this);
    arrow.rect =
        QStyle::visualRect(direction, row, QRect(row.left(), row.top(), indentation(), row.height()));
    arrow.state = QStyle::State_Children | QStyle::State_Item | QStyle::State_Enabled;
    if (isExpanded(index))
        arrow.state |= QStyle::State_Open;
    style()->drawPrimitive(QStyle::PE_IndicatorBranch, &arrow, painter, this);
    QFont bold = font();
    bold.setBold(true);
    painter->setFont(bold);
    painter->setPen(palette().color(QPalette::Text));
    const QRect text = QStyle::visualRect(
        direction, row,
        QRect(row.left() + indentation() + 2, row.top(), row.width() - indentation() - 8, row.height()));
    painter->drawText(text, int(VisualAlignment(direction, Qt::AlignLeft | Qt::AlignVCenter)),
                      QFontMetrics(bold).elidedText(node->caption, Qt::ElideRight, text.width()));
    painter->setPen(gridLineColor(palette()));
    painter->drawLine(row.bottomLeft(), row.bottomRight());
    const QModelIndex current = currentIndex();
    if (hasFocus() && current.isValid() && current.row() == index.row() && !current.parent().isValid()) {
        painter->setPen(QPen(palette().color(QPalette::Highlight), 1, Qt::DotLine));
        painter->drawRect(row.adjusted(0, 0, -1, -1));
    }
    painter->restore();
}

void TPropertyGrid::drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const
{
    Q_UNUSED(index);
    painter->fillRect(rect, categoryColor(palette()));
}

// ---- mouse and keys

void TPropertyGrid::mousePressEvent(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    if (event->button() == Qt::LeftButton && std::abs(pos.x() - dividerX()) <= cDividerGrip) {
        finishEditing();
        m_resizing = true;
        return;
    }
    const QModelIndex index = indexAt(pos);
    const Node* node = m_model->nodeOf(index);
    if (node != nullptr && event->button() == Qt::LeftButton) {
        const QModelIndex value = index.siblingAtColumn(1);
        if (node->category) {
            setCurrentIndex(value);
            setExpanded(index.siblingAtColumn(0), !isExpanded(index.siblingAtColumn(0)));
            return;
        }
        if (index.column() == 0) {
            setCurrentIndex(value);
            return;
        }
        if (currentIndex() != value)
            setCurrentIndex(value);
    }
    m_delegate->clickChanged = false;
    QTreeView::mousePressEvent(event);
    if (node != nullptr && event->button() == Qt::LeftButton && index.column() == 1 &&
        !m_delegate->clickChanged && state() != QAbstractItemView::EditingState && m_model->isEditable(node))
        QTreeView::edit(index);
}

void TPropertyGrid::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    if (m_resizing) {
        const int start = columnViewportPosition(0);
        const int width =
            layoutDirection() == Qt::RightToLeft ? start + columnWidth(0) - pos.x() : pos.x() - start;
        setCaptionWidth(
            std::clamp(width, indentation() + 16, std::max(indentation() + 16, viewport()->width() - 40)));
        return;
    }
    if (event->buttons() == Qt::NoButton) {
        if (std::abs(pos.x() - dividerX()) <= cDividerGrip)
            viewport()->setCursor(Qt::SplitHCursor);
        else
            viewport()->unsetCursor();
    }
    QTreeView::mouseMoveEvent(event);
}

void TPropertyGrid::mouseReleaseEvent(QMouseEvent* event)
{
    if (m_resizing) {
        m_resizing = false;
        return;
    }
    QTreeView::mouseReleaseEvent(event);
}

void TPropertyGrid::mouseDoubleClickEvent(QMouseEvent* event)
{
    const Node* node = m_model->nodeOf(indexAt(event->position().toPoint()));
    if (node != nullptr && node->category)
        return; // the press toggled it already
    if (node != nullptr)
        emit rowDoubleClicked(node->name);
    QTreeView::mouseDoubleClickEvent(event);
}

void TPropertyGrid::keyPressEvent(QKeyEvent* event)
{
    const QModelIndex current = currentIndex();
    const Node* node = m_model->nodeOf(current);
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && node != nullptr &&
        state() != QAbstractItemView::EditingState) {
        if (node->category)
            setExpanded(current.siblingAtColumn(0), !isExpanded(current.siblingAtColumn(0)));
        else if (m_model->isEditable(node))
            QTreeView::edit(current.siblingAtColumn(1));
        event->accept();
        return;
    }
    QTreeView::keyPressEvent(event);
}

void TPropertyGrid::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QTreeView::currentChanged(current, previous);
    if (current.isValid() && current.column() == 0)
        setCurrentIndex(current.siblingAtColumn(1));
    viewport()->update();
}

bool TPropertyGrid::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    if (!index.isValid() || index.column() != 1)
        return false;
    const Node* node = m_model->nodeOf(index);
    if (node == nullptr || node->category)
        return false;
    return QTreeView::edit(index, trigger, event);
}

// ---- editing

QWidget* TPropertyGrid::openEditor() const
{
    if (state() != QAbstractItemView::EditingState)
        return nullptr;
    return indexWidget(currentIndex());
}

bool TPropertyGrid::finishEditing()
{
    QWidget* editor = openEditor();
    if (editor == nullptr)
        return true;
    m_delegate->lastCommitFailed = false;
    commitData(editor);
    closeEditor(editor, QAbstractItemDelegate::NoHint);
    return !m_delegate->lastCommitFailed;
}

bool TPropertyGrid::editRow(const QString& name)
{
    const Node* node = m_model->node(name);
    if (node == nullptr || node->category || !m_model->isEditable(node) || !node->visible)
        return false;
    const QModelIndex index = m_model->indexOf(node, 1);
    finishEditing();
    setCurrentIndex(index);
    scrollTo(index);
    QTreeView::edit(index);
    return openEditor() != nullptr;
}

QString TPropertyGrid::currentRowName() const
{
    const Node* node = m_model->nodeOf(currentIndex());
    return node ? node->name : QString();
}

QString TPropertyGrid::rowAt(const QPoint& pos) const
{
    const Node* node = m_model->nodeOf(indexAt(pos));
    return node && !node->category ? node->name : QString();
}

QRect TPropertyGrid::valueRect(const QString& name) const
{
    const Node* node = m_model->node(name);
    if (node == nullptr || node->category)
        return {};
    return visualRect(m_model->indexOf(node, 1));
}

void TPropertyGrid::reportFailure(const QString& name, const QString& message)
{
    emit editFailed(name, message);
    ReportEditorErrorLater(this, message);
}
