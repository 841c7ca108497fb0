#include "codec/legacy/LegacyReaders.h"

#include "codec/DecodeLimits.h"
#include "codec/DecoderBackends.h"
#include "codec/legacy/QuickTimeImage.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

namespace LegacyReaders {

DecodedImage quickTimeImagePicture(const QString& path) {
    using namespace DecoderBackends;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || !QuickTimeImage::looksLikeQuickTimeImage(file))
        return {};
    // A JPEG payload larger than the largest picture's raw pixels is no picture of ours.
    const qint64 maxData = qint64(DecodeLimits::kAllocationLimitMB) << 20;
    QuickTimeImage::Contents contents = QuickTimeImage::read(file, maxData);
    if (!contents.ok || contents.codec != QuickTimeImage::kJpegCodec ||
        !withinLimits(contents.width, contents.height))
        return {};
    QBuffer payload(&contents.data);
    payload.open(QIODevice::ReadOnly);
    QImageReader reader(&payload, "jpeg");
    const QSize declared = reader.size();
    if (!declared.isValid() || !withinLimits(declared.width(), declared.height()))
        return {};
    QImage image;
    if (!reader.read(&image) || image.isNull())
        return {};
    DecodedImage out;
    out.pointSize = pointSizeFor(image.size(), contents.dpiX, contents.dpiY);
    out.image = normalised(std::move(image));
    out.ok = true;
    return out;
}

} // namespace LegacyReaders
