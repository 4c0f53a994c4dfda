#pragma once

#include <QString>
#include <QVariant>

class QPainter;
class QStyleOptionViewItem;
class QWidget;

// How one kind of value is shown and edited. One item serves grid columns, card rows and
// property-grid rows alike, so a field looks the same everywhere. A program keeps its items in
// one repository and hands them to the views by field.
class TEditorItem
{
public:
    virtual ~TEditorItem() = default;

    // The text of a value in a cell, card row or property row; a null value gives "".
    virtual QString displayText(const QVariant& value) const = 0;
    // Draws the value itself (stars, a check box, a picture); false lets the caller draw
    // displayText().
    virtual bool paint(QPainter* painter, const QStyleOptionViewItem& option, const QVariant& value) const
    {
        Q_UNUSED(painter);
        Q_UNUSED(option);
        Q_UNUSED(value);
        return false;
    }
    // Picture items show decoded image bytes instead of a text.
    virtual bool isPicture() const { return false; }

    // The in-place editor, or nullptr when values of this item are not edited in place.
    virtual QWidget* createEditor(QWidget* parent) const
    {
        Q_UNUSED(parent);
        return nullptr;
    }
    virtual void setEditorValue(QWidget* editor, const QVariant& value) const
    {
        Q_UNUSED(editor);
        Q_UNUSED(value);
    }
    // The value the editor holds. Throws an exception with a clear text for an entry that is not
    // a valid value; the caller then keeps the old value.
    virtual QVariant editorValue(QWidget* editor) const
    {
        Q_UNUSED(editor);
        return {};
    }
};
