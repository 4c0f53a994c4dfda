#include "uGridView.h"

#include "uEditorItem.h"
#include "uGrid.h"
#include "uGridColumnChooser.h"
#include "uGridColumns.h"
#include "uGridFilterBar.h"
#include "uGridFilterBuilder.h"
#include "uGridFindPanel.h"
#include "uGridLayout.h"
#include "uGridModel.h"
#include "uGridSource.h"
#include "uGridTexts.h"

#include <QDialog>
#include <QTimer>
#include <QVBoxLayout>

namespace {
std::function<int(QWidget*)>& dialogRunner()
{
    static std::function<int(QWidget*)> runner;
    return runner;
}
} // namespace

TGridView::TGridView(TGrid* grid, const QString& name, QAbstractItemModel* ownModel, QWidget* parent)
    : QWidget(parent), m_grid(grid)
{
    setObjectName(name);
    if (ownModel) {
        m_source = new TGridSource(this);
        m_source->setFieldNameRole(grid->source()->fieldNameRole());
        m_source->setKeyRole(grid->source()->keyRole());
        m_source->setModel(ownModel);
        m_ownSource = true;
        // The view's own current row follows its model.
        connect(ownModel, &QAbstractItemModel::modelReset, this, [this] { m_ownCurrent = -1; });
        connect(ownModel, &QAbstractItemModel::rowsRemoved, this,
                [this](const QModelIndex&, int first, int last) {
                    if (m_ownCurrent >= first)
                        m_ownCurrent = m_ownCurrent > last ? m_ownCurrent - (last - first + 1) : -1;
                });
        connect(ownModel, &QAbstractItemModel::rowsInserted, this,
                [this](const QModelIndex&, int first, int last) {
                    if (m_ownCurrent >= first)
                        m_ownCurrent += last - first + 1;
                });
    } else {
        m_source = grid->source();
    }
    m_columns = new TGridColumns(this);
    m_model = new TGridModel(m_source, m_columns, this);

    m_layout = new QVBoxLayout(this);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    m_content = new QVBoxLayout;
    m_content->setContentsMargins(0, 0, 0, 0);
    m_content->setSpacing(0);
    m_layout->addLayout(m_content, 1);
    m_filterBar = new TGridFilterBar(this);
    m_filterBar->hide();
    m_layout->addWidget(m_filterBar);
    connect(m_filterBar, &TGridFilterBar::clearRequested, this, [this] { setFilter({}); });
    connect(m_filterBar, &TGridFilterBar::customizeRequested, this, [this] { showFilterBuilder(); });

    connect(m_model, &TGridModel::filterChanged, this, [this] {
        updateFilterBar();
        emit filterChanged();
    });
    connect(m_model, &TGridModel::selectionChanged, this, &TGridView::selectionChanged);
    connect(TGridTextsNotifier::instance(), &TGridTextsNotifier::changed, this, &TGridView::retranslate);
}

TGridView::~TGridView()
{
    // The model leaves its source before either goes.
    delete m_model;
    m_model = nullptr;
}

void TGridView::setCaption(const QString& caption)
{
    m_caption = caption;
    if (m_grid)
        m_grid->updateTabs();
}

TGridColumn* TGridView::addColumn(const QString& name, const QString& fieldName, const QString& caption)
{
    return m_columns->add(name, fieldName, caption);
}

void TGridView::setEditorItem(TGridColumn* column, const TEditorItem* item)
{
    if (!column)
        return;
    if (item)
        m_items.insert(column->id(), item);
    else
        m_items.remove(column->id());
    m_columns->beginUpdate();
    column->setPicture(item && item->isPicture());
    if (item && !item->isPicture())
        column->setFormatter([item](const QVariant& value) { return item->displayText(value); });
    else
        column->setFormatter({});
    m_columns->endUpdate();
    update();
}

const TEditorItem* TGridView::editorItem(const TGridColumn* column) const
{
    return column ? m_items.value(column->id(), nullptr) : nullptr;
}

void TGridView::setMultiSelect(bool on)
{
    m_multiSelect = on;
    if (!on && selectedCount() > 1)
        selectOnly(currentSourceRow());
}

void TGridView::setEmptyText(const QString& text)
{
    m_emptyText = text;
    update();
}

QString TGridView::emptyText() const
{
    return m_emptyText.isEmpty() ? GridTexts().EmptyText : m_emptyText;
}

int TGridView::selectedCount() const
{
    return m_model->selection().count();
}

QList<int> TGridView::selectedSourceRows() const
{
    QList<int> rows;
    const TGridSelection& selection = m_model->selection();
    if (selection.isEmpty())
        return rows;
    // Display order: groups first, then the rows' order within them.
    m_model->walk(true, [&](const TGridRow& row) {
        if (row.Kind == TGridRowKind::Data && selection.contains(row.SourceRow))
            rows.append(row.SourceRow);
        return rows.size() < selection.count();
    });
    return rows;
}

bool TGridView::isSelected(int sourceRow) const
{
    return m_model->selection().contains(sourceRow);
}

void TGridView::selectAll()
{
    if (!m_multiSelect)
        return;
    TGridSelection& selection = m_model->selection();
    const int count = m_model->visibleRowCount();
    for (int p = 0; p < count; ++p)
        selection.set(m_model->sourceRowAt(p), true);
    selectionTouched();
}

void TGridView::clearSelection()
{
    m_model->selection().clear();
    selectionTouched();
}

void TGridView::setSelectedSourceRows(const QList<int>& rows)
{
    TGridSelection& selection = m_model->selection();
    selection.clear();
    for (const int row : rows) {
        selection.set(row, true);
        if (!m_multiSelect)
            break;
    }
    selectionTouched();
}

void TGridView::selectOnly(int sourceRow)
{
    TGridSelection& selection = m_model->selection();
    if (selection.count() == 1 && selection.contains(sourceRow)) {
        m_anchor = sourceRow;
        return;
    }
    selection.clear();
    if (sourceRow >= 0)
        selection.set(sourceRow, true);
    m_anchor = sourceRow;
    selectionTouched();
}

void TGridView::toggleSelected(int sourceRow)
{
    if (!m_multiSelect) {
        selectOnly(sourceRow);
        return;
    }
    TGridSelection& selection = m_model->selection();
    selection.set(sourceRow, !selection.contains(sourceRow));
    m_anchor = sourceRow;
    selectionTouched();
}

void TGridView::selectRows(const QList<int>& sourceRows, bool add)
{
    if (!m_multiSelect) {
        if (!sourceRows.isEmpty())
            selectOnly(sourceRows.last());
        return;
    }
    TGridSelection& selection = m_model->selection();
    if (!add)
        selection.clear();
    for (const int row : sourceRows)
        selection.set(row, true);
    selectionTouched();
}

void TGridView::selectionTouched()
{
    m_model->notifySelectionChanged();
    update();
}

int TGridView::currentSourceRow() const
{
    return m_ownSource ? m_ownCurrent : (m_grid ? m_grid->currentRow() : -1);
}

void TGridView::setCurrentSourceRow(int sourceRow)
{
    if (m_ownSource) {
        m_ownCurrent = sourceRow;
        currentRowMoved(sourceRow);
        return;
    }
    currentRowMoved(sourceRow);
    if (m_grid)
        m_grid->viewMovedCurrent(this, sourceRow);
}

TGridFindPanel* TGridView::findPanel()
{
    if (!m_findPanel) {
        m_findPanel = new TGridFindPanel(this);
        m_findPanel->hide();
        m_layout->insertWidget(0, m_findPanel);
        connect(m_findPanel, &TGridFindPanel::findRequested, this, [this](const QString& text) {
            m_model->setFindText(text);
            update();
        });
        connect(m_findPanel, &TGridFindPanel::closeRequested, this, &TGridView::hideFindPanel);
    }
    return m_findPanel;
}

void TGridView::showFindPanel()
{
    TGridFindPanel* panel = findPanel();
    const bool was = panel->isVisibleTo(this);
    panel->show();
    panel->focusEditor();
    if (!was) {
        // The texts to search are read ahead, a column per turn of the event loop.
        const auto step = std::make_shared<std::function<void()>>();
        *step = [this, step] {
            if (isFindPanelVisible() && !m_model->prepareFindStep())
                QTimer::singleShot(0, this, *step);
        };
        QTimer::singleShot(0, this, *step);
        emit findPanelVisibilityChanged(true);
    }
}

void TGridView::hideFindPanel()
{
    if (!m_findPanel || !m_findPanel->isVisibleTo(this))
        return;
    m_findPanel->hide();
    m_findPanel->setText(QString());
    m_model->releaseFind();
    setFocus();
    emit findPanelVisibilityChanged(false);
}

bool TGridView::isFindPanelVisible() const
{
    return m_findPanel && m_findPanel->isVisibleTo(const_cast<TGridView*>(this));
}

QString TGridView::findText() const
{
    return m_model->findText();
}

void TGridView::setFindText(const QString& text)
{
    if (m_findPanel)
        m_findPanel->setText(text);
    m_model->setFindText(text);
}

QStringList TGridView::highlightWords() const
{
    return m_model->findWords();
}

TGridFilter TGridView::filter() const
{
    return m_model->filter();
}

void TGridView::setFilter(const TGridFilter& filter)
{
    m_model->setFilter(filter);
}

QString TGridView::filterDisplayText() const
{
    const auto caption = [this](const QString& field) {
        const TGridColumn* column = m_columns->byField(field);
        return column ? m_model->columnCaption(column) : field;
    };
    const auto value = [this](const QString& field, const QVariant& v) {
        const TGridColumn* column = m_columns->byField(field);
        if (v.isNull())
            return QString();
        if (column && column->formatter())
            return column->formatter()(v);
        return v.toString();
    };
    return m_model->filter().displayText(caption, value);
}

void TGridView::updateFilterBar()
{
    const bool on = !m_model->filter().isEmpty();
    m_filterBar->setText(on ? filterDisplayText() : QString());
    m_filterBar->setVisible(on);
}

bool TGridView::showFilterBuilder()
{
    TGridFilterBuilder builder(this);
    builder.setFilter(filter());
    connect(&builder, &TGridFilterBuilder::applied, this, [this, &builder] { setFilter(builder.filter()); });
    if (runDialog(&builder) != QDialog::Accepted)
        return false;
    setFilter(builder.filter());
    return true;
}

void TGridView::showColumnChooser()
{
    auto* chooser = findChild<TGridColumnChooser*>(QString(), Qt::FindDirectChildrenOnly);
    if (!chooser)
        chooser = new TGridColumnChooser(this);
    chooser->show();
    chooser->raise();
    chooser->activateWindow();
}

QString TGridView::saveLayout() const
{
    QMap<QString, QString> settings;
    saveSettings(settings);
    return TGridLayout::save(*m_columns, settings);
}

bool TGridView::restoreLayout(const QString& text)
{
    bool ok = false;
    const QMap<QString, QString> settings = TGridLayout::restore(*m_columns, text, &ok);
    if (ok)
        restoreSettings(settings);
    return ok;
}

void TGridView::saveSettings(QMap<QString, QString>&) const {}

void TGridView::restoreSettings(const QMap<QString, QString>&) {}

QString TGridView::displayText(int sourceRow, const TGridColumn* column) const
{
    return m_model->displayText(sourceRow, column);
}

void TGridView::retranslate()
{
    if (m_findPanel)
        m_findPanel->retranslate();
    m_filterBar->retranslate();
    updateFilterBar();
    update();
}

void TGridView::setDialogRunner(std::function<int(QWidget*)> runner)
{
    dialogRunner() = std::move(runner);
}

int TGridView::runDialog(QWidget* dialog)
{
    if (dialogRunner())
        return dialogRunner()(dialog);
    if (auto* d = qobject_cast<QDialog*>(dialog))
        return d->exec();
    return QDialog::Rejected;
}
