#include "view/RotationGeometry.h"

#include <QSizeF>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kPi = 3.141592653589793;

} // namespace

QRectF rotatedRectBounds(const QRectF& r, float degrees) {
    const float w = float(r.width());
    const float h = float(r.height());
    float xs[4];
    float ys[4];
    if (degrees == 0.0f) {
        xs[0] = 0.0f, ys[0] = 0.0f;
        xs[1] = w, ys[1] = 0.0f;
        xs[2] = w, ys[2] = h;
        xs[3] = 0.0f, ys[3] = h;
    } else {
        // The corners of the rectangle spanned by (w, 0) and (0, -h), turned by the angle; the
        // products are taken in double and each corner rounded to float.
        const double a = double(degrees) * kPi / 180.0;
        const double s = std::sin(a);
        const double c = std::cos(a);
        const double dw = w;
        const double dh = h;
        xs[0] = 0.0f, ys[0] = 0.0f;
        xs[1] = float(c * dw), ys[1] = float(s * dw);
        xs[2] = float(c * dw + s * dh), ys[2] = float(s * dw - c * dh);
        xs[3] = float(s * dh), ys[3] = float(-c * dh);
    }
    const auto [minX, maxX] = std::minmax_element(xs, xs + 4);
    const auto [minY, maxY] = std::minmax_element(ys, ys + 4);
    const float width = *maxX - *minX;
    const float height = *maxY - *minY;
    return QRectF(r.x(), r.y(), width, height);
}

QRectF centerRect(const QRectF& r, const QRectF& on) {
    const float w = float(r.width());
    const float h = float(r.height());
    const float cx = float(on.x() + on.width() / 2.0);
    const float cy = float(on.y() + on.height() / 2.0);
    const float x = cx + w / -2.0f;
    const float y = cy + h / -2.0f;
    return QRectF(x, y, w, h);
}

QTransform rotationTransform(int degrees) {
    // The angle is -degrees in a y-up plane (rounded to float). Widgets, images and PDF pages
    // here grow downward, so the same turn on screen has the sines with the opposite sign:
    // a positive angle turns the picture clockwise as the user sees it.
    const float angle = float(-double(degrees) * kPi / 180.0);
    const float c = float(std::cos(double(angle)));
    const float s = float(std::sin(double(angle)));
    return QTransform(c, -s, s, c, 0.0, 0.0);
}

QTransform rotationAboutCentre(int degrees, float width, float height) {
    // Points first move so that the centre is at the origin, then turn, then move back.
    return QTransform::fromTranslate(width / -2.0f, height / -2.0f) * rotationTransform(degrees) *
           QTransform::fromTranslate(width / 2.0f, height / 2.0f);
}

namespace {

// A rectangle's centre, each half-sum taken in double and rounded to float.
QPointF floatCentre(const QRectF& r) {
    return QPointF(float(double(float(r.x())) + double(float(r.width())) / 2.0),
                   float(double(float(r.y())) + double(float(r.height())) / 2.0));
}

} // namespace

QTransform turnedPlacement(int degrees, const QRectF& box, const QRectF& picture) {
    const QPointF a = floatCentre(box);
    const QPointF b = floatCentre(picture);
    const QTransform toCentre = QTransform::fromTranslate(double(float(a.x()) - float(b.x())),
                                                          double(float(a.y()) - float(b.y())));
    return toCentre * rotationAboutCentre(degrees, float(box.width()), float(box.height()));
}

QRectF shownTurnedBox(const QRectF& picture, int degrees, const QRectF& view) {
    // A picture without area shows nowhere (turned, its box would only be nearly flat).
    if (!(picture.width() > 0) || !(picture.height() > 0))
        return QRectF();
    QRectF turned = rotatedRectBounds(picture, float(degrees));
    if (!(turned.width() > 0) || !(turned.height() > 0))
        return QRectF();
    float k = float(view.height()) / float(turned.height());
    const float kw = float(view.width()) / float(turned.width());
    if (k > kw)
        k = kw;
    turned.setSize(QSizeF(float(turned.width()) * k, float(turned.height()) * k));
    return centerRect(turned, view);
}

QRectF fittedPictureRect(const QSizeF& pictureSize, int degrees, const QRectF& area) {
    const float pw = float(pictureSize.width());
    const float ph = float(pictureSize.height());
    if (!(pw > 0.0f) || !(ph > 0.0f))
        return QRectF();
    const QRectF turned = rotatedRectBounds(QRectF(0, 0, pw, ph), float(degrees));
    const float ew = float(turned.width());
    const float eh = float(turned.height());
    if (!(ew > 0.0f) || !(eh > 0.0f))
        return QRectF();
    const float sx = float(area.width()) / ew;
    const float sy = float(area.height()) / eh;
    const float scale = sx < sy ? sx : sy; // the height ratio when both are equal
    if (!(scale > 0.0f) || !std::isfinite(scale))
        return QRectF();
    return centerRect(QRectF(0, 0, pw * scale, ph * scale), area);
}
