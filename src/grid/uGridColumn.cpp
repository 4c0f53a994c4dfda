#include "uGridColumn.h"

#include "uGridColumns.h"

TGridColumn::TGridColumn(TGridColumns* owner, int id, const QString& name, const QString& fieldName,
                         const QString& caption)
    : m_owner(owner), m_id(id), m_name(name), m_fieldName(fieldName), m_caption(caption)
{}

void TGridColumn::notify(TGridColumnChange change)
{
    m_owner->columnChanged(change);
}

void TGridColumn::setFieldName(const QString& fieldName)
{
    if (m_fieldName == fieldName)
        return;
    m_fieldName = fieldName;
    notify(TGridColumnChange::Binding);
}

void TGridColumn::setCaption(const QString& caption)
{
    if (m_caption == caption)
        return;
    m_caption = caption;
    notify(TGridColumnChange::Caption);
}

void TGridColumn::setVisible(bool visible)
{
    if (m_visible == visible)
        return;
    m_visible = visible;
    notify(TGridColumnChange::Visibility);
}

int TGridColumn::position() const
{
    return m_owner->positionOf(this);
}

void TGridColumn::setPosition(int position)
{
    m_owner->moveTo(this, position);
}

void TGridColumn::setWidth(int width)
{
    width = qMax(0, width);
    if (m_width == width)
        return;
    m_width = width;
    notify(TGridColumnChange::Width);
}

void TGridColumn::setGroupIndex(int index)
{
    m_owner->placeInList(m_owner->m_groups, this, index, true);
}

void TGridColumn::setSortIndex(int index)
{
    m_owner->placeInList(m_owner->m_sorts, this, index, false);
}

void TGridColumn::setSortOrder(TGridSortOrder order)
{
    if (order == TGridSortOrder::None) {
        if (m_sortIndex >= 0) {
            setSortIndex(-1);
            return;
        }
        if (m_sortOrder != order) {
            m_sortOrder = order;
            notify(TGridColumnChange::Sorting);
        }
        return;
    }
    if (m_sortOrder == order && (m_sortIndex >= 0 || m_groupIndex >= 0))
        return;
    m_sortOrder = order;
    if (m_sortIndex < 0 && m_groupIndex < 0) {
        m_owner->placeInList(m_owner->m_sorts, this, int(m_owner->m_sorts.size()), false);
        return;
    }
    notify(TGridColumnChange::Sorting);
}

void TGridColumn::setHiddenFromChooser(bool hidden)
{
    if (m_hiddenFromChooser == hidden)
        return;
    m_hiddenFromChooser = hidden;
    notify(TGridColumnChange::Chooser);
}

void TGridColumn::setPicture(bool picture)
{
    if (m_picture == picture)
        return;
    m_picture = picture;
    notify(TGridColumnChange::Format);
}

void TGridColumn::setFormatter(TGridFormatter formatter)
{
    m_formatter = std::move(formatter);
    notify(TGridColumnChange::Format);
}

void TGridColumn::setAlignment(Qt::Alignment alignment)
{
    if (m_alignment == alignment)
        return;
    m_alignment = alignment;
    notify(TGridColumnChange::Format);
}

void TGridColumn::setLines(int lines)
{
    lines = qMax(0, lines);
    if (m_lines == lines)
        return;
    m_lines = lines;
    notify(TGridColumnChange::CardLayout);
}

void TGridColumn::setCardTitle(bool title)
{
    if (m_cardTitle == title)
        return;
    m_cardTitle = title;
    notify(TGridColumnChange::CardLayout);
}

void TGridColumn::setCaptionVisible(bool visible)
{
    if (m_captionVisible == visible)
        return;
    m_captionVisible = visible;
    notify(TGridColumnChange::CardLayout);
}
