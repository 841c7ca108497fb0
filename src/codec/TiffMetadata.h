#pragma once

#include "codec/ImageMetadata.h"

#include <tiffio.h>

class QIODevice;

// EXIF, XMP and IPTC in a TIFF that libtiff streams into its file, with no copy of the file in
// memory.
//
// An EXIF block is itself a little TIFF: a header, a first directory (the camera, the author,
// pointers to the EXIF and GPS directories) and those directories, with every offset counted
// from the block's first byte. The block is therefore written as the very first bytes of the
// output, where its offsets hold as they are (maker notes that count from the header included).
// libtiff then writes its own 8-byte header over the block's, appends the strips after it and
// its own first directory at the end; that directory takes the block's first-directory entries
// and points at the block's EXIF and GPS directories. The block's own first directory stays
// behind as a few unreferenced bytes.
namespace TiffMetadata {

// Writes the EXIF block of `metadata` at the start of `file` and puts the device back at 0 for
// libtiff. False when the bytes were refused; a block that is no little-endian TIFF is left out.
bool placeExifBlock(QIODevice& file, const ImageMetadata& metadata);

// Sets the fields of the directory libtiff is about to write: the EXIF block's first-directory
// entries (but for the picture's own layout and resolution, which the writer records), the
// pointers into the block placed by placeExifBlock, the XMP packet and the IPTC datasets.
// False when libtiff refused a field.
bool setFields(TIFF* tiff, const ImageMetadata& metadata);

} // namespace TiffMetadata
