#pragma once

#include "uChoiceEditorItems.h"
#include "uNumberEditorItems.h"
#include "uPictureBox.h"
#include "uTextEditorItems.h"

#include <QString>

#include <map>
#include <memory>

class QAbstractItemModel;

// The editor items of the record windows (the item editor, the mint dialog, the mints window), by
// the names of the edit repository: formats, null texts, steps and lists as the views show them.
// The mint lookup takes its rows from a model of tblMints given by the window.
class TRecordEditItems
{
public:
    TRecordEditItems();
    ~TRecordEditItems();

    // The item of a repository name (edtText, Memo, lcbMints, cbMetalTypes, cbCoinTypes,
    // ImageComboBoxItemCountries, seYear, seQty, seMintage, seMM, seWeightG, seWeightOz, edCurrency,
    // edUsersCurrency, edExpectedPremium, deDate, cbNotNull, HyperLink, ImageCoinEdit, ImageMint,
    // repCustomTextEdit, repCustomNumberEdit, repCustomFloatEdit, cbPurity .. cbGradeService);
    // nullptr for another name.
    const TEditorItem* Item(const QString& name) const;
    // The rows of lcbMints: the model's keyColumn and nameColumn.
    void SetMintsModel(QAbstractItemModel* model, int keyColumn, int nameColumn);

private:
    std::map<QString, std::unique_ptr<TEditorItem>> m_items;
    TLookupEditorItem* m_mints = nullptr;
};
