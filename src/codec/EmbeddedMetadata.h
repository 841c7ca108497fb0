#pragma once

// Private to the metadata readers (ImageMetadata.cpp, CameraMetadata.cpp) and
// PictureInformation.cpp.

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

#include "codec/HeaderReaders.h"
#include "codec/PictureInformation.h"

namespace Exiv2 {
class Image;
}

// The parts of readPictureInformation that read the camera's EXIF data and the embedded colour
// profile through libexiv2; empty when the file has neither or they cannot be read.
struct EmbeddedMetadata {
    CameraData camera;
    QByteArray iccProfile;
    std::optional<Dpi> dpi; // the EXIF resolution, for formats without a header reader
};
EmbeddedMetadata readEmbeddedMetadata(const QString& path);

namespace MetadataCarrier {

// Opens the file at `path` through libexiv2, reads its metadata blocks and hands the image to
// `use`, all inside a catch-all block (Exiv2::Error for damage, std::bad_alloc for a block that
// claims too much). False when the file is no regular file, is empty or larger than any picture
// the decoders accept, or could not be opened or read to the end of `use`.
bool withMetadataOf(const QString& path, const std::function<void(Exiv2::Image&)>& use);

} // namespace MetadataCarrier
