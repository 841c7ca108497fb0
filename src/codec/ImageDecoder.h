#pragma once

#include <QImage>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <optional>

#include "codec/FormatRegistry.h"

// The decoder chain every image file goes through: the formats with readers of their own first
// (HEIC, AVIF and JPEG XL by content, camera RAW by suffix: ModernDecoders.h), then Qt's image
// readers (with the image-formats and SVG plugins), then Magick++ for what Qt cannot read, then
// poppler for PDF (first page).
// Every decoder runs under the limits of DecodeLimits.h; a refused or unreadable file comes
// back with ok == false and never crashes, hangs or allocates a giant buffer.

struct DecodedImage {
    bool ok = false;
    QImage image;     // RGB32, or ARGB32_Premultiplied (alpha kept); grey may stay Grayscale8;
                      // RGB888 from a decode for encoding (see Layout).
                      // Its colorSpace() is the one the file declares, or sRGB once converted.
    QSizeF pointSize; // size in points: pixels, or pixels x 72 / dpi when the file records a dpi
};

namespace ImageDecoder {

// Lower-case file-name extensions the chain can read (jpg, jpeg, png, psd, pdf, ...), each once.
// Listing Magick's loads all of its coder modules.
QStringList readableSuffixes();

// Those read by Qt's plugins, the PDF reader and the program's own readers: the list above
// without Magick's, had without loading Magick.
QStringList suffixesReadWithoutMagick();

// What a decode does with a picture whose file declares a colour space (an ICC profile):
// Display converts it to sRGB, for the screen and for what is computed from what the screen
// shows; Source keeps the file's pixels and colour space, for an export that can carry them.
enum class Colours { Display, Source };

// The pixel form a decode gives where its reader can choose. Drawing: Qt's 32-bit forms, which
// the screen and QPainter draw fastest. Encoding: for an export that writes the decoded pixels
// as they are, opaque JPEGs come as RGB888 (grey ones as Grayscale8), decoded straight into the
// bytes most encoders take, unless the file records a resolution other than 72 dpi (its export
// scales it: see writtenAsDecoded in ExportRenderer.h); a picture that must be drawn (turned,
// scaled) is drawn from RGB32.
enum class Layout { Drawing, Encoding };

// Whether a file recording dpiX x dpiY dots per inch (0 for none) has one point per pixel: no
// usable resolution, or 72.
bool pointsArePixels(double dpiX, double dpiY);

// Decodes the whole file, EXIF orientation applied.
DecodedImage decode(const QString& path, Colours colours = Colours::Display,
                    Layout layout = Layout::Drawing);

// The picture fitted within maxSide x maxSide pixels (never enlarged), for thumbnails: decoded
// at that size where the format allows (JPEG by DCT scaling or from the EXIF thumbnail when that
// is large enough, SVG and PDF drawn at that size), else decoded whole and scaled down. Same
// limits and orientation as decode(), converted for display; pointSize is left empty.
DecodedImage decodeScaled(const QString& path, int maxSide);

// What a file's header tells, read the way the decoder chain reads the file, before any pixel.
struct PictureHeader {
    OwnReader own = OwnReader::None; // the format's own reader, when it has one
    QByteArray qtFormat;             // Qt's reader's name for the format, when Qt reads it
    bool pdf = false;                // neither of those, and the file starts as a PDF does
    bool affordable = true; // false: the header is too costly to parse (FormatRow::headerCheck)
    QSize pixels;           // upright (EXIF orientation applied); invalid when the header won't
                            // say, and for QuickTime Image and FLIC, which must be decoded
    std::optional<Dpi> dpi; // the resolution the header records, for the formats read here
};

// The header of the file at `path`; nothing of it when the file is no readable regular file.
// Magick++'s formats and PDF are named only: their sizes come from their own measures.
PictureHeader readHeader(const QString& path);

// The size in points without decoding the pixels where the format allows; an empty size when
// the file cannot be read.
QSizeF measure(const QString& path);

} // namespace ImageDecoder
