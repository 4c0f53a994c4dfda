#pragma once

#include "uGridColumn.h"
#include "uGridTypes.h"

#include <QList>
#include <QObject>

#include <memory>
#include <vector>

// The columns of one view (a card view's rows). Owns them, keeps their order, the levels of
// grouping and the priorities of the sort, and tells listeners what changed. Changes made between
// beginUpdate() and endUpdate() are told once, at the outermost endUpdate().
class TGridColumns : public QObject
{
    Q_OBJECT
public:
    explicit TGridColumns(QObject* parent = nullptr);
    ~TGridColumns() override;

    // A new column at the end. An empty name takes the field name; a name in use gets a number.
    TGridColumn* add(const QString& name, const QString& fieldName, const QString& caption = {});
    int count() const { return int(m_columns.size()); }
    // By id (order of creation).
    TGridColumn* at(int id) const;
    TGridColumn* byName(const QString& name) const;
    // The first column in position order bound to exactly that field.
    TGridColumn* byField(const QString& fieldName) const;
    // The first column in position order with exactly that caption.
    TGridColumn* byCaption(const QString& caption) const;

    // All columns in position order.
    QList<TGridColumn*> ordered() const;
    QList<TGridColumn*> visibleColumns() const;
    // Grouped columns by level, sorted columns by priority.
    QList<TGridColumn*> groupColumns() const;
    QList<TGridColumn*> sortColumns() const;

    void clearSort();
    void clearGrouping();

    void beginUpdate();
    void endUpdate();
    bool isUpdating() const { return m_updating > 0; }

    // Copies every setting of other's columns onto the columns of the same name here, adding the
    // ones that are missing (a view made from a template).
    void assign(const TGridColumns& other);

signals:
    // One or more changes, told at once or at the end of an update.
    void changed(TGridColumnChanges changes);

private:
    friend class TGridColumn;
    void columnChanged(TGridColumnChange change);
    int positionOf(const TGridColumn* column) const;
    void moveTo(TGridColumn* column, int position);
    void placeInList(std::vector<TGridColumn*>& list, TGridColumn* column, int index, bool grouping);

    std::vector<std::unique_ptr<TGridColumn>> m_columns; // by id
    std::vector<TGridColumn*> m_order;                   // by position
    std::vector<TGridColumn*> m_groups;                  // by group index
    std::vector<TGridColumn*> m_sorts;                   // by sort index
    int m_updating = 0;
    TGridColumnChanges m_pending;
};
