#pragma once

#include "browse/ImageFileTest.h"
#include <QString>
#include <cstdint>

// Image-by-image stepping over a folder (previous/next buttons, batch conversion, thumbnail
// walk). Non-image entries are skipped one at a time; there is no wrap-around. On failure the
// path holds the last entry reached, not the starting one. Safe to call from any thread.

// Steps with `step` (101 previous, 102 next) from `path` until an image file of `types` is
// reached. Steps 0 and 1 succeed only when the first or last entry itself is an image.
bool findImageFile(int32_t step, QString& path, const ImageFileTypes& types);

// The first image file of the folder that holds `path`.
bool findFirstImageFile(QString& path, const ImageFileTypes& types);
