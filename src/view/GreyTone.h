#pragma once

#include <QByteArray>
#include <QImage>
#include <QRgb>

#include <cstdint>

// Grey tones of a picture: one grey byte and one alpha byte per pixel, rows from the top of the
// picture down, each row exactly 2 x width bytes with no padding.
struct GreyToneRaster {
    int width = 0;
    int height = 0;
    QByteArray bytes; // byte 0 of a pixel is the grey value, byte 1 the alpha value
};

// The alpha byte: the component times 255, truncated toward zero (0.5 gives 127).
inline uint8_t greyAlphaOf(double alpha) {
    return uint8_t(long(alpha * 255.0) & 0xff);
}

// The luminance of one straight (not premultiplied) colour, components read as doubles in
// 0..1: rint((r * 0.299 + g * 0.587 + b * 0.114) * 255), ties to even.
uint8_t greyToneOf(QRgb pixel);

// The grey-with-alpha raster of `image`; an empty raster for a null image.
GreyToneRaster monochromeRaster(const QImage& image);

// The raster as a displayable picture in premultiplied ARGB32, the format the painter draws
// fastest (grey in red, green and blue); null when empty.
QImage greyToneDisplayImage(const GreyToneRaster& raster);

// Both steps at once, row by row without the whole raster in between: the grey version of
// `image` as it is shown on screen.
QImage greyToneDisplayImage(const QImage& image);
