#include "export/ExportRenderer.h"

#include "codec/DecodeLimits.h"
#include "codec/ImageDecoder.h"
#include "export/FormatTable.h"
#include "view/ImageDrawing.h"
#include "view/RotationGeometry.h"

#include <QColorSpace>
#include <QPainter>

#include <cmath>
#include <cstdint>

namespace {

// A float size truncated toward zero, as the bitmap's pixel count is formed. Negative, NaN and
// sizes below one pixel give 0.
uint32_t truncatedSide(double side) {
    const float f = float(side);
    if (!(f >= 1.0f))
        return 0;
    if (f >= 4294967295.0f)
        return UINT32_MAX;
    return uint32_t(f);
}

bool withinLimits(uint32_t w, uint32_t h) {
    return w <= uint32_t(DecodeLimits::kMaxSide) && h <= uint32_t(DecodeLimits::kMaxSide) &&
           int64_t(w) * int64_t(h) <= DecodeLimits::kMaxPixels;
}

// Where the decoded picture already is the result: no turn, no scaling, one pixel per point,
// the bitmap of exactly its size, and nothing to fill behind it.
bool usableAsIs(const DecodedImage& source, uint32_t w, uint32_t h, int format, int degrees,
                float scale) {
    if (!source.ok || degrees != 0 || scale != 1.0f)
        return false;
    const QImage& image = source.image;
    const QImage::Format f = image.format();
    if (f != QImage::Format_RGB32 && f != QImage::Format_ARGB32 &&
        f != QImage::Format_ARGB32_Premultiplied && f != QImage::Format_RGB888)
        return false;
    if (QSizeF(image.size()) != source.pointSize || image.width() != int64_t(w) ||
        image.height() != int64_t(h))
        return false;
    return !image.hasAlphaChannel() || formatKeepsTransparentBackground(format);
}

} // namespace

bool writtenAsDecoded(float dpi, int degrees) {
    // The renderer's scale is dpi / 72: usableAsIs needs it to be 1 and no turn.
    return dpi == 72.0f && degrees == 0;
}

QImage renderExportPicture(const DecodedImage& source, const QRectF& rect, const QRectF& r,
                           int format, int degrees, float scale) {
    const uint32_t w = truncatedSide(rect.width());
    const uint32_t h = truncatedSide(rect.height());
    if (w == 0 || h == 0 || !withinLimits(w, h))
        return QImage();

    if (usableAsIs(source, w, h, format, degrees, scale))
        return source.image;

    QImage bitmap(int(w), int(h), QImage::Format_ARGB32_Premultiplied);
    if (bitmap.isNull())
        return QImage();
    bitmap.fill(formatKeepsTransparentBackground(format) ? Qt::transparent : Qt::white);
    // The picture is drawn as its pixels are, so the bitmap is in the source's colour space
    // (white is white in every RGB space); the writer embeds it or converts to sRGB.
    bitmap.setColorSpace(source.image.colorSpace());

    // QPainter samples 24-bit pixels through a slow generic path (turning a 8-megapixel
    // picture takes it 1.7 times as long): a picture decoded for encoding is drawn from 32 bits.
    DecodedImage drawn;
    const DecodedImage* from = &source;
    if (source.ok && source.image.format() == QImage::Format_RGB888) {
        drawn = source;
        drawn.image = source.image.convertToFormat(QImage::Format_RGB32);
        if (drawn.image.isNull())
            return QImage();
        from = &drawn;
    }

    QPainter painter(&bitmap);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setRenderHint(QPainter::Antialiasing);
    if (degrees != 0) {
        // Applied to a source point last to first: scaled, moved so that the picture's centre
        // is the bitmap's centre, then turned about that centre.
        painter.setTransform(turnedPlacement(degrees, rect, r));
    }
    painter.scale(double(scale), double(scale));
    if (source.ok)
        drawDecodedImage(painter, *from);
    painter.end();
    return bitmap;
}
