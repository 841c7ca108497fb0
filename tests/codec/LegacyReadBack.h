#pragma once

// Independent readers for the tests of the older formats' writers: FFmpeg's command-line tools
// (ffprobe for what a file holds, ffmpeg for its first frame's pixels) and ImageMagick's own
// MacPaint reader, none of which shares code with the writers.

#include <QByteArray>
#include <QImage>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <Magick++.h>

#include "../view/LoadTestImages.h"

namespace LegacyReadBack {

// "codec_name=png\nwidth=10\nheight=8\n" and the container's name, from ffprobe; empty when it
// cannot read the file.
inline QString probe(const QString& path) {
    QProcess p;
    p.start(QStringLiteral("ffprobe"),
            {"-v", "error", "-show_entries", "stream=codec_name,width,height:format=format_name",
             "-of", "default=nw=1", path});
    if (!p.waitForFinished(60000) || p.exitCode() != 0)
        return {};
    return QString::fromUtf8(p.readAllStandardOutput());
}

// The first frame as an RGB888 picture, decoded by the ffmpeg tool; null when it cannot.
inline QImage firstFrame(const QString& path, QSize size, const QStringList& demuxer = {}) {
    QProcess p;
    p.start(QStringLiteral("ffmpeg"), QStringList{"-v", "error", "-nostdin"} + demuxer +
                                          QStringList{"-i", path, "-frames:v", "1", "-f",
                                                      "rawvideo", "-pix_fmt", "rgb24", "-"});
    if (!p.waitForFinished(60000) || p.exitCode() != 0)
        return {};
    const QByteArray raw = p.readAllStandardOutput();
    if (raw.size() != qsizetype(size.width()) * size.height() * 3)
        return {};
    QImage image(size, QImage::Format_RGB888);
    for (int y = 0; y < size.height(); ++y)
        memcpy(image.scanLine(y), raw.constData() + qsizetype(y) * size.width() * 3,
               size_t(size.width()) * 3);
    return image;
}

// ImageMagick's MacPaint coder, named explicitly (MacPaint has no signature).
inline QImage magickMacPaint(const QString& path) {
    Magick::Image image;
    image.read(("MAC:" + path).toStdString());
    QImage out(int(image.columns()), int(image.rows()), QImage::Format_RGB888);
    image.write(0, 0, image.columns(), image.rows(), "RGB", Magick::CharPixel, out.bits());
    return out;
}

using LoadTestImages::largestDifference;

// The mean of the channel differences, for lossy formats.
inline double meanDifference(const QImage& a, const QImage& b) {
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32);
    double sum = 0;
    for (int r = 0; r < x.height(); ++r) {
        const auto* p = reinterpret_cast<const QRgb*>(x.constScanLine(r));
        const auto* q = reinterpret_cast<const QRgb*>(y.constScanLine(r));
        for (int c = 0; c < x.width(); ++c)
            sum += std::abs(qRed(p[c]) - qRed(q[c])) + std::abs(qGreen(p[c]) - qGreen(q[c])) +
                   std::abs(qBlue(p[c]) - qBlue(q[c]));
    }
    return sum / (3.0 * x.width() * x.height());
}

} // namespace LegacyReadBack
