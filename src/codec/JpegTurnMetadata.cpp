#include "codec/JpegTurnMetadata.h"

#include "codec/ImageMetadata.h"

#include <cstdint>
#include <memory>

// exiv2 0.27 still hands its images over in std::auto_ptr.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>

namespace {

using ExivImage = std::unique_ptr<Exiv2::Image>;

ExivImage openInMemory(const QByteArray& jpeg) {
    MetadataCarrier::ensureLibraryReady();
    ExivImage image(Exiv2::ImageFactory::open(
                        reinterpret_cast<const Exiv2::byte*>(jpeg.constData()), long(jpeg.size()))
                        .release());
    if (!image || image->imageType() != Exiv2::ImageType::jpeg)
        return nullptr;
    image->readMetadata();
    return image;
}

// Sets an EXIF number that is there to `value`, in the type it has (a SHORT stays a SHORT when
// the value fits). Whether it changed.
bool setExifNumber(Exiv2::ExifData& exif, const char* key, uint32_t value) {
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    if (found == exif.end() || found->count() != 1)
        return false;
    if (found->toLong() == long(value))
        return false;
    if (found->typeId() == Exiv2::unsignedShort && value <= 0xffff)
        *found = uint16_t(value);
    else
        *found = uint32_t(value);
    return true;
}

bool setXmpNumber(Exiv2::XmpData& xmp, const char* key, uint32_t value) {
    const auto found = xmp.findKey(Exiv2::XmpKey(key));
    if (found == xmp.end() || found->toString() == std::to_string(value))
        return false;
    found->setValue(std::to_string(value));
    return true;
}

// The EXIF thumbnail shows the stored picture; it is turned with it, and left out when it
// cannot be (a thumbnail the wrong way round is worse than none).
bool turnExifThumbnail(Exiv2::ExifData& exif,
                       const std::function<QByteArray(const QByteArray&)>& turnThumbnail) {
    const Exiv2::DataBuf stored = Exiv2::ExifThumbC(exif).copy();
    if (stored.size_ <= 0)
        return false;
    const QByteArray turned = turnThumbnail(
        QByteArray(reinterpret_cast<const char*>(stored.pData_), qsizetype(stored.size_)));
    Exiv2::ExifThumb thumb(exif);
    if (turned.isEmpty()) {
        thumb.erase();
        return true;
    }
    thumb.setJpegThumbnail(reinterpret_cast<const Exiv2::byte*>(turned.constData()),
                           long(turned.size()));
    setExifNumber(exif, "Exif.Thumbnail.Orientation", 1);
    return true;
}

} // namespace

namespace JpegTurnMetadata {

int orientation(const QByteArray& jpeg) {
    try {
        const ExivImage image = openInMemory(jpeg);
        if (!image)
            return 1;
        const Exiv2::ExifData& exif = image->exifData();
        const auto found = exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
        if (found == exif.end() || found->count() < 1)
            return 1;
        const long value = found->toLong();
        return value >= 1 && value <= 8 ? int(value) : 1;
    } catch (...) {
        return 1;
    }
}

bool settle(QByteArray& jpeg, int width, int height,
            const std::function<QByteArray(const QByteArray&)>& turnThumbnail) {
    try {
        const ExivImage image = openInMemory(jpeg);
        if (!image)
            return false;
        Exiv2::ExifData& exif = image->exifData();
        Exiv2::XmpData& xmp = image->xmpData();
        bool exifChanged = false;
        if (!exif.empty()) {
            exifChanged |= setExifNumber(exif, "Exif.Image.Orientation", 1);
            exifChanged |= setExifNumber(exif, "Exif.Photo.PixelXDimension", uint32_t(width));
            exifChanged |= setExifNumber(exif, "Exif.Photo.PixelYDimension", uint32_t(height));
            exifChanged |= turnExifThumbnail(exif, turnThumbnail);
        }
        bool xmpChanged = false;
        if (!xmp.empty()) {
            xmpChanged |= setXmpNumber(xmp, "Xmp.tiff.Orientation", 1);
            xmpChanged |= setXmpNumber(xmp, "Xmp.exif.PixelXDimension", uint32_t(width));
            xmpChanged |= setXmpNumber(xmp, "Xmp.exif.PixelYDimension", uint32_t(height));
            xmpChanged |= setXmpNumber(xmp, "Xmp.tiff.ImageWidth", uint32_t(width));
            xmpChanged |= setXmpNumber(xmp, "Xmp.tiff.ImageLength", uint32_t(height));
        }
        if (!exifChanged && !xmpChanged)
            return true;
        // An XMP packet nothing changed in is written back as it was, not serialised anew.
        image->writeXmpFromPacket(!xmpChanged);
        image->writeMetadata();
        Exiv2::BasicIo& io = image->io();
        if (io.open() != 0)
            return false;
        io.seek(0, Exiv2::BasicIo::beg);
        const Exiv2::DataBuf written = io.read(long(io.size()));
        io.close();
        if (written.size_ <= 0)
            return false;
        jpeg = QByteArray(reinterpret_cast<const char*>(written.pData_), qsizetype(written.size_));
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace JpegTurnMetadata

#pragma GCC diagnostic pop
