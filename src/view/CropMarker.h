#pragma once

#include <QColor>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <cstdint>
#include <memory>

class QMouseEvent;
class QPainter;
class QWidget;

// The smallest rectangle with corners a and b: x and y the smaller coordinates (b's when equal),
// width and height the distances.
QRectF rectFromPoints(const QPointF& a, const QPointF& b);

// True when p lies in r: x in [left, right) and y in [top, bottom); an empty rectangle holds
// no point.
bool markerRectContains(const QRectF& r, const QPointF& p);

// A rubber-band selection over a view: a press outside the current rectangle starts a new one
// from that point, a press inside it moves it. Works in the view's own coordinates.
class CropMarker {
public:
    enum TrackingMode : int32_t { Idle = 0, Selecting = 1, Moving = 2 };

    static std::unique_ptr<CropMarker> cropMarkerForView(QWidget* view);
    explicit CropMarker(QWidget* view); // the view's coordinates; the view is not owned

    void setColor(const QColor& color); // stroke colour; the fill is the same at alpha 0.2
    void setFillColor(const QColor& color) { fillColor = color; }
    void setStrokeColor(const QColor& color) { strokeColor = color; }

    // Frames selectedRect with a line one pixel wide inside its edges, in the stroke colour.
    void drawCropMarker(QPainter& painter) const;

    QRectF selectedRect() const { return mSelectedRect; }
    void setSelectedRect(const QRectF& rect) { mSelectedRect = rect; }
    void setSelectedRectOrigin(const QPointF& origin) { mSelectedRect.moveTopLeft(origin); }
    void setSelectedRectSize(const QSizeF& size) { mSelectedRect.setSize(size); }
    void moveSelectedRectBy(const QSizeF& delta);
    QPainterPath selectedPath() const; // a new rectangular path of selectedRect

    // Mouse events of the target view (positions converted from the window to the view).
    void mouseDown(const QMouseEvent* event);
    void mouseDragged(const QMouseEvent* event);
    void mouseUp(const QMouseEvent* event);
    // The same with a point already in the view's coordinates.
    void mouseDown(const QPointF& p);
    void mouseDragged(const QPointF& p);
    void mouseUp(const QPointF& p);

    void startSelectingAtPoint(const QPointF& p);
    void continueSelectingAtPoint(const QPointF& p);
    void stopSelectingAtPoint(const QPointF& p);
    void startMovingAtPoint(const QPointF& p);
    void continueMovingAtPoint(const QPointF& p);
    void stopMovingAtPoint(const QPointF& p);

    QWidget* target = nullptr;
    bool selecting = false; // kept for the record; tracking goes by trackingMode
    bool dragging = false;
    bool resizing = false;
    QPointF lastLocation;
    QColor fillColor;
    QColor strokeColor;
    int32_t trackingMode = Idle;

private:
    QPointF viewPoint(const QMouseEvent* event) const;

    QRectF mSelectedRect;
};
