#include "uCheckComboBox.h"

#include "uWidgetTexts.h"

#include <QAbstractItemView>
#include <QMouseEvent>
#include <QStandardItemModel>
#include <QStylePainter>

using namespace Qt::StringLiterals;

TCheckComboBox::TCheckComboBox(QWidget* parent) : QComboBox(parent), m_model(new QStandardItemModel(this))
{
    setModel(m_model);
    view()->viewport()->installEventFilter(this);
    view()->installEventFilter(this);
}

void TCheckComboBox::setItems(const QStringList& texts)
{
    m_model->clear();
    for (const QString& text : texts) {
        auto* item = new QStandardItem(text);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        item->setData(Qt::Unchecked, Qt::CheckStateRole);
        m_model->appendRow(item);
    }
    update();
}

QStringList TCheckComboBox::items() const
{
    QStringList texts;
    for (int i = 0; i < m_model->rowCount(); ++i)
        texts << m_model->item(i)->text();
    return texts;
}

void TCheckComboBox::setEmptyText(const QString& text)
{
    m_emptyText = text;
    update();
}

bool TCheckComboBox::isChecked(int index) const
{
    const QStandardItem* item = m_model->item(index);
    return item != nullptr && item->checkState() == Qt::Checked;
}

void TCheckComboBox::setChecked(int index, bool checked)
{
    if (QStandardItem* item = m_model->item(index))
        item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    update();
}

QList<bool> TCheckComboBox::checkedStates() const
{
    QList<bool> states;
    for (int i = 0; i < m_model->rowCount(); ++i)
        states << isChecked(i);
    return states;
}

void TCheckComboBox::setCheckedStates(const QList<bool>& states)
{
    for (int i = 0; i < m_model->rowCount(); ++i)
        m_model->item(i)->setCheckState(i < states.size() && states[i] ? Qt::Checked : Qt::Unchecked);
    update();
}

QString TCheckComboBox::summaryText() const
{
    QStringList checked;
    for (int i = 0; i < m_model->rowCount(); ++i)
        if (isChecked(i))
            checked << m_model->item(i)->text();
    if (checked.isEmpty())
        return m_emptyText.isEmpty() ? WidgetTexts().emptySelection : m_emptyText;
    return checked.join(u", "_s);
}

void TCheckComboBox::hidePopup()
{
    if (m_keepOpen) {
        m_keepOpen = false;
        return;
    }
    QComboBox::hidePopup();
}

bool TCheckComboBox::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == view()->viewport() && event->type() == QEvent::MouseButtonRelease) {
        const QModelIndex index = view()->indexAt(static_cast<QMouseEvent*>(event)->position().toPoint());
        if (index.isValid()) {
            setChecked(index.row(), !isChecked(index.row()));
            m_keepOpen = true;
            emit checksChanged();
        }
    } else if (watched == view() && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter) {
            const QModelIndex index = view()->currentIndex();
            if (index.isValid() && key == Qt::Key_Space) {
                setChecked(index.row(), !isChecked(index.row()));
                emit checksChanged();
                return true;
            }
        }
    }
    return QComboBox::eventFilter(watched, event);
}

void TCheckComboBox::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    option.currentText = summaryText();
    option.currentIcon = QIcon();
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}
