#include "thumbs/ThumbnailMaker.h"

#include "codec/ImageDecoder.h"
#include "thumbs/ThumbnailCache.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace {
std::atomic<uint64_t> decodes{0};
}

namespace ThumbnailMaker {

QImage make(const QString& path, int pixels) {
    using namespace ThumbnailCache;
    const Source source = describe(path);
    if (!source.valid)
        return {};
    const Flavour flavour = flavourFor(pixels);
    const bool cached = !isInsideCache(source.path);
    if (cached) {
        QImage hit = read(source, flavour);
        if (!hit.isNull())
            return hit;
        if (hasFailed(source))
            return {};
    }
    decodes.fetch_add(1, std::memory_order_relaxed);
    const DecodedImage decoded = ImageDecoder::decodeScaled(source.path, sideOf(flavour));
    if (!decoded.ok) {
        if (cached)
            writeFailure(source);
        return {};
    }
    if (cached)
        write(source, flavour, decoded.image);
    return decoded.image;
}

QImage fitToSide(const QImage& image, int pixels) {
    if (image.isNull() || pixels <= 0)
        return image;
    const double scale = double(pixels) / std::max(image.width(), image.height());
    const QSize size(std::max(1, int(std::lround(image.width() * scale))),
                     std::max(1, int(std::lround(image.height() * scale))));
    if (size == image.size())
        return image;
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

uint64_t decodeCount() { return decodes.load(std::memory_order_relaxed); }

} // namespace ThumbnailMaker
