#include "codec/BmpWriter.h"

#include "codec/ModernPixels.h"
#include "codec/RasterWriters.h"

#include <QIODevice>
#include <QImageWriter>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr int kFileHeaderBytes = 14;
constexpr int kInfoHeaderBytes = 40;
constexpr int kGreyPaletteBytes = 256 * 4;

void put16(std::vector<uint8_t>& out, uint16_t v) {
    out.push_back(uint8_t(v));
    out.push_back(uint8_t(v >> 8));
}
void put32(std::vector<uint8_t>& out, uint32_t v) {
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(uint8_t(v >> shift));
}

// The file header, the info header and, for 8 bits, the grey palette.
std::vector<uint8_t> headers(int w, int h, int bitsPerPixel, uint32_t imageBytes, float dpi) {
    const uint32_t paletteBytes = bitsPerPixel == 8 ? kGreyPaletteBytes : 0;
    const uint32_t offset = kFileHeaderBytes + kInfoHeaderBytes + paletteBytes;
    const auto ppm = uint32_t(dpi > 0 ? dotsPerMetre(dpi) : 0);
    std::vector<uint8_t> out;
    out.reserve(offset);
    out.push_back('B');
    out.push_back('M');
    put32(out, offset + imageBytes);
    put32(out, 0); // reserved
    put32(out, offset);
    put32(out, kInfoHeaderBytes);
    put32(out, uint32_t(w));
    put32(out, uint32_t(h)); // positive: the last row comes first
    put16(out, 1);           // planes
    put16(out, uint16_t(bitsPerPixel));
    put32(out, 0); // no compression
    put32(out, imageBytes);
    put32(out, ppm);
    put32(out, ppm);
    put32(out, bitsPerPixel == 8 ? 256 : 0); // colours in the palette
    put32(out, 0);                           // all of them matter
    for (uint32_t i = 0; i < paletteBytes / 4; ++i) {
        const auto grey = uint8_t(i);
        out.insert(out.end(), {grey, grey, grey, 0});
    }
    return out;
}

int16_t writeWithQtBmp(const QImage& picture, QIODevice& file) {
    QImageWriter writer(&file, "bmp");
    if (writer.write(picture))
        return 0;
    return writer.error() == QImageWriter::DeviceError ? kWriteFailed : kEncoderFailed;
}

} // namespace

int16_t writeBmp(const QImage& picture, QIODevice& file, float dpi) {
    if (ModernPixels::usesAlpha(picture)) {
        QImage withResolution = picture;
        recordResolution(withResolution, dpi);
        return writeWithQtBmp(withResolution, file);
    }
    const QImage image = ModernPixels::rowReadable(picture);
    if (image.isNull())
        return kOutOfMemory;
    const int w = image.width();
    const int h = image.height();
    const int samples = image.format() == QImage::Format_Grayscale8 ? 1 : 3;
    const int64_t rowBytes = int64_t(w) * samples;
    const int64_t stride = (rowBytes + 3) & ~int64_t(3);
    // The file's size is counted in 32 bits, its sides are signed 32-bit numbers.
    const int64_t imageBytes = stride * h;
    if (imageBytes + kFileHeaderBytes + kInfoHeaderBytes + kGreyPaletteBytes > 0xffffffffLL)
        return kTooLargeForFormat;

    const std::vector<uint8_t> head = headers(w, h, samples * 8, uint32_t(imageBytes), dpi);
    if (file.write(reinterpret_cast<const char*>(head.data()), qint64(head.size())) !=
        qint64(head.size()))
        return kWriteFailed;
    // Rows go out in chunks of about 256 KB, the last row of the picture first.
    const int rowsPerChunk = int(std::clamp<int64_t>((256 * 1024) / stride, 1, h));
    std::vector<uint8_t> chunk(size_t(stride) * size_t(rowsPerChunk), 0);
    for (int y = h - 1; y >= 0;) {
        const int rows = std::min(rowsPerChunk, y + 1);
        for (int r = 0; r < rows; ++r, --y) {
            uint8_t* row = chunk.data() + size_t(r) * size_t(stride);
            ModernPixels::opaqueRow(image, y, row);
            if (samples == 3)
                for (int64_t x = 0; x < rowBytes; x += 3)
                    std::swap(row[x], row[x + 2]); // R G B to B G R
        }
        const qint64 bytes = qint64(stride) * rows;
        if (file.write(reinterpret_cast<const char*>(chunk.data()), bytes) != bytes)
            return kWriteFailed;
    }
    return 0;
}
