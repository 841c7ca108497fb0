#pragma once

#include <QImage>
#include <QString>
#include <cstdint>

#include "codec/ImageMetadata.h"

// One encoder per raster subtype of the format table: JPEG through Qt's writer; BMPf, 'GIF ',
// PNGf and TIFF through the program's own (BmpWriter.h, GifWriter.h, PngWriter.h, TiffWriter.h);
// '8BPS' (Photoshop), '.SGI' and 'TPIC' (Targa) through Magick++; WEBP, AVIF, HEIC and 'JXL '
// through their own libraries (ModernWriters.h); MooV, PNTG, qtif, FLC and SWFL through the
// program's own writers of the older formats (legacy/LegacyWriters.h).

// Status codes of the raster writers. 0 is success; every failure is negative so that the
// callers, which only look at zero or not, never mistake one for success.
constexpr int16_t kNoEncoder = -1;         // no encoder for the subtype on this machine
constexpr int16_t kNoPicture = -2;         // a null picture or a resolution that is no number
constexpr int16_t kCannotOpenFile = -3;    // missing folder, read-only folder, not a file
constexpr int16_t kEncoderFailed = -4;     // the encoder refused the picture (policy, size)
constexpr int16_t kWriteFailed = -5;       // the bytes did not all reach the disk (disk full)
constexpr int16_t kOutOfMemory = -6;       // the encoder's buffers could not be had
constexpr int16_t kTooLargeForFormat = -7; // sides or area beyond what the format can hold

// What a writer is told of the source besides the picture drawn from it.
struct SourceTraits {
    // The source has an alpha channel (PNG, TIFF, GIF, Photoshop and the like): the modern
    // formats then code it losslessly, as its edges and flat colours would smear otherwise.
    bool hasAlpha = false;
};

// Whether an encoder for the subtype exists on this machine.
bool rasterWriterExists(uint32_t subtype);

// Opens the encoder for `subtype`, gives it the picture, the output file and the resolution
// (recorded where the format has a field for it), writes and closes. 0 on success, non-zero
// otherwise (no encoder, no file, the encoder failed). The file at `path` is replaced only by a
// complete new one (written beside it and renamed); on failure it stays as it was. No exception
// escapes. Safe to call from any thread.
// The picture's colour space goes with it as an ICC profile where the format holds one; other
// formats get its pixels converted to sRGB. `metadata` (already adapted to the output, see
// MetadataCarrier::forOutput) is written into formats that hold it, before the file appears.
int16_t writeRaster(const QImage& picture, const QString& path, uint32_t subtype, float dpi,
                    const ImageMetadata& metadata = {}, const SourceTraits& source = {});

// `dpi` in pixels per metre, rounded, as every writer records it.
int dotsPerMetre(float dpi);

// Records `dpi` in the picture's resolution fields, as the writers do. Done by the owner of a
// large picture before handing it over, so that the writer's own recording copies nothing.
void recordResolution(QImage& picture, float dpi);

// Brings the picture, in place, into the pixel form the subtype's encoder takes without a copy
// of its own (straight alpha for the Magick coders). For the sole owner of a large
// picture, before handing it to writeRaster; the pixels drawn stay the same.
void prepareForEncoder(QImage& picture, uint32_t subtype);

// A short text for a writer's status, for the user ("the encoder refused the picture").
QString writeFailureReason(int16_t status);
