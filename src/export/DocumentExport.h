#pragma once

#include <QByteArray>
#include <QRectF>
#include <QString>

struct DecodedImage;
class QImage;

// A one-page PDF whose page is `bounds` turned by `degrees` (in points), holding the picture
// drawn into `bounds` at full resolution, turned about the page's centre. The output appears
// only complete; false, with the output as it was, when it cannot be made. std::bad_alloc is
// passed on to the caller.
bool writePictureAsPdf(const QImage& picture, const QRectF& bounds, int degrees,
                       const QString& outputPath);

// Turns a one-page PDF document into Encapsulated PostScript whose %%BoundingBox is the page;
// an empty result when the document cannot be read.
QByteArray pdfToEps(const QByteArray& pdf);
