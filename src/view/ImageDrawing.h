#pragma once

#include <QImage>
#include <QString>
#include <cstdint>

class Controller;
class QPainter;
struct DecodedImage;

// A description of one raster: width and height, bits per pixel and per sample, row stride and
// the first byte of the interleaved samples, owned by `rep`.
struct BitmapStruct {
    float width = 0;
    float height = 0;
    uint32_t bitsPerPixel = 0;
    uint32_t bitsPerSample = 0;
    uint32_t bytesPerRow = 0;
    uint8_t* data = nullptr;
    QImage* rep = nullptr; // owned by the record once filled by getBitmap; freed by releaseBitmap
};

// Fills `out` from `rep` (the image is not copied; `out->rep` points at it).
void getBitmapBmp(QImage* rep, BitmapStruct* out);
// Reads a file into a new raster owned by `out`; prints a message and ends the process with
// status 0 when it cannot ("cannot read from file", "planar bitmap format not supported.").
void getBitmap(const char* path, BitmapStruct* out);
void releaseBitmap(BitmapStruct* bitmap);

// Draws the decoded picture at its natural size in points at the painter's origin, with the
// painter's own transform; smooth scaling, composition "source over" onto what is there.
void drawDecodedImage(QPainter& painter, const DecodedImage& decoded);

// Decodes `path` and draws it as drawDecodedImage does; draws nothing when it cannot be read.
// The controller argument is accepted and not used.
void drawCGImageFromWMF(QPainter* context, const QString& path, Controller* controller);
