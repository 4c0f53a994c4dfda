#include "uGridColumnChooser.h"

#include "uGridCardView.h"
#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridTexts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

TGridColumnChooser::TGridColumnChooser(TGridView* view)
    : QDialog(view, Qt::Tool), m_view(view), m_label(new QLabel(this)), m_list(new QListWidget(this)),
      m_up(new QPushButton(this)), m_down(new QPushButton(this))
{
    setObjectName(QStringLiteral("columnChooser"));
    m_list->setObjectName(QStringLiteral("chooserList"));
    m_up->setObjectName(QStringLiteral("chooserUp"));
    m_down->setObjectName(QStringLiteral("chooserDown"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    layout->addWidget(m_list, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_up);
    buttons->addWidget(m_down);
    buttons->addStretch(1);
    layout->addLayout(buttons);
    resize(240, 360);

    connect(m_list, &QListWidget::itemChanged, this, [this](QListWidgetItem* item) {
        if (m_filling)
            return;
        if (TGridColumn* column = m_view->columns()->at(item->data(Qt::UserRole).toInt()))
            column->setVisible(item->checkState() == Qt::Checked);
    });
    connect(m_up, &QPushButton::clicked, this, [this] { moveSelected(-1); });
    connect(m_down, &QPushButton::clicked, this, [this] { moveSelected(1); });
    connect(view->columns(), &TGridColumns::changed, this, [this] {
        if (!m_filling)
            refresh();
    });
    connect(TGridTextsNotifier::instance(), &TGridTextsNotifier::changed, this,
            &TGridColumnChooser::retranslate);
    retranslate();
    refresh();
}

void TGridColumnChooser::retranslate()
{
    const TGridTexts& texts = GridTexts();
    setWindowTitle(texts.ChooserCaption);
    m_label->setText(qobject_cast<TGridCardView*>(m_view) ? texts.ChooserRows : texts.ChooserColumns);
    m_up->setText(texts.ChooserMoveUp);
    m_down->setText(texts.ChooserMoveDown);
}

void TGridColumnChooser::refresh()
{
    m_filling = true;
    const int selected = m_list->currentItem() ? m_list->currentItem()->data(Qt::UserRole).toInt() : -1;
    m_list->clear();
    for (const TGridColumn* column : m_view->columns()->ordered()) {
        // A grouped column is in the group-by panel, and a column the program keeps out stays out.
        if (column->hiddenFromChooser() ||
            (column->groupIndex() >= 0 && !qobject_cast<TGridCardView*>(m_view)))
            continue;
        auto* item = new QListWidgetItem(m_view->model()->columnCaption(column), m_list);
        item->setData(Qt::UserRole, column->id());
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        item->setCheckState(column->visible() ? Qt::Checked : Qt::Unchecked);
        if (column->id() == selected)
            m_list->setCurrentItem(item);
    }
    m_filling = false;
}

void TGridColumnChooser::moveSelected(int step)
{
    QListWidgetItem* item = m_list->currentItem();
    if (!item)
        return;
    const int row = m_list->row(item);
    QListWidgetItem* other = m_list->item(row + step);
    if (!other)
        return;
    TGridColumn* column = m_view->columns()->at(item->data(Qt::UserRole).toInt());
    TGridColumn* neighbour = m_view->columns()->at(other->data(Qt::UserRole).toInt());
    column->setPosition(neighbour->position());
}
