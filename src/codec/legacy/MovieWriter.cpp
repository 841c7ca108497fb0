#include "codec/legacy/LegacyWriters.h"

#include "codec/RasterWriters.h"
#include "codec/legacy/FfmpegModule.h"

// A QuickTime movie of one frame, written by FFmpeg in its module: the picture laid on white,
// as 24-bit RGB.

namespace LegacyWriters {

bool movieWriterExists() {
    // The module's presence, not its loading: the format menu asks at every start.
    return !FfmpegModule::path().isEmpty();
}

int16_t writeMovie(const QImage& input, QFileDevice& file) {
    // A track's size is 16.16 fixed point.
    if (input.width() > kMaxSide16 || input.height() > kMaxSide16)
        return kEncoderFailed;
    const FfmpegEntry* ffmpeg = FfmpegModule::entry();
    if (!ffmpeg || !ffmpeg->movieWriterExists())
        return kNoEncoder;
    const QImage picture = onWhite(input).convertToFormat(QImage::Format_RGB888);
    if (picture.isNull())
        return kOutOfMemory;
    return ffmpeg->writeMovie(picture, file);
}

} // namespace LegacyWriters
