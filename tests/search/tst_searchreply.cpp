// Reading deciphered search replies into assets and pictures, the asset's caption, the empty asset,
// and queuing large pictures. No network: the queue is never started.

#include "support_common.h"
#include "support_datarow.h"
#include "uDownloadQueue.h"
#include "uObjs.h"
#include "uZTTypes.h"

#include <QBuffer>
#include <QImage>
#include <QtTest>

#include <limits>

namespace {

const QString cBase = "https://catalogue.test:8443";

// A field of an asset by its name, as a variant, so that rows can name what they check.
QVariant Field(const TMetalAsset& a, const QString& name)
{
    const QMap<QString, QVariant> fields{{"Relevance", a.Relevance},
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
                                         {"Description", a.Description}};
    return fields.value(name);
}

// "kind URL" of each picture, in order.
QStringList PictureList(const TMetalAsset& asset)
{
    QStringList list;
    for (const auto& picture : asset.Pictures)
        list << QString("%1 %2").arg(picture->Kind).arg(picture->URL);
    return list;
}

std::unique_ptr<TMetalAsset> ReadOne(const QByteArray& element)
{
    TMetalAssets assets = ReadSearchReply("[" + element + "]", cBase);
    return assets.size() == 1 ? std::move(assets.front()) : nullptr;
}

QByteArray Encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format, 80);
    return bytes;
}

QImage Drawn(int w, int h)
{
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(qRgb(200, 160, 40));
    for (int x = 0; x < w; ++x)
        image.setPixel(x, x % h, qRgb(10, 20, 30));
    return image;
}

} // namespace

class TestSearchReply : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { LoadEnglish(); }

    void fullElement()
    {
        // As the server sends it, members in another order than the fields.
        const QByteArray element =
            R"({"PhotoInBox":"box.jpg","ID":7,"weight":1234,"Name":"Gold Maple Leaf 1 oz",
            "Series":"Maple Leaf","Metal":0,"Year":2019,"WeightG":31.1035,"MintName":"Royal Canadian mint",
            "CoinType":0,"FaceValue":50,"FaceValueCurrency":"CAD","Purity":".9999","Thickness":2.87,
            "Diameter":30,"Mintage":1000000,"Width":0,"Height":0,"Edge":"Reeded","MintMark":1,"Country":"CA",
            "ObverseDesc":"Effigy","ReverseDesc":"Maple leaf","Artist":"Walter Ott",
            "Description":"First line\r\nSecond line","PhotoFront":"front.jpg","PhotoBack":"back.jpg",
            "PhotoSide":null})";
        const auto asset = ReadOne(element);
        QVERIFY(asset);
        QCOMPARE(asset->Relevance, 1234);
        QCOMPARE(asset->Name, QString("Gold Maple Leaf 1 oz"));
        QCOMPARE(asset->Series, QString("Maple Leaf"));
        QCOMPARE(asset->Metal, 0);
        QCOMPARE(asset->Year, 2019);
        QCOMPARE(asset->WeightG, 31.1035);
        QCOMPARE(asset->MintName, QString("Royal Canadian mint"));
        QCOMPARE(asset->FaceValue, 50.0);
        QCOMPARE(asset->FaceValueCurrency, QString("CAD"));
        QCOMPARE(asset->Purity, QString(".9999"));
        QCOMPARE(asset->Thickness, 2.87);
        QCOMPARE(asset->Diameter, 30.0);
        QCOMPARE(asset->Mintage, 1000000);
        QCOMPARE(asset->Edge, QString("Reeded"));
        QVERIFY(asset->MintMark);
        QCOMPARE(asset->Country, QString("CA"));
        QCOMPARE(asset->ObverseDesc, QString("Effigy"));
        QCOMPARE(asset->ReverseDesc, QString("Maple leaf"));
        QCOMPARE(asset->Artist, QString("Walter Ott"));
        QCOMPARE(asset->Description, QStringList({"First line", "Second line"}));
        // Thumbnail first, then the large pictures in kind order; the null side gives none.
        QCOMPARE(PictureList(*asset), QStringList({"0 " + cBase + "/orv/Images_Thumbs/front.jpg",
                                                   "1 " + cBase + "/orv/Images_Large/front.jpg",
                                                   "2 " + cBase + "/orv/Images_Large/back.jpg",
                                                   "4 " + cBase + "/orv/Images_Large/box.jpg"}));
        QVERIFY(asset->PictureOfKind(TCoverPicture::kSide) == nullptr);
        QCOMPARE(asset->PictureOfKind(TCoverPicture::kObverse)->URL, cBase + "/orv/Images_Large/front.jpg");
        for (const auto& picture : asset->Pictures)
            QVERIFY(picture->IsEmpty());
        QCOMPARE(asset->Caption(), QString("Gold Maple Leaf 1 oz 1 oz 2019 Gold Coin"));
    }

    void memberTypes_data()
    {
        QTest::addColumn<QByteArray>("element");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QVariant>("value");
        AddRow("year as text", QByteArray(R"({"Year":"2019"})"), QString("Year"), QVariant(2019));
        AddRow("year as letters", QByteArray(R"({"Year":"MMXIX"})"), QString("Year"), QVariant(0));
        AddRow("year with decimals", QByteArray(R"({"Year":2019.9})"), QString("Year"), QVariant(2019));
        AddRow("year null", QByteArray(R"({"Year":null})"), QString("Year"), QVariant(0));
        AddRow("year as list", QByteArray(R"({"Year":[2019]})"), QString("Year"), QVariant(0));
        AddRow("year as object", QByteArray(R"({"Year":{"v":2019}})"), QString("Year"), QVariant(0));
        AddRow("metal as boolean", QByteArray(R"({"Metal":true})"), QString("Metal"), QVariant(1));
        AddRow("relevance from weight", QByteArray(R"({"weight":"17"})"), QString("Relevance"), QVariant(17));
        AddRow("relevance is not Relevance", QByteArray(R"({"Relevance":5})"), QString("Relevance"),
               QVariant(0));
        AddRow("mintage beyond 32 bits", QByteArray(R"({"Mintage":1e12})"), QString("Mintage"),
               QVariant(std::numeric_limits<qint32>::max()));
        AddRow("negative beyond 32 bits", QByteArray(R"({"Mintage":-1e12})"), QString("Mintage"),
               QVariant(std::numeric_limits<qint32>::min()));
        AddRow("weight as text", QByteArray(R"({"WeightG":" 31.1035 "})"), QString("WeightG"),
               QVariant(31.1035));
        AddRow("weight with a comma", QByteArray(R"({"WeightG":"31,1035"})"), QString("WeightG"),
               QVariant(0.0));
        AddRow("weight as list", QByteArray(R"({"WeightG":[1]})"), QString("WeightG"), QVariant(0.0));
        AddRow("name as number", QByteArray(R"({"Name":1933})"), QString("Name"), QVariant(QString("1933")));
        AddRow("purity as number", QByteArray(R"({"Purity":0.9999})"), QString("Purity"),
               QVariant(QString("0.9999")));
        AddRow("name null", QByteArray(R"({"Name":null})"), QString("Name"), QVariant(QString()));
        AddRow("name as boolean", QByteArray(R"({"Name":false})"), QString("Name"), QVariant(QString()));
        AddRow("name as object", QByteArray(R"({"Name":{"a":"b"}})"), QString("Name"), QVariant(QString()));
        AddRow("name keeps its blanks", QByteArray(R"({"Name":"  Ounce \u00e9 "})"), QString("Name"),
               QVariant(QString::fromUtf8("  Ounce é ")));
        AddRow("keys are case-sensitive", QByteArray(R"({"name":"x"})"), QString("Name"),
               QVariant(QString()));
        AddRow("mint mark 1", QByteArray(R"({"MintMark":1})"), QString("MintMark"), QVariant(true));
        AddRow("mint mark 2", QByteArray(R"({"MintMark":2})"), QString("MintMark"), QVariant(false));
        AddRow("mint mark -1", QByteArray(R"({"MintMark":-1})"), QString("MintMark"), QVariant(false));
        AddRow("mint mark \"1\"", QByteArray(R"({"MintMark":"1"})"), QString("MintMark"), QVariant(true));
        AddRow("mint mark true", QByteArray(R"({"MintMark":true})"), QString("MintMark"), QVariant(true));
        AddRow("mint mark text", QByteArray(R"({"MintMark":"yes"})"), QString("MintMark"), QVariant(false));
        AddRow("description lines", QByteArray(R"({"Description":"a\r\nb\nc\rd\n"})"), QString("Description"),
               QVariant(QStringList({"a", "b", "c", "d"})));
        AddRow("description empty line kept", QByteArray(R"({"Description":"a\n\nb"})"),
               QString("Description"), QVariant(QStringList({"a", "", "b"})));
        AddRow("description empty", QByteArray(R"({"Description":""})"), QString("Description"),
               QVariant(QStringList()));
        AddRow("description as list", QByteArray(R"({"Description":["a","b"]})"), QString("Description"),
               QVariant(QStringList()));
    }
    void memberTypes()
    {
        QFETCH(QByteArray, element);
        QFETCH(QString, field);
        QFETCH(QVariant, value);
        const auto asset = ReadOne(element);
        QVERIFY(asset);
        QCOMPARE(Field(*asset, field), value);
    }

    void everyMemberMissing_data()
    {
        QTest::addColumn<QByteArray>("element");
        AddRow("empty object", QByteArray("{}"));
        AddRow("every member null", QByteArray(R"({"weight":null,"Name":null,"Series":null,"Metal":null,
            "Year":null,"WeightG":null,"MintName":null,"CoinType":null,"FaceValue":null,"FaceValueCurrency":null,
            "Purity":null,"Thickness":null,"Diameter":null,"Mintage":null,"Width":null,"Height":null,"Edge":null,
            "MintMark":null,"Country":null,"ObverseDesc":null,"ReverseDesc":null,"Artist":null,"Description":null,
            "PhotoFront":null,"PhotoBack":null,"PhotoSide":null,"PhotoInBox":null})"));
        AddRow("every member of the wrong type",
               QByteArray(R"({"weight":[],"Name":{},"Series":[1],"Metal":"x",
            "Year":{},"WeightG":"heavy","MintName":true,"CoinType":[3],"FaceValue":{},"FaceValueCurrency":[],
            "Purity":{},"Thickness":"thin","Diameter":[],"Mintage":"many","Width":{},"Height":"tall","Edge":[],
            "MintMark":"x","Country":{},"ObverseDesc":[],"ReverseDesc":false,"Artist":[],"Description":{},
            "PhotoFront":{},"PhotoBack":[],"PhotoSide":true,"PhotoInBox":""})"));
    }
    void everyMemberMissing()
    {
        QFETCH(QByteArray, element);
        const auto asset = ReadOne(element);
        QVERIFY(asset);
        for (const char* name : {"Relevance", "Metal", "Year", "CoinType", "Mintage", "WeightG", "FaceValue",
                                 "Thickness", "Diameter", "Width", "Height"})
            QVERIFY2(Field(*asset, name).toDouble() == 0.0, name);
        for (const char* name : {"Name", "Series", "MintName", "FaceValueCurrency", "Purity", "Edge",
                                 "Country", "ObverseDesc", "ReverseDesc", "Artist"})
            QVERIFY2(Field(*asset, name).toString().isEmpty(), name);
        QVERIFY(!asset->MintMark);
        QVERIFY(asset->Description.isEmpty());
        QVERIFY(asset->Pictures.empty());
    }

    void pictureMembers_data()
    {
        QTest::addColumn<QByteArray>("element");
        QTest::addColumn<QStringList>("pictures");
        const QString t = cBase + "/orv/Images_Thumbs/", l = cBase + "/orv/Images_Large/";
        AddRow("front only: thumbnail and obverse", QByteArray(R"({"PhotoFront":"f.jpg"})"),
               QStringList({"0 " + t + "f.jpg", "1 " + l + "f.jpg"}));
        AddRow("null front: no thumbnail, no obverse",
               QByteArray(R"({"PhotoFront":null,"PhotoBack":"b.jpg"})"), QStringList({"2 " + l + "b.jpg"}));
        AddRow("order from the kinds, not the members",
               QByteArray(
                   R"({"PhotoInBox":"i.jpg","PhotoSide":"s.jpg","PhotoBack":"b.jpg","PhotoFront":"f.jpg"})"),
               QStringList({"0 " + t + "f.jpg", "1 " + l + "f.jpg", "2 " + l + "b.jpg", "3 " + l + "s.jpg",
                            "4 " + l + "i.jpg"}));
        AddRow("empty name gives no picture", QByteArray(R"({"PhotoFront":"","PhotoSide":"s.jpg"})"),
               QStringList({"3 " + l + "s.jpg"}));
        AddRow("name appended as it stands", QByteArray(R"({"PhotoBack":"a b%20c.jpg"})"),
               QStringList({"2 " + l + "a b%20c.jpg"}));
        AddRow("none", QByteArray(R"({"Name":"x"})"), QStringList());
    }
    void pictureMembers()
    {
        QFETCH(QByteArray, element);
        QFETCH(QStringList, pictures);
        const auto asset = ReadOne(element);
        QVERIFY(asset);
        QCOMPARE(PictureList(*asset), pictures);
    }

    void replyRoots_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QStringList>("names");
        AddRow("empty array", QByteArray("[]"), QStringList());
        AddRow("object root", QByteArray(R"({"Name":"x"})"), QStringList());
        AddRow("null root", QByteArray("null"), QStringList());
        AddRow("number root", QByteArray("42"), QStringList());
        AddRow("empty text", QByteArray(), QStringList());
        AddRow("not JSON", QByteArray("<html>Server failure</html>"), QStringList());
        AddRow("cut off", QByteArray(R"([{"Name":"a"},{"Name":)"), QStringList());
        AddRow("elements that are no objects are skipped",
               QByteArray(R"([1,"x",{"Name":"a"},null,[],{"Name":"b"}])"), QStringList({"a", "b"}));
        AddRow("order of the reply", QByteArray(R"([{"Name":"z","weight":1},{"Name":"a","weight":9}])"),
               QStringList({"z", "a"}));
        AddRow("byte order mark and line breaks", QByteArray("\xEF\xBB\xBF[\r\n{\"Name\":\"a\"}\r\n]\r\n"),
               QStringList({"a"}));
    }
    void replyRoots()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QStringList, names);
        QStringList read;
        for (const auto& asset : ReadSearchReply(reply, cBase))
            read << asset->Name;
        QCOMPARE(read, names);
        // The lines that a text worker posts read the same.
        QStringList fromLines;
        for (const auto& asset : ReadSearchReply(QString::fromUtf8(reply).split('\n'), cBase))
            fromLines << asset->Name;
        QCOMPARE(fromLines, names);
    }

    void caption_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("weightG");
        QTest::addColumn<int>("year");
        QTest::addColumn<int>("metal");
        QTest::addColumn<int>("coinType");
        QTest::addColumn<QString>("caption");
        AddRow("with year", QString("Maple Leaf"), TroyOunceGrams, 2019, 0, 0,
               QString("Maple Leaf 1 oz 2019 Gold Coin"));
        AddRow("year 0 left out", QString("Maple Leaf"), TroyOunceGrams / 10, 0, 0, 0,
               QString("Maple Leaf 1/10 oz Gold Coin"));
        AddRow("bar in kilograms", QString("Bar"), 1000.0, 2020, 1, 3, QString("Bar 1 kg 2020 Silver Bar"));
        AddRow("round in grams", QString("Round"), 2.5, 0, 2, 2, QString("Round 2.5 g Platinum Round"));
        AddRow("unknown metal and type", QString("X"), TroyOunceGrams, 0, 9, 9, QString("X 1 oz  "));
    }
    void caption()
    {
        QFETCH(QString, name);
        QFETCH(double, weightG);
        QFETCH(int, year);
        QFETCH(int, metal);
        QFETCH(int, coinType);
        QFETCH(QString, caption);
        TMetalAsset asset;
        asset.Name = name;
        asset.WeightG = weightG;
        asset.Year = year;
        asset.Metal = metal;
        asset.CoinType = coinType;
        QCOMPARE(asset.Caption(), caption);
        QVERIFY(!asset.IsEmptyAsset());
    }

    void emptyAsset()
    {
        const TMetalAsset& empty = EmptyMetalAsset();
        QCOMPARE(&EmptyMetalAsset(), &empty);
        QVERIFY(empty.IsEmptyAsset());
        QCOMPARE(empty.Caption(), QString());
        QVERIFY(empty.Pictures.empty());
        QVERIFY(empty.PictureOfKind(TCoverPicture::kThumbnail) == nullptr);
    }

    void pictureOfKindTakesTheFirst()
    {
        TMetalAsset asset;
        asset.AddPicture(TCoverPicture::kOther, "o1");
        asset.AddPicture(TCoverPicture::kObverse, "a");
        asset.AddPicture(TCoverPicture::kObverse, "b");
        QCOMPARE(asset.PictureOfKind(TCoverPicture::kObverse)->URL, QString("a"));
        QCOMPARE(asset.PictureOfKind(TCoverPicture::kOther)->URL, QString("o1"));
        QVERIFY(asset.PictureOfKind(TCoverPicture::kReverse) == nullptr);
        QCOMPARE(PictureKindText(TCoverPicture::kInABox), QString("In a box"));
        QCOMPARE(PictureKindText(TCoverPicture::kOther), QString("Other"));
        QCOMPARE(PictureKindText(6), QString());
    }

    void assigningDownloads_data()
    {
        QTest::addColumn<QVariant>("result");
        QTest::addColumn<bool>("taken");
        QTest::addColumn<QByteArray>("data"); // empty: PNG of the image
        const QImage image = Drawn(64, 48);
        const QByteArray jpeg = Encoded(image, "JPEG");
        AddRow("download keeps the served bytes",
               QVariant::fromValue(TDownloadedImage{QImage::fromData(jpeg), jpeg}), true, jpeg);
        AddRow("plain image is kept as PNG", QVariant(image), true, QByteArray());
        AddRow("null image", QVariant(QImage()), false, QByteArray());
        AddRow("download without image", QVariant::fromValue(TDownloadedImage{QImage(), jpeg}), false,
               QByteArray());
        AddRow("text", QVariant(QString("picture")), false, QByteArray());
        AddRow("nothing", QVariant(), false, QByteArray());
    }
    void assigningDownloads()
    {
        QFETCH(QVariant, result);
        QFETCH(bool, taken);
        QFETCH(QByteArray, data);
        TCoverPicture picture(TCoverPicture::kReverse, "u");
        QVERIFY(picture.IsEmpty());
        QCOMPARE(picture.Assign(result), taken);
        QCOMPARE(picture.IsEmpty(), !taken);
        if (!taken)
            return;
        const QImage shown = result.value<QImage>();
        QCOMPARE(picture.Image(), shown);
        if (!data.isEmpty())
            QCOMPARE(picture.Data, data);
        // What is stored decodes to what is shown.
        QCOMPARE(QImage::fromData(picture.Data).convertToFormat(shown.format()), shown);
        picture.Clear();
        QVERIFY(picture.IsEmpty());
    }

    void largePictureMessages()
    {
        const QImage image = Drawn(20, 10);
        const QByteArray png = Encoded(image, "PNG");
        auto asset = std::make_unique<TMetalAsset>();
        TCoverPicture& obverse = asset->AddPicture(TCoverPicture::kObverse, "o");
        TCoverPicture& reverse = asset->AddPicture(TCoverPicture::kReverse, "r");

        TPostedMessage delivered(cMsgLargePicture, QVariant::fromValue(TDownloadedImage{image, png}),
                                 std::make_unique<TMetalCovertMsgObj>(*asset, obverse));
        QCOMPARE(DeliverLargePicture(delivered), asset.get());
        QCOMPARE(obverse.Data, png);
        QVERIFY(!delivered.LParam()); // image and object taken and freed
        QVERIFY(!delivered.WParam().isValid());

        // A picture whose asset was freed meanwhile lands nowhere.
        TPostedMessage late(cMsgLargePicture, QVariant::fromValue(TDownloadedImage{image, png}),
                            std::make_unique<TMetalCovertMsgObj>(*asset, reverse));
        const auto* object = static_cast<TMetalCovertMsgObj*>(late.LParam());
        QCOMPARE(object->Picture(), &reverse);
        asset.reset();
        QVERIFY(object->Asset() == nullptr);
        QVERIFY(object->Picture() == nullptr);
        QVERIFY(DeliverLargePicture(late) == nullptr);

        // A message with another object or no image fills nothing.
        TMetalAsset other;
        TCoverPicture& side = other.AddPicture(TCoverPicture::kSide, "s");
        TPostedMessage noImage(cMsgLargePicture, QVariant(),
                               std::make_unique<TMetalCovertMsgObj>(other, side));
        QVERIFY(DeliverLargePicture(noImage) == nullptr);
        QVERIFY(side.IsEmpty());
        TPostedMessage foreign(cMsgLargePicture, QVariant(image), std::make_unique<TMessageObj>());
        QVERIFY(DeliverLargePicture(foreign) == nullptr);
    }

    void requestPicturesQueuesWhatIsMissing_data()
    {
        QTest::addColumn<QList<int>>("kinds");
        QTest::addColumn<QStringList>("urls");
        const QList<int> large{1, 2, 3, 4, 5};
        // The asset: thumbnail t, obverse o (filled), reverse r, side without URL, box b, other x.
        AddRow("large kinds", large, QStringList({"r", "b", "x"}));
        AddRow("thumbnail only", QList<int>{0}, QStringList({"t"}));
        AddRow("filled obverse is not asked again", QList<int>{1}, QStringList());
        AddRow("side without URL is skipped", QList<int>{3}, QStringList());
        AddRow("no kinds", QList<int>{}, QStringList());
    }
    void requestPicturesQueuesWhatIsMissing()
    {
        QFETCH(QList<int>, kinds);
        QFETCH(QStringList, urls);
        TMetalAsset asset;
        asset.AddPicture(TCoverPicture::kThumbnail, "t");
        asset.AddPicture(TCoverPicture::kObverse, "o").Assign(Drawn(4, 4));
        asset.AddPicture(TCoverPicture::kReverse, "r");
        asset.AddPicture(TCoverPicture::kSide, "");
        asset.AddPicture(TCoverPicture::kInABox, "b");
        asset.AddPicture(TCoverPicture::kOther, "x");
        QSet<quint8> kindSet;
        for (int kind : kinds)
            kindSet.insert(quint8(kind));

        QObject window;
        TDownloadQueue queue;
        QCOMPARE(RequestPictures(asset, queue, kindSet, &window, cMsgLargePicture, false), urls.size());
        QCOMPARE(queue.Count(), urls.size());
        for (const QString& url : urls) {
            TCustomDownloader* worker = queue.Find(url);
            QVERIFY2(worker, qPrintable(url));
            QVERIFY(qobject_cast<TPictureDownloader*>(worker));
            QCOMPARE(worker->Msg, cMsgLargePicture);
            QCOMPARE(worker->Window.data(), &window);
            QVERIFY(worker->PostData.isEmpty());
        }
        QVERIFY(!queue.Find("o"));
        QCOMPARE(queue.RunningThreads(), 0); // nothing starts without start
    }

    void requestPicturesSharesTransfers()
    {
        // Two cards with the same picture, and a card looked at twice: one transfer per URL.
        TMetalAsset first, second;
        first.AddPicture(TCoverPicture::kObverse, "same");
        second.AddPicture(TCoverPicture::kObverse, "same");
        QObject window;
        TDownloadQueue queue;
        QCOMPARE(RequestPictures(first, queue, LargePictureKinds(), &window, cMsgLargePicture, false), 1);
        QCOMPARE(RequestPictures(second, queue, LargePictureKinds(), &window, cMsgLargePicture, false), 1);
        QCOMPARE(RequestPictures(first, queue, LargePictureKinds(), &window, cMsgLargePicture, false), 1);
        QCOMPARE(queue.Count(), 1);
        QCOMPARE(queue.Find("same")->SubscriberCount(), 3);
        QCOMPARE(LargePictureKinds(), QSet<quint8>({1, 2, 3, 4, 5}));
    }
};

QTEST_GUILESS_MAIN(TestSearchReply)
#include "tst_searchreply.moc"
