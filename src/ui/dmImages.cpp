#include "dmImages.h"

#include "uBlankPictures.h"
#include "uChoiceEditorItems.h"
#include "uCustomFields.h"
#include "uDBDataset.h"
#include "uDatasetTableModel.h"
#include "uEditorItem.h"
#include "uSplashText.h"
#include "uZTStrings.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QLocale>
#include <QPainter>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>
#include <limits>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

TDataModuleImages* g_instance = nullptr;

const QString cLookupMints = u"lcbMints"_s;
const QString cActEditMints = u"actEditMints"_s;
const QString cCustomFieldsCombo = u"cbCustomFields"_s;
const QString cNotNull = u"cbNotNull"_s;
const QString cUsersCurrency = u"edUsersCurrency"_s;
const QString cCustomText = u"repCustomTextEdit"_s;
const QString cCustomNumber = u"repCustomNumberEdit"_s;
const QString cCustomFloat = u"repCustomFloatEdit"_s;

// The picture of the edit buttons: three dots.
QIcon EllipsisIcon()
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x40, 0x40, 0x40));
    for (int x : {3, 8, 13}) {
        painter.drawEllipse(QPointF(x, 11.0), 1.5, 1.5);
    }
    painter.end();
    return QIcon(pixmap);
}

QComboBox* NewFreeTextCombo(const QString& name, QWidget* parent)
{
    auto* combo = new QComboBox(parent);
    combo->setObjectName(name);
    combo->setEditable(true);
    // The combo only suggests: typed text is the field's value and never enters the list.
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->setDuplicatesEnabled(true);
    if (QCompleter* completer = combo->completer()) {
        completer->setCaseSensitivity(Qt::CaseSensitive);
    }
    return combo;
}

// Sets a combo's list and keeps what stands in its text box; no change signal reaches a binding.
void FillCombo(QComboBox* combo, const QStringList& items)
{
    const QSignalBlocker blocker(combo);
    const QString text = combo->currentText();
    combo->clear();
    combo->addItems(items);
    combo->setCurrentIndex(combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive));
    combo->setEditText(text);
}

void SetMintsSource(QComboBox* combo, QAbstractItemModel* model, int nameColumn)
{
    const QSignalBlocker blocker(combo);
    const QString text = combo->currentText();
    if (model) {
        combo->setModel(model);
        combo->setModelColumn(nameColumn);
    }
    combo->setCurrentIndex(combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive));
    combo->setEditText(text);
    if (QCompleter* completer = combo->completer()) {
        completer->setCompletionMode(QCompleter::PopupCompletion);
        completer->setCaseSensitivity(Qt::CaseInsensitive);
    }
}

template <typename T> void Prune(QList<QPointer<T>>& list)
{
    list.removeIf([](const QPointer<T>& p) { return p.isNull(); });
}

} // namespace

TDataModuleImages::TDataModuleImages(QObject* parent) : QObject(parent), m_actEditMints(new QAction(this))
{
    if (g_instance) {
        throw std::logic_error("TDataModuleImages exists already");
    }
    setObjectName(u"DataModuleImages"_s);
    ShowSplashText(GetText(u"cSSplashLoadingImages"_s));

    const QIcon icon = EllipsisIcon();
    const auto& table = DictTable();
    for (int i = 0; i < cDictCount; ++i) {
        const TDictInfo& info = table[static_cast<std::size_t>(i)];
        auto* action = new QAction(icon, info.dialogName(), this);
        action->setObjectName(info.editAction());
        connect(action, &QAction::triggered, this, [this, i] { EditDictionaryAt(i); });
        m_actions[static_cast<std::size_t>(i)] = action;
    }
    m_actEditMints->setObjectName(cActEditMints);
    m_actEditMints->setIcon(icon);

    BindDictionaries();
    CreateRepositoryItems();
    m_previousRunner = SetEditDictionaryDialogRunner(&m_dialogRunner);
    g_instance = this;
}

TDataModuleImages::~TDataModuleImages()
{
    if (EditDictionaryDialogRunner() == &m_dialogRunner) {
        SetEditDictionaryDialogRunner(m_previousRunner);
    }
    if (g_instance == this) {
        g_instance = nullptr;
    }
}

QStringList TDataModuleImages::RepositoryItems() const
{
    QStringList names;
    for (const TDictInfo& info : DictTable()) {
        names << info.comboEditor();
    }
    names << cLookupMints << cCustomText << cCustomNumber << cCustomFloat << cUsersCurrency << cNotNull
          << cCustomFieldsCombo;
    return names;
}

QWidget* TDataModuleImages::CreateEditor(const QString& name, QWidget* parent) const
{
    if (const TDictInfo* info = FindDict(name); info && info->comboEditor() == name) {
        const auto index = static_cast<std::size_t>(info - DictTable().data());
        QComboBox* combo = NewFreeTextCombo(name, parent);
        FillCombo(combo, m_items[index]);
        combo->setEditText(QString());
        AttachEditButton(combo, m_actions[index]);
        Prune(m_combos[index]);
        m_combos[index].append(combo);
        return combo;
    }
    if (name == cLookupMints) {
        QComboBox* combo = NewFreeTextCombo(name, parent);
        SetMintsSource(combo, m_mintsModel, m_mintsNameColumn);
        combo->setEditText(QString());
        AttachEditButton(combo, m_actEditMints);
        Prune(m_mintCombos);
        m_mintCombos.append(combo);
        return combo;
    }
    if (name == cCustomText) {
        auto* edit = new QLineEdit(parent);
        edit->setObjectName(name);
        edit->setClearButtonEnabled(false);
        return edit;
    }
    if (name == cCustomNumber) {
        auto* spin = new QSpinBox(parent);
        spin->setObjectName(name);
        spin->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
        spin->setKeyboardTracking(true);
        return spin;
    }
    if (name == cCustomFloat) {
        auto* spin = new QDoubleSpinBox(parent);
        spin->setObjectName(name);
        spin->setRange(-1e15, 1e15);
        spin->setDecimals(6);
        spin->setSingleStep(0.1);
        return spin;
    }
    if (name == cUsersCurrency) {
        auto* spin = new QDoubleSpinBox(parent);
        spin->setObjectName(name);
        spin->setRange(-1e15, 1e15);
        spin->setDecimals(2);
        spin->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        spin->setButtonSymbols(QAbstractSpinBox::NoButtons);
        spin->setGroupSeparatorShown(true);
        spin->setPrefix(QLocale::system().currencySymbol(QLocale::CurrencySymbol) + u' ');
        return spin;
    }
    if (name == cNotNull) {
        auto* check = new QCheckBox(parent);
        check->setObjectName(name);
        return check;
    }
    if (name == cCustomFieldsCombo) {
        auto* combo = new QComboBox(parent);
        combo->setObjectName(name);
        const QStringList texts = CustomFieldDataTypeTexts();
        for (int code = 0; code < texts.size(); ++code) {
            combo->addItem(texts.at(code), code);
        }
        return combo;
    }
    if (TEditorItem* item = Item(name)) {
        QWidget* editor = item->createEditor(parent);
        if (editor) {
            editor->setObjectName(name);
        }
        return editor;
    }
    return nullptr;
}

QStringList TDataModuleImages::ComboItems(const QString& comboEditor) const
{
    const TDictInfo* info = FindDict(comboEditor);
    if (!info || info->comboEditor() != comboEditor) {
        return {};
    }
    return m_items[static_cast<std::size_t>(info - DictTable().data())];
}

QAction* TDataModuleImages::Action(const QString& actionName) const
{
    if (actionName == cActEditMints) {
        return m_actEditMints;
    }
    for (QAction* action : m_actions) {
        if (action->objectName() == actionName) {
            return action;
        }
    }
    return nullptr;
}

void TDataModuleImages::BindDictionaries()
{
    const auto& table = DictTable();
    for (int i = 0; i < cDictCount; ++i) {
        const auto index = static_cast<std::size_t>(i);
        m_items[index] = DictLines(DictOf(ORVDicts, table[index]).Value);
        RefreshCombos(i);
    }
}

void TDataModuleImages::SetMintsModel(QAbstractItemModel* model, int nameColumn, int keyColumn)
{
    if (model && keyColumn < 0) {
        keyColumn = 0;
        for (int c = 0; c < model->columnCount(); ++c) {
            if (model->headerData(c, Qt::Horizontal, TDatasetTableModel::FieldNameRole).toString() ==
                u"ID"_s) {
                keyColumn = c;
                break;
            }
        }
    }
    if (auto* lookup = dynamic_cast<TLookupEditorItem*>(Item(cLookupMints))) {
        lookup->setModel(model, std::max(0, keyColumn), nameColumn);
    }
    m_mintsModel = model;
    m_mintsNameColumn = nameColumn;
    Prune(m_mintCombos);
    for (const QPointer<QComboBox>& combo : std::as_const(m_mintCombos)) {
        SetMintsSource(combo, model, nameColumn);
    }
}

QPixmap TDataModuleImages::BlankPicture(int metal, int coinType, bool isObverse) const
{
    const QString name = BlankPictureName(metal, coinType, isObverse);
    auto it = m_blankPictures.constFind(name);
    if (it == m_blankPictures.cend()) {
        QPixmap pixmap;
        pixmap.loadFromData(::BlankPicture(metal, coinType, isObverse), "PNG");
        it = m_blankPictures.insert(name, pixmap);
    }
    return it.value();
}

void TDataModuleImages::AttachEditButton(QComboBox* combo, QAction* action)
{
    if (!combo || !action || !combo->lineEdit()) {
        return;
    }
    QLineEdit* edit = combo->lineEdit();
    if (edit->actions().contains(action)) {
        return;
    }
    edit->addAction(action, QLineEdit::TrailingPosition);
}

void TDataModuleImages::EditDictionaryAt(int index)
{
    const auto i = static_cast<std::size_t>(index);
    const TDictInfo& info = DictTable()[i];
    if (EditDictionary(DictOf(ORVDicts, info), info.dialogName(), m_items[i])) {
        RefreshCombos(index);
        emit DictionaryChanged(info.comboEditor());
    }
}

void TDataModuleImages::RefreshCombos(int index)
{
    const auto i = static_cast<std::size_t>(index);
    Prune(m_combos[i]);
    for (const QPointer<QComboBox>& combo : std::as_const(m_combos[i])) {
        FillCombo(combo, m_items[i]);
    }
}

TDataModuleImages* DataModuleImages()
{
    return g_instance;
}
