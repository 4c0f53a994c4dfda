#include "uNumberEditorItems.h"

#include "uNumberEdit.h"

void TNumberEditorItem::setRange(double minimum, double maximum)
{
    m_minimum = minimum;
    m_maximum = std::max(minimum, maximum);
}

QString TNumberEditorItem::displayText(const QVariant& value) const
{
    if (value.isNull() || !value.isValid())
        return nullText();
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok)
        return value.toString();
    if (m_displayFunction)
        return m_displayFunction(number);
    return m_displayFormat.format(number, locale());
}

QWidget* TNumberEditorItem::makeEditor(QWidget* parent) const
{
    auto* editor = new TNumberEdit(parent);
    editor->setWholeNumbers(m_whole);
    editor->setRange(m_minimum, m_maximum);
    editor->setStep(m_step);
    editor->setLargeStep(m_largeStep);
    editor->setDisplayFormat(m_displayFormat);
    editor->setEditFormat(m_editFormat);
    editor->setNullText(nullText());
    editor->setAlignment(alignment());
    return editor;
}

void TNumberEditorItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    if (auto* edit = qobject_cast<TNumberEdit*>(editor))
        edit->setValue(value);
}

QVariant TNumberEditorItem::editorValue(QWidget* editor) const
{
    auto* edit = qobject_cast<TNumberEdit*>(editor);
    if (edit == nullptr)
        return {};
    QString error;
    if (!edit->commitText(&error))
        throw TEditorError(error);
    return edit->value();
}

QMetaObject::Connection TNumberEditorItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    auto* edit = qobject_cast<TNumberEdit*>(editor);
    if (edit == nullptr)
        return {};
    return QObject::connect(edit, &TNumberEdit::valueChosen, edit, std::move(slot));
}
