#pragma once

#include <QByteArray>
#include <QImage>

#include <cstdint>

// The encoders of the modern formats (WebP through libwebp, AVIF and HEIC through libheif, JPEG
// XL through libjxl). Each turns a picture into the file's bytes in memory; RasterWriters puts
// them on disk through its safe write, so a refusing encoder leaves the output as it was.

// Quality a photographer accepts without a second look, at a fraction of a JPEG's size: WebP 85
// (cwebp's 75 smears foliage), AVIF 70 and HEIC 70 (libheif's 0 to 100 scale; about JPEG 90),
// JPEG XL at distance 1.0 (libjxl's "visually lossless").
constexpr int kWebpQuality = 85;
constexpr int kAvifQuality = 70;
constexpr int kHeicQuality = 70;
constexpr float kJxlDistance = 1.0f;

// What an encoder is given besides the pixels.
struct ModernEncoding {
    int quality = 85;      // 0 to 100, for lossy coding
    bool lossless = false; // every pixel kept exactly (alpha included)
    QByteArray icc;        // an ICC profile to carry; empty: the pixels are sRGB
    // Metadata to carry, as the formats hold it: EXIF from its TIFF header on ("II*\0..."), XMP
    // as its packet; the writer fills them from the source's (MetadataCarrier::forOutput). None
    // of the four formats has a resolution field of its own: the chosen one travels in the EXIF
    // block's XResolution and YResolution, so a source without EXIF records none.
    QByteArray exif;
    QByteArray xmp;
    // Encoder threads: 1 inside the batch's lanes, which keep the cores busy already.
    int threads = 1;
};

// The encoding for a picture: the format's default quality, the picture's own ICC profile,
// lossless when `losslessSource` (a source with an alpha channel: drawings, screenshots, cut-out
// graphics, whose edges lossy coding would smear), and the thread budget of this thread.
ModernEncoding modernEncodingFor(const QImage& picture, uint32_t subtype,
                                 bool losslessSource);

// Whether the encoder exists in the libraries this machine has (libheif lists its encoders at
// run time: a HEIC encoder needs its x265 plugin, AVIF its aom or rav1e one).
bool modernEncoderExists(uint32_t subtype);

// Encodes the picture (RGB32, ARGB32 or ARGB32_Premultiplied; others are converted) into `out`.
// 0 on success, else a status of RasterWriters.h: kTooLargeForFormat for sides or an area the
// format cannot hold, kEncoderFailed, kOutOfMemory. No exception escapes.
int16_t encodeModern(const QImage& picture, uint32_t subtype, const ModernEncoding& how,
                     QByteArray& out);

// Each library's own encoder; encodeModern dispatches to them by subtype.
int16_t encodeWebp(const QImage& picture, const ModernEncoding& how, QByteArray& out);
int16_t encodeHeif(const QImage& picture, bool avif, const ModernEncoding& how, QByteArray& out);
int16_t encodeJxl(const QImage& picture, const ModernEncoding& how, QByteArray& out);
