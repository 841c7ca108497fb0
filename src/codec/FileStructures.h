#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QList>

#include <cstdint>
#include <functional>
#include <optional>

// Walks through the two structures that several header readers share: a JPEG's segments
// before its scan, and a TIFF's image file directories (a TIFF file, or the EXIF block inside
// a JPEG). Reads are bounded and hostile input gives "nothing there".
namespace FileStructures {

// A JPEG may carry any number of segments before its scan; cameras and editors write a few
// dozen at most, and a file with more than a thousand is hostile: no walk reads them all.
constexpr int kMaxJpegSegments = 1000;

// Calls visit(kind, length) for each JPEG segment before the first scan, with the device at
// the start of the segment's body of `length` bytes; the walk goes on to the next segment
// whatever visit read, and stops when visit returns false. Returns false when more than
// maxSegments segments come before the scan (the file's end or damage count as the scan).
bool walkJpegSegments(QIODevice& file, int maxSegments,
                      const std::function<bool(uint8_t kind, int length)>& visit);

// A JPEG's frame header (its first start-of-frame segment): size, coding and each colour
// component's sampling factors.
struct JpegFrame {
    int width = 0;
    int height = 0;
    bool progressive = false;
    struct Component {
        int horizontal = 1; // sampling factors, 1 to 4
        int vertical = 1;
    };
    QList<Component> components; // 1 (grey) to 4 (CMYK); empty when the header cuts them short

    // Every DCT coefficient of the frame, 2 bytes each, in whole 8 x 8 blocks per component at
    // its own sampling: what a progressive decoder keeps until its last scan.
    int64_t coefficientBytes() const;
};

// The frame header found within the first maxSegments segments, or nothing for a file that is
// no JPEG or whose segments do not lead to a frame before the scan.
std::optional<JpegFrame> jpegFrame(QIODevice& file, int maxSegments);

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
