#include "uRibbonComboItem.h"

#include "uPaintHelpers.h"
#include "uRibbonStyle.h"

#include <QAction>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

TRibbonComboItem::TRibbonComboItem(QAction* action, QWidget* parent)
    : QWidget(parent), m_action(action), m_label(new QLabel(this)), m_combo(new QComboBox(this))
{
    auto* layout = new QHBoxLayout(this);
    const TRibbonMetrics m = TRibbonMetrics::of(fontMetrics());
    layout->setContentsMargins(m.padding, 0, 0, 0);
    layout->setSpacing(m.padding);
    layout->addWidget(m_label);
    layout->addWidget(m_combo, 1);
    m_label->setBuddy(m_combo);
    setComboWidth(m_characters);
    if (action != nullptr) {
        if (!action->objectName().isEmpty())
            setObjectName(action->objectName());
        connect(action, &QAction::changed, this, &TRibbonComboItem::syncFromAction);
        connect(action, &QObject::destroyed, this, [this]() { setEnabled(false); });
    }
    connect(m_combo, &QComboBox::activated, this, [this](int index) {
        if (m_action) {
            m_action->setData(index);
            m_action->trigger();
        }
        emit activated(index);
    });
    syncFromAction();
}

void TRibbonComboItem::syncFromAction()
{
    if (!m_action)
        return;
    m_label->setText(m_action->text());
    m_label->setVisible(!m_action->text().isEmpty());
    setEnabled(m_action->isEnabled());
    if (parentWidget() != nullptr)
        setVisible(m_action->isVisible());
    setToolTip(m_action->toolTip());
}

void TRibbonComboItem::setItems(const QStringList& items)
{
    const QSignalBlocker blocker(m_combo);
    const int index = m_combo->currentIndex();
    m_combo->clear();
    m_combo->addItems(items);
    m_combo->setCurrentIndex(std::min(index, int(items.size()) - 1));
}

int TRibbonComboItem::currentIndex() const
{
    return m_combo->currentIndex();
}

void TRibbonComboItem::setCurrentIndex(int index)
{
    const QSignalBlocker blocker(m_combo);
    m_combo->setCurrentIndex(index);
}

void TRibbonComboItem::setComboWidth(int characters)
{
    m_characters = std::max(4, characters);
    m_combo->setMinimumWidth(fontMetrics().averageCharWidth() * m_characters);
    updateGeometry();
}

void TRibbonComboItem::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        setComboWidth(m_characters);
}
