// Camera RAW through libraw: the full demosaic (camera white balance, sRGB, 8 bits) for
// viewing and conversion; the camera's embedded preview for thumbnails. Both come turned as
// the camera recorded its orientation.

#include "codec/DecodeLimits.h"
#include "codec/DecoderBackends.h"
#include "codec/ModernDecoders.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QFile>
#include <QImageReader>
#include <QTransform>

#include <libraw/libraw.h>

#include <cstring>
#include <memory>

namespace {

// A demosaic that takes longer than this was handed a file built to make it loop.
constexpr qint64 kWorkBudgetMs = 60'000;

int cancelAfterBudget(void* data, LibRaw_progress, int, int) {
    return static_cast<QElapsedTimer*>(data)->hasExpired(kWorkBudgetMs) ? 1 : 0;
}

struct Opened {
    std::unique_ptr<LibRaw> raw;
    QElapsedTimer clock;
};

// The file opened and identified, its sizes within the limits; null raw otherwise.
std::unique_ptr<Opened> openRaw(const QString& path) {
    auto opened = std::make_unique<Opened>();
    opened->raw = std::make_unique<LibRaw>(LIBRAW_OPTIONS_NONE);
    LibRaw& raw = *opened->raw;
    opened->clock.start();
    raw.set_progress_handler(cancelAfterBudget, &opened->clock);
    const QByteArray name = QFile::encodeName(path);
    if (raw.open_file(name.constData()) != LIBRAW_SUCCESS)
        return nullptr;
    const libraw_image_sizes_t& s = raw.imgdata.sizes;
    if (!DecoderBackends::withinLimits(s.raw_width, s.raw_height) ||
        !DecoderBackends::withinLimits(s.width, s.height))
        return nullptr;
    return opened;
}

// libraw's flip code as a turn: 3 is half a turn, 5 a quarter anticlockwise, 6 clockwise.
QImage turnedAs(const QImage& image, int flip) {
    switch (flip) {
    case 3:
        return image.transformed(QTransform().rotate(180));
    case 5:
        return image.transformed(QTransform().rotate(270));
    case 6:
        return image.transformed(QTransform().rotate(90));
    default:
        return image;
    }
}

QImage rgbImage(const uint8_t* data, int width, int height, int rowBytes) {
    QImage image(width, height, QImage::Format_RGB888);
    if (image.isNull())
        return {};
    for (int y = 0; y < height; ++y)
        std::memcpy(image.scanLine(y), data + size_t(y) * size_t(rowBytes), size_t(width) * 3);
    return image;
}

// The camera's preview, unturned; null when there is none or it cannot be read.
QImage embeddedPreview(LibRaw& raw) {
    if (raw.unpack_thumb() != LIBRAW_SUCCESS)
        return {};
    const libraw_thumbnail_t& t = raw.imgdata.thumbnail;
    if (!t.thumb || t.tlength == 0)
        return {};
    if (t.tformat == LIBRAW_THUMBNAIL_JPEG) {
        QByteArray bytes = QByteArray::fromRawData(t.thumb, qsizetype(t.tlength));
        QBuffer buffer(&bytes);
        QImageReader reader(&buffer, "jpeg");
        reader.setAutoTransform(false); // the RAW's own orientation turns it below
        const QSize size = reader.size();
        if (!size.isValid() || !DecoderBackends::withinLimits(size.width(), size.height()))
            return {};
        return reader.read();
    }
    if (t.tformat == LIBRAW_THUMBNAIL_BITMAP && t.tcolors == 3 &&
        size_t(t.twidth) * t.theight * 3 <= t.tlength &&
        DecoderBackends::withinLimits(t.twidth, t.theight))
        return rgbImage(reinterpret_cast<const uint8_t*>(t.thumb), t.twidth, t.theight,
                        t.twidth * 3);
    return {};
}

// The demosaiced picture, turned; half size (one pixel a 2 x 2 block, no interpolation) for a
// thumbnail of a file without a usable preview.
QImage demosaiced(LibRaw& raw, bool half) {
    libraw_output_params_t& p = raw.imgdata.params;
    p.use_camera_wb = 1;
    p.output_bps = 8;
    p.output_color = 1; // sRGB
    p.half_size = half ? 1 : 0;
    if (raw.unpack() != LIBRAW_SUCCESS || raw.dcraw_process() != LIBRAW_SUCCESS)
        return {};
    int error = 0;
    libraw_processed_image_t* made = raw.dcraw_make_mem_image(&error);
    if (!made)
        return {};
    std::unique_ptr<libraw_processed_image_t, void (*)(libraw_processed_image_t*)> owned(
        made, [](libraw_processed_image_t* m) { LibRaw::dcraw_clear_mem(m); });
    if (made->type != LIBRAW_IMAGE_BITMAP || made->colors != 3 || made->bits != 8 ||
        size_t(made->width) * made->height * 3 > made->data_size ||
        !DecoderBackends::withinLimits(made->width, made->height))
        return {};
    // libraw's memory image is already turned by the camera's orientation.
    return rgbImage(made->data, made->width, made->height, made->width * 3);
}

} // namespace

namespace ModernDecoders {

DecodedImage rawDecode(const QString& path, int maxSide) {
    DecodedImage result;
    try {
        const std::unique_ptr<Opened> opened = openRaw(path);
        if (!opened)
            return result;
        LibRaw& raw = *opened->raw;
        QImage image;
        if (maxSide > 0) {
            image = turnedAs(embeddedPreview(raw), raw.imgdata.sizes.flip);
            if (image.isNull())
                image = demosaiced(raw, true);
            if (!image.isNull() && (image.width() > maxSide || image.height() > maxSide))
                image = image.scaled(maxSide, maxSide, Qt::KeepAspectRatio,
                                     Qt::SmoothTransformation);
        } else {
            image = demosaiced(raw, false);
            result.pointSize = QSizeF(image.size());
        }
        if (image.isNull())
            return DecodedImage{};
        result.image = DecoderBackends::normalised(std::move(image));
        result.ok = !result.image.isNull();
    } catch (const std::exception&) {
        return DecodedImage{};
    }
    return result;
}

QSizeF rawMeasure(const QString& path) {
    try {
        const std::unique_ptr<Opened> opened = openRaw(path);
        if (!opened)
            return {};
        const libraw_image_sizes_t& s = opened->raw->imgdata.sizes;
        // The picture as demosaiced: the visible area, scaled by the pixel aspect, turned.
        QSizeF size(s.width, s.height);
        if (s.pixel_aspect > 0 && s.pixel_aspect != 1.0) {
            if (s.pixel_aspect < 1.0)
                size.setHeight(s.height / s.pixel_aspect);
            else
                size.setWidth(s.width * s.pixel_aspect);
        }
        return (s.flip & 4) ? size.transposed() : size;
    } catch (const std::exception&) {
        return {};
    }
}

} // namespace ModernDecoders
