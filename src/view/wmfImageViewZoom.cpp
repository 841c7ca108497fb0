// The main view's zoom and pan: drawing the visible part of the picture at any scale, the wheel,
// the middle-button and Space drags, and the selection's coordinates while zoomed.
#include "view/wmfImageView.h"

#include "app/Controller.h"
#include "view/GreyTone.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace {

// One wheel notch is 120 eighths of a degree; it scrolls a zoomed picture by this many units.
constexpr double kWheelNotch = 120.0;
constexpr double kScrollPerNotch = 60.0;

} // namespace

void wmfImageView::syncZoom() {
    const int degrees = mainController ? mainController->getRotation() : 0;
    zoom.setFrame(shownPictureSize(), degrees, QSizeF(size()), devicePixelRatioF());
    const QString text = zoomText();
    if (text != shownZoomText) {
        shownZoomText = text;
        emit zoomChanged(this);
    }
    updatePanCursor();
}

const ZoomGeometry& wmfImageView::zoomState() {
    syncZoom();
    return zoom;
}

QString wmfImageView::zoomText() {
    if (shownPictureSize().isEmpty())
        return QString();
    const QString percent = QString::number(std::lround(zoom.zoomPercent()));
    if (zoom.isFitted())
        return tr("Fit (%1 %)").arg(percent);
    return tr("%1 %").arg(percent);
}

void wmfImageView::zoomIn() {
    syncZoom();
    zoom.zoomBySteps(1);
    syncZoom();
    update();
}

void wmfImageView::zoomOut() {
    syncZoom();
    zoom.zoomBySteps(-1);
    syncZoom();
    update();
}

void wmfImageView::zoomToActualSize() {
    syncZoom();
    zoom.actualSize();
    syncZoom();
    update();
}

void wmfImageView::zoomToFit() {
    zoom.fit();
    syncZoom();
    update();
}

void wmfImageView::drawZoomed(QPainter& painter, const QImage& picture, Tones tones) {
    const QRect seen = zoom.visiblePictureRect();
    if (seen.isEmpty())
        return;
    const double deviceScale = zoom.scale() * devicePixelRatioF();
    double levelScale = 1.0;
    const QImage& level = levels.levelFor(picture, deviceScale, &levelScale);
    const double toLevelX = double(level.width()) / picture.width();
    const double toLevelY = double(level.height()) / picture.height();
    const QRect levelPart = QRectF(seen.x() * toLevelX, seen.y() * toLevelY,
                                   seen.width() * toLevelX, seen.height() * toLevelY)
                                .toAlignedRect()
                                .intersected(level.rect());
    if (levelPart.isEmpty())
        return;
    const QRectF target(levelPart.x() / toLevelX, levelPart.y() / toLevelY,
                        levelPart.width() / toLevelX, levelPart.height() / toLevelY);

    QTransform toView = zoom.pictureToView();
    if (toView.type() <= QTransform::TxScale) {
        // Unturned: the picture's corner on a whole device pixel, so that at 100 % and at whole
        // multiples each picture pixel covers whole screen pixels.
        const double r = devicePixelRatioF();
        toView.setMatrix(toView.m11(), 0, 0, 0, toView.m22(), 0, std::round(toView.dx() * r) / r,
                         std::round(toView.dy() * r) / r, 1);
    }
    painter.save();
    painter.setTransform(toView, true);
    // Enlarged pixels stay square blocks; reduced ones are averaged.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, deviceScale < 1.0);
    if (tones == Tones::AsOnScreen && mainController && mainController->m_Monochrome) {
        // Only what is on screen is turned grey: a few hundred thousand pixels at any zoom.
        painter.drawImage(target, greyToneDisplayImage(level.copy(levelPart)));
    } else {
        painter.drawImage(target, level, levelPart);
    }
    painter.restore();
}

// ------------------------------------------------------------------------------------ input

void wmfImageView::wheelEvent(QWheelEvent* event) {
    const QPoint angle = event->angleDelta();
    if (event->modifiers() & Qt::ControlModifier) {
        syncZoom();
        zoom.zoomBySteps(angle.y() / kWheelNotch, event->position());
        syncZoom();
        update();
        event->accept();
        return;
    }
    syncZoom();
    if (zoom.isFitted()) {
        event->ignore();
        return;
    }
    QPointF delta = !event->pixelDelta().isNull()
                        ? QPointF(event->pixelDelta())
                        : QPointF(angle) * (kScrollPerNotch / kWheelNotch);
    if (event->modifiers() & Qt::ShiftModifier)
        delta = QPointF(delta.y(), delta.x()); // Shift+wheel scrolls sideways
    zoom.panBy(delta);
    update();
    event->accept();
}

bool wmfImageView::handleSpaceKey(QKeyEvent* event, bool pressed) {
    if (event->key() != Qt::Key_Space || (event->modifiers() & ~Qt::KeypadModifier))
        return false;
    if (!event->isAutoRepeat()) {
        spaceHeld = pressed;
        updatePanCursor();
    }
    // Kept by the view only while it is zoomed and Space means "pan"; fitted, it goes on to the
    // window as every other key does.
    if (zoom.isFitted())
        return false;
    event->accept();
    return true;
}

void wmfImageView::keyReleaseEvent(QKeyEvent* event) {
    if (!handleSpaceKey(event, false))
        QWidget::keyReleaseEvent(event);
}

void wmfImageView::focusOutEvent(QFocusEvent* event) {
    spaceHeld = false; // the release goes elsewhere
    updatePanCursor();
    QWidget::focusOutEvent(event);
}

void wmfImageView::updatePanCursor() {
    if (panning)
        setCursor(Qt::ClosedHandCursor);
    else if (spaceHeld && !zoom.isFitted())
        setCursor(Qt::OpenHandCursor);
    else
        unsetCursor();
}

bool wmfImageView::startPan(QMouseEvent* event) {
    const bool middle = event->button() == Qt::MiddleButton;
    const bool spaceDrag = event->button() == Qt::LeftButton && spaceHeld;
    if (!(middle || spaceDrag))
        return false;
    syncZoom();
    if (zoom.isFitted())
        return false; // nothing to pan: the buttons do what they do in the fitted view
    panning = true;
    panLast = event->position();
    updatePanCursor();
    event->accept();
    return true;
}

bool wmfImageView::continuePan(QMouseEvent* event) {
    if (!panning)
        return false;
    zoom.panBy(event->position() - panLast);
    panLast = event->position();
    update();
    event->accept();
    return true;
}

bool wmfImageView::endPan(QMouseEvent* event) {
    if (!panning)
        return false;
    if (event->buttons() & (Qt::MiddleButton | Qt::LeftButton))
        return true; // one of the two buttons still holds the drag
    panning = false;
    updatePanCursor();
    event->accept();
    return true;
}

QPointF wmfImageView::markerPoint(const QMouseEvent* event) const {
    const QPointF inView = window() ? mapFrom(window(), event->scenePosition()) : event->position();
    return zoom.toFitted(inView);
}
