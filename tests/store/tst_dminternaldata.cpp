// The collection data module over real collection files made from the blank template.

#include "dmInternalData.h"
#include "support_store.h"
#include "uBlankPictures.h"
#include "uDBError.h"
#include "uObjs.h"
#include "uSplashText.h"
#include "uSpot.h"
#include "uTemplate.h"
#include "uThumbnail.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

const double kNull = std::nan("");

void SetSpot(int metal, double price)
{
    TSpotPrice spot;
    spot.Metal = metal;
    spot.Price = price;
    SpotPrices().Add(spot);
}

// A field value as a double, NaN for NULL.
double NumberOrNaN(const QVariant& v)
{
    return v.isNull() ? kNull : v.toDouble();
}

bool SameNumber(double actual, double expected)
{
    if (std::isnan(expected) || std::isnan(actual))
        return std::isnan(expected) && std::isnan(actual);
    return std::fabs(actual - expected) <= 1e-9 * std::max(1.0, std::fabs(expected));
}

QSize ImageSize(const QVariant& bytes)
{
    return QImage::fromData(bytes.toByteArray()).size();
}

} // namespace

class TestInternalData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void instanceAndSplash();
    void connectionParameters();
    void firstItemGetsId265();
    void afterInsertDefaults_data();
    void afterInsertDefaults();
    void afterInsertUsesChangedDefaultValues();
    void ouncesTypedGiveGrams();
    void gramsTypedGiveOunces();
    void sameWeightStopsTheChain_data();
    void sameWeightStopsTheChain();
    void weightsOnRead();
    void captionThroughDataset_data();
    void captionThroughDataset();
    void valuation_data();
    void valuation();
    void refreshFollowsNewSpotPrices();
    void requiredFieldFailure_data();
    void requiredFieldFailure();
    void photoGivesThumbnail();
    void removedPhotoGivesBlankThumbnailAgain();
    void blankThumbnails_data();
    void blankThumbnails();
    void appendCatalogueItem();
    void appendCatalogueItemMints_data();
    void appendCatalogueItemMints();
    void mintLookups();
    void translateFieldLabels();
    void fileWithoutTblVerOpens();
    void fileLackingColumnCannotOpen();
    void missingFileKeepsOpenCollection();
    void notADatabaseRaisesDriverMessage();
    void saveAsSameFileDoesNothing_data();
    void saveAsSameFileDoesNothing();
    void saveAsCommitsAndCopies();
    void saveAsNotConnectedDoesNothing();
    void createBlankReplacesFile();
    void vacuumShrinksFile();
    void postPendingEdits();
    void basicStatsSums();

private:
    QString NewFile(const QString& name);
    // Appends an item with a name and posts it; returns its ID.
    qint64 AddItem(const QString& name, double grams, int metal = 0);
    TDBField& F(const QString& name) { return m_dm->qDS_Items->fieldByName(name); }

    QTemporaryDir m_dir;
    std::unique_ptr<TDM_InternalData> m_dm;
    QString m_path;
    int m_fileCounter = 0;
};

void TestInternalData::initTestCase()
{
    InitStoreTestEnvironment();
    QVERIFY(m_dir.isValid());
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
}

QString TestInternalData::NewFile(const QString& name)
{
    return m_dir.filePath(u"%1_%2.db"_s.arg(name).arg(++m_fileCounter));
}

void TestInternalData::init()
{
    SpotPrices().Clear();
    ORVDefaultValues = TORVDefaultValues();
    DBPath.clear();
    m_dm = std::make_unique<TDM_InternalData>();
    m_dm->TranslateFieldLabels();
    m_path = NewFile(u"collection"_s);
    m_dm->CreateBlankDatabase(m_path);
    QVERIFY(m_dm->ConnectDatabase(m_path));
    QVERIFY(m_dm->Connected());
}

void TestInternalData::cleanup()
{
    m_dm.reset();
    SpotPrices().Clear();
}

qint64 TestInternalData::AddItem(const QString& name, double grams, int metal)
{
    m_dm->qDS_Items->append();
    F(u"Name"_s).setAsString(name);
    F(u"Metal"_s).setAsInteger(metal);
    F(u"WeightGram"_s).setAsFloat(grams);
    m_dm->qDS_Items->post();
    return F(u"ID"_s).asLargeInt();
}

void TestInternalData::instanceAndSplash()
{
    QCOMPARE(DM_InternalData(), m_dm.get());
    m_dm.reset();
    QCOMPARE(DM_InternalData(), nullptr);

    QStringList shown;
    SetSplashTextHandler([&shown](const QString& text) { shown.append(text); });
    m_dm = std::make_unique<TDM_InternalData>();
    QVERIFY(m_dm->DatabasePath.isEmpty());
    QVERIFY(!m_dm->Connected());
    QVERIFY(!m_dm->ADConnection->connected());
    QVERIFY(m_dm->ConnectDatabase(m_path));
    SetSplashTextHandler({});
    QCOMPARE(shown, QStringList({u"Loading data..."_s, u"Connecting to database..."_s}));
    QCOMPARE(m_dm->DatabasePath, QFileInfo(m_path).absoluteFilePath());
    QCOMPARE(DBPath, m_dm->DatabasePath);
}

void TestInternalData::connectionParameters()
{
    TDBConnection& c = *m_dm->ADConnection;
    QCOMPARE(c.paramNames().size(), 6);
    QCOMPARE(c.param(u"Database"_s), m_path);
    QCOMPARE(c.param(u"StringFormat"_s), u"Unicode"_s);
    QCOMPARE(c.param(u"OpenMode"_s), u"CreateUTF8"_s);
    QCOMPARE(c.param(u"LockingMode"_s), u"Normal"_s);
    QCOMPARE(c.param(u"DriverID"_s), u"SQLite"_s);
    QCOMPARE(c.param(u"ForeignKeys"_s), u"On"_s);
    QVERIFY(m_dm->tblMints->active());
    QCOMPARE(m_dm->tblMints->recordCount(), 67);
    QCOMPARE(m_dm->qDS_Items->recordCount(), 0);
    QCOMPARE(m_dm->qDS_Items->sql(), TDM_InternalData::ItemsSQL());
    QCOMPARE(m_dm->qDS_Items->updateTableName(), u"tblCoins"_s);
    QCOMPARE(m_dm->qDS_Items->indexFieldNames(), u"ID"_s);
    QVERIFY(!m_dm->qDS_Items->autoCalcFields());
    QCOMPARE(m_dm->qDS_Items->keyField()->fieldName(), u"ID"_s);
    QCOMPARE(m_dm->qDS_Items->keyField()->dataType(), TFieldType::AutoInc);
}

void TestInternalData::firstItemGetsId265()
{
    QCOMPARE(AddItem(u"First"_s, TroyOunceGrams), qint64(265));
    QCOMPARE(AddItem(u"Second"_s, TroyOunceGrams), qint64(266));
    m_dm->qDS_Items->deleteRecord();
    QCOMPARE(AddItem(u"Third"_s, TroyOunceGrams), qint64(267));
    QCOMPARE(SelectOnFile(m_path, u"SELECT group_concat(ID) FROM tblCoins"_s).toString(), u"265,267"_s);
}

void TestInternalData::afterInsertDefaults_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariant>("value");

    QTest::newRow("Metal") << "Metal" << QVariant(0);
    QTest::newRow("WeightG") << "WeightG" << QVariant(TroyOunceGrams);
    QTest::newRow("WeightGram") << "WeightGram" << QVariant(TroyOunceGrams);
    QTest::newRow("WeightOz") << "WeightOz" << QVariant(1.0);
    QTest::newRow("CoinType") << "CoinType" << QVariant(0);
    QTest::newRow("Purity") << "Purity" << QVariant();
    QTest::newRow("MintID") << "MintID" << QVariant();
    QTest::newRow("SerialNumbers") << "SerialNumbers" << QVariant();
    QTest::newRow("Mintage") << "Mintage" << QVariant();
    QTest::newRow("ObverseDesc") << "ObverseDesc" << QVariant();
    QTest::newRow("ReverseDesc") << "ReverseDesc" << QVariant();
    QTest::newRow("ExpectedPremium") << "ExpectedPremium" << QVariant(0.0);
    QTest::newRow("PurchaseDate") << "PurchaseDate" << QVariant(QDate::currentDate());
    QTest::newRow("Qty") << "Qty" << QVariant(1);
    QTest::newRow("Condition") << "Condition" << QVariant(u"Brilliant uncirculated (BU)"_s);
    QTest::newRow("Status") << "Status" << QVariant(u"In collection"_s);
    QTest::newRow("Packaging") << "Packaging" << QVariant(u"Plastic capsule"_s);
    QTest::newRow("Location") << "Location" << QVariant(u"Vault"_s);
    QTest::newRow("Owner") << "Owner" << QVariant(u"Me"_s);
    QTest::newRow("Store") << "Store" << QVariant(u"Local coin shop"_s);
    QTest::newRow("Rating") << "Rating" << QVariant(5.0);
    QTest::newRow("Grade") << "Grade" << QVariant(u"Not graded"_s);
    QTest::newRow("GradeService") << "GradeService" << QVariant(u"Not graded"_s);
    QTest::newRow("Country") << "Country" << QVariant();
    QTest::newRow("PhotoFront") << "PhotoFront" << QVariant();
    QTest::newRow("PhotoBack") << "PhotoBack" << QVariant();
    QTest::newRow("Name stays empty") << "Name" << QVariant();
    QTest::newRow("Price stays NULL") << "Price" << QVariant();
    QTest::newRow("Custom1 stays NULL") << "Custom1" << QVariant();
}

void TestInternalData::afterInsertDefaults()
{
    QFETCH(QString, field);
    QFETCH(QVariant, value);

    QSignalSpy rowChanges(m_dm->qDS_Items, &TDBDataset::rowChanged);
    m_dm->qDS_Items->append();
    QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Insert);
    // The defaults were set with controls disabled: one change of the row for the whole batch.
    QCOMPARE(rowChanges.size(), 1);
    QVERIFY(!m_dm->qDS_Items->controlsDisabled());
    const QVariant actual = F(field).value();
    if (value.isNull()) {
        QVERIFY2(actual.isNull(), qPrintable(actual.toString()));
    } else if (value.metaType().id() == QMetaType::Double) {
        QVERIFY2(SameNumber(actual.toDouble(), value.toDouble()), qPrintable(actual.toString()));
    } else {
        QCOMPARE(actual, value);
    }
    // A record left as it is cannot be posted: it has no name.
    QVERIFY_THROWS_EXCEPTION(EDatabaseError, m_dm->qDS_Items->post());
    m_dm->qDS_Items->cancel();
}

void TestInternalData::afterInsertUsesChangedDefaultValues()
{
    ORVDefaultValues.Qty = 3;
    ORVDefaultValues.Condition = u"Fine (F)"_s;
    ORVDefaultValues.Status = u"Wanted"_s;
    ORVDefaultValues.Packaging = u"Coin tube"_s;
    ORVDefaultValues.Location = u"Bank \"box\" 7"_s;
    ORVDefaultValues.Owner = u"O'Neil"_s;
    ORVDefaultValues.Store = u"Apmex"_s;
    ORVDefaultValues.Rating = 3.5;
    ORVDefaultValues.Grade = u"MS70"_s;
    ORVDefaultValues.GradeService = u"PCGS"_s;
    const qint64 id = AddItem(u"Defaults"_s, 100);
    const QString row =
        SelectOnFile(m_path, u"SELECT Qty || '|' || Condition || '|' || Status || '|' || "
                             "Packaging || '|' || Location || '|' || Owner || '|' || Store || "
                             "'|' || Rating || '|' || Grade || '|' || GradeService || '|' || "
                             "PurchaseDate FROM tblCoins WHERE ID = %1"_s.arg(id))
            .toString();
    QCOMPARE(row, u"3|Fine (F)|Wanted|Coin tube|Bank \"box\" 7|O'Neil|Apmex|3.5|MS70|PCGS|"_s +
                      QDate::currentDate().toString(Qt::ISODate));
}

void TestInternalData::ouncesTypedGiveGrams()
{
    AddItem(u"Bar"_s, 100);
    int gramEvents = 0;
    int ounceEvents = 0;
    const TFieldNotifyEvent gramHandler = F(u"WeightGram"_s).onChange();
    const TFieldNotifyEvent ounceHandler = F(u"WeightOz"_s).onChange();
    F(u"WeightGram"_s).setOnChange([&](TDBField& f) {
        ++gramEvents;
        gramHandler(f);
    });
    F(u"WeightOz"_s).setOnChange([&](TDBField& f) {
        ++ounceEvents;
        ounceHandler(f);
    });

    m_dm->qDS_Items->edit();
    F(u"WeightOz"_s).setAsFloat(1);
    QCOMPARE(ounceEvents, 1);
    QCOMPARE(gramEvents, 0);
    QCOMPARE(F(u"WeightG"_s).asFloat(), TroyOunceGrams);
    QCOMPARE(F(u"WeightGram"_s).asFloat(), TroyOunceGrams);
    // Both handlers are attached again.
    F(u"WeightGram"_s).setAsFloat(62.207);
    QCOMPARE(gramEvents, 1);
    QCOMPARE(ounceEvents, 1);
    QVERIFY(SameNumber(F(u"WeightOz"_s).asFloat(), 2.0));
    m_dm->qDS_Items->post();
    QCOMPARE(SelectOnFile(m_path, u"SELECT WeightG FROM tblCoins"_s).toDouble(), 62.207);
    QVERIFY(SameNumber(F(u"WeightOz"_s).asFloat(), 2.0));
    QCOMPARE(F(u"WeightOz"_s).precision(), 4);
}

void TestInternalData::gramsTypedGiveOunces()
{
    m_dm->qDS_Items->append();
    F(u"Name"_s).setAsString(u"Half"_s);
    F(u"WeightGram"_s).setAsFloat(15.55);
    QCOMPARE(F(u"WeightG"_s).asFloat(), 15.55);
    QVERIFY(SameNumber(F(u"WeightOz"_s).asFloat(), 15.55 / TroyOunceGrams));
    m_dm->qDS_Items->post();
    QCOMPARE(F(u"Caption"_s).asString(), u"Half ½ oz Gold Coin"_s);
}

void TestInternalData::sameWeightStopsTheChain_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<bool>("changes");

    QTest::newRow("equal") << 1.0 << false;
    QTest::newRow("within 1e-12 relative") << 1.0 + 5e-13 << false;
    QTest::newRow("beyond 1e-12 relative") << 1.0 + 1e-9 << true;
    QTest::newRow("clearly other") << 2.0 << true;
}

void TestInternalData::sameWeightStopsTheChain()
{
    QFETCH(double, factor);
    QFETCH(bool, changes);
    const double grams = 1000.0;
    AddItem(u"Kilo"_s, grams);
    m_dm->qDS_Items->edit();
    // A marker in WeightOz that only the gram rule overwrites.
    {
        const TFieldNotifyEvent handler = F(u"WeightOz"_s).onChange();
        F(u"WeightOz"_s).setOnChange({});
        F(u"WeightOz"_s).setAsFloat(-7);
        F(u"WeightOz"_s).setOnChange(handler);
    }
    F(u"WeightGram"_s).setAsFloat(grams * factor);
    if (changes) {
        QCOMPARE(F(u"WeightG"_s).asFloat(), grams * factor);
        QVERIFY(SameNumber(F(u"WeightOz"_s).asFloat(), grams * factor / TroyOunceGrams));
    } else {
        QCOMPARE(F(u"WeightG"_s).asFloat(), grams);
        QCOMPARE(F(u"WeightOz"_s).asFloat(), -7.0);
    }
    m_dm->qDS_Items->cancel();

    // The same rule for ounces, on a tiny weight where the absolute floor counts.
    m_dm->qDS_Items->edit();
    F(u"WeightG"_s).setAsFloat(1e-13);
    F(u"WeightOz"_s).setAsFloat(3e-13 / TroyOunceGrams); // 2e-13 apart: the same
    QCOMPARE(F(u"WeightG"_s).asFloat(), 1e-13);
    F(u"WeightOz"_s).setAsFloat(2e-12 / TroyOunceGrams); // 1.9e-12 apart: not the same
    QVERIFY(SameNumber(F(u"WeightGram"_s).asFloat(), 2e-12));
    m_dm->qDS_Items->cancel();
}

void TestInternalData::weightsOnRead()
{
    AddItem(u"A"_s, 311.035);
    ExecOnFile(m_path, u"UPDATE tblCoins SET WeightG = 62.207"_s);
    m_dm->RefreshItems();
    QCOMPARE(F(u"WeightGram"_s).asFloat(), 62.207);
    QVERIFY(SameNumber(F(u"WeightOz"_s).asFloat(), 2.0));
    QCOMPARE(F(u"Caption"_s).asString(), u"A 2 oz Gold Coin"_s);
}

void TestInternalData::captionThroughDataset_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("grams");
    QTest::addColumn<QVariant>("year");
    QTest::addColumn<int>("metal");
    QTest::addColumn<int>("coinType");
    QTest::addColumn<QString>("caption");

    QTest::newRow("with year") << "Eagle" << TroyOunceGrams << QVariant(2012) << 0 << 0
                               << "Eagle 1 oz 2012 Gold Coin";
    QTest::newRow("year NULL") << "Maple" << TroyOunceGrams << QVariant() << 1 << 0
                               << "Maple 1 oz Silver Coin";
    QTest::newRow("year 0") << "Maple" << TroyOunceGrams << QVariant(0) << 1 << 0 << "Maple 1 oz Silver Coin";
    QTest::newRow("bar") << "Argor" << 1000.0 << QVariant(2020) << 2 << 3 << "Argor 1 kg 2020 Platinum Bar";
    QTest::newRow("quote in name") << "Prospector's \"Gold\"" << 2.5 << QVariant() << 5 << 2
                                   << "Prospector's \"Gold\" 2.5 g Copper Round";
}

void TestInternalData::captionThroughDataset()
{
    QFETCH(QString, name);
    QFETCH(double, grams);
    QFETCH(QVariant, year);
    QFETCH(int, metal);
    QFETCH(int, coinType);
    QFETCH(QString, caption);
    m_dm->qDS_Items->append();
    F(u"Name"_s).setAsString(name);
    F(u"WeightGram"_s).setAsFloat(grams);
    F(u"Year"_s).setValue(year);
    F(u"Metal"_s).setAsInteger(metal);
    F(u"CoinType"_s).setAsInteger(coinType);
    m_dm->qDS_Items->post();
    QCOMPARE(F(u"Caption"_s).asString(), caption);
    // The same after a fresh read of the file.
    QVERIFY(m_dm->ConnectDatabase(m_path));
    m_dm->qDS_Items->last();
    QCOMPARE(F(u"Caption"_s).asString(), caption);
}

void TestInternalData::valuation_data()
{
    QTest::addColumn<double>("spot");
    QTest::addColumn<QVariant>("qty");
    QTest::addColumn<QVariant>("price");
    QTest::addColumn<QVariant>("premium");
    QTest::addColumn<QString>("purity");
    QTest::addColumn<double>("spotValue");
    QTest::addColumn<double>("liquidation");
    QTest::addColumn<double>("roi");
    QTest::addColumn<double>("spotxQty");
    QTest::addColumn<double>("liquidationxQty");
    QTest::addColumn<double>("roixQty");
    QTest::addColumn<double>("roiPercent");

    // Every row: one troy ounce of gold.
    QTest::newRow("spot 1000, premium 50")
        << 1000.0 << QVariant(1) << QVariant(900.0) << QVariant(50.0) << ".999" << 1000.0 << 1050.0 << 150.0
        << 1000.0 << 1050.0 << 150.0 << (150.0 / 900.0 * 100);
    QTest::newRow("two pieces") << 1000.0 << QVariant(2) << QVariant(900.0) << QVariant(50.0) << ".999"
                                << 1000.0 << 1050.0 << 150.0 << 2000.0 << 2100.0 << 300.0
                                << (300.0 / 1800.0 * 100);
    QTest::newRow("purity text ignored")
        << 1000.0 << QVariant(1) << QVariant(900.0) << QVariant(50.0) << ".500" << 1000.0 << 1050.0 << 150.0
        << 1000.0 << 1050.0 << 150.0 << (150.0 / 900.0 * 100);
    QTest::newRow("no spot") << 0.0 << QVariant(1) << QVariant(900.0) << QVariant(50.0) << ".999" << 0.0
                             << 50.0 << kNull << 0.0 << 50.0 << kNull << kNull;
    QTest::newRow("TotalPrice 0") << 1000.0 << QVariant(1) << QVariant(0.0) << QVariant(0.0) << ".999"
                                  << 1000.0 << 1000.0 << kNull << 1000.0 << 1000.0 << kNull << kNull;
    QTest::newRow("Price NULL") << 1000.0 << QVariant(1) << QVariant() << QVariant(0.0) << ".999" << 1000.0
                                << 1000.0 << kNull << 1000.0 << 1000.0 << kNull << kNull;
    QTest::newRow("Qty 0") << 1000.0 << QVariant(0) << QVariant(900.0) << QVariant(50.0) << ".999" << 1000.0
                           << 1050.0 << kNull << 0.0 << 0.0 << kNull << kNull;
    QTest::newRow("Qty NULL") << 1000.0 << QVariant() << QVariant(900.0) << QVariant(50.0) << ".999" << 1000.0
                              << 1050.0 << kNull << 0.0 << 0.0 << kNull << kNull;
    QTest::newRow("premium NULL") << 1000.0 << QVariant(1) << QVariant(900.0) << QVariant() << ".999"
                                  << 1000.0 << 1000.0 << 100.0 << 1000.0 << 1000.0 << 100.0
                                  << (100.0 / 900.0 * 100);
    QTest::newRow("loss") << 1000.0 << QVariant(1) << QVariant(1200.0) << QVariant(0.0) << ".999" << 1000.0
                          << 1000.0 << -200.0 << 1000.0 << 1000.0 << -200.0 << (-200.0 / 1200.0 * 100);
}

void TestInternalData::valuation()
{
    QFETCH(double, spot);
    QFETCH(QVariant, qty);
    QFETCH(QVariant, price);
    QFETCH(QVariant, premium);
    QFETCH(QString, purity);
    QFETCH(double, spotValue);
    QFETCH(double, liquidation);
    QFETCH(double, roi);
    QFETCH(double, spotxQty);
    QFETCH(double, liquidationxQty);
    QFETCH(double, roixQty);
    QFETCH(double, roiPercent);
    if (spot > 0)
        SetSpot(mtGold, spot);
    SetSpot(mtSilver, 30); // another metal's price plays no part

    m_dm->qDS_Items->append();
    F(u"Name"_s).setAsString(u"Eagle"_s);
    F(u"Qty"_s).setValue(qty);
    F(u"Price"_s).setValue(price);
    F(u"ExpectedPremium"_s).setValue(premium);
    F(u"Purity"_s).setAsString(purity);
    m_dm->qDS_Items->post();

    const QList<std::pair<QString, double>> expected = {
        {u"SpotValue"_s, spotValue},    {u"LiquidationValue"_s, liquidation},         {u"ROI"_s, roi},
        {u"SpotValuexQty"_s, spotxQty}, {u"LiquidationValuexQty"_s, liquidationxQty}, {u"ROIxQty"_s, roixQty},
        {u"ROIPercent"_s, roiPercent}};
    // Once computed after the post, and once on a fresh read of the file.
    for (int pass = 0; pass < 2; ++pass) {
        if (pass == 1) {
            QVERIFY(m_dm->ConnectDatabase(m_path));
            m_dm->qDS_Items->first();
        }
        for (const auto& [name, value] : expected) {
            const double actual = NumberOrNaN(F(name).value());
            QVERIFY2(SameNumber(actual, value),
                     qPrintable(u"%1: %2, expected %3"_s.arg(name).arg(actual).arg(value)));
        }
    }
}

void TestInternalData::refreshFollowsNewSpotPrices()
{
    m_dm->qDS_Items->append();
    F(u"Name"_s).setAsString(u"Eagle"_s);
    F(u"Price"_s).setAsFloat(900);
    m_dm->qDS_Items->post();
    QCOMPARE(F(u"SpotValue"_s).asFloat(), 0.0);
    QVERIFY(F(u"ROI"_s).isNull());

    SetSpot(mtGold, 2000);
    // Nothing moves until the dataset is read again.
    QCOMPARE(F(u"SpotValue"_s).asFloat(), 0.0);
    QSignalSpy resets(m_dm->qDS_Items, &TDBDataset::afterReset);
    m_dm->RefreshItems();
    QCOMPARE(resets.size(), 1);
    QVERIFY(SameNumber(F(u"SpotValue"_s).asFloat(), 2000));
    QVERIFY(SameNumber(F(u"ROI"_s).asFloat(), 1100));

    // A pending edit is posted first.
    m_dm->qDS_Items->edit();
    F(u"Price"_s).setAsFloat(1000);
    m_dm->RefreshItems();
    QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Browse);
    QVERIFY(SameNumber(F(u"ROI"_s).asFloat(), 1000));
    QCOMPARE(SelectOnFile(m_path, u"SELECT Price FROM tblCoins"_s).toDouble(), 1000.0);
}

void TestInternalData::requiredFieldFailure_data()
{
    QTest::addColumn<bool>("editing");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("label");

    QTest::newRow("insert, Name empty") << false << "Name"
                                        << "Item name";
    QTest::newRow("edit, Name empty") << true << "Name"
                                      << "Item name";
    QTest::newRow("insert, WeightG NULL") << false << "WeightG"
                                          << "Weight";
    QTest::newRow("edit, Metal NULL") << true << "Metal"
                                      << "Metal";
    QTest::newRow("edit, CoinType NULL") << true << "CoinType"
                                         << "Type";
}

void TestInternalData::requiredFieldFailure()
{
    QFETCH(bool, editing);
    QFETCH(QString, field);
    QFETCH(QString, label);

    // A language in which the label differs from the field name.
    const QByteArray language = "<Language name=\"Test\"><String name=\"cSF_Name\">Item name</String>"
                                "<String name=\"cSF_Weight\">Weight</String>"
                                "<String name=\"cSF_Metal\">Metal</String>"
                                "<String name=\"cSF_Type\">Type</String></Language>";
    QVERIFY(XMLLanguage().LoadFromData(language, u"Test"_s));
    m_dm->TranslateFieldLabels();
    QVERIFY(LoadBuiltInLanguage(u"ENGLISHLANG"_s, u"English"_s));

    if (editing) {
        AddItem(u"Kept"_s, 50);
        m_dm->qDS_Items->edit();
    } else {
        m_dm->qDS_Items->append();
        F(u"Name"_s).setAsString(u"New"_s);
    }
    if (field == u"WeightG"_s)
        F(u"WeightGram"_s).clear();
    else if (field == u"Name"_s)
        F(field).setAsString(QString());
    else
        F(field).clear();

    const TDatasetState before = m_dm->qDS_Items->state();
    try {
        m_dm->qDS_Items->post();
        QFAIL("the post went through");
    } catch (const EDatabaseError& e) {
        QCOMPARE(e.message(), u"Field '%1' must have a value"_s.arg(label));
    }
    QCOMPARE(m_dm->qDS_Items->state(), before);
    QCOMPARE(SelectOnFile(m_path, u"SELECT count(*) FROM tblCoins WHERE Name <> 'Kept'"_s).toInt(), 0);
    m_dm->qDS_Items->cancel();
    QCOMPARE(m_dm->qDS_Items->recordCount(), editing ? 1 : 0);
}

void TestInternalData::photoGivesThumbnail()
{
    m_dm->qDS_Items->append();
    F(u"Name"_s).setAsString(u"Photo"_s);
    F(u"PhotoFront"_s).setAsBytes(TestPicture(600, 450, "JPEG"));
    QCOMPARE(ImageSize(F(u"ThumbFront"_s).value()), QSize(267, 200));
    QVERIFY(F(u"ThumbFront"_s).asBytes().startsWith("\xFF\xD8"));
    F(u"PhotoBack"_s).setAsBytes(TestPicture(50, 100));
    QCOMPARE(ImageSize(F(u"ThumbBack"_s).value()), QSize(100, 200));
    m_dm->qDS_Items->post();
    QCOMPARE(ImageSize(F(u"ThumbFront"_s).value()), QSize(267, 200));
    QCOMPARE(ImageSize(F(u"ThumbBack"_s).value()), QSize(100, 200));
    QVERIFY(F(u"ThumbBack"_s).asBytes().startsWith("\x89PNG"));
    // Side and box photographs have no thumbnail.
    m_dm->qDS_Items->edit();
    const QByteArray before = F(u"ThumbFront"_s).asBytes();
    F(u"PhotoSide"_s).setAsBytes(TestPicture(300, 300));
    F(u"PhotoInBox"_s).setAsBytes(TestPicture(300, 300));
    QCOMPARE(F(u"ThumbFront"_s).asBytes(), before);
    m_dm->qDS_Items->post();

    // A photograph that cannot be decoded fails the change.
    m_dm->qDS_Items->edit();
    QVERIFY_THROWS_EXCEPTION(EThumbnailError, F(u"PhotoFront"_s).setAsBytes("not a picture"));
    m_dm->qDS_Items->cancel();
}

void TestInternalData::removedPhotoGivesBlankThumbnailAgain()
{
    m_dm->qDS_Items->append();
    F(u"Name"_s).setAsString(u"Silver"_s);
    F(u"Metal"_s).setAsInteger(mtSilver);
    m_dm->qDS_Items->post();
    const QByteArray blankFront = MakeThumbnail(BlankPicture(mtSilver, ctCoin, true));
    const QByteArray blankBack = MakeThumbnail(BlankPicture(mtSilver, ctCoin, false));
    QCOMPARE(F(u"ThumbFront"_s).asBytes(), blankFront);
    QCOMPARE(F(u"ThumbBack"_s).asBytes(), blankBack);

    m_dm->qDS_Items->edit();
    F(u"PhotoFront"_s).setAsBytes(TestPicture(400, 400));
    m_dm->qDS_Items->post();
    QVERIFY(F(u"ThumbFront"_s).asBytes() != blankFront);
    QCOMPARE(F(u"ThumbBack"_s).asBytes(), blankBack);

    m_dm->qDS_Items->edit();
    F(u"PhotoFront"_s).clear();
    m_dm->qDS_Items->post();
    QCOMPARE(F(u"ThumbFront"_s).asBytes(), blankFront);
    QCOMPARE(SelectOnFile(m_path, u"SELECT ThumbFront FROM tblCoins"_s).toByteArray(), blankFront);
    QVERIFY(SelectOnFile(m_path, u"SELECT PhotoFront FROM tblCoins"_s).isNull());
}

void TestInternalData::blankThumbnails_data()
{
    QTest::addColumn<int>("metal");
    QTest::addColumn<int>("coinType");
    QTest::addColumn<int>("pictureMetal");
    QTest::addColumn<int>("pictureType");
    QTest::addColumn<bool>("sameBothSides");

    QTest::newRow("gold bar") << 0 << 3 << 0 << 3 << true;
    QTest::newRow("silver divisible bar") << 1 << 4 << 1 << 3 << true;
    QTest::newRow("platinum round") << 2 << 2 << 2 << 0 << false;
    QTest::newRow("copper rectangular coin") << 5 << 1 << 5 << 0 << false;
    QTest::newRow("type 7: gold coin") << 1 << 7 << 0 << 0 << false;
    QTest::newRow("metal 9: gold coin") << 9 << 3 << 0 << 0 << false;
}

void TestInternalData::blankThumbnails()
{
    QFETCH(int, metal);
    QFETCH(int, coinType);
    QFETCH(int, pictureMetal);
    QFETCH(int, pictureType);
    QFETCH(bool, sameBothSides);
    m_dm->qDS_Items->append();
    F(u"Name"_s).setAsString(u"Blank"_s);
    F(u"Metal"_s).setAsInteger(metal);
    F(u"CoinType"_s).setAsInteger(coinType);
    m_dm->qDS_Items->post();
    const QByteArray front = F(u"ThumbFront"_s).asBytes();
    const QByteArray back = F(u"ThumbBack"_s).asBytes();
    QCOMPARE(front == back, sameBothSides);
    QCOMPARE(front, MakeThumbnail(BlankPicture(pictureMetal, pictureType, true)));
    QCOMPARE(back, MakeThumbnail(BlankPicture(pictureMetal, pictureType, false)));
    QCOMPARE(QImage::fromData(front).height(), ThumbnailHeight);
}

void TestInternalData::appendCatalogueItem()
{
    TMetalAsset asset;
    asset.Name = u"Britannia"_s;
    asset.Series = u"Britannia"_s;
    asset.Metal = mtSilver;
    asset.Year = 0;
    asset.WeightG = TroyOunceGrams;
    asset.MintName = u"The Royal Mint"_s;
    asset.CoinType = ctCoin;
    asset.FaceValue = 2;
    asset.FaceValueCurrency = u"GBP"_s;
    asset.Purity = u".999"_s;
    asset.Thickness = 0;
    asset.Diameter = 38.61;
    asset.Width = 0;
    asset.Height = 0;
    asset.Mintage = 0;
    asset.Edge = u"Reeded"_s;
    asset.MintMark = true;
    asset.Country = u"GB"_s;
    asset.ObverseDesc = u"The Queen"_s;
    asset.ReverseDesc = u"Britannia"_s;
    asset.Artist = u"Philip Nathan"_s;
    asset.Description = QStringList({u"Line one"_s, u"Line two"_s});
    asset.AddPicture(TCoverPicture::kThumbnail, u"t.jpg"_s).Data = TestPicture(100, 100, "JPEG");
    asset.AddPicture(TCoverPicture::kObverse, u"o.jpg"_s).Data = TestPicture(800, 800, "JPEG");
    asset.AddPicture(TCoverPicture::kReverse, u"r.jpg"_s); // not downloaded
    asset.AddPicture(TCoverPicture::kInABox, u"b.png"_s).Data = TestPicture(300, 200);

    m_dm->AppendCatalogueItem(asset);
    QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Browse);
    QCOMPARE(F(u"ID"_s).asInteger(), 265);
    QCOMPARE(F(u"Caption"_s).asString(), u"Britannia 1 oz Silver Coin"_s);
    QCOMPARE(F(u"MintID"_s).asInteger(), 4);
    QVERIFY(F(u"Year"_s).isNull());
    QCOMPARE(F(u"FaceValue"_s).asFloat(), 2.0);
    QVERIFY(F(u"Thickness"_s).isNull());
    QCOMPARE(F(u"Diameter"_s).asFloat(), 38.61);
    QVERIFY(F(u"Width"_s).isNull());
    QVERIFY(F(u"Height"_s).isNull());
    QVERIFY(F(u"Mintage"_s).isNull());
    QCOMPARE(F(u"MintMark"_s).asBoolean(), true);
    QCOMPARE(F(u"Description"_s).asString(), u"Line one\r\nLine two"_s);
    QCOMPARE(F(u"WeightG"_s).asFloat(), TroyOunceGrams);
    // After-insert defaults survive where the record says nothing.
    QCOMPARE(F(u"Qty"_s).asInteger(), 1);
    QCOMPARE(F(u"Status"_s).asString(), u"In collection"_s);
    // Pictures: obverse and box held with data; the reverse has none.
    QCOMPARE(ImageSize(F(u"PhotoFront"_s).value()), QSize(800, 800));
    QCOMPARE(ImageSize(F(u"ThumbFront"_s).value()), QSize(200, 200));
    QVERIFY(F(u"PhotoBack"_s).isNull());
    QCOMPARE(F(u"ThumbBack"_s).asBytes(), MakeThumbnail(BlankPicture(mtSilver, ctCoin, false)));
    QVERIFY(F(u"PhotoSide"_s).isNull());
    QCOMPARE(ImageSize(F(u"PhotoInBox"_s).value()), QSize(300, 200));

    // The file holds the same, and non-zero values are kept.
    asset.Year = 2021;
    asset.Mintage = 100000;
    asset.Thickness = 2.5;
    asset.FaceValue = 0;
    m_dm->AppendCatalogueItem(asset);
    QCOMPARE(SelectOnFile(m_path, u"SELECT Year || '|' || Mintage || '|' || Thickness || '|' || "
                                  "ifnull(FaceValue, 'null') FROM tblCoins WHERE ID = 266"_s)
                 .toString(),
             u"2021|100000|2.5|null"_s);
}

void TestInternalData::appendCatalogueItemMints_data()
{
    QTest::addColumn<QString>("mint");
    QTest::addColumn<int>("mintId");

    QTest::newRow("known") << "Perth Mint" << 2;
    QTest::newRow("quote in name") << "Prospector's Gold & Gems" << 24;
    QTest::newRow("parentheses") << "OPM (Ohio Precious Metals)" << 37;
    QTest::newRow("unknown") << "Mint of Atlantis" << -1;
    QTest::newRow("other case") << "perth mint" << -1;
    QTest::newRow("empty") << "" << -1;
    QTest::newRow("SQL text") << "x' OR '1'='1" << -1;
}

void TestInternalData::appendCatalogueItemMints()
{
    QFETCH(QString, mint);
    QFETCH(int, mintId);
    TMetalAsset asset;
    asset.Name = u"Item"_s;
    asset.WeightG = 10;
    asset.MintName = mint;
    m_dm->AppendCatalogueItem(asset);
    QCOMPARE(F(u"MintID"_s).asInteger(), mintId);
    QCOMPARE(SelectOnFile(m_path, u"SELECT MintID FROM tblCoins"_s).toInt(), mintId);
    QCOMPARE(m_dm->MintIDByName(mint), mintId);
}

void TestInternalData::mintLookups()
{
    QCOMPARE(m_dm->MintIDByName(u"Royal Canadian mint"_s), 1);
    QCOMPARE(m_dm->MintIDByName(u"CIT (Coin Invest Trust)"_s), 67);
    const QVariant logo = m_dm->MintLogoByID(2);
    QVERIFY(!logo.isNull());
    QVERIFY(!QImage::fromData(logo.toByteArray()).isNull());
    QVERIFY(m_dm->MintLogoByID(35).isNull()); // a template row without a logo
    QVERIFY(m_dm->MintLogoByID(9999).isNull());

    // A mint added through the dataset is found at once.
    m_dm->tblMints->append();
    m_dm->tblMints->fieldByName(u"Name"_s).setAsString(u"Mint \"New\""_s);
    m_dm->tblMints->post();
    QCOMPARE(m_dm->tblMints->fieldByName(u"ID"_s).asInteger(), 68);
    QCOMPARE(m_dm->MintIDByName(u"Mint \"New\""_s), 68);

    m_dm->ADConnection->close();
    QCOMPARE(m_dm->MintIDByName(u"Perth Mint"_s), -1);
    QVERIFY(m_dm->MintLogoByID(2).isNull());
}

void TestInternalData::translateFieldLabels()
{
    struct Expect
    {
        TDBDataset* dataset;
        QString field;
        QString label;
    };
    const QList<Expect> expected = {
        {m_dm->tblMints, u"Name"_s, u"Name"_s},
        {m_dm->tblMints, u"Logo"_s, u"Logo"_s},
        {m_dm->tblMints, u"URL"_s, u"Homepage"_s},
        {m_dm->tblMints, u"IsPrivate"_s, u"Private mint"_s},
        {m_dm->qDS_Items, u"ObverseDesc"_s, u"Obverse"_s},
        {m_dm->qDS_Items, u"WeightG"_s, u"Weight"_s},
        {m_dm->qDS_Items, u"MintID"_s, u"Mint"_s},
        {m_dm->qDS_Items, u"FaceValue"_s, u"Denomination"_s},
        {m_dm->qDS_Items, u"WeightGram"_s, u"Weight (g)"_s},
        {m_dm->qDS_Items, u"WeightOz"_s, u"Weight (oz)"_s},
        {m_dm->qDS_Items, u"Caption"_s, u"Title"_s},
        {m_dm->qDS_Items, u"TotalPrice"_s, u"Total price paid"_s},
        {m_dm->qDS_Items, u"ROIPercent"_s, u"Total ROI (%)"_s},
        {m_dm->qDS_Items, u"SerialNumbers"_s, u"Serial number(s)"_s},
        {m_dm->qDS_Items, u"Custom1"_s, u"CustomField0"_s},
        {m_dm->qDS_Items, u"Custom10"_s, u"CustomField9"_s},
    };
    // Labels are set before any connection and survive reconnecting.
    for (int pass = 0; pass < 2; ++pass) {
        for (const Expect& e : expected)
            QCOMPARE(e.dataset->fieldByName(e.field).displayLabel(), e.label);
        QVERIFY(!m_dm->qDS_Items->fieldByName(u"ID"_s).visible());
        QVERIFY(m_dm->ConnectDatabase(m_path));
    }
    // Every field but ID and the custom ones takes its label from the language: in a language
    // that marks each text, every label carries the mark.
    QByteArray marked = "<Language name=\"Marked\">";
    for (const QString& key : XMLLanguage().Keys())
        marked +=
            "<String name=\"" + key.toUtf8() + "\">#" + GetText(key).toHtmlEscaped().toUtf8() + "</String>";
    marked += "</Language>";
    QVERIFY(XMLLanguage().LoadFromData(marked, u"Marked"_s));
    m_dm->TranslateFieldLabels();
    QVERIFY(LoadBuiltInLanguage(u"ENGLISHLANG"_s, u"English"_s));
    for (TDBDataset* ds : {m_dm->tblMints, m_dm->qDS_Items}) {
        for (TDBField* f : ds->fields()) {
            if (f->fieldName() == u"ID"_s || f->fieldName().startsWith(u"Custom"_s))
                continue;
            QVERIFY2(f->displayLabel().startsWith(u'#'), qPrintable(f->fieldName()));
        }
    }
    QCOMPARE(m_dm->qDS_Items->fieldByName(u"PhotoInBox"_s).displayLabel(), u"#Photo (in a box)"_s);
}

void TestInternalData::fileWithoutTblVerOpens()
{
    const QString path = NewFile(u"nover"_s);
    m_dm->CreateBlankDatabase(path);
    ExecOnFile(path, u"DROP TABLE tblVer"_s);
    QVERIFY(m_dm->ConnectDatabase(path));
    QCOMPARE(m_dm->DatabasePath, QFileInfo(path).absoluteFilePath());
    QCOMPARE(AddItem(u"Works"_s, 1), qint64(265));
}

void TestInternalData::fileLackingColumnCannotOpen()
{
    const QString path = NewFile(u"nocolumn"_s);
    m_dm->CreateBlankDatabase(path);
    ExecOnFile(path, u"DROP VIEW vCoinsStats; ALTER TABLE tblCoins DROP COLUMN Rare"_s);
    const QString oldPath = m_dm->DatabasePath;
    try {
        m_dm->ConnectDatabase(path);
        QFAIL("a collection without Rare opened");
    } catch (const EDatabaseError& e) {
        QCOMPARE(e.message(), u"Field 'Rare' not found"_s);
    }
    QVERIFY(!m_dm->Connected());
    QVERIFY(!m_dm->ADConnection->connected());
    QVERIFY(!m_dm->tblMints->active());
    QCOMPARE(m_dm->DatabasePath, oldPath);
    QCOMPARE(DBPath, oldPath);
    // A sound file opens again afterwards.
    QVERIFY(m_dm->ConnectDatabase(m_path));
}

void TestInternalData::missingFileKeepsOpenCollection()
{
    AddItem(u"Kept"_s, 1);
    m_dm->qDS_Items->edit();
    F(u"Name"_s).setAsString(u"Being edited"_s);
    const QString oldPath = m_dm->DatabasePath;
    QVERIFY(!m_dm->ConnectDatabase(m_dir.filePath(u"nothing-here.db"_s)));
    QVERIFY(!m_dm->ConnectDatabase(QString()));
    QVERIFY(!m_dm->ConnectDatabase(m_dir.path())); // a folder is no file
    QVERIFY(m_dm->Connected());
    QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Edit);
    QCOMPARE(F(u"Name"_s).asString(), u"Being edited"_s);
    QCOMPARE(m_dm->DatabasePath, oldPath);
    QCOMPARE(DBPath, oldPath);
    QVERIFY(!QFileInfo::exists(m_dir.filePath(u"nothing-here.db"_s)));
}

void TestInternalData::notADatabaseRaisesDriverMessage()
{
    const QString path = NewFile(u"text"_s);
    {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(8192, 'x'));
    }
    const QString oldPath = m_dm->DatabasePath;
    try {
        m_dm->ConnectDatabase(path);
        QFAIL("a text file opened as a collection");
    } catch (const EDatabaseError& e) {
        QCOMPARE(e.message(), u"file is not a database"_s);
    }
    QVERIFY(!m_dm->Connected());
    QCOMPARE(m_dm->DatabasePath, oldPath);
    QCOMPARE(DBPath, oldPath);
}

void TestInternalData::saveAsSameFileDoesNothing_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("sameFile");

    QTest::newRow("same path") << "%1" << true;
    QTest::newRow("other case") << "%U" << true;
    QTest::newRow("with dot segments") << "%D/./%F" << true;
    QTest::newRow("other file") << "%D/copy.db" << false;
}

void TestInternalData::saveAsSameFileDoesNothing()
{
    QFETCH(QString, target);
    QFETCH(bool, sameFile);
    const QFileInfo info(m_path);
    target.replace(u"%1"_s, m_path)
        .replace(u"%U"_s, m_path.toUpper())
        .replace(u"%D"_s, info.absolutePath())
        .replace(u"%F"_s, info.fileName());

    m_dm->ADConnection->startTransaction();
    m_dm->ADConnection->execSQL(u"INSERT INTO tblMints (Name) VALUES ('In transaction')"_s);
    m_dm->SaveDatabaseAs(target);
    QCOMPARE(m_dm->ADConnection->inTransaction(), sameFile);
    QCOMPARE(QFileInfo::exists(target), !(target == m_path.toUpper()));
    if (!sameFile) {
        QCOMPARE(QFileInfo(target).size(), QFileInfo(m_path).size());
        QCOMPARE(SelectOnFile(target, u"SELECT count(*) FROM tblMints"_s).toInt(), 68);
    } else {
        m_dm->ADConnection->rollback();
    }
    QCOMPARE(m_dm->DatabasePath, QFileInfo(m_path).absoluteFilePath());
}

void TestInternalData::saveAsCommitsAndCopies()
{
    AddItem(u"Posted"_s, 1);
    m_dm->qDS_Items->append();
    F(u"Name"_s).setAsString(u"Not posted"_s);
    const QString copy = NewFile(u"copy"_s);
    {
        QFile old(copy);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old content");
    }
    m_dm->SaveDatabaseAs(copy);
    QCOMPARE(SelectOnFile(copy, u"SELECT group_concat(Name) FROM tblCoins"_s).toString(), u"Posted"_s);
    m_dm->qDS_Items->cancel();
    // The command then opens the copy.
    QVERIFY(m_dm->ConnectDatabase(copy));
    QCOMPARE(m_dm->DatabasePath, QFileInfo(copy).absoluteFilePath());
    QCOMPARE(m_dm->qDS_Items->recordCount(), 1);
}

void TestInternalData::saveAsNotConnectedDoesNothing()
{
    m_dm->ADConnection->close();
    const QString copy = NewFile(u"never"_s);
    m_dm->SaveDatabaseAs(copy);
    QVERIFY(!QFileInfo::exists(copy));
}

void TestInternalData::createBlankReplacesFile()
{
    AddItem(u"Gone"_s, 1);
    const QString other = NewFile(u"other"_s);
    {
        QFile f(other);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(2 * 1024 * 1024, 'z'));
    }
    m_dm->CreateBlankDatabase(other);
    QCOMPARE(QFileInfo(other).size(), qint64(NewBlankDatabaseBytes().size()));
    // The open collection is left alone until the next connect.
    QCOMPARE(m_dm->qDS_Items->recordCount(), 1);
    QVERIFY(m_dm->ConnectDatabase(other));
    QCOMPARE(m_dm->qDS_Items->recordCount(), 0);

    QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                             m_dm->CreateBlankDatabase(m_dir.filePath(u"no/such/folder/x.db"_s)));
}

void TestInternalData::vacuumShrinksFile()
{
    const QByteArray photo = TestPicture(700, 700, "PNG", true);
    QVERIFY(photo.size() > 1000000);
    for (int i = 0; i < 3; ++i) {
        m_dm->qDS_Items->append();
        F(u"Name"_s).setAsString(u"Photo %1"_s.arg(i));
        F(u"PhotoFront"_s).setAsBytes(photo);
        m_dm->qDS_Items->post();
    }
    const qint64 full = GetFileSize(m_path);
    QVERIFY(full > 3 * photo.size());
    for (m_dm->qDS_Items->first(); !m_dm->qDS_Items->eof(); m_dm->qDS_Items->next()) {
        m_dm->qDS_Items->edit();
        F(u"PhotoFront"_s).clear();
        m_dm->qDS_Items->post();
    }
    const qint64 cleared = GetFileSize(m_path);
    QVERIFY(cleared >= full); // freed pages stay in the file
    m_dm->VacuumDatabase();
    QVERIFY2(GetFileSize(m_path) < full - 3 * photo.size(),
             qPrintable(u"%1 -> %2"_s.arg(full).arg(GetFileSize(m_path))));
    QVERIFY(m_dm->Connected());
    QCOMPARE(m_dm->qDS_Items->recordCount(), 3);

    // A failing VACUUM raises and leaves the module usable.
    m_dm->ADConnection->startTransaction();
    QVERIFY_THROWS_EXCEPTION(EDatabaseError, m_dm->VacuumDatabase());
    m_dm->ADConnection->rollback();
    m_dm->VacuumDatabase();
}

void TestInternalData::postPendingEdits()
{
    AddItem(u"Item"_s, 1);
    m_dm->qDS_Items->edit();
    F(u"Name"_s).setAsString(u"Item edited"_s);
    m_dm->tblMints->first();
    m_dm->tblMints->edit();
    m_dm->tblMints->fieldByName(u"Name"_s).setAsString(u"Mint edited"_s);
    TDBDataset idle(m_dm->ADConnection);
    idle.setSQL(u"SELECT 1 AS One"_s);
    m_dm->PostPendingEdits({m_dm->tblMints, m_dm->qDS_Items, &idle, nullptr});
    QCOMPARE(m_dm->tblMints->state(), TDatasetState::Browse);
    QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Browse);
    QCOMPARE(SelectOnFile(m_path, u"SELECT Name FROM tblCoins"_s).toString(), u"Item edited"_s);
    QCOMPARE(SelectOnFile(m_path, u"SELECT Name FROM tblMints WHERE ID = 1"_s).toString(), u"Mint edited"_s);

    // A new record without a name fails as a post does, and stays.
    m_dm->qDS_Items->append();
    QVERIFY_THROWS_EXCEPTION(EDatabaseError, m_dm->PostPendingEdits({m_dm->qDS_Items}));
    QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Insert);
    m_dm->qDS_Items->cancel();
}

void TestInternalData::basicStatsSums()
{
    auto add = [this](int metal, double grams, QVariant qty, QVariant price) {
        m_dm->qDS_Items->append();
        F(u"Name"_s).setAsString(u"x"_s);
        F(u"Metal"_s).setAsInteger(metal);
        F(u"WeightGram"_s).setAsFloat(grams);
        F(u"Qty"_s).setValue(qty);
        F(u"Price"_s).setValue(price);
        m_dm->qDS_Items->post();
    };
    add(mtGold, TroyOunceGrams, 2, 1000.0);
    add(mtGold, TroyOunceGrams / 2, 1, 600.0);
    add(mtGold, 5, QVariant(), 100.0); // no quantity: left out of every sum
    add(mtSilver, TroyOunceGrams, 10, 25.0);
    add(mtSilver, TroyOunceGrams * 10, 1, QVariant()); // no price
    add(mtCopper, 0, 1, 5.0);                          // no weight: averages are NULL

    TDBDataset& s = *m_dm->qBasicStats;
    s.open();
    QCOMPARE(s.recordCount(), 3);
    QCOMPARE(s.fieldByName(u"TotalWeightG"_s).dataType(), TFieldType::Float);
    QCOMPARE(s.fieldByName(u"TotalWeightOZ"_s).dataType(), TFieldType::Float);
    QCOMPARE(s.fieldByName(u"TotalPaid"_s).dataType(), TFieldType::Float);
    auto num = [&s](const char* name) {
        return NumberOrNaN(s.fieldByName(QString::fromLatin1(name)).value());
    };

    s.first();
    QCOMPARE(s.fieldByName(u"Metal"_s).asInteger(), 0);
    QVERIFY(SameNumber(num("TotalWeightG"), TroyOunceGrams * 2.5));
    QVERIFY(SameNumber(num("TotalWeightOZ"), 2.5));
    QVERIFY(SameNumber(num("TotalPaid"), 2600));
    QVERIFY(SameNumber(num("AvgPricePerOz"), 2600 / 2.5));
    QVERIFY(SameNumber(num("AvgPricePerGram"), 2600 / (TroyOunceGrams * 2.5)));
    s.next();
    QCOMPARE(s.fieldByName(u"Metal"_s).asInteger(), 1);
    QVERIFY(SameNumber(num("TotalWeightOZ"), 20));
    QVERIFY(SameNumber(num("TotalPaid"), 250));
    QVERIFY(SameNumber(num("AvgPricePerOz"), 250.0 / 20));
    s.next();
    QCOMPARE(s.fieldByName(u"Metal"_s).asInteger(), 5);
    QVERIFY(SameNumber(num("TotalWeightG"), 0));
    QVERIFY(std::isnan(num("AvgPricePerOz")));
    QVERIFY(std::isnan(num("AvgPricePerGram")));

    // It closes with the connection, as every dataset on it.
    m_dm->ADConnection->close();
    QVERIFY(!s.active());
}

QTEST_GUILESS_MAIN(TestInternalData)
#include "tst_dminternaldata.moc"
