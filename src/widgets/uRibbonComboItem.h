#pragma once

#include <QPointer>
#include <QWidget>

class QAction;
class QComboBox;
class QLabel;

// A caption and a drop-down list in a ribbon row, bound to a QAction: the caption is the action's
// text, and the item is enabled and visible as the action is. Picking an entry sets the action's
// data to the entry's index, triggers the action and emits activated.
class TRibbonComboItem : public QWidget
{
    Q_OBJECT
public:
    explicit TRibbonComboItem(QAction* action, QWidget* parent = nullptr);

    QAction* action() const { return m_action; }
    QComboBox* comboBox() const { return m_combo; }
    void setItems(const QStringList& items);
    int currentIndex() const;
    // Shows an entry without triggering the action.
    void setCurrentIndex(int index);
    // The list's width in average characters (12).
    void setComboWidth(int characters);

signals:
    void activated(int index);

protected:
    void changeEvent(QEvent* event) override;

private:
    void syncFromAction();

    QPointer<QAction> m_action;
    QLabel* m_label;
    QComboBox* m_combo;
    int m_characters = 12;
};
