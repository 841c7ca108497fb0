#include "codec/ModernPixels.h"

#include <cstring>

namespace ModernPixels {

bool usesAlpha(const QImage& picture) {
    if (!picture.hasAlphaChannel())
        return false;
    if (picture.format() != QImage::Format_ARGB32 &&
        picture.format() != QImage::Format_ARGB32_Premultiplied)
        return true; // unusual forms: keep the channel rather than scan them
    for (int y = 0; y < picture.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x)
            if (qAlpha(line[x]) != 255)
                return true;
    }
    return false;
}

QImage straight(const QImage& picture, bool alpha) {
    return picture.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
}

QImage rowReadable(const QImage& picture) {
    switch (picture.format()) {
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
    case QImage::Format_Grayscale8:
    case QImage::Format_RGB888:
        return picture;
    default:
        return picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_ARGB32
                                                                 : QImage::Format_RGB32);
    }
}

void opaqueRow(const QImage& image, int y, uint8_t* out) {
    const int w = image.width();
    const uchar* line = image.constScanLine(y);
    switch (image.format()) {
    case QImage::Format_Grayscale8:
        std::memcpy(out, line, size_t(w));
        return;
    case QImage::Format_RGB888:
        std::memcpy(out, line, size_t(w) * 3);
        return;
    default:
        break;
    }
    // Opaque pixels are the same premultiplied or not.
    const auto* px = reinterpret_cast<const QRgb*>(line);
    for (int x = 0; x < w; ++x, out += 3) {
        out[0] = uint8_t(qRed(px[x]));
        out[1] = uint8_t(qGreen(px[x]));
        out[2] = uint8_t(qBlue(px[x]));
    }
}

void rgbaRow(const QImage& image, int y, uint8_t* out, bool straight) {
    const int w = image.width();
    const auto* px = reinterpret_cast<const QRgb*>(image.constScanLine(y));
    const bool unpremultiply = straight && image.format() == QImage::Format_ARGB32_Premultiplied;
    for (int x = 0; x < w; ++x, out += 4) {
        const QRgb p = unpremultiply ? qUnpremultiply(px[x]) : px[x];
        out[0] = uint8_t(qRed(p));
        out[1] = uint8_t(qGreen(p));
        out[2] = uint8_t(qBlue(p));
        out[3] = uint8_t(qAlpha(p));
    }
}

} // namespace ModernPixels
