#include "uSortController.h"

#include "uGridColumn.h"
#include "uGridColumns.h"
#include "uZTMessages.h"
#include "uZTStrings.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

QString AscendingText()
{
    return TextOr(u"cSSortDlgAsc"_s, u"Ascending"_s);
}

QString DescendingText()
{
    return TextOr(u"cSSortDlgDesc"_s, u"Descending"_s);
}

// Ends a view's sort update however the block between is left.
class TSortUpdate
{
public:
    explicit TSortUpdate(TSortableView& view) : m_view(view) { m_view.BeginSortUpdate(); }
    ~TSortUpdate() { m_view.EndSortUpdate(); }
    TSortUpdate(const TSortUpdate&) = delete;
    TSortUpdate& operator=(const TSortUpdate&) = delete;

private:
    TSortableView& m_view;
};

} // namespace

// ---- TGridColumnsSortView -------------------------------------------------------------------------

TGridColumnsSortView::TGridColumnsSortView(TGridColumns& columns, TCaptionFunction caption,
                                           TPictureFunction picture)
    : m_columns(columns), m_ordered(columns.ordered()), m_caption(std::move(caption)),
      m_picture(std::move(picture))
{}

int TGridColumnsSortView::ColumnCount() const
{
    return int(m_ordered.size());
}

TSortViewColumn TGridColumnsSortView::Column(int column) const
{
    const TGridColumn* c = m_ordered.value(column);
    if (!c) {
        return {};
    }
    TSortViewColumn result;
    result.Caption = m_caption ? m_caption(c) : c->caption();
    result.Visible = c->visible();
    result.Picture = m_picture ? m_picture(c) : c->isPicture();
    return result;
}

QList<TSortableView::TSortedColumn> TGridColumnsSortView::SortedColumns() const
{
    QList<TSortedColumn> result;
    for (TGridColumn* c : m_columns.sortColumns()) {
        result.append({int(m_ordered.indexOf(c)), c->sortOrder() == TGridSortOrder::Descending});
    }
    return result;
}

void TGridColumnsSortView::BeginSortUpdate()
{
    m_columns.beginUpdate();
}

void TGridColumnsSortView::EndSortUpdate()
{
    m_columns.endUpdate();
}

void TGridColumnsSortView::ClearSort()
{
    m_columns.clearSort();
}

void TGridColumnsSortView::SetColumnSort(int column, int sortIndex, bool descending)
{
    TGridColumn* c = m_ordered.value(column);
    if (!c) {
        return;
    }
    // The column set closes gaps in the priorities; levels set in rising order keep their order.
    c->setSortIndex(sortIndex);
    c->setSortOrder(descending ? TGridSortOrder::Descending : TGridSortOrder::Ascending);
}

// ---- Commands --------------------------------------------------------------------------------------

const QList<TSortCommandDef>& SortCommands()
{
    static const QList<TSortCommandDef> commands = {
        {u"actAddLevel"_s, u"cSSortDlgAddLevel"_s, u"Add level"_s, u"Ins"_s},
        {u"actDeleteLevel"_s, u"cSSortDlgDeleteLevel"_s, u"Delete level(s)"_s, u"Del"_s},
        {u"actUp"_s, u"cSSortDlgMoveUp"_s, u"Move selected row up"_s, u"Ctrl+Up"_s},
        {u"actDown"_s, u"cSSortDlgMoveDown"_s, u"Move selected row down"_s, u"Ctrl+Down"_s},
    };
    return commands;
}

// ---- TSortController -------------------------------------------------------------------------------

TSortController::TSortController(QObject* parent) : QObject(parent) {}

QStringList TSortController::OrderList() const
{
    return {AscendingText(), DescendingText()};
}

void TSortController::LoadFromView(const TSortableView& view)
{
    QStringList columns;
    for (int i = 0; i < view.ColumnCount(); ++i) {
        const TSortViewColumn column = view.Column(i);
        if (column.Visible && !column.Picture) {
            columns.append(column.Caption);
        }
    }
    m_columnList = columns;
    QList<TSortLevel> levels;
    for (const TSortableView::TSortedColumn& sorted : view.SortedColumns()) {
        levels.append(
            {view.Column(sorted.Column).Caption, sorted.Descending ? DescendingText() : AscendingText()});
    }
    SetLevels(levels, levels.isEmpty() ? -1 : 0);
}

void TSortController::ApplySort(TSortableView& view) const
{
    const TSortUpdate update(view);
    view.ClearSort();
    const QString ascending = AscendingText();
    for (int i = 0; i < m_levels.size(); ++i) {
        const TSortLevel& level = m_levels.at(i);
        for (int c = 0; c < view.ColumnCount(); ++c) {
            if (view.Column(c).Caption == level.Column) {
                view.SetColumnSort(c, i, level.Order != ascending);
                break;
            }
        }
    }
}

void TSortController::SetLevels(const QList<TSortLevel>& levels, int focused)
{
    m_levels = levels;
    m_focused = focused >= 0 && focused < m_levels.size() ? focused : -1;
    m_selected.clear();
    if (m_focused >= 0) {
        m_selected.append(m_focused);
    }
    emit LevelsChanged();
}

void TSortController::SetFocused(int level)
{
    const int focused = level >= 0 && level < m_levels.size() ? level : -1;
    if (focused != m_focused) {
        m_focused = focused;
        emit LevelsChanged();
    }
}

void TSortController::SetSelected(const QList<int>& levels)
{
    QList<int> selected;
    for (int level : levels) {
        if (level >= 0 && level < m_levels.size() && !selected.contains(level)) {
            selected.append(level);
        }
    }
    std::sort(selected.begin(), selected.end());
    if (selected != m_selected) {
        m_selected = selected;
        emit LevelsChanged();
    }
}

void TSortController::SetLevelColumn(int level, const QString& caption)
{
    if (level >= 0 && level < m_levels.size() && m_levels.at(level).Column != caption) {
        m_levels[level].Column = caption;
        emit LevelsChanged();
    }
}

void TSortController::SetLevelOrder(int level, const QString& order)
{
    if (level >= 0 && level < m_levels.size() && m_levels.at(level).Order != order) {
        m_levels[level].Order = order;
        emit LevelsChanged();
    }
}

void TSortController::AddLevel()
{
    QList<TSortLevel> levels = m_levels;
    levels.append({m_columnList.value(0), OrderList().value(0)});
    SetLevels(levels, int(levels.size()) - 1);
}

void TSortController::DeleteLevels()
{
    if (m_selected.isEmpty()) {
        return;
    }
    QList<TSortLevel> levels;
    int focused = -1;
    int afterFirst = -1; // the level that takes the place of the first deleted one
    for (int i = 0; i < m_levels.size(); ++i) {
        if (m_selected.contains(i)) {
            continue;
        }
        if (afterFirst < 0 && i > m_selected.first()) {
            afterFirst = int(levels.size());
        }
        if (i == m_focused) {
            focused = int(levels.size());
        }
        levels.append(m_levels.at(i));
    }
    if (focused < 0) {
        focused = afterFirst >= 0 ? afterFirst : int(levels.size()) - 1;
    }
    SetLevels(levels, focused);
}

void TSortController::MoveUp()
{
    if (!CanMoveUp()) {
        return;
    }
    QList<TSortLevel> levels = m_levels;
    levels.swapItemsAt(m_focused, m_focused - 1);
    SetLevels(levels, m_focused - 1);
}

void TSortController::MoveDown()
{
    if (!CanMoveDown()) {
        return;
    }
    QList<TSortLevel> levels = m_levels;
    levels.swapItemsAt(m_focused, m_focused + 1);
    SetLevels(levels, m_focused + 1);
}

bool TSortController::CommandEnabled(const QString& name) const
{
    if (name == u"actDeleteLevel"_s) {
        return CanDeleteLevels();
    }
    if (name == u"actUp"_s) {
        return CanMoveUp();
    }
    if (name == u"actDown"_s) {
        return CanMoveDown();
    }
    return true;
}

bool TSortController::CheckLevels() const
{
    for (int i = 0; i < m_levels.size(); ++i) {
        for (int j = i + 1; j < m_levels.size(); ++j) {
            if (m_levels.at(i).Column == m_levels.at(j).Column) {
                MessageDlgZT(GetText(u"cSSortDlgDuplicateColumns"_s), mtWarning, TMsgDlgButtons(mbOK), mbOK);
                return false;
            }
        }
    }
    return true;
}
