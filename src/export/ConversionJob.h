#pragma once

#include <QString>

#include "codec/ImageDecoder.h"
#include "codec/ImageMetadata.h"

// What one file's conversion works from, taken once when the file starts: the resolution and
// angle as the window showed them then, and the source's pixels, read before anything at the
// output path is moved (the output may be the source itself). The renderer and the writers of
// this thread read them from here rather than from the window, so that a change made in the
// window during a batch applies from the next file on, and never to half of one.
struct ConversionJob {
    QString source;
    float dpi = 72.0f;
    int degrees = 0;
    DecodedImage decoded; // ok == false when the source's pixels cannot be read
    // The source's EXIF, XMP and IPTC, read with its pixels; empty when outputs leave them out.
    ImageMetadata metadata;
    bool stripMetadata = false;
    // A file of "Convert All": a picture that cannot be drawn is skipped and named in the
    // batch's end summary (`failure` says why) instead of stopping the batch at an alert.
    bool inBatch = false;
    mutable QString failure;
};

// The job of the conversion running on this thread, or nullptr outside one.
const ConversionJob* currentConversionJob();

// Makes `job` the current one of this thread for its lifetime.
class ScopedConversionJob {
public:
    explicit ScopedConversionJob(const ConversionJob& job);
    ~ScopedConversionJob();
    ScopedConversionJob(const ScopedConversionJob&) = delete;
    ScopedConversionJob& operator=(const ScopedConversionJob&) = delete;

private:
    const ConversionJob* previous;
};
