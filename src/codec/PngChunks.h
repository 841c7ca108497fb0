#pragma once

#include "codec/ImageMetadata.h"

#include <QByteArray>

#include <vector>

// Chunks of a PNG file beyond its pixels, for the PNG writer.
namespace PngChunks {

// The zlib level of every compressed part of the writer's files: the pixels, the profile, the
// metadata.
constexpr int kDeflateLevel = 6;

struct Chunk {
    const char* type; // four letters
    QByteArray data;
};

// `bytes` compressed as one zlib stream (iCCP, zTXt); empty when that fails.
QByteArray zlibPacked(const QByteArray& bytes);

// The chunks that carry `metadata`, where the common readers look for them: EXIF and IPTC as
// zTXt "Raw profile type exif" / "Raw profile type iptc" (the block as hexadecimal text behind
// its name and length; EXIF behind its "Exif" marker, IPTC inside a Photoshop resource block),
// XMP as uncompressed iTXt "XML:com.adobe.xmp".
std::vector<Chunk> metadataChunks(const ImageMetadata& metadata);

} // namespace PngChunks
