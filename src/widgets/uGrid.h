#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

class QAbstractItemModel;
class QStackedWidget;
class QTabBar;
class TGridCardView;
class TGridPictureCache;
class TGridSource;
class TGridTableView;
class TGridView;

// A grid: views (levels) over one source model and one current row, one of them on show. The
// program keeps the current row in step with its own cursor: setCurrentRow() moves it without
// telling back, currentRowChanged() tells a move made by the user in any view.
//
//   auto* grid = new TGrid(parent);
//   grid->setSourceModel(model);                       // columns bound by field name
//   auto* table = grid->addTableView(u"GridTableView"_s, u"Table view"_s);
//   table->addColumn(u"GridTableViewName"_s, u"Name"_s);
//   grid->setActiveView(table);
class TGrid : public QWidget
{
    Q_OBJECT
public:
    explicit TGrid(QWidget* parent = nullptr);
    ~TGrid() override;

    QAbstractItemModel* sourceModel() const;
    void setSourceModel(QAbstractItemModel* model);
    TGridSource* source() const { return m_source; }
    // Header role that names a column's field (the program's dataset model: Qt::UserRole + 3).
    void setFieldNameRole(int role);
    // Role of a row's stable key (Qt::UserRole + 2); pictures and selections follow it.
    void setKeyRole(int role);

    // Views; a view given a model of its own shows that model and keeps its own current row.
    TGridTableView* addTableView(const QString& name, const QString& caption = {},
                                 QAbstractItemModel* ownModel = nullptr);
    TGridCardView* addCardView(const QString& name, const QString& caption = {},
                               QAbstractItemModel* ownModel = nullptr);
    // A card view with the columns, rows and options of another (a tab made from a template).
    TGridCardView* addCardViewLike(const TGridCardView* original, const QString& name,
                                   const QString& caption = {}, QAbstractItemModel* ownModel = nullptr);
    void removeView(TGridView* view);
    QList<TGridView*> views() const { return m_views; }
    TGridView* view(const QString& name) const;

    TGridView* activeView() const;
    void setActiveView(TGridView* view);
    // Tabs with the level captions above the views (off by default).
    void setLevelTabsVisible(bool visible);
    bool levelTabsVisible() const;

    // The current row of the source, -1 for none.
    int currentRow() const { return m_current; }
    void setCurrentRow(int sourceRow);

    // Decoded pictures of all card views of this grid.
    TGridPictureCache* pictureCache() const { return m_pictures; }

signals:
    void activeViewChanged(TGridView* view);
    // The user moved the current row.
    void currentRowChanged(int sourceRow);

private:
    friend class TGridView;
    void addView(TGridView* view);
    void viewMovedCurrent(TGridView* view, int sourceRow);
    void connectSource();
    void updateTabs();

    QList<QMetaObject::Connection> m_modelConnections;
    TGridSource* m_source;
    TGridPictureCache* m_pictures;
    QTabBar* m_tabs;
    QStackedWidget* m_stack;
    QList<TGridView*> m_views;
    int m_current = -1;
};
