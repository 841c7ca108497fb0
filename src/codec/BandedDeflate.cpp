#include "codec/BandedDeflate.h"

#include <libdeflate.h>
#include <zlib.h>

#include <initializer_list>
#include <optional>

namespace {

// Where the closing block of a raw deflate stream starts and where the stream ends, in bits
// from its first byte (deflate packs bits from the low end of each byte). zlib's inflate, asked
// to stop at every block boundary, tells both; libdeflate has no such call.
struct StreamEnds {
    size_t lastBlockBit = 0;
    size_t endBit = 0;
};

std::optional<StreamEnds> streamEnds(const uint8_t* data, size_t size, size_t rawSize,
                                     std::vector<uint8_t>& scratch) {
    z_stream s{};
    if (inflateInit2(&s, -15) != Z_OK)
        return std::nullopt;
    scratch.resize(rawSize + 1);
    s.next_in = const_cast<Bytef*>(data);
    s.avail_in = uInt(size);
    s.next_out = scratch.data();
    s.avail_out = uInt(scratch.size());
    StreamEnds ends;
    std::optional<StreamEnds> result;
    bool ended = false;
    for (;;) {
        const int status = inflate(&s, Z_BLOCK);
        if (status == Z_STREAM_END) {
            if (ended && s.total_out == rawSize)
                result = ends;
            break;
        }
        if (status != Z_OK)
            break;
        // Stopped at the end of a block: before the next one's header, or, once the closing
        // block's header was read (64), at the end of the stream, before its padding bits.
        if (s.data_type & 128) {
            const size_t bitsUsed = size_t(s.total_in) * 8 - size_t(s.data_type & 7);
            if (s.data_type & 64) {
                ends.endBit = bitsUsed;
                ended = true;
            } else {
                ends.lastBlockBit = bitsUsed;
            }
        }
    }
    inflateEnd(&s);
    return result;
}

void appendBigEndian(std::vector<uint8_t>& out, uint32_t value) {
    out.push_back(uint8_t(value >> 24));
    out.push_back(uint8_t(value >> 16));
    out.push_back(uint8_t(value >> 8));
    out.push_back(uint8_t(value));
}

} // namespace

BandedDeflate::BandedDeflate(int level) : compressor(libdeflate_alloc_compressor(level)) {}

BandedDeflate::~BandedDeflate() {
    if (compressor)
        libdeflate_free_compressor(compressor);
}

bool BandedDeflate::compress(std::span<const uint8_t> band, bool last, std::vector<uint8_t>& out) {
    out.clear();
    if (!compressor)
        return false;
    if (!started) {
        out.push_back(0x78); // deflate, 32 KB window
        out.push_back(0x9c); // the default level's mark, header check included
        started = true;
    }
    const size_t head = out.size();
    out.resize(head + libdeflate_deflate_compress_bound(compressor, band.size()));
    const size_t packed = libdeflate_deflate_compress(compressor, band.data(), band.size(),
                                                      out.data() + head, out.size() - head);
    if (packed == 0)
        return false;
    out.resize(head + packed);
    adler = libdeflate_adler32(adler, band.data(), band.size());

    if (last) {
        appendBigEndian(out, adler);
        return true;
    }
    const std::optional<StreamEnds> ends =
        streamEnds(out.data() + head, packed, band.size(), inflated);
    if (!ends)
        return false;
    // The band's closing block becomes an ordinary one ...
    out[head + ends->lastBlockBit / 8] &= uint8_t(~(1u << (ends->lastBlockBit % 8)));
    // ... and an empty stored block brings the stream to a byte boundary. Its three header bits
    // (not final, stored) are zeros, like the padding after the band's last bit: where fewer than
    // three bits are left in the last byte, a zero byte takes the rest.
    out.resize(head + (ends->endBit + 7) / 8);
    const size_t bitsLeft = (8 - ends->endBit % 8) % 8;
    if (bitsLeft < 3)
        out.push_back(0);
    for (const uint8_t b : {0x00, 0x00, 0xff, 0xff}) // length 0 and its complement
        out.push_back(b);
    return true;
}
