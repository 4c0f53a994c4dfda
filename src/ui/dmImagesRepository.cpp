// The edit repository of TDataModuleImages: one editor item per definition of RepositoryItemDefs().

#include "dmImages.h"

#include "frmPic.h"

#include "uChoiceEditorItems.h"
#include "uCountries.h"
#include "uCustomFields.h"
#include "uEditRepository.h"
#include "uItemTexts.h"
#include "uNumberEditorItems.h"
#include "uPictureControlItem.h"
#include "uPictureEditorItem.h"
#include "uPictures.h"
#include "uRatingEditorItem.h"
#include "uTextEditorItems.h"
#include "uValuation.h"
#include "uWidgetTexts.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QAction>
#include <QIcon>
#include <QPixmap>

using namespace Qt::StringLiterals;

namespace {

// The text of a language key, or fallback when the language has none.
QString TextOr(const QString& key, const QString& fallback)
{
    if (key.isEmpty()) {
        return fallback;
    }
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

void ApplyCommon(TBasicEditorItem& item, const TRepositoryItemDef& def)
{
    item.setAlignment(def.AlignLeft ? Qt::AlignLeft | Qt::AlignVCenter : Qt::AlignRight | Qt::AlignVCenter);
    if (def.ReadOnly) {
        item.setReadOnly(true);
    }
}

void ApplyNumber(TNumberEditorItem& item, const TRepositoryItemDef& def)
{
    item.setRange(def.Minimum, def.Maximum);
    item.setStep(def.Step);
    item.setLargeStep(def.LargeStep);
    const QString format = TextOr(def.FormatKey, def.Format);
    item.setDisplayFormat(format);
    item.setEditFormat(def.FormatWhileEditing ? format : QString());
    if (def.UsersCurrency) {
        item.setDisplayFunction([](double value) { return FormatUsersCurrency(value, Currency); });
    }
    item.setNullText(TextOr(def.NullTextKey, QString()));
}

bool NoCountry(const QVariant& value)
{
    return value.isNull() || !value.isValid() || value.toString().isEmpty();
}

// The countries: the row "Empty" in the list stands for no country, and no country shows the
// default text (N/A) everywhere else.
class TCountryListItem : public TListEditorItem
{
public:
    QString displayText(const QVariant& value) const override
    {
        return NoCountry(value) ? defaultText() : TListEditorItem::displayText(value);
    }
    bool paint(QPainter* painter, const QStyleOptionViewItem& option, const QVariant& value) const override
    {
        return NoCountry(value) ? false : TListEditorItem::paint(painter, option, value);
    }
};

// A clear picture of a flag's size, so that names without a flag line up with the others.
QIcon NoFlagIcon()
{
    QPixmap pixmap(16, 11);
    pixmap.fill(Qt::transparent);
    return QIcon(pixmap);
}

QList<TListEntry> CountryEntries()
{
    QList<TListEntry> entries;
    const QIcon noFlag = NoFlagIcon();
    // The row for no country comes first.
    entries.append({QString(), u"Empty"_s, QIcon()});
    for (const TCountry& country : Countries()) {
        entries.append(
            {country.Code, country.Name, country.FlagPath.isEmpty() ? QIcon() : QIcon(country.FlagPath)});
    }
    return entries;
}

} // namespace

void TDataModuleImages::CreateRepositoryItems()
{
    for (const TRepositoryItemDef& def : RepositoryItemDefs()) {
        std::unique_ptr<TBasicEditorItem> item;
        switch (def.Kind) {
        case TRepositoryItemKind::Picture: {
            auto picture = std::make_unique<TPictureEditorItem>();
            picture->setStretchSmall(false);
            item = std::move(picture);
            break;
        }
        case TRepositoryItemKind::PictureEdit: {
            auto control = std::make_unique<TPictureControlItem>();
            control->setValidator([](const QByteArray& bytes) { CheckAcceptedPicture(bytes); });
            control->setShowFullSize([](const QByteArray& bytes, QWidget* editor) {
                TShowPictureForm::ShowPicture(bytes, TPictureViewerSource::ItemEditor, editor);
            });
            TPictureEdit::setLoadPatterns(AcceptedPicturePatterns());
            item = std::move(control);
            break;
        }
        case TRepositoryItemKind::List: {
            std::unique_ptr<TListEditorItem> list;
            if (def.Name == u"ImageComboBoxItemCountries"_s) {
                list = std::make_unique<TCountryListItem>();
            } else {
                list = std::make_unique<TListEditorItem>();
            }
            if (def.Name == u"ImageComboBoxItemCountries"_s) {
                list->setEntries(CountryEntries());
            } else if (def.Name == u"cbMetalTypes"_s) {
                for (int m = 0; m < MetalCount; ++m) {
                    list->addEntry(m, MetalToText(m));
                }
            } else if (def.Name == u"cbCoinTypes"_s) {
                for (int t = 0; t < CoinTypeCount; ++t) {
                    list->addEntry(t, CoinTypeToText(t));
                }
            } else if (def.Name == u"cbCustomFields"_s) {
                const QStringList texts = CustomFieldDataTypeTexts();
                for (int code = 0; code < texts.size(); ++code) {
                    list->addEntry(code, texts.at(code));
                }
            }
            item = std::move(list);
            break;
        }
        case TRepositoryItemKind::CheckList: {
            auto list = std::make_unique<TCheckListEditorItem>();
            list->setIndexList(true);
            if (def.Name == u"ccbMetals"_s) {
                list->setItems(MetalShortTexts());
            } else if (def.Name == u"ccbCoinTypes"_s) {
                QStringList texts;
                for (int t = 0; t < CoinTypeCount; ++t) {
                    texts << CoinTypeToText(t);
                }
                list->setItems(texts);
            } else {
                list->setItems(WeightCheckListTexts());
            }
            list->setEmptyText(u"Any"_s);
            item = std::move(list);
            break;
        }
        case TRepositoryItemKind::Lookup: {
            auto lookup = std::make_unique<TLookupEditorItem>();
            lookup->setSorted(true);
            QAction* action = m_actEditMints;
            lookup->setButton([action](QWidget*) { action->trigger(); }, QIcon(), action->text());
            item = std::move(lookup);
            break;
        }
        case TRepositoryItemKind::Combo: {
            auto combo = std::make_unique<TComboEditorItem>();
            if (const TDictInfo* info = FindDict(def.Name)) {
                const auto index = static_cast<std::size_t>(info - DictTable().data());
                combo->setItemsProvider([this, index] { return m_items[index]; });
                QAction* action = m_actions[index];
                combo->setButton([action](QWidget*) { action->trigger(); }, QIcon(), action->text());
            }
            item = std::move(combo);
            break;
        }
        case TRepositoryItemKind::Integer:
            item = std::make_unique<TIntegerEditorItem>();
            break;
        case TRepositoryItemKind::Float:
            item = std::make_unique<TFloatEditorItem>();
            break;
        case TRepositoryItemKind::Rating: {
            auto rating = std::make_unique<TRatingEditorItem>();
            rating->setStarCount(int(def.Maximum));
            rating->setStep(def.Step);
            item = std::move(rating);
            break;
        }
        case TRepositoryItemKind::Check:
            item = std::make_unique<TCheckEditorItem>();
            break;
        case TRepositoryItemKind::Memo:
            item = std::make_unique<TMemoEditorItem>();
            break;
        case TRepositoryItemKind::HyperLink: {
            auto link = std::make_unique<TTextEditorItem>();
            link->setLinkStyle(true);
            item = std::move(link);
            break;
        }
        case TRepositoryItemKind::Label:
        case TRepositoryItemKind::Text:
            item = std::make_unique<TTextEditorItem>();
            break;
        case TRepositoryItemKind::Date:
            item = std::make_unique<TDateEditorItem>();
            break;
        }
        ApplyCommon(*item, def);
        m_repository[def.Name] = std::move(item);
    }
    TranslateRepository();
}

TEditorItem* TDataModuleImages::Item(const QString& name) const
{
    const auto it = m_repository.find(name);
    return it == m_repository.end() ? nullptr : it->second.get();
}

TEditorItem* TDataModuleImages::FieldItem(const QString& fieldName) const
{
    return Item(FieldEditorName(fieldName));
}

QWidget* TDataModuleImages::CreateFieldEditor(const QString& fieldName, QWidget* parent) const
{
    if (FieldIsDisplayOnly(fieldName)) {
        return nullptr;
    }
    TEditorItem* item = FieldItem(fieldName);
    QWidget* editor = item ? item->createEditor(parent) : nullptr;
    if (editor) {
        editor->setObjectName(fieldName);
    }
    return editor;
}

bool TDataModuleImages::PostsAtOnce(const QString& itemName)
{
    const TRepositoryItemDef* def = FindRepositoryItem(itemName);
    return def && def->PostsAtOnce;
}

void TDataModuleImages::TranslateRepository()
{
    const QString any = TextOr(u"cSAny"_s, u"Any"_s);
    for (const TRepositoryItemDef& def : RepositoryItemDefs()) {
        TEditorItem* base = Item(def.Name);
        if (auto* number = dynamic_cast<TNumberEditorItem*>(base)) {
            ApplyNumber(*number, def);
        } else if (auto* basic = dynamic_cast<TBasicEditorItem*>(base)) {
            basic->setNullText(TextOr(def.NullTextKey, basic->nullText()));
        }
    }
    if (auto* metals = dynamic_cast<TListEditorItem*>(Item(u"cbMetalTypes"_s))) {
        for (int m = 0; m < MetalCount; ++m) {
            metals->setEntryText(m, MetalToText(m));
        }
    }
    if (auto* types = dynamic_cast<TListEditorItem*>(Item(u"cbCoinTypes"_s))) {
        for (int t = 0; t < CoinTypeCount; ++t) {
            types->setEntryText(t, CoinTypeToText(t));
        }
    }
    if (auto* countries = dynamic_cast<TListEditorItem*>(Item(u"ImageComboBoxItemCountries"_s))) {
        countries->setDefaultText(TextOr(u"cSNA"_s, u"N/A"_s));
    }
    if (auto* metals = dynamic_cast<TCheckListEditorItem*>(Item(u"ccbMetals"_s))) {
        QStringList texts = MetalShortTexts();
        for (int m = 0; m < MetalCount && m < texts.size(); ++m) {
            const QString text = MetalToText(m);
            if (!text.isEmpty()) {
                texts[m] = text;
            }
        }
        metals->setItems(texts);
        metals->setEmptyText(any);
    }
    if (auto* types = dynamic_cast<TCheckListEditorItem*>(Item(u"ccbCoinTypes"_s))) {
        QStringList texts;
        for (int t = 0; t < CoinTypeCount; ++t) {
            texts << CoinTypeToText(t);
        }
        types->setItems(texts);
        types->setEmptyText(any);
    }
    for (const QString& name : {u"ImageCoinEdit"_s, u"ImageMint"_s}) {
        auto* pictures = dynamic_cast<TPictureControlItem*>(Item(name));
        if (!pictures) {
            continue;
        }
        pictures->setTexts(TextOr(u"cSImgEditCaption"_s, u"Right-click on picture for options"_s),
                           TextOr(u"cSImgEditShowFullSize"_s, u"Show full size"_s),
                           TextOr(u"cSImgEditHint"_s,
                                  u"Right-click for options / Double-click to show full size picture"_s));
    }
    TWidgetTexts& texts = WidgetTexts();
    texts.pictureCut = TextOr(u"cSImgEditCut"_s, u"Cu&t"_s);
    texts.pictureCopy = TextOr(u"cSImgEditCopy"_s, u"&Copy"_s);
    texts.picturePaste = TextOr(u"cSImgEditPaste"_s, u"&Paste"_s);
    texts.pictureDelete = TextOr(u"cSImgEditDelete"_s, u"&Delete"_s);
    texts.pictureLoad = TextOr(u"cSImgEditLoad"_s, u"&Load..."_s);
    texts.pictureSave = TextOr(u"cSImgEditSave"_s, u"&Save As..."_s);
    texts.pictureFiles = TextOr(u"cSImgEditPictureFiles"_s, u"Pictures"_s);
    texts.allFiles = TextOr(u"cSImgEditAllFiles"_s, u"All files"_s);
}
