// JPEG XL through libjxl: the first frame, turned as the file says, 8 bits a sample.

#include "codec/DecodeLimits.h"
#include "codec/DecoderBackends.h"
#include "codec/ModernDecoders.h"

#include <QColorSpace>
#include <QFile>

#include <jxl/decode.h>
#include <jxl/thread_parallel_runner.h>

#include <memory>

namespace {

using DecoderPtr = std::unique_ptr<JxlDecoder, decltype(&JxlDecoderDestroy)>;
using RunnerPtr = std::unique_ptr<void, decltype(&JxlThreadParallelRunnerDestroy)>;

// The colour space the decoded samples are in, when it is not plain sRGB.
QColorSpace colorSpaceOf(const JxlDecoder* decoder, const JxlPixelFormat& format) {
    size_t size = 0;
    if (JxlDecoderGetICCProfileSize(decoder, &format, JXL_COLOR_PROFILE_TARGET_DATA, &size) !=
            JXL_DEC_SUCCESS ||
        size == 0 || size > (size_t(16) << 20))
        return {};
    QByteArray icc(qsizetype(size), Qt::Uninitialized);
    if (JxlDecoderGetColorAsICCProfile(decoder, &format, JXL_COLOR_PROFILE_TARGET_DATA,
                                       reinterpret_cast<uint8_t*>(icc.data()),
                                       size) != JXL_DEC_SUCCESS)
        return {};
    const QColorSpace space = QColorSpace::fromIccProfile(icc);
    return space == QColorSpace::SRgb ? QColorSpace() : space;
}

} // namespace

namespace ModernDecoders {

// With `pixels` false only the header is read: the result has its pointSize and no image.
DecodedImage jxlDecode(const QString& path, bool pixels) {
    DecodedImage result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() <= 0 ||
        file.size() > DecodeLimits::kMaxFileBytes)
        return result;
    const uchar* data = file.map(0, file.size());
    if (!data)
        return result;

    DecoderPtr decoder(JxlDecoderCreate(nullptr), &JxlDecoderDestroy);
    if (!decoder)
        return result;
    RunnerPtr runner(nullptr, &JxlThreadParallelRunnerDestroy);
    if (pixels) {
        runner.reset(JxlThreadParallelRunnerCreate(
            nullptr, JxlThreadParallelRunnerDefaultNumWorkerThreads()));
        if (runner)
            JxlDecoderSetParallelRunner(decoder.get(), JxlThreadParallelRunner, runner.get());
    }
    int events = JXL_DEC_BASIC_INFO;
    if (pixels)
        events |= JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE;
    if (JxlDecoderSubscribeEvents(decoder.get(), events) != JXL_DEC_SUCCESS ||
        JxlDecoderSetInput(decoder.get(), data, size_t(file.size())) != JXL_DEC_SUCCESS)
        return result;
    JxlDecoderCloseInput(decoder.get());

    JxlPixelFormat format{4, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
    JxlBasicInfo info{};
    QImage image;
    QColorSpace space;
    for (;;) {
        const JxlDecoderStatus status = JxlDecoderProcessInput(decoder.get());
        switch (status) {
        case JXL_DEC_BASIC_INFO: {
            if (JxlDecoderGetBasicInfo(decoder.get(), &info) != JXL_DEC_SUCCESS)
                return result;
            // The size before orientation; orientations 5 to 8 turn it a quarter.
            QSize size(int(std::min<uint32_t>(info.xsize, 1u << 30)),
                       int(std::min<uint32_t>(info.ysize, 1u << 30)));
            if (info.orientation >= JXL_ORIENT_TRANSPOSE)
                size.transpose();
            if (!DecoderBackends::withinLimits(size.width(), size.height()))
                return result;
            result.pointSize = QSizeF(size);
            if (!pixels) {
                result.ok = true;
                return result;
            }
            image = QImage(size, info.alpha_bits > 0 ? QImage::Format_RGBA8888
                                                     : QImage::Format_RGBX8888);
            if (image.isNull())
                return DecodedImage{};
            break;
        }
        case JXL_DEC_COLOR_ENCODING:
            space = colorSpaceOf(decoder.get(), format);
            break;
        case JXL_DEC_NEED_IMAGE_OUT_BUFFER: {
            size_t needed = 0;
            if (image.isNull() ||
                JxlDecoderImageOutBufferSize(decoder.get(), &format, &needed) != JXL_DEC_SUCCESS ||
                needed != size_t(image.sizeInBytes()) ||
                JxlDecoderSetImageOutBuffer(decoder.get(), &format, image.bits(), needed) !=
                    JXL_DEC_SUCCESS)
                return DecodedImage{};
            break;
        }
        case JXL_DEC_FULL_IMAGE:
        case JXL_DEC_SUCCESS: {
            if (image.isNull() || status == JXL_DEC_SUCCESS)
                return DecodedImage{}; // the file ended before its first frame
            image.setColorSpace(space);
            result.image = DecoderBackends::normalised(std::move(image));
            result.ok = !result.image.isNull();
            return result; // the first frame of an animation is the picture
        }
        default:
            // An error, or more input asked for when all of it was given: a damaged or
            // truncated file.
            return DecodedImage{};
        }
    }
}

} // namespace ModernDecoders
