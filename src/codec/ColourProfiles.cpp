#include "codec/ColourProfiles.h"

#include "codec/FileStructures.h"

#include <QColorSpace>
#include <QColorTransform>
#include <QMap>

#include <cmath>

namespace {

// A JPEG spreads its profile over APP2 segments of at most 64 KB, numbered 1 to 255.
constexpr int kMaxSegments = 300;
const QByteArray kIccMarker("ICC_PROFILE\0", 12);

} // namespace

namespace ColourProfiles {

bool needsConversion(const QImage& image) {
    const QColorSpace space = image.colorSpace();
    if (!space.isValid() || space == QColorSpace(QColorSpace::SRgb))
        return false;
    // Many PNG writers say "sRGB" as a gamma of 1/2.2 with sRGB's primaries rounded into a cHRM
    // chunk, which Qt reads as a colour space of its own. Where the curve is sRGB's or a plain
    // 2.2 and converting moves no colour by more than a few levels, the picture is meant as sRGB
    // and is shown as it is.
    const bool nearSrgbCurve =
        space.transferFunction() == QColorSpace::TransferFunction::SRgb ||
        (space.transferFunction() == QColorSpace::TransferFunction::Gamma &&
         std::abs(space.gamma() - 2.2f) < 0.05f);
    if (!nearSrgbCurve)
        return true;
    const QColorTransform toSrgb = space.transformationToColorSpace(QColorSpace(QColorSpace::SRgb));
    // Half-saturated probes: a wider gamut's pure primaries would only clip to sRGB's.
    for (const QRgb probe : {qRgb(220, 110, 110), qRgb(110, 220, 110), qRgb(110, 110, 220)}) {
        const QRgb mapped = toSrgb.map(probe);
        if (std::abs(qRed(mapped) - qRed(probe)) > 3 || std::abs(qGreen(mapped) - qGreen(probe)) > 3 ||
            std::abs(qBlue(mapped) - qBlue(probe)) > 3)
            return true;
    }
    return false;
}

void toSrgb(QImage& image) {
    if (!needsConversion(image))
        return;
    const QImage::Format format = image.format();
    if (format == QImage::Format_Grayscale8 || format == QImage::Format_Grayscale16) {
        // Qt converts only RGB pixels; a grey picture tagged with an RGB profile keeps its grey
        // values, which an RGB matrix profile maps onto the neutral axis anyway.
        image.setColorSpace(QColorSpace(QColorSpace::SRgb));
        return;
    }
    image.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
}

QByteArray jpegIccProfile(QIODevice& file) {
    QMap<int, QByteArray> chunks;
    int declaredCount = 0;
    qsizetype total = 0;
    bool damaged = false;
    FileStructures::walkJpegSegments(file, kMaxSegments, [&](uint8_t kind, int length) {
        if (kind != 0xE2 || length <= kIccMarker.size() + 2)
            return true;
        const QByteArray body = file.read(length);
        if (body.size() != length || !body.startsWith(kIccMarker))
            return true;
        const int sequence = uchar(body[kIccMarker.size()]);
        const int count = uchar(body[kIccMarker.size() + 1]);
        total += body.size();
        if (sequence == 0 || count == 0 || sequence > count || chunks.contains(sequence) ||
            (declaredCount && count != declaredCount) || total > kMaxProfileBytes) {
            damaged = true;
            return false;
        }
        declaredCount = count;
        chunks.insert(sequence, body.mid(kIccMarker.size() + 2));
        return true;
    });
    if (damaged || chunks.isEmpty() || chunks.size() != declaredCount)
        return {};
    QByteArray profile;
    for (const QByteArray& chunk : std::as_const(chunks))
        profile += chunk;
    return profile;
}

} // namespace ColourProfiles
