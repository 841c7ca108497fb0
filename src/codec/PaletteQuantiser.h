#pragma once

#include <QImage>
#include <QList>

#include <cstdint>
#include <vector>

// Palette pictures for the encoders of indexed formats (GIF, FLC): up to 256 colours chosen by
// libimagequant for this picture at its own size, with error diffusion to hide the banding of
// skies and skin. Pixels less than half covered map to a colour of alpha 0.
struct QuantisedPicture {
    int16_t status = 0; // 0, or a status of RasterWriters.h when the picture could not be had
    int width = 0;
    int height = 0;
    std::vector<uchar> indices; // one palette index a pixel, row after row, no padding
    QList<QRgb> palette;        // straight (not premultiplied) colours; alpha 0 or 255
};

// Alpha from which a pixel counts as opaque in a palette picture.
constexpr int kOpaqueFrom = 128;

QuantisedPicture quantise(const QImage& picture, int maxColours);
