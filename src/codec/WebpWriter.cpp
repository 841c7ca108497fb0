// WebP through libwebp: lossy at the chosen quality or lossless, with an ICC profile and
// metadata carried in the extended container (libwebpmux) when there are any.

#include "codec/ModernPixels.h"
#include "codec/ModernWriters.h"
#include "codec/RasterWriters.h"

#include <webp/encode.h>
#include <webp/mux.h>

#include <memory>

namespace {

struct PictureGuard {
    WebPPicture* picture;
    ~PictureGuard() { WebPPictureFree(picture); }
};

struct MemoryGuard {
    WebPMemoryWriter* writer;
    ~MemoryGuard() { WebPMemoryWriterClear(writer); }
};

using MuxPtr = std::unique_ptr<WebPMux, decltype(&WebPMuxDelete)>;

// The bitstream wrapped with the profile and metadata chunks.
bool addChunks(const uint8_t* data, size_t size, const ModernEncoding& how, QByteArray& out) {
    const WebPData image{data, size};
    MuxPtr mux(WebPMuxCreate(&image, 1), &WebPMuxDelete);
    if (!mux)
        return false;
    auto chunk = [&](const char* fourcc, const QByteArray& bytes) {
        if (bytes.isEmpty())
            return true;
        const WebPData payload{reinterpret_cast<const uint8_t*>(bytes.constData()),
                               size_t(bytes.size())};
        return WebPMuxSetChunk(mux.get(), fourcc, &payload, 1) == WEBP_MUX_OK;
    };
    if (!chunk("ICCP", how.icc) || !chunk("EXIF", how.exif) || !chunk("XMP ", how.xmp))
        return false;
    WebPData assembled{};
    if (WebPMuxAssemble(mux.get(), &assembled) != WEBP_MUX_OK)
        return false;
    out = QByteArray(reinterpret_cast<const char*>(assembled.bytes), qsizetype(assembled.size));
    WebPDataClear(&assembled);
    return true;
}

} // namespace

int16_t encodeWebp(const QImage& input, const ModernEncoding& how, QByteArray& out) {
    if (input.width() > WEBP_MAX_DIMENSION || input.height() > WEBP_MAX_DIMENSION)
        return kTooLargeForFormat;
    const bool alpha = ModernPixels::usesAlpha(input);
    WebPConfig config;
    if (!WebPConfigInit(&config))
        return kEncoderFailed;
    config.quality = float(how.quality);
    config.method = 4; // cwebp's default: the usual balance of size and time
    config.thread_level = how.threads > 1 ? 1 : 0;
    if (how.lossless) {
        config.lossless = 1;
        config.quality = 75; // effort for lossless coding: cwebp's default
        config.exact = 0;    // colours under fully transparent pixels may go
    }
    if (!WebPValidateConfig(&config))
        return kEncoderFailed;

    WebPPicture picture;
    if (!WebPPictureInit(&picture))
        return kEncoderFailed;
    PictureGuard pictureGuard{&picture};
    picture.use_argb = config.lossless ? 1 : 0;
    picture.width = input.width();
    picture.height = input.height();
    // Qt's 32-bit pixels are B, G, R, A in memory on this little-endian machine: imported as
    // they are, with straight alpha where there is any.
    // An opaque picture's 32-bit pixels are already B, G, R, X whatever their alpha form: no
    // copy of a large photograph is made for them.
    // A photograph decoded for encoding is R, G, B bytes, imported as they are too.
    const bool opaque32 = !alpha && (input.format() == QImage::Format_RGB32 ||
                                     input.format() == QImage::Format_ARGB32 ||
                                     input.format() == QImage::Format_ARGB32_Premultiplied);
    const bool opaque24 = !alpha && input.format() == QImage::Format_RGB888;
    const QImage pixels =
        opaque32 || opaque24
            ? input
            : input.convertToFormat(alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (pixels.isNull())
        return kOutOfMemory;
    const int stride = int(pixels.bytesPerLine());
    const int imported = alpha      ? WebPPictureImportBGRA(&picture, pixels.constBits(), stride)
                         : opaque24 ? WebPPictureImportRGB(&picture, pixels.constBits(), stride)
                                    : WebPPictureImportBGRX(&picture, pixels.constBits(), stride);
    if (!imported)
        return kOutOfMemory;

    WebPMemoryWriter writer;
    WebPMemoryWriterInit(&writer);
    MemoryGuard writerGuard{&writer};
    picture.writer = WebPMemoryWrite;
    picture.custom_ptr = &writer;
    if (!WebPEncode(&config, &picture))
        return picture.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ? kOutOfMemory : kEncoderFailed;

    if (how.icc.isEmpty() && how.exif.isEmpty() && how.xmp.isEmpty()) {
        out = QByteArray(reinterpret_cast<const char*>(writer.mem), qsizetype(writer.size));
        return 0;
    }
    return addChunks(writer.mem, writer.size, how, out) ? 0 : kEncoderFailed;
}
