#pragma once

// JPEGs made by libjpeg-turbo for the tests of the program's JPEG reading and turning.

#include <QByteArray>
#include <QImage>

#include <turbojpeg.h>

// A JPEG at quality 90 of the picture's bytes read as `pixelFormat` (TJPF_*), with the given
// chroma subsampling (TJSAMP_*), optionally progressive; empty when libjpeg-turbo refuses it.
inline QByteArray turboJpeg(const QImage& pixels, int pixelFormat, int subsampling,
                            bool progressive = false) {
    tjhandle handle = tjInitCompress();
    unsigned char* out = nullptr;
    unsigned long size = 0;
    const int status = tjCompress2(handle, pixels.constBits(), pixels.width(),
                                   int(pixels.bytesPerLine()), pixels.height(), pixelFormat, &out,
                                   &size, subsampling, 90, progressive ? TJFLAG_PROGRESSIVE : 0);
    QByteArray bytes =
        status == 0 ? QByteArray(reinterpret_cast<char*>(out), qsizetype(size)) : QByteArray();
    tjFree(out);
    tjDestroy(handle);
    return bytes;
}
