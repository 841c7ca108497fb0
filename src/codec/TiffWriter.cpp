#include "codec/TiffWriter.h"

#include "codec/MagickSupport.h"
#include "codec/ModernPixels.h"
#include "codec/RasterWriters.h"
#include "codec/TiffMetadata.h"

#include <QColorSpace>
#include <QIODevice>

#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

// libtiff's file access, on the device the caller opened.
tsize_t readProc(thandle_t handle, tdata_t buffer, tsize_t size) {
    return tsize_t(static_cast<QIODevice*>(handle)->read(static_cast<char*>(buffer), size));
}
tsize_t writeProc(thandle_t handle, tdata_t buffer, tsize_t size) {
    return tsize_t(static_cast<QIODevice*>(handle)->write(static_cast<const char*>(buffer), size));
}
toff_t seekProc(thandle_t handle, toff_t offset, int whence) {
    auto* device = static_cast<QIODevice*>(handle);
    qint64 to = qint64(offset);
    if (whence == SEEK_CUR)
        to += device->pos();
    else if (whence == SEEK_END)
        to += device->size();
    return device->seek(to) ? toff_t(device->pos()) : toff_t(-1);
}
int closeProc(thandle_t) {
    return 0;
}
toff_t sizeProc(thandle_t handle) {
    return toff_t(static_cast<QIODevice*>(handle)->size());
}
int mapProc(thandle_t, tdata_t*, toff_t*) {
    return 0;
}
void unmapProc(thandle_t, tdata_t, toff_t) {}

struct TiffCloser {
    TIFF* tiff;
    ~TiffCloser() { TIFFClose(tiff); }
};

// One row of the picture as the file's samples: grey, R G B, or R G B A with the picture's own
// alpha form (associated when premultiplied).
void rowSamples(const QImage& image, int y, int samples, uint8_t* out) {
    if (samples == 4)
        ModernPixels::rgbaRow(image, y, out, false);
    else
        ModernPixels::opaqueRow(image, y, out);
}

} // namespace

int16_t writeTiff(const QImage& picture, QIODevice& file, float dpi,
                  const ImageMetadata& metadata) {
    const QImage image = ModernPixels::rowReadable(picture);
    if (image.isNull())
        return kOutOfMemory;
    const int w = image.width();
    const int h = image.height();
    // A picture whose alpha covers it all (a scaled, unturned photograph) is written opaque.
    const int samples = image.format() == QImage::Format_Grayscale8 ? 1
                        : ModernPixels::usesAlpha(image)            ? 4
                                                                    : 3;
    const tsize_t rowBytes = tsize_t(w) * samples;
    // Classic TIFF counts in 32 bits: the strips' offsets must stay below 4 GB.
    if (double(rowBytes) * h > 4.0e9)
        return kTooLargeForFormat;

    if (!TiffMetadata::placeExifBlock(file, metadata))
        return kWriteFailed;
    useOwnTiffHandlers(); // a failure shows in the status, never on the terminal
    // Little-endian, as the EXIF block placed before it.
    TIFF* tiff = TIFFClientOpen("picture", "wl", &file, readProc, writeProc, seekProc, closeProc,
                                sizeProc, mapProc, unmapProc);
    if (!tiff)
        return kWriteFailed;
    const TiffCloser closer{tiff};
    const int rowsPerStrip = int(std::clamp<tsize_t>((256 * 1024) / rowBytes, 1, h));
    bool ok = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, uint32_t(w)) &&
              TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, uint32_t(h)) &&
              TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8) &&
              TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples) &&
              TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                           samples == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB) &&
              TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
              TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) &&
              TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, uint32_t(rowsPerStrip));
    if (ok && samples == 4) {
        const uint16_t alpha = image.format() == QImage::Format_ARGB32_Premultiplied
                                   ? EXTRASAMPLE_ASSOCALPHA
                                   : EXTRASAMPLE_UNASSALPHA;
        ok = TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
    }
    if (ok && dpi > 0)
        ok = TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH) &&
             TIFFSetField(tiff, TIFFTAG_XRESOLUTION, double(dpi)) &&
             TIFFSetField(tiff, TIFFTAG_YRESOLUTION, double(dpi));
    const QByteArray icc =
        image.colorSpace().isValid() ? image.colorSpace().iccProfile() : QByteArray();
    if (ok && !icc.isEmpty())
        ok = TIFFSetField(tiff, TIFFTAG_ICCPROFILE, uint32_t(icc.size()), icc.constData());
    if (ok)
        ok = TiffMetadata::setFields(tiff, metadata);
    if (!ok)
        return kEncoderFailed;

    std::vector<uint8_t> strip(size_t(rowBytes) * size_t(rowsPerStrip));
    for (int y = 0, index = 0; y < h; y += rowsPerStrip, ++index) {
        const int rows = std::min(rowsPerStrip, h - y);
        for (int r = 0; r < rows; ++r)
            rowSamples(image, y + r, samples, strip.data() + size_t(r) * size_t(rowBytes));
        if (TIFFWriteEncodedStrip(tiff, uint32_t(index), strip.data(), rowBytes * rows) < 0)
            return kWriteFailed;
    }
    return TIFFWriteDirectory(tiff) ? 0 : kWriteFailed;
}
