#pragma once

#include <QImage>

#include <array>
#include <vector>

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

    // One distinct colour of the drawing and how much its pixels count.
    struct Colour
    {
        std::array<double, 4> v; // alpha, red, green, blue, premultiplied
        double weight;
        QRgb pixel; // premultiplied ARGB
    };

    explicit PaletteQuantizer(const QImage& drawing);

    // The palette picture with at most the given number of colours, the transparent entry included
    // (2 to 256).
    QImage quantize(int colours) const;

    static Error compare(const QImage& drawing, const QImage& picture);

private:
    QImage m_source;               // the drawing, premultiplied
    std::vector<Colour> m_colours; // the opaque ones first
    std::size_t m_opaqueCount = 0;
};
