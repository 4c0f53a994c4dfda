#include "frmSorting.h"

#include "uEditorItem.h"
#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridTableView.h"
#include "uGridView.h"
#include "uZTStrings.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QStyledItemDelegate>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

std::function<int(TSortForm&)>& ExecHook()
{
    static std::function<int(TSortForm&)> hook;
    return hook;
}

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

// The view's columns through its shown captions and its editors.
TGridColumnsSortView SortViewOf(TGridView* view)
{
    return TGridColumnsSortView(
        *view->columns(), [view](const TGridColumn* column) { return view->model()->columnCaption(column); },
        [view](const TGridColumn* column) {
            const TEditorItem* item = view->editorItem(column);
            return item ? item->isPicture() : column->isPicture();
        });
}

bool IsTableLike(TGridView* view)
{
    return dynamic_cast<TGridTableView*>(view) != nullptr;
}

// Picks a cell's text from a fixed list; the cell may show a text the list lacks.
class TPickListDelegate : public QStyledItemDelegate
{
public:
    TPickListDelegate(std::function<QStringList(int column)> items, QObject* parent)
        : QStyledItemDelegate(parent), m_items(std::move(items))
    {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&,
                          const QModelIndex& index) const override
    {
        auto* box = new QComboBox(parent);
        box->addItems(m_items(index.column()));
        box->setFrame(false);
        connect(box, &QComboBox::activated, this, [this, box] {
            auto* self = const_cast<TPickListDelegate*>(this);
            emit self->commitData(box);
            emit self->closeEditor(box);
        });
        return box;
    }
    void setEditorData(QWidget* editor, const QModelIndex& index) const override
    {
        auto* box = static_cast<QComboBox*>(editor);
        box->setCurrentIndex(
            box->findText(index.data().toString(), Qt::MatchExactly | Qt::MatchCaseSensitive));
    }
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override
    {
        auto* box = static_cast<QComboBox*>(editor);
        if (box->currentIndex() >= 0) {
            model->setData(index, box->currentText());
        }
    }

private:
    std::function<QStringList(int)> m_items;
};

} // namespace

TSortForm::TSortForm(QWidget* owner) : TAbstractLayoutForm(owner), m_TLSort(new QTreeWidget(lgContainer()))
{
    setObjectName(u"SortForm"_s);
    auto* bar = new QHBoxLayout;
    bar->setSpacing(4);
    for (const TSortCommandDef& def : SortCommands()) {
        auto* action = new QAction(this);
        action->setObjectName(def.Name);
        action->setShortcut(QKeySequence(def.Shortcut, QKeySequence::PortableText));
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
        m_actions.insert(def.Name, action);
        auto* button = new QToolButton(lgContainer());
        button->setObjectName(u"btn"_s + def.Name.mid(3));
        button->setDefaultAction(action);
        button->setAutoRaise(true);
        bar->addWidget(button);
        m_buttons.append(button);
    }
    m_actions.value(u"actAddLevel"_s)->setIcon(style()->standardIcon(QStyle::SP_FileDialogNewFolder));
    m_actions.value(u"actDeleteLevel"_s)->setIcon(style()->standardIcon(QStyle::SP_DialogDiscardButton));
    m_actions.value(u"actUp"_s)->setIcon(style()->standardIcon(QStyle::SP_ArrowUp));
    m_actions.value(u"actDown"_s)->setIcon(style()->standardIcon(QStyle::SP_ArrowDown));
    for (int i = 0; i < 2; ++i) {
        m_buttons.at(i)->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    }
    bar->addStretch(1);

    m_TLSort->setObjectName(u"TLSort"_s);
    m_TLSort->setColumnCount(2);
    m_TLSort->setRootIsDecorated(false);
    m_TLSort->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_TLSort->setEditTriggers(QAbstractItemView::AllEditTriggers);
    m_TLSort->header()->setSectionsMovable(false);
    m_TLSort->header()->setStretchLastSection(false);
    m_TLSort->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_TLSort->header()->setSectionResizeMode(1, QHeaderView::Fixed);
    m_TLSort->header()->resizeSection(1, 150);
    m_TLSort->setItemDelegate(new TPickListDelegate(
        [this](int column) { return column == 0 ? m_controller.ColumnList() : m_controller.OrderList(); },
        m_TLSort));

    ContainerLayout()->addLayout(bar);
    ContainerLayout()->addWidget(m_TLSort, 1);
    resize(460, 320);

    connect(m_actions.value(u"actAddLevel"_s), &QAction::triggered, this,
            [this] { Run(&TSortController::AddLevel); });
    connect(m_actions.value(u"actDeleteLevel"_s), &QAction::triggered, this,
            [this] { Run(&TSortController::DeleteLevels); });
    connect(m_actions.value(u"actUp"_s), &QAction::triggered, this,
            [this] { Run(&TSortController::MoveUp); });
    connect(m_actions.value(u"actDown"_s), &QAction::triggered, this,
            [this] { Run(&TSortController::MoveDown); });
    connect(m_TLSort, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        if (m_showing) {
            return;
        }
        const int level = m_TLSort->indexOfTopLevelItem(item);
        if (column == 0) {
            m_controller.SetLevelColumn(level, item->text(0));
        } else {
            m_controller.SetLevelOrder(level, item->text(1));
        }
    });
    connect(m_TLSort->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (m_showing) {
            return;
        }
        QList<int> selected;
        for (QTreeWidgetItem* item : m_TLSort->selectedItems()) {
            selected.append(m_TLSort->indexOfTopLevelItem(item));
        }
        m_controller.SetSelected(selected);
        UpdateActions();
    });
    connect(m_TLSort, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* current) {
        if (m_showing) {
            return;
        }
        m_controller.SetFocused(current ? m_TLSort->indexOfTopLevelItem(current) : -1);
        UpdateActions();
    });
    ShowLevels();
    ApplyTexts();
}

bool TSortForm::Execute(const QList<TGridView*>& views, QWidget* owner)
{
    TSortForm form(owner);
    if (!views.isEmpty() && IsTableLike(views.first())) {
        form.LoadFromView(views.first());
    }
    const int result = ExecHook() ? ExecHook()(form) : form.exec();
    if (result != QDialog::Accepted) {
        return false;
    }
    for (TGridView* view : views) {
        if (IsTableLike(view)) {
            form.ApplySort(view);
        }
    }
    return true;
}

void TSortForm::SetExecHook(std::function<int(TSortForm&)> hook)
{
    ExecHook() = std::move(hook);
}

void TSortForm::LoadFromView(TGridView* view)
{
    const TGridColumnsSortView sortView = SortViewOf(view);
    m_controller.LoadFromView(sortView);
    ShowLevels();
}

void TSortForm::ApplySort(TGridView* view) const
{
    TGridColumnsSortView sortView = SortViewOf(view);
    m_controller.ApplySort(sortView);
}

void TSortForm::Run(void (TSortController::*command)())
{
    (m_controller.*command)();
    ShowLevels();
}

void TSortForm::ShowLevels()
{
    m_showing = true;
    m_TLSort->clear();
    const QList<TSortLevel>& levels = m_controller.Levels();
    for (const TSortLevel& level : levels) {
        auto* item = new QTreeWidgetItem(m_TLSort, {level.Column, level.Order});
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable);
    }
    if (QTreeWidgetItem* focused = m_TLSort->topLevelItem(m_controller.Focused())) {
        m_TLSort->setCurrentItem(focused, 0, QItemSelectionModel::NoUpdate);
    }
    for (int level : m_controller.Selected()) {
        if (QTreeWidgetItem* item = m_TLSort->topLevelItem(level)) {
            item->setSelected(true);
        }
    }
    m_showing = false;
    UpdateActions();
}

void TSortForm::UpdateActions()
{
    for (auto it = m_actions.cbegin(); it != m_actions.cend(); ++it) {
        it.value()->setEnabled(m_controller.CommandEnabled(it.key()));
    }
}

void TSortForm::accept()
{
    if (m_controller.CheckLevels()) {
        TAbstractLayoutForm::accept();
    }
}

void TSortForm::ApplyTexts()
{
    TAbstractLayoutForm::ApplyTexts();
    setWindowTitle(TextOr(u"cSSortDlgCaption"_s, u"Sort data"_s));
    m_TLSort->setHeaderLabels(
        {TextOr(u"cSSortDlgColumn"_s, u"Column"_s), TextOr(u"cSSortDlgOrder"_s, u"Order"_s)});
    // Header texts start where the cells start, in either reading direction.
    const Qt::Alignment headerAlignment =
        (LanguageIsRightToLeft() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute | Qt::AlignVCenter;
    for (int c = 0; c < m_TLSort->columnCount(); ++c) {
        m_TLSort->headerItem()->setTextAlignment(c, headerAlignment);
    }
    for (const TSortCommandDef& def : SortCommands()) {
        QAction* action = m_actions.value(def.Name);
        const QString text = TextOr(def.TextKey, def.DefaultText);
        action->setText(text);
        action->setToolTip(u"%1 (%2)"_s.arg(text, action->shortcut().toString(QKeySequence::NativeText)));
    }
}

// Compiled here: the toolkit's view class shares its name with the main window's view enumeration,
// so this moc output cannot go into the library's shared moc unit.
#include "moc_frmSorting.cpp"
