#include "codec/GifWriter.h"

#include "codec/RasterWriters.h"
#include "codec/SafeReplace.h"

#include <QIODevice>

#include <gif_lib.h>
#include <libimagequant.h>
#include <omp.h>

#include <memory>
#include <vector>

namespace {

// GIF keeps one transparent colour and no partial transparency: a pixel at least half covered
// is opaque, any other is that colour.
constexpr int kOpaqueFrom = 128;

// Hands libimagequant the picture's rows as straight RGBA, one row at a time, so that no RGBA
// copy of the whole picture is made. Called from libimagequant's threads: reads only.
void pictureRow(liq_color rowOut[], int row, int width, void* user) {
    const QImage& picture = *static_cast<const QImage*>(user);
    const auto* pixels = reinterpret_cast<const QRgb*>(picture.constScanLine(row));
    const bool premultiplied = picture.format() == QImage::Format_ARGB32_Premultiplied;
    const bool opaque = !picture.hasAlphaChannel();
    for (int x = 0; x < width; ++x) {
        QRgb p = pixels[x];
        const int a = opaque ? 255 : qAlpha(p);
        if (a < kOpaqueFrom) {
            rowOut[x] = liq_color{0, 0, 0, 0};
            continue;
        }
        if (premultiplied && a < 255)
            p = qUnpremultiply(p);
        rowOut[x] = liq_color{uchar(qRed(p)), uchar(qGreen(p)), uchar(qBlue(p)), 255};
    }
}

int writeToFile(GifFileType* gif, const GifByteType* bytes, int length) {
    auto* file = static_cast<QIODevice*>(gif->UserData);
    return int(file->write(reinterpret_cast<const char*>(bytes), length));
}

struct LiqAttr {
    liq_attr* p = liq_attr_create();
    ~LiqAttr() { liq_attr_destroy(p); }
};
struct LiqImage {
    liq_image* p = nullptr;
    ~LiqImage() {
        if (p)
            liq_image_destroy(p);
    }
};
struct LiqResult {
    liq_result* p = nullptr;
    ~LiqResult() {
        if (p)
            liq_result_destroy(p);
    }
};

// The GIF file: screen and image descriptors, the palette, the transparent index (if any) and
// the rows of indices, LZW-packed by giflib straight into `file`.
bool encode(QIODevice& file, const std::vector<uchar>& indices, int w, int h,
            const liq_palette& palette) {
    int error = 0;
    GifFileType* gif = EGifOpen(&file, writeToFile, &error);
    if (!gif)
        return false;
    EGifSetGifVersion(gif, true);
    // giflib wants a power of two colours; the unused entries stay black.
    int mapSize = 2;
    while (mapSize < int(palette.count))
        mapSize *= 2;
    std::vector<GifColorType> colours(size_t(mapSize), GifColorType{0, 0, 0});
    int transparent = NO_TRANSPARENT_COLOR;
    for (unsigned i = 0; i < palette.count; ++i) {
        colours[i] = GifColorType{palette.entries[i].r, palette.entries[i].g, palette.entries[i].b};
        if (palette.entries[i].a < kOpaqueFrom && transparent == NO_TRANSPARENT_COLOR)
            transparent = int(i);
    }
    ColorMapObject* map = GifMakeMapObject(mapSize, colours.data());
    bool ok = map && EGifPutScreenDesc(gif, w, h, 8, 0, map) == GIF_OK;
    if (ok && transparent != NO_TRANSPARENT_COLOR) {
        GraphicsControlBlock control{DISPOSAL_UNSPECIFIED, false, 0, transparent};
        GifByteType extension[4];
        const size_t length = EGifGCBToExtension(&control, extension);
        ok = EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, int(length), extension) == GIF_OK;
    }
    ok = ok && EGifPutImageDesc(gif, 0, 0, w, h, false, nullptr) == GIF_OK;
    for (int y = 0; ok && y < h; ++y)
        ok = EGifPutLine(gif, const_cast<GifPixelType*>(indices.data() + size_t(y) * size_t(w)),
                         w) == GIF_OK;
    ok = EGifCloseFile(gif, &error) == GIF_OK && ok;
    GifFreeMapObject(map);
    return ok;
}

} // namespace

int64_t gifWorkingSet(int64_t pixels) {
    constexpr int64_t kWholeCopyLimit = int64_t(1) << 22; // its 64 MB of 16-byte pixels
    return pixels + (pixels <= kWholeCopyLimit ? 16 * pixels : 0);
}

void encodeOnThisThreadOnly() {
    omp_set_num_threads(1);
}

int16_t writeGif(const QImage& input, QIODevice& file) {
    // GIF sizes are 16-bit.
    if (input.width() > 65535 || input.height() > 65535)
        return kEncoderFailed;
    QImage picture = input;
    const QImage::Format f = picture.format();
    if (f != QImage::Format_RGB32 && f != QImage::Format_ARGB32 &&
        f != QImage::Format_ARGB32_Premultiplied) {
        picture = picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_ARGB32
                                                                    : QImage::Format_RGB32);
        if (picture.isNull())
            return kOutOfMemory;
    }
    const int w = picture.width();
    const int h = picture.height();

    // 256 colours chosen for this picture at its own size, with error diffusion to hide the
    // banding of skies and skin. At its fastest speed libimagequant skips the edge and noise maps
    // that weigh every pixel: for photographs the palette is the same to the eye, in less time.
    LiqAttr attr;
    if (!attr.p)
        return kOutOfMemory;
    liq_set_max_colors(attr.p, 256);
    liq_set_speed(attr.p, 10);
    LiqImage image;
    image.p = liq_image_create_custom(attr.p, pictureRow, &picture, w, h, 0);
    if (!image.p)
        return kEncoderFailed;
    LiqResult result;
    if (liq_image_quantize(image.p, attr.p, &result.p) != LIQ_OK)
        return kEncoderFailed;
    liq_set_dithering_level(result.p, 1.0f);
    std::vector<uchar> indices(size_t(w) * size_t(h)); // a quarter of the picture's size
    if (liq_write_remapped_image(result.p, image.p, indices.data(), indices.size()) != LIQ_OK)
        return kEncoderFailed;
    const liq_palette* palette = liq_get_palette(result.p);
    if (!palette)
        return kEncoderFailed;
    return encode(file, indices, w, h, *palette) ? 0 : kWriteFailed;
}
