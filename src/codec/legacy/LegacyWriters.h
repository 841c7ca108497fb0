#pragma once

#include <QImage>

#include <cstdint>

class QFileDevice;
class QIODevice;

// The program's own writers of the older formats of the table, one file each: MacPaint
// (PaintWriter.cpp), QuickTime image (QuickTimeImageWriter.cpp), FLC (FlicWriter.cpp), SWF
// (SwfWriter.cpp) and a one-frame QuickTime movie (MovieWriter.cpp). Each writes into the open
// output file (a save file that the caller commits or cancels) and returns a status of
// RasterWriters.h. A picture the format cannot hold (a side beyond its 16-bit fields) is refused
// with kEncoderFailed before anything is written: the pictures are never scaled to fit, but for
// MacPaint's one fixed page.

namespace LegacyWriters {

// Whether the writer named by a registry row's coder ("paint", "movie") exists on this machine.
bool exists(const char* coder);

// Writes the picture with the writer named `coder` into `file`, the temporary that becomes
// `target`; `dpi` is recorded where the format has a field for it.
int16_t write(const char* coder, const QImage& picture, QFileDevice& file, float dpi,
              const QString& target);

// The picture as opaque RGB32, its uncovered and translucent parts laid on white: these formats
// keep no transparency.
QImage onWhite(const QImage& picture);

// The largest side the formats with 16-bit sizes hold.
constexpr int kMaxSide16 = 65535;

// MacPaint: the one 576 x 720 page, the picture fitted on it (scaled down when larger, centred,
// white around) and dithered to black and white. Format_Mono, index 1 black.
QImage paintPage(const QImage& picture);
constexpr int kPaintWidth = 576;
constexpr int kPaintHeight = 720;

// `documentName` is the name the MacBinary wrapper gives the document.
int16_t writePaint(const QImage& picture, QIODevice& file, const QString& documentName);
int16_t writeQuickTimeImage(const QImage& picture, QIODevice& file, float dpi);
int16_t writeFlic(const QImage& picture, QIODevice& file);
int16_t writeSwf(const QImage& picture, QIODevice& file);
bool movieWriterExists();
int16_t writeMovie(const QImage& picture, QFileDevice& file);

} // namespace LegacyWriters
