#pragma once

#include <QByteArray>
#include <QIODevice>

// The small JPEG picture that cameras store inside a JPEG's EXIF block (the second image file
// directory), found from the header alone. Hostile input gives an empty result; no more than
// one EXIF segment (64 KB) is read.
namespace ExifThumbnail {

// The bytes of the embedded JPEG thumbnail, or empty when the file has none.
QByteArray read(QIODevice& file);

} // namespace ExifThumbnail
