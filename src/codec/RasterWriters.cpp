#include "codec/RasterWriters.h"

#include "codec/FormatRegistry.h"
#include "codec/MagickSupport.h"

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QImageWriter>

#include <Magick++.h>

#include <cmath>
#include <exception>

// Status codes of the raster writers. 0 is success; every failure is negative so that the
// callers, which only look at zero or not, never mistake one for success.
namespace {

constexpr int16_t kNoEncoder = -1;      // no encoder for the subtype on this machine
constexpr int16_t kNoPicture = -2;      // a null picture or a resolution that is no number
constexpr int16_t kCannotOpenFile = -3; // missing folder, read-only file, not a file
constexpr int16_t kEncoderFailed = -4;  // the encoder refused the picture (policy, size)
constexpr int16_t kWriteFailed = -5;    // the bytes did not all reach the disk (disk full)

bool qtCanWrite(const char* name) {
    return QImageWriter::supportedImageFormats().contains(QByteArray(name));
}

bool magickCanWrite(const char* coder) {
    ensureMagickInitialised();
    try {
        const Magick::CoderInfo info(coder);
        // The system's security policy may forbid a coder that is built in.
        return info.isWritable() &&
               MagickCore::IsRightsAuthorized(MagickCore::CoderPolicyDomain,
                                              MagickCore::WritePolicyRights, coder);
    } catch (const std::exception&) {
        return false;
    }
}

// Magick aborts the process (an assertion, not an exception) when it is handed pixels for an
// image larger than its resource limits allow, so the size is checked here first.
bool withinMagickLimits(QSize size) {
    using namespace MagickCore;
    const auto w = MagickSizeType(size.width());
    const auto h = MagickSizeType(size.height());
    return w <= GetMagickResourceLimit(WidthResource) &&
           h <= GetMagickResourceLimit(HeightResource) &&
           w * h <= GetMagickResourceLimit(AreaResource);
}

int dotsPerMetre(float dpi) {
    return int(std::lround(double(dpi) / 0.0254));
}

// Writes the bytes to the existing file at `path` (or a new one), replacing its contents. The
// file is opened as it is, not replaced by a new one: it stays the file the flow created.
int16_t writeBytes(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return kCannotOpenFile;
    if (file.write(bytes) != bytes.size() || !file.flush())
        return kWriteFailed;
    file.close();
    return file.error() == QFileDevice::NoError ? 0 : kWriteFailed;
}

int16_t writeWithQt(const QImage& picture, const QString& path, const char* name, float dpi) {
    QImage image = picture; // shares the pixels; the resolution fields are the only change
    const int dpm = dotsPerMetre(dpi);
    if (dpm > 0) {
        image.setDotsPerMeterX(dpm);
        image.setDotsPerMeterY(dpm);
    }
    // Encoded in memory first so that a refusing encoder leaves the file as it was.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, name);
    if (!writer.write(image))
        return kEncoderFailed;
    buffer.close();
    return writeBytes(path, bytes);
}

int16_t writeWithMagick(const QImage& picture, const QString& path, const char* coder, float dpi) {
    ensureMagickInitialised();
    // Straight (not premultiplied) alpha, laid out B, G, R, A in memory on this little-endian
    // machine; Qt pads no 32-bit row, so the rows follow one another.
    if (!withinMagickLimits(picture.size()))
        return kEncoderFailed;
    const QImage argb = picture.convertToFormat(QImage::Format_ARGB32);
    if (argb.isNull())
        return kNoPicture;
    try {
        Magick::Image image(size_t(argb.width()), size_t(argb.height()), "BGRA", Magick::CharPixel,
                            argb.constBits());
        image.quiet(true); // warnings are not failures
        image.magick(coder);
        image.depth(8);
        if (dpi > 0) {
            image.resolutionUnits(Magick::PixelsPerInchResolution);
            image.density(Magick::Geometry(size_t(std::lround(dpi)), size_t(std::lround(dpi))));
        }
        if (QByteArrayView(coder) == "GIF") {
            // 256 colours chosen for this picture, with error diffusion to hide the banding;
            // pixels left uncovered by the picture become GIF's one transparent colour.
            image.quantizeColors(256);
            image.quantizeDither(true);
            image.quantize();
        }
        Magick::Blob blob;
        image.write(&blob);
        if (blob.length() == 0)
            return kEncoderFailed;
        return writeBytes(
            path, QByteArray(static_cast<const char*>(blob.data()), qsizetype(blob.length())));
    } catch (const std::exception&) {
        // Magick::Exception (policy refusals, resource limits) and std::bad_alloc alike.
        return kEncoderFailed;
    }
}

} // namespace

bool rasterWriterExists(uint32_t subtype) {
    const FormatRow* row = FormatRegistry::rowForSubtype(subtype);
    if (!row || !row->coder)
        return false;
    switch (row->encoder) {
    case Encoder::Qt:
        return qtCanWrite(row->coder);
    case Encoder::Magick:
        return magickCanWrite(row->coder);
    default:
        return false;
    }
}

int16_t writeRaster(const QImage& picture, const QString& path, uint32_t subtype, float dpi) {
    if (!rasterWriterExists(subtype))
        return kNoEncoder;
    if (picture.isNull() || std::isnan(dpi))
        return kNoPicture;
    if (path.isEmpty())
        return kCannotOpenFile;
    const FormatRow* row = FormatRegistry::rowForSubtype(subtype);
    return row->encoder == Encoder::Qt ? writeWithQt(picture, path, row->coder, dpi)
                                       : writeWithMagick(picture, path, row->coder, dpi);
}
