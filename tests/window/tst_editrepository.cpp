// The edit repository as data: every field finds its editor, every editor named for a field
// exists, and the definitions carry the formats, steps and null texts of their table.

#include "uEditRepository.h"
#include "uZTSettings.h"

#include <QSet>
#include <QtTest>

using namespace Qt::StringLiterals;

class TstEditRepository : public QObject
{
    Q_OBJECT

private slots:
    void fieldEditors_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("item");
        QTest::addColumn<bool>("displayOnly");
        QTest::newRow("metal") << u"Metal"_s << u"cbMetalTypes"_s << false;
        QTest::newRow("any case") << u"wEIGHTgRAM"_s << u"seWeightG"_s << false;
        QTest::newRow("stored weight shown only") << u"WeightG"_s << u"seWeightG"_s << true;
        QTest::newRow("ounces") << u"WeightOz"_s << u"seWeightOz"_s << false;
        QTest::newRow("mint") << u"MintID"_s << u"lcbMints"_s << false;
        QTest::newRow("country") << u"Country"_s << u"ImageComboBoxItemCountries"_s << false;
        QTest::newRow("diameter") << u"Diameter"_s << u"seMM"_s << false;
        QTest::newRow("face value") << u"FaceValue"_s << u"edCurrency"_s << false;
        QTest::newRow("price") << u"Price"_s << u"edUsersCurrency"_s << false;
        QTest::newRow("roi percent") << u"ROIPercent"_s << u"edPercent"_s << true;
        QTest::newRow("rating") << u"Rating"_s << u"RatingControl"_s << false;
        QTest::newRow("mint mark") << u"MintMark"_s << u"cbNotNull"_s << false;
        QTest::newRow("grade service") << u"GradeService"_s << u"cbGradeService"_s << false;
        QTest::newRow("thumbnail") << u"ThumbFront"_s << u"ImageItemThumb"_s << true;
        QTest::newRow("photo") << u"PhotoInBox"_s << u"ImageCoinEdit"_s << false;
        QTest::newRow("mint logo") << u"Logo"_s << u"ImageMint"_s << false;
        QTest::newRow("mint url") << u"URL"_s << u"HyperLink"_s << false;
        QTest::newRow("mintage") << u"Mintage"_s << u"seMintage"_s << false;
        QTest::newRow("purchase date") << u"PurchaseDate"_s << u"deDate"_s << false;
        QTest::newRow("serials") << u"SerialNumbers"_s << u"Memo"_s << false;
        QTest::newRow("key has none") << u"ID"_s << QString() << false;
        QTest::newRow("unknown") << u"NoSuchField"_s << QString() << false;
        QTest::newRow("custom text") << u"Custom1"_s << u"repCustomTextEdit"_s << false;
        QTest::newRow("custom float") << u"custom3"_s << u"repCustomFloatEdit"_s << false;
        QTest::newRow("custom money") << u"Custom4"_s << u"edUsersCurrency"_s << false;
        QTest::newRow("custom boolean") << u"Custom10"_s << u"cbNotNull"_s << false;
        QTest::newRow("custom out of range") << u"Custom11"_s << QString() << false;
    }

    void fieldEditors()
    {
        QFETCH(QString, field);
        QFETCH(QString, item);
        QFETCH(bool, displayOnly);
        const TORVCustomFields saved = ORVCustomFields;
        ORVCustomFields[0].DataType = 0;
        ORVCustomFields[2].DataType = 2;
        ORVCustomFields[3].DataType = 3;
        ORVCustomFields[9].DataType = 4;
        QCOMPARE(FieldEditorName(field), item);
        QCOMPARE(FieldIsDisplayOnly(field), displayOnly);
        ORVCustomFields = saved;
    }

    // Every field's editor is defined, names are unique, and the table's named items are all there.
    void everyNamedItemIsDefined()
    {
        QSet<QString> names;
        for (const TRepositoryItemDef& def : RepositoryItemDefs()) {
            QVERIFY2(!names.contains(def.Name), qPrintable(def.Name));
            names.insert(def.Name);
            QCOMPARE(FindRepositoryItem(def.Name), &def);
        }
        for (const TFieldEditorDef& field : FieldEditorDefs())
            QVERIFY2(FindRepositoryItem(field.Item), qPrintable(field.Field));
        for (const char* name : {"ImageItemThumb",
                                 "ImageCoinEdit",
                                 "ImageMint",
                                 "ImageComboBoxItemCountries",
                                 "cbMetalTypes",
                                 "cbCoinTypes",
                                 "ccbMetals",
                                 "ccbCoinTypes",
                                 "ccbWeights",
                                 "lcbMints",
                                 "seYear",
                                 "seQty",
                                 "seMintage",
                                 "seMM",
                                 "seWeightG",
                                 "seWeightOz",
                                 "edCurrency",
                                 "edUsersCurrency",
                                 "edPercent",
                                 "RatingControl",
                                 "cbNotNull",
                                 "Memo",
                                 "HyperLink",
                                 "lLongCaption",
                                 "cbCustomFields",
                                 "repCustomTextEdit",
                                 "repCustomNumberEdit",
                                 "repCustomFloatEdit",
                                 "cbPurity",
                                 "cbEdge",
                                 "cbCondition",
                                 "cbStatus",
                                 "cbPackaging",
                                 "cbLocation",
                                 "cbOwner",
                                 "cbStore",
                                 "cbGrade",
                                 "cbGradeService"})
            QVERIFY2(FindRepositoryItem(QString::fromLatin1(name)), name);
        QCOMPARE(FindRepositoryItem(u"seNothing"_s), nullptr);
    }

    void settings_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("formatKey");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("nullKey");
        QTest::addColumn<double>("step");
        QTest::addColumn<double>("largeStep");
        QTest::addColumn<bool>("postsAtOnce");
        QTest::newRow("seMM") << u"seMM"_s << u"cSFmtMM"_s << u"0.# mm"_s << u"cSNA"_s << 0.1 << 1.0 << false;
        QTest::newRow("seWeightG") << u"seWeightG"_s << u"cSFmtWeightG"_s << u"0.## g"_s << u"cSNA"_s << 1.0
                                   << 10.0 << true;
        QTest::newRow("seWeightOz") << u"seWeightOz"_s << u"cSFmtWeightOZ"_s << u"0.## oz"_s << u"cSNA"_s
                                    << 0.1 << 1.0 << true;
        QTest::newRow("seMintage") << u"seMintage"_s << u"cSFmtMintage"_s << u",0"_s << u"cSNA"_s << 1.0
                                   << 10.0 << false;
        QTest::newRow("seQty") << u"seQty"_s << u"cSFmtQty"_s << u",0"_s << QString() << 1.0 << 10.0 << false;
        QTest::newRow("seYear") << u"seYear"_s << QString() << QString() << u"cSNA"_s << 1.0 << 10.0 << true;
        QTest::newRow("edCurrency") << u"edCurrency"_s << QString() << u",0.##;(,0.##)"_s << QString() << 1.0
                                    << 10.0 << false;
        QTest::newRow("edPercent") << u"edPercent"_s << QString() << u",0.00%;-,0.00%"_s << QString() << 1.0
                                   << 10.0 << false;
        QTest::newRow("RatingControl")
            << u"RatingControl"_s << QString() << QString() << QString() << 0.5 << 10.0 << false;
        QTest::newRow("repCustomFloatEdit")
            << u"repCustomFloatEdit"_s << QString() << QString() << QString() << 0.1 << 1.0 << true;
        QTest::newRow("lcbMints") << u"lcbMints"_s << QString() << QString() << QString() << 1.0 << 10.0
                                  << true;
    }

    void settings()
    {
        QFETCH(QString, name);
        QFETCH(QString, formatKey);
        QFETCH(QString, format);
        QFETCH(QString, nullKey);
        QFETCH(double, step);
        QFETCH(double, largeStep);
        QFETCH(bool, postsAtOnce);
        const TRepositoryItemDef* def = FindRepositoryItem(name);
        QVERIFY(def);
        QCOMPARE(def->FormatKey, formatKey);
        QCOMPARE(def->Format, format);
        QCOMPARE(def->NullTextKey, nullKey);
        QCOMPARE(def->Step, step);
        QCOMPARE(def->LargeStep, largeStep);
        QCOMPARE(def->PostsAtOnce, postsAtOnce);
    }
};

QTEST_GUILESS_MAIN(TstEditRepository)
#include "tst_editrepository.moc"
