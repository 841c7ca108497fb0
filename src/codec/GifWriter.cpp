#include "codec/GifWriter.h"

#include "codec/PaletteQuantiser.h"
#include "codec/RasterWriters.h"
#include "codec/SafeReplace.h"

#include <QIODevice>

#include <gif_lib.h>
#include <omp.h>

#include <memory>
#include <vector>

namespace {

int writeToFile(GifFileType* gif, const GifByteType* bytes, int length) {
    auto* file = static_cast<QIODevice*>(gif->UserData);
    return int(file->write(reinterpret_cast<const char*>(bytes), length));
}

// The GIF file: screen and image descriptors, the palette, the transparent index (if any) and
// the rows of indices, LZW-packed by giflib straight into `file`.
bool encode(QIODevice& file, const QuantisedPicture& picture) {
    const int w = picture.width;
    const int h = picture.height;
    int error = 0;
    GifFileType* gif = EGifOpen(&file, writeToFile, &error);
    if (!gif)
        return false;
    EGifSetGifVersion(gif, true);
    // giflib wants a power of two colours; the unused entries stay black.
    int mapSize = 2;
    while (mapSize < int(picture.palette.size()))
        mapSize *= 2;
    std::vector<GifColorType> colours(size_t(mapSize), GifColorType{0, 0, 0});
    int transparent = NO_TRANSPARENT_COLOR;
    for (int i = 0; i < int(picture.palette.size()); ++i) {
        const QRgb c = picture.palette[i];
        colours[size_t(i)] = GifColorType{uchar(qRed(c)), uchar(qGreen(c)), uchar(qBlue(c))};
        if (qAlpha(c) == 0 && transparent == NO_TRANSPARENT_COLOR)
            transparent = i;
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
        ok = EGifPutLine(gif,
                         const_cast<GifPixelType*>(picture.indices.data() + size_t(y) * size_t(w)),
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
    // 256 colours chosen for this picture at its own size, dithered.
    const QuantisedPicture picture = quantise(input, 256);
    if (picture.status)
        return picture.status;
    return encode(file, picture) ? 0 : kWriteFailed;
}
