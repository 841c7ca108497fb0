#pragma once

#include "codec/ImageMetadata.h"

#include <QImage>
#include <cstdint>

class QIODevice;

// The TIFF encoder: uncompressed 8-bit grey, RGB or RGBA (premultiplied pictures as associated
// alpha, straight ones as unassociated), written through libtiff in strips of about 256 KB
// filled straight from the picture's rows. No copy of the whole picture is made for the pixel
// forms the program draws and decodes into (RGB888, Grayscale8 and the 32-bit forms). Records
// the resolution in inches, the colour profile and `metadata` (see TiffMetadata.h), all streamed
// into the file. A status of RasterWriters.h; the device is left for the caller to commit.
int16_t writeTiff(const QImage& picture, QIODevice& file, float dpi,
                  const ImageMetadata& metadata = {});
