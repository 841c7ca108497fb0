#pragma once

#include <QImage>
#include <QString>

#include <cstdint>

class QFileDevice;

// The module's own calls into FFmpeg, handed to the program through its FfmpegEntry table
// (codec/legacy/FfmpegModule.h, where each is described).
namespace FfmpegCalls {

QImage flicFirstFrame(const QString& path, bool (*withinLimits)(int64_t, int64_t));
bool movieWriterExists();
int16_t writeMovie(const QImage& picture, QFileDevice& file);

} // namespace FfmpegCalls
