#include "export/BatchMemory.h"

#include "codec/FormatRegistry.h"
#include "codec/GifWriter.h"

#include <QFile>
#include <QImageReader>

#include <optional>

namespace {

struct JpegFrame {
    int64_t pixels = 0;
    bool progressive = false;
};

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
            uchar sof[5]; // precision, height, width
            if (file.read(reinterpret_cast<char*>(sof), 5) != 5)
                return std::nullopt;
            JpegFrame f;
            f.pixels = int64_t((sof[1] << 8) | sof[2]) * int64_t((sof[3] << 8) | sof[4]);
            f.progressive = marker == 0xc2 || marker == 0xc6 || marker == 0xca || marker == 0xce;
            return f;
        }
        if (length < 2 || !file.seek(file.pos() + length - 2))
            return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

int64_t BatchMemory::estimate(const QString& path, uint32_t subtype) {
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
    int64_t bytes = frame.pixels * 4 * (frame.progressive ? 2 : 1);
    if (frame.pixels > 0 && subtype == fourCharCode("GIF "))
        bytes += gifWorkingSet(frame.pixels);
    return bytes;
}

bool BatchMemory::tryHold(int64_t bytes) {
    const std::lock_guard lock(mutex);
    if (held > 0 && held + bytes > budget)
        return false;
    held += bytes;
    return true;
}

void BatchMemory::hold(int64_t bytes) {
    std::unique_lock lock(mutex);
    freed.wait(lock, [&] { return held == 0 || held + bytes <= budget; });
    held += bytes;
}

void BatchMemory::release(int64_t bytes) {
    {
        const std::lock_guard lock(mutex);
        held -= bytes;
    }
    freed.notify_all();
}
