#pragma once

#include <QRect>

#include <functional>
#include <vector>

// One row of a card as the card view describes it to the layout.
struct TGridCardRowSpec
{
    int Column = -1; // column id
    bool Picture = false;
    bool Title = false;  // centred, no caption
    bool Caption = true; // caption before the value
    int Height = 0;      // pixels
    int SideWidth = 0;   // > 0: stands in a column of its own at the card's side
};

// Where one row of a card goes, relative to the card's top left.
struct TGridCardRowRect
{
    int Column = -1;
    QRect Row;
    QRect Caption; // empty when the row shows no caption
    QRect Value;
    bool Side = false;
};

// The arithmetic of a card view: the place of each row in a card, the card's height, and the
// flow of cards across a viewport. Every card of a view has one size, so the view finds the cards
// on screen by division.
class TGridCardLayout
{
public:
    static constexpr int Padding = 4;
    static constexpr int Spacing = 2;
    static constexpr int CaptionGap = 6;

    void setRows(std::vector<TGridCardRowSpec> rows) { m_rows = std::move(rows); }
    const std::vector<TGridCardRowSpec>& rows() const { return m_rows; }
    void setCardWidth(int width) { m_width = width; }
    int cardWidth() const { return m_width; }
    void setCaptionWidth(int width) { m_captionWidth = width; }

    // Every row shown.
    int cardHeight() const;
    // The rows of one card; rows for which isEmpty(column) is true are left out and the rows below
    // move up (the card keeps its height).
    std::vector<TGridCardRowRect> layout(const std::function<bool(int column)>& isEmpty = {}) const;

    // Cards side by side in a viewport of that width (at least one).
    static int columnsFor(int viewportWidth, int cardWidth, int indent);
    // The width of each card when the cards fill the viewport's width.
    static int filledWidth(int viewportWidth, int cardWidth, int indent, int columns);
    // A card width times a factor, rounded to the nearest (a tie to the even number), not below
    // minWidth.
    static int zoomedWidth(int width, double factor, int minWidth);

private:
    std::vector<TGridCardRowSpec> m_rows;
    int m_width = 200;
    int m_captionWidth = 0;
};
