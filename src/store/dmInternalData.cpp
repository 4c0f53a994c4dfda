#include "dmInternalData.h"

#include "uBlankPictures.h"
#include "uDBError.h"
#include "uObjs.h"
#include "uSplashText.h"
#include "uSpot.h"
#include "uTemplate.h"
#include "uThumbnail.h"
#include "uValuation.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>

using namespace Qt::StringLiterals;

namespace {

TDM_InternalData* g_instance = nullptr;

struct TFieldDef
{
    const char16_t* name;
    TFieldType type;
    TFieldKind kind;
    int size;
    bool required;
    const char16_t* labelKey; // nullptr: no label
};

constexpr TFieldKind Stored = TFieldKind::Stored;
constexpr TFieldKind Computed = TFieldKind::Computed;
constexpr TFieldKind Calculated = TFieldKind::Calculated;
constexpr TFieldKind Internal = TFieldKind::Internal;

// The fields of tblMints, in the order of its columns.
const TFieldDef kMintFields[] = {
    {u"ID", TFieldType::AutoInc, Stored, 0, false, nullptr},
    {u"Name", TFieldType::String, Stored, 300, true, u"cSF_Name"},
    {u"Logo", TFieldType::Blob, Stored, 0, false, u"cSF_Logo"},
    {u"Country", TFieldType::String, Stored, 2, false, u"cSF_Country"},
    {u"URL", TFieldType::String, Stored, 5000, false, u"cSF_URL"},
    {u"IsPrivate", TFieldType::Boolean, Stored, 0, false, u"cSF_IsPrivateMint"},
    {u"Description", TFieldType::Memo, Stored, 0, false, u"cSF_Description"},
};

// The fields of qDS_Items: the columns of tblCoins in their order, the expressions of the
// statement, then the fields of the record buffer. Custom1..Custom10 follow the stored ones.
const TFieldDef kItemFields[] = {
    {u"ID", TFieldType::AutoInc, Stored, 0, false, nullptr},
    {u"Name", TFieldType::String, Stored, 500, true, u"cSF_Name"},
    {u"Metal", TFieldType::Integer, Stored, 0, true, u"cSF_Metal"},
    {u"ObverseDesc", TFieldType::String, Stored, 1000, false, u"cSF_Obverse"},
    {u"ReverseDesc", TFieldType::String, Stored, 1000, false, u"cSF_Reverse"},
    {u"Series", TFieldType::String, Stored, 300, false, u"cSF_Series"},
    {u"Year", TFieldType::Integer, Stored, 0, false, u"cSF_Year"},
    {u"WeightG", TFieldType::Float, Stored, 0, true, u"cSF_Weight"},
    {u"MintID", TFieldType::Integer, Stored, 0, false, u"cSF_Mint"},
    {u"CoinType", TFieldType::Integer, Stored, 0, true, u"cSF_Type"},
    {u"FaceValue", TFieldType::Float, Stored, 0, false, u"cSF_Denomination"},
    {u"FaceValueCurrency", TFieldType::String, Stored, 3, false, u"cSF_DenominationCurrency"},
    {u"Purity", TFieldType::String, Stored, 30, false, u"cSF_Purity"},
    {u"Thickness", TFieldType::Float, Stored, 0, false, u"cSF_Thickness"},
    {u"Diameter", TFieldType::Float, Stored, 0, false, u"cSF_Diameter"},
    {u"Width", TFieldType::Float, Stored, 0, false, u"cSF_Width"},
    {u"Height", TFieldType::Float, Stored, 0, false, u"cSF_Height"},
    {u"Edge", TFieldType::String, Stored, 100, false, u"cSF_Edge"},
    {u"MintMark", TFieldType::Boolean, Stored, 0, false, u"cSF_MintMark"},
    {u"Country", TFieldType::String, Stored, 2, false, u"cSF_Country"},
    {u"Mintage", TFieldType::Integer, Stored, 0, false, u"cSF_Mintage"},
    {u"Artist", TFieldType::String, Stored, 1000, false, u"cSF_Artist"},
    {u"Description", TFieldType::Memo, Stored, 0, false, u"cSF_Description"},
    {u"ThumbFront", TFieldType::Blob, Stored, 0, false, u"cSF_ThumbFront"},
    {u"ThumbBack", TFieldType::Blob, Stored, 0, false, u"cSF_ThumbBack"},
    {u"PhotoFront", TFieldType::Blob, Stored, 0, false, u"cSF_PhotoFront"},
    {u"PhotoBack", TFieldType::Blob, Stored, 0, false, u"cSF_PhotoBack"},
    {u"PhotoSide", TFieldType::Blob, Stored, 0, false, u"cSF_PhotoSide"},
    {u"PhotoInBox", TFieldType::Blob, Stored, 0, false, u"cSF_PhotoInBox"},
    {u"ExpectedPremium", TFieldType::Float, Stored, 0, false, u"cSF_ExpectedPremium"},
    {u"Rating", TFieldType::Float, Stored, 0, false, u"cSF_Rating"},
    {u"Rare", TFieldType::Boolean, Stored, 0, false, u"cSF_Rare"},
    {u"Condition", TFieldType::String, Stored, 500, false, u"cSF_Condition"},
    {u"Status", TFieldType::String, Stored, 500, false, u"cSF_Status"},
    {u"Owner", TFieldType::String, Stored, 500, false, u"cSF_Owner"},
    {u"Packaging", TFieldType::String, Stored, 500, false, u"cSF_Packaging"},
    {u"Location", TFieldType::String, Stored, 500, false, u"cSF_Location"},
    {u"Grade", TFieldType::String, Stored, 500, false, u"cSF_Grade"},
    {u"GradeService", TFieldType::String, Stored, 500, false, u"cSF_GradeService"},
    {u"SerialNumbers", TFieldType::Memo, Stored, 0, false, u"cSF_SerialNumbers"},
    {u"Qty", TFieldType::Integer, Stored, 0, false, u"cSF_Qty"},
    {u"Price", TFieldType::Float, Stored, 0, false, u"cSF_Price"},
    {u"PurchaseDate", TFieldType::Date, Stored, 0, false, u"cSF_PurchaseDate"},
    {u"Store", TFieldType::String, Stored, 500, false, u"cSF_Store"},
    // Custom1..Custom10 are added in CreateItemFields.
    {u"AvgPricePerOz", TFieldType::Float, Computed, 0, false, u"cSF_AvgPricePerOz"},
    {u"WeightGxQty", TFieldType::Float, Computed, 0, false, u"cSF_WeightGxQty"},
    {u"WeightOZxQty", TFieldType::Float, Computed, 0, false, u"cSF_WeightOZxQty"},
    {u"TotalPrice", TFieldType::Float, Computed, 0, false, u"cSF_TotalPrice"},
    {u"PurchaseYear", TFieldType::String, Computed, 4, false, u"cSF_PurchaseYear"},
    {u"PurchaseYearMonth", TFieldType::String, Computed, 7, false, u"cSF_PurchaseYearMonth"},
    {u"Caption", TFieldType::String, Calculated, 200, false, u"cSF_Caption"},
    {u"WeightOz", TFieldType::Float, Internal, 0, false, u"cSF_WeightOz"},
    {u"WeightGram", TFieldType::Float, Internal, 0, false, u"cSF_WeightGram"},
    {u"SpotValue", TFieldType::Float, Calculated, 0, false, u"cSF_SpotValue"},
    {u"LiquidationValue", TFieldType::Float, Calculated, 0, false, u"cSF_LiquidationValue"},
    {u"ROI", TFieldType::Float, Calculated, 0, false, u"cSF_ROI"},
    {u"SpotValuexQty", TFieldType::Float, Calculated, 0, false, u"cSF_SpotValuexQty"},
    {u"LiquidationValuexQty", TFieldType::Float, Calculated, 0, false, u"cSF_LiquidationValuexQty"},
    {u"ROIxQty", TFieldType::Float, Calculated, 0, false, u"cSF_ROIxQty"},
    {u"ROIPercent", TFieldType::Float, Calculated, 0, false, u"cSF_ROIPercent"},
};

constexpr int kCustomFieldWidth = 32767;

// Two weights are the same when they differ by at most 1e-12, or by 1e-12 of the smaller one.
bool SameWeight(double a, double b)
{
    const double tolerance = std::max(1e-12, 1e-12 * std::min(std::fabs(a), std::fabs(b)));
    return std::fabs(a - b) <= tolerance;
}

// Zero to NULL: 0 becomes NULL, anything else stays.
QVariant ZeroToNull(double value)
{
    return value == 0 ? QVariant() : QVariant(value);
}

QVariant ZeroToNull(int value)
{
    return value == 0 ? QVariant() : QVariant(value);
}

// Runs f with the dataset's controls disabled, enabling them again however f ends.
template <typename F> void WithControlsDisabled(TDBDataset& dataset, F&& f)
{
    dataset.disableControls();
    try {
        f();
    } catch (...) {
        dataset.enableControls();
        throw;
    }
    dataset.enableControls();
}

// Detaches a field's change handler for the lifetime of the guard.
class TChangeHandlerMute
{
public:
    explicit TChangeHandlerMute(TDBField& field) : m_field(field), m_handler(field.onChange())
    {
        m_field.setOnChange({});
    }
    ~TChangeHandlerMute() { m_field.setOnChange(m_handler); }
    TChangeHandlerMute(const TChangeHandlerMute&) = delete;
    TChangeHandlerMute& operator=(const TChangeHandlerMute&) = delete;

private:
    TDBField& m_field;
    TFieldNotifyEvent m_handler;
};

// The current record's values through its field objects.
struct TFieldValues
{
    double Float(const TDBField* f) const { return f->asFloat(); }
    int Integer(const TDBField* f) const { return f->asInteger(); }
    void Set(TDBField* f, std::optional<double> v) const { f->setValue(v ? QVariant(*v) : QVariant()); }
};

// The values of a record being recalculated, read and written in the stored row.
struct TRecalcValues
{
    TDBRecalcRecord& Record;
    double Float(const TDBField* f) const { return Record.asFloat(*f); }
    int Integer(const TDBField* f) const { return Record.asInteger(*f); }
    void Set(TDBField* f, std::optional<double> v) const { Record.setFloat(*f, v); }
};

// A path made absolute and clean, for comparing two names of one file.
QString ExpandedPath(const QString& path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

} // namespace

TDM_InternalData* DM_InternalData()
{
    return g_instance;
}

TDM_InternalData::TDM_InternalData(QObject* parent) : QObject(parent)
{
    ShowSplashText(GetText(u"cSSplashLoadingData"_s));
    DatabasePath.clear();

    ADConnection = new TDBConnection(this);
    ADConnection->setObjectName(u"ADConnection"_s);

    tblMints = new TDBDataset(ADConnection, this);
    tblMints->setObjectName(u"tblMints"_s);
    tblMints->setTableName(u"tblMints"_s);
    tblMints->setKeyFields(u"ID"_s);
    tblMints->setIndexFieldNames(u"ID"_s);
    CreateMintFields();

    qDS_Items = new TDBDataset(ADConnection, this);
    qDS_Items->setObjectName(u"qDS_Items"_s);
    qDS_Items->setSQL(ItemsSQL());
    qDS_Items->setUpdateTableName(u"tblCoins"_s);
    qDS_Items->setKeyFields(u"ID"_s);
    qDS_Items->setIndexFieldNames(u"ID"_s);
    qDS_Items->setAutoCalcFields(false);
    CreateItemFields();
    qDS_Items->setOnAfterInsert([this](TDBDataset& ds) { qDS_ItemsAfterInsert(ds); });
    qDS_Items->setOnBeforePost([this](TDBDataset& ds) { qDS_ItemsBeforePost(ds); });
    qDS_Items->setOnCalcFields([this](TDBDataset& ds) { qDS_ItemsCalcFields(ds); });
    qDS_Items->setOnReadRecord([this](TDBDataset& ds) { qDS_ItemsReadRecord(ds); });
    qDS_Items->setOnBeforeOpen([this](TDBDataset&) { LoadCaptionTexts(); });
    qDS_Items->setOnBeforeRefresh([this](TDBDataset&) { LoadCaptionTexts(); });
    qDS_Items->setOnBeforeCancel([this](TDBDataset&) { LoadCaptionTexts(); });
    LoadCaptionTexts();
    m_fWeightGram->setOnChange([this](TDBField& f) { qDS_ItemsWeightGramChange(f); });
    m_fWeightOz->setOnChange([this](TDBField& f) { qDS_ItemsWeightOzChange(f); });
    m_fPhotoFront->setOnChange([this](TDBField& f) { qDS_ItemsPhotoFrontChange(f); });
    m_fPhotoBack->setOnChange([this](TDBField& f) { qDS_ItemsPhotoBackChange(f); });

    qRunQuery = new TDBQuery(ADConnection, this);
    qRunQuery->setObjectName(u"qRunQuery"_s);

    qBasicStats = new TDBDataset(ADConnection, this);
    qBasicStats->setObjectName(u"qBasicStats"_s);
    qBasicStats->setSQL(BasicStatsSQL());

    g_instance = this;
}

TDM_InternalData::~TDM_InternalData()
{
    if (g_instance == this)
        g_instance = nullptr;
    // Close while the handlers' objects still exist; the children are freed after this.
    try {
        ADConnection->close();
    } catch (...) {
        // Nothing can be reported from a destructor.
    }
}

QString TDM_InternalData::ItemsSQL()
{
    return u"SELECT *, "
           "Price / (WeightG / 31.1035) AS AvgPricePerOz::REAL, "
           "WeightG * Qty AS WeightGxQty::REAL, "
           "WeightG * Qty / 31.1035 AS WeightOZxQty::REAL, "
           "Price * Qty AS TotalPrice::REAL, "
           "strftime('%Y', PurchaseDate) AS PurchaseYear::VARCHAR, "
           "strftime('%Y-%m', PurchaseDate) AS PurchaseYearMonth::VARCHAR "
           "FROM tblCoins C"_s;
}

QString TDM_InternalData::BasicStatsSQL()
{
    return u"SELECT Metal, "
           "SUM(WeightG * Qty) AS TotalWeightG::REAL, "
           "SUM(WeightOZ * Qty) AS TotalWeightOZ::REAL, "
           "SUM(Price * Qty) AS TotalPaid::REAL, "
           "SUM(Price * Qty) / SUM(WeightOZ * Qty) AS AvgPricePerOz, "
           "SUM(Price * Qty) / SUM(WeightG * Qty) AS AvgPricePerGram "
           "FROM vCoinsStats GROUP BY Metal ORDER BY Metal"_s;
}

void TDM_InternalData::CreateMintFields()
{
    for (const TFieldDef& def : kMintFields) {
        TDBField& f = tblMints->addField(QString::fromUtf16(def.name), def.type, def.kind, def.size);
        f.setRequired(def.required);
        if (def.labelKey)
            m_mintLabels.append({&f, QString::fromUtf16(def.labelKey)});
        else
            f.setVisible(false);
    }
}

void TDM_InternalData::CreateItemFields()
{
    auto add = [this](const TFieldDef& def) {
        TDBField& f = qDS_Items->addField(QString::fromUtf16(def.name), def.type, def.kind, def.size);
        f.setRequired(def.required);
        if (def.labelKey)
            m_itemLabels.append({&f, QString::fromUtf16(def.labelKey)});
        else
            f.setVisible(false);
        return &f;
    };
    for (const TFieldDef& def : kItemFields) {
        add(def);
        if (std::u16string_view(def.name) == u"Store") {
            for (int n = 1; n <= cCustomFieldCount; ++n)
                qDS_Items->addField(u"Custom%1"_s.arg(n), TFieldType::String, Stored, kCustomFieldWidth);
        }
    }
    auto field = [this](const QString& name) { return &qDS_Items->fieldByName(name); };
    m_fName = field(u"Name"_s);
    m_fMetal = field(u"Metal"_s);
    m_fYear = field(u"Year"_s);
    m_fWeightG = field(u"WeightG"_s);
    m_fCoinType = field(u"CoinType"_s);
    m_fQty = field(u"Qty"_s);
    m_fPrice = field(u"Price"_s);
    m_fExpectedPremium = field(u"ExpectedPremium"_s);
    m_fTotalPrice = field(u"TotalPrice"_s);
    m_fThumbFront = field(u"ThumbFront"_s);
    m_fThumbBack = field(u"ThumbBack"_s);
    m_fPhotoFront = field(u"PhotoFront"_s);
    m_fPhotoBack = field(u"PhotoBack"_s);
    m_fCaption = field(u"Caption"_s);
    m_fWeightOz = field(u"WeightOz"_s);
    m_fWeightOz->setPrecision(4);
    m_fWeightGram = field(u"WeightGram"_s);
    m_fSpotValue = field(u"SpotValue"_s);
    m_fLiquidationValue = field(u"LiquidationValue"_s);
    m_fROI = field(u"ROI"_s);
    m_fSpotValuexQty = field(u"SpotValuexQty"_s);
    m_fLiquidationValuexQty = field(u"LiquidationValuexQty"_s);
    m_fROIxQty = field(u"ROIxQty"_s);
    m_fROIPercent = field(u"ROIPercent"_s);
}

bool TDM_InternalData::Connected() const
{
    return ADConnection->connected() && qDS_Items->active();
}

// --- The collection file ----------------------------------------------------------------------

bool TDM_InternalData::ConnectDatabase(const QString& path, TRowFetch items)
{
    ShowSplashText(GetText(u"cSSplashConnecting"_s));
    if (path.isEmpty() || !QFileInfo(path).isFile())
        return false;

    ADConnection->close();
    ADConnection->clearParams();
    ADConnection->setParam(u"Database"_s, path);
    ADConnection->setParam(u"StringFormat"_s, u"Unicode"_s);
    ADConnection->setParam(u"OpenMode"_s, u"CreateUTF8"_s);
    ADConnection->setParam(u"LockingMode"_s, u"Normal"_s);
    ADConnection->setParam(u"DriverID"_s, u"SQLite"_s);
    ADConnection->setParam(u"ForeignKeys"_s, u"On"_s);
    try {
        ADConnection->open();
        tblMints->open();
        qDS_Items->open(items);
    } catch (...) {
        // Half an open collection is none: release the file. The old path stays where it was.
        try {
            ADConnection->close();
        } catch (...) {
        }
        throw;
    }

    if (!qDS_Items->active())
        return false;
    DatabasePath = QFileInfo(path).absoluteFilePath();
    DBPath = DatabasePath;
    return true;
}

void TDM_InternalData::CreateBlankDatabase(const QString& path)
{
    QFile file(path);
    const QByteArray bytes = NewBlankDatabaseBytes();
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size() ||
        !file.flush()) {
        throw std::runtime_error(
            u"Cannot create file \"%1\". %2"_s.arg(QDir::toNativeSeparators(path), file.errorString())
                .toStdString());
    }
    file.close();
}

void TDM_InternalData::SaveDatabaseAs(const QString& path)
{
    if (!ADConnection->connected())
        return;
    const QString current = ADConnection->databasePath();
    if (ExpandedPath(current).compare(ExpandedPath(path), Qt::CaseInsensitive) == 0)
        return;
    if (ADConnection->inTransaction())
        ADConnection->commit();
    // The outcome is not looked at: the following connect opens the copy if it is there.
    CopyFileOver(current, QFileInfo(path).absoluteFilePath());
}

void TDM_InternalData::VacuumDatabase()
{
    const auto query = std::make_unique<TDBQuery>(ADConnection);
    query->setSQL(u"VACUUM;"_s);
    query->execSQL();
}

void TDM_InternalData::PostPendingEdits(const QList<TDBDataset*>& datasets)
{
    for (TDBDataset* dataset : datasets) {
        if (dataset && (dataset->state() == TDatasetState::Edit || dataset->state() == TDatasetState::Insert))
            dataset->post();
    }
}

void TDM_InternalData::FetchPendingItems()
{
    qDS_Items->fetchPendingRows();
}

void TDM_InternalData::RevalueItems()
{
    if (!qDS_Items->active())
        return;
    qDS_Items->recalcRows([this](TDBRecalcRecord& record) {
        TRecalcValues values{record};
        ValueRecord(values, values);
    });
}

void TDM_InternalData::RefreshItems()
{
    if (!qDS_Items->active())
        return;
    WithControlsDisabled(*qDS_Items, [this] {
        if (qDS_Items->state() == TDatasetState::Edit || qDS_Items->state() == TDatasetState::Insert)
            qDS_Items->post();
        qDS_Items->refresh();
    });
}

// --- Mints ------------------------------------------------------------------------------------

int TDM_InternalData::MintIDByName(const QString& name)
{
    if (!ADConnection->connected())
        return -1;
    const QVariant id = ADConnection->selectValue(u"SELECT ID FROM tblMints WHERE Name = ?"_s, {name});
    return id.isNull() ? -1 : id.toInt();
}

QVariant TDM_InternalData::MintLogoByID(int id)
{
    if (!ADConnection->connected())
        return QVariant();
    const QVariant logo = ADConnection->selectValue(u"SELECT Logo FROM tblMints WHERE ID = %1"_s.arg(id));
    return TDBField::convertForRead(logo, TFieldType::Blob);
}

// --- Labels -----------------------------------------------------------------------------------

void TDM_InternalData::TranslateFieldLabels()
{
    WithControlsDisabled(*tblMints, [this] {
        for (const auto& [field, key] : std::as_const(m_mintLabels))
            field->setDisplayLabel(GetText(key));
    });
    WithControlsDisabled(*qDS_Items, [this] {
        for (const auto& [field, key] : std::as_const(m_itemLabels))
            field->setDisplayLabel(GetText(key));
        for (int n = 0; n < cCustomFieldCount; ++n)
            qDS_Items->fieldByName(u"Custom%1"_s.arg(n + 1))
                .setDisplayLabel(ORVCustomFields[std::size_t(n)].DisplayName);
    });
}

// --- Adding from the catalogue ----------------------------------------------------------------

void TDM_InternalData::AppendCatalogueItem(const TMetalAsset& item)
{
    TDBDataset& ds = *qDS_Items;
    ds.append();
    ds.fieldByName(u"Name"_s).setAsString(item.Name);
    ds.fieldByName(u"Metal"_s).setAsInteger(item.Metal);
    ds.fieldByName(u"ObverseDesc"_s).setAsString(item.ObverseDesc);
    ds.fieldByName(u"ReverseDesc"_s).setAsString(item.ReverseDesc);
    ds.fieldByName(u"Series"_s).setAsString(item.Series);
    ds.fieldByName(u"Year"_s).setValue(ZeroToNull(item.Year));
    ds.fieldByName(u"WeightGram"_s).setAsFloat(item.WeightG);
    ds.fieldByName(u"MintID"_s).setAsInteger(MintIDByName(item.MintName));
    ds.fieldByName(u"CoinType"_s).setAsInteger(item.CoinType);
    ds.fieldByName(u"FaceValue"_s).setValue(ZeroToNull(item.FaceValue));
    ds.fieldByName(u"FaceValueCurrency"_s).setAsString(item.FaceValueCurrency);
    ds.fieldByName(u"Purity"_s).setAsString(item.Purity);
    ds.fieldByName(u"Thickness"_s).setValue(ZeroToNull(item.Thickness));
    ds.fieldByName(u"Diameter"_s).setValue(ZeroToNull(item.Diameter));
    ds.fieldByName(u"Width"_s).setValue(ZeroToNull(item.Width));
    ds.fieldByName(u"Height"_s).setValue(ZeroToNull(item.Height));
    ds.fieldByName(u"Edge"_s).setAsString(item.Edge);
    ds.fieldByName(u"MintMark"_s).setAsBoolean(item.MintMark);
    ds.fieldByName(u"Country"_s).setAsString(item.Country);
    ds.fieldByName(u"Artist"_s).setAsString(item.Artist);
    ds.fieldByName(u"Description"_s).setAsString(item.Description.join(u"\r\n"_s));
    ds.fieldByName(u"Mintage"_s).setValue(ZeroToNull(item.Mintage));

    static const std::pair<quint8, const char16_t*> photos[] = {
        {TCoverPicture::kObverse, u"PhotoFront"},
        {TCoverPicture::kReverse, u"PhotoBack"},
        {TCoverPicture::kSide, u"PhotoSide"},
        {TCoverPicture::kInABox, u"PhotoInBox"},
    };
    for (const auto& [kind, fieldName] : photos) {
        const TCoverPicture* picture = item.PictureOfKind(kind);
        if (picture && !picture->IsEmpty())
            ds.fieldByName(QString::fromUtf16(fieldName)).setAsBytes(picture->Data);
    }
    ds.post();
}

// --- Event handlers of qDS_Items ----------------------------------------------------------------

void TDM_InternalData::qDS_ItemsAfterInsert(TDBDataset& dataset)
{
    WithControlsDisabled(dataset, [&dataset] {
        auto f = [&dataset](const QString& name) -> TDBField& { return dataset.fieldByName(name); };
        f(u"Metal"_s).setAsInteger(mtGold);
        f(u"WeightGram"_s).setAsFloat(TroyOunceGrams);
        f(u"CoinType"_s).setAsInteger(ctCoin);
        for (const QString& name :
             {u"Purity"_s, u"MintID"_s, u"SerialNumbers"_s, u"Mintage"_s, u"ObverseDesc"_s, u"ReverseDesc"_s})
            f(name).clear();
        f(u"ExpectedPremium"_s).setAsFloat(0);
        f(u"PurchaseDate"_s).setAsDate(QDate::currentDate());
        f(u"Qty"_s).setAsInteger(ORVDefaultValues.Qty);
        f(u"Condition"_s).setAsString(ORVDefaultValues.Condition);
        f(u"Status"_s).setAsString(ORVDefaultValues.Status);
        f(u"Packaging"_s).setAsString(ORVDefaultValues.Packaging);
        f(u"Location"_s).setAsString(ORVDefaultValues.Location);
        f(u"Owner"_s).setAsString(ORVDefaultValues.Owner);
        f(u"Store"_s).setAsString(ORVDefaultValues.Store);
        f(u"Rating"_s).setAsFloat(ORVDefaultValues.Rating);
        f(u"Grade"_s).setAsString(ORVDefaultValues.Grade);
        f(u"GradeService"_s).setAsString(ORVDefaultValues.GradeService);
        f(u"Country"_s).clear();
        f(u"PhotoFront"_s).clear();
        f(u"PhotoBack"_s).clear();
    });
}

void TDM_InternalData::LoadCaptionTexts()
{
    for (int m = 0; m < MetalCount; ++m)
        m_metalTexts[std::size_t(m)] = MetalToText(m);
    for (int t = 0; t < CoinTypeCount; ++t)
        m_coinTypeTexts[std::size_t(t)] = CoinTypeToText(t);
}

void TDM_InternalData::qDS_ItemsBeforePost(TDBDataset& /*dataset*/)
{
    LoadCaptionTexts();
    if (m_fPhotoFront->isNull())
        m_fThumbFront->setAsBytes(BlankThumbnail(m_fMetal->asInteger(), m_fCoinType->asInteger(), true));
    if (m_fPhotoBack->isNull())
        m_fThumbBack->setAsBytes(BlankThumbnail(m_fMetal->asInteger(), m_fCoinType->asInteger(), false));
}

QByteArray TDM_InternalData::BlankThumbnail(int metal, int coinType, bool isObverse)
{
    const QString name = BlankPictureName(metal, coinType, isObverse);
    const auto it = m_blankThumbnails.constFind(name);
    if (it != m_blankThumbnails.constEnd())
        return *it;
    const QByteArray thumbnail = MakeThumbnail(BlankPicture(metal, coinType, isObverse));
    m_blankThumbnails.insert(name, thumbnail);
    return thumbnail;
}

void TDM_InternalData::qDS_ItemsReadRecord(TDBDataset& dataset)
{
    const bool reading = dataset.state() == TDatasetState::CalcFields;
    const std::optional<TDBRecalcRecord> record =
        reading ? std::optional<TDBRecalcRecord>(dataset.recordBeingRead()) : std::nullopt;
    if (record ? record->isNull(*m_fWeightG) : m_fWeightG->isNull()) {
        m_fWeightOz->clear();
        m_fWeightGram->clear();
        return;
    }
    const double grams = record ? record->asFloat(*m_fWeightG) : m_fWeightG->asFloat();
    m_fWeightOz->setAsFloat(grams / TroyOunceGrams);
    m_fWeightGram->setAsFloat(grams);
}

void TDM_InternalData::qDS_ItemsCalcFields(TDBDataset& dataset)
{
    // A record read from the file is read through the typed record; one being edited, posted or
    // cancelled through its fields.
    if (dataset.state() == TDatasetState::CalcFields) {
        TDBRecalcRecord record = dataset.recordBeingRead();
        TRecalcValues values{record};
        CalcRecord(values, values);
    } else {
        TFieldValues values;
        CalcRecord(values, values);
    }
}

template <typename TValues> void TDM_InternalData::CalcRecord(const TValues& read, const TValues& write)
{
    const int metal = read.Integer(m_fMetal);
    const int coinType = read.Integer(m_fCoinType);
    const QString metalText = metal >= 0 && metal < MetalCount ? m_metalTexts[std::size_t(metal)] : QString();
    const QString coinTypeText =
        coinType >= 0 && coinType < CoinTypeCount ? m_coinTypeTexts[std::size_t(coinType)] : QString();
    m_fCaption->setAsString(ItemCaption(m_fName->asString(), read.Float(m_fWeightG), read.Integer(m_fYear),
                                        metalText, coinTypeText));
    ValueRecord(read, write);
}

template <typename TReader, typename TWriter>
void TDM_InternalData::ValueRecord(const TReader& read, const TWriter& write) const
{
    const int metal = read.Integer(m_fMetal);
    TItemValuationInput input;
    input.Spot = SpotPrices().SpotPriceOf(metal);
    input.WeightG = read.Float(m_fWeightG);
    input.Qty = read.Integer(m_fQty);
    input.Price = read.Float(m_fPrice);
    // TotalPrice matters only with a spot price.
    input.TotalPrice = input.Spot > 0 ? read.Float(m_fTotalPrice) : 0.0;
    input.ExpectedPremium = read.Float(m_fExpectedPremium);
    const TItemValuation value = ValueItem(input);
    write.Set(m_fSpotValue, value.SpotValue);
    write.Set(m_fLiquidationValue, value.LiquidationValue);
    write.Set(m_fROI, value.ROI);
    write.Set(m_fSpotValuexQty, value.SpotValuexQty);
    write.Set(m_fLiquidationValuexQty, value.LiquidationValuexQty);
    write.Set(m_fROIxQty, value.ROIxQty);
    write.Set(m_fROIPercent, value.ROIPercent);
}

void TDM_InternalData::qDS_ItemsWeightGramChange(TDBField& /*field*/)
{
    const QVariant grams = m_fWeightGram->value();
    if (grams.isNull()) {
        if (m_fWeightG->isNull())
            return;
        TChangeHandlerMute mute(*m_fWeightOz);
        m_fWeightG->clear();
        m_fWeightOz->clear();
        return;
    }
    const double g = m_fWeightGram->asFloat();
    if (!m_fWeightG->isNull() && SameWeight(m_fWeightG->asFloat(), g))
        return;
    TChangeHandlerMute mute(*m_fWeightOz);
    m_fWeightG->setAsFloat(g);
    m_fWeightOz->setAsFloat(g / TroyOunceGrams);
}

void TDM_InternalData::qDS_ItemsWeightOzChange(TDBField& /*field*/)
{
    const QVariant ounces = m_fWeightOz->value();
    if (ounces.isNull()) {
        if (m_fWeightG->isNull())
            return;
        TChangeHandlerMute mute(*m_fWeightGram);
        m_fWeightG->clear();
        m_fWeightGram->clear();
        return;
    }
    const double g = m_fWeightOz->asFloat() * TroyOunceGrams;
    if (!m_fWeightG->isNull() && SameWeight(m_fWeightG->asFloat(), g))
        return;
    TChangeHandlerMute mute(*m_fWeightGram);
    m_fWeightG->setAsFloat(g);
    m_fWeightGram->setAsFloat(g);
}

void TDM_InternalData::qDS_ItemsPhotoFrontChange(TDBField& /*field*/)
{
    m_fThumbFront->setValue(MakeThumbnail(m_fPhotoFront->value()));
}

void TDM_InternalData::qDS_ItemsPhotoBackChange(TDBField& /*field*/)
{
    m_fThumbBack->setValue(MakeThumbnail(m_fPhotoBack->value()));
}
