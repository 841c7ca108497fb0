#pragma once

// Byte-level helpers for making image files by hand: fixed-width fields in either byte order,
// checksums, zlib and gzip streams, PNG chunks, JPEG markers and a small TIFF assembler. The
// hostile corpus uses them to write files whose headers say what no encoder would write.

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <random>

namespace CorpusBytes {

// ---------------------------------------------------------------- fields
void putBE16(QByteArray& b, qsizetype at, quint16 v);
void putBE32(QByteArray& b, qsizetype at, quint32 v);
void putLE16(QByteArray& b, qsizetype at, quint16 v);
void putLE32(QByteArray& b, qsizetype at, quint32 v);
quint16 getBE16(const QByteArray& b, qsizetype at);
quint32 getBE32(const QByteArray& b, qsizetype at);
quint16 getLE16(const QByteArray& b, qsizetype at);
quint32 getLE32(const QByteArray& b, qsizetype at);
QByteArray be16(quint16 v);
QByteArray be32(quint32 v);
QByteArray le16(quint16 v);
QByteArray le32(quint32 v);

// ---------------------------------------------------------------- streams and checksums
quint32 crc32(const QByteArray& data);
QByteArray zlibStream(const QByteArray& raw); // zlib header, deflate, Adler-32
QByteArray gzipStream(const QByteArray& raw); // gzip member holding `raw`

// ---------------------------------------------------------------- deterministic damage
// Every damaged file draws from its own generator, seeded from a fixed number, so that the
// corpus is the same on every run and machine.
std::mt19937 rng(quint32 seed);
QByteArray truncated(const QByteArray& b, qsizetype length);
QByteArray bitFlipped(const QByteArray& b, int flips, quint32 seed, qsizetype from = 0);
QByteArray zeroed(const QByteArray& b, qsizetype at, qsizetype length);
QByteArray randomBytes(qsizetype length, quint32 seed);

// ---------------------------------------------------------------- PNG
QByteArray pngChunk(const QByteArray& type, const QByteArray& body);
// The file with its IHDR width and height replaced and the chunk's CRC made right again.
QByteArray pngWithSize(const QByteArray& png, quint32 w, quint32 h);
// A PNG of w x h (8-bit, colour type `colour`) whose only IDAT is `idat`, raw.
QByteArray pngFile(quint32 w, quint32 h, quint8 colour, const QByteArray& idat,
                   const QByteArray& extraChunks = {});

// ---------------------------------------------------------------- JPEG
// Offset of the first start-of-frame marker (FFC0..FFCF but C4, C8, CC), or -1.
qsizetype jpegSofOffset(const QByteArray& jpeg);
// The file with its frame height and width replaced.
QByteArray jpegWithSize(const QByteArray& jpeg, quint16 w, quint16 h);

// ---------------------------------------------------------------- TIFF (little-endian)
enum TiffType : quint16 {
    kTiffByte = 1,
    kTiffAscii = 2,
    kTiffShort = 3,
    kTiffLong = 4,
    kTiffRational = 5,
    kTiffUndefined = 7
};
struct TiffField {
    quint16 tag;
    quint16 type;
    quint32 count;
    QByteArray data; // the values, little-endian; placed in the entry when four bytes or fewer
};
TiffField tiffShort(quint16 tag, QList<quint16> values);
TiffField tiffLong(quint16 tag, QList<quint32> values);
TiffField tiffRational(quint16 tag, quint32 num, quint32 den);

// The fields of a w x h, `spp` samples of 8 bits, uncompressed picture in one strip, strip
// offset filled in by tiffFile.
QList<TiffField> tiffBasicFields(quint32 w, quint32 h, quint16 spp, quint32 stripBytes);
// A classic TIFF: header, one IFD (fields sorted by tag; the StripOffsets field, tag 273, with
// a single value pointing at `strip`), out-of-line values, then the strip. With `sorted`
// false the fields stay in the order given, as a careless writer would leave them.
QByteArray tiffFile(QList<TiffField> fields, const QByteArray& strip, quint32 nextIfd = 0,
                    bool sorted = true);
// Offset of the first IFD's entry for `tag`, or -1.
qsizetype tiffEntryOffset(const QByteArray& tiff, quint16 tag);

} // namespace CorpusBytes
