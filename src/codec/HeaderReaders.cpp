#include "codec/HeaderReaders.h"

#include "codec/DecodeLimits.h"

#include <QBuffer>
#include <QByteArray>
#include <QtEndian>

namespace HeaderReaders {

namespace {

// A JPEG may carry any number of segments before its scan; a file with tens of thousands of
// them is hostile, and the walk gives up rather than read them all.
constexpr int kMaxJpegSegments = 1000;
// Cameras and editors write a few dozen segments at most; a thousand is already absurd.
constexpr int kJpegSegmentBudget = 1000;
constexpr int kMaxPngChunks = 10000;

std::optional<Dpi> inches(double x, double y) {
    return Dpi{x, y};
}

std::optional<Dpi> centimetres(double x, double y) {
    return Dpi{x * 2.54, y * 2.54};
}

// The resolution of the Exif APP1 segment's body: a TIFF structure whose offsets count from
// the start of its own header, so the TIFF reader reads it as it is.
std::optional<Dpi> exifDpi(const QByteArray& body) {
    QByteArray tiff = body.mid(6); // after "Exif\0\0"
    QBuffer buffer(&tiff);
    if (!buffer.open(QIODevice::ReadOnly))
        return std::nullopt;
    return tiffDpi(buffer);
}

} // namespace

std::optional<Dpi> pngDpi(QIODevice& file) {
    if (!file.seek(8))
        return std::nullopt;
    for (int chunks = 0; chunks < kMaxPngChunks; ++chunks) {
        uchar head[8];
        if (file.read(reinterpret_cast<char*>(head), 8) != 8)
            return std::nullopt;
        const quint32 length = qFromBigEndian<quint32>(head);
        const QByteArray type(reinterpret_cast<const char*>(head + 4), 4);
        if (type == "IDAT" || type == "IEND")
            return std::nullopt;
        if (type == "pHYs" && length == 9) {
            uchar body[9];
            if (file.read(reinterpret_cast<char*>(body), 9) != 9 || body[8] != 1)
                return std::nullopt; // unit 0 gives only the aspect ratio
            return Dpi{qFromBigEndian<quint32>(body) * 0.0254,
                       qFromBigEndian<quint32>(body + 4) * 0.0254};
        }
        if (!file.seek(file.pos() + qint64(length) + 4))
            return std::nullopt;
    }
    return std::nullopt;
}

std::optional<Dpi> jpegDpi(QIODevice& file) {
    if (!file.seek(2))
        return std::nullopt;
    std::optional<Dpi> exif;
    for (int segments = 0; segments < kMaxJpegSegments; ++segments) {
        uchar marker[4];
        if (file.read(reinterpret_cast<char*>(marker), 4) != 4 || marker[0] != 0xFF)
            break;
        if (marker[1] == 0xDA || marker[1] == 0xD9)
            break;
        const int length = qFromBigEndian<quint16>(marker + 2);
        if (length < 2)
            break;
        const qint64 next = file.pos() + length - 2;
        if (marker[1] == 0xE0 && length >= 16) {
            uchar app0[12];
            if (file.read(reinterpret_cast<char*>(app0), 12) != 12)
                break;
            if (QByteArray(reinterpret_cast<const char*>(app0), 5) == QByteArray("JFIF", 5)) {
                const int unit = app0[7];
                const double x = qFromBigEndian<quint16>(app0 + 8),
                             y = qFromBigEndian<quint16>(app0 + 10);
                // A JFIF density with a unit is what the file says; unit 0 is an aspect ratio
                // only, and then a camera's EXIF resolution (usually later) is the answer.
                if (unit == 1)
                    return inches(x, y);
                if (unit == 2)
                    return centimetres(x, y);
            }
        } else if (marker[1] == 0xE1 && length > 8 && !exif) {
            const QByteArray body = file.read(length - 2);
            if (body.startsWith(QByteArray("Exif\0\0", 6)))
                exif = exifDpi(body);
        }
        if (!file.seek(next))
            break;
    }
    return exif;
}

bool jpegSegmentsWithinBudget(QIODevice& file) {
    if (!file.seek(2))
        return true;
    for (int segments = 0; segments <= kJpegSegmentBudget; ++segments) {
        uchar marker[4];
        if (file.read(reinterpret_cast<char*>(marker), 4) != 4 || marker[0] != 0xFF ||
            marker[1] == 0xDA || marker[1] == 0xD9)
            return true; // the scan (or the end, or damage the decoder will meet) comes first
        const int length = qFromBigEndian<quint16>(marker + 2);
        if (length < 2 || !file.seek(file.pos() + length - 2))
            return true;
    }
    return false;
}

bool jbigPageWithinLimits(QIODevice& file) {
    uchar bih[12];
    if (!file.seek(0) || file.read(reinterpret_cast<char*>(bih), 12) != 12)
        return true; // too short to declare anything; the decoder refuses it
    const qint64 width = qFromBigEndian<quint32>(bih + 4);
    const qint64 height = qFromBigEndian<quint32>(bih + 8);
    return width > 0 && height > 0 && width <= DecodeLimits::kMaxSide &&
           height <= DecodeLimits::kMaxSide && width * height <= DecodeLimits::kMaxPixels;
}

bool pictVersionPresent(QIODevice& file) {
    // After the picture's size (2 bytes) and frame (8 bytes): version 1 is the opcode 0x11 with
    // the version 1; version 2 is the opcode 0x0011 with the version 0x02FF.
    for (const qint64 start : {qint64(512), qint64(0)}) {
        uchar opcode[4];
        if (!file.seek(start + 10) || file.read(reinterpret_cast<char*>(opcode), 4) != 4)
            continue;
        if ((opcode[0] == 0x11 && opcode[1] == 0x01) ||
            (opcode[0] == 0x00 && opcode[1] == 0x11 && opcode[2] == 0x02 && opcode[3] == 0xFF))
            return true;
    }
    return false;
}

std::optional<Dpi> bmpDpi(QIODevice& file) {
    uchar head[46];
    if (!file.seek(0) || file.read(reinterpret_cast<char*>(head), 46) != 46 || head[0] != 'B' ||
        head[1] != 'M')
        return std::nullopt;
    if (qFromLittleEndian<quint32>(head + 14) < 40)
        return std::nullopt;
    const qint32 x = qFromLittleEndian<qint32>(head + 38);
    const qint32 y = qFromLittleEndian<qint32>(head + 42);
    if (x <= 0 || y <= 0)
        return std::nullopt;
    return Dpi{x * 0.0254, y * 0.0254};
}

std::optional<Dpi> tiffDpi(QIODevice& file) {
    uchar head[8];
    if (!file.seek(0) || file.read(reinterpret_cast<char*>(head), 8) != 8)
        return std::nullopt;
    const bool little = head[0] == 'I' && head[1] == 'I';
    if (!little && !(head[0] == 'M' && head[1] == 'M'))
        return std::nullopt;
    auto u16 = [little](const uchar* p) {
        return little ? qFromLittleEndian<quint16>(p) : qFromBigEndian<quint16>(p);
    };
    auto u32 = [little](const uchar* p) {
        return little ? qFromLittleEndian<quint32>(p) : qFromBigEndian<quint32>(p);
    };
    if (u16(head + 2) != 42 || !file.seek(u32(head + 4)))
        return std::nullopt;
    uchar countBytes[2];
    if (file.read(reinterpret_cast<char*>(countBytes), 2) != 2)
        return std::nullopt;
    const int count = u16(countBytes);
    const QByteArray entries = file.read(qint64(count) * 12);
    if (entries.size() != qint64(count) * 12)
        return std::nullopt;
    auto rational = [&](const uchar* entry) -> double {
        if (u16(entry + 2) != 5 || u32(entry + 4) != 1 || !file.seek(u32(entry + 8)))
            return 0.0;
        uchar value[8];
        if (file.read(reinterpret_cast<char*>(value), 8) != 8 || u32(value + 4) == 0)
            return 0.0;
        return double(u32(value)) / double(u32(value + 4));
    };
    double x = 0, y = 0;
    int unit = 2; // inch, when the file names none
    for (int i = 0; i < count; ++i) {
        const auto* entry = reinterpret_cast<const uchar*>(entries.constData()) + i * 12;
        switch (u16(entry)) {
        case 282:
            x = rational(entry);
            break;
        case 283:
            y = rational(entry);
            break;
        case 296:
            unit = u16(entry + 8);
            break;
        default:
            break;
        }
    }
    if (!(x > 0) || !(y > 0) || (unit != 2 && unit != 3))
        return std::nullopt;
    return unit == 3 ? centimetres(x, y) : inches(x, y);
}

} // namespace HeaderReaders
