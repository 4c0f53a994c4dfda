#pragma once

#include "uChoiceEditorItems.h"
#include "uNumberEditorItems.h"
#include "uPictureControlItem.h"
#include "uTextEditorItems.h"

#include <QString>

#include <map>
#include <memory>

class QAbstractItemModel;

// The editor items of the record windows (the item editor, the mint dialog, the mints window), by
// the names of the edit repository. The repository's own items serve wherever it is there, so a
// field looks as it does in the views; without it (tests of a window alone) items of the same
// settings are made here. The mint lookup is always the window's own: it takes its rows from the
// window's model of tblMints.
class TRecordEditItems
{
public:
    TRecordEditItems();
    ~TRecordEditItems();

    // The item of a repository name (edText, Memo, lcbMints, cbMetalTypes, cbCoinTypes,
    // ImageComboBoxItemCountries, seYear, seQty, seMintage, seMM, seWeightG, seWeightOz, edCurrency,
    // edUsersCurrency, deDate, cbNotNull, HyperLink, ImageCoinEdit, ImageMint, repCustomTextEdit,
    // repCustomNumberEdit, repCustomFloatEdit, cbPurity .. cbGradeService); nullptr for another
    // name.
    const TEditorItem* Item(const QString& name) const;
    // The rows of lcbMints: the model's keyColumn and nameColumn.
    void SetMintsModel(QAbstractItemModel* model, int keyColumn, int nameColumn);

private:
    std::map<QString, std::unique_ptr<TEditorItem>> m_items;
    TLookupEditorItem* m_mints = nullptr;
};
