#include "uRibbonQuickAccessBar.h"

#include "uRibbonStyle.h"

#include <QHBoxLayout>
#include <QPainter>

TRibbonQuickAccessBar::TRibbonQuickAccessBar(QWidget* parent)
    : QWidget(parent), m_layout(new QHBoxLayout(this))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(1);
}

TRibbonButton* TRibbonQuickAccessBar::addAction(QAction* action)
{
    auto* button = new TRibbonButton(action, TRibbonItemSize::Small, this);
    m_layout->addWidget(button);
    m_buttons << button;
    return button;
}

TRibbonButton* TRibbonQuickAccessBar::addDropDown(QAction* action, QMenu* menu, bool split)
{
    TRibbonButton* button = addAction(action);
    button->setDropDownMenu(menu, split);
    return button;
}

void TRibbonQuickAccessBar::addSeparator()
{
    auto* line = new QWidget(this);
    line->setFixedWidth(TRibbonMetrics::of(fontMetrics()).padding * 2 + 1);
    line->setProperty("quickAccessSeparator", true);
    m_layout->addWidget(line);
    m_separators << line;
}

void TRibbonQuickAccessBar::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    const QColor line =
        RibbonBlend(palette().color(QPalette::Window), palette().color(QPalette::WindowText), 0.3);
    painter.setPen(line);
    for (const QWidget* separator : m_separators) {
        const int x = separator->geometry().center().x();
        painter.drawLine(x, 4, x, height() - 5);
    }
}
