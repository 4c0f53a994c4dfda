#include "uChoiceEditorItems.h"

#include "uButtonComboBox.h"
#include "uCheckComboBox.h"
#include "uPaintHelpers.h"
#include "uWidgetTexts.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QPainter>
#include <QSortFilterProxyModel>
#include <QStyleOptionViewItem>

using namespace Qt::StringLiterals;

namespace {
bool isNullValue(const QVariant& value)
{
    return value.isNull() || !value.isValid();
}

QStyle* styleOf(const QStyleOptionViewItem& option)
{
    return option.widget ? option.widget->style() : QApplication::style();
}

QRect indicatorRect(const QStyleOptionViewItem& option, Qt::Alignment alignment)
{
    QStyle* style = styleOf(option);
    const int width = style->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, option.widget);
    const int height = style->pixelMetric(QStyle::PM_IndicatorHeight, nullptr, option.widget);
    const QRect area = option.rect.adjusted(4, 0, -4, 0);
    return QStyle::alignedRect(option.direction, (alignment & ~Qt::AlignVertical_Mask) | Qt::AlignVCenter,
                               QSize(width, height), area);
}

void drawTextWithIcon(QPainter* painter, const QStyleOptionViewItem& option, const QIcon& icon,
                      const QString& text, Qt::Alignment alignment)
{
    painter->save();
    QRect area = option.rect.adjusted(4, 0, -4, 0);
    const int size = std::min(area.height() - 2, option.fontMetrics.height());
    const QRect iconRect =
        QStyle::alignedRect(option.direction, Qt::AlignLeft | Qt::AlignVCenter, QSize(size, size), area);
    icon.paint(painter, iconRect, Qt::AlignCenter,
               option.state.testFlag(QStyle::State_Enabled) ? QIcon::Normal : QIcon::Disabled);
    const int shift = size + 4;
    area =
        option.direction == Qt::RightToLeft ? area.adjusted(0, 0, -shift, 0) : area.adjusted(shift, 0, 0, 0);
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
    painter->setFont(option.font);
    painter->drawText(area, int(VisualAlignment(option.direction, alignment)),
                      option.fontMetrics.elidedText(text, Qt::ElideRight, area.width()));
    painter->restore();
}
} // namespace

// ---- TCheckEditorItem

void TCheckEditorItem::setValues(const QVariant& checked, const QVariant& unchecked)
{
    m_checked = checked;
    m_unchecked = unchecked;
}

bool TCheckEditorItem::isChecked(const QVariant& value) const
{
    if (isNullValue(value))
        return false;
    return TListEditorItem::valueKey(value) == TListEditorItem::valueKey(m_checked) ||
           (value.typeId() == QMetaType::Bool && value.toBool());
}

QString TCheckEditorItem::displayText(const QVariant& value) const
{
    Q_UNUSED(value);
    return {};
}

bool TCheckEditorItem::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QVariant& value) const
{
    QStyleOptionButton box;
    box.rect = indicatorRect(option, alignment());
    box.palette = option.palette;
    box.direction = option.direction;
    box.state = option.state & QStyle::State_Enabled;
    if (isNullValue(value) && m_nullPartial)
        box.state |= QStyle::State_NoChange;
    else
        box.state |= isChecked(value) ? QStyle::State_On : QStyle::State_Off;
    styleOf(option)->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, painter, option.widget);
    return true;
}

bool TCheckEditorItem::valueFromClick(const QStyleOptionViewItem& option, const QPoint& pos,
                                      const QVariant& current, QVariant* result) const
{
    if (isReadOnly() || !option.rect.contains(pos))
        return false;
    *result = isChecked(current) ? m_unchecked : m_checked;
    return true;
}

QWidget* TCheckEditorItem::makeEditor(QWidget* parent) const
{
    auto* editor = new QCheckBox(parent);
    editor->setAutoFillBackground(true);
    editor->setTristate(false);
    return editor;
}

void TCheckEditorItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    if (auto* box = qobject_cast<QCheckBox*>(editor))
        box->setChecked(isChecked(value));
}

QVariant TCheckEditorItem::editorValue(QWidget* editor) const
{
    auto* box = qobject_cast<QCheckBox*>(editor);
    if (box == nullptr)
        return {};
    return box->isChecked() ? m_checked : m_unchecked;
}

QMetaObject::Connection TCheckEditorItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    auto* box = qobject_cast<QCheckBox*>(editor);
    return box ? QObject::connect(box, &QCheckBox::clicked, box, std::move(slot)) : QMetaObject::Connection();
}

// ---- TListEditorItem

QString TListEditorItem::valueKey(const QVariant& value)
{
    if (isNullValue(value))
        return {};
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
        return QString::number(value.toDouble(), 'g', 17);
    case QMetaType::Bool:
        return value.toBool() ? u"1"_s : u"0"_s;
    default:
        break;
    }
    const QString text = value.toString();
    bool number = false;
    const double parsed = text.toDouble(&number);
    return number ? QString::number(parsed, 'g', 17) : text;
}

void TListEditorItem::setEntries(const QList<TListEntry>& entries)
{
    m_entries = entries;
    rebuildIndex();
}

void TListEditorItem::addEntry(const QVariant& value, const QString& text, const QIcon& icon)
{
    m_entries.append({value, text, icon});
    m_index.insert(valueKey(value), int(m_entries.size()) - 1);
}

void TListEditorItem::setEntryText(const QVariant& value, const QString& text)
{
    const int index = entryIndex(value);
    if (index >= 0)
        m_entries[index].text = text;
}

void TListEditorItem::rebuildIndex()
{
    m_index.clear();
    for (int i = 0; i < int(m_entries.size()); ++i)
        if (!m_index.contains(valueKey(m_entries[i].value)))
            m_index.insert(valueKey(m_entries[i].value), i);
}

int TListEditorItem::entryIndex(const QVariant& value) const
{
    return m_index.value(valueKey(value), -1);
}

QString TListEditorItem::displayText(const QVariant& value) const
{
    const int index = entryIndex(value);
    if (index >= 0)
        return m_entries[index].text;
    if (!m_defaultText.isEmpty())
        return m_defaultText;
    return isNullValue(value) ? nullText() : value.toString();
}

bool TListEditorItem::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QVariant& value) const
{
    const int index = entryIndex(value);
    if (index < 0 || m_entries[index].icon.isNull())
        return false;
    drawTextWithIcon(painter, option, m_entries[index].icon, m_entries[index].text, alignment());
    return true;
}

QWidget* TListEditorItem::makeEditor(QWidget* parent) const
{
    auto* editor = new QComboBox(parent);
    QList<int> order;
    for (int i = 0; i < int(m_entries.size()); ++i)
        order << i;
    if (m_sorted)
        std::stable_sort(order.begin(), order.end(), [this](int a, int b) {
            return QString::localeAwareCompare(m_entries[a].text, m_entries[b].text) < 0;
        });
    for (const int i : order)
        editor->addItem(m_entries[i].icon, m_entries[i].text, m_entries[i].value);
    return editor;
}

void TListEditorItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    auto* combo = qobject_cast<QComboBox*>(editor);
    if (combo == nullptr)
        return;
    const QString key = valueKey(value);
    for (int i = 0; i < combo->count(); ++i)
        if (valueKey(combo->itemData(i)) == key) {
            combo->setCurrentIndex(i);
            return;
        }
    combo->setCurrentIndex(-1);
}

QVariant TListEditorItem::editorValue(QWidget* editor) const
{
    auto* combo = qobject_cast<QComboBox*>(editor);
    if (combo == nullptr || combo->currentIndex() < 0)
        return {};
    return combo->currentData();
}

QMetaObject::Connection TListEditorItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    auto* combo = qobject_cast<QComboBox*>(editor);
    return combo ? QObject::connect(combo, &QComboBox::activated, combo, [slot](int) { slot(); })
                 : QMetaObject::Connection();
}

// ---- TComboEditorItem

void TComboEditorItem::setItems(const QStringList& items)
{
    m_items = items;
    m_provider = nullptr;
}

QStringList TComboEditorItem::items() const
{
    return m_provider ? m_provider() : m_items;
}

void TComboEditorItem::setButton(std::function<void(QWidget*)> onClick, const QIcon& icon,
                                 const QString& toolTip)
{
    m_onButton = std::move(onClick);
    m_buttonIcon = icon;
    m_buttonToolTip = toolTip;
}

QString TComboEditorItem::displayText(const QVariant& value) const
{
    return isNullValue(value) ? nullText() : value.toString();
}

QWidget* TComboEditorItem::makeEditor(QWidget* parent) const
{
    auto* editor = new TButtonComboBox(parent);
    editor->setItemsProvider([this]() { return items(); });
    if (m_onButton) {
        auto onClick = m_onButton;
        editor->setButton(m_buttonIcon,
                          m_buttonToolTip.isEmpty() ? WidgetTexts().editButton : m_buttonToolTip,
                          [onClick](TButtonComboBox* combo) { onClick(combo); });
    }
    return editor;
}

void TComboEditorItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    if (auto* combo = qobject_cast<QComboBox*>(editor))
        combo->setEditText(isNullValue(value) ? QString() : value.toString());
}

QVariant TComboEditorItem::editorValue(QWidget* editor) const
{
    auto* combo = qobject_cast<QComboBox*>(editor);
    if (combo == nullptr || combo->currentText().isEmpty())
        return {};
    return combo->currentText();
}

QMetaObject::Connection TComboEditorItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    auto* combo = qobject_cast<QComboBox*>(editor);
    return combo ? QObject::connect(combo, &QComboBox::activated, combo, [slot](int) { slot(); })
                 : QMetaObject::Connection();
}

// ---- TLookupEditorItem

TLookupEditorItem::TLookupEditorItem() : m_watcher(std::make_unique<QObject>()) {}

TLookupEditorItem::~TLookupEditorItem() = default;

void TLookupEditorItem::setModel(QAbstractItemModel* model, int keyColumn, int listColumn, int keyRole)
{
    if (m_model)
        m_model->disconnect(m_watcher.get());
    m_model = model;
    m_keyColumn = keyColumn;
    m_listColumn = listColumn;
    m_keyRole = keyRole;
    m_stale = true;
    if (model == nullptr)
        return;
    const auto stale = [this]() { m_stale = true; };
    QObject* watcher = m_watcher.get();
    QObject::connect(model, &QAbstractItemModel::modelReset, watcher, stale);
    QObject::connect(model, &QAbstractItemModel::rowsInserted, watcher, stale);
    QObject::connect(model, &QAbstractItemModel::rowsRemoved, watcher, stale);
    QObject::connect(model, &QAbstractItemModel::rowsMoved, watcher, stale);
    QObject::connect(model, &QAbstractItemModel::layoutChanged, watcher, stale);
    QObject::connect(model, &QAbstractItemModel::dataChanged, watcher, stale);
}

QAbstractItemModel* TLookupEditorItem::model() const
{
    return m_model.data();
}

void TLookupEditorItem::setButton(std::function<void(QWidget*)> onClick, const QIcon& icon,
                                  const QString& toolTip)
{
    m_onButton = std::move(onClick);
    m_buttonIcon = icon;
    m_buttonToolTip = toolTip;
}

void TLookupEditorItem::ensureTable() const
{
    if (!m_stale)
        return;
    m_texts.clear();
    m_stale = false;
    if (!m_model)
        return;
    const int rows = m_model->rowCount();
    m_texts.reserve(rows);
    for (int row = 0; row < rows; ++row) {
        const QString key = TListEditorItem::valueKey(m_model->index(row, m_keyColumn).data(m_keyRole));
        if (!m_texts.contains(key))
            m_texts.insert(key, m_model->index(row, m_listColumn).data(Qt::DisplayRole).toString());
    }
}

QString TLookupEditorItem::textOf(const QVariant& key) const
{
    if (isNullValue(key))
        return {};
    ensureTable();
    return m_texts.value(TListEditorItem::valueKey(key));
}

QString TLookupEditorItem::displayText(const QVariant& value) const
{
    if (isNullValue(value))
        return nullText();
    return textOf(value);
}

QWidget* TLookupEditorItem::makeEditor(QWidget* parent) const
{
    auto* editor = new TButtonComboBox(parent);
    if (m_model) {
        QAbstractItemModel* source = m_model.data();
        if (m_sorted) {
            auto* proxy = new QSortFilterProxyModel(editor);
            proxy->setSourceModel(source);
            proxy->setSortCaseSensitivity(Qt::CaseInsensitive);
            proxy->setSortLocaleAware(true);
            proxy->sort(m_listColumn, Qt::AscendingOrder);
            source = proxy;
        }
        editor->setModel(source);
        editor->setModelColumn(m_listColumn);
    }
    if (m_onButton) {
        auto onClick = m_onButton;
        editor->setButton(m_buttonIcon,
                          m_buttonToolTip.isEmpty() ? WidgetTexts().editButton : m_buttonToolTip,
                          [onClick](TButtonComboBox* combo) { onClick(combo); });
    }
    return editor;
}

void TLookupEditorItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    auto* combo = qobject_cast<QComboBox*>(editor);
    if (combo == nullptr)
        return;
    const QString key = TListEditorItem::valueKey(value);
    QAbstractItemModel* model = combo->model();
    for (int row = 0; !key.isEmpty() && row < model->rowCount(); ++row)
        if (TListEditorItem::valueKey(model->index(row, m_keyColumn).data(m_keyRole)) == key) {
            combo->setCurrentIndex(row);
            return;
        }
    combo->setCurrentIndex(-1);
    combo->setEditText(QString());
}

QVariant TLookupEditorItem::editorValue(QWidget* editor) const
{
    auto* combo = qobject_cast<QComboBox*>(editor);
    if (combo == nullptr)
        return {};
    const QString text = combo->currentText().trimmed();
    if (text.isEmpty())
        return {};
    const int row = combo->findText(text, Qt::MatchFixedString);
    if (row < 0)
        throw TEditorError(WidgetTexts().notInList.arg(text));
    return combo->model()->index(row, m_keyColumn).data(m_keyRole);
}

QMetaObject::Connection TLookupEditorItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    auto* combo = qobject_cast<QComboBox*>(editor);
    return combo ? QObject::connect(combo, &QComboBox::activated, combo, [slot](int) { slot(); })
                 : QMetaObject::Connection();
}

// ---- TCheckListEditorItem

QList<bool> TCheckListEditorItem::checkedStates(const QVariant& value) const
{
    QList<bool> states(m_texts.size(), false);
    if (isNullValue(value))
        return states;
    const QString text = value.toString();
    if (m_indexList) {
        for (const QString& part : text.split(u',', Qt::SkipEmptyParts)) {
            bool ok = false;
            const int index = part.trimmed().toInt(&ok);
            if (ok && index >= 0 && index < states.size())
                states[index] = true;
        }
    } else {
        for (int i = 0; i < std::min<int>(int(text.size()), int(states.size())); ++i)
            states[i] = text[i] == u'1';
    }
    return states;
}

QVariant TCheckListEditorItem::valueOf(const QList<bool>& states) const
{
    QString text;
    if (m_indexList) {
        QStringList parts;
        for (int i = 0; i < int(states.size()); ++i)
            if (states[i])
                parts << QString::number(i);
        text = parts.join(u',');
    } else {
        for (const bool on : states)
            text += on ? u'1' : u'0';
    }
    return text;
}

QString TCheckListEditorItem::displayText(const QVariant& value) const
{
    const QList<bool> states = checkedStates(value);
    QStringList checked;
    for (int i = 0; i < int(states.size()); ++i)
        if (states[i])
            checked << m_texts[i];
    if (checked.isEmpty())
        return m_emptyText.isEmpty() ? WidgetTexts().emptySelection : m_emptyText;
    return checked.join(u", "_s);
}

QWidget* TCheckListEditorItem::makeEditor(QWidget* parent) const
{
    auto* editor = new TCheckComboBox(parent);
    editor->setItems(m_texts);
    editor->setEmptyText(m_emptyText);
    return editor;
}

void TCheckListEditorItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    if (auto* combo = qobject_cast<TCheckComboBox*>(editor))
        combo->setCheckedStates(checkedStates(value));
}

QVariant TCheckListEditorItem::editorValue(QWidget* editor) const
{
    auto* combo = qobject_cast<TCheckComboBox*>(editor);
    return combo ? valueOf(combo->checkedStates()) : QVariant();
}

QMetaObject::Connection TCheckListEditorItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    auto* combo = qobject_cast<TCheckComboBox*>(editor);
    return combo ? QObject::connect(combo, &TCheckComboBox::checksChanged, combo, std::move(slot))
                 : QMetaObject::Connection();
}
