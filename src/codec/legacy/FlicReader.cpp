#include "codec/legacy/LegacyReaders.h"

#include "codec/DecoderBackends.h"
#include "codec/legacy/FfmpegModule.h"

// The first frame of an FLI or FLC animation, decoded by FFmpeg in its module.

namespace LegacyReaders {

DecodedImage flicPicture(const QString& path) {
    const FfmpegEntry* ffmpeg = FfmpegModule::entry();
    if (!ffmpeg)
        return {};
    QImage image = ffmpeg->flicFirstFrame(path, DecoderBackends::withinLimits);
    if (image.isNull())
        return {};
    DecodedImage out;
    out.pointSize = QSizeF(image.size()); // FLC records no resolution
    out.image = DecoderBackends::normalised(std::move(image));
    out.ok = true;
    return out;
}

} // namespace LegacyReaders
