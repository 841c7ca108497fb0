#pragma once

#include <QImage>

#include <cstdint>

// Shared by the modern encoders: the picture's pixels in the byte order the libraries take.
namespace ModernPixels {

// Whether any pixel is less than opaque; a picture with an alpha channel that covers it all is
// written without one.
bool usesAlpha(const QImage& picture);

// The picture as R, G, B (and A, straight, when `alpha`) bytes: Format_RGBA8888 or
// Format_RGB888. A null image when memory runs out.
QImage straight(const QImage& picture, bool alpha);

// The picture in one of the forms whose rows are read as they are written, without a copy of
// the whole: Grayscale8, RGB888, RGB32, ARGB32 or ARGB32_Premultiplied; other forms are
// converted to ARGB32 or RGB32. A null image when memory runs out.
QImage rowReadable(const QImage& picture);

// One row of a picture in rowReadable's forms, its alpha left out (the caller knows it is all
// opaque): one grey byte a pixel for Grayscale8, else R G B.
void opaqueRow(const QImage& image, int y, uint8_t* out);

// One row of a 32-bit picture as R G B A. A premultiplied picture's colours are unpremultiplied
// when `straight` (PNG's alpha), left as they are otherwise (TIFF's associated alpha).
void rgbaRow(const QImage& image, int y, uint8_t* out, bool straight);

} // namespace ModernPixels
