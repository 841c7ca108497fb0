#pragma once

#include <QImage>
#include <cstdint>

class QIODevice;

// The BMP encoder. An opaque picture is written as 24-bit B G R rows (a grey one as 8 bits with
// a grey palette), bottom-up and padded to four bytes, straight from the picture's rows: no copy
// of the whole picture is made for the forms the program draws and decodes into. A picture with
// transparency (the export fills white behind BMP pictures, so only a direct call has one) goes
// to Qt's writer, which writes its straight colours. Records the resolution in pixels per metre. A
// status of RasterWriters.h; the device is left for the caller to commit.
int16_t writeBmp(const QImage& picture, QIODevice& file, float dpi);
