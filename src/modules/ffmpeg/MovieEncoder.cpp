#include "modules/ffmpeg/FfmpegCalls.h"

#include "codec/RasterWriters.h"
#include "modules/ffmpeg/FfmpegHolders.h"
#include "modules/ffmpeg/FfmpegQuiet.h"

#include <QFileDevice>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/error.h>
}

#include <cstring>

// A QuickTime movie of one frame, written by FFmpeg's mov muxer: the picture as one PNG frame,
// lossless at any size, which every player built on FFmpeg and QuickTime's own decode. The
// muxer writes through the output file (it seeks back to fill in the sizes of its atoms).

namespace FfmpegCalls {

namespace {

using namespace FfmpegHolders;

constexpr int kFramesPerSecond = 12;
constexpr int kIoBufferSize = 1 << 16;

int writeBytes(void* opaque, uint8_t* bytes, int length) {
    auto* file = static_cast<QFileDevice*>(opaque);
    return file->write(reinterpret_cast<const char*>(bytes), length) == length ? length
                                                                               : AVERROR(EIO);
}

int64_t seekTo(void* opaque, int64_t offset, int whence) {
    auto* file = static_cast<QFileDevice*>(opaque);
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return file->size();
    case SEEK_SET:
        break;
    case SEEK_CUR:
        offset += file->pos();
        break;
    case SEEK_END:
        offset += file->size();
        break;
    default:
        return AVERROR(EINVAL);
    }
    return file->seek(offset) ? offset : AVERROR(EIO);
}

struct Output {
    AVFormatContext* p = nullptr;
    AVIOContext* io = nullptr;
    ~Output() {
        if (io) {
            av_freep(&io->buffer);
            avio_context_free(&io);
        }
        avformat_free_context(p);
    }
};

// Moves every packet the encoder has ready into the muxer.
int drain(AVCodecContext* codec, AVFormatContext* out, AVStream* stream, AVPacket* packet) {
    for (;;) {
        int status = avcodec_receive_packet(codec, packet);
        if (status == AVERROR(EAGAIN) || status == AVERROR_EOF)
            return 0;
        if (status < 0)
            return status;
        av_packet_rescale_ts(packet, codec->time_base, stream->time_base);
        packet->stream_index = stream->index;
        status = av_interleaved_write_frame(out, packet); // takes the packet's data
        if (status < 0)
            return status;
    }
}

} // namespace

bool movieWriterExists() {
    return avcodec_find_encoder(AV_CODEC_ID_PNG) && av_guess_format("mov", nullptr, nullptr);
}

int16_t writeMovie(const QImage& picture, QFileDevice& file) {
    quietFfmpeg();
    const AVCodec* png = avcodec_find_encoder(AV_CODEC_ID_PNG);
    if (!png)
        return kNoEncoder;
    if (picture.format() != QImage::Format_RGB888)
        return kEncoderFailed; // the caller lays the picture on white as RGB888 first

    Output out;
    if (avformat_alloc_output_context2(&out.p, nullptr, "mov", nullptr) < 0 || !out.p)
        return kNoEncoder;
    auto* buffer = static_cast<unsigned char*>(av_malloc(kIoBufferSize));
    if (!buffer)
        return kOutOfMemory;
    out.io = avio_alloc_context(buffer, kIoBufferSize, 1, &file, nullptr, writeBytes, seekTo);
    if (!out.io) {
        av_free(buffer);
        return kOutOfMemory;
    }
    out.p->pb = out.io;
    out.p->flags |= AVFMT_FLAG_CUSTOM_IO;

    CodecContext codec;
    codec.p = avcodec_alloc_context3(png);
    if (!codec.p)
        return kOutOfMemory;
    codec.p->width = picture.width();
    codec.p->height = picture.height();
    codec.p->pix_fmt = AV_PIX_FMT_RGB24;
    codec.p->time_base = AVRational{1, kFramesPerSecond};
    codec.p->framerate = AVRational{kFramesPerSecond, 1};
    codec.p->thread_count = 1; // the batch already keeps every core busy
    if (out.p->oformat->flags & AVFMT_GLOBALHEADER)
        codec.p->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(codec.p, png, nullptr) < 0)
        return kEncoderFailed;
    AVStream* stream = avformat_new_stream(out.p, nullptr);
    if (!stream || avcodec_parameters_from_context(stream->codecpar, codec.p) < 0)
        return kOutOfMemory;
    stream->time_base = codec.p->time_base;
    stream->avg_frame_rate = codec.p->framerate;
    if (avformat_write_header(out.p, nullptr) < 0)
        return kWriteFailed;

    Frame frame;
    Packet packet;
    if (!frame.p || !packet.p)
        return kOutOfMemory;
    frame.p->format = AV_PIX_FMT_RGB24;
    frame.p->width = picture.width();
    frame.p->height = picture.height();
    if (av_frame_get_buffer(frame.p, 0) < 0)
        return kOutOfMemory;
    for (int y = 0; y < picture.height(); ++y)
        std::memcpy(frame.p->data[0] + ptrdiff_t(y) * frame.p->linesize[0],
                    picture.constScanLine(y), size_t(picture.width()) * 3);
    frame.p->pts = 0;
    if (avcodec_send_frame(codec.p, frame.p) < 0 || drain(codec.p, out.p, stream, packet.p) < 0 ||
        avcodec_send_frame(codec.p, nullptr) < 0 || drain(codec.p, out.p, stream, packet.p) < 0)
        return kEncoderFailed;
    if (av_write_trailer(out.p) < 0)
        return kWriteFailed;
    avio_flush(out.io);
    return out.io->error < 0 ? kWriteFailed : 0;
}

} // namespace FfmpegCalls
