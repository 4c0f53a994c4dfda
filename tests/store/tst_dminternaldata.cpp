// The collection data module over real collection files made from the blank template.

#include "dmInternalData.h"
#include "support_common.h"
#include "support_datarow.h"
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

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <memory>

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
    void initTestCase()
    {
        InitStoreTestEnvironment();
        QVERIFY(m_dir.isValid());
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }

    void init()
    {
        SpotPrices().Clear();
        ORVDefaultValues = TORVDefaultValues();
        DBPath.clear();
        m_dm = std::make_unique<TDM_InternalData>();
        m_dm->TranslateFieldLabels();
        m_path = NewFile("collection");
        m_dm->CreateBlankDatabase(m_path);
        QVERIFY(m_dm->ConnectDatabase(m_path));
        QVERIFY(m_dm->Connected());
    }

    void cleanup()
    {
        m_dm.reset();
        SpotPrices().Clear();
    }

    void instanceAndSplash()
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
        QCOMPARE(shown, QStringList({"Loading data...", "Connecting to database..."}));
        QCOMPARE(m_dm->DatabasePath, QFileInfo(m_path).absoluteFilePath());
        QCOMPARE(DBPath, m_dm->DatabasePath);
    }

    void collectionIsOpen()
    {
        QCOMPARE(m_dm->ADConnection->param("ForeignKeys"), "On");
        QVERIFY(m_dm->tblMints->active());
        QCOMPARE(m_dm->tblMints->recordCount(), 67);
        QCOMPARE(m_dm->qDS_Items->recordCount(), 0);
        QCOMPARE(m_dm->qDS_Items->indexFieldNames(), "ID");
        QCOMPARE(m_dm->qDS_Items->keyField()->dataType(), TFieldType::AutoInc);
    }

    void firstItemGetsId265()
    {
        QCOMPARE(AddItem("First", TroyOunceGrams), qint64(265));
        QCOMPARE(AddItem("Second", TroyOunceGrams), qint64(266));
        m_dm->qDS_Items->deleteRecord();
        QCOMPARE(AddItem("Third", TroyOunceGrams), qint64(267));
        QCOMPARE(SelectOnFile(m_path, "SELECT group_concat(ID) FROM tblCoins").toString(), "265,267");
    }

    // A new record: the fixed defaults and those of the settings, as they are now; set with controls
    // disabled (one change of the row for the batch), and without a name it cannot be posted.
    void afterInsertDefaults_data()
    {
        QTest::addColumn<bool>("changed");
        AddRow("default settings", false);
        AddRow("changed settings", true);
    }
    void afterInsertDefaults()
    {
        QFETCH(bool, changed);
        if (changed) {
            ORVDefaultValues = {3,        "Fine (F)", "Wanted", "Coin tube", "Bank \"box\" 7",
                                "O'Neil", "Apmex",    3.5,      "MS70",      "PCGS"};
        }
        const TORVDefaultValues& d = ORVDefaultValues;
        const QList<std::pair<const char*, QVariant>> expected{{"Metal", 0},
                                                               {"WeightG", TroyOunceGrams},
                                                               {"WeightGram", TroyOunceGrams},
                                                               {"WeightOz", 1.0},
                                                               {"CoinType", 0},
                                                               {"Purity", {}},
                                                               {"MintID", {}},
                                                               {"SerialNumbers", {}},
                                                               {"Mintage", {}},
                                                               {"ObverseDesc", {}},
                                                               {"ReverseDesc", {}},
                                                               {"ExpectedPremium", 0.0},
                                                               {"PurchaseDate", QDate::currentDate()},
                                                               {"Qty", d.Qty},
                                                               {"Condition", d.Condition},
                                                               {"Status", d.Status},
                                                               {"Packaging", d.Packaging},
                                                               {"Location", d.Location},
                                                               {"Owner", d.Owner},
                                                               {"Store", d.Store},
                                                               {"Rating", d.Rating},
                                                               {"Grade", d.Grade},
                                                               {"GradeService", d.GradeService},
                                                               {"Country", {}},
                                                               {"PhotoFront", {}},
                                                               {"PhotoBack", {}},
                                                               {"Name", {}},
                                                               {"Price", {}},
                                                               {"Custom1", {}}};
        QCOMPARE(d.Condition, changed ? "Fine (F)" : "Brilliant uncirculated (BU)");
        QSignalSpy rowChanges(m_dm->qDS_Items, &TDBDataset::rowChanged);
        m_dm->qDS_Items->append();
        QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Insert);
        QCOMPARE(rowChanges.size(), 1);
        QVERIFY(!m_dm->qDS_Items->controlsDisabled());
        for (const auto& [field, value] : expected) {
            const QVariant actual = F(field).value();
            const bool same = value.isNull() ? actual.isNull()
                              : value.metaType().id() == QMetaType::Double
                                  ? SameNumber(actual.toDouble(), value.toDouble())
                                  : actual.toString() == value.toString();
            QVERIFY2(same, qPrintable(QString("%1: %2").arg(field, actual.toString())));
        }
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, m_dm->qDS_Items->post());
        F("Name").setAsString("Defaults");
        m_dm->qDS_Items->post();
        QCOMPARE(SelectOnFile(m_path, "SELECT Owner || '|' || Location FROM tblCoins").toString(),
                 d.Owner + '|' + d.Location);
        QCOMPARE(SelectOnFile(m_path, "SELECT Rating FROM tblCoins").toDouble(), d.Rating);
    }

    void ouncesTypedGiveGrams()
    {
        AddItem("Bar", 100);
        int gramEvents = 0;
        int ounceEvents = 0;
        const TFieldNotifyEvent gramHandler = F("WeightGram").onChange();
        const TFieldNotifyEvent ounceHandler = F("WeightOz").onChange();
        F("WeightGram").setOnChange([&](TDBField& f) {
            ++gramEvents;
            gramHandler(f);
        });
        F("WeightOz").setOnChange([&](TDBField& f) {
            ++ounceEvents;
            ounceHandler(f);
        });

        m_dm->qDS_Items->edit();
        F("WeightOz").setAsFloat(1);
        QCOMPARE(ounceEvents, 1);
        QCOMPARE(gramEvents, 0);
        QCOMPARE(F("WeightG").asFloat(), TroyOunceGrams);
        QCOMPARE(F("WeightGram").asFloat(), TroyOunceGrams);
        // Both handlers are attached again.
        F("WeightGram").setAsFloat(62.207);
        QCOMPARE(gramEvents, 1);
        QCOMPARE(ounceEvents, 1);
        QVERIFY(SameNumber(F("WeightOz").asFloat(), 2.0));
        m_dm->qDS_Items->post();
        QCOMPARE(SelectOnFile(m_path, "SELECT WeightG FROM tblCoins").toDouble(), 62.207);
        QVERIFY(SameNumber(F("WeightOz").asFloat(), 2.0));
        QCOMPARE(F("WeightOz").precision(), 4);
    }

    void sameWeightStopsTheChain_data()
    {
        QTest::addColumn<double>("factor");
        QTest::addColumn<bool>("changes");
        AddRow("equal", 1.0, false);
        AddRow("within 1e-12 relative", 1.0 + 5e-13, false);
        AddRow("beyond 1e-12 relative", 1.0 + 1e-9, true);
        AddRow("clearly other", 2.0, true);
    }
    void sameWeightStopsTheChain()
    {
        QFETCH(double, factor);
        QFETCH(bool, changes);
        const double grams = 1000.0;
        AddItem("Kilo", grams);
        m_dm->qDS_Items->edit();
        // A marker in WeightOz that only the gram rule overwrites.
        {
            const TFieldNotifyEvent handler = F("WeightOz").onChange();
            F("WeightOz").setOnChange({});
            F("WeightOz").setAsFloat(-7);
            F("WeightOz").setOnChange(handler);
        }
        F("WeightGram").setAsFloat(grams * factor);
        if (changes) {
            QCOMPARE(F("WeightG").asFloat(), grams * factor);
            QVERIFY(SameNumber(F("WeightOz").asFloat(), grams * factor / TroyOunceGrams));
        } else {
            QCOMPARE(F("WeightG").asFloat(), grams);
            QCOMPARE(F("WeightOz").asFloat(), -7.0);
        }
        m_dm->qDS_Items->cancel();

        // The same rule for ounces, on a tiny weight where the absolute floor counts.
        m_dm->qDS_Items->edit();
        F("WeightG").setAsFloat(1e-13);
        F("WeightOz").setAsFloat(3e-13 / TroyOunceGrams); // 2e-13 apart: the same
        QCOMPARE(F("WeightG").asFloat(), 1e-13);
        F("WeightOz").setAsFloat(2e-12 / TroyOunceGrams); // 1.9e-12 apart: not the same
        QVERIFY(SameNumber(F("WeightGram").asFloat(), 2e-12));
        m_dm->qDS_Items->cancel();
    }

    void captionThroughDataset_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("grams");
        QTest::addColumn<QVariant>("year");
        QTest::addColumn<int>("metal");
        QTest::addColumn<int>("coinType");
        QTest::addColumn<QString>("caption");
        AddRow("with year", "Eagle", TroyOunceGrams, QVariant(2012), 0, 0, "Eagle 1 oz 2012 Gold Coin");
        AddRow("year 0", "Maple", TroyOunceGrams, QVariant(0), 1, 0, "Maple 1 oz Silver Coin");
        AddRow("bar", "Argor", 1000.0, QVariant(2020), 2, 3, "Argor 1 kg 2020 Platinum Bar");
        AddRow("quote in name", "Prospector's \"Gold\"", 2.5, QVariant(), 5, 2,
               "Prospector's \"Gold\" 2.5 g Copper Round");
        AddRow("half ounce", "Half", 15.55, QVariant(), 0, 0, "Half ½ oz Gold Coin");
    }
    void captionThroughDataset()
    {
        QFETCH(QString, name);
        QFETCH(double, grams);
        QFETCH(QVariant, year);
        QFETCH(int, metal);
        QFETCH(int, coinType);
        QFETCH(QString, caption);
        Post({{"Name", name},
              {"WeightGram", grams},
              {"Year", year},
              {"Metal", metal},
              {"CoinType", coinType}});
        QCOMPARE(F("Caption").asString(), caption);
        // The same after a fresh read of the file, which also sets the two weights from WeightG.
        QVERIFY(m_dm->ConnectDatabase(m_path));
        m_dm->qDS_Items->last();
        QCOMPARE(F("Caption").asString(), caption);
        QCOMPARE(F("WeightGram").asFloat(), grams);
        QVERIFY(SameNumber(F("WeightOz").asFloat(), grams / TroyOunceGrams));
    }

    // Gold; the values are SpotValue, LiquidationValue, ROI, SpotValuexQty,
    // LiquidationValuexQty, ROIxQty and ROIPercent (NaN for NULL).
    void valuation_data()
    {
        QTest::addColumn<double>("spot");
        QTest::addColumn<double>("grams");
        QTest::addColumn<QVariant>("qty");
        QTest::addColumn<QVariant>("price");
        QTest::addColumn<QVariant>("premium");
        QTest::addColumn<QList<double>>("values");
        const double n = kNull;
        AddRow("spot 1000, premium 50", 1000.0, TroyOunceGrams, QVariant(1), QVariant(900.0), QVariant(50.0),
               QList<double>{1000, 1050, 150, 1000, 1050, 150, 150.0 / 900 * 100});
        AddRow("no spot", 0.0, TroyOunceGrams, QVariant(1), QVariant(900.0), QVariant(50.0),
               QList<double>{0, 50, n, 0, 50, n, n});
        AddRow("TotalPrice 0", 1000.0, TroyOunceGrams, QVariant(1), QVariant(0.0), QVariant(0.0),
               QList<double>{1000, 1000, n, 1000, 1000, n, n});
        AddRow("Price NULL", 1000.0, TroyOunceGrams, QVariant(1), QVariant(), QVariant(0.0),
               QList<double>{1000, 1000, n, 1000, 1000, n, n});
        AddRow("Qty 0", 1000.0, TroyOunceGrams, QVariant(0), QVariant(900.0), QVariant(50.0),
               QList<double>{1000, 1050, n, 0, 0, n, n});
        AddRow("Qty NULL", 1000.0, TroyOunceGrams, QVariant(), QVariant(900.0), QVariant(50.0),
               QList<double>{1000, 1050, n, 0, 0, n, n});
        AddRow("premium NULL", 1000.0, TroyOunceGrams, QVariant(1), QVariant(900.0), QVariant(),
               QList<double>{1000, 1000, 100, 1000, 1000, 100, 100.0 / 900 * 100});
        AddRow("two half ounces", 1000.0, TroyOunceGrams / 2, QVariant(2), QVariant(400.0), QVariant(0.0),
               QList<double>{500, 500, 100, 1000, 1000, 200, 25});
        AddRow("loss", 1000.0, TroyOunceGrams, QVariant(1), QVariant(1250.0), QVariant(0.0),
               QList<double>{1000, 1000, -250, 1000, 1000, -250, -20});
    }
    void valuation()
    {
        QFETCH(double, spot);
        QFETCH(double, grams);
        QFETCH(QVariant, qty);
        QFETCH(QVariant, price);
        QFETCH(QVariant, premium);
        QFETCH(QList<double>, values);
        if (spot > 0)
            SetSpot(mtGold, spot);
        SetSpot(mtSilver, 30); // another metal's price plays no part
        Post({{"Name", "Eagle"},
              {"WeightGram", grams},
              {"Qty", qty},
              {"Price", price},
              {"ExpectedPremium", premium}});

        const QStringList names{"SpotValue",     "LiquidationValue",     "ROI",
                                "SpotValuexQty", "LiquidationValuexQty", "ROIxQty",
                                "ROIPercent"};
        // Once computed after the post, and once on a fresh read of the file.
        for (int pass = 0; pass < 2; ++pass) {
            if (pass == 1) {
                QVERIFY(m_dm->ConnectDatabase(m_path));
                m_dm->qDS_Items->first();
            }
            for (int i = 0; i < names.size(); ++i) {
                const double actual = NumberOrNaN(F(names[i]).value());
                QVERIFY2(SameNumber(actual, values[i]),
                         qPrintable(QString("%1: %2, expected %3").arg(names[i]).arg(actual).arg(values[i])));
            }
        }
    }

    // New prices worked out in memory give exactly what a fresh read of the file gives: nulls, zero
    // and missing prices, NULL and 0 quantities and prices, and an item in edit state meanwhile.
    void revalueMatchesAFreshRead_data()
    {
        QTest::addColumn<QList<double>>("before"); // spot per metal code, 0 for none
        QTest::addColumn<QList<double>>("after");
        QTest::addColumn<bool>("editing");
        AddRow("first prices", QList<double>{0, 0, 0, 0, 0, 0}, QList<double>{2000, 25, 900, 0, 0, 0.3},
               false);
        AddRow("to zero and none", QList<double>{2000, 25, 900, 0, 0, 0}, QList<double>{0, 0, 950, 0, 0, 0},
               false);
        AddRow("changed, one edited", QList<double>{2000, 25, 900, 0, 0, 0},
               QList<double>{2100.5, 24, 900, 0, 0, 0}, true);
    }
    void revalueMatchesAFreshRead()
    {
        QFETCH(QList<double>, before);
        QFETCH(QList<double>, after);
        QFETCH(bool, editing);
        Post({{"Name", "A"}, {"Metal", mtGold}, {"Qty", 2}, {"Price", 1800.0}, {"ExpectedPremium", 50.0}});
        Post({{"Name", "B"},
              {"Metal", mtSilver},
              {"WeightGram", 1000.0},
              {"Qty", {}},
              {"Price", 900.0},
              {"ExpectedPremium", {}}});
        Post({{"Name", "C"}, {"Metal", mtPlatinum}, {"WeightGram", 10.0}, {"Qty", 0}, {"Price", 0.0}});
        Post({{"Name", "D"}, {"Metal", mtCopper}, {"WeightGram", 5.0}, {"Qty", 3}, {"Price", {}}});
        Post({{"Name", "E"}, {"Metal", mtGold}, {"WeightGram", 15.55}, {"Qty", 4}, {"Price", 950.0}});
        const auto setSpots = [](const QList<double>& prices) {
            SpotPrices().Clear();
            for (int metal = 0; metal < prices.size(); ++metal)
                if (prices[metal] > 0)
                    SetSpot(metal, prices[metal]);
        };
        setSpots(before);
        QVERIFY(m_dm->ConnectDatabase(m_path));
        const QStringList old = ValueSnapshot();
        if (editing) {
            m_dm->qDS_Items->last();
            m_dm->qDS_Items->edit();
            F("Price").setAsFloat(1.0);
        }
        setSpots(after);
        QSignalSpy resets(m_dm->qDS_Items, &TDBDataset::afterReset);
        m_dm->RevalueItems();
        QCOMPARE(resets.size(), 1);
        if (editing) {
            QCOMPARE(F("Price").asFloat(), 1.0); // the edit buffer is left alone
            m_dm->qDS_Items->cancel();
        }
        const QStringList revalued = ValueSnapshot();
        QVERIFY(revalued != old);
        QVERIFY(m_dm->ConnectDatabase(m_path));
        QCOMPARE(revalued, ValueSnapshot());
    }

    // Items posted (and being edited or typed) before the rows of a deferred connect arrive: kept,
    // once each, with the record in work still in work.
    void rowsPostedWhileTheLoadIsPendingAreKept_data()
    {
        QTest::addColumn<TDatasetState>("state");
        AddRow("posted", TDatasetState::Browse);
        AddRow("posted, then edited", TDatasetState::Edit);
        AddRow("posted, another typed", TDatasetState::Insert);
    }
    void rowsPostedWhileTheLoadIsPendingAreKept()
    {
        QFETCH(TDatasetState, state);
        AddItem("First", 1);
        AddItem("Second", 2);
        SetSpot(mtGold, 1000);
        QVERIFY(m_dm->ConnectDatabase(m_path, TRowFetch::Deferred));
        QVERIFY(m_dm->Connected() && m_dm->qDS_Items->rowsPending());
        QCOMPARE(m_dm->qDS_Items->recordCount(), 0);
        AddItem("While pending", TroyOunceGrams);
        if (state == TDatasetState::Edit) {
            m_dm->qDS_Items->edit();
            F("Name").setAsString("Being edited");
        } else if (state == TDatasetState::Insert) {
            m_dm->qDS_Items->append();
            F("Name").setAsString("Being typed");
        }
        QSignalSpy resets(m_dm->qDS_Items, &TDBDataset::afterReset);
        m_dm->FetchPendingItems();
        QCOMPARE(resets.size(), 1);
        QVERIFY(!m_dm->qDS_Items->rowsPending());
        QCOMPARE(m_dm->qDS_Items->state(), state);
        QCOMPARE(m_dm->qDS_Items->recordCount(), state == TDatasetState::Insert ? 4 : 3);
        if (state != TDatasetState::Browse)
            QCOMPARE(F("Name").asString(), state == TDatasetState::Edit ? "Being edited" : "Being typed");
        m_dm->qDS_Items->checkBrowseMode();
        QStringList names;
        for (m_dm->qDS_Items->first(); !m_dm->qDS_Items->eof(); m_dm->qDS_Items->next()) {
            names << F("Name").asString();
            QCOMPARE(F("SpotValue").asFloat(), F("WeightG").asFloat() / TroyOunceGrams * 1000);
        }
        QCOMPARE(names.join(','), SelectOnFile(m_path, "SELECT group_concat(Name) FROM tblCoins").toString());
        m_dm->FetchPendingItems(); // nothing pending: nothing changes
        QCOMPARE(m_dm->qDS_Items->recordCount(), names.size());
    }

    void requiredFieldFailure_data()
    {
        QTest::addColumn<bool>("editing");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("label");
        AddRow("insert, Name empty", false, "Name", "Item name");
        AddRow("insert, WeightG NULL", false, "WeightG", "Weight");
        AddRow("edit, Metal NULL", true, "Metal", "Metal");
    }
    void requiredFieldFailure()
    {
        QFETCH(bool, editing);
        QFETCH(QString, field);
        QFETCH(QString, label);

        // A language in which the label differs from the field name.
        const QByteArray language = "<Language name=\"Test\"><String name=\"cSF_Name\">Item name</String>"
                                    "<String name=\"cSF_Weight\">Weight</String>"
                                    "<String name=\"cSF_Metal\">Metal</String>"
                                    "<String name=\"cSF_Type\">Type</String></Language>";
        QVERIFY(XMLLanguage().LoadFromData(language, "Test"));
        m_dm->TranslateFieldLabels();
        QVERIFY(LoadBuiltInLanguage("ENGLISHLANG", "English"));

        if (editing) {
            AddItem("Kept", 50);
            m_dm->qDS_Items->edit();
        } else {
            m_dm->qDS_Items->append();
            F("Name").setAsString("New");
        }
        if (field == "WeightG")
            F("WeightGram").clear();
        else if (field == "Name")
            F(field).setAsString(QString());
        else
            F(field).clear();

        const TDatasetState before = m_dm->qDS_Items->state();
        try {
            m_dm->qDS_Items->post();
            QFAIL("the post went through");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), QString("Field '%1' must have a value").arg(label));
        }
        QCOMPARE(m_dm->qDS_Items->state(), before);
        QCOMPARE(SelectOnFile(m_path, "SELECT count(*) FROM tblCoins WHERE Name <> 'Kept'").toInt(), 0);
        m_dm->qDS_Items->cancel();
        QCOMPARE(m_dm->qDS_Items->recordCount(), editing ? 1 : 0);
    }

    // A photograph gives its side's thumbnail (JPEG or PNG as it came, 200 high); side and box
    // photographs give none; a removed photograph gives the blank picture's thumbnail again, in the
    // file too; a picture that cannot be decoded fails the change.
    void photosGiveThumbnails()
    {
        Post({{"Name", "Silver"}, {"Metal", mtSilver}});
        const QByteArray blankFront = MakeThumbnail(BlankPicture(mtSilver, ctCoin, true));
        const QByteArray blankBack = MakeThumbnail(BlankPicture(mtSilver, ctCoin, false));
        QCOMPARE(F("ThumbFront").asBytes(), blankFront);
        QCOMPARE(F("ThumbBack").asBytes(), blankBack);

        m_dm->qDS_Items->edit();
        F("PhotoFront").setAsBytes(TestPicture(600, 450, "JPEG"));
        F("PhotoBack").setAsBytes(TestPicture(50, 100));
        const QByteArray front = F("ThumbFront").asBytes();
        F("PhotoSide").setAsBytes(TestPicture(300, 300));
        F("PhotoInBox").setAsBytes(TestPicture(300, 300));
        m_dm->qDS_Items->post();
        QCOMPARE(F("ThumbFront").asBytes(), front);
        QCOMPARE(ImageSize(front), QSize(267, 200));
        QVERIFY(front.startsWith("\xFF\xD8"));
        QCOMPARE(ImageSize(F("ThumbBack").value()), QSize(100, 200));
        QVERIFY(F("ThumbBack").asBytes().startsWith("\x89PNG"));

        m_dm->qDS_Items->edit();
        F("PhotoFront").clear();
        m_dm->qDS_Items->post();
        QCOMPARE(F("ThumbFront").asBytes(), blankFront);
        QCOMPARE(SelectOnFile(m_path, "SELECT ThumbFront FROM tblCoins").toByteArray(), blankFront);
        QVERIFY(SelectOnFile(m_path, "SELECT PhotoFront FROM tblCoins").isNull());

        m_dm->qDS_Items->edit();
        QVERIFY_THROWS_EXCEPTION(EThumbnailError, F("PhotoFront").setAsBytes("not a picture"));
        m_dm->qDS_Items->cancel();
    }

    void blankThumbnails_data()
    {
        QTest::addColumn<int>("metal");
        QTest::addColumn<int>("coinType");
        QTest::addColumn<int>("pictureMetal");
        QTest::addColumn<int>("pictureType");
        QTest::addColumn<bool>("sameBothSides");
        AddRow("gold bar", 0, 3, 0, 3, true);
        AddRow("silver divisible bar", 1, 4, 1, 3, true);
        AddRow("copper rectangular coin", 5, 1, 5, 0, false);
        AddRow("type 7: gold coin", 1, 7, 0, 0, false);
        AddRow("metal 9: gold coin", 9, 3, 0, 0, false);
    }
    void blankThumbnails()
    {
        QFETCH(int, metal);
        QFETCH(int, coinType);
        QFETCH(int, pictureMetal);
        QFETCH(int, pictureType);
        QFETCH(bool, sameBothSides);
        Post({{"Name", "Blank"}, {"Metal", metal}, {"CoinType", coinType}});
        const QByteArray front = F("ThumbFront").asBytes();
        const QByteArray back = F("ThumbBack").asBytes();
        QCOMPARE(front == back, sameBothSides);
        QCOMPARE(front, MakeThumbnail(BlankPicture(pictureMetal, pictureType, true)));
        QCOMPARE(back, MakeThumbnail(BlankPicture(pictureMetal, pictureType, false)));
        QCOMPARE(QImage::fromData(front).height(), ThumbnailHeight);
    }

    void appendCatalogueItem()
    {
        TMetalAsset asset;
        asset.Name = "Britannia";
        asset.Series = "Britannia";
        asset.Metal = mtSilver;
        asset.Year = 0;
        asset.WeightG = TroyOunceGrams;
        asset.MintName = "The Royal Mint";
        asset.CoinType = ctCoin;
        asset.FaceValue = 2;
        asset.FaceValueCurrency = "GBP";
        asset.Purity = ".999";
        asset.Thickness = 0;
        asset.Diameter = 38.61;
        asset.Width = 0;
        asset.Height = 0;
        asset.Mintage = 0;
        asset.Edge = "Reeded";
        asset.MintMark = true;
        asset.Country = "GB";
        asset.ObverseDesc = "The Queen";
        asset.ReverseDesc = "Britannia";
        asset.Artist = "Philip Nathan";
        asset.Description = QStringList({"Line one", "Line two"});
        asset.AddPicture(TCoverPicture::kThumbnail, "t.jpg").Data = TestPicture(100, 100, "JPEG");
        asset.AddPicture(TCoverPicture::kObverse, "o.jpg").Data = TestPicture(800, 800, "JPEG");
        asset.AddPicture(TCoverPicture::kReverse, "r.jpg"); // not downloaded
        asset.AddPicture(TCoverPicture::kInABox, "b.png").Data = TestPicture(300, 200);

        m_dm->AppendCatalogueItem(asset);
        QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Browse);
        QCOMPARE(F("ID").asInteger(), 265);
        QCOMPARE(F("Caption").asString(), "Britannia 1 oz Silver Coin");
        QCOMPARE(F("MintID").asInteger(), 4);
        // Zeros become NULL, and a picture not held gives none.
        for (const char* name : {"Year", "Thickness", "Width", "Height", "Mintage", "PhotoBack", "PhotoSide"})
            QVERIFY2(F(name).isNull(), name);
        QCOMPARE(F("FaceValue").asFloat(), 2.0);
        QCOMPARE(F("Diameter").asFloat(), 38.61);
        QCOMPARE(F("MintMark").asBoolean(), true);
        QCOMPARE(F("Description").asString(), "Line one\r\nLine two");
        QCOMPARE(F("WeightG").asFloat(), TroyOunceGrams);
        // After-insert defaults survive where the record says nothing.
        QCOMPARE(F("Qty").asInteger(), 1);
        QCOMPARE(F("Status").asString(), "In collection");
        // Pictures: obverse and box held with data; the reverse has none.
        QCOMPARE(ImageSize(F("PhotoFront").value()), QSize(800, 800));
        QCOMPARE(ImageSize(F("ThumbFront").value()), QSize(200, 200));
        QCOMPARE(F("ThumbBack").asBytes(), MakeThumbnail(BlankPicture(mtSilver, ctCoin, false)));
        QCOMPARE(ImageSize(F("PhotoInBox").value()), QSize(300, 200));

        // The file holds the same, and non-zero values are kept.
        asset.Year = 2021;
        asset.Mintage = 100000;
        asset.Thickness = 2.5;
        asset.FaceValue = 0;
        m_dm->AppendCatalogueItem(asset);
        QCOMPARE(SelectOnFile(m_path, "SELECT Year || '|' || Mintage || '|' || Thickness || '|' || "
                                      "ifnull(FaceValue, 'null') FROM tblCoins WHERE ID = 266")
                     .toString(),
                 "2021|100000|2.5|null");
    }

    void appendCatalogueItemMints_data()
    {
        QTest::addColumn<QString>("mint");
        QTest::addColumn<int>("mintId");
        AddRow("known", "Perth Mint", 2);
        AddRow("quote in name", "Prospector's Gold & Gems", 24);
        AddRow("unknown", "Mint of Atlantis", -1);
        AddRow("other case", "perth mint", -1);
        AddRow("SQL text", "x' OR '1'='1", -1);
    }
    void appendCatalogueItemMints()
    {
        QFETCH(QString, mint);
        QFETCH(int, mintId);
        TMetalAsset asset;
        asset.Name = "Item";
        asset.WeightG = 10;
        asset.MintName = mint;
        m_dm->AppendCatalogueItem(asset);
        QCOMPARE(F("MintID").asInteger(), mintId);
        QCOMPARE(SelectOnFile(m_path, "SELECT MintID FROM tblCoins").toInt(), mintId);
        QCOMPARE(m_dm->MintIDByName(mint), mintId);
    }

    void mintLookups()
    {
        QCOMPARE(m_dm->MintIDByName("Royal Canadian mint"), 1);
        QCOMPARE(m_dm->MintIDByName("CIT (Coin Invest Trust)"), 67);
        const QVariant logo = m_dm->MintLogoByID(2);
        QVERIFY(!logo.isNull());
        QVERIFY(!QImage::fromData(logo.toByteArray()).isNull());
        QVERIFY(m_dm->MintLogoByID(35).isNull()); // a template row without a logo
        QVERIFY(m_dm->MintLogoByID(9999).isNull());

        // A mint added through the dataset is found at once.
        m_dm->tblMints->append();
        m_dm->tblMints->fieldByName("Name").setAsString("Mint \"New\"");
        m_dm->tblMints->post();
        QCOMPARE(m_dm->tblMints->fieldByName("ID").asInteger(), 68);
        QCOMPARE(m_dm->MintIDByName("Mint \"New\""), 68);

        m_dm->ADConnection->close();
        QCOMPARE(m_dm->MintIDByName("Perth Mint"), -1);
        QVERIFY(m_dm->MintLogoByID(2).isNull());
    }

    void translateFieldLabels()
    {
        TDBDataset* items = m_dm->qDS_Items;
        const QList<std::tuple<TDBDataset*, const char*, const char*>> expected{
            {m_dm->tblMints, "IsPrivate", "Private mint"},
            {items, "Caption", "Title"},
            {items, "Custom1", "CustomField0"}};
        // Labels are set before any connection and survive reconnecting.
        for (int pass = 0; pass < 2; ++pass) {
            for (const auto& [dataset, field, label] : expected)
                QCOMPARE(dataset->fieldByName(field).displayLabel(), label);
            QVERIFY(!m_dm->qDS_Items->fieldByName("ID").visible());
            QVERIFY(m_dm->ConnectDatabase(m_path));
        }
        // Every field but ID and the custom ones takes its label from the language: in a language
        // that marks each text, every label carries the mark.
        QByteArray marked = "<Language name=\"Marked\">";
        for (const QString& key : XMLLanguage().Keys())
            marked += "<String name=\"" + key.toUtf8() + "\">#" + GetText(key).toHtmlEscaped().toUtf8() +
                      "</String>";
        marked += "</Language>";
        QVERIFY(XMLLanguage().LoadFromData(marked, "Marked"));
        m_dm->TranslateFieldLabels();
        QVERIFY(LoadBuiltInLanguage("ENGLISHLANG", "English"));
        for (TDBDataset* ds : {m_dm->tblMints, m_dm->qDS_Items}) {
            for (TDBField* f : ds->fields()) {
                if (f->fieldName() == "ID" || f->fieldName().startsWith("Custom"))
                    continue;
                QVERIFY2(f->displayLabel().startsWith(u'#'), qPrintable(f->fieldName()));
            }
        }
        QCOMPARE(m_dm->qDS_Items->fieldByName("PhotoInBox").displayLabel(), "#Photo (in a box)");
    }

    void fileWithoutTblVerOpens()
    {
        const QString path = NewFile("nover");
        m_dm->CreateBlankDatabase(path);
        ExecOnFile(path, "DROP TABLE tblVer");
        QVERIFY(m_dm->ConnectDatabase(path));
        QCOMPARE(m_dm->DatabasePath, QFileInfo(path).absoluteFilePath());
        QCOMPARE(AddItem("Works", 1), qint64(265));
    }

    // A damaged file, or one whose tblCoins lacks a column: the driver's message, and the module
    // ends not connected with the old path kept.
    void badFileCannotOpen_data()
    {
        QTest::addColumn<bool>("lacksColumn");
        QTest::addColumn<QString>("message");
        AddRow("not a database", false, "file is not a database");
        AddRow("lacks a column", true, "Field 'Rare' not found");
    }
    void badFileCannotOpen()
    {
        QFETCH(bool, lacksColumn);
        QFETCH(QString, message);
        const QString path = NewFile("bad");
        if (lacksColumn) {
            m_dm->CreateBlankDatabase(path);
            ExecOnFile(path, "DROP VIEW vCoinsStats; ALTER TABLE tblCoins DROP COLUMN Rare");
        } else {
            WriteFile(path, QByteArray(8192, 'x'));
        }
        const QString oldPath = m_dm->DatabasePath;
        try {
            m_dm->ConnectDatabase(path);
            QFAIL("a bad file opened as a collection");
        } catch (const EDatabaseError& e) {
            QCOMPARE(e.message(), message);
        }
        QVERIFY(!m_dm->Connected() && !m_dm->ADConnection->connected() && !m_dm->tblMints->active());
        QCOMPARE(m_dm->DatabasePath, oldPath);
        QCOMPARE(DBPath, oldPath);
        QVERIFY(m_dm->ConnectDatabase(m_path)); // a sound file opens again afterwards
    }

    void missingFileKeepsOpenCollection()
    {
        AddItem("Kept", 1);
        m_dm->qDS_Items->edit();
        F("Name").setAsString("Being edited");
        const QString oldPath = m_dm->DatabasePath;
        QVERIFY(!m_dm->ConnectDatabase(m_dir.filePath("nothing-here.db")));
        QVERIFY(!m_dm->ConnectDatabase(QString()));
        QVERIFY(!m_dm->ConnectDatabase(m_dir.path())); // a folder is no file
        QVERIFY(m_dm->Connected());
        QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Edit);
        QCOMPARE(F("Name").asString(), "Being edited");
        QCOMPARE(m_dm->DatabasePath, oldPath);
        QCOMPARE(DBPath, oldPath);
        QVERIFY(!QFileInfo::exists(m_dir.filePath("nothing-here.db")));
    }

    void saveAsSameFileDoesNothing_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("sameFile");
        AddRow("same path", "%1", true);
        AddRow("other case", "%U", true);
        AddRow("with dot segments", "%D/./%F", true);
        AddRow("other file", "%D/copy.db", false);
    }
    void saveAsSameFileDoesNothing()
    {
        QFETCH(QString, target);
        QFETCH(bool, sameFile);
        const QFileInfo info(m_path);
        target.replace("%1", m_path)
            .replace("%U", m_path.toUpper())
            .replace("%D", info.absolutePath())
            .replace("%F", info.fileName());

        m_dm->ADConnection->startTransaction();
        m_dm->ADConnection->execSQL("INSERT INTO tblMints (Name) VALUES ('In transaction')");
        m_dm->SaveDatabaseAs(target);
        QCOMPARE(m_dm->ADConnection->inTransaction(), sameFile);
        QCOMPARE(QFileInfo::exists(target), !(target == m_path.toUpper()));
        if (!sameFile) {
            QCOMPARE(QFileInfo(target).size(), QFileInfo(m_path).size());
            QCOMPARE(SelectOnFile(target, "SELECT count(*) FROM tblMints").toInt(), 68);
        } else {
            m_dm->ADConnection->rollback();
        }
        QCOMPARE(m_dm->DatabasePath, QFileInfo(m_path).absoluteFilePath());
    }

    void saveAsCommitsAndCopies()
    {
        AddItem("Posted", 1);
        m_dm->qDS_Items->append();
        F("Name").setAsString("Not posted");
        const QString copy = NewFile("copy");
        WriteFile(copy, "old content");
        m_dm->SaveDatabaseAs(copy);
        QCOMPARE(SelectOnFile(copy, "SELECT group_concat(Name) FROM tblCoins").toString(), "Posted");
        m_dm->qDS_Items->cancel();
        // The command then opens the copy.
        QVERIFY(m_dm->ConnectDatabase(copy));
        QCOMPARE(m_dm->DatabasePath, QFileInfo(copy).absoluteFilePath());
        QCOMPARE(m_dm->qDS_Items->recordCount(), 1);
    }

    void saveAsNotConnectedDoesNothing()
    {
        m_dm->ADConnection->close();
        const QString copy = NewFile("never");
        m_dm->SaveDatabaseAs(copy);
        QVERIFY(!QFileInfo::exists(copy));
    }

    void createBlankReplacesFile()
    {
        AddItem("Gone", 1);
        const QString other = NewFile("other");
        WriteFile(other, QByteArray(2 * 1024 * 1024, 'z'));
        m_dm->CreateBlankDatabase(other);
        QCOMPARE(QFileInfo(other).size(), qint64(NewBlankDatabaseBytes().size()));
        // The open collection is left alone until the next connect.
        QCOMPARE(m_dm->qDS_Items->recordCount(), 1);
        QVERIFY(m_dm->ConnectDatabase(other));
        QCOMPARE(m_dm->qDS_Items->recordCount(), 0);

        QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                                 m_dm->CreateBlankDatabase(m_dir.filePath("no/such/folder/x.db")));
    }

    void vacuumShrinksFile()
    {
        // Photographs added and deleted leave free pages that only a vacuum gives back.
        ExecOnFile(m_path, "INSERT INTO tblCoins (Name, Metal, WeightG, PhotoFront) "
                           "VALUES ('Big', 0, 1, randomblob(3000000)); DELETE FROM tblCoins;");
        const qint64 full = GetFileSize(m_path);
        m_dm->VacuumDatabase();
        QVERIFY2(GetFileSize(m_path) < full - 2000000,
                 qPrintable(QString("%1 -> %2").arg(full).arg(GetFileSize(m_path))));
        QVERIFY(m_dm->Connected());
        // A failing VACUUM raises and leaves the module usable.
        m_dm->ADConnection->startTransaction();
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, m_dm->VacuumDatabase());
        m_dm->ADConnection->rollback();
        m_dm->VacuumDatabase();
    }

    void postPendingEdits()
    {
        AddItem("Item", 1);
        m_dm->qDS_Items->edit();
        F("Name").setAsString("Item edited");
        m_dm->tblMints->first();
        m_dm->tblMints->edit();
        m_dm->tblMints->fieldByName("Name").setAsString("Mint edited");
        TDBDataset idle(m_dm->ADConnection);
        idle.setSQL("SELECT 1 AS One");
        m_dm->PostPendingEdits({m_dm->tblMints, m_dm->qDS_Items, &idle, nullptr});
        QCOMPARE(m_dm->tblMints->state(), TDatasetState::Browse);
        QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Browse);
        QCOMPARE(SelectOnFile(m_path, "SELECT Name FROM tblCoins").toString(), "Item edited");
        QCOMPARE(SelectOnFile(m_path, "SELECT Name FROM tblMints WHERE ID = 1").toString(), "Mint edited");

        // A new record without a name fails as a post does, and stays.
        m_dm->qDS_Items->append();
        QVERIFY_THROWS_EXCEPTION(EDatabaseError, m_dm->PostPendingEdits({m_dm->qDS_Items}));
        QCOMPARE(m_dm->qDS_Items->state(), TDatasetState::Insert);
        m_dm->qDS_Items->cancel();
    }

    void basicStatsSums()
    {
        auto add = [this](int metal, double grams, QVariant qty, QVariant price) {
            Post({{"Name", "x"}, {"Metal", metal}, {"WeightGram", grams}, {"Qty", qty}, {"Price", price}});
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
        for (const char* hinted : {"TotalWeightG", "TotalWeightOZ", "TotalPaid"})
            QCOMPARE(s.fieldByName(hinted).dataType(), TFieldType::Float);
        // Per metal: Metal, TotalWeightG, TotalWeightOZ, TotalPaid, AvgPricePerOz, AvgPricePerGram.
        const double g = TroyOunceGrams;
        const QList<QList<double>> expected{{0, g * 2.5, 2.5, 2600, 2600 / 2.5, 2600 / (g * 2.5)},
                                            {1, g * 20, 20, 250, 250.0 / 20, 250 / (g * 20)},
                                            {5, 0, 0, 5, kNull, kNull}};
        int row = 0;
        for (s.first(); !s.eof(); s.next(), ++row) {
            const QStringList names{"Metal",     "TotalWeightG",  "TotalWeightOZ",
                                    "TotalPaid", "AvgPricePerOz", "AvgPricePerGram"};
            for (int i = 0; i < names.size(); ++i)
                QVERIFY2(SameNumber(NumberOrNaN(s.fieldByName(names[i]).value()), expected[row][i]),
                         qPrintable(QString("row %1 %2").arg(row).arg(names[i])));
        }
        // It closes with the connection, as every dataset on it.
        m_dm->ADConnection->close();
        QVERIFY(!s.active());
    }

private:
    QString NewFile(const QString& name)
    {
        return m_dir.filePath(QString("%1_%2.db").arg(name).arg(++m_fileCounter));
    }

    // Appends an item with the given values, set in their order, and posts it; returns its ID.
    qint64 Post(const QList<std::pair<const char*, QVariant>>& values)
    {
        m_dm->qDS_Items->append();
        for (const auto& [field, value] : values)
            F(field).setValue(value);
        m_dm->qDS_Items->post();
        return F("ID").asLargeInt();
    }
    qint64 AddItem(const QString& name, double grams)
    {
        return Post({{"Name", name}, {"WeightGram", grams}});
    }

    TDBField& F(const QString& name) { return m_dm->qDS_Items->fieldByName(name); }

    // Every item's caption and money fields, as exact texts ("null" for NULL), in ID order.
    QStringList ValueSnapshot()
    {
        QStringList rows;
        TDBDataset& items = *m_dm->qDS_Items;
        for (items.first(); !items.eof(); items.next()) {
            QString row = F("Caption").asString();
            for (const char* name : {"SpotValue", "LiquidationValue", "ROI", "SpotValuexQty",
                                     "LiquidationValuexQty", "ROIxQty", "ROIPercent"}) {
                const QVariant v = F(name).value();
                row += '|' + (v.isNull() ? QString("null") : QString::number(v.toDouble(), 'g', 17));
            }
            rows << row;
        }
        return rows;
    }

    QTemporaryDir m_dir;
    std::unique_ptr<TDM_InternalData> m_dm;
    QString m_path;
    int m_fileCounter = 0;
};

QTEST_GUILESS_MAIN(TestInternalData)
#include "tst_dminternaldata.moc"
