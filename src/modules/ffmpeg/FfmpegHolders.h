#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
}

// Owners of FFmpeg's objects that free them on every way out of a function.
namespace FfmpegHolders {

struct CodecContext {
    AVCodecContext* p = nullptr;
    ~CodecContext() { avcodec_free_context(&p); }
};
struct Frame {
    AVFrame* p = av_frame_alloc();
    ~Frame() { av_frame_free(&p); }
};
struct Packet {
    AVPacket* p = av_packet_alloc();
    ~Packet() { av_packet_free(&p); }
};

} // namespace FfmpegHolders
