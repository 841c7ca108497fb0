#include "codec/PngChunks.h"

#include <libdeflate.h>

#include <memory>

namespace {

void appendBigEndian(QByteArray& to, uint32_t value, int bytes) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        to.append(char(uint8_t(value >> shift)));
}

// A "raw profile": a line with the profile's name, one with its length in eight columns, then
// its bytes as hexadecimal, 36 bytes a line.
QByteArray rawProfileText(const char* name, const QByteArray& bytes) {
    QByteArray text =
        '\n' + QByteArray(name) + '\n' + QByteArray::number(bytes.size()).rightJustified(8, ' ');
    const QByteArray hex = bytes.toHex();
    for (qsizetype at = 0; at < hex.size(); at += 72)
        text += '\n' + hex.mid(at, 72);
    return text + '\n';
}

// A zTXt chunk's data: the keyword, its terminator, compression method 0 and the packed text.
QByteArray compressedText(const char* keyword, const QByteArray& text) {
    const QByteArray packed = PngChunks::zlibPacked(text);
    if (packed.isEmpty())
        return {};
    return QByteArray(keyword) + '\0' + '\0' + packed;
}

// The IPTC datasets as the one resource (0x0404, no name) of a Photoshop resource block.
QByteArray photoshopIptcResource(const QByteArray& iptc) {
    QByteArray block("8BIM\x04\x04\0\0", 8);
    appendBigEndian(block, uint32_t(iptc.size()), 4);
    block += iptc;
    if (iptc.size() % 2)
        block += '\0';
    return block;
}

} // namespace

namespace PngChunks {

QByteArray zlibPacked(const QByteArray& bytes) {
    const std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
        libdeflate_alloc_compressor(kDeflateLevel), &libdeflate_free_compressor);
    if (!compressor)
        return {};
    const size_t bound = libdeflate_zlib_compress_bound(compressor.get(), size_t(bytes.size()));
    QByteArray packed(qsizetype(bound), Qt::Uninitialized);
    const size_t size = libdeflate_zlib_compress(compressor.get(), bytes.constData(),
                                                 size_t(bytes.size()), packed.data(), bound);
    packed.resize(qsizetype(size));
    return packed;
}

std::vector<Chunk> metadataChunks(const ImageMetadata& metadata) {
    std::vector<Chunk> chunks;
    if (!metadata.exif.isEmpty()) {
        const QByteArray exif = QByteArray("Exif\0\0", 6) + metadata.exif;
        QByteArray data = compressedText("Raw profile type exif", rawProfileText("exif", exif));
        if (!data.isEmpty())
            chunks.push_back({"zTXt", std::move(data)});
    }
    if (!metadata.iptc.isEmpty()) {
        const QByteArray resource = photoshopIptcResource(metadata.iptc);
        QByteArray data = compressedText("Raw profile type iptc", rawProfileText("iptc", resource));
        if (!data.isEmpty())
            chunks.push_back({"zTXt", std::move(data)});
    }
    if (!metadata.xmp.isEmpty()) {
        // Keyword, uncompressed, no language, no translated keyword, the packet as UTF-8.
        chunks.push_back({"iTXt", QByteArray("XML:com.adobe.xmp\0\0\0\0\0", 22) + metadata.xmp});
    }
    return chunks;
}

} // namespace PngChunks
