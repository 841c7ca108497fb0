#pragma once

#include <QString>
#include <cstdint>

// The output-format table: nineteen entries, indexed 0 to 18. Entries 0 to 16 are raster
// formats written by an encoder chosen by its four-character subtype; 17 is PDF and 18 EPS.
// Codes are exactly four characters, trailing blanks included ("GIF ", "SGI ", "PDF ").

constexpr int kFormatCount = 19;
constexpr int kLastRasterFormat = 16;
constexpr int kPdfFormat = 17;
constexpr int kEpsFormat = 18;

// A four-character code as a big-endian 32-bit number ('JPEG', '.SGI').
constexpr uint32_t fourCharCode(const char (&code)[5]) {
    return (uint32_t(uint8_t(code[0])) << 24) | (uint32_t(uint8_t(code[1])) << 16) |
           (uint32_t(uint8_t(code[2])) << 8) | uint32_t(uint8_t(code[3]));
}

extern const char* const gformats_ns[kFormatCount]; // codes shown in the list and saved
extern const uint32_t gformats[kLastRasterFormat + 1]; // encoder subtypes of entries 0 to 16
extern uint8_t gformatExport[kFormatCount];            // 1 where the encoder exists (0 to 16)

// Table index of a code, compared exactly; the first match wins ("PICS" is 1, never 14). -1
// when no entry has that code.
long formatIndexForCode(const QString& code);

// The output file's extension: "pdf", "eps", or the raster code itself, blank included.
QString outputExtension(int index);

// Whether the table index names a raster format whose picture keeps transparency where it
// does not cover the bitmap ("SGI ", "8BPS", "GIF ", "PNGf", "PNTG", "TIFF", "qtif").
bool formatKeepsTransparentBackground(int index);
