#include "codec/ImageDecoder.h"

#include <QFileInfo>

#include <QBuffer>
#include <QColorSpace>
#include <QFile>
#include <QImageReader>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <optional>

#include "codec/ColourProfiles.h"
#include "codec/DecodeLimits.h"
#include "codec/DecoderBackends.h"
#include "codec/ExifThumbnail.h"
#include "codec/FormatRegistry.h"
#include "codec/MagickSupport.h"
#include "codec/ModernDecoders.h"
#include "codec/TurboJpegDecoder.h"

namespace DecoderBackends {

bool withinLimits(int64_t w, int64_t h) {
    return w > 0 && h > 0 && w <= DecodeLimits::kMaxSide && h <= DecodeLimits::kMaxSide &&
           w * h <= DecodeLimits::kMaxPixels;
}

namespace {

// Files that count in pixels per metre or centimetre cannot hold a whole number of dots per
// inch (72 dpi is 2834.6 per metre, stored as 2835): a value within 0.05 of a whole dpi is taken
// as that whole dpi. Below one dot per inch a file records no usable resolution (some writers
// store 0 or 1/65536).
double usableDpi(double dpi) {
    if (!(dpi >= 1.0))
        return 0.0;
    const double whole = std::round(dpi);
    return std::abs(dpi - whole) < 0.05 ? whole : dpi;
}

} // namespace

QSizeF pointSizeFor(QSize pixels, double dpiX, double dpiY) {
    QSizeF points(pixels);
    dpiX = usableDpi(dpiX);
    dpiY = usableDpi(dpiY);
    if (dpiX > 0 && dpiX != 72.0)
        points.setWidth(pixels.width() * 72.0 / dpiX);
    if (dpiY > 0 && dpiY != 72.0)
        points.setHeight(pixels.height() * 72.0 / dpiY);
    return points;
}

QImage normalised(QImage image) {
    QImage::Format target = QImage::Format_RGB32;
    if (image.hasAlphaChannel())
        target = QImage::Format_ARGB32_Premultiplied;
    else if (image.format() == QImage::Format_Grayscale8 ||
             image.format() == QImage::Format_Grayscale16)
        target = QImage::Format_Grayscale8;
    if (image.format() != target)
        image.convertTo(target); // in place where the depth allows; 16-bit samples become 8-bit
    return image;
}

} // namespace DecoderBackends

using namespace DecoderBackends;

namespace {

void setQtAllocationLimit() {
    // A process-wide setting of Qt's: set it once, before the first reader of any thread runs.
    static std::once_flag once;
    std::call_once(once,
                   [] { QImageReader::setAllocationLimit(DecodeLimits::kAllocationLimitMB); });
}

// The resolution a file records, read from its header for the formats whose row has a header
// reader; `known` tells whether the format has one (the others are taken from the decode).
std::optional<Dpi> headerDpi(const QString& path, const QByteArray& format, bool* known) {
    const FormatRow* row = FormatRegistry::rowForQtReader(format);
    *known = row && row->headerDpi;
    if (!*known)
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return row->headerDpi(file);
}

// Whether the file's header is within the work budget of its format (see FormatRow::headerCheck).
bool headerAffordable(const QString& path, const QByteArray& format) {
    const FormatRow* row = FormatRegistry::rowForQtReader(format);
    if (!row || !row->headerCheck)
        return true;
    QFile file(path);
    return !file.open(QIODevice::ReadOnly) || row->headerCheck(file);
}

enum class Outcome { NotMine, Refused, Failed, Done };

QSize orientedSize(const QImageReader& reader, QSize size) {
    return reader.transformation().testFlag(QImageIOHandler::TransformationRotate90)
               ? size.transposed()
               : size;
}

// Turns a picture the way a reader's automatic transformation would (the EXIF orientation),
// keeping its colour space, which Qt's own turning leaves behind.
QImage transformedAs(QImage image, QImageIOHandler::Transformations how) {
    const QColorSpace space = image.colorSpace();
    if (how == QImageIOHandler::TransformationRotate270) {
        image = image.transformed(QTransform().rotate(270));
    } else {
        image.mirror(how.testFlag(QImageIOHandler::TransformationMirror),
                     how.testFlag(QImageIOHandler::TransformationFlip));
        if (how.testFlag(QImageIOHandler::TransformationRotate90))
            image = image.transformed(QTransform().rotate(90));
    }
    if (image.colorSpace() != space)
        image.setColorSpace(space);
    return image;
}

// The thumbnail a camera stored in the JPEG, when it is at least `maxSide` on its longer side
// and has the picture's proportions (a padded thumbnail would show bands); else a null image.
QImage embeddedThumbnail(const QString& path, const QImageReader& reader, QSize declared,
                         int maxSide) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray bytes = ExifThumbnail::read(file);
    if (bytes.isEmpty())
        return {};
    QBuffer buffer(&bytes);
    QImageReader small(&buffer, "jpeg");
    small.setAutoTransform(false);
    const QSize size = small.size();
    if (!size.isValid() || std::max(size.width(), size.height()) < maxSide ||
        !withinLimits(size.width(), size.height()))
        return {};
    const double ratio = double(size.width()) / size.height();
    const double wanted = double(declared.width()) / declared.height();
    if (std::abs(ratio - wanted) > 0.02 * wanted)
        return {};
    QImage image;
    if (!small.read(&image) || image.isNull())
        return {};
    // The camera made the thumbnail from the same pixels and stored no profile of its own:
    // it is in the main picture's colour space.
    if (!file.seek(0))
        return {};
    image.setColorSpace(QColorSpace::fromIccProfile(ColourProfiles::jpegIccProfile(file)));
    image = image.scaled(size.scaled(maxSide, maxSide, Qt::KeepAspectRatio), Qt::IgnoreAspectRatio,
                         Qt::SmoothTransformation);
    return transformedAs(std::move(image), reader.transformation());
}

// A picture fitted within maxSide x maxSide pixels, never enlarged.
QImage fittedWithin(QImage image, int maxSide) {
    if (image.width() <= maxSide && image.height() <= maxSide)
        return image;
    return image.scaled(maxSide, maxSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

// With maxSide > 0 the picture comes fitted within maxSide x maxSide pixels, decoded at that
// size where the reader can (JPEG scales while decoding, SVG draws at the size asked), and its
// size in points is left empty.
Outcome qtDecode(const QString& path, DecodedImage& out, int maxSide, ImageDecoder::Layout layout) {
    setQtAllocationLimit();
    // Other code of the process (a style or platform plugin) may have started Magick++, whose
    // TIFF module leaves libtiff's handlers pointing at its own freed reports.
    useOwnTiffHandlers();
    QImageReader reader(path);
    reader.setAutoTransform(true);
    if (!reader.canRead())
        return Outcome::NotMine;
    const QByteArray format = reader.format();
    if (!headerAffordable(path, format))
        return Outcome::Refused;
    const QSize declared = reader.size();
    if (declared != QSize(-1, -1) &&
        !withinLimits(std::abs(qint64(declared.width())), std::abs(qint64(declared.height()))))
        return Outcome::Refused; // a negative side (a top-down BMP) counts by its length
    const QSize stored(std::abs(declared.width()), std::abs(declared.height()));
    if (maxSide > 0 && declared != QSize(-1, -1) &&
        (stored.width() > maxSide || stored.height() > maxSide)) {
        if (format == "jpeg") {
            QImage small = embeddedThumbnail(path, reader, stored, maxSide);
            if (!small.isNull()) {
                out.image = normalised(std::move(small));
                out.ok = true;
                return Outcome::Done;
            }
        }
        // The size asked is in the file's own orientation, before the reader turns it.
        reader.setScaledSize(stored.scaled(maxSide, maxSide, Qt::KeepAspectRatio));
    }
    bool known = false;
    std::optional<Dpi> dpi;
    if (maxSide == 0)
        dpi = headerDpi(path, format, &known);
    QImage image;
    // A whole JPEG for an encoder comes in the encoder's pixel form already; a file the fast
    // reader leaves (CMYK, damaged) goes to Qt's reader as before. One that records a resolution
    // other than 72 dpi is scaled when it is exported, so drawn: it comes in the drawing form.
    const bool encoderForm = format == "jpeg" && maxSide == 0 &&
                             layout == ImageDecoder::Layout::Encoding &&
                             (!dpi || ImageDecoder::pointsArePixels(dpi->x, dpi->y));
    if (encoderForm)
        image = TurboJpegDecoder::decode(path);
    const bool packed = !image.isNull();
    // Turned here rather than by the reader: Qt's turning drops the picture's colour space.
    reader.setAutoTransform(false);
    if (!packed && (!reader.read(&image) || image.isNull()))
        return Outcome::Failed;
    if (!withinLimits(image.width(), image.height()))
        return Outcome::Refused; // a reader that gave more than its header said
    image = transformedAs(std::move(image), reader.transformation());
    if (maxSide > 0) {
        out.image = normalised(fittedWithin(std::move(image), maxSide));
        out.ok = true;
        return Outcome::Done;
    }
    if (known) {
        out.pointSize = dpi ? pointSizeFor(image.size(), dpi->x, dpi->y) : QSizeF(image.size());
    } else {
        // A reader that found no resolution leaves the default of a new image in place.
        const QImage fresh(1, 1, QImage::Format_RGB32);
        const bool recorded = image.dotsPerMeterX() != fresh.dotsPerMeterX() ||
                              image.dotsPerMeterY() != fresh.dotsPerMeterY();
        out.pointSize = recorded ? pointSizeFor(image.size(), image.dotsPerMeterX() * 0.0254,
                                                image.dotsPerMeterY() * 0.0254)
                                 : QSizeF(image.size());
    }
    out.image = packed ? std::move(image) : normalised(std::move(image));
    out.ok = true;
    return Outcome::Done;
}

// The header as Qt's readers see it; false when none of them reads the file.
bool qtHeader(const QString& path, ImageDecoder::PictureHeader& header) {
    useOwnTiffHandlers();
    QImageReader reader(path);
    reader.setAutoTransform(true);
    if (!reader.canRead())
        return false;
    header.qtFormat = reader.format();
    header.affordable = headerAffordable(path, header.qtFormat);
    if (!header.affordable)
        return true;
    const QSize declared = reader.size();
    if (declared != QSize(-1, -1)) // a negative side (a top-down BMP) counts by its length
        header.pixels =
            orientedSize(reader, QSize(std::abs(declared.width()), std::abs(declared.height())));
    bool known = false;
    header.dpi = headerDpi(path, header.qtFormat, &known);
    return true;
}

// Whether the own reader's measure decodes the whole picture.
bool measureDecodes(OwnReader own) {
    return own == OwnReader::QuickTimeImage || own == OwnReader::Flic;
}

} // namespace

namespace ImageDecoder {

bool pointsArePixels(double dpiX, double dpiY) {
    return pointSizeFor(QSize(1, 1), dpiX, dpiY) == QSizeF(1, 1);
}

namespace {

// The suffixes in lower case, without empty ones, each once, in their first order.
QStringList lowerOnce(const QStringList& suffixes) {
    QStringList list;
    for (const QString& suffix : suffixes) {
        const QString lower = suffix.toLower();
        if (!lower.isEmpty() && !list.contains(lower))
            list.append(lower);
    }
    return list;
}

} // namespace

QStringList suffixesReadWithoutMagick() {
    static const QStringList suffixes = [] {
        QStringList all;
        for (const QByteArray& format : QImageReader::supportedImageFormats())
            all.append(QString::fromLatin1(format));
        all.append(QStringLiteral("pdf"));
        all += FormatRegistry::ownReaderSuffixes();
        return lowerOnce(all);
    }();
    return suffixes;
}

QStringList readableSuffixes() {
    static const QStringList suffixes = lowerOnce(suffixesReadWithoutMagick() + magickSuffixes());
    return suffixes;
}

// Only regular files are decoded: no empty name, folder, pipe or device (a /dev/zero named
// .png would otherwise be read forever).
static bool isRegularFile(const QString& path) {
    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    return info.isFile() && info.isReadable();
}

// The decoder chain, with the picture in the colour space its file declares.
static DecodedImage decodeInSourceColours(const QString& path, int maxSide,
                                          Layout layout = Layout::Drawing) {
    if (!isRegularFile(path))
        return DecodedImage{};
    maxSide = std::max(maxSide, 0); // 0: the whole picture
    if (const OwnReader own = ModernDecoders::readerFor(path); own != OwnReader::None)
        return ModernDecoders::decode(path, own, maxSide);
    DecodedImage result;
    switch (qtDecode(path, result, maxSide, layout)) {
    case Outcome::Done:
        return result;
    case Outcome::Refused:
        return DecodedImage{};
    case Outcome::NotMine:
    case Outcome::Failed:
        break; // a format Qt has no reader for, or one its reader could not finish: next link
    }
    if (looksLikePdf(path))
        return maxSide > 0 ? pdfDecodeScaled(path, maxSide) : pdfDecode(path);
    result = magickDecode(path);
    if (result.ok && maxSide > 0) {
        result.image = normalised(fittedWithin(std::move(result.image), maxSide));
        result.pointSize = QSizeF();
    }
    return result;
}

DecodedImage decode(const QString& path, Colours colours, Layout layout) {
    DecodedImage result = decodeInSourceColours(path, 0, layout);
    if (result.ok && colours == Colours::Display)
        ColourProfiles::toSrgb(result.image);
    return result;
}

DecodedImage decodeScaled(const QString& path, int maxSide) {
    // A thumbnail is scaled before it is converted: the conversion then costs next to nothing.
    DecodedImage result = decodeInSourceColours(path, maxSide);
    if (result.ok)
        ColourProfiles::toSrgb(result.image);
    return result;
}

PictureHeader readHeader(const QString& path) {
    PictureHeader header;
    if (!isRegularFile(path))
        return header;
    header.own = ModernDecoders::readerFor(path);
    if (header.own != OwnReader::None) {
        // These formats record no resolution of their own: their size in points is in pixels.
        if (!measureDecodes(header.own))
            header.pixels = ModernDecoders::measure(path, header.own).toSize();
        return header;
    }
    if (!qtHeader(path, header))
        header.pdf = looksLikePdf(path);
    return header;
}

QSizeF measure(const QString& path) {
    if (!isRegularFile(path))
        return QSizeF();
    const PictureHeader header = readHeader(path);
    if (header.own != OwnReader::None)
        return measureDecodes(header.own) ? ModernDecoders::measure(path, header.own)
                                          : QSizeF(header.pixels);
    const bool qt = !header.qtFormat.isEmpty();
    if (qt && !header.affordable)
        return QSizeF();
    if (qt && header.pixels != QSize(-1, -1)) {
        if (!withinLimits(header.pixels.width(), header.pixels.height()))
            return QSizeF();
        return header.dpi ? pointSizeFor(header.pixels, header.dpi->x, header.dpi->y)
                          : QSizeF(header.pixels);
    }
    // A format Qt has no reader for, or one whose reader could not tell the size: next link.
    if (header.pdf || (qt && looksLikePdf(path)))
        return pdfMeasure(path);
    return magickMeasure(path);
}

} // namespace ImageDecoder
