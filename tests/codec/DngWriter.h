#pragma once

#include <QImage>
#include <QString>

// Minimal but valid DNG files made at test time with libtiff: a 16-bit RGGB colour filter array
// whose camera space is linear sRGB, so that a demosaic gives back the colours it was made of.
namespace DngWriter {

struct Dng {
    QImage colours;       // the scene, one colour a pixel (even sizes)
    int orientation = 1;  // TIFF orientation: 1 upright, 6 turned a quarter clockwise, ...
    QImage preview;       // when not null, stored as the IFD0 preview with the raw in a SubIFD
};

// Writes the DNG; false when libtiff fails.
bool write(const QString& path, const Dng& dng);

} // namespace DngWriter
