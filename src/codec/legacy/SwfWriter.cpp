#include "codec/legacy/LegacyWriters.h"

#include "codec/RasterWriters.h"
#include "codec/legacy/ByteOrder.h"

#include <QIODevice>

#include <zlib.h>

#include <algorithm>
#include <vector>

// A one-frame SWF movie showing the picture at its size: the picture as a DefineBitsLossless2
// bitmap (zlib-packed ARGB), a rectangle shape filled with that bitmap, PlaceObject2 to put the
// shape on the stage, ShowFrame and End. Sizes on the stage are in twips, 20 a pixel.

namespace LegacyWriters {

namespace {

constexpr int kTwips = 20;
constexpr int kVersion = 8;
constexpr uint16_t kEnd = 0, kShowFrame = 1, kDefineShape = 2, kSetBackgroundColor = 9,
                   kPlaceObject2 = 26, kDefineBitsLossless2 = 36;
constexpr uint16_t kBitmapId = 1, kShapeId = 2;
// On photographs zlib's level 3 packs as small as its default 6, in half the time.
constexpr int kZlibLevel = 3;

// SWF's bit fields: most significant bit first, padded to a byte at the end.
class Bits {
public:
    void put(uint32_t value, int count) {
        for (int i = count - 1; i >= 0; --i) {
            current = uint8_t((current << 1) | ((value >> i) & 1));
            if (++used == 8)
                flush();
        }
    }
    // A signed field, two's complement in `count` bits.
    void putSigned(int32_t value, int count) { put(uint32_t(value), count); }
    QByteArray take() {
        if (used)
            put(0, 8 - used);
        return std::move(out);
    }

private:
    void flush() {
        out.append(char(current));
        current = 0;
        used = 0;
    }
    QByteArray out;
    uint8_t current = 0;
    int used = 0;
};

// Bits a signed field needs to hold every value given.
int signedBits(std::initializer_list<int32_t> values) {
    int bits = 1;
    for (int32_t v : values) {
        int need = 1;
        while (v >= (1 << (need - 1)) || v < -(1 << (need - 1)))
            ++need;
        bits = std::max(bits, need);
    }
    return bits;
}

QByteArray rect(int32_t width, int32_t height) {
    Bits bits;
    const int n = signedBits({0, width, height});
    bits.put(uint32_t(n), 5);
    bits.putSigned(0, n);
    bits.putSigned(width, n);
    bits.putSigned(0, n);
    bits.putSigned(height, n);
    return bits.take();
}

// A tag: code and length in one 16-bit word, or the long form for 63 bytes and more.
void tag(QByteArray& out, uint16_t code, const QByteArray& body) {
    LittleEndianBytes b{out};
    if (body.size() < 63 && code != kDefineBitsLossless2) {
        b.u16(uint32_t(code << 6) | uint32_t(body.size()));
    } else {
        b.u16(uint32_t(code << 6) | 0x3F);
        b.u32(uint32_t(body.size()));
    }
    out.append(body);
}

// The bitmap: alpha, red, green, blue a pixel (premultiplied, as SWF keeps it), zlib-packed.
bool bitmapTag(QByteArray& out, const QImage& picture) {
    const QImage argb = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (argb.isNull())
        return false;
    const int w = argb.width();
    const int h = argb.height();
    std::vector<uchar> raw(size_t(w) * size_t(h) * 4);
    uchar* p = raw.data();
    for (int y = 0; y < h; ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(argb.constScanLine(y));
        for (int x = 0; x < w; ++x) {
            *p++ = uchar(qAlpha(row[x]));
            *p++ = uchar(qRed(row[x]));
            *p++ = uchar(qGreen(row[x]));
            *p++ = uchar(qBlue(row[x]));
        }
    }
    uLongf packedSize = compressBound(uLong(raw.size()));
    QByteArray body;
    LittleEndianBytes b{body};
    b.u16(kBitmapId);
    b.u8(5); // 32-bit pixels
    b.u16(uint32_t(w));
    b.u16(uint32_t(h));
    const qsizetype at = body.size();
    body.resize(at + qsizetype(packedSize));
    if (compress2(reinterpret_cast<Bytef*>(body.data() + at), &packedSize, raw.data(),
                  uLong(raw.size()), kZlibLevel) != Z_OK)
        return false;
    body.resize(at + qsizetype(packedSize));
    tag(out, kDefineBitsLossless2, body);
    return true;
}

// A rectangle of the picture's size filled with the bitmap, clipped, at 20 twips a pixel.
QByteArray shapeTag(int32_t width, int32_t height) {
    QByteArray body;
    LittleEndianBytes b{body};
    b.u16(kShapeId);
    body.append(rect(width, height));
    b.u8(1);    // one fill style:
    b.u8(0x41); // a clipped bitmap
    b.u16(kBitmapId);
    {
        Bits m; // its matrix: scale 20 (16.16 fixed), no turn, no shift
        m.put(1, 1);
        const int32_t scale = kTwips << 16;
        const int n = signedBits({scale});
        m.put(uint32_t(n), 5);
        m.putSigned(scale, n);
        m.putSigned(scale, n);
        m.put(0, 1); // no rotate
        m.put(1, 5); // translate fields one bit wide, both 0
        m.putSigned(0, 1);
        m.putSigned(0, 1);
        body.append(m.take());
    }
    b.u8(0); // no line styles
    Bits s;
    s.put(1, 4); // fill index bits
    s.put(0, 4); // line index bits
    // Style change: move to (0, 0) and fill what lies on the edges' right with style 1.
    const int n = 1;
    s.put(0, 1); // a style change record
    s.put(0, 1); // no new styles
    s.put(0, 1); // no line style
    s.put(1, 1); // fill style 1
    s.put(0, 1); // no fill style 0
    s.put(1, 1); // move to
    s.put(uint32_t(n), 5);
    s.putSigned(0, n);
    s.putSigned(0, n);
    s.put(1, 1); // fill style 1 = style 1
    // Straight edges around the picture, each vertical or horizontal; an edge's delta has at
    // most 17 bits, so a long side is drawn in pieces of at most 65535 twips.
    constexpr int32_t kLongestEdge = 65535;
    const int32_t sides[4][2] = {{width, 0}, {0, height}, {-width, 0}, {0, -height}};
    for (const auto& side : sides) {
        const bool vertical = side[0] == 0;
        int32_t left = vertical ? side[1] : side[0];
        while (left != 0) {
            const int32_t step = std::clamp(left, -kLongestEdge, kLongestEdge);
            left -= step;
            const int bits = std::max(2, signedBits({step}));
            s.put(1, 1);                  // an edge
            s.put(1, 1);                  // straight
            s.put(uint32_t(bits - 2), 4); // bits of the delta, less 2
            s.put(0, 1);                  // not a general line:
            s.put(vertical ? 1 : 0, 1);   // vertical or horizontal
            s.putSigned(step, bits);
        }
    }
    s.put(0, 6); // end of shape
    body.append(s.take());
    return body;
}

} // namespace

int16_t writeSwf(const QImage& input, QIODevice& file) {
    if (input.width() > kMaxSide16 || input.height() > kMaxSide16)
        return kEncoderFailed;
    const QImage picture = onWhite(input);
    if (picture.isNull())
        return kOutOfMemory;
    const int32_t width = picture.width() * kTwips;
    const int32_t height = picture.height() * kTwips;

    QByteArray body;
    LittleEndianBytes b{body};
    body.append(rect(width, height));
    b.u16(12 << 8); // 12 frames a second, 8.8 fixed
    b.u16(1);       // one frame
    tag(body, kSetBackgroundColor, QByteArray("\xff\xff\xff", 3));
    if (!bitmapTag(body, picture))
        return kOutOfMemory;
    tag(body, kDefineShape, shapeTag(width, height));
    {
        QByteArray place;
        LittleEndianBytes p{place};
        p.u8(0x02); // a character is placed
        p.u16(1);   // at depth 1
        p.u16(kShapeId);
        tag(body, kPlaceObject2, place);
    }
    tag(body, kShowFrame, {});
    tag(body, kEnd, {});

    QByteArray head("FWS");
    LittleEndianBytes h{head};
    h.u8(kVersion);
    const qint64 total = head.size() + 4 + body.size();
    if (total > 0xFFFFFFFFll)
        return kEncoderFailed;
    h.u32(uint32_t(total));
    head.append(body);
    return file.write(head) == head.size() ? 0 : kWriteFailed;
}

} // namespace LegacyWriters
