#pragma once

#include <QString>

#include <array>
#include <cstdint>

#include "codec/FormatRegistry.h"

// The output-format table: entries 0 to 16 are raster formats written by an encoder chosen by
// its four-character subtype; 17 is PDF and 18 EPS; the modern raster formats (WebP, AVIF, HEIC,
// JPEG XL) follow from 19 on, so that the first nineteen indices keep their meaning.
// Codes are exactly four characters, trailing blanks included ("GIF ", "SGI ", "PDF "). The
// arrays are views of the format registry's rows, in table order.

constexpr int kFormatCount = FormatRegistry::kOutputCount;
constexpr int kLastRasterFormat = 16;
constexpr int kPdfFormat = 17;
constexpr int kEpsFormat = 18;
constexpr int kFirstModernFormat = 19;

// Whether the index names a raster format: 0 to 16, and 19 on.
constexpr bool isRasterFormat(int index) {
    return (index >= 0 && index <= kLastRasterFormat) ||
           (index >= kFirstModernFormat && index < kFormatCount);
}

// The encoder subtype of raster entry `index`; 0 for PDF, EPS and indices out of the table.
constexpr uint32_t rasterSubtype(int index) {
    return isRasterFormat(index) ? FormatRegistry::outputRow(index).subtype : 0;
}

namespace FormatTableDetail {
template <typename T, int N, typename Field> constexpr std::array<T, N> column(Field field) {
    std::array<T, N> out{};
    for (int i = 0; i < N; ++i)
        out[i] = field(FormatRegistry::outputRow(i));
    return out;
}
} // namespace FormatTableDetail

// Codes shown in the list and saved.
inline constexpr std::array<const char*, kFormatCount> gformats_ns =
    FormatTableDetail::column<const char*, kFormatCount>([](const FormatRow& r) { return r.code; });
// Encoder subtypes of entries 0 to 16 (rasterSubtype covers the modern entries too).
inline constexpr std::array<uint32_t, kLastRasterFormat + 1> gformats =
    FormatTableDetail::column<uint32_t, kLastRasterFormat + 1>(
        [](const FormatRow& r) { return r.subtype; });
// 1 where the encoder of a raster entry exists; written once at start-up.
extern uint8_t gformatExport[kFormatCount];

// Table index of a code, compared exactly; the first match wins ("PICS" is 1, never 14). -1
// when no entry has that code.
long formatIndexForCode(const QString& code);

// The output file's extension: "pdf", "eps", or the raster code itself, blank included.
QString outputExtension(int index);

// The output file's name for `source` in format `index`: the source's last path component
// without its last extension, a dot and the format's extension (a.b.wmf to PNG is a.b.PNGf).
// Defined with the rest of the destination naming (ControllerDestination.cpp).
QString outputFileName(const QString& source, int index);

// Whether the table index names a raster format whose picture keeps transparency where it
// does not cover the bitmap ("SGI ", "8BPS", "GIF ", "PNGf", "PNTG", "TIFF", "qtif").
bool formatKeepsTransparentBackground(int index);
