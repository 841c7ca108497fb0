#pragma once

#include <cstdint>

// Size limits for every decoder, set here once. Large enough for a 200-megapixel photograph,
// small enough to refuse a decompression bomb before its buffer is allocated.
namespace DecodeLimits {
constexpr int64_t kMaxPixels = 300'000'000; // width x height
constexpr int kMaxSide = 65'535;            // either dimension
constexpr int kAllocationLimitMB = 1'400;   // QImageReader's allocation limit (4 bytes a pixel)
// No file larger than this is handed to a decoder that maps or reads it whole: an uncompressed
// 8-bit RGBA picture of kMaxPixels is 1.2 GB; a larger file is a sparse or padded fake.
constexpr int64_t kMaxFileBytes = int64_t(2) << 30;
} // namespace DecodeLimits
