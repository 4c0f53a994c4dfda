#pragma once

#include "uEditorItem.h"

#include <QKeySequence>
#include <QLocale>
#include <QObject>

// What the generic editor items share: a text for null values, the alignment of the shown text, a
// read-only switch (no editor is made), the clear key that empties the value (Ctrl+Backspace unless
// set otherwise; an empty sequence turns it off) and the locale of shown and typed numbers and
// dates (the default locale unless set).
class TBasicEditorItem : public TEditorItem
{
public:
    QString nullText() const { return m_nullText; }
    void setNullText(const QString& text) { m_nullText = text; }

    Qt::Alignment alignment() const override { return m_alignment; }
    void setAlignment(Qt::Alignment alignment) { m_alignment = alignment; }

    bool isReadOnly() const { return m_readOnly; }
    void setReadOnly(bool readOnly) { m_readOnly = readOnly; }

    QKeySequence clearKey() const { return m_clearKey; }
    void setClearKey(const QKeySequence& key) { m_clearKey = key; }

    QLocale locale() const { return m_hasLocale ? m_locale : QLocale(); }
    void setLocale(const QLocale& locale);

    // Makes the item's editor (nullptr when read-only) and gives it the clear key.
    QWidget* createEditor(QWidget* parent) const final;
    QMetaObject::Connection onValueChosen(QWidget* editor, std::function<void()> slot) const override;

protected:
    virtual QWidget* makeEditor(QWidget* parent) const = 0;
    // The editor's own "a value was picked" signal; none by default.
    virtual QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const;
    // Empties the editor when the clear key is pressed; by default setEditorValue(editor, null).
    virtual void clearEditor(QWidget* editor) const { setEditorValue(editor, QVariant()); }

private:
    QString m_nullText;
    Qt::Alignment m_alignment = Qt::AlignLeft | Qt::AlignVCenter;
    bool m_readOnly = false;
    QKeySequence m_clearKey{Qt::CTRL | Qt::Key_Backspace};
    QLocale m_locale;
    bool m_hasLocale = false;
};

// Watches an editor for the clear key of its item and empties it; emits cleared() afterwards.
// Made by TBasicEditorItem::createEditor as a child of the editor.
class TClearKeyFilter : public QObject
{
    Q_OBJECT
public:
    TClearKeyFilter(QWidget* editor, const QKeySequence& key, std::function<void()> clear);

signals:
    void cleared();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QKeySequence m_key;
    std::function<void()> m_clear;
};
