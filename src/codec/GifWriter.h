#pragma once

#include <QImage>
#include <cstdint>

class QIODevice;

// The GIF encoder: 256 colours chosen by libimagequant at the picture's own size, dithered,
// and LZW-packed by giflib straight into the open file, row by row. Memory beyond the picture
// is one byte a pixel (the colour indices). Pixels less than half covered become the GIF's one
// transparent colour. A status of RasterWriters.h; the file is left for the caller to commit.
int16_t writeGif(const QImage& picture, QIODevice& file);

// The bytes the encoder holds beyond the picture for a picture of `pixels` pixels: the colour
// indices, and, for pictures up to 4 megapixels, libimagequant's copy of the whole picture in
// floating point (16 bytes a pixel) while it dithers; larger ones it converts row by row.
int64_t gifWorkingSet(int64_t pixels);

// Keeps encoders that spread over the cores by themselves (libimagequant's OpenMP loops) on
// the calling thread: for the batch's lanes, which already keep every core busy, where a second
// layer of threads would only make the lanes wait on each other.
void encodeOnThisThreadOnly();
