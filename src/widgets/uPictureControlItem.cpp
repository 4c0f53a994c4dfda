#include "uPictureControlItem.h"

#include <QAction>

using namespace Qt::StringLiterals;

void TPictureControlItem::setTexts(const QString& emptyText, const QString& showFullSizeText,
                                   const QString& hint)
{
    m_emptyText = emptyText;
    m_showFullSizeText = showFullSizeText;
    m_hint = hint;
}

QWidget* TPictureControlItem::makeEditor(QWidget* parent) const
{
    auto* editor = new TPictureEdit(parent);
    editor->setEmptyText(m_emptyText);
    editor->setToolTip(m_hint);
    editor->setValidator(m_validator);
    if (m_showFullSize) {
        auto show = m_showFullSize;
        auto* action = new QAction(m_showFullSizeText, editor);
        action->setObjectName(u"actPictureShowFullSize"_s);
        QObject::connect(action, &QAction::triggered, editor, [editor, show] {
            if (editor->hasPicture())
                show(editor->picture(), editor);
        });
        // Enabled only while there is a picture: set each time the menu is built.
        QObject::connect(editor, &TPictureEdit::pictureChanged, action,
                         [editor, action] { action->setEnabled(editor->hasPicture()); });
        action->setEnabled(false);
        editor->addMenuAction(action);
        QObject::connect(editor, &TPictureEdit::showFullSizeRequested, editor,
                         [editor, show] { show(editor->picture(), editor); });
    }
    return editor;
}

void TPictureControlItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    auto* edit = qobject_cast<TPictureEdit*>(editor);
    if (edit == nullptr)
        return;
    edit->setPicture(value.isNull() ? QByteArray() : value.toByteArray());
    if (QAction* action = edit->findChild<QAction*>(u"actPictureShowFullSize"_s))
        action->setEnabled(edit->hasPicture());
}

QVariant TPictureControlItem::editorValue(QWidget* editor) const
{
    auto* edit = qobject_cast<TPictureEdit*>(editor);
    if (edit == nullptr || !edit->hasPicture())
        return {};
    return edit->picture();
}

QMetaObject::Connection TPictureControlItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    auto* edit = qobject_cast<TPictureEdit*>(editor);
    return edit ? QObject::connect(edit, &TPictureEdit::pictureChanged, edit, std::move(slot))
                : QMetaObject::Connection();
}
