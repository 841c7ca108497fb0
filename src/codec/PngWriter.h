#pragma once

#include "codec/ImageMetadata.h"

#include <QImage>
#include <cstdint>

class QIODevice;

// The PNG encoder: 8-bit grey, RGB or RGBA (RGB when every pixel of an alpha picture is opaque),
// each row filtered by the usual adaptive choice (the filter whose bytes have the smallest sum
// of absolute values) and compressed by libdeflate at level 6, which packs as tightly as zlib's
// level 6 in a fraction of its time. The picture is filtered and compressed in bands of rows,
// so memory beyond the picture is a few megabytes whatever its size. Records the resolution in
// pHYs, the colour profile in iCCP, `metadata` in the chunks of PngChunks.h and the picture's
// texts in iTXt. A status of RasterWriters.h; the device is left for the caller to commit.
int16_t writePng(const QImage& picture, QIODevice& file, float dpi,
                 const ImageMetadata& metadata = {});
