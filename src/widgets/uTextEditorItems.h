#pragma once

#include "uBasicEditorItem.h"

#include <QDate>

// One line of text in a QLineEdit. An empty entry is null unless emptyIsNull is off. As a link the
// text is drawn in the palette's link colour, underlined.
class TTextEditorItem : public TBasicEditorItem
{
public:
    int maxLength() const { return m_maxLength; }
    void setMaxLength(int length) { m_maxLength = length; }
    // The grey prompt of an empty editor ("Best guess (can be negative amount)").
    QString placeholderText() const { return m_placeholder; }
    void setPlaceholderText(const QString& text) { m_placeholder = text; }
    bool emptyIsNull() const { return m_emptyIsNull; }
    void setEmptyIsNull(bool on) { m_emptyIsNull = on; }
    bool linkStyle() const { return m_link; }
    void setLinkStyle(bool on) { m_link = on; }

    QString displayText(const QVariant& value) const override;
    bool paint(QPainter* painter, const QStyleOptionViewItem& option, const QVariant& value) const override;
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

protected:
    QWidget* makeEditor(QWidget* parent) const override;

private:
    int m_maxLength = 0;
    QString m_placeholder;
    bool m_emptyIsNull = true;
    bool m_link = false;
};

// Text over several lines: shown on one line (line breaks as blanks), edited in a QPlainTextEdit
// with a vertical scroll bar that stands at least `editorLines` lines high.
class TMemoEditorItem : public TBasicEditorItem
{
public:
    int editorLines() const { return m_editorLines; }
    void setEditorLines(int lines) { m_editorLines = lines; }

    QString displayText(const QVariant& value) const override;
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

protected:
    QWidget* makeEditor(QWidget* parent) const override;

private:
    int m_editorLines = 4;
};

// A date (QDate, or a text in ISO form "yyyy-MM-dd"), shown in the locale's short form or
// through displayFormat (a QDate format), edited in a date box with a calendar. Null shows the
// null text; the clear key empties the value.
class TDateEditorItem : public TBasicEditorItem
{
public:
    QString displayFormat() const { return m_displayFormat; }
    void setDisplayFormat(const QString& format) { m_displayFormat = format; }

    QString displayText(const QVariant& value) const override;
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

    static QDate toDate(const QVariant& value);

protected:
    QWidget* makeEditor(QWidget* parent) const override;
    QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const override;

private:
    QString m_displayFormat;
};
