#pragma once

#include <QByteArray>
#include <QSize>
#include <QString>

#include <functional>

// The descriptive metadata of a picture that an output carries: EXIF, XMP and IPTC, each as the
// bytes a file stores. Writers of formats that hold them give them to their output; writers
// whose library takes the blocks themselves (an EXIF block for a HEIF container, say) read the
// fields directly.
struct ImageMetadata {
    QByteArray exif; // the TIFF structure of an EXIF block (what follows "Exif\0\0" in a JPEG)
    QByteArray xmp;  // an XMP packet, UTF-8
    QByteArray iptc; // IPTC IIM datasets
    bool isEmpty() const { return exif.isEmpty() && xmp.isEmpty() && iptc.isEmpty(); }
};

// Reading, adapting and writing metadata, through libexiv2. A damaged, huge or hostile block
// gives no metadata and never an exception, a crash or a hang.
namespace MetadataCarrier {

// Sets libexiv2 up for use from any thread (its XMP toolkit, its messages muted); every use of
// it in the codec layer calls this first. Cheap after the first call.
void ensureLibraryReady();

// The metadata of the file at `path`; empty when it has none or it cannot be read.
ImageMetadata read(const QString& path);

// The metadata of an output of `pixels` drawn from a source with `source`'s metadata at `dpi`:
// the orientation is 1 (the pixels were turned upright when decoded), the recorded resolution
// and pixel size are the output's, and what described the source's own pixel layout (strip
// offsets, sample formats, the embedded thumbnail, which shows the unturned source) is gone.
ImageMetadata forOutput(const ImageMetadata& source, QSize pixels, float dpi);

// Writes `metadata` into `encoded`, the complete bytes of a JPEG, PNG, TIFF, WebP or Photoshop
// file, keeping what the encoder put there (the colour profile, the resolution), and hands the
// rewritten file to `write`. The encoder's bytes are let go first (`encoded` is then empty), so
// that no more than one copy of the file is held when it is written. False, with nothing handed
// on and `encoded` as it was, when the format is not one of these or the bytes cannot be
// rewritten.
bool embed(QByteArray& encoded, const ImageMetadata& metadata,
           const std::function<void(const char* data, qint64 size)>& write);

} // namespace MetadataCarrier
