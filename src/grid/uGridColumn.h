#pragma once

#include "uGridTypes.h"

#include <QString>

class TGridColumns;

// One column of a view: in a table a column, in a card view a row of each card. It is bound to a
// field of the source model by name, and carries what the view needs to show it: visibility,
// position, width, caption, grouping, sorting, a formatter, and the card-row settings. Every
// setter tells its column set, which tells the views (once per batch, see
// TGridColumns::beginUpdate()).
class TGridColumn
{
public:
    // Stable within its set: the order of creation. Views use it as the logical column.
    int id() const { return m_id; }
    // Unique within its set; layouts are kept by it.
    QString name() const { return m_name; }
    TGridColumns* columns() const { return m_owner; }

    QString fieldName() const { return m_fieldName; }
    void setFieldName(const QString& fieldName);

    // The caption set by the program; empty means the source header's text (see
    // TGridModel::columnCaption()).
    QString caption() const { return m_caption; }
    void setCaption(const QString& caption);

    bool visible() const { return m_visible; }
    void setVisible(bool visible);

    // Index in the set's order, hidden columns included. Setting it moves the column there and
    // shifts the columns in between, so setting 0, 1, 2 ... over a list puts it in that order.
    int position() const;
    void setPosition(int position);

    // Width in pixels (in a card view: the width of a side picture row, 0 for none).
    int width() const { return m_width; }
    void setWidth(int width);

    // Level of grouping, -1 for none. Setting an index inserts the column at that level and moves
    // the deeper ones down; the levels are always 0, 1, 2 ... without gaps.
    int groupIndex() const { return m_groupIndex; }
    void setGroupIndex(int index);

    // Priority in the sort, -1 for none; the same rules as groupIndex(). A column put into the sort
    // without an order sorts ascending. A grouped column sorts its groups by its sortOrder().
    int sortIndex() const { return m_sortIndex; }
    void setSortIndex(int index);
    TGridSortOrder sortOrder() const { return m_sortOrder; }
    // None takes the column out of the sort; an order on a column outside the sort adds it last.
    void setSortOrder(TGridSortOrder order);

    // Not offered by the column chooser (and not shown by it when hidden).
    bool hiddenFromChooser() const { return m_hiddenFromChooser; }
    void setHiddenFromChooser(bool hidden);

    // A picture column: its values are image bytes, never read for sorting, filtering, finding or
    // texts, and read only for rows on screen.
    bool isPicture() const { return m_picture; }
    void setPicture(bool picture);

    // Text of a value; unset means the source model's DisplayRole. The text must depend on the
    // value alone: the grid computes it once per distinct value when it searches.
    const TGridFormatter& formatter() const { return m_formatter; }
    void setFormatter(TGridFormatter formatter);

    // Alignment of the cell text; 0 follows the source model's TextAlignmentRole.
    Qt::Alignment alignment() const { return m_alignment; }
    void setAlignment(Qt::Alignment alignment);

    // Card rows: height in text lines (a picture row's height in lines of text), 0 for one line.
    int lines() const { return m_lines; }
    void setLines(int lines);
    // Card rows: the card's title (centred, bold, no caption).
    bool isCardTitle() const { return m_cardTitle; }
    void setCardTitle(bool title);
    // Card rows: whether the caption is shown before the value.
    bool captionVisible() const { return m_captionVisible; }
    void setCaptionVisible(bool visible);

private:
    friend class TGridColumns;
    TGridColumn(TGridColumns* owner, int id, const QString& name, const QString& fieldName,
                const QString& caption);
    void notify(TGridColumnChange change);

    TGridColumns* m_owner;
    int m_id;
    QString m_name;
    QString m_fieldName;
    QString m_caption;
    bool m_visible = true;
    int m_width = 100;
    int m_groupIndex = -1;
    int m_sortIndex = -1;
    TGridSortOrder m_sortOrder = TGridSortOrder::None;
    bool m_hiddenFromChooser = false;
    bool m_picture = false;
    TGridFormatter m_formatter;
    Qt::Alignment m_alignment;
    int m_lines = 0;
    bool m_cardTitle = false;
    bool m_captionVisible = true;
};
