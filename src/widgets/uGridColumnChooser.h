#pragma once

#include <QDialog>

class QLabel;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class TGridView;

// The column chooser of a view (of a card view: its rows): every column the program offers, checked
// while shown, in the view's order, with buttons that move the selected one. A tool window that
// stays open beside the view; changes apply at once.
class TGridColumnChooser : public QDialog
{
    Q_OBJECT
public:
    explicit TGridColumnChooser(TGridView* view);

    QListWidget* list() const { return m_list; }
    void refresh();

private:
    void moveSelected(int step);
    void retranslate();

    TGridView* m_view;
    QLabel* m_label;
    QListWidget* m_list;
    QPushButton* m_up;
    QPushButton* m_down;
    bool m_filling = false;
};
