#include "codec/PngWriter.h"

#include "codec/BandedDeflate.h"
#include "codec/ModernPixels.h"
#include "codec/PngChunks.h"
#include "codec/RasterWriters.h"

#include <QColorSpace>
#include <QIODevice>

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr size_t kBandBytes = size_t(2) << 20; // filtered rows compressed at a time

enum ColourType : uint8_t { kGrey = 0, kRgb = 2, kRgba = 6 };

void putBigEndian(uint8_t* at, uint32_t value) {
    at[0] = uint8_t(value >> 24);
    at[1] = uint8_t(value >> 16);
    at[2] = uint8_t(value >> 8);
    at[3] = uint8_t(value);
}

// Writes one chunk: length, type, data and the CRC of type and data.
bool writeChunk(QIODevice& file, const char type[5], const uint8_t* data, size_t size) {
    uint8_t head[8];
    putBigEndian(head, uint32_t(size));
    std::memcpy(head + 4, type, 4);
    uint8_t tail[4];
    uint32_t crc = libdeflate_crc32(0, head + 4, 4);
    if (size > 0) // given no data, libdeflate answers a fresh start, not the running value
        crc = libdeflate_crc32(crc, data, size);
    putBigEndian(tail, crc);
    return file.write(reinterpret_cast<const char*>(head), 8) == 8 &&
           (size == 0 ||
            file.write(reinterpret_cast<const char*>(data), qint64(size)) == qint64(size)) &&
           file.write(reinterpret_cast<const char*>(tail), 4) == 4;
}

bool writeChunk(QIODevice& file, const char type[5], const QByteArray& data) {
    return writeChunk(file, type, reinterpret_cast<const uint8_t*>(data.constData()),
                      size_t(data.size()));
}

// One row of the picture as the file's samples: grey, R G B or R G B A, straight alpha.
void rowSamples(const QImage& image, int y, ColourType type, uint8_t* out) {
    if (type == kRgba)
        ModernPixels::rgbaRow(image, y, out, true);
    else
        ModernPixels::opaqueRow(image, y, out);
}

uint8_t paeth(int a, int b, int c) {
    const int p = a + b - c;
    const int pa = std::abs(p - a);
    const int pb = std::abs(p - b);
    const int pc = std::abs(p - c);
    if (pa <= pb && pa <= pc)
        return uint8_t(a);
    return pb <= pc ? uint8_t(b) : uint8_t(c);
}

// The weight of a filtered row in the filter choice: its bytes taken as signed numbers, summed
// by their absolute values.
uint64_t weight(const uint8_t* row, size_t n) {
    uint64_t sum = 0;
    for (size_t i = 0; i < n; ++i)
        sum += row[i] < 128 ? row[i] : 256 - row[i];
    return sum;
}

// Filters the row `cur` (its predecessor `prev`, zeros for the first row) by each of the five
// filters and puts the lightest, behind its filter byte, at `out`.
class RowFilter {
public:
    RowFilter(size_t rowBytes, size_t bpp) : n(rowBytes), bpp(bpp) {
        for (auto& candidate : candidates)
            candidate.resize(n);
    }

    void filter(const uint8_t* cur, const uint8_t* prev, uint8_t* out) {
        uint8_t* sub = candidates[0].data();
        uint8_t* up = candidates[1].data();
        uint8_t* avg = candidates[2].data();
        uint8_t* pae = candidates[3].data();
        for (size_t i = 0; i < bpp; ++i) {
            sub[i] = cur[i];
            up[i] = uint8_t(cur[i] - prev[i]);
            avg[i] = uint8_t(cur[i] - (prev[i] >> 1));
            pae[i] = uint8_t(cur[i] - prev[i]); // Paeth of (0, up, 0) is up
        }
        for (size_t i = bpp; i < n; ++i) {
            sub[i] = uint8_t(cur[i] - cur[i - bpp]);
            up[i] = uint8_t(cur[i] - prev[i]);
            avg[i] = uint8_t(cur[i] - ((cur[i - bpp] + prev[i]) >> 1));
            pae[i] = uint8_t(cur[i] - paeth(cur[i - bpp], prev[i], prev[i - bpp]));
        }
        const uint8_t* best = cur;
        uint8_t bestType = 0;
        uint64_t least = weight(cur, n);
        for (uint8_t type = 1; type <= 4; ++type) {
            const uint64_t w = weight(candidates[type - 1].data(), n);
            if (w < least) {
                least = w;
                best = candidates[type - 1].data();
                bestType = type;
            }
        }
        out[0] = bestType;
        std::memcpy(out + 1, best, n);
    }

private:
    const size_t n;
    const size_t bpp;
    std::array<std::vector<uint8_t>, 4> candidates;
};

bool writeHeader(QIODevice& file, const QImage& image, ColourType type, float dpi,
                 const ImageMetadata& metadata) {
    static const uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    if (file.write(reinterpret_cast<const char*>(signature), 8) != 8)
        return false;
    uint8_t ihdr[13] = {};
    putBigEndian(ihdr, uint32_t(image.width()));
    putBigEndian(ihdr + 4, uint32_t(image.height()));
    ihdr[8] = 8; // bits a sample
    ihdr[9] = type;
    if (!writeChunk(file, "IHDR", ihdr, sizeof ihdr))
        return false;

    const QByteArray icc =
        image.colorSpace().isValid() ? image.colorSpace().iccProfile() : QByteArray();
    if (!icc.isEmpty()) {
        // A name, its terminator, the compression method (0, zlib) and the compressed profile.
        const QByteArray packed = PngChunks::zlibPacked(icc);
        if (packed.isEmpty() ||
            !writeChunk(file, "iCCP", QByteArray("ICC Profile\0\0", 13) + packed))
            return false;
    }

    // Without a resolution of its own the picture's is kept, as Qt's writers do.
    const int dpm = dpi > 0 ? dotsPerMetre(dpi) : 0;
    const int dpmX = dpm > 0 ? dpm : image.dotsPerMeterX();
    const int dpmY = dpm > 0 ? dpm : image.dotsPerMeterY();
    if (dpmX > 0 && dpmY > 0) {
        uint8_t phys[9] = {};
        putBigEndian(phys, uint32_t(dpmX));
        putBigEndian(phys + 4, uint32_t(dpmY));
        phys[8] = 1; // per metre
        if (!writeChunk(file, "pHYs", phys, sizeof phys))
            return false;
    }

    for (const PngChunks::Chunk& chunk : PngChunks::metadataChunks(metadata)) {
        if (!writeChunk(file, chunk.type, chunk.data))
            return false;
    }

    for (const QString& key : image.textKeys()) {
        // Keyword (Latin-1, 1 to 79 characters), uncompressed, no language, UTF-8 text.
        const QByteArray keyword = key.toLatin1().left(79);
        if (keyword.isEmpty() || keyword.contains('\0'))
            continue;
        QByteArray itxt = keyword;
        itxt.append(char(0)).append(char(0)).append(char(0)).append(char(0)).append(char(0));
        itxt.append(image.text(key).toUtf8());
        if (!writeChunk(file, "iTXt", itxt))
            return false;
    }
    return true;
}

} // namespace

int16_t writePng(const QImage& picture, QIODevice& file, float dpi, const ImageMetadata& metadata) {
    if (picture.isNull())
        return kNoPicture;
    const QImage image = ModernPixels::rowReadable(picture);
    if (image.isNull())
        return kOutOfMemory;

    ColourType type = kRgb;
    if (image.format() == QImage::Format_Grayscale8)
        type = kGrey;
    else if (ModernPixels::usesAlpha(image))
        type = kRgba;
    const size_t bpp = type == kGrey ? 1 : type == kRgb ? 3 : 4;
    const size_t rowBytes = size_t(image.width()) * bpp;

    if (!writeHeader(file, image, type, dpi, metadata))
        return kWriteFailed;

    std::vector<uint8_t> previous(rowBytes, 0);
    std::vector<uint8_t> current(rowBytes);
    RowFilter filter(rowBytes, bpp);
    const size_t rowsPerBand = std::max<size_t>(1, kBandBytes / (rowBytes + 1));
    std::vector<uint8_t> band(rowsPerBand * (rowBytes + 1));
    std::vector<uint8_t> packed;
    BandedDeflate deflate(PngChunks::kDeflateLevel);

    const int height = image.height();
    for (int y = 0; y < height;) {
        const int rows = int(std::min<size_t>(rowsPerBand, size_t(height - y)));
        for (int i = 0; i < rows; ++i, ++y) {
            rowSamples(image, y, type, current.data());
            filter.filter(current.data(), previous.data(),
                          band.data() + size_t(i) * (rowBytes + 1));
            current.swap(previous);
        }
        const bool last = y == height;
        if (!deflate.compress(std::span(band.data(), size_t(rows) * (rowBytes + 1)), last, packed))
            return kEncoderFailed;
        if (!writeChunk(file, "IDAT", packed.data(), packed.size()))
            return kWriteFailed;
    }
    return writeChunk(file, "IEND", nullptr, 0) ? 0 : kWriteFailed;
}
