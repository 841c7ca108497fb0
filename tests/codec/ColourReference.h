#pragma once

// Reference colours for the colour tests, computed by lcms2, a colour engine independent of
// the program's (Qt's QColorSpace and Magick's).

#include <QByteArray>
#include <QColor>
#include <QColorSpace>

#include <lcms2.h>

// The sRGB value of `rgb` in the colour space of `iccProfile`, relative colorimetric.
inline QColor srgbOf(const QByteArray& iccProfile, QColor rgb) {
    cmsHPROFILE source = cmsOpenProfileFromMem(iccProfile.constData(), cmsUInt32Number(iccProfile.size()));
    cmsHPROFILE srgb = cmsCreate_sRGBProfile();
    cmsHTRANSFORM transform = cmsCreateTransform(source, TYPE_RGB_8, srgb, TYPE_RGB_8,
                                                 INTENT_RELATIVE_COLORIMETRIC, 0);
    const unsigned char in[3] = {uchar(rgb.red()), uchar(rgb.green()), uchar(rgb.blue())};
    unsigned char out[3] = {0, 0, 0};
    if (transform)
        cmsDoTransform(transform, in, out, 1);
    if (transform)
        cmsDeleteTransform(transform);
    cmsCloseProfile(srgb);
    if (source)
        cmsCloseProfile(source);
    return QColor(out[0], out[1], out[2]);
}

inline bool near(QColor a, QColor b, int tolerance) {
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}
