#include "codec/RasterWriters.h"

#include "codec/BmpWriter.h"
#include "codec/ColourProfiles.h"
#include "codec/FormatRegistry.h"
#include "codec/GifWriter.h"
#include "codec/MagickSupport.h"
#include "codec/ModernWriters.h"
#include "codec/PngWriter.h"
#include "codec/SafeReplace.h"
#include "codec/TiffWriter.h"
#include "codec/legacy/LegacyWriters.h"

#include <QBuffer>
#include <QByteArray>
#include <QColorSpace>
#include <QImageWriter>
#include <QObject>
#include <QSaveFile>

#include <Magick++.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <functional>
#include <new>

namespace {

bool qtCanWrite(const char* name) {
    return QImageWriter::supportedImageFormats().contains(QByteArray(name));
}

bool magickCanWrite(const char* coder) {
    ensureMagickStarted(); // the format list asks at start: one module each, not all of them
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

// Whether Magick's resource limits allow a picture of this size: checked before the picture is
// copied for Magick, which would refuse it only after the copy.
bool withinMagickLimits(QSize size) {
    using namespace MagickCore;
    const auto w = MagickSizeType(size.width());
    const auto h = MagickSizeType(size.height());
    return w <= GetMagickResourceLimit(WidthResource) &&
           h <= GetMagickResourceLimit(HeightResource) &&
           w * h <= GetMagickResourceLimit(AreaResource);
}

// The encoders write into a temporary file beside the output, renamed over it only when every
// byte is there (see SafeReplace.h for when it is synced to the disk first). A refusing encoder
// (`write` returns a status other than 0), a full disk or a read-only medium leaves the output
// path as it was.
int16_t writeThrough(const QString& path, const std::function<int16_t(QFileDevice&)>& write) {
    if (!SafeReplace::replacesUserContent(path)) {
        SafeReplace::FreshFile file(path);
        if (!file.open())
            return kCannotOpenFile;
        if (const int16_t status = write(file))
            return status; // the temporary file goes with `file`
        return file.commit() ? 0 : kWriteFailed;
    }
    QSaveFile file(path);
    if (!SafeReplace::openForReplacement(file))
        return kCannotOpenFile;
    if (const int16_t status = write(file)) {
        file.cancelWriting();
        return status;
    }
    return file.commit() ? 0 : kWriteFailed;
}

int16_t writeBytes(const QString& path, const QByteArray& bytes) {
    return writeThrough(path, [&](QIODevice& file) -> int16_t {
        return file.write(bytes) == bytes.size() ? 0 : kWriteFailed;
    });
}

// The encoded file `bytes` with `metadata` written into it; a refusal of the metadata leaves
// the picture without it. Only one copy of the file is held once the metadata is in.
int16_t writeWithMetadata(const QString& path, QByteArray bytes, const ImageMetadata& metadata) {
    int16_t status = kWriteFailed;
    const bool embedded =
        MetadataCarrier::embed(bytes, metadata, [&](const char* data, qint64 size) {
            status = writeThrough(path, [&](QIODevice& file) -> int16_t {
                return file.write(data, size) == size ? 0 : kWriteFailed;
            });
        });
    return embedded ? status : writeBytes(path, bytes);
}

int16_t writeWithQt(const QImage& picture, const QString& path, const char* name, float dpi,
                    const ImageMetadata& metadata) {
    // Shares the pixels; a picture whose resolution is not yet recorded is copied here, so
    // callers that own a large picture record it first (recordResolution).
    QImage image = picture;
    recordResolution(image, dpi);
    const auto encode = [&](QIODevice& device) -> int16_t {
        QImageWriter writer(&device, name);
        if (writer.write(image))
            return 0;
        return writer.error() == QImageWriter::DeviceError ? kWriteFailed : kEncoderFailed;
    };
    // Without metadata straight into the file: the encoders stream their rows, so no second
    // copy of the encoded picture is held in memory. With metadata, encoded in memory so that
    // the metadata goes in before the file appears.
    if (metadata.isEmpty())
        return writeThrough(path, encode);
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite); // an encoder may read back what it wrote
    if (const int16_t status = encode(buffer))
        return status;
    QByteArray bytes = std::move(buffer.buffer()); // the buffer keeps no second reference
    buffer.close();
    return writeWithMetadata(path, std::move(bytes), metadata);
}

// A Magick picture holding the pixels of `argb` (ARGB32), or null when Magick cannot hold
// a picture of this size. Magick's own one-call constructor asserts, taking the program down,
// when its pixel cache cannot be set up; here that case is a plain failure.
MagickCore::Image* constitute(const QImage& argb) {
    MagickCore::Image* image = MagickCore::AcquireImage(nullptr);
    if (!image)
        return nullptr;
    const size_t width = size_t(argb.width());
    const size_t height = size_t(argb.height());
    image->matte = MagickCore::MagickTrue;
    if (MagickCore::SetImageExtent(image, width, height) == MagickCore::MagickFalse ||
        MagickCore::ImportImagePixels(image, 0, 0, width, height, "BGRA", MagickCore::CharPixel,
                                      argb.constBits()) == MagickCore::MagickFalse) {
        MagickCore::DestroyImage(image);
        return nullptr;
    }
    return image;
}

int16_t writeWithMagick(const QImage& picture, const QString& path, const char* coder, float dpi,
                        bool withProfile, const ImageMetadata& metadata) {
    ensureMagickInitialised();
    // Straight (not premultiplied) alpha, laid out B, G, R, A in memory on this little-endian
    // machine; Qt pads no 32-bit row, so the rows follow one another.
    if (!withinMagickLimits(picture.size()))
        return kEncoderFailed;
    Magick::Blob blob;
    {
        const QImage argb = picture.convertToFormat(QImage::Format_ARGB32);
        if (argb.isNull())
            return kOutOfMemory;
        MagickCore::Image* pixels = constitute(argb);
        if (!pixels)
            return kOutOfMemory;
        Magick::Image image(pixels); // takes ownership
        image.quiet(true);           // warnings are not failures
        image.magick(coder);
        image.depth(8);
        if (dpi > 0) {
            image.resolutionUnits(Magick::PixelsPerInchResolution);
            image.density(Magick::Geometry(size_t(std::lround(dpi)), size_t(std::lround(dpi))));
        }
        const QByteArray icc = picture.colorSpace().iccProfile();
        if (withProfile && !icc.isEmpty())
            image.iccColorProfile(Magick::Blob(icc.constData(), size_t(icc.size())));
        image.write(&blob);
    } // the pixels go before the file is written
    if (blob.length() == 0)
        return kEncoderFailed;
    if (!metadata.isEmpty()) {
        QByteArray bytes(static_cast<const char*>(blob.data()), qsizetype(blob.length()));
        blob = Magick::Blob();
        return writeWithMetadata(path, std::move(bytes), metadata);
    }
    return writeBytes(path, QByteArray::fromRawData(static_cast<const char*>(blob.data()),
                                                    qsizetype(blob.length())));
}

int16_t writeModern(const QImage& picture, const QString& path, uint32_t subtype,
                    const ImageMetadata& metadata, const SourceTraits& source) {
    QByteArray bytes;
    ModernEncoding how = modernEncodingFor(picture, subtype, source.hasAlpha);
    how.exif = metadata.exif; // these containers have no place for IPTC
    how.xmp = metadata.xmp;
    if (const int16_t status = encodeModern(picture, subtype, how, bytes))
        return status;
    return writeBytes(path, bytes);
}

} // namespace

int dotsPerMetre(float dpi) {
    // An absurd resolution stays within the 32 bits the formats record it in.
    return int(std::lround(std::clamp(double(dpi) / 0.0254, 0.0, 2147483647.0)));
}

void prepareForEncoder(QImage& picture, uint32_t subtype) {
    const FormatRow* row = FormatRegistry::rowForSubtype(subtype);
    if (!row || picture.format() != QImage::Format_ARGB32_Premultiplied)
        return;
    // Magick takes straight alpha and would make an unpremultiplied copy of the whole picture;
    // converted here, in the picture's own pixels, no copy is made. The PNG writer
    // unpremultiplies row by row itself.
    if (row->encoder == Encoder::Magick)
        picture.convertTo(QImage::Format_ARGB32);
}

void recordResolution(QImage& picture, float dpi) {
    const int dpm = dotsPerMetre(dpi);
    if (dpm > 0) {
        picture.setDotsPerMeterX(dpm); // no copy when the value is already there
        picture.setDotsPerMeterY(dpm);
    }
}

bool rasterWriterExists(uint32_t subtype) {
    const FormatRow* row = FormatRegistry::rowForSubtype(subtype);
    if (!row || !row->coder)
        return false;
    switch (row->encoder) {
    case Encoder::Qt:
        return qtCanWrite(row->coder);
    case Encoder::Magick:
        return magickCanWrite(row->coder);
    case Encoder::Bmp:
    case Encoder::Gif:
    case Encoder::Png:
    case Encoder::Tiff:
        return true;
    case Encoder::Webp:
    case Encoder::Heif:
    case Encoder::Jxl:
        return modernEncoderExists(subtype);
    case Encoder::Legacy:
        return LegacyWriters::exists(row->coder);
    default:
        return false;
    }
}

int16_t writeRaster(const QImage& picture, const QString& path, uint32_t subtype, float dpi,
                    const ImageMetadata& metadata, const SourceTraits& source) {
    if (!rasterWriterExists(subtype))
        return kNoEncoder;
    if (picture.isNull() || std::isnan(dpi))
        return kNoPicture;
    if (path.isEmpty())
        return kCannotOpenFile;
    const FormatRow* row = FormatRegistry::rowForSubtype(subtype);
    const ImageMetadata& carried = row->holdsMetadata ? metadata : ImageMetadata{};
    try {
        // A format that cannot say in which colour space its pixels are gets sRGB pixels.
        const QImage srgb = row->holdsProfile || !ColourProfiles::needsConversion(picture)
                                ? QImage()
                                : picture.convertedToColorSpace(QColorSpace(QColorSpace::SRgb));
        const QImage& pixels = srgb.isNull() ? picture : srgb;
        switch (row->encoder) {
        case Encoder::Qt:
            return writeWithQt(pixels, path, row->coder, dpi, carried);
        case Encoder::Bmp:
            return writeThrough(path, [&](QIODevice& file) { return writeBmp(pixels, file, dpi); });
        case Encoder::Gif:
            return writeThrough(path, [&](QIODevice& file) { return writeGif(pixels, file); });
        case Encoder::Png:
            return writeThrough(
                path, [&](QIODevice& file) { return writePng(pixels, file, dpi, carried); });
        case Encoder::Tiff:
            return writeThrough(
                path, [&](QIODevice& file) { return writeTiff(pixels, file, dpi, carried); });
        case Encoder::Webp:
        case Encoder::Heif:
        case Encoder::Jxl:
            return writeModern(pixels, path, subtype, carried, source);
        case Encoder::Legacy:
            return writeThrough(path, [&](QFileDevice& file) {
                return LegacyWriters::write(row->coder, pixels, file, dpi, path);
            });
        default:
            return writeWithMagick(pixels, path, row->coder, dpi, row->holdsProfile, carried);
        }
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    } catch (const Magick::ErrorResourceLimit&) {
        return kOutOfMemory;
    } catch (...) {
        // Magick::Exception (policy refusals, a coder's own errors) and the like, or a
        // library's own exception type: the encoder failed, nothing escapes.
        return kEncoderFailed;
    }
}

QString writeFailureReason(int16_t status) {
    switch (status) {
    case 0:
        return QString();
    case kNoEncoder:
        return QObject::tr("no encoder for this format");
    case kNoPicture:
        return QObject::tr("there is no picture to write");
    case kCannotOpenFile:
        return QObject::tr("the folder cannot be written to");
    case kEncoderFailed:
        return QObject::tr("the encoder refused the picture");
    case kWriteFailed:
        return QObject::tr("not every byte reached the disk (is it full or read-only?)");
    case kOutOfMemory:
        return QObject::tr("there is not enough memory");
    case kTooLargeForFormat:
        return QObject::tr("the picture is larger than this format can hold");
    default:
        return QObject::tr("error %1").arg(status);
    }
}
