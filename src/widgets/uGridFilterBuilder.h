#pragma once

#include "uGridFilter.h"

#include <QDialog>

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;
class TGridView;

// The filter builder of a view: the view's filter as a tree of AND/OR groups and conditions
// (column, operator, value), edited in place, with the filter read back as a sentence below. Values
// are picked from the column's values or typed; a typed value that is not one of the column's kind
// is refused with a clear message when the filter is taken.
class TGridFilterBuilder : public QDialog
{
    Q_OBJECT
public:
    explicit TGridFilterBuilder(TGridView* view);

    void setFilter(const TGridFilter& filter);
    // The filter as edited; conditions still without a field are left out.
    TGridFilter filter() const;
    // The first problem of the conditions, empty when every value reads.
    QString problem() const;

    QTreeWidget* tree() const { return m_tree; }
    // Rows for programs and tests: a condition or a group under a group row (the root for nullptr).
    QTreeWidgetItem* addCondition(QTreeWidgetItem* group = nullptr, const QString& fieldName = {});
    QTreeWidgetItem* addGroup(QTreeWidgetItem* group = nullptr);
    QTreeWidgetItem* rootItem() const;

    void accept() override;

signals:
    // Apply: the view takes the filter and the dialog stays.
    void applied();

private:
    friend class TFilterConditionRow;
    friend class TFilterGroupRow;
    QTreeWidgetItem* addNode(QTreeWidgetItem* parent, const TGridFilterNode& node);
    TGridFilterNode nodeOf(QTreeWidgetItem* item, QString* problem) const;
    void removeItem(QTreeWidgetItem* item);
    void updateSentence();
    void retranslate();

    TGridView* m_view;
    QTreeWidget* m_tree;
    QLabel* m_sentence;
    QLabel* m_problem;
};
