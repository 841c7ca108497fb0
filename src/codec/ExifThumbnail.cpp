#include "codec/ExifThumbnail.h"

#include <cstdint>

namespace {

// A JPEG keeps its EXIF block in one of the first segments; past this many it has none.
constexpr int kMaxSegments = 32;
constexpr uint16_t kTagCompression = 0x0103;
constexpr uint16_t kTagJpegOffset = 0x0201;
constexpr uint16_t kTagJpegLength = 0x0202;
constexpr uint16_t kJpegCompression = 6;

class TiffBlock {
public:
    explicit TiffBlock(QByteArray bytes) : data(std::move(bytes)) {}

    bool readHeader() {
        if (data.size() < 8)
            return false;
        if (data.startsWith("II*\0"))
            little = true;
        else if (data.startsWith(QByteArray("MM\0*", 4)))
            little = false;
        else
            return false;
        return true;
    }

    bool in(int64_t at, int64_t size) const { return at >= 0 && size >= 0 && at + size <= data.size(); }

    uint16_t u16(int64_t at) const {
        const auto* p = reinterpret_cast<const uint8_t*>(data.constData() + at);
        return little ? uint16_t(p[0] | p[1] << 8) : uint16_t(p[0] << 8 | p[1]);
    }

    uint32_t u32(int64_t at) const {
        const auto* p = reinterpret_cast<const uint8_t*>(data.constData() + at);
        return little ? uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 |
                            uint32_t(p[3]) << 24
                      : uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 |
                            uint32_t(p[3]);
    }

    // The value of a SHORT or LONG entry, read where the entry keeps it.
    int64_t value(int64_t entry) const {
        const uint16_t type = u16(entry + 2);
        if (type == 3)
            return u16(entry + 8);
        if (type == 4)
            return u32(entry + 8);
        return -1;
    }

    QByteArray data;
    bool little = true;
};

// The payload of the APP1 segment that starts with "Exif\0\0", or empty.
QByteArray exifSegment(QIODevice& file) {
    if (!file.seek(0) || file.read(2) != QByteArray("\xFF\xD8", 2))
        return {};
    for (int i = 0; i < kMaxSegments; ++i) {
        const QByteArray marker = file.read(4);
        if (marker.size() < 4 || uint8_t(marker[0]) != 0xFF)
            return {};
        const uint8_t kind = uint8_t(marker[1]);
        if (kind == 0xDA || kind == 0xD9) // start of scan or end of image: no EXIF before it
            return {};
        const int length = (uint8_t(marker[2]) << 8 | uint8_t(marker[3])) - 2;
        if (length < 0)
            return {};
        if (kind == 0xE1) {
            const QByteArray payload = file.read(length);
            if (payload.size() == length && payload.startsWith(QByteArray("Exif\0\0", 6)))
                return payload.mid(6);
        } else if (!file.seek(file.pos() + length)) {
            return {};
        }
    }
    return {};
}

} // namespace

namespace ExifThumbnail {

QByteArray read(QIODevice& file) {
    TiffBlock tiff(exifSegment(file));
    if (!tiff.readHeader())
        return {};
    // The first directory describes the main picture; the one after it, the thumbnail.
    const int64_t ifd0 = tiff.u32(4);
    if (!tiff.in(ifd0, 2))
        return {};
    const int64_t count0 = tiff.u16(ifd0);
    if (!tiff.in(ifd0 + 2 + count0 * 12, 4))
        return {};
    const int64_t ifd1 = tiff.u32(ifd0 + 2 + count0 * 12);
    if (ifd1 == 0 || !tiff.in(ifd1, 2))
        return {};
    const int64_t count1 = tiff.u16(ifd1);
    if (!tiff.in(ifd1 + 2, count1 * 12))
        return {};
    int64_t offset = -1, length = -1, compression = kJpegCompression;
    for (int64_t i = 0; i < count1; ++i) {
        const int64_t entry = ifd1 + 2 + i * 12;
        switch (tiff.u16(entry)) {
        case kTagCompression:
            compression = tiff.value(entry);
            break;
        case kTagJpegOffset:
            offset = tiff.value(entry);
            break;
        case kTagJpegLength:
            length = tiff.value(entry);
            break;
        default:
            break;
        }
    }
    if (compression != kJpegCompression || length <= 0 || !tiff.in(offset, length))
        return {};
    return tiff.data.mid(offset, length);
}

} // namespace ExifThumbnail
