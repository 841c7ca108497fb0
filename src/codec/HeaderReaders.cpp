#include "codec/HeaderReaders.h"

#include "codec/DecodeLimits.h"
#include "codec/FileStructures.h"

#include <QBuffer>
#include <QByteArray>
#include <QtEndian>

namespace HeaderReaders {

namespace {

using FileStructures::kMaxJpegSegments;
constexpr int kMaxPngChunks = 10000;

std::optional<Dpi> inches(double x, double y) {
    return Dpi{x, y};
}

std::optional<Dpi> centimetres(double x, double y) {
    return Dpi{x * 2.54, y * 2.54};
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
    std::optional<Dpi> jfif;
    QByteArray exif;
    FileStructures::walkJpegSegments(file, kMaxJpegSegments, [&](uint8_t kind, int length) {
        if (kind == 0xE0 && length >= 14) {
            uchar app0[12];
            if (file.read(reinterpret_cast<char*>(app0), 12) != 12 ||
                QByteArray(reinterpret_cast<const char*>(app0), 5) != QByteArray("JFIF", 5))
                return true;
            const int unit = app0[7];
            const double x = qFromBigEndian<quint16>(app0 + 8),
                         y = qFromBigEndian<quint16>(app0 + 10);
            // A JFIF density with a unit is what the file says; unit 0 is an aspect ratio
            // only, and then a camera's EXIF resolution (usually later) is the answer.
            if (unit == 1)
                jfif = inches(x, y);
            else if (unit == 2)
                jfif = centimetres(x, y);
            return !jfif;
        }
        if (kind == 0xE1 && exif.isEmpty() && length > 6) {
            const QByteArray body = file.read(length);
            if (body.size() == length && body.startsWith(QByteArray("Exif\0\0", 6)))
                exif = body.mid(6); // a TIFF structure whose offsets count from its own start
        }
        return true;
    });
    if (jfif || exif.isEmpty())
        return jfif;
    QBuffer buffer(&exif);
    return buffer.open(QIODevice::ReadOnly) ? tiffDpi(buffer) : std::nullopt;
}

bool jpegSegmentsWithinBudget(QIODevice& file) {
    return FileStructures::walkJpegSegments(file, kMaxJpegSegments,
                                            [](uint8_t, int) { return true; });
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
    const FileStructures::TiffReader tiff(file);
    if (!tiff.valid())
        return std::nullopt;
    double x = 0, y = 0;
    int64_t unit = 2; // inch, when the file names none
    for (const FileStructures::TiffEntry& entry : tiff.directory(tiff.firstDirectory())) {
        switch (entry.tag) {
        case 282:
            x = tiff.rational(entry);
            break;
        case 283:
            y = tiff.rational(entry);
            break;
        case 296:
            unit = FileStructures::TiffReader::integer(entry);
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
