#include "view/DisplayCopy.h"

#include <algorithm>
#include <cmath>

namespace {

// A picture is drawn from a scaled copy when it would be shown at less than half its size at
// every angle: drawing 24 megapixels through a turned transform on every frame of a slider
// drag is far too slow, while the copy is drawn in a few milliseconds.
constexpr double kScaledCopyBelow = 0.5;

} // namespace

double largestDisplayScale(const QSize& picture, const QSizeF& view) {
    if (picture.width() <= 0 || picture.height() <= 0)
        return 0.0;
    const double w = picture.width(), h = picture.height();
    const double upright = std::min(view.width() / w, view.height() / h);
    const double turned = std::min(view.width() / h, view.height() / w);
    return std::max(upright, turned);
}

bool needsDisplayCopy(const QSize& picture, const QSizeF& view, qreal devicePixelRatio) {
    const double scale = largestDisplayScale(picture, view) * devicePixelRatio;
    return scale > 0.0 && scale < kScaledCopyBelow;
}

QSize viewDevicePixels(const QSizeF& view, qreal devicePixelRatio) {
    return (view * devicePixelRatio).toSize();
}

QImage makeDisplayCopy(const QImage& picture, const QSizeF& view, qreal devicePixelRatio) {
    if (!needsDisplayCopy(picture.size(), view, devicePixelRatio))
        return QImage();
    const double scale = largestDisplayScale(picture.size(), view) * devicePixelRatio;
    const QSize target(std::max(1, int(std::ceil(picture.width() * scale))),
                       std::max(1, int(std::ceil(picture.height() * scale))));
    QImage scaled = picture.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (scaled.hasAlphaChannel() && scaled.format() != QImage::Format_ARGB32_Premultiplied)
        scaled.convertTo(QImage::Format_ARGB32_Premultiplied); // the fastest to draw
    return scaled;
}
