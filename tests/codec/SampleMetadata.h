#pragma once

// Metadata for the writers' tests, and reading it back through libexiv2.

#include "codec/ImageMetadata.h"

#include <QString>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>
#pragma GCC diagnostic pop

// A photograph's metadata as a camera and an editor leave it: texts libtiff knows (the camera,
// the author), tags it does not know (a rating, a title stored as UTF-16 bytes), the EXIF
// directory with its interoperability directory, a GPS position, XMP and IPTC.
inline ImageMetadata cameraMetadata() {
    Exiv2::ExifData exif;
    exif["Exif.Image.Make"] = "Testcam";
    exif["Exif.Image.Artist"] = "Ada Photographer";
    exif["Exif.Image.Orientation"] = uint16_t(1);
    exif["Exif.Image.Rating"] = uint16_t(4);
    Exiv2::Value::AutoPtr title = Exiv2::Value::create(Exiv2::unsignedByte);
    title->read("72 0 105 0 0 0"); // "Hi" in UTF-16
    exif.add(Exiv2::ExifKey("Exif.Image.XPTitle"), title.get());
    exif["Exif.Photo.DateTimeOriginal"] = "2024:05:01 10:20:30";
    exif["Exif.Photo.ExposureTime"] = Exiv2::URational(1, 250);
    exif["Exif.Iop.InteroperabilityIndex"] = "R98";
    exif["Exif.GPSInfo.GPSLatitudeRef"] = "N";
    exif["Exif.GPSInfo.GPSLatitude"] = "48/1 51/1 24/1";
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, exif);

    Exiv2::XmpData xmp;
    xmp["Xmp.dc.creator"] = "Ada Photographer";
    std::string packet;
    Exiv2::XmpParser::encode(packet, xmp);
    Exiv2::IptcData iptc;
    iptc["Iptc.Application2.Keywords"] = "harbour";
    const Exiv2::DataBuf datasets = Exiv2::IptcParser::encode(iptc);

    ImageMetadata metadata;
    metadata.exif = QByteArray(reinterpret_cast<const char*>(blob.data()), qsizetype(blob.size()));
    metadata.xmp = QByteArray::fromStdString(packet);
    metadata.iptc = QByteArray(reinterpret_cast<const char*>(datasets.pData_), datasets.size_);
    return metadata;
}

inline QString exivValue(const Exiv2::ExifData& exif, const char* key) {
    const auto it = exif.findKey(Exiv2::ExifKey(key));
    return it == exif.end() ? QString() : QString::fromStdString(it->toString());
}

// Every block of an encoded file as libexiv2 reads it.
inline Exiv2::Image::AutoPtr exivRead(const QByteArray& file) {
    auto image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(file.constData()),
                                           long(file.size()));
    image->readMetadata();
    return image;
}

// Whether libexiv2 finds in `file` everything cameraMetadata() holds.
inline bool carriesCameraMetadata(const QByteArray& file, QString* missing) {
    const auto image = exivRead(file);
    const Exiv2::ExifData& exif = image->exifData();
    const std::pair<const char*, const char*> wanted[] = {
        {"Exif.Image.Make", "Testcam"},
        {"Exif.Image.Artist", "Ada Photographer"},
        {"Exif.Image.Rating", "4"},
        {"Exif.Image.XPTitle", "72 0 105 0 0 0"},
        {"Exif.Photo.DateTimeOriginal", "2024:05:01 10:20:30"},
        {"Exif.Photo.ExposureTime", "1/250"},
        {"Exif.Iop.InteroperabilityIndex", "R98"},
        {"Exif.GPSInfo.GPSLatitude", "48/1 51/1 24/1"}};
    for (const auto& [key, value] : wanted) {
        if (exivValue(exif, key) != QString(value)) {
            *missing = QString("%1 is \"%2\"").arg(key, exivValue(exif, key));
            return false;
        }
    }
    if (image->xmpData()["Xmp.dc.creator"].toString() != "Ada Photographer") {
        *missing = "Xmp.dc.creator";
        return false;
    }
    if (image->iptcData()["Iptc.Application2.Keywords"].toString() != "harbour") {
        *missing = "Iptc.Application2.Keywords";
        return false;
    }
    return true;
}
