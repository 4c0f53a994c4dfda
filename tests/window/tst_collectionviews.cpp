// The logic of the collection views without a screen: the quick filter on a real collection, the
// ROI percent of groups and footer, the status-bar totals, the column configurations, zoom, the
// details rules and the layouts kept in the settings store.

#include "dmInternalData.h"
#include "support_common.h"
#include "support_datarow.h"
#include "uCollectionViews.h"
#include "uGridColumns.h"
#include "uGridLayout.h"
#include "uTableViewCustomizations.h"
#include "uTemplate.h"
#include "uZTRegistrySettings.h"
#include "uZTSettings.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

struct TItem
{
    const char* Name;
    int Metal;
    int CoinType;
    double WeightG;
    int Qty;
};

// A collection file with the given items, written with SQLite directly.
void WriteCollection(const QString& path, const QList<TItem>& items)
{
    WriteFile(path, NewBlankDatabaseBytes());
    sqlite3* db = nullptr;
    QVERIFY(sqlite3_open(path.toUtf8().constData(), &db) == SQLITE_OK);
    for (const TItem& item : items) {
        sqlite3_stmt* stmt = nullptr;
        sqlite3_prepare_v2(db,
                           "INSERT INTO tblCoins (Name, Metal, CoinType, WeightG, Qty, Price) "
                           "VALUES (?, ?, ?, ?, ?, 10)",
                           -1, &stmt, nullptr);
        sqlite3_bind_text(stmt, 1, item.Name, -1, SQLITE_TRANSIENT);
        sqlite3_bind_int(stmt, 2, item.Metal);
        sqlite3_bind_int(stmt, 3, item.CoinType);
        sqlite3_bind_double(stmt, 4, item.WeightG);
        sqlite3_bind_int(stmt, 5, item.Qty);
        QCOMPARE(sqlite3_step(stmt), SQLITE_DONE);
        sqlite3_finalize(stmt);
    }
    sqlite3_close(db);
}

QStringList ShownNames(TDBDataset& items)
{
    QStringList names;
    const int field = items.fieldByName(u"Name"_s).index();
    for (int row = 0; row < items.recordCount(); ++row)
        names << items.valueAt(row, field).toString();
    names.sort();
    return names;
}

// The columns of a view as the program makes them from its design.
std::unique_ptr<TGridColumns> ColumnsOf(TCollectionView view)
{
    auto columns = std::make_unique<TGridColumns>();
    const TViewDesign& design = CollectionViewDesign(view);
    for (const TViewColumnDesign& c : design.Columns)
        columns->add(c.Name, c.Field);
    ApplyViewDesign(*columns, design);
    return columns;
}

QStringList VisibleFields(const TGridColumns& columns)
{
    QStringList fields;
    for (const TGridColumn* c : columns.visibleColumns())
        fields << c->fieldName();
    return fields;
}

QStringList Fields(const QList<TGridColumn*>& list)
{
    QStringList fields;
    for (const TGridColumn* c : list)
        fields << c->fieldName();
    return fields;
}

} // namespace

class TestCollectionViews : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDM_InternalData> m_data;

    void Open(const QList<TItem>& items)
    {
        const QString path = m_dir->filePath(u"Vault.db"_s);
        WriteCollection(path, items);
        QVERIFY(m_data->ConnectDatabase(path));
    }

private slots:
    void initTestCase()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        LoadEnglish();
    }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_data = std::make_unique<TDM_InternalData>();
    }
    void cleanup()
    {
        m_data.reset();
        m_dir.reset();
        CustomFieldsEnabled = false;
        ORVCustomFields = {};
    }
    void cleanupTestCase() { m_home.reset(); }

    // The filter text of the check items and the records it leaves in a real collection.
    void quickFilter_data()
    {
        QTest::addColumn<QString>("unchecked"); // item indexes 0..7 left unchecked
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("remaining");
        AddRow("all on", "", "(Metal IN (-1, 0, 1, 2, 3, 4, 5)) AND (CoinType IN (-1, 0, 1, 2, 3, 4))",
               QStringList{"Britannia", "Eagle", "Kilobar", "Penny", "Valcambi"});
        AddRow("all metals off", "012345", "(Metal IN (-1)) AND (CoinType IN (-1, 0, 1, 2, 3, 4))",
               QStringList{});
        AddRow("coins and bars off", "67", "(Metal IN (-1, 0, 1, 2, 3, 4, 5)) AND (CoinType IN (-1))",
               QStringList{});
        AddRow("bars only", "6", "(Metal IN (-1, 0, 1, 2, 3, 4, 5)) AND (CoinType IN (-1, 3, 4))",
               QStringList{"Kilobar", "Valcambi"});
        AddRow("gold and copper coins", "12347", "(Metal IN (-1, 0, 5)) AND (CoinType IN (-1, 0, 1, 2))",
               QStringList{"Eagle", "Penny"});
        AddRow("silver off", "1", "(Metal IN (-1, 0, 2, 3, 4, 5)) AND (CoinType IN (-1, 0, 1, 2, 3, 4))",
               QStringList{"Eagle", "Kilobar", "Penny", "Valcambi"});
    }
    void quickFilter()
    {
        QFETCH(QString, unchecked);
        QFETCH(QString, text);
        QFETCH(QStringList, remaining);
        Open({{"Eagle", 0, 0, 31.1, 1},
              {"Kilobar", 0, 3, 1000, 1},
              {"Britannia", 1, 2, 31.1, 3},
              {"Valcambi", 2, 4, 50, 1},
              {"Penny", 5, 0, 3.1, 10}});
        const QStringList& names = QuickFilterActions();
        QCOMPARE(names.size(), 8);
        const TQuickFilterChecks checks = QuickFilterChecks([&](const QString& action) {
            return !unchecked.contains(QString::number(names.indexOf(action)));
        });
        const QString filter = BuildQuickFilter(checks);
        QCOMPARE(filter, text);
        ApplyQuickFilter(*m_data->qDS_Items, filter);
        QCOMPARE(ShownNames(*m_data->qDS_Items), remaining);
        // The totals cover the whole collection, whatever the filter.
        const auto totals = UpdateStatusBarTotals(*m_data);
        QVERIFY(totals.has_value());
        QVERIFY((*totals)[0].has_value());
        QVERIFY((*totals)[1].has_value());
        QVERIFY((*totals)[2].has_value());
    }

    // The percent of a group comes from its two sums; a zero price gives null, never 0 or infinity;
    // the footer counts a null sum as 0.
    void roiPercent_data()
    {
        QTest::addColumn<int>("level"); // -1 the footer
        QTest::addColumn<QVariant>("liquidation");
        QTest::addColumn<QVariant>("purchase");
        QTest::addColumn<QVariant>("expected");
        AddRow("group gain", 0, QVariant(1200.0), QVariant(1000.0), QVariant(20.0));
        AddRow("group loss", 1, QVariant(750.0), QVariant(1000.0), QVariant(-25.0));
        AddRow("group bought for nothing", 0, QVariant(500.0), QVariant(0.0), QVariant());
        AddRow("group without prices", 0, QVariant(), QVariant(), QVariant());
        AddRow("footer gain", -1, QVariant(2200.0), QVariant(2000.0), QVariant(10.0));
        AddRow("footer all free", -1, QVariant(300.0), QVariant(), QVariant());
        AddRow("footer no value yet", -1, QVariant(), QVariant(400.0), QVariant(-100.0));
    }
    void roiPercent()
    {
        QFETCH(int, level);
        QFETCH(QVariant, liquidation);
        QFETCH(QVariant, purchase);
        QFETCH(QVariant, expected);
        std::vector<TGridSummaryItem> items;
        std::vector<QVariant> values;
        for (const TROISummaryDesign& d : ROISummaryDesigns()) {
            items.push_back({d.ColumnName, d.Kind, d.Tag, TGridSummaryPlace::GroupFooter, {}});
            values.push_back(d.Tag == cROITagLiquidation ? liquidation
                             : d.Tag == cROITagPurchase  ? purchase
                             : d.Tag == cROITagPercent   ? QVariant(99.0) // the grid's own value
                                                         : QVariant(1.0));
        }
        TGridSummaryScope scope(items, values, level);
        ComputeROIPercentSummary(scope);
        const QVariant percent = values[std::size_t(scope.indexOfTag(cROITagPercent))];
        QCOMPARE(percent.isNull(), expected.isNull());
        if (!expected.isNull())
            QCOMPARE(percent.toDouble(), expected.toDouble());
        // The other items are left as the grid computed them.
        QCOMPARE(values[std::size_t(scope.indexOfTag(cROITagLiquidation))], liquidation);
    }
    void roiPercentNeedsAllThreeTags()
    {
        std::vector<TGridSummaryItem> items = {
            {u"A"_s, TGridSummaryKind::Sum, cROITagLiquidation, TGridSummaryPlace::GroupFooter, {}},
            {u"C"_s, TGridSummaryKind::None, cROITagPercent, TGridSummaryPlace::GroupFooter, {}}};
        std::vector<QVariant> values = {QVariant(5.0), QVariant(7.0)};
        TGridSummaryScope scope(items, values, 0);
        ComputeROIPercentSummary(scope);
        QCOMPARE(values[1], QVariant(7.0));
    }

    void groupWeightText_data()
    {
        QTest::addColumn<QVariant>("sum");
        QTest::addColumn<QString>("text");
        AddRow("null", QVariant(), QString());
        AddRow("ten ounces", QVariant(311.035), QString("Total weight: 10.0 oz"));
        AddRow("a gram", QVariant(1.0), QString("Total weight: 0.0 oz"));
    }
    void groupWeightText()
    {
        QFETCH(QVariant, sum);
        QFETCH(QString, text);
        QCOMPARE(GroupTotalWeightText(sum), text);
    }

    void statusBarTotals_data()
    {
        QTest::addColumn<QList<int>>("metals"); // one 31.1035 g item of each, Qty 2
        QTest::addColumn<QStringList>("captions");
        AddRow("empty collection", QList<int>{}, QStringList{"", "", ""});
        AddRow("gold only", QList<int>{0, 0}, QStringList{"Gold total: 4.0 oz", "", ""});
        AddRow("rhodium ignored", QList<int>{4, 1, 2},
               QStringList{"", "Silver total: 2.0 oz", "Platinum total: 2.0 oz"});
    }
    void statusBarTotals()
    {
        QFETCH(QList<int>, metals);
        QFETCH(QStringList, captions);
        QList<TItem> items;
        for (int metal : metals)
            items.append({"Item", metal, 0, 31.1035, 2});
        Open(items);
        const auto totals = UpdateStatusBarTotals(*m_data);
        QVERIFY(totals.has_value());
        for (int metal = 0; metal < 3; ++metal) {
            const auto& caption = (*totals)[std::size_t(metal)];
            QCOMPARE(caption.value_or(QString()), captions.at(metal));
            QCOMPARE(caption.has_value(), !captions.at(metal).isEmpty());
        }
        QVERIFY(!m_data->qBasicStats->active());
    }
    void statusBarTotalsWithoutCollectionTouchNothing()
    {
        QVERIFY(!UpdateStatusBarTotals(*m_data).has_value());
    }

    void designs()
    {
        const QList<TViewDesign>& designs = CollectionViewDesigns();
        QCOMPARE(designs.size(), 5);
        for (const TViewDesign& design : designs) {
            QCOMPARE(CollectionViewName(design.View), design.Name);
            QSet<QString> names;
            for (const TViewColumnDesign& c : design.Columns) {
                QVERIFY2(!names.contains(c.Name), qPrintable(c.Name));
                names.insert(c.Name);
            }
            for (int n = 1; n <= 10; ++n)
                QVERIFY(names.contains(design.Name + u"Custom"_s + QString::number(n)));
        }
        auto thumbs = ColumnsOf(cvThumbs);
        QCOMPARE(VisibleFields(*thumbs), (QStringList{"ThumbFront", "Caption", "Name", "Metal", "Year",
                                                      "WeightG", "MintID", "Qty", "Country", "Price"}));
        QCOMPARE(Fields(thumbs->sortColumns()), (QStringList{"Metal", "CoinType", "MintID"}));
        auto table = ColumnsOf(cvTable);
        QCOMPARE(Fields(table->groupColumns()), (QStringList{"Metal", "MintID"}));
        QVERIFY(!table->byField(u"Metal"_s)->visible());
        QVERIFY(!table->byField(u"Caption"_s)->visible());
        auto roi = ColumnsOf(cvTableROI);
        QCOMPARE(VisibleFields(*roi),
                 (QStringList{"Caption", "TotalPrice", "ExpectedPremium", "Qty", "WeightOZxQty",
                              "LiquidationValuexQty", "ROIxQty", "ROIPercent"}));
        QVERIFY(roi->byName(u"GridTableViewROIPurchasePricexQty"_s));
        QVERIFY(roi->byName(u"GridTableViewROISpotValuexQty"_s));
        auto shelve = ColumnsOf(cvShelve);
        QVERIFY(shelve->byName(u"GridShelveViewPhotoThumb"_s));
        QVERIFY(shelve->byName(u"GridShelveViewName"_s));
        QVERIFY(shelve->byField(u"PhotoFront"_s));
        QVERIFY(!thumbs->byField(u"PhotoFront"_s));
    }

    // A configuration replaces the user's columns, grouping and sort of the table view.
    void configuration_data()
    {
        QTest::addColumn<int>("configuration");
        QTest::addColumn<bool>("customOn");
        QTest::addColumn<QStringList>("visible");
        QTest::addColumn<QStringList>("groups");
        QTest::addColumn<QStringList>("sorts");
        AddRow("general", int(TTableViewConfiguration::General), false,
               QStringList{"Name", "Year", "WeightG", "Purity", "Series", "MintID", "Country", "Price",
                           "PurchaseDate", "Store", "Qty", "WeightOZxQty", "TotalPrice"},
               QStringList{"Metal", "CoinType"}, QStringList{"Metal", "CoinType", "Year"});
        AddRow("specification", int(TTableViewConfiguration::Specification), false,
               QStringList{"CoinType", "Name", "Year", "WeightG", "Purity", "Series", "Qty", "MintID",
                           "Country", "Edge", "FaceValue", "FaceValueCurrency", "Thickness", "Diameter",
                           "Mintage", "Artist", "MintMark"},
               QStringList{"Metal"}, QStringList{"Metal", "CoinType", "Name"});
        const QStringList all = {"Name",
                                 "Metal",
                                 "ObverseDesc",
                                 "ReverseDesc",
                                 "Series",
                                 "Year",
                                 "WeightG",
                                 "MintID",
                                 "CoinType",
                                 "FaceValue",
                                 "FaceValueCurrency",
                                 "Purity",
                                 "Thickness",
                                 "Diameter",
                                 "Width",
                                 "Height",
                                 "Edge",
                                 "MintMark",
                                 "Country",
                                 "Mintage",
                                 "Artist",
                                 "Description",
                                 "ExpectedPremium",
                                 "Rating",
                                 "Rare",
                                 "Condition",
                                 "Status",
                                 "Owner",
                                 "Packaging",
                                 "Location",
                                 "Grade",
                                 "GradeService",
                                 "SerialNumbers",
                                 "Qty",
                                 "Price",
                                 "PurchaseDate",
                                 "Store"};
        AddRow("all fields, custom fields off", int(TTableViewConfiguration::AllFields), false, all,
               QStringList{"Metal"}, QStringList{"Metal", "CoinType", "Name"});
        AddRow("all fields, custom fields on", int(TTableViewConfiguration::AllFields), true,
               all + QStringList{"Custom3", "Custom10"}, QStringList{"Metal"},
               QStringList{"Metal", "CoinType", "Name"});
    }
    void configuration()
    {
        QFETCH(int, configuration);
        QFETCH(bool, customOn);
        QFETCH(QStringList, visible);
        QFETCH(QStringList, groups);
        QFETCH(QStringList, sorts);
        TORVCustomFields custom;
        custom[2].Enabled = true;
        custom[9].Enabled = true;
        custom[4].Enabled = false;
        auto columns = ColumnsOf(cvTable);
        // The user's own changes before: a custom column shown, a grouping by country.
        columns->byField(u"Custom5"_s)->setVisible(true);
        columns->byField(u"Country"_s)->setGroupIndex(0);
        const TTableViewCustomizationConf conf =
            TableViewConfiguration(TTableViewConfiguration(configuration), customOn, custom);
        ApplyTableViewCustomization(*columns, conf);
        QCOMPARE(VisibleFields(*columns), visible);
        QCOMPARE(Fields(columns->groupColumns()), groups);
        QCOMPARE(Fields(columns->sortColumns()), sorts);
    }
    // Names without a column (the pictures of "All Fields", an unknown field) are passed over.
    void configurationPassesOverUnknownFields()
    {
        auto columns = ColumnsOf(cvTable);
        TTableViewCustomizationConf conf;
        conf.VisibleList = {u"Nonsense"_s, u"Name"_s, u"ThumbFront"_s, u"Year"_s};
        conf.GroupList = {u"Missing"_s, u"CoinType"_s};
        conf.SortList = {{u"Gone"_s, TGridSortOrder::Descending}, {u"Year"_s, TGridSortOrder::Descending}};
        ApplyTableViewCustomization(*columns, conf);
        QCOMPARE(VisibleFields(*columns), (QStringList{"Name", "Year"}));
        QCOMPARE(Fields(columns->groupColumns()), QStringList{"CoinType"});
        QCOMPARE(Fields(columns->sortColumns()), QStringList{"Year"});
        QCOMPARE(columns->byField(u"Year"_s)->sortOrder(), TGridSortOrder::Descending);
        QVERIFY(!columns->byField(u"CoinType"_s)->visible());
    }

    void zoom_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<bool>("up");
        QTest::addColumn<int>("steps");
        QTest::addColumn<int>("expected");
        AddRow("30 steps down stop at 40", 209, false, 30, 40);
        AddRow("one step down", 209, false, 1, 188);  // 188.1
        AddRow("one step up", 209, true, 1, 230);     // 229.9
        AddRow("tie to even up", 45, true, 1, 50);    // 49.5
        AddRow("tie to even down", 45, false, 1, 40); // 40.5 -> 40
        AddRow("up from the floor", 40, true, 1, 44);
    }
    void zoom()
    {
        QFETCH(int, width);
        QFETCH(bool, up);
        QFETCH(int, steps);
        QFETCH(int, expected);
        for (int i = 0; i < steps; ++i)
            width = ZoomedCardWidth(width, up);
        QCOMPARE(width, expected);
    }
    void wheelZoomsWithCtrlAlone()
    {
        QVERIFY(WheelZooms(Qt::ControlModifier));
        QVERIFY(!WheelZooms(Qt::NoModifier));
        QVERIFY(!WheelZooms(Qt::ControlModifier | Qt::ShiftModifier));
        QVERIFY(!WheelZooms(Qt::AltModifier));
    }

    void shelvePictures_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("lines");
        AddRow("small", 0, 178, 4);
        AddRow("medium", 1, 264, 9);
        AddRow("large", 2, 348, 14);
    }
    void shelvePictures()
    {
        QFETCH(int, index);
        QFETCH(int, height);
        QFETCH(int, lines);
        const QImage picture = ShelvePicture(index);
        QCOMPARE(picture.size(), QSize(777, height));
        // The board stands at the bottom; the top is left clear for the cards.
        QVERIFY(qAlpha(picture.pixel(388, height - 3)) == 255);
        QVERIFY(qAlpha(picture.pixel(388, 2)) < 40);
        QCOMPARE(ShelveCardWidth(index), 784);
        QCOMPARE(ThumbSizeLines(index), lines);
    }

    void detailsCoinRows_data()
    {
        QTest::addColumn<QVariant>("coinType");
        QTest::addColumn<int>("expected"); // -1 unchanged, 1 coin rows, 0 bar rows
        AddRow("null", QVariant(), -1);
        AddRow("coin", QVariant(0), 1);
        AddRow("rectangular coin", QVariant(1), 1);
        AddRow("round", QVariant(2), 1);
        AddRow("bar", QVariant(3), 0);
        AddRow("divisible bar", QVariant(4), -1);
        AddRow("unknown", QVariant(17), -1);
    }
    void detailsCoinRows()
    {
        QFETCH(QVariant, coinType);
        QFETCH(int, expected);
        const std::optional<bool> coinRows = DetailsShowCoinRows(coinType);
        QCOMPARE(coinRows.has_value() ? int(*coinRows) : -1, expected);
    }

    void customizeButton_data()
    {
        QTest::addColumn<QRect>("panel");
        QTest::addColumn<bool>("rtl");
        QTest::addColumn<QRect>("button");
        AddRow("left to right", QRect(0, 0, 600, 40), false, QRect(515, 5, 80, 30));
        AddRow("right to left", QRect(0, 0, 600, 40), true, QRect(5, 5, 80, 30));
        AddRow("panel below the find panel", QRect(0, 30, 300, 40), false, QRect(215, 35, 80, 30));
        AddRow("no panel", QRect(), false, QRect());
    }
    void customizeButton()
    {
        QFETCH(QRect, panel);
        QFETCH(bool, rtl);
        QFETCH(QRect, button);
        QCOMPARE(CustomizeButtonGeometry(panel, 80, rtl), button);
    }

    void splitters()
    {
        bool closed = false;
        int size = 250;
        SplitterMoved(true, 0, closed, size);
        QVERIFY(closed);
        QCOMPARE(size, 250);
        SplitterMoved(false, 320, closed, size);
        QVERIFY(!closed);
        QCOMPARE(size, 320);
    }

    // A layout goes into the store under Layout\<view name> and comes back; a layout naming a
    // column the view no longer has restores the rest; no layout leaves the design.
    void layoutRoundTrip()
    {
        TZTRegistrySettings store(cHKEY_CURRENT_USER, LayoutSettingsPath());
        auto table = ColumnsOf(cvTable);
        ApplyTableViewCustomization(*table,
                                    TableViewConfiguration(TTableViewConfiguration::General, false, {}));
        table->byField(u"Name"_s)->setWidth(240);
        QString saved = TGridLayout::save(*table);
        if (!saved.endsWith(u'\n'))
            saved += u'\n';
        // A column this program no longer has.
        saved += u"col GridTableViewGone v=1 p=0 w=50 g=-1 s=-1 o=0 l=0\n"_s;
        WriteViewLayout(store, u"GridTableView"_s, saved);
        QVERIFY(ReadViewLayout(store, u"GridThumbsView"_s).isEmpty());

        TZTRegistrySettings reopened(cHKEY_CURRENT_USER, SettingsRootPath() + u"\\Layout"_s);
        auto restored = ColumnsOf(cvTable);
        bool ok = false;
        TGridLayout::restore(*restored, ReadViewLayout(reopened, u"GridTableView"_s), &ok);
        QVERIFY(ok);
        QCOMPARE(VisibleFields(*restored), VisibleFields(*table));
        QCOMPARE(Fields(restored->groupColumns()), (QStringList{"Metal", "CoinType"}));
        QCOMPARE(Fields(restored->sortColumns()), (QStringList{"Metal", "CoinType", "Year"}));
        QCOMPARE(restored->byField(u"Name"_s)->width(), 240);

        auto untouched = ColumnsOf(cvThumbs);
        const QStringList before = VisibleFields(*untouched);
        TGridLayout::restore(*untouched, ReadViewLayout(reopened, u"GridThumbsView"_s));
        QCOMPARE(VisibleFields(*untouched), before);
    }
};

QTEST_GUILESS_MAIN(TestCollectionViews)
#include "tst_collectionviews.moc"
