#pragma once

#include "uRibbonStyle.h"

#include <QTabBar>

// The tab row of a ribbon: tab captions sized from the font, the active tab joined to the page
// below it (flat or with rounded corners for the classic looks), or underlined in the accent
// colour for the 2019 look. Paints from the palette.
class TRibbonTabBar : public QTabBar
{
    Q_OBJECT
public:
    explicit TRibbonTabBar(QWidget* parent = nullptr);

    void setRibbonStyle(TRibbonStyle style);
    void setColoredRow(bool colored);

protected:
    QSize tabSizeHint(int index) const override;
    QSize minimumTabSizeHint(int index) const override;
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    TRibbonStyle m_style = TRibbonStyle::Office2016;
    bool m_colored = false;
    int m_hover = -1;
};
