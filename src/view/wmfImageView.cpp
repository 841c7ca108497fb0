#include "view/wmfImageView.h"

#include "app/Controller.h"
#include "app/GuiThread.h"
#include "browse/FolderIndex.h"
#include "export/DocumentExport.h"
#include "view/CropMarker.h"
#include "view/DisplayCopy.h"
#include "view/GreyTone.h"
#include "view/RotationGeometry.h"

#include <QBuffer>
#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace {

// The picture's size from the controller's rectangle. A side above 32767 wraps in the 16-bit
// rectangle; the picture itself then gives the true size.
QSizeF pictureSizeOf(const Rect& r, const QImage& picture) {
    int w = int(r.right) - int(r.left);
    int h = int(r.bottom) - int(r.top);
    if (w != picture.width() && int16_t(picture.width()) == r.right && r.left == 0)
        w = picture.width();
    if (h != picture.height() && int16_t(picture.height()) == r.bottom && r.top == 0)
        h = picture.height();
    return QSizeF(float(w), float(h));
}

} // namespace

QSizeF wmfImageView::shownPictureSize() const {
    if (!mainController || mainController->getCGImage().isNull())
        return QSizeF();
    Rect r;
    if (!mainController->getPictRect(&r))
        return QSizeF(mainController->getCGImage().size());
    return pictureSizeOf(r, mainController->getCGImage());
}

struct wmfImageView::DisplayCache {
    qint64 scaledOf = 0; // cacheKey of the picture that `scaled` was made from
    QSize scaledFor;     // the view's size in device pixels when it was made
    QImage scaled;
    qint64 greyOf = 0; // cacheKey of the image on screen that `grey` was made from
    QImage grey;
};

wmfImageView::wmfImageView(QWidget* parent)
    : QWidget(parent), cache(std::make_unique<DisplayCache>()) {
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus); // the view takes keyboard focus for the arrow keys
    awakeFromNib();
}

wmfImageView::~wmfImageView() {
    clear();
}

void wmfImageView::awakeFromNib() {
    setSelectionMarker(CropMarker::cropMarkerForView(this));
}

void wmfImageView::setWmfPath(const QString& newPath) {
    clear();
    if (!newPath.isNull())
        path = newPath;
}

void wmfImageView::showPicture(const QString& newPath) {
    setWmfPath(newPath);
    // Every picture opens fitted, whatever the zoom of the one before.
    zoom.fit();
    levels.clear();
    syncZoom();
    emit pictureChanged(this);
}

void wmfImageView::clear() {
    path = QString();
}

void wmfImageView::setSelectionMarker(std::unique_ptr<CropMarker> marker) {
    selectionMarker = std::move(marker);
}

void wmfImageView::takeSelectionColorFrom(const QColor& color) {
    if (selectionMarker)
        selectionMarker->setColor(color);
    update();
}

void wmfImageView::setImage(const QImage& image) {
    ownImage = image;
    update();
}

void wmfImageView::adoptDisplayCopy(const QImage& picture, const QImage& copy) {
    if (copy.isNull() || picture.isNull())
        return;
    cache->scaled = copy;
    cache->scaledOf = picture.cacheKey();
    // Drawn only while the view still has this size.
    cache->scaledFor = viewDevicePixels(QSizeF(size()), devicePixelRatioF());
}

void wmfImageView::selectionChanged() {
    update();
}

void wmfImageView::postSelectionChangedNotification() {
    emit ImageSelectionChanged(this);
}

QRectF wmfImageView::centerRect(const QRectF& r, const QRectF& onRect) {
    return ::centerRect(r, onRect);
}

// ---------------------------------------------------------------------------------- drawing

const QImage& wmfImageView::greyVersion(const QImage& shown) {
    if (cache->greyOf != shown.cacheKey() || cache->grey.isNull()) {
        cache->grey = greyToneDisplayImage(shown);
        cache->greyOf = shown.cacheKey();
    }
    return cache->grey;
}

QImage wmfImageView::displaySource(const QImage& picture, Tones tones) {
    QImage shown = picture;
    const qreal ratio = devicePixelRatioF();
    const QSizeF viewSize(size());
    if (displayCacheEnabled && needsDisplayCopy(picture.size(), viewSize, ratio)) {
        const QSize viewPixels = viewDevicePixels(viewSize, ratio);
        if (cache->scaledOf != picture.cacheKey() || cache->scaledFor != viewPixels ||
            cache->scaled.isNull()) {
            cache->scaled = makeDisplayCopy(picture, viewSize, ratio);
            cache->scaledOf = picture.cacheKey();
            cache->scaledFor = viewPixels;
        }
        shown = cache->scaled;
    } else if (!cache->scaled.isNull()) {
        cache->scaled = QImage();
        cache->scaledOf = 0;
    }
    if (tones == Tones::Colour)
        return shown;
    if (!mainController || !mainController->m_Monochrome) {
        killMonochromeImage(); // back in colour: the grey copy is not worth keeping
        return shown;
    }
    // The rule is applied to the pixels that go on screen: the scaled copy when there is one,
    // so that switching to grey is immediate even for a very large picture.
    return greyVersion(shown);
}

void wmfImageView::drawOwnImage(QPainter& painter, const QRectF& area, Tones tones) {
    if (ownImage.isNull() || ownImage.width() <= 0 || ownImage.height() <= 0)
        return;
    // Like a plain image view: scaled down to fit when it is larger, never up, and centred.
    QSizeF shown = ownImage.size();
    if (shown.width() > area.width() || shown.height() > area.height())
        shown.scale(area.size(), Qt::KeepAspectRatio);
    if (shown.isEmpty())
        return;
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(centerRect(QRectF(QPointF(), shown), area), displaySource(ownImage, tones));
    painter.restore();
}

void wmfImageView::drawRect(QPainter& painter, const QRectF& area) {
    drawPicture(painter, area, Tones::AsOnScreen);
}

void wmfImageView::drawPicture(QPainter& painter, const QRectF& area, Tones tones) {
    if (!mainController || mainController->getCGImage().isNull()) {
        drawOwnImage(painter, area, tones);
        return;
    }
    const QImage& picture = mainController->getCGImage();
    if (picture.width() <= 0 || picture.height() <= 0)
        return;
    if (tones == Tones::AsOnScreen && area == QRectF(rect())) {
        syncZoom();
        if (!zoom.isFitted()) {
            drawZoomed(painter, picture, tones);
            return;
        }
    }
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const int degrees = mainController->getRotation();
    if (degrees != 0) {
        // The picture turns about the centre of the whole view, whatever area is drawn.
        painter.setTransform(rotationAboutCentre(degrees, float(width()), float(height())), true);
    }
    QRectF target = area;
    Rect r;
    if (mainController->getPictRect(&r))
        target = fittedPictureRect(pictureSizeOf(r, picture), degrees, area);
    if (!target.isEmpty())
        painter.drawImage(target, displaySource(picture, tones));
    painter.restore();
}

void wmfImageView::rotate(QPainter& painter, int degrees) {
    if (degrees == 0)
        return;
    const QPointF centre = QRectF(rect()).center();
    // A positive angle turns counter-clockwise here, the opposite of the picture's angle.
    const QTransform turn = rotationTransform(-degrees);
    const QPointF mapped = turn.map(centre);
    const QTransform back =
        QTransform::fromTranslate(-(mapped.x() - centre.x()), -(mapped.y() - centre.y()));
    painter.setTransform(turn * back, true);
}

void wmfImageView::paintEvent(QPaintEvent* /*event*/) {
    // Always the whole view, never only the exposed part, so the picture stays fitted to it.
    QPainter painter(this);
    drawRect(painter, QRectF(rect()));
    if (!selectionMarker)
        return;
    if (zoom.isFitted()) {
        selectionMarker->drawCropMarker(painter);
    } else {
        // The selection is kept where it lies in the fitted view, on the picture's pixels.
        CropMarker shown = *selectionMarker;
        shown.setSelectedRect(zoom.fromFitted(selectionMarker->selectedRect()));
        shown.drawCropMarker(painter);
    }
}

void wmfImageView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    syncZoom();
    update();
}

// ---------------------------------------------------------------------------- grey tones

void wmfImageView::monochromeImage() {
    const bool hasPicture = mainController && !mainController->getCGImage().isNull();
    const QImage& picture = hasPicture ? mainController->getCGImage() : ownImage;
    if (picture.isNull())
        return;
    // Made at most once per picture shown: a second call finds it ready and changes nothing.
    const QImage shown = displaySource(picture, Tones::Colour);
    const qint64 before = cache->greyOf;
    greyVersion(shown);
    if (cache->greyOf != before)
        update();
}

void wmfImageView::killMonochromeImage() {
    cache->grey = QImage();
    cache->greyOf = 0;
}

// ------------------------------------------------------------------------------ documents

QByteArray wmfImageView::dataWithPDFInsideRect(const QRectF& rect) {
    return onGuiThread([this, rect]() -> QByteArray {
        if (!(rect.width() > 0) || !(rect.height() > 0))
            return QByteArray();
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        {
            QPdfWriter writer(&buffer);
            writer.setResolution(72); // one unit is one point
            writer.setCreator(QStringLiteral("Ormidon"));
            const QPageSize page(rect.size(), QPageSize::Point, QString(), QPageSize::ExactMatch);
            writer.setPageLayout(QPageLayout(page, QPageLayout::Portrait, QMarginsF(0, 0, 0, 0),
                                             QPageLayout::Point));
            QPainter painter;
            if (!painter.begin(&writer))
                return QByteArray();
            painter.translate(-rect.topLeft());
            drawPicture(painter, rect, Tones::Colour);
            painter.end();
        }
        return buffer.data();
    });
}

QByteArray wmfImageView::dataWithEPSInsideRect(const QRectF& rect) {
    const QByteArray pdf = dataWithPDFInsideRect(rect);
    if (pdf.isEmpty())
        return QByteArray();
    return pdfToEps(pdf);
}

// ------------------------------------------------------------------------------ keyboard

void wmfImageView::keyPressEvent(QKeyEvent* event) {
    int32_t step = 0;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Up:
        step = kStepPrevious;
        break;
    case Qt::Key_Right:
    case Qt::Key_Down:
        step = kStepNext;
        break;
    default:
        if (handleSpaceKey(event, true))
            return;
        event->ignore(); // on to the window and the menus' shortcuts
        return;
    }
    event->accept();
    if (mainController)
        mainController->selectWMF(step);
}

// --------------------------------------------------------------------------- drag and drop

void wmfImageView::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData() && event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void wmfImageView::dragMoveEvent(QDragMoveEvent* event) {
    if (event->mimeData() && event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void wmfImageView::dropEvent(QDropEvent* event) {
    const QMimeData* data = event->mimeData();
    if (!data || !data->hasUrls())
        return;
    for (const QUrl& url : data->urls()) {
        if (!url.isLocalFile())
            continue;
        // Only the first file opens; the others are ignored.
        event->acceptProposedAction();
        const QString file = url.toLocalFile();
        if (mainController)
            mainController->setSourceFileName(file, true);
        return;
    }
}

// --------------------------------------------------------------------------------- mouse

void wmfImageView::mousePressEvent(QMouseEvent* event) {
    if (startPan(event))
        return;
    if (event->button() != Qt::LeftButton || !selectionMarker) {
        QWidget::mousePressEvent(event);
        return;
    }
    if (zoom.isFitted())
        selectionMarker->mouseDown(event);
    else
        selectionMarker->mouseDown(markerPoint(event));
}

void wmfImageView::mouseMoveEvent(QMouseEvent* event) {
    if (continuePan(event))
        return;
    if (!(event->buttons() & Qt::LeftButton) || !selectionMarker) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    if (zoom.isFitted())
        selectionMarker->mouseDragged(event);
    else
        selectionMarker->mouseDragged(markerPoint(event));
    if (isContinuous())
        postSelectionChangedNotification();
    selectionChanged();
}

void wmfImageView::mouseReleaseEvent(QMouseEvent* event) {
    if (endPan(event))
        return;
    if (event->button() != Qt::LeftButton || !selectionMarker) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    if (zoom.isFitted())
        selectionMarker->mouseUp(event);
    else
        selectionMarker->mouseUp(markerPoint(event));
    selectionChanged();
    postSelectionChangedNotification();
}
