#include "uViewEditorItems.h"

#include "dmImages.h"
#include "uChoiceEditorItems.h"
#include "uItemTexts.h"
#include "uNumberEditorItems.h"
#include "uPictureEditorItem.h"
#include "uRatingEditorItem.h"
#include "uTextEditorItems.h"
#include "uValuation.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace {

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() || text == key ? fallback : text;
}

const QStringList& DictionaryCombos()
{
    static const QStringList names = {u"cbPurity"_s,       u"cbEdge"_s,      u"cbCondition"_s, u"cbStatus"_s,
                                      u"cbOwner"_s,        u"cbPackaging"_s, u"cbLocation"_s,  u"cbGrade"_s,
                                      u"cbGradeService"_s, u"cbStore"_s};
    return names;
}

} // namespace

template <typename T> T* TViewEditorItems::Add(const QString& name)
{
    auto item = std::make_unique<T>();
    T* raw = item.get();
    m_owned.push_back(std::move(item));
    if (!name.isEmpty()) {
        m_items.insert(name, raw);
    }
    return raw;
}

TViewEditorItems::TViewEditorItems()
{
    auto* text = Add<TTextEditorItem>(u"repCustomTextEdit"_s);
    m_text = text;
    auto* memo = Add<TMemoEditorItem>(u"repMemo"_s);
    Q_UNUSED(memo);

    auto* year = Add<TIntegerEditorItem>(u"seYear"_s);
    year->setDisplayFormat(u"0"_s);
    year->setEditFormat(u"0"_s);
    year->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    year->setRange(0, 9999);
    Add<TIntegerEditorItem>(u"seMintage"_s)->setDisplayFormat(u",0"_s);
    Add<TIntegerEditorItem>(u"seQty"_s)->setDisplayFormat(u",0"_s);
    Add<TIntegerEditorItem>(u"repCustomNumberEdit"_s)->setDisplayFormat(u"0"_s);
    auto* customFloat = Add<TFloatEditorItem>(u"repCustomFloatEdit"_s);
    customFloat->setDisplayFormat(u"0.########"_s);
    customFloat->setStep(0.1);

    auto* grams = Add<TFloatEditorItem>(u"seWeightG"_s);
    grams->setDisplayFormat(u"0.## g"_s);
    auto* ounces = Add<TFloatEditorItem>(u"seWeightOz"_s);
    ounces->setDisplayFormat(u"0.## oz"_s);
    ounces->setStep(0.1);
    ounces->setLargeStep(1);
    auto* mm = Add<TFloatEditorItem>(u"seMM"_s);
    mm->setDisplayFormat(u"0.# mm"_s);
    mm->setStep(0.1);
    mm->setLargeStep(1);
    Add<TFloatEditorItem>(u"edCurrency"_s)->setDisplayFormat(u",0.##"_s);
    auto* money = Add<TFloatEditorItem>(u"edUsersCurrency"_s);
    money->setDisplayFunction([](double value) { return FormatUsersCurrency(value, Currency); });
    money->setEditFormat(u"0.00"_s);
    money->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    auto* percent = Add<TFloatEditorItem>(u"edPercent"_s);
    percent->setDisplayFormat(u",0.00%;-,0.00%"_s);

    auto* weightText = Add<TFloatEditorItem>(QString());
    weightText->setDisplayFunction([](double grams) { return WeightToText(grams); });
    weightText->setReadOnly(true);
    m_weightText = weightText;

    Add<TListEditorItem>(u"cbMetalTypes"_s);
    Add<TListEditorItem>(u"cbCoinTypes"_s);
    Add<TLookupEditorItem>(u"lcbMints"_s);
    Add<TCheckEditorItem>(u"cbNotNull"_s);
    Add<TTextEditorItem>(u"ImageComboBoxItemCountries"_s);
    auto* rating = Add<TRatingEditorItem>(u"RatingControl"_s);
    rating->setStep(0.5);
    auto* date = Add<TDateEditorItem>(u"deDate"_s);
    Q_UNUSED(date);
    auto* picture = Add<TPictureEditorItem>(u"ImageItemThumb"_s);
    Q_UNUSED(picture);

    for (const QString& name : DictionaryCombos()) {
        auto* combo = Add<TComboEditorItem>(name);
        combo->setItemsProvider([name] {
            const TDataModuleImages* images = DataModuleImages();
            return images ? images->ComboItems(name) : QStringList();
        });
    }
    Retranslate();
}

TViewEditorItems::~TViewEditorItems() = default;

const TEditorItem* TViewEditorItems::Item(const QString& name) const
{
    return m_items.value(name, m_text);
}

const TEditorItem* TViewEditorItems::WeightText() const
{
    return m_weightText;
}

void TViewEditorItems::Retranslate()
{
    const QString na = TextOr(u"cSNA"_s, u"N/A"_s);
    for (const QString& name : {u"seYear"_s, u"seWeightG"_s, u"seWeightOz"_s, u"seMM"_s, u"seMintage"_s}) {
        static_cast<TBasicEditorItem*>(m_items.value(name))->setNullText(na);
    }
    QList<TListEntry> metals;
    for (int code = 0; code < 6; ++code) {
        metals.append({QVariant(code), MetalToText(code), {}});
    }
    static_cast<TListEditorItem*>(m_items.value(u"cbMetalTypes"_s))->setEntries(metals);
    QList<TListEntry> types;
    for (int code = 0; code < 5; ++code) {
        types.append({QVariant(code), CoinTypeToText(code), {}});
    }
    static_cast<TListEditorItem*>(m_items.value(u"cbCoinTypes"_s))->setEntries(types);
    const QLocale locale;
    for (TEditorItem* item : std::as_const(m_items)) {
        if (auto* basic = dynamic_cast<TBasicEditorItem*>(item)) {
            basic->setLocale(locale);
        }
    }
}

void TViewEditorItems::SetMintsModel(QAbstractItemModel* model, int keyColumn, int nameColumn)
{
    auto* mints = static_cast<TLookupEditorItem*>(m_items.value(u"lcbMints"_s));
    mints->setModel(model, keyColumn, nameColumn);
    mints->setSorted(true);
}
