#include "export/BatchMemory.h"

#include "codec/FileStructures.h"
#include "codec/FormatRegistry.h"
#include "codec/GifWriter.h"
#include "codec/HeaderReaders.h"
#include "codec/ImageDecoder.h"

#include <QFile>
#include <QImageReader>

BatchMemory::Share BatchMemory::estimate(const QString& path, uint32_t subtype, bool asDecoded) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    int64_t pixels = 0;
    int bytesPerPixel = 4;
    int64_t coefficients = 0;
    if (file.peek(2) == QByteArray("\xff\xd8", 2)) {
        using FileStructures::JpegFrame;
        const JpegFrame frame =
            FileStructures::jpegFrame(file, FileStructures::kMaxJpegSegments).value_or(JpegFrame{});
        pixels = int64_t(frame.width) * int64_t(frame.height);
        // A JPEG written as decoded comes as 24-bit colour or 8-bit grey (CMYK goes through 32
        // bits) unless it records a resolution other than 72 dpi, which its export scales;
        // everything else, and every picture that is drawn, as 32-bit pixels.
        const qsizetype components = frame.components.size();
        if (asDecoded && (components == 1 || components == 3)) {
            const std::optional<Dpi> dpi = HeaderReaders::jpegDpi(file);
            if (!dpi || ImageDecoder::pointsArePixels(dpi->x, dpi->y))
                bytesPerPixel = int(components);
        }
        if (frame.progressive)
            coefficients = components > 0 ? frame.coefficientBytes() : pixels * 4;
    } else {
        file.close();
        const QSize size = QImageReader(path).size();
        if (size.isValid())
            pixels = int64_t(size.width()) * int64_t(size.height());
    }
    int64_t bytes = pixels * bytesPerPixel + coefficients;
    if (pixels > 0 && subtype == fourCharCode("GIF "))
        bytes += gifWorkingSet(pixels);
    return Share(bytes, coefficients);
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
