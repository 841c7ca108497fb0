#pragma once

// The pixels of a picture Magick++ has read, for tests that compare them with Qt's: ARGB32
// with straight alpha (B, G, R, A in memory on this little-endian machine).

#include <QImage>

#include <Magick++.h>

inline QImage magickPixels(Magick::Image& image) {
    const int w = int(image.columns());
    const int h = int(image.rows());
    QImage out(w, h, QImage::Format_ARGB32);
    image.write(0, 0, size_t(w), size_t(h), "BGRA", Magick::CharPixel, out.bits());
    return out;
}
