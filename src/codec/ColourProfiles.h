#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QImage>

// Colour management. A decoded picture keeps the colour space its file declares (an embedded
// ICC profile, as QImage::colorSpace()); what is shown on screen is converted to sRGB once, when
// the picture is decoded for viewing, not on every paint. Exports keep the source's pixels and
// profile, so that a wide-gamut photograph stays wide-gamut in a format that can say so; formats
// that cannot hold a profile get sRGB pixels instead.
namespace ColourProfiles {

// Whether the picture declares a colour space other than sRGB (an untagged picture is sRGB).
bool needsConversion(const QImage& image);

// Converts the picture, in place, to sRGB and tags it so; untagged and sRGB pictures are left
// as they are. Grey pictures stay grey.
void toSrgb(QImage& image);

// The ICC profile a JPEG declares in its APP2 "ICC_PROFILE" segments, joined in their
// sequence order, read from the header alone; empty when there is none or it is damaged.
// At most kMaxProfileBytes are read.
QByteArray jpegIccProfile(QIODevice& file);

// A profile larger than this is taken for damage, not for a colour description.
constexpr qsizetype kMaxProfileBytes = 4 * 1024 * 1024;

} // namespace ColourProfiles
