#include "uRecordEditItems.h"

#include "dmImages.h"
#include "frmPic.h"
#include "uItemTexts.h"
#include "uValuation.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QAction>
#include <QLocale>

using namespace Qt::StringLiterals;

namespace {

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

const char* const cDictionaryCombos[] = {"cbPurity",    "cbEdge",        "cbCondition", "cbStatus",
                                         "cbPackaging", "cbLocation",    "cbOwner",     "cbStore",
                                         "cbGrade",     "cbGradeService"};

template <typename T> T* Add(std::map<QString, std::unique_ptr<TEditorItem>>& items, const QString& name)
{
    auto item = std::make_unique<T>();
    T* raw = item.get();
    items[name] = std::move(item);
    return raw;
}

// The countries by English name, with the "Empty" row for none.
QList<TListEntry> CountryEntries()
{
    QList<TListEntry> countries{{QVariant(), u"Empty"_s, QIcon()}};
    for (int t = int(QLocale::AnyTerritory) + 1; t <= int(QLocale::LastTerritory); ++t) {
        const QString code = QLocale::territoryToCode(QLocale::Territory(t));
        if (code.size() == 2) {
            countries.append({code, QLocale::territoryToString(QLocale::Territory(t)), QIcon()});
        }
    }
    return countries;
}

} // namespace

TRecordEditItems::TRecordEditItems()
{
    const QString na = TextOr(u"cSNA"_s, u"N/A"_s);
    Add<TTextEditorItem>(m_items, u"edText"_s);
    Add<TTextEditorItem>(m_items, u"repCustomTextEdit"_s);
    auto* link = Add<TTextEditorItem>(m_items, u"HyperLink"_s);
    link->setLinkStyle(true);
    Add<TMemoEditorItem>(m_items, u"Memo"_s)->setEditorLines(4);
    Add<TDateEditorItem>(m_items, u"deDate"_s);
    Add<TCheckEditorItem>(m_items, u"cbNotNull"_s)->setValues(1, 0);
    for (const QString& name : {u"ImageCoinEdit"_s, u"ImageMint"_s}) {
        auto* picture = Add<TPictureControlItem>(m_items, name);
        picture->setTexts(TextOr(u"cSImgEditCaption"_s, u"Right-click on picture for options"_s),
                          TextOr(u"cSImgEditShowFullSize"_s, u"Show full size"_s),
                          TextOr(u"cSImgEditHint"_s,
                                 u"Right-click for options / Double-click to show full size picture"_s));
        picture->setShowFullSize([](const QByteArray& bytes, QWidget* editor) {
            TShowPictureForm::ShowPicture(bytes, TPictureViewerSource::ItemEditor, editor);
        });
    }

    m_mints = Add<TLookupEditorItem>(m_items, u"lcbMints"_s);
    m_mints->setSorted(true);
    if (TDataModuleImages* images = DataModuleImages()) {
        QAction* editMints = images->actEditMints();
        m_mints->setButton([editMints](QWidget*) { editMints->trigger(); }, editMints->icon(),
                           editMints->text());
    }

    QList<TListEntry> metals;
    for (int code = 0; code < MetalCount; ++code) {
        metals.append({code, MetalToText(code), QIcon()});
    }
    Add<TListEditorItem>(m_items, u"cbMetalTypes"_s)->setEntries(metals);
    QList<TListEntry> types;
    for (int code = 0; code < CoinTypeCount; ++code) {
        types.append({code, CoinTypeToText(code), QIcon()});
    }
    Add<TListEditorItem>(m_items, u"cbCoinTypes"_s)->setEntries(types);
    auto* countries = Add<TListEditorItem>(m_items, u"ImageComboBoxItemCountries"_s);
    countries->setEntries(CountryEntries());
    countries->setSorted(true);
    countries->setDefaultText(na);

    auto* year = Add<TIntegerEditorItem>(m_items, u"seYear"_s);
    year->setRange(-9999, 9999);
    year->setNullText(na);
    auto* qty = Add<TIntegerEditorItem>(m_items, u"seQty"_s);
    qty->setRange(0, 1e12);
    qty->setDisplayFormat(TextOr(u"cSFmtQty"_s, u",0"_s));
    auto* mintage = Add<TIntegerEditorItem>(m_items, u"seMintage"_s);
    mintage->setRange(0, 1e15);
    mintage->setDisplayFormat(TextOr(u"cSFmtMintage"_s, u",0"_s));
    mintage->setEditFormat(TextOr(u"cSFmtMintage"_s, u",0"_s));
    mintage->setNullText(na);
    Add<TIntegerEditorItem>(m_items, u"repCustomNumberEdit"_s)->setRange(-1e15, 1e15);

    auto* mm = Add<TFloatEditorItem>(m_items, u"seMM"_s);
    mm->setDisplayFormat(TextOr(u"cSFmtMM"_s, u"0.# mm"_s));
    mm->setEditFormat(TextOr(u"cSFmtMM"_s, u"0.# mm"_s));
    mm->setStep(0.1);
    mm->setLargeStep(1.0);
    mm->setRange(0, 1e9);
    mm->setNullText(na);
    auto* grams = Add<TFloatEditorItem>(m_items, u"seWeightG"_s);
    grams->setDisplayFormat(TextOr(u"cSFmtWeightG"_s, u"0.## g"_s));
    grams->setEditFormat(TextOr(u"cSFmtWeightG"_s, u"0.## g"_s));
    grams->setRange(0, 1e12);
    grams->setNullText(na);
    auto* ounces = Add<TFloatEditorItem>(m_items, u"seWeightOz"_s);
    ounces->setDisplayFormat(TextOr(u"cSFmtWeightOZ"_s, u"0.## oz"_s));
    ounces->setEditFormat(TextOr(u"cSFmtWeightOZ"_s, u"0.## oz"_s));
    ounces->setStep(0.1);
    ounces->setLargeStep(1.0);
    ounces->setRange(0, 1e12);
    ounces->setNullText(na);
    auto* currency = Add<TFloatEditorItem>(m_items, u"edCurrency"_s);
    currency->setDisplayFormat(u",0.##;(,0.##)"_s);
    currency->setRange(-1e15, 1e15);
    auto* money = Add<TFloatEditorItem>(m_items, u"edUsersCurrency"_s);
    money->setDisplayFunction([](double value) { return FormatUsersCurrency(value, Currency); });
    money->setRange(-1e15, 1e15);
    auto* customFloat = Add<TFloatEditorItem>(m_items, u"repCustomFloatEdit"_s);
    customFloat->setStep(0.1);
    customFloat->setRange(-1e15, 1e15);

    for (const char* name : cDictionaryCombos) {
        const QString comboName = QString::fromLatin1(name);
        auto* combo = Add<TComboEditorItem>(m_items, comboName);
        combo->setItemsProvider([comboName] {
            return DataModuleImages() ? DataModuleImages()->ComboItems(comboName) : QStringList();
        });
        if (TDataModuleImages* images = DataModuleImages()) {
            if (QAction* action = images->Action(u"actEdit"_s + comboName.mid(2))) {
                combo->setButton([action](QWidget*) { action->trigger(); }, action->icon(), action->text());
            }
        }
    }
}

TRecordEditItems::~TRecordEditItems() = default;

const TEditorItem* TRecordEditItems::Item(const QString& name) const
{
    if (name != u"lcbMints"_s) {
        if (TDataModuleImages* images = DataModuleImages()) {
            if (const TEditorItem* shared = images->Item(name)) {
                return shared;
            }
        }
    }
    const auto found = m_items.find(name);
    return found != m_items.end() ? found->second.get() : nullptr;
}

void TRecordEditItems::SetMintsModel(QAbstractItemModel* model, int keyColumn, int nameColumn)
{
    m_mints->setModel(model, keyColumn, nameColumn);
}
