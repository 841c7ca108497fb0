#include "codec/PaletteQuantiser.h"

#include "codec/RasterWriters.h"

#include <libimagequant.h>

namespace {

// Hands libimagequant the picture's rows as straight RGBA, one row at a time, so that no RGBA
// copy of the whole picture is made. Called from libimagequant's threads: reads only.
void pictureRow(liq_color rowOut[], int row, int width, void* user) {
    const QImage& picture = *static_cast<const QImage*>(user);
    if (picture.format() == QImage::Format_RGB888) { // a photograph decoded for encoding
        const uchar* rgb = picture.constScanLine(row);
        for (int x = 0; x < width; ++x, rgb += 3)
            rowOut[x] = liq_color{rgb[0], rgb[1], rgb[2], 255};
        return;
    }
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

QuantisedPicture failed(int16_t status) {
    QuantisedPicture out;
    out.status = status;
    return out;
}

} // namespace

QuantisedPicture quantise(const QImage& input, int maxColours) {
    QImage picture = input;
    const QImage::Format f = picture.format();
    if (f != QImage::Format_RGB32 && f != QImage::Format_ARGB32 &&
        f != QImage::Format_ARGB32_Premultiplied && f != QImage::Format_RGB888) {
        picture = picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_ARGB32
                                                                    : QImage::Format_RGB32);
        if (picture.isNull())
            return failed(kOutOfMemory);
    }
    QuantisedPicture out;
    out.width = picture.width();
    out.height = picture.height();

    // At its fastest speed libimagequant skips the edge and noise maps that weigh every pixel:
    // for photographs the palette is the same to the eye, in less time.
    LiqAttr attr;
    if (!attr.p)
        return failed(kOutOfMemory);
    liq_set_max_colors(attr.p, maxColours);
    liq_set_speed(attr.p, 10);
    LiqImage image;
    image.p = liq_image_create_custom(attr.p, pictureRow, &picture, out.width, out.height, 0);
    if (!image.p)
        return failed(kEncoderFailed);
    LiqResult result;
    if (liq_image_quantize(image.p, attr.p, &result.p) != LIQ_OK)
        return failed(kEncoderFailed);
    liq_set_dithering_level(result.p, 1.0f);
    out.indices.resize(size_t(out.width) * size_t(out.height)); // a quarter of the picture's size
    if (liq_write_remapped_image(result.p, image.p, out.indices.data(), out.indices.size()) !=
        LIQ_OK)
        return failed(kEncoderFailed);
    const liq_palette* palette = liq_get_palette(result.p);
    if (!palette)
        return failed(kEncoderFailed);
    for (unsigned i = 0; i < palette->count; ++i) {
        const liq_color c = palette->entries[i];
        out.palette.append(qRgba(c.r, c.g, c.b, c.a < kOpaqueFrom ? 0 : 255));
    }
    return out;
}
