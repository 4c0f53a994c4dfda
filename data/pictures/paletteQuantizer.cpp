#include "paletteQuantizer.h"

#include <QHash>
#include <QList>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

// Pixels whose channels differ from every neighbour's by at most this much lie in a smooth area.
constexpr double kSmooth = 4.0;

// Rounds of k-means at most; it mostly settles in fewer.
constexpr int kRounds = 16;

using Vec = std::array<double, 4>; // alpha, red, green, blue, premultiplied

using Bin = PaletteQuantizer::Colour;

double dist2(const Vec& a, const Vec& b)
{
    double d = 0;
    for (std::size_t k = 0; k < 4; ++k)
        d += (a[k] - b[k]) * (a[k] - b[k]);
    return d;
}

// Weighted sums over a set of bins, enough for its mean and its squared error.
struct Moments
{
    double weight = 0;
    Vec sum{};
    double squares = 0;

    void add(const Bin& b)
    {
        weight += b.weight;
        for (std::size_t k = 0; k < 4; ++k) {
            sum[k] += b.weight * b.v[k];
            squares += b.weight * b.v[k] * b.v[k];
        }
    }
    Moments minus(const Moments& o) const
    {
        Moments m;
        m.weight = weight - o.weight;
        for (std::size_t k = 0; k < 4; ++k)
            m.sum[k] = sum[k] - o.sum[k];
        m.squares = squares - o.squares;
        return m;
    }
    double error() const
    {
        if (weight <= 0)
            return 0;
        double s = 0;
        for (std::size_t k = 0; k < 4; ++k)
            s += sum[k] * sum[k];
        return std::max(0.0, squares - s / weight);
    }
    Vec mean() const
    {
        Vec m{};
        for (std::size_t k = 0; k < 4; ++k)
            m[k] = weight > 0 ? sum[k] / weight : 0;
        return m;
    }
};

// A box of the median cut: a range of bins of one class and the split that lowers its error most.
struct Box
{
    std::size_t begin = 0;
    std::size_t end = 0;
    bool translucent = false;
    Moments moments;
    double gain = 0; // error removed by the best split
    std::size_t axis = 0;
    std::size_t cut = 0; // first bin of the upper part once sorted along the axis
};

void sortAlong(std::vector<Bin>& bins, const Box& box, std::size_t axis)
{
    std::sort(bins.begin() + std::ptrdiff_t(box.begin), bins.begin() + std::ptrdiff_t(box.end),
              [axis](const Bin& a, const Bin& b) { return a.v[axis] < b.v[axis]; });
}

// Fills in the box's moments and its best split over all four axes.
void evaluate(std::vector<Bin>& bins, Box& box)
{
    box.moments = Moments();
    for (std::size_t i = box.begin; i < box.end; ++i)
        box.moments.add(bins[i]);
    box.gain = 0;
    if (box.end - box.begin < 2)
        return;
    const double whole = box.moments.error();
    for (std::size_t axis = 0; axis < 4; ++axis) {
        sortAlong(bins, box, axis);
        Moments lower;
        for (std::size_t i = box.begin; i + 1 < box.end; ++i) {
            lower.add(bins[i]);
            if (bins[i].v[axis] == bins[i + 1].v[axis])
                continue;
            const double gain = whole - lower.error() - box.moments.minus(lower).error();
            if (gain > box.gain) {
                box.gain = gain;
                box.axis = axis;
                box.cut = i + 1;
            }
        }
    }
}

// The largest channel step from a pixel to its eight neighbours.
double localContrast(const QImage& source, int x, int y)
{
    const QRgb c = reinterpret_cast<const QRgb*>(source.constScanLine(y))[x];
    int most = 0;
    for (int ny = std::max(0, y - 1); ny <= std::min(source.height() - 1, y + 1); ++ny) {
        const auto* line = reinterpret_cast<const QRgb*>(source.constScanLine(ny));
        for (int nx = std::max(0, x - 1); nx <= std::min(source.width() - 1, x + 1); ++nx) {
            const QRgb n = line[nx];
            most = std::max({most, std::abs(qAlpha(n) - qAlpha(c)), std::abs(qRed(n) - qRed(c)),
                             std::abs(qGreen(n) - qGreen(c)), std::abs(qBlue(n) - qBlue(c))});
        }
    }
    return most;
}

int clampChannel(double v)
{
    return std::clamp(int(std::lround(v)), 0, 255);
}

} // namespace

PaletteQuantizer::PaletteQuantizer(const QImage& drawing)
    : m_source(drawing.convertToFormat(QImage::Format_ARGB32_Premultiplied))
{
    // Fully transparent pixels stay out: they all take entry 0.
    QHash<QRgb, double> weights;
    for (int y = 0; y < m_source.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(m_source.constScanLine(y));
        for (int x = 0; x < m_source.width(); ++x) {
            if (qAlpha(line[x]) == 0)
                continue;
            const double contrast = qAlpha(line[x]) == 255 ? localContrast(m_source, x, y) : 0.0;
            weights[line[x]] += contrast <= kSmooth ? 1.0 : kSmooth / contrast;
        }
    }
    m_colours.reserve(std::size_t(weights.size()));
    for (auto it = weights.cbegin(); it != weights.cend(); ++it) {
        const QRgb p = it.key();
        m_colours.push_back(
            {{double(qAlpha(p)), double(qRed(p)), double(qGreen(p)), double(qBlue(p))}, it.value(), p});
    }
    const auto firstTranslucent = std::partition(m_colours.begin(), m_colours.end(),
                                                 [](const Colour& c) { return qAlpha(c.pixel) == 255; });
    m_opaqueCount = std::size_t(firstTranslucent - m_colours.begin());
}

QImage PaletteQuantizer::quantize(int colours) const
{
    const QImage& source = m_source;
    std::vector<Bin> bins = m_colours;
    const std::size_t opaqueCount = m_opaqueCount;

    // Median cut: split the box whose best split removes the most error until the palette is full.
    std::vector<Box> boxes;
    if (opaqueCount > 0)
        boxes.push_back({0, opaqueCount, false, {}, 0, 0, 0});
    if (opaqueCount < bins.size())
        boxes.push_back({opaqueCount, bins.size(), true, {}, 0, 0, 0});
    for (Box& box : boxes)
        evaluate(bins, box);
    const std::size_t maxBoxes = std::size_t(std::clamp(colours, 2, 256) - 1);
    while (boxes.size() < maxBoxes) {
        const auto best = std::max_element(boxes.begin(), boxes.end(),
                                           [](const Box& a, const Box& b) { return a.gain < b.gain; });
        if (best == boxes.end() || best->gain <= 0)
            break;
        sortAlong(bins, *best, best->axis);
        Box upper{best->cut, best->end, best->translucent, {}, 0, 0, 0};
        best->end = best->cut;
        evaluate(bins, *best);
        evaluate(bins, upper);
        boxes.push_back(upper);
    }

    // k-means from there, each colour staying with the centroids of its class.
    const std::size_t k = boxes.size();
    std::vector<Vec> centroids(k);
    std::vector<std::size_t> assigned(bins.size());
    std::array<std::vector<std::size_t>, 2> classes; // the opaque centroids, the translucent ones
    for (std::size_t c = 0; c < k; ++c) {
        centroids[c] = boxes[c].moments.mean();
        classes[boxes[c].translucent ? 1 : 0].push_back(c);
        for (std::size_t i = boxes[c].begin; i < boxes[c].end; ++i)
            assigned[i] = c;
    }
    std::vector<double> between(k * k);
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t a = 0; a < k; ++a) {
            for (std::size_t b = 0; b < k; ++b)
                between[a * k + b] = dist2(centroids[a], centroids[b]);
        }
        bool changed = false;
        for (std::size_t i = 0; i < bins.size(); ++i) {
            std::size_t best = assigned[i];
            double bestDist = dist2(bins[i].v, centroids[best]);
            for (const std::size_t c : classes[qAlpha(bins[i].pixel) == 255 ? 0 : 1]) {
                // A centroid twice as far from the current one as this colour cannot be nearer.
                if (c == best || between[best * k + c] >= 4 * bestDist)
                    continue;
                const double d = dist2(bins[i].v, centroids[c]);
                if (d < bestDist) {
                    bestDist = d;
                    best = c;
                }
            }
            changed = changed || best != assigned[i];
            assigned[i] = best;
        }
        if (!changed)
            break;
        std::vector<Moments> members(k);
        for (std::size_t i = 0; i < bins.size(); ++i)
            members[assigned[i]].add(bins[i]);
        for (std::size_t c = 0; c < k; ++c) {
            if (members[c].weight > 0)
                centroids[c] = members[c].mean();
        }
    }

    // The colour table: transparent first, then the translucent entries by opacity, then the opaque
    // ones from dark to light, so that a gradient runs through neighbouring indices. Entries that
    // round to the same colour are merged.
    std::vector<QRgb> entries(k);
    for (std::size_t c = 0; c < k; ++c) {
        const Vec& v = centroids[c];
        if (!boxes[c].translucent) {
            entries[c] = qRgba(clampChannel(v[1]), clampChannel(v[2]), clampChannel(v[3]), 255);
        } else {
            const int alpha = std::clamp(int(std::lround(v[0])), 1, 254);
            const double unpremultiply = 255.0 / alpha;
            entries[c] = qRgba(clampChannel(v[1] * unpremultiply), clampChannel(v[2] * unpremultiply),
                               clampChannel(v[3] * unpremultiply), alpha);
        }
    }
    std::vector<QRgb> sorted = entries;
    std::sort(sorted.begin(), sorted.end(), [](QRgb a, QRgb b) {
        if (qAlpha(a) != qAlpha(b))
            return qAlpha(a) < qAlpha(b);
        const int la = qRed(a) * 299 + qGreen(a) * 587 + qBlue(a) * 114;
        const int lb = qRed(b) * 299 + qGreen(b) * 587 + qBlue(b) * 114;
        return la != lb ? la < lb : a < b;
    });
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    QList<QRgb> table = {qRgba(0, 0, 0, 0)};
    table.append(QList<QRgb>(sorted.begin(), sorted.end()));
    QHash<QRgb, int> indexOfEntry;
    for (qsizetype i = 1; i < table.size(); ++i)
        indexOfEntry.insert(table.at(i), int(i));
    QHash<QRgb, uchar> indexOfPixel;
    for (std::size_t i = 0; i < bins.size(); ++i)
        indexOfPixel.insert(bins[i].pixel, uchar(indexOfEntry.value(entries[assigned[i]])));

    QImage result(source.size(), QImage::Format_Indexed8);
    result.setColorTable(table);
    for (int y = 0; y < source.height(); ++y) {
        const auto* in = reinterpret_cast<const QRgb*>(source.constScanLine(y));
        uchar* out = result.scanLine(y);
        for (int x = 0; x < source.width(); ++x)
            out[x] = qAlpha(in[x]) == 0 ? 0 : indexOfPixel.value(in[x]);
    }
    return result;
}

PaletteQuantizer::Error PaletteQuantizer::compare(const QImage& drawing, const QImage& picture)
{
    const QImage a = drawing.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage b = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    Error error;
    if (a.size() != b.size() || a.isNull()) {
        error.meanAbs = error.smoothMeanAbs = 255;
        error.maxAbs = 255;
        return error;
    }
    double total = 0;
    double smoothTotal = 0;
    double smoothCount = 0;
    for (int y = 0; y < a.height(); ++y) {
        const auto* la = reinterpret_cast<const QRgb*>(a.constScanLine(y));
        const auto* lb = reinterpret_cast<const QRgb*>(b.constScanLine(y));
        for (int x = 0; x < a.width(); ++x) {
            const int d[4] = {std::abs(qAlpha(la[x]) - qAlpha(lb[x])), std::abs(qRed(la[x]) - qRed(lb[x])),
                              std::abs(qGreen(la[x]) - qGreen(lb[x])), std::abs(qBlue(la[x]) - qBlue(lb[x]))};
            const bool smooth = qAlpha(la[x]) == 255 && localContrast(a, x, y) <= kSmooth;
            for (int ch : d) {
                total += ch;
                error.maxAbs = std::max(error.maxAbs, ch);
                if (smooth)
                    smoothTotal += ch;
            }
            smoothCount += smooth ? 4 : 0;
        }
    }
    error.meanAbs = total / (4.0 * a.width() * a.height());
    error.smoothMeanAbs = smoothCount > 0 ? smoothTotal / smoothCount : 0;
    return error;
}
