#include "uGridCardLayout.h"

#include <algorithm>
#include <cfenv>
#include <cmath>

int TGridCardLayout::cardHeight() const
{
    int side = 0;
    int main = 0;
    for (const TGridCardRowSpec& row : m_rows)
        (row.SideWidth > 0 ? side : main) += row.Height + Spacing;
    return Padding + std::max(std::max(side, main) - Spacing, 0) + Padding;
}

std::vector<TGridCardRowRect> TGridCardLayout::layout(const std::function<bool(int column)>& isEmpty) const
{
    int sideWidth = 0;
    for (const TGridCardRowSpec& row : m_rows)
        sideWidth = std::max(sideWidth, row.SideWidth);
    const int mainX = Padding + (sideWidth > 0 ? sideWidth + Padding : 0);
    const int mainWidth = std::max(m_width - mainX - Padding, 1);
    const int captionWidth = std::min(m_captionWidth, mainWidth / 2);

    std::vector<TGridCardRowRect> out;
    int sideY = Padding;
    int mainY = Padding;
    for (const TGridCardRowSpec& cardRow : m_rows) {
        if (isEmpty && isEmpty(cardRow.Column))
            continue;
        TGridCardRowRect rect;
        rect.Column = cardRow.Column;
        if (cardRow.SideWidth > 0) {
            rect.Side = true;
            rect.Row = QRect(Padding, sideY, sideWidth, cardRow.Height);
            rect.Value = rect.Row;
            sideY += cardRow.Height + Spacing;
        } else {
            rect.Row = QRect(mainX, mainY, mainWidth, cardRow.Height);
            if (cardRow.Caption && !cardRow.Title && !cardRow.Picture && captionWidth > 0) {
                rect.Caption = QRect(mainX, mainY, captionWidth, cardRow.Height);
                const int valueX = mainX + captionWidth + CaptionGap;
                rect.Value = QRect(valueX, mainY, std::max(mainX + mainWidth - valueX, 1), cardRow.Height);
            } else {
                rect.Value = rect.Row;
            }
            mainY += cardRow.Height + Spacing;
        }
        out.push_back(rect);
    }
    return out;
}

int TGridCardLayout::columnsFor(int viewportWidth, int cardWidth, int indent)
{
    if (cardWidth + indent <= 0)
        return 1;
    return std::max(1, (viewportWidth - indent) / (cardWidth + indent));
}

int TGridCardLayout::filledWidth(int viewportWidth, int cardWidth, int indent, int columns)
{
    columns = std::max(columns, 1);
    return std::max(cardWidth, (viewportWidth - indent * (columns + 1)) / columns);
}

int TGridCardLayout::zoomedWidth(int width, double factor, int minWidth)
{
    // nearbyint rounds by the current mode, which is to the nearest with ties to even.
    const int saved = std::fegetround();
    std::fesetround(FE_TONEAREST);
    const int zoomed = int(std::nearbyint(double(width) * factor));
    std::fesetround(saved);
    return std::max(zoomed, minWidth);
}
