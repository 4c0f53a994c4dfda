#pragma once

#include "uPictureEdit.h"
#include "uPictureEditorItem.h"

#include <functional>

// A picture that is edited in place: shown like TPictureEditorItem, edited in a TPictureEdit with
// its menu, its empty text and hint, a "Show full size" item and the program's validator. A
// double-click or the item opens the program's viewer (setShowFullSize) on the control's picture.
// Every change of the picture (cut, paste, delete, load) is a pick: onValueChosen fires at once.
class TPictureControlItem : public TPictureEditorItem
{
public:
    TPictureControlItem() { setReadOnly(false); }

    // The empty control's text, the text of the full-size item, the control's tooltip.
    void setTexts(const QString& emptyText, const QString& showFullSizeText, const QString& hint);
    QString emptyText() const { return m_emptyText; }
    QString showFullSizeText() const { return m_showFullSizeText; }
    void setValidator(TPictureEdit::TValidator validator) { m_validator = std::move(validator); }
    // Opens the viewer on bytes; editor is the control it was asked from. None: no menu item.
    void setShowFullSize(std::function<void(const QByteArray& bytes, QWidget* editor)> show)
    {
        m_showFullSize = std::move(show);
    }

    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

protected:
    QWidget* makeEditor(QWidget* parent) const override;
    QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const override;

private:
    QString m_emptyText;
    QString m_showFullSizeText;
    QString m_hint;
    TPictureEdit::TValidator m_validator;
    std::function<void(const QByteArray&, QWidget*)> m_showFullSize;
};
