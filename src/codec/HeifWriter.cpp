// AVIF (AV1) and HEIC (HEVC) through libheif, with whichever encoder plugin libheif lists first
// for the compression (aom or rav1e; x265).

#include "codec/ModernPixels.h"
#include "codec/ModernWriters.h"
#include "codec/RasterWriters.h"

#include <libheif/heif.h>

#include <cstring>
#include <memory>

namespace {

// What the formats' profiles can hold, checked before the encoder is started: AV1's Advanced
// profile (16384 x 8704) for AVIF; HEVC level 6.2 (35,651,584 samples, sides of 16888) for HEIC.
bool fitsFormat(QSize size, bool avif) {
    const qint64 area = qint64(size.width()) * size.height();
    if (avif)
        return size.width() <= 16384 && size.height() <= 16384 && area <= 16384LL * 8704;
    return size.width() <= 16888 && size.height() <= 16888 && area <= 35'651'584;
}

using ContextPtr = std::unique_ptr<heif_context, decltype(&heif_context_free)>;
using EncoderPtr = std::unique_ptr<heif_encoder, decltype(&heif_encoder_release)>;
using ImagePtr = std::unique_ptr<heif_image, decltype(&heif_image_release)>;
using OptionsPtr = std::unique_ptr<heif_encoding_options, decltype(&heif_encoding_options_free)>;
using NclxPtr = std::unique_ptr<heif_color_profile_nclx, decltype(&heif_nclx_color_profile_free)>;
using HandlePtr = std::unique_ptr<heif_image_handle, decltype(&heif_image_handle_release)>;

heif_error appendTo(heif_context*, const void* data, size_t size, void* userdata) {
    static_cast<QByteArray*>(userdata)->append(static_cast<const char*>(data), qsizetype(size));
    return heif_error{heif_error_Ok, heif_suberror_Unspecified, "ok"};
}

// The picture as one interleaved 8-bit RGB(A) plane of a libheif image; null without memory.
ImagePtr heifImageOf(const QImage& input, bool alpha) {
    const QImage pixels = ModernPixels::straight(input, alpha);
    if (pixels.isNull())
        return ImagePtr(nullptr, &heif_image_release);
    heif_image* raw = nullptr;
    const heif_error created =
        heif_image_create(pixels.width(), pixels.height(), heif_colorspace_RGB,
                          alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB, &raw);
    ImagePtr image(raw, &heif_image_release);
    if (created.code != heif_error_Ok ||
        heif_image_add_plane(raw, heif_channel_interleaved, pixels.width(), pixels.height(), 8)
                .code != heif_error_Ok)
        return ImagePtr(nullptr, &heif_image_release);
    int stride = 0;
    uint8_t* plane = heif_image_get_plane(raw, heif_channel_interleaved, &stride);
    if (!plane)
        return ImagePtr(nullptr, &heif_image_release);
    const size_t rowBytes = size_t(pixels.width()) * (alpha ? 4 : 3);
    for (int y = 0; y < pixels.height(); ++y)
        std::memcpy(plane + size_t(y) * size_t(stride), pixels.constScanLine(y), rowBytes);
    return image;
}

void setThreads(heif_encoder* encoder, bool avif, int threads) {
    if (avif) {
        heif_encoder_set_parameter_integer(encoder, "threads", std::clamp(threads, 1, 16));
        // aom's speed 7 of 9: still-picture quality within a few percent of its default 6, at
        // about two thirds of the time.
        heif_encoder_set_parameter_integer(encoder, "speed", 7);
    } else {
        const QByteArray pools = QByteArray::number(std::max(threads, 1));
        heif_encoder_set_parameter_string(encoder, "x265:pools", pools.constData());
    }
}

} // namespace

int16_t encodeHeif(const QImage& input, bool avif, const ModernEncoding& how, QByteArray& out) {
    if (!fitsFormat(input.size(), avif))
        return kTooLargeForFormat;
    const bool alpha = ModernPixels::usesAlpha(input);
    ContextPtr context(heif_context_alloc(), &heif_context_free);
    if (!context)
        return kOutOfMemory;
    heif_encoder* rawEncoder = nullptr;
    if (heif_context_get_encoder_for_format(context.get(),
                                            avif ? heif_compression_AV1 : heif_compression_HEVC,
                                            &rawEncoder)
            .code != heif_error_Ok)
        return kNoEncoder;
    EncoderPtr encoder(rawEncoder, &heif_encoder_release);
    setThreads(encoder.get(), avif, how.threads);

    ImagePtr image = heifImageOf(input, alpha);
    if (!image)
        return kOutOfMemory;
    if (!how.icc.isEmpty())
        heif_image_set_raw_color_profile(image.get(), "prof", how.icc.constData(),
                                         size_t(how.icc.size()));

    OptionsPtr options(heif_encoding_options_alloc(), &heif_encoding_options_free);
    options->save_alpha_channel = alpha ? 1 : 0;
    // Lossless coding keeps the RGB samples themselves (identity matrix, full chroma); the
    // usual YCbCr 4:2:0 would round every pixel.
    NclxPtr nclx(heif_nclx_color_profile_alloc(), &heif_nclx_color_profile_free);
    if (how.lossless) {
        heif_encoder_set_lossless(encoder.get(), 1);
        heif_encoder_set_parameter_string(encoder.get(), "chroma", "444");
        if (avif)
            heif_encoder_set_parameter_boolean(encoder.get(), "lossless-alpha", 1);
        nclx->matrix_coefficients = heif_matrix_coefficients_RGB_GBR;
        nclx->color_primaries = heif_color_primaries_ITU_R_BT_709_5;
        nclx->transfer_characteristics = heif_transfer_characteristic_IEC_61966_2_1;
        nclx->full_range_flag = 1;
        options->output_nclx_profile = nclx.get();
    } else {
        heif_encoder_set_lossy_quality(encoder.get(), how.quality);
    }

    heif_image_handle* rawHandle = nullptr;
    if (heif_context_encode_image(context.get(), image.get(), encoder.get(), options.get(),
                                  &rawHandle)
            .code != heif_error_Ok)
        return kEncoderFailed;
    HandlePtr handle(rawHandle, &heif_image_handle_release);
    image.reset(); // the source samples go before the file is assembled
    if (!how.exif.isEmpty())
        heif_context_add_exif_metadata(context.get(), handle.get(), how.exif.constData(),
                                       int(how.exif.size()));
    if (!how.xmp.isEmpty())
        heif_context_add_XMP_metadata(context.get(), handle.get(), how.xmp.constData(),
                                      int(how.xmp.size()));

    heif_writer writer{};
    writer.writer_api_version = 1;
    writer.write = appendTo;
    out.clear();
    if (heif_context_write(context.get(), &writer, &out).code != heif_error_Ok || out.isEmpty())
        return kEncoderFailed;
    return 0;
}
