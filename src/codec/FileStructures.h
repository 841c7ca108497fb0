#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QList>

#include <cstdint>
#include <functional>

// Walks through the two structures that several header readers share: a JPEG's segments
// before its scan, and a TIFF's image file directories (a TIFF file, or the EXIF block inside
// a JPEG). Reads are bounded and hostile input gives "nothing there".
namespace FileStructures {

// Calls visit(kind, length) for each JPEG segment before the first scan, with the device at
// the start of the segment's body of `length` bytes; the walk goes on to the next segment
// whatever visit read, and stops when visit returns false. Returns false when more than
// maxSegments segments come before the scan (the file's end or damage count as the scan).
bool walkJpegSegments(QIODevice& file, int maxSegments,
                      const std::function<bool(uint8_t kind, int length)>& visit);

// The TIFF structure of a JPEG's first EXIF segment (the APP1 body after "Exif\0\0"), looked
// for within the first maxSegments segments, or empty.
QByteArray jpegExifBlock(QIODevice& file, int maxSegments);

// One entry of a TIFF directory.
struct TiffEntry {
    uint16_t tag = 0;
    uint16_t type = 0;
    uint32_t count = 0;
    uint32_t field = 0; // the value itself (SHORT or LONG, count 1) or its offset
};

// A TIFF structure on a device: its byte order and directories.
class TiffReader {
public:
    explicit TiffReader(QIODevice& file); // reads the header
    bool valid() const { return ok; }
    uint32_t firstDirectory() const { return first; }

    // The entries of the directory at `offset`, and where the next directory starts (0: none).
    QList<TiffEntry> directory(uint32_t offset, uint32_t* next = nullptr) const;
    // A SHORT or LONG value of count 1, or -1.
    static int64_t integer(const TiffEntry& entry);
    // A RATIONAL value of count 1, or 0.
    double rational(const TiffEntry& entry) const;

private:
    uint16_t u16(const uchar* p) const;
    uint32_t u32(const uchar* p) const;

    QIODevice& file;
    bool little = true;
    bool ok = false;
    uint32_t first = 0;
};

} // namespace FileStructures
