#include "codec/TurboJpegDecoder.h"

#include "codec/ColourProfiles.h"
#include "codec/DecodeLimits.h"
#include "codec/DecoderBackends.h"

#include <QBuffer>
#include <QColorSpace>
#include <QFile>

#include <turbojpeg.h>

#include <memory>

namespace {

struct HandleCloser {
    void operator()(void* handle) const { tjDestroy(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

} // namespace

namespace TurboJpegDecoder {

QImage decode(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() <= 0 ||
        file.size() > DecodeLimits::kMaxFileBytes)
        return {};
    const QByteArray bytes = file.readAll();
    if (bytes.size() != file.size())
        return {};
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.constData());
    const auto size = static_cast<unsigned long>(bytes.size());

    const Handle handle(tjInitDecompress());
    if (!handle)
        return {};
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colourspace = 0;
    if (tjDecompressHeader3(handle.get(), data, size, &width, &height, &subsampling,
                            &colourspace) != 0 ||
        !DecoderBackends::withinLimits(width, height))
        return {};
    // CMYK and YCCK pictures need Qt's handling of Adobe's inverted inks.
    if (colourspace == TJCS_CMYK || colourspace == TJCS_YCCK)
        return {};
    const bool grey = colourspace == TJCS_GRAY;
    QImage image(width, height, grey ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
    if (image.isNull())
        return {}; // no memory for it here; the next reader finds none either and says so
    // No fast DCT or upsampling flags: the pixels are those of Qt's reader, which decodes
    // accurately. A warning (data missing at the end, a corrupt segment) stops the decode, and
    // the file goes to Qt's reader, which shows as much of it as it can.
    if (tjDecompress2(handle.get(), data, size, image.bits(), width, int(image.bytesPerLine()),
                      height, grey ? TJPF_GRAY : TJPF_RGB, TJFLAG_STOPONWARNING) != 0)
        return {};

    QByteArray header = bytes; // shares the bytes
    QBuffer device(&header);
    if (device.open(QIODevice::ReadOnly)) {
        const QByteArray icc = ColourProfiles::jpegIccProfile(device);
        if (!icc.isEmpty())
            image.setColorSpace(QColorSpace::fromIccProfile(icc));
    }
    return image;
}

} // namespace TurboJpegDecoder
