#pragma once

#include <QByteArray>
#include <QImage>

#include <cstdint>

class QIODevice;

// QuickTime image files: an 'idsc' atom that describes the picture and an 'idat' atom that
// holds its compressed data. Written by writeQuickTimeImage (LegacyWriters.h); read here, for
// the JPEG kind, which is the one this program writes and the common one.
namespace QuickTimeImage {

constexpr uint32_t kDescriptionAtom = 0x69647363; // 'idsc'
constexpr uint32_t kDataAtom = 0x69646174;        // 'idat'
constexpr uint32_t kJpegCodec = 0x6A706567;       // 'jpeg'
constexpr int kDescriptionSize = 86;

struct Contents {
    bool ok = false;
    uint32_t codec = 0;
    int width = 0;
    int height = 0;
    double dpiX = 0, dpiY = 0;
    QByteArray data; // the 'idat' payload
};

// The atoms of the file, without decoding the payload. ok is false for a file that is no
// QuickTime image or whose atoms run past its end; a payload above `maxData` bytes is refused.
Contents read(QIODevice& file, qint64 maxData);

// Whether the file starts like a QuickTime image (an 'idsc' or 'idat' atom first).
bool looksLikeQuickTimeImage(QIODevice& file);

} // namespace QuickTimeImage
