#pragma once

#include <QMetaObject>
#include <QSize>
#include <QString>
#include <QVariant>

#include <functional>
#include <stdexcept>

class QPainter;
class QPoint;
class QStyleOptionViewItem;
class QWidget;

// An entry that is not a valid value of an editor item ("'mm' is not a valid number."). Thrown by
// TEditorItem::editorValue; the caller keeps the old value and reports text().
class TEditorError : public std::runtime_error
{
public:
    explicit TEditorError(const QString& text) : std::runtime_error(text.toStdString()), m_text(text) {}
    QString text() const { return m_text; }

private:
    QString m_text;
};

// How one kind of value is shown and edited. One item serves grid columns, card rows and
// property-grid rows alike, so a field looks the same everywhere. A program keeps its items in
// one repository and hands them to the views by field; the views do not own them, so an item
// lives as long as every view that shows it.
class TEditorItem
{
public:
    virtual ~TEditorItem() = default;

    // The text of a value in a cell, card row or property row; a null value gives "" (or the
    // item's null text).
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
    // The value the editor holds. Throws TEditorError with a clear text for an entry that is not
    // a valid value; the caller then keeps the old value.
    virtual QVariant editorValue(QWidget* editor) const
    {
        Q_UNUSED(editor);
        return {};
    }

    // Where the text of a value sits in its cell (numbers may stand right-aligned).
    virtual Qt::Alignment alignment() const { return Qt::AlignLeft | Qt::AlignVCenter; }
    // The size a value wants in a cell of the given option; an invalid size means one text line.
    virtual QSize sizeHint(const QStyleOptionViewItem& option, const QVariant& value) const
    {
        Q_UNUSED(option);
        Q_UNUSED(value);
        return {};
    }
    // A click into a shown value that changes it at once, with no editor (a check box toggles, a
    // star is picked). Returns true and sets result when the click at pos (in the coordinates of
    // option.rect) chooses a value.
    virtual bool valueFromClick(const QStyleOptionViewItem& option, const QPoint& pos,
                                const QVariant& current, QVariant* result) const
    {
        Q_UNUSED(option);
        Q_UNUSED(pos);
        Q_UNUSED(current);
        Q_UNUSED(result);
        return false;
    }
    // Calls slot when the editor's user picks a value (a list entry, a toggle, a star, the clear
    // key); typed text is finished by leaving the editor instead. Views use it to write picks at
    // once.
    virtual QMetaObject::Connection onValueChosen(QWidget* editor, std::function<void()> slot) const
    {
        Q_UNUSED(editor);
        Q_UNUSED(slot);
        return {};
    }
};
