#include "view/CropMarker.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWidget>

#include <cmath>

QRectF rectFromPoints(const QPointF& a, const QPointF& b) {
    const float ax = float(a.x()), ay = float(a.y());
    const float bx = float(b.x()), by = float(b.y());
    const float x = ax < bx ? ax : bx;
    const float y = ay < by ? ay : by;
    return QRectF(x, y, std::fabs(ax - bx), std::fabs(ay - by));
}

bool markerRectContains(const QRectF& r, const QPointF& p) {
    if (!(r.width() > 0) || !(r.height() > 0))
        return false;
    return p.x() >= r.left() && p.x() < r.right() && p.y() >= r.top() && p.y() < r.bottom();
}

std::unique_ptr<CropMarker> CropMarker::cropMarkerForView(QWidget* view) {
    return std::make_unique<CropMarker>(view);
}

CropMarker::CropMarker(QWidget* view) : target(view) {
    setColor(QColor(Qt::blue));
    setSelectedRect(QRectF());
}

void CropMarker::setColor(const QColor& color) {
    setStrokeColor(color);
    QColor fill = color;
    fill.setAlphaF(0.2f);
    setFillColor(fill);
}

void CropMarker::drawCropMarker(QPainter& painter) const {
    const QRectF r = mSelectedRect;
    if (!(r.width() > 0) || !(r.height() > 0))
        return;
    // Four bands one pixel wide along the inside of the edges, as a frame is filled, so that
    // the line stays crisp whatever the antialiasing state of the painter.
    const qreal w = std::min<qreal>(1.0, r.width());
    const qreal h = std::min<qreal>(1.0, r.height());
    painter.fillRect(QRectF(r.left(), r.top(), r.width(), h), strokeColor);
    painter.fillRect(QRectF(r.left(), r.bottom() - h, r.width(), h), strokeColor);
    painter.fillRect(QRectF(r.left(), r.top(), w, r.height()), strokeColor);
    painter.fillRect(QRectF(r.right() - w, r.top(), w, r.height()), strokeColor);
}

void CropMarker::moveSelectedRectBy(const QSizeF& delta) {
    mSelectedRect.translate(delta.width(), delta.height());
}

QPainterPath CropMarker::selectedPath() const {
    QPainterPath path;
    path.addRect(mSelectedRect);
    return path;
}

QPointF CropMarker::viewPoint(const QMouseEvent* event) const {
    if (target && target->window())
        return target->mapFrom(target->window(), event->scenePosition());
    return event->position();
}

void CropMarker::mouseDown(const QMouseEvent* event) {
    mouseDown(viewPoint(event));
}
void CropMarker::mouseDragged(const QMouseEvent* event) {
    mouseDragged(viewPoint(event));
}
void CropMarker::mouseUp(const QMouseEvent* event) {
    mouseUp(viewPoint(event));
}

void CropMarker::mouseDown(const QPointF& p) {
    lastLocation = p;
    if (markerRectContains(mSelectedRect, p))
        startMovingAtPoint(p);
    else
        startSelectingAtPoint(p);
}

void CropMarker::mouseDragged(const QPointF& p) {
    switch (trackingMode) {
    case Selecting:
        continueSelectingAtPoint(p);
        break;
    case Moving:
        continueMovingAtPoint(p);
        break;
    default:
        qWarning("Bad tracking mode in [CropMarker mouseDragged]");
        break;
    }
}

void CropMarker::mouseUp(const QPointF& p) {
    switch (trackingMode) {
    case Selecting:
        stopSelectingAtPoint(p);
        break;
    case Moving:
        stopMovingAtPoint(p);
        break;
    default:
        qWarning("Bad tracking mode in [CropMarker mouseUp]");
        break;
    }
}

void CropMarker::startSelectingAtPoint(const QPointF& p) {
    trackingMode = Selecting;
    lastLocation = p;
}

void CropMarker::continueSelectingAtPoint(const QPointF& p) {
    mSelectedRect = rectFromPoints(lastLocation, p);
}

void CropMarker::stopSelectingAtPoint(const QPointF& p) {
    continueSelectingAtPoint(p);
    trackingMode = Idle;
}

void CropMarker::startMovingAtPoint(const QPointF& p) {
    trackingMode = Moving;
    lastLocation = p;
}

void CropMarker::continueMovingAtPoint(const QPointF& p) {
    const float dx = float(p.x()) - float(lastLocation.x());
    const float dy = float(p.y()) - float(lastLocation.y());
    moveSelectedRectBy(QSizeF(dx, dy));
    lastLocation = p;
}

void CropMarker::stopMovingAtPoint(const QPointF& p) {
    continueMovingAtPoint(p);
    trackingMode = Idle;
}
