#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

struct libdeflate_compressor;

// One zlib stream made of bands compressed one at a time by libdeflate, which compresses only
// whole buffers: each band becomes a raw deflate stream of its own, whose closing block is
// turned into an ordinary one and followed by an empty stored block (as zlib's sync flush ends
// a band), so the bands follow one another as one stream. A band does not look back into the
// one before it; bands of a megabyte or more lose next to nothing by that.
class BandedDeflate {
public:
    explicit BandedDeflate(int level);
    ~BandedDeflate();
    BandedDeflate(const BandedDeflate&) = delete;
    BandedDeflate& operator=(const BandedDeflate&) = delete;

    // Compresses the next band into `out` (replacing what it held): the zlib header before the
    // first band, the Adler-32 trailer after the last. False when the compressor cannot be had
    // or a band's stream cannot be spliced.
    bool compress(std::span<const uint8_t> band, bool last, std::vector<uint8_t>& out);

private:
    libdeflate_compressor* compressor = nullptr;
    uint32_t adler = 1;
    bool started = false;
    std::vector<uint8_t> inflated; // where a band's stream is walked through to find its blocks
};
