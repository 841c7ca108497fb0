#include "codec/legacy/LegacyWriters.h"

#include "codec/RasterWriters.h"
#include "codec/legacy/ByteOrder.h"
#include "codec/legacy/RunLength.h"

#include <QDateTime>
#include <QIODevice>
#include <QPainter>

#include <algorithm>
#include <vector>

// A MacPaint document: a 512-byte header (version, 38 fill patterns, padding) and the 720 rows
// of the 576-pixel page, one bit a pixel with 1 for black, each row of 72 bytes PackBits-coded
// on its own. Away from the Mac a document travels in a MacBinary II wrapper, a 128-byte header
// that carries its name, its file type 'PNTG' and creator 'MPNT', which the Mac's own file
// system kept beside the data; the readers on Linux (ImageMagick's among them) expect it.

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

// CRC-16 of the MacBinary header (polynomial 0x1021, start 0).
uint16_t crc16(const QByteArray& bytes) {
    uint16_t crc = 0;
    for (const char c : bytes) {
        crc ^= uint16_t(uint8_t(c) << 8);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x8000) ? uint16_t((crc << 1) ^ 0x1021) : uint16_t(crc << 1);
    }
    return crc;
}

// The MacBinary II header of a data fork of `length` bytes named `name`.
QByteArray macBinaryHeader(const QString& name, uint32_t length) {
    QByteArray macName = name.left(31).toLatin1();
    if (macName.isEmpty())
        macName = "untitled";
    // Seconds since 1904, the Mac's epoch.
    const uint32_t now = uint32_t(QDateTime::currentSecsSinceEpoch() + 2082844800LL);
    QByteArray head;
    BigEndianBytes b{head};
    b.u8(0);
    b.u8(uint32_t(macName.size()));
    head.append(macName);
    b.zeros(63 - macName.size());
    b.u32(0x504E5447);          // 'PNTG'
    b.u32(0x4D504E54);          // 'MPNT'
    b.zeros(83 - head.size());  // Finder flags, place in the window, folder, protection
    b.u32(length);              // data fork
    b.u32(0);                   // no resource fork
    b.u32(now);                 // created
    b.u32(now);                 // modified
    b.zeros(122 - head.size()); // comment length, more Finder flags, unpacked length, no 2nd header
    b.u8(129);                  // MacBinary II, readable from version II on
    b.u8(129);
    b.u16(crc16(head));
    b.zeros(2);
    return head;
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

int16_t writePaint(const QImage& picture, QIODevice& file, const QString& documentName) {
    const QImage page = paintPage(picture);
    if (page.isNull())
        return kOutOfMemory;
    QByteArray out;
    out.reserve(kHeaderSize + kPaintHeight * (kRowBytes + 2));
    BigEndianBytes bytes{out};
    bytes.u32(2);                 // version 2: the patterns below are the document's own
    bytes.zeros(kHeaderSize - 4); // 38 patterns of 8 bytes (all white) and the padding
    for (int y = 0; y < kPaintHeight; ++y)
        // Format_Mono is most significant bit first, 1 for black: MacPaint's own layout.
        out.append(packBits(page.constScanLine(y), kRowBytes));
    // The data fork is padded to the wrapper's 128-byte blocks.
    QByteArray wrapped = macBinaryHeader(documentName, uint32_t(out.size()));
    wrapped.append(out);
    wrapped.append((128 - out.size() % 128) % 128, '\0');
    return file.write(wrapped) == wrapped.size() ? 0 : kWriteFailed;
}

} // namespace LegacyWriters
