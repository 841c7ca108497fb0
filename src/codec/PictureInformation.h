#pragma once

#include <QDateTime>
#include <QSize>
#include <QString>

#include <optional>

#include "codec/HeaderReaders.h"

// A place on the earth in decimal degrees: south latitudes and west longitudes are negative.
struct GpsPosition {
    double latitude = 0;
    double longitude = 0;
};

// What the camera recorded of a photograph. Every field is missing (empty, nullopt, invalid)
// when the file does not record it or records something that makes no sense.
struct CameraData {
    QString make;
    QString model;
    QString lens;
    std::optional<double> exposureSeconds;
    std::optional<double> fNumber;
    std::optional<int> iso;
    std::optional<double> focalLengthMm;
    std::optional<int> focalLength35mm; // the 35 mm film equivalent, when recorded
    QDateTime taken;                    // as the camera's clock showed it; invalid when unknown
    std::optional<GpsPosition> gps;

    bool isEmpty() const {
        return make.isEmpty() && model.isEmpty() && lens.isEmpty() && !exposureSeconds &&
               !fNumber && !iso && !focalLengthMm && !focalLength35mm && !taken.isValid() && !gps;
    }
};

// What the program can tell about a picture file without decoding its pixels: the file itself,
// its format as the decoder chain recognises it, the header's pixel size and resolution, the
// colour profile it embeds and the camera's EXIF data.
struct PictureInformation {
    bool exists = false; // false: the file is gone (or is no regular file); nothing else is set
    QString fileName;
    qint64 fileBytes = 0;
    QString format;          // "JPEG", "PNG", "HEIC", ...; empty when no reader recognises it
    QSize pixels;            // upright (EXIF orientation applied); empty when the header won't say
    std::optional<Dpi> dpi;  // when the file records a resolution
    bool hasProfile = false; // the file embeds an ICC profile
    QString colourProfile;   // its description; empty when there is none or Qt cannot read it
    CameraData camera;
};

// Reads the information of the file at `path` from its header and metadata blocks only: a
// step through a folder of large photographs stays quick. A damaged or hostile file gives what
// could be read and never an exception, a crash or a hang.
PictureInformation readPictureInformation(const QString& path);
