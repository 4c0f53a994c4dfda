#include "uFieldBinder.h"

#include "uDBDataset.h"
#include "uDBField.h"
#include "uEditorItem.h"
#include "uWidgetTexts.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QWidget>

namespace {

// Values equal for a field: nulls alike, and numbers or texts by value.
bool SameValue(const QVariant& a, const QVariant& b)
{
    if (a.isNull() || b.isNull()) {
        return a.isNull() == b.isNull();
    }
    return a == b;
}

} // namespace

TFieldBinder::TFieldBinder(TDBDataset& dataset, QObject* parent) : QObject(parent), m_dataset(dataset) {}

QWidget* TFieldBinder::Bind(const TEditorItem* item, const QString& fieldName, QWidget* parent, QLabel* label)
{
    QWidget* editor = item ? item->createEditor(parent) : nullptr;
    if (editor) {
        editor->setObjectName(fieldName);
        BindEditor(editor, item, fieldName, label);
    }
    return editor;
}

void TFieldBinder::BindEditor(QWidget* editor, const TEditorItem* item, const QString& fieldName,
                              QLabel* label)
{
    TBinding binding;
    binding.Editor = editor;
    binding.Item = item;
    binding.FieldName = fieldName;
    binding.Label = label;
    if (label) {
        label->setBuddy(editor);
    }
    m_bindings.append(binding);
    // Typed entries end when the focus leaves the editor or one of its parts.
    editor->installEventFilter(this);
    const QList<QWidget*> parts = editor->findChildren<QWidget*>();
    for (QWidget* part : parts) {
        part->installEventFilter(this);
    }
    QPointer<QWidget> guarded(editor);
    item->onValueChosen(editor, [this, guarded] {
        if (guarded && !m_loading) {
            Commit(guarded);
        }
    });
}

const TFieldBinder::TBinding* TFieldBinder::BindingOf(const QObject* object) const
{
    for (const QObject* o = object; o; o = o->parent()) {
        for (const TBinding& binding : m_bindings) {
            if (binding.Editor == o) {
                return &binding;
            }
        }
    }
    return nullptr;
}

QWidget* TFieldBinder::Editor(const QString& fieldName) const
{
    for (const TBinding& binding : m_bindings) {
        if (binding.FieldName == fieldName) {
            return binding.Editor;
        }
    }
    return nullptr;
}

QLabel* TFieldBinder::Label(const QString& fieldName) const
{
    for (const TBinding& binding : m_bindings) {
        if (binding.FieldName == fieldName) {
            return binding.Label;
        }
    }
    return nullptr;
}

QStringList TFieldBinder::FieldNames() const
{
    QStringList names;
    for (const TBinding& binding : m_bindings) {
        names << binding.FieldName;
    }
    return names;
}

void TFieldBinder::Show(const TBinding& binding)
{
    if (!binding.Editor) {
        return;
    }
    const TDBField* field = m_dataset.active() ? m_dataset.findField(binding.FieldName) : nullptr;
    const bool hasRecord = field && !m_dataset.isEmpty();
    binding.Item->setEditorValue(binding.Editor, hasRecord ? field->value() : QVariant());
    binding.Editor->setEnabled(hasRecord);
}

void TFieldBinder::Load()
{
    m_loading = true;
    for (const TBinding& binding : std::as_const(m_bindings)) {
        Show(binding);
    }
    m_loading = false;
}

bool TFieldBinder::Write(const TBinding& binding, bool focusMoving)
{
    if (!binding.Editor || !m_dataset.active() || m_dataset.isEmpty()) {
        return true;
    }
    TDBField* field = m_dataset.findField(binding.FieldName);
    if (!field) {
        return true;
    }
    QVariant value;
    try {
        value = binding.Item->editorValue(binding.Editor);
    } catch (const TEditorError& error) {
        // A box opened while the focus moves would fight the move: it comes on the next turn.
        if (focusMoving) {
            ReportEditorErrorLater(binding.Editor, error.text());
        } else {
            ReportEditorError(binding.Editor, error.text());
        }
        m_loading = true;
        binding.Item->setEditorValue(binding.Editor, field->value());
        m_loading = false;
        return false;
    }
    if (SameValue(value, field->value())) {
        return true;
    }
    if (m_dataset.state() == TDatasetState::Browse) {
        m_dataset.edit();
    }
    field->setValue(value);
    // Fields that write each other (the weights) show their new values too.
    m_loading = true;
    for (const TBinding& other : std::as_const(m_bindings)) {
        if (other.Editor != binding.Editor) {
            Show(other);
        }
    }
    m_loading = false;
    emit FieldEdited(binding.FieldName, field->value());
    return true;
}

bool TFieldBinder::Commit(QWidget* editor)
{
    const TBinding* binding = BindingOf(editor);
    return binding ? Write(*binding) : true;
}

void TFieldBinder::CommitAll()
{
    // Only the editor with the focus can hold an entry not yet written; the others show their
    // fields (maybe rounded), and writing them back would change what the user never touched.
    for (const TBinding& binding : std::as_const(m_bindings)) {
        if (!binding.Editor) {
            continue;
        }
        QWidget* focus = binding.Editor->window()->focusWidget();
        if (focus && (focus == binding.Editor || binding.Editor->isAncestorOf(focus))) {
            Commit(binding.Editor);
            return;
        }
    }
}

void TFieldBinder::TranslateLabels()
{
    for (const TBinding& binding : std::as_const(m_bindings)) {
        if (!binding.Label) {
            continue;
        }
        if (const TDBField* field = m_dataset.findField(binding.FieldName)) {
            binding.Label->setText(field->displayLabel());
        }
    }
}

bool TFieldBinder::eventFilter(QObject* watched, QEvent* event)
{
    if (m_loading) {
        return false;
    }
    if (event->type() == QEvent::FocusOut) {
        const auto* focus = static_cast<QFocusEvent*>(event);
        // A drop-down list or a menu of the editor takes the focus for a while only.
        if (focus->reason() != Qt::PopupFocusReason) {
            if (const TBinding* binding = BindingOf(watched)) {
                QWidget* now = binding->Editor ? binding->Editor->window()->focusWidget() : nullptr;
                if (!now || !binding->Editor->isAncestorOf(now)) {
                    Write(*binding, true);
                }
            }
        }
    } else if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
            !watched->inherits("QPlainTextEdit") && !watched->inherits("QTextEdit")) {
            if (const TBinding* binding = BindingOf(watched)) {
                if (!binding->Editor->inherits("QPlainTextEdit") && !binding->Editor->inherits("QTextEdit")) {
                    Write(*binding);
                }
            }
        }
    }
    return false;
}
