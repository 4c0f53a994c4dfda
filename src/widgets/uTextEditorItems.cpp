#include "uTextEditorItems.h"

#include "uPaintHelpers.h"

#include <QCalendarWidget>
#include <QDateEdit>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QStyleOptionViewItem>

using namespace Qt::StringLiterals;

// ---- TTextEditorItem

QString TTextEditorItem::displayText(const QVariant& value) const
{
    if (value.isNull() || !value.isValid())
        return nullText();
    return value.toString();
}

bool TTextEditorItem::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QVariant& value) const
{
    if (!m_link || value.isNull())
        return false;
    painter->save();
    QFont font = option.font;
    font.setUnderline(true);
    painter->setFont(font);
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Link));
    const QRect area = option.rect.adjusted(4, 0, -4, 0);
    painter->drawText(area, int(VisualAlignment(option.direction, alignment())),
                      QFontMetrics(font).elidedText(displayText(value), Qt::ElideRight, area.width()));
    painter->restore();
    return true;
}

QWidget* TTextEditorItem::makeEditor(QWidget* parent) const
{
    auto* editor = new QLineEdit(parent);
    if (m_maxLength > 0)
        editor->setMaxLength(m_maxLength);
    editor->setPlaceholderText(m_placeholder);
    editor->setAlignment(alignment());
    return editor;
}

void TTextEditorItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    if (auto* edit = qobject_cast<QLineEdit*>(editor))
        edit->setText(value.isNull() ? QString() : value.toString());
}

QVariant TTextEditorItem::editorValue(QWidget* editor) const
{
    auto* edit = qobject_cast<QLineEdit*>(editor);
    if (edit == nullptr)
        return {};
    if (edit->text().isEmpty() && m_emptyIsNull)
        return {};
    return edit->text();
}

// ---- TMemoEditorItem

QString TMemoEditorItem::displayText(const QVariant& value) const
{
    if (value.isNull() || !value.isValid())
        return nullText();
    QString text = value.toString();
    text.replace(u"\r\n"_s, u" "_s);
    text.replace(u'\n', u' ');
    text.replace(u'\r', u' ');
    return text;
}

QWidget* TMemoEditorItem::makeEditor(QWidget* parent) const
{
    auto* editor = new QPlainTextEdit(parent);
    editor->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    editor->setTabChangesFocus(true);
    const QFontMetrics metrics(editor->font());
    editor->setMinimumHeight(metrics.lineSpacing() * m_editorLines + 2 * editor->frameWidth() +
                             int(editor->document()->documentMargin() * 2));
    return editor;
}

void TMemoEditorItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    if (auto* edit = qobject_cast<QPlainTextEdit*>(editor))
        edit->setPlainText(value.isNull() ? QString() : value.toString());
}

QVariant TMemoEditorItem::editorValue(QWidget* editor) const
{
    auto* edit = qobject_cast<QPlainTextEdit*>(editor);
    if (edit == nullptr || edit->toPlainText().isEmpty())
        return {};
    return edit->toPlainText();
}

// ---- TDateEditorItem

namespace {
// The date box's lowest date stands for null and shows the null text.
const QDate cNullDate(1752, 9, 14);
} // namespace

QDate TDateEditorItem::toDate(const QVariant& value)
{
    if (value.isNull() || !value.isValid())
        return {};
    if (value.typeId() == QMetaType::QDate)
        return value.toDate();
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime().date();
    return QDate::fromString(value.toString().left(10), Qt::ISODate);
}

QString TDateEditorItem::displayText(const QVariant& value) const
{
    const QDate date = toDate(value);
    if (!date.isValid())
        return value.isNull() || !value.isValid() ? nullText() : value.toString();
    return m_displayFormat.isEmpty() ? locale().toString(date, QLocale::ShortFormat)
                                     : locale().toString(date, m_displayFormat);
}

QWidget* TDateEditorItem::makeEditor(QWidget* parent) const
{
    auto* editor = new QDateEdit(parent);
    editor->setCalendarPopup(true);
    editor->setMinimumDate(cNullDate);
    editor->setSpecialValueText(nullText().isEmpty() ? u" "_s : nullText());
    editor->setDisplayFormat(m_displayFormat.isEmpty() ? locale().dateFormat(QLocale::ShortFormat)
                                                       : m_displayFormat);
    editor->setAlignment(alignment());
    return editor;
}

void TDateEditorItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    if (auto* edit = qobject_cast<QDateEdit*>(editor)) {
        const QDate date = toDate(value);
        edit->setDate(date.isValid() ? date : cNullDate);
    }
}

QVariant TDateEditorItem::editorValue(QWidget* editor) const
{
    auto* edit = qobject_cast<QDateEdit*>(editor);
    if (edit == nullptr || edit->date() == cNullDate)
        return {};
    return edit->date();
}

QMetaObject::Connection TDateEditorItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    auto* edit = qobject_cast<QDateEdit*>(editor);
    if (edit == nullptr || edit->calendarWidget() == nullptr)
        return {};
    return QObject::connect(edit->calendarWidget(), &QCalendarWidget::clicked, edit, std::move(slot));
}
