#include "codec/legacy/FfmpegModule.h"
#include "modules/ffmpeg/FfmpegCalls.h"

extern "C" __attribute__((visibility("default"))) const FfmpegEntry* ormidon_ffmpeg_entry() {
    static const FfmpegEntry table{FfmpegEntry::kVersion, FfmpegCalls::flicFirstFrame,
                                   FfmpegCalls::movieWriterExists, FfmpegCalls::writeMovie};
    return &table;
}
