#include "galleryData.h"
#include "galleryGlyphs.h"
#include "galleryPages.h"
#include "uChoiceEditorItems.h"
#include "uNumberEditorItems.h"
#include "uPictureEditorItem.h"
#include "uPropertyGrid.h"
#include "uRatingEditorItem.h"
#include "uTextEditorItems.h"
#include "uWidgetTexts.h"

#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// The editor items of the page: one of each kind, configured as a program's repository would.
struct TGalleryRepository
{
    TIntegerEditorItem id;
    TTextEditorItem name;
    TListEditorItem metal;
    TListEditorItem coinType;
    TIntegerEditorItem year;
    TFloatEditorItem weight;
    TFloatEditorItem price;
    TIntegerEditorItem qty;
    TComboEditorItem country;
    TComboEditorItem series;
    TLookupEditorItem mint;
    TPictureEditorItem thumb;
    TRatingEditorItem rating;
    TCheckEditorItem rare;
    TDateEditorItem purchased;
    TMemoEditorItem notes;
    TCheckListEditorItem metals;
    TFloatEditorItem premium;
    QStringList countries{u"Australia"_s, u"Austria"_s,      u"Canada"_s,         u"China"_s,
                          u"Mexico"_s,    u"South Africa"_s, u"United Kingdom"_s, u"United States"_s};
    QStringList seriesList{u"Maple Leaf series"_s, u"Kangaroo series"_s, u"Panda series"_s};
    QStandardItemModel mints;

    TGalleryRepository()
    {
        id.setReadOnly(true);
        name.setMaxLength(200);
        const QStringList metalNames{u"Gold"_s,      u"Silver"_s,  u"Platinum"_s,
                                     u"Palladium"_s, u"Rhodium"_s, u"Copper"_s};
        const int hues[] = {45, 210, 190, 30, 260, 15};
        for (int i = 0; i < metalNames.size(); ++i)
            metal.addEntry(i, metalNames[i], GalleryGlyph(metalNames[i].left(2), hues[i]));
        const QStringList types{u"Coin"_s, u"Rectangular coin"_s, u"Round"_s, u"Bar"_s, u"Divisible bar"_s};
        for (int i = 0; i < types.size(); ++i)
            coinType.addEntry(i, types[i]);
        year.setRange(1, 9999);
        year.setNullText(u"N/A"_s);
        weight.setDisplayFormat(u"0.## g"_s);
        weight.setEditFormat(u"0.## g"_s);
        weight.setRange(0, 1e6);
        weight.setStep(0.1);
        weight.setLargeStep(1.0);
        weight.setNullText(u"N/A"_s);
        price.setDisplayFormat(u"'$',0.00;('$',0.00)"_s);
        price.setRange(-1e9, 1e9);
        premium.setDisplayFormat(u",0.00%;-,0.00%"_s);
        premium.setRange(-1e6, 1e6);
        qty.setDisplayFormat(u",0"_s);
        qty.setRange(0, 1e9);
        country.setItemsProvider([this]() { return countries; });
        series.setItemsProvider([this]() { return seriesList; });
        series.setButton([this](QWidget* editor) {
            bool ok = false;
            const QString added = QInputDialog::getText(editor, u"Series"_s, u"Add a series to the list:"_s,
                                                        QLineEdit::Normal, QString(), &ok);
            if (ok && !added.isEmpty())
                seriesList << added;
        });
        mints.setColumnCount(2);
        const QStringList mintNames{u"Royal Canadian Mint"_s, u"Perth Mint"_s, u"The Royal Mint"_s,
                                    u"US Mint"_s, u"Austrian Mint"_s};
        for (int i = 1; i <= 67; ++i)
            mints.appendRow(
                {new QStandardItem(QString::number(i)),
                 new QStandardItem(i <= mintNames.size() ? mintNames[i - 1]
                                                         : u"Mint %1"_s.arg(i, 2, 10, QLatin1Char('0')))});
        for (int i = 0; i < mints.rowCount(); ++i)
            mints.item(i, 0)->setData(i + 1, Qt::EditRole);
        mint.setModel(&mints, 0, 1);
        mint.setButton([](QWidget*) {});
        rating.setStep(0.5);
        rare.setValues(1, 0);
        metals.setItems({u"Au"_s, u"Ag"_s, u"Pt"_s, u"Pd"_s, u"Rh"_s, u"Cu"_s});
        notes.setEditorLines(5);
    }
};
} // namespace

QWidget* makePropertyGridPage(QWidget* parent)
{
    auto* page = new QSplitter(parent);
    page->setObjectName(u"galleryPropertyGridPage"_s);
    auto* repository = new TGalleryRepository;
    auto* data = new TGalleryData(100000, page);
    QObject::connect(page, &QObject::destroyed, page, [repository]() { delete repository; });

    auto* table = new QTableView(page);
    table->setObjectName(u"galleryRows"_s);
    table->setModel(data);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
    table->verticalHeader()->hide();
    table->setColumnHidden(1, true);

    auto* side = new QWidget(page);
    auto* layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* grid = new TPropertyGrid(side);
    grid->setObjectName(u"vgDetails"_s);
    grid->setCaptionWidth(180);
    auto* status = new QLabel(side);
    status->setObjectName(u"lPropertyStatus"_s);
    status->setWordWrap(true);
    layout->addWidget(grid, 1);
    layout->addWidget(status);

    const QString general = u"vgDetailsCategoryRowGeneralInfo"_s;
    const QString purchase = u"vgDetailsCategoryRowPurchaseData"_s;
    const QString pictures = u"vgDetailsCategoryRowPictures"_s;
    const QString extra = u"vgDetailsCategoryRowExtra"_s;
    grid->addCategory(general, u"General information"_s);
    grid->addRow(u"rowID"_s, u"ID"_s, u"ID"_s, &repository->id, general);
    grid->addRow(u"rowMetal"_s, u"Metal"_s, u"Metal"_s, &repository->metal, general);
    grid->addRow(u"rowCoinType"_s, u"Type"_s, u"CoinType"_s, &repository->coinType, general);
    grid->addRow(u"rowName"_s, u"Name"_s, u"Name"_s, &repository->name, general);
    grid->addRow(u"rowYear"_s, u"Year"_s, u"Year"_s, &repository->year, general);
    grid->addRow(u"rowWeight"_s, u"Weight"_s, u"WeightG"_s, &repository->weight, general);
    grid->addRow(u"rowSeries"_s, u"Series"_s, u"Series"_s, &repository->series, general);
    grid->addRow(u"rowMint"_s, u"Mint"_s, u"MintID"_s, &repository->mint, general);
    grid->addRow(u"rowCountry"_s, u"Country"_s, u"Country"_s, &repository->country, general);
    grid->addCategory(purchase, u"Purchase information"_s);
    grid->addRow(u"rowQty"_s, u"Quantity"_s, u"Qty"_s, &repository->qty, purchase);
    grid->addRow(u"rowPrice"_s, u"Price"_s, u"Price"_s, &repository->price, purchase);
    grid->addRow(u"rowPremium"_s, u"Expected premium"_s, QString(), &repository->premium, purchase);
    grid->addRow(u"rowPurchaseDate"_s, u"Purchase date"_s, QString(), &repository->purchased, purchase);
    grid->addRow(u"rowRating"_s, u"Rating"_s, QString(), &repository->rating, purchase);
    grid->addRow(u"rowRare"_s, u"Rare"_s, QString(), &repository->rare, purchase);
    grid->addCategory(pictures, u"Pictures"_s);
    grid->addRow(u"rowThumb"_s, u"Obverse"_s, u"ThumbFront"_s, &repository->thumb, pictures);
    grid->addCategory(extra, u"Other"_s);
    grid->addRow(u"rowMetals"_s, u"Metals"_s, QString(), &repository->metals, extra);
    grid->addRow(u"rowNotes"_s, u"Notes"_s, QString(), &repository->notes, extra);
    grid->setRowValue(u"rowRating"_s, 3.5);
    grid->setRowValue(u"rowRare"_s, 1);
    grid->setRowValue(u"rowPurchaseDate"_s, QDate(2021, 3, 14));
    grid->setRowValue(u"rowMetals"_s, u"110000"_s);
    grid->setRowValue(u"rowNotes"_s, u"Bought at the spring fair.\nCertificate in the box."_s);
    grid->setSourceModel(data);

    QObject::connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, grid,
                     [grid](const QModelIndex& current) { grid->setCurrentRow(current.row()); });
    QObject::connect(grid, &TPropertyGrid::rowValueChanged, status,
                     [status](const QString& name, const QVariant& value) {
                         status->setText(u"Wrote "_s + name + u" = "_s + value.toString());
                     });
    QObject::connect(
        grid, &TPropertyGrid::editFailed, status,
        [status](const QString& name, const QString& message) { status->setText(name + u": "_s + message); });
    table->selectRow(0);
    table->setCurrentIndex(data->index(0, 2));
    page->addWidget(table);
    page->addWidget(side);
    page->setStretchFactor(0, 3);
    page->setStretchFactor(1, 2);
    return page;
}
