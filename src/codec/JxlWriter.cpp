// JPEG XL through libjxl: VarDCT at the chosen distance, or modular lossless.

#include "codec/ModernPixels.h"
#include "codec/ModernWriters.h"
#include "codec/RasterWriters.h"

#include <jxl/encode.h>
#include <jxl/thread_parallel_runner.h>

#include <memory>

namespace {

using EncoderPtr = std::unique_ptr<JxlEncoder, decltype(&JxlEncoderDestroy)>;
using RunnerPtr = std::unique_ptr<void, decltype(&JxlThreadParallelRunnerDestroy)>;

// Level 10 of the format: sides up to 2^30, but the decoders' common level 5 holds 2^18 a side
// and 2^28 pixels; files beyond it would not open elsewhere.
bool fitsFormat(QSize size) {
    return size.width() <= (1 << 18) && size.height() <= (1 << 18) &&
           qint64(size.width()) * size.height() <= (qint64(1) << 28);
}

bool ok(JxlEncoderStatus status) {
    return status == JXL_ENC_SUCCESS;
}

bool addBox(JxlEncoder* encoder, const char* type, const QByteArray& payload) {
    return ok(JxlEncoderAddBox(encoder, type, reinterpret_cast<const uint8_t*>(payload.constData()),
                               size_t(payload.size()), JXL_FALSE));
}

} // namespace

int16_t encodeJxl(const QImage& input, const ModernEncoding& how, QByteArray& out) {
    if (!fitsFormat(input.size()))
        return kTooLargeForFormat;
    const bool alpha = ModernPixels::usesAlpha(input);
    EncoderPtr encoder(JxlEncoderCreate(nullptr), &JxlEncoderDestroy);
    if (!encoder)
        return kOutOfMemory;
    RunnerPtr runner(nullptr, &JxlThreadParallelRunnerDestroy);
    if (how.threads > 1) {
        runner.reset(JxlThreadParallelRunnerCreate(nullptr, size_t(how.threads)));
        if (!runner || !ok(JxlEncoderSetParallelRunner(encoder.get(), JxlThreadParallelRunner,
                                                       runner.get())))
            return kEncoderFailed;
    }

    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = uint32_t(input.width());
    info.ysize = uint32_t(input.height());
    info.bits_per_sample = 8;
    info.num_color_channels = 3;
    info.alpha_bits = alpha ? 8 : 0;
    info.num_extra_channels = alpha ? 1 : 0;
    // Lossless coding keeps the samples as they are; lossy coding works in the format's own
    // perceptual space.
    info.uses_original_profile = how.lossless ? JXL_TRUE : JXL_FALSE;
    if (!ok(JxlEncoderSetBasicInfo(encoder.get(), &info)))
        return kEncoderFailed;
    if (alpha) {
        JxlExtraChannelInfo channel;
        JxlEncoderInitExtraChannelInfo(JXL_CHANNEL_ALPHA, &channel);
        channel.bits_per_sample = 8;
        if (!ok(JxlEncoderSetExtraChannelInfo(encoder.get(), 0, &channel)))
            return kEncoderFailed;
    }
    if (!how.icc.isEmpty()) {
        if (!ok(JxlEncoderSetICCProfile(encoder.get(),
                                        reinterpret_cast<const uint8_t*>(how.icc.constData()),
                                        size_t(how.icc.size()))))
            return kEncoderFailed;
    } else {
        JxlColorEncoding srgb;
        JxlColorEncodingSetToSRGB(&srgb, JXL_FALSE);
        if (!ok(JxlEncoderSetColorEncoding(encoder.get(), &srgb)))
            return kEncoderFailed;
    }

    if (!how.exif.isEmpty() || !how.xmp.isEmpty()) {
        if (!ok(JxlEncoderUseBoxes(encoder.get())))
            return kEncoderFailed;
        // An Exif box starts with the offset of the TIFF header within the payload: 0 here.
        if (!how.exif.isEmpty() && !addBox(encoder.get(), "Exif", QByteArray(4, '\0') + how.exif))
            return kEncoderFailed;
        if (!how.xmp.isEmpty() && !addBox(encoder.get(), "xml ", how.xmp))
            return kEncoderFailed;
        JxlEncoderCloseBoxes(encoder.get());
    }

    JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
    if (!settings)
        return kOutOfMemory;
    JxlEncoderFrameSettingsSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT, 7);
    if (how.lossless) {
        if (!ok(JxlEncoderSetFrameLossless(settings, JXL_TRUE)))
            return kEncoderFailed;
    } else if (!ok(JxlEncoderSetFrameDistance(settings, kJxlDistance))) {
        return kEncoderFailed;
    }

    {
        const QImage pixels = ModernPixels::straight(input, alpha);
        if (pixels.isNull())
            return kOutOfMemory;
        const JxlPixelFormat format{uint32_t(alpha ? 4 : 3), JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN,
                                    size_t(pixels.bytesPerLine()) == size_t(pixels.width()) *
                                                                         (alpha ? 4 : 3)
                                        ? 0
                                        : size_t(pixels.bytesPerLine())};
        if (!ok(JxlEncoderAddImageFrame(settings, &format, pixels.constBits(),
                                        size_t(pixels.sizeInBytes()))))
            return kEncoderFailed;
    }
    JxlEncoderCloseInput(encoder.get());

    out.resize(1 << 16);
    size_t written = 0;
    for (;;) {
        uint8_t* next = reinterpret_cast<uint8_t*>(out.data()) + written;
        size_t available = size_t(out.size()) - written;
        const JxlEncoderStatus status = JxlEncoderProcessOutput(encoder.get(), &next, &available);
        written = size_t(next - reinterpret_cast<uint8_t*>(out.data()));
        if (status == JXL_ENC_SUCCESS)
            break;
        if (status != JXL_ENC_NEED_MORE_OUTPUT)
            return kEncoderFailed;
        out.resize(out.size() * 2);
    }
    out.resize(qsizetype(written));
    return 0;
}
