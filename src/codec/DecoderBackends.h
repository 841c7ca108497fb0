#pragma once

// Private to the decoder chain (ImageDecoder.cpp, MagickDecoder.cpp, PdfDecoder.cpp and the
// program's own readers in legacy/): the later links of the chain and the helpers they share
// with the first.

#include <QImage>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <cstdint>

#include "codec/ImageDecoder.h"

namespace DecoderBackends {

// True when a picture of w x h pixels is within DecodeLimits.
bool withinLimits(int64_t w, int64_t h);

// The size in points of `pixels` recorded at `dpiX` x `dpiY` dots per inch; a resolution that
// is missing (<= 0) or exactly 72 leaves the pixel size as it is.
QSizeF pointSizeFor(QSize pixels, double dpiX, double dpiY);

// RGB32 for opaque rasters, ARGB32_Premultiplied with alpha, Grayscale8 for grey; 8 bits a sample.
QImage normalised(QImage image);

// Magick++: the lower-case suffixes of the formats it may read here, and the decoders.
QStringList magickSuffixes();
DecodedImage magickDecode(const QString& path);
QSizeF magickMeasure(const QString& path);

// poppler: the first page of a PDF.
bool looksLikePdf(const QString& path);
DecodedImage pdfDecode(const QString& path);
// The first page drawn to fit within maxSide x maxSide pixels; pointSize is the page's size.
DecodedImage pdfDecodeScaled(const QString& path, int maxSide);
QSizeF pdfMeasure(const QString& path);

} // namespace DecoderBackends
