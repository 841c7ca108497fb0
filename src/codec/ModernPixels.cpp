#include "codec/ModernPixels.h"

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

} // namespace ModernPixels
