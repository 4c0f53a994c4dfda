#pragma once

#include <QImage>

// Reduces a drawing with a transparent background to an 8-bit palette picture (Format_Indexed8 with
// an alpha-capable colour table) for a small palette PNG.
//
// The colours are clustered in premultiplied ARGB, so that a faint edge pixel weighs as little as it
// shows: a variance-driven median cut gives the first palette, k-means refines it. Fully transparent
// pixels all take entry 0; opaque and translucent pixels are clustered apart, so that the body of a
// drawing stays exactly opaque. Opaque pixels on a sharp edge count less than those in a smooth
// gradient: an error hides on an edge, while a coarse step in a gradient shows as a band. Every pixel
// takes its nearest entry, without dithering, so that the gradients come out as runs of neighbouring
// indices that the PNG filters and deflate pack tightly.
class PaletteQuantizer
{
public:
    // How far a palette picture is from its drawing, in premultiplied 8-bit channel steps.
    struct Error
    {
        double meanAbs = 0;       // mean over all pixels and the four channels
        int maxAbs = 0;           // the largest difference in any channel
        double smoothMeanAbs = 0; // mean over the opaque pixels of smooth areas, where bands would show
    };

    // colours: the palette size, the transparent entry included (2 to 256).
    explicit PaletteQuantizer(int colours) : m_colours(colours) {}

    QImage quantize(const QImage& drawing) const;

    static Error compare(const QImage& drawing, const QImage& picture);

private:
    int m_colours;
};
