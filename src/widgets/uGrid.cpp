#include "uGrid.h"

#include "uGridCardView.h"
#include "uGridPictureCache.h"
#include "uGridSource.h"
#include "uGridTableView.h"

#include <QAbstractItemModel>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

TGrid::TGrid(QWidget* parent)
    : QWidget(parent), m_source(new TGridSource(this)), m_pictures(new TGridPictureCache(this)),
      m_tabs(new QTabBar(this)), m_stack(new QStackedWidget(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_tabs);
    layout->addWidget(m_stack, 1);
    m_tabs->setVisible(false);
    m_tabs->setDocumentMode(true);
    m_tabs->setExpanding(false);
    connect(m_tabs, &QTabBar::currentChanged, this, [this](int index) {
        if (index >= 0 && index < m_views.size())
            setActiveView(m_views[index]);
    });
    connect(m_stack, &QStackedWidget::currentChanged, this, [this](int) {
        TGridView* view = activeView();
        if (view && m_tabs->currentIndex() != int(m_views.indexOf(view)))
            m_tabs->setCurrentIndex(int(m_views.indexOf(view)));
        // A view coming up shows the current row where its groups let it.
        if (view)
            view->makeCurrentVisible(false);
        emit activeViewChanged(view);
    });
    connectSource();
}

TGrid::~TGrid()
{
    // Views go first: their models detach from the source.
    qDeleteAll(m_views);
    m_views.clear();
}

QAbstractItemModel* TGrid::sourceModel() const
{
    return m_source->model();
}

void TGrid::setSourceModel(QAbstractItemModel* model)
{
    m_current = -1;
    for (const QMetaObject::Connection& c : std::as_const(m_modelConnections))
        disconnect(c);
    m_modelConnections.clear();
    m_source->setModel(model);
    m_pictures->clear();
    if (!model)
        return;
    // The current row follows inserts, removes and moves of the source.
    m_modelConnections = {
        connect(model, &QAbstractItemModel::rowsInserted, this,
                [this](const QModelIndex& parent, int first, int last) {
                    if (!parent.isValid() && m_current >= first)
                        m_current += last - first + 1;
                }),
        connect(model, &QAbstractItemModel::rowsRemoved, this,
                [this](const QModelIndex& parent, int first, int last) {
                    if (parent.isValid() || m_current < first)
                        return;
                    m_current = m_current > last ? m_current - (last - first + 1) : -1;
                }),
        connect(model, &QAbstractItemModel::rowsMoved, this,
                [this](const QModelIndex&, int first, int last, const QModelIndex&, int row) {
                    const int count = last - first + 1;
                    const int to = row > last ? row - count : row;
                    if (m_current >= first && m_current <= last)
                        m_current = to + (m_current - first);
                    else if (to < first && m_current >= to && m_current < first)
                        m_current += count;
                    else if (to > first && m_current > last && m_current < to + count)
                        m_current -= count;
                }),
        connect(model, &QAbstractItemModel::modelReset, this,
                [this, model] {
                    if (m_current >= model->rowCount())
                        m_current = -1;
                }),
    };
}

void TGrid::connectSource()
{
    connect(m_source, &TGridSource::bindingChanged, this, [this] { m_current = -1; });
}

void TGrid::setFieldNameRole(int role)
{
    m_source->setFieldNameRole(role);
}

void TGrid::setKeyRole(int role)
{
    m_source->setKeyRole(role);
}

void TGrid::addView(TGridView* view)
{
    m_views.append(view);
    m_stack->addWidget(view);
    updateTabs();
    if (m_views.size() == 1)
        setActiveView(view);
}

TGridTableView* TGrid::addTableView(const QString& name, const QString& caption, QAbstractItemModel* ownModel)
{
    auto* view = new TGridTableView(this, name, ownModel);
    view->setCaption(caption);
    addView(view);
    return view;
}

TGridCardView* TGrid::addCardView(const QString& name, const QString& caption, QAbstractItemModel* ownModel)
{
    auto* view = new TGridCardView(this, name, ownModel);
    view->setCaption(caption);
    addView(view);
    return view;
}

TGridCardView* TGrid::addCardViewLike(const TGridCardView* original, const QString& name,
                                      const QString& caption, QAbstractItemModel* ownModel)
{
    TGridCardView* view = addCardView(name, caption, ownModel);
    view->copySettingsFrom(*original);
    return view;
}

void TGrid::removeView(TGridView* view)
{
    if (!m_views.contains(view))
        return;
    m_views.removeAll(view);
    m_stack->removeWidget(view);
    delete view;
    updateTabs();
}

TGridView* TGrid::view(const QString& name) const
{
    for (TGridView* view : m_views)
        if (view->name() == name)
            return view;
    return nullptr;
}

TGridView* TGrid::activeView() const
{
    return qobject_cast<TGridView*>(m_stack->currentWidget());
}

void TGrid::setActiveView(TGridView* view)
{
    if (!view || !m_views.contains(view) || m_stack->currentWidget() == view)
        return;
    m_stack->setCurrentWidget(view);
}

void TGrid::setLevelTabsVisible(bool visible)
{
    m_tabs->setVisible(visible);
}

bool TGrid::levelTabsVisible() const
{
    return !m_tabs->isHidden();
}

void TGrid::updateTabs()
{
    const QSignalBlocker block(m_tabs);
    while (m_tabs->count() > 0)
        m_tabs->removeTab(0);
    for (TGridView* view : std::as_const(m_views))
        m_tabs->addTab(view->caption());
    if (TGridView* view = activeView())
        m_tabs->setCurrentIndex(int(m_views.indexOf(view)));
}

void TGrid::setCurrentRow(int sourceRow)
{
    const int rows = m_source->rowCount();
    if (sourceRow < -1 || sourceRow >= rows)
        sourceRow = -1;
    m_current = sourceRow;
    for (TGridView* view : std::as_const(m_views))
        if (!view->ownSource())
            view->currentRowMoved(sourceRow);
}

void TGrid::viewMovedCurrent(TGridView* view, int sourceRow)
{
    if (view->ownSource())
        return;
    if (m_current == sourceRow)
        return;
    m_current = sourceRow;
    for (TGridView* other : std::as_const(m_views))
        if (other != view && !other->ownSource())
            other->currentRowMoved(sourceRow);
    emit currentRowChanged(sourceRow);
}
