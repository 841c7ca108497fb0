#pragma once

#include <QImage>
#include <QString>

#include <cstdint>

class QFileDevice;

// FFmpeg reads FLC animations and writes QuickTime movies, and nothing else in the program needs
// it; its libraries (libavformat with its network protocols, libavcodec, libswscale) would add
// some 16 MB to every run's resident memory. So the code that calls FFmpeg is built into a module
// of its own, ormidon_ffmpeg.so, installed beside the program's libraries and loaded the first
// time an FLC is read or a movie written.

// What the module hands the program: one table, checked by its version.
struct FfmpegEntry {
    static constexpr int kVersion = 1;
    int version;
    // The first frame of the FLI or FLC animation at `path` as opaque RGB32; a null image when the
    // file is damaged or its sides fail `withinLimits` (checked from the header, then the frame).
    QImage (*flicFirstFrame)(const QString& path, bool (*withinLimits)(int64_t, int64_t));
    // Whether this FFmpeg has the PNG encoder and the mov muxer a movie needs.
    bool (*movieWriterExists)();
    // Writes the opaque RGB888 `picture` as a one-frame movie into `file`; a RasterWriters status.
    int16_t (*writeMovie)(const QImage& picture, QFileDevice& file);
};

// The module's one exported symbol.
extern "C" const FfmpegEntry* ormidon_ffmpeg_entry();

namespace FfmpegModule {

// The module's file, where this program's install (or build) put it; empty when there is none.
QString path();

// The module's table, loaded on first call (any thread); null when the module is missing, does
// not load, or is of another version.
const FfmpegEntry* entry();

} // namespace FfmpegModule
