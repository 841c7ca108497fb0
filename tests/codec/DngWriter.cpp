#include "DngWriter.h"

#include <QFile>

#include <tiffio.h>

#include <cmath>
#include <vector>

namespace DngWriter {

namespace {

// sRGB's samples back to linear light.
double linear(int sample) {
    const double v = sample / 255.0;
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

void setCameraTags(TIFF* tif, int orientation) {
    const uint8_t version[4] = {1, 4, 0, 0};
    TIFFSetField(tif, TIFFTAG_DNGVERSION, version);
    TIFFSetField(tif, TIFFTAG_UNIQUECAMERAMODEL, "Ormidon Test Camera");
    TIFFSetField(tif, TIFFTAG_MAKE, "Ormidon");
    TIFFSetField(tif, TIFFTAG_MODEL, "Test Camera");
    TIFFSetField(tif, TIFFTAG_ORIENTATION, uint16_t(orientation));
    // XYZ (D65) to the camera's space, which is linear sRGB.
    const float xyzToSrgb[9] = {3.2406f, -1.5372f, -0.4986f, -0.9689f, 1.8758f,
                                0.0415f, 0.0557f,  -0.2040f, 1.0570f};
    TIFFSetField(tif, TIFFTAG_COLORMATRIX1, 9, xyzToSrgb);
    TIFFSetField(tif, TIFFTAG_CALIBRATIONILLUMINANT1, uint16_t(21)); // D65
    const float neutral[3] = {1.0f, 1.0f, 1.0f};
    TIFFSetField(tif, TIFFTAG_ASSHOTNEUTRAL, 3, neutral);
}

bool writeRaw(TIFF* tif, const QImage& colours, bool first, int orientation) {
    const int w = colours.width(), h = colours.height();
    TIFFSetField(tif, TIFFTAG_SUBFILETYPE, 0);
    if (first)
        setCameraTags(tif, orientation);
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, uint32_t(w));
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, uint32_t(h));
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, 32803); // colour filter array
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, uint32_t(h));
    const uint16_t dim[2] = {2, 2};
    TIFFSetField(tif, TIFFTAG_CFAREPEATPATTERNDIM, dim);
    const uint8_t rggb[4] = {0, 1, 1, 2};
    TIFFSetField(tif, TIFFTAG_CFAPATTERN, 4, rggb);
    const uint32_t white = 65535;
    TIFFSetField(tif, TIFFTAG_WHITELEVEL, 1, &white);
    std::vector<uint16_t> row(static_cast<size_t>(w));
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const QRgb c = colours.pixel(x, y);
            const int site = (y % 2) * 2 + (x % 2); // 0 R, 1 and 2 G, 3 B
            const int sample = site == 0 ? qRed(c) : site == 3 ? qBlue(c) : qGreen(c);
            row[size_t(x)] = uint16_t(std::lround(linear(sample) * 60000.0));
        }
        if (TIFFWriteScanline(tif, row.data(), uint32_t(y), 0) < 0)
            return false;
    }
    return TIFFWriteDirectory(tif) != 0;
}

} // namespace

bool write(const QString& path, const Dng& dng) {
    TIFF* tif = TIFFOpen(QFile::encodeName(path).constData(), "w");
    if (!tif)
        return false;
    bool ok = true;
    if (dng.preview.isNull()) {
        ok = writeRaw(tif, dng.colours, true, dng.orientation);
    } else {
        const QImage p = dng.preview.convertToFormat(QImage::Format_RGB888);
        TIFFSetField(tif, TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE);
        setCameraTags(tif, dng.orientation);
        TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, uint32_t(p.width()));
        TIFFSetField(tif, TIFFTAG_IMAGELENGTH, uint32_t(p.height()));
        TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 3);
        TIFFSetField(tif, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
        TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, uint32_t(p.height()));
        toff_t subifd = 0;
        TIFFSetField(tif, TIFFTAG_SUBIFD, 1, &subifd);
        for (int y = 0; y < p.height() && ok; ++y)
            ok = TIFFWriteScanline(tif, const_cast<uchar*>(p.constScanLine(y)), uint32_t(y), 0) >= 0;
        ok = ok && TIFFWriteDirectory(tif) != 0;
        ok = ok && writeRaw(tif, dng.colours, false, dng.orientation);
    }
    TIFFClose(tif);
    return ok;
}

} // namespace DngWriter
