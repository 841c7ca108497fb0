#pragma once

#include <QByteArray>

#include <functional>

// The metadata side of a lossless JPEG turn, through libexiv2: what the EXIF orientation asks
// for before the turn, and the EXIF and XMP brought in line with the turned pixels after it.
namespace JpegTurnMetadata {

// The EXIF orientation of the JPEG `jpeg` (1 to 8); 1 when it has none or it cannot be read.
int orientation(const QByteArray& jpeg);

// Brings the metadata of `jpeg`, a turned JPEG that carries its source's markers, in line with
// its pixels: orientation 1, the recorded pixel size `width` x `height`, the EXIF thumbnail
// turned by `turnThumbnail` (or left out when that gives nothing). Only what must change is
// rewritten; everything else stays byte for byte. False, with `jpeg` as it was, when the
// metadata cannot be rewritten.
bool settle(QByteArray& jpeg, int width, int height,
            const std::function<QByteArray(const QByteArray&)>& turnThumbnail);

} // namespace JpegTurnMetadata
