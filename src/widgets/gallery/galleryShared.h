#pragma once

#include "uEditorItem.h"

#include <QImage>
#include <QPalette>
#include <QString>
#include <QVariant>

#include <functional>

class QWidget;
class TGridView;

// What the grid and card pages of the gallery share: value texts in the shape of a collection,
// editor items made of them, a dark palette, and the shelf pictures.
namespace Gallery {
QString metalName(const QVariant& value);
QString coinTypeName(const QVariant& value);
QString weightText(const QVariant& grams);
QString ouncesText(const QVariant& ounces);
QString moneyText(const QVariant& value);
QString percentText(const QVariant& value);

// An editor item showing a text made by a function.
class TextItem : public TEditorItem
{
public:
    explicit TextItem(std::function<QString(const QVariant&)> text) : m_text(std::move(text)) {}
    QString displayText(const QVariant& value) const override
    {
        return value.isNull() ? QString() : m_text(value);
    }

private:
    std::function<QString(const QVariant&)> m_text;
};

// Image bytes, shown as pictures.
class PictureItem : public TEditorItem
{
public:
    QString displayText(const QVariant&) const override { return {}; }
    bool isPicture() const override { return true; }
};

const TEditorItem* metalItem();
const TEditorItem* coinTypeItem();
const TEditorItem* weightItem();
const TEditorItem* moneyItem();
const TEditorItem* mintItem();
const TEditorItem* pictureItem();

QPalette darkPalette();
// A wooden shelf of 777 pixels by height (178, 264 or 348).
QImage shelfPicture(int height);
// The texts and colours of a page follow its palette and direction check boxes.
void addLookSwitches(QWidget* bar, QWidget* page);
} // namespace Gallery
