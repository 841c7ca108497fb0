#include "view/ImageDecoder.h"

#include <QFileInfo>

#include <QFile>
#include <QImageReader>
#include <QSet>
#include <QtEndian>

#include <cmath>
#include <mutex>
#include <optional>

#include "view/DecodeLimits.h"
#include "view/DecoderBackends.h"

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

struct Dpi {
    double x = 0;
    double y = 0;
};

// The resolution a PNG records in its pHYs chunk (pixels per metre), read without decoding:
// chunks are walked by their length fields up to the first image data.
std::optional<Dpi> pngDpi(QFile& file) {
    if (!file.seek(8))
        return std::nullopt;
    for (int chunks = 0; chunks < 10000; ++chunks) {
        uchar head[8];
        if (file.read(reinterpret_cast<char*>(head), 8) != 8)
            return std::nullopt;
        const quint32 length = qFromBigEndian<quint32>(head);
        const QByteArray type(reinterpret_cast<const char*>(head + 4), 4);
        if (type == "IDAT" || type == "IEND")
            return std::nullopt;
        if (type == "pHYs" && length == 9) {
            uchar body[9];
            if (file.read(reinterpret_cast<char*>(body), 9) != 9 || body[8] != 1)
                return std::nullopt; // unit 0 gives only the aspect ratio
            return Dpi{qFromBigEndian<quint32>(body) * 0.0254,
                       qFromBigEndian<quint32>(body + 4) * 0.0254};
        }
        if (!file.seek(file.pos() + qint64(length) + 4))
            return std::nullopt;
    }
    return std::nullopt;
}

// The density of a JPEG's JFIF segment (dots per inch or per centimetre); the markers are
// walked by their lengths up to the start of the scan.
std::optional<Dpi> jpegDpi(QFile& file) {
    if (!file.seek(2))
        return std::nullopt;
    for (int segments = 0; segments < 1000; ++segments) {
        uchar marker[4];
        if (file.read(reinterpret_cast<char*>(marker), 4) != 4 || marker[0] != 0xFF)
            return std::nullopt;
        if (marker[1] == 0xDA || marker[1] == 0xD9)
            return std::nullopt;
        const int length = qFromBigEndian<quint16>(marker + 2);
        if (length < 2)
            return std::nullopt;
        const qint64 next = file.pos() + length - 2;
        if (marker[1] == 0xE0 && length >= 16) {
            uchar app0[12];
            if (file.read(reinterpret_cast<char*>(app0), 12) != 12)
                return std::nullopt;
            if (QByteArray(reinterpret_cast<const char*>(app0), 5) == QByteArray("JFIF", 5)) {
                const int unit = app0[7];
                const double x = qFromBigEndian<quint16>(app0 + 8),
                             y = qFromBigEndian<quint16>(app0 + 10);
                if (unit == 1)
                    return Dpi{x, y};
                if (unit == 2)
                    return Dpi{x * 2.54, y * 2.54};
                return std::nullopt;
            }
        }
        if (!file.seek(next))
            return std::nullopt;
    }
    return std::nullopt;
}

// The resolution in a BMP's info header (pixels per metre); the old 12-byte core header has
// none.
std::optional<Dpi> bmpDpi(QFile& file) {
    uchar head[46];
    if (file.read(reinterpret_cast<char*>(head), 46) != 46 || head[0] != 'B' || head[1] != 'M')
        return std::nullopt;
    if (qFromLittleEndian<quint32>(head + 14) < 40)
        return std::nullopt;
    const qint32 x = qFromLittleEndian<qint32>(head + 38);
    const qint32 y = qFromLittleEndian<qint32>(head + 42);
    if (x <= 0 || y <= 0)
        return std::nullopt;
    return Dpi{x * 0.0254, y * 0.0254};
}

// The X and Y resolution of a TIFF's first image and their unit (inch unless it says
// centimetre; "no unit" gives only the aspect ratio), read from its first directory.
std::optional<Dpi> tiffDpi(QFile& file) {
    uchar head[8];
    if (file.read(reinterpret_cast<char*>(head), 8) != 8)
        return std::nullopt;
    const bool little = head[0] == 'I' && head[1] == 'I';
    if (!little && !(head[0] == 'M' && head[1] == 'M'))
        return std::nullopt;
    auto u16 = [little](const uchar* p) {
        return little ? qFromLittleEndian<quint16>(p) : qFromBigEndian<quint16>(p);
    };
    auto u32 = [little](const uchar* p) {
        return little ? qFromLittleEndian<quint32>(p) : qFromBigEndian<quint32>(p);
    };
    if (u16(head + 2) != 42 || !file.seek(u32(head + 4)))
        return std::nullopt;
    uchar countBytes[2];
    if (file.read(reinterpret_cast<char*>(countBytes), 2) != 2)
        return std::nullopt;
    const int count = u16(countBytes);
    const QByteArray entries = file.read(qint64(count) * 12);
    if (entries.size() != qint64(count) * 12)
        return std::nullopt;
    auto rational = [&](const uchar* entry) -> double {
        if (u16(entry + 2) != 5 || u32(entry + 4) != 1 || !file.seek(u32(entry + 8)))
            return 0.0;
        uchar value[8];
        if (file.read(reinterpret_cast<char*>(value), 8) != 8 || u32(value + 4) == 0)
            return 0.0;
        return double(u32(value)) / double(u32(value + 4));
    };
    double x = 0, y = 0;
    int unit = 2; // inch, when the file names none
    for (int i = 0; i < count; ++i) {
        const auto* entry = reinterpret_cast<const uchar*>(entries.constData()) + i * 12;
        switch (u16(entry)) {
        case 282:
            x = rational(entry);
            break;
        case 283:
            y = rational(entry);
            break;
        case 296:
            unit = u16(entry + 8);
            break;
        default:
            break;
        }
    }
    if (!(x > 0) || !(y > 0) || (unit != 2 && unit != 3))
        return std::nullopt;
    return unit == 3 ? Dpi{x * 2.54, y * 2.54} : Dpi{x, y};
}

// The resolution a file records, read from its header for the formats that have one; the
// others are taken from the decoded image.
std::optional<Dpi> headerDpi(const QString& path, const QByteArray& format, bool* known) {
    using Reader = std::optional<Dpi> (*)(QFile&);
    Reader reader = nullptr;
    if (format == "png")
        reader = pngDpi;
    else if (format == "jpeg")
        reader = jpegDpi;
    else if (format == "bmp")
        reader = bmpDpi;
    else if (format == "tiff")
        reader = tiffDpi;
    *known = reader != nullptr;
    if (!reader)
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return reader(file);
}

enum class Outcome { NotMine, Refused, Failed, Done };

QSize orientedSize(const QImageReader& reader, QSize size) {
    return reader.transformation().testFlag(QImageIOHandler::TransformationRotate90)
               ? size.transposed()
               : size;
}

Outcome qtDecode(const QString& path, DecodedImage& out) {
    setQtAllocationLimit();
    QImageReader reader(path);
    reader.setAutoTransform(true);
    if (!reader.canRead())
        return Outcome::NotMine;
    const QSize declared = reader.size();
    if (declared.isValid() && !withinLimits(declared.width(), declared.height()))
        return Outcome::Refused;
    const QByteArray format = reader.format();
    QImage image;
    if (!reader.read(&image) || image.isNull())
        return Outcome::Failed;
    bool known = false;
    const std::optional<Dpi> dpi = headerDpi(path, format, &known);
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
    out.image = normalised(std::move(image));
    out.ok = true;
    return Outcome::Done;
}

Outcome qtMeasure(const QString& path, QSizeF& out) {
    QImageReader reader(path);
    reader.setAutoTransform(true);
    if (!reader.canRead())
        return Outcome::NotMine;
    const QSize declared = reader.size();
    if (!declared.isValid())
        return Outcome::Failed;
    if (!withinLimits(declared.width(), declared.height()))
        return Outcome::Refused;
    bool known = false;
    const std::optional<Dpi> dpi = headerDpi(path, reader.format(), &known);
    const QSize pixels = orientedSize(reader, declared);
    if (known) {
        out = dpi ? pointSizeFor(pixels, dpi->x, dpi->y) : QSizeF(pixels);
        return Outcome::Done;
    }
    out = QSizeF(pixels);
    return Outcome::Done;
}

} // namespace

namespace ImageDecoder {

QStringList readableSuffixes() {
    static const QStringList suffixes = [] {
        QStringList list;
        QSet<QString> seen;
        auto add = [&](const QString& suffix) {
            const QString lower = suffix.toLower();
            if (!lower.isEmpty() && !seen.contains(lower)) {
                seen.insert(lower);
                list.append(lower);
            }
        };
        for (const QByteArray& format : QImageReader::supportedImageFormats())
            add(QString::fromLatin1(format));
        for (const QString& suffix : magickSuffixes())
            add(suffix);
        add(QStringLiteral("pdf"));
        return list;
    }();
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

DecodedImage decode(const QString& path) {
    if (!isRegularFile(path))
        return DecodedImage{};
    DecodedImage result;
    switch (qtDecode(path, result)) {
    case Outcome::Done:
        return result;
    case Outcome::Refused:
        return DecodedImage{};
    case Outcome::NotMine:
    case Outcome::Failed:
        break; // a format Qt has no reader for, or one its reader could not finish: next link
    }
    if (looksLikePdf(path))
        return pdfDecode(path);
    return magickDecode(path);
}

QSizeF measure(const QString& path) {
    if (!isRegularFile(path))
        return QSizeF();
    QSizeF size;
    switch (qtMeasure(path, size)) {
    case Outcome::Done:
        return size;
    case Outcome::Refused:
        return QSizeF();
    case Outcome::NotMine:
    case Outcome::Failed:
        break;
    }
    if (looksLikePdf(path))
        return pdfMeasure(path);
    return magickMeasure(path);
}

} // namespace ImageDecoder
