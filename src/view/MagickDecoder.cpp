// The second link of the decoder chain: Magick++ for the formats Qt has no reader for.

#include <Magick++.h>

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <exception>

#include "view/DecoderBackends.h"
#include "view/MagickSupport.h"

namespace {

// Magick coder names whose usual file-name extensions differ from the name; an empty list
// marks a variant of another coder that has no extension of its own.
const QHash<QString, QStringList>& extensionsOfCoder() {
    static const QHash<QString, QStringList> map = {
        {"JPEG", {"jpg", "jpeg", "jpe"}},
        {"JPG", {}},
        {"JPE", {}},
        {"PJPEG", {}},
        {"JPS", {}},
        {"TIFF", {"tif", "tiff"}},
        {"TIFF64", {}},
        {"PTIF", {}},
        {"PICT", {"pict", "pct", "pic"}},
        {"PCT", {}},
        {"MAC", {"mac", "pntg"}},
        {"ICON", {"ico"}},
        {"PNG00", {}},
        {"PNG8", {}},
        {"PNG24", {}},
        {"PNG32", {}},
        {"PNG48", {}},
        {"PNG64", {}},
        {"GIF87", {}},
        {"BMP2", {}},
        {"BMP3", {}},
        {"DXT1", {}},
        {"DXT5", {}},
        {"PCDS", {}},
        {"SIXEL", {"six", "sixel"}},
        {"SIX", {}},
        {"FITS", {"fits", "fts"}},
        {"FTS", {}},
        {"CALS", {"cal", "cals"}},
        {"CAL", {}},
        {"WMZ", {}},
        {"SVGZ", {}},
        {"XV", {}},
        {"VDA", {}},
        {"PSB", {"psb"}},
    };
    return map;
}

// Coders that make pictures out of text, fonts or built-in patterns rather than read an image
// file; a viewer must not offer them for arbitrary files.
bool isPseudoCoder(const char* module) {
    static const QSet<QString> modules = {"TXT",  "CAPTION", "PANGO", "PATTERN", "MAGICK", "CLIP",
                                          "MASK", "TTF",     "PS",    "PDF",     "EPT",    "XPS"};
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
    const QString suffix = QFileInfo(path).suffix().toUpper();
    if (suffix.isEmpty())
        return {};
    for (auto it = extensionsOfCoder().cbegin(); it != extensionsOfCoder().cend(); ++it)
        if (it.value().contains(suffix.toLower()))
            return it.key().toStdString();
    const std::string name = suffix.toStdString();
    return usableCoderName(name) ? name : std::string();
}

// Reads the file's header (ping) or whole picture (read) from memory: a path handed to Magick
// would be parsed for format prefixes and frame ranges ("x:", "[0]").
bool load(const QString& path, Magick::Image& image, bool pixels) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() <= 0)
        return false;
    const QByteArray data = file.readAll();
    // A file whose signature names a coder not used here (PostScript, EPS, PDF, text) is not
    // handed to Magick at all.
    char detected[MagickPathExtent] = {};
    if (MagickCore::GetImageMagick(reinterpret_cast<const unsigned char*>(data.constData()),
                                   size_t(qMin<qsizetype>(data.size(), 8192)), detected) &&
        !usableCoderName(detected))
        return false;
    const Magick::Blob blob(data.constData(), size_t(data.size()));
    image.quiet(true); // warnings (a truncated tail) are not failures
    image.subRange(1);
    auto attempt = [&](const std::string& coder) {
        try {
            Magick::Image candidate;
            candidate.quiet(true);
            candidate.subRange(1);
            if (!coder.empty())
                candidate.magick(coder);
            candidate.ping(blob);
            if (!usableCoderName(candidate.magick()) ||
                !DecoderBackends::withinLimits(candidate.columns(), candidate.rows()))
                return false;
            if (pixels)
                candidate.read(blob);
            image = candidate;
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
        const QString name = QString::fromLatin1(infos[i]->name);
        const auto mapped = extensionsOfCoder().constFind(name);
        if (mapped != extensionsOfCoder().cend())
            suffixes += mapped.value();
        else
            suffixes += name.toLower();
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
        const Magick::ColorspaceType space = image.colorSpace();
        if (space != Magick::sRGBColorspace && space != Magick::RGBColorspace &&
            space != Magick::GRAYColorspace)
            image.colorSpace(Magick::sRGBColorspace); // CMYK and the like, shown as RGB
        const bool alpha = image.matte();
        QImage raster(int(image.columns()), int(image.rows()),
                      alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
        if (raster.isNull())
            return result;
        // Little-endian 32-bit ARGB is B, G, R, A in memory; rows are packed at 4 bytes a pixel.
        image.write(0, 0, image.columns(), image.rows(), "BGRA", Magick::CharPixel, raster.bits());
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
