#pragma once

#include <QHash>
#include <QString>

#include <memory>

class QAbstractItemModel;
class TEditorItem;

// The presentation items of the collection views and the details pane, by edit repository name
// (seYear, edUsersCurrency, cbMetalTypes, ImageItemThumb ...): how each field's value is shown as
// text, painted and edited in place. One set serves all five views and vgDetails, so a field looks
// the same everywhere. WeightText is the weight text of the views that show WeightToText.
class TViewEditorItems
{
public:
    TViewEditorItems();
    ~TViewEditorItems();

    // The item of that name; the plain text item for an unknown or empty name.
    const TEditorItem* Item(const QString& name) const;
    // The WeightG cells of the views with the weight text.
    const TEditorItem* WeightText() const;
    // Sets the texts that come from the language (metals, types, "N/A") and the user's currency.
    void Retranslate();
    // The mints for lcbMints: keys in keyColumn, names in nameColumn.
    void SetMintsModel(QAbstractItemModel* model, int keyColumn, int nameColumn);

private:
    template <typename T> T* Add(const QString& name);

    QHash<QString, TEditorItem*> m_items;
    std::vector<std::unique_ptr<TEditorItem>> m_owned;
    TEditorItem* m_text = nullptr;
    TEditorItem* m_weightText = nullptr;
};
