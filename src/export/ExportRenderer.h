#pragma once

#include <QImage>
#include <QRectF>

struct DecodedImage;

// The off-screen picture of a raster export: a premultiplied ARGB bitmap of rect's size
// (truncated), white unless the format keeps transparency, with the source scaled by `scale`,
// its centre on the bitmap's centre and turned by `degrees`, in the source's colour space. A null image when the size is 0
// or the bitmap cannot be made. At angle 0 and scale 1 the decoded picture is used as it is.
QImage renderExportPicture(const DecodedImage& source, const QRectF& rect, const QRectF& r,
                           int format, int degrees, float scale);
