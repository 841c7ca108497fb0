#include "modules/ffmpeg/FfmpegCalls.h"

#include "modules/ffmpeg/FfmpegHolders.h"
#include "modules/ffmpeg/FfmpegQuiet.h"

#include <QElapsedTimer>
#include <QFile>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

// The first frame of an FLI or FLC animation, through FFmpeg's flic demuxer and decoder, turned
// into 32-bit pixels by swscale. The demuxer is named, never guessed, so that FFmpeg is not
// handed other files to probe.

namespace FfmpegCalls {

namespace {

using namespace FfmpegHolders;

constexpr qint64 kBudgetMs = 10'000; // a damaged file must not hold its caller longer

struct Input {
    AVFormatContext* p = nullptr;
    ~Input() { avformat_close_input(&p); }
};

int pastBudget(void* timer) {
    return static_cast<QElapsedTimer*>(timer)->elapsed() > kBudgetMs ? 1 : 0;
}

// The first frame the decoder gives, or false.
bool firstFrame(AVFormatContext* input, int streamIndex, AVCodecContext* decoder, AVFrame* frame) {
    Packet packet;
    if (!packet.p)
        return false;
    // An animation's first frame comes in its first packets; a file that gives none within a
    // few hundred is damaged.
    for (int packets = 0; packets < 256; ++packets) {
        const int status = av_read_frame(input, packet.p);
        if (status < 0) {
            avcodec_send_packet(decoder, nullptr); // the end: what the decoder holds
            return avcodec_receive_frame(decoder, frame) == 0;
        }
        const bool ours = packet.p->stream_index == streamIndex;
        const int sent = ours ? avcodec_send_packet(decoder, packet.p) : 0;
        av_packet_unref(packet.p);
        if (sent < 0 && sent != AVERROR(EAGAIN))
            return false;
        if (ours && avcodec_receive_frame(decoder, frame) == 0)
            return true;
    }
    return false;
}

} // namespace

QImage flicFirstFrame(const QString& path, bool (*withinLimits)(int64_t, int64_t)) {
    quietFfmpeg();
    const AVInputFormat* flic = av_find_input_format("flic");
    if (!flic)
        return {};
    QElapsedTimer timer;
    timer.start();
    Input input;
    input.p = avformat_alloc_context();
    if (!input.p)
        return {};
    input.p->interrupt_callback = AVIOInterruptCB{pastBudget, &timer};
    if (avformat_open_input(&input.p, QFile::encodeName(path).constData(), flic, nullptr) < 0)
        return {}; // input.p is freed and nulled on failure
    const int streamIndex = av_find_best_stream(input.p, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (streamIndex < 0)
        return {};
    const AVCodecParameters* parameters = input.p->streams[streamIndex]->codecpar;
    if (!withinLimits(parameters->width, parameters->height))
        return {};
    const AVCodec* codec = avcodec_find_decoder(parameters->codec_id);
    if (!codec)
        return {};
    CodecContext decoder;
    decoder.p = avcodec_alloc_context3(codec);
    if (!decoder.p || avcodec_parameters_to_context(decoder.p, parameters) < 0)
        return {};
    decoder.p->thread_count = 1;
    if (avcodec_open2(decoder.p, codec, nullptr) < 0)
        return {};
    Frame frame;
    if (!frame.p || !firstFrame(input.p, streamIndex, decoder.p, frame.p))
        return {};
    const int w = frame.p->width;
    const int h = frame.p->height;
    if (!withinLimits(w, h))
        return {};
    QImage image(w, h, QImage::Format_RGB32);
    if (image.isNull())
        return {};
    // Little-endian RGB32 is B, G, R, A in memory.
    SwsContext* scaler = sws_getContext(w, h, AVPixelFormat(frame.p->format), w, h, AV_PIX_FMT_BGRA,
                                        SWS_POINT, nullptr, nullptr, nullptr);
    if (!scaler)
        return {};
    uint8_t* planes[4] = {image.bits(), nullptr, nullptr, nullptr};
    int strides[4] = {int(image.bytesPerLine()), 0, 0, 0};
    const int rows = sws_scale(scaler, frame.p->data, frame.p->linesize, 0, h, planes, strides);
    sws_freeContext(scaler);
    if (rows != h)
        return {};
    for (int y = 0; y < h; ++y) { // opaque, as RGB32 wants, whatever the palette said
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x)
            row[x] |= 0xFF000000u;
    }
    return image;
}

} // namespace FfmpegCalls
