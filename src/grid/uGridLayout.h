#pragma once

#include <QMap>
#include <QString>

class TGridColumns;

// A view's layout as a compact text: for each column (a card view's rows) its visibility,
// position, width, group index, sort index, sort order and height in lines, keyed by column name,
// and a few settings of the view itself. The program keeps the text in its settings store, one
// entry per view. Reading is forgiving: columns the view no longer has and keys it does not know
// are passed over, widths are clamped, levels and priorities are closed up, and a text that is not
// a layout changes nothing.
//
//   orvgrid 1
//   view cardWidth=209
//   col Name v=1 p=0 w=100 g=-1 s=-1 o=0 l=0
class TGridLayout
{
public:
    static constexpr int Version = 1;
    static constexpr int MinWidth = 16;
    static constexpr int MaxWidth = 4000;

    static QString save(const TGridColumns& columns, const QMap<QString, QString>& viewSettings = {});
    // Returns the view's settings read from the text (empty when the text is no layout).
    static QMap<QString, QString> restore(TGridColumns& columns, const QString& text, bool* ok = nullptr);
};
