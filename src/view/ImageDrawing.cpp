#include "view/ImageDrawing.h"

#include <QPainter>
#include <QPixelFormat>

#include <cstdio>
#include <cstdlib>

#include "codec/ImageDecoder.h"

void getBitmapBmp(QImage* rep, BitmapStruct* out) {
    if (!rep || !out || rep->isNull())
        return;
    const int channels = qMax(1, int(rep->pixelFormat().channelCount()));
    out->width = float(rep->width());
    out->height = float(rep->height());
    out->bitsPerPixel = uint32_t(rep->depth());
    out->bitsPerSample = uint32_t(qMax(1, rep->depth() / channels));
    out->bytesPerRow = uint32_t(rep->bytesPerLine());
    out->rep = rep;
    out->data = rep->bits();
}

void getBitmap(const char* path, BitmapStruct* out) {
    DecodedImage decoded = ImageDecoder::decode(QString::fromUtf8(path ? path : ""));
    if (!decoded.ok) {
        std::puts("cannot read from file");
        std::fflush(stdout);
        std::exit(0);
    }
    // A QImage always holds its samples meshed; the planar refusal of the message
    // "planar bitmap format not supported." cannot arise here.
    auto* rep = new QImage(std::move(decoded.image)); // owned by the record, see releaseBitmap
    getBitmapBmp(rep, out);
}

void releaseBitmap(BitmapStruct* bitmap) {
    if (!bitmap || !bitmap->rep)
        return;
    delete bitmap->rep;
    bitmap->rep = nullptr;
    bitmap->data = nullptr;
}

void drawDecodedImage(QPainter& painter, const DecodedImage& decoded) {
    if (!decoded.ok || decoded.image.isNull())
        return;
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(QRectF(QPointF(0, 0), decoded.pointSize), decoded.image);
    painter.restore();
}

void drawCGImageFromWMF(QPainter* context, const QString& path, Controller* /*controller*/) {
    if (!context || !context->isActive())
        return;
    const DecodedImage decoded = ImageDecoder::decode(path);
    drawDecodedImage(*context, decoded);
}
