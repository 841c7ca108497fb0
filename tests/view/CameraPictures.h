#pragma once

// Photographs as a camera writes them, made by the tests: a JPEG with the camera's EXIF block
// (make, model, lens, exposure, aperture, ISO, focal lengths, date and a place south and west of
// the equator and meridian), written into the file by libexiv2.

#include <QColorSpace>
#include <QFile>
#include <QImage>
#include <QString>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>

namespace CameraPictures {

// 33°51'24.84" S, 151°12'54.36" W: 33.8569 S, 151.2151 W.
constexpr double kLatitude = -33.8569;
constexpr double kLongitude = -151.2151;

inline QImage gradient(int w, int h) {
    QImage picture(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            picture.setPixel(x, y, qRgb(x * 255 / w, y * 255 / h, 128));
    return picture;
}

// Writes a w x h JPEG with the camera's EXIF and a Display P3 profile; false on failure.
inline bool writeCameraJpeg(const QString& path, int w = 320, int h = 240) {
    QImage picture = gradient(w, h);
    picture.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
    if (!picture.save(path, "JPEG", 90))
        return false;
    try {
        auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
        image->readMetadata();
        Exiv2::ExifData exif;
        exif["Exif.Image.Make"] = "Canon";
        exif["Exif.Image.Model"] = "Canon EOS 5D Mark IV";
        exif["Exif.Photo.LensModel"] = "EF50mm f/1.4 USM";
        exif["Exif.Photo.ExposureTime"] = Exiv2::URational(1, 250);
        exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10);
        exif["Exif.Photo.ISOSpeedRatings"] = uint16_t(400);
        exif["Exif.Photo.FocalLength"] = Exiv2::URational(50, 1);
        exif["Exif.Photo.FocalLengthIn35mmFilm"] = uint16_t(75);
        exif["Exif.Photo.DateTimeOriginal"] = "2024:05:17 14:03:21";
        exif["Exif.GPSInfo.GPSLatitudeRef"] = "S";
        exif["Exif.GPSInfo.GPSLatitude"] = "33/1 51/1 2484/100";
        exif["Exif.GPSInfo.GPSLongitudeRef"] = "W";
        exif["Exif.GPSInfo.GPSLongitude"] = "151/1 12/1 5436/100";
        image->setExifData(exif);
        image->writeMetadata();
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace CameraPictures

#pragma GCC diagnostic pop
