#pragma once

#include <QImage>
#include <QRectF>

struct DecodedImage;

// The off-screen picture of a raster export: a premultiplied ARGB bitmap of rect's size
// (truncated), white unless the format keeps transparency, with the source scaled by `scale`,
// its centre on the bitmap's centre and turned by `degrees`, in the source's colour space. A null
// image when the size is 0 or the bitmap cannot be made. At angle 0 and scale 1 the decoded picture
// is used as it is.
QImage renderExportPicture(const DecodedImage& source, const QRectF& rect, const QRectF& r,
                           int format, int degrees, float scale);

// Whether an export at `dpi` and turned by `degrees` writes the decoded picture as it is (when
// the source also has one pixel per point, which the decoder tells from the file's header): its
// source is then decoded in the encoders' pixel form (ImageDecoder::Layout::Encoding), else in
// the form it is drawn from.
bool writtenAsDecoded(float dpi, int degrees);
