// The camera's EXIF data and the embedded colour profile, read through libexiv2 from a file's
// metadata blocks alone (exiv2 stops at the first scan of a JPEG and seeks past a PNG's image
// data). Every call into the library is inside a catch-all block: a damaged block gives less
// information, never an exception.

#include "codec/EmbeddedMetadata.h"

#include <cmath>
#include <optional>

// exiv2 0.27 still hands its images over in std::auto_ptr.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>

namespace {

// A profile larger than this is damage, not a colour description.
constexpr long kMaxProfileBytes = 4 * 1024 * 1024;

const Exiv2::Exifdatum* find(const Exiv2::ExifData& exif, const char* key) {
    try {
        const auto it = exif.findKey(Exiv2::ExifKey(key));
        return it == exif.end() ? nullptr : &*it;
    } catch (...) {
        return nullptr;
    }
}

QString textOf(const Exiv2::ExifData& exif, const char* key) {
    const Exiv2::Exifdatum* datum = find(exif, key);
    if (!datum)
        return {};
    try {
        // ASCII fields are padded with NULs and blanks by many cameras.
        QString text = QString::fromStdString(datum->toString());
        text.replace(QChar(0), QChar(' '));
        return text.simplified();
    } catch (...) {
        return {};
    }
}

// The n-th value of a rational field as a number; nothing for a missing value or a zero
// denominator.
std::optional<double> numberOf(const Exiv2::ExifData& exif, const char* key, long n = 0) {
    const Exiv2::Exifdatum* datum = find(exif, key);
    if (!datum || datum->count() <= n)
        return std::nullopt;
    try {
        const Exiv2::Rational value = datum->toRational(n);
        if (value.second == 0)
            return std::nullopt;
        const double number = double(value.first) / double(value.second);
        return std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
    } catch (...) {
        return std::nullopt;
    }
}

std::optional<double> positive(std::optional<double> value) {
    return value && *value > 0 ? value : std::nullopt;
}

// Degrees, minutes and seconds, signed by the reference ("S" and "W" are negative).
std::optional<double> coordinateOf(const Exiv2::ExifData& exif, const char* key, const char* refKey,
                                   double limit) {
    const std::optional<double> degrees = numberOf(exif, key, 0);
    if (!degrees)
        return std::nullopt;
    const double minutes = numberOf(exif, key, 1).value_or(0.0);
    const double seconds = numberOf(exif, key, 2).value_or(0.0);
    const double value = *degrees + minutes / 60.0 + seconds / 3600.0;
    if (!(value >= 0.0 && value <= limit) || minutes < 0 || seconds < 0)
        return std::nullopt;
    const QString ref = textOf(exif, refKey).toUpper();
    return ref.startsWith('S') || ref.startsWith('W') ? -value : value;
}

std::optional<GpsPosition> gpsOf(const Exiv2::ExifData& exif) {
    const auto latitude =
        coordinateOf(exif, "Exif.GPSInfo.GPSLatitude", "Exif.GPSInfo.GPSLatitudeRef", 90.0);
    const auto longitude =
        coordinateOf(exif, "Exif.GPSInfo.GPSLongitude", "Exif.GPSInfo.GPSLongitudeRef", 180.0);
    if (!latitude || !longitude)
        return std::nullopt;
    return GpsPosition{*latitude, *longitude};
}

QDateTime dateOf(const Exiv2::ExifData& exif) {
    for (const char* key : {"Exif.Photo.DateTimeOriginal", "Exif.Photo.DateTimeDigitized"}) {
        const QDateTime taken =
            QDateTime::fromString(textOf(exif, key), QStringLiteral("yyyy:MM:dd HH:mm:ss"));
        if (taken.isValid())
            return taken;
    }
    return {};
}

QString lensOf(const Exiv2::ExifData& exif) {
    QString lens = textOf(exif, "Exif.Photo.LensModel");
    if (!lens.isEmpty())
        return lens;
    // The maker notes' lens, as exiv2 names it from its tables; a bare number is a lens id
    // exiv2 does not know, which tells the user nothing.
    try {
        const auto it = Exiv2::lensName(exif);
        if (it == exif.end())
            return {};
        lens = QString::fromStdString(it->print(&exif)).simplified();
    } catch (...) {
        return {};
    }
    bool numeric = false;
    lens.toDouble(&numeric);
    return numeric || lens.startsWith('(') ? QString() : lens;
}

std::optional<int> isoOf(const Exiv2::ExifData& exif) {
    try {
        const auto it = Exiv2::isoSpeed(exif);
        if (it == exif.end() || it->count() == 0)
            return std::nullopt;
        const long iso = it->toLong(0);
        return iso > 0 && iso < 10'000'000 ? std::optional<int>(int(iso)) : std::nullopt;
    } catch (...) {
        return std::nullopt;
    }
}

CameraData cameraOf(const Exiv2::ExifData& exif) {
    CameraData camera;
    camera.make = textOf(exif, "Exif.Image.Make");
    camera.model = textOf(exif, "Exif.Image.Model");
    camera.lens = lensOf(exif);
    camera.exposureSeconds = positive(numberOf(exif, "Exif.Photo.ExposureTime"));
    camera.fNumber = positive(numberOf(exif, "Exif.Photo.FNumber"));
    if (!camera.fNumber) {
        // The APEX aperture value: f-number = 2^(Av / 2).
        if (const auto apex = numberOf(exif, "Exif.Photo.ApertureValue"); apex && *apex < 64)
            camera.fNumber = std::pow(2.0, *apex / 2.0);
    }
    camera.iso = isoOf(exif);
    camera.focalLengthMm = positive(numberOf(exif, "Exif.Photo.FocalLength"));
    if (const Exiv2::Exifdatum* film = find(exif, "Exif.Photo.FocalLengthIn35mmFilm");
        film && film->count() > 0) {
        try {
            const long mm = film->toLong(0);
            if (mm > 0 && mm < 100'000)
                camera.focalLength35mm = int(mm);
        } catch (...) {
        }
    }
    camera.taken = dateOf(exif);
    camera.gps = gpsOf(exif);
    return camera;
}

// The resolution of the EXIF's first directory, in dots per inch.
std::optional<Dpi> dpiOf(const Exiv2::ExifData& exif) {
    const auto x = positive(numberOf(exif, "Exif.Image.XResolution"));
    const auto y = positive(numberOf(exif, "Exif.Image.YResolution"));
    if (!x || !y)
        return std::nullopt;
    const QString unit = textOf(exif, "Exif.Image.ResolutionUnit");
    if (unit == QLatin1String("1"))
        return std::nullopt;                                        // an aspect ratio only
    const double perInch = unit == QLatin1String("3") ? 2.54 : 1.0; // centimetres
    return Dpi{*x * perInch, *y * perInch};
}

} // namespace

EmbeddedMetadata readEmbeddedMetadata(const QString& path) {
    EmbeddedMetadata result;
    // A damaged block ends the reading: what was read before it stays.
    MetadataCarrier::withMetadataOf(path, [&](Exiv2::Image& image) {
        const Exiv2::ExifData& exif = image.exifData();
        if (!exif.empty()) {
            result.camera = cameraOf(exif);
            result.dpi = dpiOf(exif);
        }
        if (image.iccProfileDefined()) {
            const Exiv2::DataBuf* profile = image.iccProfile();
            if (profile && profile->pData_ && profile->size_ > 0 &&
                profile->size_ <= kMaxProfileBytes)
                result.iccProfile = QByteArray(reinterpret_cast<const char*>(profile->pData_),
                                               qsizetype(profile->size_));
        }
    });
    return result;
}

#pragma GCC diagnostic pop
