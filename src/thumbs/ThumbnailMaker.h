#pragma once

#include <QImage>
#include <QString>

#include <cstdint>

// Makes the picture of one cell of the image list, on any thread: from the shared thumbnail
// cache when it holds a current entry, else by a scaled decode through the decoder chain, whose
// result then goes into the cache (or, for a file that cannot be read, a failure entry does).
namespace ThumbnailMaker {

// The picture of the file fitted within `pixels` x `pixels`, never enlarged; a null image
// for a file that cannot be read.
QImage make(const QString& path, int pixels);

// The picture enlarged or reduced so that its longer side is exactly `pixels`, proportions kept
// (a cell shows every picture at its full side). A null image stays null.
QImage fitToSide(const QImage& image, int pixels);

// How many files have been decoded so far to make thumbnails (cache hits do not count).
uint64_t decodeCount();

} // namespace ThumbnailMaker
