#pragma once

#include <QImage>
#include <QString>

// The JPEG reader of whole pictures for an export: libjpeg-turbo's TurboJPEG interface decodes
// straight into the pixel form the encoders take (R, G, B bytes, or one grey byte), where Qt's
// reader gives 32-bit pixels that most encoders then convert back. Same decoding as Qt's reader
// (accurate integer DCT, smooth chroma upsampling), with the embedded ICC profile attached as
// the picture's colour space. The EXIF orientation is left to the caller, as with Qt's reader
// when it is told not to turn.
//
// A null image means "not mine": a CMYK or YCCK picture, a file beyond DecodeLimits or a damaged
// or truncated one (which Qt's reader then decodes as far as it can), so the decoder chain goes
// on to the usual reader and every such file keeps the result it has always had.
namespace TurboJpegDecoder {

QImage decode(const QString& path);

} // namespace TurboJpegDecoder
