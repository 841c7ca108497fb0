#pragma once

#include <QByteArrayView>
#include <QStringList>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "codec/HeaderReaders.h"

// Everything the program knows of an image format, one row a format: the code it is offered
// and saved under, the encoder that writes it, whether its pictures keep transparency, the
// file-name suffixes it is read under, which reader reads it (Qt, Magick or the program's own)
// and how its header gives the resolution. The output-format table, the writers' dispatch and the readable-types list are
// all derived from these rows; adding a format means adding a row and its reader or writer.

// A four-character code as a big-endian 32-bit number ('JPEG', '.SGI').
constexpr uint32_t fourCharCode(const char (&code)[5]) {
    return (uint32_t(uint8_t(code[0])) << 24) | (uint32_t(uint8_t(code[1])) << 16) |
           (uint32_t(uint8_t(code[2])) << 8) | uint32_t(uint8_t(code[3]));
}

enum class Encoder {
    None,   // not written on this platform (yet)
    Qt,     // QImageWriter, by `coder` as Qt's format name
    Magick, // Magick++, by `coder` as Magick's coder name
    Bmp,    // the program's BMP writer (Qt's for pictures with transparency)
    Gif,    // the program's GIF writer (libimagequant and giflib)
    Png,    // the program's PNG writer (libdeflate)
    Tiff,   // the program's TIFF writer (libtiff)
    Pdf,    // the program's PDF writer
    Eps,    // the program's EPS writer
    Webp,   // libwebp (ModernWriters.h)
    Heif,   // libheif, by `coder` as the compression ("HEIC", "AVIF")
    Jxl,    // libjxl
    Legacy, // the program's writers of the older formats (codec/legacy/), by `coder`
};

// Who reads a format's files ahead of the general chain (Qt's readers, then Magick++): the
// formats whose own library reads them under the program's limits (ModernDecoders.h).
enum class OwnReader {
    None, // Qt or Magick++, by content
    Heif, // libheif: HEIC and AVIF
    Jxl,  // libjxl
    Raw,  // libraw: camera RAW, taken by suffix (the files share no signature)
    QuickTimeImage, // the program's own (legacy/QuickTimeImage.h), by suffix
    Flic, // FFmpeg's flic reader under the program's limits (legacy/LegacyReaders.h), by suffix
};

using HeaderDpiReader = std::optional<Dpi> (*)(QIODevice&);
using HeaderCheck = bool (*)(QIODevice&);

struct FormatRow {
    const char* code; // output code, exactly four characters ("GIF "); nullptr: read only
    uint32_t subtype; // the encoder's subtype ('.SGI' for "SGI "); 0 for none
    Encoder encoder;
    const char* coder;         // encoder name for Qt or Magick; nullptr for the others
    const char* extension;     // output extension; nullptr: the code itself, blank included
    bool keepsTransparency;    // uncovered parts of the bitmap stay transparent
    const char* suffixes;      // file-name suffixes it is read under, lower case, blank-separated
    const char* qtReader;      // Qt's name for it when Qt reads it ("jpeg"), else nullptr
    const char* magickCoders;  // Magick coders that read it ("JPEG JPG PJPEG"), else nullptr
    HeaderDpiReader headerDpi; // resolution from the header alone; nullptr: from the decode
    HeaderCheck headerCheck;   // false for a header too costly to parse; nullptr: no check
    // What an output of the format carries beside its pixels: an ICC profile (else its pixels
    // are converted to sRGB), and EXIF, XMP and IPTC (see ImageMetadata.h).
    bool holdsProfile = false;
    bool holdsMetadata = false;
    OwnReader ownReader = OwnReader::None;
};

namespace FormatRegistry {

using namespace HeaderReaders;
constexpr Encoder kQt = Encoder::Qt;
constexpr Encoder kMagick = Encoder::Magick;
constexpr Encoder kNone = Encoder::None;
constexpr Encoder kLegacy = Encoder::Legacy;

// clang-format off
inline constexpr FormatRow kRows[] = {
  // code    subtype               encoder  coder  ext    transp. suffixes               Qt      Magick                      header            profile, metadata, own reader
  {"MooV", fourCharCode("MooV"), kLegacy, "movie", nullptr, false, "",                   nullptr, nullptr,                    nullptr, nullptr},
  {"PICS", fourCharCode("PICS"), kNone,   nullptr, nullptr, false, "",                   nullptr, nullptr,                    nullptr, nullptr},
  {"SGI ", fourCharCode(".SGI"), kMagick, "SGI",   nullptr, true,  "sgi",                nullptr, "SGI",                      nullptr, nullptr},
  {"8BPS", fourCharCode("8BPS"), kMagick, "PSD",   nullptr, true,  "psd",                nullptr, "PSD",                      nullptr, nullptr, true, true},
  {"BMPf", fourCharCode("BMPf"), Encoder::Bmp, "bmp",   nullptr, false, "bmp dib",            "bmp",   "BMP BMP2 BMP3",            bmpDpi, nullptr},
  {"FPix", fourCharCode("FPix"), kNone,   nullptr, nullptr, false, "",                   nullptr, nullptr,                    nullptr, nullptr},
  {"GIF ", fourCharCode("GIF "), Encoder::Gif, "GIF",   nullptr, true,  "gif",                "gif",   "GIF GIF87",                nullptr, nullptr},
  {"JPEG", fourCharCode("JPEG"), kQt,     "jpeg",  nullptr, false, "jpg jpeg jpe",       "jpeg",  "JPEG JPG JPE PJPEG JPS",    jpegDpi, jpegSegmentsWithinBudget, true, true},
  {"PNGf", fourCharCode("PNGf"), Encoder::Png, "png",   nullptr, true,  "png",                "png",   "PNG PNG00 PNG8 PNG24 PNG32 PNG48 PNG64", pngDpi, nullptr, true, true},
  {"PNTG", fourCharCode("PNTG"), kLegacy, "paint", nullptr, true,  "mac pntg",           nullptr, "MAC",                      nullptr, nullptr},
  {"TIFF", fourCharCode("TIFF"), Encoder::Tiff, "tiff",  nullptr, true,  "tif tiff",           "tiff",  nullptr,                    tiffDpi, nullptr, true, true},
  {"TPIC", fourCharCode("TPIC"), kMagick, "TGA",   nullptr, false, "tga",                "tga",   "TGA",                      nullptr, nullptr},
  {"qdgx", fourCharCode("qdgx"), kNone,   nullptr, nullptr, false, "",                   nullptr, nullptr,                    nullptr, nullptr},
  {"qtif", fourCharCode("qtif"), kLegacy, "qtimage", nullptr, true, "qtif qti",          nullptr, nullptr,                    nullptr, nullptr, false, false, OwnReader::QuickTimeImage},
  {"FLC ", fourCharCode("FLC "), kLegacy, "flic",  nullptr, false, "flc fli",            nullptr, nullptr,                    nullptr, nullptr, false, false, OwnReader::Flic},
  {"SWFL", fourCharCode("SWFL"), kLegacy, "swf",   nullptr, false, "",                   nullptr, nullptr,                    nullptr, nullptr},
  {"PDF ", 0,                    Encoder::Pdf, nullptr, "pdf", false, "pdf",             nullptr, nullptr,                    nullptr, nullptr},
  {"EPS ", 0,                    Encoder::Eps, nullptr, "eps", false, "",                nullptr, nullptr,                    nullptr, nullptr},
  // Read only: formats whose Magick coders go by other names than their files' suffixes.
  {nullptr, 0, kNone, nullptr, nullptr, false, "pict pct pic",  nullptr, "PICT PCT",      nullptr, pictVersionPresent},
  {nullptr, 0, kNone, nullptr, nullptr, false, "ico",           "ico",   "ICON",          nullptr, nullptr},
  {nullptr, 0, kNone, nullptr, nullptr, false, "six sixel",     nullptr, "SIXEL SIX",     nullptr, nullptr},
  {nullptr, 0, kNone, nullptr, nullptr, false, "fits fts",      nullptr, "FITS FTS",      nullptr, nullptr},
  {nullptr, 0, kNone, nullptr, nullptr, false, "cal cals",      nullptr, "CALS CAL",      nullptr, nullptr},
  {nullptr, 0, kNone, nullptr, nullptr, false, "psb",           nullptr, "PSB",           nullptr, nullptr},
  {nullptr, 0, kNone, nullptr, nullptr, false, "jbg jbig bie",  nullptr, "JBIG JBG BIE",  nullptr, jbigPageWithinLimits},
  // Variants of coders above, or containers of other coders, with no suffix of their own.
  {nullptr, 0, kNone, nullptr, nullptr, false, "",              nullptr, "DXT1 DXT5 PCDS WMZ SVGZ XV VDA", nullptr, nullptr},
  // Modern formats, written and read by their own libraries (output entries 19 to 22).
  {"WEBP", fourCharCode("WEBP"), Encoder::Webp, "WEBP", nullptr, true, "webp",        "webp",  "WEBP",        nullptr, nullptr, true, true},
  {"AVIF", fourCharCode("AVIF"), Encoder::Heif, "AVIF", nullptr, true, "avif",        nullptr, "AVIF",        nullptr, nullptr, true, true, OwnReader::Heif},
  {"HEIC", fourCharCode("HEIC"), Encoder::Heif, "HEIC", nullptr, true, "heic heif hif", nullptr, "HEIC HEIF", nullptr, nullptr, true, true, OwnReader::Heif},
  {"JXL ", fourCharCode("JXL "), Encoder::Jxl,  "JXL",  nullptr, true, "jxl",         nullptr, "JXL",         nullptr, nullptr, true, true, OwnReader::Jxl},
  // Camera RAW: libraw demosaics them; thumbnails come from the camera's embedded preview.
  {nullptr, 0, kNone, nullptr, nullptr, false, "dng cr2 cr3 crw nef nrw arw srf sr2 orf raf rw2 pef srw rwl 3fr erf kdc dcr mrw x3f iiq mos",
   nullptr, "DNG CR2 CR3 CRW NEF NRW ARW SRF SR2 ORF RAF RW2 PEF SRW RWL 3FR ERF KDC DCR MRW X3F IIQ MOS", nullptr, nullptr, false, false, OwnReader::Raw},
};
// clang-format on

// The output-format table, in the order of its indices 0 to 22. Entry 14 repeats entry 1:
// both are "PICS", and the first match wins wherever a code is looked up.
inline constexpr std::string_view kOutputOrder[] = {
    "MooV", "PICS", "SGI ", "8BPS", "BMPf", "FPix", "GIF ", "JPEG", "PNGf", "PNTG",
    "TIFF", "TPIC", "qdgx", "qtif", "PICS", "FLC ", "SWFL", "PDF ", "EPS ",
    // Appended after the original nineteen, whose indices keep their meaning.
    "WEBP", "AVIF", "HEIC", "JXL "};
inline constexpr int kOutputCount = int(std::size(kOutputOrder));

constexpr const FormatRow& rowForCode(std::string_view code) {
    for (const FormatRow& row : kRows)
        if (row.code && std::string_view(row.code) == code)
            return row;
    throw "no row has this code"; // a compile-time error where used in a constant expression
}

// The row of output-table entry `index` (0 to 22).
constexpr const FormatRow& outputRow(int index) {
    return rowForCode(kOutputOrder[index]);
}

// The row whose encoder has the subtype, or nullptr.
const FormatRow* rowForSubtype(uint32_t subtype);

// The row of Qt's reader name ("jpeg"), or nullptr.
const FormatRow* rowForQtReader(QByteArrayView name);

// The row that lists the Magick coder ("JPG"), or nullptr.
const FormatRow* rowForMagickCoder(QByteArrayView coder);

// The suffixes a Magick coder's files are read under: its row's suffixes, none for a variant
// listed without suffixes, and the coder's own name in lower case for a coder of no row.
QStringList suffixesOfMagickCoder(QByteArrayView coder);

// The coder to name for a file suffix (lower case) when the content alone does not tell
// (MacPaint, Targa, PICT have no signature): the first Magick coder of its row, or empty.
QByteArray magickCoderForSuffix(const QString& suffix);

// The own reader of files with this suffix (lower case), OwnReader::None for the others.
OwnReader ownReaderForSuffix(const QString& suffix);

// The suffixes of every row read by an own reader.
QStringList ownReaderSuffixes();

} // namespace FormatRegistry
