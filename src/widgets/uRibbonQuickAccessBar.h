#pragma once

#include "uRibbonButton.h"

#include <QWidget>

class QHBoxLayout;

// The quick-access toolbar: small buttons for a few actions, at the start of the ribbon's title
// row. Each button follows its action like every ribbon item.
class TRibbonQuickAccessBar : public QWidget
{
    Q_OBJECT
public:
    explicit TRibbonQuickAccessBar(QWidget* parent = nullptr);

    TRibbonButton* addAction(QAction* action);
    // An action with a menu shown as a drop-down.
    TRibbonButton* addDropDown(QAction* action, QMenu* menu, bool split = false);
    void addSeparator();
    QList<TRibbonButton*> buttons() const { return m_buttons; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QHBoxLayout* m_layout;
    QList<TRibbonButton*> m_buttons;
    QList<QWidget*> m_separators;
};
