#pragma once

#include <QImage>

// Shared by the modern encoders: the picture's pixels in the byte order the libraries take.
namespace ModernPixels {

// Whether any pixel is less than opaque; a picture with an alpha channel that covers it all is
// written without one.
bool usesAlpha(const QImage& picture);

// The picture as R, G, B (and A, straight, when `alpha`) bytes: Format_RGBA8888 or
// Format_RGB888. A null image when memory runs out.
QImage straight(const QImage& picture, bool alpha);

} // namespace ModernPixels
