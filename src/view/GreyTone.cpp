#include "view/GreyTone.h"

#include <vector>

namespace {

// The products of the rule for every byte value, computed with the very same operations as
// the per-pixel formula (component as a double in 0..1, times its weight), so the sums and
// their rounding come out bit for bit the same; a large picture is then greyed in a fraction
// of the time.
struct GreyTables {
    double red[256];
    double green[256];
    double blue[256];
    uint8_t alpha[256];
    GreyTables() {
        for (int i = 0; i < 256; ++i) {
            const double component = i / 255.0;
            red[i] = component * 0.299;
            green[i] = component * 0.587;
            blue[i] = component * 0.114;
            alpha[i] = greyAlphaOf(component);
        }
    }
};

const GreyTables& greyTables() {
    static const GreyTables tables;
    return tables;
}

// Rounds to the nearest integer, ties to even, as rint does in the default rounding mode:
// adding 1.5 x 2^52 leaves no bits for a fraction. Valid for 0 <= v < 2^51.
inline double roundHalfEven(double v) {
    constexpr double shift = 6755399441055744.0;
    return (v + shift) - shift;
}

inline uint8_t greyOf(const GreyTables& t, QRgb pixel) {
    const double sum = t.red[qRed(pixel)] + t.green[qGreen(pixel)] + t.blue[qBlue(pixel)];
    return uint8_t(long(roundHalfEven(sum * 255.0)) & 0xff);
}

// Calls row(y, greyAlpha) for every row from the top down, greyAlpha holding 2 x width bytes.
// The pixels are read as straight colours: premultiplied pictures are divided back per pixel
// (only where they are not opaque), other formats are converted once.
template <class RowSink> bool forEachGreyRow(const QImage& image, RowSink row) {
    if (image.isNull() || image.width() <= 0 || image.height() <= 0)
        return false;
    const bool direct = image.format() == QImage::Format_ARGB32 ||
                        image.format() == QImage::Format_RGB32 ||
                        image.format() == QImage::Format_ARGB32_Premultiplied;
    const QImage source = direct ? image : image.convertToFormat(QImage::Format_ARGB32);
    if (source.isNull())
        return false;
    const bool premultiplied = source.format() == QImage::Format_ARGB32_Premultiplied;
    const bool opaque = source.format() == QImage::Format_RGB32;
    const GreyTables& tables = greyTables();
    const qsizetype w = source.width();
    std::vector<uint8_t> greyAlpha(size_t(w) * 2);
    for (int y = 0; y < source.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(source.constScanLine(y));
        for (qsizetype x = 0; x < w; ++x) {
            QRgb pixel = opaque ? (line[x] | 0xff000000u) : line[x];
            if (premultiplied && qAlpha(pixel) != 255)
                pixel = qUnpremultiply(pixel);
            greyAlpha[size_t(x) * 2] = greyOf(tables, pixel);
            greyAlpha[size_t(x) * 2 + 1] = tables.alpha[qAlpha(pixel)];
        }
        row(y, greyAlpha.data());
    }
    return true;
}

void writeDisplayRow(const uint8_t* greyAlpha, qsizetype width, QRgb* out) {
    for (qsizetype x = 0; x < width; ++x) {
        const uint8_t g = greyAlpha[x * 2];
        const uint8_t a = greyAlpha[x * 2 + 1];
        out[x] = a == 255 ? qRgb(g, g, g) : qPremultiply(qRgba(g, g, g, a));
    }
}

} // namespace

uint8_t greyToneOf(QRgb pixel) {
    return greyOf(greyTables(), pixel);
}

GreyToneRaster monochromeRaster(const QImage& image) {
    GreyToneRaster raster;
    if (image.isNull() || image.width() <= 0 || image.height() <= 0)
        return raster;
    const qsizetype rowBytes = qsizetype(image.width()) * 2;
    raster.bytes.resize(rowBytes * image.height());
    if (raster.bytes.size() != rowBytes * image.height())
        return GreyToneRaster{};
    auto* out = reinterpret_cast<uint8_t*>(raster.bytes.data());
    const bool done = forEachGreyRow(image, [&](int y, const uint8_t* greyAlpha) {
        std::copy(greyAlpha, greyAlpha + rowBytes, out + rowBytes * y);
    });
    if (!done)
        return GreyToneRaster{};
    raster.width = image.width();
    raster.height = image.height();
    return raster;
}

QImage greyToneDisplayImage(const GreyToneRaster& raster) {
    const qsizetype w = raster.width;
    const qsizetype h = raster.height;
    if (w <= 0 || h <= 0 || raster.bytes.size() < w * h * 2)
        return QImage();
    QImage image(int(w), int(h), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return image;
    const auto* in = reinterpret_cast<const uint8_t*>(raster.bytes.constData());
    for (qsizetype y = 0; y < h; ++y)
        writeDisplayRow(in + w * y * 2, w, reinterpret_cast<QRgb*>(image.scanLine(int(y))));
    return image;
}

QImage greyToneDisplayImage(const QImage& image) {
    if (image.isNull() || image.width() <= 0 || image.height() <= 0)
        return QImage();
    QImage grey(image.size(), QImage::Format_ARGB32_Premultiplied);
    if (grey.isNull())
        return grey;
    const bool done = forEachGreyRow(image, [&](int y, const uint8_t* greyAlpha) {
        writeDisplayRow(greyAlpha, grey.width(), reinterpret_cast<QRgb*>(grey.scanLine(y)));
    });
    return done ? grey : QImage();
}
