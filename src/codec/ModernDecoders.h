#pragma once

#include <QSizeF>
#include <QString>

#include "codec/FormatRegistry.h"
#include "codec/ImageDecoder.h"

// The link of the decoder chain that comes before Qt's readers and Magick++: the formats whose
// own libraries read them here, under DecodeLimits (sizes from the header are checked before any
// pixel buffer is allocated), with the picture's orientation applied:
// - HEIC and AVIF through libheif, JPEG XL through libjxl, recognised by their content;
// - camera RAW through libraw, recognised by suffix (their files share no signature): the full
//   demosaic for viewing and conversion, the camera's embedded preview for thumbnails.
// A file that one of them recognises and cannot read is refused: it does not go on to a reader
// that would take it for something else (a RAW file is a TIFF to Qt's reader, which would show
// its tiny first page).
namespace ModernDecoders {

// The own reader of the file, or OwnReader::None when the general chain reads it.
OwnReader readerFor(const QString& path);

// Decodes with `reader`; maxSide > 0 fits the picture within maxSide x maxSide (from an embedded
// preview where there is a large enough one) and leaves pointSize empty.
DecodedImage decode(const QString& path, OwnReader reader, int maxSide);

// The oriented size in points (these formats record no resolution of their own: pixels), read
// without decoding; empty when the file cannot be read or is beyond the limits.
QSizeF measure(const QString& path, OwnReader reader);

// Each library's own decoder and measure, for the dispatch above.
DecodedImage heifDecode(const QString& path, int maxSide);
QSizeF heifMeasure(const QString& path);
DecodedImage jxlDecode(const QString& path, bool pixels);
DecodedImage rawDecode(const QString& path, int maxSide);
QSizeF rawMeasure(const QString& path);

} // namespace ModernDecoders
