#include "codec/ExifThumbnail.h"

#include "codec/FileStructures.h"

#include <QBuffer>

namespace {

// A JPEG keeps its EXIF block in one of the first segments; past this many it has none.
constexpr int kMaxSegments = 32;
constexpr uint16_t kTagCompression = 0x0103;
constexpr uint16_t kTagJpegOffset = 0x0201;
constexpr uint16_t kTagJpegLength = 0x0202;
constexpr int64_t kJpegCompression = 6;

} // namespace

namespace ExifThumbnail {

QByteArray read(QIODevice& file) {
    QByteArray block = FileStructures::jpegExifBlock(file, kMaxSegments);
    QBuffer buffer(&block);
    if (block.isEmpty() || !buffer.open(QIODevice::ReadOnly))
        return {};
    using FileStructures::TiffReader;
    const TiffReader tiff(buffer);
    if (!tiff.valid())
        return {};
    // The first directory describes the main picture; the one after it, the thumbnail.
    uint32_t second = 0;
    tiff.directory(tiff.firstDirectory(), &second);
    if (second == 0)
        return {};
    int64_t offset = -1, length = -1, compression = kJpegCompression;
    for (const FileStructures::TiffEntry& entry : tiff.directory(second)) {
        if (entry.tag == kTagCompression)
            compression = TiffReader::integer(entry);
        else if (entry.tag == kTagJpegOffset)
            offset = TiffReader::integer(entry);
        else if (entry.tag == kTagJpegLength)
            length = TiffReader::integer(entry);
    }
    if (compression != kJpegCompression || offset < 0 || length <= 0 ||
        offset + length > block.size())
        return {};
    return block.mid(offset, length);
}

} // namespace ExifThumbnail
