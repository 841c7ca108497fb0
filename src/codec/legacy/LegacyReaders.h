#pragma once

#include <QString>

#include "codec/ImageDecoder.h"

// Readers of older formats that neither Qt nor Magick++ reads, links of the decoder chain for
// the rows that name them: QuickTime images (JPEG payload, read by the program itself) and FLC
// animations (their first frame, through FFmpeg's flic decoder). Same limits as every decoder:
// a picture beyond DecodeLimits is refused from its header, before its pixels are had.
namespace LegacyReaders {

DecodedImage quickTimeImagePicture(const QString& path);
DecodedImage flicPicture(const QString& path);

} // namespace LegacyReaders
