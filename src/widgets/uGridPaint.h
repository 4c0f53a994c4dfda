#pragma once

#include "uGridTypes.h"

#include <QColor>
#include <QPalette>
#include <QRect>
#include <QString>
#include <QStringList>

class QPainter;
class QFontMetrics;

// Drawing shared by the grid's views. Every colour comes from the widget's palette, so light and
// dark themes both work and Highlight carries the program's accent colour.
namespace GridPaint {
// a and b mixed, t = 0 gives a.
QColor blend(const QColor& a, const QColor& b, qreal t);
// Background of group rows, footers and the group-by panel.
QColor panelColor(const QPalette& palette);
// Lines between cells.
QColor lineColor(const QPalette& palette);
// Behind the matches of the find text.
QColor matchColor(const QPalette& palette);

// One line of text, cut with an ellipsis at the end when it does not fit; the parts that match one
// of the (case-folded) words get the match colour behind them. Returns whether the text was cut.
bool drawText(QPainter* painter, const QRect& rect, const QString& text, Qt::Alignment alignment,
              const QStringList& words, const QColor& matchBackground);
// Text wrapped over at most maxLines lines (the last one cut with an ellipsis). Returns whether
// anything was cut.
bool drawWrappedText(QPainter* painter, const QRect& rect, const QString& text, Qt::Alignment alignment,
                     int maxLines);
// Lines a text needs at that width, at most maxLines.
int wrappedLines(const QFontMetrics& metrics, const QString& text, int width, int maxLines);
// Whether a text needs more than one line of that width.
bool isCut(const QFontMetrics& metrics, const QString& text, int width);

// The triangle that opens or closes a group.
void drawExpandButton(QPainter* painter, const QRect& rect, bool expanded, bool rightToLeft,
                      const QPalette& palette);
// A small triangle for the sort order, with the priority number when several columns sort.
void drawSortMark(QPainter* painter, const QRect& rect, TGridSortOrder order, int priority,
                  const QPalette& palette, const QColor& color);
} // namespace GridPaint
