#pragma once

#include <QIODevice>

#include <optional>

// Resolution readers that look only at a file's header, never at its pixels. Each takes a
// device positioned anywhere (it seeks itself) and gives the dots per inch the file records, or
// nothing when it records none (or only an aspect ratio). Hostile input gives nothing; no
// reader reads more than a bounded number of bytes.

struct Dpi {
    double x = 0;
    double y = 0;
};

namespace HeaderReaders {

std::optional<Dpi> pngDpi(QIODevice& file);  // pHYs chunk, up to the first image data
std::optional<Dpi> jpegDpi(QIODevice& file); // JFIF density, else the EXIF resolution
std::optional<Dpi> bmpDpi(QIODevice& file);  // info header (the old core header has none)
std::optional<Dpi> tiffDpi(QIODevice& file); // first directory's X/Y resolution and unit

// Whether a JPEG's segments before its first scan are few enough to parse: a file of a few
// kilobytes can hold tens of thousands of comment segments, each of which a decoder would keep.
bool jpegSegmentsWithinBudget(QIODevice& file);

// Whether a JBIG file's page is within the decode limits: libjbig allocates the declared page
// whole before reading a row, and ends the process when that fails.
bool jbigPageWithinLimits(QIODevice& file);

// Whether a PICT file begins its drawing with a version opcode, after its 512-byte preamble or
// without one. The PICT decoder reads a file that does not byte by byte to its end: seconds a
// hundred megabytes.
bool pictVersionPresent(QIODevice& file);

} // namespace HeaderReaders
