#pragma once

// Pictures for the image list's suites, written by Qt's own encoders into a folder the test
// owns, each a flat colour so that a cell's drawing tells which file it shows.

#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QString>

#include <sys/stat.h>
#include <utime.h>

namespace ThumbTestFiles {

inline QString writePicture(const QString& folder, const QString& name, QSize size,
                            QColor colour = Qt::darkBlue, const char* format = nullptr) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    const QString path = folder + u'/' + name;
    return image.save(path, format) ? path : QString();
}

inline QString writeBytes(const QString& folder, const QString& name, const QByteArray& bytes) {
    const QString path = folder + u'/' + name;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return QString();
    return path;
}

// Sets the file's modification time to `seconds` since the epoch.
inline bool setModified(const QString& path, qint64 seconds) {
    struct utimbuf times {};
    times.actime = time_t(seconds);
    times.modtime = time_t(seconds);
    return ::utime(QFile::encodeName(path).constData(), &times) == 0;
}

// The colour in the middle of an image (device pixels).
inline QColor centreOf(const QImage& image) {
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

inline bool near(QColor a, QColor b, int tolerance = 12) {
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

} // namespace ThumbTestFiles
