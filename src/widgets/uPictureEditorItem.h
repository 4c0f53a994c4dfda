#pragma once

#include "uBasicEditorItem.h"

#include <QImage>
#include <QPixmap>

// A picture held as encoded image bytes (PNG, JPEG, ...; a QImage or QPixmap value is taken as
// well), drawn scaled to fit its cell with its proportions kept, centred. Small pictures are not
// enlarged unless stretchSmall is on. Decoded and scaled pictures are kept in a cache bounded in
// bytes and shared by all picture items, so repainting a shown picture decodes nothing. It
// decodes on the main thread: meant for the few pictures of a pane, not for lists of thousands.
// Shown only: it has no in-place editor.
class TPictureEditorItem : public TBasicEditorItem
{
public:
    TPictureEditorItem() { setReadOnly(true); }

    bool stretchSmall() const { return m_stretchSmall; }
    void setStretchSmall(bool on) { m_stretchSmall = on; }
    // The height a row of this item asks for, in text lines (the cell is square by default).
    int lines() const { return m_lines; }
    void setLines(int lines) { m_lines = std::max(1, lines); }

    bool isPicture() const override { return true; }
    QString displayText(const QVariant& value) const override;
    bool paint(QPainter* painter, const QStyleOptionViewItem& option, const QVariant& value) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QVariant& value) const override;

    // The decoded picture of a value (cached); a null image when the bytes are no picture.
    static QImage decode(const QVariant& value);
    // The picture of value scaled to fit size (cached), or a null pixmap.
    static QPixmap scaled(const QVariant& value, const QSize& size, bool stretchSmall,
                          qreal devicePixelRatio);
    // Bounds the shared cache (bytes; 32 MB at first) and empties it.
    static void setCacheLimit(qint64 bytes);

protected:
    QWidget* makeEditor(QWidget* parent) const override;

private:
    bool m_stretchSmall = false;
    int m_lines = 5;
};
