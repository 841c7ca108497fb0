#include "codec/ModernWriters.h"

#include "codec/FormatRegistry.h"
#include "codec/RasterWriters.h"

#include <QColorSpace>

#include <libheif/heif.h>
#include <omp.h>

#include <algorithm>
#include <exception>
#include <new>

namespace {

bool heifEncoderExists(heif_compression_format compression) {
    const heif_encoder_descriptor* found[1] = {};
    return heif_context_get_encoder_descriptors(nullptr, compression, nullptr, found, 1) > 0;
}

} // namespace

ModernEncoding modernEncodingFor(const QImage& picture, uint32_t subtype,
                                 bool losslessSource) {
    ModernEncoding how;
    if (subtype == fourCharCode("AVIF"))
        how.quality = kAvifQuality;
    else if (subtype == fourCharCode("HEIC"))
        how.quality = kHeicQuality;
    else
        how.quality = kWebpQuality;
    how.lossless = losslessSource;
    if (picture.colorSpace().isValid() && picture.colorSpace() != QColorSpace::SRgb)
        how.icc = picture.colorSpace().iccProfile();
    // The batch lowers this thread's OpenMP budget to one (encodeOnThisThreadOnly); the
    // libraries' own thread pools follow the same budget.
    how.threads = std::max(1, omp_get_max_threads());
    return how;
}

bool modernEncoderExists(uint32_t subtype) {
    const FormatRow* row = FormatRegistry::rowForSubtype(subtype);
    if (!row)
        return false;
    switch (row->encoder) {
    case Encoder::Webp:
    case Encoder::Jxl:
        return true; // linked in
    case Encoder::Heif:
        return heifEncoderExists(QByteArrayView(row->coder) == "AVIF" ? heif_compression_AV1
                                                                       : heif_compression_HEVC);
    default:
        return false;
    }
}

int16_t encodeModern(const QImage& picture, uint32_t subtype, const ModernEncoding& how,
                     QByteArray& out) {
    const FormatRow* row = FormatRegistry::rowForSubtype(subtype);
    if (!row || !modernEncoderExists(subtype))
        return kNoEncoder;
    try {
        switch (row->encoder) {
        case Encoder::Webp:
            return encodeWebp(picture, how, out);
        case Encoder::Heif:
            return encodeHeif(picture, QByteArrayView(row->coder) == "AVIF", how, out);
        case Encoder::Jxl:
            return encodeJxl(picture, how, out);
        default:
            return kNoEncoder;
        }
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    } catch (const std::exception&) {
        return kEncoderFailed;
    }
}
