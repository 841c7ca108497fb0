#include "view/InformationText.h"

#include <cmath>

namespace {

// A number as people write it: up to `significant` digits, no trailing zeros.
QString shortNumber(double value, const QLocale& locale, int significant = 3) {
    return locale.toString(value, 'g', significant);
}

// Degrees with the five decimals that place a point within a metre.
QString degrees(double value, const QLocale& locale) {
    return locale.toString(std::abs(value), 'f', 5) + QChar(0x00b0);
}

QString cNumber(double value) {
    return QString::number(value, 'f', 5);
}

} // namespace

QString InformationText::fileSize(qint64 bytes, const QLocale& locale) {
    const QString exact = tr("%1 bytes").arg(locale.toString(bytes));
    if (bytes < 1000)
        return exact;
    return tr("%1 (%2)").arg(locale.formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat), exact);
}

QString InformationText::pixelSize(QSize pixels, const QLocale& locale) {
    const double megapixels = double(pixels.width()) * pixels.height() / 1e6;
    const QString size = tr("%1 × %2 pixels").arg(pixels.width()).arg(pixels.height());
    if (megapixels < 0.1)
        return size;
    return tr("%1 (%2 megapixels)").arg(size, locale.toString(megapixels, 'f', 1));
}

QString InformationText::resolution(const Dpi& dpi, const QLocale& locale) {
    const QString x = shortNumber(std::round(dpi.x * 10) / 10, locale, 6);
    const QString y = shortNumber(std::round(dpi.y * 10) / 10, locale, 6);
    return x == y ? tr("%1 dpi").arg(x) : tr("%1 × %2 dpi").arg(x, y);
}

QString InformationText::exposure(double seconds, const QLocale& locale) {
    if (seconds < 1.0) {
        // Shutter speeds below a second are fractions: 1/250 s. A time that is no such
        // fraction (0.8 s) is written as it is.
        const double denominator = std::round(1.0 / seconds);
        if (denominator >= 2 && std::abs(1.0 / denominator - seconds) <= 0.05 * seconds)
            return tr("1/%1 s").arg(qint64(denominator));
    }
    return tr("%1 s").arg(shortNumber(seconds, locale));
}

QString InformationText::aperture(double fNumber, const QLocale& locale) {
    return QStringLiteral("f/") + shortNumber(std::round(fNumber * 10) / 10, locale, 4);
}

QString InformationText::focalLength(double mm, std::optional<int> film35mm,
                                     const QLocale& locale) {
    const QString length = tr("%1 mm").arg(shortNumber(std::round(mm * 10) / 10, locale, 5));
    if (!film35mm)
        return length;
    return tr("%1 (%2 mm in 35 mm film)").arg(length).arg(*film35mm);
}

QString InformationText::position(const GpsPosition& gps, const QLocale& locale) {
    return tr("%1 %2, %3 %4")
        .arg(degrees(gps.latitude, locale),
             gps.latitude < 0 ? QStringLiteral("S") : QStringLiteral("N"),
             degrees(gps.longitude, locale),
             gps.longitude < 0 ? QStringLiteral("W") : QStringLiteral("E"));
}

QUrl InformationText::mapLink(const GpsPosition& gps) {
    const QString lat = cNumber(gps.latitude);
    const QString lon = cNumber(gps.longitude);
    return QUrl(QStringLiteral("https://www.openstreetmap.org/?mlat=%1&mlon=%2#map=15/%1/%2")
                    .arg(lat, lon));
}

QList<InformationRow> InformationText::rows(const QString& path,
                                            const PictureInformation& information,
                                            QSize shownPixels, const QLocale& locale) {
    QList<InformationRow> rows;
    auto add = [&rows](const QString& label, const QString& value, const QUrl& link = QUrl()) {
        if (!value.isEmpty())
            rows.append({label, value, link});
    };
    if (!information.exists) {
        add(tr("Name"), path.section(QLatin1Char('/'), -1));
        add(tr("File"), tr("The file cannot be found."));
        return rows;
    }
    add(tr("Name"), information.fileName);
    add(tr("Size"), fileSize(information.fileBytes, locale));
    add(tr("Format"), information.format);
    const QSize pixels = information.pixels.isEmpty() ? shownPixels : information.pixels;
    if (!pixels.isEmpty())
        add(tr("Pixels"), pixelSize(pixels, locale));
    if (information.dpi)
        add(tr("Resolution"), resolution(*information.dpi, locale));
    if (!information.colourProfile.isEmpty())
        add(tr("Colour profile"), information.colourProfile);
    else if (information.hasProfile)
        add(tr("Colour profile"), tr("embedded, not readable here"));
    else if (!information.format.isEmpty())
        add(tr("Colour profile"), tr("sRGB (assumed)"));

    const CameraData& camera = information.camera;
    add(tr("Make"), camera.make);
    add(tr("Model"), camera.model);
    add(tr("Lens"), camera.lens);
    if (camera.exposureSeconds)
        add(tr("Exposure"), exposure(*camera.exposureSeconds, locale));
    if (camera.fNumber)
        add(tr("Aperture"), aperture(*camera.fNumber, locale));
    if (camera.iso)
        add(tr("ISO"), QString::number(*camera.iso));
    if (camera.focalLengthMm)
        add(tr("Focal length"), focalLength(*camera.focalLengthMm, camera.focalLength35mm, locale));
    else if (camera.focalLength35mm)
        add(tr("Focal length"), tr("%1 mm in 35 mm film").arg(*camera.focalLength35mm));
    if (camera.taken.isValid())
        add(tr("Date taken"), camera.taken.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    if (camera.gps)
        add(tr("Location"), position(*camera.gps, locale), mapLink(*camera.gps));
    return rows;
}
