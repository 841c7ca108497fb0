#include "codec/legacy/LegacyWriters.h"

#include "codec/RasterWriters.h"
#include "codec/legacy/ByteOrder.h"
#include "codec/legacy/RunLength.h"

#include <QIODevice>
#include <QPainter>

#include <algorithm>
#include <vector>

// A MacPaint document: a 512-byte header (version, 38 fill patterns, padding) and the 720 rows
// of the 576-pixel page, one bit a pixel with 1 for black, each row of 72 bytes PackBits-coded
// on its own.

namespace LegacyWriters {

namespace {

constexpr int kHeaderSize = 512;
constexpr int kRowBytes = kPaintWidth / 8;

// The page in grey levels: white, with the picture centred on it, scaled down to fit when it is
// larger than the page (a smaller one keeps its size: the page is 72 dpi, as the picture's
// pixels are drawn).
QImage greyPage(const QImage& picture) {
    QImage page(kPaintWidth, kPaintHeight, QImage::Format_RGB32);
    page.fill(Qt::white);
    QSize size = picture.size();
    if (size.width() > kPaintWidth || size.height() > kPaintHeight)
        size.scale(kPaintWidth, kPaintHeight, Qt::KeepAspectRatio);
    size = size.expandedTo(QSize(1, 1));
    const QRect target(QPoint((kPaintWidth - size.width()) / 2, (kPaintHeight - size.height()) / 2),
                       size);
    QPainter painter(&page);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, picture);
    painter.end();
    return page.convertToFormat(QImage::Format_Grayscale8);
}

} // namespace

QImage paintPage(const QImage& picture) {
    const QImage grey = greyPage(picture);
    // Floyd-Steinberg: each pixel's rounding error goes 7/16 right, 3/16 down-left, 5/16 down
    // and 1/16 down-right. Errors are kept in sixteenths, for two rows at a time.
    std::vector<int> current(kPaintWidth + 2, 0);
    std::vector<int> next(kPaintWidth + 2, 0);
    QImage bits(kPaintWidth, kPaintHeight, QImage::Format_Mono);
    bits.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
    for (int y = 0; y < kPaintHeight; ++y) {
        const uchar* row = grey.constScanLine(y);
        std::fill(next.begin(), next.end(), 0);
        for (int x = 0; x < kPaintWidth; ++x) {
            const int level = row[x] * 16 + current[x + 1];
            const bool black = level < 128 * 16;
            bits.setPixel(x, y, black ? 1 : 0);
            const int error = level - (black ? 0 : 255 * 16);
            current[x + 2] += error * 7 / 16;
            next[x] += error * 3 / 16;
            next[x + 1] += error * 5 / 16;
            next[x + 2] += error / 16;
        }
        std::swap(current, next);
    }
    return bits;
}

int16_t writePaint(const QImage& picture, QIODevice& file) {
    const QImage page = paintPage(picture);
    if (page.isNull())
        return kOutOfMemory;
    QByteArray out;
    out.reserve(kHeaderSize + kPaintHeight * (kRowBytes + 2));
    BigEndianBytes bytes{out};
    bytes.u32(2);                     // version 2: the patterns below are the document's own
    bytes.zeros(kHeaderSize - 4);     // 38 patterns of 8 bytes (all white) and the padding
    for (int y = 0; y < kPaintHeight; ++y)
        // Format_Mono is most significant bit first, 1 for black: MacPaint's own layout.
        out.append(packBits(page.constScanLine(y), kRowBytes));
    return file.write(out) == out.size() ? 0 : kWriteFailed;
}

} // namespace LegacyWriters
