#pragma once

#include <QString>
#include <QStringList>

// One "--convert" run: the paths as given (files and folders), converted on a controller that
// has no window, with progress on stdout, one line per failed file on stderr and a summary.
struct ConvertRequest {
    long format = -1; // index in the output-format table
    float dpi = 72.0f;
    int degrees = 0;
    QString destFolder; // absolute, existing
    bool overwrite = false;
    bool stripMetadata = false; // outputs keep no EXIF, XMP or IPTC
    QStringList paths;
};

// Returns the run's exit code (see CommandLineExit).
int runConversion(const ConvertRequest& request);
