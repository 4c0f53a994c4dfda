#pragma once

#include "uBasicEditorItem.h"

#include <QHash>
#include <QIcon>
#include <QList>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QStringList>

#include <memory>

class QAbstractItemModel;
class TButtonComboBox;

// A check box over a value: checkedValue (1) when on, uncheckedValue (0) when off. Null reads
// unchecked (or shows partly checked with nullShowsPartial). A click into the cell toggles it.
class TCheckEditorItem : public TBasicEditorItem
{
public:
    QVariant checkedValue() const { return m_checked; }
    QVariant uncheckedValue() const { return m_unchecked; }
    void setValues(const QVariant& checked, const QVariant& unchecked);
    bool nullShowsPartial() const { return m_nullPartial; }
    void setNullShowsPartial(bool on) { m_nullPartial = on; }

    bool isChecked(const QVariant& value) const;
    QString displayText(const QVariant& value) const override;
    bool paint(QPainter* painter, const QStyleOptionViewItem& option, const QVariant& value) const override;
    bool valueFromClick(const QStyleOptionViewItem& option, const QPoint& pos, const QVariant& current,
                        QVariant* result) const override;
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

protected:
    QWidget* makeEditor(QWidget* parent) const override;
    QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const override;

private:
    QVariant m_checked = 1;
    QVariant m_unchecked = 0;
    bool m_nullPartial = false;
};

// One entry of a list item: the stored value, its text and an optional picture.
struct TListEntry
{
    QVariant value;
    QString text;
    QIcon icon;
};

// A value picked from a fixed list of (value, text, picture) entries, shown as its text with the
// picture in front. A value that no entry holds shows defaultText when set (else the null text
// for null and the value itself otherwise). Numbers match across types (1 matches 1.0 and 1LL).
class TListEditorItem : public TBasicEditorItem
{
public:
    void setEntries(const QList<TListEntry>& entries);
    void addEntry(const QVariant& value, const QString& text, const QIcon& icon = {});
    QList<TListEntry> entries() const { return m_entries; }
    // Replaces the text of the entry holding value (a change of language).
    void setEntryText(const QVariant& value, const QString& text);
    QString defaultText() const { return m_defaultText; }
    void setDefaultText(const QString& text) { m_defaultText = text; }
    // The editor offers the entries sorted by text (the stored order stays).
    bool sorted() const { return m_sorted; }
    void setSorted(bool on) { m_sorted = on; }

    // The index of the entry holding value, or -1.
    int entryIndex(const QVariant& value) const;
    QString displayText(const QVariant& value) const override;
    bool paint(QPainter* painter, const QStyleOptionViewItem& option, const QVariant& value) const override;
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

    static QString valueKey(const QVariant& value);

protected:
    QWidget* makeEditor(QWidget* parent) const override;
    QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const override;

private:
    void rebuildIndex();

    QList<TListEntry> m_entries;
    QHash<QString, int> m_index;
    QString m_defaultText;
    bool m_sorted = false;
};

// Free text with a list to pick from and an optional button beside it (a dictionary edited in a
// dialog of the program). The list comes from a provider that is read again whenever the list
// opens, so a list changed by the button shows at once. An empty entry is null.
class TComboEditorItem : public TBasicEditorItem
{
public:
    void setItems(const QStringList& items);
    void setItemsProvider(std::function<QStringList()> provider) { m_provider = std::move(provider); }
    QStringList items() const;
    // The button: onClick gets the editor (a TButtonComboBox); an empty function removes it.
    void setButton(std::function<void(QWidget* editor)> onClick, const QIcon& icon = {},
                   const QString& toolTip = {});
    bool hasButton() const { return bool(m_onButton); }

    QString displayText(const QVariant& value) const override;
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

protected:
    QWidget* makeEditor(QWidget* parent) const override;
    QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const override;

private:
    QStringList m_items;
    std::function<QStringList()> m_provider;
    std::function<void(QWidget*)> m_onButton;
    QIcon m_buttonIcon;
    QString m_buttonToolTip;
};

// A key looked up in a model: the value is the key column's value of a row, the text that of the
// list column. Typing completes a name; a name that no row has is refused. Optional button as
// with TComboEditorItem. Texts are looked up through a table that is rebuilt when the model
// changes.
class TLookupEditorItem : public TBasicEditorItem
{
public:
    TLookupEditorItem();
    ~TLookupEditorItem() override;

    // keyRole reads the key (EditRole by default), the list column is read for display.
    void setModel(QAbstractItemModel* model, int keyColumn, int listColumn, int keyRole = Qt::EditRole);
    QAbstractItemModel* model() const;
    bool sorted() const { return m_sorted; }
    void setSorted(bool on) { m_sorted = on; }
    void setButton(std::function<void(QWidget* editor)> onClick, const QIcon& icon = {},
                   const QString& toolTip = {});

    // The text of key, or an empty text when no row has it.
    QString textOf(const QVariant& key) const;
    QString displayText(const QVariant& value) const override;
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

protected:
    QWidget* makeEditor(QWidget* parent) const override;
    QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const override;

private:
    void ensureTable() const;

    QPointer<QAbstractItemModel> m_model;
    int m_keyColumn = 0;
    int m_listColumn = 0;
    int m_keyRole = Qt::EditRole;
    bool m_sorted = true;
    std::function<void(QWidget*)> m_onButton;
    QIcon m_buttonIcon;
    QString m_buttonToolTip;
    std::unique_ptr<QObject> m_watcher;
    mutable bool m_stale = true;
    mutable QHash<QString, QString> m_texts;
};

// Several entries of a list checked at once. The value is a flag text with one place per entry,
// "1" for checked and "0" for not ("101000"), or with indexList on the checked indexes joined by
// a comma ("0,2"). Null and an empty text check nothing. Shown as the checked texts joined by
// ", ", or the empty text when none is checked.
class TCheckListEditorItem : public TBasicEditorItem
{
public:
    void setItems(const QStringList& texts) { m_texts = texts; }
    QStringList items() const { return m_texts; }
    QString emptyText() const { return m_emptyText; }
    void setEmptyText(const QString& text) { m_emptyText = text; }
    bool indexList() const { return m_indexList; }
    void setIndexList(bool on) { m_indexList = on; }

    QList<bool> checkedStates(const QVariant& value) const;
    QVariant valueOf(const QList<bool>& states) const;
    QString displayText(const QVariant& value) const override;
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

protected:
    QWidget* makeEditor(QWidget* parent) const override;
    QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const override;

private:
    QStringList m_texts;
    QString m_emptyText;
    bool m_indexList = false;
};
