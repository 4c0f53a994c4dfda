#include "galleryData.h"
#include "galleryPages.h"
#include "galleryShared.h"

#include "uGrid.h"
#include "uGridCardView.h"
#include "uGridColumns.h"
#include "uGridModel.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>

using namespace Qt::StringLiterals;

namespace {
TGridColumn* add(TGridCardView* view, const QString& field, bool visible, const TEditorItem* item = nullptr)
{
    TGridColumn* column = view->addColumn(view->name() + field, field);
    column->setWidth(0);
    column->setVisible(visible);
    if (item)
        view->setEditorItem(column, item);
    return column;
}

void addTextRows(TGridCardView* view, const QStringList& shown)
{
    const QStringList all{u"Name"_s, u"Metal"_s,   u"Series"_s, u"Year"_s,     u"WeightG"_s, u"MintID"_s,
                          u"Qty"_s,  u"Country"_s, u"Price"_s,  u"CoinType"_s, u"Purity"_s,  u"TotalPrice"_s};
    for (const QString& field : all) {
        const TEditorItem* item = nullptr;
        if (field == u"Metal"_s)
            item = Gallery::metalItem();
        else if (field == u"MintID"_s)
            item = Gallery::mintItem();
        else if (field == u"CoinType"_s)
            item = Gallery::coinTypeItem();
        else if (field == u"WeightG"_s)
            item = Gallery::weightItem();
        else if (field == u"Price"_s || field == u"TotalPrice"_s)
            item = Gallery::moneyItem();
        add(view, field, shown.contains(field), item);
    }
}

void sortLikeTheCollection(TGridCardView* view)
{
    view->columns()->beginUpdate();
    view->columns()->byField(u"Metal"_s)->setSortIndex(0);
    view->columns()->byField(u"CoinType"_s)->setSortIndex(1);
    view->columns()->byField(u"MintID"_s)->setSortIndex(2);
    view->columns()->endUpdate();
}

// Thumbnails: the picture on top, the caption as the title, a few rows; Ctrl and the wheel zoom.
void setUpThumbs(TGridCardView* view)
{
    view->columns()->beginUpdate();
    add(view, u"ThumbFront"_s, true, Gallery::pictureItem())->setLines(9);
    add(view, u"ThumbBack"_s, false, Gallery::pictureItem());
    TGridColumn* caption = add(view, u"Caption"_s, true);
    caption->setCardTitle(true);
    caption->setLines(2);
    addTextRows(view, {u"Name"_s, u"Metal"_s, u"Year"_s, u"WeightG"_s, u"MintID"_s, u"Qty"_s, u"Country"_s,
                       u"Price"_s});
    view->columns()->endUpdate();
    sortLikeTheCollection(view);
    view->setCardWidth(209);
    view->setCardIndent(7);
    view->setPictureHeightLimitedToCardWidth(true);
    view->setWheelZoom(true, 0.9, 1.1, 40);
}

// Cards: the picture at the side, 150 square, the rows beside it, empty rows left out.
void setUpCards(TGridCardView* view)
{
    view->columns()->beginUpdate();
    add(view, u"ThumbFront"_s, true, Gallery::pictureItem())->setWidth(150);
    add(view, u"ThumbBack"_s, false, Gallery::pictureItem());
    TGridColumn* caption = add(view, u"Caption"_s, true);
    caption->setCardTitle(true);
    caption->setLines(1);
    addTextRows(view, {u"Name"_s, u"Metal"_s, u"Series"_s, u"Year"_s, u"WeightG"_s, u"MintID"_s, u"Qty"_s,
                       u"Price"_s});
    view->columns()->endUpdate();
    sortLikeTheCollection(view);
    view->setCardWidth(313);
    view->setSquareSidePictures(true);
    view->setEmptyRowsHidden(true);
}

// Shelves: one coin per shelf, the shelf picture behind the cards.
void setUpShelves(TGridCardView* view, int size)
{
    static const std::array<int, 3> heights{178, 264, 348};
    static const std::array<int, 3> lines{4, 9, 14};
    const QImage shelf = Gallery::shelfPicture(heights[std::size_t(size)]);
    view->setCardBackgroundPicture(shelf);
    view->setBackgroundPicture(shelf);
    view->setCardWidth(shelf.width() + 7);
    view->columns()->byName(view->name() + u"ThumbFront"_s)->setLines(lines[std::size_t(size)]);
}
} // namespace

QWidget* makeCardPage(QWidget* parent)
{
    auto* page = new QWidget(parent);
    page->setObjectName(u"cardPage"_s);
    auto* layout = new QVBoxLayout(page);
    auto* bar = new QWidget(page);
    auto* barLayout = new QHBoxLayout(bar);
    barLayout->setContentsMargins(0, 0, 0, 0);

    auto* grid = new TGrid(page);
    grid->setObjectName(u"grid"_s);
    grid->setSourceModel(new TGalleryData(100000, page));
    TGridCardView* thumbs = grid->addCardView(u"GridThumbsView"_s, u"Thumbs view"_s);
    setUpThumbs(thumbs);
    TGridCardView* cards = grid->addCardView(u"GridCardsView"_s, u"Cards view"_s);
    setUpCards(cards);
    TGridCardView* shelves = grid->addCardView(u"GridShelveView"_s, u"Shelves view"_s);
    shelves->columns()->beginUpdate();
    TGridColumn* name = add(shelves, u"Caption"_s, true);
    name->setCardTitle(true);
    name->setLines(2);
    add(shelves, u"ThumbFront"_s, true, Gallery::pictureItem());
    addTextRows(shelves, {});
    shelves->columns()->endUpdate();
    sortLikeTheCollection(shelves);
    shelves->setCardIndent(35);
    shelves->setSeparatorWidth(0);
    setUpShelves(shelves, 1);
    grid->setLevelTabsVisible(true);
    grid->setCurrentRow(0);

    auto* rows = new QComboBox(bar);
    rows->addItem(u"100,000 rows"_s, 100000);
    rows->addItem(u"20 rows"_s, 20);
    rows->addItem(u"No rows"_s, 0);
    barLayout->addWidget(rows);
    auto* thumbSize = new QComboBox(bar);
    thumbSize->setObjectName(u"thumbSize"_s);
    thumbSize->addItems({u"Small"_s, u"Medium"_s, u"Large"_s});
    thumbSize->setCurrentIndex(1);
    barLayout->addWidget(new QLabel(u"Shelf:"_s, bar));
    barLayout->addWidget(thumbSize);
    const auto button = [&](const QString& text, auto slot) {
        auto* b = new QPushButton(text, bar);
        barLayout->addWidget(b);
        QObject::connect(b, &QPushButton::clicked, page, slot);
    };
    button(u"Find"_s, [grid] { grid->activeView()->showFindPanel(); });
    button(u"Filter..."_s, [grid] { grid->activeView()->showFilterBuilder(); });
    button(u"Rows..."_s, [grid] { grid->activeView()->showColumnChooser(); });
    Gallery::addLookSwitches(bar, page);
    barLayout->addStretch(1);
    auto* status = new QLabel(bar);
    barLayout->addWidget(status);
    layout->addWidget(bar);
    layout->addWidget(grid, 1);

    QObject::connect(thumbSize, &QComboBox::currentIndexChanged, page,
                     [shelves](int index) { setUpShelves(shelves, index); });
    QObject::connect(rows, &QComboBox::currentIndexChanged, page, [grid, rows, page] {
        QAbstractItemModel* old = grid->sourceModel();
        grid->setSourceModel(new TGalleryData(rows->currentData().toInt(), page));
        delete old;
    });
    const auto showStatus = [grid, status] {
        TGridView* view = grid->activeView();
        status->setText(
            u"Row %1, %2 selected"_s.arg(grid->currentRow()).arg(view ? view->selectedCount() : 0));
    };
    QObject::connect(grid, &TGrid::currentRowChanged, page, showStatus);
    for (TGridView* view : grid->views())
        QObject::connect(view, &TGridView::selectionChanged, page, showStatus);
    QObject::connect(thumbs, &TGridCardView::cardWidthChanged, status,
                     [status](int width) { status->setText(u"Card width %1"_s.arg(width)); });
    return page;
}
