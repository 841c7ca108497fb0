#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QTransform>

// Where the main view shows its picture when the user zooms and pans. The fitted placement is
// the reference: a zoomed view is that placement scaled about the view's centre and then
// shifted by the pan, so the turn stays a turn about the same point and a rectangle of the
// fitted view stays a rectangle (only scaled and moved) at any zoom and any angle.
//
// Scales are in view units (logical pixels) per picture pixel; the percentage the user sees is
// in device pixels per picture pixel, so 100 % puts one picture pixel on one screen pixel on a
// HiDPI screen as well.
class ZoomGeometry {
public:
    static constexpr double kLargestZoom = 32.0; // 3200 %
    // One step of the keys or of a wheel notch: four steps double the size.
    static constexpr double kStepFactor = 1.189207115002721; // 2^(1/4)

    // The picture's size in pixels, its angle, the view's size and its device pixel ratio.
    // A fitted view stays fitted; a zoomed one keeps its scale, within the new limits.
    void setFrame(const QSizeF& picture, int degrees, const QSizeF& view, double pixelRatio);

    bool isFitted() const { return fitted; }
    double fitScale() const { return fitting; }
    double scale() const { return fitted ? fitting : current; }
    QPointF pan() const { return fitted ? QPointF() : shift; }
    // Device pixels per picture pixel, as a percentage.
    double zoomPercent() const { return scale() * ratio * 100.0; }
    // The scale that shows one picture pixel per device pixel.
    double actualScale() const { return ratio > 0 ? 1.0 / ratio : 1.0; }
    // From the fitted size (or 100 % when that is smaller) up to 3200 % (or the fitted size).
    double smallestScale() const;
    double largestScale() const;

    void fit();
    // One picture pixel per device pixel, about the view's centre.
    void actualSize();
    // Zooms to `newScale` (kept within the limits) so that the picture point under `viewPoint`
    // stays under it. Passing the fitted size on the way in or out stops there, fitted.
    void zoomAbout(double newScale, const QPointF& viewPoint);
    // `steps` key presses or wheel notches (fractions for fine wheels); positive zooms in.
    void zoomBySteps(double steps, const QPointF& viewPoint);
    void zoomBySteps(double steps) { zoomBySteps(steps, viewCentre()); }
    // Moves the picture by `delta` view units, kept so that no edge comes further in than the
    // view's edge (a side smaller than the view stays centred).
    void panBy(const QPointF& delta);

    // Picture pixels to view units, turn included.
    QTransform pictureToView() const;
    // Between the fitted view and the current one: a scale about the view's centre and a shift.
    QPointF fromFitted(const QPointF& p) const;
    QPointF toFitted(const QPointF& p) const;
    QRectF fromFitted(const QRectF& r) const;
    // The part of the picture, in picture pixels, that shows in the view (whole pixels).
    QRect visiblePictureRect() const;

private:
    QPointF viewCentre() const { return QPointF(viewSize.width() / 2.0, viewSize.height() / 2.0); }
    void clampPan();

    QSizeF pictureSize;
    QSizeF viewSize;
    int angle = 0;
    double ratio = 1.0;
    double fitting = 1.0;
    double current = 1.0;
    QPointF shift;
    bool fitted = true;
};
