// Controller: loading the current picture and measuring image files.

#include <QLineEdit>

#include "app/Controller.h"
#include "codec/ImageDecoder.h"
#include "view/wmfImageView.h"

namespace {

// A dimension in points truncated toward zero, then cut to the 16 bits of a Rect field (a
// side above 32767 wraps).
int16_t boundsField(double points) {
    return static_cast<int16_t>(static_cast<int32_t>(points));
}

} // namespace

bool Controller::imageViewUpdate(const QString& path) {
    // The bounds are cleared whatever happens: after a failed load there are none.
    itsImgBounds = Rect{0, 0, 0, 0};
    DecodedImage decoded = decodeForView(path);
    if (!decoded.ok)
        return false; // the previous picture, size text and view path stay as they were
    decodeAround(path);

    const double width = decoded.pointSize.width();
    const double height = decoded.pointSize.height();
    if (itsSizeField)
        itsSizeField->setText(QString::asprintf("%.0f * %.0f", width, height));
    itsImgBounds.right = boundsField(width);
    itsImgBounds.bottom = boundsField(height);

    // The new raster is in place before the view hears of the new path, so that anything the
    // view prepares for the path is made from the new picture.
    itsCGImage = QImage(); // the previous raster goes first
    itsCGImage = std::move(decoded.image);
    if (itsWmfView) {
        itsWmfView->showPicture(path);
        itsWmfView->update();
    }
    return true;
}

QRectF Controller::getImageBounds(const QString& path) const {
    const QSizeF size = ImageDecoder::measure(path);
    if (size.isEmpty())
        return QRectF(0, 0, 0, 0);
    return QRectF(QPointF(0, 0), size);
}
