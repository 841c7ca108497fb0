#include "thumbs/listImageViewItem.h"

#include "app/Controller.h"
#include "thumbs/ScrollNSImageView.h"
#include "thumbs/ThumbGridLayout.h"
#include "thumbs/ThumbnailMaker.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <cmath>

using ThumbGridLayout::kCellSide;

listImageViewItem::listImageViewItem(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

listImageViewItem::listImageViewItem(const QRectF& frame, QWidget* parent)
    : listImageViewItem(parent) {
    setGeometry(frame.toRect());
}

void listImageViewItem::setController(Controller* controller) { mController = controller; }

void listImageViewItem::setFileName(const QString& path) {
    mFilename = QString();
    if (path.isNull())
        return;
    mFilename = path;
    setImagePath(mFilename);
}

void listImageViewItem::setImagePath(const QString& path) {
    if (auto* grid = qobject_cast<ScrollNSImageView*>(parentWidget())) {
        grid->requestThumbnail(this);
        return;
    }
    setImage(ThumbnailMaker::make(path, pixelSide())); // setImage fits it to the cell
}

int listImageViewItem::pixelSide() const {
    return int(std::ceil(kCellSide * devicePixelRatioF()));
}

void listImageViewItem::setImage(const QImage& image) {
    small_image = ThumbnailMaker::fitToSide(image, pixelSide());
    if (!small_image.isNull())
        small_image.setDevicePixelRatio(devicePixelRatioF());
    QWidget::update();
}

void listImageViewItem::paintEvent(QPaintEvent*) {
    if (small_image.isNull())
        return; // blank, even while pressed
    const QRectF b = rect();
    const QSizeF e = small_image.deviceIndependentSize();
    // Centred: the bounds' origin counted twice and the picture's (zero) origin once, which
    // with a cell's zero origin is plain centring.
    const QPointF at(b.x() + ((b.x() + b.width()) - e.width()) / 2,
                     b.y() + ((b.y() + b.height()) - e.height()) / 2);
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setOpacity(1.0);
    painter.drawImage(at, small_image);
    if (mSelected)
        painter.fillRect(b, QColor::fromRgbF(0.8f, 0.8f, 0.8f, 0.5f));
}

void listImageViewItem::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    mSelected = true;
    repaint();
}

void listImageViewItem::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return QWidget::mouseReleaseEvent(event);
    mSelected = false;
    repaint();
    // The release counts wherever the pointer is now: the button went down on this cell.
    if (mController)
        mController->setSourceFileName(mFilename, false);
}
