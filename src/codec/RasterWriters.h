#pragma once

#include <QImage>
#include <QString>
#include <cstdint>

// One encoder per raster subtype of the format table: BMPf, JPEG, PNGf and TIFF through Qt's
// writers; 'GIF ', '8BPS' (Photoshop), '.SGI' and 'TPIC' (Targa) through Magick++.

// Whether an encoder for the subtype exists on this machine.
bool rasterWriterExists(uint32_t subtype);

// Opens the encoder for `subtype`, gives it the picture, the output file and the resolution
// (recorded where the format has a field for it), writes and closes. 0 on success, non-zero
// otherwise (no encoder, no file, the encoder failed). Safe to call from any thread.
int16_t writeRaster(const QImage& picture, const QString& path, uint32_t subtype, float dpi);
