#include "view/ZoomGeometry.h"

#include "view/RotationGeometry.h"

#include <algorithm>
#include <cmath>

void ZoomGeometry::setFrame(const QSizeF& picture, int degrees, const QSizeF& view,
                            double pixelRatio) {
    pictureSize = picture;
    viewSize = view;
    angle = degrees;
    ratio = pixelRatio > 0 ? pixelRatio : 1.0;
    if (picture.width() <= 0 || picture.height() <= 0 || view.isEmpty()) {
        fitting = 1.0;
        fit();
        return;
    }
    const QRectF fittedRect = fittedPictureRect(picture, degrees, QRectF(QPointF(), view));
    fitting = fittedRect.width() > 0 ? fittedRect.width() / picture.width() : 1.0;
    if (!fitted) {
        current = std::clamp(current, smallestScale(), largestScale());
        clampPan();
    }
}

double ZoomGeometry::smallestScale() const {
    return std::min(fitting, actualScale());
}

double ZoomGeometry::largestScale() const {
    return std::max(fitting, kLargestZoom * actualScale());
}

void ZoomGeometry::fit() {
    fitted = true;
    current = fitting;
    shift = QPointF();
}

void ZoomGeometry::actualSize() {
    const double target = actualScale();
    if (std::abs(target - fitting) < 1e-12 * std::max(1.0, fitting)) {
        fit();
        return;
    }
    const double k = target / scale();
    shift = pan() * k; // the picture point at the view's centre stays there
    current = target;
    fitted = false;
    clampPan();
}

void ZoomGeometry::zoomAbout(double newScale, const QPointF& viewPoint) {
    if (pictureSize.isEmpty() || viewSize.isEmpty() || !(newScale > 0))
        return;
    const double old = scale();
    newScale = std::clamp(newScale, smallestScale(), largestScale());
    // The fitted size is a stop: crossing it, or landing on it, gives the fitted view itself.
    if ((old > fitting && newScale <= fitting) || (old < fitting && newScale >= fitting)) {
        fit();
        return;
    }
    if (newScale == old)
        return;
    const double k = newScale / old;
    const QPointF c = viewCentre();
    shift = viewPoint - c - k * (viewPoint - c - pan());
    current = newScale;
    fitted = false;
    clampPan();
}

void ZoomGeometry::zoomBySteps(double steps, const QPointF& viewPoint) {
    zoomAbout(scale() * std::pow(kStepFactor, steps), viewPoint);
}

void ZoomGeometry::panBy(const QPointF& delta) {
    if (fitted)
        return;
    shift += delta;
    clampPan();
}

void ZoomGeometry::clampPan() {
    const QSizeF turned = rotatedRectBounds(QRectF(QPointF(), pictureSize), float(angle)).size();
    const double s = scale();
    const double limitX = std::max(0.0, (turned.width() * s - viewSize.width()) / 2.0);
    const double limitY = std::max(0.0, (turned.height() * s - viewSize.height()) / 2.0);
    shift.setX(std::clamp(shift.x(), -limitX, limitX));
    shift.setY(std::clamp(shift.y(), -limitY, limitY));
}

QTransform ZoomGeometry::pictureToView() const {
    const double s = scale();
    const QPointF to = viewCentre() + pan();
    return QTransform::fromScale(s, s) *
           QTransform::fromTranslate(-pictureSize.width() * s / 2.0,
                                     -pictureSize.height() * s / 2.0) *
           rotationTransform(angle) * QTransform::fromTranslate(to.x(), to.y());
}

QPointF ZoomGeometry::fromFitted(const QPointF& p) const {
    const QPointF c = viewCentre();
    return (p - c) * (scale() / fitting) + c + pan();
}

QPointF ZoomGeometry::toFitted(const QPointF& p) const {
    const QPointF c = viewCentre();
    return (p - c - pan()) * (fitting / scale()) + c;
}

QRectF ZoomGeometry::fromFitted(const QRectF& r) const {
    return QRectF(fromFitted(r.topLeft()), fromFitted(r.bottomRight()));
}

QRect ZoomGeometry::visiblePictureRect() const {
    const QRect whole(QPoint(), pictureSize.toSize());
    bool invertible = false;
    const QTransform back = pictureToView().inverted(&invertible);
    if (!invertible)
        return whole;
    const QRectF seen = back.mapRect(QRectF(QPointF(), viewSize));
    // A pixel more on every side, so the edge pixels are drawn whole.
    return seen.toAlignedRect().adjusted(-1, -1, 1, 1).intersected(whole);
}
