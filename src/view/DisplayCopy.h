#pragma once

#include <QImage>
#include <QSize>
#include <QSizeF>

// The scaled copy a view draws instead of a picture much larger than itself. Made by the view
// when it first draws a picture, or ahead of time off the GUI thread for a picture decoded
// before it is shown; both make exactly the same copy.

// The largest scale at which `picture` can be shown in a view of `view` logical pixels, over
// every angle (the turned bounding box is smallest at the quarter turns).
double largestDisplayScale(const QSize& picture, const QSizeF& view);

// True when a picture of `picture` pixels is drawn from a copy in such a view.
bool needsDisplayCopy(const QSize& picture, const QSizeF& view, qreal devicePixelRatio);

// The view's size in device pixels, which a copy is made for.
QSize viewDevicePixels(const QSizeF& view, qreal devicePixelRatio);

// The copy of `picture` to draw in a view of `view` logical pixels at `devicePixelRatio`; a null
// image when the picture is small enough to be drawn itself.
QImage makeDisplayCopy(const QImage& picture, const QSizeF& view, qreal devicePixelRatio);
