#include "uEditRepository.h"

#include "uCustomFields.h"
#include "uZTSettings.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace {

using K = TRepositoryItemKind;

TRepositoryItemDef Def(const QString& name, K kind)
{
    TRepositoryItemDef def;
    def.Name = name;
    def.Kind = kind;
    return def;
}

QList<TRepositoryItemDef> MakeDefs()
{
    QList<TRepositoryItemDef> defs;

    TRepositoryItemDef d = Def(u"ImageItemThumb"_s, K::Picture);
    d.ReadOnly = true;
    defs << d;
    d = Def(u"ImageCoinEdit"_s, K::PictureEdit);
    d.HasMenu = true;
    d.PostsAtOnce = true;
    defs << d;
    d = Def(u"ImageMint"_s, K::PictureEdit);
    d.HasMenu = true;
    d.PostsAtOnce = true;
    defs << d;

    d = Def(u"ImageComboBoxItemCountries"_s, K::List);
    d.NullTextKey = u"cSNA"_s;
    defs << d;
    defs << Def(u"cbMetalTypes"_s, K::List) << Def(u"cbCoinTypes"_s, K::List);
    for (const QString& name : {u"ccbMetals"_s, u"ccbCoinTypes"_s, u"ccbWeights"_s}) {
        d = Def(name, K::CheckList);
        d.NullTextKey = name == u"ccbWeights"_s ? QString() : u"cSAny"_s;
        defs << d;
    }
    d = Def(u"lcbMints"_s, K::Lookup);
    d.PostsAtOnce = true;
    defs << d;

    d = Def(u"seYear"_s, K::Integer);
    d.Minimum = 0;
    d.Maximum = 9999;
    d.NullTextKey = u"cSNA"_s;
    d.PostsAtOnce = true;
    defs << d;
    d = Def(u"seQty"_s, K::Integer);
    d.Minimum = 0;
    d.Maximum = std::numeric_limits<int>::max();
    d.FormatKey = u"cSFmtQty"_s;
    d.Format = u",0"_s;
    defs << d;
    d = Def(u"seMintage"_s, K::Integer);
    d.Minimum = 0;
    d.Maximum = std::numeric_limits<int>::max();
    d.FormatKey = u"cSFmtMintage"_s;
    d.Format = u",0"_s;
    d.FormatWhileEditing = true;
    d.NullTextKey = u"cSNA"_s;
    d.AlignLeft = false;
    defs << d;
    d = Def(u"seMM"_s, K::Float);
    d.Step = 0.1;
    d.LargeStep = 1.0;
    d.Minimum = 0;
    d.FormatKey = u"cSFmtMM"_s;
    d.Format = u"0.# mm"_s;
    d.FormatWhileEditing = true;
    d.NullTextKey = u"cSNA"_s;
    d.AlignLeft = false;
    defs << d;
    d = Def(u"seWeightG"_s, K::Float);
    d.Step = 1.0;
    d.LargeStep = 10.0;
    d.Minimum = 0;
    d.FormatKey = u"cSFmtWeightG"_s;
    d.Format = u"0.## g"_s;
    d.FormatWhileEditing = true;
    d.NullTextKey = u"cSNA"_s;
    d.PostsAtOnce = true;
    d.AlignLeft = false;
    defs << d;
    d = Def(u"seWeightOz"_s, K::Float);
    d.Step = 0.1;
    d.LargeStep = 1.0;
    d.Minimum = 0;
    d.FormatKey = u"cSFmtWeightOZ"_s;
    d.Format = u"0.## oz"_s;
    d.FormatWhileEditing = true;
    d.NullTextKey = u"cSNA"_s;
    d.PostsAtOnce = true;
    d.AlignLeft = false;
    defs << d;

    d = Def(u"edCurrency"_s, K::Float);
    d.Format = u",0.##;(,0.##)"_s;
    defs << d;
    d = Def(u"edUsersCurrency"_s, K::Float);
    d.UsersCurrency = true;
    defs << d;
    d = Def(u"edPercent"_s, K::Float);
    d.Format = u",0.00%;-,0.00%"_s;
    d.AlignLeft = false;
    defs << d;

    d = Def(u"RatingControl"_s, K::Rating);
    d.Step = 0.5;
    d.Minimum = 0;
    d.Maximum = 5;
    defs << d;
    defs << Def(u"cbNotNull"_s, K::Check) << Def(u"Memo"_s, K::Memo) << Def(u"HyperLink"_s, K::HyperLink);
    d = Def(u"lLongCaption"_s, K::Label);
    d.ReadOnly = true;
    defs << d;
    defs << Def(u"cbCustomFields"_s, K::List);
    defs << Def(u"repCustomTextEdit"_s, K::Text);
    d = Def(u"repCustomNumberEdit"_s, K::Integer);
    d.PostsAtOnce = true;
    defs << d;
    d = Def(u"repCustomFloatEdit"_s, K::Float);
    d.Step = 0.1;
    d.LargeStep = 1.0;
    d.PostsAtOnce = true;
    defs << d;

    for (const QString& name :
         {u"cbPurity"_s, u"cbEdge"_s, u"cbCondition"_s, u"cbStatus"_s, u"cbPackaging"_s, u"cbLocation"_s,
          u"cbOwner"_s, u"cbStore"_s, u"cbGrade"_s, u"cbGradeService"_s}) {
        defs << Def(name, K::Combo);
    }

    // Plain editors of the fields the table above does not name.
    defs << Def(u"edText"_s, K::Text) << Def(u"deDate"_s, K::Date);
    return defs;
}

QList<TFieldEditorDef> MakeFieldDefs()
{
    // Fields of tblCoins and of the item dataset, then those only tblMints has.
    return {
        {u"Name"_s, u"edText"_s},
        {u"Metal"_s, u"cbMetalTypes"_s},
        {u"ObverseDesc"_s, u"Memo"_s},
        {u"ReverseDesc"_s, u"Memo"_s},
        {u"Series"_s, u"edText"_s},
        {u"Year"_s, u"seYear"_s},
        {u"WeightG"_s, u"seWeightG"_s, true},
        {u"MintID"_s, u"lcbMints"_s},
        {u"CoinType"_s, u"cbCoinTypes"_s},
        {u"FaceValue"_s, u"edCurrency"_s},
        {u"FaceValueCurrency"_s, u"edText"_s},
        {u"Purity"_s, u"cbPurity"_s},
        {u"Thickness"_s, u"seMM"_s},
        {u"Diameter"_s, u"seMM"_s},
        {u"Width"_s, u"seMM"_s},
        {u"Height"_s, u"seMM"_s},
        {u"Edge"_s, u"cbEdge"_s},
        {u"MintMark"_s, u"cbNotNull"_s},
        {u"Country"_s, u"ImageComboBoxItemCountries"_s},
        {u"Mintage"_s, u"seMintage"_s},
        {u"Artist"_s, u"edText"_s},
        {u"Description"_s, u"Memo"_s},
        {u"ThumbFront"_s, u"ImageItemThumb"_s, true},
        {u"ThumbBack"_s, u"ImageItemThumb"_s, true},
        {u"PhotoFront"_s, u"ImageCoinEdit"_s},
        {u"PhotoBack"_s, u"ImageCoinEdit"_s},
        {u"PhotoSide"_s, u"ImageCoinEdit"_s},
        {u"PhotoInBox"_s, u"ImageCoinEdit"_s},
        {u"ExpectedPremium"_s, u"edUsersCurrency"_s},
        {u"Rating"_s, u"RatingControl"_s},
        {u"Rare"_s, u"cbNotNull"_s},
        {u"Condition"_s, u"cbCondition"_s},
        {u"Status"_s, u"cbStatus"_s},
        {u"Owner"_s, u"cbOwner"_s},
        {u"Packaging"_s, u"cbPackaging"_s},
        {u"Location"_s, u"cbLocation"_s},
        {u"Grade"_s, u"cbGrade"_s},
        {u"GradeService"_s, u"cbGradeService"_s},
        {u"SerialNumbers"_s, u"Memo"_s},
        {u"Qty"_s, u"seQty"_s},
        {u"Price"_s, u"edUsersCurrency"_s},
        {u"PurchaseDate"_s, u"deDate"_s},
        {u"Store"_s, u"cbStore"_s},
        {u"AvgPricePerOz"_s, u"edUsersCurrency"_s, true},
        {u"WeightGxQty"_s, u"seWeightG"_s, true},
        {u"WeightOZxQty"_s, u"seWeightOz"_s, true},
        {u"TotalPrice"_s, u"edUsersCurrency"_s, true},
        {u"PurchaseYear"_s, u"seYear"_s, true},
        {u"PurchaseYearMonth"_s, u"edText"_s, true},
        {u"Caption"_s, u"edText"_s, true},
        {u"WeightOz"_s, u"seWeightOz"_s},
        {u"WeightGram"_s, u"seWeightG"_s},
        {u"SpotValue"_s, u"edUsersCurrency"_s, true},
        {u"LiquidationValue"_s, u"edUsersCurrency"_s, true},
        {u"ROI"_s, u"edUsersCurrency"_s, true},
        {u"SpotValuexQty"_s, u"edUsersCurrency"_s, true},
        {u"LiquidationValuexQty"_s, u"edUsersCurrency"_s, true},
        {u"ROIxQty"_s, u"edUsersCurrency"_s, true},
        {u"ROIPercent"_s, u"edPercent"_s, true},
        {u"Logo"_s, u"ImageMint"_s},
        {u"URL"_s, u"HyperLink"_s},
        {u"IsPrivate"_s, u"cbNotNull"_s},
    };
}

} // namespace

const QList<TRepositoryItemDef>& RepositoryItemDefs()
{
    static const QList<TRepositoryItemDef> defs = MakeDefs();
    return defs;
}

const TRepositoryItemDef* FindRepositoryItem(const QString& name)
{
    static const QHash<QString, int> index = [] {
        QHash<QString, int> map;
        const auto& defs = RepositoryItemDefs();
        for (int i = 0; i < defs.size(); ++i) {
            map.insert(defs.at(i).Name, i);
        }
        return map;
    }();
    const auto it = index.constFind(name);
    return it == index.cend() ? nullptr : &RepositoryItemDefs().at(*it);
}

const QList<TFieldEditorDef>& FieldEditorDefs()
{
    static const QList<TFieldEditorDef> defs = MakeFieldDefs();
    return defs;
}

namespace {

const TFieldEditorDef* FindField(const QString& fieldName)
{
    static const QHash<QString, int> index = [] {
        QHash<QString, int> map;
        const auto& defs = FieldEditorDefs();
        for (int i = 0; i < defs.size(); ++i) {
            map.insert(defs.at(i).Field.toLower(), i);
        }
        return map;
    }();
    const auto it = index.constFind(fieldName.toLower());
    return it == index.cend() ? nullptr : &FieldEditorDefs().at(*it);
}

} // namespace

QString FieldEditorName(const QString& fieldName)
{
    if (const TFieldEditorDef* def = FindField(fieldName)) {
        return def->Item;
    }
    // The custom columns are spelled "Custom1" .. "Custom10" in any case.
    QString column = fieldName;
    if (column.size() > 6 && column.left(6).compare(u"Custom"_s, Qt::CaseInsensitive) == 0) {
        column = u"Custom"_s + column.mid(6);
    }
    const int n = CustomFieldIndex(column);
    if (n >= 0) {
        return CustomFieldEditor(ORVCustomFields[std::size_t(n)].DataType);
    }
    return {};
}

bool FieldIsDisplayOnly(const QString& fieldName)
{
    const TFieldEditorDef* def = FindField(fieldName);
    return def && def->ReadOnly;
}

QStringList WeightCheckListTexts()
{
    return {u"1 oz"_s, u"½ oz"_s, u"¼ oz"_s, u"1/10 oz"_s, u"1/20 oz"_s};
}

QStringList MetalShortTexts()
{
    return {u"Au"_s, u"Ag"_s, u"Pt"_s, u"Pd"_s, u"Rd"_s, u"Cu"_s};
}
