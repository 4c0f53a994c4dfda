#include "galleryGlyphs.h"
#include "galleryPages.h"
#include "uImageSlider.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// Sets of pictures, each missing some sides, as the items of a catalogue would.
QImage sidePicture(int set, int side)
{
    static const QStringList names{u"Obverse"_s, u"Reverse"_s, u"Side"_s, u"In a box"_s};
    QPixmap picture = GalleryPicture(names[side], 30 + set * 70 + side * 15, side == 3);
    return picture.toImage();
}
} // namespace

QWidget* makeImageSliderPage(QWidget* parent)
{
    auto* page = new QWidget(parent);
    page->setObjectName(u"galleryImageSliderPage"_s);
    auto* slider = new TImageSlider(page);
    slider->setObjectName(u"ImageSlider"_s);
    slider->setToolTip(u"Double-click to enlarge"_s);
    for (const QString& name : {u"ImageObverse"_s, u"ImageReverse"_s, u"ImageSide"_s, u"ImageInBox"_s})
        slider->addImage(name);
    const QStringList captions{u"Obverse"_s, u"Reverse"_s, u"Side"_s, u"In a box"_s};
    for (int i = 0; i < captions.size(); ++i)
        slider->setCaption(i, captions[i]);
    slider->setSkipEmpty(true);

    auto* kind = new QLabel(page);
    kind->setObjectName(u"lPicType"_s);
    kind->setAlignment(Qt::AlignCenter);
    QFont bold = kind->font();
    bold.setBold(true);
    kind->setFont(bold);
    auto* skip = new QCheckBox(u"Skip images without a picture and stop at the ends"_s, page);
    skip->setChecked(true);
    auto* previous = new QPushButton(u"Previous"_s, page);
    auto* next = new QPushButton(u"Next"_s, page);
    auto* another = new QPushButton(u"Next set of pictures"_s, page);
    auto* status = new QLabel(page);

    // Set 0 has all four, set 1 only obverse and reverse, set 2 reverse and box, set 3 none.
    static const bool present[4][4] = {{true, true, true, true},
                                       {true, true, false, false},
                                       {false, true, false, true},
                                       {false, false, false, false}};
    auto* setIndex = new int(-1);
    QObject::connect(page, &QObject::destroyed, page, [setIndex]() { delete setIndex; });
    const auto loadNext = [slider, setIndex]() {
        *setIndex = (*setIndex + 1) % 4;
        slider->clearImages();
        for (int side = 0; side < 4; ++side)
            if (present[*setIndex][side])
                slider->setImage(side, sidePicture(*setIndex, side));
        slider->showFirst();
    };
    const auto showState = [slider, kind, status, previous, next, setIndex]() {
        kind->setText(slider->currentCaption());
        status->setText(u"Set %1, picture %2 of 4"_s.arg(*setIndex + 1).arg(slider->currentIndex() + 1));
        previous->setEnabled(slider->canGoPrevious());
        next->setEnabled(slider->canGoNext());
    };
    QObject::connect(slider, &TImageSlider::currentChanged, page, showState);
    QObject::connect(skip, &QCheckBox::toggled, page, [slider, showState](bool on) {
        slider->setSkipEmpty(on);
        showState();
    });
    QObject::connect(previous, &QPushButton::clicked, slider, &TImageSlider::previous);
    QObject::connect(next, &QPushButton::clicked, slider, &TImageSlider::next);
    QObject::connect(another, &QPushButton::clicked, page, [loadNext, showState]() {
        loadNext();
        showState();
    });
    QObject::connect(slider, &TImageSlider::doubleClicked, page,
                     [status](int index) { status->setText(u"Double-clicked picture %1"_s.arg(index + 1)); });
    loadNext();
    showState();

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(previous);
    buttons->addWidget(next);
    buttons->addStretch(1);
    buttons->addWidget(another);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(kind);
    layout->addWidget(slider, 1);
    layout->addWidget(skip);
    layout->addLayout(buttons);
    layout->addWidget(status);
    return page;
}
