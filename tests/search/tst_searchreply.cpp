// Reading deciphered search replies into assets, their pictures and captions, and large-picture
// results reaching their asset. No network.

#include "support_common.h"
#include "support_datarow.h"
#include "uDownloadQueue.h"
#include "uObjs.h"

#include <QBuffer>
#include <QImage>
#include <QtTest>

#include <limits>

namespace {

const QString cBase = "https://c.test";
const QString cThumbs = cBase + "/orv/Images_Thumbs/", cLarge = cBase + "/orv/Images_Large/";

// What an asset holds, by field name, so that rows can name what they check.
QVariantMap Fields(const TMetalAsset& a)
{
    QStringList pictures;
    for (const auto& picture : a.Pictures)
        pictures << QString("%1 %2").arg(picture->Kind).arg(picture->URL);
    return {{"Relevance", a.Relevance},
            {"Name", a.Name},
            {"Series", a.Series},
            {"Metal", a.Metal},
            {"Year", a.Year},
            {"WeightG", a.WeightG},
            {"MintName", a.MintName},
            {"CoinType", a.CoinType},
            {"FaceValue", a.FaceValue},
            {"FaceValueCurrency", a.FaceValueCurrency},
            {"Purity", a.Purity},
            {"Thickness", a.Thickness},
            {"Diameter", a.Diameter},
            {"Mintage", a.Mintage},
            {"Width", a.Width},
            {"Height", a.Height},
            {"Edge", a.Edge},
            {"MintMark", a.MintMark},
            {"Country", a.Country},
            {"ObverseDesc", a.ObverseDesc},
            {"ReverseDesc", a.ReverseDesc},
            {"Artist", a.Artist},
            {"Description", a.Description},
            {"Pictures", pictures},
            {"Caption", a.Caption()}};
}

QByteArray Jpeg(int w, int h)
{
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(qRgb(200, 160, 40));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 80);
    return bytes;
}

} // namespace

class TestSearchReply : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { LoadEnglish(); }

    void members_data()
    {
        QTest::addColumn<QByteArray>("element");
        QTest::addColumn<QVariantMap>("expected");
        const QVariantMap full{
            {"Relevance", 1234},
            {"Name", "Maple"},
            {"Series", "Maple Leaf"},
            {"Metal", 2},
            {"Year", 2019},
            {"WeightG", 31.1035},
            {"MintName", "RCM"},
            {"CoinType", 4},
            {"FaceValue", 50.0},
            {"FaceValueCurrency", "CAD"},
            {"Purity", ".9999"},
            {"Thickness", 2.87},
            {"Diameter", 30.0},
            {"Mintage", 1000000},
            {"Width", 1.5},
            {"Height", 2.5},
            {"Edge", "Reeded"},
            {"MintMark", true},
            {"Country", "CA"},
            {"ObverseDesc", "Queen"},
            {"ReverseDesc", "Leaf"},
            {"Artist", "Ott"},
            {"Description", QStringList{"First", "Second"}},
            {"Caption", "Maple 1 oz 2019 Platinum Divisible bar"},
            {"Pictures", QStringList{"0 " + cThumbs + "f", "1 " + cLarge + "f", "4 " + cLarge + "i"}}};
        AddRow("every member, any order", QByteArray(R"({"PhotoInBox":"i","ID":7,"weight":1234,"Name":"Maple",
            "Series":"Maple Leaf","Metal":2,"Year":2019,"WeightG":31.1035,"MintName":"RCM","CoinType":4,
            "FaceValue":50,"FaceValueCurrency":"CAD","Purity":".9999","Thickness":2.87,"Diameter":30,
            "Mintage":1000000,"Width":1.5,"Height":2.5,"Edge":"Reeded","MintMark":1,"Country":"CA","Artist":"Ott",
            "ObverseDesc":"Queen","ReverseDesc":"Leaf","Description":"First\r\nSecond","PhotoFront":"f",
            "PhotoSide":null})"),
               full);
        // Numbers in text, as many servers send them; text read from numbers.
        AddRow("numbers as text",
               QByteArray(R"({"Year":" 2019 ","WeightG":"31.1035","MintMark":"1","Name":1933})"),
               QVariantMap{{"Year", 2019}, {"WeightG", 31.1035}, {"MintMark", true}, {"Name", "1933"}});
        AddRow("cut and held in 32 bits", QByteArray(R"({"Year":2019.9,"Mintage":1e12,"Metal":-1e12})"),
               QVariantMap{{"Year", 2019},
                           {"Mintage", std::numeric_limits<qint32>::max()},
                           {"Metal", std::numeric_limits<qint32>::min()}});
        AddRow("mint mark only for 1; keys by exact name",
               QByteArray(R"({"MintMark":2,"WeightG":"31,1","name":"x","Relevance":5})"),
               QVariantMap{{"MintMark", false}, {"WeightG", 0.0}, {"Name", ""}, {"Relevance", 0}});
        AddRow("description lines", QByteArray(R"({"Description":"a\r\n\nb\rc\n"})"),
               QVariantMap{{"Description", QStringList{"a", "", "b", "c"}}});
        AddRow("null front: no thumbnail, no obverse; order of kinds",
               QByteArray(R"({"PhotoInBox":"i","PhotoSide":"s","PhotoBack":"b","PhotoFront":null})"),
               QVariantMap{
                   {"Pictures", QStringList{"2 " + cLarge + "b", "3 " + cLarge + "s", "4 " + cLarge + "i"}}});
        AddRow("empty name: none; a name as it stands",
               QByteArray(R"({"PhotoFront":"","PhotoSide":"a b%20.jpg"})"),
               QVariantMap{{"Pictures", QStringList{"3 " + cLarge + "a b%20.jpg"}}});
        QVariantMap zero = full;
        for (auto it = zero.begin(); it != zero.end(); ++it)
            it.value() = QVariant(it.value().metaType(), nullptr);
        zero["Caption"] = " 0 oz Gold Coin";
        AddRow("every member missing", QByteArray("{}"), zero);
        AddRow("every member null", QByteArray(R"({"weight":null,"Name":null,"Year":null,"WeightG":null,
            "MintMark":null,"Description":null,"PhotoFront":null})"),
               zero);
        AddRow("every member of a wrong type", QByteArray(R"({"weight":[],"Name":{},"Series":[1],"Metal":"x",
            "Year":{},"WeightG":"heavy","MintName":true,"CoinType":[3],"FaceValue":{},"FaceValueCurrency":[],
            "Purity":{},"Thickness":"thin","Diameter":[],"Mintage":"many","Width":{},"Height":"tall","Edge":[],
            "MintMark":"yes","Country":{},"ObverseDesc":[],"ReverseDesc":false,"Artist":[],"Description":{},
            "PhotoFront":{},"PhotoBack":[],"PhotoSide":true,"PhotoInBox":""})"),
               zero);
    }
    void members()
    {
        QFETCH(QByteArray, element);
        QFETCH(QVariantMap, expected);
        const TMetalAssets assets = ReadSearchReply("[" + element + "]", cBase);
        QCOMPARE(assets.size(), 1u);
        const QVariantMap fields = Fields(*assets.front());
        for (auto it = expected.cbegin(); it != expected.cend(); ++it)
            QVERIFY2(fields.value(it.key()) == it.value(),
                     qPrintable(it.key() + ": " + fields.value(it.key()).toStringList().join('|') +
                                fields.value(it.key()).toString()));
        for (const auto& picture : assets.front()->Pictures)
            QVERIFY(picture->IsEmpty());
    }

    void replyRoots_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QStringList>("names");
        AddRow("empty array", QByteArray("[]"), QStringList());
        AddRow("object root", QByteArray(R"({"Name":"x"})"), QStringList());
        AddRow("empty text", QByteArray(), QStringList());
        AddRow("not JSON", QByteArray("<html>Server failure</html>"), QStringList());
        AddRow("cut off", QByteArray(R"([{"Name":"a"},{"Name":)"), QStringList());
        AddRow("non-objects skipped, order kept", QByteArray(R"([1,{"Name":"z"},null,[],{"Name":"a"}])"),
               QStringList({"z", "a"}));
        AddRow("byte order mark, line breaks", QByteArray("\xEF\xBB\xBF[\r\n{\"Name\":\"a\"}\r\n]\r\n"),
               QStringList({"a"}));
    }
    void replyRoots()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QStringList, names);
        QStringList read, fromLines;
        for (const auto& asset : ReadSearchReply(reply, cBase))
            read << asset->Name;
        QCOMPARE(read, names);
        // The lines that a text worker posts read the same.
        for (const auto& asset : ReadSearchReply(QString::fromUtf8(reply).split('\n'), cBase))
            fromLines << asset->Name;
        QCOMPARE(fromLines, names);
        QCOMPARE(EmptyMetalAsset().Caption(), QString()); // the one asset without a text
    }

    void pictureResults()
    {
        const QByteArray jpeg = Jpeg(20, 10);
        const TDownloadedImage image{QImage::fromData(jpeg), jpeg};
        auto asset = std::make_unique<TMetalAsset>();
        TCoverPicture& obverse = asset->AddPicture(TCoverPicture::kObverse, "o");
        TCoverPicture& reverse = asset->AddPicture(TCoverPicture::kReverse, "r");
        const auto message = [](const QVariant& result, TMetalAsset& a, TCoverPicture& p) {
            return TPostedMessage(cMsgLargePicture, result, std::make_unique<TMetalCovertMsgObj>(a, p));
        };
        // A download keeps the bytes it was decoded from, and still reads as a QImage.
        TPostedMessage delivered = message(QVariant::fromValue(image), *asset, obverse);
        QCOMPARE(delivered.WParam().value<QImage>(), image.Image);
        QCOMPARE(DeliverLargePicture(delivered), asset.get());
        QCOMPARE(obverse.Data, jpeg);
        QCOMPARE(obverse.Image(), image.Image);
        QVERIFY(!delivered.LParam() && !delivered.WParam().isValid()); // taken and freed
        // A null image fills nothing; a plain image is held as PNG.
        TPostedMessage empty =
            message(QVariant::fromValue(TDownloadedImage{QImage(), jpeg}), *asset, reverse);
        QVERIFY(!DeliverLargePicture(empty));
        QVERIFY(reverse.IsEmpty());
        QVERIFY(reverse.Assign(QVariant(image.Image)));
        QVERIFY(reverse.Data.startsWith("\x89PNG"));
        reverse.Clear();

        // A picture whose card was removed meanwhile lands nowhere.
        TPostedMessage late = message(QVariant::fromValue(image), *asset, reverse);
        asset.reset();
        QVERIFY(!static_cast<TMetalCovertMsgObj*>(late.LParam())->Picture());
        QVERIFY(!DeliverLargePicture(late));
        TPostedMessage foreign(cMsgLargePicture, QVariant::fromValue(image), std::make_unique<TMessageObj>());
        QVERIFY(!DeliverLargePicture(foreign));
    }
};

QTEST_GUILESS_MAIN(TestSearchReply)
#include "tst_searchreply.moc"
