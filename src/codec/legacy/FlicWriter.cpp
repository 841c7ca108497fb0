#include "codec/legacy/LegacyWriters.h"

#include "codec/PaletteQuantiser.h"
#include "codec/RasterWriters.h"
#include "codec/legacy/ByteOrder.h"
#include "codec/legacy/RunLength.h"

#include <QIODevice>

// An FLC animation of one frame: the 128-byte file header, then one frame chunk holding a
// COLOR_256 chunk (the 256-colour palette, 8 bits a component) and a BYTE_RUN chunk (every row
// of palette indices, run-length coded). Little-endian throughout.

namespace LegacyWriters {

namespace {

constexpr uint16_t kFlcMagic = 0xAF12;
constexpr uint16_t kFrameType = 0xF1FA;
constexpr uint16_t kColour256 = 4;
constexpr uint16_t kByteRun = 15;
constexpr int kFileHeaderSize = 128;
constexpr int kFrameHeaderSize = 16;

QByteArray colourChunk(const QList<QRgb>& palette) {
    QByteArray chunk;
    LittleEndianBytes b{chunk};
    b.u32(0); // size, patched below
    b.u16(kColour256);
    b.u16(1); // one packet:
    b.u8(0);  // skip no colour,
    b.u8(0);  // change 256 (0 stands for 256)
    for (int i = 0; i < 256; ++i) {
        const QRgb c = i < palette.size() ? palette[i] : qRgb(0, 0, 0);
        b.u8(uint32_t(qRed(c)));
        b.u8(uint32_t(qGreen(c)));
        b.u8(uint32_t(qBlue(c)));
    }
    patchLittleEndian32(chunk, 0, uint32_t(chunk.size()));
    return chunk;
}

QByteArray byteRunChunk(const QuantisedPicture& picture) {
    QByteArray chunk;
    LittleEndianBytes b{chunk};
    b.u32(0);
    b.u16(kByteRun);
    for (int y = 0; y < picture.height; ++y) {
        // The packet count byte of the older format: readers of FLC go by the width instead.
        b.u8(0);
        chunk.append(
            flicByteRun(picture.indices.data() + size_t(y) * size_t(picture.width), picture.width));
    }
    if (chunk.size() % 2)
        b.u8(0); // chunks start on even offsets
    patchLittleEndian32(chunk, 0, uint32_t(chunk.size()));
    return chunk;
}

} // namespace

int16_t writeFlic(const QImage& input, QIODevice& file) {
    if (input.width() > kMaxSide16 || input.height() > kMaxSide16)
        return kEncoderFailed;
    const QImage picture = onWhite(input);
    if (picture.isNull())
        return kOutOfMemory;
    const QuantisedPicture quantised = quantise(picture, 256);
    if (quantised.status)
        return quantised.status;
    const QByteArray colours = colourChunk(quantised.palette);
    const QByteArray rows = byteRunChunk(quantised);
    const qint64 frameSize = kFrameHeaderSize + colours.size() + rows.size();
    const qint64 fileSize = kFileHeaderSize + frameSize;
    if (fileSize > 0xFFFFFFFFll)
        return kEncoderFailed; // sizes are 32-bit

    QByteArray head;
    LittleEndianBytes h{head};
    h.u32(uint32_t(fileSize));
    h.u16(kFlcMagic);
    h.u16(1); // frames
    h.u16(uint32_t(quantised.width));
    h.u16(uint32_t(quantised.height));
    h.u16(8);         // bits a pixel
    h.u16(3);         // flags: written completely
    h.u32(1000 / 12); // milliseconds a frame
    h.u16(0);
    h.u32(0); // created (MS-DOS date), creator
    h.u32(0);
    h.u32(0); // updated, updater
    h.u32(0);
    h.u16(1); // square pixels
    h.u16(1);
    h.zeros(38);                                  // extension fields and reserved bytes
    h.u32(kFileHeaderSize);                       // offset of the first frame
    h.u32(uint32_t(kFileHeaderSize + frameSize)); // of the second: there is none, a loop ends here
    h.zeros(kFileHeaderSize - head.size());

    h.u32(uint32_t(frameSize));
    h.u16(kFrameType);
    h.u16(2);   // chunks
    h.zeros(8); // delay, reserved, width and height overrides
    head.append(colours);
    head.append(rows);
    return file.write(head) == head.size() ? 0 : kWriteFailed;
}

} // namespace LegacyWriters
