#include "uPictureViewer.h"

#include <algorithm>
#include <cmath>

QSize PictureViewerWindowSize(TPictureViewerSource source, QSize picture, int statusBarHeight, QSize screen)
{
    int width = std::max(0, picture.width()) + 25;
    int height = std::max(0, picture.height()) + std::max(0, statusBarHeight) + 35;
    if (source == TPictureViewerSource::DetailsPane && screen.isValid()) {
        width = std::min(width, screen.width() - 50);
        height = std::min(height, screen.height() - 50);
    }
    return {std::max(50, width), std::max(50, height)};
}

double FitPictureZoom(QSize picture, QSize area)
{
    if (picture.isEmpty() || area.isEmpty())
        return 1.0;
    const double zoom =
        std::min(double(area.width()) / picture.width(), double(area.height()) / picture.height());
    return std::clamp(std::min(zoom, 1.0), MinPictureZoom, MaxPictureZoom);
}

double WheelPictureZoom(double zoom, int steps)
{
    const double next = zoom * std::pow(1.25, steps);
    return std::clamp(next, MinPictureZoom, MaxPictureZoom);
}

int ZoomToPercent(double zoom)
{
    return int(std::lround(std::clamp(zoom, MinPictureZoom, MaxPictureZoom) * 100.0));
}

double PercentToZoom(int percent)
{
    return std::clamp(percent / 100.0, MinPictureZoom, MaxPictureZoom);
}
