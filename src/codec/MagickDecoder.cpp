// The second link of the decoder chain: Magick++ for the formats Qt has no reader for.

#include <Magick++.h>

#include <QBuffer>
#include <QColorSpace>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <exception>

#include "codec/ColourProfiles.h"
#include "codec/DecodeLimits.h"
#include "codec/DecoderBackends.h"
#include "codec/FormatRegistry.h"
#include "codec/MagickSupport.h"

namespace {

// Coders that make pictures out of text, fonts or built-in patterns rather than read an image
// file; a viewer must not offer them for arbitrary files.
//
// Nor is TIFF read here, in any of its variants: Magick's TIFF module installs process-wide
// libtiff handlers that report into the exception of its last read, which is gone by the time
// Qt's TIFF reader (the one TIFF path of this program) raises a warning on the same thread.
bool isPseudoCoder(const char* module) {
    static const QSet<QString> modules = {"TXT",  "CAPTION", "PANGO", "PATTERN", "MAGICK",
                                          "CLIP", "MASK",    "TTF",   "PS",      "PDF",
                                          "EPT",  "XPS",     "TIFF"};
    return modules.contains(QString::fromLatin1(module));
}

// A coder usable here: reads a whole file from memory, is a real file format (not a raw
// sample dump or a built-in generator), and the system policy allows reading it.
bool usableCoder(const MagickCore::MagickInfo* info) {
    return info && info->decoder && !info->raw &&
           info->format_type == MagickCore::UndefinedFormatType && info->blob_support &&
           !isPseudoCoder(info->_module) &&
           MagickCore::IsRightsAuthorized(MagickCore::CoderPolicyDomain,
                                          MagickCore::ReadPolicyRights, info->name);
}

bool usableCoderName(const std::string& name) {
    MagickCore::ExceptionInfo* exception = MagickCore::AcquireExceptionInfo();
    const MagickCore::MagickInfo* info = MagickCore::GetMagickInfo(name.c_str(), exception);
    exception = MagickCore::DestroyExceptionInfo(exception);
    return usableCoder(info);
}

// The coder to name for a file: its suffix when that is a coder usable here, else none (the
// content then decides).
std::string coderForSuffix(const QString& path) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix.isEmpty())
        return {};
    const QByteArray listed = FormatRegistry::magickCoderForSuffix(suffix);
    const std::string name =
        listed.isEmpty() ? suffix.toUpper().toStdString() : listed.toStdString();
    return usableCoderName(name) ? name : std::string();
}

// Reads the file's header (ping) or whole picture (read) from memory: a path handed to Magick
// would be parsed for format prefixes and frame ranges ("x:", "[0]").
// Reads the picture (or, with `pixels` false, only its header) from `data`, naming `coder`
// when it is not empty. The bytes stay where they are (a mapped file): Magick++'s own blob would
// copy them. Warnings (a truncated tail) are not failures; errors are.
MagickCore::Image* readBlob(const uchar* data, size_t size, const std::string& coder, bool pixels) {
    MagickCore::ImageInfo* info = MagickCore::AcquireImageInfo();
    MagickCore::ExceptionInfo* exception = MagickCore::AcquireExceptionInfo();
    info->number_scenes = 1; // the first frame only
    if (!coder.empty()) {
        MagickCore::FormatLocaleString(info->filename, MagickPathExtent, "%s:", coder.c_str());
        MagickCore::SetImageInfo(info, 1, exception);
    }
    MagickCore::Image* image = pixels ? MagickCore::BlobToImage(info, data, size, exception)
                                      : MagickCore::PingBlob(info, data, size, exception);
    if (image && exception->severity >= MagickCore::ErrorException)
        image = MagickCore::DestroyImageList(image);
    MagickCore::DestroyExceptionInfo(exception);
    MagickCore::DestroyImageInfo(info);
    return image;
}

// Reads the file's header (ping) or whole picture (read) from a mapping of the file: a path
// handed to Magick would be parsed for format prefixes and frame ranges ("x:", "[0]"), and a
// mapping reads from disk only the pages a coder looks at. A file larger than any picture within
// the limits can be is refused before anything is read.
bool load(const QString& path, Magick::Image& image, bool pixels) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() <= 0 ||
        file.size() > DecodeLimits::kMaxFileBytes)
        return false;
    const uchar* data = file.map(0, file.size());
    if (!data)
        return false;
    const auto size = size_t(file.size());
    // A file whose signature names a coder not used here (PostScript, EPS, PDF, text, TIFF) is
    // not handed to Magick at all.
    char detected[MagickPathExtent] = {};
    if (MagickCore::GetImageMagick(data, std::min<size_t>(size, 8192), detected) &&
        !usableCoderName(detected))
        return false;
    // A coder whose library would be hurt by the header (see FormatRow::headerCheck) is not
    // even asked to ping it.
    QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    auto affordable = [&](const std::string& coder) {
        const FormatRow* row = FormatRegistry::rowForMagickCoder(QByteArrayView(coder));
        if (!row || !row->headerCheck)
            return true;
        QBuffer buffer(&bytes);
        return buffer.open(QIODevice::ReadOnly) && row->headerCheck(buffer);
    };
    auto attempt = [&](const std::string& coder) {
        if (!affordable(coder.empty() ? std::string(detected) : coder))
            return false;
        try {
            MagickCore::Image* header = readBlob(data, size, coder, false);
            if (!header)
                return false;
            Magick::Image candidate(header);
            if (!usableCoderName(candidate.magick()) ||
                !DecoderBackends::withinLimits(candidate.columns(), candidate.rows()))
                return false;
            if (pixels) {
                MagickCore::Image* full = readBlob(data, size, coder, true);
                if (!full)
                    return false;
                candidate = Magick::Image(full);
            }
            image = candidate;
            image.quiet(true); // warnings from later steps (orienting, colour) are no failures
            return image.columns() > 0 && image.rows() > 0;
        } catch (const std::exception&) {
            return false;
        }
    };
    // First by content; formats without a signature (MacPaint, Targa, PICT) need the suffix.
    if (attempt({}))
        return true;
    const std::string coder = coderForSuffix(path);
    return !coder.empty() && attempt(coder);
}

QSizeF pointsOf(const Magick::Image& image) {
    double dpiX = image.xResolution(), dpiY = image.yResolution();
    if (image.resolutionUnits() == Magick::PixelsPerCentimeterResolution) {
        dpiX *= 2.54;
        dpiY *= 2.54;
    }
    return DecoderBackends::pointSizeFor(QSize(int(image.columns()), int(image.rows())), dpiX,
                                         dpiY);
}

// The picture's embedded ICC profile, at most ColourProfiles::kMaxProfileBytes long, or empty.
QByteArray iccProfileOf(const Magick::Image& image) {
    const Magick::Blob blob = image.iccColorProfile();
    if (blob.length() == 0 || blob.length() > size_t(ColourProfiles::kMaxProfileBytes))
        return {};
    return QByteArray(static_cast<const char*>(blob.data()), qsizetype(blob.length()));
}

// Brings the picture's pixels into RGB and says in which colour space they then are: the one
// of its own RGB profile when Qt can describe it, else sRGB, reached through Magick's colour
// engine from the profile (a CMYK or lookup-table profile), or by Magick's plain formulas for
// a picture with no profile at all (CMYK and the like).
QColorSpace bringToRgb(Magick::Image& image) {
    const QByteArray icc = iccProfileOf(image);
    const Magick::ColorspaceType space = image.colorSpace();
    const bool rgb = space == Magick::sRGBColorspace || space == Magick::RGBColorspace ||
                     space == Magick::GRAYColorspace;
    if (!icc.isEmpty()) {
        const QColorSpace declared = QColorSpace::fromIccProfile(icc);
        if (rgb && declared.isValid())
            return declared;
        try {
            // Assigning a second profile converts the pixels from the first to it.
            const QByteArray srgb = QColorSpace(QColorSpace::SRgb).iccProfile();
            image.profile("ICC", Magick::Blob(srgb.constData(), size_t(srgb.size())));
            if (image.colorSpace() != Magick::sRGBColorspace &&
                image.colorSpace() != Magick::GRAYColorspace)
                image.colorSpace(Magick::sRGBColorspace);
            return QColorSpace(QColorSpace::SRgb);
        } catch (const Magick::Exception&) {
            // A profile Magick's colour engine rejects: the plain formulas below.
        }
    }
    if (!rgb)
        image.colorSpace(Magick::sRGBColorspace); // CMYK and the like, shown as RGB
    return QColorSpace();
}

bool quarterTurned(Magick::OrientationType orientation) {
    return orientation >= Magick::LeftTopOrientation;
}

} // namespace

namespace DecoderBackends {

QStringList magickSuffixes() {
    ensureMagickInitialised();
    QStringList suffixes;
    size_t count = 0;
    MagickCore::ExceptionInfo* exception = MagickCore::AcquireExceptionInfo();
    const MagickCore::MagickInfo** infos = MagickCore::GetMagickInfoList("*", &count, exception);
    exception = MagickCore::DestroyExceptionInfo(exception);
    if (!infos)
        return suffixes;
    for (size_t i = 0; i < count; ++i) {
        if (!usableCoder(infos[i]))
            continue;
        suffixes += FormatRegistry::suffixesOfMagickCoder(infos[i]->name);
    }
    MagickCore::RelinquishMagickMemory(infos);
    return suffixes;
}

DecodedImage magickDecode(const QString& path) {
    ensureMagickInitialised();
    DecodedImage result;
    try {
        Magick::Image image;
        if (!load(path, image, true))
            return result;
        if (image.orientation() > Magick::TopLeftOrientation)
            image.autoOrient();
        const QColorSpace colours = bringToRgb(image);
        const bool alpha = image.matte();
        QImage raster(int(image.columns()), int(image.rows()),
                      alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
        if (raster.isNull())
            return result;
        // Little-endian 32-bit ARGB is B, G, R, A in memory; rows are packed at 4 bytes a pixel.
        image.write(0, 0, image.columns(), image.rows(), "BGRA", Magick::CharPixel, raster.bits());
        raster.setColorSpace(colours);
        result.pointSize = pointsOf(image);
        result.image = normalised(std::move(raster));
        result.ok = true;
    } catch (const std::exception&) {
        return DecodedImage{};
    }
    return result;
}

QSizeF magickMeasure(const QString& path) {
    ensureMagickInitialised();
    try {
        Magick::Image image;
        if (!load(path, image, false))
            return {};
        const QSizeF points = pointsOf(image);
        return quarterTurned(image.orientation()) ? points.transposed() : points;
    } catch (const std::exception&) {
        return {};
    }
}

} // namespace DecoderBackends
