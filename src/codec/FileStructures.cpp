#include "codec/FileStructures.h"

#include <QtEndian>

#include <algorithm>

namespace FileStructures {

bool walkJpegSegments(QIODevice& file, int maxSegments,
                      const std::function<bool(uint8_t kind, int length)>& visit) {
    if (!file.seek(2))
        return true;
    for (int segments = 0; segments <= maxSegments; ++segments) {
        uchar marker[4];
        if (file.read(reinterpret_cast<char*>(marker), 4) != 4 || marker[0] != 0xFF ||
            marker[1] == 0xDA || marker[1] == 0xD9)
            return true; // the scan (or the end, or damage the decoder will meet) comes first
        const int length = qFromBigEndian<quint16>(marker + 2) - 2;
        if (length < 0)
            return true;
        const qint64 next = file.pos() + length;
        if (!visit(marker[1], length) || !file.seek(next))
            return true;
    }
    return false;
}

std::optional<JpegFrame> jpegFrame(QIODevice& file, int maxSegments) {
    uchar start[2];
    if (!file.seek(0) || file.read(reinterpret_cast<char*>(start), 2) != 2 || start[0] != 0xFF ||
        start[1] != 0xD8)
        return std::nullopt;
    std::optional<JpegFrame> found;
    walkJpegSegments(file, maxSegments, [&](uint8_t kind, int length) {
        const bool frame = kind >= 0xC0 && kind <= 0xCF && kind != 0xC4 && kind != 0xC8 &&
                           kind != 0xCC; // DHT, JPG and DAC share the range
        if (!frame)
            return true;
        const QByteArray body = file.read(std::min(length, 6 + 3 * 4));
        if (body.size() < 6)
            return false;
        const auto* b = reinterpret_cast<const uchar*>(body.constData());
        JpegFrame f;
        f.height = qFromBigEndian<quint16>(b + 1);
        f.width = qFromBigEndian<quint16>(b + 3);
        f.progressive = kind == 0xC2 || kind == 0xC6 || kind == 0xCA || kind == 0xCE;
        const int count = b[5];
        if (count >= 1 && count <= 4 && body.size() >= 6 + 3 * count) {
            for (int i = 0; i < count; ++i) {
                const uchar sampling = b[6 + 3 * i + 1];
                f.components.append(
                    {std::clamp(sampling >> 4, 1, 4), std::clamp(sampling & 15, 1, 4)});
            }
        }
        found = f;
        return false;
    });
    return found;
}

int64_t JpegFrame::coefficientBytes() const {
    int hMax = 1, vMax = 1;
    for (const Component& c : components) {
        hMax = std::max(hMax, c.horizontal);
        vMax = std::max(vMax, c.vertical);
    }
    int64_t bytes = 0;
    for (const Component& c : components) {
        const int64_t w = (int64_t(width) * c.horizontal + hMax - 1) / hMax;
        const int64_t h = (int64_t(height) * c.vertical + vMax - 1) / vMax;
        bytes += ((w + 7) / 8) * ((h + 7) / 8) * 64 * 2;
    }
    return bytes;
}

QByteArray jpegExifBlock(QIODevice& file, int maxSegments) {
    QByteArray block;
    walkJpegSegments(file, maxSegments, [&](uint8_t kind, int length) {
        if (kind != 0xE1 || length <= 6)
            return true;
        const QByteArray body = file.read(length);
        if (body.size() != length || !body.startsWith(QByteArray("Exif\0\0", 6)))
            return true;
        block = body.mid(6);
        return false;
    });
    return block;
}

TiffReader::TiffReader(QIODevice& device) : file(device) {
    uchar head[8];
    if (!file.seek(0) || file.read(reinterpret_cast<char*>(head), 8) != 8)
        return;
    little = head[0] == 'I' && head[1] == 'I';
    if (!little && !(head[0] == 'M' && head[1] == 'M'))
        return;
    ok = u16(head + 2) == 42;
    first = u32(head + 4);
}

uint16_t TiffReader::u16(const uchar* p) const {
    return little ? qFromLittleEndian<quint16>(p) : qFromBigEndian<quint16>(p);
}

uint32_t TiffReader::u32(const uchar* p) const {
    return little ? qFromLittleEndian<quint32>(p) : qFromBigEndian<quint32>(p);
}

QList<TiffEntry> TiffReader::directory(uint32_t offset, uint32_t* next) const {
    if (next)
        *next = 0;
    uchar countBytes[2];
    if (!ok || !file.seek(offset) || file.read(reinterpret_cast<char*>(countBytes), 2) != 2)
        return {};
    const int count = u16(countBytes);
    const QByteArray bytes = file.read(qint64(count) * 12 + 4);
    if (bytes.size() < qint64(count) * 12)
        return {};
    const auto* data = reinterpret_cast<const uchar*>(bytes.constData());
    QList<TiffEntry> entries;
    entries.reserve(count);
    for (int i = 0; i < count; ++i) {
        const uchar* e = data + i * 12;
        TiffEntry entry{u16(e), u16(e + 2), u32(e + 4), u32(e + 8)};
        if (entry.type == 3 && entry.count == 1) // a SHORT sits in the first two bytes
            entry.field = u16(e + 8);
        entries.append(entry);
    }
    if (next && bytes.size() == qint64(count) * 12 + 4)
        *next = u32(data + count * 12);
    return entries;
}

int64_t TiffReader::integer(const TiffEntry& entry) {
    return (entry.type == 3 || entry.type == 4) && entry.count == 1 ? int64_t(entry.field) : -1;
}

double TiffReader::rational(const TiffEntry& entry) const {
    uchar value[8];
    if (entry.type != 5 || entry.count != 1 || !file.seek(entry.field) ||
        file.read(reinterpret_cast<char*>(value), 8) != 8 || u32(value + 4) == 0)
        return 0.0;
    return double(u32(value)) / double(u32(value + 4));
}

} // namespace FileStructures
