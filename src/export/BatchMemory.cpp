#include "export/BatchMemory.h"

#include "codec/FormatRegistry.h"
#include "codec/GifWriter.h"

#include <QFile>
#include <QImageReader>

#include <algorithm>
#include <optional>

namespace {

struct JpegFrame {
    int64_t pixels = 0;
    bool progressive = false;
    int components = 0;
    int64_t coefficientBytes = 0; // every DCT coefficient of the picture, 2 bytes each
};

// The coefficients of each component at its own sampling: whole 8 x 8 blocks of 2-byte values.
int64_t coefficientBytes(int width, int height, const uchar* components, int count) {
    int hMax = 1, vMax = 1;
    for (int i = 0; i < count; ++i) {
        hMax = std::max(hMax, components[i * 3 + 1] >> 4);
        vMax = std::max(vMax, components[i * 3 + 1] & 15);
    }
    int64_t bytes = 0;
    for (int i = 0; i < count; ++i) {
        const int h = std::max(1, components[i * 3 + 1] >> 4);
        const int v = std::max(1, components[i * 3 + 1] & 15);
        const int64_t w = (int64_t(width) * h + hMax - 1) / hMax;
        const int64_t ht = (int64_t(height) * v + vMax - 1) / vMax;
        bytes += ((w + 7) / 8) * ((ht + 7) / 8) * 64 * 2;
    }
    return bytes;
}

// A JPEG's first frame header (SOF), found by walking the segments before it, at most a
// thousand of them (a file with more is refused by the decoder anyway). Nothing for a file that
// is no JPEG or whose segments do not lead to a frame.
std::optional<JpegFrame> jpegFrame(QIODevice& file) {
    uchar mark[2];
    if (file.read(reinterpret_cast<char*>(mark), 2) != 2 || mark[0] != 0xff || mark[1] != 0xd8)
        return std::nullopt;
    for (int segments = 0; segments < 1000; ++segments) {
        uchar head[4];
        if (file.read(reinterpret_cast<char*>(head), 4) != 4 || head[0] != 0xff)
            return std::nullopt;
        const uchar marker = head[1];
        const int length = (head[2] << 8) | head[3];
        const bool frame =
            marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
        if (frame) {
            uchar sof[6]; // precision, height, width, components
            if (file.read(reinterpret_cast<char*>(sof), 6) != 6)
                return std::nullopt;
            const int height = (sof[1] << 8) | sof[2];
            const int width = (sof[3] << 8) | sof[4];
            JpegFrame f;
            f.pixels = int64_t(width) * int64_t(height);
            f.progressive = marker == 0xc2 || marker == 0xc6 || marker == 0xca || marker == 0xce;
            f.components = sof[5];
            uchar components[3 * 4]; // id, sampling, table: up to four components
            if (f.components >= 1 && f.components <= 4 &&
                file.read(reinterpret_cast<char*>(components), 3 * f.components) ==
                    3 * f.components)
                f.coefficientBytes = coefficientBytes(width, height, components, f.components);
            else
                f.coefficientBytes = f.pixels * 4; // an odd header: the old rule of thumb
            return f;
        }
        if (length < 2 || !file.seek(file.pos() + length - 2))
            return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

int64_t BatchMemory::estimate(const QString& path, uint32_t subtype, bool asDecoded) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    JpegFrame frame;
    if (file.peek(2) == QByteArray("\xff\xd8", 2)) {
        frame = jpegFrame(file).value_or(JpegFrame{});
    } else {
        file.close();
        const QSize size = QImageReader(path).size();
        if (size.isValid())
            frame.pixels = int64_t(size.width()) * int64_t(size.height());
    }
    // A JPEG written as decoded comes as 24-bit colour or 8-bit grey (CMYK goes through 32
    // bits); everything else, and every picture that is drawn, as 32-bit pixels.
    int bytesPerPixel = 4;
    if (asDecoded && frame.components == 1)
        bytesPerPixel = 1;
    else if (asDecoded && frame.components == 3)
        bytesPerPixel = 3;
    int64_t bytes = frame.pixels * bytesPerPixel;
    if (frame.progressive)
        bytes += frame.coefficientBytes;
    if (frame.pixels > 0 && subtype == fourCharCode("GIF "))
        bytes += gifWorkingSet(frame.pixels);
    return bytes;
}

bool BatchMemory::fits(int64_t bytes) const {
    if (held == 0 || held + bytes <= budget)
        return true;
    // A small file may still join a large one: the other core then reads and writes it instead
    // of waiting, for a little more memory than the budget.
    return bytes <= budget / 8 && held + bytes <= budget + budget / 4;
}

bool BatchMemory::tryHold(int64_t bytes) {
    const std::lock_guard lock(mutex);
    if (!fits(bytes))
        return false;
    held += bytes;
    return true;
}

void BatchMemory::hold(int64_t bytes) {
    std::unique_lock lock(mutex);
    freed.wait(lock, [&] { return fits(bytes); });
    held += bytes;
}

void BatchMemory::release(int64_t bytes) {
    {
        const std::lock_guard lock(mutex);
        held -= bytes;
    }
    freed.notify_all();
}
