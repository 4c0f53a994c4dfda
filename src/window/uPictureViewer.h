#pragma once

#include <QSize>

// The rules of the full-size picture viewer, without a screen.

// Where the viewer was opened from: the details pane limits the window to the screen, the item
// editor does not.
enum class TPictureViewerSource
{
    DetailsPane,
    ItemEditor
};

// The window size for a picture: picture width + 25 by picture height + status bar height + 35;
// from the details pane at most the screen's size less 50 each way. At least 50 by 50.
QSize PictureViewerWindowSize(TPictureViewerSource source, QSize picture, int statusBarHeight, QSize screen);

// Zoom is a factor (1.0 = 100%), kept between these bounds.
inline constexpr double MinPictureZoom = 0.05;
inline constexpr double MaxPictureZoom = 16.0;

// The factor that shows the whole picture in area (never above 1: a small picture stays at its
// true size); 1 for an empty picture.
double FitPictureZoom(QSize picture, QSize area);
// The factor after steps of the wheel (positive: larger), each step 1.25 times, clamped.
double WheelPictureZoom(double zoom, int steps);
// The zoom slider's position (percent) of a factor and back; clamped to the bounds.
int ZoomToPercent(double zoom);
double PercentToZoom(int percent);
