#include "CorpusBytes.h"

#include <QtEndian>

#include <algorithm>

namespace CorpusBytes {

// ---------------------------------------------------------------- fields

namespace {

// Writes past the end grow the array: a header field may be set on a file cut short.
void ensure(QByteArray& b, qsizetype end) {
    if (b.size() < end)
        b.append(QByteArray(end - b.size(), '\0'));
}

} // namespace

void putBE16(QByteArray& b, qsizetype at, quint16 v) {
    ensure(b, at + 2);
    qToBigEndian<quint16>(v, b.data() + at);
}
void putBE32(QByteArray& b, qsizetype at, quint32 v) {
    ensure(b, at + 4);
    qToBigEndian<quint32>(v, b.data() + at);
}
void putLE16(QByteArray& b, qsizetype at, quint16 v) {
    ensure(b, at + 2);
    qToLittleEndian<quint16>(v, b.data() + at);
}
void putLE32(QByteArray& b, qsizetype at, quint32 v) {
    ensure(b, at + 4);
    qToLittleEndian<quint32>(v, b.data() + at);
}
quint16 getBE16(const QByteArray& b, qsizetype at) {
    return at + 2 <= b.size() ? qFromBigEndian<quint16>(b.constData() + at) : 0;
}
quint32 getBE32(const QByteArray& b, qsizetype at) {
    return at + 4 <= b.size() ? qFromBigEndian<quint32>(b.constData() + at) : 0;
}
quint16 getLE16(const QByteArray& b, qsizetype at) {
    return at + 2 <= b.size() ? qFromLittleEndian<quint16>(b.constData() + at) : 0;
}
quint32 getLE32(const QByteArray& b, qsizetype at) {
    return at + 4 <= b.size() ? qFromLittleEndian<quint32>(b.constData() + at) : 0;
}
QByteArray be16(quint16 v) {
    QByteArray b;
    putBE16(b, 0, v);
    return b;
}
QByteArray be32(quint32 v) {
    QByteArray b;
    putBE32(b, 0, v);
    return b;
}
QByteArray le16(quint16 v) {
    QByteArray b;
    putLE16(b, 0, v);
    return b;
}
QByteArray le32(quint32 v) {
    QByteArray b;
    putLE32(b, 0, v);
    return b;
}

// ---------------------------------------------------------------- streams and checksums

quint32 crc32(const QByteArray& data) {
    quint32 crc = 0xFFFFFFFFu;
    for (const char byte : data) {
        crc ^= uchar(byte);
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

QByteArray zlibStream(const QByteArray& raw) {
    // qCompress puts the length of the raw data in front of a plain zlib stream.
    return qCompress(raw, 9).mid(4);
}

QByteArray gzipStream(const QByteArray& raw) {
    const QByteArray z = zlibStream(raw);
    // The deflate data sits between zlib's two-byte header and its four-byte Adler-32.
    const QByteArray deflate = z.mid(2, z.size() - 6);
    // No time stamp, no name: the same bytes on every run.
    QByteArray g("\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\x03", 10);
    g += deflate;
    g += le32(crc32(raw));
    g += le32(quint32(raw.size()));
    return g;
}

// ---------------------------------------------------------------- deterministic damage

std::mt19937 rng(quint32 seed) {
    return std::mt19937(seed);
}

QByteArray truncated(const QByteArray& b, qsizetype length) {
    return b.left(std::clamp<qsizetype>(length, 0, b.size()));
}

QByteArray bitFlipped(const QByteArray& b, int flips, quint32 seed, qsizetype from) {
    QByteArray out = b;
    if (out.size() <= from)
        return out;
    std::mt19937 gen = rng(seed);
    const auto span = quint32(out.size() - from);
    for (int i = 0; i < flips; ++i) {
        const qsizetype at = from + qsizetype(gen() % span);
        out[at] = char(uchar(out[at]) ^ uchar(1u << (gen() % 8)));
    }
    return out;
}

QByteArray zeroed(const QByteArray& b, qsizetype at, qsizetype length) {
    QByteArray out = b;
    for (qsizetype i = at; i < at + length && i < out.size(); ++i)
        out[i] = '\0';
    return out;
}

QByteArray randomBytes(qsizetype length, quint32 seed) {
    std::mt19937 gen = rng(seed);
    QByteArray out(length, '\0');
    for (char& c : out)
        c = char(gen() & 0xFF);
    return out;
}

// ---------------------------------------------------------------- PNG

QByteArray pngChunk(const QByteArray& type, const QByteArray& body) {
    return be32(quint32(body.size())) + type + body + be32(crc32(type + body));
}

QByteArray pngWithSize(const QByteArray& png, quint32 w, quint32 h) {
    QByteArray out = png;
    // Signature (8), length (4), "IHDR" (4), then width and height; the CRC follows the 13
    // bytes of the chunk's body.
    putBE32(out, 16, w);
    putBE32(out, 20, h);
    putBE32(out, 29, crc32(out.mid(12, 17)));
    return out;
}

QByteArray pngFile(quint32 w, quint32 h, quint8 colour, const QByteArray& idat,
                   const QByteArray& extraChunks) {
    QByteArray ihdr(13, '\0');
    putBE32(ihdr, 0, w);
    putBE32(ihdr, 4, h);
    ihdr[8] = 8; // bits per sample
    ihdr[9] = char(colour);
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + pngChunk("IHDR", ihdr) + extraChunks +
           pngChunk("IDAT", idat) + pngChunk("IEND", {});
}

// ---------------------------------------------------------------- JPEG

qsizetype jpegSofOffset(const QByteArray& jpeg) {
    qsizetype at = 2;
    while (at + 4 <= jpeg.size()) {
        if (uchar(jpeg[at]) != 0xFF)
            return -1;
        const uchar marker = uchar(jpeg[at + 1]);
        if (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC)
            return at;
        if (marker == 0xDA)
            return -1; // scan data before any frame
        at += 2 + getBE16(jpeg, at + 2);
    }
    return -1;
}

QByteArray jpegWithSize(const QByteArray& jpeg, quint16 w, quint16 h) {
    QByteArray out = jpeg;
    const qsizetype sof = jpegSofOffset(out);
    if (sof < 0)
        return out;
    // Marker (2), length (2), precision (1), then height and width.
    putBE16(out, sof + 5, h);
    putBE16(out, sof + 7, w);
    return out;
}

// ---------------------------------------------------------------- TIFF

namespace {

quint32 typeSize(quint16 type) {
    switch (type) {
    case kTiffShort:
        return 2;
    case kTiffLong:
        return 4;
    case kTiffRational:
        return 8;
    default:
        return 1;
    }
}

} // namespace

TiffField tiffShort(quint16 tag, QList<quint16> values) {
    QByteArray data;
    for (quint16 v : values)
        data += le16(v);
    return {tag, kTiffShort, quint32(values.size()), data};
}

TiffField tiffLong(quint16 tag, QList<quint32> values) {
    QByteArray data;
    for (quint32 v : values)
        data += le32(v);
    return {tag, kTiffLong, quint32(values.size()), data};
}

TiffField tiffRational(quint16 tag, quint32 num, quint32 den) {
    return {tag, kTiffRational, 1, le32(num) + le32(den)};
}

QList<TiffField> tiffBasicFields(quint32 w, quint32 h, quint16 spp, quint32 stripBytes) {
    QList<quint16> bits(spp, 8);
    return {tiffLong(256, {w}),
            tiffLong(257, {h}),
            tiffShort(258, bits),
            tiffShort(259, {1}),                         // no compression
            tiffShort(262, {quint16(spp >= 3 ? 2 : 1)}), // RGB or black is zero
            tiffLong(273, {0}),                          // strip offset: filled in by tiffFile
            tiffShort(277, {spp}),
            tiffLong(278, {h}),
            tiffLong(279, {stripBytes}),
            tiffRational(282, 72, 1),
            tiffRational(283, 72, 1),
            tiffShort(296, {2})};
}

QByteArray tiffFile(QList<TiffField> fields, const QByteArray& strip, quint32 nextIfd,
                    bool sorted) {
    if (sorted)
        std::stable_sort(fields.begin(), fields.end(),
                         [](const TiffField& a, const TiffField& b) { return a.tag < b.tag; });
    const quint32 ifdAt = 8;
    const quint32 ifdSize = 2 + 12 * quint32(fields.size()) + 4;
    quint32 extraAt = ifdAt + ifdSize;
    QByteArray extra;
    QList<QByteArray> entries;
    for (const TiffField& f : fields) {
        QByteArray e = le16(f.tag) + le16(f.type) + le32(f.count);
        if (f.data.size() <= 4) {
            e += f.data + QByteArray(4 - f.data.size(), '\0');
        } else {
            e += le32(extraAt + quint32(extra.size()));
            extra += f.data;
            if (extra.size() % 2)
                extra += '\0'; // values start on a word boundary
        }
        entries += e;
    }
    const quint32 stripAt = extraAt + quint32(extra.size());
    QByteArray out("II*\0", 4);
    out += le32(ifdAt);
    out += le16(quint16(fields.size()));
    for (qsizetype i = 0; i < fields.size(); ++i) {
        QByteArray e = entries[i];
        // A single strip offset of 0 is the placeholder for "where the strip goes".
        if (fields[i].tag == 273 && fields[i].count == 1 && getLE32(fields[i].data, 0) == 0 &&
            typeSize(fields[i].type) == 4)
            putLE32(e, 8, stripAt);
        out += e;
    }
    out += le32(nextIfd);
    out += extra;
    out += strip;
    return out;
}

qsizetype tiffEntryOffset(const QByteArray& tiff, quint16 tag) {
    if (!tiff.startsWith("II"))
        return -1;
    const quint32 ifd = getLE32(tiff, 4);
    const quint16 count = getLE16(tiff, ifd);
    for (quint32 i = 0; i < count; ++i) {
        const qsizetype at = ifd + 2 + 12 * i;
        if (at + 12 > tiff.size())
            return -1;
        if (getLE16(tiff, at) == tag)
            return at;
    }
    return -1;
}

} // namespace CorpusBytes
