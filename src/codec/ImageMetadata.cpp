#include "codec/ImageMetadata.h"
#include "codec/EmbeddedMetadata.h"

#include <QFile>
#include <QFileInfo>

#include <cmath>
#include <exception>
#include <mutex>
#include <set>
#include <unordered_set>

// exiv2 0.27 still hands its images over in std::auto_ptr.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>

namespace {

// Larger blocks than these are no description of a picture but damage or an attack.
constexpr qsizetype kMaxBlockBytes = 16 * 1024 * 1024;
// exiv2 parses a file's structure from its header; a file larger than any picture the decoders
// accept is not handed to it.
constexpr qint64 kMaxFileBytes = qint64(4) * 1024 * 1024 * 1024;

std::mutex xmpToolkitLock;

void lockXmp(void* data, bool lock) {
    auto* mutex = static_cast<std::mutex*>(data);
    lock ? mutex->lock() : mutex->unlock();
}

// The XMP toolkit inside exiv2 keeps global state: it is set up once, with a lock, before any
// thread parses a packet. exiv2's own messages are silenced: a damaged block is a plain
// "no metadata" here.
void ensureExiv2Ready() {
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::XmpParser::initialize(lockXmp, &xmpToolkitLock);
    });
}

// The tags of a TIFF's first directory that describe how its own pixels are stored, or which
// travel in other ways (the colour profile, XMP and IPTC blocks, Photoshop's resources): an
// output gets these from its encoder, never from its source.
bool isLayoutTag(uint16_t tag) {
    static const std::set<uint16_t> tags = {
        0x00fe, 0x00ff, 0x0100, 0x0101, 0x0102, 0x0103, 0x0106, 0x0107, 0x0108, 0x0109, 0x010a,
        0x0111, 0x0115, 0x0116, 0x0117, 0x0118, 0x0119, 0x011c, 0x0122, 0x0123, 0x0124, 0x0125,
        0x012d, 0x013d, 0x013e, 0x013f, 0x0140, 0x0142, 0x0143, 0x0144, 0x0145, 0x014a, 0x014c,
        0x0152, 0x0153, 0x0154, 0x0155, 0x0156, 0x0200, 0x0201, 0x0202, 0x0211, 0x0212, 0x0213,
        0x0214, 0x02bc, 0x828d, 0x828e, 0x83bb, 0x8649, 0x8773, 0x935c};
    return tags.contains(tag) || (tag >= 0xc612 && tag <= 0xc7ff); // and a DNG's own tags
}

bool keepsExifDatum(const Exiv2::Exifdatum& datum) {
    const std::string group = datum.groupName();
    if (group == "Image")
        return !isLayoutTag(datum.tag());
    // The thumbnail directory and the directories of further pictures describe pixels the
    // output does not have.
    return group != "Thumbnail" && group.rfind("SubImage", 0) != 0 &&
           group.rfind("Image2", 0) != 0 && group.rfind("Image3", 0) != 0;
}

Exiv2::URational dpiRational(float dpi) {
    const double value = std::isfinite(dpi) && dpi > 0 ? double(dpi) : 72.0;
    return Exiv2::URational(uint32_t(std::lround(value * 100.0)), 100);
}

QByteArray bytesOf(const Exiv2::byte* data, size_t size) {
    if (!data || size == 0 || size > size_t(kMaxBlockBytes))
        return {};
    return QByteArray(reinterpret_cast<const char*>(data), qsizetype(size));
}

QByteArray encodeExif(const Exiv2::ExifData& exif) {
    if (exif.empty())
        return {};
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, exif);
    return bytesOf(blob.data(), blob.size());
}

QByteArray encodeXmp(const Exiv2::XmpData& xmp) {
    std::string packet;
    if (xmp.empty() || Exiv2::XmpParser::encode(packet, xmp) != 0)
        return {};
    return bytesOf(reinterpret_cast<const Exiv2::byte*>(packet.data()), packet.size());
}

QByteArray encodeIptc(const Exiv2::IptcData& iptc) {
    if (iptc.empty())
        return {};
    const Exiv2::DataBuf buffer = Exiv2::IptcParser::encode(iptc);
    return bytesOf(buffer.pData_, size_t(buffer.size_));
}

// Decoders of the three blocks; a block that does not parse gives an empty container.
Exiv2::ExifData decodeExif(const QByteArray& bytes) {
    Exiv2::ExifData exif;
    if (!bytes.isEmpty() && bytes.size() <= kMaxBlockBytes)
        Exiv2::ExifParser::decode(exif, reinterpret_cast<const Exiv2::byte*>(bytes.constData()),
                                  uint32_t(bytes.size()));
    return exif;
}

Exiv2::XmpData decodeXmp(const QByteArray& bytes) {
    Exiv2::XmpData xmp;
    if (!bytes.isEmpty() && bytes.size() <= kMaxBlockBytes &&
        Exiv2::XmpParser::decode(xmp, bytes.toStdString()) != 0)
        xmp.clear();
    return xmp;
}

Exiv2::IptcData decodeIptc(const QByteArray& bytes) {
    Exiv2::IptcData iptc;
    if (!bytes.isEmpty() && bytes.size() <= kMaxBlockBytes &&
        Exiv2::IptcParser::decode(iptc, reinterpret_cast<const Exiv2::byte*>(bytes.constData()),
                                  uint32_t(bytes.size())) != 0)
        iptc.clear();
    return iptc;
}

// Sets an XMP property only where the packet has it: the packet describes what it describes.
void updateXmp(Exiv2::XmpData& xmp, const char* key, const std::string& value) {
    const Exiv2::XmpKey xmpKey(key);
    if (xmp.findKey(xmpKey) != xmp.end())
        xmp[key] = value;
}

} // namespace

namespace MetadataCarrier {

void ensureLibraryReady() {
    ensureExiv2Ready();
}

bool withMetadataOf(const QString& path, const std::function<void(Exiv2::Image&)>& use) {
    const QFileInfo info(path);
    if (!info.isFile() || info.size() <= 0 || info.size() > kMaxFileBytes)
        return false;
    try {
        ensureExiv2Ready();
        Exiv2::Image::AutoPtr image =
            Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString(), false);
        if (!image.get())
            return false;
        image->readMetadata();
        use(*image);
        return true;
    } catch (...) {
        return false; // Exiv2::Error for damage, std::bad_alloc for a block that claims too much
    }
}

ImageMetadata read(const QString& path) {
    ImageMetadata metadata;
    const bool read = withMetadataOf(path, [&](Exiv2::Image& image) {
        metadata.exif = encodeExif(image.exifData());
        metadata.xmp = encodeXmp(image.xmpData());
        metadata.iptc = encodeIptc(image.iptcData());
    });
    return read ? metadata : ImageMetadata{};
}

ImageMetadata forOutput(const ImageMetadata& source, QSize pixels, float dpi) {
    if (source.isEmpty())
        return {};
    try {
        ensureExiv2Ready();
        ImageMetadata output;
        Exiv2::ExifData exif = decodeExif(source.exif);
        for (auto it = exif.begin(); it != exif.end();)
            it = keepsExifDatum(*it) ? std::next(it) : exif.erase(it);
        if (!exif.empty()) {
            exif["Exif.Image.Orientation"] = uint16_t(1);
            exif["Exif.Image.XResolution"] = dpiRational(dpi);
            exif["Exif.Image.YResolution"] = dpiRational(dpi);
            exif["Exif.Image.ResolutionUnit"] = uint16_t(2); // inches
            if (exif.findKey(Exiv2::ExifKey("Exif.Photo.PixelXDimension")) != exif.end()) {
                exif["Exif.Photo.PixelXDimension"] = uint32_t(pixels.width());
                exif["Exif.Photo.PixelYDimension"] = uint32_t(pixels.height());
            }
        }
        output.exif = encodeExif(exif);

        Exiv2::XmpData xmp = decodeXmp(source.xmp);
        const Exiv2::URational resolution = dpiRational(dpi);
        const std::string rational =
            std::to_string(resolution.first) + "/" + std::to_string(resolution.second);
        updateXmp(xmp, "Xmp.tiff.Orientation", "1");
        updateXmp(xmp, "Xmp.tiff.XResolution", rational);
        updateXmp(xmp, "Xmp.tiff.YResolution", rational);
        updateXmp(xmp, "Xmp.tiff.ResolutionUnit", "2");
        updateXmp(xmp, "Xmp.tiff.ImageWidth", std::to_string(pixels.width()));
        updateXmp(xmp, "Xmp.tiff.ImageLength", std::to_string(pixels.height()));
        updateXmp(xmp, "Xmp.exif.PixelXDimension", std::to_string(pixels.width()));
        updateXmp(xmp, "Xmp.exif.PixelYDimension", std::to_string(pixels.height()));
        output.xmp = encodeXmp(xmp);

        output.iptc = encodeIptc(decodeIptc(source.iptc));
        return output;
    } catch (...) {
        return {};
    }
}

// The source's EXIF with the encoder's own entries added where the source has none of the same
// key. (Looking each key up in turn would compare strings quadratically: a camera's maker notes
// run to hundreds of entries.)
static Exiv2::ExifData overlaid(const Exiv2::ExifData& encoders, Exiv2::ExifData source) {
    std::unordered_set<std::string> keys;
    for (const Exiv2::Exifdatum& datum : source)
        keys.insert(datum.key());
    for (const Exiv2::Exifdatum& datum : encoders) {
        if (!keys.contains(datum.key()))
            source.add(datum);
    }
    return source;
}

bool embed(QByteArray& encoded, const ImageMetadata& metadata,
           const std::function<void(const char* data, qint64 size)>& write) {
    if (metadata.isEmpty())
        return false;
    Exiv2::Image::AutoPtr image;
    const Exiv2::byte* rewritten = nullptr;
    long size = 0;
    try {
        ensureExiv2Ready();
        image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(encoded.constData()),
                                          long(encoded.size()));
        if (!image.get())
            return false;
        // What the encoder wrote (a TIFF's own directory, the profile) is read first and kept;
        // the source's EXIF entries are laid over it.
        image->readMetadata();
        image->setExifData(overlaid(image->exifData(), decodeExif(metadata.exif)));
        if (!metadata.xmp.isEmpty())
            image->setXmpData(decodeXmp(metadata.xmp));
        if (!metadata.iptc.isEmpty())
            image->setIptcData(decodeIptc(metadata.iptc));
        image->writeMetadata(); // into memory of exiv2's own: `encoded` is no longer read

        Exiv2::BasicIo& io = image->io();
        if (io.open() != 0)
            return false;
        size = io.size();
        rewritten = size > 0 ? io.mmap(false) : nullptr;
        if (!rewritten)
            return false;
    } catch (...) {
        return false;
    }
    encoded = QByteArray();
    write(reinterpret_cast<const char*>(rewritten), qint64(size));
    return true;
}

} // namespace MetadataCarrier

#pragma GCC diagnostic pop
