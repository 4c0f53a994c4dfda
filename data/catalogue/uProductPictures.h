#pragma once

// Drawn stand-in pictures of a catalogue product: metal colour, round for coins and rounds,
// rectangular for bars, with the product's name on it.

#include "uCatalogueSource.h"

#include <QImage>

struct TProductPictureNames
{
    QString Front; // the obverse: in Images_Large and, as thumbnail, in Images_Thumbs
    QString Back;
    QString Side;
    QString InBox;
};

constexpr int ThumbnailHeight = 200;
constexpr int LargeSize = 600;

QImage DrawObverse(const TSourceProduct& product);
QImage DrawReverse(const TSourceProduct& product);
QImage DrawSide(const TSourceProduct& product);
QImage DrawInBox(const TSourceProduct& product, const QImage& obverse);

// Draws all pictures of the product and saves them as JPEG files; raises ECatalogueSourceError.
TProductPictureNames SaveProductPictures(const TSourceProduct& product, const QString& thumbsDir,
                                         const QString& largeDir);
