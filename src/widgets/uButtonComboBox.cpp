#include "uButtonComboBox.h"

#include <QAction>
#include <QLineEdit>
#include <QPainter>

TButtonComboBox::TButtonComboBox(QWidget* parent) : QComboBox(parent)
{
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
}

void TButtonComboBox::setItemsProvider(std::function<QStringList()> provider)
{
    m_provider = std::move(provider);
    refreshItems();
}

void TButtonComboBox::refreshItems()
{
    if (!m_provider)
        return;
    const QStringList items = m_provider();
    bool same = items.size() == count();
    for (int i = 0; same && i < count(); ++i)
        same = itemText(i) == items[i];
    if (same)
        return;
    const QString text = currentText();
    const QSignalBlocker blocker(this);
    clear();
    addItems(items);
    if (isEditable())
        setEditText(text);
    else
        setCurrentIndex(findText(text));
}

QAction* TButtonComboBox::setButton(const QIcon& icon, const QString& toolTip,
                                    std::function<void(TButtonComboBox*)> onClick)
{
    if (m_button == nullptr) {
        if (!isEditable())
            setEditable(true);
        m_button = lineEdit()->addAction(icon, QLineEdit::TrailingPosition);
    }
    m_button->setIcon(icon.isNull() ? editGlyph(palette(), fontMetrics().height()) : icon);
    m_button->setToolTip(toolTip);
    m_button->disconnect(this);
    connect(m_button, &QAction::triggered, this, [this, onClick]() {
        if (onClick)
            onClick(this);
        refreshItems();
    });
    return m_button;
}

void TButtonComboBox::showPopup()
{
    refreshItems();
    QComboBox::showPopup();
}

QIcon TButtonComboBox::editGlyph(const QPalette& palette, int size)
{
    size = std::max(size, 8);
    QPixmap pixmap(size * 2, size * 2);
    pixmap.setDevicePixelRatio(2.0);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette.color(QPalette::Text));
    const qreal dot = size / 7.0;
    for (int i = 0; i < 3; ++i)
        painter.drawEllipse(QPointF(size / 2.0 + (i - 1) * dot * 2.2, size * 0.62), dot * 0.8, dot * 0.8);
    return QIcon(pixmap);
}
