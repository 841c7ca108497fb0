#include "codec/legacy/LegacyWriters.h"

#include "codec/RasterWriters.h"
#include "codec/legacy/ByteOrder.h"
#include "codec/legacy/QuickTimeImage.h"

#include <QBuffer>
#include <QIODevice>
#include <QImageWriter>

#include <cmath>

// A QuickTime image: an 'idsc' atom (the image description: codec 'jpeg', size, resolution)
// and an 'idat' atom holding the JPEG stream itself. Big-endian throughout.

namespace LegacyWriters {

namespace {

constexpr int kJpegQuality = 90;

// Resolution as 16.16 fixed point; 72 dpi where none is given or it does not fit.
uint32_t fixed(float dpi) {
    if (!(dpi > 0) || dpi >= 32768.0f)
        dpi = 72.0f;
    return uint32_t(std::lround(double(dpi) * 65536.0));
}

} // namespace

int16_t writeQuickTimeImage(const QImage& input, QIODevice& file, float dpi) {
    if (input.width() > kMaxSide16 || input.height() > kMaxSide16)
        return kEncoderFailed;
    const QImage picture = onWhite(input);
    if (picture.isNull())
        return kOutOfMemory;
    QByteArray jpeg;
    {
        QBuffer buffer(&jpeg);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter writer(&buffer, "jpeg");
        writer.setQuality(kJpegQuality);
        if (!writer.write(picture))
            return kEncoderFailed;
    }
    QByteArray out;
    BigEndianBytes b{out};
    b.u32(8 + QuickTimeImage::kDescriptionSize);
    b.u32(QuickTimeImage::kDescriptionAtom);
    b.u32(QuickTimeImage::kDescriptionSize);
    b.u32(QuickTimeImage::kJpegCodec);
    b.u32(0); // reserved
    b.u16(0);
    b.u16(0);                                   // data reference index
    b.u16(0);                                   // version
    b.u16(0);                                   // revision
    b.u32(0);                                   // vendor
    b.u32(0);                                   // temporal quality
    b.u32(uint32_t(kJpegQuality) * 1024 / 100); // spatial quality, 0 to 1023
    b.u16(uint32_t(picture.width()));
    b.u16(uint32_t(picture.height()));
    b.u32(fixed(dpi));
    b.u32(fixed(dpi));
    b.u32(uint32_t(jpeg.size()));
    b.u16(1); // frames
    const QByteArray name("Photo - JPEG");
    b.u8(uint32_t(name.size())); // a Pascal string of 31 characters at most, in 32 bytes
    out.append(name);
    b.zeros(31 - name.size());
    b.u16(24);     // depth
    b.u16(0xFFFF); // no colour table
    if (qint64(jpeg.size()) + 8 > 0xFFFFFFFFll)
        return kEncoderFailed;
    b.u32(uint32_t(8 + jpeg.size()));
    b.u32(QuickTimeImage::kDataAtom);
    out.append(jpeg);
    return file.write(out) == out.size() ? 0 : kWriteFailed;
}

} // namespace LegacyWriters
