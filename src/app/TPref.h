#pragma once

#include <QString>
#include <cstdint>

// The conversion settings: what the format list, the resolution list and the fill-list switch
// say, kept between runs by the preferences file.
struct TPref {
    int32_t isBatch = 0;              // mirrors the fill-list check box
    float dpi = 72.0f;                // output resolution
    QString exportFormat = "TIFF";    // four-character output format code, blanks included
    QString destPath;                 // destination folder
};
