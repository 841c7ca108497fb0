#pragma once

// Image files the loading tests write for themselves with real encoders.

#include <Magick++.h>

#include <QByteArray>
#include <QColor>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QString>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>

#include "codec/MagickSupport.h"

namespace LoadTestImages {

// Left half `left`, right half `right`: shows which way a picture was turned. It records
// 72 dpi, so that its size in points is its size in pixels (Qt's writers would otherwise
// record the screen's 96 dpi).
inline QImage twoTone(int w, int h, QColor left, QColor right,
                      QImage::Format format = QImage::Format_RGB32) {
    QImage image(w, h, format);
    image.setDotsPerMeterX(2835);
    image.setDotsPerMeterY(2835);
    image.fill(right);
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(0, 0, w / 2, h, left);
    return image;
}

// The largest difference of any colour channel of any pixel, in 8-bit levels; 256 when the
// sizes differ.
inline int largestDifference(const QImage& a, const QImage& b) {
    if (a.size() != b.size())
        return 256;
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32);
    int largest = 0;
    for (int row = 0; row < x.height(); ++row) {
        const auto* p = reinterpret_cast<const QRgb*>(x.constScanLine(row));
        const auto* q = reinterpret_cast<const QRgb*>(y.constScanLine(row));
        for (int col = 0; col < x.width(); ++col) {
            largest = std::max({largest, std::abs(qRed(p[col]) - qRed(q[col])),
                                std::abs(qGreen(p[col]) - qGreen(q[col])),
                                std::abs(qBlue(p[col]) - qBlue(q[col]))});
        }
    }
    return largest;
}

inline bool writeBytes(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

inline QByteArray readBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline quint32 crc32(const QByteArray& data) {
    quint32 crc = 0xFFFFFFFFu;
    for (const char byte : data) {
        crc ^= uchar(byte);
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

inline QByteArray pngChunk(const QByteArray& type, const QByteArray& body) {
    QByteArray chunk(4, '\0');
    qToBigEndian<quint32>(quint32(body.size()), chunk.data());
    chunk += type + body;
    QByteArray crc(4, '\0');
    qToBigEndian<quint32>(crc32(type + body), crc.data());
    return chunk + crc;
}

// A PNG whose header declares w x h RGB pixels, followed by a few bytes of image data only.
inline QByteArray pngDeclaring(quint32 w, quint32 h) {
    QByteArray ihdr(13, '\0');
    qToBigEndian<quint32>(w, ihdr.data());
    qToBigEndian<quint32>(h, ihdr.data() + 4);
    ihdr[8] = 8;                                                     // bits per sample
    ihdr[9] = 2;                                                     // RGB
    const QByteArray idat = QByteArray::fromHex("789c030000000001"); // an empty zlib stream
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + pngChunk("IHDR", ihdr) + pngChunk("IDAT", idat) +
           pngChunk("IEND", {});
}

// A JPEG with an EXIF segment recording `orientation` right after its start marker.
inline QByteArray withExifOrientation(const QByteArray& jpeg, quint16 orientation) {
    QByteArray tiff("II*\0\x08\0\0\0", 8);
    tiff += QByteArray("\x01\0", 2);                   // one entry
    tiff += QByteArray("\x12\x01\x03\0\x01\0\0\0", 8); // Orientation, SHORT, count 1
    tiff += char(orientation & 0xFF);
    tiff += char(orientation >> 8);
    tiff += QByteArray(2, '\0');
    tiff += QByteArray(4, '\0'); // no next IFD
    const QByteArray body = QByteArray("Exif\0\0", 6) + tiff;
    QByteArray segment("\xFF\xE1", 2);
    QByteArray length(2, '\0');
    qToBigEndian<quint16>(quint16(body.size() + 2), length.data());
    segment += length + body;
    return jpeg.left(2) + segment + jpeg.mid(2);
}

// Writes a picture of w x h with Magick++ in `format` (PSD, PCX, SGI, JPEG in CMYK, ...).
inline bool writeWithMagick(const QString& path, const std::string& format, int w, int h,
                            const std::string& colour, bool cmyk = false) {
    ensureMagickInitialised();
    try {
        Magick::Image image{Magick::Geometry{size_t(w), size_t(h)}, Magick::Color{colour}};
        if (cmyk)
            image.colorSpace(Magick::CMYKColorspace);
        image.magick(format);
        Magick::Blob blob;
        image.write(&blob);
        return writeBytes(
            path, QByteArray(static_cast<const char*>(blob.data()), qsizetype(blob.length())));
    } catch (const std::exception&) {
        return false;
    }
}

// A one-page PDF of w x h points with the left half filled red.
inline bool writePdf(const QString& path, qreal w, qreal h) {
    QPdfWriter writer(path);
    writer.setPageSize(QPageSize(QSizeF(w, h), QPageSize::Point));
    writer.setPageMargins(QMarginsF(0, 0, 0, 0));
    writer.setResolution(72);
    QPainter painter(&writer);
    if (!painter.isActive())
        return false;
    painter.fillRect(QRectF(0, 0, w / 2, h), Qt::red);
    return painter.end();
}

} // namespace LoadTestImages
